// trig_equation.h: the trigonometric equation in extended precision, and a count of its solutions.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_TRIG_EQUATION_H
#define NUV_TESTS_SUPPORT_TRIG_EQUATION_H

#include "records.h"

#include <cmath>

namespace nuv_tests {

// a cos^2(t) + b sin^2(t) + c sin(t) cos(t) + d cos(t) + e sin(t) + f.
struct TTrigEquation
{
    double dA;
    double dB;
    double dC;
    double dD;
    double dE;
    double dF;

    long double At(long double a_dCos, long double a_dSin) const
    {
        return dA * a_dCos * a_dCos + dB * a_dSin * a_dSin + dC * a_dSin * a_dCos + dD * a_dCos + dE * a_dSin + dF;
    }

    long double At(long double a_dAngle) const
    {
        return At(std::cos(a_dAngle), std::sin(a_dAngle));
    }

    double Derivative(double a_dAngle) const
    {
        return (dB - dA) * std::sin(2 * a_dAngle) + dC * std::cos(2 * a_dAngle) - dD * std::sin(a_dAngle) +
               dE * std::cos(a_dAngle);
    }

    // The sum of the magnitudes of all coefficients.
    long double Norm() const
    {
        long double dNorm = 0.0L;
        for (double dCoefficient : Fields(*this))
        {
            dNorm += std::fabs(dCoefficient);
        }
        return dNorm;
    }
};

// Every solver returns NaN or an angle in [0, 2 pi].
inline bool IsAngle(double a_dAngle)
{
    return std::isnan(a_dAngle) || (a_dAngle >= 0.0 && a_dAngle <= TwoPi);
}

// The number of solutions in one turn, or -1 if the scan cannot tell. The coefficients bound the function f and its
// first two derivatives. Consider an interval of width h that begins at t. If |f(t)| is more than f can change in it,
// it contains no solution. If |f'(t)| is more than f' can change in it, f is monotone there, and has one solution if
// its sign changes and none otherwise. Any other interval is close to a double solution, which rounding decides.
inline int CountSolutions(const TTrigEquation& a_Equation)
{
    constexpr int Steps = 2048;
    constexpr double Start = 0.1; // away from the axes, where special solutions lie
    const double dWidth = TwoPi / Steps;
    const double dDouble = std::fabs(a_Equation.dB - a_Equation.dA) + std::fabs(a_Equation.dC);
    const double dSingle = std::fabs(a_Equation.dD) + std::fabs(a_Equation.dE);
    const double dMostSlope = dDouble + dSingle;
    const double dMostBend = 2.0 * dDouble + dSingle;
    const auto Value = [&](int i) { return static_cast<double>(a_Equation.At(Start + dWidth * i)); };
    int iSolutions = 0;
    double dValue = Value(0);
    for (int i = 0; i < Steps; ++i)
    {
        const double dNext = Value(i + 1);
        if (std::fabs(dValue) <= dMostSlope * dWidth)
        {
            const double dSlope = a_Equation.Derivative(Start + dWidth * i);
            if (std::fabs(dSlope) <= dMostBend * dWidth || dValue == 0.0 || dNext == 0.0)
            {
                return -1;
            }
            iSolutions += (dValue < 0.0) != (dNext < 0.0) ? 1 : 0;
        }
        dValue = dNext;
    }
    return iSolutions;
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_TRIG_EQUATION_H
