// conversions.cpp: parameters, coefficients and inverses, and the system of two equations, beside what computes them.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "contest.h"

#include "nuv1math.h"

#include <Eigen/Geometry>
#include <Eigen/LU>
#include <Eigen/QR>
#ifdef NUV_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif
#ifdef NUV_BENCH_GDAL
#include <gdal.h>
#endif

#include <cmath>
#include <complex>
#include <random>

namespace bench {

constexpr int CALLS = 64; // records of one run
constexpr double TOLERANCE = 1e-12;
constexpr double ANGLE_2PI = 6.283185307179586;

namespace {

// A record as the inputs and outputs of one call.
template <int I, int O> struct TCall
{
    std::array<double, I> vdIn;
    std::array<double, O> vdOut;
};

// The same for the records of a library, made from the inputs.
template <class TIn, class TOut> struct TRecords
{
    std::vector<TIn> vIn;
    std::vector<TOut> vOut;
};

template <int I> using TInputs = std::vector<std::array<double, I>>;

} // namespace

// Every contestant maps its own form of an input (a_Make) to its own form of an output (a_Run) and tells its values.
template <int I, class TMake, class TRun, class TValuesOf> struct TEntry
{
    TMake Make;
    TRun Run;
    TValuesOf ValuesOf;
};

namespace {

// A contest of functions of one record, on CALLS records.
template <int I> class TRecordContest
{
public:
    TRecordContest(const std::string& a_szRoutine, TInputs<I> a_vInputs)
        : m_Contest(a_szRoutine, 1, CALLS), m_vInputs(std::move(a_vInputs))
    {
    }

    template <class TMake, class TRun, class TTell>
    void Ours(const std::string& a_szName, TMake a_Make, TRun a_Run, TTell a_Tell)
    {
        auto State = MakeState(a_Make, a_Run);
        using TState = decltype(State);
        m_Contest.Ours(a_szName, State, RunAll<TState>(a_Run), TellAll<TState>(a_Tell));
    }

    template <class TMake, class TRun, class TTell>
    void Peer(const std::string& a_szName, TMake a_Make, TRun a_Run, TTell a_Tell)
    {
        auto State = MakeState(a_Make, a_Run);
        using TState = decltype(State);
        m_Contest.Peer(a_szName, TOLERANCE, State, RunAll<TState>(a_Run), TellAll<TState>(a_Tell));
    }

    void Arithmetic(const TOperations& a_Operations) { m_Contest.Floors(0, a_Operations, 0); }

private:
    template <class TMake, class TRun> auto MakeState(TMake a_Make, TRun a_Run) const
    {
        using TIn = decltype(a_Make(m_vInputs[0]));
        using TOut = std::decay_t<decltype(a_Run(std::declval<const TIn&>()))>;
        TRecords<TIn, TOut> State;
        for (const auto& vdInput : m_vInputs)
        {
            State.vIn.push_back(a_Make(vdInput));
        }
        State.vOut.resize(State.vIn.size());
        return State;
    }

    template <class TState, class TRun> static auto RunAll(TRun a_Run)
    {
        return [a_Run](TState& a_State) {
            for (std::size_t i = 0; i < a_State.vIn.size(); ++i)
            {
                a_State.vOut[i] = a_Run(a_State.vIn[i]);
            }
        };
    }

    template <class TState, class TTell> static auto TellAll(TTell a_Tell)
    {
        return [a_Tell](const TState& a_State) {
            TValues vdAll;
            for (const auto& Out : a_State.vOut)
            {
                const auto vdOne = a_Tell(Out);
                vdAll.insert(vdAll.end(), vdOne.begin(), vdOne.end());
            }
            return vdAll;
        };
    }

    TContest m_Contest;
    TInputs<I> m_vInputs;
};

} // namespace
} // namespace bench
