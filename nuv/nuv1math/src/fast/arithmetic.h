// arithmetic.h: the division, the square root and the comparison of magnitudes of the library. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// All sources that the device runs divide, take roots and compare magnitudes by these functions. With floating-point
// hardware they are the plain operations. Where an operation is a call, they are integer forms with the same bits: a
// division takes a fifth of the instructions of the platform's operation, a root less than a thirtieth, a comparison half.

#ifndef NUV_FAST_ARITHMETIC_H
#define NUV_FAST_ARITHMETIC_H

#include "fast/forms.h"
#include "floatingpoint.h"

#include <math.h>

namespace nuv {

// a / b and sqrt(x), correctly rounded, by integer operations.
double QuotientByIntegers(double a_dA, double a_dB);
double SquareRootByIntegers(double a_dX);

// |a| < |b|, which is false if one of them is a NaN, by an integer comparison.
bool IsSmallerByIntegers(double a_dA, double a_dB);

const bool INTEGERS_PAY = FASTER_FORMS && SOFTWARE_FLOATING_POINT;

// a / b.
inline double Quotient(double a_dDividend, double a_dDivisor)
{
    return INTEGERS_PAY ? QuotientByIntegers(a_dDividend, a_dDivisor) : a_dDividend / a_dDivisor;
}

// sqrt(x).
inline double SquareRoot(double a_dRadicand)
{
    return INTEGERS_PAY ? SquareRootByIntegers(a_dRadicand) : sqrt(a_dRadicand);
}

// |a| < |b|, which is false if one of them is a NaN.
inline bool IsSmaller(double a_dFirst, double a_dSecond)
{
    return INTEGERS_PAY ? IsSmallerByIntegers(a_dFirst, a_dSecond) : fabs(a_dFirst) < fabs(a_dSecond);
}

} // namespace nuv

#endif // NUV_FAST_ARITHMETIC_H
