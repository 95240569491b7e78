// triangle.h: lower triangles of symmetric matrices in the two storages of the Cholesky functions.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_TRIANGLE_H
#define NUV_TESTS_SUPPORT_TRIANGLE_H

#include "guarded_array.h"

#include <cstdint>
#include <vector>

namespace nuv_tests {

// Numbers of elements in the two storages. There are none for n < 1.
inline std::ptrdiff_t PackedLength(std::ptrdiff_t n)
{
    return n < 1 ? 0 : n * (n + 1) / 2;
}

inline std::ptrdiff_t SquareLength(std::ptrdiff_t n)
{
    return n < 1 ? 0 : n * n;
}

// Element (i, j), j <= i, of a packed triangle; both counted from 0.
inline std::size_t PackedIndex(std::size_t i, std::size_t j)
{
    return i * (i + 1) / 2 + j;
}

enum class TStorage
{
    Packed, // row by row
    Square  // all rows of n elements; the functions must not use what is above the diagonal
};

// A lower triangle between guards. Above the diagonal of the square storage every element is a signalling NaN with a
// number of its own: an operation on one raises the invalid flag, and a write is seen.
class TTriangle
{
public:
    TTriangle(std::size_t a_iN, TStorage a_Storage)
        : m_iN(a_iN), m_Storage(a_Storage),
          m_Elements(a_Storage == TStorage::Packed ? std::vector<double>(a_iN * (a_iN + 1) / 2)
                                                   : SignallingNaNs(a_iN * a_iN))
    {
        for (std::size_t i = 0; i < m_iN; ++i)
        {
            std::fill_n(Row(i), i + 1, Untouched);
        }
    }

    // The same values in a storage.
    TTriangle(const TTriangle& a_Values, TStorage a_Storage) : TTriangle(a_Values.Packed(), a_Values.m_iN, a_Storage)
    {}

    // a_vdPacked holds the rows one after the other.
    TTriangle(const std::vector<double>& a_vdPacked, std::size_t a_iN, TStorage a_Storage) : TTriangle(a_iN, a_Storage)
    {
        for (std::size_t i = 0; i < m_iN; ++i)
        {
            std::memcpy(Row(i), a_vdPacked.data() + PackedIndex(i, 0), (i + 1) * sizeof(double));
        }
    }

    int Count() const
    {
        return static_cast<int>(m_iN);
    }

    double* Data()
    {
        return m_Elements.Data();
    }

    double& At(std::size_t i, std::size_t j)
    {
        return Row(i)[j];
    }

    double At(std::size_t i, std::size_t j) const
    {
        return Row(i)[j];
    }

    // The rows one after the other.
    std::vector<double> Packed() const
    {
        std::vector<double> vdPacked;
        for (std::size_t i = 0; i < m_iN; ++i)
        {
            vdPacked.insert(vdPacked.end(), Row(i), Row(i) + i + 1);
        }
        return vdPacked;
    }

    // True if nothing but the triangle was written.
    bool RestIsUntouched() const
    {
        const TTriangle Fresh(*this, m_Storage);
        return IsIntact() &&
               std::memcmp(Fresh.m_Elements.Data(), m_Elements.Data(), m_Elements.Size() * sizeof(double)) == 0;
    }

    bool IsIntact() const
    {
        return m_Elements.IsIntact();
    }

private:
    static std::vector<double> SignallingNaNs(std::size_t a_iCount)
    {
        std::vector<double> vdValues(a_iCount);
        for (std::size_t i = 0; i < a_iCount; ++i)
        {
            const std::uint64_t iBits = 0x7ff0000000000001u + i;
            std::memcpy(&vdValues[i], &iBits, sizeof iBits);
        }
        return vdValues;
    }

    std::size_t RowStart(std::size_t i) const
    {
        return m_Storage == TStorage::Packed ? PackedIndex(i, 0) : i * m_iN;
    }

    double* Row(std::size_t i)
    {
        return m_Elements.Data() + RowStart(i);
    }

    const double* Row(std::size_t i) const
    {
        return m_Elements.Data() + RowStart(i);
    }

    std::size_t m_iN;
    TStorage m_Storage;
    TGuardedArray m_Elements;
};

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_TRIANGLE_H
