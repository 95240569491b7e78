// virtual_raster.cpp: the virtual raster of GDAL, which places an image in the target system.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "child_process.h"
#include "exports.h"
#include "pixels.h"
#include "text.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace fitpoints {

// Intervals of the grid of points in each direction. gdalwarp -tps interpolates between the points.
static const int GRID_INTERVALS = 20;

// What gdal_translate writes for the image: its size, bands, colours and the like.
static std::string Described(const std::string& a_szRaster)
{
    const std::unique_ptr<char, void (*)(void*)> szPath(realpath(a_szRaster.c_str(), nullptr), std::free);
    if (!szPath)
    {
        FailWithError(a_szRaster, "cannot be read", errno);
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> File(std::tmpfile(), std::fclose);
    if (!File)
    {
        FailWithError("temporary file", "cannot be written", errno);
    }
    const TChildResult Result =
        RunChild({"gdal_translate", "-q", "-of", "VRT", szPath.get(), "/vsistdout/"}, "", fileno(File.get()));
    std::rewind(File.get());
    std::string szText;
    for (int iChar = std::getc(File.get()); iChar != EOF; iChar = std::getc(File.get()))
    {
        szText.push_back(static_cast<char>(iChar));
    }
    if (!Result.bSucceeded || szText.find("</VRTDataset>") == std::string::npos)
    {
        Fail(a_szRaster,
             "gdal_translate failed to describe it" + (Result.szError.empty() ? "" : ": " + Result.szError));
    }
    return szText;
}

// Removes the first element of this name, which is not nested in another one of this name.
static void RemoveElement(const std::string& a_szName, std::string& a_szXml)
{
    const std::string szClose = "</" + a_szName + ">";
    const std::size_t iBegin = a_szXml.find("<" + a_szName);
    const std::size_t iEnd = a_szXml.find(szClose);
    if (iBegin != std::string::npos && iEnd != std::string::npos && iBegin < iEnd)
    {
        a_szXml.erase(iBegin, iEnd + szClose.size() - iBegin);
    }
}

static std::string Escaped(const std::string& a_szText)
{
    std::string szResult;
    for (const char iChar : a_szText)
    {
        szResult += iChar == '&'   ? "&amp;"
                    : iChar == '<' ? "&lt;"
                    : iChar == '>' ? "&gt;"
                    : iChar == '"' ? "&quot;"
                                   : std::string(1, iChar);
    }
    return szResult;
}

// The target system as WKT: the line "#CRS: ..." without its beginning. Empty if there is none.
static std::string TargetSystem(const TPoints& a_Points)
{
    const std::size_t iBegin = a_Points.szCrs.find_first_not_of(": ", 4); // behind "#CRS"
    return a_Points.szCrs.empty() || iBegin == std::string::npos ? "" : a_Points.szCrs.substr(iBegin);
}

static std::string GeoTransform(const TPoints& a_Points, const TFit& a_Fit)
{
    if (!a_Fit.Original)
    {
        Fail(a_Points.szFile, "no virtual raster: the coefficients are not finite in original coordinates");
    }
    const TPixelCoefs C = PixelCoefs(PixelSystem(a_Points.Kind), *a_Fit.Original, -0.5);
    const std::string szSystem = TargetSystem(a_Points);
    return (szSystem.empty() ? "" : "\n  <SRS>" + Escaped(szSystem) + "</SRS>") + "\n  <GeoTransform>" + Exact(C.dC) +
           ", " + Exact(C.dA) + ", " + Exact(C.dB) + ", " + Exact(C.dF) + ", " + Exact(C.dD) + ", " + Exact(C.dE) +
           "</GeoTransform>";
}

static std::string GridPoint(const TPoints& a_Points, const TFit& a_Fit, const TPosition& a_Pixel)
{
    const TPosition Source = SourceOf(PixelSystem(a_Points.Kind), a_Pixel.dXa, a_Pixel.dYa);
    const double dX = Source.dXa - a_Fit.Origins.dX;
    const double dY = Source.dYa - a_Fit.Origins.dY;
    const TPosition Image = Transform(a_Fit.Coefs, dX, dY);
    if (!(Denominator(a_Fit.Coefs, dX, dY) > 0) || !std::isfinite(Image.dXa) || !std::isfinite(Image.dYa))
    {
        Fail(a_Points.szFile, "no virtual raster: the transformation takes points of the image to infinity");
    }
    return "\n    <GCP Pixel=\"" + Exact(a_Pixel.dXa) + "\" Line=\"" + Exact(a_Pixel.dYa) + "\" X=\"" +
           Exact(Image.dXa + a_Fit.Origins.dXa) + "\" Y=\"" + Exact(Image.dYa + a_Fit.Origins.dYa) + "\" />";
}

// A number in quotes behind the name of an attribute.
static double Attribute(const std::string& a_szXml, const std::string& a_szName)
{
    const std::size_t iBegin = a_szXml.find(a_szName + "=\"");
    return iBegin == std::string::npos ? 0 : std::strtod(a_szXml.c_str() + iBegin + a_szName.size() + 2, nullptr);
}

static std::string Grid(const TPoints& a_Points, const TFit& a_Fit, const std::string& a_szXml)
{
    const double dColumns = Attribute(a_szXml, "rasterXSize") / GRID_INTERVALS;
    const double dRows = Attribute(a_szXml, "rasterYSize") / GRID_INTERVALS;
    std::string szText = "\n  <GCPList Projection=\"" + Escaped(TargetSystem(a_Points)) + "\">";
    for (int iRow = 0; iRow <= GRID_INTERVALS; ++iRow)
    {
        for (int iColumn = 0; iColumn <= GRID_INTERVALS; ++iColumn)
        {
            szText += GridPoint(a_Points, a_Fit, {iColumn * dColumns, iRow * dRows});
        }
    }
    return szText + "\n  </GCPList>";
}

std::string VirtualRaster(const TPoints& a_Points, const TFit& a_Fit, const std::string& a_szRaster)
{
    std::string szXml = Described(a_szRaster);
    for (const char* const szName : {"SRS", "GeoTransform", "GCPList"})
    {
        RemoveElement(szName, szXml);
    }
    const std::size_t iHead = szXml.find('>') + 1; // behind <VRTDataset ...>
    szXml.insert(iHead,
                 a_Fit.Kind == nuv::METHOD_OMOGRAPHIC ? Grid(a_Points, a_Fit, szXml) : GeoTransform(a_Points, a_Fit));
    return szXml;
}

} // namespace fitpoints
