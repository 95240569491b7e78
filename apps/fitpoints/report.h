// report.h: reports of the transformation as text and as JSON.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_REPORT_H
#define NUV_FITPOINTS_REPORT_H

#include "fit.h"

namespace fitpoints {

// A summary leaves out the residuals of the points.
std::string TextReport(const TPoints& a_Points, const TFit& a_Fit, bool a_bSummary);

std::string JsonReport(const TPoints& a_Points, const TFit& a_Fit, bool a_bSummary);

} // namespace fitpoints

#endif // NUV_FITPOINTS_REPORT_H
