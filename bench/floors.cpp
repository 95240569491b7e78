// floors.cpp: lower bounds of the time of a routine on this machine: reading, arithmetic, a chain of additions.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "floors.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <emmintrin.h>

namespace bench {

constexpr int LANES = 2; // doubles of a vector

TOperations operator*(double a_dFactor, const TOperations& a_Operations)
{
    return {a_dFactor * a_Operations.dAdditions, a_dFactor * a_Operations.dMultiplications,
            a_dFactor * a_Operations.dDivisions, a_dFactor * a_Operations.dRoots};
}

TOperations operator+(const TOperations& a_First, const TOperations& a_Second)
{
    return {a_First.dAdditions + a_Second.dAdditions, a_First.dMultiplications + a_Second.dMultiplications,
            a_First.dDivisions + a_Second.dDivisions, a_First.dRoots + a_Second.dRoots};
}

void Read(const std::vector<double>& a_vdValues)
{
    constexpr std::size_t VECTORS = 4;
    __m128d vAll[VECTORS] = {}; // combined by bitwise or, which needs no floating-point unit
    const double* const pBegin = a_vdValues.data();
    std::size_t i = 0;
    for (; i + VECTORS * LANES <= a_vdValues.size(); i += VECTORS * LANES)
    {
        for (std::size_t k = 0; k < VECTORS; ++k)
        {
            vAll[k] = _mm_or_pd(vAll[k], _mm_loadu_pd(pBegin + i + k * LANES));
        }
    }
    for (; i < a_vdValues.size(); ++i)
    {
        vAll[0] = _mm_or_pd(vAll[0], _mm_load_sd(pBegin + i));
    }
    for (__m128d& vOne : vAll)
    {
        benchmark::DoNotOptimize(vOne);
    }
}

namespace {

constexpr auto Add = [](__m128d a_vValue, __m128d a_vOperand) { return _mm_add_pd(a_vValue, a_vOperand); };
constexpr auto Multiply = [](__m128d a_vValue, __m128d a_vOperand) { return _mm_mul_pd(a_vValue, a_vOperand); };
constexpr auto Divide = [](__m128d a_vValue, __m128d a_vOperand) { return _mm_div_pd(a_vValue, a_vOperand); };
constexpr auto Root = [](__m128d a_vValue, __m128d) { return _mm_sqrt_pd(a_vValue); };

constexpr int CHAINS = 6; // of each kind: the chains of two kinds and the operand fit into 16 registers

// Performs a_dCount operations of each of the given kinds.
template <class... TKinds> void Repeat(double a_dCount, TKinds... a_Kinds)
{
    __m128d vOperand = _mm_set1_pd(1.0);
    benchmark::DoNotOptimize(vOperand); // otherwise the compiler knows the results
    __m128d vChains[sizeof...(TKinds)][CHAINS];
    std::fill_n(&vChains[0][0], sizeof...(TKinds) * CHAINS, vOperand);
    const long iSteps = static_cast<long>(a_dCount / (CHAINS * LANES));
    for (long i = 0; i < iSteps; ++i)
    {
#pragma GCC unroll 6
        for (int k = 0; k < CHAINS; ++k)
        {
            std::size_t iKind = 0;
            ((vChains[iKind][k] = a_Kinds(vChains[iKind][k], vOperand), ++iKind), ...);
        }
    }
    for (auto& vKind : vChains)
    {
        for (__m128d& vOne : vKind)
        {
            benchmark::DoNotOptimize(vOne);
        }
    }
}

} // namespace

void Compute(const TOperations& a_Operations)
{
    const double dPairs = std::min(a_Operations.dAdditions, a_Operations.dMultiplications);
    Repeat(dPairs, Add, Multiply);
    Repeat(a_Operations.dAdditions - dPairs, Add);
    Repeat(a_Operations.dMultiplications - dPairs, Multiply);
    Repeat(a_Operations.dDivisions, Divide);
    Repeat(a_Operations.dRoots, Root);
}

void AddInChain(double a_dAdditions)
{
    double dSum = 0.0, dTerm = 1.0;
    benchmark::DoNotOptimize(dTerm);
    const long iAdditions = static_cast<long>(a_dAdditions);
    for (long i = 0; i < iAdditions; ++i)
    {
        dSum = dTerm + dSum;
    }
    benchmark::DoNotOptimize(dSum);
}

} // namespace bench
