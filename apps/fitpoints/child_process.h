// child_process.h: runs a program with given standard input, without a shell.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_CHILD_PROCESS_H
#define NUV_FITPOINTS_CHILD_PROCESS_H

#include <string>
#include <vector>

namespace fitpoints {

struct TChildResult
{
    bool bSucceeded;     // ended by itself with exit code 0
    std::string szError; // last line of its standard error
};

// Runs a_vszCommand, found along PATH, with a_szInput as standard input and its standard output to a_iOutput. Fails if
// the program cannot be started.
TChildResult RunChild(const std::vector<std::string>& a_vszCommand, const std::string& a_szInput, int a_iOutput);

} // namespace fitpoints

#endif // NUV_FITPOINTS_CHILD_PROCESS_H
