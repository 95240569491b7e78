// plot.h: draws points and residual vectors with gnuplot.
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

// The extension of the name tells the kind. Fails unless it is .svg or .png.
enumPlotKind PlotKind(const std::string& a_szName);

// The commands for gnuplot. Texts of the user appear only between single quotes.
std::string PlotScript(const TPoints& a_Points, const TFit& a_Fit, enumPlotKind a_Kind);

// Draws into the output. The result is a warning, or empty.
std::string DrawPlot(const TPoints& a_Points, const TFit& a_Fit, TOutput& a_Output);

} // namespace fitpoints

#endif // NUV_FITPOINTS_PLOT_H
