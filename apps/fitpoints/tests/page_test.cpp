// page_test.cpp: what the page of the program says of its options and of the old map.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

namespace fitpoints_tests {
namespace {

TEST_F(FitPoints, ThePageHasEveryOptionAndNoOther)
{
    const auto Options = [](const std::string& a_szText)
    {
        const std::regex Option("--[a-z]+");
        return std::set<std::string>(std::sregex_token_iterator(a_szText.begin(), a_szText.end(), Option), {});
    };
    const std::string szPage = Contents(NUV_FITPOINTS_PAGE);
    const std::size_t iTable = szPage.find("| option | meaning |");
    ASSERT_NE(std::string::npos, iTable);
    EXPECT_EQ(Options(Run({"--help"}).szOut), Options(szPage.substr(iTable, szPage.find("\n\n", iTable) - iTable)));
}

#if defined(NUV_CONTROL_POINTS)

// The lines of the code blocks of the page that are commands.
std::string Commands()
{
    std::istringstream Page(Contents(NUV_FITPOINTS_PAGE));
    std::string szCommands;
    bool bInside = false;
    for (std::string szLine; std::getline(Page, szLine);)
    {
        const bool bFence = szLine.compare(0, 3, "```") == 0;
        szCommands += bInside && !bFence ? szLine + "\n" : "";
        bInside = bFence ? szLine == "```sh" : bInside;
    }
    return szCommands;
}

// An image of the size of the scan, black but for a white square around the first control point, at (1518, 997).
void WriteScan()
{
    const int iWidth = 4000;
    const int iHeight = 3000;
    std::string szPixels(static_cast<std::size_t>(iWidth) * iHeight, '\0');
    for (int iRow = 997 - 12; iRow <= 997 + 12; ++iRow)
    {
        szPixels.replace(static_cast<std::size_t>(iRow) * iWidth + 1518 - 12, 25, 25, '\xFF');
    }
    std::ofstream("scan.pgm", std::ios::binary) << "P5 " << iWidth << " " << iHeight << " 255\n" << szPixels;
    ASSERT_EQ(0, std::system("gdal_translate -q scan.pgm tallinn_1889.tif"));
}

TEST_F(FitPoints, TheCommandsOfThePagePlaceTheOldMap)
{
    WriteScan();
    fs::copy(NUV_CONTROL_POINTS "/tallinn_1889.csv", "tallinn_1889.csv");
    const std::string szCommands = Commands();
    ASSERT_NE(std::string::npos, szCommands.find("gdalwarp "));
    Write("commands.sh", "set -e\nPATH=" + fs::path(NUV_FITPOINTS).parent_path().string() + ":$PATH\n" + szCommands);
    ASSERT_EQ(0, std::system("sh commands.sh >out 2>err")) << Contents("err");
    EXPECT_EQ("", Contents("err"));
    EXPECT_NE(std::string::npos,
              Contents("out").find("\nname,x,y,X,Y,sX,sY,major,minor,direction\nhouse,1870,1640,24.7"));
    // The white square is where the first control point is. It is 500 m from any other one.
    ASSERT_EQ(0, std::system("gdallocationinfo -valonly -b 1 -wgs84 tallinn_1889_grid.tif 24.74081 59.44982 >white &&"
                             "gdallocationinfo -valonly -b 1 -wgs84 tallinn_1889_grid.tif 24.75081 59.44982 >black &&"
                             "gdalinfo -json tallinn_1889_grid.tif >info"));
    EXPECT_EQ("255\n", Contents("white"));
    EXPECT_EQ("0\n", Contents("black"));
    const std::string szWkt = json::parse(Contents("info")).at("coordinateSystem").at("wkt");
    EXPECT_NE(std::string::npos, szWkt.find("Estonian"));
}

#endif

} // namespace
} // namespace fitpoints_tests
