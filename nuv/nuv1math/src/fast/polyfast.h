// polyfast.h: the reflection from both sides in the QR iteration, for hosts. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Equals     ReflectRows, ReflectColumns and LoadNextVector of poly.cpp, in the steps that reflect three rows.
// Method     The next step waits for its vector, which comes from the corner where the reflected rows and columns cross.
//            So the corner goes first, in registers. Behind it come the rest of the rows, and the rest of the columns,
//            two of their elements at a time.
// Order      Each element does the operations of the plain form in the same order: rows before columns.
// Pays       always: degree 4 takes 0.71 us, 0.75 us with the corner in its place; degree 64 takes 240 us, 264 us with
//            the corner in its place and 313 us in the plain form.

#ifndef NUV_POLYFAST_H
#define NUV_POLYFAST_H

#include "fast/vectors.h"
#include "poly.h"

namespace nuv {

#ifdef NUV_VECTORS
// Reflects three rows in one column. The pointer is to the first of them.
static NUV_INLINE void ReflectElements(const TReflection& a_H, double* a_vd)
{
    const double dP = a_vd[0] + a_H.dQ * a_vd[1] + a_H.dR * a_vd[2];
    a_vd[2] -= dP * a_H.dZ;
    a_vd[1] -= dP * a_H.dY;
    a_vd[0] -= dP * a_H.dX;
}

// Reflects elements of three columns that are in the same row, or in the same rows.
template <typename TElement>
static NUV_INLINE void ReflectElements(const TReflection& a_H, TElement& a_First, TElement& a_Second, TElement& a_Third)
{
    const TElement P = a_H.dX * a_First + a_H.dY * a_Second + a_H.dZ * a_Third;
    a_Third -= P * a_H.dR;
    a_Second -= P * a_H.dQ;
    a_First -= P;
}

// Reflects three columns in the rows from i on, two at a time, as far as both are above row a_iEnd, and then one by one.
// Rows are counted from 0.
static NUV_INLINE void ReflectElementsAbove(int i, int a_iEnd, const TReflection& a_H, double* const* a_vvdColumns)
{
    double* const vdFirst = a_vvdColumns[0];
    double* const vdSecond = a_vvdColumns[1];
    double* const vdThird = a_vvdColumns[2];
    for (; i + 1 < a_iEnd; i += 2) // equivalent: the rows that are left go one by one
    {
        TPair First;
        TPair Second;
        TPair Third;
        Load(vdFirst + i, First);
        Load(vdSecond + i, Second);
        Load(vdThird + i, Third);
        ReflectElements(a_H, First, Second, Third);
        Store(First, vdFirst + i);
        Store(Second, vdSecond + i);
        Store(Third, vdThird + i);
    }
    for (; i < a_iEnd; ++i)
    {
        ReflectElements(a_H, vdFirst[i], vdSecond[i], vdThird[i]);
    }
}

// Reflects the three rows where they cross the columns, and the columns there and in the row below, if there is one.
// a_iRow is the first of the rows, counted from 0. a_Next receives the first column below that row.
static NUV_INLINE void ReflectCorner(int a_iRow, bool a_bFourth, const TReflection& a_H, double* const* a_vvdColumns,
                                     TReflectedVector& a_Next)
{
    double* const vvdColumns[3] = {a_vvdColumns[0] + a_iRow, a_vvdColumns[1] + a_iRow, a_vvdColumns[2] + a_iRow};
    double vvdCorner[3][4];
    NUV_UNROLL for (int c = 0; c < 3; ++c)
    {
        NUV_UNROLL for (int r = 0; r < 3; ++r)
        {
            vvdCorner[c][r] = vvdColumns[c][r];
        }
        vvdCorner[c][3] = a_bFourth ? vvdColumns[c][3] : 0.0; // equivalent: without a fourth row nothing reads it
        ReflectElements(a_H, vvdCorner[c]);
    }
    NUV_UNROLL for (int r = 0; r < 4; ++r)
    {
        ReflectElements(a_H, vvdCorner[0][r], vvdCorner[1][r], vvdCorner[2][r]);
    }
    a_Next.dP = vvdCorner[0][1];
    a_Next.dQ = vvdCorner[0][2];
    a_Next.dR = a_bFourth ? vvdCorner[0][3] : 0.0;
    NUV_UNROLL for (int c = 0; c < 3; ++c)
    {
        NUV_UNROLL for (int r = 0; r < 3; ++r)
        {
            vvdColumns[c][r] = vvdCorner[c][r];
        }
        if (a_bFourth)
        {
            vvdColumns[c][3] = vvdCorner[c][3];
        }
    }
}

// Reflects rows k to k+2 in the columns k to nn, and then columns k to k+2 in the rows l to k+3. These are counted from
// 1. a_Next receives the vector of the next step.
static NUV_INLINE void ReflectBothSides(double* const* A, int k, int l, int nn, const TReflection& a_H,
                                        TReflectedVector& a_Next)
{
    ReflectCorner(k - 1, k + 3 <= nn, a_H, A + (k - 1), a_Next);
    for (int j = k + 3; j <= nn; ++j)
    {
        ReflectElements(a_H, A[j - 1] + (k - 1));
    }
    ReflectElementsAbove(l - 1, k - 1, a_H, A + (k - 1));
}
#else
void ReflectBothSides(double* const* A, int k, int l, int nn, const TReflection& a_H, TReflectedVector& a_Next);
#endif

} // namespace nuv

#endif // NUV_POLYFAST_H
