// exports.cpp: files of the QGIS georeferencer, arguments of GDAL's programs, and definitions of PROJ.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "exports.h"
#include "pixels.h"
#include "support.h"
#include "text.h"

#include <cmath>

namespace fitpoints {

static const double ARCSECONDS = 206264.80624709636; // 648000/pi

// std::hypot has last bits that differ from one C library to the next. No length here is near the limits of a double.
static double Length(double a_dX, double a_dY)
{
    return std::sqrt(a_dX * a_dX + a_dY * a_dY);
}

std::string GcpArguments(const TPoints& a_Points, const TFit& a_Fit)
{
    const TPixelSystem System = PixelSystem(a_Points.Kind);
    std::string szText;
    for (std::size_t i = 0; i < a_Points.vPoints.size(); ++i)
    {
        const TPoint& Point = a_Points.vPoints[i];
        const TPosition Pixel = PixelOf(System, Point.dX, Point.dY);
        szText += a_Fit.vPoints[i].Role != judgement::ROLE_FITTED
                      ? ""
                      : "-gcp " + Shortest(Pixel.dXa) + " " + Shortest(Pixel.dYa) + " " + Shortest(Point.dXa) + " " +
                            Shortest(Point.dYa) + "\n";
    }
    return szText;
}

// QGIS counts lines downwards in its residuals, but upwards from minus infinity in sourceY.
static std::string GeoreferencerRow(const TPixelSystem& a_System, const TPoint& a_Point,
                                    const judgement::TPointJudgement& a_Judgement)
{
    const TPosition Pixel = PixelOf(a_System, a_Point.dX, a_Point.dY);
    const double dX = a_Judgement.dSourceX;
    const double dY = a_System.iRowSign * a_Judgement.dSourceY;
    const std::string szResiduals = a_Judgement.bSource != 0
                                        ? Shortest(dX) + "," + Shortest(dY) + "," + Shortest(Length(dX, dY))
                                        : ",,"; // no source point belongs to the target point
    return Shortest(a_Point.dXa) + "," + Shortest(a_Point.dYa) + "," + Shortest(Pixel.dXa) + "," +
           Shortest(0 - Pixel.dYa) + (a_Judgement.Role == judgement::ROLE_FITTED ? ",1," : ",0,") + szResiduals + "\n";
}

std::string GeoreferencerFile(const TPoints& a_Points, const TFit& a_Fit)
{
    const TPixelSystem System = PixelSystem(a_Points.Kind);
    std::string szText = a_Points.szCrs.empty() ? "" : a_Points.szCrs + "\n";
    szText += "mapX,mapY,sourceX,sourceY,enable,dX,dY,residual\n";
    for (std::size_t i = 0; i < a_Points.vPoints.size(); ++i)
    {
        szText += GeoreferencerRow(System, a_Points.vPoints[i], a_Fit.vPoints[i]);
    }
    return szText;
}

// X = s (cos t x + sin t y) + x0, Y = s (-sin t x + cos t y) + y0, with t in seconds of arc.
static std::string HelmertDefinition(const nuv::TOmographicParams& a_Coefs)
{
    return "+proj=helmert +x=" + Exact(a_Coefs.dC) + " +y=" + Exact(a_Coefs.dF) +
           " +s=" + Exact(Length(a_Coefs.dA, a_Coefs.dB)) +
           " +theta=" + Exact(std::atan2(a_Coefs.dB, a_Coefs.dA) * ARCSECONDS) + "\n";
}

static std::string AffineDefinition(const nuv::TOmographicParams& a_Coefs)
{
    return "+proj=affine +xoff=" + Exact(a_Coefs.dC) + " +yoff=" + Exact(a_Coefs.dF) + " +s11=" + Exact(a_Coefs.dA) +
           " +s12=" + Exact(a_Coefs.dB) + " +s21=" + Exact(a_Coefs.dD) + " +s22=" + Exact(a_Coefs.dE) + "\n";
}

std::string ProjDefinition(const TPoints& a_Points, const TFit& a_Fit)
{
    if (a_Fit.Kind == nuv::METHOD_OMOGRAPHIC)
    {
        Fail(a_Points.szFile, "PROJ has no omographic transformation: add --method affine or --method conformal");
    }
    if (!a_Fit.Original)
    {
        Fail(a_Points.szFile, "no definition of PROJ: the coefficients are not finite in original coordinates");
    }
    const bool bHelmert = a_Fit.Kind == nuv::METHOD_CONFORMAL && !a_Fit.bMirrored;
    return (bHelmert ? HelmertDefinition : AffineDefinition)(*a_Fit.Original);
}

} // namespace fitpoints
