// memory_test.cpp: the judgement module without memory.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "sets.h"
#include "support/watched_allocator.h"

#include <gtest/gtest.h>

namespace judgement_tests {
namespace {

using namespace judgement;
using nuv_tests::Allocator;
using nuv_tests::TWatch;

// The result of a call of which one request for memory fails; all that it got is released.
enumReason JudgeWith(const TSet& a_Set, const TOptions& a_Options, int a_iFailAt, int& a_iRequests)
{
    TJudgement Result;
    std::vector<TPointJudgement> vPoints(a_Set.vdX.size());
    enumReason Reason;
    {
        const TWatch Watch(a_iFailAt);
        Reason = Judge(Points(a_Set), nullptr, a_Options, Result, vPoints.data());
    }
    a_iRequests = static_cast<int>(Allocator.viRequests.size());
    EXPECT_TRUE(Allocator.Held.empty()) << a_iFailAt;
    EXPECT_EQ(0, Allocator.iForeignReleases) << a_iFailAt;
    return Reason;
}

TEST(JudgementMemory, EveryRequestThatFailsIsAResultAndLeaksNothing)
{
    TSet Set = RandomSet(9, Affine, 0.5, 3);
    Set.vdXa[2] += 60;
    for (const enumMethod Method : {ASK_CONFORMAL, ASK_AUTO})
    {
        for (const int bRobust : {0, 1})
        {
            const TOptions Options = {Method, Method == ASK_CONFORMAL, 0, bRobust, USUAL_LEVEL};
            int iRequests = 0;
            ASSERT_EQ(REASON_NONE, JudgeWith(Set, Options, nuv_tests::Never, iRequests));
            ASSERT_GT(iRequests, 10);
            for (int i = 0; i < iRequests; ++i)
            {
                int iSeen;
                ASSERT_EQ(REASON_NO_MEMORY, JudgeWith(Set, Options, i, iSeen)) << i << " of " << iRequests;
            }
        }
    }
}

} // namespace
} // namespace judgement_tests
