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
    unsigned char* pBase; // address of its first byte
    uint32_t iSize;
    uint32_t iPreferredBase;
    uint32_t iHeaders; // offset of the optional header
    uint32_t iMoved;   // number of adjusted addresses
} TImage;

// Maps the file in a_pFile at a_iBase, or at its preferred base if a_iBase is 0. Binds its imports to the functions of
// coredll.h and calls its entry for process attach. Returns null, or a text that says why it refuses the file.
const char* LoadImage(const unsigned char* a_pFile, size_t a_iLength, uint32_t a_iBase, TImage* a_pImage);

// Returns the exported function with this name, or null.
void* FindExport(const TImage* a_pImage, const char* a_szName);

// Calls the entry as the system does. Returns the result of the entry.
int CallEntry(const TImage* a_pImage, uint32_t a_iReason);

#if defined(__cplusplus)
}
#endif

#endif // NUV_WINCE_LOADER_H
