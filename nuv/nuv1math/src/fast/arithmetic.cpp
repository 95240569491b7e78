// arithmetic.cpp: division, square root and comparison by integer operations.
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
    EXPONENT_SPECIAL = 0x7FF, // the exponent of infinity and NaN
    EXPONENT_BIAS = 1023,     // the exponent of 1
    EXPONENT_SHIFT = 20       // of the exponent in the high word
};

static const TWide SIGN = static_cast<TWide>(0x80000000U) << 32;
static const TWide INFINITE = static_cast<TWide>(0x7FF00000U) << 32;
static const TWide LEADING_BIT = static_cast<TWide>(0x00100000U)
                                 << 32; // of a mantissa; a normal number does not store it

// A subnormal number times this factor is a normal one.
static const double NORMALISING = 18014398509481984.0; // 2^54
static const int NORMALISING_EXPONENT = 54;

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

// The upper half of a product.
static TWord HighProduct(TWord a_iFirst, TWord a_iSecond)
{
    return HighWord(static_cast<TWide>(a_iFirst) * a_iSecond);
}

static int ExponentOf(TWide a_iBits)
{
    return static_cast<int>(HighWord(a_iBits) >> EXPONENT_SHIFT) & EXPONENT_SPECIAL;
}

// A mantissa times 2 to the exponent. The exponent is one less than that of the result: the leading bit adds 1 to it.
static TWide Compose(TWide a_iMantissa, int a_iExponent)
{
    return a_iMantissa + (static_cast<TWide>(static_cast<TWord>(a_iExponent) << EXPONENT_SHIFT) << 32);
}

static TWide MantissaOf(TWide a_iBits)
{
    return (a_iBits & (LEADING_BIT - 1)) | LEADING_BIT;
}

// Whether this is the exponent of a normal number.
static bool IsNormal(int a_iExponent)
{
    return static_cast<TWord>(a_iExponent - 1) < EXPONENT_SPECIAL - 1;
}

// Zero, infinity or NaN.
static bool IsSpecial(double a_dValue)
{
    return IsZero(a_dValue) || !IsFinite(a_dValue);
}

// ---------------------------------------------------------------------------------------------------------------------
// Rounding of an approximate result
//
// Model      v is the exact result in units of 2^-58, and 2^58 <= v < 2^59. Q is a whole number with
//            Q - below <= v <= Q + above. A double has the units 2^-52, which are 64 of those.
// Method     The nearest double is floor((v + 32)/64). With P = Q + 32 - below it is floor(P/64), unless a multiple of
//            64 lies behind P and not behind P + below + above. Then a middle between two doubles may lie between Q and
//            v. The exact test of this middle is left to the caller. The result is never the middle itself.
// ---------------------------------------------------------------------------------------------------------------------

enum
{
    RESULT_SHIFT = 6, // from 2^-58 to 2^-52
    RESULT_UNIT = 1 << RESULT_SHIFT
};

// Q of its two parts, the lower one in units of 2^-58, as P.
static TWide JoinParts(TWord a_iUpper, TWord a_iLower, int a_iBelow)
{
    return (static_cast<TWide>(a_iUpper) << 28) + a_iLower + static_cast<TWord>(RESULT_UNIT / 2 - a_iBelow);
}

static bool IsNearMiddle(TWide a_iJoined, int a_iBelow, int a_iAbove)
{
    // equivalent: the test of a middle that lies elsewhere changes nothing
    return static_cast<int>(a_iJoined % RESULT_UNIT) >= RESULT_UNIT - a_iBelow - a_iAbove;
}

// ---------------------------------------------------------------------------------------------------------------------
// Division
//
// Equals     a / b.
// Method     The mantissas are scaled to 1 <= b < 2 and b <= a < 2b, so that the quotient q is in [1, 2).
//            1. A table gives 1/b to 8 bits. Two Newton steps x := x (2 - b x) make it 30 bits.
//            2. q1 = a x to 30 bits, less a margin, is not above q. The rest r = a - q1 b is exact. q2 = r x.
//            3. q1 + q2 is rounded. If a middle is near, the exact sign of a - middle b decides.
//            A power of 2 as divisor has the mantissa 1 and leaves that of a.
// Bounds     A seed differs from 1/b by 2^-8: its cell is 2^-7 wide. A Newton step squares the error and rounds three
//            times, down to units of 2^-31 and 2^-32. So b x - 1 is at most 2^-16 + 2^-30 in magnitude after the first
//            step, and from -2^-29.4 to 2^-31 after the second one. The roundings of b and of b x are those that can
//            make x too great. Hence 0 <= q - q1 < 2^-27.5, and r fits a word of units 2^-58. q2 misses
//            (q - q1) (b x - 1), at most 2.2, and rounds twice: -1 <= q - q1 - q2 <= 4 in units of 2^-58.
//            tests/arithmetic_proof_test.py proves the figures for each cell of the table.
// Middle     A middle m has 54 bits and is odd in its last unit. m b = a would need a factor 2^53 in the 53 bits of b.
// Special    With a zero, an infinite or a NaN operand the platform's product of a and 1/b or b is the result: 1/b is
//            known for zero and infinity. A NaN has the sign and the payload that the platform gives the product. A
//            quotient with a subnormal operand or below the normal numbers is formed bit by bit, and rounded to even.
//            The flags of the floating-point environment are not kept.
// Pays       always: 91 instructions on soft-float ARM, 509 in the platform's operation.
// Source     J.-M. Muller et al., Handbook of Floating-Point Arithmetic, 2nd ed., chapters on algorithms and on software
//            for the basic operations; F. de Dinechin, C. Lauter, G. Melquiond, Certifying the floating-point
//            implementation of an elementary function using Gappa, IEEE Trans. Comput. 60 (2011) 242-253.
// ---------------------------------------------------------------------------------------------------------------------

// a_iA/a_iB times 2^54, rounded down; its last bit is set if there is a rest.
static TWide QuotientBitByBit(TWide a_iA, TWide a_iB)
{
    TWide iQuotient = 0;
    for (int i = 0; i < 54; ++i)
    {
        iQuotient += iQuotient;
        if (a_iA >= a_iB)
        {
            a_iA -= a_iB;
            ++iQuotient;
        }
        a_iA += a_iA;
    }
    return iQuotient + iQuotient + (a_iA != 0 ? 1 : 0);
}

// Mantissa and exponent of the quotient of two mantissas, also if the exponent is not that of a normal number.
static TWide ComposeQuotient(TWide a_iA, TWide a_iB, int a_iExponent)
{
    if (a_iExponent >= EXPONENT_SPECIAL)
    {
        return INFINITE;
    }
    TWide iQuotient = QuotientBitByBit(a_iA, a_iB);
    // equivalent: a quotient below half of the least double becomes zero at either exponent
    a_iExponent = a_iExponent < -54 ? -54 : a_iExponent;
    for (; a_iExponent < 1; ++a_iExponent)
    {
        iQuotient = iQuotient >> 1 | (iQuotient & 1);
    }
    const TWord iRoundUp = 0xC8U >> (iQuotient & 7) & 1; // for the last bits 011, 110 and 111
    return Compose((iQuotient >> 2) + iRoundUp, a_iExponent - 1);
}

static double UnusualFiniteQuotient(double a_dA, double a_dB)
{
    int iExponent = EXPONENT_BIAS;
    if (ExponentOf(WideOf(a_dA)) == 0)
    {
        a_dA *= NORMALISING;
        iExponent -= NORMALISING_EXPONENT;
    }
    if (ExponentOf(WideOf(a_dB)) == 0)
    {
        a_dB *= NORMALISING;
        iExponent += NORMALISING_EXPONENT;
    }
    const TWide iBitsA = WideOf(a_dA);
    const TWide iBitsB = WideOf(a_dB);
    iExponent += ExponentOf(iBitsA) - ExponentOf(iBitsB);
    TWide iA = MantissaOf(iBitsA);
    const TWide iB = MantissaOf(iBitsB);
    if (iA < iB) // equivalent: equal mantissas may be scaled as well
    {
        iA += iA;
        --iExponent;
    }
    return DoubleOf(ComposeQuotient(iA, iB, iExponent) | ((iBitsA ^ iBitsB) & SIGN));
}

// The quotient if an operand or the quotient is not a normal number.
NUV_NOT_INLINE static double UnusualQuotient(double a_dA, double a_dB)
{
    const bool bSpecialDivisor = IsSpecial(a_dB);
    if (!bSpecialDivisor && !IsSpecial(a_dA))
    {
        return UnusualFiniteQuotient(a_dA, a_dB);
    }
    const TWide iB = WideOf(a_dB);
    if (bSpecialDivisor && iB << 12 == 0) // zero or infinity, and not NaN
    {
        a_dB = DoubleOf(iB ^ INFINITE);
    }
    return a_dA * a_dB;
}

// 2^32/b, where a_iB is 2^31 b.
static TWord CalcReciprocal(TWord a_iB)
{
    const TWord iSeed = static_cast<TWord>(RECIPROCAL_SEEDS[(a_iB >> 24) - 128]) << 16;
    const TWord iFirst = HighProduct(iSeed, ~HighProduct(a_iB, iSeed)) << 1;
    return HighProduct(iFirst, ~HighProduct(a_iB, iFirst)) << 1;
}

// a/b, rounded, in units of 2^-52, where a and b are in these units too, and b <= a < 2b.
static TWide DivideMantissas(TWide a_iA, TWide a_iB)
{
    if (a_iB == LEADING_BIT)
    {
        return a_iA;
    }
    const TWord iReciprocal = CalcReciprocal(static_cast<TWord>(a_iB >> 21));
    const TWord iUpper = HighProduct(static_cast<TWord>(a_iA >> 22), iReciprocal) - QUOTIENT_MARGIN;
    const TWide iRest = (a_iA << 30) - iUpper * a_iB;
    const TWord iLower = HighProduct(static_cast<TWord>(iRest >> 24), iReciprocal);
    const TWide iJoined = JoinParts(iUpper, iLower, QUOTIENT_BELOW);
    TWide iQuotient = iJoined >> RESULT_SHIFT;
    if (IsNearMiddle(iJoined, QUOTIENT_BELOW, QUOTIENT_ABOVE))
    {
        const TWide iMiddle = iQuotient + iQuotient + 1;
        if (static_cast<TSignedWide>((a_iA << 53) - iMiddle * a_iB) > 0) // equivalent: the difference is never 0
        {
            ++iQuotient;
        }
    }
    return iQuotient;
}

double QuotientByIntegers(double a_dA, double a_dB)
{
    const TWide iBitsA = WideOf(a_dA);
    const TWide iBitsB = WideOf(a_dB);
    const int iExponentA = ExponentOf(iBitsA);
    const int iExponentB = ExponentOf(iBitsB);
    int iExponent = iExponentA - iExponentB + EXPONENT_BIAS;
    TWide iA = MantissaOf(iBitsA);
    const TWide iB = MantissaOf(iBitsB);
    if (iA < iB) // equivalent: equal mantissas may be scaled as well
    {
        iA += iA;
        --iExponent;
    }
    if (!IsNormal(iExponentA) || !IsNormal(iExponentB) || !IsNormal(iExponent))
    {
        return UnusualQuotient(a_dA, a_dB);
    }
    return DoubleOf(Compose(DivideMantissas(iA, iB), iExponent - 1) | ((iBitsA ^ iBitsB) & SIGN));
}

// ---------------------------------------------------------------------------------------------------------------------
// Square root
//
// Equals     sqrt(x).
// Method     The mantissa m is scaled to 1 <= m < 4 by an even power of 2, so that its root r is in [1, 2).
//            1. A table gives 1/r to 8 bits. Two Newton steps y := y (3 - m y^2)/2 make it 30 bits.
//            2. r1 = m y to 30 bits, less a margin, is not above r. The rest d = m - r1^2 is exact. r2 = d y/2.
//            3. r1 + r2 is rounded. If a middle is near, the exact sign of m - middle^2 decides.
// Bounds     A seed differs from 1/r by 2^-8: its cell is 2^-6 wide, and the root halves the relative width. A Newton
//            step makes the error e into -1.5 e^2 and rounds three or four times, down to units of 2^-30 and 2^-31. So
//            r y - 1 is at most 2^-15.4 + 2^-30 in magnitude after the first step and 2^-29.4 after the second one.
//            Hence 0 <= r - r1 < 2^-27.5, and d fits a word of units 2^-57. r2 misses (r - r1)^2/(2 r), at most 3.6, and
//            (r - r1) (r y - 1), at most 2, and rounds twice: -1 <= r - r1 - r2 <= 8 in units of 2^-58.
//            tests/arithmetic_proof_test.py proves the figures for each cell of the table. An exponent is odd or even in
//            the cells of 2 <= m < 4 or of 1 <= m < 2, so this is a proof for both.
// Middle     The square of a middle has an odd last digit in units of 2^-106. m has none there.
// Special    The root of a negative number is NaN. Zeros of both signs, infinity and NaN are doubled, which leaves them
//            as they are; a NaN with a minus sign loses sign and payload. A subnormal number is multiplied by 2^54, whose
//            root is 2^27. The flags of the floating-point environment are not kept.
// Pays       always: 68 instructions on soft-float ARM, 2550 in the platform's operation.
// Source     as for the division.
// ---------------------------------------------------------------------------------------------------------------------

// 2^32/sqrt(m), where a_iM is 2^30 m.
static TWord CalcReciprocalRoot(TWord a_iM)
{
    const TWord iThree = 0xC0000000U;
    const TWord iSeed = ROOT_SEEDS[(a_iM >> 24) - 64];
    const TWord iFirst = HighProduct(iSeed << 16, iThree - HighProduct(a_iM, iSeed * iSeed)) << 1;
    return HighProduct(iFirst, iThree - HighProduct(HighProduct(a_iM, iFirst), iFirst)) << 1;
}

// sqrt(m), rounded, in units of 2^-52, where m is in units of 2^-62.
static TWide TakeRootOfMantissa(TWide a_iM)
{
    const TWord iM = HighWord(a_iM);
    const TWord iReciprocal = CalcReciprocalRoot(iM);
    const TWord iUpper = HighProduct(iM, iReciprocal) - ROOT_MARGIN;
    const TWide iRest = (a_iM >> 2) - static_cast<TWide>(iUpper) * iUpper;
    const TWord iLower = HighProduct(static_cast<TWord>(iRest >> 3), iReciprocal);
    const TWide iJoined = JoinParts(iUpper, iLower, ROOT_BELOW);
    TWide iRoot = iJoined >> RESULT_SHIFT;
    if (IsNearMiddle(iJoined, ROOT_BELOW, ROOT_ABOVE))
    {
        const TWide iMiddle = iRoot + iRoot + 1;
        if (static_cast<TSignedWide>((a_iM << 44) - iMiddle * iMiddle) > 0) // equivalent: the difference is never 0
        {
            ++iRoot;
        }
    }
    return iRoot;
}

double SquareRootByIntegers(double a_dX)
{
    TWide iBits = WideOf(a_dX);
    int iExponent = static_cast<int>(HighWord(iBits) >> EXPONENT_SHIFT); // with the sign, so not normal if negative
    if (!IsNormal(iExponent))
    {
        if (IsBelowZero(a_dX))
        {
            return std::numeric_limits<double>::quiet_NaN();
        }
        if (IsSpecial(a_dX))
        {
            return a_dX + a_dX;
        }
        iBits = WideOf(a_dX * NORMALISING);
        iExponent = ExponentOf(iBits) - NORMALISING_EXPONENT;
    }
    TWide iM = MantissaOf(iBits) << 10;
    iExponent += EXPONENT_BIAS;
    if (iExponent % 2 != 0)
    {
        iM += iM;
    }
    return DoubleOf(Compose(TakeRootOfMantissa(iM), (iExponent >> 1) - 1));
}

// ---------------------------------------------------------------------------------------------------------------------
// Comparison of magnitudes
//
// Equals     fabs(a) < fabs(b).
// Method     Without their signs doubles are in the order of their bits. A NaN is above infinity.
// Pays       always: 16 instructions on soft-float ARM, 35 in the platform's operation.
// ---------------------------------------------------------------------------------------------------------------------

bool IsSmallerByIntegers(double a_dA, double a_dB)
{
    const TWide iA = WideOf(a_dA) & ~SIGN;
    const TWide iB = WideOf(a_dB) & ~SIGN;
    return iA < iB && iB <= INFINITE;
}

} // namespace nuv

#endif // NUV_SOFTWARE_FLOATING_POINT
