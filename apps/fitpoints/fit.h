// fit.h: the transformation of a set of control points, with all that the reports tell of it.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_FIT_H
#define NUV_FITPOINTS_FIT_H

#include "frames.h"

#include <optional>

namespace fitpoints {

// Computed less given.
struct TResidual
{
    double dX, dY;
    double dLength;
};

using judgement::TShape;

// The fields before Judgement repeat it in the form that most reports need.
struct TFit
{
    nuv::enumMethodUsed Kind;
    bool bMirrored; // of the conformal kind, with reversed orientation
    bool bRaw;
    double dLevel;                         // of the test of blunders; 0 if there was none
    std::vector<std::string> vszNotRicher; // why not a richer kind
    std::vector<std::string> vszWarnings;

    TOrigins Origins;                               // of the frame of the fit; all 0 if bRaw
    nuv::TOmographicParams Coefs;                   // in the frame of the fit
    std::optional<nuv::TOmographicParams> Original; // in original coordinates, if they exist
    double dFrameDifference; // greatest distance between the images of a point by Coefs and by Original
    std::optional<TShape> Shape;

    std::vector<TResidual> vResiduals;
    std::size_t iLargest; // index of the largest residual
    double dSumOfSquares;
    int iUnknowns;
    long iFreedom;              // degrees of freedom, 2n - u
    std::optional<double> dRms; // none without redundancy

    // All that the judgement module tells. vPoints and vResiduals are parallel to TPoints::vPoints: check points and
    // dropped points have residuals, too, but they are neither in iLargest nor in the statistics.
    judgement::TJudgement Judgement;
    std::vector<judgement::TPointJudgement> vPoints;
};

// Fails if there is no transformation, or none of the kind that the options ask for.
TFit FitPoints(const TPoints& a_Points, const judgement::TOptions& a_Options);

} // namespace fitpoints

#endif // NUV_FITPOINTS_FIT_H
