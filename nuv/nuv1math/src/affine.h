// affine.h: internal routines of the affine and conformal families, declared for the tests. Not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_AFFINE_H
#define NUV_AFFINE_H

namespace nuv {

// Mean of a_iCount values; 0 for none. The sum runs strictly from the first value to the last. For an odd count it
// starts as the first value, for an even one as +0.0, which the sign of an all-zero mean shows: three times -0.0 gives
// -0.0, twice gives +0.0.
void CalcMean(unsigned int a_iCount, const double* a_vdValues, double& a_dMean);

// Dense systems A x = b with several right-hand sides. Matrices stand column by column: element (i, j), counted from
// 0, at j*ld + i. The names follow the literature: A (n x n), B and X (n x nrhs), leading dimensions lda, ldb, ldx.

// Gaussian elimination with row pivoting. A becomes its unit upper triangular factor, B is transformed along, X
// receives the solutions. A pivot of exactly 0 becomes 1e-14: a singular system gives very large values, not an error.
// Returns 1, or 0 when a back substitution failed (it cannot: its diagonal is 1). Callers pass nrhs >= 1; for n < 1
// nothing is touched and the result is 1.
int SolveGauss(int a_iN, int a_iNrhs, double* a_vdA, int a_iLda, double* a_vdB, int a_iLdb, double* a_vdX, int a_iLdx);

// Position, counted from 0, of the first of the values x[0], x[inc], ... of greatest magnitude; 0 for a_iN < 1. Only
// a strictly greater magnitude replaces an earlier one, so a NaN in front stays.
int MaxAbsIndex(int a_iN, const double* a_vdX, int a_iIncX);

// Back substitution U x = b for an upper triangular U. A zero diagonal element gives x = 0 when its equation is
// consistent within the degeneracy tolerance. Otherwise the result is 0, and +infinity is written n times from the last
// element of x *forward*, so that x needs room for 2n-1 strided elements; those before the last are as the
// substitution left them. Returns 1 on success, and for n < 1 with nothing touched.
int SolveUpperTri(int a_iN, const double* a_vdU, int a_iLdu, const double* a_vdB, int a_iIncB, double* a_vdX,
                  int a_iIncX);

} // namespace nuv

#endif // NUV_AFFINE_H
