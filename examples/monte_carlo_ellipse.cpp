// monte_carlo_ellipse.cpp: error ellipse of a point that a fitted affine transformation maps, by simulation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Every trial fits eight control points with normal errors of 20 mm in X and 50 mm in Y, and maps a ninth point. The
// seed makes every run the same. In theory the semi-axes are sigma q with q^2 = 1/n + dx^2/Sxx + dy^2/Syy, where dx, dy
// and the sums of squares count from the centre of the control points.

#include "nuv1math.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

int main()
{
    const int iPoints = 8, iTrials = 5000;
    const double vdX[iPoints] = {0.0, 50.0, 100.0, 0.0, 100.0, 0.0, 50.0, 100.0};
    const double vdY[iPoints] = {0.0, 0.0, 0.0, 30.0, 30.0, 60.0, 60.0, 60.0};
    const double dPointX = 120.0, dPointY = 90.0; // outside the control points
    const double dSigmaX = 0.02, dSigmaY = 0.05;
    const nuv::TAffineCoefs True = {0.9, -0.2, 5000.0, 0.3, 1.1, 7000.0};

    //! [trials]
    nuv::SetRandomSeed(2026);
    double dSxx = 0.0, dSxy = 0.0, dSyy = 0.0;
    for (int i = 0; i < iTrials; ++i)
    {
        double vdXa[iPoints], vdYa[iPoints];
        for (int k = 0; k < iPoints; ++k)
        {
            vdXa[k] = nuv::Randn(True.dA * vdX[k] + True.dB * vdY[k] + True.dC, dSigmaX);
            vdYa[k] = nuv::Randn(True.dD * vdX[k] + True.dE * vdY[k] + True.dF, dSigmaY);
        }
        nuv::TAffineCoefs Fit;
        if (nuv::CalcAffineCoefs(iPoints, vdX, vdY, vdXa, vdYa, Fit) != 1)
        {
            return 1;
        }
        const double dErrorX = (Fit.dA - True.dA) * dPointX + (Fit.dB - True.dB) * dPointY + (Fit.dC - True.dC);
        const double dErrorY = (Fit.dD - True.dD) * dPointX + (Fit.dE - True.dE) * dPointY + (Fit.dF - True.dF);
        dSxx += dErrorX * dErrorX / iTrials;
        dSxy += dErrorX * dErrorY / iTrials;
        dSyy += dErrorY * dErrorY / iTrials;
    }
    //! [trials]
    // Eigenvalues and major axis of the covariance matrix.
    const double dMean = (dSxx + dSyy) / 2.0, dRadius = std::hypot((dSxx - dSyy) / 2.0, dSxy);
    const double dMajor = std::sqrt(dMean + dRadius), dMinor = std::sqrt(dMean - dRadius);
    const double dAxis = std::atan2(dMajor * dMajor - dSxx, dSxy) * 180.0 / std::acos(-1.0);
    const double dQ = std::sqrt(1.0 / 8.0 + 70.0 * 70.0 / 15000.0 + 60.0 * 60.0 / 5400.0);
    std::printf("simulated: semi-axes %.1f and %.1f mm, major axis at %.0f deg\n", dMajor * 1e3, dMinor * 1e3, dAxis);
    std::printf("theory:    semi-axes %.1f and %.1f mm, major axis at 90 deg\n", dSigmaY * dQ * 1e3,
                dSigmaX * dQ * 1e3);
    const double dOff = std::max(std::fabs(dMajor / (dSigmaY * dQ) - 1.0), std::fabs(dMinor / (dSigmaX * dQ) - 1.0));
    return dOff < 0.04 ? 0 : 1; // 5000 trials: a standard deviation is known to 1 %
}
