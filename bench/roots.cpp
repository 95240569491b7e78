// roots.cpp: the real roots of polynomials beside what finds all roots.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "contest.h"
#include "lapack.h"

#include "nuv1math.h"

#include <Eigen/Dense>
#include <unsupported/Eigen/Polynomials>
#ifdef NUV_BENCH_GSL
#include <gsl/gsl_poly.h>
#include <gsl/gsl_version.h>
#endif
#ifdef NUV_BENCH_VIGRA
#include <vigra/config.hxx>
#include <vigra/polynomial.hxx>
#endif

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <memory>
#include <random>

namespace bench {

constexpr double REAL = 1e-6; // imaginary parts below it count as real
constexpr double TOLERANCE = 1e-8;

using TComplex = std::complex<double>;

// The real ones among all roots, ascending.
static TValues RealRoots(const std::vector<TComplex>& a_vRoots)
{
    TValues vdReal;
    for (const TComplex& Root : a_vRoots)
    {
        if (std::fabs(Root.imag()) < REAL)
        {
            vdReal.push_back(Root.real());
        }
    }
    std::sort(vdReal.begin(), vdReal.end());
    return vdReal;
}

// Finders of all roots of a polynomial, the coefficient of the highest power last. Each keeps what it works with.
namespace {

struct TEigenFinder
{
    Eigen::PolynomialSolver<double, Eigen::Dynamic> Solver;

    void Find(const TValues& a_vdAscending, std::vector<TComplex>& a_vRoots)
    {
        Solver.compute(Eigen::Map<const Eigen::VectorXd>(a_vdAscending.data(), Eigen::Index(a_vdAscending.size())));
        a_vRoots.assign(Solver.roots().begin(), Solver.roots().end());
    }
};

#ifdef NUV_BENCH_GSL
struct TGslFinder
{
    std::shared_ptr<gsl_poly_complex_workspace> pWork;

    explicit TGslFinder(std::size_t a_iDegree)
        : pWork(gsl_poly_complex_workspace_alloc(a_iDegree + 1), gsl_poly_complex_workspace_free)
    {
    }

    void Find(const TValues& a_vdAscending, std::vector<TComplex>& a_vRoots) const
    {
        a_vRoots.resize(a_vdAscending.size() - 1);
        gsl_poly_complex_solve(a_vdAscending.data(), a_vdAscending.size(), pWork.get(),
                               reinterpret_cast<double*>(a_vRoots.data()));
    }
};
#endif

#ifdef NUV_BENCH_VIGRA
struct TVigraFinder
{
    vigra::ArrayVector<TComplex> vFound;

    void Find(const TValues& a_vdAscending, std::vector<TComplex>& a_vRoots)
    {
        vFound.clear();
        vigra::polynomialRoots(
            vigra::Polynomial<double>(a_vdAscending.data(), static_cast<unsigned int>(a_vdAscending.size() - 1)), vFound);
        a_vRoots.assign(vFound.begin(), vFound.end());
    }
};
#endif

// The eigenvalues of the companion matrix, which needs no reduction to Hessenberg form.
struct TDhseqrFinder
{
    const TLapack* pLapack;
    TValues vdMatrix, vdReal, vdImaginary, vdWork;

    TDhseqrFinder(const TLapack& a_Lapack, std::size_t n)
        : pLapack(&a_Lapack), vdMatrix(n * n), vdReal(n), vdImaginary(n)
    {
    }

    void Find(const TValues& a_vdAscending, std::vector<TComplex>& a_vRoots)
    {
        const std::size_t n = a_vdAscending.size() - 1;
        std::fill(vdMatrix.begin(), vdMatrix.end(), 0.0);
        for (std::size_t j = 0; j < n; ++j)
        {
            vdMatrix[j * n] = -a_vdAscending[n - 1 - j] / a_vdAscending[n];
            if (j + 1 < n)
            {
                vdMatrix[j * n + j + 1] = 1.0;
            }
        }
        pLapack->Hseqr(static_cast<int>(n), vdMatrix.data(), vdReal.data(), vdImaginary.data(), vdWork);
        a_vRoots.resize(n);
        for (std::size_t i = 0; i < n; ++i)
        {
            a_vRoots[i] = {vdReal[i], vdImaginary[i]};
        }
    }
};

} // namespace

// Calls a_Visit(name, finder) for every finder of roots of a degree.
template <class TVisit> static void ForEachFinder(int a_iDegree, TVisit a_Visit)
{
    a_Visit("Eigen PolynomialSolver", TEigenFinder());
#ifdef NUV_BENCH_GSL
    a_Visit("GSL gsl_poly_complex_solve", TGslFinder(a_iDegree));
#endif
#ifdef NUV_BENCH_VIGRA
    a_Visit("VIGRA polynomialRoots", TVigraFinder());
#endif
    for (const TLapack& Lapack : Lapacks())
    {
        a_Visit(Lapack.Name() + " dhseqr", TDhseqrFinder(Lapack, a_iDegree));
    }
}

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
        [=](std::vector<TValues>& a_vAll) {
            for (int i = 0; i < POLYNOMIALS; ++i)
            {
                a_vAll[i].resize(a_iDegree);
                const int iCount = nuv::Roots(a_iDegree, vDescending[i].data(), a_vAll[i].data(), REAL);
                a_vAll[i].resize(iCount);
            }
        },
        [](std::vector<TValues> a_vAll) {
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
    ForEachFinder(a_iDegree, [&](const std::string& a_szName, auto a_Finder) {
        using TState = std::pair<decltype(a_Finder), std::vector<std::vector<TComplex>>>;
        Contest.Peer(
            a_szName, TOLERANCE, TState(a_Finder, std::vector<std::vector<TComplex>>(POLYNOMIALS)),
            [vAscending](TState& a_State) {
                for (int i = 0; i < POLYNOMIALS; ++i)
                {
                    a_State.first.Find(vAscending[i], a_State.second[i]);
                }
            },
            [](const TState& a_State) {
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
            [vDescending](TState& a_vvdRoots) {
                for (int i = 0; i < POLYNOMIALS; ++i)
                {
                    const TValues& c = vDescending[i];
                    gsl_poly_solve_quadratic(c[0], c[1], c[2], &a_vvdRoots[i][0], &a_vvdRoots[i][1]);
                }
            },
            [](const TState& a_vvdRoots) {
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
#ifdef NUV_BENCH_GSL
    NameVersion("GSL", gsl_version);
#endif
#ifdef NUV_BENCH_VIGRA
    NameVersion("VIGRA", VIGRA_VERSION);
#endif
    for (const int iDegree : {2, 4, 8, 16, 32, 64})
    {
        AddRoots(iDegree);
    }
}

} // namespace bench
