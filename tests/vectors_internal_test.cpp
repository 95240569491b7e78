// vectors_internal_test.cpp: the internal routines against tables of results computed in exact integer arithmetic.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "affine.h"
#include "functionsimp.h"
#include "poly.h"
#include "support/vector_tables.h"

namespace {

using namespace nuv;
using namespace nuv_tests;

// The elements of an array of a_iCount columns or steps of a_iStep; none for no or a negative count.
std::ptrdiff_t Length(int a_iCount, int a_iStep)
{
    return a_iCount < 1 ? 0 : static_cast<std::ptrdiff_t>(a_iCount) * a_iStep;
}

// A routine that changes a square matrix in place. What stands between its columns is among the outputs.
void CheckSquareMatrix(TVectorCase& a_Case, void (*a_pChange)(int, double*, int))
{
    const int iN = a_Case.Int();
    const int iStride = a_Case.Int();
    TGuardedArray Matrix = a_Case.Array(Length(iN, iStride));
    a_pChange(iN, Matrix.Data(), iStride);
    a_Case.ExpectArray(Matrix);
}

// The elements between the columns of a matrix of a_iN rows.
std::vector<double> Padding(const TGuardedArray& a_Matrix, int a_iN, int a_iStride)
{
    std::vector<double> vdPadding;
    int iPlace = 0;
    for (double dValue : a_Matrix.Values())
    {
        if (iPlace++ % a_iStride >= a_iN)
        {
            vdPadding.push_back(dValue);
        }
    }
    return vdPadding;
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

TEST(InternalVectors, BalanceMatrix)
{
    CheckTable("BalanceMatrix", [](TVectorCase& a_Case) { CheckSquareMatrix(a_Case, BalanceMatrix); });
}

TEST(InternalVectors, ReduceToHessenberg)
{
    CheckTable("ReduceToHessenberg", [](TVectorCase& a_Case) { CheckSquareMatrix(a_Case, ReduceToHessenberg); });
}

TEST(InternalVectors, HessenbergEigenvalues)
{
    CheckTable("HessenbergEigenvalues",
               [](TVectorCase& a_Case)
               {
                   const int iN = a_Case.Int();
                   const int iStride = a_Case.Int();
                   TGuardedArray Matrix = a_Case.Array(Length(iN, iStride));
                   const std::vector<double> vdPadding = Padding(Matrix, iN, iStride);
                   TGuardedArray Real = TGuardedArray::Output(static_cast<std::size_t>(Length(iN, 1)));
                   TGuardedArray Imaginary = Real;
                   a_Case.ExpectInt(HessenbergEigenvalues(iN, Matrix.Data(), iStride, Real.Data(), Imaginary.Data()));
                   a_Case.ExpectArray(Real);
                   a_Case.ExpectArray(Imaginary);
                   // The matrix itself is scratch from here on, but not what stands around and between its columns.
                   a_Case.ExpectIntact(Matrix);
                   const std::vector<double> vdAfter = Padding(Matrix, iN, iStride);
                   EXPECT_TRUE(SameBits(vdPadding, vdAfter)) << "written between the columns";
               });
}

} // namespace
