// finders.h: functions that find all roots of a polynomial, under one interface.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_BENCH_FINDERS_H
#define NUV_BENCH_FINDERS_H

#include "contest.h"
#include "lapack.h"

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

constexpr double REAL = 1e-6; // a root with a smaller imaginary part counts as real

using TComplex = std::complex<double>;

// The real roots among all roots, ascending.
inline TValues RealRoots(const std::vector<TComplex>& a_vRoots)
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

// A finder takes the coefficients, that of the highest power last, and returns all roots. It keeps its work space.
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
    {}

    void Find(const TValues& a_vdAscending, std::vector<TComplex>& a_vRoots) const
    {
        a_vRoots.resize(a_vdAscending.size() - 1);
        gsl_poly_complex_solve(a_vdAscending.data(), a_vdAscending.size(), pWork.get(),
                               reinterpret_cast<double*>(a_vRoots.data()));
    }
};
#endif

#ifdef NUV_BENCH_VIGRA
constexpr int VIGRA_HIGHEST_DEGREE = 32; // at degree 64 it returns complex roots as real ones

struct TVigraFinder
{
    vigra::ArrayVector<TComplex> vFound;

    void Find(const TValues& a_vdAscending, std::vector<TComplex>& a_vRoots)
    {
        vFound.clear();
        vigra::polynomialRoots(
            vigra::Polynomial<double>(a_vdAscending.data(), static_cast<unsigned int>(a_vdAscending.size() - 1)),
            vFound);
        a_vRoots.assign(vFound.begin(), vFound.end());
    }
};
#endif

// The eigenvalues of the companion matrix, which has Hessenberg form already.
struct TDhseqrFinder
{
    const TLapack* pLapack;
    TValues vdMatrix, vdReal, vdImaginary, vdWork;

    TDhseqrFinder(const TLapack& a_Lapack, std::size_t n)
        : pLapack(&a_Lapack), vdMatrix(n * n), vdReal(n), vdImaginary(n)
    {}

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

// Calls a_Visit(name, finder) for every finder that can find roots of this degree.
template <class TVisit> void ForEachFinder(int a_iDegree, TVisit a_Visit)
{
    a_Visit("Eigen PolynomialSolver", TEigenFinder());
#ifdef NUV_BENCH_GSL
    a_Visit("GSL gsl_poly_complex_solve", TGslFinder(a_iDegree));
#endif
#ifdef NUV_BENCH_VIGRA
    if (a_iDegree <= VIGRA_HIGHEST_DEGREE)
    {
        a_Visit("VIGRA polynomialRoots", TVigraFinder());
    }
#endif
    for (const TLapack& Lapack : Lapacks())
    {
        a_Visit(Lapack.Name() + " dhseqr", TDhseqrFinder(Lapack, a_iDegree));
    }
}

inline void NameFinderVersions()
{
#ifdef NUV_BENCH_GSL
    NameVersion("GSL", gsl_version);
#endif
#ifdef NUV_BENCH_VIGRA
    NameVersion("VIGRA", VIGRA_VERSION);
#endif
}

} // namespace bench

#endif // NUV_BENCH_FINDERS_H
