// child_process_windows.h: runs a statement in a child process on Windows; reads and answers its message boxes.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_CHILD_PROCESS_WINDOWS_H
#define NUV_TESTS_SUPPORT_CHILD_PROCESS_WINDOWS_H

#include "child_process.h"

#include <vector>

namespace nuv_tests {

// A message box as its user sees it.
struct TMessageBox
{
    std::string szCaption;
    std::string szText;
    bool bHasOwner = false;
    bool bHasIcon = false;
    std::vector<std::string> vszButtons; // "<identifier> <text>", from left to right, & before the key's letter
};

struct TMessageBoxEnd
{
    std::vector<TMessageBox> Boxes; // the boxes that were read and answered, in order
    TChildEnd Child;                // its standard error and exit code
};

// Presses the button with the identifier a_iAnswer (IDRETRY, IDCANCEL) of every box.
TMessageBoxEnd RunAtMessageBox(const std::function<void()>& a_Statement, int a_iAnswer);

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_CHILD_PROCESS_WINDOWS_H
