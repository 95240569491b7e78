// matrices.h: square matrices for the eigenvalue routines, and calls of the QR iteration.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_MATRICES_H
#define NUV_TESTS_SUPPORT_MATRICES_H

#include "expect.h"
#include "poly.h"

#include <functional>
#include <vector>

namespace nuv_tests {

// Rows of elements, as tests write matrices.
using TRows = std::vector<std::vector<double> >;

inline TRows MakeRows(int a_iN, const std::function<double(int, int)>& a_Element)
{
    TRows vvdRows(static_cast<std::size_t>(a_iN), std::vector<double>(static_cast<std::size_t>(a_iN)));
    for (int i = 0; i < a_iN; ++i)
    {
        for (int j = 0; j < a_iN; ++j)
        {
            vvdRows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = a_Element(i, j);
        }
    }
    return vvdRows;
}

inline TRows MakeCompanion(const std::vector<double>& a_vdMonic)
{
    return MakeRows(static_cast<int>(a_vdMonic.size()) - 1,
                    [&](int i, int j) {
                        return i == 0 ? -a_vdMonic[static_cast<std::size_t>(j) + 1] : i == j + 1 ? 1.0 : 0.0;
                    });
}

// A square matrix in the storage of the routines: column by column, with padding below each column that no routine may
// touch. Elements are counted from 0.
class TColumns
{
public:
    TColumns(const TRows& a_vvdRows, int a_iPadding = 2)
        : iN(static_cast<int>(a_vvdRows.size())), iStride(iN + a_iPadding),
          Values(TGuardedArray::Output(static_cast<std::size_t>(iN * iStride)))
    {
        for (int i = 0; i < iN; ++i)
        {
            for (int j = 0; j < iN; ++j)
            {
                At(i, j) = a_vvdRows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
            }
        }
    }

    double& At(int i, int j)
    {
        return Values[static_cast<std::size_t>(j * iStride + i)];
    }

    const int iN;
    const int iStride;
    TGuardedArray Values;
};

inline ::testing::AssertionResult SameMatrix(const TColumns& a_Expected, const TColumns& a_Actual)
{
    return SameValues(a_Expected.Values.Values(), a_Actual.Values) << " (stride " << a_Actual.iStride << ")";
}

inline void ExpectPaddingUntouched(TColumns& a_Matrix)
{
    EXPECT_TRUE(a_Matrix.Values.IsIntact());
    for (int j = 0; j < a_Matrix.iN; ++j)
    {
        for (int i = a_Matrix.iN; i < a_Matrix.iStride; ++i)
        {
            EXPECT_SAME_BITS(Untouched, a_Matrix.At(i, j));
        }
    }
}

struct TEigenvalues
{
    int iResult;
    std::vector<double> vdReal;
    std::vector<double> vdImaginary;
};

inline TEigenvalues SolveHessenberg(TColumns& a_Matrix)
{
    TGuardedArray Real = TGuardedArray::Output(static_cast<std::size_t>(a_Matrix.iN));
    TGuardedArray Imaginary = Real;
    const int iResult = nuv::HessenbergEigenvalues(a_Matrix.iN, a_Matrix.Values.Data(), a_Matrix.iStride, Real.Data(),
                                                   Imaginary.Data());
    ExpectPaddingUntouched(a_Matrix);
    EXPECT_TRUE(Real.IsIntact());
    EXPECT_TRUE(Imaginary.IsIntact());
    return {iResult, Real.Values(), Imaginary.Values()};
}

inline void ExpectSameEigenvalues(const TEigenvalues& a_Expected, const TEigenvalues& a_Actual)
{
    EXPECT_EQ(a_Expected.iResult, a_Actual.iResult);
    EXPECT_TRUE(SameValues(a_Expected.vdReal, a_Actual.vdReal)) << "real parts";
    EXPECT_TRUE(SameValues(a_Expected.vdImaginary, a_Actual.vdImaginary)) << "imaginary parts";
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_MATRICES_H
