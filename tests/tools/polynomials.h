// polynomials.h: coefficients of polynomials, computed in doubles. The highest power comes first.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_TOOLS_POLYNOMIALS_H
#define NUV_TESTS_TOOLS_POLYNOMIALS_H

#include <cstddef>
#include <vector>

namespace nuv_tests {

using TCoefficients = std::vector<double>;

inline TCoefficients Product(const TCoefficients& a_vdP, const TCoefficients& a_vdQ)
{
    TCoefficients vdProduct(a_vdP.size() + a_vdQ.size() - 1, 0.0);
    for (std::size_t i = 0; i < a_vdP.size(); ++i)
    {
        for (std::size_t j = 0; j < a_vdQ.size(); ++j)
        {
            vdProduct[i + j] += a_vdP[i] * a_vdQ[j];
        }
    }
    return vdProduct;
}

inline TCoefficients FromRoots(const TCoefficients& a_vdRoots)
{
    TCoefficients vdP = {1.0};
    for (double dRoot : a_vdRoots)
    {
        vdP = Product(vdP, {1.0, -dRoot});
    }
    return vdP;
}

// (x - 1)(x - 2)...(x - a_iDegree)
inline TCoefficients Wilkinson(int a_iDegree)
{
    TCoefficients vdRoots;
    for (int i = 1; i <= a_iDegree; ++i)
    {
        vdRoots.push_back(i);
    }
    return FromRoots(vdRoots);
}

inline TCoefficients Chebyshev(int a_iDegree)
{
    TCoefficients vdBefore = {1.0};
    TCoefficients vdP = {1.0, 0.0};
    for (int i = 1; i < a_iDegree; ++i)
    {
        TCoefficients vdNext = Product(vdP, {2.0, 0.0});
        for (std::size_t k = 0; k < vdBefore.size(); ++k)
        {
            vdNext[k + 2] -= vdBefore[k];
        }
        vdBefore = vdP;
        vdP = vdNext;
    }
    return vdP;
}

} // namespace nuv_tests

#endif // NUV_TESTS_TOOLS_POLYNOMIALS_H
