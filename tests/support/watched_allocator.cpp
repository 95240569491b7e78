// watched_allocator.cpp: see watched_allocator.h.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "watched_allocator.h"

#include <cstring>
#include <gtest/gtest.h>

namespace nuv_tests {

TAllocator Allocator;

TWatch::TWatch(int a_iFailAt, int a_iFill)
{
    Allocator = TAllocator();
    Allocator.iFailAt = a_iFailAt;
    Allocator.iFill = a_iFill;
    Allocator.bWatched = true;
}

TWatch::~TWatch()
{
    Allocator.bWatched = false;
}

TWatchAgain::TWatchAgain()
{
    Allocator.bWatched = true;
}

TWatchAgain::~TWatchAgain()
{
    Allocator.bWatched = false;
}

void ExpectNothingHeld()
{
    EXPECT_TRUE(Allocator.Held.empty());
    EXPECT_EQ(0, Allocator.iForeignReleases);
    EXPECT_EQ(0, Allocator.iReallocations);
}

void* AllocateFilled(std::size_t a_iBytes, int a_iFill)
{
    Allocator.bWatched = false; // what the bookkeeping allocates does not count
    const bool bFails = static_cast<int>(Allocator.viRequests.size()) == Allocator.iFailAt || a_iBytes > MostBytes;
    Allocator.viRequests.push_back(a_iBytes);
    void* const pMemory = bFails ? nullptr : RealAllocate(a_iBytes);
    if (pMemory != nullptr)
    {
        std::memset(pMemory, a_iFill, a_iBytes);
        Allocator.Held.insert(pMemory);
    }
    Allocator.bWatched = true;
    return pMemory;
}

void* Allocate(std::size_t a_iBytes)
{
    return Allocator.bWatched ? AllocateFilled(a_iBytes, Allocator.iFill) : RealAllocate(a_iBytes);
}

void Release(void* a_pMemory)
{
    if (Allocator.bWatched && a_pMemory != nullptr)
    {
        Allocator.bWatched = false;
        ++Allocator.iReleases;
        Allocator.iForeignReleases += Allocator.Held.erase(a_pMemory) == 0 ? 1 : 0;
        Allocator.bWatched = true;
    }
    RealRelease(a_pMemory);
}

} // namespace nuv_tests
