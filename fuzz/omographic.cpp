// omographic.cpp: fuzz target of the omographic fit and of the choice among the kinds of transformation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "points.h"
#include "support/fits.h"

#include <array>

namespace {

using namespace nuv_fuzz;
using nuv::enumMethodUsed;
using nuv::TAffineCoefs;
using nuv::TConformalCoefs;
using nuv::TOmographicParams;
using TEight = Eigen::Matrix<TLong, 8, 1>;
using TNormal = Eigen::Matrix<TLong, 8, 8>;

// One equation: its coefficients of the unknowns and its value.
struct TRow
{
    TEight Row;
    TLong dValue;
};

TRow RowOf(std::initializer_list<TLong> a_Coefficients, TLong a_dValue)
{
    return {Eigen::Map<const TEight>(a_Coefficients.begin()), a_dValue};
}

// The two equations of a point. The first step multiplies them by the denominator; the later steps take the derivatives
// and residuals at a_P.
std::array<TRow, 2> RowsOf(bool a_bFirst, const TEight& a_P, TLong x, TLong y, TLong X, TLong Y)
{
    if (a_bFirst)
    {
        return {RowOf({x, y, 1, 0, 0, 0, -X * x, -X * y}, X), RowOf({0, 0, 0, x, y, 1, -Y * x, -Y * y}, Y)};
    }
    const TLong W = a_P(6) * x + a_P(7) * y + 1;
    const TLong dX = (a_P(0) * x + a_P(1) * y + a_P(2)) / W;
    const TLong dY = (a_P(3) * x + a_P(4) * y + a_P(5)) / W;
    return {RowOf({x / W, y / W, 1 / W, 0, 0, 0, -x / W * dX, -y / W * dX}, X - dX),
            RowOf({0, 0, 0, x / W, y / W, 1 / W, -x / W * dY, -y / W * dY}, Y - dY)};
}

struct TNormalEquations
{
    TNormal Matrix = TNormal::Zero();
    TEight Values = TEight::Zero();

    TNormalEquations(bool a_bFirst, const TEight& a_P, const TControlPoints& a_Points)
    {
        for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
        {
            for (const TRow& Row :
                 RowsOf(a_bFirst, a_P, a_Points.vdX[i], a_Points.vdY[i], a_Points.vdXa[i], a_Points.vdYa[i]))
            {
                Matrix += Row.Row * Row.Row.transpose();
                Values += Row.Row * Row.dValue;
            }
        }
    }
};

// How much a step magnifies an error of the coefficients at which it starts: the norm of the derivative of P + D. The
// correction D solves N D = sum(J r), where J are the derivatives of an image, r is its residual, and N = sum(J J^T). An
// image is a quotient with the denominator W, and the derivatives of W are W V. So those of J are H = -(J V^T + V J^T),
// and the derivative of P + D is the inverse of N times sum((r - J D) H - J (H D)^T).
TLong Magnification(const TEight& a_P, const TEight& a_D, const TNormal& a_Inverse, const TControlPoints& a_Points)
{
    TNormal Sum = TNormal::Zero();
    for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
    {
        const TLong x = a_Points.vdX[i];
        const TLong y = a_Points.vdY[i];
        const TEight V = RowOf({0, 0, 0, 0, 0, 0, x, y}, 0).Row / (a_P(6) * x + a_P(7) * y + 1);
        for (const TRow& Row : RowsOf(false, a_P, x, y, a_Points.vdXa[i], a_Points.vdYa[i]))
        {
            const TEight& J = Row.Row;
            const TNormal H = -(J * V.transpose() + V * J.transpose());
            Sum += (Row.dValue - J.dot(a_D)) * H - J * (H * a_D).transpose();
        }
    }
    return (a_Inverse * Sum).norm();
}

// The same steps in extended precision. a_dCondition is the greatest condition of a step's normal matrix. Returns false
// where a step has no solution, where the greatest correction is so close to the threshold that rounding decides, or
// where a step does not halve the errors of the earlier ones: with noise as great as the coefficients, it magnifies them.
bool ReferenceFit(const TControlPoints& a_Points, TEight& a_P, TLong& a_dCondition)
{
    a_dCondition = 0.0L;
    for (int iStep = 0; iStep <= 4; ++iStep)
    {
        const TNormalEquations Equations(iStep == 0, a_P, a_Points);
        const TNormal Inverse = Equations.Matrix.inverse();
        const TEight Correction = Inverse * Equations.Values;
        if (!Correction.allFinite())
        {
            return false;
        }
        a_dCondition = std::max(a_dCondition, Equations.Matrix.norm() * Inverse.norm());
        if (iStep > 0 && !(Magnification(a_P, Correction, Inverse, a_Points) <= 0.5L))
        {
            return false;
        }
        a_P = iStep == 0 ? Correction : TEight(a_P + Correction);
        const TLong dGreatest = Correction.cwiseAbs().maxCoeff();
        if (iStep > 0 && (Within(dGreatest, 1e-8L, 1e-10L) || dGreatest < 1e-8L))
        {
            return !Within(dGreatest, 1e-8L, 1e-10L);
        }
    }
    return true;
}

// Images under a transformation with coordinates of size 1 and a denominator of 1/2 or more, some with noise. The first
// four points are near the corners of a square, so that the arrangement is good.
TControlPoints TamePoints(TInput& a_Input)
{
    const std::size_t n = a_Input.Size(4, 12);
    TOmographicParams P;
    double* const pCoefs[] = {&P.dA, &P.dB, &P.dC, &P.dD, &P.dE, &P.dF, &P.dG, &P.dH};
    for (double* pCoefficient : pCoefs)
    {
        *pCoefficient = a_Input.Int(-1000, 1000) / 500.0;
    }
    P.dG /= 8;
    P.dH /= 8;
    const double dNoise = a_Input.Flag() ? 0.0 : 1e-2 / (1 << a_Input.Int(0, 15));
    const double dCorners[2][4] = {{-1, 1, 1, -1}, {-1, -1, 1, 1}};
    TControlPoints Points;
    for (std::size_t i = 0; i < n; ++i)
    {
        double x = a_Input.Int(-1000, 1000) / 1000.0;
        double y = a_Input.Int(-1000, 1000) / 1000.0;
        if (i < 4)
        {
            x = dCorners[0][i] + x / 4;
            y = dCorners[1][i] + y / 4;
        }
        const auto [dXa, dYa] = Map(P, x, y);
        const double dNoiseX = dNoise * a_Input.Int(-100, 100) / 100;
        const double dNoiseY = dNoise * a_Input.Int(-100, 100) / 100;
        Points.Add(x, y, dXa + dNoiseX, dYa + dNoiseY);
    }
    return Points;
}

TControlPoints AnyPoints(TInput& a_Input)
{
    const std::size_t n = a_Input.Size(0, 10);
    const bool bTame = a_Input.Flag();
    return ReadPoints(a_Input, n, bTame);
}

int GuardedFit(const TControlPoints& a_Points, TGuardedRecord<TOmographicParams>& a_Params)
{
    const TGuardedPoints Room = Guarded(a_Points);
    const int iResult =
        nuv::CalcOmographicCoefs(Room.Count(), Room.X.Data(), Room.Y.Data(), Room.Xa.Data(), Room.Ya.Data(), *a_Params);
    NUV_CHECK(Hold(Room, a_Points) && a_Params.IsIntact());
    return iResult;
}

// The correction of a step has an error of about kappa Epsilon of the coefficients, and each later step halves what the
// earlier ones left, so that their sum is less than twice the greatest. The numbers here are of size 1; there are 8
// unknowns, and sums over n points.
void CheckTameFit(TInput& a_Input)
{
    const TControlPoints Points = TamePoints(a_Input);
    TGuardedRecord<TOmographicParams> Params;
    const int iResult = GuardedFit(Points, Params);
    TEight P = TEight::Zero();
    TLong dCondition;
    if (!ReferenceFit(Points, P, dCondition) || !(dCondition <= 1e10L))
    {
        return;
    }
    NUV_CHECK(iResult == 1);
    const TLong dSize = std::max(1.0L, P.cwiseAbs().maxCoeff());
    const TValues vdFields = Params.Fields();
    for (std::size_t j = 0; j < 8; ++j)
    {
        NUV_CHECK(Within(vdFields[j], P(static_cast<Eigen::Index>(j)),
                         64 * Epsilon * (Points.Count() + 8) * dCondition * dSize));
    }
}

// A fit that fails leaves the right-hand side of the linear equations, summed in the order of the rows.
TValues LinearRightHandSide(const TControlPoints& a_Points)
{
    TValues vdU(8);
    for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
    {
        const double x = a_Points.vdX[i], y = a_Points.vdY[i], X = a_Points.vdXa[i], Y = a_Points.vdYa[i];
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
    const TControlPoints Points = AnyPoints(a_Input);
    TGuardedRecord<TOmographicParams> Params;
    const int iResult = GuardedFit(Points, Params);
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
    TGuardedRecord<TAffineCoefs> Affine(vdAffine);
    TGuardedRecord<TOmographicParams> FromAffine;
    nuv::AffineCoefsToOmographicCoefs(*Affine, *FromAffine);
    TValues vdEight = vdAffine;
    vdEight.resize(8, 0.0);
    NUV_CHECK(FromAffine.Holds(vdEight) && Affine.Holds(vdAffine));
}

// The expected choice, from fits of each kind alone.
struct TChoice
{
    bool bFound = false;
    enumMethodUsed Used = nuv::METHOD_CONFORMAL;
    TValues vdParams = TValues(8, Untouched);
};

bool ChooseOmographic(const TControlPoints& a_Points, TChoice& a_Choice)
{
    TGuardedRecord<TOmographicParams> Params;
    const int iResult = GuardedFit(a_Points, Params);
    a_Choice.vdParams = Params.Fields();
    a_Choice.Used = nuv::METHOD_OMOGRAPHIC;
    return iResult == 1 && std::all_of(a_Choice.vdParams.begin(), a_Choice.vdParams.end(),
                                       [](double a_dValue) { return std::isfinite(a_dValue); });
}

bool ChooseAffine(const TControlPoints& a_Points, TChoice& a_Choice)
{
    TAffineCoefs C;
    if (Fit(a_Points, C) != 1 || std::fabs(C.dE * C.dA - C.dD * C.dB) <= Tolerance)
    {
        return false;
    }
    a_Choice.vdParams = {C.dA, C.dB, C.dC, C.dD, C.dE, C.dF, 0.0, 0.0};
    a_Choice.Used = nuv::METHOD_AFFINE;
    return true;
}

// For the reversed orientation the fit is that of the points with negative Ya.
bool ChooseConformal(TControlPoints a_Points, bool a_bSameOrientation, TChoice& a_Choice)
{
    for (double& dYa : a_Points.vdYa)
    {
        dYa = a_bSameOrientation ? dYa : -dYa;
    }
    TConformalCoefs C;
    if (Fit(a_Points, C) != 1)
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

TChoice ExpectedChoice(const TControlPoints& a_Points, int a_iRequested, bool a_bSameOrientation)
{
    TChoice Choice;
    const int n = a_Points.Count();
    const bool bAffine = a_iRequested == nuv::METHOD_AFFINE || a_iRequested == nuv::METHOD_OMOGRAPHIC;
    Choice.bFound =
        n >= 2 && ((a_iRequested == nuv::METHOD_OMOGRAPHIC && n >= 4 && ChooseOmographic(a_Points, Choice)) ||
                   (bAffine && n >= 3 && ChooseAffine(a_Points, Choice)) ||
                   ChooseConformal(a_Points, a_bSameOrientation, Choice));
    return Choice;
}

void CheckSelection(TInput& a_Input)
{
    static const int Requests[] = {2, 2, 1, 1, 0, 3, 7, -1}; // also values that are no enumerator
    const int iRequested = Requests[a_Input.Byte() % 8];
    const bool bSameOrientation = a_Input.Flag();
    const TControlPoints Points = a_Input.Flag() ? AnyPoints(a_Input) : TamePoints(a_Input);
    TGuardedPoints Room = Guarded(Points);
    enumMethodUsed Requested;
    std::memcpy(&Requested, &iRequested, sizeof iRequested);
    constexpr enumMethodUsed NoKind = static_cast<enumMethodUsed>(3);
    enumMethodUsed Used = NoKind;
    TGuardedRecord<TOmographicParams> Params;
    const bool bResult = nuv::CalcCoefs(Points.Count(), Room.X.Data(), Room.Y.Data(), Room.Xa.Data(), Room.Ya.Data(),
                                        bSameOrientation, Requested, Used, *Params);
    NUV_CHECK(Hold(Room, Points));
    const TChoice Choice = ExpectedChoice(Points, iRequested, bSameOrientation);
    NUV_CHECK(bResult == Choice.bFound);
    NUV_CHECK(Params.Holds(Choice.vdParams));
    NUV_CHECK(Used == (bResult ? Choice.Used : NoKind));
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
