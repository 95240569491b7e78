// cholesky.cpp: fuzz target of the dense Cholesky factorisation and solution.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "triangles.h"

namespace {

using namespace nuv_fuzz;

// The full matrix, its strict upper triangle holding what is no result.
constexpr double Upper = 9.87e65;

TValues Dense(std::size_t n, const TValues& a_vdPacked)
{
    TValues vdFull(n * n, Upper);
    for (std::size_t i = 0; i < n; ++i)
    {
        for (std::size_t j = 0; j <= i; ++j)
        {
            vdFull[i * n + j] = a_vdPacked[At(i, j)];
        }
    }
    return vdFull;
}

TValues Packed(std::size_t n, const TRoom& a_Full)
{
    TValues vdPacked;
    for (std::size_t i = 0; i < n; ++i)
    {
        vdPacked.insert(vdPacked.end(), a_Full.Data() + i * n, a_Full.Data() + i * n + i + 1);
        for (std::size_t j = i + 1; j < n; ++j)
        {
            NUV_CHECK(SameBits(a_Full[i * n + j], Upper)); // neither read nor written
        }
    }
    return vdPacked;
}

bool Factorise(std::size_t n, TValues& a_vdPacked)
{
    TRoom Full(Dense(n, a_vdPacked));
    const bool bResult = nuv::Cholesky(static_cast<int>(n), Full.Data());
    a_vdPacked = Packed(n, Full);
    return bResult;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_pData, std::size_t a_iSize)
{
    TInput Input(a_pData, a_iSize);
    const TMatrix A(Input);
    TValues vdL = A.vdLower;
    const bool bResult = Factorise(A.n, vdL);
    CheckFactorisation(A, vdL, bResult, Factorise);

    TRoom None(1);
    NUV_CHECK(nuv::Cholesky(-Input.Int(0, 2), None.Data()) && None.UntouchedFrom(0));
    nuv::SolveChol(-Input.Int(0, 2), None.Data(), None.Data());
    NUV_CHECK(None.UntouchedFrom(0));

    // Any factor may be handed to the solver; the solution is checked where it comes from a tame matrix.
    const TValues vdB = A.bTame ? Input.TameValues(A.n) : Input.AnyValues(A.n);
    const TValues vdFull = Dense(A.n, vdL);
    const TRoom Factor(vdFull);
    TRoom X(vdB);
    nuv::SolveChol(static_cast<int>(A.n), Factor.Data(), X.Data());
    NUV_CHECK(Factor.Holds(vdFull));
    if (bResult && A.bTame)
    {
        CheckSolution(A.n, vdL, vdB, X.Values());
    }
    return 0;
}
