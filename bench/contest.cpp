// contest.cpp: compares a peer's result with ours; the main function of every family's program.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "contest.h"
#include "run.h"

#include <Eigen/Core>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {

static int g_iFailures = 0;
static std::string g_szMissing = NUV_BENCH_MISSING;

TContest::TContest(std::string a_szRoutine, int a_iSize, int a_iBatch)
    : m_szRoutine(std::move(a_szRoutine)), m_iSize(a_iSize), m_iBatch(a_iBatch)
{}

// The greatest difference divided by the greatest magnitude of ours, or infinity if the numbers of values differ.
static double Difference(const TValues& a_vdOurs, const TValues& a_vdTheirs)
{
    if (a_vdOurs.size() != a_vdTheirs.size())
    {
        return HUGE_VAL;
    }
    double dMagnitude = 0.0, dDifference = 0.0;
    for (std::size_t i = 0; i < a_vdOurs.size(); ++i)
    {
        dMagnitude = std::max(dMagnitude, std::fabs(a_vdOurs[i]));
        const double d = std::fabs(a_vdTheirs[i] - a_vdOurs[i]);
        dDifference = d <= dDifference ? dDifference : d; // a NaN stays
    }
    return dDifference / dMagnitude;
}

void TContest::Check(const std::string& a_szName, double a_dTolerance, const TValues& a_vdValues)
{
    m_dTolerance = a_dTolerance;
    m_dDifference = Difference(m_vdOurs, a_vdValues);
    if (!(m_dDifference <= a_dTolerance))
    {
        std::fprintf(stderr, "%s, %d: %s differs from ours by %g, more than %g (%zu values, ours %zu)\n",
                     m_szRoutine.c_str(), m_iSize, a_szName.c_str(), m_dDifference, a_dTolerance, a_vdValues.size(),
                     m_vdOurs.size());
        ++g_iFailures;
    }
}

std::string TContest::Label(EKind a_Kind, const std::string& a_szName) const
{
    static const char* const vszKinds[] = {"ours", "peer", "read", "arithmetic", "order"};
    return m_szRoutine + '|' + std::to_string(m_iSize) + '|' + vszKinds[static_cast<int>(a_Kind)] + '|' + a_szName;
}

void TContest::Floors(std::size_t a_iDoubles, const TOperations& a_Operations, double a_dDependentAdditions)
{
    constexpr int CALLS = 64; // in one run, so that the overhead of the timed loop does not count
    Floor(EKind::READ, "reading the arrays once", 1, TValues(a_iDoubles, 1.0), Read);
    Floor(EKind::ARITHMETIC, "arithmetic at full width", CALLS, CALLS * a_Operations, Compute);
    Floor(EKind::ORDER, "longest chain of dependent additions", CALLS, CALLS * a_dDependentAdditions, AddInChain);
}

void NameVersion(const std::string& a_szLibrary, const std::string& a_szVersion)
{
    benchmark::AddCustomContext("version of " + a_szLibrary, a_szVersion);
}

void NameMissing(const std::string& a_szLibrary)
{
    g_szMissing += (g_szMissing.empty() ? "" : ", ") + a_szLibrary;
}

} // namespace bench

// Runs all contests if all peers agree with us. With --quick every contestant runs about once, to test the programs.
int main(int a_iArguments, char** a_vszArguments)
{
    static char szBriefly[] = "--benchmark_min_time=0.000000001";
    for (int i = 1; i < a_iArguments; ++i)
    {
        if (std::strcmp(a_vszArguments[i], "--quick") == 0)
        {
            a_vszArguments[i] = szBriefly;
        }
    }
    bench::NameVersion("the compiler", "g++ " __VERSION__);
    bench::NameVersion("Eigen", std::to_string(EIGEN_WORLD_VERSION) + '.' + std::to_string(EIGEN_MAJOR_VERSION) + '.' +
                                    std::to_string(EIGEN_MINOR_VERSION));
    bench::RegisterFamily();
    if (bench::g_iFailures != 0)
    {
        std::fprintf(stderr, "%d results differ: nothing is timed\n", bench::g_iFailures);
        return EXIT_FAILURE;
    }
    benchmark::AddCustomContext("missing", bench::g_szMissing);
    return bench::RunRegistered(a_iArguments, a_vszArguments);
}
