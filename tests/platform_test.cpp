// platform_test.cpp: the report on a system that interrupts, shortens or refuses its calls.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "assertion.h"
#include "support/expect.h"

#include <cerrno>
#include <sys/types.h>
#include <unistd.h>

namespace {

// The result of each following call: a number of bytes or an error.
struct TCall
{
    ssize_t iBytes;
    int iError;
};

bool g_bScripted = false;
std::vector<TCall> g_Writes;
std::vector<TCall> g_Reads;
std::string g_szWritten;
bool g_bTerminal = false;

ssize_t Next(std::vector<TCall>& a_Calls, ssize_t a_iDefault)
{
    if (a_Calls.empty())
    {
        return a_iDefault;
    }
    const TCall Call = a_Calls.front();
    a_Calls.erase(a_Calls.begin());
    errno = Call.iError;
    return Call.iBytes;
}

} // namespace

// The linker option --wrap redirects the system calls to these functions.
extern "C" ssize_t __real_write(int a_iFile, const void* a_pBytes, std::size_t a_iCount);
extern "C" ssize_t __real_read(int a_iFile, void* a_pBytes, std::size_t a_iCount);

extern "C" ssize_t __wrap_write(int a_iFile, const void* a_pBytes, std::size_t a_iCount)
{
    if (!g_bScripted)
    {
        return __real_write(a_iFile, a_pBytes, a_iCount);
    }
    const ssize_t iWritten = Next(g_Writes, static_cast<ssize_t>(a_iCount));
    if (iWritten > 0)
    {
        g_szWritten.append(static_cast<const char*>(a_pBytes), static_cast<std::size_t>(iWritten));
    }
    return iWritten;
}

// Every byte that is read is an x. After the last scripted call it is a line break.
extern "C" ssize_t __wrap_read(int a_iFile, void* a_pBytes, std::size_t a_iCount)
{
    if (!g_bScripted)
    {
        return __real_read(a_iFile, a_pBytes, a_iCount);
    }
    EXPECT_EQ(1u, a_iCount); // what stands behind the line break is not the report's
    *static_cast<char*>(a_pBytes) = g_Reads.empty() ? '\n' : 'x';
    return Next(g_Reads, 1);
}

extern "C" int __wrap_isatty(int)
{
    return g_bTerminal ? 1 : 0;
}

namespace {

// The text as it arrives; a_Writes and a_Reads are used up, or what is left of them is told.
std::string Show(const std::string& a_szText, const std::vector<TCall>& a_Writes, bool a_bTerminal,
                 const std::vector<TCall>& a_Reads)
{
    g_szWritten.clear();
    g_Writes = a_Writes;
    g_Reads = a_Reads;
    g_bTerminal = a_bTerminal;
    g_bScripted = true;
    nuv::ShowTextAndWait(a_szText.c_str());
    g_bScripted = false;
    return g_szWritten;
}

TEST(ReportText, IsWrittenAfterAnInterruptionAndInPieces)
{
    EXPECT_EQ("abcdef", Show("abcdef", {{-1, EINTR}, {2, 0}, {-1, EINTR}, {0, 0}, {3, 0}}, false, {}));
    EXPECT_TRUE(g_Writes.empty());
}

TEST(ReportText, IsGivenUpWhereItCannotBeWritten)
{
    EXPECT_EQ("ab", Show("abcdef", {{2, 0}, {-1, EPIPE}}, false, {}));
    EXPECT_TRUE(g_Writes.empty());
}

TEST(ReportAnswer, IsReadToTheLineBreakAfterAnInterruption)
{
    EXPECT_EQ("text\nRetry or Cancel? ", Show("text", {}, true, {{1, 0}, {-1, EINTR}, {1, 0}}));
    EXPECT_TRUE(g_Reads.empty());
}

TEST(ReportAnswer, EndsWithTheInputOrAnError)
{
    Show("text", {}, true, {{0, 0}, {1, 0}});
    EXPECT_EQ(1u, g_Reads.size());
    Show("text", {}, true, {{0, EINTR}, {1, 0}}); // of an earlier call
    EXPECT_EQ(1u, g_Reads.size());
    Show("text", {}, true, {{-1, EIO}, {1, 0}});
    EXPECT_EQ(1u, g_Reads.size());
}

TEST(ReportAnswer, IsNotAskedForWithoutATerminal)
{
    EXPECT_EQ("text", Show("text", {}, false, {{1, 0}}));
    EXPECT_EQ(1u, g_Reads.size());
}

} // namespace
