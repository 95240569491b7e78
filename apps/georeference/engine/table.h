// table.h: the points as a CSV file.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_GEOREFERENCE_TABLE_H
#define NUV_GEOREFERENCE_TABLE_H

#include "points.h"

namespace fitpoints {

// A CSV file with all that the points are, from which fitpoints reads the same points.
std::string PointTable(const TPoints& a_Points);

} // namespace fitpoints

#endif // NUV_GEOREFERENCE_TABLE_H
