// vectors.h: whether the compiler has vectors of doubles worth using. Internal: not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_VECTORS_H
#define NUV_VECTORS_H

#include <string.h>

// Before a short loop with a constant count over an array that is to live in registers. Clang needs no telling.
#if defined(__GNUC__) && !defined(__clang__)
#define NUV_UNROLL _Pragma("GCC unroll 8")
#else
#define NUV_UNROLL
#endif

// A function that takes on the instructions of the one that calls it.
#if defined(__GNUC__)
#define NUV_INLINE inline __attribute__((always_inline))
#else
#define NUV_INLINE inline
#endif

// GNU vectors on processors that compute two doubles at once. A vector operation rounds every lane as the scalar one
// does. Without floating-point hardware lanes would only cost code.
#if defined(__GNUC__) && (defined(__SSE2__) || defined(__aarch64__))
#define NUV_VECTORS

// Vectors of four, where the processor that the program runs on has them. Not on Windows: its 64-bit calling
// convention aligns the stack to two doubles, and GCC relies on more for them (its bug 54412).
// The tests leave them out to see the pairs.
#if defined(__x86_64__) && !defined(_WIN32) && !defined(NUV_PAIRS_ONLY)
#define NUV_WIDE_VECTORS __attribute__((target("avx2")))
#endif

#endif

namespace nuv {

#ifdef NUV_VECTORS
typedef double TPair __attribute__((vector_size(2 * sizeof(double))));
typedef double TFour __attribute__((vector_size(4 * sizeof(double))));
typedef TPair TNative;
#else
typedef double TNative; // what one operation computes
#endif

// Vectors from and to arrays, which are not aligned to them. A double is assigned: there memcpy may be a call.
template <typename TVector> static NUV_INLINE void Load(const double* a_vdFrom, TVector& a_Vector)
{
    memcpy(&a_Vector, a_vdFrom, sizeof a_Vector);
}

static NUV_INLINE void Load(const double* a_vdFrom, double& a_dValue)
{
    a_dValue = *a_vdFrom;
}

template <typename TVector> static NUV_INLINE void Store(const TVector& a_Vector, double* a_vdTo)
{
    memcpy(a_vdTo, &a_Vector, sizeof a_Vector);
}

static NUV_INLINE void Store(const double& a_dValue, double* a_vdTo)
{
    *a_vdTo = a_dValue;
}

} // namespace nuv

#endif // NUV_VECTORS_H
