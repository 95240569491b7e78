// vectors_test.cpp: the exported routines against tables of results that were computed in exact integer arithmetic.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/random_sequences.h"
#include "support/triangle.h"
#include "support/vector_tables.h"

namespace {

using namespace nuv;
using namespace nuv_tests;

// The affine and the conformal fit take an unsigned number of points, and a degree is unsigned. No table has negative
// ones.
unsigned int Unsigned(int a_iCount)
{
    return static_cast<unsigned int>(a_iCount);
}

// A conversion of one record into another that cannot fail.
template <class TFrom, class TTo> void CheckConversion(TVectorCase& a_Case, void (*a_pConvert)(const TFrom&, TTo&))
{
    const TFrom From = a_Case.Record<TFrom>();
    TTo To = Filled<TTo>();
    a_pConvert(From, To);
    a_Case.ExpectRecord(To);
}

TEST(Vectors, RootsOfTwoEquations)
{
    CheckTable("Roots",
               [](TVectorCase& a_Case)
               {
                   const std::vector<double> vdIn = a_Case.Doubles(6);
                   double dX = Untouched;
                   double dY = Untouched;
                   a_Case.ExpectInt(Roots(vdIn[0], vdIn[1], vdIn[2], vdIn[3], vdIn[4], vdIn[5], dX, dY));
                   a_Case.ExpectDouble(dX);
                   a_Case.ExpectDouble(dY);
               });
}

TEST(Vectors, AffineCoefsToInvCoefs)
{
    CheckTable("AffineCoefsToInvCoefs",
               [](TVectorCase& a_Case)
               {
                   const TAffineCoefs Coefs = a_Case.Record<TAffineCoefs>();
                   TAffineCoefs Inverse = Filled<TAffineCoefs>();
                   a_Case.ExpectInt(AffineCoefsToInvCoefs(Coefs, Inverse));
                   a_Case.ExpectRecord(Inverse);
               });
}

TEST(Vectors, AffineUntransform)
{
    CheckTable("AffineUntransform",
               [](TVectorCase& a_Case)
               {
                   const TAffineCoefs Coefs = a_Case.Record<TAffineCoefs>();
                   const double dXa = a_Case.Double();
                   const double dYa = a_Case.Double();
                   double dX = Untouched;
                   double dY = Untouched;
                   AffineUntransform(Coefs, dXa, dYa, dX, dY);
                   a_Case.ExpectDouble(dX);
                   a_Case.ExpectDouble(dY);
               });
}

TEST(Vectors, ConformalCoefsToInvCoefs)
{
    CheckTable("ConformalCoefsToInvCoefs",
               [](TVectorCase& a_Case) { CheckConversion(a_Case, ConformalCoefsToInvCoefs); });
}

TEST(Vectors, ConformalCoefsToAffineCoefs)
{
    CheckTable("ConformalCoefsToAffineCoefs",
               [](TVectorCase& a_Case) { CheckConversion(a_Case, ConformalCoefsToAffineCoefs); });
}

TEST(Vectors, AffineCoefsToOmographicCoefs)
{
    CheckTable("AffineCoefsToOmographicCoefs",
               [](TVectorCase& a_Case) { CheckConversion(a_Case, AffineCoefsToOmographicCoefs); });
}

TEST(Vectors, CalcAffineCoefs)
{
    CheckTable("CalcAffineCoefs",
               [](TVectorCase& a_Case)
               {
                   const int iCount = a_Case.Int();
                   TGuardedPoints Points = a_Case.Points(iCount);
                   TAffineCoefs Coefs = Filled<TAffineCoefs>();
                   a_Case.ExpectInt(CalcAffineCoefs(Unsigned(iCount), Points.X.Data(), Points.Y.Data(),
                                                    Points.Xa.Data(), Points.Ya.Data(), Coefs));
                   a_Case.ExpectRecord(Coefs);
               });
}

TEST(Vectors, CalcConformalCoefs)
{
    CheckTable("CalcConformalCoefs",
               [](TVectorCase& a_Case)
               {
                   const int iCount = a_Case.Int();
                   const bool bRigidInverse = a_Case.Int() != 0;
                   TGuardedPoints Points = a_Case.Points(iCount);
                   TConformalCoefs Coefs = Filled<TConformalCoefs>();
                   a_Case.ExpectInt(CalcConformalCoefs(Unsigned(iCount), Points.X.Data(), Points.Y.Data(),
                                                       Points.Xa.Data(), Points.Ya.Data(), bRigidInverse, Coefs));
                   a_Case.ExpectRecord(Coefs);
               });
}

TEST(Vectors, UpdateNormMatrixLowTriDense)
{
    CheckTable("UpdateNormMatrixLowTriDense",
               [](TVectorCase& a_Case)
               {
                   const int iUnknowns = a_Case.Int();
                   TGuardedArray Matrix = a_Case.Array(iUnknowns < 1 ? 0 : PackedLength(iUnknowns));
                   TGuardedArray Vector = a_Case.Array(iUnknowns);
                   TGuardedArray Row = a_Case.Array(iUnknowns);
                   UpdateNormMatrixLowTri(iUnknowns, Matrix.Data(), Vector.Data(), Row.Data(), a_Case.Double());
                   a_Case.ExpectArray(Matrix);
                   a_Case.ExpectArray(Vector);
               });
}

TEST(Vectors, UpdateNormMatrixLowTriSparse)
{
    CheckTable("UpdateNormMatrixLowTriSparse",
               [](TVectorCase& a_Case)
               {
                   const int iUnknowns = a_Case.Int();
                   TGuardedArray Matrix = a_Case.Array(PackedLength(iUnknowns));
                   TGuardedArray Vector = a_Case.Array(iUnknowns);
                   const int iCount = a_Case.Int();
                   TGuardedArray Values = a_Case.Array(iCount);
                   const std::vector<int> viIndices = a_Case.Ints(iCount);
                   UpdateNormMatrixLowTri(iUnknowns, Matrix.Data(), Vector.Data(), iCount, Values.Data(),
                                          viIndices.data(), a_Case.Double());
                   a_Case.ExpectArray(Matrix);
                   a_Case.ExpectArray(Vector);
               });
}

TEST(Vectors, CholeskyLowTri)
{
    CheckTable("CholeskyLowTri",
               [](TVectorCase& a_Case)
               {
                   const int iUnknowns = a_Case.Int();
                   TGuardedArray Matrix = a_Case.Array(iUnknowns < 1 ? 0 : PackedLength(iUnknowns));
                   a_Case.ExpectInt(CholeskyLowTri(iUnknowns, Matrix.Data()));
                   a_Case.ExpectArray(Matrix);
               });
}

TEST(Vectors, SolveCholLowTri)
{
    CheckTable("SolveCholLowTri",
               [](TVectorCase& a_Case)
               {
                   const int iUnknowns = a_Case.Int();
                   TGuardedArray Factor = a_Case.Array(iUnknowns < 1 ? 0 : PackedLength(iUnknowns));
                   TGuardedArray Vector = a_Case.Array(iUnknowns);
                   SolveCholLowTri(iUnknowns, Factor.Data(), Vector.Data());
                   a_Case.ExpectArray(Vector);
               });
}

TEST(Vectors, Cholesky)
{
    CheckTable("Cholesky",
               [](TVectorCase& a_Case)
               {
                   const int iN = a_Case.Int();
                   TGuardedArray Matrix = a_Case.Array(SquareLength(iN));
                   a_Case.ExpectInt(Cholesky(iN, Matrix.Data()));
                   a_Case.ExpectArray(Matrix);
               });
}

TEST(Vectors, SolveChol)
{
    CheckTable("SolveChol",
               [](TVectorCase& a_Case)
               {
                   const int iN = a_Case.Int();
                   TGuardedArray Factor = a_Case.Array(SquareLength(iN));
                   TGuardedArray Vector = a_Case.Array(iN);
                   SolveChol(iN, Factor.Data(), Vector.Data());
                   a_Case.ExpectArray(Vector);
               });
}

TEST(Vectors, RootsOfPolynomial)
{
    CheckTable("PolynomialRoots",
               [](TVectorCase& a_Case)
               {
                   const int iDegree = a_Case.Int();
                   TGuardedArray Coefficients = a_Case.Array(iDegree + 1);
                   const double dTolerance = a_Case.Double();
                   TGuardedArray Found = TGuardedArray::Output(static_cast<std::size_t>(iDegree));
                   a_Case.ExpectInt(Roots(Unsigned(iDegree), Coefficients.Data(), Found.Data(), dTolerance));
                   a_Case.ExpectArray(Found);
               });
}

TEST(Vectors, CalcOmographicCoefs)
{
    CheckTable("CalcOmographicCoefs",
               [](TVectorCase& a_Case)
               {
                   const int iCount = a_Case.Int();
                   TGuardedPoints Points = a_Case.Points(iCount);
                   TOmographicParams Params = Filled<TOmographicParams>();
                   a_Case.ExpectInt(CalcOmographicCoefs(iCount, Points.X.Data(), Points.Y.Data(), Points.Xa.Data(),
                                                        Points.Ya.Data(), Params));
                   a_Case.ExpectRecord(Params);
               });
}

TEST(Vectors, CalcCoefs)
{
    CheckTable("CalcCoefs",
               [](TVectorCase& a_Case)
               {
                   // Not a kind of transformation, but within the range of the enumeration.
                   const int iUntouched = 3;
                   const int iCount = a_Case.Int();
                   const bool bSameOrientation = a_Case.Int() != 0;
                   const enumMethodUsed Requested = static_cast<enumMethodUsed>(a_Case.Int());
                   TGuardedPoints Points = a_Case.Points(iCount);
                   enumMethodUsed Used = static_cast<enumMethodUsed>(iUntouched);
                   TOmographicParams Params = Filled<TOmographicParams>();
                   a_Case.ExpectInt(CalcCoefs(iCount, Points.X.Data(), Points.Y.Data(), Points.Xa.Data(),
                                              Points.Ya.Data(), bSameOrientation, Requested, Used, Params));
                   a_Case.ExpectInt(Used, iUntouched);
                   a_Case.ExpectRecord(Params);
               });
}

TEST(Vectors, SetRandomSeedAndRand)
{
    TDigest Digest;
    for (const auto& Sequence : ReadRandomSequences())
    {
        SetRandomSeed(Sequence.first);
        for (double dExpected : Sequence.second)
        {
            const double dDrawn = Rand();
            Digest.Add(dDrawn);
            EXPECT_SAME_BITS(dExpected, dDrawn) << "seed " << Sequence.first;
        }
    }
    TDigestReport::Add("random_sequences", Digest.Value());
}

} // namespace
