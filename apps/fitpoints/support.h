// support.h: names of the kinds, and the texts of the judgement module's reasons.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_SUPPORT_H
#define NUV_FITPOINTS_SUPPORT_H

#include "judgement/judgement.h"

#include <map>
#include <string>

namespace fitpoints {

// What --method takes.
extern const std::map<std::string, judgement::enumMethod> METHODS;

// conformal, affine, omographic.
const char* KindName(nuv::enumMethodUsed a_Kind);

// Why there is no transformation of a kind, or no judgement of it, for a number of fitted points.
std::string ReasonText(judgement::enumReason a_Reason, nuv::enumMethodUsed a_Kind, std::size_t a_iPoints);

} // namespace fitpoints

#endif // NUV_FITPOINTS_SUPPORT_H
