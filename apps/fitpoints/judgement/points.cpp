// points.cpp: small helpers, and sets of points of which some are left out.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "internal.h"

#include <math.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

namespace judgement {

typedef char TCheckCoefsLayout[sizeof(nuv::TOmographicParams) == COEFS * sizeof(double) ? 1 : -1];

void CoefsToArray(const nuv::TOmographicParams& a_Coefs, double* a_vdCoefs)
{
    memcpy(a_vdCoefs, &a_Coefs, sizeof a_Coefs);
}

void ArrayToCoefs(const double* a_vdCoefs, nuv::TOmographicParams& a_Coefs)
{
    memcpy(&a_Coefs, a_vdCoefs, sizeof a_Coefs);
}

bool IsFinite(double a_dValue)
{
    return a_dValue - a_dValue == 0;
}

bool AreFinite(const nuv::TOmographicParams& a_Coefs)
{
    double vdCoefs[COEFS];
    CoefsToArray(a_Coefs, vdCoefs);
    bool bFinite = true;
    for (int j = 0; j < COEFS; ++j)
    {
        bFinite = bFinite && IsFinite(vdCoefs[j]);
    }
    return bFinite;
}

double Length(double a_dX, double a_dY)
{
    const double dX = fabs(a_dX);
    const double dY = fabs(a_dY);
    const double dGreater = dX > dY ? dX : dY;
    const double dSmaller = dX > dY ? dY : dX;
    if (dGreater == 0 || !IsFinite(dGreater))
    {
        return dGreater + dSmaller;
    }
    const double dRatio = dSmaller / dGreater;
    return dGreater * sqrt(1.0 + dRatio * dRatio);
}

bool AllocateSet(int a_iCapacity, TPointSet& a_Set)
{
    const size_t iCapacity = static_cast<size_t>(a_iCapacity > 0 ? a_iCapacity : 1);
    a_Set.iCount = 0;
    a_Set.iCapacity = static_cast<int>(iCapacity);
    a_Set.vdBlock = static_cast<double*>(malloc(4 * iCapacity * sizeof(double)));
    a_Set.viIndex = static_cast<int*>(malloc(iCapacity * sizeof(int)));
    return a_Set.vdBlock != NULL && a_Set.viIndex != NULL;
}

void ReleaseSet(TPointSet& a_Set)
{
    free(a_Set.vdBlock);
    free(a_Set.viIndex);
}

static double* ArrayOf(const TPointSet& a_Set, int a_iArray)
{
    return a_Set.vdBlock + static_cast<ptrdiff_t>(a_iArray) * a_Set.iCapacity;
}

TControlPoints PointsOf(const TPointSet& a_Set)
{
    const TControlPoints Points = {a_Set.iCount, ArrayOf(a_Set, 0), ArrayOf(a_Set, 1), ArrayOf(a_Set, 2),
                                   ArrayOf(a_Set, 3)};
    return Points;
}

void FillSet(const TControlPoints& a_Points, const int* a_viLeftOut, TPointSet& a_Set)
{
    a_Set.iCount = 0;
    for (int i = 0; i < a_Points.iCount; ++i)
    {
        if (a_viLeftOut == NULL || a_viLeftOut[i] == 0)
        {
            const int j = a_Set.iCount++;
            a_Set.viIndex[j] = i;
            ArrayOf(a_Set, 0)[j] = a_Points.vdX[i];
            ArrayOf(a_Set, 1)[j] = a_Points.vdY[i];
            ArrayOf(a_Set, 2)[j] = a_Points.vdXa[i];
            ArrayOf(a_Set, 3)[j] = a_Points.vdYa[i];
        }
    }
}

void ReduceSet(const TOrigins& a_Origins, TPointSet& a_Set)
{
    ReducePoints(PointsOf(a_Set), a_Origins, ArrayOf(a_Set, 0), ArrayOf(a_Set, 1), ArrayOf(a_Set, 2),
                 ArrayOf(a_Set, 3));
}

} // namespace judgement
