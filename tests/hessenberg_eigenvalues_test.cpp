// hessenberg_eigenvalues_test.cpp: the QR iteration on matrices in upper Hessenberg form.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "support/matrices.h"

#include <algorithm>
#include <random>

namespace {

using namespace nuv_tests;

// --- HessenbergEigenvalues

void ExpectEigenvaluesOfHessenberg(const TRows& a_vvdRows, const TEigenvalues& a_Expected)
{
    for (int iPadding : {0, 1, 5})
    {
        SCOPED_TRACE("padding " + std::to_string(iPadding));
        TColumns Matrix(a_vvdRows, iPadding);
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

// With p = (y - x)/2 the first position takes x + p + sign(p) sqrt(p^2 + w), and the second one x - w/(...).
TEST(HessenbergEigenvalues, ARealPairIsStoredWithTheOneFurtherFromTheLastDiagonalElementFirst)
{
    ExpectEigenvaluesOfHessenberg({{4, 3}, {1, 2}}, {1, {5.0, 1.0}, {0.0, 0.0}});
    ExpectEigenvaluesOfHessenberg({{2, 3}, {1, 4}}, {1, {1.0, 5.0}, {0.0, 0.0}});
    ExpectEigenvaluesOfHessenberg(MakeCompanion({1, -2, 1}), {1, {1.0, 1.0}, {0.0, 0.0}});
    ExpectEigenvaluesOfHessenberg({{5, 0}, {1, 5}}, {1, {5.0, 5.0}, {0.0, 0.0}}); // z = 0 is not divided by
}

// Here (y - x)/2 is -0.0. It counts as not negative, so that +1 comes first.
TEST(HessenbergEigenvalues, ANegativeZeroIsNotNegative)
{
    ExpectEigenvaluesOfHessenberg({{-0.0, 1}, {1, 0.0}}, {1, {1.0, -1.0}, {0.0, 0.0}});
    ExpectEigenvaluesOfHessenberg({{0.0, 1}, {1, 0.0}}, {1, {1.0, -1.0}, {0.0, 0.0}});
}

// Here the first component of the vector that the sweep reflects is -0.0, and its length takes the sign +. The expected
// bits are from a second program, written from the description of the method. The minus sign would give others.
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

// A subdiagonal element that vanishes beside its diagonal neighbours separates blocks of order 1 and 2, which are
// solved in place. Half a unit in the last place of 2 is still lost in the sum (a tie goes to even), and a greater
// element is not.
TEST(HessenbergEigenvalues, AnElementThatDoesNotChangeTheSumOfItsNeighboursIsNegligible)
{
    ExpectEigenvaluesOfHessenberg({{1, 4}, {Epsilon, 1}}, {1, {1.0, 1.0}, {0.0, 0.0}});
    ExpectEigenvaluesOfHessenberg({{-1, 4}, {-Epsilon, 1}}, {1, {-1.0, 1.0}, {0.0, 0.0}});
    TColumns Above(TRows{{1, 4}, {1.5 * Epsilon, 1}});
    const TEigenvalues Result = SolveHessenberg(Above);
    EXPECT_GT(Result.vdReal[0], 1.0 + 1e-8); // 1 +- sqrt(6 eps)
    EXPECT_LT(Result.vdReal[1], 1.0 - 1e-8);
}

// If both neighbours are zero, the norm of the whole matrix decides. 1e-30 is negligible beside 1, which gives 0 twice;
// the block by itself has the eigenvalues +-1e-15.
TEST(HessenbergEigenvalues, BetweenZeroNeighboursTheNormDecidesWhatIsNegligible)
{
    ExpectEigenvaluesOfHessenberg({{0, 1}, {1e-30, 0}}, {1, {0.0, 0.0}, {0.0, 0.0}});
    TColumns Small(TRows{{0, 1e-30}, {1e-30, 0}});
    ExpectSameEigenvalues({1, {1e-30, -1e-30}, {0.0, 0.0}}, SolveHessenberg(Small));
}

// 2^-53 is half a unit of the norm 1: the sum is a tie and rounds to the even 1. The difference 1 - 2^-53 is a double
// itself.
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

// Elements below the subdiagonal, such as the multipliers of the reduction, belong neither to the norm nor to a sweep.
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
        TColumns Clean(vvdClean);
        const TEigenvalues Expected = SolveHessenberg(Clean);
        EXPECT_EQ(1, Expected.iResult);
        ExpectEigenvaluesOfHessenberg(vvdDirty, Expected);
    }
}

// The balanced companion matrix of x^4 - 2x^2 + 1. Neither the double steps nor the exceptional shifts separate its
// double eigenvalues 1 and -1.
const TRows Stubborn = {{0, 1, 0, -0.5}, {2, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};

TEST(HessenbergEigenvalues, GiveUpAfterThirtyIterationsAndWriteNothingMore)
{
    const std::vector<double> vdNone(4, Untouched);
    TColumns Matrix(Stubborn);
    nuv::BalanceMatrix(Matrix.iN, Matrix.Values.Data(), Matrix.iStride);
    EXPECT_TRUE(SameMatrix(TColumns(Stubborn), Matrix));
    ExpectEigenvaluesOfHessenberg(Stubborn, {0, vdNone, vdNone});
}

// The eigenvalues 5 and 3 -+ 4i below the stubborn block are found before the iteration gives up.
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
            TColumns Matrix(MakeRows(4, [&](int i, int j) { return 4 * i + j == iPosition ? dValue : 1.0 + i * j; }));
            const TEigenvalues Result = SolveHessenberg(Matrix);
            EXPECT_TRUE(Result.iResult == 0 || Result.iResult == 1);
        }
    }
    const auto Full = [](double a_dValue) { return MakeRows(4, [=](int, int) { return a_dValue; }); };
    const std::vector<double> vdNone(4, Untouched);
    ExpectEigenvaluesOfHessenberg(Full(NaN), {0, vdNone, vdNone});
    // Infinity plus infinity is infinity, so every element counts as negligible.
    for (double dValue : {Inf, -Inf})
    {
        ExpectEigenvaluesOfHessenberg(Full(dValue), {1, std::vector<double>(4, dValue), {0, 0, 0, 0}});
    }
}

} // namespace
