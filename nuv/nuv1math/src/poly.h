// poly.h: internal eigenvalue routines of the polynomial roots, declared for the tests. Not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_POLY_H
#define NUV_POLY_H

namespace nuv {

// All three work in place on a real n x n matrix that stands column by column: element (i, j), counted from 1, at
// (j-1)*stride + (i-1). Each allocates a table of n column addresses and frees it before it returns.

// Replaces the matrix by a diagonally similar one whose rows and columns have comparable norms. Eigenvalues are kept
// exactly, unless an element overflows or underflows: all factors are powers of 2. Nothing is done for n < 1 or without
// memory for its table.
void BalanceMatrix(int a_iN, double* a_vdMatrix, int a_iStride);

// Replaces the matrix by a similar upper Hessenberg one; the multipliers stay below the subdiagonal. Nothing is done
// for n < 3 or without memory for its table.
void ReduceToHessenberg(int a_iN, double* a_vdMatrix, int a_iStride);

// All eigenvalues of the upper Hessenberg matrix, which is destroyed: real parts and imaginary parts, n values each,
// at the positions of the rows that split off, from the bottom upwards. Returns 1; or 0 when one eigenvalue needs more
// than 30 iterations, or without memory for its table: positions not found by then are not written. For n < 1 nothing
// is touched and the result is 1.
int HessenbergEigenvalues(int a_iN, double* a_vdMatrix, int a_iStride, double* a_vdReal, double* a_vdImaginary);

} // namespace nuv

#endif // NUV_POLY_H
