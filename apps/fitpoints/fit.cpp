// fit.cpp: lets the judgement module fit the points, and puts its reasons into words.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fit.h"
#include "support.h"
#include "text.h"
#include "warnings.h"

#include <algorithm>

namespace fitpoints {

using judgement::TJudgement;
using judgement::TKindRow;

static std::size_t FittedCount(const TPoints& a_Points)
{
    return static_cast<std::size_t>(std::count_if(a_Points.vPoints.begin(), a_Points.vPoints.end(),
                                                  [](const TPoint& a_Point) { return !a_Point.bCheck; }));
}

// The kind was asked for, or there is no transformation at all.
[[noreturn]] static void Refuse(const TPoints& a_Points, const judgement::TOptions& a_Options,
                                judgement::enumReason a_Reason, const TJudgement& a_Judgement)
{
    if (a_Reason == judgement::REASON_NO_MEMORY)
    {
        FailForMemory();
    }
    const bool bAny = a_Judgement.Support.vReasons[nuv::METHOD_CONFORMAL] == judgement::REASON_NONE;
    const bool bAsked = a_Options.Method < judgement::ASK_RICHEST;
    const nuv::enumMethodUsed Kind =
        bAny && bAsked ? static_cast<nuv::enumMethodUsed>(a_Options.Method) : nuv::METHOD_CONFORMAL;
    const std::size_t iFitted = FittedCount(a_Points);
    const std::size_t iChecks = a_Points.vPoints.size() - iFitted;
    const bool bChecks = a_Reason == judgement::REASON_TOO_FEW_POINTS && iChecks > 0;
    const std::string szReason =
        ReasonText(a_Reason, Kind, iFitted) +
        (bChecks ? ", and " + Count(iChecks, "check point") + (iChecks == 1 ? " is" : " are") + " not fitted" : "");
    const std::string szKind = Kind == nuv::METHOD_CONFORMAL ? "" : std::string(KindName(Kind)) + " ";
    Fail(a_Points.szFile, bAny ? "no " + szKind + "transformation: " + szReason : szReason);
}

// Why this richer kind is not the one that was taken.
static std::string WhyNot(const TJudgement& a_Judgement, nuv::enumMethodUsed a_Kind)
{
    const TKindRow& Row = a_Judgement.vKinds[a_Kind];
    const TKindRow& Taken = a_Judgement.vKinds[a_Judgement.Fit.Kind];
    const bool bJudged = Row.Reason == judgement::REASON_NONE && Row.LeaveReason == judgement::REASON_NONE;
    if (!bJudged)
    {
        const judgement::enumReason Reason = Row.Reason != judgement::REASON_NONE ? Row.Reason : Row.LeaveReason;
        return ReasonText(Reason, a_Kind, static_cast<std::size_t>(a_Judgement.iFitted));
    }
    return std::string("the leave-one-out error of the ") + KindName(a_Kind) + " kind is " + Brief(Row.dLeaveRms) +
           ", that of the " + KindName(a_Judgement.Fit.Kind) + " one " + Brief(Taken.dLeaveRms) +
           (Row.dLeaveRms < Taken.dLeaveRms ? ", which counts as equal" : "");
}

static std::vector<std::string> WhyNotRicher(const TJudgement& a_Judgement)
{
    std::vector<std::string> vszReasons;
    for (const nuv::enumMethodUsed Kind : {nuv::METHOD_OMOGRAPHIC, nuv::METHOD_AFFINE})
    {
        const bool bAsked = a_Judgement.Choice == judgement::CHOICE_ASKED;
        const std::string szReason = bAsked ? "--method asked for it" : WhyNot(a_Judgement, Kind);
        if (Kind > a_Judgement.Fit.Kind &&
            std::find(vszReasons.begin(), vszReasons.end(), szReason) == vszReasons.end())
        {
            vszReasons.push_back(szReason);
        }
    }
    return vszReasons;
}

// Copies the judgement into the fields that most reports use.
static void CopyJudgement(TFit& a_Fit)
{
    const TJudgement& J = a_Fit.Judgement;
    a_Fit.Kind = J.Fit.Kind;
    a_Fit.bMirrored = J.Fit.bMirrored != 0;
    a_Fit.Origins = J.Origins;
    a_Fit.Coefs = J.Fit.Coefs;
    a_Fit.Original = J.bOriginal ? std::optional<nuv::TOmographicParams>(J.Original) : std::nullopt;
    a_Fit.dFrameDifference = J.dFrameDifference;
    a_Fit.Shape = J.Shape.bExists ? std::optional<TShape>(J.Shape) : std::nullopt;
    a_Fit.iLargest = static_cast<std::size_t>(J.iLargest);
    a_Fit.dSumOfSquares = J.Fit.dSumOfSquares;
    a_Fit.iUnknowns = J.iUnknowns;
    a_Fit.iFreedom = J.iFreedom;
    a_Fit.dRms = J.iFreedom > 0 ? std::optional<double>(J.dRms) : std::nullopt;
    for (const judgement::TPointJudgement& Point : a_Fit.vPoints)
    {
        a_Fit.vResiduals.push_back({Point.dX, Point.dY, Point.dLength});
    }
}

TFit FitPoints(const TPoints& a_Points, const judgement::TOptions& a_Options)
{
    const TArrays Given = Arrays(a_Points.vPoints);
    std::vector<judgement::enumRole> vRoles;
    for (const TPoint& Point : a_Points.vPoints)
    {
        vRoles.push_back(Point.bCheck ? judgement::ROLE_CHECK : judgement::ROLE_FITTED);
    }
    TFit Fit = {};
    Fit.bRaw = a_Options.bRaw != 0;
    Fit.dLevel = a_Options.dLevel;
    Fit.vPoints.resize(a_Points.vPoints.size());
    const judgement::enumReason Reason =
        judgement::Judge(ControlPoints(Given), vRoles.data(), a_Options, Fit.Judgement, Fit.vPoints.data());
    if (Reason != judgement::REASON_NONE)
    {
        Refuse(a_Points, a_Options, Reason, Fit.Judgement);
    }
    CopyJudgement(Fit);
    Fit.vszNotRicher = WhyNotRicher(Fit.Judgement);
    Fit.vszWarnings = Warnings(Given, a_Options, Fit);
    return Fit;
}

} // namespace fitpoints
