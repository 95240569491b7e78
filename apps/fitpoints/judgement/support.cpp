// support.cpp: finds equal points, points on one line, and points without four of which no three are on a line.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "internal.h"

#include <float.h>
#include <math.h>

namespace judgement {

// A point counts as lying on a line if its distance from it is at most the greater of two bounds:
// - 3e-8 of the extent of the points. The normal equations of the affine fit contain the squares of the spreads across
//   and along the line. If their ratio is (3e-8)^2, about 1e-15, a double keeps no digit of the spread across. Rounded
//   decimal coordinates are within this bound, too.
// - four units in the last place of the largest coordinate. Rounding to double moves points far from the origin off
//   their line by about this much, however small their extent is.
static const double RELATIVE_TOLERANCE = 3e-8;
static const double ROUNDING_TOLERANCE = 4 * DBL_EPSILON;

// The conformal fit divides by a sum of squares. If the sum overflowed, the scale would be 0 without an error.
static const double GREATEST_EXTENT = 1e150;

int LeastPoints(nuv::enumMethodUsed a_Kind)
{
    return a_Kind == nuv::METHOD_OMOGRAPHIC ? 4 : a_Kind == nuv::METHOD_AFFINE ? 3 : 2;
}

int Unknowns(nuv::enumMethodUsed a_Kind)
{
    return 2 * LeastPoints(a_Kind);
}

int Freedom(int a_iCount, nuv::enumMethodUsed a_Kind)
{
    return 2 * a_iCount - Unknowns(a_Kind);
}

// One side of the control points, source or target.
struct TSide
{
    int iCount;
    const double* vdX;
    const double* vdY;
};

// A line through a point with a unit vector.
struct TLine
{
    double dX, dY;
    double dUx, dUy;
};

static double DistanceFromPoint(const TSide& a_Side, const TLine& a_Line, int i)
{
    return Length(a_Side.vdX[i] - a_Line.dX, a_Side.vdY[i] - a_Line.dY);
}

// The distance, or 0 if it is less than a_dLeast.
static double DistanceFromPointBeyond(const TSide& a_Side, const TLine& a_Line, int i, double a_dLeast)
{
    const bool bShorter = IsShorter(a_Side.vdX[i] - a_Line.dX, a_Side.vdY[i] - a_Line.dY, a_dLeast);
    return bShorter ? 0 : DistanceFromPoint(a_Side, a_Line, i);
}

static double DistanceFromLine(const TSide& a_Side, const TLine& a_Line, int i)
{
    return fabs((a_Side.vdY[i] - a_Line.dY) * a_Line.dUx - (a_Side.vdX[i] - a_Line.dX) * a_Line.dUy);
}

static double DistanceFromLineBeyond(const TSide& a_Side, const TLine& a_Line, int i, double /* a_dLeast */)
{
    return DistanceFromLine(a_Side, a_Line, i);
}

// A line that only has a point, for DistanceFromPoint.
static TLine At(const TSide& a_Side, int i)
{
    const TLine Line = {a_Side.vdX[i], a_Side.vdY[i], 0, 0};
    return Line;
}

// The points must be different.
static TLine LineThrough(const TSide& a_Side, int i, int j)
{
    TLine Line = At(a_Side, i);
    const double dLength = DistanceFromPoint(a_Side, Line, j);
    Line.dUx = (a_Side.vdX[j] - a_Side.vdX[i]) / dLength;
    Line.dUy = (a_Side.vdY[j] - a_Side.vdY[i]) / dLength;
    return Line;
}

// The point with the greatest distance. The last argument of a_pDistance is the greatest distance so far.
static int Farthest(const TSide& a_Side, const TLine& a_Line,
                    double (*a_pDistance)(const TSide&, const TLine&, int, double))
{
    int iFarthest = 0;
    double dGreatest = a_pDistance(a_Side, a_Line, 0, 0);
    for (int i = 1; i < a_Side.iCount; ++i)
    {
        const double dDistance = a_pDistance(a_Side, a_Line, i, dGreatest);
        if (dDistance > dGreatest)
        {
            dGreatest = dDistance;
            iFarthest = i;
        }
    }
    return iFarthest;
}

static double LargestCoordinate(const TSide& a_Side)
{
    const double dX = GreatestMagnitude(a_Side.iCount, a_Side.vdX);
    const double dY = GreatestMagnitude(a_Side.iCount, a_Side.vdY);
    return dX > dY ? dX : dY;
}

// A triangle that spans the points: distant points P and Q, and the point R farthest from their line.
struct TSpread
{
    int iP, iQ, iR;
    double dExtent;    // distance of P and Q, at least half of the greatest distance between two points
    double dTolerance; // a point within this distance of a line counts as on it
    double dAcross;    // distance of R from the line
};

static TSpread FindSpread(const TSide& a_Side)
{
    TSpread Spread = {0, 0, 0, 0, 0, 0};
    Spread.iP = Farthest(a_Side, At(a_Side, 0), DistanceFromPointBeyond);
    const TLine P = At(a_Side, Spread.iP);
    Spread.iQ = Farthest(a_Side, P, DistanceFromPointBeyond);
    Spread.dExtent = DistanceFromPoint(a_Side, P, Spread.iQ);
    const double dRelative = RELATIVE_TOLERANCE * Spread.dExtent;
    const double dRounding = ROUNDING_TOLERANCE * LargestCoordinate(a_Side);
    Spread.dTolerance = dRelative > dRounding ? dRelative : dRounding;
    if (Spread.dExtent > 0)
    {
        const TLine Line = LineThrough(a_Side, Spread.iP, Spread.iQ);
        Spread.iR = Farthest(a_Side, Line, DistanceFromLineBeyond);
        Spread.dAcross = DistanceFromLine(a_Side, Line, Spread.iR);
    }
    return Spread;
}

static bool IsOnOneLine(const TSpread& a_Spread)
{
    return a_Spread.dAcross <= a_Spread.dTolerance;
}

// True if two different points are off the line.
static bool HasTwoOffLine(const TSide& a_Side, const TLine& a_Line, double a_dTolerance)
{
    bool bFound = false;
    int iFirst = 0;
    for (int i = 0; i < a_Side.iCount; ++i)
    {
        if (DistanceFromLine(a_Side, a_Line, i) <= a_dTolerance)
        {
            continue;
        }
        if (bFound && DistanceFromPoint(a_Side, At(a_Side, iFirst), i) > a_dTolerance)
        {
            return true;
        }
        iFirst = bFound ? iFirst : i;
        bFound = true;
    }
    return false;
}

// True if there are four points of which no three are on a line. The points must not all be on one line.
//
// There are no such four points exactly if one line contains all points but one, where equal points count once. Such a
// line contains at least two corners of every triangle of points, so it is a side of the triangle PQR. Therefore four
// points exist if there are two different points off each side of the triangle.
static bool HasQuadrangle(const TSide& a_Side, const TSpread& a_Spread)
{
    const int viCorners[3] = {a_Spread.iP, a_Spread.iQ, a_Spread.iR};
    for (int k = 0; k < 3; ++k)
    {
        const TLine Line = LineThrough(a_Side, viCorners[k], viCorners[(k + 1) % 3]);
        if (!HasTwoOffLine(a_Side, Line, a_Spread.dTolerance))
        {
            return false;
        }
    }
    return true;
}

// A side with its spread, and the reasons that it can give.
struct TSideSupport
{
    TSide Side;
    TSpread Spread;
    enumReason Equal, TooLarge, OnLine, NoFour;
};

static enumReason ReasonAgainstAll(const TSideSupport& a_Side)
{
    return a_Side.Spread.dExtent == 0                    ? a_Side.Equal
           : !(a_Side.Spread.dExtent <= GREATEST_EXTENT) ? a_Side.TooLarge
                                                         : REASON_NONE;
}

static enumReason ReasonAgainstAffine(const TSideSupport& a_Side)
{
    return IsOnOneLine(a_Side.Spread) ? a_Side.OnLine : REASON_NONE;
}

static enumReason ReasonAgainstOmographic(const TSideSupport& a_Side)
{
    return HasQuadrangle(a_Side.Side, a_Side.Spread) ? REASON_NONE : a_Side.NoFour;
}

// The reason against a kind: that against the poorer kind, too few points, a reason of the source, one of the target.
static enumReason FirstReason(enumReason a_Poorer, bool a_bTooFew, const TSideSupport& a_Source,
                              const TSideSupport& a_Target, enumReason (*a_pTest)(const TSideSupport&))
{
    if (a_Poorer != REASON_NONE || a_bTooFew)
    {
        return a_bTooFew ? REASON_TOO_FEW_POINTS : a_Poorer;
    }
    const enumReason Reason = a_pTest(a_Source);
    return Reason != REASON_NONE ? Reason : a_pTest(a_Target);
}

void FindSupport(const TControlPoints& a_Points, TSupport& a_Support)
{
    const int n = a_Points.iCount;
    TSideSupport Source = {{n, a_Points.vdX, a_Points.vdY}, {0, 0, 0, 0, 0, 0},    REASON_SOURCE_EQUAL,
                           REASON_SOURCE_TOO_LARGE,         REASON_SOURCE_ON_LINE, REASON_SOURCE_NO_FOUR};
    TSideSupport Target = {{n, a_Points.vdXa, a_Points.vdYa}, {0, 0, 0, 0, 0, 0},    REASON_TARGET_EQUAL,
                           REASON_TARGET_TOO_LARGE,           REASON_TARGET_ON_LINE, REASON_TARGET_NO_FOUR};
    if (n > 0)
    {
        Source.Spread = FindSpread(Source.Side);
        Target.Spread = FindSpread(Target.Side);
    }
    enumReason Reason = REASON_NONE;
    enumReason (*const vpTests[KINDS])(const TSideSupport&) = {ReasonAgainstAll, ReasonAgainstAffine,
                                                               ReasonAgainstOmographic};
    for (int k = 0; k < KINDS; ++k)
    {
        const bool bTooFew = n < LeastPoints(static_cast<nuv::enumMethodUsed>(k));
        Reason = FirstReason(Reason, bTooFew, Source, Target, vpTests[k]);
        a_Support.vReasons[k] = Reason;
    }
}

} // namespace judgement
