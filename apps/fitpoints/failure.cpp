// failure.cpp: failures of the program. Other programs of these sources have their own functions instead.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "failure.h"

#include <new>

namespace fitpoints {

void Fail(const std::string& a_szPlace, const std::string& a_szWhat)
{
    throw TFailure(a_szPlace + ": " + a_szWhat);
}

void FailForMemory()
{
    throw std::bad_alloc();
}

} // namespace fitpoints
