// properties_roots_trig_test.cpp: equations made from known solutions give them back.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/expect.h"

#include <algorithm>
#include <rapidcheck/gtest.h>
#include <set>

namespace {

using namespace nuv_tests;
using TValues = std::vector<double>;

// a cos(t) + b sin(t) + c.
struct TFactor
{
    double dA;
    double dB;
    double dC;
};

// The factor that vanishes at two angles: cos(t - their mean) = cos(half their difference).
TFactor FactorOf(double a_dFirst, double a_dSecond)
{
    const double dMean = (a_dFirst + a_dSecond) / 2.0;
    return {std::cos(dMean), std::sin(dMean), -std::cos((a_dFirst - a_dSecond) / 2.0)};
}

// a_iCount ascending angles. Any two are at least 0.1 apart, also across the end of the turn.
TValues SeparateAngles(std::size_t a_iCount)
{
    const auto Slots = *rc::gen::unique<std::vector<int> >(a_iCount, rc::gen::inRange(0, 31));
    TValues vdAngles;
    for (int iSlot : std::set<int>(Slots.begin(), Slots.end()))
    {
        vdAngles.push_back(0.05 + 0.2 * iSlot + 1e-4 * *rc::gen::inRange(0, 1000));
    }
    return vdAngles;
}

void ExpectFound(const TValues& a_vdExpected, int a_iResult, const TValues& a_vdFound, double a_dBound)
{
    RC_ASSERT(a_iResult == static_cast<int>(a_vdExpected.size()));
    for (std::size_t i = 0; i < a_vdExpected.size(); ++i)
    {
        RC_ASSERT(std::fabs(a_vdFound[i] - a_vdExpected[i]) <= a_dBound);
    }
}

// The slope at a solution is the sine of half the difference, at least 0.05. A rounding of some units is divided by it.
RC_GTEST_PROP(SolveLinTrigProperty, FindsTheTwoAnglesThatMadeTheEquation, ())
{
    const TValues vdAngles = SeparateAngles(2);
    const TFactor Factor = FactorOf(vdAngles[0], vdAngles[1]);
    TValues vdFound(2);
    const int iResult = nuv::SolveLinTrig(Factor.dA, Factor.dB, Factor.dC, vdFound.data());
    ExpectFound(vdAngles, iResult, vdFound, 1e-13);
}

// Four angles at distances of 0.1 have slopes down to 1e-4. The eigenvalues lose about as much again.
RC_GTEST_PROP(SolveQuadTrigProperty, FindsTheFourAnglesThatMadeTheEquation, ())
{
    const TValues vdAngles = SeparateAngles(4);
    const auto iPartner = *rc::gen::inRange<std::size_t>(1, 4);
    TValues vdOthers;
    std::copy_if(vdAngles.begin() + 1, vdAngles.end(), std::back_inserter(vdOthers),
                 [&](double a_dAngle) { return a_dAngle != vdAngles[iPartner]; });
    const TFactor First = FactorOf(vdAngles[0], vdAngles[iPartner]);
    const TFactor Second = FactorOf(vdOthers[0], vdOthers[1]);
    TValues vdFound(4);
    const int iResult =
        nuv::SolveQuadTrig(First.dA * Second.dA, First.dB * Second.dB, First.dA * Second.dB + First.dB * Second.dA,
                           First.dA * Second.dC + First.dC * Second.dA, First.dB * Second.dC + First.dC * Second.dB,
                           First.dC * Second.dC, vdFound.data());
    ExpectFound(vdAngles, iResult, vdFound, 1e-8);
}

// Up to eight different whole numbers between -20 and 20 have a polynomial of exact coefficients.
RC_GTEST_PROP(PolynomialRootsProperty, FindsTheRootsThatMadeThePolynomial, ())
{
    const auto iDegree = *rc::gen::inRange<std::size_t>(1, 9);
    const auto viRoots = *rc::gen::unique<std::vector<int> >(iDegree, rc::gen::inRange(-20, 21));
    TValues vdCoefficients = {1.0};
    for (int iRoot : viRoots)
    {
        vdCoefficients.push_back(0.0);
        for (std::size_t i = vdCoefficients.size() - 1; i > 0; --i)
        {
            vdCoefficients[i] -= iRoot * vdCoefficients[i - 1];
        }
    }
    TValues vdFound(iDegree);
    const int iResult = nuv::Roots(static_cast<unsigned int>(iDegree), vdCoefficients.data(), vdFound.data(), 1e-3);
    std::sort(vdFound.begin(), vdFound.end());
    const std::set<int> Sorted(viRoots.begin(), viRoots.end());
    ExpectFound(TValues(Sorted.begin(), Sorted.end()), iResult, vdFound, 1e-3);
}

} // namespace
