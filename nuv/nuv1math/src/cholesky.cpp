// cholesky.cpp: Cholesky factorisation and solution, dense and packed, and normal equations.
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

// Adds the products of a row's elements to the matrix, a vector of them at a time. The row does not overlap it.
template <typename TVector>
static NUV_INLINE void AddRows(int a_iUnknowns, double* __restrict a_vdMatrix, const double* __restrict a_vdRow)
{
    const int LANES = sizeof(TVector) / sizeof(double);
    for (int i = 0; i < a_iUnknowns; ++i)
    {
        const double dFactor = a_vdRow[i];
        int j = 0;
        for (; j <= i + 1 - LANES; j += LANES)
        {
            TVector Row;
            TVector Sum;
            Load(a_vdRow + j, Row);
            Load(a_vdMatrix + j, Sum);
            Sum += dFactor * Row;
            Store(Sum, a_vdMatrix + j);
        }
        for (; j <= i; ++j)
        {
            a_vdMatrix[j] += dFactor * a_vdRow[j];
        }
        a_vdMatrix += i + 1;
    }
}

#ifdef NUV_WIDE_VECTORS
NUV_WIDE_VECTORS static void AddRowsByFours(int a_iUnknowns, double* a_vdMatrix, const double* a_vdRow)
{
    AddRows<TFour>(a_iUnknowns, a_vdMatrix, a_vdRow);
}
#endif

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
        a_vdVector[i] += a_vdRow[i] * a_dValue;
    }
#ifdef NUV_WIDE_VECTORS
    if (__builtin_cpu_supports("avx2")) // host only: a processor has AVX2 or does not have it
    {
        AddRowsByFours(a_iUnknowns, a_vdMatrix, a_vdRow);
        return;
    }
#endif
    AddRows<TNative>(a_iUnknowns, a_vdMatrix, a_vdRow);
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

// Takes the squares of the elements a_iFrom - 1 down to a_iTo of a row off its radicand.
static double SubtractSquares(double a_dRadicand, const double* a_vdRow, ptrdiff_t a_iFrom, ptrdiff_t a_iTo)
{
    for (ptrdiff_t k = a_iFrom - 1; k >= a_iTo; --k)
    {
        a_dRadicand -= a_vdRow[k] * a_vdRow[k];
    }
    return a_dRadicand;
}

// One sum after the other, column by column.
static bool FactorisePlainly(ptrdiff_t a_iN, const TTriangleRows& a_Rows, double* a_vdMatrix)
{
    double* vdRow = a_vdMatrix;
    ptrdiff_t iStride = a_Rows.iStride; // to the next row
    for (ptrdiff_t i = 0; i < a_iN; ++i)
    {
        const double dRadicand = SubtractSquares(vdRow[i], vdRow, i, 0);
        if (!(dRadicand >= 0.0)) // a NaN fails too
        {
            return false;
        }
        const double dRoot = sqrt(dRadicand);
        vdRow[i] = dRoot;
        if (i + 1 == a_iN)
        {
            break; // the last column has nothing to scale and forms no reciprocal
        }
        const double dReciprocal = 1.0 / dRoot;
        double* vdRowJ = vdRow;
        ptrdiff_t iStrideJ = iStride;
        for (ptrdiff_t j = i + 1; j < a_iN; ++j)
        {
            vdRowJ += iStrideJ;
            iStrideJ += a_Rows.iGrowth;
            double dRest = vdRowJ[i];
            for (ptrdiff_t k = 0; k < i; ++k)
            {
                dRest -= vdRowJ[k] * vdRow[k];
            }
            vdRowJ[i] = dReciprocal * dRest;
        }
        vdRow += iStride;
        iStride += a_Rows.iGrowth;
    }
    return true;
}

#ifdef NUV_VECTORS

// ---------------------------------------------------------------------------------------------------------------------
// The same factorisation by tiles
//
// Model      A column's sums do not depend on each other, and those of the next columns depend on them only through
//            their last terms: a tile of rows and columns takes its products off together, one k after the other.
// Method     Columns in panels, in each of them tiles of four columns: first a block of rows that holds the diagonal,
//            then the rows below it. A square root waits for the whole sum of its diagonal, which begins with what the
//            column before has just left: so each of a tile's diagonals runs beside the products of another tile.
// Failure    Nothing of a column is stored before its diagonal has passed: until then the sums stay in the scratch. The
//            columns before the failing one are then finished in all rows.
// Cache      The columns' factors are packed in the order of their use, PANEL_DEPTH at a time. A matrix that the cache
//            holds takes panels of one tile and blocks that reach below them, so that all diagonals have company.
// ---------------------------------------------------------------------------------------------------------------------

namespace {

enum
{
    TILE_ROWS = 8,
    TILE_COLUMNS = 4,
    BLOCK_TILES = TILE_COLUMNS, // one for each diagonal
    BLOCK_ROWS = BLOCK_TILES * TILE_ROWS,
    PANEL_TILES = 4,
    PANEL_COLUMNS = PANEL_TILES * TILE_COLUMNS, // no more than BLOCK_ROWS
    PANEL_DEPTH = 128,
    SMALL_MATRIX = 28,  // below it tiles do not pay
    CACHED_MATRIX = 160 // up to it the cache holds the matrix
};

struct TTile
{
    double vvdRest[TILE_ROWS][TILE_COLUMNS];
};

// Some columns of the matrix, from iFirst on, with what all their rows need.
struct TPanel
{
    TTriangleRows Rows;
    double* vdMatrix;
    ptrdiff_t iFirst;
    double vdReciprocals[PANEL_COLUMNS];
    double vvdFactors[PANEL_TILES][(PANEL_DEPTH + PANEL_COLUMNS) * TILE_COLUMNS]; // by tile; element k of its columns
};

} // namespace

#define NUV_TILE_FUNCTION SubtractByPairs
#define NUV_TILE_TARGET
#define NUV_TILE_LANES 2
#define NUV_TILE_AT_ONCE 4
#include "choleskytile.h"

#ifdef NUV_WIDE_VECTORS
#undef NUV_TILE_FUNCTION
#undef NUV_TILE_TARGET
#undef NUV_TILE_LANES
#undef NUV_TILE_AT_ONCE
#define NUV_TILE_FUNCTION SubtractByFours
#define NUV_TILE_TARGET NUV_WIDE_VECTORS
#define NUV_TILE_LANES 4
#define NUV_TILE_AT_ONCE 8
#include "choleskytile.h"
#endif

template <bool SQUARES>
static void SubtractProducts(ptrdiff_t a_iFrom, ptrdiff_t a_iCount, ptrdiff_t a_iRows, const double* const* a_vvdRows,
                             const double* a_vdFactors, TTile& a_Tile, const double* a_vdSquares, double& a_dRadicand)
{
#ifdef NUV_WIDE_VECTORS
    if (__builtin_cpu_supports("avx2")) // host only: a processor has AVX2 or does not have it
    {
        SubtractByFours<SQUARES>(a_iFrom, a_iCount, a_iRows, a_vvdRows, a_vdFactors, a_Tile, a_vdSquares, a_dRadicand);
        return;
    }
#endif
    SubtractByPairs<SQUARES>(a_iFrom, a_iCount, a_iRows, a_vvdRows, a_vdFactors, a_Tile, a_vdSquares, a_dRadicand);
}

static ptrdiff_t Lesser(ptrdiff_t a_iFirst, ptrdiff_t a_iSecond)
{
    return a_iFirst < a_iSecond ? a_iFirst : a_iSecond;
}

// Starts of a_iCount rows from j on. Beyond a_iRows rows the last one stands in: it is read, and nothing is stored.
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

static double* FactorsOf(TPanel& a_Panel, ptrdiff_t c)
{
    return a_Panel.vvdFactors[(c - a_Panel.iFirst) / TILE_COLUMNS];
}

// The elements k0 to k1 - 1 of the rows that have the numbers of a tile's columns.
static void Pack(double* const* a_vvdRows, ptrdiff_t k0, ptrdiff_t k1, double* a_vdFactors)
{
    for (ptrdiff_t k = k0; k < k1; ++k)
    {
        NUV_UNROLL for (int c = 0; c < TILE_COLUMNS; ++c)
        {
            a_vdFactors[c] = a_vvdRows[c][k];
        }
        a_vdFactors += TILE_COLUMNS;
    }
}

static void LoadTile(double* const* a_vvdRows, ptrdiff_t c, TTile& a_Tile)
{
    NUV_UNROLL for (int r = 0; r < TILE_ROWS; ++r)
    {
        memcpy(a_Tile.vvdRest[r], a_vvdRows[r] + c, sizeof a_Tile.vvdRest[r]);
    }
}

// Stores the first columns of a row of a tile.
static inline void StoreRow(const double* a_vdFrom, ptrdiff_t a_iColumns, double* a_vdTo)
{
    if (a_iColumns == TILE_COLUMNS)
    {
        NUV_UNROLL for (int q = 0; q < TILE_COLUMNS; ++q)
        {
            a_vdTo[q] = a_vdFrom[q];
        }
        return;
    }
    for (ptrdiff_t q = 0; q < a_iColumns; ++q)
    {
        a_vdTo[q] = a_vdFrom[q];
    }
}

// Takes the last products off the rows a_iFirst to a_iRows - 1 of a tile, those with the tile's own columns from c on,
// scales and stores them. a_vvdDiagonal has the rows of the tile on the diagonal.
static void FinishTile(const TPanel& a_Panel, ptrdiff_t c, ptrdiff_t a_iColumns, double* const* a_vvdDiagonal,
                       const TTile& a_Tile, ptrdiff_t a_iFirst, ptrdiff_t a_iRows, double* const* a_vvdRows)
{
    double vdReciprocals[TILE_COLUMNS];
    double vvdFactors[TILE_COLUMNS][TILE_COLUMNS];
    NUV_UNROLL for (int q = 0; q < TILE_COLUMNS; ++q)
    {
        vdReciprocals[q] = a_Panel.vdReciprocals[c - a_Panel.iFirst + q];
        NUV_UNROLL for (int k = 0; k < q; ++k)
        {
            vvdFactors[q][k] = q < a_iColumns ? a_vvdDiagonal[q][c + k] : 0.0; // there may be no such row
        }
    }
    for (ptrdiff_t r = a_iFirst; r < a_iRows; ++r)
    {
        double vdFinal[TILE_COLUMNS];
        NUV_UNROLL for (int q = 0; q < TILE_COLUMNS; ++q)
        {
            double dRest = a_Tile.vvdRest[r][q];
            NUV_UNROLL for (int k = 0; k < q; ++k)
            {
                dRest -= vdFinal[k] * vvdFactors[q][k];
            }
            vdFinal[q] = dRest * vdReciprocals[q];
        }
        StoreRow(vdFinal, a_iColumns, a_vvdRows[r] + c);
    }
}

// The panel's columns up to a_iColumnEnd in the rows from a_iRow on. All diagonals of these columns have passed, so
// that sums not yet complete may stand in the matrix.
static void FinishRows(TPanel& a_Panel, ptrdiff_t a_iRow, ptrdiff_t a_iN, ptrdiff_t a_iColumnEnd)
{
    if (a_iRow >= a_iN)
    {
        return;
    }
    double dNone = 0.0;
    double* vvdDiagonal[PANEL_COLUMNS];
    FindRows(a_Panel, a_Panel.iFirst, PANEL_COLUMNS, PANEL_COLUMNS, vvdDiagonal);
    bool bLast = false;
    for (ptrdiff_t k0 = 0; !bLast; k0 += PANEL_DEPTH)
    {
        bLast = a_Panel.iFirst - k0 <= PANEL_DEPTH;
        for (ptrdiff_t c = a_Panel.iFirst; a_Panel.iFirst > PANEL_DEPTH && c < a_iColumnEnd; c += TILE_COLUMNS)
        {
            Pack(vvdDiagonal + (c - a_Panel.iFirst), k0, bLast ? c : k0 + PANEL_DEPTH, FactorsOf(a_Panel, c));
        }
        for (ptrdiff_t j = a_iRow; j < a_iN; j += TILE_ROWS)
        {
            const ptrdiff_t iRows = Lesser(TILE_ROWS, a_iN - j);
            double* vvdRows[TILE_ROWS];
            FindRows(a_Panel, j, iRows, TILE_ROWS, vvdRows);
            for (ptrdiff_t c = a_Panel.iFirst; c < a_iColumnEnd; c += TILE_COLUMNS)
            {
                const ptrdiff_t iColumns = Lesser(TILE_COLUMNS, a_iColumnEnd - c);
                const ptrdiff_t iDepth = (bLast ? c : k0 + PANEL_DEPTH) - k0;
                TTile Tile;
                LoadTile(vvdRows, c, Tile);
                SubtractProducts<false>(k0, iDepth, iRows, vvdRows, FactorsOf(a_Panel, c), Tile, NULL, dNone);
                if (bLast)
                {
                    FinishTile(a_Panel, c, iColumns, vvdDiagonal + (c - a_Panel.iFirst), Tile, 0, iRows, vvdRows);
                    continue;
                }
                for (ptrdiff_t r = 0; r < iRows; ++r)
                {
                    StoreRow(Tile.vvdRest[r], iColumns, vvdRows[r] + c);
                }
            }
        }
    }
}

// Takes all products with the columns before c off one tile of a block, and all squares off a radicand if there is one.
// Packs the factors if a_bPack, or if they do not all fit the panel's scratch.
static void SubtractAll(TPanel& a_Panel, ptrdiff_t c, double* const* a_vvdDiagonal, bool a_bPack, ptrdiff_t a_iRows,
                        double* const* a_vvdRows, TTile& a_Tile, const double* a_vdSquares, double* a_pRadicand)
{
    double* const vdFactors = FactorsOf(a_Panel, c);
    double dNone = 0.0;
    ptrdiff_t iDepth;
    for (ptrdiff_t k0 = 0; k0 < c; k0 += iDepth)
    {
        iDepth = Lesser(PANEL_DEPTH + PANEL_COLUMNS, c - k0);
        if (a_bPack || iDepth < c)
        {
            Pack(a_vvdDiagonal, k0, k0 + iDepth, vdFactors);
        }
        if (a_pRadicand != NULL)
        {
            SubtractProducts<true>(k0, iDepth, a_iRows, a_vvdRows, vdFactors, a_Tile, a_vdSquares + (c - k0),
                                   *a_pRadicand);
        }
        else
        {
            SubtractProducts<false>(k0, iDepth, a_iRows, a_vvdRows, vdFactors, a_Tile, NULL, dNone);
        }
    }
}

// Column q of a tile on the diagonal, in the tile's own rows, once its diagonal has passed.
static void FactoriseTileColumn(ptrdiff_t c, ptrdiff_t q, ptrdiff_t a_iColumns, double* const* a_vvdRows,
                                const TTile& a_Tile, double a_dReciprocal)
{
    for (ptrdiff_t r = q + 1; r < a_iColumns; ++r)
    {
        double dRest = a_Tile.vvdRest[r][q];
        for (ptrdiff_t k = c; k < c + q; ++k)
        {
            dRest -= a_vvdRows[r][k] * a_vvdRows[q][k];
        }
        a_vvdRows[r][c + q] = dRest * a_dReciprocal;
    }
}

// One tile of columns from c on, in the rows c to a_iRowEnd - 1, a block at most. Returns the column of the first
// diagonal that fails, or the one after the tile.
static ptrdiff_t FactoriseBlock(TPanel& a_Panel, ptrdiff_t c, ptrdiff_t a_iRowEnd)
{
    const ptrdiff_t iRows = a_iRowEnd - c;
    const ptrdiff_t iColumns = Lesser(TILE_COLUMNS, iRows);
    double* vvdRows[BLOCK_ROWS];
    FindRows(a_Panel, c, iRows, BLOCK_ROWS, vvdRows);
    TTile vTiles[BLOCK_TILES];
    for (ptrdiff_t r = 0; r < TILE_ROWS; ++r)
    {
        for (ptrdiff_t q = 0; q < TILE_COLUMNS; ++q)
        {
            vTiles[0].vvdRest[r][q] = q < r && r < iRows ? vvdRows[r][c + q] : 0.0; // nothing above the diagonal
        }
    }
    ptrdiff_t iDone = 0;
    for (ptrdiff_t t = 0; t < BLOCK_TILES; ++t) // tile t beside diagonal t
    {
        const ptrdiff_t iFirst = t * TILE_ROWS;
        const bool bDiagonal = t == iDone && t < iColumns;
        double* const vdRow = vvdRows[t];
        double dRadicand = bDiagonal ? SubtractSquares(vdRow[c + t], vdRow, c + t, c) : 0.0;
        if (iFirst < iRows)
        {
            if (t != 0)
            {
                LoadTile(vvdRows + iFirst, c, vTiles[t]);
            }
            SubtractAll(a_Panel, c, vvdRows, t == 0, Lesser(TILE_ROWS, iRows - iFirst), vvdRows + iFirst, vTiles[t],
                        vdRow, bDiagonal ? &dRadicand : NULL);
        }
        else if (bDiagonal)
        {
            dRadicand = SubtractSquares(dRadicand, vdRow, c, 0);
        }
        if (bDiagonal && dRadicand >= 0.0) // not so for a NaN
        {
            vdRow[c + t] = sqrt(dRadicand);
            const double dReciprocal = 1.0 / vdRow[c + t];
            a_Panel.vdReciprocals[c - a_Panel.iFirst + t] = dReciprocal;
            FactoriseTileColumn(c, t, iColumns, vvdRows, vTiles[0], dReciprocal);
            ++iDone;
        }
    }
    for (ptrdiff_t iFirst = 0; iFirst < iRows; iFirst += TILE_ROWS)
    {
        FinishTile(a_Panel, c, iDone, vvdRows, vTiles[iFirst / TILE_ROWS], iFirst == 0 ? iColumns : 0,
                   Lesser(TILE_ROWS, iRows - iFirst), vvdRows + iFirst);
    }
    return c + iDone;
}

static bool FactoriseByTiles(ptrdiff_t a_iN, const TTriangleRows& a_Rows, double* a_vdMatrix)
{
    TPanel Panel;
    Panel.Rows = a_Rows;
    Panel.vdMatrix = a_vdMatrix;
    for (int i = 0; i < PANEL_COLUMNS; ++i)
    {
        Panel.vdReciprocals[i] = 0.0; // read, but not used, for columns that fail
    }
    const bool bCached = a_iN <= CACHED_MATRIX;
    ptrdiff_t iEnd;
    for (Panel.iFirst = 0; Panel.iFirst < a_iN; Panel.iFirst = iEnd)
    {
        iEnd = Lesser(a_iN, Panel.iFirst + (bCached ? TILE_COLUMNS : PANEL_COLUMNS));
        const ptrdiff_t iRowEnd = bCached ? Lesser(a_iN, Panel.iFirst + BLOCK_ROWS) : iEnd;
        ptrdiff_t iDone = Panel.iFirst;
        for (ptrdiff_t c = iDone; c == iDone && c < iEnd; c += TILE_COLUMNS)
        {
            iDone = FactoriseBlock(Panel, c, iRowEnd);
        }
        FinishRows(Panel, iRowEnd, a_iN, iDone);
        if (iDone < iEnd)
        {
            return false;
        }
    }
    return true;
}

#endif // NUV_VECTORS

static bool Factorise(ptrdiff_t a_iN, const TTriangleRows& a_Rows, double* a_vdMatrix)
{
#ifdef NUV_VECTORS
    if (a_iN >= SMALL_MATRIX)
    {
        return FactoriseByTiles(a_iN, a_Rows, a_vdMatrix);
    }
#endif
    return FactorisePlainly(a_iN, a_Rows, a_vdMatrix);
}

// Rows of a substitution whose sums advance together: each alone would wait for its own last difference.
static const int ROWS_AT_ONCE = OPERATIONS_ARE_CALLS ? 1 : 8;

// The solutions i to i + ROWS - 1 of L y = u, where those before are known.
template <int ROWS>
static void SubstituteRowsForward(ptrdiff_t i, const TTriangleRows& a_Rows, const double* a_vdFactor,
                                  double* a_vdVector)
{
    const double* vvdRows[ROWS];
    double vdRest[ROWS];
    NUV_UNROLL for (int r = 0; r < ROWS; ++r)
    {
        vvdRows[r] = a_vdFactor + RowStart(a_Rows, i + r);
        vdRest[r] = a_vdVector[i + r];
    }
    for (ptrdiff_t k = 0; k < i; ++k)
    {
        const double dSolution = a_vdVector[k];
        NUV_UNROLL for (int r = 0; r < ROWS; ++r)
        {
            vdRest[r] -= vvdRows[r][k] * dSolution;
        }
    }
    NUV_UNROLL for (int r = 0; r < ROWS; ++r)
    {
        NUV_UNROLL for (int k = 0; k < r; ++k)
        {
            vdRest[r] -= vvdRows[r][i + k] * vdRest[k];
        }
        vdRest[r] /= vvdRows[r][i + r];
        a_vdVector[i + r] = vdRest[r];
    }
}

// L y = u in place.
static void SubstituteForward(ptrdiff_t a_iN, const TTriangleRows& a_Rows, const double* a_vdFactor, double* a_vdVector)
{
    ptrdiff_t i = 0;
    for (; a_iN - i >= ROWS_AT_ONCE; i += ROWS_AT_ONCE) // the least int minus that would overflow
    {
        SubstituteRowsForward<ROWS_AT_ONCE>(i, a_Rows, a_vdFactor, a_vdVector);
    }
    for (; !OPERATIONS_ARE_CALLS && i < a_iN; ++i)
    {
        SubstituteRowsForward<1>(i, a_Rows, a_vdFactor, a_vdVector);
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
    for (ptrdiff_t iEnd = iN; iEnd >= 1; --iEnd) // the least int has no number before it
    {
        const ptrdiff_t i = iEnd - 1;
        const double* pElement = a_vdFactor + i * iN + i; // walks down column i
        const double dDiagonal = *pElement;
        double dRest = a_vdVector[i];
        for (ptrdiff_t k = i + 1; k < iN; ++k) // ascending: the first term needs the solution found last
        {
            pElement += iN;
            dRest -= *pElement * a_vdVector[k];
        }
        a_vdVector[i] = dRest / dDiagonal;
    }
}

bool CholeskyLowTri(int a_iUnknowns, double* a_vdMatrix)
{
    return Factorise(a_iUnknowns, PACKED_ROWS, a_vdMatrix);
}

// The solutions k to k - ROWS + 1 of L^T x = y, packed, and what they take off the sums before them.
template <typename TVector, int ROWS>
static NUV_INLINE void SubstituteRowsBackward(ptrdiff_t k, const double* a_vdFactor, double* a_vdVector)
{
    const ptrdiff_t LANES = sizeof(TVector) / sizeof(double);
    const double* vvdRows[ROWS];
    double vdSolution[ROWS];
    NUV_UNROLL for (int r = 0; r < ROWS; ++r)
    {
        vvdRows[r] = a_vdFactor + RowStart(PACKED_ROWS, k - r);
        double dRest = a_vdVector[k - r];
        NUV_UNROLL for (int q = 0; q < r; ++q) // unreachable: the loop of the first row is empty
        {
            dRest -= vvdRows[q][k - r] * vdSolution[q];
        }
        vdSolution[r] = dRest / vvdRows[r][k - r];
        a_vdVector[k - r] = vdSolution[r];
    }
    const ptrdiff_t iCount = k + 1 - ROWS;
    ptrdiff_t i = 0;
    for (; i <= iCount - LANES; i += LANES)
    {
        TVector Rest;
        Load(a_vdVector + i, Rest);
        NUV_UNROLL for (int r = 0; r < ROWS; ++r)
        {
            TVector Row;
            Load(vvdRows[r] + i, Row);
            Rest -= Row * vdSolution[r];
        }
        Store(Rest, a_vdVector + i);
    }
    for (; i < iCount; ++i)
    {
        NUV_UNROLL for (int r = 0; r < ROWS; ++r)
        {
            a_vdVector[i] -= vvdRows[r][i] * vdSolution[r];
        }
    }
}

// L^T x = y in place, packed; descending: row k serves all the sums before it.
template <typename TVector>
static NUV_INLINE void SubstituteBackward(ptrdiff_t a_iN, const double* a_vdFactor, double* a_vdVector)
{
    ptrdiff_t iEnd = a_iN;
    for (; iEnd >= ROWS_AT_ONCE; iEnd -= ROWS_AT_ONCE)
    {
        SubstituteRowsBackward<TVector, ROWS_AT_ONCE>(iEnd - 1, a_vdFactor, a_vdVector);
    }
    for (; !OPERATIONS_ARE_CALLS && iEnd >= 1; --iEnd)
    {
        SubstituteRowsBackward<TVector, 1>(iEnd - 1, a_vdFactor, a_vdVector);
    }
}

#ifdef NUV_WIDE_VECTORS
NUV_WIDE_VECTORS static void SubstituteBackwardByFours(ptrdiff_t a_iN, const double* a_vdFactor, double* a_vdVector)
{
    SubstituteBackward<TFour>(a_iN, a_vdFactor, a_vdVector);
}
#endif

void SolveCholLowTri(int a_iUnknowns, const double* a_vdFactor, double* a_vdVector)
{
    SubstituteForward(a_iUnknowns, PACKED_ROWS, a_vdFactor, a_vdVector);
#ifdef NUV_WIDE_VECTORS
    if (__builtin_cpu_supports("avx2")) // host only: a processor has AVX2 or does not have it
    {
        SubstituteBackwardByFours(a_iUnknowns, a_vdFactor, a_vdVector);
        return;
    }
#endif
    SubstituteBackward<TNative>(a_iUnknowns, a_vdFactor, a_vdVector);
}

} // namespace nuv
