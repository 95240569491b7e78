/* consumer_c.c: calls the DLL of the C interface as consumer.cpp calls that of C++.
 * Copyright (c) 2026 the nuv1math authors
 * SPDX-License-Identifier: MIT */

#include <nuv1math_c.h>

__declspec(dllimport) void __stdcall ExitProcess(unsigned int a_iCode);

int _fltused = 0; /* the compiler refers to it where doubles are used */

void Start(void)
{
    const double vdX[] = {0.0, 1.0, 1.0, 0.0};
    const double vdY[] = {0.0, 0.0, 1.0, 1.0};
    const double vdXa[] = {3.0, 5.0, 5.0, 3.0};
    const double vdYa[] = {4.0, 4.0, 6.0, 6.0};
    nuv_enumMethodUsed Used = NUV_METHOD_CONFORMAL;
    nuv_TOmographicParams Params;
    const int bFits = nuv_CalcCoefs(4, vdX, vdY, vdXa, vdYa, 1, NUV_METHOD_AFFINE, &Used, &Params) &&
                      Used == NUV_METHOD_AFFINE && Params.dA == 2.0 && Params.dC == 3.0;
    ExitProcess(bFits ? 77 : 1);
}
