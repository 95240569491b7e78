// factors.h: symmetric matrices, and checks of Cholesky factors and solutions in both storages.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FUZZ_FACTORS_H
#define NUV_FUZZ_FACTORS_H

#include "fuzzing.h"
#include "support/triangle.h"

#include <Eigen/Dense>

#include <algorithm>

namespace nuv_fuzz {

using TDense = Eigen::Matrix<TLong, Eigen::Dynamic, Eigen::Dynamic>;
using TColumn = Eigen::Matrix<TLong, Eigen::Dynamic, 1>;

// A packed symmetric matrix. It is tame if its elements have ordinary sizes, and dominant if each
// diagonal element exceeds the sum of the other magnitudes of its row.
struct TMatrix
{
    std::size_t n;
    TValues vdLower;
    bool bTame = false;
    bool bDominant = false;

    explicit TMatrix(TInput& a_Input) : n(a_Input.Size(0, 15))
    {
        n = n == 15 ? 40 : n;
        vdLower.resize(PackedIndex(n, 0));
        switch (a_Input.Byte() % 3)
        {
        case 0:
            vdLower = a_Input.AnyValues(vdLower.size());
            break;
        case 1:
            AddProducts(a_Input);
            break;
        default:
            MakeDominant(a_Input);
            break;
        }
    }

private:
    // A sum of v v^T, which is singular if there are fewer than n vectors.
    void AddProducts(TInput& a_Input)
    {
        bTame = true;
        for (int iProducts = a_Input.Int(0, static_cast<int>(n) + 2); iProducts > 0; --iProducts)
        {
            const TValues vdVector = a_Input.TameValues(n);
            for (std::size_t i = 0; i < n; ++i)
            {
                for (std::size_t j = 0; j <= i; ++j)
                {
                    vdLower[PackedIndex(i, j)] += vdVector[i] * vdVector[j];
                }
            }
        }
    }

    void MakeDominant(TInput& a_Input)
    {
        bTame = bDominant = true;
        vdLower = a_Input.TameValues(vdLower.size());
        for (std::size_t i = 0; i < n; ++i)
        {
            double dSum = 1.0;
            for (std::size_t j = 0; j < n; ++j)
            {
                dSum += j == i ? 0.0 : std::fabs(vdLower[PackedIndex(std::max(i, j), std::min(i, j))]);
            }
            vdLower[PackedIndex(i, i)] = dSum;
        }
    }
};

// A packed triangle with zeros above the diagonal.
inline TDense LowerOf(std::size_t n, const TValues& a_vdPacked)
{
    TDense Lower = TDense::Zero(static_cast<Eigen::Index>(n), static_cast<Eigen::Index>(n));
    for (std::size_t i = 0; i < n; ++i)
    {
        for (std::size_t j = 0; j <= i; ++j)
        {
            Lower(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(j)) = a_vdPacked[PackedIndex(i, j)];
        }
    }
    return Lower;
}

inline TColumn ColumnOf(const TValues& a_vdValues)
{
    return Eigen::Map<const Eigen::VectorXd>(a_vdValues.data(), static_cast<Eigen::Index>(a_vdValues.size()))
        .cast<TLong>();
}

// The first columns of L L^T equal the matrix within (n + 4) Epsilon |L| |L^T|: each element is a sum of at most n
// products, and the root or the reciprocal and its product add a rounding each.
inline void CheckFactor(const TMatrix& a_A, const TValues& a_vdL, std::size_t a_iColumns)
{
    if (!a_A.bTame || !InRange(a_vdL, 1e20) || !InRange(a_A.vdLower, 1e20))
    {
        return;
    }
    const auto iColumns = static_cast<Eigen::Index>(a_iColumns);
    const TDense L = LowerOf(a_A.n, a_vdL).leftCols(iColumns);
    const TDense Error = L * L.transpose() - LowerOf(a_A.n, a_A.vdLower);
    const TDense Bound = static_cast<TLong>(a_A.n + 4) * Epsilon * (L.cwiseAbs() * L.cwiseAbs().transpose());
    for (Eigen::Index j = 0; j < iColumns; ++j)
    {
        const Eigen::Index iRows = L.rows() - j; // from the diagonal down
        NUV_CHECK((Error.col(j).tail(iRows).cwiseAbs().array() <= Bound.col(j).tail(iRows).array()).all());
    }
}

// L L^T x equals b within (4 n + 8) Epsilon |L| |L^T| |x|: both substitutions are backward stable.
inline void CheckSolution(std::size_t n, const TValues& a_vdL, const TValues& a_vdB, const TValues& a_vdX)
{
    const TDense L = LowerOf(n, a_vdL);
    if (!InRange(a_vdL, 1e20) || !InRange(a_vdB, 1e20) || !InRange(a_vdX, 1e60) || (L.diagonal().array() == 0.0L).any())
    {
        return;
    }
    const TColumn X = ColumnOf(a_vdX);
    const TColumn Error = L * (L.transpose() * X) - ColumnOf(a_vdB);
    const TColumn Size = L.cwiseAbs() * (L.cwiseAbs().transpose() * X.cwiseAbs());
    NUV_CHECK((Error.cwiseAbs().array() <= static_cast<TLong>(4 * n + 8) * Epsilon * (Size.array() + 1e-200L)).all());
}

// Number of columns that a failed factorisation completed: the least leading part that fails has one more. a_Factorise
// factorises a leading part. The completed part must have the same bits in a_vdLeft.
template <class TFactorise>
std::size_t CompletedColumns(const TMatrix& a_A, const TValues& a_vdLeft, const TFactorise& a_Factorise)
{
    TValues vdLeading;
    std::size_t iRows = 0;
    do
    {
        ++iRows;
        NUV_CHECK(iRows <= a_A.n);
        const auto iLength = static_cast<std::ptrdiff_t>(PackedIndex(iRows, 0));
        vdLeading.assign(a_A.vdLower.begin(), a_A.vdLower.begin() + iLength);
    } while (a_Factorise(iRows, vdLeading));
    NUV_CHECK(SameBits(vdLeading.data(), a_vdLeft.data(), vdLeading.size()));
    return iRows - 1;
}

// A factorisation leaves the factor in a_vdLeft. If it fails at a column, the earlier columns are those of the factor,
// and the rest is as it was.
template <class TFactorise>
void CheckFactorisation(const TMatrix& a_A, const TValues& a_vdLeft, bool a_bResult, const TFactorise& a_Factorise)
{
    const std::size_t iColumns = a_bResult ? a_A.n : CompletedColumns(a_A, a_vdLeft, a_Factorise);
    NUV_CHECK(!a_A.bDominant || a_bResult);
    for (std::size_t i = 0; i < a_A.n; ++i)
    {
        for (std::size_t j = iColumns; j <= i; ++j)
        {
            NUV_CHECK(SameBits(a_vdLeft[PackedIndex(i, j)], a_A.vdLower[PackedIndex(i, j)]));
        }
        NUV_CHECK(i >= iColumns || a_vdLeft[PackedIndex(i, i)] >= 0.0);
    }
    CheckFactor(a_A, a_vdLeft, iColumns);
}

} // namespace nuv_fuzz

#endif // NUV_FUZZ_FACTORS_H
