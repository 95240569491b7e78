// contraction_test.cpp: fails if the compiler rounds a*b + c once instead of twice.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The tests are built twice: as the library is, and for a processor with FMA, where compilers contract unless an option
// forbids it.

#include "nuv1math.h"
#include "support/expect.h"

using namespace nuv;
using namespace nuv_tests;

// 0.1 * 10 is exactly 1 + 2^-54 and rounds to 1. The difference to 1 shows whether the product was rounded.
TEST(Contraction, IsOffInCodeUnderTheProjectsFlags)
{
    EXPECT_SAME_BITS(0.0, Opaque(0.1) * Opaque(10.0) - Opaque(1.0));
}

// The same difference as a determinant, scaled by 2^40 so that it exceeds the tolerance: 2^40 (0.1 * 10) - 2^20 2^20.
TEST(Contraction, IsOffInTheLibrary)
{
    double dX = Untouched;
    double dY = Untouched;
    EXPECT_EQ(RET_IMPOSSIBLE, Roots(0x1p40 * 0.1, 0x1p20, 0x1p20, 10.0, 1.0, 0.0, dX, dY));
    EXPECT_SAME_BITS(Untouched, dX);
    EXPECT_SAME_BITS(Untouched, dY);
}
