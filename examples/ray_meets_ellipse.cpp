// ray_meets_ellipse.cpp: in which directions a ray of a measured length ends on an ellipse or a circle.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// A distance meter stands inside a tank and reads 4.000 m to the wall: where may it point? The end of the ray,
// (px + r cos t, py + r sin t), put into the equation a x^2 + b x y + c y^2 + d x + e y + f = 0 of the wall,
// gives a quadratic equation in cos t and sin t.

#include "nuv1math.h"

#include <cmath>
#include <cstdio>
#include <vector>

struct TConic
{
    double dA, dB, dC, dD, dE, dF;

    double At(double x, double y) const
    {
        return dA * x * x + dB * x * y + dC * y * y + dD * x + dE * y + dF;
    }
};

//! [directions]
// The directions, counter-clockwise from the x axis.
std::vector<double> Directions(const TConic& a_Wall, double a_dX, double a_dY, double a_dRange)
{
    const TConic& W = a_Wall;
    const double r = a_dRange;
    double vdAngles[4];
    const int iCount =
        nuv::SolveQuadTrig(W.dA * r * r, W.dC * r * r, W.dB * r * r, (2.0 * W.dA * a_dX + W.dB * a_dY + W.dD) * r,
                           (2.0 * W.dC * a_dY + W.dB * a_dX + W.dE) * r, W.At(a_dX, a_dY), vdAngles);
    return {vdAngles, vdAngles + (iCount > 0 ? iCount : 0)};
}
//! [directions]

// Prints the ends of the rays; true if there are as many as expected and all lie on the wall.
bool Report(const char* a_szWall, const TConic& a_Wall, std::size_t a_iExpected)
{
    const double dX = 1.0, dY = 0.5, dRange = 4.0;
    std::printf("%s, from (%.3f, %.3f), range %.3f:\n", a_szWall, dX, dY, dRange);
    const std::vector<double> vdDirections = Directions(a_Wall, dX, dY, dRange);
    bool bOnWall = true;
    for (double t : vdDirections)
    {
        const double dEndX = dX + dRange * std::cos(t), dEndY = dY + dRange * std::sin(t);
        std::printf("  direction %8.4f deg, end (%8.4f, %8.4f)\n", t * 180.0 / std::acos(-1.0), dEndX, dEndY);
        bOnWall = bOnWall && std::fabs(a_Wall.At(dEndX, dEndY)) < 1e-9;
    }
    return bOnWall && vdDirections.size() == a_iExpected;
}

int main()
{
    const TConic Ellipse{1.0 / 25.0, 0.0, 1.0 / 9.0, 0.0, 0.0, -1.0}; // semi-axes 5 and 3 about the origin
    const TConic Circle{1.0, 0.0, 1.0, 0.0, 0.0, -16.0}; // radius 4: its quadratic terms add up to a constant
    const TConic Small{1.0, 0.0, 1.0, 0.0, 0.0, -4.0};   // radius 2: out of reach of the range
    const bool bEllipse = Report("ellipse, semi-axes 5 and 3", Ellipse, 4);
    const bool bCircle = Report("circle, radius 4", Circle, 2);
    return bEllipse && bCircle && Report("circle, radius 2", Small, 0) ? 0 : 1;
}
