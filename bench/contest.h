// contest.h: a routine of the library beside what else computes the same: checked first, then timed.
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

// What a contestant is; it stands in the name of its benchmark.
enum class EKind
{
    OURS,
    PEER,
    READ,       // floors: the arrays read once,
    ARITHMETIC, // the operations at full width,
    ORDER       // the longest chain of dependent operations that the order of the operations imposes
};

// One routine on one problem: first ours, then its peers and floors.
//
// A contestant has a state, a run that computes into it and is timed, and a result: the values in the state that are
// compared with ours. What a peer's containers need is prepared in its state and not timed.
class TContest
{
public:
    // a_iBatch: how many calls of the routine a run makes; times are those of one call.
    TContest(std::string a_szRoutine, int a_iSize, int a_iBatch = 1);

    template <class TState, class TRun, class TResult>
    void Ours(const std::string& a_szName, TState a_State, TRun a_Run, TResult a_Result)
    {
        const auto pState = std::make_shared<TState>(std::move(a_State));
        a_Run(*pState);
        m_vdOurs = a_Result(*pState);
        Register(EKind::OURS, a_szName, m_iBatch, pState, a_Run);
    }

    // The tolerance holds for the greatest difference from our result, divided by its greatest magnitude.
    template <class TState, class TRun, class TResult>
    void Peer(const std::string& a_szName, double a_dTolerance, TState a_State, TRun a_Run, TResult a_Result)
    {
        const auto pState = std::make_shared<TState>(std::move(a_State));
        a_Run(*pState);
        Check(a_szName, a_dTolerance, a_Result(*pState));
        Register(EKind::PEER, a_szName, m_iBatch, pState, a_Run);
    }

    // The three floors of a routine that reads so many doubles.
    void Floors(std::size_t a_iDoubles, const TOperations& a_Operations, double a_dDependentAdditions);

    template <class TState, class TRun>
    void Floor(EKind a_Kind, const std::string& a_szName, int a_iBatch, TState a_State, TRun a_Run)
    {
        Register(a_Kind, a_szName, a_iBatch, std::make_shared<TState>(std::move(a_State)), a_Run);
    }

private:
    void Check(const std::string& a_szName, double a_dTolerance, const TValues& a_vdValues);
    std::string Label(EKind a_Kind, const std::string& a_szName) const;

    // The one loop that is timed.
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
    double m_dDifference = 0.0; // of the peer that is being entered
    double m_dTolerance = 0.0;
};

// What the report names: a library and its version, or that it was not found.
void NameVersion(const std::string& a_szLibrary, const std::string& a_szVersion);
void NameMissing(const std::string& a_szLibrary);

// Enters the contests of a family: each program defines its own.
void RegisterFamily();

} // namespace bench

#endif // NUV_BENCH_CONTEST_H
