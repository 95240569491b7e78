// contracts.cpp: what programs that were compiled with an earlier header rely on; compiling it is the test.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// In the language of the library, so that a device's compiler checks it too. tests/abi.xml fixes the same of the built
// library, and tests/exports.txt its names. What is here changes only together with the major version.

#include "nuv1math.h"

#include <limits.h>
#include <stddef.h>

using namespace nuv;

// ---------------------------------------------------------------------------------------------------------------------
// Values
// ---------------------------------------------------------------------------------------------------------------------

#define HOLDS(a_Name, a_Condition) typedef char Holds##a_Name[(a_Condition) ? 1 : -1]

HOLDS(Byte, CHAR_BIT == 8);
HOLDS(Int, sizeof(int) == 4);
HOLDS(Bool, sizeof(bool) == 1);
HOLDS(Double, sizeof(double) == 8);

HOLDS(Impossible, RET_IMPOSSIBLE == -1);
HOLDS(Indeterminate, RET_INDETERMINATE == -2);
HOLDS(Conformal, METHOD_CONFORMAL == 0);
HOLDS(Affine, METHOD_AFFINE == 1);
HOLDS(Omographic, METHOD_OMOGRAPHIC == 2);
HOLDS(Method, sizeof(enumMethodUsed) == sizeof(int)); // compilers can choose a byte

template <class T> char IsA(const T*);
typedef char ImpossibleIsInt[sizeof(IsA<int>(&RET_IMPOSSIBLE))];
typedef char IndeterminateIsInt[sizeof(IsA<int>(&RET_INDETERMINATE))];

// ---------------------------------------------------------------------------------------------------------------------
// Records: doubles in this order, nothing before, between or behind them
// ---------------------------------------------------------------------------------------------------------------------

template <class TRecord> char IsDouble(double TRecord::*);

#define FIELD(a_Record, a_Name, a_iIndex)                                                                              \
    HOLDS(a_Record##a_Name, sizeof(IsDouble<a_Record>(&a_Record::a_Name)) == 1 &&                                      \
                                offsetof(a_Record, a_Name) == (a_iIndex) * sizeof(double))

HOLDS(TAffineCoefs, sizeof(TAffineCoefs) == 6 * sizeof(double));
FIELD(TAffineCoefs, dA, 0);
FIELD(TAffineCoefs, dB, 1);
FIELD(TAffineCoefs, dC, 2);
FIELD(TAffineCoefs, dD, 3);
FIELD(TAffineCoefs, dE, 4);
FIELD(TAffineCoefs, dF, 5);

HOLDS(TConformalCoefs, sizeof(TConformalCoefs) == 6 * sizeof(double));
FIELD(TConformalCoefs, dA, 0);
FIELD(TConformalCoefs, dB, 1);
FIELD(TConformalCoefs, dTx, 2);
FIELD(TConformalCoefs, dTy, 3);
FIELD(TConformalCoefs, dInvA, 4);
FIELD(TConformalCoefs, dInvB, 5);

HOLDS(TOmographicParams, sizeof(TOmographicParams) == 8 * sizeof(double));
FIELD(TOmographicParams, dA, 0);
FIELD(TOmographicParams, dB, 1);
FIELD(TOmographicParams, dC, 2);
FIELD(TOmographicParams, dD, 3);
FIELD(TOmographicParams, dE, 4);
FIELD(TOmographicParams, dF, 5);
FIELD(TOmographicParams, dG, 6);
FIELD(TOmographicParams, dH, 7);

// A union takes only what has no constructor and no destructor.
union TPlain {
    TAffineCoefs Affine;
    TConformalCoefs Conformal;
    TOmographicParams Omographic;
};

// ---------------------------------------------------------------------------------------------------------------------
// Functions: arguments and result
// ---------------------------------------------------------------------------------------------------------------------

template <class TFunction> char Has(TFunction*); // compiles if the function, or one of its name, is of that type

#define POINTS const double*, const double*, const double*, const double*

typedef char
    CalcCoefsHas[sizeof(Has<bool(int, POINTS, bool, enumMethodUsed, enumMethodUsed&, TOmographicParams&)>(&CalcCoefs))];
typedef char CalcConformalCoefsHas[sizeof(Has<int(unsigned int, POINTS, bool, TConformalCoefs&)>(&CalcConformalCoefs))];
typedef char CalcAffineCoefsHas[sizeof(Has<int(unsigned int, POINTS, TAffineCoefs&)>(&CalcAffineCoefs))];
typedef char CalcOmographicCoefsHas[sizeof(Has<int(int, POINTS, TOmographicParams&)>(&CalcOmographicCoefs))];

typedef char AffineParamsToCoefsHas[sizeof(
    Has<void(double, double, double, double, double, double, TAffineCoefs&)>(&AffineParamsToCoefs))];
typedef char AffineCoefsToParamHas[sizeof(
    Has<int(const TAffineCoefs&, double&, double&, double&, double&, double&, double&)>(&AffineCoefsToParam))];
typedef char AffineCoefsToInvCoefsHas[sizeof(Has<int(const TAffineCoefs&, TAffineCoefs&)>(&AffineCoefsToInvCoefs))];
typedef char
    AffineUntransformHas[sizeof(Has<void(const TAffineCoefs&, double, double, double&, double&)>(&AffineUntransform))];
typedef char ConformalParamsToCoefsHas[sizeof(
    Has<void(double, double, double, double, TConformalCoefs&)>(&ConformalParamsToCoefs))];
typedef char ConformalCoefsToParamHas[sizeof(
    Has<int(const TConformalCoefs&, double&, double&, double&, double&)>(&ConformalCoefsToParam))];
typedef char
    ConformalCoefsToInvCoefsHas[sizeof(Has<void(const TConformalCoefs&, TConformalCoefs&)>(&ConformalCoefsToInvCoefs))];
typedef char ConformalCoefsToAffineCoefsHas[sizeof(
    Has<void(const TConformalCoefs&, TAffineCoefs&)>(&ConformalCoefsToAffineCoefs))];
typedef char AffineCoefsToOmographicCoefsHas[sizeof(
    Has<void(const TAffineCoefs&, TOmographicParams&)>(&AffineCoefsToOmographicCoefs))];

typedef char InitCholLowTriHas[sizeof(Has<void(int, double**, double**)>(&InitCholLowTri))];
typedef char DeleteCholLowTriHas[sizeof(Has<void(double*, double*)>(&DeleteCholLowTri))];
typedef char UpdateDenseHas[sizeof(Has<void(int, double*, double*, const double*, double)>(&UpdateNormMatrixLowTri))];
typedef char UpdateSparseHas[sizeof(
    Has<void(int, double*, double*, int, const double*, const int*, double)>(&UpdateNormMatrixLowTri))];
typedef char CholeskyLowTriHas[sizeof(Has<bool(int, double*)>(&CholeskyLowTri))];
typedef char SolveCholLowTriHas[sizeof(Has<void(int, const double*, double*)>(&SolveCholLowTri))];
typedef char CholeskyHas[sizeof(Has<bool(int, double*)>(&Cholesky))];
typedef char SolveCholHas[sizeof(Has<void(int, const double*, double*)>(&SolveChol))];

typedef char RootsOfPolynomialHas[sizeof(Has<int(unsigned int, const double*, double*, double)>(&Roots))];
typedef char
    RootsOfSystemHas[sizeof(Has<int(double, double, double, double, double, double, double&, double&)>(&Roots))];
typedef char SolveLinTrigHas[sizeof(Has<int(double, double, double, double*)>(&SolveLinTrig))];
typedef char
    SolveQuadTrigHas[sizeof(Has<int(double, double, double, double, double, double, double*)>(&SolveQuadTrig))];

typedef char SetRandomSeedHas[sizeof(Has<void(int)>(&SetRandomSeed))];
typedef char RandHas[sizeof(Has<double()>(&Rand))];
typedef char RandBetweenHas[sizeof(Has<double(double, double)>(&Rand))];
typedef char RandnHas[sizeof(Has<double()>(&Randn))];
typedef char RandnOfHas[sizeof(Has<double(double, double)>(&Randn))];
