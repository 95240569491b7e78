// kinds.h: fits by the library, and the choice of the kind of transformation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_KINDS_H
#define NUV_FITPOINTS_KINDS_H

#include "frames.h"
#include "support.h"

#include <nuv1math.h>
#include <optional>

namespace fitpoints {

struct TFitOptions
{
    std::optional<nuv::enumMethodUsed> Demanded; // fail unless this kind is possible; without a value the richest kind
    bool bMirrored;                              // the conformal kind reverses the orientation
    bool bRaw;                                   // no local origin
};

// Computed less given.
struct TResidual
{
    double dX, dY;
    double dLength;
};

// A transformation that the library computed, and its residuals.
struct TAttempt
{
    nuv::enumMethodUsed Kind;
    nuv::TOmographicParams Coefs;
    std::vector<TResidual> vResiduals;
    double dSumOfSquares; // not finite if a residual is not
};

// The residuals of points in the frame of the coefficients.
std::vector<TResidual> Residuals(const TArrays& a_Points, const nuv::TOmographicParams& a_Coefs);

double SumOfSquares(const std::vector<TResidual>& a_vResiduals);

// The next poorer kind of the affine and the omographic kind.
nuv::enumMethodUsed Poorer(nuv::enumMethodUsed a_Kind);

// Fits the richest kind up to a_Richest that the library accepts. The points must support that kind. False if there is
// no transformation at all.
bool TryFit(const TArrays& a_Points, bool a_bMirrored, nuv::enumMethodUsed a_Richest, TAttempt& a_Attempt);

// Fits the kind that the options demand, or the richest kind. Adds to a_vszReasons why it is not a richer one. Fails if
// there is no such transformation.
TAttempt ChooseFit(const std::string& a_szFile, const TArrays& a_Points, const TSupport& a_Support,
                   const TFitOptions& a_Options, std::vector<std::string>& a_vszReasons);

} // namespace fitpoints

#endif // NUV_FITPOINTS_KINDS_H
