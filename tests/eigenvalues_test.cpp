// eigenvalues_test.cpp: balancing, reduction and QR iteration together on general matrices.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "support/effort.h"
#include "support/matrices.h"

#include <Eigen/Dense>
#include <algorithm>
#include <complex>
#include <random>

namespace {

using namespace nuv_tests;

using TComplexes = std::vector<std::complex<double> >;

// --- All three on general matrices

Eigen::MatrixXd MakeEigen(const TRows& a_vvdRows)
{
    const auto iN = static_cast<Eigen::Index>(a_vvdRows.size());
    Eigen::MatrixXd Matrix(iN, iN);
    for (Eigen::Index i = 0; i < iN; ++i)
    {
        for (Eigen::Index j = 0; j < iN; ++j)
        {
            Matrix(i, j) = a_vvdRows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
        }
    }
    return Matrix;
}

// The eigenvalues of a general matrix. They must have the same bits for every padding.
TComplexes Solve(const TRows& a_vvdRows)
{
    TEigenvalues First = {};
    for (int iPadding : {0, 3})
    {
        TColumns Matrix(a_vvdRows, iPadding);
        nuv::BalanceMatrix(Matrix.iN, Matrix.Values.Data(), Matrix.iStride);
        nuv::ReduceToHessenberg(Matrix.iN, Matrix.Values.Data(), Matrix.iStride);
        const TEigenvalues Result = SolveHessenberg(Matrix);
        EXPECT_EQ(1, Result.iResult);
        if (iPadding == 0)
        {
            First = Result;
        }
        ExpectSameEigenvalues(First, Result);
    }
    TComplexes Values;
    for (std::size_t i = 0; i < First.vdReal.size(); ++i)
    {
        Values.emplace_back(First.vdReal[i], First.vdImaginary[i]);
    }
    return Values;
}

// The computed eigenvalues are exact eigenvalues of A + E. Elimination with pivoting keeps its multipliers within 1,
// and a double step is orthogonal. Both round each element a few times for every row, so |E| is a small multiple of n
// eps |A| (J. H. Wilkinson, The Algebraic Eigenvalue Problem, chapters 6 and 8).
double BackwardError(const Eigen::MatrixXd& a_Matrix)
{
    return 10.0 * static_cast<double>(a_Matrix.rows()) * Epsilon * a_Matrix.norm();
}

// A - lambda I is within |E| of a singular matrix, so its least singular value is at most |E|. This does not depend on
// the condition of the eigenvalue.
void ExpectSmallBackwardErrors(const TRows& a_vvdRows, const TComplexes& a_Values)
{
    const Eigen::MatrixXd Matrix = MakeEigen(a_vvdRows);
    for (const auto& Value : a_Values)
    {
        Eigen::MatrixXcd Shifted = Matrix.cast<std::complex<double> >();
        Shifted.diagonal().array() -= Value;
        EXPECT_LE(Eigen::JacobiSVD<Eigen::MatrixXcd>(Shifted).singularValues().minCoeff(), BackwardError(Matrix))
            << Value;
    }
}

void ExpectTraceAndConjugates(const TRows& a_vvdRows, const TComplexes& a_Values)
{
    const Eigen::MatrixXd Matrix = MakeEigen(a_vvdRows);
    std::complex<double> Sum;
    for (std::size_t i = 0; i < a_Values.size(); ++i)
    {
        Sum += a_Values[i];
        if (a_Values[i].imag() < 0.0)
        {
            ASSERT_LT(i + 1, a_Values.size());
            EXPECT_EQ(std::conj(a_Values[i]), a_Values[i + 1]);
        }
    }
    EXPECT_NEAR(Matrix.trace(), Sum.real(), static_cast<double>(Matrix.rows()) * BackwardError(Matrix));
    EXPECT_EQ(0.0, Sum.imag() + 0.0);
}

// To first order an eigenvalue moves by at most |E| times its condition |x||y|/|y^H x|, where x and y are its right and
// left eigenvectors. The condition is 1 for a normal matrix (Wilkinson, chapter 2). Each expected value takes the
// nearest computed one that is left.
void ExpectNear(const TComplexes& a_Expected, const std::vector<double>& a_vdBounds, TComplexes a_Values)
{
    ASSERT_EQ(a_Expected.size(), a_Values.size());
    for (std::size_t i = 0; i < a_Expected.size(); ++i)
    {
        const auto Nearest =
            std::min_element(a_Values.begin(), a_Values.end(),
                             [&](auto a_First, auto a_Second)
                             { return std::abs(a_First - a_Expected[i]) < std::abs(a_Second - a_Expected[i]); });
        EXPECT_LE(std::abs(*Nearest - a_Expected[i]), a_vdBounds[i]) << *Nearest << " for " << a_Expected[i];
        a_Values.erase(Nearest);
    }
}

void ExpectNear(const TComplexes& a_Expected, double a_dBound, const TComplexes& a_Values)
{
    ExpectNear(a_Expected, std::vector<double>(a_Expected.size(), a_dBound), a_Values);
}

// Compares with Eigen, each eigenvalue to its own condition. Both results have a backward error.
void ExpectAsEigen(const TRows& a_vvdRows, const TComplexes& a_Values)
{
    const Eigen::MatrixXd Matrix = MakeEigen(a_vvdRows);
    const Eigen::EigenSolver<Eigen::MatrixXd> Solver(Matrix);
    const Eigen::MatrixXcd Right = Solver.eigenvectors();
    const Eigen::MatrixXcd Left = Right.inverse();
    TComplexes Expected;
    std::vector<double> vdBounds;
    for (Eigen::Index i = 0; i < Matrix.rows(); ++i)
    {
        Expected.push_back(Solver.eigenvalues()(i));
        vdBounds.push_back(2.0 * BackwardError(Matrix) * Right.col(i).norm() * Left.row(i).norm());
    }
    ExpectNear(Expected, vdBounds, a_Values);
}

void ExpectPublished(const TRows& a_vvdRows, const TComplexes& a_Expected, double a_dCondition = 1.0)
{
    const TComplexes Values = Solve(a_vvdRows);
    ExpectNear(a_Expected, a_dCondition * BackwardError(MakeEigen(a_vvdRows)), Values);
    ExpectSmallBackwardErrors(a_vvdRows, Values);
    ExpectTraceAndConjugates(a_vvdRows, Values);
}

TRows MakeTridiagonal(int a_iN, double a_dOffDiagonal, const std::function<double(int)>& a_Diagonal)
{
    return MakeRows(a_iN,
                    [&](int i, int j) { return i == j                 ? a_Diagonal(i)
                                               : std::abs(i - j) == 1 ? a_dOffDiagonal
                                                                      : 0.0; });
}

// 2 - 2 cos(k pi/(n+1)). Symmetric, so the condition is 1. Source: R. T. Gregory, D. L. Karney, A Collection of
// Matrices for Testing Computational Algorithms, 1969, example 7.4.
TEST(Eigenvalues, OfTheSecondDifference)
{
    for (int iN : {1, 2, 3, 10, 16})
    {
        SCOPED_TRACE(iN);
        TComplexes Expected;
        for (int k = 1; k <= iN; ++k)
        {
            Expected.emplace_back(2.0 - 2.0 * std::cos(k * M_PI / (iN + 1)));
        }
        ExpectPublished(MakeTridiagonal(iN, -1.0, [](int) { return 2.0; }), Expected);
    }
}

// Eight eigenvalues, two of them equal, two nearly so and two small ones. Source: J. B. Rosser, C. Lanczos, M. R.
// Hestenes, W. Karush, J. Res. Nat. Bur. Standards 47 (1951) 291-297.
TEST(Eigenvalues, OfTheRosserMatrix)
{
    const double dGreat = 10.0 * std::sqrt(10405.0);
    const double dRoot = 100.0 * std::sqrt(26.0);
    ExpectPublished({{611, 196, -192, 407, -8, -52, -49, 29},
                     {196, 899, 113, -192, -71, -43, -8, -44},
                     {-192, 113, 899, 196, 61, 49, 8, 52},
                     {407, -192, 196, 611, 8, 44, 59, -23},
                     {-8, -71, 61, 8, 411, -599, 208, 208},
                     {-52, -43, 49, 44, -599, 411, 208, 208},
                     {-49, -8, 8, 59, 208, 208, 99, -911},
                     {29, -44, 52, -23, 208, 208, -911, 99}},
                    {dGreat, 1020.0, 510.0 + dRoot, 1000.0, 1000.0, 10.0 / (510.0 + dRoot) * 10.0, 0.0, -dGreat});
}

// W21+: the diagonal is 10 ... 0 ... 10, with ones beside it. Its eigenvalues form pairs that agree to 14 digits. The
// values are from the characteristic polynomial in rational arithmetic; the two greatest are those of Wilkinson,
// chapter 5, section 45.
TEST(Eigenvalues, OfTheWilkinsonMatrix)
{
    ExpectPublished(MakeTridiagonal(21, 1.0, [](int i) { return std::fabs(10.0 - i); }),
                    {-1.1254415221199843, 0.25380581709667815, 0.94753436752929332, 1.7893213526950813,
                     2.1302092193625062,  2.9610588841857268,  3.0430992925788236,  3.9960482013836249,
                     4.0043540234408566,  4.9997824777429019,  5.0002444250019131,  6.0002175222570981,
                     6.0002340315841671,  7.0039517986163746,  7.0039522095286753,  8.0389411158142732,
                     8.0389411228290228,  9.2106786473049187,  9.2106786473613322,  10.746194182903322,
                     10.746194182903393});
}

// Frank's matrix of order 12: its small eigenvalues have conditions of 1e8 and more. Source: W. L. Frank, J. Soc.
// Indust. Appl. Math. 6 (1958) 378-392; the values are from the characteristic polynomial in rational arithmetic.
TEST(Eigenvalues, OfTheFrankMatrix)
{
    const TRows vvdFrank = MakeRows(12, [](int i, int j) { return j >= i - 1 ? 12.0 - std::max(i, j) : 0.0; });
    const TComplexes Expected = {0.031028060644010015, 0.049507429185278305, 0.081227659240405037, 0.14364651976922047,
                                 0.28474972055847819,  0.64350531900485541,  1.553988709132107,    3.5118559485807572,
                                 6.9615330855671225,   12.311077400868527,   20.19898864587708,    32.228891501572164};
    const TComplexes Values = Solve(vvdFrank);
    ExpectSmallBackwardErrors(vvdFrank, Values);
    ExpectTraceAndConjugates(vvdFrank, Values);
    ExpectAsEigen(vvdFrank, Values);
    const TComplexes Great(Expected.begin() + 6, Expected.end());
    TComplexes Sorted = Values;
    std::sort(Sorted.begin(), Sorted.end(),
              [](auto a_First, auto a_Second) { return a_First.real() < a_Second.real(); });
    ExpectNear(Great, 1e3 * BackwardError(MakeEigen(vvdFrank)), TComplexes(Sorted.begin() + 6, Sorted.end()));
}

// The diagonal is zero, with k above and n - k below it. The eigenvalues are n-1, n-3, ... 1-n. Source: P. A. Clement,
// SIAM Rev. 1 (1959) 50-52. A diagonal similarity whose squares are binomial coefficients makes the matrix symmetric,
// so the condition is the root of the greatest ratio of two of them.
TEST(Eigenvalues, OfTheClementMatrix)
{
    for (int iN : {2, 5, 10, 16})
    {
        SCOPED_TRACE(iN);
        const TRows vvdRows =
            MakeRows(iN, [&](int i, int j) { return j == i + 1   ? i + 1.0
                                                    : i == j + 1 ? iN - i * 1.0
                                                                 : 0.0; });
        TComplexes Expected;
        double dGreatest = 1.0;
        for (int k = 0; k < iN; ++k)
        {
            Expected.emplace_back(iN - 1.0 - 2.0 * k);
            dGreatest = std::max(dGreatest, std::tgamma(iN) / std::tgamma(k + 1.0) / std::tgamma(iN - k));
        }
        ExpectPublished(vvdRows, Expected, std::sqrt(dGreatest));
    }
}

// The eigenvalues are the sums of c_k w^(jk), w = exp(2 pi i/n). The matrix is normal, so the condition is 1. Source:
// P. J. Davis, Circulant Matrices, 1979.
TEST(Eigenvalues, OfCirculants)
{
    for (const std::vector<double>& vdC :
         {std::vector<double>{1, 2, 3}, {0, 1, 0, 0, 0}, {4, -1, 0, 0.5, 2, 7, 1}, {0, 0, 0, 0, 0, 0, 0, 0, 0, 1}})
    {
        const int iN = static_cast<int>(vdC.size());
        const TRows vvdRows =
            MakeRows(iN, [&](int i, int j) { return vdC[static_cast<std::size_t>((j - i + iN) % iN)]; });
        TComplexes Expected;
        for (int j = 0; j < iN; ++j)
        {
            std::complex<double> Sum;
            for (int k = 0; k < iN; ++k)
            {
                Sum += vdC[static_cast<std::size_t>(k)] * std::polar(1.0, 2.0 * M_PI * (j * k % iN) / iN);
            }
            Expected.push_back(Sum);
        }
        ExpectPublished(vvdRows, Expected);
    }
}

// 1/(i+j-1), small orders. Source: H. E. Fettis, J. C. Caslin, Aerospace Research Laboratories 67-0128 (1967); the
// digits here from the characteristic polynomial in rational arithmetic.
TEST(Eigenvalues, OfHilbertMatrices)
{
    const std::vector<TComplexes> Expected = {
        {0.0026873403557735294, 0.12232706585390585, 1.408318927123654},
        {9.6702304022586887e-05, 0.0067382736057607483, 0.16914122022145003, 1.5002142800592428},
        {3.2879287721718745e-06, 0.00030589804015119176, 0.011407491623419806, 0.20853421861101334,
         1.5670506910982307}};
    for (const TComplexes& Values : Expected)
    {
        ExpectPublished(MakeRows(static_cast<int>(Values.size()), [](int i, int j) { return 1.0 / (i + j + 1); }),
                        Values);
    }
}

TEST(Eigenvalues, OfCompanionMatricesAreTheRoots)
{
    ExpectPublished(MakeCompanion({1, -6, 11, -6}), {1.0, 2.0, 3.0}, 100.0);
    ExpectPublished(MakeCompanion({1, 0, 0, 0, -1}), {1.0, -1.0, {0.0, 1.0}, {0.0, -1.0}}, 10.0);
    for (const auto& Value : Solve(MakeCompanion({1, -6, 11, -6})))
    {
        EXPECT_SAME_BITS(0.0, Value.imag());
    }
}

// -1 below the diagonal, 1 on it and on three diagonals above it. The eigenvalues are sensitive, so only the backward
// error is bounded. Source: J. Grcar, Sandia National Laboratories SAND89-8691 (1989).
TEST(Eigenvalues, OfTheGrcarMatrix)
{
    for (int iN : {5, 10, 15})
    {
        const TRows vvdGrcar =
            MakeRows(iN, [](int i, int j) { return i == j + 1             ? -1.0
                                                   : j >= i && j <= i + 3 ? 1.0
                                                                          : 0.0; });
        const TComplexes Values = Solve(vvdGrcar);
        ExpectSmallBackwardErrors(vvdGrcar, Values);
        ExpectTraceAndConjugates(vvdGrcar, Values);
    }
}

TEST(Eigenvalues, OfRandomMatricesAreThoseOfEigen)
{
    std::mt19937_64 Engine(4);
    std::normal_distribution<double> Normal;
    const std::vector<int> viSizes =
        Emulated ? std::vector<int>{2, 3, 5, 8} : std::vector<int>{2, 3, 4, 5, 7, 10, 15, 20};
    for (const int iN : viSizes)
    {
        for (int iRepeat = 0; iRepeat < 3; ++iRepeat)
        {
            SCOPED_TRACE(std::to_string(iN) + ", " + std::to_string(iRepeat));
            const TRows vvdRows = MakeRows(iN, [&](int, int) { return Normal(Engine); });
            const TComplexes Values = Solve(vvdRows);
            ExpectSmallBackwardErrors(vvdRows, Values);
            ExpectTraceAndConjugates(vvdRows, Values);
            ExpectAsEigen(vvdRows, Values);
        }
    }
}

// D A D^-1 has the eigenvalues of A. D consists of powers of 2 and spans 2^60. Balancing undoes it, so the condition is
// that of A.
TEST(Eigenvalues, OfABadlyScaledMatrixAreThoseOfTheWellScaledOne)
{
    std::mt19937_64 Engine(5);
    std::normal_distribution<double> Normal;
    for (int iN : {3, 6, 12})
    {
        SCOPED_TRACE(iN);
        const TRows vvdRows = MakeRows(iN, [&](int, int) { return Normal(Engine); });
        const TRows vvdScaled =
            MakeRows(iN,
                     [&](int i, int j) {
                         return std::ldexp(vvdRows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)],
                                           60 / (iN - 1) * (i - j));
                     });
        ExpectAsEigen(vvdRows, Solve(vvdScaled));
    }
}

} // namespace
