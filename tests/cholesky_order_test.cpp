// cholesky_order_test.cpp: the factorisations and solutions beside plain loops, over every boundary of the tiles.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "testing.h"

#include <algorithm>
#include <memory>
#include <random>

namespace {

using namespace nuv_tests;
using TValues = std::vector<double>;

constexpr std::size_t Guards = 8;
constexpr double Specials[] = {0.0, -0.0, Inf, -Inf, NaN, Subnormal, -1e-310, 0x1p-1022, 1e300, -1e300, 1.7e308};

// Rows of a lower triangle in an array with guards around it: packed, or square with values of its own above the
// diagonal. Nothing that is not of the triangle may change.
class TTriangle
{
public:
    TTriangle(std::size_t a_iN, bool a_bPacked) : m_iN(a_iN), m_bPacked(a_bPacked)
    {
        m_vdAll.resize((a_bPacked ? a_iN * (a_iN + 1) / 2 : a_iN * a_iN) + 2 * Guards);
        for (std::size_t i = 0; i < m_vdAll.size(); ++i)
        {
            m_vdAll[i] = Untouched - static_cast<double>(i) * 1e70;
        }
    }

    TTriangle(const TTriangle& a_Values, bool a_bPacked) : TTriangle(a_Values.m_iN, a_bPacked)
    {
        for (std::size_t i = 0; i < m_iN; ++i)
        {
            for (std::size_t j = 0; j <= i; ++j)
            {
                At(i, j) = a_Values.At(i, j);
            }
        }
    }

    double& At(std::size_t i, std::size_t j)
    {
        return m_vdAll[Guards + (m_bPacked ? i * (i + 1) / 2 : i * m_iN) + j];
    }

    double At(std::size_t i, std::size_t j) const
    {
        return const_cast<TTriangle&>(*this).At(i, j);
    }

    double* Data()
    {
        return m_vdAll.data() + Guards;
    }

    std::size_t Count() const
    {
        return m_iN;
    }

    const TValues& All() const
    {
        return m_vdAll;
    }

private:
    std::size_t m_iN;
    bool m_bPacked;
    TValues m_vdAll;
};

// One element after the other: the order that the header's promise of the same bits rests on.
bool FactorisePlainly(TTriangle& a_L)
{
    for (std::size_t i = 0; i < a_L.Count(); ++i)
    {
        double dRadicand = a_L.At(i, i);
        for (std::size_t k = i; k-- > 0;)
        {
            dRadicand -= a_L.At(i, k) * a_L.At(i, k);
        }
        if (!(dRadicand >= 0.0))
        {
            return false;
        }
        a_L.At(i, i) = std::sqrt(dRadicand);
        const double dReciprocal = 1.0 / a_L.At(i, i);
        for (std::size_t j = i + 1; j < a_L.Count(); ++j)
        {
            double dRest = a_L.At(j, i);
            for (std::size_t k = 0; k < i; ++k)
            {
                dRest -= a_L.At(j, k) * a_L.At(i, k);
            }
            a_L.At(j, i) = dReciprocal * dRest;
        }
    }
    return true;
}

TValues SolvePlainly(const TTriangle& a_L, TValues a_vdX, bool a_bDescending)
{
    const std::size_t iN = a_L.Count();
    for (std::size_t i = 0; i < iN; ++i)
    {
        for (std::size_t k = 0; k < i; ++k)
        {
            a_vdX[i] -= a_L.At(i, k) * a_vdX[k];
        }
        a_vdX[i] /= a_L.At(i, i);
    }
    for (std::size_t i = iN; i-- > 0;)
    {
        for (std::size_t t = i + 1; t < iN; ++t)
        {
            const std::size_t k = a_bDescending ? iN + i - t : t;
            a_vdX[i] -= a_L.At(k, i) * a_vdX[k];
        }
        a_vdX[i] /= a_L.At(i, i);
    }
    return a_vdX;
}

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

class CholeskyOrder : public ::testing::Test
{
protected:
    // Positive definite by its diagonal; elements of magnitude 1 times the scale.
    TTriangle Random(std::size_t a_iN, double a_dScale = 1.0)
    {
        TTriangle Matrix(a_iN, true);
        for (std::size_t i = 0; i < a_iN; ++i)
        {
            for (std::size_t j = 0; j <= i; ++j)
            {
                Matrix.At(i, j) =
                    (m_Element(m_Random) + (i == j ? 0.6 * static_cast<double>(a_iN) + 1.0 : 0.0)) * a_dScale;
            }
        }
        return Matrix;
    }

    double Special()
    {
        return Specials[m_Random() % std::size(Specials)];
    }

    // Both factorisations and both solutions; returns whether the matrix was factorised.
    bool Check(const TTriangle& a_Matrix)
    {
        const std::size_t iN = a_Matrix.Count();
        bool bResult = false;
        for (const bool bPacked : {false, true})
        {
            TTriangle Expected(a_Matrix, bPacked);
            TTriangle Actual(a_Matrix, bPacked);
            bResult = FactorisePlainly(Expected);
            const auto pFactorise = bPacked ? nuv::CholeskyLowTri : nuv::Cholesky;
            EXPECT_EQ(bResult, pFactorise(static_cast<int>(iN), Actual.Data()));
            EXPECT_TRUE(SameArrays(Expected.All(), Actual.All())) << (bPacked ? "packed" : "dense");

            TValues vdVector(iN);
            std::generate(vdVector.begin(), vdVector.end(), [this] { return m_Element(m_Random); });
            const TValues vdExpected = SolvePlainly(Expected, vdVector, bPacked);
            (bPacked ? nuv::SolveCholLowTri : nuv::SolveChol)(static_cast<int>(iN), Expected.Data(), vdVector.data());
            EXPECT_TRUE(SameArrays(vdExpected, vdVector)) << (bPacked ? "packed" : "dense");
        }
        return bResult;
    }

    // Every size up to some tiles, and those around the widths and depths of panels.
    static std::vector<std::size_t> Sizes()
    {
        std::vector<std::size_t> Result;
        for (std::size_t i = 1; i <= 70; ++i)
        {
            Result.push_back(i);
        }
#if !defined(__arm__) // one sum at a time there, in an emulator: nothing changes beyond
        for (const std::size_t iAround : {128, 144, 160, 272})
        {
            for (std::size_t i = iAround - 1; i <= iAround + 1; ++i)
            {
                Result.push_back(i);
            }
        }
#endif
        return Result;
    }

    std::mt19937_64 m_Random{20261121};
    std::uniform_real_distribution<double> m_Element{-1.0, 1.0};
};

TEST_F(CholeskyOrder, EverySizeHasTheBitsOfPlainLoops)
{
    for (const std::size_t iN : Sizes())
    {
        SCOPED_TRACE(iN);
        ASSERT_TRUE(Check(Random(iN)));
        Check(Random(iN, 1e-300)); // products are subnormal or lost
        Check(Random(iN, 1e290));  // products overflow
        ASSERT_FALSE(HasFailure());
    }
}

// A last tile of fewer columns read rows that are not there. The address sanitizer sees a read behind an array.
TEST_F(CholeskyOrder, NothingBehindTheMatrixIsRead)
{
    for (std::size_t iN = 1; iN <= 70; ++iN)
    {
        for (const bool bPacked : {false, true})
        {
            TTriangle Guarded(Random(iN), bPacked);
            TValues vdBare(Guarded.Data(), Guarded.Data() + Guarded.All().size() - 2 * Guards);
            ASSERT_TRUE((bPacked ? nuv::CholeskyLowTri : nuv::Cholesky)(static_cast<int>(iN), vdBare.data()));
            std::unique_ptr<double[]> vdVector(new double[iN]());
            (bPacked ? nuv::SolveCholLowTri : nuv::SolveChol)(static_cast<int>(iN), vdBare.data(), vdVector.get());
        }
    }
}

TEST_F(CholeskyOrder, EveryFailingDiagonalLeavesWhatPlainLoopsLeave)
{
    const double vdFailing[] = {-1e9, NaN, -Inf};
    for (const std::size_t iN : Sizes())
    {
        const std::size_t iStep = (iN <= 70 ? 1 + iN / 30 : 13) * (Emulated  ? 5
                                                                   : Watched ? 3
                                                                             : 1); // all remainders by tiles' sizes
        for (std::size_t i = iN % iStep; i < iN; i += iStep)
        {
            SCOPED_TRACE(::testing::Message() << iN << ", failing at " << i);
            TTriangle Matrix = Random(iN);
            Matrix.At(i, i) = vdFailing[m_Random() % std::size(vdFailing)];
            ASSERT_FALSE(Check(Matrix));
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_F(CholeskyOrder, SpecialElementsHaveTheBitsOfPlainLoops)
{
    for (const std::size_t iN : Sizes())
    {
        SCOPED_TRACE(iN);
        for (int iCase = 0; iCase < 6; ++iCase)
        {
            TTriangle Matrix = Random(iN);
            for (int iElement = 0; iElement <= iCase; ++iElement)
            {
                const std::size_t i = m_Random() % iN;
                Matrix.At(i, m_Random() % (i + 1)) = Special();
            }
            Check(Matrix);
        }
        TTriangle Sparse = Random(iN); // signed zeros, and now and then a zero diagonal
        for (std::size_t i = 0; i < iN; ++i)
        {
            for (std::size_t j = 0; j <= i; ++j)
            {
                if (m_Random() % (i == j ? 2 * iN : 2) == 0)
                {
                    Sparse.At(i, j) = m_Random() % 2 == 0 ? 0.0 : -0.0;
                }
            }
        }
        Check(Sparse);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(CholeskyOrder, UpdatesOfEverySizeHaveTheBitsOfPlainLoops)
{
    for (std::size_t iN = 1; iN <= 70; ++iN)
    {
        SCOPED_TRACE(iN);
        for (int iSpecials = 0; iSpecials < 4; ++iSpecials)
        {
            TValues vdRow(iN), vdMatrix(iN * (iN + 1) / 2), vdVector(iN);
            for (TValues* const pValues : {&vdRow, &vdMatrix, &vdVector})
            {
                std::generate(pValues->begin(), pValues->end(), [this] { return m_Element(m_Random); });
                for (int i = 0; i < iSpecials; ++i)
                {
                    (*pValues)[m_Random() % pValues->size()] = Special();
                }
            }
            const double dValue = iSpecials == 3 ? Special() : m_Element(m_Random);
            TValues vdExpectedMatrix = vdMatrix, vdExpectedVector = vdVector;
            for (std::size_t i = 0; i < iN; ++i)
            {
                for (std::size_t j = 0; j <= i; ++j)
                {
                    vdExpectedMatrix[i * (i + 1) / 2 + j] += vdRow[i] * vdRow[j];
                }
                vdExpectedVector[i] += vdRow[i] * dValue;
            }
            nuv::UpdateNormMatrixLowTri(static_cast<int>(iN), vdMatrix.data(), vdVector.data(), vdRow.data(), dValue);
            ASSERT_TRUE(SameArrays(vdExpectedMatrix, vdMatrix));
            ASSERT_TRUE(SameArrays(vdExpectedVector, vdVector));
        }
    }
}

} // namespace
