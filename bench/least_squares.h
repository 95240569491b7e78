// least_squares.h: general least-squares solvers under one interface.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_BENCH_LEAST_SQUARES_H
#define NUV_BENCH_LEAST_SQUARES_H

#include "contest.h"
#include "lapack.h"

#include <Eigen/Cholesky>
#include <Eigen/QR>
#ifdef NUV_BENCH_GSL
#include <gsl/gsl_multifit.h>
#include <gsl/gsl_version.h>
#endif

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace bench {

// A solver finds the P x K matrix X that minimises |A X - B|. Solve takes a function that writes the elements of A (P
// columns) and of B (K columns), and returns X column by column.
template <int P, int K> using TSolution = std::array<double, P * K>;

template <int P, int K> class TEigenSolver
{
public:
    explicit TEigenSolver(int a_iRows) : m_A(a_iRows, P), m_B(a_iRows, K), m_Qr(a_iRows, P)
    {}

protected:
    Eigen::Matrix<double, Eigen::Dynamic, P> m_A;
    Eigen::Matrix<double, Eigen::Dynamic, K> m_B;
    Eigen::ColPivHouseholderQR<Eigen::Matrix<double, Eigen::Dynamic, P> > m_Qr;

    static TSolution<P, K> Store(const Eigen::Matrix<double, P, K>& a_X)
    {
        TSolution<P, K> vdX;
        Eigen::Map<Eigen::Matrix<double, P, K> >(vdX.data()) = a_X;
        return vdX;
    }
};

template <int P, int K> struct TEigenQr : TEigenSolver<P, K>
{
    using TEigenSolver<P, K>::TEigenSolver;

    template <class TFill> TSolution<P, K> Solve(TFill a_Fill)
    {
        a_Fill(this->m_A, this->m_B);
        this->m_Qr.compute(this->m_A);
        return this->Store(this->m_Qr.solve(this->m_B));
    }
};

template <int P, int K> struct TEigenNormalEquations : TEigenSolver<P, K>
{
    using TEigenSolver<P, K>::TEigenSolver;

    template <class TFill> TSolution<P, K> Solve(TFill a_Fill)
    {
        a_Fill(this->m_A, this->m_B);
        const Eigen::Matrix<double, P, P> N = this->m_A.transpose() * this->m_A;
        const Eigen::Matrix<double, P, K> U = this->m_A.transpose() * this->m_B;
        return this->Store(N.ldlt().solve(U));
    }
};

// Access to the elements of an array by row and column.
struct TElements
{
    double* pFirst;
    std::size_t iRowStep, iColumnStep;

    double& operator()(int i, int j) const
    {
        return pFirst[i * iRowStep + j * iColumnStep];
    }
};

template <int P, int K> class TDgels
{
public:
    TDgels(int a_iRows, const TLapack& a_Lapack)
        : m_Lapack(a_Lapack), m_iRows(a_iRows), m_vdA(m_iRows * P), m_vdB(m_iRows * K)
    {}

    template <class TFill> TSolution<P, K> Solve(TFill a_Fill)
    {
        a_Fill(TElements{m_vdA.data(), 1, m_iRows}, TElements{m_vdB.data(), 1, m_iRows});
        m_Lapack.Gels(static_cast<int>(m_iRows), P, K, m_vdA.data(), m_vdB.data(), m_vdWork);
        TSolution<P, K> vdX;
        for (std::size_t k = 0; k < K; ++k)
        {
            std::copy_n(m_vdB.begin() + static_cast<std::ptrdiff_t>(k * m_iRows), P, vdX.begin() + k * P);
        }
        return vdX;
    }

private:
    const TLapack& m_Lapack;
    std::size_t m_iRows;
    std::vector<double> m_vdA, m_vdB, m_vdWork;
};

#ifdef NUV_BENCH_GSL
template <int P, int K> class TGslMultifit
{
public:
    explicit TGslMultifit(int a_iRows)
        : m_iRows(a_iRows), m_vdA(m_iRows * P), m_vdB(m_iRows * K), m_pWork(gsl_multifit_linear_alloc(m_iRows, P))
    {}

    template <class TFill> TSolution<P, K> Solve(TFill a_Fill)
    {
        a_Fill(TElements{m_vdA.data(), P, 1}, TElements{m_vdB.data(), 1, m_iRows});
        const gsl_matrix_view A = gsl_matrix_view_array(m_vdA.data(), m_iRows, P);
        gsl_matrix_view Covariance = gsl_matrix_view_array(m_vdCovariance.data(), P, P);
        TSolution<P, K> vdX;
        for (std::size_t k = 0; k < K; ++k)
        {
            const gsl_vector_view B = gsl_vector_view_array(m_vdB.data() + k * m_iRows, m_iRows);
            gsl_vector_view X = gsl_vector_view_array(vdX.data() + k * P, P);
            double dSquares = 0.0;
            gsl_multifit_linear(&A.matrix, &B.vector, &X.vector, &Covariance.matrix, &dSquares, m_pWork.get());
        }
        return vdX;
    }

private:
    struct TFree
    {
        void operator()(gsl_multifit_linear_workspace* a_p) const
        {
            gsl_multifit_linear_free(a_p);
        }
    };

    std::size_t m_iRows;
    std::vector<double> m_vdA, m_vdB;
    std::array<double, P * P> m_vdCovariance;
    std::unique_ptr<gsl_multifit_linear_workspace, TFree> m_pWork;
};
#endif

// Calls a_Visit(name, shared pointer to the solver) for every solver.
template <int P, int K, class TVisit> void ForEachSolver(int a_iRows, TVisit a_Visit)
{
    a_Visit("Eigen ColPivHouseholderQR", std::make_shared<TEigenQr<P, K> >(a_iRows));
    a_Visit("Eigen LDLT of normal equations", std::make_shared<TEigenNormalEquations<P, K> >(a_iRows));
#ifdef NUV_BENCH_GSL
    a_Visit("GSL gsl_multifit_linear", std::make_shared<TGslMultifit<P, K> >(a_iRows));
#endif
    for (const TLapack& Lapack : Lapacks())
    {
        a_Visit(Lapack.Name() + " dgels", std::make_shared<TDgels<P, K> >(a_iRows, Lapack));
    }
}

} // namespace bench

#endif // NUV_BENCH_LEAST_SQUARES_H
