// report_test.cpp: the report with a platform and an allocator of the test's own.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "assertion.h"
#include "nuv1math.h"
#include "support/expect.h"

#include <cstdlib>

namespace {

std::vector<std::string> g_vszCalls; // what the report asked of the platform, in order

// If this is set, the next allocation of the library returns this array.
double* g_vdAllocation = nullptr;

} // namespace

// The platform of the test records its calls, and the process goes on.
namespace nuv {

void FormatReport(TReportChar* a_szText, const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition)
{
    std::snprintf(a_szText, REPORT_LENGTH, "%s|%d|%s", a_szPath, a_iLine, a_szCondition);
}

void ShowTextAndWait(const TReportChar* a_szText)
{
    g_vszCalls.push_back(std::string("show ") + a_szText);
}

void EndProcess()
{
    g_vszCalls.push_back("end");
}

} // namespace nuv

// The linker option --wrap redirects the library's allocator here. It can return an array of the test.
extern "C" void* __real_malloc(std::size_t a_iBytes);
extern "C" void __real_free(void* a_pMemory);

extern "C" void* __wrap_malloc(std::size_t a_iBytes)
{
    return g_vdAllocation != nullptr ? g_vdAllocation : __real_malloc(a_iBytes);
}

extern "C" void __wrap_free(void* a_pMemory)
{
    if (a_pMemory != g_vdAllocation)
    {
        __real_free(a_pMemory);
    }
}

using namespace nuv;
using namespace nuv_tests;

TEST(Report, ShowsTheTextThenEndsTheProcess)
{
    g_vszCalls.clear();
    ReportAssertion("path", 7, "condition");
    EXPECT_EQ((std::vector<std::string>{"show path|7|condition", "end"}), g_vszCalls);
}

TEST(Report, AConditionThatHoldsReportsNothing)
{
    g_vszCalls.clear();
    NUV_ASSERT_AT("path", 7, 1 + 1 == 2);
    EXPECT_TRUE(g_vszCalls.empty());
}

TEST(Report, TheNextStatementRunsWhereTheProcessGoesOn)
{
    g_vszCalls.clear();
    bool bRan = false;
    NUV_ASSERT_AT("path", 7, bRan);
    bRan = true;
    EXPECT_EQ((std::vector<std::string>{"show path|7|bRan", "end"}), g_vszCalls);
    EXPECT_TRUE(bRan);
}

TEST(Report, AnAllocatorThatHandsOutTheCallersArrayIsReported)
{
    const double vdX[] = {0.0, 1.0};
    const double vdY[] = {0.0, 0.0};
    const double vdXa[] = {0.0, 1.0};
    double vdYa[] = {0.0, 1.0};
    enumMethodUsed Used = METHOD_OMOGRAPHIC;
    TOmographicParams Params;
    g_vszCalls.clear();
    g_vdAllocation = vdYa;
    CalcCoefs(2, vdX, vdY, vdXa, vdYa, false, METHOD_CONFORMAL, Used, Params);
    g_vdAllocation = nullptr;
    EXPECT_EQ((std::vector<std::string>{"show nuv\\nuv1math\\src\\omographic.cpp|172|vdYa != a_vdYa", "end"}),
              g_vszCalls);
}
