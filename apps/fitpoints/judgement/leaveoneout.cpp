// leaveoneout.cpp: leave-one-out residuals, in closed form or by repeated fits.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Model      A fit of the other points predicts point i with the residual e = (I - H)^-1 r, where r is its residual in
//            the fit of all points and H its block of order 2 of the hat matrix J N^-1 J^T. The sum of squares drops by
//            r^T e without the point.
// Method     In centred coordinates H = h I for the conformal and affine kinds, with h = 1/n + d^T C^-1 d, where d is the
//            centred source point and C the sum of all d d^T (conformal: the sum of all |d|^2 times I). The omographic kind
//            is not linear: up to a limit its fits are repeated, above J is that of the fit.
// Source     R. D. Cook, S. Weisberg, Residuals and Influence in Regression, sections 2.1 and 2.2.

#include "internal.h"

#include <math.h>
#include <stddef.h>

namespace judgement {

// Up to so many points the omographic fit is repeated without each of them. The time of that grows with the square.
static const int GREATEST_REPEATED = 100;

// If I - H is closer to singular than this, the other points do not determine the kind.
static const double LEAST_FREEDOM = 1e-12;

TLeaveArrays LeaveArrays(double* a_vdBlock, int a_iCount)
{
    const TLeaveArrays Arrays = {a_vdBlock, a_vdBlock + a_iCount, a_vdBlock + 2 * static_cast<ptrdiff_t>(a_iCount)};
    return Arrays;
}

static void StoreUndetermined(const TLeaveArrays& a_Output, int i)
{
    const double dInfinity = HUGE_VAL;
    a_Output.vdX[i] = dInfinity;
    a_Output.vdY[i] = dInfinity;
    a_Output.vdDrops[i] = 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Conformal and affine kinds

// The centroid of the source points, and the sums of the squares and products of the centred coordinates.
struct TMoments
{
    TVector Mean;
    double dXX, dXY, dYY;
};

static double MeanOf(int a_iCount, const double* a_vdValues)
{
    double dSum = 0;
    for (int i = 0; i < a_iCount; ++i)
    {
        dSum += a_vdValues[i] - a_vdValues[0];
    }
    return a_vdValues[0] + dSum / a_iCount;
}

static TMoments FindMoments(const TControlPoints& a_Points)
{
    TMoments Moments = {{MeanOf(a_Points.iCount, a_Points.vdX), MeanOf(a_Points.iCount, a_Points.vdY)}, 0, 0, 0};
    for (int i = 0; i < a_Points.iCount; ++i)
    {
        const double dX = a_Points.vdX[i] - Moments.Mean.dX;
        const double dY = a_Points.vdY[i] - Moments.Mean.dY;
        Moments.dXX += dX * dX;
        Moments.dXY += dX * dY;
        Moments.dYY += dY * dY;
    }
    return Moments;
}

// h of the point at d from the centroid. The affine kind uses C = L L^T, so that h is a sum of squares.
static double Leverage(const TMoments& a_Moments, nuv::enumMethodUsed a_Kind, int a_iCount, const TVector& a_Point)
{
    const double dX = a_Point.dX - a_Moments.Mean.dX;
    const double dY = a_Point.dY - a_Moments.Mean.dY;
    if (a_Kind == nuv::METHOD_CONFORMAL)
    {
        return 1.0 / a_iCount + (dX * dX + dY * dY) / (a_Moments.dXX + a_Moments.dYY);
    }
    // The greater of the two sums is the first pivot.
    const bool bSwap = a_Moments.dYY > a_Moments.dXX;
    const double dFirst = bSwap ? a_Moments.dYY : a_Moments.dXX;
    const double dRatio = a_Moments.dXY / dFirst;
    const double dSecond = (bSwap ? a_Moments.dXX : a_Moments.dYY) - dRatio * a_Moments.dXY;
    const double dAlong = bSwap ? dY : dX;
    const double dAcross = (bSwap ? dX : dY) - dRatio * dAlong;
    return 1.0 / a_iCount + dAlong * dAlong / dFirst + dAcross * dAcross / dSecond;
}

static void LeaveOneOutLinear(const TControlPoints& a_Points, const TKindFit& a_Fit, const TLeaveArrays& a_Output)
{
    const TMoments Moments = FindMoments(a_Points);
    for (int i = 0; i < a_Points.iCount; ++i)
    {
        const TVector Point = {a_Points.vdX[i], a_Points.vdY[i]};
        const TVector Image = ImageOf(a_Fit.Coefs, Point.dX, Point.dY);
        const double dX = Image.dX - a_Points.vdXa[i];
        const double dY = Image.dY - a_Points.vdYa[i];
        const double dFree = 1.0 - Leverage(Moments, a_Fit.Kind, a_Points.iCount, Point);
        if (!(dFree > LEAST_FREEDOM))
        {
            StoreUndetermined(a_Output, i);
            continue;
        }
        a_Output.vdX[i] = dX / dFree;
        a_Output.vdY[i] = dY / dFree;
        a_Output.vdDrops[i] = dX * a_Output.vdX[i] + dY * a_Output.vdY[i];
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Omographic kind

// The product of N^-1 and a row, given the factor of N, and the products of the result with both rows.
static TVector HatRow(const double* a_vdFactor, const double* a_vdRow, const double* a_vdByX, const double* a_vdByY)
{
    double vdSolution[COEFS];
    TVector Row = {0, 0};
    for (int j = 0; j < COEFS; ++j)
    {
        vdSolution[j] = a_vdRow[j];
    }
    nuv::SolveCholLowTri(COEFS, a_vdFactor, vdSolution);
    for (int j = 0; j < COEFS; ++j)
    {
        Row.dX += vdSolution[j] * a_vdByX[j];
        Row.dY += vdSolution[j] * a_vdByY[j];
    }
    return Row;
}

static void LeaveOneOutLinearised(const TControlPoints& a_Points, const TKindFit& a_Fit, const double* a_vdFactor,
                                  int i, const TLeaveArrays& a_Output)
{
    double vdByX[COEFS];
    double vdByY[COEFS];
    const TVector Image = ImageOf(a_Fit.Coefs, a_Points.vdX[i], a_Points.vdY[i]);
    const TVector R = {Image.dX - a_Points.vdXa[i], Image.dY - a_Points.vdYa[i]};
    ImageDerivatives(a_Fit.Coefs, a_Points.vdX[i], a_Points.vdY[i], vdByX, vdByY);
    const TVector First = HatRow(a_vdFactor, vdByX, vdByX, vdByY);
    const TVector Second = HatRow(a_vdFactor, vdByY, vdByX, vdByY);
    const double dFreeX = 1.0 - First.dX;
    const double dFreeY = 1.0 - Second.dY;
    const double dDeterminant = dFreeX * dFreeY - First.dY * First.dY;
    if (!(dFreeX > LEAST_FREEDOM && dFreeY > LEAST_FREEDOM && dDeterminant > LEAST_FREEDOM))
    {
        StoreUndetermined(a_Output, i);
        return;
    }
    a_Output.vdX[i] = (dFreeY * R.dX + First.dY * R.dY) / dDeterminant;
    a_Output.vdY[i] = (First.dY * R.dX + dFreeX * R.dY) / dDeterminant;
    a_Output.vdDrops[i] = R.dX * a_Output.vdX[i] + R.dY * a_Output.vdY[i];
}

static enumReason LeaveOneOutByDerivatives(const TControlPoints& a_Points, const TKindFit& a_Fit,
                                           const TLeaveArrays& a_Output)
{
    TOmographicEquations Equations;
    FormEquations(a_Points, a_Fit.Coefs, Equations);
    if (!nuv::CholeskyLowTri(COEFS, Equations.vdMatrix))
    {
        return REASON_SINGULAR;
    }
    for (int i = 0; i < a_Points.iCount; ++i)
    {
        LeaveOneOutLinearised(a_Points, a_Fit, Equations.vdMatrix, i, a_Output);
    }
    return REASON_NONE;
}

// The set has all points but point i.
static void LeaveOneOutByFit(const TControlPoints& a_Points, const TKindFit& a_Fit, int i, const TPointSet& a_Others,
                             const TLeaveArrays& a_Output)
{
    TKindFit Fit;
    if (FitSupported(PointsOf(a_Others), a_Fit.Kind, false, Fit) != REASON_NONE)
    {
        StoreUndetermined(a_Output, i);
        return;
    }
    const TVector Image = ImageOf(Fit.Coefs, a_Points.vdX[i], a_Points.vdY[i]);
    const double dDrop = a_Fit.dSumOfSquares - Fit.dSumOfSquares;
    a_Output.vdX[i] = Image.dX - a_Points.vdXa[i];
    a_Output.vdY[i] = Image.dY - a_Points.vdYa[i];
    a_Output.vdDrops[i] = dDrop > 0 ? dDrop : 0;
}

static enumReason LeaveOneOutByFits(const TControlPoints& a_Points, const TKindFit& a_Fit, const TLeaveArrays& a_Output)
{
    TPointSet Others;
    int viLeftOut[GREATEST_REPEATED] = {0};
    const bool bMemory = AllocateSet(a_Points.iCount, Others);
    for (int i = 0; bMemory && i < a_Points.iCount; ++i)
    {
        viLeftOut[i] = 1;
        FillSet(a_Points, viLeftOut, Others);
        LeaveOneOutByFit(a_Points, a_Fit, i, Others, a_Output);
        viLeftOut[i] = 0;
    }
    ReleaseSet(Others);
    return bMemory ? REASON_NONE : REASON_NO_MEMORY;
}

enumReason LeaveOneOut(const TControlPoints& a_Points, const TKindFit& a_Fit, double* a_vdLeaveX, double* a_vdLeaveY,
                       double* a_vdDrops)
{
    const TLeaveArrays Output = {a_vdLeaveX, a_vdLeaveY, a_vdDrops};
    if (a_Points.iCount <= LeastPoints(a_Fit.Kind))
    {
        return REASON_NO_REDUNDANCY;
    }
    if (a_Fit.Kind != nuv::METHOD_OMOGRAPHIC)
    {
        LeaveOneOutLinear(a_Points, a_Fit, Output);
        return REASON_NONE;
    }
    return a_Points.iCount <= GREATEST_REPEATED ? LeaveOneOutByFits(a_Points, a_Fit, Output)
                                                : LeaveOneOutByDerivatives(a_Points, a_Fit, Output);
}

} // namespace judgement
