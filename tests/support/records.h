// records.h: the library's records, which consist of doubles only, as arrays of doubles.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_RECORDS_H
#define NUV_TESTS_SUPPORT_RECORDS_H

#include "special_values.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

namespace nuv_tests {

template <class TRecord> constexpr std::size_t FieldCount = sizeof(TRecord) / sizeof(double);

// The fields in their order.
template <class TRecord> std::array<double, FieldCount<TRecord> > Fields(const TRecord& a_Record)
{
    std::array<double, FieldCount<TRecord> > Values;
    std::memcpy(Values.data(), &a_Record, sizeof a_Record);
    return Values;
}

template <class TRecord> std::vector<double> FieldVector(const TRecord& a_Record)
{
    const auto Values = Fields(a_Record);
    return std::vector<double>(Values.begin(), Values.end());
}

// The record with these fields.
template <class TRecord> TRecord FromFields(const double* a_vdFields)
{
    TRecord Record;
    std::memcpy(&Record, a_vdFields, sizeof Record);
    return Record;
}

// The record with every field set to a_dValue.
template <class TRecord> TRecord Filled(double a_dValue = Untouched)
{
    std::array<double, FieldCount<TRecord> > Values;
    Values.fill(a_dValue);
    return FromFields<TRecord>(Values.data());
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_RECORDS_H
