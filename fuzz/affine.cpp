// affine.cpp: fuzz target of the affine conversions, inverse, backward mapping and fit.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"

namespace {

using namespace nuv_fuzz;
using nuv::TAffineCoefs;

constexpr double Limit = 1e70; // products and quotients of two such values neither overflow nor underflow

// The inputs of the conversions: coefficients or parameters.
TValues SixValues(TInput& a_Input)
{
    return a_Input.Flag() ? a_Input.TameValues(6) : a_Input.AnyValues(6);
}

// Every product is rounded once or twice, and tan, cos and sin to a unit: 8 Eps covers it.
void CheckParamsToCoefs(TInput& a_Input)
{
    const TValues P = SixValues(a_Input); // sx, sy, phi, theta, tx, ty
    TGuarded<TAffineCoefs> Coefs;
    nuv::AffineParamsToCoefs(P[0], P[1], P[2], P[3], P[4], P[5], *Coefs);
    NUV_CHECK(SameBits(Coefs->dC, P[4]) && SameBits(Coefs->dF, P[5]));
    if (!InRange(P[0], Limit) || !InRange(P[1], Limit) || !InRange(P[2], 1e20) || !InRange(P[3], 1e20))
    {
        return;
    }
    const TLong dCos = std::cos(static_cast<TLong>(P[3]));
    const TLong dSin = std::sin(static_cast<TLong>(P[3]));
    const TLong dTan = std::tan(static_cast<TLong>(P[2]));
    const TLong dP = dCos * P[1];
    const TLong dQ = dSin * P[1];
    NUV_CHECK(Within(Coefs->dA, dCos * P[0], 8 * Eps * std::fabs(dCos * P[0])));
    NUV_CHECK(Within(Coefs->dD, dSin * P[0], 8 * Eps * std::fabs(dSin * P[0])));
    NUV_CHECK(Within(Coefs->dB, dP * dTan - dQ, 8 * Eps * (std::fabs(dP * dTan) + std::fabs(dQ))));
    NUV_CHECK(Within(Coefs->dE, dQ * dTan + dP, 8 * Eps * (std::fabs(dQ * dTan) + std::fabs(dP))));
}

// With t = tan(phi): the angles are off by some units of 2 pi, which moves (a, d) by as much of sx and (b, e) by as
// much of sy (1 + t^2); sy and sy t are sums of two products of (b, e) with a unit vector.
void CheckParamsGiveCoefsBack(const TAffineCoefs& a_Coefs, const TRoom& a_Out)
{
    TAffineCoefs Again;
    nuv::AffineParamsToCoefs(a_Out[0], a_Out[1], a_Out[2], a_Out[3], a_Out[4], a_Out[5], Again);
    const double t = std::tan(a_Out[2]);
    const double dBoundAD = 32 * Eps * a_Out[0];
    const double dBoundBE =
        32 * Eps *
        ((std::fabs(a_Coefs.dB) + std::fabs(a_Coefs.dE)) * (1 + std::fabs(t)) + std::fabs(a_Out[1]) * (1 + t * t));
    NUV_CHECK(Within(Again.dA, a_Coefs.dA, dBoundAD));
    NUV_CHECK(Within(Again.dD, a_Coefs.dD, dBoundAD));
    NUV_CHECK(Within(Again.dB, a_Coefs.dB, dBoundBE));
    NUV_CHECK(Within(Again.dE, a_Coefs.dE, dBoundBE));
}

void CheckCoefsToParam(TInput& a_Input)
{
    const TValues vdCoefs = SixValues(a_Input);
    TGuarded<TAffineCoefs> Coefs(vdCoefs);
    TRoom Out(6); // sx, sy, phi, theta, tx, ty
    double* const p = Out.Data();
    const int iResult = nuv::AffineCoefsToParam(*Coefs, p[0], p[1], p[2], p[3], p[4], p[5]);
    NUV_CHECK(Coefs.Holds(vdCoefs));
    NUV_CHECK(iResult == 1 || iResult == nuv::RET_IMPOSSIBLE);
    NUV_CHECK(!(Out[0] < 0.0));
    if (std::fabs(Out[0]) <= Tolerance)
    {
        NUV_CHECK(iResult == nuv::RET_IMPOSSIBLE);
        NUV_CHECK(Out.UntouchedFrom(1));
        return;
    }
    NUV_CHECK(IsAngle(Out[3]));
    NUV_CHECK(!SameBits(Out[1], Untouched));
    if (std::fabs(Out[1]) <= Tolerance)
    {
        NUV_CHECK(iResult == nuv::RET_IMPOSSIBLE);
        NUV_CHECK(SameBits(Out[2], Untouched) && Out.UntouchedFrom(4));
        return;
    }
    NUV_CHECK(iResult == 1);
    NUV_CHECK(SameBits(Out[4], Coefs->dC) && SameBits(Out[5], Coefs->dF));
    NUV_CHECK(!(std::fabs(Out[2]) > TwoPi / 4));
    const TValues vdLinear = {Coefs->dA, Coefs->dB, Coefs->dD, Coefs->dE};
    if (InRange(vdLinear, Limit) && InRange(Out[0], Limit) && InRange(Out[1], Limit))
    {
        CheckParamsGiveCoefsBack(*Coefs, Out);
    }
}

// The determinant is off by Eps (|ae| + |db|), the sum being kappa times the determinant, and so are the elements of the
// inverse beside a few roundings. Skipped where no digit of the determinant is right.
struct TDeterminant
{
    TLong dValue;
    TLong dRelativeError;
    bool bKnown;

    explicit TDeterminant(const TAffineCoefs& a_C)
    {
        const TLong dFirst = static_cast<TLong>(a_C.dA) * a_C.dE;
        const TLong dSecond = static_cast<TLong>(a_C.dD) * a_C.dB;
        dValue = dFirst - dSecond;
        dRelativeError = 4 * Eps * ((std::fabs(dFirst) + std::fabs(dSecond)) / std::fabs(dValue) + 4);
        bKnown = dValue != 0.0L && dRelativeError < 0.1L;
    }
};

void CheckInverse(TInput& a_Input)
{
    const TValues vdCoefs = SixValues(a_Input);
    TGuarded<TAffineCoefs> C(vdCoefs);
    TGuarded<TAffineCoefs> I;
    const int iResult = nuv::AffineCoefsToInvCoefs(*C, *I);
    NUV_CHECK(C.Holds(vdCoefs));
    const double dDet = C->dA * C->dE - C->dD * C->dB;
    NUV_CHECK(iResult == (std::fabs(dDet) <= Tolerance ? nuv::RET_IMPOSSIBLE : 1));
    if (iResult != 1)
    {
        NUV_CHECK(I.IsUntouched());
        return;
    }
    const TDeterminant Det(*C);
    if (!InRange(vdCoefs, Limit) || !Det.bKnown)
    {
        return;
    }
    const TLong a = C->dA, b = C->dB, c = C->dC, d = C->dD, e = C->dE, f = C->dF;
    const TLong dR = Det.dRelativeError / std::fabs(Det.dValue);
    // The linear parts multiply to the identity, and the inverse brings the image of the origin back.
    NUV_CHECK(Within(a * I->dA + b * I->dD, 1.0L, dR * (std::fabs(a * e) + std::fabs(b * d))));
    NUV_CHECK(Within(a * I->dB + b * I->dE, 0.0L, 2 * dR * std::fabs(a * b)));
    NUV_CHECK(Within(d * I->dA + e * I->dD, 0.0L, 2 * dR * std::fabs(d * e)));
    NUV_CHECK(Within(d * I->dB + e * I->dE, 1.0L, dR * (std::fabs(a * e) + std::fabs(b * d))));
    NUV_CHECK(Within(I->dA * c + I->dB * f + I->dC, 0.0L, 4 * dR * (std::fabs(f * b) + std::fabs(e * c))));
    NUV_CHECK(Within(I->dD * c + I->dE * f + I->dF, 0.0L, 4 * dR * (std::fabs(d * c) + std::fabs(f * a))));
}

void CheckUntransform(TInput& a_Input)
{
    const TValues vdCoefs = SixValues(a_Input);
    TGuarded<TAffineCoefs> C(vdCoefs);
    const double dXa = a_Input.Any();
    const double dYa = a_Input.Any();
    TRoom Out(2);
    double* const p = Out.Data();
    const bool bReported = Reports(443, [&] { nuv::AffineUntransform(*C, dXa, dYa, p[0], p[1]); });
    NUV_CHECK(C.Holds(vdCoefs));
    const double dB1 = dXa - C->dC;
    const double dB2 = dYa - C->dF;
    const bool bSingular = std::fabs(C->dA * C->dE - C->dB * C->dD) <= Tolerance;
    const bool bConsistent = std::fabs(C->dE * dB1 - C->dB * dB2) <= Tolerance;
    NUV_CHECK(bReported == (bSingular && !bConsistent));
    if (bReported)
    {
        NUV_CHECK(Out.UntouchedFrom(0));
        return;
    }
    if (bSingular)
    {
        NUV_CHECK(SameBits(Out[0], 0.0) && SameBits(Out[1], 0.0));
        return;
    }
    const TDeterminant Det(*C);
    if (!InRange(vdCoefs, Limit) || !InRange(dB1, Limit) || !InRange(dB2, Limit) || !Det.bKnown)
    {
        return;
    }
    const TLong dR = 2 * Det.dRelativeError / std::fabs(Det.dValue);
    const TLong dErrorX = dR * (std::fabs(TLong(C->dE) * dB1) + std::fabs(TLong(C->dB) * dB2));
    const TLong dErrorY = dR * (std::fabs(TLong(C->dA) * dB2) + std::fabs(TLong(C->dD) * dB1));
    NUV_CHECK(Within(TLong(C->dA) * Out[0] + TLong(C->dB) * Out[1], dB1,
                     std::fabs(C->dA) * dErrorX + std::fabs(C->dB) * dErrorY));
    NUV_CHECK(Within(TLong(C->dD) * Out[0] + TLong(C->dE) * Out[1], dB2,
                     std::fabs(C->dD) * dErrorX + std::fabs(C->dE) * dErrorY));
}

// The least-squares solution of the centred normal equations in extended precision, beside the fit at every point. With
// the eigenvalues l <= g of the 2 x 2 matrix, kappa = g/l and the target's spread T, the normal equations are off by
// (n + 3) Eps (g |s| + sqrt(g) T), the solution s (at most T/sqrt(l)) by that over l, and a point by that times
// sqrt(g): (n + 3) Eps (kappa^1.5 + kappa) T. Moving back from the centred frame rounds the terms of the translation.
void CheckAffineOptimum(const TPoints& a_Points, const TAffineCoefs& a_C)
{
    const TCentred S = Centre(a_Points);
    const TLong dRoot = std::hypot(S.dSuu - S.dSvv, 2 * S.dSuv);
    const TLong dGreater = (S.dSuu + S.dSvv + dRoot) / 2;
    const TLong dDet = S.dSuu * S.dSvv - S.dSuv * S.dSuv;
    const TLong dLess = dDet / dGreater;
    if (!(dLess >= 1e-6L) || !(dGreater <= 1e4L * dLess) || !(S.dGreatest <= 1e7L) ||
        !(S.dGreatest <= 1e6L * std::sqrt(dLess)))
    {
        return;
    }
    const TLong dKappa = dGreater / dLess;
    const TLong a = (S.dSUu * S.dSvv - S.dSUv * S.dSuv) / dDet;
    const TLong b = (S.dSUv * S.dSuu - S.dSUu * S.dSuv) / dDet;
    const TLong d = (S.dSVu * S.dSvv - S.dSVv * S.dSuv) / dDet;
    const TLong e = (S.dSVv * S.dSuu - S.dSVu * S.dSuv) / dDet;
    const TLong dT = std::sqrt(S.dSTarget);
    const TLong dMoved = std::fabs(S.dMeanXa) + std::fabs(S.dMeanYa) +
                         (std::fabs(a) + std::fabs(d)) * std::fabs(S.dMeanX) +
                         (std::fabs(b) + std::fabs(e)) * std::fabs(S.dMeanY);
    const TLong dBound = 16 * Eps * ((a_Points.Count() + 10) * dKappa * std::sqrt(dKappa) * dT + dMoved) + 1e-290L;
    for (std::size_t i = 0; i < a_Points.X.Size(); ++i)
    {
        const TLong x = a_Points.X[i];
        const TLong y = a_Points.Y[i];
        NUV_CHECK(
            Within(a_C.dA * x + a_C.dB * y + a_C.dC, a * (x - S.dMeanX) + b * (y - S.dMeanY) + S.dMeanXa, dBound));
        NUV_CHECK(
            Within(a_C.dD * x + a_C.dE * y + a_C.dF, d * (x - S.dMeanX) + e * (y - S.dMeanY) + S.dMeanYa, dBound));
    }
}

void CheckFit(TInput& a_Input, bool a_bTame)
{
    const std::size_t n = static_cast<std::size_t>(a_Input.Int(0, 12));
    const auto Values = [&] { return a_bTame ? TameCoordinates(a_Input, n) : a_Input.AnyValues(n); };
    const TValues vdX = Values(), vdY = Values(), vdXa = Values(), vdYa = Values();
    const TPoints Points(vdX, vdY, vdXa, vdYa);
    TGuarded<TAffineCoefs> C;
    const int iResult = nuv::CalcAffineCoefs(static_cast<unsigned>(n), Points.X.Data(), Points.Y.Data(),
                                             Points.Xa.Data(), Points.Ya.Data(), *C);
    NUV_CHECK(Points.X.Holds(vdX) && Points.Y.Holds(vdY) && Points.Xa.Holds(vdXa) && Points.Ya.Holds(vdYa));
    NUV_CHECK(iResult == (n < 3 ? nuv::RET_IMPOSSIBLE : 1));
    if (n < 3)
    {
        NUV_CHECK(C.IsUntouched());
    }
    else if (a_bTame)
    {
        CheckAffineOptimum(Points, *C);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_pData, std::size_t a_iSize)
{
    TInput Input(a_pData, a_iSize);
    switch (Input.Byte() % 6)
    {
    case 0:
        CheckParamsToCoefs(Input);
        break;
    case 1:
        CheckCoefsToParam(Input);
        break;
    case 2:
        CheckInverse(Input);
        break;
    case 3:
        CheckUntransform(Input);
        break;
    case 4:
        CheckFit(Input, false);
        break;
    default:
        CheckFit(Input, true);
        break;
    }
    return 0;
}
