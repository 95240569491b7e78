// trig.cpp: fuzz target of the linear and the quadratic trigonometric equation.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"
#include "support/trig_equation.h"

#include <algorithm>

namespace {

using namespace nuv_fuzz;

bool InRange(const TTrigEquation& a_E)
{
    return nuv_fuzz::InRange(FieldVector(a_E), 1e70);
}

// A call with exactly as much room as the solver may use. Without a solution it writes nothing.
struct TAngles
{
    int iResult;
    TValues vdFound;
    bool bRestUntouched;

    template <class TSolver> TAngles(std::size_t a_iRoom, const TSolver& a_Solver)
    {
        TGuardedArray Room = TGuardedArray::Output(a_iRoom);
        iResult = a_Solver(Room.Data());
        NUV_CHECK(iResult >= nuv::RET_INDETERMINATE && iResult <= static_cast<int>(a_iRoom));
        const std::size_t iCount = iResult > 0 ? static_cast<std::size_t>(iResult) : 0;
        vdFound.assign(Room.Data(), Room.Data() + iCount);
        bRestUntouched = Room.IsUntouchedFrom(iCount);
        NUV_CHECK(Room.IsIntact() && (bRestUntouched || iCount > 0));
        NUV_CHECK(std::all_of(vdFound.begin(), vdFound.end(), IsAngle));
        NUV_CHECK(std::none_of(vdFound.begin(), vdFound.end(),
                               [](double a_dAngle) { return SameBits(a_dAngle, Untouched); }));
    }
};

// The quadratic in u, the tangent of the half angle, is solved with a relative error of a few Epsilon in every
// coefficient. Its value has that error of its terms, which are (1 + u^2) times those of the equation. The angle has an
// error of a few units in the last place of 2 pi.
void CheckResiduals(const TTrigEquation& a_E, const TAngles& a_Angles, TLong a_dBound)
{
    for (double dAngle : a_Angles.vdFound)
    {
        NUV_CHECK(Within(a_E.At(dAngle), 0.0L, a_dBound * a_E.Norm()));
    }
}

// 0 and 2 pi are the same angle.
bool Different(double a_dFirst, double a_dSecond)
{
    return std::fabs(std::remainder(a_dFirst - a_dSecond, TwoPi)) > 1e-6;
}

void CheckLinear(TInput& a_Input)
{
    const TValues C = a_Input.TameOrAnyValues(3);
    const double a = C[0], b = C[1], c = C[2];
    const TAngles Angles(2, [&](double* a_vdAngles) { return nuv::SolveLinTrig(a, b, c, a_vdAngles); });
    NUV_CHECK(Angles.bRestUntouched);
    NUV_CHECK((Angles.iResult == nuv::RET_INDETERMINATE) == (a == 0.0 && b == 0.0 && c == 0.0));
    NUV_CHECK(Angles.iResult != nuv::RET_IMPOSSIBLE || a == 0.0 || b == 0.0);
    NUV_CHECK(Angles.iResult != 0 || (a != 0.0 && b != 0.0));
    const TTrigEquation E = {0, 0, 0, a, b, c};
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
    CheckResiduals(E, Angles, 64 * Epsilon);
    // a cos + b sin is a cosine of this amplitude. There are two angles or none, except near a double solution.
    const TLong dAmplitude = std::hypot(TLong(a), TLong(b));
    if (std::fabs(c) < dAmplitude * (1.0L - 1e-10L))
    {
        NUV_CHECK(Angles.iResult == 2 && Different(Angles.vdFound[0], Angles.vdFound[1]));
    }
    NUV_CHECK(!(std::fabs(c) > dAmplitude * (1.0L + 1e-10L)) || Angles.iResult <= 0);
}

// A quartic whose first coefficient that is not zero is not small beside the others. Its monic form has coefficients up
// to 1e3. Its roots have backward errors of about n^2 Epsilon times powers of that, so the residuals are below 1e-7. A
// pair of complex roots with an imaginary part below 1e-6, which counts as real, adds less than 1e-12 of that.
bool IsBenignQuartic(const TValues& a_vdQuartic)
{
    const auto First = std::find_if(a_vdQuartic.begin(), a_vdQuartic.end(), [](double a_d) { return a_d != 0.0; });
    return First != a_vdQuartic.end() && std::fabs(*First) >= 1e-3 * GreatestOf(a_vdQuartic);
}

void CheckQuarticCase(const TTrigEquation& a_E, const TAngles& a_Angles)
{
    const auto [a, b, c, d, e, f] = a_E;
    const TValues vdQuartic = {a + f - d, (e - c) * 2.0, b * 4.0 - a * 2.0 + f * 2.0, (c + e) * 2.0, a + d + f};
    // The quartic's coefficients are sums. If the terms cancel, their rounding errors are too great a part of the result.
    if (!IsBenignQuartic(vdQuartic) || GreatestOf(vdQuartic) < 1e-3 * a_E.Norm())
    {
        return;
    }
    CheckResiduals(a_E, a_Angles, 1e-7L);
    // The iteration may give up. A call with an infinite tolerance tells that. A first coefficient a + f - d may be zero only
    // by rounding, or not zero only by rounding: then the angle pi is a solution within the rounding of the equation.
    const std::size_t iDegree = vdQuartic[0] != 0.0 ? 4 : vdQuartic[1] != 0.0 ? 3 : vdQuartic[2] != 0.0 ? 2 : 1;
    double vdAll[4];
    const bool bAll = nuv::Roots(4, vdQuartic.data(), vdAll, Inf) == static_cast<int>(iDegree);
    const int iSolutions = CountSolutions(a_E);
    NUV_CHECK(!bAll || iSolutions < 0 || std::max(a_Angles.iResult, 0) == iSolutions);
}

// Coefficients of which some are zero, equal or opposite, for the special cases of the solver.
TTrigEquation ReadEquation(TInput& a_Input)
{
    TValues C = a_Input.TameOrAnyValues(6);
    switch (a_Input.Byte() % 4)
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
    return FromFields<TTrigEquation>(C.data());
}

void CheckQuadratic(TInput& a_Input)
{
    const TTrigEquation E = ReadEquation(a_Input);
    const double a = E.dA, b = E.dB, c = E.dC, d = E.dD, e = E.dE, f = E.dF;
    const TAngles Angles(4, [&](double* a_vdAngles) { return nuv::SolveQuadTrig(a, b, c, d, e, f, a_vdAngles); });
    for (std::size_t i = 0; i + 1 < Angles.vdFound.size(); ++i)
    {
        NUV_CHECK(!(Angles.vdFound[i + 1] - Angles.vdFound[i] < Tolerance));
    }
    const bool bIdentity = a + f == 0.0 && b + f == 0.0 && c == 0.0 && d == 0.0 && e == 0.0;
    NUV_CHECK(bIdentity == (Angles.iResult == nuv::RET_INDETERMINATE));
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
    CheckResiduals(E, Angles, 64 * Epsilon);
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
