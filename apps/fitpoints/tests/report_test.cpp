// report_test.cpp: what the reports say of residuals and statistics.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

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

TEST_F(FitPoints, TextAndJsonSayTheSame)
{
    const std::string szSample = NUV_FITPOINTS_SAMPLE;
    const std::string szText = Run({szSample}).szOut;
    const json Fit = RunJson({szSample});
    std::vector<std::string> vszParts = {"kind:    omographic", "12 used", "24 - 8 = 16 degrees of freedom"};
    for (const char* const szFrame : {"local", "original"})
    {
        for (const auto& [szName, dValue] : Fit["frames"][szFrame]["coefficients"].items())
        {
            vszParts.push_back("  " + szName + " = " + Digits(dValue) + "\n");
        }
    }
    for (const json& P : Fit["points"])
    {
        char szRow[200];
        std::snprintf(szRow, sizeof szRow, "%7d%7d%15.6g%15.6g%15.6g  %s\n", P["point"].get<int>(),
                      P["line"].get<int>(), P["dX"].get<double>(), P["dY"].get<double>(), P["length"].get<double>(),
                      P["name"].get<std::string>().c_str());
        vszParts.push_back(szRow);
    }
    char szRms[64];
    std::snprintf(szRms, sizeof szRms, "RMS: %.10g,", Fit["rms"].get<double>());
    vszParts.push_back(szRms);
    for (const std::string& szPart : vszParts)
    {
        EXPECT_NE(std::string::npos, szText.find(szPart)) << szPart;
    }
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
