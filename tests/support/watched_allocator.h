// watched_allocator.h: an allocator for the library that records its requests, and lets one of them fail.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_WATCHED_ALLOCATOR_H
#define NUV_TESTS_SUPPORT_WATCHED_ALLOCATOR_H

#include <cstddef>
#include <set>
#include <vector>

namespace nuv_tests {

const int Never = -1;
const std::size_t MostBytes = 1 << 20; // requests above this fail: they are looked at, not served

struct TAllocator
{
    bool bWatched = false;
    int iFailAt = Never;                 // the request that fails, counted from 0
    int iFill = 0xA5;                    // what every byte of malloc's memory holds
    std::vector<std::size_t> viRequests; // of malloc, and of calloc, into which compilers turn malloc and memset
    std::set<void*> Held;
    int iReleases = 0;
    int iForeignReleases = 0; // of what is not held, null pointers apart
    int iReallocations = 0;
};

extern TAllocator Allocator;

// Watches the allocator during its lifetime. If the test program and the library share an allocator, allocations of the
// test count too, so only calls of the library should be made meanwhile.
class TWatch
{
public:
    explicit TWatch(int a_iFailAt = Never, int a_iFill = 0xA5);
    ~TWatch();
    TWatch(const TWatch&) = delete;
    TWatch& operator=(const TWatch&) = delete;
};

// Continues to watch, with the counts so far.
class TWatchAgain
{
public:
    TWatchAgain();
    ~TWatchAgain();
    TWatchAgain(const TWatchAgain&) = delete;
    TWatchAgain& operator=(const TWatchAgain&) = delete;
};

// The test fails if memory is still held, or if memory was released that was not held.
void ExpectNothingHeld();

// The platform's glue calls these instead of malloc and free, and instead of calloc while the allocator is watched.
void* Allocate(std::size_t a_iBytes);
void* AllocateFilled(std::size_t a_iBytes, int a_iFill);
void Release(void* a_pMemory);

// The platform's glue defines these.
void* RealAllocate(std::size_t a_iBytes);
void RealRelease(void* a_pMemory);

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_WATCHED_ALLOCATOR_H
