// linear.h: small dense linear algebra in extended precision, by Gauss-Jordan elimination with row pivoting.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FUZZ_LINEAR_H
#define NUV_FUZZ_LINEAR_H

#include "fuzzing.h"

#include <algorithm>
#include <complex>

namespace nuv_fuzz {

// A square matrix of real or complex numbers, row by row.
template <class TNumber> struct TSquare
{
    std::size_t n;
    std::vector<TNumber> vElements;

    explicit TSquare(std::size_t a_iN) : n(a_iN), vElements(a_iN * a_iN)
    {}
    TNumber& At(std::size_t i, std::size_t j)
    {
        return vElements[i * n + j];
    }
    const TNumber& At(std::size_t i, std::size_t j) const
    {
        return vElements[i * n + j];
    }
    TLong Norm() const // Frobenius
    {
        TLong dSum = 0.0L;
        for (const TNumber& Element : vElements)
        {
            dSum += std::norm(Element);
        }
        return std::sqrt(dSum);
    }
};

// The inverse in place; false for a matrix that is singular to all digits.
template <class TNumber> bool Invert(TSquare<TNumber>& a_A)
{
    const std::size_t n = a_A.n;
    TSquare<TNumber> I(n);
    for (std::size_t i = 0; i < n; ++i)
    {
        I.At(i, i) = TNumber(1);
    }
    for (std::size_t k = 0; k < n; ++k)
    {
        std::size_t p = k;
        for (std::size_t i = k + 1; i < n; ++i)
        {
            p = std::abs(a_A.At(i, k)) > std::abs(a_A.At(p, k)) ? i : p;
        }
        if (a_A.At(p, k) == TNumber(0))
        {
            return false;
        }
        for (std::size_t j = 0; j < n; ++j)
        {
            std::swap(a_A.At(k, j), a_A.At(p, j));
            std::swap(I.At(k, j), I.At(p, j));
        }
        const TNumber Reciprocal = TNumber(1) / a_A.At(k, k);
        for (std::size_t j = 0; j < n; ++j)
        {
            a_A.At(k, j) *= Reciprocal;
            I.At(k, j) *= Reciprocal;
        }
        for (std::size_t i = 0; i < n; ++i)
        {
            const TNumber Factor = a_A.At(i, k);
            if (i == k || Factor == TNumber(0))
            {
                continue;
            }
            for (std::size_t j = 0; j < n; ++j)
            {
                a_A.At(i, j) -= Factor * a_A.At(k, j);
                I.At(i, j) -= Factor * I.At(k, j);
            }
        }
    }
    a_A = I;
    return true;
}

// A lower bound of the least distance from A - value I to a singular matrix: the reciprocal of the norm of the
// inverse, which for an eigenvalue of a matrix near A is no more than its distance from A.
inline TLong DistanceToEigenvalue(const TSquare<TLong>& a_A, std::complex<TLong> a_Value)
{
    if (a_Value.imag() == 0.0L)
    {
        TSquare<TLong> B = a_A;
        for (std::size_t i = 0; i < B.n; ++i)
        {
            B.At(i, i) -= a_Value.real();
        }
        return Invert(B) ? 1.0L / B.Norm() : 0.0L;
    }
    TSquare<std::complex<TLong> > B(a_A.n);
    std::copy(a_A.vElements.begin(), a_A.vElements.end(), B.vElements.begin());
    for (std::size_t i = 0; i < B.n; ++i)
    {
        B.At(i, i) -= a_Value;
    }
    return Invert(B) ? 1.0L / B.Norm() : 0.0L;
}

} // namespace nuv_fuzz

#endif // NUV_FUZZ_LINEAR_H
