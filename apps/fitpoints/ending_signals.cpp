// ending_signals.cpp: what a signal that ends the program must clean up.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "ending_signals.h"

#include <algorithm>
#include <unistd.h>
#include <vector>

namespace fitpoints {

static const int ENDING_SIGNALS[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

// They change only while the ending signals are blocked, so that the handler may read them.
static std::vector<std::string> g_vszTemporaries;
static pid_t g_iChildGroup = 0;

static sigset_t EndingSignals()
{
    sigset_t Set;
    sigemptyset(&Set);
    for (const int iSignal : ENDING_SIGNALS)
    {
        sigaddset(&Set, iSignal);
    }
    return Set;
}

TBlockedSignals::TBlockedSignals()
{
    const sigset_t Set = EndingSignals();
    sigprocmask(SIG_BLOCK, &Set, &m_Before);
}

TBlockedSignals::~TBlockedSignals()
{
    sigprocmask(SIG_SETMASK, &m_Before, nullptr);
}

void AddTemporary(const std::string& a_szPath)
{
    g_vszTemporaries.push_back(a_szPath);
}

void ForgetTemporary(const std::string& a_szPath)
{
    g_vszTemporaries.erase(std::remove(g_vszTemporaries.begin(), g_vszTemporaries.end(), a_szPath),
                           g_vszTemporaries.end());
}

void SetChild(pid_t a_iGroup)
{
    g_iChildGroup = a_iGroup;
}

// All ending signals are blocked while this runs. A second one waits until the first one has ended the process. If the
// kernel restored the default action by itself (SA_RESETHAND), a second signal could end the process before the files
// are removed.
static void CleanUpAndEnd(int a_iSignal)
{
    for (const std::string& szTemporary : g_vszTemporaries)
    {
        unlink(szTemporary.c_str());
    }
    if (g_iChildGroup != 0)
    {
        kill(-g_iChildGroup, SIGKILL);
    }
    std::signal(a_iSignal, SIG_DFL);
    std::raise(a_iSignal); // it is delivered when this function returns
}

void CleanUpOnSignals()
{
    for (const int iSignal : ENDING_SIGNALS)
    {
        struct sigaction Action = {};
        if (sigaction(iSignal, nullptr, &Action) == 0 && Action.sa_handler == SIG_DFL)
        {
            Action.sa_handler = CleanUpAndEnd;
            Action.sa_mask = EndingSignals();
            Action.sa_flags = 0;
            sigaction(iSignal, &Action, nullptr);
        }
    }
}

} // namespace fitpoints
