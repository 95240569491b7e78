// reserved.h: arrays of address space, for sizes that no memory holds. Unix only.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_RESERVED_H
#define NUV_TESTS_RESERVED_H

#include <cstddef>
#include <sys/mman.h>

namespace nuv_tests {

// Address space that takes no memory until it is written, and is zeros.
class TReserved
{
public:
    explicit TReserved(std::size_t a_iDoubles) : m_iBytes(a_iDoubles * sizeof(double))
    {
        m_pMemory = mmap(nullptr, m_iBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    }

    TReserved(const TReserved&) = delete;
    TReserved& operator=(const TReserved&) = delete;

    ~TReserved()
    {
        if (Had())
        {
            munmap(m_pMemory, m_iBytes);
        }
    }

    bool Had() const
    {
        return m_pMemory != MAP_FAILED;
    }

    double* Data() const
    {
        return static_cast<double*>(m_pMemory);
    }

private:
    std::size_t m_iBytes;
    void* m_pMemory;
};

} // namespace nuv_tests

#endif // NUV_TESTS_RESERVED_H
