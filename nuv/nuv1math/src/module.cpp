// module.cpp: the entry of the library as a DLL of Windows or Windows CE.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "random.h"

#include <windows.h>

// The headers of Windows CE declare the module as HANDLE, those of desktop Windows as HINSTANCE.
#if defined(_WIN32_WCE)
extern "C" BOOL WINAPI DllMain(HANDLE, DWORD a_iReason, LPVOID)
#else
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD a_iReason, LPVOID)
#endif
{
    if (a_iReason == DLL_PROCESS_ATTACH)
    {
        nuv::SeedAtLoad();
    }
    return TRUE;
}
