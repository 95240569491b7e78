// packed_cholesky_test.cpp: normal equations and Cholesky factorisation in packed lower-triangular storage.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "testing.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <numeric>

#if defined(__unix__)
#include <sys/mman.h>
#endif

namespace {

using namespace nuv_tests;
using TValues = std::vector<double>;

// Values between two guard elements. Not a null pointer for no values, and a write beside them is seen.
class TGuarded
{
public:
    explicit TGuarded(const TValues& a_vdValues) : m_vdAll(1, Untouched)
    {
        m_vdAll.insert(m_vdAll.end(), a_vdValues.begin(), a_vdValues.end());
        m_vdAll.push_back(Untouched);
    }

    double* Data()
    {
        return m_vdAll.data() + 1;
    }

    ::testing::AssertionResult Holds(const TValues& a_vdExpected) const
    {
        TGuarded Expected(a_vdExpected);
        if (Expected.m_vdAll.size() != m_vdAll.size())
        {
            return ::testing::AssertionFailure() << "expected " << a_vdExpected.size() << " values";
        }
        for (std::size_t i = 0; i < m_vdAll.size(); ++i)
        {
            if (!SameBits(Expected.m_vdAll[i], m_vdAll[i]))
            {
                return ::testing::AssertionFailure() << "element " << static_cast<int>(i) - 1 << " is "
                                                     << HexText(m_vdAll[i]) << ", not " << HexText(Expected.m_vdAll[i]);
            }
        }
        return ::testing::AssertionSuccess();
    }

private:
    TValues m_vdAll;
};

// Normal equations, filled with zeros at first.
struct TEquations
{
    explicit TEquations(int a_iUnknowns)
        : Matrix(TValues(static_cast<std::size_t>(a_iUnknowns) * (a_iUnknowns + 1) / 2, 0.0)),
          Vector(TValues(a_iUnknowns, 0.0))
    {}

    TEquations(const TValues& a_vdMatrix, const TValues& a_vdVector) : Matrix(a_vdMatrix), Vector(a_vdVector)
    {}

    void Dense(const TValues& a_vdRow, double a_dValue)
    {
        nuv::UpdateNormMatrixLowTri(static_cast<int>(a_vdRow.size()), Matrix.Data(), Vector.Data(), a_vdRow.data(),
                                    a_dValue);
    }

    void Sparse(int a_iUnknowns, const TValues& a_vdValues, const std::vector<int>& a_viIndices, double a_dValue)
    {
        nuv::UpdateNormMatrixLowTri(a_iUnknowns, Matrix.Data(), Vector.Data(), static_cast<int>(a_vdValues.size()),
                                    a_vdValues.data(), a_viIndices.data(), a_dValue);
    }

    ::testing::AssertionResult Hold(const TValues& a_vdMatrix, const TValues& a_vdVector) const
    {
        const ::testing::AssertionResult Result = Matrix.Holds(a_vdMatrix);
        return Result ? Vector.Holds(a_vdVector) : Result;
    }

    TGuarded Matrix;
    TGuarded Vector;
};

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
        TGuarded Matrix(Case.vdBefore);
        EXPECT_EQ(Case.bResult, nuv::CholeskyLowTri(Case.iUnknowns, Matrix.Data()));
        EXPECT_TRUE(Matrix.Holds(Case.vdAfter));
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
        TGuarded Factor(Case.vdFactor);
        TGuarded Vector(Case.vdBefore);
        nuv::SolveCholLowTri(Case.iUnknowns, Factor.Data(), Vector.Data());
        EXPECT_TRUE(Vector.Holds(Case.vdAfter));
        EXPECT_TRUE(Factor.Holds(Case.vdFactor));
    }
}

const double Big = 0x1p53; // from here on to 2^54, doubles are the even whole numbers

// --- InitCholLowTri, DeleteCholLowTri
// ---------------------------------------------------------------------------------

TEST(InitCholLowTri, GivesAZeroedMatrixAndAZeroedVectorForEvenAndOddCounts)
{
    for (int iUnknowns : {1, 2, 3, 8, 9, 100})
    {
        SCOPED_TRACE(iUnknowns);
        double* vdMatrix = nullptr;
        double* vdVector = nullptr;
        nuv::InitCholLowTri(iUnknowns, &vdMatrix, &vdVector);
        ASSERT_NE(nullptr, vdMatrix);
        ASSERT_NE(nullptr, vdVector);
        const auto IsPlusZero = [](double a_dValue) { return SameBits(0.0, a_dValue); };
        EXPECT_TRUE(std::all_of(vdMatrix, vdMatrix + iUnknowns * (iUnknowns + 1) / 2, IsPlusZero));
        EXPECT_TRUE(std::all_of(vdVector, vdVector + iUnknowns, IsPlusZero));
        nuv::DeleteCholLowTri(vdMatrix, vdVector);
    }
}

TEST(InitCholLowTri, ZeroAndNegativeCountsGiveWhatCanBeReleased)
{
    for (int iUnknowns : {0, -1, -2, INT_MIN})
    {
        double Stale = 0.0;
        double* vdMatrix = &Stale;
        double* vdVector = &Stale;
        nuv::InitCholLowTri(iUnknowns, &vdMatrix, &vdVector);
        EXPECT_NE(&Stale, vdMatrix);
        EXPECT_NE(&Stale, vdVector);
        nuv::DeleteCholLowTri(vdMatrix, vdVector);
    }
}

TEST(InitCholLowTri, GivesArraysThatCarryAWholeSolution)
{
    double* vdMatrix = nullptr;
    double* vdVector = nullptr;
    nuv::InitCholLowTri(2, &vdMatrix, &vdVector);
    const double vdFirst[] = {1.0, 1.0};
    const double vdSecond[] = {1.0, -1.0};
    nuv::UpdateNormMatrixLowTri(2, vdMatrix, vdVector, vdFirst, 5.0);
    nuv::UpdateNormMatrixLowTri(2, vdMatrix, vdVector, vdSecond, 1.0);
    nuv::UpdateNormMatrixLowTri(2, vdMatrix, vdVector, vdFirst, 5.0);
    nuv::UpdateNormMatrixLowTri(2, vdMatrix, vdVector, vdSecond, 1.0);
    ASSERT_TRUE(nuv::CholeskyLowTri(2, vdMatrix)); // N = diag(4, 4)
    nuv::SolveCholLowTri(2, vdMatrix, vdVector);
    EXPECT_SAME_BITS(3.0, vdVector[0]);
    EXPECT_SAME_BITS(2.0, vdVector[1]);
    nuv::DeleteCholLowTri(vdMatrix, vdVector);
}

TEST(DeleteCholLowTri, NullPointersAreHarmless)
{
    nuv::DeleteCholLowTri(nullptr, nullptr);
    double* vdMatrix = nullptr;
    double* vdVector = nullptr;
    nuv::InitCholLowTri(3, &vdMatrix, &vdVector);
    nuv::DeleteCholLowTri(vdMatrix, nullptr);
    nuv::DeleteCholLowTri(nullptr, vdVector);
}

// --- UpdateNormMatrixLowTri, dense
// ------------------------------------------------------------------------------------

TEST(DenseUpdate, AddsTheOuterProductOfTheRowAndTheRowTimesTheValue)
{
    TEquations Equations(3);
    Equations.Dense({1.0, 2.0, 3.0}, 4.0);
    EXPECT_TRUE(Equations.Hold({1.0, 2.0, 4.0, 3.0, 6.0, 9.0}, {4.0, 8.0, 12.0}));
    Equations.Dense({-1.0, 0.5, 2.0}, 8.0);
    EXPECT_TRUE(Equations.Hold({2.0, 1.5, 4.25, 1.0, 7.0, 13.0}, {-4.0, 12.0, 28.0}));
}

TEST(DenseUpdate, RoundsTheProductBeforeItIsAdded)
{
    // (1 + 2^-27)^2 = 1 + 2^-26 + 2^-54 rounds to 1 + 2^-26, which the sum cancels; one rounding would leave 2^-54.
    const double dRoot = 1.0 + 0x1p-27;
    const double dSquare = 1.0 + 0x1p-26;
    TEquations Equations({-dSquare}, {-dSquare});
    Equations.Dense({Opaque(dRoot)}, Opaque(dRoot));
    EXPECT_TRUE(Equations.Hold({0.0}, {0.0}));
    TEquations Sparse({-dSquare}, {-dSquare});
    Sparse.Sparse(1, {Opaque(dRoot)}, {0}, Opaque(dRoot));
    EXPECT_TRUE(Sparse.Hold({0.0}, {0.0}));
}

TEST(DenseUpdate, CountsBelowOneTouchNothing)
{
    for (int iUnknowns : {0, -1, INT_MIN})
    {
        TEquations Equations({1.0}, {2.0});
        const double dRow = 3.0;
        nuv::UpdateNormMatrixLowTri(iUnknowns, Equations.Matrix.Data(), Equations.Vector.Data(), &dRow, 4.0);
        EXPECT_TRUE(Equations.Hold({1.0}, {2.0}));
        nuv::UpdateNormMatrixLowTri(iUnknowns, nullptr, nullptr, nullptr, 4.0);
    }
}

TEST(DenseUpdate, AllZeroCoefficientsOnlyAddZeroProducts)
{
    TEquations Equations({1.0, -0.0, Subnormal}, {-0.0, 7.0});
    Equations.Dense({0.0, 0.0}, 5.0);
    EXPECT_TRUE(Equations.Hold({1.0, 0.0, Subnormal}, {0.0, 7.0})); // -0 + 0 = +0
    Equations.Dense({0.0, 0.0}, Inf);
    EXPECT_TRUE(Equations.Hold({1.0, 0.0, Subnormal}, {NaN, NaN})); // 0 * inf
}

TEST(DenseUpdate, NegativeZeroCoefficientsKeepTheSignOfZeroSums)
{
    TEquations Equations({-0.0, -0.0, -0.0}, {-0.0, -0.0});
    Equations.Dense({-0.0, 1.0}, -0.0);
    EXPECT_TRUE(Equations.Hold({0.0, -0.0, 1.0}, {0.0, -0.0}));
}

TEST(DenseUpdate, SpecialCoefficientsReachTheirRowAndColumnOnly)
{
    const struct
    {
        double dCoefficient;
        TValues vdMatrix;
        TValues vdVector;
    } Cases[] = {
        {NaN, {1.0, NaN, NaN, 2.0, NaN, 4.0}, {3.0, NaN, 6.0}},
        {Inf, {1.0, Inf, Inf, 2.0, Inf, 4.0}, {3.0, Inf, 6.0}},
        {-Inf, {1.0, -Inf, Inf, 2.0, -Inf, 4.0}, {3.0, -Inf, 6.0}},
        {Subnormal, {1.0, Subnormal, 0.0, 2.0, 2.0 * Subnormal, 4.0}, {3.0, 3.0 * Subnormal, 6.0}},
        {-0.0, {1.0, 0.0, 0.0, 2.0, 0.0, 4.0}, {3.0, 0.0, 6.0}},
    };
    for (const auto& Case : Cases)
    {
        SCOPED_TRACE(HexText(Case.dCoefficient));
        TEquations Equations(3);
        Equations.Dense({1.0, Case.dCoefficient, 2.0}, 3.0);
        EXPECT_TRUE(Equations.Hold(Case.vdMatrix, Case.vdVector));
    }
}

TEST(DenseUpdate, SpecialObservedValuesReachTheVectorOnly)
{
    for (double dValue : {NaN, Inf, -Inf, Subnormal, -0.0})
    {
        SCOPED_TRACE(HexText(dValue));
        TEquations Equations(2);
        Equations.Dense({1.0, 2.0}, dValue);
        EXPECT_TRUE(Equations.Hold({1.0, 2.0, 4.0}, {0.0 + dValue, 0.0 + 2.0 * dValue}));
    }
}

// --- UpdateNormMatrixLowTri, sparse
// -----------------------------------------------------------------------------------

TEST(SparseUpdate, DescendingAndUnsortedIndicesFillTheElementsOfTheAscendingOnes)
{
    const struct
    {
        TValues vdValues;
        std::vector<int> viIndices;
    } Cases[] = {
        {{2.0, 3.0, 5.0}, {0, 2, 3}},
        {{5.0, 3.0, 2.0}, {3, 2, 0}},
        {{3.0, 5.0, 2.0}, {2, 3, 0}},
        {{5.0, 2.0, 3.0}, {3, 0, 2}},
    };
    for (const auto& Case : Cases)
    {
        TEquations Equations(4);
        Equations.Sparse(4, Case.vdValues, Case.viIndices, 7.0);
        EXPECT_TRUE(Equations.Hold({4.0, 0.0, 0.0, 6.0, 0.0, 9.0, 10.0, 0.0, 15.0, 25.0}, {14.0, 0.0, 21.0, 35.0}));
    }
}

TEST(SparseUpdate, TouchesNoElementOfAnotherColumn)
{
    TEquations Equations({-0.0, -0.0, -0.0, -0.0, -0.0, -0.0}, {-0.0, -0.0, -0.0});
    Equations.Sparse(3, {2.0}, {1}, 3.0);
    EXPECT_TRUE(Equations.Hold({-0.0, -0.0, 4.0, -0.0, -0.0, -0.0}, {-0.0, 6.0, -0.0}));
}

TEST(SparseUpdate, AllIndicesNegativeChangesNothing)
{
    TEquations Equations({-0.0, 1.0, 2.0}, {-0.0, 3.0});
    Equations.Sparse(2, {4.0, NaN, Inf}, {-1, -2, INT_MIN}, 5.0);
    EXPECT_TRUE(Equations.Hold({-0.0, 1.0, 2.0}, {-0.0, 3.0}));
}

TEST(SparseUpdate, ANegativeIndexSkipsItsEntryAndNoOther)
{
    const struct
    {
        TValues vdValues;
        std::vector<int> viIndices;
    } Cases[] = {
        {{NaN, 2.0, 3.0}, {-1, 0, 2}},
        {{2.0, NaN, 3.0}, {0, -1, 2}},
        {{2.0, 3.0, NaN}, {0, 2, -7}},
    };
    for (const auto& Case : Cases)
    {
        TEquations Equations(3);
        Equations.Sparse(3, Case.vdValues, Case.viIndices, 5.0);
        EXPECT_TRUE(Equations.Hold({4.0, 0.0, 0.0, 6.0, 0.0, 9.0}, {10.0, 0.0, 15.0}));
    }
}

TEST(SparseUpdate, CountsBelowOneTouchNothing)
{
    const double dValue = 3.0;
    const int iIndex = 0;
    for (int iCount : {0, -1, INT_MIN})
    {
        TEquations Equations({1.0}, {2.0});
        nuv::UpdateNormMatrixLowTri(1, Equations.Matrix.Data(), Equations.Vector.Data(), iCount, &dValue, &iIndex, 4.0);
        EXPECT_TRUE(Equations.Hold({1.0}, {2.0}));
        nuv::UpdateNormMatrixLowTri(1, nullptr, nullptr, iCount, nullptr, nullptr, 4.0);
    }
}

TEST(SparseUpdate, ARepeatedIndexIsNotMerged)
{
    // Squares 4 and 9 and the product 6 once; the dense row of the sum 5 would give 25.
    TEquations Twice(2);
    Twice.Sparse(2, {2.0, 3.0}, {1, 1}, 7.0);
    EXPECT_TRUE(Twice.Hold({0.0, 0.0, 19.0}, {0.0, 35.0}));
    TEquations Dense(2);
    Dense.Dense({0.0, 5.0}, 7.0);
    EXPECT_TRUE(Dense.Hold({0.0, 0.0, 25.0}, {0.0, 35.0}));

    // Off the diagonal nothing is lost: 2*11 + 3*11.
    TEquations Beside(2);
    Beside.Sparse(2, {2.0, 11.0, 3.0}, {1, 0, 1}, 7.0);
    EXPECT_TRUE(Beside.Hold({121.0, 55.0, 19.0}, {77.0, 35.0}));

    // Three of one index: squares 4, 9, 25, products 6, 10, 15 once each.
    TEquations Thrice(1);
    Thrice.Sparse(1, {2.0, 3.0, 5.0}, {0, 0, 0}, 1.0);
    EXPECT_TRUE(Thrice.Hold({69.0}, {10.0}));
}

TEST(SparseUpdate, RepeatedIndicesAddTheirProductsInTheOrderOfTheEntries)
{
    // 2^53 + 4 + 2 + 1 = 2^53 + 8 with a tie to even at the end; 2^53 + 4 + 1 + 2 would be 2^53 + 6.
    TEquations Equations({Big}, {0.0});
    Equations.Sparse(1, {2.0, 1.0}, {0, 0}, 0.0);
    EXPECT_TRUE(Equations.Hold({Big + 8.0}, {0.0}));
}

TEST(SparseUpdate, TheNumberOfUnknownsIsNotUsed)
{
    for (int iUnknowns : {2, 1, 0, -1, INT_MIN, INT_MAX})
    {
        TEquations Equations(2);
        Equations.Sparse(iUnknowns, {2.0, 3.0}, {0, 1}, 5.0);
        EXPECT_TRUE(Equations.Hold({4.0, 6.0, 9.0}, {10.0, 15.0}));
    }
}

TEST(SparseUpdate, SpecialValuesReachTheirRowAndColumnOnly)
{
    TEquations Equations(3);
    Equations.Sparse(3, {Inf, -0.0}, {2, 0}, NaN);
    EXPECT_TRUE(Equations.Hold({0.0, 0.0, 0.0, NaN, 0.0, Inf}, {NaN, 0.0, NaN}));
}

// Writes observations in columns 0 and a_iColumn into a matrix of which only the touched pages exist.
void ExpectUpdateOfColumn(std::ptrdiff_t a_iColumn)
{
#if defined(__unix__)
    const std::size_t iRow = static_cast<std::size_t>(a_iColumn) * (a_iColumn + 1) / 2;
    const std::size_t iBytes = (iRow + a_iColumn + 1) * sizeof(double);
    void* const pPages =
        mmap(nullptr, iBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pPages == MAP_FAILED)
    {
        GTEST_SKIP() << "no address space of " << iBytes << " bytes";
    }
    double* const vdMatrix = static_cast<double*>(pPages);
    TValues vdVector(a_iColumn + 1, 0.0);
    const double vdValues[] = {2.0, 3.0};
    const int viIndices[] = {static_cast<int>(a_iColumn), 0};
    nuv::UpdateNormMatrixLowTri(static_cast<int>(a_iColumn) + 1, vdMatrix, vdVector.data(), 2, vdValues, viIndices,
                                5.0);
    EXPECT_SAME_BITS(9.0, vdMatrix[0]);
    EXPECT_SAME_BITS(6.0, vdMatrix[iRow]);
    EXPECT_SAME_BITS(4.0, vdMatrix[iRow + a_iColumn]);
    EXPECT_SAME_BITS(15.0, vdVector.front());
    EXPECT_SAME_BITS(10.0, vdVector.back());
    munmap(pPages, iBytes);
#else
    GTEST_SKIP() << "no way to reserve address space for column " << a_iColumn;
#endif
}

TEST(SparseUpdate, ColumnsWhoseProductOfIndicesPassesTheLargestIntAreReached)
{
    static_assert(46341LL * 46342LL > INT_MAX, "i(i+1) does not fit an int");
    if (sizeof(std::size_t) < 8)
    {
        GTEST_SKIP() << "8.6 GB of addresses needed";
    }
    ExpectUpdateOfColumn(46341);
}

TEST(SparseUpdate, ColumnsWhosePositionPassesTheLargestIntAreReached)
{
    static_assert(70000LL * 70001LL / 2 > INT_MAX, "i(i+1)/2 does not fit an int");
    if (sizeof(std::size_t) < 8)
    {
        GTEST_SKIP() << "20 GB of addresses needed";
    }
    ExpectUpdateOfColumn(70000);
}

// --- CholeskyLowTri
// ---------------------------------------------------------------------------------------------------

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
// --------------------------------------------------------------------------------------------------

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
    TGuarded Matrix({4.0, 2.0, 5.0});
    ASSERT_TRUE(nuv::CholeskyLowTri(2, Matrix.Data()));
    for (double dScale : {1.0, -2.0, 1024.0})
    {
        TGuarded Vector({8.0 * dScale, 13.0 * dScale});
        nuv::SolveCholLowTri(2, Matrix.Data(), Vector.Data());
        EXPECT_TRUE(Vector.Holds({0.875 * dScale, 2.25 * dScale}));
    }
    EXPECT_TRUE(Matrix.Holds({2.0, 1.0, 2.0}));
}

} // namespace
