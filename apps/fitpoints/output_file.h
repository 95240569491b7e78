// output_file.h: output files that appear whole or not at all.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_OUTPUT_FILE_H
#define NUV_FITPOINTS_OUTPUT_FILE_H

#include <memory>
#include <string>

namespace fitpoints {

// An output file with a temporary name in the directory of its place. The destructor removes it unless it is in place.
struct TOutput
{
    std::string szName;      // as the user gave it, for messages
    std::string szPlace;     // its final path, without symbolic links
    std::string szTemporary; // empty when the file is in place
    int iDescriptor;

    TOutput() = default;
    ~TOutput();
    TOutput(const TOutput&) = delete;
    TOutput& operator=(const TOutput&) = delete;
};

// The final path of an output with this name, without symbolic links. Fails if something other than a regular file is
// there, if it is the file of standard output or standard error, or if the directory does not exist.
std::string OutputPlace(const std::string& a_szName);

// Creates the temporary file. Fails if the place cannot be written.
std::unique_ptr<TOutput> OpenOutput(const std::string& a_szName);

void WriteOutput(TOutput& a_Output, const std::string& a_szText);

// Closes the file after its contents are on the disk.
void CloseOutput(TOutput& a_Output);

// Renames a closed output to its final path.
void PutInPlace(TOutput& a_Output);

// Fails if the text cannot be written.
void WriteStandardOutput(const std::string& a_szText);

} // namespace fitpoints

#endif // NUV_FITPOINTS_OUTPUT_FILE_H
