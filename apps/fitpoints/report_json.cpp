// report_json.cpp: the report as JSON.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "report.h"
#include "support.h"

#include <nlohmann/json.hpp>

namespace fitpoints {

using TJson = nlohmann::ordered_json;

static const char* const FORMATS[] = {"csv", "qgis", "gcp"};       // by enumFileKind
static const char* const ROLES[] = {"fitted", "check", "dropped"}; // by judgement::enumRole

static TJson Coefficients(const nuv::TOmographicParams& a_Coefs)
{
    return {{"A", a_Coefs.dA}, {"B", a_Coefs.dB}, {"C", a_Coefs.dC}, {"D", a_Coefs.dD},
            {"E", a_Coefs.dE}, {"F", a_Coefs.dF}, {"G", a_Coefs.dG}, {"H", a_Coefs.dH}};
}

static TJson Frames(const TFit& a_Fit)
{
    TJson Json = {{"of_fit", a_Fit.bRaw ? "original" : "local"}, {"local", nullptr}, {"original", nullptr}};
    if (!a_Fit.bRaw)
    {
        const TOrigins& O = a_Fit.Origins;
        Json["local"] = {{"source_origin", {O.dX, O.dY}},
                         {"target_origin", {O.dXa, O.dYa}},
                         {"coefficients", Coefficients(a_Fit.Coefs)}};
    }
    if (a_Fit.Original)
    {
        Json["original"] = {{"coefficients", Coefficients(*a_Fit.Original)}};
        Json["largest_difference"] = a_Fit.dFrameDifference;
    }
    return Json;
}

static TJson Parameters(const TFit& a_Fit)
{
    if (!a_Fit.Shape)
    {
        return nullptr;
    }
    const TShape& S = *a_Fit.Shape;
    TJson Json = {{"sx", S.dSx}, {"sy", S.dSy}, {"rotation", S.dRotation}, {"skew", S.dSkew}};
    Json["translation_local"] = a_Fit.bRaw ? TJson() : TJson{a_Fit.Coefs.dC, a_Fit.Coefs.dF};
    Json["translation_original"] = a_Fit.Original ? TJson{a_Fit.Original->dC, a_Fit.Original->dF} : TJson();
    return Json;
}

static TJson PointReference(const TPoints& a_Points, std::size_t a_iIndex)
{
    const TPoint& Point = a_Points.vPoints[a_iIndex];
    return {{"point", a_iIndex + 1}, {"line", Point.iLine}, {"name", Point.szName}};
}

static TJson PointWithResidual(const TPoints& a_Points, const TFit& a_Fit, std::size_t a_iIndex)
{
    const TPoint& Point = a_Points.vPoints[a_iIndex];
    const judgement::TPointJudgement& P = a_Fit.vPoints[a_iIndex];
    TJson Json = PointReference(a_Points, a_iIndex);
    Json["role"] = ROLES[P.Role];
    Json.update({{"x", Point.dX}, {"y", Point.dY}, {"X", Point.dXa}, {"Y", Point.dYa}});
    Json.update({{"dX", P.dX}, {"dY", P.dY}, {"length", P.dLength}});
    return Json;
}

static TJson Summary(const TPoints& a_Points, const TFit& a_Fit)
{
    TJson Largest = PointReference(a_Points, a_Fit.iLargest);
    Largest["length"] = a_Fit.vResiduals[a_Fit.iLargest].dLength;
    return {{"program", "fitpoints " FITPOINTS_VERSION},
            {"file", a_Points.szFile},
            {"format", FORMATS[a_Points.Kind]},
            {"n", a_Fit.Judgement.iFitted},
            {"columns_not_read", a_Points.vszUnread},
            {"kind", KindName(a_Fit.Kind)},
            {"mirrored", a_Fit.bMirrored},
            {"not_richer", a_Fit.vszNotRicher},
            {"warnings", a_Fit.vszWarnings},
            {"raw", a_Fit.bRaw},
            {"frames", Frames(a_Fit)},
            {"parameters", Parameters(a_Fit)},
            {"unknowns", a_Fit.iUnknowns},
            {"degrees_of_freedom", a_Fit.iFreedom},
            {"sum_of_squares", a_Fit.dSumOfSquares},
            {"rms", a_Fit.dRms ? TJson(*a_Fit.dRms) : TJson()},
            {"check_points", a_Fit.Judgement.iChecks},
            {"check_rms", a_Fit.Judgement.iChecks > 0 ? TJson(a_Fit.Judgement.dCheckRms) : TJson()},
            {"largest_residual", Largest}};
}

// A file name may contain bytes that are not UTF-8. They are replaced.
static std::string Dumped(const TJson& a_Json, int a_iIndent)
{
    return a_Json.dump(a_iIndent, ' ', false, TJson::error_handler_t::replace);
}

// A JSON object of a million points would take much memory. So the points are converted one by one, each on a line.
std::string JsonReport(const TPoints& a_Points, const TFit& a_Fit, bool a_bSummary)
{
    std::string szText = Dumped(Summary(a_Points, a_Fit), 2);
    if (a_bSummary)
    {
        return szText + "\n";
    }
    szText.erase(szText.rfind("\n}"));
    szText += ",\n  \"points\": [";
    for (std::size_t i = 0; i < a_Points.vPoints.size(); ++i)
    {
        szText += (i == 0 ? "\n    " : ",\n    ") + Dumped(PointWithResidual(a_Points, a_Fit, i), -1);
    }
    szText += "\n  ]\n}\n";
    return szText;
}

} // namespace fitpoints
