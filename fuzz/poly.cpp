// poly.cpp: fuzz target of the polynomial roots, the eigenvalue routines and the two-unknown system.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "poly.h"
#include "linear.h"

namespace {

using namespace nuv_fuzz;

// The QR iteration is backward stable: its eigenvalues are those of a matrix within some n^2 Eps of the norm, for the
// sweeps are at most 30 n and each moves by some n Eps.
TLong BackwardError(std::size_t n, TLong a_dNorm)
{
    return 64 * static_cast<TLong>(n * n) * Eps * a_dNorm;
}

// --- Two unknowns ----------------------------------------------------------------------------------------------------

void CheckTwoUnknowns(TInput& a_Input)
{
    const TValues A = a_Input.Flag() ? a_Input.TameValues(6) : a_Input.AnyValues(6); // a11, a12, a21, a22, b1, b2
    TRoom Out(2);
    const int iResult = nuv::Roots(A[0], A[1], A[2], A[3], A[4], A[5], Out.Data()[0], Out.Data()[1]);
    if (std::fabs(A[0] * A[3] - A[1] * A[2]) <= Tolerance)
    {
        const bool bConsistent = std::fabs(A[3] * A[4] - A[1] * A[5]) <= Tolerance;
        NUV_CHECK(iResult == (bConsistent ? nuv::RET_INDETERMINATE : nuv::RET_IMPOSSIBLE));
        NUV_CHECK(Out.UntouchedFrom(0));
        return;
    }
    NUV_CHECK(iResult == 1);
    // The determinant is off by Eps (|a11 a22| + |a12 a21|), and Cramer's quotients by as much beside three roundings.
    const TLong dFirst = TLong(A[0]) * A[3];
    const TLong dSecond = TLong(A[1]) * A[2];
    const TLong dDet = std::fabs(dFirst - dSecond);
    const TLong dRelative = 4 * Eps * ((std::fabs(dFirst) + std::fabs(dSecond)) / dDet + 4);
    if (!InRange(A, 1e70) || dDet == 0.0L || !(dRelative < 0.1L))
    {
        return;
    }
    const TLong dErrorX = dRelative / dDet * (std::fabs(TLong(A[3]) * A[4]) + std::fabs(TLong(A[1]) * A[5]));
    const TLong dErrorY = dRelative / dDet * (std::fabs(TLong(A[0]) * A[5]) + std::fabs(TLong(A[2]) * A[4]));
    NUV_CHECK(Within(TLong(A[0]) * Out[0] + TLong(A[1]) * Out[1], A[4],
                     std::fabs(A[0]) * dErrorX + std::fabs(A[1]) * dErrorY));
    NUV_CHECK(Within(TLong(A[2]) * Out[0] + TLong(A[3]) * Out[1], A[5],
                     std::fabs(A[2]) * dErrorX + std::fabs(A[3]) * dErrorY));
}

// --- Polynomial roots ------------------------------------------------------------------------------------------------

// A call on room for exactly the degree.
struct TRoots
{
    int iResult;
    TValues vdRoots;

    TRoots(const TValues& a_vdCoefs, double a_dTolerance)
    {
        const TRoom Coefs(a_vdCoefs);
        TRoom Room(a_vdCoefs.size() - 1);
        iResult = nuv::Roots(static_cast<unsigned>(Room.Size()), Coefs.Data(), Room.Data(), a_dTolerance);
        NUV_CHECK(Coefs.Holds(a_vdCoefs));
        NUV_CHECK(iResult >= nuv::RET_INDETERMINATE && iResult <= static_cast<int>(Room.Size()));
        const std::size_t iCount = iResult > 0 ? static_cast<std::size_t>(iResult) : 0;
        NUV_CHECK(Room.UntouchedFrom(iCount));
        vdRoots.assign(Room.Data(), Room.Data() + iCount);
    }
};

// The companion matrix of a_vdA, both of whose ends are not zero, scaled as BalanceMatrix scales it. False where a value
// is so great or small that something could overflow or underflow.
bool BalancedCompanion(const TValues& a_vdA, TSquare<TLong>& a_C)
{
    const std::size_t m = a_C.n;
    TValues vdMatrix(m * m);
    for (std::size_t j = 0; j < m; ++j)
    {
        vdMatrix[j * m] = a_vdA[j + 1] * (-1.0 / a_vdA[0]);
        if (j + 1 < m)
        {
            vdMatrix[j * m + j + 1] = 1.0;
        }
    }
    const TValues vdBefore = vdMatrix;
    nuv::BalanceMatrix(static_cast<int>(m), vdMatrix.data(), static_cast<int>(m));
    if (!InRange(a_vdA, 1e70) || !InRange(vdBefore, 1e70) || !InRange(vdMatrix, 1e70))
    {
        return false;
    }
    // Row i and column i carry the scale d(i): element (i, j) is multiplied by d(j)/d(i).
    std::vector<TLong> vdScale(m, 1.0L);
    for (std::size_t k = 0; k + 1 < m; ++k)
    {
        const TLong dRatio = vdMatrix[k * m + k + 1]; // was 1
        int iExponent;
        NUV_CHECK(std::frexp(dRatio, &iExponent) == 0.5L);
        vdScale[k + 1] = vdScale[k] / dRatio;
        a_C.At(k + 1, k) = dRatio;
    }
    for (std::size_t j = 0; j < m; ++j)
    {
        NUV_CHECK(vdMatrix[j * m] == vdBefore[j * m] * vdScale[j]);
        a_C.At(0, j) = -TLong(a_vdA[j + 1]) / a_vdA[0] * vdScale[j];
    }
    return true;
}

// Every root is an eigenvalue of a matrix near the balanced companion matrix, or the real part of one whose imaginary
// part is below the tolerance; and if every eigenvalue is there, they add up to its trace.
void CheckAreRoots(const TValues& a_vdA, const TValues& a_vdRoots, double a_dTolerance)
{
    TSquare<TLong> C(a_vdA.size() - 1);
    if (!BalancedCompanion(a_vdA, C))
    {
        return;
    }
    const TLong dError = BackwardError(C.n, C.Norm());
    TLong dSum = 0.0L;
    for (double dRoot : a_vdRoots)
    {
        NUV_CHECK(std::isfinite(dRoot));
        dSum += dRoot;
        NUV_CHECK(a_dTolerance > 1.0 || DistanceToEigenvalue(C, dRoot) <= dError + a_dTolerance);
    }
    if (a_dTolerance == Inf && a_vdRoots.size() == C.n)
    {
        NUV_CHECK(Within(dSum, C.At(0, 0), static_cast<TLong>(C.n) * dError));
    }
}

void CheckPolynomial(TInput& a_Input)
{
    const std::size_t iDegree = static_cast<std::size_t>(a_Input.Int(0, 16));
    const bool bTame = a_Input.Flag();
    TValues A = bTame ? a_Input.TameValues(iDegree + 1) : a_Input.AnyValues(iDegree + 1);
    const double Tolerances[] = {1e-6, 1e-6, std::numeric_limits<double>::min(), Inf, 1e-3, 0.0, -1.0, NaN};
    const double dTolerance = Tolerances[a_Input.Byte() % 8];
    const TRoots Roots(A, dTolerance);

    std::size_t iFirst = 0;
    while (iFirst <= iDegree && A[iFirst] == 0.0)
    {
        ++iFirst;
    }
    if (iFirst >= iDegree)
    {
        NUV_CHECK(Roots.iResult == (iFirst > iDegree ? nuv::RET_INDETERMINATE : nuv::RET_IMPOSSIBLE));
        return;
    }
    std::size_t iZeros = 0;
    while (A[iDegree - iZeros] == 0.0)
    {
        ++iZeros;
    }
    NUV_CHECK(Roots.vdRoots.size() >= iZeros && Roots.vdRoots.size() <= iDegree - iFirst);
    NUV_CHECK(SameBits(Roots.vdRoots.data(), TValues(iZeros, 0.0).data(), iZeros));
    NUV_CHECK(dTolerance > 0.0 || Roots.vdRoots.size() == iZeros);

    // A wider tolerance reports more, in the same order.
    const TRoots All(A, Inf);
    std::size_t iNext = 0;
    for (double dRoot : Roots.vdRoots)
    {
        while (iNext < All.vdRoots.size() && !SameBits(All.vdRoots[iNext], dRoot))
        {
            ++iNext;
        }
        NUV_CHECK(iNext < All.vdRoots.size());
        ++iNext;
    }
    const auto NonZero = [&](const TValues& a_vdRoots)
    { return TValues(a_vdRoots.begin() + static_cast<std::ptrdiff_t>(iZeros), a_vdRoots.end()); };
    A.assign(A.begin() + static_cast<std::ptrdiff_t>(iFirst), A.end() - static_cast<std::ptrdiff_t>(iZeros));
    if (A.size() >= 2)
    {
        CheckAreRoots(A, NonZero(Roots.vdRoots), dTolerance);
        CheckAreRoots(A, NonZero(All.vdRoots), Inf);
    }
}

// --- Matrices --------------------------------------------------------------------------------------------------------

// A matrix column by column with a stride: what is between the columns belongs to nobody.
struct TStrided
{
    std::size_t n;
    std::size_t iStride;
    TValues vdElements;

    TStrided(TInput& a_Input, bool a_bTame) : n(static_cast<std::size_t>(a_Input.Int(0, 8)))
    {
        iStride = n + static_cast<std::size_t>(a_Input.Int(0, 2));
        const TValues vdDense = a_bTame ? a_Input.TameValues(n * n) : a_Input.AnyValues(n * n);
        vdElements.assign(n == 0 ? 0 : (n - 1) * iStride + n, Untouched);
        for (std::size_t j = 0; j < n; ++j)
        {
            std::copy_n(vdDense.begin() + static_cast<std::ptrdiff_t>(j * n), n,
                        vdElements.begin() + static_cast<std::ptrdiff_t>(j * iStride));
        }
    }
    double& At(std::size_t i, std::size_t j)
    {
        return vdElements[j * iStride + i];
    }
    // Calls a routine on guarded room and takes over what it leaves, nothing having been written between the columns.
    template <class TCall> void Run(const TCall& a_Call)
    {
        TRoom Room(vdElements);
        a_Call(static_cast<int>(n), Room.Data(), static_cast<int>(iStride));
        vdElements = Room.Values();
        for (std::size_t j = 0; j + 1 < n; ++j)
        {
            for (std::size_t i = n; i < iStride; ++i)
            {
                NUV_CHECK(SameBits(At(i, j), Untouched));
            }
        }
    }
    TSquare<TLong> Square(bool a_bHessenberg)
    {
        TSquare<TLong> A(n);
        for (std::size_t i = 0; i < n; ++i)
        {
            for (std::size_t j = a_bHessenberg && i > 0 ? i - 1 : 0; j < n; ++j)
            {
                A.At(i, j) = At(i, j);
            }
        }
        return A;
    }
    void ClearBelowSubdiagonal()
    {
        for (std::size_t j = 0; j < n; ++j)
        {
            for (std::size_t i = j + 2; i < n; ++i)
            {
                At(i, j) = 0.0;
            }
        }
    }
};

// Balancing multiplies rows and columns by powers of 2 that cancel: the product of an element and the one opposite
// stays, and so does every diagonal element. A second balancing finds nothing to do.
void CheckBalance(TStrided& a_M, bool a_bTame)
{
    TStrided Before = a_M;
    a_M.Run(nuv::BalanceMatrix);
    for (std::size_t i = 0; i < a_M.n; ++i)
    {
        NUV_CHECK(!a_bTame || SameBits(a_M.At(i, i), Before.At(i, i)));
        for (std::size_t j = 0; a_bTame && j < a_M.n; ++j)
        {
            const double dScaled = a_M.At(i, j);
            const double dElement = Before.At(i, j);
            NUV_CHECK((dScaled == 0.0) == (dElement == 0.0));
            int iExponent;
            NUV_CHECK(dElement == 0.0 || std::frexp(dScaled / dElement, &iExponent) == 0.5);
            NUV_CHECK(TLong(dScaled) * a_M.At(j, i) == TLong(dElement) * Before.At(j, i));
            // Around a triangle every scale cancels.
            NUV_CHECK(TLong(dScaled) * a_M.At(j, 0) * a_M.At(0, i) ==
                      TLong(dElement) * Before.At(j, 0) * Before.At(0, i));
        }
    }
    TStrided Again = a_M;
    Again.Run(nuv::BalanceMatrix);
    NUV_CHECK(SameBits(Again.vdElements.data(), a_M.vdElements.data(), a_M.vdElements.size()));
}

struct TEigenvalues
{
    int iResult = 0;
    TValues vdReal;
    TValues vdImaginary;

    explicit TEigenvalues(TStrided a_H)
    {
        TRoom Real(a_H.n);
        TRoom Imaginary(a_H.n);
        a_H.Run([&](int n, double* a_vdMatrix, int a_iStride)
                { iResult = nuv::HessenbergEigenvalues(n, a_vdMatrix, a_iStride, Real.Data(), Imaginary.Data()); });
        vdReal = Real.Values();
        vdImaginary = Imaginary.Values();
    }
};

// The elementary similarity transformations have multipliers of at most 1, so that errors are magnified by 2^n at most
// in either direction.
void CheckEigenvalues(TStrided& a_H, const TSquare<TLong>& a_Original)
{
    const TEigenvalues Found(a_H);
    NUV_CHECK(Found.iResult == 0 || Found.iResult == 1);
    std::size_t iMissing = 0; // found from the bottom upwards
    while (iMissing < a_H.n && SameBits(Found.vdReal[iMissing], Untouched))
    {
        NUV_CHECK(SameBits(Found.vdImaginary[iMissing], Untouched));
        ++iMissing;
    }
    NUV_CHECK((iMissing == 0) == (Found.iResult == 1));
    // What stands below the subdiagonal does not matter.
    TStrided Cleared = a_H;
    Cleared.ClearBelowSubdiagonal();
    const TEigenvalues Again(Cleared);
    NUV_CHECK(Again.iResult == Found.iResult);
    NUV_CHECK(SameBits(Again.vdReal.data(), Found.vdReal.data(), a_H.n));
    NUV_CHECK(SameBits(Again.vdImaginary.data(), Found.vdImaginary.data(), a_H.n));

    const TSquare<TLong> H = a_H.Square(true);
    const bool bInRange = std::all_of(H.vElements.begin(), H.vElements.end(),
                                      [](TLong a_dValue) { return InRange(static_cast<double>(a_dValue), 1e70); });
    if (a_Original.n == 0 || !bInRange)
    {
        return;
    }
    const TLong dError = BackwardError(a_H.n, H.Norm());
    const TLong dErrorOriginal =
        BackwardError(a_H.n, a_Original.Norm()) * std::ldexp(1.0L, 2 * static_cast<int>(a_H.n));
    TLong dTrace = 0.0L;
    for (std::size_t i = iMissing; i < a_H.n; ++i)
    {
        const std::complex<TLong> Value(Found.vdReal[i], Found.vdImaginary[i]);
        NUV_CHECK(DistanceToEigenvalue(H, Value) <= dError);
        NUV_CHECK(DistanceToEigenvalue(a_Original, Value) <= dErrorOriginal);
        dTrace += Found.vdReal[i];
    }
    for (std::size_t i = 0; i < a_H.n && iMissing == 0; ++i)
    {
        dTrace -= H.At(i, i);
    }
    NUV_CHECK(iMissing != 0 || Within(dTrace, 0.0L, static_cast<TLong>(a_H.n) * dError));
}

void CheckMatrix(TInput& a_Input, bool a_bTame)
{
    TStrided M(a_Input, a_bTame);
    const bool bReduced = a_Input.Flag();
    if (a_Input.Flag())
    {
        CheckBalance(M, a_bTame);
    }
    TSquare<TLong> Original(0);
    if (a_bTame)
    {
        Original = M.Square(!bReduced);
    }
    if (bReduced)
    {
        const TValues vdBefore = M.vdElements;
        M.Run(nuv::ReduceToHessenberg);
        NUV_CHECK(M.n >= 3 || SameBits(M.vdElements.data(), vdBefore.data(), vdBefore.size()));
    }
    CheckEigenvalues(M, Original);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_pData, std::size_t a_iSize)
{
    TInput Input(a_pData, a_iSize);
    switch (Input.Byte() % 6)
    {
    case 0:
        CheckTwoUnknowns(Input);
        break;
    case 1:
    case 2:
    case 3:
        CheckPolynomial(Input);
        break;
    case 4:
        CheckMatrix(Input, false);
        break;
    default:
        CheckMatrix(Input, true);
        break;
    }
    return 0;
}
