// apply.cpp: transforms the points of a further file, row by row.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "apply.h"
#include "columns.h"
#include "text.h"

#include <algorithm>
#include <cmath>

namespace fitpoints {

static const double DEGREES = 57.29577951308232; // 180/pi
static const std::size_t GREATEST_HELD = 10000;  // rows that wait for the first decimal mark

// ---------------------------------------------------------------------------------------------------------------------
// Image of one point

static const std::size_t COORDINATES = 2;
static const std::size_t GREATEST_VALUES = 7;

struct TImage
{
    double vdValues[GREATEST_VALUES]; // two coordinates and, on demand, what describes their accuracy
};

static TFields ResultNames(const TApplication& a_Application, const TColumns& a_Columns)
{
    const int iFirst = a_Application.bInverse ? COLUMN_X : COLUMN_XA;
    TFields vszNames = {a_Columns.vszNames[iFirst], a_Columns.vszNames[iFirst + 1]};
    if (a_Application.bDeviations)
    {
        vszNames.insert(vszNames.end(), {"s" + vszNames[0], "s" + vszNames[1], "major", "minor", "direction"});
    }
    return vszNames;
}

static judgement::TOrigins Origins(const TFit& a_Fit)
{
    return {a_Fit.Origins.dX, a_Fit.Origins.dY, a_Fit.Origins.dXa, a_Fit.Origins.dYa};
}

static judgement::TVector Transformed(const TApplication& a_Application, const TFit& a_Fit,
                                      const judgement::TVector& a_Point, const TRowReader& a_Reader)
{
    judgement::TVector Result = {0, 0};
    const judgement::enumReason Reason = (a_Application.bInverse ? judgement::InversePoint : judgement::TransformPoint)(
        a_Fit.Coefs, Origins(a_Fit), a_Point, Result);
    if (Reason != judgement::REASON_NONE)
    {
        Fail(Place(a_Reader), a_Application.bInverse ? "no source point belongs to this target point"
                                                     : "the transformation takes this point to infinity");
    }
    return Result;
}

// Standard deviations of the coordinates; semi-axes of the error ellipse; direction of the greater one.
static void AddAccuracy(const TApplication& a_Application, const TFit& a_Fit, const judgement::TVector& a_Local,
                        const TRowReader& a_Reader, TImage& a_Image)
{
    const judgement::TCoefsCovariance& Covariance = a_Fit.Judgement.Covariance;
    judgement::TCovariance2 Position = {0, 0, 0};
    if (!a_Application.bInverse)
    {
        judgement::CovarianceOfImage(a_Fit.Coefs, Covariance, a_Local.dX, a_Local.dY, Position);
    }
    else if (judgement::CovarianceOfSource(a_Fit.Coefs, Covariance, a_Local.dX, a_Local.dY, Position) !=
             judgement::REASON_NONE)
    {
        Fail(Place(a_Reader), "no source point belongs to this target point");
    }
    judgement::TEllipse Ellipse;
    judgement::ErrorEllipse(Position, Ellipse);
    const double vdAccuracy[] = {std::sqrt(Position.dXX), std::sqrt(Position.dYY), Ellipse.dMajor, Ellipse.dMinor,
                                 std::atan2(Ellipse.dUy, Ellipse.dUx) * DEGREES};
    std::copy(std::begin(vdAccuracy), std::end(vdAccuracy), a_Image.vdValues + 2);
}

// Returns true if the point lies beyond the line that the transformation takes to infinity.
static bool FindImage(const TApplication& a_Application, const TFit& a_Fit, const judgement::TVector& a_Point,
                      const TRowReader& a_Reader, TImage& a_Image)
{
    const judgement::TVector Result = Transformed(a_Application, a_Fit, a_Point, a_Reader);
    const judgement::TVector Source = a_Application.bInverse ? Result : a_Point;
    const judgement::TVector Local = {Source.dX - a_Fit.Origins.dX, Source.dY - a_Fit.Origins.dY};
    a_Image.vdValues[0] = Result.dX;
    a_Image.vdValues[1] = Result.dY;
    if (a_Application.bDeviations)
    {
        AddAccuracy(a_Application, a_Fit, Local, a_Reader, a_Image);
    }
    return judgement::Denominator(a_Fit.Coefs, Local.dX, Local.dY) < 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Rows

// Writes rows. While no number of the input had a decimal mark, rows are held back, so that all numbers of the output
// get the same mark.
struct TRowWriter
{
    const TWrite& Write;
    char iSeparator;
    TDecimalMark Mark;                              // of the numbers that were read
    std::vector<int> viColumns;                     // the column of each result
    std::vector<std::pair<TFields, TImage> > vHeld; // rows that wait
    std::string szBuffer;
};

static void WriteBuffer(TRowWriter& a_Writer)
{
    a_Writer.Write(a_Writer.szBuffer);
    a_Writer.szBuffer.clear();
}

static void WriteFields(TRowWriter& a_Writer, const TFields& a_vszFields)
{
    for (std::size_t i = 0; i < a_vszFields.size(); ++i)
    {
        if (i > 0)
        {
            a_Writer.szBuffer += a_Writer.iSeparator;
        }
        a_Writer.szBuffer += QuotedField(a_vszFields[i], a_Writer.iSeparator);
    }
    a_Writer.szBuffer += '\n';
    if (a_Writer.szBuffer.size() > BUFFERED_BYTES)
    {
        WriteBuffer(a_Writer);
    }
}

// Puts the results into the fields and writes them.
static void WriteRow(TRowWriter& a_Writer, TFields& a_vszFields, const TImage& a_Image)
{
    for (std::size_t i = 0; i < a_Writer.viColumns.size(); ++i)
    {
        const std::size_t iColumn = static_cast<std::size_t>(a_Writer.viColumns[i]);
        if (iColumn >= a_vszFields.size())
        {
            a_vszFields.resize(iColumn + 1);
        }
        std::string& szField = a_vszFields[iColumn];
        szField = i < COORDINATES ? Shortest(a_Image.vdValues[i]) : SixDigits(a_Image.vdValues[i]);
        const std::size_t iPoint = a_Writer.Mark.iMark == ',' ? szField.find('.') : std::string::npos;
        if (iPoint != std::string::npos)
        {
            szField[iPoint] = ',';
        }
    }
    WriteFields(a_Writer, a_vszFields);
}

static void WriteHeldRows(TRowWriter& a_Writer)
{
    for (auto& [vszFields, Image] : a_Writer.vHeld)
    {
        WriteRow(a_Writer, vszFields, Image);
    }
    a_Writer.vHeld.clear();
}

static void AddRow(TRowWriter& a_Writer, TFields& a_vszFields, const TImage& a_Image)
{
    const bool bUnknown = a_Writer.Mark.bCommaAllowed && a_Writer.Mark.iMark == '\0';
    if (bUnknown && a_Writer.vHeld.size() < GREATEST_HELD)
    {
        a_Writer.vHeld.emplace_back(a_vszFields, a_Image);
        return;
    }
    a_Writer.Mark.iMark = bUnknown ? '.' : a_Writer.Mark.iMark;
    WriteHeldRows(a_Writer);
    WriteRow(a_Writer, a_vszFields, a_Image);
}

// Writes the header with the columns of the results.
static void WriteHeader(TRowWriter& a_Writer, TFields a_vszHeader, const TFields& a_vszResults)
{
    for (const std::string& szName : a_vszResults)
    {
        const auto Found = std::find(a_vszHeader.begin(), a_vszHeader.end(), szName);
        a_Writer.viColumns.push_back(static_cast<int>(Found - a_vszHeader.begin()));
        if (Found == a_vszHeader.end())
        {
            a_vszHeader.push_back(szName);
        }
    }
    WriteFields(a_Writer, a_vszHeader);
}

static long ApplyToRows(const TApplication& a_Application, const TFit& a_Fit, TRowReader& a_Reader,
                        const TColumns& a_Columns, TRowWriter& a_Writer)
{
    const int iFirst = a_Application.bInverse ? COLUMN_XA : COLUMN_X;
    long iBeyond = 0;
    std::string szLine;
    TFields vszFields;
    const auto Parse = [&](int a_iColumn)
    {
        return ParseCoordinate(vszFields[static_cast<std::size_t>(a_Columns.viIndex[a_iColumn])],
                               a_Columns.vszNames[a_iColumn], a_Reader, a_Writer.Mark);
    };
    while (ReadRowText(a_Reader, szLine))
    {
        SplitRow(a_Reader, szLine, vszFields);
        CheckFieldCount(a_Reader, a_Columns, szLine, vszFields);
        const double dX = Parse(iFirst);
        const double dY = Parse(iFirst + 1);
        TImage Image;
        iBeyond += FindImage(a_Application, a_Fit, {dX, dY}, a_Reader, Image) ? 1 : 0;
        AddRow(a_Writer, vszFields, Image);
    }
    return iBeyond;
}

std::vector<std::string> ApplyFit(const TApplication& a_Application, const TFit& a_Fit, const TWrite& a_Write)
{
    TRowReader Reader(FileInput(a_Application.szFile), UNBOUNDED_FILE);
    if (a_Application.bDeviations && a_Fit.Judgement.bSigma == 0)
    {
        Fail("--deviations", "the fit has no redundancy, from which they could be estimated");
    }
    std::string szLine;
    if (!ReadRowText(Reader, szLine))
    {
        Fail(Reader.szFile, "the file has no header line");
    }
    const TColumns Columns = ReadHeader(Reader, szLine, a_Application.bInverse ? NEEDED_TARGET : NEEDED_SOURCE);
    TRowWriter Writer = {a_Write, Reader.iSeparator, {Reader.iSeparator != ',', '\0'}, {}, {}, ""};
    WriteHeader(Writer, Columns.vszHeader, ResultNames(a_Application, Columns));
    const long iBeyond = ApplyToRows(a_Application, a_Fit, Reader, Columns, Writer);
    WriteHeldRows(Writer);
    WriteBuffer(Writer);
    return iBeyond == 0 ? std::vector<std::string>()
                        : std::vector<std::string>{Reader.szFile + ": warning: " + Count(iBeyond, "point") +
                                                   " beyond the line that the transformation takes to infinity"};
}

} // namespace fitpoints
