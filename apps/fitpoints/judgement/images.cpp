// images.cpp: images of points, and source points of images.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "internal.h"

namespace judgement {

enumReason TransformPoint(const nuv::TOmographicParams& a_Coefs, const TOrigins& a_Origins, const TVector& a_Source,
                          TVector& a_Target)
{
    const TVector Image = ImageOf(a_Coefs, a_Source.dX - a_Origins.dX, a_Source.dY - a_Origins.dY);
    a_Target.dX = Image.dX + a_Origins.dXa;
    a_Target.dY = Image.dY + a_Origins.dYa;
    return IsFinite(a_Target.dX) && IsFinite(a_Target.dY) ? REASON_NONE : REASON_COEFS_NOT_FINITE;
}

// X W = A x + B y + C and Y W = D x + E y + F are two linear equations in x and y:
// (A - X G) x + (B - X H) y = X - C, (D - Y G) x + (E - Y H) y = Y - F. Cramer's rule solves them.
enumReason InversePoint(const nuv::TOmographicParams& a_Coefs, const TOrigins& a_Origins, const TVector& a_Target,
                        TVector& a_Source)
{
    const double dX = a_Target.dX - a_Origins.dXa;
    const double dY = a_Target.dY - a_Origins.dYa;
    const double dA = a_Coefs.dA - dX * a_Coefs.dG;
    const double dB = a_Coefs.dB - dX * a_Coefs.dH;
    const double dD = a_Coefs.dD - dY * a_Coefs.dG;
    const double dE = a_Coefs.dE - dY * a_Coefs.dH;
    const double dDeterminant = dA * dE - dB * dD;
    const TVector Source = {(dE * (dX - a_Coefs.dC) - dB * (dY - a_Coefs.dF)) / dDeterminant + a_Origins.dX,
                            (dA * (dY - a_Coefs.dF) - dD * (dX - a_Coefs.dC)) / dDeterminant + a_Origins.dY};
    if (!IsFinite(Source.dX) || !IsFinite(Source.dY))
    {
        return REASON_NOT_INVERTIBLE;
    }
    a_Source = Source;
    return REASON_NONE;
}

} // namespace judgement
