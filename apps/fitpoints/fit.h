// fit.h: the transformation of a set of control points: its kind, coefficients, residuals and what is to be said of it.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_FIT_H
#define NUV_FITPOINTS_FIT_H

#include "frames.h"
#include "points.h"

#include <nuv1math.h>
#include <optional>

namespace fitpoints {

struct TFitOptions
{
    std::optional<nuv::enumMethodUsed> Demanded; // this kind or none; without a value the richest one
    bool bMirrored;                              // the conformal kind reverses the orientation
    bool bRaw;                                   // no local origin
};

// Computed less given.
struct TResidual
{
    double dX, dY;
    double dLength;
};

// Scales, skew and rotation in radians. Of the conformal kind dSy is dSx, and 0 is the skew.
struct TShape
{
    double dSx, dSy, dSkew, dRotation;
};

struct TFit
{
    nuv::enumMethodUsed Kind;
    bool bMirrored; // the conformal kind, orientation reversed
    bool bRaw;
    std::vector<std::string> vszNotRicher; // why not a richer kind
    std::vector<std::string> vszWarnings;

    TOrigins Origins;                               // of the frame of the fit; all 0 if raw
    nuv::TOmographicParams Coefs;                   // in the frame of the fit
    std::optional<nuv::TOmographicParams> Original; // in original coordinates, if they exist
    double dFrameDifference;                        // greatest distance of a point's images by Coefs and by Original
    std::optional<TShape> Shape;

    std::vector<TResidual> vResiduals;
    std::size_t iLargest; // index of the largest residual
    double dSumOfSquares;
    int iUnknowns;
    long iFreedom;              // degrees of freedom, 2n - u
    std::optional<double> dRms; // none without redundancy
};

// Computes the transformation. Fails if there is none, or none of the kind that is demanded.
TFit FitPoints(const TPoints& a_Points, const TFitOptions& a_Options);

} // namespace fitpoints

#endif // NUV_FITPOINTS_FIT_H
