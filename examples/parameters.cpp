// parameters.cpp: back and forth between the parameters of a transformation, its coefficients and its inverse.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"

#include <cmath>
#include <cstdio>

const double DEGREE = std::acos(-1.0) / 180.0;

// In degrees, rounded to a tenth. The sum turns -0 into 0.
double Degrees(double a_dAngle)
{
    return std::round(a_dAngle / DEGREE * 10.0) / 10.0 + 0.0;
}

//! [read]
// Prints the parameters of an affine transformation; false if it has none.
bool PrintParameters(const nuv::TAffineCoefs& a_Coefs)
{
    double dSx, dSy, dPhi, dTheta, dTx, dTy;
    if (nuv::AffineCoefsToParam(a_Coefs, dSx, dSy, dPhi, dTheta, dTx, dTy) != 1)
    {
        std::puts("no parameters: an axis of the source is mapped to a point, or both to one line");
        return false;
    }
    std::printf("sx %.3f, sy %.3f, skew %.1f deg, rotation %.1f deg, translation (%.1f, %.1f)\n", dSx, dSy,
                Degrees(dPhi), Degrees(dTheta), dTx, dTy);
    return true;
}
//! [read]

//! [affine]
// Prints the parameters that come back for those that are given.
bool ThereAndBack(double a_dSx, double a_dSy, double a_dSkew, double a_dRotation)
{
    nuv::TAffineCoefs Coefs;
    nuv::AffineParamsToCoefs(a_dSx, a_dSy, a_dSkew * DEGREE, a_dRotation * DEGREE, 100.0, 200.0, Coefs);
    return PrintParameters(Coefs);
}
//! [affine]

//! [inverse]
// Maps a point forwards, and back in two ways.
bool MapAndReturn()
{
    nuv::TAffineCoefs Coefs, Inverse;
    nuv::AffineParamsToCoefs(2.0, 3.0, 5.0 * DEGREE, 30.0 * DEGREE, 100.0, 200.0, Coefs);
    const double dXa = Coefs.dA * 7.0 + Coefs.dB * 8.0 + Coefs.dC;
    const double dYa = Coefs.dD * 7.0 + Coefs.dE * 8.0 + Coefs.dF;
    std::printf("(7, 8) is mapped to (%.4f, %.4f)\n", dXa, dYa);

    if (nuv::AffineCoefsToInvCoefs(Coefs, Inverse) != 1)
    {
        return false; // only now AffineUntransform is safe: it ends the process for most singular transformations
    }
    std::printf("the inverse maps it to (%.4f, %.4f)\n", Inverse.dA * dXa + Inverse.dB * dYa + Inverse.dC,
                Inverse.dD * dXa + Inverse.dE * dYa + Inverse.dF);
    double dX, dY;
    nuv::AffineUntransform(Coefs, dXa, dYa, dX, dY);
    std::printf("AffineUntransform maps it to (%.4f, %.4f)\n", dX, dY);
    return true;
}
//! [inverse]

//! [conformal]
// A similarity, as the affine transformation that it is, and its inverse.
bool Similarity()
{
    nuv::TConformalCoefs Coefs, Inverse;
    nuv::ConformalParamsToCoefs(2.0, -90.0 * DEGREE, 10.0, 20.0, Coefs);
    nuv::TAffineCoefs Affine;
    nuv::ConformalCoefsToAffineCoefs(Coefs, Affine);
    const bool bAffine = PrintParameters(Affine);

    nuv::ConformalCoefsToInvCoefs(Coefs, Inverse);
    double dScale, dAngle, dTx, dTy;
    const int iResult = nuv::ConformalCoefsToParam(Inverse, dScale, dAngle, dTx, dTy);
    std::printf("inverse: scale %.3f, rotation %.1f deg, translation (%.1f, %.1f)\n", dScale, Degrees(dAngle), dTx,
                dTy);
    return bAffine && iResult == 1;
}
//! [conformal]

//! [omographic]
// The inverse of an omographic transformation: the adjugate of its matrix, divided by its last element, so that the
// constant of the denominator is 1. It has none with that constant if it maps the target origin to infinity.
bool Invert(const nuv::TOmographicParams& P, nuv::TOmographicParams& a_Inverse)
{
    const double dLast = P.dA * P.dE - P.dB * P.dD;
    const double dDeterminant = dLast + P.dG * (P.dB * P.dF - P.dC * P.dE) + P.dH * (P.dC * P.dD - P.dA * P.dF);
    a_Inverse.dA = (P.dE - P.dF * P.dH) / dLast;
    a_Inverse.dB = (P.dC * P.dH - P.dB) / dLast;
    a_Inverse.dC = (P.dB * P.dF - P.dC * P.dE) / dLast;
    a_Inverse.dD = (P.dF * P.dG - P.dD) / dLast;
    a_Inverse.dE = (P.dA - P.dC * P.dG) / dLast;
    a_Inverse.dF = (P.dC * P.dD - P.dA * P.dF) / dLast;
    a_Inverse.dG = (P.dD * P.dH - P.dE * P.dG) / dLast;
    a_Inverse.dH = (P.dB * P.dG - P.dA * P.dH) / dLast;
    return dLast != 0.0 && dDeterminant != 0.0;
}
//! [omographic]

// Maps a point forwards and back.
bool Perspective()
{
    const nuv::TOmographicParams Params = {1.2, 0.1, 30.0, -0.2, 0.9, 40.0, 0.002, 0.001};
    nuv::TOmographicParams Inverse;
    if (!Invert(Params, Inverse))
    {
        return false;
    }
    const nuv::TOmographicParams& P = Params;
    const nuv::TOmographicParams& I = Inverse;
    const double w = P.dG * 7.0 + P.dH * 8.0 + 1.0;
    const double dXa = (P.dA * 7.0 + P.dB * 8.0 + P.dC) / w, dYa = (P.dD * 7.0 + P.dE * 8.0 + P.dF) / w;
    const double v = I.dG * dXa + I.dH * dYa + 1.0;
    std::printf("omographic: (7, 8) to (%.4f, %.4f) and back to (%.4f, %.4f)\n", dXa, dYa,
                (I.dA * dXa + I.dB * dYa + I.dC) / v, (I.dD * dXa + I.dE * dYa + I.dF) / v);
    return true;
}

int main()
{
    bool bGood = ThereAndBack(2.0, 3.0, 5.0, 30.0);
    bGood = ThereAndBack(2.0, -3.0, 5.0, 30.0) && bGood; // a mirror image
    bGood = ThereAndBack(-2.0, 3.0, 5.0, 30.0) && bGood; // comes back as sx > 0, turned by 180 degrees, and mirrored
    bGood = ThereAndBack(2.0, 3.0, 0.0, -90.0) && bGood; // rotations come back from 0 to 360 degrees
    bGood = !ThereAndBack(2.0, 0.0, 0.0, 0.0) && bGood;  // everything falls on a line
    bGood = MapAndReturn() && bGood;
    bGood = Similarity() && bGood;
    return Perspective() && bGood ? 0 : 1;
}
