// huge_degree_test.cpp: polynomials of so high a degree that their companion matrix has a size no program can address.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/effort.h"
#include "support/expect.h"
#include "support/reserved_memory.h"

#include <climits>

namespace {

using namespace nuv_tests;

// All coefficients are zero but the first one and the one before a_iTrailing zeros.
void ExpectOnlyTheTrailingZeros(unsigned int a_iDegree, unsigned int a_iTrailing, int a_iExpected)
{
    const TReservedMemory Coefficients(static_cast<std::size_t>(a_iDegree) + 1);
    if (!Coefficients.IsReserved())
    {
        GTEST_SKIP() << "no address space for " << a_iDegree << " coefficients";
    }
    Coefficients.Data()[0] = 1.0;
    Coefficients.Data()[a_iDegree - a_iTrailing] = -1.0;
    std::vector<double> vdRoots(a_iTrailing + 1, Untouched);
    EXPECT_EQ(a_iExpected, nuv::Roots(a_iDegree, Coefficients.Data(), vdRoots.data(), 1e-6));
    for (unsigned int i = 0; i < a_iTrailing; ++i)
    {
        EXPECT_SAME_BITS(0.0, vdRoots[i]);
    }
    EXPECT_SAME_BITS(Untouched, vdRoots[a_iTrailing]);
}

// The square of 1.6e9 times 8 bytes is more than 2^64.
TEST(RootsOfHugeDegree, AMatrixWhoseSizeOverflowsCountsAsMemoryThatCannotBeHad)
{
    if (sizeof(std::size_t) < 8)
    {
        GTEST_SKIP() << "needs 64-bit addresses";
    }
    if (!Watched) // seconds for the address space alone
    {
        ExpectOnlyTheTrailingZeros(1600000000u, 0, 0);
    }
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

// 0 x^n + ... + x - 3 has the degree 1, also if twice n is more than int counts. All coefficients are read, which takes
// seconds on a processor and much longer under an emulator or a sanitizer.
TEST(RootsOfHugeDegreeSlow, LeadingZerosDoNotCount)
{
    if (Watched)
    {
        GTEST_SKIP() << "would take long here";
    }
    const unsigned int iDegree = 1100000000u;
    const TReservedMemory Coefficients(static_cast<std::size_t>(iDegree) + 1);
    if (!Coefficients.IsReserved())
    {
        GTEST_SKIP() << "no address space for " << iDegree << " coefficients";
    }
    Coefficients.Data()[iDegree - 1] = 1.0;
    Coefficients.Data()[iDegree] = -3.0;
    double dRoot = Untouched;
    EXPECT_EQ(1, nuv::Roots(iDegree, Coefficients.Data(), &dRoot, 1e-6));
    EXPECT_SAME_BITS(3.0, dRoot);
}

} // namespace
