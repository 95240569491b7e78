// report.h: reports of the transformation as text and as JSON.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_REPORT_H
#define NUV_FITPOINTS_REPORT_H

#include "fit.h"
#include "text.h"

namespace fitpoints {

// By enumFileKind: csv, qgis, gcp.
extern const char* const FORMAT_NAMES[3];

// The report is written part by part: that of a million points would take much memory. A summary leaves out the points.
void WriteTextReport(const TPoints& a_Points, const TFit& a_Fit, bool a_bSummary, const TWrite& a_Write);

void WriteJsonReport(const TPoints& a_Points, const TFit& a_Fit, bool a_bSummary, const TWrite& a_Write);

} // namespace fitpoints

#endif // NUV_FITPOINTS_REPORT_H
