// roots.cpp: the real roots of polynomials beside what finds all roots.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "finders.h"

#include "nuv1math.h"

#include <iterator>

namespace bench {

constexpr double TOLERANCE = 1e-8;
constexpr int POLYNOMIALS = 8; // of one run

// Random coefficients; of degree 2, those with real roots.
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

static void Append(const TValues& a_vd, TValues& a_vdAll)
{
    a_vdAll.insert(a_vdAll.end(), a_vd.begin(), a_vd.end());
}

static void AddRoots(int a_iDegree)
{
    TContest Contest("Roots, polynomial", a_iDegree, POLYNOMIALS);
    const auto vDescending = MakePolynomials(a_iDegree);
    Contest.Ours(
        "Roots", std::vector<TValues>(POLYNOMIALS),
        [=](std::vector<TValues>& a_vAll)
        {
            for (int i = 0; i < POLYNOMIALS; ++i)
            {
                a_vAll[i].resize(a_iDegree);
                const int iCount = nuv::Roots(a_iDegree, vDescending[i].data(), a_vAll[i].data(), REAL);
                a_vAll[i].resize(iCount);
            }
        },
        [](std::vector<TValues> a_vAll)
        {
            TValues vdAll;
            for (TValues& vdRoots : a_vAll)
            {
                std::sort(vdRoots.begin(), vdRoots.end());
                Append(vdRoots, vdAll);
            }
            return vdAll;
        });
    std::vector<TValues> vAscending;
    std::transform(vDescending.begin(), vDescending.end(), std::back_inserter(vAscending), Reverse);
    ForEachFinder(a_iDegree,
                  [&](const std::string& a_szName, auto a_Finder)
                  {
                      using TState = std::pair<decltype(a_Finder), std::vector<std::vector<TComplex> > >;
                      Contest.Peer(
                          a_szName, TOLERANCE, TState(a_Finder, std::vector<std::vector<TComplex> >(POLYNOMIALS)),
                          [vAscending](TState& a_State)
                          {
                              for (int i = 0; i < POLYNOMIALS; ++i)
                              {
                                  a_State.first.Find(vAscending[i], a_State.second[i]);
                              }
                          },
                          [](const TState& a_State)
                          {
                              TValues vdAll;
                              for (const auto& vRoots : a_State.second)
                              {
                                  Append(RealRoots(vRoots), vdAll);
                              }
                              return vdAll;
                          });
                  });
#ifdef NUV_BENCH_GSL
    if (a_iDegree == 2)
    {
        using TState = std::array<std::array<double, 2>, POLYNOMIALS>;
        Contest.Peer(
            "GSL gsl_poly_solve_quadratic", TOLERANCE, TState(),
            [vDescending](TState& a_vvdRoots)
            {
                for (int i = 0; i < POLYNOMIALS; ++i)
                {
                    const TValues& c = vDescending[i];
                    gsl_poly_solve_quadratic(c[0], c[1], c[2], &a_vvdRoots[i][0], &a_vvdRoots[i][1]);
                }
            },
            [](const TState& a_vvdRoots)
            {
                TValues vdAll;
                for (const auto& vd : a_vvdRoots) // ascending
                {
                    vdAll.insert(vdAll.end(), vd.begin(), vd.end());
                }
                return vdAll;
            });
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
        AddRoots(iDegree);
    }
}

} // namespace bench
