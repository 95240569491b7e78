// fit.cpp: choice and computation of the transformation by the library, residuals and judgement of the result.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fit.h"
#include "support.h"
#include "text.h"

#include <algorithm>
#include <cmath>

namespace fitpoints {

// One answer of the library: a transformation and its residuals.
struct TAttempt
{
    nuv::enumMethodUsed Kind;
    nuv::TOmographicParams Coefs;
    std::vector<TResidual> vResiduals;
    double dSumOfSquares; // not finite if a residual is not
};

static int PointCount(const TArrays& a_Points)
{
    return static_cast<int>(a_Points.vdX.size());
}

static void AddResiduals(const TArrays& a_Points, TAttempt& a_Attempt)
{
    a_Attempt.dSumOfSquares = 0;
    a_Attempt.vResiduals.clear();
    for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
    {
        const TPosition Position = Transform(a_Attempt.Coefs, a_Points.vdX[i], a_Points.vdY[i]);
        const double dX = Position.dXa - a_Points.vdXa[i];
        const double dY = Position.dYa - a_Points.vdYa[i];
        a_Attempt.vResiduals.push_back({dX, dY, std::hypot(dX, dY)});
        a_Attempt.dSumOfSquares += dX * dX + dY * dY;
    }
}

static nuv::TAffineCoefs FitAffine(const TArrays& a_Points)
{
    nuv::TAffineCoefs Coefs = {};
    nuv::CalcAffineCoefs(static_cast<unsigned int>(PointCount(a_Points)), a_Points.vdX.data(), a_Points.vdY.data(),
                         a_Points.vdXa.data(), a_Points.vdYa.data(), Coefs);
    return Coefs;
}

static double Determinant(const nuv::TAffineCoefs& a_Coefs)
{
    return a_Coefs.dA * a_Coefs.dE - a_Coefs.dD * a_Coefs.dB;
}

// The library passes over every affine transformation whose determinant is within 1e-12 of zero, also a regular one of
// small scale, such as pixels of 0.1 m in degrees. Beside the size of its coefficients such a determinant is not small.
static bool IsOfSmallScale(const nuv::TAffineCoefs& a_Coefs)
{
    const double dSize = std::hypot(std::hypot(a_Coefs.dA, a_Coefs.dB), std::hypot(a_Coefs.dD, a_Coefs.dE));
    return std::fabs(Determinant(a_Coefs)) > 1e-12 * dSize * dSize;
}

// The kinds richer than the conformal one are asked for only where the points support the affine kind.
static bool Try(const TArrays& a_Points, bool a_bMirrored, nuv::enumMethodUsed a_Richest, TAttempt& a_Attempt)
{
    if (!nuv::CalcCoefs(PointCount(a_Points), a_Points.vdX.data(), a_Points.vdY.data(), a_Points.vdXa.data(),
                        a_Points.vdYa.data(), !a_bMirrored, a_Richest, a_Attempt.Kind, a_Attempt.Coefs))
    {
        return false;
    }
    if (a_Richest >= nuv::METHOD_AFFINE && a_Attempt.Kind == nuv::METHOD_CONFORMAL)
    {
        const nuv::TAffineCoefs Affine = FitAffine(a_Points);
        if (IsOfSmallScale(Affine))
        {
            a_Attempt.Kind = nuv::METHOD_AFFINE;
            nuv::AffineCoefsToOmographicCoefs(Affine, a_Attempt.Coefs);
        }
    }
    AddResiduals(a_Points, a_Attempt);
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Choice of the kind

static nuv::enumMethodUsed Poorer(nuv::enumMethodUsed a_Kind)
{
    return a_Kind == nuv::METHOD_OMOGRAPHIC ? nuv::METHOD_AFFINE : nuv::METHOD_CONFORMAL;
}

static std::string WhyNoOmographicFit(const TArrays& a_Points)
{
    nuv::TOmographicParams Coefs;
    const int iResult = nuv::CalcOmographicCoefs(PointCount(a_Points), a_Points.vdX.data(), a_Points.vdY.data(),
                                                 a_Points.vdXa.data(), a_Points.vdYa.data(), Coefs);
    return iResult == 1 ? "the omographic fit gives coefficients that are not finite"
                        : "the equations of the omographic fit cannot be solved";
}

static std::string WhyNoAffineFit(const TArrays& a_Points)
{
    return "the affine fit collapses the plane (its determinant " + Brief(Determinant(FitAffine(a_Points))) +
           " counts as zero)";
}

static void AddOnce(const std::string& a_szText, std::vector<std::string>& a_vszTexts)
{
    if (std::find(a_vszTexts.begin(), a_vszTexts.end(), a_szText) == a_vszTexts.end())
    {
        a_vszTexts.push_back(a_szText);
    }
}

// The reasons why the library passed over the kinds between what was asked for and what it used.
static void AddRejections(const TArrays& a_Points, nuv::enumMethodUsed a_Asked, nuv::enumMethodUsed a_Used,
                          std::vector<std::string>& a_vszReasons)
{
    if (a_Asked == nuv::METHOD_OMOGRAPHIC && a_Used < nuv::METHOD_OMOGRAPHIC)
    {
        AddOnce(WhyNoOmographicFit(a_Points), a_vszReasons);
    }
    if (a_Asked >= nuv::METHOD_AFFINE && a_Used < nuv::METHOD_AFFINE)
    {
        AddOnce(WhyNoAffineFit(a_Points), a_vszReasons);
    }
}

// The richest usable result from a_Asked downwards: CalcCoefs judges the coefficients, this also their residuals.
static TAttempt FindUsable(const std::string& a_szFile, const TArrays& a_Points, bool a_bMirrored,
                           nuv::enumMethodUsed a_Asked, std::vector<std::string>& a_vszReasons)
{
    TAttempt Attempt;
    for (nuv::enumMethodUsed Current = a_Asked;; Current = Poorer(Attempt.Kind))
    {
        if (!Try(a_Points, a_bMirrored, Current, Attempt))
        {
            Fail(a_szFile, "no transformation: the spread of the source points counts as zero (below about 1e-6)");
        }
        AddRejections(a_Points, Current, Attempt.Kind, a_vszReasons);
        if (std::isfinite(Attempt.dSumOfSquares))
        {
            return Attempt;
        }
        if (Attempt.Kind == nuv::METHOD_CONFORMAL)
        {
            Fail(a_szFile, "no transformation: the coordinates are too large, the fit is not finite");
        }
        AddOnce(std::string("the residuals of the ") + KindName(Attempt.Kind) + " fit are not finite", a_vszReasons);
    }
}

// The reasons that the points themselves give against the kinds richer than a_Kind.
static std::vector<std::string> ReasonsOfPoints(const TSupport& a_Support, nuv::enumMethodUsed a_Kind)
{
    std::vector<std::string> vszReasons;
    for (const nuv::enumMethodUsed Richer : {nuv::METHOD_OMOGRAPHIC, nuv::METHOD_AFFINE})
    {
        if (Richer > a_Kind && !ReasonAgainst(a_Support, Richer).empty())
        {
            AddOnce(ReasonAgainst(a_Support, Richer), vszReasons);
        }
    }
    return vszReasons;
}

[[noreturn]] static void RefuseDemand(const std::string& a_szFile, nuv::enumMethodUsed a_Kind,
                                      const std::string& a_szReason)
{
    Fail(a_szFile, std::string("no ") + KindName(a_Kind) + " transformation: " + a_szReason);
}

static TAttempt FitDemanded(const std::string& a_szFile, const TArrays& a_Points, const TSupport& a_Support,
                            const TFitOptions& a_Options, std::vector<std::string>& a_vszReasons)
{
    const nuv::enumMethodUsed Demanded = *a_Options.Demanded;
    if (!ReasonAgainst(a_Support, Demanded).empty())
    {
        RefuseDemand(a_szFile, Demanded, ReasonAgainst(a_Support, Demanded));
    }
    std::vector<std::string> vszRejections;
    const TAttempt Attempt = FindUsable(a_szFile, a_Points, a_Options.bMirrored, Demanded, vszRejections);
    if (Attempt.Kind != Demanded)
    {
        RefuseDemand(a_szFile, Demanded, vszRejections.front());
    }
    if (Demanded != nuv::METHOD_OMOGRAPHIC)
    {
        a_vszReasons.push_back("--method asked for it");
    }
    return Attempt;
}

static TAttempt FitRichest(const std::string& a_szFile, const TArrays& a_Points, const TSupport& a_Support,
                           const TFitOptions& a_Options, std::vector<std::string>& a_vszReasons)
{
    const nuv::enumMethodUsed Richest = a_Support.szNoOmographic.empty() ? nuv::METHOD_OMOGRAPHIC
                                        : a_Support.szNoAffine.empty()   ? nuv::METHOD_AFFINE
                                                                         : nuv::METHOD_CONFORMAL;
    a_vszReasons = ReasonsOfPoints(a_Support, Richest);
    return FindUsable(a_szFile, a_Points, a_Options.bMirrored, Richest, a_vszReasons);
}

// ---------------------------------------------------------------------------------------------------------------------
// What is to be said of the result

static double LargestMagnitude(const std::vector<double>& a_vdFirst, const std::vector<double>& a_vdSecond)
{
    double dLargest = 0;
    for (const std::vector<double>* vdValues : {&a_vdFirst, &a_vdSecond})
    {
        for (const double dValue : *vdValues)
        {
            dLargest = std::max(dLargest, std::fabs(dValue));
        }
    }
    return dLargest;
}

// Residuals below this are rounding.
static double RoundingLevel(const TArrays& a_Points)
{
    return 1e-12 * LargestMagnitude(a_Points.vdXa, a_Points.vdYa);
}

// A least-squares fit of a richer kind never has the larger residuals, because it contains the poorer kind. If it has,
// rounding has spoiled its equations or its iterations have not converged.
static void WarnOfSpoiledFit(const TArrays& a_Points, bool a_bMirrored, const TAttempt& a_Attempt,
                             std::vector<std::string>& a_vszWarnings)
{
    TAttempt Other;
    if (a_Attempt.Kind == nuv::METHOD_CONFORMAL || !Try(a_Points, a_bMirrored, Poorer(a_Attempt.Kind), Other))
    {
        return;
    }
    const double dRoot = std::sqrt(a_Attempt.dSumOfSquares);
    if (dRoot > std::sqrt(Other.dSumOfSquares) * (1 + 1e-6) + RoundingLevel(a_Points) * PointCount(a_Points))
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
    if (a_Attempt.Kind != nuv::METHOD_CONFORMAL || !Try(a_Points, !a_bMirrored, nuv::METHOD_CONFORMAL, Other))
    {
        return;
    }
    const double dRoot = std::sqrt(a_Attempt.dSumOfSquares);
    if (std::sqrt(Other.dSumOfSquares) < dRoot / 2 && dRoot > RoundingLevel(a_Points) * PointCount(a_Points))
    {
        a_vszWarnings.push_back(std::string("the similarity of the other orientation fits better: try it ") +
                                (a_bMirrored ? "without" : "with") + " --mirrored");
    }
}

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

static std::vector<std::string> Warnings(const TArrays& a_Points, bool a_bMirrored, const TAttempt& a_Attempt)
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

// ---------------------------------------------------------------------------------------------------------------------
// Frames and parameters

// The conformal kind has one scale; its mirrored form is described as an affine transformation, by a negative sy.
static std::optional<TShape> FindShape(const TAttempt& a_Attempt, bool a_bMirrored)
{
    const nuv::TOmographicParams& C = a_Attempt.Coefs;
    TShape Shape = {};
    double dTx = 0;
    double dTy = 0;
    int iResult = nuv::RET_IMPOSSIBLE;
    if (a_Attempt.Kind == nuv::METHOD_CONFORMAL && !a_bMirrored)
    {
        const nuv::TConformalCoefs Conformal = {C.dA, C.dB, C.dC, C.dF, 0, 0}; // the inverse is not used
        iResult = nuv::ConformalCoefsToParam(Conformal, Shape.dSx, Shape.dRotation, dTx, dTy);
        Shape.dSy = Shape.dSx;
    }
    else if (a_Attempt.Kind != nuv::METHOD_OMOGRAPHIC)
    {
        const nuv::TAffineCoefs Affine = {C.dA, C.dB, C.dC, C.dD, C.dE, C.dF};
        iResult = nuv::AffineCoefsToParam(Affine, Shape.dSx, Shape.dSy, Shape.dSkew, Shape.dRotation, dTx, dTy);
    }
    return iResult == 1 ? std::optional<TShape>(Shape) : std::nullopt;
}

static double FrameDifference(const TArrays& a_Points, const TOrigins& a_Origins, const TFit& a_Fit)
{
    const TArrays Local = Reduced(a_Points, a_Origins);
    double dGreatest = 0;
    for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
    {
        const TPosition Original = Transform(*a_Fit.Original, a_Points.vdX[i], a_Points.vdY[i]);
        const TPosition ReducedImage = Transform(a_Fit.Coefs, Local.vdX[i], Local.vdY[i]);
        const double dDifference = std::hypot((Original.dXa - a_Origins.dXa) - ReducedImage.dXa,
                                              (Original.dYa - a_Origins.dYa) - ReducedImage.dYa);
        dGreatest = dDifference > dGreatest || std::isnan(dDifference) ? dDifference : dGreatest;
    }
    return dGreatest;
}

static void AddOriginalFrame(const TArrays& a_Points, TFit& a_Fit)
{
    nuv::TOmographicParams Original;
    a_Fit.dFrameDifference = 0;
    if (a_Fit.bRaw)
    {
        a_Fit.Original = a_Fit.Coefs;
    }
    else if (ToOriginalFrame(a_Fit.Coefs, a_Fit.Origins, Original))
    {
        a_Fit.Original = Original;
        a_Fit.dFrameDifference = FrameDifference(a_Points, a_Fit.Origins, a_Fit);
        if (!std::isfinite(a_Fit.dFrameDifference)) // rounding has put a point onto the line that goes to infinity
        {
            a_Fit.Original.reset();
        }
    }
}

static void AddStatistics(TFit& a_Fit)
{
    const int viUnknowns[] = {4, 6, 8};
    const auto Shorter = [](const TResidual& a_First, const TResidual& a_Second)
    { return a_First.dLength < a_Second.dLength; };
    a_Fit.iLargest = static_cast<std::size_t>(
        std::max_element(a_Fit.vResiduals.begin(), a_Fit.vResiduals.end(), Shorter) - a_Fit.vResiduals.begin());
    a_Fit.iUnknowns = viUnknowns[a_Fit.Kind];
    a_Fit.iFreedom = 2 * static_cast<long>(a_Fit.vResiduals.size()) - a_Fit.iUnknowns;
    if (a_Fit.iFreedom > 0)
    {
        a_Fit.dRms = std::sqrt(a_Fit.dSumOfSquares / static_cast<double>(a_Fit.iFreedom));
    }
}

TFit FitPoints(const TPoints& a_Points, const TFitOptions& a_Options)
{
    const TArrays Given = Arrays(a_Points.vPoints);
    const TSupport Support = FindSupport(a_Points.szFile, Given);
    TFit Fit = {};
    Fit.bRaw = a_Options.bRaw;
    Fit.Origins = a_Options.bRaw ? TOrigins{} : LocalOrigins(Given);
    const TArrays Local = a_Options.bRaw ? Given : Reduced(Given, Fit.Origins);

    const TAttempt Attempt =
        (a_Options.Demanded ? FitDemanded : FitRichest)(a_Points.szFile, Local, Support, a_Options, Fit.vszNotRicher);
    Fit.Kind = Attempt.Kind;
    Fit.bMirrored = a_Options.bMirrored && Fit.Kind == nuv::METHOD_CONFORMAL;
    Fit.Coefs = Attempt.Coefs;
    Fit.vResiduals = Attempt.vResiduals;
    Fit.dSumOfSquares = Attempt.dSumOfSquares;
    Fit.vszWarnings = Warnings(Local, a_Options.bMirrored, Attempt);
    Fit.Shape = FindShape(Attempt, Fit.bMirrored);
    AddOriginalFrame(Given, Fit);
    AddStatistics(Fit);
    return Fit;
}

} // namespace fitpoints
