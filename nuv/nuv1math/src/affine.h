// affine.h: the internal routines of the affine and conformal families. Not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_AFFINE_H
#define NUV_AFFINE_H

#include "controlpoints.h"
#include "nuv1math.h"

namespace nuv {

// Mean of a_iCount values; 0 for none. The sum runs strictly from the first value to the last. It starts from the first
// value if the count is odd, and from +0.0 if it is even. The sign of a mean of zeros shows the difference: three times
// -0.0 gives -0.0, twice gives +0.0.
void CalcMean(unsigned int a_iCount, const double* a_vdValues, double& a_dMean);

// CalcAffineCoefs and CalcConformalCoefs for control points in one record.
int FitAffine(const TControlPoints& a_Points, TAffineCoefs& a_Coefs);
int FitConformal(const TControlPoints& a_Points, bool a_bRigidInverse, TConformalCoefs& a_Coefs);

// Dense systems A x = b with several right-hand sides. Matrices stand column by column: element (i, j), counted from 0,
// is at j*ld + i. The names are those of the literature: A is n x n, B and X are n x nrhs, and the leading dimensions
// are lda, ldb and ldx.

// Gaussian elimination with row pivoting. A becomes its unit upper triangular factor, B is transformed with it, and X
// receives the solutions. A pivot of exactly 0 is replaced by 1e-14, so a singular system gives very large values and
// not an error. Returns 1. Returns 0 when a back substitution fails, which cannot happen because its diagonal is 1.
// Callers pass nrhs >= 1. For n < 1 nothing is touched and the result is 1.
int SolveGauss(int a_iN, int a_iNrhs, double* a_vdA, int a_iLda, double* a_vdB, int a_iLdb, double* a_vdX, int a_iLdx);

// Position, counted from 0, of the first of the values x[0], x[inc], ... that has the greatest magnitude; 0 for n < 1.
// Only a strictly greater magnitude replaces an earlier one, so a NaN in the first place stays.
int MaxAbsIndex(int a_iN, const double* a_vdX, int a_iIncX);

// Back substitution U x = b for an upper triangular U. A zero diagonal element gives x = 0 if the rest of its equation
// is negligible. Otherwise the result is 0, and +infinity is written n times from the last element of x *forward*. So x
// needs room for 2n-1 elements with the stride; those before the last keep what the substitution left. Returns 1 on
// success, and for n < 1 with nothing touched.
int SolveUpperTri(int a_iN, const double* a_vdU, int a_iLdu, const double* a_vdB, int a_iIncB, double* a_vdX,
                  int a_iIncX);

} // namespace nuv

#endif // NUV_AFFINE_H
