// failure.h: how everything else ends when it cannot do what it was asked for.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_FAILURE_H
#define NUV_FITPOINTS_FAILURE_H

#include <stdexcept>
#include <string>

namespace fitpoints {

// Ends the program with this line on standard error and exit code 2.
struct TFailure : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// Throws TFailure with "<place>: <what>".
[[noreturn]] void Fail(const std::string& a_szPlace, const std::string& a_szWhat);

// Throws std::bad_alloc.
[[noreturn]] void FailForMemory();

} // namespace fitpoints

#endif // NUV_FITPOINTS_FAILURE_H
