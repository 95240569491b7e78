// fitpoints_fuzz.cpp: lets fitpoints read, fit, report and draw arbitrary files.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The first byte of an input chooses the options and the form of the rest: the text of a file, or numbers from which a
// file is made, because random text rarely is a number. The checks: a failure is one line that names the file; points
// that were read can be written and read again, also in the forms for other programs and as a transformed table; every
// number of the reports is finite; JSON parses; no text of the user gets out of its quotes in the commands for gnuplot.

#include "apply.h"
#include "exports.h"
#include "fit.h"
#include "fuzzing.h"
#include "plot.h"
#include "report.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <sys/mman.h>
#include <unistd.h>

using namespace fitpoints;

namespace {

// Bits of the first byte.
enum enumChoice
{
    CHOICE_METHOD = 3, // two bits: conformal, affine, omographic, richest
    CHOICE_MIRRORED = 4,
    CHOICE_RAW = 8,
    CHOICE_NUMBERS = 16, // the rest is numbers, not text
    CHOICE_SMALL = 32,   // numbers of two bytes, so that points are more often equal or on one line
    CHOICE_QGIS = 64,    // a QGIS file is made from the numbers, not a CSV file
    CHOICE_ROBUST = 128  // blunders are dropped; the kind with the least error instead of the richest one
};

// A file in memory that can be opened by a name.
class TMemoryFile
{
public:
    TMemoryFile() : m_iDescriptor(memfd_create("points", 0)), m_szName("/proc/self/fd/" + std::to_string(m_iDescriptor))
    {
        NUV_CHECK(m_iDescriptor >= 0);
    }

    const std::string& Write(const std::string& a_szText) const
    {
        NUV_CHECK(ftruncate(m_iDescriptor, 0) == 0);
        NUV_CHECK(pwrite(m_iDescriptor, a_szText.data(), a_szText.size(), 0) == static_cast<ssize_t>(a_szText.size()));
        return m_szName;
    }

private:
    int m_iDescriptor;
    std::string m_szName;
};

// Makes a number of the next bytes and moves on.
double TakeNumber(const std::uint8_t*& a_pNext, bool a_bSmall)
{
    if (a_bSmall)
    {
        std::int16_t iValue;
        std::memcpy(&iValue, a_pNext, sizeof iValue);
        a_pNext += sizeof iValue;
        return iValue / 16.0;
    }
    double dValue;
    std::memcpy(&dValue, a_pNext, sizeof dValue);
    a_pNext += sizeof dValue;
    return dValue;
}

std::string FileOfNumbers(const std::uint8_t* a_pBytes, std::size_t a_iSize, bool a_bSmall, bool a_bQgis)
{
    std::string szText = a_bQgis ? "mapX,mapY,sourceX,sourceY,enable\n" : "x,y,X,Y\n";
    const std::uint8_t* const pEnd = a_pBytes + a_iSize;
    while (pEnd - a_pBytes >= (a_bSmall ? 8 : 32))
    {
        for (int i = 0; i < 4; ++i)
        {
            szText += (i == 0 ? "" : ",") + Exact(TakeNumber(a_pBytes, a_bSmall));
        }
        szText += a_bQgis ? ",1\n" : "\n";
    }
    return szText;
}

bool IsPlain(const std::string& a_szText)
{
    return std::all_of(a_szText.begin(), a_szText.end(),
                       [](unsigned char a_iChar) { return a_iChar == '\n' || (a_iChar >= 0x20 && a_iChar != 0x7F); });
}

std::string QuotedField(const std::string& a_szText)
{
    std::string szField = "\"";
    for (const char iChar : a_szText)
    {
        szField += iChar == '"' ? "\"\"" : std::string(1, iChar);
    }
    return szField + "\"";
}

std::string FileOfPoints(const TPoints& a_Points)
{
    std::string szText = "name,x,y,X,Y,check\n";
    for (const TPoint& P : a_Points.vPoints)
    {
        NUV_CHECK(IsPlainUtf8(P.szName));
        szText += QuotedField(P.szName);
        for (const double dValue : {P.dX, P.dY, P.dXa, P.dYa})
        {
            NUV_CHECK(std::isfinite(dValue));
            szText += "," + Exact(dValue);
        }
        szText += P.bCheck ? ",1\n" : ",0\n";
    }
    return szText;
}

// The points are the same after they are written to a file and read again.
void CheckRoundTrip(const TPoints& a_Points)
{
    static const TMemoryFile File;
    const TPoints Again = ReadPoints(FileInput(File.Write(FileOfPoints(a_Points))));
    NUV_CHECK(Again.vPoints.size() == a_Points.vPoints.size());
    for (std::size_t i = 0; i < Again.vPoints.size(); ++i)
    {
        const TPoint& First = a_Points.vPoints[i];
        const TPoint& Second = Again.vPoints[i];
        NUV_CHECK(First.szName == Second.szName && First.dX == Second.dX && First.dY == Second.dY &&
                  First.dXa == Second.dXa && First.dYa == Second.dYa && First.bCheck == Second.bCheck);
    }
}

void CheckFit(const TPoints& a_Points, const judgement::TOptions& a_Options, const TFit& a_Fit)
{
    NUV_CHECK(a_Options.Method >= judgement::ASK_RICHEST || static_cast<int>(a_Options.Method) == a_Fit.Kind);
    NUV_CHECK(a_Fit.vResiduals.size() == a_Points.vPoints.size() && a_Fit.iLargest < a_Fit.vResiduals.size());
    NUV_CHECK(std::isfinite(a_Fit.dSumOfSquares) && (!a_Fit.dRms || std::isfinite(*a_Fit.dRms)));
    const double dLargest = a_Fit.vResiduals[a_Fit.iLargest].dLength;
    for (const judgement::TPointJudgement& Point : a_Fit.vPoints)
    {
        NUV_CHECK(Point.Role != judgement::ROLE_FITTED || Point.dLength <= dLargest);
        NUV_CHECK(!Point.bTested || (Point.dProbability >= 0 && Point.dProbability <= 1));
        NUV_CHECK(!Point.bLeave || std::isfinite(Point.dLeaveLength));
        NUV_CHECK(a_Options.bRobust || Point.Role != judgement::ROLE_DROPPED);
    }
}

// JSON has null for a number that is not finite.
void CheckNumbers(const nlohmann::json& a_Object)
{
    for (const auto& Field : a_Object)
    {
        NUV_CHECK(Field.is_number());
    }
}

void CheckFrames(const nlohmann::json& a_Frames)
{
    for (const char* const szFrame : {"local", "original"})
    {
        if (!a_Frames.at(szFrame).is_null())
        {
            CheckNumbers(a_Frames.at(szFrame).at("coefficients"));
        }
    }
    NUV_CHECK(a_Frames.at("original").is_null() || a_Frames.at("largest_difference").is_number());
}

void CheckParameters(const nlohmann::json& a_Parameters)
{
    if (!a_Parameters.is_null())
    {
        for (const char* const szParameter : {"sx", "sy", "rotation", "skew"})
        {
            NUV_CHECK(a_Parameters.at(szParameter).is_number());
        }
    }
}

template <class TReport> std::string Written(TReport a_Report, const TPoints& a_Points, const TFit& a_Fit)
{
    std::string szReport;
    a_Report(a_Points, a_Fit, false, [&](const std::string& a_szText) { szReport += a_szText; });
    return szReport;
}

void CheckJson(const TPoints& a_Points, const TFit& a_Fit)
{
    const nlohmann::json Json = nlohmann::json::parse(Written(WriteJsonReport, a_Points, a_Fit));
    NUV_CHECK(Json.at("n") == a_Fit.Judgement.iFitted && Json.at("points").size() == a_Points.vPoints.size());
    CheckFrames(Json.at("frames"));
    CheckParameters(Json.at("parameters"));
    for (std::size_t i = 0; i < a_Points.vPoints.size(); ++i)
    {
        NUV_CHECK(Json["points"][i].at("name") == a_Points.vPoints[i].szName);
        NUV_CHECK(Json["points"][i].at("X") == a_Points.vPoints[i].dXa);
    }
}

void CheckWorldFile(const TPoints& a_Points, const TFit& a_Fit)
{
    if (a_Fit.Kind == nuv::METHOD_OMOGRAPHIC || !a_Fit.Original)
    {
        return;
    }
    const std::string szText = WorldFile(a_Points, a_Fit);
    NUV_CHECK(std::count(szText.begin(), szText.end(), '\n') == 6);
    const char* pNext = szText.c_str();
    while (*pNext != '\0')
    {
        char* pEnd;
        NUV_CHECK(std::isfinite(std::strtod(pNext, &pEnd)) && *pEnd == '\n');
        pNext = pEnd + 1;
    }
}

// The files for other programs can be read again, and hold the target points as they were.
void CheckExports(const TPoints& a_Points, const TFit& a_Fit)
{
    static const TMemoryFile File;
    const TPoints Gcps = ReadPoints(FileInput(File.Write(GcpArguments(a_Points, a_Fit))));
    NUV_CHECK(Gcps.Kind == FILE_GCP && static_cast<int>(Gcps.vPoints.size()) == a_Fit.Judgement.iFitted);
    const TPoints Qgis = ReadPoints(FileInput(File.Write(GeoreferencerFile(a_Points, a_Fit))));
    NUV_CHECK(Qgis.Kind == FILE_QGIS && Qgis.szCrs == a_Points.szCrs);
    NUV_CHECK(Qgis.vPoints.size() == a_Points.vPoints.size());
    for (std::size_t i = 0; i < Qgis.vPoints.size(); ++i)
    {
        NUV_CHECK(Qgis.vPoints[i].dXa == a_Points.vPoints[i].dXa && Qgis.vPoints[i].dYa == a_Points.vPoints[i].dYa);
        NUV_CHECK(Qgis.vPoints[i].bCheck == (a_Fit.vPoints[i].Role != judgement::ROLE_FITTED));
    }
}

// The file of the points is a table, too. Transformed in both directions it remains one, with as many points.
void CheckApplication(const std::string& a_szFile, const TPoints& a_Points, const TFit& a_Fit)
{
    static const TMemoryFile File;
    for (const bool bInverse : {false, true})
    {
        std::string szTable;
        const TApplication Application = {a_szFile, bInverse, a_Fit.Judgement.bSigma != 0};
        ApplyFit(Application, a_Fit, [&](const std::string& a_szText) { szTable += a_szText; });
        const TPoints Applied = ReadPoints(FileInput(File.Write(szTable)));
        NUV_CHECK(Applied.vPoints.size() == a_Points.vPoints.size());
    }
}

// Quotes are closed on their line. Outside of quotes there are only words of gnuplot and finite numbers.
void CheckScript(const TPoints& a_Points, const TFit& a_Fit)
{
    const std::string szScript = PlotScript(a_Points, a_Fit, PLOT_SVG);
    std::string szOutside;
    bool bInside = false;
    for (const char iChar : szScript)
    {
        NUV_CHECK(iChar != '\n' || !bInside);
        bInside = bInside != (iChar == '\'');
        szOutside += bInside ? "" : std::string(1, iChar);
    }
    NUV_CHECK(!bInside && IsPlain(szScript));
    NUV_CHECK(szOutside.find_first_not_of(
                  "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 \n'$<,.:[]+-") == std::string::npos);
    for (const char* const szNotFinite : {"inf", " nan", "-nan", "[nan", ":nan"})
    {
        NUV_CHECK(szOutside.find(szNotFinite) == std::string::npos);
    }
}

void FitAndReport(const std::string& a_szFile, const judgement::TOptions& a_Options)
{
    const TPoints Points = ReadPoints(FileInput(a_szFile));
    CheckRoundTrip(Points);
    const TFit Fit = FitPoints(Points, a_Options);
    CheckFit(Points, a_Options, Fit);
    NUV_CHECK(IsPlain(Written(WriteTextReport, Points, Fit)));
    CheckJson(Points, Fit);
    CheckWorldFile(Points, Fit);
    CheckExports(Points, Fit);
    CheckScript(Points, Fit);
    if (Points.Kind != FILE_GCP)
    {
        CheckApplication(a_szFile, Points, Fit);
    }
}

judgement::TOptions Options(int a_iChoice)
{
    judgement::TOptions Result = {};
    Result.Method = static_cast<judgement::enumMethod>(a_iChoice & CHOICE_METHOD);
    Result.bRobust = (a_iChoice & CHOICE_ROBUST) != 0;
    if (Result.bRobust && Result.Method == judgement::ASK_RICHEST)
    {
        Result.Method = judgement::ASK_AUTO;
    }
    Result.dLevel = judgement::USUAL_LEVEL;
    Result.bMirrored = (a_iChoice & CHOICE_MIRRORED) != 0;
    Result.bRaw = (a_iChoice & CHOICE_RAW) != 0;
    return Result;
}

std::string FileText(int a_iChoice, const std::uint8_t* a_pBytes, std::size_t a_iSize)
{
    return (a_iChoice & CHOICE_NUMBERS) != 0
               ? FileOfNumbers(a_pBytes, a_iSize, a_iChoice & CHOICE_SMALL, a_iChoice & CHOICE_QGIS)
               : std::string(reinterpret_cast<const char*>(a_pBytes), a_iSize);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_pBytes, std::size_t a_iSize)
{
    if (a_iSize == 0)
    {
        return 0;
    }
    static const TMemoryFile File;
    const int iChoice = a_pBytes[0];
    const std::string& szName = File.Write(FileText(iChoice, a_pBytes + 1, a_iSize - 1));
    try
    {
        FitAndReport(szName, Options(iChoice));
    }
    catch (const TFailure& Failure)
    {
        const std::string szLine = OneLine(Failure.what());
        NUV_CHECK(szLine.compare(0, szName.size(), szName) == 0 && szLine.size() < 400);
        NUV_CHECK(IsPlain(szLine) && szLine.find('\n') == std::string::npos);
    }
    return 0;
}
