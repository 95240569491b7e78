// arithmetic.cpp: division and square root by integer operations.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fast/arithmetic.h"

#ifdef NUV_SOFTWARE_FLOATING_POINT

#include "fast/arithmeticseeds.h"
#include "functionsimp.h"

#include <limits>
#include <string.h>

namespace nuv {

typedef unsigned int TWord;
#if defined(__GNUC__)
typedef unsigned int TWide __attribute__((mode(DI))); // 64 bits, for which C++98 has no name
typedef int TSignedWide __attribute__((mode(DI)));
#else
typedef unsigned __int64 TWide;
typedef __int64 TSignedWide;
#endif

enum
{
    EXPONENT_BITS = 0x7FF, // the exponent of infinities and NaN
    EXPONENT_BIAS = 1023,
    FRACTION_BITS = 52
};

static const TWord SIGN_BIT = 0x80000000U;                              // in the high word
static const TWord INFINITE = 0x7FF00000U;                              // the high word of infinity
static const TWide HIDDEN_BIT = static_cast<TWide>(1) << FRACTION_BITS; // of a mantissa

static const double SCALE = 18014398509481984.0; // 2^54

static TWide WideOf(double a_dValue)
{
    TWide iBits;
    memcpy(&iBits, &a_dValue, sizeof iBits);
    return iBits;
}

static double DoubleOf(TWide a_iBits)
{
    double dValue;
    memcpy(&dValue, &a_iBits, sizeof dValue);
    return dValue;
}

static TWord HighWord(TWide a_iBits)
{
    return static_cast<TWord>(a_iBits >> 32);
}

static TWide AtHighWord(TWord a_iWord)
{
    return static_cast<TWide>(a_iWord) << 32;
}

// The upper half of a product.
static TWord HighProduct(TWord a_iFirst, TWord a_iSecond)
{
    return HighWord(static_cast<TWide>(a_iFirst) * a_iSecond);
}

static int ExponentOf(TWide a_iBits)
{
    return static_cast<int>(HighWord(a_iBits) >> 20) & EXPONENT_BITS;
}

// Whether an exponent is that of a normal number.
static bool IsNormal(int a_iExponent)
{
    return static_cast<TWord>(a_iExponent - 1) < EXPONENT_BITS - 1;
}

static TWide MantissaOf(TWide a_iBits)
{
    return (a_iBits & (HIDDEN_BIT - 1)) | HIDDEN_BIT;
}

// A zero, an infinity or a NaN.
static bool IsSpecial(double a_dValue)
{
    return IsZero(a_dValue) || !IsFinite(a_dValue);
}

// iDividend/iDivisor to 54 bits; the last bit of the result is set if there is a rest.
static TWide QuotientByDigits(TWide a_iRest, TWide a_iDivisor)
{
    TWide iQuotient = 0;
    for (int i = 0; i < 54; ++i)
    {
        iQuotient += iQuotient;
        if (a_iRest >= a_iDivisor)
        {
            a_iRest -= a_iDivisor;
            ++iQuotient;
        }
        a_iRest += a_iRest;
    }
    return iQuotient + iQuotient + (a_iRest != 0 ? 1 : 0);
}

NUV_NOT_INLINE static double UnusualQuotient(double a_dDividend, double a_dDivisor)
{
    const bool bSpecialDivisor = IsSpecial(a_dDivisor);
    if (bSpecialDivisor || IsSpecial(a_dDividend))
    {
        if (bSpecialDivisor && (WideOf(a_dDivisor) << 12) == 0)
        {
            a_dDivisor = DoubleOf(WideOf(a_dDivisor) ^ AtHighWord(INFINITE));
        }
        return a_dDividend * a_dDivisor;
    }
    int iExponent = EXPONENT_BIAS;
    if (ExponentOf(WideOf(a_dDividend)) == 0)
    {
        a_dDividend *= SCALE;
        iExponent -= 54;
    }
    if (ExponentOf(WideOf(a_dDivisor)) == 0)
    {
        a_dDivisor *= SCALE;
        iExponent += 54;
    }
    const TWide iDividend = WideOf(a_dDividend);
    const TWide iDivisor = WideOf(a_dDivisor);
    iExponent += ExponentOf(iDividend) - ExponentOf(iDivisor);
    TWide iA = MantissaOf(iDividend);
    const TWide iB = MantissaOf(iDivisor);
    if (iA < iB)
    {
        iA += iA;
        --iExponent;
    }
    TWide iResult = AtHighWord(INFINITE);
    if (iExponent < EXPONENT_BITS)
    {
        iResult = QuotientByDigits(iA, iB);
        iExponent = iExponent < -54 ? -54 : iExponent;
        for (; iExponent < 1; ++iExponent)
        {
            iResult = iResult >> 1 | (iResult & 1);
        }
        iResult = (iResult >> 2) + (0xC8U >> (iResult & 7) & 1) + AtHighWord(static_cast<TWord>(iExponent - 1) << 20);
    }
    return DoubleOf(iResult | AtHighWord((HighWord(iDividend) ^ HighWord(iDivisor)) & SIGN_BIT));
}

double QuotientByIntegers(double a_dDividend, double a_dDivisor)
{
    const TWide iDividend = WideOf(a_dDividend);
    const TWide iDivisor = WideOf(a_dDivisor);
    const int iExponentA = ExponentOf(iDividend);
    const int iExponentB = ExponentOf(iDivisor);
    int iExponent = iExponentA - iExponentB + EXPONENT_BIAS;
    TWide iA = MantissaOf(iDividend);
    const TWide iB = MantissaOf(iDivisor);
    if (iA < iB)
    {
        iA += iA;
        --iExponent;
    }
    if (!IsNormal(iExponentA) || !IsNormal(iExponentB) || !IsNormal(iExponent))
    {
        return UnusualQuotient(a_dDividend, a_dDivisor);
    }
    const TWord iHighB = static_cast<TWord>(iB >> 21);
    const TWord iSeed = static_cast<TWord>(RECIPROCAL_SEEDS[iHighB >> 24 & 127]) << 16;
    const TWord iFirst = HighProduct(iSeed, ~HighProduct(iHighB, iSeed)) << 1;
    const TWord iReciprocal = HighProduct(iFirst, ~HighProduct(iHighB, iFirst)) << 1;
    const TWord iHighQ = HighProduct(static_cast<TWord>(iA >> 22), iReciprocal) - 1;
    const TWide iRest = (iA << 30) - iHighQ * iB;
    const TWord iLowQ = HighProduct(static_cast<TWord>(iRest >> 24), iReciprocal);
    const TWide iQ = (static_cast<TWide>(iHighQ) << 28) + iLowQ + 31;
    TWide iQuotient = iQ >> 6;
    if ((static_cast<TWord>(iQ) & 63) >= 64 - 9)
    {
        const TWide iMiddle = iQuotient + iQuotient + 1;
        if (static_cast<TSignedWide>((iA << 53) - iMiddle * iB) > 0)
        {
            ++iQuotient;
        }
    }
    const TWord iSign = (HighWord(iDividend) ^ HighWord(iDivisor)) & SIGN_BIT;
    return DoubleOf(iQuotient + AtHighWord((static_cast<TWord>(iExponent - 1) << 20) | iSign));
}

double SquareRootByIntegers(double a_dRadicand)
{
    const TWide iBits = WideOf(a_dRadicand);
    int iExponent = static_cast<int>(HighWord(iBits) >> 20);
    TWide iM = MantissaOf(iBits);
    if (!IsNormal(iExponent))
    {
        if (IsBelowZero(a_dRadicand))
        {
            return std::numeric_limits<double>::quiet_NaN();
        }
        if (IsSpecial(a_dRadicand))
        {
            return a_dRadicand + a_dRadicand;
        }
        const TWide iScaled = WideOf(a_dRadicand * SCALE);
        iExponent = ExponentOf(iScaled) - 54;
        iM = MantissaOf(iScaled);
    }
    iM <<= 10;
    iExponent += EXPONENT_BIAS;
    if ((iExponent & 1) != 0)
    {
        iM += iM;
    }
    const TWord iHighM = HighWord(iM);
    const TWord iSeed = ROOT_SEEDS[(iHighM >> 24) - 64];
    const TWord iFirst = HighProduct(iSeed << 16, 0xC0000000U - HighProduct(iHighM, iSeed * iSeed)) << 1;
    const TWord iSecond = HighProduct(iFirst, 0xC0000000U - HighProduct(HighProduct(iHighM, iFirst), iFirst)) << 1;
    const TWord iHighRoot = HighProduct(iHighM, iSecond) - 2;
    const TWide iRest = (iM >> 2) - static_cast<TWide>(iHighRoot) * iHighRoot;
    const TWord iLowRoot = HighProduct(static_cast<TWord>(iRest >> 3), iSecond);
    const TWide iQ = (static_cast<TWide>(iHighRoot) << 28) + iLowRoot + 26;
    TWide iRoot = iQ >> 6;
    if ((static_cast<TWord>(iQ) & 63) >= 64 - 12)
    {
        const TWide iMiddle = iRoot + iRoot + 1;
        if (static_cast<TSignedWide>((iM << 44) - iMiddle * iMiddle) > 0)
        {
            ++iRoot;
        }
    }
    return DoubleOf(iRoot + AtHighWord(static_cast<TWord>((iExponent >> 1) - 1) << 20));
}

} // namespace nuv

#endif // NUV_SOFTWARE_FLOATING_POINT
