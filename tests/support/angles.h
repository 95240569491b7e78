// angles.h: calls of the trigonometric solvers on guarded room, and assertions on what they find.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_ANGLES_H
#define NUV_TESTS_SUPPORT_ANGLES_H

#include "child_process.h"
#include "expect.h"

#include <array>
#include <functional>

namespace nuv_tests {

// The result of a solver and all of its room.
struct TAngles
{
    int iResult;
    TGuardedArray Room;

    std::vector<double> Found() const
    {
        return std::vector<double>(Room.Data(), Room.Data() + (iResult > 0 ? iResult : 0));
    }
};

// Calls a solver on room for a_iRoom angles.
inline TAngles Solve(std::size_t a_iRoom, const std::function<int(double*)>& a_Solver)
{
    TAngles Angles = {0, TGuardedArray::Output(a_iRoom)};
    Angles.iResult = a_Solver(Angles.Room.Data());
    return Angles;
}

// Expects the result and the bits of the angles. If a_bRestUntouched, the rest of the room must not be written.
inline void ExpectAngles(int a_iResult, const std::vector<double>& a_vdExpected, const TAngles& a_Angles,
                         bool a_bRestUntouched)
{
    EXPECT_EQ(a_iResult, a_Angles.iResult);
    EXPECT_TRUE(a_Angles.Room.IsIntact());
    ASSERT_LE(a_vdExpected.size(), a_Angles.Room.Size());
    for (std::size_t i = 0; i < a_vdExpected.size(); ++i)
    {
        EXPECT_SAME_BITS(a_vdExpected[i], a_Angles.Room[i]) << "angle " << i;
    }
    EXPECT_TRUE(!a_bRestUntouched || a_Angles.Room.IsUntouchedFrom(a_vdExpected.size()));
}

// Runs a check in a child process. The check writes what is wrong to standard error. Without the child, an assertion
// report of the library would end the test program with exit code 0, which looks like success.
inline void ExpectQuietCheck(const std::function<void()>& a_Check)
{
    const TChildEnd End = RunInChild(a_Check);
    EXPECT_EQ("", End.szText);
    EXPECT_EQ(CameBack, End.iExitCode);
}

// Calls a_Visit with every combination of TCount of the values.
template <std::size_t TCount>
void ForAllCombinations(const std::vector<double>& a_vdValues,
                        const std::function<void(const std::array<double, TCount>&)>& a_Visit)
{
    std::array<std::size_t, TCount> viPositions{};
    for (std::size_t iTurned = 0; iTurned < TCount;)
    {
        std::array<double, TCount> vdArguments;
        std::transform(viPositions.begin(), viPositions.end(), vdArguments.begin(),
                       [&](std::size_t i) { return a_vdValues[i]; });
        a_Visit(vdArguments);
        // The positions are the digits of a counter: those at their end turn to 0, and the next one moves on.
        for (iTurned = 0; iTurned < TCount && ++viPositions[iTurned] == a_vdValues.size(); ++iTurned)
        {
            viPositions[iTurned] = 0;
        }
    }
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_ANGLES_H
