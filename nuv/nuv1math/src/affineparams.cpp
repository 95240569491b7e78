// affineparams.cpp: affine and conformal coefficients from parameters, and parameters from coefficients.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "functionsimp.h"
#include "nuv1math.h"

#include <math.h>

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Affine coefficients and parameters
//
// Model      X = a x + b y + c, Y = d x + e y + f, with a = sx cos(theta), b = sy (cos(theta) tan(phi) - sin(theta)),
//            d = sx sin(theta), e = sy (sin(theta) tan(phi) + cos(theta)), c = tx, f = ty.
// Method     The parameters follow from the coefficients by a rotation of the second column through -theta, where
//            theta = atan2(d, a). With the unit vector (u, v) = (a, d)/sx: sy = e u - b v and sy tan(phi) = e v + b u.
// Special    sx = 0 leaves no rotation, and sy = 0 leaves no skew: both are failures. A mirror image has a negative sy.
//            A skew of +-pi/2 gives what tan gives there.
// Order      A product that two values share is formed once. A divisor that two values share is inverted once, and the
//            reciprocal is multiplied.
// ---------------------------------------------------------------------------------------------------------------------

// The angle in [0, 2 pi] that has this cosine and sine.
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
    const double dReciprocal = Quotient(1.0, dSx);
    const double dU = a_Coefs.dA * dReciprocal; // cos(theta)
    const double dV = a_Coefs.dD * dReciprocal; // sin(theta)
    a_dTheta = CalcDirection(dU, dV);

    const double dSy = a_Coefs.dE * dU - a_Coefs.dB * dV;
    a_dSy = dSy;
    if (IsNegligible(dSy))
    {
        return RET_IMPOSSIBLE;
    }
    a_dPhi = atan(Quotient(a_Coefs.dE * dV + a_Coefs.dB * dU, dSy));
    a_dTx = a_Coefs.dC;
    a_dTy = a_Coefs.dF;
    return RET_SUCCESS;
}

// ---------------------------------------------------------------------------------------------------------------------
// Conformal coefficients and parameters
//
// Model      X = A x + B y + Tx, Y = -B x + A y + Ty with A = s cos(theta) and B = -s sin(theta). The record also holds
//            the linear part of the inverse, cos(theta)/s and sin(theta)/s.
// Method     s = sqrt(A^2 + B^2) and theta = atan2(-B/s, A/s).
// Special    s = 0 leaves no rotation: it is a failure, and the angle is 0. A scale of 0 gives infinite or NaN inverse
//            fields.
// Order      A divisor that two values share is inverted, and the reciprocal is multiplied. A negation comes after its
//            product: a zero product gives -0.0.
// ---------------------------------------------------------------------------------------------------------------------

void ConformalParamsToCoefs(double a_dScale, double a_dAngle, double a_dTx, double a_dTy, TConformalCoefs& a_Coefs)
{
    const double dCos = cos(a_dAngle);
    const double dSin = sin(a_dAngle);
    a_Coefs.dA = dCos * a_dScale;
    a_Coefs.dB = -(dSin * a_dScale);
    const double dReciprocal = Quotient(1.0, a_dScale);
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
    const double dU = Quotient(a_Coefs.dA, dScale);
    const double dV = Quotient(-1.0, dScale) * a_Coefs.dB; // -dB / dScale rounds once less
    a_dAngle = CalcDirection(dU, dV);
    return RET_SUCCESS;
}

} // namespace nuv
