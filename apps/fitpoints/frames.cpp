// frames.cpp: finds local origins, maps points, and converts coefficients from one frame to the other.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "frames.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace fitpoints {

// The nearest multiple of 10^a_iExponent. A negative power becomes a divisor: 10^-k is no double, but 10^k is one.
static double RoundToPowerOfTen(double a_dValue, int a_iExponent)
{
    const double dPower = std::pow(10.0, std::abs(a_iExponent));
    const double dRounded =
        a_iExponent < 0 ? std::round(a_dValue * dPower) / dPower : std::round(a_dValue / dPower) * dPower;
    return std::isfinite(dRounded) ? dRounded : a_dValue;
}

double Extent(const std::vector<double>& a_vdValues)
{
    const auto Range = std::minmax_element(a_vdValues.begin(), a_vdValues.end());
    return *Range.second - *Range.first;
}

double Magnitude(const std::vector<double>& a_vdValues)
{
    const auto Range = std::minmax_element(a_vdValues.begin(), a_vdValues.end());
    return std::max(std::fabs(*Range.first), std::fabs(*Range.second));
}

double RoundingLevel(const TArrays& a_Points)
{
    return 1e-12 * std::max(Magnitude(a_Points.vdXa), Magnitude(a_Points.vdYa));
}

double LocalOrigin(const std::vector<double>& a_vdValues, double a_dExtent)
{
    double dSum = 0;
    for (const double dValue : a_vdValues)
    {
        dSum += dValue - a_vdValues[0];
    }
    const double dMean = a_vdValues[0] + dSum / static_cast<double>(a_vdValues.size());
    const double dExtent = Extent(a_vdValues) > 0 ? Extent(a_vdValues) : a_dExtent;
    const int iExponent = static_cast<int>(std::floor(std::log10(dExtent)));
    return RoundToPowerOfTen(dMean, iExponent) + 0.0; // + 0.0 turns -0.0 into 0.0
}

TOrigins LocalOrigins(const TArrays& a_Points)
{
    const double dSource = std::max(Extent(a_Points.vdX), Extent(a_Points.vdY));
    const double dTarget = std::max(Extent(a_Points.vdXa), Extent(a_Points.vdYa));
    return {LocalOrigin(a_Points.vdX, dSource), LocalOrigin(a_Points.vdY, dSource), LocalOrigin(a_Points.vdXa, dTarget),
            LocalOrigin(a_Points.vdYa, dTarget)};
}

static std::vector<double> Reduced(std::vector<double> a_vdValues, double a_dOrigin)
{
    for (double& dValue : a_vdValues)
    {
        dValue -= a_dOrigin;
    }
    return a_vdValues;
}

TArrays Reduced(const TArrays& a_Points, const TOrigins& a_Origins)
{
    return {Reduced(a_Points.vdX, a_Origins.dX), Reduced(a_Points.vdY, a_Origins.dY),
            Reduced(a_Points.vdXa, a_Origins.dXa), Reduced(a_Points.vdYa, a_Origins.dYa)};
}

double Denominator(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY)
{
    return a_Coefs.dG * a_dX + a_Coefs.dH * a_dY + 1.0;
}

TPosition Transform(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY)
{
    const double dW = Denominator(a_Coefs, a_dX, a_dY);
    return {(a_Coefs.dA * a_dX + a_Coefs.dB * a_dY + a_Coefs.dC) / dW,
            (a_Coefs.dD * a_dX + a_Coefs.dE * a_dY + a_Coefs.dF) / dW};
}

static bool IsFinite(const nuv::TOmographicParams& a_Coefs)
{
    const double vdCoefs[] = {a_Coefs.dA, a_Coefs.dB, a_Coefs.dC, a_Coefs.dD,
                              a_Coefs.dE, a_Coefs.dF, a_Coefs.dG, a_Coefs.dH};
    return std::all_of(std::begin(vdCoefs), std::end(vdCoefs), [](double a_dCoef) { return std::isfinite(a_dCoef); });
}

// The local frame has X' = (A x' + B y' + C)/W with x' = x - x0, y' = y - y0, X' = X - X0. With W0 = 1 - G x0 - H y0
//     X = X0 + (A x + B y + (C - A x0 - B y0)) / (G x + H y + W0)
//       = ((A + X0 G) x + (B + X0 H) y + (C - A x0 - B y0) + X0 W0) / (G x + H y + W0).
// Division of all terms by W0 makes the constant of the denominator 1. Y is treated in the same way. The constants are
// small differences of large products, so they are computed in long double.
bool ToOriginalFrame(const nuv::TOmographicParams& a_Local, const TOrigins& a_Origins,
                     nuv::TOmographicParams& a_Original)
{
    const long double dX0 = a_Origins.dX;
    const long double dY0 = a_Origins.dY;
    const long double dGx = a_Local.dG * dX0;
    const long double dHy = a_Local.dH * dY0;
    const long double dW0 = 1 - dGx - dHy;
    const double dRounding = 4 * std::numeric_limits<double>::epsilon();
    if (std::fabs(dW0) <= dRounding * (1 + std::fabs(dGx) + std::fabs(dHy)))
    {
        return false; // G and H are rounded, so W0 has no right digit
    }
    const auto Linear = [&](double a_dLocal, double a_dOrigin, double a_dDenominator)
    { return static_cast<double>((a_dLocal + static_cast<long double>(a_dOrigin) * a_dDenominator) / dW0); };
    const auto Constant = [&](double a_dByX, double a_dByY, double a_dConstant, double a_dOrigin)
    { return static_cast<double>((a_dConstant - a_dByX * dX0 - a_dByY * dY0) / dW0 + a_dOrigin); };

    a_Original.dA = Linear(a_Local.dA, a_Origins.dXa, a_Local.dG);
    a_Original.dB = Linear(a_Local.dB, a_Origins.dXa, a_Local.dH);
    a_Original.dC = Constant(a_Local.dA, a_Local.dB, a_Local.dC, a_Origins.dXa);
    a_Original.dD = Linear(a_Local.dD, a_Origins.dYa, a_Local.dG);
    a_Original.dE = Linear(a_Local.dE, a_Origins.dYa, a_Local.dH);
    a_Original.dF = Constant(a_Local.dD, a_Local.dE, a_Local.dF, a_Origins.dYa);
    a_Original.dG = static_cast<double>(a_Local.dG / dW0);
    a_Original.dH = static_cast<double>(a_Local.dH / dW0);
    return IsFinite(a_Original);
}

} // namespace fitpoints
