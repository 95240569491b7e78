// output_file.cpp: output files that appear whole or not at all, because they are renamed when they are complete.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "output_file.h"
#include "ending_signals.h"
#include "progress.h"
#include "text.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace fitpoints {

static const char* const CANNOT_WRITE = "cannot be written";

TOutput::~TOutput()
{
    if (iDescriptor >= 0)
    {
        close(iDescriptor);
    }
    if (!szTemporary.empty())
    {
        const TBlockedSignals Blocked;
        unlink(szTemporary.c_str());
        ForgetTemporary(szTemporary);
    }
}

static std::string RealPath(const std::string& a_szName, const std::string& a_szPath)
{
    char* const szResolved = realpath(a_szPath.c_str(), nullptr);
    if (szResolved == nullptr)
    {
        FailWithError(a_szName, CANNOT_WRITE, errno);
    }
    const std::string szResult = szResolved;
    std::free(szResolved);
    return szResult;
}

// The directory part of a path, with its slash; empty if there is none.
static std::string DirectoryOf(const std::string& a_szPath)
{
    return a_szPath.substr(0, a_szPath.rfind('/') + 1);
}

// Fails if the file is the one that standard output or standard error writes into. Both texts would go to the same
// place, and only one of them would be left.
static void CheckStandardFiles(const std::string& a_szName, const struct stat& a_Status)
{
    for (const int iDescriptor : {STDOUT_FILENO, STDERR_FILENO})
    {
        struct stat Standard;
        if (fstat(iDescriptor, &Standard) == 0 && Standard.st_dev == a_Status.st_dev &&
            Standard.st_ino == a_Status.st_ino)
        {
            Fail(a_szName, std::string(CANNOT_WRITE) + ": it is the file of standard " +
                               (iDescriptor == STDOUT_FILENO ? "output" : "error"));
        }
    }
}

std::string OutputPlace(const std::string& a_szName)
{
    struct stat Status;
    if (lstat(a_szName.c_str(), &Status) == 0)
    {
        if (S_ISLNK(Status.st_mode) && stat(a_szName.c_str(), &Status) != 0 && errno == ENOENT)
        {
            Fail(a_szName, std::string(CANNOT_WRITE) + ": it is a symbolic link to a file that does not exist");
        }
        const std::string szPlace = RealPath(a_szName, a_szName);
        if (stat(szPlace.c_str(), &Status) != 0 || !S_ISREG(Status.st_mode))
        {
            Fail(a_szName, std::string(CANNOT_WRITE) + ": not a regular file");
        }
        CheckStandardFiles(a_szName, Status);
        return szPlace;
    }
    if (errno != ENOENT)
    {
        FailWithError(a_szName, CANNOT_WRITE, errno);
    }
    const std::string szDirectory = DirectoryOf(a_szName);
    const std::string szFile = a_szName.substr(szDirectory.size());
    if (szFile.empty())
    {
        Fail(a_szName.empty() ? "output" : a_szName, std::string(CANNOT_WRITE) + ": no file name");
    }
    return RealPath(a_szName, szDirectory.empty() ? "." : szDirectory) + "/" + szFile;
}

// The permissions of the file that is replaced, or of a new file.
static mode_t FileMode(const std::string& a_szPlace)
{
    struct stat Status;
    if (stat(a_szPlace.c_str(), &Status) == 0)
    {
        return Status.st_mode & 0777;
    }
    const mode_t iMask = umask(0);
    umask(iMask);
    return 0666 & ~iMask;
}

static void MakeTemporary(TOutput& a_Output)
{
    const TBlockedSignals Blocked;
    std::string szTemporary = DirectoryOf(a_Output.szPlace) + ".fitpoints-XXXXXX";
    a_Output.iDescriptor = mkstemp(szTemporary.data());
    if (a_Output.iDescriptor < 0)
    {
        FailWithError(a_Output.szName, CANNOT_WRITE, errno);
    }
    a_Output.szTemporary = szTemporary;
    AddTemporary(szTemporary);
}

std::unique_ptr<TOutput> OpenOutput(const std::string& a_szName)
{
    auto Output = std::make_unique<TOutput>();
    Output->szName = a_szName;
    Output->iDescriptor = -1;
    Output->szPlace = OutputPlace(a_szName);
    if (access(Output->szPlace.c_str(), F_OK) == 0 && access(Output->szPlace.c_str(), W_OK) != 0)
    {
        FailWithError(a_szName, CANNOT_WRITE, errno);
    }
    MakeTemporary(*Output);
    if (fchmod(Output->iDescriptor, FileMode(Output->szPlace)) != 0)
    {
        FailWithError(a_szName, CANNOT_WRITE, errno);
    }
    return Output;
}

static void WriteAll(int a_iDescriptor, const std::string& a_szName, const std::string& a_szText)
{
    for (std::size_t iDone = 0; iDone < a_szText.size();)
    {
        const ssize_t iWritten = write(a_iDescriptor, a_szText.data() + iDone, a_szText.size() - iDone);
        if (iWritten < 0 && errno != EINTR)
        {
            FailWithError(a_szName, CANNOT_WRITE, errno);
        }
        iDone += iWritten < 0 ? 0 : static_cast<std::size_t>(iWritten);
    }
}

void WriteOutput(TOutput& a_Output, const std::string& a_szText)
{
    WriteAll(a_Output.iDescriptor, a_Output.szName, a_szText);
}

void CloseOutput(TOutput& a_Output)
{
    const int iDescriptor = a_Output.iDescriptor;
    a_Output.iDescriptor = -1;
    const bool bStored = fsync(iDescriptor) == 0;
    if (close(iDescriptor) != 0 || !bStored)
    {
        FailWithError(a_Output.szName, CANNOT_WRITE, errno);
    }
}

void PutInPlace(TOutput& a_Output)
{
    const TBlockedSignals Blocked;
    if (std::rename(a_Output.szTemporary.c_str(), a_Output.szPlace.c_str()) != 0)
    {
        FailWithError(a_Output.szName, CANNOT_WRITE, errno);
    }
    ForgetTemporary(a_Output.szTemporary);
    a_Output.szTemporary.clear();
}

void WriteStandardOutput(const std::string& a_szText)
{
    if (isatty(STDOUT_FILENO) != 0)
    {
        HideProgress(); // the text would stand beside it
    }
    WriteAll(STDOUT_FILENO, "standard output", a_szText);
}

} // namespace fitpoints
