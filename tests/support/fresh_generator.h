// fresh_generator.h: starts the random numbers anew, and drops the spare normal number of an earlier test.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_FRESH_GENERATOR_H
#define NUV_TESTS_SUPPORT_FRESH_GENERATOR_H

#include "nuv1math.h"

namespace nuv_tests {

// Randn makes two numbers at a time and keeps the second one. This drops a number that an earlier test left. A call
// that returns the kept number draws no uniform number; any other call draws some and keeps a new one.
inline void DropSpareNormal()
{
    nuv::SetRandomSeed(0);
    const double dFirst = nuv::Rand();
    nuv::SetRandomSeed(0);
    nuv::Randn();
    if (nuv::Rand() != dFirst)
    {
        nuv::Randn();
    }
}

// Seeds a generator that keeps no normal number.
inline void StartFresh(int a_iSeed)
{
    DropSpareNormal();
    nuv::SetRandomSeed(a_iSeed);
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_FRESH_GENERATOR_H
