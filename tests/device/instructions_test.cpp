// instructions_test.cpp: the cost of one call of each exported function on the device's class of processor.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "device_cases.h"
#include "guest_instructions.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

using namespace nuv_tests;

TEST(Device, EveryCallStaysWithinItsBudgetOfInstructions)
{
    ASSERT_NE(InstructionsSoFar(), NotCounted) << NoCounter;
    const std::function<void()> Nothing = [] {};
    const std::int64_t iOfCalling = InstructionsOf(Nothing);
    for (const TDeviceCase& Case : DeviceCases())
    {
        Case.Prepare();
        Case.Call(); // binds what is bound at the first call
        Case.Prepare();
        const std::int64_t iInstructions = InstructionsOf(Case.Call) - iOfCalling;
        std::printf("[ device ] instructions|%s|%s|%lld\n", Case.szFunction.c_str(), Case.szInput.c_str(),
                    static_cast<long long>(iInstructions));
        EXPECT_LE(iInstructions, Case.iBudget) << Case.szFunction << ", " << Case.szInput;
        EXPECT_GT(iInstructions, 0) << Case.szFunction << ", " << Case.szInput;
    }
}

} // namespace
