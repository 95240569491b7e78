// blunders.cpp: searches and tests groups of points without which a fit is much better.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Model      S is the sum of squares of the fit of n points with f degrees of freedom, S_K that without a group K of k
//            points. For normally distributed residuals ((S - S_K)/2k) / (S_K/(f - 2k)) has the distribution
//            F(2k, f - 2k) for any fixed group.
// Method     The probability for the best one of all groups is at most that of a fixed one times their number
//            (Bonferroni). So the search need not be exhaustive for the level to hold. Sizes 1, 2 and 3 get 1/2, 1/4 and
//            1/8 of the level.
// Masking    Two blunders raise the variance by which each of them is measured. A test of single points can then find
//            neither; the test of pairs finds both. A good point can belong to the best group by chance. So each point of
//            a group must be suspect when it is added alone to the points outside the group.
// Source     W. Baarda, A Testing Procedure for Use in Geodetic Networks (1968); A. J. Pope, NOAA Technical Report NOS 65
//            NGS 1 (1976); B. Rosner, Technometrics 25 (1983) 165-172.

#include "internal.h"

#include <math.h>
#include <stddef.h>
#include <stdlib.h>

namespace judgement {

enum
{
    GREATEST_PAIRED = 40,    // up to so many points the search for a pair begins at each of them
    GREATEST_GROUPED = 1000, // among more points two or three blunders cannot hide each other; they are found together
    GREATEST_EXCHANGES = 10  // rounds in which each point of a group is exchanged for a worse one
};

double Variance(double a_dSumOfSquares, int a_iFreedom, double a_dRounding)
{
    const double dLeast = a_dRounding * a_dRounding;
    const double dVariance = a_dSumOfSquares > 0 ? a_dSumOfSquares / a_iFreedom : 0;
    return dVariance > dLeast ? dVariance : dLeast;
}

// The points, their fit, the test, and scratch arrays.
struct TSearch
{
    TControlPoints Points;
    TKindFit Fit;
    double dLevel, dRounding;
    int iLeast;                                        // points that must remain
    TPointSet Others;                                  // the points outside of a group
    bool bNoMemory;                                    // a fit has failed because there is no memory
    int* viLeftOut;                                    // flags of the points of a group
    double* vdLeave;                                   // block of LeaveArrays
    const double* vdDropsOfAll;                        // the drops of the fit of all points, or null
    double vdPairs[GREATEST_PAIRED * GREATEST_PAIRED]; // sums of squares without two points, for FindPair
};

// A group of points, and the sum of squares without them.
struct TCandidate
{
    int iCount;
    int viPoints[GREATEST_GROUP];
    double dSum;
};

static bool AllocateSearch(TSearch& a_Search)
{
    const size_t n = static_cast<size_t>(a_Search.Points.iCount > 0 ? a_Search.Points.iCount : 1);
    const bool bSet = AllocateSet(a_Search.Points.iCount, a_Search.Others);
    a_Search.viLeftOut = static_cast<int*>(calloc(n, sizeof(int)));
    a_Search.vdLeave = static_cast<double*>(malloc(LEAVE_ARRAYS * n * sizeof(double)));
    return bSet && a_Search.viLeftOut != NULL && a_Search.vdLeave != NULL;
}

static void ReleaseSearch(TSearch& a_Search)
{
    ReleaseSet(a_Search.Others);
    free(a_Search.viLeftOut);
    free(a_Search.vdLeave);
}

// Remembers that there was no memory.
static bool Succeeds(TSearch& a_Search, enumReason a_Reason)
{
    a_Search.bNoMemory = a_Search.bNoMemory || a_Reason == REASON_NO_MEMORY;
    return a_Reason == REASON_NONE;
}

// Fits the points outside of the group.
static bool FitWithout(TSearch& a_Search, const TCandidate& a_Group, TKindFit& a_Fit)
{
    for (int k = 0; k < a_Group.iCount; ++k)
    {
        a_Search.viLeftOut[a_Group.viPoints[k]] = 1;
    }
    FillSet(a_Search.Points, a_Search.viLeftOut, a_Search.Others);
    for (int k = 0; k < a_Group.iCount; ++k)
    {
        a_Search.viLeftOut[a_Group.viPoints[k]] = 0;
    }
    if (a_Group.iCount == 0)
    {
        a_Fit = a_Search.Fit;
        return true;
    }
    return Succeeds(a_Search,
                    FitSupported(PointsOf(a_Search.Others), a_Search.Fit.Kind, a_Search.Fit.bMirrored != 0, a_Fit));
}

// The drops of all points outside of the group, or null.
static const double* DropsWithout(TSearch& a_Search, const TCandidate& a_Group, TKindFit& a_Fit)
{
    const TLeaveArrays Leave = LeaveArrays(a_Search.vdLeave, a_Search.Points.iCount);
    if (!FitWithout(a_Search, a_Group, a_Fit))
    {
        return NULL;
    }
    if (a_Group.iCount == 0 && a_Search.vdDropsOfAll != NULL)
    {
        return a_Search.vdDropsOfAll;
    }
    const enumReason Reason = LeaveOneOut(PointsOf(a_Search.Others), a_Fit, Leave.vdX, Leave.vdY, Leave.vdDrops);
    return Succeeds(a_Search, Reason) ? Leave.vdDrops : NULL;
}

// Adds a point to the group. a_dDrop is that from the sum without the group to the sum without the point, too.
static void AddToGroup(int a_iPoint, double a_dSum, double a_dDrop, TCandidate& a_Group)
{
    const double dSum = a_dSum - a_dDrop;
    a_Group.viPoints[a_Group.iCount++] = a_iPoint;
    a_Group.dSum = dSum > 0 ? dSum : 0;
}

// Adds to the group the point without which the sum of squares drops most. The group is unchanged if there is none.
static bool Extend(TSearch& a_Search, TCandidate& a_Group)
{
    TKindFit Fit;
    const double* const vdDrops = DropsWithout(a_Search, a_Group, Fit);
    if (vdDrops == NULL)
    {
        return false;
    }
    int iBest = 0;
    for (int i = 1; i < a_Search.Others.iCount; ++i)
    {
        iBest = vdDrops[i] > vdDrops[iBest] ? i : iBest;
    }
    if (!(vdDrops[iBest] > 0))
    {
        return false;
    }
    AddToGroup(a_Search.Others.viIndex[iBest], Fit.dSumOfSquares, vdDrops[iBest], a_Group);
    return true;
}

static TCandidate Without(const TCandidate& a_Group, int a_iPosition)
{
    TCandidate Result = {0, {0, 0, 0}, 0};
    for (int k = 0; k < a_Group.iCount; ++k)
    {
        if (k != a_iPosition)
        {
            Result.viPoints[Result.iCount++] = a_Group.viPoints[k];
        }
    }
    return Result;
}

// Exchanges single points of the group as long as that lowers the sum of squares. The last point is the one that Extend has
// added, the best one beside the others.
static void Exchange(TSearch& a_Search, TCandidate& a_Group)
{
    bool bChanged = true;
    for (int iRound = 0; bChanged && iRound < GREATEST_EXCHANGES; ++iRound)
    {
        bChanged = false;
        for (int k = 0; k < a_Group.iCount - 1; ++k)
        {
            TCandidate Other = Without(a_Group, k);
            if (Extend(a_Search, Other) && Other.dSum < a_Group.dSum)
            {
                a_Group = Other;
                bChanged = true;
            }
        }
    }
}

// The sum of squares without two points; infinite if the others do not determine the kind. A negative one is not known yet.
static double SumWithoutPair(TSearch& a_Search, int i, int j)
{
    double& dSum = a_Search.vdPairs[i < j ? i * GREATEST_PAIRED + j : j * GREATEST_PAIRED + i];
    if (dSum < 0)
    {
        const TCandidate Pair = {2, {i, j, 0}, 0};
        TKindFit Fit;
        dSum = FitWithout(a_Search, Pair, Fit) ? Fit.dSumOfSquares : HUGE_VAL;
    }
    return dSum;
}

// Extend for a group of one point, with two points left out in a single fit for both of them.
static bool ExtendToPair(TSearch& a_Search, TCandidate& a_Group)
{
    TKindFit Fit;
    int iBest = -1;
    double dGreatest = 0;
    if (!FitWithout(a_Search, a_Group, Fit))
    {
        return false;
    }
    for (int i = 0; i < a_Search.Points.iCount; ++i)
    {
        const double dDrop =
            i != a_Group.viPoints[0] ? Fit.dSumOfSquares - SumWithoutPair(a_Search, i, a_Group.viPoints[0]) : 0;
        iBest = dDrop > dGreatest ? i : iBest;
        dGreatest = dDrop > dGreatest ? dDrop : dGreatest;
    }
    if (iBest >= 0)
    {
        AddToGroup(iBest, Fit.dSumOfSquares, dGreatest, a_Group);
    }
    return iBest >= 0;
}

// The best pair that has a given first point, for every first point. The leave-one-out residuals of the omographic kind
// take a fit for each point, those of the other kinds none.
static bool FindPair(TSearch& a_Search, TCandidate& a_Pair)
{
    bool (*const pExtend)(TSearch&, TCandidate&) = a_Search.Fit.Kind == nuv::METHOD_OMOGRAPHIC ? ExtendToPair : Extend;
    bool bFound = false;
    for (int i = 0; i < GREATEST_PAIRED * GREATEST_PAIRED; ++i)
    {
        a_Search.vdPairs[i] = -1;
    }
    for (int i = 0; i < a_Search.Points.iCount; ++i)
    {
        TCandidate Pair = {1, {i, 0, 0}, 0};
        if (pExtend(a_Search, Pair) && (!bFound || Pair.dSum < a_Pair.dSum))
        {
            a_Pair = Pair;
            bFound = true;
        }
    }
    return bFound;
}

// Makes of the best group of k - 1 points the best one of k points.
static bool Grow(TSearch& a_Search, TCandidate& a_Group)
{
    if (a_Group.iCount == 1 && a_Search.Points.iCount <= GREATEST_PAIRED)
    {
        return FindPair(a_Search, a_Group);
    }
    if (!Extend(a_Search, a_Group))
    {
        return false;
    }
    if (a_Group.iCount > 1)
    {
        Exchange(a_Search, a_Group);
    }
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Test

static double GroupsOf(int a_iPoints, int a_iGroup)
{
    double dGroups = 1;
    for (int k = 0; k < a_iGroup; ++k)
    {
        dGroups *= static_cast<double>(a_iPoints - k) / (k + 1);
    }
    return dGroups;
}

// The probability of a drop of the sum of squares to a_dSum, by the best group of a_iGroup points, times 2^a_iGroup.
static double Probability(const TSearch& a_Search, double a_dDrop, double a_dSum, int a_iFreedom, int a_iGroup)
{
    const double dVariance = Variance(a_dSum, a_iFreedom, a_Search.dRounding);
    const double dF = a_dDrop > 0 ? a_dDrop / (2 * a_iGroup) / dVariance : 0; // all residuals may be 0
    return GroupsOf(a_Search.Points.iCount, a_iGroup) * (1 << a_iGroup) * TailOfF(a_iGroup, a_iFreedom, dF);
}

// The drop of the sum of squares by point k of the group alone, when the others are left out. Negative if it is not suspect.
static double DropOfMember(TSearch& a_Search, const TCandidate& a_Group, int k, int a_iFreedom)
{
    TKindFit Fit;
    if (!FitWithout(a_Search, Without(a_Group, k), Fit))
    {
        return -1;
    }
    const double dDrop = Fit.dSumOfSquares - a_Group.dSum;
    return Probability(a_Search, dDrop, a_Group.dSum, a_iFreedom, 1) <= a_Search.dLevel ? dDrop : -1;
}

// Sorts the members by their drops, the greatest first. False if a member is not suspect by itself.
static bool SortMembers(TSearch& a_Search, TCandidate& a_Group, int a_iFreedom)
{
    double vdDrops[GREATEST_GROUP];
    const TCandidate Group = a_Group;
    for (int k = 0; k < Group.iCount; ++k)
    {
        const double dDrop = DropOfMember(a_Search, Group, k, a_iFreedom);
        if (dDrop < 0)
        {
            return false;
        }
        int iPlace = k;
        for (; iPlace > 0 && vdDrops[iPlace - 1] < dDrop; --iPlace)
        {
            vdDrops[iPlace] = vdDrops[iPlace - 1];
            a_Group.viPoints[iPlace] = a_Group.viPoints[iPlace - 1];
        }
        vdDrops[iPlace] = dDrop;
        a_Group.viPoints[iPlace] = Group.viPoints[k];
    }
    return true;
}

static bool IsSuspect(TSearch& a_Search, TCandidate& a_Group, double& a_dProbability)
{
    TKindFit Fit;
    const int iFreedom = Freedom(a_Search.Points.iCount - a_Group.iCount, a_Search.Fit.Kind);
    if (!FitWithout(a_Search, a_Group, Fit))
    {
        return false;
    }
    a_Group.dSum = Fit.dSumOfSquares;
    const double dDrop = a_Search.Fit.dSumOfSquares - a_Group.dSum;
    a_dProbability = Probability(a_Search, dDrop, a_Group.dSum, iFreedom, a_Group.iCount);
    return a_dProbability <= a_Search.dLevel && SortMembers(a_Search, a_Group, iFreedom);
}

// The smallest group that is suspect.
static void FindSmallestGroup(TSearch& a_Search, TGroup& a_Group)
{
    const int n = a_Search.Points.iCount;
    TCandidate Candidate = {0, {0, 0, 0}, 0};
    for (int k = 1; k <= GREATEST_GROUP && n - k >= a_Search.iLeast && Grow(a_Search, Candidate); ++k)
    {
        double dProbability;
        TCandidate Sorted = Candidate;
        if (IsSuspect(a_Search, Sorted, dProbability))
        {
            a_Group.iCount = k;
            a_Group.dProbability = dProbability;
            for (int j = 0; j < k; ++j)
            {
                a_Group.viPoints[j] = Sorted.viPoints[j];
            }
            return;
        }
    }
}

// All single suspects whose drop is at least a quarter of the greatest one: their residuals are at least half as large. The
// influence of a point on the others is small among many points.
static void FindSingles(TSearch& a_Search, TGroup& a_Group)
{
    const int n = a_Search.Points.iCount;
    const int iFreedom = Freedom(n - 1, a_Search.Fit.Kind);
    const TCandidate None = {0, {0, 0, 0}, 0};
    TCandidate Worst = None;
    TKindFit Fit;
    const double* const vdDrops = Extend(a_Search, Worst) ? DropsWithout(a_Search, None, Fit) : NULL;
    if (vdDrops == NULL)
    {
        return;
    }
    const double dGreatest = vdDrops[Worst.viPoints[0]];
    a_Group.dProbability = Probability(a_Search, dGreatest, Worst.dSum, iFreedom, 1);
    for (int i = 0; i < n && n - a_Group.iCount > a_Search.iLeast; ++i)
    {
        const double dSum = Fit.dSumOfSquares - vdDrops[i];
        if (vdDrops[i] >= dGreatest / 4 && Probability(a_Search, vdDrops[i], dSum, iFreedom, 1) <= a_Search.dLevel)
        {
            a_Group.viPoints[a_Group.iCount++] = i;
        }
    }
}

enumReason FindGroup(const TControlPoints& a_Points, const TKindFit& a_Fit, const double* a_vdDrops, double a_dLevel,
                     double a_dRounding, int a_iLeast, TGroup& a_Group)
{
    TSearch Search;
    Search.Points = a_Points;
    Search.vdDropsOfAll = a_vdDrops;
    Search.Fit = a_Fit;
    Search.dLevel = a_dLevel;
    Search.dRounding = a_dRounding;
    Search.iLeast = a_iLeast;
    Search.bNoMemory = !AllocateSearch(Search);
    a_Group.iCount = 0;
    a_Group.dProbability = 1;
    if (!Search.bNoMemory)
    {
        (a_Points.iCount > GREATEST_GROUPED ? FindSingles : FindSmallestGroup)(Search, a_Group);
    }
    ReleaseSearch(Search);
    return Search.bNoMemory ? REASON_NO_MEMORY : REASON_NONE;
}

// ---------------------------------------------------------------------------------------------------------------------
// All suspects

int LeastRemaining(int a_iCount, nuv::enumMethodUsed a_Kind)
{
    const int iHalf = (a_iCount + 1) / 2;
    const int iLeast = LeastPoints(a_Kind) + 1;
    return iHalf > iLeast ? iHalf : iLeast;
}

// Finds groups until there is none, each among the points that are left.
static enumReason FindGroups(const TControlPoints& a_Points, const TKindFit& a_Fit, double a_dLevel, double a_dRounding,
                             TPointSet& a_Rest, TGroup& a_Group, int* a_viOrder, int& a_iFound)
{
    const int iLeast = LeastRemaining(a_Points.iCount, a_Fit.Kind);
    TKindFit Fit = a_Fit;
    enumReason Reason = REASON_NONE;
    do
    {
        FillSet(a_Points, a_viOrder, a_Rest);
        const TControlPoints Rest = PointsOf(a_Rest);
        Reason = a_iFound > 0 ? FitSupported(Rest, Fit.Kind, Fit.bMirrored != 0, Fit) : REASON_NONE;
        if (Reason != REASON_NONE)
        {
            return Reason == REASON_NO_MEMORY ? Reason : REASON_NONE;
        }
        Reason = FindGroup(Rest, Fit, NULL, a_dLevel, a_dRounding, iLeast, a_Group);
        for (int k = 0; k < a_Group.iCount; ++k)
        {
            a_viOrder[a_Rest.viIndex[a_Group.viPoints[k]]] = ++a_iFound;
        }
    } while (Reason == REASON_NONE && a_Group.iCount > 0);
    return Reason;
}

enumReason FindBlunders(const TControlPoints& a_Points, const TKindFit& a_Fit, double a_dLevel, double a_dRounding,
                        int* a_viOrder, int& a_iFound)
{
    TPointSet Rest;
    TGroup Group = {0, NULL, 1};
    if (a_Points.iCount < LeastPoints(a_Fit.Kind) + 2)
    {
        return REASON_NO_REDUNDANCY;
    }
    enumReason Reason = REASON_NO_MEMORY;
    Group.viPoints = static_cast<int*>(malloc(static_cast<size_t>(a_Points.iCount) * sizeof(int)));
    if (AllocateSet(a_Points.iCount, Rest) && Group.viPoints != NULL)
    {
        a_iFound = 0;
        for (int i = 0; i < a_Points.iCount; ++i)
        {
            a_viOrder[i] = 0;
        }
        Reason = FindGroups(a_Points, a_Fit, a_dLevel, a_dRounding, Rest, Group, a_viOrder, a_iFound);
    }
    ReleaseSet(Rest);
    free(Group.viPoints);
    return Reason;
}

} // namespace judgement
