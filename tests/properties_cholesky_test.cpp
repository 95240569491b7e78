// properties_cholesky_test.cpp: packed normal equations, factors and solutions on random cases.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/properties.h"
#include "support/triangle.h"

#include <numeric>

namespace {

using namespace nuv_tests;

// --- Packed normal equations

TValues SomeValues(std::size_t a_iCount)
{
    TValues vdValues(a_iCount);
    std::generate(vdValues.begin(), vdValues.end(), [] { return Real(-10.0, 10.0); });
    return vdValues;
}

// n from 1 to 8 and arrays of that size.
struct TPackedCase
{
    int iUnknowns;
    TValues vdMatrix;
    TValues vdVector;
};

RC_GTEST_PROP(PackedUpdates, DenseAndSparseAgreeBitForBitForDistinctIndicesInAnyOrder, ())
{
    const int iUnknowns = Pick(1, 9);
    std::vector<int> viIndices(iUnknowns);
    std::iota(viIndices.begin(), viIndices.end(), 0);
    for (int i = iUnknowns - 1; i > 0; --i)
    {
        std::swap(viIndices[i], viIndices[Pick(0, i + 1)]);
    }
    viIndices.resize(Pick(1, iUnknowns + 1));
    const TValues vdValues = SomeValues(viIndices.size());
    TValues vdRow(iUnknowns, 0.0);
    for (std::size_t p = 0; p < viIndices.size(); ++p)
    {
        vdRow[viIndices[p]] = vdValues[p];
    }
    // Beside the entries the dense update adds zeros, which change nothing but a -0.
    TValues vdDense = SomeValues(static_cast<std::size_t>(PackedLength(iUnknowns)));
    TValues vdDenseVector = SomeValues(iUnknowns);
    TValues vdSparse = vdDense;
    TValues vdSparseVector = vdDenseVector;
    const double dValue = Real(-10.0, 10.0);
    nuv::UpdateNormMatrixLowTri(iUnknowns, vdDense.data(), vdDenseVector.data(), vdRow.data(), dValue);
    nuv::UpdateNormMatrixLowTri(iUnknowns, vdSparse.data(), vdSparseVector.data(), static_cast<int>(viIndices.size()),
                                vdValues.data(), viIndices.data(), dValue);
    AssertSameValues(vdDense, vdSparse);
    AssertSameValues(vdDenseVector, vdSparseVector);
}

// Normal equations of more observations than unknowns. A unit row for each unknown keeps the least eigenvalue at 1.
TPackedCase SomeNormalEquations()
{
    TPackedCase Case;
    Case.iUnknowns = Pick(1, 9);
    Case.vdMatrix.assign(static_cast<std::size_t>(PackedLength(Case.iUnknowns)), 0.0);
    Case.vdVector.assign(Case.iUnknowns, 0.0);
    for (int i = 0; i < 2 * Case.iUnknowns; ++i)
    {
        const TValues vdRow = SomeValues(Case.iUnknowns);
        const double dOne = 1.0;
        const int iIndex = i / 2;
        nuv::UpdateNormMatrixLowTri(Case.iUnknowns, Case.vdMatrix.data(), Case.vdVector.data(), vdRow.data(),
                                    Real(-10.0, 10.0));
        nuv::UpdateNormMatrixLowTri(Case.iUnknowns, Case.vdMatrix.data(), Case.vdVector.data(), 1, &dOne, &iIndex,
                                    Real(-10.0, 10.0));
    }
    return Case;
}

RC_GTEST_PROP(PackedCholesky, TheFactorTimesItsTransposeIsTheMatrix, ())
{
    const TPackedCase Case = SomeNormalEquations();
    TValues vdFactor = Case.vdMatrix;
    RC_ASSERT(nuv::CholeskyLowTri(Case.iUnknowns, vdFactor.data()));
    for (int i = 0; i < Case.iUnknowns; ++i)
    {
        RC_ASSERT(vdFactor[PackedIndex(i, i)] > 0.0);
        for (int j = 0; j <= i; ++j)
        {
            double dProduct = 0.0;
            double dSize = 0.0;
            for (int k = 0; k <= j; ++k)
            {
                const double dTerm = vdFactor[PackedIndex(i, k)] * vdFactor[PackedIndex(j, k)];
                dProduct += dTerm;
                dSize += std::fabs(dTerm);
            }
            // |N - L L^T| <= (n + 3) roundings of |L||L^T|, the reciprocal included (Higham, Accuracy and Stability of
            // Numerical Algorithms, theorem 10.3), and n + 1 of the product here.
            AssertNear(Case.vdMatrix[PackedIndex(i, j)], dProduct, (Case.iUnknowns + 2) * Epsilon * dSize);
        }
    }
}

RC_GTEST_PROP(PackedCholesky, TheSolutionLeavesASmallResidual, ())
{
    const TPackedCase Case = SomeNormalEquations();
    TValues vdFactor = Case.vdMatrix;
    TValues vdSolution = Case.vdVector;
    RC_ASSERT(nuv::CholeskyLowTri(Case.iUnknowns, vdFactor.data()));
    nuv::SolveCholLowTri(Case.iUnknowns, vdFactor.data(), vdSolution.data());
    double dFactorSize = 0.0; // (|L||L^T|)(i,j) is at most the product of the lengths of two rows of L
    double dSolutionSize = 0.0;
    for (int i = 0; i < Case.iUnknowns; ++i)
    {
        dFactorSize = std::max(dFactorSize, Case.vdMatrix[PackedIndex(i, i)]);
        dSolutionSize += std::fabs(vdSolution[i]);
    }
    for (int i = 0; i < Case.iUnknowns; ++i)
    {
        double dImage = 0.0;
        for (int j = 0; j < Case.iUnknowns; ++j)
        {
            dImage += Case.vdMatrix[PackedIndex(std::max(i, j), std::min(i, j))] * vdSolution[j];
        }
        // (3n + 3) roundings of |L||L^T||x| (theorem 10.4 there), n + 1 of the image here.
        AssertNear(Case.vdVector[i], dImage, (2 * Case.iUnknowns + 2) * Epsilon * dFactorSize * dSolutionSize);
    }
}

RC_GTEST_PROP(PackedCholesky, PowersOfFourInTheMatrixScaleTheFactorExactly, ())
{
    TPackedCase Case = SomeNormalEquations();
    TValues vdFactor = Case.vdMatrix;
    RC_ASSERT(nuv::CholeskyLowTri(Case.iUnknowns, vdFactor.data()));
    const int iExponent = Pick(-100, 101);
    ScaleValues(std::ldexp(1.0, 2 * iExponent), Case.vdMatrix);
    ScaleValues(std::ldexp(1.0, iExponent), vdFactor);
    RC_ASSERT(nuv::CholeskyLowTri(Case.iUnknowns, Case.vdMatrix.data()));
    AssertSameValues(vdFactor, Case.vdMatrix);
}

} // namespace
