// trig.cpp: SolveLinTrig and SolveQuadTrig beside the C library and finders of polynomial roots.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "finders.h"

#include "nuv1math.h"

namespace bench {

constexpr int EQUATIONS = 64; // of one run
constexpr int ANGLES = 4;     // at most of one equation
constexpr double TOLERANCE = 1e-8;
constexpr double ANGLE_2PI = 6.283185307179586;

namespace {

// The angles of one equation.
struct TAngles
{
    int iCount = 0;
    std::array<double, ANGLES> vdAngles = {};

    void Add(double a_dAngle)
    {
        vdAngles[iCount++] = a_dAngle < 0.0 ? a_dAngle + ANGLE_2PI : a_dAngle; // NOLINT: a finder gives four at most
    }
};

using TAllAngles = std::vector<TAngles>;
template <int K> using TEquations = std::vector<std::array<double, K> >;

} // namespace

// Random coefficients. None of these equations has a nearly tangent solution.
template <int K> static TEquations<K> MakeEquations()
{
    std::mt19937 Generator(K);
    std::uniform_real_distribution<double> Uniform(-1.0, 1.0);
    TEquations<K> vEquations(EQUATIONS);
    for (auto& vdEquation : vEquations)
    {
        std::generate(vdEquation.begin(), vdEquation.end(), [&] { return Uniform(Generator); });
    }
    return vEquations;
}

// The number of angles of each equation and the angles in ascending order.
static TValues Tell(const TAllAngles& a_vAll)
{
    TValues vdAll;
    for (const TAngles& Angles : a_vAll)
    {
        vdAll.push_back(Angles.iCount);
        const auto First = vdAll.insert(vdAll.end(), Angles.vdAngles.begin(), Angles.vdAngles.begin() + Angles.iCount);
        std::sort(First, vdAll.end());
    }
    return vdAll;
}

template <class TEquations, class TSolve>
static void SolveEach(const TEquations& a_vEquations, TSolve a_Solve, TAllAngles& a_vAll)
{
    for (std::size_t i = 0; i < a_vEquations.size(); ++i)
    {
        a_vAll[i].iCount = 0;
        a_Solve(a_vEquations[i], a_vAll[i]);
    }
}

// A run that solves all equations. a_Solve takes one equation and writes its angles.
template <int K, class TSolve> static auto SolveAll(const TEquations<K>& a_vEquations, TSolve a_Solve)
{
    return [=](TAllAngles& a_vAll) { SolveEach(a_vEquations, a_Solve, a_vAll); };
}

static void AddLinear()
{
    TContest Contest("SolveLinTrig", 1, EQUATIONS);
    const auto vEquations = MakeEquations<3>();
    const TAllAngles vNone(EQUATIONS);
    Contest.Ours("SolveLinTrig", vNone,
                 SolveAll<3>(vEquations, [](const auto& e, TAngles& a_Angles)
                             { a_Angles.iCount = nuv::SolveLinTrig(e[0], e[1], e[2], a_Angles.vdAngles.data()); }),
                 Tell);
    Contest.Peer("C library: atan2 and acos", TOLERANCE, vNone,
                 SolveAll<3>(vEquations,
                             [](const auto& e, TAngles& a_Angles)
                             {
                                 const double dCosine = -e[2] / std::hypot(e[0], e[1]);
                                 if (std::fabs(dCosine) <= 1.0)
                                 {
                                     const double dMiddle = std::atan2(e[1], e[0]), dHalf = std::acos(dCosine);
                                     a_Angles.Add(dMiddle - dHalf);
                                     a_Angles.Add(std::remainder(dMiddle + dHalf, ANGLE_2PI));
                                 }
                             }),
                 Tell);
#ifdef NUV_BENCH_GSL
    Contest.Peer("GSL gsl_poly_solve_quadratic and atan", TOLERANCE, vNone,
                 SolveAll<3>(vEquations,
                             [](const auto& e, TAngles& a_Angles)
                             {
                                 double u[2];
                                 const int iRoots =
                                     gsl_poly_solve_quadratic(e[2] - e[0], 2 * e[1], e[0] + e[2], u, u + 1);
                                 for (int i = 0; i < iRoots; ++i)
                                 {
                                     a_Angles.Add(2.0 * std::atan(u[i]));
                                 }
                             }),
                 Tell);
#endif
}

static void AddQuadratic()
{
    TContest Contest("SolveQuadTrig", 1, EQUATIONS);
    const auto vEquations = MakeEquations<6>();
    const TAllAngles vNone(EQUATIONS);
    Contest.Ours("SolveQuadTrig", vNone,
                 SolveAll<6>(vEquations,
                             [](const auto& e, TAngles& a_Angles) {
                                 a_Angles.iCount =
                                     nuv::SolveQuadTrig(e[0], e[1], e[2], e[3], e[4], e[5], a_Angles.vdAngles.data());
                             }),
                 Tell);
    ForEachFinder(4,
                  [&](const std::string& a_szName, auto a_Finder)
                  {
                      using TState = std::pair<decltype(a_Finder), TAllAngles>;
                      Contest.Peer(
                          a_szName + " and atan", TOLERANCE, TState(a_Finder, vNone),
                          [vEquations](TState& a_State)
                          {
                              TValues vdQuartic(5);
                              std::vector<TComplex> vRoots(4);
                              const auto Solve = [&](const auto& e, TAngles& a_Angles)
                              {
                                  const auto& [a, b, c, d, f, g] = e;
                                  vdQuartic = {a + d + g, 2 * (c + f), 4 * b - 2 * a + 2 * g, 2 * (f - c), a + g - d};
                                  a_State.first.Find(vdQuartic, vRoots);
                                  for (const TComplex& Root : vRoots)
                                  {
                                      if (std::fabs(Root.imag()) < REAL)
                                      {
                                          a_Angles.Add(2.0 * std::atan(Root.real()));
                                      }
                                  }
                              };
                              SolveEach(vEquations, Solve, a_State.second);
                          },
                          [](const TState& a_State) { return Tell(a_State.second); });
                  });
}

void RegisterFamily()
{
    NameFinderVersions();
    AddLinear();
    AddQuadratic();
}

} // namespace bench
