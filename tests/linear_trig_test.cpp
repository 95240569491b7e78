// linear_trig_test.cpp: angles that solve a cos(t) + b sin(t) + c = 0.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// A test expects bits if no function of the platform takes part, or if it calls the same function with the same
// argument as the solver.

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

TAngles SolveLinear(double a_dA, double a_dB, double a_dC)
{
    return Solve(2, [=](double* a_vdAngles) { return nuv::SolveLinTrig(a_dA, a_dB, a_dC, a_vdAngles); });
}

double Asin(double a_dValue)
{
    return std::asin(Opaque(a_dValue));
}

double Acos(double a_dValue)
{
    return std::acos(Opaque(a_dValue));
}

// Twice the arc tangent, in [0, 2 pi].
double HalfTangentAngle(double a_dTangent)
{
    const double dAngle = 2.0 * std::atan(Opaque(a_dTangent));
    return dAngle < 0.0 ? dAngle + TwoPi : dAngle;
}

struct TLinearCase
{
    double dA;
    double dB;
    double dC;
    int iResult;
    TValues vdAngles;
};

void ExpectCases(const std::vector<TLinearCase>& a_Cases)
{
    for (const TLinearCase& Case : a_Cases)
    {
        SCOPED_TRACE(::testing::Message() << Case.dA << " cos t + " << Case.dB << " sin t + " << Case.dC);
        ExpectAngles(Case.iResult, Case.vdAngles, SolveLinear(Case.dA, Case.dB, Case.dC), true);
    }
}

// --- neither cosine nor sine

TEST(SolveLinTrig, WithoutCosineAndSineEveryAngleSolvesOrNone)
{
    for (double dA : {0.0, -0.0})
    {
        for (double dB : {0.0, -0.0})
        {
            ExpectCases({{dA, dB, 0.0, nuv::RET_INDETERMINATE, {}},
                         {dA, dB, -0.0, nuv::RET_INDETERMINATE, {}},
                         {dA, dB, 1.0, nuv::RET_IMPOSSIBLE, {}},
                         {dA, dB, Subnormal, nuv::RET_IMPOSSIBLE, {}},
                         {dA, dB, -Inf, nuv::RET_IMPOSSIBLE, {}},
                         {dA, dB, NaN, nuv::RET_IMPOSSIBLE, {}}});
        }
    }
}

// --- the sine alone

TEST(SolveLinTrig, SineAloneGivesTheAngleAndItsSupplement)
{
    ExpectCases({{0.0, 2.0, -1.0, 2, {Asin(0.5), Pi - Asin(0.5)}},
                 {-0.0, 2.0, -1.0, 2, {Asin(0.5), Pi - Asin(0.5)}},
                 {0.0, -4.0, 1.0, 2, {Asin(0.25), Pi - Asin(0.25)}},
                 {0.0, 3.0, -1.0, 2, {Asin(1.0 / 3.0), Pi - Asin(1.0 / 3.0)}},
                 {0.0, 1.0, -BelowOne, 2, {Asin(BelowOne), Pi - Asin(BelowOne)}},
                 {0.0, 1.0, -Subnormal, 2, {Subnormal, Pi}}});
}

TEST(SolveLinTrig, NegativeSineGivesTheSupplementAndTheAngleOneTurnOn)
{
    ExpectCases({{0.0, 2.0, 1.0, 2, {Pi - Asin(-0.5), Asin(-0.5) + TwoPi}},
                 {0.0, -2.0, -1.0, 2, {Pi - Asin(-0.5), Asin(-0.5) + TwoPi}},
                 {0.0, 1.0, BelowOne, 2, {Pi - Asin(-BelowOne), Asin(-BelowOne) + TwoPi}},
                 {0.0, 1.0, Subnormal, 2, {Pi, TwoPi}}});
}

TEST(SolveLinTrig, SineOfOneGivesTheSameAngleTwice)
{
    ExpectCases({{0.0, 1.0, -1.0, 2, {Asin(1.0), Pi - Asin(1.0)}},
                 {0.0, -3.0, 3.0, 2, {Asin(1.0), Pi - Asin(1.0)}},
                 {0.0, 1.0, 1.0, 2, {Pi - Asin(-1.0), Asin(-1.0) + TwoPi}}});
    const TValues vdTop = SolveLinear(0.0, 1.0, -1.0).Room.Values();
    EXPECT_DOUBLE_EQ(1.5707963267948966, vdTop[0]);
    EXPECT_DOUBLE_EQ(1.5707963267948966, vdTop[1]);
    const TValues vdBottom = SolveLinear(0.0, 1.0, 1.0).Room.Values();
    EXPECT_DOUBLE_EQ(4.71238898038469, vdBottom[0]);
    EXPECT_DOUBLE_EQ(4.71238898038469, vdBottom[1]);
}

TEST(SolveLinTrig, SineBeyondOneIsImpossible)
{
    ExpectCases({{0.0, 1.0, -AboveOne, nuv::RET_IMPOSSIBLE, {}},
                 {0.0, 1.0, AboveOne, nuv::RET_IMPOSSIBLE, {}},
                 {0.0, -2.0, 5.0, nuv::RET_IMPOSSIBLE, {}},
                 {0.0, Subnormal, 1.0, nuv::RET_IMPOSSIBLE, {}},
                 {0.0, 1.0, Inf, nuv::RET_IMPOSSIBLE, {}},
                 {0.0, 1.0, -Inf, nuv::RET_IMPOSSIBLE, {}}});
}

// The sine is -(c/b): of equal signs it is -0.0, which counts as not negative and is its own angle.
TEST(SolveLinTrig, SineOfZeroGivesMinusZeroForEqualSigns)
{
    ExpectCases({{0.0, 1.0, 0.0, 2, {-0.0, Pi}},
                 {0.0, -1.0, -0.0, 2, {-0.0, Pi}},
                 {0.0, -1.0, 0.0, 2, {0.0, Pi}},
                 {0.0, 1.0, -0.0, 2, {0.0, Pi}},
                 {0.0, Inf, 1.0, 2, {-0.0, Pi}},
                 {0.0, -Inf, 1.0, 2, {0.0, Pi}}});
}

TEST(SolveLinTrig, SineThatIsNoNumberGivesTwoAnglesThatAreNone)
{
    ExpectCases({{0.0, NaN, 0.0, 2, {NaN, NaN}}, {0.0, 1.0, NaN, 2, {NaN, NaN}}, {0.0, Inf, Inf, 2, {NaN, NaN}}});
}

// --- the cosine alone

TEST(SolveLinTrig, CosineAloneGivesTheAngleAndItsOpposite)
{
    ExpectCases({{2.0, 0.0, -1.0, 2, {Acos(0.5), TwoPi - Acos(0.5)}},
                 {2.0, -0.0, -1.0, 2, {Acos(0.5), TwoPi - Acos(0.5)}},
                 {2.0, 0.0, 1.0, 2, {Acos(-0.5), TwoPi - Acos(-0.5)}},
                 {-4.0, 0.0, 1.0, 2, {Acos(0.25), TwoPi - Acos(0.25)}},
                 {1.0, 0.0, 0.0, 2, {Acos(0.0), TwoPi - Acos(0.0)}},
                 {Inf, 0.0, 1.0, 2, {Acos(0.0), TwoPi - Acos(0.0)}},
                 {1.0, 0.0, -BelowOne, 2, {Acos(BelowOne), TwoPi - Acos(BelowOne)}},
                 {1.0, 0.0, BelowOne, 2, {Acos(-BelowOne), TwoPi - Acos(-BelowOne)}}});
}

TEST(SolveLinTrig, CosineOfOneGivesOneAngle)
{
    ExpectCases({{1.0, 0.0, -1.0, 1, {0.0}},
                 {-7.0, 0.0, 7.0, 1, {0.0}},
                 {1.0, 0.0, 1.0, 1, {Pi}},
                 {Subnormal, 0.0, Subnormal, 1, {Pi}}});
}

TEST(SolveLinTrig, CosineBeyondOneIsImpossible)
{
    ExpectCases({{1.0, 0.0, 2.0, nuv::RET_IMPOSSIBLE, {}},
                 {1.0, 0.0, -2.0, nuv::RET_IMPOSSIBLE, {}},
                 {1.0, 0.0, AboveOne, nuv::RET_IMPOSSIBLE, {}},
                 {1.0, 0.0, -AboveOne, nuv::RET_IMPOSSIBLE, {}},
                 {1.0, 0.0, Inf, nuv::RET_IMPOSSIBLE, {}}});
}

TEST(SolveLinTrig, CosineThatIsNoNumberGivesTwoAnglesThatAreNone)
{
    ExpectCases({{NaN, 0.0, 1.0, 2, {NaN, NaN}}, {1.0, 0.0, NaN, 2, {NaN, NaN}}, {Inf, 0.0, -Inf, 2, {NaN, NaN}}});
}

// --- no constant

TEST(SolveLinTrig, WithoutConstantAnAngleThatIsNotNegativeComesBeforeItsOpposite)
{
    const double dQuarter = std::atan2(Opaque(1.0), Opaque(1.0));
    ExpectCases({{-1.0, 1.0, 0.0, 2, {dQuarter, dQuarter + Pi}},
                 {-1.0, 1.0, -0.0, 2, {dQuarter, dQuarter + Pi}},
                 {-Subnormal, 1.0, 0.0, 2, {Subnormal, Pi}},
                 {-Subnormal, -1.0, 0.0, 2, {Pi, TwoPi}}});
    EXPECT_DOUBLE_EQ(0.7853981633974483, SolveLinear(-1.0, 1.0, 0.0).Room[0]);
    EXPECT_DOUBLE_EQ(3.9269908169872414, SolveLinear(-1.0, 1.0, 0.0).Room[1]);
}

TEST(SolveLinTrig, WithoutConstantANegativeAngleGivesTheGreaterAngleFirst)
{
    const double dQuarter = std::atan2(Opaque(-1.0), Opaque(1.0));
    ExpectCases({{1.0, 1.0, 0.0, 2, {dQuarter + TwoPi, (dQuarter + TwoPi) - Pi}},
                 {Subnormal, 1.0, 0.0, 2, {TwoPi, Pi}},
                 {Subnormal, -1.0, 0.0, 2, {Pi, 0.0}}});
    EXPECT_DOUBLE_EQ(5.497787143782138, SolveLinear(1.0, 1.0, 0.0).Room[0]);
    EXPECT_DOUBLE_EQ(2.356194490192345, SolveLinear(1.0, 1.0, 0.0).Room[1]);
}

// An angle below the least double is -0.0, which counts as not negative.
TEST(SolveLinTrig, WithoutConstantAnAngleThatVanishesIsMinusZero)
{
    ExpectCases({{1e-300, 1e300, 0.0, 2, {-0.0, Pi}}, {Subnormal, Inf, 0.0, 2, {-0.0, Pi}}});
}

// The second angle is computed from the first one, which was rounded already. So it is often not the double nearest to
// the angle plus pi.
TEST(SolveLinTrig, WithoutConstantTheSecondAngleIsFormedFromTheFirst)
{
    int iDiffering = 0;
    for (int i = 1; i <= 1000; ++i)
    {
        const double dB = i % 2 == 0 ? 700.0 : -700.0;
        const double dAngle = std::atan2(Opaque(-i), Opaque(dB));
        ExpectCases({{static_cast<double>(i), dB, 0.0, 2, {dAngle + TwoPi, (dAngle + TwoPi) - Pi}}});
        iDiffering += SameBits((dAngle + TwoPi) - Pi, dAngle + Pi) ? 0 : 1;
    }
    EXPECT_GT(iDiffering, 100);
}

// --- all three

TEST(SolveLinTrig, TwoHalfTangentsGiveAscendingAngles)
{
    // -2u^2 + 2u = 0: u = 1 and 0 * -2 / 4 = -0.0
    // -2u^2 - 2u = 0: u = -1 and 0
    // u^2 + 4u + 3 = 0: u = -(2 + 4)/2 = -3 and 3 * -2 / 6 = -1
    // u^2 - 4u + 3 = 0: u = 3 and 1
    // -3u^2 + 2u + 1 = 0: u = -(4 + 2)/-6 = 1 and 1 * -2 / 6
    ExpectCases({{1.0, 1.0, -1.0, 2, {-0.0, HalfTangentAngle(1.0)}},
                 {1.0, -1.0, -1.0, 2, {0.0, HalfTangentAngle(-1.0)}},
                 {1.0, 2.0, 2.0, 2, {HalfTangentAngle(-3.0), HalfTangentAngle(-1.0)}},
                 {1.0, -2.0, 2.0, 2, {HalfTangentAngle(1.0), HalfTangentAngle(3.0)}},
                 {2.0, 1.0, -1.0, 2, {HalfTangentAngle(1.0), HalfTangentAngle(-1.0 / 3.0)}}});
}

TEST(SolveLinTrig, ATangentSolutionIsFoundOnce)
{
    ExpectCases({{3.0, 4.0, 5.0, 1, {HalfTangentAngle(-2.0)}},     // 2u^2 + 8u + 8 = 2(u + 2)^2
                 {3.0, 4.0, -5.0, 1, {HalfTangentAngle(0.5)}},     // -8u^2 + 8u - 2 = -2(2u - 1)^2
                 {-3.0, 4.0, 5.0, 1, {HalfTangentAngle(-0.5)}},    // 8u^2 + 8u + 2
                 {5.0, -12.0, 13.0, 1, {HalfTangentAngle(1.5)}}}); // 8u^2 - 24u + 18
}

TEST(SolveLinTrig, NoHalfTangentIsToldByTheCountZero)
{
    ExpectCases({{1.0, 1.0, 5.0, 0, {}},
                 {1.0, 1.0, -5.0, 0, {}},
                 {3.0, 4.0, std::nextafter(5.0, 6.0), 0, {}},
                 {3.0, -4.0, 6.0, 0, {}}});
}

// The half tangent is infinite at pi. For a = c the quadratic is the linear equation of -a/b, and pi is a solution
// besides.
TEST(SolveLinTrig, EqualCosineAndConstantGiveThePiThatTheHalfTangentLoses)
{
    ExpectCases({{1.0, 1.0, 1.0, 2, {Pi, HalfTangentAngle(-1.0)}},
                 {2.0, 1.0, 2.0, 2, {Pi, HalfTangentAngle(-2.0)}},
                 {2.0, -1.0, 2.0, 2, {HalfTangentAngle(2.0), Pi}},
                 {-1.0, 1.0, -1.0, 2, {HalfTangentAngle(1.0), Pi}}});
    const TValues vdAngles = SolveLinear(1.0, 1.0, 1.0).Room.Values();
    EXPECT_DOUBLE_EQ(4.71238898038469, vdAngles[1]);
    // The least sine: -(2 / 2 Subnormal) overflows, and the second angle is pi as well, from below or from above.
    for (double dB : {Subnormal, -Subnormal})
    {
        const TAngles Angles = SolveLinear(1.0, dB, 1.0);
        EXPECT_EQ(2, Angles.iResult);
        EXPECT_DOUBLE_EQ(Pi, Angles.Room[0]);
        EXPECT_DOUBLE_EQ(Pi, Angles.Room[1]);
    }
}

// With infinite a = c there are pi and two roots that are NaN. The room holds only one of these.
TEST(SolveLinTrig, InfiniteEqualCosineAndConstantStopAtTwoAngles)
{
    for (double dB : {1.0, -1.0, 1e308, Subnormal})
    {
        ExpectCases({{Inf, dB, Inf, 2, {Pi, NaN}}, {-Inf, dB, -Inf, 2, {Pi, NaN}}});
    }
}

// The solver does not form the sum that cancels. With 1e8 times as much sine, the textbook formula would lose half the
// digits of the small root -(a + c)/(2b); with 1e16 times it would lose all of them.
TEST(SolveLinTrig, TheSmallRootKeepsItsDigits)
{
    for (double dRatio : {1e4, 1e8, 1e16, 1e100})
    {
        SCOPED_TRACE(dRatio);
        // (c - a)u^2 + 2bu + (a + c) = 2u^2 +- 2 dRatio u + 4: about -+2/dRatio and -+dRatio.
        const TValues vdMinus = SolveLinear(1.0, dRatio, 3.0).Room.Values();
        EXPECT_NEAR(-4.0 / dRatio, vdMinus[1] - TwoPi, 2.0 * Epsilon * TwoPi + 100.0 / (dRatio * dRatio * dRatio));
        const TValues vdPlus = SolveLinear(1.0, -dRatio, 3.0).Room.Values();
        EXPECT_NEAR(1.0, vdPlus[0] / (4.0 / dRatio), 4.0 * Epsilon + 10.0 / (dRatio * dRatio));
    }
}

// --- residuals and counts

// Coefficients of either sign between 2^-60 and 2^60, each of its own size.
TTrigEquation RandomLinear(std::mt19937_64& a_Random)
{
    std::uniform_real_distribution<double> Mantissa(-1.0, 1.0);
    std::uniform_int_distribution<int> Exponent(-60, 60);
    const auto Next = [&] { return std::ldexp(Mantissa(a_Random), Exponent(a_Random)); };
    return {0.0, 0.0, 0.0, Next(), Next(), Next()};
}

// The stable quadratic formula gives the exact roots of a quadratic whose coefficients are off by about 4 units each
// (discriminant, root, sum, quotient). The coefficients are themselves rounded sums, and the angle adds a unit of 2 pi.
// The bound is 16 units of the sum of the magnitudes of the coefficients. Observed: 5.2.
TEST(SolveLinTrig, EveryAngleSolvesItsEquation)
{
    std::mt19937_64 Random(20261121);
    int iAngles = 0;
    for (int i = 0; i < CasesHere(100000); ++i)
    {
        TTrigEquation Equation = RandomLinear(Random);
        double* const vdMissing[] = {nullptr, nullptr, nullptr, nullptr, &Equation.dD, &Equation.dE, &Equation.dF};
        if (double* const pMissing = vdMissing[i % 7])
        {
            *pMissing = 0.0;
        }
        if (i % 7 == 3)
        {
            Equation.dF = Equation.dD;
        }
        const TAngles Angles = SolveLinear(Equation.dD, Equation.dE, Equation.dF);
        for (double dAngle : Angles.Found())
        {
            ++iAngles;
            ASSERT_TRUE(IsAngle(dAngle)) << HexText(dAngle);
            ASSERT_LE(std::fabs(Equation.At(dAngle)), 16.0L * Epsilon * Equation.Norm())
                << HexText(Equation.dD) << ", " << HexText(Equation.dE) << ", " << HexText(Equation.dF);
        }
    }
    EXPECT_GT(iAngles, CasesHere(100000));
}

TEST(SolveLinTrigSlow, FindsAsManyAnglesAsTheFunctionChangesSign)
{
    std::mt19937_64 Random(7);
    std::uniform_real_distribution<double> Coefficient(-1.0, 1.0);
    int viCounts[3] = {};
    for (int i = 0; i < CasesHere(600); ++i)
    {
        TTrigEquation Equation{0.0, 0.0, 0.0, Coefficient(Random), Coefficient(Random), Coefficient(Random)};
        double* const vdMissing[] = {nullptr, nullptr, &Equation.dD, &Equation.dE, &Equation.dF};
        if (double* const pMissing = vdMissing[i % 5])
        {
            *pMissing = 0.0;
        }
        const int iExpected = CountSolutions(Equation);
        if (iExpected < 0)
        {
            continue;
        }
        ASSERT_LE(iExpected, 2);
        ++viCounts[iExpected];
        const int iResult = SolveLinear(Equation.dD, Equation.dE, Equation.dF).iResult;
        ASSERT_EQ(iExpected, iResult > 0 ? iResult : 0) << "equation " << i;
    }
    EXPECT_GT(viCounts[0], CasesHere(50));
    EXPECT_GT(viCounts[2], CasesHere(300));
    EXPECT_GT(viCounts[0] + viCounts[2], CasesHere(590)); // the scan could tell nearly always
}

// There are exactly two solutions for c^2 < a^2 + b^2 and none for c^2 > a^2 + b^2. The cases are one step of c away
// from exact tangent solutions.
TEST(SolveLinTrig, ThePlaceOfTheTangentIsExactForPythagoreanCoefficients)
{
    const double vdTriples[][3] = {{3.0, 4.0, 5.0}, {5.0, 12.0, 13.0}, {8.0, 15.0, 17.0}, {20.0, 21.0, 29.0}};
    for (const auto& vdTriple : vdTriples)
    {
        for (double dSign : {1.0, -1.0})
        {
            const double dTangent = dSign * vdTriple[2];
            EXPECT_EQ(1, SolveLinear(vdTriple[0], vdTriple[1], dTangent).iResult) << dTangent;
            EXPECT_EQ(2, SolveLinear(vdTriple[0], vdTriple[1], dTangent * (1.0 - 1e-12)).iResult) << dTangent;
            EXPECT_EQ(0, SolveLinear(vdTriple[0], vdTriple[1], dTangent * (1.0 + 1e-12)).iResult) << dTangent;
        }
    }
}

// --- whatever the arguments

void Complain(const char* a_szWhat, const std::array<double, 3>& a_vdArguments)
{
    std::fprintf(stderr, "%s: %a, %a, %a\n", a_szWhat, a_vdArguments[0], a_vdArguments[1], a_vdArguments[2]);
}

TEST(SolveLinTrig, SpecialArgumentsGiveNoMoreThanTwoAnglesAndNoReport)
{
    const TValues vdSpecial = {0.0,   -0.0,   1.0,    -1.0,    Inf,       -Inf,      NaN,
                               1e308, -1e308, 1e-300, -1e-300, Subnormal, -Subnormal};
    ExpectQuietCheck(
        [&]
        {
            ForAllCombinations<3>(
                vdSpecial,
                [](const std::array<double, 3>& a_vdArguments)
                {
                    const TAngles Angles = SolveLinear(a_vdArguments[0], a_vdArguments[1], a_vdArguments[2]);
                    const TValues vdFound = Angles.Found();
                    if (Angles.iResult < nuv::RET_INDETERMINATE || Angles.iResult > 2 || !Angles.Room.IsIntact())
                    {
                        Complain("result or guards", a_vdArguments);
                    }
                    if (!std::all_of(vdFound.begin(), vdFound.end(), IsAngle))
                    {
                        Complain("angle out of range", a_vdArguments);
                    }
                    if (!Angles.Room.IsUntouchedFrom(vdFound.size()))
                    {
                        Complain("rest written", a_vdArguments);
                    }
                });
        });
}

} // namespace
