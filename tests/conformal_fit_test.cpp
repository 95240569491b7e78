// conformal_fit_test.cpp: the conformal least-squares fit.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "support/expect.h"
#include "support/fits.h"

namespace {

using namespace nuv_tests;
using nuv::RET_IMPOSSIBLE;
using nuv::TConformalCoefs;

int Fit(const TControlPoints& a_Points, bool a_bRigidInverse, TConformalCoefs& a_Coefs)
{
    a_Coefs = Filled<TConformalCoefs>();
    return nuv_tests::Fit(a_Points, a_Coefs, a_bRigidInverse);
}

// A record without inverse fields.
TConformalCoefs Forward(double a_dA, double a_dB, double a_dTx, double a_dTy)
{
    return {a_dA, a_dB, a_dTx, a_dTy, NaN, NaN};
}

void ExpectFit(const TControlPoints& a_Points, bool a_bRigidInverse, const TConformalCoefs& a_Expected)
{
    TConformalCoefs Coefs;
    EXPECT_EQ(1, Fit(a_Points, a_bRigidInverse, Coefs));
    EXPECT_TRUE(SameRecord(a_Expected, Coefs));
}

void ExpectNoFit(const TControlPoints& a_Points)
{
    for (bool bRigidInverse : {false, true})
    {
        TConformalCoefs Coefs;
        EXPECT_EQ(RET_IMPOSSIBLE, Fit(a_Points, bRigidInverse, Coefs));
        EXPECT_TRUE(SameRecord(Filled<TConformalCoefs>(), Coefs));
    }
}

TEST(CalcConformalCoefs, FewerThanTwoPointsAreImpossibleAndLeaveCoefsUntouched)
{
    // The points are not degenerate; there are only too few of them.
    const TControlPoints Points = WithImage(SquareAround(0.0, 0.0), Forward(1.0, 0.0, 0.0, 0.0));
    for (unsigned int iPoints : {0u, 1u})
    {
        TConformalCoefs Coefs = Filled<TConformalCoefs>();
        EXPECT_EQ(RET_IMPOSSIBLE, nuv::CalcConformalCoefs(iPoints, Points.vdX.data(), Points.vdY.data(),
                                                          Points.vdXa.data(), Points.vdYa.data(), false, Coefs));
        EXPECT_TRUE(SameRecord(Filled<TConformalCoefs>(), Coefs));
    }
    ExpectNoFit({});
    // Two such points would succeed with NaN. A single point fails before its coordinates are looked at.
    ExpectNoFit({{NaN}, {0.0}, {0.0}, {0.0}});
    ExpectNoFit({{0.0}, {Inf}, {0.0}, {0.0}});
}

// S = 1/2, Sa = 0, Sb = -1/2; Tx = 1 - 0/2 - (-1)*0, Ty = (-1/2 + 3/2) - 0.
TEST(CalcConformalCoefs, TwoPointsOfAQuarterTurnAndAShiftAreReproducedExactly)
{
    const TControlPoints Points = {{0.0, 1.0}, {0.0, 0.0}, {1.0, 1.0}, {1.0, 2.0}};
    TConformalCoefs Coefs;
    ASSERT_EQ(1, Fit(Points, false, Coefs));
    EXPECT_TRUE(SameRecord(TConformalCoefs{0.0, -1.0, 1.0, 1.0, 0.0, 1.0}, Coefs));
    double dScale, dAngle, dTx, dTy;
    EXPECT_EQ(1, nuv::ConformalCoefsToParam(Coefs, dScale, dAngle, dTx, dTy));
    EXPECT_EQ(1.0, dScale);
    EXPECT_TRUE(WithinUlps(LongPi / 2, dAngle, 2.0));
    for (std::size_t i = 0; i < 2; ++i)
    {
        EXPECT_EQ(Points.vdXa[i], Coefs.dA * Points.vdX[i] + Coefs.dB * Points.vdY[i] + Coefs.dTx);
        EXPECT_EQ(Points.vdYa[i], -Coefs.dB * Points.vdX[i] + Coefs.dA * Points.vdY[i] + Coefs.dTy);
    }
}

TEST(CalcConformalCoefs, IdenticalSourceAndTargetGiveTheIdentityWithANegativeZeroInverse)
{
    for (bool bRigidInverse : {false, true})
    {
        ExpectFit(WithImage(SquareAround(10.0, 20.0), Forward(1.0, 0.0, 0.0, 0.0)), bRigidInverse,
                  {1.0, 0.0, 0.0, 0.0, 1.0, -0.0});
    }
}

TEST(CalcConformalCoefs, ASourceScaledByTwoHasTheInverseOneHalfOrTwoIfRigid)
{
    const TControlPoints Points = WithImage(SquareAround(3.0, 5.0), Forward(2.0, 0.0, 0.0, 0.0));
    ExpectFit(Points, false, {2.0, 0.0, 0.0, 0.0, 0.5, -0.0});
    ExpectFit(Points, true, {2.0, 0.0, 0.0, 0.0, 2.0, -0.0});
}

// The ratio in the norm is 0, so the norm is 2 and its square 4. The inverse field is -(1/4)*(-2), or -(-2) for a rigid
// inverse.
TEST(CalcConformalCoefs, TheRigidInverseIsMinusBWhateverTheScale)
{
    const TControlPoints Points = WithImage(SquareAround(3.0, 5.0), Forward(0.0, -2.0, 7.0, 9.0));
    ExpectFit(Points, false, {0.0, -2.0, 7.0, 9.0, 0.0, 0.5});
    ExpectFit(Points, true, {0.0, -2.0, 7.0, 9.0, 0.0, 2.0});
}

// The square around the origin has S = 8. X = (4, 0, 0, 0) and Y = (0, 8, 0, 0) have the means 1 and 2. Over the
// centred points Sa = sum(X x + Y y) = -4 - 8 and Sb = sum(X y - Y x) = -4 - 8.
TEST(CalcConformalCoefs, MinimisesTheResidualsOfBothCoordinatesTogether)
{
    TControlPoints Points = SquareAround(0.0, 0.0);
    Points.vdXa = {4.0, 0.0, 0.0, 0.0};
    Points.vdYa = {0.0, 8.0, 0.0, 0.0};
    ExpectFit(Points, true, {-1.5, -1.5, 1.0, 2.0, -1.5, 1.5});
}

TEST(CalcConformalCoefs, EqualSourcePointsAreImpossibleEvenIfTheTargetsDiffer)
{
    ExpectNoFit({{4.0, 4.0, 4.0}, {-3.0, -3.0, -3.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}});
    ExpectNoFit({{0.1, 0.1, 0.1}, {0.2, 0.2, 0.2}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}); // means off by some 1e-17
    ExpectNoFit({{5.0, 5.0}, {5.0, 5.0}, {1.0, 1.0}, {2.0, 2.0}});
}

// At 1e11 doubles are 2^-16 apart. The sum of three times 1e11 + 0.1 is rounded, and its third is the next double. So
// each deviation is 2^-16 and S = 6*2^-32, far above the tolerance.
TEST(CalcConformalCoefs, MissesEqualPointsOfSoLargeCoordinatesThatTheirMeanRounds)
{
    const double dFar = 1e11 + 0.1;
    const std::vector<double> vdFar(3, dFar);
    double dSum = dFar + dFar;
    dSum += dFar;
    ASSERT_EQ(0x1p-16, dSum / 3.0 - dFar);
    TConformalCoefs Coefs;
    EXPECT_EQ(1, Fit({vdFar, vdFar, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}, false, Coefs));
}

// Two points +-(h, k): S = 2 (k k + h h), with each operation rounded. Exact rational arithmetic found values for which
// S is the double below 1e-12, 1e-12 itself and the double above.
TEST(CalcConformalCoefs, ASpreadOfTheToleranceAndBelowIsImpossibleAndTheNextOneSucceeds)
{
    const double dBelow = 0x1.7ba0041886990p-21;
    const double dAbove = 0x1.7ba0041886991p-21;
    const double dK = 0x1.45d5b5c3f4f6cp-47;
    ASSERT_SAME_BITS(BelowTolerance, 2.0 * (dBelow * dBelow));
    ASSERT_SAME_BITS(Tolerance, 2.0 * (dK * dK + dBelow * dBelow));
    ASSERT_SAME_BITS(AboveTolerance, 2.0 * (dAbove * dAbove));
    ExpectNoFit({{-dBelow, dBelow}, {0.0, 0.0}, {0.0, 1.0}, {0.0, 0.0}});
    ExpectNoFit({{-dBelow, dBelow}, {-dK, dK}, {0.0, 1.0}, {0.0, 0.0}});
    ExpectNoFit({{-Subnormal, Subnormal}, {0.0, 0.0}, {0.0, 1.0}, {0.0, 0.0}}); // the squares vanish
    TConformalCoefs Coefs;
    EXPECT_EQ(1, Fit({{-dAbove, dAbove}, {0.0, 0.0}, {0.0, 1.0}, {0.0, 0.0}}, false, Coefs));
    // X from 0 to 1 over 2h: A = h/(2 h h); reciprocal, product and the rounded S are within 4 units.
    EXPECT_TRUE(WithinUlps(0.5L / dAbove, Coefs.dA, 4.0));
}

TEST(CalcConformalCoefs, EqualTargetPointsGiveTheMeanAndNaNInverseFieldsUnlessRigid)
{
    TControlPoints Points = SquareAround(3.0, 5.0);
    Points.vdXa.assign(4, 6.0);
    Points.vdYa.assign(4, -7.0);
    ExpectFit(Points, false, {0.0, 0.0, 6.0, -7.0, NaN, NaN}); // 0/0 and -inf*0
    ExpectFit(Points, true, {0.0, 0.0, 6.0, -7.0, 0.0, -0.0});
}

// x = (-3, 1, 1, 1) has S = 12, and a fourth of the sum of the targets is exact. X = (0, 20, 0, 0) gives Sa = 20; Y =
// -X gives Sb = 20. 20 times the rounded 1/12 ends in ...aap+0, while 20/12 = 5/3 ends in ...abp+0.
TEST(CalcConformalCoefs, MultipliesByTheReciprocalOfTheSpread)
{
    const double dFiveThirds = 0x1.aaaaaaaaaaaaap+0;
    ExpectFit({{-3.0, 1.0, 1.0, 1.0}, {0.0, 0.0, 0.0, 0.0}, {0.0, 20.0, 0.0, 0.0}, {0.0, -20.0, 0.0, 0.0}}, true,
              {dFiveThirds, dFiveThirds, 5.0, -5.0, dFiveThirds, -dFiveThirds});
}

// The expected bits come from exact rational arithmetic with every step rounded: norm, square, quotient and product of
// the negative reciprocal. The squared norms come out as 50 and 106 plus a unit. A^2 + B^2, a quotient for B or a
// product for A would give other bits.
TEST(CalcConformalCoefs, DividesForTheInverseAAndMultipliesForTheInverseB)
{
    ExpectFit(WithImage(SquareAround(0.0, 0.0), Forward(5.0, 5.0, 0.0, 0.0)), false,
              {5.0, 5.0, 0.0, 0.0, 0x1.9999999999999p-4, -0x1.9999999999998p-4});
    ExpectFit(WithImage(SquareAround(0.0, 0.0), Forward(5.0, 9.0, 0.0, 0.0)), false,
              {5.0, 9.0, 0.0, 0.0, 0x1.826a439f656f1p-5, -0x1.5bc609a90e7d8p-4});
}

// A = B = 1, S = 32, targets 2 + (dx, -dx). Below 2^54 doubles are 2 apart, above it 4.
// Centre (2^54, -2^54): Tx = (2 - 2^54) + 2^54 = 2, with y first 0; Ty = (2^54 + 2) + 2^54, where 2^54 + 2 rounds to
// 2^54. Centre (2^54, 2^54): Tx = (2 - 2^54) - 2^54 = -2^55 + 2, rounded to -2^55; Ty = (2^54 + 2) - 2^54 = 0, with y
// first 2.
TEST(CalcConformalCoefs, FormsTheTranslationsInOrder)
{
    const double dFar = 0x1p54;
    const std::vector<double> vdX = {dFar - 4.0, dFar + 4.0};
    ExpectFit({vdX, {-dFar, -dFar}, {-2.0, 6.0}, {6.0, -2.0}}, true, {1.0, 1.0, 2.0, 2.0 * dFar, 1.0, -1.0});
    ExpectFit({vdX, {dFar, dFar}, {-2.0, 6.0}, {6.0, -2.0}}, true, {1.0, 1.0, -2.0 * dFar, 0.0, 1.0, -1.0});
    // With a target mean of 1, (1 - 2^54) + 2^54 = 0 and (2^54 + 1) - 2^54 = 0. If the two products were added first,
    // the result would be 1.
    ExpectFit({vdX, {-dFar, -dFar}, {-3.0, 5.0}, {5.0, -3.0}}, true, {1.0, 1.0, 0.0, 2.0 * dFar, 1.0, -1.0});
    ExpectFit({vdX, {dFar, dFar}, {-3.0, 5.0}, {5.0, -3.0}}, true, {1.0, 1.0, -2.0 * dFar, 0.0, 1.0, -1.0});
}

// Points +-(2^26, 0) and +-(1, 1): S = 2^52 + 2^52, then twice + (1 + 1), gives 2^53 + 4. If the ones were added one by
// one, each would be lost beside 2^53, where doubles are 2 apart. Targets at the first two points alone have the other
// sum, 2^53, and 2^53 times the rounded reciprocal of 2^53 + 4 is 1 - 2^-51.
TEST(CalcConformalCoefs, FormsAPointsTermBeforeItIsAddedToTheSum)
{
    const double dH = 0x1p26;
    const double dBelowOne = 1.0 - 0x1p-51;
    const std::vector<double> vdX = {-dH, dH, -1.0, 1.0};
    const std::vector<double> vdY = {0.0, 0.0, -1.0, 1.0};
    const std::vector<double> vdFirst = {-dH, dH, 0.0, 0.0};
    const std::vector<double> vdNone(4, 0.0);
    const std::vector<double> vdTurnedY = {dH, -dH, 1.0, -1.0};
    ExpectFit({vdX, vdY, vdFirst, vdNone}, true, {dBelowOne, 0.0, 0.0, 0.0, dBelowOne, -0.0});
    ExpectFit({vdX, vdY, vdX, vdY}, true, {1.0, 0.0, 0.0, 0.0, 1.0, -0.0});       // Sa = 2^53 + 4 too
    ExpectFit({vdX, vdY, vdY, vdTurnedY}, true, {0.0, 1.0, 0.0, 0.0, 0.0, -1.0}); // Sb = 2^53 + 4 too
}

// Points +-(dx, dy), so that the means are 0. (2^30 + 1)(2^30 - 1) = 2^60 - 1 rounds to 2^60, and the other product
// cancels it: dX dx + dY dy = 0 or dX dy - dY dx = 0.
TEST(CalcConformalCoefs, RoundsEveryProductBeforeItIsAdded)
{
    const auto FitPair = [](double a_dX, double a_dY, double a_dXa, double a_dYa)
    {
        TConformalCoefs Coefs;
        EXPECT_EQ(1, Fit({{-a_dX, a_dX}, {-a_dY, a_dY}, {-a_dXa, a_dXa}, {-a_dYa, a_dYa}}, true, Coefs));
        return Coefs;
    };
    const double dN = 0x1p30;
    EXPECT_SAME_BITS(0.0, FitPair(dN, dN - 1.0, -dN, dN + 1.0).dA);
    EXPECT_SAME_BITS(0.0, FitPair(dN - 1.0, dN, dN + 1.0, -dN).dA);
    EXPECT_SAME_BITS(0.0, FitPair(dN, dN - 1.0, dN + 1.0, dN).dB);
    EXPECT_SAME_BITS(0.0, FitPair(dN - 1.0, dN, dN, dN + 1.0).dB);
}

// Doubles near 1e16 are 2 apart. X = (-1e16, 1, 1e16, -1) has the rounded mean -1/4 (the 1 is lost) and the deviations
// -1e16, 1.25, 1e16, -0.75. In point order Sa is (1e16 + 1.25) - 1e16 = 2, less 0.75; backwards it would be 2. The same
// Y gives Sb = -1.25. S over +-2^26 and +-1 is 2^53, to which the 1 is added twice and lost; backwards 2^53 + 2.
TEST(CalcConformalCoefs, AddsTheTermsInPointOrder)
{
    const std::vector<double> vdNone(4, 0.0);
    const std::vector<double> vdFar = {-1e16, 1.0, 1e16, -1.0};
    const TControlPoints Corners = SquareAround(0.0, 0.0);
    TConformalCoefs Coefs;
    ASSERT_EQ(1, Fit({Corners.vdX, Corners.vdY, vdFar, vdNone}, true, Coefs));
    EXPECT_SAME_BITS(1.25 / 8.0, Coefs.dA);
    ASSERT_EQ(1, Fit({Corners.vdX, Corners.vdY, vdNone, vdFar}, true, Coefs));
    EXPECT_SAME_BITS(-1.25 / 8.0, Coefs.dB);
    const double dH = 0x1p26;
    ASSERT_EQ(1, Fit({{-dH, dH, -1.0, 1.0}, vdNone, {-dH, dH, 0.0, 0.0}, vdNone}, true, Coefs));
    EXPECT_SAME_BITS(1.0, Coefs.dA);
}

// The points are whole numbers and the image is exact, so only the fit itself rounds. The means are not exact. The sums
// have the size of the extent (6), not of the offset, so the linear part keeps 5e-15. Sums about the origin (of 1e13)
// would leave an error of 1e-3. The translations are differences of numbers of 5e6, and carry 3e6 times the error of
// the linear part.
TEST(CalcConformalCoefs, ALargeCommonOffsetDoesNotSpoilTheFit)
{
    TControlPoints Points = {{0.0, 1.0, 0.0, 3.0, 2.0, 5.0, 6.0}, {0.0, 0.0, 1.0, 2.0, 6.0, 1.0, 3.0}, {}, {}};
    for (std::size_t i = 0; i < Points.vdX.size(); ++i)
    {
        Points.vdX[i] += 1e6;
        Points.vdY[i] += 2e6;
    }
    TConformalCoefs Coefs;
    ASSERT_EQ(1, Fit(WithImage(Points, Forward(2.0, -0.5, 7.0, -9.0)), false, Coefs));
    EXPECT_NEAR(2.0, Coefs.dA, 5e-15);
    EXPECT_NEAR(-0.5, Coefs.dB, 5e-15);
    EXPECT_NEAR(7.0, Coefs.dTx, 2e-8);
    EXPECT_NEAR(-9.0, Coefs.dTy, 2e-8);
    EXPECT_NEAR(2.0 / 4.25, Coefs.dInvA, 5e-15);
    EXPECT_NEAR(0.5 / 4.25, Coefs.dInvB, 5e-15);
}

TEST(CalcConformalCoefs, NonFiniteCoordinatesSucceedWithNothingButNaN)
{
    for (double dValue : {NaN, Inf, -Inf})
    {
        for (std::vector<double> TControlPoints::*pArray :
             {&TControlPoints::vdX, &TControlPoints::vdY, &TControlPoints::vdXa, &TControlPoints::vdYa})
        {
            TControlPoints Points = WithImage(SquareAround(10.0, 20.0), Forward(1.0, 0.0, 0.0, 0.0));
            (Points.*pArray)[2] = dValue;
            ExpectFit(Points, false, Filled<TConformalCoefs>(NaN));
        }
    }
}

// The sum of squares overflows: its reciprocal is 0 and the products with infinite sums are NaN.
TEST(CalcConformalCoefs, SquaresThatOverflowSucceedWithNaN)
{
    const std::vector<double> vdFar = {-1e200, 1e200};
    TConformalCoefs Coefs;
    EXPECT_EQ(1, Fit({vdFar, {0.0, 0.0}, vdFar, {0.0, 0.0}}, false, Coefs));
    EXPECT_TRUE(std::isnan(Coefs.dA));
}

// The square of the scale is subnormal, then 0, and at last infinite.
TEST(CalcConformalCoefs, TheInverseOfATinyOrHugeScaleIsLost)
{
    const auto InverseOf = [](double a_dScale)
    {
        TConformalCoefs Coefs;
        EXPECT_EQ(1, Fit(WithImage(SquareAround(0.0, 0.0), Forward(a_dScale, 0.0, 0.0, 0.0)), false, Coefs));
        return Coefs;
    };
    EXPECT_EQ(0.0, InverseOf(7.5e-155).dInvB);
    EXPECT_TRUE(std::isnan(InverseOf(7.4e-155).dInvB));
    EXPECT_TRUE(std::isfinite(InverseOf(1.6e-162).dInvA));
    EXPECT_EQ(Inf, InverseOf(1.5e-162).dInvA);
    EXPECT_LT(0.0, InverseOf(1.3e154).dInvA);
    EXPECT_EQ(0.0, InverseOf(1.4e154).dInvA);
}

// The sign of a zero coordinate and a subnormal coordinate are lost in the sums, so the result has the same bits.
TEST(CalcConformalCoefs, ZerosOfBothSignsAndSubnormalsAreTheSameCoordinates)
{
    for (double dZero : {0.0, -0.0, Subnormal, -Subnormal})
    {
        ExpectFit(
            {{dZero, 2.0, dZero, 2.0}, {dZero, dZero, 2.0, 2.0}, {dZero, 4.0, dZero, 4.0}, {dZero, dZero, 4.0, 4.0}},
            false, {2.0, 0.0, 0.0, 0.0, 0.5, -0.0});
    }
}

} // namespace
