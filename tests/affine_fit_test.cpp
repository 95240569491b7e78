// affine_fit_test.cpp: the affine least-squares fit.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "support/expect.h"
#include "support/fits.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace {

using namespace nuv_tests;
using nuv::RET_IMPOSSIBLE;
using nuv::TAffineCoefs;

const TAffineCoefs Identity = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0};

void ExpectFit(const TControlPoints& a_Points, const TAffineCoefs& a_Expected)
{
    auto Coefs = Filled<TAffineCoefs>();
    EXPECT_EQ(1, Fit(a_Points, Coefs));
    EXPECT_TRUE(SameRecord(a_Expected, Coefs));
}

void ExpectFitNear(const TControlPoints& a_Points, const TAffineCoefs& a_Expected, double a_dLinear, double a_dConstant)
{
    TAffineCoefs Coefs;
    ASSERT_EQ(1, Fit(a_Points, Coefs));
    EXPECT_NEAR(a_Expected.dA, Coefs.dA, a_dLinear);
    EXPECT_NEAR(a_Expected.dB, Coefs.dB, a_dLinear);
    EXPECT_NEAR(a_Expected.dC, Coefs.dC, a_dConstant);
    EXPECT_NEAR(a_Expected.dD, Coefs.dD, a_dLinear);
    EXPECT_NEAR(a_Expected.dE, Coefs.dE, a_dLinear);
    EXPECT_NEAR(a_Expected.dF, Coefs.dF, a_dConstant);
}

// The squares of x add up to 1 - 2^-53. Its reciprocal rounds to 1 + 2^-52, the neighbour of 1. The row must be scaled
// by it; only a reciprocal of exactly 1 may be skipped.
TEST(CalcAffineCoefs, APivotBesideOneDividesItsRow)
{
    const double dX = 0.5 - 0x1p-54;
    const double vdX[] = {dX, -dX, 0.5, -0.5};
    const double vdY[] = {1.0, 1.0, -1.0, -1.0};
    const double vdXa[] = {2.0 * dX, -2.0 * dX, 1.0, -1.0};
    const double vdYa[] = {3.0, 3.0, -3.0, -3.0};
    nuv::TAffineCoefs Coefs = {};
    ASSERT_EQ(1, nuv::CalcAffineCoefs(4, vdX, vdY, vdXa, vdYa, Coefs));
    EXPECT_EQ(2.0, Coefs.dA);
    EXPECT_EQ(0.0, Coefs.dB);
    EXPECT_EQ(0.0, Coefs.dC);
    EXPECT_EQ(0.0, Coefs.dD);
    EXPECT_EQ(3.0, Coefs.dE);
    EXPECT_EQ(0.0, Coefs.dF);
}

// The means are thirds, so a few roundings of numbers up to 23 occur, each by up to 1.8e-15.
TEST(CalcAffineCoefs, ThreePointsOfAnExactImageGiveItBackUpToRounding)
{
    ExpectFitNear({{0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}, {10.0, 12.0, 10.0}, {20.0, 20.0, 23.0}},
                  {2.0, 0.0, 10.0, 0.0, 3.0, 20.0}, 3e-14, 3e-14);
}

TEST(CalcAffineCoefs, ASquareGivesItsExactImageBackExactly)
{
    for (const TAffineCoefs& Coefs :
         {TAffineCoefs{2.0, 0.0, 10.0, 0.0, 3.0, 20.0}, TAffineCoefs{2.0, 1.0, 3.0, -4.0, 2.0, 5.0},
          TAffineCoefs{-0.5, 3.0, -8.0, 1.0, 0.25, 1024.0}})
    {
        ExpectFit(WithImage(SquareAround(0.0, 0.0), Coefs), Coefs);
        ExpectFit(WithImage(SquareAround(10.0, 20.0), Coefs), Coefs);
    }
}

TEST(CalcAffineCoefs, FewerThanThreePointsAreImpossibleAndLeaveCoefsUntouched)
{
    // The points are not degenerate; there are only too few of them.
    const TControlPoints Points = WithImage(SquareAround(0.0, 0.0), Identity);
    for (unsigned int iPoints : {0u, 1u, 2u})
    {
        TAffineCoefs Coefs = Filled<TAffineCoefs>();
        EXPECT_EQ(RET_IMPOSSIBLE, nuv::CalcAffineCoefs(iPoints, Points.vdX.data(), Points.vdY.data(),
                                                       Points.vdXa.data(), Points.vdYa.data(), Coefs));
        EXPECT_TRUE(SameRecord(Filled<TAffineCoefs>(), Coefs));
    }
    TAffineCoefs Coefs = Filled<TAffineCoefs>();
    EXPECT_EQ(RET_IMPOSSIBLE, nuv::CalcAffineCoefs(0, nullptr, nullptr, nullptr, nullptr, Coefs));
    EXPECT_TRUE(SameRecord(Filled<TAffineCoefs>(), Coefs));
}

TEST(CalcAffineCoefs, IdenticalSourceAndTargetGiveTheIdentity)
{
    ExpectFit(WithImage(SquareAround(10.0, 20.0), Identity), Identity);
    // Seven points whose means are not exact. The extent is 10, the condition below 10, and there are a few dozen
    // roundings.
    const std::vector<double> vdX = {0.1, 3.7, 9.3, 5.5, 2.2, 8.1, 4.9};
    const std::vector<double> vdY = {7.3, 0.4, 1.9, 9.6, 3.3, 6.1, 5.0};
    ExpectFitNear({vdX, vdY, vdX, vdY}, Identity, 1e-14, 1e-13);
}

// X is 4 at the last corner (1, 1) and Y is 4 at the first one (-1, -1); all other targets are 0. Over the centred
// square a = sum(X u)/4 and b = sum(X v)/4. So a = b = 1 and d = e = -1, and both means are 1.
TEST(CalcAffineCoefs, MinimisesTheResidualsOfXAndYByThemselves)
{
    TControlPoints Points = SquareAround(0.0, 0.0);
    Points.vdXa = {0.0, 0.0, 0.0, 4.0};
    Points.vdYa = {4.0, 0.0, 0.0, 0.0};
    ExpectFit(Points, {1.0, 1.0, 1.0, -1.0, -1.0, 1.0});
    Points.vdYa = {0.0, 0.0, 0.0, 0.0};
    ExpectFit(Points, {1.0, 1.0, 1.0, 0.0, 0.0, 0.0});
}

// The points are whole numbers and the image is exact, so only the fit itself rounds. The means are not exact. The sums
// have the size of the extent (6), not of the offset, so the linear part keeps 5e-15. Without centring, the matrix
// would have elements of 1e12 beside 7 and the linear part would be off by about 1e-4. The translation is a difference
// of numbers of 4e6: it is off by some units of 9e-10 and by 3e6 times the error of the linear part.
TEST(CalcAffineCoefs, ALargeCommonOffsetDoesNotSpoilTheFit)
{
    TControlPoints Points = {{0.0, 1.0, 0.0, 3.0, 2.0, 5.0, 6.0}, {0.0, 0.0, 1.0, 2.0, 6.0, 1.0, 3.0}, {}, {}};
    for (std::size_t i = 0; i < Points.vdX.size(); ++i)
    {
        Points.vdX[i] += 1e6;
        Points.vdY[i] += 2e6;
    }
    const TAffineCoefs Coefs = {2.0, 1.0, -5.0, -3.0, 0.5, 7.0};
    ExpectFitNear(WithImage(Points, Coefs), Coefs, 5e-15, 2e-8);

    // An offset of the source only: 1e6 is added to every x.
    Points = WithImage(SquareAround(1e6, 0.0), TAffineCoefs{2.0, 1.0, -2e6, -4.0, 2.0, 4e6});
    ExpectFit(Points, {2.0, 1.0, -2e6, -4.0, 2.0, 4e6});
}

// At 2^53 doubles are 2 apart. The sum of 2^53 + (0, 2, 8) rounds twice, and the mean comes out as 2^53 + 2 instead of
// 2^53 + 10/3. The deviations (-2, 0, 6) therefore sum to 4. The system contains these sums and still gives the right
// fit: 40 a - 4 b + 4 t = 104, -4 a + 6 b = -12 and 4 a + 3 t = 0 have the solution a = 3, b = 0, t = -4. Without the
// sums a would be 18/7.
TEST(CalcAffineCoefs, SumsOfDeviationsCarryWhatTheRoundedMeansLeft)
{
    const double dFar = 0x1p53;
    const std::vector<double> vdFar = {dFar, dFar + 2.0, dFar + 8.0};
    const std::vector<double> vdAcross = {0.0, 3.0, 0.0};
    const std::vector<double> vdThree = {0.0, 6.0, 24.0}; // 3 (vdFar - 2^53), with the exact mean 10
    TAffineCoefs Coefs;
    ASSERT_EQ(1, Fit({vdFar, vdAcross, vdThree, vdThree}, Coefs));
    EXPECT_NEAR(3.0, Coefs.dA, 1e-14);
    EXPECT_NEAR(0.0, Coefs.dB, 1e-14);
    EXPECT_NEAR(3.0, Coefs.dD, 1e-14);
    EXPECT_NEAR(0.0, Coefs.dE, 1e-14);
    ASSERT_EQ(1, Fit({vdAcross, vdFar, vdThree, vdThree}, Coefs));
    EXPECT_NEAR(0.0, Coefs.dA, 1e-14);
    EXPECT_NEAR(3.0, Coefs.dB, 1e-14);
    EXPECT_NEAR(0.0, Coefs.dD, 1e-14);
    EXPECT_NEAR(3.0, Coefs.dE, 1e-14);
    // As target: t = 4/3, and (4/3 + (2^53 + 2)) - 10/3 rounds to 2^53. Without it: 2^53 - 1.
    ASSERT_EQ(1, Fit({vdThree, vdAcross, vdFar, vdFar}, Coefs));
    EXPECT_SAME_BITS(dFar, Coefs.dC);
    EXPECT_SAME_BITS(dFar, Coefs.dF);
    EXPECT_NEAR(1.0 / 3.0, Coefs.dA, 1e-14);
    EXPECT_NEAR(1.0 / 3.0, Coefs.dD, 1e-14);
}

// With N = 2^30, (N + 1)(N - 1) = N^2 - 1 rounds to N^2, so SUu = -N^2 + N^2 - N^2 + N^2 = 0. If the products were not
// rounded it would be -1 or -2.
TEST(CalcAffineCoefs, RoundsEveryProductBeforeItIsAdded)
{
    const double dN = 0x1p30;
    const std::vector<double> vdAlong = {dN, dN + 1.0, -dN, -dN - 1.0};
    const std::vector<double> vdAcross = {1.0, -1.0, 1.0, -1.0};
    const std::vector<double> vdTarget = {-dN, dN - 1.0, dN, 1.0 - dN};
    ExpectFit({vdAlong, vdAcross, vdTarget, vdTarget}, {0.0, 0.0, 0.0, 0.0, 0.0, 0.0});
    ExpectFit({vdAcross, vdAlong, vdTarget, vdTarget}, {0.0, 0.0, 0.0, 0.0, 0.0, 0.0});
}

// The centre is (2^54, -2^54), and a = b = 1. For a target mean of 2, (2 - 2^54) + 2^54 = 2; if y came first, 2 + 2^54
// would round to 2^54 and leave 0. For a mean of 1, 1 - 2^54 rounds to -2^54 and leaves 0; if a x + b y were formed
// first, 1 would be left.
TEST(CalcAffineCoefs, MovesTheTranslationBackByXAndThenByY)
{
    const double dFar = 0x1p54;
    TControlPoints Points = {{dFar - 4.0, dFar + 4.0, dFar - 4.0, dFar + 4.0},
                             {-dFar - 4.0, -dFar - 4.0, -dFar + 4.0, -dFar + 4.0},
                             {-6.0, 2.0, 2.0, 10.0},
                             {-7.0, 1.0, 1.0, 9.0}};
    ExpectFit(Points, {1.0, 1.0, 2.0, 1.0, 1.0, 0.0});
    std::swap(Points.vdXa, Points.vdYa);
    ExpectFit(Points, {1.0, 1.0, 0.0, 1.0, 1.0, 2.0});
}

// Doubles near 1e16 are 2 apart. X = (-1e16, 1, 1e16, -1) has the rounded mean -1/4 (the 1 is lost) and the deviations
// -1e16, 1.25, 1e16, -0.75. In point order SUu and SU come to (1e16 + 1.25) - 1e16 = 2, less 0.75; backwards SUu is 2.
// SUv rounds to 2e16; c = 1.25/4 - 1/4.
// Suu over +-2^26 and +-1 is 2^53, to which the 1 is added twice and lost; backwards it would be 2^53 + 2.
TEST(CalcAffineCoefs, AddsTheTermsInPointOrder)
{
    TControlPoints Points = SquareAround(0.0, 0.0);
    Points.vdXa = Points.vdYa = {-1e16, 1.0, 1e16, -1.0};
    ExpectFit(Points, {0.3125, 5e15, 0.0625, 0.3125, 5e15, 0.0625});
    std::swap(Points.vdX, Points.vdY);
    ExpectFit(Points, {5e15, 0.3125, 0.0625, 5e15, 0.3125, 0.0625});

    const double dH = 0x1p26;
    const std::vector<double> vdAlong = {-dH, dH, -1.0, 1.0};
    const std::vector<double> vdAcross = {1.0, 1.0, -1.0, -1.0};
    const std::vector<double> vdTarget = {-dH, dH, 0.0, 0.0};
    ExpectFit({vdAlong, vdAcross, vdTarget, vdTarget}, {1.0, 0.0, 0.0, 1.0, 0.0, 0.0});
    ExpectFit({vdAcross, vdAlong, vdTarget, vdTarget}, {0.0, 1.0, 0.0, 0.0, 1.0, 0.0});
}

// The spread of the points has no tolerance, unlike the determinant of a result: here Suu = 4*2^-60.
TEST(CalcAffineCoefs, FitsPointsOfAnySpread)
{
    const double dH = 0x1p-30;
    const TAffineCoefs Coefs = {2.0, 1.0, 3.0, -4.0, 2.0, 5.0};
    ExpectFit(WithImage({{-dH, dH, -dH, dH}, {-dH, -dH, dH, dH}, {}, {}}, Coefs), Coefs);
}

// Checks that the points are exactly on one line: all cross products of the differences vanish.
void ExpectOnOneLine(const TControlPoints& a_Points)
{
    const std::size_t iLast = a_Points.vdX.size() - 1;
    for (std::size_t i = 1; i < iLast; ++i)
    {
        EXPECT_EQ((a_Points.vdX[i] - a_Points.vdX[0]) * (a_Points.vdY[iLast] - a_Points.vdY[0]),
                  (a_Points.vdY[i] - a_Points.vdY[0]) * (a_Points.vdX[iLast] - a_Points.vdX[0]));
    }
}

struct TNearLine
{
    TControlPoints Points;
    double dRatio2; // square of the spread across the line, by that along it
};

// Ten points along the direction (4, 3), 2^-k times as far across it, and their image. All coordinates are exact.
TNearLine PointsNearALine(std::mt19937& a_Engine, int k)
{
    const auto Number = [&a_Engine] { return static_cast<double>(static_cast<int>(a_Engine() % 256) - 128) / 128.0; };
    constexpr int Count = 10;
    TNearLine Near;
    double dAlongs = 0.0, dAcrosses = 0.0, dAlongs2 = 0.0, dAcrosses2 = 0.0;
    for (int i = 0; i < Count; ++i)
    {
        const double dAlong = Number(), dAcross = std::ldexp(Number(), -k);
        const double dX = 4.0 * dAlong - 3.0 * dAcross, dY = 3.0 * dAlong + 4.0 * dAcross;
        Near.Points.Add(dX, dY, 2.0 * dX - dY, dX + 1.5 * dY);
        dAlongs += dAlong;
        dAcrosses += dAcross;
        dAlongs2 += dAlong * dAlong;
        dAcrosses2 += dAcross * dAcross;
    }
    Near.dRatio2 = (dAcrosses2 - dAcrosses * dAcrosses / Count) / (dAlongs2 - dAlongs * dAlongs / Count);
    return Near;
}

// The header states the errors relative to the largest coefficient: at most 3e-15/r^2, typically 3e-17/r^2 or more.
TEST(CalcAffineCoefs, PointsNearALineLoseDigitsByTheSquareOfTheirSpread)
{
    std::mt19937 Engine(1);
    for (int k = 4; k <= 20; k += 4)
    {
        double dGreatest = 0.0;
        for (int iSet = 0; iSet < 200; ++iSet)
        {
            const TNearLine Near = PointsNearALine(Engine, k);
            TAffineCoefs Coefs;
            ASSERT_EQ(1, Fit(Near.Points, Coefs));
            for (double dError : {Coefs.dA - 2.0, Coefs.dB + 1.0, Coefs.dD - 1.0, Coefs.dE - 1.5})
            {
                dGreatest = std::max(dGreatest, std::fabs(dError) / 2.0 * Near.dRatio2);
            }
        }
        EXPECT_GT(3e-15, dGreatest) << k;
        EXPECT_LT(3e-17, dGreatest) << k;
    }
}

// u = v = (-1, 0, 1): the second pivot and its right-hand side are exactly 0. Every (a, b) with a + b = 2 fits equally
// well. The elimination takes b = 0 and reports success, although the result is collapsed.
TEST(CalcAffineCoefs, PointsOnOneLineSucceedThoughTheyDetermineNothing)
{
    const TControlPoints Points = {{0.0, 1.0, 2.0}, {0.0, 1.0, 2.0}, {0.0, 2.0, 4.0}, {5.0, 4.0, 3.0}};
    ExpectOnOneLine(Points);
    ExpectFit(Points, {2.0, 0.0, 0.0, -1.0, 0.0, 5.0});
}

// The points are on y = 3x, and the mean of x is rounded. The second pivot is only the rounding error, so the
// coefficients are huge and meaningless, and the fit reports success. The determinant of the result does not show it
// either.
TEST(CalcAffineCoefs, PointsOnOneLineCanGiveHugeCoefficientsAndADeterminantThatIsNotZero)
{
    const TControlPoints Points = {{0.0, 1.0, 3.0}, {0.0, 3.0, 9.0}, {0.0, 1.0, 1.0}, {3.0, 0.0, 1.0}};
    ExpectOnOneLine(Points);
    TAffineCoefs Coefs;
    EXPECT_EQ(1, Fit(Points, Coefs));
    EXPECT_GT(std::fabs(Coefs.dA), 1e12);
    EXPECT_GT(std::fabs(Coefs.dB), 1e12);
    EXPECT_GT(std::fabs(Coefs.dE * Coefs.dA - Coefs.dD * Coefs.dB), 1.0);
}

// All deviations and right-hand sides are 0: a = b = 0/1e-14, and the mean of the targets remains.
TEST(CalcAffineCoefs, EqualSourcePointsSucceedWithTheMeanOfTheTargets)
{
    ExpectFit({{7.0, 7.0, 7.0}, {-2.0, -2.0, -2.0}, {1.0, 2.0, 6.0}, {4.0, 4.0, 1.0}}, {0.0, 0.0, 3.0, 0.0, 0.0, 3.0});
}

TEST(CalcAffineCoefs, NonFiniteSourceCoordinatesSucceedWithNothingButNaN)
{
    for (double dValue : {NaN, Inf, -Inf})
    {
        for (std::vector<double> TControlPoints::*pArray : {&TControlPoints::vdX, &TControlPoints::vdY})
        {
            TControlPoints Points = WithImage(SquareAround(10.0, 20.0), Identity);
            (Points.*pArray)[2] = dValue;
            ExpectFit(Points, Filled<TAffineCoefs>(NaN));
        }
    }
}

TEST(CalcAffineCoefs, NonFiniteTargetCoordinatesSpoilOnlyTheirOwnCoordinate)
{
    for (double dValue : {NaN, Inf, -Inf})
    {
        TControlPoints Points = WithImage(SquareAround(10.0, 20.0), Identity);
        Points.vdXa[2] = dValue;
        ExpectFit(Points, {NaN, NaN, NaN, 0.0, 1.0, 0.0});
        Points = WithImage(SquareAround(10.0, 20.0), Identity);
        Points.vdYa[2] = dValue;
        ExpectFit(Points, {1.0, 0.0, 0.0, NaN, NaN, NaN});
    }
}

// The squares of deviations of 1e200 overflow. The reciprocal of the pivot is 0 and the right-hand sides are infinite.
TEST(CalcAffineCoefs, SquaresThatOverflowSucceedWithNaN)
{
    const std::vector<double> vdX = {-1e200, 1e200, -1e200, 1e200};
    const std::vector<double> vdY = {-1.0, -1.0, 1.0, 1.0};
    TAffineCoefs Coefs;
    EXPECT_EQ(1, Fit({vdX, vdY, vdX, vdY}, Coefs));
    EXPECT_TRUE(std::isnan(Coefs.dA));
}

// The sign of a zero coordinate and a subnormal coordinate are lost in the sums, so the result has the same bits.
TEST(CalcAffineCoefs, ZerosOfBothSignsAndSubnormalsAreTheSameCoordinates)
{
    const TAffineCoefs Coefs = {2.0, 1.0, 1.0, -4.0, 2.0, 2.0};
    for (double dZero : {0.0, -0.0, Subnormal, -Subnormal})
    {
        ExpectFit({{dZero, 2.0, dZero, 2.0}, {dZero, dZero, 2.0, 2.0}, {1.0, 5.0, 3.0, 7.0}, {2.0, -6.0, 6.0, -2.0}},
                  Coefs);
        ExpectFit({{0.0, 2.0, 0.0, 2.0}, {0.0, 0.0, 2.0, 2.0}, {dZero, 4.0, 2.0, 6.0}, {dZero, -8.0, 4.0, -4.0}},
                  {2.0, 1.0, 0.0, -4.0, 2.0, 0.0});
    }
}

} // namespace
