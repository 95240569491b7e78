// linear_system_test.cpp: two linear equations in two unknowns.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/expect.h"

namespace {

using namespace nuv_tests;

// a11, a12, a21, a22, b1, b2
using TSystem = std::array<double, 6>;

struct TSystemCase
{
    TSystem vdSystem;
    int iResult;
    double dX;
    double dY;
};

void ExpectSystem(const TSystemCase& a_Case)
{
    const TSystem& a = a_Case.vdSystem;
    SCOPED_TRACE(::testing::PrintToString(a));
    double dX = Untouched;
    double dY = Untouched;
    EXPECT_EQ(a_Case.iResult, nuv::Roots(a[0], a[1], a[2], a[3], a[4], a[5], dX, dY));
    EXPECT_SAME_BITS(a_Case.dX, dX);
    EXPECT_SAME_BITS(a_Case.dY, dY);
}

void ExpectSolved(const TSystem& a_vdSystem, double a_dX, double a_dY)
{
    ExpectSystem({a_vdSystem, 1, a_dX, a_dY});
}

void ExpectUnsolved(const TSystem& a_vdSystem, int a_iResult)
{
    ExpectSystem({a_vdSystem, a_iResult, Untouched, Untouched});
}

TEST(RootsOfTwoUnknowns, SolvesADiagonalSystem)
{
    ExpectSolved({2.0, 0.0, 0.0, 4.0, 2.0, 8.0}, 1.0, 2.0);
}

// Determinant 2*2 - 1*(-4) = 8: x = (2*4 - 1*0)/8, y = (2*0 - (-4)*4)/8.
TEST(RootsOfTwoUnknowns, SolvesAFullSystem)
{
    ExpectSolved({2.0, 1.0, -4.0, 2.0, 4.0, 0.0}, 1.0, 2.0);
    ExpectSolved({0.0, 1.0, 1.0, 0.0, 5.0, 7.0}, 7.0, 5.0); // determinant -1
}

TEST(RootsOfTwoUnknowns, CountsADeterminantOfTheToleranceAndBelowAsZero)
{
    for (double dDet : {0.0, Subnormal, BelowTolerance, Tolerance})
    {
        for (double dSign : {1.0, -1.0})
        {
            ExpectUnsolved({dSign * dDet, 0.0, 0.0, 1.0, 0.0, 0.0}, nuv::RET_INDETERMINATE); // by a11 a22
            ExpectUnsolved({0.0, dSign * dDet, 1.0, 0.0, 0.0, 0.0}, nuv::RET_INDETERMINATE); // by a12 a21
        }
    }
}

// The reciprocal of the double above 1e-12 is 0x1.d1a94a1ffffffp+39, the one below 1e12.
TEST(RootsOfTwoUnknowns, SolvesWithADeterminantJustAboveTheToleranceHoweverLargeTheResult)
{
    ExpectSolved({AboveTolerance, 0.0, 0.0, 1.0, 1.0, 0.0}, 0x1.d1a94a1ffffffp+39, 0.0);
    ExpectSolved({-AboveTolerance, 0.0, 0.0, 1.0, 1.0, 0.0}, -0x1.d1a94a1ffffffp+39, 0.0); // y = -0/-1e-12
    ExpectSolved({AboveTolerance, 0.0, 0.0, 1.0, 1e300, 0.0}, Inf, 0.0);
}

// The determinant is 0 and the numerator of x is a22 b1 = b1.
TEST(RootsOfTwoUnknowns, IsIndeterminateForANumeratorWithinTheTolerance)
{
    for (double dNumerator : {0.0, Subnormal, BelowTolerance, Tolerance})
    {
        ExpectUnsolved({0.0, 0.0, 0.0, 1.0, dNumerator, 0.0}, nuv::RET_INDETERMINATE);
        ExpectUnsolved({0.0, 0.0, 0.0, 1.0, -dNumerator, 0.0}, nuv::RET_INDETERMINATE);
    }
}

TEST(RootsOfTwoUnknowns, IsImpossibleForANumeratorBeyondTheToleranceOrNaN)
{
    for (double dNumerator : {AboveTolerance, 1.0, Inf, NaN})
    {
        ExpectUnsolved({0.0, 0.0, 0.0, 1.0, dNumerator, 0.0}, nuv::RET_IMPOSSIBLE);
        ExpectUnsolved({0.0, 0.0, 0.0, 1.0, -dNumerator, 0.0}, nuv::RET_IMPOSSIBLE);
    }
    ExpectUnsolved({0.0, 0.0, 0.0, 1.0, 0.0, Inf}, nuv::RET_IMPOSSIBLE); // 0 * inf
    ExpectUnsolved({0.0, 0.0, 0.0, 1.0, 0.0, NaN}, nuv::RET_IMPOSSIBLE);
}

TEST(RootsOfTwoUnknowns, IsIndeterminateForZeroCoefficientsWhateverTheSecondRightHandSide)
{
    for (double dB2 : {5.0, 0.0, -1e300})
    {
        ExpectUnsolved({0.0, 0.0, 0.0, 0.0, 0.0, dB2}, nuv::RET_INDETERMINATE);
    }
}

TEST(RootsOfTwoUnknowns, IsImpossibleForParallelEquations)
{
    ExpectUnsolved({1.0, 1.0, 1.0, 1.0, 1.0, 0.0}, nuv::RET_IMPOSSIBLE);
    ExpectUnsolved({1.0, 1.0, 1.0, 1.0, 1.0, 1.0}, nuv::RET_INDETERMINATE);
}

TEST(RootsOfTwoUnknowns, LooksAtTheNumeratorOfXAloneWhenSingular)
{
    ExpectUnsolved({1.0, 0.0, 0.0, 0.0, 0.0, 5.0}, nuv::RET_INDETERMINATE); // numerator of y: 5
    ExpectUnsolved({0.0, 0.0, 0.0, 1.0, 1.0, 0.0}, nuv::RET_IMPOSSIBLE);    // numerator of y: 0
    ExpectUnsolved({0.0, 1.0, 0.0, 0.0, 0.0, 1.0}, nuv::RET_IMPOSSIBLE);    // of x: -1*1, of y: 0
}

// A unit matrix scaled by 1e-7 is as well-conditioned as it can be, but its determinant is 1e-14.
TEST(RootsOfTwoUnknowns, HasAnAbsoluteToleranceThatRefusesSmallCoefficients)
{
    ExpectUnsolved({1e-7, 0.0, 0.0, 1e-7, 1.0, 1.0}, nuv::RET_IMPOSSIBLE);
    ExpectUnsolved({1e-7, 0.0, 0.0, 1e-7, 0.0, 1.0}, nuv::RET_INDETERMINATE);
}

TEST(RootsOfTwoUnknowns, TreatsANaNDeterminantAsSolvableAndGivesNaN)
{
    for (std::size_t i = 0; i < 4; ++i)
    {
        TSystem vdSystem = {1.0, 0.0, 0.0, 1.0, 1.0, 1.0};
        vdSystem[i] = NaN;
        ExpectSolved(vdSystem, NaN, NaN);
    }
    ExpectSolved({1e200, 1e200, 1e200, 1e200, 1.0, 1.0}, NaN, NaN); // inf - inf, though the equations are one
}

TEST(RootsOfTwoUnknowns, TakesOtherSpecialValuesThroughTheArithmetic)
{
    ExpectSolved({Inf, 0.0, 0.0, 1.0, 1.0, 1.0}, 0.0, NaN); // reciprocal 0; y = inf * 0
    ExpectSolved({-Inf, 0.0, 0.0, 1.0, 1.0, 1.0}, -0.0, NaN);
    ExpectSolved({1.0, Inf, 0.0, 1.0, 1.0, 1.0}, NaN, NaN); // determinant 1 - inf*0
    ExpectSolved({1.0, 0.0, Inf, 1.0, 1.0, 1.0}, NaN, NaN);
    ExpectSolved({1.0, 0.0, 0.0, Inf, 1.0, 1.0}, NaN, 0.0);
    ExpectSolved({1.0, 0.0, 0.0, 1.0, Inf, 1.0}, Inf, NaN); // 1 - 0*inf
    ExpectSolved({1.0, 0.0, 0.0, 1.0, 1.0, -Inf}, NaN, -Inf);
    ExpectSolved({1.0, 0.0, 0.0, 1.0, NaN, 1.0}, NaN, NaN);
    ExpectSolved({1.0, 0.0, 0.0, 1.0, 1.0, NaN}, NaN, NaN);
    ExpectSolved({1.0, 0.0, 0.0, 1.0, Subnormal, -Subnormal}, Subnormal, -Subnormal);
    ExpectSolved({1.0, Subnormal, -Subnormal, 1.0, 1.0, 2.0}, 1.0, 2.0);
}

// x = (a22 b1 - a12 b2) r: -0 - (0)(-0) = -0 + 0 = 0, and -0 - (-0)(-0) = -0 - 0 = -0. Alike for y.
TEST(RootsOfTwoUnknowns, KeepsTheSignsOfZerosOfItsFormulas)
{
    ExpectSolved({1.0, 0.0, 0.0, 1.0, -0.0, -0.0}, 0.0, 0.0);
    ExpectSolved({1.0, -0.0, 0.0, 1.0, -0.0, -0.0}, -0.0, 0.0);
    ExpectSolved({1.0, 0.0, -0.0, 1.0, -0.0, -0.0}, 0.0, -0.0);
}

// 5/3 rounds to ...abp+0, 5*(1/3) to ...aap+0.
TEST(RootsOfTwoUnknowns, MultipliesByTheReciprocalOfTheDeterminant)
{
    ExpectSolved({3.0, 0.0, 0.0, 1.0, 5.0, 0.0}, 0x1.aaaaaaaaaaaaap+0, 0.0);
    ExpectSolved({1.0, 0.0, 0.0, 3.0, 0.0, 5.0}, 0.0, 0x1.aaaaaaaaaaaaap+0);
}

// (2^30 + 1)(2^30 - 1) = 2^60 - 1 rounds to 2^60, so the determinants of the first two systems are 0 and not -+1. The
// others have the determinant 1, and one numerator that is 0 in the same way.
TEST(RootsOfTwoUnknowns, RoundsBothProductsBeforeTheyAreSubtracted)
{
    const double dN = 0x1p30;
    ExpectUnsolved({dN + 1.0, dN, dN, dN - 1.0, 0.0, 0.0}, nuv::RET_INDETERMINATE);
    ExpectUnsolved({dN, dN + 1.0, dN - 1.0, dN, 0.0, 0.0}, nuv::RET_INDETERMINATE);
    ExpectSolved({0.0, dN, -0x1p-30, dN + 1.0, dN - 1.0, dN}, 0.0, 1.0 - 0x1p-30);
    ExpectSolved({dN + 1.0, -0x1p-30, dN, 0.0, dN, dN - 1.0}, 1.0 - 0x1p-30, 0.0);
    ExpectSolved({0x1p-30, dN + 1.0, 0.0, dN, dN, dN - 1.0}, 0.0, 1.0 - 0x1p-30);
    ExpectSolved({dN, 0.0, dN + 1.0, 0x1p-30, dN - 1.0, dN}, 1.0 - 0x1p-30, 0.0);
}

} // namespace
