// child_process.h: runs another program without a shell.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_CHILD_PROCESS_H
#define NUV_FITPOINTS_CHILD_PROCESS_H

#include <string>
#include <vector>

namespace fitpoints {

struct TChildResult
{
    bool bSucceeded;     // it ended by itself with exit code 0
    std::string szError; // the last line of its standard error
};

// Runs a_vszCommand, a program in PATH and its arguments, to its end. It reads a_szInput from standard input and writes
// its standard output to the descriptor a_iOutput. Fails if the program cannot be started.
TChildResult RunChild(const std::vector<std::string>& a_vszCommand, const std::string& a_szInput, int a_iOutput);

} // namespace fitpoints

#endif // NUV_FITPOINTS_CHILD_PROCESS_H
