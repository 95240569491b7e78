// fit_peers.h: the libraries that fit transformations themselves, for all three fits.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_BENCH_FIT_PEERS_H
#define NUV_BENCH_FIT_PEERS_H

#include "least_squares.h"
#include "points.h"

#include "nuv1math.h"

#ifdef NUV_BENCH_OPENCV
#include <opencv2/calib3d.hpp>
#include <opencv2/core/version.hpp>
#include <opencv2/imgproc.hpp>
#endif
#ifdef NUV_BENCH_DLIB
#include <dlib/geometry.h>
#include <dlib/revision.h>
#endif

namespace bench {

// OpenCV takes points in single precision (they are exact in it, see MakePoints) and computes partly in it.
constexpr double TOLERANCE_SINGLE = 1e-8;
constexpr double TOLERANCE_DOUBLE = 1e-11;

// The operations of n points.
inline TOperations PerPoint(int n, double a_dAdditions, double a_dMultiplications, double a_dDivisions = 0.0)
{
    return double(n) * TOperations{a_dAdditions, a_dMultiplications, a_dDivisions, 0.0};
}

#ifdef NUV_BENCH_OPENCV
// Adds an OpenCV function that takes two lists of points and returns the matrix of the transformation.
template <class TFit>
void AddOpenCv(TContest& a_Contest, const std::string& a_szName, const TPoints& a_Points, TFit a_Fit)
{
    using TLists = TPointLists<cv::Point2f, cv::Mat>;
    a_Contest.Peer(
        "OpenCV " + a_szName, TOLERANCE_SINGLE,
        TLists(a_Points, [](double x, double y) { return cv::Point2f(float(x), float(y)); }),
        [a_Fit](TLists& a_Lists) { a_Lists.Fit = a_Fit(a_Lists.vSource, a_Lists.vTarget); },
        [](const TLists& a_Lists)
        {
            THomography h = {0, 0, 0, 0, 0, 0, 0, 0, 1};
            std::copy_n(a_Lists.Fit.ptr<double>(), a_Lists.Fit.total(), h.begin());
            return MapCorners(h);
        });
}
#endif

#ifdef NUV_BENCH_DLIB
// Adds a dlib function that takes two lists of points and returns a transformation.
template <class TFit>
void AddDlib(TContest& a_Contest, const std::string& a_szName, double a_dTolerance, const TPoints& a_Points, TFit a_Fit)
{
    using TTransform = decltype(a_Fit(std::vector<dlib::dpoint>(), std::vector<dlib::dpoint>()));
    using TLists = TPointLists<dlib::dpoint, TTransform>;
    a_Contest.Peer(
        "dlib " + a_szName, a_dTolerance, TLists(a_Points, [](double x, double y) { return dlib::dpoint(x, y); }),
        [a_Fit](TLists& a_Lists) { a_Lists.Fit = a_Fit(a_Lists.vSource, a_Lists.vTarget); },
        [](const TLists& a_Lists)
        {
            return MapCorners(
                [&](double x, double y)
                {
                    const dlib::dpoint Mapped = a_Lists.Fit(dlib::dpoint(x, y));
                    return std::array{Mapped.x(), Mapped.y()};
                });
        });
}
#endif

inline void NameFitVersions()
{
#ifdef NUV_BENCH_OPENCV
    NameVersion("OpenCV", CV_VERSION);
    cv::setNumThreads(1);
#endif
#ifdef NUV_BENCH_DLIB
    NameVersion("dlib", std::to_string(DLIB_MAJOR_VERSION) + '.' + std::to_string(DLIB_MINOR_VERSION));
#endif
#ifdef NUV_BENCH_GSL
    NameVersion("GSL", gsl_version);
#endif
}

} // namespace bench

#endif // NUV_BENCH_FIT_PEERS_H
