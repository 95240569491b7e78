// windows.h: declarations of the functions of the Windows CE core library that the library uses.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// It replaces the header of the platform's development kit. Its source is the public documentation of the functions.

#ifndef NUV_WINCE_WINDOWS_H
#define NUV_WINCE_WINDOWS_H

#include <stddef.h>

#define WINAPI // the device's compilers have one calling convention

typedef int BOOL;
typedef int INT;
typedef unsigned int UINT;
typedef unsigned long DWORD;
typedef void* LPVOID;
typedef void* HANDLE;
typedef HANDLE HWND;
typedef wchar_t* LPWSTR;
typedef const wchar_t* LPCWSTR;

// Texts are UTF-16, so the sources are compiled with -fshort-wchar.
typedef char TCheckWideCharacter[sizeof(wchar_t) == 2 ? 1 : -1];

enum
{
    TRUE = 1,
    DLL_PROCESS_ATTACH = 1,
    MB_RETRYCANCEL = 5
};

extern "C" {
INT wsprintfW(LPWSTR, LPCWSTR, ...);
INT WINAPI MessageBoxW(HWND, LPCWSTR, LPCWSTR, UINT);
BOOL WINAPI TerminateProcess(HANDLE, DWORD);
}

// The core library has no such function: system handles begin at 64, and the current process is number 2.
inline HANDLE GetCurrentProcess()
{
    return reinterpret_cast<HANDLE>(64 + 2);
}

#endif // NUV_WINCE_WINDOWS_H
