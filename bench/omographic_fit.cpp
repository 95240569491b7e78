// omographic_fit.cpp: CalcOmographicCoefs beside fits of homographies and Gauss-Newton on general solvers.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fit_peers.h"

#include <algorithm>

namespace bench {

constexpr int UNKNOWNS = 8;
constexpr int ITERATIONS = 4;
using TCoefs = TSolution<UNKNOWNS, 1>; // A to H

static TValues MapCorners(const TCoefs& c)
{
    return MapCorners({c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7], 1.0});
}

// Writes the two rows of one point. p, q, r are the coefficients of A, B, C in the row of X, and of D, E, F in the row
// of Y. The other arguments are the coefficients of G and H and the values, for both rows.
template <class A, class B>
static void FillPoint(int i, double p, double q, double r, const std::array<double, 2>& a_vdG,
                      const std::array<double, 2>& a_vdH, const std::array<double, 2>& a_vdValue, A& a_A, B& a_B)
{
    for (int k = 0; k < 2; ++k)
    {
        const int iRow = 2 * i + k, iOwn = 3 * k, iOther = 3 - iOwn;
        a_A(iRow, iOwn) = p;
        a_A(iRow, iOwn + 1) = q;
        a_A(iRow, iOwn + 2) = r;
        a_A(iRow, iOther) = a_A(iRow, iOther + 1) = a_A(iRow, iOther + 2) = 0.0;
        a_A(iRow, 6) = a_vdG[k];
        a_A(iRow, 7) = a_vdH[k];
        a_B(iRow, 0) = a_vdValue[k];
    }
}

// The equations multiplied by the denominator, which makes them linear.
template <class A, class B> static void FillLinear(const TPoints& a_Points, A& a_A, B& a_B)
{
    for (int i = 0; i < a_Points.Count(); ++i)
    {
        const double x = a_Points.vdX[i], y = a_Points.vdY[i], X = a_Points.vdXa[i], Y = a_Points.vdYa[i];
        FillPoint(i, x, y, 1.0, {-X * x, -Y * x}, {-X * y, -Y * y}, {X, Y}, a_A, a_B);
    }
}

// The derivatives and the residuals at given coefficients.
template <class A, class B> static void FillRefinement(const TPoints& a_Points, const TCoefs& c, A& a_A, B& a_B)
{
    for (int i = 0; i < a_Points.Count(); ++i)
    {
        const double x = a_Points.vdX[i], y = a_Points.vdY[i];
        const double w = 1.0 / (c[6] * x + c[7] * y + 1.0);
        const double X = (c[0] * x + c[1] * y + c[2]) * w, Y = (c[3] * x + c[4] * y + c[5]) * w;
        FillPoint(i, x * w, y * w, w, {-X * x * w, -Y * x * w}, {-X * y * w, -Y * y * w},
                  {a_Points.vdXa[i] - X, a_Points.vdYa[i] - Y}, a_A, a_B);
    }
}

// The linear solution and at most four iterations, as in the library. a_iIterations counts them.
template <class TSolver> static TCoefs Fit(const TPoints& a_Points, TSolver& a_Solver, int& a_iIterations)
{
    TCoefs vdCoefs = a_Solver.Solve([&](auto&& A, auto&& B) { FillLinear(a_Points, A, B); });
    double dGreatest = 1.0;
    for (a_iIterations = 0; a_iIterations < ITERATIONS && !(dGreatest < 1e-8); ++a_iIterations)
    {
        const TCoefs vdCorrection =
            a_Solver.Solve([&](auto&& A, auto&& B) { FillRefinement(a_Points, vdCoefs, A, B); });
        dGreatest = 0.0;
        for (int j = 0; j < UNKNOWNS; ++j)
        {
            vdCoefs[j] += vdCorrection[j];
            dGreatest = std::max(dGreatest, std::fabs(vdCorrection[j]));
        }
    }
    return vdCoefs;
}

namespace {

// The library's own normal equations: they need as many iterations as its fit.
struct TOwnNormalEquations
{
    std::vector<double> vdA, vdB;

    explicit TOwnNormalEquations(int a_iRows) : vdA(a_iRows * std::size_t(UNKNOWNS)), vdB(a_iRows)
    {}

    template <class TFill> TCoefs Solve(TFill a_Fill)
    {
        a_Fill(TElements{vdA.data(), UNKNOWNS, 1}, TElements{vdB.data(), 1, 1});
        double vdMatrix[UNKNOWNS * (UNKNOWNS + 1) / 2] = {};
        TCoefs vdVector = {};
        for (std::size_t i = 0; i < vdB.size(); ++i)
        {
            nuv::UpdateNormMatrixLowTri(UNKNOWNS, vdMatrix, vdVector.data(), vdA.data() + i * UNKNOWNS, vdB[i]);
        }
        nuv::CholeskyLowTri(UNKNOWNS, vdMatrix);
        nuv::SolveCholLowTri(UNKNOWNS, vdMatrix, vdVector.data());
        return vdVector;
    }
};

} // namespace

// The floors of one linear solution and a_iIterations iterations.
static void AddFloors(int n, int a_iIterations, TContest& a_Contest)
{
    // Five of the eight coefficients of a row are not zero: 15 products of two of them, and five with the value.
    const TOperations Rows = PerPoint(n, 2 * 20, 2 * 20);
    const TOperations Linear = PerPoint(n, 0, 4), Refinement = PerPoint(n, 8, 17, 2);
    a_Contest.Floors(4U * n, Rows + Linear + double(a_iIterations) * (Rows + Refinement),
                     2.0 * n * (1 + a_iIterations)); // both rows add to the sums of G and H
}

static void AddSize(int n)
{
    const auto pPoints = MakePoints(n, {1.1, 0.2, 40.0, -0.1, 0.9, 60.0, 2e-4, 1e-4, 1.0});
    TContest Contest("CalcOmographicCoefs", n);
    Contest.Ours(
        "CalcOmographicCoefs", nuv::TOmographicParams(),
        [pPoints](nuv::TOmographicParams& a_Params)
        {
            const TPoints& p = *pPoints;
            nuv::CalcOmographicCoefs(p.Count(), p.vdX.data(), p.vdY.data(), p.vdXa.data(), p.vdYa.data(), a_Params);
        },
        [](const nuv::TOmographicParams& p) {
            return MapCorners({p.dA, p.dB, p.dC, p.dD, p.dE, p.dF, p.dG, p.dH, 1.0});
        });
    ForEachSolver<UNKNOWNS, 1>(2 * n,
                               [&](const std::string& a_szName, auto a_pSolver)
                               {
                                   const auto Run = [=](TCoefs& a_Coefs)
                                   {
                                       int iIterations = 0;
                                       a_Coefs = Fit(*pPoints, *a_pSolver, iIterations);
                                   };
                                   Contest.Peer("Gauss-Newton by " + a_szName, 1e-8, TCoefs(), Run,
                                                [](const TCoefs& a_Coefs) { return MapCorners(a_Coefs); });
                               });
#ifdef NUV_BENCH_OPENCV
    if (n == 4)
    {
        AddOpenCv(Contest, "getPerspectiveTransform", *pPoints,
                  [](const auto& a_Source, const auto& a_Target)
                  { return cv::getPerspectiveTransform(a_Source, a_Target); });
    }
    AddOpenCv(Contest, "findHomography, method 0", *pPoints,
              [](const auto& a_Source, const auto& a_Target) { return cv::findHomography(a_Source, a_Target, 0); });
#endif
#ifdef NUV_BENCH_DLIB
    // Its search ends before the minimum is reached to full precision.
    AddDlib(Contest, "find_projective_transform", 1e-6, *pPoints,
            [](const auto& a_Source, const auto& a_Target)
            { return dlib::find_projective_transform(a_Source, a_Target); });
#endif
    TOwnNormalEquations Own(2 * n);
    int iIterations = 0;
    Fit(*pPoints, Own, iIterations);
    AddFloors(n, iIterations, Contest);
}

void RegisterFamily()
{
    NameFitVersions();
    for (const int n : {4, 10, 100, 10000})
    {
        AddSize(n);
    }
}

} // namespace bench
