// trig_equation.h: what the tests of both trigonometric solvers share: guarded calls, residuals, a scan for solutions.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_TRIG_EQUATION_H
#define NUV_TESTS_TRIG_EQUATION_H

#include "child.h"
#include "nuv1math.h"
#include "testing.h"

#include <functional>
#include <random>
#include <utility>

namespace nuv_tests {

// As the library has them: the nearest doubles.
constexpr double Pi = 3.141592653589793;
constexpr double TwoPi = 6.283185307179586;

constexpr double Epsilon = std::numeric_limits<double>::epsilon();

// a cos^2(t) + b sin^2(t) + c sin(t) cos(t) + d cos(t) + e sin(t) + f.
struct TTrigEquation
{
    double dA;
    double dB;
    double dC;
    double dD;
    double dE;
    double dF;

    long double At(long double a_dAngle) const
    {
        const long double dCos = std::cos(a_dAngle);
        const long double dSin = std::sin(a_dAngle);
        return dA * dCos * dCos + dB * dSin * dSin + dC * dSin * dCos + dD * dCos + dE * dSin + dF;
    }

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

// What a solver left behind: its result and its room, all of it.
struct TAngles
{
    int iResult;
    std::vector<double> vdRoom;
    bool bGuardsIntact;

    std::vector<double> Found() const
    {
        return std::vector<double>(vdRoom.begin(), vdRoom.begin() + (iResult > 0 ? iResult : 0));
    }
};

// Calls a solver on room for a_iRoom angles between guards.
inline TAngles Solve(std::size_t a_iRoom, const std::function<int(double*)>& a_Solver)
{
    constexpr std::size_t iGuards = 4;
    std::vector<double> vdAll(a_iRoom + 2 * iGuards, Untouched);
    const int iResult = a_Solver(vdAll.data() + iGuards);
    TAngles Angles{iResult, {vdAll.begin() + iGuards, vdAll.end() - iGuards}, true};
    for (std::size_t i = 0; i < iGuards; ++i)
    {
        Angles.bGuardsIntact =
            Angles.bGuardsIntact && SameBits(Untouched, vdAll[i]) && SameBits(Untouched, vdAll[vdAll.size() - 1 - i]);
    }
    return Angles;
}

// The result and the bits of the angles found. Room that is not needed, or everything for a result that is not
// positive, is untouched where a_bRestUntouched says so.
inline void ExpectAngles(int a_iResult, const std::vector<double>& a_vdExpected, const TAngles& a_Angles,
                         bool a_bRestUntouched)
{
    EXPECT_EQ(a_iResult, a_Angles.iResult);
    EXPECT_TRUE(a_Angles.bGuardsIntact);
    ASSERT_LE(a_vdExpected.size(), a_Angles.vdRoom.size());
    for (std::size_t i = 0; i < a_Angles.vdRoom.size(); ++i)
    {
        SCOPED_TRACE(::testing::Message() << "angle " << i);
        if (i < a_vdExpected.size())
        {
            EXPECT_SAME_BITS(a_vdExpected[i], a_Angles.vdRoom[i]);
        }
        else if (a_bRestUntouched)
        {
            EXPECT_SAME_BITS(Untouched, a_Angles.vdRoom[i]);
        }
    }
}

// True for what every solver promises of an angle that is a number.
inline bool InRange(double a_dAngle)
{
    return std::isnan(a_dAngle) || (a_dAngle >= 0.0 && a_dAngle <= TwoPi);
}

// The number of solutions in one turn, or -1 where the scan cannot tell. The function f and its first two derivatives
// are bounded by the coefficients. In an interval of width h from t there is no solution if |f(t)| is more than f can
// change; if |f'(t)| is more than f' can change, f is monotone and has as many solutions as changes of sign. An
// interval that is neither is close to a tangent or a double solution, which rounding decides.
inline int CountSolutions(const TTrigEquation& a_Equation)
{
    constexpr int Steps = 2048;
    const double dWidth = TwoPi / Steps;
    const double dDouble = std::fabs(a_Equation.dB - a_Equation.dA) + std::fabs(a_Equation.dC);
    const double dSingle = std::fabs(a_Equation.dD) + std::fabs(a_Equation.dE);
    const double dMostSlope = dDouble + dSingle;
    const double dMostBend = 2.0 * dDouble + dSingle;
    // 0.1 off the axes, where special solutions lie.
    const auto Value = [&](int i) { return static_cast<double>(a_Equation.At(0.1 + dWidth * i)); };
    int iSolutions = 0;
    double dValue = Value(0);
    for (int i = 0; i < Steps; ++i)
    {
        const double dNext = Value(i + 1);
        if (std::fabs(dValue) <= dMostSlope * dWidth)
        {
            const double dAngle = 0.1 + dWidth * i;
            const double dSlope = (a_Equation.dB - a_Equation.dA) * std::sin(2 * dAngle) +
                                  a_Equation.dC * std::cos(2 * dAngle) - a_Equation.dD * std::sin(dAngle) +
                                  a_Equation.dE * std::cos(dAngle);
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

// Runs a check that writes what is wrong to standard error, in a child: a report of the library would end the process
// with exit code 0, which looks like success.
inline void ExpectQuietCheck(const std::function<void()>& a_Check)
{
    const TChildEnd End = RunInChild(a_Check);
    EXPECT_EQ("", End.szText);
    EXPECT_EQ(CameBack, End.iExitCode);
}

// Calls a_Visit with every combination of TCount of the special values.
template <std::size_t TCount>
void ForAllSpecial(const std::vector<double>& a_vdValues,
                   const std::function<void(const std::array<double, TCount>&)>& a_Visit)
{
    std::array<std::size_t, TCount> viPositions{};
    std::array<double, TCount> vdArguments;
    for (;;)
    {
        for (std::size_t i = 0; i < TCount; ++i)
        {
            vdArguments[i] = a_vdValues[viPositions[i]];
        }
        a_Visit(vdArguments);
        std::size_t i = 0;
        while (i < TCount && ++viPositions[i] == a_vdValues.size())
        {
            viPositions[i] = 0;
            ++i;
        }
        if (i == TCount)
        {
            return;
        }
    }
}

} // namespace nuv_tests

#endif // NUV_TESTS_TRIG_EQUATION_H
