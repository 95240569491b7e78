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

// If rounding keeps a step of at most this size from lowering the sum of squares, the iterations have converged, too. The
// sum changes by the square of the step, and has rounding errors of about 1e-16: of itself, and of the extent times its
// root.
static const double ROUNDED_STEP = 1e-9;         // part of the extent
static const double ROUNDED_STEP_OF_ROOT = 1e-7; // part of the root of the sum of squares

enum
{
    POSITIONS = 3,   // unknowns of X alone: A, B, C; of Y alone: D, E, F
    DENOMINATORS = 2 // unknowns of both: G, H
};

// The derivatives of a point: of X by A, B, C, which are also those of Y by D, E, F, and of X and Y by G and H.
struct TDerivatives
{
    double vdPosition[POSITIONS];
    double vdX[DENOMINATORS];
    double vdY[DENOMINATORS];
};

static TDerivatives DerivativesAt(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY,
                                  const TVector& a_Image)
{
    const double dW = Denominator(a_Coefs, a_dX, a_dY);
    const double dP = a_dX / dW;
    const double dQ = a_dY / dW;
    const TDerivatives Derivatives = {
        {dP, dQ, 1.0 / dW}, {-a_Image.dX * dP, -a_Image.dX * dQ}, {-a_Image.dY * dP, -a_Image.dY * dQ}};
    return Derivatives;
}

void ImageDerivatives(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY, double* a_vdByX, double* a_vdByY)
{
    const TDerivatives D = DerivativesAt(a_Coefs, a_dX, a_dY, ImageOf(a_Coefs, a_dX, a_dY));
    memset(a_vdByX, 0, COEFS * sizeof(double));
    memset(a_vdByY, 0, COEFS * sizeof(double));
    memcpy(a_vdByX, D.vdPosition, sizeof D.vdPosition);
    memcpy(a_vdByY + POSITIONS, D.vdPosition, sizeof D.vdPosition);
    memcpy(a_vdByX + 2 * POSITIONS, D.vdX, sizeof D.vdX);
    memcpy(a_vdByY + 2 * POSITIONS, D.vdY, sizeof D.vdY);
}

static double* RowOf(double* a_vdMatrix, int a_iRow)
{
    return a_vdMatrix + a_iRow * (a_iRow + 1) / 2;
}

static void AddPositions(double a_dFactor, const TDerivatives& a_Derivatives, double* a_vdSums)
{
    for (int j = 0; j < POSITIONS; ++j)
    {
        a_vdSums[j] += a_dFactor * a_Derivatives.vdPosition[j];
    }
}

// Adds both observations of a point, but for the block of D, E, F. The X observation comes before the Y observation.
static void AddPoint(const TDerivatives& a_Derivatives, const TVector& a_Rest, TOmographicEquations& a_Equations)
{
    for (int j = 0; j < POSITIONS; ++j)
    {
        double* const vdRow = RowOf(a_Equations.vdMatrix, j);
        for (int k = 0; k <= j; ++k)
        {
            vdRow[k] += a_Derivatives.vdPosition[j] * a_Derivatives.vdPosition[k];
        }
    }
    AddPositions(a_Rest.dX, a_Derivatives, a_Equations.vdVector);
    AddPositions(a_Rest.dY, a_Derivatives, a_Equations.vdVector + POSITIONS);
    for (int j = 0; j < DENOMINATORS; ++j)
    {
        const double dX = a_Derivatives.vdX[j];
        const double dY = a_Derivatives.vdY[j];
        double* const vdRow = RowOf(a_Equations.vdMatrix, 2 * POSITIONS + j);
        AddPositions(dX, a_Derivatives, vdRow);
        AddPositions(dY, a_Derivatives, vdRow + POSITIONS);
        for (int k = 0; k <= j; ++k)
        {
            vdRow[2 * POSITIONS + k] = vdRow[2 * POSITIONS + k] + dX * a_Derivatives.vdX[k] + dY * a_Derivatives.vdY[k];
        }
        a_Equations.vdVector[2 * POSITIONS + j] =
            a_Equations.vdVector[2 * POSITIONS + j] + dX * a_Rest.dX + dY * a_Rest.dY;
    }
}

// The sums are those of UpdateNormMatrixLowTri for the X and the Y row of each point. The products with the six zeros of
// the two rows are left out, and the block of D, E, F is that of A, B, C.
void FormEquations(const TControlPoints& a_Points, const nuv::TOmographicParams& a_Coefs,
                   TOmographicEquations& a_Equations)
{
    memset(&a_Equations, 0, sizeof a_Equations);
    for (int i = 0; i < a_Points.iCount; ++i)
    {
        const TVector Image = ImageOf(a_Coefs, a_Points.vdX[i], a_Points.vdY[i]);
        const TVector Rest = {a_Points.vdXa[i] - Image.dX, a_Points.vdYa[i] - Image.dY};
        AddPoint(DerivativesAt(a_Coefs, a_Points.vdX[i], a_Points.vdY[i], Image), Rest, a_Equations);
    }
    for (int j = 0; j < POSITIONS; ++j)
    {
        memcpy(RowOf(a_Equations.vdMatrix, POSITIONS + j) + POSITIONS, RowOf(a_Equations.vdMatrix, j),
               (static_cast<size_t>(j) + 1) * sizeof(double));
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
        if (!IsShorter(New.dX - Old.dX, New.dY - Old.dY, dGreatest))
        {
            const double dMove = Length(New.dX - Old.dX, New.dY - Old.dY);
            dGreatest = dMove > dGreatest || !IsFinite(dMove) ? dMove : dGreatest;
        }
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
    const double dRounded = ROUNDED_STEP * a_dExtent + ROUNDED_STEP_OF_ROOT * sqrt(a_Fit.dSumOfSquares);
    return dMove <= dRounded ? STEP_CONVERGED : STEP_FAILED;
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
