// device_cases.h: calls of every exported function on fixed inputs, and the arithmetic that each requires.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_DEVICE_CASES_H
#define NUV_TESTS_DEVICE_CASES_H

#include "census.h"

#include <functional>
#include <string>
#include <vector>

namespace nuv_tests {

struct TDeviceCase
{
    std::string szFunction;
    std::string szInput;
    std::function<void()> Prepare; // what the call overwrites, made anew
    std::function<void()> Call;
    TCensus Required;        // by hand from the algorithm
    bool bComparisonsAtMost; // the comparisons required are a bound, not a count
    int iBudget;             // instructions of one call, at most
};

std::vector<TDeviceCase> DeviceCases();

} // namespace nuv_tests

#endif // NUV_TESTS_DEVICE_CASES_H
