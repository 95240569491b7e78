// coredll.h: replaces the core library of the device when an image runs on Linux.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_WINCE_COREDLL_H
#define NUV_WINCE_COREDLL_H

#include <stddef.h>

#if defined(__cplusplus)
extern "C" {
#endif

// Returns the function with this name, or null.
void* FindCoreFunction(const char* a_szName);

// The allocator of the images: malloc and free, unless a test assigns its own functions.
extern void* (*g_pAllocate)(size_t a_iBytes);
extern void (*g_pRelease)(void* a_pMemory);

#if defined(__cplusplus)
}
#endif

#endif // NUV_WINCE_COREDLL_H
