// properties.h: random cases for RapidCheck and comparisons that fail a property.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The cases are well conditioned by construction. Every bound is a number of roundings times what magnifies them.

#ifndef NUV_TESTS_SUPPORT_PROPERTIES_H
#define NUV_TESTS_SUPPORT_PROPERTIES_H

#include "expect.h"
#include "fits.h"

#include <algorithm>
#include <initializer_list>
#include <rapidcheck/gtest.h>

namespace nuv_tests {

using TValues = std::vector<double>;

// A whole number from a_iLow up to but not including a_iEnd. It is uniform from the first case on, while RapidCheck
// would begin with small ones.
inline int Pick(int a_iLow, int a_iEnd)
{
    return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(a_iLow, a_iEnd));
}

// A double in [a_dLow, a_dHigh] that uses all of its digits.
inline double Real(double a_dLow, double a_dHigh)
{
    return a_dLow + (a_dHigh - a_dLow) * (Pick(0, 1000000001) / 1e9);
}

inline bool Chance()
{
    return Pick(0, 2) == 1;
}

// Away from zero, of either sign.
inline double Scale()
{
    const double dScale = Real(0.1, 10.0);
    return Chance() ? dScale : -dScale;
}

// The corners of a square of side 2 a_dHalf about the origin, and up to seven more points in it. The corners contribute
// 4 a_dHalf^2 to the normal matrix of the centred coordinates in every direction, and each other point at most 2
// a_dHalf^2. So the condition is at most (n - 2)/2.
inline TControlPoints Sources(double a_dHalf)
{
    TControlPoints Points = {{-a_dHalf, a_dHalf, a_dHalf, -a_dHalf}, {-a_dHalf, -a_dHalf, a_dHalf, a_dHalf}, {}, {}};
    for (int iMore = Pick(1, 8); iMore > 0; --iMore)
    {
        Points.vdX.push_back(Real(-a_dHalf, a_dHalf));
        Points.vdY.push_back(Real(-a_dHalf, a_dHalf));
    }
    return Points;
}

// Gives every point its image as target, each target coordinate off by up to a_dNoise.
inline void SetTargets(const nuv::TOmographicParams& a_Params, double a_dNoise, TControlPoints& a_Points)
{
    a_Points = WithImage(a_Points, a_Params);
    for (int i = 0; a_dNoise > 0.0 && i < a_Points.Count(); ++i)
    {
        a_Points.vdXa[i] += Real(-a_dNoise, a_dNoise);
        a_Points.vdYa[i] += Real(-a_dNoise, a_dNoise);
    }
}

// The denominator is at least 1/2 in the square of side 2. A - C G and E - F H are at least 3/4, so that nothing is
// nearly singular.
inline nuv::TOmographicParams SomeOmographic()
{
    return {Real(1.0, 3.0), Real(-0.25, 0.25), Real(-1.0, 1.0),   Real(-0.25, 0.25),
            Real(1.0, 3.0), Real(-1.0, 1.0),   Real(-0.25, 0.25), Real(-0.25, 0.25)};
}

inline nuv::TOmographicParams SomeAffine()
{
    nuv::TOmographicParams Params = SomeOmographic();
    Params.dG = Params.dH = 0.0;
    return Params;
}

inline nuv::TOmographicParams SomeConformal()
{
    const double dA = Scale();
    const double dB = Scale();
    return {dA, dB, Real(-5.0, 5.0), -dB, dA, Real(-5.0, 5.0), 0.0, 0.0};
}

inline nuv::TOmographicParams AsOmographic(const nuv::TAffineCoefs& a_Affine)
{
    nuv::TOmographicParams Params;
    nuv::AffineCoefsToOmographicCoefs(a_Affine, Params);
    return Params;
}

inline nuv::TOmographicParams AsOmographic(const nuv::TConformalCoefs& a_Conformal)
{
    nuv::TAffineCoefs Affine;
    nuv::ConformalCoefsToAffineCoefs(a_Conformal, Affine);
    return AsOmographic(Affine);
}

inline void AssertNear(double a_dExpected, double a_dActual, double a_dBound)
{
    if (!(std::fabs(a_dExpected - a_dActual) <= a_dBound))
    {
        RC_LOG() << HexText(a_dActual) << " is not within " << a_dBound << " of " << HexText(a_dExpected) << "\n";
        RC_FAIL("not near");
    }
}

template <class TRecord> void AssertNearRecord(const TRecord& a_Expected, const TRecord& a_Actual, double a_dBound)
{
    const auto Expected = Fields(a_Expected);
    const auto Actual = Fields(a_Actual);
    for (std::size_t i = 0; i < Expected.size(); ++i)
    {
        AssertNear(Expected[i], Actual[i], a_dBound);
    }
}

template <class TRecord> void AssertSameRecord(const TRecord& a_Expected, const TRecord& a_Actual)
{
    const ::testing::AssertionResult Result = SameRecord(a_Expected, a_Actual);
    if (!Result)
    {
        RC_FAIL(std::string(Result.message()));
    }
}

inline void AssertSameValues(const TValues& a_vdExpected, const TValues& a_vdActual)
{
    RC_ASSERT(SameBits(a_vdExpected, a_vdActual));
}

inline double GreatestAbs(std::initializer_list<double> a_Values)
{
    double dGreatest = 0.0;
    for (double dValue : a_Values)
    {
        dGreatest = std::max(dGreatest, std::fabs(dValue));
    }
    return dGreatest;
}

inline void ScaleValues(double a_dFactor, TValues& a_vdValues)
{
    for (double& dValue : a_vdValues)
    {
        dValue *= a_dFactor;
    }
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_PROPERTIES_H
