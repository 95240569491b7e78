// roots_survey.cpp: makes the table of docs/roots.md: how often Roots reports the true number of real roots.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The true number of real roots, with multiplicity, comes from Sturm's theorem in integers of any size. It is that of
// the coefficients that Roots receives: a double is an integer times a power of 2. Each polynomial is solved with the
// tolerance 1e-6, and again after the shift x = y + 0.3 with the tolerance 1e-4.

#include "nuv1math.h"
#include "poly.h"
#include "polynomials.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <gmpxx.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using nuv_tests::TCoefficients;
using TIntegers = std::vector<mpz_class>; // highest power first, no leading zeros
constexpr double Usual = 1e-6;            // tolerance
constexpr double Wide = 1e-4;
constexpr double Shift = 0.3;

// --- The true count

TIntegers Trim(TIntegers a_viP)
{
    std::size_t iFirst = 0;
    while (iFirst < a_viP.size() && a_viP[iFirst] == 0)
    {
        ++iFirst;
    }
    a_viP.erase(a_viP.begin(), a_viP.begin() + static_cast<std::ptrdiff_t>(iFirst));
    return a_viP;
}

// Divides the coefficients by their greatest common divisor, which is positive.
TIntegers MakePrimitive(TIntegers a_viP)
{
    mpz_class iDivisor = 0;
    for (const mpz_class& iCoefficient : a_viP)
    {
        iDivisor = gcd(iDivisor, iCoefficient);
    }
    for (mpz_class& iCoefficient : a_viP)
    {
        iCoefficient /= iDivisor;
    }
    return a_viP;
}

// Multiplies the coefficients by a common power of 2 that makes them integers, and removes common factors.
TIntegers MakeIntegers(const TCoefficients& a_vdP)
{
    int iLeast = std::numeric_limits<int>::max();
    for (double d : a_vdP)
    {
        iLeast = d == 0.0 ? iLeast : std::min(iLeast, std::ilogb(d) - 52);
    }
    TIntegers viP;
    for (double d : a_vdP)
    {
        viP.emplace_back(std::ldexp(d, -iLeast));
    }
    return MakePrimitive(Trim(viP));
}

TIntegers Differentiate(const TIntegers& a_viP)
{
    TIntegers viResult;
    for (std::size_t i = 0; i + 1 < a_viP.size(); ++i)
    {
        viResult.push_back(a_viP[i] * static_cast<unsigned long>(a_viP.size() - 1 - i));
    }
    return viResult;
}

// A positive multiple of the remainder of the division.
TIntegers Remainder(TIntegers a_viP, const TIntegers& a_viDivisor)
{
    while (a_viP.size() >= a_viDivisor.size())
    {
        const mpz_class iLead = a_viP[0] * sgn(a_viDivisor[0]);
        const mpz_class iFactor = abs(a_viDivisor[0]);
        for (std::size_t i = 0; i < a_viP.size(); ++i)
        {
            a_viP[i] = a_viP[i] * iFactor - (i < a_viDivisor.size() ? mpz_class(iLead * a_viDivisor[i]) : mpz_class(0));
        }
        a_viP.erase(a_viP.begin());
    }
    a_viP = Trim(a_viP);
    return a_viP.empty() ? a_viP : MakePrimitive(a_viP);
}

// The number of changes of sign along a Sturm chain at plus or minus infinity.
int CountChanges(const std::vector<TIntegers>& a_Chain, bool a_bMinusInfinity)
{
    int iChanges = 0;
    int iPrevious = 0;
    for (const TIntegers& viP : a_Chain)
    {
        const int iSign = a_bMinusInfinity && viP.size() % 2 == 0 ? -sgn(viP[0]) : sgn(viP[0]);
        iChanges += iPrevious != 0 && iSign != iPrevious ? 1 : 0;
        iPrevious = iSign;
    }
    return iChanges;
}

// Counts the different real roots of p by Sturm's theorem, and then those of the greatest common divisor of p and p',
// in which the multiplicity of every root is less by one, and so on.
int CountRealRoots(TIntegers a_viP)
{
    int iCount = 0;
    while (a_viP.size() > 1)
    {
        std::vector<TIntegers> Chain = {a_viP, MakePrimitive(Differentiate(a_viP))};
        for (;;)
        {
            TIntegers viNext = Remainder(Chain[Chain.size() - 2], Chain.back());
            if (viNext.empty())
            {
                break;
            }
            for (mpz_class& iCoefficient : viNext)
            {
                iCoefficient = -iCoefficient;
            }
            Chain.push_back(viNext);
        }
        iCount += CountChanges(Chain, true) - CountChanges(Chain, false);
        a_viP = Chain.back();
    }
    return iCount;
}

// --- The library

// Whether the iteration gives up on the companion matrix. Trailing zeros are removed first, as Roots does.
bool GivesUp(TCoefficients a_vdP)
{
    while (a_vdP.back() == 0.0)
    {
        a_vdP.pop_back();
    }
    const std::size_t iDegree = a_vdP.size() - 1;
    const int iN = static_cast<int>(iDegree);
    TCoefficients vdMatrix(iDegree * iDegree + 1, 0.0);
    TCoefficients vdReal(iDegree + 1);
    TCoefficients vdImaginary(iDegree + 1);
    const double dFactor = -1.0 / a_vdP[0];
    for (std::size_t j = 0; j < iDegree; ++j)
    {
        vdMatrix[j * iDegree + j + 1] = 1.0; // the last one is written to the spare element
        vdMatrix[j * iDegree] = a_vdP[j + 1] * dFactor;
    }
    nuv::BalanceMatrix(iN, vdMatrix.data(), iN);
    nuv::ReduceToHessenberg(iN, vdMatrix.data(), iN);
    return nuv::HessenbergEigenvalues(iN, vdMatrix.data(), iN, vdReal.data(), vdImaginary.data()) == 0;
}

int CountReported(const TCoefficients& a_vdP, double a_dTolerance)
{
    TCoefficients vdRoots(a_vdP.size());
    return nuv::Roots(static_cast<unsigned int>(a_vdP.size() - 1), a_vdP.data(), vdRoots.data(), a_dTolerance);
}

// p(y + a_dShift), by repeated division by y + a_dShift.
TCoefficients ShiftArgument(TCoefficients a_vdP, double a_dShift)
{
    for (std::size_t iEnd = a_vdP.size(); iEnd > 1; --iEnd)
    {
        for (std::size_t i = 1; i < iEnd; ++i)
        {
            a_vdP[i] += a_vdP[i - 1] * a_dShift;
        }
    }
    return a_vdP;
}

// --- The sets

// The results of one way to call Roots on a set.
struct TTally
{
    int iGivenUp = 0;
    int iFewer = 0;
    int iMore = 0;

    void Add(const TCoefficients& a_vdP, double a_dTolerance, int a_iTrue)
    {
        const int iReported = CountReported(a_vdP, a_dTolerance);
        iGivenUp += GivesUp(a_vdP) ? 1 : 0;
        iFewer += iReported < a_iTrue ? 1 : 0;
        iMore += iReported > a_iTrue ? 1 : 0;
    }
};

class TSet
{
public:
    explicit TSet(const std::string& a_szName) : szName(a_szName)
    {}

    ~TSet()
    {
        std::printf("| %s | %d | %d | %d | %d | %d | %d | %d |\n", szName.c_str(), iAll, Plain.iGivenUp, Plain.iFewer,
                    Plain.iMore, Shifted.iGivenUp, Shifted.iFewer, Shifted.iMore);
        std::fflush(stdout);
    }

    TSet(const TSet&) = delete;
    TSet& operator=(const TSet&) = delete;

    void Add(const TCoefficients& a_vdP)
    {
        const int iTrue = CountRealRoots(MakeIntegers(a_vdP));
        ++iAll;
        Plain.Add(a_vdP, Usual, iTrue);
        Shifted.Add(ShiftArgument(a_vdP, Shift), Wide, iTrue);
    }

private:
    const std::string szName;
    int iAll = 0;
    TTally Plain;
    TTally Shifted;
};

// Calls a_Add with all combinations of a_iCount integer coefficients from -a_iMost to a_iMost whose first one is not 0.
void ForAllIntegers(std::size_t a_iCount, int a_iMost, const std::function<void(const TCoefficients&)>& a_Add)
{
    TCoefficients vdP(a_iCount, -a_iMost);
    for (;;)
    {
        if (vdP[0] != 0.0)
        {
            a_Add(vdP);
        }
        std::size_t i = a_iCount;
        while (i > 0 && vdP[i - 1] == a_iMost)
        {
            vdP[i - 1] = -a_iMost;
            --i;
        }
        if (i == 0)
        {
            return;
        }
        vdP[i - 1] += 1.0;
    }
}

std::string WithDegree(const std::string& a_szName, std::size_t a_iDegree)
{
    return a_szName + ", degree " + std::to_string(a_iDegree);
}

void SurveySmallIntegers()
{
    for (std::size_t iDegree = 2; iDegree <= 5; ++iDegree)
    {
        TSet Set(WithDegree("integers -3 ... 3", iDegree));
        ForAllIntegers(iDegree + 1, 3, [&](const TCoefficients& a_vdP) { Set.Add(a_vdP); });
    }
}

void SurveyEvenOnes()
{
    for (std::size_t iHalf = 2; iHalf <= 4; ++iHalf)
    {
        TSet Set(WithDegree("p(x^2), integers -4 ... 4, p(0) not 0", 2 * iHalf));
        ForAllIntegers(iHalf + 1, 4,
                       [&](const TCoefficients& a_vdP)
                       {
                           TCoefficients vdEven(2 * iHalf + 1, 0.0);
                           for (std::size_t i = 0; i <= iHalf; ++i)
                           {
                               vdEven[2 * i] = a_vdP[i];
                           }
                           if (vdEven.back() != 0.0)
                           {
                               Set.Add(vdEven);
                           }
                       });
    }
}

void SurveyPalindromes()
{
    for (std::size_t iDegree = 3; iDegree <= 8; ++iDegree)
    {
        TSet Set(WithDegree("palindromes, integers -4 ... 4", iDegree));
        ForAllIntegers(iDegree / 2 + 1, 4,
                       [&](const TCoefficients& a_vdHalf)
                       {
                           TCoefficients vdP(iDegree + 1);
                           for (std::size_t i = 0; i < a_vdHalf.size(); ++i)
                           {
                               vdP[i] = vdP[iDegree - i] = a_vdHalf[i];
                           }
                           Set.Add(vdP);
                       });
    }
}

void SurveySquares()
{
    for (std::size_t iDegree = 2; iDegree <= 4; ++iDegree)
    {
        TSet Set(WithDegree("squares p(x)^2, p with integers -3 ... 3", 2 * iDegree));
        ForAllIntegers(iDegree + 1, 3, [&](const TCoefficients& a_vdP) { Set.Add(nuv_tests::Product(a_vdP, a_vdP)); });
    }
}

void SurveyIntegerRoots()
{
    for (std::size_t iDegree = 3; iDegree <= 6; ++iDegree)
    {
        TSet Set(WithDegree("one double root, all roots different integers -5 ... 5", iDegree));
        std::mt19937_64 Engine(iDegree);
        for (int i = 0; i < 2000; ++i)
        {
            TCoefficients vdRoots = {-5, -4, -3, -2, -1, 0, 1, 2, 3, 4, 5};
            for (std::size_t j = 0; j < iDegree; ++j)
            {
                std::swap(vdRoots[j], vdRoots[j + Engine() % (vdRoots.size() - j)]);
            }
            vdRoots.resize(iDegree);
            vdRoots.back() = vdRoots.front();
            Set.Add(nuv_tests::FromRoots(vdRoots));
        }
    }
}

void SurveyRandomFactors()
{
    for (std::size_t iDegree : {2, 3, 4, 5, 6, 8, 10, 12, 15, 20})
    {
        TSet Set(WithDegree("products of x - r, r uniform in -1 ... 1", iDegree));
        std::mt19937_64 Engine(iDegree);
        for (int i = 0; i < 1000; ++i)
        {
            TCoefficients vdRoots(iDegree);
            for (double& dRoot : vdRoots)
            {
                // 53 bits of the engine, because the distributions of standard libraries differ
                dRoot = std::ldexp(static_cast<double>(Engine() >> 11), -52) - 1.0;
            }
            Set.Add(nuv_tests::FromRoots(vdRoots));
        }
    }
}

// Families of one polynomial for each degree.
void SurveyFamilies()
{
    for (int iFrom : {5, 13, 17})
    {
        const int iTo = iFrom == 5 ? 12 : iFrom == 13 ? 16 : 20;
        TSet Set("(x - 1)(x - 2)...(x - n), n = " + std::to_string(iFrom) + " ... " + std::to_string(iTo));
        for (int n = iFrom; n <= iTo; ++n)
        {
            Set.Add(nuv_tests::Wilkinson(n));
        }
    }
    for (int iFrom : {1, 21, 31})
    {
        const int iTo = iFrom == 1 ? 20 : iFrom + 9;
        TSet Set("Chebyshev, n = " + std::to_string(iFrom) + " ... " + std::to_string(iTo));
        for (int n = iFrom; n <= iTo; ++n)
        {
            Set.Add(nuv_tests::Chebyshev(n));
        }
    }
    for (double dConstant : {1.0, 2.0})
    {
        TSet Unity("x^n - " + std::string(dConstant == 1.0 ? "1" : "2^n") + ", n = 1 ... 200");
        for (int i = 1; i <= 200; ++i)
        {
            TCoefficients vdP(static_cast<std::size_t>(i) + 1, 0.0);
            vdP.front() = 1.0;
            vdP.back() = -std::pow(dConstant, i);
            Unity.Add(vdP);
        }
    }
}

} // namespace

int main()
{
    std::printf("| Polynomials | How many | Gives up | Fewer | More | Shifted: gives up | Fewer | More |\n");
    std::printf("|---|--:|--:|--:|--:|--:|--:|--:|\n");
    SurveySmallIntegers();
    SurveyEvenOnes();
    SurveyPalindromes();
    SurveySquares();
    SurveyIntegerRoots();
    SurveyRandomFactors();
    SurveyFamilies();
    return 0;
}
