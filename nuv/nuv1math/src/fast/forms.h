// forms.h: which of the faster forms a build has. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The source of a family has the plain form of each of its functions. The plain form defines the result: its bits and
// the order of its operations. The files of this directory have forms that give the same bits faster. The plain
// function hands its work over in one line, where a faster form exists and pays:
//   software floating point   leaves out operations whose result is known, and divides, takes roots and compares by
//                             integers (the device);
//   vectors                   computes two doubles at once, or four or eight on a processor that has such vectors;
//   products of 64 bits       give the quotients of the random numbers' generators (64-bit processors).
// The head of a faster form tells what it gains. Times are those of one Intel Xeon with vectors of eight.
//
// The tests compile the library once more in each of these forms, in namespaces of their own, and compare them all with
// the plain one:
//   NUV_PLAIN_FORMS           no faster form at all
//   NUV_WIDEST_VECTORS        vectors of two doubles, or of up to four, on a processor that has wider ones
//   __SOFTFP__                the forms for software floating point; a compiler for such a processor defines it

#ifndef NUV_FAST_FORMS_H
#define NUV_FAST_FORMS_H

#include "floatingpoint.h"

// The compilers of GNU's kind have types for vectors, and shuffles from GCC 12 on. An operation on a vector rounds each
// element like the operation on a double.
#if !defined(NUV_PLAIN_FORMS) && (defined(__clang__) || (defined(__GNUC__) && __GNUC__ >= 12)) &&                      \
    (defined(__SSE2__) || defined(__aarch64__) || defined(__wasm_simd128__)) && !defined(__SOFTFP__)
#define NUV_VECTORS
#endif

// A function that must be compiled into its caller: it takes on the caller's instruction set, or a call would cost what it
// saves.
#if defined(__GNUC__)
#define NUV_INLINE inline __attribute__((always_inline))
#else
#define NUV_INLINE inline
#endif

// A short function that a host compiles into each caller: the call and the way through memory would cost a small fit a
// tenth of its time. The device saves the code instead.
#if defined(__GNUC__) && !defined(__SOFTFP__)
#define NUV_HOST_INLINE inline __attribute__((always_inline))
#else
#define NUV_HOST_INLINE
#endif

// A function that is not compiled into its caller, so that its arrays do not stand on the stack beside those of others.
#if defined(__GNUC__)
#define NUV_NOT_INLINE __attribute__((noinline))
#else
#define NUV_NOT_INLINE
#endif

namespace nuv {

#ifdef NUV_PLAIN_FORMS
const bool FASTER_FORMS = false;
#else
const bool FASTER_FORMS = true;
#endif

#ifdef NUV_VECTORS
const bool HAS_VECTORS = true;
#else
const bool HAS_VECTORS = false;
#endif

} // namespace nuv

#endif // NUV_FAST_FORMS_H
