// plot.h: the drawing of points and residual vectors, by gnuplot.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_PLOT_H
#define NUV_FITPOINTS_PLOT_H

#include "fit.h"
#include "output_file.h"

namespace fitpoints {

enum enumPlotKind
{
    PLOT_SVG,
    PLOT_PNG
};

// By the extension of the name. Fails for any other than .svg and .png.
enumPlotKind PlotKind(const std::string& a_szName);

// What gnuplot is told. Texts of the user stand in it between single quotes only.
std::string PlotScript(const TPoints& a_Points, const TFit& a_Fit, enumPlotKind a_Kind);

// Draws into the output.
void DrawPlot(const TPoints& a_Points, const TFit& a_Fit, TOutput& a_Output);

} // namespace fitpoints

#endif // NUV_FITPOINTS_PLOT_H
