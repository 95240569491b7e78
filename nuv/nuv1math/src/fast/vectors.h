// vectors.h: vectors of doubles, and functions in several widths of them. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FAST_VECTORS_H
#define NUV_FAST_VECTORS_H

#include "fast/forms.h"

#include <string.h>

// A function that must be compiled into its caller, because it takes on the caller's instruction set.
#if defined(__GNUC__)
#define NUV_INLINE inline __attribute__((always_inline))
#else
#define NUV_INLINE inline
#endif

namespace nuv {

// Load a vector from an array and store it there. The address need not be aligned. Without vectors they take a double.
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

#ifdef NUV_VECTORS

// Stands before a short loop of constant length over an array that is to stay in registers. GCC at -O2 unrolls it only
// when it is told to; Clang does so by itself.
#if defined(__clang__)
#define NUV_UNROLL
#else
#define NUV_UNROLL _Pragma("GCC unroll 8")
#endif

// Vectors of four doubles, where the processor has them. Not on 64-bit Windows: its stack is aligned to two doubles,
// and GCC stores vectors of four there as if it were aligned to four (GCC bug 54412).
#if defined(__x86_64__) && !defined(_WIN32) && !defined(NUV_NO_WIDE_VECTORS)
#define NUV_WIDE_VECTORS
#endif

namespace nuv {

typedef double TPair __attribute__((vector_size(2 * sizeof(double))));

} // namespace nuv

// NUV_BY_WIDTH(Name, (parameters), (arguments)) defines the function Name. It runs the template NameBy<TVector> with
// the widest vectors that the processor has. NameBy is NUV_INLINE, so each width is compiled with its own instructions.
// This is the only place that asks the processor what it has.
#ifdef NUV_WIDE_VECTORS

namespace nuv {
typedef double TFour __attribute__((vector_size(4 * sizeof(double))));
} // namespace nuv

#define NUV_BY_WIDTH(a_Name, a_Parameters, a_Arguments)                                                                \
    __attribute__((target("avx2"))) static void a_Name##ByFours a_Parameters                                           \
    {                                                                                                                  \
        a_Name##By<TFour> a_Arguments;                                                                                 \
    }                                                                                                                  \
    static void a_Name a_Parameters                                                                                    \
    {                                                                                                                  \
        if (__builtin_cpu_supports("avx2"))                                                                            \
        {                                                                                                              \
            a_Name##ByFours a_Arguments;                                                                               \
            return;                                                                                                    \
        }                                                                                                              \
        a_Name##By<TPair> a_Arguments;                                                                                 \
    }

#else

#define NUV_BY_WIDTH(a_Name, a_Parameters, a_Arguments)                                                                \
    static void a_Name a_Parameters                                                                                    \
    {                                                                                                                  \
        a_Name##By<TPair> a_Arguments;                                                                                 \
    }

#endif // NUV_WIDE_VECTORS

#endif // NUV_VECTORS

#endif // NUV_FAST_VECTORS_H
