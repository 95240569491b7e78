// covariance.cpp: covariances of coefficients, of parameters and of images, and the error ellipse.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "internal.h"

#include <math.h>
#include <stddef.h>
#include <string.h>

namespace judgement {

// Element (i, j) of a packed lower triangle.
static int Packed(int i, int j)
{
    return i >= j ? i * (i + 1) / 2 + j : j * (j + 1) / 2 + i;
}

// a^T C b.
static double Bilinear(const TCoefsCovariance& a_Covariance, const double* a_vdA, const double* a_vdB)
{
    double dSum = 0;
    for (int i = 0; i < COEFS; ++i)
    {
        double dRow = 0;
        for (int j = 0; j < COEFS; ++j)
        {
            dRow += a_Covariance.vdPacked[Packed(i, j)] * a_vdB[j];
        }
        dSum += a_vdA[i] * dRow;
    }
    return dSum;
}

// ---------------------------------------------------------------------------------------------------------------------
// Coefficients

// Which coefficients an unknown stands for: the derivatives of the eight coefficients by each unknown.
struct TUnknowns
{
    int iCount;
    double vdByUnknown[COEFS][COEFS];
};

static TUnknowns FindUnknowns(const TKindFit& a_Fit)
{
    TUnknowns Result;
    memset(&Result, 0, sizeof Result);
    Result.iCount = Unknowns(a_Fit.Kind);
    if (a_Fit.Kind != nuv::METHOD_CONFORMAL)
    {
        for (int j = 0; j < Result.iCount; ++j)
        {
            Result.vdByUnknown[j][j] = 1;
        }
        return Result;
    }
    const double dSign = a_Fit.bMirrored ? -1 : 1; // A = E, B = -D; mirrored A = -E, B = D
    Result.vdByUnknown[0][0] = 1;
    Result.vdByUnknown[0][4] = dSign;
    Result.vdByUnknown[1][1] = 1;
    Result.vdByUnknown[1][3] = -dSign;
    Result.vdByUnknown[2][2] = 1;
    Result.vdByUnknown[3][5] = 1;
    return Result;
}

// The derivative of an image coordinate by the unknowns from that by the coefficients.
static void ByUnknowns(const TUnknowns& a_Unknowns, const double* a_vdByCoefs, double* a_vdRow)
{
    for (int k = 0; k < a_Unknowns.iCount; ++k)
    {
        a_vdRow[k] = 0;
        for (int j = 0; j < COEFS; ++j)
        {
            a_vdRow[k] += a_Unknowns.vdByUnknown[k][j] * a_vdByCoefs[j];
        }
    }
}

static void AddPoint(const TUnknowns& a_Unknowns, const nuv::TOmographicParams& a_Coefs, const TVector& a_Point,
                     double* a_vdMatrix)
{
    double vdByX[COEFS];
    double vdByY[COEFS];
    double vdRow[COEFS];
    double vdNotUsed[COEFS] = {0}; // the right-hand side
    ImageDerivatives(a_Coefs, a_Point.dX, a_Point.dY, vdByX, vdByY);
    ByUnknowns(a_Unknowns, vdByX, vdRow);
    nuv::UpdateNormMatrixLowTri(a_Unknowns.iCount, a_vdMatrix, vdNotUsed, vdRow, 0);
    ByUnknowns(a_Unknowns, vdByY, vdRow);
    nuv::UpdateNormMatrixLowTri(a_Unknowns.iCount, a_vdMatrix, vdNotUsed, vdRow, 0);
}

// The inverse of the matrix of which the factor is given, times a factor, for the coefficients.
static bool ExpandInverse(const TUnknowns& a_Unknowns, const double* a_vdFactor, double a_dVariance,
                          TCoefsCovariance& a_Covariance)
{
    bool bFinite = true;
    for (int i = 0; i < COEFS; ++i)
    {
        double vdColumn[COEFS]; // N^-1 times the i-th column of the derivatives
        for (int k = 0; k < a_Unknowns.iCount; ++k)
        {
            vdColumn[k] = a_Unknowns.vdByUnknown[k][i];
        }
        nuv::SolveCholLowTri(a_Unknowns.iCount, a_vdFactor, vdColumn);
        for (int j = 0; j <= i; ++j)
        {
            double dSum = 0;
            for (int k = 0; k < a_Unknowns.iCount; ++k)
            {
                dSum += a_Unknowns.vdByUnknown[k][j] * vdColumn[k];
            }
            a_Covariance.vdPacked[Packed(i, j)] = a_dVariance * dSum;
            bFinite = bFinite && IsFinite(a_dVariance * dSum);
        }
    }
    return bFinite;
}

enumReason CovarianceOfCoefs(const TControlPoints& a_Points, const TKindFit& a_Fit, TCoefsCovariance& a_Covariance)
{
    const int iFreedom = Freedom(a_Points.iCount, a_Fit.Kind);
    if (iFreedom < 1)
    {
        return REASON_NO_REDUNDANCY;
    }
    const TUnknowns Unknowns = FindUnknowns(a_Fit);
    double vdMatrix[COVARIANCES] = {0};
    TCoefsCovariance Covariance;
    for (int i = 0; i < a_Points.iCount; ++i)
    {
        const TVector Point = {a_Points.vdX[i], a_Points.vdY[i]};
        AddPoint(Unknowns, a_Fit.Coefs, Point, vdMatrix);
    }
    if (!nuv::CholeskyLowTri(Unknowns.iCount, vdMatrix) ||
        !ExpandInverse(Unknowns, vdMatrix, a_Fit.dSumOfSquares / iFreedom, Covariance))
    {
        return REASON_SINGULAR;
    }
    a_Covariance = Covariance;
    return REASON_NONE;
}

double SigmaOfCoef(const TCoefsCovariance& a_Covariance, int a_iCoef)
{
    const double dVariance = a_Covariance.vdPacked[Packed(a_iCoef, a_iCoef)];
    return dVariance > 0 ? sqrt(dVariance) : 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Original coordinates
//
// The derivatives of the formulas in frames.cpp: with W0 = 1 - G x0 - H y0,
//     A' = (A + X0 G)/W0:              by A 1/W0, by G (X0 + A' x0)/W0, by H A' y0/W0
//     B' = (B + X0 H)/W0:              by B 1/W0, by G B' x0/W0, by H (X0 + B' y0)/W0
//     C' = (C - A x0 - B y0)/W0 + X0:  by C 1/W0, by A -x0/W0, by B -y0/W0, by G (C' - X0) x0/W0, by H (C' - X0) y0/W0
//     G' = G/W0:                       by G (1 + G' x0)/W0, by H G' y0/W0
//     H' = H/W0:                       by G H' x0/W0, by H (1 + H' y0)/W0

// The rows of A', B', C' of X, or of D', E', F' of Y. a_vdOriginal are these three coefficients.
static void NumeratorRows(const double* a_vdOriginal, int a_iFirst, double a_dTargetOrigin, const TOrigins& a_Origins,
                          double a_dW0, double (*a_vdRows)[COEFS])
{
    const double vdShift[3] = {0, 0, a_dTargetOrigin};
    for (int i = 0; i < 3; ++i)
    {
        double* const vdRow = a_vdRows[a_iFirst + i];
        const double dValue = a_vdOriginal[i] - vdShift[i];
        vdRow[a_iFirst + i] = 1 / a_dW0;
        vdRow[6] = (dValue * a_Origins.dX + (i == 0 ? a_dTargetOrigin : 0)) / a_dW0;
        vdRow[7] = (dValue * a_Origins.dY + (i == 1 ? a_dTargetOrigin : 0)) / a_dW0;
    }
    a_vdRows[a_iFirst + 2][a_iFirst] = -a_Origins.dX / a_dW0;
    a_vdRows[a_iFirst + 2][a_iFirst + 1] = -a_Origins.dY / a_dW0;
}

void CovarianceInOriginalFrame(const TCoefsCovariance& a_Covariance, const nuv::TOmographicParams& a_Local,
                               const TOrigins& a_Origins, const nuv::TOmographicParams& a_Original,
                               TCoefsCovariance& a_Result)
{
    double vdRows[COEFS][COEFS] = {{0}};
    double vdOriginal[COEFS];
    const double dW0 = 1 - a_Local.dG * a_Origins.dX - a_Local.dH * a_Origins.dY;
    CoefsToArray(a_Original, vdOriginal);
    NumeratorRows(vdOriginal, 0, a_Origins.dXa, a_Origins, dW0, vdRows);
    NumeratorRows(vdOriginal + 3, 3, a_Origins.dYa, a_Origins, dW0, vdRows);
    for (int i = 6; i < COEFS; ++i)
    {
        vdRows[i][6] = (vdOriginal[i] * a_Origins.dX + (i == 6 ? 1 : 0)) / dW0;
        vdRows[i][7] = (vdOriginal[i] * a_Origins.dY + (i == 7 ? 1 : 0)) / dW0;
    }
    TCoefsCovariance Result;
    for (int i = 0; i < COEFS; ++i)
    {
        for (int j = 0; j <= i; ++j)
        {
            Result.vdPacked[Packed(i, j)] = Bilinear(a_Covariance, vdRows[i], vdRows[j]);
        }
    }
    a_Result = Result;
}

// ---------------------------------------------------------------------------------------------------------------------
// Shape
//
// With s = sqrt(a^2 + d^2) and the determinant q = ae - bd:
//     sx = s:                     by a a/s, by d d/s
//     theta = atan2(d, a):        by a -d/s^2, by d a/s^2
//     sy = q/s:                   by a e/s - q a/s^3, by b -d/s, by d -b/s - q d/s^3, by e a/s
//     t = tan(phi) = (ab + de)/q: by a (b - t e)/q, by b (a + t d)/q, by d (e + t b)/q, by e (d - t a)/q;
//     phi:                        these, divided by 1 + t^2
// They hold for the conformal kind, too, where the covariances of its coefficients keep the skew at 0.

static double SigmaOf(const TCoefsCovariance& a_Covariance, double a_dByA, double a_dByB, double a_dByD, double a_dByE)
{
    const double vdRow[COEFS] = {a_dByA, a_dByB, 0, a_dByD, a_dByE, 0, 0, 0};
    const double dVariance = Bilinear(a_Covariance, vdRow, vdRow);
    return dVariance > 0 ? sqrt(dVariance) : 0;
}

static void AddSigmas(const nuv::TOmographicParams& a_Coefs, const TCoefsCovariance& a_Covariance, TShape& a_Shape)
{
    const double a = a_Coefs.dA;
    const double b = a_Coefs.dB;
    const double d = a_Coefs.dD;
    const double e = a_Coefs.dE;
    const double s = Length(a, d);
    const double dUa = a / s;
    const double dUd = d / s;
    const double q = dUa * e - dUd * b; // sy
    const double t = (dUa * b + dUd * e) / q;
    const double p = s * q * (1 + t * t);
    a_Shape.dSigmaSx = SigmaOf(a_Covariance, dUa, 0, dUd, 0);
    a_Shape.dSigmaRotation = SigmaOf(a_Covariance, -dUd / s, 0, dUa / s, 0);
    a_Shape.dSigmaSy = SigmaOf(a_Covariance, (e - q * dUa) / s, -dUd, -(b + q * dUd) / s, dUa);
    a_Shape.dSigmaSkew = SigmaOf(a_Covariance, (b - t * e) / p, (a + t * d) / p, (e + t * b) / p, (d - t * a) / p);
}

void FindShape(const TKindFit& a_Fit, const TCoefsCovariance* a_pCovariance, TShape& a_Shape)
{
    const nuv::TOmographicParams& C = a_Fit.Coefs;
    TShape Shape;
    double dTx;
    double dTy;
    int iResult = nuv::RET_IMPOSSIBLE;
    memset(&Shape, 0, sizeof Shape);
    if (a_Fit.Kind == nuv::METHOD_CONFORMAL && !a_Fit.bMirrored)
    {
        const nuv::TConformalCoefs Conformal = {C.dA, C.dB, C.dC, C.dF, 0, 0}; // without the inverse, which is not read
        iResult = nuv::ConformalCoefsToParam(Conformal, Shape.dSx, Shape.dRotation, dTx, dTy);
        Shape.dSy = Shape.dSx;
    }
    else if (a_Fit.Kind != nuv::METHOD_OMOGRAPHIC)
    {
        const nuv::TAffineCoefs Affine = {C.dA, C.dB, C.dC, C.dD, C.dE, C.dF};
        iResult = nuv::AffineCoefsToParam(Affine, Shape.dSx, Shape.dSy, Shape.dSkew, Shape.dRotation, dTx, dTy);
    }
    memset(&a_Shape, 0, sizeof a_Shape);
    if (iResult == 1)
    {
        a_Shape = Shape;
        a_Shape.bExists = 1;
        if (a_pCovariance != NULL)
        {
            AddSigmas(C, *a_pCovariance, a_Shape);
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Images

void CovarianceOfImage(const nuv::TOmographicParams& a_Coefs, const TCoefsCovariance& a_Covariance, double a_dX,
                       double a_dY, TCovariance2& a_Result)
{
    double vdByX[COEFS];
    double vdByY[COEFS];
    ImageDerivatives(a_Coefs, a_dX, a_dY, vdByX, vdByY);
    a_Result.dXX = Bilinear(a_Covariance, vdByX, vdByX);
    a_Result.dXY = Bilinear(a_Covariance, vdByX, vdByY);
    a_Result.dYY = Bilinear(a_Covariance, vdByY, vdByY);
}

// The covariance of the source point is M^-1 C M^-T with the covariance C of the image and its derivatives M by the source
// point.
enumReason CovarianceOfSource(const nuv::TOmographicParams& a_Coefs, const TCoefsCovariance& a_Covariance, double a_dX,
                              double a_dY, TCovariance2& a_Result)
{
    TCovariance2 C;
    const TVector Image = ImageOf(a_Coefs, a_dX, a_dY);
    const double dW = Denominator(a_Coefs, a_dX, a_dY);
    const double dA = (a_Coefs.dA - Image.dX * a_Coefs.dG) / dW;
    const double dB = (a_Coefs.dB - Image.dX * a_Coefs.dH) / dW;
    const double dD = (a_Coefs.dD - Image.dY * a_Coefs.dG) / dW;
    const double dE = (a_Coefs.dE - Image.dY * a_Coefs.dH) / dW;
    const double q = dA * dE - dB * dD;
    CovarianceOfImage(a_Coefs, a_Covariance, a_dX, a_dY, C);
    const TCovariance2 Result = {(dE * dE * C.dXX - 2 * dE * dB * C.dXY + dB * dB * C.dYY) / q / q,
                                 (-dE * dD * C.dXX + (dE * dA + dB * dD) * C.dXY - dB * dA * C.dYY) / q / q,
                                 (dD * dD * C.dXX - 2 * dD * dA * C.dXY + dA * dA * C.dYY) / q / q};
    if (!(IsFinite(Result.dXX) && IsFinite(Result.dXY) && IsFinite(Result.dYY)))
    {
        return REASON_NOT_INVERTIBLE;
    }
    a_Result = Result;
    return REASON_NONE;
}

// The eigenvalues are (dXX + dYY)/2 +- r with r = sqrt(((dXX - dYY)/2)^2 + dXY^2). (dXX - dYY, 2 dXY) has twice the
// direction of the greater axis, which half-angle formulas give without a trigonometric function.
void ErrorEllipse(const TCovariance2& a_Covariance, TEllipse& a_Ellipse)
{
    const double dMean = (a_Covariance.dXX + a_Covariance.dYY) / 2;
    const double dHalf = (a_Covariance.dXX - a_Covariance.dYY) / 2;
    const double dRadius = Length(dHalf, a_Covariance.dXY);
    const double dCosine = dRadius > 0 ? dHalf / dRadius : 1; // of the doubled angle
    const double dMinor = dMean - dRadius;
    const double dMajor = dMean + dRadius;
    const double dX = sqrt(dCosine < -1 ? 0 : (1 + dCosine) / 2);
    const double dY = sqrt(dCosine > 1 ? 0 : (1 - dCosine) / 2);
    a_Ellipse.dMajor = dMajor > 0 ? sqrt(dMajor) : 0;
    a_Ellipse.dMinor = dMinor > 0 ? sqrt(dMinor) : 0;
    a_Ellipse.dUx = dX;
    a_Ellipse.dUy = a_Covariance.dXY < 0 ? -dY : dY;
}

} // namespace judgement
