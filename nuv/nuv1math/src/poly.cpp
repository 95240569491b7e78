// poly.cpp: real roots of a polynomial, as eigenvalues of its companion matrix; the two-unknown linear system.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "poly.h"

#include "functionsimp.h"
#include "nuv1math.h"
#include "vectors.h"

#include <float.h>
#include <limits.h>
#include <limits>
#include <math.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Eigenvalues of a real square matrix
//
// Model      det(A - lambda I) = 0, A real n x n. Rows and columns are counted from 1, as in the papers.
// Method     1. Balancing by powers of 2 until no row and column gain 5 % by it.
//            2. Reduction to upper Hessenberg form by elementary similarity transformations with row pivoting.
//            3. QR iteration with Francis' implicit double shift and exceptional shifts at iterations 10 and 20;
//               eigenvalues split off at the bottom, one or a pair at a time.
// Special    An eigenvalue that needs more than 30 iterations ends the iteration. An infinite column norm is not
//            balanced: no halving would ever bring it into range. Beside that, NaN and infinity are not looked for.
// Order      Convergence is exact equality of sums (a term does not change the sum), so it depends on the order of
//            every operation. A value that several divide by is inverted once.
// Deviation  from the papers: balancing skips a row or column whose norm is exactly 0; multipliers of step 2 stay
//            below the subdiagonal, and step 3 clears only what its sweep reads.
// Source     B. N. Parlett, C. Reinsch, Balancing a matrix for calculation of eigenvalues and eigenvectors, Numer.
//            Math. 13 (1969) 293-304; R. S. Martin, J. H. Wilkinson, Similarity reduction of a general matrix to
//            Hessenberg form, Numer. Math. 12 (1968) 349-368; J. G. F. Francis, The QR transformation, Comput. J. 4
//            (1961-62) 265-271, 332-345; R. S. Martin, G. Peters, J. H. Wilkinson, The QR algorithm for real
//            Hessenberg matrices, Numer. Math. 14 (1970) 219-231.
// ---------------------------------------------------------------------------------------------------------------------

static const double BALANCE_GAIN = 0.95; // a scaling must bring the norms below this part of what they were
// The exceptional shift is that of a 2 x 2 block with these multiples of s and s^2, s being the sum of the magnitudes
// of the two lowest subdiagonal elements.
static const double EXCEPTIONAL_SHIFT = 0.75;      // both diagonal elements
static const double EXCEPTIONAL_PRODUCT = -0.4375; // product of the off-diagonal ones
enum
{
    QR_ITERATIONS = 30,         // at most, for one eigenvalue
    EXCEPTIONAL_ITERATION = 10, // the two iterations with exceptional shifts
    EXCEPTIONAL_ITERATION_2 = 20
};

// The table of column addresses; null where it cannot be had. Released by free.
static double** AllocateColumns(int a_iN, double* a_vdMatrix, int a_iStride)
{
    double** const vvdColumns = static_cast<double**>(AllocateArray(static_cast<size_t>(a_iN), 1, sizeof(double*)));
    if (vvdColumns != NULL)
    {
        for (ptrdiff_t j = 0; j < a_iN; ++j)
        {
            vvdColumns[j] = a_vdMatrix + j * a_iStride;
        }
    }
    return vvdColumns;
}

// Element (i, j), counted from 1.
static double& At(double* const* a_vvdColumns, int i, int j)
{
    return a_vvdColumns[j - 1][i - 1];
}

// Sums of the magnitudes of column i and row i without their diagonal element.
static void CalcOffDiagonalNorms(double* const* A, int a_iN, int i, double& a_dColumn, double& a_dRow)
{
    a_dColumn = 0.0;
    a_dRow = 0.0;
    for (int j = 1; j <= a_iN; ++j)
    {
        if (j != i)
        {
            a_dColumn += fabs(At(A, j, i));
            a_dRow += fabs(At(A, i, j));
        }
    }
}

// Balances row and column i by a power of 2, row divided, column multiplied. False if that would gain too little.
static bool BalanceRowAndColumn(double* const* A, int a_iN, int i)
{
    double dColumn;
    double dRow;
    CalcOffDiagonalNorms(A, a_iN, i, dColumn, dRow);
    if (IsZero(dColumn) || IsZero(dRow) || dColumn > DBL_MAX) // an infinite norm would be halved for ever
    {
        return false;
    }
    const double dNorm = dColumn + dRow;
    const double dLow = dRow * 0.5;
    const double dHigh = dRow * 2.0;
    double dFactor = 1.0;
    while (dColumn < dLow)
    {
        dFactor *= 2.0;
        dColumn *= 4.0;
    }
    while (dColumn > dHigh)
    {
        dFactor *= 0.5;
        dColumn *= 0.25;
    }
    const double dReciprocal = 1.0 / dFactor;
    if (!((dColumn + dRow) * dReciprocal < BALANCE_GAIN * dNorm))
    {
        return false;
    }
    for (int j = 1; j <= a_iN; ++j) // the diagonal element by both, in this order
    {
        At(A, i, j) *= dReciprocal;
        At(A, j, i) *= dFactor;
    }
    return true;
}

void BalanceMatrix(int a_iN, double* a_vdMatrix, int a_iStride)
{
    if (a_iN < 1)
    {
        return;
    }
    double** const A = AllocateColumns(a_iN, a_vdMatrix, a_iStride);
    if (A == NULL)
    {
        return;
    }
    bool bChanged = true;
    while (bChanged)
    {
        bChanged = false;
        for (int i = 1; i <= a_iN; ++i)
        {
            if (BalanceRowAndColumn(A, a_iN, i))
            {
                bChanged = true;
            }
        }
    }
    free(A);
}

// Brings the element of greatest magnitude in column m-1, from row m down, into row m, and the matching columns along.
// The first of equal ones wins. Returns that element, 0 if there is none but zeros (or NaN).
static double PivotHessenbergColumn(double* const* A, int a_iN, int m)
{
    double dPivot = 0.0;
    int iPivot = m;
    for (int j = m; j <= a_iN; ++j)
    {
        if (fabs(At(A, j, m - 1)) > fabs(dPivot))
        {
            dPivot = At(A, j, m - 1);
            iPivot = j;
        }
    }
    if (iPivot != m)
    {
        for (int j = m - 1; j <= a_iN; ++j)
        {
            Swap(At(A, iPivot, j), At(A, m, j));
        }
        for (int j = 1; j <= a_iN; ++j)
        {
            Swap(At(A, j, iPivot), At(A, j, m));
        }
    }
    return dPivot;
}

// Clears column m-1 below row m by row operations, each followed by the column operation that keeps the eigenvalues.
// The multipliers stay in the places cleared.
static void EliminateHessenbergColumn(double* const* A, int a_iN, int m, double a_dPivot)
{
    for (int i = m + 1; i <= a_iN; ++i)
    {
        double dFactor = At(A, i, m - 1);
        if (IsZero(dFactor))
        {
            continue;
        }
        dFactor /= a_dPivot;
        At(A, i, m - 1) = dFactor;
        for (int j = m; j <= a_iN; ++j)
        {
            At(A, i, j) -= At(A, m, j) * dFactor;
        }
        for (int j = 1; j <= a_iN; ++j)
        {
            At(A, j, m) += At(A, j, i) * dFactor;
        }
    }
}

void ReduceToHessenberg(int a_iN, double* a_vdMatrix, int a_iStride)
{
    if (a_iN < 3)
    {
        return;
    }
    double** const A = AllocateColumns(a_iN, a_vdMatrix, a_iStride);
    if (A == NULL)
    {
        return;
    }
    for (int m = 2; m < a_iN; ++m)
    {
        const double dPivot = PivotHessenbergColumn(A, a_iN, m);
        if (!IsZero(dPivot))
        {
            EliminateHessenbergColumn(A, a_iN, m, dPivot);
        }
    }
    free(A);
}

namespace {

// The shift of one QR iteration: diagonal elements x, y and product w of the off-diagonal ones of the 2 x 2 block at
// the bottom, whose eigenvalues are the two shifts.
struct TShift
{
    double dX;
    double dY;
    double dW;
};

// First column of the double step, or the vector that one reflection clears: scaled, its length does not matter.
struct TReflectedVector
{
    double dP;
    double dQ;
    double dR;
};

} // namespace

// Sum of the magnitudes of the Hessenberg part.
static double CalcHessenbergNorm(double* const* A, int a_iN)
{
    double dNorm = 0.0;
    for (int i = 1; i <= a_iN; ++i)
    {
        for (int j = i > 1 ? i - 1 : 1; j <= a_iN; ++j)
        {
            dNorm += fabs(At(A, i, j));
        }
    }
    return dNorm;
}

// Row of the lowest subdiagonal element that is negligible beside its diagonal neighbours (adding it changes nothing),
// from row nn upwards; 1 if there is none. The element is left in place.
static int FindNegligibleSubdiagonal(double* const* A, int nn, double a_dNorm)
{
    for (int l = nn; l >= 2; --l)
    {
        double dNeighbours = fabs(At(A, l - 1, l - 1)) + fabs(At(A, l, l));
        if (IsZero(dNeighbours))
        {
            dNeighbours = a_dNorm;
        }
        if (fabs(At(A, l, l - 1)) + dNeighbours == dNeighbours)
        {
            return l;
        }
    }
    return 1;
}

// The two eigenvalues of the 2 x 2 block in rows nn-1 and nn, stored at these positions.
static void StorePair(const TShift& a_Block, double a_dShifted, int nn, double* a_vdReal, double* a_vdImaginary)
{
    const double dP = 0.5 * (a_Block.dY - a_Block.dX);
    const double dQ = dP * dP + a_Block.dW;
    double dZ = sqrt(fabs(dQ));
    const double dX = a_Block.dX + a_dShifted;
    if (dQ >= 0.0) // two real ones
    {
        dZ = dP >= 0.0 ? dP + dZ : dP - dZ; // the sign that does not cancel
        a_vdReal[nn - 2] = a_vdReal[nn - 1] = dX + dZ;
        if (!IsZero(dZ))
        {
            a_vdReal[nn - 1] = dX - a_Block.dW / dZ;
        }
        a_vdImaginary[nn - 2] = a_vdImaginary[nn - 1] = 0.0;
    }
    else // a complex pair; also for a NaN, whose imaginary parts are then NaN too
    {
        a_vdReal[nn - 2] = a_vdReal[nn - 1] = dX + dP;
        a_vdImaginary[nn - 2] = -dZ;
        a_vdImaginary[nn - 1] = dZ;
    }
}

// Shifts the diagonal by its last element and replaces the block by one with other eigenvalues, which breaks cycles.
static void ApplyExceptionalShift(double* const* A, int nn, double& a_dShifted, TShift& a_Shift)
{
    a_dShifted += a_Shift.dX;
    for (int i = 1; i <= nn; ++i)
    {
        At(A, i, i) -= a_Shift.dX;
    }
    const double dS = fabs(At(A, nn, nn - 1)) + fabs(At(A, nn - 1, nn - 2));
    a_Shift.dX = a_Shift.dY = EXCEPTIONAL_SHIFT * dS;
    a_Shift.dW = dS * dS * EXCEPTIONAL_PRODUCT;
}

// Row where the double step starts, from nn-2 up to l: the lowest one above which two consecutive subdiagonal elements
// are negligible together. a_First receives the first column of the double step there.
static int FindSweepStart(double* const* A, int l, int nn, const TShift& a_Shift, TReflectedVector& a_First)
{
    for (int m = nn - 2;; --m)
    {
        const double dZ = At(A, m, m);
        const double dR = a_Shift.dX - dZ;
        const double dS = a_Shift.dY - dZ;
        const double dP = (dR * dS - a_Shift.dW) / At(A, m + 1, m) + At(A, m, m + 1);
        const double dQ = At(A, m + 1, m + 1) - dZ - dR - dS;
        const double dBelow = At(A, m + 2, m + 1);
        const double dScale = 1.0 / (fabs(dP) + fabs(dQ) + fabs(dBelow));
        a_First.dP = dP * dScale;
        a_First.dQ = dQ * dScale;
        a_First.dR = dBelow * dScale;
        if (m == l)
        {
            return m;
        }
        const double dU = fabs(At(A, m, m - 1)) * (fabs(a_First.dQ) + fabs(a_First.dR));
        const double dV = fabs(a_First.dP) * (fabs(At(A, m - 1, m - 1)) + fabs(dZ) + fabs(At(A, m + 1, m + 1)));
        if (dU + dV == dV)
        {
            return m;
        }
    }
}

// Clears what the sweep reads below the subdiagonal: left-overs of the reduction or of an earlier sweep.
static void ClearBelowSubdiagonal(double* const* A, int m, int nn)
{
    for (int i = m + 2; i <= nn; ++i)
    {
        At(A, i, i - 2) = 0.0;
        if (i != m + 2)
        {
            At(A, i, i - 3) = 0.0;
        }
    }
}

namespace {

// The reflection I - (x, y, z)(1, q, r)^T in rows k, k+1, k+2 (without the third in the last step of a sweep).
struct TReflection
{
    double dX;
    double dY;
    double dZ;
    double dQ;
    double dR;
};

} // namespace

// Rows k ... of the columns k to nn.
static void ReflectRows(double* const* A, int k, int nn, const TReflection& a_H)
{
    const bool bThree = k != nn - 1;
    for (int j = k; j <= nn; ++j)
    {
        double* const vdColumn = &At(A, k, j);
        double dP = vdColumn[0] + a_H.dQ * vdColumn[1];
        if (bThree)
        {
            dP += a_H.dR * vdColumn[2];
            vdColumn[2] -= dP * a_H.dZ;
        }
        vdColumn[1] -= dP * a_H.dY;
        vdColumn[0] -= dP * a_H.dX;
    }
}

#ifdef NUV_VECTORS
static TPair LoadPair(const double* a_vdFrom)
{
    TPair Pair;
    memcpy(&Pair, a_vdFrom, sizeof Pair);
    return Pair;
}
#endif

// Columns k ... of the rows l to k+3, below which they are zero.
static void ReflectColumns(double* const* A, int k, int l, int nn, const TReflection& a_H)
{
    const bool bThree = k != nn - 1;
    const int iLast = nn < k + 3 ? nn : k + 3;
    double* const vdFirst = &At(A, 1, k);
    double* const vdSecond = &At(A, 1, k + 1);
    double* const vdThird = bThree ? &At(A, 1, k + 2) : vdSecond;
    int i = l - 1;
#ifdef NUV_VECTORS
    for (; bThree && i + 2 < k; i += 2) // above row k: a pair of elements just stored one by one would have to wait
    {
        const TPair Second = LoadPair(vdSecond + i);
        const TPair P = a_H.dX * LoadPair(vdFirst + i) + a_H.dY * Second + a_H.dZ * LoadPair(vdThird + i);
        const TPair vAfter[] = {LoadPair(vdFirst + i) - P, Second - P * a_H.dQ, LoadPair(vdThird + i) - P * a_H.dR};
        memcpy(vdFirst + i, &vAfter[0], sizeof P);
        memcpy(vdSecond + i, &vAfter[1], sizeof P);
        memcpy(vdThird + i, &vAfter[2], sizeof P);
    }
#endif
    for (; i < iLast; ++i)
    {
        double dP = a_H.dX * vdFirst[i] + a_H.dY * vdSecond[i];
        if (bThree)
        {
            dP += a_H.dZ * vdThird[i];
            vdThird[i] -= dP * a_H.dR;
        }
        vdSecond[i] -= dP * a_H.dQ;
        vdFirst[i] -= dP;
    }
}

// One step k of the sweep that starts in row m: the reflection that clears column k-1 below row k, from both sides.
static void SweepStep(double* const* A, int k, int m, int l, int nn, TReflectedVector a_V)
{
    double dX = 0.0;
    if (k != m)
    {
        a_V.dP = At(A, k, k - 1);
        a_V.dQ = At(A, k + 1, k - 1);
        a_V.dR = k != nn - 1 ? At(A, k + 2, k - 1) : 0.0;
        dX = fabs(a_V.dP) + fabs(a_V.dQ) + fabs(a_V.dR);
        if (!IsZero(dX))
        {
            const double dScale = 1.0 / dX;
            a_V.dP *= dScale;
            a_V.dQ *= dScale;
            a_V.dR *= dScale;
        }
    }
    const double dLength = sqrt(a_V.dP * a_V.dP + a_V.dQ * a_V.dQ + a_V.dR * a_V.dR);
    const double dS = a_V.dP < 0.0 ? -dLength : dLength; // by value: -0.0 is not negative
    if (IsZero(dS))
    {
        return;
    }
    if (k != m)
    {
        At(A, k, k - 1) = -dS * dX;
    }
    else if (l != m)
    {
        At(A, k, k - 1) = -At(A, k, k - 1);
    }
    const double dP = a_V.dP + dS;
    const double dInvS = 1.0 / dS;
    const double dInvP = 1.0 / dP;
    const TReflection H = {dP * dInvS, a_V.dQ * dInvS, a_V.dR * dInvS, a_V.dQ * dInvP, a_V.dR * dInvP};
    ReflectRows(A, k, nn, H);
    ReflectColumns(A, k, l, nn, H);
}

// One double QR step on rows and columns l to nn.
static void DoubleStep(double* const* A, int l, int nn, const TShift& a_Shift)
{
    TReflectedVector First;
    const int m = FindSweepStart(A, l, nn, a_Shift, First);
    ClearBelowSubdiagonal(A, m, nn);
    for (int k = m; k < nn; ++k)
    {
        SweepStep(A, k, m, l, nn, First);
    }
}

// Iterates until one eigenvalue or a pair splits off at the bottom row nn, and stores it. Returns how many rows have
// split off, 0 if the iterations have run out. a_dShifted is what exceptional shifts have taken off the diagonal.
static int SplitOff(double* const* A, int nn, double a_dNorm, double& a_dShifted, double* a_vdReal,
                    double* a_vdImaginary)
{
    for (int iIteration = 0;; ++iIteration)
    {
        const int l = FindNegligibleSubdiagonal(A, nn, a_dNorm);
        TShift Shift;
        Shift.dX = At(A, nn, nn);
        if (l == nn)
        {
            a_vdReal[nn - 1] = Shift.dX + a_dShifted;
            a_vdImaginary[nn - 1] = 0.0;
            return 1;
        }
        Shift.dY = At(A, nn - 1, nn - 1);
        Shift.dW = At(A, nn, nn - 1) * At(A, nn - 1, nn);
        if (l == nn - 1)
        {
            StorePair(Shift, a_dShifted, nn, a_vdReal, a_vdImaginary);
            return 2;
        }
        if (iIteration == QR_ITERATIONS)
        {
            return 0;
        }
        if (iIteration == EXCEPTIONAL_ITERATION || iIteration == EXCEPTIONAL_ITERATION_2)
        {
            ApplyExceptionalShift(A, nn, a_dShifted, Shift);
        }
        DoubleStep(A, l, nn, Shift);
    }
}

int HessenbergEigenvalues(int a_iN, double* a_vdMatrix, int a_iStride, double* a_vdReal, double* a_vdImaginary)
{
    if (a_iN < 1)
    {
        return 1;
    }
    double** const A = AllocateColumns(a_iN, a_vdMatrix, a_iStride);
    if (A == NULL)
    {
        return 0;
    }
    const double dNorm = CalcHessenbergNorm(A, a_iN);
    double dShifted = 0.0;
    int iSplit = 1;
    for (int nn = a_iN; nn >= 1 && iSplit != 0; nn -= iSplit)
    {
        iSplit = SplitOff(A, nn, dNorm, dShifted, a_vdReal, a_vdImaginary);
    }
    free(A);
    return iSplit != 0 ? 1 : 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Real roots of a polynomial
//
// Model      a(0) x^n + a(1) x^(n-1) + ... + a(n) = 0, real coefficients, any degree.
// Method     Leading zeros lower the degree, trailing zeros are roots 0. The rest, made monic, is the characteristic
//            polynomial of its companion matrix: coefficients -a(j)/a(0) in the first row, ones on the subdiagonal.
//            Its eigenvalues with an imaginary part below the caller's tolerance are the real roots.
// Special    All coefficients zero: every x solves. A constant: none does. An eigenvalue that the iteration did not
//            find keeps the NaN that its imaginary part was filled with, and is never reported.
// Order      Zero roots first, then in the order of the eigenvalue positions; not sorted, not merged, not polished.
// Source     A. Edelman, H. Murakami, Polynomial roots from companion matrix eigenvalues, Math. Comp. 64 (1995)
//            763-776.
// ---------------------------------------------------------------------------------------------------------------------

// The companion matrix, column by column, of a polynomial of degree a_iDegree with a_vdA[0] and a_vdA[a_iDegree] not 0.
static void FillCompanionMatrix(size_t a_iDegree, const double* a_vdA, double* a_vdMatrix)
{
    memset(a_vdMatrix, 0, a_iDegree * a_iDegree * sizeof(double));
    for (size_t k = 0; k + 1 < a_iDegree; ++k)
    {
        a_vdMatrix[k * a_iDegree + k + 1] = 1.0;
    }
    const double dFactor = -1.0 / a_vdA[0]; // multiplied, not divided by: the bits of the first row depend on it
    for (size_t j = 0; j < a_iDegree; ++j)
    {
        a_vdMatrix[j * a_iDegree] = a_vdA[j + 1] * dFactor;
    }
}

namespace {

// Scratch of the roots of degree m: three allocations, of which any may have failed.
struct TCompanionScratch
{
    double* vdMatrix;    // m * m
    double* vdReal;      // m
    double* vdImaginary; // m
};

} // namespace

// Writes the real eigenvalues of the companion matrix to the roots; returns how many.
static int WriteRealEigenvalues(size_t a_iDegree, const double* a_vdA, double a_dTolerance,
                                const TCompanionScratch& a_Scratch, double* a_vdRoots)
{
    const int iDegree = static_cast<int>(a_iDegree);
    FillCompanionMatrix(a_iDegree, a_vdA, a_Scratch.vdMatrix);
    for (int i = 0; i < iDegree; ++i)
    {
        a_Scratch.vdImaginary[i] = std::numeric_limits<double>::quiet_NaN();
    }
    BalanceMatrix(iDegree, a_Scratch.vdMatrix, iDegree);
    ReduceToHessenberg(iDegree, a_Scratch.vdMatrix, iDegree);
    HessenbergEigenvalues(iDegree, a_Scratch.vdMatrix, iDegree, a_Scratch.vdReal, a_Scratch.vdImaginary);

    int iCount = 0;
    for (int i = 0; i < iDegree; ++i)
    {
        if (fabs(a_Scratch.vdImaginary[i]) < a_dTolerance)
        {
            a_vdRoots[iCount] = a_Scratch.vdReal[i]; // NOLINT: written wherever the imaginary part is
            ++iCount;
        }
    }
    return iCount;
}

// Writes the real roots of a polynomial with a_vdA[0] and a_vdA[a_iDegree] not 0; false if there is no memory for that.
static bool WriteNonZeroRoots(size_t a_iDegree, const double* a_vdA, double a_dTolerance, double* a_vdRoots,
                              int& a_iCount)
{
    const TCompanionScratch Scratch = {AllocateDoubles(a_iDegree, a_iDegree), AllocateDoubles(a_iDegree, 1),
                                       AllocateDoubles(a_iDegree, 1)};
    const bool bAllocated = Scratch.vdMatrix != NULL && Scratch.vdReal != NULL && Scratch.vdImaginary != NULL;
    if (bAllocated)
    {
        a_iCount = WriteRealEigenvalues(a_iDegree, a_vdA, a_dTolerance, Scratch, a_vdRoots);
    }
    free(Scratch.vdMatrix);
    free(Scratch.vdReal);
    free(Scratch.vdImaginary);
    return bAllocated;
}

int Roots(unsigned int iDegree, const double* vdA, double* a_vdRoots, double a_dTolerance)
{
    unsigned int iFirst = 0;
    while (iFirst < iDegree && IsZero(vdA[iFirst]))
    {
        ++iFirst;
    }
    if (IsZero(vdA[iFirst]))
    {
        return RET_INDETERMINATE;
    }
    if (iFirst == iDegree)
    {
        // The text of the condition is part of the report.
        // clang-format off
        // unreachable: it is the last coefficient that is not 0
        NUV_ASSERT_AT("nuv\\nuv1math\\src\\poly.cpp", 38, vdA[ iDegree] != 0);
        // clang-format on
        return RET_IMPOSSIBLE;
    }
    unsigned int iLast = iDegree;
    while (IsZero(vdA[iLast]))
    {
        --iLast;
    }
    const unsigned int iZeros = iDegree - iLast;
    for (unsigned int i = 0; i < iZeros; ++i)
    {
        a_vdRoots[i] = 0.0;
    }
    if (iDegree - iFirst > static_cast<unsigned int>(INT_MAX))
    {
        return 0; // more roots than int counts, and a matrix that no memory holds
    }
    int iCount = 0;
    if (iLast != iFirst && !WriteNonZeroRoots(iLast - iFirst, vdA + iFirst, a_dTolerance, a_vdRoots + iZeros, iCount))
    {
        return 0;
    }
    return static_cast<int>(iZeros) + iCount;
}

// ---------------------------------------------------------------------------------------------------------------------
// Two-unknown linear system
//
// Model      a11 x + a12 y = b1, a21 x + a22 y = b2.
// Method     Cramer's rule with one division.
// Special    A determinant within the degeneracy tolerance: only the numerator of x decides whether the system counts
//            as indeterminate or impossible. That of y is left out, and is kept so: all coefficients 0 are
//            indeterminate whatever the right-hand side. A NaN determinant is no zero and gives NaN.
// ---------------------------------------------------------------------------------------------------------------------

int Roots(double a_dA11, double a_dA12, double a_dA21, double a_dA22, double a_dB1, double a_dB2, double& a_dX,
          double& a_dY)
{
    const double dDet = a_dA11 * a_dA22 - a_dA12 * a_dA21;
    const double dNumeratorX = a_dA22 * a_dB1 - a_dA12 * a_dB2;
    if (IsNegligible(dDet))
    {
        return IsNegligible(dNumeratorX) ? RET_INDETERMINATE : RET_IMPOSSIBLE;
    }
    const double dReciprocal = 1.0 / dDet;
    a_dX = dNumeratorX * dReciprocal;
    a_dY = (a_dA11 * a_dB2 - a_dA21 * a_dB1) * dReciprocal;
    return RET_SUCCESS;
}

} // namespace nuv
