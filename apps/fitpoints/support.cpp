// support.cpp: finds equal points, points on one line, and points without four of which no three are on a line.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "support.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace fitpoints {

// A point counts as lying on a line if its distance from it is at most the greater of two bounds:
// - 3e-8 of the extent of the points. The normal equations of the affine fit contain the squares of the spreads across
//   and along the line. If their ratio is (3e-8)^2, about 1e-15, a double keeps no digit of the spread across. Rounded
//   decimal coordinates are within this bound, too.
// - four units in the last place of the largest coordinate. Rounding to double moves points far from the origin off
//   their line by about this much, however small their extent is.
static const double RELATIVE_TOLERANCE = 3e-8;
static const double ROUNDING_TOLERANCE = 4 * std::numeric_limits<double>::epsilon();

// The conformal fit divides by a sum of squares. If the sum overflowed, the scale would be 0 without an error.
static const double GREATEST_EXTENT = 1e150;

// One side of the control points, source or target.
struct TSide
{
    const std::vector<double>& vdX;
    const std::vector<double>& vdY;
};

static double Distance(const TSide& a_Side, std::size_t i, std::size_t j)
{
    return std::hypot(a_Side.vdX[i] - a_Side.vdX[j], a_Side.vdY[i] - a_Side.vdY[j]);
}

// A line through two different points: one of them, and the unit vector towards the other.
struct TLine
{
    double dX, dY;
    double dUx, dUy;
};

static TLine LineThrough(const TSide& a_Side, std::size_t i, std::size_t j)
{
    const double dLength = Distance(a_Side, i, j);
    return {a_Side.vdX[i], a_Side.vdY[i], (a_Side.vdX[j] - a_Side.vdX[i]) / dLength,
            (a_Side.vdY[j] - a_Side.vdY[i]) / dLength};
}

static double DistanceFromLine(const TSide& a_Side, const TLine& a_Line, std::size_t i)
{
    return std::fabs((a_Side.vdY[i] - a_Line.dY) * a_Line.dUx - (a_Side.vdX[i] - a_Line.dX) * a_Line.dUy);
}

// The index of the point with the greatest a_Measure(index).
template <class TMeasure> std::size_t Greatest(const TSide& a_Side, TMeasure a_Measure)
{
    std::size_t iGreatest = 0;
    double dGreatest = a_Measure(iGreatest);
    for (std::size_t i = 1; i < a_Side.vdX.size(); ++i)
    {
        const double dMeasure = a_Measure(i);
        if (dMeasure > dGreatest)
        {
            dGreatest = dMeasure;
            iGreatest = i;
        }
    }
    return iGreatest;
}

static std::size_t FarthestFromPoint(const TSide& a_Side, std::size_t a_iPoint)
{
    return Greatest(a_Side, [&](std::size_t i) { return Distance(a_Side, i, a_iPoint); });
}

static std::size_t FarthestFromLine(const TSide& a_Side, const TLine& a_Line)
{
    return Greatest(a_Side, [&](std::size_t i) { return DistanceFromLine(a_Side, a_Line, i); });
}

static double LargestCoordinate(const TSide& a_Side)
{
    const auto Magnitude = [&](std::size_t i) { return std::max(std::fabs(a_Side.vdX[i]), std::fabs(a_Side.vdY[i])); };
    return Magnitude(Greatest(a_Side, Magnitude));
}

// A triangle that spans the points: distant points P and Q, and the point R farthest from their line.
struct TSpread
{
    std::size_t iP, iQ, iR;
    double dExtent;    // distance of P and Q, at least half of the greatest distance between two points
    double dTolerance; // a point within this distance of a line counts as on it
    double dAcross;    // distance of R from the line
};

static TSpread FindSpread(const TSide& a_Side)
{
    TSpread Spread = {};
    Spread.iP = FarthestFromPoint(a_Side, 0);
    Spread.iQ = FarthestFromPoint(a_Side, Spread.iP);
    Spread.dExtent = Distance(a_Side, Spread.iP, Spread.iQ);
    Spread.dTolerance = std::max(RELATIVE_TOLERANCE * Spread.dExtent, ROUNDING_TOLERANCE * LargestCoordinate(a_Side));
    if (Spread.dExtent > 0)
    {
        const TLine Line = LineThrough(a_Side, Spread.iP, Spread.iQ);
        Spread.iR = FarthestFromLine(a_Side, Line);
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
    std::size_t iFirst = 0;
    for (std::size_t i = 0; i < a_Side.vdX.size(); ++i)
    {
        if (DistanceFromLine(a_Side, a_Line, i) <= a_dTolerance)
        {
            continue;
        }
        if (bFound && Distance(a_Side, i, iFirst) > a_dTolerance)
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
    const std::size_t viCorners[] = {a_Spread.iP, a_Spread.iQ, a_Spread.iR};
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

static TSpread CheckedSpread(const std::string& a_szFile, const TSide& a_Side, const std::string& a_szSide)
{
    const TSpread Spread = FindSpread(a_Side);
    if (Spread.dExtent == 0)
    {
        Fail(a_szFile, "all " + a_szSide + " points are equal");
    }
    if (!(Spread.dExtent <= GREATEST_EXTENT))
    {
        Fail(a_szFile, "the " + a_szSide + " points are more than 1e150 apart: their squares are beyond a double");
    }
    return Spread;
}

static std::string TooFew(std::size_t a_iCount, nuv::enumMethodUsed a_Kind)
{
    return "only " + Count(a_iCount, "point") + ": the " + KindName(a_Kind) + " kind needs " +
           std::to_string(LeastPoints(a_Kind));
}

TSupport FindSupport(const std::string& a_szFile, const TArrays& a_Points)
{
    const std::size_t iCount = a_Points.vdX.size();
    if (iCount < LeastPoints(nuv::METHOD_CONFORMAL))
    {
        Fail(a_szFile,
             iCount == 0 ? "no points: a transformation needs at least 2" : TooFew(iCount, nuv::METHOD_CONFORMAL));
    }
    const TSide Source = {a_Points.vdX, a_Points.vdY};
    const TSide Target = {a_Points.vdXa, a_Points.vdYa};
    const TSpread SourceSpread = CheckedSpread(a_szFile, Source, "source");
    const TSpread TargetSpread = CheckedSpread(a_szFile, Target, "target");

    const std::string szNoFour = " points, or all but one, lie on one line: the omographic kind needs four of which no "
                                 "three do";
    TSupport Support;
    Support.szNoAffine = iCount < LeastPoints(nuv::METHOD_AFFINE) ? TooFew(iCount, nuv::METHOD_AFFINE)
                         : IsOnOneLine(SourceSpread)              ? "the source points lie on one line"
                         : IsOnOneLine(TargetSpread)              ? "the target points lie on one line"
                                                                  : "";
    Support.szNoOmographic = iCount < LeastPoints(nuv::METHOD_OMOGRAPHIC) ? TooFew(iCount, nuv::METHOD_OMOGRAPHIC)
                             : !Support.szNoAffine.empty()                ? Support.szNoAffine
                             : !HasQuadrangle(Source, SourceSpread)       ? "all source" + szNoFour
                             : !HasQuadrangle(Target, TargetSpread)       ? "all target" + szNoFour
                                                                          : "";
    return Support;
}

const std::string& ReasonAgainst(const TSupport& a_Support, nuv::enumMethodUsed a_Kind)
{
    static const std::string szNone;
    return a_Kind == nuv::METHOD_OMOGRAPHIC ? a_Support.szNoOmographic
           : a_Kind == nuv::METHOD_AFFINE   ? a_Support.szNoAffine
                                            : szNone;
}

std::size_t LeastPoints(nuv::enumMethodUsed a_Kind)
{
    return a_Kind == nuv::METHOD_OMOGRAPHIC ? 4 : a_Kind == nuv::METHOD_AFFINE ? 3 : 2;
}

const char* KindName(nuv::enumMethodUsed a_Kind)
{
    return a_Kind == nuv::METHOD_OMOGRAPHIC ? "omographic" : a_Kind == nuv::METHOD_AFFINE ? "affine" : "conformal";
}

} // namespace fitpoints
