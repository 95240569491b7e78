// frames.h: what the judgement module tells of coordinates and transformations, for the arrays of this program.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_FRAMES_H
#define NUV_FITPOINTS_FRAMES_H

#include "judgement/judgement.h"
#include "points.h"

#include <nuv1math.h>

namespace fitpoints {

using judgement::Denominator;
using judgement::TOrigins;

struct TPosition
{
    double dXa, dYa;
};

// The arrays as the module takes them.
judgement::TControlPoints ControlPoints(const TArrays& a_Points);

// The greatest minus the least value.
double Extent(const std::vector<double>& a_vdValues);

// The greatest absolute value.
double Magnitude(const std::vector<double>& a_vdValues);

// Residuals up to this are only rounding.
double RoundingLevel(const TArrays& a_Points);

TOrigins LocalOrigins(const TArrays& a_Points);

TPosition Transform(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY);

} // namespace fitpoints

#endif // NUV_FITPOINTS_FRAMES_H
