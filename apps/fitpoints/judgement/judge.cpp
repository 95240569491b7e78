// judge.cpp: everything in one call: frames, kinds, choice, blunders, covariances, and what is told of each point.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "internal.h"

#include <math.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

namespace judgement {

// The arguments and the scratch memory of Judge.
struct TCase
{
    TControlPoints Points; // all points, as given
    const TOptions* pOptions;
    double dRounding;
    TPointSet Fitted; // the fitted points, in the frame of the fit
    int* viLeftOut;   // 1 for check points, 2 for dropped points; all points
    int* viDropped;   // the order of dropping; all points
    int* viKind;      // the kind under which a point was dropped; all points
    int* viOrder;     // the fitted points that FindWorst has found
    int* viGroup;     // points of a group
    double* vdLeave;  // the block of vLeave
    TLeaveArrays vLeave[KINDS];
};

static void* Memory(int a_iCount, size_t a_iSize)
{
    return calloc(static_cast<size_t>(a_iCount > 0 ? a_iCount : 1), a_iSize);
}

static bool AllocateCase(const TControlPoints& a_Points, const TOptions& a_Options, TCase& a_Case)
{
    const int n = a_Points.iCount;
    const bool bSet = AllocateSet(n, a_Case.Fitted);
    a_Case.Points = a_Points;
    a_Case.pOptions = &a_Options;
    a_Case.dRounding = RoundingLevel(a_Points);
    a_Case.viLeftOut = static_cast<int*>(Memory(n, sizeof(int)));
    a_Case.viDropped = static_cast<int*>(Memory(n, sizeof(int)));
    a_Case.viKind = static_cast<int*>(Memory(n, sizeof(int)));
    a_Case.viOrder = static_cast<int*>(Memory(n, sizeof(int)));
    a_Case.viGroup = static_cast<int*>(Memory(n, sizeof(int)));
    a_Case.vdLeave = static_cast<double*>(Memory(n, KINDS * LEAVE_ARRAYS * sizeof(double)));
    for (int k = 0; k < KINDS; ++k)
    {
        a_Case.vLeave[k] = LeaveArrays(a_Case.vdLeave + static_cast<ptrdiff_t>(k) * LEAVE_ARRAYS * n, n);
    }
    return bSet && a_Case.viLeftOut != NULL && a_Case.viDropped != NULL && a_Case.viKind != NULL &&
           a_Case.viOrder != NULL && a_Case.viGroup != NULL && a_Case.vdLeave != NULL;
}

static void ReleaseCase(TCase& a_Case)
{
    ReleaseSet(a_Case.Fitted);
    free(a_Case.viLeftOut);
    free(a_Case.viDropped);
    free(a_Case.viKind);
    free(a_Case.viOrder);
    free(a_Case.viGroup);
    free(a_Case.vdLeave);
}

// ---------------------------------------------------------------------------------------------------------------------
// Choice of the kind

// The richest kind that exists, or KINDS.
static int RichestKind(const TKindRow* a_vRows)
{
    for (int k = KINDS - 1; k >= 0; --k)
    {
        if (a_vRows[k].Reason == REASON_NONE)
        {
            return k;
        }
    }
    return KINDS;
}

static enumReason TakeKind(const TCase& a_Case, TJudgement& a_Result)
{
    const enumMethod Method = a_Case.pOptions->Method;
    nuv::enumMethodUsed Kind = nuv::METHOD_CONFORMAL;
    if (Method == ASK_AUTO)
    {
        if (!ChooseKind(a_Result.vKinds, a_Case.dRounding, Kind, a_Result.Choice))
        {
            return a_Result.vKinds[nuv::METHOD_CONFORMAL].Reason;
        }
    }
    else
    {
        const int iRichest = RichestKind(a_Result.vKinds);
        const int iKind = Method != ASK_RICHEST ? Method : iRichest == KINDS ? nuv::METHOD_CONFORMAL : iRichest;
        Kind = static_cast<nuv::enumMethodUsed>(iKind);
        a_Result.Choice = Method == ASK_RICHEST ? CHOICE_RICHEST : CHOICE_ASKED;
    }
    a_Result.Fit = a_Result.vKinds[Kind].Fit;
    return a_Result.vKinds[Kind].Reason;
}

// Fits the points that are not left out.
static enumReason FitCase(TCase& a_Case, TJudgement& a_Result)
{
    FillSet(a_Case.Points, a_Case.viLeftOut, a_Case.Fitted);
    FindSupport(PointsOf(a_Case.Fitted), a_Result.Support);
    if (a_Result.Support.vReasons[nuv::METHOD_CONFORMAL] != REASON_NONE)
    {
        return a_Result.Support.vReasons[nuv::METHOD_CONFORMAL];
    }
    memset(&a_Result.Origins, 0, sizeof a_Result.Origins);
    if (!a_Case.pOptions->bRaw)
    {
        FindOrigins(PointsOf(a_Case.Fitted), a_Result.Origins);
        ReduceSet(a_Result.Origins, a_Case.Fitted);
    }
    const enumReason Reason = JudgeKindsKeeping(PointsOf(a_Case.Fitted), a_Result.Support,
                                                a_Case.pOptions->bMirrored != 0, a_Case.vLeave, a_Result.vKinds);
    return Reason != REASON_NONE ? Reason : TakeKind(a_Case, a_Result);
}

// ---------------------------------------------------------------------------------------------------------------------
// Blunders

// The level of one kind: the test is made under the fit's kind and all richer ones that exist.
static double LevelOfOneKind(const TCase& a_Case, const TJudgement& a_Result)
{
    int iKinds = 0;
    for (int k = a_Result.Fit.Kind; k < KINDS; ++k)
    {
        iKinds += a_Result.vKinds[k].Reason == REASON_NONE ? 1 : 0;
    }
    return a_Case.pOptions->dLevel / iKinds;
}

// The drops of a kind, or null.
static const double* DropsOf(const TCase& a_Case, const TKindRow& a_Row)
{
    return IsLeaveKept(a_Row) ? a_Case.vLeave[a_Row.Fit.Kind].vdDrops : NULL;
}

// Leaves out the worst suspects: one, or many of very many points.
static void Drop(TCase& a_Case, int a_iFound, int a_iKind, TJudgement& a_Result)
{
    for (int j = 0; j < a_iFound; ++j)
    {
        const int i = a_Case.Fitted.viIndex[a_Case.viOrder[j]];
        a_Case.viLeftOut[i] = 2;
        a_Case.viDropped[i] = ++a_Result.iDropped;
        a_Case.viKind[i] = a_iKind;
    }
}

// Finds the group that is most significant under any kind. Its points go to viOrder. Of a group of up to three points only
// the worst one counts: the others are found again, if they are suspect then.
static enumReason FindWorst(TCase& a_Case, const TJudgement& a_Result, int& a_iFound, int& a_iKind)
{
    const double dLevel = LevelOfOneKind(a_Case, a_Result);
    double dLeast = 1;
    a_iFound = 0;
    for (int k = a_Result.Fit.Kind; k < KINDS; ++k)
    {
        const TKindRow& Row = a_Result.vKinds[k];
        if (Row.Reason != REASON_NONE)
        {
            continue;
        }
        const int iFirst = a_Case.Fitted.iCount + a_Result.iDropped;
        TGroup Group = {0, a_Case.viGroup, 1};
        const enumReason Reason = FindGroup(PointsOf(a_Case.Fitted), Row.Fit, DropsOf(a_Case, Row), dLevel,
                                            a_Case.dRounding, LeastRemaining(iFirst, Row.Fit.Kind), Group);
        if (Reason != REASON_NONE)
        {
            return Reason;
        }
        if (Group.iCount > 0 && (a_iFound == 0 || Group.dProbability < dLeast))
        {
            dLeast = Group.dProbability;
            a_iKind = k;
            a_iFound = Group.iCount > GREATEST_GROUP ? Group.iCount : 1;
            memcpy(a_Case.viOrder, Group.viPoints, static_cast<size_t>(a_iFound) * sizeof(int));
        }
    }
    return REASON_NONE;
}

static enumReason DropBlunders(TCase& a_Case, TJudgement& a_Result)
{
    enumReason Reason = REASON_NONE;
    int iFound = 1;
    int iKind = nuv::METHOD_CONFORMAL;
    while (Reason == REASON_NONE && iFound > 0)
    {
        Reason = FindWorst(a_Case, a_Result, iFound, iKind);
        if (Reason == REASON_NONE && iFound > 0)
        {
            Drop(a_Case, iFound, iKind, a_Result);
            Reason = FitCase(a_Case, a_Result);
        }
    }
    return Reason;
}

// True if the last search of DropBlunders was free to take a group of any size. It has found none, so there is none.
static bool IsSearched(const TCase& a_Case, const TJudgement& a_Result)
{
    const int n = a_Case.Fitted.iCount;
    return a_Case.pOptions->bRobust &&
           n - GREATEST_GROUP >= LeastRemaining(n + a_Result.iDropped, nuv::METHOD_OMOGRAPHIC);
}

// Marks what DropBlunders would drop. It may also change the kind: the blunders may be why this one was taken, and under it
// good points would be suspect for its misfit. The fit of a_Result stays; that of a_Case does not.
static enumReason FindSuspects(TCase& a_Case, TJudgement& a_Result, TPointJudgement* a_vPoints)
{
    TJudgement Search = a_Result;
    Search.iDropped = 0;
    const enumReason Reason = DropBlunders(a_Case, Search);
    for (int i = 0; i < a_Case.Points.iCount; ++i)
    {
        TPointJudgement& Point = a_vPoints[i];
        if (Point.Role == ROLE_FITTED && a_Case.viLeftOut[i] != 0)
        {
            Point.bSuspect = 1;
            Point.SuspectKind = static_cast<nuv::enumMethodUsed>(a_Case.viKind[i]);
            ++a_Result.iSuspects;
        }
    }
    return Reason == REASON_NO_MEMORY ? Reason : REASON_NONE;
}

// ---------------------------------------------------------------------------------------------------------------------
// Points

static void AddResidual(const TControlPoints& a_Points, int i, const TJudgement& a_Result, TPointJudgement& a_Point)
{
    const TOrigins& O = a_Result.Origins;
    const TOrigins None = {0, 0, 0, 0};
    const TVector Source = {a_Points.vdX[i] - O.dX, a_Points.vdY[i] - O.dY};
    const TVector Target = {a_Points.vdXa[i] - O.dXa, a_Points.vdYa[i] - O.dYa};
    const TVector Image = ImageOf(a_Result.Fit.Coefs, Source.dX, Source.dY);
    TVector Back;
    a_Point.dX = Image.dX - Target.dX;
    a_Point.dY = Image.dY - Target.dY;
    a_Point.dLength = Length(a_Point.dX, a_Point.dY);
    if (InversePoint(a_Result.Fit.Coefs, None, Target, Back) == REASON_NONE)
    {
        a_Point.bSource = 1;
        a_Point.dSourceX = Back.dX - Source.dX;
        a_Point.dSourceY = Back.dY - Source.dY;
    }
}

static void AddAllResiduals(const TCase& a_Case, TJudgement& a_Result, TPointJudgement* a_vPoints)
{
    double dCheckSum = 0;
    memset(a_vPoints, 0, static_cast<size_t>(a_Case.Points.iCount) * sizeof *a_vPoints);
    for (int i = 0; i < a_Case.Points.iCount; ++i)
    {
        TPointJudgement& Point = a_vPoints[i];
        AddResidual(a_Case.Points, i, a_Result, Point);
        Point.Role = static_cast<enumRole>(a_Case.viLeftOut[i]);
        Point.iDropped = a_Case.viDropped[i];
        Point.bSuspect = Point.Role == ROLE_DROPPED ? 1 : 0;
        Point.SuspectKind = static_cast<nuv::enumMethodUsed>(Point.bSuspect ? a_Case.viKind[i] : a_Result.Fit.Kind);
        if (Point.Role == ROLE_CHECK)
        {
            ++a_Result.iChecks;
            dCheckSum += Point.dX * Point.dX + Point.dY * Point.dY;
        }
    }
    a_Result.dCheckRms = a_Result.iChecks > 0 ? sqrt(dCheckSum / (2.0 * a_Result.iChecks)) : 0;
}

// The test of one point: its drop over the variance of all points, and of the others.
static void AddTest(const TCase& a_Case, const TJudgement& a_Result, double a_dDrop, TPointJudgement& a_Point)
{
    const int iFreedom = a_Result.iFreedom;
    if (iFreedom < 4)
    {
        return; // two degrees of freedom belong to the point itself
    }
    const double dSum = a_Result.Fit.dSumOfSquares;
    const double dAll = Variance(dSum, iFreedom, a_Case.dRounding);
    const double dOthers = Variance(dSum - a_dDrop, iFreedom - 2, a_Case.dRounding);
    const double dF = a_dDrop > 0 ? a_dDrop / 2 / dOthers : 0;
    a_Point.bTested = 1;
    a_Point.dStandardised = a_dDrop > 0 ? sqrt(a_dDrop / 2 / dAll) : 0;
    a_Point.dStudentised = sqrt(dF);
    a_Point.dProbability = TailOfF(1, iFreedom - 2, dF);
}

static void AddLeaveOneOut(const TCase& a_Case, const TJudgement& a_Result, TPointJudgement* a_vPoints)
{
    const TLeaveArrays& Leave = a_Case.vLeave[a_Result.Fit.Kind];
    for (int j = 0; j < a_Case.Fitted.iCount && IsLeaveKept(a_Result.vKinds[a_Result.Fit.Kind]); ++j)
    {
        TPointJudgement& Point = a_vPoints[a_Case.Fitted.viIndex[j]];
        const double dLength = Length(Leave.vdX[j], Leave.vdY[j]);
        if (IsFinite(dLength))
        {
            Point.bLeave = 1;
            Point.dLeaveX = Leave.vdX[j];
            Point.dLeaveY = Leave.vdY[j];
            Point.dLeaveLength = dLength;
            AddTest(a_Case, a_Result, Leave.vdDrops[j], Point);
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Statistics

static double FrameDifference(const TCase& a_Case, const TJudgement& a_Result)
{
    const TOrigins& O = a_Result.Origins;
    const TControlPoints Local = PointsOf(a_Case.Fitted);
    double dGreatest = 0;
    for (int j = 0; j < Local.iCount; ++j)
    {
        const int i = a_Case.Fitted.viIndex[j];
        const TVector Given = ImageOf(a_Result.Original, a_Case.Points.vdX[i], a_Case.Points.vdY[i]);
        const TVector Reduced = ImageOf(a_Result.Fit.Coefs, Local.vdX[j], Local.vdY[j]);
        const double dDifference = Length((Given.dX - O.dXa) - Reduced.dX, (Given.dY - O.dYa) - Reduced.dY);
        dGreatest = dDifference > dGreatest || !IsFinite(dDifference) ? dDifference : dGreatest;
    }
    return dGreatest;
}

// Rounding can take a point to infinity. There are no coefficients in original coordinates then.
static void AddOriginalFrame(const TCase& a_Case, TJudgement& a_Result)
{
    a_Result.dFrameDifference = 0;
    a_Result.Original = a_Result.Fit.Coefs;
    a_Result.bOriginal = 1;
    if (!a_Case.pOptions->bRaw)
    {
        a_Result.bOriginal = ToOriginalFrame(a_Result.Fit.Coefs, a_Result.Origins, a_Result.Original) ? 1 : 0;
        a_Result.dFrameDifference = a_Result.bOriginal ? FrameDifference(a_Case, a_Result) : 0;
        a_Result.bOriginal = a_Result.bOriginal && IsFinite(a_Result.dFrameDifference) ? 1 : 0;
    }
}

static void AddCovariances(const TCase& a_Case, TJudgement& a_Result)
{
    a_Result.bSigma =
        CovarianceOfCoefs(PointsOf(a_Case.Fitted), a_Result.Fit, a_Result.Covariance) == REASON_NONE ? 1 : 0;
    if (a_Result.bSigma && a_Result.bOriginal)
    {
        CovarianceInOriginalFrame(a_Result.Covariance, a_Result.Fit.Coefs, a_Result.Origins, a_Result.Original,
                                  a_Result.OriginalCovariance);
    }
    FindShape(a_Result.Fit, a_Result.bSigma ? &a_Result.Covariance : NULL, a_Result.Shape);
}

static void AddStatistics(const TCase& a_Case, const TPointJudgement* a_vPoints, TJudgement& a_Result)
{
    a_Result.iLargest = a_Case.Fitted.viIndex[0];
    for (int j = 1; j < a_Case.Fitted.iCount; ++j)
    {
        const int i = a_Case.Fitted.viIndex[j];
        a_Result.iLargest = a_vPoints[i].dLength > a_vPoints[a_Result.iLargest].dLength ? i : a_Result.iLargest;
    }
    for (int k = 0; k < KINDS; ++k) // from the index in the fitted points to that in all points
    {
        a_Result.vKinds[k].iLeaveGreatest = a_Case.Fitted.viIndex[a_Result.vKinds[k].iLeaveGreatest];
    }
    AddOriginalFrame(a_Case, a_Result);
    AddCovariances(a_Case, a_Result);
}

static enumReason JudgeCase(TCase& a_Case, TJudgement& a_Result, TPointJudgement* a_vPoints)
{
    const TOptions& Options = *a_Case.pOptions;
    enumReason Reason = FitCase(a_Case, a_Result);
    if (Reason == REASON_NONE && Options.bRobust && Options.dLevel > 0)
    {
        Reason = DropBlunders(a_Case, a_Result);
    }
    if (Reason != REASON_NONE)
    {
        return Reason;
    }
    a_Result.iFitted = a_Case.Fitted.iCount;
    a_Result.iUnknowns = Unknowns(a_Result.Fit.Kind);
    a_Result.iFreedom = Freedom(a_Result.iFitted, a_Result.Fit.Kind);
    a_Result.dRms = a_Result.vKinds[a_Result.Fit.Kind].dRms;
    AddAllResiduals(a_Case, a_Result, a_vPoints);
    AddStatistics(a_Case, a_vPoints, a_Result);
    AddLeaveOneOut(a_Case, a_Result, a_vPoints);
    return Options.dLevel > 0 && !IsSearched(a_Case, a_Result) ? FindSuspects(a_Case, a_Result, a_vPoints)
                                                               : REASON_NONE;
}

enumReason Judge(const TControlPoints& a_Points, const enumRole* a_pRoles, const TOptions& a_Options,
                 TJudgement& a_Result, TPointJudgement* a_vPoints)
{
    TCase Case;
    enumReason Reason = REASON_NO_MEMORY;
    memset(&a_Result, 0, sizeof a_Result);
    if (AllocateCase(a_Points, a_Options, Case))
    {
        for (int i = 0; i < a_Points.iCount && a_pRoles != NULL; ++i)
        {
            Case.viLeftOut[i] = a_pRoles[i] == ROLE_FITTED ? 0 : 1;
        }
        Reason = JudgeCase(Case, a_Result, a_vPoints);
    }
    ReleaseCase(Case);
    return Reason;
}

} // namespace judgement
