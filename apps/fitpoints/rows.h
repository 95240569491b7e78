// rows.h: the rows of a CSV file, with bounds on the lengths of its lines and of the file.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_ROWS_H
#define NUV_FITPOINTS_ROWS_H

#include <cstdio>
#include <csv.h>
#include <memory>
#include <string>
#include <vector>

namespace fitpoints {

using TFields = std::vector<std::string>;

// Reads a file row by row. The constructor fails if the file cannot be opened.
struct TRowReader
{
    explicit TRowReader(const std::string& a_szFile);
    ~TRowReader();
    TRowReader(const TRowReader&) = delete;
    TRowReader& operator=(const TRowReader&) = delete;

    std::string szFile;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> File;
    csv_parser Parser;
    long iLine;         // number of the last line read, from 1
    std::size_t iBytes; // read so far
};

// Reads the next line that is neither blank nor a comment. The fields are unquoted; blanks around fields without quotes
// are dropped. False at the end of the file. Fails if a line is too long or its quotes do not match.
bool ReadRow(TRowReader& a_Reader, TFields& a_vszFields);

// "<file>:<line>" of the last line read.
std::string Place(const TRowReader& a_Reader);

} // namespace fitpoints

#endif // NUV_FITPOINTS_ROWS_H
