// census.h: double operations by kind, on a processor without floating-point hardware.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_CENSUS_H
#define NUV_TESTS_CENSUS_H

#include <array>
#include <cstddef>

namespace nuv_tests {

// All comparisons count alike, and so do all conversions from whole numbers. A multiplication by 2 is an addition,
// because the compiler makes it one. Negation and fabs are not calls.
enum enumOperation
{
    OPERATION_ADD,
    OPERATION_SUB,
    OPERATION_MUL,
    OPERATION_DIV,
    OPERATION_COMPARE,
    OPERATION_CONVERT,
    OPERATION_SQRT,
    OPERATION_FMOD,
    OPERATION_SINCOS, // sine and cosine of one angle together
    OPERATION_TAN,
    OPERATION_ASIN,
    OPERATION_ACOS,
    OPERATION_ATAN,
    OPERATION_ATAN2,
    OPERATION_LOG,
    OPERATIONS
};

inline const char* const OperationNames[OPERATIONS] = {"add",     "sub",  "mul",  "div",    "compare",
                                                       "convert", "sqrt", "fmod", "sincos", "tan",
                                                       "asin",    "acos", "atan", "atan2",  "log"};

using TCensus = std::array<int, OPERATIONS>;

inline TCensus operator+(TCensus a_First, const TCensus& a_Second)
{
    for (std::size_t i = 0; i < OPERATIONS; ++i)
    {
        a_First[i] += a_Second[i];
    }
    return a_First;
}

inline TCensus operator*(int a_iTimes, TCensus a_Census)
{
    for (int& iCount : a_Census)
    {
        iCount *= a_iTimes;
    }
    return a_Census;
}

} // namespace nuv_tests

#endif // NUV_TESTS_CENSUS_H
