// contest.h: a routine of the library and others that compute the same: they are compared, and then timed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_BENCH_CONTEST_H
#define NUV_BENCH_CONTEST_H

#include "floors.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace bench {

using TValues = std::vector<double>;

// The kind of a contestant. It is part of the name of its benchmark.
enum class EKind
{
    OURS,
    PEER,
    READ,       // a floor: reads the arrays once
    ARITHMETIC, // a floor: performs the operations at full width
    ORDER       // a floor: the longest chain of dependent operations that the fixed order imposes
};

// One routine on one problem: first ours, then its peers and floors.
//
// A contestant has a state, a run and a result. The run computes into the state and is timed. The result takes the
// values out of the state that are compared with ours. A peer's containers are filled in its state, which is not timed.
class TContest
{
public:
    // a_iBatch: the number of calls that a run makes. Times are those of one call.
    TContest(std::string a_szRoutine, int a_iSize, int a_iBatch = 1);

    template <class TState, class TRun, class TResult>
    void Ours(const std::string& a_szName, TState a_State, TRun a_Run, TResult a_Result)
    {
        const auto pState = std::make_shared<TState>(std::move(a_State));
        a_Run(*pState);
        m_vdOurs = a_Result(*pState);
        Register(EKind::OURS, a_szName, m_iBatch, pState, a_Run);
    }

    // a_dTolerance: the greatest difference from our result, divided by the greatest magnitude in it.
    template <class TState, class TRun, class TResult>
    void Peer(const std::string& a_szName, double a_dTolerance, TState a_State, TRun a_Run, TResult a_Result)
    {
        const auto pState = std::make_shared<TState>(std::move(a_State));
        a_Run(*pState);
        Check(a_szName, a_dTolerance, a_Result(*pState));
        Register(EKind::PEER, a_szName, m_iBatch, pState, a_Run);
    }

    // The three floors of a routine that reads a_iDoubles.
    void Floors(std::size_t a_iDoubles, const TOperations& a_Operations, double a_dDependentAdditions);

    template <class TState, class TRun>
    void Floor(EKind a_Kind, const std::string& a_szName, int a_iBatch, TState a_State, TRun a_Run)
    {
        Register(a_Kind, a_szName, a_iBatch, std::make_shared<TState>(std::move(a_State)), a_Run);
    }

private:
    void Check(const std::string& a_szName, double a_dTolerance, const TValues& a_vdValues);
    std::string Label(EKind a_Kind, const std::string& a_szName) const;

    // All timed loops are this one.
    template <class TState, class TRun>
    void Register(EKind a_Kind, const std::string& a_szName, int a_iBatch, std::shared_ptr<TState> a_pState,
                  TRun a_Run) const
    {
        const bool bPeer = a_Kind == EKind::PEER;
        const double dDifference = m_dDifference, dTolerance = m_dTolerance;
        benchmark::RegisterBenchmark(Label(a_Kind, a_szName).c_str(),
                                     [=](benchmark::State& a_Timer)
                                     {
                                         for ([[maybe_unused]] auto Iteration : a_Timer)
                                         {
                                             a_Run(*a_pState);
                                             benchmark::ClobberMemory();
                                         }
                                         a_Timer.SetItemsProcessed(a_Timer.iterations() * a_iBatch);
                                         if (bPeer)
                                         {
                                             a_Timer.counters["difference"] = dDifference;
                                             a_Timer.counters["tolerance"] = dTolerance;
                                         }
                                     });
    }

    std::string m_szRoutine;
    int m_iSize;
    int m_iBatch;
    TValues m_vdOurs;
    double m_dDifference = 0.0; // of the peer that is being added
    double m_dTolerance = 0.0;
};

// What the page names: the version of a library, and a library that was not found.
void NameVersion(const std::string& a_szLibrary, const std::string& a_szVersion);
void NameMissing(const std::string& a_szLibrary);

// Adds the contests of a family. Each program defines its own.
void RegisterFamily();

} // namespace bench

#endif // NUV_BENCH_CONTEST_H
