// points.h: control points for the fits, and how their results are compared.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_BENCH_POINTS_H
#define NUV_BENCH_POINTS_H

#include "contest.h"

#include "support/control_points.h"

#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

namespace bench {

using TPoints = nuv_tests::TControlPoints;

constexpr double EXTENT = 1000.0; // of the source points in x and y

// The map X = (h0 x + h1 y + h2)/(h6 x + h7 y + h8), Y = (h3 x + h4 y + h5)/(h6 x + h7 y + h8).
using THomography = std::array<double, 9>;

inline std::array<double, 2> Map(const THomography& h, double x, double y)
{
    const double dW = h[6] * x + h[7] * y + h[8];
    return {(h[0] * x + h[1] * y + h[2]) / dW, (h[3] * x + h[4] * y + h[5]) / dW};
}

// Two fits are compared by the images of the corners of the source area.
template <class TMap> TValues MapCorners(TMap a_Map)
{
    TValues vdMapped;
    for (const auto& [x, y] : {std::array{0.0, 0.0}, {EXTENT, 0.0}, {EXTENT, EXTENT}, {0.0, EXTENT}})
    {
        const auto vdPoint = a_Map(x, y);
        vdMapped.insert(vdMapped.end(), vdPoint.begin(), vdPoint.end());
    }
    return vdMapped;
}

inline TValues MapCorners(const THomography& h)
{
    return MapCorners([&h](double x, double y) { return Map(h, x, y); });
}

// Points spread over the source area and their images, with noise of a quarter unit. All coordinates are multiples of
// 1/64, which single precision holds too: peers that use it get the same points.
inline std::shared_ptr<const TPoints> MakePoints(int n, const THomography& h)
{
    std::mt19937 Generator(static_cast<unsigned int>(n));
    std::uniform_real_distribution<double> Inside(0.05 * EXTENT, 0.95 * EXTENT);
    std::normal_distribution<double> Noise(0.0, 0.25);
    const auto Round = [](double a_d) { return std::round(a_d * 64.0) / 64.0; };
    const auto pPoints = std::make_shared<TPoints>();
    for (int i = 0; i < n; ++i)
    {
        const bool bCorner = i < 4; // the first four near the corners, so that no three of them are on a line
        const double x = Round(bCorner ? (i % 2 + 0.03 * i) * 0.9 * EXTENT : Inside(Generator));
        const double y = Round(bCorner ? (i / 2 + 0.02 * i) * 0.9 * EXTENT : Inside(Generator));
        const auto [X, Y] = Map(h, x, y);
        const double dXa = Round(X + Noise(Generator));
        pPoints->Add(x, y, dXa, Round(Y + Noise(Generator)));
    }
    return pPoints;
}

// The same points as two lists of another library's points, and the result of its fit.
template <class TPoint, class TFit> struct TPointLists
{
    std::vector<TPoint> vSource, vTarget;
    TFit Fit;

    template <class TMake> TPointLists(const TPoints& a_Points, TMake a_Make)
    {
        for (int i = 0; i < a_Points.Count(); ++i)
        {
            vSource.push_back(a_Make(a_Points.vdX[i], a_Points.vdY[i]));
            vTarget.push_back(a_Make(a_Points.vdXa[i], a_Points.vdYa[i]));
        }
    }
};

} // namespace bench

#endif // NUV_BENCH_POINTS_H
