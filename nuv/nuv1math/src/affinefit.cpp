// affinefit.cpp: the least-squares fits of affine and conformal transformations.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "affine.h"

#include "fast/affinefast.h"
#include "functionsimp.h"
#include "nuv1math.h"

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Means
// ---------------------------------------------------------------------------------------------------------------------

// The means of at least one point. The four sums run side by side, so that no addition waits for the one before.
static NUV_HOST_INLINE void CalcMeans(const TControlPoints& a_Points, TMeans& a_Means)
{
    double dX = 0.0, dY = 0.0, dXa = 0.0, dYa = 0.0;
    unsigned int i = 0;
    if (a_Points.iCount % 2 != 0) // an odd count starts from its first value, which keeps the sign of a sum of zeros
    {
        dX = a_Points.vdX[0];
        dY = a_Points.vdY[0];
        dXa = a_Points.vdXa[0];
        dYa = a_Points.vdYa[0];
        i = 1;
    }
    for (; i < a_Points.iCount; ++i)
    {
        dX = a_Points.vdX[i] + dX;
        dY = a_Points.vdY[i] + dY;
        dXa = a_Points.vdXa[i] + dXa;
        dYa = a_Points.vdYa[i] + dYa;
    }
    const double dCount = static_cast<double>(a_Points.iCount);
    a_Means.dX = Quotient(dX, dCount);
    a_Means.dY = Quotient(dY, dCount);
    a_Means.dXa = Quotient(dXa, dCount);
    a_Means.dYa = Quotient(dYa, dCount);
}

void CalcMean(unsigned int a_iCount, const double* a_vdValues, double& a_dMean)
{
    a_dMean = 0.0;
    if (a_iCount == 0)
    {
        return;
    }
    const TControlPoints Values = {a_iCount, a_vdValues, a_vdValues, a_vdValues, a_vdValues};
    TMeans Means;
    CalcMeans(Values, Means); // host only: GCC counts the inlined lines, not the call
    a_dMean = Means.dX;
}

// ---------------------------------------------------------------------------------------------------------------------
// Affine fit
//
// Model      sum (a x + b y + c - X)^2 and sum (d x + e y + f - Y)^2 are least, each by itself.
// Method     With u = x - mean(x), and v, U, V likewise, the normal equations are
//                [ Suu Suv Su ] [ a  d  ]   [ SUu SVu ]
//                [ Suv Svv Sv ] [ b  e  ] = [ SUv SVv ]
//                [ Su  Sv  n  ] [ tX tY ]   [ SU  SV  ]
//            for both target coordinates at once. Then c = tX + mean(X) - a mean(x) - b mean(y), and f likewise.
// Special    Points on one line and repeated points are not detected: the elimination always completes.
// Order      Every sum takes its terms in the order of the points, as term + sum. Su, Sv, SU and SV are zero except for
//            rounding. They stay in the system as they are, because they correct the rounding of the means.
// Faster     fast/affinefast.h.
// Source     G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed., section 5.3.
// ---------------------------------------------------------------------------------------------------------------------

static const unsigned int AFFINE_MINIMUM_POINTS = 3;

// Adds a term to a sum, which is 0 before the first point.
template <bool FIRST> static NUV_INLINE void AddTerm(double a_dTerm, double& a_dSum)
{
    a_dSum = FIRST ? PlusZero(a_dTerm) : a_dTerm + a_dSum;
}

// Adds the terms of point i to all sums.
template <bool FIRST>
static NUV_INLINE void AddAffineTerms(unsigned int i, const TControlPoints& a_Points, const TMeans& a_Means,
                                      TAffineSums& a_Sums)
{
    const double du = a_Points.vdX[i] - a_Means.dX;
    const double dv = a_Points.vdY[i] - a_Means.dY;
    const double dU = a_Points.vdXa[i] - a_Means.dXa;
    const double dV = a_Points.vdYa[i] - a_Means.dYa;
    AddTerm<FIRST>(du * du, a_Sums.dSuu);
    AddTerm<FIRST>(du * dv, a_Sums.dSuv);
    AddTerm<FIRST>(dv * dv, a_Sums.dSvv);
    AddTerm<FIRST>(dU * du, a_Sums.dSUu);
    AddTerm<FIRST>(dV * du, a_Sums.dSVu);
    AddTerm<FIRST>(dU * dv, a_Sums.dSUv);
    AddTerm<FIRST>(dV * dv, a_Sums.dSVv);
    AddTerm<FIRST>(du, a_Sums.dSu);
    AddTerm<FIRST>(dv, a_Sums.dSv);
    AddTerm<FIRST>(dU, a_Sums.dSU);
    AddTerm<FIRST>(dV, a_Sums.dSV);
}

static void CalcAffineSums(const TControlPoints& a_Points, const TMeans& a_Means, TAffineSums& a_Sums)
{
    if (HAS_VECTORS)
    {
        SumAffineByVectors(a_Points, a_Means, a_Sums);
        return;
    }
    TAffineSums Sums;
    AddAffineTerms<true>(0, a_Points, a_Means, Sums);
    for (unsigned int i = 1; i < a_Points.iCount; ++i)
    {
        AddAffineTerms<false>(i, a_Points, a_Means, Sums);
    }
    a_Sums = Sums;
}

int FitAffine(const TControlPoints& a_Points, TAffineCoefs& a_Coefs)
{
    if (a_Points.iCount < AFFINE_MINIMUM_POINTS)
    {
        return RET_IMPOSSIBLE;
    }
    TMeans Means;
    CalcMeans(a_Points, Means);
    TAffineSums S;
    CalcAffineSums(a_Points, Means, S);

    double vdMatrix[9] = {S.dSuu, S.dSuv, S.dSu, // column by column
                          S.dSuv, S.dSvv, S.dSv, //
                          S.dSu,  S.dSv,  static_cast<double>(a_Points.iCount)};
    double vdRhs[6] = {S.dSUu, S.dSUv, S.dSU, //
                       S.dSVu, S.dSVv, S.dSV};
    double vdSolution[6];                                            // a, b, tX, d, e, tY
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

int CalcAffineCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                    const double* a_vdYa, TAffineCoefs& a_Coefs)
{
    const TControlPoints Points = {a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa};
    return FitAffine(Points, a_Coefs);
}

// ---------------------------------------------------------------------------------------------------------------------
// Conformal fit
//
// Model      sum (A x + B y + Tx - X)^2 + (-B x + A y + Ty - Y)^2 is least.
// Method     With dx, dy, dX and dY centred on the means: S = sum(dx^2 + dy^2), A = sum(dX dx + dY dy)/S and
//            B = sum(dX dy - dY dx)/S. The translations map the mean onto the mean.
// Special    Equal source points (S = 0) are a failure. Equal target points give A = B = 0 except for rounding. The
//            inverse fields are then NaN, with the result 1, unless the rigid inverse is asked for. The rigid inverse
//            is stored whatever the scale is.
// Order      The term of a point is formed first and then added to the sum, in the order of the points.
// Source     C. D. Ghilani, Adjustment Computations, two-dimensional conformal coordinate transformation;
//            S. Umeyama, IEEE Trans. Pattern Anal. Mach. Intell. 13 (1991) 376-380.
// ---------------------------------------------------------------------------------------------------------------------

static const unsigned int CONFORMAL_MINIMUM_POINTS = 2;

static void CalcConformalSums(const TControlPoints& a_Points, const TMeans& a_Means, TConformalSums& a_Sums)
{
    if (HAS_VECTORS && a_Points.iCount >= SUMS_PAY_FROM) // equivalent: both forms give the same bits
    {
        SumConformal(a_Points, a_Means, a_Sums);
        return;
    }
    double dS = 0.0;
    double dSa = 0.0;
    double dSb = 0.0;
    for (unsigned int i = 0; i < a_Points.iCount; ++i)
    {
        const double dy = a_Points.vdY[i] - a_Means.dY;
        const double dx = a_Points.vdX[i] - a_Means.dX;
        const double dY = a_Points.vdYa[i] - a_Means.dYa;
        const double dX = a_Points.vdXa[i] - a_Means.dXa;
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
    a_Coefs.dInvA = Quotient(a_Coefs.dA, dScale2);
    a_Coefs.dInvB = Quotient(-1.0, dScale2) * a_Coefs.dB; // -dB / dScale2 rounds once less
}

int FitConformal(const TControlPoints& a_Points, bool a_bRigidInverse, TConformalCoefs& a_Coefs)
{
    if (a_Points.iCount < CONFORMAL_MINIMUM_POINTS)
    {
        return RET_IMPOSSIBLE;
    }
    TMeans Means;
    CalcMeans(a_Points, Means);
    TConformalSums Sums;
    CalcConformalSums(a_Points, Means, Sums);
    if (IsNegligible(Sums.dS))
    {
        return RET_IMPOSSIBLE;
    }
    const double dReciprocal = Quotient(1.0, Sums.dS);
    const double dA = dReciprocal * Sums.dSa;
    const double dB = dReciprocal * Sums.dSb;
    a_Coefs.dTx = (Means.dXa - dA * Means.dX) - dB * Means.dY;
    a_Coefs.dTy = (dB * Means.dX + Means.dYa) - dA * Means.dY;
    a_Coefs.dA = dA;
    a_Coefs.dB = dB;
    StoreConformalInverse(a_bRigidInverse, a_Coefs);
    return RET_SUCCESS;
}

int CalcConformalCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                       const double* a_vdYa, bool a_bRigidInverse, TConformalCoefs& a_Coefs)
{
    const TControlPoints Points = {a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa};
    return FitConformal(Points, a_bRigidInverse, a_Coefs);
}

} // namespace nuv
