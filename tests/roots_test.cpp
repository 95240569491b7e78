// roots_test.cpp: the real roots of polynomials, through the public header.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"
#include "support/effort.h"
#include "support/expect.h"

#include <algorithm>
#include <functional>
#include <random>

namespace {

using namespace nuv_tests;
using nuv::RET_IMPOSSIBLE;
using nuv::RET_INDETERMINATE;

using TValues = std::vector<double>;

constexpr double Usual = 1e-6;

struct TResult
{
    int iResult;
    TValues vdRoots; // as many as the result says
};

// Calls Roots on an array of a_iDegree roots. What lies beyond the roots found must stay untouched.
TResult Solve(const TValues& a_vdCoefficients, double a_dTolerance = Usual)
{
    const std::size_t iDegree = a_vdCoefficients.size() - 1;
    TGuardedArray Coefficients(a_vdCoefficients);
    TGuardedArray Roots = TGuardedArray::Output(iDegree);
    const int iResult = nuv::Roots(static_cast<unsigned int>(iDegree), Coefficients.Data(), Roots.Data(), a_dTolerance);
    EXPECT_LE(iResult, static_cast<int>(iDegree));
    const std::size_t iCount = std::min(iResult > 0 ? static_cast<std::size_t>(iResult) : 0, iDegree);
    EXPECT_TRUE(Roots.IsUntouchedFrom(iCount));
    EXPECT_TRUE(Roots.IsIntact());
    EXPECT_TRUE(SameValues(a_vdCoefficients, Coefficients));
    return {iResult, TValues(Roots.Data(), Roots.Data() + iCount)};
}

void ExpectExactly(const TValues& a_vdCoefficients, const TValues& a_vdRoots, double a_dTolerance = Usual)
{
    SCOPED_TRACE(::testing::PrintToString(a_vdCoefficients) + ", tolerance " + HexText(a_dTolerance));
    const TResult Result = Solve(a_vdCoefficients, a_dTolerance);
    EXPECT_EQ(static_cast<int>(a_vdRoots.size()), Result.iResult);
    EXPECT_TRUE(SameValues(a_vdRoots, Result.vdRoots));
}

void ExpectResult(const TValues& a_vdCoefficients, int a_iResult, double a_dTolerance = Usual)
{
    SCOPED_TRACE(::testing::PrintToString(a_vdCoefficients));
    EXPECT_EQ(a_iResult, Solve(a_vdCoefficients, a_dTolerance).iResult);
}

// Expects these roots in ascending order, each within its own bound.
void ExpectNear(const TValues& a_vdExpected, const TValues& a_vdBounds, TValues a_vdRoots)
{
    ASSERT_EQ(a_vdExpected.size(), a_vdRoots.size());
    std::sort(a_vdRoots.begin(), a_vdRoots.end());
    for (std::size_t i = 0; i < a_vdExpected.size(); ++i)
    {
        EXPECT_NEAR(a_vdExpected[i], a_vdRoots[i], a_vdBounds[i]);
    }
}

void ExpectNear(const TValues& a_vdExpected, double a_dBound, const TValues& a_vdRoots)
{
    ExpectNear(a_vdExpected, TValues(a_vdExpected.size(), a_dBound), a_vdRoots);
}

// The coefficients of the product of the factors x - r. long double keeps the products below the rounding of double.
TValues Multiply(const TValues& a_vdRoots)
{
    std::vector<long double> vdProduct = {1.0L};
    for (double dRoot : a_vdRoots)
    {
        vdProduct.push_back(0.0L);
        for (std::size_t i = vdProduct.size() - 1; i > 0; --i)
        {
            vdProduct[i] -= dRoot * vdProduct[i - 1];
        }
    }
    return TValues(vdProduct.begin(), vdProduct.end());
}

TValues MakeBinomial(std::size_t a_iDegree, double a_dConstant)
{
    TValues vdCoefficients(a_iDegree + 1, 0.0);
    vdCoefficients.front() = 1.0;
    vdCoefficients.back() = a_dConstant;
    return vdCoefficients;
}

double Norm(const TValues& a_vdValues)
{
    double dSum = 0.0;
    for (double dValue : a_vdValues)
    {
        dSum += dValue * dValue;
    }
    return std::sqrt(dSum);
}

// The sum of the powers of |x| from 0 to n. The value changes by at most this if every coefficient changes by at most
// 1.
double SumPowers(std::size_t a_iDegree, double a_dX)
{
    double dSum = 0.0;
    for (std::size_t i = 0; i <= a_iDegree; ++i)
    {
        dSum = dSum * std::fabs(a_dX) + 1.0;
    }
    return dSum;
}

// The computed roots are exact roots of a polynomial whose coefficients differ by a small multiple of n eps |p|, where
// p is monic (A. Edelman, H. Murakami, Math. Comp. 64 (1995) 763-776).
double BackwardError(const TValues& a_vdMonic)
{
    return 10.0 * static_cast<double>(a_vdMonic.size()) * Epsilon * Norm(a_vdMonic);
}

// A simple root then moves, to first order, by at most that times sum |x|^k / |p'(x)|.
TValues BoundsOfSimpleRoots(const TValues& a_vdMonic, const TValues& a_vdRoots)
{
    TValues vdBounds;
    for (double dX : a_vdRoots)
    {
        double dSlope = 0.0;
        for (std::size_t i = 0; i + 1 < a_vdMonic.size(); ++i)
        {
            dSlope = dSlope * dX + a_vdMonic[i] * static_cast<double>(a_vdMonic.size() - 1 - i);
        }
        vdBounds.push_back(BackwardError(a_vdMonic) * SumPowers(a_vdMonic.size() - 1, dX) / std::fabs(dSlope));
    }
    return vdBounds;
}

void ExpectSimpleRoots(const TValues& a_vdMonic, TValues a_vdRoots)
{
    std::sort(a_vdRoots.begin(), a_vdRoots.end());
    ExpectNear(a_vdRoots, BoundsOfSimpleRoots(a_vdMonic, a_vdRoots), Solve(a_vdMonic).vdRoots);
}

// --- Coefficients that are zero

TEST(Roots, OfTheZeroPolynomialAreIndeterminate)
{
    for (std::size_t iDegree : {0, 1, 2, 7, 200})
    {
        ExpectResult(TValues(iDegree + 1, 0.0), RET_INDETERMINATE);
        ExpectResult(TValues(iDegree + 1, -0.0), RET_INDETERMINATE);
    }
}

TEST(Roots, OfAConstantAreImpossible)
{
    for (double dConstant : {1.0, -3.0, Subnormal, -Subnormal, Inf, NaN})
    {
        for (std::size_t iDegree : {0, 1, 2, 7, 200})
        {
            TValues vdCoefficients(iDegree + 1, 0.0);
            vdCoefficients.back() = dConstant;
            ExpectResult(vdCoefficients, RET_IMPOSSIBLE);
        }
    }
}

TEST(Roots, LeadingZerosLowerTheDegree)
{
    ExpectExactly({0, 0, 1, -1}, {1.0});
    ExpectExactly({0, -0.0, 0, 2, -4}, {2.0});
    ExpectExactly({0, 1, -3, 2}, {2.0, 1.0});
}

TEST(Roots, TrailingZerosAreRootsZero)
{
    ExpectExactly({1, 0}, {0.0});
    ExpectExactly({1, 0, 0}, {0.0, 0.0});
    ExpectExactly({-5, 0, -0.0, 0}, {0.0, 0.0, 0.0});
    ExpectExactly({0, 0, 7, 0, 0}, {0.0, 0.0});
    ExpectExactly({0, 2, -4, 0, 0}, {0.0, 0.0, 2.0});
    TValues vdHigh(301, 0.0);
    vdHigh[295] = 1.0;
    ExpectExactly(vdHigh, TValues(5, 0.0));
}

TEST(Roots, OnlyAnExactZeroCountsAsZero)
{
    ExpectExactly({Subnormal, -Subnormal}, {Inf}); // of degree 1, and the reciprocal of the leading one overflows
    ExpectExactly({1, Subnormal}, {-Subnormal});
    EXPECT_EQ(2, Solve({1e-300, 1, -1}).iResult);
}

// --- First and second degree, by hand

TEST(Roots, OfDegree1AreExactlyTheQuotient)
{
    for (double dTolerance : {Usual, Subnormal, 1e300, Inf})
    {
        ExpectExactly({2, -4}, {2.0}, dTolerance);
        ExpectExactly({-4, 1}, {0.25}, dTolerance);
    }
}

// 49 times the rounded 1/49 is the smallest such product that is not 1.
TEST(Roots, MultiplyByTheReciprocalOfTheLeadingCoefficient)
{
    ExpectExactly({49, -49}, {std::nextafter(1.0, 0.0)});
    ExpectExactly({-49, -49}, {-std::nextafter(1.0, 0.0)});
}

// The root of greater magnitude comes first. The other one is the quotient of the product and it.
TEST(Roots, OfDegree2ComeWithTheGreaterMagnitudeFirst)
{
    ExpectExactly({1, -3, 2}, {2.0, 1.0});
    ExpectExactly({1, 3, 2}, {-2.0, -1.0});
    ExpectExactly({2, -4, -6}, {3.0, -1.0});
    ExpectExactly({1, 0, -4}, {2.0, -2.0});
    ExpectExactly({1, -2, 1}, {1.0, 1.0});
}

// The roots differ much in size: -b + sqrt(b^2 - 4ac) would lose the smaller one.
TEST(Roots, OfDegree2AreNotCancelled)
{
    ExpectNear({1e-8, 1e8}, {1e-23, 1e-7}, Solve({1, -(1e8 + 1e-8), 1}).vdRoots);
}

TEST(Roots, AComplexPairIsNoRoot)
{
    ExpectExactly({1, 0, 1}, {});
    ExpectExactly({1, -6, 25}, {});
    ExpectExactly({1, 0, 1, 0}, {0.0});
}

// Every quadratic with coefficients from -9 to 9 has two roots if b^2 - 4ac >= 0, and none otherwise. Simple roots are
// as exact as their condition allows. Double roots (b^2 = 4ac) are within the square root of the rounding.
TEST(Roots, OfAllSmallQuadraticsAreThoseOfTheFormula)
{
    for (int a = -9; a <= 9; ++a)
    {
        for (int i = 0; i < 19 * 19; ++i)
        {
            const int b = i / 19 - 9;
            const int c = i % 19 - 9;
            const int iDiscriminant = b * b - 4 * a * c;
            if (a == 0 || c == 0)
            {
                continue;
            }
            SCOPED_TRACE(::testing::PrintToString(TValues{1.0 * a, 1.0 * b, 1.0 * c}));
            TValues vdExpected;
            if (iDiscriminant >= 0)
            {
                vdExpected = {(-b - std::sqrt(iDiscriminant)) / (2.0 * a), (-b + std::sqrt(iDiscriminant)) / (2.0 * a)};
                std::sort(vdExpected.begin(), vdExpected.end());
            }
            ExpectNear(vdExpected, iDiscriminant == 0 ? 1e-7 : 1e-13, Solve({1.0 * a, 1.0 * b, 1.0 * c}).vdRoots);
        }
    }
}

// --- Tolerance

TEST(Roots, AToleranceOfZeroOrLessOrNaNLeavesOnlyTheZerosOfTrailingZeros)
{
    for (double dTolerance : {0.0, -0.0, -1.0, -Inf, NaN})
    {
        ExpectExactly({1, -6, 11, -6, 0}, {0.0}, dTolerance);
        ExpectExactly({2, -4}, {}, dTolerance);
        ExpectExactly({1, 0, 0}, {0.0, 0.0}, dTolerance);
    }
}

// The imaginary parts of x^2 + 1 are exactly -1 and 1.
TEST(Roots, AnImaginaryPartMustBeStrictlyBelowTheTolerance)
{
    ExpectExactly({1, 0, 1}, {}, std::nextafter(1.0, 0.0));
    ExpectExactly({1, 0, 1}, {}, 1.0);
    ExpectExactly({1, 0, 1}, {0.0, 0.0}, std::nextafter(1.0, 2.0));
}

TEST(Roots, AnInfiniteToleranceReportsTheRealPartsOfAll)
{
    ExpectExactly({1, 0, 1}, {0.0, 0.0}, Inf);
    ExpectExactly({1, -6, 25}, {3.0, 3.0}, Inf);
    EXPECT_EQ(9, Solve(MakeBinomial(9, -1.0), Inf).iResult);
}

TEST(Roots, TheLeastToleranceStillReportsRealEigenvalues)
{
    ExpectExactly({1, -3, 2}, {2.0, 1.0}, Subnormal);
}

// --- Higher degrees

TEST(Roots, TheZeroRootsComeFirst)
{
    const TResult Result = Solve({1, -6, 11, -6, 0});
    ASSERT_EQ(4, Result.iResult);
    EXPECT_SAME_BITS(0.0, Result.vdRoots[0]);
    ExpectNear({0.0, 1.0, 2.0, 3.0}, 1e-13, Result.vdRoots);
}

// All low degrees and some up to the greatest, because the time grows with the cube. An emulated processor tries fewer.
std::vector<std::size_t> MakeDegrees(std::size_t a_iLeast)
{
    std::vector<std::size_t> viDegrees;
    const std::size_t iMost = Emulated ? 50 : 166;
    for (std::size_t iDegree = a_iLeast; iDegree <= iMost; iDegree += iDegree < 32 ? 1 : iDegree < 100 ? 17 : 33)
    {
        viDegrees.push_back(iDegree);
    }
    if (!Emulated)
    {
        viDegrees.push_back(199);
    }
    viDegrees.push_back(200);
    return viDegrees;
}

// The companion matrix is a permutation matrix, whose eigenvalues have the condition 1.
TEST(RootsSlow, OfUnityUpToDegree200)
{
    for (std::size_t iDegree : MakeDegrees(1))
    {
        SCOPED_TRACE(iDegree);
        const double dBound = 10.0 * static_cast<double>(iDegree) * Epsilon;
        const bool bEven = iDegree % 2 == 0;
        ExpectNear(bEven ? TValues{-1.0, 1.0} : TValues{1.0}, dBound, Solve(MakeBinomial(iDegree, -1.0)).vdRoots);
        ExpectNear(bEven ? TValues{} : TValues{-1.0}, dBound, Solve(MakeBinomial(iDegree, 1.0)).vdRoots);
    }
}

// (x^n - 1)(x - 2)
TEST(Roots, OfUnityAndOneOutsideUpToDegree201)
{
    for (std::size_t iDegree : MakeDegrees(2))
    {
        SCOPED_TRACE(iDegree);
        TValues vdCoefficients(iDegree + 2, 0.0);
        vdCoefficients[0] = 1.0;
        vdCoefficients[1] = -2.0;
        vdCoefficients[iDegree] = -1.0;
        vdCoefficients[iDegree + 1] = 2.0;
        TValues vdExpected = {1.0, 2.0};
        if (iDegree % 2 == 0)
        {
            vdExpected.push_back(-1.0);
        }
        ExpectSimpleRoots(vdCoefficients, vdExpected);
    }
}

// T(n+1) = 2x T(n) - T(n-1), made monic by a power of 2; roots cos((2k-1) pi/2n).
TEST(Roots, OfChebyshevPolynomials)
{
    TValues vdPrevious = {1};
    TValues vdCurrent = {1, 0};
    for (std::size_t iDegree = 1; iDegree <= 16; ++iDegree)
    {
        SCOPED_TRACE(iDegree);
        TValues vdMonic = vdCurrent;
        TValues vdExpected;
        for (double& dCoefficient : vdMonic)
        {
            dCoefficient /= vdCurrent[0];
        }
        for (std::size_t k = 1; k <= iDegree; ++k)
        {
            vdExpected.push_back(iDegree == 2 * k - 1 ? 0.0 : std::cos((2.0 * k - 1.0) * M_PI / (2.0 * iDegree)));
        }
        ExpectSimpleRoots(vdMonic, vdExpected);
        TValues vdNext = vdCurrent;
        vdNext.push_back(0.0);
        for (double& dCoefficient : vdNext)
        {
            dCoefficient *= 2.0;
        }
        for (std::size_t i = 0; i < vdPrevious.size(); ++i)
        {
            vdNext[i + 2] -= vdPrevious[i];
        }
        vdPrevious = vdCurrent;
        vdCurrent = vdNext;
    }
}

TEST(Roots, OfWilkinsonPolynomials)
{
    for (int iDegree = 1; iDegree <= 9; ++iDegree)
    {
        SCOPED_TRACE(iDegree);
        TValues vdExpected;
        for (int k = 1; k <= iDegree; ++k)
        {
            vdExpected.push_back(k);
        }
        ExpectSimpleRoots(Multiply(vdExpected), vdExpected);
    }
}

// Roots at random places with gaps between them, signs mixed.
TEST(Roots, OfProductsOfRandomLinearFactors)
{
    std::mt19937_64 Engine(1);
    std::uniform_real_distribution<double> Jitter(-0.2, 0.2);
    for (int iDegree = 1; iDegree <= 10; ++iDegree)
    {
        for (int iRepeat = 0; iRepeat < 20; ++iRepeat)
        {
            SCOPED_TRACE(std::to_string(iDegree) + ", " + std::to_string(iRepeat));
            TValues vdExpected;
            for (int k = 0; k < iDegree; ++k)
            {
                vdExpected.push_back(0.5 * (k - 0.5 * iDegree + Jitter(Engine)));
            }
            ExpectSimpleRoots(Multiply(vdExpected), vdExpected);
        }
    }
}

// Complex eigenvalues come in pairs, so the number of real ones is even or odd like the degree. Every root solves a
// nearby polynomial.
TEST(Roots, OfRandomPolynomialsSolveThem)
{
    std::mt19937_64 Engine(2);
    std::normal_distribution<double> Normal;
    for (std::size_t iDegree : {1, 2, 3, 4, 5, 8, 13, 20, 40, 80, 200})
    {
        for (int iRepeat = 0; iRepeat < (iDegree < 50 ? 10 : 1); ++iRepeat)
        {
            SCOPED_TRACE(std::to_string(iDegree) + ", " + std::to_string(iRepeat));
            TValues vdMonic(iDegree + 1, 1.0);
            std::generate(vdMonic.begin() + 1, vdMonic.end(), [&] { return Normal(Engine); });
            const TResult Result = Solve(vdMonic);
            EXPECT_EQ(iDegree % 2, static_cast<std::size_t>(Result.iResult) % 2);
            for (double dX : Result.vdRoots)
            {
                long double dValue = 0.0L;
                for (double dCoefficient : vdMonic)
                {
                    dValue = dValue * dX + dCoefficient;
                }
                EXPECT_LE(std::fabs(static_cast<double>(dValue)), BackwardError(vdMonic) * SumPowers(iDegree, dX));
            }
        }
    }
}

// A common factor that is a power of 2 changes no bit of the companion matrix.
TEST(Roots, DoNotDependOnACommonPowerOf2)
{
    const TValues vdCoefficients = {1.5, -0.7, -11, 3.25, 8, -0.3};
    const TResult Expected = Solve(vdCoefficients);
    EXPECT_GE(Expected.iResult, 1);
    for (int iExponent : {-300, -1, 1, 300})
    {
        TValues vdScaled = vdCoefficients;
        for (double& dCoefficient : vdScaled)
        {
            dCoefficient = std::ldexp(dCoefficient, iExponent);
        }
        ExpectExactly(vdScaled, Expected.vdRoots);
    }
}

// The roots are twelve orders of magnitude apart. Because of the balancing, each is right to a few units in its own
// last place.
TEST(Roots, OfVeryDifferentSizeAreExactEach)
{
    const TValues vdExpected = {1e-6, 1.0, 1e6};
    const TResult Result = Solve(Multiply(vdExpected));
    ExpectNear(vdExpected, {1e-6 * 1e-14, 1e-14, 1e6 * 1e-14}, Result.vdRoots);
}

// --- Multiple roots

// A perturbation of eps splits a k-fold root into k roots at a distance of the k-th root of eps (times a small
// constant).
TEST(Roots, AMultipleRootIsReportedAsOftenAsItOccursWithinAWideTolerance)
{
    for (double dRoot : {1.0, -1.0, 0.5, -3.0, 2.7})
    {
        for (std::size_t iMultiplicity = 1; iMultiplicity <= 6; ++iMultiplicity)
        {
            SCOPED_TRACE(std::to_string(dRoot) + ", " + std::to_string(iMultiplicity));
            const double dBound = 4.0 * std::fabs(dRoot) * std::pow(16.0 * Epsilon, 1.0 / iMultiplicity);
            ExpectNear(TValues(iMultiplicity, dRoot), dBound,
                       Solve(Multiply(TValues(iMultiplicity, dRoot)), 1.0).vdRoots);
        }
    }
}

// A double root splits by about 1e-8 into two real roots or into a pair. Within 1e-6 it is reported twice either way.
TEST(Roots, ADoubleRootIsReportedTwice)
{
    for (double dRoot : {1.0, -1.0, 0.1, 0.3, -0.7, 2.7, 3.3})
    {
        SCOPED_TRACE(dRoot);
        ExpectNear({dRoot, dRoot}, 1e-7 * std::fabs(dRoot), Solve(Multiply({dRoot, dRoot})).vdRoots);
        ExpectNear({dRoot, dRoot, 7.5}, {1e-6, 1e-6, 1e-12}, Solve(Multiply({dRoot, dRoot, 7.5})).vdRoots);
    }
}

// A triple root splits by about 1e-5 into a real root and a pair. The pair is outside the tolerance 1e-6 and inside
// 1e-4.
TEST(Roots, TheToleranceDecidesAboutATripleRoot)
{
    EXPECT_EQ(1, Solve({1, -3, 3, -1}, 1e-6).iResult);
    EXPECT_EQ(3, Solve({1, -3, 3, -1}, 1e-4).iResult);
}

// --- The iteration gives up

// Both double roots of x^4 - 2x^2 + 1 are missed, and none are invented for x^4 + 2x^2 + 1. Not even an infinite
// tolerance reports an eigenvalue that was not found.
TEST(Roots, ThatTheIterationDoesNotFindAreNotReported)
{
    for (double dTolerance : {Usual, 1e300, Inf})
    {
        ExpectExactly({1, 0, -2, 0, 1}, {}, dTolerance);
        ExpectExactly({-1, 0, 2, 0, -1}, {}, dTolerance);
        ExpectExactly({1, 0, 2, 0, 1}, {}, dTolerance);
        ExpectExactly({1, 0, -2, 0, 1, 0, 0}, {0.0, 0.0}, dTolerance);
    }
}

// x^8 - 4x^6 + 3x^4 + 4x^2 - 4 = (x^4 - 1)(x^2 - 2)^2: 1 and -1 split off first, then the iteration does not converge.
// The roots sqrt(2) and -sqrt(2), twice each, are missing.
TEST(Roots, ThatTheIterationFoundBeforeItGaveUpAreReported)
{
    const TValues vdCoefficients = {1, 0, -4, 0, 3, 0, 4, 0, -4};
    for (double dTolerance : {Usual, Inf})
    {
        const TResult Result = Solve(vdCoefficients, dTolerance);
        EXPECT_EQ(2, Result.iResult);
        ExpectNear({-1.0, 1.0}, 1e-13, Result.vdRoots);
    }
}

// x^6 - 3x^4 + 4 = (x^2 + 1)(x^2 - 2)^2: here the complex pair splits off first.
TEST(Roots, ThatTheIterationFoundBeforeItGaveUpCanAllBeComplex)
{
    ExpectExactly({1, 0, -3, 0, 0, 0, 4}, {});
    ExpectExactly({1, 0, -3, 0, 0, 0, 4}, {0.0, 0.0}, Inf);
}

// Thirty iterations with exceptional shifts at the tenth and the twentieth just find or just miss these roots. With one
// iteration more or less, or with another shift, the result would be the opposite. The expected results are from a
// second program, written from the description of the method. An infinite tolerance counts all eigenvalues that were
// found.
TEST(Roots, TheIterationsAndTheirShiftsDecideWhatIsFound)
{
    for (const TValues& vdFound : {TValues{1, 0, -4, 0, 4},
                                   {1, 0, -1, 0, -1, 0, 1},
                                   {1, 0, 0, 0, -3, 0, -2},
                                   {1, 0, -3, 0, 2, 0, 1},
                                   {1, 0, 0, 0, 4, 0, -4, 0, 1},
                                   {1, 0, -1, 0, -2, 0, 0, 0, 3}})
    {
        ExpectResult(vdFound, static_cast<int>(vdFound.size()) - 1, Inf);
    }
    for (const TValues& vdLost : {TValues{4, 0, 0, 0, -3, 0, 1},
                                  {3, 0, -1, 0, -4, 0, -1, 0, 3},
                                  {1, 0, -3, 0, 3, 0, -3, 0, 3},
                                  {1, 0, -1, 0, -3, 0, 1, 0, 2}})
    {
        ExpectResult(vdLost, 0, Inf);
    }
}

// Bits from that second program. They depend on the two exceptional shifts, and on a block that splits off and is
// joined again later.
TEST(Roots, TheOrderOfTheOperationsDecidesTheBits)
{
    ExpectExactly({1, 0, -4, 0, 4},
                  {-0x1.6a09e6a86e5a9p+0, 0x1.6a09e6a849bd3p+0, -0x1.6a09e627791e4p+0, 0x1.6a09e6279dbbfp+0});
    ExpectExactly({1, 0, -2, 0, 2},
                  {-0x1.19435caffa9f8p+0, -0x1.19435caffa9f8p+0, 0x1.19435caffa9fap+0, 0x1.19435caffa9fap+0}, Inf);
    ExpectExactly(
        {1, 0, 0, 0, -3, 0, -2},
        {-0x1.6a09e667f3bd4p+0, 0x1.6a09e667f3bd1p+0, -0x1.ca548p-38, -0x1.ca548p-38, 0x1.ca548p-38, 0x1.ca548p-38},
        Inf);
}

// --- NaN, infinity, extreme sizes

TEST(Roots, OfDegree1FollowTheArithmeticOfInfinityAndNaN)
{
    ExpectExactly({1, Inf}, {-Inf});
    ExpectExactly({1, -Inf}, {Inf});
    ExpectExactly({Inf, 1}, {0.0});
    ExpectExactly({Inf, Inf}, {NaN});
    ExpectExactly({1, NaN}, {NaN});
    ExpectExactly({NaN, 1}, {NaN});
    ExpectExactly({NaN, 0}, {0.0});
}

// Expects that the call ends and writes nothing beyond the room for the degree.
TEST(Roots, OfNaNAndInfiniteCoefficientsEnd)
{
    for (double dSpecial : {NaN, Inf, -Inf})
    {
        for (std::size_t iDegree : {2, 3, 4, 5, 8, 20})
        {
            for (std::size_t iPosition = 0; iPosition <= iDegree; ++iPosition)
            {
                SCOPED_TRACE(std::to_string(iDegree) + ", " + std::to_string(iPosition));
                TValues vdCoefficients(iDegree + 1, 1.0);
                vdCoefficients[iPosition] = dSpecial;
                EXPECT_GE(Solve(vdCoefficients).iResult, 0);
            }
            EXPECT_GE(Solve(TValues(iDegree + 1, dSpecial)).iResult, 0);
        }
    }
}

// If the matrix contains NaN, a complex pair is NaN too and never passes the tolerance.
TEST(Roots, OfDegree2WithNaNAreNone)
{
    ExpectExactly({1, NaN, 1}, {}, Inf);
    ExpectExactly({1, 1, NaN}, {}, Inf);
    ExpectExactly({NaN, 1, 1}, {}, Inf);
}

// 1e300/1e-12 is infinite, and halving does not make the norm of that column finite.
TEST(Roots, OfCoefficientsWhoseQuotientOverflowsEnd)
{
    ExpectExactly({1e-12, 3, 1e300}, {});
    for (const TValues& vdCoefficients : {TValues{1e-12, 3, 1e300, 1},
                                          {1e-300, 1e300, 1e-300, 1e300},
                                          {1, -1e300, Subnormal, -1e300, 1},
                                          {Subnormal, 1, 1e308, 1e-308, 1}})
    {
        EXPECT_GE(Solve(vdCoefficients).iResult, 0);
    }
}

// x^2 = 2^1000 and x^2 = 2^-1000: no square overflows or underflows.
TEST(Roots, OfExtremeSizeAreExact)
{
    ExpectExactly({1, 0, -std::ldexp(1.0, 1000)}, {std::ldexp(1.0, 500), -std::ldexp(1.0, 500)});
    ExpectExactly({1, 0, -std::ldexp(1.0, -1000)}, {std::ldexp(1.0, -500), -std::ldexp(1.0, -500)});
}

} // namespace
