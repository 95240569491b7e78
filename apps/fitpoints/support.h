// support.h: tests which kinds of transformation the control points determine. The fits of the library do not.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_SUPPORT_H
#define NUV_FITPOINTS_SUPPORT_H

#include "points.h"

#include <nuv1math.h>
#include <string>
#include <vector>

namespace fitpoints {

// Why the points determine no transformation of a kind; empty if they determine one.
struct TSupport
{
    std::string szNoAffine;
    std::string szNoOmographic;
};

// Fails if there is no transformation at all: fewer than two points, or equal source or target points.
TSupport FindSupport(const std::string& a_szFile, const TArrays& a_Points);

// The reason against a kind; empty if the points support the kind.
const std::string& ReasonAgainst(const TSupport& a_Support, nuv::enumMethodUsed a_Kind);

// The least number of points that a kind needs.
std::size_t LeastPoints(nuv::enumMethodUsed a_Kind);

// conformal, affine, omographic.
const char* KindName(nuv::enumMethodUsed a_Kind);

} // namespace fitpoints

#endif // NUV_FITPOINTS_SUPPORT_H
