// affine.cpp: affine and conformal coefficients: inverses and conversions; the Gaussian elimination of the fits.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "affine.h"

#include "functionsimp.h"
#include "nuv1math.h"

#include <limits>
#include <math.h>
#include <stddef.h>

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Inverses and other forms of the coefficients
//
// Special    A negligible determinant has no inverse. AffineUntransform solves for one point and reports a system
//            without solution, because the caller promises a regular transformation.
// Order      A divisor that several values share is inverted once, and the reciprocal is multiplied. A negation comes
//            after its product: a zero product gives -0.0.
// ---------------------------------------------------------------------------------------------------------------------

int AffineCoefsToInvCoefs(const TAffineCoefs& a_Coefs, TAffineCoefs& a_Inverse)
{
    const double dDet = a_Coefs.dA * a_Coefs.dE - a_Coefs.dD * a_Coefs.dB;
    if (IsNegligible(dDet))
    {
        return RET_IMPOSSIBLE;
    }
    // The fields are stored one by one in this order. If input and output are the same record, which is not supported,
    // the wrong values are the same on every platform.
    const double dReciprocal = Quotient(1.0, dDet);
    a_Inverse.dA = dReciprocal * a_Coefs.dE;
    a_Inverse.dB = -(a_Coefs.dB * dReciprocal);
    a_Inverse.dC = (a_Coefs.dF * a_Coefs.dB - a_Coefs.dE * a_Coefs.dC) * dReciprocal;
    a_Inverse.dD = -(a_Coefs.dD * dReciprocal);
    a_Inverse.dE = a_Coefs.dA * dReciprocal;
    a_Inverse.dF = (a_Coefs.dD * a_Coefs.dC - a_Coefs.dF * a_Coefs.dA) * dReciprocal;
    return RET_SUCCESS;
}

void AffineUntransform(const TAffineCoefs& a_Coefs, double a_dXa, double a_dYa, double& a_dX, double& a_dY)
{
    const int iResult =
        Roots(a_Coefs.dA, a_Coefs.dB, a_Coefs.dD, a_Coefs.dE, a_dXa - a_Coefs.dC, a_dYa - a_Coefs.dF, a_dX, a_dY);
    // The report shows the text of the condition, also its spaces.
    // clang-format off
    NUV_ASSERT_AT("nuv\\nuv1math\\src\\affine.cpp", 443, iResult!= RET_IMPOSSIBLE);
    // clang-format on
    if (iResult == RET_INDETERMINATE)
    {
        a_dX = 0.0;
        a_dY = 0.0;
    }
}

void ConformalCoefsToInvCoefs(const TConformalCoefs& a_Coefs, TConformalCoefs& a_Inverse)
{
    // The fields are stored in this order for the reason that AffineCoefsToInvCoefs gives.
    a_Inverse.dA = a_Coefs.dInvA;
    a_Inverse.dB = a_Coefs.dInvB;
    a_Inverse.dInvA = a_Coefs.dA;
    a_Inverse.dInvB = a_Coefs.dB;
    a_Inverse.dTx = -(a_Coefs.dInvA * a_Coefs.dTx) - a_Coefs.dInvB * a_Coefs.dTy;
    a_Inverse.dTy = a_Coefs.dInvB * a_Coefs.dTx - a_Coefs.dInvA * a_Coefs.dTy;
}

void ConformalCoefsToAffineCoefs(const TConformalCoefs& a_Coefs, TAffineCoefs& a_Affine)
{
    a_Affine.dA = a_Coefs.dA;
    a_Affine.dB = a_Coefs.dB;
    a_Affine.dC = a_Coefs.dTx;
    a_Affine.dD = -a_Coefs.dB;
    a_Affine.dE = a_Coefs.dA;
    a_Affine.dF = a_Coefs.dTy;
}

// ---------------------------------------------------------------------------------------------------------------------
// Dense Gaussian elimination
//
// Model      A X = B with A of n x n and several right-hand sides, column by column with leading dimensions.
// Method     Elimination with row pivoting. Every pivot row is divided by its pivot. So the factor is unit upper
//            triangular, and the back substitution divides by 1.
// Special    A pivot of exactly 0 becomes 1e-14, and the elimination goes on. A tiny pivot is used as it is.
// Order      An update multiplies first and then adds: (pivot row element) g + element. Scaling by exactly 1 and
//            updates with a factor of exactly 0 are skipped. The second skip also keeps 0 * inf out of rows that need
//            no update.
// Source     G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed., sections 3.1 and 3.4.
// ---------------------------------------------------------------------------------------------------------------------

static const double PIVOT_REPLACEMENT = 1e-14; // for a pivot of exactly 0

int MaxAbsIndex(int a_iN, const double* a_vdX, int a_iIncX)
{
    if (a_iN < 1) // equivalent: with fewer elements the loop does nothing
    {
        return 0;
    }
    int iMax = 0;
    double dMax = a_vdX[0];
    for (int i = 1; i < a_iN; ++i)
    {
        const double dValue = a_vdX[static_cast<ptrdiff_t>(i) * a_iIncX];
        if (IsSmaller(dMax, dValue))
        {
            dMax = dValue;
            iMax = i;
        }
    }
    return iMax;
}

// Solves one row of the back substitution for a_dX. False if the row is inconsistent.
static bool SolveUpperTriRow(double a_dDiagonal, double a_dRest, double& a_dX)
{
    if (IsOne(a_dDiagonal)) // always, after SolveGauss
    {
        a_dX = a_dRest;
        return true;
    }
    if (!IsZero(a_dDiagonal))
    {
        a_dX = Quotient(a_dRest, a_dDiagonal);
        return true;
    }
    if (IsNegligible(a_dRest))
    {
        a_dX = 0.0;
        return true;
    }
    return false;
}

// The mark of a failed back substitution: infinity from the last element of x forward, not backward.
static void MarkAsFailed(ptrdiff_t a_iN, ptrdiff_t a_iIncX, double* a_vdX)
{
    for (ptrdiff_t i = 0; i < a_iN; ++i)
    {
        a_vdX[(a_iN - 1 + i) * a_iIncX] = std::numeric_limits<double>::infinity();
    }
}

int SolveUpperTri(int a_iN, const double* a_vdU, int a_iLdu, const double* a_vdB, int a_iIncB, double* a_vdX,
                  int a_iIncX)
{
    if (a_iN < 1) // equivalent: without rows the loops do nothing
    {
        return 1;
    }
    const ptrdiff_t iLdu = a_iLdu;
    const ptrdiff_t iIncB = a_iIncB;
    const ptrdiff_t iIncX = a_iIncX;
    const ptrdiff_t iLast = a_iN - 1;

    bool bConsistent = true;
    for (ptrdiff_t i = iLast; i >= 0 && bConsistent; --i)
    {
        double dRest = a_vdB[i * iIncB];
        if (i != iLast) // the last row has no products: subtracting 0 would only cost an operation
        {
            double dSum = 0.0;
            for (ptrdiff_t j = iLast; j > i; --j) // from the last unknown to the first
            {
                dSum = a_vdU[j * iLdu + i] * a_vdX[j * iIncX] + dSum;
            }
            dRest -= dSum;
        }
        bConsistent = SolveUpperTriRow(a_vdU[i * iLdu + i], dRest, a_vdX[i * iIncX]);
    }
    if (!bConsistent) // never after SolveGauss
    {
        MarkAsFailed(a_iN, iIncX, a_vdX);
        return 0;
    }
    return 1;
}

namespace {

// The system under elimination: element (i, j) of A at j*lda + i, of B at j*ldb + i.
struct TGaussSystem
{
    ptrdiff_t iN;    // rows and columns of A, rows of B
    ptrdiff_t iNrhs; // columns of B
    double* vdA;
    ptrdiff_t iLda;
    double* vdB;
    ptrdiff_t iLdb;
};

} // namespace

// Swaps rows k and p of A and of every right-hand side. The columns of A before k have only zeros there.
static void SwapRows(const TGaussSystem& a_System, ptrdiff_t k, ptrdiff_t p)
{
    for (ptrdiff_t j = k; j < a_System.iN; ++j)
    {
        double* const vdColumn = a_System.vdA + j * a_System.iLda;
        Swap(vdColumn[k], vdColumn[p]);
    }
    for (ptrdiff_t j = 0; j < a_System.iNrhs; ++j)
    {
        double* const vdColumn = a_System.vdB + j * a_System.iLdb;
        Swap(vdColumn[k], vdColumn[p]);
    }
}

// Divides row k by its pivot A(k,k). The pivot becomes exactly 1.
static void NormaliseRow(const TGaussSystem& a_System, ptrdiff_t k)
{
    double& dPivot = a_System.vdA[k * a_System.iLda + k];
    if (IsZero(dPivot))
    {
        dPivot = PIVOT_REPLACEMENT;
    }
    const double dReciprocal = Quotient(1.0, dPivot);
    dPivot = 1.0;
    if (IsOne(dReciprocal)) // equivalent: a product with 1 is the same
    {
        return;
    }
    for (ptrdiff_t j = k + 1; j < a_System.iN; ++j)
    {
        a_System.vdA[j * a_System.iLda + k] *= dReciprocal;
    }
    for (ptrdiff_t j = 0; j < a_System.iNrhs; ++j)
    {
        a_System.vdB[j * a_System.iLdb + k] *= dReciprocal;
    }
}

// Adds to each element of a row the multiple of the pivot row's element in the same column, a_iToPivot further on.
static void AddMultiples(ptrdiff_t a_iColumns, double a_dFactor, ptrdiff_t a_iToPivot, double* a_pElement,
                         ptrdiff_t a_iStride)
{
    for (ptrdiff_t j = 0; j < a_iColumns; ++j)
    {
        *a_pElement = a_pElement[a_iToPivot] * a_dFactor + *a_pElement;
        a_pElement += a_iStride;
    }
}

// Adds the multiple of pivot row k to row i that makes A(i,k) zero.
static void EliminateRow(const TGaussSystem& a_System, ptrdiff_t k, ptrdiff_t i)
{
    double& dBelowPivot = a_System.vdA[k * a_System.iLda + i];
    const double dFactor = -dBelowPivot;
    dBelowPivot = 0.0;
    if (IsZero(dFactor))
    {
        return;
    }
    AddMultiples(a_System.iN - (k + 1), dFactor, k - i, &dBelowPivot + a_System.iLda, a_System.iLda);
    AddMultiples(a_System.iNrhs, dFactor, k - i, a_System.vdB + i, a_System.iLdb);
}

int SolveGauss(int a_iN, int a_iNrhs, double* a_vdA, int a_iLda, double* a_vdB, int a_iLdb, double* a_vdX, int a_iLdx)
{
    if (a_iN < 1) // equivalent: without rows the loops do nothing
    {
        return 1;
    }
    const TGaussSystem System = {a_iN, a_iNrhs, a_vdA, a_iLda, a_vdB, a_iLdb};
    for (ptrdiff_t k = 0; k < System.iN; ++k)
    {
        const int iPivot = MaxAbsIndex(static_cast<int>(System.iN - k), a_vdA + k * System.iLda + k, 1);
        if (iPivot != 0)
        {
            SwapRows(System, k, k + iPivot);
        }
        NormaliseRow(System, k);
        for (ptrdiff_t i = k + 1; i < System.iN; ++i)
        {
            EliminateRow(System, k, i);
        }
    }
    int iResult = 0;
    ptrdiff_t j = 0;
    do // there is at least one right-hand side; the first failure ends the loop
    {
        iResult = SolveUpperTri(a_iN, a_vdA, a_iLda, a_vdB + j * System.iLdb, 1,
                                a_vdX + j * static_cast<ptrdiff_t>(a_iLdx), 1);
        ++j;
    } while (iResult != 0 && j < System.iNrhs); // unreachable: the diagonal is 1, so no substitution fails
    return iResult;
}

} // namespace nuv
