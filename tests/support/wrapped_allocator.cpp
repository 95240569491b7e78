// wrapped_allocator.cpp: the watched allocator behind the linker option --wrap, which redirects the calls.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "watched_allocator.h"

using namespace nuv_tests;

extern "C" {

void* __real_malloc(std::size_t a_iBytes);
void* __real_calloc(std::size_t a_iCount, std::size_t a_iBytes);
void* __real_realloc(void* a_pMemory, std::size_t a_iBytes);
void __real_free(void* a_pMemory);
void* __wrap_malloc(std::size_t a_iBytes);
void* __wrap_calloc(std::size_t a_iCount, std::size_t a_iBytes);
void* __wrap_realloc(void* a_pMemory, std::size_t a_iBytes);
void __wrap_free(void* a_pMemory);

void* __wrap_malloc(std::size_t a_iBytes)
{
    return Allocate(a_iBytes);
}

void* __wrap_calloc(std::size_t a_iCount, std::size_t a_iBytes)
{
    return Allocator.bWatched ? AllocateFilled(a_iCount * a_iBytes, 0) : __real_calloc(a_iCount, a_iBytes);
}

void* __wrap_realloc(void* a_pMemory, std::size_t a_iBytes)
{
    Allocator.iReallocations += Allocator.bWatched ? 1 : 0;
    return __real_realloc(a_pMemory, a_iBytes);
}

void __wrap_free(void* a_pMemory)
{
    Release(a_pMemory);
}

} // extern "C"

void* nuv_tests::RealAllocate(std::size_t a_iBytes)
{
    return __real_malloc(a_iBytes);
}

void nuv_tests::RealRelease(void* a_pMemory)
{
    __real_free(a_pMemory);
}
