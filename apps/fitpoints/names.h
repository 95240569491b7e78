// names.h: places the names of points in the picture so that they cover nothing.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_NAMES_H
#define NUV_FITPOINTS_NAMES_H

#include "drawing.h"

namespace fitpoints {

// A name that wants a place.
struct TWantedName
{
    std::string szText;
    std::size_t iPoint; // of TDrawing::vPoints
};

// Places the names in this order, each where it covers no point, vector or other name, and leaves out those without
// room. Long names are cut.
void PlaceNames(const std::vector<TWantedName>& a_vNames, TDrawing& a_Drawing);

} // namespace fitpoints

#endif // NUV_FITPOINTS_NAMES_H
