// image_allocator.cpp: makes the images allocate with the watched allocator.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "coredll.h"
#include "support/watched_allocator.h"

#include <cstdlib>

void* nuv_tests::RealAllocate(std::size_t a_iBytes)
{
    return std::malloc(a_iBytes);
}

void nuv_tests::RealRelease(void* a_pMemory)
{
    std::free(a_pMemory);
}

[[maybe_unused]] static const bool IsGiven = []
{
    g_pAllocate = nuv_tests::Allocate;
    g_pRelease = nuv_tests::Release;
    return true;
}();
