// census_test.cpp: each exported function performs exactly the double operations that its algorithm requires.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The linker option --wrap redirects the library's calls of the compiler's arithmetic helpers and of the mathematical
// functions to this file. The mathematical library has helpers of its own, so the operations inside its functions are
// not counted. A division, a square root and a comparison of magnitudes are calls of the library's own integer forms, under
// the names that the compiler gives them. A plain division or root would be missing in the count.

#include "census.h"
#include "device_cases.h"
#include "guest_instructions.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <iterator>
#include <utility>

namespace {

using namespace nuv_tests;

// A recorded call, which can be repeated. Comparisons are recorded as functions, because each one has its own cost.
struct TRecordedCall
{
    enumOperation Kind;
    void (*pFunction)();
    double dFirst;
    double dSecond;
    int iWhole;
};

bool g_bWatched = false;
TCensus g_Census;
std::vector<TRecordedCall> g_Calls;

template <class TFunction>
void Record(enumOperation a_Kind, TFunction* a_pFunction, double a_dFirst, double a_dSecond, int a_iWhole)
{
    if (g_bWatched)
    {
        ++g_Census[a_Kind];
        g_Calls.push_back({a_Kind, reinterpret_cast<void (*)()>(a_pFunction), a_dFirst, a_dSecond, a_iWhole});
    }
}

// Makes a call whose own operations are not recorded.
template <class TCall> auto Unwatched(const TCall& a_Call)
{
    const bool bWatched = std::exchange(g_bWatched, false);
    const auto Result = a_Call();
    g_bWatched = bWatched;
    return Result;
}

} // namespace

#define NUV_WATCH_BINARY(a_Result, a_Name, a_Kind)                                                                     \
    extern "C" a_Result __real_##a_Name(double, double);                                                               \
    extern "C" a_Result __wrap_##a_Name(double a_dFirst, double a_dSecond)                                             \
    {                                                                                                                  \
        Record(a_Kind, &__real_##a_Name, a_dFirst, a_dSecond, 0);                                                      \
        return Unwatched([=] { return __real_##a_Name(a_dFirst, a_dSecond); });                                        \
    }
#define NUV_WATCH_CONVERSION(a_Whole, a_Name)                                                                          \
    extern "C" double __real_##a_Name(a_Whole);                                                                        \
    extern "C" double __wrap_##a_Name(a_Whole a_iWhole)                                                                \
    {                                                                                                                  \
        Record(OPERATION_CONVERT, &__real_##a_Name, 0.0, 0.0, static_cast<int>(a_iWhole));                             \
        return __real_##a_Name(a_iWhole);                                                                              \
    }
#define NUV_WATCH_UNARY(a_Name, a_Kind)                                                                                \
    extern "C" double __real_##a_Name(double);                                                                         \
    extern "C" double __wrap_##a_Name(double a_dValue)                                                                 \
    {                                                                                                                  \
        Record(a_Kind, &__real_##a_Name, a_dValue, 0.0, 0);                                                            \
        return Unwatched([=] { return __real_##a_Name(a_dValue); });                                                   \
    }

NUV_WATCH_BINARY(double, __aeabi_dadd, OPERATION_ADD)
NUV_WATCH_BINARY(double, __aeabi_dsub, OPERATION_SUB)
NUV_WATCH_BINARY(double, __aeabi_drsub, OPERATION_SUB)
NUV_WATCH_BINARY(double, __aeabi_dmul, OPERATION_MUL)
NUV_WATCH_BINARY(double, _ZN3nuv18QuotientByIntegersEdd, OPERATION_DIV)
NUV_WATCH_BINARY(int, __aeabi_dcmpeq, OPERATION_COMPARE)
NUV_WATCH_BINARY(int, __aeabi_dcmplt, OPERATION_COMPARE)
NUV_WATCH_BINARY(int, __aeabi_dcmple, OPERATION_COMPARE)
NUV_WATCH_BINARY(int, __aeabi_dcmpge, OPERATION_COMPARE)
NUV_WATCH_BINARY(int, __aeabi_dcmpgt, OPERATION_COMPARE)
NUV_WATCH_BINARY(int, __aeabi_dcmpun, OPERATION_COMPARE)
NUV_WATCH_BINARY(bool, _ZN3nuv19IsSmallerByIntegersEdd, OPERATION_COMPARE)
NUV_WATCH_CONVERSION(int, __aeabi_i2d)
NUV_WATCH_CONVERSION(unsigned int, __aeabi_ui2d)
NUV_WATCH_UNARY(_ZN3nuv20SquareRootByIntegersEd, OPERATION_SQRT)
NUV_WATCH_BINARY(double, fmod, OPERATION_FMOD)
NUV_WATCH_UNARY(tan, OPERATION_TAN)
NUV_WATCH_UNARY(asin, OPERATION_ASIN)
NUV_WATCH_UNARY(acos, OPERATION_ACOS)
NUV_WATCH_UNARY(atan, OPERATION_ATAN)
NUV_WATCH_BINARY(double, atan2, OPERATION_ATAN2)
NUV_WATCH_UNARY(log, OPERATION_LOG)

extern "C" void __real_sincos(double, double*, double*);
extern "C" void __wrap_sincos(double a_dAngle, double* a_pSine, double* a_pCosine)
{
    Record(OPERATION_SINCOS, &__real_sincos, a_dAngle, 0.0, 0);
    __real_sincos(a_dAngle, a_pSine, a_pCosine);
}

namespace {

// Returns at once, in one instruction.
extern "C" __attribute__((naked)) void ReturnAtOnce()
{
    asm("bx lr");
}

// Repeats calls, or calls ReturnAtOnce with the same arguments instead.
void Replay(const std::vector<TRecordedCall>& a_Calls, bool a_bReally)
{
    double dSine;
    double dCosine;
    for (const TRecordedCall& Call : a_Calls)
    {
        void (*const pFunction)() = a_bReally ? Call.pFunction : &ReturnAtOnce;
        const auto Is = [&Call](auto* a_pFunction)
        { return Call.pFunction == reinterpret_cast<void (*)()>(a_pFunction); };
        if (Is(&__real___aeabi_i2d) || Is(&__real___aeabi_ui2d))
        {
            reinterpret_cast<double (*)(int)>(pFunction)(Call.iWhole);
        }
        else if (Is(&__real_sincos))
        {
            reinterpret_cast<void (*)(double, double*, double*)>(pFunction)(Call.dFirst, &dSine, &dCosine);
        }
        else // a superfluous second argument does no harm
        {
            reinterpret_cast<double (*)(double, double)>(pFunction)(Call.dFirst, Call.dSecond);
        }
    }
}

// The instructions of the calls alone, the one that calls included.
std::int64_t InstructionsOfCalls(const std::vector<TRecordedCall>& a_Calls)
{
    if (a_Calls.empty())
    {
        return 0;
    }
    const std::int64_t iReally = InstructionsOf([&a_Calls] { Replay(a_Calls, true); });
    const std::int64_t iAtOnce = InstructionsOf([&a_Calls] { Replay(a_Calls, false); });
    return iReally - iAtOnce + 2 * static_cast<std::int64_t>(a_Calls.size()); // back: calling and returning at once
}

// The additions, subtractions and multiplications among the recorded calls.
std::vector<TRecordedCall> SumsAndProducts()
{
    std::vector<TRecordedCall> Result;
    std::copy_if(g_Calls.begin(), g_Calls.end(), std::back_inserter(Result),
                 [](const TRecordedCall& a_Call) { return a_Call.Kind <= OPERATION_MUL; });
    return Result;
}

TEST(Device, EveryCallPerformsTheRequiredArithmeticExactly)
{
    ASSERT_NE(InstructionsSoFar(), NotCounted) << NoCounter;
    for (const TDeviceCase& Case : DeviceCases())
    {
        Case.Prepare();
        Case.Call();
        Case.Prepare();
        g_Census = TCensus();
        g_Calls.clear();
        g_bWatched = true;
        Case.Call();
        g_bWatched = false;
        std::string szLine = "[ device ] census|" + Case.szFunction + "|" + Case.szInput + "|" +
                             std::to_string(InstructionsOfCalls(g_Calls)) + "|" +
                             std::to_string(InstructionsOfCalls(SumsAndProducts()));
        for (std::size_t i = 0; i < OPERATIONS; ++i)
        {
            szLine += "|" + std::to_string(g_Census[i]);
            const bool bBound = i == OPERATION_COMPARE && Case.bComparisonsAtMost;
            EXPECT_TRUE(g_Census[i] == Case.Required[i] || (bBound && g_Census[i] < Case.Required[i]))
                << g_Census[i] << " times " << OperationNames[i] << " instead of " << Case.Required[i] << " in "
                << Case.szFunction << ", " << Case.szInput;
        }
        std::printf("%s\n", szLine.c_str());
    }
}

} // namespace
