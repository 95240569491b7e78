// bits.h: the bits of doubles: comparison, text, and values that the compiler cannot fold.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_BITS_H
#define NUV_TESTS_SUPPORT_BITS_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace nuv_tests {

inline std::uint64_t Bits(double a_dValue)
{
    std::uint64_t iBits;
    std::memcpy(&iBits, &a_dValue, sizeof iBits);
    return iBits;
}

// Compares bits, so the sign of a zero counts. All NaN are equal: their sign and payload differ between processors.
inline bool SameBits(double a_dFirst, double a_dSecond)
{
    return (std::isnan(a_dFirst) && std::isnan(a_dSecond)) || Bits(a_dFirst) == Bits(a_dSecond);
}

inline bool SameBits(const double* a_vdFirst, const double* a_vdSecond, std::size_t a_iCount)
{
    return std::equal(a_vdFirst, a_vdFirst + a_iCount, a_vdSecond,
                      [](double a_dFirst, double a_dSecond) { return SameBits(a_dFirst, a_dSecond); });
}

inline bool SameBits(const std::vector<double>& a_vdFirst, const std::vector<double>& a_vdSecond)
{
    return a_vdFirst.size() == a_vdSecond.size() && SameBits(a_vdFirst.data(), a_vdSecond.data(), a_vdFirst.size());
}

// The value in hexadecimal and in decimal digits, for messages.
inline std::string HexText(double a_dValue)
{
    char szText[64];
    std::snprintf(szText, sizeof szText, "%a (%.17g)", a_dValue, a_dValue);
    return szText;
}

// Hides a value from the compiler, so that it cannot compute a call of the library (or of the C library) itself.
inline double Opaque(double a_dValue)
{
    volatile double dValue = a_dValue;
    return dValue;
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_BITS_H
