// points.cpp: reads control points from CSV files and QGIS georeferencer files.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "points.h"
#include "rows.h"
#include "text.h"

#include <charconv>
#include <cmath>

namespace fitpoints {

static const std::size_t GREATEST_COUNT = 1000000;

// Why a text is no coordinate; empty if it is one. a_dValue gets the number.
static std::string ParseNumber(const std::string& a_szText, double& a_dValue)
{
    const char* szBegin = a_szText.data();
    const char* const szEnd = szBegin + a_szText.size();
    if (*szBegin == '+' && a_szText.size() > 1 && a_szText[1] != '-') // from_chars takes no plus sign
    {
        ++szBegin;
    }
    const std::from_chars_result Result = std::from_chars(szBegin, szEnd, a_dValue);
    if (Result.ec == std::errc::result_out_of_range)
    {
        return "is out of the range of a double";
    }
    if (Result.ec != std::errc() || Result.ptr != szEnd)
    {
        return "is not a decimal number";
    }
    return std::isfinite(a_dValue) ? "" : "is not a finite number";
}

static double Coordinate(const std::string& a_szField, const std::string& a_szColumn, const std::string& a_szPlace)
{
    if (a_szField.empty())
    {
        Fail(a_szPlace, "column " + a_szColumn + " is empty");
    }
    double dValue = 0;
    const std::string szProblem = ParseNumber(a_szField, dValue);
    if (!szProblem.empty())
    {
        Fail(a_szPlace, "column " + a_szColumn + ": " + Quoted(a_szField) + " " + szProblem);
    }
    return dValue;
}

// ---------------------------------------------------------------------------------------------------------------------
// Columns

// The indices of the columns; -1 for a column that the file does not have.
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
    // QGIS before 3.26 writes pixelX,pixelY instead of sourceX,sourceY.
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
    { return Coordinate(a_vszFields[a_iColumn], a_Columns.vszHeader[a_iColumn], a_szPlace); };
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
    TRowReader Reader(a_szFile);
    TFields vszFields;
    if (!ReadRow(Reader, vszFields))
    {
        Fail(a_szFile, Reader.iBytes <= 1 ? "the file is empty" : "the file has no header line");
    }
    const TColumns Columns = FindColumns(vszFields, Place(Reader));
    TPoints Points = {a_szFile, Columns.Kind, 0, {}};
    while (ReadRow(Reader, vszFields))
    {
        AddPoint(Columns, vszFields, Reader.iLine, Points);
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
