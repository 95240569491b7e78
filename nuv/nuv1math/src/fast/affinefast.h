// affinefast.h: the sums of the affine and the conformal fit with vectors. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Equals     CalcAffineSums and CalcConformalSums of affinefit.cpp.
// Method     A vector has one coordinate of several points, less its mean. The terms of the conformal fit are formed of
//            such vectors. Transposed, they are vectors of several values of one point, which are added to several sums
//            at once. The points that are left over go one by one. Of few points, the affine fit forms pairs of values
//            of one point, and the conformal fit has the plain form.
// Order      Every sum takes its terms in the order of the points. No sum is split.
// Pays       from SUMS_PAY_FROM points on. 100 points, affine: 200 ns with vectors of four, 245 ns with pairs, 283 ns in
//            the plain form; conformal: 130 ns, 162 ns and 200 ns. Of fewer points it does not: the choice of a
//            transformation writes mirrored coordinates one by one, and a vector that is loaded so soon waits for them.

#ifndef NUV_AFFINEFAST_H
#define NUV_AFFINEFAST_H

#include "controlpoints.h"
#include "fast/forms.h"
#include "fast/vectors.h"

namespace nuv {

const unsigned int SUMS_PAY_FROM = 16; // equivalent: points; both forms give the same bits

#ifdef NUV_VECTORS

enum
{
    ROW_LENGTH = 4 // equivalent: values of a point that are added together; a fifth would not be used
};

// Values of a point, or their sums: one vector of four, or two pairs.
template <typename TVector> struct TRow
{
    enum
    {
        LANES = sizeof(TVector) / sizeof(double),
        VECTORS = ROW_LENGTH / LANES
    };
    TVector v[VECTORS];
};

static NUV_INLINE void MakeRow(double a_d0, double a_d1, double a_d2, double a_d3, TRow<TPair>& a_Row)
{
    const TPair First = {a_d0, a_d1};
    const TPair Second = {a_d2, a_d3};
    a_Row.v[0] = First;
    a_Row.v[1] = Second;
}

static NUV_INLINE void MakeRow(double a_d0, double a_d1, double a_d2, double a_d3, TRow<TFour>& a_Row)
{
    const TFour All = {a_d0, a_d1, a_d2, a_d3};
    a_Row.v[0] = All;
}

// Value i of a row.
template <typename TVector> static NUV_INLINE double At(const TRow<TVector>& a_Row, int i)
{
    return a_Row.v[i / TRow<TVector>::LANES][i % TRow<TVector>::LANES];
}

// The rows of a vector of points, from four vectors of one value each.
// by processor: each one runs the instance of one width
template <typename TVector, int LANES>
static NUV_INLINE void MakeRows(const TVector* a_vValues, TRow<TVector> (&a_Rows)[LANES])
{
    NUV_UNROLL for (int k = 0; k < TRow<TVector>::VECTORS; ++k)
    {
        TVector vSquare[LANES];
        NUV_UNROLL for (int l = 0; l < LANES; ++l)
        {
            vSquare[l] = a_vValues[k * LANES + l];
        }
        Transpose(vSquare);
        NUV_UNROLL for (int l = 0; l < LANES; ++l)
        {
            a_Rows[l].v[k] = vSquare[l];
        }
    }
}

// by processor: each one runs the instance of one width
template <typename TVector> static NUV_INLINE void Add(const TRow<TVector>& a_Row, TRow<TVector>& a_Sums)
{
    NUV_UNROLL for (int k = 0; k < TRow<TVector>::VECTORS; ++k)
    {
        a_Sums.v[k] = a_Row.v[k] + a_Sums.v[k];
    }
}

// Adds the products of a factor and a row.
// by processor: each one runs the instance of one width
template <typename TVector>
static NUV_INLINE void AddTimes(double a_dFactor, const TRow<TVector>& a_Row, TRow<TVector>& a_Sums)
{
    NUV_UNROLL for (int k = 0; k < TRow<TVector>::VECTORS; ++k)
    {
        a_Sums.v[k] = a_Row.v[k] * a_dFactor + a_Sums.v[k];
    }
}

// The sums of the affine fit: of u, v, U and V times u, times v, and alone.
template <typename TVector> struct TAffineRows
{
    TRow<TVector> ByU;
    TRow<TVector> ByV;
    TRow<TVector> Alone;
};

template <typename TVector> static NUV_INLINE void AddPoint(const TRow<TVector>& a_Row, TAffineRows<TVector>& a_Sums)
{
    AddTimes(At(a_Row, 0), a_Row, a_Sums.ByU);
    AddTimes(At(a_Row, 1), a_Row, a_Sums.ByV);
    Add(a_Row, a_Sums.Alone);
}

// The sums of the conformal fit: dS, dSa and dSb; the last one stands there twice.
template <typename TVector> struct TConformalRow
{
    TRow<TVector> Terms;
};

template <typename TVector> static NUV_INLINE void AddPoint(const TRow<TVector>& a_Row, TConformalRow<TVector>& a_Sums)
{
    Add(a_Row, a_Sums.Terms);
}

// A coordinate of the points from i on, less its mean.
template <typename TValue>
static NUV_INLINE void Centre(const double* a_vdValues, unsigned int i, double a_dMean, TValue& a_Centred)
{
    Load(a_vdValues + i, a_Centred);
    a_Centred = a_Centred - a_dMean;
}

// The values of the points from i on that the affine fit sums up: u, v, U and V.
template <typename TVector, typename TValue>
static NUV_INLINE void FormValues(const TControlPoints& a_Points, unsigned int i, const TMeans& a_Means,
                                  const TAffineRows<TVector>& /* which fit */, TValue* a_vValues)
{
    Centre(a_Points.vdX, i, a_Means.dX, a_vValues[0]);
    Centre(a_Points.vdY, i, a_Means.dY, a_vValues[1]);
    Centre(a_Points.vdXa, i, a_Means.dXa, a_vValues[2]);
    Centre(a_Points.vdYa, i, a_Means.dYa, a_vValues[3]);
}

// Those of the conformal fit: the terms of a point.
template <typename TVector, typename TValue>
static NUV_INLINE void FormValues(const TControlPoints& a_Points, unsigned int i, const TMeans& a_Means,
                                  const TConformalRow<TVector>& /* which fit */, TValue* a_vValues)
{
    TValue x;
    TValue y;
    TValue X;
    TValue Y;
    Centre(a_Points.vdX, i, a_Means.dX, x);
    Centre(a_Points.vdY, i, a_Means.dY, y);
    Centre(a_Points.vdXa, i, a_Means.dXa, X);
    Centre(a_Points.vdYa, i, a_Means.dYa, Y);
    a_vValues[0] = y * y + x * x;
    a_vValues[1] = Y * y + X * x;
    a_vValues[2] = X * y - Y * x;
    a_vValues[3] = a_vValues[2]; // equivalent: its sum is not used
}

// Adds all points to the sums of a fit.
// by processor: each one runs the instance of one width
template <typename TVector, typename TSums>
static NUV_INLINE void AddAllPoints(const TControlPoints& a_Points, const TMeans& a_Means, TSums& a_Sums)
{
    const unsigned int LANES = sizeof(TVector) / sizeof(double);
    unsigned int i = 0;
    for (; a_Points.iCount - i >= LANES; i += LANES) // equivalent: the points that are left go one by one
    {
        TVector vValues[ROW_LENGTH];
        FormValues(a_Points, i, a_Means, a_Sums, vValues);
        TRow<TVector> vRows[LANES];
        MakeRows(vValues, vRows);
        NUV_UNROLL for (unsigned int l = 0; l < LANES; ++l)
        {
            AddPoint(vRows[l], a_Sums);
        }
    }
    for (; i < a_Points.iCount; ++i)
    {
        double vdValues[ROW_LENGTH];
        FormValues(a_Points, i, a_Means, a_Sums, vdValues);
        TRow<TVector> Row;
        MakeRow(vdValues[0], vdValues[1], vdValues[2], vdValues[3], Row);
        AddPoint(Row, a_Sums);
    }
}

template <typename TVector>
static NUV_INLINE void SumAffineBy(const TControlPoints& a_Points, const TMeans& a_Means, TAffineSums& a_Sums)
{
    TAffineRows<TVector> Rows;
    MakeRow(0.0, 0.0, 0.0, 0.0, Rows.ByU);
    MakeRow(0.0, 0.0, 0.0, 0.0, Rows.ByV); // equivalent: the first sum is not used
    MakeRow(0.0, 0.0, 0.0, 0.0, Rows.Alone);
    AddAllPoints<TVector>(a_Points, a_Means, Rows);
    a_Sums.dSuu = At(Rows.ByU, 0);
    a_Sums.dSuv = At(Rows.ByU, 1);
    a_Sums.dSvv = At(Rows.ByV, 1);
    a_Sums.dSUu = At(Rows.ByU, 2);
    a_Sums.dSVu = At(Rows.ByU, 3);
    a_Sums.dSUv = At(Rows.ByV, 2);
    a_Sums.dSVv = At(Rows.ByV, 3);
    a_Sums.dSu = At(Rows.Alone, 0);
    a_Sums.dSv = At(Rows.Alone, 1);
    a_Sums.dSU = At(Rows.Alone, 2);
    a_Sums.dSV = At(Rows.Alone, 3);
}

template <typename TVector>
static NUV_INLINE void SumConformalBy(const TControlPoints& a_Points, const TMeans& a_Means, TConformalSums& a_Sums)
{
    TConformalRow<TVector> Row;
    MakeRow(0.0, 0.0, 0.0, 0.0, Row.Terms); // equivalent: the last sum is not used
    AddAllPoints<TVector>(a_Points, a_Means, Row);
    a_Sums.dS = At(Row.Terms, 0);
    a_Sums.dSa = At(Row.Terms, 1);
    a_Sums.dSb = At(Row.Terms, 2);
}

// by processor: it has one width of vectors
NUV_BY_WIDTH(SumAffine, (const TControlPoints& a_Points, const TMeans& a_Means, TAffineSums& a_Sums),
             (a_Points, a_Means, a_Sums))

// by processor: it has one width of vectors
NUV_BY_WIDTH(SumConformal, (const TControlPoints& a_Points, const TMeans& a_Means, TConformalSums& a_Sums),
             (a_Points, a_Means, a_Sums))

// The affine sums of few points.
static NUV_INLINE void SumAffineOfFewPoints(const TControlPoints& a_Points, const TMeans& a_Means, TAffineSums& a_Sums)
{
    TPair SuuSuv = {0.0, 0.0};
    TPair SUuSVu = {0.0, 0.0};
    TPair SUvSVv = {0.0, 0.0};
    TPair SuSv = {0.0, 0.0};
    TPair SUSV = {0.0, 0.0};
    double dSvv = 0.0;
    for (unsigned int i = 0; i < a_Points.iCount; ++i)
    {
        const double du = a_Points.vdX[i] - a_Means.dX;
        const double dv = a_Points.vdY[i] - a_Means.dY;
        const TPair Source = {du, dv};
        const TPair Target = {a_Points.vdXa[i] - a_Means.dXa, a_Points.vdYa[i] - a_Means.dYa};
        SuuSuv = Source * du + SuuSuv;
        SUuSVu = Target * du + SUuSVu;
        SUvSVv = Target * dv + SUvSVv;
        SuSv = Source + SuSv;
        SUSV = Target + SUSV;
        dSvv = dv * dv + dSvv;
    }
    a_Sums.dSuu = SuuSuv[0];
    a_Sums.dSuv = SuuSuv[1];
    a_Sums.dSvv = dSvv;
    a_Sums.dSUu = SUuSVu[0];
    a_Sums.dSVu = SUuSVu[1];
    a_Sums.dSUv = SUvSVv[0];
    a_Sums.dSVv = SUvSVv[1];
    a_Sums.dSu = SuSv[0];
    a_Sums.dSv = SuSv[1];
    a_Sums.dSU = SUSV[0];
    a_Sums.dSV = SUSV[1];
}

// The affine sums of any number of points.
static NUV_INLINE void SumAffineByVectors(const TControlPoints& a_Points, const TMeans& a_Means, TAffineSums& a_Sums)
{
    if (a_Points.iCount < SUMS_PAY_FROM) // equivalent: both forms give the same bits
    {
        SumAffineOfFewPoints(a_Points, a_Means, a_Sums);
        return;
    }
    TAffineSums Sums; // of its own: the caller's record, whose address goes nowhere, stays in registers
    SumAffine(a_Points, a_Means, Sums);
    a_Sums = Sums;
}

#else
void SumAffineByVectors(const TControlPoints& a_Points, const TMeans& a_Means, TAffineSums& a_Sums);
void SumConformal(const TControlPoints& a_Points, const TMeans& a_Means, TConformalSums& a_Sums);
#endif

} // namespace nuv

#endif // NUV_AFFINEFAST_H
