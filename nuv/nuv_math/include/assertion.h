// assertion.h: the report of a broken internal invariant, and the two platform operations behind it.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// A function tells its caller about a failure by its result code, and never by an assertion. An assertion checks what
// must hold whatever the caller passes, or what the caller has promised. If it does not hold, the process ends.

#ifndef NUV_ASSERTION_H
#define NUV_ASSERTION_H

// The platform's text: UTF-16 for the message box of Windows, bytes for standard error.
#if defined(_WIN32)
typedef wchar_t TReportChar;
#define NUV_REPORT_TEXT_(a_Literal) L##a_Literal
#else
typedef char TReportChar;
#define NUV_REPORT_TEXT_(a_Literal) a_Literal
#endif
#define NUV_REPORT_TEXT(a_Literal) NUV_REPORT_TEXT_(a_Literal)

// Stands before the path in every report. A build may set it to the root of the source tree, as a string literal.
#ifndef NUV_SOURCE_ROOT
#define NUV_SOURCE_ROOT ""
#endif

namespace nuv {

// The length of a message with its terminator, at most.
enum
{
    REPORT_LENGTH = 512 // equivalent: no report of the library is as long
};

// The characters that the format adds to path and condition: ':', an int of at most 11 characters, " assertion
// failure:" and a line break.
enum
{
    REPORT_OVERHEAD = 1 + 11 + sizeof(" assertion failure:\n") - 1 // equivalent: no report is as long
};

// Shows "<path>:<line> assertion failure:\n<condition>" and waits for an answer if there is a user. Then it ends the
// process with exit code 0, whatever the answer. It returns only if the platform fails to end the process.
void ReportAssertion(const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition);

// The operations of the platform are in platform_windows.cpp (Windows and Windows CE), platform_wasm.cpp (WebAssembly)
// and platform_posix.cpp. A test may link its own.

// Writes the message of ReportAssertion into a_szText, which has room for REPORT_LENGTH characters.
void FormatReport(TReportChar* a_szText, const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition);

// Shows the text with the answers Retry and Cancel, and waits for either.
void ShowTextAndWait(const TReportChar* a_szText);

// Ends the current process at once, with exit code 0.
void EndProcess();

} // namespace nuv

// Reports a_Condition, as it is spelled here, if it does not hold. The path and the line identify the site for good,
// because reports from the field are looked up by them. So each site states both, and neither follows the layout of the
// file. The array of negative size refuses to compile a message that does not fit its buffer.
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
