// reserved_memory.h: arrays of reserved address space, for sizes that no memory holds.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_RESERVED_MEMORY_H
#define NUV_TESTS_SUPPORT_RESERVED_MEMORY_H

#include <cstddef>

#if defined(__unix__)
#include <sys/mman.h>
#endif

namespace nuv_tests {

// Reads as zeros. A page takes memory only when it is written. Systems other than Unix reserve nothing.
class TReservedMemory
{
public:
    explicit TReservedMemory([[maybe_unused]] std::size_t a_iDoubles)
    {
#if defined(__unix__)
        m_iBytes = a_iDoubles * sizeof(double);
        void* const pMemory =
            mmap(nullptr, m_iBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        m_vdMemory = pMemory == MAP_FAILED ? nullptr : static_cast<double*>(pMemory);
#endif
    }

    TReservedMemory(const TReservedMemory&) = delete;
    TReservedMemory& operator=(const TReservedMemory&) = delete;

    ~TReservedMemory()
    {
#if defined(__unix__)
        if (IsReserved())
        {
            munmap(m_vdMemory, m_iBytes);
        }
#endif
    }

    // False if the system did not give the address space.
    bool IsReserved() const
    {
        return m_vdMemory != nullptr;
    }

    double* Data() const
    {
        return m_vdMemory;
    }

private:
    [[maybe_unused]] std::size_t m_iBytes = 0;
    double* m_vdMemory = nullptr;
};

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_RESERVED_MEMORY_H
