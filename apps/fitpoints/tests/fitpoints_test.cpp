// fitpoints_test.cpp: the program as a process: results, reports, outputs, and what it says to bad input.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "support/reference_fits.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sstream>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using nlohmann::json;
namespace fs = std::filesystem;

// ---------------------------------------------------------------------------------------------------------------------
// Running the program

struct TRun
{
    int iCode; // exit code; -1 if the process was ended by a signal
    std::string szOut, szError;
};

std::string Contents(const fs::path& a_Path)
{
    std::ifstream Stream(a_Path, std::ios::binary);
    return {std::istreambuf_iterator<char>(Stream), {}};
}

// A directory of its own for every test, with the process run inside it.
class FitPoints : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string szPattern = (fs::temp_directory_path() / "fitpoints-test-XXXXXX").string();
        ASSERT_NE(nullptr, mkdtemp(szPattern.data()));
        Directory = szPattern;
        ASSERT_EQ(0, chdir(szPattern.c_str()));
    }

    void TearDown() override
    {
        ASSERT_EQ(0, chdir("/"));
        fs::remove_all(Directory);
    }

    void Write(const std::string& a_szName, const std::string& a_szText) const
    {
        std::ofstream(Directory / a_szName, std::ios::binary) << a_szText;
    }

    // Runs the program with its standard output to a_szOut, or to where it can be read if that is empty.
    TRun Run(std::vector<std::string> a_vszArguments, const std::string& a_szOut = "",
             const std::string& a_szPath = "") const
    {
        const fs::path Out = a_szOut.empty() ? fs::path(Directory.string() + ".out") : fs::path(a_szOut);
        const fs::path Error = Directory.string() + ".err";
        const pid_t iChild = Start(a_vszArguments, Out, Error, a_szPath);
        int iStatus = 0;
        waitpid(iChild, &iStatus, 0);
        const TRun Result = {WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1, a_szOut.empty() ? Contents(Out) : "",
                             Contents(Error)};
        fs::remove(Error);
        if (a_szOut.empty())
        {
            fs::remove(Out);
        }
        return Result;
    }

    pid_t Start(std::vector<std::string> a_vszArguments, const fs::path& a_Out, const fs::path& a_Error,
                const std::string& a_szPath) const
    {
        const pid_t iChild = fork();
        if (iChild == 0)
        {
            if (Prepare)
            {
                Prepare();
            }
            a_vszArguments.insert(a_vszArguments.begin(), NUV_FITPOINTS);
            Exec(a_vszArguments, a_Out, a_Error, a_szPath);
        }
        return iChild;
    }

    json RunJson(std::vector<std::string> a_vszArguments) const
    {
        a_vszArguments.push_back("--json");
        const TRun Result = Run(a_vszArguments);
        EXPECT_EQ(0, Result.iCode) << Result.szError;
        return Result.iCode == 0 ? json::parse(Result.szOut) : json();
    }

    std::set<std::string> Files() const
    {
        std::set<std::string> Names;
        for (const auto& Entry : fs::directory_iterator(Directory))
        {
            Names.insert(Entry.path().filename().string());
        }
        return Names;
    }

    // The run fails with exit code 2 and exactly this line, prints nothing, and leaves the directory as it was.
    void ExpectFailure(const std::vector<std::string>& a_vszArguments, const std::string& a_szLine,
                       const std::string& a_szPath = "") const
    {
        const std::set<std::string> Before = Files();
        const TRun Result = Run(a_vszArguments, "", a_szPath);
        EXPECT_EQ(2, Result.iCode);
        EXPECT_EQ("", Result.szOut);
        EXPECT_EQ("fitpoints: " + a_szLine + "\n", Result.szError);
        EXPECT_EQ(Before, Files());
    }

    // A gnuplot of the test's own, in bin.
    void WriteGnuplot(const std::string& a_szScript) const
    {
        fs::create_directory("bin");
        Write("bin/gnuplot", "#!/bin/sh\n" + a_szScript);
        fs::permissions("bin/gnuplot", fs::perms::owner_all);
    }

    fs::path Directory;
    std::function<void()> Prepare; // called in the process before it becomes the program

private:
    [[noreturn]] static void Exec(std::vector<std::string>& a_vszCommand, const fs::path& a_Out,
                                  const fs::path& a_Error, const std::string& a_szPath)
    {
        dup2(open(a_Out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666), 1);
        dup2(open(a_Error.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666), 2);
        if (!a_szPath.empty())
        {
            setenv("PATH", a_szPath.c_str(), 1);
        }
        std::vector<char*> vszArguments;
        for (std::string& szArgument : a_vszCommand)
        {
            vszArguments.push_back(szArgument.data());
        }
        vszArguments.push_back(nullptr);
        execv(NUV_FITPOINTS, vszArguments.data());
        _exit(127);
    }
};

// ---------------------------------------------------------------------------------------------------------------------
// Data and evaluation

using TPoint = nuv_reference::TControlPoint;
using TCoefs = std::array<double, 8>;

std::array<double, 2> Transform(const TCoefs& C, double x, double y)
{
    const double dW = C[6] * x + C[7] * y + 1;
    return {(C[0] * x + C[1] * y + C[2]) / dW, (C[3] * x + C[4] * y + C[5]) / dW};
}

std::string Digits(double a_dValue)
{
    char szText[64];
    std::snprintf(szText, sizeof szText, "%.17g", a_dValue);
    return szText;
}

std::string Csv(const std::vector<TPoint>& a_vPoints)
{
    std::string szText = "x,y,X,Y\n";
    for (const TPoint& P : a_vPoints)
    {
        szText += Digits(P[0]) + "," + Digits(P[1]) + "," + Digits(P[2]) + "," + Digits(P[3]) + "\n";
    }
    return szText;
}

// The images of points that are spread over a square of 1000 units whose lower left corner is (a_dX, a_dY).
std::vector<TPoint> Images(const TCoefs& a_Coefs, double a_dX = 0, double a_dY = 0)
{
    std::vector<TPoint> vPoints;
    for (const auto& P : {std::array<double, 2>{0, 0}, {1000, 16}, {984, 1000}, {8, 960}, {512, 256}, {256, 768}})
    {
        const auto Image = Transform(a_Coefs, a_dX + P[0], a_dY + P[1]);
        vPoints.push_back({a_dX + P[0], a_dY + P[1], Image[0], Image[1]});
    }
    return vPoints;
}

TCoefs Coefs(const json& a_Frame)
{
    const json& C = a_Frame.at("coefficients");
    return {C["A"], C["B"], C["C"], C["D"], C["E"], C["F"], C["G"], C["H"]};
}

TCoefs OriginalCoefs(const json& a_Fit)
{
    return Coefs(a_Fit.at("frames").at("original"));
}

void ExpectCoefs(const TCoefs& a_Expected, const TCoefs& a_Actual, double a_dRelative)
{
    for (std::size_t i = 0; i < a_Expected.size(); ++i)
    {
        EXPECT_NEAR(a_Expected[i], a_Actual[i], a_dRelative * std::max(1e-3, std::fabs(a_Expected[i])))
            << "ABCDEFGH"[i];
    }
}

// The true transformations. Their coefficients and the coordinates are short in binary, so that the images of the
// first three are exact.
const TCoefs Similarity = {1.5, -0.5, 4096, 0.5, 1.5, -2048, 0, 0};
const TCoefs Mirrored = {1.5, 0.5, 4096, 0.5, -1.5, -2048, 0, 0};
const TCoefs Affine = {1.25, -0.375, 500000, 0.5, 2, 4500000, 0, 0};
const TCoefs Omographic = {1.25, -0.375, 500, 0.5, 2, 4500, 0x1p-13, -0x1p-14};

TEST_F(FitPoints, RecoversASimilarity)
{
    Write("p.csv", Csv(Images(Similarity)));
    const json Fit = RunJson({"p.csv", "--method", "conformal"});
    EXPECT_EQ("conformal", Fit["kind"]);
    EXPECT_EQ(false, Fit["mirrored"]);
    ExpectCoefs(Similarity, OriginalCoefs(Fit), 1e-14);
    EXPECT_NEAR(std::sqrt(2.5), Fit["parameters"]["sx"], 1e-14);
    EXPECT_NEAR(std::atan2(0.5, 1.5), Fit["parameters"]["rotation"], 1e-14); // counter-clockwise
    EXPECT_EQ(0, Fit["parameters"]["skew"]);
    EXPECT_EQ(json({"--method asked for it"}), Fit["not_richer"]);
}

TEST_F(FitPoints, RecoversAnOrientationReversingSimilarity)
{
    Write("p.csv", Csv(Images(Mirrored)));
    const json Fit = RunJson({"p.csv", "--method", "conformal", "--mirrored"});
    EXPECT_EQ(true, Fit["mirrored"]);
    ExpectCoefs(Mirrored, OriginalCoefs(Fit), 1e-14);
    EXPECT_NEAR(std::sqrt(2.5), Fit["parameters"]["sx"], 1e-14);
    EXPECT_NEAR(-std::sqrt(2.5), Fit["parameters"]["sy"], 1e-14);
    EXPECT_TRUE(Fit["warnings"].empty());
}

TEST_F(FitPoints, SaysThatTheOtherOrientationFitsBetter)
{
    Write("p.csv", Csv(Images(Mirrored)));
    const TRun Result = Run({"p.csv", "--method", "conformal"});
    EXPECT_EQ(0, Result.iCode);
    EXPECT_EQ(
        "fitpoints: p.csv: warning: the similarity of the other orientation fits better: try it with --mirrored\n",
        Result.szError);
}

TEST_F(FitPoints, SaysThatMirroredMeansNothingToTheOtherKinds)
{
    Write("p.csv", Csv(Images(Affine)));
    EXPECT_EQ("fitpoints: p.csv: warning: --mirrored has no effect: the affine kind takes either orientation\n",
              Run({"p.csv", "--method", "affine", "--mirrored"}).szError);
}

TEST_F(FitPoints, RecoversAnAffineTransformationWithItsParameters)
{
    Write("p.csv", Csv(Images(Affine)));
    const json Fit = RunJson({"p.csv", "--method", "affine"});
    EXPECT_EQ("affine", Fit["kind"]);
    ExpectCoefs(Affine, OriginalCoefs(Fit), 1e-14);
    const json& P = Fit["parameters"];
    // a = sx cos t, b = sy (cos t tan p - sin t), d = sx sin t, e = sy (sin t tan p + cos t)
    const double t = P["rotation"], sx = P["sx"], sy = P["sy"], p = P["skew"];
    EXPECT_NEAR(1.25, sx * std::cos(t), 1e-13);
    EXPECT_NEAR(-0.375, sy * (std::cos(t) * std::tan(p) - std::sin(t)), 1e-13);
    EXPECT_NEAR(0.5, sx * std::sin(t), 1e-13);
    EXPECT_NEAR(2, sy * (std::sin(t) * std::tan(p) + std::cos(t)), 1e-13);
    EXPECT_NEAR(500000, P["translation_original"][0], 1e-8);
    EXPECT_NEAR(4500000, P["translation_original"][1], 1e-8);
}

TEST_F(FitPoints, RecoversAnOmographicTransformationWithoutBeingAsked)
{
    Write("p.csv", Csv(Images(Omographic)));
    const json Fit = RunJson({"p.csv"});
    EXPECT_EQ("omographic", Fit["kind"]);
    EXPECT_TRUE(Fit["not_richer"].empty());
    EXPECT_TRUE(Fit["parameters"].is_null());
    ExpectCoefs(Omographic, OriginalCoefs(Fit), 1e-9); // the images are rounded: about 1e-13 of 1000 units each
}

TEST_F(FitPoints, BothFramesGiveTheSameImages)
{
    for (const auto& [szMethod, True] :
         {std::pair<std::string, TCoefs>{"conformal", Similarity}, {"affine", Affine}, {"omographic", Omographic}})
    {
        const std::vector<TPoint> vPoints = Images(True, 3000, -2000);
        Write("p.csv", Csv(vPoints));
        const json Fit = RunJson({"p.csv", "--method", szMethod});
        const json& Local = Fit["frames"]["local"];
        const json& S = Local["source_origin"];
        const json& T = Local["target_origin"];
        EXPECT_NE(0, S[0].get<double>());
        for (const TPoint& P : vPoints)
        {
            const auto FromOriginal = Transform(OriginalCoefs(Fit), P[0], P[1]);
            const auto FromLocal = Transform(Coefs(Local), P[0] - S[0].get<double>(), P[1] - S[1].get<double>());
            // Rounding of numbers below 1e7, and the fit itself is exact to about that.
            EXPECT_NEAR(FromOriginal[0], FromLocal[0] + T[0].get<double>(), 1e-7) << szMethod;
            EXPECT_NEAR(FromOriginal[1], FromLocal[1] + T[1].get<double>(), 1e-7) << szMethod;
            EXPECT_NEAR(P[2], FromOriginal[0], 1e-7) << szMethod;
        }
        EXPECT_LT(Fit["frames"]["largest_difference"], 1e-7) << szMethod;
    }
}

TEST_F(FitPoints, LocalOriginsAreShortNumbersNearTheMiddle)
{
    Write("p.csv", "x,y,X,Y\n4500123.4,0.012,-7,1\n4500423.4,0.052,3,1\n4500223.4,0.022,-1,1\n");
    // x: mean 4500256.7, extent 300, multiples of 100. y: mean 0.0287, extent 0.04, multiples of 0.01.
    // X: mean -1.67, extent 10, multiples of 10. Y: no extent of its own, that of X: 1 to multiples of 10.
    const json Fit = RunJson({"p.csv"});
    EXPECT_EQ(json({4500300.0, 0.03}), Fit["frames"]["local"]["source_origin"]);
    EXPECT_EQ(json({0.0, 0.0}), Fit["frames"]["local"]["target_origin"]);
    EXPECT_NE(std::string::npos, Run({"p.csv"}).szOut.find("target origin (0, 0)")); // -1.67 does not become -0
}

TEST_F(FitPoints, RawFitsTheCoordinatesAsTheyAre)
{
    Write("p.csv", Csv(Images(Affine)));
    const json Fit = RunJson({"p.csv", "--method", "affine", "--raw"});
    EXPECT_EQ(true, Fit["raw"]);
    EXPECT_TRUE(Fit["frames"]["local"].is_null());
    EXPECT_EQ("original", Fit["frames"]["of_fit"]);
    ExpectCoefs(Affine, OriginalCoefs(Fit), 1e-12);
}

TEST_F(FitPoints, RawOmographicFitFarFromTheOriginIsSpoiledAndSaysSo)
{
    Write("p.csv", Csv(Images({1, 0, 0, 0, 1, 0, 0x1p-30, 0x1p-30}, 4500000, 5400000)));
    const json Local = RunJson({"p.csv"});
    EXPECT_LT(Local["rms"], 1e-8); // exact points but for the rounding of coordinates of 5e6
    EXPECT_TRUE(Local["warnings"].empty());
    const json Raw = RunJson({"p.csv", "--raw"});
    EXPECT_EQ("omographic", Raw["kind"]);
    EXPECT_GT(Raw["rms"], 1e-3);
    EXPECT_EQ(
        json({"the omographic fit is worse than the affine one, which it contains: it is spoiled by rounding or has "
              "not converged"}),
        Raw["warnings"]);
}

TEST_F(FitPoints, ATransformationThatTakesTheOriginToInfinityHasNoOriginalFrame)
{
    // X = 10 x / y, Y = 100 / y: the source origin 10 of y makes W = y / 10.
    Write("p.csv", "x,y,X,Y\n-5,5,-10,20\n5,5,10,20\n-5,16,-3.125,6.25\n5,16,3.125,6.25\n");
    const TRun Text = Run({"p.csv"});
    EXPECT_EQ(0, Text.iCode);
    const json Fit = RunJson({"p.csv"});
    EXPECT_EQ(json({0.0, 10.0}), Fit["frames"]["local"]["source_origin"]);
    EXPECT_TRUE(Fit["frames"]["original"].is_null());
    EXPECT_NE(std::string::npos, Text.szOut.find("Original frame: none."));
    EXPECT_LT(Fit["largest_residual"]["length"], 1e-12);
}

// ---------------------------------------------------------------------------------------------------------------------
// Residuals, statistics, reports

// A square of 100 units whose corner (100, 100) is given 4 units too far in X. An affine transformation can follow a
// quarter of that on average, and leaves 1 unit at each corner with alternating signs: computed less given is -1, 1,
// -1, 1 around the square, -1 at the bad corner. Sum 4, 8 - 6 = 2 degrees of freedom.
const char* const Square = "x,y,X,Y\n0,0,0,0\n100,0,100,0\n100,100,104,100\n0,100,0,100\n";

TEST_F(FitPoints, AnOriginalFrameThatTakesAPointToInfinityByRoundingIsNone)
{
    // Found by fuzzing. The source points with x = -1/16 go almost to infinity, and in original coordinates quite.
    Write("p.csv", "x,y,X,Y\n0,0,0,-16\n0,1.875,0,-16\n-0.0625,-0.0625,-0.0625,-0.0625\n"
                   "-0.0625,-0.0625,655.9375,-0.0625\n-0.0625,655.9375,-0.0625,-0.0625\n"
                   "-0.0625,-0.0625,-0.0625,-0.0625\n-0.0625,-0.0625,-0.0625,-368.0625\n"
                   "-0.0625,-0.0625,-0.0625,-0.0625\n-0.0625,-0.0625,-0.0625,-0.0625\n"
                   "-0.0625,-0.0625,-368.0625,-0.0625\n");
    const json Frames = RunJson({"p.csv"}).at("frames");
    EXPECT_TRUE(Frames.at("original").is_null());
    EXPECT_FALSE(Frames.contains("largest_difference"));
    EXPECT_EQ(std::string::npos, Run({"p.csv"}).szOut.find("inf at most"));
}

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
    // The similarity: errors about their mean (3, 0) at the bad corner and (-1, 0) at the others, sum of squares 12;
    // with the corners at (+-50, +-50), sum 20000, scale and rotation take 200^2/20000 = 2 each: 8 remain.
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
        const json Fit = RunJson({"p.csv"});
        EXPECT_EQ(vszKinds[i], Fit["kind"]);
        EXPECT_TRUE(Fit["rms"].is_null());
        EXPECT_EQ(0, Fit["degrees_of_freedom"]);
        EXPECT_NE(std::string::npos, Run({"p.csv"}).szOut.find("RMS: does not exist, there is no redundancy"));
    }
}

// The mean of a square and its centre moves with a fifth of an error at the centre: four fifths stay there, which is
// the largest residual.
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
    const std::string szSample = NUV_FITPOINTS_SOURCES "/sample.csv";
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

TEST_F(FitPoints, TheSampleGivesBackItsTrueTransformation)
{
    const json Fit = RunJson({NUV_FITPOINTS_SOURCES "/sample.csv"});
    ASSERT_EQ(12, Fit["n"]);
    // As the head of the sample states it. The noise is below 0.25 m and the rounding below 0.005 m in each coordinate.
    const TCoefs True = {0.125, 0.0175, -470, 0.015, -0.1225, 215, 2e-5, -1.5e-5};
    double dSum = 0;
    for (const json& P : Fit["points"])
    {
        const auto Image = Transform(True, P["x"], P["y"]);
        EXPECT_NEAR(4500400 + Image[0], P["X"], 0.255);
        EXPECT_NEAR(5387600 + Image[1], P["Y"], 0.255);
        dSum += std::pow(P["X"].get<double>() + P["dX"].get<double>() - 4500400 - Image[0], 2) +
                std::pow(P["Y"].get<double>() + P["dY"].get<double>() - 5387600 - Image[1], 2);
    }
    // The fit projects the noise onto eight of 24 directions. Uniform noise of half width 0.25 has a standard deviation
    // of 0.25/sqrt(3) = 0.144; 8 squares of it are 0.167, and 3 standard deviations of chi-square(8) more are 0.42.
    EXPECT_LT(dSum, 0.42);
    EXPECT_GT(dSum, 0);
}

TEST_F(FitPoints, FitsAgreeWithAnIndependentSolver)
{
    std::mt19937_64 Generator(20261121);
    std::uniform_real_distribution<double> Position(0, 5000);
    std::normal_distribution<double> Noise(0, 2);
    for (int iCase = 0; iCase < 20; ++iCase)
    {
        const TCoefs True = {0.8, -0.3, 650000, 0.35, 0.9, 6850000, 0, 0};
        std::vector<TPoint> vPoints;
        for (int i = 0; i < 4 + iCase; ++i)
        {
            const double x = Position(Generator), y = Position(Generator);
            const auto Image = Transform(True, x, y);
            vPoints.push_back({x, y, Image[0] + Noise(Generator), Image[1] + Noise(Generator)});
        }
        Write("p.csv", Csv(vPoints));
        for (const std::string szKind : {"conformal", "affine"})
        {
            const json Fit = RunJson({"p.csv", "--method", szKind});
            const auto vReference = nuv_reference::ReferenceResiduals(szKind, false, vPoints);
            for (std::size_t i = 0; i < vPoints.size(); ++i)
            {
                // Reduced coordinates are below 1e4, so one rounding is 1e-12; normal equations of well-spread points
                // enlarge it by some thousand at most.
                EXPECT_NEAR(static_cast<double>(vReference[i][0]), Fit["points"][i]["dX"], 1e-8) << szKind;
                EXPECT_NEAR(static_cast<double>(vReference[i][1]), Fit["points"][i]["dY"], 1e-8) << szKind;
            }
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Kinds of file

// Source y is minus the row: the map of a georeferencer file.
const char* const QgisRows = "500010,4500020,100.5,-200.5,1\n500020,4500020,200.5,-200.5,1\n"
                             "500020,4500010,200.5,-300.5,1\n999,999,999,-999,0\n500010.5,4500010,100.5,-300.5,1\n";

std::string QgisText(bool a_bCrs, bool a_bResiduals, const std::string& a_szEnd)
{
    std::string szText = a_bCrs ? "#CRS: GEOGCRS[\"WGS 84\",ID[\"EPSG\",4326]]\n" : "";
    szText += a_bResiduals ? "mapX,mapY,sourceX,sourceY,enable,dX,dY,residual\n" : "mapX,mapY,sourceX,sourceY,enable\n";
    std::istringstream Rows(QgisRows);
    for (std::string szRow; std::getline(Rows, szRow);)
    {
        szText += szRow + (a_bResiduals ? ",0.5,-1e-3,0.7\n" : "\n");
    }
    std::string szResult;
    for (const char iChar : szText)
    {
        szResult += iChar == '\n' ? a_szEnd : std::string(1, iChar);
    }
    return szResult;
}

TEST_F(FitPoints, ReadsGeoreferencerFilesOfEveryForm)
{
    for (int i = 0; i < 8; ++i)
    {
        Write("p.anything", QgisText((i & 1) != 0, (i & 2) != 0, (i & 4) != 0 ? "\r\n" : "\n"));
        const json Fit = RunJson({"p.anything"});
        EXPECT_EQ("qgis", Fit["format"]);
        EXPECT_EQ(4, Fit["n"]);
        EXPECT_EQ(1, Fit["skipped"]);
        const json& P = Fit["points"][3];
        EXPECT_EQ(100.5, P["x"]);
        EXPECT_EQ(-300.5, P["y"]);
        EXPECT_EQ(500010.5, P["X"]);
        EXPECT_EQ(4500010, P["Y"]);
        EXPECT_EQ((i & 1) != 0 ? 7 : 6, P["line"]);
    }
}

TEST_F(FitPoints, ReadsByteOrderMarkQuotesBlanksAndPlusSigns)
{
    Write("p.csv", "\xEF\xBB\xBFname,x,y,X,Y\r\n\r\n# \xFF comment\r\n\"a\",\"1\", 2 ,+3,4e0\r\n\xC3\xA9,5,.5,-7,8.");
    const json Fit = RunJson({"p.csv"});
    ASSERT_EQ(2, Fit["n"]);
    EXPECT_EQ("a", Fit["points"][0]["name"]);
    EXPECT_EQ(3, Fit["points"][0]["X"]);
    EXPECT_EQ(4, Fit["points"][0]["line"]);
    EXPECT_EQ("\xC3\xA9", Fit["points"][1]["name"]);
    EXPECT_EQ(0.5, Fit["points"][1]["y"]);
    EXPECT_EQ(8, Fit["points"][1]["Y"]);
}

// ---------------------------------------------------------------------------------------------------------------------
// World files and drawings

std::vector<double> Numbers(const std::string& a_szText)
{
    std::istringstream Stream(a_szText);
    return {std::istream_iterator<double>(Stream), {}};
}

TEST_F(FitPoints, WorldFileTakesCsvCoordinatesAsPixelCentres)
{
    Write("p.csv", Csv(Images(Affine)));
    ASSERT_EQ(0, Run({"p.csv", "--method", "affine", "--world", "p.wld"}).iCode);
    const std::vector<double> vdExpected = {1.25, 0.5, -0.375, 2, 500000, 4500000}; // A, D, B, E, C, F
    const std::vector<double> vdActual = Numbers(Contents("p.wld"));
    ASSERT_EQ(6u, vdActual.size());
    for (std::size_t i = 0; i < 6; ++i)
    {
        EXPECT_NEAR(vdExpected[i], vdActual[i], 1e-14 * std::max(1.0, vdExpected[i])) << i;
    }
}

TEST_F(FitPoints, WorldFileOfAGeoreferencerFileCountsRowsDownwardsFromPixelCentres)
{
    // X = 500000 + x / 2 - y / 4, Y = 4500000 + x / 8 + y / 2, of the corner of pixel (0, 0).
    Write("p.points", "mapX,mapY,sourceX,sourceY,enable\n500000,4500000,0,0,1\n500008,4500002,16,0,1\n"
                      "500012,4499994,16,-16,1\n500004,4499992,0,-16,1\n");
    ASSERT_EQ(0, Run({"p.points", "--method", "affine", "--world", "p.wld"}).iCode);
    // Of pixel column c and row r the centre is x = c + 1/2, y = -(r + 1/2):
    // X = 500000.375 + c / 2 + r / 4, Y = 4499999.8125 + c / 8 - r / 2.
    const std::vector<double> vdExpected = {0.5, 0.125, 0.25, -0.5, 500000.375, 4499999.8125};
    const std::vector<double> vdActual = Numbers(Contents("p.wld"));
    ASSERT_EQ(6u, vdActual.size());
    for (std::size_t i = 0; i < 6; ++i)
    {
        EXPECT_NEAR(vdExpected[i], vdActual[i], 1e-14 * std::max(1.0, vdExpected[i])) << i;
    }
}

TEST_F(FitPoints, DrawsSvgWithLabelledAxesAndNames)
{
    ASSERT_EQ(0, Run({NUV_FITPOINTS_SOURCES "/sample.csv", "--plot", "p.svg"}).iCode);
    const std::string szSvg = Contents("p.svg");
    EXPECT_EQ(0u, szSvg.find("<?xml"));
    for (const char* const szPart : {"X - 4500300 (target units)", "Y - 5387600 (target units)", "bridge, east end",
                                     "enlarged 200 times", "omographic fit, 12 points", "</svg>"})
    {
        EXPECT_NE(std::string::npos, szSvg.find(szPart)) << szPart;
    }
}

TEST_F(FitPoints, DrawsPng)
{
    ASSERT_EQ(
        0,
        Run({NUV_FITPOINTS_SOURCES "/sample.csv", "--plot", "p.png", "--world", "p.wld", "--method", "affine"}).iCode);
    EXPECT_EQ("\x89PNG\r\n\x1A\n", Contents("p.png").substr(0, 8));
    EXPECT_EQ((std::set<std::string>{"p.png", "p.wld"}), Files());
}

TEST_F(FitPoints, NamesAreTextToGnuplotWhateverTheyHold)
{
    Write("p.csv", "name,x,y,X,Y\n`touch made1`,0,0,0,0\n'; system('touch made2') #,9,0,9,0\n"
                   "it's `touch made3`,9,9,9,9\n\"\\n \"\"@x\"\" <b>&amp;\",0,9,0,9\nEND,5,5,5,6\n");
    const TRun Result = Run({"p.csv", "--plot", "p.svg"});
    EXPECT_EQ(0, Result.iCode) << Result.szError;
    EXPECT_EQ((std::set<std::string>{"p.csv", "p.svg"}), Files());
    const std::string szSvg = Contents("p.svg");
    EXPECT_NE(std::string::npos, szSvg.find("`touch made1`"));
    EXPECT_NE(std::string::npos, szSvg.find("it\xE2\x80\x99s `touch made3`"));
    EXPECT_NE(std::string::npos, szSvg.find("&lt;b>&amp;amp;"));
}

TEST_F(FitPoints, AnOutputReplacesAFileBehindALink)
{
    Write("p.csv", Square);
    Write("real.wld", "old");
    fs::create_symlink("real.wld", "link.wld");
    ASSERT_EQ(0, Run({"p.csv", "--method", "affine", "--world", "link.wld"}).iCode);
    EXPECT_TRUE(fs::is_symlink("link.wld"));
    EXPECT_EQ(6u, Numbers(Contents("real.wld")).size());
}

// ---------------------------------------------------------------------------------------------------------------------
// What the points do not determine

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
    const json Fit = RunJson({"p.csv"});
    EXPECT_EQ(GetParam().szKind, Fit["kind"]);
    EXPECT_NE(Fit["not_richer"].end(),
              std::find(Fit["not_richer"].begin(), Fit["not_richer"].end(), GetParam().szReason))
        << Fit["not_richer"];
    EXPECT_NE(std::string::npos, Run({"p.csv"}).szOut.find(GetParam().szReason));
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
        TDegenerate{"SourceOnAShortLineFarAway", // strays by the rounding of 4.5e6, 1e-9, from a line of 0.02
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

TEST_F(FitPoints, AnAffineTransformationOfSmallScaleIsFitted)
{
    // X = 1e-7 x + 2e-8 y, Y = 3e-7 y: its determinant, 3e-14, counts as zero for the library.
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n1000,0,1e-4,0\n1000,1000,1.2e-4,3e-4\n");
    const json Fit = RunJson({"p.csv"});
    EXPECT_EQ("affine", Fit["kind"]);
    EXPECT_NEAR(1e-7, Fit["frames"]["original"]["coefficients"]["A"].get<double>(), 1e-20);
    EXPECT_NEAR(2e-8, Fit["frames"]["original"]["coefficients"]["B"].get<double>(), 1e-20);
    EXPECT_NEAR(3e-7, Fit["frames"]["original"]["coefficients"]["E"].get<double>(), 1e-20);
}

TEST_F(FitPoints, AnAffineFitThatCollapsesThePlaneIsNamed)
{
    // The corners of a square in another order: X has nothing of x and y, so the fit gives A = B = 0.
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n1,0,1,0\n1,1,0,1\n0,1,1,1\n");
    const TRun Result = Run({"--method", "affine", "p.csv"});
    EXPECT_EQ(2, Result.iCode);
    EXPECT_EQ(
        "fitpoints: p.csv: no affine transformation: the affine fit collapses the plane (its determinant 0 counts "
        "as zero)\n",
        Result.szError);
}

TEST_F(FitPoints, PlotsWithStandardInputClosed)
{
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n1,0,1,0\n1,1,1,1\n0,1,0,2\n");
    const std::string szCommand =
        "cd '" + Directory.string() + "' && '" NUV_FITPOINTS "' p.csv --plot p.svg <&- >/dev/null 2>&1";
    EXPECT_EQ(0, std::system(szCommand.c_str()));
    EXPECT_TRUE(fs::exists(Directory / "p.svg"));
}

TEST_F(FitPoints, TwoAndTwoPointsOnCrossingLinesSupportTheOmographicKind)
{
    // Three on a line, and two beside it: both lines through pairs leave four of which no three are on a line.
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n1,0,1,0\n2,0,2,0\n0,1,0,1\n0,2,0,2\n");
    EXPECT_EQ("omographic", RunJson({"p.csv"})["kind"]);
}

TEST_F(FitPoints, WarnsOfPointsOnBothSidesOfTheVanishingLine)
{
    // X = x / (1 - x / 4), Y = y / (1 - x / 4): x = 4 goes to infinity.
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n0,2,0,2\n2,0,4,0\n2,2,4,4\n8,0,-8,0\n8,2,-8,-2\n");
    const TRun Result = Run({"p.csv"});
    EXPECT_EQ(0, Result.iCode);
    EXPECT_EQ(0u, Result.szError.find("fitpoints: p.csv: warning: the points stand on both sides of the line that the "
                                      "transformation takes to infinity ("))
        << Result.szError;
    EXPECT_EQ(1, std::count(Result.szError.begin(), Result.szError.end(), '\n'));
}

// ---------------------------------------------------------------------------------------------------------------------
// Bad input

struct TBadInput
{
    const char* szName;
    std::string szText;
    std::string szLine; // behind "fitpoints: p.csv"
};

void PrintTo(const TBadInput& a_Case, std::ostream* a_Stream)
{
    *a_Stream << a_Case.szName;
}

class BadInput : public FitPoints, public ::testing::WithParamInterface<TBadInput>
{
};

TEST_P(BadInput, OneLineExitCodeTwoAndOutputsUntouched)
{
    Write("p.csv", GetParam().szText);
    Write("old.wld", "old world");
    ExpectFailure({"p.csv", "--world", "old.wld", "--plot", "new.svg", "--method", "affine"},
                  "p.csv" + GetParam().szLine);
    EXPECT_EQ("old world", Contents("old.wld"));
}

const std::string Header = "x,y,X,Y\n";
const std::string Good = "0,0,0,0\n1,0,1,0\n";
const std::string Columns = ", not [name,]x,y,X,Y or mapX,mapY,sourceX,sourceY,enable[,dX,dY,residual]";

INSTANTIATE_TEST_SUITE_P(
    All, BadInput,
    ::testing::Values(
        TBadInput{"Empty", "", ": the file is empty"},
        TBadInput{"OnlyComments", "# a\n\n", ": the file has no header line"},
        TBadInput{"OnlyHeader", Header, ": no points: a transformation needs at least 2"},
        TBadInput{"WrongColumns", "# c\nx,y,z,t\n0,0,0,0\n", ":2: the columns are 'x,y,z,t'" + Columns},
        TBadInput{"NoHeader", "1,2,3,4\n5,6,7,8\n", ":1: the columns are '1,2,3,4'" + Columns},
        TBadInput{"HalfOfTheLastColumns", "mapX,mapY,sourceX,sourceY,enable,dX\n",
                  ":1: the columns are 'mapX,mapY,sourceX,sourceY,enable,dX'" + Columns},
        TBadInput{"TooFewFields", Header + Good + "1,2,3\n", ":4: 3 fields where the header has 4"},
        TBadInput{"TooManyFields", Header + "# c\n1,2,3,4,5\n", ":3: 5 fields where the header has 4"},
        TBadInput{"TrailingComma", Header + "1,2,3,4,\n", ":2: 5 fields where the header has 4"},
        TBadInput{"Text", Header + Good + "1,2,three,4\n", ":4: column X: 'three' is not a decimal number"},
        TBadInput{"NumberAndText", Header + "1,2m,3,4\n", ":2: column y: '2m' is not a decimal number"},
        TBadInput{"DecimalComma", Header + "\"1,5\",2,3,4\n", ":2: column x: '1,5' is not a decimal number"},
        TBadInput{"Hexadecimal", Header + "0x10,2,3,4\n", ":2: column x: '0x10' is not a decimal number"},
        TBadInput{"TwoSigns", Header + "+-1,2,3,4\n", ":2: column x: '+-1' is not a decimal number"},
        TBadInput{"EmptyField", Header + "1,,3,4\n", ":2: column y is empty"},
        TBadInput{"Nan", Header + Good + "1,1,1,nan\n", ":4: column Y: 'nan' is not a finite number"},
        TBadInput{"Inf", Header + "1,1,-inf,1\n", ":2: column X: '-inf' is not a finite number"},
        TBadInput{"Overflow", Header + "1e999,1,1,1\n", ":2: column x: '1e999' is out of the range of a double"},
        TBadInput{"Underflow", Header + "1e-999,1,1,1\n", ":2: column x: '1e-999' is out of the range of a double"},
        TBadInput{"OpenQuote", Header + "\"1,2,3,4\n5,6,7,8\n", ":2: the quotes of the line do not match"},
        TBadInput{"QuoteInside", Header + "1,2\"2,3,4\n", ":2: the quotes of the line do not match"},
        TBadInput{"CarriageReturnInside", Header + "1,2,3,4\r5,6,7,8\n",
                  ":2: a carriage return stands inside the line"},
        TBadInput{"Nul", Header + std::string("1,2,3,4\0\n", 9), ":2: column Y: '4?' is not a decimal number"},
        TBadInput{"NameNotUtf8", "name,x,y,X,Y\n\xE9t\xE9,1,2,3,4\n",
                  ":2: column name: '\xE9t\xE9' is not plain UTF-8 text"},
        TBadInput{"NameWithEscape", "name,x,y,X,Y\na\x1B[2Jb,1,2,3,4\n",
                  ":2: column name: 'a?[2Jb' is not plain UTF-8 text"},
        TBadInput{"NameWithLongControl", "name,x,y,X,Y\na\xC2\x9B,1,2,3,4\n",
                  ":2: column name: 'a\xC2\x9B' is not plain UTF-8 text"},
        TBadInput{"LongText", Header + std::string(60, 'a') + ",2,3,4\n",
                  ":2: column x: '" + std::string(40, 'a') + "...' is not a decimal number"},
        TBadInput{"EnableTwo", "mapX,mapY,sourceX,sourceY,enable\n0,0,0,0,2\n",
                  ":2: column enable: '2' is neither 0 nor 1"},
        TBadInput{"AllDisabled", "mapX,mapY,sourceX,sourceY,enable\n0,0,0,0,0\n1,1,1,1,0\n",
                  ": no points: a transformation needs at least 2"},
        TBadInput{"OnePoint", Header + "1,2,3,4\n", ": only 1 point: the conformal kind needs 2"},
        TBadInput{"TooFewForTheMethod", Header + Good,
                  ": no affine transformation: only 2 points: the affine kind needs 3"},
        TBadInput{"SourceEqual", Header + "7,7,0,0\n7,7,1,0\n7,7,1,1\n", ": all source points are equal"},
        TBadInput{"SourceEqualWithRoundedMean",
                  Header + "1e11,100000000000.1,0,0\n1e11,100000000000.1,1,0\n1e11,100000000000.1,1,1\n",
                  ": all source points are equal"},
        TBadInput{"TargetEqual", Header + "0,0,7,7\n1,0,7,7\n1,1,7,7\n", ": all target points are equal"},
        TBadInput{"SourceCollinear", Header + "0,0,0,0\n1,2,1,0\n2,4,1,1\n",
                  ": no affine transformation: the source points lie on one line"},
        TBadInput{"TooLarge", Header + "-1e308,0,0,0\n1e308,0,1,0\n0,1e308,1,1\n",
                  ": the source points are more than 1e150 apart: their squares are beyond a double"},
        TBadInput{"LongLine", Header + "1,2,3,4" + std::string(70000, ' ') + "\n",
                  ":2: the line is longer than 64 KiB"},
        TBadInput{"LongComment", "#" + std::string(70000, 'c') + "\n" + Header, ":1: the line is longer than 64 KiB"}),
    [](const auto& a_Info) { return a_Info.param.szName; });

TEST_F(FitPoints, MissingFileDirectoryAndEndlessFileAreRefused)
{
    ExpectFailure({"no.csv"}, "no.csv: cannot be read: No such file or directory");
    ExpectFailure({"."}, ".: cannot be read: Is a directory");
    ExpectFailure({"/dev/zero"}, "/dev/zero:1: the line is longer than 64 KiB");
    ExpectFailure({""}, "FILE: the name is empty");
    ExpectFailure({"a\nb.csv"}, "a?b.csv: cannot be read: No such file or directory");
}

TEST_F(FitPoints, MoreThanAMillionPointsAreRefused)
{
    std::string szText = Header;
    for (int i = 0; i <= 1000000; ++i)
    {
        szText += "1,2,3,4\n";
    }
    Write("p.csv", szText);
    ExpectFailure({"p.csv"}, "p.csv:1000002: more than 1000000 points");
}

TEST_F(FitPoints, CoordinatesBeyondTheFitAreRefused)
{
    Write("p.csv", Header + "0,0,0,0\n1e200,0,1,0\n0,1e200,0,1\n");
    ExpectFailure({"p.csv"}, "p.csv: the source points are more than 1e150 apart: their squares are beyond a double");
    Write("q.csv", Header + "0,0,0,0\n1e-9,0,1,0\n");
    ExpectFailure({"q.csv"},
                  "q.csv: no transformation: the spread of the source points counts as zero (below about 1e-6)");
}

TEST_F(FitPoints, WrongUseIsRefusedWithOneLine)
{
    Write("p.csv", Square);
    ExpectFailure({}, "FILE is required (see --help)");
    ExpectFailure({"p.csv", "--nonsense"}, "The following argument was not expected: --nonsense (see --help)");
    ExpectFailure({"p.csv", "--method", "cubic"}, "--method: cubic not in {conformal,affine,omographic} (see --help)");
    ExpectFailure({"p.csv", "--plot", "p.pdf"}, "--plot: 'p.pdf' ends neither in .svg nor in .png");
    ExpectFailure({"no.csv", "--plot", "p.pdf"}, "--plot: 'p.pdf' ends neither in .svg nor in .png");
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

TEST_F(FitPoints, OutputsThatCannotBeWrittenAreRefusedAndTheOtherOneIsNotLeft)
{
    Write("p.csv", Square);
    fs::create_directory("d");
    fs::create_directory("d.svg");
    fs::create_symlink("nowhere", "dangling");
    ASSERT_EQ(0, mkfifo("pipe", 0600)); // of the test's own: a program gone wrong must not rename over a device
    const auto Refused = [&](const std::string& a_szWorld, const std::string& a_szPlot, const std::string& a_szLine) {
        ExpectFailure({"p.csv", "--method", "affine", "--world", a_szWorld, "--plot", a_szPlot}, a_szLine);
    };
    Refused("no/p.wld", "p.svg", "no/p.wld: cannot be written: No such file or directory");
    Refused("p.wld", "no/p.svg", "no/p.svg: cannot be written: No such file or directory");
    Refused("d", "p.svg", "d: cannot be written: not a regular file");
    Refused("p.wld", "d.svg", "d.svg: cannot be written: not a regular file");
    Refused("pipe", "p.svg", "pipe: cannot be written: not a regular file");
    Refused("dangling", "p.svg", "dangling: cannot be written: No such file or directory");
    Refused("d/", "p.svg", "d/: cannot be written: not a regular file");
    Refused("", "p.svg", "output: cannot be written: no file name");
    Refused("p.svg", "p.svg", "p.svg: --world would write over the output of --plot");
    Refused("./p.csv", "p.svg", "./p.csv: --world would write over the file of the points");
    EXPECT_EQ(Square, Contents("p.csv"));
}

TEST_F(FitPoints, AnOmographicWorldFileIsRefused)
{
    Write("p.csv", Square);
    ExpectFailure(
        {"p.csv", "--world", "p.wld", "--plot", "p.svg"},
        "p.csv: a world file cannot hold an omographic transformation: add --method affine or --method conformal");
}

TEST_F(FitPoints, AMissingOrFailingGnuplotIsAnError)
{
    Write("p.csv", Square);
    Write("old.svg", "old picture");
    fs::create_directory("bin");
    const std::vector<std::string> vszArguments = {"p.csv",   "--method", "affine", "--plot",
                                                   "old.svg", "--world",  "p.wld"};
    ExpectFailure(vszArguments, "gnuplot: cannot be run: No such file or directory", (Directory / "bin").string());
    WriteGnuplot("echo half a picture\necho first >&2\necho ' the reason' >&2\nexit 1\n");
    ExpectFailure(vszArguments, "old.svg: gnuplot failed to draw it:  the reason", (Directory / "bin").string());
    WriteGnuplot("echo '<?xml whole picture</svg>'\nexit 1\n");
    ExpectFailure(vszArguments, "old.svg: gnuplot failed to draw it", (Directory / "bin").string());
    WriteGnuplot("echo '<?xml half a picture'\nexit 0\n");
    ExpectFailure(vszArguments, "old.svg: gnuplot failed to draw it", (Directory / "bin").string());
    EXPECT_EQ("old picture", Contents("old.svg"));
}

TEST_F(FitPoints, StandardOutputThatCannotBeWrittenIsAnError)
{
    Write("p.csv", Square);
    const TRun Result = Run({"p.csv", "--method", "affine", "--world", "p.wld"}, "/dev/full");
    EXPECT_EQ(2, Result.iCode);
    EXPECT_EQ("fitpoints: standard output: cannot be written: No space left on device\n", Result.szError);
    EXPECT_EQ((std::set<std::string>{"p.csv"}), Files());
    EXPECT_EQ(2, Run({"--help"}, "/dev/full").iCode);
}

// ---------------------------------------------------------------------------------------------------------------------
// Limits, faults and signals
// ---------------------------------------------------------------------------------------------------------------------

#if defined(__SANITIZE_ADDRESS__)
constexpr bool IsMemoryCounted = false; // the sanitizer reserves more than any limit
#else
constexpr bool IsMemoryCounted = true;
#endif
constexpr rlim_t MiB = 1024 * 1024;

void Limit(int a_iResource, rlim_t a_iValue)
{
    if (a_iResource != RLIMIT_AS || IsMemoryCounted)
    {
        const rlimit Value = {a_iValue, a_iValue};
        setrlimit(static_cast<__rlimit_resource>(a_iResource), &Value);
    }
}

// A pipe with a name, into which a process writes a beginning and then one text again and again until nobody reads.
class TEndlessFile
{
public:
    TEndlessFile(const std::string& a_szName, const std::string& a_szBegin, std::string a_szText)
    {
        EXPECT_EQ(0, mkfifo(a_szName.c_str(), 0600));
        while (a_szText.size() < 0x10000)
        {
            a_szText += a_szText;
        }
        m_iWriter = fork();
        if (m_iWriter == 0)
        {
            std::signal(SIGPIPE, SIG_DFL);
            const int iPipe = open(a_szName.c_str(), O_WRONLY);
            ssize_t iWritten = write(iPipe, a_szBegin.data(), a_szBegin.size());
            while (iWritten >= 0)
            {
                iWritten = write(iPipe, a_szText.data(), a_szText.size());
            }
            _exit(1);
        }
    }

    ~TEndlessFile()
    {
        kill(m_iWriter, SIGKILL);
        waitpid(m_iWriter, nullptr, 0);
    }

    TEndlessFile(const TEndlessFile&) = delete;
    TEndlessFile& operator=(const TEndlessFile&) = delete;

private:
    pid_t m_iWriter;
};

TEST_F(FitPoints, EndlessInputEndsAtALimitWithLittleMemory)
{
    const std::string szQgis = "mapX,mapY,sourceX,sourceY,enable\n";
    const struct
    {
        std::string szName, szBegin, szText, szLine;
    } Cases[] = {{"points", Header, "1,2,3,4\n", ":1000002: more than 1000000 points"},
                 {"disabled", szQgis, "1,2,3,4,0\n", ":1000002: more than 1000000 points"},
                 {"comments", "", "# comment\n", ":26843546: the file is longer than 256 MiB"},
                 {"blank", Header, "                \n", ":15790322: the file is longer than 256 MiB"},
                 {"zeros", "", std::string(64, '\0'), ":1: the line is longer than 64 KiB"},
                 {"field", Header, "1", ":2: the line is longer than 64 KiB"},
                 {"quoted", Header + "\"", "\"\"", ":2: the line is longer than 64 KiB"},
                 {"headers", Header, Header, ":2: column x: 'x' is not a decimal number"}};
    Prepare = []
    {
        Limit(RLIMIT_AS, 160 * MiB); // a million points take 77
        Limit(RLIMIT_CPU, 60);
    };
    for (const auto& Case : Cases)
    {
        SCOPED_TRACE(Case.szName);
        const TEndlessFile File(Case.szName, Case.szBegin, Case.szText);
        ExpectFailure({Case.szName, "--world", "p.wld"}, Case.szName + Case.szLine);
    }
}

TEST_F(FitPoints, AGigabyteInOneLineIsRefusedAtOnce)
{
    Prepare = []
    {
        Limit(RLIMIT_AS, 64 * MiB);
        Limit(RLIMIT_CPU, 2);
    };
    Write("p.csv", "");
    Write("q.csv", Header);
    for (const char* const szFile : {"p.csv", "q.csv"})
    {
        fs::resize_file(szFile, 1024 * MiB); // zeros that take no room on the disk
    }
    ExpectFailure({"p.csv"}, "p.csv:1: the line is longer than 64 KiB");
    ExpectFailure({"q.csv"}, "q.csv:2: the line is longer than 64 KiB");
}

// A million points with names, as many bytes as are read.
TEST_F(FitPoints, TheGreatestFileTakesTheMemoryThatIsPromisedAndWithLessFailsWhole)
{
    if (!IsMemoryCounted)
    {
        GTEST_SKIP() << "memory is not counted under the address sanitizer";
    }
    {
        std::ofstream Stream("p.csv", std::ios::binary);
        Stream << "name,x,y,X,Y\n";
        const std::string szName(190, 'n');
        for (int i = 0; i < 1000000; ++i)
        {
            Stream << szName << "," << i << ".123456789012," << i * 7 % 97 << ".123456789," << i << ".98765432101,"
                   << i * 7 % 97 << ".000000001\n";
        }
    }
    EXPECT_LT(fs::file_size("p.csv"), 256 * MiB);
    EXPECT_GT(fs::file_size("p.csv"), 240 * MiB);
    Prepare = [] { Limit(RLIMIT_AS, 1280 * MiB); };
    const TRun Result = Run({"p.csv", "--json"}, "/dev/null");
    EXPECT_EQ(0, Result.iCode) << Result.szError;
    Prepare = [] { Limit(RLIMIT_AS, 800 * MiB); }; // enough to read and fit them
    Write("p.wld", "old world");
    ExpectFailure({"p.csv", "--json", "--method", "affine", "--world", "p.wld"}, "not enough memory");
    EXPECT_EQ("old world", Contents("p.wld"));
}

TEST_F(FitPoints, ALimitOfTheSizeOfFilesIsAnErrorOfWriting)
{
    Write("p.csv", Header + "0,0,0.1,0.7\n1,0,1.3,0.9\n1,1,1.4,2.3\n0,1,0.3,1.7\n"); // coefficients of many digits
    Write("p.wld", "old world");
    Write("p.svg", "old picture");
    const std::vector<std::string> vszWorld = {"p.csv", "--method", "affine", "--world", "p.wld"};
    const std::vector<std::string> vszPlot = {"p.csv", "--plot", "p.svg"};
    Prepare = [] { Limit(RLIMIT_FSIZE, 60); };
    ExpectFailure(vszWorld, "p.wld: cannot be written: File too large");
    Prepare = [] { Limit(RLIMIT_FSIZE, 200); };
    ExpectFailure(vszPlot, "temporary file: cannot be written: File too large");
    Prepare = [] { Limit(RLIMIT_FSIZE, 4096); }; // holds what gnuplot is told, and not its picture
    const TRun Result = Run(vszPlot);
    EXPECT_EQ(2, Result.iCode);
    EXPECT_EQ(0u, Result.szError.find("fitpoints: p.svg: gnuplot failed to draw it")) << Result.szError;
    EXPECT_EQ((std::set<std::string>{"p.csv", "p.svg", "p.wld"}), Files());
    EXPECT_EQ("old world", Contents("p.wld"));
    EXPECT_EQ("old picture", Contents("p.svg"));
}

TEST_F(FitPoints, WhatMayNotBeReadOrWrittenIsRefused)
{
    Prepare = [] // a process of root's obeys permissions without these two capabilities
    {
        prctl(PR_CAPBSET_DROP, 1);
        prctl(PR_CAPBSET_DROP, 2);
    };
    Write("p.csv", Square);
    Write("secret.csv", Square);
    Write("locked.wld", "old world");
    fs::create_directory("d");
    Write("d/p.wld", "old world");
    fs::permissions("secret.csv", fs::perms::none);
    fs::permissions("locked.wld", fs::perms::owner_read);
    fs::permissions("d", fs::perms::owner_read | fs::perms::owner_exec);
    ExpectFailure({"secret.csv"}, "secret.csv: cannot be read: Permission denied");
    for (const char* const szWorld : {"locked.wld", "d/p.wld", "d/new.wld"})
    {
        ExpectFailure({"p.csv", "--method", "affine", "--world", szWorld},
                      std::string(szWorld) + ": cannot be written: Permission denied");
    }
    fs::permissions("d", fs::perms::owner_all);
    EXPECT_EQ("old world", Contents("locked.wld"));
    EXPECT_EQ("old world", Contents("d/p.wld"));
    EXPECT_FALSE(fs::exists("d/new.wld"));
}

// The program stopped by a signal while it waits for a gnuplot that does not end.
class StoppedFitPoints : public FitPoints
{
protected:
    // How it ended, as waitpid tells it.
    int StopBy(int a_iSignal)
    {
        Write("p.csv", Square);
        Write("p.wld", "old world");
        Write("p.svg", "old picture");
        WriteGnuplot("echo $$ >../pid.tmp; mv ../pid.tmp ../pid; exec sleep 60\n");
        fs::create_directory("work");
        EXPECT_EQ(0, chdir("work"));
        const pid_t iProgram = Start({"../p.csv", "--method", "affine", "--world", "../p.wld", "--plot", "../p.svg"},
                                     "/dev/null", "/dev/null", (Directory / "bin").string() + ":/usr/bin:/bin");
        EXPECT_EQ(0, chdir(".."));
        for (int i = 0; i < 6000 && !fs::exists("pid"); ++i)
        {
            usleep(10000);
        }
        Before = Files();
        kill(iProgram, a_iSignal);
        int iStatus = 0;
        if (waitpid(iProgram, &iStatus, IsSurvived ? WNOHANG : 0) == 0)
        {
            kill(std::stoi(Contents("pid")), SIGKILL);
            waitpid(iProgram, &iStatus, 0);
        }
        kill(std::stoi(Contents("pid")), SIGKILL);
        return iStatus;
    }

    // The files under temporary names.
    static std::size_t Temporaries(const std::set<std::string>& a_Names)
    {
        return std::count_if(a_Names.begin(), a_Names.end(),
                             [](const std::string& a_szName) { return a_szName.find(".fitpoints-") == 0; });
    }

    void ExpectOldOutputs() const
    {
        EXPECT_EQ("old world", Contents("p.wld"));
        EXPECT_EQ("old picture", Contents("p.svg"));
    }

    std::set<std::string> Before; // the files when the signal was sent
    bool IsSurvived = false;
};

class EndingSignal : public StoppedFitPoints, public ::testing::WithParamInterface<int>
{
};

TEST_P(EndingSignal, LeavesTheOutputsAsTheyWereAndNothingElse)
{
    Prepare = [] { std::signal(GetParam(), SIG_DFL); }; // a shell starts its background jobs with some ignored
    const int iStatus = StopBy(GetParam());
    ASSERT_TRUE(WIFSIGNALED(iStatus));
    EXPECT_EQ(GetParam(), WTERMSIG(iStatus));
    EXPECT_EQ(2u, Temporaries(Before));
    EXPECT_EQ(0u, Temporaries(Files()));
    ExpectOldOutputs();
}

INSTANTIATE_TEST_SUITE_P(All, EndingSignal, ::testing::Values(SIGHUP, SIGINT, SIGTERM));

TEST_F(StoppedFitPoints, BySigkillLeavesTheOutputsAsTheyWere)
{
    EXPECT_TRUE(WIFSIGNALED(StopBy(SIGKILL)));
    ExpectOldOutputs();
}

TEST_F(StoppedFitPoints, NotByASignalThatItWasToldToIgnore)
{
    Prepare = [] { std::signal(SIGHUP, SIG_IGN); };
    IsSurvived = true;
    const int iStatus = StopBy(SIGHUP);
    ASSERT_TRUE(WIFEXITED(iStatus));
    EXPECT_EQ(2, WEXITSTATUS(iStatus)); // because gnuplot was killed after that
    EXPECT_EQ(0u, Temporaries(Files()));
    ExpectOldOutputs();
}

} // namespace
