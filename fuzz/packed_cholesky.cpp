// packed_cholesky.cpp: fuzz target of the normal equations and the packed Cholesky factorisation and solution.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "triangles.h"

namespace {

using namespace nuv_fuzz;

bool Factorise(std::size_t n, TValues& a_vdPacked)
{
    TRoom Room(a_vdPacked);
    const bool bResult = nuv::CholeskyLowTri(static_cast<int>(n), Room.Data());
    a_vdPacked = Room.Values();
    return bResult;
}

// The dense routine on the same lower triangle.
bool FactoriseDense(std::size_t n, TValues& a_vdPacked)
{
    TValues vdFull(n * n);
    for (std::size_t i = 0; i < n; ++i)
    {
        std::copy_n(a_vdPacked.begin() + static_cast<std::ptrdiff_t>(At(i, 0)), i + 1,
                    vdFull.begin() + static_cast<std::ptrdiff_t>(i * n));
    }
    const bool bResult = nuv::Cholesky(static_cast<int>(n), vdFull.data());
    for (std::size_t i = 0; i < n; ++i)
    {
        std::copy_n(vdFull.begin() + static_cast<std::ptrdiff_t>(i * n), i + 1,
                    a_vdPacked.begin() + static_cast<std::ptrdiff_t>(At(i, 0)));
    }
    return bResult;
}

void CheckFactorAndSolution(TInput& a_Input)
{
    const TMatrix A(a_Input);
    TValues vdL = A.vdLower;
    const bool bResult = Factorise(A.n, vdL);
    CheckFactorisation(A, vdL, bResult, Factorise);
    TValues vdDense = A.vdLower;
    NUV_CHECK(FactoriseDense(A.n, vdDense) == bResult);
    NUV_CHECK(SameBits(vdDense.data(), vdL.data(), vdL.size()));

    TRoom None(1);
    NUV_CHECK(nuv::CholeskyLowTri(-a_Input.Int(0, 2), None.Data()) && None.UntouchedFrom(0));
    nuv::SolveCholLowTri(-a_Input.Int(0, 2), None.Data(), None.Data());
    NUV_CHECK(None.UntouchedFrom(0));

    const TValues vdB = A.bTame ? a_Input.TameValues(A.n) : a_Input.AnyValues(A.n);
    const TRoom Factor(vdL);
    TRoom X(vdB);
    nuv::SolveCholLowTri(static_cast<int>(A.n), Factor.Data(), X.Data());
    NUV_CHECK(Factor.Holds(vdL));
    if (bResult && A.bTame)
    {
        CheckSolution(A.n, vdL, vdB, X.Values());
    }
    if (A.n <= 2) // no two terms whose order could differ
    {
        TValues vdFull(A.n * A.n);
        for (std::size_t i = 0; i < A.n; ++i)
        {
            std::copy_n(vdL.begin() + static_cast<std::ptrdiff_t>(At(i, 0)), i + 1,
                        vdFull.begin() + static_cast<std::ptrdiff_t>(i * A.n));
        }
        TValues vdX = vdB;
        nuv::SolveChol(static_cast<int>(A.n), vdFull.data(), vdX.data());
        NUV_CHECK(X.Holds(vdX));
    }
}

// The system before an update: as InitCholLowTri leaves it, or holding anything.
struct TSystem
{
    std::size_t n;
    TRoom Matrix;
    TRoom Vector;

    TSystem(std::size_t a_iUnknowns, const TValues& a_vdMatrix, const TValues& a_vdVector)
        : n(a_iUnknowns), Matrix(a_vdMatrix), Vector(a_vdVector)
    {}
};

// One product added to one element after the other, by row and column.
void AddProduct(std::size_t i, std::size_t j, double a_dProduct, TValues& a_vdMatrix)
{
    double& dElement = a_vdMatrix[At(std::max(i, j), std::min(i, j))];
    dElement = dElement + a_dProduct;
}

void CheckDenseUpdate(std::size_t n, const TValues& a_vdN, const TValues& a_vdU, TInput& a_Input)
{
    const TValues vdRow = a_Input.AnyValues(n);
    const double dValue = a_Input.Any();
    TSystem System(n, a_vdN, a_vdU);
    const TRoom Row(vdRow);
    nuv::UpdateNormMatrixLowTri(static_cast<int>(n), System.Matrix.Data(), System.Vector.Data(), Row.Data(), dValue);
    NUV_CHECK(Row.Holds(vdRow));
    TValues vdN = a_vdN;
    TValues vdU = a_vdU;
    for (std::size_t i = 0; i < n; ++i)
    {
        vdU[i] = vdU[i] + vdRow[i] * dValue;
        for (std::size_t j = 0; j <= i; ++j)
        {
            AddProduct(i, j, vdRow[i] * vdRow[j], vdN);
        }
    }
    NUV_CHECK(System.Matrix.Holds(vdN));
    NUV_CHECK(System.Vector.Holds(vdU));
}

// Every index once, in any order, with unused entries between: the same bits as the dense update.
void CheckSparseIsDense(std::size_t n, const TValues& a_vdN, const TValues& a_vdU, TInput& a_Input)
{
    const TValues vdRow = a_Input.AnyValues(n);
    const double dValue = a_Input.Any();
    std::vector<int> viIndices;
    TValues vdValues;
    for (std::size_t i = 0; i < n; ++i)
    {
        const std::size_t iPlace = static_cast<std::size_t>(a_Input.Int(0, static_cast<int>(viIndices.size())));
        viIndices.insert(viIndices.begin() + static_cast<std::ptrdiff_t>(iPlace), static_cast<int>(i));
        if (a_Input.Byte() % 4 == 0)
        {
            viIndices.insert(viIndices.begin() + static_cast<std::ptrdiff_t>(iPlace), -1 - a_Input.Int(0, 300));
        }
    }
    for (int iIndex : viIndices)
    {
        vdValues.push_back(iIndex < 0 ? NaN : vdRow[static_cast<std::size_t>(iIndex)]);
    }
    TSystem Dense(n, a_vdN, a_vdU);
    TSystem Sparse(n, a_vdN, a_vdU);
    nuv::UpdateNormMatrixLowTri(static_cast<int>(n), Dense.Matrix.Data(), Dense.Vector.Data(), vdRow.data(), dValue);
    const TRoom Values(vdValues);
    nuv::UpdateNormMatrixLowTri(a_Input.Int(-5, 5), Sparse.Matrix.Data(), Sparse.Vector.Data(),
                                static_cast<int>(viIndices.size()), Values.Data(), viIndices.data(), dValue);
    NUV_CHECK(Values.Holds(vdValues));
    NUV_CHECK(Sparse.Matrix.Holds(Dense.Matrix.Values()));
    NUV_CHECK(Sparse.Vector.Holds(Dense.Vector.Values()));
}

// Indices repeated, missing and negative, with a copy of exactly as many as there are.
void CheckSparseUpdate(std::size_t n, const TValues& a_vdN, const TValues& a_vdU, TInput& a_Input)
{
    const std::size_t iCount = static_cast<std::size_t>(a_Input.Int(0, 8));
    const TValues vdValues = a_Input.AnyValues(iCount);
    const double dValue = a_Input.Any();
    std::vector<int> viIndices(iCount);
    for (int& iIndex : viIndices)
    {
        iIndex = a_Input.Int(-2, static_cast<int>(n) - 1);
    }
    TSystem System(n, a_vdN, a_vdU);
    const TRoom Values(vdValues);
    nuv::UpdateNormMatrixLowTri(static_cast<int>(n), System.Matrix.Data(), System.Vector.Data(),
                                static_cast<int>(iCount), Values.Data(), viIndices.data(), dValue);
    TValues vdN = a_vdN;
    TValues vdU = a_vdU;
    for (std::size_t p = 0; p < iCount; ++p)
    {
        const int iP = viIndices[p];
        for (std::size_t q = 0; iP >= 0 && q <= p; ++q)
        {
            if (viIndices[q] >= 0)
            {
                AddProduct(static_cast<std::size_t>(iP), static_cast<std::size_t>(viIndices[q]),
                           vdValues[p] * vdValues[q], vdN);
            }
        }
        if (iP >= 0)
        {
            double& dElement = vdU[static_cast<std::size_t>(iP)];
            dElement = dElement + vdValues[p] * dValue;
        }
    }
    NUV_CHECK(System.Matrix.Holds(vdN));
    NUV_CHECK(System.Vector.Holds(vdU));
}

void CheckUpdates(TInput& a_Input)
{
    const std::size_t n = static_cast<std::size_t>(a_Input.Int(0, 10));
    double* pMatrix = nullptr;
    double* pVector = nullptr;
    nuv::InitCholLowTri(n == 0 ? -a_Input.Int(0, 3) : static_cast<int>(n), &pMatrix, &pVector);
    TValues vdN(pMatrix, pMatrix + At(n, 0));
    TValues vdU(pVector, pVector + n);
    for (double dZero : vdN)
    {
        NUV_CHECK(SameBits(dZero, 0.0));
    }
    NUV_CHECK(SameBits(vdU.data(), TValues(n, 0.0).data(), n));
    nuv::DeleteCholLowTri(pMatrix, pVector);
    if (a_Input.Flag())
    {
        vdN = a_Input.AnyValues(vdN.size());
        vdU = a_Input.AnyValues(n);
    }
    switch (a_Input.Byte() % 3)
    {
    case 0:
        CheckDenseUpdate(n, vdN, vdU, a_Input);
        break;
    case 1:
        CheckSparseIsDense(n, vdN, vdU, a_Input);
        break;
    default:
        CheckSparseUpdate(n, vdN, vdU, a_Input);
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_pData, std::size_t a_iSize)
{
    TInput Input(a_pData, a_iSize);
    if (Input.Flag())
    {
        CheckUpdates(Input);
    }
    else
    {
        CheckFactorAndSolution(Input);
    }
    return 0;
}
