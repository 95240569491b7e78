// pixels.cpp: converts between source coordinates and the pixels of an image.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "pixels.h"

#include <algorithm>

namespace fitpoints {

TPixelSystem PixelSystem(enumFileKind a_Kind)
{
    return a_Kind == FILE_QGIS  ? TPixelSystem{0.5, -0.5, -1}
           : a_Kind == FILE_GCP ? TPixelSystem{0.5, 0.5, 1}
                                : TPixelSystem{0, 0, 1};
}

TPosition PixelOf(const TPixelSystem& a_System, double a_dX, double a_dY)
{
    return {a_dX - a_System.dX + 0.5, a_System.iRowSign * (a_dY - a_System.dY) + 0.5};
}

TPosition SourceOf(const TPixelSystem& a_System, double a_dPixel, double a_dLine)
{
    return {a_dPixel - 0.5 + a_System.dX, a_System.iRowSign * (a_dLine - 0.5) + a_System.dY};
}

TPixelCoefs PixelCoefs(const TPixelSystem& a_System, const nuv::TOmographicParams& a_Coefs, double a_dCentre)
{
    const double dX = a_System.dX + a_dCentre;
    const double dY = a_System.dY + a_System.iRowSign * a_dCentre;
    return {a_Coefs.dA, a_System.iRowSign * a_Coefs.dB, a_Coefs.dC + dX * a_Coefs.dA + dY * a_Coefs.dB,
            a_Coefs.dD, a_System.iRowSign * a_Coefs.dE, a_Coefs.dF + dX * a_Coefs.dD + dY * a_Coefs.dE};
}

bool SeemsToCountUpwards(const TPoints& a_Points)
{
    return a_Points.Kind == FILE_CSV && std::all_of(a_Points.vPoints.begin(), a_Points.vPoints.end(),
                                                    [](const TPoint& a_Point) { return a_Point.dY < 0; });
}

} // namespace fitpoints
