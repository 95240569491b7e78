// pixels.h: how the source coordinates of a file count the pixels of an image.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_PIXELS_H
#define NUV_FITPOINTS_PIXELS_H

#include "fit.h"

namespace fitpoints {

// The source coordinates of the centre of the first pixel, and +1 if y grows with the row of the pixel, -1 if it falls.
struct TPixelSystem
{
    double dX, dY;
    int iRowSign;
};

TPixelSystem PixelSystem(enumFileKind a_Kind);

// Pixel and line as GDAL counts them: (0, 0) is the outer corner of the first pixel, and lines grow downwards.
TPosition PixelOf(const TPixelSystem& a_System, double a_dX, double a_dY);

// The source position of a pixel and a line.
TPosition SourceOf(const TPixelSystem& a_System, double a_dPixel, double a_dLine);

// X = A p + B q + C, Y = D p + E q + F, where p and q count columns and rows.
struct TPixelCoefs
{
    double dA, dB, dC, dD, dE, dF;
};

// The affine transformation with p = q = 0 at a_dCentre pixels, right and down, from the centre of the first pixel:
// 0 for a world file, -1/2 for GDAL.
TPixelCoefs PixelCoefs(const TPixelSystem& a_System, const nuv::TOmographicParams& a_Coefs, double a_dCentre);

// True if all y of a CSV file are negative: then it probably counts them as QGIS does.
bool SeemsToCountUpwards(const TPoints& a_Points);

} // namespace fitpoints

#endif // NUV_FITPOINTS_PIXELS_H
