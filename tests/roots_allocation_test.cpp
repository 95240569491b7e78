// roots_allocation_test.cpp: the polynomial roots when their nth request for memory fails.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The driver asks for the companion matrix and for the two parts of the eigenvalues, in this order. Then each of the
// three eigenvalue routines asks for its table of columns. The memory is filled with zeros: an eigenvalue that is not
// written would count as a root there.

#include "nuv1math.h"
#include "support/expect.h"
#include "support/watched_allocator.h"

#include <algorithm>

#if !defined(NUV_IMAGE)
#include "poly.h" // an image exports none of its functions
#define NUV_TEST_STAGES
#endif

namespace {

using namespace nuv_tests;

using TValues = std::vector<double>;
using TSizes = std::vector<std::size_t>;

constexpr std::size_t FirstTable = 3; // requests of the driver itself, before the tables

struct TOutcome
{
    int iResult;
    TValues vdRoots; // the whole array, guards included
    TSizes viRequests;
};

TOutcome SolveWithFailure(const TValues& a_vdCoefficients, int a_iFailAt)
{
    const std::size_t iDegree = a_vdCoefficients.size() - 1;
    TOutcome Outcome = {0, TValues(iDegree + 2, Untouched), {}};
    {
        TWatch Watch(a_iFailAt, 0);
        Outcome.iResult =
            nuv::Roots(static_cast<unsigned int>(iDegree), a_vdCoefficients.data(), Outcome.vdRoots.data(), 1e-6);
    }
    ExpectNothingHeld();
    Outcome.viRequests = Allocator.viRequests;
    return Outcome;
}

// The array with these roots at its start; nothing else is written.
TValues Array(TValues a_vdRoots, std::size_t a_iDegree)
{
    a_vdRoots.resize(a_iDegree + 2, Untouched);
    return a_vdRoots;
}

// (x - 1)(x - 2)(x - 3)(x - 1000). Without balancing its roots would have other bits. The second polynomial has the
// factor x^2 as well.
const TValues Plain = {1, -1006, 6011, -11006, 6000};
const TValues WithZeros = {1, -1006, 6011, -11006, 6000, 0, 0};

TEST(RootsAllocation, AsksForTheMatrixTheEigenvaluesAndOneTableAStage)
{
    EXPECT_EQ((TSizes{4 * 4 * 8, 4 * 8, 4 * 8, 4 * sizeof(double*), 4 * sizeof(double*), 4 * sizeof(double*)}),
              SolveWithFailure(WithZeros, Never).viRequests);
    // The reduction has nothing to do below order 3 and allocates nothing.
    EXPECT_EQ((TSizes{2 * 2 * 8, 2 * 8, 2 * 8, 2 * sizeof(double*), 2 * sizeof(double*)}),
              SolveWithFailure({1, -3, 2}, Never).viRequests);
}

TEST(RootsAllocation, AsksForNothingWhereThereIsNoMatrix)
{
    for (const TValues& vdCoefficients : {TValues{0}, {0, 0, 0}, {5}, {0, 0, 5}, {1, 0, 0}, {0, 3, 0}})
    {
        EXPECT_TRUE(SolveWithFailure(vdCoefficients, 0).viRequests.empty());
    }
}

// If the scratch of the driver fails, the result is 0. The zeros of trailing zero coefficients can be in the array.
TEST(RootsAllocation, AFailureOfTheScratchGivesZeroRoots)
{
    for (int iFailAt = 0; iFailAt < static_cast<int>(FirstTable); ++iFailAt)
    {
        SCOPED_TRACE(iFailAt);
        const TOutcome Outcome = SolveWithFailure(Plain, iFailAt);
        EXPECT_EQ(0, Outcome.iResult);
        EXPECT_TRUE(SameValues(Array({}, 4), Outcome.vdRoots));
        const TOutcome Zeros = SolveWithFailure(WithZeros, iFailAt);
        EXPECT_EQ(0, Zeros.iResult);
        EXPECT_TRUE(SameValues(Array({0.0, 0.0}, 6), Zeros.vdRoots));
        EXPECT_LE(Zeros.viRequests.size(), FirstTable); // no stage has run
    }
}

// A companion matrix is already reduced.
TEST(RootsAllocation, WithoutATableForTheReductionTheRootsAreTheSame)
{
    const TOutcome Outcome = SolveWithFailure(WithZeros, FirstTable + 1);
    EXPECT_EQ(6, Outcome.iResult);
    EXPECT_TRUE(SameValues(SolveWithFailure(WithZeros, Never).vdRoots, Outcome.vdRoots));
}

TEST(RootsAllocation, WithoutATableForTheIterationNoEigenvalueIsFound)
{
    const TOutcome Outcome = SolveWithFailure(WithZeros, FirstTable + 2);
    EXPECT_EQ(2, Outcome.iResult);
    EXPECT_TRUE(SameValues(Array({0.0, 0.0}, 6), Outcome.vdRoots));
    EXPECT_EQ(0, SolveWithFailure(Plain, FirstTable + 2).iResult);
}

// Request n fails, for n = 0, 1, 2 ... until all succeed. Nothing leaks, and no more is written than the roots that the
// result counts and the zeros.
TEST(RootsAllocation, EveryFailureInTurnLeaksNothing)
{
    for (const TValues& vdCoefficients :
         {TValues{2, -4}, {1, -3, 2}, {1, 0, 1}, {1, 0, -2, 0, 1}, {1, 0, -2, 0, 1, 0}, Plain, WithZeros})
    {
        SCOPED_TRACE(::testing::PrintToString(vdCoefficients));
        const std::size_t iDegree = vdCoefficients.size() - 1;
        std::size_t iZeros = 0;
        while (vdCoefficients[iDegree - iZeros] == 0.0)
        {
            ++iZeros;
        }
        int iFailAt = 0;
        bool bFailed = true;
        for (; bFailed; ++iFailAt)
        {
            SCOPED_TRACE(iFailAt);
            const TOutcome Outcome = SolveWithFailure(vdCoefficients, iFailAt);
            bFailed = Outcome.viRequests.size() > static_cast<std::size_t>(iFailAt);
            ASSERT_GE(Outcome.iResult, 0);
            for (std::size_t i = std::max(iZeros, static_cast<std::size_t>(Outcome.iResult)); i < iDegree + 2; ++i)
            {
                EXPECT_SAME_BITS(Untouched, Outcome.vdRoots[i]);
            }
        }
        EXPECT_EQ(iDegree - iZeros < 3 ? 6 : 7, iFailAt); // five or six requests, and the success
    }
}

// The memory is full of zeros, so an imaginary part that is not written would count as a root 0.
TEST(RootsAllocation, EigenvaluesThatWereNeverFoundAreNoRootsWhateverTheMemoryHeld)
{
    const TOutcome Outcome = SolveWithFailure({1, 0, -2, 0, 1}, Never);
    EXPECT_EQ(0, Outcome.iResult);
    EXPECT_TRUE(SameValues(Array({}, 4), Outcome.vdRoots));
}

// A quadratic equation in cosine and sine that leads to a quartic with real roots.
TEST(RootsAllocation, EveryFailureInTurnBehindAnEquationOfAnglesLeaksNothing)
{
    int iFailAt = 0;
    bool bFailed = true;
    for (; bFailed; ++iFailAt)
    {
        SCOPED_TRACE(iFailAt);
        double vdAngles[5] = {Untouched, Untouched, Untouched, Untouched, Untouched};
        int iResult;
        {
            TWatch Watch(iFailAt, 0);
            iResult = nuv::SolveQuadTrig(1.0, -2.0, 0.5, 0.25, -0.125, 0.1, vdAngles);
        }
        bFailed = Allocator.viRequests.size() > static_cast<std::size_t>(iFailAt);
        ExpectNothingHeld();
        // Without scratch, or without the table of the iteration, no root is found and so no angle.
        EXPECT_EQ(iFailAt < static_cast<int>(FirstTable) || iFailAt == static_cast<int>(FirstTable) + 2, iResult == 0);
        EXPECT_LE(iResult, 4);
        EXPECT_SAME_BITS(Untouched, vdAngles[4]);
        EXPECT_TRUE(iResult > 0 || SameBits(Untouched, vdAngles[0]));
    }
    EXPECT_EQ(7, iFailAt); // six requests, and the success
}

// --- The stages by themselves

#if defined(NUV_TEST_STAGES)

// The results of the stages on a companion matrix that is not balanced.
TValues SolveUnbalanced(const TValues& a_vdMonic)
{
    const std::size_t iN = a_vdMonic.size() - 1;
    TValues vdMatrix(iN * iN, 0.0);
    for (std::size_t j = 0; j < iN; ++j)
    {
        vdMatrix[j * iN] = -a_vdMonic[j + 1];
    }
    for (std::size_t j = 0; j + 1 < iN; ++j)
    {
        vdMatrix[j * iN + j + 1] = 1.0;
    }
    const int n = static_cast<int>(iN);
    TValues vdReal(iN);
    TValues vdImaginary(iN);
    nuv::ReduceToHessenberg(n, vdMatrix.data(), n);
    EXPECT_EQ(1, nuv::HessenbergEigenvalues(n, vdMatrix.data(), n, vdReal.data(), vdImaginary.data()));
    TValues vdRoots;
    for (std::size_t i = 0; i < iN; ++i)
    {
        if (std::fabs(vdImaginary[i]) < 1e-6)
        {
            vdRoots.push_back(vdReal[i]);
        }
    }
    return vdRoots;
}

TValues PrependZeros(const TValues& a_vdRoots)
{
    TValues vdAll = {0.0, 0.0};
    vdAll.insert(vdAll.end(), a_vdRoots.begin(), a_vdRoots.end());
    return vdAll;
}

TEST(RootsAllocation, WithoutATableForBalancingTheMatrixIsNotBalanced)
{
    const TValues vdUnbalanced = PrependZeros(SolveUnbalanced(Plain));
    const TOutcome Outcome = SolveWithFailure(WithZeros, FirstTable);
    EXPECT_EQ(6, Outcome.iResult);
    EXPECT_TRUE(SameValues(Array(vdUnbalanced, 6), Outcome.vdRoots));
    EXPECT_NE(SolveWithFailure(WithZeros, Never).vdRoots, Outcome.vdRoots);
}

const TValues General = {1, 1024, 2, 3, 5, 7, 4096, 11, 13}; // column by column; balancing and reduction change it

TEST(RootsAllocation, AStageWithoutItsTableLeavesTheMatrixAlone)
{
    for (const auto Stage : {nuv::BalanceMatrix, nuv::ReduceToHessenberg})
    {
        for (int iFailAt : {0, Never})
        {
            TValues vdMatrix = General;
            {
                TWatch Watch(iFailAt, 0);
                Stage(3, vdMatrix.data(), 3);
            }
            EXPECT_EQ(1u, Allocator.viRequests.size());
            ExpectNothingHeld();
            EXPECT_EQ(iFailAt == 0, vdMatrix == General);
        }
    }
}

TEST(RootsAllocation, TheIterationWithoutItsTableWritesNothingAndReturns0)
{
    TValues vdMatrix = General;
    TValues vdReal(3, Untouched);
    TValues vdImaginary(3, Untouched);
    int iResult;
    {
        TWatch Watch(0, 0);
        iResult = nuv::HessenbergEigenvalues(3, vdMatrix.data(), 3, vdReal.data(), vdImaginary.data());
    }
    EXPECT_EQ(0, iResult);
    ExpectNothingHeld();
    EXPECT_TRUE(SameValues(General, vdMatrix));
    EXPECT_TRUE(SameValues(TValues(3, Untouched), vdReal));
    EXPECT_TRUE(SameValues(TValues(3, Untouched), vdImaginary));
}

// The iteration gives up on the balanced companion matrix of x^4 - 2x^2 + 1, and releases its table in that case too.
TEST(RootsAllocation, TheTableIsReleasedWhereTheIterationGivesUp)
{
    TValues vdMatrix = {0, 2, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, -0.5, 0, 0, 0};
    TValues vdReal(4);
    TValues vdImaginary(4);
    int iResult;
    {
        TWatch Watch(Never, 0);
        iResult = nuv::HessenbergEigenvalues(4, vdMatrix.data(), 4, vdReal.data(), vdImaginary.data());
    }
    EXPECT_EQ(0, iResult);
    EXPECT_EQ(TSizes{4 * sizeof(double*)}, Allocator.viRequests);
    ExpectNothingHeld();
}

TEST(RootsAllocation, AMatrixOfNoRowsTakesNoMemory)
{
    TWatch Watch(Never, 0);
    for (int iN : {0, -1})
    {
        nuv::BalanceMatrix(iN, nullptr, 1);
        nuv::ReduceToHessenberg(iN, nullptr, 1);
        nuv::HessenbergEigenvalues(iN, nullptr, 1, nullptr, nullptr);
    }
    EXPECT_TRUE(Allocator.viRequests.empty());
}

#endif

} // namespace
