// omographic.cpp: the omographic (projective) fit, and the choice of the richest transformation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "functionsimp.h"
#include "nuv1math.h"
#include "vectors.h"

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

// The control points, as the caller passes them.
struct TControlPoints
{
    int iPoints;
    const double* vdX;
    const double* vdY;
    const double* vdXa;
    const double* vdYa;
};

// What the two rows of a point are made of. The X row is (P, Q, R, 0, 0, 0, G, H) with the observed value V, the Y row
// (0, 0, 0, P, Q, R, G, H): D, E and F do not occur in X, nor A, B and C in Y.
enum
{
    ROW_P,
    ROW_Q,
    ROW_R,
    ROW_X, // G, H and V of the X row
    ROW_Y = ROW_X + 3,
    ROW_LENGTH = ROW_Y + 3
};

// The sums of products that the normal equations consist of: of P, Q and R with themselves, which both rows have in
// common, and with all after them; then of G and H, X and Y row alike.
enum
{
    SHARED_ROWS = 3,
    SHARED_SUMS = ROW_LENGTH + (ROW_LENGTH - 1) + (ROW_LENGTH - 2),
    OMOGRAPHIC_SUMS = SHARED_SUMS + 3 + 2
};

struct TOmographicSystem
{
    double vdMatrix[OMOGRAPHIC_PACKED];   // normal matrix, packed; then its factor
    double vdVector[OMOGRAPHIC_UNKNOWNS]; // right-hand side; then the solution
};

} // namespace

static int Packed(int i, int j)
{
    return i * (i + 1) / 2 + j;
}

// A x + B y + C - G X x - H X y = X, D x + E y + F - G Y x - H Y y = Y.
static void FormLinearRows(double a_dX, double a_dY, double a_dXa, double a_dYa, double* a_vdRow)
{
    a_vdRow[ROW_P] = a_dX;
    a_vdRow[ROW_Q] = a_dY;
    a_vdRow[ROW_R] = 1.0;
    a_vdRow[ROW_X] = -(a_dXa * a_dX);
    a_vdRow[ROW_X + 1] = -(a_dXa * a_dY);
    a_vdRow[ROW_X + 2] = a_dXa;
    a_vdRow[ROW_Y] = -(a_dYa * a_dX);
    a_vdRow[ROW_Y + 1] = -(a_dYa * a_dY);
    a_vdRow[ROW_Y + 2] = a_dYa;
}

// The partial derivatives of U/W and V/W by the eight coefficients, and the residuals, at a_vdCoefs.
static void FormRefinementRows(const double* a_vdCoefs, double a_dX, double a_dY, double a_dXa, double a_dYa,
                               double* a_vdRow)
{
    const double dU = (a_dX * a_vdCoefs[COEF_A] + a_dY * a_vdCoefs[COEF_B]) + a_vdCoefs[COEF_C];
    const double dV = (a_dX * a_vdCoefs[COEF_D] + a_dY * a_vdCoefs[COEF_E]) + a_vdCoefs[COEF_F];
    const double dW = (a_dX * a_vdCoefs[COEF_G] + a_dY * a_vdCoefs[COEF_H]) + 1.0;
    const double dInvW = 1.0 / dW;
    const double dInvW2 = 1.0 / (dW * dW); // a division of its own: the square of dInvW rounds differently
    const double dX2 = a_dX * dInvW2;
    const double dY2 = a_dY * dInvW2;
    a_vdRow[ROW_P] = a_dX * dInvW;
    a_vdRow[ROW_Q] = a_dY * dInvW;
    a_vdRow[ROW_R] = dInvW;
    a_vdRow[ROW_X] = -(dX2 * dU);
    a_vdRow[ROW_X + 1] = -(dY2 * dU);
    a_vdRow[ROW_X + 2] = a_dXa - dInvW * dU;
    a_vdRow[ROW_Y] = -(dX2 * dV);
    a_vdRow[ROW_Y + 1] = -(dY2 * dV);
    a_vdRow[ROW_Y + 2] = a_dYa - dInvW * dV;
}

// The rows of point i: linear ones where there are no coefficients to refine yet.
static void FormRows(const TControlPoints& a_Points, int i, const double* a_vdCoefs, double* a_vdRow)
{
    if (a_vdCoefs == NULL)
    {
        FormLinearRows(a_Points.vdX[i], a_Points.vdY[i], a_Points.vdXa[i], a_Points.vdYa[i], a_vdRow);
    }
    else
    {
        FormRefinementRows(a_vdCoefs, a_Points.vdX[i], a_Points.vdY[i], a_Points.vdXa[i], a_Points.vdYa[i], a_vdRow);
    }
}

// Adds the products of the first FACTORS values with themselves and with all that follow them, each onto its sum, a
// vector of them at a time.
template <int FACTORS, int VALUES> static NUV_INLINE void AddProducts(const double* a_vdValues, double* a_vdSums)
{
    const int LANES = sizeof(TNative) / sizeof(double);
    for (int i = 0; i < FACTORS; ++i)
    {
        const double dFactor = a_vdValues[i];
        int j = i;
        for (; j <= VALUES - LANES; j += LANES)
        {
            TNative Values;
            TNative Sums;
            Load(a_vdValues + j, Values);
            Load(a_vdSums, Sums);
            Sums = dFactor * Values + Sums;
            Store(Sums, a_vdSums);
            a_vdSums += LANES;
        }
        for (; j < VALUES; ++j)
        {
            *a_vdSums = dFactor * a_vdValues[j] + *a_vdSums;
            ++a_vdSums;
        }
    }
}

// The normal equations from their sums; what no sum belongs to is zero.
static void SpreadSums(const double* a_vdSums, TOmographicSystem& a_System)
{
    memset(&a_System, 0, sizeof a_System);
    double* const vdMatrix = a_System.vdMatrix;
    for (int i = 0; i < SHARED_ROWS; ++i)
    {
        for (int j = i; j < SHARED_ROWS; ++j)
        {
            vdMatrix[Packed(j, i)] = vdMatrix[Packed(j + COEF_D, i + COEF_D)] = *a_vdSums++;
        }
        for (int iColumn = i; iColumn <= COEF_D + i; iColumn += COEF_D)
        {
            vdMatrix[Packed(COEF_G, iColumn)] = *a_vdSums++;
            vdMatrix[Packed(COEF_H, iColumn)] = *a_vdSums++;
            a_System.vdVector[iColumn] = *a_vdSums++;
        }
    }
    vdMatrix[Packed(COEF_G, COEF_G)] = *a_vdSums++;
    vdMatrix[Packed(COEF_H, COEF_G)] = *a_vdSums++;
    a_System.vdVector[COEF_G] = *a_vdSums++;
    vdMatrix[Packed(COEF_H, COEF_H)] = *a_vdSums++;
    a_System.vdVector[COEF_H] = *a_vdSums++;
}

// Whether every row that went into the equations was finite: each coefficient was multiplied by the observed value onto
// the right-hand side, and what an infinite or NaN factor makes there stays infinite or NaN, whatever is added.
static bool IsFinite(const TOmographicSystem& a_System)
{
    for (int i = 0; i < OMOGRAPHIC_UNKNOWNS; ++i)
    {
        if (!IsFinite(a_System.vdVector[i]))
        {
            return false;
        }
    }
    return true;
}

// Forms the equations with all products, those with the rows' constant zeros included.
static void FormFullEquations(const TControlPoints& a_Points, const double* a_vdCoefs, TOmographicSystem& a_System)
{
    memset(&a_System, 0, sizeof a_System);
    for (int i = 0; i < a_Points.iPoints; ++i)
    {
        double vdRow[ROW_LENGTH];
        FormRows(a_Points, i, a_vdCoefs, vdRow);
        for (int iColumn = 0; iColumn <= COEF_D; iColumn += COEF_D) // X before Y
        {
            const double* const vdOwn = vdRow + ROW_X + iColumn;
            double vdFull[OMOGRAPHIC_UNKNOWNS] = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, vdOwn[0], vdOwn[1]};
            memcpy(vdFull + iColumn, vdRow, SHARED_ROWS * sizeof(double));
            UpdateNormMatrixLowTri(OMOGRAPHIC_UNKNOWNS, a_System.vdMatrix, a_System.vdVector, vdFull, vdOwn[2]);
        }
    }
}

// Forms the equations. As long as all rows are finite, the products with their constant zeros are zeros, which change
// no sum that began as +0.0; and the sums over A, B and C are those over D, E and F. Each is then formed once.
static void FormEquations(const TControlPoints& a_Points, const double* a_vdCoefs, TOmographicSystem& a_System)
{
    double vdSums[OMOGRAPHIC_SUMS];
    memset(vdSums, 0, sizeof vdSums);
    for (int i = 0; i < a_Points.iPoints; ++i)
    {
        double vdRow[ROW_LENGTH];
        FormRows(a_Points, i, a_vdCoefs, vdRow);
        AddProducts<SHARED_ROWS, ROW_LENGTH>(vdRow, vdSums);
        for (int iOwn = ROW_X; iOwn <= ROW_Y; iOwn += ROW_Y - ROW_X) // X before Y
        {
            AddProducts<2, 3>(vdRow + iOwn, vdSums + SHARED_SUMS);
        }
    }
    SpreadSums(vdSums, a_System);
    if (!IsFinite(a_System))
    {
        FormFullEquations(a_Points, a_vdCoefs, a_System);
    }
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
static bool Refine(const TControlPoints& a_Points, double* a_vdCoefs)
{
    TOmographicSystem System;
    FormEquations(a_Points, a_vdCoefs, System);
    if (!CholeskyLowTri(OMOGRAPHIC_UNKNOWNS, System.vdMatrix))
    {
        return false;
    }
    SolveCholLowTri(OMOGRAPHIC_UNKNOWNS, System.vdMatrix, System.vdVector);
    return !(ApplyCorrection(System.vdVector, a_vdCoefs) < OMOGRAPHIC_CONVERGENCE);
}

int CalcOmographicCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                        const double* a_vdYa, TOmographicParams& a_Params)
{
    if (a_iPoints < OMOGRAPHIC_MINIMUM_POINTS)
    {
        return RET_INDETERMINATE;
    }
    const TControlPoints Points = {a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa};
    TOmographicSystem System;
    FormEquations(Points, NULL, System);
    const bool bSolvable = CholeskyLowTri(OMOGRAPHIC_UNKNOWNS, System.vdMatrix);
    if (bSolvable)
    {
        SolveCholLowTri(OMOGRAPHIC_UNKNOWNS, System.vdMatrix, System.vdVector);
        for (int k = 0; k < OMOGRAPHIC_ITERATIONS && Refine(Points, System.vdVector); ++k)
        {}
    }
    memcpy(&a_Params, System.vdVector, sizeof a_Params); // unless solvable, the right-hand side, not coefficients
    return bSolvable ? RET_SUCCESS : RET_INDETERMINATE;
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

static bool IsFinite(const TOmographicParams& a_Params)
{
    // unreachable: no input is known for which A and B are finite and C is not
    return IsFinite(a_Params.dA) && IsFinite(a_Params.dB) && IsFinite(a_Params.dC) && IsFinite(a_Params.dD) &&
           // unreachable: when F, G or H is not finite, A is not either
           IsFinite(a_Params.dE) && IsFinite(a_Params.dF) && IsFinite(a_Params.dG) && IsFinite(a_Params.dH);
}

static bool TryAffine(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                      const double* a_vdYa, TOmographicParams& a_Params)
{
    TAffineCoefs Affine;
    // unreachable: the affine fit of three or more points always has a result
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
