// tangent_angles.cpp: angles at which an expression in cos t and sin t touches 0 without changing its sign.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Such an angle is a double root. SolveQuadTrig can miss it, or find it twice. The angle is also a zero of the
// derivative, where it is a single root.

#include "nuv1math.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

//! [equation]
// a cos^2 t + b sin^2 t + c sin t cos t + d cos t + e sin t + f
struct TEquation
{
    double a, b, c, d, e, f;

    double At(double t) const
    {
        const double x = std::cos(t), y = std::sin(t);
        return a * x * x + b * y * y + c * x * y + d * x + e * y + f;
    }

    TEquation Derivative() const
    {
        return {c, -c, 2.0 * (b - a), e, -d, 0.0};
    }

    std::vector<double> Angles() const
    {
        double vdAngles[4];
        const int iCount = nuv::SolveQuadTrig(a, b, c, d, e, f, vdAngles);
        return {vdAngles, vdAngles + std::max(iCount, 0)};
    }
};
//! [equation]

//! [all]
// All angles, each once: where the expression changes its sign, and where it has an extreme value that is 0.
std::vector<double> AllAngles(const TEquation& a_Equation, double a_dZero)
{
    std::vector<double> vdAll;
    for (double t : a_Equation.Derivative().Angles())
    {
        if (std::fabs(a_Equation.At(t)) < a_dZero)
        {
            vdAll.push_back(t);
        }
    }
    for (double t : a_Equation.Angles())
    {
        const bool bKnown =
            std::any_of(vdAll.begin(), vdAll.end(), [t](double dOther) { return std::fabs(t - dOther) < 1e-6; });
        if (!bKnown)
        {
            vdAll.push_back(t);
        }
    }
    std::sort(vdAll.begin(), vdAll.end());
    return vdAll;
}
//! [all]

void Print(const char* a_szWhat, const std::vector<double>& a_vdAngles)
{
    std::printf("  %s:", a_szWhat);
    for (double t : a_vdAngles)
    {
        std::printf("  %.6f", t);
    }
    std::puts(a_vdAngles.empty() ? "  none" : "");
}

int main()
{
    for (double dCosine : {0.5, 0.6})
    {
        // (cos t - cosine)^2
        const TEquation Equation = {1.0, 0.0, 0.0, -2.0 * dCosine, 0.0, dCosine * dCosine};
        std::printf("(cos t - %.1f)^2 = 0\n", dCosine);
        Print("SolveQuadTrig", Equation.Angles());
        const std::vector<double> vdAll = AllAngles(Equation, 1e-12);
        Print("with the derivative", vdAll);
        if (vdAll.size() != 2 || std::fabs(std::cos(vdAll[0]) - dCosine) > 1e-9)
        {
            return 1;
        }
    }
    return 0;
}
