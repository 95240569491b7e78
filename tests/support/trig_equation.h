// trig_equation.h: the trigonometric equation in extended precision, and a count of its solutions.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_TRIG_EQUATION_H
#define NUV_TESTS_SUPPORT_TRIG_EQUATION_H

#include "records.h"

#include <array>
#include <cmath>
#include <limits>

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

    long double Derivative(long double a_dCos, long double a_dSin) const
    {
        return 2 * (dB - dA) * a_dSin * a_dCos + dC * (a_dCos * a_dCos - a_dSin * a_dSin) - dD * a_dSin + dE * a_dCos;
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
// its sign changes and none otherwise. Any other interval is close to a double solution, which rounding decides. The
// sign of a value says nothing if rounding can have made it: with a = b = -f, those terms cancel and d and e may be less
// than their rounding errors.
inline int CountSolutions(const TTrigEquation& a_Equation)
{
    constexpr std::size_t Steps = 2048;
    constexpr double Width = TwoPi / Steps;
    static const auto Grid = [] // cosines and sines, away from the axes, where special solutions lie
    {
        std::array<std::array<long double, 2>, Steps + 1> Values;
        for (std::size_t i = 0; i <= Steps; ++i)
        {
            const long double dAngle = 0.1L + 2 * LongPi / Steps * i;
            Values[i] = {std::cos(dAngle), std::sin(dAngle)};
        }
        return Values;
    }();
    const double dDouble = std::fabs(a_Equation.dB - a_Equation.dA) + std::fabs(a_Equation.dC);
    const double dSingle = std::fabs(a_Equation.dD) + std::fabs(a_Equation.dE);
    const double dMostSlope = dDouble + dSingle;
    const double dMostBend = 2.0 * dDouble + dSingle;
    const long double dMostRounding = 16 * std::numeric_limits<long double>::epsilon() * a_Equation.Norm();
    const auto Value = [&](std::size_t i) { return a_Equation.At(Grid[i][0], Grid[i][1]); };
    int iSolutions = 0;
    long double dValue = Value(0);
    for (std::size_t i = 0; i < Steps; ++i)
    {
        const long double dNext = Value(i + 1);
        if (std::fabs(dValue) <= dMostRounding || std::fabs(dNext) <= dMostRounding)
        {
            return -1;
        }
        if (std::fabs(dValue) <= dMostSlope * Width)
        {
            const long double dSlope = a_Equation.Derivative(Grid[i][0], Grid[i][1]);
            if (std::fabs(dSlope) <= dMostBend * Width)
            {
                return -1;
            }
            iSolutions += (dValue < 0.0L) != (dNext < 0.0L) ? 1 : 0;
        }
        dValue = dNext;
    }
    return iSolutions;
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_TRIG_EQUATION_H
