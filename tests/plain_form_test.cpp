// plain_form_test.cpp: what leaves operations out has the bits of the form that performs them all.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Where an operation is a call, the library leaves out products with a coefficient of zero, and it forms once the sums
// that both rows of a control point have in common. The plain forms here leave nothing out. Inputs are random, and rich
// in what such a shortcut could get wrong: zeros of both signs, infinite, NaN, overflowing and vanishing products.

#include "nuv1math.h"
#include "testing.h"

#include <random>

namespace {

using namespace nuv_tests;

class TValues
{
public:
    // One of three kinds: ordinary numbers with many zeros, the same with single special values, special values alone.
    double Next(int a_iKind)
    {
        const int iDraw = Below(100);
        if (a_iKind == 2 || (a_iKind == 1 && iDraw < 4))
        {
            static const double Special[] = {0.0,        -0.0, 1.0,  -1.0,   Inf,     -Inf,  NaN,   Subnormal,
                                             -Subnormal, 3.0,  -0.5, 1e-160, -1e-160, 1e160, -1e160};
            return Special[Below(sizeof Special / sizeof *Special)];
        }
        if (iDraw < 30)
        {
            return iDraw < 15 ? 0.0 : -0.0;
        }
        return std::ldexp(static_cast<double>(Below(2000001) - 1000000), -10);
    }

    std::vector<double> Take(std::size_t a_iCount, int a_iKind)
    {
        std::vector<double> vdValues(a_iCount);
        for (double& dValue : vdValues)
        {
            dValue = Next(a_iKind);
        }
        return vdValues;
    }

    int Below(int a_iLimit)
    {
        return static_cast<int>(m_Engine() % static_cast<unsigned int>(a_iLimit));
    }

private:
    std::mt19937 m_Engine{20261121};
};

void ExpectSameBits(const std::vector<double>& a_vdExpected, const std::vector<double>& a_vdActual)
{
    ASSERT_EQ(a_vdExpected.size(), a_vdActual.size());
    for (std::size_t i = 0; i < a_vdExpected.size(); ++i)
    {
        EXPECT_SAME_BITS(a_vdExpected[i], a_vdActual[i]) << "element " << i;
    }
}

void PlainUpdate(int n, double* a_vdMatrix, double* a_vdVector, const double* a_vdRow, double a_dValue)
{
    for (int i = 0; i < n; ++i)
    {
        for (int j = 0; j <= i; ++j)
        {
            a_vdMatrix[i * (i + 1) / 2 + j] += a_vdRow[i] * a_vdRow[j];
        }
        a_vdVector[i] += a_vdRow[i] * a_dValue;
    }
}

TEST(PlainForm, UpdateNormMatrixLowTri)
{
    TValues Values;
    for (int iCase = 0; iCase < 6000; ++iCase)
    {
        const int n = 1 + Values.Below(9);
        const std::size_t iSize = static_cast<std::size_t>(n);
        std::vector<double> vdExpected = Values.Take(iSize * (iSize + 1) / 2 + iSize, Values.Below(3));
        std::vector<double> vdActual = vdExpected; // matrix, then vector
        const int iKind = Values.Below(3);
        const std::vector<double> vdRow = Values.Take(iSize, iKind);
        const double dValue = Values.Next(iKind);
        PlainUpdate(n, vdExpected.data(), vdExpected.data() + vdExpected.size() - iSize, vdRow.data(), dValue);
        nuv::UpdateNormMatrixLowTri(n, vdActual.data(), vdActual.data() + vdActual.size() - iSize, vdRow.data(),
                                    dValue);
        SCOPED_TRACE(iCase);
        ExpectSameBits(vdExpected, vdActual);
        ASSERT_FALSE(HasFailure());
    }
}

// The two rows of a point with their observed values behind them: linear, or refined at a_vdCoefs.
using TRow = std::array<double, 9>;

std::array<TRow, 2> LinearRows(double x, double y, double X, double Y)
{
    return {{{x, y, 1.0, 0.0, 0.0, 0.0, -(X * x), -(X * y), X}, {0.0, 0.0, 0.0, x, y, 1.0, -(Y * x), -(Y * y), Y}}};
}

std::array<TRow, 2> RefinedRows(const std::vector<double>& k, double x, double y, double X, double Y)
{
    const double dU = (x * k[0] + y * k[1]) + k[2];
    const double dV = (x * k[3] + y * k[4]) + k[5];
    const double dW = (x * k[6] + y * k[7]) + 1.0;
    const double r = 1.0 / dW;
    const double r2 = 1.0 / (dW * dW);
    return {{{x * r, y * r, r, 0.0, 0.0, 0.0, -((x * r2) * dU), -((y * r2) * dU), X - r * dU},
             {0.0, 0.0, 0.0, x * r, y * r, r, -((x * r2) * dV), -((y * r2) * dV), Y - r * dV}}};
}

// Forms the equations with all products, factorises and solves them: false if they cannot be factorised.
template <class TForm>
bool SolvePlainly(const TControlPoints& p, const TForm& a_FormRows, std::vector<double>& a_vdVector)
{
    std::vector<double> vdMatrix(36, 0.0);
    a_vdVector.assign(8, 0.0);
    for (std::size_t i = 0; i < p.vdX.size(); ++i)
    {
        for (const TRow& Row : a_FormRows(p.vdX[i], p.vdY[i], p.vdXa[i], p.vdYa[i]))
        {
            PlainUpdate(8, vdMatrix.data(), a_vdVector.data(), Row.data(), Row[8]);
        }
    }
    if (!nuv::CholeskyLowTri(8, vdMatrix.data()))
    {
        return false;
    }
    nuv::SolveCholLowTri(8, vdMatrix.data(), a_vdVector.data());
    return true;
}

int PlainOmographicFit(const TControlPoints& p, std::vector<double>& a_vdCoefs)
{
    if (!SolvePlainly(p, LinearRows, a_vdCoefs))
    {
        return nuv::RET_INDETERMINATE;
    }
    for (int k = 0; k < 4; ++k)
    {
        const auto Refined = [&](double x, double y, double X, double Y) { return RefinedRows(a_vdCoefs, x, y, X, Y); };
        std::vector<double> vdCorrection;
        if (!SolvePlainly(p, Refined, vdCorrection))
        {
            break;
        }
        double dGreatest = 0.0;
        for (std::size_t j = 0; j < 8; ++j)
        {
            a_vdCoefs[j] += vdCorrection[j];
            dGreatest = std::fabs(vdCorrection[j]) > dGreatest ? std::fabs(vdCorrection[j]) : dGreatest;
        }
        if (dGreatest < 1e-8)
        {
            break;
        }
    }
    return 1;
}

TEST(PlainForm, CalcOmographicCoefs)
{
    TValues Values;
    int iSolved = 0;
    for (int iCase = 0; iCase < 400; ++iCase)
    {
        const std::size_t n = static_cast<std::size_t>(4 + Values.Below(5));
        const int iKind = Values.Below(8) % 3; // few of special values alone: they are hardly ever solved
        const TControlPoints p = {Values.Take(n, iKind), Values.Take(n, iKind), Values.Take(n, iKind),
                                  Values.Take(n, iKind)};
        std::vector<double> vdExpected;
        const int iExpected = PlainOmographicFit(p, vdExpected);
        nuv::TOmographicParams Params;
        const int iResult = nuv::CalcOmographicCoefs(static_cast<int>(n), p.vdX.data(), p.vdY.data(), p.vdXa.data(),
                                                     p.vdYa.data(), Params);
        SCOPED_TRACE(iCase);
        EXPECT_EQ(iExpected, iResult);
        const auto Actual = Fields(Params);
        ExpectSameBits(vdExpected, std::vector<double>(Actual.begin(), Actual.end()));
        ASSERT_FALSE(HasFailure());
        iSolved += iResult == 1 ? 1 : 0;
    }
    EXPECT_GT(iSolved, 100);
    EXPECT_LT(iSolved, 390);
}

} // namespace
