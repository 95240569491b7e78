// conformal_fit.cpp: CalcConformalCoefs beside fits of similarities and general least-squares fits.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fit_peers.h"

#include <Eigen/Geometry>

namespace bench {

static TValues MapCorners(double A, double B, double Tx, double Ty)
{
    return MapCorners({A, B, Tx, -B, A, Ty, 0.0, 0.0, 1.0});
}

namespace {

struct TUmeyama
{
    Eigen::Matrix2Xd Source, Target;
    Eigen::Matrix3d Fit = Eigen::Matrix3d::Zero();

    explicit TUmeyama(const TPoints& a_Points) : Source(2, a_Points.Count()), Target(2, a_Points.Count())
    {
        for (int i = 0; i < a_Points.Count(); ++i)
        {
            Source.col(i) << a_Points.vdX[i], a_Points.vdY[i];
            Target.col(i) << a_Points.vdXa[i], a_Points.vdYa[i];
        }
    }
};

} // namespace

// Two rows of A and B for each point, one for X and one for Y.
static void AddSolvers(TContest& a_Contest, const std::shared_ptr<const TPoints>& a_pPoints)
{
    const auto Fill = [a_pPoints](auto&& A, auto&& B)
    {
        for (int i = 0; i < a_pPoints->Count(); ++i)
        {
            const int iX = 2 * i, iY = iX + 1;
            A(iX, 0) = A(iY, 1) = a_pPoints->vdX[i];
            A(iX, 1) = a_pPoints->vdY[i];
            A(iY, 0) = a_pPoints->vdY[i];
            A(iY, 1) = -a_pPoints->vdX[i];
            A(iX, 2) = A(iY, 3) = 1.0;
            A(iX, 3) = A(iY, 2) = 0.0;
            B(iX, 0) = a_pPoints->vdXa[i];
            B(iY, 0) = a_pPoints->vdYa[i];
        }
    };
    using TState = TSolution<4, 1>;
    const auto Tell = [](const TState& x) { return MapCorners(x[0], x[1], x[2], x[3]); };
    const auto Add = [&](const std::string& a_szName, auto a_pSolver)
    {
        const auto Run = [=](TState& x) { x = a_pSolver->Solve(Fill); };
        a_Contest.Peer(a_szName, TOLERANCE_DOUBLE, TState(), Run, Tell);
    };
    ForEachSolver<4, 1>(2 * a_pPoints->Count(), Add);
}

static void AddSize(int n)
{
    const auto pPoints = MakePoints(n, {1.1, 0.5, 30.0, -0.5, 1.1, 200.0, 0.0, 0.0, 1.0});
    TContest Contest("CalcConformalCoefs", n);
    Contest.Ours(
        "CalcConformalCoefs", nuv::TConformalCoefs(),
        [pPoints](nuv::TConformalCoefs& a_Coefs)
        {
            const TPoints& p = *pPoints;
            nuv::CalcConformalCoefs(static_cast<unsigned int>(p.Count()), p.vdX.data(), p.vdY.data(), p.vdXa.data(),
                                    p.vdYa.data(), false, a_Coefs);
        },
        [](const nuv::TConformalCoefs& a_Coefs)
        { return MapCorners(a_Coefs.dA, a_Coefs.dB, a_Coefs.dTx, a_Coefs.dTy); });
    AddSolvers(Contest, pPoints);
    Contest.Peer(
        "Eigen umeyama", TOLERANCE_DOUBLE, TUmeyama(*pPoints),
        [](TUmeyama& a_State) { a_State.Fit = Eigen::umeyama(a_State.Source, a_State.Target, true); },
        [](const TUmeyama& a_State)
        {
            THomography h;
            Eigen::Map<Eigen::Matrix<double, 3, 3, Eigen::RowMajor> >(h.data()) = a_State.Fit;
            return MapCorners(h);
        });
#ifdef NUV_BENCH_OPENCV
    AddOpenCv(Contest, "estimateAffinePartial2D, all inliers", *pPoints,
              [](const auto& a_Source, const auto& a_Target)
              { return cv::estimateAffinePartial2D(a_Source, a_Target, cv::noArray(), cv::RANSAC, EXTENT); });
#endif
#ifdef NUV_BENCH_DLIB
    AddDlib(Contest, "find_similarity_transform", TOLERANCE_DOUBLE, *pPoints,
            [](const auto& a_Source, const auto& a_Target)
            { return dlib::find_similarity_transform(a_Source, a_Target); });
#endif
    // Four means and three sums of two products. The sums of the second pass need the means of the first.
    Contest.Floors(4U * n, PerPoint(n, 4 + 4 + 6, 6), 2.0 * n);
}

void RegisterFamily()
{
    NameFitVersions();
    for (const int n : {2, 10, 100, 10000})
    {
        AddSize(n);
    }
}

} // namespace bench
