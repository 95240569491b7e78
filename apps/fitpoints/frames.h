// frames.h: the local origins of source and target, and coefficients with respect to them or to the origin.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_FRAMES_H
#define NUV_FITPOINTS_FRAMES_H

#include "points.h"

#include <nuv1math.h>

namespace fitpoints {

struct TOrigins
{
    double dX, dY;   // source
    double dXa, dYa; // target
};

struct TPosition
{
    double dXa, dYa;
};

// A short number near the middle of the values: their mean, rounded to a multiple of the power of ten at or below
// their extent (or a_dExtent, if they are all equal).
double LocalOrigin(const std::vector<double>& a_vdValues, double a_dExtent);

// Greatest less least value.
double Extent(const std::vector<double>& a_vdValues);

TOrigins LocalOrigins(const TArrays& a_Points);

// The points with their coordinates counted from the origins.
TArrays Reduced(const TArrays& a_Points, const TOrigins& a_Origins);

// W, the denominator of the transformation.
double Denominator(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY);

TPosition Transform(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY);

// The coefficients for original coordinates, from those for coordinates reduced by the origins. False if there are
// none: the transformation takes the original source origin to infinity, or a coefficient is not finite.
bool ToOriginalFrame(const nuv::TOmographicParams& a_Local, const TOrigins& a_Origins,
                     nuv::TOmographicParams& a_Original);

} // namespace fitpoints

#endif // NUV_FITPOINTS_FRAMES_H
