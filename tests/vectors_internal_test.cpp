// vectors_internal_test.cpp: the internal routines against tables of results computed in exact integer arithmetic.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "affine.h"
#include "functionsimp.h"
#include "vectors.h"

namespace {

using namespace nuv;
using namespace nuv_tests;

// The elements of an array of a_iCount columns or steps of a_iStep; none for no or a negative count.
std::ptrdiff_t Length(int a_iCount, int a_iStep)
{
    return a_iCount < 1 ? 0 : static_cast<std::ptrdiff_t>(a_iCount) * a_iStep;
}

TEST(InternalVectors, CalcMean)
{
    CheckTable("CalcMean",
               [](TVectorCase& a_Case)
               {
                   const int iCount = a_Case.Int();
                   TGuardedArray Values = a_Case.Array(iCount);
                   double dMean = Untouched;
                   CalcMean(static_cast<unsigned int>(iCount), Values.Data(), dMean);
                   a_Case.ExpectDouble(dMean);
               });
}

TEST(InternalVectors, CalcHypot)
{
    CheckTable("CalcHypot",
               [](TVectorCase& a_Case)
               {
                   const double dA = Opaque(a_Case.Double());
                   const double dB = Opaque(a_Case.Double());
                   a_Case.ExpectDouble(CalcHypot(dA, dB));
               });
}

TEST(InternalVectors, ReduceToPeriod)
{
    CheckTable("ReduceToPeriod",
               [](TVectorCase& a_Case)
               {
                   const double dX = Opaque(a_Case.Double());
                   const double dPeriod = Opaque(a_Case.Double());
                   a_Case.ExpectDouble(ReduceToPeriod(dX, dPeriod));
               });
}

TEST(InternalVectors, MaxAbsIndex)
{
    CheckTable("MaxAbsIndex",
               [](TVectorCase& a_Case)
               {
                   const int iCount = a_Case.Int();
                   const int iStep = a_Case.Int();
                   TGuardedArray Values = a_Case.Array(Length(iCount, iStep));
                   a_Case.ExpectInt(MaxAbsIndex(iCount, Values.Data(), iStep));
               });
}

TEST(InternalVectors, SolveUpperTri)
{
    CheckTable("SolveUpperTri",
               [](TVectorCase& a_Case)
               {
                   const int iN = a_Case.Int();
                   const int iLdu = a_Case.Int();
                   const int iIncB = a_Case.Int();
                   const int iIncX = a_Case.Int();
                   TGuardedArray U = a_Case.Array(Length(iN, iLdu));
                   TGuardedArray B = a_Case.Array(Length(iN, iIncB));
                   // The forward fill after a failure needs room for 2n - 1 elements.
                   TGuardedArray X = TGuardedArray::Output(static_cast<std::size_t>(Length(2 * iN - 1, iIncX)));
                   a_Case.ExpectInt(SolveUpperTri(iN, U.Data(), iLdu, B.Data(), iIncB, X.Data(), iIncX));
                   a_Case.ExpectArray(X);
               });
}

TEST(InternalVectors, SolveGauss)
{
    CheckTable("SolveGauss",
               [](TVectorCase& a_Case)
               {
                   const int iN = a_Case.Int();
                   const int iNrhs = a_Case.Int();
                   const int iLda = a_Case.Int();
                   const int iLdb = a_Case.Int();
                   const int iLdx = a_Case.Int();
                   // Without unknowns one element stands in A and in B, to be left alone.
                   TGuardedArray A = a_Case.Array(iN < 1 ? 1 : Length(iN, iLda));
                   TGuardedArray B = a_Case.Array(Length(iNrhs, iLdb));
                   TGuardedArray X = TGuardedArray::Output(static_cast<std::size_t>(Length(iNrhs, iLdx)));
                   a_Case.ExpectInt(SolveGauss(iN, iNrhs, A.Data(), iLda, B.Data(), iLdb, X.Data(), iLdx));
                   a_Case.ExpectArray(A);
                   a_Case.ExpectArray(B);
                   a_Case.ExpectArray(X);
               });
}

} // namespace
