// platform_posix.cpp: the assertion report's platform operations on Linux and other POSIX systems.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "assertion.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

namespace nuv {

namespace {

// Writes the whole text to standard error. If that fails, there is no other way to show it.
void WriteToStandardError(const char* a_szText)
{
    size_t iLeft = strlen(a_szText);
    while (iLeft > 0)
    {
        const ssize_t iWritten = write(STDERR_FILENO, a_szText, iLeft);
        if (iWritten < 0)
        {
            if (errno == EINTR)
            {
                continue;
            }
            return;
        }
        a_szText += iWritten;
        iLeft -= static_cast<size_t>(iWritten);
    }
}

// Reads standard input to the end of the line or of the input.
void SkipAnswer()
{
    char cAnswer = 0; // equivalent: any character but a line break will do
    ssize_t iRead = 1;
    while (cAnswer != '\n' && (iRead == 1 || (iRead < 0 && errno == EINTR)))
    {
        iRead = read(STDIN_FILENO, &cAnswer, 1);
    }
}

} // namespace

void FormatReport(TReportChar* a_szText, const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition)
{
    snprintf(a_szText, REPORT_LENGTH, "%s:%d assertion failure:\n%s", a_szPath, a_iLine, a_szCondition);
}

void ShowTextAndWait(const TReportChar* a_szText)
{
    signal(SIGPIPE, SIG_IGN); // a closed pipe must not end the process with another exit status
    WriteToStandardError(a_szText);
    if (isatty(STDIN_FILENO))
    {
        WriteToStandardError("\nRetry or Cancel? ");
        SkipAnswer();
    }
}

void EndProcess()
{
    _exit(0); // like TerminateProcess, without destructors and exit handlers
}

} // namespace nuv
