// library.cpp: every exported function at representative sizes, timed alone. compare.py runs it with two libraries.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "points.h"
#include "run.h"

#include "nuv1math.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace bench {

namespace {

constexpr int RECORDS = 16;                            // inputs of one run of a function of a single record
constexpr int ENTRIES = 5;                             // of a sparse equation
constexpr double ONE = 1.0;                            // what an equation's observed value is
const std::vector<int> FACTORS = {3, 8, 32, 100, 500}; // unknowns

using TRecord = std::array<double, 6>;

} // namespace

// Registers a function that makes so many calls of a library function. The time told is that of one call.
template <class TRun> static void Add(const std::string& a_szName, int a_iCalls, TRun a_Run)
{
    benchmark::RegisterBenchmark(a_szName.c_str(),
                                 [=](benchmark::State& a_Timer) mutable
                                 {
                                     for ([[maybe_unused]] auto Iteration : a_Timer)
                                     {
                                         a_Run();
                                         benchmark::ClobberMemory();
                                     }
                                     a_Timer.SetItemsProcessed(a_Timer.iterations() * a_iCalls);
                                 });
}

template <class TRun> static void Add(const std::string& a_szName, int a_iSize, int a_iCalls, TRun a_Run)
{
    Add(a_szName + '/' + std::to_string(a_iSize), a_iCalls, a_Run);
}

static TValues Random(int a_iCount, double a_dLow, double a_dHigh)
{
    std::mt19937 Generator(static_cast<unsigned int>(a_iCount));
    std::uniform_real_distribution<double> Uniform(a_dLow, a_dHigh);
    TValues vdValues(a_iCount);
    std::generate(vdValues.begin(), vdValues.end(), [&] { return Uniform(Generator); });
    return vdValues;
}

// Coefficients of regular affine transformations; the first four serve as parameters and similarities too.
static std::vector<TRecord> MakeRecords()
{
    const TValues vdValues = Random(6 * RECORDS, 0.1, 0.4);
    std::vector<TRecord> vRecords(RECORDS);
    for (int i = 0; i < RECORDS; ++i)
    {
        std::copy_n(vdValues.begin() + 6 * i, 6, vRecords[i].begin());
        vRecords[i][0] += 1.0;
        vRecords[i][4] += 1.0;
    }
    return vRecords;
}

// A call for each of the records. a_Call takes the values of one and writes its output.
template <class TOutput, class TCall> static void AddRecords(const std::string& a_szName, TCall a_Call)
{
    Add(a_szName, RECORDS,
        [=, vRecords = MakeRecords(), vOutputs = std::vector<TOutput>(RECORDS)]() mutable
        {
            for (int i = 0; i < RECORDS; ++i)
            {
                a_Call(vRecords[i], vOutputs[i]);
            }
        });
}

static nuv::TAffineCoefs Affine(const TRecord& r)
{
    return {r[0], r[1], r[2], r[3], r[4], r[5]};
}

static nuv::TConformalCoefs Conformal(const TRecord& r)
{
    const double dSquare = r[0] * r[0] + r[1] * r[1];
    return {r[0], r[1], r[2], r[3], r[0] / dSquare, -r[1] / dSquare};
}

static void AddAffineConversions()
{
    AddRecords<nuv::TAffineCoefs>("AffineParamsToCoefs", [](const TRecord& r, nuv::TAffineCoefs& a_Out)
                                  { nuv::AffineParamsToCoefs(r[0], r[1], r[2], r[3], r[4], r[5], a_Out); });
    AddRecords<TRecord>("AffineCoefsToParam", [](const TRecord& r, TRecord& o)
                        { nuv::AffineCoefsToParam(Affine(r), o[0], o[1], o[2], o[3], o[4], o[5]); });
    AddRecords<nuv::TAffineCoefs>("AffineCoefsToInvCoefs", [](const TRecord& r, nuv::TAffineCoefs& a_Out)
                                  { nuv::AffineCoefsToInvCoefs(Affine(r), a_Out); });
    AddRecords<nuv::TOmographicParams>("AffineCoefsToOmographicCoefs",
                                       [](const TRecord& r, nuv::TOmographicParams& a_Out)
                                       { nuv::AffineCoefsToOmographicCoefs(Affine(r), a_Out); });
    AddRecords<TRecord>("AffineUntransform", [](const TRecord& r, TRecord& o)
                        { nuv::AffineUntransform(Affine(r), r[0], r[1], o[0], o[1]); });
}

// The same for coefficients that were made long before the call.
template <class TOutput, class TCall> static void AddKeptConformal(const std::string& a_szName, TCall a_Call)
{
    const std::vector<TRecord> vRecords = MakeRecords();
    std::vector<nuv::TConformalCoefs> vCoefs;
    std::transform(vRecords.begin(), vRecords.end(), std::back_inserter(vCoefs), Conformal);
    Add(a_szName + ", coefficients kept", RECORDS,
        [=, vOutputs = std::vector<TOutput>(RECORDS)]() mutable
        {
            for (int i = 0; i < RECORDS; ++i)
            {
                a_Call(vCoefs[i], vOutputs[i]);
            }
        });
}

static void AddConformalConversions()
{
    AddRecords<nuv::TConformalCoefs>("ConformalParamsToCoefs", [](const TRecord& r, nuv::TConformalCoefs& a_Out)
                                     { nuv::ConformalParamsToCoefs(r[0], r[1], r[2], r[3], a_Out); });
    AddRecords<TRecord>("ConformalCoefsToParam", [](const TRecord& r, TRecord& o)
                        { nuv::ConformalCoefsToParam(Conformal(r), o[0], o[1], o[2], o[3]); });
    AddRecords<nuv::TConformalCoefs>("ConformalCoefsToInvCoefs", [](const TRecord& r, nuv::TConformalCoefs& a_Out)
                                     { nuv::ConformalCoefsToInvCoefs(Conformal(r), a_Out); });
    AddRecords<nuv::TAffineCoefs>("ConformalCoefsToAffineCoefs", [](const TRecord& r, nuv::TAffineCoefs& a_Out)
                                  { nuv::ConformalCoefsToAffineCoefs(Conformal(r), a_Out); });
}

static void AddKeptConversions()
{
    AddKeptConformal<nuv::TConformalCoefs>("ConformalCoefsToInvCoefs", nuv::ConformalCoefsToInvCoefs);
    AddKeptConformal<nuv::TAffineCoefs>("ConformalCoefsToAffineCoefs", nuv::ConformalCoefsToAffineCoefs);
}

// A fit of n points to a_Map. a_Fit takes the points and writes its output.
template <class TOutput, class TFit>
static void AddFit(const std::string& a_szName, int n, const THomography& a_Map, TFit a_Fit)
{
    Add(a_szName, n, 1, [=, pPoints = MakePoints(n, a_Map), Output = TOutput()]() mutable { a_Fit(*pPoints, Output); });
}

constexpr THomography SIMILARITY = {0.9, -0.4, 50.0, 0.4, 0.9, -20.0, 0.0, 0.0, 1.0};
constexpr THomography AFFINE = {1.2, -0.4, 50.0, 0.3, 0.9, -20.0, 0.0, 0.0, 1.0};
constexpr THomography PROJECTIVE = {1.2, -0.4, 50.0, 0.3, 0.9, -20.0, 1e-4, -2e-4, 1.0};

static void AddFits()
{
    for (const int n : {2, 10, 100, 10000})
    {
        AddFit<nuv::TConformalCoefs>("CalcConformalCoefs", n, SIMILARITY,
                                     [](const TPoints& p, nuv::TConformalCoefs& a_Out) {
                                         nuv::CalcConformalCoefs(p.Count(), p.vdX.data(), p.vdY.data(), p.vdXa.data(),
                                                                 p.vdYa.data(), false, a_Out);
                                     });
    }
    for (const int n : {3, 10, 100, 10000})
    {
        AddFit<nuv::TAffineCoefs>(
            "CalcAffineCoefs", n, AFFINE,
            [](const TPoints& p, nuv::TAffineCoefs& a_Out)
            { nuv::CalcAffineCoefs(p.Count(), p.vdX.data(), p.vdY.data(), p.vdXa.data(), p.vdYa.data(), a_Out); });
    }
    for (const int n : {4, 10, 100, 10000})
    {
        AddFit<nuv::TOmographicParams>(
            "CalcOmographicCoefs", n, PROJECTIVE,
            [](const TPoints& p, nuv::TOmographicParams& a_Out)
            { nuv::CalcOmographicCoefs(p.Count(), p.vdX.data(), p.vdY.data(), p.vdXa.data(), p.vdYa.data(), a_Out); });
    }
}

static void AddChoice(const std::string& a_szKind, bool a_bSameOrientation, nuv::enumMethodUsed a_Requested)
{
    for (const int n : {4, 10, 100})
    {
        AddFit<nuv::TOmographicParams>("CalcCoefs, " + a_szKind, n, PROJECTIVE,
                                       [=](const TPoints& p, nuv::TOmographicParams& a_Out)
                                       {
                                           nuv::enumMethodUsed Used;
                                           nuv::CalcCoefs(p.Count(), p.vdX.data(), p.vdY.data(), p.vdXa.data(),
                                                          p.vdYa.data(), a_bSameOrientation, a_Requested, Used, a_Out);
                                       });
    }
}

// A symmetric matrix with a dominant diagonal, n x n.
static TValues MakeDense(int n)
{
    TValues vdMatrix(n * n);
    const TValues vdElements = Random(n * n, -1.0, 1.0);
    for (int i = 0; i < n; ++i)
    {
        for (int j = 0; j < n; ++j)
        {
            vdMatrix[i * n + j] = vdElements[std::max(i, j) * n + std::min(i, j)] + (i == j ? 2.0 * n : 0.0);
        }
    }
    return vdMatrix;
}

// Its lower triangle, row by row.
static TValues MakePacked(int n)
{
    const TValues vdDense = MakeDense(n);
    TValues vdPacked;
    for (int i = 0; i < n; ++i)
    {
        vdPacked.insert(vdPacked.end(), vdDense.begin() + i * n, vdDense.begin() + i * n + i + 1);
    }
    return vdPacked;
}

// Factorisation and solution of one storage form. Both work in place, so the copy of their input is timed too.
template <class TFactorise, class TSolve>
static void AddCholesky(const std::string& a_szFactorise, const std::string& a_szSolve, int n,
                        const TValues& a_vdMatrix, TFactorise a_Factorise, TSolve a_Solve)
{
    TValues vdFactor = a_vdMatrix;
    if (!a_Factorise(n, vdFactor.data()))
    {
        std::abort();
    }
    Add(a_szFactorise, n, 1,
        [=, vdCopy = a_vdMatrix]() mutable
        {
            std::copy(a_vdMatrix.begin(), a_vdMatrix.end(), vdCopy.begin());
            a_Factorise(n, vdCopy.data());
        });
    Add(a_szSolve, n, 1,
        [=, vdRight = Random(n, -1.0, 1.0), vdCopy = TValues(n)]() mutable
        {
            std::copy(vdRight.begin(), vdRight.end(), vdCopy.begin());
            a_Solve(n, vdFactor.data(), vdCopy.data());
        });
}

// a_iZeros of the equation's coefficients, evenly spread, are zero.
static void AddDenseUpdate(const std::string& a_szName, int n, int a_iZeros)
{
    TValues vdEquation = Random(n, 0.5, 1.0);
    for (int i = 0; i < a_iZeros; ++i)
    {
        vdEquation[i * n / a_iZeros] = 0.0;
    }
    Add(a_szName, n, 1,
        [=, vdMatrix = TValues(n * (n + 1) / 2), vdVector = TValues(n)]() mutable
        { nuv::UpdateNormMatrixLowTri(n, vdMatrix.data(), vdVector.data(), vdEquation.data(), ONE); });
}

static void AddSparseUpdate(int n)
{
    std::vector<int> viIndices;
    for (int i = 0; i < ENTRIES; ++i)
    {
        viIndices.push_back(i * n / ENTRIES);
    }
    Add("UpdateNormMatrixLowTri, 5 entries", n, 1,
        [=, vdMatrix = TValues(n * (n + 1) / 2), vdVector = TValues(n), vdValues = Random(ENTRIES, 0.5, 1.0)]() mutable
        {
            nuv::UpdateNormMatrixLowTri(n, vdMatrix.data(), vdVector.data(), ENTRIES, vdValues.data(), viIndices.data(),
                                        ONE);
        });
}

static void AddAllocation(int n)
{
    Add("InitCholLowTri and DeleteCholLowTri", n, 1,
        [=]
        {
            double *pdMatrix = nullptr, *pdVector = nullptr;
            nuv::InitCholLowTri(n, &pdMatrix, &pdVector);
            benchmark::DoNotOptimize(pdMatrix);
            nuv::DeleteCholLowTri(pdMatrix, pdVector);
        });
}

static void AddLinearAlgebra()
{
    for (const int n : FACTORS)
    {
        AddCholesky("CholeskyLowTri", "SolveCholLowTri", n, MakePacked(n), nuv::CholeskyLowTri, nuv::SolveCholLowTri);
        AddCholesky("Cholesky", "SolveChol", n, MakeDense(n), nuv::Cholesky, nuv::SolveChol);
        AddDenseUpdate("UpdateNormMatrixLowTri, dense", n, 0);
        AddDenseUpdate("UpdateNormMatrixLowTri, dense, a third zeros", n, n / 3);
        if (n >= ENTRIES)
        {
            AddSparseUpdate(n);
        }
    }
    AddAllocation(8);
    AddAllocation(100);
    AddRecords<TRecord>("Roots, two unknowns", [](const TRecord& r, TRecord& o)
                        { nuv::Roots(r[0], r[1], r[3], r[4], r[2], r[5], o[0], o[1]); });
}

static void AddPolynomial(int a_iDegree)
{
    constexpr int POLYNOMIALS = 4;
    constexpr double REAL = 1e-6;
    Add("Roots, polynomial", a_iDegree, POLYNOMIALS,
        [=, vdAll = Random(POLYNOMIALS * (a_iDegree + 1), -1.0, 1.0), vdRoots = TValues(a_iDegree)]() mutable
        {
            for (int i = 0; i < POLYNOMIALS; ++i)
            {
                nuv::Roots(a_iDegree, vdAll.data() + i * (a_iDegree + 1), vdRoots.data(), REAL);
            }
        });
}

// The equations of one form: a_Equation takes the values of a record and solves one.
template <class TEquation> static void AddTrig(const std::string& a_szName, TEquation a_Equation)
{
    AddRecords<std::array<double, 4> >(a_szName, a_Equation);
}

static void AddEquations()
{
    for (const int iDegree : {2, 4, 8, 16, 32, 64})
    {
        AddPolynomial(iDegree);
    }
    using TAngles = std::array<double, 4>;
    AddTrig("SolveLinTrig, two angles",
            [](const TRecord& r, TAngles& o) { nuv::SolveLinTrig(r[0], r[4], r[1], o.data()); });
    AddTrig("SolveLinTrig, c = 0", [](const TRecord& r, TAngles& o) { nuv::SolveLinTrig(r[0], r[4], 0.0, o.data()); });
    AddTrig("SolveQuadTrig, tangents",
            [](const TRecord& r, TAngles& o) { nuv::SolveQuadTrig(r[0], -r[4], r[1], 0.0, 0.0, r[2], o.data()); });
    AddTrig("SolveQuadTrig, linear",
            [](const TRecord& r, TAngles& o) { nuv::SolveQuadTrig(r[1], r[1], 0.0, r[0], r[4], r[2], o.data()); });
    AddTrig("SolveQuadTrig, quartic",
            [](const TRecord& r, TAngles& o) { nuv::SolveQuadTrig(r[0], -r[4], r[1], r[2], r[3], r[5], o.data()); });
}

static void AddRandomNumbers()
{
    constexpr int DRAWS = 1024;
    const auto Draw = [](const std::string& a_szName, auto a_Next)
    {
        Add(a_szName, DRAWS,
            [=, vdValues = TValues(DRAWS)]() mutable { std::generate(vdValues.begin(), vdValues.end(), a_Next); });
    };
    Add("SetRandomSeed", 1, [] { nuv::SetRandomSeed(1); });
    Draw("Rand", [] { return nuv::Rand(); });
    Draw("Rand, bounds", [] { return nuv::Rand(-1.0, 2.0); });
    Draw("Randn", [] { return nuv::Randn(); });
    Draw("Randn, mean and deviation", [] { return nuv::Randn(1.0, 2.0); });
}

} // namespace bench

int main(int a_iArguments, char** a_vszArguments)
{
    bench::AddFits();
    bench::AddChoice("omographic", true, nuv::METHOD_OMOGRAPHIC);
    bench::AddChoice("affine", true, nuv::METHOD_AFFINE);
    bench::AddChoice("conformal", true, nuv::METHOD_CONFORMAL);
    bench::AddChoice("conformal, reversed", false, nuv::METHOD_CONFORMAL);
    bench::AddAffineConversions();
    bench::AddConformalConversions();
    bench::AddKeptConversions();
    bench::AddLinearAlgebra();
    bench::AddEquations();
    bench::AddRandomNumbers();
    return bench::RunRegistered(a_iArguments, a_vszArguments);
}
