// random.h: the seeding of the random numbers at load. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_RANDOM_H
#define NUV_RANDOM_H

namespace nuv {

// Starts the sequence that every process starts with.
void SeedAtLoad();

} // namespace nuv

#endif // NUV_RANDOM_H
