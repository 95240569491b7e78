// network_adjustment.cpp: heights of a levelling network by weighted least squares.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Six levelled lines join a benchmark of 100 m and three new points. The variance of a line is proportional to its
// length, so its weight is w = 1/length: its coefficients and its observed value are multiplied by sqrt(w).

#include "nuv1math.h"

#include <cmath>
#include <cstdio>

constexpr int POINTS = 3, LINES = 6;
constexpr int BENCHMARK = -1; // the library skips a negative index: this height is known

int main()
{
    //! [lines]
    const int viFrom[LINES] = {BENCHMARK, BENCHMARK, 0, 0, 1, BENCHMARK};
    const int viTo[LINES] = {0, 1, 1, 2, 2, 2};
    const double vdRise[LINES] = {5.102, 2.341, -2.748, 1.231, 3.994, 6.343}; // m
    const double vdLength[LINES] = {4.0, 3.0, 2.0, 3.5, 2.5, 6.0};            // km
    //! [lines]

    //! [observations]
    double *vdMatrix, *vdHeights;
    nuv::InitCholLowTri(POINTS, &vdMatrix, &vdHeights);
    if (vdMatrix == nullptr)
    {
        return 1;
    }
    for (int i = 0; i < LINES; ++i)
    {
        const double dRoot = std::sqrt(1.0 / vdLength[i]);
        const double vdCoefficients[] = {-dRoot, dRoot};
        const int viColumns[] = {viFrom[i], viTo[i]};
        const double dKnown = viFrom[i] == BENCHMARK ? 100.0 : 0.0;
        nuv::UpdateNormMatrixLowTri(POINTS, vdMatrix, vdHeights, 2, vdCoefficients, viColumns,
                                    (vdRise[i] + dKnown) * dRoot);
    }
    //! [observations]
    //! [solution]
    if (!nuv::CholeskyLowTri(POINTS, vdMatrix))
    {
        return 1; // the lines do not determine the heights
    }
    nuv::SolveCholLowTri(POINTS, vdMatrix, vdHeights);
    //! [solution]

    //! [residuals]
    double dSquares = 0.0, dAtLast = 0.0; // at the minimum the weighted residuals at a point add up to 0
    for (int i = 0; i < LINES; ++i)
    {
        const double dFrom = viFrom[i] == BENCHMARK ? 100.0 : vdHeights[viFrom[i]];
        const double dResidual = vdHeights[viTo[i]] - dFrom - vdRise[i];
        std::printf("line %2d to %d: residual %+5.2f mm\n", viFrom[i], viTo[i], dResidual * 1000.0);
        dSquares += dResidual * dResidual / vdLength[i];
        dAtLast += viTo[i] == POINTS - 1 ? dResidual / vdLength[i] : 0.0;
    }
    const double dSigma = std::sqrt(dSquares / (LINES - POINTS)); // standard deviation of a line of one kilometre
    //! [residuals]
    //! [deviations]
    for (int i = 0; i < POINTS; ++i)
    {
        double vdColumn[POINTS] = {};
        vdColumn[i] = 1.0;
        nuv::SolveCholLowTri(POINTS, vdMatrix, vdColumn); // column i of the inverse; its element i scales the variance
        std::printf("point %d: %.4f m +- %.2f mm\n", i, vdHeights[i], dSigma * std::sqrt(vdColumn[i]) * 1000.0);
    }
    //! [deviations]
    nuv::DeleteCholLowTri(vdMatrix, vdHeights);
    return dSigma < 0.01 && std::fabs(dAtLast) < 1e-10 ? 0 : 1;
}
