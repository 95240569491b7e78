// missing_roots.cpp: how to find out that real roots are missing, and how to get them.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

using TPolynomial = std::vector<double>; // the coefficient of the highest power first, and it is not 0

//! [roots]
std::vector<double> RealRoots(const TPolynomial& a_P, double a_dTolerance)
{
    const unsigned int iDegree = static_cast<unsigned int>(a_P.size() - 1);
    std::vector<double> vdRoots(iDegree + 1);
    const int iCount = nuv::Roots(iDegree, a_P.data(), vdRoots.data(), a_dTolerance);
    vdRoots.resize(static_cast<std::size_t>(std::max(iCount, 0)));
    std::sort(vdRoots.begin(), vdRoots.end());
    return vdRoots;
}
//! [roots]

//! [missing]
// With an infinite tolerance every eigenvalue counts, if the iteration found it.
bool FoundAll(const TPolynomial& a_P)
{
    return RealRoots(a_P, std::numeric_limits<double>::infinity()).size() == a_P.size() - 1;
}
//! [missing]

//! [gcd]
// Divides by a polynomial of lower or equal degree. A coefficient of the remainder below 1e-9 counts as 0.
TPolynomial Divide(TPolynomial a_P, const TPolynomial& a_By, TPolynomial& a_Remainder)
{
    const std::size_t iSteps = a_P.size() - a_By.size() + 1;
    for (std::size_t i = 0; i < iSteps; ++i)
    {
        a_P[i] /= a_By[0];
        for (std::size_t k = 1; k < a_By.size(); ++k)
        {
            a_P[i + k] -= a_P[i] * a_By[k];
        }
    }
    a_Remainder.assign(a_P.begin() + static_cast<std::ptrdiff_t>(iSteps), a_P.end());
    while (!a_Remainder.empty() && std::fabs(a_Remainder[0]) < 1e-9)
    {
        a_Remainder.erase(a_Remainder.begin());
    }
    a_P.resize(iSteps);
    return a_P;
}

// p divided by the greatest common divisor of p and p': each root once. The coefficients must be exact.
TPolynomial EachRootOnce(const TPolynomial& a_P)
{
    const std::size_t iDegree = a_P.size() - 1;
    TPolynomial Divisor = a_P, Next(iDegree), Rest;
    for (std::size_t i = 0; i < iDegree; ++i)
    {
        Next[i] = a_P[i] * static_cast<double>(iDegree - i);
    }
    while (!Next.empty())
    {
        Divide(Divisor, Next, Rest);
        Divisor = Next;
        Next = Rest;
    }
    return Divide(a_P, Divisor, Rest);
}
//! [gcd]

//! [shift]
// The polynomial in y for x = y + s.
TPolynomial Shift(TPolynomial a_P, double s)
{
    for (std::size_t iEnd = a_P.size(); iEnd > 1; --iEnd)
    {
        for (std::size_t i = 1; i < iEnd; ++i)
        {
            a_P[i] += s * a_P[i - 1];
        }
    }
    return a_P;
}
//! [shift]

//! [scale]
// The polynomial in y for x = s y.
TPolynomial Scale(TPolynomial a_P, double s)
{
    double dPower = 1.0;
    for (std::size_t i = a_P.size(); i-- > 0; dPower *= s)
    {
        a_P[i] *= dPower;
    }
    return a_P;
}
//! [scale]

void Print(const char* a_szWhat, const std::vector<double>& a_vdRoots, double s, double a_dFactor)
{
    std::printf("%s %d", a_szWhat, static_cast<int>(a_vdRoots.size()));
    for (double dRoot : a_vdRoots)
    {
        std::printf("  %.5f", dRoot * a_dFactor + s);
    }
    std::puts("");
}

int main()
{
    const TPolynomial Even = {1.0, 0.0, -2.0, 0.0, 1.0}; // x^4 - 2 x^2 + 1 = (x - 1)^2 (x + 1)^2
    Print("x^4 - 2x^2 + 1:", RealRoots(Even, 1e-6), 0.0, 1.0);
    std::printf("all eigenvalues found: %s\n", FoundAll(Even) ? "yes" : "no");
    Print("each root once:", RealRoots(EachRootOnce(Even), 1e-6), 0.0, 1.0);
    Print("shifted by 0.3, tolerance 1e-4:", RealRoots(Shift(Even, 0.3), 1e-4), 0.3, 1.0);

    const TPolynomial Triple = {1.0, -3.0, 3.0, -1.0}; // (x - 1)^3
    Print("(x - 1)^3, tolerance 1e-6:", RealRoots(Triple, 1e-6), 0.0, 1.0);
    Print("(x - 1)^3, tolerance 1e-4:", RealRoots(Triple, 1e-4), 0.0, 1.0);

    TPolynomial Large(61, 0.0); // x^60 - 2^60
    Large[0] = 1.0;
    Large[60] = -std::ldexp(1.0, 60);
    Print("x^60 - 2^60:", RealRoots(Large, 1e-6), 0.0, 1.0);
    Print("the same for x = 2y:", RealRoots(Scale(Large, 2.0), 1e-6), 0.0, 2.0);
    return 0;
}
