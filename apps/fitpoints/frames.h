// frames.h: coordinates that count from local origins, and coefficients for such and for original coordinates.
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
// their extent. If all values are equal, a_dExtent replaces their extent.
double LocalOrigin(const std::vector<double>& a_vdValues, double a_dExtent);

// The greatest minus the least value.
double Extent(const std::vector<double>& a_vdValues);

// The greatest absolute value.
double Magnitude(const std::vector<double>& a_vdValues);

// Residuals up to this are only rounding.
double RoundingLevel(const TArrays& a_Points);

TOrigins LocalOrigins(const TArrays& a_Points);

// The points with coordinates that count from the origins.
TArrays Reduced(const TArrays& a_Points, const TOrigins& a_Origins);

// W, the denominator of the transformation.
double Denominator(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY);

TPosition Transform(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY);

// Converts coefficients for coordinates that count from the origins into those for original coordinates. False if there
// are none: the transformation takes the original source origin to infinity, or a coefficient is not finite.
bool ToOriginalFrame(const nuv::TOmographicParams& a_Local, const TOrigins& a_Origins,
                     nuv::TOmographicParams& a_Original);

} // namespace fitpoints

#endif // NUV_FITPOINTS_FRAMES_H
