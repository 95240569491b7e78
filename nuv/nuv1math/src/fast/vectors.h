// vectors.h: vectors of doubles, and functions in several widths of them. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FAST_VECTORS_H
#define NUV_FAST_VECTORS_H

#include "fast/arithmetic.h"
#include "fast/forms.h"

#include <string.h>

namespace nuv {

// Load a vector from an array and store it there. The address need not be aligned. Without vectors Load takes a double.
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

// Gives every element of a vector the same value.
template <typename TVector> static NUV_INLINE void Fill(double a_dValue, TVector& a_Vector)
{
    a_Vector = TVector() + a_dValue;
}

static NUV_INLINE void Fill(double a_dValue, double& a_dFilled)
{
    a_dFilled = a_dValue;
}

// One divided by every element.
template <typename TVector> static NUV_INLINE void Invert(const TVector& a_Vector, TVector& a_Inverse)
{
    a_Inverse = 1.0 / a_Vector;
}

static NUV_INLINE void Invert(const double& a_dValue, double& a_dInverse)
{
    a_dInverse = Quotient(1.0, a_dValue);
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

// The widest vectors that the library is compiled for; a processor with narrower ones takes those. NUV_WIDEST_VECTORS
// limits it to fewer doubles. No more than two on 64-bit Windows: its stack is aligned to two doubles, and GCC stores
// wider vectors there as if it were aligned to them (GCC bug 54412).
#if !defined(__x86_64__) || defined(_WIN32)
#undef NUV_WIDEST_VECTORS
#define NUV_WIDEST_VECTORS 2
#elif !defined(NUV_WIDEST_VECTORS)
#define NUV_WIDEST_VECTORS 8
#endif

namespace nuv {

typedef double TPair __attribute__((vector_size(2 * sizeof(double))));
typedef double TFour __attribute__((vector_size(4 * sizeof(double))));
typedef double TEight __attribute__((vector_size(8 * sizeof(double))));

// Swaps the elements between two vectors that a transposition swaps: STEP is the distance of the vectors' numbers. Each
// element of the first whose number has the bit STEP changes places with the element STEP before it in the second.
// by processor: each one runs the instance of one width
template <int STEP> static NUV_INLINE void SwapAcross(TPair& a_First, TPair& a_Second)
{
    const TPair First = a_First;
    a_First = __builtin_shufflevector(First, a_Second, 0, 2);
    a_Second = __builtin_shufflevector(First, a_Second, 1, 3);
}

// by processor: each one runs the instance of one width
template <int STEP> static NUV_INLINE void SwapAcross(TFour& a_First, TFour& a_Second)
{
    const TFour First = a_First;
    if (STEP == 1)
    {
        a_First = __builtin_shufflevector(First, a_Second, 0, 4, 2, 6);
        a_Second = __builtin_shufflevector(First, a_Second, 1, 5, 3, 7);
        return;
    }
    a_First = __builtin_shufflevector(First, a_Second, 0, 1, 4, 5);
    a_Second = __builtin_shufflevector(First, a_Second, 2, 3, 6, 7);
}

// by processor: each one runs the instance of one width
template <int STEP> static NUV_INLINE void SwapAcross(TEight& a_First, TEight& a_Second)
{
    const TEight First = a_First;
    if (STEP == 1)
    {
        a_First = __builtin_shufflevector(First, a_Second, 0, 8, 2, 10, 4, 12, 6, 14);
        a_Second = __builtin_shufflevector(First, a_Second, 1, 9, 3, 11, 5, 13, 7, 15);
    }
    else if (STEP == 2)
    {
        a_First = __builtin_shufflevector(First, a_Second, 0, 1, 8, 9, 4, 5, 12, 13);
        a_Second = __builtin_shufflevector(First, a_Second, 2, 3, 10, 11, 6, 7, 14, 15);
    }
    else
    {
        a_First = __builtin_shufflevector(First, a_Second, 0, 1, 2, 3, 8, 9, 10, 11);
        a_Second = __builtin_shufflevector(First, a_Second, 4, 5, 6, 7, 12, 13, 14, 15);
    }
}

// by processor: each one runs the instance of one width
template <int STEP, int LANES, typename TVector> static NUV_INLINE void SwapAcrossAll(TVector (&a_vRows)[LANES])
{
    NUV_UNROLL for (int r = 0; r + STEP < LANES; ++r)
    {
        if ((r & STEP) == 0)
        {
            SwapAcross<STEP>(a_vRows[r], a_vRows[r + STEP]);
        }
    }
}

// Replaces the rows of a square of as many vectors as each has elements by its columns.
// by processor: each one runs the instance of one width
template <int LANES, typename TVector> static NUV_INLINE void Transpose(TVector (&a_vRows)[LANES])
{
    SwapAcrossAll<1>(a_vRows);
    SwapAcrossAll<2>(a_vRows);
    SwapAcrossAll<4>(a_vRows);
}

} // namespace nuv

// NUV_BY_WIDTH(Name, (parameters), (arguments)) defines the function Name. It runs the template NameBy<TVector> with
// vectors of two, or of four where the processor has them. NameBy is NUV_INLINE, so each width is compiled with its own
// instructions.
#define NUV_BY_WIDTH(a_Name, a_Parameters, a_Arguments)                                                                \
    NUV_BY_FOURS(a_Name, a_Parameters, a_Arguments)                                                                    \
    NUV_BY_PAIRS(a_Name, a_Parameters, a_Arguments)                                                                    \
    static void a_Name a_Parameters                                                                                    \
    {                                                                                                                  \
        NUV_IF_FOURS(a_Name, a_Arguments)                                                                              \
        a_Name##ByPairs a_Arguments;                                                                                   \
    }

// The same, and with vectors of eight where the processor has them and the condition holds. They pay in long work only:
// the processor lowers its clock for them, also for what follows (5 % on one Intel Xeon).
// These two are the only place that asks the processor what it has.
#define NUV_BY_WIDTH_OR_EIGHT(a_Name, a_bEightPays, a_Parameters, a_Arguments)                                         \
    NUV_BY_EIGHTS(a_Name, a_Parameters, a_Arguments)                                                                   \
    NUV_BY_FOURS(a_Name, a_Parameters, a_Arguments)                                                                    \
    NUV_BY_PAIRS(a_Name, a_Parameters, a_Arguments)                                                                    \
    static void a_Name a_Parameters                                                                                    \
    {                                                                                                                  \
        NUV_IF_EIGHTS(a_Name, a_bEightPays, a_Arguments)                                                               \
        NUV_IF_FOURS(a_Name, a_Arguments)                                                                              \
        a_Name##ByPairs a_Arguments;                                                                                   \
    }

#define NUV_BY_PAIRS(a_Name, a_Parameters, a_Arguments)                                                                \
    NUV_NOT_INLINE static void a_Name##ByPairs a_Parameters                                                            \
    {                                                                                                                  \
        a_Name##By<TPair> a_Arguments;                                                                                 \
    }

// One width of it: the function whose instructions are a_szTarget, and the call where the processor has them.
#define NUV_BY_VECTORS(a_Name, a_Width, a_szTarget, a_TVector, a_Parameters, a_Arguments)                              \
    __attribute__((target(a_szTarget))) static void a_Name##a_Width a_Parameters                                       \
    {                                                                                                                  \
        a_Name##By<a_TVector> a_Arguments;                                                                             \
    }
#define NUV_IF_VECTORS(a_Name, a_Width, a_szTarget, a_bPays, a_Arguments)                                              \
    if ((a_bPays) && __builtin_cpu_supports(a_szTarget))                                                               \
    {                                                                                                                  \
        a_Name##a_Width a_Arguments;                                                                                   \
        return;                                                                                                        \
    }

#if NUV_WIDEST_VECTORS >= 4
#define NUV_BY_FOURS(a_Name, a_Parameters, a_Arguments)                                                                \
    NUV_BY_VECTORS(a_Name, ByFours, "avx2", TFour, a_Parameters, a_Arguments)
#define NUV_IF_FOURS(a_Name, a_Arguments) NUV_IF_VECTORS(a_Name, ByFours, "avx2", true, a_Arguments)
#else
#define NUV_BY_FOURS(a_Name, a_Parameters, a_Arguments)
#define NUV_IF_FOURS(a_Name, a_Arguments)
#endif

#if NUV_WIDEST_VECTORS >= 8
#define NUV_BY_EIGHTS(a_Name, a_Parameters, a_Arguments)                                                               \
    NUV_BY_VECTORS(a_Name, ByEights, "avx512f", TEight, a_Parameters, a_Arguments)
#define NUV_IF_EIGHTS(a_Name, a_bPays, a_Arguments) NUV_IF_VECTORS(a_Name, ByEights, "avx512f", a_bPays, a_Arguments)
#else
#define NUV_BY_EIGHTS(a_Name, a_Parameters, a_Arguments)
#define NUV_IF_EIGHTS(a_Name, a_bPays, a_Arguments)
#endif

#endif // NUV_VECTORS

#endif // NUV_FAST_VECTORS_H
