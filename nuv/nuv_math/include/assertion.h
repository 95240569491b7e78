// assertion.h: the report of a broken internal invariant, and the two platform operations behind it.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// An assertion is not a failure channel: a function tells its caller by its result code. An assertion guards what
// must hold whatever the caller passes (or what the caller promised), and a broken one ends the process.

#ifndef NUV_ASSERTION_H
#define NUV_ASSERTION_H

// The platform's own text: UTF-16 where the message box takes it, bytes where the text goes to standard error.
#if defined(_WIN32)
typedef wchar_t TReportChar;
#define NUV_REPORT_TEXT_(a_Literal) L##a_Literal
#else
typedef char TReportChar;
#define NUV_REPORT_TEXT_(a_Literal) a_Literal
#endif
#define NUV_REPORT_TEXT(a_Literal) NUV_REPORT_TEXT_(a_Literal)

// Root of the source tree, put before the path of every report. A build may set it, as a string literal.
#ifndef NUV_SOURCE_ROOT
#define NUV_SOURCE_ROOT ""
#endif

namespace nuv {

// Room of the message, terminator included.
enum
{
    REPORT_LENGTH = 512
};

// What the format adds to path and condition: ':', an int of at most 11 characters, " assertion failure:" and a line
// break.
enum
{
    REPORT_OVERHEAD = 1 + 11 + sizeof(" assertion failure:\n") - 1
};

// Shows "<path>:<line> assertion failure:\n<condition>", waits for the user where there is one to answer, and ends
// the process with exit code 0, whatever the answer. Returns only if the platform fails to end the process.
void ReportAssertion(const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition);

// The platform: platform_windows.cpp (Windows and Windows CE) or platform_posix.cpp; tests may link their own.

// Writes the message of ReportAssertion into a_szText, which has room for REPORT_LENGTH characters.
void FormatReport(TReportChar* a_szText, const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition);

// Shows the text with the answers Retry and Cancel and waits for one. Which one it was does not matter.
void ShowTextAndWait(const TReportChar* a_szText);

// Ends the current process at once, with exit code 0.
void EndProcess();

} // namespace nuv

// Reports a_Condition, as it is spelled here, when it does not hold. Path and line identify the site for good: field
// reports are looked up by them, so both are given at the site and neither follows the layout of the file. The
// array of negative size refuses a message that would not fit its buffer.
#define NUV_ASSERT_AT(a_Path, a_iLine, a_Condition)                                                                    \
    do                                                                                                                 \
    {                                                                                                                  \
        (void)sizeof(                                                                                                  \
            char[sizeof(NUV_SOURCE_ROOT a_Path #a_Condition) + nuv::REPORT_OVERHEAD <= nuv::REPORT_LENGTH ? 1 : -1]);  \
        if (!(a_Condition))                                                                                            \
        {                                                                                                              \
            nuv::ReportAssertion(NUV_REPORT_TEXT(NUV_SOURCE_ROOT) NUV_REPORT_TEXT(a_Path), a_iLine,                    \
                                 NUV_REPORT_TEXT(#a_Condition));                                                       \
        }                                                                                                              \
    } while (0)

#endif // NUV_ASSERTION_H
