// conformal.cpp: fuzz target of the conformal conversions, inverse and fit.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"

namespace {

using namespace nuv_fuzz;
using nuv::TAffineCoefs;
using nuv::TConformalCoefs;

constexpr double Limit = 1e70;

// One rounding of sine, cosine or reciprocal and one or two of a product.
void CheckParamsToCoefs(TInput& a_Input)
{
    const TValues P = a_Input.Flag() ? a_Input.TameValues(4) : a_Input.AnyValues(4); // scale, angle, tx, ty
    TGuarded<TConformalCoefs> C;
    nuv::ConformalParamsToCoefs(P[0], P[1], P[2], P[3], *C);
    NUV_CHECK(SameBits(C->dTx, P[2]) && SameBits(C->dTy, P[3]));
    if (!InRange(P[0], Limit) || P[0] == 0.0 || !InRange(P[1], 1e20))
    {
        return;
    }
    const TLong dCos = std::cos(static_cast<TLong>(P[1]));
    const TLong dSin = std::sin(static_cast<TLong>(P[1]));
    NUV_CHECK(Within(C->dA, dCos * P[0], 8 * Eps * std::fabs(dCos * P[0])));
    NUV_CHECK(Within(C->dB, -dSin * P[0], 8 * Eps * std::fabs(dSin * P[0])));
    NUV_CHECK(Within(C->dInvA, dCos / P[0], 8 * Eps * std::fabs(dCos / P[0])));
    NUV_CHECK(Within(C->dInvB, dSin / P[0], 8 * Eps * std::fabs(dSin / P[0])));
}

void CheckCoefsToParam(TInput& a_Input)
{
    const TValues vdCoefs = a_Input.Flag() ? a_Input.TameValues(6) : a_Input.AnyValues(6);
    TGuarded<TConformalCoefs> C(vdCoefs);
    TRoom Out(4); // scale, angle, tx, ty
    double* const p = Out.Data();
    const int iResult = nuv::ConformalCoefsToParam(*C, p[0], p[1], p[2], p[3]);
    NUV_CHECK(C.Holds(vdCoefs));
    NUV_CHECK(!(Out[0] < 0.0));
    NUV_CHECK(iResult == (std::fabs(Out[0]) <= Tolerance ? nuv::RET_IMPOSSIBLE : 1));
    NUV_CHECK(SameBits(Out[2], C->dTx) && SameBits(Out[3], C->dTy));
    NUV_CHECK(IsAngle(Out[1]));
    if (iResult != 1)
    {
        NUV_CHECK(SameBits(Out[1], 0.0));
        return;
    }
    if (!InRange(C->dA, Limit) || !InRange(C->dB, Limit))
    {
        return;
    }
    // The angle is off by some units of 2 pi, which moves (A, B) by as much of the scale.
    TConformalCoefs Again;
    nuv::ConformalParamsToCoefs(Out[0], Out[1], Out[2], Out[3], Again);
    NUV_CHECK(Within(Again.dA, C->dA, 32 * Eps * Out[0]));
    NUV_CHECK(Within(Again.dB, C->dB, 32 * Eps * Out[0]));
}

// Brings images back: the record's two linear parts are inverse to 8 Eps as they are made, and each translation takes
// two products.
void CheckComposition(const TValues& a_vdParams, const TConformalCoefs& a_C, const TConformalCoefs& a_I)
{
    if (!InRange(a_vdParams, 1e30) || a_vdParams[0] == 0.0)
    {
        return;
    }
    const TLong A = a_C.dA, B = a_C.dB;
    NUV_CHECK(Within(A * a_I.dA - B * a_I.dB, 1.0L, 32 * Eps));
    NUV_CHECK(Within(A * a_I.dB + B * a_I.dA, 0.0L, 32 * Eps));
    const TLong dX = TLong(a_I.dA) * a_C.dTx + TLong(a_I.dB) * a_C.dTy + a_I.dTx;
    const TLong dY = -TLong(a_I.dB) * a_C.dTx + TLong(a_I.dA) * a_C.dTy + a_I.dTy;
    const TLong dBound = 8 * Eps * (std::fabs(a_C.dTx) + std::fabs(a_C.dTy)) * (std::fabs(a_I.dA) + std::fabs(a_I.dB));
    NUV_CHECK(Within(dX, 0.0L, dBound));
    NUV_CHECK(Within(dY, 0.0L, dBound));
}

void CheckInverse(TInput& a_Input)
{
    TGuarded<TConformalCoefs> C;
    TValues vdParams;
    if (a_Input.Flag())
    {
        C = a_Input.AnyValues(6);
    }
    else
    {
        vdParams = a_Input.TameValues(4);
        nuv::ConformalParamsToCoefs(vdParams[0], vdParams[1], vdParams[2], vdParams[3], *C);
    }
    const TValues vdCoefs = C.Fields();
    TGuarded<TConformalCoefs> I;
    nuv::ConformalCoefsToInvCoefs(*C, *I);
    NUV_CHECK(C.Holds(vdCoefs));
    NUV_CHECK(SameBits(I->dA, C->dInvA) && SameBits(I->dB, C->dInvB));
    NUV_CHECK(SameBits(I->dInvA, C->dA) && SameBits(I->dInvB, C->dB));
    if (!vdParams.empty())
    {
        CheckComposition(vdParams, *C, *I);
    }
    TGuarded<TAffineCoefs> Affine;
    nuv::ConformalCoefsToAffineCoefs(*C, *Affine);
    NUV_CHECK(C.Holds(vdCoefs));
    NUV_CHECK(Affine.Holds({C->dA, C->dB, C->dTx, -C->dB, C->dA, C->dTy}));
}

// The closed form is off by (n + 10) Eps of the target's spread T at every point, and the rounded means by n Eps of the
// coordinates they are made of.
void CheckConformalOptimum(const TPoints& a_Points, const TConformalCoefs& a_C)
{
    const TCentred S = Centre(a_Points);
    const TLong dSum = S.dSuu + S.dSvv;
    if (!(dSum >= 1e-6L) || !(S.dGreatest <= 1e6L * std::sqrt(dSum)))
    {
        return;
    }
    const TLong A = (S.dSUu + S.dSVv) / dSum;
    const TLong B = (S.dSUv - S.dSVu) / dSum;
    const TLong dBound =
        16 * Eps * (a_Points.Count() + 10) * (std::sqrt(S.dSTarget) + S.dGreatest * (1 + std::fabs(A) + std::fabs(B)));
    for (std::size_t i = 0; i < a_Points.X.Size(); ++i)
    {
        const TLong x = a_Points.X[i];
        const TLong y = a_Points.Y[i];
        const TLong u = x - S.dMeanX;
        const TLong v = y - S.dMeanY;
        NUV_CHECK(Within(a_C.dA * x + a_C.dB * y + a_C.dTx, A * u + B * v + S.dMeanXa, dBound));
        NUV_CHECK(Within(a_C.dA * y - a_C.dB * x + a_C.dTy, A * v - B * u + S.dMeanYa, dBound));
    }
}

// The sum that decides is off by n Eps of itself and by n times the square of a mean's rounding, n Eps of the
// coordinates.
void CheckSpreadTest(const TPoints& a_Points, int a_iResult)
{
    const TCentred S = Centre(a_Points);
    const TLong n = a_Points.Count();
    const TLong dMean = n * Eps * S.dGreatest;
    const TLong dSum = S.dSuu + S.dSvv;
    const TLong dError = 4 * (n * Eps * dSum + n * dMean * dMean);
    if (S.dGreatest <= 1e100L && !Within(dSum, Tolerance, dError))
    {
        NUV_CHECK(a_iResult == (dSum <= Tolerance ? nuv::RET_IMPOSSIBLE : 1));
    }
}

void CheckFit(TInput& a_Input, bool a_bTame)
{
    const std::size_t n = static_cast<std::size_t>(a_Input.Int(0, 12));
    const bool bRigid = a_Input.Flag();
    const auto Values = [&] { return a_bTame ? TameCoordinates(a_Input, n) : a_Input.AnyValues(n); };
    const TValues vdX = Values(), vdY = Values(), vdXa = Values(), vdYa = Values();
    const TPoints Points(vdX, vdY, vdXa, vdYa);
    TGuarded<TConformalCoefs> C;
    const int iResult = nuv::CalcConformalCoefs(static_cast<unsigned>(n), Points.X.Data(), Points.Y.Data(),
                                                Points.Xa.Data(), Points.Ya.Data(), bRigid, *C);
    NUV_CHECK(Points.X.Holds(vdX) && Points.Y.Holds(vdY) && Points.Xa.Holds(vdXa) && Points.Ya.Holds(vdYa));
    NUV_CHECK(iResult == 1 || iResult == nuv::RET_IMPOSSIBLE);
    NUV_CHECK(n >= 2 || iResult == nuv::RET_IMPOSSIBLE);
    if (n >= 2)
    {
        CheckSpreadTest(Points, iResult);
    }
    if (iResult != 1)
    {
        NUV_CHECK(C.IsUntouched());
        return;
    }
    if (bRigid)
    {
        NUV_CHECK(SameBits(C->dInvA, C->dA) && SameBits(C->dInvB, -C->dB));
    }
    else if (InRange(C->dA, Limit) && InRange(C->dB, Limit) && (C->dA != 0.0 || C->dB != 0.0))
    {
        const TLong dSquare = TLong(C->dA) * C->dA + TLong(C->dB) * C->dB;
        NUV_CHECK(Within(C->dInvA, C->dA / dSquare, 16 * Eps * std::fabs(C->dA / dSquare)));
        NUV_CHECK(Within(C->dInvB, -C->dB / dSquare, 16 * Eps * std::fabs(C->dB / dSquare)));
    }
    if (a_bTame)
    {
        CheckConformalOptimum(Points, *C);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_pData, std::size_t a_iSize)
{
    TInput Input(a_pData, a_iSize);
    switch (Input.Byte() % 5)
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
        CheckFit(Input, false);
        break;
    default:
        CheckFit(Input, true);
        break;
    }
    return 0;
}
