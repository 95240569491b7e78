// drawing.h: the geometry of the picture, in pixels.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_DRAWING_H
#define NUV_FITPOINTS_DRAWING_H

#include "fit.h"

namespace fitpoints {

// A place or a vector on the canvas, in pixels. The origin is the lower left corner; y goes up.
struct TSpot
{
    double dX, dY;
};

// What a point is drawn as.
enum enumMark
{
    MARK_FITTED,
    MARK_SUSPECT, // a suspected blunder
    MARK_CHECK,   // not fitted
    MARK_DROPPED, // a suspected blunder that is not fitted any more
    MARK_CELL,    // stands for all points of a cell
    MARKS
};

// A point at its given position, and the tip of its residual vector, which leads towards the computed position.
struct TDrawnPoint
{
    TSpot Given, Tip;
    enumMark Mark;
};

struct TDrawnEllipse
{
    TSpot Centre, Major, Minor; // the semi-axes as vectors
};

// A name. A leader line leads to it from its point if it had no room beside it.
struct TDrawnName
{
    std::string szText;
    TSpot Centre;
    bool bLeader;
    TSpot LeaderFrom, LeaderTo;
};

struct TTick
{
    double dAt; // pixels
    std::string szText;
};

struct TAxis
{
    double dLow, dHigh; // the frame, pixels
    std::vector<TTick> vTicks;
    std::string szTitle;
};

struct TDrawing
{
    TSpot Canvas; // its size
    TAxis X, Y;
    std::vector<TDrawnPoint> vPoints;
    std::vector<TDrawnEllipse> vEllipses;
    std::vector<TDrawnName> vNames;
    std::size_t iNamesLeftOut;
    std::size_t iPointsInCells; // 0 if every point is drawn
    bool bDegrees;              // the axes have the aspect of degrees at the latitude of the points
    double dScaleValue;         // the length of residual that the scale bar shows, target units; 0: only rounding
    double dScaleLength;        // the length of the scale bar, pixels
};

// Room that the texts around the frame take, pixels.
const double TITLE_HEIGHT = 46;
const double LEGEND_LINE = 19;

TDrawing MakeDrawing(const TPoints& a_Points, const TFit& a_Fit);

} // namespace fitpoints

#endif // NUV_FITPOINTS_DRAWING_H
