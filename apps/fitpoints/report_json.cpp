// report_json.cpp: the report as JSON.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "exports.h"
#include "report.h"
#include "report_common.h"
#include "support.h"

#include <nlohmann/json.hpp>

namespace fitpoints {

using TJson = nlohmann::ordered_json;

const char* const FORMAT_NAMES[3] = {"csv", "qgis", "gcp"};
static const char* const ROLES[] = {"fitted", "check", "dropped"}; // by judgement::enumRole
static const char* const CHOICES[] = {"asked", "richest", "least_leave_one_out_error", "poorer_as_good",
                                      "not_judged"}; // by judgement::enumChoice

// null for a number that does not exist.
static TJson Optional(bool a_bExists, double a_dValue)
{
    return a_bExists ? TJson(a_dValue) : TJson();
}

static TJson Coefficients(const nuv::TOmographicParams& a_Coefs)
{
    return {{"A", a_Coefs.dA}, {"B", a_Coefs.dB}, {"C", a_Coefs.dC}, {"D", a_Coefs.dD},
            {"E", a_Coefs.dE}, {"F", a_Coefs.dF}, {"G", a_Coefs.dG}, {"H", a_Coefs.dH}};
}

// The coefficients of a frame with their standard deviations and covariances.
static void AddCoefficients(const TFit& a_Fit, const nuv::TOmographicParams& a_Coefs,
                            const judgement::TCoefsCovariance& a_Covariance, TJson& a_Json)
{
    const char* const vszNames[] = {"A", "B", "C", "D", "E", "F", "G", "H"};
    a_Json["coefficients"] = Coefficients(a_Coefs);
    a_Json["standard_deviations"] = nullptr;
    a_Json["covariance"] = nullptr;
    if (a_Fit.Judgement.bSigma != 0)
    {
        for (int i = 0; i < judgement::COEFS; ++i)
        {
            a_Json["standard_deviations"][vszNames[i]] = judgement::SigmaOfCoef(a_Covariance, i);
        }
        a_Json["covariance"] = a_Covariance.vdPacked;
    }
}

static TJson Frames(const TFit& a_Fit)
{
    TJson Json = {{"of_fit", a_Fit.bRaw ? "original" : "local"}, {"local", nullptr}, {"original", nullptr}};
    if (!a_Fit.bRaw)
    {
        const TOrigins& O = a_Fit.Origins;
        Json["local"] = {{"source_origin", {O.dX, O.dY}}, {"target_origin", {O.dXa, O.dYa}}};
        AddCoefficients(a_Fit, a_Fit.Coefs, a_Fit.Judgement.Covariance, Json["local"]);
    }
    if (a_Fit.Original)
    {
        AddCoefficients(a_Fit, *a_Fit.Original, a_Fit.Judgement.OriginalCovariance, Json["original"]);
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
    Json["standard_deviations"] =
        a_Fit.Judgement.bSigma != 0
            ? TJson{{"sx", S.dSigmaSx}, {"sy", S.dSigmaSy}, {"rotation", S.dSigmaRotation}, {"skew", S.dSigmaSkew}}
            : TJson();
    return Json;
}

// ---------------------------------------------------------------------------------------------------------------------
// Points

static TJson PointReference(const TPoints& a_Points, std::size_t a_iIndex)
{
    const TPoint& Point = a_Points.vPoints[a_iIndex];
    return {{"point", a_iIndex + 1}, {"line", Point.iLine}, {"name", Point.szName}};
}

// An object of different keys. Other ways to make one search for each key among those before it.
static TJson Object(std::initializer_list<std::pair<const char*, TJson> > a_Fields)
{
    TJson::object_t Object;
    Object.reserve(a_Fields.size());
    for (const auto& [szKey, Value] : a_Fields)
    {
        Object.emplace_back(szKey, Value);
    }
    return Object;
}

static TJson PointWithResidual(const TPoints& a_Points, const TFit& a_Fit, std::size_t a_iIndex)
{
    const TPoint& Point = a_Points.vPoints[a_iIndex];
    const judgement::TPointJudgement& P = a_Fit.vPoints[a_iIndex];
    return Object({{"point", a_iIndex + 1},
                   {"line", Point.iLine},
                   {"name", Point.szName},
                   {"role", ROLES[P.Role]},
                   {"x", Point.dX},
                   {"y", Point.dY},
                   {"X", Point.dXa},
                   {"Y", Point.dYa},
                   {"dX", P.dX},
                   {"dY", P.dY},
                   {"length", P.dLength},
                   {"source_residual", P.bSource != 0 ? TJson{P.dSourceX, P.dSourceY} : TJson()},
                   {"leave_one_out", P.bLeave != 0 ? TJson{P.dLeaveX, P.dLeaveY} : TJson()},
                   {"standardised", Optional(P.bTested != 0, P.dStandardised)},
                   {"studentised", Optional(P.bTested != 0, P.dStudentised)},
                   {"probability", Optional(P.bTested != 0, P.dProbability)},
                   {"suspect", P.bSuspect != 0}});
}

static TJson Suspects(const TPoints& a_Points, const TFit& a_Fit)
{
    TJson Json = TJson::array();
    for (const std::size_t i : SuspectOrder(a_Fit))
    {
        const judgement::TPointJudgement& P = a_Fit.vPoints[i];
        TJson Suspect = PointReference(a_Points, i);
        Suspect["length"] = P.dLength;
        Suspect["under_kind"] = KindName(P.SuspectKind);
        Suspect["dropped"] = P.iDropped != 0 ? TJson(P.iDropped) : TJson();
        Json.push_back(Suspect);
    }
    return Json;
}

// ---------------------------------------------------------------------------------------------------------------------
// Kinds

static TJson Text(const std::string& a_szText)
{
    return a_szText.empty() ? TJson() : TJson(a_szText);
}

static TJson Kind(const TPoints& a_Points, const TFit& a_Fit, nuv::enumMethodUsed a_Kind)
{
    const judgement::TKindRow& Row = a_Fit.Judgement.vKinds[a_Kind];
    const bool bExists = Row.Reason == judgement::REASON_NONE;
    const bool bJudged = bExists && Row.LeaveReason == judgement::REASON_NONE;
    TJson Json = {{"kind", KindName(a_Kind)},
                  {"missing", Text(WhyMissing(a_Fit, a_Kind))},
                  {"not_judged", Text(WhyNotJudged(a_Fit, a_Kind))},
                  {"coefficients", Row.iUnknowns},
                  {"degrees_of_freedom", Row.iFreedom},
                  {"sum_of_squares", Optional(bExists, Row.Fit.dSumOfSquares)},
                  {"rms", Optional(bExists && Row.iFreedom > 0, Row.dRms)},
                  {"leave_one_out_rms", Optional(bJudged, Row.dLeaveRms)},
                  {"greatest_leave_one_out", nullptr}};
    if (bJudged)
    {
        Json["greatest_leave_one_out"] = PointReference(a_Points, static_cast<std::size_t>(Row.iLeaveGreatest));
        Json["greatest_leave_one_out"]["length"] = Row.dLeaveGreatest;
    }
    return Json;
}

static TJson Kinds(const TPoints& a_Points, const TFit& a_Fit)
{
    return {Kind(a_Points, a_Fit, nuv::METHOD_CONFORMAL), Kind(a_Points, a_Fit, nuv::METHOD_AFFINE),
            Kind(a_Points, a_Fit, nuv::METHOD_OMOGRAPHIC)};
}

// ---------------------------------------------------------------------------------------------------------------------

static TJson Summary(const TPoints& a_Points, const TFit& a_Fit)
{
    const judgement::TJudgement& J = a_Fit.Judgement;
    const bool bProj = a_Fit.Kind != nuv::METHOD_OMOGRAPHIC && a_Fit.Original;
    std::string szProj = bProj ? ProjDefinition(a_Points, a_Fit) : "\n";
    szProj.pop_back(); // its line end
    TJson Largest = PointReference(a_Points, a_Fit.iLargest);
    Largest["length"] = a_Fit.vPoints[a_Fit.iLargest].dLength;
    return {{"program", "fitpoints " FITPOINTS_VERSION},
            {"file", a_Points.szFile},
            {"format", FORMAT_NAMES[a_Points.Kind]},
            {"n", J.iFitted},
            {"columns_not_read", a_Points.vszUnread},
            {"kind", KindName(a_Fit.Kind)},
            {"mirrored", a_Fit.bMirrored},
            {"choice", CHOICES[J.Choice]},
            {"not_richer", a_Fit.vszNotRicher},
            {"kinds", Kinds(a_Points, a_Fit)},
            {"suspects", Suspects(a_Points, a_Fit)},
            {"level", a_Fit.dLevel},
            {"warnings", a_Fit.vszWarnings},
            {"raw", a_Fit.bRaw},
            {"iterations", J.Fit.iIterations},
            {"converged", J.Fit.bConverged != 0},
            {"frames", Frames(a_Fit)},
            {"parameters", Parameters(a_Fit)},
            {"proj", Text(szProj)},
            {"unknowns", a_Fit.iUnknowns},
            {"degrees_of_freedom", a_Fit.iFreedom},
            {"sum_of_squares", a_Fit.dSumOfSquares},
            {"rms", a_Fit.dRms ? TJson(*a_Fit.dRms) : TJson()},
            {"dropped", J.iDropped},
            {"check_points", J.iChecks},
            {"check_rms", Optional(J.iChecks > 0, J.dCheckRms)},
            {"largest_residual", Largest}};
}

// A file name may contain bytes that are not UTF-8. They are replaced.
static std::string Dumped(const TJson& a_Json, int a_iIndent)
{
    return a_Json.dump(a_iIndent, ' ', false, TJson::error_handler_t::replace);
}

// The points are converted one by one, each on a line.
static void WritePoints(const TPoints& a_Points, const TFit& a_Fit, const TWrite& a_Write)
{
    std::string szText = ",\n  \"points\": [";
    for (std::size_t i = 0; i < a_Points.vPoints.size(); ++i)
    {
        szText += (i == 0 ? "\n    " : ",\n    ") + Dumped(PointWithResidual(a_Points, a_Fit, i), -1);
        if (szText.size() > BUFFERED_BYTES)
        {
            a_Write(szText);
            szText.clear();
        }
    }
    a_Write(szText + "\n  ]");
}

void WriteJsonReport(const TPoints& a_Points, const TFit& a_Fit, bool a_bSummary, const TWrite& a_Write)
{
    std::string szText = Dumped(Summary(a_Points, a_Fit), 2);
    szText.erase(szText.rfind("\n}"));
    a_Write(szText);
    if (!a_bSummary)
    {
        WritePoints(a_Points, a_Fit, a_Write);
    }
    a_Write("\n}\n");
}

} // namespace fitpoints
