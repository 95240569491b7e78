// judge_test.cpp: frames, images, converged fits, check points, and the judgement as a whole.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "internal.h"
#include "sets.h"
#include "support/reference_fits.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace judgement_tests {
namespace {

using namespace judgement;

const TOptions AUTO = {ASK_AUTO, 0, 0, 0, USUAL_LEVEL};

// A search of the greatest length skips what IsShorter calls shorter.
TEST(Lengths, AreShorterOnlyBeyondDoubt)
{
    for (const double dScale : {1e-320, 1e-160, 1e-130, 1e-3, 1.0, 1e140, 1e155, 1e300})
    {
        for (const double dLength : {4.9, 5.0, 5.01, 5.1, 6.0})
        {
            const bool bShorter = IsShorter(3 * dScale, -4 * dScale, dLength * dScale);
            EXPECT_TRUE(!bShorter || dLength > 5) << dLength << " " << dScale;
            EXPECT_TRUE(bShorter || dLength < 5.05 || dScale < 1e-135 || dScale > 1e145) << dLength << " " << dScale;
        }
    }
    const double dNan = std::numeric_limits<double>::quiet_NaN();
    const double dInfinity = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(IsShorter(dNan, 0, 1));
    EXPECT_FALSE(IsShorter(dInfinity, 0, 1));
    EXPECT_FALSE(IsShorter(1, 0, dNan));
    EXPECT_FALSE(IsShorter(0, 0, 0));
    EXPECT_FALSE(IsShorter(1.5e-162, 1.5e-162, 2e-162)); // both squares are rounded to 0
}

TEST(Frames, OriginsAreShortNumbers)
{
    const double vdValues[] = {4500123.4, 4500423.4, 4500223.4};
    EXPECT_EQ(4500300, LocalOrigin(3, vdValues, 0));
    const double vdSmall[] = {0.012, 0.052, 0.022};
    EXPECT_EQ(0.03, LocalOrigin(3, vdSmall, 0));
    const double vdNegative[] = {-7, 3, -1};
    EXPECT_FALSE(std::signbit(LocalOrigin(3, vdNegative, 0)));
    const double vdEqual[] = {1234.5678, 1234.5678};
    EXPECT_EQ(1230, LocalOrigin(2, vdEqual, 40));
    EXPECT_EQ(1234.5678, LocalOrigin(2, vdEqual, 0));
}

// The conversion to original coordinates is as exact as the result can be: in long double it has 11 bits more.
TEST(Frames, OriginalCoefficientsAreRoundedOnce)
{
    TNumbers Numbers(3);
    for (int k = 0; k < 200; ++k)
    {
        const nuv::TOmographicParams L = {Numbers.Uniform(),        Numbers.Uniform(),       Numbers.Uniform(),
                                          Numbers.Uniform(),        Numbers.Uniform(),       Numbers.Uniform(),
                                          1e-7 * Numbers.Uniform(), 1e-7 * Numbers.Uniform()};
        const TOrigins O = {3000, 2000, 4500000, 5300000};
        nuv::TOmographicParams Original;
        ASSERT_TRUE(ToOriginalFrame(L, O, Original));
        const long double W0 = 1 - static_cast<long double>(L.dG) * O.dX - static_cast<long double>(L.dH) * O.dY;
        const long double dC =
            (L.dC - static_cast<long double>(L.dA) * O.dX - static_cast<long double>(L.dB) * O.dY) / W0 + O.dXa;
        const long double dE = (L.dE + static_cast<long double>(O.dYa) * L.dH) / W0;
        EXPECT_NEAR(static_cast<double>(dC), Original.dC, 1e-15 * std::fabs(Original.dC));
        EXPECT_NEAR(static_cast<double>(dE), Original.dE, 2.3e-16 * std::fabs(Original.dE));
    }
}

TEST(Frames, ThereAreNoOriginalCoefficientsIfTheOriginGoesToInfinity)
{
    const nuv::TOmographicParams Local = {1, 0, 0, 0, 1, 0, 0.5, 0.25};
    nuv::TOmographicParams Original;
    EXPECT_FALSE(ToOriginalFrame(Local, {1, 2, 0, 0}, Original));
    EXPECT_TRUE(ToOriginalFrame(Local, {1, 3, 0, 0}, Original));
}

TEST(Images, AreInvertedInAllKinds)
{
    const TOrigins O = {3000, 2000, 4500000, 5300000};
    for (const nuv::TOmographicParams& Coefs : {Similarity, Affine, Omographic})
    {
        TVector Target;
        TVector Source;
        ASSERT_EQ(REASON_NONE, TransformPoint(Coefs, O, {3123.5, 1876.25}, Target));
        ASSERT_EQ(REASON_NONE, InversePoint(Coefs, O, Target, Source));
        EXPECT_NEAR(3123.5, Source.dX, 1e-8);
        EXPECT_NEAR(1876.25, Source.dY, 1e-8);
    }
    TVector Nowhere = {7, 7};
    EXPECT_EQ(REASON_NOT_INVERTIBLE, InversePoint({1, 2, 0, 2, 4, 0, 0, 0}, O, {1, 1}, Nowhere));
    EXPECT_EQ(7, Nowhere.dX);
    EXPECT_EQ(REASON_COEFS_NOT_FINITE, TransformPoint({1, 2, 1, 2, 4, 1, -1, 0}, {0, 0, 0, 0}, {1, 0}, Nowhere));
}

// The sum of squares of the omographic fit by an independent solver.
double ReferenceSum(const TSet& a_Set)
{
    std::vector<nuv_reference::TControlPoint> vPoints;
    for (std::size_t i = 0; i < a_Set.vdX.size(); ++i)
    {
        vPoints.push_back({a_Set.vdX[i], a_Set.vdY[i], a_Set.vdXa[i], a_Set.vdYa[i]});
    }
    double dSum = 0;
    for (const auto& R : nuv_reference::OmographicFit(vPoints).vResiduals)
    {
        dSum += static_cast<double>(R[0] * R[0] + R[1] * R[1]);
    }
    return dSum;
}

// A set with errors so large that the four iterations of the library do not converge.
TEST(FitKind, GoesOnUntilTheOmographicFitHasConverged)
{
    const TSet Set = RandomSet(40, Omographic, 300, 11);
    const TControlPoints P = Points(Set);
    nuv::TOmographicParams Library;
    TKindFit Fit;
    ASSERT_EQ(1, nuv::CalcOmographicCoefs(P.iCount, P.vdX, P.vdY, P.vdXa, P.vdYa, Library));
    ASSERT_EQ(REASON_NONE, FitKind(P, nuv::METHOD_OMOGRAPHIC, false, Fit));
    const double dExpected = ReferenceSum(Set);
    std::vector<double> vdDx(40), vdDy(40);
    const double dLibrary = Residuals(P, Library, vdDx.data(), vdDy.data());
    EXPECT_GT(dLibrary, dExpected * (1 + 1e-9)); // the library alone has not converged
    EXPECT_NEAR(dExpected, Fit.dSumOfSquares, 1e-13 * dExpected);
    EXPECT_GT(Fit.iIterations, 0);
    EXPECT_EQ(1, Fit.bConverged);
}

// With large residuals rounding hides the last steps: they lower the sum of squares by less than its last digit.
TEST(FitKind, HasConvergedWhenRoundingHidesTheStepsThatAreLeft)
{
    for (std::uint64_t iSeed = 0; iSeed < 40; ++iSeed)
    {
        TSet Set = RandomSet(16, Omographic, 1, iSeed);
        Set.vdXa[3] += 500;
        TKindFit Fit;
        ASSERT_EQ(REASON_NONE, FitKind(Points(Set), nuv::METHOD_OMOGRAPHIC, false, Fit));
        EXPECT_EQ(1, Fit.bConverged) << iSeed << ", " << Fit.iIterations << " steps";
        const double dExpected = ReferenceSum(Set);
        EXPECT_NEAR(dExpected, Fit.dSumOfSquares, 1e-12 * dExpected) << iSeed;
    }
}

TEST(FitKind, KeepsTheBitsOfAFitThatHasConverged)
{
    const TSet Set = RandomSet(40, Omographic, 0.01, 12);
    const TControlPoints P = Points(Set);
    nuv::TOmographicParams Library;
    TKindFit Fit;
    nuv::CalcOmographicCoefs(P.iCount, P.vdX, P.vdY, P.vdXa, P.vdYa, Library);
    ASSERT_EQ(REASON_NONE, FitKind(P, nuv::METHOD_OMOGRAPHIC, false, Fit));
    EXPECT_EQ(0, Fit.iIterations);
    EXPECT_EQ(1, Fit.bConverged);
    EXPECT_EQ(Library.dA, Fit.Coefs.dA);
    EXPECT_EQ(Library.dH, Fit.Coefs.dH);
}

TEST(Judge, ChecksPointsThatItDoesNotFit)
{
    TSet Set = RandomSet(9, Affine, 0.5, 2);
    const TSet Fitted = Without(Without(Set, 5), 2);
    std::vector<enumRole> vRoles(9, ROLE_FITTED);
    vRoles[2] = vRoles[5] = ROLE_CHECK;
    TJudgement All, Alone;
    std::vector<TPointJudgement> vAll(9), vAlone(7);
    ASSERT_EQ(REASON_NONE, Judge(Points(Set), vRoles.data(), AUTO, All, vAll.data()));
    ASSERT_EQ(REASON_NONE, Judge(Points(Fitted), nullptr, AUTO, Alone, vAlone.data()));
    EXPECT_EQ(7, All.iFitted);
    EXPECT_EQ(2, All.iChecks);
    EXPECT_EQ(Alone.Fit.Coefs.dA, All.Fit.Coefs.dA);
    EXPECT_EQ(Alone.dRms, All.dRms);
    EXPECT_EQ(vAlone[6].dStudentised, vAll[8].dStudentised);
    EXPECT_EQ(ROLE_CHECK, vAll[2].Role);
    EXPECT_EQ(0, vAll[2].bLeave);
    const double dSum = vAll[2].dLength * vAll[2].dLength + vAll[5].dLength * vAll[5].dLength;
    EXPECT_NEAR(std::sqrt(dSum / 4), All.dCheckRms, 1e-15 * All.dCheckRms);
    EXPECT_NE(2, All.iLargest);
    EXPECT_NE(5, All.iLargest);
}

// The residual in source units moves the source point to where the transformation hits the given target point.
TEST(Judge, GivesResidualsInSourceUnits)
{
    const TSet Set = RandomSet(9, Omographic, 0.5, 2);
    TJudgement Result;
    std::vector<TPointJudgement> vPoints(9);
    ASSERT_EQ(REASON_NONE, Judge(Points(Set), nullptr, {ASK_OMOGRAPHIC, 0, 0, 0, 0}, Result, vPoints.data()));
    for (std::size_t i = 0; i < 9; ++i)
    {
        TVector Target;
        const TVector Moved = {Set.vdX[i] + vPoints[i].dSourceX, Set.vdY[i] + vPoints[i].dSourceY};
        ASSERT_EQ(1, vPoints[i].bSource);
        ASSERT_EQ(REASON_NONE, TransformPoint(Result.Fit.Coefs, Result.Origins, Moved, Target));
        EXPECT_NEAR(Set.vdXa[i], Target.dX, 1e-9);
        EXPECT_NEAR(Set.vdYa[i], Target.dY, 1e-9);
        EXPECT_GT(std::hypot(vPoints[i].dSourceX, vPoints[i].dSourceY), 1e-3);
    }
}

TEST(Judge, TakesTheKindThatWasAskedForOrFails)
{
    const TSet Set = RandomSet(3, Affine, 0.5, 2);
    std::vector<TPointJudgement> vPoints(3);
    TJudgement Result;
    EXPECT_EQ(REASON_TOO_FEW_POINTS, Judge(Points(Set), nullptr, {ASK_OMOGRAPHIC, 0, 0, 0, 0}, Result, vPoints.data()));
    ASSERT_EQ(REASON_NONE, Judge(Points(Set), nullptr, {ASK_RICHEST, 0, 0, 0, 0}, Result, vPoints.data()));
    EXPECT_EQ(nuv::METHOD_AFFINE, Result.Fit.Kind);
    EXPECT_EQ(0, Result.bSigma);
    ASSERT_EQ(REASON_NONE, Judge(Points(Set), nullptr, AUTO, Result, vPoints.data()));
    EXPECT_EQ(nuv::METHOD_CONFORMAL, Result.Fit.Kind); // three points cannot judge the affine kind
    const TSet Two = Without(Set, 0);
    ASSERT_EQ(REASON_NONE, Judge(Points(Two), nullptr, AUTO, Result, vPoints.data()));
    EXPECT_EQ(CHOICE_NOT_JUDGED, Result.Choice);
    const TSet None;
    EXPECT_EQ(REASON_TOO_FEW_POINTS, Judge(Points(None), nullptr, AUTO, Result, nullptr));
}

TEST(Judge, LeastErrorIsThatOfTheTrueKindWithGoodPoints)
{
    TJudgement Result;
    std::vector<TPointJudgement> vPoints(30);
    const nuv::TOmographicParams vTrue[] = {Similarity, Affine, Omographic};
    for (int k = 0; k < KINDS; ++k)
    {
        int iRight = 0;
        for (std::uint64_t iSeed = 0; iSeed < 50; ++iSeed)
        {
            const TSet Set = RandomSet(30, vTrue[k], 0.5, iSeed);
            ASSERT_EQ(REASON_NONE, Judge(Points(Set), nullptr, AUTO, Result, vPoints.data()));
            iRight += Result.Fit.Kind == k ? 1 : 0;
        }
        EXPECT_GE(iRight, 45) << k;
    }
}

} // namespace
} // namespace judgement_tests
