// consumer.cpp: calls the DLL as a program of Microsoft's compiler does. No header of Microsoft's is needed: the program
// has its own entry, and declares what it uses of Windows. Its exit code is 77 if the library does what it should.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include <nuv1math.h>

extern "C" __declspec(dllimport) void __stdcall ExitProcess(unsigned int a_iCode);

extern "C" int _fltused = 0; // the compiler refers to it where doubles are used

extern "C" void Start()
{
    const double dDrawn = nuv::Rand();
    nuv::SetRandomSeed(-1);
    const bool bSeeded = dDrawn > 0.0 && dDrawn == nuv::Rand();

    const double vdX[] = {0.0, 1.0, 1.0, 0.0};
    const double vdY[] = {0.0, 0.0, 1.0, 1.0};
    const double vdXa[] = {3.0, 5.0, 5.0, 3.0};
    const double vdYa[] = {4.0, 4.0, 6.0, 6.0};
    nuv::enumMethodUsed Used = nuv::METHOD_CONFORMAL;
    nuv::TOmographicParams Params;
    const bool bFits = nuv::CalcCoefs(4, vdX, vdY, vdXa, vdYa, true, nuv::METHOD_AFFINE, Used, Params) &&
                       Used == nuv::METHOD_AFFINE && Params.dA == 2.0 && Params.dC == 3.0;
    ExitProcess(bSeeded && bFits ? 77 : 1);
}
