// table.cpp: the points as a CSV file.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "table.h"
#include "rows.h"
#include "text.h"

namespace fitpoints {

// The names of the columns tell how the source coordinates count pixels. Arguments of GDAL's programs have no names:
// they become those of QGIS, which counts from the same corner, with minus the line for y.
std::string PointTable(const TPoints& a_Points)
{
    std::string szText = a_Points.szCrs.empty() ? "" : a_Points.szCrs + "\n";
    szText += a_Points.Kind == FILE_CSV ? "name,x,y,X,Y,check\n" : "name,sourceX,sourceY,mapX,mapY,check\n";
    for (const TPoint& Point : a_Points.vPoints)
    {
        szText += QuotedField(Point.szName, ',');
        for (const double dValue :
             {Point.dX, a_Points.Kind == FILE_GCP ? 0 - Point.dY : Point.dY, Point.dXa, Point.dYa})
        {
            szText += "," + Shortest(dValue);
        }
        szText += Point.bCheck ? ",1\n" : ",0\n";
    }
    return szText;
}

} // namespace fitpoints
