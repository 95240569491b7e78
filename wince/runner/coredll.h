// coredll.h: what stands in for the device's core library where an image is run on Linux.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_WINCE_COREDLL_H
#define NUV_WINCE_COREDLL_H

#include <stddef.h>

#if defined(__cplusplus)
extern "C" {
#endif

// The function of that name, or null where there is none.
void* FindCoreFunction(const char* a_szName);

// The allocator that images get: malloc and free, unless a test puts its own here.
extern void* (*g_pAllocate)(size_t a_iBytes);
extern void (*g_pRelease)(void* a_pMemory);

#if defined(__cplusplus)
}
#endif

#endif // NUV_WINCE_COREDLL_H
