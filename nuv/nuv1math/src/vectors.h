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
#if defined(__GNUC__) && (defined(__SSE2__) || defined(__aarch64__)) && !defined(__SOFTFP__)
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

// A pair is two doubles there, with the operators that are used.
struct TPair
{
    double dFirst;
    double dSecond;
};

static NUV_INLINE TPair operator+(const TPair& a_First, const TPair& a_Second)
{
    const TPair Sum = {a_First.dFirst + a_Second.dFirst, a_First.dSecond + a_Second.dSecond};
    return Sum;
}

static NUV_INLINE TPair operator*(const TPair& a_Pair, double a_dFactor)
{
    const TPair Product = {a_Pair.dFirst * a_dFactor, a_Pair.dSecond * a_dFactor};
    return Product;
}
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

// The two of a pair to places of their own.
static NUV_INLINE void Spread(const TPair& a_Pair, double* a_pFirst, double* a_pSecond)
{
    double vdPair[2];
    memcpy(vdPair, &a_Pair, sizeof vdPair);
    *a_pFirst = vdPair[0];
    *a_pSecond = vdPair[1];
}

} // namespace nuv

#endif // NUV_VECTORS_H
