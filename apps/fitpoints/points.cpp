// points.cpp: reading of control points from CSV and QGIS georeferencer files.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "points.h"
#include "text.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <csv.h>
#include <memory>

namespace fitpoints {

// Bounds on what is read, so that no input, endless ones included, takes more than a bounded memory and time.
static const std::size_t GREATEST_LINE = 64 * 1024;
static const std::size_t GREATEST_FILE = 256 * 1024 * 1024;
static const std::size_t GREATEST_COUNT = 1000000;

// ---------------------------------------------------------------------------------------------------------------------
// Lines

struct TLineReader
{
    std::string szFile;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> File;
    long iLine;         // number of the last line read
    std::size_t iBytes; // read so far
};

static TLineReader OpenLines(const std::string& a_szFile)
{
    TLineReader Reader = {a_szFile, {std::fopen(a_szFile.c_str(), "rb"), std::fclose}, 0, 0};
    if (!Reader.File)
    {
        FailWithError(a_szFile, "cannot be read", errno);
    }
    return Reader;
}

static void CheckBounds(const TLineReader& a_Reader, const std::string& a_szLine)
{
    if (a_szLine.size() > GREATEST_LINE)
    {
        Fail(Place(a_Reader.szFile, a_Reader.iLine), "the line is longer than 64 KiB");
    }
    if (a_Reader.iBytes > GREATEST_FILE)
    {
        Fail(Place(a_Reader.szFile, a_Reader.iLine), "the file is longer than 256 MiB");
    }
}

static void RemovePrefix(std::string& a_szLine, const std::string& a_szPrefix)
{
    if (a_szLine.compare(0, a_szPrefix.size(), a_szPrefix) == 0)
    {
        a_szLine.erase(0, a_szPrefix.size());
    }
}

// The next line without its end (LF or CR LF) and, at the start of the file, without the byte order mark.
static bool ReadLine(TLineReader& a_Reader, std::string& a_szLine)
{
    a_szLine.clear();
    ++a_Reader.iLine;
    int iChar = getc_unlocked(a_Reader.File.get()); // one thread: without the lock, in a third of the time
    for (; iChar != EOF && iChar != '\n'; iChar = getc_unlocked(a_Reader.File.get()))
    {
        a_szLine.push_back(static_cast<char>(iChar));
        ++a_Reader.iBytes;
        CheckBounds(a_Reader, a_szLine);
    }
    ++a_Reader.iBytes;
    CheckBounds(a_Reader, a_szLine);
    if (std::ferror(a_Reader.File.get()))
    {
        FailWithError(a_Reader.szFile, "cannot be read", errno);
    }
    if (iChar == EOF && a_szLine.empty())
    {
        return false;
    }
    if (!a_szLine.empty() && a_szLine.back() == '\r')
    {
        a_szLine.pop_back();
    }
    if (a_Reader.iLine == 1)
    {
        RemovePrefix(a_szLine, "\xEF\xBB\xBF");
    }
    return true;
}

// The next line that is neither blank nor a comment.
static bool ReadRowLine(TLineReader& a_Reader, std::string& a_szLine)
{
    while (ReadLine(a_Reader, a_szLine))
    {
        if (a_szLine.find_first_not_of(" \t") != std::string::npos && a_szLine[0] != '#')
        {
            return true;
        }
    }
    return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// Fields

using TFields = std::vector<std::string>;

struct TRow
{
    TFields vszFields;
    int iEnds; // row ends seen: more than one where a carriage return stands inside the line
};

struct TCsvParser
{
    csv_parser Parser;

    TCsvParser()
    {
        csv_init(&Parser, CSV_STRICT | CSV_STRICT_FINI);
    }
    ~TCsvParser()
    {
        csv_free(&Parser);
    }
    TCsvParser(const TCsvParser&) = delete;
    TCsvParser& operator=(const TCsvParser&) = delete;
};

static void AddField(void* a_szText, std::size_t a_iLength, void* a_Row)
{
    static_cast<TRow*>(a_Row)->vszFields.emplace_back(static_cast<const char*>(a_szText), a_iLength);
}

static void EndRow(int, void* a_Row)
{
    ++static_cast<TRow*>(a_Row)->iEnds;
}

// The fields of one line, unquoted; blanks around unquoted fields are dropped.
static TFields SplitLine(TCsvParser& a_Csv, const std::string& a_szLine, const std::string& a_szPlace)
{
    TRow Row = {{}, 0};
    csv_parser* const Parser = &a_Csv.Parser;
    if (csv_parse(Parser, a_szLine.data(), a_szLine.size(), AddField, EndRow, &Row) != a_szLine.size() ||
        csv_fini(Parser, AddField, EndRow, &Row) != 0)
    {
        Fail(a_szPlace, "the quotes of the line do not match");
    }
    if (Row.iEnds != 1)
    {
        Fail(a_szPlace, "a carriage return stands inside the line");
    }
    return Row.vszFields;
}

static double ParseNumber(const std::string& a_szField, const std::string& a_szColumn, const std::string& a_szPlace)
{
    if (a_szField.empty())
    {
        Fail(a_szPlace, "column " + a_szColumn + " is empty");
    }
    const char* szBegin = a_szField.data();
    const char* const szEnd = szBegin + a_szField.size();
    if (*szBegin == '+' && a_szField.size() > 1 && a_szField[1] != '-') // from_chars takes no plus sign
    {
        ++szBegin;
    }
    double dValue = 0;
    const std::from_chars_result Result = std::from_chars(szBegin, szEnd, dValue);
    if (Result.ec == std::errc::result_out_of_range)
    {
        Fail(a_szPlace, "column " + a_szColumn + ": " + Quoted(a_szField) + " is out of the range of a double");
    }
    if (Result.ec != std::errc() || Result.ptr != szEnd)
    {
        Fail(a_szPlace, "column " + a_szColumn + ": " + Quoted(a_szField) + " is not a decimal number");
    }
    if (!std::isfinite(dValue))
    {
        Fail(a_szPlace, "column " + a_szColumn + ": " + Quoted(a_szField) + " is not a finite number");
    }
    return dValue;
}

// ---------------------------------------------------------------------------------------------------------------------
// Kinds of file

// Which column of the file holds what; -1 for a column that there is not.
struct TColumns
{
    enumFileKind Kind;
    TFields vszHeader;
    int iName, iX, iY, iXa, iYa, iEnable;
};

static std::string Joined(const TFields& a_vszFields)
{
    std::string szText;
    for (const std::string& szField : a_vszFields)
    {
        szText += (szText.empty() ? "" : ",") + szField;
    }
    return szText;
}

static TColumns FindColumns(const TFields& a_vszHeader, const std::string& a_szPlace)
{
    const std::string szHeader = Joined(a_vszHeader);
    if (szHeader == "x,y,X,Y")
    {
        return {FILE_CSV, a_vszHeader, -1, 0, 1, 2, 3, -1};
    }
    if (szHeader == "name,x,y,X,Y")
    {
        return {FILE_CSV, a_vszHeader, 0, 1, 2, 3, 4, -1};
    }
    // Releases before 3.26 write pixelX,pixelY for the same columns.
    for (const std::string szSource : {"sourceX,sourceY", "pixelX,pixelY"})
    {
        const std::string szQgis = "mapX,mapY," + szSource + ",enable";
        if (szHeader == szQgis || szHeader == szQgis + ",dX,dY,residual")
        {
            return {FILE_QGIS, a_vszHeader, -1, 2, 3, 0, 1, 4};
        }
    }
    Fail(a_szPlace, "the columns are " + Quoted(szHeader) +
                        ", not [name,]x,y,X,Y or mapX,mapY,sourceX,sourceY,enable[,dX,dY,residual]");
}

static TPoint ParsePoint(const TColumns& a_Columns, const TFields& a_vszFields, const std::string& a_szPlace)
{
    const auto ParseColumn = [&](int a_iColumn)
    { return ParseNumber(a_vszFields[a_iColumn], a_Columns.vszHeader[a_iColumn], a_szPlace); };
    TPoint Point = {};
    if (a_Columns.iName >= 0)
    {
        Point.szName = a_vszFields[a_Columns.iName];
    }
    if (!IsPlainUtf8(Point.szName))
    {
        Fail(a_szPlace, "column name: " + Quoted(Point.szName) + " is not plain UTF-8 text");
    }
    Point.dX = ParseColumn(a_Columns.iX);
    Point.dY = ParseColumn(a_Columns.iY);
    Point.dXa = ParseColumn(a_Columns.iXa);
    Point.dYa = ParseColumn(a_Columns.iYa);
    return Point;
}

static bool IsEnabled(const TColumns& a_Columns, const TFields& a_vszFields, const std::string& a_szPlace)
{
    if (a_Columns.iEnable < 0)
    {
        return true;
    }
    const std::string& szEnable = a_vszFields[a_Columns.iEnable];
    if (szEnable != "0" && szEnable != "1")
    {
        Fail(a_szPlace, "column enable: " + Quoted(szEnable) + " is neither 0 nor 1");
    }
    return szEnable == "1";
}

static void CheckFieldCount(const TColumns& a_Columns, const TFields& a_vszFields, const std::string& a_szPlace)
{
    if (a_vszFields.size() != a_Columns.vszHeader.size())
    {
        Fail(a_szPlace, Count(a_vszFields.size(), "field") + " where the header has " +
                            std::to_string(a_Columns.vszHeader.size()));
    }
}

static void AddPoint(const TColumns& a_Columns, const TFields& a_vszFields, long a_iLine, TPoints& a_Points)
{
    const std::string szPlace = Place(a_Points.szFile, a_iLine);
    CheckFieldCount(a_Columns, a_vszFields, szPlace);
    TPoint Point = ParsePoint(a_Columns, a_vszFields, szPlace);
    Point.iLine = a_iLine;
    if (a_Points.vPoints.size() + a_Points.iSkipped == GREATEST_COUNT)
    {
        Fail(szPlace, "more than " + std::to_string(GREATEST_COUNT) + " points");
    }
    if (IsEnabled(a_Columns, a_vszFields, szPlace))
    {
        a_Points.vPoints.push_back(std::move(Point));
    }
    else
    {
        ++a_Points.iSkipped;
    }
}

TPoints ReadPoints(const std::string& a_szFile)
{
    TLineReader Reader = OpenLines(a_szFile);
    TCsvParser Csv;
    std::string szLine;
    if (!ReadRowLine(Reader, szLine))
    {
        Fail(a_szFile, Reader.iBytes <= 1 ? "the file is empty" : "the file has no header line");
    }
    const std::string szHeaderPlace = Place(a_szFile, Reader.iLine);
    const TColumns Columns = FindColumns(SplitLine(Csv, szLine, szHeaderPlace), szHeaderPlace);
    TPoints Points = {a_szFile, Columns.Kind, 0, {}};
    while (ReadRowLine(Reader, szLine))
    {
        AddPoint(Columns, SplitLine(Csv, szLine, Place(a_szFile, Reader.iLine)), Reader.iLine, Points);
    }
    return Points;
}

TArrays Arrays(const std::vector<TPoint>& a_vPoints)
{
    TArrays Result;
    for (const TPoint& Point : a_vPoints)
    {
        Result.vdX.push_back(Point.dX);
        Result.vdY.push_back(Point.dY);
        Result.vdXa.push_back(Point.dXa);
        Result.vdYa.push_back(Point.dYa);
    }
    return Result;
}

std::string Label(const std::vector<TPoint>& a_vPoints, std::size_t a_iIndex)
{
    const TPoint& Point = a_vPoints[a_iIndex];
    const std::string szNumber = "point " + std::to_string(a_iIndex + 1) + ", line " + std::to_string(Point.iLine);
    return Point.szName.empty() ? szNumber : "'" + Point.szName + "'";
}

} // namespace fitpoints
