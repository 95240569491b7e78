// fits.h: the fits of the library on control points, and the images under the records that they give.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_FITS_H
#define NUV_TESTS_SUPPORT_FITS_H

#include "control_points.h"
#include "nuv1math.h"

#include <array>

namespace nuv_tests {

inline int Fit(const TControlPoints& a_Points, nuv::TConformalCoefs& a_Coefs, bool a_bRigidInverse = false)
{
    return nuv::CalcConformalCoefs(static_cast<unsigned int>(a_Points.Count()), a_Points.vdX.data(),
                                   a_Points.vdY.data(), a_Points.vdXa.data(), a_Points.vdYa.data(), a_bRigidInverse,
                                   a_Coefs);
}

inline int Fit(const TControlPoints& a_Points, nuv::TAffineCoefs& a_Coefs)
{
    return nuv::CalcAffineCoefs(static_cast<unsigned int>(a_Points.Count()), a_Points.vdX.data(), a_Points.vdY.data(),
                                a_Points.vdXa.data(), a_Points.vdYa.data(), a_Coefs);
}

inline int Fit(const TControlPoints& a_Points, nuv::TOmographicParams& a_Params)
{
    return nuv::CalcOmographicCoefs(a_Points.Count(), a_Points.vdX.data(), a_Points.vdY.data(), a_Points.vdXa.data(),
                                    a_Points.vdYa.data(), a_Params);
}

inline bool Choose(const TControlPoints& a_Points, bool a_bSameOrientation, nuv::enumMethodUsed a_Requested,
                   nuv::enumMethodUsed& a_Used, nuv::TOmographicParams& a_Params)
{
    return nuv::CalcCoefs(a_Points.Count(), a_Points.vdX.data(), a_Points.vdY.data(), a_Points.vdXa.data(),
                          a_Points.vdYa.data(), a_bSameOrientation, a_Requested, a_Used, a_Params);
}

// (X, Y) of (x, y), each operation rounded.
inline std::array<double, 2> Map(const nuv::TOmographicParams& a_P, double a_dX, double a_dY)
{
    const double dW = a_P.dG * a_dX + a_P.dH * a_dY + 1.0;
    return {(a_P.dA * a_dX + a_P.dB * a_dY + a_P.dC) / dW, (a_P.dD * a_dX + a_P.dE * a_dY + a_P.dF) / dW};
}

inline std::array<double, 2> Map(const nuv::TAffineCoefs& a_C, double a_dX, double a_dY)
{
    return {a_C.dA * a_dX + a_C.dB * a_dY + a_C.dC, a_C.dD * a_dX + a_C.dE * a_dY + a_C.dF};
}

inline std::array<double, 2> Map(const nuv::TConformalCoefs& a_C, double a_dX, double a_dY)
{
    return {a_C.dA * a_dX + a_C.dB * a_dY + a_C.dTx, -a_C.dB * a_dX + a_C.dA * a_dY + a_C.dTy};
}

// The points with their images as targets.
template <class TRecord> TControlPoints WithImage(TControlPoints a_Points, const TRecord& a_Record)
{
    a_Points.vdXa.clear();
    a_Points.vdYa.clear();
    for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
    {
        const auto [dXa, dYa] = Map(a_Record, a_Points.vdX[i], a_Points.vdY[i]);
        a_Points.vdXa.push_back(dXa);
        a_Points.vdYa.push_back(dYa);
    }
    return a_Points;
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_FITS_H
