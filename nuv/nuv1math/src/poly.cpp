// poly.cpp: real roots of a polynomial, as eigenvalues of its companion matrix; linear systems of two unknowns.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "poly.h"

#include "fast/polyfast.h"
#include "functionsimp.h"
#include "nuv1math.h"

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
// Method     1. Balancing by powers of 2, until no row and column gain 5 % by it.
//            2. Reduction to upper Hessenberg form by elementary similarity transformations with row pivoting.
//            3. QR iteration with the implicit double shift of Francis. The shifts of iterations 10 and 20 are
//               exceptional. Eigenvalues split off at the bottom, one or a pair at a time.
// Special    An eigenvalue that needs more than 30 iterations ends the iteration. A column whose norm is infinite is
//            not balanced, because no halving brings the norm into range. NaN and infinity are not looked for
//            elsewhere.
// Order      Convergence means that a term does not change a sum. So it depends on the order of every operation. A
//            value that several others are divided by is inverted once.
// Deviation  from the papers: balancing skips a row or column whose norm is exactly 0. The multipliers of step 2 stay
//            below the subdiagonal, and step 3 clears only the elements that its sweep reads.
// Faster     fast/polyfast.h.
// Source     B. N. Parlett, C. Reinsch, Balancing a matrix for calculation of eigenvalues and eigenvectors, Numer.
//            Math. 13 (1969) 293-304; R. S. Martin, J. H. Wilkinson, Similarity reduction of a general matrix to
//            Hessenberg form, Numer. Math. 12 (1968) 349-368; J. G. F. Francis, The QR transformation, Comput. J. 4
//            (1961-62) 265-271, 332-345; R. S. Martin, G. Peters, J. H. Wilkinson, The QR algorithm for real
//            Hessenberg matrices, Numer. Math. 14 (1970) 219-231.
// ---------------------------------------------------------------------------------------------------------------------

static const double BALANCE_GAIN = 0.95; // a scaling must bring the sum of both norms below this part of what it was
// The shifts of an exceptional iteration are the eigenvalues of a 2 x 2 block that is made of s, the sum of the
// magnitudes of the two lowest subdiagonal elements.
static const double EXCEPTIONAL_SHIFT = 0.75;      // times s: both diagonal elements
static const double EXCEPTIONAL_PRODUCT = -0.4375; // times s^2: the product of the off-diagonal elements
enum
{
    QR_ITERATIONS = 30,         // the most for one eigenvalue
    EXCEPTIONAL_ITERATION = 10, // the two iterations with exceptional shifts
    EXCEPTIONAL_ITERATION_2 = 20
};

// The table of the column addresses. Null if there is no memory for it. The caller releases it by free.
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

// The sums of the magnitudes of column i and of row i, without the diagonal element.
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

// Divides row i and multiplies column i by a power of 2, so that their norms become comparable. False if that would
// gain too little; nothing is changed then.
static bool BalanceRowAndColumn(double* const* A, int a_iN, int i)
{
    double dColumn;
    double dRow;
    CalcOffDiagonalNorms(A, a_iN, i, dColumn, dRow);
    if (IsZero(dColumn) || IsZero(dRow) || dColumn > DBL_MAX) // halving would never end for infinity
    {
        return false;
    }
    const double dNorm = dColumn + dRow;
    const double dLow = dRow * 0.5;
    const double dHigh = dRow * 2.0;
    double dFactor = 1.0;
    while (IsSmaller(dColumn, dLow))
    {
        dFactor *= 2.0;
        dColumn *= 4.0;
    }
    while (IsSmaller(dHigh, dColumn))
    {
        dFactor *= 0.5;
        dColumn *= 0.25;
    }
    const double dReciprocal = Quotient(1.0, dFactor);
    if (!IsSmaller((dColumn + dRow) * dReciprocal, BALANCE_GAIN * dNorm))
    {
        return false;
    }
    for (int j = 1; j <= a_iN; ++j) // the diagonal element takes both factors, in this order
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

// Finds the element of greatest magnitude in column m-1 from row m down, the first of equal ones. Swaps its row with
// row m, and the columns of the same numbers. Returns the element; 0 if all are zero or NaN.
static double PivotHessenbergColumn(double* const* A, int a_iN, int m)
{
    double dPivot = 0.0;
    int iPivot = m;
    for (int j = m; j <= a_iN; ++j)
    {
        if (IsSmaller(dPivot, At(A, j, m - 1)))
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

// Eliminates column m-1 below row m by row operations. The column operation that follows each of them keeps the
// eigenvalues. The multipliers stay in the eliminated places.
static void EliminateHessenbergColumn(double* const* A, int a_iN, int m, double a_dPivot)
{
    for (int i = m + 1; i <= a_iN; ++i)
    {
        double dFactor = At(A, i, m - 1);
        if (IsZero(dFactor))
        {
            continue;
        }
        dFactor = Quotient(dFactor, a_dPivot);
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
    for (int m = 2; m < a_iN; ++m) // equivalent: below the last column there is nothing to clear
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

// The shift of one QR iteration. The two shifts are the eigenvalues of a 2 x 2 block: x and y are its diagonal
// elements, w is the product of its off-diagonal elements. Usually it is the block at the bottom of the matrix.
struct TShift
{
    double dX;
    double dY;
    double dW;
};

} // namespace

// Sum of the magnitudes of the upper triangle and the subdiagonal.
static double CalcHessenbergNorm(double* const* A, int a_iN)
{
    double dNorm = 0.0;
    for (int i = 1; i <= a_iN; ++i)
    {
        for (int j = i > 1 ? i - 1 : 1; j <= a_iN; ++j) // equivalent: 1 either way
        {
            dNorm += fabs(At(A, i, j));
        }
    }
    return dNorm;
}

// Row of the lowest subdiagonal element, in row nn or above, that is negligible beside its diagonal neighbours: adding
// it to them changes nothing. 1 if there is none. The element is left in place.
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

// Stores the two eigenvalues of the 2 x 2 block in rows nn-1 and nn at these positions.
static void StorePair(const TShift& a_Block, double a_dShifted, int nn, double* a_vdReal, double* a_vdImaginary)
{
    const double dP = 0.5 * (a_Block.dY - a_Block.dX);
    const double dQ = dP * dP + a_Block.dW;
    double dZ = SquareRoot(fabs(dQ));
    const double dX = a_Block.dX + a_dShifted;
    if (dQ >= 0.0) // two real ones
    {
        dZ = dP >= 0.0 ? dP + dZ : dP - dZ; // the sign that does not cancel
        a_vdReal[nn - 2] = a_vdReal[nn - 1] = dX + dZ;
        if (!IsZero(dZ))
        {
            a_vdReal[nn - 1] = dX - Quotient(a_Block.dW, dZ);
        }
        a_vdImaginary[nn - 2] = a_vdImaginary[nn - 1] = 0.0;
    }
    else // a complex pair. A NaN gets here too, and makes the imaginary parts NaN.
    {
        a_vdReal[nn - 2] = a_vdReal[nn - 1] = dX + dP;
        a_vdImaginary[nn - 2] = -dZ;
        a_vdImaginary[nn - 1] = dZ;
    }
}

// Subtracts the last element of the diagonal from the whole diagonal, and takes the shifts from another block. That
// breaks cycles of the iteration.
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

// Row where the double step starts. From row nn-2 upwards it is the first one above which two consecutive subdiagonal
// elements are negligible together, or row l. a_First receives the first column of the double step there.
static int FindSweepStart(double* const* A, int l, int nn, const TShift& a_Shift, TReflectedVector& a_First)
{
    for (int m = nn - 2;; --m)
    {
        const double dZ = At(A, m, m);
        const double dR = a_Shift.dX - dZ;
        const double dS = a_Shift.dY - dZ;
        const double dP = Quotient(dR * dS - a_Shift.dW, At(A, m + 1, m)) + At(A, m, m + 1);
        const double dQ = At(A, m + 1, m + 1) - dZ - dR - dS;
        const double dBelow = At(A, m + 2, m + 1);
        const double dScale = Quotient(1.0, fabs(dP) + fabs(dQ) + fabs(dBelow)); // equivalent: a common factor cancels
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

// Clears the elements below the subdiagonal that the sweep reads. They hold multipliers of the reduction or rests of an
// earlier sweep.
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

// Reflects rows k, k+1 and k+2 in the columns k to nn.
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

// Reflects columns k, k+1 and k+2 in the rows l to k+3. Below these the columns are zero.
static void ReflectColumns(double* const* A, int k, int l, int nn, const TReflection& a_H)
{
    const bool bThree = k != nn - 1;
    const int iLast = nn < k + 3 ? nn : k + 3; // equivalent: at the limit both are the same
    double* const vdFirst = &At(A, 1, k);
    double* const vdSecond = &At(A, 1, k + 1);
    double* const vdThird = bThree ? &At(A, 1, k + 2) : vdSecond;
    for (int i = l - 1; i < iLast; ++i)
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

// Loads the vector that the step behind step k reflects: column k from row k+1 down.
static void LoadNextVector(double* const* A, int k, int nn, TReflectedVector& a_V)
{
    if (k < nn - 1)
    {
        a_V.dP = At(A, k + 1, k);
        a_V.dQ = At(A, k + 2, k);
        a_V.dR = k + 1 != nn - 1 ? At(A, k + 3, k) : 0.0;
    }
}

// Divides the vector by the sum of its magnitudes, which is returned.
static double ScaleVector(TReflectedVector& a_V)
{
    const double dScale = fabs(a_V.dP) + fabs(a_V.dQ) + fabs(a_V.dR);
    if (!IsZero(dScale))
    {
        const double dReciprocal = Quotient(1.0, dScale);
        a_V.dP *= dReciprocal;
        a_V.dQ *= dReciprocal;
        a_V.dR *= dReciprocal;
    }
    return dScale;
}

// Step k of the sweep that starts in row m: the reflection of a vector that clears column k-1 below row k, from both
// sides. The vector of the first step, k = m, is scaled already. It is replaced by that of the next step.
static NUV_HOST_INLINE void SweepStep(double* const* A, int k, int m, int l, int nn, TReflectedVector& a_V)
{
    const double dScale = k != m ? ScaleVector(a_V) : 0.0;
    const double dLength = SquareRoot(a_V.dP * a_V.dP + a_V.dQ * a_V.dQ + a_V.dR * a_V.dR);
    const double dS = a_V.dP < 0.0 ? -dLength : dLength; // by value: -0.0 is not negative
    if (IsZero(dS))
    {
        LoadNextVector(A, k, nn, a_V);
        return;
    }
    if (k != m)
    {
        At(A, k, k - 1) = -dS * dScale;
    }
    else if (l != m)
    {
        At(A, k, k - 1) = -At(A, k, k - 1);
    }
    const double dP = a_V.dP + dS;
    const double dInvS = Quotient(1.0, dS);
    const double dInvP = Quotient(1.0, dP);
    const TReflection H = {dP * dInvS, a_V.dQ * dInvS, a_V.dR * dInvS, a_V.dQ * dInvP, a_V.dR * dInvP};
    if (HAS_VECTORS && k != nn - 1) // equivalent: both forms give the same bits
    {
        ReflectBothSides(A, k, l, nn, H, a_V);
        return;
    }
    ReflectRows(A, k, nn, H);
    ReflectColumns(A, k, l, nn, H);
    LoadNextVector(A, k, nn, a_V);
}

// One double QR step in the rows and columns l to nn.
static void DoubleStep(double* const* A, int l, int nn, const TShift& a_Shift)
{
    TReflectedVector V;
    const int m = FindSweepStart(A, l, nn, a_Shift, V);
    ClearBelowSubdiagonal(A, m, nn);
    for (int k = m; k < nn; ++k)
    {
        SweepStep(A, k, m, l, nn, V);
    }
}

// Iterates until one eigenvalue or a pair splits off at the bottom row nn, and stores it. Returns how many rows have
// split off; 0 if the iterations have run out. a_dShifted is the sum of what exceptional shifts have subtracted.
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
    int iSplit = 1; // equivalent: any number but 0
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
// Method     Leading zeros lower the degree. Trailing zeros are roots 0. The rest, divided by its first coefficient, is
//            the characteristic polynomial of its companion matrix: the first row is -a(j)/a(0), the subdiagonal is 1.
//            The eigenvalues with an imaginary part below the caller's tolerance are the real roots.
// Special    If all coefficients are zero, every x is a root. A constant has no root. The imaginary parts are filled
//            with NaN first: an eigenvalue that the iteration does not find keeps it and is never reported.
// Order      The roots 0 come first, then the others in the order of the positions of their eigenvalues. They are not
//            sorted, merged or polished.
// Source     A. Edelman, H. Murakami, Polynomial roots from companion matrix eigenvalues, Math. Comp. 64 (1995)
//            763-776.
// ---------------------------------------------------------------------------------------------------------------------

// Fills in the companion matrix, column by column, of a polynomial whose first and last coefficients are not 0.
static void FillCompanionMatrix(size_t a_iDegree, const double* a_vdA, double* a_vdMatrix)
{
    memset(a_vdMatrix, 0, a_iDegree * a_iDegree * sizeof(double));
    for (size_t k = 0; k + 1 < a_iDegree; ++k)
    {
        a_vdMatrix[k * a_iDegree + k + 1] = 1.0;
    }
    const double dFactor = Quotient(-1.0, a_vdA[0]); // a quotient for each coefficient would round differently
    for (size_t j = 0; j < a_iDegree; ++j)
    {
        a_vdMatrix[j * a_iDegree] = a_vdA[j + 1] * dFactor;
    }
}

namespace {

// The scratch for degree m: three arrays.
struct TCompanionScratch
{
    double* vdMatrix;    // m * m
    double* vdReal;      // m
    double* vdImaginary; // m
};

} // namespace

// Writes the real eigenvalues of the companion matrix to the roots. Returns how many there are.
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

// Writes the real roots of a polynomial whose first and last coefficients are not 0. False if there is no memory for
// the scratch.
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

// Position of the first coefficient that is not 0. The last position counts as the first one if all others are 0.
static unsigned int FindFirstCoefficient(unsigned int a_iDegree, const double* a_vdA)
{
    unsigned int iFirst = 0;
    while (iFirst < a_iDegree && IsZero(a_vdA[iFirst]))
    {
        ++iFirst;
    }
    return iFirst;
}

// Position of the last coefficient that is not 0. There is one.
static unsigned int FindLastCoefficient(unsigned int a_iDegree, const double* a_vdA)
{
    unsigned int iLast = a_iDegree;
    while (IsZero(a_vdA[iLast]))
    {
        --iLast;
    }
    return iLast;
}

int Roots(unsigned int iDegree, const double* vdA, double* a_vdRoots, double a_dTolerance)
{
    const unsigned int iFirst = FindFirstCoefficient(iDegree, vdA);
    if (IsZero(vdA[iFirst]))
    {
        return RET_INDETERMINATE;
    }
    if (iFirst == iDegree)
    {
        // The report shows the text of the condition, also its spaces.
        // clang-format off
        // unreachable: it is the last coefficient that is not 0
        NUV_ASSERT_AT("nuv\\nuv1math\\src\\poly.cpp", 38, vdA[ iDegree] != 0);
        // clang-format on
        return RET_IMPOSSIBLE;
    }
    const unsigned int iLast = FindLastCoefficient(iDegree, vdA);
    const unsigned int iZeros = iDegree - iLast;
    for (unsigned int i = 0; i < iZeros; ++i)
    {
        a_vdRoots[i] = 0.0;
    }
    if (iDegree - iFirst > static_cast<unsigned int>(INT_MAX)) // equivalent: no memory holds such a matrix
    {
        return 0; // there are more roots than int counts
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
// Special    If the determinant is negligible, the numerator of x alone decides between indeterminate and impossible.
//            The numerator of y is not looked at. So a system whose coefficients are all 0 is indeterminate whatever
//            its right-hand side is. A NaN determinant is not negligible, and gives NaN.
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
    const double dReciprocal = Quotient(1.0, dDet);
    a_dX = dNumeratorX * dReciprocal;
    a_dY = (a_dA11 * a_dB2 - a_dA21 * a_dB1) * dReciprocal;
    return RET_SUCCESS;
}

} // namespace nuv
