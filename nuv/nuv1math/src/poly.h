// poly.h: the eigenvalue routines of the polynomial roots. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_POLY_H
#define NUV_POLY_H

namespace nuv {

// All three routines work in place on a real n x n matrix that stands column by column: element (i, j), counted from 1,
// is at (j-1)*stride + (i-1). Each allocates a table of n column addresses and frees it before it returns.

// Replaces the matrix by a diagonally similar one whose rows and columns have comparable norms. All factors are powers
// of 2, so the eigenvalues stay exact unless an element overflows or underflows. Does nothing for n < 1, or if there is
// no memory for the table.
void BalanceMatrix(int a_iN, double* a_vdMatrix, int a_iStride);

// Replaces the matrix by a similar upper Hessenberg one. The multipliers stay below the subdiagonal. Does nothing for
// n < 3, or if there is no memory for the table.
void ReduceToHessenberg(int a_iN, double* a_vdMatrix, int a_iStride);

// Computes all eigenvalues of the upper Hessenberg matrix and destroys the matrix. Writes n real parts and n imaginary
// parts. An eigenvalue stands at the position of the row that splits off, and rows split off from the bottom upwards.
// Returns 1. Returns 0 if one eigenvalue needs more than 30 iterations, or if there is no memory for the table: the
// positions that were not found by then are not written. For n < 1 nothing is touched and the result is 1.
int HessenbergEigenvalues(int a_iN, double* a_vdMatrix, int a_iStride, double* a_vdReal, double* a_vdImaginary);

// A vector of which a reflection leaves only the first element. Its length does not matter, so it is scaled.
struct TReflectedVector
{
    double dP;
    double dQ;
    double dR;
};

// The reflection I - (x, y, z)(1, q, r)^T of three neighbouring rows or columns. The last step of a sweep has only two
// of them and does not use z and r.
struct TReflection
{
    double dX;
    double dY;
    double dZ;
    double dQ;
    double dR;
};

} // namespace nuv

#endif // NUV_POLY_H
