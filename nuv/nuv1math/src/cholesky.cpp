// cholesky.cpp: normal equations, and Cholesky factorisation and solution, dense and packed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fast/choleskyfast.h"
#include "functionsimp.h"
#include "nuv1math.h"
#include "trianglerows.h"

#include <math.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Normal equations and Cholesky factorisation
//
// Model      N = sum(a a^T) and u = sum(a l) over the observations a.x = l. N = L L^T. L y = u, then L^T x = y.
// Method     Column by column: L(i,i) = sqrt(N(i,i) - sum L(i,k)^2) and L(j,i) = (N(j,i) - sum L(j,k) L(i,k)) / L(i,i),
//            with one reciprocal per column. There is no pivoting and no tolerance.
// Special    A radicand that is negative or NaN is a failure. A radicand of exactly 0 passes. The column below becomes
//            infinite or NaN, and the next radicand fails. In the last row there is none: the solution divides by zero.
// Order      A product is formed first and then added or subtracted, one product at a time. A diagonal element
//            subtracts the squares of its row from the one beside the diagonal back to the first. Every other element
//            subtracts its products from the first column on. The forward substitution runs in ascending order. The
//            backward one runs in descending order in the packed form and in ascending order in the dense form; both
//            divide by the diagonal.
// Storage    The lower triangle row by row. Packed: row i is at i(i+1)/2. Dense: row i is at i n, and the strict upper
//            triangle is neither read nor written.
// Faster     fast/choleskyfast.cpp for vectors, fast/choleskyfast.h for software floating point.
// Source     G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed., sections 4.2 and 5.3.
// ---------------------------------------------------------------------------------------------------------------------

void InitCholLowTri(int a_iUnknowns, double** a_pMatrix, double** a_pVector)
{
    const size_t iUnknowns = a_iUnknowns < 1 ? 0 : static_cast<size_t>(a_iUnknowns); // equivalent: 0 either way
    // n(n+1)/2 as a product that can be checked for overflow: the even one of n and n+1 is halved, the odd one is n|1.
    const size_t iHalfOfEven = (iUnknowns + 1) / 2;
    const size_t iOdd = iUnknowns | 1;
    *a_pMatrix = AllocateDoubles(iHalfOfEven, iOdd);
    *a_pVector = AllocateDoubles(iUnknowns, 1);
    if (*a_pMatrix == NULL || *a_pVector == NULL)
    {
        DeleteCholLowTri(*a_pMatrix, *a_pVector);
        *a_pMatrix = NULL;
        *a_pVector = NULL;
        return;
    }
    memset(*a_pMatrix, 0, iHalfOfEven * iOdd * sizeof(double));
    memset(*a_pVector, 0, iUnknowns * sizeof(double));
}

void DeleteCholLowTri(double* a_vdMatrix, double* a_vdVector)
{
    free(a_vdMatrix);
    free(a_vdVector);
}

void UpdateNormMatrixLowTri(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, const double* a_vdRow,
                            double a_dValue)
{
    if (AddObservationFaster(a_iUnknowns, a_vdMatrix, a_vdVector, a_vdRow, a_dValue))
    {
        return;
    }
    for (int i = 0; i < a_iUnknowns; ++i)
    {
        const double dCoefficient = a_vdRow[i];
        for (int j = 0; j <= i; ++j)
        {
            a_vdMatrix[j] += dCoefficient * a_vdRow[j];
        }
        a_vdMatrix += i + 1;
        a_vdVector[i] += dCoefficient * a_dValue;
    }
}

void UpdateNormMatrixLowTri(int /* a_iUnknowns */, double* a_vdMatrix, double* a_vdVector, int a_iCount,
                            const double* a_vdValues, const int* a_viIndices, double a_dValue)
{
    for (int p = 0; p < a_iCount; ++p)
    {
        const ptrdiff_t iP = a_viIndices[p];
        if (iP < 0)
        {
            continue; // an unused entry
        }
        const double dP = a_vdValues[p];
        double* const vdRowP = a_vdMatrix + RowStart(PACKED_ROWS, iP);
        for (int q = 0; q <= p; ++q)
        {
            const ptrdiff_t iQ = a_viIndices[q];
            if (iQ < 0)
            {
                continue;
            }
            double* const pElement = iP >= iQ ? vdRowP + iQ : a_vdMatrix + RowStart(PACKED_ROWS, iQ) + iP;
            *pElement += dP * a_vdValues[q];
        }
        a_vdVector[iP] += dP * a_dValue;
    }
}

// The radicand of diagonal element i: the squares of its row are subtracted from the last to the first.
static double CalcRadicand(ptrdiff_t i, const double* a_vdRow)
{
    double dRadicand = a_vdRow[i];
    for (ptrdiff_t k = i - 1; k >= 0; --k)
    {
        dRadicand -= a_vdRow[k] * a_vdRow[k];
    }
    return dRadicand;
}

// The elements of column i below its diagonal. Row i begins at a_vdRowI, the next one a_iStride further on.
static void FactoriseColumn(ptrdiff_t i, ptrdiff_t a_iN, ptrdiff_t a_iStride, ptrdiff_t a_iGrowth, double a_dDiagonal,
                            double* a_vdRowI)
{
    const double dReciprocal = Quotient(1.0, a_dDiagonal);
    double* vdRowJ = a_vdRowI;
    for (ptrdiff_t j = i + 1; j < a_iN; ++j)
    {
        vdRowJ += a_iStride;
        a_iStride += a_iGrowth;
        double dRest = vdRowJ[i];
        for (ptrdiff_t k = 0; k < i; ++k)
        {
            dRest -= vdRowJ[k] * a_vdRowI[k];
        }
        vdRowJ[i] = dReciprocal * dRest;
    }
}

// N = L L^T in place. False if a radicand fails: its diagonal element and all behind it are as they were.
static bool Factorise(ptrdiff_t a_iN, const TTriangleRows& a_Rows, double* a_vdMatrix)
{
    if (HAS_VECTORS && a_iN >= TILES_PAY_FROM) // equivalent: both forms give the same bits
    {
        return FactoriseByTiles(a_iN, a_Rows, a_vdMatrix);
    }
    double* vdRow = a_vdMatrix;
    ptrdiff_t iStride = a_Rows.iStride; // from row i to the next one
    for (ptrdiff_t i = 0; i < a_iN; ++i)
    {
        const double dRadicand = CalcRadicand(i, vdRow);
        if (!IsAtLeastZero(dRadicand)) // a NaN fails too
        {
            return false;
        }
        const double dRoot = SquareRoot(dRadicand);
        vdRow[i] = dRoot;
        if (i + 1 < a_iN) // the last column has nothing below its diagonal and forms no reciprocal
        {
            FactoriseColumn(i, a_iN, iStride, a_Rows.iGrowth, dRoot, vdRow);
        }
        vdRow += iStride;
        iStride += a_Rows.iGrowth;
    }
    return true;
}

// L y = u in place.
static void SubstituteForward(ptrdiff_t a_iN, const TTriangleRows& a_Rows, const double* a_vdFactor, double* a_vdVector)
{
    ptrdiff_t i = 0;
    if (HAS_VECTORS && a_iN >= ROWS_TOGETHER) // equivalent: both forms give the same bits
    {
        i = SubstituteForwardTogether(a_iN, a_Rows, a_vdFactor, a_vdVector);
    }
    const double* vdRow = a_vdFactor + RowStart(a_Rows, i);
    ptrdiff_t iStride = a_Rows.iStride + a_Rows.iGrowth * i;
    for (; i < a_iN; ++i)
    {
        double dRest = a_vdVector[i];
        for (ptrdiff_t k = 0; k < i; ++k)
        {
            dRest -= vdRow[k] * a_vdVector[k];
        }
        a_vdVector[i] = Quotient(dRest, vdRow[i]);
        vdRow += iStride;
        iStride += a_Rows.iGrowth;
    }
}

bool Cholesky(int a_iN, double* a_vdMatrix)
{
    return Factorise(a_iN, DenseRows(a_iN), a_vdMatrix);
}

void SolveChol(int a_iN, const double* a_vdFactor, double* a_vdVector)
{
    const ptrdiff_t iN = a_iN;
    SubstituteForward(iN, DenseRows(a_iN), a_vdFactor, a_vdVector);
    for (ptrdiff_t iEnd = iN; iEnd >= 1; --iEnd) // i = iEnd - 1, which the least int does not have
    {
        const ptrdiff_t i = iEnd - 1;
        const double* pElement = a_vdFactor + i * iN + i; // walks down column i
        const double dDiagonal = *pElement;
        double dRest = a_vdVector[i];
        for (ptrdiff_t k = i + 1; k < iN; ++k) // ascending: the first term needs the solution that was found last
        {
            pElement += iN;
            dRest -= *pElement * a_vdVector[k];
        }
        a_vdVector[i] = Quotient(dRest, dDiagonal);
    }
}

bool CholeskyLowTri(int a_iUnknowns, double* a_vdMatrix)
{
    return Factorise(a_iUnknowns, PACKED_ROWS, a_vdMatrix);
}

void SolveCholLowTri(int a_iUnknowns, const double* a_vdFactor, double* a_vdVector)
{
    SubstituteForward(a_iUnknowns, PACKED_ROWS, a_vdFactor, a_vdVector);
    // L^T x = y in place. Each solution is subtracted at once from all sums before it, whose factors stand side by side
    // in its row. So every sum takes its products in descending order.
    ptrdiff_t iEnd = a_iUnknowns;
    if (HAS_VECTORS && iEnd >= ROWS_TOGETHER) // equivalent: both forms give the same bits
    {
        iEnd = SubstituteBackwardTogether(iEnd, a_vdFactor, a_vdVector);
    }
    for (; iEnd >= 1; --iEnd)
    {
        const ptrdiff_t k = iEnd - 1;
        const double* const vdRow = a_vdFactor + RowStart(PACKED_ROWS, k);
        const double dSolution = Quotient(a_vdVector[k], vdRow[k]);
        a_vdVector[k] = dSolution;
        for (ptrdiff_t i = 0; i < k; ++i)
        {
            a_vdVector[i] -= vdRow[i] * dSolution;
        }
    }
}

} // namespace nuv
