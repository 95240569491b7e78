// accuracy_roots.cpp: the tables of polynomials and of trigonometric equations.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "accuracy.h"
#include "polynomials.h"

#include "nuv1math.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>

namespace nuv_accuracy {

using nuv_tests::Chebyshev;
using nuv_tests::FromRoots;
using nuv_tests::Wilkinson;

namespace {

// --- Polynomials -----------------------------------------------------------------------------------------------------

using TComplex = std::complex<TDigits>;

// One step of the iteration of Ehrlich and Aberth for all roots. Returns the square of the greatest correction.
TDigits CorrectRoots(const TDoubles& a_vdP, std::vector<TComplex>& a_vRoots)
{
    TDigits Greatest = 0;
    for (TComplex& z : a_vRoots)
    {
        TComplex P, Slope;
        for (double dCoefficient : a_vdP)
        {
            Slope = Slope * z + P;
            P = P * z + TComplex(TDigits(dCoefficient));
        }
        TComplex Others;
        for (const TComplex& Other : a_vRoots)
        {
            Others += &Other == &z || Other == z ? TComplex() : TComplex(TDigits(1)) / (z - Other);
        }
        const TComplex Step = P / (Slope - P * Others);
        z -= Step;
        Greatest = std::max<TDigits>(Greatest, norm(Step));
    }
    return Greatest;
}

// All roots of the polynomial with exactly these coefficients.
std::vector<TComplex> TrueRoots(TDoubles a_vdP)
{
    std::size_t iZeros = 0;
    for (; a_vdP.back() == 0.0; ++iZeros)
    {
        a_vdP.pop_back();
    }
    const std::size_t iDegree = a_vdP.size() - 1;
    const double dRadius = std::pow(std::fabs(a_vdP.back() / a_vdP.front()), 1.0 / static_cast<double>(iDegree));
    std::vector<TComplex> vRoots;
    for (std::size_t i = 0; i < iDegree; ++i)
    {
        const double dAngle = 6.28 * (static_cast<double>(i) + 0.3) / static_cast<double>(iDegree);
        vRoots.emplace_back(dRadius * std::cos(dAngle), dRadius * std::sin(dAngle));
    }
    for (int iStep = 0; iStep < 400 && CorrectRoots(a_vdP, vRoots) >= TDigits("1e-160"); ++iStep)
    {}
    vRoots.resize(iDegree + iZeros);
    return vRoots;
}

std::vector<TDigits> TrueRealRoots(const TDoubles& a_vdP)
{
    std::vector<TDigits> vReal;
    for (const TComplex& z : TrueRoots(a_vdP))
    {
        if (abs(z.imag()) <= TDigits("1e-40") * (1 + abs(z.real())))
        {
            vReal.push_back(z.real());
        }
    }
    return vReal;
}

// The least of the errors beside the true values.
double LeastError(const std::vector<TDigits>& a_vTrue, double a_dFound, bool a_bRelative)
{
    double dLeast = HUGE_VAL;
    for (const TDigits& True : a_vTrue)
    {
        dLeast = std::min(dLeast, ToDouble(abs(True - a_dFound) / (a_bRelative ? abs(True) : TDigits(1))));
    }
    return dLeast;
}

// a_vTrue: the true roots. They are given in advance if a root is multiple and the coefficients are exact.
void PrintPolynomial(const std::string& a_szName, const TDoubles& a_vdP, const std::vector<TDigits>& a_vTrue)
{
    TDoubles vdFound(a_vdP.size());
    const int iFound = nuv::Roots(static_cast<unsigned int>(a_vdP.size() - 1), a_vdP.data(), vdFound.data(), 1e-6);
    double dGreatest = iFound > 0 ? 0.0 : NAN;
    for (int i = 0; i < iFound; ++i)
    {
        dGreatest = std::max(dGreatest, LeastError(a_vTrue, vdFound[static_cast<std::size_t>(i)], true));
    }
    PrintRow({a_szName, std::to_string(a_vTrue.size()), std::to_string(iFound), UpperDigit(dGreatest)});
}

} // namespace

void PrintPolynomials()
{
    StartTable("polynomials", {"polynomial", "real roots", "reported", "greatest relative error"});
    for (int iDegree : {10, 15, 20})
    {
        TDoubles vdGraded;
        for (int i = 1; i <= iDegree; ++i)
        {
            vdGraded.push_back(std::ldexp(1.0, -i));
        }
        const std::string szDegree = std::to_string(iDegree);
        PrintPolynomial("Wilkinson, (x - 1)...(x - " + szDegree + ")", Wilkinson(iDegree),
                        TrueRealRoots(Wilkinson(iDegree)));
        PrintPolynomial("(x - 1/2)(x - 1/4)...(x - 1/2^" + szDegree + ")", FromRoots(vdGraded),
                        TrueRealRoots(FromRoots(vdGraded)));
    }
    for (int iDegree : {10, 20, 30, 40})
    {
        const TDoubles vdP = Chebyshev(iDegree);
        PrintPolynomial("Chebyshev, degree " + std::to_string(iDegree), vdP, TrueRealRoots(vdP));
    }
    for (std::size_t iDegree = 2; iDegree <= 8; ++iDegree)
    {
        PrintPolynomial("(x - 1)^" + std::to_string(iDegree), FromRoots(TDoubles(iDegree, 1.0)),
                        std::vector<TDigits>(iDegree, 1));
    }
    PrintPolynomial("(x - 1)^2 (x + 1)^2", FromRoots({1, 1, -1, -1}), {1, 1, -1, -1});
    PrintPolynomial("(x - 1)^2 (x - 2)^2 (x - 3)^2", FromRoots({1, 1, 2, 2, 3, 3}), {1, 1, 2, 2, 3, 3});
    PrintPolynomial("(x - 1)^3 (x - 2)", FromRoots({1, 1, 1, 2}), {1, 1, 1, 2});
    for (int iPower : {7, 13, 20, 24})
    {
        const TDoubles vdP = FromRoots({1.0, 1.0 + std::ldexp(1.0, -iPower)});
        PrintPolynomial("(x - 1)(x - 1 - 2^-" + std::to_string(iPower) + ")", vdP, TrueRealRoots(vdP));
    }
    for (int iPower : {7, 10, 13})
    {
        const TDoubles vdP = FromRoots({1.0, 1.0 + std::ldexp(1.0, -iPower), 1.0 - std::ldexp(1.0, -iPower), -2.0});
        PrintPolynomial("(x - 1)((x - 1)^2 - 2^-" + std::to_string(2 * iPower) + ")(x + 2)", vdP, TrueRealRoots(vdP));
    }
}

namespace {

// --- Angles ----------------------------------------------------------------------------------------------------------

// Smaller errors depend on the platform's functions, so the tables do not show them.
constexpr double LeastAngleError = 1e-15;

// 2 pi
TDigits Turn()
{
    return 8 * atan(TDigits(1));
}

} // namespace

// Equations a cos t + b sin t = (1 - d) hypot(a, b). Their two angles are close to atan2(b, a) if d is small.
void PrintLinearAngles()
{
    StartTable("linear", {"1 - abs(c)/hypot(a, b), about", "greatest error, radians", "equations with a wrong count"});
    TRandom Random;
    for (double dDistance : {0.5, 1e-2, 1e-4, 1e-6, 1e-8, 1e-10, 1e-12, 1e-14})
    {
        double dGreatest = LeastAngleError;
        int iWrong = 0;
        for (int i = 0; i < 500; ++i)
        {
            const double dA = 1.5 + Random(), dB = 1.5 + Random();
            const double dC = -(1.0 - dDistance) * std::sqrt(dA * dA + dB * dB);
            const TDigits Cosine = -TDigits(dC) / sqrt(TDigits(dA) * dA + TDigits(dB) * dB);
            const TDigits Middle = atan2(TDigits(dB), TDigits(dA)), Half = acos(std::min<TDigits>(Cosine, 1));
            double vdFound[2];
            const int iFound = nuv::SolveLinTrig(dA, dB, dC, vdFound);
            iWrong += iFound != (Cosine < 1 ? 2 : 0) ? 1 : 0;
            for (int k = 0; k < iFound; ++k)
            {
                const double dError =
                    LeastError({Middle + Half, Middle - Half, Middle - Half + Turn()}, vdFound[k], false);
                dGreatest = std::max(dGreatest, dError);
            }
        }
        PrintRow({UpperDigit(dDistance), UpperDigit(dGreatest), std::to_string(iWrong) + " of 500"});
    }
}

namespace {

using TQuadratic = std::array<double, 6>; // the coefficients of SolveQuadTrig

// Random coefficients, or an equation (a cos t + b sin t - m)^2 = 1e-8, whose angles are pairs of close ones.
TQuadratic SomeQuadratic(TRandom& a_Random, bool a_bClose)
{
    TQuadratic c;
    std::generate(c.begin(), c.end(), [&] { return a_Random(); });
    c[5] *= 0.3;
    if (!a_bClose)
    {
        return c;
    }
    const double a = c[0], b = c[1], m = 0.5 * c[2] * std::sqrt(a * a + b * b);
    return {a * a, b * b, 2 * a * b, -2 * a * m, -2 * b * m, m * m - 1e-8};
}

// From the tangents of the half angles, which are the roots of a quartic.
std::vector<TDigits> TrueAngles(const TQuadratic& c)
{
    std::vector<TDigits> vTrue;
    for (const TDigits& u : TrueRealRoots({c[0] + c[5] - c[3], 2 * (c[4] - c[2]), 4 * c[1] - 2 * c[0] + 2 * c[5],
                                           2 * (c[2] + c[4]), c[0] + c[3] + c[5]}))
    {
        const TDigits t = 2 * atan(u);
        vTrue.push_back(t < 0 ? TDigits(t + Turn()) : t);
    }
    return vTrue;
}

} // namespace

void PrintQuadraticAngles()
{
    StartTable("quadratic", {"equations", "median / greatest error, radians", "with a wrong count"});
    TRandom Random;
    for (bool bClose : {false, true})
    {
        TDoubles vdErrors;
        int iWrong = 0;
        for (int i = 0; i < 500; ++i)
        {
            const TQuadratic c = SomeQuadratic(Random, bClose);
            const std::vector<TDigits> vTrue = TrueAngles(c);
            double vdFound[4];
            const int iFound = nuv::SolveQuadTrig(c[0], c[1], c[2], c[3], c[4], c[5], vdFound);
            iWrong += iFound != static_cast<int>(vTrue.size()) ? 1 : 0;
            for (int k = 0; k < iFound && !vTrue.empty(); ++k)
            {
                vdErrors.push_back(std::max(LeastError(vTrue, vdFound[k], false), LeastAngleError));
            }
        }
        PrintRow({bClose ? "pairs of angles some 1e-4 apart" : "random", Spread(vdErrors),
                  std::to_string(iWrong) + " of 500"});
    }
}

} // namespace nuv_accuracy
