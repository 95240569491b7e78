// assertion_internal_test.cpp: assertion sites that only internal calls or a faulty allocator reach.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "assertion.h"
#include "functionsimp.h"
#include "nuv1math.h"
#include "support/child_process.h"
#include "support/expect.h"

#include <unistd.h>

using namespace nuv;
using namespace nuv_tests;

TEST(AssertionReport, APeriodThatIsNotPositiveShowsItsSiteAndEndsTheProcess)
{
    for (const double dPeriod : {0.0, -0.0, -Subnormal, -1.0, -Inf, NaN})
    {
        SCOPED_TRACE(dPeriod);
        const TChildEnd End = RunInChild([dPeriod] { ReduceToPeriod(1.0, dPeriod); });
        EXPECT_EQ("nuv\\nuv_math\\include\\functionsimp.h:254 assertion failure:\ny>0", End.szText);
        EXPECT_EQ(0, End.iExitCode);
    }
}

TEST(AssertionReport, ThePositivePeriodsPass)
{
    for (const double dPeriod : {Subnormal, 1.0, Inf})
    {
        SCOPED_TRACE(dPeriod);
        EXPECT_EQ(CameBack, RunInChild([dPeriod] { ReduceToPeriod(1.0, dPeriod); }).iExitCode);
    }
}

// No argument reaches these sites, so the test calls the report as the site does. sources_test.py compares the sites in
// the sources with assertion_sites.txt.
TEST(AssertionReport, ReadsAsPathLineAndCondition)
{
    struct TSite
    {
        const char* szPath;
        int iLine;
        const char* szCondition;
        const char* szText;
    };
    const TSite vSites[] = {
        {"nuv\\nuv1math\\src\\omographic.cpp", 172, "vdYa != a_vdYa",
         "nuv\\nuv1math\\src\\omographic.cpp:172 assertion failure:\nvdYa != a_vdYa"},
        {"nuv\\nuv1math\\src\\poly.cpp", 38, "vdA[ iDegree] != 0",
         "nuv\\nuv1math\\src\\poly.cpp:38 assertion failure:\nvdA[ iDegree] != 0"},
        {"NUV\\NUV1MATH\\Src\\TRIG.cpp", 142, "iRet == 2",
         "NUV\\NUV1MATH\\Src\\TRIG.cpp:142 assertion failure:\niRet == 2"},
        {"NUV\\NUV1MATH\\Src\\TRIG.cpp", 153, "iRet == 2",
         "NUV\\NUV1MATH\\Src\\TRIG.cpp:153 assertion failure:\niRet == 2"},
        {"NUV\\NUV1MATH\\Src\\TRIG.cpp", 165, "iRet>=0",
         "NUV\\NUV1MATH\\Src\\TRIG.cpp:165 assertion failure:\niRet>=0"},
    };
    for (const TSite& Site : vSites)
    {
        const TChildEnd End = RunInChild([&Site] { ReportAssertion(Site.szPath, Site.iLine, Site.szCondition); });
        EXPECT_EQ(Site.szText, End.szText);
        EXPECT_EQ(0, End.iExitCode);
    }
}

TEST(AssertionReport, NeverExceedsItsBuffer)
{
    const std::string szLong(1000, 'p');
    const TChildEnd End = RunInChild([&szLong] { ReportAssertion(szLong.c_str(), 1, "condition"); });
    EXPECT_EQ(szLong.substr(0, REPORT_LENGTH - 1), End.szText);
    EXPECT_EQ(0, End.iExitCode);
}
