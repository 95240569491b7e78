// fuzzing.cpp: input bytes as numbers, checks, and the assertion report that replaces the library's.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"

#include "assertion.h"

#include <algorithm>
#include <cfloat>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>

namespace {

// Line number of the one assertion that may fail now (0 for none), and where to continue after its report.
int g_iExpectedLine = 0;
std::jmp_buf g_Back;

// All numbers read from the current input. A finding prints them.
nuv_fuzz::TValues g_vdRead;

double Noted(double a_dValue)
{
    g_vdRead.push_back(a_dValue);
    return a_dValue;
}

} // namespace

namespace nuv {

// The library's report ends the process with exit code 0, which looks like success to the fuzzer. This one aborts.
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
    if (setjmp(g_Back) == 0) // NOLINT: longjmp skips no destructor
    {
        a_Call();
        bReported = false;
    }
    g_iExpectedLine = 0;
    return bReported;
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

double GreatestOf(const TValues& a_vdValues)
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

std::size_t TInput::Size(int a_iLow, int a_iHigh)
{
    return static_cast<std::size_t>(Int(a_iLow, a_iHigh));
}

bool TInput::Flag()
{
    return Byte() % 2 != 0;
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

double TInput::Fresh()
{
    static const double Special[] = {0.0,        -0.0,    1.0,     -1.0,     Inf,   -Inf,   NaN,       Subnormal,
                                     -Subnormal, DBL_MIN, DBL_MAX, -DBL_MAX, 1e-12, -1e-12, 1.1e-12,   1e-14,
                                     1e-8,       1e-6,    Epsilon, 0.5,      2.0,   TwoPi,  TwoPi / 2, TwoPi / 4,
                                     1e150,      1e-150,  1e154,   1e-154,   1e300, 1e-300, 1e12,      3e-310};
    switch (Byte() % 8)
    {
    case 0:
        return Special[Byte() % (sizeof Special / sizeof Special[0])];
    case 1:
    case 2:
        return static_cast<std::int8_t>(Byte());
    case 3:
        return NearTolerance();
    case 4:
    case 5:
        return FreshTame();
    case 6: // any order of magnitude
    {
        const double dMantissa = static_cast<std::int8_t>(Byte()) / 64.0;
        return std::ldexp(dMantissa, Int(-1090, 1030));
    }
    default:
        return AnyBits();
    }
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
        return Int(-10000000, 10000000) / 9999991.0; // between -1 and 1, with all digits
    }
}

// A small multiple of a tolerance, up to three doubles off.
double TInput::NearTolerance()
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

double TInput::AnyBits()
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

TValues TInput::TameOrAnyValues(std::size_t a_iCount)
{
    return Flag() ? TameValues(a_iCount) : AnyValues(a_iCount);
}

} // namespace nuv_fuzz
