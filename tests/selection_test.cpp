// selection_test.cpp: the choice of the richest transformation that the control points support.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/expect.h"
#include "support/fits.h"

#include <climits>

namespace {

using namespace nuv_tests;
using nuv::enumMethodUsed;
using nuv::METHOD_AFFINE;
using nuv::METHOD_CONFORMAL;
using nuv::METHOD_OMOGRAPHIC;
using nuv::TOmographicParams;

// The result and the outputs of a call. iUsed is -1 if a_Used was not written.
struct TChoice
{
    bool bResult;
    int iUsed;
    TOmographicParams Params;
};

const int NotWritten = -1;

// Calls CalcCoefs with the requested kind as an int.
bool CallCalcCoefs(int a_iPoints, const TControlPoints& a_Points, bool a_bSameOrientation, int a_iRequested,
                   enumMethodUsed& a_Used, TOmographicParams& a_Params)
{
    const double* const vdX = a_Points.vdX.data();
    const double* const vdY = a_Points.vdY.data();
    const double* const vdXa = a_Points.vdXa.data();
    const double* const vdYa = a_Points.vdYa.data();
    if (a_iRequested >= 0 && a_iRequested <= 3) // two bits: the values that an object of the enumeration can have
    {
        return nuv::CalcCoefs(a_iPoints, vdX, vdY, vdXa, vdYa, a_bSameOrientation,
                              static_cast<enumMethodUsed>(a_iRequested), a_Used, a_Params);
    }
    // No C++ expression has such a value of the enumeration, but callers in other languages pass an int. This call
    // passes the enumeration in the same way as they do.
    using TCalcCoefs = bool (*)(int, const double*, const double*, const double*, const double*, bool, int,
                                enumMethodUsed&, TOmographicParams&);
    const auto Call = reinterpret_cast<TCalcCoefs>(reinterpret_cast<void (*)()>(&nuv::CalcCoefs));
    return Call(a_iPoints, vdX, vdY, vdXa, vdYa, a_bSameOrientation, a_iRequested, a_Used, a_Params);
}

// Calls CalcCoefs twice with different values in a_Used, so that a write of any value is seen.
TChoice Choose(const TControlPoints& a_Points, int a_iRequested, bool a_bSameOrientation = true)
{
    TChoice Choice = {false, NotWritten, Filled<TOmographicParams>()};
    enumMethodUsed Used = METHOD_CONFORMAL;
    enumMethodUsed Other = METHOD_OMOGRAPHIC;
    TOmographicParams Again = Filled<TOmographicParams>();
    Choice.bResult = CallCalcCoefs(a_Points.Count(), a_Points, a_bSameOrientation, a_iRequested, Used, Choice.Params);
    const bool bAgain = CallCalcCoefs(a_Points.Count(), a_Points, a_bSameOrientation, a_iRequested, Other, Again);
    EXPECT_EQ(Choice.bResult, bAgain);
    EXPECT_TRUE(SameRecord(Choice.Params, Again));
    Choice.iUsed = Used == Other ? static_cast<int>(Used) : NotWritten;
    EXPECT_TRUE(Used == Other || (Used == METHOD_CONFORMAL && Other == METHOD_OMOGRAPHIC));
    return Choice;
}

void ExpectChosen(int a_iUsed, const TOmographicParams& a_Params, const TChoice& a_Choice)
{
    EXPECT_TRUE(a_Choice.bResult);
    EXPECT_EQ(a_iUsed, a_Choice.iUsed);
    EXPECT_TRUE(SameRecord(a_Params, a_Choice.Params));
}

void ExpectFailed(const TOmographicParams& a_Params, const TChoice& a_Choice)
{
    EXPECT_FALSE(a_Choice.bResult);
    EXPECT_EQ(NotWritten, a_Choice.iUsed);
    EXPECT_TRUE(SameRecord(a_Params, a_Choice.Params));
}

// The fits of the single kinds, as records of the common form.
TOmographicParams Omographic(const TControlPoints& a_Points)
{
    TOmographicParams Params = Filled<TOmographicParams>();
    EXPECT_EQ(1, Fit(a_Points, Params));
    return Params;
}

TOmographicParams Affine(const TControlPoints& a_Points)
{
    auto C = Filled<nuv::TAffineCoefs>();
    EXPECT_EQ(1, Fit(a_Points, C));
    return {C.dA, C.dB, C.dC, C.dD, C.dE, C.dF, 0.0, 0.0};
}

TOmographicParams Conformal(const TControlPoints& a_Points)
{
    auto C = Filled<nuv::TConformalCoefs>();
    EXPECT_EQ(1, Fit(a_Points, C));
    return {C.dA, C.dB, C.dTx, -C.dB, C.dA, C.dTy, 0.0, 0.0};
}

// The first a_iCount of six points. No three of them are on one line, and no two of the three kinds give the same fit.
TControlPoints General(int a_iCount)
{
    TControlPoints Points = {{0.0, 4.0, 5.0, 1.0, 2.0, 3.0},
                             {0.0, 1.0, 4.0, 3.0, 1.5, 5.0},
                             {1.0, 6.0, 5.0, -1.0, 3.0, 1.0},
                             {2.0, 3.5, 9.0, 6.0, 4.0, 8.0}};
    for (std::vector<double>* vdArray : {&Points.vdX, &Points.vdY, &Points.vdXa, &Points.vdYa})
    {
        vdArray->resize(a_iCount);
    }
    return Points;
}

// Four points around the origin. All sums of the affine and the conformal fit are exact for them, and so are the
// coefficients for targets a x + b y, d x + e y if a, b, d, e have few digits.
const std::vector<double> CrossX = {-1.0, 1.0, 1.0, -1.0};
const std::vector<double> CrossY = {-1.0, -1.0, 1.0, 1.0};

TControlPoints LinearImage(double a_dA, double a_dB, double a_dD, double a_dE)
{
    TControlPoints Points = {CrossX, CrossY, {}, {}};
    for (int i = 0; i < Points.Count(); ++i)
    {
        Points.vdXa.push_back(a_dA * CrossX[i] + a_dB * CrossY[i]);
        Points.vdYa.push_back(a_dD * CrossX[i] + a_dE * CrossY[i]);
    }
    return Points;
}

std::vector<double> Negated(std::vector<double> a_vdValues)
{
    for (double& dValue : a_vdValues)
    {
        dValue = -dValue;
    }
    return a_vdValues;
}

// --- Which kind

TEST(CalcCoefs, FewerThanTwoPointsAreFalseAndTouchNothing)
{
    const TControlPoints Points = General(6);
    for (int iPoints : {1, 0, -1, -2, INT_MIN})
    {
        for (int iRequested : {0, 1, 2, 7})
        {
            for (bool bSameOrientation : {false, true})
            {
                enumMethodUsed Used = METHOD_AFFINE;
                TOmographicParams Params = Filled<TOmographicParams>();
                EXPECT_FALSE(CallCalcCoefs(iPoints, Points, bSameOrientation, iRequested, Used, Params));
                EXPECT_EQ(METHOD_AFFINE, Used);
                EXPECT_TRUE(SameRecord(Filled<TOmographicParams>(), Params));
            }
        }
    }
}

TEST(CalcCoefs, FourPointsInGeneralPositionAreOmographicIfSoRequested)
{
    for (int iPoints : {4, 5, 6})
    {
        ExpectChosen(METHOD_OMOGRAPHIC, Omographic(General(iPoints)), Choose(General(iPoints), METHOD_OMOGRAPHIC));
    }
}

TEST(CalcCoefs, OmographicRequestedWithThreePointsIsAffine)
{
    ExpectChosen(METHOD_AFFINE, Affine(General(3)), Choose(General(3), METHOD_OMOGRAPHIC));
}

TEST(CalcCoefs, OmographicRequestedWithThreePointsAndACollapsedTargetIsConformal)
{
    TControlPoints Points = General(3);
    Points.vdYa.assign(3, 0.0);
    ExpectChosen(METHOD_CONFORMAL, Conformal(Points), Choose(Points, METHOD_OMOGRAPHIC));
}

TEST(CalcCoefs, OmographicRequestedWithTwoPointsIsConformal)
{
    ExpectChosen(METHOD_CONFORMAL, Conformal(General(2)), Choose(General(2), METHOD_OMOGRAPHIC));
}

TEST(CalcCoefs, AffineRequestedIsAffineFromThreePointsOn)
{
    for (int iPoints : {3, 4, 5, 6})
    {
        ExpectChosen(METHOD_AFFINE, Affine(General(iPoints)), Choose(General(iPoints), METHOD_AFFINE));
    }
}

TEST(CalcCoefs, AffineRequestedWithTwoPointsIsConformalDirectly)
{
    ExpectChosen(METHOD_CONFORMAL, Conformal(General(2)), Choose(General(2), METHOD_AFFINE));
}

TEST(CalcCoefs, AffineRequestedWithEveryTargetYZeroIsConformal)
{
    for (int iPoints : {3, 4, 6})
    {
        TControlPoints Points = General(iPoints);
        Points.vdYa.assign(iPoints, 0.0);
        ExpectChosen(METHOD_CONFORMAL, Conformal(Points), Choose(Points, METHOD_AFFINE));
    }
}

TEST(CalcCoefs, ConformalRequestedWithManyPointsIsConformal)
{
    for (int iPoints : {2, 3, 4, 5, 6})
    {
        ExpectChosen(METHOD_CONFORMAL, Conformal(General(iPoints)), Choose(General(iPoints), METHOD_CONFORMAL));
    }
}

TEST(CalcCoefs, ARequestOutsideTheEnumerationIsConformal)
{
    for (int iRequested : {3, 7, -1, INT_MAX, INT_MIN})
    {
        ExpectChosen(METHOD_CONFORMAL, Conformal(General(6)), Choose(General(6), iRequested));
    }
}

TEST(CalcCoefs, OrientationMattersForTheConformalKindOnly)
{
    ExpectChosen(METHOD_OMOGRAPHIC, Omographic(General(6)), Choose(General(6), METHOD_OMOGRAPHIC, false));
    ExpectChosen(METHOD_AFFINE, Affine(General(6)), Choose(General(6), METHOD_AFFINE, false));
}

// --- Conformal results, by hand

TEST(CalcCoefs, TheOrientationKeepingSimilarityOfTwoPointsByHand)
{
    // A quarter turn counter-clockwise and a shift: X = -y + 1, Y = x + 1.
    const TControlPoints Points = {{0.0, 1.0}, {0.0, 0.0}, {1.0, 1.0}, {1.0, 2.0}};
    ExpectChosen(METHOD_CONFORMAL, {0.0, -1.0, 1.0, 1.0, 0.0, 1.0, 0.0, 0.0}, Choose(Points, METHOD_CONFORMAL, true));
}

TEST(CalcCoefs, TheOrientationReversingSimilarityOfTwoPointsByHand)
{
    // The same points by a reflection: X = y + 1, Y = x + 1. Its dE is the negative of a zero.
    const TControlPoints Points = {{0.0, 1.0}, {0.0, 0.0}, {1.0, 1.0}, {1.0, 2.0}};
    ExpectChosen(METHOD_CONFORMAL, {0.0, 1.0, 1.0, 1.0, -0.0, 1.0, 0.0, 0.0}, Choose(Points, METHOD_CONFORMAL, false));
}

TEST(CalcCoefs, AMirrorImageIsFittedExactlyByTheReversingSimilarityOnly)
{
    // X = 2x + 3y, Y = 3x - 2y. dF is the negative of a zero. The similarity that keeps the orientation has A = B = 0.
    const TControlPoints Points = LinearImage(2.0, 3.0, 3.0, -2.0);
    ExpectChosen(METHOD_CONFORMAL, {2.0, 3.0, 0.0, 3.0, -2.0, -0.0, 0.0, 0.0}, Choose(Points, METHOD_CONFORMAL, false));
    ExpectChosen(METHOD_CONFORMAL, {0.0, 0.0, 0.0, -0.0, 0.0, 0.0, 0.0, 0.0}, Choose(Points, METHOD_CONFORMAL, true));
}

TEST(CalcCoefs, TheReversingSimilarityOntoTheNegatedTargetIsTheKeepingOneWithTheSecondRowNegated)
{
    for (int iPoints : {2, 3, 5, 6})
    {
        TControlPoints Mirrored = General(iPoints);
        Mirrored.vdYa = Negated(Mirrored.vdYa);
        TOmographicParams Expected = Choose(General(iPoints), METHOD_CONFORMAL, true).Params;
        Expected.dD = -Expected.dD;
        Expected.dE = -Expected.dE;
        Expected.dF = -Expected.dF;
        ExpectChosen(METHOD_CONFORMAL, Expected, Choose(Mirrored, METHOD_CONFORMAL, false));
    }
}

TEST(CalcCoefs, EqualTargetPointsAreAConformalSuccessWithoutScale)
{
    TControlPoints Points = LinearImage(0.0, 0.0, 0.0, 0.0);
    Points.vdXa.assign(4, 3.0);
    Points.vdYa.assign(4, 4.0);
    for (int iRequested : {METHOD_CONFORMAL, METHOD_AFFINE}) // the affine determinant is 0
    {
        ExpectChosen(METHOD_CONFORMAL, {0.0, 0.0, 3.0, -0.0, 0.0, 4.0, 0.0, 0.0}, Choose(Points, iRequested, true));
        ExpectChosen(METHOD_CONFORMAL, {0.0, 0.0, 3.0, 0.0, -0.0, 4.0, 0.0, 0.0}, Choose(Points, iRequested, false));
    }
}

TEST(CalcCoefs, ZeroTargetsAreMirroredWithTheirSign)
{
    // The mirrored Y are -0.0, the mean of three of them is -0.0 and so is Ty = (0*(-3) + -0) - 1*0: dF is +0.0.
    const TControlPoints Points = {{-4.0, -3.0, -2.0}, {0.0, 0.0, 0.0}, {-4.0, -3.0, -2.0}, {0.0, 0.0, 0.0}};
    ExpectChosen(METHOD_CONFORMAL, {1.0, 0.0, 0.0, 0.0, -1.0, 0.0, 0.0, 0.0}, Choose(Points, METHOD_CONFORMAL, false));
}

TEST(CalcCoefs, TheCallersTargetIsNotMirroredInPlace)
{
    const TControlPoints Points = General(5);
    TControlPoints Copy = Points;
    Choose(Copy, METHOD_CONFORMAL, false);
    EXPECT_EQ(Points.vdX, Copy.vdX);
    EXPECT_EQ(Points.vdY, Copy.vdY);
    EXPECT_EQ(Points.vdXa, Copy.vdXa);
    EXPECT_EQ(Points.vdYa, Copy.vdYa);
}

// --- The determinant of the affine kind

TEST(CalcCoefs, AnAffineDeterminantWithinTheToleranceIsRejectedBothEndsIncluded)
{
    // X = x, Y = e y: the fit is exact, so the determinant is e. The conformal coefficient is (4 + 4e)/8, rounded.
    for (double dE : {Tolerance, -Tolerance, BelowTolerance, -BelowTolerance, Subnormal, -Subnormal, 0.0, -0.0})
    {
        SCOPED_TRACE(HexText(dE));
        const TControlPoints Points = LinearImage(1.0, 0.0, 0.0, dE);
        ASSERT_SAME_BITS(dE + 0.0, Affine(Points).dE);
        ExpectChosen(METHOD_CONFORMAL, Conformal(Points), Choose(Points, METHOD_AFFINE));
    }
}

TEST(CalcCoefs, AnAffineDeterminantBesideTheToleranceIsUsed)
{
    for (double dE : {AboveTolerance, -AboveTolerance, 2e-12, -1.0, 1e300})
    {
        SCOPED_TRACE(HexText(dE));
        const TOmographicParams Expected = {1.0, 0.0, 0.0, 0.0, dE, 0.0, 0.0, 0.0};
        ExpectChosen(METHOD_AFFINE, Expected, Choose(LinearImage(1.0, 0.0, 0.0, dE), METHOD_AFFINE));
    }
}

TEST(CalcCoefs, TheDeterminantIsThatOfBothProducts)
{
    // ea - db = (3)(2) - (6)(1) = 0 is rejected. A single product, or the sum of both, would not be 0.
    const TControlPoints Collapsed = LinearImage(2.0, 1.0, 6.0, 3.0);
    ExpectChosen(METHOD_CONFORMAL, Conformal(Collapsed), Choose(Collapsed, METHOD_AFFINE));
    // (0)(0) - (1)(1) = -1 is used.
    ExpectChosen(METHOD_AFFINE, {0.0, 1.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0},
                 Choose(LinearImage(0.0, 1.0, 1.0, 0.0), METHOD_AFFINE));
    // (1)(-1) - (1)(-1) = 0 is rejected. The sum of the products would not be 0.
    const TControlPoints Line = LinearImage(1.0, 1.0, -1.0, -1.0);
    ExpectChosen(METHOD_CONFORMAL, Conformal(Line), Choose(Line, METHOD_AFFINE));
}

TEST(CalcCoefs, ANotANumberDeterminantIsNoZero)
{
    for (int iRequested : {METHOD_AFFINE, METHOD_OMOGRAPHIC})
    {
        TControlPoints Points = LinearImage(1.0, 0.0, 0.0, 1.0);
        Points.vdXa[2] = NaN; // X of the affine fit is lost, Y is not
        ExpectChosen(METHOD_AFFINE, {NaN, NaN, NaN, 0.0, 1.0, 0.0, 0.0, 0.0}, Choose(Points, iRequested));
    }
}

TEST(CalcCoefs, AnInfiniteDeterminantIsUsed)
{
    for (double dE : {0x1p600, -0x1p600})
    {
        const TOmographicParams Expected = {0x1p600, 0.0, 0.0, 0.0, dE, 0.0, 0.0, 0.0};
        ExpectChosen(METHOD_AFFINE, Expected, Choose(LinearImage(0x1p600, 0.0, 0.0, dE), METHOD_AFFINE));
    }
}

// --- From the omographic kind down

TEST(CalcCoefs, EightNotANumbersOfASquareWhoseOriginGoesToInfinityLeadToTheNextUsableKind)
{
    // X = x/y, Y = 1/y: no omographic record can express it. The affine fit gives X = 0, Y = y with the determinant 0.
    // The conformal fit gives A = (0 + 4)/8 and no rotation.
    const TControlPoints Collapsed = {CrossX, CrossY, {1.0, -1.0, 1.0, -1.0}, {-1.0, -1.0, 1.0, 1.0}};
    ASSERT_TRUE(SameRecord(Filled<TOmographicParams>(NaN), Omographic(Collapsed)));
    ExpectChosen(METHOD_CONFORMAL, {0.5, 0.0, 0.0, -0.0, 0.5, 0.0, 0.0, 0.0}, Choose(Collapsed, METHOD_OMOGRAPHIC));

    // X = (2y - 1)/(x + y), Y = (y + 1)/(x + y). Affine, with the means (2, 0) and (1/2, 1/2): the slopes are -12/16,
    // 4/16, -4/16 and 4/16, the determinant is -1/8.
    const TControlPoints Points = {
        {0.0, 4.0, 4.0, 0.0}, {-2.0, -2.0, 2.0, 2.0}, {2.5, -2.5, 0.5, 1.5}, {0.5, -0.5, 0.5, 1.5}};
    ASSERT_TRUE(SameRecord(Filled<TOmographicParams>(NaN), Omographic(Points)));
    ExpectChosen(METHOD_AFFINE, {-0.75, 0.25, 2.0, -0.25, 0.25, 1.0, 0.0, 0.0}, Choose(Points, METHOD_OMOGRAPHIC));
}

TEST(CalcCoefs, OneInfiniteCoefficientIsEnoughToRejectTheOmographicKind)
{
    // The square onto (0,0), (2,0), (3,2), (0,1), source in units of 2^-500 and target of 2^524: dA = 1.2*2^1024
    // overflows, dE = 0.8*2^1024 does not, and dG and dH are some 2^500.
    const double dUnit = 0x1p-500;
    const double dTarget = 0x1p524;
    const TControlPoints Points = {{0.0, dUnit, dUnit, 0.0},
                                   {0.0, 0.0, dUnit, dUnit},
                                   {0.0, 2.0 * dTarget, 3.0 * dTarget, 0.0},
                                   {0.0, 0.0, 2.0 * dTarget, dTarget}};
    const TOmographicParams Rejected = Omographic(Points);
    ASSERT_SAME_BITS(Inf, Rejected.dA);
    for (double dValue : {Rejected.dB, Rejected.dC, Rejected.dD, Rejected.dE, Rejected.dF, Rejected.dG, Rejected.dH})
    {
        ASSERT_TRUE(std::isfinite(dValue));
    }
    // The affine fit overflows as well. Its determinant is NaN, which does not count as zero.
    ExpectChosen(METHOD_AFFINE, Affine(Points), Choose(Points, METHOD_OMOGRAPHIC));
}

// Coefficients close to the greatest double: a correction makes one overflow, and the first one stays finite.
TEST(CalcCoefs, EachCoefficientThatOverflowsByItsCorrectionIsEnough)
{
    struct TCase
    {
        int iInfinite;
        double dTarget;
        TControlPoints Points; // source in units of 2^-500, target in units of dTarget
    };
    const TCase Cases[] = {{1,
                            0x1p521,
                            {{4.0, -4.0, -1.0, 3.0, -3.0},
                             {-4.0, -2.0, 0.0, -1.0, 2.0},
                             {-3.0, -32.0, -6.0, 6.5, -4.5},
                             {-3.0, -26.0, -5.0, 5.0, -3.0}}},
                           {3,
                            0x1p522,
                            {{-1.0, -4.0, 3.0, -2.0, -1.0},
                             {2.0, 2.0, 4.0, 2.0, 4.0},
                             {-1.5, -2.0, -2.5, -2.0, -3.0},
                             {-1.5, 10.0, -14.0, 2.0, -5.5}}},
                           {4,
                            0x1p523,
                            {{2.0, 2.0, 1.0, -1.0, 4.0},
                             {-2.0, -3.0, 1.0, -3.0, 2.0},
                             {2.5, 3.0, 0.0, 1.5, 2.0},
                             {7.5, 8.5, 0.0, 4.0, 5.5}}}};
    for (const TCase& Case : Cases)
    {
        TControlPoints Points = Case.Points;
        for (int i = 0; i < Points.Count(); ++i)
        {
            Points.vdX[i] *= 0x1p-500;
            Points.vdY[i] *= 0x1p-500;
            Points.vdXa[i] *= Case.dTarget;
            Points.vdYa[i] *= Case.dTarget;
        }
        const TOmographicParams k = Omographic(Points);
        const double vdCoefs[] = {k.dA, k.dB, k.dC, k.dD, k.dE, k.dF, k.dG, k.dH};
        for (int i = 0; i < 8; ++i)
        {
            ASSERT_EQ(i == Case.iInfinite, std::isinf(vdCoefs[i])) << "coefficient " << i << " of " << Case.iInfinite;
            ASSERT_FALSE(std::isnan(vdCoefs[i]));
        }
        ExpectChosen(METHOD_AFFINE, Affine(Points), Choose(Points, METHOD_OMOGRAPHIC));
    }
}

TEST(CalcCoefs, AnIndeterminateOmographicFitLeadsToTheAffineKindWhoseRecordReplacesTheLeftOvers)
{
    // Three different points, one of them twice: they do not determine eight coefficients, but they determine six.
    const TControlPoints Points = {
        {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {10.0, 12.0, 10.0, 10.0}, {20.0, 20.0, 23.0, 20.0}};
    auto LeftOvers = Filled<TOmographicParams>();
    ASSERT_EQ(nuv::RET_INDETERMINATE, nuv::CalcOmographicCoefs(4, Points.vdX.data(), Points.vdY.data(),
                                                               Points.vdXa.data(), Points.vdYa.data(), LeftOvers));
    const TChoice Choice = Choose(Points, METHOD_OMOGRAPHIC);
    ExpectChosen(METHOD_AFFINE, Affine(Points), Choice);
    EXPECT_NEAR(2.0, Choice.Params.dA, 1e-13); // some ten roundings of coordinates up to 23
    EXPECT_NEAR(3.0, Choice.Params.dE, 1e-13);
}

TEST(CalcCoefs, LargeOffsetsCanCostTheOmographicKindSilentlyOrLeadToTheAffineOne)
{
    // An exact projective image of a grid of extent 10 at a large offset: see the limits of the fit.
    const auto Grid = [](double a_dOffset)
    {
        TControlPoints Points;
        for (int i = 0; i < 9; ++i)
        {
            const double dX = i / 3 * 5.0;
            const double dY = i % 3 * 5.0;
            const double dW = 1.0 + 0.1 * dX / 10.0 + 0.05 * dY / 10.0;
            Points.vdX.push_back(dX + a_dOffset);
            Points.vdY.push_back(dY + a_dOffset);
            Points.vdXa.push_back((dX * 1.1 + dY * 0.1 + 3.0) / dW + a_dOffset);
            Points.vdYa.push_back((dY * 0.9 - 0.05 * dX + 2.0) / dW + a_dOffset);
        }
        return Points;
    };
    EXPECT_EQ(METHOD_OMOGRAPHIC, Choose(Grid(1e5), METHOD_OMOGRAPHIC).iUsed);
    ExpectChosen(METHOD_AFFINE, Affine(Grid(1e6)), Choose(Grid(1e6), METHOD_OMOGRAPHIC));
}

// --- Failures

TEST(CalcCoefs, AllSourcePointsEqualAreFalseWithUsedUntouched)
{
    const TControlPoints Points = {
        {1.0, 1.0, 1.0, 1.0}, {2.0, 2.0, 2.0, 2.0}, {3.0, 3.0, 3.0, 3.0}, {4.0, 4.0, 4.0, 4.0}};
    for (bool bSameOrientation : {true, false})
    {
        for (int iRequested : {0, 1, 7})
        {
            ExpectFailed(Filled<TOmographicParams>(), Choose(Points, iRequested, bSameOrientation));
        }
        // The omographic attempt leaves its right-hand side: 4 times X x, X y, X, Y x, Y y, Y, -(X^2 + Y^2) x, ... y.
        ExpectFailed({12.0, 24.0, 12.0, 16.0, 32.0, 16.0, -100.0, -200.0},
                     Choose(Points, METHOD_OMOGRAPHIC, bSameOrientation));
    }
}

TEST(CalcCoefs, AllSourcePointsEqualAreFalseEvenIfTheTargetsDiffer)
{
    for (bool bSameOrientation : {true, false})
    {
        ExpectFailed(Filled<TOmographicParams>(),
                     Choose({{1.0, 1.0}, {2.0, 2.0}, {3.0, 5.0}, {4.0, 8.0}}, METHOD_CONFORMAL, bSameOrientation));
    }
}

TEST(CalcCoefs, ThreeEqualSourcePointsAreFalseWithTheRecordUntouchedWhateverIsRequested)
{
    const TControlPoints Points = {{1.0, 1.0, 1.0}, {2.0, 2.0, 2.0}, {3.0, 3.0, 3.0}, {4.0, 4.0, 4.0}};
    for (int iRequested : {0, 1, 2})
    {
        ExpectFailed(Filled<TOmographicParams>(), Choose(Points, iRequested));
    }
}

TEST(CalcCoefs, ANotFiniteCoordinateIsASuccessWithNotANumbersInTheConformalKind)
{
    for (bool bSameOrientation : {true, false})
    {
        for (double dValue : {NaN, Inf, -Inf})
        {
            // In the source it spoils every coefficient.
            TControlPoints Points = General(3);
            Points.vdX[1] = dValue;
            ExpectChosen(METHOD_CONFORMAL, {NaN, NaN, NaN, NaN, NaN, NaN, 0.0, 0.0},
                         Choose(Points, METHOD_CONFORMAL, bSameOrientation));
            // And in the target too: A and B depend on both target coordinates.
            Points = General(3);
            Points.vdYa[1] = dValue;
            ExpectChosen(METHOD_CONFORMAL, {NaN, NaN, NaN, NaN, NaN, NaN, 0.0, 0.0},
                         Choose(Points, METHOD_CONFORMAL, bSameOrientation));
        }
    }
}

} // namespace
