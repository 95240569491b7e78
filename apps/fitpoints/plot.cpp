// plot.cpp: draws points and residual vectors: makes the script for gnuplot and runs it.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "plot.h"
#include "child_process.h"
#include "support.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <strings.h>
#include <unistd.h>

namespace fitpoints {

static const std::size_t GREATEST_LABELLED = 100; // if there are more points, their names are left out
static const double LONGEST_VECTOR = 1.0 / 8;     // in extents of the points

enumPlotKind PlotKind(const std::string& a_szName)
{
    const auto EndsWith = [&](const std::string& a_szEnd)
    {
        return a_szName.size() > a_szEnd.size() &&
               strcasecmp(a_szName.c_str() + a_szName.size() - a_szEnd.size(), a_szEnd.c_str()) == 0;
    };
    if (!EndsWith(".svg") && !EndsWith(".png"))
    {
        Fail("--plot", Quoted(a_szName) + " ends neither in .svg nor in .png");
    }
    return EndsWith(".svg") ? PLOT_SVG : PLOT_PNG;
}

// A point as it is drawn: its computed position, and the enlarged vector from there towards the given position.
struct TArrow
{
    double dX, dY;
    double dDx, dDy;
};

struct TRange
{
    double dLow, dHigh;
};

struct TDrawing
{
    TPosition Offset; // subtracted from the coordinates
    double dFactor;   // enlargement of the residuals; 0 if they are only rounding
    std::vector<TArrow> vArrows;
    TRange X, Y;
};

// The greatest number that is not above the value and is 1, 2 or 5 times a power of ten.
static double RoundBelow(double a_dValue)
{
    const double dPower = std::pow(10.0, std::floor(std::log10(a_dValue)));
    const double dDigit = a_dValue / dPower;
    return (dDigit >= 5 ? 5 : dDigit >= 2 ? 2 : 1) * dPower;
}

// Tick labels of more than five digits would overlap, so the axes then count from a local origin.
static TPosition AxisOffset(const TArrays& a_Points)
{
    const double dLargest = std::max(Magnitude(a_Points.vdXa), Magnitude(a_Points.vdYa));
    const double dExtent = std::max(Extent(a_Points.vdXa), Extent(a_Points.vdYa));
    const TOrigins Origins = LocalOrigins(a_Points);
    return dLargest < 1e5 && dLargest < 1000 * dExtent ? TPosition{0, 0} : TPosition{Origins.dXa, Origins.dYa};
}

static double EnlargementFactor(const TArrays& a_Points, const TFit& a_Fit)
{
    const double dLargest = a_Fit.vResiduals[a_Fit.iLargest].dLength;
    const double dExtent = std::max(Extent(a_Points.vdXa), Extent(a_Points.vdYa));
    return dLargest <= RoundingLevel(a_Points) ? 0 : RoundBelow(dExtent * LONGEST_VECTOR / dLargest);
}

static void Include(double a_dValue, TRange& a_Range)
{
    a_Range.dLow = std::min(a_Range.dLow, a_dValue);
    a_Range.dHigh = std::max(a_Range.dHigh, a_dValue);
}

static double Width(const TRange& a_Range)
{
    return a_Range.dHigh - a_Range.dLow;
}

static void Widen(double a_dBy, TRange& a_Range)
{
    a_Range.dLow -= a_dBy;
    a_Range.dHigh += a_dBy;
}

// Makes the ranges contain all arrows with a margin, and gives the picture a moderate aspect ratio.
static void FindRanges(TDrawing& a_Drawing)
{
    const TArrow& First = a_Drawing.vArrows[0];
    a_Drawing.X = {First.dX, First.dX};
    a_Drawing.Y = {First.dY, First.dY};
    for (const TArrow& Arrow : a_Drawing.vArrows)
    {
        Include(Arrow.dX, a_Drawing.X);
        Include(Arrow.dX + Arrow.dDx, a_Drawing.X);
        Include(Arrow.dY, a_Drawing.Y);
        Include(Arrow.dY + Arrow.dDy, a_Drawing.Y);
    }
    const double dMargin = 0.1 * std::max(Width(a_Drawing.X), Width(a_Drawing.Y));
    Widen(1.3 * dMargin, a_Drawing.X); // names are wider than high
    Widen(dMargin, a_Drawing.Y);
    const double dAspect = 1.4;
    Widen(std::max(0.0, Width(a_Drawing.Y) - Width(a_Drawing.X)) / 2, a_Drawing.X);
    Widen(std::max(0.0, Width(a_Drawing.X) / dAspect - Width(a_Drawing.Y)) / 2, a_Drawing.Y);
}

static TDrawing Drawing(const TPoints& a_Points, const TFit& a_Fit)
{
    const TArrays Given = Arrays(a_Points.vPoints);
    TDrawing Result = {AxisOffset(Given), EnlargementFactor(Given, a_Fit), {}, {}, {}};
    for (std::size_t i = 0; i < a_Fit.vResiduals.size(); ++i)
    {
        const TResidual& R = a_Fit.vResiduals[i];
        Result.vArrows.push_back({Given.vdXa[i] - Result.Offset.dXa + R.dX, Given.vdYa[i] - Result.Offset.dYa + R.dY,
                                  -R.dX * Result.dFactor, -R.dY * Result.dFactor});
    }
    FindRanges(Result);
    return Result;
}

// ---------------------------------------------------------------------------------------------------------------------
// The script

// A string in single quotes for gnuplot, which treats nothing as special there but the quote. It does not understand a
// doubled quote at the beginning of a string. So a typographic apostrophe replaces the quote in a text of the user.
static std::string Literal(const std::string& a_szText)
{
    std::string szLiteral = "'";
    for (const char iChar : a_szText)
    {
        szLiteral += iChar == '\'' ? "\xE2\x80\x99" : std::string(1, iChar);
    }
    return szLiteral + "'";
}

static std::string Terminal(enumPlotKind a_Kind)
{
    return a_Kind == PLOT_SVG ? "set terminal svg size 960,720 noenhanced font 'sans-serif,15' background rgb 'white'\n"
                              : "set terminal pngcairo size 960,720 noenhanced font 'sans,12' background rgb 'white'\n";
}

static std::string AxisLabel(const char* a_szName, double a_dOffset)
{
    const std::string szShift = Shortest(std::fabs(a_dOffset));
    return std::string(a_szName) + (a_dOffset == 0 ? "" : (a_dOffset < 0 ? " + " : " - ") + szShift) +
           " (target units)";
}

static std::string Axis(const std::string& a_szAxis, const std::string& a_szLabel, const TRange& a_Range,
                        double a_dTick)
{
    return "set " + a_szAxis + "label " + Literal(a_szLabel) + "\nset " + a_szAxis + "range [" + Exact(a_Range.dLow) +
           ":" + Exact(a_Range.dHigh) + "]\nset " + a_szAxis + "tics " + Exact(a_dTick) + "\n";
}

// The title has the name of the file without its directory. A name that is not UTF-8 is left out.
static std::string TitleOf(const TPoints& a_Points, const TFit& a_Fit)
{
    const std::string szFile = OneLine(a_Points.szFile.substr(a_Points.szFile.rfind('/') + 1));
    return (IsPlainUtf8(szFile) ? szFile + ": " : "") + KindName(a_Fit.Kind) +
           (a_Fit.bMirrored ? " fit, orientation reversed, " : " fit, ") + Count(a_Points.vPoints.size(), "point") +
           (a_Fit.dRms ? ", RMS " + Brief(*a_Fit.dRms) : ", no redundancy");
}

static std::string VectorTitle(const TFit& a_Fit, double a_dFactor)
{
    return "residual vectors, computed to given, enlarged " + Number("%.12g", a_dFactor) + " times (longest " +
           Brief(a_Fit.vResiduals[a_Fit.iLargest].dLength) + ")";
}

// A name stands above its point if the arrow goes down, and below it otherwise.
static std::string Names(const TPoints& a_Points, const TDrawing& a_Drawing)
{
    std::string szScript;
    for (std::size_t i = 0; i < a_Points.vPoints.size() && a_Points.vPoints.size() <= GREATEST_LABELLED; ++i)
    {
        const std::string& szName = a_Points.vPoints[i].szName;
        const TArrow& Arrow = a_Drawing.vArrows[i];
        szScript += "set label " + Literal(szName.empty() ? std::to_string(i + 1) : szName) + " at " + Exact(Arrow.dX) +
                    "," + Exact(Arrow.dY) + " center noenhanced front offset character 0," +
                    (Arrow.dDy > 0 ? "-0.9" : "0.9") + " textcolor rgb '#303030'\n";
    }
    return szScript;
}

static std::string Data(const TDrawing& a_Drawing)
{
    std::string szData = "$ARROWS << END\n";
    for (const TArrow& Arrow : a_Drawing.vArrows)
    {
        szData += Exact(Arrow.dX) + " " + Exact(Arrow.dY) + " " + Exact(Arrow.dDx) + " " + Exact(Arrow.dDy) + "\n";
    }
    return szData + "END\n";
}

std::string PlotScript(const TPoints& a_Points, const TFit& a_Fit, enumPlotKind a_Kind)
{
    const TDrawing Picture = Drawing(a_Points, a_Fit);
    const double dTick = RoundBelow(std::max(Width(Picture.X), Width(Picture.Y)) / 5);
    const std::string szArrows =
        Picture.dFactor == 0 ? "NaN with lines linecolor rgb '#c0392b' title "
                               "'no residual vectors: the residuals are rounding only'"
                             : "$ARROWS using 1:2:3:4 with vectors head filled size screen 0.014,18 linewidth 1.8 "
                               "linecolor rgb '#c0392b' title " +
                                   Literal(VectorTitle(a_Fit, Picture.dFactor));
    return "set encoding utf8\n" + Terminal(a_Kind) + "set title " + Literal(TitleOf(a_Points, a_Fit)) + "\n" +
           "set size ratio -1\nset format '%g'\nset tics out nomirror\nset border linecolor rgb '#606060'\n"
           "set grid linecolor rgb '#e0e0e0' linetype 1\n"
           "set key outside bottom center vertical Left reverse\nset bmargin 6.5\n" +
           Axis("x", AxisLabel("X", Picture.Offset.dXa), Picture.X, dTick) +
           Axis("y", AxisLabel("Y", Picture.Offset.dYa), Picture.Y, dTick) + Names(a_Points, Picture) + Data(Picture) +
           "plot " + szArrows +
           ", $ARROWS using 1:2 with points pointtype 7 pointsize 0.8 linecolor rgb '#1f4e79' "
           "title 'computed positions of the points'\n";
}

// ---------------------------------------------------------------------------------------------------------------------
// The picture

// gnuplot can end with exit code 0 and half a picture. So the beginning and the end of the file are checked.
static bool IsWhole(int a_iDescriptor, enumPlotKind a_Kind)
{
    const std::string szBegin = a_Kind == PLOT_SVG ? "<?xml" : "\x89PNG";
    const std::string szEnd = a_Kind == PLOT_SVG ? "</svg>" : "IEND";
    char szHead[5] = {};
    char szTail[16] = {};
    const off_t iSize = lseek(a_iDescriptor, 0, SEEK_END);
    const off_t iTail = std::max<off_t>(0, iSize - static_cast<off_t>(sizeof szTail));
    const ssize_t iHeadRead = pread(a_iDescriptor, szHead, sizeof szHead, 0);
    const ssize_t iTailRead = pread(a_iDescriptor, szTail, sizeof szTail, iTail);
    return iHeadRead > 0 && iTailRead > 0 &&
           std::string(szHead, static_cast<std::size_t>(iHeadRead)).compare(0, szBegin.size(), szBegin) == 0 &&
           std::string(szTail, static_cast<std::size_t>(iTailRead)).find(szEnd) != std::string::npos;
}

void DrawPlot(const TPoints& a_Points, const TFit& a_Fit, TOutput& a_Output)
{
    const enumPlotKind Kind = PlotKind(a_Output.szName);
    const TChildResult Result = RunChild({"gnuplot", "-d"}, PlotScript(a_Points, a_Fit, Kind), a_Output.iDescriptor);
    if (!Result.bSucceeded || !IsWhole(a_Output.iDescriptor, Kind))
    {
        Fail(a_Output.szName, "gnuplot failed to draw it" + (Result.szError.empty() ? "" : ": " + Result.szError));
    }
}

} // namespace fitpoints
