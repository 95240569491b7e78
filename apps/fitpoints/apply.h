// apply.h: transforms the points of a further file.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_APPLY_H
#define NUV_FITPOINTS_APPLY_H

#include "fit.h"
#include "text.h"

namespace fitpoints {

struct TApplication
{
    std::string szFile; // "-" is standard input
    bool bInverse;      // from the target to the source system
    bool bDeviations;   // with standard deviations and error ellipses
};

// Reads a table with source (inverse: target) coordinates row by row and writes it with the other coordinates. All
// columns are kept; those of the results are replaced or added. Returns warnings. Fails with file and line if anything
// is wrong with the table, or if a point has no image; the rows before it are written.
std::vector<std::string> ApplyFit(const TApplication& a_Application, const TFit& a_Fit, const TWrite& a_Write);

} // namespace fitpoints

#endif // NUV_FITPOINTS_APPLY_H
