// affine.cpp: affine and conformal transformations: conversions, inverses, least-squares fits.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "affine.h"

#include "functionsimp.h"
#include "nuv1math.h"
#include "vectors.h"

#include <limits>
#include <math.h>
#include <stddef.h>

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Affine coefficients and parameters
//
// Model      X = a x + b y + c, Y = d x + e y + f, with a = sx cos(theta), b = sy (cos(theta) tan(phi) - sin(theta)),
//            d = sx sin(theta), e = sy (sin(theta) tan(phi) + cos(theta)), c = tx, f = ty.
// Method     The way back takes the rotation theta = atan2(d, a) off the second column: with the unit vector
//            (u, v) = (a, d)/sx, sy = e u - b v and sy tan(phi) = e v + b u.
// Special    sx = 0 has no rotation and sy = 0 no skew: both are reported. A mirror image is a negative sy. Skews of
//            +-pi/2 give whatever tan gives there.
// Order      Shared products are formed once; divisors are inverted once and multiplied.
// ---------------------------------------------------------------------------------------------------------------------

// The angle of [0, 2 pi] whose cosine and sine are these.
static double CalcDirection(double a_dCos, double a_dSin)
{
    return ReduceToPeriod(atan2(a_dSin, a_dCos), ANGLE_2PI);
}

void AffineParamsToCoefs(double a_dSx, double a_dSy, double a_dPhi, double a_dTheta, double a_dTx, double a_dTy,
                         TAffineCoefs& a_Coefs)
{
    const double dCos = cos(a_dTheta);
    const double dSin = sin(a_dTheta);
    const double dTan = tan(a_dPhi);
    const double dP = dCos * a_dSy;
    const double dQ = dSin * a_dSy;
    a_Coefs.dA = dCos * a_dSx;
    a_Coefs.dB = dP * dTan - dQ;
    a_Coefs.dD = dSin * a_dSx;
    a_Coefs.dE = dQ * dTan + dP;
    a_Coefs.dC = a_dTx;
    a_Coefs.dF = a_dTy;
}

int AffineCoefsToParam(const TAffineCoefs& a_Coefs, double& a_dSx, double& a_dSy, double& a_dPhi, double& a_dTheta,
                       double& a_dTx, double& a_dTy)
{
    const double dSx = CalcHypot(a_Coefs.dA, a_Coefs.dD);
    a_dSx = dSx;
    if (IsNegligible(dSx))
    {
        return RET_IMPOSSIBLE;
    }
    const double dReciprocal = 1.0 / dSx;
    const double dU = a_Coefs.dA * dReciprocal; // cos(theta)
    const double dV = a_Coefs.dD * dReciprocal; // sin(theta)
    a_dTheta = CalcDirection(dU, dV);

    const double dSy = a_Coefs.dE * dU - a_Coefs.dB * dV;
    a_dSy = dSy;
    if (IsNegligible(dSy))
    {
        return RET_IMPOSSIBLE;
    }
    a_dPhi = atan((a_Coefs.dE * dV + a_Coefs.dB * dU) / dSy);
    a_dTx = a_Coefs.dC;
    a_dTy = a_Coefs.dF;
    return RET_SUCCESS;
}

int AffineCoefsToInvCoefs(const TAffineCoefs& a_Coefs, TAffineCoefs& a_Inverse)
{
    const double dDet = a_Coefs.dA * a_Coefs.dE - a_Coefs.dD * a_Coefs.dB;
    if (IsNegligible(dDet))
    {
        return RET_IMPOSSIBLE;
    }
    // Field by field in this order, each read from the record anew: the same record as input and output is not
    // supported, and its wrong values are the same everywhere.
    const double dReciprocal = 1.0 / dDet;
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
    // The text of the condition is part of the report.
    // clang-format off
    NUV_ASSERT_AT("nuv\\nuv1math\\src\\affine.cpp", 443, iResult!= RET_IMPOSSIBLE);
    // clang-format on
    if (iResult == RET_INDETERMINATE)
    {
        a_dX = 0.0;
        a_dY = 0.0;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Dense Gaussian elimination
//
// Model      A X = B, A n x n, several right-hand sides, column by column with leading dimensions.
// Method     Row pivoting; every pivot row is divided by its pivot, so the factor is unit upper triangular and the back
//            substitution divides by 1.
// Special    A pivot of exactly 0 becomes 1e-14 and the elimination goes on; a merely tiny one is used as it is.
// Order      Multiply-then-add, product first: (pivot row element) g + element. Scaling by exactly 1 and updates by a
//            factor of exactly 0 are skipped, which also keeps 0 * inf out of untouched rows.
// Source     G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed., sections 3.1 and 3.4.
// ---------------------------------------------------------------------------------------------------------------------

static const double PIVOT_REPLACEMENT = 1e-14; // stands for a pivot of exactly 0

int MaxAbsIndex(int a_iN, const double* a_vdX, int a_iIncX)
{
    if (a_iN < 1)
    {
        return 0;
    }
    int iMax = 0;
    double dMax = fabs(a_vdX[0]);
    for (int i = 1; i < a_iN; ++i)
    {
        const double dMagnitude = fabs(a_vdX[static_cast<ptrdiff_t>(i) * a_iIncX]);
        if (dMagnitude > dMax)
        {
            dMax = dMagnitude;
            iMax = i;
        }
    }
    return iMax;
}

// Quotient of one row of the back substitution into a_dX; false where the row is inconsistent.
static bool SolveUpperTriRow(double a_dDiagonal, double a_dRest, double& a_dX)
{
    if (IsOne(a_dDiagonal)) // as SolveGauss leaves every diagonal element
    {
        a_dX = a_dRest;
        return true;
    }
    if (!IsZero(a_dDiagonal))
    {
        a_dX = a_dRest / a_dDiagonal;
        return true;
    }
    if (IsNegligible(a_dRest))
    {
        a_dX = 0.0;
        return true;
    }
    return false;
}

int SolveUpperTri(int a_iN, const double* a_vdU, int a_iLdu, const double* a_vdB, int a_iIncB, double* a_vdX,
                  int a_iIncX)
{
    if (a_iN < 1)
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
        if (i != iLast) // the last row subtracts nothing: b - 0 would be the same, but for one operation
        {
            double dSum = 0.0;
            for (ptrdiff_t j = iLast; j > i; --j) // from the last unknown backwards
            {
                dSum = a_vdU[j * iLdu + i] * a_vdX[j * iIncX] + dSum;
            }
            dRest -= dSum;
        }
        bConsistent = SolveUpperTriRow(a_vdU[i * iLdu + i], dRest, a_vdX[i * iIncX]);
    }
    if (!bConsistent)
    {
        // From the last element forward, not backward: the documented mark of a failure. SolveGauss never comes here.
        for (ptrdiff_t i = 0; i < a_iN; ++i)
        {
            a_vdX[(iLast + i) * iIncX] = std::numeric_limits<double>::infinity();
        }
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

// Swaps rows k and p of A from column k on (only zeros are left of it) and of every right-hand side.
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

// Divides row k by its pivot A(k,k), which becomes exactly 1.
static void NormaliseRow(const TGaussSystem& a_System, ptrdiff_t k)
{
    double& dPivot = a_System.vdA[k * a_System.iLda + k];
    if (IsZero(dPivot))
    {
        dPivot = PIVOT_REPLACEMENT;
    }
    const double dReciprocal = 1.0 / dPivot;
    dPivot = 1.0;
    if (IsOne(dReciprocal))
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

// Adds to row i the multiple of pivot row k that clears A(i,k).
static void EliminateRow(const TGaussSystem& a_System, ptrdiff_t k, ptrdiff_t i)
{
    double& dBelowPivot = a_System.vdA[k * a_System.iLda + i];
    const double dFactor = -dBelowPivot;
    dBelowPivot = 0.0;
    if (IsZero(dFactor))
    {
        return;
    }
    for (ptrdiff_t j = k + 1; j < a_System.iN; ++j)
    {
        double* const vdColumn = a_System.vdA + j * a_System.iLda;
        vdColumn[i] = vdColumn[k] * dFactor + vdColumn[i];
    }
    for (ptrdiff_t j = 0; j < a_System.iNrhs; ++j)
    {
        double* const vdColumn = a_System.vdB + j * a_System.iLdb;
        vdColumn[i] = vdColumn[k] * dFactor + vdColumn[i];
    }
}

int SolveGauss(int a_iN, int a_iNrhs, double* a_vdA, int a_iLda, double* a_vdB, int a_iLdb, double* a_vdX, int a_iLdx)
{
    if (a_iN < 1)
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
    do // at least one right-hand side; the first failure ends it
    {
        iResult = SolveUpperTri(a_iN, a_vdA, a_iLda, a_vdB + j * System.iLdb, 1,
                                a_vdX + j * static_cast<ptrdiff_t>(a_iLdx), 1);
        ++j;
    } while (iResult != 0 && j < System.iNrhs); // unreachable: the diagonal is 1, so no substitution fails
    return iResult;
}

// ---------------------------------------------------------------------------------------------------------------------
// Means
// ---------------------------------------------------------------------------------------------------------------------

namespace {

// The means of the four coordinate arrays.
struct TMeans
{
    double dX;  // of x
    double dY;  // of y
    double dXa; // of X
    double dYa; // of Y
};

} // namespace

// At least one point. The four sums run side by side: none waits for another, as the additions of one do.
static void CalcMeans(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                      const double* a_vdYa, TMeans& a_Means)
{
    double dX = 0.0, dY = 0.0, dXa = 0.0, dYa = 0.0;
    unsigned int i = 0;
    if (a_iPoints % 2 != 0) // an odd count starts as its first value, which keeps the sign of a sum of zeros
    {
        dX = a_vdX[0];
        dY = a_vdY[0];
        dXa = a_vdXa[0];
        dYa = a_vdYa[0];
        i = 1;
    }
    for (; i < a_iPoints; ++i)
    {
        dX = a_vdX[i] + dX;
        dY = a_vdY[i] + dY;
        dXa = a_vdXa[i] + dXa;
        dYa = a_vdYa[i] + dYa;
    }
    const double dCount = static_cast<double>(a_iPoints);
    a_Means.dX = dX / dCount;
    a_Means.dY = dY / dCount;
    a_Means.dXa = dXa / dCount;
    a_Means.dYa = dYa / dCount;
}

void CalcMean(unsigned int a_iCount, const double* a_vdValues, double& a_dMean)
{
    a_dMean = 0.0;
    if (a_iCount == 0)
    {
        return;
    }
    TMeans Means;
    CalcMeans(a_iCount, a_vdValues, a_vdValues, a_vdValues, a_vdValues, Means);
    a_dMean = Means.dX;
}

// ---------------------------------------------------------------------------------------------------------------------
// Affine fit
//
// Model      sum (a x + b y + c - X)^2 and sum (d x + e y + f - Y)^2 are least, each by itself.
// Method     With u = x - mean(x), v, U, V alike: normal equations
//                [ Suu Suv Su ] [ a  d  ]   [ SUu SVu ]
//                [ Suv Svv Sv ] [ b  e  ] = [ SUv SVv ]
//                [ Su  Sv  n  ] [ tX tY ]   [ SU  SV  ]
//            for both target coordinates at once, then c = tX + mean(X) - a mean(x) - b mean(y) and f alike.
// Special    Points on one line or repeated points are not detected: the elimination always completes.
// Order      Every sum takes its terms in point order as term + sum. Su, Sv, SU, SV are zero but for rounding and stay
//            in the system as they are: they carry what the rounded means left.
// Source     G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed., section 5.3.
// ---------------------------------------------------------------------------------------------------------------------

static const unsigned int AFFINE_MINIMUM_POINTS = 3;

// Forms the normal matrix (3 x 3) and its two right-hand sides, column by column with leading dimension 3. Sums that
// take products with the same factor advance in pairs.
static void CalcAffineNormalEquations(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY,
                                      const double* a_vdXa, const double* a_vdYa, const TMeans& a_Means,
                                      double* a_vdMatrix, double* a_vdRhs)
{
    TPair FromByU = {0.0, 0.0}; // Suu, Suv
    double dSvv = 0.0;
    TPair ToByU = {0.0, 0.0};   // SUu, SVu
    TPair ToByV = {0.0, 0.0};   // SUv, SVv
    TPair FromSum = {0.0, 0.0}; // Su, Sv
    TPair ToSum = {0.0, 0.0};   // SU, SV
    for (unsigned int i = 0; i < a_iPoints; ++i)
    {
        const double du = a_vdX[i] - a_Means.dX;
        const double dv = a_vdY[i] - a_Means.dY;
        const TPair From = {du, dv};
        const TPair To = {a_vdXa[i] - a_Means.dXa, a_vdYa[i] - a_Means.dYa};
        FromByU = From * du + FromByU;
        dSvv = dv * dv + dSvv;
        ToByU = To * du + ToByU;
        ToByV = To * dv + ToByV;
        FromSum = From + FromSum;
        ToSum = To + ToSum;
    }
    Spread(FromByU, a_vdMatrix, a_vdMatrix + 1);
    Spread(FromSum, a_vdMatrix + 2, a_vdMatrix + 5);
    a_vdMatrix[3] = a_vdMatrix[1];
    a_vdMatrix[4] = dSvv;
    a_vdMatrix[6] = a_vdMatrix[2];
    a_vdMatrix[7] = a_vdMatrix[5];
    a_vdMatrix[8] = static_cast<double>(a_iPoints);
    Spread(ToByU, a_vdRhs, a_vdRhs + 3);
    Spread(ToByV, a_vdRhs + 1, a_vdRhs + 4);
    Spread(ToSum, a_vdRhs + 2, a_vdRhs + 5);
}

int CalcAffineCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                    const double* a_vdYa, TAffineCoefs& a_Coefs)
{
    if (a_iPoints < AFFINE_MINIMUM_POINTS)
    {
        return RET_IMPOSSIBLE;
    }
    TMeans Means;
    CalcMeans(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, Means);

    double vdMatrix[9];
    double vdRhs[6];
    double vdSolution[6]; // a, b, tX, d, e, tY
    CalcAffineNormalEquations(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, Means, vdMatrix, vdRhs);
    if (SolveGauss(3, 2, vdMatrix, 3, vdRhs, 3, vdSolution, 3) == 0) // unreachable: no pivot is zero here
    {
        return RET_IMPOSSIBLE;
    }
    const double dA = vdSolution[0];
    const double dB = vdSolution[1];
    const double dD = vdSolution[3];
    const double dE = vdSolution[4];
    a_Coefs.dA = dA;
    a_Coefs.dB = dB;
    a_Coefs.dC = (vdSolution[2] + Means.dXa) - dA * Means.dX - dB * Means.dY;
    a_Coefs.dD = dD;
    a_Coefs.dE = dE;
    a_Coefs.dF = (vdSolution[5] + Means.dYa) - dD * Means.dX - dE * Means.dY;
    return RET_SUCCESS;
}

// ---------------------------------------------------------------------------------------------------------------------
// Conformal coefficients and parameters
//
// Model      X = A x + B y + Tx, Y = -B x + A y + Ty with A = s cos(theta), B = -s sin(theta); the record also holds
//            the linear part of the inverse, cos(theta)/s and sin(theta)/s.
// Method     s = sqrt(A^2 + B^2), theta = atan2(-B/s, A/s); the inverse translations follow from the inverse fields.
// Special    s = 0 has no rotation: reported, with the angle 0. A scale of 0 has infinite or NaN inverse fields.
// Order      Reciprocals are multiplied where two values share them; the negation of a zero product is -0.0.
// ---------------------------------------------------------------------------------------------------------------------

void ConformalParamsToCoefs(double a_dScale, double a_dAngle, double a_dTx, double a_dTy, TConformalCoefs& a_Coefs)
{
    const double dCos = cos(a_dAngle);
    const double dSin = sin(a_dAngle);
    a_Coefs.dA = dCos * a_dScale;
    a_Coefs.dB = -(dSin * a_dScale);
    const double dReciprocal = 1.0 / a_dScale;
    a_Coefs.dInvA = dReciprocal * dCos;
    a_Coefs.dInvB = dReciprocal * dSin;
    a_Coefs.dTx = a_dTx;
    a_Coefs.dTy = a_dTy;
}

int ConformalCoefsToParam(const TConformalCoefs& a_Coefs, double& a_dScale, double& a_dAngle, double& a_dTx,
                          double& a_dTy)
{
    const double dScale = CalcHypot(a_Coefs.dA, a_Coefs.dB);
    a_dScale = dScale;
    a_dTx = a_Coefs.dTx;
    a_dTy = a_Coefs.dTy;
    if (IsNegligible(dScale))
    {
        a_dAngle = 0.0;
        return RET_IMPOSSIBLE;
    }
    const double dU = a_Coefs.dA / dScale;
    const double dV = (-1.0 / dScale) * a_Coefs.dB; // not -dB / dScale: the reciprocal is rounded first
    a_dAngle = CalcDirection(dU, dV);
    return RET_SUCCESS;
}

void ConformalCoefsToInvCoefs(const TConformalCoefs& a_Coefs, TConformalCoefs& a_Inverse)
{
    // Field by field in this order, as in AffineCoefsToInvCoefs.
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
// Conformal fit
//
// Model      sum (A x + B y + Tx - X)^2 + (-B x + A y + Ty - Y)^2 is least.
// Method     With dx, dy, dX, dY centred on the means: S = sum(dx^2 + dy^2), A = sum(dX dx + dY dy)/S,
//            B = sum(dX dy - dY dx)/S; the translations map the mean onto the mean.
// Special    Equal source points (S = 0) are reported. Equal target points give A = B = 0 but for rounding and, unless
//            the rigid inverse is asked for, NaN inverse fields with the result 1. The rigid inverse is stored whatever
//            the scale.
// Order      A point's term of each sum is formed first and added to the sum, in point order.
// Source     C. D. Ghilani, Adjustment Computations, two-dimensional conformal coordinate transformation;
//            S. Umeyama, IEEE Trans. Pattern Anal. Mach. Intell. 13 (1991) 376-380.
// ---------------------------------------------------------------------------------------------------------------------

static const unsigned int CONFORMAL_MINIMUM_POINTS = 2;

namespace {

// The three sums over the centred points.
struct TConformalSums
{
    double dS;  // dx^2 + dy^2
    double dSa; // dX dx + dY dy
    double dSb; // dX dy - dY dx
};

} // namespace

static void CalcConformalSums(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                              const double* a_vdYa, const TMeans& a_Means, TConformalSums& a_Sums)
{
    double dS = 0.0;
    double dSa = 0.0;
    double dSb = 0.0;
    for (unsigned int i = 0; i < a_iPoints; ++i)
    {
        const double dx = a_vdX[i] - a_Means.dX;
        const double dy = a_vdY[i] - a_Means.dY;
        const double dX = a_vdXa[i] - a_Means.dXa;
        const double dY = a_vdYa[i] - a_Means.dYa;
        dS = (dy * dy + dx * dx) + dS;
        dSa = (dY * dy + dX * dx) + dSa;
        dSb = (dX * dy - dY * dx) + dSb;
    }
    a_Sums.dS = dS;
    a_Sums.dSa = dSa;
    a_Sums.dSb = dSb;
}

// Stores the linear part of the inverse beside the forward coefficients.
static void StoreConformalInverse(bool a_bRigidInverse, TConformalCoefs& a_Coefs)
{
    if (a_bRigidInverse)
    {
        a_Coefs.dInvA = a_Coefs.dA;
        a_Coefs.dInvB = -a_Coefs.dB;
        return;
    }
    const double dScale = CalcHypot(a_Coefs.dA, a_Coefs.dB);
    const double dScale2 = dScale * dScale;
    a_Coefs.dInvA = a_Coefs.dA / dScale2;
    a_Coefs.dInvB = (-1.0 / dScale2) * a_Coefs.dB; // not -dB / dScale2: the reciprocal is rounded first
}

int CalcConformalCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                       const double* a_vdYa, bool a_bRigidInverse, TConformalCoefs& a_Coefs)
{
    if (a_iPoints < CONFORMAL_MINIMUM_POINTS)
    {
        return RET_IMPOSSIBLE;
    }
    TMeans Means;
    CalcMeans(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, Means);
    TConformalSums Sums;
    CalcConformalSums(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, Means, Sums);
    if (IsNegligible(Sums.dS))
    {
        return RET_IMPOSSIBLE;
    }
    const double dReciprocal = 1.0 / Sums.dS;
    const double dA = dReciprocal * Sums.dSa;
    const double dB = dReciprocal * Sums.dSb;
    a_Coefs.dTx = (Means.dXa - dA * Means.dX) - dB * Means.dY;
    a_Coefs.dTy = (dB * Means.dX + Means.dYa) - dA * Means.dY;
    a_Coefs.dA = dA;
    a_Coefs.dB = dB;
    StoreConformalInverse(a_bRigidInverse, a_Coefs);
    return RET_SUCCESS;
}

} // namespace nuv
