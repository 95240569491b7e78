// child_process.cpp: child processes on POSIX systems.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "child_process.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace nuv_tests {

namespace {

int Checked(int a_iResult, const char* a_szCall)
{
    if (a_iResult < 0)
    {
        throw std::system_error(errno, std::generic_category(), a_szCall);
    }
    return a_iResult;
}

// Runs the statement in a fork, whose standard input and error are the given descriptors.
pid_t Start(const std::function<void()>& a_Statement, int a_iInput, int a_iError)
{
    const pid_t iChild = Checked(fork(), "fork");
    if (iChild == 0)
    {
        dup2(a_iInput, STDIN_FILENO);
        dup2(a_iError, STDERR_FILENO);
        a_Statement();
        _exit(CameBack);
    }
    close(a_iInput);
    close(a_iError);
    return iChild;
}

// Reads until the text ends with a_szPrompt, or until the other side is closed. A terminal whose other side is closed
// gives an error instead of an end.
std::string ReadText(int a_iFrom, const std::string& a_szPrompt = "")
{
    std::string szText;
    char cNext;
    while (read(a_iFrom, &cNext, 1) == 1)
    {
        szText += cNext;
        if (!a_szPrompt.empty() && szText.size() >= a_szPrompt.size() &&
            szText.compare(szText.size() - a_szPrompt.size(), a_szPrompt.size(), a_szPrompt) == 0)
        {
            break;
        }
    }
    return szText;
}

int WaitForExit(pid_t a_iChild)
{
    int iStatus = 0;
    Checked(waitpid(a_iChild, &iStatus, 0), "waitpid");
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
}

} // namespace

TChildEnd RunInChild(const std::function<void()>& a_Statement)
{
    int viPipe[2];
    Checked(pipe(viPipe), "pipe");
    fcntl(viPipe[0], F_SETFD, FD_CLOEXEC);
    const pid_t iChild = Start(a_Statement, Checked(open("/dev/null", O_RDONLY), "open /dev/null"), viPipe[1]);
    TChildEnd End{ReadText(viPipe[0]), 0};
    close(viPipe[0]);
    End.iExitCode = WaitForExit(iChild);
    return End;
}

TChildEnd RunAtTerminal(const std::function<void()>& a_Statement, const std::string& a_szPrompt,
                        const std::string& a_szAnswer)
{
    const int iUser = Checked(posix_openpt(O_RDWR | O_NOCTTY), "posix_openpt");
    Checked(grantpt(iUser), "grantpt");
    Checked(unlockpt(iUser), "unlockpt");
    const int iTerminal = Checked(open(ptsname(iUser), O_RDWR | O_NOCTTY), "open terminal");
    const pid_t iChild = Start(a_Statement, Checked(dup(iTerminal), "dup"), iTerminal);
    TChildEnd End{ReadText(iUser, a_szPrompt), 0};
    Checked(static_cast<int>(write(iUser, a_szAnswer.data(), a_szAnswer.size())), "write");
    End.szText += ReadText(iUser);
    close(iUser);
    End.iExitCode = WaitForExit(iChild);
    return End;
}

} // namespace nuv_tests
