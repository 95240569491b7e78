// omographic.cpp: the omographic (projective) fit, and the choice of the richest transformation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "omographic.h"

#include "affine.h"
#include "fast/omographicfast.h"
#include "functionsimp.h"
#include "nuv1math.h"

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
// Method     1. Linear solution of U - X W = 0 and V - Y W = 0, which are the equations times the denominator.
//            2. At most four Gauss-Newton iterations on the true residuals X - U/W and Y - V/W.
//            Each step sums up and solves 8 x 8 normal equations, with one X row and one Y row per point.
// Special    If the linear equations cannot be factorised, the result is RET_INDETERMINATE, and the record holds their
//            right-hand side. If a refinement cannot be factorised, the coefficients before it are the result, as a
//            success: a point on the vanishing line (W = 0) makes its matrix infinite or NaN. A radicand of exactly 0
//            in the last row passes, and the solution divides by zero. A NaN correction compares as small, so the
//            iteration ends as if it had converged, and the caller finds the NaN in the coefficients.
// Order      The order of the points, the X row before the Y row. The entries of a row as they are written below, with
//            reciprocals multiplied.
// Deviation  from Hartley and Zisserman: the coordinates are not normalised. So the conditioning depends on the
//            caller's units and origin, and the constant of the denominator is fixed at 1.
// Faster     fast/omographicfast.h.
// Source     R. Hartley, A. Zisserman, Multiple View Geometry, 2nd ed., sections 4.1 and 4.5; A. Bjorck, Numerical
//            Methods for Least Squares Problems, section 9.2.
// ---------------------------------------------------------------------------------------------------------------------

enum
{
    OMOGRAPHIC_MINIMUM_POINTS = 4,
    OMOGRAPHIC_ITERATIONS = 4
};

static const double OMOGRAPHIC_CONVERGENCE = 1e-8; // absolute, on every coefficient

// The coefficients are computed in an array, which is copied into the record of eight doubles.
typedef char TCheckOmographicLayout[sizeof(TOmographicParams) == OMOGRAPHIC_UNKNOWNS * sizeof(double) ? 1 : -1];

// A x + B y + C - G X x - H X y = X, D x + E y + F - G Y x - H Y y = Y.
template <typename TValue>
NUV_INLINE void FormLinearRows(const TValue& a_X, const TValue& a_Y, const TValue& a_Xa, const TValue& a_Ya,
                               TValue* a_vRow)
{
    Fill(1.0, a_vRow[ROW_R]);
    a_vRow[ROW_P] = a_X;
    a_vRow[ROW_Q] = a_Y;
    a_vRow[ROW_XG] = -(a_Xa * a_X);
    a_vRow[ROW_XH] = -(a_Xa * a_Y);
    a_vRow[ROW_X0] = a_Xa;
    a_vRow[ROW_YG] = -(a_Ya * a_X);
    a_vRow[ROW_YH] = -(a_Ya * a_Y);
    a_vRow[ROW_Y0] = a_Ya;
}

// The partial derivatives of U/W and V/W with respect to the eight coefficients, and the residuals, at a_vdCoefs.
template <typename TValue>
NUV_INLINE void FormRefinementRows(const double* a_vdCoefs, const TValue& a_X, const TValue& a_Y, const TValue& a_Xa,
                                   const TValue& a_Ya, TValue* a_vRow)
{
    const TValue U = (a_X * a_vdCoefs[COEF_A] + a_Y * a_vdCoefs[COEF_B]) + a_vdCoefs[COEF_C];
    const TValue V = (a_X * a_vdCoefs[COEF_D] + a_Y * a_vdCoefs[COEF_E]) + a_vdCoefs[COEF_F];
    const TValue W = (a_X * a_vdCoefs[COEF_G] + a_Y * a_vdCoefs[COEF_H]) + 1.0;
    const TValue W2 = W * W;
    TValue InvW;
    TValue InvW2; // not the square of InvW, which rounds differently
    Invert(W, InvW);
    Invert(W2, InvW2);
    const TValue X2 = a_X * InvW2;
    const TValue Y2 = a_Y * InvW2;
    a_vRow[ROW_P] = a_X * InvW;
    a_vRow[ROW_Q] = a_Y * InvW;
    a_vRow[ROW_R] = InvW;
    a_vRow[ROW_XG] = -(X2 * U);
    a_vRow[ROW_XH] = -(Y2 * U);
    a_vRow[ROW_X0] = a_Xa - InvW * U;
    a_vRow[ROW_YG] = -(X2 * V);
    a_vRow[ROW_YH] = -(Y2 * V);
    a_vRow[ROW_Y0] = a_Ya - InvW * V;
}

template <typename TValue>
NUV_INLINE void FormRowsBy(const TControlPoints& a_Points, unsigned int i, const double* a_vdCoefs, TValue* a_vRow)
{
    TValue X;
    TValue Y;
    TValue Xa;
    TValue Ya;
    Load(a_Points.vdX + i, X);
    Load(a_Points.vdY + i, Y);
    Load(a_Points.vdXa + i, Xa);
    Load(a_Points.vdYa + i, Ya);
    if (a_vdCoefs == NULL)
    {
        FormLinearRows(X, Y, Xa, Ya, a_vRow);
    }
    else
    {
        FormRefinementRows(a_vdCoefs, X, Y, Xa, Ya, a_vRow);
    }
}

void FormRows(const TControlPoints& a_Points, unsigned int i, const double* a_vdCoefs, double* a_vdRow)
{
    FormRowsBy<double>(a_Points, i, a_vdCoefs, a_vdRow);
}

// Adds the two rows of point i to the normal equations.
NUV_NOT_INLINE static void AddPointToEquations(const TControlPoints& a_Points, unsigned int i, const double* a_vdCoefs,
                                               TOmographicSystem& a_System)
{
    double vdRow[ROW_VALUES];
    FormRows(a_Points, i, a_vdCoefs, vdRow);
    const double dP = vdRow[ROW_P];
    const double dQ = vdRow[ROW_Q];
    const double dR = vdRow[ROW_R];
    const double vdX[OMOGRAPHIC_UNKNOWNS] = {dP, dQ, dR, 0.0, 0.0, 0.0, vdRow[ROW_XG], vdRow[ROW_XH]};
    const double vdY[OMOGRAPHIC_UNKNOWNS] = {0.0, 0.0, 0.0, dP, dQ, dR, vdRow[ROW_YG], vdRow[ROW_YH]};
    UpdateNormMatrixLowTri(OMOGRAPHIC_UNKNOWNS, a_System.vdMatrix, a_System.vdVector, vdX, vdRow[ROW_X0]);
    UpdateNormMatrixLowTri(OMOGRAPHIC_UNKNOWNS, a_System.vdMatrix, a_System.vdVector, vdY, vdRow[ROW_Y0]);
}

// Sums up the normal equations: linear ones if a_vdCoefs is null, and otherwise those of a refinement at a_vdCoefs.
static void FormEquations(const TControlPoints& a_Points, const double* a_vdCoefs, TOmographicSystem& a_System)
{
    if (FASTER_FORMS && !HAS_VECTORS && FormEquationsFromSums(a_Points, a_vdCoefs, a_System))
    {
        return;
    }
    memset(&a_System, 0, sizeof a_System);
    for (unsigned int i = 0; i < a_Points.iCount; ++i)
    {
        AddPointToEquations(a_Points, i, a_vdCoefs, a_System);
    }
}

// Adds the correction to the coefficients. Returns its element of greatest magnitude; a NaN does not count.
static double ApplyCorrection(const double* a_vdCorrection, double* a_vdCoefs)
{
    double dGreatest = 0.0;
    for (int j = 0; j < OMOGRAPHIC_UNKNOWNS; ++j)
    {
        a_vdCoefs[j] += a_vdCorrection[j];
        if (IsSmaller(dGreatest, a_vdCorrection[j]))
        {
            dGreatest = a_vdCorrection[j];
        }
    }
    return dGreatest;
}

// Forms and solves the equations. The solution replaces their right-hand side. If they cannot be factorised, the result
// is false, and the right-hand side stays.
static bool SolveEquations(const TControlPoints& a_Points, const double* a_vdCoefs, TOmographicSystem& a_System)
{
    if (HAS_VECTORS && SolveEquationsByVectors(a_Points, a_vdCoefs, a_System.vdVector))
    {
        return true;
    }
    FormEquations(a_Points, a_vdCoefs, a_System);
    if (!CholeskyLowTri(OMOGRAPHIC_UNKNOWNS, a_System.vdMatrix))
    {
        return false;
    }
    SolveCholLowTri(OMOGRAPHIC_UNKNOWNS, a_System.vdMatrix, a_System.vdVector);
    return true;
}

// One Gauss-Newton iteration. False if it is the last: its equations cannot be factorised, or it has converged.
static bool Refine(const TControlPoints& a_Points, double* a_vdCoefs)
{
    TOmographicSystem System;
    return SolveEquations(a_Points, a_vdCoefs, System) &&
           !IsSmaller(ApplyCorrection(System.vdVector, a_vdCoefs), OMOGRAPHIC_CONVERGENCE);
}

static int FitOmographic(const TControlPoints& a_Points, TOmographicParams& a_Params)
{
    TOmographicSystem System;
    const bool bSolvable = SolveEquations(a_Points, NULL, System);
    if (bSolvable)
    {
        for (int k = 0; k < OMOGRAPHIC_ITERATIONS && Refine(a_Points, System.vdVector); ++k)
        {}
    }
    memcpy(&a_Params, System.vdVector, sizeof a_Params); // the right-hand side, if the equations cannot be solved
    return bSolvable ? RET_SUCCESS : RET_INDETERMINATE;
}

int CalcOmographicCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                        const double* a_vdYa, TOmographicParams& a_Params)
{
    if (a_iPoints < OMOGRAPHIC_MINIMUM_POINTS)
    {
        return RET_INDETERMINATE;
    }
    const TControlPoints Points = {static_cast<unsigned int>(a_iPoints), a_vdX, a_vdY, a_vdXa, a_vdYa};
    return FitOmographic(Points, a_Params);
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
// Method     The kinds are tried from the richest one allowed to the poorest: omographic, affine, conformal. The first
//            usable result is taken. Each fit judges its own failure. Besides, an omographic result must be finite, and
//            an affine one must not collapse the plane (its determinant must not be zero).
// Special    A NaN determinant is not zero: such an affine result is taken. A requested value outside the enumeration
//            gets the conformal kind.
// ---------------------------------------------------------------------------------------------------------------------

enum
{
    SELECTION_MINIMUM_POINTS = 2, // equivalent: the fits refuse fewer points themselves
    AFFINE_ATTEMPT_POINTS = 3     // equivalent: the fits refuse fewer points themselves
};

static bool IsFinite(const TOmographicParams& a_Params)
{
    // unreachable: no input is known for which A and B are finite and C is not
    return IsFinite(a_Params.dA) && IsFinite(a_Params.dB) && IsFinite(a_Params.dC) && IsFinite(a_Params.dD) &&
           // unreachable: when F, G or H is not finite, A is not either
           IsFinite(a_Params.dE) && IsFinite(a_Params.dF) && IsFinite(a_Params.dG) && IsFinite(a_Params.dH);
}

static bool TryAffine(const TControlPoints& a_Points, TOmographicParams& a_Params)
{
    TAffineCoefs Affine;
    // unreachable: the fit of three or more points never fails
    if (FitAffine(a_Points, Affine) != RET_SUCCESS || IsNegligible(Affine.dE * Affine.dA - Affine.dD * Affine.dB))
    {
        return false;
    }
    AffineCoefsToOmographicCoefs(Affine, a_Params);
    return true;
}

// The similarity that reverses the orientation: the one that keeps it is fitted onto the target mirrored at its X axis.
// The caller mirrors it back. a_Points has the mirrored coordinates during the fit, and is then as it was.
static bool FitMirroredConformal(TControlPoints& a_Points, TConformalCoefs& a_Coefs)
{
    const double* const a_vdYa = a_Points.vdYa; // NOLINT: the report of the assertion shows this name
    double* const vdYa = AllocateDoubles(a_Points.iCount, 1);
    if (vdYa == NULL)
    {
        return false;
    }
    for (unsigned int i = 0; i < a_Points.iCount; ++i)
    {
        vdYa[i] = -a_vdYa[i];
    }
    a_Points.vdYa = vdYa;
    const int iResult = FitConformal(a_Points, false, a_Coefs);
    a_Points.vdYa = a_vdYa;
    NUV_ASSERT_AT("nuv\\nuv1math\\src\\omographic.cpp", 172, vdYa != a_vdYa); // the caller's array must not be freed
    free(vdYa);
    return iResult == RET_SUCCESS;
}

static bool TryConformal(TControlPoints& a_Points, bool a_bSameOrientation, TOmographicParams& a_Params)
{
    TConformalCoefs Conformal;
    TAffineCoefs Affine;
    if (a_bSameOrientation)
    {
        if (FitConformal(a_Points, false, Conformal) != RET_SUCCESS)
        {
            return false;
        }
        ConformalCoefsToAffineCoefs(Conformal, Affine);
    }
    else
    {
        if (!FitMirroredConformal(a_Points, Conformal))
        {
            return false;
        }
        ConformalCoefsToAffineCoefs(Conformal, Affine);
        Affine.dD = Conformal.dB; // Y is mirrored back
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
    TControlPoints Points = {static_cast<unsigned int>(a_iPoints), a_vdX, a_vdY, a_vdXa, a_vdYa};
    const int iRequested = static_cast<int>(a_Requested); // a caller may pass a value outside the enumeration
    if (iRequested == METHOD_OMOGRAPHIC && a_iPoints >= OMOGRAPHIC_MINIMUM_POINTS &&
        FitOmographic(Points, a_Params) == RET_SUCCESS && IsFinite(a_Params))
    {
        a_Used = METHOD_OMOGRAPHIC;
        return true;
    }
    if ((iRequested == METHOD_OMOGRAPHIC || iRequested == METHOD_AFFINE) && a_iPoints >= AFFINE_ATTEMPT_POINTS &&
        TryAffine(Points, a_Params))
    {
        a_Used = METHOD_AFFINE;
        return true;
    }
    if (TryConformal(Points, a_bSameOrientation, a_Params))
    {
        a_Used = METHOD_CONFORMAL;
        return true;
    }
    return false;
}

} // namespace nuv
