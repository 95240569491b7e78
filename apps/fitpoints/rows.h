// rows.h: the rows of a text file, their fields, and bounds on the lengths of its lines and of the file.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_ROWS_H
#define NUV_FITPOINTS_ROWS_H

#include <cstdio>
#include <csv.h>
#include <limits>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace fitpoints {

using TFields = std::vector<std::string>;

// The bound of a file whose points are all kept in memory, and none for a file that passes through.
static const std::size_t GREATEST_FILE = 256 * 1024 * 1024;
static const std::size_t UNBOUNDED_FILE = std::numeric_limits<std::size_t>::max();

// Reads a file row by row; "-" is standard input. The constructor fails if the file cannot be opened.
struct TRowReader
{
    TRowReader(const std::string& a_szFile, std::size_t a_iGreatestFile);
    ~TRowReader();
    TRowReader(const TRowReader&) = delete;
    TRowReader& operator=(const TRowReader&) = delete;

    std::string szFile; // for messages
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> File;
    csv_parser Parser;
    char iSeparator; // of the fields
    std::size_t iGreatestFile;
    std::string szCrs;  // the comment line that starts with #CRS; empty if none was read
    long iLine;         // number of the last line read, from 1
    std::size_t iBytes; // read so far
    off_t iFileSize;    // 0 if it is not known
};

// The name of a file in messages: "standard input" for "-".
std::string InputName(const std::string& a_szFile);

// The comma, semicolon or tab that occurs most often outside of the quotes of a line. A comma if there is none of them.
char SeparatorOf(const std::string& a_szLine);

// "a comma", "a semicolon" or "a tab".
std::string SeparatorName(char a_iSeparator);

// Reads the next line that is neither blank nor a comment. False at the end of the file. Fails if a line is too long.
bool ReadRowText(TRowReader& a_Reader, std::string& a_szLine);

// The fields of a line, unquoted; blanks around fields without quotes are dropped. Fails if quotes do not match.
void SplitRow(TRowReader& a_Reader, const std::string& a_szLine, TFields& a_vszFields);

// "<file>:<line>" of the last line read.
std::string Place(const TRowReader& a_Reader);

} // namespace fitpoints

#endif // NUV_FITPOINTS_ROWS_H
