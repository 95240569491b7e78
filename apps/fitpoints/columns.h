// columns.h: the columns of a file by the names in its header, and the numbers in them.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_COLUMNS_H
#define NUV_FITPOINTS_COLUMNS_H

#include "points.h"
#include "rows.h"

namespace fitpoints {

enum enumColumn
{
    COLUMN_X, // source
    COLUMN_Y,
    COLUMN_XA, // target
    COLUMN_YA,
    COLUMN_NAME,
    COLUMN_ENABLE,
    COLUMN_CHECK,
    COLUMN_COUNT
};

struct TColumns
{
    enumFileKind Kind;
    TFields vszHeader;
    std::string vszNames[COLUMN_COUNT]; // as the kind of file calls them
    int viIndex[COLUMN_COUNT];          // -1 for a column that the file does not have
    std::vector<std::string> vszUnread; // columns that mean nothing to the program
};

// Which coordinates the file must have.
enum enumNeeded
{
    NEEDED_BOTH,
    NEEDED_SOURCE,
    NEEDED_TARGET
};

// Reads the header from its line, which tells the separator, too. Fails if a needed column is missing or a known one
// stands twice.
TColumns ReadHeader(TRowReader& a_Reader, const std::string& a_szLine, enumNeeded a_Needed);

// Fails unless the row has as many fields as the header.
void CheckFieldCount(const TRowReader& a_Reader, const TColumns& a_Columns, const std::string& a_szLine,
                     const TFields& a_vszFields);

// The decimal mark of the numbers of a file. Only a file whose separator is not the comma may have decimal commas, and
// none may have both marks: 1,234 would be a thousand times smaller than 1.234 was meant.
struct TDecimalMark
{
    bool bCommaAllowed;
    char iMark; // '.' or ',', or 0 before the first number with a mark
};

// The finite number in a field. Fails if there is none. a_szColumn is the name of its column.
double ParseCoordinate(const std::string& a_szField, const std::string& a_szColumn, const TRowReader& a_Reader,
                       TDecimalMark& a_Mark);

// True if the field is a number, which then is in a_dValue.
bool IsNumber(const std::string& a_szField, double& a_dValue);

} // namespace fitpoints

#endif // NUV_FITPOINTS_COLUMNS_H
