// affinefast.h: the sums of the affine fit in pairs. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Equals     CalcAffineSums of affinefit.cpp.
// Method     Two sums that take products with the same factor form a vector and advance together.
// Order      Every sum takes its terms in the order of the points. No sum is split.
// Pays       always. 100 points: 260 ns, 284 ns in the plain form.

#ifndef NUV_AFFINEFAST_H
#define NUV_AFFINEFAST_H

#include "controlpoints.h"
#include "fast/forms.h"
#include "fast/vectors.h"

namespace nuv {

#ifdef NUV_VECTORS
inline void CalcAffineSumsByPairs(const TControlPoints& a_Points, const TMeans& a_Means, TAffineSums& a_Sums)
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
#else
void CalcAffineSumsByPairs(const TControlPoints& a_Points, const TMeans& a_Means, TAffineSums& a_Sums);
#endif

} // namespace nuv

#endif // NUV_AFFINEFAST_H
