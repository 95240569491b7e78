// gauss_test.cpp: the dense elimination of the affine fit, its pivot search and its back substitution.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Matrices are stored column by column, as the routines take them.

#include "affine.h"
#include "support/expect.h"

namespace {

using namespace nuv_tests;

struct TMaximumCase
{
    std::vector<double> vdValues;
    int iPosition;
};

void ExpectMaxima(const std::vector<TMaximumCase>& a_Cases)
{
    for (const TMaximumCase& Case : a_Cases)
    {
        SCOPED_TRACE(::testing::PrintToString(Case.vdValues));
        EXPECT_EQ(Case.iPosition, nuv::MaxAbsIndex(static_cast<int>(Case.vdValues.size()), Case.vdValues.data(), 1));
    }
}

TEST(MaxAbsIndex, TakesTheFirstOfEqualMagnitudes)
{
    ExpectMaxima({{{-5.0, 5.0, 3.0}, 0}, {{1.0, -7.0, 7.0}, 1}, {{0.0, -0.0}, 0}, {{1.0, -Inf, Inf}, 1}});
}

TEST(MaxAbsIndex, ComparesMagnitudesWithoutTheirSigns)
{
    ExpectMaxima({{{2.0, -3.0, 1.0}, 1}, {{-1.0, 2.0, -4.0}, 2}, {{-0.0, Subnormal}, 1}, {{-9.0}, 0}});
}

TEST(MaxAbsIndex, HasNoToleranceBetweenNeighbouringDoubles)
{
    ExpectMaxima({{{BelowTolerance, Tolerance, AboveTolerance}, 2}, {{AboveTolerance, -Tolerance, BelowTolerance}, 0}});
}

TEST(MaxAbsIndex, KeepsANaNInFrontAndPassesOverOneElsewhere)
{
    ExpectMaxima({{{NaN, 5.0, Inf}, 0}, {{1.0, NaN, 3.0}, 2}, {{4.0, NaN, 3.0}, 0}});
}

TEST(MaxAbsIndex, OfNothingIsZeroAndReadsNothing)
{
    EXPECT_EQ(0, nuv::MaxAbsIndex(0, nullptr, 1));
    EXPECT_EQ(0, nuv::MaxAbsIndex(-1, nullptr, 1));
}

TEST(MaxAbsIndex, CountsPositionsInStridesAndSkipsWhatLiesBetween)
{
    const double vdValues[] = {1.0, 99.0, 99.0, -2.0, 99.0, 99.0, 1.5, 99.0};
    EXPECT_EQ(1, nuv::MaxAbsIndex(3, vdValues, 3));
}

// U x = b without padding. A failure writes into the second half of x.
struct TBackSubstitution
{
    TBackSubstitution(const std::vector<double>& a_vdU, const std::vector<double>& a_vdB)
        : vdX(2 * a_vdB.size(), Untouched),
          iResult(nuv::SolveUpperTri(static_cast<int>(a_vdB.size()), a_vdU.data(), static_cast<int>(a_vdB.size()),
                                     a_vdB.data(), 1, vdX.data(), 1))
    {}

    std::vector<double> vdX; // the last element lies beyond the room of 2n - 1
    int iResult;
};

void ExpectSubstitution(const std::vector<double>& a_vdU, const std::vector<double>& a_vdB,
                        std::vector<double> a_vdExpected, int a_iResult = 1)
{
    const TBackSubstitution Run(a_vdU, a_vdB);
    a_vdExpected.resize(2 * a_vdB.size(), Untouched);
    EXPECT_EQ(a_iResult, Run.iResult);
    EXPECT_TRUE(SameValues(a_vdExpected, Run.vdX));
}

TEST(SolveUpperTri, OfNoUnknownsSucceedsAndTouchesNothing)
{
    EXPECT_EQ(1, nuv::SolveUpperTri(0, nullptr, 1, nullptr, 1, nullptr, 1));
    EXPECT_EQ(1, nuv::SolveUpperTri(-1, nullptr, 1, nullptr, 1, nullptr, 1));
}

// 4z = 8; 2y + z = 4; x + 3y - z = 5, so z = 2, y = 1, x = 4.
TEST(SolveUpperTri, ReadsTheUpperTriangleOnlyAndStepsByItsStrides)
{
    const double vdU[] = {1.0, NaN, NaN, NaN, 3.0, 2.0, NaN, NaN, -1.0, 1.0, 4.0, NaN}; // leading dimension 4
    const double vdB[] = {5.0, NaN, 4.0, NaN, 8.0};                                     // stride 2
    std::vector<double> vdX(9, Untouched);                                              // stride 3
    EXPECT_EQ(1, nuv::SolveUpperTri(3, vdU, 4, vdB, 2, vdX.data(), 3));
    EXPECT_TRUE(SameValues({4.0, Untouched, Untouched, 1.0, Untouched, Untouched, 2.0, Untouched, Untouched}, vdX));
}

// The neighbours of 1 do not count as 1: the diagonal divides, and the quotient of equal values is 1.
TEST(SolveUpperTri, DividesByADiagonalBesideOne)
{
    for (double dDiagonal : {1.0 + 0x1p-52, 1.0 - 0x1p-53})
    {
        ExpectSubstitution({dDiagonal}, {dDiagonal}, {1.0});
    }
}

TEST(SolveUpperTri, SetsTheUnknownOfAZeroDiagonalToZeroWithinTheTolerance)
{
    for (double dRest : {0.0, -0.0, Subnormal, -Subnormal, BelowTolerance, -BelowTolerance, Tolerance, -Tolerance})
    {
        SCOPED_TRACE(HexText(dRest));
        for (double dDiagonal : {0.0, -0.0})
        {
            ExpectSubstitution({dDiagonal}, {dRest}, {0.0});                          // last row
            ExpectSubstitution({dDiagonal, 0.0, 3.0, 1.0}, {dRest, 0.0}, {0.0, 0.0}); // any other row
        }
    }
}

TEST(SolveUpperTri, FailsAtAZeroDiagonalBeyondTheTolerance)
{
    for (double dRest : {AboveTolerance, -AboveTolerance, 1.0, Inf, -Inf, NaN})
    {
        SCOPED_TRACE(HexText(dRest));
        ExpectSubstitution({0.0}, {dRest}, {Inf}, 0);
        ExpectSubstitution({0.0, 0.0, 3.0, 1.0}, {dRest, 0.0}, {Untouched, Inf, Inf}, 0);
    }
}

// The middle row has a zero diagonal: 0 y + z = 3 agrees with z = 3, so y = 0 and x = 6 - (0 + 3).
TEST(SolveUpperTri, GoesOnAfterAConsistentRowWithAZeroDiagonal)
{
    ExpectSubstitution({1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 1.0, 1.0}, {6.0, 3.0, 3.0}, {3.0, 0.0, 3.0});
}

TEST(SolveUpperTri, FillsInfinityForwardFromTheLastUnknownOnFailure)
{
    const std::vector<double> vdZeroLast = {1.0, 0.0, 0.0, 1.0, 1.0, 0.0, 1.0, 1.0, 0.0};
    const std::vector<double> vdZeroMiddle = {1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 1.0, 1.0};
    const std::vector<double> vdZeroFirst = {0.0, 0.0, 0.0, 1.0, 1.0, 0.0, 1.0, 1.0, 1.0};
    ExpectSubstitution(vdZeroLast, {1.0, 2.0, 3.0}, {Untouched, Untouched, Inf, Inf, Inf}, 0);
    ExpectSubstitution(vdZeroMiddle, {1.0, 2.0, 3.0}, {Untouched, Untouched, Inf, Inf, Inf}, 0);
    ExpectSubstitution(vdZeroFirst, {1.0, 5.0, 3.0}, {Untouched, 2.0, Inf, Inf, Inf}, 0); // y = 5 - 3 stays
}

TEST(SolveUpperTri, FillsInfinityInStridesOnFailure)
{
    const double vdU[] = {1.0, 0.0, 0.0, 0.0};
    const double vdB[] = {1.0, 2.0};
    std::vector<double> vdX(7, Untouched);
    EXPECT_EQ(0, nuv::SolveUpperTri(2, vdU, 2, vdB, 1, vdX.data(), 2));
    EXPECT_TRUE(SameValues({Untouched, Untouched, Inf, Untouched, Inf, Untouched, Untouched}, vdX));
}

TEST(SolveUpperTri, DividesByEveryDiagonalThatIsNotZero)
{
    ExpectSubstitution({3.0}, {5.0}, {0x1.aaaaaaaaaaaabp+0}); // times the reciprocal: ...aap+0
    ExpectSubstitution({Subnormal}, {1.0}, {Inf});
    ExpectSubstitution({0x1p-60}, {1.0}, {0x1p60});
    ExpectSubstitution({-Inf}, {5.0}, {-0.0});
    ExpectSubstitution({NaN}, {5.0}, {NaN});
    ExpectSubstitution({3.0, 0.0, 0.0, 1.0}, {5.0, 0.0}, {0x1.aaaaaaaaaaaabp+0, 0.0});
}

// Doubles near 1e16 are 2 apart: 1 + 1e16 rounds to 1e16, which -1e16 cancels. In the other order the sum would be 1.
TEST(SolveUpperTri, SumsProductsFromTheLastUnknownBackwards)
{
    const std::vector<double> vdU = {1.0, 0.0, 0.0, 0.0, -1e16, 1.0, 0.0, 0.0, 1e16, 0.0, 1.0, 0.0, 1.0, 0.0, 0.0, 1.0};
    ExpectSubstitution(vdU, {0.0, 1.0, 1.0, 1.0}, {0.0, 1.0, 1.0, 1.0});
}

// 1 - (1e16 - 1e16) = 1, while (1 - 1e16) + 1e16 = 0.
TEST(SolveUpperTri, FormsTheSumBeforeItSubtractsIt)
{
    ExpectSubstitution({1.0, 0.0, 0.0, -1e16, 1.0, 0.0, 1e16, 0.0, 1.0}, {1.0, 1.0, 1.0}, {1.0, 1.0, 1.0});
}

// The sum 0 + (1)(-0.0) is +0.0, and -0.0 - 0.0 = -0.0; without the leading 0 it would be -0.0 + 0.0 = +0.0.
TEST(SolveUpperTri, StartsTheSumAtPositiveZero)
{
    ExpectSubstitution({1.0, 0.0, 1.0, 1.0}, {-0.0, -0.0}, {-0.0, -0.0});
}

struct TGaussRun
{
    TGaussRun(const std::vector<double>& a_vdA, const std::vector<double>& a_vdB, int a_iN)
        : vdA(a_vdA), vdB(a_vdB), vdX(a_vdB.size(), Untouched),
          iResult(nuv::SolveGauss(a_iN, static_cast<int>(a_vdB.size()) / a_iN, vdA.data(), a_iN, vdB.data(), a_iN,
                                  vdX.data(), a_iN))
    {}

    std::vector<double> vdA;
    std::vector<double> vdB;
    std::vector<double> vdX;
    int iResult;
};

void ExpectGauss(const std::vector<double>& a_vdA, const std::vector<double>& a_vdB, int a_iN,
                 const std::vector<double>& a_vdX)
{
    const TGaussRun Run(a_vdA, a_vdB, a_iN);
    EXPECT_EQ(1, Run.iResult);
    EXPECT_TRUE(SameValues(a_vdX, Run.vdX));
}

TEST(SolveGauss, OfNoUnknownsSucceedsAndTouchesNothing)
{
    EXPECT_EQ(1, nuv::SolveGauss(0, 1, nullptr, 1, nullptr, 1, nullptr, 1));
    EXPECT_EQ(1, nuv::SolveGauss(-1, 1, nullptr, 1, nullptr, 1, nullptr, 1));
}

TEST(SolveGauss, SwapsRowsWhereTheLeadingElementIsZero)
{
    const TGaussRun Run({0.0, 1.0, 1.0, 0.0}, {2.0, 3.0}, 2);
    EXPECT_EQ(1, Run.iResult);
    EXPECT_TRUE(SameValues({3.0, 2.0}, Run.vdX));
    EXPECT_TRUE(SameValues({1.0, 0.0, 0.0, 1.0}, Run.vdA));
    EXPECT_TRUE(SameValues({3.0, 2.0}, Run.vdB));
}

// 1/1e-14 rounds to 1e14. First right-hand side: y = (2 - 1)*1e14, x = 1 - y; second: y = (1 - 1)*1e14, x = 1.
TEST(SolveGauss, ReportsNoSingularityButReplacesAnExactlyZeroPivot)
{
    ExpectGauss({1.0, 1.0, 1.0, 1.0}, {1.0, 2.0, 1.0, 1.0}, 2, {1.0 - 1e14, 1e14, 1.0, 0.0});
}

TEST(SolveGauss, ReplacesAZeroPivotOfEitherSignByAPositiveOne)
{
    for (double dPivot : {0.0, -0.0})
    {
        ExpectGauss({dPivot}, {1.0}, 1, {1e14});
        ExpectGauss({dPivot}, {-1.0}, 1, {-1e14});
    }
}

TEST(SolveGauss, UsesATinyPivotAsItIs)
{
    ExpectGauss({0x1p-60}, {1.0}, 1, {0x1p60});
    ExpectGauss({-0x1p-60}, {3.0}, 1, {-0x3p60});
    ExpectGauss({Subnormal}, {1.0}, 1, {Inf}); // its reciprocal overflows
}

// Rows 4 4 8, then 0 4 0, are the pivots. [1 2 3; 4 4 8; 2 6 4] x = b with x = (1, 2, 3) and (-1, 0.5, 4). All steps
// are exact:
//   1 1 2 |  9  7.5      1 1 2 | 9 7.5      1 1 2 | 9 7.5
//   0 1 1 |  5  4.5  ->  0 4 0 | 8 2    ->  0 1 0 | 2 0.5
//   0 4 0 |  8  2        0 1 1 | 5 4.5      0 0 1 | 3 4
TEST(SolveGauss, LeavesTheUnitUpperFactorAndTheTransformedRightHandSidesAndNoPadding)
{
    constexpr double Pad = Untouched;
    std::vector<double> vdA = {1.0, 4.0, 2.0, Pad, 2.0, 4.0, 6.0, Pad, 3.0, 8.0, 4.0, Pad};
    std::vector<double> vdB = {14.0, 36.0, 26.0, Pad, Pad, 12.0, 30.0, 17.0, Pad, Pad};
    std::vector<double> vdX(12, Pad);
    EXPECT_EQ(1, nuv::SolveGauss(3, 2, vdA.data(), 4, vdB.data(), 5, vdX.data(), 6));
    EXPECT_TRUE(SameValues({1.0, 0.0, 0.0, Pad, 1.0, 1.0, 0.0, Pad, 2.0, 0.0, 1.0, Pad}, vdA));
    EXPECT_TRUE(SameValues({9.0, 2.0, 3.0, Pad, Pad, 7.5, 0.5, 4.0, Pad, Pad}, vdB));
    EXPECT_TRUE(SameValues({1.0, 2.0, 3.0, Pad, Pad, Pad, -1.0, 0.5, 4.0, Pad, Pad, Pad}, vdX));
}

// 5*(1/3) rounds to ...aap+0, 5/3 to ...abp+0.
TEST(SolveGauss, MultipliesThePivotRowByTheReciprocalOfThePivot)
{
    ExpectGauss({3.0}, {5.0}, 1, {0x1.aaaaaaaaaaaaap+0});
    const TGaussRun Run({3.0, 0.0, 5.0, 1.0}, {5.0, 0.0}, 2);
    EXPECT_TRUE(SameValues({1.0, 0.0, 0x1.aaaaaaaaaaaaap+0, 1.0}, Run.vdA));
    EXPECT_TRUE(SameValues({0x1.aaaaaaaaaaaaap+0, 0.0}, Run.vdB));
}

// An update of the second row by 0 * inf would make it NaN.
TEST(SolveGauss, SkipsRowsWhoseFactorIsZero)
{
    for (double dBelow : {0.0, -0.0})
    {
        const TGaussRun Run({1.0, dBelow, Inf, 1.0}, {Inf, 2.0}, 2);
        EXPECT_TRUE(SameValues({1.0, 0.0, Inf, 1.0}, Run.vdA)); // below the diagonal +0.0 stands
        EXPECT_TRUE(SameValues({Inf, 2.0}, Run.vdB));
    }
}

// With e = 2^-30, (1 + e)(-(1 - e)) = -1 + 2^-60 rounds to -1 and leaves the second pivot exactly 0, so y = 1e14 and
// x = -(1 + e)*1e14. A product that is not rounded leaves the pivot 2^-60 and y = 2^60.
TEST(SolveGauss, RoundsTheProductBeforeItIsAdded)
{
    const double dE = 0x1p-30;
    ExpectGauss({1.0, 1.0 - dE, 1.0 + dE, 1.0}, {0.0, 1.0}, 2, {-100000000093132.25, 1e14});
}

TEST(SolveGauss, CarriesNaNAndInfinityIntoTheSolutionAndStillSucceeds)
{
    ExpectGauss({NaN, 1.0, 1.0, 1.0}, {1.0, 2.0}, 2, {NaN, NaN}); // a NaN in front is taken as pivot
    ExpectGauss({1.0, 0.0, 0.0, 1.0}, {NaN, 2.0}, 2, {NaN, 2.0});
    ExpectGauss({1.0, 0.0, 0.0, 1.0}, {1.0, -Inf}, 2, {NaN, -Inf}); // 1 - 0*inf
    ExpectGauss({1.0, 0.0, 0.0, 1.0}, {Inf, 2.0}, 2, {Inf, 2.0});
    ExpectGauss({Inf}, {5.0}, 1, {0.0});
    ExpectGauss({Inf}, {Inf}, 1, {NaN});
    ExpectGauss({4.0}, {-0.0}, 1, {-0.0});
    ExpectGauss({2.0}, {2.0 * Subnormal}, 1, {Subnormal});
}

} // namespace
