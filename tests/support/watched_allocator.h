// watched_allocator.h: the library's allocator in the hands of a test: what it is asked for, and a request that fails.
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

// Watches the allocator as long as it lives. Where the tests are one program with the library's allocator, what they
// allocate themselves counts too: only calls of the library stand under a watch.
class TWatch
{
public:
    explicit TWatch(int a_iFailAt = Never, int a_iFill = 0xA5);
    ~TWatch();
    TWatch(const TWatch&) = delete;
    TWatch& operator=(const TWatch&) = delete;
};

// Goes on watching with what was counted so far.
class TWatchAgain
{
public:
    TWatchAgain();
    ~TWatchAgain();
    TWatchAgain(const TWatchAgain&) = delete;
    TWatchAgain& operator=(const TWatchAgain&) = delete;
};

// The test of the calling program fails if something is held or was released that was not.
void ExpectNothingHeld();

// What the platform's glue calls instead of malloc and free, and, while the allocator is watched, instead of calloc.
void* Allocate(std::size_t a_iBytes);
void* AllocateFilled(std::size_t a_iBytes, int a_iFill);
void Release(void* a_pMemory);

// What stands behind them: the platform's glue gives these.
void* RealAllocate(std::size_t a_iBytes);
void RealRelease(void* a_pMemory);

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_WATCHED_ALLOCATOR_H
