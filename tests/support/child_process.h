// child_process.h: runs a statement in a child process, and returns what it wrote and how it ended.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_CHILD_PROCESS_H
#define NUV_TESTS_SUPPORT_CHILD_PROCESS_H

#include <functional>
#include <string>

namespace nuv_tests {

// Exit code of a child whose statement came back.
constexpr int CameBack = 77;

struct TChildEnd
{
    std::string szText; // all that it wrote to standard error
    int iExitCode = -1; // -1 if a signal ended it
};

// Standard input of the child is empty and no terminal; standard error is a pipe. On Windows the text of a message box
// counts as written too, and its user presses Retry.
TChildEnd RunInChild(const std::function<void()>& a_Statement);

// Standard input and standard error of the child are a terminal. Its user types a_szAnswer when a_szPrompt can be read.
// Windows has no such terminals.
TChildEnd RunAtTerminal(const std::function<void()>& a_Statement, const std::string& a_szPrompt,
                        const std::string& a_szAnswer);

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_CHILD_PROCESS_H
