// internal.h: what the sources of the judgement module share.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_JUDGEMENT_INTERNAL_H
#define NUV_JUDGEMENT_INTERNAL_H

#include "judgement.h"

namespace judgement {

enum
{
    CONFORMAL_UNKNOWNS = 4,
    AFFINE_UNKNOWNS = 6
};

// The coefficients as an array: dA is element 0, dH is element 7.
void CoefsToArray(const nuv::TOmographicParams& a_Coefs, double* a_vdCoefs);
void ArrayToCoefs(const double* a_vdCoefs, nuv::TOmographicParams& a_Coefs);

bool IsFinite(double a_dValue);
bool AreFinite(const nuv::TOmographicParams& a_Coefs);

// sqrt(x^2 + y^2) without overflow.
double Length(double a_dX, double a_dY);

// True only if the vector is shorter than a_dLength. A search of the greatest length asks this first, because Length takes
// a division and a root. The answer is false for nearly equal lengths, for NaN, and where squares are inaccurate.
inline bool IsShorter(double a_dX, double a_dY, double a_dLength)
{
    const double dSquare = a_dLength * a_dLength;
    return a_dX * a_dX + a_dY * a_dY < 0.99 * dSquare && dSquare > 1e-280 && dSquare < 1e300;
}

double GreatestMagnitude(int a_iCount, const double* a_vdValues);

// Points in arrays of their own, with their indices in the points that they come from.
struct TPointSet
{
    int iCount;
    int iCapacity;
    double* vdBlock; // the four arrays, each of iCapacity values; null if there is no memory
    int* viIndex;
};

// False if there is no memory. Release the set in both cases.
bool AllocateSet(int a_iCapacity, TPointSet& a_Set);
void ReleaseSet(TPointSet& a_Set);

// The arrays of the set.
TControlPoints PointsOf(const TPointSet& a_Set);

// Fills the set with those points whose flag is 0; a null pointer stands for flags that are all 0.
void FillSet(const TControlPoints& a_Points, const int* a_viLeftOut, TPointSet& a_Set);

// Subtracts the origins from the points of the set.
void ReduceSet(const TOrigins& a_Origins, TPointSet& a_Set);

// Arrays of leave-one-out residuals in X and Y, and of drops.
struct TLeaveArrays
{
    double* vdX;
    double* vdY;
    double* vdDrops;
};

// The arrays in a block of LEAVE_ARRAYS arrays of a_iCount values.
enum
{
    LEAVE_ARRAYS = 3
};
TLeaveArrays LeaveArrays(double* a_vdBlock, int a_iCount);

// JudgeKinds that keeps the leave-one-out residuals: a_vLeave has arrays for each kind.
enumReason JudgeKindsKeeping(const TControlPoints& a_Points, const TSupport& a_Support, bool a_bMirrored,
                             const TLeaveArrays* a_vLeave, TKindRow* a_vRows);

// True if the arrays of the kind are filled.
bool IsLeaveKept(const TKindRow& a_Row);

// FitKind for points that may not support the kind: FindSupport first.
enumReason FitSupported(const TControlPoints& a_Points, nuv::enumMethodUsed a_Kind, bool a_bMirrored, TKindFit& a_Fit);

// The derivatives of X and of Y by the coefficients at a point, 8 values each.
void ImageDerivatives(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY, double* a_vdByX,
                      double* a_vdByY);

// Normal equations of a Gauss-Newton step at the coefficients, all eight of them unknown.
struct TOmographicEquations
{
    double vdMatrix[COVARIANCES];
    double vdVector[COEFS];
};

void FormEquations(const TControlPoints& a_Points, const nuv::TOmographicParams& a_Coefs,
                   TOmographicEquations& a_Equations);

// Converges the omographic fit.
void Refine(const TControlPoints& a_Points, TKindFit& a_Fit);

// The greatest number of points that are tested together.
enum
{
    GREATEST_GROUP = 3
};

// The worst group of suspected blunders among points.
struct TGroup
{
    int iCount;          // points of the group; 0 if none is suspect
    int* viPoints;       // their indices, the worst one first; an array of the caller with room for all points
    double dProbability; // adjusted for the number of groups and of sizes; at most the level
};

// Searches the worst group. a_iLeast points must remain. Among more than 1000 points the group has all single points that
// are suspect and at least half as bad as the worst one, in the order of their indices. a_vdDrops: the drops by LeaveOneOut
// for these points and this fit, or null if they are not known.
enumReason FindGroup(const TControlPoints& a_Points, const TKindFit& a_Fit, const double* a_vdDrops, double a_dLevel,
                     double a_dRounding, int a_iLeast, TGroup& a_Group);

// The least number of points that the test of blunders leaves: half of them, and one more than the kind needs.
int LeastRemaining(int a_iCount, nuv::enumMethodUsed a_Kind);

// The degrees of freedom of a fit.
int Freedom(int a_iCount, nuv::enumMethodUsed a_Kind);

// The variance of a coordinate, estimated with so many degrees of freedom; at least that of rounding.
double Variance(double a_dSumOfSquares, int a_iFreedom, double a_dRounding);

} // namespace judgement

#endif // NUV_JUDGEMENT_INTERNAL_H
