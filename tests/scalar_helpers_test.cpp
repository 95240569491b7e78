// scalar_helpers_test.cpp: mean, norm, reduction into a period and the tolerance band. Internal routines.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "affine.h"
#include "functionsimp.h"
#include "nuv1math.h"
#include "support/expect.h"

#include <cstdlib>

namespace {

using namespace nuv_tests;

constexpr double Largest = std::numeric_limits<double>::max();

double Mean(const std::vector<double>& a_vdValues)
{
    double dMean = Untouched;
    nuv::CalcMean(static_cast<unsigned int>(a_vdValues.size()), a_vdValues.data(), dMean);
    return dMean;
}

struct TMeanCase
{
    std::vector<double> vdValues;
    double dMean;
};

void ExpectMeans(const std::vector<TMeanCase>& a_Cases)
{
    for (const TMeanCase& Case : a_Cases)
    {
        SCOPED_TRACE(::testing::PrintToString(Case.vdValues));
        EXPECT_SAME_BITS(Case.dMean, Mean(Case.vdValues));
    }
}

// Tests that look at bits, beside the comparisons that they replace.
TEST(Bits, TellWhatComparisonsTell)
{
    const double dEpsilon = std::numeric_limits<double>::epsilon();
    std::vector<double> vdValues = {NaN};
    for (double dMagnitude : {0.0, Subnormal, 0x1p-1042, 0x1p-1022, 0.5, 1.0 - dEpsilon / 2.0, 1.0, 1.0 + dEpsilon,
                              1.0 + 0x1p-20, 2.0, Largest, Inf})
    {
        vdValues.push_back(dMagnitude);
        vdValues.push_back(-dMagnitude);
    }
    for (double dValue : vdValues)
    {
        SCOPED_TRACE(HexText(dValue));
        EXPECT_EQ(dValue == 0.0, nuv::IsZero(dValue));
        EXPECT_EQ(dValue == 0.0 && std::signbit(dValue), nuv::IsNegativeZero(dValue));
        EXPECT_EQ(dValue == 1.0, nuv::IsOne(dValue));
        EXPECT_EQ(dValue < 0.0, nuv::IsBelowZero(dValue));
        EXPECT_EQ(dValue >= 0.0, nuv::IsAtLeastZero(dValue));
        EXPECT_EQ(std::isfinite(dValue), nuv::IsFinite(dValue));
        EXPECT_SAME_BITS(Opaque(dValue) + 0.0, nuv::PlusZero(dValue));
    }
}

// A size that overflows to 0 or to a small number must not reach the allocator.
TEST(AllocateArray, RefusesWhatSizesCannotCount)
{
    const std::size_t iMost = std::numeric_limits<std::size_t>::max() / sizeof(double); // whose size still fits
    EXPECT_EQ(nullptr, nuv::AllocateDoubles(1, iMost + 1));
    EXPECT_EQ(nullptr, nuv::AllocateDoubles(iMost + 1, 1));
    EXPECT_EQ(nullptr, nuv::AllocateDoubles(2, iMost / 2 + 1));
    EXPECT_EQ(nullptr, nuv::AllocateDoubles(iMost / 2 + 1, 2));
    double* const vdNothing = nuv::AllocateDoubles(0, 5); // null or not, as malloc likes
    std::free(vdNothing);
}

TEST(CalcMean, OfNoValuesIsZeroAndReadsNothing)
{
    double dMean = Untouched;
    nuv::CalcMean(0, nullptr, dMean);
    EXPECT_SAME_BITS(0.0, dMean);
}

TEST(CalcMean, OfOneValueIsThatValueExactly)
{
    for (double dValue : {0.1, -0.0, 0.0, Subnormal, -Subnormal, Largest, Inf, -Inf, NaN})
    {
        EXPECT_SAME_BITS(dValue, Mean({dValue}));
    }
}

TEST(CalcMean, OfNegativeZerosIsNegativeForOddCountsAndPositiveForEvenOnes)
{
    ExpectMeans({{{-0.0}, -0.0}, {{-0.0, -0.0}, 0.0}, {{-0.0, -0.0, -0.0}, -0.0}, {{-0.0, -0.0, -0.0, -0.0}, 0.0}});
}

// Doubles near 1e16 are 2 apart and 1e16 is even there, so 1e16 + 1 rounds to 1e16, and -1e16 + 1 to -1e16.
TEST(CalcMean, AddsStrictlyFromTheFirstValueToTheLast)
{
    ExpectMeans({
        {{1.0, 1e16, -1e16}, 0.0},                  // from the last to the first: 1/3
        {{1e16, -1e16, 1.0}, 0x1.5555555555555p-2}, // from the last to the first: 0
        {{1.0, 1e16, -1e16, 0.0}, 0.0},             // from the last to the first: 1/4
        {{1.0, 1e16, 0.0, -1e16}, 0.0},             // odd and even positions in two sums: 1/4
        {{1e16, 0.0, 1.0, 1.0}, 2.5e15},            // neighbours added first: 2.5e15 + 0.5
    });
}

// 5/3 = 0x1.aaaaaaaaaaaaa|aa.. rounds up; 5 times the double 0x1.5555555555555p-2 lies below 0x1.aaaaaaaaaaaaa8p+0.
TEST(CalcMean, DividesByTheCountInsteadOfMultiplyingByItsReciprocal)
{
    ExpectMeans({{{5.0, 0.0, 0.0}, 0x1.aaaaaaaaaaaabp+0}});
}

TEST(CalcMean, TakesSpecialValuesThroughTheArithmetic)
{
    ExpectMeans({
        {{Inf, 1.0}, Inf},
        {{1.0, 2.0, -Inf}, -Inf},
        {{Inf, -Inf, 0.0}, NaN},
        {{NaN, 1.0}, NaN},
        {{1.0, NaN, 1.0}, NaN},
        {{Largest, Largest}, Inf}, // the sum overflows before the division
        {{Largest, -Largest, 3.0}, 1.0},
        {{Subnormal, 0.0}, 0.0},                             // half of the least double: a tie, to even
        {{Subnormal, Subnormal, Subnormal, 0.0}, Subnormal}, // three quarters of it
    });
}

TEST(CalcMean, ReadsAsManyValuesAsCounted)
{
    const double vdValues[] = {1.0, 2.0, NaN};
    double dMean = Untouched;
    nuv::CalcMean(2, vdValues, dMean);
    EXPECT_SAME_BITS(1.5, dMean);
}

struct THypotCase
{
    double dA;
    double dB;
    double dNorm;
};

void ExpectNorms(const std::vector<THypotCase>& a_Cases)
{
    for (const THypotCase& Case : a_Cases)
    {
        SCOPED_TRACE(HexText(Case.dA) + ", " + HexText(Case.dB));
        EXPECT_SAME_BITS(Case.dNorm, nuv::CalcHypot(Opaque(Case.dA), Opaque(Case.dB)));
    }
}

TEST(CalcHypot, OfTwoZerosIsPositiveZero)
{
    ExpectNorms({{0.0, 0.0, 0.0}, {-0.0, 0.0, 0.0}, {0.0, -0.0, 0.0}, {-0.0, -0.0, 0.0}});
}

// (3/4)^2 + 1 = 1.5625 = 1.25^2, and 1.25 * 4 = 5.
TEST(CalcHypot, OfThreeAndMinusFourIsFiveInEveryOrderAndSign)
{
    for (double dSign : {1.0, -1.0})
    {
        ExpectNorms(
            {{3.0, dSign * 4.0, 5.0}, {dSign * 4.0, 3.0, 5.0}, {-3.0, dSign * 4.0, 5.0}, {dSign * 4.0, -3.0, 5.0}});
    }
}

// sqrt(2) = 0x1.6a09e667f3bcdp+0. The exact norm of (1e200, 1e200), rounded: 0x1.d8f9811335b57p+664.
TEST(CalcHypot, OfValuesWhoseSquaresOverflowOrVanishIsFiniteAndNotZero)
{
    ExpectNorms({{1e200, 1e200, 0x1.d8f9811335b57p+664},
                 {-1e200, 1e200, 0x1.d8f9811335b57p+664},
                 {0x1p700, 0x1p700, 0x1.6a09e667f3bcdp+700},
                 {0x1p-700, -0x1p-700, 0x1.6a09e667f3bcdp-700},
                 {Largest, 0.0, Largest},
                 {Largest, Largest, Inf}, // the norm itself is beyond the doubles
                 {Subnormal, 0.0, Subnormal},
                 {0.0, -Subnormal, Subnormal},
                 {Subnormal, Subnormal, Subnormal}, // sqrt(2) units of the least double
                 {Subnormal, 1.0, 1.0}});
}

// The expected bits come from exact rational arithmetic with each step rounded once. sqrt(a a + b b) would end in
// ...f3, ...f6 and ...e9.
TEST(CalcHypot, MultipliesTheGreaterMagnitudeByTheRootOfTheRatioLast)
{
    ExpectNorms({{2.0, 3.0, 0x1.cd82b446159f4p+1},
                 {3.0, 2.0, 0x1.cd82b446159f4p+1},
                 {1.0, 5.0, 0x1.465655f122ff7p+2},
                 {5.0, 1.0, 0x1.465655f122ff7p+2},
                 {2.0, 7.0, 0x1.d1ed52076fbeap+2},
                 {7.0, 2.0, 0x1.d1ed52076fbeap+2}});
}

TEST(CalcHypot, OfNaNAndZeroIsZeroButOfZeroAndNaNIsNaN)
{
    ExpectNorms({{NaN, 0.0, 0.0}, {NaN, -0.0, 0.0}, {0.0, NaN, NaN}, {-0.0, NaN, NaN}});
}

TEST(CalcHypot, TakesOtherSpecialValuesThroughTheArithmetic)
{
    ExpectNorms({{Inf, 1.0, Inf},
                 {1.0, -Inf, Inf},
                 {-Inf, 0.0, Inf},
                 {0.0, Inf, Inf},
                 {Inf, Inf, NaN}, // the ratio is inf/inf
                 {-Inf, Inf, NaN},
                 {NaN, 1.0, NaN},
                 {1.0, NaN, NaN},
                 {NaN, Inf, NaN},
                 {Inf, NaN, NaN},
                 {NaN, NaN, NaN}});
}

struct TPeriodCase
{
    double dX;
    double dPeriod;
    double dReduced;
};

void ExpectReductions(const std::vector<TPeriodCase>& a_Cases)
{
    for (const TPeriodCase& Case : a_Cases)
    {
        SCOPED_TRACE(HexText(Case.dX) + " into " + HexText(Case.dPeriod));
        EXPECT_SAME_BITS(Case.dReduced, nuv::ReduceToPeriod(Opaque(Case.dX), Opaque(Case.dPeriod)));
    }
}

constexpr double TwoPi = 0x1.921fb54442d18p+2; // the double nearest to 2 pi

TEST(ReduceToPeriod, UsesTheDoubleNearestToTwoPiForAngles)
{
    EXPECT_SAME_BITS(TwoPi, nuv::ANGLE_2PI);
}

TEST(ReduceToPeriod, GivesThePeriodItselfForNegativeMultiples)
{
    ExpectReductions({{-TwoPi, TwoPi, TwoPi}, {-2.0 * TwoPi, TwoPi, TwoPi}, {-3.0, 1.0, 1.0}});
}

TEST(ReduceToPeriod, GivesZeroForNonNegativeMultiples)
{
    ExpectReductions({{0.0, TwoPi, 0.0}, {TwoPi, TwoPi, 0.0}, {2.0 * TwoPi, TwoPi, 0.0}, {3.0, 1.0, 0.0}});
}

// 1 - 2^-53 is the double below 1. 1 - 2^-54 is halfway between the two and rounds to the even 1.
TEST(ReduceToPeriod, GivesThePeriodByRoundingForTinyNegativeValues)
{
    ExpectReductions({{-1e-20, TwoPi, TwoPi},
                      {-Subnormal, TwoPi, TwoPi},
                      {-0x1p-54, 1.0, 1.0},
                      {-0x1p-53, 1.0, 0x1.fffffffffffffp-1}});
}

TEST(ReduceToPeriod, LeavesNegativeZeroAsItIs)
{
    ExpectReductions({{-0.0, TwoPi, -0.0}, {-0.0, Subnormal, -0.0}, {-0.0, Inf, -0.0}});
}

TEST(ReduceToPeriod, ReducesExactlyOnBothSidesOfZero)
{
    ExpectReductions({{0.25, 1.0, 0.25},
                      {2.75, 1.0, 0.75},
                      {-0.25, 1.0, 0.75},
                      {-2.75, 1.0, 0.25},
                      {7.5, 3.0, 1.5},
                      {-7.5, 3.0, 1.5},
                      {0x1.fffffffffffffp-1, 1.0, 0x1.fffffffffffffp-1},
                      {Subnormal, 1.0, Subnormal}});
}

TEST(ReduceToPeriod, TakesSpecialValuesThroughTheArithmetic)
{
    ExpectReductions({{NaN, 1.0, NaN}, // no number is >= 0 or below, but the remainder of a NaN is a NaN
                      {Inf, 1.0, NaN},
                      {-Inf, 1.0, NaN},
                      {5.0, Inf, 5.0},
                      {-5.0, Inf, Inf}});
}

TEST(ReduceToPeriod, AcceptsEveryPositivePeriodHoweverSmall)
{
    ExpectReductions({{3.0, Subnormal, 0.0},
                      {-3.0, Subnormal, Subnormal},
                      {3.0, BelowTolerance, std::fmod(3.0, BelowTolerance)},
                      {Tolerance, Tolerance, 0.0},
                      {-Tolerance, Tolerance, Tolerance}});
}

TEST(IsNegligible, HoldsForBothBoundsOfTheToleranceAndEverythingBetween)
{
    for (double dValue : {0.0, Subnormal, 1e-300, 1e-13, BelowTolerance, Tolerance})
    {
        SCOPED_TRACE(HexText(dValue));
        EXPECT_TRUE(nuv::IsNegligible(dValue));
        EXPECT_TRUE(nuv::IsNegligible(-dValue));
    }
}

TEST(IsNegligible, FailsForTheNextDoublesOutsideAndForNaN)
{
    for (double dValue : {AboveTolerance, 1.1e-12, 1.0, Largest, Inf, NaN})
    {
        SCOPED_TRACE(HexText(dValue));
        EXPECT_FALSE(nuv::IsNegligible(dValue));
        EXPECT_FALSE(nuv::IsNegligible(-dValue));
    }
}

TEST(ResultCodes, HaveTheirPublishedValues)
{
    EXPECT_EQ(1, nuv::RET_SUCCESS);
    EXPECT_EQ(-1, nuv::RET_IMPOSSIBLE);
    EXPECT_EQ(-2, nuv::RET_INDETERMINATE);
}

} // namespace
