// packed_cholesky_test.cpp: Cholesky factorisation and solution in packed lower-triangular storage.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/expect.h"

#include <algorithm>
#include <climits>
#include <numeric>

namespace {

using namespace nuv_tests;
using TValues = std::vector<double>;

struct TFactorCase
{
    const char* szName;
    int iUnknowns;
    TValues vdBefore;
    bool bResult;
    TValues vdAfter;
};

void ExpectFactors(const std::vector<TFactorCase>& a_Cases)
{
    for (const TFactorCase& Case : a_Cases)
    {
        SCOPED_TRACE(Case.szName);
        TGuardedArray Matrix(Case.vdBefore);
        EXPECT_EQ(Case.bResult, nuv::CholeskyLowTri(Case.iUnknowns, Matrix.Data()));
        EXPECT_TRUE(SameValues(Case.vdAfter, Matrix));
    }
}

struct TSolveCase
{
    const char* szName;
    int iUnknowns;
    TValues vdFactor;
    TValues vdBefore;
    TValues vdAfter;
};

void ExpectSolutions(const std::vector<TSolveCase>& a_Cases)
{
    for (const TSolveCase& Case : a_Cases)
    {
        SCOPED_TRACE(Case.szName);
        TGuardedArray Factor(Case.vdFactor);
        TGuardedArray Vector(Case.vdBefore);
        nuv::SolveCholLowTri(Case.iUnknowns, Factor.Data(), Vector.Data());
        EXPECT_TRUE(SameValues(Case.vdAfter, Vector));
        EXPECT_TRUE(SameValues(Case.vdFactor, Factor));
    }
}

const double Big = 0x1p53; // from here on to 2^54, doubles are the even whole numbers

// --- CholeskyLowTri

TEST(CholeskyLowTri, FactorsOfWholeNumbersAreExact)
{
    ExpectFactors({
        {"2 x 2", 2, {4.0, 2.0, 5.0}, true, {2.0, 1.0, 2.0}},
        {"3 x 3", 3, {4.0, 2.0, 5.0, 6.0, 7.0, 14.0}, true, {2.0, 1.0, 2.0, 3.0, 2.0, 1.0}},
        {"diagonal", 3, {1.0, 0.0, 9.0, 0.0, 0.0, 0.25}, true, {1.0, 0.0, 3.0, 0.0, 0.0, 0.5}},
    });
}

TEST(CholeskyLowTri, OneUnknownGetsItsSquareRootOrFails)
{
    ExpectFactors({
        {"square", 1, {9.0}, true, {3.0}},
        {"two", 1, {2.0}, true, {0x1.6a09e667f3bcdp+0}},
        {"negative", 1, {-9.0}, false, {-9.0}},
        {"smallest negative", 1, {-Subnormal}, false, {-Subnormal}},
        {"zero", 1, {0.0}, true, {0.0}},
        {"negative zero", 1, {-0.0}, true, {-0.0}},
        {"subnormal", 1, {Subnormal}, true, {0x1p-537}},
        {"infinite", 1, {Inf}, true, {Inf}},
        {"minus infinite", 1, {-Inf}, false, {-Inf}},
        {"NaN", 1, {NaN}, false, {NaN}},
    });
}

TEST(CholeskyLowTri, CountsBelowOneAreTrueAndTouchNothing)
{
    ExpectFactors({{"0", 0, {-1.0}, true, {-1.0}},
                   {"-1", -1, {-1.0}, true, {-1.0}},
                   {"least int", INT_MIN, {-1.0}, true, {-1.0}}});
    EXPECT_TRUE(nuv::CholeskyLowTri(0, nullptr));
    EXPECT_TRUE(nuv::CholeskyLowTri(-5, nullptr));
}

TEST(CholeskyLowTri, ANegativeDiagonalAtRowZeroFailsWithTheArrayUnchanged)
{
    ExpectFactors({{"3 x 3", 3, {-4.0, 2.0, 5.0, 6.0, 7.0, 14.0}, false, {-4.0, 2.0, 5.0, 6.0, 7.0, 14.0}}});
}

TEST(CholeskyLowTri, AFailureLeavesTheColumnsBeforeItAsLAndTheRestAsItWas)
{
    // The failing diagonal keeps its value: the radicands -1 and -12 are not stored.
    ExpectFactors({
        {"row 1", 3, {4.0, 2.0, 0.0, 6.0, 7.0, 14.0}, false, {2.0, 1.0, 0.0, 3.0, 7.0, 14.0}},
        {"row 2", 3, {4.0, 2.0, 5.0, 6.0, 7.0, 1.0}, false, {2.0, 1.0, 2.0, 3.0, 2.0, 1.0}},
        {"row 1 of 4",
         4,
         {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0},
         false,
         {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0}},
        {"one unit in the last place below zero", 2, {1.0, 1.0, BelowTolerance}, false, {1.0, 1.0, BelowTolerance}},
    });
}

TEST(CholeskyLowTri, ANotANumberRadicandFails)
{
    ExpectFactors({
        {"diagonal", 2, {4.0, 2.0, NaN}, false, {2.0, 1.0, NaN}},
        {"below the diagonal", 3, {4.0, NaN, 5.0, 6.0, 7.0, 14.0}, false, {2.0, NaN, 5.0, 3.0, 7.0, 14.0}},
        {"infinite column", 2, {1.0, Inf, Inf}, false, {1.0, Inf, Inf}},
    });
}

TEST(CholeskyLowTri, InfiniteElementsRunThroughTheArithmetic)
{
    ExpectFactors({
        {"finite below an infinite diagonal", 2, {Inf, 2.0, 9.0}, true, {Inf, 0.0, 3.0}},
        {"infinite last diagonal", 2, {4.0, 2.0, Inf}, true, {2.0, 1.0, Inf}},
        {"infinite below the diagonal", 2, {4.0, -Inf, 9.0}, false, {2.0, -Inf, 9.0}},
        {"both infinite", 2, {Inf, Inf, 9.0}, false, {Inf, NaN, 9.0}},
    });
}

TEST(CholeskyLowTri, ALastRadicandOfExactlyZeroIsTrue)
{
    ExpectFactors({{"2 x 2", 2, {4.0, 2.0, 1.0}, true, {2.0, 1.0, 0.0}},
                   {"3 x 3", 3, {4.0, 2.0, 5.0, 6.0, 7.0, 13.0}, true, {2.0, 1.0, 2.0, 3.0, 2.0, 0.0}}});
}

TEST(CholeskyLowTri, AnEarlierRadicandOfExactlyZeroMakesItsColumnInfiniteOrNotANumberAndTheNextFails)
{
    ExpectFactors({
        {"infinite", 2, {0.0, 1.0, 1.0}, false, {0.0, Inf, 1.0}},
        {"negative zero", 2, {-0.0, 1.0, 1.0}, false, {-0.0, -Inf, 1.0}},
        {"not a number", 2, {0.0, 0.0, 1.0}, false, {0.0, NaN, 1.0}},
        {"before an infinite diagonal", 2, {0.0, 1.0, Inf}, false, {0.0, Inf, Inf}}, // inf - inf
        {"second row", 3, {1.0, 1.0, 1.0, 2.0, 5.0, 9.0}, false, {1.0, 1.0, 0.0, 2.0, Inf, 9.0}},
    });
}

TEST(CholeskyLowTri, ADiagonalTakesTheSquaresFromTheDiagonalBack)
{
    // 9*2^50 + 10 - (3*2^25)^2 - 1^2 = 9; the other way round 9*2^50 + 9 is a tie and rounds to ... + 8.
    const double dSquare = 9.0 * 0x1p50;
    const double dRoot = 3.0 * 0x1p25;
    ExpectFactors({{"3 x 3", 3, {1.0, 0.0, 1.0, 1.0, dRoot, dSquare + 10.0}, true, {1.0, 0.0, 1.0, 1.0, dRoot, 3.0}}});
}

TEST(CholeskyLowTri, AColumnTakesItsProductsFromTheFirstColumnOn)
{
    // 2^53 + 6 - 1 is a tie and rounds to 2^53 + 4, less 2^53 is 4; the other way round it would be 5.
    const double dLast = 5.0 * 0x1p106; // less 2^106 is (2^54)^2; the other squares are below its last place
    ExpectFactors({{"4 x 4",
                    4,
                    {1.0, 0.0, 1.0, 1.0, 1.0, 3.0, 1.0, Big, Big + 6.0, dLast},
                    true,
                    {1.0, 0.0, 1.0, 1.0, 1.0, 1.0, 1.0, Big, 4.0, 0x1p54}}});
}

TEST(CholeskyLowTri, AColumnIsMultipliedByTheReciprocalOfItsDiagonal)
{
    const double dThird = 1.0 / Opaque(3.0);
    const double dProduct = dThird * Opaque(5.0);
    ASSERT_NE(Opaque(5.0) / 3.0, dProduct);
    const double dRadicand = 9.0 - dProduct * dProduct;
    ExpectFactors({{"2 x 2", 2, {9.0, 5.0, 9.0}, true, {3.0, dProduct, std::sqrt(dRadicand)}}});
}

TEST(CholeskyLowTri, NeitherProductsNorSumsAreContracted)
{
    // (1 + 2^-27)^2 rounds to 1 + 2^-26: the radicand is exactly 0. With one rounding it would be -2^-54 and fail.
    const double dRoot = 1.0 + 0x1p-27;
    const double dSquare = 1.0 + 0x1p-26;
    ExpectFactors({{"2 x 2", 2, {1.0, dRoot, dSquare}, true, {1.0, dRoot, 0.0}},
                   // N(2,1) - L(2,0) L(1,0) is exactly 0
                   {"3 x 3",
                    3,
                    {1.0, dRoot, dSquare + 1.0, dRoot, dSquare, dSquare + 1.0},
                    true,
                    {1.0, dRoot, 1.0, dRoot, 0.0, 1.0}}});
}

// --- SolveCholLowTri

TEST(SolveCholLowTri, SolutionsOfWholeNumbersAreExact)
{
    ExpectSolutions({
        {"2 x 2", 2, {2.0, 1.0, 2.0}, {8.0, 13.0}, {0.875, 2.25}},
        // L y = u gives y = (4, 2, 8); L^T x = y gives x2 = 8, x1 = (2 - 16)/2, x0 = (4 - 24 + 7)/2
        {"3 x 3", 3, {2.0, 1.0, 2.0, 3.0, 2.0, 1.0}, {8.0, 8.0, 24.0}, {-6.5, -7.0, 8.0}},
    });
}

TEST(SolveCholLowTri, OneUnknownIsDividedTwiceByTheRoot)
{
    const double dOnce = Opaque(5.0) / 3.0;
    ASSERT_NE((1.0 / Opaque(3.0)) * 5.0, dOnce); // a reciprocal would show
    const double dRoot = 0x1.6a09e667f3bcdp+0;   // of 2
    const double dTwice = Opaque(3.0) / dRoot / dRoot;
    ASSERT_NE(1.5, dTwice); // as would one division by the square
    ExpectSolutions({
        {"by 3", 1, {3.0}, {18.0}, {2.0}},
        {"rounded", 1, {3.0}, {5.0}, {dOnce / 3.0}},
        {"rounded by the second division", 1, {3.0}, {15.0}, {dOnce}},
        {"root of 2", 1, {dRoot}, {3.0}, {dTwice}},
        {"by zero", 1, {0.0}, {1.0}, {Inf}},
        {"zero by zero", 1, {0.0}, {0.0}, {NaN}},
        {"by negative zero", 1, {-0.0}, {1.0}, {Inf}}, // twice negated
        {"by infinity", 1, {Inf}, {1.0}, {0.0}},
        {"negative zero", 1, {2.0}, {-0.0}, {-0.0}},
        {"subnormal", 1, {2.0}, {8.0 * Subnormal}, {2.0 * Subnormal}},
        {"infinite", 1, {2.0}, {-Inf}, {-Inf}},
        {"not a number", 1, {2.0}, {NaN}, {NaN}},
    });
}

TEST(SolveCholLowTri, CountsBelowOneTouchNothing)
{
    ExpectSolutions(
        {{"0", 0, {2.0}, {3.0}, {3.0}}, {"-1", -1, {2.0}, {3.0}, {3.0}}, {"least int", INT_MIN, {2.0}, {3.0}, {3.0}}});
    nuv::SolveCholLowTri(0, nullptr, nullptr);
    nuv::SolveCholLowTri(-5, nullptr, nullptr);
}

TEST(SolveCholLowTri, TheForwardSumRunsFromTheFirstColumnOn)
{
    // y = (1, 2^53, 4): 2^53 + 6 - 1 rounds to 2^53 + 4; the other way round y2 would be 5.
    // x2 = 4, x1 = 2^53 - 4, x0 = 1 - 4.
    ExpectSolutions({{"3 x 3", 3, {1.0, 0.0, 1.0, 1.0, 1.0, 1.0}, {1.0, Big, Big + 6.0}, {-3.0, Big - 4.0, 4.0}}});
}

TEST(SolveCholLowTri, TheBackwardSumRunsFromTheLastRowUpwards)
{
    // y = (2^53 + 6, 2^53 + 2, 1), x2 = 0.5, x1 = 2^53 + 2: 2^53 + 6 - 0.5 rounds back to 2^53 + 6, which leaves 4;
    // the other way round x0 would be 3.5.
    ExpectSolutions(
        {{"3 x 3", 3, {1.0, 1.0, 1.0, 1.0, 0.0, 2.0}, {Big + 6.0, 2.0 * Big + 8.0, Big + 8.0}, {4.0, Big + 2.0, 0.5}}});
}

TEST(SolveCholLowTri, NeitherProductsNorSumsAreContracted)
{
    // Forward: 1 + 2^-26 less the rounded square of 1 + 2^-27 is 0. Backward: the same, with x1 = 1 + 2^-27.
    const double dRoot = 1.0 + 0x1p-27;
    const double dSquare = 1.0 + 0x1p-26;
    ExpectSolutions({{"forward", 2, {1.0, dRoot, 1.0}, {dRoot, dSquare}, {dRoot, 0.0}},
                     {"backward", 2, {1.0, dRoot, 1.0}, {dSquare, 2.0 + 0x1p-25}, {0.0, dRoot}}});
}

TEST(SolveCholLowTri, AZeroLastDiagonalDividesByZero)
{
    ExpectSolutions({{"inconsistent", 2, {2.0, 1.0, 0.0}, {2.0, 3.0}, {-Inf, Inf}},
                     {"consistent", 2, {2.0, 1.0, 0.0}, {2.0, 1.0}, {NaN, NaN}}});
}

TEST(SolveCholLowTri, SpecialValuesInTheVectorReachWhatDependsOnThem)
{
    const TValues vdDiagonalThenCoupled = {1.0, 0.0, 1.0, 0.0, 1.0, 1.0}; // unknown 0 stands alone but for 0 products
    ExpectSolutions({
        {"NaN first", 3, vdDiagonalThenCoupled, {NaN, 2.0, 3.0}, {NaN, NaN, NaN}},
        {"infinite first", 3, vdDiagonalThenCoupled, {Inf, 2.0, 3.0}, {NaN, NaN, NaN}}, // 0 * inf
        {"negative zeros", 2, {1.0, 1.0, 1.0}, {-0.0, -0.0}, {-0.0, 0.0}},              // -0 - 1 * -0 = +0
    });
}

TEST(SolveCholLowTri, OneFactorSolvesAnyNumberOfVectors)
{
    TGuardedArray Matrix({4.0, 2.0, 5.0});
    ASSERT_TRUE(nuv::CholeskyLowTri(2, Matrix.Data()));
    for (double dScale : {1.0, -2.0, 1024.0})
    {
        TGuardedArray Vector({8.0 * dScale, 13.0 * dScale});
        nuv::SolveCholLowTri(2, Matrix.Data(), Vector.Data());
        EXPECT_TRUE(SameValues({0.875 * dScale, 2.25 * dScale}, Vector));
    }
    EXPECT_TRUE(SameValues({2.0, 1.0, 2.0}, Matrix));
}

} // namespace
