// output_file.h: files that appear whole or not at all.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_OUTPUT_FILE_H
#define NUV_FITPOINTS_OUTPUT_FILE_H

#include <memory>
#include <string>

namespace fitpoints {

// An output under a temporary name in the directory of its place. The destructor removes it unless it was put in place.
struct TOutput
{
    std::string szName;      // as the user gave it, for messages
    std::string szPlace;     // without symbolic links
    std::string szTemporary; // empty when the file is in place
    int iDescriptor;

    TOutput() = default;
    ~TOutput();
    TOutput(const TOutput&) = delete;
    TOutput& operator=(const TOutput&) = delete;
};

// Where an output of this name will stand, without symbolic links. Fails if something other than a regular file
// stands there, or its directory does not exist.
std::string OutputPlace(const std::string& a_szName);

// Opens the temporary file. Fails if the place cannot be written.
std::unique_ptr<TOutput> OpenOutput(const std::string& a_szName);

void WriteOutput(TOutput& a_Output, const std::string& a_szText);

// Makes sure that what was written is stored.
void CloseOutput(TOutput& a_Output);

// Renames a closed output to its place.
void PutInPlace(TOutput& a_Output);

// From now on SIGHUP, SIGINT and SIGTERM, where they are not ignored, remove what stands under temporary names before they
// end the process.
void RemoveOutputsOnSignals();

// Writes to standard output and fails if that cannot be.
void WriteStandardOutput(const std::string& a_szText);

} // namespace fitpoints

#endif // NUV_FITPOINTS_OUTPUT_FILE_H
