// reserved_memory.h: arrays of reserved address space, for sizes that no memory holds. Unix only.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_RESERVED_MEMORY_H
#define NUV_TESTS_SUPPORT_RESERVED_MEMORY_H

#include <cstddef>
#include <sys/mman.h>

namespace nuv_tests {

// Reads as zeros. A page takes memory only when it is written.
class TReservedMemory
{
public:
    explicit TReservedMemory(std::size_t a_iDoubles) : m_iBytes(a_iDoubles * sizeof(double))
    {
        m_pMemory = mmap(nullptr, m_iBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    }

    TReservedMemory(const TReservedMemory&) = delete;
    TReservedMemory& operator=(const TReservedMemory&) = delete;

    ~TReservedMemory()
    {
        if (IsReserved())
        {
            munmap(m_pMemory, m_iBytes);
        }
    }

    // False if the system did not give the address space.
    bool IsReserved() const
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

#endif // NUV_TESTS_SUPPORT_RESERVED_MEMORY_H
