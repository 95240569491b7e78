// cholesky.cpp: factorisation, solution and both, dense and packed, and the update of normal equations.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "contest.h"
#include "lapack.h"

#include "nuv1math.h"

#include <Eigen/Cholesky>
#ifdef NUV_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/core/hal/hal.hpp>
#endif
#ifdef NUV_BENCH_GSL
#include <gsl/gsl_blas.h>
#include <gsl/gsl_linalg.h>
#include <gsl/gsl_version.h>
#endif

#include <algorithm>
#include <memory>
#include <random>

namespace bench {

constexpr double TOLERANCE = 1e-11;
constexpr double OBSERVED = 0.7; // the value of an observation

namespace {

// A positive definite system: the full symmetric matrix, its lower triangle packed row by row, and a right-hand side.
// The full matrix is the same by rows and by columns. The lower triangle packed by rows is what LAPACK calls the upper
// triangle packed by columns.
struct TSystem
{
    int n;
    TValues vdFull, vdPacked, vdRhs;

    explicit TSystem(int a_iN) : n(a_iN), vdFull(std::size_t(n) * n)
    {
        std::mt19937 Generator(static_cast<unsigned int>(n));
        std::uniform_real_distribution<double> Uniform(-1.0, 1.0);
        for (int i = 0; i < n; ++i)
        {
            for (int j = 0; j <= i; ++j)
            {
                const double d = i == j ? n : Uniform(Generator);
                vdFull[std::size_t(i) * n + j] = vdFull[std::size_t(j) * n + i] = d;
                vdPacked.push_back(d);
            }
            vdRhs.push_back(Uniform(Generator));
        }
    }
};

using TSystemPointer = std::shared_ptr<const TSystem>;

// A factorisation or solution works on a copy of the input. Every run of every contestant copies it anew.
using TWork = TValues;

} // namespace

// Takes the lower triangle row by row out of a full array with these steps between rows and between columns.
static auto TellTriangle(int n, std::size_t a_iRowStep, std::size_t a_iColumnStep)
{
    return [=](const TWork& a_vd)
    {
        TValues vdTriangle;
        for (int i = 0; i < n; ++i)
        {
            for (int j = 0; j <= i; ++j)
            {
                vdTriangle.push_back(a_vd[i * a_iRowStep + j * a_iColumnStep]);
            }
        }
        return vdTriangle;
    };
}

// A run that copies the source and works on the copy.
template <class TFunction> static auto OnCopy(std::shared_ptr<const TValues> a_pSource, TFunction a_Function)
{
    return [=](TWork& a_vdWork)
    {
        std::copy(a_pSource->begin(), a_pSource->end(), a_vdWork.begin());
        a_Function(a_vdWork.data());
    };
}

// A pointer to an array of the system that keeps the system alive.
static std::shared_ptr<const TValues> Share(const TSystemPointer& a_pSystem, const TValues& a_vdValues)
{
    return std::shared_ptr<const TValues>(a_pSystem, &a_vdValues);
}

constexpr auto Same = [](const TWork& a_vd) { return a_vd; };

// The operations of the factorisation, and of the two substitutions together.
static TOperations FactorOperations(double n)
{
    const double dProducts = (n - 1) * n * (n + 1) / 6;
    return {dProducts, dProducts + n * (n - 1) / 2, n - 1, n};
}

static TOperations SolveOperations(double n)
{
    return {n * (n - 1), n * (n - 1), 2 * n, 0};
}

// Dependent subtractions of the factorisation: each radicand subtracts its squares one after the other, and the first
// to be subtracted is the newest.
static double FactorChain(double n)
{
    return n * (n - 1) / 2;
}

// Peers that know the number of unknowns when they are compiled: the factorisation, and the whole solution.
template <int N> struct TKnownFactor
{
    static void Add(TContest& a_Contest, const TSystemPointer& a_pSystem)
    {
        using TMatrix = Eigen::Matrix<double, N, N>;
        a_Contest.Peer(
            "Eigen LLT of a fixed size", TOLERANCE, TMatrix(TMatrix::Zero()),
            [a_pSystem](TMatrix& L)
            {
                L = Eigen::Map<const TMatrix>(a_pSystem->vdFull.data());
                Eigen::LLT<Eigen::Ref<TMatrix> > Llt(L);
            },
            [](const TMatrix& L) { return TellTriangle(N, 1, N)(TWork(L.data(), L.data() + N * N)); });
    }
};

template <int N> struct TKnownSystem
{
    static void Add(TContest& a_Contest, const TSystemPointer& a_pSystem)
    {
        using TVector = Eigen::Matrix<double, N, 1>;
        a_Contest.Peer(
            "Eigen LLT of a fixed size", TOLERANCE, TVector(TVector::Zero()),
            [a_pSystem](TVector& x)
            {
                const Eigen::LLT<Eigen::Matrix<double, N, N> > Llt(
                    Eigen::Map<const Eigen::Matrix<double, N, N> >(a_pSystem->vdFull.data()));
                x = Llt.solve(Eigen::Map<const TVector>(a_pSystem->vdRhs.data()));
            },
            [](const TVector& x) { return TValues(x.data(), x.data() + N); });
    }
};

template <template <int> class TPeer> static void AddKnown(TContest& a_Contest, const TSystemPointer& a_pSystem)
{
    if (a_pSystem->n == 3)
    {
        TPeer<3>::Add(a_Contest, a_pSystem);
    }
    if (a_pSystem->n == 8)
    {
        TPeer<8>::Add(a_Contest, a_pSystem);
    }
}

static void AddDenseFactor(const TSystemPointer& a_pSystem)
{
    const int n = a_pSystem->n;
    const std::size_t iStep = n;
    const auto pMatrix = Share(a_pSystem, a_pSystem->vdFull);
    const auto TellRows = TellTriangle(n, iStep, 1), TellColumns = TellTriangle(n, 1, iStep);
    const TWork vdWork(pMatrix->size());

    TContest Factor("Cholesky", n);
    Factor.Ours("Cholesky", vdWork, OnCopy(pMatrix, [n](double* a_vd) { nuv::Cholesky(n, a_vd); }), TellRows);
    Factor.Peer("Eigen LLT", TOLERANCE, vdWork,
                OnCopy(pMatrix,
                       [n](double* a_vd)
                       {
                           Eigen::Map<Eigen::MatrixXd> L(a_vd, n, n);
                           Eigen::LLT<Eigen::Ref<Eigen::MatrixXd> > Llt(L);
                       }),
                TellColumns);
    AddKnown<TKnownFactor>(Factor, a_pSystem);
#ifdef NUV_BENCH_GSL
    Factor.Peer("GSL gsl_linalg_cholesky_decomp1", TOLERANCE, vdWork,
                OnCopy(pMatrix,
                       [iStep](double* a_vd)
                       {
                           gsl_matrix_view View = gsl_matrix_view_array(a_vd, iStep, iStep);
                           gsl_linalg_cholesky_decomp1(&View.matrix);
                       }),
                TellRows);
#endif
    for (const TLapack& Lapack : Lapacks())
    {
        Factor.Peer(Lapack.Name() + " dpotrf", TOLERANCE, vdWork,
                    OnCopy(pMatrix, [n, &Lapack](double* a_vd) { Lapack.Potrf('L', n, a_vd); }), TellColumns);
    }
    Factor.Floors(a_pSystem->vdPacked.size(), FactorOperations(n), FactorChain(n));
}

static void AddDenseSolve(const TSystemPointer& a_pSystem)
{
    const int n = a_pSystem->n;
    const std::size_t iStep = n;
    // L stands in the lower triangle by rows and by columns, so that every contestant finds it.
    TSystem Factored = *a_pSystem;
    nuv::Cholesky(n, Factored.vdFull.data());
    Eigen::Map<Eigen::MatrixXd> Both(Factored.vdFull.data(), n, n);
    Both.triangularView<Eigen::StrictlyLower>() = Both.transpose();
    const auto pFactored = std::make_shared<const TSystem>(Factored);
    const double* const vdFactor = pFactored->vdFull.data(); // the runs share pFactored by their right-hand side
    const auto pRhs = Share(pFactored, pFactored->vdRhs);
    const TWork vdVector(pRhs->size());

    TContest Solve("SolveChol", n);
    Solve.Ours("SolveChol", vdVector, OnCopy(pRhs, [=](double* a_vd) { nuv::SolveChol(n, vdFactor, a_vd); }), Same);
    Solve.Peer("Eigen LLT::solveInPlace", TOLERANCE, vdVector,
               OnCopy(pRhs,
                      [=](double* a_vd)
                      {
                          const Eigen::Map<const Eigen::MatrixXd> L(vdFactor, n, n);
                          Eigen::Map<Eigen::VectorXd> x(a_vd, n); // what LLT::solveInPlace does with its factor
                          L.triangularView<Eigen::Lower>().solveInPlace(x);
                          L.triangularView<Eigen::Lower>().adjoint().solveInPlace(x);
                      }),
               Same);
#ifdef NUV_BENCH_GSL
    Solve.Peer("GSL gsl_linalg_cholesky_svx", TOLERANCE, vdVector,
               OnCopy(pRhs,
                      [=](double* a_vd)
                      {
                          const gsl_matrix_const_view L = gsl_matrix_const_view_array(vdFactor, iStep, iStep);
                          gsl_vector_view x = gsl_vector_view_array(a_vd, iStep);
                          gsl_linalg_cholesky_svx(&L.matrix, &x.vector);
                      }),
               Same);
#endif
    for (const TLapack& Lapack : Lapacks())
    {
        Solve.Peer(Lapack.Name() + " dpotrs", TOLERANCE, vdVector,
                   OnCopy(pRhs, [=, &Lapack](double* a_vd) { Lapack.Potrs('L', n, vdFactor, a_vd); }), Same);
    }
    // The backward substitution begins with the newest unknown, the forward one ends with it.
    Solve.Floors(a_pSystem->vdPacked.size(), SolveOperations(n), n + FactorChain(n));
}

// Peers of AddDenseSystem. a_AddPeer takes a name, and a function that overwrites a matrix by its factor and a right-hand
// side by the solution.
template <class TAddPeer> static void AddOpenCvSystem([[maybe_unused]] int n, [[maybe_unused]] TAddPeer a_AddPeer)
{
#ifdef NUV_BENCH_OPENCV
    a_AddPeer("OpenCV hal::Cholesky64f", [n](double* a_vdMatrix, double* a_vdVector)
              { cv::hal::Cholesky64f(a_vdMatrix, n * sizeof(double), n, a_vdVector, sizeof(double), 1); });
    a_AddPeer("OpenCV solve",
              [n](double* a_vdMatrix, double* a_vdVector)
              {
                  cv::Mat x(n, 1, CV_64F, a_vdVector);
                  cv::solve(cv::Mat(n, n, CV_64F, a_vdMatrix), x, x, cv::DECOMP_CHOLESKY);
              });
#endif
}

template <class TAddPeer> static void AddGslSystem([[maybe_unused]] int n, [[maybe_unused]] TAddPeer a_AddPeer)
{
#ifdef NUV_BENCH_GSL
    a_AddPeer("GSL gsl_linalg_cholesky_decomp1, svx",
              [iStep = std::size_t(n)](double* a_vdMatrix, double* a_vdVector)
              {
                  gsl_matrix_view L = gsl_matrix_view_array(a_vdMatrix, iStep, iStep);
                  gsl_vector_view x = gsl_vector_view_array(a_vdVector, iStep);
                  gsl_linalg_cholesky_decomp1(&L.matrix);
                  gsl_linalg_cholesky_svx(&L.matrix, &x.vector);
              });
#endif
}

static void AddDenseSystem(const TSystemPointer& a_pSystem)
{
    const int n = a_pSystem->n;
    const std::size_t iStep = n;
    // A system as one array: the matrix, then the right-hand side. Both are overwritten.
    TValues vdSystem = a_pSystem->vdFull;
    vdSystem.insert(vdSystem.end(), a_pSystem->vdRhs.begin(), a_pSystem->vdRhs.end());
    const auto pSource = std::make_shared<const TValues>(vdSystem);
    const TWork vdWork(pSource->size());
    const auto On = [=](auto a_Function)
    { return OnCopy(pSource, [=](double* a_vd) { a_Function(a_vd, a_vd + iStep * iStep); }); };
    const auto TellSolution = [=](const TWork& a_vd) { return TValues(a_vd.end() - n, a_vd.end()); };

    TContest Both("Cholesky and SolveChol", n);
    const auto Peer = [&](const std::string& a_szName, auto a_Function)
    { Both.Peer(a_szName, TOLERANCE, vdWork, On(a_Function), TellSolution); };
    const auto Ours = [n](double* a_vdMatrix, double* a_vdVector)
    {
        nuv::Cholesky(n, a_vdMatrix);
        nuv::SolveChol(n, a_vdMatrix, a_vdVector);
    };
    Both.Ours("Cholesky and SolveChol", vdWork, On(Ours), TellSolution);
    Peer("Eigen LLT",
         [n](double* a_vdMatrix, double* a_vdVector)
         {
             Eigen::Map<Eigen::MatrixXd> L(a_vdMatrix, n, n);
             Eigen::Map<Eigen::VectorXd> x(a_vdVector, n);
             Eigen::LLT<Eigen::Ref<Eigen::MatrixXd> >(L).solveInPlace(x);
         });
    AddKnown<TKnownSystem>(Both, a_pSystem);
    AddOpenCvSystem(n, Peer);
    AddGslSystem(n, Peer);
    for (const TLapack& Lapack : Lapacks())
    {
        Peer(Lapack.Name() + " dpotrf, dpotrs",
             [n, &Lapack](double* a_vdMatrix, double* a_vdVector)
             {
                 Lapack.Potrf('L', n, a_vdMatrix);
                 Lapack.Potrs('L', n, a_vdMatrix, a_vdVector);
             });
    }
}

// The rectangular full packed form (LAPACK) of a lower triangle that is packed row by row.
static TValues ToRectangular(const TLapack& a_Lapack, int n, const TValues& a_vdPacked)
{
    TValues vdRectangular(a_vdPacked.size());
    a_Lapack.Tpttf('N', 'U', n, a_vdPacked.data(), vdRectangular.data());
    return vdRectangular;
}

static void AddPacked(const TSystemPointer& a_pSystem)
{
    const int n = a_pSystem->n;
    const auto pMatrix = Share(a_pSystem, a_pSystem->vdPacked);
    const TWork vdWork(pMatrix->size());
    TContest Factor("CholeskyLowTri", n);
    Factor.Ours("CholeskyLowTri", vdWork, OnCopy(pMatrix, [n](double* a_vd) { nuv::CholeskyLowTri(n, a_vd); }), Same);
    TSystem Factored = *a_pSystem;
    nuv::CholeskyLowTri(n, Factored.vdPacked.data());
    const auto pFactored = std::make_shared<const TSystem>(Factored);
    const double* const vdFactor = pFactored->vdPacked.data();
    const auto pRhs = Share(pFactored, pFactored->vdRhs);
    const TWork vdVector(pRhs->size());
    TContest Solve("SolveCholLowTri", n);
    Solve.Ours("SolveCholLowTri", vdVector,
               OnCopy(pRhs, [=](double* a_vd) { nuv::SolveCholLowTri(n, vdFactor, a_vd); }), Same);
    for (const TLapack& Lapack : Lapacks())
    {
        Factor.Peer(Lapack.Name() + " dpptrf", TOLERANCE, vdWork,
                    OnCopy(pMatrix, [n, &Lapack](double* a_vd) { Lapack.Pptrf('U', n, a_vd); }), Same);
        Solve.Peer(Lapack.Name() + " dpptrs", TOLERANCE, vdVector,
                   OnCopy(pRhs, [=, &Lapack](double* a_vd) { Lapack.Pptrs('U', n, vdFactor, a_vd); }), Same);

        const auto pRectangular = std::make_shared<const TValues>(ToRectangular(Lapack, n, a_pSystem->vdPacked));
        Factor.Peer(Lapack.Name() + " dpftrf", TOLERANCE, vdWork,
                    OnCopy(pRectangular, [n, &Lapack](double* a_vd) { Lapack.Pftrf('N', 'U', n, a_vd); }),
                    [n, &Lapack](const TWork& a_vd)
                    {
                        TValues vdPacked(a_vd.size());
                        Lapack.Tfttp('N', 'U', n, a_vd.data(), vdPacked.data());
                        return vdPacked;
                    });
        const auto pFactor = std::make_shared<const TValues>(ToRectangular(Lapack, n, pFactored->vdPacked));
        Solve.Peer(Lapack.Name() + " dpftrs", TOLERANCE, vdVector,
                   OnCopy(pRhs, [=, &Lapack](double* a_vd) { Lapack.Pftrs('N', 'U', n, pFactor->data(), a_vd); }),
                   Same);
    }
    Factor.Floors(vdWork.size(), FactorOperations(n), FactorChain(n));
    Solve.Floors(vdWork.size(), SolveOperations(n), 2.0 * n); // both substitutions end with the newest unknown
}

namespace {

// Normal equations to which every run adds the same observation. The first run, which adds to zeros, is compared.
struct TNormalEquations
{
    TValues vdMatrix, vdVector;
};

} // namespace

static TValues TellPacked(const TNormalEquations& a_Equations)
{
    TValues vdAll = a_Equations.vdMatrix;
    vdAll.insert(vdAll.end(), a_Equations.vdVector.begin(), a_Equations.vdVector.end());
    return vdAll;
}

static auto TellFull(int n, std::size_t a_iRowStep, std::size_t a_iColumnStep)
{
    return [=](const TNormalEquations& a_Equations) {
        return TellPacked({TellTriangle(n, a_iRowStep, a_iColumnStep)(a_Equations.vdMatrix), a_Equations.vdVector});
    };
}

// The peers that keep a full matrix.
static void AddFullUpdates(TContest& a_Contest, const TSystemPointer& a_pSystem)
{
    const int n = a_pSystem->n;
    const std::size_t iStep = n;
    const TNormalEquations Full{TValues(iStep * iStep), TValues(iStep)};
    a_Contest.Peer(
        "Eigen rankUpdate", TOLERANCE, Full,
        [=](TNormalEquations& a_Equations)
        {
            const Eigen::Map<const Eigen::VectorXd> Row(a_pSystem->vdRhs.data(), n);
            Eigen::Map<Eigen::MatrixXd>(a_Equations.vdMatrix.data(), n, n)
                .selfadjointView<Eigen::Lower>()
                .rankUpdate(Row);
            Eigen::Map<Eigen::VectorXd>(a_Equations.vdVector.data(), n) += OBSERVED * Row;
        },
        TellFull(n, 1, iStep));
#ifdef NUV_BENCH_GSL
    a_Contest.Peer(
        "GSL gsl_blas_dsyr, gsl_blas_daxpy", TOLERANCE, Full,
        [=](TNormalEquations& a_Equations)
        {
            const gsl_vector_const_view Row = gsl_vector_const_view_array(a_pSystem->vdRhs.data(), iStep);
            gsl_matrix_view Matrix = gsl_matrix_view_array(a_Equations.vdMatrix.data(), iStep, iStep);
            gsl_vector_view Vector = gsl_vector_view_array(a_Equations.vdVector.data(), iStep);
            gsl_blas_dsyr(CblasLower, 1.0, &Row.vector, &Matrix.matrix);
            gsl_blas_daxpy(OBSERVED, &Row.vector, &Vector.vector);
        },
        TellFull(n, iStep, 1));
#endif
}

static void AddUpdate(int n)
{
    const auto pSystem = std::make_shared<const TSystem>(n);
    const TNormalEquations Packed{TValues(pSystem->vdPacked.size()), TValues(n)};
    TContest Contest("UpdateNormMatrixLowTri", n);
    Contest.Ours(
        "UpdateNormMatrixLowTri", Packed,
        [=](TNormalEquations& a_Equations)
        {
            nuv::UpdateNormMatrixLowTri(n, a_Equations.vdMatrix.data(), a_Equations.vdVector.data(),
                                        pSystem->vdRhs.data(), OBSERVED);
        },
        TellPacked);
    AddFullUpdates(Contest, pSystem);
    for (const TLapack& Lapack : Lapacks())
    {
        Contest.Peer(
            Lapack.Name() + " dspr, daxpy", TOLERANCE, Packed,
            [=, &Lapack](TNormalEquations& a_Equations)
            {
                Lapack.Spr('U', n, 1.0, pSystem->vdRhs.data(), a_Equations.vdMatrix.data());
                Lapack.Axpy(n, OBSERVED, pSystem->vdRhs.data(), a_Equations.vdVector.data());
            },
            TellPacked);
    }
    const double dProducts = double(Packed.vdMatrix.size()) + n;
    Contest.Floors(Packed.vdMatrix.size() + 2 * Packed.vdVector.size(), {dProducts, dProducts, 0, 0}, 1);
}

void RegisterFamily()
{
#ifdef NUV_BENCH_OPENCV
    NameVersion("OpenCV", CV_VERSION);
#endif
#ifdef NUV_BENCH_GSL
    NameVersion("GSL", gsl_version);
#endif
    for (const int n : {3, 8, 32, 100, 500, 1000})
    {
        const auto pSystem = std::make_shared<const TSystem>(n);
        AddDenseFactor(pSystem);
        AddDenseSolve(pSystem);
        AddDenseSystem(pSystem);
        AddPacked(pSystem);
    }
    for (const int n : {8, 32, 100})
    {
        AddUpdate(n);
    }
}

} // namespace bench
