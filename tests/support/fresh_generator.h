// fresh_generator.h: starts the random numbers anew, without a normal number that waits from before.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_FRESH_GENERATOR_H
#define NUV_TESTS_SUPPORT_FRESH_GENERATOR_H

#include "nuv1math.h"

namespace nuv_tests {

// Drops a normal number that waits from an earlier test. A call that returns it draws no uniform number; any other
// draws some and leaves a new one waiting.
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

// A generator without a waiting normal number, just seeded.
inline void StartFresh(int a_iSeed)
{
    DropSpareNormal();
    nuv::SetRandomSeed(a_iSeed);
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_FRESH_GENERATOR_H
