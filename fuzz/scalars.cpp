// scalars.cpp: fuzz target of the scalar helpers and the Gaussian elimination.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "affine.h"
#include "functionsimp.h"
#include "linear.h"

namespace {

using namespace nuv_fuzz;

void CheckMean(TInput& a_Input)
{
    const std::size_t n = static_cast<std::size_t>(a_Input.Int(0, 40));
    const TValues vdValues = a_Input.Flag() ? a_Input.TameValues(n) : a_Input.AnyValues(n);
    const TRoom Values(vdValues);
    TRoom Mean(1);
    nuv::CalcMean(static_cast<unsigned>(n), Values.Data(), *Mean.Data());
    NUV_CHECK(Values.Holds(vdValues));
    double dSum = n % 2 != 0 ? vdValues[0] : 0.0;
    for (std::size_t i = n % 2; i < n; ++i)
    {
        dSum = vdValues[i] + dSum;
    }
    NUV_CHECK(SameBits(Mean[0], n == 0 ? 0.0 : dSum / static_cast<double>(n)));
}

// A ratio of at most 1, its square, a sum, a root and a product: 4 Eps.
void CheckHypot(TInput& a_Input)
{
    const double a = a_Input.Any();
    const double b = a_Input.Any();
    const double dLength = nuv::CalcHypot(a, b);
    NUV_CHECK(!(dLength < 0.0));
    if (std::isnan(a) || std::isnan(b) || std::isinf(a) || std::isinf(b))
    {
        NUV_CHECK(!std::isnan(a) || b != 0.0 || dLength == 0.0);
        return;
    }
    const TLong dReference = std::hypot(TLong(a), TLong(b));
    if (dReference <= std::numeric_limits<double>::max() / 2)
    {
        const TLong dLeast = std::numeric_limits<double>::denorm_min();
        NUV_CHECK(Within(dLength, dReference, 4 * Eps * dReference + dLeast));
    }
}

void CheckReduce(TInput& a_Input)
{
    const double x = a_Input.Any();
    const double y = a_Input.Flag() ? TwoPi : a_Input.Any();
    double dReduced = Untouched;
    const bool bReported = Reports(254, [&] { dReduced = nuv::ReduceToPeriod(x, y); });
    NUV_CHECK(bReported == !(y > 0.0));
    if (bReported || !std::isfinite(x) || !std::isfinite(y))
    {
        return;
    }
    NUV_CHECK(dReduced >= 0.0 && dReduced <= y);
    NUV_CHECK(x < 0.0 || dReduced < y);
    NUV_CHECK(x < 0.0 || x >= y || SameBits(dReduced, x));
    // Whole periods away, but for the rounding of one subtraction.
    NUV_CHECK(Within(std::remainder(TLong(x) - dReduced, TLong(y)), 0.0L, Eps * y) || std::fabs(x) > 1e3 * y);
}

void CheckMaxAbsIndex(TInput& a_Input)
{
    const int n = a_Input.Int(-1, 12);
    const int iStride = a_Input.Int(1, 3);
    const TValues vdValues = a_Input.AnyValues(n < 1 ? 0 : static_cast<std::size_t>((n - 1) * iStride + 1));
    const TRoom Values(vdValues);
    const int iFound = nuv::MaxAbsIndex(n, Values.Data(), iStride);
    NUV_CHECK(n >= 1 ? iFound >= 0 && iFound < n : iFound == 0);
    for (int i = 0; i < n; ++i)
    {
        const double dMagnitude = std::fabs(Values[static_cast<std::size_t>(i * iStride)]);
        const double dGreatest = std::fabs(Values[static_cast<std::size_t>(iFound * iStride)]);
        NUV_CHECK(!(dMagnitude > dGreatest));
        NUV_CHECK(i >= iFound || !(dMagnitude == dGreatest));
    }
}

// Columns of n values with leading dimensions.
TValues Spread(const TValues& a_vdDense, std::size_t n, std::size_t a_iColumns, std::size_t a_iLd)
{
    TValues vdValues(n == 0 || a_iColumns == 0 ? 0 : (a_iColumns - 1) * a_iLd + n, Untouched);
    for (std::size_t j = 0; n > 0 && j < a_iColumns; ++j)
    {
        std::copy_n(a_vdDense.begin() + static_cast<std::ptrdiff_t>(j * n), n,
                    vdValues.begin() + static_cast<std::ptrdiff_t>(j * a_iLd));
    }
    return vdValues;
}

bool GapsUntouched(const TRoom& a_Room, std::size_t n, std::size_t a_iColumns, std::size_t a_iLd)
{
    for (std::size_t j = 0; n > 0 && j + 1 < a_iColumns; ++j)
    {
        for (std::size_t i = j * a_iLd + n; i < (j + 1) * a_iLd; ++i)
        {
            if (!SameBits(a_Room[i], Untouched))
            {
                return false;
            }
        }
    }
    return true;
}

// Row pivoting is backward stable up to the growth of the elements, at most 2^(n-1). Where no pivot is small against the
// matrix: the norm of the inverse tells.
void CheckGaussSolution(std::size_t n, std::size_t a_iRhs, const TValues& a_vdA, const TValues& a_vdB, const TRoom& a_X,
                        std::size_t a_iLdx)
{
    TSquare<TLong> A(n);
    for (std::size_t i = 0; i < n * n; ++i)
    {
        A.At(i % n, i / n) = a_vdA[i];
    }
    TSquare<TLong> I = A;
    const TLong dNorm = A.Norm();
    if (!Invert(I) || !(dNorm * I.Norm() < 1e6L))
    {
        return;
    }
    for (std::size_t j = 0; j < a_iRhs; ++j)
    {
        TLong dSize = 0.0L;
        for (std::size_t i = 0; i < n; ++i)
        {
            dSize = std::max(dSize, std::fabs(TLong(a_X[j * a_iLdx + i])));
            dSize = std::max(dSize, std::fabs(TLong(a_vdB[j * n + i])) / dNorm);
        }
        for (std::size_t i = 0; i < n; ++i)
        {
            TLong dSum = 0.0L;
            for (std::size_t k = 0; k < n; ++k)
            {
                dSum += A.At(i, k) * a_X[j * a_iLdx + k];
            }
            const TLong dBound =
                8 * static_cast<TLong>(n * n) * std::ldexp(1.0L, static_cast<int>(n)) * Eps * dNorm * dSize;
            NUV_CHECK(Within(dSum, a_vdB[j * n + i], dBound));
        }
    }
}

void CheckGauss(TInput& a_Input)
{
    const bool bTame = a_Input.Flag();
    const std::size_t n = static_cast<std::size_t>(a_Input.Int(0, 6));
    const std::size_t iRhs = static_cast<std::size_t>(a_Input.Int(1, 3));
    const std::size_t iLda = n + static_cast<std::size_t>(a_Input.Int(0, 2));
    const std::size_t iLdb = n + static_cast<std::size_t>(a_Input.Int(0, 2));
    const std::size_t iLdx = n + static_cast<std::size_t>(a_Input.Int(0, 2));
    const TValues vdA = bTame ? a_Input.TameValues(n * n) : a_Input.AnyValues(n * n);
    const TValues vdB = bTame ? a_Input.TameValues(n * iRhs) : a_Input.AnyValues(n * iRhs);
    TRoom A(Spread(vdA, n, n, iLda));
    TRoom B(Spread(vdB, n, iRhs, iLdb));
    TRoom X(Spread(vdB, n, iRhs, iLdx).size());
    NUV_CHECK(nuv::SolveGauss(static_cast<int>(n), static_cast<int>(iRhs), A.Data(), static_cast<int>(iLda), B.Data(),
                              static_cast<int>(iLdb), X.Data(), static_cast<int>(iLdx)) == 1);
    NUV_CHECK(GapsUntouched(A, n, n, iLda) && GapsUntouched(B, n, iRhs, iLdb) && GapsUntouched(X, n, iRhs, iLdx));
    for (std::size_t j = 0; j < n; ++j)
    {
        NUV_CHECK(A[j * iLda + j] == 1.0);
        for (std::size_t i = j + 1; i < n; ++i)
        {
            NUV_CHECK(SameBits(A[j * iLda + i], 0.0));
        }
    }
    if (bTame && n > 0)
    {
        CheckGaussSolution(n, iRhs, vdA, vdB, X, iLdx);
    }
}

// Rows of a zero diagonal, consistent or not; a failure fills forward from the last element.
void CheckUpperTri(TInput& a_Input)
{
    const std::size_t n = static_cast<std::size_t>(a_Input.Int(0, 6));
    const std::size_t iLdu = n + static_cast<std::size_t>(a_Input.Int(0, 2));
    const std::size_t iIncB = static_cast<std::size_t>(a_Input.Int(1, 2));
    const std::size_t iIncX = static_cast<std::size_t>(a_Input.Int(1, 2));
    const TValues vdU = Spread(a_Input.AnyValues(n * n), n, n, iLdu);
    const TValues vdB = a_Input.AnyValues(n == 0 ? 0 : (n - 1) * iIncB + 1);
    const TRoom U(vdU);
    const TRoom B(vdB);
    TRoom X(n == 0 ? 0 : (2 * n - 2) * iIncX + 1);
    const int iResult = nuv::SolveUpperTri(static_cast<int>(n), U.Data(), static_cast<int>(iLdu), B.Data(),
                                           static_cast<int>(iIncB), X.Data(), static_cast<int>(iIncX));
    NUV_CHECK(U.Holds(vdU) && B.Holds(vdB));
    TValues vdX(X.Size(), Untouched);
    bool bSolved = true;
    for (std::size_t i = n; i-- > 0 && bSolved;)
    {
        double dSum = 0.0;
        for (std::size_t j = n - 1; j > i; --j)
        {
            dSum = U[j * iLdu + i] * vdX[j * iIncX] + dSum;
        }
        const double dRest = i == n - 1 ? B[i * iIncB] : B[i * iIncB] - dSum;
        const double dDiagonal = U[i * iLdu + i];
        bSolved = dDiagonal != 0.0 || std::fabs(dRest) <= Tolerance;
        if (bSolved)
        {
            vdX[i * iIncX] = dDiagonal != 0.0 ? dRest / dDiagonal : 0.0;
        }
    }
    for (std::size_t i = n; !bSolved && i-- > 0;)
    {
        vdX[(n - 1 + i) * iIncX] = Inf;
    }
    NUV_CHECK(iResult == (bSolved ? 1 : 0));
    NUV_CHECK(X.Holds(vdX));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_pData, std::size_t a_iSize)
{
    TInput Input(a_pData, a_iSize);
    switch (Input.Byte() % 6)
    {
    case 0:
        CheckMean(Input);
        break;
    case 1:
        CheckHypot(Input);
        break;
    case 2:
        CheckReduce(Input);
        break;
    case 3:
        CheckMaxAbsIndex(Input);
        break;
    case 4:
        CheckGauss(Input);
        break;
    default:
        CheckUpperTri(Input);
        break;
    }
    return 0;
}
