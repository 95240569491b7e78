// properties_fits_test.cpp: the fits on random control points.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/properties.h"

#include <functional>

namespace {

using namespace nuv_tests;

// --- Fits of exact images

// At most eleven points, a condition of 4.5, and coefficients and images up to 25. Each sum in the means, the matrix
// and the right-hand side has 11 roundings.
const double FitBound = 4.5 * 3.0 * 11.0 * 25.0 * Epsilon;

// The normal matrix of the eight coefficients over these squares has a condition of up to about 1e4 (rows of order 1 to
// 10), and its sums have the same roundings. The refinement works on residuals and removes most of the error.
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
    AssertNear(1.0, Conformal.dA * Conformal.dInvA - Conformal.dB * Conformal.dInvB, 16.0 * Epsilon);
    AssertNear(0.0, Conformal.dA * Conformal.dInvB + Conformal.dB * Conformal.dInvA, 16.0 * Epsilon);

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

double SquareSum(const TControlPoints& a_Points, const nuv::TOmographicParams& a_Params)
{
    double dSum = 0.0;
    for (int i = 0; i < a_Points.Count(); ++i)
    {
        const auto [dXa, dYa] = Map(a_Params, a_Points.vdX[i], a_Points.vdY[i]);
        dSum += (dXa - a_Points.vdXa[i]) * (dXa - a_Points.vdXa[i]);
        dSum += (dYa - a_Points.vdYa[i]) * (dYa - a_Points.vdYa[i]);
    }
    return dSum;
}

// Moves every coefficient of a fitted record up and down. At the minimum the square sum grows by the square of the step
// (1e-10) times the square of a column of the equations. The four corners alone make that square at least 0.1: they
// give the coefficients of x and y 4 times 1/W^2, with W below 2. The fit leaves a gradient of about 1e-8 (the
// threshold of the refinement) times the step 1e-5 times the residuals 0.01, and the square sum is rounded by about
// 1e-15.
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

} // namespace
