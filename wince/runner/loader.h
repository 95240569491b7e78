// loader.h: maps a Windows CE dynamic library into a Linux process on ARM.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_WINCE_LOADER_H
#define NUV_WINCE_LOADER_H

#include <stddef.h>
#include <stdint.h>

#if defined(__cplusplus)
extern "C" {
#endif

enum
{
    ENTRY_PROCESS_DETACH = 0,
    ENTRY_PROCESS_ATTACH = 1,
    ENTRY_THREAD_ATTACH = 2,
    ENTRY_THREAD_DETACH = 3
};

typedef struct TImage
{
    unsigned char* pBase; // where it is
    uint32_t iSize;
    uint32_t iPreferredBase;
    uint32_t iHeaders; // offset of the optional header
    uint32_t iMoved;   // addresses that were adjusted
} TImage;

// Maps the file that a_pFile holds, at a_iBase or, if that is 0, at its preferred base, binds its imports to the
// functions of coredll.h and calls its entry for process attach. Returns null, or what it refuses in the file.
const char* LoadImage(const unsigned char* a_pFile, size_t a_iLength, uint32_t a_iBase, TImage* a_pImage);

// The exported function of that name, or null.
void* FindExport(const TImage* a_pImage, const char* a_szName);

// Calls the entry as a loader does; returns its answer.
int CallEntry(const TImage* a_pImage, uint32_t a_iReason);

#if defined(__cplusplus)
}
#endif

#endif // NUV_WINCE_LOADER_H
