// platform_wasm.cpp: the assertion report's platform operations in WebAssembly.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The module has no input, no output and no process of its own. Whoever loads it gives it one function, which shows the
// text of a report. The end of the process is a trap, which the caller of the module sees as an error.

#include "assertion.h"

#include <stddef.h>

namespace nuv {

__attribute__((import_module("nuv1math"), import_name("report"))) void ShowReport(const char* a_szText,
                                                                                  size_t a_iLength);

namespace {

// Appends as much of a text as fits before the terminator. Returns the new end.
char* Append(char* a_szEnd, const char* a_szLimit, const char* a_szText)
{
    while (*a_szText != '\0' && a_szEnd < a_szLimit)
    {
        *a_szEnd++ = *a_szText++;
    }
    return a_szEnd;
}

// Appends a number, 0 or greater.
char* AppendNumber(char* a_szEnd, const char* a_szLimit, int a_iNumber)
{
    char szDigits[12];
    char* szFirst = szDigits + sizeof szDigits - 1;
    *szFirst = '\0';
    do
    {
        *--szFirst = static_cast<char>('0' + a_iNumber % 10);
        a_iNumber /= 10;
    } while (a_iNumber > 0);
    return Append(a_szEnd, a_szLimit, szFirst);
}

} // namespace

// The same text as on the other platforms. The C library's formatting would double the size of the module.
void FormatReport(TReportChar* a_szText, const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition)
{
    const char* const szLimit = a_szText + REPORT_LENGTH - 1;
    char* szEnd = Append(a_szText, szLimit, a_szPath);
    szEnd = Append(szEnd, szLimit, ":");
    szEnd = AppendNumber(szEnd, szLimit, a_iLine);
    szEnd = Append(szEnd, szLimit, " assertion failure:\n");
    *Append(szEnd, szLimit, a_szCondition) = '\0';
}

void ShowTextAndWait(const TReportChar* a_szText)
{
    size_t iLength = 0;
    while (a_szText[iLength] != '\0')
    {
        ++iLength;
    }
    ShowReport(a_szText, iLength);
}

void EndProcess()
{
    __builtin_trap();
}

} // namespace nuv
