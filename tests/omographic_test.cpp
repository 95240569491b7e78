// omographic_test.cpp: the omographic record and its fit.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/expect.h"
#include "support/fits.h"

#include <algorithm>
#include <climits>

namespace {

using namespace nuv_tests;
using nuv::TOmographicParams;

// A record in which every write is seen.
TOmographicParams UntouchedParams()
{
    return Filled<TOmographicParams>();
}

// The greatest distance of an image from its target, along an axis.
double GreatestResidual(const TControlPoints& a_Points, const TOmographicParams& a_P)
{
    double dGreatest = 0.0;
    for (int i = 0; i < a_Points.Count(); ++i)
    {
        const auto [dXa, dYa] = Map(a_P, a_Points.vdX[i], a_Points.vdY[i]);
        dGreatest = std::max({dGreatest, std::fabs(dXa - a_Points.vdXa[i]), std::fabs(dYa - a_Points.vdYa[i])});
    }
    return dGreatest;
}

const std::vector<double> SquareX = {0.0, 1.0, 1.0, 0.0};
const std::vector<double> SquareY = {0.0, 0.0, 1.0, 1.0};

// The rounding of fits of a few points with coordinates of order 1. The normal matrix has a condition of 1e3 to 1e5
// (that of the rows, squared), and each of its sums has about 10 roundings: 1e5 * 10 * 1.1e-16 is about 1e-10. The
// right-hand side of the refinement is the small residual, so the refinement removes most of that error.
const double WellConditioned = 1e-11;

// --- AffineCoefsToOmographicCoefs

TEST(AffineCoefsToOmographicCoefs, CopiesTheSixCoefficientsInOrderAndClearsTheDenominator)
{
    TOmographicParams Params = UntouchedParams();
    nuv::AffineCoefsToOmographicCoefs({1.0, 2.0, 3.0, 4.0, 5.0, 6.0}, Params);
    EXPECT_TRUE(SameRecord(TOmographicParams{1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 0.0, 0.0}, Params));
}

TEST(AffineCoefsToOmographicCoefs, CopiesSpecialValuesAsTheyAre)
{
    for (double dValue : {0.0, -0.0, Inf, -Inf, NaN, Subnormal, -Subnormal, Tolerance, 1.7976931348623157e308})
    {
        const auto Affine = Filled<nuv::TAffineCoefs>(dValue);
        TOmographicParams Params = UntouchedParams();
        nuv::AffineCoefsToOmographicCoefs(Affine, Params);
        EXPECT_TRUE(SameRecord(TOmographicParams{dValue, dValue, dValue, dValue, dValue, dValue, 0.0, 0.0}, Params));
    }
}

TEST(AffineCoefsToOmographicCoefs, EvaluationReproducesTheAffineMappingExactly)
{
    const nuv::TAffineCoefs Affine = {1.1, -0.3, 1e5, 0.7, 1e-3, -12.5};
    TOmographicParams Params = UntouchedParams();
    nuv::AffineCoefsToOmographicCoefs(Affine, Params);
    for (double dX : {-1e6, -0.1, 0.0, 1.0 / 3.0, 1e6})
    {
        for (double dY : {-1e3, -0.7, 0.0, 2.0 / 3.0, 1e9})
        {
            const double dW = Params.dG * dX + Params.dH * dY + 1.0;
            EXPECT_SAME_BITS(Affine.dA * dX + Affine.dB * dY + Affine.dC,
                             (Params.dA * dX + Params.dB * dY + Params.dC) / dW);
            EXPECT_SAME_BITS(Affine.dD * dX + Affine.dE * dY + Affine.dF,
                             (Params.dD * dX + Params.dE * dY + Params.dF) / dW);
        }
    }
}

// --- CalcOmographicCoefs: what is computed

TEST(CalcOmographicCoefs, FourPointsOfASquareOntoAQuadrilateralAreFittedExactly)
{
    // By hand: with C = F = 0 at the origin, W(1,0) = 1 + G, W(0,1) = 1 + H and W(1,1) = 1 + G + H. (2,0), (0,1) give
    // A = 2(1 + G), D = 0, B = 0, E = 1 + H; (3,2) gives 2 + 2G = 3(1 + G + H) and 1 + H = 2(1 + G + H), so
    // G = -2/5 and H = -1/5.
    const struct
    {
        TControlPoints Points;
        TOmographicParams Params;
    } Cases[] = {
        {{SquareX, SquareY, {0.0, 2.0, 3.0, 0.0}, {0.0, 0.0, 2.0, 1.0}}, {1.2, 0.0, 0.0, 0.0, 0.8, 0.0, -0.4, -0.2}},
        {{SquareX, SquareY, SquareX, SquareY}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0}},
        {{SquareX, SquareY, {5.0, 5.0, 4.0, 4.0}, {1.0, 2.0, 2.0, 1.0}}, {0.0, -1.0, 5.0, 1.0, 0.0, 1.0, 0.0, 0.0}},
        // a mirror image of the first: X and Y exchanged
        {{SquareX, SquareY, {0.0, 0.0, 2.0, 1.0}, {0.0, 2.0, 3.0, 0.0}}, {0.0, 0.8, 0.0, 1.2, 0.0, 0.0, -0.4, -0.2}},
    };
    for (const auto& Case : Cases)
    {
        TOmographicParams Params = UntouchedParams();
        EXPECT_EQ(1, Fit(Case.Points, Params));
        EXPECT_TRUE(NearRecord(Case.Params, Params, WellConditioned));
        EXPECT_LE(GreatestResidual(Case.Points, Params), WellConditioned);
    }
}

TEST(CalcOmographicCoefs, PointsOfAnAffineImageGiveItsCoefficientsAndNoDenominator)
{
    // X = 2x - y + 10, Y = 0.5x + 3y - 20: every product and sum of the points is exact.
    const TControlPoints Points = {{0.0, 4.0, 4.0, 0.0, 2.0, -2.0},
                                   {0.0, 0.0, 4.0, 4.0, 2.0, 6.0},
                                   {10.0, 18.0, 14.0, 6.0, 12.0, 0.0},
                                   {-20.0, -18.0, -6.0, -8.0, -13.0, -3.0}};
    TOmographicParams Params = UntouchedParams();
    EXPECT_EQ(1, Fit(Points, Params));
    EXPECT_TRUE(NearRecord<TOmographicParams>({2.0, -1.0, 10.0, 0.5, 3.0, -20.0, 0.0, 0.0}, Params, WellConditioned));
}

TEST(CalcOmographicCoefs, RefinementEndsAfterFourIterationsAsASuccess)
{
    // No transformation fits these six points, so the corrections fall slowly. Reference: the linear step and four
    // iterations with 50 decimal digits. The results of three, four and five iterations are 0.03 apart. The bound
    // allows for denominators close to zero, which magnify the rounding.
    const TControlPoints Points = {{3.0, 1.0, -3.0, 2.0, 3.0, 3.0},
                                   {-2.0, -2.0, -2.0, -3.0, 2.0, -3.0},
                                   {-3.0, 3.0, -1.0, 3.0, -2.0, 0.0},
                                   {-2.0, -2.0, -1.0, 2.0, 1.0, 1.0}};
    TOmographicParams Params = UntouchedParams();
    EXPECT_EQ(1, Fit(Points, Params)); // running out of iterations is no error
    EXPECT_TRUE(NearRecord<TOmographicParams>({-0x1.190cdab2718a9p-3, -0x1.339dcb12c93c5p-3, -0x1.617109fa893edp-4,
                                               0x1.575fdc2c25577p-4, 0x1.524131e5c4f38p-6, -0x1.da9693a035fcep-5,
                                               -0x1.ac2baa0dc7310p-3, 0x1.7bc042dc84d0dp-3},
                                              Params, 1e-6));
}

TControlPoints ThresholdPoints(double a_dShift)
{
    return {{-2.0, 2.0, 2.0, -2.0, 1.0},
            {-2.0, -2.0, 2.0, 2.0, 0.0},
            {-4.4375, -0.734375, 3.421875, -1.59375, a_dShift},
            {8.0, -2.1875, -8.0, 8.0, -1.875 + a_dShift}};
}

TEST(CalcOmographicCoefs, RefinementStopsWhenEveryCorrectionIsBelowTheThreshold)
{
    // With 50 digits the greatest correction of the third iteration is -0.99595e-8, so there is no fourth iteration. A
    // fourth one would move a coefficient by 1.09e-10. The bound is between that and the rounding of a fit of order 1.
    TOmographicParams Params = UntouchedParams();
    EXPECT_EQ(1, Fit(ThresholdPoints(0x1.0ep-5), Params));
    EXPECT_TRUE(NearRecord<TOmographicParams>({0x1.0031496f06d16p+0, 0x1.fe7757b6adeeap-1, -0x1.002bfc6da4135p+0,
                                               -0x1.80ae8b5a138b0p+1, -0x1.fd33e23f77c7ep-1, 0x1.0908bc89fdbd8p+0,
                                               0x1.e9f498ba2997fp-5, -0x1.fc6115d7caee1p-4},
                                              Params, WellConditioned));
}

TEST(CalcOmographicCoefs, RefinementGoesOnWhileACorrectionIsAboveTheThreshold)
{
    // As above, but the greatest correction is -1.01567e-8 and the greatest positive one 0.65e-8. So there is a fourth
    // iteration.
    TOmographicParams Params = UntouchedParams();
    EXPECT_EQ(1, Fit(ThresholdPoints(0x1.1p-5), Params));
    EXPECT_TRUE(NearRecord<TOmographicParams>({0x1.0032a6f44a499p+0, 0x1.fe754fbe08768p-1, -0x1.002af36e5442dp+0,
                                               -0x1.80af2050b454fp+1, -0x1.fd31746a233c4p-1, 0x1.09149a83021fap+0,
                                               0x1.e9dabe79b9351p-5, -0x1.fc5d3cd5b4a36p-4},
                                              Params, WellConditioned));
}

TEST(CalcOmographicCoefs, AFirstRefinementThatCannotBeFactorisedLeavesTheLinearSolution)
{
    // Three source points are on the line y = -1, and their targets are not on one line. The only solution of the
    // linear equations is U = 1 + y, V = 2(1 + y), W = 1 + y, all of which vanish on that line. W is only a rounding
    // error there. The squares of its reciprocal dominate the normal matrix of the refinement, and a radicand falls
    // below zero.
    const TControlPoints Points = {
        {-2.0, -1.0, 0.0, 0.0}, {-1.0, -1.0, -1.0, 0.0}, {-1.0, -1.0, 0.0, 1.0}, {-1.0, 0.0, -1.0, 2.0}};
    const TOmographicParams Linear = {0.0, 1.0, 1.0, 0.0, 2.0, 2.0, 0.0, 1.0};
    TOmographicParams Params = UntouchedParams();
    EXPECT_EQ(1, Fit(Points, Params));
    EXPECT_TRUE(NearRecord(Linear, Params, WellConditioned));
}

TEST(CalcOmographicCoefs, ALaterRefinementThatCannotBeFactorisedLeavesTheCoefficientsBeforeIt)
{
    // No transformation fits these five points. Reference: one iteration in the first case and two in the second one,
    // with 50 digits. The next iteration would move a coefficient by more than 1; its normal matrix is too close to
    // singular.
    const struct
    {
        TControlPoints Points;
        TOmographicParams Params;
    } Cases[] = {
        {{{-3.0, -3.0, -2.0, 2.0, 2.0},
          {-3.0, 3.0, 2.0, 1.0, 0.0},
          {-2.0, 3.0, -1.0, -3.0, 3.0},
          {3.0, -2.0, 3.0, -2.0, 1.0}},
         {0x1.570a45dd38261p-1, 0x1.60730b127a3f7p-1, -0x1.00bece243b9f2p-2, -0x1.d4d4ae9c76fd4p-3,
          -0x1.1c71ba8053895p+0, 0x1.84d3379d2228ep+0, -0x1.325001c09a73fp-2, -0x1.99292da646462p-1}},
        {{{-3.0, 2.0, -1.0, -1.0, -2.0},
          {-1.0, -2.0, 0.0, 2.0, 3.0},
          {-1.0, -1.0, 2.0, 1.0, 2.0},
          {-1.0, 3.0, 0.0, -1.0, 1.0}},
         {0x1.3cd2cf6ee5526p-2, 0x1.0b6a533c73145p+0, 0x1.eba5c61524ddcp+0, -0x1.92d6570f94db1p-6,
          -0x1.9717ec551f402p-3, 0x1.2049ddb25f2a1p-3, 0x1.5b61afa688f31p-3, 0x1.56d99ebf455a0p-1}},
    };
    for (const auto& Case : Cases)
    {
        TOmographicParams Params = UntouchedParams();
        EXPECT_EQ(1, Fit(Case.Points, Params));
        EXPECT_TRUE(NearRecord(Case.Params, Params, WellConditioned));
    }
}

// A 3 x 3 grid and its exact image, of the given extent, both moved by the given offset.
TControlPoints OffsetGrid(double a_dExtent, double a_dOffset)
{
    TControlPoints Points;
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            const double dX = i * a_dExtent / 2.0;
            const double dY = j * a_dExtent / 2.0;
            const double dW = 1.0 + 0.1 * dX / a_dExtent + 0.05 * dY / a_dExtent;
            Points.vdX.push_back(dX + a_dOffset);
            Points.vdY.push_back(dY + a_dOffset);
            Points.vdXa.push_back((dX * 1.1 + dY * 0.1 + 3.0) / dW + a_dOffset);
            Points.vdYa.push_back((dY * 0.9 - 0.05 * dX + 2.0) / dW + a_dOffset);
        }
    }
    return Points;
}

TEST(CalcOmographicCoefs, EveryOperationIsRoundedInTheStatedOrder)
{
    // These fits magnify the last bit of every operation: in the first one denominators are close to zero, in the
    // others digits cancel. Reference: a second program in Python, written from the order of operations that the header
    // and the source state, without contraction.
    const struct
    {
        TControlPoints Points;
        TOmographicParams Params;
    } Cases[] = {
        {{{3.0, 1.0, -3.0, 2.0, 3.0, 3.0},
          {-2.0, -2.0, -2.0, -3.0, 2.0, -3.0},
          {-3.0, 3.0, -1.0, 3.0, -2.0, 0.0},
          {-2.0, -2.0, -1.0, 2.0, 1.0, 1.0}},
         {-0x1.190cda97dd091p-3, -0x1.339dcafe08587p-3, -0x1.61710a5d6da48p-4, 0x1.575fdc624be08p-4,
          0x1.52413218d240ep-6, -0x1.da96948e97086p-5, -0x1.ac2baa087bb53p-3, 0x1.7bc042e46e721p-3}},
        {OffsetGrid(10.0, 1e5),
         {-0x1.5a705037233a1p-1, -0x1.4ca1fd765b354p-2, 0x1.86f0699dc4489p+16, -0x1.5a0b3d3074a3fp-1,
          -0x1.4d2ea57ad518ap-2, 0x1.86d8f4adccdaep+16, -0x1.c596c510e59d1p-18, -0x1.b3e649bda67cbp-19}},
        {OffsetGrid(10.0, 1e4),
         {-0x1.5b676e4cb57f0p-1, -0x1.584fb88880419p-2, 0x1.3b04225cc3630p+13, -0x1.5773cd23d8299p-1,
          -0x1.5dcf3494d5878p-2, 0x1.3a4844b98bf06p+13, -0x1.197f35abcf5e6p-14, -0x1.197f35ae0b19fp-15}},
    };
    for (const auto& Case : Cases)
    {
        TOmographicParams Params = UntouchedParams();
        EXPECT_EQ(1, Fit(Case.Points, Params));
        EXPECT_TRUE(SameRecord(Case.Params, Params));
    }
}

// --- CalcOmographicCoefs: failures and limits

TEST(CalcOmographicCoefs, FewerThanFourPointsAreIndeterminateAndTouchNothing)
{
    const TControlPoints Points = {SquareX, SquareY, SquareX, SquareY};
    for (int iPoints : {3, 2, 1, 0, -1, -4, INT_MIN})
    {
        TOmographicParams Params = UntouchedParams();
        EXPECT_EQ(nuv::RET_INDETERMINATE, nuv::CalcOmographicCoefs(iPoints, Points.vdX.data(), Points.vdY.data(),
                                                                   Points.vdXa.data(), Points.vdYa.data(), Params));
        EXPECT_TRUE(SameRecord(UntouchedParams(), Params));
        EXPECT_EQ(nuv::RET_INDETERMINATE,
                  nuv::CalcOmographicCoefs(iPoints, nullptr, nullptr, nullptr, nullptr, Params));
    }
}

// The sums of the rows times the observed values, as in the linear equations.
TOmographicParams RightHandSide(const TControlPoints& a_Points)
{
    auto Sums = Filled<TOmographicParams>(0.0);
    for (int i = 0; i < a_Points.Count(); ++i)
    {
        const double dX = a_Points.vdX[i];
        const double dY = a_Points.vdY[i];
        const double dXa = a_Points.vdXa[i];
        const double dYa = a_Points.vdYa[i];
        const double vdRowX[] = {dX, dY, 1.0, 0.0, 0.0, 0.0, -(dXa * dX), -(dXa * dY)};
        const double vdRowY[] = {0.0, 0.0, 0.0, dX, dY, 1.0, -(dYa * dX), -(dYa * dY)};
        double* const vdSums[] = {&Sums.dA, &Sums.dB, &Sums.dC, &Sums.dD, &Sums.dE, &Sums.dF, &Sums.dG, &Sums.dH};
        for (int j = 0; j < 8; ++j)
        {
            *vdSums[j] += vdRowX[j] * dXa;
            *vdSums[j] += vdRowY[j] * dYa;
        }
    }
    return Sums;
}

TEST(CalcOmographicCoefs, PointsThatCannotBeFactorisedAreIndeterminateWithTheRightHandSideInTheRecord)
{
    const struct
    {
        const char* szName;
        TControlPoints Points;
        TOmographicParams Params; // sums of whole numbers, by hand
    } Cases[] = {
        {"all points equal",
         {{1.0, 1.0, 1.0, 1.0}, {2.0, 2.0, 2.0, 2.0}, {3.0, 3.0, 3.0, 3.0}, {4.0, 4.0, 4.0, 4.0}},
         {12.0, 24.0, 12.0, 16.0, 32.0, 16.0, -100.0, -200.0}},
        {"all at the origin",
         {{0.0, 0.0, 0.0, 0.0}, {0.0, 0.0, 0.0, 0.0}, {0.0, 0.0, 0.0, 0.0}, {0.0, 0.0, 0.0, 0.0}},
         {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0}},
        {"source points on one line",
         {{0.0, 1.0, 2.0, 3.0}, {0.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 2.0, 3.0}, {1.0, 2.0, 4.0, 3.0}},
         {14.0, 0.0, 6.0, 19.0, 0.0, 10.0, -99.0, 0.0}},
    };
    for (const auto& Case : Cases)
    {
        SCOPED_TRACE(Case.szName);
        TOmographicParams Params = UntouchedParams();
        EXPECT_EQ(nuv::RET_INDETERMINATE, Fit(Case.Points, Params));
        EXPECT_TRUE(SameRecord(Case.Params, Params));
        EXPECT_TRUE(SameRecord(Case.Params, RightHandSide(Case.Points)));
    }
}

TEST(CalcOmographicCoefs, ANotFiniteCoordinateIsIndeterminateWithTheRightHandSideInTheRecord)
{
    const TControlPoints Finite = {
        {0.0, 1.0, 1.0, 0.0, 0.5}, {0.0, 0.0, 1.0, 1.0, 0.25}, {1.0, 3.0, 4.0, 1.5, 2.0}, {2.0, 1.0, 3.0, 4.0, 2.5}};
    std::vector<double> TControlPoints::*const Arrays[] = {&TControlPoints::vdX, &TControlPoints::vdY,
                                                           &TControlPoints::vdXa, &TControlPoints::vdYa};
    for (const auto Array : Arrays)
    {
        for (double dValue : {NaN, Inf, -Inf})
        {
            TControlPoints Points = Finite;
            (Points.*Array)[1] = dValue;
            TOmographicParams Params = UntouchedParams();
            EXPECT_EQ(nuv::RET_INDETERMINATE, Fit(Points, Params));
            EXPECT_TRUE(SameRecord(RightHandSide(Points), Params));
        }
    }
}

TEST(CalcOmographicCoefs, ZerosOfEitherSignAndSubnormalCoordinatesAreOrdinary)
{
    // The first quadrilateral, with the zeros replaced: nothing that small changes a coefficient of order 1.
    for (double dZero : {-0.0, Subnormal, -Subnormal})
    {
        const TControlPoints Points = {
            {dZero, 1.0, 1.0, dZero}, {dZero, dZero, 1.0, 1.0}, {dZero, 2.0, 3.0, dZero}, {dZero, dZero, 2.0, 1.0}};
        TOmographicParams Params = UntouchedParams();
        EXPECT_EQ(1, Fit(Points, Params));
        EXPECT_TRUE(NearRecord<TOmographicParams>({1.2, 0.0, 0.0, 0.0, 0.8, 0.0, -0.4, -0.2}, Params, WellConditioned));
    }
}

TEST(CalcOmographicCoefs, CoordinatesWhoseSquaresVanishOrOverflowAreIndeterminate)
{
    for (double dScale : {Subnormal, 1e-200, 1e200})
    {
        TControlPoints Points = {SquareX, SquareY, {0.0, 2.0, 3.0, 0.0}, {0.0, 0.0, 2.0, 1.0}};
        for (std::vector<double>* vdArray : {&Points.vdX, &Points.vdY, &Points.vdXa, &Points.vdYa})
        {
            for (double& dValue : *vdArray)
            {
                dValue *= dScale;
            }
        }
        TOmographicParams Params = UntouchedParams();
        EXPECT_EQ(nuv::RET_INDETERMINATE, Fit(Points, Params));
        EXPECT_TRUE(SameRecord(RightHandSide(Points), Params));
    }
}

TEST(CalcOmographicCoefs, ASquareWhoseOriginGoesToInfinityGivesOneWithEightNotANumbers)
{
    // A denominator of y cannot be written with the constant 1, so the linear equations are singular. With these whole
    // numbers the last radicand is exactly 0. The factorisation accepts it, and the solution divides by it.
    const struct
    {
        const char* szName;
        TControlPoints Points;
    } Cases[] = {
        {"X = (x + 1)/y, Y = (y + 1)/y",
         {{-1.0, 1.0, 1.0, -1.0}, {-1.0, -1.0, 1.0, 1.0}, {0.0, -2.0, 2.0, 0.0}, {0.0, 0.0, 2.0, 2.0}}},
        {"X = x/y, Y = 1/y",
         {{-1.0, 1.0, 1.0, -1.0}, {-1.0, -1.0, 1.0, 1.0}, {1.0, -1.0, 1.0, -1.0}, {-1.0, -1.0, 1.0, 1.0}}},
    };
    for (const auto& Case : Cases)
    {
        SCOPED_TRACE(Case.szName);
        TOmographicParams Params = UntouchedParams();
        EXPECT_EQ(1, Fit(Case.Points, Params));
        EXPECT_TRUE(SameRecord(Filled<TOmographicParams>(NaN), Params));
    }
}

TEST(CalcOmographicCoefs, ASquareWhoseOriginGoesToInfinityCanGiveOneWithFiniteCoefficientsThatFitNoPoint)
{
    // X = -(x + y)/(x + 2y), Y = -(y + 1)/(x + 2y): with these targets no radicand is exactly 0. Every point is missed
    // by a tenth at least, where the targets extend over two units.
    const TControlPoints Points = {{1.0, -1.0, -1.0, 1.0},
                                   {1.0, 1.0, -1.0, -1.0},
                                   {-2.0 / 3.0, 0.0, -2.0 / 3.0, 0.0},
                                   {-2.0 / 3.0, -2.0, 0.0, 0.0}};
    TOmographicParams Params = UntouchedParams();
    EXPECT_EQ(1, Fit(Points, Params));
    for (double dValue : Fields(Params))
    {
        EXPECT_TRUE(std::isfinite(dValue));
    }
    for (int i = 0; i < Points.Count(); ++i)
    {
        const TControlPoints Point = {{Points.vdX[i]}, {Points.vdY[i]}, {Points.vdXa[i]}, {Points.vdYa[i]}};
        EXPECT_GE(GreatestResidual(Point, Params), 0.1);
    }
}

TEST(CalcOmographicCoefs, ANotANumberCorrectionEndsTheRefinementAsASuccess)
{
    // One source point has two targets. The linear solution maps it to U = V = W = 0, but for rounding. In the
    // refinement the last radicand is exactly 0 and every correction is 0/0, which is not above the threshold.
    const TControlPoints Points = {
        {0.0, 2.0, 2.0, 0.0}, {2.0, 3.0, 3.0, -1.0}, {1.0, -1.0, 2.0, 2.0}, {3.0, 1.0, 1.0, 2.0}};
    TOmographicParams Params = UntouchedParams();
    EXPECT_EQ(1, Fit(Points, Params));
    EXPECT_TRUE(SameRecord(Filled<TOmographicParams>(NaN), Params));
}

TEST(CalcOmographicCoefs, LargeOffsetsCostDigitsUntilTheResultIsUselessOrIndeterminate)
{
    TOmographicParams Params = UntouchedParams();
    EXPECT_EQ(1, Fit(OffsetGrid(10.0, 0.0), Params));
    EXPECT_LE(GreatestResidual(OffsetGrid(10.0, 0.0), Params), 1e-13); // a few hundred roundings of 10
    EXPECT_EQ(1, Fit(OffsetGrid(10.0, 1e3), Params));
    EXPECT_LE(GreatestResidual(OffsetGrid(10.0, 1e3), Params), 1e-9);

    // At an offset of 1e4 times the extent the linear equations have lost every digit, and four iterations do not
    // recover them. The points are exact, and the result is off by more than a ten-thousandth of the extent.
    EXPECT_EQ(1, Fit(OffsetGrid(10.0, 1e5), Params));
    EXPECT_GE(GreatestResidual(OffsetGrid(10.0, 1e5), Params), 1e-3);

    Params = UntouchedParams();
    EXPECT_EQ(nuv::RET_INDETERMINATE, Fit(OffsetGrid(10.0, 1e6), Params));
    EXPECT_TRUE(SameRecord(RightHandSide(OffsetGrid(10.0, 1e6)), Params));
}

} // namespace
