// report.h: reports of the transformation as text and as JSON.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_REPORT_H
#define NUV_FITPOINTS_REPORT_H

#include "fit.h"

namespace fitpoints {

std::string TextReport(const TPoints& a_Points, const TFit& a_Fit);

std::string JsonReport(const TPoints& a_Points, const TFit& a_Fit);

} // namespace fitpoints

#endif // NUV_FITPOINTS_REPORT_H
