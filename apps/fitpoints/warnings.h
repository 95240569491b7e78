// warnings.h: what is doubtful about a transformation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_WARNINGS_H
#define NUV_FITPOINTS_WARNINGS_H

#include "kinds.h"

namespace fitpoints {

// One sentence for each doubt. The points are those of the fit, in its frame.
std::vector<std::string> Warnings(const TArrays& a_Points, bool a_bMirrored, const TAttempt& a_Attempt);

} // namespace fitpoints

#endif // NUV_FITPOINTS_WARNINGS_H
