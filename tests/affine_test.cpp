// affine_test.cpp: affine conversions, inverse, backward mapping and least-squares fit.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "testing.h"

#include <cfloat>

namespace {

using namespace nuv_tests;
using nuv::RET_IMPOSSIBLE;
using nuv::TAffineCoefs;

const TAffineCoefs Identity = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0};

constexpr long double Pi = 3.14159265358979323846264338327950288L;

// What the conversion to parameters gave.
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

// cos, sin and tan are trusted to 5 units in the last place (the worst C library measured), a product and a sum add
// half a unit each: two functions and three operations stay below 12 units of the greater term. The reference is
// computed in extended precision where the platform has one.
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

// tan of the doubles nearest to +-pi/2 is +-1.633e16.
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
    EXPECT_EQ(1, ToParams(FromParams({1.0, 1.0, 0.0, static_cast<double>(-Pi / 2), 5.0, 6.0}), Params));
    // atan2 within a unit, one rounding in the reduction; the doubles of pi/2 and 2 pi are no further off.
    EXPECT_TRUE(WithinUlps(1.5L * Pi, Params.dTheta, 2.0));
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

// With d = 0 the scale is sqrt(0 + 1)*|a| = |a|, and with a = 0 likewise |d|.
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

// The reciprocal of the double above 1e-12, times it, rounds to 1.
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
        EXPECT_TRUE(WithinUlps(Pi, Params.dTheta, 1.0));
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

// 49 times the rounded reciprocal of 49 is the double below 1; 49/49 would be 1.
TEST(AffineCoefsToParam, MultipliesByTheReciprocalOfTheScale)
{
    ExpectParams({49.0, 0.0, 2.0, 0.0, 1.0, 4.0}, 1, {49.0, 0x1.fffffffffffffp-1, 0.0, 0.0, 2.0, 4.0});
    TParams Params;
    EXPECT_EQ(1, ToParams({0.0, -1.0, 2.0, 49.0, 0.0, 4.0}, Params));
    EXPECT_SAME_BITS(0x1.fffffffffffffp-1, Params.dSy);
}

// Scale 5 and the unit vector (0.6, 0.8), rounded: sy = 7*0.6 - 3*0.8, computed in exact rational arithmetic with every
// operation rounded once. A product that is not rounded ends in ...cep+0 or ...d1p+0.
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
    EXPECT_TRUE(WithinUlps(Pi / 4, Params.dPhi, 1.0));
    EXPECT_EQ(1, ToParams({1.0, -1.0, 0.0, 0.0, 1.0, 0.0}, Params));
    EXPECT_TRUE(WithinUlps(-Pi / 4, Params.dPhi, 1.0));
    EXPECT_EQ(1, ToParams({1.0, 1e300, 0.0, 0.0, 2e-12, 0.0}, Params)); // the quotient overflows: pi/2 itself
    EXPECT_TRUE(WithinUlps(Pi / 2, Params.dPhi, 1.0));
}

TEST(AffineCoefsToParam, TakesSpecialCoefficientsThroughTheArithmetic)
{
    const double dNone = Untouched;
    // The norm of (NaN, 0) is 0, that of (0, NaN) and (1, NaN) is NaN, which is no zero.
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

// The closed formulas in extended precision. Norm, reciprocal, products, difference and quotient are some ten
// roundings, the terms of these cases cancel by less than a factor of 3: 32 units cover it.
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
        EXPECT_TRUE(WithinUlps(dAngle < 0 ? dAngle + 2 * Pi : dAngle, Params.dTheta, 8.0));
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

// The reciprocal of the double above 1e-12 is the double below 1e12; times it, it rounds to 1.
TEST(AffineCoefsToInvCoefs, ADeterminantJustAboveTheToleranceIsInverted)
{
    const double dReciprocal = 0x1.d1a94a1ffffffp+39;
    ExpectInverse({AboveTolerance, 0.0, 0.0, 0.0, 1.0, 0.0}, {dReciprocal, -0.0, 0.0, -0.0, 1.0, 0.0});
    ExpectInverse({-AboveTolerance, 0.0, 0.0, 0.0, 1.0, 0.0}, {-dReciprocal, 0.0, -0.0, 0.0, 1.0, -0.0});
    TAffineCoefs Inverse;
    EXPECT_EQ(1, nuv::AffineCoefsToInvCoefs({2e-12, 0.0, 0.0, 0.0, 1.0, 0.0}, Inverse));
}

// Determinant 5*1 - 1*2 = 3. 5 times the rounded 1/3 is ...aap+0, 5/3 is ...abp+0.
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

// (2^30 + 1)(2^30 - 1) = 2^60 - 1 rounds to 2^60: the determinant is 0 and not -1, or 1; in the translations likewise.
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
    // An infinite determinant has the reciprocal 0: c = (0 - c e)*0, f = (0 - f a)*0.
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

// ---------------------------------------------------------------------------------------------------------------------
// Least-squares fit
// ---------------------------------------------------------------------------------------------------------------------

int Fit(const TControlPoints& a_Points, TAffineCoefs& a_Coefs)
{
    a_Coefs = Filled<TAffineCoefs>();
    return nuv::CalcAffineCoefs(static_cast<unsigned int>(a_Points.Count()), a_Points.vdX.data(), a_Points.vdY.data(),
                                a_Points.vdXa.data(), a_Points.vdYa.data(), a_Coefs);
}

void ExpectFit(const TControlPoints& a_Points, const TAffineCoefs& a_Expected)
{
    TAffineCoefs Coefs;
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

// Gives the points the targets that a_Coefs maps them to.
TControlPoints WithImage(TControlPoints a_Points, const TAffineCoefs& a_Coefs)
{
    for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
    {
        const double dX = a_Points.vdX[i];
        const double dY = a_Points.vdY[i];
        a_Points.vdXa.push_back(a_Coefs.dA * dX + a_Coefs.dB * dY + a_Coefs.dC);
        a_Points.vdYa.push_back(a_Coefs.dD * dX + a_Coefs.dE * dY + a_Coefs.dF);
    }
    return a_Points;
}

// The corners of a square of side 2 around a centre: means exact, normal matrix diag(4, 4, 4), every step exact.
TControlPoints Square(double a_dCentreX, double a_dCentreY)
{
    return {{a_dCentreX - 1.0, a_dCentreX + 1.0, a_dCentreX - 1.0, a_dCentreX + 1.0},
            {a_dCentreY - 1.0, a_dCentreY - 1.0, a_dCentreY + 1.0, a_dCentreY + 1.0},
            {},
            {}};
}

// The squares of x add up to 1 - 2^-53, whose reciprocal rounds to 1 + 2^-52: beside 1, and not left out as 1 is.
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

// The means are thirds: some roundings of numbers up to 23 by half a unit of 3.6e-15 each.
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
        ExpectFit(WithImage(Square(0.0, 0.0), Coefs), Coefs);
        ExpectFit(WithImage(Square(10.0, 20.0), Coefs), Coefs);
    }
}

TEST(CalcAffineCoefs, FewerThanThreePointsAreImpossibleAndLeaveCoefsUntouched)
{
    // The points are not degenerate: only their number is too small.
    const TControlPoints Points = WithImage(Square(0.0, 0.0), Identity);
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
    ExpectFit(WithImage(Square(10.0, 20.0), Identity), Identity);
    // Seven points without any exact mean; extent 10, condition below 10, a few dozen roundings.
    const std::vector<double> vdX = {0.1, 3.7, 9.3, 5.5, 2.2, 8.1, 4.9};
    const std::vector<double> vdY = {7.3, 0.4, 1.9, 9.6, 3.3, 6.1, 5.0};
    ExpectFitNear({vdX, vdY, vdX, vdY}, Identity, 1e-14, 1e-13);
}

// One corner of X is 4, one of Y is 4, the others 0. Over the centred square a = sum(X u)/4 and b = sum(X v)/4: the
// last corner (1, 1) gives a = b = 1, the first (-1, -1) gives d = e = -1; the means are 1.
TEST(CalcAffineCoefs, MinimisesTheResidualsOfXAndYByThemselves)
{
    TControlPoints Points = Square(0.0, 0.0);
    Points.vdXa = {0.0, 0.0, 0.0, 4.0};
    Points.vdYa = {4.0, 0.0, 0.0, 0.0};
    ExpectFit(Points, {1.0, 1.0, 1.0, -1.0, -1.0, 1.0});
    Points.vdYa = {0.0, 0.0, 0.0, 0.0};
    ExpectFit(Points, {1.0, 1.0, 1.0, 0.0, 0.0, 0.0});
}

// The points are integers and the image is exact, so nothing but the fit itself rounds; the means are not exact. The
// sums have the size of the extent (6), not of the offset: the linear part keeps 5e-15. Not centred, the matrix
// would have elements of 1e12 beside 7 and lose the linear part to about 1e-4. The translation is a difference of
// numbers of 4e6: some units of 9e-10, beside the error of the linear part times 3e6.
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

    // Only the source, as an offset of 1e6 to every x.
    Points = WithImage(Square(1e6, 0.0), {2.0, 1.0, -2e6, -4.0, 2.0, 4e6});
    ExpectFit(Points, {2.0, 1.0, -2e6, -4.0, 2.0, 4e6});
}

// At 2^53 doubles are 2 apart. The sum of 2^53 + (0, 2, 8) rounds twice and the mean comes out as 2^53 + 2 instead of
// 2^53 + 10/3: the deviations (-2, 0, 6) sum to 4. With them in the system the fit is still right: 40 a - 4 b + 4 t =
// 104, -4 a + 6 b = -12, 4 a + 3 t = 0 has a = 3, b = 0, t = -4. Without them a would be 18/7.
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

// With N = 2^30, (N + 1)(N - 1) = N^2 - 1 rounds to N^2: SUu is -N^2 + N^2 - N^2 + N^2 = 0. Were the products not
// rounded it would be -1, or -2.
TEST(CalcAffineCoefs, RoundsEveryProductBeforeItIsAdded)
{
    const double dN = 0x1p30;
    const std::vector<double> vdAlong = {dN, dN + 1.0, -dN, -dN - 1.0};
    const std::vector<double> vdAcross = {1.0, -1.0, 1.0, -1.0};
    const std::vector<double> vdTarget = {-dN, dN - 1.0, dN, 1.0 - dN};
    ExpectFit({vdAlong, vdAcross, vdTarget, vdTarget}, {0.0, 0.0, 0.0, 0.0, 0.0, 0.0});
    ExpectFit({vdAcross, vdAlong, vdTarget, vdTarget}, {0.0, 0.0, 0.0, 0.0, 0.0, 0.0});
}

// Centre (2^54, -2^54), a = b = 1. For a target mean of 2, (2 - 2^54) + 2^54 = 2; with y first 2 + 2^54 would round to
// 2^54 and leave 0. For a mean of 1, 1 - 2^54 rounds to -2^54 and leaves 0; with a x + b y formed first 1 would stay.
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
    TControlPoints Points = Square(0.0, 0.0);
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

// Unlike the determinant of a result, the spread of the points has no tolerance: Suu = 4*2^-60.
TEST(CalcAffineCoefs, FitsPointsOfAnySpread)
{
    const double dH = 0x1p-30;
    const TAffineCoefs Coefs = {2.0, 1.0, 3.0, -4.0, 2.0, 5.0};
    ExpectFit(WithImage({{-dH, dH, -dH, dH}, {-dH, -dH, dH, dH}, {}, {}}, Coefs), Coefs);
}

// On one line, as the cross products of the differences tell exactly.
void ExpectOnOneLine(const TControlPoints& a_Points)
{
    const std::size_t iLast = a_Points.vdX.size() - 1;
    for (std::size_t i = 1; i < iLast; ++i)
    {
        EXPECT_EQ((a_Points.vdX[i] - a_Points.vdX[0]) * (a_Points.vdY[iLast] - a_Points.vdY[0]),
                  (a_Points.vdY[i] - a_Points.vdY[0]) * (a_Points.vdX[iLast] - a_Points.vdX[0]));
    }
}

// u = v = (-1, 0, 1): the second pivot is exactly 0 and so is its right-hand side. Any (a, b) with a + b = 2 fits
// equally well; the elimination takes b = 0 and reports success, with a collapsed result.
TEST(CalcAffineCoefs, PointsOnOneLineSucceedThoughTheyDetermineNothing)
{
    const TControlPoints Points = {{0.0, 1.0, 2.0}, {0.0, 1.0, 2.0}, {0.0, 2.0, 4.0}, {5.0, 4.0, 3.0}};
    ExpectOnOneLine(Points);
    ExpectFit(Points, {2.0, 0.0, 0.0, -1.0, 0.0, 5.0});
}

// On y = 3x, with a mean of x that rounds: the second pivot is what the rounding left and the coefficients are
// garbage of great size, with success. Nor does the determinant of the result tell.
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

// All deviations are 0, so are the right-hand sides: a = b = 0/1e-14, and the mean of the targets remains.
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
            TControlPoints Points = WithImage(Square(10.0, 20.0), Identity);
            (Points.*pArray)[2] = dValue;
            ExpectFit(Points, Filled<TAffineCoefs>(NaN));
        }
    }
}

TEST(CalcAffineCoefs, NonFiniteTargetCoordinatesSpoilOnlyTheirOwnCoordinate)
{
    for (double dValue : {NaN, Inf, -Inf})
    {
        TControlPoints Points = WithImage(Square(10.0, 20.0), Identity);
        Points.vdXa[2] = dValue;
        ExpectFit(Points, {NaN, NaN, NaN, 0.0, 1.0, 0.0});
        Points = WithImage(Square(10.0, 20.0), Identity);
        Points.vdYa[2] = dValue;
        ExpectFit(Points, {1.0, 0.0, 0.0, NaN, NaN, NaN});
    }
}

// The squares of deviations of 1e200 overflow; the reciprocal of the pivot is 0 and the right-hand sides are infinite.
TEST(CalcAffineCoefs, SquaresThatOverflowSucceedWithNaN)
{
    const std::vector<double> vdX = {-1e200, 1e200, -1e200, 1e200};
    const std::vector<double> vdY = {-1.0, -1.0, 1.0, 1.0};
    TAffineCoefs Coefs;
    EXPECT_EQ(1, Fit({vdX, vdY, vdX, vdY}, Coefs));
    EXPECT_TRUE(std::isnan(Coefs.dA));
}

// Neither the sign of a zero coordinate nor a subnormal survives the sums: the result has the same bits.
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
