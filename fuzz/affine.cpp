// affine.cpp: fuzz target of the affine conversions, inverse, backward mapping and fit.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "points.h"
#include "support/trig_equation.h"

namespace {

using namespace nuv_fuzz;
using nuv::TAffineCoefs;

// Products and quotients of two values in this range neither overflow nor underflow.
constexpr double Limit = 1e70;

// The errors of one or two products and of tan, cos and sin, each below one unit in the last place, sum to less than
// 8 Epsilon.
void CheckParamsToCoefs(TInput& a_Input)
{
    const TValues P = a_Input.TameOrAnyValues(6); // sx, sy, phi, theta, tx, ty
    TGuardedRecord<TAffineCoefs> Coefs;
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
    NUV_CHECK(Within(Coefs->dA, dCos * P[0], 8 * Epsilon * std::fabs(dCos * P[0])));
    NUV_CHECK(Within(Coefs->dD, dSin * P[0], 8 * Epsilon * std::fabs(dSin * P[0])));
    NUV_CHECK(Within(Coefs->dB, dP * dTan - dQ, 8 * Epsilon * (std::fabs(dP * dTan) + std::fabs(dQ))));
    NUV_CHECK(Within(Coefs->dE, dQ * dTan + dP, 8 * Epsilon * (std::fabs(dQ * dTan) + std::fabs(dP))));
}

// Let t = tan(phi). The angles have an error of a few units in the last place of 2 pi. This changes (a, d) by that
// fraction of sx, and (b, e) by that fraction of sy (1 + t^2). sy and sy t are sums of two products of (b, e) and a unit
// vector.
void CheckParamsGiveCoefsBack(const TAffineCoefs& a_Coefs, const TGuardedArray& a_Out)
{
    TAffineCoefs Again;
    nuv::AffineParamsToCoefs(a_Out[0], a_Out[1], a_Out[2], a_Out[3], a_Out[4], a_Out[5], Again);
    const double t = std::tan(a_Out[2]);
    const double dBoundAD = 32 * Epsilon * a_Out[0];
    const double dBoundBE =
        32 * Epsilon *
        ((std::fabs(a_Coefs.dB) + std::fabs(a_Coefs.dE)) * (1 + std::fabs(t)) + std::fabs(a_Out[1]) * (1 + t * t));
    NUV_CHECK(Within(Again.dA, a_Coefs.dA, dBoundAD));
    NUV_CHECK(Within(Again.dD, a_Coefs.dD, dBoundAD));
    NUV_CHECK(Within(Again.dB, a_Coefs.dB, dBoundBE));
    NUV_CHECK(Within(Again.dE, a_Coefs.dE, dBoundBE));
}

void CheckCoefsToParam(TInput& a_Input)
{
    const TValues vdCoefs = a_Input.TameOrAnyValues(6);
    TGuardedRecord<TAffineCoefs> Coefs(vdCoefs);
    TGuardedArray Out = TGuardedArray::Output(6); // sx, sy, phi, theta, tx, ty
    double* const p = Out.Data();
    const int iResult = nuv::AffineCoefsToParam(*Coefs, p[0], p[1], p[2], p[3], p[4], p[5]);
    NUV_CHECK(Coefs.Holds(vdCoefs));
    NUV_CHECK(iResult == 1 || iResult == nuv::RET_IMPOSSIBLE);
    NUV_CHECK(!(Out[0] < 0.0));
    if (std::fabs(Out[0]) <= Tolerance)
    {
        NUV_CHECK(iResult == nuv::RET_IMPOSSIBLE);
        NUV_CHECK(Out.IsUntouchedFrom(1));
        return;
    }
    NUV_CHECK(IsAngle(Out[3]));
    NUV_CHECK(!SameBits(Out[1], Untouched));
    if (std::fabs(Out[1]) <= Tolerance)
    {
        NUV_CHECK(iResult == nuv::RET_IMPOSSIBLE);
        NUV_CHECK(SameBits(Out[2], Untouched) && Out.IsUntouchedFrom(4));
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

// The determinant ae - db has an error of Epsilon (|ae| + |db|). The elements of the inverse have the same relative
// error and a few roundings more. bKnown is false where no digit of the determinant is certain.
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
        dRelativeError = 4 * Epsilon * ((std::fabs(dFirst) + std::fabs(dSecond)) / std::fabs(dValue) + 4);
        bKnown = dValue != 0.0L && dRelativeError < 0.1L;
    }
};

void CheckProductIsIdentity(const TAffineCoefs& a_C, const TAffineCoefs& a_I)
{
    const TDeterminant Det(a_C);
    if (!Det.bKnown)
    {
        return;
    }
    const TLong a = a_C.dA, b = a_C.dB, c = a_C.dC, d = a_C.dD, e = a_C.dE, f = a_C.dF;
    const TLong dR = Det.dRelativeError / std::fabs(Det.dValue);
    // The product of the linear parts is the identity. The inverse maps the image of the origin to the origin.
    NUV_CHECK(Within(a * a_I.dA + b * a_I.dD, 1.0L, dR * (std::fabs(a * e) + std::fabs(b * d))));
    NUV_CHECK(Within(a * a_I.dB + b * a_I.dE, 0.0L, 2 * dR * std::fabs(a * b)));
    NUV_CHECK(Within(d * a_I.dA + e * a_I.dD, 0.0L, 2 * dR * std::fabs(d * e)));
    NUV_CHECK(Within(d * a_I.dB + e * a_I.dE, 1.0L, dR * (std::fabs(a * e) + std::fabs(b * d))));
    NUV_CHECK(Within(a_I.dA * c + a_I.dB * f + a_I.dC, 0.0L, 4 * dR * (std::fabs(f * b) + std::fabs(e * c))));
    NUV_CHECK(Within(a_I.dD * c + a_I.dE * f + a_I.dF, 0.0L, 4 * dR * (std::fabs(d * c) + std::fabs(f * a))));
}

void CheckInverse(TInput& a_Input)
{
    const TValues vdCoefs = a_Input.TameOrAnyValues(6);
    TGuardedRecord<TAffineCoefs> C(vdCoefs);
    TGuardedRecord<TAffineCoefs> I;
    const int iResult = nuv::AffineCoefsToInvCoefs(*C, *I);
    NUV_CHECK(C.Holds(vdCoefs));
    const double dDet = C->dA * C->dE - C->dD * C->dB;
    NUV_CHECK(iResult == (std::fabs(dDet) <= Tolerance ? nuv::RET_IMPOSSIBLE : 1));
    if (iResult != 1)
    {
        NUV_CHECK(I.IsUntouched());
        return;
    }
    if (InRange(vdCoefs, Limit))
    {
        CheckProductIsIdentity(*C, *I);
    }
}

// a_Out is the point whose image, without the translation, is (a_dB1, a_dB2).
void CheckMapsBack(const TAffineCoefs& a_C, const TGuardedArray& a_Out, double a_dB1, double a_dB2)
{
    const TDeterminant Det(a_C);
    if (!Det.bKnown)
    {
        return;
    }
    const TLong dR = 2 * Det.dRelativeError / std::fabs(Det.dValue);
    const TLong dErrorX = dR * (std::fabs(TLong(a_C.dE) * a_dB1) + std::fabs(TLong(a_C.dB) * a_dB2));
    const TLong dErrorY = dR * (std::fabs(TLong(a_C.dA) * a_dB2) + std::fabs(TLong(a_C.dD) * a_dB1));
    NUV_CHECK(Within(TLong(a_C.dA) * a_Out[0] + TLong(a_C.dB) * a_Out[1], a_dB1,
                     std::fabs(a_C.dA) * dErrorX + std::fabs(a_C.dB) * dErrorY));
    NUV_CHECK(Within(TLong(a_C.dD) * a_Out[0] + TLong(a_C.dE) * a_Out[1], a_dB2,
                     std::fabs(a_C.dD) * dErrorX + std::fabs(a_C.dE) * dErrorY));
}

void CheckUntransform(TInput& a_Input)
{
    const TValues vdCoefs = a_Input.TameOrAnyValues(6);
    TGuardedRecord<TAffineCoefs> C(vdCoefs);
    const double dXa = a_Input.Any();
    const double dYa = a_Input.Any();
    TGuardedArray Out = TGuardedArray::Output(2);
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
        NUV_CHECK(Out.IsUntouchedFrom(0));
        return;
    }
    if (bSingular)
    {
        NUV_CHECK(SameBits(Out[0], 0.0) && SameBits(Out[1], 0.0));
        return;
    }
    if (InRange(vdCoefs, Limit) && InRange(dB1, Limit) && InRange(dB2, Limit))
    {
        CheckMapsBack(*C, Out, dB1, dB2);
    }
}

// Compares the fit with the least-squares solution of the centred normal equations at every point. Let l <= g be the
// eigenvalues of the 2 x 2 matrix, kappa = g/l, T the norm of the centred target, and s the solution (|s| <= T/sqrt(l)).
// The normal equations have an error of (n + 3) Epsilon (g |s| + sqrt(g) T). Divided by l this is the error of s, and
// multiplied by sqrt(g) that of a point: (n + 3) Epsilon (kappa^1.5 + kappa) T. The translation adds the rounding of
// its terms.
void CheckAffineOptimum(const TControlPoints& a_Points, const TAffineCoefs& a_C)
{
    const TCentred Points(a_Points);
    const Eigen::Matrix<TLong, 2, 2> Normal = Points.Source.transpose() * Points.Source;
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix<TLong, 2, 2> > Solver(Normal);
    const TLong dLess = Solver.eigenvalues()(0);
    const TLong dKappa = Solver.eigenvalues()(1) / dLess;
    if (!(dLess >= 1e-6L) || !(dKappa <= 1e4L) || !(Points.dGreatest <= 1e7L) ||
        !(Points.dGreatest <= 1e6L * std::sqrt(dLess)))
    {
        return;
    }
    const Eigen::Matrix<TLong, 2, 2> Linear = Normal.inverse() * (Points.Source.transpose() * Points.Target);
    const TLong dMoved = Points.TargetMean.cwiseAbs().sum() + (Points.SourceMean.cwiseAbs() * Linear.cwiseAbs()).sum();
    const TLong dBound =
        16 * Epsilon * ((a_Points.Count() + 10) * dKappa * std::sqrt(dKappa) * Points.Target.norm() + dMoved) + 1e-290L;
    const TPairs Expected = (Points.Source * Linear).rowwise() + Points.TargetMean;
    for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
    {
        const TLong x = a_Points.vdX[i];
        const TLong y = a_Points.vdY[i];
        const auto iRow = static_cast<Eigen::Index>(i);
        NUV_CHECK(Within(a_C.dA * x + a_C.dB * y + a_C.dC, Expected(iRow, 0), dBound));
        NUV_CHECK(Within(a_C.dD * x + a_C.dE * y + a_C.dF, Expected(iRow, 1), dBound));
    }
}

void CheckFit(TInput& a_Input, bool a_bTame)
{
    const TControlPoints Points = ReadPoints(a_Input, a_Input.Size(0, 12), a_bTame);
    const TGuardedPoints Room = Guarded(Points);
    TGuardedRecord<TAffineCoefs> C;
    const int iResult = nuv::CalcAffineCoefs(static_cast<unsigned>(Points.Count()), Room.X.Data(), Room.Y.Data(),
                                             Room.Xa.Data(), Room.Ya.Data(), *C);
    NUV_CHECK(Hold(Room, Points) && C.IsIntact());
    NUV_CHECK(iResult == (Points.Count() < 3 ? nuv::RET_IMPOSSIBLE : 1));
    if (Points.Count() < 3)
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
