// progress.cpp: a line on the terminal that tells how far a long run is.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "progress.h"
#include "ending_signals.h"
#include "text.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <unistd.h>

namespace fitpoints {

using TClock = std::chrono::steady_clock;

static const std::chrono::milliseconds FIRST(1000); // a shorter run shows nothing
static const std::chrono::milliseconds PERIOD(200);

// What the thread shows.
static std::mutex g_Mutex; // of all that follows
static std::condition_variable g_End;
static bool g_bEnd = false;
static const char* g_szStage = "starting";
static double g_dFraction = -1; // negative: unknown
static TClock::time_point g_StageStart;

static std::thread g_Thread;

// Returns to the beginning of the line and clears it.
static const char* const CLEAR_LINE = "\r\x1B[K";

static void WriteToTerminal(const std::string& a_szText)
{
    // A terminal that takes no text is no failure of the program.
    const ssize_t iWritten = write(STDERR_FILENO, a_szText.data(), a_szText.size());
    static_cast<void>(iWritten);
}

static std::string ProgressLine()
{
    const std::string szLine = std::string("fitpoints: ") + g_szStage;
    if (g_dFraction < 0)
    {
        const std::chrono::duration<double> Taken = TClock::now() - g_StageStart;
        return szLine + ", " + Number("%.0f", Taken.count()) + " s";
    }
    const std::size_t iWidth = 30;
    const double dFraction = std::min(1.0, g_dFraction);
    const auto iDone = static_cast<std::size_t>(dFraction * iWidth);
    return szLine + " [" + std::string(iDone, '#') + std::string(iWidth - iDone, '-') + "] " +
           Number("%.0f", 100 * dFraction) + " %";
}

static void ShowUntilEnd()
{
    std::unique_lock<std::mutex> Lock(g_Mutex);
    bool bShown = false;
    std::chrono::milliseconds Wait = FIRST;
    while (!g_End.wait_for(Lock, Wait, [] { return g_bEnd; }))
    {
        WriteToTerminal(CLEAR_LINE + ProgressLine());
        bShown = true;
        Wait = PERIOD;
    }
    if (bShown)
    {
        WriteToTerminal(CLEAR_LINE);
    }
}

// The thread starts with the ending signals blocked, so that the main thread gets them.
void StartProgress()
{
    if (isatty(STDERR_FILENO) != 0)
    {
        const TBlockedSignals Blocked;
        g_StageStart = TClock::now();
        g_Thread = std::thread(ShowUntilEnd);
    }
}

void ShowStage(const char* a_szStage)
{
    const std::lock_guard<std::mutex> Lock(g_Mutex);
    g_szStage = a_szStage;
    g_dFraction = -1;
    g_StageStart = TClock::now();
}

void ShowFraction(double a_dFraction)
{
    const std::lock_guard<std::mutex> Lock(g_Mutex);
    g_dFraction = a_dFraction;
}

void HideProgress()
{
    {
        const std::lock_guard<std::mutex> Lock(g_Mutex);
        g_bEnd = true;
    }
    g_End.notify_all();
    if (g_Thread.joinable())
    {
        g_Thread.join();
    }
}

} // namespace fitpoints
