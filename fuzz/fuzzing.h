// fuzzing.h: what the fuzz targets share: bytes decoded into numbers, guarded arrays, checks, reports that are caught.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FUZZ_FUZZING_H
#define NUV_FUZZ_FUZZING_H

#include "nuv1math.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <limits>
#include <new>
#include <vector>

// Ends the process as a finding when a condition does not hold.
#define NUV_CHECK(a_Condition)                                                                                         \
    do                                                                                                                 \
    {                                                                                                                  \
        if (!(a_Condition))                                                                                            \
        {                                                                                                              \
            nuv_fuzz::Fail(__FILE__, __LINE__, #a_Condition);                                                          \
        }                                                                                                              \
    } while (0)

namespace nuv_fuzz {

// References are computed in extended precision (64 bits or more), where no bound below comes near to its rounding.
using TLong = long double;
using TValues = std::vector<double>;

constexpr double Eps = std::numeric_limits<double>::epsilon(); // two roundings
constexpr double Inf = std::numeric_limits<double>::infinity();
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double TwoPi = 6.283185307179586;
constexpr double Tolerance = 1e-12; // of degeneracy

// Stands in outputs before a call. No routine comes to it by itself.
constexpr double Untouched = -7.777e77;

[[noreturn]] void Fail(const char* a_szFile, int a_iLine, const char* a_szWhat);

// Runs a call; true if it ended in the library's report of the check at a_iLine. Any other report is a finding.
bool Reports(int a_iLine, const std::function<void()>& a_Call);

// The same bits; a NaN equals any NaN.
bool SameBits(double a_dFirst, double a_dSecond);
bool SameBits(const double* a_vdFirst, const double* a_vdSecond, std::size_t a_iCount);

// Finite, and zero or of a magnitude between 1/a_dLimit and a_dLimit.
bool InRange(double a_dValue, double a_dLimit);
bool InRange(const TValues& a_vdValues, double a_dLimit);

// |a_dFirst - a_dSecond| <= a_dBound; never for a NaN.
bool Within(TLong a_dFirst, TLong a_dSecond, TLong a_dBound);

// An angle as every function promises it, or NaN.
bool IsAngle(double a_dAngle);

double Greatest(const TValues& a_vdValues); // magnitude; 0 for none

// Reads numbers out of the fuzzer's bytes; zeros when they have run out.
class TInput
{
public:
    TInput(const std::uint8_t* a_pData, std::size_t a_iSize);

    unsigned Byte();
    int Int(int a_iLow, int a_iHigh); // both included
    bool Flag();

    // Anything: NaN, infinities, subnormals, signed zeros, the neighbourhood of the tolerances, small integers,
    // coordinates, powers of two, raw bits, and what came before, so that coefficients are equal or opposite.
    double Any();

    // A finite number of ordinary size, zero included.
    double Tame();

    TValues AnyValues(std::size_t a_iCount);
    TValues TameValues(std::size_t a_iCount);

private:
    double Fresh();
    double FreshTame();

    const std::uint8_t* m_pData;
    std::size_t m_iLeft;
    double m_vdRecent[4] = {};
    unsigned m_iRecent = 0;
};

// Room for values that the library reads or writes, between guards that neither may touch: they are poisoned for the
// address sanitizer and compared at the end. Copies a_vdValues, or is filled with Untouched.
class TRoom
{
public:
    explicit TRoom(std::size_t a_iCount);
    explicit TRoom(const TValues& a_vdValues);
    TRoom(const TRoom&) = delete;
    TRoom& operator=(const TRoom&) = delete;
    ~TRoom();

    double* Data()
    {
        return m_vdAll.data() + Guards;
    }
    const double* Data() const
    {
        return m_vdAll.data() + Guards;
    }
    double operator[](std::size_t i) const
    {
        return Data()[i];
    }
    std::size_t Size() const
    {
        return m_iCount;
    }
    TValues Values() const
    {
        return TValues(Data(), Data() + m_iCount);
    }
    bool Holds(const TValues& a_vdValues) const; // bit for bit
    bool UntouchedFrom(std::size_t a_iFirst) const;

private:
    void Guard();

    static constexpr std::size_t Guards = 8;
    std::size_t m_iCount;
    TValues m_vdAll;
};

// A record of doubles with a room of its own.
template <class TRecord> class TGuarded
{
public:
    TGuarded() : m_Room(sizeof(TRecord) / sizeof(double)), m_pRecord(new (m_Room.Data()) TRecord)
    {
        *this = TValues(m_Room.Size(), Untouched);
    }
    explicit TGuarded(const TValues& a_vdFields) : TGuarded()
    {
        *this = a_vdFields;
    }
    void operator=(const TValues& a_vdFields)
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
    TValues Fields() const
    {
        TValues vdFields(m_Room.Size());
        std::memcpy(vdFields.data(), m_pRecord, sizeof(TRecord));
        return vdFields;
    }
    bool Holds(const TValues& a_vdFields) const
    {
        return SameBits(a_vdFields.data(), Fields().data(), a_vdFields.size());
    }
    bool IsUntouched() const
    {
        return Holds(TValues(m_Room.Size(), Untouched));
    }

private:
    TRoom m_Room;
    TRecord* m_pRecord;
};

// Control points between guards.
struct TPoints
{
    TRoom X;
    TRoom Y;
    TRoom Xa;
    TRoom Ya;

    TPoints(const TValues& a_vdX, const TValues& a_vdY, const TValues& a_vdXa, const TValues& a_vdYa)
        : X(a_vdX), Y(a_vdY), Xa(a_vdXa), Ya(a_vdYa)
    {}
    int Count() const
    {
        return static_cast<int>(X.Size());
    }
};

// Points of ordinary coordinates about ordinary offsets.
TValues TameCoordinates(TInput& a_Input, std::size_t a_iCount);

// The means, and what is left of the points when they are taken off; in extended precision.
struct TCentred
{
    TLong dMeanX;
    TLong dMeanY;
    TLong dMeanXa;
    TLong dMeanYa;
    TLong dSuu;
    TLong dSuv;
    TLong dSvv;
    TLong dSUu;
    TLong dSUv;
    TLong dSVu;
    TLong dSVv;
    TLong dSTarget;  // sum of the squares of both centred target coordinates
    TLong dGreatest; // magnitude of all coordinates
};
TCentred Centre(const TPoints& a_Points);

} // namespace nuv_fuzz

#endif // NUV_FUZZ_FUZZING_H
