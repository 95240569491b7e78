// frames.cpp: local origins, and coefficients in local and in original coordinates.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "internal.h"

#include <float.h>
#include <math.h>

namespace judgement {

// ---------------------------------------------------------------------------------------------------------------------
// Local origins

enum
{
    GREATEST_POWER = 308 // 10^308 is a double, 10^309 is not
};

// The nearest integer, halves away from zero. From 2^52 on every double is an integer.
static double Rounded(double a_dValue)
{
    if (!(fabs(a_dValue) < 4503599627370496.0))
    {
        return a_dValue;
    }
    return a_dValue < 0 ? -floor(0.5 - a_dValue) : floor(a_dValue + 0.5);
}

// The nearest multiple of the power of ten at or below the extent. A negative power becomes a divisor: 10^-k is no double,
// but 10^k is one up to k = 22.
static double RoundToExtent(double a_dValue, double a_dExtent)
{
    double dPower = 1.0;
    double dRounded;
    if (a_dExtent < 1.0)
    {
        for (int k = 0; k < GREATEST_POWER && a_dExtent * dPower < 1.0; ++k)
        {
            dPower *= 10.0;
        }
        dRounded = Rounded(a_dValue * dPower) / dPower;
    }
    else
    {
        for (int k = 0; k < GREATEST_POWER && a_dExtent / dPower >= 10.0; ++k)
        {
            dPower *= 10.0;
        }
        dRounded = Rounded(a_dValue / dPower) * dPower;
    }
    return IsFinite(dRounded) ? dRounded : a_dValue;
}

double Extent(int a_iCount, const double* a_vdValues)
{
    double dLeast = a_vdValues[0];
    double dGreatest = a_vdValues[0];
    for (int i = 1; i < a_iCount; ++i)
    {
        dLeast = a_vdValues[i] < dLeast ? a_vdValues[i] : dLeast;
        dGreatest = a_vdValues[i] > dGreatest ? a_vdValues[i] : dGreatest;
    }
    return dGreatest - dLeast;
}

double GreatestMagnitude(int a_iCount, const double* a_vdValues)
{
    double dGreatest = 0;
    for (int i = 0; i < a_iCount; ++i)
    {
        const double dMagnitude = fabs(a_vdValues[i]);
        dGreatest = dMagnitude > dGreatest ? dMagnitude : dGreatest;
    }
    return dGreatest;
}

double RoundingLevel(const TControlPoints& a_Points)
{
    const double dX = GreatestMagnitude(a_Points.iCount, a_Points.vdXa);
    const double dY = GreatestMagnitude(a_Points.iCount, a_Points.vdYa);
    return 1e-12 * (dX > dY ? dX : dY);
}

double LocalOrigin(int a_iCount, const double* a_vdValues, double a_dExtent)
{
    double dSum = 0;
    for (int i = 0; i < a_iCount; ++i)
    {
        dSum += a_vdValues[i] - a_vdValues[0];
    }
    const double dMean = a_vdValues[0] + dSum / a_iCount;
    const double dOwn = Extent(a_iCount, a_vdValues);
    const double dExtent = dOwn > 0 ? dOwn : a_dExtent;
    return (dExtent > 0 ? RoundToExtent(dMean, dExtent) : dMean) + 0.0; // + 0.0 turns -0.0 into 0.0
}

// The origins of one system.
static TVector OriginOf(int a_iCount, const double* a_vdX, const double* a_vdY)
{
    const double dX = Extent(a_iCount, a_vdX);
    const double dY = Extent(a_iCount, a_vdY);
    const double dExtent = dX > dY ? dX : dY;
    const TVector Origin = {LocalOrigin(a_iCount, a_vdX, dExtent), LocalOrigin(a_iCount, a_vdY, dExtent)};
    return Origin;
}

void FindOrigins(const TControlPoints& a_Points, TOrigins& a_Origins)
{
    const TVector Source = OriginOf(a_Points.iCount, a_Points.vdX, a_Points.vdY);
    const TVector Target = OriginOf(a_Points.iCount, a_Points.vdXa, a_Points.vdYa);
    const TOrigins Origins = {Source.dX, Source.dY, Target.dX, Target.dY};
    a_Origins = Origins;
}

void ReducePoints(const TControlPoints& a_Points, const TOrigins& a_Origins, double* a_vdX, double* a_vdY,
                  double* a_vdXa, double* a_vdYa)
{
    for (int i = 0; i < a_Points.iCount; ++i)
    {
        a_vdX[i] = a_Points.vdX[i] - a_Origins.dX;
        a_vdY[i] = a_Points.vdY[i] - a_Origins.dY;
        a_vdXa[i] = a_Points.vdXa[i] - a_Origins.dXa;
        a_vdYa[i] = a_Points.vdYa[i] - a_Origins.dYa;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Original coordinates
//
// A number of twice the digits is the sum of two doubles. The sum and the product of two doubles are such numbers without
// any error. long double would not do: its format is another one on every platform.

struct TTwofold
{
    double dHigh, dLow;
};

static TTwofold Sum(double a_dX, double a_dY)
{
    const double dSum = a_dX + a_dY;
    const double dPart = dSum - a_dX;
    const TTwofold Result = {dSum, (a_dX - (dSum - dPart)) + (a_dY - dPart)};
    return Result;
}

// The upper 26 bits.
static double UpperHalf(double a_dValue)
{
    const double dScaled = 134217729.0 * a_dValue; // 2^27 + 1
    return dScaled - (dScaled - a_dValue);
}

static TTwofold Product(double a_dX, double a_dY)
{
    const double dXh = UpperHalf(a_dX);
    const double dYh = UpperHalf(a_dY);
    const double dXl = a_dX - dXh;
    const double dYl = a_dY - dYh;
    const double dProduct = a_dX * a_dY;
    const TTwofold Result = {dProduct, ((dXh * dYh - dProduct) + dXh * dYl + dXl * dYh) + dXl * dYl};
    return Result;
}

static TTwofold Sum(const TTwofold& a_X, const TTwofold& a_Y)
{
    const TTwofold High = Sum(a_X.dHigh, a_Y.dHigh);
    return Sum(High.dHigh, High.dLow + (a_X.dLow + a_Y.dLow));
}

static TTwofold Negated(const TTwofold& a_X)
{
    const TTwofold Result = {-a_X.dHigh, -a_X.dLow};
    return Result;
}

static TTwofold Quotient(const TTwofold& a_X, const TTwofold& a_Y)
{
    const double dFirst = a_X.dHigh / a_Y.dHigh;
    const TTwofold Multiple = Sum(Product(dFirst, a_Y.dHigh), Product(dFirst, a_Y.dLow));
    const TTwofold Rest = Sum(a_X, Negated(Multiple));
    return Sum(dFirst, (Rest.dHigh + Rest.dLow) / a_Y.dHigh);
}

static TTwofold Twofold(double a_dValue)
{
    const TTwofold Result = {a_dValue, 0};
    return Result;
}

static double Value(const TTwofold& a_X)
{
    return a_X.dHigh + a_X.dLow;
}

// (local + origin denominator) / W0.
static double LinearCoef(double a_dLocal, double a_dOrigin, double a_dDenominator, const TTwofold& a_W0)
{
    return Value(Quotient(Sum(Twofold(a_dLocal), Product(a_dOrigin, a_dDenominator)), a_W0));
}

// (constant - by x x0 - by y y0) / W0 + origin.
static double ConstantCoef(double a_dByX, double a_dByY, double a_dConstant, double a_dOrigin,
                           const TOrigins& a_Origins, const TTwofold& a_W0)
{
    const TTwofold Moved = Negated(Sum(Product(a_dByX, a_Origins.dX), Product(a_dByY, a_Origins.dY)));
    return Value(Sum(Quotient(Sum(Twofold(a_dConstant), Moved), a_W0), Twofold(a_dOrigin)));
}

// The local frame has X' = (A x' + B y' + C)/W with x' = x - x0, y' = y - y0, X' = X - X0. With W0 = 1 - G x0 - H y0
//     X = X0 + (A x + B y + (C - A x0 - B y0)) / (G x + H y + W0)
//       = ((A + X0 G) x + (B + X0 H) y + (C - A x0 - B y0) + X0 W0) / (G x + H y + W0).
// Division of all terms by W0 makes the constant of the denominator 1. Y is treated in the same way.
bool ToOriginalFrame(const nuv::TOmographicParams& a_Local, const TOrigins& a_Origins,
                     nuv::TOmographicParams& a_Original)
{
    const TTwofold Gx = Product(a_Local.dG, a_Origins.dX);
    const TTwofold Hy = Product(a_Local.dH, a_Origins.dY);
    const TTwofold W0 = Sum(Twofold(1.0), Negated(Sum(Gx, Hy)));
    const double dTerms = 1 + fabs(Gx.dHigh) + fabs(Hy.dHigh);
    if (fabs(W0.dHigh) <= 4 * DBL_EPSILON * dTerms)
    {
        return false; // G and H are rounded, so W0 has no right digit
    }
    const nuv::TOmographicParams& L = a_Local;
    a_Original.dA = LinearCoef(L.dA, a_Origins.dXa, L.dG, W0);
    a_Original.dB = LinearCoef(L.dB, a_Origins.dXa, L.dH, W0);
    a_Original.dC = ConstantCoef(L.dA, L.dB, L.dC, a_Origins.dXa, a_Origins, W0);
    a_Original.dD = LinearCoef(L.dD, a_Origins.dYa, L.dG, W0);
    a_Original.dE = LinearCoef(L.dE, a_Origins.dYa, L.dH, W0);
    a_Original.dF = ConstantCoef(L.dD, L.dE, L.dF, a_Origins.dYa, a_Origins, W0);
    a_Original.dG = Value(Quotient(Twofold(L.dG), W0));
    a_Original.dH = Value(Quotient(Twofold(L.dH), W0));
    return AreFinite(a_Original);
}

} // namespace judgement
