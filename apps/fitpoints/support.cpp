// support.cpp: names of the kinds, and the texts of the judgement module's reasons.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "support.h"
#include "text.h"

namespace fitpoints {

const std::map<std::string, judgement::enumMethod> METHODS = {{"auto", judgement::ASK_AUTO},
                                                              {"richest", judgement::ASK_RICHEST},
                                                              {"conformal", judgement::ASK_CONFORMAL},
                                                              {"affine", judgement::ASK_AFFINE},
                                                              {"omographic", judgement::ASK_OMOGRAPHIC}};

static const std::map<judgement::enumReason, const char*> TEXTS = {
    {judgement::REASON_NO_MEMORY, "not enough memory"},
    {judgement::REASON_SOURCE_EQUAL, "all source points are equal"},
    {judgement::REASON_TARGET_EQUAL, "all target points are equal"},
    {judgement::REASON_SOURCE_TOO_LARGE,
     "the source points are more than 1e150 apart: their squares are beyond a double"},
    {judgement::REASON_TARGET_TOO_LARGE,
     "the target points are more than 1e150 apart: their squares are beyond a double"},
    {judgement::REASON_SOURCE_ON_LINE, "the source points lie on one line"},
    {judgement::REASON_TARGET_ON_LINE, "the target points lie on one line"},
    {judgement::REASON_SOURCE_NO_FOUR, "all source points, or all but one, lie on one line: the omographic kind needs "
                                       "four of which no three do"},
    {judgement::REASON_TARGET_NO_FOUR, "all target points, or all but one, lie on one line: the omographic kind needs "
                                       "four of which no three do"},
    {judgement::REASON_SPREAD_IS_ZERO, "the spread of the source points counts as zero (below about 1e-6)"},
    {judgement::REASON_AFFINE_COLLAPSES, "the affine fit collapses the plane (its determinant counts as zero)"},
    {judgement::REASON_OMOGRAPHIC_UNSOLVABLE, "the equations of the omographic fit cannot be solved"},
    {judgement::REASON_COEFS_NOT_FINITE, "the omographic fit gives coefficients that are not finite"},
    {judgement::REASON_DEPENDS_ON_POINT, "without one of the points the others do not determine it"},
    {judgement::REASON_SINGULAR, "the equations of the fit are singular"}};

const char* KindName(nuv::enumMethodUsed a_Kind)
{
    return a_Kind == nuv::METHOD_OMOGRAPHIC ? "omographic" : a_Kind == nuv::METHOD_AFFINE ? "affine" : "conformal";
}

// "only 3 points: the omographic kind needs 4".
static std::string TooFew(std::size_t a_iPoints, nuv::enumMethodUsed a_Kind, int a_iNeeded, const std::string& a_szWhat)
{
    return "only " + Count(a_iPoints, "point") + ": the " + KindName(a_Kind) + " kind needs " +
           std::to_string(a_iNeeded) + a_szWhat;
}

std::string ReasonText(judgement::enumReason a_Reason, nuv::enumMethodUsed a_Kind, std::size_t a_iPoints)
{
    const int iLeast = judgement::LeastPoints(a_Kind);
    switch (a_Reason)
    {
    case judgement::REASON_TOO_FEW_POINTS:
        return a_iPoints == 0 ? "no points: a transformation needs at least 2" : TooFew(a_iPoints, a_Kind, iLeast, "");
    case judgement::REASON_NO_REDUNDANCY:
        return TooFew(a_iPoints, a_Kind, iLeast + 1, " to be judged");
    case judgement::REASON_RESIDUALS_NOT_FINITE:
        return std::string("the residuals of the ") + KindName(a_Kind) + " fit are not finite";
    default:
        return TEXTS.at(a_Reason);
    }
}

} // namespace fitpoints
