// dense_cholesky_test.cpp: Cholesky factorisation and solution in full square storage.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/effort.h"
#include "support/expect.h"
#include "support/reserved_memory.h"
#include "support/triangle.h"

#include <cfenv>
#include <climits>
#include <random>

#if defined(__unix__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

using namespace nuv_tests;
using TValues = std::vector<double>;
using TRows = std::vector<TValues>; // the lower triangle, row i of i + 1 values

TValues Packed(const TRows& a_Lower)
{
    TValues vdPacked;
    for (const TValues& vdRow : a_Lower)
    {
        vdPacked.insert(vdPacked.end(), vdRow.begin(), vdRow.end());
    }
    return vdPacked;
}

TTriangle Square(const TRows& a_Lower)
{
    return TTriangle(Packed(a_Lower), a_Lower.size(), TStorage::Square);
}

// Runs a statement. The upper triangle holds signalling NaNs: an operation on one of them would raise the invalid flag.
// WebAssembly has no flags.
template <class TStatement> auto Quietly(TStatement a_Statement)
{
#ifdef FE_INVALID
    std::feclearexcept(FE_INVALID);
#endif
    const auto Result = a_Statement();
#ifdef FE_INVALID
    EXPECT_EQ(0, std::fetestexcept(FE_INVALID)) << "the upper triangle was used";
#endif
    return Result;
}

struct TFactorCase
{
    const char* szName;
    TRows Before;
    bool bResult;
    TRows After;
};

// a_bFlagTells is false if values of the lower triangle raise the invalid flag themselves.
void ExpectFactors(const std::vector<TFactorCase>& a_Cases, bool a_bFlagTells = true)
{
    for (const TFactorCase& Case : a_Cases)
    {
        SCOPED_TRACE(Case.szName);
        TTriangle Matrix = Square(Case.Before);
        const auto Factorise = [&] { return nuv::Cholesky(Matrix.Count(), Matrix.Data()); };
        EXPECT_EQ(Case.bResult, a_bFlagTells ? Quietly(Factorise) : Factorise());
        EXPECT_TRUE(SameValues(Packed(Case.After), Matrix.Packed()));
        EXPECT_TRUE(Matrix.RestIsUntouched());
    }
}

TValues SolveDense(TTriangle a_Factor, const TValues& a_vdVector)
{
    const TValues vdBefore = a_Factor.Packed();
    TGuardedArray Vector(a_vdVector);
    nuv::SolveChol(a_Factor.Count(), a_Factor.Data(), Vector.Data());
    EXPECT_TRUE(SameValues(vdBefore, a_Factor.Packed()));
    EXPECT_TRUE(a_Factor.RestIsUntouched());
    EXPECT_TRUE(Vector.IsIntact());
    return Vector.Values();
}

TValues SolvePacked(const TTriangle& a_Factor, TValues a_vdVector)
{
    nuv::SolveCholLowTri(a_Factor.Count(), a_Factor.Packed().data(), a_vdVector.data());
    return a_vdVector;
}

void ExpectSolution(const TValues& a_vdExpected, const TRows& a_Factor, const TValues& a_vdVector)
{
    EXPECT_TRUE(SameValues(a_vdExpected, SolveDense(Square(a_Factor), a_vdVector)));
}

// --- Cholesky

TEST(Cholesky, OfOneElementIsItsSquareRoot)
{
    ExpectFactors({{"4", {{4.0}}, true, {{2.0}}},
                   {"2", {{2.0}}, true, {{std::sqrt(2.0)}}},
                   {"0", {{0.0}}, true, {{0.0}}},
                   {"-0", {{-0.0}}, true, {{-0.0}}}, // -0 >= 0, and its root is -0
                   {"least", {{Subnormal}}, true, {{0x1p-537}}},
                   {"infinite", {{Inf}}, true, {{Inf}}},
                   {"negative", {{-Subnormal}}, false, {{-Subnormal}}}});
    ExpectFactors({{"NaN", {{NaN}}, false, {{NaN}}}}, false);
}

TEST(Cholesky, LeavesTheUpperElementAsItWas)
{
    double vdMatrix[] = {4.0, 9.0, 2.0, 5.0};
    EXPECT_TRUE(nuv::Cholesky(2, vdMatrix));
    const double vdExpected[] = {2.0, 9.0, 1.0, 2.0};
    EXPECT_TRUE(SameBits(vdExpected, vdMatrix, 4));
    double vdVector[] = {8.0, 13.0};
    nuv::SolveChol(2, vdMatrix, vdVector);
    EXPECT_TRUE(SameValues({0.875, 2.25}, TValues(vdVector, vdVector + 2)));
}

TEST(Cholesky, OfFewerThanOneUnknownIsTrueAndTouchesNothing)
{
    for (int iN : {0, -1, -46342, INT_MIN})
    {
        double dElement = -1.0;
        EXPECT_TRUE(nuv::Cholesky(iN, &dElement));
        EXPECT_SAME_BITS(-1.0, dElement);
        EXPECT_TRUE(nuv::Cholesky(iN, nullptr));
        nuv::SolveChol(iN, nullptr, &dElement);
        EXPECT_SAME_BITS(-1.0, dElement);
        nuv::SolveChol(iN, nullptr, nullptr);
    }
}

TEST(Cholesky, OfWholeNumbersIsExact)
{
    // L = [1; 2 3; -4 5 6; 7 -8 9 10]
    ExpectFactors({{"4 x 4",
                    {{1.0}, {2.0, 13.0}, {-4.0, 7.0, 77.0}, {7.0, -10.0, -14.0, 294.0}},
                    true,
                    {{1.0}, {2.0, 3.0}, {-4.0, 5.0, 6.0}, {7.0, -8.0, 9.0, 10.0}}}});
}

TEST(Cholesky, ScalesAColumnByTheReciprocalOfItsDiagonal)
{
    const double dReciprocal = 1.0 / 3.0;
    const double dScaled = dReciprocal * 5.0;
    ASSERT_NE(5.0 / 3.0, dScaled);
    ExpectFactors({{"3", {{9.0}, {5.0, 100.0}}, true, {{3.0}, {dScaled, std::sqrt(100.0 - dScaled * dScaled)}}}});
}

// 2^54 + 8 - 2^54 - 1.5^2. The square next to the diagonal comes first: 2^54 + 8 - 2.25 = 2^54 + 5.75 rounds to 2^54 +
// 4, and 4 is left. From the beginning of the row it would be 8 - 2.25 = 5.75.
TEST(Cholesky, SubtractsTheSquaresFromTheDiagonalBackToTheRowsBeginning)
{
    ExpectFactors(
        {{"3 x 3", {{1.0}, {0.0, 1.0}, {0x1p27, 1.5, 0x1p54 + 8.0}}, true, {{1.0}, {0.0, 1.0}, {0x1p27, 1.5, 2.0}}}});
}

// 2^53 + 1 + 2 in ascending order: 2^53 + 1 rounds to 2^53, and the result is 2^53 + 2. In descending order it would be
// 2^53 + 4.
TEST(Cholesky, SubtractsTheProductsOfAnElementFromTheFirstColumnOn)
{
    ExpectFactors({{"4 x 4",
                    {{1.0}, {0.0, 1.0}, {1.0, 1.0, 3.0}, {-1.0, -2.0, 0x1p53, -1.0}},
                    false,
                    {{1.0}, {0.0, 1.0}, {1.0, 1.0, 1.0}, {-1.0, -2.0, 0x1p53 + 2.0, -1.0}}}});
}

TEST(Cholesky, RoundsEveryProductBeforeItIsSubtracted)
{
    // (1 + 2^-27)^2 rounds to 1 + 2^-26, so nothing is left. With one rounding -2^-54 would be left, which fails.
    const double dElement = 1.0 + 0x1p-27;
    ExpectFactors({{"square", {{1.0}, {dElement, 1.0 + 0x1p-26}}, true, {{1.0}, {dElement, 0.0}}}});
    const double dTimes = dElement * (1.0 + 0x1p-26);
    ExpectFactors({{"product",
                    {{1.0}, {dElement, 5.0}, {1.0 + 0x1p-26, dTimes, 9.0}},
                    true,
                    {{1.0},
                     {dElement, std::sqrt(5.0 - dElement * dElement)},
                     {1.0 + 0x1p-26, 0.0, std::sqrt(9.0 - 0.0 - (1.0 + 0x1p-26) * (1.0 + 0x1p-26))}}}});
}

// The columns before the failing diagonal hold L. This diagonal and everything behind it still hold A.
TEST(Cholesky, FailsWithTheColumnsBeforeTheFailingDiagonalDone)
{
    ExpectFactors({{"first", {{-1.0}, {2.0, 5.0}, {3.0, 4.0, 6.0}}, false, {{-1.0}, {2.0, 5.0}, {3.0, 4.0, 6.0}}},
                   {"second", {{4.0}, {2.0, 0.5}, {6.0, 7.0, 9.0}}, false, {{2.0}, {1.0, 0.5}, {3.0, 7.0, 9.0}}},
                   {"third",
                    {{4.0}, {2.0, 5.0}, {6.0, 7.0, 12.0}, {2.0, 3.0, 5.0, 99.0}},
                    false,
                    {{2.0}, {1.0, 2.0}, {3.0, 2.0, 12.0}, {1.0, 1.0, 5.0, 99.0}}}}); // 12 - 4 - 9 = -1
}

TEST(Cholesky, FailsOnANaNDiagonal)
{
    ExpectFactors({{"first", {{NaN}, {2.0, 5.0}}, false, {{NaN}, {2.0, 5.0}}},
                   {"second", {{4.0}, {2.0, NaN}}, false, {{2.0}, {1.0, NaN}}},
                   {"by an element", {{4.0}, {NaN, 5.0}}, false, {{2.0}, {NaN, 5.0}}},
                   {"by infinities", {{4.0}, {Inf, Inf}}, false, {{2.0}, {Inf, Inf}}}},
                  false);
}

TEST(Cholesky, PassesAZeroRadicand)
{
    ExpectFactors({{"last", {{4.0}, {2.0, 1.0}}, true, {{2.0}, {1.0, 0.0}}},
                   {"first, positive below", {{0.0}, {2.0, 5.0}}, false, {{0.0}, {Inf, 5.0}}},
                   {"negative zero", {{-0.0}, {2.0, 5.0}}, false, {{-0.0}, {-Inf, 5.0}}}});
    ExpectFactors({{"first, zero below", {{0.0}, {0.0, 5.0}}, false, {{0.0}, {NaN, 5.0}}}}, false); // inf * 0
}

// --- SolveChol

TEST(SolveChol, SolvesSeveralRightHandSidesWithOneFactor)
{
    // A = L L^T of L = [1; 2 3; -4 5 6], x = (1, 2, 3) and (-2, 0, 5)
    const TRows Factor = {{1.0}, {2.0, 3.0}, {-4.0, 5.0, 6.0}};
    ExpectSolution({1.0, 2.0, 3.0}, Factor, {-7.0, 49.0, 241.0});
    ExpectSolution({-2.0, 0.0, 5.0}, Factor, {-22.0, 31.0, 393.0});
}

TEST(SolveChol, DividesByTheDiagonal)
{
    const double dForward = 5.0 / 3.0;
    ExpectSolution({dForward / 3.0}, {{3.0}}, {5.0});
    ASSERT_NE((1.0 / 3.0) * 5.0, dForward);
    const double d49 = 1.0 / 49.0;
    ASSERT_NE(d49 / 49.0, d49 * d49);
    ExpectSolution({d49 / 49.0}, {{49.0}}, {1.0});
}

// Only the last row has elements beside the diagonal. So each backward step has one term, and the last forward step has
// two. 2^53 + 1 rounds to 2^53, so the ascending order gives 2^53 + 2 and the descending one 2^53 + 4.
TEST(SolveChol, SubstitutesForwardInAscendingOrder)
{
    const TRows Factor = {{1.0}, {0.0, 1.0}, {-1.0, -1.0, 1.0}};
    const double dLast = 0x1p53 + 2.0;
    const TValues vdExpected = {1.0 + dLast, 2.0 + dLast, dLast};
    ExpectSolution(vdExpected, Factor, {1.0, 2.0, 0x1p53});
    EXPECT_TRUE(SameValues(vdExpected, SolvePacked(Square(Factor), {1.0, 2.0, 0x1p53})));
}

// Only the first column has elements below the diagonal, and y = (2^53, 1, 2). From row 1 downwards, 2^53 + 1 rounds to
// 2^53 and the sum is 2^53 + 2. From the last row upwards, 2^53 + 2 + 1 rounds to 2^53 + 4.
TEST(SolveChol, SubstitutesBackwardInAscendingOrderUnlikeThePackedForm)
{
    const TRows Factor = {{1.0}, {-1.0, 1.0}, {-1.0, 0.0, 1.0}};
    const TValues vdRight = {0x1p53, 1.0 - 0x1p53, 2.0 - 0x1p53};
    ExpectSolution({0x1p53 + 2.0, 1.0, 2.0}, Factor, vdRight);
    EXPECT_TRUE(SameValues({0x1p53 + 4.0, 1.0, 2.0}, SolvePacked(Square(Factor), vdRight)));
}

TEST(SolveChol, RoundsEveryProductBeforeItIsSubtracted)
{
    const double dElement = 1.0 + 0x1p-27;
    const double dSquare = 1.0 + 0x1p-26;
    // Forward: dSquare - dElement * dElement is 0, not -2^-54.
    ExpectSolution({dElement, 0.0}, {{1.0}, {dElement, 1.0}}, {dElement, dSquare});
    // Backward: y = (dSquare, dElement) from b = (dSquare, dElement + dElement * dSquare).
    const double dSecond = dElement * dSquare + dElement;
    const double dY = dSecond - dElement * dSquare;
    ASSERT_EQ(dElement, dY);
    ExpectSolution({0.0, dElement}, {{1.0}, {dElement, 1.0}}, {dSquare, dSecond});
}

TEST(SolveChol, DividesByAZeroDiagonalWithoutATest)
{
    ExpectSolution({-Inf, Inf}, {{2.0}, {1.0, 0.0}}, {2.0, 3.0});
    ExpectSolution({NaN, NaN}, {{2.0}, {1.0, 0.0}}, {2.0, 1.0});
}

TEST(SolveChol, NaNReachesWhatDependsOnIt)
{
    ExpectSolution({NaN, NaN}, {{1.0}, {0.0, 1.0}}, {1.0, NaN}); // 0 * NaN
    ExpectSolution({NaN, NaN}, {{1.0}, {1.0, 1.0}}, {NaN, 1.0});
}

// --- the packed twin

// G G^T of a random G, with a diagonal added so that it is well conditioned. With a_bFails one diagonal element is
// negative.
TRows RandomMatrix(std::mt19937_64& a_Random, std::size_t a_iN, bool a_bFails)
{
    std::uniform_real_distribution<double> Element(-1.0, 1.0);
    std::vector<TValues> Rows(a_iN, TValues(a_iN));
    for (TValues& vdRow : Rows)
    {
        for (double& dElement : vdRow)
        {
            dElement = Element(a_Random);
        }
    }
    TRows Lower(a_iN);
    for (std::size_t i = 0; i < a_iN; ++i)
    {
        for (std::size_t j = 0; j <= i; ++j)
        {
            double dSum = i == j ? 0.1 : 0.0;
            for (std::size_t k = 0; k < a_iN; ++k)
            {
                dSum += Rows[i][k] * Rows[j][k];
            }
            Lower[i].push_back(dSum);
        }
    }
    if (a_bFails)
    {
        const std::size_t iFailing = a_Random() % a_iN;
        Lower[iFailing][iFailing] = -1.0;
    }
    return Lower;
}

TEST(CholeskyTwins, FactorsAndFailuresHaveTheSameBits)
{
    std::mt19937_64 Random(4);
    for (int i = 0; i < CasesHere(1000); ++i)
    {
        const std::size_t iN = 1 + i % 70;
        const TRows Matrix = RandomMatrix(Random, iN, i % 3 == 0);
        TValues vdPacked = Packed(Matrix);
        const bool bPacked = nuv::CholeskyLowTri(static_cast<int>(iN), vdPacked.data());
        TTriangle Dense = Square(Matrix);
        ASSERT_EQ(bPacked, Quietly([&] { return nuv::Cholesky(Dense.Count(), Dense.Data()); }));
        ASSERT_EQ(i % 3 != 0, bPacked);
        ASSERT_TRUE(SameValues(vdPacked, Dense.Packed()));
        ASSERT_TRUE(Dense.RestIsUntouched());
    }
}

// For two unknowns the backward step has one term, and the solutions have the same bits. For more unknowns they
// sometimes differ in the last bits, by no more than the condition of the matrix allows.
TEST(CholeskyTwins, SolutionsDifferByTheOrderOfTheStepBackOnly)
{
    std::mt19937_64 Random(5);
    std::uniform_real_distribution<double> Element(-1.0, 1.0);
    int viDiffering[3] = {};
    for (int i = 0; i < 900; ++i)
    {
        const std::size_t iN = i % 3 == 0 ? 2 : i % 3 == 1 ? 3 : 12;
        TTriangle Matrix = Square(RandomMatrix(Random, iN, false));
        ASSERT_TRUE(nuv::Cholesky(Matrix.Count(), Matrix.Data()));
        TValues vdRight(iN);
        for (double& dRight : vdRight)
        {
            dRight = Element(Random);
        }
        const TValues vdDense = SolveDense(Matrix, vdRight);
        const TValues vdPacked = SolvePacked(Matrix, vdRight);
        viDiffering[i % 3] += vdDense == vdPacked ? 0 : 1;
        for (std::size_t j = 0; j < iN; ++j)
        {
            ASSERT_NEAR(vdPacked[j], vdDense[j], 1e-9 * (1.0 + std::fabs(vdPacked[j])));
        }
    }
    EXPECT_EQ(0, viDiffering[0]);
    EXPECT_GT(viDiffering[1], 0);
    EXPECT_GT(viDiffering[2], 100);
}

// --- the upper triangle and the size

#if defined(__unix__)

// A row takes two pages. In the upper half of the rows, the second page holds only elements above the diagonal. Such
// pages are locked, so that even a read without arithmetic ends the process.
TEST(CholeskyUpperTriangleSlow, IsNotEvenRead)
{
    const std::size_t iPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / sizeof(double);
    const std::size_t iN = Emulated ? iPage + iPage / 4 : 2 * iPage;
    if (iN > 1024)
    {
        GTEST_SKIP() << "pages too large for a quick factorisation";
    }
    TReservedMemory Matrix(iN * iN);
    ASSERT_TRUE(Matrix.IsReserved());
    for (std::size_t i = 0; i < iN; ++i)
    {
        Matrix.Data()[i * iN + i] = 4.0; // 4 on the diagonal, 2 before it: L has 2, 1, then sqrt(3), ...
        if (i > 0)
        {
            Matrix.Data()[i * iN + i - 1] = 2.0;
        }
    }
    std::size_t iProtected = 0;
    for (std::size_t iFirst = 0; iFirst < iN * iN; iFirst += iPage) // of a page
    {
        const std::size_t iRow = iFirst / iN;
        if (iFirst % iN > iRow && iFirst % iN + iPage <= iN)
        {
            ASSERT_EQ(0, mprotect(Matrix.Data() + iFirst, iPage * sizeof(double), PROT_NONE));
            ++iProtected;
        }
    }
    ASSERT_GT(iProtected, iPage / 20);
    ASSERT_TRUE(nuv::Cholesky(static_cast<int>(iN), Matrix.Data()));
    EXPECT_SAME_BITS(2.0, Matrix.Data()[0]);
    EXPECT_SAME_BITS(1.0, Matrix.Data()[iN]);
    EXPECT_SAME_BITS(std::sqrt(3.0), Matrix.Data()[iN + 1]);
    TValues vdVector(iN, 0.0);
    vdVector[0] = 2.0;
    nuv::SolveChol(static_cast<int>(iN), Matrix.Data(), vdVector.data());
    EXPECT_NEAR(2.0, 4.0 * vdVector[0] + 2.0 * vdVector[1], 1e-12); // the first equation
}

// The last row begins at 46341 * 46342, which is beyond int. The first column is computed; the second diagonal fails.
TEST(CholeskySizeSlow, RowsBeyondTheRangeOfIntAreReached)
{
    const std::size_t iN = 46342;
    TReservedMemory Matrix(sizeof(void*) > 4 ? iN * iN : 1);
    if (sizeof(void*) <= 4 || !Matrix.IsReserved())
    {
        GTEST_SKIP() << "no address space for 17 GB";
    }
    double* const vdLast = Matrix.Data() + (iN - 1) * iN;
    Matrix.Data()[0] = 4.0;
    Matrix.Data()[iN + 1] = -1.0;
    vdLast[0] = 6.0;
    EXPECT_FALSE(nuv::Cholesky(static_cast<int>(iN), Matrix.Data()));
    EXPECT_SAME_BITS(2.0, Matrix.Data()[0]);
    EXPECT_SAME_BITS(3.0, vdLast[0]);
    EXPECT_SAME_BITS(-1.0, Matrix.Data()[iN + 1]);
}

#endif

} // namespace
