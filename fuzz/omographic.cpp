// omographic.cpp: fuzz target of the omographic fit and of the choice among the kinds of transformation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "linear.h"

#include <array>

namespace {

using namespace nuv_fuzz;
using nuv::enumMethodUsed;
using nuv::TAffineCoefs;
using nuv::TConformalCoefs;
using nuv::TOmographicParams;
using TEight = std::array<TLong, 8>;

// One observation: a row and its value.
struct TRow
{
    TEight vdRow;
    TLong dValue;
};

// The two equations of a point: multiplied out at the first step, the derivatives and residuals at a_P later.
std::array<TRow, 2> RowsOf(bool a_bFirst, const TEight& a_P, TLong x, TLong y, TLong X, TLong Y)
{
    if (a_bFirst)
    {
        return {{{{x, y, 1, 0, 0, 0, -X * x, -X * y}, X}, {{0, 0, 0, x, y, 1, -Y * x, -Y * y}, Y}}};
    }
    const TLong W = a_P[6] * x + a_P[7] * y + 1;
    const TLong dX = (a_P[0] * x + a_P[1] * y + a_P[2]) / W;
    const TLong dY = (a_P[3] * x + a_P[4] * y + a_P[5]) / W;
    return {{{{x / W, y / W, 1 / W, 0, 0, 0, -x / W * dX, -y / W * dX}, X - dX},
             {{0, 0, 0, x / W, y / W, 1 / W, -x / W * dY, -y / W * dY}, Y - dY}}};
}

// The fit in extended precision: the same steps, solved by elimination. a_dCondition receives the greatest product of
// the norms of a step's normal matrix and of its inverse. False where a step cannot be solved or where the end of the
// iteration is so near to its threshold that rounding decides.
bool ReferenceFit(const TPoints& a_Points, TEight& a_P, TLong& a_dCondition)
{
    a_dCondition = 0.0L;
    for (int iStep = 0; iStep <= 4; ++iStep)
    {
        TSquare<TLong> N(8);
        TEight vdU = {};
        for (std::size_t i = 0; i < a_Points.X.Size(); ++i)
        {
            for (const TRow& Row :
                 RowsOf(iStep == 0, a_P, a_Points.X[i], a_Points.Y[i], a_Points.Xa[i], a_Points.Ya[i]))
            {
                for (std::size_t j = 0; j < 8; ++j)
                {
                    vdU[j] += Row.vdRow[j] * Row.dValue;
                    for (std::size_t k = 0; k < 8; ++k)
                    {
                        N.At(j, k) += Row.vdRow[j] * Row.vdRow[k];
                    }
                }
            }
        }
        const TLong dNorm = N.Norm();
        if (!Invert(N))
        {
            return false;
        }
        a_dCondition = std::max(a_dCondition, dNorm * N.Norm());
        TLong dGreatest = 0.0L;
        for (std::size_t j = 0; j < 8; ++j)
        {
            TLong dCorrection = 0.0L;
            for (std::size_t k = 0; k < 8; ++k)
            {
                dCorrection += N.At(j, k) * vdU[k];
            }
            a_P[j] = iStep == 0 ? dCorrection : a_P[j] + dCorrection;
            if (!std::isfinite(dCorrection))
            {
                return false;
            }
            dGreatest = std::max(dGreatest, std::fabs(dCorrection));
        }
        if (iStep > 0 && Within(dGreatest, 1e-8L, 1e-10L))
        {
            return false;
        }
        if (iStep > 0 && dGreatest < 1e-8L)
        {
            return true;
        }
    }
    return true;
}

// Points of a transformation whose denominator is 1/2 or more, some off it, without a wild arrangement. Coordinates of
// size 1.
TPoints TamePoints(TInput& a_Input)
{
    const std::size_t n = static_cast<std::size_t>(a_Input.Int(4, 12));
    TEight P;
    for (TLong& dCoefficient : P)
    {
        dCoefficient = a_Input.Int(-1000, 1000) / 500.0;
    }
    P[6] /= 8;
    P[7] /= 8;
    const TLong dNoise = a_Input.Flag() ? 0.0L : 1e-2L / (1 << a_Input.Int(0, 15));
    const double dCorners[2][4] = {{-1, 1, 1, -1}, {-1, -1, 1, 1}};
    std::array<TValues, 4> Columns;
    for (std::size_t i = 0; i < n; ++i)
    {
        double x = a_Input.Int(-1000, 1000) / 1000.0;
        double y = a_Input.Int(-1000, 1000) / 1000.0;
        if (i < 4)
        {
            x = dCorners[0][i] + x / 4;
            y = dCorners[1][i] + y / 4;
        }
        const TLong W = P[6] * x + P[7] * y + 1;
        const TLong X = (P[0] * x + P[1] * y + P[2]) / W + dNoise * a_Input.Int(-100, 100) / 100;
        const TLong Y = (P[3] * x + P[4] * y + P[5]) / W + dNoise * a_Input.Int(-100, 100) / 100;
        Columns[0].push_back(x);
        Columns[1].push_back(y);
        Columns[2].push_back(static_cast<double>(X));
        Columns[3].push_back(static_cast<double>(Y));
    }
    return TPoints(Columns[0], Columns[1], Columns[2], Columns[3]);
}

TPoints AnyPoints(TInput& a_Input, std::size_t a_iLeast)
{
    const std::size_t n = static_cast<std::size_t>(a_Input.Int(static_cast<int>(a_iLeast), 10));
    const bool bTame = a_Input.Flag();
    const auto Values = [&] { return bTame ? TameCoordinates(a_Input, n) : a_Input.AnyValues(n); };
    const TValues vdX = Values(), vdY = Values(), vdXa = Values(), vdYa = Values();
    return TPoints(vdX, vdY, vdXa, vdYa);
}

int Fit(const TPoints& a_Points, TOmographicParams& a_Params)
{
    return nuv::CalcOmographicCoefs(a_Points.Count(), a_Points.X.Data(), a_Points.Y.Data(), a_Points.Xa.Data(),
                                    a_Points.Ya.Data(), a_Params);
}

// Every step's correction is off by about kappa Eps of the coefficients, and the later steps take up what the earlier
// ones left. The numbers here are of size 1, and 8 unknowns times n points are summed.
void CheckTameFit(TInput& a_Input)
{
    const TPoints Points = TamePoints(a_Input);
    TGuarded<TOmographicParams> Params;
    const int iResult = Fit(Points, *Params);
    TEight P = {};
    TLong dCondition;
    if (!ReferenceFit(Points, P, dCondition) || !(dCondition <= 1e10L))
    {
        return;
    }
    NUV_CHECK(iResult == 1);
    TLong dSize = 1.0L;
    for (TLong dCoefficient : P)
    {
        dSize = std::max(dSize, std::fabs(dCoefficient));
    }
    const TValues vdFields = Params.Fields();
    for (std::size_t j = 0; j < 8; ++j)
    {
        NUV_CHECK(Within(vdFields[j], P[j], 64 * Eps * (Points.Count() + 8) * dCondition * dSize));
    }
}

// The right-hand side of the linear equations, summed in the order of the rows: what a fit that fails leaves behind.
TValues LinearRightHandSide(const TPoints& a_Points)
{
    TValues vdU(8);
    for (std::size_t i = 0; i < a_Points.X.Size(); ++i)
    {
        const double x = a_Points.X[i], y = a_Points.Y[i], X = a_Points.Xa[i], Y = a_Points.Ya[i];
        const double vdRows[2][9] = {{x, y, 1, 0, 0, 0, -(X * x), -(X * y), X},
                                     {0, 0, 0, x, y, 1, -(Y * x), -(Y * y), Y}};
        for (const double* vdRow : vdRows)
        {
            for (std::size_t j = 0; j < 8; ++j)
            {
                vdU[j] = vdU[j] + vdRow[j] * vdRow[8];
            }
        }
    }
    return vdU;
}

void CheckAnyFit(TInput& a_Input)
{
    const TPoints Points = AnyPoints(a_Input, 0);
    TGuarded<TOmographicParams> Params;
    const int iResult = Fit(Points, *Params);
    NUV_CHECK(iResult == 1 || iResult == nuv::RET_INDETERMINATE);
    if (Points.Count() < 4)
    {
        NUV_CHECK(iResult == nuv::RET_INDETERMINATE && Params.IsUntouched());
    }
    else if (iResult != 1)
    {
        NUV_CHECK(Params.Holds(LinearRightHandSide(Points)));
    }
    const TValues vdAffine = a_Input.AnyValues(6);
    TGuarded<TAffineCoefs> Affine(vdAffine);
    TGuarded<TOmographicParams> FromAffine;
    nuv::AffineCoefsToOmographicCoefs(*Affine, *FromAffine);
    TValues vdEight = vdAffine;
    vdEight.resize(8, 0.0);
    NUV_CHECK(FromAffine.Holds(vdEight) && Affine.Holds(vdAffine));
}

bool IsFinite(const TValues& a_vdValues)
{
    return std::all_of(a_vdValues.begin(), a_vdValues.end(), [](double a_dValue) { return std::isfinite(a_dValue); });
}

// What the choice must come to, each kind being fitted by itself.
struct TChoice
{
    bool bFound = false;
    enumMethodUsed Used = nuv::METHOD_CONFORMAL;
    TValues vdParams = TValues(8, Untouched);
};

bool ChooseOmographic(const TPoints& a_Points, TChoice& a_Choice)
{
    TGuarded<TOmographicParams> Params;
    const int iResult = Fit(a_Points, *Params);
    a_Choice.vdParams = Params.Fields();
    a_Choice.Used = nuv::METHOD_OMOGRAPHIC;
    return iResult == 1 && IsFinite(a_Choice.vdParams);
}

bool ChooseAffine(const TPoints& a_Points, TChoice& a_Choice)
{
    TAffineCoefs C;
    const int iResult = nuv::CalcAffineCoefs(static_cast<unsigned>(a_Points.Count()), a_Points.X.Data(),
                                             a_Points.Y.Data(), a_Points.Xa.Data(), a_Points.Ya.Data(), C);
    if (iResult != 1 || std::fabs(C.dE * C.dA - C.dD * C.dB) <= Tolerance)
    {
        return false;
    }
    a_Choice.vdParams = {C.dA, C.dB, C.dC, C.dD, C.dE, C.dF, 0.0, 0.0};
    a_Choice.Used = nuv::METHOD_AFFINE;
    return true;
}

bool ChooseConformal(const TPoints& a_Points, bool a_bSameOrientation, TChoice& a_Choice)
{
    TValues vdYa = a_Points.Ya.Values();
    for (double& dY : vdYa)
    {
        dY = a_bSameOrientation ? dY : -dY;
    }
    TConformalCoefs C;
    if (nuv::CalcConformalCoefs(static_cast<unsigned>(a_Points.Count()), a_Points.X.Data(), a_Points.Y.Data(),
                                a_Points.Xa.Data(), vdYa.data(), false, C) != 1)
    {
        return false;
    }
    a_Choice.vdParams = {C.dA, C.dB, C.dTx, C.dB, -C.dA, -C.dTy, 0.0, 0.0};
    if (a_bSameOrientation)
    {
        a_Choice.vdParams = {C.dA, C.dB, C.dTx, -C.dB, C.dA, C.dTy, 0.0, 0.0};
    }
    a_Choice.Used = nuv::METHOD_CONFORMAL;
    return true;
}

void CheckSelection(TInput& a_Input)
{
    static const int Requests[] = {2, 2, 1, 1, 0, 3, 7, -1};
    const int iRequested = Requests[a_Input.Byte() % 8];
    const bool bSameOrientation = a_Input.Flag();
    const TPoints Points = a_Input.Flag() ? AnyPoints(a_Input, 0) : TamePoints(a_Input);
    const TValues vdYa = Points.Ya.Values();
    enumMethodUsed Requested;
    std::memcpy(&Requested, &iRequested, sizeof iRequested);
    enumMethodUsed Used = static_cast<enumMethodUsed>(3); // no kind
    TGuarded<TOmographicParams> Params;
    const bool bResult = nuv::CalcCoefs(Points.Count(), Points.X.Data(), Points.Y.Data(), Points.Xa.Data(),
                                        Points.Ya.Data(), bSameOrientation, Requested, Used, *Params);
    NUV_CHECK(Points.Ya.Holds(vdYa));
    TChoice Choice;
    const int n = Points.Count();
    Choice.bFound = n >= 2 && ((iRequested == 2 && n >= 4 && ChooseOmographic(Points, Choice)) ||
                               ((iRequested == 2 || iRequested == 1) && n >= 3 && ChooseAffine(Points, Choice)) ||
                               ChooseConformal(Points, bSameOrientation, Choice));
    NUV_CHECK(bResult == Choice.bFound);
    NUV_CHECK(Params.Holds(Choice.vdParams));
    NUV_CHECK(Used == (bResult ? Choice.Used : static_cast<enumMethodUsed>(3)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_pData, std::size_t a_iSize)
{
    TInput Input(a_pData, a_iSize);
    switch (Input.Byte() % 3)
    {
    case 0:
        CheckTameFit(Input);
        break;
    case 1:
        CheckAnyFit(Input);
        break;
    default:
        CheckSelection(Input);
        break;
    }
    return 0;
}
