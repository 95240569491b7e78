// warnings.h: what is doubtful about a transformation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_WARNINGS_H
#define NUV_FITPOINTS_WARNINGS_H

#include "fit.h"

namespace fitpoints {

// One sentence for each doubt. The points are all points, as given.
std::vector<std::string> Warnings(const TArrays& a_Points, const judgement::TOptions& a_Options, const TFit& a_Fit);

} // namespace fitpoints

#endif // NUV_FITPOINTS_WARNINGS_H
