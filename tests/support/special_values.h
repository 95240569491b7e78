// special_values.h: special doubles, constants and tolerances that tests use by name.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_SPECIAL_VALUES_H
#define NUV_TESTS_SUPPORT_SPECIAL_VALUES_H

#include <cmath>
#include <limits>

namespace nuv_tests {

constexpr double Inf = std::numeric_limits<double>::infinity();
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Subnormal = std::numeric_limits<double>::denorm_min(); // the least positive double
constexpr double Greatest = std::numeric_limits<double>::max();
constexpr double Epsilon = std::numeric_limits<double>::epsilon(); // from 1 to the next double: two roundings

// The nearest doubles, as in the library.
constexpr double Pi = 3.141592653589793;
constexpr double TwoPi = 6.283185307179586;

constexpr long double LongPi = 3.14159265358979323846264338327950288L;

// The degeneracy tolerance of the library, and its two neighbours.
constexpr double Tolerance = 1e-12;
inline const double BelowTolerance = std::nextafter(Tolerance, 0.0);
inline const double AboveTolerance = std::nextafter(Tolerance, 1.0);

inline const double BelowOne = std::nextafter(1.0, 0.0);
inline const double AboveOne = std::nextafter(1.0, 2.0);

// Stands in outputs before a call, so that every write is seen. No routine computes this value.
constexpr double Untouched = -7.777e77;

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_SPECIAL_VALUES_H
