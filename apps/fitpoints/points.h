// points.h: control points, and reading them from two kinds of file.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_POINTS_H
#define NUV_FITPOINTS_POINTS_H

#include <string>
#include <vector>

namespace fitpoints {

enum enumFileKind
{
    FILE_CSV,  // x,y,X,Y with an optional leading name
    FILE_QGIS, // QGIS georeferencer: mapX,mapY,sourceX,sourceY,enable with optional dX,dY,residual
};

struct TPoint
{
    std::string szName; // may be empty
    long iLine;         // line of the file, from 1
    double dX, dY;      // source
    double dXa, dYa;    // target
    bool bCheck;        // a check point: not fitted, but with a residual
};

struct TPoints
{
    std::string szFile;
    enumFileKind Kind;
    std::size_t iSkipped; // points with enable 0, which are left out
    std::vector<TPoint> vPoints;
};

// Four parallel arrays, as the fits take them.
struct TArrays
{
    std::vector<double> vdX, vdY, vdXa, vdYa;
};

// The header line tells the kind of the file. Fails with file and line if anything is wrong with it.
TPoints ReadPoints(const std::string& a_szFile);

TArrays Arrays(const std::vector<TPoint>& a_vPoints);

int PointCount(const TArrays& a_Points);

// The name of the point in quotes, or "point <number>, line <line>" if it has none. The index counts from 0.
std::string Label(const std::vector<TPoint>& a_vPoints, std::size_t a_iIndex);

} // namespace fitpoints

#endif // NUV_FITPOINTS_POINTS_H
