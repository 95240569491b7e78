// consumer.cpp: a program that uses the library as it is installed. It prints "ok" if the library does what it should.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#if defined(NUV_WINDOWS_FIRST)
#include <windows.h>
// Microsoft's windows.h has these macros, and that of mingw-w64 leaves them out for C++.
#define min(a_Left, a_Right) ((a_Left) < (a_Right) ? (a_Left) : (a_Right))
#define max(a_Left, a_Right) ((a_Left) > (a_Right) ? (a_Left) : (a_Right))
#endif

#include <nuv1math.h>

#include <stdio.h>

namespace {

// Drawn before main: the library must be seeded before the objects of the program are made.
const double FIRST_DRAWN = nuv::Rand();

bool IsSeededAtLoad()
{
    nuv::SetRandomSeed(-1);
    const double dExpected = nuv::Rand();
    return FIRST_DRAWN > 0.0 && FIRST_DRAWN >= dExpected && FIRST_DRAWN <= dExpected;
}

// The corners of the unit square, twice as large and moved by (3, 4).
bool Fits()
{
    const double vdX[] = {0.0, 1.0, 1.0, 0.0};
    const double vdY[] = {0.0, 0.0, 1.0, 1.0};
    const double vdXa[] = {3.0, 5.0, 5.0, 3.0};
    const double vdYa[] = {4.0, 4.0, 6.0, 6.0};
    nuv::enumMethodUsed Used = nuv::METHOD_CONFORMAL;
    nuv::TOmographicParams Params;
    return nuv::CalcCoefs(4, vdX, vdY, vdXa, vdYa, true, nuv::METHOD_AFFINE, Used, Params) &&
           Used == nuv::METHOD_AFFINE && Params.dA > 1.999 && Params.dA < 2.001 && Params.dC > 2.999 &&
           Params.dC < 3.001;
}

// Uses the mathematical library, which a static library does not bring along.
bool SolvesAnAngle()
{
    double vdAngles[2];
    return nuv::SolveLinTrig(1.0, 0.0, 0.0, vdAngles) == 2; // cos(t) = 0
}

} // namespace

int main()
{
    const bool bOk = NUV1MATH_VERSION >= 10000 && IsSeededAtLoad() && Fits() && SolvesAnAngle();
    puts(bOk ? "ok" : "WRONG");
    return bOk ? 0 : 1;
}
