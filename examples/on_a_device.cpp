// on_a_device.cpp: fixed memory, one factor for many right-hand sides, and no call that can end the process.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// A machine levels its platform: it measures heights at fixed places again and again, and wants the plane
// h = u0 + u1 x + u2 y through them each time. Places never change, so their normal matrix is factorised once.

#include "nuv1math.h"

#include <cstdio>
#include <mutex>

//! [memory]
const int UNKNOWNS = 3, PLACES = 5;
double g_vdFactor[UNKNOWNS * (UNKNOWNS + 1) / 2]; // packed; static, so no allocation can fail
const double PLACE_X[PLACES] = {0.0, 4.0, 4.0, 0.0, 2.0}, PLACE_Y[PLACES] = {0.0, 0.0, 3.0, 3.0, 1.5};
//! [memory]

//! [factorise]
// Once, at start.
bool Prepare()
{
    double vdIgnored[UNKNOWNS] = {};
    for (int i = 0; i < PLACES; ++i)
    {
        const double vdRow[UNKNOWNS] = {1.0, PLACE_X[i], PLACE_Y[i]};
        nuv::UpdateNormMatrixLowTri(UNKNOWNS, g_vdFactor, vdIgnored, vdRow, 0.0);
    }
    return nuv::CholeskyLowTri(UNKNOWNS, g_vdFactor);
}
//! [factorise]

//! [solve]
// For each set of heights. It neither allocates nor fails.
void Plane(const double* a_vdHeights, double* a_vdPlane)
{
    for (int k = 0; k < UNKNOWNS; ++k)
    {
        a_vdPlane[k] = 0.0;
    }
    for (int i = 0; i < PLACES; ++i)
    {
        a_vdPlane[0] += a_vdHeights[i];
        a_vdPlane[1] += PLACE_X[i] * a_vdHeights[i];
        a_vdPlane[2] += PLACE_Y[i] * a_vdHeights[i];
    }
    nuv::SolveCholLowTri(UNKNOWNS, g_vdFactor, a_vdPlane);
}
//! [solve]

//! [untransform]
// Maps a target point back. AffineUntransform would end the process for most singular transformations; the two-unknown
// Roots reports them.
bool MapBack(const nuv::TAffineCoefs& a_Coefs, double a_dXa, double a_dYa, double& a_dX, double& a_dY)
{
    return nuv::Roots(a_Coefs.dA, a_Coefs.dB, a_Coefs.dD, a_Coefs.dE, a_dXa - a_Coefs.dC, a_dYa - a_Coefs.dF, a_dX,
                      a_dY) == 1;
}
//! [untransform]

//! [random]
// The generator has one state for the process. Threads that share it take turns.
std::mutex g_Generator;

double RandomNoise(double a_dSigma)
{
    const std::lock_guard<std::mutex> Turn(g_Generator);
    return nuv::Randn(0.0, a_dSigma);
}
//! [random]

int main()
{
    if (!Prepare())
    {
        return 1;
    }
    const double vdSets[2][PLACES] = {{1.00, 1.08, 1.14, 1.06, 1.07}, {1.01, 1.05, 0.99, 0.95, 1.00}};
    for (const double* vdHeights : vdSets)
    {
        double vdPlane[UNKNOWNS];
        Plane(vdHeights, vdPlane);
        std::printf("height %.3f, slopes %.4f and %.4f\n", vdPlane[0], vdPlane[1], vdPlane[2]);
    }

    const nuv::TAffineCoefs Good = {2.0, 1.0, 5.0, -1.0, 3.0, 6.0}, Singular = {1.0, 2.0, 0.0, 2.0, 4.0, 0.0};
    double dX = 0.0, dY = 0.0;
    const bool bGood = MapBack(Good, 12.0, 9.0, dX, dY);
    std::printf("mapped back: (%.3f, %.3f)\n", dX, dY);
    const bool bSingular = MapBack(Singular, 12.0, 9.0, dX, dY);
    std::printf("singular: %s\n", bSingular ? "mapped" : "refused, the process goes on");
    return bGood && !bSingular && RandomNoise(0.0) == 0.0 ? 0 : 1;
}
