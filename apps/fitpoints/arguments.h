// arguments.h: the command line of fitpoints.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_ARGUMENTS_H
#define NUV_FITPOINTS_ARGUMENTS_H

#include "kinds.h"

#include <optional>
#include <string>

namespace fitpoints {

struct TArguments
{
    std::string szFile;
    TFitOptions Fit;
    bool bJson;
    std::optional<std::string> szPlot, szWorld; // without a value if the option is not given
};

// Reads the command line. Without a value if it has answered --help or --version. Fails if the arguments are wrong.
std::optional<TArguments> ParseArguments(int a_iCount, char** a_vszArguments);

} // namespace fitpoints

#endif // NUV_FITPOINTS_ARGUMENTS_H
