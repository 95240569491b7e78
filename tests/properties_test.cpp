// properties_test.cpp: conversions and inverses on random cases.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/properties.h"

#include <rapidcheck/detail/Configuration.h>

namespace {

using namespace nuv_tests;

// The seed determines the cases. RC_PARAMS="seed=..." repeats them.
class TPrintSeed : public ::testing::Environment
{
    void SetUp() override
    {
        std::printf("RapidCheck seed %llu\n",
                    static_cast<unsigned long long>(rc::detail::configuration().testParams.seed));
    }
};

const ::testing::Environment* const g_pPrintSeed = ::testing::AddGlobalTestEnvironment(new TPrintSeed);

// --- Parameters and inverses

// Roundings of a conversion to coefficients and back: about ten operations each way, and six library functions, which
// are off by up to five units in the last place on some platforms.
const double ConversionRoundings = 64.0 * Epsilon;

RC_GTEST_PROP(AffineParams, ComeBackFromTheirCoefficients, ())
{
    const double dSx = Real(0.1, 10.0);
    const double dSy = Scale();
    const double dPhi = Real(-1.2, 1.2);
    const double dTheta = Real(0.01, 6.27); // a rotation next to 0 may come back next to 2 pi
    const double dTx = Real(-1e3, 1e3);
    const double dTy = Real(-1e3, 1e3);
    nuv::TAffineCoefs Coefs;
    nuv::AffineParamsToCoefs(dSx, dSy, dPhi, dTheta, dTx, dTy, Coefs);
    double vdBack[6];
    RC_ASSERT(1 == nuv::AffineCoefsToParam(Coefs, vdBack[0], vdBack[1], vdBack[2], vdBack[3], vdBack[4], vdBack[5]));
    // b and e are sums of sy and sy tan(phi), from which sy is recovered. 1 + |tan(phi)| magnifies their rounding.
    const double dSkew = 1.0 + std::fabs(std::tan(dPhi));
    AssertNear(dSx, vdBack[0], ConversionRoundings * dSx);
    AssertNear(dSy, vdBack[1], ConversionRoundings * dSkew * std::fabs(dSy));
    AssertNear(dPhi, vdBack[2], ConversionRoundings * dSkew);
    AssertNear(dTheta, vdBack[3], ConversionRoundings);
    RC_ASSERT(SameBits(dTx, vdBack[4]));
    RC_ASSERT(SameBits(dTy, vdBack[5]));
}

RC_GTEST_PROP(ConformalParams, ComeBackFromTheirCoefficients, ())
{
    const double dScale = Real(0.1, 10.0);
    const double dAngle = Real(0.01, 6.27);
    const double dTx = Real(-1e3, 1e3);
    const double dTy = Real(-1e3, 1e3);
    nuv::TConformalCoefs Coefs;
    nuv::ConformalParamsToCoefs(dScale, dAngle, dTx, dTy, Coefs);
    double vdBack[4];
    RC_ASSERT(1 == nuv::ConformalCoefsToParam(Coefs, vdBack[0], vdBack[1], vdBack[2], vdBack[3]));
    AssertNear(dScale, vdBack[0], ConversionRoundings * dScale);
    AssertNear(dAngle, vdBack[1], ConversionRoundings);
    RC_ASSERT(SameBits(dTx, vdBack[2]));
    RC_ASSERT(SameBits(dTy, vdBack[3]));
}

// An affine transformation, and what magnifies the rounding of its inverse.
struct TAffineCase
{
    nuv::TAffineCoefs Coefs;
    double dCancellation; // (|ae| + |bd|)/|ae - bd|, the same for the inverse
    double dLinear;       // greatest coefficient of x and y
    double dInverse;      // that of the inverse
    double dShift;        // greatest translation
};

TAffineCase SomeAffineCase()
{
    TAffineCase Case;
    nuv::TAffineCoefs& C = Case.Coefs;
    nuv::AffineParamsToCoefs(Real(0.1, 10.0), Scale(), Real(-1.2, 1.2), Real(0.0, 6.28), Real(-1e3, 1e3),
                             Real(-1e3, 1e3), C);
    const double dDet = C.dA * C.dE - C.dB * C.dD;
    Case.dCancellation = (std::fabs(C.dA * C.dE) + std::fabs(C.dB * C.dD)) / std::fabs(dDet);
    Case.dLinear = GreatestAbs({C.dA, C.dB, C.dD, C.dE});
    Case.dInverse = Case.dLinear / std::fabs(dDet);
    Case.dShift = GreatestAbs({C.dC, C.dF});
    return Case;
}

RC_GTEST_PROP(AffineInverse, TwiceIsTheTransformation, ())
{
    const TAffineCase Case = SomeAffineCase();
    nuv::TAffineCoefs Inverse;
    nuv::TAffineCoefs Back;
    RC_ASSERT(1 == nuv::AffineCoefsToInvCoefs(Case.Coefs, Inverse));
    RC_ASSERT(1 == nuv::AffineCoefsToInvCoefs(Inverse, Back));
    // With the cancellation K the determinant has a relative error of 2K roundings, and every field of the inverse one
    // of 2K + 2. The second inversion takes the determinant of such fields. Translations pass through both matrices,
    // with four products each.
    const double dRoundings = 16.0 * Epsilon * Case.dCancellation * Case.dCancellation;
    const double dLinear = dRoundings * Case.dLinear;
    const double dShift = 4.0 * dRoundings * Case.dLinear * Case.dInverse * Case.dShift;
    AssertNear(Case.Coefs.dA, Back.dA, dLinear);
    AssertNear(Case.Coefs.dB, Back.dB, dLinear);
    AssertNear(Case.Coefs.dD, Back.dD, dLinear);
    AssertNear(Case.Coefs.dE, Back.dE, dLinear);
    AssertNear(Case.Coefs.dC, Back.dC, dShift);
    AssertNear(Case.Coefs.dF, Back.dF, dShift);
}

RC_GTEST_PROP(AffineInverse, AfterTheTransformationIsTheIdentityAndSoIsUntransform, ())
{
    const TAffineCase Case = SomeAffineCase();
    const double dX = Real(-1e3, 1e3);
    const double dY = Real(-1e3, 1e3);
    nuv::TAffineCoefs Inverse;
    RC_ASSERT(1 == nuv::AffineCoefsToInvCoefs(Case.Coefs, Inverse));
    const auto [dXa, dYa] = Map(Case.Coefs, dX, dY);
    // The image carries the roundings of its terms, which the inverse multiplies; its own fields are off by 2K + 2
    // roundings, its translation by those of the products.
    const double dTerms = 2.0 * Case.dLinear * GreatestAbs({dX, dY}) + 2.0 * Case.dShift;
    const double dBound = 16.0 * Epsilon * (Case.dCancellation + 1.0) * Case.dInverse * dTerms;
    auto [dBackX, dBackY] = Map(Inverse, dXa, dYa);
    AssertNear(dX, dBackX, dBound);
    AssertNear(dY, dBackY, dBound);
    nuv::AffineUntransform(Case.Coefs, dXa, dYa, dBackX, dBackY);
    AssertNear(dX, dBackX, dBound);
    AssertNear(dY, dBackY, dBound);
}

RC_GTEST_PROP(ConformalInverse, TwiceIsTheTransformationAndOnceUndoesIt, ())
{
    nuv::TConformalCoefs Coefs;
    nuv::TConformalCoefs Inverse;
    nuv::TConformalCoefs Back;
    nuv::ConformalParamsToCoefs(Real(0.1, 10.0), Real(0.0, 6.28), Real(-1e3, 1e3), Real(-1e3, 1e3), Coefs);
    nuv::ConformalCoefsToInvCoefs(Coefs, Inverse);
    nuv::ConformalCoefsToInvCoefs(Inverse, Back);
    for (auto Field : {&nuv::TConformalCoefs::dA, &nuv::TConformalCoefs::dB, &nuv::TConformalCoefs::dInvA,
                       &nuv::TConformalCoefs::dInvB})
    {
        RC_ASSERT(SameBits(Coefs.*Field, Back.*Field)); // moved, not computed
    }
    // Both matrices are multiples of a rotation, so nothing magnifies the four or five roundings of each way.
    const double dShift = std::fabs(Coefs.dTx) + std::fabs(Coefs.dTy);
    AssertNear(Coefs.dTx, Back.dTx, 16.0 * Epsilon * dShift);
    AssertNear(Coefs.dTy, Back.dTy, 16.0 * Epsilon * dShift);

    const double dX = Real(-1e3, 1e3);
    const double dY = Real(-1e3, 1e3);
    const auto [dXa, dYa] = Map(Coefs, dX, dY);
    const auto [dBackX, dBackY] = Map(Inverse, dXa, dYa);
    const double dScale = std::hypot(Coefs.dA, Coefs.dB);
    const double dBound = 16.0 * Epsilon * (std::fabs(dX) + std::fabs(dY) + dShift / dScale);
    AssertNear(dX, dBackX, dBound);
    AssertNear(dY, dBackY, dBound);
}

} // namespace
