// testing.h: all that most suites use of tests/support.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_TESTING_H
#define NUV_TESTS_TESTING_H

#include "support/control_points.h"
#include "support/effort.h"
#include "support/expect.h"

#endif // NUV_TESTS_TESTING_H
