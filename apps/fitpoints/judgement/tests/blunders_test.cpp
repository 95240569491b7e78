// blunders_test.cpp: tail probabilities, and suspected blunders with and without blunders.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "sets.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <set>

namespace judgement_tests {
namespace {

using namespace judgement;

// ---------------------------------------------------------------------------------------------------------------------
// The F distribution

// The tail by Simpson's rule over t = x/(x + m/(2k)) of the beta distribution, with another formula than the series.
double TailByIntegration(int k, int m, double x)
{
    const double b = m / 2.0;
    const double dLow = 2.0 * k * x / (2.0 * k * x + m);
    const double dBeta = std::exp(std::lgamma(k) + std::lgamma(b) - std::lgamma(k + b));
    const auto Density = [&](double s) // t = 1 - s^2 keeps the density finite for m = 1
    { return 2 * std::pow(1 - s * s, k - 1) * std::pow(s, m - 1) / dBeta; };
    const double dEnd = std::sqrt(1 - dLow);
    const int iSteps = 40000;
    double dSum = Density(0) + Density(dEnd);
    for (int i = 1; i < iSteps; ++i)
    {
        dSum += (i % 2 == 1 ? 4 : 2) * Density(dEnd * i / iSteps);
    }
    return dSum * dEnd / iSteps / 3;
}

TEST(TailOfF, AgreesWithTheIntegralOfTheDensity)
{
    for (const int k : {1, 2, 3})
    {
        for (const int m : {1, 2, 3, 8, 31, 200})
        {
            for (const double x : {0.1, 1.0, 3.5, 12.0})
            {
                const double dExpected = TailByIntegration(k, m, x);
                EXPECT_NEAR(dExpected, TailOfF(k, m, x), 1e-9 * dExpected + 1e-15) << k << " " << m << " " << x;
            }
        }
    }
}

TEST(TailOfF, HasTheValuesOfTables)
{
    // 5 % and 1 % points of F(2, 10), F(4, 10) and F(6, 20), as printed tables give them.
    EXPECT_NEAR(0.05, TailOfF(1, 10, 4.10), 2e-4);
    EXPECT_NEAR(0.01, TailOfF(1, 10, 7.56), 2e-5);
    EXPECT_NEAR(0.05, TailOfF(2, 10, 3.48), 2e-4);
    EXPECT_NEAR(0.01, TailOfF(3, 20, 3.87), 3e-5);
    EXPECT_EQ(1, TailOfF(2, 7, 0));
    EXPECT_EQ(0, TailOfF(2, 7, HUGE_VAL));
}

TEST(QuantileOfF, InvertsTheTail)
{
    for (const double dProbability : {0.5, 0.05, 1e-6})
    {
        for (const int m : {1, 2, 9, 1000})
        {
            const double dValue = QuantileOfF(2, m, dProbability);
            EXPECT_NEAR(dProbability, TailOfF(2, m, dValue), 1e-12 * dProbability);
        }
    }
    EXPECT_LT(QuantileOfF(1, 5, 1), 1e-50);
}

// ---------------------------------------------------------------------------------------------------------------------
// Blunders

// Eight points of an exact affine transformation that is close enough to a similarity for its misfit to stay below a blunder.
TSet ExactSet()
{
    const nuv::TOmographicParams Coefs = {1.25, -0.375, 500000, 0.375, 1.26, 4500000, 0, 0};
    TSet Set;
    const double vdPlaces[8][2] = {{0, 0},     {1000, 16}, {984, 1000}, {8, 960},
                                   {512, 256}, {256, 768}, {720, 610},  {330, 410}};
    for (const auto& Place : vdPlaces)
    {
        Add(Set, Coefs, Place[0], Place[1], 0, 0);
    }
    return Set;
}

struct TResult
{
    enumReason Reason;
    TJudgement Judgement;
    std::vector<TPointJudgement> vPoints;
};

TResult Judged(const TSet& a_Set, const TOptions& a_Options)
{
    TResult Result = {REASON_NONE, {}, std::vector<TPointJudgement>(a_Set.vdX.size())};
    Result.Reason = Judge(Points(a_Set), nullptr, a_Options, Result.Judgement, Result.vPoints.data());
    return Result;
}

std::set<int> Suspects(const TResult& a_Result)
{
    std::set<int> Found;
    for (std::size_t i = 0; i < a_Result.vPoints.size(); ++i)
    {
        if (a_Result.vPoints[i].bSuspect)
        {
            Found.insert(static_cast<int>(i));
        }
    }
    return Found;
}

const enumMethod METHODS[] = {ASK_CONFORMAL, ASK_AFFINE, ASK_OMOGRAPHIC, ASK_RICHEST, ASK_AUTO};

TEST(Blunders, OneInAnExactSetIsNamedUnderEveryKind)
{
    for (int i = 0; i < 8; ++i)
    {
        for (const bool bInX : {false, true})
        {
            TSet Set = ExactSet();
            (bInX ? Set.vdXa : Set.vdYa)[static_cast<std::size_t>(i)] += 50;
            for (const enumMethod Method : METHODS)
            {
                const TResult Result = Judged(Set, {Method, 0, 0, 0, USUAL_LEVEL});
                ASSERT_EQ(REASON_NONE, Result.Reason);
                EXPECT_EQ(std::set<int>{i}, Suspects(Result)) << "method " << Method;
            }
        }
    }
}

TEST(Blunders, TwoInAnExactSetAreNamedUnderEveryKind)
{
    for (int i = 0; i < 8; ++i)
    {
        for (int j = 0; j < i; ++j)
        {
            TSet Set = ExactSet();
            Set.vdXa[static_cast<std::size_t>(i)] += 50;
            Set.vdYa[static_cast<std::size_t>(j)] -= 50;
            for (const enumMethod Method : METHODS)
            {
                const TResult Result = Judged(Set, {Method, 0, 0, 0, USUAL_LEVEL});
                EXPECT_EQ((std::set<int>{i, j}), Suspects(Result)) << "method " << Method;
            }
        }
    }
}

// The similarity misfits the points by more than the blunder. The richer kinds name it.
TEST(Blunders, AreNamedUnderAPoorerKindThatDoesNotFit)
{
    TSet Set = RandomSet(8, Affine, 0, 21);
    Set.vdXa[5] += 50;
    const TResult Result = Judged(Set, {ASK_CONFORMAL, 0, 0, 0, USUAL_LEVEL});
    EXPECT_GT(Result.Judgement.dRms, 50);
    EXPECT_EQ(std::set<int>{5}, Suspects(Result));
    EXPECT_GT(Result.vPoints[5].SuspectKind, nuv::METHOD_CONFORMAL);
}

// Without the blunder the affine fit is exact.
TEST(Blunders, RobustDropsTheBlundersAndListsThem)
{
    TSet Set = ExactSet();
    Set.vdXa[3] += 50;
    Set.vdYa[6] += 80;
    const TResult Result = Judged(Set, {ASK_AUTO, 0, 0, 1, USUAL_LEVEL});
    ASSERT_EQ(REASON_NONE, Result.Reason);
    EXPECT_EQ(nuv::METHOD_AFFINE, Result.Judgement.Fit.Kind);
    EXPECT_EQ(2, Result.Judgement.iDropped);
    EXPECT_EQ(6, Result.Judgement.iFitted);
    EXPECT_EQ(0, Result.Judgement.iSuspects);
    EXPECT_EQ(ROLE_DROPPED, Result.vPoints[3].Role);
    EXPECT_EQ(ROLE_DROPPED, Result.vPoints[6].Role);
    EXPECT_EQ(3, Result.vPoints[3].iDropped + Result.vPoints[6].iDropped);
    EXPECT_NEAR(50, -Result.vPoints[3].dX, 1e-6);
    EXPECT_NEAR(80, -Result.vPoints[6].dY, 1e-6);
    EXPECT_LT(Result.Judgement.dRms, 1e-8);
}

// A blunder of 500 units can make a poorer kind the best one. Its misfit must not accuse good points: they are tested under
// the kind that is the best one without the blunder.
TEST(Blunders, GoodPointsAreNotSuspectForTheMisfitOfAKindThatABlunderHasChosen)
{
    int iPoorer = 0;
    int iAccused = 0;
    for (std::uint64_t iSeed = 0; iSeed < 100; ++iSeed)
    {
        TSet Set = RandomSet(12, Omographic, 1, iSeed);
        Set.vdYa[7] -= 500;
        const TResult Result = Judged(Set, {ASK_AUTO, 0, 0, 0, USUAL_LEVEL});
        const std::set<int> viSuspects = Suspects(Result);
        iPoorer += Result.Judgement.Fit.Kind != nuv::METHOD_OMOGRAPHIC ? 1 : 0;
        iAccused += viSuspects.size() > 1 ? 1 : 0;
        EXPECT_EQ(1u, viSuspects.count(7)) << iSeed;
        EXPECT_EQ(viSuspects, Suspects(Judged(Set, {ASK_AUTO, 0, 0, 1, USUAL_LEVEL}))) << iSeed;
        EXPECT_EQ(static_cast<int>(viSuspects.size()), Result.Judgement.iSuspects);
    }
    EXPECT_GT(iPoorer, 50);
    EXPECT_LE(iAccused, 3);
}

// The order in which FindBlunders finds the points of a set under the affine kind: 1 for the worst one.
std::vector<int> Ranks(const TSet& a_Set)
{
    TKindFit Fit;
    std::vector<int> viOrder(a_Set.vdX.size());
    int iFound = 0;
    EXPECT_EQ(REASON_NONE, FitKind(Points(a_Set), nuv::METHOD_AFFINE, false, Fit));
    EXPECT_EQ(REASON_NONE, FindBlunders(Points(a_Set), Fit, USUAL_LEVEL, 1e-9, viOrder.data(), iFound));
    return viOrder;
}

// The best pair of these sets is not part of the best three points, so that adding the best third point to it is not enough.
TEST(Blunders, ThreeAreFoundThatDoNotContainTheBestPair)
{
    for (const std::uint64_t iSeed : {9u, 27u})
    {
        TSet Set = RandomSet(8, Affine, 0.1, iSeed);
        TNumbers Numbers(iSeed + 77);
        for (std::size_t i = 0; i < 3; ++i)
        {
            const double dSize = 10 * (0.3 + Numbers.Uniform());
            Set.vdXa[i] += Numbers.Uniform() < 0.5 ? -dSize : dSize;
            Set.vdYa[i] += 10 * (Numbers.Uniform() - 0.5);
        }
        const std::vector<int> viRanks = Ranks(Set);
        for (std::size_t i = 0; i < 8; ++i)
        {
            EXPECT_EQ(i<3, viRanks[i]> 0) << "point " << i << ", seed " << iSeed;
        }
    }
}

// Blunders of about the same size hide each other, so that they are found as a pair.
TEST(Blunders, TheWorstOneComesFirst)
{
    for (std::size_t i = 0; i < 8; ++i)
    {
        for (std::size_t j = 0; j < 8; ++j)
        {
            TSet Set = ExactSet();
            Set.vdXa[i] += 90;
            Set.vdXa[j] += i == j ? 0 : 50;
            const std::vector<int> viRanks = Ranks(Set);
            EXPECT_EQ(1, viRanks[i]);
            EXPECT_EQ(i == j ? 1 : 2, viRanks[j]);
        }
    }
}

TEST(Blunders, AtLeastHalfOfThePointsRemain)
{
    for (const int iCount : {10, 11})
    {
        TSet Set = RandomSet(iCount, Similarity, 0, 5);
        for (int i = 0; i < iCount; ++i)
        {
            Set.vdYa[static_cast<std::size_t>(i)] +=
                std::pow(10, i); // without the last points these are blunders again
        }
        const TResult Result = Judged(Set, {ASK_CONFORMAL, 0, 0, 1, USUAL_LEVEL});
        ASSERT_EQ(REASON_NONE, Result.Reason);
        EXPECT_EQ(5, Result.Judgement.iDropped) << iCount;
    }
}

TEST(Blunders, RobustKeepsOnePointMoreThanTheKindNeeds)
{
    // Four points cannot tell which one is wrong, five can.
    for (const int iCount : {4, 5})
    {
        TSet Set = RandomSet(iCount, Affine, 0, 4);
        Set.vdXa[1] += 50;
        const TResult Result = Judged(Set, {ASK_AFFINE, 0, 0, 1, USUAL_LEVEL});
        EXPECT_EQ(iCount == 5 ? 1 : 0, Result.Judgement.iDropped);
    }
}

TEST(Blunders, ManyAmongManyPointsAreFoundAtOnce)
{
    TSet Set = RandomSet(3000, Affine, 0.1, 8);
    std::set<int> Expected;
    for (int i = 5; i < 3000; i += 100)
    {
        Set.vdYa[static_cast<std::size_t>(i)] += 3 + 0.5 * i;
        Expected.insert(i);
    }
    EXPECT_EQ(Expected, Suspects(Judged(Set, {ASK_AUTO, 0, 0, 0, USUAL_LEVEL})));
    const TResult Robust = Judged(Set, {ASK_AUTO, 0, 0, 1, USUAL_LEVEL});
    EXPECT_EQ(Expected, Suspects(Robust));
    EXPECT_NEAR(0.1, Robust.Judgement.dRms, 0.005);
}

// Sets of normally distributed errors without a blunder. The number of false alarms of 4000 sets at the level 1 % has the
// mean 40 at most and a standard deviation of about 6.
TEST(Blunders, FalseAlarmsStayWithinTheLevel)
{
    for (const int iCount : {5, 8, 15, 45})
    {
        std::mt19937_64 Generator(static_cast<std::uint64_t>(iCount));
        std::normal_distribution<double> Normal;
        int viAlarms[3] = {0, 0, 0};
        const int iSets = iCount > 20 ? 150 : 1000;
        for (int iSet = 0; iSet < iSets; ++iSet)
        {
            TSet Set = RandomSet(iCount, Affine, 0, static_cast<std::uint64_t>(iSet));
            for (std::size_t i = 0; i < Set.vdX.size(); ++i)
            {
                Set.vdXa[i] += Normal(Generator);
                Set.vdYa[i] += Normal(Generator);
            }
            for (const enumMethod Method : {ASK_AFFINE, ASK_OMOGRAPHIC})
            {
                viAlarms[Method] += Suspects(Judged(Set, {Method, 0, 0, 0, 0.05})).empty() ? 0 : 1;
            }
        }
        const double dMean = 0.05 * iSets;
        const double dLimit = dMean + 3 * std::sqrt(dMean);
        EXPECT_LE(viAlarms[ASK_AFFINE], dLimit) << iCount << " points";
        EXPECT_LE(viAlarms[ASK_OMOGRAPHIC], dLimit) << iCount << " points";
        RecordProperty("points" + std::to_string(iCount), std::to_string(viAlarms[1]) + " " +
                                                              std::to_string(viAlarms[2]) + " of " +
                                                              std::to_string(iSets));
    }
}

// The deleted studentised value is an F(2, f - 2) value: about 5 % of the points exceed its 5 % point.
TEST(Blunders, StudentisedValuesHaveTheirDistribution)
{
    std::mt19937_64 Generator(1);
    std::normal_distribution<double> Normal;
    int iBeyond = 0;
    int iPoints = 0;
    for (std::uint64_t iSet = 0; iSet < 500; ++iSet)
    {
        TSet Set = RandomSet(10, Affine, 0, iSet);
        for (std::size_t i = 0; i < 10; ++i)
        {
            Set.vdXa[i] += Normal(Generator);
            Set.vdYa[i] += Normal(Generator);
        }
        for (const TPointJudgement& Point : Judged(Set, {ASK_AFFINE, 0, 0, 0, 0}).vPoints)
        {
            ASSERT_TRUE(Point.bTested);
            ++iPoints;
            iBeyond += Point.dProbability < 0.05 ? 1 : 0;
            EXPECT_LE(Point.dStandardised, std::sqrt(14 / 2.0) * (1 + 1e-12));
        }
    }
    EXPECT_NEAR(0.05, static_cast<double>(iBeyond) / iPoints, 0.012); // 3.9 standard deviations
}

TEST(Blunders, RoundingIsNotSuspect)
{
    for (std::uint64_t iSeed = 0; iSeed < 20; ++iSeed)
    {
        const nuv::TOmographicParams Far = {1.25, -0.375, 500000, 0.5, 2, 4500000, 0, 0};
        TSet Set = RandomSet(12, Far, 0, iSeed);
        EXPECT_TRUE(Suspects(Judged(Set, {ASK_AUTO, 0, 0, 0, USUAL_LEVEL})).empty());
        Set.vdXa[4] += 2e-6; // below 1e-12 of the coordinates
        EXPECT_TRUE(Suspects(Judged(Set, {ASK_AUTO, 0, 0, 0, USUAL_LEVEL})).empty());
        Set.vdXa[4] += 1e-3;
        EXPECT_EQ(std::set<int>{4}, Suspects(Judged(Set, {ASK_AUTO, 0, 0, 0, USUAL_LEVEL})));
    }
}

} // namespace
} // namespace judgement_tests
