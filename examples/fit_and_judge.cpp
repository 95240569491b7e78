// fit_and_judge.cpp: fits control points, and judges the result before it is used.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Eight points of a scanned plan are known in pixels and in metres of the national grid. One of them was typed wrongly.

#include "nuv1math.h"

#include <cmath>
#include <cstdio>
#include <vector>

//! [points]
struct TPoint
{
    const char* szName;
    double dX, dY;   // pixels, y upwards
    double dXa, dYa; // metres
};

const std::vector<TPoint> PLAN = {
    {"A", 210.0, 340.0, 4500103.13, 5387167.97},   {"B", 3120.0, 295.0, 4501560.90, 5387096.32},
    {"C", 3305.0, 2410.0, 4501690.40, 5388147.94}, {"D", 180.0, 2390.0, 4500123.84, 5388190.86},
    {"E", 1650.0, 1320.0, 4500841.99, 5387632.38}, {"F", 980.0, 640.0, 4500494.32, 5387304.60},
    {"G", 2530.0, 1905.0, 4501294.06, 5387909.27}, {"H", 2060.0, 760.0, 4501037.66, 5387346.19},
};
const double ORIGIN_X = 1700.0, ORIGIN_Y = 1300.0;         // pixels
const double ORIGIN_XA = 4500900.0, ORIGIN_YA = 5387600.0; // metres
//! [points]

//! [fit]
struct TFit
{
    bool bUsable;
    nuv::enumMethodUsed Kind;
    nuv::TOmographicParams Params;
};

// The arrays of the library, counted from the local origin.
TFit Fit(const std::vector<TPoint>& a_Points, nuv::enumMethodUsed a_Richest)
{
    std::vector<double> vdX, vdY, vdXa, vdYa;
    for (const TPoint& Point : a_Points)
    {
        vdX.push_back(Point.dX - ORIGIN_X);
        vdY.push_back(Point.dY - ORIGIN_Y);
        vdXa.push_back(Point.dXa - ORIGIN_XA);
        vdYa.push_back(Point.dYa - ORIGIN_YA);
    }
    TFit Result;
    Result.bUsable = nuv::CalcCoefs(static_cast<int>(a_Points.size()), vdX.data(), vdY.data(), vdXa.data(), vdYa.data(),
                                    true, a_Richest, Result.Kind, Result.Params);
    return Result;
}
//! [fit]

//! [map]
// Maps a point of the plan. One formula serves every kind.
void Map(const nuv::TOmographicParams& P, double a_dX, double a_dY, double& a_dXa, double& a_dYa)
{
    const double x = a_dX - ORIGIN_X, y = a_dY - ORIGIN_Y;
    const double w = P.dG * x + P.dH * y + 1.0;
    a_dXa = (P.dA * x + P.dB * y + P.dC) / w + ORIGIN_XA;
    a_dYa = (P.dD * x + P.dE * y + P.dF) / w + ORIGIN_YA;
}
//! [map]

//! [residual]
struct TResidual
{
    double dX, dY; // computed less given

    double Length() const
    {
        return std::hypot(dX, dY);
    }
};

TResidual Residual(const TFit& a_Fit, const TPoint& a_Point)
{
    double dXa, dYa;
    Map(a_Fit.Params, a_Point.dX, a_Point.dY, dXa, dYa);
    return {dXa - a_Point.dXa, dYa - a_Point.dYa};
}

// The standard deviation of a coordinate, from 2n residuals less as many as the fit has coefficients.
double Rms(const TFit& a_Fit, const std::vector<TPoint>& a_Points)
{
    double dSquares = 0.0;
    for (const TPoint& Point : a_Points)
    {
        const TResidual R = Residual(a_Fit, Point);
        dSquares += R.dX * R.dX + R.dY * R.dY;
    }
    const int iCoefficients = 4 + 2 * a_Fit.Kind; // conformal 4, affine 6, omographic 8
    return std::sqrt(dSquares / (2.0 * static_cast<double>(a_Points.size()) - iCoefficients));
}
//! [residual]

//! [spread]
// The spread of the source points across their best line, divided by the spread along it. An affine fit loses digits
// with the square of it, and needs points with more than 3e-8.
double SpreadRatio(const std::vector<TPoint>& a_Points)
{
    double dMeanX = 0.0, dMeanY = 0.0, dXx = 0.0, dXy = 0.0, dYy = 0.0;
    for (const TPoint& Point : a_Points)
    {
        dMeanX += Point.dX / static_cast<double>(a_Points.size());
        dMeanY += Point.dY / static_cast<double>(a_Points.size());
    }
    for (const TPoint& Point : a_Points)
    {
        dXx += (Point.dX - dMeanX) * (Point.dX - dMeanX);
        dXy += (Point.dX - dMeanX) * (Point.dY - dMeanY);
        dYy += (Point.dY - dMeanY) * (Point.dY - dMeanY);
    }
    const double dMean = (dXx + dYy) / 2.0, dRadius = std::hypot((dXx - dYy) / 2.0, dXy);
    return std::sqrt(std::fmax(0.0, dMean - dRadius) / (dMean + dRadius));
}
//! [spread]

//! [without]
// How far a point is from where all other points put it.
double ErrorWithout(const std::vector<TPoint>& a_Points, std::size_t a_iPoint, nuv::enumMethodUsed a_Kind)
{
    std::vector<TPoint> Others = a_Points;
    Others.erase(Others.begin() + static_cast<std::ptrdiff_t>(a_iPoint));
    return Residual(Fit(Others, a_Kind), a_Points[a_iPoint]).Length();
}
//! [without]

// Prints the fit of one kind, and returns the point that the others contradict most.
std::size_t Report(const std::vector<TPoint>& a_Points, const TFit& a_Fit)
{
    std::size_t iWorst = 0;
    double dWorst = 0.0;
    for (std::size_t i = 0; i < a_Points.size(); ++i)
    {
        const TResidual R = Residual(a_Fit, a_Points[i]);
        const double dError = ErrorWithout(a_Points, i, a_Fit.Kind);
        std::printf("  %s  dX %+6.3f  dY %+6.3f  from the others %5.3f m\n", a_Points[i].szName, R.dX, R.dY, dError);
        if (dError > dWorst)
        {
            dWorst = dError;
            iWorst = i;
        }
    }
    return iWorst;
}

//! [main]
int main()
{
    const char* const vszKinds[] = {"conformal", "affine", "omographic"};
    std::printf("spread ratio of the points: %.2f\n", SpreadRatio(PLAN));

    std::vector<TPoint> Points = PLAN;
    for (int iRound = 0; iRound < 2; ++iRound)
    {
        std::printf("%d points\n", static_cast<int>(Points.size()));
        for (const auto Kind : {nuv::METHOD_CONFORMAL, nuv::METHOD_AFFINE, nuv::METHOD_OMOGRAPHIC})
        {
            const TFit Result = Fit(Points, Kind);
            if (!Result.bUsable || Result.Kind != Kind)
            {
                return 1;
            }
            std::printf("  %-10s  RMS %.3f m\n", vszKinds[Kind], Rms(Result, Points));
        }
        const std::size_t iWorst = Report(Points, Fit(Points, nuv::METHOD_AFFINE));
        if (iRound == 0)
        {
            std::printf("left out: %s\n", Points[iWorst].szName);
            Points.erase(Points.begin() + static_cast<std::ptrdiff_t>(iWorst));
        }
    }
    double dXa, dYa;
    Map(Fit(Points, nuv::METHOD_AFFINE).Params, 1000.0, 2000.0, dXa, dYa);
    std::printf("pixel (1000, 2000) is at (%.2f, %.2f)\n", dXa, dYa);
    return 0;
}
//! [main]
