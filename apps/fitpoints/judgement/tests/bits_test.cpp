// bits_test.cpp: the judgement module has the same bits on every platform.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "sets.h"

#include <cstring>
#include <gtest/gtest.h>

namespace judgement_tests {
namespace {

using namespace judgement;

// FNV-1a of 64 bits (G. Fowler, L. C. Noll, K.-P. Vo) over the bits of doubles and integers.
class TDigest
{
public:
    void Add(double a_dValue)
    {
        std::uint64_t iBits;
        std::memcpy(&iBits, &a_dValue, sizeof iBits);
        AddBits(iBits);
    }
    void Add(int a_iValue)
    {
        AddBits(static_cast<std::uint64_t>(a_iValue));
    }
    std::uint64_t Value() const
    {
        return m_iHash;
    }

private:
    void AddBits(std::uint64_t a_iBits)
    {
        for (int i = 0; i < 8; ++i)
        {
            m_iHash = (m_iHash ^ ((a_iBits >> (8 * i)) & 0xFF)) * 1099511628211u;
        }
    }
    std::uint64_t m_iHash = 14695981039346656037u;
};

void AddCoefs(const nuv::TOmographicParams& a_Coefs, TDigest& a_Digest)
{
    for (const double dCoef :
         {a_Coefs.dA, a_Coefs.dB, a_Coefs.dC, a_Coefs.dD, a_Coefs.dE, a_Coefs.dF, a_Coefs.dG, a_Coefs.dH})
    {
        a_Digest.Add(dCoef);
    }
}

void AddRow(const TKindRow& a_Row, TDigest& a_Digest)
{
    a_Digest.Add(static_cast<int>(a_Row.Reason));
    a_Digest.Add(static_cast<int>(a_Row.LeaveReason));
    if (a_Row.Reason == REASON_NONE)
    {
        AddCoefs(a_Row.Fit.Coefs, a_Digest);
        a_Digest.Add(a_Row.Fit.iIterations);
        a_Digest.Add(a_Row.dRms);
        a_Digest.Add(a_Row.LeaveReason == REASON_NONE ? a_Row.dLeaveRms : 0.0);
    }
}

void AddPoint(const TPointJudgement& a_Point, TDigest& a_Digest)
{
    for (const double dValue : {a_Point.dX, a_Point.dY, a_Point.dSourceX, a_Point.dSourceY, a_Point.dLeaveX,
                                a_Point.dLeaveY, a_Point.dStandardised, a_Point.dStudentised, a_Point.dProbability})
    {
        a_Digest.Add(dValue);
    }
    a_Digest.Add(a_Point.bSuspect);
    a_Digest.Add(static_cast<int>(a_Point.Role));
}

// All of a judgement but the angles and the skew.
void AddJudgement(const TSet& a_Set, const TOptions& a_Options, TDigest& a_Digest)
{
    TJudgement Result;
    std::vector<TPointJudgement> vPoints(a_Set.vdX.size());
    a_Digest.Add(static_cast<int>(Judge(Points(a_Set), nullptr, a_Options, Result, vPoints.data())));
    for (const TKindRow& Row : Result.vKinds)
    {
        AddRow(Row, a_Digest);
    }
    for (const TPointJudgement& Point : vPoints)
    {
        AddPoint(Point, a_Digest);
    }
    AddCoefs(Result.Original, a_Digest);
    for (int i = 0; i < COVARIANCES; ++i)
    {
        a_Digest.Add(Result.Covariance.vdPacked[i]);
        a_Digest.Add(Result.OriginalCovariance.vdPacked[i]);
    }
    TCovariance2 Covariance;
    TEllipse Ellipse;
    CovarianceOfImage(Result.Fit.Coefs, Result.Covariance, 17, -5, Covariance);
    ErrorEllipse(Covariance, Ellipse);
    a_Digest.Add(Ellipse.dMajor);
    a_Digest.Add(Ellipse.dUy);
}

// The value is that of x86-64; the other platforms must reach it.
TEST(JudgementBits, AreTheSameOnEveryPlatform)
{
    TDigest Digest;
    std::uint64_t iSeed = 1;
    for (const nuv::TOmographicParams& Coefs : {Similarity, Affine, Omographic})
    {
        for (const int iCount : {3, 5, 8, 14, 110})
        {
            TSet Set = RandomSet(iCount, Coefs, 0.25, ++iSeed);
            Set.vdXa[1] += 50;
            AddJudgement(Set, {ASK_AUTO, 0, 0, iCount < 20, USUAL_LEVEL}, Digest);
            for (const enumMethod Method : {ASK_CONFORMAL, ASK_AFFINE, ASK_OMOGRAPHIC, ASK_RICHEST})
            {
                if (iCount < 10)
                {
                    AddJudgement(Set, {Method, 1, Method == ASK_RICHEST, 0, USUAL_LEVEL}, Digest);
                }
            }
        }
    }
    EXPECT_EQ(0x597f75601aa29cbdu, Digest.Value()) << std::hex << Digest.Value();
}

} // namespace
} // namespace judgement_tests
