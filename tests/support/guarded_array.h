// guarded_array.h: arrays and records handed to the library, between guards that it must leave alone.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_GUARDED_ARRAY_H
#define NUV_TESTS_SUPPORT_GUARDED_ARRAY_H

#include "address_sanitizer.h"
#include "bits.h"
#include "records.h"
#include "special_values.h"

#include <algorithm>
#include <new>
#include <vector>

namespace nuv_tests {

// Doubles between two runs of guards. A write beyond the array changes a guard, which IsIntact() sees; the address
// sanitizer reports a read or a write of a guard at once. Data() is never null, not even for no values.
class TGuardedArray
{
public:
    explicit TGuardedArray(const std::vector<double>& a_vdValues)
        : m_iCount(a_vdValues.size()), m_vdAll(m_iCount + 2 * Guards, GuardValue)
    {
        if (m_iCount > 0)
        {
            std::memcpy(Data(), a_vdValues.data(), m_iCount * sizeof(double)); // a signalling NaN stays one
        }
        ForAllGuards(Forbid);
    }

    // An output that was not written yet: every value is Untouched.
    static TGuardedArray Output(std::size_t a_iCount)
    {
        return TGuardedArray(std::vector<double>(a_iCount, Untouched));
    }

    TGuardedArray(const TGuardedArray& a_Other) : TGuardedArray(a_Other.Values())
    {}

    TGuardedArray& operator=(const TGuardedArray& a_Other)
    {
        TGuardedArray Copy(a_Other);
        std::swap(m_iCount, Copy.m_iCount);
        m_vdAll.swap(Copy.m_vdAll);
        return *this;
    }

    ~TGuardedArray()
    {
        ForAllGuards(Permit);
    }

    double* Data()
    {
        return m_vdAll.data() + Guards;
    }

    const double* Data() const
    {
        return m_vdAll.data() + Guards;
    }

    std::size_t Size() const
    {
        return m_iCount;
    }

    double& operator[](std::size_t i)
    {
        return Data()[i];
    }

    double operator[](std::size_t i) const
    {
        return Data()[i];
    }

    std::vector<double> Values() const
    {
        return std::vector<double>(Data(), Data() + m_iCount);
    }

    // True if no guard was overwritten.
    bool IsIntact() const
    {
        ForAllGuards(Permit);
        const auto IsGuard = [](double a_dValue) { return SameBits(a_dValue, GuardValue); };
        const bool bIntact = std::all_of(m_vdAll.data(), Data(), IsGuard) &&
                             std::all_of(Data() + m_iCount, m_vdAll.data() + m_vdAll.size(), IsGuard);
        ForAllGuards(Forbid);
        return bIntact;
    }

    // True if the values have these bits and no guard was overwritten.
    bool Holds(const std::vector<double>& a_vdValues) const
    {
        return SameBits(a_vdValues, Values()) && IsIntact();
    }

    bool IsUntouchedFrom(std::size_t a_iFirst) const
    {
        return std::all_of(Data() + a_iFirst, Data() + m_iCount,
                           [](double a_dValue) { return SameBits(a_dValue, Untouched); });
    }

private:
    void ForAllGuards(void (*a_pCall)(const void*, std::size_t)) const
    {
        a_pCall(m_vdAll.data(), Guards * sizeof(double));
        a_pCall(Data() + m_iCount, Guards * sizeof(double));
    }

    static constexpr std::size_t Guards = 16; // whole blocks of 8 bytes, as the address sanitizer marks them
    static constexpr double GuardValue = 6.5e66;

    std::size_t m_iCount;
    std::vector<double> m_vdAll;
};

// A record of doubles between guards; every field is Untouched at first.
template <class TRecord> class TGuardedRecord
{
public:
    TGuardedRecord() : m_Fields(TGuardedArray::Output(FieldCount<TRecord>)), m_pRecord(new (m_Fields.Data()) TRecord)
    {
        Set(std::vector<double>(FieldCount<TRecord>, Untouched));
    }

    explicit TGuardedRecord(const std::vector<double>& a_vdFields) : TGuardedRecord()
    {
        Set(a_vdFields);
    }

    TGuardedRecord(const TGuardedRecord&) = delete;
    TGuardedRecord& operator=(const TGuardedRecord&) = delete;

    void Set(const std::vector<double>& a_vdFields)
    {
        std::memcpy(static_cast<void*>(m_pRecord), a_vdFields.data(), sizeof(TRecord));
    }

    TRecord& operator*()
    {
        return *m_pRecord;
    }

    TRecord* operator->()
    {
        return m_pRecord;
    }

    std::vector<double> Fields() const
    {
        return FieldVector(*m_pRecord);
    }

    bool IsIntact() const
    {
        return m_Fields.IsIntact();
    }

    bool Holds(const std::vector<double>& a_vdFields) const
    {
        return SameBits(a_vdFields, Fields()) && IsIntact();
    }

    bool IsUntouched() const
    {
        return Holds(std::vector<double>(FieldCount<TRecord>, Untouched));
    }

private:
    TGuardedArray m_Fields;
    TRecord* m_pRecord;
};

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_GUARDED_ARRAY_H
