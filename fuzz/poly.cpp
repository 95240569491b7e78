// poly.cpp: fuzz target of the polynomial roots, the eigenvalue routines and the two-unknown system.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "poly.h"
#include "fuzzing.h"

#include <Eigen/Dense>

#include <complex>

namespace {

using namespace nuv_fuzz;

using TDense = Eigen::Matrix<TLong, Eigen::Dynamic, Eigen::Dynamic>;
using TComplexDense = Eigen::Matrix<std::complex<TLong>, Eigen::Dynamic, Eigen::Dynamic>;

// A lower bound of the distance from the matrix to a singular one: the reciprocal of the norm of its inverse.
template <class TSquare> TLong DistanceToSingular(const TSquare& a_Matrix)
{
    const TLong dNorm = a_Matrix.inverse().norm();
    return std::isfinite(dNorm) ? 1.0L / dNorm : 0.0L;
}

// The same for A - value I. It is at most d if the value is an eigenvalue of a matrix at the distance d from A.
TLong DistanceToEigenvalue(const TDense& a_A, std::complex<TLong> a_Value)
{
    const auto n = a_A.rows();
    if (a_Value.imag() == 0.0L)
    {
        return DistanceToSingular(TDense(a_A - a_Value.real() * TDense::Identity(n, n)));
    }
    return DistanceToSingular(
        TComplexDense(a_A.cast<std::complex<TLong> >() - a_Value * TComplexDense::Identity(n, n)));
}

// The QR iteration is backward stable: its eigenvalues are those of a matrix within about n^2 Epsilon of the norm. There
// are at most 30 n sweeps, and each changes the matrix by a few n Epsilon.
TLong BackwardError(Eigen::Index n, TLong a_dNorm)
{
    return 64 * static_cast<TLong>(n * n) * Epsilon * a_dNorm;
}

// --- Two unknowns ----------------------------------------------------------------------------------------------------

void CheckTwoUnknowns(TInput& a_Input)
{
    const TValues A = a_Input.TameOrAnyValues(6); // a11, a12, a21, a22, b1, b2
    TGuardedArray Out = TGuardedArray::Output(2);
    const int iResult = nuv::Roots(A[0], A[1], A[2], A[3], A[4], A[5], Out.Data()[0], Out.Data()[1]);
    if (std::fabs(A[0] * A[3] - A[1] * A[2]) <= Tolerance)
    {
        const bool bConsistent = std::fabs(A[3] * A[4] - A[1] * A[5]) <= Tolerance;
        NUV_CHECK(iResult == (bConsistent ? nuv::RET_INDETERMINATE : nuv::RET_IMPOSSIBLE));
        NUV_CHECK(Out.IsUntouchedFrom(0));
        return;
    }
    NUV_CHECK(iResult == 1);
    // The determinant has an error of Epsilon (|a11 a22| + |a12 a21|). Cramer's quotients have the same relative error and
    // three roundings more.
    const TLong dFirst = TLong(A[0]) * A[3];
    const TLong dSecond = TLong(A[1]) * A[2];
    const TLong dDet = std::fabs(dFirst - dSecond);
    const TLong dRelative = 4 * Epsilon * ((std::fabs(dFirst) + std::fabs(dSecond)) / dDet + 4);
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

// A call with room for exactly as many roots as the degree.
struct TRoots
{
    int iResult;
    TValues vdRoots;

    TRoots(const TValues& a_vdCoefs, double a_dTolerance)
    {
        const TGuardedArray Coefs(a_vdCoefs);
        TGuardedArray Room = TGuardedArray::Output(a_vdCoefs.size() - 1);
        iResult = nuv::Roots(static_cast<unsigned>(Room.Size()), Coefs.Data(), Room.Data(), a_dTolerance);
        NUV_CHECK(Coefs.Holds(a_vdCoefs));
        NUV_CHECK(iResult >= nuv::RET_INDETERMINATE && iResult <= static_cast<int>(Room.Size()));
        const std::size_t iCount = iResult > 0 ? static_cast<std::size_t>(iResult) : 0;
        NUV_CHECK(Room.IsUntouchedFrom(iCount) && Room.IsIntact());
        vdRoots.assign(Room.Data(), Room.Data() + iCount);
    }
};

// The first row of the companion matrix is -a_vdA[j + 1]/a_vdA[0], and its subdiagonal is 1; stored by columns.
TValues Companion(const TValues& a_vdA)
{
    const std::size_t m = a_vdA.size() - 1;
    TValues vdMatrix(m * m);
    for (std::size_t j = 0; j < m; ++j)
    {
        vdMatrix[j * m] = a_vdA[j + 1] * (-1.0 / a_vdA[0]);
        if (j + 1 < m)
        {
            vdMatrix[j * m + j + 1] = 1.0;
        }
    }
    return vdMatrix;
}

// The exact companion matrix of a_vdA, whose first and last elements are not zero, with the scales that BalanceMatrix
// chooses. Returns false where a value is so great or small that something could overflow or underflow.
bool BalancedCompanion(const TValues& a_vdA, TDense& a_C)
{
    const std::size_t m = a_vdA.size() - 1;
    const TValues vdBefore = Companion(a_vdA);
    TValues vdMatrix = vdBefore;
    nuv::BalanceMatrix(static_cast<int>(m), vdMatrix.data(), static_cast<int>(m));
    if (!InRange(a_vdA, 1e70) || !InRange(vdBefore, 1e70) || !InRange(vdMatrix, 1e70))
    {
        return false;
    }
    a_C = TDense::Zero(static_cast<Eigen::Index>(m), static_cast<Eigen::Index>(m));
    TLong dScale = 1.0L; // d(j): element (i, j) is multiplied by d(j)/d(i), and d(0) = 1
    for (std::size_t j = 0; j < m; ++j)
    {
        const auto iColumn = static_cast<Eigen::Index>(j);
        NUV_CHECK(vdMatrix[j * m] == vdBefore[j * m] * dScale);
        a_C(0, iColumn) = -TLong(a_vdA[j + 1]) / a_vdA[0] * dScale;
        if (j + 1 < m)
        {
            const TLong dRatio = vdMatrix[j * m + j + 1]; // it was 1, so this is d(j)/d(j + 1)
            int iExponent;
            NUV_CHECK(std::frexp(dRatio, &iExponent) == 0.5L);
            a_C(iColumn + 1, iColumn) = dRatio;
            dScale /= dRatio;
        }
    }
    return true;
}

// Every root is an eigenvalue of a matrix near the balanced companion matrix, or the real part of an eigenvalue whose
// imaginary part is below the tolerance. If all eigenvalues are reported, their sum is the trace.
void CheckAreRoots(const TValues& a_vdA, const TValues& a_vdRoots, double a_dTolerance)
{
    TDense C;
    if (!BalancedCompanion(a_vdA, C))
    {
        return;
    }
    const TLong dError = BackwardError(C.rows(), C.norm());
    TLong dSum = 0.0L;
    for (double dRoot : a_vdRoots)
    {
        NUV_CHECK(std::isfinite(dRoot));
        dSum += dRoot;
        NUV_CHECK(a_dTolerance > 1.0 || DistanceToEigenvalue(C, dRoot) <= dError + a_dTolerance);
    }
    if (a_dTolerance == Inf && a_vdRoots.size() + 1 == a_vdA.size())
    {
        NUV_CHECK(Within(dSum, C(0, 0), static_cast<TLong>(C.rows()) * dError));
    }
}

// All of a_vdPart is in a_vdAll, in the same order.
void CheckIsSubsequence(const TValues& a_vdPart, const TValues& a_vdAll)
{
    auto Next = a_vdAll.begin();
    for (double dRoot : a_vdPart)
    {
        Next = std::find_if(Next, a_vdAll.end(), [=](double a_dOther) { return SameBits(a_dOther, dRoot); });
        NUV_CHECK(Next != a_vdAll.end());
        ++Next;
    }
}

void CheckPolynomial(TInput& a_Input)
{
    const std::size_t iDegree = a_Input.Size(0, 16);
    const TValues A = a_Input.TameOrAnyValues(iDegree + 1);
    const double Tolerances[] = {1e-6, 1e-6, std::numeric_limits<double>::min(), Inf, 1e-3, 0.0, -1.0, NaN};
    const double dTolerance = Tolerances[a_Input.Byte() % 8];
    const TRoots Roots(A, dTolerance);
    const auto IsNotZero = [](double a_dValue) { return a_dValue != 0.0; };
    const auto First = std::find_if(A.begin(), A.end(), IsNotZero);
    if (A.end() - First <= 1)
    {
        NUV_CHECK(Roots.iResult == (First == A.end() ? nuv::RET_INDETERMINATE : nuv::RET_IMPOSSIBLE));
        return;
    }
    // Trailing zeros are roots at zero, which come first. The others are those of the rest.
    const std::ptrdiff_t iZeros = std::find_if(A.rbegin(), A.rend(), IsNotZero) - A.rbegin();
    const TValues Rest(First, A.end() - iZeros);
    const auto iFound = static_cast<std::ptrdiff_t>(Roots.vdRoots.size());
    NUV_CHECK(iFound >= iZeros && iFound < A.end() - First);
    NUV_CHECK(SameBits(TValues(Roots.vdRoots.begin(), Roots.vdRoots.begin() + iZeros),
                       TValues(static_cast<std::size_t>(iZeros), 0.0)));
    NUV_CHECK(dTolerance > 0.0 || iFound == iZeros);

    const TRoots All(A, Inf);
    CheckIsSubsequence(Roots.vdRoots, All.vdRoots);
    if (Rest.size() >= 2)
    {
        CheckAreRoots(Rest, TValues(Roots.vdRoots.begin() + iZeros, Roots.vdRoots.end()), dTolerance);
        CheckAreRoots(Rest, TValues(All.vdRoots.begin() + iZeros, All.vdRoots.end()), Inf);
    }
}

// --- Matrices --------------------------------------------------------------------------------------------------------

// A matrix by columns with a stride. What lies between the columns is Untouched.
struct TStrided
{
    std::size_t n;
    std::size_t iStride;
    TValues vdElements;

    TStrided(TInput& a_Input, bool a_bTame) : n(a_Input.Size(0, 8))
    {
        iStride = n + a_Input.Size(0, 2);
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
    // Calls a routine on the matrix between guards. It must not write between the columns.
    template <class TCall> void Run(const TCall& a_Call)
    {
        TGuardedArray Room(vdElements);
        a_Call(static_cast<int>(n), Room.Data(), static_cast<int>(iStride));
        NUV_CHECK(Room.IsIntact());
        vdElements = Room.Values();
        for (std::size_t j = 0; j + 1 < n; ++j)
        {
            for (std::size_t i = n; i < iStride; ++i)
            {
                NUV_CHECK(SameBits(At(i, j), Untouched));
            }
        }
    }
    // Without what is below the subdiagonal if a_bHessenberg.
    TDense Dense(bool a_bHessenberg)
    {
        const auto iRows = static_cast<Eigen::Index>(n);
        TDense A = TDense::Zero(iRows, iRows);
        for (std::size_t i = 0; i < n; ++i)
        {
            for (std::size_t j = a_bHessenberg && i > 0 ? i - 1 : 0; j < n; ++j)
            {
                A(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(j)) = At(i, j);
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

// Compares an element of a balanced matrix with the original one: their ratio is a power of 2, and the scales cancel in
// the product with the opposite element and around the triangle (i, j, 0).
void CheckBalancedElement(TStrided& a_Balanced, TStrided& a_Before, std::size_t i, std::size_t j)
{
    const double dScaled = a_Balanced.At(i, j);
    const double dElement = a_Before.At(i, j);
    NUV_CHECK((dScaled == 0.0) == (dElement == 0.0));
    int iExponent;
    NUV_CHECK(dElement == 0.0 || std::frexp(dScaled / dElement, &iExponent) == 0.5);
    NUV_CHECK(TLong(dScaled) * a_Balanced.At(j, i) == TLong(dElement) * a_Before.At(j, i));
    NUV_CHECK(TLong(dScaled) * a_Balanced.At(j, 0) * a_Balanced.At(0, i) ==
              TLong(dElement) * a_Before.At(j, 0) * a_Before.At(0, i));
}

// Balancing multiplies rows and columns by powers of 2 and keeps the diagonal. A second balancing changes nothing.
void CheckBalance(TStrided& a_M, bool a_bTame)
{
    TStrided Before = a_M;
    a_M.Run(nuv::BalanceMatrix);
    for (std::size_t i = 0; a_bTame && i < a_M.n; ++i)
    {
        NUV_CHECK(SameBits(a_M.At(i, i), Before.At(i, i)));
        for (std::size_t j = 0; j < a_M.n; ++j)
        {
            CheckBalancedElement(a_M, Before, i, j);
        }
    }
    TStrided Again = a_M;
    Again.Run(nuv::BalanceMatrix);
    NUV_CHECK(SameBits(Again.vdElements, a_M.vdElements));
}

struct TEigenvalues
{
    int iResult = 0;
    TValues vdReal;
    TValues vdImaginary;

    explicit TEigenvalues(TStrided a_H)
    {
        TGuardedArray Real = TGuardedArray::Output(a_H.n);
        TGuardedArray Imaginary = TGuardedArray::Output(a_H.n);
        a_H.Run([&](int n, double* a_vdMatrix, int a_iStride)
                { iResult = nuv::HessenbergEigenvalues(n, a_vdMatrix, a_iStride, Real.Data(), Imaginary.Data()); });
        NUV_CHECK(Real.IsIntact() && Imaginary.IsIntact());
        vdReal = Real.Values();
        vdImaginary = Imaginary.Values();
    }
};

// The eigenvalues found must be near those of a_H and of a_Original, from which a_H was reduced. The elementary
// similarity transformations have multipliers of at most 1, so they magnify errors by at most 2^n in each direction.
void CheckAreEigenvalues(const TDense& a_H, const TDense& a_Original, const TEigenvalues& a_Found,
                         std::size_t a_iMissing)
{
    const auto n = a_H.rows();
    const TLong dError = BackwardError(n, a_H.norm());
    const TLong dErrorOriginal = BackwardError(n, a_Original.norm()) * std::ldexp(1.0L, 2 * static_cast<int>(n));
    TLong dSum = 0.0L;
    for (std::size_t i = a_iMissing; i < a_Found.vdReal.size(); ++i)
    {
        const std::complex<TLong> Value(a_Found.vdReal[i], a_Found.vdImaginary[i]);
        NUV_CHECK(DistanceToEigenvalue(a_H, Value) <= dError);
        NUV_CHECK(DistanceToEigenvalue(a_Original, Value) <= dErrorOriginal);
        dSum += a_Found.vdReal[i];
    }
    NUV_CHECK(a_iMissing != 0 || Within(dSum, a_H.trace(), static_cast<TLong>(n) * dError));
}

bool SameResults(const TEigenvalues& a_First, const TEigenvalues& a_Second)
{
    return a_First.iResult == a_Second.iResult && SameBits(a_First.vdReal, a_Second.vdReal) &&
           SameBits(a_First.vdImaginary, a_Second.vdImaginary);
}

// a_Original has no elements if its eigenvalues are not to be compared.
void CheckEigenvalues(TStrided& a_H, const TDense& a_Original)
{
    const TEigenvalues Found(a_H);
    NUV_CHECK(Found.iResult == 0 || Found.iResult == 1);
    std::size_t iMissing = 0; // The eigenvalues are found from the last one to the first.
    while (iMissing < a_H.n && SameBits(Found.vdReal[iMissing], Untouched))
    {
        NUV_CHECK(SameBits(Found.vdImaginary[iMissing], Untouched));
        ++iMissing;
    }
    NUV_CHECK((iMissing == 0) == (Found.iResult == 1));
    TStrided Cleared = a_H;
    Cleared.ClearBelowSubdiagonal(); // These elements must not be used.
    NUV_CHECK(SameResults(Found, TEigenvalues(Cleared)));

    const TDense H = a_H.Dense(true);
    const bool bInRange = std::all_of(H.data(), H.data() + H.size(),
                                      [](TLong a_dValue) { return InRange(static_cast<double>(a_dValue), 1e70); });
    if (a_Original.size() > 0 && bInRange)
    {
        CheckAreEigenvalues(H, a_Original, Found, iMissing);
    }
}

void CheckMatrix(TInput& a_Input, bool a_bTame)
{
    TStrided M(a_Input, a_bTame);
    const bool bReduced = a_Input.Flag();
    if (a_Input.Flag())
    {
        CheckBalance(M, a_bTame);
    }
    const TDense Original = a_bTame ? M.Dense(!bReduced) : TDense();
    if (bReduced)
    {
        const TValues vdBefore = M.vdElements;
        M.Run(nuv::ReduceToHessenberg);
        NUV_CHECK(M.n >= 3 || SameBits(M.vdElements, vdBefore));
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
