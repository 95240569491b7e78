// world_file.h: the world file, which places an image in the target system.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_WORLD_FILE_H
#define NUV_FITPOINTS_WORLD_FILE_H

#include "fit.h"

namespace fitpoints {

// The six lines of the file. Fails for an omographic transformation, which has eight coefficients.
std::string WorldFile(const TPoints& a_Points, const TFit& a_Fit);

} // namespace fitpoints

#endif // NUV_FITPOINTS_WORLD_FILE_H
