// control_points.h: control points as the fits take them.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_CONTROL_POINTS_H
#define NUV_TESTS_SUPPORT_CONTROL_POINTS_H

#include "guarded_array.h"

#include <vector>

namespace nuv_tests {

// x and y in the source system, X and Y in the target system.
struct TControlPoints
{
    std::vector<double> vdX;
    std::vector<double> vdY;
    std::vector<double> vdXa;
    std::vector<double> vdYa;

    int Count() const
    {
        return static_cast<int>(vdX.size());
    }

    void Add(double a_dX, double a_dY, double a_dXa, double a_dYa)
    {
        vdX.push_back(a_dX);
        vdY.push_back(a_dY);
        vdXa.push_back(a_dXa);
        vdYa.push_back(a_dYa);
    }
};

// The same with every array between guards.
struct TGuardedPoints
{
    TGuardedArray X;
    TGuardedArray Y;
    TGuardedArray Xa;
    TGuardedArray Ya;

    int Count() const
    {
        return static_cast<int>(X.Size());
    }

    bool AreIntact() const
    {
        return X.IsIntact() && Y.IsIntact() && Xa.IsIntact() && Ya.IsIntact();
    }
};

// The corners of a square of side 2 around a centre, without targets. Their means are exact.
inline TControlPoints SquareAround(double a_dX, double a_dY)
{
    return {{a_dX - 1.0, a_dX + 1.0, a_dX - 1.0, a_dX + 1.0}, {a_dY - 1.0, a_dY - 1.0, a_dY + 1.0, a_dY + 1.0}, {}, {}};
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_CONTROL_POINTS_H
