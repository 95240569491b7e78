// conformal.cpp: fuzz target of the conformal conversions, inverse and fit.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "points.h"
#include "support/trig_equation.h"

namespace {

using namespace nuv_fuzz;
using nuv::TAffineCoefs;
using nuv::TConformalCoefs;

// Products and quotients of two values in this range neither overflow nor underflow.
constexpr double Limit = 1e70;

// The errors are one rounding of a sine, a cosine or a reciprocal, and one or two of a product.
void CheckParamsToCoefs(TInput& a_Input)
{
    const TValues P = a_Input.TameOrAnyValues(4); // scale, angle, tx, ty
    TGuardedRecord<TConformalCoefs> C;
    nuv::ConformalParamsToCoefs(P[0], P[1], P[2], P[3], *C);
    NUV_CHECK(SameBits(C->dTx, P[2]) && SameBits(C->dTy, P[3]));
    if (!InRange(P[0], Limit) || P[0] == 0.0 || !InRange(P[1], 1e20))
    {
        return;
    }
    const TLong dCos = std::cos(static_cast<TLong>(P[1]));
    const TLong dSin = std::sin(static_cast<TLong>(P[1]));
    NUV_CHECK(Within(C->dA, dCos * P[0], 8 * Epsilon * std::fabs(dCos * P[0])));
    NUV_CHECK(Within(C->dB, -dSin * P[0], 8 * Epsilon * std::fabs(dSin * P[0])));
    NUV_CHECK(Within(C->dInvA, dCos / P[0], 8 * Epsilon * std::fabs(dCos / P[0])));
    NUV_CHECK(Within(C->dInvB, dSin / P[0], 8 * Epsilon * std::fabs(dSin / P[0])));
}

void CheckCoefsToParam(TInput& a_Input)
{
    const TValues vdCoefs = a_Input.TameOrAnyValues(6);
    TGuardedRecord<TConformalCoefs> C(vdCoefs);
    TGuardedArray Out = TGuardedArray::Output(4); // scale, angle, tx, ty
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
    // The angle has an error of a few units in the last place of 2 pi. This changes (A, B) by that fraction of the scale.
    TConformalCoefs Again;
    nuv::ConformalParamsToCoefs(Out[0], Out[1], Out[2], Out[3], Again);
    NUV_CHECK(Within(Again.dA, C->dA, 32 * Epsilon * Out[0]));
    NUV_CHECK(Within(Again.dB, C->dB, 32 * Epsilon * Out[0]));
}

// The inverse maps images back. The two linear parts of the record are inverse to each other within 8 Epsilon each, and a
// translation is a sum of two products.
void CheckComposition(const TValues& a_vdParams, const TConformalCoefs& a_C, const TConformalCoefs& a_I)
{
    if (!InRange(a_vdParams, 1e30) || a_vdParams[0] == 0.0)
    {
        return;
    }
    const TLong A = a_C.dA, B = a_C.dB;
    NUV_CHECK(Within(A * a_I.dA - B * a_I.dB, 1.0L, 32 * Epsilon));
    NUV_CHECK(Within(A * a_I.dB + B * a_I.dA, 0.0L, 32 * Epsilon));
    const TLong dX = TLong(a_I.dA) * a_C.dTx + TLong(a_I.dB) * a_C.dTy + a_I.dTx;
    const TLong dY = -TLong(a_I.dB) * a_C.dTx + TLong(a_I.dA) * a_C.dTy + a_I.dTy;
    const TLong dBound =
        8 * Epsilon * (std::fabs(a_C.dTx) + std::fabs(a_C.dTy)) * (std::fabs(a_I.dA) + std::fabs(a_I.dB));
    NUV_CHECK(Within(dX, 0.0L, dBound));
    NUV_CHECK(Within(dY, 0.0L, dBound));
}

void CheckInverse(TInput& a_Input)
{
    TGuardedRecord<TConformalCoefs> C;
    TValues vdParams;
    if (a_Input.Flag())
    {
        C.Set(a_Input.AnyValues(6));
    }
    else
    {
        vdParams = a_Input.TameValues(4);
        nuv::ConformalParamsToCoefs(vdParams[0], vdParams[1], vdParams[2], vdParams[3], *C);
    }
    const TValues vdCoefs = C.Fields();
    TGuardedRecord<TConformalCoefs> I;
    nuv::ConformalCoefsToInvCoefs(*C, *I);
    NUV_CHECK(C.Holds(vdCoefs));
    NUV_CHECK(SameBits(I->dA, C->dInvA) && SameBits(I->dB, C->dInvB));
    NUV_CHECK(SameBits(I->dInvA, C->dA) && SameBits(I->dInvB, C->dB));
    if (!vdParams.empty())
    {
        CheckComposition(vdParams, *C, *I);
    }
    TGuardedRecord<TAffineCoefs> Affine;
    nuv::ConformalCoefsToAffineCoefs(*C, *Affine);
    NUV_CHECK(C.Holds(vdCoefs));
    NUV_CHECK(Affine.Holds({C->dA, C->dB, C->dTx, -C->dB, C->dA, C->dTy}));
}

// Compares the fit with the closed form at every point. The fit has an error of (n + 10) Epsilon of the norm of the
// centred target, and the means one of n Epsilon of the coordinates.
void CheckConformalOptimum(const TControlPoints& a_Points, const TConformalCoefs& a_C)
{
    const TCentred Points(a_Points);
    const TLong dSpread = Points.Source.squaredNorm();
    if (!(dSpread >= 1e-6L) || !(Points.dGreatest <= 1e6L * std::sqrt(dSpread)))
    {
        return;
    }
    const Eigen::Matrix<TLong, 2, 2> Products = Points.Source.transpose() * Points.Target;
    const TLong A = (Products(0, 0) + Products(1, 1)) / dSpread;
    const TLong B = (Products(1, 0) - Products(0, 1)) / dSpread;
    const TLong dBound = 16 * Epsilon * (a_Points.Count() + 10) *
                         (Points.Target.norm() + Points.dGreatest * (1 + std::fabs(A) + std::fabs(B)));
    for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
    {
        const TLong x = a_Points.vdX[i];
        const TLong y = a_Points.vdY[i];
        const TLong u = x - Points.SourceMean(0);
        const TLong v = y - Points.SourceMean(1);
        NUV_CHECK(Within(a_C.dA * x + a_C.dB * y + a_C.dTx, A * u + B * v + Points.TargetMean(0), dBound));
        NUV_CHECK(Within(a_C.dA * y - a_C.dB * x + a_C.dTy, A * v - B * u + Points.TargetMean(1), dBound));
    }
}

// The fit fails if the spread of the source points is below the tolerance. The computed spread has an error of n Epsilon
// of itself, and of n times the square of a mean's error, which is n Epsilon of the coordinates.
void CheckSpreadTest(const TControlPoints& a_Points, int a_iResult)
{
    const TCentred Points(a_Points);
    const TLong n = a_Points.Count();
    const TLong dMeanError = n * Epsilon * Points.dGreatest;
    const TLong dSpread = Points.Source.squaredNorm();
    const TLong dError = 4 * (n * Epsilon * dSpread + n * dMeanError * dMeanError);
    if (Points.dGreatest <= 1e100L && !Within(dSpread, Tolerance, dError))
    {
        NUV_CHECK(a_iResult == (dSpread <= Tolerance ? nuv::RET_IMPOSSIBLE : 1));
    }
}

void CheckInverseFields(const TConformalCoefs& a_C, bool a_bRigid)
{
    if (a_bRigid)
    {
        NUV_CHECK(SameBits(a_C.dInvA, a_C.dA) && SameBits(a_C.dInvB, -a_C.dB));
    }
    else if (InRange(a_C.dA, Limit) && InRange(a_C.dB, Limit) && (a_C.dA != 0.0 || a_C.dB != 0.0))
    {
        const TLong dSquare = TLong(a_C.dA) * a_C.dA + TLong(a_C.dB) * a_C.dB;
        NUV_CHECK(Within(a_C.dInvA, a_C.dA / dSquare, 16 * Epsilon * std::fabs(a_C.dA / dSquare)));
        NUV_CHECK(Within(a_C.dInvB, -a_C.dB / dSquare, 16 * Epsilon * std::fabs(a_C.dB / dSquare)));
    }
}

void CheckFit(TInput& a_Input, bool a_bTame)
{
    const std::size_t n = a_Input.Size(0, 12);
    const bool bRigid = a_Input.Flag();
    const TControlPoints Points = ReadPoints(a_Input, n, a_bTame);
    const TGuardedPoints Room = Guarded(Points);
    TGuardedRecord<TConformalCoefs> C;
    const int iResult = nuv::CalcConformalCoefs(static_cast<unsigned>(n), Room.X.Data(), Room.Y.Data(), Room.Xa.Data(),
                                                Room.Ya.Data(), bRigid, *C);
    NUV_CHECK(Hold(Room, Points) && C.IsIntact());
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
    CheckInverseFields(*C, bRigid);
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
