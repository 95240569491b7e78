// ulp_test.cpp: the exported routines that use the platform's elementary functions, against 50-digit results.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The limits count units in the last place of the result, but at least of the greatest term of a sum that cancels;
// tests/tools/make_ulp_vectors.py says which. Every test prints its greatest error. Every rounding adds half a unit,
// and up to a whole one if the result is less than twice a power of two and its factors are not. A function of the
// platform is assumed to add one or two.

#include "nuv1math.h"
#include "support/fresh_generator.h"
#include "support/vector_tables.h"

namespace {

using namespace nuv;
using namespace nuv_tests;

// The errors of one routine's results.
class TErrors
{
public:
    TErrors(const char* a_szName, double a_dLimit) : m_szName(a_szName), m_dLimit(a_dLimit)
    {}

    void Expect(TVectorCase& a_Case, double a_dActual)
    {
        const double dUnits = a_Case.UnitsOff(a_dActual);
        m_dGreatest = std::fmax(m_dGreatest, dUnits);
        if (!(dUnits <= m_dLimit)) // also if it is NaN
        {
            ADD_FAILURE() << a_Case.Place() << " is " << HexText(a_dActual) << ", " << dUnits << " units off";
        }
    }

    template <class TValues> void ExpectAll(TVectorCase& a_Case, const TValues& a_Values)
    {
        for (double dValue : a_Values)
        {
            Expect(a_Case, dValue);
        }
    }

    template <class TCheck> void CheckTable(TCheck a_Check)
    {
        ForEachCase(m_szName, a_Check);
        std::printf("[ ulps ] %s %.2f of %g\n", m_szName, m_dGreatest, m_dLimit);
    }

private:
    const char* m_szName;
    double m_dLimit;
    double m_dGreatest = 0.0;
};

// b and e are sums of a product of three roundings and two functions, and of a plainer one.
TEST(Ulps, AffineParamsToCoefs)
{
    TErrors Errors("AffineParamsToCoefs", 4.0);
    Errors.CheckTable(
        [&](TVectorCase& a_Case)
        {
            const std::vector<double> vdIn = a_Case.Doubles(6);
            TAffineCoefs Coefs = Filled<TAffineCoefs>();
            AffineParamsToCoefs(vdIn[0], vdIn[1], vdIn[2], vdIn[3], vdIn[4], vdIn[5], Coefs);
            Errors.ExpectAll(a_Case, Fields(Coefs));
        });
}

// One function; an angle below 0 gets 2 pi added, one rounding more. The scales are exact.
TEST(Ulps, AffineCoefsToParam)
{
    TErrors Errors("AffineCoefsToParam", 2.0);
    Errors.CheckTable(
        [&](TVectorCase& a_Case)
        {
            const TAffineCoefs Coefs = a_Case.Record<TAffineCoefs>();
            std::vector<double> vdParams(6, Untouched);
            a_Case.ExpectInt(AffineCoefsToParam(Coefs, vdParams[0], vdParams[1], vdParams[2], vdParams[3], vdParams[4],
                                                vdParams[5]));
            Errors.ExpectAll(a_Case, vdParams);
        });
}

// A function and a product; the inverse has the reciprocal's rounding too.
TEST(Ulps, ConformalParamsToCoefs)
{
    TErrors Errors("ConformalParamsToCoefs", 4.0);
    Errors.CheckTable(
        [&](TVectorCase& a_Case)
        {
            const std::vector<double> vdIn = a_Case.Doubles(4);
            TConformalCoefs Coefs = Filled<TConformalCoefs>();
            ConformalParamsToCoefs(vdIn[0], vdIn[1], vdIn[2], vdIn[3], Coefs);
            Errors.ExpectAll(a_Case, Fields(Coefs));
        });
}

// As AffineCoefsToParam.
TEST(Ulps, ConformalCoefsToParam)
{
    TErrors Errors("ConformalCoefsToParam", 2.0);
    Errors.CheckTable(
        [&](TVectorCase& a_Case)
        {
            const TConformalCoefs Coefs = a_Case.Record<TConformalCoefs>();
            std::vector<double> vdParams(4, Untouched);
            a_Case.ExpectInt(ConformalCoefsToParam(Coefs, vdParams[0], vdParams[1], vdParams[2], vdParams[3]));
            Errors.ExpectAll(a_Case, vdParams);
        });
}

// One function of an exact argument, and at most two additions of a multiple of pi.
TEST(Ulps, SolveLinTrig)
{
    TErrors Errors("SolveLinTrig", 2.0);
    Errors.CheckTable(
        [&](TVectorCase& a_Case)
        {
            const std::vector<double> vdIn = a_Case.Doubles(3);
            TGuardedArray Angles = TGuardedArray::Output(2);
            a_Case.ExpectInt(SolveLinTrig(vdIn[0], vdIn[1], vdIn[2], Angles.Data()));
            Errors.ExpectAll(a_Case, Angles.Values());
            a_Case.ExpectIntact(Angles);
        });
}

// As SolveLinTrig: the roots of the quartic are exact, and so is every decision.
TEST(Ulps, SolveQuadTrig)
{
    TErrors Errors("SolveQuadTrig", 2.0);
    Errors.CheckTable(
        [&](TVectorCase& a_Case)
        {
            const std::vector<double> vdIn = a_Case.Doubles(6);
            TGuardedArray Angles = TGuardedArray::Output(4);
            a_Case.ExpectInt(SolveQuadTrig(vdIn[0], vdIn[1], vdIn[2], vdIn[3], vdIn[4], vdIn[5], Angles.Data()));
            Errors.ExpectAll(a_Case, Angles.Values());
            a_Case.ExpectIntact(Angles);
        });
}

// Logarithm and quotient; the square root leaves half of that; a product.
TEST(Ulps, Randn)
{
    TErrors Errors("Randn", 4.0);
    Errors.CheckTable(
        [&](TVectorCase& a_Case)
        {
            StartFresh(a_Case.Int());
            const int iCount = a_Case.Int();
            for (int i = 0; i < iCount; ++i)
            {
                Errors.Expect(a_Case, nuv::Randn());
            }
        });
}

// As Randn, with a product and a sum.
TEST(Ulps, RandnWithMean)
{
    TErrors Errors("RandnWithMean", 4.0);
    Errors.CheckTable(
        [&](TVectorCase& a_Case)
        {
            StartFresh(a_Case.Int());
            const int iCount = a_Case.Int();
            const double dMean = a_Case.Double();
            const double dSigma = a_Case.Double();
            for (int i = 0; i < iCount; ++i)
            {
                Errors.Expect(a_Case, nuv::Randn(dMean, dSigma));
            }
        });
}

} // namespace
