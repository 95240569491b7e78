// packed_cholesky.cpp: fuzz target of the normal equations and the packed Cholesky factorisation and solution.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "factors.h"

namespace {

using namespace nuv_fuzz;

bool Factorise(std::size_t n, TValues& a_vdPacked)
{
    TGuardedArray Room(a_vdPacked);
    const bool bResult = nuv::CholeskyLowTri(static_cast<int>(n), Room.Data());
    NUV_CHECK(Room.IsIntact());
    a_vdPacked = Room.Values();
    return bResult;
}

// The dense routine gives the same bits.
void CheckDenseFactor(const TMatrix& a_A, const TValues& a_vdL, bool a_bResult)
{
    TTriangle Dense(a_A.vdLower, a_A.n, TStorage::Square);
    NUV_CHECK(nuv::Cholesky(Dense.Count(), Dense.Data()) == a_bResult);
    NUV_CHECK(SameBits(Dense.Packed(), a_vdL));
}

void CheckFactorAndSolution(TInput& a_Input)
{
    const TMatrix A(a_Input);
    TValues vdL = A.vdLower;
    const bool bResult = Factorise(A.n, vdL);
    CheckFactorisation(A, vdL, bResult, Factorise);
    CheckDenseFactor(A, vdL, bResult);

    TGuardedArray None = TGuardedArray::Output(1);
    NUV_CHECK(nuv::CholeskyLowTri(-a_Input.Int(0, 2), None.Data()) && None.IsUntouchedFrom(0));
    nuv::SolveCholLowTri(-a_Input.Int(0, 2), None.Data(), None.Data());
    NUV_CHECK(None.IsUntouchedFrom(0));

    const TValues vdB = A.bTame ? a_Input.TameValues(A.n) : a_Input.AnyValues(A.n);
    const TGuardedArray Factor(vdL);
    TGuardedArray X(vdB);
    nuv::SolveCholLowTri(static_cast<int>(A.n), Factor.Data(), X.Data());
    NUV_CHECK(Factor.Holds(vdL));
    if (bResult && A.bTame)
    {
        CheckSolution(A.n, vdL, vdB, X.Values());
    }
    if (A.n <= 2) // The two solvers sum in different orders, which makes no difference for one term.
    {
        TTriangle Dense(vdL, A.n, TStorage::Square);
        TValues vdX = vdB;
        nuv::SolveChol(Dense.Count(), Dense.Data(), vdX.data());
        NUV_CHECK(X.Holds(vdX));
    }
}

// Normal equations between guards: the packed matrix and the right-hand side.
struct TSystem
{
    TGuardedArray Matrix;
    TGuardedArray Vector;
};

void AddProduct(std::size_t i, std::size_t j, double a_dProduct, TValues& a_vdMatrix)
{
    double& dElement = a_vdMatrix[PackedIndex(std::max(i, j), std::min(i, j))];
    dElement = dElement + a_dProduct;
}

void CheckDenseUpdate(std::size_t n, const TValues& a_vdN, const TValues& a_vdU, TInput& a_Input)
{
    const TValues vdRow = a_Input.AnyValues(n);
    const double dValue = a_Input.Any();
    TSystem System{TGuardedArray(a_vdN), TGuardedArray(a_vdU)};
    const TGuardedArray Row(vdRow);
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

// 0 to n - 1 in any order, with negative indices between them.
std::vector<int> ShuffledIndices(std::size_t n, TInput& a_Input)
{
    std::vector<int> viIndices;
    for (std::size_t i = 0; i < n; ++i)
    {
        const int iPlace = a_Input.Int(0, static_cast<int>(viIndices.size()));
        viIndices.insert(viIndices.begin() + iPlace, static_cast<int>(i));
        if (a_Input.Byte() % 4 == 0)
        {
            viIndices.insert(viIndices.begin() + iPlace, -1 - a_Input.Int(0, 300));
        }
    }
    return viIndices;
}

// A sparse update with every index once, in any order and with unused entries between them, gives the same bits as the
// dense update.
void CheckSparseIsDense(std::size_t n, const TValues& a_vdN, const TValues& a_vdU, TInput& a_Input)
{
    const TValues vdRow = a_Input.AnyValues(n);
    const double dValue = a_Input.Any();
    const std::vector<int> viIndices = ShuffledIndices(n, a_Input);
    TValues vdValues;
    for (int iIndex : viIndices)
    {
        vdValues.push_back(iIndex < 0 ? NaN : vdRow[static_cast<std::size_t>(iIndex)]);
    }
    TSystem Dense{TGuardedArray(a_vdN), TGuardedArray(a_vdU)};
    TSystem Sparse{TGuardedArray(a_vdN), TGuardedArray(a_vdU)};
    nuv::UpdateNormMatrixLowTri(static_cast<int>(n), Dense.Matrix.Data(), Dense.Vector.Data(), vdRow.data(), dValue);
    const TGuardedArray Values(vdValues);
    nuv::UpdateNormMatrixLowTri(a_Input.Int(-5, 5), Sparse.Matrix.Data(), Sparse.Vector.Data(),
                                static_cast<int>(viIndices.size()), Values.Data(), viIndices.data(), dValue);
    NUV_CHECK(Values.Holds(vdValues));
    NUV_CHECK(Sparse.Matrix.Holds(Dense.Matrix.Values()));
    NUV_CHECK(Sparse.Vector.Holds(Dense.Vector.Values()));
}

// Compares a sparse update, whose indices may be repeated, missing or negative, with its definition.
void CheckSparseUpdate(std::size_t n, const TValues& a_vdN, const TValues& a_vdU, TInput& a_Input)
{
    const std::size_t iCount = a_Input.Size(0, 8);
    const TValues vdValues = a_Input.AnyValues(iCount);
    const double dValue = a_Input.Any();
    std::vector<int> viIndices(iCount);
    for (int& iIndex : viIndices)
    {
        iIndex = a_Input.Int(-2, static_cast<int>(n) - 1);
    }
    TSystem System{TGuardedArray(a_vdN), TGuardedArray(a_vdU)};
    const TGuardedArray Values(vdValues);
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
    const std::size_t n = a_Input.Size(0, 10);
    double* pMatrix = nullptr;
    double* pVector = nullptr;
    nuv::InitCholLowTri(n == 0 ? -a_Input.Int(0, 3) : static_cast<int>(n), &pMatrix, &pVector);
    TValues vdN(pMatrix, pMatrix + PackedIndex(n, 0));
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
