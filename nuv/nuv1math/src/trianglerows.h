// trianglerows.h: how the lower triangles of the Cholesky family are stored. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TRIANGLEROWS_H
#define NUV_TRIANGLEROWS_H

#include <stddef.h>

namespace nuv {

// Where the rows of a lower triangle begin. Row 1 begins iStride behind row 0. The distance from a row to the next one
// grows by iGrowth with every row.
struct TTriangleRows
{
    ptrdiff_t iStride;
    ptrdiff_t iGrowth;
};

const TTriangleRows PACKED_ROWS = {1, 1}; // row i at i(i+1)/2

inline TTriangleRows DenseRows(int a_iN) // row i at i n
{
    const TTriangleRows Rows = {a_iN, 0};
    return Rows;
}

// Position of element (a_iRow, 0).
inline ptrdiff_t RowStart(const TTriangleRows& a_Rows, ptrdiff_t a_iRow)
{
    return a_iRow * a_Rows.iStride + a_Rows.iGrowth * (a_iRow * (a_iRow - 1) / 2);
}

} // namespace nuv

#endif // NUV_TRIANGLEROWS_H
