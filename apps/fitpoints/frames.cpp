// frames.cpp: what the judgement module tells of coordinates and transformations, for the arrays of this program.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "frames.h"

#include <algorithm>
#include <cmath>

namespace fitpoints {

judgement::TControlPoints ControlPoints(const TArrays& a_Points)
{
    return {PointCount(a_Points), a_Points.vdX.data(), a_Points.vdY.data(), a_Points.vdXa.data(), a_Points.vdYa.data()};
}

double Extent(const std::vector<double>& a_vdValues)
{
    return judgement::Extent(static_cast<int>(a_vdValues.size()), a_vdValues.data());
}

double Magnitude(const std::vector<double>& a_vdValues)
{
    const auto Range = std::minmax_element(a_vdValues.begin(), a_vdValues.end());
    return std::max(std::fabs(*Range.first), std::fabs(*Range.second));
}

double RoundingLevel(const TArrays& a_Points)
{
    return judgement::RoundingLevel(ControlPoints(a_Points));
}

TOrigins LocalOrigins(const TArrays& a_Points)
{
    TOrigins Origins;
    judgement::FindOrigins(ControlPoints(a_Points), Origins);
    return Origins;
}

TPosition Transform(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY)
{
    const judgement::TVector Image = judgement::ImageOf(a_Coefs, a_dX, a_dY);
    return {Image.dX, Image.dY};
}

} // namespace fitpoints
