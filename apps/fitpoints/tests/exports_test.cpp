// exports_test.cpp: results for other programs, each read back by the program that it is for.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace fitpoints_tests {
namespace {

// The standard output of a shell command, which must succeed.
std::string Shell(const std::string& a_szCommand)
{
    std::FILE* const Pipe = popen(a_szCommand.c_str(), "r");
    std::string szText;
    for (int iChar = std::getc(Pipe); iChar != EOF; iChar = std::getc(Pipe))
    {
        szText.push_back(static_cast<char>(iChar));
    }
    EXPECT_EQ(0, pclose(Pipe)) << a_szCommand;
    return szText;
}

void MakeImage()
{
    Shell("gdal_create -q -of PNG -outsize 400 300 -bands 3 -burn 100 image.png");
}

// X = 500000 + p/2 + l/4, Y = 4500000 + p/8 - l/2 for the pixel p and the line l of GDAL, which count from the outer
// corner of the first pixel.
const TCoefs PixelsToMap = {0.5, 0.25, 500000, 0.125, -0.5, 4500000, 0, 0};

// How a kind of file writes the source position of a pixel and a line, and the whole file.
struct TForm
{
    const char* szHeader;
    const char* szFormat; // of pixel, line, X, Y, in this order
    double dPixelShift, dLineShift, dLineFactor;
};

const TForm Forms[] = {{"x,y,X,Y\n", "%.17g,%.17g,%.17g,%.17g\n", -0.5, -0.5, 1}, // centres of pixels
                       {"sourceX,sourceY,mapX,mapY\n", "%.17g,%.17g,%.17g,%.17g\n", 0, 0, -1},
                       {"", "-gcp %.17g %.17g %.17g %.17g\n", 0, 0, 1}};

std::string Points(const TForm& a_Form, const TCoefs& a_Coefs)
{
    std::string szText = a_Form.szHeader;
    for (const auto& P : {std::array<double, 2>{16, 32}, {400, 0}, {384, 288}, {8, 296}, {200, 100}})
    {
        const auto Image = Transform(a_Coefs, P[0], P[1]);
        char szRow[200];
        std::snprintf(szRow, sizeof szRow, a_Form.szFormat, P[0] + a_Form.dPixelShift,
                      a_Form.dLineFactor * (P[1] + a_Form.dLineShift), Image[0], Image[1]);
        szText += szRow;
    }
    return szText;
}

// What a program prints for the two positions that are written to its standard input.
std::vector<double> Images(const std::string& a_szCommand)
{
    std::istringstream Stream(Shell("printf '100 40 0\\n7.5 250.25 0\\n' | " + a_szCommand));
    std::vector<double> vdValues;
    std::string szLine;
    while (std::getline(Stream, szLine))
    {
        std::istringstream Line(szLine);
        double dX = 0;
        double dY = 0;
        Line >> dX >> dY;
        vdValues.insert(vdValues.end(), {dX, dY});
    }
    return vdValues;
}

void ExpectImages(const TCoefs& a_Coefs, const std::string& a_szCommand, double a_dTolerance)
{
    const auto First = Transform(a_Coefs, 100, 40);
    const auto Second = Transform(a_Coefs, 7.5, 250.25);
    const std::vector<double> vdActual = Images(a_szCommand);
    ASSERT_EQ(4u, vdActual.size()) << a_szCommand;
    EXPECT_NEAR(First[0], vdActual[0], a_dTolerance) << a_szCommand;
    EXPECT_NEAR(First[1], vdActual[1], a_dTolerance) << a_szCommand;
    EXPECT_NEAR(Second[0], vdActual[2], a_dTolerance) << a_szCommand;
    EXPECT_NEAR(Second[1], vdActual[3], a_dTolerance) << a_szCommand;
}

TEST_F(FitPoints, GdalReadsTheWorldFileOfEveryFormOfPoints)
{
    MakeImage();
    for (const TForm& Form : Forms)
    {
        Write("p.txt", Points(Form, PixelsToMap));
        ASSERT_EQ(0, Run({"p.txt", "--method", "affine", "--world", "image.pgw"}).iCode);
        ExpectImages(PixelsToMap, "gdaltransform image.png", 1e-6);
    }
}

TEST_F(FitPoints, GdalReadsTheVirtualRasterOfEveryFormOfPoints)
{
    MakeImage();
    fs::create_directory("elsewhere");
    for (const TForm& Form : Forms)
    {
        Write("p.txt", Points(Form, PixelsToMap));
        ASSERT_EQ(0, Run({"p.txt", "--method", "affine", "--vrt", "elsewhere/p.vrt", "--raster", "image.png"}).iCode);
        ExpectImages(PixelsToMap, "gdaltransform elsewhere/p.vrt", 1e-6);
        const json Info = json::parse(Shell("gdalinfo -json -checksum elsewhere/p.vrt"));
        EXPECT_EQ(json({400, 300}), Info.at("size"));
        const json Image = json::parse(Shell("gdalinfo -json -checksum image.png"));
        ASSERT_EQ(3u, Info.at("bands").size());
        EXPECT_EQ(Image["bands"][2].at("checksum"), Info["bands"][2].at("checksum")); // its pixels are found
    }
}

TEST_F(FitPoints, TheVirtualRasterReplacesTheOldPlaceOfTheImageAndKeepsTheSystem)
{
    Shell("gdal_create -q -of GTiff -outsize 400 300 -a_srs EPSG:2056 -a_ullr 0 300 400 0 'i<>&.tif'");
    Write("p.points", "#CRS: GEOGCRS[\"WGS 84\",DATUM[\"World Geodetic System 1984\",ELLIPSOID[\"WGS 84\",6378137,"
                      "298.257223563,LENGTHUNIT[\"metre\",1]]],CS[ellipsoidal,2],AXIS[\"latitude\",north],"
                      "AXIS[\"longitude\",east],ANGLEUNIT[\"degree\",0.0174532925199433],ID[\"EPSG\",4326]]\n" +
                          Points(Forms[1], {0.5, 0.25, 7, 0.125, -0.5, 46, 0, 0}));
    ASSERT_EQ(0, Run({"p.points", "--method", "affine", "--vrt", "p.vrt", "--raster", "i<>&.tif"}).iCode);
    const json Info = json::parse(Shell("gdalinfo -json p.vrt"));
    const std::vector<double> vdTransform = Info.at("geoTransform");
    const std::vector<double> vdExpected = {7, 0.5, 0.25, 46, 0.125, -0.5};
    for (std::size_t i = 0; i < 6; ++i)
    {
        EXPECT_NEAR(vdExpected[i], vdTransform[i], 1e-12);
    }
    EXPECT_NE(std::string::npos, Info.at("coordinateSystem").at("wkt").get<std::string>().find("WGS 84"));
    // A file without a system of its own does not take over that of the image, and a grid of points replaces its place.
    Write("p.txt", Points(Forms[0], PixelsToMap));
    ASSERT_EQ(0, Run({"p.txt", "--method", "omographic", "--vrt", "q.vrt", "--raster", "i<>&.tif"}).iCode);
    const json Grid = json::parse(Shell("gdalinfo -json q.vrt"));
    EXPECT_FALSE(Grid.contains("coordinateSystem"));
    EXPECT_FALSE(Grid.contains("geoTransform"));
    EXPECT_EQ(441u, Grid.at("gcps").at("gcpList").size());
}

// GDAL interpolates between the points of the grid. A pixel is about 1.3 units wide, so the tolerance is a hundredth of
// a pixel and a half.
TEST_F(FitPoints, GdalReadsTheGridOfAnOmographicVirtualRaster)
{
    MakeImage();
    const TCoefs Projective = {1.25, -0.375, 500, 0.5, 2, 4500, 0x1p-13, -0x1p-14};
    Write("p.txt", Points(Forms[0], Projective));
    ASSERT_EQ(0, Run({"p.txt", "--method", "omographic", "--vrt", "p.vrt", "--raster", "image.png"}).iCode);
    ExpectImages(Projective, "gdaltransform -tps p.vrt", 0.02);
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n0,20,0,20\n20,0,40,0\n20,20,40,40\n"); // X = x/(1 - x/40): the line x = 40
    ExpectFailure({"p.csv", "--method", "omographic", "--vrt", "q.vrt", "--raster", "image.png"},
                  "p.csv: no virtual raster: the transformation takes points of the image to infinity");
}

TEST_F(FitPoints, AnImageThatGdalCannotReadIsRefused)
{
    Write("p.csv", Square);
    ExpectFailure({"p.csv", "--method", "affine", "--vrt", "p.vrt", "--raster", "no.png"},
                  "no.png: cannot be read: No such file or directory");
    const TRun Result = Run({"p.csv", "--method", "affine", "--vrt", "p.vrt", "--raster", "p.csv"});
    EXPECT_EQ(2, Result.iCode);
    EXPECT_EQ(0u, Result.szError.find("fitpoints: p.csv: gdal_translate failed to describe it: ")) << Result.szError;
    EXPECT_EQ((std::set<std::string>{"p.csv"}), Files());
    ExpectFailure({"p.csv", "--vrt", "p.vrt"}, "--vrt requires --raster (see --help)");
    ExpectFailure({"p.csv", "--raster", "p.png"}, "--raster requires --vrt (see --help)");
}

// GDAL fits its own polynomial of order 1, which is the affine kind. One target is off, so that its fit is compared.
TEST_F(FitPoints, GdalFitsTheArgumentsAlike)
{
    Write("p.txt", Points(Forms[0], PixelsToMap) + "300,200,500210,4499950\n");
    ASSERT_EQ(0, Run({"p.txt", "--gcp", "p.gcp"}).iCode);
    const json C = RunJson({"p.txt", "--method", "affine"}).at("frames").at("original").at("coefficients");
    const double A = C["A"], B = C["B"], D = C["D"], E = C["E"];
    const TCoefs OfCorners = {A, B, C["C"].get<double>() - A / 2 - B / 2, D, E, C["F"].get<double>() - D / 2 - E / 2,
                              0, 0};
    EXPECT_GT(std::fabs(OfCorners[2] - PixelsToMap[2]), 0.1);
    ExpectImages(OfCorners, "gdaltransform -order 1 $(cat p.gcp)", 1e-6);
    EXPECT_EQ(6, RunJson({"p.gcp"}).at("n"));
}

TEST_F(FitPoints, CheckPointsAreNoArgumentsForGdal)
{
    Write("p.csv", "x,y,X,Y,check\n0,0,0,0,0\n10,0,10,0,1\n10,10,10,10,0\n");
    EXPECT_EQ("-gcp 0.5 0.5 0 0\n-gcp 10.5 10.5 10 10\n", Run({"p.csv", "--gcp", "-"}).szOut);
}

// X = 2 x, Y = 2 y with y upwards, as QGIS counts it; the last point is 8 units too far to the east and 4 to the south.
// Its residuals in pixels, computed less given, are counted to the right and downwards.
TEST_F(FitPoints, TheGeoreferencerGetsItsFileBackWithResidualsInPixels)
{
    const std::string szCrs = "#CRS: GEOGCRS[\"WGS 84\"]\n";
    Write("p.points", szCrs + "mapX,mapY,sourceX,sourceY\n0,0,0,0\n200,0,100,0\n200,-200,100,-100\n0,-200,0,-100\n");
    const std::string szExact = Run({"p.points", "--method", "affine", "--points", "-"}).szOut;
    const std::string szHeader = "mapX,mapY,sourceX,sourceY,enable,dX,dY,residual\n";
    EXPECT_EQ(0u, szExact.find(szCrs + szHeader + "0,0,0,0,1,"));
    Write("p.points", "mapX,mapY,sourceX,sourceY,enable\n0,0,0,0,1\n200,0,100,0,1\n200,-200,100,-100,1\n"
                      "0,-200,0,-100,1\n108,-104,50,-50,0\n");
    const std::string szText = Run({"p.points", "--method", "affine", "--points", "q.points"}).szOut;
    std::istringstream Lines(Contents("q.points"));
    std::string szLine;
    while (std::getline(Lines, szLine) && szLine.find("108,") != 0)
    {}
    const json Row = json::parse("[" + szLine + "]");
    ASSERT_EQ(8u, Row.size()) << szLine;
    EXPECT_EQ(json({108, -104, 50, -50, 0}), json(std::vector<int>(Row.begin(), Row.begin() + 5)));
    EXPECT_NEAR(4, Row[5], 1e-9);
    EXPECT_NEAR(2, Row[6], 1e-9);
    EXPECT_NEAR(std::sqrt(20), Row[7], 1e-9);
    const json Again = RunJson({"q.points", "--method", "affine"});
    EXPECT_EQ(RunJson({"p.points", "--method", "affine"}).at("frames"), Again.at("frames"));
    EXPECT_EQ(1, Again.at("check_points"));
}

TEST_F(FitPoints, ACsvFileBecomesAFileOfTheGeoreferencerWithItsCorners)
{
    Write("p.csv", Header + "0,0,10,20\n99.5,0,110,20\n0,7,10,13\n");
    const std::string szText = Run({"p.csv", "--method", "affine", "--points", "-"}).szOut;
    EXPECT_NE(std::string::npos, szText.find("\n10,20,0.5,-0.5,1,"));
    EXPECT_NE(std::string::npos, szText.find("\n110,20,100,-0.5,1,"));
    EXPECT_NE(std::string::npos, szText.find("\n10,13,0.5,-7.5,1,"));
}

TEST_F(FitPoints, ProjReadsTheDefinition)
{
    const TCoefs Similarity = {1.5, -0.5, 500000, 0.5, 1.5, -2048, 0, 0};
    const TCoefs Mirrored = {1.5, 0.5, 500000, 0.5, -1.5, -2048, 0, 0};
    const TForm Plain = {"x,y,X,Y\n", "%.17g,%.17g,%.17g,%.17g\n", 0, 0, 1};
    Write("p.csv", Points(Plain, Similarity));
    EXPECT_EQ(0u, Run({"p.csv", "--method", "conformal", "--proj", "-"}).szOut.find("+proj=helmert +x=500000"));
    ASSERT_EQ(0, Run({"p.csv", "--method", "conformal", "--proj", "p.proj"}).iCode);
    ExpectImages(Similarity, "cct -d 12 $(cat p.proj)", 1e-8);
    Write("p.csv", Points(Plain, Mirrored));
    ASSERT_EQ(0, Run({"p.csv", "--method", "conformal", "--mirrored", "--proj", "p.proj"}).iCode);
    ExpectImages(Mirrored, "cct -d 12 $(cat p.proj)", 1e-8);
    Write("p.csv", Points(Plain, Affine));
    ASSERT_EQ(0, Run({"p.csv", "--method", "affine", "--proj", "p.proj"}).iCode);
    ExpectImages(Affine, "cct -d 12 $(cat p.proj)", 1e-8);
    ExpectFailure({"p.csv", "--method", "omographic", "--proj", "q.proj"},
                  "p.csv: PROJ has no omographic transformation: add --method affine or --method conformal");
}

TEST_F(FitPoints, OneOutputMayBeStandardOutputInsteadOfTheReport)
{
    Write("p.csv", Square);
    const TRun World = Run({"p.csv", "--method", "affine", "--world", "-", "--proj", "p.proj"});
    EXPECT_EQ(0, World.iCode);
    EXPECT_EQ(6, std::count(World.szOut.begin(), World.szOut.end(), '\n'));
    EXPECT_EQ((std::set<std::string>{"p.csv", "p.proj"}), Files());
    ExpectFailure({"p.csv", "--method", "affine", "--world", "-", "--gcp", "-"},
                  "standard output: --gcp would write over the output of --world");
    ExpectFailure({"p.csv", "--method", "affine", "--world", "-", "--json"},
                  "--json: standard output is that of --world");
}

TEST_F(FitPoints, WarnsOfACsvFileThatSeemsToCountRowsAsQgisDoes)
{
    Write("p.csv", Header + "0,-1,0,0\n100,-1,100,0\n100,-101,100,-101\n0,-101,0,-100\n");
    const std::string szLine =
        "takes y of a CSV file as the row of a pixel, but all y are negative: if they are minus the row, as in QGIS, "
        "name the columns sourceX,sourceY,mapX,mapY\n";
    EXPECT_EQ("fitpoints: p.csv: warning: --world " + szLine,
              Run({"p.csv", "--method", "affine", "--world", "p.wld"}).szError);
    EXPECT_EQ("", Run({"p.csv", "--method", "affine", "--proj", "p.proj"}).szError);
    Write("p.csv", Square);
    EXPECT_EQ("", Run({"p.csv", "--method", "affine", "--world", "p.wld"}).szError);
}

} // namespace
} // namespace fitpoints_tests
