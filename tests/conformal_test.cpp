// conformal_test.cpp: conformal conversions and inverse.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/expect.h"

#include <cfloat>

namespace {

using namespace nuv_tests;
using nuv::RET_IMPOSSIBLE;
using nuv::TAffineCoefs;
using nuv::TConformalCoefs;

struct TParams
{
    double dScale;
    double dAngle;
    double dTx;
    double dTy;
};

TConformalCoefs FromParams(const TParams& a_Params)
{
    TConformalCoefs Coefs = Filled<TConformalCoefs>();
    nuv::ConformalParamsToCoefs(a_Params.dScale, a_Params.dAngle, a_Params.dTx, a_Params.dTy, Coefs);
    return Coefs;
}

int ToParams(const TConformalCoefs& a_Coefs, TParams& a_Params)
{
    a_Params = Filled<TParams>();
    return nuv::ConformalCoefsToParam(a_Coefs, a_Params.dScale, a_Params.dAngle, a_Params.dTx, a_Params.dTy);
}

// A record whose inverse fields are NaN. The functions must not use them.
TConformalCoefs Forward(double a_dA, double a_dB, double a_dTx, double a_dTy)
{
    return {a_dA, a_dB, a_dTx, a_dTy, NaN, NaN};
}

void ExpectCoefs(const TParams& a_Params, const TConformalCoefs& a_Expected)
{
    SCOPED_TRACE(::testing::PrintToString(Fields(a_Params)));
    EXPECT_TRUE(SameRecord(a_Expected, FromParams(a_Params)));
}

void ExpectParams(const TConformalCoefs& a_Coefs, int a_iResult, const TParams& a_Expected)
{
    SCOPED_TRACE(::testing::PrintToString(Fields(a_Coefs)));
    TParams Params;
    EXPECT_EQ(a_iResult, ToParams(a_Coefs, Params));
    EXPECT_TRUE(SameRecord(a_Expected, Params));
}

// Expects the bits of the scale and the translations. The angle may differ by one unit of atan2 and one rounding of the
// reduction.
void ExpectAngle(const TConformalCoefs& a_Coefs, double a_dScale, long double a_dAngle)
{
    SCOPED_TRACE(::testing::PrintToString(Fields(a_Coefs)));
    TParams Params;
    EXPECT_EQ(1, ToParams(a_Coefs, Params));
    EXPECT_SAME_BITS(a_dScale, Params.dScale);
    EXPECT_TRUE(WithinUlps(a_dAngle, Params.dAngle, 2.0));
    EXPECT_SAME_BITS(a_Coefs.dTx, Params.dTx);
    EXPECT_SAME_BITS(a_Coefs.dTy, Params.dTy);
}

// ---------------------------------------------------------------------------------------------------------------------
// Parameters to coefficients. At the angle 0 the cosine is exactly 1 and the sine 0.
// ---------------------------------------------------------------------------------------------------------------------

TEST(ConformalParamsToCoefs, TheIdentityHasANegativeZeroForTheNegatedSine)
{
    ExpectCoefs({1.0, 0.0, 0.0, 0.0}, {1.0, -0.0, 0.0, 0.0, 1.0, 0.0});
}

TEST(ConformalParamsToCoefs, AScaleAndAShiftAreExact)
{
    ExpectCoefs({2.0, 0.0, 3.0, -4.0}, {2.0, -0.0, 3.0, -4.0, 0.5, 0.0});
    ExpectCoefs({-2.0, 0.0, 3.0, -4.0}, {-2.0, 0.0, 3.0, -4.0, -0.5, -0.0});
    ExpectCoefs({2.0, -0.0, 3.0, -4.0}, {2.0, 0.0, 3.0, -4.0, 0.5, -0.0}); // sin(-0) = -0
}

// inf*1 and inf*0. With an angle whose sine is not 0, both products are infinite.
TEST(ConformalParamsToCoefs, AZeroScaleGivesInfiniteOrNaNInverseFields)
{
    ExpectCoefs({0.0, 0.0, 3.0, -4.0}, {0.0, -0.0, 3.0, -4.0, Inf, NaN});
    ExpectCoefs({-0.0, 0.0, 3.0, -4.0}, {-0.0, 0.0, 3.0, -4.0, -Inf, NaN});
    ExpectCoefs({0.0, 1.0, 3.0, -4.0}, {0.0, -0.0, 3.0, -4.0, Inf, Inf});
}

// Every scale is accepted. The reciprocal of the least double overflows; the reciprocal of 1e-12 rounds to 1e12.
TEST(ConformalParamsToCoefs, TakesSpecialScalesThroughTheArithmetic)
{
    ExpectCoefs({Subnormal, 0.0, 3.0, -4.0}, {Subnormal, -0.0, 3.0, -4.0, Inf, NaN});
    ExpectCoefs({Tolerance, 0.0, 3.0, -4.0}, {Tolerance, -0.0, 3.0, -4.0, 1e12, 0.0});
    ExpectCoefs({Inf, 0.0, 3.0, -4.0}, {Inf, NaN, 3.0, -4.0, 0.0, 0.0});
    ExpectCoefs({-Inf, 0.0, 3.0, -4.0}, {-Inf, NaN, 3.0, -4.0, -0.0, -0.0});
    ExpectCoefs({NaN, 0.0, 3.0, -4.0}, {NaN, NaN, 3.0, -4.0, NaN, NaN});
}

// The reciprocal of the scale overflows below 2^-1024.
TEST(ConformalParamsToCoefs, AScaleWithoutReciprocalHasNoInverse)
{
    const double dLeast = 0x1.0000000000004p-1024; // the least scale whose reciprocal is finite
    ExpectCoefs({0x1p-1024, 0.0, 0.0, 0.0}, {0x1p-1024, -0.0, 0.0, 0.0, Inf, NaN});
    ExpectCoefs({dLeast, 0.0, 0.0, 0.0}, {dLeast, -0.0, 0.0, 0.0, 1.0 / dLeast, 0.0});
}

TEST(ConformalParamsToCoefs, AnAngleThatIsNoNumberLeavesOnlyTheTranslations)
{
    for (double dAngle : {Inf, -Inf, NaN})
    {
        ExpectCoefs({2.0, dAngle, 3.0, -4.0}, {NaN, NaN, 3.0, -4.0, NaN, NaN});
    }
}

TEST(ConformalParamsToCoefs, PassesTranslationsOnAsTheyAre)
{
    for (double dValue : {-0.0, Subnormal, Inf, -Inf, NaN, 0.1})
    {
        ExpectCoefs({2.0, 0.0, dValue, 7.0}, {2.0, -0.0, dValue, 7.0, 0.5, 0.0});
        ExpectCoefs({2.0, 0.0, 7.0, dValue}, {2.0, -0.0, 7.0, dValue, 0.5, 0.0});
    }
}

// cos and sin of a C library are off by at most 5 units in the last place (the worst one measured). The reciprocal and
// the product add one.
TEST(ConformalParamsToCoefs, FollowsItsFormulasForAnyAngle)
{
    for (double dScale : {1.0, 3.0, 0.7, 1e-5, -49.0})
    {
        for (double dAngle : {0.3, 1.5, -2.0, 3.0, 4.5, -100.0})
        {
            SCOPED_TRACE(HexText(dScale) + ", " + HexText(dAngle));
            const TConformalCoefs Coefs = FromParams({dScale, dAngle, 0.0, 0.0});
            const long double dCos = std::cos(static_cast<long double>(dAngle));
            const long double dSin = std::sin(static_cast<long double>(dAngle));
            EXPECT_TRUE(WithinUlps(dScale * dCos, Coefs.dA, 7.0));
            EXPECT_TRUE(WithinUlps(-dScale * dSin, Coefs.dB, 7.0));
            EXPECT_TRUE(WithinUlps(dCos / dScale, Coefs.dInvA, 7.0));
            EXPECT_TRUE(WithinUlps(dSin / dScale, Coefs.dInvB, 7.0));
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Coefficients to parameters. The inverse fields are NaN throughout: they are not used.
// ---------------------------------------------------------------------------------------------------------------------

// v = (-1/2)*B is 0 for B = -0. For B = 0 it is -0, and so is the angle.
TEST(ConformalCoefsToParam, WithoutRotationTheAngleIsAZero)
{
    ExpectParams(Forward(2.0, -0.0, 3.0, 4.0), 1, {2.0, 0.0, 3.0, 4.0});
    ExpectParams(Forward(2.0, 0.0, 3.0, 4.0), 1, {2.0, -0.0, 3.0, 4.0});
}

TEST(ConformalCoefsToParam, QuarterTurnsComeBackInZeroToTwoPi)
{
    ExpectAngle(Forward(0.0, -1.0, 5.0, 6.0), 1.0, LongPi / 2);
    ExpectAngle(Forward(-2.0, -0.0, 5.0, 6.0), 2.0, LongPi);
    ExpectAngle(Forward(-2.0, 0.0, 5.0, 6.0), 2.0, LongPi); // -pi before the reduction
    ExpectAngle(Forward(0.0, 1.0, 5.0, 6.0), 1.0, 1.5L * LongPi);
    ExpectAngle(Forward(4.0, -4.0, 5.0, 6.0), 4.0 * 0x1.6a09e667f3bcdp+0, LongPi / 4);
    ExpectAngle(Forward(3.0, -4.0, 5.0, 6.0), 5.0, std::atan2(4.0L, 3.0L));
    ExpectAngle(Forward(3.0, 4.0, 5.0, 6.0), 5.0, 2 * LongPi - std::atan2(4.0L, 3.0L));
}

TEST(ConformalCoefsToParam, ATinyNegativeRotationIsTwoPi)
{
    ExpectParams(Forward(1.0, 1e-20, 3.0, 4.0), 1, {1.0, 0x1.921fb54442d18p+2, 3.0, 4.0});
}

// B is so small that the scale is 49, u is 1 and the angle, v - v^3/3 + ..., rounds to v = (-1/49)*(-49*2^-70). 49
// times the rounded reciprocal of 49 is the double below 1. The quotient B/49 would give 2^-70.
TEST(ConformalCoefsToParam, MultipliesBByTheNegativeReciprocalOfTheScale)
{
    ExpectParams(Forward(49.0, -49.0 * 0x1p-70, 3.0, 4.0), 1, {49.0, 0x1.fffffffffffffp-71, 3.0, 4.0});
}

TEST(ConformalCoefsToParam, WithoutScaleIsImpossibleWithAngleZeroAndTheTranslations)
{
    for (double dA : {0.0, -0.0})
    {
        for (double dB : {0.0, -0.0})
        {
            ExpectParams(Forward(dA, dB, 3.0, 4.0), RET_IMPOSSIBLE, {0.0, 0.0, 3.0, 4.0});
        }
    }
}

TEST(ConformalCoefsToParam, AScaleWithinTheToleranceIsImpossible)
{
    for (double dValue : {Subnormal, BelowTolerance, Tolerance})
    {
        for (double dSign : {1.0, -1.0})
        {
            ExpectParams(Forward(dSign * dValue, 0.0, 3.0, 4.0), RET_IMPOSSIBLE, {dValue, 0.0, 3.0, 4.0});
            ExpectParams(Forward(0.0, dSign * dValue, 3.0, 4.0), RET_IMPOSSIBLE, {dValue, 0.0, 3.0, 4.0});
        }
    }
}

TEST(ConformalCoefsToParam, AScaleJustAboveTheToleranceSucceeds)
{
    ExpectAngle(Forward(AboveTolerance, -0.0, 3.0, 4.0), AboveTolerance, 0.0L);
    ExpectAngle(Forward(-AboveTolerance, 0.0, 3.0, 4.0), AboveTolerance, LongPi);
    ExpectAngle(Forward(0.0, AboveTolerance, 3.0, 4.0), AboveTolerance, 1.5L * LongPi);
}

TEST(ConformalCoefsToParam, TakesSpecialCoefficientsThroughTheArithmetic)
{
    ExpectParams(Forward(NaN, 0.0, 3.0, 4.0), RET_IMPOSSIBLE, {0.0, 0.0, 3.0, 4.0}); // the norm of (NaN, 0) is 0
    ExpectParams(Forward(0.0, NaN, 3.0, 4.0), 1, {NaN, NaN, 3.0, 4.0});
    ExpectParams(Forward(NaN, 1.0, 3.0, 4.0), 1, {NaN, NaN, 3.0, 4.0});
    for (double dSign : {1.0, -1.0})
    {
        ExpectParams(Forward(dSign * Inf, 0.0, 3.0, 4.0), 1, {Inf, NaN, 3.0, 4.0}); // inf/inf
        ExpectParams(Forward(0.0, dSign * Inf, 3.0, 4.0), 1, {Inf, NaN, 3.0, 4.0}); // 0*inf
        ExpectParams(Forward(Inf, dSign * Inf, 3.0, 4.0), 1, {NaN, NaN, 3.0, 4.0});
    }
    for (double dValue : {-0.0, Subnormal, Inf, -Inf, NaN})
    {
        ExpectParams(Forward(2.0, -0.0, dValue, 4.0), 1, {2.0, 0.0, dValue, 4.0});
        ExpectParams(Forward(0.0, 0.0, 3.0, dValue), RET_IMPOSSIBLE, {0.0, 0.0, 3.0, dValue});
    }
}

// Two functions are off by up to 5 units each, and there are about five roundings. Near the angle 0 the bound is that
// of 2 pi, from which negative angles are subtracted.
TEST(ConformalCoefsToParam, GivesTheParametersBackWithTheAngleReduced)
{
    const double dThreeQuarters = static_cast<double>(1.5L * LongPi);
    for (const auto& [dAngle, dReduced] :
         std::vector<std::pair<double, double> >{{0.3, 0.3},
                                                 {2.0, 2.0},
                                                 {6.0, 6.0},
                                                 {static_cast<double>(-LongPi / 2), dThreeQuarters},
                                                 {-0.5, 5.783185307179586}})
    {
        for (double dScale : {1.0, 3.0, 1e-6, 1e9})
        {
            SCOPED_TRACE(HexText(dAngle) + " scale " + HexText(dScale));
            TParams Params;
            EXPECT_EQ(1, ToParams(FromParams({dScale, dAngle, 8.0, -9.0}), Params));
            EXPECT_TRUE(WithinUlps(dScale, Params.dScale, 12.0));
            EXPECT_NEAR(dReduced, Params.dAngle, 12.0 * DBL_EPSILON * 4.0);
            EXPECT_SAME_BITS(8.0, Params.dTx);
            EXPECT_SAME_BITS(-9.0, Params.dTy);
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Inverse and affine record
// ---------------------------------------------------------------------------------------------------------------------

void ExpectInverse(const TConformalCoefs& a_Coefs, const TConformalCoefs& a_Expected)
{
    SCOPED_TRACE(::testing::PrintToString(Fields(a_Coefs)));
    TConformalCoefs Inverse = Filled<TConformalCoefs>();
    nuv::ConformalCoefsToInvCoefs(a_Coefs, Inverse);
    EXPECT_TRUE(SameRecord(a_Expected, Inverse));
}

// Scale 2, a quarter turn, shift (3, 5): Tx = -(0*3) - 0.5*5, Ty = 0.5*3 - 0*5; and back -(0*-2.5) - -2*1.5 = 3,
// -2*-2.5 - 0*1.5 = 5.
TEST(ConformalCoefsToInvCoefs, TheInverseOfTheInverseIsTheFirstRecord)
{
    const TConformalCoefs Coefs = {0.0, -2.0, 3.0, 5.0, 0.0, 0.5};
    const TConformalCoefs Inverse = {0.0, 0.5, -2.5, 1.5, 0.0, -2.0};
    ExpectInverse(Coefs, Inverse);
    ExpectInverse(Inverse, Coefs);
}

// Two products and a sum of numbers up to 20, twice; the inverse fields are right to 10 units. 64 units of 20 are
// enough.
TEST(ConformalCoefsToInvCoefs, TwiceGivesTheTranslationsBackUpToRounding)
{
    const TConformalCoefs Coefs = FromParams({3.0, 1.0, 10.0, -20.0});
    TConformalCoefs Inverse, Back;
    nuv::ConformalCoefsToInvCoefs(Coefs, Inverse);
    nuv::ConformalCoefsToInvCoefs(Inverse, Back);
    EXPECT_NEAR(10.0, Back.dTx, 64.0 * DBL_EPSILON * 20.0);
    EXPECT_NEAR(-20.0, Back.dTy, 64.0 * DBL_EPSILON * 20.0);
    Back.dTx = Coefs.dTx;
    Back.dTy = Coefs.dTy;
    EXPECT_TRUE(SameRecord(Coefs, Back)); // the other four are only moved
}

// Tx = -(7*3) - 11*5, Ty = 11*3 - 7*5.
TEST(ConformalCoefsToInvCoefs, TakesTheStoredFieldsAsTheyAre)
{
    ExpectInverse({1.0, 2.0, 3.0, 5.0, 7.0, 11.0}, {7.0, 11.0, -76.0, -2.0, 1.0, 2.0});
}

TEST(ConformalCoefsToInvCoefs, TheIdentityWithoutShiftGetsANegativeZeroTranslation)
{
    ExpectInverse({1.0, -0.0, 0.0, 0.0, 1.0, 0.0}, {1.0, 0.0, -0.0, 0.0, 1.0, -0.0});  // -(1*0) - 0*0
    ExpectInverse({1.0, -0.0, -0.0, -0.0, 1.0, 0.0}, {1.0, 0.0, 0.0, 0.0, 1.0, -0.0}); // 0 - -0; -0 - -0
}

// (2^30 + 1)(2^30 - 1) = 2^60 - 1 rounds to 2^60, and the other product cancels it.
TEST(ConformalCoefsToInvCoefs, RoundsEveryProductBeforeItIsSubtracted)
{
    const double dN = 0x1p30;
    ExpectInverse({1.0, 2.0, dN - 1.0, dN, dN + 1.0, -dN}, {dN + 1.0, -dN, 0.0, -0x1p61, 1.0, 2.0});
    ExpectInverse({1.0, 2.0, dN - 1.0, dN, dN, dN + 1.0}, {dN, dN + 1.0, -0x1p61, 0.0, 1.0, 2.0});
    ExpectInverse({1.0, 2.0, dN, dN - 1.0, dN, -dN - 1.0}, {dN, -dN - 1.0, 0.0, -0x1p61, 1.0, 2.0});
    ExpectInverse({1.0, 2.0, dN, dN - 1.0, dN + 1.0, dN}, {dN + 1.0, dN, -0x1p61, 0.0, 1.0, 2.0});
}

TEST(ConformalCoefsToInvCoefs, TakesSpecialFieldsThroughTheArithmetic)
{
    for (double dValue : {Inf, -Inf, NaN})
    {
        const double dProduct = -dValue; // of 1 or -1 with it
        ExpectInverse({dValue, 0.0, 1.0, 1.0, 1.0, 1.0}, {1.0, 1.0, -2.0, 0.0, dValue, 0.0});
        ExpectInverse({0.0, dValue, 1.0, 1.0, 1.0, 1.0}, {1.0, 1.0, -2.0, 0.0, 0.0, dValue});
        ExpectInverse({2.0, 0.0, dValue, 1.0, 1.0, 1.0}, {1.0, 1.0, dProduct, dValue, 2.0, 0.0});
        ExpectInverse({2.0, 0.0, 1.0, dValue, 1.0, 1.0}, {1.0, 1.0, dProduct, dProduct, 2.0, 0.0});
        ExpectInverse({2.0, 0.0, 1.0, 1.0, dValue, 1.0}, {dValue, 1.0, dProduct, dProduct, 2.0, 0.0});
        ExpectInverse({2.0, 0.0, 1.0, 1.0, 1.0, dValue}, {1.0, dValue, dProduct, dValue, 2.0, 0.0});
        ExpectInverse({2.0, 0.0, dValue, 1.0, 0.0, 1.0}, {0.0, 1.0, NaN, dValue, 2.0, 0.0}); // 0*inf
    }
    // Subnormal squares vanish: -(S*S) - S*S = -0 - 0, S*S - S*S = 0.
    ExpectInverse(Filled<TConformalCoefs>(Subnormal), {Subnormal, Subnormal, -0.0, 0.0, Subnormal, Subnormal});
}

TEST(ConformalCoefsToAffineCoefs, RepeatsAAndNegatesB)
{
    for (const auto& [dA, dB] : std::vector<std::pair<double, double> >{
             {2.0, 3.0}, {-2.0, 0.0}, {0.0, -0.0}, {-0.0, Inf}, {Subnormal, -Subnormal}, {NaN, NaN}, {-Inf, 1e-12}})
    {
        TAffineCoefs Affine = Filled<TAffineCoefs>();
        nuv::ConformalCoefsToAffineCoefs(Forward(dA, dB, 5.0, 7.0), Affine);
        EXPECT_TRUE(SameRecord(TAffineCoefs{dA, dB, 5.0, -dB, dA, 7.0}, Affine));
    }
    for (double dValue : {-0.0, Subnormal, Inf, -Inf, NaN})
    {
        TAffineCoefs Affine = Filled<TAffineCoefs>();
        nuv::ConformalCoefsToAffineCoefs(Forward(2.0, 3.0, dValue, -dValue), Affine);
        EXPECT_TRUE(SameRecord(TAffineCoefs{2.0, 3.0, dValue, -3.0, 2.0, -dValue}, Affine));
    }
}

} // namespace
