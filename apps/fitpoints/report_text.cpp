// report_text.cpp: the report as text.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "report.h"
#include "support.h"
#include "text.h"

#include <algorithm>
#include <cstdlib>

namespace fitpoints {

static const double DEGREES = 57.29577951308232; // 180/pi

// Adds blanks to a text of UTF-8: behind it if the width is positive, before it if the width is negative.
static std::string Padded(const std::string& a_szText, int a_iWidth)
{
    const auto IsStart = [](char a_iChar) { return (static_cast<unsigned char>(a_iChar) & 0xC0) != 0x80; };
    const int iLength = static_cast<int>(std::count_if(a_szText.begin(), a_szText.end(), IsStart));
    const std::string szBlanks(static_cast<std::size_t>(std::max(0, std::abs(a_iWidth) - iLength)), ' ');
    return a_iWidth < 0 ? szBlanks + a_szText : a_szText + szBlanks;
}

static std::string Pair(double a_dX, double a_dY)
{
    return "(" + Shortest(a_dX) + ", " + Shortest(a_dY) + ")";
}

// A name less an origin: "x - 2000".
static std::string Difference(const std::string& a_szName, double a_dOrigin)
{
    return a_dOrigin == 0  ? a_szName
           : a_dOrigin < 0 ? a_szName + " + " + Shortest(-a_dOrigin)
                           : a_szName + " - " + Shortest(a_dOrigin);
}

static std::string UnreadColumns(const TPoints& a_Points)
{
    std::string szText;
    for (const std::string& szColumn : a_Points.vszUnread)
    {
        szText += (szText.empty() ? "columns that are not read: " : ", ") + Quoted(szColumn);
    }
    return szText.empty() ? "" : szText + "\n";
}

static std::string Heading(const TPoints& a_Points, const TFit& a_Fit)
{
    const char* const vszUnknowns[] = {"four coefficients", "six coefficients", "eight coefficients"};
    const char* const vszFormats[] = {"CSV", "QGIS georeferencer", "-gcp arguments"};
    std::string szText = "file:    " + OneLine(a_Points.szFile) + " (" + vszFormats[a_Points.Kind] + ")\n";
    szText += "points:  " + std::to_string(a_Fit.Judgement.iFitted) + " used" +
              (a_Fit.Judgement.iChecks == 0 ? "" : ", " + Count(a_Fit.Judgement.iChecks, "check point")) + "\n" +
              UnreadColumns(a_Points);
    szText += std::string("kind:    ") + KindName(a_Fit.Kind) + (a_Fit.bMirrored ? ", orientation reversed" : "") +
              " (" + vszUnknowns[a_Fit.Kind] + ")\n";
    for (const std::string& szReason : a_Fit.vszNotRicher)
    {
        szText += "         not a richer one: " + szReason + "\n";
    }
    if (a_Fit.Kind == nuv::METHOD_OMOGRAPHIC)
    {
        szText += "         the richest kind\n";
    }
    return szText;
}

static std::string Coefficients(const TFit& a_Fit, const nuv::TOmographicParams& a_Coefs, const std::string& a_szPrime)
{
    const bool bOmographic = a_Fit.Kind == nuv::METHOD_OMOGRAPHIC;
    const std::string p = a_szPrime;
    const std::string szX = "A x" + p + " + B y" + p + " + C";
    const std::string szY = "D x" + p + " + E y" + p + " + F";
    const std::string szW = "G x" + p + " + H y" + p + " + 1";
    const auto Line = [](const char* a_szName, double a_dValue)
    { return std::string("  ") + a_szName + " = " + Exact(a_dValue) + "\n"; };
    std::string szText = bOmographic ? "  X" + p + " = (" + szX + ") / W,  Y" + p + " = (" + szY + ") / W,  W = " + szW
                                     : "  X" + p + " = " + szX + ",  Y" + p + " = " + szY;
    szText += "\n" + Line("A", a_Coefs.dA) + Line("B", a_Coefs.dB) + Line("C", a_Coefs.dC) + Line("D", a_Coefs.dD) +
              Line("E", a_Coefs.dE) + Line("F", a_Coefs.dF);
    return bOmographic ? szText + Line("G", a_Coefs.dG) + Line("H", a_Coefs.dH) : szText;
}

static std::string LocalFrame(const TFit& a_Fit)
{
    const TOrigins& O = a_Fit.Origins;
    return "\nLocal frame, the frame of the fit: source origin " + Pair(O.dX, O.dY) + ", target origin " +
           Pair(O.dXa, O.dYa) + "\n  x' = " + Difference("x", O.dX) + ",  y' = " + Difference("y", O.dY) +
           ",  X' = " + Difference("X", O.dXa) + ",  Y' = " + Difference("Y", O.dYa) + "\n" +
           Coefficients(a_Fit, a_Fit.Coefs, "'");
}

static std::string OriginalFrame(const TFit& a_Fit)
{
    if (!a_Fit.Original)
    {
        return "\nOriginal frame: none. The transformation takes the origin of the source coordinates to infinity,\n"
               "  its coefficients are not finite there, or by rounding they take a point to infinity. Use those of\n"
               "  the local frame.\n";
    }
    return (a_Fit.bRaw
                ? "\nOriginal frame, the frame of the fit: coordinates as given\n"
                : "\nOriginal frame: coordinates as given (the images of the points differ from those of the local "
                  "frame\n  by " +
                      Brief(a_Fit.dFrameDifference) + " at most, by rounding)\n") +
           Coefficients(a_Fit, *a_Fit.Original, "");
}

static std::string Angle(double a_dRadians)
{
    return Exact(a_dRadians) + " rad (" + Number("%.8g", a_dRadians * DEGREES) + " degrees)\n";
}

static std::string Translation(const std::string& a_szFrame, const nuv::TOmographicParams& a_Coefs)
{
    return "  translation, " + a_szFrame + " frame: (" + Exact(a_Coefs.dC) + ", " + Exact(a_Coefs.dF) + ")\n";
}

static std::string Shape(const TFit& a_Fit)
{
    if (!a_Fit.Shape)
    {
        return a_Fit.Kind == nuv::METHOD_OMOGRAPHIC
                   ? "\nParameters: none. The scale, rotation and skew of an omographic transformation change from "
                     "point to point.\n"
                   : "\nParameters: none. A scale of the transformation counts as zero.\n";
    }
    const TShape& S = *a_Fit.Shape;
    std::string szText = "\nParameters\n";
    if (a_Fit.Kind == nuv::METHOD_CONFORMAL && !a_Fit.bMirrored)
    {
        szText += "  scale    = " + Exact(S.dSx) + "\n  rotation = " + Angle(S.dRotation);
    }
    else
    {
        szText += "  scale sx = " + Exact(S.dSx) + "\n  scale sy = " + Exact(S.dSy) +
                  (S.dSy < 0 ? " (negative: the orientation is reversed)" : "") +
                  "\n  rotation = " + Angle(S.dRotation) + "  skew     = " + Angle(S.dSkew);
    }
    szText += a_Fit.bRaw ? "" : Translation("local", a_Fit.Coefs);
    return szText + (a_Fit.Original ? Translation("original", *a_Fit.Original) : "");
}

static std::string ResidualRow(const std::vector<std::string>& a_vszCells, const std::string& a_szName)
{
    const int viWidths[] = {7, 7, 15, 15, 15};
    std::string szRow;
    for (std::size_t i = 0; i < a_vszCells.size(); ++i)
    {
        szRow += Padded(a_vszCells[i], -viWidths[i]);
    }
    return szRow + (a_szName.empty() ? "" : "  " + a_szName) + "\n";
}

// The table of the points that have this role.
static std::string ResidualTable(const TPoints& a_Points, const TFit& a_Fit, judgement::enumRole a_Role)
{
    std::string szText = ResidualRow({"point", "line", "dX", "dY", "length"}, "name");
    for (std::size_t i = 0; i < a_Fit.vPoints.size(); ++i)
    {
        const judgement::TPointJudgement& P = a_Fit.vPoints[i];
        const TPoint& Point = a_Points.vPoints[i];
        if (P.Role == a_Role)
        {
            szText += ResidualRow({std::to_string(i + 1), std::to_string(Point.iLine), Number("%.6g", P.dX),
                                   Number("%.6g", P.dY), Number("%.6g", P.dLength)},
                                  Point.szName);
        }
    }
    return szText;
}

static std::string Residuals(const TPoints& a_Points, const TFit& a_Fit)
{
    return "\nResiduals, computed less given, in target units\n" +
           ResidualTable(a_Points, a_Fit, judgement::ROLE_FITTED) +
           (a_Fit.Judgement.iChecks == 0 ? ""
                                         : "\nCheck points, not fitted: computed less given, in target units\n" +
                                               ResidualTable(a_Points, a_Fit, judgement::ROLE_CHECK));
}

static std::string Statistics(const TPoints& a_Points, const TFit& a_Fit)
{
    const std::string szFreedom = std::to_string(2 * a_Fit.Judgement.iFitted) + " - " +
                                  std::to_string(a_Fit.iUnknowns) + " = " + std::to_string(a_Fit.iFreedom) +
                                  " degrees of freedom";
    return "\nRMS: " +
           (a_Fit.dRms ? Number("%.10g", *a_Fit.dRms) + ", with " + szFreedom
                       : "does not exist, there is no redundancy: " + szFreedom) +
           "\nlargest residual: " + Number("%.6g", a_Fit.vResiduals[a_Fit.iLargest].dLength) + " at " +
           Label(a_Points.vPoints, a_Fit.iLargest) + "\n" +
           (a_Fit.Judgement.iChecks == 0
                ? ""
                : "RMS of the check points: " + Number("%.10g", a_Fit.Judgement.dCheckRms) + "\n");
}

std::string TextReport(const TPoints& a_Points, const TFit& a_Fit, bool a_bSummary)
{
    return Heading(a_Points, a_Fit) + (a_Fit.bRaw ? "" : LocalFrame(a_Fit)) + OriginalFrame(a_Fit) + Shape(a_Fit) +
           (a_bSummary ? "" : Residuals(a_Points, a_Fit)) + Statistics(a_Points, a_Fit);
}

} // namespace fitpoints
