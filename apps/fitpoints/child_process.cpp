// child_process.cpp: runs another program without a shell.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "child_process.h"
#include "ending_signals.h"
#include "text.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace fitpoints {

using TFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// A file without a name that holds the text. A pipe could fill up while nobody reads it.
static TFile TemporaryFile(const std::string& a_szText)
{
    TFile File(std::tmpfile(), std::fclose);
    if (!File || std::fwrite(a_szText.data(), 1, a_szText.size(), File.get()) != a_szText.size() ||
        std::fflush(File.get()) != 0)
    {
        FailWithError("temporary file", "cannot be written", errno);
    }
    std::rewind(File.get());
    return File;
}

// The last line that is not blank. gnuplot prints the faulty command first and what is wrong with it last.
static std::string LastLine(std::FILE* a_File)
{
    std::string szLine;
    std::string szLast;
    std::rewind(a_File);
    for (int iChar = std::getc(a_File); iChar != EOF; iChar = std::getc(a_File))
    {
        if (iChar == '\n')
        {
            szLine.clear();
        }
        else if (szLine.size() < 200)
        {
            szLine.push_back(static_cast<char>(iChar));
            szLast = iChar == ' ' ? szLast : szLine;
        }
    }
    return OneLine(szLast);
}

// Attributes of a new process: its own process group, this signal mask, and SIGPIPE as usual, which this program ignores.
class TAttributes
{
public:
    explicit TAttributes(const sigset_t& a_Mask)
    {
        sigset_t Defaults;
        sigemptyset(&Defaults);
        sigaddset(&Defaults, SIGPIPE);
        posix_spawnattr_init(&m_Attributes);
        posix_spawnattr_setsigdefault(&m_Attributes, &Defaults);
        posix_spawnattr_setsigmask(&m_Attributes, &a_Mask);
        posix_spawnattr_setpgroup(&m_Attributes, 0);
        posix_spawnattr_setflags(&m_Attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    }
    ~TAttributes()
    {
        posix_spawnattr_destroy(&m_Attributes);
    }
    TAttributes(const TAttributes&) = delete;
    TAttributes& operator=(const TAttributes&) = delete;

    const posix_spawnattr_t* Get() const
    {
        return &m_Attributes;
    }

private:
    posix_spawnattr_t m_Attributes;
};

// Starts the command with these standard descriptors. An ending signal kills it and the processes that it starts.
static pid_t Spawn(const std::vector<std::string>& a_vszCommand, const int (&a_viDescriptors)[3])
{
    std::vector<char*> vszArguments;
    for (const std::string& szArgument : a_vszCommand)
    {
        vszArguments.push_back(const_cast<char*>(szArgument.c_str()));
    }
    vszArguments.push_back(nullptr);

    const TBlockedSignals Blocked;
    const TAttributes Attributes(Blocked.Before());
    posix_spawn_file_actions_t Actions;
    posix_spawn_file_actions_init(&Actions);
    for (int i = 0; i < 3; ++i)
    {
        posix_spawn_file_actions_adddup2(&Actions, a_viDescriptors[i], i);
    }
    pid_t iChild = 0;
    const int iError = posix_spawnp(&iChild, vszArguments[0], &Actions, Attributes.Get(), vszArguments.data(), environ);
    posix_spawn_file_actions_destroy(&Actions);
    if (iError != 0)
    {
        FailWithError(a_vszCommand[0], "cannot be run", iError);
    }
    SetChild(iChild);
    return iChild;
}

// Waits for the child and returns its status. Its number is forgotten before it can become that of another process.
static int WaitFor(pid_t a_iChild, const std::string& a_szProgram)
{
    siginfo_t Info;
    while (waitid(P_PID, static_cast<id_t>(a_iChild), &Info, WEXITED | WNOWAIT) < 0)
    {
        if (errno != EINTR)
        {
            FailWithError(a_szProgram, "cannot be waited for", errno);
        }
    }
    const TBlockedSignals Blocked;
    SetChild(0);
    int iStatus = 0;
    waitpid(a_iChild, &iStatus, 0);
    return iStatus;
}

TChildResult RunChild(const std::vector<std::string>& a_vszCommand, const std::string& a_szInput, int a_iOutput)
{
    const TFile Input = TemporaryFile(a_szInput);
    const TFile Error = TemporaryFile("");
    const int iStatus =
        WaitFor(Spawn(a_vszCommand, {fileno(Input.get()), a_iOutput, fileno(Error.get())}), a_vszCommand[0]);
    return {WIFEXITED(iStatus) && WEXITSTATUS(iStatus) == 0, LastLine(Error.get())};
}

} // namespace fitpoints
