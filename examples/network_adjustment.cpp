// network_adjustment.cpp: heights of a levelling network by weighted least squares.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Six levelled lines join a benchmark of 100 m and three new points. The variance of a line is proportional to its
// length, so its weight is w = 1/length: its coefficients and its observed value are multiplied by sqrt(w).

#include "nuv1math.h"

#include <cmath>
#include <cstdio>

//! [lines]
constexpr int POINTS = 3, LINES = 6;
constexpr int BENCHMARK = -1;              // the library skips a negative index: this height is known
constexpr double BENCHMARK_HEIGHT = 100.0; // m

struct TLine
{
    int iFrom, iTo;
    double dRise;   // m
    double dLength; // km
};

constexpr TLine LEVELLED[LINES] = {{BENCHMARK, 0, 5.102, 4.0}, {BENCHMARK, 1, 2.341, 3.0}, {0, 1, -2.748, 2.0},
                                   {0, 2, 1.231, 3.5},         {1, 2, 3.994, 2.5},         {BENCHMARK, 2, 6.343, 6.0}};
//! [lines]

int main()
{
    //! [observations]
    double *vdMatrix, *vdHeights;
    nuv::InitCholLowTri(POINTS, &vdMatrix, &vdHeights);
    if (vdMatrix == nullptr)
    {
        return 1; // no memory
    }
    for (const TLine& Line : LEVELLED)
    {
        const double dRoot = std::sqrt(1.0 / Line.dLength);
        const double vdCoefficients[] = {-dRoot, dRoot};
        const int viColumns[] = {Line.iFrom, Line.iTo};
        const double dKnown = Line.iFrom == BENCHMARK ? BENCHMARK_HEIGHT : 0.0;
        nuv::UpdateNormMatrixLowTri(POINTS, vdMatrix, vdHeights, 2, vdCoefficients, viColumns,
                                    (Line.dRise + dKnown) * dRoot);
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
    for (const TLine& Line : LEVELLED)
    {
        const double dFrom = Line.iFrom == BENCHMARK ? BENCHMARK_HEIGHT : vdHeights[Line.iFrom];
        const double dResidual = vdHeights[Line.iTo] - dFrom - Line.dRise;
        std::printf("line %2d to %d: residual %+5.2f mm\n", Line.iFrom, Line.iTo, dResidual * 1000.0);
        dSquares += dResidual * dResidual / Line.dLength;
        dAtLast += Line.iTo == POINTS - 1 ? dResidual / Line.dLength : 0.0;
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
