// properties_test.cpp: what must hold for any input, on random cases.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The cases are well conditioned by construction, and every bound is a number of roundings times what magnifies them.
// Eps is the distance from 1 to the next double, two roundings.

#include "nuv1math.h"
#include "testing.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <rapidcheck/detail/Configuration.h>
#include <rapidcheck/gtest.h>

namespace {

using namespace nuv_tests;
using TValues = std::vector<double>;

const double Eps = std::numeric_limits<double>::epsilon();

// The cases follow from the seed: RC_PARAMS="seed=..." repeats them.
class TPrintSeed : public ::testing::Environment
{
    void SetUp() override
    {
        std::printf("RapidCheck seed %llu\n",
                    static_cast<unsigned long long>(rc::detail::configuration().testParams.seed));
    }
};

const ::testing::Environment* const g_pPrintSeed = ::testing::AddGlobalTestEnvironment(new TPrintSeed);

// --- Cases
// ------------------------------------------------------------------------------------------------------------

// A whole number from a_iLow up to but not including a_iEnd, uniform from the first case on (RapidCheck would begin
// with the least ones only).
int Pick(int a_iLow, int a_iEnd)
{
    return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(a_iLow, a_iEnd));
}

// A double in [a_dLow, a_dHigh], of all its digits.
double Real(double a_dLow, double a_dHigh)
{
    return a_dLow + (a_dHigh - a_dLow) * (Pick(0, 1000000001) / 1e9);
}

bool Chance()
{
    return Pick(0, 2) == 1;
}

// Away from zero, of either sign.
double Scale()
{
    const double dScale = Real(0.1, 10.0);
    return Chance() ? dScale : -dScale;
}

// The corners of a square of sides 2 a_dHalf about the origin and up to seven more points in it. The corners give the
// normal matrix of the centred coordinates 4 a_dHalf^2 in every direction, each other point 2 a_dHalf^2 at most: a
// condition of at most (n - 2)/2.
TControlPoints Sources(double a_dHalf)
{
    TControlPoints Points = {{-a_dHalf, a_dHalf, a_dHalf, -a_dHalf}, {-a_dHalf, -a_dHalf, a_dHalf, a_dHalf}, {}, {}};
    for (int iMore = Pick(1, 8); iMore > 0; --iMore)
    {
        Points.vdX.push_back(Real(-a_dHalf, a_dHalf));
        Points.vdY.push_back(Real(-a_dHalf, a_dHalf));
    }
    return Points;
}

// X and Y of (a_dX, a_dY).
void Map(const nuv::TOmographicParams& a_P, double a_dX, double a_dY, double& a_dXa, double& a_dYa)
{
    const double dW = a_P.dG * a_dX + a_P.dH * a_dY + 1.0;
    a_dXa = (a_P.dA * a_dX + a_P.dB * a_dY + a_P.dC) / dW;
    a_dYa = (a_P.dD * a_dX + a_P.dE * a_dY + a_P.dF) / dW;
}

// Gives every point its image, each target coordinate off by up to a_dNoise.
void SetTargets(const nuv::TOmographicParams& a_Params, double a_dNoise, TControlPoints& a_Points)
{
    a_Points.vdXa.resize(a_Points.vdX.size());
    a_Points.vdYa.resize(a_Points.vdX.size());
    for (int i = 0; i < a_Points.Count(); ++i)
    {
        Map(a_Params, a_Points.vdX[i], a_Points.vdY[i], a_Points.vdXa[i], a_Points.vdYa[i]);
        if (a_dNoise > 0.0)
        {
            a_Points.vdXa[i] += Real(-a_dNoise, a_dNoise);
            a_Points.vdYa[i] += Real(-a_dNoise, a_dNoise);
        }
    }
}

// A denominator of 1/2 at least in the square of sides 2, and nothing near to singular: A - C G and E - F H are 3/4 at
// least.
nuv::TOmographicParams SomeOmographic()
{
    return {Real(1.0, 3.0), Real(-0.25, 0.25), Real(-1.0, 1.0),   Real(-0.25, 0.25),
            Real(1.0, 3.0), Real(-1.0, 1.0),   Real(-0.25, 0.25), Real(-0.25, 0.25)};
}

nuv::TOmographicParams SomeAffine()
{
    nuv::TOmographicParams Params = SomeOmographic();
    Params.dG = Params.dH = 0.0;
    return Params;
}

nuv::TOmographicParams SomeConformal()
{
    const double dA = Scale();
    const double dB = Scale();
    return {dA, dB, Real(-5.0, 5.0), -dB, dA, Real(-5.0, 5.0), 0.0, 0.0};
}

nuv::TOmographicParams AsOmographic(const nuv::TAffineCoefs& a_Affine)
{
    nuv::TOmographicParams Params;
    nuv::AffineCoefsToOmographicCoefs(a_Affine, Params);
    return Params;
}

nuv::TOmographicParams AsOmographic(const nuv::TConformalCoefs& a_Conformal)
{
    nuv::TAffineCoefs Affine;
    nuv::ConformalCoefsToAffineCoefs(a_Conformal, Affine);
    return AsOmographic(Affine);
}

int Fit(const TControlPoints& a_P, nuv::TConformalCoefs& a_Coefs, bool a_bRigidInverse = false)
{
    return nuv::CalcConformalCoefs(static_cast<unsigned int>(a_P.Count()), a_P.vdX.data(), a_P.vdY.data(),
                                   a_P.vdXa.data(), a_P.vdYa.data(), a_bRigidInverse, a_Coefs);
}

int Fit(const TControlPoints& a_P, nuv::TAffineCoefs& a_Coefs)
{
    return nuv::CalcAffineCoefs(static_cast<unsigned int>(a_P.Count()), a_P.vdX.data(), a_P.vdY.data(), a_P.vdXa.data(),
                                a_P.vdYa.data(), a_Coefs);
}

int Fit(const TControlPoints& a_P, nuv::TOmographicParams& a_Params)
{
    return nuv::CalcOmographicCoefs(a_P.Count(), a_P.vdX.data(), a_P.vdY.data(), a_P.vdXa.data(), a_P.vdYa.data(),
                                    a_Params);
}

bool Choose(const TControlPoints& a_P, bool a_bSameOrientation, nuv::enumMethodUsed a_Requested,
            nuv::enumMethodUsed& a_Used, nuv::TOmographicParams& a_Params)
{
    return nuv::CalcCoefs(a_P.Count(), a_P.vdX.data(), a_P.vdY.data(), a_P.vdXa.data(), a_P.vdYa.data(),
                          a_bSameOrientation, a_Requested, a_Used, a_Params);
}

// --- Comparisons
// ------------------------------------------------------------------------------------------------------

void AssertNear(double a_dExpected, double a_dActual, double a_dBound)
{
    if (!(std::fabs(a_dExpected - a_dActual) <= a_dBound))
    {
        RC_LOG() << HexText(a_dActual) << " is not within " << a_dBound << " of " << HexText(a_dExpected) << "\n";
        RC_FAIL("not near");
    }
}

template <class TRecord> void AssertNearRecord(const TRecord& a_Expected, const TRecord& a_Actual, double a_dBound)
{
    const auto Expected = Fields(a_Expected);
    const auto Actual = Fields(a_Actual);
    for (std::size_t i = 0; i < Expected.size(); ++i)
    {
        AssertNear(Expected[i], Actual[i], a_dBound);
    }
}

template <class TRecord> void AssertSameRecord(const TRecord& a_Expected, const TRecord& a_Actual)
{
    const ::testing::AssertionResult Result = SameRecord(a_Expected, a_Actual);
    if (!Result)
    {
        RC_FAIL(std::string(Result.message()));
    }
}

void AssertSameValues(const TValues& a_vdExpected, const TValues& a_vdActual)
{
    RC_ASSERT(SameBits(a_vdExpected, a_vdActual));
}

double GreatestAbs(std::initializer_list<double> a_Values)
{
    double dGreatest = 0.0;
    for (double dValue : a_Values)
    {
        dGreatest = std::max(dGreatest, std::fabs(dValue));
    }
    return dGreatest;
}

// --- Parameters and inverses
// ------------------------------------------------------------------------------------------

// Roundings of a conversion to coefficients and back: about ten operations each way and six library functions, which
// are off by up to five units in the last place on some platforms.
const double ConversionRoundings = 64.0 * Eps;

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
    // b and e are sums of sy and sy tan(phi), of which sy is what remains: 1 + |tan(phi)| magnifies their rounding.
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
    // The determinant carries 2 roundings times the cancellation, and so does every field of the inverse; the second
    // inversion takes the determinant of such fields: 2K of an error of 2K + 2 roundings. Translations pass through
    // both matrices, four products each.
    const double dRoundings = 16.0 * Eps * Case.dCancellation * Case.dCancellation;
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
    double dXa, dYa, dBackX, dBackY;
    Map(AsOmographic(Case.Coefs), dX, dY, dXa, dYa);
    // The image carries the roundings of its terms, which the inverse multiplies; its own fields are off by 2K + 2
    // roundings, its translation by those of the products.
    const double dTerms = 2.0 * Case.dLinear * GreatestAbs({dX, dY}) + 2.0 * Case.dShift;
    const double dBound = 16.0 * Eps * (Case.dCancellation + 1.0) * Case.dInverse * dTerms;
    Map(AsOmographic(Inverse), dXa, dYa, dBackX, dBackY);
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
    AssertNear(Coefs.dTx, Back.dTx, 16.0 * Eps * dShift);
    AssertNear(Coefs.dTy, Back.dTy, 16.0 * Eps * dShift);

    const double dX = Real(-1e3, 1e3);
    const double dY = Real(-1e3, 1e3);
    double dXa, dYa, dBackX, dBackY;
    Map(AsOmographic(Coefs), dX, dY, dXa, dYa);
    Map(AsOmographic(Inverse), dXa, dYa, dBackX, dBackY);
    const double dScale = std::hypot(Coefs.dA, Coefs.dB);
    const double dBound = 16.0 * Eps * (std::fabs(dX) + std::fabs(dY) + dShift / dScale);
    AssertNear(dX, dBackX, dBound);
    AssertNear(dY, dBackY, dBound);
}

// --- Fits of exact images
// ---------------------------------------------------------------------------------------------

// Eleven points at most, a condition of 4.5, coefficients and images up to 25: 11 roundings of each sum, in the means,
// the matrix and the right-hand side.
const double FitBound = 4.5 * 3.0 * 11.0 * 25.0 * Eps;

// The normal matrix of the eight coefficients over these squares has a condition of up to some 1e4 (rows of order 1 to
// 10), and its sums the same roundings. The refinement works on residuals and makes good most of it.
const double OmographicFitBound = 1e3 * FitBound;

RC_GTEST_PROP(Fits, ReturnTheConformalTransformationOfAnExactImage, ())
{
    const nuv::TOmographicParams Params = SomeConformal();
    TControlPoints Points = Sources(1.0);
    SetTargets(Params, 0.0, Points);
    nuv::TConformalCoefs Conformal;
    RC_ASSERT(1 == Fit(Points, Conformal));
    AssertNearRecord(Params, AsOmographic(Conformal), FitBound);
    // The inverse fields: (A, B) times (InvA, InvB) as complex numbers is 1.
    AssertNear(1.0, Conformal.dA * Conformal.dInvA - Conformal.dB * Conformal.dInvB, 16.0 * Eps);
    AssertNear(0.0, Conformal.dA * Conformal.dInvB + Conformal.dB * Conformal.dInvA, 16.0 * Eps);

    nuv::enumMethodUsed Used = nuv::METHOD_OMOGRAPHIC;
    nuv::TOmographicParams Chosen;
    RC_ASSERT(Choose(Points, true, nuv::METHOD_CONFORMAL, Used, Chosen));
    RC_ASSERT(Used == nuv::METHOD_CONFORMAL);
    AssertNearRecord(Params, Chosen, FitBound);
}

RC_GTEST_PROP(Fits, ReturnTheAffineTransformationOfAnExactImage, ())
{
    const nuv::TOmographicParams Params = SomeAffine();
    TControlPoints Points = Sources(1.0);
    SetTargets(Params, 0.0, Points);
    nuv::TAffineCoefs Affine;
    RC_ASSERT(1 == Fit(Points, Affine));
    AssertNearRecord(Params, AsOmographic(Affine), FitBound);

    nuv::enumMethodUsed Used = nuv::METHOD_OMOGRAPHIC;
    nuv::TOmographicParams Chosen;
    RC_ASSERT(Choose(Points, Chance(), nuv::METHOD_AFFINE, Used, Chosen));
    RC_ASSERT(Used == nuv::METHOD_AFFINE);
    AssertNearRecord(Params, Chosen, FitBound);
}

RC_GTEST_PROP(Fits, ReturnTheOmographicTransformationOfAnExactImage, ())
{
    const nuv::TOmographicParams Params = SomeOmographic();
    TControlPoints Points = Sources(1.0);
    SetTargets(Params, 0.0, Points);
    nuv::TOmographicParams Omographic;
    RC_ASSERT(1 == Fit(Points, Omographic));
    AssertNearRecord(Params, Omographic, OmographicFitBound);

    nuv::enumMethodUsed Used = nuv::METHOD_CONFORMAL;
    nuv::TOmographicParams Chosen;
    RC_ASSERT(Choose(Points, Chance(), nuv::METHOD_OMOGRAPHIC, Used, Chosen));
    RC_ASSERT(Used == nuv::METHOD_OMOGRAPHIC);
    AssertNearRecord(Params, Chosen, OmographicFitBound);
}

RC_GTEST_PROP(Fits, OfTheOmographicKindGiveTheAffineCoefficientsOfAnAffineImage, ())
{
    const nuv::TOmographicParams Params = SomeAffine();
    TControlPoints Points = Sources(1.0);
    SetTargets(Params, 0.0, Points);
    nuv::TOmographicParams Omographic;
    RC_ASSERT(1 == Fit(Points, Omographic));
    AssertNearRecord(Params, Omographic, OmographicFitBound);
}

RC_GTEST_PROP(Fits, ReturnTheMirroredSimilarityOfAnExactMirrorImage, ())
{
    nuv::TOmographicParams Params = SomeConformal();
    Params.dD = -Params.dD;
    Params.dE = -Params.dE;
    TControlPoints Points = Sources(1.0);
    SetTargets(Params, 0.0, Points);
    nuv::enumMethodUsed Used = nuv::METHOD_OMOGRAPHIC;
    nuv::TOmographicParams Chosen;
    RC_ASSERT(Choose(Points, false, nuv::METHOD_CONFORMAL, Used, Chosen));
    RC_ASSERT(Used == nuv::METHOD_CONFORMAL);
    AssertNearRecord(Params, Chosen, FitBound);
}

// --- The mirrored similarity
// ------------------------------------------------------------------------------------------

RC_GTEST_PROP(MirroredSimilarity, IsTheSimilarityOntoTheNegatedTargetAndReversesTheOrientation, ())
{
    TControlPoints Points = Sources(1.0);
    SetTargets(SomeOmographic(), 0.5, Points);
    TControlPoints Negated = Points;
    for (double& dValue : Negated.vdYa)
    {
        dValue = -dValue;
    }
    nuv::enumMethodUsed Used;
    nuv::TOmographicParams Keeping;
    nuv::TOmographicParams Reversing;
    RC_ASSERT(Choose(Points, true, nuv::METHOD_CONFORMAL, Used, Keeping));
    RC_ASSERT(Choose(Negated, false, nuv::METHOD_CONFORMAL, Used, Reversing));
    RC_ASSERT(Keeping.dA * Keeping.dE - Keeping.dB * Keeping.dD > 0.0);
    RC_ASSERT(Reversing.dA * Reversing.dE - Reversing.dB * Reversing.dD < 0.0);
    RC_ASSERT(SameBits(Reversing.dE, -Reversing.dA));
    RC_ASSERT(SameBits(Reversing.dD, Reversing.dB));
    Keeping.dD = -Keeping.dD;
    Keeping.dE = -Keeping.dE;
    Keeping.dF = -Keeping.dF;
    AssertSameRecord(Keeping, Reversing);
}

// --- Least squares
// ----------------------------------------------------------------------------------------------------

double SquareSum(const TControlPoints& a_Points, const nuv::TOmographicParams& a_Params)
{
    double dSum = 0.0;
    for (int i = 0; i < a_Points.Count(); ++i)
    {
        double dXa, dYa;
        Map(a_Params, a_Points.vdX[i], a_Points.vdY[i], dXa, dYa);
        dSum += (dXa - a_Points.vdXa[i]) * (dXa - a_Points.vdXa[i]);
        dSum += (dYa - a_Points.vdYa[i]) * (dYa - a_Points.vdYa[i]);
    }
    return dSum;
}

// Nudges every coefficient of a fitted record up and down. At the minimum the square sum grows by the square of the
// step, 1e-10, times the square of a column of the equations, at least 0.1 here: the four corners alone give the
// coefficients of x and y 4 times 1/W^2, W below 2. Left of a true minimum is a gradient of about 1e-8 (the threshold
// of the refinement) times the steps' 1e-5 times the residuals' 0.01, and the rounding of the square sum, 1e-15.
template <class TRecord>
void AssertLeast(const TControlPoints& a_Points, const TRecord& a_Fitted,
                 const std::vector<double TRecord::*>& a_Coefficients,
                 const std::function<nuv::TOmographicParams(const TRecord&)>& a_AsOmographic)
{
    const double dLeast = SquareSum(a_Points, a_AsOmographic(a_Fitted));
    for (const auto Coefficient : a_Coefficients)
    {
        for (double dStep : {1e-5, -1e-5})
        {
            TRecord Nudged = a_Fitted;
            Nudged.*Coefficient += dStep;
            RC_ASSERT(SquareSum(a_Points, a_AsOmographic(Nudged)) > dLeast);
        }
    }
}

RC_GTEST_PROP(LeastSquares, ConformalIsAMinimumInEveryCoefficient, ())
{
    using T = nuv::TConformalCoefs;
    TControlPoints Points = Sources(1.0);
    SetTargets(SomeConformal(), 0.5, Points);
    T Fitted;
    RC_ASSERT(1 == Fit(Points, Fitted));
    AssertLeast<T>(Points, Fitted, {&T::dA, &T::dB, &T::dTx, &T::dTy}, [](const T& a) { return AsOmographic(a); });
}

RC_GTEST_PROP(LeastSquares, AffineIsAMinimumInEveryCoefficient, ())
{
    using T = nuv::TAffineCoefs;
    TControlPoints Points = Sources(1.0);
    SetTargets(SomeAffine(), 0.5, Points);
    T Fitted;
    RC_ASSERT(1 == Fit(Points, Fitted));
    AssertLeast<T>(Points, Fitted, {&T::dA, &T::dB, &T::dC, &T::dD, &T::dE, &T::dF},
                   [](const T& a) { return AsOmographic(a); });
}

RC_GTEST_PROP(LeastSquares, OmographicIsAMinimumInEveryCoefficient, ())
{
    using T = nuv::TOmographicParams;
    TControlPoints Points = Sources(1.0);
    SetTargets(SomeOmographic(), 0.01, Points);
    T Fitted;
    RC_ASSERT(1 == Fit(Points, Fitted));
    AssertLeast<T>(Points, Fitted, {&T::dA, &T::dB, &T::dC, &T::dD, &T::dE, &T::dF, &T::dG, &T::dH},
                   [](const T& a) { return a; });
}

// --- Scaling by powers of two
// -----------------------------------------------------------------------------------------

void ScaleValues(double a_dFactor, TValues& a_vdValues)
{
    for (double& dValue : a_vdValues)
    {
        dValue *= a_dFactor;
    }
}

RC_GTEST_PROP(PowersOfTwo, InTheTargetScaleTheAffineAndTheConformalFitExactly, ())
{
    TControlPoints Points = Sources(1.0);
    SetTargets(SomeAffine(), 0.5, Points);
    nuv::TAffineCoefs Affine;
    nuv::TConformalCoefs Conformal;
    RC_ASSERT(1 == Fit(Points, Affine));
    RC_ASSERT(1 == Fit(Points, Conformal));

    const double dFactor = std::ldexp(1.0, Pick(-100, 101));
    ScaleValues(dFactor, Points.vdXa);
    ScaleValues(dFactor, Points.vdYa);
    nuv::TAffineCoefs ScaledAffine;
    nuv::TConformalCoefs ScaledConformal;
    RC_ASSERT(1 == Fit(Points, ScaledAffine));
    RC_ASSERT(1 == Fit(Points, ScaledConformal));
    AssertSameRecord(nuv::TAffineCoefs{Affine.dA * dFactor, Affine.dB * dFactor, Affine.dC * dFactor,
                                       Affine.dD * dFactor, Affine.dE * dFactor, Affine.dF * dFactor},
                     ScaledAffine);
    AssertSameRecord(nuv::TConformalCoefs{Conformal.dA * dFactor, Conformal.dB * dFactor, Conformal.dTx * dFactor,
                                          Conformal.dTy * dFactor, Conformal.dInvA / dFactor,
                                          Conformal.dInvB / dFactor},
                     ScaledConformal);
}

RC_GTEST_PROP(PowersOfTwo, InTheSourceScaleTheConformalFitExactly, ())
{
    TControlPoints Points = Sources(1.0);
    SetTargets(SomeConformal(), 0.5, Points);
    nuv::TConformalCoefs Conformal;
    RC_ASSERT(1 == Fit(Points, Conformal));
    // The spread of the points must stay above its absolute tolerance.
    const double dFactor = std::ldexp(1.0, Pick(-15, 101));
    ScaleValues(dFactor, Points.vdX);
    ScaleValues(dFactor, Points.vdY);
    nuv::TConformalCoefs Scaled;
    RC_ASSERT(1 == Fit(Points, Scaled));
    AssertSameRecord(nuv::TConformalCoefs{Conformal.dA / dFactor, Conformal.dB / dFactor, Conformal.dTx, Conformal.dTy,
                                          Conformal.dInvA * dFactor, Conformal.dInvB * dFactor},
                     Scaled);
}

// --- Packed normal equations
// ------------------------------------------------------------------------------------------

TValues SomeValues(std::size_t a_iCount)
{
    TValues vdValues(a_iCount);
    std::generate(vdValues.begin(), vdValues.end(), [] { return Real(-10.0, 10.0); });
    return vdValues;
}

// n from 1 to 8 and arrays of that size.
struct TPackedCase
{
    int iUnknowns;
    TValues vdMatrix;
    TValues vdVector;
};

std::size_t Position(int a_iRow, int a_iColumn)
{
    return static_cast<std::size_t>(a_iRow) * (a_iRow + 1) / 2 + a_iColumn;
}

RC_GTEST_PROP(PackedUpdates, DenseAndSparseAgreeBitForBitForDistinctIndicesInAnyOrder, ())
{
    const int iUnknowns = Pick(1, 9);
    std::vector<int> viIndices(iUnknowns);
    std::iota(viIndices.begin(), viIndices.end(), 0);
    for (int i = iUnknowns - 1; i > 0; --i)
    {
        std::swap(viIndices[i], viIndices[Pick(0, i + 1)]);
    }
    viIndices.resize(Pick(1, iUnknowns + 1));
    const TValues vdValues = SomeValues(viIndices.size());
    TValues vdRow(iUnknowns, 0.0);
    for (std::size_t p = 0; p < viIndices.size(); ++p)
    {
        vdRow[viIndices[p]] = vdValues[p];
    }
    // Beside the entries the dense update adds zeros, which change nothing but a -0.
    TValues vdDense = SomeValues(Position(iUnknowns, 0));
    TValues vdDenseVector = SomeValues(iUnknowns);
    TValues vdSparse = vdDense;
    TValues vdSparseVector = vdDenseVector;
    const double dValue = Real(-10.0, 10.0);
    nuv::UpdateNormMatrixLowTri(iUnknowns, vdDense.data(), vdDenseVector.data(), vdRow.data(), dValue);
    nuv::UpdateNormMatrixLowTri(iUnknowns, vdSparse.data(), vdSparseVector.data(), static_cast<int>(viIndices.size()),
                                vdValues.data(), viIndices.data(), dValue);
    AssertSameValues(vdDense, vdSparse);
    AssertSameValues(vdDenseVector, vdSparseVector);
}

// Normal equations of more observations than unknowns. A unit row for each unknown keeps the least eigenvalue at 1.
TPackedCase SomeNormalEquations()
{
    TPackedCase Case;
    Case.iUnknowns = Pick(1, 9);
    Case.vdMatrix.assign(Position(Case.iUnknowns, 0), 0.0);
    Case.vdVector.assign(Case.iUnknowns, 0.0);
    for (int i = 0; i < 2 * Case.iUnknowns; ++i)
    {
        const TValues vdRow = SomeValues(Case.iUnknowns);
        const double dOne = 1.0;
        const int iIndex = i / 2;
        nuv::UpdateNormMatrixLowTri(Case.iUnknowns, Case.vdMatrix.data(), Case.vdVector.data(), vdRow.data(),
                                    Real(-10.0, 10.0));
        nuv::UpdateNormMatrixLowTri(Case.iUnknowns, Case.vdMatrix.data(), Case.vdVector.data(), 1, &dOne, &iIndex,
                                    Real(-10.0, 10.0));
    }
    return Case;
}

RC_GTEST_PROP(PackedCholesky, TheFactorTimesItsTransposeIsTheMatrix, ())
{
    const TPackedCase Case = SomeNormalEquations();
    TValues vdFactor = Case.vdMatrix;
    RC_ASSERT(nuv::CholeskyLowTri(Case.iUnknowns, vdFactor.data()));
    for (int i = 0; i < Case.iUnknowns; ++i)
    {
        RC_ASSERT(vdFactor[Position(i, i)] > 0.0);
        for (int j = 0; j <= i; ++j)
        {
            double dProduct = 0.0;
            double dSize = 0.0;
            for (int k = 0; k <= j; ++k)
            {
                const double dTerm = vdFactor[Position(i, k)] * vdFactor[Position(j, k)];
                dProduct += dTerm;
                dSize += std::fabs(dTerm);
            }
            // |N - L L^T| <= (n + 3) roundings of |L||L^T|, the reciprocal included (Higham, Accuracy and Stability of
            // Numerical Algorithms, theorem 10.3), and n + 1 of the product here.
            AssertNear(Case.vdMatrix[Position(i, j)], dProduct, (Case.iUnknowns + 2) * Eps * dSize);
        }
    }
}

RC_GTEST_PROP(PackedCholesky, TheSolutionLeavesASmallResidual, ())
{
    const TPackedCase Case = SomeNormalEquations();
    TValues vdFactor = Case.vdMatrix;
    TValues vdSolution = Case.vdVector;
    RC_ASSERT(nuv::CholeskyLowTri(Case.iUnknowns, vdFactor.data()));
    nuv::SolveCholLowTri(Case.iUnknowns, vdFactor.data(), vdSolution.data());
    double dFactorSize = 0.0; // (|L||L^T|)(i,j) is at most the product of the lengths of two rows of L
    double dSolutionSize = 0.0;
    for (int i = 0; i < Case.iUnknowns; ++i)
    {
        dFactorSize = std::max(dFactorSize, Case.vdMatrix[Position(i, i)]);
        dSolutionSize += std::fabs(vdSolution[i]);
    }
    for (int i = 0; i < Case.iUnknowns; ++i)
    {
        double dImage = 0.0;
        for (int j = 0; j < Case.iUnknowns; ++j)
        {
            dImage += Case.vdMatrix[Position(std::max(i, j), std::min(i, j))] * vdSolution[j];
        }
        // (3n + 3) roundings of |L||L^T||x| (theorem 10.4 there), n + 1 of the image here.
        AssertNear(Case.vdVector[i], dImage, (2 * Case.iUnknowns + 2) * Eps * dFactorSize * dSolutionSize);
    }
}

RC_GTEST_PROP(PackedCholesky, PowersOfFourInTheMatrixScaleTheFactorExactly, ())
{
    TPackedCase Case = SomeNormalEquations();
    TValues vdFactor = Case.vdMatrix;
    RC_ASSERT(nuv::CholeskyLowTri(Case.iUnknowns, vdFactor.data()));
    const int iExponent = Pick(-100, 101);
    ScaleValues(std::ldexp(1.0, 2 * iExponent), Case.vdMatrix);
    ScaleValues(std::ldexp(1.0, iExponent), vdFactor);
    RC_ASSERT(nuv::CholeskyLowTri(Case.iUnknowns, Case.vdMatrix.data()));
    AssertSameValues(vdFactor, Case.vdMatrix);
}

} // namespace
