// huge_degree_test.cpp: polynomials of so high a degree that their companion matrix has a size no program can address.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "testing.h"

#include <climits>
#include <sys/mman.h>

namespace {

using namespace nuv_tests;

// Coefficients of address space alone: all zero but the first one and the one before a_iTrailing zeros, so that only
// the pages at the ends are ever touched.
void ExpectOnlyTheTrailingZeros(unsigned int a_iDegree, unsigned int a_iTrailing, int a_iExpected)
{
    const std::size_t iBytes = (static_cast<std::size_t>(a_iDegree) + 1) * sizeof(double);
    void* const pMemory =
        mmap(nullptr, iBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pMemory == MAP_FAILED)
    {
        GTEST_SKIP() << "no address space for " << iBytes << " bytes";
    }
    double* const vdA = static_cast<double*>(pMemory);
    vdA[0] = 1.0;
    vdA[a_iDegree - a_iTrailing] = -1.0;
    std::vector<double> vdRoots(a_iTrailing + 1, Untouched);
    EXPECT_EQ(a_iExpected, nuv::Roots(a_iDegree, vdA, vdRoots.data(), 1e-6));
    for (unsigned int i = 0; i < a_iTrailing; ++i)
    {
        EXPECT_SAME_BITS(0.0, vdRoots[i]);
    }
    EXPECT_SAME_BITS(Untouched, vdRoots[a_iTrailing]);
    munmap(pMemory, iBytes);
}

// The square of 1.6e9 times 8 bytes is more than 2^64.
TEST(RootsOfHugeDegree, AMatrixWhoseSizeOverflowsCountsAsMemoryThatCannotBeHad)
{
    if (sizeof(std::size_t) < 8)
    {
        GTEST_SKIP() << "needs 64-bit addresses";
    }
    ExpectOnlyTheTrailingZeros(1600000000u, 0, 0);
    ExpectOnlyTheTrailingZeros(1600000000u, 3, 0); // zero roots written, beside the result 0
}

TEST(RootsOfHugeDegree, MoreRootsThanIntCountsCountAsMemoryThatCannotBeHad)
{
    if (sizeof(std::size_t) < 8)
    {
        GTEST_SKIP() << "needs 64-bit addresses";
    }
    ExpectOnlyTheTrailingZeros(static_cast<unsigned int>(INT_MAX) + 1u, 0, 0);
    ExpectOnlyTheTrailingZeros(static_cast<unsigned int>(INT_MAX) + 1u, 2, 0);
}

} // namespace
