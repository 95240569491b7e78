// platform_windows.cpp: the assertion report's platform operations on Windows and Windows CE.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "assertion.h"

#include <windows.h>

namespace nuv {

void FormatReport(TReportChar* a_szText, const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition)
{
    // wsprintfW does not know the size of its buffer. NUV_ASSERT_AT checks the length of each message when it is
    // compiled.
    wsprintfW(a_szText, L"%s:%d assertion failure:\n%s", a_szPath, a_iLine, a_szCondition);
}

void ShowTextAndWait(const TReportChar* a_szText)
{
    MessageBoxW(NULL, a_szText, NULL, MB_RETRYCANCEL); // without an owner, with the caption of the system
}

void EndProcess()
{
    TerminateProcess(GetCurrentProcess(), 0);
}

} // namespace nuv
