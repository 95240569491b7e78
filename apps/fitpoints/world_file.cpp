// world_file.cpp: the world file, which places an image in the target system.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "exports.h"
#include "pixels.h"
#include "text.h"

namespace fitpoints {

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
    const TPixelCoefs W = PixelCoefs(PixelSystem(a_Points.Kind), *a_Fit.Original, 0);
    std::string szText;
    for (const double dValue : {W.dA, W.dD, W.dB, W.dE, W.dC, W.dF})
    {
        szText += Exact(dValue) + "\n";
    }
    return szText;
}

} // namespace fitpoints
