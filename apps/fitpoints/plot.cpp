// plot.cpp: draws points and residual vectors: makes the script for gnuplot and runs it.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "plot.h"
#include "child_process.h"
#include "drawing.h"
#include "fonts.h"
#include "support.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <strings.h>
#include <unistd.h>

namespace fitpoints {

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

// How a mark and its vector are drawn. The form of the mark tells it without its colour.
struct TMarkStyle
{
    const char* szName;   // in the legend
    const char* szPoint;  // the style of the mark around the dot; empty if there is only the dot
    const char* szVector; // the style of the line
};

static const TMarkStyle STYLES[MARKS] = {
    {"given position", "", "linewidth 1.6 linecolor rgb '#1f4e79'"},
    {"suspected blunder", "pointtype 4 pointsize 1.5 linewidth 1.8 linecolor rgb '#c0392b'",
     "linewidth 2.2 linecolor rgb '#c0392b'"},
    {"check point, not fitted", "pointtype 8 pointsize 1.5 linewidth 1.5 linecolor rgb '#2e7d32'",
     "linewidth 1.6 linecolor rgb '#2e7d32'"},
    {"suspected blunder that was dropped", "pointtype 2 pointsize 1.4 linewidth 1.8 linecolor rgb '#c0392b'",
     "linewidth 2.2 linecolor rgb '#c0392b'"},
    {"mean of the given positions in a cell", "", "linewidth 1.4 linecolor rgb '#1f4e79'"}};

static const char* const DOT = "points pointtype 7 pointsize 0.6 linecolor rgb '#5d7fa3'";

static std::string Pixels(double a_dValue)
{
    return Number("%.2f", a_dValue);
}

static std::string At(const TSpot& a_Spot)
{
    return Pixels(a_Spot.dX) + "," + Pixels(a_Spot.dY);
}

// The canvas has coordinates in pixels; all that gnuplot usually draws around it is off.
static std::string Canvas(enumPlotKind a_Kind, const TSpot& a_Size)
{
    const std::string szSize = Number("%.0f", a_Size.dX) + "," + Number("%.0f", a_Size.dY);
    return "set encoding utf8\n" +
           (a_Kind == PLOT_SVG
                ? "set terminal svg size " + szSize + " noenhanced font 'sans-serif,13' background rgb 'white'\n"
                : "set terminal pngcairo size " + szSize + " noenhanced font 'sans,10' background rgb 'white'\n") +
           "set margins 0,0,0,0\nunset border\nunset tics\nunset key\nset xrange [0:" + Pixels(a_Size.dX) +
           "]\nset yrange [0:" + Pixels(a_Size.dY) + "]\n";
}

static std::string Label(const std::string& a_szText, const TSpot& a_At, const std::string& a_szStyle)
{
    return "set label " + Literal(a_szText) + " at " + At(a_At) + " noenhanced front " + a_szStyle + "\n";
}

// The title has the name of the file without its directory. A name that is not UTF-8 is left out.
static std::string TitleOf(const TPoints& a_Points, const TFit& a_Fit)
{
    const std::string szFile = OneLine(a_Points.szFile.substr(a_Points.szFile.rfind('/') + 1));
    return (IsPlainUtf8(szFile) ? szFile + ": " : "") + KindName(a_Fit.Kind) +
           (a_Fit.bMirrored ? " fit, orientation reversed, " : " fit, ") +
           Count(static_cast<std::size_t>(a_Fit.Judgement.iFitted), "point") +
           (a_Fit.dRms ? ", RMS " + Brief(*a_Fit.dRms) : ", no redundancy");
}

static std::string Axes(const TDrawing& a_Drawing)
{
    const TAxis& X = a_Drawing.X;
    const TAxis& Y = a_Drawing.Y;
    std::string szScript;
    std::size_t iWidest = 0;
    for (const TTick& Tick : X.vTicks)
    {
        szScript += Label(Tick.szText, {Tick.dAt, Y.dLow - 14}, "center textcolor rgb '#606060'");
    }
    for (const TTick& Tick : Y.vTicks)
    {
        szScript += Label(Tick.szText, {X.dLow - 8, Tick.dAt}, "right textcolor rgb '#606060'");
        iWidest = std::max(iWidest, Tick.szText.size());
    }
    const double dTitle = std::max(12.0, X.dLow - 24 - 8.5 * static_cast<double>(iWidest));
    return szScript + Label(X.szTitle, {(X.dLow + X.dHigh) / 2, Y.dLow - 36}, "center") +
           Label(Y.szTitle, {dTitle, (Y.dLow + Y.dHigh) / 2}, "center rotate by 90");
}

static std::string Names(const TDrawing& a_Drawing)
{
    std::string szScript;
    for (const TDrawnName& Name : a_Drawing.vNames)
    {
        szScript += Label(Name.szText, Name.Centre, "center textcolor rgb '#303030'");
    }
    return szScript;
}

// ---------------------------------------------------------------------------------------------------------------------
// Data and the plot command

// Collects blocks of data and the parts of the plot command that draw them. gnuplot warns of empty blocks, so there are
// none.
class TPlot
{
public:
    // A block with these lines is drawn "using a_szColumns with a_szStyle".
    void Add(const std::string& a_szLines, const std::string& a_szColumns, const std::string& a_szStyle)
    {
        if (!a_szLines.empty())
        {
            const std::string szBlock = "$B" + std::to_string(m_iBlocks++);
            m_szData += szBlock + " << END\n" + a_szLines + "END\n";
            m_szCommand +=
                (m_szCommand.empty() ? "plot " : ", ") + szBlock + " using " + a_szColumns + " with " + a_szStyle;
        }
    }

    std::string Script() const
    {
        return m_szData + m_szCommand + "\n";
    }

private:
    int m_iBlocks = 0;
    std::string m_szData, m_szCommand;
};

static std::string Line(const TSpot& a_From, const TSpot& a_To)
{
    return Pixels(a_From.dX) + " " + Pixels(a_From.dY) + "\n" + Pixels(a_To.dX) + " " + Pixels(a_To.dY) + "\n\n";
}

static std::string Spot(const TSpot& a_Spot)
{
    return Pixels(a_Spot.dX) + " " + Pixels(a_Spot.dY) + "\n";
}

static void AddFrame(const TDrawing& a_Drawing, TPlot& a_Plot)
{
    const TAxis& X = a_Drawing.X;
    const TAxis& Y = a_Drawing.Y;
    std::string szGrid;
    std::string szTicks;
    for (const TTick& Tick : X.vTicks)
    {
        szGrid += Line({Tick.dAt, Y.dLow}, {Tick.dAt, Y.dHigh});
        szTicks += Line({Tick.dAt, Y.dLow}, {Tick.dAt, Y.dLow - 4});
    }
    for (const TTick& Tick : Y.vTicks)
    {
        szGrid += Line({X.dLow, Tick.dAt}, {X.dHigh, Tick.dAt});
        szTicks += Line({X.dLow, Tick.dAt}, {X.dLow - 4, Tick.dAt});
    }
    a_Plot.Add(szGrid, "1:2", "lines linecolor rgb '#e4e4e4'");
    a_Plot.Add(szTicks + Spot({X.dLow, Y.dLow}) + Spot({X.dHigh, Y.dLow}) + Spot({X.dHigh, Y.dHigh}) +
                   Spot({X.dLow, Y.dHigh}) + Spot({X.dLow, Y.dLow}),
               "1:2", "lines linecolor rgb '#606060'");
}

static std::string Ellipse(const TDrawnEllipse& a_Ellipse)
{
    const int iSides = 36;
    std::string szLines;
    for (int i = 0; i <= iSides; ++i)
    {
        const double dC = std::cos(2 * M_PI * i / iSides);
        const double dS = std::sin(2 * M_PI * i / iSides);
        szLines += Spot({a_Ellipse.Centre.dX + dC * a_Ellipse.Major.dX + dS * a_Ellipse.Minor.dX,
                         a_Ellipse.Centre.dY + dC * a_Ellipse.Major.dY + dS * a_Ellipse.Minor.dY});
    }
    return szLines + "\n";
}

static std::string Vector(const TSpot& a_From, const TSpot& a_To)
{
    return Pixels(a_From.dX) + " " + Pixels(a_From.dY) + " " + Pixels(a_To.dX - a_From.dX) + " " +
           Pixels(a_To.dY - a_From.dY) + "\n";
}

static const char* const HEAD = "vectors head filled size 8,18 fixed ";
static const char* const NO_HEAD = "vectors nohead ";

// The head of a vector that is shorter than this would be all of it.
static bool HasHead(const TDrawnPoint& a_Point)
{
    return std::hypot(a_Point.Tip.dX - a_Point.Given.dX, a_Point.Tip.dY - a_Point.Given.dY) > 9;
}

// The points with one kind of mark. The vectors are drawn after the dots, which so hide no short one.
static void AddPoints(const TDrawing& a_Drawing, enumMark a_Mark, TPlot& a_Plot)
{
    std::string szMarks;
    std::string szLong;
    std::string szShort;
    for (const TDrawnPoint& Point : a_Drawing.vPoints)
    {
        if (Point.Mark == a_Mark)
        {
            szMarks += Spot(Point.Given);
            (HasHead(Point) ? szLong : szShort) += Vector(Point.Given, Point.Tip);
        }
    }
    const TMarkStyle& Style = STYLES[a_Mark];
    a_Plot.Add(szMarks, "1:2", DOT);
    if (*Style.szPoint != '\0')
    {
        a_Plot.Add(szMarks, "1:2", std::string("points ") + Style.szPoint);
    }
    if (a_Drawing.dScaleValue > 0)
    {
        a_Plot.Add(szLong, "1:2:3:4", HEAD + std::string(Style.szVector));
        a_Plot.Add(szShort, "1:2:3:4", NO_HEAD + std::string(Style.szVector));
    }
}

static const char* const ELLIPSE_STYLE = "lines linewidth 0.8 linecolor rgb '#b8860b'";

static void AddContents(const TDrawing& a_Drawing, TPlot& a_Plot)
{
    std::string szEllipses;
    for (const TDrawnEllipse& Drawn : a_Drawing.vEllipses)
    {
        szEllipses += Ellipse(Drawn);
    }
    std::string szLeaders;
    for (const TDrawnName& Name : a_Drawing.vNames)
    {
        szLeaders += Name.bLeader ? Line(Name.LeaderFrom, Name.LeaderTo) : "";
    }
    a_Plot.Add(szEllipses, "1:2", ELLIPSE_STYLE);
    a_Plot.Add(szLeaders, "1:2", "lines linewidth 0.7 linecolor rgb '#a0a0a0'");
    for (int i = 0; i < MARKS; ++i)
    {
        AddPoints(a_Drawing, static_cast<enumMark>(i), a_Plot);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// The legend

static const double LEGEND_SYMBOL = 110; // the middle of the symbols, pixels
static const double LEGEND_TEXT = 195;

static std::string VectorText(const TFit& a_Fit, const TDrawing& a_Drawing)
{
    if (a_Drawing.dScaleValue == 0)
    {
        return "no residual vectors: the residuals are rounding only";
    }
    const std::string szUnit = a_Drawing.bDegrees ? " degrees of latitude" : " target units";
    const std::string szBar = ", from given to computed; the bar is " + Number("%.12g", a_Drawing.dScaleValue) + szUnit;
    return a_Drawing.iPointsInCells > 0
               ? "mean residuals of " + Count(a_Drawing.iPointsInCells, "point") + " in cells" + szBar
               : "residuals" + szBar + ", the longest is " + Brief(a_Fit.vResiduals[a_Fit.iLargest].dLength);
}

static std::string MarkText(const TDrawing& a_Drawing, enumMark a_Mark)
{
    const bool bNames = a_Mark == MARK_FITTED && a_Drawing.iNamesLeftOut > 0;
    return STYLES[a_Mark].szName + (bNames ? "; " + Count(a_Drawing.iNamesLeftOut, "name") + " left out" : "");
}

// Adds a line of the legend; returns the place of its symbol.
static TSpot LegendLine(const TDrawing& a_Drawing, const std::string& a_szText, int& a_iLine, std::string& a_szScript)
{
    const double dY = a_Drawing.Y.dLow - 62 - a_iLine++ * LEGEND_LINE;
    a_szScript += Label(a_szText, {LEGEND_TEXT, dY}, "left");
    return {LEGEND_SYMBOL, dY};
}

static std::string ScaleBar(const TSpot& a_Middle, double a_dLength)
{
    const TSpot Left = {a_Middle.dX - a_dLength / 2, a_Middle.dY};
    const TSpot Right = {a_Middle.dX + a_dLength / 2, a_Middle.dY};
    const auto End = [](const TSpot& a_Spot) { return Line({a_Spot.dX, a_Spot.dY - 4}, {a_Spot.dX, a_Spot.dY + 4}); };
    return Line(Left, Right) + End(Left) + End(Right);
}

static std::string Legend(const TFit& a_Fit, const TDrawing& a_Drawing, TPlot& a_Plot)
{
    std::string szScript;
    int iLine = 0;
    const TSpot Bar = LegendLine(a_Drawing, VectorText(a_Fit, a_Drawing), iLine, szScript);
    if (a_Drawing.dScaleValue > 0)
    {
        a_Plot.Add(ScaleBar(Bar, a_Drawing.dScaleLength), "1:2", "lines linewidth 1.6 linecolor rgb '#1f4e79'");
    }
    for (int i = 0; i < MARKS; ++i)
    {
        const auto Mark = static_cast<enumMark>(i);
        const bool bFound = std::any_of(a_Drawing.vPoints.begin(), a_Drawing.vPoints.end(),
                                        [&](const TDrawnPoint& a_Point) { return a_Point.Mark == Mark; });
        if (bFound)
        {
            const TSpot Symbol = LegendLine(a_Drawing, MarkText(a_Drawing, Mark), iLine, szScript);
            TDrawing Sample = {};
            Sample.vPoints = {{Symbol, Symbol, Mark}};
            AddPoints(Sample, Mark, a_Plot);
        }
    }
    if (!a_Drawing.vEllipses.empty())
    {
        const TSpot Symbol =
            LegendLine(a_Drawing, "error ellipse of the computed position, one standard deviation, to the same scale",
                       iLine, szScript);
        a_Plot.Add(Ellipse({Symbol, {12, 0}, {0, 6}}), "1:2", ELLIPSE_STYLE);
    }
    return szScript;
}

std::string PlotScript(const TPoints& a_Points, const TFit& a_Fit, enumPlotKind a_Kind)
{
    const TDrawing Drawing = MakeDrawing(a_Points, a_Fit);
    TPlot Plot;
    AddFrame(Drawing, Plot);
    AddContents(Drawing, Plot);
    const std::string szLegend = Legend(a_Fit, Drawing, Plot);
    const TSpot Title = {(Drawing.X.dLow + Drawing.X.dHigh) / 2, Drawing.Y.dHigh + 0.55 * TITLE_HEIGHT};
    const std::string szTexts =
        Label(TitleOf(a_Points, a_Fit), Title, "center") + Axes(Drawing) + Names(Drawing) + szLegend;
    return Canvas(a_Kind, Drawing.Canvas) + szTexts + Plot.Script();
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

std::string DrawPlot(const TPoints& a_Points, const TFit& a_Fit, TOutput& a_Output)
{
    const enumPlotKind Kind = PlotKind(a_Output.szName);
    const std::string szWanted = PlotScript(a_Points, a_Fit, Kind);
    const std::string szScript = Kind == PLOT_PNG ? WithKnownCharacters(szWanted) : szWanted;
    const TChildResult Result = RunChild({"gnuplot", "-d"}, szScript, a_Output.iDescriptor);
    if (!Result.bSucceeded || !IsWhole(a_Output.iDescriptor, Kind))
    {
        Fail(a_Output.szName, "gnuplot failed to draw it" + (Result.szError.empty() ? "" : ": " + Result.szError));
    }
    return szScript == szWanted ? ""
                                : "no font of this machine has some characters of the names, which are drawn as ?: "
                                  "install one, such as the Debian package fonts-unifont";
}

} // namespace fitpoints
