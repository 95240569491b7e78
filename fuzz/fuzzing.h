// fuzzing.h: what the fuzz targets share: input bytes as numbers, checks, and caught assertion reports.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FUZZ_FUZZING_H
#define NUV_FUZZ_FUZZING_H

#include "nuv1math.h"
#include "support/guarded_array.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

// Reports a finding and ends the process when a condition does not hold.
#define NUV_CHECK(a_Condition)                                                                                         \
    do                                                                                                                 \
    {                                                                                                                  \
        if (!(a_Condition))                                                                                            \
        {                                                                                                              \
            nuv_fuzz::Fail(__FILE__, __LINE__, #a_Condition);                                                          \
        }                                                                                                              \
    } while (0)

namespace nuv_fuzz {

using namespace nuv_tests;

// The references are computed in extended precision. Its rounding (2^-64) is negligible beside every bound.
using TLong = long double;
using TValues = std::vector<double>;

[[noreturn]] void Fail(const char* a_szFile, int a_iLine, const char* a_szWhat);

// Runs a call. Returns true if the call ended in the library's report of the assertion with this line number. The
// report of any other assertion is a finding.
bool Reports(int a_iLine, const std::function<void()>& a_Call);

// True for 0 and for a magnitude between 1/a_dLimit and a_dLimit.
bool InRange(double a_dValue, double a_dLimit);
bool InRange(const TValues& a_vdValues, double a_dLimit);

// |a_dFirst - a_dSecond| <= a_dBound; false if any of them is NaN.
bool Within(TLong a_dFirst, TLong a_dSecond, TLong a_dBound);

// The greatest magnitude; 0 for no values.
double GreatestOf(const TValues& a_vdValues);

// Reads numbers from the fuzzer's bytes. Once the bytes are used up it reads zeros.
class TInput
{
public:
    TInput(const std::uint8_t* a_pData, std::size_t a_iSize);

    unsigned Byte();
    int Int(int a_iLow, int a_iHigh); // both ends included
    std::size_t Size(int a_iLow, int a_iHigh);
    bool Flag();

    // Any double. NaN, infinities, zeros, subnormals, values near the tolerances, small integers and powers of two are
    // frequent. It may repeat or negate an earlier value, so that arguments become equal or opposite.
    double Any();

    // A finite number of ordinary size, or zero.
    double Tame();

    TValues AnyValues(std::size_t a_iCount);
    TValues TameValues(std::size_t a_iCount);
    TValues TameOrAnyValues(std::size_t a_iCount); // a flag decides which

private:
    double Fresh();
    double FreshTame();
    double NearTolerance();
    double AnyBits();

    const std::uint8_t* m_pData;
    std::size_t m_iLeft;
    double m_vdRecent[4] = {};
    unsigned m_iRecent = 0;
};

} // namespace nuv_fuzz

#endif // NUV_FUZZ_FUZZING_H
