// scalars.cpp: fuzz target of the scalar helpers and the Gaussian elimination.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "affine.h"
#include "functionsimp.h"
#include "fuzzing.h"

#include <Eigen/Dense>

namespace {

using namespace nuv_fuzz;

void CheckMean(TInput& a_Input)
{
    const std::size_t n = a_Input.Size(0, 40);
    const TValues vdValues = a_Input.TameOrAnyValues(n);
    const TGuardedArray Values(vdValues);
    TGuardedArray Mean = TGuardedArray::Output(1);
    nuv::CalcMean(static_cast<unsigned>(n), Values.Data(), *Mean.Data());
    NUV_CHECK(Values.Holds(vdValues));
    double dSum = n % 2 != 0 ? vdValues[0] : 0.0;
    for (std::size_t i = n % 2; i < n; ++i)
    {
        dSum = vdValues[i] + dSum;
    }
    NUV_CHECK(SameBits(Mean[0], n == 0 ? 0.0 : dSum / static_cast<double>(n)));
}

// A ratio of at most 1, its square, a sum, a root and a product have an error of at most 4 Epsilon together.
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
        NUV_CHECK(Within(dLength, dReference, 4 * Epsilon * dReference + dLeast));
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
    // The difference is a whole number of periods, within the rounding of one subtraction.
    NUV_CHECK(Within(std::remainder(TLong(x) - dReduced, TLong(y)), 0.0L, Epsilon * y) || std::fabs(x) > 1e3 * y);
}

void CheckMaxAbsIndex(TInput& a_Input)
{
    const int n = a_Input.Int(-1, 12);
    const int iStride = a_Input.Int(1, 3);
    const TValues vdValues = a_Input.AnyValues(n < 1 ? 0 : static_cast<std::size_t>((n - 1) * iStride + 1));
    const TGuardedArray Values(vdValues);
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

// A matrix of columns of n values with leading dimension a_iLd. What lies between the columns is Untouched.
TValues WithGaps(const TValues& a_vdDense, std::size_t n, std::size_t a_iColumns, std::size_t a_iLd)
{
    TValues vdValues(n == 0 || a_iColumns == 0 ? 0 : (a_iColumns - 1) * a_iLd + n, Untouched);
    for (std::size_t j = 0; n > 0 && j < a_iColumns; ++j)
    {
        std::copy_n(a_vdDense.begin() + static_cast<std::ptrdiff_t>(j * n), n,
                    vdValues.begin() + static_cast<std::ptrdiff_t>(j * a_iLd));
    }
    return vdValues;
}

bool GapsUntouched(const TGuardedArray& a_Room, std::size_t n, std::size_t a_iColumns, std::size_t a_iLd)
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

// Elimination with row pivoting is backward stable up to the growth of the elements, which is at most 2^(n-1). A
// matrix of a great condition is left out.
void CheckGaussSolution(std::size_t n, std::size_t a_iRhs, const TValues& a_vdA, const TValues& a_vdB,
                        const TGuardedArray& a_X, std::size_t a_iLdx)
{
    using TMatrix = Eigen::Matrix<TLong, Eigen::Dynamic, Eigen::Dynamic>;
    using TStored = Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<> >;
    const auto iRows = static_cast<Eigen::Index>(n);
    const auto iColumns = static_cast<Eigen::Index>(a_iRhs);
    const TMatrix A = TStored(a_vdA.data(), iRows, iRows, Eigen::OuterStride<>(iRows)).cast<TLong>();
    const TMatrix B = TStored(a_vdB.data(), iRows, iColumns, Eigen::OuterStride<>(iRows)).cast<TLong>();
    const TMatrix X =
        TStored(a_X.Data(), iRows, iColumns, Eigen::OuterStride<>(static_cast<Eigen::Index>(a_iLdx))).cast<TLong>();
    const TLong dNorm = A.norm();
    if (!(dNorm * A.inverse().norm() < 1e6L))
    {
        return;
    }
    const TLong dFactor = 8 * static_cast<TLong>(n * n) * std::ldexp(1.0L, static_cast<int>(n)) * Epsilon * dNorm;
    for (Eigen::Index j = 0; j < iColumns; ++j)
    {
        const TLong dSize = std::max(X.col(j).cwiseAbs().maxCoeff(), B.col(j).cwiseAbs().maxCoeff() / dNorm);
        NUV_CHECK((A * X.col(j) - B.col(j)).cwiseAbs().maxCoeff() <= dFactor * dSize);
    }
}

void CheckGauss(TInput& a_Input)
{
    const bool bTame = a_Input.Flag();
    const std::size_t n = a_Input.Size(0, 6);
    const std::size_t iRhs = a_Input.Size(1, 3);
    const std::size_t iLda = n + a_Input.Size(0, 2);
    const std::size_t iLdb = n + a_Input.Size(0, 2);
    const std::size_t iLdx = n + a_Input.Size(0, 2);
    const TValues vdA = bTame ? a_Input.TameValues(n * n) : a_Input.AnyValues(n * n);
    const TValues vdB = bTame ? a_Input.TameValues(n * iRhs) : a_Input.AnyValues(n * iRhs);
    TGuardedArray A(WithGaps(vdA, n, n, iLda));
    TGuardedArray B(WithGaps(vdB, n, iRhs, iLdb));
    TGuardedArray X = TGuardedArray::Output(WithGaps(vdB, n, iRhs, iLdx).size());
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

// A system of an upper triangle, and the definition of its solution.
struct TUpperSystem
{
    std::size_t n;
    std::size_t iLdu;
    std::size_t iIncB;
    std::size_t iIncX;
    TValues vdU;
    TValues vdB;

    explicit TUpperSystem(TInput& a_Input)
        : n(a_Input.Size(0, 6)), iLdu(n + a_Input.Size(0, 2)), iIncB(a_Input.Size(1, 2)), iIncX(a_Input.Size(1, 2)),
          vdU(WithGaps(a_Input.AnyValues(n * n), n, n, iLdu)), vdB(a_Input.AnyValues(n == 0 ? 0 : (n - 1) * iIncB + 1))
    {}

    // Solves row i for its unknown. Returns false if the diagonal is zero and the right-hand side is not negligible.
    bool SolveRow(std::size_t i, TValues& a_vdX) const
    {
        double dSum = 0.0;
        for (std::size_t j = n - 1; j > i; --j)
        {
            dSum = vdU[j * iLdu + i] * a_vdX[j * iIncX] + dSum;
        }
        const double dRest = i == n - 1 ? vdB[i * iIncB] : vdB[i * iIncB] - dSum;
        const double dDiagonal = vdU[i * iLdu + i];
        const bool bSolvable = dDiagonal != 0.0 || std::fabs(dRest) <= Tolerance;
        if (bSolvable)
        {
            a_vdX[i * iIncX] = dDiagonal != 0.0 ? dRest / dDiagonal : 0.0;
        }
        return bSolvable;
    }
};

// A failure leaves the unknowns above the failing row as they were, and then fills n elements with infinities, from the
// last unknown forward.
void CheckUpperTri(TInput& a_Input)
{
    const TUpperSystem S(a_Input);
    const TGuardedArray U(S.vdU);
    const TGuardedArray B(S.vdB);
    TGuardedArray X = TGuardedArray::Output(S.n == 0 ? 0 : (2 * S.n - 2) * S.iIncX + 1);
    const int iResult = nuv::SolveUpperTri(static_cast<int>(S.n), U.Data(), static_cast<int>(S.iLdu), B.Data(),
                                           static_cast<int>(S.iIncB), X.Data(), static_cast<int>(S.iIncX));
    NUV_CHECK(U.Holds(S.vdU) && B.Holds(S.vdB));
    TValues vdX(X.Size(), Untouched);
    bool bSolved = true;
    for (std::size_t i = S.n; i-- > 0 && bSolved;)
    {
        bSolved = S.SolveRow(i, vdX);
    }
    for (std::size_t i = S.n; !bSolved && i-- > 0;)
    {
        vdX[(S.n - 1 + i) * S.iIncX] = Inf;
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
