// report_common.h: what the reports say alike of kinds and suspected blunders.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_REPORT_COMMON_H
#define NUV_FITPOINTS_REPORT_COMMON_H

#include "fit.h"

namespace fitpoints {

// Why there is no transformation of the kind; empty if there is one.
std::string WhyMissing(const TFit& a_Fit, nuv::enumMethodUsed a_Kind);

// Why an existing transformation of the kind has no leave-one-out errors; empty if it has them.
std::string WhyNotJudged(const TFit& a_Fit, nuv::enumMethodUsed a_Kind);

// Indices of the suspected blunders: first those that were dropped, in the order of dropping, then those with longer
// residuals.
std::vector<std::size_t> SuspectOrder(const TFit& a_Fit);

} // namespace fitpoints

#endif // NUV_FITPOINTS_REPORT_COMMON_H
