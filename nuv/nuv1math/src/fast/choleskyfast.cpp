// choleskyfast.cpp: the Cholesky family with vectors and with several rows at once.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fast/choleskyfast.h"

#include "fast/vectors.h"

#ifdef NUV_VECTORS

#include <math.h>
#include <stddef.h>
#include <string.h>

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// An observation by vectors
//
// Equals     the dense UpdateNormMatrixLowTri.
// Method     As many rows of the matrix as a vector has elements take their products together, a vector of each row at
//            a time. What is left of these rows is a triangle of known size.
// Order      Every element takes one product. The order of the elements does not matter.
// Pays       always. 100 unknowns: 0.60 us with vectors of four, 0.86 us with pairs, 1.76 us in the plain form.
// ---------------------------------------------------------------------------------------------------------------------

// Rows i to i + LANES - 1. Row i begins at a_vdMatrix. Returns the start of the row behind.
// by processor: each one runs the instance of one width
template <typename TVector>
static NUV_INLINE double* AddRowsTogetherBy(int i, double* __restrict a_vdMatrix, const double* __restrict a_vdRow)
{
    enum
    {
        LANES = sizeof(TVector) / sizeof(double)
    };
    double* vvdRows[LANES];
    NUV_UNROLL for (int r = 0; r < LANES; ++r)
    {
        vvdRows[r] = a_vdMatrix;
        a_vdMatrix += i + r + 1;
    }
    for (int j = 0; j < i; j += LANES)
    {
        TVector Values;
        Load(a_vdRow + j, Values);
        NUV_UNROLL for (int r = 0; r < LANES; ++r)
        {
            TVector Sums;
            Load(vvdRows[r] + j, Sums);
            Sums += a_vdRow[i + r] * Values;
            Store(Sums, vvdRows[r] + j);
        }
    }
    NUV_UNROLL for (int r = 0; r < LANES; ++r)
    {
        NUV_UNROLL for (int q = 0; q <= r; ++q)
        {
            vvdRows[r][i + q] += a_vdRow[i + r] * a_vdRow[i + q];
        }
    }
    return a_vdMatrix;
}

// __restrict: the observation does not overlap the matrix.
// by processor: each one runs the instance of one width
template <typename TVector>
static NUV_INLINE void AddRowsBy(int a_iUnknowns, double* __restrict a_vdMatrix, const double* __restrict a_vdRow)
{
    const int LANES = sizeof(TVector) / sizeof(double); // equivalent: without room for a vector the rows go one by one
    int i = 0;
    for (; a_iUnknowns - i >= LANES; i += LANES)
    {
        a_vdMatrix = AddRowsTogetherBy<TVector>(i, a_vdMatrix, a_vdRow);
    }
    for (; a_iUnknowns - i >= 2; i += 2) // vectors of four can leave a pair
    {
        a_vdMatrix = AddRowsTogetherBy<TPair>(i, a_vdMatrix, a_vdRow);
    }
    for (; i < a_iUnknowns; ++i)
    {
        for (int j = 0; j <= i; ++j)
        {
            a_vdMatrix[j] += a_vdRow[i] * a_vdRow[j];
        }
        a_vdMatrix += i + 1;
    }
}

// by processor: it has one width of vectors
NUV_BY_WIDTH(AddRows, (int a_iUnknowns, double* a_vdMatrix, const double* a_vdRow), (a_iUnknowns, a_vdMatrix, a_vdRow))

void AddObservationByVectors(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, const double* a_vdRow,
                             double a_dValue)
{
    for (int i = 0; i < a_iUnknowns; ++i)
    {
        a_vdVector[i] += a_vdRow[i] * a_dValue;
    }
    AddRows(a_iUnknowns, a_vdMatrix, a_vdRow);
}

// ---------------------------------------------------------------------------------------------------------------------
// Factorisation by tiles
//
// Equals     Factorise of cholesky.cpp, also in what a failure leaves.
// Method     The sums of a column do not depend on each other. Those of the next columns depend on them only through
//            their last products. So a tile of eight rows and columns subtracts its products together, one k after the
//            other. It has as many columns as rows: a vector takes several columns of a row, and the factor of the row
//            must be broadcast to it, which costs a load. The columns form panels of several tiles. First comes a block
//            of rows that holds the diagonal, then the rows below it.
// Order      Every element subtracts its products in ascending order, as in the plain form. The square root of a
//            diagonal element needs its whole sum. That sum descends and begins with an element of the column before.
//            So it advances while another tile subtracts its products.
// Failure    Nothing of a column is stored before its diagonal has passed: until then its sums stay in scratch. The
//            columns before the failing one are then finished in all rows.
// Cache      The factors of the columns are packed in the order of their use, PANEL_DEPTH of them at a time. A matrix
//            that fits the cache takes panels of one tile and blocks that reach below them, so that every diagonal has
//            a tile beside it.
// Pays       from TILES_PAY_FROM unknowns on: 1.1 us, 1.3 us in the plain form. 100 unknowns: 15 us with vectors of
//            eight, 16 us with fours, 26 us with pairs, 55 us in the plain form; 500 unknowns: 1.1 ms, 1.4 ms, 2.5 ms,
//            and 16 ms in the plain form. Vectors of eight pay from EIGHTS_PAY_FROM unknowns on.
// ---------------------------------------------------------------------------------------------------------------------

namespace {

enum
{
    TILE_ROWS = 8,
    TILE_COLUMNS = TILE_ROWS,
    BLOCK_TILES = TILE_COLUMNS, // one beside each diagonal of a tile
    BLOCK_ROWS = BLOCK_TILES * TILE_ROWS,
    PANEL_TILES = 4,                            // equivalent: any number gives the same bits
    PANEL_COLUMNS = PANEL_TILES * TILE_COLUMNS, // equivalent: no more than BLOCK_ROWS; fewer give the same bits
    PANEL_DEPTH = 64,                           // equivalent: any depth gives the same bits
    TILE_DEPTH = PANEL_DEPTH + PANEL_COLUMNS,
    EIGHTS_PAY_FROM = 80, // equivalent: unknowns; vectors of either width give the same bits
    CACHED_MATRIX = 160   // equivalent: up to so many unknowns the cache holds the matrix
};

// What is left of a tile's elements when some products are subtracted.
struct TTile
{
    double vvdRest[TILE_ROWS][TILE_COLUMNS];
} __attribute__((aligned(64)));

// The columns of the matrix from iFirst on, with what all their rows need.
struct TPanel
{
    TTriangleRows Rows;
    double* vdMatrix;
    bool bEights;
    ptrdiff_t iFirst;
    double vvdFactors[PANEL_TILES][TILE_DEPTH * TILE_COLUMNS]; // by tile; element k of its columns
    double vdReciprocals[PANEL_COLUMNS];
} __attribute__((aligned(64)));

// The products that a tile subtracts: factors iFrom to iFrom + iCount - 1 of some rows with those of the tile's
// columns.
struct TProducts
{
    bool bEights; // whether vectors of eight pay
    ptrdiff_t iFrom;
    ptrdiff_t iCount;
    ptrdiff_t iRows;
    const double* const* vvdRows;
    const double* vdColumns; // packed: TILE_COLUMNS for each factor
};

// A diagonal element that subtracts its squares meanwhile, descending from vdSquares[-1] on.
struct TDiagonal
{
    const double* vdSquares;
    double dRadicand;
};

} // namespace

// What is left of LANES rows of a tile, as vectors. As many sums fit the registers.
template <typename TVector> struct TRest
{
    enum
    {
        LANES = sizeof(TVector) / sizeof(double),
        SQUARES = TILE_COLUMNS / LANES // a row has one vector of each square of elements
    };
    TVector vvSquares[SQUARES][LANES];
};

// by processor: each one runs the instance of one width
template <typename TVector> static NUV_INLINE void LoadRow(const double* a_vdFrom, int r, TRest<TVector>& a_Rest)
{
    NUV_UNROLL for (int s = 0; s < TRest<TVector>::SQUARES; ++s)
    {
        Load(a_vdFrom + s * TRest<TVector>::LANES, a_Rest.vvSquares[s][r]);
    }
}

// by processor: each one runs the instance of one width
template <typename TVector> static NUV_INLINE void StoreRow(const TRest<TVector>& a_Rest, int r, double* a_vdTo)
{
    NUV_UNROLL for (int s = 0; s < TRest<TVector>::SQUARES; ++s)
    {
        Store(a_Rest.vvSquares[s][r], a_vdTo + s * TRest<TVector>::LANES);
    }
}

// Subtracts the products from the rows of a tile from iFirst on. A sum waits for its own last difference; several
// independent sums together keep the adders busy. The sum of a diagonal element advances beside them at little cost.
// by processor: each one runs the instance of one width
template <bool DIAGONAL, typename TVector>
static NUV_INLINE void SubtractFromRows(const TProducts& a_Products, ptrdiff_t a_iFirst, TRest<TVector>& a_Rest,
                                        TDiagonal& a_Diagonal)
{
    enum
    {
        LANES = TRest<TVector>::LANES,
        SQUARES = TRest<TVector>::SQUARES
    };
    const double* vvdRows[LANES];
    NUV_UNROLL for (int r = 0; r < LANES; ++r)
    {
        vvdRows[r] = a_Products.vvdRows[a_iFirst + r] + a_Products.iFrom;
    }
    TRest<TVector> Rest = a_Rest;
    double dRadicand = DIAGONAL ? a_Diagonal.dRadicand : 0.0;
    for (ptrdiff_t k = 0; k < a_Products.iCount; ++k)
    {
        TVector vColumns[SQUARES];
        NUV_UNROLL for (int s = 0; s < SQUARES; ++s)
        {
            Load(a_Products.vdColumns + k * TILE_COLUMNS + s * LANES, vColumns[s]);
        }
        NUV_UNROLL for (int r = 0; r < LANES; ++r)
        {
            NUV_UNROLL for (int s = 0; s < SQUARES; ++s)
            {
                Rest.vvSquares[s][r] -= vColumns[s] * vvdRows[r][k];
            }
        }
        if (DIAGONAL)
        {
            dRadicand -= a_Diagonal.vdSquares[-1 - k] * a_Diagonal.vdSquares[-1 - k];
        }
    }
    if (DIAGONAL)
    {
        a_Diagonal.dRadicand = dRadicand;
    }
    a_Rest = Rest;
}

// Subtracts the products from a tile, and the squares of a diagonal element beside its first rows.
// by processor: each one runs the instance of one width
template <bool DIAGONAL, typename TVector>
static NUV_INLINE void SubtractFromTile(const TProducts& a_Products, TTile& a_Tile, TDiagonal& a_Diagonal)
{
    enum
    {
        LANES = TRest<TVector>::LANES
    };
    for (ptrdiff_t iFirst = 0; iFirst < TILE_ROWS && iFirst < a_Products.iRows; iFirst += LANES) // equivalent: excess
    {
        TRest<TVector> Rest;
        NUV_UNROLL for (int r = 0; r < LANES; ++r)
        {
            LoadRow(a_Tile.vvdRest[iFirst + r], r, Rest);
        }
        if (DIAGONAL && iFirst == 0)
        {
            SubtractFromRows<true>(a_Products, 0, Rest, a_Diagonal);
        }
        else
        {
            SubtractFromRows<false>(a_Products, iFirst, Rest, a_Diagonal);
        }
        NUV_UNROLL for (int r = 0; r < LANES; ++r)
        {
            StoreRow(Rest, r, a_Tile.vvdRest[iFirst + r]);
        }
    }
}

// by processor: each one runs the instance of one width
template <typename TVector>
static NUV_INLINE void SubtractProductsBy(const TProducts& a_Products, TTile& a_Tile, TDiagonal* a_pDiagonal)
{
    TDiagonal None = {NULL, 0.0};
    if (a_pDiagonal != NULL)
    {
        SubtractFromTile<true, TVector>(a_Products, a_Tile, *a_pDiagonal);
    }
    else
    {
        SubtractFromTile<false, TVector>(a_Products, a_Tile, None);
    }
}

// by processor: it has one width of vectors
NUV_BY_WIDTH_OR_EIGHT(SubtractProducts, a_Products.bEights,
                      (const TProducts& a_Products, TTile& a_Tile, TDiagonal* a_pDiagonal),
                      (a_Products, a_Tile, a_pDiagonal))

static ptrdiff_t Lesser(ptrdiff_t a_iFirst, ptrdiff_t a_iSecond)
{
    return a_iFirst < a_iSecond ? a_iFirst : a_iSecond;
}

// Starts of a_iCount rows from row j on. There are a_iRows of them. The last one stands in for those that do not exist:
// it is read for them, and nothing is stored.
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

// The packed factors of the tile of columns that begins at column c.
static double* FactorsOf(TPanel& a_Panel, ptrdiff_t c)
{
    return a_Panel.vvdFactors[(c - a_Panel.iFirst) / TILE_COLUMNS];
}

// Packs elements k0 to k1 - 1 of the rows that have the numbers of a tile's columns.
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

// The tile on the diagonal, of which only the elements below the diagonal are read. The rest is filled with zeros.
static void LoadDiagonalTile(double* const* a_vvdRows, ptrdiff_t c, ptrdiff_t a_iRows, TTile& a_Tile)
{
    for (ptrdiff_t r = 0; r < TILE_ROWS; ++r) // equivalent: row 0 has nothing below its diagonal
    {
        for (ptrdiff_t q = 0; q < TILE_COLUMNS; ++q)
        {
            a_Tile.vvdRest[r][q] = q < r && r < a_iRows ? a_vvdRows[r][c + q] : 0.0;
        }
    }
}

namespace {

// What finishes tiles: the columns from c on, up to iColumnEnd, and the rows on the diagonal from row c on.
struct TFinish
{
    bool bEights;
    ptrdiff_t c;
    ptrdiff_t iColumnEnd;
    double* const* vvdDiagonal;
    const double* vdReciprocals;
};

} // namespace

// Finishes rows of a tile that are below the diagonal: subtracts the products with the tile's own columns, and scales.
// The rows become the elements of vectors, so that each column follows the one before without shuffles.
// by processor: each one runs the instance of one width
template <typename TVector> static NUV_INLINE void FinishRest(const TFinish& a_Finish, TRest<TVector>& a_Rest)
{
    enum
    {
        LANES = TRest<TVector>::LANES,
        SQUARES = TRest<TVector>::SQUARES
    };
    NUV_UNROLL for (int s = 0; s < SQUARES; ++s)
    {
        Transpose(a_Rest.vvSquares[s]);
    }
    NUV_UNROLL for (int q = 0; q < TILE_COLUMNS; ++q)
    {
        const double* const vdFactors = a_Finish.vvdDiagonal[q] + a_Finish.c;
        TVector Column = a_Rest.vvSquares[q / LANES][q % LANES];
        NUV_UNROLL for (int k = 0; k < q; ++k)
        {
            Column -= a_Rest.vvSquares[k / LANES][k % LANES] * vdFactors[k];
        }
        a_Rest.vvSquares[q / LANES][q % LANES] = Column * a_Finish.vdReciprocals[q];
    }
    NUV_UNROLL for (int s = 0; s < SQUARES; ++s)
    {
        Transpose(a_Rest.vvSquares[s]);
    }
}

// Loads rows of a tile whose columns begin at c.
// by processor: each one runs the instance of one width
template <typename TVector>
static NUV_INLINE void LoadRest(double* const* a_vvdRows, ptrdiff_t c, TRest<TVector>& a_Rest)
{
    NUV_UNROLL for (int r = 0; r < TRest<TVector>::LANES; ++r)
    {
        LoadRow(a_vvdRows[r] + c, r, a_Rest);
    }
}

// Stores the first a_iColumns elements of rows of a tile.
// by processor: each one runs the instance of one width
template <typename TVector>
static NUV_INLINE void StoreRest(const TRest<TVector>& a_Rest, ptrdiff_t c, ptrdiff_t a_iColumns,
                                 double* const* a_vvdRows)
{
    NUV_UNROLL for (int r = 0; r < TRest<TVector>::LANES; ++r)
    {
        if (a_iColumns >= TILE_COLUMNS) // equivalent: both store the same
        {
            StoreRow(a_Rest, r, a_vvdRows[r] + c);
            continue;
        }
        double vdRow[TILE_COLUMNS];
        StoreRow(a_Rest, r, vdRow);
        for (ptrdiff_t q = 0; q < a_iColumns; ++q)
        {
            a_vvdRows[r][c + q] = vdRow[q];
        }
    }
}

// Finishes a tile of a block and stores it.
// by processor: each one runs the instance of one width
template <typename TVector>
static NUV_INLINE void FinishTileBy(const TFinish& a_Finish, const TTile& a_Tile, ptrdiff_t a_iRows,
                                    double* const* a_vvdRows)
{
    for (ptrdiff_t iFirst = 0; iFirst < TILE_ROWS && iFirst < a_iRows; iFirst += TRest<TVector>::LANES)
    {
        TRest<TVector> Rest;
        NUV_UNROLL for (int r = 0; r < TRest<TVector>::LANES; ++r)
        {
            LoadRow(a_Tile.vvdRest[iFirst + r], r, Rest);
        }
        FinishRest(a_Finish, Rest);
        StoreRest(Rest, a_Finish.c, a_Finish.iColumnEnd - a_Finish.c, a_vvdRows + iFirst);
    }
}

// by processor: it has one width of vectors
NUV_BY_WIDTH_OR_EIGHT(FinishTile, a_Finish.bEights,
                      (const TFinish& a_Finish, const TTile& a_Tile, ptrdiff_t a_iRows, double* const* a_vvdRows),
                      (a_Finish, a_Tile, a_iRows, a_vvdRows))

// One pass over the rows of a tile: subtracts the products, and finishes the elements if a_bLast is set. Otherwise the
// sums stay in the matrix. All rows are subtracted before one is finished: a row that goes through both would leave the
// kernel too few registers.
// by processor: each one runs the instance of one width
template <typename TVector>
static NUV_INLINE void PassRowsBy(const TProducts& a_Products, const TFinish& a_Finish, bool a_bLast,
                                  double* const* a_vvdRows)
{
    TDiagonal None = {NULL, 0.0};
    for (ptrdiff_t iFirst = 0; iFirst < TILE_ROWS && iFirst < a_Products.iRows; iFirst += TRest<TVector>::LANES)
    {
        TRest<TVector> Rest;
        LoadRest(a_vvdRows + iFirst, a_Finish.c, Rest);
        SubtractFromRows<false>(a_Products, iFirst, Rest, None);
        StoreRest(Rest, a_Finish.c, a_Finish.iColumnEnd - a_Finish.c, a_vvdRows + iFirst);
    }
    for (ptrdiff_t iFirst = 0; a_bLast && iFirst < TILE_ROWS && iFirst < a_Products.iRows;
         iFirst += TRest<TVector>::LANES)
    {
        TRest<TVector> Rest;
        LoadRest(a_vvdRows + iFirst, a_Finish.c, Rest);
        FinishRest(a_Finish, Rest);
        StoreRest(Rest, a_Finish.c, a_Finish.iColumnEnd - a_Finish.c, a_vvdRows + iFirst);
    }
}

// by processor: it has one width of vectors
NUV_BY_WIDTH_OR_EIGHT(PassRows, a_Finish.bEights,
                      (const TProducts& a_Products, const TFinish& a_Finish, bool a_bLast, double* const* a_vvdRows),
                      (a_Products, a_Finish, a_bLast, a_vvdRows))

// One pass over TILE_ROWS rows (a_iRows of them exist): the panel's columns up to a_iColumnEnd subtract their products
// from factor k0 on. The last pass finishes the elements.
static void FinishRowsPass(TPanel& a_Panel, double* const* a_vvdDiagonal, ptrdiff_t a_iColumnEnd, ptrdiff_t k0,
                           bool a_bLast, ptrdiff_t a_iRows, double* const* a_vvdRows)
{
    for (ptrdiff_t c = a_Panel.iFirst; c < a_iColumnEnd; c += TILE_COLUMNS)
    {
        const ptrdiff_t iTile = c - a_Panel.iFirst;
        const TProducts Products = {a_Panel.bEights, k0,        (a_bLast ? c : k0 + PANEL_DEPTH) - k0,
                                    a_iRows,         a_vvdRows, FactorsOf(a_Panel, c)};
        const TFinish Finish = {a_Panel.bEights, c, a_iColumnEnd, a_vvdDiagonal + iTile, a_Panel.vdReciprocals + iTile};
        PassRows(Products, Finish, a_bLast, a_vvdRows);
    }
}

// Finishes the panel's columns up to a_iColumnEnd in the rows from a_iRow on. All diagonals of these columns have
// passed, so incomplete sums may stand in the matrix.
static void FinishRows(TPanel& a_Panel, ptrdiff_t a_iRow, ptrdiff_t a_iN, ptrdiff_t a_iColumnEnd)
{
    if (a_iRow >= a_iN)
    {
        return;
    }
    double* vvdDiagonal[PANEL_COLUMNS];
    FindRows(a_Panel, a_Panel.iFirst, PANEL_COLUMNS, PANEL_COLUMNS, vvdDiagonal);
    bool bLast = false;
    for (ptrdiff_t k0 = 0; !bLast; k0 += PANEL_DEPTH)
    {
        bLast = a_Panel.iFirst - k0 <= PANEL_DEPTH;
        if (a_Panel.iFirst > PANEL_DEPTH) // equivalent: otherwise the block has packed all factors
        {
            for (ptrdiff_t c = a_Panel.iFirst; c < a_iColumnEnd; c += TILE_COLUMNS)
            {
                Pack(vvdDiagonal + (c - a_Panel.iFirst), k0, bLast ? c : k0 + PANEL_DEPTH, FactorsOf(a_Panel, c));
            }
        }
        for (ptrdiff_t j = a_iRow; j < a_iN; j += TILE_ROWS)
        {
            const ptrdiff_t iRows = Lesser(TILE_ROWS, a_iN - j);
            double* vvdRows[TILE_ROWS];
            FindRows(a_Panel, j, iRows, TILE_ROWS, vvdRows);
            FinishRowsPass(a_Panel, vvdDiagonal, a_iColumnEnd, k0, bLast, iRows, vvdRows);
        }
    }
}

// Subtracts all products with the columns before c from one tile of a block, and all squares from a diagonal element if
// there is one (not null; its squares end before vdSquares). Packs the factors if a_bPack is set, or if the panel's
// scratch does not hold them all.
static void SubtractAll(TPanel& a_Panel, ptrdiff_t c, double* const* a_vvdDiagonal, bool a_bPack, ptrdiff_t a_iRows,
                        double* const* a_vvdRows, TTile& a_Tile, TDiagonal* a_pDiagonal)
{
    // Factors that the last pass over the rows below needs stay where they are. Otherwise all the scratch is free.
    const bool bKept = a_Panel.iFirst <= PANEL_DEPTH;
    double* const vdFactors = bKept ? FactorsOf(a_Panel, c) : a_Panel.vvdFactors[0];
    const ptrdiff_t iMost = bKept ? TILE_DEPTH : PANEL_TILES * TILE_DEPTH; // equivalent: any depth gives the same bits
    ptrdiff_t iDepth;
    for (ptrdiff_t k0 = 0; k0 < c; k0 += iDepth)
    {
        iDepth = Lesser(iMost, c - k0);
        if (a_bPack || iDepth < c) // equivalent: packing twice gives the same
        {
            Pack(a_vvdDiagonal, k0, k0 + iDepth, vdFactors);
        }
        const TProducts Products = {a_Panel.bEights, k0, iDepth, a_iRows, a_vvdRows, vdFactors};
        SubtractProducts(Products, a_Tile, a_pDiagonal);
        if (a_pDiagonal != NULL)
        {
            a_pDiagonal->vdSquares -= iDepth;
        }
    }
}

// Subtracts the squares of elements a_iFrom - 1 down to a_iTo of a row.
static double SubtractSquares(double a_dRadicand, const double* a_vdRow, ptrdiff_t a_iFrom, ptrdiff_t a_iTo)
{
    for (ptrdiff_t k = a_iFrom - 1; k >= a_iTo; --k)
    {
        a_dRadicand -= a_vdRow[k] * a_vdRow[k];
    }
    return a_dRadicand;
}

// Column q of the tile on the diagonal, in the rows below q of the tile, once its diagonal has passed.
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

// Tile t of a block subtracts its products. Diagonal t of the block subtracts its squares meanwhile, if a_bDiagonal.
// Returns the radicand of that diagonal.
static double SubtractTileAndDiagonal(TPanel& a_Panel, ptrdiff_t c, ptrdiff_t t, bool a_bDiagonal, ptrdiff_t a_iRows,
                                      double** a_vvdRows, TTile& a_Tile)
{
    const ptrdiff_t iFirst = t * TILE_ROWS;
    double* const vdRow = a_vvdRows[t];
    TDiagonal Diagonal = {vdRow + c, a_bDiagonal ? SubtractSquares(vdRow[c + t], vdRow, c + t, c) : 0.0};
    if (iFirst < a_iRows)
    {
        if (t == 0)
        {
            LoadDiagonalTile(a_vvdRows, c, a_iRows, a_Tile);
        }
        else
        {
            LoadTile(a_vvdRows + iFirst, c, a_Tile);
        }
        SubtractAll(a_Panel, c, a_vvdRows, t == 0, Lesser(TILE_ROWS, a_iRows - iFirst), a_vvdRows + iFirst, a_Tile,
                    a_bDiagonal ? &Diagonal : NULL);
        return Diagonal.dRadicand;
    }
    return a_bDiagonal ? SubtractSquares(Diagonal.dRadicand, vdRow, c, 0) : 0.0; // equivalent: 0.0 is not read
}

// One tile of columns from c on, in rows c to a_iRowEnd - 1, which are a block at most. Returns the column of the first
// diagonal that fails, or the column behind the tile.
static ptrdiff_t FactoriseBlock(TPanel& a_Panel, ptrdiff_t c, ptrdiff_t a_iRowEnd)
{
    const ptrdiff_t iRows = a_iRowEnd - c;
    const ptrdiff_t iColumns = Lesser(TILE_COLUMNS, iRows);
    double* vvdRows[BLOCK_ROWS];
    FindRows(a_Panel, c, iRows, BLOCK_ROWS, vvdRows);
    TTile vTiles[BLOCK_TILES];
    ptrdiff_t iDone = 0;                        // diagonals that have passed
    for (ptrdiff_t t = 0; t < BLOCK_TILES; ++t) // equivalent: a block has no more rows
    {
        const bool bDiagonal = t == iDone && t < iColumns;
        const double dRadicand = SubtractTileAndDiagonal(a_Panel, c, t, bDiagonal, iRows, vvdRows, vTiles[t]);
        if (bDiagonal && dRadicand >= 0.0) // a NaN fails too
        {
            const double dRoot = sqrt(dRadicand);
            const double dReciprocal = 1.0 / dRoot;
            vvdRows[t][c + t] = dRoot;
            a_Panel.vdReciprocals[c - a_Panel.iFirst + t] = dReciprocal;
            FactoriseTileColumn(c, t, iColumns, vvdRows, vTiles[0], dReciprocal);
            ++iDone;
        }
    }
    const TFinish Finish = {a_Panel.bEights, c, c + iDone, vvdRows, a_Panel.vdReciprocals + (c - a_Panel.iFirst)};
    for (ptrdiff_t iFirst = TILE_ROWS; iFirst < iRows; iFirst += TILE_ROWS) // the tile on the diagonal is finished
    {
        FinishTile(Finish, vTiles[iFirst / TILE_ROWS], iRows - iFirst, vvdRows + iFirst);
    }
    return c + iDone;
}

bool FactoriseByTiles(ptrdiff_t a_iN, const TTriangleRows& a_Rows, double* a_vdMatrix)
{
    TPanel Panel;
    Panel.Rows = a_Rows;
    Panel.vdMatrix = a_vdMatrix;
    Panel.bEights = a_iN >= EIGHTS_PAY_FROM; // equivalent: vectors of either width give the same bits
    for (int i = 0; i < PANEL_COLUMNS; ++i)  // equivalent: columns that fail read these values, and do not use them
    {
        Panel.vdReciprocals[i] = 0.0; // equivalent: columns that fail read theirs, and do not use it
    }
    const bool bCached = a_iN <= CACHED_MATRIX; // equivalent: panels of either size give the same bits
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

// ---------------------------------------------------------------------------------------------------------------------
// Substitutions with several rows together
//
// Equals     SubstituteForward of cholesky.cpp and the backward loop of SolveCholLowTri.
// Method     The sums of ROWS_TOGETHER rows advance together: the sum of one row alone waits for its own last
//            difference. The backward form also subtracts the products from the sums before the rows, a vector of sums
//            at a time. The factors of the forward form do not stand side by side, so it has no vectors.
// Order      Every sum subtracts its products in the order of the plain form.
// Pays       from ROWS_TOGETHER unknowns on. SolveCholLowTri with 100 unknowns: 2.1 us, 4.1 us in the plain form. The
//            backward half of SolveChol cannot gain: each of its sums begins with the solution that was found last.
// ---------------------------------------------------------------------------------------------------------------------

// The solutions i to i + ROWS_TOGETHER - 1 of L y = u. Those before are known.
static NUV_INLINE void SolveRowsForward(ptrdiff_t i, const TTriangleRows& a_Rows, const double* a_vdFactor,
                                        double* a_vdVector)
{
    const double* vvdRows[ROWS_TOGETHER];
    double vdRest[ROWS_TOGETHER];
    NUV_UNROLL for (int r = 0; r < ROWS_TOGETHER; ++r)
    {
        vvdRows[r] = a_vdFactor + RowStart(a_Rows, i + r);
        vdRest[r] = a_vdVector[i + r];
    }
    for (ptrdiff_t k = 0; k < i; ++k)
    {
        const double dSolution = a_vdVector[k];
        NUV_UNROLL for (int r = 0; r < ROWS_TOGETHER; ++r)
        {
            vdRest[r] -= vvdRows[r][k] * dSolution;
        }
    }
    NUV_UNROLL for (int r = 0; r < ROWS_TOGETHER; ++r)
    {
        NUV_UNROLL for (int k = 0; k < r; ++k)
        {
            vdRest[r] -= vvdRows[r][i + k] * vdRest[k];
        }
        vdRest[r] /= vvdRows[r][i + r];
        a_vdVector[i + r] = vdRest[r];
    }
}

ptrdiff_t SubstituteForwardTogether(ptrdiff_t a_iN, const TTriangleRows& a_Rows, const double* a_vdFactor,
                                    double* a_vdVector)
{
    ptrdiff_t i = 0;
    for (; a_iN - i >= ROWS_TOGETHER; i += ROWS_TOGETHER) // equivalent: the rows that are left go one by one
    {
        SolveRowsForward(i, a_Rows, a_vdFactor, a_vdVector);
    }
    return i;
}

// The solutions k down to k - ROWS_TOGETHER + 1 of L^T x = y. a_vvdRows receives their rows of the factor.
static NUV_INLINE void SolveRowsBackward(ptrdiff_t k, const double* a_vdFactor, double* a_vdVector,
                                         const double** a_vvdRows, double* a_vdSolution)
{
    NUV_UNROLL for (int r = 0; r < ROWS_TOGETHER; ++r)
    {
        a_vvdRows[r] = a_vdFactor + RowStart(PACKED_ROWS, k - r);
        double dRest = a_vdVector[k - r];
        NUV_UNROLL for (int q = 0; q < r; ++q)
        {
            dRest -= a_vvdRows[q][k - r] * a_vdSolution[q];
        }
        a_vdSolution[r] = dRest / a_vvdRows[r][k - r];
        a_vdVector[k - r] = a_vdSolution[r];
    }
}

template <typename TVector>
static NUV_INLINE void SubstituteBackwardBy(ptrdiff_t a_iN, const double* a_vdFactor, double* a_vdVector)
{
    const ptrdiff_t LANES = sizeof(TVector) / sizeof(double);
    for (ptrdiff_t iEnd = a_iN; iEnd >= ROWS_TOGETHER; iEnd -= ROWS_TOGETHER)
    {
        const double* vvdRows[ROWS_TOGETHER];
        double vdSolution[ROWS_TOGETHER];
        SolveRowsBackward(iEnd - 1, a_vdFactor, a_vdVector, vvdRows, vdSolution);
        const ptrdiff_t iCount = iEnd - ROWS_TOGETHER;
        ptrdiff_t i = 0;
        for (; i <= iCount - LANES; i += LANES) // equivalent: the sums that are left go one by one
        {
            TVector Rest;
            Load(a_vdVector + i, Rest);
            NUV_UNROLL for (int r = 0; r < ROWS_TOGETHER; ++r)
            {
                TVector Row;
                Load(vvdRows[r] + i, Row);
                Rest -= Row * vdSolution[r];
            }
            Store(Rest, a_vdVector + i);
        }
        for (; i < iCount; ++i)
        {
            NUV_UNROLL for (int r = 0; r < ROWS_TOGETHER; ++r)
            {
                a_vdVector[i] -= vvdRows[r][i] * vdSolution[r];
            }
        }
    }
}

// by processor: it has one width of vectors
NUV_BY_WIDTH(SubstituteBackward, (ptrdiff_t a_iN, const double* a_vdFactor, double* a_vdVector),
             (a_iN, a_vdFactor, a_vdVector))

ptrdiff_t SubstituteBackwardTogether(ptrdiff_t a_iN, const double* a_vdFactor, double* a_vdVector)
{
    SubstituteBackward(a_iN, a_vdFactor, a_vdVector);
    return a_iN % ROWS_TOGETHER;
}

} // namespace nuv

#endif // NUV_VECTORS
