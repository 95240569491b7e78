// assertion_test.cpp: the assertion report as a user of the built library sees it.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/child_process.h"
#include "support/expect.h"

#include <cstdlib>
#include <unistd.h>

using namespace nuv;
using namespace nuv_tests;

namespace {

constexpr const char* UntransformReport = "nuv\\nuv1math\\src\\affine.cpp:443 assertion failure:\n"
                                          "iResult!= RET_IMPOSSIBLE";

// A singular transformation (all of the plane onto the line X = Y) and a point off that line.
void UntransformImpossiblePoint()
{
    const TAffineCoefs Coefs = {1.0, 1.0, 0.0, 1.0, 1.0, 0.0};
    double dX = Untouched;
    double dY = Untouched;
    AffineUntransform(Coefs, 1.0, 0.0, dX, dY);
}

} // namespace

TEST(AssertionReport, UntransformOfAnImpossiblePointShowsItsSiteAndEndsTheProcessWithCodeZero)
{
    const TChildEnd End = RunInChild(UntransformImpossiblePoint);
    EXPECT_EQ(UntransformReport, End.szText);
    EXPECT_EQ(0, End.iExitCode);
}

TEST(AssertionReport, UntransformOfAPointOnTheImageLineComesBackWithTheOrigin)
{
    const TChildEnd End = RunInChild(
        []
        {
            const TAffineCoefs Coefs = {1.0, 1.0, 0.0, 1.0, 1.0, 0.0};
            double dX = Untouched;
            double dY = Untouched;
            AffineUntransform(Coefs, 1.0, 1.0, dX, dY);
            _exit(SameBits(dX, 0.0) && SameBits(dY, 0.0) ? CameBack : 1);
        });
    EXPECT_EQ("", End.szText);
    EXPECT_EQ(CameBack, End.iExitCode);
}

TEST(AssertionReport, EndsTheProcessWithoutRunningExitHandlers)
{
    const TChildEnd End = RunInChild(
        []
        {
            std::atexit([] { _exit(1); });
            UntransformImpossiblePoint();
        });
    EXPECT_EQ(UntransformReport, End.szText);
    EXPECT_EQ(0, End.iExitCode);
}

#if !defined(_WIN32)

TEST(AssertionReport, EndsTheProcessWithCodeZeroWhereStandardErrorIsAClosedPipe)
{
    const TChildEnd End = RunInChild(
        []
        {
            int viPipe[2];
            if (pipe(viPipe) != 0)
            {
                _exit(1);
            }
            close(viPipe[0]);
            dup2(viPipe[1], STDERR_FILENO);
            UntransformImpossiblePoint();
        });
    EXPECT_EQ(0, End.iExitCode);
}

TEST(AssertionReport, AtATerminalRetryAndCancelBothEndTheProcess)
{
    for (const char* szAnswer : {"Retry\n", "Cancel\n", "\n"})
    {
        SCOPED_TRACE(szAnswer);
        const TChildEnd End = RunAtTerminal(UntransformImpossiblePoint, "Retry or Cancel? ", szAnswer);
        // The terminal turns every line break into carriage return and line feed, and echoes the answer.
        EXPECT_EQ(0u, End.szText.find("nuv\\nuv1math\\src\\affine.cpp:443 assertion failure:\r\n"
                                      "iResult!= RET_IMPOSSIBLE\r\nRetry or Cancel? "))
            << End.szText;
        EXPECT_EQ(0, End.iExitCode);
    }
}

#endif
