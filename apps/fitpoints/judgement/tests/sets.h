// sets.h: control points for the tests of the judgement module.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_JUDGEMENT_TESTS_SETS_H
#define NUV_JUDGEMENT_TESTS_SETS_H

#include "judgement.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace judgement_tests {

// Control points in arrays.
struct TSet
{
    std::vector<double> vdX, vdY, vdXa, vdYa;
};

inline judgement::TControlPoints Points(const TSet& a_Set)
{
    return {static_cast<int>(a_Set.vdX.size()), a_Set.vdX.data(), a_Set.vdY.data(), a_Set.vdXa.data(),
            a_Set.vdYa.data()};
}

// A generator with the same numbers on every platform: 53 bits of a linear congruential generator of 64 bits (D. E. Knuth,
// The Art of Computer Programming, volume 2, section 3.3.4).
class TNumbers
{
public:
    explicit TNumbers(std::uint64_t a_iSeed) : m_iState(a_iSeed)
    {}

    // Of [0, 1).
    double Uniform()
    {
        m_iState = m_iState * 6364136223846793005u + 1442695040888963407u;
        return static_cast<double>(m_iState >> 11) / 9007199254740992.0;
    }

    // Twelve uniform numbers have the variance 1. Their sum has shorter tails than the normal distribution.
    double AboutNormal()
    {
        double dSum = -6;
        for (int i = 0; i < 12; ++i)
        {
            dSum += Uniform();
        }
        return dSum;
    }

private:
    std::uint64_t m_iState;
};

inline void Add(TSet& a_Set, const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY, double a_dErrorX,
                double a_dErrorY)
{
    const judgement::TVector Image = judgement::ImageOf(a_Coefs, a_dX, a_dY);
    a_Set.vdX.push_back(a_dX);
    a_Set.vdY.push_back(a_dY);
    a_Set.vdXa.push_back(Image.dX + a_dErrorX);
    a_Set.vdYa.push_back(Image.dY + a_dErrorY);
}

// Points spread over a square of 1000 units, and their images with an error of standard deviation a_dSigma.
inline TSet RandomSet(int a_iCount, const nuv::TOmographicParams& a_Coefs, double a_dSigma, std::uint64_t a_iSeed)
{
    TNumbers Numbers(a_iSeed);
    TSet Set;
    for (int i = 0; i < a_iCount; ++i)
    {
        const double dX = 1000 * Numbers.Uniform() - 500;
        const double dY = 1000 * Numbers.Uniform() - 500;
        const double dErrorX = a_dSigma * Numbers.AboutNormal();
        Add(Set, a_Coefs, dX, dY, dErrorX, a_dSigma * Numbers.AboutNormal());
    }
    return Set;
}

inline TSet Without(const TSet& a_Set, std::size_t a_iPoint)
{
    TSet Result = a_Set;
    for (std::vector<double>* const pArray : {&Result.vdX, &Result.vdY, &Result.vdXa, &Result.vdYa})
    {
        pArray->erase(pArray->begin() + static_cast<std::ptrdiff_t>(a_iPoint));
    }
    return Result;
}

constexpr nuv::TOmographicParams Similarity = {1.5, -0.5, 40, 0.5, 1.5, -20, 0, 0};
constexpr nuv::TOmographicParams Affine = {1.25, -0.375, 500, 0.5, 2, 450, 0, 0};
constexpr nuv::TOmographicParams Omographic = {1.25, -0.375, 500, 0.5, 2, 450, 0x1p-12, -0x1p-13};

constexpr nuv::enumMethodUsed Kinds[] = {nuv::METHOD_CONFORMAL, nuv::METHOD_AFFINE, nuv::METHOD_OMOGRAPHIC};

} // namespace judgement_tests

#endif // NUV_JUDGEMENT_TESTS_SETS_H
