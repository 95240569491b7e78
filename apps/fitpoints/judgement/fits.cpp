// fits.cpp: the fit of one kind by the library, its residuals, and the iterations that the library leaves out.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "internal.h"

#include <math.h>
#include <string.h>

namespace judgement {

double Denominator(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY)
{
    return a_Coefs.dG * a_dX + a_Coefs.dH * a_dY + 1.0;
}

TVector ImageOf(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY)
{
    const double dW = Denominator(a_Coefs, a_dX, a_dY);
    const TVector Image = {(a_Coefs.dA * a_dX + a_Coefs.dB * a_dY + a_Coefs.dC) / dW,
                           (a_Coefs.dD * a_dX + a_Coefs.dE * a_dY + a_Coefs.dF) / dW};
    return Image;
}

double Residuals(const TControlPoints& a_Points, const nuv::TOmographicParams& a_Coefs, double* a_vdDx, double* a_vdDy)
{
    double dSum = 0;
    for (int i = 0; i < a_Points.iCount; ++i)
    {
        const TVector Image = ImageOf(a_Coefs, a_Points.vdX[i], a_Points.vdY[i]);
        a_vdDx[i] = Image.dX - a_Points.vdXa[i];
        a_vdDy[i] = Image.dY - a_Points.vdYa[i];
        dSum += a_vdDx[i] * a_vdDx[i] + a_vdDy[i] * a_vdDy[i];
    }
    return dSum;
}

static double SumOfSquares(const TControlPoints& a_Points, const nuv::TOmographicParams& a_Coefs)
{
    double dSum = 0;
    for (int i = 0; i < a_Points.iCount; ++i)
    {
        const TVector Image = ImageOf(a_Coefs, a_Points.vdX[i], a_Points.vdY[i]);
        const double dX = Image.dX - a_Points.vdXa[i];
        const double dY = Image.dY - a_Points.vdYa[i];
        dSum += dX * dX + dY * dY;
    }
    return dSum;
}

// ---------------------------------------------------------------------------------------------------------------------
// Gauss-Newton iterations

enum
{
    GREATEST_ITERATIONS = 100,
    GREATEST_HALVINGS = 30
};

// A step that moves no image of a point by more than this part of the target's extent is not worth making: it is about
// the rounding of the step itself.
static const double CONVERGED_STEP = 1e-13;

// If rounding keeps a step of at most this size from lowering the sum of squares, the iterations have converged, too.
static const double ROUNDED_STEP = 1e-9;

void ImageDerivatives(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY, double* a_vdByX, double* a_vdByY)
{
    const double dW = Denominator(a_Coefs, a_dX, a_dY);
    const TVector Image = ImageOf(a_Coefs, a_dX, a_dY);
    const double dP = a_dX / dW;
    const double dQ = a_dY / dW;
    const double vdByX[COEFS] = {dP, dQ, 1.0 / dW, 0, 0, 0, -Image.dX * dP, -Image.dX * dQ};
    const double vdByY[COEFS] = {0, 0, 0, dP, dQ, 1.0 / dW, -Image.dY * dP, -Image.dY * dQ};
    memcpy(a_vdByX, vdByX, sizeof vdByX);
    memcpy(a_vdByY, vdByY, sizeof vdByY);
}

void FormEquations(const TControlPoints& a_Points, const nuv::TOmographicParams& a_Coefs,
                   TOmographicEquations& a_Equations)
{
    memset(&a_Equations, 0, sizeof a_Equations);
    for (int i = 0; i < a_Points.iCount; ++i)
    {
        double vdByX[COEFS];
        double vdByY[COEFS];
        const TVector Image = ImageOf(a_Coefs, a_Points.vdX[i], a_Points.vdY[i]);
        ImageDerivatives(a_Coefs, a_Points.vdX[i], a_Points.vdY[i], vdByX, vdByY);
        nuv::UpdateNormMatrixLowTri(COEFS, a_Equations.vdMatrix, a_Equations.vdVector, vdByX,
                                    a_Points.vdXa[i] - Image.dX);
        nuv::UpdateNormMatrixLowTri(COEFS, a_Equations.vdMatrix, a_Equations.vdVector, vdByY,
                                    a_Points.vdYa[i] - Image.dY);
    }
}

static nuv::TOmographicParams Moved(const nuv::TOmographicParams& a_Coefs, const double* a_vdStep, double a_dPart)
{
    double vdCoefs[COEFS];
    nuv::TOmographicParams Result;
    CoefsToArray(a_Coefs, vdCoefs);
    for (int j = 0; j < COEFS; ++j)
    {
        vdCoefs[j] += a_dPart * a_vdStep[j];
    }
    ArrayToCoefs(vdCoefs, Result);
    return Result;
}

// The greatest distance by which the new coefficients move an image of a point; NaN if one is not finite.
static double GreatestMove(const TControlPoints& a_Points, const nuv::TOmographicParams& a_Old,
                           const nuv::TOmographicParams& a_New)
{
    double dGreatest = 0;
    for (int i = 0; i < a_Points.iCount; ++i)
    {
        const TVector Old = ImageOf(a_Old, a_Points.vdX[i], a_Points.vdY[i]);
        const TVector New = ImageOf(a_New, a_Points.vdX[i], a_Points.vdY[i]);
        const double dMove = Length(New.dX - Old.dX, New.dY - Old.dY);
        dGreatest = dMove > dGreatest || !IsFinite(dMove) ? dMove : dGreatest;
    }
    return dGreatest;
}

// What has become of a step.
enum enumStep
{
    STEP_MADE,      // the sum of squares has not grown
    STEP_CONVERGED, // it is not made, because it is only rounding
    STEP_FAILED
};

// Makes the step, or a half of it, a quarter, ...
static enumStep MakeStep(const TControlPoints& a_Points, const double* a_vdStep, double a_dExtent, TKindFit& a_Fit)
{
    double dPart = 1.0;
    const double dMove = GreatestMove(a_Points, a_Fit.Coefs, Moved(a_Fit.Coefs, a_vdStep, dPart));
    if (dMove <= CONVERGED_STEP * a_dExtent)
    {
        return STEP_CONVERGED;
    }
    for (int k = 0; k < GREATEST_HALVINGS; ++k, dPart *= 0.5)
    {
        const nuv::TOmographicParams Coefs = Moved(a_Fit.Coefs, a_vdStep, dPart);
        const double dSum = SumOfSquares(a_Points, Coefs);
        if (dSum < a_Fit.dSumOfSquares)
        {
            a_Fit.Coefs = Coefs;
            a_Fit.dSumOfSquares = dSum;
            return STEP_MADE;
        }
    }
    return dMove <= ROUNDED_STEP * a_dExtent ? STEP_CONVERGED : STEP_FAILED;
}

static enumStep Iterate(const TControlPoints& a_Points, double a_dExtent, TKindFit& a_Fit)
{
    TOmographicEquations Equations;
    FormEquations(a_Points, a_Fit.Coefs, Equations);
    if (!nuv::CholeskyLowTri(COEFS, Equations.vdMatrix))
    {
        return STEP_FAILED;
    }
    nuv::SolveCholLowTri(COEFS, Equations.vdMatrix, Equations.vdVector);
    return MakeStep(a_Points, Equations.vdVector, a_dExtent, a_Fit);
}

void Refine(const TControlPoints& a_Points, TKindFit& a_Fit)
{
    const double dX = Extent(a_Points.iCount, a_Points.vdXa);
    const double dY = Extent(a_Points.iCount, a_Points.vdYa);
    enumStep Step = STEP_MADE;
    a_Fit.iIterations = 0;
    for (int k = 0; k < GREATEST_ITERATIONS && Step == STEP_MADE; ++k)
    {
        Step = Iterate(a_Points, dX > dY ? dX : dY, a_Fit);
        a_Fit.iIterations += Step == STEP_MADE ? 1 : 0;
    }
    a_Fit.bConverged = Step == STEP_CONVERGED ? 1 : 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Fits of the library

static bool FitSimilarity(const TControlPoints& a_Points, bool a_bMirrored, nuv::TOmographicParams& a_Coefs)
{
    nuv::enumMethodUsed Used;
    return nuv::CalcCoefs(a_Points.iCount, a_Points.vdX, a_Points.vdY, a_Points.vdXa, a_Points.vdYa, !a_bMirrored,
                          nuv::METHOD_CONFORMAL, Used, a_Coefs);
}

// The mirrored similarity fails for the same reason as the other one, unless there is no memory for it.
static enumReason FitConformal(const TControlPoints& a_Points, bool a_bMirrored, nuv::TOmographicParams& a_Coefs)
{
    if (FitSimilarity(a_Points, a_bMirrored, a_Coefs))
    {
        return REASON_NONE;
    }
    return a_bMirrored && FitSimilarity(a_Points, false, a_Coefs) ? REASON_NO_MEMORY : REASON_SPREAD_IS_ZERO;
}

// The library rejects every affine transformation whose determinant is within 1e-12 of zero. Among them are regular
// ones of small scale, such as pixels of 0.1 m in degrees. Their determinant is not small in relation to their
// coefficients.
static bool IsRegular(const nuv::TAffineCoefs& a_Coefs)
{
    const double dSize = Length(Length(a_Coefs.dA, a_Coefs.dB), Length(a_Coefs.dD, a_Coefs.dE));
    return fabs(a_Coefs.dA * a_Coefs.dE - a_Coefs.dD * a_Coefs.dB) > 1e-12 * dSize * dSize;
}

static enumReason FitAffine(const TControlPoints& a_Points, nuv::TOmographicParams& a_Coefs)
{
    nuv::TAffineCoefs Affine;
    nuv::CalcAffineCoefs(static_cast<unsigned int>(a_Points.iCount), a_Points.vdX, a_Points.vdY, a_Points.vdXa,
                         a_Points.vdYa, Affine);
    nuv::AffineCoefsToOmographicCoefs(Affine, a_Coefs);
    return IsRegular(Affine) ? REASON_NONE : REASON_AFFINE_COLLAPSES;
}

static enumReason FitOmographic(const TControlPoints& a_Points, nuv::TOmographicParams& a_Coefs)
{
    if (nuv::CalcOmographicCoefs(a_Points.iCount, a_Points.vdX, a_Points.vdY, a_Points.vdXa, a_Points.vdYa, a_Coefs) !=
        1)
    {
        return REASON_OMOGRAPHIC_UNSOLVABLE;
    }
    return AreFinite(a_Coefs) ? REASON_NONE : REASON_COEFS_NOT_FINITE;
}

enumReason FitKind(const TControlPoints& a_Points, nuv::enumMethodUsed a_Kind, bool a_bMirrored, TKindFit& a_Fit)
{
    if (a_Points.iCount < LeastPoints(a_Kind))
    {
        return REASON_TOO_FEW_POINTS;
    }
    TKindFit Fit;
    const enumReason Reason = a_Kind == nuv::METHOD_CONFORMAL ? FitConformal(a_Points, a_bMirrored, Fit.Coefs)
                              : a_Kind == nuv::METHOD_AFFINE  ? FitAffine(a_Points, Fit.Coefs)
                                                              : FitOmographic(a_Points, Fit.Coefs);
    if (Reason != REASON_NONE)
    {
        return Reason;
    }
    Fit.Kind = a_Kind;
    Fit.bMirrored = a_bMirrored && a_Kind == nuv::METHOD_CONFORMAL ? 1 : 0;
    Fit.dSumOfSquares = SumOfSquares(a_Points, Fit.Coefs);
    Fit.iIterations = 0;
    Fit.bConverged = 1;
    if (!IsFinite(Fit.dSumOfSquares))
    {
        return REASON_RESIDUALS_NOT_FINITE;
    }
    if (a_Kind == nuv::METHOD_OMOGRAPHIC)
    {
        Refine(a_Points, Fit);
    }
    a_Fit = Fit;
    return REASON_NONE;
}

enumReason FitSupported(const TControlPoints& a_Points, nuv::enumMethodUsed a_Kind, bool a_bMirrored, TKindFit& a_Fit)
{
    TSupport Support;
    FindSupport(a_Points, Support);
    const enumReason Reason = Support.vReasons[a_Kind];
    return Reason != REASON_NONE ? Reason : FitKind(a_Points, a_Kind, a_bMirrored, a_Fit);
}

} // namespace judgement
