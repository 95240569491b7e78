// world_file.cpp: the world file, which places an image in the target system.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "world_file.h"
#include "text.h"

namespace fitpoints {

// X = A column + B row + C, Y = D column + E row + F for the centres of pixels.
struct TWorld
{
    double dA, dB, dC, dD, dE, dF;
};

// A georeferencer file counts from the outer corner of the first pixel, with y upwards: x = column + 1/2 and
// y = -(row + 1/2) at the centre of a pixel.
static TWorld OfPixelCentres(const nuv::TOmographicParams& a_Coefs)
{
    return {a_Coefs.dA, -a_Coefs.dB, a_Coefs.dC + 0.5 * a_Coefs.dA - 0.5 * a_Coefs.dB,
            a_Coefs.dD, -a_Coefs.dE, a_Coefs.dF + 0.5 * a_Coefs.dD - 0.5 * a_Coefs.dE};
}

std::string WorldFile(const TPoints& a_Points, const TFit& a_Fit)
{
    if (a_Fit.Kind == nuv::METHOD_OMOGRAPHIC)
    {
        Fail(a_Points.szFile,
             "a world file cannot hold an omographic transformation: add --method affine or --method conformal");
    }
    if (!a_Fit.Original)
    {
        Fail(a_Points.szFile, "no world file: the coefficients are not finite in original coordinates");
    }
    const nuv::TOmographicParams& C = *a_Fit.Original;
    const TWorld W = a_Points.Kind == FILE_QGIS ? OfPixelCentres(C) : TWorld{C.dA, C.dB, C.dC, C.dD, C.dE, C.dF};
    std::string szText;
    for (const double dValue : {W.dA, W.dD, W.dB, W.dE, W.dC, W.dF})
    {
        szText += Exact(dValue) + "\n";
    }
    return szText;
}

} // namespace fitpoints
