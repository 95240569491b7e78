// kinds_test.cpp: which kinds of transformation the points support.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace fitpoints_tests {
namespace {

struct TDegenerate
{
    const char* szName;
    const char* szRows;
    const char* szKind;
    const char* szReason;
};

void PrintTo(const TDegenerate& a_Case, std::ostream* a_Stream)
{
    *a_Stream << a_Case.szName;
}

class DegeneratePoints : public FitPoints, public ::testing::WithParamInterface<TDegenerate>
{
};

TEST_P(DegeneratePoints, FallToThePoorerKindWithTheReason)
{
    Write("p.csv", std::string("x,y,X,Y\n") + GetParam().szRows);
    const json Fit = RunJson({"p.csv", "--method", "richest"});
    EXPECT_EQ(GetParam().szKind, Fit["kind"]);
    EXPECT_NE(Fit["not_richer"].end(),
              std::find(Fit["not_richer"].begin(), Fit["not_richer"].end(), GetParam().szReason))
        << Fit["not_richer"];
    EXPECT_NE(std::string::npos, Run({"p.csv", "--method", "richest"}).szOut.find(GetParam().szReason));
}

TEST_P(DegeneratePoints, AreRefusedWhereTheRicherKindIsDemanded)
{
    Write("p.csv", std::string("x,y,X,Y\n") + GetParam().szRows);
    const std::string szDemanded = GetParam().szKind == std::string("affine") ? "omographic" : "affine";
    ExpectFailure({"p.csv", "--method", szDemanded},
                  "p.csv: no " + szDemanded + " transformation: " + GetParam().szReason);
}

const char* const SourceOnLine = "the source points lie on one line";
const char* const TargetOnLine = "the target points lie on one line";
const char* const SourceNoFour =
    "all source points, or all but one, lie on one line: the omographic kind needs four of "
    "which no three do";
const char* const TargetNoFour =
    "all target points, or all but one, lie on one line: the omographic kind needs four of "
    "which no three do";

INSTANTIATE_TEST_SUITE_P(
    All, DegeneratePoints,
    ::testing::Values(
        TDegenerate{"TwoPoints", "0,0,1,1\n5,5,7,6\n", "conformal", "only 2 points: the affine kind needs 3"},
        TDegenerate{"ThreePoints", "0,0,1,1\n5,5,7,6\n9,0,8,1\n", "affine",
                    "only 3 points: the omographic kind needs 4"},
        TDegenerate{"SourceOnALineOfTenths", "0.1,0.3,0,0\n0.2,0.6,1,0\n0.3,0.9,1,1\n0.7,2.1,5,1\n", "conformal",
                    SourceOnLine},
        TDegenerate{"SourceOnALineFarAway",
                    "4500000.1,5400000.3,0,0\n4500000.2,5400000.6,1,0\n4500000.3,5400000.9,1,1\n"
                    "4500000.4,5400001.2,0,1\n",
                    "conformal", SourceOnLine},
        TDegenerate{"SourceOnAShortLineFarAway", // off a line of length 0.02 by the rounding of 4.5e6, which is 1e-9
                    "4500000.001,5400000.003,0,0\n4500000.002,5400000.006,1,0\n4500000.003,5400000.009,1,1\n"
                    "4500000.007,5400000.021,0,1\n",
                    "conformal", SourceOnLine},
        TDegenerate{"SourceOnALineOfRoundedDecimals",
                    "0,0,0,0\n3333.33333,6666.66667,1,0\n6666.66667,13333.33333,1,1\n10000,20000,0,1\n", "conformal",
                    SourceOnLine},
        TDegenerate{"SourceOnAVerticalLine", "3,0,0,0\n3,1,1,0\n3,2,1,1\n3,7,0,1\n", "conformal", SourceOnLine},
        TDegenerate{"OnlyTwoDifferentSourcePoints", "0,0,0,0\n1,1,1,0\n0,0,1,1\n1,1,0,1\n", "conformal", SourceOnLine},
        TDegenerate{"TargetOnALine", "0,0,0,0\n1,0,1,2\n1,1,2,4\n0,1,3,6\n", "conformal", TargetOnLine},
        TDegenerate{"SourceAllButOneOnALine", "0,0,0,0\n1,1,1,0\n2,2,1,1\n3,3,0,1\n9,0,7,0\n", "affine", SourceNoFour},
        TDegenerate{"OneOffTheLineTwice", "0,0,0,0\n1,1,1,0\n2,2,1,1\n9,0,7,0\n9,0,7,1\n", "affine", SourceNoFour},
        TDegenerate{"OnlyThreeDifferentSourcePoints", "0,0,0,0\n1,0,1,0\n0,1,0,1\n0,1,0,2\n1,0,1,1\n", "affine",
                    SourceNoFour},
        TDegenerate{"TargetAllButOneOnALine", "0,0,0,0\n1,0,1,1\n1,1,2,2\n0,1,3,3\n5,2,7,0\n", "affine", TargetNoFour}),
    [](const auto& a_Info) { return a_Info.param.szName; });

TEST_F(FitPoints, TwoAndTwoPointsOnCrossingLinesSupportTheOmographicKind)
{
    // (0, 0) lies on both lines. The other four points contain no three on one line.
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n1,0,1,0\n2,0,2,0\n0,1,0,1\n0,2,0,2\n");
    EXPECT_EQ("omographic", RunJson({"p.csv", "--method", "richest"})["kind"]);
}

TEST_F(FitPoints, AnAffineTransformationOfSmallScaleIsFitted)
{
    // X = 1e-7 x + 2e-8 y, Y = 3e-7 y. To the library the determinant 3e-14 counts as zero.
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n1000,0,1e-4,0\n1000,1000,1.2e-4,3e-4\n");
    const json Fit = RunJson({"p.csv", "--method", "affine"});
    EXPECT_EQ("affine", Fit["kind"]);
    EXPECT_NEAR(1e-7, Fit["frames"]["original"]["coefficients"]["A"].get<double>(), 1e-20);
    EXPECT_NEAR(2e-8, Fit["frames"]["original"]["coefficients"]["B"].get<double>(), 1e-20);
    EXPECT_NEAR(3e-7, Fit["frames"]["original"]["coefficients"]["E"].get<double>(), 1e-20);
}

TEST_F(FitPoints, AnAffineFitThatCollapsesThePlaneIsNamed)
{
    // The corners of a square are mapped onto its corners in another order. X does not correlate with x and y, so the
    // fit has A = B = 0.
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n1,0,1,0\n1,1,0,1\n0,1,1,1\n");
    const TRun Result = Run({"--method", "affine", "p.csv"});
    EXPECT_EQ(2, Result.iCode);
    EXPECT_EQ("fitpoints: p.csv: no affine transformation: the affine fit collapses the plane (its determinant counts "
              "as zero)\n",
              Result.szError);
}

TEST_F(FitPoints, CoordinatesBeyondTheFitAreRefused)
{
    Write("p.csv", Header + "0,0,0,0\n1e200,0,1,0\n0,1e200,0,1\n");
    ExpectFailure({"p.csv"}, "p.csv: the source points are more than 1e150 apart: their squares are beyond a double");
    Write("q.csv", Header + "0,0,0,0\n1e-9,0,1,0\n");
    ExpectFailure({"q.csv"},
                  "q.csv: no transformation: the spread of the source points counts as zero (below about 1e-6)");
}

} // namespace
} // namespace fitpoints_tests
