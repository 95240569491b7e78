// normal_equations_test.cpp: the memory and the updates of packed normal equations.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/expect.h"
#include "support/reserved_memory.h"
#include "support/triangle.h"

#include <algorithm>
#include <climits>
#include <numeric>

namespace {

using namespace nuv_tests;
using TValues = std::vector<double>;

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
        const ::testing::AssertionResult Result = SameValues(a_vdMatrix, Matrix);
        return Result ? SameValues(a_vdVector, Vector) : Result;
    }

    TGuardedArray Matrix;
    TGuardedArray Vector;
};

const double Big = 0x1p53; // from here on to 2^54, doubles are the even whole numbers

// --- InitCholLowTri, DeleteCholLowTri

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
    // (1 + 2^-27)^2 = 1 + 2^-26 + 2^-54 rounds to 1 + 2^-26, which the sum cancels. One rounding would leave 2^-54.
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
    // The squares 4 and 9 and once the product 6. A dense row with the sum 5 would give 25.
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

// Updates columns 0 and a_iColumn of a matrix of which only the touched pages take memory.
void ExpectUpdateOfColumn(std::ptrdiff_t a_iColumn)
{
    const std::size_t iRow = static_cast<std::size_t>(PackedLength(a_iColumn));
    const TReservedMemory Matrix(iRow + static_cast<std::size_t>(a_iColumn) + 1);
    if (!Matrix.IsReserved())
    {
        GTEST_SKIP() << "no address space for column " << a_iColumn;
    }
    TValues vdVector(a_iColumn + 1, 0.0);
    const double vdValues[] = {2.0, 3.0};
    const int viIndices[] = {static_cast<int>(a_iColumn), 0};
    nuv::UpdateNormMatrixLowTri(static_cast<int>(a_iColumn) + 1, Matrix.Data(), vdVector.data(), 2, vdValues, viIndices,
                                5.0);
    EXPECT_SAME_BITS(9.0, Matrix.Data()[0]);
    EXPECT_SAME_BITS(6.0, Matrix.Data()[iRow]);
    EXPECT_SAME_BITS(4.0, Matrix.Data()[iRow + static_cast<std::size_t>(a_iColumn)]);
    EXPECT_SAME_BITS(15.0, vdVector.front());
    EXPECT_SAME_BITS(10.0, vdVector.back());
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

} // namespace
