// floatingpoint.h: what every source requires of the floating-point arithmetic, checked when it is compiled.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Results have the same bits on every platform because every operation is an IEC 559 (IEEE 754) double operation. It is
// rounded once, and it is done in the order in which it is written. A compiler must not contract a*b + c into one
// rounding, compute in a wider format or reorder sums. cmake/FloatingPointPolicy.cmake sets the options for that. This
// header refuses the builds that it can recognise as wrong. Most compilers do not tell whether they contract: the tests
// look for that.

#ifndef NUV_FLOATINGPOINT_H
#define NUV_FLOATINGPOINT_H

#include <float.h>
#include <limits>

#if defined(__FAST_MATH__) || defined(_M_FP_FAST) || defined(__RECIPROCAL_MATH__) ||                                   \
    (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__)
#error "nuv1math must not be compiled with fast-math or a part of it: it changes results and breaks the tests for NaN"
#endif

#if defined(__FLT_EVAL_METHOD__)
#if __FLT_EVAL_METHOD__ != 0
#error "nuv1math needs double operations without excess precision (32-bit x86: -msse2 -mfpmath=sse)"
#endif
#elif defined(FLT_EVAL_METHOD)
#if FLT_EVAL_METHOD != 0
#error "nuv1math needs double operations without excess precision"
#endif
#endif

// The helpers that look at the bits of a double expect its low word first.
#if defined(__FLOAT_WORD_ORDER__)
#if __FLOAT_WORD_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "nuv1math needs doubles with the low word first"
#endif
#elif !defined(__BYTE_ORDER__) || __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
// Windows and Windows CE are little-endian on every processor.
#else
#error "nuv1math needs doubles with the low word first"
#endif

#if defined(__SOFTFP__) || defined(_WIN32_WCE)
#define NUV_SOFTWARE_FLOATING_POINT
#endif

namespace nuv {

// True where a floating-point operation is a call of tens of instructions. There it pays to look at the bits of an
// operand first, or to leave an operation out. With floating-point hardware an operation is cheaper than a branch.
#ifdef NUV_SOFTWARE_FLOATING_POINT
const bool SOFTWARE_FLOATING_POINT = true;
#else
const bool SOFTWARE_FLOATING_POINT = false;
#endif

// C++98 has no static_assert: an array of negative size does not compile.
typedef char TCheckIec559[std::numeric_limits<double>::is_iec559 && sizeof(double) == 8 ? 1 : -1];
typedef char TCheckInt32[sizeof(int) == 4 ? 1 : -1];

} // namespace nuv

#endif // NUV_FLOATINGPOINT_H
