// message_box_test.cpp: the assertion report as a user of Windows sees it: a message box, then the end of the process.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// These tests need a display. Without one no box is found, and they fail.

#include "nuv1math.h"
#include "support/child_process_windows.h"
#include "support/expect.h"

#include <windows.h>

using namespace nuv;
using namespace nuv_tests;

namespace {

// A singular transformation (all of the plane onto the line X = Y) and a point off that line.
void UntransformImpossiblePoint()
{
    const TAffineCoefs Coefs = {1.0, 1.0, 0.0, 1.0, 1.0, 0.0};
    double dX = Untouched;
    double dY = Untouched;
    AffineUntransform(Coefs, 1.0, 0.0, dX, dY);
}

// The exit code 0 comes from the report. A statement that returns ends the child with CameBack instead.
void ExpectBoxAndEnd(int a_iAnswer)
{
    const TMessageBoxEnd End = RunAtMessageBox(UntransformImpossiblePoint, a_iAnswer);
    ASSERT_EQ(1u, End.Boxes.size()) << "the message boxes that were seen; is there a display?";
    const TMessageBox& Box = End.Boxes[0];
    EXPECT_EQ("Error", Box.szCaption); // the system's own
    EXPECT_EQ("nuv\\nuv1math\\src\\affine.cpp:443 assertion failure:\niResult!= RET_IMPOSSIBLE", Box.szText);
    EXPECT_FALSE(Box.bHasOwner);
    EXPECT_FALSE(Box.bHasIcon);
    EXPECT_EQ((std::vector<std::string>{"4 &Retry", "2 Cancel"}), Box.vszButtons);
    EXPECT_EQ("", End.Child.szText);
    EXPECT_EQ(0, End.Child.iExitCode);
}

} // namespace

TEST(ReportAsMessageBox, RetryEndsTheProcess)
{
    ExpectBoxAndEnd(IDRETRY);
}

TEST(ReportAsMessageBox, CancelEndsTheProcess)
{
    ExpectBoxAndEnd(IDCANCEL);
}

TEST(ReportAsMessageBox, AStatementThatHoldsShowsNone)
{
    const TMessageBoxEnd End = RunAtMessageBox(
        []
        {
            double dX = Untouched;
            double dY = Untouched;
            AffineUntransform({2.0, 0.0, 0.0, 0.0, 2.0, 0.0}, 1.0, 0.0, dX, dY);
        },
        IDRETRY);
    EXPECT_TRUE(End.Boxes.empty());
    EXPECT_EQ(CameBack, End.Child.iExitCode);
}
