// testing.h: what the test sources share: bit comparison of doubles, special values, untouched outputs.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_TESTING_H
#define NUV_TESTS_TESTING_H

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace nuv_tests {

constexpr double Inf = std::numeric_limits<double>::infinity();
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Subnormal = std::numeric_limits<double>::denorm_min();

// The degeneracy tolerance and the doubles next to it.
constexpr double Tolerance = 1e-12;
inline const double BelowTolerance = std::nextafter(Tolerance, 0.0);
inline const double AboveTolerance = std::nextafter(Tolerance, 1.0);

// Stands in outputs before a call, so that a write is seen. Not a value that any routine would come to.
constexpr double Untouched = -7.777e77;

inline std::uint64_t Bits(double a_dValue)
{
    std::uint64_t iBits;
    std::memcpy(&iBits, &a_dValue, sizeof iBits);
    return iBits;
}

// The same bits, zeros with their sign. A NaN equals any NaN: its sign and payload differ between processors.
inline bool SameBits(double a_dFirst, double a_dSecond)
{
    return (std::isnan(a_dFirst) && std::isnan(a_dSecond)) || Bits(a_dFirst) == Bits(a_dSecond);
}

inline std::string HexText(double a_dValue)
{
    char szText[64];
    std::snprintf(szText, sizeof szText, "%a (%.17g)", a_dValue, a_dValue);
    return szText;
}

inline ::testing::AssertionResult SameBitsResult(const char* a_szExpected, const char* a_szActual, double a_dExpected,
                                                 double a_dActual)
{
    if (SameBits(a_dExpected, a_dActual))
    {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << a_szActual << " is " << HexText(a_dActual) << ", expected " << a_szExpected
                                         << " = " << HexText(a_dExpected);
}

// Where every instruction is emulated, a tenth of the random cases is tried.
#ifdef NUV_EMULATED
constexpr bool Emulated = true;
#else
constexpr bool Emulated = false;
#endif
// The longest tests do less where the address sanitizer watches every access, too.
#if defined(NUV_EMULATED) || defined(__SANITIZE_ADDRESS__)
constexpr bool Watched = true;
#else
constexpr bool Watched = false;
#endif
constexpr int CasesHere(int a_iCases)
{
    return Emulated ? a_iCases / 10 : a_iCases;
}

// Hides a value from the compiler, so that no call is folded with the compiler's own arithmetic.
inline double Opaque(double a_dValue)
{
    volatile double dValue = a_dValue;
    return dValue;
}

// The fields of a record of doubles, in order.
template <class TRecord> std::array<double, sizeof(TRecord) / sizeof(double)> Fields(const TRecord& a_Record)
{
    std::array<double, sizeof(TRecord) / sizeof(double)> Values;
    std::memcpy(Values.data(), &a_Record, sizeof a_Record);
    return Values;
}

// A record of doubles with every field set to a_dValue.
template <class TRecord> TRecord Filled(double a_dValue = Untouched)
{
    std::array<double, sizeof(TRecord) / sizeof(double)> Values;
    Values.fill(a_dValue);
    TRecord Record;
    std::memcpy(&Record, Values.data(), sizeof Record);
    return Record;
}

// True if every field has the bits of a_Expected's.
template <class TRecord>::testing::AssertionResult SameRecord(const TRecord& a_Expected, const TRecord& a_Actual)
{
    const auto Expected = Fields(a_Expected);
    const auto Actual = Fields(a_Actual);
    for (std::size_t i = 0; i < Expected.size(); ++i)
    {
        if (!SameBits(Expected[i], Actual[i]))
        {
            return ::testing::AssertionFailure()
                   << "field " << i << " is " << HexText(Actual[i]) << ", expected " << HexText(Expected[i]);
        }
    }
    return ::testing::AssertionSuccess();
}

// True if a_dActual lies within a_dUlps units in the last place of the reference, which comes in extended precision
// where the platform has one. For what goes through the platform's trigonometric functions.
inline ::testing::AssertionResult WithinUlps(long double a_dReference, double a_dActual, double a_dUlps)
{
    const double dNearest = std::fabs(static_cast<double>(a_dReference));
    const long double dUlp = std::nextafter(dNearest, Inf) - dNearest;
    const long double dError = std::fabs(a_dActual - a_dReference) / dUlp;
    if (dError <= a_dUlps)
    {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << HexText(a_dActual) << " is " << static_cast<double>(dError) << " units off "
                                         << HexText(static_cast<double>(a_dReference));
}

// Control points: x and y in the source system, X and Y in the target system.
struct TControlPoints
{
    std::vector<double> vdX;
    std::vector<double> vdY;
    std::vector<double> vdXa;
    std::vector<double> vdYa;

    int Count() const
    {
        return static_cast<int>(vdX.size());
    }
};

} // namespace nuv_tests

#define EXPECT_SAME_BITS(a_Expected, a_Actual) EXPECT_PRED_FORMAT2(::nuv_tests::SameBitsResult, a_Expected, a_Actual)
#define ASSERT_SAME_BITS(a_Expected, a_Actual) ASSERT_PRED_FORMAT2(::nuv_tests::SameBitsResult, a_Expected, a_Actual)

#endif // NUV_TESTS_TESTING_H
