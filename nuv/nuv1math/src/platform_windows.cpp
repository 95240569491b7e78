// platform_windows.cpp: the assertion report's platform operations on Windows and Windows CE.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "assertion.h"

#include <windows.h>

namespace nuv {

void FormatReport(TReportChar* a_szText, const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition)
{
    // wsprintfW does not know the room of its buffer: every site checks its message when it is compiled.
    wsprintfW(a_szText, L"%s:%d assertion failure:\n%s", a_szPath, a_iLine, a_szCondition);
}

void ShowTextAndWait(const TReportChar* a_szText)
{
    MessageBoxW(NULL, a_szText, NULL, MB_RETRYCANCEL); // no owner; the system's own caption
}

void EndProcess()
{
    TerminateProcess(GetCurrentProcess(), 0);
}

} // namespace nuv
