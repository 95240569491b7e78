// random.cpp: Rand and Randn beside other generators.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "contest.h"

#include "nuv1math.h"

#ifdef NUV_BENCH_BOOST
#include <boost/random.hpp>
#include <boost/version.hpp>
#endif
#ifdef NUV_BENCH_GSL
#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>
#include <gsl/gsl_version.h>
#endif

#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>

namespace bench {

constexpr int DRAWS = 4096; // of one run
// Tolerances of the mean, the mean square and the fraction in the middle: about six times their standard deviation.
constexpr double TOLERANCE_UNIFORM = 0.05;
constexpr double TOLERANCE_NORMAL = 0.15;

namespace {

// A generator and the values of its last run. Sequences differ between generators, so distributions are compared.
template <class TGenerator> struct TDraws
{
    TGenerator Generator;
    TValues vdValues = TValues(DRAWS);
};

} // namespace

// The mean, the mean square, and the fraction of values between the bounds.
static auto TellDistribution(double a_dLow, double a_dHigh)
{
    return [=](const auto& a_Draws)
    {
        double dSum = 0.0, dSquares = 0.0, dBetween = 0.0;
        for (const double d : a_Draws.vdValues)
        {
            dSum += d;
            dSquares += d * d;
            dBetween += d >= a_dLow && d < a_dHigh ? 1.0 : 0.0;
        }
        return TValues{dSum / DRAWS, dSquares / DRAWS, dBetween / DRAWS};
    };
}

// A run. The generator is a function that draws one value.
template <class TGenerator> static auto DrawAll()
{
    return [](TDraws<TGenerator>& a_Draws)
    {
        for (double& d : a_Draws.vdValues)
        {
            d = a_Draws.Generator();
        }
    };
}

template <class TGenerator, class TTell>
static void AddOurs(TContest& a_Contest, const std::string& a_szName, TGenerator a_Generator, TTell a_Tell)
{
    a_Contest.Ours(a_szName, TDraws<TGenerator>{a_Generator}, DrawAll<TGenerator>(), a_Tell);
}

template <class TGenerator, class TTell>
static void AddPeer(TContest& a_Contest, const std::string& a_szName, double a_dTolerance, TGenerator a_Generator,
                    TTell a_Tell)
{
    a_Contest.Peer(a_szName, a_dTolerance, TDraws<TGenerator>{a_Generator}, DrawAll<TGenerator>(), a_Tell);
}

// An engine and a distribution of the standard library or Boost.
template <class TEngine, class TDistribution> static auto Engine()
{
    return [Engine = TEngine(), Distribution = TDistribution()]() mutable { return Distribution(Engine); };
}

#ifdef NUV_BENCH_GSL
template <class TDraw> static auto Gsl(const gsl_rng_type* a_pType, TDraw a_Draw)
{
    const std::shared_ptr<gsl_rng> pGenerator(gsl_rng_alloc(a_pType), gsl_rng_free);
    return [=] { return a_Draw(pGenerator.get()); };
}
#endif

// (a ix + c) mod m with the shortest chain of operations: the quotient does not wait for a ix + c.
static unsigned int Step(unsigned int a, unsigned int c, unsigned int m, unsigned int ix)
{
    constexpr int BITS = 36; // enough for these moduli
    const std::uint64_t iSlope = (std::uint64_t(a) << BITS) / m + 1, iOffset = (std::uint64_t(c) << BITS) / m + 1;
    return a * ix + c - static_cast<unsigned int>((iSlope * ix + iOffset) >> BITS) * m;
}

using TStates = std::array<unsigned int, 3>;

// A step of the three congruential generators of Rand, without the rest of Rand. Each step waits for the one before.
static void StepGenerators(TStates& a_vix)
{
    unsigned int ix1 = a_vix[0], ix2 = a_vix[1], ix3 = a_vix[2];
    for (int i = 0; i < DRAWS; ++i)
    {
        ix1 = Step(7141, 54773, 259200, ix1);
        ix2 = Step(8121, 28411, 134456, ix2);
        ix3 = Step(4561, 51349, 243000, ix3);
        asm volatile("" : "+r"(ix1), "+r"(ix2), "+r"(ix3)); // forces every step, in registers
    }
    a_vix = {ix1, ix2, ix3};
}

static TStates g_vixCalled = {1, 2, 3}; // in memory, as the library has its own

__attribute__((noinline)) static void StepCalled()
{
    g_vixCalled[0] = Step(7141, 54773, 259200, g_vixCalled[0]);
    g_vixCalled[1] = Step(8121, 28411, 134456, g_vixCalled[1]);
    g_vixCalled[2] = Step(4561, 51349, 243000, g_vixCalled[2]);
    asm volatile("" : : : "memory");
}

// The same with a call for every step.
static void CallGenerators(TStates&)
{
    for (int i = 0; i < DRAWS; ++i)
    {
        StepCalled();
    }
}

static void AddUniform()
{
    TContest Contest("Rand", 1, DRAWS);
    const auto Tell = TellDistribution(0.25, 0.75);
    nuv::SetRandomSeed(1);
    AddOurs(
        Contest, "Rand", [] { return nuv::Rand(); }, Tell);
    const auto Peer = [&](const std::string& a_szName, auto a_Generator)
    { AddPeer(Contest, a_szName, TOLERANCE_UNIFORM, a_Generator, Tell); };
    using TUniform = std::uniform_real_distribution<double>;
    Peer("std::mt19937", Engine<std::mt19937, TUniform>());
    Peer("std::mt19937_64", Engine<std::mt19937_64, TUniform>());
    Peer("std::minstd_rand", Engine<std::minstd_rand, TUniform>());
    Peer("std::knuth_b", Engine<std::knuth_b, TUniform>());
    Peer("std::ranlux24", Engine<std::ranlux24, TUniform>());
#ifdef NUV_BENCH_BOOST
    using TBoostUniform = boost::random::uniform_real_distribution<double>;
    Peer("Boost mt19937", Engine<boost::random::mt19937, TBoostUniform>());
    Peer("Boost taus88", Engine<boost::random::taus88, TBoostUniform>());
    Peer("Boost ecuyer1988", Engine<boost::random::ecuyer1988, TBoostUniform>());
    Peer("Boost kreutzer1986", Engine<boost::random::kreutzer1986, TBoostUniform>());
#endif
#ifdef NUV_BENCH_GSL
    for (const gsl_rng_type* const pType : {gsl_rng_mt19937, gsl_rng_taus2, gsl_rng_ranlxd1})
    {
        Peer(std::string("GSL gsl_rng_uniform, ") + pType->name, Gsl(pType, gsl_rng_uniform));
    }
#endif
    Contest.Floor(EKind::ORDER, "chain of the three generators", DRAWS, TStates{1, 2, 3}, StepGenerators);
    Contest.Floor(EKind::ORDER, "chain of the three generators and a call", DRAWS, TStates(), CallGenerators);
}

static void AddNormal()
{
    TContest Contest("Randn", 1, DRAWS);
    const auto Tell = TellDistribution(-1.0, 1.0);
    nuv::SetRandomSeed(1);
    AddOurs(
        Contest, "Randn", [] { return nuv::Randn(); }, Tell);
    const auto Peer = [&](const std::string& a_szName, auto a_Generator)
    { AddPeer(Contest, a_szName, TOLERANCE_NORMAL, a_Generator, Tell); };
    Peer("std::normal_distribution, mt19937", Engine<std::mt19937, std::normal_distribution<double> >());
    Peer("std::normal_distribution, minstd_rand", Engine<std::minstd_rand, std::normal_distribution<double> >());
#ifdef NUV_BENCH_BOOST
    Peer("Boost normal_distribution, mt19937",
         Engine<boost::random::mt19937, boost::random::normal_distribution<double> >());
#endif
#ifdef NUV_BENCH_GSL
    const auto Draw = [](auto a_Function)
    { return Gsl(gsl_rng_mt19937, [=](const gsl_rng* a_p) { return a_Function(a_p, 1.0); }); };
    Peer("GSL gsl_ran_gaussian", Draw(gsl_ran_gaussian));
    Peer("GSL gsl_ran_gaussian_ziggurat", Draw(gsl_ran_gaussian_ziggurat));
#endif
}

void RegisterFamily()
{
#ifdef NUV_BENCH_BOOST
    NameVersion("Boost", BOOST_LIB_VERSION);
#endif
#ifdef NUV_BENCH_GSL
    NameVersion("GSL", gsl_version);
#endif
    NameVersion("the standard library", std::to_string(__GLIBCXX__));
    AddUniform();
    AddNormal();
}

} // namespace bench
