// leak_test.cpp: shows that a leak of the library's memory is detected; without it the other tests prove nothing.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"

#include <cstdlib>
#include <gtest/gtest.h>

#if defined(__SANITIZE_ADDRESS__)

TEST(LeakSanitizer, SeesALeakOfTheLibrarysMemory)
{
    constexpr int ExitCodeOfTheSanitizer = 1;
    EXPECT_EXIT(
        {
            double* vdMatrix = nullptr;
            double* vdVector = nullptr;
            nuv::InitCholLowTri(100, &vdMatrix, &vdVector);
            nuv::DeleteCholLowTri(nullptr, vdVector);
            vdMatrix = nullptr;
            std::exit(vdMatrix == nullptr ? 0 : 1);
        },
        ::testing::ExitedWithCode(ExitCodeOfTheSanitizer),
        "detected memory leaks(.|\n)*leak of 40400 byte(.|\n)*nuv::InitCholLowTri");
}

#endif
