// forms_test.cpp: the faster forms of the library have the bits of its plain form.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The inputs are random. They contain what a faster form can get wrong: every size around the boundaries of tiles and
// vectors, failures at every diagonal, zeros of both signs, infinities, NaN, products that overflow or vanish.

#include "support/effort.h"
#include "support/expect.h"
#include "support/forms.h"
#include "support/special_values.h"
#include "support/triangle.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <random>

namespace nuv_tests {

void PrintTo(const TForm& a_Form, std::ostream* a_pStream)
{
    *a_pStream << a_Form.szName;
}

} // namespace nuv_tests

namespace {

using namespace nuv_tests;
using TValues = std::vector<double>;

constexpr double Specials[] = {0.0,       -0.0,       1.0,     -1.0,  Inf,    -Inf,    NaN,
                               Subnormal, -Subnormal, 3.0,     -0.5,  1e-160, -1e-160, 1e160,
                               -1e160,    0x1p-1022,  -1e-310, 1e300, -1e300, 1.7e308};

::testing::AssertionResult SameArrays(const TValues& a_vdExpected, const TValues& a_vdActual)
{
    for (std::size_t i = 0; i < a_vdExpected.size(); ++i)
    {
        if (!SameBits(a_vdExpected[i], a_vdActual.at(i)))
        {
            return ::testing::AssertionFailure()
                   << "value " << i << " is " << HexText(a_vdActual[i]) << ", not " << HexText(a_vdExpected[i]);
        }
    }
    return ::testing::AssertionSuccess();
}

// Every size up to some tiles, then those from which vectors of eight pay, and the sizes around the widths and depths of
// panels.
std::vector<std::size_t> Sizes()
{
    std::vector<std::size_t> Result;
    for (std::size_t i = 1; i <= 70; ++i)
    {
        Result.push_back(i);
    }
#if !defined(__arm__) // software floating point has no tiles
    for (std::size_t i = 79; i <= 88; ++i)
    {
        Result.push_back(i);
    }
    Result.push_back(401);
    for (const std::size_t iAround : {128, 160, 192, 224})
    {
        for (std::size_t i = iAround - 1; i <= iAround + 1; ++i)
        {
            Result.push_back(i);
        }
    }
#endif
    return Result;
}

class Forms : public ::testing::TestWithParam<TForm>
{
protected:
    std::size_t Below(std::size_t a_iLimit)
    {
        return static_cast<std::size_t>(m_Random() % a_iLimit);
    }

    double Special()
    {
        return Specials[Below(std::size(Specials))];
    }

    TValues Random(std::size_t a_iCount)
    {
        TValues vdValues(a_iCount);
        std::generate(vdValues.begin(), vdValues.end(), [this] { return m_Element(m_Random); });
        return vdValues;
    }

    // One of three kinds: numbers with many zeros, the same with some special values, special values alone.
    double Next(std::size_t a_iKind)
    {
        const std::size_t iDraw = Below(100);
        if (a_iKind == 2 || (a_iKind == 1 && iDraw < 4))
        {
            return Special();
        }
        if (iDraw < 30)
        {
            return iDraw < 15 ? 0.0 : -0.0;
        }
        return std::ldexp(static_cast<double>(Below(2000001)) - 1000000.0, -10);
    }

    TValues Take(std::size_t a_iCount, std::size_t a_iKind)
    {
        TValues vdValues(a_iCount);
        std::generate(vdValues.begin(), vdValues.end(), [this, a_iKind] { return Next(a_iKind); });
        return vdValues;
    }

    // Positive definite by its diagonal. The elements have a magnitude of up to the scale.
    TTriangle RandomTriangle(std::size_t a_iN, double a_dScale = 1.0)
    {
        TTriangle Matrix(a_iN, TStorage::Packed);
        for (std::size_t i = 0; i < a_iN; ++i)
        {
            for (std::size_t j = 0; j <= i; ++j)
            {
                const double dDiagonal = i == j ? 0.6 * static_cast<double>(a_iN) + 1.0 : 0.0;
                Matrix.At(i, j) = (m_Element(m_Random) + dDiagonal) * a_dScale;
            }
        }
        return Matrix;
    }

    // Factorises and solves in one storage, also after a failure. Returns whether the matrix was factorised.
    bool CheckStorage(const TTriangle& a_Matrix, TStorage a_Storage)
    {
        const bool bPacked = a_Storage == TStorage::Packed;
        const int n = a_Matrix.Count();
        const TForm& Form = GetParam();
        TTriangle Expected(a_Matrix, a_Storage);
        TTriangle Actual(a_Matrix, a_Storage);
        const bool bResult = (bPacked ? PlainForm.pCholeskyLowTri : PlainForm.pCholesky)(n, Expected.Data());
        EXPECT_EQ(bResult, (bPacked ? Form.pCholeskyLowTri : Form.pCholesky)(n, Actual.Data()));
        EXPECT_TRUE(SameArrays(Expected.Packed(), Actual.Packed())) << (bPacked ? "packed" : "dense");
        EXPECT_TRUE(Actual.RestIsUntouched());

        TValues vdExpected = Random(static_cast<std::size_t>(n));
        TGuardedArray Vector(vdExpected);
        (bPacked ? PlainForm.pSolveCholLowTri : PlainForm.pSolveChol)(n, Expected.Data(), vdExpected.data());
        (bPacked ? Form.pSolveCholLowTri : Form.pSolveChol)(n, Expected.Data(), Vector.Data());
        EXPECT_TRUE(SameArrays(vdExpected, Vector.Values())) << (bPacked ? "packed" : "dense");
        EXPECT_TRUE(Vector.IsIntact());
        return bResult;
    }

    bool Check(const TTriangle& a_Matrix)
    {
        const bool bDense = CheckStorage(a_Matrix, TStorage::Square);
        const bool bPacked = CheckStorage(a_Matrix, TStorage::Packed);
        EXPECT_EQ(bDense, bPacked);
        return bPacked;
    }

    void CheckUpdate(const TValues& a_vdMatrix, const TValues& a_vdVector, const TValues& a_vdRow, double a_dValue)
    {
        const int n = static_cast<int>(a_vdRow.size());
        TValues vdMatrix = a_vdMatrix;
        TValues vdVector = a_vdVector;
        TGuardedArray Matrix(a_vdMatrix);
        TGuardedArray Vector(a_vdVector);
        const TGuardedArray Row(a_vdRow);
        PlainForm.pUpdate(n, vdMatrix.data(), vdVector.data(), a_vdRow.data(), a_dValue);
        GetParam().pUpdate(n, Matrix.Data(), Vector.Data(), Row.Data(), a_dValue);
        EXPECT_TRUE(SameArrays(vdMatrix, Matrix.Values()));
        EXPECT_TRUE(SameArrays(vdVector, Vector.Values()));
        EXPECT_TRUE(Matrix.IsIntact() && Vector.IsIntact());
    }

    std::mt19937_64 m_Random{20261121};
    std::uniform_real_distribution<double> m_Element{-1.0, 1.0};
};

using FormsSlow = Forms;

TEST_P(FormsSlow, FactoriseAndSolveEverySize)
{
    for (const std::size_t n : Sizes())
    {
        SCOPED_TRACE(n);
        ASSERT_TRUE(Check(RandomTriangle(n)));
        Check(RandomTriangle(n, 1e-300)); // products are subnormal or lost
        Check(RandomTriangle(n, 1e290));  // products overflow
        ASSERT_FALSE(HasFailure());
    }
}

TEST_P(FormsSlow, LeaveTheSameAfterAFailureAtEveryDiagonal)
{
    const double vdFailing[] = {-1e9, NaN, -Inf};
    for (const std::size_t n : Sizes())
    {
        const std::size_t iEffort = Emulated ? 5 : Watched ? 3 : 1;
        const std::size_t iStep =
            (n <= 70 ? 1 + n / 30 : (13 + n / 16) | 1) * iEffort; // every remainder by the sizes of the tiles
        for (std::size_t i = n % iStep; i < n; i += iStep)
        {
            SCOPED_TRACE(::testing::Message() << n << ", failing at " << i);
            TTriangle Matrix = RandomTriangle(n);
            Matrix.At(i, i) = vdFailing[Below(std::size(vdFailing))];
            ASSERT_FALSE(Check(Matrix));
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_P(FormsSlow, FactoriseAndSolveWithSpecialElements)
{
    for (const std::size_t n : Sizes())
    {
        SCOPED_TRACE(n);
        for (int iCase = 0; iCase < 6; ++iCase)
        {
            TTriangle Matrix = RandomTriangle(n);
            for (int iElement = 0; iElement <= iCase; ++iElement)
            {
                const std::size_t i = Below(n);
                Matrix.At(i, Below(i + 1)) = Special();
            }
            Check(Matrix);
        }
        TTriangle Sparse = RandomTriangle(n); // zeros of both signs, and sometimes a zero diagonal
        for (std::size_t i = 0; i < n; ++i)
        {
            for (std::size_t j = 0; j <= i; ++j)
            {
                if (Below(i == j ? 2 * n : 2) == 0)
                {
                    Sparse.At(i, j) = Below(2) == 0 ? 0.0 : -0.0;
                }
            }
        }
        Check(Sparse);
        ASSERT_FALSE(HasFailure());
    }
}

// The arrays end where the matrix ends. The address sanitizer sees a read behind them.
TEST_P(Forms, ReadNothingBehindTheMatrix)
{
    for (std::size_t n = 1; n <= 70; ++n)
    {
        const TTriangle Matrix = RandomTriangle(n);
        const TValues vdPacked = Matrix.Packed();
        std::unique_ptr<double[]> vdMatrix(new double[vdPacked.size()]);
        std::unique_ptr<double[]> vdVector(new double[n]());
        std::copy(vdPacked.begin(), vdPacked.end(), vdMatrix.get());
        ASSERT_TRUE(GetParam().pCholeskyLowTri(static_cast<int>(n), vdMatrix.get()));
        GetParam().pSolveCholLowTri(static_cast<int>(n), vdMatrix.get(), vdVector.get());
    }
}

TEST_P(Forms, AddAnObservationOfEverySize)
{
    for (std::size_t n = 1; n <= 70; ++n)
    {
        SCOPED_TRACE(n);
        for (int iSpecials = 0; iSpecials < 4; ++iSpecials)
        {
            TValues vdRow = Random(n), vdMatrix = Random(n * (n + 1) / 2), vdVector = Random(n);
            for (TValues* const pValues : {&vdRow, &vdMatrix, &vdVector})
            {
                for (int i = 0; i < iSpecials; ++i)
                {
                    (*pValues)[Below(pValues->size())] = Special();
                }
            }
            CheckUpdate(vdMatrix, vdVector, vdRow, iSpecials == 3 ? Special() : m_Element(m_Random));
        }
        ASSERT_FALSE(HasFailure());
    }
}

TEST_P(Forms, AddAnObservationWithManyZeros)
{
    for (int iCase = 0; iCase < CasesHere(6000); ++iCase)
    {
        SCOPED_TRACE(iCase);
        const std::size_t n = 1 + Below(9);
        const TValues vdMatrix = Take(n * (n + 1) / 2, Below(3));
        const TValues vdVector = Take(n, Below(3));
        const std::size_t iKind = Below(3);
        const TValues vdRow = Take(n, iKind);
        CheckUpdate(vdMatrix, vdVector, vdRow, Next(iKind));
        ASSERT_FALSE(HasFailure());
    }
}

// The cases of one fit. a_iSolvedLeast of them must have a result, so that not only failures are compared.
template <class TFit, class TNextPoints>
void CheckFit(const TFit& a_pPlain, const TFit& a_pForm, int a_iCases, int a_iSolvedLeast, TNextPoints a_NextPoints)
{
    int iSolved = 0;
    for (int iCase = 0; iCase < a_iCases; ++iCase)
    {
        SCOPED_TRACE(iCase);
        const TControlPoints Points = a_NextPoints(iCase);
        TValues vdExpected;
        TValues vdActual;
        const int iExpected = a_pPlain(Points, vdExpected);
        ASSERT_EQ(iExpected, a_pForm(Points, vdActual));
        ASSERT_TRUE(SameArrays(vdExpected, vdActual));
        iSolved += iExpected == 1 ? 1 : 0;
    }
    EXPECT_GE(iSolved, a_iSolvedLeast);
}

TEST_P(Forms, FitTransformations)
{
    const auto NextPoints = [this](int a_iCase) -> TControlPoints
    {
        const std::size_t n = a_iCase % 10 == 0 ? 30 + Below(40) : Below(9);
        const std::size_t iKind = Below(8) % 3; // special values alone hardly ever have a result: they are fewer
        return {Take(n, iKind), Take(n, iKind), Take(n, iKind), Take(n, iKind)};
    };
    const int iCases = CasesHere(1500);
    CheckFit(PlainForm.pFitConformal, GetParam().pFitConformal, iCases, iCases / 4, NextPoints);
    CheckFit(PlainForm.pFitAffine, GetParam().pFitAffine, iCases, iCases / 4, NextPoints);
    CheckFit(PlainForm.pFitOmographic, GetParam().pFitOmographic, iCases, iCases / 8, NextPoints);
}

// Points near a projective map, so that the fit has several refinements.
TControlPoints ProjectivePoints(std::size_t a_iCount, std::mt19937_64& a_Random)
{
    std::uniform_real_distribution<double> Coordinate(-1.0, 1.0);
    TControlPoints Points;
    for (TValues* const pValues : {&Points.vdX, &Points.vdY, &Points.vdXa, &Points.vdYa})
    {
        pValues->reserve(a_iCount); // and no more: the sanitizer knows where the memory ends
    }
    for (std::size_t i = 0; i < a_iCount; ++i)
    {
        const double x = Coordinate(a_Random), y = Coordinate(a_Random);
        const double dW = 0.3 * x - 0.2 * y + 1.0;
        const double dXa = (2.0 * x - y + 3.0) / dW;
        Points.Add(x, y, dXa + 0.01 * Coordinate(a_Random), (x + y - 1.0) / dW + 0.01 * Coordinate(a_Random));
    }
    return Points;
}

// The arrays end where the points end. The address sanitizer sees a read behind them.
TEST_P(Forms, FitEveryNumberOfPoints)
{
    for (std::size_t n = 0; n <= 70; ++n)
    {
        const auto NextPoints = [this, n](int a_iCase)
        {
            TControlPoints Points = ProjectivePoints(n, m_Random);
            for (int iSpecial = 0; n > 0 && iSpecial < a_iCase; ++iSpecial)
            {
                std::array<TValues*, 4> Arrays = {&Points.vdX, &Points.vdY, &Points.vdXa, &Points.vdYa};
                (*Arrays[Below(4)])[Below(n)] = Special();
            }
            return Points;
        };
        SCOPED_TRACE(n);
        CheckFit(PlainForm.pFitConformal, GetParam().pFitConformal, 4, n < 2 ? 0 : 1, NextPoints);
        CheckFit(PlainForm.pFitAffine, GetParam().pFitAffine, 4, n < 3 ? 0 : 1, NextPoints);
        CheckFit(PlainForm.pFitOmographic, GetParam().pFitOmographic, 4, n < 4 ? 0 : 1, NextPoints);
        ASSERT_FALSE(HasFailure());
    }
}

// Target points whose X vanishes: sums and quotients are zeros of both signs.
TEST_P(Forms, FitOmographicToVanishingTargets)
{
    const auto NextPoints = [this](int a_iCase)
    {
        TControlPoints Points = ProjectivePoints(4 + Below(5), m_Random);
        for (double& dTarget : a_iCase % 2 == 0 ? Points.vdXa : Points.vdYa)
        {
            dTarget = Subnormal * (static_cast<double>(Below(5)) - 2.0);
        }
        return Points;
    };
    const int iCases = CasesHere(2000);
    CheckFit(PlainForm.pFitOmographic, GetParam().pFitOmographic, iCases, iCases / 8, NextPoints);
}

// Points of which two or more coincide or all lie on one line: the equations cannot be factorised, or hardly.
TEST_P(Forms, FitOmographicToDegeneratePoints)
{
    const auto NextPoints = [this](int a_iCase)
    {
        TControlPoints Points = ProjectivePoints(4 + Below(8), m_Random);
        for (std::size_t i = 1; i < Points.vdX.size(); ++i)
        {
            const double dSlope = static_cast<double>(Below(3)) - 1.0;
            Points.vdX[i] = a_iCase % 3 == 0 ? Points.vdX[i / 2] : Points.vdX[i];
            Points.vdY[i] = a_iCase % 3 == 0 ? Points.vdY[i / 2] : a_iCase % 3 == 1 ? dSlope : dSlope * Points.vdX[i];
        }
        return Points;
    };
    CheckFit(PlainForm.pFitOmographic, GetParam().pFitOmographic, CasesHere(2000), 1, NextPoints);
}

TEST_P(Forms, FindTheRootsOfPolynomials)
{
    for (int iCase = 0; iCase < CasesHere(1500); ++iCase)
    {
        SCOPED_TRACE(iCase);
        const std::size_t iDegree = iCase % 50 == 0 ? 40 + Below(30) : Below(14);
        const TValues vdCoefficients = iCase % 3 != 0 ? Random(iDegree + 1) : Take(iDegree + 1, Below(3));
        TValues vdExpected(iDegree, Untouched);
        TValues vdActual(iDegree, Untouched);
        const unsigned int n = static_cast<unsigned int>(iDegree);
        const int iExpected = PlainForm.pRoots(n, vdCoefficients.data(), vdExpected.data(), 1e-6);
        ASSERT_EQ(iExpected, GetParam().pRoots(n, vdCoefficients.data(), vdActual.data(), 1e-6));
        ASSERT_TRUE(SameArrays(vdExpected, vdActual));
    }
}

TEST_P(Forms, SolveTrigonometricEquations)
{
    for (int iCase = 0; iCase < CasesHere(6000); ++iCase)
    {
        SCOPED_TRACE(iCase);
        const TValues k = Take(6, Below(3));
        TValues vdExpected(4, Untouched);
        TValues vdActual(4, Untouched);
        ASSERT_EQ(PlainForm.pSolveLinTrig(k[0], k[1], k[2], vdExpected.data()),
                  GetParam().pSolveLinTrig(k[0], k[1], k[2], vdActual.data()));
        ASSERT_TRUE(SameArrays(vdExpected, vdActual));
        ASSERT_EQ(PlainForm.pSolveQuadTrig(k[0], k[1], k[2], k[3], k[4], k[5], vdExpected.data()),
                  GetParam().pSolveQuadTrig(k[0], k[1], k[2], k[3], k[4], k[5], vdActual.data()));
        ASSERT_TRUE(SameArrays(vdExpected, vdActual));
    }
}

// The first generator, of the longest cycle, passes through all of its states; the others pass through all of theirs.
TEST_P(Forms, DrawRandomNumbers)
{
    constexpr int CYCLE = 259200;
    for (const int iSeed : {1, 0, -1, 54773, 54774, 313973, std::numeric_limits<int>::min()})
    {
        SCOPED_TRACE(iSeed);
        PlainForm.pSetRandomSeed(iSeed);
        GetParam().pSetRandomSeed(iSeed);
        for (int i = 0; i < (iSeed == 1 ? CYCLE : 1000); ++i)
        {
            ASSERT_TRUE(SameBits(PlainForm.pRand(), GetParam().pRand())) << i;
        }
        for (int i = 0; i < 2; ++i) // both numbers of a pair, so that no form keeps one for the next test
        {
            ASSERT_TRUE(SameBits(PlainForm.pRandn(), GetParam().pRandn())) << i;
        }
    }
}

std::string NameOf(const ::testing::TestParamInfo<TForm>& a_Info)
{
    return a_Info.param.szName;
}

INSTANTIATE_TEST_SUITE_P(AsPlain, Forms, ::testing::ValuesIn(FasterForms), NameOf);
INSTANTIATE_TEST_SUITE_P(AsPlain, FormsSlow, ::testing::ValuesIn(FasterForms), NameOf);

} // namespace
