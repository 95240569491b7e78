// report_text.cpp: the report as text.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "report.h"
#include "report_common.h"
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

// How many points are fitted, and how many are not.
static std::string PointCounts(const judgement::TJudgement& a_Judgement)
{
    const auto Also = [](int a_iCount, const std::string& a_szNoun)
    { return a_iCount == 0 ? "" : ", " + Count(static_cast<std::size_t>(a_iCount), a_szNoun); };
    return std::to_string(a_Judgement.iFitted) + " used" + Also(a_Judgement.iDropped, "dropped point") +
           Also(a_Judgement.iChecks, "check point");
}

static std::string Iterations(const judgement::TKindFit& a_Fit)
{
    return a_Fit.iIterations == 0
               ? "no iteration beyond the four of the library was needed\n"
               : Count(static_cast<std::size_t>(a_Fit.iIterations), "iteration") + " beyond the four of the library" +
                     (a_Fit.bConverged != 0 ? "\n" : ", and not converged\n");
}

static std::string Heading(const TPoints& a_Points, const TFit& a_Fit)
{
    const char* const vszUnknowns[] = {"four coefficients", "six coefficients", "eight coefficients"};
    const char* const vszFormats[] = {"CSV", "QGIS georeferencer", "-gcp arguments"};
    const char* const vszChoices[] = {"asked for by --method", "the richest kind", "the least leave-one-out error",
                                      "the poorer kind of two that are equally good", "not judged"};
    const std::string szIndent = "         ";
    std::string szText = "file:    " + OneLine(a_Points.szFile) + " (" + vszFormats[a_Points.Kind] + ")\n";
    szText += "points:  " + PointCounts(a_Fit.Judgement) + "\n" + UnreadColumns(a_Points);
    szText += std::string("kind:    ") + KindName(a_Fit.Kind) + (a_Fit.bMirrored ? ", orientation reversed" : "") +
              " (" + vszUnknowns[a_Fit.Kind] + ")\n" + szIndent + vszChoices[a_Fit.Judgement.Choice] + "\n";
    for (const std::string& szReason : a_Fit.vszNotRicher)
    {
        szText += szIndent + "not a richer one: " + szReason + "\n";
    }
    return a_Fit.Kind == nuv::METHOD_OMOGRAPHIC ? szText + szIndent + Iterations(a_Fit.Judgement.Fit) : szText;
}

// A row of a table: each cell is filled to its width on the left.
static std::string Row(const std::vector<std::string>& a_vszCells, const std::vector<int>& a_viWidths)
{
    std::string szRow;
    for (std::size_t i = 0; i < a_vszCells.size(); ++i)
    {
        szRow += Padded(a_vszCells[i], -a_viWidths[i]);
    }
    return szRow;
}

static std::string NameAtEnd(const std::string& a_szName)
{
    return a_szName.empty() ? "\n" : "  " + a_szName + "\n";
}

static std::string Residual(double a_dValue)
{
    return Number("%.6g", a_dValue);
}

// ---------------------------------------------------------------------------------------------------------------------
// Kinds and blunders

static std::string KindRow(const TPoints& a_Points, const TFit& a_Fit, nuv::enumMethodUsed a_Kind)
{
    const judgement::TKindRow& R = a_Fit.Judgement.vKinds[a_Kind];
    const std::vector<int> viWidths = {14, 9, 15, 15, 15};
    std::string szText = (a_Kind == a_Fit.Kind ? "* " : "  ") + Padded(KindName(a_Kind), 10);
    const std::string szMissing = WhyMissing(a_Fit, a_Kind);
    if (!szMissing.empty())
    {
        return szText + Row({std::to_string(R.iUnknowns)}, viWidths) + "  none: " + szMissing + "\n";
    }
    szText += Row({std::to_string(R.iUnknowns), std::to_string(R.iFreedom), R.iFreedom > 0 ? Residual(R.dRms) : "none"},
                  viWidths);
    const std::string szNotJudged = WhyNotJudged(a_Fit, a_Kind);
    return szText + (szNotJudged.empty()
                         ? Row({Residual(R.dLeaveRms), Residual(R.dLeaveGreatest)}, {15, 15}) + "  " +
                               Label(a_Points.vPoints, static_cast<std::size_t>(R.iLeaveGreatest)) + "\n"
                         : "  not judged: " + szNotJudged + "\n");
}

static std::string Kinds(const TPoints& a_Points, const TFit& a_Fit)
{
    std::string szText = "\nKinds. Leave-one-out: each point is predicted by a fit of the others.\n  kind      " +
                         Row({"coefficients", "freedom", "RMS", "leave-one-out", "greatest"}, {14, 9, 15, 15, 15}) +
                         "  at\n";
    for (const nuv::enumMethodUsed Kind : {nuv::METHOD_CONFORMAL, nuv::METHOD_AFFINE, nuv::METHOD_OMOGRAPHIC})
    {
        szText += KindRow(a_Points, a_Fit, Kind);
    }
    return szText;
}

static std::string Suspects(const TPoints& a_Points, const TFit& a_Fit)
{
    const std::vector<std::size_t> viSuspects = SuspectOrder(a_Fit);
    const bool bTested = std::any_of(a_Fit.vPoints.begin(), a_Fit.vPoints.end(),
                                     [](const judgement::TPointJudgement& a_Point) { return a_Point.bTested != 0; });
    const std::string szHead = "\nSuspected blunders, at the level " + Brief(a_Fit.dLevel) + ":";
    if (viSuspects.empty())
    {
        return szHead + (bTested ? " none\n" : " not tested, because there is too little redundancy\n");
    }
    const std::vector<int> viWidths = {7, 7, 15, 15, 15};
    std::string szText =
        szHead + "\n" + Row({"point", "line", "dX", "dY", "length"}, viWidths) + "  under the kind  name\n";
    for (const std::size_t i : viSuspects)
    {
        const judgement::TPointJudgement& P = a_Fit.vPoints[i];
        szText += Row({std::to_string(i + 1), std::to_string(a_Points.vPoints[i].iLine), Residual(P.dX), Residual(P.dY),
                       Residual(P.dLength)},
                      viWidths) +
                  "  " + Padded(KindName(P.SuspectKind), 14) +
                  NameAtEnd(a_Points.vPoints[i].szName +
                            (P.iDropped != 0 ? " (dropped as number " + std::to_string(P.iDropped) + ")" : ""));
    }
    return szText;
}

// ---------------------------------------------------------------------------------------------------------------------
// Coefficients and parameters

// "+- <standard deviation>"; empty without redundancy.
static std::string Sigma(const TFit& a_Fit, double a_dSigma)
{
    return a_Fit.Judgement.bSigma != 0 ? " +- " + Number("%.3g", a_dSigma) : "";
}

static std::string Coefficients(const TFit& a_Fit, const nuv::TOmographicParams& a_Coefs,
                                const judgement::TCoefsCovariance& a_Covariance, const std::string& a_szPrime)
{
    const bool bOmographic = a_Fit.Kind == nuv::METHOD_OMOGRAPHIC;
    const std::string p = a_szPrime;
    const std::string szX = "A x" + p + " + B y" + p + " + C";
    const std::string szY = "D x" + p + " + E y" + p + " + F";
    const std::string szW = "G x" + p + " + H y" + p + " + 1";
    std::string szText = bOmographic ? "  X" + p + " = (" + szX + ") / W,  Y" + p + " = (" + szY + ") / W,  W = " + szW
                                     : "  X" + p + " = " + szX + ",  Y" + p + " = " + szY;
    szText += "\n";
    const double vdCoefs[] = {a_Coefs.dA, a_Coefs.dB, a_Coefs.dC, a_Coefs.dD,
                              a_Coefs.dE, a_Coefs.dF, a_Coefs.dG, a_Coefs.dH};
    for (int i = 0; i < (bOmographic ? 8 : 6); ++i)
    {
        szText += std::string("  ") + "ABCDEFGH"[i] + " = " + Exact(vdCoefs[i]) +
                  Sigma(a_Fit, judgement::SigmaOfCoef(a_Covariance, i)) + "\n";
    }
    return szText;
}

static std::string LocalFrame(const TFit& a_Fit)
{
    const TOrigins& O = a_Fit.Origins;
    return "\nLocal frame, the frame of the fit: source origin " + Pair(O.dX, O.dY) + ", target origin " +
           Pair(O.dXa, O.dYa) + "\n  x' = " + Difference("x", O.dX) + ",  y' = " + Difference("y", O.dY) +
           ",  X' = " + Difference("X", O.dXa) + ",  Y' = " + Difference("Y", O.dYa) + "\n" +
           Coefficients(a_Fit, a_Fit.Coefs, a_Fit.Judgement.Covariance, "'");
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
           Coefficients(a_Fit, *a_Fit.Original, a_Fit.Judgement.OriginalCovariance, "");
}

static std::string Angle(const TFit& a_Fit, double a_dRadians, double a_dSigma)
{
    return Exact(a_dRadians) + Sigma(a_Fit, a_dSigma) + " rad (" + Number("%.8g", a_dRadians * DEGREES) +
           Sigma(a_Fit, a_dSigma * DEGREES) + " degrees)\n";
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
        szText += "  scale    = " + Exact(S.dSx) + Sigma(a_Fit, S.dSigmaSx) +
                  "\n  rotation = " + Angle(a_Fit, S.dRotation, S.dSigmaRotation);
    }
    else
    {
        szText += "  scale sx = " + Exact(S.dSx) + Sigma(a_Fit, S.dSigmaSx) + "\n  scale sy = " + Exact(S.dSy) +
                  Sigma(a_Fit, S.dSigmaSy) + (S.dSy < 0 ? " (negative: the orientation is reversed)" : "") +
                  "\n  rotation = " + Angle(a_Fit, S.dRotation, S.dSigmaRotation) +
                  "  skew     = " + Angle(a_Fit, S.dSkew, S.dSigmaSkew);
    }
    szText += a_Fit.bRaw ? "" : Translation("local", a_Fit.Coefs);
    return szText + (a_Fit.Original ? Translation("original", *a_Fit.Original) : "");
}

// ---------------------------------------------------------------------------------------------------------------------
// Residuals

static const std::vector<int> RESIDUAL_WIDTHS = {7, 7, 15, 15, 15, 13, 13, 13, 15};

static std::string ResidualRow(const TPoint& a_Point, const judgement::TPointJudgement& a_Judgement,
                               std::size_t a_iNumber)
{
    const judgement::TPointJudgement& P = a_Judgement;
    const bool bSource = P.bSource != 0;
    std::vector<std::string> vszCells = {std::to_string(a_iNumber), std::to_string(a_Point.iLine), Residual(P.dX),
                                         Residual(P.dY), Residual(P.dLength)};
    vszCells.push_back(bSource ? Number("%.4g", P.dSourceX) : "none");
    vszCells.push_back(bSource ? Number("%.4g", P.dSourceY) : "none");
    if (P.Role == judgement::ROLE_FITTED)
    {
        vszCells.push_back(P.bTested != 0 ? Number("%.4g", P.dStudentised) : "none");
        vszCells.push_back(P.bLeave != 0 ? Residual(P.dLeaveLength) : "none");
    }
    return Row(vszCells, RESIDUAL_WIDTHS) + NameAtEnd(a_Point.szName);
}

// The table of the points that have this role.
static void WriteResiduals(const TPoints& a_Points, const TFit& a_Fit, judgement::enumRole a_Role,
                           const TWrite& a_Write)
{
    std::vector<std::string> vszHead = {"point", "line", "dX", "dY", "length", "source dx", "source dy"};
    if (a_Role == judgement::ROLE_FITTED)
    {
        vszHead.insert(vszHead.end(), {"studentised", "leave-one-out"});
    }
    std::string szText = Row(vszHead, RESIDUAL_WIDTHS) + "  name\n";
    for (std::size_t i = 0; i < a_Fit.vPoints.size(); ++i)
    {
        szText += a_Fit.vPoints[i].Role == a_Role ? ResidualRow(a_Points.vPoints[i], a_Fit.vPoints[i], i + 1) : "";
        if (szText.size() > BUFFERED_BYTES)
        {
            a_Write(szText);
            szText.clear();
        }
    }
    a_Write(szText);
}

static void WriteAllResiduals(const TPoints& a_Points, const TFit& a_Fit, const TWrite& a_Write)
{
    a_Write("\nResiduals, computed less given. dX, dY, length, leave-one-out: target units; dx, dy: source units\n");
    WriteResiduals(a_Points, a_Fit, judgement::ROLE_FITTED, a_Write);
    if (a_Fit.Judgement.iDropped > 0)
    {
        a_Write("\nDropped points: computed less given\n");
        WriteResiduals(a_Points, a_Fit, judgement::ROLE_DROPPED, a_Write);
    }
    if (a_Fit.Judgement.iChecks > 0)
    {
        a_Write("\nCheck points, not fitted: computed less given\n");
        WriteResiduals(a_Points, a_Fit, judgement::ROLE_CHECK, a_Write);
    }
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

void WriteTextReport(const TPoints& a_Points, const TFit& a_Fit, bool a_bSummary, const TWrite& a_Write)
{
    a_Write(Heading(a_Points, a_Fit) + Kinds(a_Points, a_Fit) + Suspects(a_Points, a_Fit) +
            (a_Fit.bRaw ? "" : LocalFrame(a_Fit)) + OriginalFrame(a_Fit) + Shape(a_Fit));
    if (!a_bSummary)
    {
        WriteAllResiduals(a_Points, a_Fit, a_Write);
    }
    a_Write(Statistics(a_Points, a_Fit));
}

} // namespace fitpoints
