// fit.cpp: computes the transformation with its frames, its parameters and the statistics of its residuals.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fit.h"
#include "kinds.h"
#include "warnings.h"

#include <algorithm>
#include <cmath>

namespace fitpoints {

// A mirrored conformal transformation is described as an affine one, with a negative sy.
static std::optional<TShape> FindShape(const TAttempt& a_Attempt, bool a_bMirrored)
{
    const nuv::TOmographicParams& C = a_Attempt.Coefs;
    TShape Shape = {};
    double dTx = 0;
    double dTy = 0;
    int iResult = nuv::RET_IMPOSSIBLE;
    if (a_Attempt.Kind == nuv::METHOD_CONFORMAL && !a_bMirrored)
    {
        const nuv::TConformalCoefs Conformal = {C.dA, C.dB, C.dC, C.dF, 0, 0}; // without the inverse, which is not read
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
        if (!std::isfinite(a_Fit.dFrameDifference)) // rounding takes a point to infinity
        {
            a_Fit.Original.reset();
        }
    }
}

static void AddStatistics(TFit& a_Fit)
{
    const int viUnknowns[] = {4, 6, 8};
    a_Fit.iUnknowns = viUnknowns[a_Fit.Kind];
    a_Fit.iFreedom = 2 * a_Fit.Judgement.iFitted - a_Fit.iUnknowns;
    if (a_Fit.iFreedom > 0)
    {
        a_Fit.dRms = std::sqrt(a_Fit.dSumOfSquares / static_cast<double>(a_Fit.iFreedom));
    }
}

static std::vector<TPoint> FittedPoints(const std::vector<TPoint>& a_vPoints)
{
    std::vector<TPoint> vFitted;
    std::copy_if(a_vPoints.begin(), a_vPoints.end(), std::back_inserter(vFitted),
                 [](const TPoint& a_Point) { return !a_Point.bCheck; });
    return vFitted;
}

// Compares all points with the transformation, the check points included.
static void JudgePoints(const std::vector<TPoint>& a_vPoints, TFit& a_Fit)
{
    a_Fit.vResiduals = Residuals(Reduced(Arrays(a_vPoints), a_Fit.Origins), a_Fit.Coefs);
    double dCheckSum = 0;
    for (std::size_t i = 0; i < a_vPoints.size(); ++i)
    {
        const TResidual& R = a_Fit.vResiduals[i];
        judgement::TPointJudgement Point = {};
        Point.Role = a_vPoints[i].bCheck ? judgement::ROLE_CHECK : judgement::ROLE_FITTED;
        Point.dX = R.dX;
        Point.dY = R.dY;
        Point.dLength = R.dLength;
        a_Fit.vPoints.push_back(Point);
        const bool bCheck = a_vPoints[i].bCheck;
        a_Fit.Judgement.iChecks += bCheck ? 1 : 0;
        dCheckSum += bCheck ? R.dX * R.dX + R.dY * R.dY : 0;
        a_Fit.iLargest = !bCheck && R.dLength > a_Fit.vResiduals[a_Fit.iLargest].dLength ? i : a_Fit.iLargest;
    }
    a_Fit.Judgement.dCheckRms = a_Fit.Judgement.iChecks == 0 ? 0 : std::sqrt(dCheckSum / (2 * a_Fit.Judgement.iChecks));
}

TFit FitPoints(const TPoints& a_Points, const TFitOptions& a_Options)
{
    const TArrays Given = Arrays(FittedPoints(a_Points.vPoints));
    const TSupport Support = FindSupport(a_Points.szFile, Given);
    TFit Fit = {};
    Fit.bRaw = a_Options.bRaw;
    Fit.Origins = a_Options.bRaw ? TOrigins{} : LocalOrigins(Given);
    const TArrays Local = a_Options.bRaw ? Given : Reduced(Given, Fit.Origins);

    const TAttempt Attempt = ChooseFit(a_Points.szFile, Local, Support, a_Options, Fit.vszNotRicher);
    Fit.Kind = Attempt.Kind;
    Fit.bMirrored = a_Options.bMirrored && Fit.Kind == nuv::METHOD_CONFORMAL;
    Fit.Coefs = Attempt.Coefs;
    Fit.dSumOfSquares = Attempt.dSumOfSquares;
    Fit.vszWarnings = Warnings(Local, a_Options.bMirrored, Attempt);
    Fit.Shape = FindShape(Attempt, Fit.bMirrored);
    Fit.Judgement.iFitted = PointCount(Given);
    AddOriginalFrame(Given, Fit);
    AddStatistics(Fit);
    JudgePoints(a_Points.vPoints, Fit);
    return Fit;
}

} // namespace fitpoints
