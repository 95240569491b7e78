// report_program.cpp: maps a point back that has no image under a singular transformation. The library reports that.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"

int main()
{
    const nuv::TAffineCoefs Coefs = {1.0, 1.0, 0.0, 1.0, 1.0, 0.0}; // all of the plane onto the line X = Y
    double dX = 0.0;
    double dY = 0.0;
    nuv::AffineUntransform(Coefs, 1.0, 0.0, dX, dY);
    return 0;
}
