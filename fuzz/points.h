// points.h: control points for the fuzz targets of the fits, and the same points centred in extended precision.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FUZZ_POINTS_H
#define NUV_FUZZ_POINTS_H

#include "fuzzing.h"
#include "support/control_points.h"

#include <Eigen/Dense>

namespace nuv_fuzz {

using TPairs = Eigen::Matrix<TLong, Eigen::Dynamic, 2>; // a row (x, y) per point
using TPair = Eigen::Matrix<TLong, 1, 2>;

// Coordinates of ordinary size around an ordinary offset.
inline TValues TameCoordinates(TInput& a_Input, std::size_t a_iCount)
{
    static const double Offsets[] = {0.0, 0.0, 100.0, 4321.5, 5e5};
    static const double Extents[] = {1.0, 1.0, 0.01, 50.0, 1e3};
    const double dOffset = Offsets[a_Input.Byte() % 5];
    const double dExtent = Extents[a_Input.Byte() % 5];
    TValues vdValues(a_iCount);
    std::generate(vdValues.begin(), vdValues.end(), [&] { return dOffset + dExtent * a_Input.Tame(); });
    return vdValues;
}

inline TControlPoints ReadPoints(TInput& a_Input, std::size_t a_iCount, bool a_bTame)
{
    const auto Values = [&] { return a_bTame ? TameCoordinates(a_Input, a_iCount) : a_Input.AnyValues(a_iCount); };
    return {Values(), Values(), Values(), Values()};
}

inline TGuardedPoints Guarded(const TControlPoints& a_Points)
{
    return {TGuardedArray(a_Points.vdX), TGuardedArray(a_Points.vdY), TGuardedArray(a_Points.vdXa),
            TGuardedArray(a_Points.vdYa)};
}

inline bool Hold(const TGuardedPoints& a_Guarded, const TControlPoints& a_Points)
{
    return a_Guarded.X.Holds(a_Points.vdX) && a_Guarded.Y.Holds(a_Points.vdY) && a_Guarded.Xa.Holds(a_Points.vdXa) &&
           a_Guarded.Ya.Holds(a_Points.vdYa);
}

inline TPairs Pairs(const TValues& a_vdX, const TValues& a_vdY)
{
    TPairs Points(static_cast<Eigen::Index>(a_vdX.size()), 2);
    for (std::size_t i = 0; i < a_vdX.size(); ++i)
    {
        Points.row(static_cast<Eigen::Index>(i)) << a_vdX[i], a_vdY[i];
    }
    return Points;
}

// The means of source and target, and the points relative to them.
struct TCentred
{
    TPairs Source;
    TPairs Target;
    TPair SourceMean;
    TPair TargetMean;
    TLong dGreatest; // magnitude of all coordinates before centring

    explicit TCentred(const TControlPoints& a_Points)
        : Source(Pairs(a_Points.vdX, a_Points.vdY)), Target(Pairs(a_Points.vdXa, a_Points.vdYa)),
          SourceMean(Source.colwise().mean()), TargetMean(Target.colwise().mean()),
          dGreatest(std::max(Source.cwiseAbs().maxCoeff(), Target.cwiseAbs().maxCoeff()))
    {
        Source.rowwise() -= SourceMean;
        Target.rowwise() -= TargetMean;
    }
};

} // namespace nuv_fuzz

#endif // NUV_FUZZ_POINTS_H
