// balancing_test.cpp: balancing a matrix and reducing it to upper Hessenberg form.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "support/matrices.h"

#include <random>

namespace {

using namespace nuv_tests;

using TStage = void (*)(int, double*, int);

// Runs one stage on a matrix with several paddings.
void ExpectStage(TStage a_Stage, const TRows& a_vvdBefore, const TRows& a_vvdAfter)
{
    for (int iPadding : {0, 1, 5})
    {
        SCOPED_TRACE("padding " + std::to_string(iPadding));
        TColumns Matrix(a_vvdBefore, iPadding);
        a_Stage(Matrix.iN, Matrix.Values.Data(), Matrix.iStride);
        EXPECT_TRUE(SameMatrix(TColumns(a_vvdAfter, iPadding), Matrix));
    }
}

void ExpectBalanced(const TRows& a_vvdBefore, const TRows& a_vvdAfter)
{
    ExpectStage(nuv::BalanceMatrix, a_vvdBefore, a_vvdAfter);
}

void ExpectReduced(const TRows& a_vvdBefore, const TRows& a_vvdAfter)
{
    ExpectStage(nuv::ReduceToHessenberg, a_vvdBefore, a_vvdAfter);
}

// --- BalanceMatrix

TEST(BalanceMatrix, LeavesNormsWithinAFactorOf2Alone)
{
    for (const TRows& Rows : {TRows{{1, 2}, {1, 3}}, TRows{{1, 1}, {2, 3}}, TRows{{0, 1, 1}, {1, 0, 1}, {2, 2, 0}},
                              TRows{{7}}, TRows{{1, -2}, {-1, 3}}})
    {
        ExpectBalanced(Rows, Rows);
    }
}

TEST(BalanceMatrix, ScalesByThePowerOf2ThatEvensTheNorms)
{
    ExpectBalanced({{1, 1024}, {1, 3}}, {{1, 32}, {32, 3}});
    ExpectBalanced({{1, 1}, {1024, 3}}, {{1, 32}, {32, 3}});
    ExpectBalanced({{1, -1024}, {-1, 3}}, {{1, -32}, {-32, 3}});
}

// The norms are 1 and 8. The factor 2 makes the smaller one exactly half of the greater one, and no further factor is
// applied.
TEST(BalanceMatrix, StopsWhereTheNormsAreExactlyAFactorOf2Apart)
{
    ExpectBalanced({{1, 8}, {1, 1}}, {{1, 4}, {2, 1}});
    ExpectBalanced({{1, 1}, {8, 1}}, {{1, 2}, {4, 1}});
}

// The norms are 1 and r. The factor 2 changes the sum 1 + r to 2 + r/2, which is below 0.95 (1 + r) only for r > 7/3.
TEST(BalanceMatrix, ScalesOnlyForAGainOfFivePercent)
{
    ExpectBalanced({{1, 2.3125}, {1, 1}}, {{1, 2.3125}, {1, 1}});
    ExpectBalanced({{1, 2.34375}, {1, 1}}, {{1, 1.171875}, {2, 1}});
    ExpectBalanced({{1, 1}, {2.3125, 1}}, {{1, 1}, {2.3125, 1}});
    ExpectBalanced({{1, 1}, {2.34375, 1}}, {{1, 2}, {1.171875, 1}});
}

TEST(BalanceMatrix, DoesNotCountTheDiagonal)
{
    ExpectBalanced({{1e100, 1}, {1, 1}}, {{1e100, 1}, {1, 1}});
    ExpectBalanced({{-1e300, 16}, {1, 1e-300}}, {{-1e300, 4}, {4, 1e-300}});
}

TEST(BalanceMatrix, SkipsAColumnOfZerosWhateverItsRowHolds)
{
    ExpectBalanced({{5, 1e9}, {0, 6}}, {{5, 1e9}, {0, 6}});
    ExpectBalanced({{5, 0.5, -0.5}, {0, 6, 1}, {-0.0, 1, 7}}, {{5, 0.5, -0.5}, {0, 6, 1}, {-0.0, 1, 7}});
}

TEST(BalanceMatrix, SkipsARowOfZerosWhateverItsColumnHolds)
{
    ExpectBalanced({{5, 0}, {1e9, 6}}, {{5, 0}, {1e9, 6}});
    ExpectBalanced({{0}}, {{0}});
}

// The norm of column 1 is infinite, and halving it does not make it finite. Rows 2 and 3 gain nothing or have no
// column.
TEST(BalanceMatrix, LeavesARowWhoseColumnNormIsInfiniteAndEnds)
{
    const TRows vvdOverflow = {{5, 1, 0}, {Greatest, 7, 0}, {Greatest, 0, 9}};
    ExpectBalanced(vvdOverflow, vvdOverflow);
    for (double dInfinite : {Inf, -Inf})
    {
        const TRows vvdInfinite = {{5, 1}, {dInfinite, 7}};
        ExpectBalanced(vvdInfinite, vvdInfinite);
        const TRows vvdRow = {{5, dInfinite}, {1, 7}};
        ExpectBalanced(vvdRow, vvdRow);
    }
}

// A great finite column is halved many times: 2^1022 and 1 become 2^511 each.
TEST(BalanceMatrix, ScalesTheGreatestFiniteNorms)
{
    const double dGreat = std::ldexp(1.0, 1022);
    const double dRoot = std::ldexp(1.0, 511);
    ExpectBalanced({{5, 1}, {dGreat, 7}}, {{5, dRoot}, {dRoot, 7}});
    ExpectBalanced({{5, dGreat}, {1, 7}}, {{5, dRoot}, {dRoot, 7}});
}

TEST(BalanceMatrix, EndsOnNaN)
{
    ExpectBalanced({{1, NaN}, {1024, 1}}, {{1, NaN}, {1024, 1}});
    ExpectBalanced({{NaN, 1024}, {1, 1}}, {{NaN, 32}, {32, 1}});
}

TEST(BalanceMatrix, OfNothingTouchesNothing)
{
    nuv::BalanceMatrix(0, nullptr, 1);
    nuv::BalanceMatrix(-3, nullptr, 1);
}

TRows MakeBadlyScaled(int a_iN, std::mt19937_64& a_Engine)
{
    std::normal_distribution<double> Normal;
    std::uniform_int_distribution<int> Exponent(-40, 40);
    return MakeRows(a_iN, [&](int, int) { return std::ldexp(Normal(a_Engine), Exponent(a_Engine)); });
}

// Element (i, j) may only change by the power of 2 f(j)/f(i). Then trace, characteristic polynomial and eigenvalues are
// kept exactly.
TEST(BalanceMatrix, IsADiagonalSimilarityByPowersOf2)
{
    std::mt19937_64 Engine(1);
    for (int iN : {2, 3, 5, 8, 13})
    {
        TColumns Before(MakeBadlyScaled(iN, Engine));
        TColumns After(Before);
        nuv::BalanceMatrix(iN, After.Values.Data(), After.iStride);
        ExpectPaddingUntouched(After);
        bool bScaled = false;
        for (int i = 0; i < iN; ++i)
        {
            EXPECT_SAME_BITS(Before.At(i, i), After.At(i, i));
            for (int j = 0; j < iN; ++j)
            {
                const int iOfRow = std::ilogb(After.At(i, 0)) - std::ilogb(Before.At(i, 0));
                const int iOfColumn = std::ilogb(After.At(0, j)) - std::ilogb(Before.At(0, j));
                EXPECT_SAME_BITS(std::ldexp(Before.At(i, j), iOfRow + iOfColumn), After.At(i, j));
                bScaled = bScaled || iOfRow != 0;
            }
        }
        EXPECT_TRUE(bScaled);
    }
}

// If a factor still gained 5 %, some norms would be further apart than 7/3. One more call must change nothing.
TEST(BalanceMatrix, RepeatsItsPassesUntilNothingGains)
{
    std::mt19937_64 Engine(2);
    for (int iN : {3, 5, 8, 13, 21})
    {
        TColumns Matrix(MakeBadlyScaled(iN, Engine));
        nuv::BalanceMatrix(iN, Matrix.Values.Data(), Matrix.iStride);
        for (int i = 0; i < iN; ++i)
        {
            double dRow = 0.0;
            double dColumn = 0.0;
            for (int j = 0; j < iN; ++j)
            {
                dRow += i == j ? 0.0 : std::fabs(Matrix.At(i, j));
                dColumn += i == j ? 0.0 : std::fabs(Matrix.At(j, i));
            }
            EXPECT_LT(std::max(dRow, dColumn) / std::min(dRow, dColumn), 7.0 / 3.0 + 1e-9) << iN << ", row " << i;
        }
        TColumns Again(Matrix);
        nuv::BalanceMatrix(iN, Again.Values.Data(), Again.iStride);
        EXPECT_TRUE(SameMatrix(Matrix, Again));
    }
}

// --- ReduceToHessenberg

// Half of row 2 is subtracted from row 3, and half of column 3 is added to column 2. The multiplier 0.5 stays in the
// element that was eliminated.
TEST(ReduceToHessenberg, LeavesTheMultipliersBelowTheSubdiagonal)
{
    ExpectReduced({{1, 2, 3}, {4, 5, 6}, {2, 7, 8}}, {{1, 3.5, 3}, {4, 8, 6}, {0.5, 7, 5}});
}

TEST(ReduceToHessenberg, ExchangesRowsAndColumnsForTheGreatestPivot)
{
    ExpectReduced({{1, 2, 3}, {2, 5, 6}, {4, 7, 8}}, {{1, 4, 2}, {4, 11.5, 7}, {0.5, 2.75, 1.5}});
    ExpectReduced({{1, 2, 3}, {2, 5, 6}, {-4, 7, 8}}, {{1, 2, 2}, {-4, 4.5, 7}, {-0.5, 5.75, 8.5}});
}

TEST(ReduceToHessenberg, TakesTheFirstOfEqualPivots)
{
    ExpectReduced({{1, 2, 3}, {4, 5, 6}, {-4, 7, 8}}, {{1, -1, 3}, {4, -1, 6}, {-1, -2, 14}});
}

// The second step exchanges rows 3 and 4, but not the multipliers of the first step.
TEST(ReduceToHessenberg, DoesNotExchangeEarlierMultipliers)
{
    ExpectReduced({{1, 2, 3, 4}, {4, 1, 1, 2}, {2, 1.75, 2, 1}, {-4, 3.5, 8, 3}},
                  {{1, -0.5, 5.5, 3}, {4, -0.5, 2.5, 1}, {0.5, 4, 9.5, 9}, {-1, 0.5, -4, -3}});
}

// An exact zero is not eliminated: 0 times the infinity in the pivot row would be NaN.
TEST(ReduceToHessenberg, SkipsZerosAndColumnsOfZeros)
{
    ExpectReduced({{1, 2, 3}, {4, Inf, Inf}, {0, 7, 8}}, {{1, 2, 3}, {4, Inf, Inf}, {0, 7, 8}});
    ExpectReduced({{1, 2, 3}, {0, 5, 6}, {-0.0, 7, 8}}, {{1, 2, 3}, {0, 5, 6}, {-0.0, 7, 8}});
}

TEST(ReduceToHessenberg, PassesOverNaNInTheSearchForAPivot)
{
    ExpectReduced({{1, 2, 3}, {NaN, 5, 6}, {0, 7, 8}}, {{1, 2, 3}, {NaN, 5, 6}, {0, 7, 8}});
}

TEST(ReduceToHessenberg, LeavesFewerThanThreeRowsAlone)
{
    ExpectReduced({{1, 2}, {3, 4}}, {{1, 2}, {3, 4}});
    ExpectReduced({{1}}, {{1}});
    nuv::ReduceToHessenberg(0, nullptr, 1);
    nuv::ReduceToHessenberg(-3, nullptr, 1);
}

TEST(ReduceToHessenberg, LeavesACompanionMatrixAlone)
{
    const TRows vvdCompanion = MakeCompanion({1, -10, 35, -50, 24});
    ExpectReduced(vvdCompanion, vvdCompanion);
}

} // namespace
