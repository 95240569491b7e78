// export_options.cpp: the options that write files for other programs.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "exports.h"

namespace fitpoints {

// An export that needs no raster.
template <std::string (*MakeText)(const TPoints&, const TFit&)>
static std::string WithoutRaster(const TPoints& a_Points, const TFit& a_Fit, const std::string&)
{
    return MakeText(a_Points, a_Fit);
}

const TExport EXPORTS[] = {
    {"--world", "write a world file (conformal and affine kinds)", WithoutRaster<WorldFile>, true},
    {"--points", "write a file of the QGIS georeferencer, with residuals in pixels", WithoutRaster<GeoreferencerFile>,
     true},
    {"--gcp", "write the points as -gcp arguments of GDAL's programs", WithoutRaster<GcpArguments>, true},
    {"--vrt", "write a virtual raster of GDAL (needs --raster and gdal_translate)", VirtualRaster, true},
    {"--proj", "write the definition of the transformation for PROJ (conformal and affine kinds)",
     WithoutRaster<ProjDefinition>, false}};
const std::size_t EXPORT_COUNT = sizeof EXPORTS / sizeof *EXPORTS;

} // namespace fitpoints
