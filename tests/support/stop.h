// stop.h: ends a test program whose data are wrong.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_STOP_H
#define NUV_TESTS_SUPPORT_STOP_H

#include <cstdio>
#include <cstdlib>
#include <string>

namespace nuv_tests {

// Not an exception: WebAssembly has none here.
[[noreturn]] inline void Stop(const std::string& a_szComplaint)
{
    std::fprintf(stderr, "%s\n", a_szComplaint.c_str());
    std::abort();
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_STOP_H
