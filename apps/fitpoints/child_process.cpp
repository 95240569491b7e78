// child_process.cpp: runs another program without a shell.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "child_process.h"
#include "text.h"

#include <cerrno>
#include <csignal>
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

// Starts the command with these standard descriptors. This program ignores SIGPIPE; the command does not.
static pid_t Spawn(const std::vector<std::string>& a_vszCommand, const int (&a_viDescriptors)[3])
{
    std::vector<char*> vszArguments;
    for (const std::string& szArgument : a_vszCommand)
    {
        vszArguments.push_back(const_cast<char*>(szArgument.c_str()));
    }
    vszArguments.push_back(nullptr);

    posix_spawn_file_actions_t Actions;
    posix_spawnattr_t Attributes;
    sigset_t Signals;
    posix_spawn_file_actions_init(&Actions);
    posix_spawnattr_init(&Attributes);
    sigemptyset(&Signals);
    sigaddset(&Signals, SIGPIPE);
    posix_spawnattr_setsigdefault(&Attributes, &Signals);
    posix_spawnattr_setflags(&Attributes, POSIX_SPAWN_SETSIGDEF);
    for (int i = 0; i < 3; ++i)
    {
        posix_spawn_file_actions_adddup2(&Actions, a_viDescriptors[i], i);
    }
    pid_t iChild = 0;
    const int iError = posix_spawnp(&iChild, vszArguments[0], &Actions, &Attributes, vszArguments.data(), environ);
    posix_spawnattr_destroy(&Attributes);
    posix_spawn_file_actions_destroy(&Actions);
    if (iError != 0)
    {
        FailWithError(a_vszCommand[0], "cannot be run", iError);
    }
    return iChild;
}

TChildResult RunChild(const std::vector<std::string>& a_vszCommand, const std::string& a_szInput, int a_iOutput)
{
    const TFile Input = TemporaryFile(a_szInput);
    const TFile Error = TemporaryFile("");
    const pid_t iChild = Spawn(a_vszCommand, {fileno(Input.get()), a_iOutput, fileno(Error.get())});
    int iStatus = 0;
    while (waitpid(iChild, &iStatus, 0) < 0)
    {
        if (errno != EINTR)
        {
            FailWithError(a_vszCommand[0], "cannot be waited for", errno);
        }
    }
    return {WIFEXITED(iStatus) && WEXITSTATUS(iStatus) == 0, LastLine(Error.get())};
}

} // namespace fitpoints
