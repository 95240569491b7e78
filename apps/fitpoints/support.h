// support.h: which kinds of transformation a set of control points determines, which the fits cannot tell.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_SUPPORT_H
#define NUV_FITPOINTS_SUPPORT_H

#include "points.h"

#include <nuv1math.h>
#include <string>
#include <vector>

namespace fitpoints {

// Why the points determine no transformation of a kind; empty where they do.
struct TSupport
{
    std::string szNoAffine;
    std::string szNoOmographic;
};

// Fails if the points determine nothing at all: fewer than two, or all equal on one side.
TSupport FindSupport(const std::string& a_szFile, const TArrays& a_Points);

// The reason against a kind; empty if the points support it.
const std::string& ReasonAgainst(const TSupport& a_Support, nuv::enumMethodUsed a_Kind);

// The least number of points of a kind.
std::size_t LeastPoints(nuv::enumMethodUsed a_Kind);

// conformal, affine, omographic.
const char* KindName(nuv::enumMethodUsed a_Kind);

} // namespace fitpoints

#endif // NUV_FITPOINTS_SUPPORT_H
