// warnings.cpp: what is doubtful about a transformation that was computed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "warnings.h"
#include "support.h"
#include "text.h"

#include <cmath>

namespace fitpoints {

using judgement::TKindFit;

// The fitted points in the frame of the fit.
static TArrays FittedPoints(const TArrays& a_Points, const TFit& a_Fit)
{
    TArrays Fitted;
    for (std::size_t i = 0; i < a_Fit.vPoints.size(); ++i)
    {
        if (a_Fit.vPoints[i].Role == judgement::ROLE_FITTED)
        {
            Fitted.vdX.push_back(a_Points.vdX[i] - a_Fit.Origins.dX);
            Fitted.vdY.push_back(a_Points.vdY[i] - a_Fit.Origins.dY);
            Fitted.vdXa.push_back(a_Points.vdXa[i] - a_Fit.Origins.dXa);
            Fitted.vdYa.push_back(a_Points.vdYa[i] - a_Fit.Origins.dYa);
        }
    }
    return Fitted;
}

// If all residuals are only rounding, the root of their sum of squares is below this.
static double RoundingOfRoot(const TArrays& a_Points)
{
    return RoundingLevel(a_Points) * PointCount(a_Points);
}

// The sum of squares of a least-squares fit is never greater than that of a poorer kind, which the richer one contains.
// Otherwise rounding has spoiled its equations, or its iterations have not converged.
static void WarnOfSpoiledFit(const TArrays& a_Points, const TFit& a_Fit, std::vector<std::string>& a_vszWarnings)
{
    int iPoorer = a_Fit.Kind - 1;
    while (iPoorer >= 0 && a_Fit.Judgement.vKinds[iPoorer].Reason != judgement::REASON_NONE)
    {
        --iPoorer;
    }
    if (iPoorer < 0)
    {
        return;
    }
    const TKindFit& Poorer = a_Fit.Judgement.vKinds[iPoorer].Fit;
    const double dLimit = std::sqrt(Poorer.dSumOfSquares) * (1 + 1e-6) + RoundingOfRoot(a_Points);
    if (std::sqrt(a_Fit.dSumOfSquares) > dLimit)
    {
        a_vszWarnings.push_back(std::string("the ") + KindName(a_Fit.Kind) + " fit is worse than the " +
                                KindName(Poorer.Kind) +
                                " one, which it contains: it is spoiled by rounding or has not converged");
    }
}

static void WarnOfIterations(const TFit& a_Fit, std::vector<std::string>& a_vszWarnings)
{
    if (!a_Fit.Judgement.Fit.bConverged)
    {
        a_vszWarnings.push_back("the iterations of the omographic fit have not converged after " +
                                Count(static_cast<std::size_t>(a_Fit.Judgement.Fit.iIterations), "step"));
    }
}

static void WarnOfOtherOrientation(const TArrays& a_Points, bool a_bMirrored, const TFit& a_Fit,
                                   std::vector<std::string>& a_vszWarnings)
{
    TKindFit Other;
    if (a_Fit.Kind != nuv::METHOD_CONFORMAL ||
        judgement::FitKind(ControlPoints(a_Points), a_Fit.Kind, !a_bMirrored, Other) != judgement::REASON_NONE)
    {
        return;
    }
    const double dRoot = std::sqrt(a_Fit.dSumOfSquares);
    if (std::sqrt(Other.dSumOfSquares) < dRoot / 2 && dRoot > RoundingOfRoot(a_Points))
    {
        a_vszWarnings.push_back(std::string("the similarity of the other orientation fits better: try it ") +
                                (a_bMirrored ? "without" : "with") + " --mirrored");
    }
}

// The denominator of an omographic transformation is negative beyond the line that it takes to infinity.
static void WarnOfVanishingLine(const TArrays& a_Points, const TFit& a_Fit, std::vector<std::string>& a_vszWarnings)
{
    int iNegative = 0;
    for (int i = 0; i < PointCount(a_Points); ++i)
    {
        iNegative += Denominator(a_Fit.Coefs, a_Points.vdX[i], a_Points.vdY[i]) < 0 ? 1 : 0;
    }
    if (iNegative > 0 && iNegative < PointCount(a_Points))
    {
        a_vszWarnings.push_back(
            "the points stand on both sides of the line that the transformation takes to infinity (" +
            std::to_string(iNegative) + " of " + std::to_string(PointCount(a_Points)) + " beyond it)");
    }
}

static void WarnOfNoRedundancy(const TFit& a_Fit, std::vector<std::string>& a_vszWarnings)
{
    if (a_Fit.Judgement.Choice == judgement::CHOICE_NOT_JUDGED)
    {
        a_vszWarnings.push_back("nothing checks the transformation: no kind has a point more than it needs, or all "
                                "kinds depend on a single point");
    }
}

// A blunder spoils the fit of a richer kind more than that of a poorer one, which then has the least error. Without the
// suspects the choice may be another one.
static void WarnOfChoiceByBlunders(const TArrays& a_Points, const judgement::TOptions& a_Options, const TFit& a_Fit,
                                   std::vector<std::string>& a_vszWarnings)
{
    const judgement::TJudgement& Taken = a_Fit.Judgement;
    if (Taken.iSuspects == 0 || a_Options.bRobust != 0 || Taken.Choice == judgement::CHOICE_ASKED)
    {
        return;
    }
    std::vector<judgement::enumRole> vRoles;
    for (const judgement::TPointJudgement& Point : a_Fit.vPoints)
    {
        vRoles.push_back(Point.Role);
    }
    judgement::TOptions Robust = a_Options;
    Robust.bRobust = 1;
    judgement::TJudgement Without;
    std::vector<judgement::TPointJudgement> vPoints(a_Fit.vPoints.size());
    if (judgement::Judge(ControlPoints(a_Points), vRoles.data(), Robust, Without, vPoints.data()) ==
            judgement::REASON_NONE &&
        Without.Fit.Kind != a_Fit.Kind)
    {
        a_vszWarnings.push_back(std::string("without the suspected ") +
                                (Taken.iSuspects == 1 ? "blunder" : "blunders") + " the " + KindName(Without.Fit.Kind) +
                                " kind would be taken: correct the points, or drop them with --robust");
    }
}

std::vector<std::string> Warnings(const TArrays& a_Points, const judgement::TOptions& a_Options, const TFit& a_Fit)
{
    std::vector<std::string> vszWarnings;
    const bool bMirrored = a_Options.bMirrored != 0;
    const TArrays Fitted = FittedPoints(a_Points, a_Fit);
    if (bMirrored && a_Fit.Kind != nuv::METHOD_CONFORMAL)
    {
        vszWarnings.push_back(std::string("--mirrored has no effect: the ") + KindName(a_Fit.Kind) +
                              " kind takes either orientation");
    }
    WarnOfNoRedundancy(a_Fit, vszWarnings);
    WarnOfChoiceByBlunders(a_Points, a_Options, a_Fit, vszWarnings);
    WarnOfIterations(a_Fit, vszWarnings);
    WarnOfSpoiledFit(Fitted, a_Fit, vszWarnings);
    WarnOfOtherOrientation(Fitted, bMirrored, a_Fit, vszWarnings);
    WarnOfVanishingLine(Fitted, a_Fit, vszWarnings);
    return vszWarnings;
}

} // namespace fitpoints
