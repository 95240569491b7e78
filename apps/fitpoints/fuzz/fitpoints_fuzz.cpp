// fitpoints_fuzz.cpp: fitpoints on arbitrary files: what it reads, fits, reports, and tells gnuplot.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The first byte chooses options and form, the rest is the file: as it is, or points made of its bytes, so that every
// double is as likely as text. Beside crashes: a failure is one line that names the file; a file that is read comes back
// from what is written of it; every figure of a report is finite, JSON parses, no user's text reaches gnuplot's commands.

#include "assertion.h"
#include "fit.h"
#include "plot.h"
#include "report.h"
#include "text.h"
#include "world_file.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <sys/mman.h>
#include <unistd.h>

// An assertion report of the library is a finding; its own would end the process with code 0, unnoticed.
namespace nuv {

void FormatReport(TReportChar* a_szText, const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition)
{
    std::snprintf(a_szText, REPORT_LENGTH, "%s:%d %s", a_szPath, a_iLine, a_szCondition);
}

void ShowTextAndWait(const TReportChar* a_szText)
{
    std::fprintf(stderr, "assertion failure: %s\n", a_szText);
}

void EndProcess()
{
    std::abort();
}

} // namespace nuv

using namespace fitpoints;

namespace {

#define ORACLE(a_Condition)                                                                                            \
    do                                                                                                                 \
    {                                                                                                                  \
        if (!(a_Condition))                                                                                            \
        {                                                                                                              \
            std::fprintf(stderr, "oracle, line %d: %s\n", __LINE__, #a_Condition);                                     \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)

// Bits of the first byte.
enum enumChoice
{
    CHOICE_METHOD = 3, // conformal, affine, omographic, none demanded
    CHOICE_MIRRORED = 4,
    CHOICE_RAW = 8,
    CHOICE_NUMBERS = 16, // points made of the bytes
    CHOICE_SMALL = 32,   // of two bytes a coordinate, so that points are equal or on a line more often
    CHOICE_QGIS = 64
};

// A file in memory with a name.
class TMemoryFile
{
public:
    TMemoryFile() : m_iDescriptor(memfd_create("points", 0)), m_szName("/proc/self/fd/" + std::to_string(m_iDescriptor))
    {
        ORACLE(m_iDescriptor >= 0);
    }

    const std::string& Write(const std::string& a_szText) const
    {
        ORACLE(ftruncate(m_iDescriptor, 0) == 0);
        ORACLE(pwrite(m_iDescriptor, a_szText.data(), a_szText.size(), 0) == static_cast<ssize_t>(a_szText.size()));
        return m_szName;
    }

private:
    int m_iDescriptor;
    std::string m_szName;
};

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

// What was read, written as a file and read again, is the same.
void CheckRoundTrip(const TPoints& a_Points)
{
    static const TMemoryFile File;
    std::string szText = "name,x,y,X,Y\n";
    for (const TPoint& P : a_Points.vPoints)
    {
        ORACLE(IsPlainUtf8(P.szName));
        szText += QuotedField(P.szName);
        for (const double dValue : {P.dX, P.dY, P.dXa, P.dYa})
        {
            ORACLE(std::isfinite(dValue));
            szText += "," + Exact(dValue);
        }
        szText += "\n";
    }
    const TPoints Again = ReadPoints(File.Write(szText));
    ORACLE(Again.vPoints.size() == a_Points.vPoints.size());
    for (std::size_t i = 0; i < Again.vPoints.size(); ++i)
    {
        const TPoint& First = a_Points.vPoints[i];
        const TPoint& Second = Again.vPoints[i];
        ORACLE(First.szName == Second.szName && First.dX == Second.dX && First.dY == Second.dY &&
               First.dXa == Second.dXa && First.dYa == Second.dYa);
    }
}

void CheckFit(const TPoints& a_Points, const TFitOptions& a_Options, const TFit& a_Fit)
{
    ORACLE(!a_Options.Demanded || *a_Options.Demanded == a_Fit.Kind);
    ORACLE(a_Fit.vResiduals.size() == a_Points.vPoints.size() && a_Fit.iLargest < a_Fit.vResiduals.size());
    ORACLE(std::isfinite(a_Fit.dSumOfSquares) && (!a_Fit.dRms || std::isfinite(*a_Fit.dRms)));
    for (const TResidual& R : a_Fit.vResiduals)
    {
        ORACLE(std::isfinite(R.dX) && std::isfinite(R.dY) && R.dLength <= a_Fit.vResiduals[a_Fit.iLargest].dLength);
    }
}

// A figure that is not finite would be null.
void CheckNumbers(const nlohmann::json& a_Object)
{
    for (const auto& Field : a_Object)
    {
        ORACLE(Field.is_number());
    }
}

void CheckJson(const TPoints& a_Points, const TFit& a_Fit)
{
    const nlohmann::json Json = nlohmann::json::parse(JsonReport(a_Points, a_Fit));
    ORACLE(Json.at("n") == a_Points.vPoints.size() && Json.at("points").size() == a_Points.vPoints.size());
    for (const char* const szFrame : {"local", "original"})
    {
        const nlohmann::json& Frame = Json.at("frames").at(szFrame);
        if (!Frame.is_null())
        {
            CheckNumbers(Frame.at("coefficients"));
        }
    }
    ORACLE(Json.at("frames").at("original").is_null() || Json.at("frames").at("largest_difference").is_number());
    if (!Json.at("parameters").is_null())
    {
        for (const char* const szParameter : {"sx", "sy", "rotation", "skew"})
        {
            ORACLE(Json.at("parameters").at(szParameter).is_number());
        }
    }
    for (std::size_t i = 0; i < a_Points.vPoints.size(); ++i)
    {
        ORACLE(Json["points"][i].at("name") == a_Points.vPoints[i].szName);
        ORACLE(Json["points"][i].at("X") == a_Points.vPoints[i].dXa);
    }
}

void CheckWorldFile(const TPoints& a_Points, const TFit& a_Fit)
{
    if (a_Fit.Kind == nuv::METHOD_OMOGRAPHIC || !a_Fit.Original)
    {
        return;
    }
    const std::string szText = WorldFile(a_Points, a_Fit);
    ORACLE(std::count(szText.begin(), szText.end(), '\n') == 6);
    const char* pNext = szText.c_str();
    while (*pNext != '\0')
    {
        char* pEnd;
        ORACLE(std::isfinite(std::strtod(pNext, &pEnd)) && *pEnd == '\n');
        pNext = pEnd + 1;
    }
}

// Quotes are closed on their line, and what stands outside of them are gnuplot's words and finite numbers.
void CheckScript(const TPoints& a_Points, const TFit& a_Fit)
{
    const std::string szScript = PlotScript(a_Points, a_Fit, PLOT_SVG);
    std::string szOutside;
    bool bInside = false;
    for (const char iChar : szScript)
    {
        ORACLE(iChar != '\n' || !bInside);
        bInside = bInside != (iChar == '\'');
        szOutside += bInside ? "" : std::string(1, iChar);
    }
    ORACLE(!bInside && IsPlain(szScript));
    ORACLE(szOutside.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 \n'$<,.:[]+-") ==
           std::string::npos);
    for (const char* const szNotFinite : {"inf", " nan", "-nan", "[nan", ":nan"})
    {
        ORACLE(szOutside.find(szNotFinite) == std::string::npos);
    }
}

void FitAndReport(const std::string& a_szFile, const TFitOptions& a_Options)
{
    const TPoints Points = ReadPoints(a_szFile);
    CheckRoundTrip(Points);
    const TFit Fit = FitPoints(Points, a_Options);
    CheckFit(Points, a_Options, Fit);
    ORACLE(IsPlain(TextReport(Points, Fit)));
    CheckJson(Points, Fit);
    CheckWorldFile(Points, Fit);
    CheckScript(Points, Fit);
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
    TFitOptions Options = {};
    if ((iChoice & CHOICE_METHOD) != CHOICE_METHOD)
    {
        Options.Demanded = static_cast<nuv::enumMethodUsed>(iChoice & CHOICE_METHOD);
    }
    Options.bMirrored = (iChoice & CHOICE_MIRRORED) != 0;
    Options.bRaw = (iChoice & CHOICE_RAW) != 0;
    const std::string& szName =
        File.Write((iChoice & CHOICE_NUMBERS) != 0
                       ? FileOfNumbers(a_pBytes + 1, a_iSize - 1, iChoice & CHOICE_SMALL, iChoice & CHOICE_QGIS)
                       : std::string(reinterpret_cast<const char*>(a_pBytes) + 1, a_iSize - 1));
    try
    {
        FitAndReport(szName, Options);
    }
    catch (const TFailure& Failure)
    {
        const std::string szLine = OneLine(Failure.what());
        ORACLE(szLine.compare(0, szName.size(), szName) == 0 && szLine.size() < 400);
        ORACLE(IsPlain(szLine) && szLine.find('\n') == std::string::npos);
    }
    return 0;
}
