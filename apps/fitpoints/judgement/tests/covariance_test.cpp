// covariance_test.cpp: covariances beside an explicit inverse, beside numerical derivatives and beside simulations.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "sets.h"

#include <Eigen/Dense>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace judgement_tests {
namespace {

using namespace judgement;
using TMatrix8 = Eigen::Matrix<double, 8, 8>;

TMatrix8 Matrix(const TCoefsCovariance& a_Covariance)
{
    TMatrix8 Result;
    for (int i = 0; i < 8; ++i)
    {
        for (int j = 0; j <= i; ++j)
        {
            Result(i, j) = Result(j, i) = a_Covariance.vdPacked[i * (i + 1) / 2 + j];
        }
    }
    return Result;
}

TJudgement Judged(const TSet& a_Set, enumMethod a_Method, bool a_bMirrored = false)
{
    TJudgement Result;
    std::vector<TPointJudgement> vPoints(a_Set.vdX.size());
    EXPECT_EQ(REASON_NONE, Judge(Points(a_Set), nullptr, {a_Method, a_bMirrored, 0, 0, 0}, Result, vPoints.data()));
    EXPECT_EQ(1, Result.bSigma);
    return Result;
}

// The fits of many sets that differ by their errors: the covariance of their coefficients.
TEST(Covariance, OfCoefficientsIsThatOfRepeatedMeasurements)
{
    const int iSets = 4000;
    for (const enumMethod Method : {ASK_CONFORMAL, ASK_AFFINE, ASK_OMOGRAPHIC})
    {
        const nuv::TOmographicParams Coefs = Method == ASK_CONFORMAL ? Similarity
                                             : Method == ASK_AFFINE  ? Affine
                                                                     : Omographic;
        const TSet Exact = RandomSet(9, Coefs, 0, 77);
        std::mt19937_64 Generator(5);
        std::normal_distribution<double> Normal(0, 0.1);
        Eigen::MatrixXd Fits(iSets, 8);
        double dVariance = 0;
        TMatrix8 Mean = TMatrix8::Zero();
        for (int k = 0; k < iSets; ++k)
        {
            TSet Set = Exact;
            for (std::size_t i = 0; i < 9; ++i)
            {
                Set.vdXa[i] += Normal(Generator);
                Set.vdYa[i] += Normal(Generator);
            }
            TKindFit Fit;
            TCoefsCovariance Covariance;
            ASSERT_EQ(REASON_NONE, FitKind(Points(Set), static_cast<nuv::enumMethodUsed>(Method), false, Fit));
            ASSERT_EQ(REASON_NONE, CovarianceOfCoefs(Points(Set), Fit, Covariance));
            const nuv::TOmographicParams& C = Fit.Coefs;
            Fits.row(k) << C.dA, C.dB, C.dC, C.dD, C.dE, C.dF, C.dG, C.dH;
            Mean += Matrix(Covariance) / iSets;
            dVariance += Fit.dSumOfSquares / (18 - Unknowns(Fit.Kind)) / iSets;
        }
        EXPECT_NEAR(0.01, dVariance, 0.0004);
        const Eigen::MatrixXd Centred = Fits.rowwise() - Fits.colwise().mean();
        const TMatrix8 Seen = Centred.transpose() * Centred / (iSets - 1);
        for (int i = 0; i < 8; ++i)
        {
            for (int j = 0; j <= i; ++j)
            {
                const double dSize = std::sqrt(Mean(i, i) * Mean(j, j));
                EXPECT_NEAR(Seen(i, j), Mean(i, j), 0.08 * dSize + 1e-20) << Method << " " << i << " " << j;
            }
        }
    }
}

using TCoefs = Eigen::Matrix<double, 8, 1>;

nuv::TOmographicParams Record(const TCoefs& C)
{
    return {C(0), C(1), C(2), C(3), C(4), C(5), C(6), C(7)};
}

TCoefs Vector(const nuv::TOmographicParams& C)
{
    TCoefs Result;
    Result << C.dA, C.dB, C.dC, C.dD, C.dE, C.dF, C.dG, C.dH;
    return Result;
}

// Numerical derivatives of a function of the coefficients, with steps of a part of their standard deviations.
template <class TFunction>
Eigen::MatrixXd Derivatives(const nuv::TOmographicParams& a_Coefs, const TMatrix8& a_Covariance, TFunction a_Function)
{
    const TCoefs Coefs = Vector(a_Coefs);
    const Eigen::VectorXd Value = a_Function(Record(Coefs));
    Eigen::MatrixXd Result = Eigen::MatrixXd::Zero(Value.size(), 8);
    for (int j = 0; j < 8; ++j)
    {
        const double dStep = 1e-3 * std::sqrt(a_Covariance(j, j));
        if (dStep > 0)
        {
            TCoefs Above = Coefs;
            TCoefs Below = Coefs;
            Above(j) += dStep;
            Below(j) -= dStep;
            Result.col(j) = (a_Function(Record(Above)) - a_Function(Record(Below))) / (Above(j) - Below(j));
        }
    }
    return Result;
}

void ExpectClose(const Eigen::MatrixXd& a_Expected, const Eigen::MatrixXd& a_Actual, double a_dRelative)
{
    for (Eigen::Index i = 0; i < a_Expected.rows(); ++i)
    {
        for (Eigen::Index j = 0; j < a_Expected.cols(); ++j)
        {
            const double dSize = std::sqrt(a_Expected(i, i) * a_Expected(j, j));
            EXPECT_NEAR(a_Expected(i, j), a_Actual(i, j), a_dRelative * dSize + 1e-30) << i << " " << j;
        }
    }
}

TEST(Covariance, OfAnImageAndOfASourcePointFollowsTheDerivatives)
{
    const TJudgement J = Judged(RandomSet(12, Omographic, 0.2, 4), ASK_OMOGRAPHIC);
    const TMatrix8 C = Matrix(J.Covariance);
    const TOrigins None = {0, 0, 0, 0};
    const TVector Source = {123, -45};
    const TVector Target = ImageOf(J.Fit.Coefs, Source.dX, Source.dY);
    const auto Image = [&](const nuv::TOmographicParams& a_Coefs)
    {
        const TVector V = ImageOf(a_Coefs, Source.dX, Source.dY);
        return Eigen::VectorXd(Eigen::Vector2d(V.dX, V.dY));
    };
    const auto Inverse = [&](const nuv::TOmographicParams& a_Coefs)
    {
        TVector V;
        EXPECT_EQ(REASON_NONE, InversePoint(a_Coefs, None, Target, V));
        return Eigen::VectorXd(Eigen::Vector2d(V.dX, V.dY));
    };
    TCovariance2 Actual;
    CovarianceOfImage(J.Fit.Coefs, J.Covariance, Source.dX, Source.dY, Actual);
    const Eigen::MatrixXd D = Derivatives(J.Fit.Coefs, C, Image);
    ExpectClose(D * C * D.transpose(), (Eigen::Matrix2d() << Actual.dXX, Actual.dXY, Actual.dXY, Actual.dYY).finished(),
                1e-6);
    ASSERT_EQ(REASON_NONE, CovarianceOfSource(J.Fit.Coefs, J.Covariance, Source.dX, Source.dY, Actual));
    const Eigen::MatrixXd E = Derivatives(J.Fit.Coefs, C, Inverse);
    ExpectClose(E * C * E.transpose(), (Eigen::Matrix2d() << Actual.dXX, Actual.dXY, Actual.dXY, Actual.dYY).finished(),
                1e-6);
}

TEST(Covariance, InOriginalCoordinatesFollowsTheDerivatives)
{
    TSet Set = RandomSet(12, Omographic, 0.2, 4);
    for (std::size_t i = 0; i < 12; ++i)
    {
        Set.vdX[i] += 700;
        Set.vdY[i] -= 300;
        Set.vdXa[i] += 5000;
    }
    const TJudgement J = Judged(Set, ASK_OMOGRAPHIC);
    ASSERT_EQ(1, J.bOriginal);
    ASSERT_NE(0, J.Origins.dX);
    const auto Original = [&](const nuv::TOmographicParams& a_Coefs)
    {
        nuv::TOmographicParams Result;
        EXPECT_TRUE(ToOriginalFrame(a_Coefs, J.Origins, Result));
        return Eigen::VectorXd(Vector(Result));
    };
    const TMatrix8 C = Matrix(J.Covariance);
    const Eigen::MatrixXd D = Derivatives(J.Fit.Coefs, C, Original);
    ExpectClose(D * C * D.transpose(), Matrix(J.OriginalCovariance), 1e-4);
}

TEST(Covariance, OfTheShapeFollowsTheDerivatives)
{
    for (const enumMethod Method : {ASK_CONFORMAL, ASK_AFFINE})
    {
        for (const bool bMirrored : {false, true})
        {
            const TJudgement J = Judged(RandomSet(12, Affine, 0.2, 4), Method, bMirrored);
            const auto Shape = [&](const nuv::TOmographicParams& C)
            {
                double dTx, dTy;
                Eigen::VectorXd S(4);
                const nuv::TAffineCoefs A = {C.dA, C.dB, C.dC, C.dD, C.dE, C.dF};
                EXPECT_EQ(1, nuv::AffineCoefsToParam(A, S(0), S(1), S(2), S(3), dTx, dTy));
                return S;
            };
            const Eigen::VectorXd Expected = Shape(J.Fit.Coefs);
            ASSERT_EQ(1, J.Shape.bExists);
            EXPECT_NEAR(Expected(0), J.Shape.dSx, 1e-14 * Expected(0));
            EXPECT_NEAR(Expected(1), J.Shape.dSy, 1e-14 * Expected(0));
            EXPECT_NEAR(Expected(2), J.Shape.dSkew, 1e-14);
            EXPECT_NEAR(Expected(3), J.Shape.dRotation, 1e-14);
            const TMatrix8 C = Matrix(J.Covariance);
            const Eigen::MatrixXd D = Derivatives(J.Fit.Coefs, C, Shape);
            const Eigen::MatrixXd V = D * C * D.transpose();
            EXPECT_NEAR(std::sqrt(V(0, 0)), J.Shape.dSigmaSx, 1e-6 * J.Shape.dSigmaSx);
            EXPECT_NEAR(std::sqrt(V(1, 1)), J.Shape.dSigmaSy, 1e-6 * J.Shape.dSigmaSy);
            EXPECT_NEAR(std::sqrt(std::fabs(V(2, 2))), J.Shape.dSigmaSkew, 1e-6 * J.Shape.dSigmaRotation);
            EXPECT_NEAR(std::sqrt(V(3, 3)), J.Shape.dSigmaRotation, 1e-6 * J.Shape.dSigmaRotation);
        }
    }
}

// A = E and B = -D; mirrored A = -E and B = D.
TEST(Covariance, OfASimilarityTiesItsCoefficients)
{
    for (const bool bMirrored : {false, true})
    {
        const TCoefsCovariance Covariance =
            Judged(RandomSet(9, Similarity, 0.5, 4), ASK_CONFORMAL, bMirrored).Covariance;
        const TMatrix8 C = Matrix(Covariance);
        const double dSign = bMirrored ? -1 : 1;
        EXPECT_DOUBLE_EQ(std::sqrt(C(2, 2)), SigmaOfCoef(Covariance, 2));
        EXPECT_EQ(0, SigmaOfCoef(Covariance, 6)); // G
        EXPECT_GT(C(0, 0), 0);
        EXPECT_DOUBLE_EQ(C(0, 0), C(4, 4));
        EXPECT_DOUBLE_EQ(dSign * C(0, 0), C(4, 0));
        EXPECT_DOUBLE_EQ(-dSign * C(1, 1), C(3, 1));
    }
}

TEST(Covariance, DoesNotExistWithoutRedundancy)
{
    const TSet Set = RandomSet(3, Affine, 1, 6);
    TKindFit Fit;
    TCoefsCovariance Covariance;
    ASSERT_EQ(REASON_NONE, FitKind(Points(Set), nuv::METHOD_AFFINE, false, Fit));
    EXPECT_EQ(REASON_NO_REDUNDANCY, CovarianceOfCoefs(Points(Set), Fit, Covariance));
}

TEST(Ellipse, HasTheEigenvaluesAndTheDirectionOfTheCovariance)
{
    for (const TCovariance2& C :
         {TCovariance2{4, 0, 1}, TCovariance2{1, 0, 4}, TCovariance2{3, 1.5, 2}, TCovariance2{3, -1.5, 2},
          TCovariance2{2, 0, 2}, TCovariance2{0, 0, 0}, TCovariance2{1e-9, 3e-10, 5e-10}})
    {
        TEllipse E;
        ErrorEllipse(C, E);
        const Eigen::Matrix2d M = (Eigen::Matrix2d() << C.dXX, C.dXY, C.dXY, C.dYY).finished();
        const Eigen::SelfAdjointEigenSolver<Eigen::Matrix2d> Solver(M);
        const double dSize = std::sqrt(std::max(C.dXX, C.dYY));
        EXPECT_NEAR(std::sqrt(Solver.eigenvalues()(1)), E.dMajor, 1e-14 * dSize);
        EXPECT_NEAR(std::sqrt(Solver.eigenvalues()(0)), E.dMinor, 1e-13 * dSize);
        const Eigen::Vector2d U(E.dUx, E.dUy);
        EXPECT_NEAR(1, U.norm(), 1e-15);
        EXPECT_NEAR(0, (M * U - E.dMajor * E.dMajor * U).norm(), 1e-15 * dSize * dSize);
        EXPECT_GE(E.dUx, 0);
    }
}

} // namespace
} // namespace judgement_tests
