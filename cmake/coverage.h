// coverage.h: included into every source of the library that is instrumented for coverage.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// _exit, by which the assertion report ends its process, does not write the counters: they are written first.

#ifndef NUV_COVERAGE_H
#define NUV_COVERAGE_H

#include <unistd.h>

extern "C" void __gcov_dump(void);

#define _exit(a_iCode) (__gcov_dump(), _exit(a_iCode))

#endif // NUV_COVERAGE_H
