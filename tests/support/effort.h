// effort.h: how much a test does where it runs.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_EFFORT_H
#define NUV_TESTS_SUPPORT_EFFORT_H

#include "address_sanitizer.h"

namespace nuv_tests {

// An emulator runs every instruction of the tests (the build defines NUV_EMULATED).
#ifdef NUV_EMULATED
constexpr bool Emulated = true;
#else
constexpr bool Emulated = false;
#endif

// Every access takes longer than on the processor itself: the longest tests do less.
constexpr bool Watched = Emulated || AddressSanitizer;

// The number of random cases to try: a tenth under an emulator.
constexpr int CasesHere(int a_iCases)
{
    return Emulated ? a_iCases / 10 : a_iCases;
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_EFFORT_H
