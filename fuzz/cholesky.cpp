// cholesky.cpp: fuzz target of the dense Cholesky factorisation and solution.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "factors.h"

namespace {

using namespace nuv_fuzz;

// TTriangle has signalling NaNs above the diagonal, which must be neither used nor written.
bool Factorise(std::size_t n, TValues& a_vdPacked)
{
    TTriangle Full(a_vdPacked, n, TStorage::Square);
    const bool bResult = nuv::Cholesky(Full.Count(), Full.Data());
    NUV_CHECK(Full.RestIsUntouched());
    a_vdPacked = Full.Packed();
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

    TGuardedArray None = TGuardedArray::Output(1);
    NUV_CHECK(nuv::Cholesky(-Input.Int(0, 2), None.Data()) && None.IsUntouchedFrom(0));
    nuv::SolveChol(-Input.Int(0, 2), None.Data(), None.Data());
    NUV_CHECK(None.IsUntouchedFrom(0));

    // The solver takes any factor. Only the solution of a tame matrix is checked.
    const TValues vdB = A.bTame ? Input.TameValues(A.n) : Input.AnyValues(A.n);
    TTriangle Factor(vdL, A.n, TStorage::Square);
    TGuardedArray X(vdB);
    nuv::SolveChol(Factor.Count(), Factor.Data(), X.Data());
    NUV_CHECK(X.IsIntact() && Factor.RestIsUntouched() && SameBits(Factor.Packed(), vdL));
    if (bResult && A.bTame)
    {
        CheckSolution(A.n, vdL, vdB, X.Values());
    }
    return 0;
}
