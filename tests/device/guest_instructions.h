// guest_instructions.h: the number of instructions that this program has executed, as its emulator counts them.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_GUEST_INSTRUCTIONS_H
#define NUV_TESTS_GUEST_INSTRUCTIONS_H

#include <cstdint>
#include <unistd.h>

namespace nuv_tests {

const std::uint64_t NotCounted = ~std::uint64_t{0};

// The count so far, or NotCounted if the emulator runs without count_instructions.c.
inline std::uint64_t InstructionsSoFar()
{
    volatile std::uint64_t iCount = NotCounted;
    syscall(0x6e75, &iCount);
    return iCount;
}

// The instructions of one call of a_Function, without those of reading the count.
template <class TFunction> std::int64_t InstructionsOf(const TFunction& a_Function)
{
    const std::uint64_t iBefore = InstructionsSoFar();
    const std::uint64_t iBetween = InstructionsSoFar();
    a_Function();
    const std::uint64_t iAfter = InstructionsSoFar();
    return static_cast<std::int64_t>((iAfter - iBetween) - (iBetween - iBefore));
}

inline const char* const NoCounter = "the emulator runs without its counter of instructions: set QEMU_PLUGIN to "
                                     "file=<build directory>/tests/device/count_instructions.so";

} // namespace nuv_tests

#endif // NUV_TESTS_GUEST_INSTRUCTIONS_H
