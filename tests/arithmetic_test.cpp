// arithmetic_test.cpp: the integer forms of the division, the square root and the comparison of magnitudes give what the
// platform's operations give.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// --gtest_random_seed=N and the environment's NUV_RANDOM_PAIRS choose other random pairs and how many: the seeds 1 to 10
// with 100000000 pairs each are 10^9.

#include "fast/arithmetic.h"
#include "support/effort.h"
#include "support/expect.h"
#include "support/special_values.h"

#include <cstdint>
#include <cstdlib>
#include <random>

namespace {

using namespace nuv_tests;

constexpr int MantissaBits = 52;
constexpr int ExponentSpecial = 0x7FF;
constexpr std::uint64_t LeadingBit = std::uint64_t{1} << MantissaBits;

double FromBits(std::uint64_t a_iBits)
{
    double dValue;
    std::memcpy(&dValue, &a_iBits, sizeof dValue);
    return dValue;
}

double Compose(int a_iExponent, std::uint64_t a_iMantissa)
{
    return FromBits((static_cast<std::uint64_t>(a_iExponent) << MantissaBits) | (a_iMantissa % LeadingBit));
}

::testing::AssertionResult RightQuotient(double a_dA, double a_dB)
{
    const double dQuotient = nuv::QuotientByIntegers(a_dA, a_dB);
    if (SameBits(Opaque(a_dA) / a_dB, dQuotient))
    {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << HexText(a_dA) << " / " << HexText(a_dB) << " gives " << HexText(dQuotient);
}

::testing::AssertionResult RightRoot(double a_dX)
{
    const double dRoot = nuv::SquareRootByIntegers(a_dX);
    if (SameBits(std::sqrt(Opaque(a_dX)), dRoot))
    {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "the root of " << HexText(a_dX) << " gives " << HexText(dRoot);
}

::testing::AssertionResult RightComparison(double a_dA, double a_dB)
{
    if (nuv::IsSmallerByIntegers(a_dA, a_dB) == (std::fabs(Opaque(a_dA)) < std::fabs(a_dB)))
    {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << HexText(a_dA) << " < " << HexText(a_dB) << " in magnitude is wrong";
}

class Arithmetic : public ::testing::Test
{
protected:
    std::uint64_t Random()
    {
        return m_Random();
    }

    std::mt19937_64 m_Random{20261122};
};

// Zeros, the ends of the subnormal and the normal numbers, 1, powers of 2, infinity and NaN.
std::vector<double> Specials()
{
    std::vector<double> vdValues;
    for (const double dValue : {0.0,
                                Subnormal,
                                3 * Subnormal,
                                0x1p-1023,
                                0x0.fffffffffffffp-1022,
                                0x1p-1022,
                                0x1.0000000000001p-1022,
                                0x1.fffffffffffffp-1022,
                                0x1p-1021,
                                BelowOne,
                                1.0,
                                AboveOne,
                                1.5,
                                0x1.fffffffffffffp0,
                                2.0,
                                3.0,
                                0x1p1022,
                                0x1p1023,
                                Greatest,
                                Inf,
                                NaN})
    {
        vdValues.push_back(dValue);
        vdValues.push_back(-dValue);
    }
    return vdValues;
}

TEST_F(Arithmetic, OfSpecialValues)
{
    for (const double dA : Specials())
    {
        ASSERT_TRUE(RightRoot(dA));
        for (const double dB : Specials())
        {
            ASSERT_TRUE(RightQuotient(dA, dB));
            ASSERT_TRUE(RightComparison(dA, dB));
        }
    }
}

TEST_F(Arithmetic, OfEveryExponent)
{
    const int iStep = Emulated ? 97 : 1;
    for (int i = 0; i <= 2 * ExponentSpecial + 1; ++i)
    {
        const double dA = Compose(i, Random());
        ASSERT_TRUE(RightRoot(dA));
        for (int j = i % iStep; j <= ExponentSpecial; j += iStep)
        {
            ASSERT_TRUE(RightQuotient(dA, Compose(j, Random())));
            ASSERT_TRUE(RightQuotient(dA, Compose(j, 0)));
        }
    }
}

// The first and the last doubles of each cell, with dividends next to b and to 2b, where the quotient is next to 1 or 2.
TEST_F(Arithmetic, AtBothEndsOfEveryCellOfTheTables)
{
    for (int i = 0; i < 128; ++i)
    {
        for (const double dB : {1.0 + i / 128.0, 1.0 + (i + 1) / 128.0 - Epsilon})
        {
            for (const double dA : {dB, dB + Epsilon, 2 * dB - 2 * Epsilon, dB - Epsilon, 1.0, 2.0 - Epsilon, 1.5})
            {
                ASSERT_TRUE(RightQuotient(dA, dB));
            }
            for (int k = 0; k < CasesHere(1000); ++k)
            {
                ASSERT_TRUE(RightQuotient(Compose(1023, Random()), dB + static_cast<double>(Random() % 64) * Epsilon));
            }
        }
    }
    for (int i = 64; i < 256; ++i)
    {
        const double dFirst = i / 64.0;
        for (int k = 0; k < CasesHere(1000); ++k)
        {
            ASSERT_TRUE(RightRoot(dFirst + k * Epsilon * 2));
            ASSERT_TRUE(RightRoot(dFirst + 1.0 / 64.0 - (k + 1) * Epsilon * 2));
        }
    }
}

std::uint64_t UpperHalf(std::uint64_t a_iFirst, std::uint64_t a_iSecond)
{
    const std::uint64_t iLowWord = 0xFFFFFFFF;
    const std::uint64_t iCross =
        (a_iFirst >> 32) * (a_iSecond & iLowWord) + ((a_iFirst & iLowWord) * (a_iSecond & iLowWord) >> 32);
    const std::uint64_t iOther = (a_iFirst & iLowWord) * (a_iSecond >> 32) + (iCross & iLowWord);
    return (a_iFirst >> 32) * (a_iSecond >> 32) + (iCross >> 32) + (iOther >> 32);
}

// The product of two numbers, divided by 2^a_iShift and rounded down, where the result has 64 bits.
std::uint64_t ShiftedProduct(std::uint64_t a_iFirst, std::uint64_t a_iSecond, int a_iShift)
{
    return UpperHalf(a_iFirst, a_iSecond) << (64 - a_iShift) | a_iFirst * a_iSecond >> a_iShift;
}

// 1/b modulo 2^64 for an odd b. Each step doubles the digits that are right.
std::uint64_t InverseOfOdd(std::uint64_t b)
{
    std::uint64_t iInverse = b; // right in three digits
    for (int i = 0; i < 5; ++i)
    {
        iInverse *= 2 - b * iInverse;
    }
    return iInverse;
}

// A middle m of 54 bits, odd, and a divisor b with m b = 2^54 a + r for a small odd r: no quotient is nearer to a middle.
TEST_F(Arithmetic, OfQuotientsNextToTheMiddleOfTwoDoubles)
{
    const std::uint64_t iModulus = LeadingBit << 2;
    int iFound = 0;
    for (int k = 0; k < CasesHere(200000); ++k)
    {
        const std::uint64_t b = LeadingBit | (Random() % LeadingBit) | 1;
        const std::uint64_t r = 2 * (Random() % 32) + 1;
        for (const std::uint64_t iRest : {r, 0 - r})
        {
            const std::uint64_t m = iRest * InverseOfOdd(b) % iModulus;
            if (m >= iModulus / 2)
            {
                const std::uint64_t a = ShiftedProduct(m, b, 54) + (iRest == r ? 0 : 1);
                ASSERT_TRUE(RightQuotient(static_cast<double>(a), static_cast<double>(b)));
                ++iFound;
            }
        }
    }
    EXPECT_GT(iFound, CasesHere(100000));
}

// A number whose square is a_iSquare modulo 2^a_iDigits. The square is 1 modulo 8.
std::uint64_t RootModulo(std::uint64_t a_iSquare, int a_iDigits)
{
    std::uint64_t iRoot = 1;
    for (int i = 3; i < a_iDigits; ++i)
    {
        iRoot += ((iRoot * iRoot ^ a_iSquare) >> i & 1) << (i - 1);
    }
    return iRoot;
}

// A middle m of 54 bits with m^2 = 2^54 x + r or 2^55 x + r for a small r: no root is nearer to a middle.
TEST_F(Arithmetic, OfRootsNextToTheMiddleOfTwoDoubles)
{
    int iFound = 0;
    for (int k = -CasesHere(40000); k < CasesHere(40000); ++k)
    {
        const auto r = static_cast<std::uint64_t>(8 * std::int64_t{k} + 1);
        for (const int iDigits : {54, 55})
        {
            const std::uint64_t iModulus = std::uint64_t{1} << iDigits;
            const std::uint64_t iRoot = RootModulo(r, iDigits);
            for (const std::uint64_t m : {iRoot, iRoot + iModulus / 2, 0 - iRoot, iModulus / 2 - iRoot})
            {
                const std::uint64_t iMiddle = m % iModulus;
                const std::uint64_t x = ShiftedProduct(iMiddle, iMiddle, iDigits) + (k < 0 ? 1 : 0);
                if (iMiddle >> 53 == 1 && x >> 52 == 1)
                {
                    ASSERT_TRUE(RightRoot(std::ldexp(static_cast<double>(x), iDigits)));
                    ++iFound;
                }
            }
        }
    }
    EXPECT_GT(iFound, CasesHere(40000));
}

TEST_F(Arithmetic, OfSquaresAndProductsAndTheirNeighbours)
{
    for (int k = 0; k < CasesHere(100000); ++k)
    {
        const double dRoot = k % 2 == 0 ? static_cast<double>(Random() >> 38) + 1.0 : Compose(1023, Random());
        const double dB = k % 2 == 0 ? static_cast<double>(Random() >> 38) + 1.0 : Compose(1022, Random());
        for (const double dTowards : {0.0, Inf})
        {
            ASSERT_TRUE(RightRoot(dRoot * dRoot));
            ASSERT_TRUE(RightRoot(std::nextafter(dRoot * dRoot, dTowards)));
            ASSERT_TRUE(RightQuotient(dRoot * dB, dB));
            ASSERT_TRUE(RightQuotient(std::nextafter(dRoot * dB, dTowards), dB));
        }
    }
}

// Quotients between zero and the normal numbers: of random mantissas, and exact middles, which become even.
TEST_F(Arithmetic, OfSubnormalQuotients)
{
    for (int k = 0; k < CasesHere(200000); ++k)
    {
        const int iExponent = 1 + static_cast<int>(Random() % 1022);
        const int iBelow = static_cast<int>(Random() % 56);
        ASSERT_TRUE(RightQuotient(Compose(iExponent, Random()), Compose(iExponent + 1022 + iBelow, Random())));
        const double dWhole = static_cast<double>(Random() >> (12 + Random() % 52));
        ASSERT_TRUE(RightQuotient(dWhole * 0x1p-1022, std::ldexp(1.0, static_cast<int>(Random() % 64))));
        ASSERT_TRUE(RightQuotient(Compose(0, Random()), Compose(static_cast<int>(Random() % 2047), Random())));
        ASSERT_TRUE(RightQuotient(Compose(static_cast<int>(Random() % 2047), Random()), Compose(0, Random())));
        ASSERT_TRUE(RightRoot(Compose(0, Random() >> Random() % 64)));
    }
}

void ExpectRandomPairs(std::uint64_t a_iSeed, int a_iPairs)
{
    std::mt19937_64 Random(a_iSeed);
    for (int k = 0; k < a_iPairs; ++k)
    {
        const double dA = FromBits(Random());
        const double dB = FromBits(Random());
        ASSERT_TRUE(RightQuotient(dA, dB));
        ASSERT_TRUE(RightRoot(std::fabs(dA)));
        ASSERT_TRUE(RightComparison(dA, dB));
        ASSERT_TRUE(RightComparison(dA, -std::nextafter(dA, dB)));
    }
}

TEST_F(Arithmetic, OfRandomPairs)
{
    ExpectRandomPairs(1, CasesHere(1000000));
}

TEST(ArithmeticSlow, OfManyRandomPairs)
{
    const char* const szPairs = std::getenv("NUV_RANDOM_PAIRS");
    const int iPairs = szPairs ? std::atoi(szPairs) : Watched ? 1000000 : 5000000;
    ASSERT_GT(iPairs, 0) << "NUV_RANDOM_PAIRS is not a number of pairs";
    ExpectRandomPairs(static_cast<std::uint64_t>(GTEST_FLAG_GET(random_seed)), iPairs);
}

} // namespace
