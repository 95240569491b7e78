// cholesky.cpp: Cholesky factorisation and solution, dense and packed, and normal equations.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "functionsimp.h"
#include "nuv1math.h"

#include <math.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Normal equations and Cholesky factorisation
//
// Model      N = sum(a a^T), u = sum(a l) over the observations a.x = l; N = L L^T; L y = u, L^T x = y.
// Method     Column by column: L(i,i) = sqrt(N(i,i) - sum L(i,k)^2), L(j,i) = (N(j,i) - sum L(j,k) L(i,k)) / L(i,i)
//            with one reciprocal per column. No pivoting and no tolerance.
// Special    A negative or NaN radicand fails; one of exactly 0 passes: its column becomes infinite or NaN, and the
//            next radicand fails.
// Order      Products first, then added or subtracted one at a time. A diagonal takes the squares of its row from the
//            one next to the diagonal back to the first; every other element takes its products from the first column
//            on. The forward substitution runs ascending. The backward one runs descending in the packed form and
//            ascending in the dense one; both divide by the diagonal.
// Storage    Lower triangle row by row: packed, row i at i(i+1)/2; dense, row i at i n, the strict upper triangle being
//            neither read nor written.
// Source     G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed., sections 4.2 and 5.3.
// ---------------------------------------------------------------------------------------------------------------------

namespace {

// Where the rows of a lower triangle stand: row i begins at i*iStride + iGrowth*i(i-1)/2, its diagonal i further on.
struct TTriangleRows
{
    ptrdiff_t iStride; // from row 0 to row 1
    ptrdiff_t iGrowth; // by which every further row is longer
};

} // namespace

static const TTriangleRows PACKED_ROWS = {1, 1}; // row i at i(i+1)/2

static TTriangleRows DenseRows(int a_iN) // row i at i n
{
    const TTriangleRows Rows = {a_iN, 0};
    return Rows;
}

static ptrdiff_t RowStart(const TTriangleRows& a_Rows, ptrdiff_t a_iRow)
{
    return a_iRow * a_Rows.iStride + a_Rows.iGrowth * (a_iRow * (a_iRow - 1) / 2);
}

void InitCholLowTri(int a_iUnknowns, double** a_pMatrix, double** a_pVector)
{
    const size_t iUnknowns = a_iUnknowns < 1 ? 0 : static_cast<size_t>(a_iUnknowns);
    // n(n+1)/2 as a product of two whole numbers: the even one of n and n+1 is halved, the odd one is n|1.
    *a_pMatrix = AllocateDoubles((iUnknowns + 1) / 2, iUnknowns | 1);
    *a_pVector = AllocateDoubles(iUnknowns, 1);
    if (*a_pMatrix == NULL || *a_pVector == NULL)
    {
        DeleteCholLowTri(*a_pMatrix, *a_pVector);
        *a_pMatrix = NULL;
        *a_pVector = NULL;
        return;
    }
    memset(*a_pMatrix, 0, (iUnknowns + 1) / 2 * (iUnknowns | 1) * sizeof(double));
    memset(*a_pVector, 0, iUnknowns * sizeof(double));
}

void DeleteCholLowTri(double* a_vdMatrix, double* a_vdVector)
{
    free(a_vdMatrix);
    free(a_vdVector);
}

// Whether products with a coefficient of zero may be left out: there is one, and all factors are finite, so that it
// makes every product a zero.
static bool CanSkipZeros(int a_iUnknowns, const double* a_vdRow, double a_dValue)
{
    int i = 0;
    while (i < a_iUnknowns && !IsZero(a_vdRow[i]))
    {
        ++i;
    }
    if (i >= a_iUnknowns || !IsFinite(a_dValue))
    {
        return false;
    }
    for (i = 0; i < a_iUnknowns; ++i)
    {
        if (!IsFinite(a_vdRow[i]))
        {
            return false;
        }
    }
    return true;
}

// Adds a product to an element. A product that is a zero changes no element but -0.0, which +0.0 makes +0.0: to every
// other one it is not added.
static void AddProduct(double a_dFirst, double a_dSecond, bool a_bIsZero, double& a_dElement)
{
    if (!a_bIsZero || IsNegativeZero(a_dElement))
    {
        a_dElement = a_dFirst * a_dSecond + a_dElement;
    }
}

static void AddWithoutZeros(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, const double* a_vdRow,
                            double a_dValue)
{
    for (int i = 0; i < a_iUnknowns; ++i)
    {
        const double dCoefficient = a_vdRow[i];
        const bool bZero = IsZero(dCoefficient);
        for (int j = 0; j <= i; ++j)
        {
            AddProduct(dCoefficient, a_vdRow[j], bZero || IsZero(a_vdRow[j]), *a_vdMatrix);
            ++a_vdMatrix;
        }
        AddProduct(dCoefficient, a_dValue, bZero, a_vdVector[i]);
    }
}

// Adds a multiple of a row to a row that does not overlap it; two elements at a time, where that is one operation.
static void AddRow(double a_dFactor, int a_iCount, const double* __restrict a_vdRow, double* __restrict a_vdSum)
{
    int j = 0;
    if (!OPERATIONS_ARE_CALLS)
    {
        for (; j < a_iCount - 1; j += 2)
        {
            a_vdSum[j] += a_dFactor * a_vdRow[j];
            a_vdSum[j + 1] += a_dFactor * a_vdRow[j + 1];
        }
    }
    for (; j < a_iCount; ++j)
    {
        a_vdSum[j] += a_dFactor * a_vdRow[j];
    }
}

void UpdateNormMatrixLowTri(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, const double* a_vdRow,
                            double a_dValue)
{
    if (OPERATIONS_ARE_CALLS && CanSkipZeros(a_iUnknowns, a_vdRow, a_dValue))
    {
        AddWithoutZeros(a_iUnknowns, a_vdMatrix, a_vdVector, a_vdRow, a_dValue);
        return;
    }
    for (int i = 0; i < a_iUnknowns; ++i)
    {
        AddRow(a_vdRow[i], i + 1, a_vdRow, a_vdMatrix);
        a_vdVector[i] += a_vdRow[i] * a_dValue;
        a_vdMatrix += i + 1;
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

// Scales column i below the diagonal, after taking the products of the columns before it, ascending, off it.
static void FactoriseColumn(ptrdiff_t i, ptrdiff_t a_iN, const TTriangleRows& a_Rows, double* a_vdMatrix)
{
    const double* const vdRowI = a_vdMatrix + RowStart(a_Rows, i);
    const double dReciprocal = 1.0 / vdRowI[i];
    for (ptrdiff_t j = i + 1; j < a_iN; ++j)
    {
        double* const vdRowJ = a_vdMatrix + RowStart(a_Rows, j);
        double dRest = vdRowJ[i];
        for (ptrdiff_t k = 0; k < i; ++k)
        {
            dRest -= vdRowJ[k] * vdRowI[k];
        }
        vdRowJ[i] = dReciprocal * dRest;
    }
}

static bool Factorise(ptrdiff_t a_iN, const TTriangleRows& a_Rows, double* a_vdMatrix)
{
    for (ptrdiff_t i = 0; i < a_iN; ++i)
    {
        double* const vdRow = a_vdMatrix + RowStart(a_Rows, i);
        double dRadicand = vdRow[i];
        for (ptrdiff_t k = i - 1; k >= 0; --k) // from the diagonal back to the row's first element
        {
            dRadicand -= vdRow[k] * vdRow[k];
        }
        if (!(dRadicand >= 0.0)) // a NaN fails too
        {
            return false;
        }
        vdRow[i] = sqrt(dRadicand);
        if (i < a_iN - 1) // the last column has nothing to scale and forms no reciprocal
        {
            FactoriseColumn(i, a_iN, a_Rows, a_vdMatrix);
        }
    }
    return true;
}

// L y = u in place.
static void SubstituteForward(ptrdiff_t a_iN, const TTriangleRows& a_Rows, const double* a_vdFactor, double* a_vdVector)
{
    for (ptrdiff_t i = 0; i < a_iN; ++i)
    {
        const double* const vdRow = a_vdFactor + RowStart(a_Rows, i);
        double dRest = a_vdVector[i];
        for (ptrdiff_t k = 0; k < i; ++k)
        {
            dRest -= vdRow[k] * a_vdVector[k];
        }
        a_vdVector[i] = dRest / vdRow[i];
    }
}

// Element i of the backward substitution L^T x = y, the rows k below it taken from a_iFirst in steps of a_iStep.
static void SubstituteBackward(ptrdiff_t i, ptrdiff_t a_iN, ptrdiff_t a_iFirst, ptrdiff_t a_iStep,
                               const TTriangleRows& a_Rows, const double* a_vdFactor, double* a_vdVector)
{
    double dRest = a_vdVector[i];
    for (ptrdiff_t k = a_iFirst; k > i && k < a_iN; k += a_iStep)
    {
        dRest -= a_vdFactor[RowStart(a_Rows, k) + i] * a_vdVector[k];
    }
    a_vdVector[i] = dRest / a_vdFactor[RowStart(a_Rows, i) + i];
}

bool Cholesky(int a_iN, double* a_vdMatrix)
{
    return Factorise(a_iN, DenseRows(a_iN), a_vdMatrix);
}

void SolveChol(int a_iN, const double* a_vdFactor, double* a_vdVector)
{
    const TTriangleRows Rows = DenseRows(a_iN);
    SubstituteForward(a_iN, Rows, a_vdFactor, a_vdVector);
    for (ptrdiff_t i = a_iN; i >= 1; --i)
    {
        SubstituteBackward(i - 1, a_iN, i, 1, Rows, a_vdFactor, a_vdVector); // from the row below the diagonal down
    }
}

bool CholeskyLowTri(int a_iUnknowns, double* a_vdMatrix)
{
    return Factorise(a_iUnknowns, PACKED_ROWS, a_vdMatrix);
}

void SolveCholLowTri(int a_iUnknowns, const double* a_vdFactor, double* a_vdVector)
{
    const ptrdiff_t iN = a_iUnknowns;
    SubstituteForward(iN, PACKED_ROWS, a_vdFactor, a_vdVector);
    for (ptrdiff_t i = iN; i >= 1; --i)
    {
        SubstituteBackward(i - 1, iN, iN - 1, -1, PACKED_ROWS, a_vdFactor, a_vdVector); // from the last row up
    }
}

} // namespace nuv
