// roots.cpp: Roots of polynomials beside functions that find all roots.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "finders.h"

#include "nuv1math.h"

#include <iterator>

namespace bench {

constexpr double TOLERANCE = 1e-8;
constexpr int POLYNOMIALS = 8; // of one run

// Random coefficients. Polynomials of degree 2 without real roots are left out.
static std::vector<TValues> MakePolynomials(int a_iDegree)
{
    std::mt19937 Generator(static_cast<unsigned int>(a_iDegree));
    std::uniform_real_distribution<double> Uniform(-1.0, 1.0);
    std::vector<TValues> vPolynomials;
    while (vPolynomials.size() < POLYNOMIALS)
    {
        TValues vdDescending(a_iDegree + 1);
        for (double& d : vdDescending)
        {
            d = Uniform(Generator);
        }
        if (a_iDegree != 2 || vdDescending[1] * vdDescending[1] > 4.0 * vdDescending[0] * vdDescending[2])
        {
            vPolynomials.push_back(vdDescending);
        }
    }
    return vPolynomials;
}

static TValues Reverse(const TValues& a_vd)
{
    return {a_vd.rbegin(), a_vd.rend()};
}

template <class TRoots> static TValues TellAll(const TRoots& a_vRoots)
{
    TValues vdAll;
    for (const auto& vdOne : a_vRoots)
    {
        vdAll.insert(vdAll.end(), vdOne.begin(), vdOne.end());
    }
    return vdAll;
}

static void AddOurs(TContest& a_Contest, int a_iDegree, const std::vector<TValues>& a_vDescending)
{
    a_Contest.Ours(
        "Roots", std::vector<TValues>(POLYNOMIALS),
        [=](std::vector<TValues>& a_vRoots)
        {
            for (int i = 0; i < POLYNOMIALS; ++i)
            {
                a_vRoots[i].resize(a_iDegree);
                const int iCount = nuv::Roots(a_iDegree, a_vDescending[i].data(), a_vRoots[i].data(), REAL);
                a_vRoots[i].resize(iCount);
            }
        },
        [](std::vector<TValues> a_vRoots)
        {
            for (TValues& vdRoots : a_vRoots)
            {
                std::sort(vdRoots.begin(), vdRoots.end());
            }
            return TellAll(a_vRoots);
        });
}

static void AddFinders(TContest& a_Contest, int a_iDegree, const std::vector<TValues>& a_vDescending)
{
    std::vector<TValues> vAscending;
    std::transform(a_vDescending.begin(), a_vDescending.end(), std::back_inserter(vAscending), Reverse);
    const auto Add = [&](const std::string& a_szName, auto a_Finder)
    {
        using TState = std::pair<decltype(a_Finder), std::vector<std::vector<TComplex> > >;
        const auto Run = [vAscending](TState& a_State)
        {
            for (int i = 0; i < POLYNOMIALS; ++i)
            {
                a_State.first.Find(vAscending[i], a_State.second[i]);
            }
        };
        const auto Tell = [](const TState& a_State)
        {
            std::vector<TValues> vRoots;
            std::transform(a_State.second.begin(), a_State.second.end(), std::back_inserter(vRoots), RealRoots);
            return TellAll(vRoots);
        };
        a_Contest.Peer(a_szName, TOLERANCE, TState(a_Finder, std::vector<std::vector<TComplex> >(POLYNOMIALS)), Run,
                       Tell);
    };
    ForEachFinder(a_iDegree, Add);
}

#ifdef NUV_BENCH_GSL
static void AddGslQuadratic(TContest& a_Contest, const std::vector<TValues>& a_vDescending)
{
    using TState = std::array<std::array<double, 2>, POLYNOMIALS>;
    a_Contest.Peer(
        "GSL gsl_poly_solve_quadratic", TOLERANCE, TState(),
        [a_vDescending](TState& a_vvdRoots)
        {
            for (int i = 0; i < POLYNOMIALS; ++i)
            {
                const TValues& c = a_vDescending[i];
                gsl_poly_solve_quadratic(c[0], c[1], c[2], &a_vvdRoots[i][0], &a_vvdRoots[i][1]); // ascending
            }
        },
        TellAll<TState>);
}
#endif

static void AddDegree(int a_iDegree)
{
    TContest Contest("Roots, polynomial", a_iDegree, POLYNOMIALS);
    const auto vDescending = MakePolynomials(a_iDegree);
    AddOurs(Contest, a_iDegree, vDescending);
    AddFinders(Contest, a_iDegree, vDescending);
#ifdef NUV_BENCH_GSL
    if (a_iDegree == 2)
    {
        AddGslQuadratic(Contest, vDescending);
    }
#endif
}

void RegisterFamily()
{
    NameFinderVersions();
#ifdef NUV_BENCH_VIGRA
    NameMissing("VIGRA polynomialRoots above degree " + std::to_string(VIGRA_HIGHEST_DEGREE) + " (wrong roots)");
#endif
    for (const int iDegree : {2, 4, 8, 16, 32, 64})
    {
        AddDegree(iDegree);
    }
}

} // namespace bench
