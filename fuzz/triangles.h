// triangles.h: what the targets of both Cholesky storages share: matrices, and checks of factors and solutions.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FUZZ_TRIANGLES_H
#define NUV_FUZZ_TRIANGLES_H

#include "fuzzing.h"

#include <algorithm>

namespace nuv_fuzz {

// Element (i, j), j <= i, of a packed triangle.
inline std::size_t At(std::size_t i, std::size_t j)
{
    return i * (i + 1) / 2 + j;
}

// A packed symmetric matrix: anything, the product of tame vectors (possibly singular), or one whose diagonal
// dominates.
struct TMatrix
{
    std::size_t n;
    TValues vdLower;
    bool bTame = false;
    bool bDominant = false;

    explicit TMatrix(TInput& a_Input) : n(static_cast<std::size_t>(a_Input.Int(0, 15)))
    {
        n = n == 15 ? 40 : n;
        vdLower.resize(n * (n + 1) / 2);
        switch (a_Input.Byte() % 3)
        {
        case 0:
            vdLower = a_Input.AnyValues(vdLower.size());
            break;
        case 1:
            bTame = true;
            for (int iProducts = a_Input.Int(0, static_cast<int>(n) + 2); iProducts > 0; --iProducts)
            {
                const TValues vdRow = a_Input.TameValues(n);
                for (std::size_t i = 0; i < n; ++i)
                {
                    for (std::size_t j = 0; j <= i; ++j)
                    {
                        vdLower[At(i, j)] += vdRow[i] * vdRow[j];
                    }
                }
            }
            break;
        default:
            bTame = bDominant = true;
            vdLower = a_Input.TameValues(vdLower.size());
            for (std::size_t i = 0; i < n; ++i)
            {
                double dSum = 1.0;
                for (std::size_t j = 0; j < n; ++j)
                {
                    dSum += j == i ? 0.0 : std::fabs(vdLower[At(std::max(i, j), std::min(i, j))]);
                }
                vdLower[At(i, i)] = dSum;
            }
            break;
        }
    }
};

// L L^T is the matrix within (n + 4) Eps |L| |L^T|: each element is a sum of at most n products, with one rounding more
// for the root or the reciprocal and its product. Columns up to a_iColumns, packed.
inline void CheckFactor(const TMatrix& a_A, const TValues& a_vdL, std::size_t a_iColumns)
{
    if (!a_A.bTame || !InRange(a_vdL, 1e20) || !InRange(a_A.vdLower, 1e20))
    {
        return;
    }
    for (std::size_t i = 0; i < a_A.n; ++i)
    {
        for (std::size_t j = 0; j <= i && j < a_iColumns; ++j)
        {
            TLong dSum = 0.0L;
            TLong dSize = 0.0L;
            for (std::size_t k = 0; k <= j; ++k)
            {
                const TLong dProduct = TLong(a_vdL[At(i, k)]) * a_vdL[At(j, k)];
                dSum += dProduct;
                dSize += std::fabs(dProduct);
            }
            NUV_CHECK(Within(dSum, a_A.vdLower[At(i, j)], static_cast<TLong>(a_A.n + 4) * Eps * dSize));
        }
    }
}

// L L^T x is b within (4 n + 8) Eps |L| |L^T| |x|: both substitutions are backward stable.
inline void CheckSolution(std::size_t n, const TValues& a_vdL, const TValues& a_vdB, const TValues& a_vdX)
{
    if (!InRange(a_vdL, 1e20) || !InRange(a_vdB, 1e20) || !InRange(a_vdX, 1e60))
    {
        return;
    }
    for (std::size_t i = 0; i < n; ++i)
    {
        if (a_vdL[At(i, i)] == 0.0)
        {
            return;
        }
    }
    std::vector<TLong> vdY(n);
    std::vector<TLong> vdSize(n);
    for (std::size_t k = 0; k < n; ++k)
    {
        for (std::size_t i = k; i < n; ++i)
        {
            const TLong dProduct = TLong(a_vdL[At(i, k)]) * a_vdX[i];
            vdY[k] += dProduct;
            vdSize[k] += std::fabs(dProduct);
        }
    }
    for (std::size_t i = 0; i < n; ++i)
    {
        TLong dSum = 0.0L;
        TLong dSize = 1e-200L;
        for (std::size_t k = 0; k <= i; ++k)
        {
            dSum += a_vdL[At(i, k)] * vdY[k];
            dSize += std::fabs(a_vdL[At(i, k)]) * vdSize[k];
        }
        NUV_CHECK(Within(dSum, a_vdB[i], static_cast<TLong>(4 * n + 8) * Eps * dSize));
    }
}

// What a factorisation left of a packed matrix: on success the whole factor; on failure at column k the columns before
// k, the rest as it was. a_Leading says whether the leading part of that many rows can be factorised, and a failing
// one is the first.
template <class TFactorise>
void CheckFactorisation(const TMatrix& a_A, const TValues& a_vdLeft, bool a_bResult, const TFactorise& a_Factorise)
{
    std::size_t iColumns = a_A.n;
    if (!a_bResult)
    {
        TValues vdLeading;
        iColumns = 0;
        do
        {
            ++iColumns;
            NUV_CHECK(iColumns <= a_A.n);
            vdLeading.assign(a_A.vdLower.begin(), a_A.vdLower.begin() + static_cast<std::ptrdiff_t>(At(iColumns, 0)));
        } while (a_Factorise(iColumns, vdLeading));
        --iColumns; // those before the failing diagonal
        NUV_CHECK(SameBits(vdLeading.data(), a_vdLeft.data(), vdLeading.size()));
    }
    NUV_CHECK(!a_A.bDominant || a_bResult);
    for (std::size_t i = 0; i < a_A.n; ++i)
    {
        for (std::size_t j = iColumns; j <= i; ++j)
        {
            NUV_CHECK(SameBits(a_vdLeft[At(i, j)], a_A.vdLower[At(i, j)]));
        }
        NUV_CHECK(i >= iColumns || a_vdLeft[At(i, i)] >= 0.0);
    }
    CheckFactor(a_A, a_vdLeft, iColumns);
}

} // namespace nuv_fuzz

#endif // NUV_FUZZ_TRIANGLES_H
