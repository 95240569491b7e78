// file_input.cpp: reads files, and shows how much of a long one is read.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "input.h"
#include "progress.h"
#include "text.h"

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace fitpoints {

static const char* const STANDARD_INPUT = "-";

struct TOpenFile
{
    explicit TOpenFile(const std::string& a_szFile);
    ~TOpenFile();
    TOpenFile(const TOpenFile&) = delete;
    TOpenFile& operator=(const TOpenFile&) = delete;

    std::string szName; // for messages
    int iDescriptor;
    off_t iSize; // 0 if it is not known
    off_t iRead;
};

TOpenFile::TOpenFile(const std::string& a_szFile)
    : szName(a_szFile == STANDARD_INPUT ? "standard input" : a_szFile),
      iDescriptor(a_szFile == STANDARD_INPUT ? STDIN_FILENO : open(a_szFile.c_str(), O_RDONLY | O_CLOEXEC)), iSize(0),
      iRead(0)
{
    if (iDescriptor < 0)
    {
        FailWithError(szName, "cannot be read", errno);
    }
    struct stat Status;
    if (fstat(iDescriptor, &Status) == 0 && S_ISREG(Status.st_mode))
    {
        iSize = Status.st_size;
    }
}

// Standard input stays open: a file that is opened later would take its descriptor.
TOpenFile::~TOpenFile()
{
    if (iDescriptor > STDIN_FILENO)
    {
        close(iDescriptor);
    }
}

static std::size_t ReadBytes(TOpenFile& a_File, char* a_vcBytes, std::size_t a_iSize)
{
    ssize_t iBytes;
    do
    {
        iBytes = read(a_File.iDescriptor, a_vcBytes, a_iSize);
    } while (iBytes < 0 && errno == EINTR);
    if (iBytes < 0)
    {
        FailWithError(a_File.szName, "cannot be read", errno);
    }
    a_File.iRead += iBytes;
    if (a_File.iSize > 0)
    {
        ShowFraction(static_cast<double>(a_File.iRead) / static_cast<double>(a_File.iSize));
    }
    return static_cast<std::size_t>(iBytes);
}

TInput FileInput(const std::string& a_szFile)
{
    const auto File = std::make_shared<TOpenFile>(a_szFile);
    const auto Read = [File](char* a_vcBytes, std::size_t a_iSize) { return ReadBytes(*File, a_vcBytes, a_iSize); };
    return {File->szName, Read};
}

} // namespace fitpoints
