// arguments.h: the command line of fitpoints.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_ARGUMENTS_H
#define NUV_FITPOINTS_ARGUMENTS_H

#include "fit.h"

#include <optional>
#include <string>

namespace fitpoints {

struct TArguments
{
    std::string szFile;
    judgement::TOptions Fit;
    bool bJson;
    bool bSummary;                     // no table of residuals
    std::optional<std::string> szPlot; // this and the next ones have no value if the option is not given
    std::vector<std::optional<std::string> > vszExports; // parallel to EXPORTS
    std::optional<std::string> szRaster;
    std::optional<std::string> szApply, szOutput;
    bool bInverse, bDeviations; // of szApply
};

// The name of an output that is standard output, and of an input that is standard input.
extern const char* const STANDARD_STREAM;

// Reads the command line. Without a value if it has answered --help or --version. Fails if the arguments are wrong.
std::optional<TArguments> ParseArguments(int a_iCount, char** a_vszArguments);

} // namespace fitpoints

#endif // NUV_FITPOINTS_ARGUMENTS_H
