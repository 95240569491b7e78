// affine_test.cpp: affine conversions, inverse and backward mapping.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/expect.h"

#include <cfloat>

namespace {

using namespace nuv_tests;
using nuv::RET_IMPOSSIBLE;
using nuv::TAffineCoefs;

const TAffineCoefs Identity = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0};

struct TParams
{
    double dSx;
    double dSy;
    double dPhi;
    double dTheta;
    double dTx;
    double dTy;
};

TAffineCoefs FromParams(const TParams& a_Params)
{
    TAffineCoefs Coefs = Filled<TAffineCoefs>();
    nuv::AffineParamsToCoefs(a_Params.dSx, a_Params.dSy, a_Params.dPhi, a_Params.dTheta, a_Params.dTx, a_Params.dTy,
                             Coefs);
    return Coefs;
}

int ToParams(const TAffineCoefs& a_Coefs, TParams& a_Params)
{
    a_Params = Filled<TParams>();
    return nuv::AffineCoefsToParam(a_Coefs, a_Params.dSx, a_Params.dSy, a_Params.dPhi, a_Params.dTheta, a_Params.dTx,
                                   a_Params.dTy);
}

void ExpectParams(const TAffineCoefs& a_Coefs, int a_iResult, const TParams& a_Expected)
{
    SCOPED_TRACE(::testing::PrintToString(Fields(a_Coefs)));
    TParams Params;
    EXPECT_EQ(a_iResult, ToParams(a_Coefs, Params));
    EXPECT_TRUE(SameRecord(a_Expected, Params));
}

void ExpectCoefs(const TParams& a_Params, const TAffineCoefs& a_Expected)
{
    SCOPED_TRACE(::testing::PrintToString(Fields(a_Params)));
    EXPECT_TRUE(SameRecord(a_Expected, FromParams(a_Params)));
}

// ---------------------------------------------------------------------------------------------------------------------
// Parameters to coefficients. The functions of an angle 0 are exact: cos 1, sin and tan 0 with the sign of the angle.
// ---------------------------------------------------------------------------------------------------------------------

TEST(AffineParamsToCoefs, ScalesWithoutRotationAndSkewGiveADiagonalAndComeBack)
{
    const TParams Params = {2.0, 3.0, 0.0, 0.0, 10.0, 20.0};
    const TAffineCoefs Coefs = {2.0, 0.0, 10.0, 0.0, 3.0, 20.0};
    ExpectCoefs(Params, Coefs);
    ExpectParams(Coefs, 1, Params);
}

// a = 1 sx, d = 0 sx.
TEST(AffineParamsToCoefs, TakesSpecialScalesAlongXThroughTheArithmetic)
{
    for (double dSx : {-0.0, Subnormal, -Subnormal, Tolerance, -2.0, Inf, -Inf, NaN})
    {
        const double dD = std::isfinite(dSx) ? std::copysign(0.0, dSx) : NaN;
        ExpectCoefs({dSx, 3.0, 0.0, 0.0, 1.0, 2.0}, {dSx, 0.0, 1.0, dD, 3.0, 2.0});
    }
}

// p = 1 sy, q = 0 sy; b = p*0 - q is 0 - 0 or -0 - -0, always +0.0; e = q*0 + p.
TEST(AffineParamsToCoefs, TakesSpecialScalesAlongYThroughTheArithmetic)
{
    for (double dSy : {0.0, -0.0, Subnormal, -Subnormal, Tolerance, -2.0})
    {
        ExpectCoefs({2.0, dSy, 0.0, 0.0, 1.0, 2.0}, {2.0, 0.0, 1.0, 0.0, dSy, 2.0});
    }
    for (double dSy : {Inf, -Inf, NaN})
    {
        ExpectCoefs({2.0, dSy, 0.0, 0.0, 1.0, 2.0}, {2.0, NaN, 1.0, 0.0, NaN, 2.0});
    }
}

TEST(AffineParamsToCoefs, TakesSpecialAnglesThroughTheArithmetic)
{
    ExpectCoefs({2.0, 3.0, -0.0, 0.0, 1.0, 2.0}, {2.0, -0.0, 1.0, 0.0, 3.0, 2.0}); // b = 3*-0 - 0
    ExpectCoefs({2.0, 3.0, 0.0, -0.0, 1.0, 2.0}, {2.0, 0.0, 1.0, -0.0, 3.0, 2.0}); // b = 0 - (-0)
    for (double dAngle : {Inf, -Inf, NaN})
    {
        ExpectCoefs({2.0, 3.0, dAngle, 0.0, 1.0, 2.0}, {2.0, NaN, 1.0, 0.0, NaN, 2.0});
        ExpectCoefs({2.0, 3.0, 0.0, dAngle, 1.0, 2.0}, {NaN, NaN, 1.0, NaN, NaN, 2.0});
    }
}

TEST(AffineParamsToCoefs, PassesTranslationsOnAsTheyAre)
{
    for (double dValue : {0.0, -0.0, Subnormal, Inf, -Inf, NaN, 0.1})
    {
        ExpectCoefs({2.0, 3.0, 0.0, 0.0, dValue, 7.0}, {2.0, 0.0, dValue, 0.0, 3.0, 7.0});
        ExpectCoefs({2.0, 3.0, 0.0, 0.0, 7.0, dValue}, {2.0, 0.0, 7.0, 0.0, 3.0, dValue});
    }
}

// The reference is computed in extended precision where the platform has it. cos, sin and tan of a C library are off by
// at most 5 units in the last place (the worst one measured), and each product or sum adds half a unit. Two functions
// and three operations stay below 12 units of the greater term.
TEST(AffineParamsToCoefs, FollowsItsFormulasForAnyAngles)
{
    const std::vector<TParams> Cases = {{2.0, 3.0, 0.3, 0.7, 1.0, 2.0},   {0.5, 4.0, -0.6, 2.5, 1.0, 2.0},
                                        {7.0, -3.0, 1.2, -1.1, 1.0, 2.0}, {-1.5, 0.25, -1.4, 4.0, 1.0, 2.0},
                                        {3.0, 3.0, 0.0, 5.5, 1.0, 2.0},   {1.0, 1.0, 0.9, 100.0, 1.0, 2.0}};
    for (const TParams& Case : Cases)
    {
        SCOPED_TRACE(::testing::PrintToString(Fields(Case)));
        const TAffineCoefs Coefs = FromParams(Case);
        const long double dCos = std::cos(static_cast<long double>(Case.dTheta));
        const long double dSin = std::sin(static_cast<long double>(Case.dTheta));
        const long double dTan = std::tan(static_cast<long double>(Case.dPhi));
        EXPECT_TRUE(WithinUlps(Case.dSx * dCos, Coefs.dA, 6.0));
        EXPECT_TRUE(WithinUlps(Case.dSx * dSin, Coefs.dD, 6.0));
        const double dTerms = static_cast<double>(std::fabs(Case.dSy) * (1.0L + std::fabs(dTan)));
        EXPECT_NEAR(static_cast<double>(Case.dSy * (dCos * dTan - dSin)), Coefs.dB, 12.0 * DBL_EPSILON * dTerms);
        EXPECT_NEAR(static_cast<double>(Case.dSy * (dSin * dTan + dCos)), Coefs.dE, 12.0 * DBL_EPSILON * dTerms);
    }
}

// The tangent of the doubles nearest to +-pi/2 is +-1.633e16.
TEST(AffineParamsToCoefs, ASkewOfARightAngleGivesAHugeCoefficientAndNoFailure)
{
    for (double dSign : {1.0, -1.0})
    {
        const TAffineCoefs Coefs = FromParams({1.0, 2.0, dSign * 0x1.921fb54442d18p+0, 0.0, 0.0, 0.0});
        EXPECT_NEAR(dSign * 2.0 * 1.633123935319537e16, Coefs.dB, 100.0);
        EXPECT_SAME_BITS(2.0, Coefs.dE);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Coefficients to parameters
// ---------------------------------------------------------------------------------------------------------------------

TEST(AffineCoefsToParam, ARotationOfMinusAQuarterTurnComesBackAsThreeQuarters)
{
    TParams Params;
    EXPECT_EQ(1, ToParams(FromParams({1.0, 1.0, 0.0, static_cast<double>(-LongPi / 2), 5.0, 6.0}), Params));
    // atan2 is off by up to a unit, and the reduction rounds once. The doubles of pi/2 and 2 pi add less than that.
    EXPECT_TRUE(WithinUlps(1.5L * LongPi, Params.dTheta, 2.0));
    EXPECT_TRUE(WithinUlps(1.0L, Params.dSx, 2.0));
    EXPECT_TRUE(WithinUlps(1.0L, Params.dSy, 4.0));
    EXPECT_NEAR(0.0, Params.dPhi, 4.0 * DBL_EPSILON);
}

TEST(AffineCoefsToParam, WithoutAnImageOfTheXAxisIsImpossibleAndWritesOnlyItsScale)
{
    for (double dZero : {0.0, -0.0})
    {
        ExpectParams({dZero, 1.0, 2.0, dZero, 3.0, 4.0}, RET_IMPOSSIBLE,
                     {0.0, Untouched, Untouched, Untouched, Untouched, Untouched});
    }
}

// With d = 0 the scale is sqrt(0 + 1)*|a| = |a|; with a = 0 it is |d|.
TEST(AffineCoefsToParam, AScaleAlongXWithinTheToleranceIsImpossible)
{
    for (double dValue : {Subnormal, BelowTolerance, Tolerance})
    {
        for (double dSign : {1.0, -1.0})
        {
            const TParams Expected = {dValue, Untouched, Untouched, Untouched, Untouched, Untouched};
            ExpectParams({dSign * dValue, 0.0, 2.0, 0.0, 1.0, 4.0}, RET_IMPOSSIBLE, Expected);
            ExpectParams({0.0, 1.0, 2.0, dSign * dValue, 0.0, 4.0}, RET_IMPOSSIBLE, Expected);
        }
    }
}

// The double above 1e-12 times its rounded reciprocal rounds to 1.
TEST(AffineCoefsToParam, AScaleAlongXJustAboveTheToleranceSucceeds)
{
    ExpectParams({AboveTolerance, 0.0, 2.0, 0.0, 1.0, 4.0}, 1, {AboveTolerance, 1.0, 0.0, 0.0, 2.0, 4.0});
}

// With a = 1 and d = 0, sy = e*1 - b*0.
TEST(AffineCoefsToParam, AScaleAlongYWithinTheToleranceIsImpossibleAndLeavesTheSkewAndTranslations)
{
    for (double dValue : {0.0, Subnormal, BelowTolerance, Tolerance})
    {
        for (double dSign : {1.0, -1.0})
        {
            ExpectParams({1.0, 7.0, 2.0, 0.0, dSign * dValue, 4.0}, RET_IMPOSSIBLE,
                         {1.0, dSign * dValue, Untouched, 0.0, Untouched, Untouched});
        }
    }
}

TEST(AffineCoefsToParam, AScaleAlongYJustAboveTheToleranceSucceeds)
{
    for (double dSign : {1.0, -1.0})
    {
        // phi = atan(0/sy): the zero has the sign of the quotient.
        ExpectParams({1.0, 0.0, 2.0, 0.0, dSign * AboveTolerance, 4.0}, 1,
                     {1.0, dSign * AboveTolerance, dSign * 0.0, 0.0, 2.0, 4.0});
    }
}

// (e v + b u)/sy = ((-1)*0 + 0*1)/-1 = (-0 + 0)/-1 = -0.
TEST(AffineCoefsToParam, AMirrorImageIsANegativeScaleAlongY)
{
    ExpectParams({1.0, 0.0, 2.0, 0.0, -1.0, 4.0}, 1, {1.0, -1.0, -0.0, 0.0, 2.0, 4.0});
}

TEST(AffineCoefsToParam, TheScaleAlongXIsNeverNegative)
{
    for (double dZero : {0.0, -0.0}) // atan2 gives pi or -pi, which is reduced to pi
    {
        TParams Params;
        EXPECT_EQ(1, ToParams({-2.0, 0.0, 2.0, dZero, -3.0, 4.0}, Params));
        EXPECT_SAME_BITS(2.0, Params.dSx);
        EXPECT_SAME_BITS(3.0, Params.dSy);
        EXPECT_TRUE(WithinUlps(LongPi, Params.dTheta, 1.0));
        EXPECT_EQ(0.0, Params.dPhi);
    }
}

TEST(AffineCoefsToParam, ATinyNegativeRotationIsTwoPiAndNegativeZeroStays)
{
    TParams Params;
    EXPECT_EQ(1, ToParams({1.0, 0.0, 2.0, -1e-20, 1.0, 4.0}, Params));
    EXPECT_SAME_BITS(0x1.921fb54442d18p+2, Params.dTheta);
    EXPECT_EQ(1, ToParams({1.0, 0.0, 2.0, -0.0, 1.0, 4.0}, Params));
    EXPECT_SAME_BITS(-0.0, Params.dTheta);
}

// 49 times the rounded reciprocal of 49 is the double below 1, while 49/49 is 1.
TEST(AffineCoefsToParam, MultipliesByTheReciprocalOfTheScale)
{
    ExpectParams({49.0, 0.0, 2.0, 0.0, 1.0, 4.0}, 1, {49.0, 0x1.fffffffffffffp-1, 0.0, 0.0, 2.0, 4.0});
    TParams Params;
    EXPECT_EQ(1, ToParams({0.0, -1.0, 2.0, 49.0, 0.0, 4.0}, Params));
    EXPECT_SAME_BITS(0x1.fffffffffffffp-1, Params.dSy);
}

// The scale is 5 and the unit vector (0.6, 0.8), rounded: sy = 7*0.6 - 3*0.8. The expected bits come from exact
// rational arithmetic in which every operation is rounded once. With a product that is not rounded they would end in
// ...cep+0 or ...d1p+0.
TEST(AffineCoefsToParam, RoundsBothProductsBeforeTheyAreSubtracted)
{
    TParams Params;
    EXPECT_EQ(1, ToParams({3.0, 3.0, 0.0, 4.0, 7.0, 0.0}, Params));
    EXPECT_SAME_BITS(5.0, Params.dSx);
    EXPECT_SAME_BITS(0x1.cccccccccccd0p+0, Params.dSy);
}

TEST(AffineCoefsToParam, ASkewIsPositiveTowardsTheImageOfTheXAxis)
{
    TParams Params;
    EXPECT_EQ(1, ToParams({1.0, 1.0, 0.0, 0.0, 1.0, 0.0}, Params));
    EXPECT_TRUE(WithinUlps(LongPi / 4, Params.dPhi, 1.0));
    EXPECT_EQ(1, ToParams({1.0, -1.0, 0.0, 0.0, 1.0, 0.0}, Params));
    EXPECT_TRUE(WithinUlps(-LongPi / 4, Params.dPhi, 1.0));
    EXPECT_EQ(1, ToParams({1.0, 1e300, 0.0, 0.0, 2e-12, 0.0}, Params)); // the quotient overflows: pi/2 itself
    EXPECT_TRUE(WithinUlps(LongPi / 2, Params.dPhi, 1.0));
}

TEST(AffineCoefsToParam, TakesSpecialCoefficientsThroughTheArithmetic)
{
    const double dNone = Untouched;
    // The norm of (NaN, 0) is 0. The norms of (0, NaN) and (1, NaN) are NaN, which does not count as zero.
    ExpectParams({NaN, 0.0, 2.0, 0.0, 1.0, 4.0}, RET_IMPOSSIBLE, {0.0, dNone, dNone, dNone, dNone, dNone});
    ExpectParams({0.0, 0.0, 2.0, NaN, 1.0, 4.0}, 1, {NaN, NaN, NaN, NaN, 2.0, 4.0});
    ExpectParams({1.0, 0.0, 2.0, NaN, 1.0, 4.0}, 1, {NaN, NaN, NaN, NaN, 2.0, 4.0});
    for (double dSign : {1.0, -1.0})
    {
        ExpectParams({dSign * Inf, 0.0, 2.0, 0.0, 1.0, 4.0}, 1, {Inf, NaN, NaN, NaN, 2.0, 4.0});         // u = inf*0
        ExpectParams({1.0, dSign * Inf, 2.0, 0.0, 1.0, 4.0}, 1, {1.0, NaN, NaN, 0.0, 2.0, 4.0});         // inf*0
        ExpectParams({1.0, 0.0, 2.0, 0.0, dSign * Inf, 4.0}, 1, {1.0, dSign * Inf, NaN, 0.0, 2.0, 4.0}); // e*0
    }
    ExpectParams({1.0, NaN, 2.0, 0.0, 1.0, 4.0}, 1, {1.0, NaN, NaN, 0.0, 2.0, 4.0});
    ExpectParams({1.0, 0.0, 2.0, 0.0, NaN, 4.0}, 1, {1.0, NaN, NaN, 0.0, 2.0, 4.0});
    for (double dValue : {-0.0, Subnormal, Inf, -Inf, NaN})
    {
        ExpectParams({1.0, 0.0, dValue, 0.0, 1.0, 4.0}, 1, {1.0, 1.0, 0.0, 0.0, dValue, 4.0});
        ExpectParams({1.0, 0.0, 2.0, 0.0, 1.0, dValue}, 1, {1.0, 1.0, 0.0, 0.0, 2.0, dValue});
    }
}

// The closed formulas in extended precision. Norm, reciprocal, products, difference and quotient are about ten
// roundings, and the terms of these cases cancel by less than a factor of 3. 32 units are enough.
TEST(AffineCoefsToParam, AgreesWithTheClosedFormulas)
{
    const std::vector<TAffineCoefs> Cases = {{3.0, 1.0, 0.0, 4.0, 5.0, 0.0},
                                             {-3.0, 1.0, 0.0, 4.0, 5.0, 0.0},
                                             {-0.7, 2.0, 0.0, -0.9, 1.1, 0.0},
                                             {1e8, 3e5, 0.0, -2e8, 7e6, 0.0},
                                             {0.1, -20.0, 0.0, 1e-3, 0.3, 0.0}};
    for (const TAffineCoefs& Case : Cases)
    {
        SCOPED_TRACE(::testing::PrintToString(Fields(Case)));
        TParams Params;
        EXPECT_EQ(1, ToParams(Case, Params));
        const long double dA = Case.dA, dB = Case.dB, dD = Case.dD, dE = Case.dE;
        const long double dSx = std::sqrt(dA * dA + dD * dD);
        const long double dAngle = std::atan2(dD, dA);
        EXPECT_TRUE(WithinUlps(dSx, Params.dSx, 3.0));
        EXPECT_TRUE(WithinUlps(dAngle < 0 ? dAngle + 2 * LongPi : dAngle, Params.dTheta, 8.0));
        EXPECT_TRUE(WithinUlps((dA * dE - dB * dD) / dSx, Params.dSy, 32.0));
        EXPECT_TRUE(WithinUlps(std::atan((dA * dB + dD * dE) / (dA * dE - dB * dD)), Params.dPhi, 32.0));
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Inverse
// ---------------------------------------------------------------------------------------------------------------------

void ExpectInverse(const TAffineCoefs& a_Coefs, const TAffineCoefs& a_Expected)
{
    SCOPED_TRACE(::testing::PrintToString(Fields(a_Coefs)));
    TAffineCoefs Inverse = Filled<TAffineCoefs>();
    EXPECT_EQ(1, nuv::AffineCoefsToInvCoefs(a_Coefs, Inverse));
    EXPECT_TRUE(SameRecord(a_Expected, Inverse));
}

void ExpectNoInverse(const TAffineCoefs& a_Coefs)
{
    SCOPED_TRACE(::testing::PrintToString(Fields(a_Coefs)));
    TAffineCoefs Inverse = Filled<TAffineCoefs>();
    EXPECT_EQ(RET_IMPOSSIBLE, nuv::AffineCoefsToInvCoefs(a_Coefs, Inverse));
    EXPECT_TRUE(SameRecord(Filled<TAffineCoefs>(), Inverse));
}

// Determinants 8 and 1/8, so every operation is exact:
// c = (5*1 - 2*3)/8, f = (-4*3 - 5*2)/8 and back c = (-2.75*-0.125 - 0.25*-0.125)*8, f = (0.5*-0.125 + 2.75*0.25)*8.
TEST(AffineCoefsToInvCoefs, InvertsExactlyAndTheInverseOfTheInverseIsTheFirst)
{
    const TAffineCoefs Coefs = {2.0, 1.0, 3.0, -4.0, 2.0, 5.0};
    const TAffineCoefs Inverse = {0.25, -0.125, -0.125, 0.5, 0.25, -2.75};
    ExpectInverse(Coefs, Inverse);
    ExpectInverse(Inverse, Coefs);
}

// Determinant 1*4 - 3*2 = -2: c = (1*2 - 4*1)/-2, f = (3*1 - 1*1)/-2.
TEST(AffineCoefsToInvCoefs, InvertsANegativeDeterminant)
{
    ExpectInverse({1.0, 2.0, 1.0, 3.0, 4.0, 1.0}, {-2.0, 1.0, 1.0, 1.5, -0.5, -1.0});
}

TEST(AffineCoefsToInvCoefs, NegatesZeroCoefficientsIntoNegativeZeros)
{
    ExpectInverse({2.0, 0.0, 10.0, 0.0, 4.0, 20.0}, {0.5, -0.0, -5.0, -0.0, 0.25, -5.0});
    ExpectInverse({2.0, -0.0, 10.0, -0.0, 4.0, 20.0}, {0.5, 0.0, -5.0, 0.0, 0.25, -5.0});
}

TEST(AffineCoefsToInvCoefs, ADeterminantOfTheToleranceAndBelowIsImpossible)
{
    for (double dDet : {0.0, Subnormal, BelowTolerance, Tolerance})
    {
        for (double dSign : {1.0, -1.0})
        {
            ExpectNoInverse({dSign * dDet, 0.0, 5.0, 0.0, 1.0, 6.0}); // by a e
            ExpectNoInverse({0.0, 1.0, 5.0, dSign * dDet, 0.0, 6.0}); // by d b
        }
    }
    ExpectNoInverse({1.0, 2.0, 5.0, 2.0, 4.0, 6.0}); // rows in proportion
}

// The double above 1e-12 has the double below 1e12 as its rounded reciprocal; their product rounds to 1.
TEST(AffineCoefsToInvCoefs, ADeterminantJustAboveTheToleranceIsInverted)
{
    const double dReciprocal = 0x1.d1a94a1ffffffp+39;
    ExpectInverse({AboveTolerance, 0.0, 0.0, 0.0, 1.0, 0.0}, {dReciprocal, -0.0, 0.0, -0.0, 1.0, 0.0});
    ExpectInverse({-AboveTolerance, 0.0, 0.0, 0.0, 1.0, 0.0}, {-dReciprocal, 0.0, -0.0, 0.0, 1.0, -0.0});
    TAffineCoefs Inverse;
    EXPECT_EQ(1, nuv::AffineCoefsToInvCoefs({2e-12, 0.0, 0.0, 0.0, 1.0, 0.0}, Inverse));
}

// The determinant is 5*1 - 1*2 = 3. 5 times the rounded 1/3 ends in ...aap+0, while 5/3 ends in ...abp+0.
TEST(AffineCoefsToInvCoefs, MultipliesByTheReciprocalOfTheDeterminant)
{
    const double dThird = 0x1.5555555555555p-2;
    const double dFiveThirds = 0x1.aaaaaaaaaaaaap+0;
    ExpectInverse({5.0, 2.0, -5.0, 1.0, 1.0, 0.0},
                  {dThird, -2.0 * dThird, dFiveThirds, -dThird, dFiveThirds, -dFiveThirds});
    ExpectInverse({1.0, 2.0, 0.0, 1.0, 5.0, 0.0}, {dFiveThirds, -2.0 * dThird, 0.0, -dThird, dThird, 0.0});
    ExpectInverse({3.0, 5.0, 0.0, 0.0, 1.0, 0.0}, {dThird, -dFiveThirds, 0.0, -0.0, 1.0, 0.0});
    ExpectInverse({3.0, 0.0, 0.0, 5.0, 1.0, 0.0}, {dThird, -0.0, 0.0, -dFiveThirds, 1.0, 0.0});
}

// (2^30 + 1)(2^30 - 1) = 2^60 - 1 rounds to 2^60. So the determinant is 0; with a product that is not rounded it would
// be -1 or 1. The translations are tested in the same way.
TEST(AffineCoefsToInvCoefs, RoundsEveryProductBeforeItIsSubtracted)
{
    const double dN = 0x1p30;
    ExpectNoInverse({dN + 1.0, dN, 0.0, dN, dN - 1.0, 0.0});
    ExpectNoInverse({dN, dN + 1.0, 0.0, dN - 1.0, dN, 0.0});
    // Determinant -2^30 d with d = -2^-30, so 1: c = f b - e c = 2^30 2^30 - (2^30 + 1)(2^30 - 1).
    ExpectInverse({0.0, dN, dN - 1.0, -0x1p-30, dN + 1.0, dN},
                  {dN + 1.0, -dN, 0.0, 0x1p-30, 0.0, -0x1p-30 * (dN - 1.0)});
    // Determinant -2^-30 (-2^30) = 1: f = d c - f a = -2^30 (-2^30) - (2^30 - 1)(2^30 + 1), c = f b.
    ExpectInverse({dN + 1.0, 0x1p-30, -dN, -dN, 0.0, dN - 1.0},
                  {0.0, -0x1p-30, 0x1p-30 * (dN - 1.0), dN, dN + 1.0, 0.0});
    // Determinants 2^-30 2^30, with the products the other way round.
    ExpectInverse({0x1p-30, dN - 1.0, dN, 0.0, dN, dN + 1.0}, {dN, 1.0 - dN, 0.0, -0.0, 0x1p-30, -1.0 - 0x1p-30});
    ExpectInverse({dN, 0.0, dN - 1.0, dN + 1.0, 0x1p-30, dN}, {0x1p-30, -0.0, 0x1p-30 - 1.0, -1.0 - dN, dN, 0.0});
}

TEST(AffineCoefsToInvCoefs, ANaNDeterminantIsNoZeroAndGivesNaN)
{
    const TAffineCoefs AllNaN = Filled<TAffineCoefs>(NaN);
    ExpectInverse({NaN, 0.0, 1.0, 0.0, 1.0, 1.0}, AllNaN);
    ExpectInverse({1.0, NaN, 1.0, 0.0, 1.0, 1.0}, AllNaN);
    ExpectInverse({1.0, 0.0, 1.0, NaN, 1.0, 1.0}, AllNaN);
    ExpectInverse({1.0, 0.0, 1.0, 0.0, NaN, 1.0}, AllNaN);
    ExpectInverse({1.0, Inf, 1.0, 0.0, 1.0, 1.0}, AllNaN);  // 1 - 0*inf
    ExpectInverse({1.0, 0.0, 1.0, -Inf, 1.0, 1.0}, AllNaN); // 1 - inf*0
}

TEST(AffineCoefsToInvCoefs, TakesOtherSpecialCoefficientsThroughTheArithmetic)
{
    // The reciprocal of an infinite determinant is 0: c = (0 - c e)*0, f = (0 - f a)*0.
    ExpectInverse({Inf, 0.0, 1.0, 0.0, 1.0, 1.0}, {0.0, -0.0, -0.0, -0.0, NaN, NaN});
    ExpectInverse({1.0, 0.0, 1.0, 0.0, Inf, 1.0}, {NaN, -0.0, NaN, -0.0, 0.0, -0.0});
    // c = f b - e c, f = d c - f a: an infinity or NaN also meets the zeros b and d.
    ExpectInverse({1.0, 0.0, Inf, 0.0, 1.0, 0.0}, {1.0, -0.0, -Inf, -0.0, 1.0, NaN});
    ExpectInverse({1.0, 0.0, 0.0, 0.0, 1.0, -Inf}, {1.0, -0.0, NaN, -0.0, 1.0, Inf});
    ExpectInverse({1.0, 0.0, NaN, 0.0, 1.0, 0.0}, {1.0, -0.0, NaN, -0.0, 1.0, NaN});
    ExpectInverse({1.0, 0.0, 0.0, 0.0, 1.0, NaN}, {1.0, -0.0, NaN, -0.0, 1.0, NaN});
    ExpectInverse({1.0, 0.0, -0.0, 0.0, 1.0, -0.0}, {1.0, -0.0, 0.0, -0.0, 1.0, 0.0}); // -0 - -0
    ExpectInverse({1.0, Subnormal, Subnormal, -Subnormal, 1.0, -Subnormal},
                  {1.0, -Subnormal, -Subnormal, Subnormal, 1.0, Subnormal});
}

// ---------------------------------------------------------------------------------------------------------------------
// Backward mapping. Singular transformations with contradicting equations end the process and are not called here.
// ---------------------------------------------------------------------------------------------------------------------

void ExpectSource(const TAffineCoefs& a_Coefs, double a_dXa, double a_dYa, double a_dX, double a_dY)
{
    SCOPED_TRACE(::testing::PrintToString(Fields(a_Coefs)) + HexText(a_dXa) + HexText(a_dYa));
    double dX = Untouched;
    double dY = Untouched;
    nuv::AffineUntransform(a_Coefs, a_dXa, a_dYa, dX, dY);
    EXPECT_SAME_BITS(a_dX, dX);
    EXPECT_SAME_BITS(a_dY, dY);
}

// (1, 2) maps to (2 + 2 + 3, -4 + 4 + 5).
TEST(AffineUntransform, MapsTargetPointsBackToTheirSource)
{
    const TAffineCoefs Coefs = {2.0, 1.0, 3.0, -4.0, 2.0, 5.0};
    for (double dX : {1.0, -3.0, 0.5})
    {
        for (double dY : {2.0, -7.0, 1024.0})
        {
            ExpectSource(Coefs, 2.0 * dX + dY + 3.0, -4.0 * dX + 2.0 * dY + 5.0, dX, dY);
        }
    }
}

TEST(AffineUntransform, ThroughAnAllZeroRecordGivesTheOriginForEveryPoint)
{
    for (double dXa : {0.0, 5.0, -1e300})
    {
        ExpectSource({0.0, 0.0, 0.0, 0.0, 0.0, 0.0}, dXa, -7.0, 0.0, 0.0);
    }
}

TEST(AffineUntransform, ThroughASingularRecordWhoseEquationsAgreeGivesTheOrigin)
{
    ExpectSource({1.0, 1.0, 0.0, 1.0, 1.0, 0.0}, 1.0, 1.0, 0.0, 0.0);
    ExpectSource({1.0, 1.0, 2.0, 1.0, 1.0, 3.0}, 5.0, 6.0, 0.0, 0.0); // both 3 after the translations
}

TEST(AffineUntransform, CountsADeterminantOfTheToleranceAsSingularAndSolvesTheNextOne)
{
    for (double dDet : {Subnormal, BelowTolerance, Tolerance})
    {
        ExpectSource({dDet, 0.0, 4.0, 0.0, 1.0, 0.0}, 4.0, 9.0, 0.0, 0.0); // the numerator of x is 0
        ExpectSource({-dDet, 0.0, 4.0, 0.0, 1.0, 0.0}, 4.0, 9.0, 0.0, 0.0);
    }
    ExpectSource({AboveTolerance, 0.0, 0.0, 0.0, 1.0, 0.0}, 1.0, 0.0, 0x1.d1a94a1ffffffp+39, 0.0);
}

TEST(AffineUntransform, TakesSpecialValuesThroughTheArithmetic)
{
    ExpectSource(Identity, Inf, 1.0, Inf, NaN); // y = 1 - 0*inf
    ExpectSource(Identity, 1.0, -Inf, NaN, -Inf);
    ExpectSource(Identity, NaN, 1.0, NaN, NaN);
    ExpectSource(Identity, 1.0, NaN, NaN, NaN);
    ExpectSource(Identity, -0.0, 2.0, -0.0, 2.0); // x = 1*(-0 - 0) - 0*2
    ExpectSource(Identity, Subnormal, -Subnormal, Subnormal, -Subnormal);
    for (std::size_t i : {0, 1, 3, 4}) // a NaN determinant is solved
    {
        auto Values = Fields(Identity);
        Values[i] = NaN;
        TAffineCoefs Coefs;
        std::memcpy(&Coefs, Values.data(), sizeof Coefs);
        ExpectSource(Coefs, 1.0, 2.0, NaN, NaN);
    }
    ExpectSource({1.0, 0.0, NaN, 0.0, 1.0, 0.0}, 1.0, 2.0, NaN, NaN);
    ExpectSource({1.0, 0.0, Inf, 0.0, 1.0, 0.0}, 1.0, 2.0, -Inf, NaN);
}

} // namespace
