// choleskytile.h: the kernel of the Cholesky factorisation, included once for every width of vector. Not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

// No include guard: NUV_TILE_FUNCTION names the function that this text defines, NUV_TILE_TARGET is its attribute,
// NUV_TILE_LANES the doubles of one vector, NUV_TILE_AT_ONCE the rows whose sums the registers hold.

// Takes a_iCount products of each of the tile's rows with each of its columns off the tile, ascending. The elements are
// independent: together they keep the adders busy, where one alone waits for its own last difference. A diagonal
// that takes its squares, descending from a_vdSquares[-1] on, comes along at little cost (a_dRadicand, SQUARES only).
template <bool SQUARES>
NUV_TILE_TARGET static void NUV_TILE_FUNCTION(ptrdiff_t a_iFrom, ptrdiff_t a_iCount, ptrdiff_t a_iRows,
                                              const double* const* a_vvdRows, const double* a_vdColumns, TTile& a_Tile,
                                              const double* a_vdSquares, double& a_dRadicand)
{
    enum
    {
        LANES = NUV_TILE_LANES,
        AT_ONCE = NUV_TILE_AT_ONCE,
        VECTORS = TILE_COLUMNS / LANES
    };
    typedef double TVector __attribute__((vector_size(LANES * sizeof(double))));
    for (ptrdiff_t iFirst = 0; iFirst < a_iRows; iFirst += AT_ONCE)
    {
        const double* vvdRows[AT_ONCE];
        TVector vvRest[AT_ONCE][VECTORS];
        NUV_UNROLL for (int r = 0; r < AT_ONCE; ++r)
        {
            vvdRows[r] = a_vvdRows[iFirst + r] + a_iFrom;
            NUV_UNROLL for (int c = 0; c < VECTORS; ++c)
            {
                memcpy(&vvRest[r][c], &a_Tile.vvdRest[iFirst + r][c * LANES], sizeof(TVector));
            }
        }
        const bool bSquares = SQUARES && iFirst == 0;
        double dRadicand = a_dRadicand;
        for (ptrdiff_t k = 0; k < a_iCount; ++k)
        {
            TVector vColumns[VECTORS];
            NUV_UNROLL for (int c = 0; c < VECTORS; ++c)
            {
                memcpy(&vColumns[c], a_vdColumns + k * TILE_COLUMNS + c * LANES, sizeof(TVector));
            }
            NUV_UNROLL for (int r = 0; r < AT_ONCE; ++r)
            {
                NUV_UNROLL for (int c = 0; c < VECTORS; ++c)
                {
                    vvRest[r][c] -= vColumns[c] * vvdRows[r][k];
                }
            }
            if (SQUARES)
            {
                dRadicand -= a_vdSquares[-1 - k] * a_vdSquares[-1 - k];
            }
        }
        if (bSquares)
        {
            a_dRadicand = dRadicand;
        }
        NUV_UNROLL for (int r = 0; r < AT_ONCE; ++r)
        {
            NUV_UNROLL for (int c = 0; c < VECTORS; ++c)
            {
                memcpy(&a_Tile.vvdRest[iFirst + r][c * LANES], &vvRest[r][c], sizeof(TVector));
            }
        }
    }
}
