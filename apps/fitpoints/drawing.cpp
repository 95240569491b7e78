// drawing.cpp: the geometry of the picture: scales, vectors, ellipses, ticks, and the cells of large files.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "drawing.h"
#include "names.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

namespace fitpoints {

static const std::size_t GREATEST_SINGLE = 2000; // more points are drawn as cells
static const std::size_t GREATEST_NAMED = 300;   // of more points only the doubtful ones are named
static const std::size_t GREATEST_ELLIPSES = 300;
static const std::size_t GREATEST_DOUBTFUL = 200; // points that are drawn beside the cells

// Lengths in pixels.
static const double CANVAS_WIDTH = 960;
static const double FRAME_RIGHT = 940;
static const TSpot GREATEST_FRAME = {840, 560};
static const TSpot LEAST_FRAME = {420, 260};
static const TSpot MARGIN = {64, 46}; // inside the frame, for names
static const double LONGEST_VECTOR = 70;
static const double CELL_SIZE = 30;
static const double FEW = 10;         // a cell has few points if it has less than a tenth of the usual number
static const double AXIS_HEIGHT = 56; // the texts of the x axis

static const double RADIANS = 0.017453292519943295; // pi/180

// The points as they are drawn: given positions that count from the offset, and residuals.
struct TScene
{
    std::vector<TSpot> vGiven, vResiduals;
    std::vector<judgement::TCovariance2> vCovariances; // of the computed positions; empty without ellipses
    std::vector<enumMark> vMarks;
    TSpot Offset;
    TSpot Low, High;
    bool bDegrees;
    double dAspect; // the length of a unit of X over that of a unit of Y
};

// From the scene to the canvas.
struct TScale
{
    TSpot Origin;  // of the scene, in pixels
    TSpot PerUnit; // pixels of a unit of X and of Y
    TSpot PerResidual;
};

// The greatest number that is not above the value and is 1, 2 or 5 times a power of ten.
static double RoundBelow(double a_dValue)
{
    const double dPower = std::pow(10.0, std::floor(std::log10(a_dValue)));
    const double dDigit = a_dValue / dPower;
    return (dDigit >= 5 ? 5 : dDigit >= 2 ? 2 : 1) * dPower;
}

static double Length(const TSpot& a_Vector)
{
    return std::hypot(a_Vector.dX, a_Vector.dY);
}

// ---------------------------------------------------------------------------------------------------------------------
// The scene

static enumMark MarkOf(const TPoints& a_Points, const TFit& a_Fit, std::size_t i)
{
    if (i >= a_Fit.vPoints.size())
    {
        return a_Points.vPoints[i].bCheck ? MARK_CHECK : MARK_FITTED;
    }
    const judgement::TPointJudgement& Point = a_Fit.vPoints[i];
    return Point.Role == judgement::ROLE_CHECK     ? MARK_CHECK
           : Point.Role == judgement::ROLE_DROPPED ? MARK_DROPPED
           : Point.bSuspect != 0                   ? MARK_SUSPECT
                                                   : MARK_FITTED;
}

// How much a 2 x 2 matrix differs from a similarity: 0 for a similarity of either orientation, 1 for a singular matrix.
static double Distortion(double a_dA, double a_dB, double a_dD, double a_dE)
{
    const double dFirst = std::hypot(a_dA + a_dE, a_dD - a_dB);
    const double dSecond = std::hypot(a_dA - a_dE, a_dD + a_dB);
    return std::min(dFirst, dSecond) / std::max(dFirst, dSecond);
}

// Coordinates within the range of degrees are taken as such if they are not near the equator, and if their affine
// transformation is nearer to a similarity when degrees of longitude have their length at that latitude. Images of the
// earth mostly are.
static bool SeemDegrees(const TFit& a_Fit, double a_dAspect)
{
    const judgement::TKindRow& Affine = a_Fit.Judgement.vKinds[nuv::METHOD_AFFINE];
    const nuv::TOmographicParams& C = Affine.Fit.Coefs;
    return Affine.Reason == judgement::REASON_NONE && a_dAspect < 0.98 &&
           Distortion(C.dA * a_dAspect, C.dB * a_dAspect, C.dD, C.dE) < Distortion(C.dA, C.dB, C.dD, C.dE);
}

// True if the reference system of the file, or the coordinates, are geographic.
static bool AreDegrees(const TPoints& a_Points, const TFit& a_Fit, const TScene& a_Scene, double a_dAspect)
{
    const std::size_t iSystem = a_Points.szCrs.find("GEOG");
    const std::size_t iProjected = a_Points.szCrs.find("PROJ");
    if (iSystem != std::string::npos || iProjected != std::string::npos)
    {
        return iSystem < iProjected;
    }
    const bool bInRange = std::fabs(a_Scene.Low.dX) <= 360 && std::fabs(a_Scene.High.dX) <= 360 &&
                          std::fabs(a_Scene.Low.dY) <= 90 && std::fabs(a_Scene.High.dY) <= 90;
    return bInRange && SeemDegrees(a_Fit, a_dAspect);
}

static void Include(const TSpot& a_Spot, TSpot& a_Low, TSpot& a_High)
{
    a_Low = {std::min(a_Low.dX, a_Spot.dX), std::min(a_Low.dY, a_Spot.dY)};
    a_High = {std::max(a_High.dX, a_Spot.dX), std::max(a_High.dY, a_Spot.dY)};
}

// Coordinates of many digits would need wide ticks, so the axes then count from the local origin.
static TSpot OffsetOf(const TPoints& a_Points, const TSpot& a_Low, const TSpot& a_High)
{
    const double dLargest = std::max(std::max(std::fabs(a_Low.dX), std::fabs(a_High.dX)),
                                     std::max(std::fabs(a_Low.dY), std::fabs(a_High.dY)));
    const double dExtent = std::max(a_High.dX - a_Low.dX, a_High.dY - a_Low.dY);
    if (dLargest < 1e5 && dLargest < 1000 * dExtent)
    {
        return {0, 0};
    }
    const TArrays Given = Arrays(a_Points.vPoints);
    const int iCount = PointCount(Given);
    return {judgement::LocalOrigin(iCount, Given.vdXa.data(), dExtent),
            judgement::LocalOrigin(iCount, Given.vdYa.data(), dExtent)};
}

static void AddCovariances(const TPoints& a_Points, const TFit& a_Fit, TScene& a_Scene)
{
    if (a_Fit.Judgement.bSigma == 0 || a_Points.vPoints.size() > GREATEST_ELLIPSES)
    {
        return;
    }
    for (const TPoint& Point : a_Points.vPoints)
    {
        judgement::TCovariance2 Covariance;
        judgement::CovarianceOfImage(a_Fit.Coefs, a_Fit.Judgement.Covariance, Point.dX - a_Fit.Origins.dX,
                                     Point.dY - a_Fit.Origins.dY, Covariance);
        const bool bFinite = std::isfinite(Covariance.dXX) && std::isfinite(Covariance.dYY);
        a_Scene.vCovariances.push_back(bFinite ? Covariance : judgement::TCovariance2{0, 0, 0});
    }
}

static TScene MakeScene(const TPoints& a_Points, const TFit& a_Fit)
{
    TScene Scene = {};
    Scene.Low = Scene.High = {a_Points.vPoints[0].dXa, a_Points.vPoints[0].dYa};
    for (const TPoint& Point : a_Points.vPoints)
    {
        Include({Point.dXa, Point.dYa}, Scene.Low, Scene.High);
    }
    const double dAspect = std::cos(RADIANS * (Scene.Low.dY / 2 + Scene.High.dY / 2));
    Scene.bDegrees = AreDegrees(a_Points, a_Fit, Scene, dAspect);
    Scene.dAspect = Scene.bDegrees ? std::max(dAspect, 0.01) : 1;
    Scene.Offset = OffsetOf(a_Points, Scene.Low, Scene.High);
    Scene.Low = {Scene.Low.dX - Scene.Offset.dX, Scene.Low.dY - Scene.Offset.dY};
    Scene.High = {Scene.High.dX - Scene.Offset.dX, Scene.High.dY - Scene.Offset.dY};
    for (std::size_t i = 0; i < a_Points.vPoints.size(); ++i)
    {
        const TPoint& Point = a_Points.vPoints[i];
        const TResidual& Residual = a_Fit.vResiduals[i];
        const bool bFinite = std::isfinite(Residual.dX) && std::isfinite(Residual.dY);
        Scene.vGiven.push_back({Point.dXa - Scene.Offset.dX, Point.dYa - Scene.Offset.dY});
        Scene.vResiduals.push_back(bFinite ? TSpot{Residual.dX, Residual.dY} : TSpot{0, 0});
        Scene.vMarks.push_back(MarkOf(a_Points, a_Fit, i));
    }
    AddCovariances(a_Points, a_Fit, Scene);
    return Scene;
}

// ---------------------------------------------------------------------------------------------------------------------
// The frame

// The legend has a line for the scale bar, one for each kind of mark, and one for ellipses.
static int LegendLines(const TScene& a_Scene)
{
    int iLines = 1 + (a_Scene.vCovariances.empty() ? 0 : 1);
    for (int i = 0; i < MARKS; ++i)
    {
        const bool bFound = std::find(a_Scene.vMarks.begin(), a_Scene.vMarks.end(), i) != a_Scene.vMarks.end();
        iLines += bFound ? 1 : 0;
    }
    return iLines;
}

// The frame takes the shape of the points, within bounds.
static TScale MakeFrame(const TScene& a_Scene, int a_iLegendLines, TDrawing& a_Drawing)
{
    const TSpot Extent = {(a_Scene.High.dX - a_Scene.Low.dX) * a_Scene.dAspect, a_Scene.High.dY - a_Scene.Low.dY};
    const TSpot Room = {GREATEST_FRAME.dX - 2 * MARGIN.dX, GREATEST_FRAME.dY - 2 * MARGIN.dY};
    const double dPerUnit = std::min(Room.dX / std::max(Extent.dX, 1e-300), Room.dY / std::max(Extent.dY, 1e-300));
    const TSpot Frame = {std::max(LEAST_FRAME.dX, Extent.dX * dPerUnit + 2 * MARGIN.dX),
                         std::max(LEAST_FRAME.dY, Extent.dY * dPerUnit + 2 * MARGIN.dY)};
    const double dCentre = FRAME_RIGHT - GREATEST_FRAME.dX / 2;
    const double dBottom = AXIS_HEIGHT + (a_iLegendLines + 0.7) * LEGEND_LINE;
    a_Drawing.Canvas = {CANVAS_WIDTH, std::ceil(dBottom + Frame.dY + TITLE_HEIGHT)};
    a_Drawing.X.dLow = dCentre - Frame.dX / 2;
    a_Drawing.X.dHigh = dCentre + Frame.dX / 2;
    a_Drawing.Y.dLow = dBottom;
    a_Drawing.Y.dHigh = dBottom + Frame.dY;
    TScale Scale = {{}, {dPerUnit * a_Scene.dAspect, dPerUnit}, {}};
    Scale.Origin = {dCentre - (a_Scene.Low.dX / 2 + a_Scene.High.dX / 2) * Scale.PerUnit.dX,
                    dBottom + Frame.dY / 2 - (a_Scene.Low.dY / 2 + a_Scene.High.dY / 2) * Scale.PerUnit.dY};
    return Scale;
}

static std::string AxisTitle(const char* a_szName, double a_dOffset, bool a_bDegrees)
{
    const std::string szShift = Shortest(std::fabs(a_dOffset));
    return std::string(a_szName) + (a_dOffset == 0 ? "" : (a_dOffset < 0 ? " + " : " - ") + szShift) +
           (a_bDegrees ? " (degrees)" : " (target units)");
}

// Ticks at multiples of the step inside the frame.
static void AddTicks(double a_dOrigin, double a_dPerUnit, double a_dStep, TAxis& a_Axis)
{
    const int iDecimals = std::max(0, -static_cast<int>(std::floor(std::log10(a_dStep) + 1e-9)));
    const std::string szFormat = a_dStep < 1e-6 || a_dStep > 1e7 ? "%.6g" : "%." + std::to_string(iDecimals) + "f";
    const double dFirst = std::ceil((a_Axis.dLow - a_dOrigin) / (a_dStep * a_dPerUnit));
    const double dLast = std::floor((a_Axis.dHigh - a_dOrigin) / (a_dStep * a_dPerUnit));
    for (double d = dFirst; d <= dLast && d < dFirst + 20; ++d)
    {
        a_Axis.vTicks.push_back({a_dOrigin + d * a_dStep * a_dPerUnit, Number(szFormat.c_str(), d * a_dStep + 0.0)});
    }
}

// The least number that is not below the value and is 1, 2 or 5 times a power of ten.
static double RoundAbove(double a_dValue)
{
    const double dBelow = RoundBelow(a_dValue);
    const double dNext = RoundBelow(dBelow * 2.6); // 1, 2, 5 become 2, 5, 10
    return dBelow >= a_dValue ? dBelow : dNext;
}

// The step of the ticks: their texts do not touch each other.
static void AddTicks(double a_dOrigin, double a_dPerUnit, TAxis& a_Axis)
{
    const double dLeast = 64; // pixels
    const double dDigit = 8.5;
    double dStep = RoundAbove(dLeast / a_dPerUnit);
    double dWidest = 0;
    do
    {
        a_Axis.vTicks.clear();
        AddTicks(a_dOrigin, a_dPerUnit, dStep, a_Axis);
        dWidest = 0;
        for (const TTick& Tick : a_Axis.vTicks)
        {
            dWidest = std::max(dWidest, dDigit * static_cast<double>(Tick.szText.size()) + 12);
        }
        dStep = RoundAbove(dStep * 1.1);
    } while (a_Axis.vTicks.size() > 2 && dWidest > a_Axis.vTicks[1].dAt - a_Axis.vTicks[0].dAt);
}

static void AddAxes(const TScene& a_Scene, const TScale& a_Scale, TDrawing& a_Drawing)
{
    AddTicks(a_Scale.Origin.dX, a_Scale.PerUnit.dX, a_Drawing.X);
    AddTicks(a_Scale.Origin.dY, a_Scale.PerUnit.dY, a_Drawing.Y);
    a_Drawing.bDegrees = a_Scene.bDegrees;
    a_Drawing.X.szTitle = AxisTitle("X", a_Scene.Offset.dX, a_Drawing.bDegrees);
    a_Drawing.Y.szTitle = AxisTitle("Y", a_Scene.Offset.dY, a_Drawing.bDegrees);
}

// ---------------------------------------------------------------------------------------------------------------------
// Vectors

static TSpot OnCanvas(const TScale& a_Scale, const TSpot& a_Place)
{
    return {a_Scale.Origin.dX + a_Place.dX * a_Scale.PerUnit.dX, a_Scale.Origin.dY + a_Place.dY * a_Scale.PerUnit.dY};
}

static TSpot VectorOnCanvas(const TScale& a_Scale, const TSpot& a_Vector)
{
    return {a_Vector.dX * a_Scale.PerResidual.dX, a_Vector.dY * a_Scale.PerResidual.dY};
}

// The greatest factor that leaves a vector from this place, and an ellipse around its tip, inside the frame.
static double FactorInside(double a_dPlace, double a_dVector, double a_dVariance, const TAxis& a_Axis)
{
    const double dRim = 6;
    const double dSigma = std::sqrt(std::max(0.0, a_dVariance));
    const double dBelow = (a_dPlace - a_Axis.dLow - dRim) / std::max(dSigma - a_dVector, 1e-300);
    const double dAbove = (a_Axis.dHigh - dRim - a_dPlace) / std::max(dSigma + a_dVector, 1e-300);
    return std::min(dBelow, dAbove);
}

// Pixels for a unit of residual: the longest vector has a good length, unless the others would vanish beside it.
static double PixelsPerResidual(const std::vector<TSpot>& a_vResiduals)
{
    std::vector<double> vdLengths;
    for (const TSpot& Residual : a_vResiduals)
    {
        vdLengths.push_back(Length(Residual));
    }
    const auto pMedian = vdLengths.begin() + static_cast<std::ptrdiff_t>(vdLengths.size() / 2);
    std::nth_element(vdLengths.begin(), pMedian, vdLengths.end());
    const double dMedian = *pMedian;
    const double dLongest = *std::max_element(vdLengths.begin(), vdLengths.end());
    return std::max(LONGEST_VECTOR / dLongest, std::min(2 * LONGEST_VECTOR / dLongest, 10 / dMedian));
}

// The scale bar has a round length. Residuals that are only rounding are not drawn.
static void ScaleVectors(const TPoints& a_Points, double a_dAspect, const std::vector<TSpot>& a_vGiven,
                         const std::vector<TSpot>& a_vResiduals,
                         const std::vector<judgement::TCovariance2>& a_vCovariances, TScale& a_Scale,
                         TDrawing& a_Drawing)
{
    const auto Longer = [](const TSpot& a_First, const TSpot& a_Second) { return Length(a_First) < Length(a_Second); };
    const double dLongest = Length(*std::max_element(a_vResiduals.begin(), a_vResiduals.end(), Longer));
    if (dLongest <= RoundingLevel(Arrays(a_Points.vPoints)))
    {
        return;
    }
    double dPerResidual = PixelsPerResidual(a_vResiduals);
    for (std::size_t i = 0; i < a_vGiven.size(); ++i)
    {
        const TSpot Place = OnCanvas(a_Scale, a_vGiven[i]);
        const judgement::TCovariance2 C =
            i < a_vCovariances.size() ? a_vCovariances[i] : judgement::TCovariance2{0, 0, 0};
        const double dX = FactorInside(Place.dX, a_vResiduals[i].dX, C.dXX, a_Drawing.X) / a_dAspect;
        const double dY = FactorInside(Place.dY, a_vResiduals[i].dY, C.dYY, a_Drawing.Y);
        dPerResidual = std::min(dPerResidual, std::min(dX, dY));
    }
    a_Scale.PerResidual = {dPerResidual * a_dAspect, dPerResidual};
    a_Drawing.dScaleValue = RoundBelow(1.5 * LONGEST_VECTOR / dPerResidual);
    a_Drawing.dScaleLength = a_Drawing.dScaleValue * dPerResidual;
}

static TDrawnPoint DrawnPoint(const TScale& a_Scale, const TSpot& a_Given, const TSpot& a_Residual, enumMark a_Mark)
{
    const TSpot Given = OnCanvas(a_Scale, a_Given);
    const TSpot Vector = VectorOnCanvas(a_Scale, a_Residual);
    return {Given, {Given.dX + Vector.dX, Given.dY + Vector.dY}, a_Mark};
}

// The ellipse of the uncertainty of each computed position, enlarged as the vectors are.
static void AddEllipses(const TScene& a_Scene, const TScale& a_Scale, TDrawing& a_Drawing)
{
    for (std::size_t i = 0; i < a_Scene.vCovariances.size() && a_Drawing.dScaleValue > 0; ++i)
    {
        judgement::TEllipse Ellipse;
        judgement::ErrorEllipse(a_Scene.vCovariances[i], Ellipse);
        const TSpot Major = VectorOnCanvas(a_Scale, {Ellipse.dMajor * Ellipse.dUx, Ellipse.dMajor * Ellipse.dUy});
        const TSpot Minor = VectorOnCanvas(a_Scale, {-Ellipse.dMinor * Ellipse.dUy, Ellipse.dMinor * Ellipse.dUx});
        a_Drawing.vEllipses.push_back({a_Drawing.vPoints[i].Tip, Major, Minor});
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Cells

struct TCell
{
    TSpot Given, Residual; // sums
    double dCount;
};

// The means of the fitted points of each cell of a grid on the canvas. A cell with few points has no vector: the mean of
// a few residuals is long by chance.
static std::vector<TCell> MakeCells(const TScene& a_Scene, const TScale& a_Scale)
{
    std::map<std::pair<int, int>, TCell> Cells;
    for (std::size_t i = 0; i < a_Scene.vGiven.size(); ++i)
    {
        const TSpot Place = OnCanvas(a_Scale, a_Scene.vGiven[i]);
        TCell& Cell = Cells[{static_cast<int>(Place.dX / CELL_SIZE), static_cast<int>(Place.dY / CELL_SIZE)}];
        const double dCount = a_Scene.vMarks[i] == MARK_FITTED ? 1 : 0;
        Cell.Given = {Cell.Given.dX + dCount * a_Scene.vGiven[i].dX, Cell.Given.dY + dCount * a_Scene.vGiven[i].dY};
        Cell.Residual = {Cell.Residual.dX + dCount * a_Scene.vResiduals[i].dX,
                         Cell.Residual.dY + dCount * a_Scene.vResiduals[i].dY};
        Cell.dCount += dCount;
    }
    std::vector<TCell> vCells;
    for (const auto& [Place, Cell] : Cells)
    {
        if (Cell.dCount > 0)
        {
            const bool bFew = Cell.dCount * static_cast<double>(Cells.size()) * FEW < a_Scene.vGiven.size();
            const double dResidual = bFew ? 0 : 1 / Cell.dCount;
            vCells.push_back({{Cell.Given.dX / Cell.dCount, Cell.Given.dY / Cell.dCount},
                              {Cell.Residual.dX * dResidual, Cell.Residual.dY * dResidual},
                              Cell.dCount});
        }
    }
    return vCells;
}

// The points that are neither fitted nor without suspicion are drawn beside the cells, up to a bound.
static void DrawCells(const TPoints& a_Points, const TScene& a_Scene, TScale& a_Scale, TDrawing& a_Drawing)
{
    const std::vector<TCell> vCells = MakeCells(a_Scene, a_Scale);
    std::vector<TSpot> vGiven;
    std::vector<TSpot> vResiduals;
    for (const TCell& Cell : vCells)
    {
        vGiven.push_back(Cell.Given);
        vResiduals.push_back(Cell.Residual);
        a_Drawing.iPointsInCells += static_cast<std::size_t>(Cell.dCount);
    }
    ScaleVectors(a_Points, a_Scene.dAspect, vGiven, vResiduals, {}, a_Scale, a_Drawing);
    for (const TCell& Cell : vCells)
    {
        a_Drawing.vPoints.push_back(DrawnPoint(a_Scale, Cell.Given, Cell.Residual, MARK_CELL));
    }
    for (std::size_t i = 0; i < a_Scene.vGiven.size(); ++i)
    {
        if (a_Scene.vMarks[i] != MARK_FITTED && a_Drawing.vPoints.size() < vCells.size() + GREATEST_DOUBTFUL)
        {
            a_Drawing.vPoints.push_back(DrawnPoint(a_Scale, a_Scene.vGiven[i], {0, 0}, a_Scene.vMarks[i]));
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------

// The names: the doubtful points first, then those with the longest vectors.
static std::vector<TWantedName> WantedNames(const TPoints& a_Points, const TScene& a_Scene)
{
    std::vector<std::size_t> viOrder(a_Points.vPoints.size());
    std::iota(viOrder.begin(), viOrder.end(), 0);
    const auto IsDoubtful = [&](std::size_t i)
    { return a_Scene.vMarks[i] == MARK_SUSPECT || a_Scene.vMarks[i] == MARK_DROPPED; };
    std::stable_sort(viOrder.begin(), viOrder.end(),
                     [&](std::size_t i, std::size_t k)
                     {
                         return IsDoubtful(i) != IsDoubtful(k)
                                    ? IsDoubtful(i)
                                    : Length(a_Scene.vResiduals[i]) > Length(a_Scene.vResiduals[k]);
                     });
    std::vector<TWantedName> vNames;
    for (const std::size_t i : viOrder)
    {
        if (viOrder.size() <= GREATEST_NAMED || IsDoubtful(i))
        {
            const std::string& szName = a_Points.vPoints[i].szName;
            vNames.push_back({szName.empty() ? std::to_string(i + 1) : szName, i});
        }
    }
    return vNames;
}

static void DrawPoints(const TPoints& a_Points, const TScene& a_Scene, TScale& a_Scale, TDrawing& a_Drawing)
{
    ScaleVectors(a_Points, a_Scene.dAspect, a_Scene.vGiven, a_Scene.vResiduals, a_Scene.vCovariances, a_Scale,
                 a_Drawing);
    for (std::size_t i = 0; i < a_Scene.vGiven.size(); ++i)
    {
        a_Drawing.vPoints.push_back(DrawnPoint(a_Scale, a_Scene.vGiven[i], a_Scene.vResiduals[i], a_Scene.vMarks[i]));
    }
    AddEllipses(a_Scene, a_Scale, a_Drawing);
    const std::vector<TWantedName> vNames = WantedNames(a_Points, a_Scene);
    a_Drawing.iNamesLeftOut = a_Points.vPoints.size() - vNames.size();
    PlaceNames(vNames, a_Drawing);
}

TDrawing MakeDrawing(const TPoints& a_Points, const TFit& a_Fit)
{
    TDrawing Drawing = {};
    const TScene Scene = MakeScene(a_Points, a_Fit);
    TScale Scale = MakeFrame(Scene, LegendLines(Scene), Drawing);
    AddAxes(Scene, Scale, Drawing);
    if (a_Points.vPoints.size() > GREATEST_SINGLE)
    {
        DrawCells(a_Points, Scene, Scale, Drawing);
    }
    else
    {
        DrawPoints(a_Points, Scene, Scale, Drawing);
    }
    return Drawing;
}

} // namespace fitpoints
