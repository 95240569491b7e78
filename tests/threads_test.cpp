// threads_test.cpp: every exported function but the random generator's, called by several threads at once.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Each thread must compute the same bits as one thread alone. The thread sanitizer finds a race even if the bits are
// right.

#include "nuv1math.h"
#include "support/expect.h"
#include "support/fits.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <functional>
#include <set>
#include <thread>

using namespace nuv;
using namespace nuv_tests;

namespace {

using TValues = std::vector<double>;

// A function of the library, and calls of it with all that they wrote and returned.
struct TFunction
{
    const char* szSignature; // as tests/exports.txt has it
    std::function<TValues()> Calls;
};

template <class TRecord> void Append(TValues& a_vdValues, const TRecord& a_Record)
{
    const auto vdFields = Fields(a_Record);
    a_vdValues.insert(a_vdValues.end(), vdFields.begin(), vdFields.end());
}

// The result of a conversion of a_From, and its result code if it has one.
template <class TTo, class TResult, class TFrom>
TValues Converted(TResult (*a_pConvert)(const TFrom&, TTo&), const TFrom& a_From)
{
    TTo To = Filled<TTo>();
    TValues vdValues;
    if constexpr (std::is_void_v<TResult>)
    {
        a_pConvert(a_From, To);
    }
    else
    {
        vdValues.push_back(a_pConvert(a_From, To));
    }
    Append(vdValues, To);
    return vdValues;
}

const TAffineCoefs Affine = {2.0, -0.5, 10.0, 0.25, 3.0, 20.0};
const TConformalCoefs Conformal = {1.5, -0.5, 10.0, 20.0, 0.6, 0.2};

// The corners and two inner points of a square, and targets close to a projective image.
const TControlPoints Points = {
    {0, 100, 100, 0, 50, 25}, {0, 0, 100, 100, 50, 75}, {10, 205, 205, 10, 140, 88}, {25, 62.5, 212.5, 325, 150, 220}};

// 3 unknowns, packed and full.
const TValues Packed = {4.0, 2.0, 5.0, 6.0, 7.0, 14.5};
const TValues Full = {4.0, 2.0, 6.0, 2.0, 5.0, 7.0, 6.0, 7.0, 14.5};
constexpr int Unknowns = 3;

// The matrix that a_pFactorise left, and its result.
TValues Factor(bool (*a_pFactorise)(int, double*), TValues a_vdMatrix)
{
    a_vdMatrix.push_back(a_pFactorise(Unknowns, a_vdMatrix.data()));
    return a_vdMatrix;
}

TValues Solution(bool (*a_pFactorise)(int, double*), void (*a_pSolve)(int, const double*, double*),
                 const TValues& a_vdMatrix)
{
    const TValues vdFactor = Factor(a_pFactorise, a_vdMatrix);
    TValues vdVector = {1.0, 2.0, 3.0};
    a_pSolve(Unknowns, vdFactor.data(), vdVector.data());
    return vdVector;
}

const std::vector<TFunction> Functions = {
    {"AffineParamsToCoefs(double, double, double, double, double, double, nuv::TAffineCoefs&)",
     []
     {
         TAffineCoefs Coefs;
         AffineParamsToCoefs(2.0, 3.0, 0.1, 0.7, 10.0, 20.0, Coefs);
         TValues vdValues;
         Append(vdValues, Coefs);
         return vdValues;
     }},
    {"AffineCoefsToParam(nuv::TAffineCoefs const&, double&, double&, double&, double&, double&, double&)",
     []
     {
         TValues vd(6);
         vd.push_back(AffineCoefsToParam(Affine, vd[0], vd[1], vd[2], vd[3], vd[4], vd[5]));
         return vd;
     }},
    {"AffineCoefsToInvCoefs(nuv::TAffineCoefs const&, nuv::TAffineCoefs&)",
     [] { return Converted(AffineCoefsToInvCoefs, Affine); }},
    {"AffineUntransform(nuv::TAffineCoefs const&, double, double, double&, double&)",
     []
     {
         TValues vd(2);
         AffineUntransform(Affine, 33.0, 44.0, vd[0], vd[1]);
         return vd;
     }},
    {"ConformalParamsToCoefs(double, double, double, double, nuv::TConformalCoefs&)",
     []
     {
         TConformalCoefs Coefs;
         ConformalParamsToCoefs(2.0, 0.7, 10.0, 20.0, Coefs);
         TValues vdValues;
         Append(vdValues, Coefs);
         return vdValues;
     }},
    {"ConformalCoefsToParam(nuv::TConformalCoefs const&, double&, double&, double&, double&)",
     []
     {
         TValues vd(4);
         vd.push_back(ConformalCoefsToParam(Conformal, vd[0], vd[1], vd[2], vd[3]));
         return vd;
     }},
    {"ConformalCoefsToInvCoefs(nuv::TConformalCoefs const&, nuv::TConformalCoefs&)",
     [] { return Converted(ConformalCoefsToInvCoefs, Conformal); }},
    {"ConformalCoefsToAffineCoefs(nuv::TConformalCoefs const&, nuv::TAffineCoefs&)",
     [] { return Converted(ConformalCoefsToAffineCoefs, Conformal); }},
    {"AffineCoefsToOmographicCoefs(nuv::TAffineCoefs const&, nuv::TOmographicParams&)",
     [] { return Converted(AffineCoefsToOmographicCoefs, Affine); }},
    {"CalcAffineCoefs(unsigned int, double const*, double const*, double const*, double const*, nuv::TAffineCoefs&)",
     []
     {
         TAffineCoefs Coefs;
         TValues vdValues = {1.0 * Fit(Points, Coefs)};
         Append(vdValues, Coefs);
         return vdValues;
     }},
    {"CalcConformalCoefs(unsigned int, double const*, double const*, double const*, double const*, bool, "
     "nuv::TConformalCoefs&)",
     []
     {
         TConformalCoefs Coefs;
         TValues vdValues = {1.0 * Fit(Points, Coefs)};
         Append(vdValues, Coefs);
         return vdValues;
     }},
    {"CalcOmographicCoefs(int, double const*, double const*, double const*, double const*, nuv::TOmographicParams&)",
     []
     {
         TOmographicParams Params;
         TValues vdValues = {1.0 * Fit(Points, Params)};
         Append(vdValues, Params);
         return vdValues;
     }},
    {"CalcCoefs(int, double const*, double const*, double const*, double const*, bool, nuv::enumMethodUsed, "
     "nuv::enumMethodUsed&, nuv::TOmographicParams&)",
     []
     {
         TOmographicParams Params;
         enumMethodUsed Used;
         TValues vdValues;
         for (const bool bSameOrientation : {false, true})
         {
             vdValues.push_back(Choose(Points, bSameOrientation, METHOD_OMOGRAPHIC, Used, Params));
             vdValues.push_back(Used);
             Append(vdValues, Params);
         }
         return vdValues;
     }},
    {"InitCholLowTri(int, double**, double**)",
     []
     {
         double* vdMatrix = nullptr;
         double* vdVector = nullptr;
         InitCholLowTri(Unknowns, &vdMatrix, &vdVector);
         TValues vdValues(vdMatrix, vdMatrix + Packed.size());
         vdValues.insert(vdValues.end(), vdVector, vdVector + Unknowns);
         DeleteCholLowTri(vdMatrix, vdVector);
         return vdValues;
     }},
    {"DeleteCholLowTri(double*, double*)",
     []
     {
         double* vdMatrix = nullptr;
         double* vdVector = nullptr;
         InitCholLowTri(100, &vdMatrix, &vdVector);
         DeleteCholLowTri(vdMatrix, vdVector);
         return TValues{0.0};
     }},
    {"UpdateNormMatrixLowTri(int, double*, double*, double const*, double)",
     []
     {
         TValues vdMatrix = Packed;
         TValues vdVector(Unknowns, 1.0);
         const double vdRow[] = {1.5, 2.5, 3.5};
         UpdateNormMatrixLowTri(Unknowns, vdMatrix.data(), vdVector.data(), vdRow, 4.5);
         vdMatrix.insert(vdMatrix.end(), vdVector.begin(), vdVector.end());
         return vdMatrix;
     }},
    {"UpdateNormMatrixLowTri(int, double*, double*, int, double const*, int const*, double)",
     []
     {
         TValues vdMatrix = Packed;
         TValues vdVector(Unknowns, 1.0);
         const double vdRow[] = {1.5, 3.5};
         const int viIndices[] = {2, 0};
         UpdateNormMatrixLowTri(Unknowns, vdMatrix.data(), vdVector.data(), 2, vdRow, viIndices, 4.5);
         vdMatrix.insert(vdMatrix.end(), vdVector.begin(), vdVector.end());
         return vdMatrix;
     }},
    {"CholeskyLowTri(int, double*)", [] { return Factor(CholeskyLowTri, Packed); }},
    {"SolveCholLowTri(int, double const*, double*)", [] { return Solution(CholeskyLowTri, SolveCholLowTri, Packed); }},
    {"Cholesky(int, double*)", [] { return Factor(Cholesky, Full); }},
    {"SolveChol(int, double const*, double*)", [] { return Solution(Cholesky, SolveChol, Full); }},
    {"Roots(unsigned int, double const*, double*, double)",
     []
     {
         const double vdCoefs[] = {-24.0, 50.0, -35.0, 10.0, -1.0};
         TValues vdRoots(4, Untouched);
         vdRoots.push_back(Roots(4, vdCoefs, vdRoots.data(), 1e-6));
         return vdRoots;
     }},
    {"Roots(double, double, double, double, double, double, double&, double&)",
     []
     {
         TValues vd(2);
         vd.push_back(Roots(2.0, 1.0, 1.0, 3.0, 5.0, 7.0, vd[0], vd[1]));
         return vd;
     }},
    {"SolveLinTrig(double, double, double, double*)",
     []
     {
         TValues vd(2, Untouched);
         vd.push_back(SolveLinTrig(1.0, 2.0, 0.5, vd.data()));
         return vd;
     }},
    {"SolveQuadTrig(double, double, double, double, double, double, double*)",
     []
     {
         TValues vd(4, Untouched);
         vd.push_back(SolveQuadTrig(1.0, -2.0, 0.5, 0.25, -0.125, 0.1, vd.data()));
         return vd;
     }},
};

// Runs a_Work in a_iThreads threads that begin together.
void RunInThreads(int a_iThreads, const std::function<void(int)>& a_Work)
{
    std::atomic<int> iReady{0};
    std::vector<std::thread> Threads;
    for (int iThread = 0; iThread < a_iThreads; ++iThread)
    {
        Threads.emplace_back(
            [&, iThread]
            {
                for (++iReady; iReady < a_iThreads;)
                {
                    std::this_thread::yield();
                }
                a_Work(iThread);
            });
    }
    for (std::thread& Thread : Threads)
    {
        Thread.join();
    }
}

} // namespace

TEST(Threads, TheFunctionsCalledHereAreAllButTheGenerators)
{
    std::ifstream File(NUV_TEST_DATA "/../exports.txt");
    std::set<std::string> Expected;
    std::string szLine;
    while (std::getline(File, szLine))
    {
        const bool bGenerator = szLine.find("Rand") != std::string::npos;
        if (!bGenerator)
        {
            Expected.insert(szLine);
        }
    }
    std::set<std::string> Called;
    for (const TFunction& Function : Functions)
    {
        Called.insert(std::string("nuv::") + Function.szSignature);
    }
    EXPECT_EQ(Expected, Called);
}

// Calls all functions a_iRounds times in each of a_iThreads threads at once, a_iWaves times with new threads.
static void ExpectTheSameBits(int a_iThreads, int a_iWaves, int a_iRounds)
{
    std::vector<TValues> Alone;
    for (const TFunction& Function : Functions)
    {
        Alone.push_back(Function.Calls());
    }
    std::atomic<int> iDiffering{0};
    std::atomic<int> iCalls{0};
    const auto Work = [&](int a_iThread)
    {
        // Every thread starts with another function, so that different functions run at the same time too.
        for (std::size_t i = 0; i < a_iRounds * Functions.size(); ++i)
        {
            const std::size_t iFunction = (i + 7 * a_iThread) % Functions.size();
            iDiffering += !SameBits(Alone[iFunction], Functions[iFunction].Calls());
            ++iCalls;
        }
    };
    for (int iWave = 0; iWave < a_iWaves; ++iWave)
    {
        RunInThreads(a_iThreads, Work);
    }
    EXPECT_EQ(a_iThreads * a_iWaves * a_iRounds * static_cast<int>(Functions.size()), iCalls);
    EXPECT_EQ(0, iDiffering);
}

TEST(Threads, EveryFunctionGivesTheSameBitsInFourThatCallItLong)
{
    ExpectTheSameBits(4, 1, 50);
}

TEST(Threads, EveryFunctionGivesTheSameBitsInAThousandFiftyAtATime)
{
    ExpectTheSameBits(50, 20, 1);
}

#if defined(__SANITIZE_THREAD__)

// The generator's state is shared and unlocked, so this is a race: a sanitizer that misses it would also miss others.
TEST(Threads, TheSanitizerSeesTheRaceOfTheGenerator)
{
    constexpr int ExitCodeOfTheSanitizer = 66;
    EXPECT_EXIT(
        {
            RunInThreads(2,
                         [](int)
                         {
                             for (int i = 0; i < 1000; ++i)
                             {
                                 Rand();
                             }
                         });
            std::exit(0);
        },
        ::testing::ExitedWithCode(ExitCodeOfTheSanitizer), "data race(.|\n)*nuv::Rand");
}

#endif
