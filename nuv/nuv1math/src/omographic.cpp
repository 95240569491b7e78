// omographic.cpp: the omographic (projective) fit, and the choice of the richest transformation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "functionsimp.h"
#include "nuv1math.h"

#include <float.h>
#include <math.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Omographic fit
//
// Model      X = U/W, Y = V/W with U = A x + B y + C, V = D x + E y + F, W = G x + H y + 1;
//            sum (U/W - X)^2 + (V/W - Y)^2 is least.
// Method     1. Linear solution of U - X W = 0, V - Y W = 0, multiplied out by the denominator.
//            2. At most four Gauss-Newton iterations on the true residuals X - U/W, Y - V/W.
//            Each step accumulates and solves 8 x 8 normal equations, packed, one X row and one Y row per point.
// Special    Linear equations that cannot be factorised: RET_INDETERMINATE with their right-hand side in the record.
//            A refinement that cannot be factorised ends with the coefficients before it, as a success: a point on the
//            vanishing line (W = 0) makes its matrix infinite or NaN. A radicand of exactly 0 in the last row passes
//            and divides by zero: a NaN correction compares greater than nothing, so the iteration ends as converged,
//            and the NaN stands in the coefficients for the caller to find.
// Order      Point order, X row before Y row; each row entry as it is written below, reciprocals multiplied.
// Deviation  from Hartley and Zisserman: the coordinates are not normalised, so the conditioning depends on the
//            caller's units and origin, and the denominator's constant is fixed at 1.
// Source     R. Hartley, A. Zisserman, Multiple View Geometry, 2nd ed., sections 4.1 and 4.5; A. Bjorck, Numerical
//            Methods for Least Squares Problems, section 9.2.
// ---------------------------------------------------------------------------------------------------------------------

enum
{
    OMOGRAPHIC_UNKNOWNS = 8,
    OMOGRAPHIC_PACKED = OMOGRAPHIC_UNKNOWNS * (OMOGRAPHIC_UNKNOWNS + 1) / 2,
    OMOGRAPHIC_MINIMUM_POINTS = 4,
    OMOGRAPHIC_ITERATIONS = 4
};

static const double OMOGRAPHIC_CONVERGENCE = 1e-8; // absolute, on every coefficient

// Positions of the coefficients in a vector of eight.
enum
{
    COEF_A,
    COEF_B,
    COEF_C,
    COEF_D,
    COEF_E,
    COEF_F,
    COEF_G,
    COEF_H
};

// The coefficients are computed in an array, which a record of eight doubles may be copied from and to.
typedef char TCheckOmographicLayout[sizeof(TOmographicParams) == OMOGRAPHIC_UNKNOWNS * sizeof(double) ? 1 : -1];

namespace {

// The normal equations and the two observation rows of the current point.
struct TOmographicSystem
{
    double vdMatrix[OMOGRAPHIC_PACKED];   // normal matrix, packed; then its factor
    double vdVector[OMOGRAPHIC_UNKNOWNS]; // right-hand side; then the solution
    double vdRowX[OMOGRAPHIC_UNKNOWNS];   // D, E and F do not occur in X: zero throughout
    double vdRowY[OMOGRAPHIC_UNKNOWNS];   // A, B and C do not occur in Y: zero throughout
};

} // namespace

static void ClearEquations(TOmographicSystem& a_System)
{
    memset(a_System.vdMatrix, 0, sizeof a_System.vdMatrix);
    memset(a_System.vdVector, 0, sizeof a_System.vdVector);
}

// Adds the two observations of a point, X first.
static void AddObservations(double a_dValueX, double a_dValueY, TOmographicSystem& a_System)
{
    UpdateNormMatrixLowTri(OMOGRAPHIC_UNKNOWNS, a_System.vdMatrix, a_System.vdVector, a_System.vdRowX, a_dValueX);
    UpdateNormMatrixLowTri(OMOGRAPHIC_UNKNOWNS, a_System.vdMatrix, a_System.vdVector, a_System.vdRowY, a_dValueY);
}

// A x + B y + C - G X x - H X y = X, D x + E y + F - G Y x - H Y y = Y.
static void AddLinearPoint(double a_dX, double a_dY, double a_dXa, double a_dYa, TOmographicSystem& a_System)
{
    double* const vdRowX = a_System.vdRowX;
    double* const vdRowY = a_System.vdRowY;
    vdRowX[COEF_A] = vdRowY[COEF_D] = a_dX;
    vdRowX[COEF_B] = vdRowY[COEF_E] = a_dY;
    vdRowX[COEF_C] = vdRowY[COEF_F] = 1.0;
    vdRowX[COEF_G] = -(a_dXa * a_dX);
    vdRowX[COEF_H] = -(a_dXa * a_dY);
    vdRowY[COEF_G] = -(a_dYa * a_dX);
    vdRowY[COEF_H] = -(a_dYa * a_dY);
    AddObservations(a_dXa, a_dYa, a_System);
}

// The partial derivatives of U/W and V/W by the eight coefficients, and the residuals, at a_vdCoefs.
static void AddRefinementPoint(const double* a_vdCoefs, double a_dX, double a_dY, double a_dXa, double a_dYa,
                               TOmographicSystem& a_System)
{
    const double dU = (a_dX * a_vdCoefs[COEF_A] + a_dY * a_vdCoefs[COEF_B]) + a_vdCoefs[COEF_C];
    const double dV = (a_dX * a_vdCoefs[COEF_D] + a_dY * a_vdCoefs[COEF_E]) + a_vdCoefs[COEF_F];
    const double dW = (a_dX * a_vdCoefs[COEF_G] + a_dY * a_vdCoefs[COEF_H]) + 1.0;
    const double dInvW = 1.0 / dW;
    const double dInvW2 = 1.0 / (dW * dW); // a division of its own: the square of dInvW rounds differently
    const double dX2 = a_dX * dInvW2;
    const double dY2 = a_dY * dInvW2;
    double* const vdRowX = a_System.vdRowX;
    double* const vdRowY = a_System.vdRowY;
    vdRowX[COEF_A] = vdRowY[COEF_D] = a_dX * dInvW;
    vdRowX[COEF_B] = vdRowY[COEF_E] = a_dY * dInvW;
    vdRowX[COEF_C] = vdRowY[COEF_F] = dInvW;
    vdRowX[COEF_G] = -(dX2 * dU);
    vdRowX[COEF_H] = -(dY2 * dU);
    vdRowY[COEF_G] = -(dX2 * dV);
    vdRowY[COEF_H] = -(dY2 * dV);
    AddObservations(a_dXa - dInvW * dU, a_dYa - dInvW * dV, a_System);
}

// Adds the correction to the coefficients and returns its greatest magnitude, for which a NaN does not count.
static double ApplyCorrection(const double* a_vdCorrection, double* a_vdCoefs)
{
    double dGreatest = 0.0;
    for (int j = 0; j < OMOGRAPHIC_UNKNOWNS; ++j)
    {
        a_vdCoefs[j] += a_vdCorrection[j];
        const double dMagnitude = fabs(a_vdCorrection[j]);
        if (dMagnitude > dGreatest)
        {
            dGreatest = dMagnitude;
        }
    }
    return dGreatest;
}

// One Gauss-Newton iteration. False when it is the last: the equations cannot be factorised, or it has converged.
static bool Refine(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa, const double* a_vdYa,
                   TOmographicSystem& a_System, double* a_vdCoefs)
{
    ClearEquations(a_System);
    for (int i = 0; i < a_iPoints; ++i)
    {
        AddRefinementPoint(a_vdCoefs, a_vdX[i], a_vdY[i], a_vdXa[i], a_vdYa[i], a_System);
    }
    if (!CholeskyLowTri(OMOGRAPHIC_UNKNOWNS, a_System.vdMatrix))
    {
        return false;
    }
    SolveCholLowTri(OMOGRAPHIC_UNKNOWNS, a_System.vdMatrix, a_System.vdVector);
    return !(ApplyCorrection(a_System.vdVector, a_vdCoefs) < OMOGRAPHIC_CONVERGENCE);
}

static void StoreParams(const double* a_vdCoefs, TOmographicParams& a_Params)
{
    a_Params.dA = a_vdCoefs[COEF_A];
    a_Params.dB = a_vdCoefs[COEF_B];
    a_Params.dC = a_vdCoefs[COEF_C];
    a_Params.dD = a_vdCoefs[COEF_D];
    a_Params.dE = a_vdCoefs[COEF_E];
    a_Params.dF = a_vdCoefs[COEF_F];
    a_Params.dG = a_vdCoefs[COEF_G];
    a_Params.dH = a_vdCoefs[COEF_H];
}

int CalcOmographicCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                        const double* a_vdYa, TOmographicParams& a_Params)
{
    if (a_iPoints < OMOGRAPHIC_MINIMUM_POINTS)
    {
        return RET_INDETERMINATE;
    }
    TOmographicSystem System;
    memset(&System, 0, sizeof System); // the rows' constant zeros are written here once
    for (int i = 0; i < a_iPoints; ++i)
    {
        AddLinearPoint(a_vdX[i], a_vdY[i], a_vdXa[i], a_vdYa[i], System);
    }
    if (!CholeskyLowTri(OMOGRAPHIC_UNKNOWNS, System.vdMatrix))
    {
        StoreParams(System.vdVector, a_Params); // the accumulated right-hand side, not coefficients
        return RET_INDETERMINATE;
    }
    SolveCholLowTri(OMOGRAPHIC_UNKNOWNS, System.vdMatrix, System.vdVector);

    double vdCoefs[OMOGRAPHIC_UNKNOWNS];
    memcpy(vdCoefs, System.vdVector, sizeof vdCoefs);
    for (int k = 0; k < OMOGRAPHIC_ITERATIONS; ++k)
    {
        if (!Refine(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, System, vdCoefs))
        {
            break;
        }
    }
    StoreParams(vdCoefs, a_Params);
    return RET_SUCCESS;
}

void AffineCoefsToOmographicCoefs(const TAffineCoefs& a_Affine, TOmographicParams& a_Params)
{
    a_Params.dA = a_Affine.dA;
    a_Params.dB = a_Affine.dB;
    a_Params.dC = a_Affine.dC;
    a_Params.dD = a_Affine.dD;
    a_Params.dE = a_Affine.dE;
    a_Params.dF = a_Affine.dF;
    a_Params.dG = 0.0;
    a_Params.dH = 0.0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Choice of the transformation
//
// Method     Omographic, affine, conformal: from the richest kind allowed downwards, the first usable result. Each
//            kind judges its own failure; beside that an omographic result must be finite, and an affine one must not
//            collapse the plane (zero determinant).
// Special    A NaN determinant is no zero: such an affine result is taken. Whatever else is requested ends at the
//            conformal kind.
// ---------------------------------------------------------------------------------------------------------------------

enum
{
    SELECTION_MINIMUM_POINTS = 2,
    AFFINE_ATTEMPT_POINTS = 3
};

// Neither infinite nor NaN.
static bool IsFinite(double a_dValue)
{
    return fabs(a_dValue) <= DBL_MAX;
}

static bool IsFinite(const TOmographicParams& a_Params)
{
    return IsFinite(a_Params.dA) && IsFinite(a_Params.dB) && IsFinite(a_Params.dC) && IsFinite(a_Params.dD) &&
           IsFinite(a_Params.dE) && IsFinite(a_Params.dF) && IsFinite(a_Params.dG) && IsFinite(a_Params.dH);
}

static bool TryAffine(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                      const double* a_vdYa, TOmographicParams& a_Params)
{
    TAffineCoefs Affine;
    if (CalcAffineCoefs(static_cast<unsigned int>(a_iPoints), a_vdX, a_vdY, a_vdXa, a_vdYa, Affine) != RET_SUCCESS)
    {
        return false;
    }
    if (IsNegligible(Affine.dE * Affine.dA - Affine.dD * Affine.dB))
    {
        return false;
    }
    AffineCoefsToOmographicCoefs(Affine, a_Params);
    return true;
}

// The orientation-reversing similarity is the ordinary one onto the target mirrored at its X axis, mirrored back.
static bool TryMirroredConformal(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                                 const double* a_vdYa, TConformalCoefs& a_Coefs)
{
    double* const vdYa = AllocateDoubles(static_cast<size_t>(a_iPoints), 1);
    if (vdYa == NULL)
    {
        return false;
    }
    for (int i = 0; i < a_iPoints; ++i)
    {
        vdYa[i] = -a_vdYa[i];
    }
    const int iResult =
        CalcConformalCoefs(static_cast<unsigned int>(a_iPoints), a_vdX, a_vdY, a_vdXa, vdYa, false, a_Coefs);
    NUV_ASSERT_AT("nuv\\nuv1math\\src\\omographic.cpp", 172, vdYa != a_vdYa); // or the caller's array would be freed
    free(vdYa);
    return iResult == RET_SUCCESS;
}

static bool TryConformal(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                         const double* a_vdYa, bool a_bSameOrientation, TOmographicParams& a_Params)
{
    TConformalCoefs Conformal;
    TAffineCoefs Affine;
    if (a_bSameOrientation)
    {
        if (CalcConformalCoefs(static_cast<unsigned int>(a_iPoints), a_vdX, a_vdY, a_vdXa, a_vdYa, false, Conformal) !=
            RET_SUCCESS)
        {
            return false;
        }
        ConformalCoefsToAffineCoefs(Conformal, Affine);
    }
    else
    {
        if (!TryMirroredConformal(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, Conformal))
        {
            return false;
        }
        ConformalCoefsToAffineCoefs(Conformal, Affine);
        Affine.dD = Conformal.dB;
        Affine.dE = -Conformal.dA;
        Affine.dF = -Conformal.dTy;
    }
    AffineCoefsToOmographicCoefs(Affine, a_Params);
    return true;
}

bool CalcCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa, const double* a_vdYa,
               bool a_bSameOrientation, enumMethodUsed a_Requested, enumMethodUsed& a_Used, TOmographicParams& a_Params)
{
    if (a_iPoints < SELECTION_MINIMUM_POINTS)
    {
        return false;
    }
    const int iRequested = static_cast<int>(a_Requested); // values outside the enumeration may come
    if (iRequested == METHOD_OMOGRAPHIC && a_iPoints >= OMOGRAPHIC_MINIMUM_POINTS &&
        CalcOmographicCoefs(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, a_Params) == RET_SUCCESS && IsFinite(a_Params))
    {
        a_Used = METHOD_OMOGRAPHIC;
        return true;
    }
    if ((iRequested == METHOD_OMOGRAPHIC || iRequested == METHOD_AFFINE) && a_iPoints >= AFFINE_ATTEMPT_POINTS &&
        TryAffine(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, a_Params))
    {
        a_Used = METHOD_AFFINE;
        return true;
    }
    if (TryConformal(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, a_bSameOrientation, a_Params))
    {
        a_Used = METHOD_CONFORMAL;
        return true;
    }
    return false;
}

} // namespace nuv
