// leave_one_out_test.cpp: leave-one-out residuals beside fits that are really repeated, and the table of kinds.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "sets.h"
#include "support/reference_fits.h"

#include <cmath>
#include <gtest/gtest.h>

namespace judgement_tests {
namespace {

using namespace judgement;

const char* const KIND_NAMES[] = {"conformal", "affine", "omographic"};

std::vector<nuv_reference::TControlPoint> ReferencePoints(const TSet& a_Set)
{
    std::vector<nuv_reference::TControlPoint> vPoints;
    for (std::size_t i = 0; i < a_Set.vdX.size(); ++i)
    {
        vPoints.push_back({a_Set.vdX[i], a_Set.vdY[i], a_Set.vdXa[i], a_Set.vdYa[i]});
    }
    return vPoints;
}

// The residual of a point in a fit of the others, by QR in long double.
std::array<double, 2> RealLeaveOneOut(const TSet& a_Set, int a_iKind, bool a_bMirrored, std::size_t i)
{
    const auto C =
        nuv_reference::ReferenceFit(KIND_NAMES[a_iKind], a_bMirrored, ReferencePoints(Without(a_Set, i))).Coefs;
    const long double x = a_Set.vdX[i];
    const long double y = a_Set.vdY[i];
    const long double dW = C(6) * x + C(7) * y + 1;
    return {static_cast<double>((C(0) * x + C(1) * y + C(2)) / dW - a_Set.vdXa[i]),
            static_cast<double>((C(3) * x + C(4) * y + C(5)) / dW - a_Set.vdYa[i])};
}

struct TLeave
{
    std::vector<double> vdX, vdY, vdDrops;
    TKindFit Fit;
};

TLeave Leave(const TSet& a_Set, nuv::enumMethodUsed a_Kind, bool a_bMirrored)
{
    const std::size_t n = a_Set.vdX.size();
    TLeave Result = {std::vector<double>(n), std::vector<double>(n), std::vector<double>(n), {}};
    EXPECT_EQ(REASON_NONE, FitKind(Points(a_Set), a_Kind, a_bMirrored, Result.Fit));
    EXPECT_EQ(REASON_NONE,
              LeaveOneOut(Points(a_Set), Result.Fit, Result.vdX.data(), Result.vdY.data(), Result.vdDrops.data()));
    return Result;
}

// a_dTolerance is in parts of the greatest leave-one-out residual.
void ExpectReal(const TSet& a_Set, nuv::enumMethodUsed a_Kind, bool a_bMirrored, double a_dTolerance)
{
    const TLeave Actual = Leave(a_Set, a_Kind, a_bMirrored);
    double dGreatest = 0;
    double dError = 0;
    for (std::size_t i = 0; i < a_Set.vdX.size(); ++i)
    {
        const auto Real = RealLeaveOneOut(a_Set, a_Kind, a_bMirrored, i);
        dGreatest = std::max(dGreatest, std::hypot(Real[0], Real[1]));
        dError = std::max(dError, std::hypot(Real[0] - Actual.vdX[i], Real[1] - Actual.vdY[i]));
    }
    EXPECT_LE(dError, a_dTolerance * dGreatest) << KIND_NAMES[a_Kind] << ", " << a_Set.vdX.size() << " points";
}

TEST(LeaveOneOut, OfTheLinearKindsIsThatOfRepeatedFits)
{
    for (const int iCount : {5, 8, 40, 150})
    {
        const TSet Set = RandomSet(iCount, Omographic, 2, static_cast<std::uint64_t>(iCount));
        ExpectReal(Set, nuv::METHOD_CONFORMAL, false, 1e-12);
        ExpectReal(Set, nuv::METHOD_CONFORMAL, true, 1e-12);
        ExpectReal(Set, nuv::METHOD_AFFINE, false, 1e-11);
    }
}

TEST(LeaveOneOut, OfTheOmographicKindIsThatOfRepeatedFitsUpTo100Points)
{
    for (const int iCount : {6, 8, 40, 100})
    {
        ExpectReal(RandomSet(iCount, Omographic, 2, static_cast<std::uint64_t>(iCount)), nuv::METHOD_OMOGRAPHIC, false,
                   1e-7);
    }
}

// One step from the fit instead of a repeated fit. With errors of 2 in 1000 units the difference is 3e-3 of the greatest
// residual at most.
TEST(LeaveOneOut, OfTheOmographicKindIsCloseToThatOfRepeatedFitsAbove100Points)
{
    for (const int iCount : {101, 160})
    {
        ExpectReal(RandomSet(iCount, Omographic, 2, static_cast<std::uint64_t>(iCount)), nuv::METHOD_OMOGRAPHIC, false,
                   3e-3);
    }
}

TEST(LeaveOneOut, TellsByHowMuchTheSumOfSquaresDrops)
{
    const TSet Set = RandomSet(9, Affine, 2, 5);
    for (const nuv::enumMethodUsed Kind : Kinds)
    {
        const TLeave Actual = Leave(Set, Kind, false);
        for (std::size_t i = 0; i < Set.vdX.size(); ++i)
        {
            TKindFit Others;
            ASSERT_EQ(REASON_NONE, FitKind(Points(Without(Set, i)), Kind, false, Others));
            EXPECT_NEAR(Actual.Fit.dSumOfSquares - Others.dSumOfSquares, Actual.vdDrops[i],
                        1e-9 * Actual.Fit.dSumOfSquares);
        }
    }
}

TEST(LeaveOneOut, IsInfiniteAtAPointThatTheOthersCannotReplace)
{
    TSet Set;
    for (int i = 0; i < 5; ++i)
    {
        Add(Set, Affine, 10 * i, 20 * i, 0, 0.1 * i * i);
    }
    Add(Set, Affine, 100, -30, 0, 0);
    const TLeave Actual = Leave(Set, nuv::METHOD_AFFINE, false);
    EXPECT_TRUE(std::isfinite(Actual.vdX[0]));
    EXPECT_TRUE(std::isinf(Actual.vdX[5]));
    TSupport Support;
    TKindRow vRows[KINDS];
    FindSupport(Points(Set), Support);
    ASSERT_EQ(REASON_NONE, JudgeKinds(Points(Set), Support, false, vRows));
    EXPECT_EQ(REASON_NONE, vRows[0].LeaveReason);
    EXPECT_EQ(REASON_DEPENDS_ON_POINT, vRows[1].LeaveReason);
    EXPECT_EQ(REASON_SOURCE_NO_FOUR, vRows[2].Reason);
}

TEST(LeaveOneOut, NeedsOnePointMoreThanTheKind)
{
    const TSet Set = RandomSet(4, Affine, 1, 3);
    TSupport Support;
    TKindRow vRows[KINDS];
    FindSupport(Points(Set), Support);
    ASSERT_EQ(REASON_NONE, JudgeKinds(Points(Set), Support, false, vRows));
    EXPECT_EQ(REASON_NONE, vRows[1].LeaveReason);
    EXPECT_EQ(REASON_NONE, vRows[2].Reason);
    EXPECT_EQ(REASON_NO_REDUNDANCY, vRows[2].LeaveReason);
    EXPECT_EQ(0, vRows[2].iFreedom);
}

// ---------------------------------------------------------------------------------------------------------------------

TKindRow Row(double a_dLeaveRms)
{
    TKindRow Result = {};
    Result.dLeaveRms = a_dLeaveRms;
    return Result;
}

TKindRow Missing(enumReason a_Reason)
{
    TKindRow Result = {};
    Result.Reason = a_Reason;
    Result.LeaveReason = a_Reason;
    return Result;
}

void ExpectChoice(const std::vector<TKindRow>& a_vRows, double a_dRounding, int a_iKind, enumChoice a_Choice)
{
    nuv::enumMethodUsed Kind;
    enumChoice Choice;
    ASSERT_TRUE(ChooseKind(a_vRows.data(), a_dRounding, Kind, Choice));
    EXPECT_EQ(a_iKind, Kind);
    EXPECT_EQ(a_Choice, Choice);
}

TEST(ChooseKind, TakesTheLeastErrorAndThePoorerKindWithinFivePercent)
{
    ExpectChoice({Row(3), Row(2), Row(1)}, 0, 2, CHOICE_LEAST_ERROR);
    ExpectChoice({Row(3), Row(1), Row(2)}, 0, 1, CHOICE_LEAST_ERROR);
    ExpectChoice({Row(3), Row(1.049), Row(1)}, 0, 1, CHOICE_POORER_AS_GOOD);
    ExpectChoice({Row(3), Row(1.051), Row(1)}, 0, 2, CHOICE_LEAST_ERROR);
    ExpectChoice({Row(1.04), Row(1.2), Row(1)}, 0, 0, CHOICE_POORER_AS_GOOD);
    ExpectChoice({Row(1), Row(2), Row(3)}, 0, 0, CHOICE_LEAST_ERROR);
}

TEST(ChooseKind, ErrorsThatAreRoundingAreEqual)
{
    ExpectChoice({Row(1), Row(3e-9), Row(1e-9)}, 4e-9, 1, CHOICE_POORER_AS_GOOD);
    ExpectChoice({Row(1), Row(3e-9), Row(1e-9)}, 2e-9, 2, CHOICE_LEAST_ERROR);
}

TEST(ChooseKind, TakesNoKindThatCannotBeJudgedUnlessNoneCan)
{
    ExpectChoice({Row(3), Row(2), Missing(REASON_NO_REDUNDANCY)}, 0, 1, CHOICE_LEAST_ERROR);
    TKindRow NotJudged = Row(0);
    NotJudged.LeaveReason = REASON_NO_REDUNDANCY;
    ExpectChoice({NotJudged, Missing(REASON_TOO_FEW_POINTS), Missing(REASON_TOO_FEW_POINTS)}, 0, 0, CHOICE_NOT_JUDGED);
    ExpectChoice({Missing(REASON_SPREAD_IS_ZERO), NotJudged, NotJudged}, 0, 1, CHOICE_NOT_JUDGED);
    nuv::enumMethodUsed Kind;
    enumChoice Choice;
    const std::vector<TKindRow> vNone(3, Missing(REASON_SPREAD_IS_ZERO));
    EXPECT_FALSE(ChooseKind(vNone.data(), 0, Kind, Choice));
}

} // namespace
} // namespace judgement_tests
