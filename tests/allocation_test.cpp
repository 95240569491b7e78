// allocation_test.cpp: which functions allocate, how much, and what they do when the allocator fails.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Every reference of the library to malloc and free goes to support/watched_allocator.h.

#include "nuv1math.h"
#include "support/expect.h"
#include "support/fits.h"
#include "support/watched_allocator.h"

#include <climits>

namespace {

using namespace nuv_tests;

// --- InitCholLowTri, DeleteCholLowTri

TEST(InitCholLowTri, AsksForThePackedMatrixAndThenForTheVector)
{
    for (std::size_t iUnknowns : {1, 2, 3, 8, 9, 100})
    {
        SCOPED_TRACE(iUnknowns);
        double* vdMatrix = nullptr;
        double* vdVector = nullptr;
        {
            TWatch Watch;
            nuv::InitCholLowTri(static_cast<int>(iUnknowns), &vdMatrix, &vdVector);
        }
        const std::vector<std::size_t> viExpected = {iUnknowns * (iUnknowns + 1) / 2 * 8, iUnknowns * 8};
        EXPECT_EQ(viExpected, Allocator.viRequests);
        EXPECT_EQ((std::set<void*>{vdMatrix, vdVector}), Allocator.Held);
        for (std::size_t i = 0; i < iUnknowns * (iUnknowns + 1) / 2; ++i)
        {
            EXPECT_SAME_BITS(0.0, vdMatrix[i]);
        }
        for (std::size_t i = 0; i < iUnknowns; ++i)
        {
            EXPECT_SAME_BITS(0.0, vdVector[i]);
        }
        {
            const TWatchAgain Again;
            nuv::DeleteCholLowTri(vdMatrix, vdVector);
        }
        EXPECT_EQ(2, Allocator.iReleases);
        ExpectNothingHeld();
    }
}

TEST(InitCholLowTri, ZeroAndNegativeCountsAskTwiceForNoBytes)
{
    for (int iUnknowns : {0, -1, -2, -100, INT_MIN})
    {
        double* vdMatrix = nullptr;
        double* vdVector = nullptr;
        {
            TWatch Watch;
            nuv::InitCholLowTri(iUnknowns, &vdMatrix, &vdVector);
        }
        EXPECT_EQ((std::vector<std::size_t>{0, 0}), Allocator.viRequests);
        {
            const TWatchAgain Again;
            nuv::DeleteCholLowTri(vdMatrix, vdVector);
        }
        ExpectNothingHeld();
    }
}

TEST(InitCholLowTri, AFailedAllocationOfEitherGivesTwoNullPointersAndLeaksNothing)
{
    for (int iFailAt : {0, 1})
    {
        SCOPED_TRACE(iFailAt);
        double Stale = Untouched;
        double* vdMatrix = &Stale;
        double* vdVector = &Stale;
        {
            TWatch Watch(iFailAt);
            nuv::InitCholLowTri(8, &vdMatrix, &vdVector);
        }
        EXPECT_EQ(nullptr, vdMatrix);
        EXPECT_EQ(nullptr, vdVector);
        EXPECT_GE(static_cast<int>(Allocator.viRequests.size()), iFailAt + 1);
        ExpectNothingHeld();
        EXPECT_SAME_BITS(Untouched, Stale);
        {
            const TWatchAgain Again;
            nuv::DeleteCholLowTri(vdMatrix, vdVector);
        }
    }
}

TEST(InitCholLowTri, CountsWhoseSizePassesAnIntAreAskedForInFull)
{
    if (sizeof(std::size_t) < 8)
    {
        GTEST_SKIP() << "sizes of more than 4 GB needed";
    }
    for (std::uint64_t iUnknowns : {46340u, 46341u, 65535u, 65536u, 70000u, 2147483646u, 2147483647u})
    {
        SCOPED_TRACE(iUnknowns);
        double* vdMatrix = nullptr;
        double* vdVector = nullptr;
        {
            TWatch Watch;
            nuv::InitCholLowTri(static_cast<int>(iUnknowns), &vdMatrix, &vdVector);
        }
        ASSERT_FALSE(Allocator.viRequests.empty());
        EXPECT_EQ(iUnknowns * (iUnknowns + 1) / 2 * 8, Allocator.viRequests.front());
        EXPECT_EQ(nullptr, vdMatrix);
        EXPECT_EQ(nullptr, vdVector);
        ExpectNothingHeld();
    }
}

TEST(DeleteCholLowTri, ReleasesTheMatrixAndTheVectorAndNoNullPointer)
{
    double* vdMatrix = nullptr;
    double* vdVector = nullptr;
    {
        TWatch Watch;
        nuv::DeleteCholLowTri(nullptr, nullptr);
    }
    EXPECT_EQ(0, Allocator.iReleases);
    {
        TWatch Watch;
        nuv::InitCholLowTri(2, &vdMatrix, &vdVector);
        nuv::DeleteCholLowTri(vdMatrix, nullptr);
    }
    EXPECT_EQ((std::set<void*>{vdVector}), Allocator.Held);
    {
        const TWatchAgain Again;
        nuv::DeleteCholLowTri(nullptr, vdVector);
    }
    ExpectNothingHeld();
}

// --- CalcCoefs

const TControlPoints General = {
    {0.0, 4.0, 5.0, 1.0, 2.0}, {0.0, 1.0, 4.0, 3.0, 1.5}, {1.0, 6.0, 5.0, -1.0, 3.0}, {2.0, 3.5, 9.0, 6.0, 4.0}};
const TControlPoints OneSource = {{1.0, 1.0, 1.0, 1.0, 1.0}, {1.0, 1.0, 1.0, 1.0, 1.0}, General.vdXa, General.vdYa};

// Calls CalcCoefs under a watch.
bool ChooseWatched(int a_iFailAt, const TControlPoints& a_Points, bool a_bSameOrientation,
                   nuv::enumMethodUsed a_Requested, nuv::enumMethodUsed& a_Used, nuv::TOmographicParams& a_Params)
{
    const TWatch Watch(a_iFailAt);
    return Choose(a_Points, a_bSameOrientation, a_Requested, a_Used, a_Params);
}

TEST(CalcCoefs, AFailedAllocationOfTheMirroredTargetIsFalseAndTouchesNothing)
{
    for (nuv::enumMethodUsed Before : {nuv::METHOD_CONFORMAL, nuv::METHOD_OMOGRAPHIC})
    {
        nuv::enumMethodUsed Used = Before;
        auto Params = Filled<nuv::TOmographicParams>();
        EXPECT_FALSE(ChooseWatched(0, General, false, nuv::METHOD_CONFORMAL, Used, Params));
        EXPECT_EQ(Before, Used);
        EXPECT_TRUE(SameRecord(Filled<nuv::TOmographicParams>(), Params));
        EXPECT_EQ(1u, Allocator.viRequests.size());
        ExpectNothingHeld();
    }
}

TEST(CalcCoefs, TheMirroredTargetIsOneArrayAndIsReleasedWhateverTheFitReturns)
{
    const struct
    {
        const TControlPoints& Points;
        bool bResult;
    } Cases[] = {{General, true}, {OneSource, false}};
    for (const auto& Case : Cases)
    {
        nuv::enumMethodUsed Used = nuv::METHOD_OMOGRAPHIC;
        auto Params = Filled<nuv::TOmographicParams>();
        EXPECT_EQ(Case.bResult, ChooseWatched(Never, Case.Points, false, nuv::METHOD_CONFORMAL, Used, Params));
        EXPECT_EQ(Case.bResult ? nuv::METHOD_CONFORMAL : nuv::METHOD_OMOGRAPHIC, Used);
        EXPECT_EQ(std::vector<std::size_t>{General.vdX.size() * sizeof(double)}, Allocator.viRequests);
        ExpectNothingHeld();
    }
}

TEST(CalcCoefs, NothingElseInItAllocates)
{
    for (nuv::enumMethodUsed Requested : {nuv::METHOD_CONFORMAL, nuv::METHOD_AFFINE, nuv::METHOD_OMOGRAPHIC})
    {
        for (bool bSameOrientation : {true, false})
        {
            if (Requested == nuv::METHOD_CONFORMAL && !bSameOrientation)
            {
                continue; // the mirrored target
            }
            nuv::enumMethodUsed Used = nuv::METHOD_CONFORMAL;
            nuv::TOmographicParams Params;
            EXPECT_TRUE(ChooseWatched(0, General, bSameOrientation, Requested, Used, Params));
            EXPECT_EQ(Requested, Used);
            EXPECT_TRUE(Allocator.viRequests.empty());
            ExpectNothingHeld();
        }
    }
}

// --- All others

TEST(OtherFunctions, NeitherAllocateNorRelease)
{
    double d[6];
    double vdMatrix[3] = {0.0, 0.0, 0.0};
    double vdVector[2] = {0.0, 0.0};
    const double vdRow[] = {1.0, 2.0};
    const int viIndices[] = {1, 0};
    nuv::TAffineCoefs Affine;
    nuv::TAffineCoefs InverseAffine;
    nuv::TConformalCoefs Conformal;
    nuv::TConformalCoefs InverseConformal;
    nuv::TOmographicParams Params;
    {
        TWatch Watch(0);
        EXPECT_EQ(1, Fit(General, Conformal));
        EXPECT_EQ(1, Fit(General, Affine));
        EXPECT_EQ(1, Fit(General, Params));
        nuv::AffineParamsToCoefs(2.0, 3.0, 0.1, 0.2, 10.0, 20.0, Affine);
        EXPECT_EQ(1, nuv::AffineCoefsToParam(Affine, d[0], d[1], d[2], d[3], d[4], d[5]));
        EXPECT_EQ(1, nuv::AffineCoefsToInvCoefs(Affine, InverseAffine));
        nuv::AffineUntransform(Affine, 1.0, 2.0, d[0], d[1]);
        nuv::ConformalParamsToCoefs(2.0, 0.1, 10.0, 20.0, Conformal);
        EXPECT_EQ(1, nuv::ConformalCoefsToParam(Conformal, d[0], d[1], d[2], d[3]));
        nuv::ConformalCoefsToInvCoefs(Conformal, InverseConformal);
        nuv::ConformalCoefsToAffineCoefs(Conformal, Affine);
        nuv::AffineCoefsToOmographicCoefs(Affine, Params);
        nuv::UpdateNormMatrixLowTri(2, vdMatrix, vdVector, vdRow, 3.0);
        nuv::UpdateNormMatrixLowTri(2, vdMatrix, vdVector, 2, vdRow, viIndices, 4.0);
        EXPECT_TRUE(nuv::CholeskyLowTri(2, vdMatrix));
        nuv::SolveCholLowTri(2, vdMatrix, vdVector);
        EXPECT_EQ(1, nuv::Roots(2.0, 0.0, 0.0, 4.0, 2.0, 8.0, d[0], d[1]));
    }
    EXPECT_TRUE(Allocator.viRequests.empty());
    EXPECT_EQ(0, Allocator.iReleases);
    EXPECT_EQ(0, Allocator.iReallocations);
}

} // namespace
