// floors.h: lower bounds of the time of a routine on this machine: reading, arithmetic, a chain of additions.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_BENCH_FLOORS_H
#define NUV_BENCH_FLOORS_H

#include <vector>

namespace bench {

// Counts of double operations.
struct TOperations
{
    double dAdditions; // and subtractions
    double dMultiplications;
    double dDivisions;
    double dRoots;
};

TOperations operator*(double a_dFactor, const TOperations& a_Operations);
TOperations operator+(const TOperations& a_First, const TOperations& a_Second);

// Reads all values, 16 bytes at a time.
void Read(const std::vector<double>& a_vdValues);

// Performs the operations two at a time (SSE2, no fused multiply-add), in enough independent chains to keep every
// arithmetic unit busy.
void Compute(const TOperations& a_Operations);

// Adds to one sum. Each addition waits for the one before.
void AddInChain(double a_dAdditions);

} // namespace bench

#endif // NUV_BENCH_FLOORS_H
