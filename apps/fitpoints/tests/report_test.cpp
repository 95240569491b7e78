// report_test.cpp: what the reports say of residuals and statistics.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace fitpoints_tests {
namespace {

TEST_F(FitPoints, ResidualsAreComputedLessGiven)
{
    Write("p.csv", Square);
    const json Fit = RunJson({"p.csv", "--method", "affine"});
    const double vdExpected[] = {-1, 1, -1, 1};
    for (std::size_t i = 0; i < 4; ++i)
    {
        EXPECT_NEAR(vdExpected[i], Fit["points"][i]["dX"], 1e-12);
        EXPECT_NEAR(0, Fit["points"][i]["dY"], 1e-12);
        EXPECT_NEAR(1, Fit["points"][i]["length"], 1e-12);
    }
}

TEST_F(FitPoints, RmsHasTwoNLessUDegreesOfFreedom)
{
    Write("p.csv", Square);
    const json AffineFit = RunJson({"p.csv", "--method", "affine"});
    EXPECT_EQ(2, AffineFit["degrees_of_freedom"]);
    EXPECT_NEAR(std::sqrt(2), AffineFit["rms"], 1e-12); // sqrt(4/2)
    // The similarity: less their mean, the errors are (3, 0) at the bad corner and (-1, 0) elsewhere. The sum of their
    // squares is 12. The corners at (+-50, +-50) have the sum of squares 20000. Scale and rotation reduce the 12 by
    // 200^2/20000 = 2 each, so 8 remain.
    const json ConformalFit = RunJson({"p.csv", "--method", "conformal"});
    EXPECT_EQ(4, ConformalFit["degrees_of_freedom"]);
    EXPECT_NEAR(8, ConformalFit["sum_of_squares"], 1e-11);
    EXPECT_NEAR(std::sqrt(2), ConformalFit["rms"], 1e-12); // sqrt(8/4)
}

TEST_F(FitPoints, RmsOfTheOmographicKindCountsEightCoefficients)
{
    std::vector<TPoint> vPoints = Images(Omographic);
    vPoints[4][2] += 3;
    Write("p.csv", Csv(vPoints));
    const json Fit = RunJson({"p.csv"});
    EXPECT_EQ(4, Fit["degrees_of_freedom"]);
    double dSum = 0;
    for (const json& P : Fit["points"])
    {
        dSum += std::pow(P["dX"].get<double>(), 2) + std::pow(P["dY"].get<double>(), 2);
    }
    EXPECT_GT(dSum, 0.1);
    EXPECT_NEAR(std::sqrt(dSum / 4), Fit["rms"], 1e-12);
}

TEST_F(FitPoints, WithoutRedundancyThereIsNoRms)
{
    const char* const vszRows[] = {"0,0,1,1\n", "100,0,90,3\n", "100,100,95,110\n", "0,100,4,105\n"};
    const char* const vszKinds[] = {"conformal", "affine", "omographic"};
    std::string szText = std::string("x,y,X,Y\n") + vszRows[0];
    for (int i = 0; i < 3; ++i)
    {
        szText += vszRows[i + 1];
        Write("p.csv", szText);
        const json Fit = RunJson({"p.csv", "--method", "richest"});
        EXPECT_EQ(vszKinds[i], Fit["kind"]);
        EXPECT_TRUE(Fit["rms"].is_null());
        EXPECT_EQ(0, Fit["degrees_of_freedom"]);
        EXPECT_NE(std::string::npos,
                  Run({"p.csv", "--method", "richest"}).szOut.find("RMS: does not exist, there is no redundancy"));
    }
}

// The translation takes up a fifth of an error at the centre of five points. Four fifths remain there, 4 of 5 units,
// which is the largest residual.
TEST_F(FitPoints, NamesTheLargestResidual)
{
    Write("p.csv", "# comment\n\nname,x,y,X,Y\nsouth west,0,0,0,0\nb,100,0,100,0\n\"c, \"\"bad\"\"\",50,50,55,50\n"
                   "d,0,100,0,100\ne,100,100,100,100\n");
    const json Largest = RunJson({"p.csv", "--method", "affine"})["largest_residual"];
    EXPECT_EQ("c, \"bad\"", Largest["name"]);
    EXPECT_EQ(3, Largest["point"]);
    EXPECT_EQ(6, Largest["line"]);
    EXPECT_NEAR(4, Largest["length"], 1e-12);
    EXPECT_NE(std::string::npos, Run({"p.csv", "--method", "affine"}).szOut.find(" at 'c, \"bad\"'\n"));
    Write("q.csv", "x,y,X,Y\n0,0,0,0\n100,0,100,0\n\n50,50,55,50\n0,100,0,100\n100,100,100,100\n");
    EXPECT_NE(std::string::npos, Run({"q.csv", "--method", "affine"}).szOut.find(" at point 3, line 5\n"));
}

// A number in a format of printf, filled to a width on the left.
std::string Cell(const char* a_szFormat, const json& a_Value)
{
    char szText[100];
    std::snprintf(szText, sizeof szText, a_szFormat, a_Value.get<double>());
    return szText;
}

std::string FrameLines(const json& a_Frame)
{
    std::string szText;
    for (const auto& [szName, dValue] : a_Frame["coefficients"].items())
    {
        szText +=
            "  " + szName + " = " + Digits(dValue) + Cell(" +- %.3g\n", a_Frame.at("standard_deviations").at(szName));
    }
    return szText;
}

std::string KindLine(const json& a_Kind)
{
    const json& Greatest = a_Kind["greatest_leave_one_out"];
    return Cell("%14.0f", a_Kind["coefficients"]) + Cell("%9.0f", a_Kind["degrees_of_freedom"]) +
           Cell("%15.6g", a_Kind["rms"]) + Cell("%15.6g", a_Kind["leave_one_out_rms"]) +
           Cell("%15.6g", Greatest["length"]) + "  '" + Greatest["name"].get<std::string>() + "'\n";
}

std::string PointLine(const json& a_Point)
{
    const json& Leave = a_Point["leave_one_out"];
    return Cell("%7.0f", a_Point["point"]) + Cell("%7.0f", a_Point["line"]) + Cell("%15.6g", a_Point["dX"]) +
           Cell("%15.6g", a_Point["dY"]) + Cell("%15.6g", a_Point["length"]) +
           Cell("%13.4g", a_Point["source_residual"][0]) + Cell("%13.4g", a_Point["source_residual"][1]) +
           Cell("%13.4g", a_Point["studentised"]) +
           Cell("%15.6g", std::hypot(Leave[0].get<double>(), Leave[1].get<double>())) + "  " +
           a_Point["name"].get<std::string>() + "\n";
}

TEST_F(FitPoints, TextAndJsonSayTheSame)
{
    const std::string szSample = NUV_FITPOINTS_SAMPLE;
    const std::string szText = Run({szSample}).szOut;
    const json Fit = RunJson({szSample});
    std::vector<std::string> vszParts = {"kind:    omographic",
                                         "12 used",
                                         "24 - 8 = 16 degrees of freedom",
                                         "\n* omographic    ",
                                         Cell("RMS: %.10g,", Fit["rms"]),
                                         FrameLines(Fit["frames"]["local"]),
                                         FrameLines(Fit["frames"]["original"])};
    for (const json& Kind : Fit["kinds"])
    {
        vszParts.push_back(KindLine(Kind));
    }
    for (const json& P : Fit["points"])
    {
        vszParts.push_back(PointLine(P));
    }
    for (const std::string& szPart : vszParts)
    {
        EXPECT_NE(std::string::npos, szText.find(szPart)) << szPart;
    }
}

TEST_F(FitPoints, ASummaryHasAllButThePoints)
{
    const std::string szSample = NUV_FITPOINTS_SAMPLE;
    const std::string szText = Run({szSample, "--summary"}).szOut;
    for (const char* const szPart : {"\nKinds. ", "\n  conformal ", "\nSuspected blunders", "\nRMS: ", "\n  A = "})
    {
        EXPECT_NE(std::string::npos, szText.find(szPart)) << szPart;
    }
    EXPECT_EQ(std::string::npos, szText.find("\nResiduals"));
    json Whole = RunJson({szSample});
    Whole.erase("points");
    EXPECT_EQ(Whole, RunJson({szSample, "--summary"}));
}

// The reports say why a kind is missing or is not judged. With four points the omographic kind is not judged.
TEST_F(FitPoints, TheTableOfKindsSaysWhyOneIsMissing)
{
    Write("p.csv", Header + "0,0,0,0\n100,0,100,0\n100,100,104,100\n");
    const std::string szText = Run({"p.csv"}).szOut;
    EXPECT_NE(std::string::npos, szText.find("none: only 3 points: the omographic kind needs 4\n"));
    EXPECT_NE(std::string::npos, szText.find("not judged: only 3 points: the affine kind needs 4 to be judged\n"));
    EXPECT_NE(std::string::npos, szText.find("* conformal "));
    const json Kinds = RunJson({"p.csv"}).at("kinds");
    EXPECT_TRUE(Kinds[0]["missing"].is_null());
    EXPECT_TRUE(Kinds[0]["leave_one_out_rms"].is_number());
    EXPECT_TRUE(Kinds[1]["missing"].is_null());
    EXPECT_EQ("only 3 points: the affine kind needs 4 to be judged", Kinds[1]["not_judged"]);
    EXPECT_TRUE(Kinds[1]["rms"].is_null());
    EXPECT_EQ("only 3 points: the omographic kind needs 4", Kinds[2]["missing"]);
}

// The identity, but for the point 3 of the file, which is 50 units off. The check point before it has a number, too.
const std::string OneBlunder = "name,x,y,X,Y,check\na,0,0,0,0,0\ncheck,50,50,50,51,1\nbad,100,100,150,100,0\n"
                               "c,100,0,100,0,0\nd,0,100,0,100,0\ne,37,55,37,55,0\nf,80,20,80,20,0\n"
                               "g,15,70,15,70,0\nh,60,90,60,90,0\n";

TEST_F(FitPoints, SuspectedBlundersAreListedFirst)
{
    Write("p.csv", OneBlunder);
    for (const std::string szKind : {"auto", "conformal", "affine", "omographic"})
    {
        const std::string szText = Run({"p.csv", "--method", szKind}).szOut;
        const std::size_t iSuspect = szText.find("\nSuspected blunders, at the level 0.01:\n");
        ASSERT_NE(std::string::npos, iSuspect) << szKind;
        EXPECT_LT(szText.find("  bad\n", iSuspect), szText.find("\nLocal frame"));
        const json Fit = RunJson({"p.csv", "--method", szKind});
        ASSERT_EQ(1u, Fit.at("suspects").size()) << szKind;
        EXPECT_EQ(3, Fit["suspects"][0].at("point"));
        EXPECT_TRUE(Fit["suspects"][0].at("dropped").is_null());
        EXPECT_EQ(true, Fit["points"][2].at("suspect"));
        EXPECT_EQ(3, Fit["kinds"][0]["greatest_leave_one_out"]["point"]);
    }
    Write("q.csv", Header + "0,0,0,0\n9,0,9,0\n");
    EXPECT_NE(std::string::npos, Run({"q.csv"}).szOut.find("not tested, because there is too little redundancy\n"));
    EXPECT_NE(std::string::npos, Run({NUV_FITPOINTS_SAMPLE}).szOut.find("at the level 0.01: none\n"));
}

// Point 2 is 5 units off among errors of 1 unit: suspect at the level 0.2, not at the usual one.
TEST_F(FitPoints, TheLevelDecidesWhatIsSuspect)
{
    Write("p.csv", Header + "0,0,0,1\n100,100,105,100\n100,0,101,0\n0,100,0,99\n37,55,36,55\n80,20,80,21\n"
                            "15,70,16,70\n60,90,60,89\n");
    const json Usual = RunJson({"p.csv", "--method", "affine"});
    EXPECT_EQ(0.01, Usual.at("level"));
    EXPECT_EQ(0u, Usual.at("suspects").size());
    const json Higher = RunJson({"p.csv", "--method", "affine", "--level", "0.2"});
    EXPECT_EQ(0.2, Higher.at("level"));
    ASSERT_EQ(1u, Higher.at("suspects").size());
    EXPECT_EQ(2, Higher["suspects"][0].at("point"));
    EXPECT_EQ(1, RunJson({"p.csv", "--method", "affine", "--level", "0.2", "--robust"}).at("dropped"));
    EXPECT_NE(std::string::npos,
              Run({"p.csv", "--level", "0.2"}).szOut.find("\nSuspected blunders, at the level 0.2:"));
}

TEST_F(FitPoints, RobustDropsTheBlunderAndSaysSo)
{
    Write("p.csv", OneBlunder);
    const std::string szText = Run({"p.csv", "--robust"}).szOut;
    EXPECT_NE(std::string::npos, szText.find("points:  7 used, 1 dropped point, 1 check point\n"));
    EXPECT_NE(std::string::npos, szText.find("  bad (dropped as number 1)\n"));
    EXPECT_NE(std::string::npos, szText.find("\nDropped points: computed less given\n"));
    const json Fit = RunJson({"p.csv", "--robust"});
    EXPECT_EQ(7, Fit.at("n"));
    EXPECT_EQ(1, Fit.at("dropped"));
    EXPECT_EQ("dropped", Fit["points"][2].at("role"));
    EXPECT_NEAR(-50, Fit["points"][2].at("dX"), 1e-9);
    EXPECT_NEAR(0, Fit.at("rms"), 1e-9);
    EXPECT_EQ(1, Fit["suspects"][0].at("dropped"));
    // The georeferencer gets the dropped point and the check point, but not enabled.
    ASSERT_EQ(0, Run({"p.csv", "--robust", "--points", "p.points"}).iCode);
    const json Again = RunJson({"p.points"});
    EXPECT_EQ(7, Again.at("n"));
    EXPECT_EQ("check", Again["points"][1].at("role"));
    EXPECT_EQ("check", Again["points"][2].at("role"));
}

// X = 2 x, Y = -4 y, but for one corner, whose X is 8 units greater. An affine fit leaves 2 units at each corner.
TEST_F(FitPoints, ResidualsInSourceUnitsAreTheInverseLessTheGiven)
{
    Write("p.csv", Header + "0,0,0,0\n100,0,200,0\n100,100,208,-400\n0,100,0,-400\n");
    const json Fit = RunJson({"p.csv", "--method", "affine"});
    const json& C = Fit["frames"]["original"]["coefficients"];
    const double A = C["A"], B = C["B"];
    EXPECT_NEAR(2.04, A, 1e-12);
    EXPECT_NEAR(0.04, B, 1e-12);
    EXPECT_NEAR(-2, Fit["points"][0]["dX"], 1e-10);
    EXPECT_NEAR(2 / A, Fit["points"][0]["source_residual"][0], 1e-12);
    EXPECT_NEAR(0, Fit["points"][0]["source_residual"][1], 1e-12);
}

// With four points at (+-1, +-1) the normal matrix of the affine kind is 4 I, so every coefficient has the standard
// deviation RMS/2.
TEST_F(FitPoints, CoefficientsAndParametersHaveStandardDeviations)
{
    Write("p.csv", Header + "-1,-1,-1,-1\n1,-1,1,-1\n1,1,1.4,1\n-1,1,-1,1\n");
    const json Fit = RunJson({"p.csv", "--method", "affine"});
    const double dSigma = Fit.at("rms").get<double>() / 2;
    const json& Local = Fit["frames"]["local"];
    for (const char* const szName : {"A", "B", "C", "D", "E", "F"})
    {
        EXPECT_NEAR(dSigma, Local["standard_deviations"][szName], 1e-12) << szName;
    }
    EXPECT_EQ(0, Local["standard_deviations"]["G"]);
    EXPECT_NEAR(dSigma * dSigma, Local["covariance"][0], 1e-12);
    EXPECT_NEAR(dSigma, Fit["parameters"]["standard_deviations"]["sx"], 0.1 * dSigma); // sx is nearly A
    EXPECT_NE(std::string::npos, Run({"p.csv", "--method", "affine"}).szOut.find(Cell(" +- %.3g\n  B = ", dSigma)));
    Write("q.csv", Header + "0,0,0,0\n1,0,1,0\n1,1,1,1\n");
    const json NoRedundancy = RunJson({"q.csv", "--method", "affine"});
    EXPECT_TRUE(NoRedundancy["frames"]["local"]["standard_deviations"].is_null());
    EXPECT_TRUE(NoRedundancy["parameters"]["standard_deviations"].is_null());
    EXPECT_EQ(std::string::npos, Run({"q.csv", "--method", "affine"}).szOut.find("+-"));
}

TEST_F(FitPoints, HelpAndVersionAreAnswered)
{
    const TRun Help = Run({"--help"});
    EXPECT_EQ(0, Help.iCode);
    EXPECT_NE(std::string::npos, Help.szOut.find("--mirrored"));
    const TRun Version = Run({"--version"});
    EXPECT_EQ(0, Version.iCode);
    EXPECT_EQ(0u, Version.szOut.find("fitpoints "));
}

} // namespace
} // namespace fitpoints_tests
