// vectors.h: whether the compiler has vectors of doubles worth using. Internal: not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_VECTORS_H
#define NUV_VECTORS_H

// GNU vectors on processors that compute two doubles at once. A vector operation rounds every lane as the scalar one
// does. Without floating-point hardware lanes would only cost code.
#if defined(__GNUC__) && (defined(__SSE2__) || defined(__aarch64__))
#define NUV_VECTORS

// Before a short loop with a constant count over an array that is to live in registers. Clang needs no telling.
#if defined(__clang__)
#define NUV_UNROLL
#else
#define NUV_UNROLL _Pragma("GCC unroll 8")
#endif

// Vectors of four, where the processor that the program runs on has them. Not on Windows: its 64-bit calling
// convention aligns the stack to two doubles, and GCC relies on more for them (its bug 54412).
#if defined(__x86_64__) && !defined(_WIN32)
#define NUV_WIDE_VECTORS __attribute__((target("avx2")))
#endif

namespace nuv {

typedef double TPair __attribute__((vector_size(2 * sizeof(double))));

}

#endif

#endif // NUV_VECTORS_H
