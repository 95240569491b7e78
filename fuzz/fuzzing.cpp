// fuzzing.cpp: see fuzzing.h. Takes the place of the library's assertion report.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"

#include "assertion.h"

#include <algorithm>
#include <cfloat>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include <sanitizer/asan_interface.h>

namespace {

// The line of the only check that may fail now, 0 for none, and where to go on when it did.
int g_iExpectedLine = 0;
std::jmp_buf g_Back;

// The numbers read out of the current input, for whoever looks into a finding.
nuv_fuzz::TValues g_vdRead;

double Noted(double a_dValue)
{
    g_vdRead.push_back(a_dValue);
    return a_dValue;
}

} // namespace

namespace nuv {

// In the library it ends the process with exit code 0, which the fuzzer would take for a success.
void ReportAssertion(const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition)
{
    if (a_iLine == g_iExpectedLine)
    {
        std::longjmp(g_Back, 1);
    }
    std::fprintf(stderr, "%s:%d assertion failure:\n%s\n", a_szPath, a_iLine, a_szCondition);
    std::abort();
}

} // namespace nuv

namespace nuv_fuzz {

void Fail(const char* a_szFile, int a_iLine, const char* a_szWhat)
{
    std::fprintf(stderr, "%s:%d: does not hold: %s\nnumbers read:\n", a_szFile, a_iLine, a_szWhat);
    for (double dValue : g_vdRead)
    {
        std::fprintf(stderr, "  %.17g\n", dValue);
    }
    std::abort();
}

bool Reports(int a_iLine, const std::function<void()>& a_Call)
{
    g_iExpectedLine = a_iLine;
    volatile bool bReported = true;
    if (setjmp(g_Back) == 0) // NOLINT: nothing between here and the report has a destructor
    {
        a_Call();
        bReported = false;
    }
    g_iExpectedLine = 0;
    return bReported;
}

bool SameBits(double a_dFirst, double a_dSecond)
{
    return (std::isnan(a_dFirst) && std::isnan(a_dSecond)) || std::memcmp(&a_dFirst, &a_dSecond, sizeof a_dFirst) == 0;
}

bool SameBits(const double* a_vdFirst, const double* a_vdSecond, std::size_t a_iCount)
{
    return std::equal(a_vdFirst, a_vdFirst + a_iCount, a_vdSecond,
                      [](double a_dFirst, double a_dSecond) { return SameBits(a_dFirst, a_dSecond); });
}

bool InRange(double a_dValue, double a_dLimit)
{
    const double dMagnitude = std::fabs(a_dValue);
    return dMagnitude == 0.0 || (dMagnitude <= a_dLimit && dMagnitude >= 1.0 / a_dLimit);
}

bool InRange(const TValues& a_vdValues, double a_dLimit)
{
    return std::all_of(a_vdValues.begin(), a_vdValues.end(),
                       [=](double a_dValue) { return InRange(a_dValue, a_dLimit); });
}

bool Within(TLong a_dFirst, TLong a_dSecond, TLong a_dBound)
{
    return std::fabs(a_dFirst - a_dSecond) <= a_dBound;
}

bool IsAngle(double a_dAngle)
{
    return std::isnan(a_dAngle) || (a_dAngle >= 0.0 && a_dAngle <= TwoPi);
}

double Greatest(const TValues& a_vdValues)
{
    double dGreatest = 0.0;
    for (double dValue : a_vdValues)
    {
        dGreatest = std::max(dGreatest, std::fabs(dValue));
    }
    return dGreatest;
}

// ---------------------------------------------------------------------------------------------------------------------

TInput::TInput(const std::uint8_t* a_pData, std::size_t a_iSize) : m_pData(a_pData), m_iLeft(a_iSize)
{
    g_vdRead.clear();
}

unsigned TInput::Byte()
{
    if (m_iLeft == 0)
    {
        return 0;
    }
    --m_iLeft;
    return *m_pData++;
}

int TInput::Int(int a_iLow, int a_iHigh)
{
    const std::uint64_t iSpan = static_cast<std::uint64_t>(static_cast<std::int64_t>(a_iHigh) - a_iLow) + 1;
    std::uint64_t iDrawn = 0;
    for (std::uint64_t iReach = 1; iReach < iSpan; iReach *= 256)
    {
        iDrawn = iDrawn * 256 + Byte();
    }
    return static_cast<int>(a_iLow + static_cast<std::int64_t>(iDrawn % iSpan));
}

bool TInput::Flag()
{
    return Byte() % 2 != 0;
}

double TInput::Fresh()
{
    static const double Special[] = {0.0,           -0.0,    1.0,     -1.0,     Inf,   -Inf,   NaN,       DBL_TRUE_MIN,
                                     -DBL_TRUE_MIN, DBL_MIN, DBL_MAX, -DBL_MAX, 1e-12, -1e-12, 1.1e-12,   1e-14,
                                     1e-8,          1e-6,    Eps,     0.5,      2.0,   TwoPi,  TwoPi / 2, TwoPi / 4,
                                     1e150,         1e-150,  1e154,   1e-154,   1e300, 1e-300, 1e12,      3e-310};
    switch (Byte() % 8)
    {
    case 0:
        return Special[Byte() % (sizeof Special / sizeof Special[0])];
    case 1:
    case 2:
        return static_cast<std::int8_t>(Byte());
    case 3: // the neighbourhood of the tolerances
    {
        static const double Tolerances[] = {1e-12, 1e-14, 1e-8, 1e-6};
        double dValue = Tolerances[Byte() % 4] * (Int(-4, 4));
        const int iSteps = Int(-3, 3);
        for (int i = 0; i < std::abs(iSteps); ++i)
        {
            dValue = std::nextafter(dValue, iSteps < 0 ? -Inf : Inf);
        }
        return dValue;
    }
    case 4:
    case 5:
        return FreshTame();
    case 6: // any size
    {
        const double dMantissa = static_cast<std::int8_t>(Byte()) / 64.0;
        return std::ldexp(dMantissa, Int(-1090, 1030));
    }
    default: // any bits
    {
        std::uint64_t iBits = 0;
        for (int i = 0; i < 8; ++i)
        {
            iBits = iBits * 256 + Byte();
        }
        double dValue;
        std::memcpy(&dValue, &iBits, sizeof dValue);
        return dValue;
    }
    }
}

double TInput::Any()
{
    const unsigned iChoice = Byte() % 8;
    if (iChoice == 0)
    {
        return Noted(m_vdRecent[Byte() % 4]);
    }
    if (iChoice == 1)
    {
        return Noted(-m_vdRecent[Byte() % 4]);
    }
    const double dValue = Fresh();
    m_vdRecent[m_iRecent++ % 4] = dValue;
    return Noted(dValue);
}

double TInput::Tame()
{
    return Noted(FreshTame());
}

double TInput::FreshTame()
{
    switch (Byte() % 4)
    {
    case 0:
        return static_cast<std::int8_t>(Byte());
    case 1:
        return Int(-32768, 32767) / 256.0; // exact
    case 2:
        return Int(-32768, 32767) / 1000.0; // rounded
    default:
        return Int(-10000000, 10000000) / 9999991.0; // all digits, within one
    }
}

TValues TInput::AnyValues(std::size_t a_iCount)
{
    TValues vdValues(a_iCount);
    std::generate(vdValues.begin(), vdValues.end(), [this] { return Any(); });
    return vdValues;
}

TValues TInput::TameValues(std::size_t a_iCount)
{
    TValues vdValues(a_iCount);
    std::generate(vdValues.begin(), vdValues.end(), [this] { return Tame(); });
    return vdValues;
}

// ---------------------------------------------------------------------------------------------------------------------

static constexpr double GuardValue = 5.4321e-67;

TRoom::TRoom(std::size_t a_iCount) : m_iCount(a_iCount), m_vdAll(a_iCount + 2 * Guards, Untouched)
{
    Guard();
}

TRoom::TRoom(const TValues& a_vdValues) : m_iCount(a_vdValues.size()), m_vdAll(a_vdValues.size() + 2 * Guards)
{
    std::copy(a_vdValues.begin(), a_vdValues.end(), Data());
    Guard();
}

void TRoom::Guard()
{
    std::fill_n(m_vdAll.begin(), Guards, GuardValue);
    std::fill_n(m_vdAll.end() - Guards, Guards, GuardValue);
    ASAN_POISON_MEMORY_REGION(m_vdAll.data(), Guards * sizeof(double));
    ASAN_POISON_MEMORY_REGION(Data() + m_iCount, Guards * sizeof(double));
}

TRoom::~TRoom()
{
    ASAN_UNPOISON_MEMORY_REGION(m_vdAll.data(), m_vdAll.size() * sizeof(double));
    for (std::size_t i = 0; i < Guards; ++i)
    {
        NUV_CHECK(m_vdAll[i] == GuardValue);
        NUV_CHECK(m_vdAll[Guards + m_iCount + i] == GuardValue);
    }
}

bool TRoom::Holds(const TValues& a_vdValues) const
{
    return SameBits(a_vdValues.data(), Data(), m_iCount);
}

bool TRoom::UntouchedFrom(std::size_t a_iFirst) const
{
    return std::all_of(Data() + a_iFirst, Data() + m_iCount,
                       [](double a_dValue) { return SameBits(a_dValue, Untouched); });
}

// ---------------------------------------------------------------------------------------------------------------------

TValues TameCoordinates(TInput& a_Input, std::size_t a_iCount)
{
    static const double Offsets[] = {0.0, 0.0, 100.0, 4321.5, 5e5};
    static const double Extents[] = {1.0, 1.0, 0.01, 50.0, 1e3};
    const double dOffset = Offsets[a_Input.Byte() % 5];
    const double dExtent = Extents[a_Input.Byte() % 5];
    TValues vdValues(a_iCount);
    std::generate(vdValues.begin(), vdValues.end(), [&] { return dOffset + dExtent * a_Input.Tame(); });
    return vdValues;
}

TCentred Centre(const TPoints& a_Points)
{
    TCentred C = {};
    const std::size_t iCount = a_Points.X.Size();
    for (std::size_t i = 0; i < iCount; ++i)
    {
        C.dMeanX += a_Points.X[i];
        C.dMeanY += a_Points.Y[i];
        C.dMeanXa += a_Points.Xa[i];
        C.dMeanYa += a_Points.Ya[i];
    }
    for (TLong* pMean : {&C.dMeanX, &C.dMeanY, &C.dMeanXa, &C.dMeanYa})
    {
        *pMean /= static_cast<TLong>(iCount);
    }
    for (std::size_t i = 0; i < iCount; ++i)
    {
        const TLong u = a_Points.X[i] - C.dMeanX;
        const TLong v = a_Points.Y[i] - C.dMeanY;
        const TLong U = a_Points.Xa[i] - C.dMeanXa;
        const TLong V = a_Points.Ya[i] - C.dMeanYa;
        C.dSuu += u * u;
        C.dSuv += u * v;
        C.dSvv += v * v;
        C.dSUu += U * u;
        C.dSUv += U * v;
        C.dSVu += V * u;
        C.dSVv += V * v;
        C.dSTarget += U * U + V * V;
    }
    for (const TRoom* pRoom : {&a_Points.X, &a_Points.Y, &a_Points.Xa, &a_Points.Ya})
    {
        C.dGreatest = std::max<TLong>(C.dGreatest, Greatest(pRoom->Values()));
    }
    return C;
}

} // namespace nuv_fuzz
