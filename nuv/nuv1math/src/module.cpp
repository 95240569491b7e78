// module.cpp: the module entry: what happens when the library is loaded into a process.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace nuv {

static const int SEED_AT_LOAD = -1; // every process starts with the same sequence

} // namespace nuv

#if defined(_WIN32)

// Windows CE passes the module as HANDLE, which is void*; HINSTANCE is what the desktop's headers declare.
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

#error "module.cpp knows no way to run code at load with this compiler"

#endif
