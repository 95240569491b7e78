// rows.h: the rows of a text, their fields, and bounds on the lengths of its lines and of the whole.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_ROWS_H
#define NUV_FITPOINTS_ROWS_H

#include "input.h"

#include <limits>
#include <string>
#include <vector>

namespace fitpoints {

using TFields = std::vector<std::string>;

// The bound of a file whose points are all kept in memory, and none for a file that passes through.
static const std::size_t GREATEST_FILE = 256 * 1024 * 1024;
static const std::size_t UNBOUNDED_FILE = std::numeric_limits<std::size_t>::max();

// Reads an input row by row.
struct TRowReader
{
    TRowReader(TInput a_Input, std::size_t a_iGreatestFile);

    std::string szFile; // for messages
    TInput Input;
    std::vector<char> vcBuffer; // bytes of the input
    std::size_t iNext, iEnd;    // those of the buffer that are not used yet
    char iSeparator;            // of the fields
    std::size_t iGreatestFile;
    std::string szCrs;  // the comment line that starts with #CRS; empty if none was read
    long iLine;         // number of the last line read, from 1
    std::size_t iBytes; // read so far
};

// The comma, semicolon or tab that occurs most often outside of the quotes of a line. A comma if there is none of them.
char SeparatorOf(const std::string& a_szLine);

// "a comma", "a semicolon" or "a tab".
std::string SeparatorName(char a_iSeparator);

// Reads the next line that is neither blank nor a comment. False at the end of the file. Fails if a line is too long.
bool ReadRowText(TRowReader& a_Reader, std::string& a_szLine);

// The fields of a line, unquoted; blanks around fields are dropped. Fails if quotes do not match.
void SplitRow(const TRowReader& a_Reader, const std::string& a_szLine, TFields& a_vszFields);

// A field as it stands in a line: in quotes if it needs them.
std::string QuotedField(const std::string& a_szField, char a_iSeparator);

// "<file>:<line>" of the last line read.
std::string Place(const TRowReader& a_Reader);

} // namespace fitpoints

#endif // NUV_FITPOINTS_ROWS_H
