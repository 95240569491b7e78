// randomfast.h: a step of the generators with a shorter chain of operations. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Equals     Advance of random.cpp, for a state below its modulus.
// Method     The quotient of a ix + c and m is the integer part of r ix + s, with r = a/m and s = c/m rounded up to
//            multiples of 2^-36. It does not wait for a ix + c, as the compiler's division by a constant does.
// Bounds     r ix + s exceeds (a ix + c)/m by at most (ix + 1)/2^36, which is at most m/2^36. The next integer is at
//            least 1/m above (a ix + c)/m. So the integer part is right if m/2^36 < 1/m: the modulus must be below 2^18.
//            Then r ix + s, in units of 2^-36, needs at most 49 bits, because a is below 2^13.
// Pays       where a product of 64 bits is one instruction: 4.1 ns a value, 4.4 ns in the plain form.

#ifndef NUV_RANDOMFAST_H
#define NUV_RANDOMFAST_H

#include "fast/forms.h"

#include <stddef.h>

namespace nuv {

#if !defined(NUV_PLAIN_FORMS) && (defined(__x86_64__) || defined(__aarch64__))

const bool PRODUCTS_PAY = true; // equivalent: both forms give the same numbers

// (a ix + c) mod m.
inline unsigned int AdvanceByProduct(unsigned int a_iMultiplier, unsigned int a_iIncrement, unsigned int a_iModulus,
                                     unsigned int ix)
{
    const int BITS = 36; // equivalent: a bit more will do, or less for these moduli
    // equivalent: the bound has room for one unit more
    const size_t iSlope = (static_cast<size_t>(a_iMultiplier) << BITS) / a_iModulus + 1;
    // equivalent: the bound has room for one unit more
    const size_t iOffset = (static_cast<size_t>(a_iIncrement) << BITS) / a_iModulus + 1;
    const size_t iQuotient = (iSlope * ix + iOffset) >> BITS;
    return a_iMultiplier * ix + a_iIncrement - static_cast<unsigned int>(iQuotient) * a_iModulus;
}

#else

const bool PRODUCTS_PAY = false;

unsigned int AdvanceByProduct(unsigned int a_iMultiplier, unsigned int a_iIncrement, unsigned int a_iModulus,
                              unsigned int ix);

#endif

} // namespace nuv

#endif // NUV_RANDOMFAST_H
