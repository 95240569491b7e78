// ending_signals.h: what a signal that ends the program must clean up.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_ENDING_SIGNALS_H
#define NUV_FITPOINTS_ENDING_SIGNALS_H

#include <csignal>
#include <string>
#include <sys/types.h>

namespace fitpoints {

// Blocks the ending signals (SIGHUP, SIGINT, SIGQUIT, SIGTERM) as long as it lives.
class TBlockedSignals
{
public:
    TBlockedSignals();
    ~TBlockedSignals();
    TBlockedSignals(const TBlockedSignals&) = delete;
    TBlockedSignals& operator=(const TBlockedSignals&) = delete;

    // The signals that were blocked before.
    const sigset_t& Before() const
    {
        return m_Before;
    }

private:
    sigset_t m_Before;
};

// From now on an ending signal cleans up before it ends the process. An ignored signal remains ignored.
void CleanUpOnSignals();

// These change what is cleaned up. The caller blocks the ending signals from before the file or the process exists, or
// ceases to exist, until the call.
void AddTemporary(const std::string& a_szPath);    // a file to be removed
void ForgetTemporary(const std::string& a_szPath); // it is in place or removed
void SetChild(pid_t a_iGroup);                     // the process group to be killed; 0 if there is none

} // namespace fitpoints

#endif // NUV_FITPOINTS_ENDING_SIGNALS_H
