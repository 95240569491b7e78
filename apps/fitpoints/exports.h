// exports.h: results for other programs, each of which is the text of a file.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_EXPORTS_H
#define NUV_FITPOINTS_EXPORTS_H

#include "fit.h"

namespace fitpoints {

// The six lines of a world file. Fails for an omographic transformation, which has eight coefficients.
std::string WorldFile(const TPoints& a_Points, const TFit& a_Fit);

// A file of the QGIS georeferencer with the residuals in pixels. Points that are not fitted are not enabled.
std::string GeoreferencerFile(const TPoints& a_Points, const TFit& a_Fit);

// The fitted points as arguments of GDAL's programs, one in a line.
std::string GcpArguments(const TPoints& a_Points, const TFit& a_Fit);

// The transformation as a definition of PROJ. Fails for an omographic transformation.
std::string ProjDefinition(const TPoints& a_Points, const TFit& a_Fit);

// A virtual raster of GDAL that places the image a_szRaster in the target system. For an omographic transformation, which
// GDAL does not know, it holds a grid of computed points. Runs gdal_translate.
std::string VirtualRaster(const TPoints& a_Points, const TFit& a_Fit, const std::string& a_szRaster);

// An option that writes such a file.
struct TExport
{
    const char* szOption;
    const char* szHelp;
    std::string (*MakeText)(const TPoints& a_Points, const TFit& a_Fit, const std::string& a_szRaster);
    bool bPixels; // the source coordinates are taken as those of pixels
};

extern const TExport EXPORTS[];
extern const std::size_t EXPORT_COUNT;

} // namespace fitpoints

#endif // NUV_FITPOINTS_EXPORTS_H
