// trig.cpp: fuzz target of the linear and the quadratic trigonometric equation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"

#include <algorithm>
#include <array>

namespace {

using namespace nuv_fuzz;
using TSix = std::array<double, 6>;

// a cos^2 + b sin^2 + c sin cos + d cos + e sin + f.
TLong ValueAt(const TSix& a_E, TLong a_dCos, TLong a_dSin)
{
    return a_E[0] * a_dCos * a_dCos + a_E[1] * a_dSin * a_dSin + a_E[2] * a_dSin * a_dCos + a_E[3] * a_dCos +
           a_E[4] * a_dSin + a_E[5];
}

TLong ValueAt(const TSix& a_E, double a_dAngle)
{
    return ValueAt(a_E, std::cos(static_cast<TLong>(a_dAngle)), std::sin(static_cast<TLong>(a_dAngle)));
}

double SumOf(const TSix& a_E)
{
    double dSum = 0.0;
    for (double dCoefficient : a_E)
    {
        dSum += std::fabs(dCoefficient);
    }
    return dSum;
}

bool InRange(const TSix& a_E)
{
    return nuv_fuzz::InRange(TValues(a_E.begin(), a_E.end()), 1e70);
}

// A call on exactly the room that the solver may use. Nothing is written without a solution.
struct TAngles
{
    int iResult;
    TValues vdFound;
    bool bRestUntouched;

    template <class TSolver> TAngles(std::size_t a_iRoom, const TSolver& a_Solver)
    {
        TRoom Room(a_iRoom);
        iResult = a_Solver(Room.Data());
        NUV_CHECK(iResult >= nuv::RET_INDETERMINATE && iResult <= static_cast<int>(a_iRoom));
        const std::size_t iCount = iResult > 0 ? static_cast<std::size_t>(iResult) : 0;
        vdFound.assign(Room.Data(), Room.Data() + iCount);
        bRestUntouched = Room.UntouchedFrom(iCount);
        NUV_CHECK(bRestUntouched || iCount > 0);
        NUV_CHECK(std::all_of(vdFound.begin(), vdFound.end(), IsAngle));
        NUV_CHECK(std::none_of(vdFound.begin(), vdFound.end(),
                               [](double a_dAngle) { return SameBits(a_dAngle, Untouched); }));
    }
};

// The quadratic in the half angle's tangent is solved with a relative error of some Eps in every coefficient, so its
// value is off by that of its terms, (1 + u^2) times those of the equation; the angle is off by a few units of 2 pi.
void CheckResiduals(const TSix& a_E, const TAngles& a_Angles, TLong a_dBound)
{
    for (double dAngle : a_Angles.vdFound)
    {
        NUV_CHECK(Within(ValueAt(a_E, dAngle), 0.0L, a_dBound * SumOf(a_E)));
    }
}

// Different angles, also across the end of the turn.
bool Different(double a_dFirst, double a_dSecond)
{
    return std::fabs(std::remainder(a_dFirst - a_dSecond, TwoPi)) > 1e-6;
}

void CheckLinear(TInput& a_Input)
{
    const TValues C = a_Input.Flag() ? a_Input.TameValues(3) : a_Input.AnyValues(3);
    const double a = C[0], b = C[1], c = C[2];
    const TAngles Angles(2, [&](double* a_vdAngles) { return nuv::SolveLinTrig(a, b, c, a_vdAngles); });
    NUV_CHECK(Angles.bRestUntouched);
    NUV_CHECK((Angles.iResult == nuv::RET_INDETERMINATE) == (a == 0.0 && b == 0.0 && c == 0.0));
    NUV_CHECK(Angles.iResult != nuv::RET_IMPOSSIBLE || a == 0.0 || b == 0.0);
    NUV_CHECK(Angles.iResult != 0 || (a != 0.0 && b != 0.0));
    const TSix E = {0, 0, 0, a, b, c};
    if (!InRange(E) || (a == 0.0 && b == 0.0))
    {
        return;
    }
    if (Angles.iResult == 2)
    {
        const double dFirst = Angles.vdFound[0];
        const double dSecond = Angles.vdFound[1];
        const bool bDescending = c == 0.0 && a > 0.0 && b != 0.0;
        NUV_CHECK(!(bDescending ? dFirst < dSecond : dFirst > dSecond));
    }
    CheckResiduals(E, Angles, 64 * Eps);
    // a cos + b sin is a cosine of this amplitude; away from a tangent solution there are two angles or none.
    const TLong dAmplitude = std::hypot(TLong(a), TLong(b));
    if (std::fabs(c) < dAmplitude * (1.0L - 1e-10L))
    {
        NUV_CHECK(Angles.iResult == 2 && Different(Angles.vdFound[0], Angles.vdFound[1]));
    }
    NUV_CHECK(!(std::fabs(c) > dAmplitude * (1.0L + 1e-10L)) || Angles.iResult <= 0);
}

// The number of solutions in a turn, -1 where a grid cannot tell: an interval in which the equation can vanish must be
// one in which it is monotone, by the bounds of its first two derivatives.
int CountSolutions(const TSix& a_E)
{
    constexpr int Steps = 512;
    static const auto Grid = []
    {
        std::array<std::array<TLong, 2>, Steps + 1> Values;
        for (int i = 0; i <= Steps; ++i)
        {
            const TLong dAngle = 0.1L + 6.283185307179586477L / Steps * i; // off the axes, where special solutions lie
            Values[static_cast<std::size_t>(i)] = {std::cos(dAngle), std::sin(dAngle)};
        }
        return Values;
    }();
    constexpr TLong Width = 6.2832L / Steps;
    const TLong dDouble = std::fabs(TLong(a_E[1]) - a_E[0]) + std::fabs(a_E[2]);
    const TLong dSingle = std::fabs(TLong(a_E[3])) + std::fabs(a_E[4]);
    int iSolutions = 0;
    TLong dValue = ValueAt(a_E, Grid[0][0], Grid[0][1]);
    for (std::size_t i = 0; i < Steps; ++i)
    {
        const TLong dNext = ValueAt(a_E, Grid[i + 1][0], Grid[i + 1][1]);
        if (std::fabs(dValue) <= (dDouble + dSingle) * Width)
        {
            const TLong dCos = Grid[i][0];
            const TLong dSin = Grid[i][1];
            const TLong dSlope = 2 * (TLong(a_E[1]) - a_E[0]) * dSin * dCos + a_E[2] * (dCos * dCos - dSin * dSin) -
                                 a_E[3] * dSin + a_E[4] * dCos;
            const TLong dFloor = 1e-9L * SumOf(a_E); // too near to the grid's own angles
            if (std::fabs(dSlope) <= (2 * dDouble + dSingle) * Width || std::fabs(dValue) <= dFloor ||
                std::fabs(dNext) <= dFloor)
            {
                return -1;
            }
            iSolutions += (dValue < 0) != (dNext < 0) ? 1 : 0;
        }
        dValue = dNext;
    }
    return iSolutions;
}

// A quartic whose first coefficient that is not zero is not small beside the others: its monic form has coefficients up
// to 1e3, and its roots, backward errors of some n^2 Eps times powers of that, have residuals below 1e-7. Pairs of an
// imaginary part below 1e-6 add less than 1e-12 times as much.
bool IsBenignQuartic(const TValues& a_vdQuartic)
{
    const double dGreatest = Greatest(a_vdQuartic);
    for (double dCoefficient : a_vdQuartic)
    {
        if (dCoefficient != 0.0)
        {
            return std::fabs(dCoefficient) >= 1e-3 * dGreatest;
        }
    }
    return false;
}

void CheckQuarticCase(const TSix& a_E, const TAngles& a_Angles)
{
    const double a = a_E[0], b = a_E[1], c = a_E[2], d = a_E[3], e = a_E[4], f = a_E[5];
    const TValues vdQuartic = {a + f - d, (e - c) * 2.0, b * 4.0 - a * 2.0 + f * 2.0, (c + e) * 2.0, a + d + f};
    // What the sums of the coefficients lost counts as much as they do.
    if (!IsBenignQuartic(vdQuartic) || Greatest(vdQuartic) < 1e-3 * SumOf(a_E))
    {
        return;
    }
    CheckResiduals(a_E, a_Angles, 1e-7L);
    // The iteration can give up; with an infinite tolerance it tells. Coefficients that were lost by rounding alone
    // (a + f - d against d == a + f) cannot be judged.
    const std::size_t iDegree = vdQuartic[0] != 0.0 ? 4 : vdQuartic[1] != 0.0 ? 3 : vdQuartic[2] != 0.0 ? 2 : 1;
    double vdAll[4];
    const bool bAll = nuv::Roots(4, vdQuartic.data(), vdAll, Inf) == static_cast<int>(iDegree);
    const int iSolutions = CountSolutions(a_E);
    if (iSolutions >= 0 && (vdQuartic[0] == 0.0) == (d == a + f))
    {
        NUV_CHECK(!bAll || std::max(a_Angles.iResult, 0) == iSolutions);
    }
}

void CheckQuadratic(TInput& a_Input)
{
    TValues C = a_Input.Flag() ? a_Input.TameValues(6) : a_Input.AnyValues(6);
    switch (a_Input.Byte() % 4) // the special cases by equal and missing coefficients
    {
    case 0:
        C[3] = C[4] = 0.0;
        break;
    case 1:
        C[2] = 0.0;
        C[1] = C[0];
        break;
    case 2:
        C[5] = -C[a_Input.Byte() % 2];
        break;
    default:
        break;
    }
    const TSix E = {C[0], C[1], C[2], C[3], C[4], C[5]};
    const double a = E[0], b = E[1], c = E[2], d = E[3], e = E[4], f = E[5];
    const TAngles Angles(4, [&](double* a_vdAngles) { return nuv::SolveQuadTrig(a, b, c, d, e, f, a_vdAngles); });
    for (std::size_t i = 0; i + 1 < Angles.vdFound.size(); ++i)
    {
        NUV_CHECK(!(Angles.vdFound[i + 1] - Angles.vdFound[i] < Tolerance));
    }
    const bool bIdentity = a + f == 0.0 && b + f == 0.0 && c == 0.0 && d == 0.0 && e == 0.0;
    NUV_CHECK(!bIdentity || Angles.iResult == nuv::RET_INDETERMINATE);
    NUV_CHECK(bIdentity || Angles.iResult != nuv::RET_INDETERMINATE);
    NUV_CHECK(Angles.iResult != nuv::RET_IMPOSSIBLE || (c == 0.0 && a == b && (d == 0.0) != (e == 0.0)));
    if (!InRange(E) || bIdentity)
    {
        return;
    }
    if ((d != 0.0 || e != 0.0) && (c != 0.0 || a != b))
    {
        CheckQuarticCase(E, Angles);
        return;
    }
    CheckResiduals(E, Angles, 64 * Eps);
    const int iSolutions = CountSolutions(E);
    NUV_CHECK(iSolutions < 0 || std::max(Angles.iResult, 0) == iSolutions);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_pData, std::size_t a_iSize)
{
    TInput Input(a_pData, a_iSize);
    if (Input.Byte() % 3 == 0)
    {
        CheckLinear(Input);
    }
    else
    {
        CheckQuadratic(Input);
    }
    return 0;
}
