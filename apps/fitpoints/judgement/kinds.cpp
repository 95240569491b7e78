// kinds.cpp: the table of kinds, and the choice by leave-one-out errors.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "internal.h"

#include <math.h>
#include <stddef.h>
#include <stdlib.h>

namespace judgement {

// A poorer kind is taken if its error is at most so many times the least one.
static const double AS_GOOD = 1.05;

// Adds the leave-one-out errors to a row.
static void SummariseLeaveOneOut(int a_iCount, const double* a_vdX, const double* a_vdY, TKindRow& a_Row)
{
    double dSum = 0;
    a_Row.dLeaveGreatest = 0;
    a_Row.iLeaveGreatest = 0;
    for (int i = 0; i < a_iCount; ++i)
    {
        const double dLength = Length(a_vdX[i], a_vdY[i]);
        dSum += dLength * dLength;
        if (dLength > a_Row.dLeaveGreatest || !IsFinite(dLength))
        {
            a_Row.dLeaveGreatest = dLength;
            a_Row.iLeaveGreatest = i;
        }
    }
    a_Row.dLeaveRms = sqrt(dSum / (2.0 * a_iCount));
    a_Row.LeaveReason = IsFinite(dSum) ? REASON_NONE : REASON_DEPENDS_ON_POINT;
}

static void JudgeKind(const TControlPoints& a_Points, const TSupport& a_Support, nuv::enumMethodUsed a_Kind,
                      bool a_bMirrored, const TLeaveArrays& a_Leave, TKindRow& a_Row)
{
    const int n = a_Points.iCount;
    a_Row = TKindRow();
    a_Row.iUnknowns = Unknowns(a_Kind);
    a_Row.iFreedom = Freedom(n, a_Kind);
    a_Row.Reason = a_Support.vReasons[a_Kind];
    if (a_Row.Reason == REASON_NONE)
    {
        a_Row.Reason = FitKind(a_Points, a_Kind, a_bMirrored, a_Row.Fit);
    }
    if (a_Row.Reason != REASON_NONE)
    {
        a_Row.LeaveReason = a_Row.Reason;
        return;
    }
    a_Row.dRms = a_Row.iFreedom > 0 ? sqrt(a_Row.Fit.dSumOfSquares / a_Row.iFreedom) : 0;
    a_Row.LeaveReason = LeaveOneOut(a_Points, a_Row.Fit, a_Leave.vdX, a_Leave.vdY, a_Leave.vdDrops);
    if (a_Row.LeaveReason == REASON_NONE)
    {
        SummariseLeaveOneOut(n, a_Leave.vdX, a_Leave.vdY, a_Row);
    }
}

bool IsLeaveKept(const TKindRow& a_Row)
{
    return a_Row.LeaveReason == REASON_NONE || a_Row.LeaveReason == REASON_DEPENDS_ON_POINT;
}

enumReason JudgeKindsKeeping(const TControlPoints& a_Points, const TSupport& a_Support, bool a_bMirrored,
                             const TLeaveArrays* a_vLeave, TKindRow* a_vRows)
{
    enumReason Reason = REASON_NONE;
    for (int k = 0; k < KINDS && Reason == REASON_NONE; ++k)
    {
        JudgeKind(a_Points, a_Support, static_cast<nuv::enumMethodUsed>(k), a_bMirrored, a_vLeave[k], a_vRows[k]);
        Reason = a_vRows[k].Reason == REASON_NO_MEMORY || a_vRows[k].LeaveReason == REASON_NO_MEMORY ? REASON_NO_MEMORY
                                                                                                     : REASON_NONE;
    }
    return Reason;
}

enumReason JudgeKinds(const TControlPoints& a_Points, const TSupport& a_Support, bool a_bMirrored, TKindRow* a_vRows)
{
    const size_t iCount = static_cast<size_t>(a_Points.iCount > 0 ? a_Points.iCount : 1);
    double* const vdBlock = static_cast<double*>(malloc(LEAVE_ARRAYS * iCount * sizeof(double)));
    const TLeaveArrays Leave = LeaveArrays(vdBlock, a_Points.iCount);
    const TLeaveArrays vLeave[KINDS] = {Leave, Leave, Leave};
    const enumReason Reason =
        vdBlock == NULL ? REASON_NO_MEMORY : JudgeKindsKeeping(a_Points, a_Support, a_bMirrored, vLeave, a_vRows);
    free(vdBlock);
    return Reason;
}

// ---------------------------------------------------------------------------------------------------------------------
// Choice

// The poorest kind that exists, or KINDS.
static int PoorestKind(const TKindRow* a_vRows)
{
    int k = 0;
    while (k < KINDS && a_vRows[k].Reason != REASON_NONE)
    {
        ++k;
    }
    return k;
}

// The judged kind with the least error, or KINDS.
static int LeastErrorKind(const TKindRow* a_vRows)
{
    int iLeast = KINDS;
    for (int k = 0; k < KINDS; ++k)
    {
        if (a_vRows[k].LeaveReason == REASON_NONE &&
            (iLeast == KINDS || a_vRows[k].dLeaveRms < a_vRows[iLeast].dLeaveRms))
        {
            iLeast = k;
        }
    }
    return iLeast;
}

bool ChooseKind(const TKindRow* a_vRows, double a_dRounding, nuv::enumMethodUsed& a_Kind, enumChoice& a_Choice)
{
    const int iLeast = LeastErrorKind(a_vRows);
    int iChosen = iLeast == KINDS ? PoorestKind(a_vRows) : iLeast;
    if (iChosen == KINDS)
    {
        return false;
    }
    for (int k = 0; k < iLeast && iChosen == iLeast && iLeast != KINDS; ++k)
    {
        const double dError = a_vRows[k].dLeaveRms;
        const bool bAsGood = dError <= AS_GOOD * a_vRows[iLeast].dLeaveRms || dError <= a_dRounding;
        iChosen = a_vRows[k].LeaveReason == REASON_NONE && bAsGood ? k : iLeast;
    }
    a_Kind = static_cast<nuv::enumMethodUsed>(iChosen);
    a_Choice = iLeast == KINDS ? CHOICE_NOT_JUDGED : iChosen == iLeast ? CHOICE_LEAST_ERROR : CHOICE_POORER_AS_GOOD;
    return true;
}

} // namespace judgement
