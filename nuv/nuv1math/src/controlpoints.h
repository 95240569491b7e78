// controlpoints.h: the control points, and what the fits form of them first. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_CONTROLPOINTS_H
#define NUV_CONTROLPOINTS_H

namespace nuv {

// The caller's four arrays of iCount coordinates. A fit maps (x, y) onto (X, Y).
struct TControlPoints
{
    unsigned int iCount;
    const double* vdX;  // x in the source system
    const double* vdY;  // y in the source system
    const double* vdXa; // X in the target system
    const double* vdYa; // Y in the target system
};

// The means of the four coordinate arrays.
struct TMeans
{
    double dX;  // of x
    double dY;  // of y
    double dXa; // of X
    double dYa; // of Y
};

// The sums of the affine normal equations, over all points. u, v, U and V are x, y, X and Y less their means.
struct TAffineSums
{
    double dSuu; // u u
    double dSuv; // u v
    double dSvv; // v v
    double dSUu; // U u
    double dSVu; // V u
    double dSUv; // U v
    double dSVv; // V v
    double dSu;  // u
    double dSv;  // v
    double dSU;  // U
    double dSV;  // V
};

// The three sums of the conformal fit, of dx, dy, dX and dY: x, y, X and Y less their means.
struct TConformalSums
{
    double dS;  // dx^2 + dy^2
    double dSa; // dX dx + dY dy
    double dSb; // dX dy - dY dx
};

} // namespace nuv

#endif // NUV_CONTROLPOINTS_H
