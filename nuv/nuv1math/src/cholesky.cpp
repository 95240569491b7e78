// cholesky.cpp: Cholesky factorisation and solution, dense and packed, and normal equations.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "functionsimp.h"
#include "nuv1math.h"

#include <math.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

#if defined(__GNUC__) && (defined(__SSE2__) || defined(__aarch64__))
#define NUV_CHOLESKY_TILES
#endif

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

void UpdateNormMatrixLowTri(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, const double* a_vdRow,
                            double a_dValue)
{
    double* pElement = a_vdMatrix; // walks the packed triangle from end to end
    for (int i = 0; i < a_iUnknowns; ++i)
    {
        const double dCoefficient = a_vdRow[i];
        for (int j = 0; j <= i; ++j)
        {
            *pElement += dCoefficient * a_vdRow[j];
            ++pElement;
        }
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
        for (int q = 0; q <= p; ++q)
        {
            const ptrdiff_t iQ = a_viIndices[q];
            if (iQ < 0)
            {
                continue;
            }
            const ptrdiff_t iElement = iP > iQ ? RowStart(PACKED_ROWS, iP) + iQ : RowStart(PACKED_ROWS, iQ) + iP;
            a_vdMatrix[iElement] += a_vdValues[p] * a_vdValues[q];
        }
        a_vdVector[iP] += a_vdValues[p] * a_dValue;
    }
}

// Takes the squares of the elements a_iFrom - 1 down to a_iTo of a row off its radicand.
static double SubtractSquares(double a_dRadicand, const double* a_vdRow, ptrdiff_t a_iFrom, ptrdiff_t a_iTo)
{
    for (ptrdiff_t k = a_iFrom - 1; k >= a_iTo; --k)
    {
        a_dRadicand -= a_vdRow[k] * a_vdRow[k];
    }
    return a_dRadicand;
}

// Scales column i in the rows below the diagonal up to a_iEnd, after taking the products of the columns before it from
// a_iFirst on, ascending, off it. The elements without the products before a_iFirst are read from a_vdPending, whose
// first row and column are a_iFirst: the matrix itself, if there are none.
static void FactoriseColumn(ptrdiff_t i, ptrdiff_t a_iFirst, ptrdiff_t a_iEnd, const TTriangleRows& a_Rows,
                            double* a_vdMatrix, const TTriangleRows& a_PendingRows, const double* a_vdPending,
                            double a_dReciprocal)
{
    const double* const vdRowI = a_vdMatrix + RowStart(a_Rows, i);
    for (ptrdiff_t j = i + 1; j < a_iEnd; ++j)
    {
        double* const vdRowJ = a_vdMatrix + RowStart(a_Rows, j);
        double dRest = a_vdPending[RowStart(a_PendingRows, j - a_iFirst) + i - a_iFirst];
        for (ptrdiff_t k = a_iFirst; k < i; ++k)
        {
            dRest -= vdRowJ[k] * vdRowI[k];
        }
        vdRowJ[i] = a_dReciprocal * dRest;
    }
}

static bool FactorisePlainly(ptrdiff_t a_iN, const TTriangleRows& a_Rows, double* a_vdMatrix)
{
    for (ptrdiff_t i = 0; i < a_iN; ++i)
    {
        double* const vdRow = a_vdMatrix + RowStart(a_Rows, i);
        const double dRadicand = SubtractSquares(vdRow[i], vdRow, i, 0);
        if (!(dRadicand >= 0.0)) // a NaN fails too
        {
            return false;
        }
        vdRow[i] = sqrt(dRadicand);
        if (i < a_iN - 1) // the last column has nothing to scale and forms no reciprocal
        {
            FactoriseColumn(i, 0, a_iN, a_Rows, a_vdMatrix, a_Rows, a_vdMatrix, 1.0 / vdRow[i]);
        }
    }
    return true;
}

#ifdef NUV_CHOLESKY_TILES

namespace {

enum
{
    TILE_ROWS = 8,
    TILE_COLUMNS = 4,
    BLOCK_TILES = 4,
    BLOCK_ROWS = BLOCK_TILES * TILE_ROWS,
    PANEL_COLUMNS = 16,
    PANEL_DEPTH = 128,
    SMALL_MATRIX = 24,
    MATRIX_IN_CACHE = 160
};

struct TTile
{
    double vvdRest[TILE_ROWS][TILE_COLUMNS];
};

struct TPanel
{
    TTriangleRows Rows;
    double* vdMatrix;
    ptrdiff_t iFirst;
    double vdReciprocals[PANEL_COLUMNS];
    double vvdPacked[PANEL_COLUMNS / TILE_COLUMNS][(PANEL_DEPTH + PANEL_COLUMNS) * TILE_COLUMNS]; // k by column
};

} // namespace

#if defined(__clang__)
#define NUV_UNROLL
#else
#define NUV_UNROLL _Pragma("GCC unroll 8")
#endif

#define NUV_TILE_FUNCTION SubtractByPairs
#define NUV_TILE_TARGET
#define NUV_TILE_LANES 2
#define NUV_TILE_AT_ONCE 4
#include "choleskytile.h"

#undef NUV_TILE_FUNCTION
#undef NUV_TILE_TARGET
#undef NUV_TILE_LANES
#undef NUV_TILE_AT_ONCE
#define NUV_TILE_FUNCTION SubtractByQuads
#define NUV_TILE_TARGET __attribute__((target("avx2")))
#define NUV_TILE_LANES 4
#define NUV_TILE_AT_ONCE 8
#include "choleskytile.h"

template <bool SQUARES>
static void SubtractProducts(ptrdiff_t a_iFrom, ptrdiff_t a_iCount, ptrdiff_t a_iRows, const double* const* a_vvdRows, const double* a_vdColumns, TTile& a_Tile, const double* a_vdSquares, double& a_dRadicand)
{
#ifndef NOWIDE
    if (__builtin_cpu_supports("avx2"))
    {
        SubtractByQuads<SQUARES>(a_iFrom, a_iCount, a_iRows, a_vvdRows, a_vdColumns, a_Tile, a_vdSquares, a_dRadicand);
        return;
    }
#endif
    SubtractByPairs<SQUARES>(a_iFrom, a_iCount, a_iRows, a_vvdRows, a_vdColumns, a_Tile, a_vdSquares, a_dRadicand);
}

static ptrdiff_t Lesser(ptrdiff_t a_iFirst, ptrdiff_t a_iSecond)
{
    return a_iFirst < a_iSecond ? a_iFirst : a_iSecond;
}

static void FindRows(const TPanel& a_Panel, ptrdiff_t j, ptrdiff_t a_iRows, ptrdiff_t a_iCount, double** a_vvdRows)
{
    double* vdRow = a_Panel.vdMatrix + RowStart(a_Panel.Rows, j);
    ptrdiff_t iStride = a_Panel.Rows.iStride + a_Panel.Rows.iGrowth * j;
    for (ptrdiff_t r = 0; r < a_iCount; ++r)
    {
        a_vvdRows[r] = vdRow;
        if (r + 1 < a_iRows)
        {
            vdRow += iStride;
            iStride += a_Panel.Rows.iGrowth;
        }
    }
}

static double* PackedColumns(TPanel& a_Panel, ptrdiff_t c)
{
    return a_Panel.vvdPacked[(c - a_Panel.iFirst) / TILE_COLUMNS];
}

static void Pack(double* const* a_vvdRows, ptrdiff_t k0, ptrdiff_t k1, double* a_vdPacked)
{
    const double* const vdRow0 = a_vvdRows[0];
    const double* const vdRow1 = a_vvdRows[1];
    const double* const vdRow2 = a_vvdRows[2];
    const double* const vdRow3 = a_vvdRows[3];
    for (ptrdiff_t k = k0; k < k1; ++k)
    {
        a_vdPacked[0] = vdRow0[k];
        a_vdPacked[1] = vdRow1[k];
        a_vdPacked[2] = vdRow2[k];
        a_vdPacked[3] = vdRow3[k];
        a_vdPacked += TILE_COLUMNS;
    }
}

static void FinishTile(const TPanel& a_Panel, ptrdiff_t c, ptrdiff_t a_iColumns, double* const* a_vvdDiagonal, const TTile& a_Tile, ptrdiff_t a_iFirstRow, ptrdiff_t a_iRows, double* const* a_vvdRows)
{
    const double* const vdReciprocals = a_Panel.vdReciprocals + (c - a_Panel.iFirst);
    double vvdFactor[TILE_COLUMNS][TILE_COLUMNS];
    double vdR[TILE_COLUMNS];
    NUV_UNROLL for (int q = 0; q < TILE_COLUMNS; ++q)
    {
        vdR[q] = vdReciprocals[q];
        NUV_UNROLL for (int k = 0; k < q; ++k)
        {
            vvdFactor[q][k] = a_vvdDiagonal[q][c + k];
        }
    }
    for (ptrdiff_t r = a_iFirstRow; r < a_iRows; ++r)
    {
        double vdX[TILE_COLUMNS];
        NUV_UNROLL for (int q = 0; q < TILE_COLUMNS; ++q)
        {
            double dRest = a_Tile.vvdRest[r][q];
            NUV_UNROLL for (int k = 0; k < q; ++k)
            {
                dRest -= vdX[k] * vvdFactor[q][k];
            }
            vdX[q] = dRest * vdR[q];
        }
        double* const vdTo = a_vvdRows[r] + c;
        if (a_iColumns == TILE_COLUMNS)
        {
            NUV_UNROLL for (int q = 0; q < TILE_COLUMNS; ++q)
            {
                vdTo[q] = vdX[q];
            }
        }
        else
        {
            for (ptrdiff_t q = 0; q < a_iColumns; ++q)
            {
                vdTo[q] = vdX[q];
            }
        }
    }
}

static void FinishRows(TPanel& a_Panel, ptrdiff_t a_iRow, ptrdiff_t a_iN, ptrdiff_t a_iColumnEnd)
{
    if (a_iRow >= a_iN)
    {
        return;
    }
    double dNone = 0.0;
    double* vvdDiagonal[PANEL_COLUMNS];
    FindRows(a_Panel, a_Panel.iFirst, PANEL_COLUMNS, PANEL_COLUMNS, vvdDiagonal);
    ptrdiff_t k0 = 0;
    bool bLast;
    do
    {
        bLast = a_Panel.iFirst - k0 <= PANEL_DEPTH;
        if (a_Panel.iFirst > PANEL_DEPTH)
        {
            for (ptrdiff_t c = a_Panel.iFirst; c < a_iColumnEnd; c += TILE_COLUMNS)
            {
                Pack(vvdDiagonal + (c - a_Panel.iFirst), k0, bLast ? c : k0 + PANEL_DEPTH, PackedColumns(a_Panel, c));
            }
        }
        for (ptrdiff_t j = a_iRow; j < a_iN; j += TILE_ROWS)
        {
            const ptrdiff_t iRows = Lesser(TILE_ROWS, a_iN - j);
            double* vvdRows[TILE_ROWS];
            FindRows(a_Panel, j, iRows, TILE_ROWS, vvdRows);
            for (ptrdiff_t c = a_Panel.iFirst; c < a_iColumnEnd; c += TILE_COLUMNS)
            {
                TTile Tile;
                NUV_UNROLL for (int r = 0; r < TILE_ROWS; ++r)
                {
                    memcpy(Tile.vvdRest[r], vvdRows[r] + c, sizeof Tile.vvdRest[r]);
                }
                SubtractProducts<false>(k0, (bLast ? c : k0 + PANEL_DEPTH) - k0, iRows, vvdRows, PackedColumns(a_Panel, c), Tile, NULL, dNone);
                const ptrdiff_t iColumns = Lesser(TILE_COLUMNS, a_iColumnEnd - c);
                if (bLast)
                {
                    FinishTile(a_Panel, c, iColumns, vvdDiagonal + (c - a_Panel.iFirst), Tile, 0, iRows, vvdRows);
                }
                else
                {
                    for (ptrdiff_t r = 0; r < iRows; ++r)
                    {
                        if (iColumns == TILE_COLUMNS)
                        {
                            memcpy(vvdRows[r] + c, Tile.vvdRest[r], sizeof Tile.vvdRest[r]);
                        }
                        else
                        {
                            for (ptrdiff_t q = 0; q < iColumns; ++q)
                            {
                                vvdRows[r][c + q] = Tile.vvdRest[r][q];
                            }
                        }
                    }
                }
            }
        }
        k0 += PANEL_DEPTH;
    } while (!bLast);
}

// The columns of one tile from c on, in the rows c to a_iRowEnd.
static ptrdiff_t FactoriseBlock(TPanel& a_Panel, ptrdiff_t c, ptrdiff_t a_iRowEnd)
{
    TTile vTiles[BLOCK_TILES];
    double* vvdRows[BLOCK_ROWS];
    FindRows(a_Panel, c, a_iRowEnd - c, BLOCK_ROWS, vvdRows);
    const ptrdiff_t iColumns = Lesser(TILE_COLUMNS, a_iRowEnd - c);
    double* const vdPacked = PackedColumns(a_Panel, c);
    double* const vdReciprocals = a_Panel.vdReciprocals + (c - a_Panel.iFirst);
    ptrdiff_t iDone = 0;
    for (ptrdiff_t t = 0; t < BLOCK_TILES; ++t)
    {
        const ptrdiff_t iRows = Lesser(TILE_ROWS, a_iRowEnd - c - t * TILE_ROWS);
        double* const vdRow = vvdRows[t];
        const bool bDiagonal = iDone == t && t < iColumns;
        double dRadicand = 0.0;
        if (bDiagonal)
        {
            dRadicand = SubtractSquares(vdRow[c + t], vdRow, c + t, c);
        }
        if (iRows > 0)
        {
            TTile& Tile = vTiles[t];
            if (t == 0)
            {
                for (ptrdiff_t r = 0; r < TILE_ROWS; ++r)
                {
                    for (ptrdiff_t q = 0; q < TILE_COLUMNS; ++q)
                    {
                        Tile.vvdRest[r][q] = q < r && r < iRows ? vvdRows[r][c + q] : 0.0;
                    }
                }
            }
            else
            {
                NUV_UNROLL for (int r = 0; r < TILE_ROWS; ++r)
                {
                    memcpy(Tile.vvdRest[r], vvdRows[t * TILE_ROWS + r] + c, sizeof Tile.vvdRest[r]);
                }
            }
            for (ptrdiff_t k0 = 0; k0 < c; k0 += PANEL_DEPTH + PANEL_COLUMNS)
            {
                const ptrdiff_t iDepth = Lesser(c - k0, PANEL_DEPTH + PANEL_COLUMNS);
                if (t == 0 || a_Panel.iFirst > PANEL_DEPTH)
                {
                    Pack(vvdRows, k0, k0 + iDepth, vdPacked);
                }
                if (bDiagonal)
                {
                    SubtractProducts<true>(k0, iDepth, iRows, vvdRows + t * TILE_ROWS, vdPacked, Tile, vdRow + c - k0, dRadicand);
                }
                else
                {
                    SubtractProducts<false>(k0, iDepth, iRows, vvdRows + t * TILE_ROWS, vdPacked, Tile, vdRow, dRadicand);
                }
            }
        }
        else if (bDiagonal)
        {
            dRadicand = SubtractSquares(dRadicand, vdRow, c, 0);
        }
        if (bDiagonal && dRadicand >= 0.0)
        {
            vdRow[c + t] = sqrt(dRadicand);
            vdReciprocals[t] = 1.0 / vdRow[c + t];
            for (ptrdiff_t r = t + 1; r < iColumns; ++r)
            {
                double dRest = vTiles[0].vvdRest[r][t];
                for (ptrdiff_t k = 0; k < t; ++k)
                {
                    dRest -= vvdRows[r][c + k] * vdRow[c + k];
                }
                vvdRows[r][c + t] = dRest * vdReciprocals[t];
            }
            iDone = t + 1;
        }
    }
    for (ptrdiff_t r = 0; r < a_iRowEnd - c; r += TILE_ROWS)
    {
        const ptrdiff_t iFirst = r == 0 ? TILE_COLUMNS : 0;
        const ptrdiff_t iRows = Lesser(TILE_ROWS, a_iRowEnd - c - r);
        if (iFirst < iRows)
        {
            FinishTile(a_Panel, c, iDone, vvdRows, vTiles[r / TILE_ROWS], iFirst, iRows, vvdRows + r);
        }
    }
    return c + iDone;
}

static bool Factorise(ptrdiff_t a_iN, const TTriangleRows& a_Rows, double* a_vdMatrix)
{
    if (a_iN < SMALL_MATRIX)
    {
        return FactorisePlainly(a_iN, a_Rows, a_vdMatrix);
    }
    TPanel Panel;
    Panel.Rows = a_Rows;
    Panel.vdMatrix = a_vdMatrix;
    for (int i = 0; i < PANEL_COLUMNS; ++i)
    {
        Panel.vdReciprocals[i] = 0.0;
    }
    const bool bCached = a_iN <= MATRIX_IN_CACHE;
    const ptrdiff_t iPanel = bCached ? TILE_COLUMNS : PANEL_COLUMNS;
    for (ptrdiff_t c = 0; c < a_iN;)
    {
        Panel.iFirst = c;
        const ptrdiff_t iEnd = Lesser(c + iPanel, a_iN);
        const ptrdiff_t iRowEnd = bCached ? Lesser(c + BLOCK_ROWS, a_iN) : iEnd;
        ptrdiff_t iDone;
        do
        {
            iDone = FactoriseBlock(Panel, c, iRowEnd);
            c += TILE_COLUMNS;
        } while (c == iDone && c < iEnd);
        FinishRows(Panel, iRowEnd, a_iN, iDone);
        if (iDone < iEnd)
        {
            return false;
        }
    }
    return true;
}

#else

static bool Factorise(ptrdiff_t a_iN, const TTriangleRows& a_Rows, double* a_vdMatrix)
{
    return FactorisePlainly(a_iN, a_Rows, a_vdMatrix);
}

#endif

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
