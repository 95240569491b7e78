// warnings.cpp: what is doubtful about a transformation that was computed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "warnings.h"

#include <cmath>

namespace fitpoints {

// If all residuals are only rounding, the root of their sum of squares is below this.
static double RoundingOfRoot(const TArrays& a_Points)
{
    return RoundingLevel(a_Points) * PointCount(a_Points);
}

// The sum of squares of a least-squares fit is never greater than that of a poorer kind, which the richer one contains.
// Otherwise rounding has spoiled its equations, or its iterations have not converged.
static void WarnOfSpoiledFit(const TArrays& a_Points, bool a_bMirrored, const TAttempt& a_Attempt,
                             std::vector<std::string>& a_vszWarnings)
{
    TAttempt Other;
    if (a_Attempt.Kind == nuv::METHOD_CONFORMAL || !TryFit(a_Points, a_bMirrored, Poorer(a_Attempt.Kind), Other))
    {
        return;
    }
    const double dLimit = std::sqrt(Other.dSumOfSquares) * (1 + 1e-6) + RoundingOfRoot(a_Points);
    if (std::sqrt(a_Attempt.dSumOfSquares) > dLimit)
    {
        a_vszWarnings.push_back(std::string("the ") + KindName(a_Attempt.Kind) + " fit is worse than the " +
                                KindName(Other.Kind) +
                                " one, which it contains: it is spoiled by rounding or has not converged");
    }
}

static void WarnOfOtherOrientation(const TArrays& a_Points, bool a_bMirrored, const TAttempt& a_Attempt,
                                   std::vector<std::string>& a_vszWarnings)
{
    TAttempt Other;
    if (a_Attempt.Kind != nuv::METHOD_CONFORMAL || !TryFit(a_Points, !a_bMirrored, nuv::METHOD_CONFORMAL, Other))
    {
        return;
    }
    const double dRoot = std::sqrt(a_Attempt.dSumOfSquares);
    if (std::sqrt(Other.dSumOfSquares) < dRoot / 2 && dRoot > RoundingOfRoot(a_Points))
    {
        a_vszWarnings.push_back(std::string("the similarity of the other orientation fits better: try it ") +
                                (a_bMirrored ? "without" : "with") + " --mirrored");
    }
}

// The denominator of an omographic transformation is negative beyond the line that it takes to infinity.
static void WarnOfVanishingLine(const TArrays& a_Points, const TAttempt& a_Attempt,
                                std::vector<std::string>& a_vszWarnings)
{
    int iNegative = 0;
    for (int i = 0; i < PointCount(a_Points); ++i)
    {
        iNegative += Denominator(a_Attempt.Coefs, a_Points.vdX[i], a_Points.vdY[i]) < 0 ? 1 : 0;
    }
    if (iNegative > 0 && iNegative < PointCount(a_Points))
    {
        a_vszWarnings.push_back(
            "the points stand on both sides of the line that the transformation takes to infinity (" +
            std::to_string(iNegative) + " of " + std::to_string(PointCount(a_Points)) + " beyond it)");
    }
}

std::vector<std::string> Warnings(const TArrays& a_Points, bool a_bMirrored, const TAttempt& a_Attempt)
{
    std::vector<std::string> vszWarnings;
    if (a_bMirrored && a_Attempt.Kind != nuv::METHOD_CONFORMAL)
    {
        vszWarnings.push_back(std::string("--mirrored has no effect: the ") + KindName(a_Attempt.Kind) +
                              " kind takes either orientation");
    }
    WarnOfSpoiledFit(a_Points, a_bMirrored, a_Attempt, vszWarnings);
    WarnOfOtherOrientation(a_Points, a_bMirrored, a_Attempt, vszWarnings);
    WarnOfVanishingLine(a_Points, a_Attempt, vszWarnings);
    return vszWarnings;
}

} // namespace fitpoints
