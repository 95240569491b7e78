// points.h: control points, and reading them from files.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_POINTS_H
#define NUV_FITPOINTS_POINTS_H

#include "input.h"

#include <string>
#include <vector>

namespace fitpoints {

enum enumFileKind
{
    FILE_CSV,  // x,y,X,Y
    FILE_QGIS, // QGIS georeferencer: mapX,mapY,sourceX,sourceY with optional enable,dX,dY,residual
    FILE_GCP   // -gcp pixel line X Y [Z], as the programs of GDAL take control points
};

struct TPoint
{
    std::string szName; // may be empty
    long iLine;         // of the file, from 1
    double dX, dY;      // source
    double dXa, dYa;    // target
    bool bCheck;        // a check point: not fitted, but with a residual
};

struct TPoints
{
    std::string szFile; // for messages
    enumFileKind Kind;
    std::string szCrs;                  // the line of the target system, #CRS...; empty if there is none
    std::vector<std::string> vszUnread; // columns that were not read
    std::vector<TPoint> vPoints;        // in the order of the file, check points included
};

// Four parallel arrays, as the fits take them.
struct TArrays
{
    std::vector<double> vdX, vdY, vdXa, vdYa;
};

// The first line that is no comment tells the kind of the file. Fails with file and line if anything is wrong with it.
TPoints ReadPoints(TInput a_Input);

TArrays Arrays(const std::vector<TPoint>& a_vPoints);

int PointCount(const TArrays& a_Points);

// The name of the point in quotes, or "point <number>, line <line>" if it has none. The index counts from 0.
std::string Label(const std::vector<TPoint>& a_vPoints, std::size_t a_iIndex);

} // namespace fitpoints

#endif // NUV_FITPOINTS_POINTS_H
