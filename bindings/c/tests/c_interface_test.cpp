// c_interface_test.cpp: the functions of the C interface give what those of C++ give.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include <cstring>
#include <gtest/gtest.h>
#include <judgement.h>
#include <nuv1math.h>
#include <nuv1math_c.h>
#include <vector>

namespace {

const std::vector<double> X = {0, 100, 100, 0, 40, 70, 20};
const std::vector<double> Y = {0, 0, 80, 80, 30, 60, 50};
const std::vector<double> XA = {12.1, 110.7, 112.4, 9.8, 51.3, 81.2, 30.6};
const std::vector<double> YA = {7.9, 11.2, 92.6, 86.1, 38.5, 70.4, 57.7};

template <class TOne, class TOther> void ExpectSameMemory(const TOne& a_One, const TOther& a_Other)
{
    static_assert(sizeof(TOne) == sizeof(TOther), "records of both languages");
    EXPECT_EQ(0, std::memcmp(&a_One, &a_Other, sizeof a_One));
}

} // namespace

TEST(CInterface, FitsChooseAndReportTheKind)
{
    for (int iRequested = NUV_METHOD_CONFORMAL; iRequested <= NUV_METHOD_OMOGRAPHIC; ++iRequested)
    {
        nuv::TOmographicParams Expected = {};
        nuv::enumMethodUsed ExpectedKind;
        ASSERT_TRUE(nuv::CalcCoefs(7, X.data(), Y.data(), XA.data(), YA.data(), true,
                                   static_cast<nuv::enumMethodUsed>(iRequested), ExpectedKind, Expected));
        nuv_TOmographicParams Coefs = {};
        nuv_enumMethodUsed Kind = -1;
        EXPECT_EQ(1, nuv_CalcCoefs(7, X.data(), Y.data(), XA.data(), YA.data(), 2, iRequested, &Kind, &Coefs));
        EXPECT_EQ(ExpectedKind, Kind);
        ExpectSameMemory(Expected, Coefs);
    }
}

TEST(CInterface, OverloadsAreTheFunctionsThatTheirNamesTell)
{
    const double vdCoefs[] = {1.0, -6.0, 11.0, -6.0}; // the highest power first
    double vdRoots[3] = {};
    EXPECT_EQ(3, nuv_Roots(3, vdCoefs, vdRoots, 1e-9));
    EXPECT_NEAR(6.0, vdRoots[0] * vdRoots[1] * vdRoots[2], 1e-9);

    double dX = 0.0;
    double dY = 0.0;
    nuv_RootsLinear(2, 1, 1, 3, 5, 10, &dX, &dY);
    EXPECT_DOUBLE_EQ(1.0, dX);
    EXPECT_DOUBLE_EQ(3.0, dY);

    const double vdRow[] = {0.0, 3.0};
    const double vdValues[] = {3.0};
    const int viIndices[] = {1};
    double vdDense[3] = {}, vdSparse[3] = {}, vdDenseRight[2] = {}, vdSparseRight[2] = {};
    nuv_UpdateNormMatrixLowTri(2, vdDense, vdDenseRight, vdRow, 2.0);
    nuv_UpdateNormMatrixLowTriSparse(2, vdSparse, vdSparseRight, 1, vdValues, viIndices, 2.0);
    EXPECT_EQ(9.0, vdDense[2]);
    ExpectSameMemory(vdDense, vdSparse);
    ExpectSameMemory(vdDenseRight, vdSparseRight);
}

TEST(CInterface, RandomNumbersAreThoseOfTheLibrary)
{
    nuv::SetRandomSeed(7);
    const double vdExpected[] = {nuv::Rand(), nuv::Rand(2.0, 5.0), nuv::Randn(), nuv::Randn(10.0, 3.0)};
    nuv_SetRandomSeed(7);
    const double vdDraws[] = {nuv_Rand(), nuv_RandRange(2.0, 5.0), nuv_Randn(), nuv_RandnScaled(10.0, 3.0)};
    ExpectSameMemory(vdExpected, vdDraws);
}

TEST(CInterface, JudgesAsTheModuleDoes)
{
    const int iCount = static_cast<int>(X.size());
    const judgement::TControlPoints Points = {iCount, X.data(), Y.data(), XA.data(), YA.data()};
    judgement::TOptions Options = {};
    Options.Method = judgement::ASK_AUTO;
    Options.dLevel = judgement::USUAL_LEVEL;
    judgement::TJudgement Expected;
    std::memset(&Expected, 0, sizeof Expected);
    std::vector<judgement::TPointJudgement> vExpected(X.size());
    std::memset(vExpected.data(), 0, vExpected.size() * sizeof vExpected[0]);
    ASSERT_EQ(judgement::REASON_NONE, judgement::Judge(Points, nullptr, Options, Expected, vExpected.data()));

    const nuv_TControlPoints PointsOfC = {iCount, X.data(), Y.data(), XA.data(), YA.data()};
    nuv_TOptions OptionsOfC = {};
    OptionsOfC.Method = NUV_ASK_AUTO;
    OptionsOfC.dLevel = NUV_USUAL_LEVEL;
    nuv_TJudgement Judgement;
    std::memset(&Judgement, 0, sizeof Judgement);
    std::vector<nuv_TPointJudgement> vPoints(X.size());
    std::memset(vPoints.data(), 0, vPoints.size() * sizeof vPoints[0]);
    EXPECT_EQ(NUV_REASON_NONE, nuv_Judge(&PointsOfC, nullptr, &OptionsOfC, &Judgement, vPoints.data()));
    EXPECT_EQ(static_cast<int>(Expected.Fit.Kind), Judgement.Fit.Kind);
    ExpectSameMemory(Expected.Fit.Coefs, Judgement.Fit.Coefs);
    ExpectSameMemory(Expected.Covariance, Judgement.Covariance);
    for (std::size_t i = 0; i < vPoints.size(); ++i)
    {
        EXPECT_EQ(vExpected[i].dLength, vPoints[i].dLength);
        EXPECT_EQ(vExpected[i].dLeaveLength, vPoints[i].dLeaveLength);
        EXPECT_EQ(vExpected[i].dProbability, vPoints[i].dProbability);
    }
}

TEST(CInterface, RecordsThatAreResultsGoToTheLastArgument)
{
    const nuv::TOmographicParams Coefs = {1.5, 0.25, 3.0, -0.5, 2.0, 7.0, 0.001, -0.002};
    const nuv_TOmographicParams CoefsOfC = {1.5, 0.25, 3.0, -0.5, 2.0, 7.0, 0.001, -0.002};
    const judgement::TVector Expected = judgement::ImageOf(Coefs, 11.0, 13.0);
    nuv_TVector Image;
    nuv_ImageOf(&CoefsOfC, 11.0, 13.0, &Image);
    ExpectSameMemory(Expected, Image);
}
