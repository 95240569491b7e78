// engine.cpp: the functions that the page calls: reading, fitting, reports and exports of fitpoints.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The caller writes texts and numbers into memory that Allocate gives. A text that a function makes stands at
// ResultText() until the next call. A function that fails does not return (see failure.cpp).

#include "exports.h"
#include "fit.h"
#include "pixels.h"
#include "report.h"
#include "support.h"
#include "table.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <nlohmann/json.hpp>

using namespace fitpoints;
using TJson = nlohmann::ordered_json;

static std::string g_szResult;
static TPoints g_Points;          // those of the last fit
static std::optional<TFit> g_Fit; // none before the first one

// ---------------------------------------------------------------------------------------------------------------------
// Memory and results

#define ENGINE_EXPORT(name) extern "C" __attribute__((export_name(name)))

ENGINE_EXPORT("allocate") void* Allocate(std::size_t a_iSize)
{
    void* const pMemory = std::malloc(a_iSize);
    if (pMemory == nullptr)
    {
        FailForMemory();
    }
    return pMemory;
}

ENGINE_EXPORT("release") void Release(void* a_pMemory)
{
    std::free(a_pMemory);
}

ENGINE_EXPORT("resultText") const char* ResultText()
{
    return g_szResult.data();
}

// Keeps a text as the result and returns its length.
static std::size_t Result(std::string a_szText)
{
    g_szResult = std::move(a_szText);
    return g_szResult.size();
}

// ---------------------------------------------------------------------------------------------------------------------
// Reading

static TJson PointAsJson(const TPoint& a_Point)
{
    return {{"name", a_Point.szName}, {"line", a_Point.iLine}, {"x", a_Point.dX},        {"y", a_Point.dY},
            {"X", a_Point.dXa},       {"Y", a_Point.dYa},      {"check", a_Point.bCheck}};
}

// Reads the text of a file. The result is JSON.
ENGINE_EXPORT("read")
std::size_t Read(const char* a_szName, std::size_t a_iName, const char* a_szText, std::size_t a_iText)
{
    const TPoints Points = ReadPoints(TextInput({a_szName, a_iName}, {a_szText, a_iText}));
    TJson Json = {{"kind", FORMAT_NAMES[Points.Kind]},
                  {"crs", Points.szCrs},
                  {"unread", Points.vszUnread},
                  {"points", TJson::array()}};
    for (const TPoint& Point : Points.vPoints)
    {
        Json["points"].push_back(PointAsJson(Point));
    }
    return Result(Json.dump(-1, ' ', false, TJson::error_handler_t::replace));
}

// ---------------------------------------------------------------------------------------------------------------------
// Fitting

// What the caller gives of the points beside their numbers: texts, each ended by a line feed.
struct TTexts
{
    const char* pNext;
    const char* pEnd;
};

static std::string TakeText(TTexts& a_Texts)
{
    const char* const pEnd = std::find(a_Texts.pNext, a_Texts.pEnd, '\n');
    const std::string szText(a_Texts.pNext, pEnd);
    a_Texts.pNext = pEnd == a_Texts.pEnd ? pEnd : pEnd + 1;
    return szText;
}

static enumFileKind KindByName(const std::string& a_szName)
{
    for (const enumFileKind Kind : {FILE_CSV, FILE_QGIS, FILE_GCP})
    {
        if (a_szName == FORMAT_NAMES[Kind])
        {
            return Kind;
        }
    }
    Fail("kind", Quoted(a_szName) + " is not a kind of file");
}

static judgement::enumMethod MethodByName(const std::string& a_szName)
{
    const auto Found = METHODS.find(a_szName);
    if (Found == METHODS.end())
    {
        Fail("method", Quoted(a_szName) + " is not a method");
    }
    return Found->second;
}

// Fails unless the points could have been read from a file.
static void CheckPoint(const TPoints& a_Points, std::size_t a_iIndex)
{
    const TPoint& Point = a_Points.vPoints[a_iIndex];
    const std::string szPlace = a_Points.szFile + ": " + Label(a_Points.vPoints, a_iIndex);
    if (!IsPlainUtf8(Point.szName))
    {
        Fail(szPlace, "the name is not plain UTF-8 text");
    }
    for (const double dValue : {Point.dX, Point.dY, Point.dXa, Point.dYa})
    {
        if (!std::isfinite(dValue))
        {
            Fail(szPlace, Brief(dValue) + " is not a finite number");
        }
    }
}

// The usual level for NaN; 0 for no test of blunders.
static double Level(double a_dLevel)
{
    const double dLevel = std::isnan(a_dLevel) ? judgement::USUAL_LEVEL : a_dLevel;
    if (!(dLevel >= 0 && dLevel < 1))
    {
        Fail("level", Brief(dLevel) + " is not between 0 and 1");
    }
    return dLevel;
}

static void CheckCrs(const std::string& a_szCrs)
{
    if (!a_szCrs.empty() && a_szCrs.compare(0, 4, "#CRS") != 0)
    {
        Fail("crs", Quoted(a_szCrs) + " does not start with #CRS");
    }
}

// Bits of the options of a fit.
enum enumOption
{
    OPTION_MIRRORED = 1,
    OPTION_RAW = 2,
    OPTION_ROBUST = 4
};

// Fits points and keeps them with the transformation. The texts: method, file, its kind, the line of its target system,
// the name of each point, and the columns that were not read. a_vdNumbers has x, y, X and Y of each point, a_viMarks
// its line and whether it is a check point. a_dLevel is that of the test of blunders.
ENGINE_EXPORT("fit")
void Fit(const char* a_szTexts, std::size_t a_iTexts, std::size_t a_iCount, const double* a_vdNumbers,
         const int* a_viMarks, int a_iOptions, double a_dLevel)
{
    g_Fit.reset();
    TTexts Texts = {a_szTexts, a_szTexts + a_iTexts};
    const judgement::TOptions Options = {MethodByName(TakeText(Texts)), a_iOptions & OPTION_MIRRORED,
                                         a_iOptions & OPTION_RAW, a_iOptions & OPTION_ROBUST, Level(a_dLevel)};
    g_Points = {TakeText(Texts), KindByName(TakeText(Texts)), TakeText(Texts), {}, {}};
    for (std::size_t i = 0; i < a_iCount; ++i)
    {
        const double* const vdPoint = a_vdNumbers + 4 * i;
        const int* const viMarks = a_viMarks + 2 * i;
        g_Points.vPoints.push_back(
            {TakeText(Texts), viMarks[0], vdPoint[0], vdPoint[1], vdPoint[2], vdPoint[3], viMarks[1] != 0});
        CheckPoint(g_Points, i);
    }
    CheckCrs(g_Points.szCrs);
    while (Texts.pNext != Texts.pEnd)
    {
        g_Points.vszUnread.push_back(TakeText(Texts));
    }
    g_Fit = FitPoints(g_Points, Options);
}

static const TFit& LastFit()
{
    if (!g_Fit)
    {
        Fail("georeference", "there is no transformation");
    }
    return *g_Fit;
}

// ---------------------------------------------------------------------------------------------------------------------
// Reports and exports

using TReport = void (*)(const TPoints&, const TFit&, bool, const TWrite&);

static std::size_t Report(TReport a_Report)
{
    std::string szReport;
    a_Report(g_Points, LastFit(), false, [&](const std::string& a_szText) { szReport += a_szText; });
    return Result(std::move(szReport));
}

ENGINE_EXPORT("reportText") std::size_t ReportText()
{
    return Report(WriteTextReport);
}

ENGINE_EXPORT("reportJson") std::size_t ReportJson()
{
    return Report(WriteJsonReport);
}

ENGINE_EXPORT("exportWorld") std::size_t ExportWorld()
{
    return Result(WorldFile(g_Points, LastFit()));
}

ENGINE_EXPORT("exportPoints") std::size_t ExportPoints()
{
    return Result(GeoreferencerFile(g_Points, LastFit()));
}

ENGINE_EXPORT("exportCsv") std::size_t ExportCsv()
{
    LastFit();
    return Result(PointTable(g_Points));
}

ENGINE_EXPORT("exportGcp") std::size_t ExportGcp()
{
    return Result(GcpArguments(g_Points, LastFit()));
}

ENGINE_EXPORT("exportProj") std::size_t ExportProj()
{
    return Result(ProjDefinition(g_Points, LastFit()));
}

// ---------------------------------------------------------------------------------------------------------------------
// Images of points

// Replaces coordinates in place by those of the other system: all NaN where there are none. a_vcBeyond gets 1 for a
// point beyond the line that the transformation takes to infinity.
ENGINE_EXPORT("transform")
void Transform(std::size_t a_iCount, double* a_vdX, double* a_vdY, unsigned char* a_vcBeyond, bool a_bInverse)
{
    const TFit& F = LastFit();
    for (std::size_t i = 0; i < a_iCount; ++i)
    {
        const judgement::TVector Given = {a_vdX[i], a_vdY[i]};
        judgement::TVector Image;
        const bool bExists = (a_bInverse ? judgement::InversePoint : judgement::TransformPoint)(
                                 F.Coefs, F.Origins, Given, Image) == judgement::REASON_NONE;
        const judgement::TVector& Source = a_bInverse ? Image : Given;
        a_vcBeyond[i] = bExists && Denominator(F.Coefs, Source.dX - F.Origins.dX, Source.dY - F.Origins.dY) < 0;
        a_vdX[i] = bExists ? Image.dX : std::numeric_limits<double>::quiet_NaN();
        a_vdY[i] = bExists ? Image.dY : std::numeric_limits<double>::quiet_NaN();
    }
}

// Replaces source coordinates in place by those of the image (x to the right and y downwards from the outer corner of
// its first pixel), or the other way round.
ENGINE_EXPORT("convertPixels")
void ConvertPixels(std::size_t a_iCount, double* a_vdX, double* a_vdY, int a_iKind, bool a_bToSource)
{
    const TPixelSystem System = PixelSystem(static_cast<enumFileKind>(a_iKind));
    for (std::size_t i = 0; i < a_iCount; ++i)
    {
        const TPosition Result = (a_bToSource ? SourceOf : PixelOf)(System, a_vdX[i], a_vdY[i]);
        a_vdX[i] = Result.dXa;
        a_vdY[i] = Result.dYa;
    }
}

// The number with this many significant digits; with the fewest that give it back if a_iDigits is 0.
ENGINE_EXPORT("numberText") std::size_t NumberText(double a_dValue, int a_iDigits)
{
    return Result(a_iDigits == 0 ? Shortest(a_dValue)
                                 : Number(("%." + std::to_string(a_iDigits) + "g").c_str(), a_dValue));
}
