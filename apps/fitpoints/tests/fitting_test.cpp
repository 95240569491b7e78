// fitting_test.cpp: coefficients, frames, residuals and warnings of a fit.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"
#include "support/reference_fits.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>

namespace fitpoints_tests {
namespace {

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

// These coefficients and the coordinates of Images have few binary digits, so the images are exact.
const TCoefs Similarity = {1.5, -0.5, 4096, 0.5, 1.5, -2048, 0, 0};
const TCoefs Mirrored = {1.5, 0.5, 4096, 0.5, -1.5, -2048, 0, 0};

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
    ExpectCoefs(Omographic, OriginalCoefs(Fit), 1e-9); // each image is rounded by about 1e-13 of 1000 units
}

TEST_F(FitPoints, TheSampleGivesBackItsTrueTransformation)
{
    const json Fit = RunJson({NUV_FITPOINTS_SAMPLE});
    ASSERT_EQ(12, Fit["n"]);
    // The head of the sample states these. Noise is below 0.25 m and rounding below 0.005 m in each coordinate.
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
    // The error of the fit is the projection of the noise onto eight of 24 directions. Uniform noise of half width 0.25
    // has the standard deviation 0.25/sqrt(3) = 0.144. So the expected sum is 8 * 0.144^2 = 0.167, and three standard
    // deviations of chi-square(8) above it are 0.42.
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
                // Reduced coordinates are below 1e4, so they are rounded by 1e-12. Normal equations of points that are
                // well spread enlarge this by some thousand at most.
                EXPECT_NEAR(static_cast<double>(vReference[i][0]), Fit["points"][i]["dX"], 1e-8) << szKind;
                EXPECT_NEAR(static_cast<double>(vReference[i][1]), Fit["points"][i]["dY"], 1e-8) << szKind;
            }
        }
    }
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
            // Coordinates below 1e7 are rounded by 1e-9.
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
    // x has the mean 4500256.7 and the extent 300: its origin is a multiple of 100. y has the mean 0.0287 and the
    // extent 0.04: a multiple of 0.01. X has the mean -1.67 and the extent 10: a multiple of 10. The values of Y are
    // equal, so the extent of X serves for their mean 1, too.
    const json Fit = RunJson({"p.csv"});
    EXPECT_EQ(json({4500300.0, 0.03}), Fit["frames"]["local"]["source_origin"]);
    EXPECT_EQ(json({0.0, 0.0}), Fit["frames"]["local"]["target_origin"]);
    EXPECT_NE(std::string::npos, Run({"p.csv"}).szOut.find("target origin (0, 0)")); // -1.67 is not rounded to -0
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

TEST_F(FitPoints, ATransformationThatTakesTheOriginToInfinityHasNoOriginalFrame)
{
    // X = 10 x / y, Y = 100 / y. With y = 10 + y' the denominator is W = y / 10, which is 0 at the origin.
    Write("p.csv", "x,y,X,Y\n-5,5,-10,20\n5,5,10,20\n-5,16,-3.125,6.25\n5,16,3.125,6.25\n");
    const TRun Text = Run({"p.csv", "--method", "richest"});
    EXPECT_EQ(0, Text.iCode);
    const json Fit = RunJson({"p.csv", "--method", "richest"});
    EXPECT_EQ(json({0.0, 10.0}), Fit["frames"]["local"]["source_origin"]);
    EXPECT_TRUE(Fit["frames"]["original"].is_null());
    EXPECT_NE(std::string::npos, Text.szOut.find("Original frame: none."));
    EXPECT_LT(Fit["largest_residual"]["length"], 1e-12);
}

TEST_F(FitPoints, AnOriginalFrameThatTakesAPointToInfinityByRoundingIsNone)
{
    // Found by fuzzing. The source points with x = -1/16 are mapped almost to infinity. With the coefficients of the
    // original frame, rounding takes them to infinity.
    Write("p.csv", "x,y,X,Y\n0,0,0,-16\n0,1.875,0,-16\n-0.0625,-0.0625,-0.0625,-0.0625\n"
                   "-0.0625,-0.0625,655.9375,-0.0625\n-0.0625,655.9375,-0.0625,-0.0625\n"
                   "-0.0625,-0.0625,-0.0625,-0.0625\n-0.0625,-0.0625,-0.0625,-368.0625\n"
                   "-0.0625,-0.0625,-0.0625,-0.0625\n-0.0625,-0.0625,-0.0625,-0.0625\n"
                   "-0.0625,-0.0625,-368.0625,-0.0625\n");
    const json Frames = RunJson({"p.csv", "--method", "omographic"}).at("frames");
    EXPECT_TRUE(Frames.at("original").is_null());
    EXPECT_FALSE(Frames.contains("largest_difference"));
    EXPECT_EQ(std::string::npos, Run({"p.csv", "--method", "omographic"}).szOut.find("inf at most"));
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

// The exact image of an omographic transformation, but for one blunder as large as the square of the points.
TEST_F(FitPoints, WarnsThatABlunderHasMadeAPoorerKindTheBestOne)
{
    std::vector<TPoint> vPoints = Images(Omographic);
    const std::vector<TPoint> vMore = Images(Omographic, 300, 200);
    vPoints.insert(vPoints.end(), vMore.begin(), vMore.end());
    vPoints[4][3] -= 1000;
    Write("p.csv", Csv(vPoints));
    EXPECT_EQ(
        "fitpoints: p.csv: warning: without the suspected blunder the omographic kind would be taken: correct the "
        "points, or drop them with --robust\n",
        Run({"p.csv"}).szError);
    EXPECT_EQ("", Run({"p.csv", "--robust"}).szError);
    EXPECT_EQ("", Run({"p.csv", "--method", "affine"}).szError);
}

TEST_F(FitPoints, SaysThatMirroredMeansNothingToTheOtherKinds)
{
    Write("p.csv", Csv(Images(Affine)));
    EXPECT_EQ("fitpoints: p.csv: warning: --mirrored has no effect: the affine kind takes either orientation\n",
              Run({"p.csv", "--method", "affine", "--mirrored"}).szError);
}

TEST_F(FitPoints, RawOmographicFitFarFromTheOriginIsSpoiledAndSaysSo)
{
    Write("p.csv", Csv(Images({1, 0, 0, 0, 1, 0, 0x1p-30, 0x1p-30}, 4500000, 5400000)));
    const json Local = RunJson({"p.csv"});
    EXPECT_LT(Local["rms"], 1e-8); // the points are exact but for the rounding of coordinates of 5e6
    EXPECT_TRUE(Local["warnings"].empty());
    const json Raw = RunJson({"p.csv", "--raw", "--method", "richest"});
    EXPECT_EQ("omographic", Raw["kind"]);
    EXPECT_GT(Raw["rms"], 1e-3);
    const json Spoiled =
        "the omographic fit is worse than the affine one, which it contains: it is spoiled by rounding or "
        "has not converged";
    EXPECT_NE(Raw["warnings"].end(), std::find(Raw["warnings"].begin(), Raw["warnings"].end(), Spoiled))
        << Raw["warnings"];
}

TEST_F(FitPoints, WarnsOfPointsOnBothSidesOfTheVanishingLine)
{
    // X = x / (1 - x / 4), Y = y / (1 - x / 4). The line x = 4 is mapped to infinity.
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n0,2,0,2\n2,0,4,0\n2,2,4,4\n8,0,-8,0\n8,2,-8,-2\n");
    const TRun Result = Run({"p.csv"});
    EXPECT_EQ(0, Result.iCode);
    EXPECT_EQ(0u, Result.szError.find("fitpoints: p.csv: warning: the points stand on both sides of the line that the "
                                      "transformation takes to infinity ("))
        << Result.szError;
    EXPECT_EQ(1, std::count(Result.szError.begin(), Result.szError.end(), '\n'));
}

} // namespace
} // namespace fitpoints_tests
