// bearing_intersection.cpp: a target from its bearing at one station and its distance from another.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The target lies at the known distance r from station A, at A + r (cos t, sin t), and on the line of sight of station
// B. Its offset from that line, n.(A - B) + r n.(cos t, sin t) with the normal n of the line, must be 0. This is a
// linear equation in cos t and sin t.

#include "nuv1math.h"

#include <cmath>
#include <cstdio>

int main()
{
    const double dDegree = std::acos(-1.0) / 180.0;
    const double dAx = 1000.0, dAy = 2000.0, dRange = 500.0;   // metres; x east, y north
    const double dBx = 1200.0, dBy = 1800.0, dBearing = 330.0; // degrees clockwise from north
    const double dSightX = std::sin(dBearing * dDegree), dSightY = std::cos(dBearing * dDegree);
    const double dNormalX = -dSightY, dNormalY = dSightX;

    //! [solve]
    double vdAngles[2];
    const int iCount = nuv::SolveLinTrig(dRange * dNormalX, dRange * dNormalY,
                                         dNormalX * (dAx - dBx) + dNormalY * (dAy - dBy), vdAngles);
    if (iCount <= 0)
    {
        std::puts("the line of sight misses the circle about A");
        return 1;
    }
    //! [solve]
    //! [ends]
    int iTargets = 0;
    bool bGood = true;
    for (int i = 0; i < iCount; ++i)
    {
        const double dX = dAx + dRange * std::cos(vdAngles[i]), dY = dAy + dRange * std::sin(vdAngles[i]);
        const double dAlong = (dX - dBx) * dSightX + (dY - dBy) * dSightY;
        const double dAcross = (dX - dBx) * dNormalX + (dY - dBy) * dNormalY;
        const char* const szPlace = dAlong > 0.0 ? "target" : "behind B, no target";
        std::printf("(%.3f, %.3f): %.3f m along the sight, %s\n", dX, dY, dAlong, szPlace);
        iTargets += dAlong > 0.0 ? 1 : 0;
        bGood = bGood && std::fabs(dAcross) < 1e-9;
    }
    //! [ends]
    return bGood && iTargets == 1 ? 0 : 1;
}
