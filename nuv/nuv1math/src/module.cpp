// module.cpp: what the library does when it is loaded into a process.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace nuv {

static const int SEED_AT_LOAD = -1; // so every process starts with the same sequence

} // namespace nuv

#if defined(_WIN32)

// The headers of Windows CE declare the module as HANDLE, those of desktop Windows as HINSTANCE.
#if defined(_WIN32_WCE)
extern "C" BOOL WINAPI DllMain(HANDLE, DWORD a_iReason, LPVOID)
#else
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD a_iReason, LPVOID)
#endif
{
    if (a_iReason == DLL_PROCESS_ATTACH)
    {
        nuv::SetRandomSeed(nuv::SEED_AT_LOAD);
    }
    return TRUE;
}

#elif defined(__GNUC__)

__attribute__((constructor)) static void SeedAtLoad()
{
    nuv::SetRandomSeed(nuv::SEED_AT_LOAD);
}

#else

#error "module.cpp does not know how to run code at load with this compiler"

#endif
