// affine_fit.cpp: CalcAffineCoefs beside affine and general least-squares fits.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fit_peers.h"

#ifdef NUV_BENCH_GDAL
#include <gdal.h>
#include <gdal_alg.h>
#endif

namespace bench {

static TValues MapCorners(const nuv::TAffineCoefs& a_Coefs)
{
    return MapCorners({a_Coefs.dA, a_Coefs.dB, a_Coefs.dC, a_Coefs.dD, a_Coefs.dE, a_Coefs.dF, 0.0, 0.0, 1.0});
}

#ifdef NUV_BENCH_GDAL
// The same points as GDAL's ground control points. The source is given as pixel and line.
struct TGcps
{
    std::vector<GDAL_GCP> vPoints;
    double vdGeoTransform[6];
    bool bFitted = false;
    std::shared_ptr<void> pTransformer;

    explicit TGcps(const TPoints& a_Points)
    {
        static char szNone[] = "";
        for (int i = 0; i < a_Points.Count(); ++i)
        {
            vPoints.push_back(
                {szNone, szNone, a_Points.vdX[i], a_Points.vdY[i], a_Points.vdXa[i], a_Points.vdYa[i], 0});
        }
    }
    int Size() const
    {
        return static_cast<int>(vPoints.size());
    }
};

static void AddGdal(TContest& a_Contest, const TPoints& a_Points)
{
    a_Contest.Peer(
        "GDAL GDALGCPsToGeoTransform", TOLERANCE_DOUBLE, TGcps(a_Points),
        [](TGcps& a_Gcps)
        {
            a_Gcps.bFitted =
                GDALGCPsToGeoTransform(a_Gcps.Size(), a_Gcps.vPoints.data(), a_Gcps.vdGeoTransform, TRUE) != FALSE;
        },
        [](const TGcps& a_Gcps)
        {
            const double* const g = a_Gcps.vdGeoTransform;
            return MapCorners({g[1], g[2], g[0], g[4], g[5], g[3], 0.0, 0.0, 1.0});
        });
    a_Contest.Peer(
        "GDAL GDALCreateGCPTransformer, order 1", TOLERANCE_DOUBLE, TGcps(a_Points),
        [](TGcps& a_Gcps)
        {
            a_Gcps.pTransformer.reset(GDALCreateGCPTransformer(a_Gcps.Size(), a_Gcps.vPoints.data(), 1, FALSE),
                                      GDALDestroyGCPTransformer);
        },
        [](const TGcps& a_Gcps)
        {
            return MapCorners(
                [&a_Gcps](double x, double y)
                {
                    double dZ = 0.0;
                    int iSuccess = 0;
                    GDALGCPTransform(a_Gcps.pTransformer.get(), FALSE, 1, &x, &y, &dZ, &iSuccess);
                    return std::array{x, y};
                });
        });
}
#endif

// One row of A and B for each point: x, y, 1 and X, Y.
static void AddSolvers(TContest& a_Contest, const std::shared_ptr<const TPoints>& a_pPoints)
{
    const auto Fill = [a_pPoints](auto&& A, auto&& B)
    {
        for (int i = 0; i < a_pPoints->Count(); ++i)
        {
            A(i, 0) = a_pPoints->vdX[i];
            A(i, 1) = a_pPoints->vdY[i];
            A(i, 2) = 1.0;
            B(i, 0) = a_pPoints->vdXa[i];
            B(i, 1) = a_pPoints->vdYa[i];
        }
    };
    using TState = TSolution<3, 2>;
    const auto Tell = [](const TState& x) { return MapCorners({x[0], x[1], x[2], x[3], x[4], x[5], 0.0, 0.0, 1.0}); };
    const auto Add = [&](const std::string& a_szName, auto a_pSolver)
    {
        const auto Run = [=](TState& x) { x = a_pSolver->Solve(Fill); };
        a_Contest.Peer(a_szName, TOLERANCE_DOUBLE, TState(), Run, Tell);
    };
    ForEachSolver<3, 2>(a_pPoints->Count(), Add);
}

static void AddSize(int n)
{
    const auto pPoints = MakePoints(n, {1.2, -0.4, 50.0, 0.3, 0.9, -20.0, 0.0, 0.0, 1.0});
    TContest Contest("CalcAffineCoefs", n);
    Contest.Ours(
        "CalcAffineCoefs", nuv::TAffineCoefs(),
        [pPoints](nuv::TAffineCoefs& a_Coefs)
        {
            const TPoints& p = *pPoints;
            nuv::CalcAffineCoefs(static_cast<unsigned int>(p.Count()), p.vdX.data(), p.vdY.data(), p.vdXa.data(),
                                 p.vdYa.data(), a_Coefs);
        },
        [](const nuv::TAffineCoefs& a_Coefs) { return MapCorners(a_Coefs); });
    AddSolvers(Contest, pPoints);
#ifdef NUV_BENCH_OPENCV
    if (n == 3)
    {
        AddOpenCv(Contest, "getAffineTransform", *pPoints,
                  [](const auto& a_Source, const auto& a_Target)
                  { return cv::getAffineTransform(a_Source, a_Target); });
    }
    AddOpenCv(Contest, "estimateAffine2D, all inliers", *pPoints,
              [](const auto& a_Source, const auto& a_Target)
              { return cv::estimateAffine2D(a_Source, a_Target, cv::noArray(), cv::RANSAC, EXTENT); });
#endif
#ifdef NUV_BENCH_DLIB
    AddDlib(Contest, "find_affine_transform", TOLERANCE_DOUBLE, *pPoints,
            [](const auto& a_Source, const auto& a_Target) { return dlib::find_affine_transform(a_Source, a_Target); });
#endif
#ifdef NUV_BENCH_GDAL
    AddGdal(Contest, *pPoints);
#endif
    // Four means and eleven sums. The sums of the second pass need the means of the first.
    Contest.Floors(4U * n, PerPoint(n, 4 + 4 + 11, 7), 2.0 * n);
}

void RegisterFamily()
{
    NameFitVersions();
#ifdef NUV_BENCH_GDAL
    NameVersion("GDAL", GDALVersionInfo("RELEASE_NAME"));
#endif
    for (const int n : {3, 10, 100, 10000})
    {
        AddSize(n);
    }
}

} // namespace bench
