// expect.h: assertions of GoogleTest on bits, arrays, records and units in the last place.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_EXPECT_H
#define NUV_TESTS_SUPPORT_EXPECT_H

#include "bits.h"
#include "guarded_array.h"
#include "records.h"
#include "special_values.h"

#include <gtest/gtest.h>
#include <vector>

namespace nuv_tests {

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

// True if both arrays are of the same length and the same bits.
inline ::testing::AssertionResult SameValues(const std::vector<double>& a_vdExpected,
                                             const std::vector<double>& a_vdActual)
{
    if (a_vdExpected.size() != a_vdActual.size())
    {
        return ::testing::AssertionFailure() << a_vdActual.size() << " values, expected " << a_vdExpected.size();
    }
    for (std::size_t i = 0; i < a_vdExpected.size(); ++i)
    {
        if (!SameBits(a_vdExpected[i], a_vdActual[i]))
        {
            return ::testing::AssertionFailure()
                   << "value " << i << " is " << HexText(a_vdActual[i]) << ", expected " << HexText(a_vdExpected[i]);
        }
    }
    return ::testing::AssertionSuccess();
}

// The same for an array between guards, which must be intact.
inline ::testing::AssertionResult SameValues(const std::vector<double>& a_vdExpected, const TGuardedArray& a_Actual)
{
    if (!a_Actual.IsIntact())
    {
        return ::testing::AssertionFailure() << "written beyond the array";
    }
    return SameValues(a_vdExpected, a_Actual.Values());
}

// True if every field has the bits of the expected record's.
template <class TRecord>::testing::AssertionResult SameRecord(const TRecord& a_Expected, const TRecord& a_Actual)
{
    return SameValues(FieldVector(a_Expected), FieldVector(a_Actual));
}

// True if every field is within a_dBound of the expected record's. A NaN never is.
template <class TRecord>
::testing::AssertionResult NearRecord(const TRecord& a_Expected, const TRecord& a_Actual, double a_dBound)
{
    const auto Expected = Fields(a_Expected);
    const auto Actual = Fields(a_Actual);
    for (std::size_t i = 0; i < Expected.size(); ++i)
    {
        if (!(std::fabs(Expected[i] - Actual[i]) <= a_dBound))
        {
            return ::testing::AssertionFailure() << "field " << i << " is " << HexText(Actual[i]) << ", expected "
                                                 << HexText(Expected[i]) << " within " << a_dBound;
        }
    }
    return ::testing::AssertionSuccess();
}

// True if a_dActual is within a_dUlps units in the last place of the reference, which is in extended precision where
// the platform has it. For results that depend on the platform's elementary functions.
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

} // namespace nuv_tests

#define EXPECT_SAME_BITS(a_Expected, a_Actual) EXPECT_PRED_FORMAT2(::nuv_tests::SameBitsResult, a_Expected, a_Actual)
#define ASSERT_SAME_BITS(a_Expected, a_Actual) ASSERT_PRED_FORMAT2(::nuv_tests::SameBitsResult, a_Expected, a_Actual)

#endif // NUV_TESTS_SUPPORT_EXPECT_H
