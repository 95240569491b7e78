// address_sanitizer.h: tells whether the address sanitizer is on, and marks memory that must not be used.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_ADDRESS_SANITIZER_H
#define NUV_TESTS_SUPPORT_ADDRESS_SANITIZER_H

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) // GCC
#define NUV_ADDRESS_SANITIZER 1
#elif defined(__has_feature) // Clang
#if __has_feature(address_sanitizer)
#define NUV_ADDRESS_SANITIZER 1
#endif
#endif

#ifdef NUV_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace nuv_tests {

#ifdef NUV_ADDRESS_SANITIZER
constexpr bool AddressSanitizer = true;
#else
constexpr bool AddressSanitizer = false;
#endif

// From here on every read or write of the memory is an error under the address sanitizer.
inline void Forbid([[maybe_unused]] const void* a_pMemory, [[maybe_unused]] std::size_t a_iBytes)
{
#ifdef NUV_ADDRESS_SANITIZER
    __asan_poison_memory_region(a_pMemory, a_iBytes);
#endif
}

inline void Permit([[maybe_unused]] const void* a_pMemory, [[maybe_unused]] std::size_t a_iBytes)
{
#ifdef NUV_ADDRESS_SANITIZER
    __asan_unpoison_memory_region(a_pMemory, a_iBytes);
#endif
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_ADDRESS_SANITIZER_H
