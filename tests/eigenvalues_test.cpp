// eigenvalues_test.cpp: balancing, Hessenberg reduction and QR iteration on general real matrices.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Matrices are written row by row here and handed over column by column, with padding below each column that no
// routine may touch.

#include "poly.h"
#include "testing.h"

#include <Eigen/Dense>
#include <algorithm>
#include <complex>
#include <functional>
#include <random>

namespace {

using namespace nuv_tests;

using TRows = std::vector<std::vector<double> >;
using TComplexes = std::vector<std::complex<double> >;

class TMatrix
{
public:
    TMatrix(const TRows& a_vvdRows, int a_iPadding = 2)
        : iN(static_cast<int>(a_vvdRows.size())), iStride(iN + a_iPadding),
          vdValues(static_cast<std::size_t>(iN * iStride), Untouched)
    {
        for (int i = 0; i < iN; ++i)
        {
            for (int j = 0; j < iN; ++j)
            {
                At(i, j) = a_vvdRows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
            }
        }
    }

    // Counted from 0.
    double& At(int i, int j)
    {
        return vdValues[static_cast<std::size_t>(j * iStride + i)];
    }

    const int iN;
    const int iStride;
    std::vector<double> vdValues;
};

void ExpectSame(const TMatrix& a_Expected, const TMatrix& a_Actual)
{
    ASSERT_EQ(a_Expected.vdValues.size(), a_Actual.vdValues.size());
    for (std::size_t i = 0; i < a_Expected.vdValues.size(); ++i)
    {
        SCOPED_TRACE("row " + std::to_string(static_cast<int>(i) % a_Expected.iStride + 1) + ", column " +
                     std::to_string(static_cast<int>(i) / a_Expected.iStride + 1));
        EXPECT_SAME_BITS(a_Expected.vdValues[i], a_Actual.vdValues[i]);
    }
}

void ExpectPaddingUntouched(TMatrix& a_Matrix)
{
    for (int j = 0; j < a_Matrix.iN; ++j)
    {
        for (int i = a_Matrix.iN; i < a_Matrix.iStride; ++i)
        {
            EXPECT_SAME_BITS(Untouched, a_Matrix.At(i, j));
        }
    }
}

using TStage = void (*)(int, double*, int);

// One stage on a matrix, with several paddings.
void ExpectStage(TStage a_Stage, const TRows& a_vvdBefore, const TRows& a_vvdAfter)
{
    for (int iPadding : {0, 1, 5})
    {
        SCOPED_TRACE("padding " + std::to_string(iPadding));
        TMatrix Matrix(a_vvdBefore, iPadding);
        a_Stage(Matrix.iN, Matrix.vdValues.data(), Matrix.iStride);
        ExpectSame(TMatrix(a_vvdAfter, iPadding), Matrix);
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

TRows MakeRows(int a_iN, const std::function<double(int, int)>& a_Element)
{
    TRows vvdRows(static_cast<std::size_t>(a_iN), std::vector<double>(static_cast<std::size_t>(a_iN)));
    for (int i = 0; i < a_iN; ++i)
    {
        for (int j = 0; j < a_iN; ++j)
        {
            vvdRows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = a_Element(i, j);
        }
    }
    return vvdRows;
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

// Norms 1 and 8: the factor 2 brings the smaller one to exactly half of the greater one, and that is enough.
TEST(BalanceMatrix, StopsWhereTheNormsAreExactlyAFactorOf2Apart)
{
    ExpectBalanced({{1, 8}, {1, 1}}, {{1, 4}, {2, 1}});
    ExpectBalanced({{1, 1}, {8, 1}}, {{1, 2}, {4, 1}});
}

// Norms 1 and r: the factor 2 turns the sum 1 + r into 2 + r/2, which is below 0.95 (1 + r) for r > 7/3 only.
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

// Column 1 sums to infinity and cannot be halved into range. Rows 2 and 3 have nothing to gain or no column.
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

// A great column that is finite is halved down all the way: 2^1022 and 1 become 2^511 each.
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

// Element (i, j) may only change by the power of 2 f(j)/f(i): then the trace, the characteristic polynomial and every
// eigenvalue are kept exactly.
TEST(BalanceMatrix, IsADiagonalSimilarityByPowersOf2)
{
    std::mt19937_64 Engine(1);
    for (int iN : {2, 3, 5, 8, 13})
    {
        TMatrix Before(MakeBadlyScaled(iN, Engine));
        TMatrix After(Before);
        nuv::BalanceMatrix(iN, After.vdValues.data(), After.iStride);
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

// What would still gain 5 % has norms further apart than 7/3; and one more call finds nothing to do.
TEST(BalanceMatrix, RepeatsItsPassesUntilNothingGains)
{
    std::mt19937_64 Engine(2);
    for (int iN : {3, 5, 8, 13, 21})
    {
        TMatrix Matrix(MakeBadlyScaled(iN, Engine));
        nuv::BalanceMatrix(iN, Matrix.vdValues.data(), Matrix.iStride);
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
        TMatrix Again(Matrix);
        nuv::BalanceMatrix(iN, Again.vdValues.data(), Again.iStride);
        ExpectSame(Matrix, Again);
    }
}

// --- ReduceToHessenberg

// Row 3 less half of row 2, column 2 more half of column 3; the half itself stays where it has cleared.
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

// The second step exchanges rows 3 and 4, but not the multipliers of the first.
TEST(ReduceToHessenberg, DoesNotExchangeEarlierMultipliers)
{
    ExpectReduced({{1, 2, 3, 4}, {4, 1, 1, 2}, {2, 1.75, 2, 1}, {-4, 3.5, 8, 3}},
                  {{1, -0.5, 5.5, 3}, {4, -0.5, 2.5, 1}, {0.5, 4, 9.5, 9}, {-1, 0.5, -4, -3}});
}

// An exact zero is not eliminated: 0 times the infinity in its pivot row would be NaN.
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

TRows MakeCompanion(const std::vector<double>& a_vdMonic)
{
    return MakeRows(static_cast<int>(a_vdMonic.size()) - 1,
                    [&](int i, int j) {
                        return i == 0 ? -a_vdMonic[static_cast<std::size_t>(j) + 1] : i == j + 1 ? 1.0 : 0.0;
                    });
}

TEST(ReduceToHessenberg, LeavesACompanionMatrixAlone)
{
    const TRows vvdCompanion = MakeCompanion({1, -10, 35, -50, 24});
    ExpectReduced(vvdCompanion, vvdCompanion);
}

// --- HessenbergEigenvalues

struct TEigenvalues
{
    int iResult;
    std::vector<double> vdReal;
    std::vector<double> vdImaginary;
};

TEigenvalues SolveHessenberg(TMatrix& a_Matrix)
{
    const auto iN = static_cast<std::size_t>(a_Matrix.iN);
    TEigenvalues Result = {0, std::vector<double>(iN + 1, Untouched), std::vector<double>(iN + 1, Untouched)};
    Result.iResult = nuv::HessenbergEigenvalues(a_Matrix.iN, a_Matrix.vdValues.data(), a_Matrix.iStride,
                                                Result.vdReal.data(), Result.vdImaginary.data());
    ExpectPaddingUntouched(a_Matrix);
    EXPECT_SAME_BITS(Untouched, Result.vdReal.back());
    EXPECT_SAME_BITS(Untouched, Result.vdImaginary.back());
    Result.vdReal.pop_back();
    Result.vdImaginary.pop_back();
    return Result;
}

void ExpectSameEigenvalues(const TEigenvalues& a_Expected, const TEigenvalues& a_Actual)
{
    EXPECT_EQ(a_Expected.iResult, a_Actual.iResult);
    ASSERT_EQ(a_Expected.vdReal.size(), a_Actual.vdReal.size());
    for (std::size_t i = 0; i < a_Expected.vdReal.size(); ++i)
    {
        SCOPED_TRACE("position " + std::to_string(i + 1));
        EXPECT_SAME_BITS(a_Expected.vdReal[i], a_Actual.vdReal[i]);
        EXPECT_SAME_BITS(a_Expected.vdImaginary[i], a_Actual.vdImaginary[i]);
    }
}

void ExpectEigenvaluesOfHessenberg(const TRows& a_vvdRows, const TEigenvalues& a_Expected)
{
    for (int iPadding : {0, 1, 5})
    {
        SCOPED_TRACE("padding " + std::to_string(iPadding));
        TMatrix Matrix(a_vvdRows, iPadding);
        ExpectSameEigenvalues(a_Expected, SolveHessenberg(Matrix));
    }
}

TEST(HessenbergEigenvalues, OfASingleElementAreThatElement)
{
    for (double dValue : {3.5, -1e300, Subnormal, Inf, NaN})
    {
        ExpectEigenvaluesOfHessenberg({{dValue}}, {1, {dValue}, {0.0}});
    }
    ExpectEigenvaluesOfHessenberg({{-0.0}}, {1, {0.0}, {0.0}}); // the accumulated shift 0.0 is added
}

TEST(HessenbergEigenvalues, OfNothingAreFoundAndTouchNothing)
{
    EXPECT_EQ(1, nuv::HessenbergEigenvalues(0, nullptr, 1, nullptr, nullptr));
    EXPECT_EQ(1, nuv::HessenbergEigenvalues(-3, nullptr, 1, nullptr, nullptr));
}

TEST(HessenbergEigenvalues, AComplexPairIsStoredWithTheNegativeImaginaryPartFirst)
{
    ExpectEigenvaluesOfHessenberg(MakeCompanion({1, 0, 1}), {1, {0.0, 0.0}, {-1.0, 1.0}});
    ExpectEigenvaluesOfHessenberg({{3, -4}, {4, 3}}, {1, {3.0, 3.0}, {-4.0, 4.0}});
}

// p = (y - x)/2 leads: the first position takes x + p + sign(p) sqrt(p^2 + w), the second one x - w/(...).
TEST(HessenbergEigenvalues, ARealPairIsStoredWithTheOneFurtherFromTheLastDiagonalElementFirst)
{
    ExpectEigenvaluesOfHessenberg({{4, 3}, {1, 2}}, {1, {5.0, 1.0}, {0.0, 0.0}});
    ExpectEigenvaluesOfHessenberg({{2, 3}, {1, 4}}, {1, {1.0, 5.0}, {0.0, 0.0}});
    ExpectEigenvaluesOfHessenberg(MakeCompanion({1, -2, 1}), {1, {1.0, 1.0}, {0.0, 0.0}});
    ExpectEigenvaluesOfHessenberg({{5, 0}, {1, 5}}, {1, {5.0, 5.0}, {0.0, 0.0}}); // z = 0 is not divided by
}

// (y - x)/2 is -0.0 here. It counts as not negative, so that +1 comes first.
TEST(HessenbergEigenvalues, ANegativeZeroIsNotNegative)
{
    ExpectEigenvaluesOfHessenberg({{-0.0, 1}, {1, 0.0}}, {1, {1.0, -1.0}, {0.0, 0.0}});
    ExpectEigenvaluesOfHessenberg({{0.0, 1}, {1, 0.0}}, {1, {1.0, -1.0}, {0.0, 0.0}});
}

// The first component of the vector that the sweep reflects is -0.0 here, and its length takes the sign +. The bits are
// those of a second program, written from the description of the method; the minus sign would give others.
TEST(HessenbergEigenvalues, ANegativeZeroIsNotNegativeInTheSweep)
{
    ExpectEigenvaluesOfHessenberg(
        {{1, -0.0, -0.0}, {-1, 1, -0.0}, {0, 1, 2}},
        {1, {0x1.ffffffffffffep-1, 0x1.ffffffffffffep-1, 0x1.0000000000001p+1}, {0.0, 0.0, 0.0}});
}

TEST(HessenbergEigenvalues, OfATriangularMatrixAreItsDiagonalInItsOrder)
{
    ExpectEigenvaluesOfHessenberg({{3, 7, -2, 1e9}, {0, -1, 4, 5}, {-0.0, 0, 3, 6}, {0, 0, 0, 0.125}},
                                  {1, {3.0, -1.0, 3.0, 0.125}, {0, 0, 0, 0}});
    ExpectEigenvaluesOfHessenberg({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, {1, {0, 0, 0}, {0, 0, 0}});
}

// A subdiagonal element that vanishes beside its diagonal neighbours separates 1 x 1 and 2 x 2 blocks, which are solved
// in place. Half a unit in the last place of 2 is still lost by the addition (to even), more is not.
TEST(HessenbergEigenvalues, AnElementThatDoesNotChangeTheSumOfItsNeighboursIsNegligible)
{
    ExpectEigenvaluesOfHessenberg({{1, 4}, {Epsilon, 1}}, {1, {1.0, 1.0}, {0.0, 0.0}});
    ExpectEigenvaluesOfHessenberg({{-1, 4}, {-Epsilon, 1}}, {1, {-1.0, 1.0}, {0.0, 0.0}});
    TMatrix Above(TRows{{1, 4}, {1.5 * Epsilon, 1}});
    const TEigenvalues Result = SolveHessenberg(Above);
    EXPECT_GT(Result.vdReal[0], 1.0 + 1e-8); // 1 +- sqrt(6 eps)
    EXPECT_LT(Result.vdReal[1], 1.0 - 1e-8);
}

// Zero neighbours measure nothing: then the norm of the whole matrix does. 1e-30 is negligible beside 1, which gives 0
// twice, where the block itself has the eigenvalues +-1e-15.
TEST(HessenbergEigenvalues, BetweenZeroNeighboursTheNormDecidesWhatIsNegligible)
{
    ExpectEigenvaluesOfHessenberg({{0, 1}, {1e-30, 0}}, {1, {0.0, 0.0}, {0.0, 0.0}});
    TMatrix Small(TRows{{0, 1e-30}, {1e-30, 0}});
    ExpectSameEigenvalues({1, {1e-30, -1e-30}, {0.0, 0.0}}, SolveHessenberg(Small));
}

// 2^-53 is half a unit of the norm 1, a tie that goes to the even 1; 1 - 2^-53 would be a double.
TEST(HessenbergEigenvalues, TheNormIsAddedToNotSubtractedFrom)
{
    ExpectEigenvaluesOfHessenberg({{0.0, 1.0}, {0x1p-53, 0.0}}, {1, {0.0, 0.0}, {0.0, 0.0}});
}

TEST(HessenbergEigenvalues, BlocksAreSolvedAtTheirOwnPositions)
{
    ExpectEigenvaluesOfHessenberg(
        {{3, -4, 9, 9, 9}, {4, 3, 9, 9, 9}, {0, 0, 7, 9, 9}, {0, 0, 0, 4, 3}, {0, 0, 0, 1, 2}},
        {1, {3.0, 3.0, 7.0, 5.0, 1.0}, {-4.0, 4.0, 0.0, 0.0, 0.0}});
}

// What stands below the subdiagonal, such as the multipliers of the reduction, is neither in the norm nor in a sweep.
TEST(HessenbergEigenvalues, DoNotDependOnWhatStandsBelowTheSubdiagonal)
{
    std::mt19937_64 Engine(3);
    std::normal_distribution<double> Normal;
    for (int iN : {3, 4, 5, 9, 20})
    {
        SCOPED_TRACE(iN);
        const TRows vvdClean =
            MakeRows(iN,
                     [&](int i, int j) {
                         return i > j + 1 || i == j ? 0.0 : i == j + 1 && iN > 5 && j == 2 ? 1e-14 : Normal(Engine);
                     });
        const TRows vvdDirty =
            MakeRows(iN, [&](int i, int j)
                     { return i > j + 1 ? 1e40 : vvdClean[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]; });
        TMatrix Clean(vvdClean);
        const TEigenvalues Expected = SolveHessenberg(Clean);
        EXPECT_EQ(1, Expected.iResult);
        ExpectEigenvaluesOfHessenberg(vvdDirty, Expected);
    }
}

// The companion matrix of x^4 - 2x^2 + 1, balanced: neither the double steps nor the exceptional shifts separate its
// double eigenvalues 1 and -1.
const TRows Stubborn = {{0, 1, 0, -0.5}, {2, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};

TEST(HessenbergEigenvalues, GiveUpAfterThirtyIterationsAndWriteNothingMore)
{
    const std::vector<double> vdNone(4, Untouched);
    ExpectBalanced(Stubborn, Stubborn);
    ExpectEigenvaluesOfHessenberg(Stubborn, {0, vdNone, vdNone});
}

// Below the stubborn block the eigenvalues 5 and 3 -+ 4i have been found before.
TEST(HessenbergEigenvalues, KeepWhatWasFoundBeforeGivingUp)
{
    const TRows vvdTail = {{3, -4, 9}, {4, 3, 9}, {0, 0, 5}};
    const TRows vvdAll =
        MakeRows(7,
                 [&](int i, int j)
                 {
                     return i < 4 && j < 4 ? Stubborn[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]
                            : i >= 4 && j >= 4
                                ? vvdTail[static_cast<std::size_t>(i) - 4][static_cast<std::size_t>(j) - 4]
                                : 0.0;
                 });
    const double u = Untouched;
    ExpectEigenvaluesOfHessenberg(vvdAll, {0, {u, u, u, u, 3.0, 3.0, 5.0}, {u, u, u, u, -4.0, 4.0, 0.0}});
}

TEST(HessenbergEigenvalues, EndOnNaNAndInfinity)
{
    ExpectEigenvaluesOfHessenberg({{NaN, 1}, {1, 2}}, {1, {NaN, NaN}, {NaN, NaN}});
    for (double dValue : {NaN, Inf, -Inf})
    {
        for (int iPosition = 0; iPosition < 16; ++iPosition)
        {
            TMatrix Matrix(MakeRows(4, [&](int i, int j) { return 4 * i + j == iPosition ? dValue : 1.0 + i * j; }));
            const TEigenvalues Result = SolveHessenberg(Matrix);
            EXPECT_TRUE(Result.iResult == 0 || Result.iResult == 1);
        }
    }
    const auto Full = [](double a_dValue) { return MakeRows(4, [=](int, int) { return a_dValue; }); };
    const std::vector<double> vdNone(4, Untouched);
    ExpectEigenvaluesOfHessenberg(Full(NaN), {0, vdNone, vdNone});
    // Infinity plus infinity is infinity: every element counts as negligible.
    for (double dValue : {Inf, -Inf})
    {
        ExpectEigenvaluesOfHessenberg(Full(dValue), {1, std::vector<double>(4, dValue), {0, 0, 0, 0}});
    }
}

// --- All three on general matrices

Eigen::MatrixXd MakeEigen(const TRows& a_vvdRows)
{
    const auto iN = static_cast<Eigen::Index>(a_vvdRows.size());
    Eigen::MatrixXd Matrix(iN, iN);
    for (Eigen::Index i = 0; i < iN; ++i)
    {
        for (Eigen::Index j = 0; j < iN; ++j)
        {
            Matrix(i, j) = a_vvdRows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
        }
    }
    return Matrix;
}

// The eigenvalues of a general matrix, the same bits for every padding.
TComplexes Solve(const TRows& a_vvdRows)
{
    TEigenvalues First = {};
    for (int iPadding : {0, 3})
    {
        TMatrix Matrix(a_vvdRows, iPadding);
        nuv::BalanceMatrix(Matrix.iN, Matrix.vdValues.data(), Matrix.iStride);
        nuv::ReduceToHessenberg(Matrix.iN, Matrix.vdValues.data(), Matrix.iStride);
        const TEigenvalues Result = SolveHessenberg(Matrix);
        EXPECT_EQ(1, Result.iResult);
        if (iPadding == 0)
        {
            First = Result;
        }
        ExpectSameEigenvalues(First, Result);
    }
    TComplexes Values;
    for (std::size_t i = 0; i < First.vdReal.size(); ++i)
    {
        Values.emplace_back(First.vdReal[i], First.vdImaginary[i]);
    }
    return Values;
}

// The computed eigenvalues are exact ones of A + E. Elimination with pivoting keeps its multipliers within 1, a double
// step is orthogonal, and both round each element a few times for every row: |E| is a small multiple of n eps |A|
// (J. H. Wilkinson, The Algebraic Eigenvalue Problem, chapters 6 and 8).
double BackwardError(const Eigen::MatrixXd& a_Matrix)
{
    return 10.0 * static_cast<double>(a_Matrix.rows()) * Epsilon * a_Matrix.norm();
}

// A - lambda I is within |E| of a singular matrix: its least singular value is at most |E|. No condition enters.
void ExpectSmallBackwardErrors(const TRows& a_vvdRows, const TComplexes& a_Values)
{
    const Eigen::MatrixXd Matrix = MakeEigen(a_vvdRows);
    for (const auto& Value : a_Values)
    {
        Eigen::MatrixXcd Shifted = Matrix.cast<std::complex<double> >();
        Shifted.diagonal().array() -= Value;
        EXPECT_LE(Eigen::JacobiSVD<Eigen::MatrixXcd>(Shifted).singularValues().minCoeff(), BackwardError(Matrix))
            << Value;
    }
}

void ExpectTraceAndConjugates(const TRows& a_vvdRows, const TComplexes& a_Values)
{
    const Eigen::MatrixXd Matrix = MakeEigen(a_vvdRows);
    std::complex<double> Sum;
    for (std::size_t i = 0; i < a_Values.size(); ++i)
    {
        Sum += a_Values[i];
        if (a_Values[i].imag() < 0.0)
        {
            ASSERT_LT(i + 1, a_Values.size());
            EXPECT_EQ(std::conj(a_Values[i]), a_Values[i + 1]);
        }
    }
    EXPECT_NEAR(Matrix.trace(), Sum.real(), static_cast<double>(Matrix.rows()) * BackwardError(Matrix));
    EXPECT_EQ(0.0, Sum.imag() + 0.0);
}

// To first order an eigenvalue moves by at most |E| times its condition |x||y|/|y^H x|, from its right and left
// eigenvectors; 1 for a normal matrix (Wilkinson, chapter 2). Each expected value takes the nearest that is left.
void ExpectNear(const TComplexes& a_Expected, const std::vector<double>& a_vdBounds, TComplexes a_Values)
{
    ASSERT_EQ(a_Expected.size(), a_Values.size());
    for (std::size_t i = 0; i < a_Expected.size(); ++i)
    {
        const auto Nearest =
            std::min_element(a_Values.begin(), a_Values.end(),
                             [&](auto a_First, auto a_Second)
                             { return std::abs(a_First - a_Expected[i]) < std::abs(a_Second - a_Expected[i]); });
        EXPECT_LE(std::abs(*Nearest - a_Expected[i]), a_vdBounds[i]) << *Nearest << " for " << a_Expected[i];
        a_Values.erase(Nearest);
    }
}

void ExpectNear(const TComplexes& a_Expected, double a_dBound, const TComplexes& a_Values)
{
    ExpectNear(a_Expected, std::vector<double>(a_Expected.size(), a_dBound), a_Values);
}

// Against Eigen, each eigenvalue to its own condition; both sides have a backward error.
void ExpectAsEigen(const TRows& a_vvdRows, const TComplexes& a_Values)
{
    const Eigen::MatrixXd Matrix = MakeEigen(a_vvdRows);
    const Eigen::EigenSolver<Eigen::MatrixXd> Solver(Matrix);
    const Eigen::MatrixXcd Right = Solver.eigenvectors();
    const Eigen::MatrixXcd Left = Right.inverse();
    TComplexes Expected;
    std::vector<double> vdBounds;
    for (Eigen::Index i = 0; i < Matrix.rows(); ++i)
    {
        Expected.push_back(Solver.eigenvalues()(i));
        vdBounds.push_back(2.0 * BackwardError(Matrix) * Right.col(i).norm() * Left.row(i).norm());
    }
    ExpectNear(Expected, vdBounds, a_Values);
}

void ExpectPublished(const TRows& a_vvdRows, const TComplexes& a_Expected, double a_dCondition = 1.0)
{
    const TComplexes Values = Solve(a_vvdRows);
    ExpectNear(a_Expected, a_dCondition * BackwardError(MakeEigen(a_vvdRows)), Values);
    ExpectSmallBackwardErrors(a_vvdRows, Values);
    ExpectTraceAndConjugates(a_vvdRows, Values);
}

TRows MakeTridiagonal(int a_iN, double a_dOffDiagonal, const std::function<double(int)>& a_Diagonal)
{
    return MakeRows(a_iN,
                    [&](int i, int j) { return i == j                 ? a_Diagonal(i)
                                               : std::abs(i - j) == 1 ? a_dOffDiagonal
                                                                      : 0.0; });
}

// 2 - 2 cos(k pi/(n+1)). Symmetric, so the condition is 1. Source: R. T. Gregory, D. L. Karney, A Collection of
// Matrices for Testing Computational Algorithms, 1969, example 7.4.
TEST(Eigenvalues, OfTheSecondDifference)
{
    for (int iN : {1, 2, 3, 10, 16})
    {
        SCOPED_TRACE(iN);
        TComplexes Expected;
        for (int k = 1; k <= iN; ++k)
        {
            Expected.emplace_back(2.0 - 2.0 * std::cos(k * M_PI / (iN + 1)));
        }
        ExpectPublished(MakeTridiagonal(iN, -1.0, [](int) { return 2.0; }), Expected);
    }
}

// Eight eigenvalues, two of them equal, two nearly so and two small ones. Source: J. B. Rosser, C. Lanczos, M. R.
// Hestenes, W. Karush, J. Res. Nat. Bur. Standards 47 (1951) 291-297.
TEST(Eigenvalues, OfTheRosserMatrix)
{
    const double dGreat = 10.0 * std::sqrt(10405.0);
    const double dRoot = 100.0 * std::sqrt(26.0);
    ExpectPublished({{611, 196, -192, 407, -8, -52, -49, 29},
                     {196, 899, 113, -192, -71, -43, -8, -44},
                     {-192, 113, 899, 196, 61, 49, 8, 52},
                     {407, -192, 196, 611, 8, 44, 59, -23},
                     {-8, -71, 61, 8, 411, -599, 208, 208},
                     {-52, -43, 49, 44, -599, 411, 208, 208},
                     {-49, -8, 8, 59, 208, 208, 99, -911},
                     {29, -44, 52, -23, 208, 208, -911, 99}},
                    {dGreat, 1020.0, 510.0 + dRoot, 1000.0, 1000.0, 10.0 / (510.0 + dRoot) * 10.0, 0.0, -dGreat});
}

// W21+: diagonal 10 ... 0 ... 10, ones beside it; pairs that agree to 14 digits. The values from the characteristic
// polynomial in rational arithmetic; the two greatest are those of Wilkinson, chapter 5, section 45.
TEST(Eigenvalues, OfTheWilkinsonMatrix)
{
    ExpectPublished(MakeTridiagonal(21, 1.0, [](int i) { return std::fabs(10.0 - i); }),
                    {-1.1254415221199843, 0.25380581709667815, 0.94753436752929332, 1.7893213526950813,
                     2.1302092193625062,  2.9610588841857268,  3.0430992925788236,  3.9960482013836249,
                     4.0043540234408566,  4.9997824777429019,  5.0002444250019131,  6.0002175222570981,
                     6.0002340315841671,  7.0039517986163746,  7.0039522095286753,  8.0389411158142732,
                     8.0389411228290228,  9.2106786473049187,  9.2106786473613322,  10.746194182903322,
                     10.746194182903393});
}

// Frank's matrix of order 12: the small eigenvalues have conditions up to 1e8 and more. Source: W. L. Frank, J. Soc.
// Indust. Appl. Math. 6 (1958) 378-392; the values from the characteristic polynomial in rational arithmetic.
TEST(Eigenvalues, OfTheFrankMatrix)
{
    const TRows vvdFrank = MakeRows(12, [](int i, int j) { return j >= i - 1 ? 12.0 - std::max(i, j) : 0.0; });
    const TComplexes Expected = {0.031028060644010015, 0.049507429185278305, 0.081227659240405037, 0.14364651976922047,
                                 0.28474972055847819,  0.64350531900485541,  1.553988709132107,    3.5118559485807572,
                                 6.9615330855671225,   12.311077400868527,   20.19898864587708,    32.228891501572164};
    const TComplexes Values = Solve(vvdFrank);
    ExpectSmallBackwardErrors(vvdFrank, Values);
    ExpectTraceAndConjugates(vvdFrank, Values);
    ExpectAsEigen(vvdFrank, Values);
    const TComplexes Great(Expected.begin() + 6, Expected.end());
    TComplexes Sorted = Values;
    std::sort(Sorted.begin(), Sorted.end(),
              [](auto a_First, auto a_Second) { return a_First.real() < a_Second.real(); });
    ExpectNear(Great, 1e3 * BackwardError(MakeEigen(vvdFrank)), TComplexes(Sorted.begin() + 6, Sorted.end()));
}

// Zero diagonal, k above and n - k below: n-1, n-3, ... 1-n. Source: P. A. Clement, SIAM Rev. 1 (1959) 50-52. Made
// symmetric by a diagonal similarity whose squares are binomial coefficients: the condition is the root of the
// greatest ratio of two.
TEST(Eigenvalues, OfTheClementMatrix)
{
    for (int iN : {2, 5, 10, 16})
    {
        SCOPED_TRACE(iN);
        const TRows vvdRows =
            MakeRows(iN, [&](int i, int j) { return j == i + 1   ? i + 1.0
                                                    : i == j + 1 ? iN - i * 1.0
                                                                 : 0.0; });
        TComplexes Expected;
        double dGreatest = 1.0;
        for (int k = 0; k < iN; ++k)
        {
            Expected.emplace_back(iN - 1.0 - 2.0 * k);
            dGreatest = std::max(dGreatest, std::tgamma(iN) / std::tgamma(k + 1.0) / std::tgamma(iN - k));
        }
        ExpectPublished(vvdRows, Expected, std::sqrt(dGreatest));
    }
}

// sum of c_k w^(jk), w = exp(2 pi i/n). Normal, so the condition is 1. Source: P. J. Davis, Circulant Matrices, 1979.
TEST(Eigenvalues, OfCirculants)
{
    for (const std::vector<double>& vdC :
         {std::vector<double>{1, 2, 3}, {0, 1, 0, 0, 0}, {4, -1, 0, 0.5, 2, 7, 1}, {0, 0, 0, 0, 0, 0, 0, 0, 0, 1}})
    {
        const int iN = static_cast<int>(vdC.size());
        const TRows vvdRows =
            MakeRows(iN, [&](int i, int j) { return vdC[static_cast<std::size_t>((j - i + iN) % iN)]; });
        TComplexes Expected;
        for (int j = 0; j < iN; ++j)
        {
            std::complex<double> Sum;
            for (int k = 0; k < iN; ++k)
            {
                Sum += vdC[static_cast<std::size_t>(k)] * std::polar(1.0, 2.0 * M_PI * (j * k % iN) / iN);
            }
            Expected.push_back(Sum);
        }
        ExpectPublished(vvdRows, Expected);
    }
}

// 1/(i+j-1), small orders. Source: H. E. Fettis, J. C. Caslin, Aerospace Research Laboratories 67-0128 (1967); the
// digits here from the characteristic polynomial in rational arithmetic.
TEST(Eigenvalues, OfHilbertMatrices)
{
    const std::vector<TComplexes> Expected = {
        {0.0026873403557735294, 0.12232706585390585, 1.408318927123654},
        {9.6702304022586887e-05, 0.0067382736057607483, 0.16914122022145003, 1.5002142800592428},
        {3.2879287721718745e-06, 0.00030589804015119176, 0.011407491623419806, 0.20853421861101334,
         1.5670506910982307}};
    for (const TComplexes& Values : Expected)
    {
        ExpectPublished(MakeRows(static_cast<int>(Values.size()), [](int i, int j) { return 1.0 / (i + j + 1); }),
                        Values);
    }
}

TEST(Eigenvalues, OfCompanionMatricesAreTheRoots)
{
    ExpectPublished(MakeCompanion({1, -6, 11, -6}), {1.0, 2.0, 3.0}, 100.0);
    ExpectPublished(MakeCompanion({1, 0, 0, 0, -1}), {1.0, -1.0, {0.0, 1.0}, {0.0, -1.0}}, 10.0);
    for (const auto& Value : Solve(MakeCompanion({1, -6, 11, -6})))
    {
        EXPECT_SAME_BITS(0.0, Value.imag());
    }
}

// -1 below, 1 on and three times above the diagonal: sensitive eigenvalues, so only the backward error is bounded.
// Source: J. Grcar, Sandia National Laboratories SAND89-8691 (1989).
TEST(Eigenvalues, OfTheGrcarMatrix)
{
    for (int iN : {5, 10, 15})
    {
        const TRows vvdGrcar =
            MakeRows(iN, [](int i, int j) { return i == j + 1             ? -1.0
                                                   : j >= i && j <= i + 3 ? 1.0
                                                                          : 0.0; });
        const TComplexes Values = Solve(vvdGrcar);
        ExpectSmallBackwardErrors(vvdGrcar, Values);
        ExpectTraceAndConjugates(vvdGrcar, Values);
    }
}

TEST(Eigenvalues, OfRandomMatricesAreThoseOfEigen)
{
    std::mt19937_64 Engine(4);
    std::normal_distribution<double> Normal;
    const std::vector<int> viSizes =
        Emulated ? std::vector<int>{2, 3, 5, 8} : std::vector<int>{2, 3, 4, 5, 7, 10, 15, 20};
    for (const int iN : viSizes)
    {
        for (int iRepeat = 0; iRepeat < 3; ++iRepeat)
        {
            SCOPED_TRACE(std::to_string(iN) + ", " + std::to_string(iRepeat));
            const TRows vvdRows = MakeRows(iN, [&](int, int) { return Normal(Engine); });
            const TComplexes Values = Solve(vvdRows);
            ExpectSmallBackwardErrors(vvdRows, Values);
            ExpectTraceAndConjugates(vvdRows, Values);
            ExpectAsEigen(vvdRows, Values);
        }
    }
}

// D A D^-1 with powers of 2 in D has the eigenvalues of A to A's own condition, if it is balanced first; D spans 2^60.
TEST(Eigenvalues, OfABadlyScaledMatrixAreThoseOfTheWellScaledOne)
{
    std::mt19937_64 Engine(5);
    std::normal_distribution<double> Normal;
    for (int iN : {3, 6, 12})
    {
        SCOPED_TRACE(iN);
        const TRows vvdRows = MakeRows(iN, [&](int, int) { return Normal(Engine); });
        const TRows vvdScaled =
            MakeRows(iN,
                     [&](int i, int j) {
                         return std::ldexp(vvdRows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)],
                                           60 / (iN - 1) * (i - j));
                     });
        ExpectAsEigen(vvdRows, Solve(vvdScaled));
    }
}

} // namespace
