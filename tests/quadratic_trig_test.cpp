// quadratic_trig_test.cpp: angles that solve a quadratic equation in the cosine and sine of one angle.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// A test expects bits if no function of the platform takes part, or if it calls the same function with the same
// argument as the solver. Elsewhere it allows a few units of 2 pi, to which an angle is rounded.

#include "nuv1math.h"
#include "support/angles.h"
#include "support/effort.h"
#include "support/expect.h"
#include "support/trig_equation.h"

#include <algorithm>
#include <random>

namespace {

using namespace nuv_tests;
using TValues = std::vector<double>;

const double HalfPi = 1.5707963267948966;
const double ThreeHalfPi = 4.71238898038469;

TAngles SolveQuadratic(const TTrigEquation& a_Equation)
{
    return Solve(4,
                 [=](double* a_vdAngles)
                 {
                     return nuv::SolveQuadTrig(a_Equation.dA, a_Equation.dB, a_Equation.dC, a_Equation.dD,
                                               a_Equation.dE, a_Equation.dF, a_vdAngles);
                 });
}

std::string Text(const TTrigEquation& a_Equation)
{
    std::string szText;
    for (double dCoefficient : Fields(a_Equation))
    {
        szText += HexText(dCoefficient) + " ";
    }
    return szText;
}

struct TQuadraticCase
{
    TTrigEquation Equation;
    int iResult;
    TValues vdAngles;
};

void ExpectCases(const std::vector<TQuadraticCase>& a_Cases)
{
    for (const TQuadraticCase& Case : a_Cases)
    {
        SCOPED_TRACE(Text(Case.Equation));
        // If there are solutions, the elements behind them have no meaning.
        ExpectAngles(Case.iResult, Case.vdAngles, SolveQuadratic(Case.Equation), Case.iResult <= 0);
    }
}

// Expects the angles within a_dBound radians. For solutions that come from the quartic.
void ExpectNear(const TTrigEquation& a_Equation, const TValues& a_vdExpected, double a_dBound)
{
    SCOPED_TRACE(Text(a_Equation));
    const TAngles Angles = SolveQuadratic(a_Equation);
    EXPECT_TRUE(Angles.Room.IsIntact());
    ASSERT_EQ(static_cast<int>(a_vdExpected.size()), Angles.iResult);
    for (std::size_t i = 0; i < a_vdExpected.size(); ++i)
    {
        EXPECT_NEAR(a_vdExpected[i], Angles.Room[i], a_dBound) << "angle " << i;
    }
}

double Atan2(double a_dY, double a_dX)
{
    return std::atan2(Opaque(a_dY), Opaque(a_dX));
}

double Atan(double a_dValue)
{
    return std::atan(Opaque(a_dValue));
}

// --- no linear terms: a product

TEST(SolveQuadTrig, WithoutAnyTermEveryAngleSolves)
{
    ExpectCases({{{0.0, 0.0, 0.0, 0.0, 0.0, 0.0}, nuv::RET_INDETERMINATE, {}},
                 {{-0.0, -0.0, -0.0, -0.0, -0.0, -0.0}, nuv::RET_INDETERMINATE, {}},
                 {{1.0, 1.0, 0.0, 0.0, 0.0, -1.0}, nuv::RET_INDETERMINATE, {}}, // cos^2 + sin^2 - 1
                 {{-2.5, -2.5, -0.0, 0.0, -0.0, 2.5}, nuv::RET_INDETERMINATE, {}}});
}

// sin^2(t) = 0: each factor has the solutions 0 (or -0.0) and pi. The first of equal angles is kept, at its place.
TEST(SolveQuadTrig, SineSquaredGivesZeroAndPiOnce)
{
    ExpectCases({{{0.0, 1.0, 0.0, 0.0, 0.0, 0.0}, 2, {-0.0, Pi}},
                 {{-1.0, 1.0, 0.0, 0.0, 0.0, 1.0}, 2, {-0.0, Pi}},
                 {{0.0, -1.0, 0.0, 0.0, 0.0, 0.0}, 2, {0.0, Pi}}}); // -(0/-1) is +0.0
}

TEST(SolveQuadTrig, SineTimesCosineGivesTheFourAxes)
{
    const double dRight = std::acos(Opaque(-0.0));
    ExpectCases({{{0.0, 0.0, 1.0, 0.0, 0.0, 0.0}, 4, {0.0, dRight, Pi, TwoPi - dRight}},
                 {{2.0, 2.0, -3.0, 0.0, 0.0, -2.0}, 4, {0.0, dRight, Pi, TwoPi - dRight}}});
}

// sin(t) (q sin(t) + c cos(t)).
TEST(SolveQuadTrig, SineFactorStandsBesideALine)
{
    const double dFalling = Atan2(-1.0, 1.0);
    const double dRising = Atan2(2.0, 1.0);
    ExpectCases({{{0.0, 1.0, 1.0, 0.0, 0.0, 0.0}, 4, {0.0, (dFalling + TwoPi) - Pi, Pi, dFalling + TwoPi}},
                 {{0.0, 1.0, -2.0, 0.0, 0.0, 0.0}, 4, {0.0, dRising, Pi, dRising + Pi}},
                 {{3.0, 4.0, -2.0, 0.0, 0.0, -3.0}, 4, {0.0, dRising, Pi, dRising + Pi}}});
}

TEST(SolveQuadTrig, CosineSquaredGivesTheUpAndDownAxisOnce)
{
    const TAngles Angles = SolveQuadratic({1.0, 0.0, 0.0, 0.0, 0.0, 0.0});
    ASSERT_EQ(2, Angles.iResult);
    EXPECT_DOUBLE_EQ(HalfPi, Angles.Room[0]);
    EXPECT_DOUBLE_EQ(ThreeHalfPi, Angles.Room[1]);
}

// cos(t) (p cos(t) + c sin(t)).
TEST(SolveQuadTrig, CosineFactorStandsBesideALine)
{
    const double dFalling = Atan2(-1.0, 1.0);
    const double dRising = Atan2(1.0, 3.0);
    ExpectCases({{{1.0, 0.0, 1.0, 0.0, 0.0, 0.0}, 4, {HalfPi, (dFalling + TwoPi) - Pi, ThreeHalfPi, dFalling + TwoPi}},
                 {{-1.0, 0.0, 3.0, 0.0, 0.0, 0.0}, 4, {dRising, HalfPi, dRising + Pi, ThreeHalfPi}},
                 {{-3.0, -2.0, 3.0, 0.0, 0.0, 2.0}, 4, {dRising, HalfPi, dRising + Pi, ThreeHalfPi}}});
}

// --- no linear terms: a quadratic in the tangent

TEST(SolveQuadTrig, DifferenceOfSquaresGivesTheFourDiagonals)
{
    const double dUp = Atan(1.0);
    const double dDown = Atan(-1.0);
    const TTrigEquation Equation{1.0, -1.0, 0.0, 0.0, 0.0, 0.0};
    ExpectCases({{Equation, 4, {dUp, (dDown + TwoPi) - Pi, dUp + Pi, dDown + TwoPi}}});
    ExpectNear(Equation, {0.7853981633974483, 2.356194490192345, 3.9269908169872414, 5.497787143782138},
               2.0 * Epsilon * TwoPi);
}

TEST(SolveQuadTrig, TangentsAreThoseOfTheQuadratic)
{
    // w^2 - 3w + 2: w = 2 and 1. w^2 + 5w + 6 with the constant split: w = -3 and -2.
    const double dThree = Atan(-3.0);
    const double dTwo = Atan(-2.0);
    ExpectCases({{{2.0, 1.0, -3.0, 0.0, 0.0, 0.0}, 4, {Atan(1.0), Atan(2.0), Atan(1.0) + Pi, Atan(2.0) + Pi}},
                 {{2.0, -3.0, 5.0, 0.0, 0.0, 4.0},
                  4,
                  {(dThree + TwoPi) - Pi, (dTwo + TwoPi) - Pi, dThree + TwoPi, dTwo + TwoPi}}});
}

TEST(SolveQuadTrig, ASquaredLineGivesItsTwoAngles)
{
    const double dDown = Atan(-1.0);
    ExpectCases({{{1.0, 1.0, 2.0, 0.0, 0.0, 0.0}, 2, {(dDown + TwoPi) - Pi, dDown + TwoPi}},
                 {{4.0, 1.0, -4.0, 0.0, 0.0, 0.0}, 2, {Atan(2.0), Atan(2.0) + Pi}}});
}

TEST(SolveQuadTrig, APositiveFormHasNoAngle)
{
    ExpectCases({{{1.0, 1.0, 0.0, 0.0, 0.0, 0.0}, 0, {}},
                 {{1.0, 2.0, 1.0, 0.0, 0.0, 0.0}, 0, {}},
                 {{-1.0, -2.0, 1.0, 0.0, 0.0, -3.0}, 0, {}}});
}

// Squares of so small coefficients are 0, and so is the discriminant: w = -(0/2e-200) is taken for a double root.
TEST(SolveQuadTrig, ADiscriminantThatUnderflowsGivesMinusZero)
{
    ExpectCases({{{1e-200, 1e-200, 0.0, 0.0, 0.0, 0.0}, 2, {-0.0, Pi}}});
}

// 2^-537 w^2 - 3 2^-539 = 0: the product rounds to -2^-1074, so the discriminant is 2^-1072 and its root 2^-536, where
// sqrt(3)/2 times that would be exact. The negative root, formed first, is then -2^-536/2^-536, and the other
// 3 2^-538/2^-536. A middle coefficient of either zero counts as not negative.
TEST(SolveQuadTrig, WithoutAMiddleTermTheNegativeTangentIsFormedFirst)
{
    const double dUp = Atan(0.75);
    const double dDown = Atan(-1.0);
    for (double dZero : {0.0, -0.0})
    {
        ExpectCases({{{std::ldexp(-3.0, -539), std::ldexp(1.0, -537), dZero, 0.0, 0.0, 0.0},
                      4,
                      {dUp, (dDown + TwoPi) - Pi, dUp + Pi, dDown + TwoPi}}});
    }
}

// The opposite of a negative angle is computed from the angle plus 2 pi, not from the angle itself.
TEST(SolveQuadTrig, OppositeOfANegativeTangentIsFormedFromTheGreaterAngle)
{
    int iDiffering = 0;
    for (int i = 1; i <= 500; ++i)
    {
        const double dAngle = Atan(-i);
        const TValues vdExpected = {(dAngle + TwoPi) - Pi, dAngle + TwoPi};
        ExpectCases({{{static_cast<double>(i) * i, 1.0, 2.0 * i, 0.0, 0.0, 0.0}, 2, vdExpected}}); // (w + i)^2
        iDiffering += SameBits(vdExpected[0], dAngle + Pi) ? 0 : 1;
    }
    EXPECT_GT(iDiffering, 50);
}

// --- the quadratic terms are a constant

TEST(SolveQuadTrig, EqualSquaresLeaveTheLinearEquation)
{
    const double dThird = std::acos(Opaque(0.5));
    const double dSixth = std::asin(Opaque(0.5));
    const double dFalling = Atan2(-1.0, 1.0);
    ExpectCases({{{0.0, 0.0, 0.0, 1.0, 0.0, -0.5}, 2, {dThird, TwoPi - dThird}},
                 {{0.25, 0.25, 0.0, 1.0, 0.0, -0.75}, 2, {dThird, TwoPi - dThird}},
                 {{0.25, 0.25, -0.0, 1.0, -0.0, -0.75}, 2, {dThird, TwoPi - dThird}},
                 {{3.0, 3.0, 0.0, 0.0, 2.0, -4.0}, 2, {dSixth, Pi - dSixth}},
                 {{3.0, 3.0, 0.0, 1.0, 1.0, -3.0}, 2, {(dFalling + TwoPi) - Pi, dFalling + TwoPi}}}); // now ascending
    ExpectNear({0.0, 0.0, 0.0, 1.0, 0.0, -0.5}, {Pi / 3.0, 5.0 * Pi / 3.0}, 2.0 * Epsilon * TwoPi);
}

TEST(SolveQuadTrig, TheLinearEquationTellsThatNothingSolves)
{
    ExpectCases({{{0.0, 0.0, 0.0, 1.0, 0.0, 2.0}, nuv::RET_IMPOSSIBLE, {}},
                 {{1.0, 1.0, 0.0, 0.0, 1.0, 0.5}, nuv::RET_IMPOSSIBLE, {}},
                 {{1.0, 1.0, 0.0, 1.0, 1.0, 4.0}, 0, {}}}); // neither missing: the count
}

TEST(SolveQuadTrig, OneAngleOfTheLinearEquationPassesAsItIs)
{
    ExpectCases({{{1.0, 1.0, 0.0, 1.0, 0.0, 0.0}, 1, {Pi}},
                 {{1.0, 1.0, 0.0, 1.0, 0.0, -2.0}, 1, {0.0}},
                 {{2.0, 2.0, 0.0, 3.0, 4.0, 3.0}, 1, {2.0 * Atan(-2.0) + TwoPi}}});
}

TEST(SolveQuadTrig, TheDoubleAngleOfASineOfOneIsMerged)
{
    ExpectNear({0.0, 0.0, 0.0, 0.0, 1.0, -1.0}, {HalfPi}, Epsilon * TwoPi);
    ExpectNear({2.0, 2.0, 0.0, 0.0, -1.0, -3.0}, {ThreeHalfPi}, Epsilon * TwoPi);
}

// --- the quartic

// cos(t) (cos(t) + 1): the root at infinity reduces the quartic to -2u^2 + 2.
TEST(SolveQuadTrig, ThePiThatTheQuarticLosesIsPutBeside)
{
    ExpectNear({1.0, 0.0, 0.0, 1.0, 0.0, 0.0}, {HalfPi, Pi, ThreeHalfPi}, 4.0 * Epsilon * TwoPi);
    EXPECT_SAME_BITS(Pi, SolveQuadratic({1.0, 0.0, 0.0, 1.0, 0.0, 0.0}).Room[1]);
}

TEST(SolveQuadTrig, PiAloneIsOneAngle)
{
    // cos^2 + 2 sin^2 + cos = (1 + cos)(2 - cos): 6u^2 + 2 has no real root.
    // (1 + cos)^2/2: the quartic is a constant, which the polynomial roots call impossible.
    ExpectCases({{{1.0, 2.0, 0.0, 1.0, 0.0, 0.0}, 1, {Pi}}, {{1.0, 0.5, 0.0, 1.0, 0.0, 0.0}, 1, {Pi}}});
}

TEST(SolveQuadTrig, NoRealRootIsToldByTheCountZero)
{
    ExpectCases({{{1.0, 0.0, 0.0, 0.1, 0.0, 1.0}, 0, {}}, {{1.0, 2.0, 0.5, 0.1, 0.2, 3.0}, 0, {}}});
}

// cos(t) (cos(t) - 1): the quartic is u^2 (2u^2 - 2). Its double root 0 gives one angle.
TEST(SolveQuadTrig, RootsThatAreExactlyZeroAreMerged)
{
    ExpectNear({1.0, 0.0, 0.0, -1.0, 0.0, 0.0}, {0.0, HalfPi, ThreeHalfPi}, 4.0 * Epsilon * TwoPi);
    EXPECT_SAME_BITS(0.0, SolveQuadratic({1.0, 0.0, 0.0, -1.0, 0.0, 0.0}).Room[0]);
}

// (cos(t) - p)(sin(t) - q) = sin cos - q cos - p sin + pq, and (cos(t) - p)(cos(t) - q).
TEST(SolveQuadTrig, ProductsOfLinearFactorsGiveTheAnglesOfBoth)
{
    const double dThird = Pi / 3.0;
    const double dAsin = std::asin(0.25);
    ExpectNear({0.0, 0.0, 1.0, -0.25, -0.5, 0.125}, {dAsin, dThird, Pi - dAsin, TwoPi - dThird}, 1e-14);
    const double dAcos = std::acos(-0.25);
    ExpectNear({1.0, 0.0, 0.0, -0.25, 0.0, -0.125}, {dThird, dAcos, TwoPi - dAcos, TwoPi - dThird}, 1e-14);
    // Beyond 1 a factor gives none: (cos(t) - 1/2)(sin(t) - 2).
    ExpectNear({0.0, 0.0, 1.0, -2.0, -0.5, 1.0}, {dThird, TwoPi - dThird}, 1e-14);
    // Equal squares but a mixed term: the quartic, not the linear equation.
    ExpectNear({7.0, 7.0, 1.0, -0.25, -0.5, 0.125 - 7.0}, {dAsin, dThird, Pi - dAsin, TwoPi - dThird}, 1e-13);
}

// A double root of the quartic is found as two neighbours, about the square root of the rounding apart. If the
// iteration gives up it is missed.
TEST(SolveQuadTrig, TangentSolutionsOfTheQuarticAreDoubledOrMissed)
{
    const double dAngle = std::acos(0.6);
    ExpectNear({1.0, 0.0, 0.0, -1.2, 0.0, 0.36}, {dAngle, dAngle, TwoPi - dAngle, TwoPi - dAngle}, 1e-7);
    ExpectCases({{{1.0, 0.0, 0.0, -1.0, 0.0, 0.25}, 0, {}}}); // (cos(t) - 1/2)^2
}

// (cos(t) - 1/2)(cos(t) - (1 + 2v^2)) almost has a tangent solution at 0. The quartic has a pair of roots u = +-i v,
// which counts as real up to 1e-6.
TEST(SolveQuadTrig, NearlyRealRootsOfTheQuarticCount)
{
    const auto Missed = [](double v)
    {
        const double dBeyond = 2.0 * v * v;
        return TTrigEquation{1.0, 0.0, 0.0, -(1.5 + dBeyond), 0.0, 0.5 * (1.0 + dBeyond)};
    };
    for (double v : {1e-8, 5e-7, 9.9e-7})
    {
        ExpectNear(Missed(v), {0.0, Pi / 3.0, 5.0 * Pi / 3.0}, 1e-13);
    }
    for (double v : {1.01e-6, 2e-6, 1e-3})
    {
        ExpectNear(Missed(v), {Pi / 3.0, 5.0 * Pi / 3.0}, 1e-5);
    }
}

// Here the balancing of the companion matrix meets an infinite norm. The solver promises no result, but it must end.
TEST(SolveQuadTrig, TermsOfIncommensurableSizeEnd)
{
    const TAngles Angles = SolveQuadratic({1.0, 1e300, 0.0, 1.0000000000000002, 0.0, 0.0});
    EXPECT_TRUE(Angles.Room.IsIntact());
    EXPECT_LE(Angles.iResult, 4);
}

// --- sorting and merging

// sin(t) (sin(t) + c cos(t)) with a small c has an angle |c| from both 0 and pi, above for c < 0, below for c > 0.
TEST(SolveQuadTrig, AnglesCloserThanTheToleranceAreMergedIntoTheSmaller)
{
    const auto Near = [](double a_dC) { return TTrigEquation{0.0, 1.0, a_dC, 0.0, 0.0, 0.0}; };
    const double dAbove = Atan2(9e-13, 1.0);
    ASSERT_LT(dAbove, Tolerance);
    ExpectCases({{Near(-9e-13), 2, {0.0, Pi}}, // 9e-13 and pi + 9e-13 are dropped
                 {Near(-1.1e-12), 4, {0.0, Atan2(1.1e-12, 1.0), Pi, Atan2(1.1e-12, 1.0) + Pi}}});
    // Below the tolerance pi is dropped. Angles near 2 pi and near 0 are not compared with each other.
    const double dBelow = Atan2(-9e-13, 1.0) + TwoPi;
    ExpectCases({{Near(9e-13), 3, {0.0, dBelow - Pi, dBelow}}});
    const double dFarBelow = Atan2(-1.1e-12, 1.0) + TwoPi;
    ExpectCases({{Near(1.1e-12), 4, {0.0, dFarBelow - Pi, Pi, dFarBelow}}});
}

// u (u^3 - 13 U^2 u - 12 U^3): besides 0 the roots 4U, -U and -3U, whose angles are pi - 1/(2U), pi + 2/U and
// pi + 2/(3U). For 1/U = 7e-13 neighbours are closer than the tolerance, the first and the last are not: the distance
// counts from the first of a group.
TEST(SolveQuadTrig, AChainOfNeighboursIsCutWhereItLeavesItsFirst)
{
    const double dStep = 7e-13;
    const double U = 1.0 / dStep;
    ExpectNear({-1.0, 6.5 * U * U, 6.0 * U * U * U, 1.0, 6.0 * U * U * U, 0.0},
               {0.0, Pi - 0.5 * dStep, Pi + 2.0 * dStep}, 1e-14);
}

// A distance of exactly 1e-12 keeps two angles apart. Near pi the doubles are too far apart to show it.
TEST(SolveQuadTrig, TheToleranceItselfIsADistance)
{
    for (double dC : {Tolerance, BelowTolerance})
    {
        const double dAngle = Atan2(dC, 1.0);
        const TAngles Angles = SolveQuadratic({0.0, 1.0, -dC, 0.0, 0.0, 0.0});
        const std::vector<double> vdFound = Angles.Found();
        EXPECT_EQ(dAngle >= Tolerance, std::find(vdFound.begin(), vdFound.end(), dAngle) != vdFound.end());
        EXPECT_EQ(Pi - (dAngle + Pi) <= -Tolerance,
                  std::find(vdFound.begin(), vdFound.end(), dAngle + Pi) != vdFound.end());
    }
}

// --- residuals and counts

enum class TKind
{
    Tangent,      // no linear terms
    Product,      // nor one of the squares
    Linear,       // squares that are a constant
    QuarticAndPi, // d = a + f
    Quartic
};

double SmallWhole(std::mt19937_64& a_Random)
{
    return std::uniform_int_distribution<int>(-4, 4)(a_Random);
}

double Fraction(std::mt19937_64& a_Random)
{
    return std::uniform_real_distribution<double>(-1.0, 1.0)(a_Random);
}

TTrigEquation RandomQuadratic(TKind a_Kind, std::mt19937_64& a_Random, double (*a_Next)(std::mt19937_64&) = Fraction)
{
    TTrigEquation Equation{a_Next(a_Random), a_Next(a_Random), a_Next(a_Random),
                           a_Next(a_Random), a_Next(a_Random), a_Next(a_Random)};
    switch (a_Kind)
    {
    case TKind::Product:
        Equation.dF = -Equation.dA;
        [[fallthrough]];
    case TKind::Tangent:
        Equation.dD = Equation.dE = 0.0;
        break;
    case TKind::Linear:
        Equation.dB = Equation.dA;
        Equation.dC = 0.0;
        break;
    case TKind::QuarticAndPi:
        Equation.dD = Equation.dA + Equation.dF;
        break;
    case TKind::Quartic:
        break;
    }
    return Equation;
}

const TKind AllKinds[] = {TKind::Tangent, TKind::Product, TKind::Linear, TKind::QuarticAndPi, TKind::Quartic};

// Quadratics and linear equations: 16 units of the coefficients' sum of magnitudes, as in the linear solver. Quartic:
// eigenvalues are those of a companion matrix that is off by some units of its norm, which is up to the norm of the
// coefficients in leading coefficients; 64 units of that, times the leading coefficient again, for a matrix of four
// rows. Observed: 3.5 and 7 units.
TEST(SolveQuadTrig, EveryAngleSolvesItsEquation)
{
    std::mt19937_64 Random(20261121);
    int iAngles = 0;
    for (int i = 0; i < CasesHere(50000); ++i)
    {
        const TKind Kind = AllKinds[i % 5];
        const TTrigEquation Equation = RandomQuadratic(Kind, Random);
        const long double dNorm = Equation.Norm();
        long double dBound = 16.0L * Epsilon * dNorm;
        if (Kind == TKind::Quartic || Kind == TKind::QuarticAndPi)
        {
            const long double dFourth = std::fabs(Equation.dA + Equation.dF - Equation.dD);
            const long double dThird = 2.0L * std::fabs(Equation.dE - Equation.dC);
            dBound = 64.0L * Epsilon * dNorm * dNorm / (Kind == TKind::Quartic ? dFourth : dThird);
        }
        for (double dAngle : SolveQuadratic(Equation).Found())
        {
            ++iAngles;
            ASSERT_TRUE(IsAngle(dAngle)) << HexText(dAngle);
            ASSERT_LE(std::fabs(Equation.At(dAngle)), dBound) << Text(Equation);
        }
    }
    EXPECT_GT(iAngles, CasesHere(75000));
}

// The scan leaves out equations with solutions near a tangent, whose number of angles depends on rounding. In all
// others every solution is simple, and the solver must find exactly these.
TEST(SolveQuadTrigSlow, FindsAsManyAnglesAsTheFunctionChangesSign)
{
    std::mt19937_64 Random(11);
    int viCounts[5] = {};
    const int iEquations = CasesHere(1500);
    for (int i = 0; i < iEquations; ++i)
    {
        const TTrigEquation Equation = RandomQuadratic(AllKinds[i % 5], Random);
        const int iExpected = CountSolutions(Equation);
        if (iExpected < 0)
        {
            continue;
        }
        ASSERT_LE(iExpected, 4);
        ++viCounts[iExpected];
        const int iResult = SolveQuadratic(Equation).iResult;
        ASSERT_EQ(iExpected, iResult > 0 ? iResult : 0) << Text(Equation);
    }
    EXPECT_GT(viCounts[0], CasesHere(100));
    EXPECT_GT(viCounts[2], CasesHere(400));
    EXPECT_GT(viCounts[4], CasesHere(200));
    EXPECT_GT(viCounts[0] + viCounts[2] + viCounts[4], iEquations * 9 / 10); // the scan could tell nearly always
}

// a cos^2 + a sin^2 - a is 0, and d cos + e sin is left. Beside the rounding errors of the three terms it has no sign.
TEST(SolveQuadTrig, TheScanDoesNotCountSignsThatRoundingMakes)
{
    const TTrigEquation Equation = {150.6579716657107,      150.6579716657107,       0,
                                    -2.230870066657894e-15, -8.5412631362907187e-16, -150.6579716657107};
    const int iCounted = CountSolutions(Equation);
    EXPECT_TRUE(iCounted == -1 || iCounted == 2) << iCounted; // the signs are right where the precision is 113 bits
    EXPECT_EQ(2, SolveQuadratic(Equation).iResult);
}

TEST(SolveQuadTrig, AnglesAscendAndAreApart)
{
    std::mt19937_64 Random(3);
    for (int i = 0; i < CasesHere(50000); ++i)
    {
        const TTrigEquation Equation = RandomQuadratic(AllKinds[i % 5], Random, i % 2 == 0 ? SmallWhole : Fraction);
        const TValues vdFound = SolveQuadratic(Equation).Found();
        for (std::size_t j = 1; j < vdFound.size(); ++j)
        {
            ASSERT_GE(vdFound[j] - vdFound[j - 1], Tolerance) << Text(Equation);
        }
    }
}

// --- whatever the arguments

// What went wrong with a call; empty if nothing did.
std::string Fault(const TAngles& a_Angles)
{
    if (a_Angles.iResult < nuv::RET_INDETERMINATE || a_Angles.iResult > 4)
    {
        return "result";
    }
    if (!a_Angles.Room.IsIntact())
    {
        return "guards";
    }
    const TValues vdFound = a_Angles.Found();
    if (!std::all_of(vdFound.begin(), vdFound.end(), IsAngle))
    {
        return "angle out of range";
    }
    const bool bNumbers = std::none_of(vdFound.begin(), vdFound.end(), [](double t) { return std::isnan(t); });
    for (std::size_t i = 1; bNumbers && i < vdFound.size(); ++i)
    {
        if (!(vdFound[i] - vdFound[i - 1] >= Tolerance))
        {
            return "order";
        }
    }
    return a_Angles.iResult <= 0 && !a_Angles.Room.IsUntouchedFrom(0) ? "written without a solution" : "";
}

TEST(SolveQuadTrigSlow, SpecialArgumentsGiveNoMoreThanFourAnglesAndNoReport)
{
    const TValues vdSpecial =
        Watched ? TValues{0.0, -0.0, 1.0, -Inf, NaN} : TValues{0.0, -0.0, 1.0, -1.0, Inf, -Inf, NaN, 1e308, Subnormal};
    ExpectQuietCheck(
        [&]
        {
            ForAllCombinations<6>(vdSpecial,
                                  [](const std::array<double, 6>& a_vdArguments)
                                  {
                                      TTrigEquation Equation;
                                      std::memcpy(&Equation, a_vdArguments.data(), sizeof Equation);
                                      const std::string szFault = Fault(SolveQuadratic(Equation));
                                      if (!szFault.empty())
                                      {
                                          std::fprintf(stderr, "%s: %s\n", szFault.c_str(), Text(Equation).c_str());
                                      }
                                  });
        });
}

// Coefficients of any exponent: terms vanish beside others, overflow and underflow in every combination.
TEST(SolveQuadTrigSlow, ArgumentsOfEverySizeGiveNoMoreThanFourAnglesAndNoReport)
{
    ExpectQuietCheck(
        []
        {
            std::mt19937_64 Random(5);
            std::uniform_int_distribution<int> Exponent(-1080, 1023);
            for (int i = 0; i < CasesHere(100000); ++i)
            {
                TTrigEquation Equation = RandomQuadratic(AllKinds[i % 5], Random);
                double vdScaled[6];
                std::memcpy(vdScaled, &Equation, sizeof Equation);
                for (double& dCoefficient : vdScaled)
                {
                    dCoefficient = std::ldexp(dCoefficient, Exponent(Random));
                }
                std::memcpy(&Equation, vdScaled, sizeof Equation);
                const std::string szFault = Fault(SolveQuadratic(Equation));
                if (!szFault.empty())
                {
                    std::fprintf(stderr, "%s: %s\n", szFault.c_str(), Text(Equation).c_str());
                }
            }
        });
}

} // namespace
