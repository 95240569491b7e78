// apply_test.cpp: transforms the points of further tables.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

#include <cmath>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>
#include <sys/resource.h>
#include <unistd.h>

namespace fitpoints_tests {
namespace {

// X = 2 x + 10, Y = 2 y - 20: all images are short numbers.
const std::string Doubling = Header + "0,0,10,-20\n100,0,210,-20\n100,100,210,180\n0,100,10,180\n";

class Apply : public FitPoints
{
protected:
    // What --apply makes of a table by the affine transformation of Doubling.
    std::string Applied(const std::string& a_szTable, std::vector<std::string> a_vszOptions = {}) const
    {
        Write("p.csv", Doubling);
        Write("q.csv", a_szTable);
        a_vszOptions.insert(a_vszOptions.begin(), {"p.csv", "--method", "affine", "--apply", "q.csv"});
        const TRun Result = Run(a_vszOptions);
        EXPECT_EQ(0, Result.iCode) << Result.szError;
        return Result.szOut;
    }
};

TEST_F(Apply, AddsTheImagesAndKeepsTheOtherColumns)
{
    EXPECT_EQ("height,y,name,x,X,Y\n7,2,\"a,\"\"b\"\"\",1.5,13,-16\n,1e1,,-3,4,0\n",
              Applied("height,y,name,x\r\n# comment\n7,2,\"a,\"\"b\"\"\",1.5\n\n,1e1,,-3"));
    EXPECT_EQ("sourceX,sourceY,mapX,mapY\n1,2,12,-16\n", Applied("sourceX,sourceY\n1,2\n"));
    EXPECT_EQ("x,y,X,Y\n", Applied("x,y\n"));
}

TEST_F(Apply, ReplacesOldImages)
{
    EXPECT_EQ("Y,X,x,y,n\n-16,12,1,2,a\n", Applied("Y,X,x,y,n\n999,,1,2,a\n"));
}

TEST_F(Apply, TheInverseGivesTheSourcePoints)
{
    EXPECT_EQ("n,X,Y,x,y\na,12,-16,1,2\n", Applied("n,X,Y\na,12,-16\n", {"--inverse"}));
    EXPECT_EQ("mapX,mapY,sourceX,sourceY\n12,-16,1,2\n", Applied("mapX,mapY\n12,-16\n", {"--inverse"}));
}

TEST_F(Apply, KeepsSeparatorAndDecimalMark)
{
    EXPECT_EQ("x;y;n;X;Y\n1,25;2;\"a;b\";12,5;-16\n", Applied("x;y;n\n1,25;2;\"a;b\"\n"));
    EXPECT_EQ("x\ty\tX\tY\n1.25\t2\t12.5\t-16\n", Applied("x\ty\n1.25\t2\n"));
    // The first mark stands in the third row. The rows before it have images with marks.
    Write("p.csv", Header + "0,0,0,0\n8,0,2,0\n8,8,2,2\n0,8,0,2\n");
    for (const char* const szMark : {",", "."})
    {
        const std::string szHalf = std::string("0") + szMark;
        Write("q.csv", "x;y\n1;2\n3;4\n" + szHalf + "5;0\n");
        EXPECT_EQ("x;y;X;Y\n1;2;" + szHalf + "25;" + szHalf + "5\n3;4;" + szHalf + "75;1\n" + szHalf + "5;0;" + szHalf +
                      "125;0\n",
                  Run({"p.csv", "--method", "affine", "--apply", "q.csv"}).szOut);
    }
    Write("q.csv", "x;y\n1;2\n");
    EXPECT_EQ("x;y;X;Y\n1;2;0.25;0.5\n", Run({"p.csv", "--method", "affine", "--apply", "q.csv"}).szOut);
}

TEST_F(Apply, ReadsStandardInput)
{
    Write("p.csv", Doubling);
    Write("q.csv", "x,y\n1,2\n");
    Prepare = [] { dup2(open("q.csv", O_RDONLY), STDIN_FILENO); };
    EXPECT_EQ("x,y,X,Y\n1,2,12,-16\n", Run({"p.csv", "--method", "affine", "--apply", "-"}).szOut);
    ExpectFailure({"-", "--apply", "-"}, "--apply: standard input is the file of the control points");
}

TEST_F(Apply, WithOutputTheReportIsPrinted)
{
    const std::string szReport = Applied("x,y\n1,2\n", {"--output", "r.csv", "--summary"});
    EXPECT_NE(std::string::npos, szReport.find("kind:    affine"));
    EXPECT_EQ("x,y,X,Y\n1,2,12,-16\n", Contents("r.csv"));
}

TEST_F(Apply, BadTablesAreRefusedWithTheirLineAndTheOutputIsUntouched)
{
    Write("p.csv", Doubling);
    Write("old.csv", "old");
    const auto Refused = [&](const std::string& a_szTable, const std::string& a_szLine)
    {
        Write("q.csv", a_szTable);
        ExpectFailure({"p.csv", "--method", "affine", "--apply", "q.csv", "--output", "old.csv"}, a_szLine);
        EXPECT_EQ("old", Contents("old.csv"));
    };
    Refused("x,z\n1,2\n", "q.csv:1: the columns are 'x,z': y is missing");
    Refused("X,Y\n1,2\n", "q.csv:1: the columns are 'X,Y', without x,y and without sourceX,sourceY");
    Refused("x,y\n1,2\n3,a\n", "q.csv:3: column y: 'a' is not a decimal number");
    Refused("x,y\n1,2\n3\n", "q.csv:3: 1 field where the header has 2");
    Refused("x,y\n1;2\n", "q.csv:2: 1 field where the header has 2: the separator is a semicolon, that of the header a "
                          "comma");
    Refused("", "q.csv: the file has no header line");
    ExpectFailure({"p.csv", "--apply", "no.csv"}, "no.csv: cannot be read: No such file or directory");
    ExpectFailure({"p.csv", "--apply", "q.csv", "--output", "q.csv"},
                  "q.csv: --output would write over the file of --apply");
    for (const char* const szOption : {"--inverse", "--deviations"})
    {
        ExpectFailure({"p.csv", szOption}, std::string(szOption) + " requires --apply (see --help)");
    }
    ExpectFailure({"p.csv", "--output", "r.csv"}, "--output requires --apply (see --help)");
}

// X = x / (1 - x / 4), Y = y / (1 - x / 4). The line x = 4 is mapped to infinity; nothing is mapped onto X = -4.
TEST_F(Apply, PointsWithoutAnImageAreRefusedAndThoseBeyondInfinityNamed)
{
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n0,2,0,2\n2,0,4,0\n2,2,4,4\n");
    Write("q.csv", "x,y\n1,1\n4,1\n");
    const TRun Result = Run({"p.csv", "--method", "omographic", "--raw", "--apply", "q.csv", "--output", "r.csv"});
    EXPECT_EQ("fitpoints: q.csv:3: the transformation takes this point to infinity\n", Result.szError);
    EXPECT_EQ(2, Result.iCode);
    Write("q.csv", "x,y\n1,1\n8,1\n9,1\n");
    EXPECT_EQ("fitpoints: q.csv: warning: 2 points beyond the line that the transformation takes to infinity\n",
              Run({"p.csv", "--method", "omographic", "--apply", "q.csv"}).szError);
}

// The leading coefficients of four points in a square of side 2: the variance of the mean is s^2/4, that of A, B, D and
// E is s^2/4 each. So the variance of an image at (u, v) from the centre is s^2 (1 + u^2 + v^2)/4.
TEST_F(Apply, DeviationsGrowWithTheDistanceFromTheCentre)
{
    Write("p.csv", Header + "-1,-1,-1,-1\n1,-1,1,-1\n1,1,1.4,1\n-1,1,-1,1\n");
    const double dRms = RunJson({"p.csv", "--method", "affine"}).at("rms");
    EXPECT_NEAR(std::sqrt(0.04 / 2), dRms, 1e-12); // residuals of 0.1 at four points, two degrees of freedom
    Write("q.csv", "x,y\n0,0\n3,4\n");
    std::istringstream Lines(Run({"p.csv", "--method", "affine", "--apply", "q.csv", "--deviations"}).szOut);
    std::string szLine;
    std::getline(Lines, szLine);
    EXPECT_EQ("x,y,X,Y,sX,sY,major,minor,direction", szLine);
    for (const double dSquare : {0.0, 25.0})
    {
        std::getline(Lines, szLine);
        std::replace(szLine.begin(), szLine.end(), ',', ' ');
        std::istringstream Fields(szLine);
        double vd[9];
        for (double& dValue : vd)
        {
            ASSERT_TRUE(Fields >> dValue) << szLine;
        }
        const double dExpected = dRms * std::sqrt((1 + dSquare) / 4);
        for (const int i : {4, 5, 6, 7}) // both coordinates and both axes: the ellipse is a circle
        {
            EXPECT_NEAR(dExpected, vd[i], 1e-5 * dExpected) << i;
        }
    }
    Write("r.csv", Header + "0,0,0,0\n1,0,1,0\n1,1,1,1\n");
    ExpectFailure({"r.csv", "--method", "affine", "--apply", "q.csv", "--deviations"},
                  "--deviations: the fit has no redundancy, from which they could be estimated");
}

// A target unit is about half a source unit, so the source point of a target point is half as uncertain.
TEST_F(Apply, DeviationsOfTheInverseAreInSourceUnits)
{
    Write("p.csv", Header + "-1,-1,-2,-2\n1,-1,2,-2\n1,1,2.4,2\n-1,1,-2,2\n");
    const double dRms = RunJson({"p.csv", "--method", "affine"}).at("rms");
    Write("q.csv", "X,Y\n0.1,0\n"); // the image of the centre
    std::istringstream Lines(
        Run({"p.csv", "--method", "affine", "--apply", "q.csv", "--deviations", "--inverse"}).szOut);
    std::string szLine;
    std::getline(Lines, szLine);
    EXPECT_EQ("X,Y,x,y,sx,sy,major,minor,direction", szLine);
    std::getline(Lines, szLine);
    const json Row = json::parse("[" + szLine + "]");
    EXPECT_NEAR(0, Row[2], 1e-12);
    // X changes by 2.1 units with x: the mean of 2 and of (2.4 + 2)/2.
    EXPECT_NEAR(dRms / 2 / 2.1, Row[4], 0.03 * dRms);
}

#if !defined(__SANITIZE_ADDRESS__)
TEST_F(FitPointsSlow, AMillionRowsTakeTwoSecondsAndLittleMemory)
{
    Write("p.csv", Doubling);
    {
        std::ofstream Stream("q.csv", std::ios::binary);
        Stream << "name,x,y,height\n";
        for (int i = 0; i < 1000000; ++i)
        {
            Stream << "point " << i << "," << i * 7 % 9973 << "." << i % 997 << "," << i << ".125," << i % 83 << "\n";
        }
    }
    Prepare = []
    {
        const rlimit Time = {2, 2};
        setrlimit(RLIMIT_CPU, &Time);
        const rlimit Memory = {64 << 20, 64 << 20};
        setrlimit(RLIMIT_AS, &Memory);
    };
    const TRun Result = Run({"p.csv", "--method", "affine", "--apply", "q.csv"}, "r.csv");
    EXPECT_EQ(0, Result.iCode) << Result.szError;
    const std::string szText = Contents("r.csv");
    EXPECT_EQ(1000001, std::count(szText.begin(), szText.end(), '\n'));
    EXPECT_EQ(szText.size() - 1, szText.rfind("\n"));
    EXPECT_NE(std::string::npos, szText.find("\npoint 999999,8920.8,999999.125,15,17851.6,1999978.25"));
}
#endif

} // namespace
} // namespace fitpoints_tests
