// shared_library.h: loads and unloads a shared library, on POSIX systems and on Windows.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_SHARED_LIBRARY_H
#define NUV_TESTS_SUPPORT_SHARED_LIBRARY_H

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace nuv_tests {

#if defined(_WIN32)

// Null where it cannot be loaded.
inline void* LoadSharedLibrary(const char* a_szFile)
{
    return LoadLibraryA(a_szFile);
}

inline void UnloadSharedLibrary(void* a_pLibrary)
{
    FreeLibrary(static_cast<HMODULE>(a_pLibrary));
}

// Null where it exports no such name.
inline void* FindFunction(void* a_pLibrary, const char* a_szName)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(a_pLibrary), a_szName));
}

inline bool IsSharedLibraryLoaded(const char* a_szFile)
{
    return GetModuleHandleA(a_szFile) != nullptr;
}

#else

inline void* LoadSharedLibrary(const char* a_szFile)
{
    return dlopen(a_szFile, RTLD_NOW | RTLD_LOCAL);
}

inline void UnloadSharedLibrary(void* a_pLibrary)
{
    dlclose(a_pLibrary);
}

inline void* FindFunction(void* a_pLibrary, const char* a_szName)
{
    return dlsym(a_pLibrary, a_szName);
}

inline bool IsSharedLibraryLoaded(const char* a_szFile)
{
    void* const pLibrary = dlopen(a_szFile, RTLD_NOW | RTLD_NOLOAD);
    if (pLibrary != nullptr)
    {
        dlclose(pLibrary);
    }
    return pLibrary != nullptr;
}

#endif

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_SHARED_LIBRARY_H
