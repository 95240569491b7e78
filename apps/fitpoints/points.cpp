// points.cpp: reads control points from CSV files, QGIS georeferencer files and the arguments of GDAL's programs.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "points.h"
#include "columns.h"
#include "text.h"

#include <algorithm>

namespace fitpoints {

static const std::size_t GREATEST_COUNT = 1000000;

static void AddPoint(const TRowReader& a_Reader, TPoint&& a_Point, TPoints& a_Points)
{
    if (a_Points.vPoints.size() == GREATEST_COUNT)
    {
        Fail(Place(a_Reader), "more than " + std::to_string(GREATEST_COUNT) + " points");
    }
    a_Point.iLine = a_Reader.iLine;
    a_Points.vPoints.push_back(std::move(a_Point));
}

// ---------------------------------------------------------------------------------------------------------------------
// Files with a header

// The value of a column of zeros and ones, or a_bAbsent if the file does not have it.
static bool ParseFlag(const TRowReader& a_Reader, const TColumns& a_Columns, const TFields& a_vszFields,
                      enumColumn a_Column, bool a_bAbsent)
{
    if (a_Columns.viIndex[a_Column] < 0)
    {
        return a_bAbsent;
    }
    const std::string& szFlag = a_vszFields[a_Columns.viIndex[a_Column]];
    if (szFlag != "0" && szFlag != "1")
    {
        Fail(Place(a_Reader), "column " + a_Columns.vszNames[a_Column] + ": " + Quoted(szFlag) + " is neither 0 nor 1");
    }
    return szFlag == "1";
}

static std::string ParseName(const TRowReader& a_Reader, const TColumns& a_Columns, const TFields& a_vszFields)
{
    if (a_Columns.viIndex[COLUMN_NAME] < 0)
    {
        return "";
    }
    const std::string& szName = a_vszFields[a_Columns.viIndex[COLUMN_NAME]];
    if (!IsPlainUtf8(szName))
    {
        Fail(Place(a_Reader),
             "column " + a_Columns.vszNames[COLUMN_NAME] + ": " + Quoted(szName) + " is not plain UTF-8 text");
    }
    return szName;
}

static TPoint ParsePoint(const TRowReader& a_Reader, const TColumns& a_Columns, const TFields& a_vszFields,
                         TDecimalMark& a_Mark)
{
    TPoint Point = {ParseName(a_Reader, a_Columns, a_vszFields), 0, 0, 0, 0, 0, false};
    double* const vpCoordinates[] = {&Point.dX, &Point.dY, &Point.dXa, &Point.dYa};
    for (int i = COLUMN_X; i <= COLUMN_YA; ++i)
    {
        *vpCoordinates[i] = ParseCoordinate(a_vszFields[a_Columns.viIndex[i]], a_Columns.vszNames[i], a_Reader, a_Mark);
    }
    return Point;
}

static void ReadTable(TRowReader& a_Reader, std::string& a_szLine, TPoints& a_Points)
{
    const TColumns Columns = ReadHeader(a_Reader, a_szLine, NEEDED_BOTH);
    TDecimalMark Mark = {a_Reader.iSeparator != ',', '\0'};
    a_Points.Kind = Columns.Kind;
    a_Points.vszUnread = Columns.vszUnread;
    TFields vszFields;
    while (ReadRowText(a_Reader, a_szLine))
    {
        SplitRow(a_Reader, a_szLine, vszFields);
        CheckFieldCount(a_Reader, Columns, a_szLine, vszFields);
        TPoint Point = ParsePoint(a_Reader, Columns, vszFields, Mark);
        const bool bEnabled = ParseFlag(a_Reader, Columns, vszFields, COLUMN_ENABLE, true);
        const bool bCheck = ParseFlag(a_Reader, Columns, vszFields, COLUMN_CHECK, false);
        Point.bCheck = bCheck || !bEnabled;
        AddPoint(a_Reader, std::move(Point), a_Points);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Arguments of GDAL's programs

static const char* const GCP_OPTION = "-gcp";

static TFields Words(const std::string& a_szLine)
{
    const char* const szBlanks = " \t\n\v\f\r";
    TFields vszWords;
    for (std::size_t i = a_szLine.find_first_not_of(szBlanks); i != std::string::npos;)
    {
        const std::size_t iEnd = std::min(a_szLine.find_first_of(szBlanks, i), a_szLine.size());
        vszWords.push_back(a_szLine.substr(i, iEnd - i));
        i = a_szLine.find_first_not_of(szBlanks, iEnd);
    }
    return vszWords;
}

static bool IsGcpLine(const std::string& a_szLine)
{
    const TFields vszWords = Words(a_szLine);
    return std::find(vszWords.begin(), vszWords.end(), GCP_OPTION) != vszWords.end();
}

// Adds the point whose coordinates stand behind a_iWord. Returns the index behind them.
static std::size_t AddGcp(const TRowReader& a_Reader, const TFields& a_vszWords, std::size_t a_iWord, TPoints& a_Points)
{
    const char* const vszNames[] = {"pixel", "line", "X", "Y"};
    double vdValues[4];
    TDecimalMark Mark = {false, '\0'};
    for (std::size_t i = 0; i < 4; ++i)
    {
        const std::size_t iWord = a_iWord + 1 + i;
        vdValues[i] = ParseCoordinate(iWord < a_vszWords.size() ? a_vszWords[iWord] : "",
                                      std::string(vszNames[i]) + " of " + GCP_OPTION, a_Reader, Mark);
    }
    AddPoint(a_Reader, {"", 0, vdValues[0], vdValues[1], vdValues[2], vdValues[3], false}, a_Points);
    double dHeight;
    const std::size_t iEnd = a_iWord + 5;
    return iEnd < a_vszWords.size() && IsNumber(a_vszWords[iEnd], dHeight) ? iEnd + 1 : iEnd;
}

// Words outside of the options, such as the program and its files, are passed over. But a number that follows the
// coordinates and the height is a mistake.
static void AddGcpLine(const TRowReader& a_Reader, const std::string& a_szLine, TPoints& a_Points)
{
    const TFields vszWords = Words(a_szLine);
    std::size_t i = std::find(vszWords.begin(), vszWords.end(), GCP_OPTION) - vszWords.begin();
    if (i == vszWords.size())
    {
        Fail(Place(a_Reader), std::string("the line has no ") + GCP_OPTION);
    }
    while (i < vszWords.size())
    {
        const bool bOption = vszWords[i] == GCP_OPTION;
        i = bOption ? AddGcp(a_Reader, vszWords, i, a_Points) : i + 1;
        double dExcess;
        if (bOption && i < vszWords.size() && IsNumber(vszWords[i], dExcess))
        {
            Fail(Place(a_Reader),
                 std::string(GCP_OPTION) + " has more than pixel, line, X, Y and Z: " + Quoted(vszWords[i]));
        }
    }
}

static void ReadGcpLines(TRowReader& a_Reader, std::string& a_szLine, TPoints& a_Points)
{
    a_Points.Kind = FILE_GCP;
    do
    {
        AddGcpLine(a_Reader, a_szLine, a_Points);
    } while (ReadRowText(a_Reader, a_szLine));
}

// ---------------------------------------------------------------------------------------------------------------------

TPoints ReadPoints(TInput a_Input)
{
    TRowReader Reader(std::move(a_Input), GREATEST_FILE);
    std::string szLine;
    if (!ReadRowText(Reader, szLine))
    {
        Fail(Reader.szFile, Reader.iBytes == 0 ? "the file is empty" : "the file has no header line");
    }
    TPoints Points = {Reader.szFile, FILE_CSV, "", {}, {}};
    (IsGcpLine(szLine) ? ReadGcpLines : ReadTable)(Reader, szLine, Points);
    Points.szCrs = Reader.szCrs;
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

int PointCount(const TArrays& a_Points)
{
    return static_cast<int>(a_Points.vdX.size());
}

std::string Label(const std::vector<TPoint>& a_vPoints, std::size_t a_iIndex)
{
    const TPoint& Point = a_vPoints[a_iIndex];
    const std::string szNumber = "point " + std::to_string(a_iIndex + 1) + ", line " + std::to_string(Point.iLine);
    return Point.szName.empty() ? szNumber : "'" + Point.szName + "'";
}

} // namespace fitpoints
