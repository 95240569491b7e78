// roots_allocation_test.cpp: the polynomial roots when their nth request for memory fails.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Linked with the library's own objects and with --wrap, so that its malloc and free come here, and calloc, into which
// an optimising compiler turns an allocation that is cleared at once. In order the driver asks for the companion matrix
// and for the two parts of the eigenvalues, then each of the three eigenvalue routines for its table of columns.

#include "nuv1math.h"
#include "poly.h"
#include "testing.h"

#include <algorithm>
#include <cstdlib>
#include <set>

extern "C" {
void* __real_malloc(std::size_t a_iBytes);
void* __real_calloc(std::size_t a_iCount, std::size_t a_iBytes);
void __real_free(void* a_pMemory);
void* __wrap_malloc(std::size_t a_iBytes);
void* __wrap_calloc(std::size_t a_iCount, std::size_t a_iBytes);
void __wrap_free(void* a_pMemory);
}

namespace {

using namespace nuv_tests;

using TValues = std::vector<double>;
using TSizes = std::vector<std::size_t>;

constexpr int Never = -1;
constexpr std::size_t FirstTable = 3; // requests of the driver itself, before the tables

struct TAllocator
{
    bool bWatched = false;
    int iFailAt = Never; // the request that fails, counted from 0
    TSizes viRequests;
    std::set<void*> Held;
    int iForeign = 0; // released without being held
};

TAllocator Allocator;

// Watches the allocator as long as it lives.
class TWatch
{
public:
    explicit TWatch(int a_iFailAt = Never)
    {
        Allocator = TAllocator();
        Allocator.iFailAt = a_iFailAt;
        Allocator.bWatched = true;
    }

    ~TWatch()
    {
        Allocator.bWatched = false;
    }

    TWatch(const TWatch&) = delete;
    TWatch& operator=(const TWatch&) = delete;
};

// One request of the library. Memory comes full of zeros, calloc's by right and malloc's by intent: an eigenvalue that
// nobody has written would count as a root there.
void* Serve(std::size_t a_iBytes)
{
    Allocator.bWatched = false; // what the bookkeeping allocates does not count
    const bool bFails = static_cast<int>(Allocator.viRequests.size()) == Allocator.iFailAt;
    Allocator.viRequests.push_back(a_iBytes);
    void* const pMemory = bFails ? nullptr : __real_calloc(1, a_iBytes);
    if (pMemory != nullptr)
    {
        Allocator.Held.insert(pMemory);
    }
    Allocator.bWatched = true;
    return pMemory;
}

} // namespace

extern "C" {

void* __wrap_malloc(std::size_t a_iBytes)
{
    return Allocator.bWatched ? Serve(a_iBytes) : __real_malloc(a_iBytes);
}

void* __wrap_calloc(std::size_t a_iCount, std::size_t a_iBytes)
{
    return Allocator.bWatched ? Serve(a_iCount * a_iBytes) : __real_calloc(a_iCount, a_iBytes);
}

void __wrap_free(void* a_pMemory)
{
    if (Allocator.bWatched && a_pMemory != nullptr)
    {
        Allocator.bWatched = false;
        Allocator.iForeign += Allocator.Held.erase(a_pMemory) == 0 ? 1 : 0;
        Allocator.bWatched = true;
    }
    __real_free(a_pMemory);
}

} // extern "C"

namespace {

void ExpectNothingHeld()
{
    EXPECT_TRUE(Allocator.Held.empty());
    EXPECT_EQ(0, Allocator.iForeign);
}

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
        TWatch Watch(a_iFailAt);
        Outcome.iResult =
            nuv::Roots(static_cast<unsigned int>(iDegree), a_vdCoefficients.data(), Outcome.vdRoots.data(), 1e-6);
    }
    ExpectNothingHeld();
    Outcome.viRequests = Allocator.viRequests;
    return Outcome;
}

void ExpectSameValues(const TValues& a_vdExpected, const TValues& a_vdActual)
{
    ASSERT_EQ(a_vdExpected.size(), a_vdActual.size());
    for (std::size_t i = 0; i < a_vdExpected.size(); ++i)
    {
        SCOPED_TRACE("position " + std::to_string(i));
        EXPECT_SAME_BITS(a_vdExpected[i], a_vdActual[i]);
    }
}

// The array with these roots at its start and nothing else written.
TValues Array(TValues a_vdRoots, std::size_t a_iDegree)
{
    a_vdRoots.resize(a_iDegree + 2, Untouched);
    return a_vdRoots;
}

// What the stages make of a companion matrix that is not balanced.
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

// (x - 1)(x - 2)(x - 3)(x - 1000), whose roots come out with other bits if it is not balanced; then with the factor
// x^2.
const TValues Plain = {1, -1006, 6011, -11006, 6000};
const TValues WithZeros = {1, -1006, 6011, -11006, 6000, 0, 0};

TValues PrependZeros(const TValues& a_vdRoots)
{
    TValues vdAll = {0.0, 0.0};
    vdAll.insert(vdAll.end(), a_vdRoots.begin(), a_vdRoots.end());
    return vdAll;
}

TEST(RootsAllocation, AsksForTheMatrixTheEigenvaluesAndOneTableAStage)
{
    EXPECT_EQ((TSizes{4 * 4 * 8, 4 * 8, 4 * 8, 4 * sizeof(double*), 4 * sizeof(double*), 4 * sizeof(double*)}),
              SolveWithFailure(WithZeros, Never).viRequests);
    // The reduction has nothing to do below order 3, and asks for nothing.
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

// Of the scratch of the driver: result 0, and the zeros of trailing zero coefficients may stand in the array.
TEST(RootsAllocation, AFailureOfTheScratchGivesZeroRoots)
{
    for (int iFailAt = 0; iFailAt < static_cast<int>(FirstTable); ++iFailAt)
    {
        SCOPED_TRACE(iFailAt);
        const TOutcome Outcome = SolveWithFailure(Plain, iFailAt);
        EXPECT_EQ(0, Outcome.iResult);
        ExpectSameValues(Array({}, 4), Outcome.vdRoots);
        const TOutcome Zeros = SolveWithFailure(WithZeros, iFailAt);
        EXPECT_EQ(0, Zeros.iResult);
        ExpectSameValues(Array({0.0, 0.0}, 6), Zeros.vdRoots);
        EXPECT_LE(Zeros.viRequests.size(), FirstTable); // no stage has run
    }
}

TEST(RootsAllocation, WithoutATableForBalancingTheMatrixIsNotBalanced)
{
    const TValues vdUnbalanced = PrependZeros(SolveUnbalanced(Plain));
    const TOutcome Outcome = SolveWithFailure(WithZeros, FirstTable);
    EXPECT_EQ(6, Outcome.iResult);
    ExpectSameValues(Array(vdUnbalanced, 6), Outcome.vdRoots);
    EXPECT_NE(SolveWithFailure(WithZeros, Never).vdRoots, Outcome.vdRoots);
}

// A companion matrix is reduced already.
TEST(RootsAllocation, WithoutATableForTheReductionTheRootsAreTheSame)
{
    const TOutcome Outcome = SolveWithFailure(WithZeros, FirstTable + 1);
    EXPECT_EQ(6, Outcome.iResult);
    ExpectSameValues(SolveWithFailure(WithZeros, Never).vdRoots, Outcome.vdRoots);
}

TEST(RootsAllocation, WithoutATableForTheIterationNoEigenvalueIsFound)
{
    const TOutcome Outcome = SolveWithFailure(WithZeros, FirstTable + 2);
    EXPECT_EQ(2, Outcome.iResult);
    ExpectSameValues(Array({0.0, 0.0}, 6), Outcome.vdRoots);
    EXPECT_EQ(0, SolveWithFailure(Plain, FirstTable + 2).iResult);
}

// n = 0, 1, 2 ... until no request is left to fail: nothing leaks, and never more is written than the result says
// beyond the zeros.
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

// Memory full of zeros: an imaginary part left as it came would pass for a root 0.
TEST(RootsAllocation, EigenvaluesThatWereNeverFoundAreNoRootsWhateverTheMemoryHeld)
{
    const TOutcome Outcome = SolveWithFailure({1, 0, -2, 0, 1}, Never);
    EXPECT_EQ(0, Outcome.iResult);
    ExpectSameValues(Array({}, 4), Outcome.vdRoots);
}

// --- The stages by themselves

const TValues General = {1, 1024, 2, 3, 5, 7, 4096, 11, 13}; // column by column; balancing and reduction change it

TEST(RootsAllocation, AStageWithoutItsTableLeavesTheMatrixAlone)
{
    for (const auto Stage : {nuv::BalanceMatrix, nuv::ReduceToHessenberg})
    {
        for (int iFailAt : {0, Never})
        {
            TValues vdMatrix = General;
            {
                TWatch Watch(iFailAt);
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
        TWatch Watch(0);
        iResult = nuv::HessenbergEigenvalues(3, vdMatrix.data(), 3, vdReal.data(), vdImaginary.data());
    }
    EXPECT_EQ(0, iResult);
    ExpectNothingHeld();
    ExpectSameValues(General, vdMatrix);
    ExpectSameValues(TValues(3, Untouched), vdReal);
    ExpectSameValues(TValues(3, Untouched), vdImaginary);
}

// The iteration gives up on the balanced companion matrix of x^4 - 2x^2 + 1 and releases its table there too.
TEST(RootsAllocation, TheTableIsReleasedWhereTheIterationGivesUp)
{
    TValues vdMatrix = {0, 2, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, -0.5, 0, 0, 0};
    TValues vdReal(4);
    TValues vdImaginary(4);
    int iResult;
    {
        TWatch Watch;
        iResult = nuv::HessenbergEigenvalues(4, vdMatrix.data(), 4, vdReal.data(), vdImaginary.data());
    }
    EXPECT_EQ(0, iResult);
    EXPECT_EQ(TSizes{4 * sizeof(double*)}, Allocator.viRequests);
    ExpectNothingHeld();
}

TEST(RootsAllocation, AMatrixOfNoRowsTakesNoMemory)
{
    TWatch Watch;
    for (int iN : {0, -1})
    {
        nuv::BalanceMatrix(iN, nullptr, 1);
        nuv::ReduceToHessenberg(iN, nullptr, 1);
        nuv::HessenbergEigenvalues(iN, nullptr, 1, nullptr, nullptr);
    }
    EXPECT_TRUE(Allocator.viRequests.empty());
}

} // namespace
