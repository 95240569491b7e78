// probability.cpp: tail probabilities of the F distribution, and their inverse.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Model      P(F(2k, m) > x) = y^(m/2) sum over j < k of (m/2)(m/2 + 1)...(m/2 + j - 1)/j! (1 - y)^j, y = m/(m + 2k x).
//            The sum is finite because 2k is even. The power is one of an integer, and a square root for odd m. So no
//            logarithm is needed, which differs between platforms.
// Source     M. Abramowitz, I. A. Stegun, Handbook of Mathematical Functions, 26.6.4.

#include "internal.h"

#include <math.h>

namespace judgement {

static double IntegerPower(double a_dBase, int a_iExponent)
{
    double dPower = 1.0;
    double dSquare = a_dBase;
    for (int i = a_iExponent; i > 0; i /= 2)
    {
        dPower *= i % 2 == 1 ? dSquare : 1.0;
        dSquare *= dSquare;
    }
    return dPower;
}

double TailOfF(int a_iHalfNumerator, int a_iDenominator, double a_dX)
{
    const double m = a_iDenominator;
    const double y = m / (m + 2.0 * a_iHalfNumerator * a_dX);
    const double dPower = IntegerPower(y, a_iDenominator / 2) * (a_iDenominator % 2 == 1 ? sqrt(y) : 1.0);
    double dTerm = 1.0;
    double dSum = 1.0;
    for (int j = 1; j < a_iHalfNumerator; ++j)
    {
        dTerm *= (m / 2 + j - 1) / j * (1.0 - y);
        dSum += dTerm;
    }
    return dPower * dSum;
}

enum
{
    BISECTIONS = 200 // more than enough to end at two neighbouring doubles
};

double QuantileOfF(int a_iHalfNumerator, int a_iDenominator, double a_dProbability)
{
    double dLow = 0;
    double dHigh = 1;
    while (IsFinite(dHigh) && TailOfF(a_iHalfNumerator, a_iDenominator, dHigh) > a_dProbability)
    {
        dLow = dHigh;
        dHigh *= 2;
    }
    for (int k = 0; k < BISECTIONS && IsFinite(dHigh); ++k)
    {
        const double dMiddle = dLow + (dHigh - dLow) / 2;
        const bool bAbove = TailOfF(a_iHalfNumerator, a_iDenominator, dMiddle) > a_dProbability;
        dLow = bAbove ? dMiddle : dLow;
        dHigh = bAbove ? dHigh : dMiddle;
    }
    return dHigh;
}

} // namespace judgement
