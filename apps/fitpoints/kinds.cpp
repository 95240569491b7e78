// kinds.cpp: fits by the library, and the choice of the kind of transformation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "kinds.h"
#include "text.h"

#include <algorithm>
#include <cmath>

namespace fitpoints {

std::vector<TResidual> Residuals(const TArrays& a_Points, const nuv::TOmographicParams& a_Coefs)
{
    std::vector<TResidual> vResiduals;
    for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
    {
        const TPosition Position = Transform(a_Coefs, a_Points.vdX[i], a_Points.vdY[i]);
        const double dX = Position.dXa - a_Points.vdXa[i];
        const double dY = Position.dYa - a_Points.vdYa[i];
        vResiduals.push_back({dX, dY, std::hypot(dX, dY)});
    }
    return vResiduals;
}

double SumOfSquares(const std::vector<TResidual>& a_vResiduals)
{
    double dSum = 0;
    for (const TResidual& R : a_vResiduals)
    {
        dSum += R.dX * R.dX + R.dY * R.dY;
    }
    return dSum;
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

// The library rejects every affine transformation whose determinant is within 1e-12 of zero. Among them are regular
// ones of small scale, such as pixels of 0.1 m in degrees. Their determinant is not small in relation to their
// coefficients.
static bool IsRegular(const nuv::TAffineCoefs& a_Coefs)
{
    const double dSize = std::hypot(std::hypot(a_Coefs.dA, a_Coefs.dB), std::hypot(a_Coefs.dD, a_Coefs.dE));
    return std::fabs(Determinant(a_Coefs)) > 1e-12 * dSize * dSize;
}

bool TryFit(const TArrays& a_Points, bool a_bMirrored, nuv::enumMethodUsed a_Richest, TAttempt& a_Attempt)
{
    if (!nuv::CalcCoefs(PointCount(a_Points), a_Points.vdX.data(), a_Points.vdY.data(), a_Points.vdXa.data(),
                        a_Points.vdYa.data(), !a_bMirrored, a_Richest, a_Attempt.Kind, a_Attempt.Coefs))
    {
        return false;
    }
    if (a_Richest >= nuv::METHOD_AFFINE && a_Attempt.Kind == nuv::METHOD_CONFORMAL)
    {
        const nuv::TAffineCoefs Affine = FitAffine(a_Points);
        if (IsRegular(Affine))
        {
            a_Attempt.Kind = nuv::METHOD_AFFINE;
            nuv::AffineCoefsToOmographicCoefs(Affine, a_Attempt.Coefs);
        }
    }
    a_Attempt.vResiduals = Residuals(a_Points, a_Attempt.Coefs);
    a_Attempt.dSumOfSquares = SumOfSquares(a_Attempt.vResiduals);
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Choice of the kind

nuv::enumMethodUsed Poorer(nuv::enumMethodUsed a_Kind)
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

// Adds the reasons why the library rejected the kinds between a_Asked and a_Used.
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

// The richest usable transformation up to a_Asked. CalcCoefs only checks the coefficients; here the residuals must be
// finite, too.
static TAttempt FindUsable(const std::string& a_szFile, const TArrays& a_Points, bool a_bMirrored,
                           nuv::enumMethodUsed a_Asked, std::vector<std::string>& a_vszReasons)
{
    TAttempt Attempt;
    for (nuv::enumMethodUsed Current = a_Asked;; Current = Poorer(Attempt.Kind))
    {
        if (!TryFit(a_Points, a_bMirrored, Current, Attempt))
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

// The reasons why the points do not support the kinds richer than a_Kind.
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

TAttempt ChooseFit(const std::string& a_szFile, const TArrays& a_Points, const TSupport& a_Support,
                   const TFitOptions& a_Options, std::vector<std::string>& a_vszReasons)
{
    return (a_Options.Demanded ? FitDemanded : FitRichest)(a_szFile, a_Points, a_Support, a_Options, a_vszReasons);
}

} // namespace fitpoints
