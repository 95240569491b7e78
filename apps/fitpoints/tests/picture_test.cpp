// picture_test.cpp: what the picture shows, read from the commands for gnuplot.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <random>
#include <regex>
#include <sstream>

namespace fitpoints_tests {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

using TRow = std::vector<double>;

struct TText
{
    std::string szText;
    double dX, dY;
    std::string szStyle;
};

// The picture as gnuplot is told to draw it. The coordinates are pixels; y goes up.
struct TPicture
{
    std::string szScript;
    std::vector<TText> vTexts;
    std::vector<std::pair<std::string, std::vector<TRow> > > vPlots; // style and rows, in the order of drawing

    // The rows of all plots whose style has this text.
    std::vector<TRow> Rows(const std::string& a_szStyle) const
    {
        std::vector<TRow> vRows;
        for (const auto& [szStyle, vPlotted] : vPlots)
        {
            if (szStyle.find(a_szStyle) != std::string::npos)
            {
                vRows.insert(vRows.end(), vPlotted.begin(), vPlotted.end());
            }
        }
        return vRows;
    }
};

void ReadBlocks(std::istream& a_Script, std::map<std::string, std::vector<TRow> >& a_Blocks, TPicture& a_Picture)
{
    const std::regex LabelForm("set label '(.*)' at ([-0-9.]+),([-0-9.]+) (.*)");
    std::string szLine;
    while (std::getline(a_Script, szLine))
    {
        std::smatch Match;
        if (std::regex_match(szLine, Match, LabelForm))
        {
            a_Picture.vTexts.push_back({Match[1], std::stod(Match[2]), std::stod(Match[3]), Match[4]});
        }
        else if (szLine[0] == '$')
        {
            std::vector<TRow>& vRows = a_Blocks[szLine.substr(0, szLine.find(' '))];
            while (std::getline(a_Script, szLine) && szLine != "END")
            {
                std::istringstream Row(szLine);
                vRows.emplace_back(std::istream_iterator<double>(Row), std::istream_iterator<double>());
            }
        }
    }
}

TPicture Parse(const std::string& a_szScript)
{
    TPicture Picture = {a_szScript, {}, {}};
    std::map<std::string, std::vector<TRow> > Blocks;
    std::istringstream Script(a_szScript);
    ReadBlocks(Script, Blocks, Picture);
    const std::string szPlot = a_szScript.substr(a_szScript.rfind("plot $"));
    const std::regex PlotForm("(\\$B[0-9]+) using [0-9:]+ with ([^$\n]*)");
    for (std::sregex_iterator i(szPlot.begin(), szPlot.end(), PlotForm); i != std::sregex_iterator(); ++i)
    {
        Picture.vPlots.emplace_back((*i)[2], Blocks.at((*i)[1]));
    }
    return Picture;
}

class Picture : public FitPoints
{
protected:
    // Draws with a program in the place of gnuplot that keeps its commands and writes what an SVG begins and ends with.
    TPicture Draw(std::vector<std::string> a_vszArguments) const
    {
        if (!fs::exists("bin"))
        {
            WriteGnuplot("cat >'" + (Directory / "script").string() + "'; echo '<?xml </svg>'\n");
        }
        a_vszArguments.insert(a_vszArguments.end(), {"--plot", "p.svg"});
        const TRun Result = Run(a_vszArguments, "", (Directory / "bin").string() + ":/usr/bin:/bin");
        EXPECT_EQ(0, Result.iCode) << Result.szError;
        return Parse(Contents("script"));
    }
};

// A grid of points with noise, named n1, n2, ...
std::string Grid(int a_iSide, double a_dStep, double a_dX, double a_dY)
{
    std::mt19937 Generator(7);
    std::normal_distribution<double> Noise(0, 0.01 * a_dStep);
    std::string szText = "name,x,y,X,Y\n";
    for (int i = 0; i < a_iSide * a_iSide; ++i)
    {
        const int iX = i % a_iSide;
        const int iY = i / a_iSide;
        szText += "n" + std::to_string(i + 1) + "," + std::to_string(iX) + "," + std::to_string(iY) + "," +
                  Digits(a_dX + iX * a_dStep + Noise(Generator)) + "," +
                  Digits(a_dY + iY * a_dStep + Noise(Generator)) + "\n";
    }
    return szText;
}

// The residuals of the affine fit are -1, 1, -1, 1 in X around the square and 0 in Y.
TEST_F(Picture, VectorsLeadFromTheGivenToTheComputedPositionAsTheResidualsInTheTable)
{
    Write("p.csv", Square);
    const TPicture Drawn = Draw({"p.csv", "--method", "affine"});
    const std::vector<TRow> vVectors = Drawn.Rows("vectors head");
    ASSERT_EQ(4u, vVectors.size());
    for (std::size_t i = 0; i < 4; ++i)
    {
        EXPECT_EQ(i % 2 == 1, vVectors[i][2] > 0) << i;
        EXPECT_NEAR(0, vVectors[i][3], 0.01) << i;
    }
    // The given corner (100, 100) has the target 104: the first points are 100 apart, the third one 4 further right.
    const double dPixel = (vVectors[1][0] - vVectors[0][0]) / 100;
    EXPECT_NEAR(vVectors[1][0] + 4 * dPixel, vVectors[2][0], 0.05);
}

TEST_F(Picture, TheScaleBarHasARoundLengthToTheScaleOfTheVectors)
{
    Write("p.csv", Square);
    const TPicture Drawn = Draw({"p.csv", "--method", "affine"});
    std::smatch Match;
    const std::regex Form("the bar is ([0-9.e+-]+) target units, the longest is 1'");
    ASSERT_TRUE(std::regex_search(Drawn.szScript, Match, Form));
    const double dBar = std::stod(Match[1]);
    const double dDigit = dBar / std::pow(10, std::floor(std::log10(dBar)));
    EXPECT_TRUE(dDigit == 1 || dDigit == 2 || dDigit == 5) << dBar;
    const std::vector<TRow> vBar = Drawn.Rows("lines linewidth 1.6");
    EXPECT_NEAR(dBar * std::fabs(Drawn.Rows("vectors head")[0][2]), vBar[1][0] - vBar[0][0], 0.05);
}

TEST_F(Picture, VectorsAreDrawnAfterTheDotsThatTheyStartFrom)
{
    Write("p.csv", Square);
    const TPicture Drawn = Draw({"p.csv", "--method", "affine"});
    const auto Find = [&](const char* a_szStyle)
    {
        return std::find_if(Drawn.vPlots.begin(), Drawn.vPlots.end(),
                            [&](const auto& a_Plot) { return a_Plot.first.find(a_szStyle) != std::string::npos; });
    };
    EXPECT_LT(Find("points pointtype 7"), Find("vectors head"));
}

// A hundred points in a square whose names have no room beside each of them.
TEST_F(Picture, NamesOfAHundredPointsCoverNeitherEachOtherNorPoints)
{
    for (const int iSide : {5, 10, 17})
    {
        SCOPED_TRACE(iSide);
        Write("p.csv", Grid(iSide, 100, 0, 0));
        const TPicture Drawn = Draw({"p.csv"});
        std::vector<TText> vNames;
        for (const TText& Text : Drawn.vTexts)
        {
            if (Text.szText[0] == 'n' && std::isdigit(Text.szText[1]) != 0)
            {
                vNames.push_back(Text);
            }
        }
        for (std::size_t i = 0; i < vNames.size(); ++i)
        {
            const double dWidth = 7.5 * static_cast<double>(vNames[i].szText.size());
            for (std::size_t k = 0; k < i; ++k)
            {
                EXPECT_FALSE(std::fabs(vNames[i].dX - vNames[k].dX) < dWidth &&
                             std::fabs(vNames[i].dY - vNames[k].dY) < 13)
                    << vNames[i].szText << " " << vNames[k].szText;
            }
            for (const TRow& Dot : Drawn.Rows("points pointtype 7"))
            {
                EXPECT_FALSE(std::fabs(vNames[i].dX - Dot[0]) < dWidth / 2 && std::fabs(vNames[i].dY - Dot[1]) < 9)
                    << vNames[i].szText;
            }
        }
        const std::size_t iLeftOut = static_cast<std::size_t>(iSide * iSide) - vNames.size();
        const std::string szLeftOut = std::to_string(iLeftOut) + " name" + (iLeftOut == 1 ? "" : "s") + " left out";
        EXPECT_EQ(iLeftOut > 0, Drawn.szScript.find(szLeftOut) != std::string::npos);
        EXPECT_GT(vNames.size(), 20u);
    }
}

// Gaps between the texts of ticks, of large and small numbers, of wide and high pictures.
TEST_F(Picture, TicksDoNotTouchEachOther)
{
    const std::string Cases[] = {"0,0,0,0\n1,0,1,0\n0,1,0,1\n1,1,1.1,1.01\n",
                                 "0,0,4000000,0\n1,0,9000000,0\n0,1,4000000,90000000\n1,1,9100000,90000000\n",
                                 "0,0,0.0001234,0\n1,0,0.0001235,0\n0,1,0.0001234,2e-7\n1,1,0.0001235,2.1e-7\n",
                                 "0,0,-1e-9,0\n1,0,1e-9,0\n0,1,-1e-9,3e-8\n1,1,1e-9,3.1e-8\n",
                                 "0,0,-1e12,5\n1,0,1e12,0\n0,1,-1e12,1e12\n1,1,1.1e12,1.3e12\n"};
    for (const std::string& szPoints : Cases)
    {
        SCOPED_TRACE(szPoints);
        Write("p.csv", Header + szPoints);
        const TPicture Drawn = Draw({"p.csv", "--method", "affine"});
        std::vector<TText> vTicks; // of the x axis
        std::copy_if(Drawn.vTexts.begin(), Drawn.vTexts.end(), std::back_inserter(vTicks),
                     [](const TText& a_Text)
                     { return a_Text.szStyle.find("center textcolor rgb '#606060'") != std::string::npos; });
        EXPECT_GE(vTicks.size(), 2u);
        for (std::size_t i = 1; i < vTicks.size(); ++i)
        {
            const double dDigits = static_cast<double>(vTicks[i].szText.size() + vTicks[i - 1].szText.size());
            EXPECT_GT(vTicks[i].dX - vTicks[i - 1].dX, 7.6 * dDigits / 2) << vTicks[i].szText;
            EXPECT_NE(vTicks[i].szText, vTicks[i - 1].szText);
        }
    }
}

// Widths and heights of the outermost dots, in pixels for each target unit.
std::array<double, 2> PixelsPerUnit(const TPicture& a_Drawn, double a_dWidth, double a_dHeight)
{
    TRow Low = {1e9, 1e9};
    TRow High = {-1e9, -1e9};
    for (const TRow& Vector : a_Drawn.Rows("vectors"))
    {
        for (int k = 0; k < 2; ++k)
        {
            Low[k] = std::min(Low[k], Vector[k]);
            High[k] = std::max(High[k], Vector[k]);
        }
    }
    return {(High[0] - Low[0]) / a_dWidth, (High[1] - Low[1]) / a_dHeight};
}

// Pixels of 0.5 m at 60 degrees of latitude, where a degree of longitude is half as long as one of latitude.
TEST_F(Picture, DegreesHaveTheAspectOfTheirLatitude)
{
    const std::string szDegrees = "0,0,10,60\n1000,0,10.002,60\n0,1000,10,60.001\n1000,1000,10.002,60.00101\n";
    Write("p.csv", Header + szDegrees);
    std::array<double, 2> Scale = PixelsPerUnit(Draw({"p.csv", "--method", "affine"}), 0.002, 0.00101);
    EXPECT_NEAR(0.5, Scale[0] / Scale[1], 0.002);
    EXPECT_THAT(Contents("script"), HasSubstr("degrees of latitude"));
    const std::string szQgis = "mapX,mapY,sourceX,sourceY,enable\n10,60,0,0,1\n10.002,60,1000,0,1\n"
                               "10,60.001,0,1000,1\n10.002,60.00101,1000,1000,1\n";
    Write("p.points", "#CRS: PROJCRS[\"x\",BASEGEOGCRS[\"y\"]]\n" + szQgis);
    Scale = PixelsPerUnit(Draw({"p.points", "--method", "affine"}), 0.002, 0.00101);
    EXPECT_NEAR(1, Scale[0] / Scale[1], 0.002);
    const std::string szSquares = Header + "0,0,10,60\n1000,0,10.001,60\n0,1000,10,60.001\n1000,1000,10.001,60.00101\n";
    Write("q.csv", szSquares);
    Scale = PixelsPerUnit(Draw({"q.csv", "--method", "affine"}), 0.001, 0.00101);
    EXPECT_NEAR(1, Scale[0] / Scale[1], 0.002); // squares in the source are squares in the target
    Write("q.csv", "#CRS: GEOGCRS[\"WGS 84\"]\n" + szSquares);
    Scale = PixelsPerUnit(Draw({"q.csv", "--method", "affine"}), 0.001, 0.00101);
    EXPECT_NEAR(0.5, Scale[0] / Scale[1], 0.002);
}

// A blunder, a check point and usual points differ in form and colour.
TEST_F(Picture, DoubtfulPointsAndCheckPointsHaveMarksOfTheirOwn)
{
    std::string szText = Grid(4, 100, 0, 0);
    szText.replace(szText.find("n6,1,1,"), 7, "n6,1.9,1,");
    szText.erase(0, szText.find('\n') + 1);
    Write("p.csv", "name,x,y,X,Y\n" + szText);
    TPicture Drawn = Draw({"p.csv", "--method", "affine"});
    ASSERT_EQ(2u, Drawn.Rows("points pointtype 4").size()); // n6 and the sample in the legend
    EXPECT_EQ(Drawn.Rows("vectors head filled size 8,18 fixed linewidth 2.2 linecolor rgb '#c0392b'")[0][0],
              Drawn.Rows("points pointtype 4")[0][0]);
    EXPECT_THAT(Drawn.szScript, HasSubstr("'suspected blunder'"));
    EXPECT_THAT(Drawn.szScript, Not(HasSubstr("check point")));
    Write("p.points", "mapX,mapY,sourceX,sourceY,enable\n0,0,0,0,1\n9,0,9,0,1\n0,9,0,9,1\n9,9,9,9.1,1\n5,5,5,6,0\n");
    Drawn = Draw({"p.points", "--method", "affine"});
    EXPECT_EQ(2u, Drawn.Rows("points pointtype 8").size());
    EXPECT_EQ(1u, Drawn.Rows("linecolor rgb '#2e7d32'").size() - 2); // the vector beside the marks
    EXPECT_THAT(Drawn.szScript, HasSubstr("'check point, not fitted'"));
}

// By symmetry the variance of X at a corner is that of Y: 3/4 of 1/2 of the sum of squares 4, by the hat matrix of an
// affine fit of four corners. So the ellipse is a circle, 37 points of which the first is at the right.
TEST_F(Picture, EllipsesShowTheStandardDeviationOfTheComputedPositions)
{
    Write("p.csv", Square);
    const TPicture Drawn = Draw({"p.csv", "--method", "affine"});
    const std::vector<TRow> vEllipses = Drawn.Rows("lines linewidth 0.8");
    ASSERT_LE(4u * 37, vEllipses.size());
    const std::vector<TRow> vVectors = Drawn.Rows("vectors head");
    const double dPixels = std::fabs(vVectors[0][2]); // of a residual of 1
    for (int i = 0; i < 37; ++i)
    {
        const double dRadius = std::hypot(vEllipses[i][0] - vVectors[0][0] - vVectors[0][2],
                                          vEllipses[i][1] - vVectors[0][1] - vVectors[0][3]);
        EXPECT_NEAR(std::sqrt(0.75 * 2) * dPixels, dRadius, 0.02) << i;
    }
}

// The ellipses are those that the table of transformed points states.
TEST_F(Picture, EllipsesHaveTheAxesAndTheDirectionOfTheTransformedPoints)
{
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n10,0,10.2,0.1\n10,8,12.1,9.7\n0,8,-0.3,8.2\n5,3,5.3,3.1\n2,7,2.2,7.4\n");
    const TRun Table = Run({"p.csv", "--method", "omographic", "--apply", "p.csv", "--deviations"});
    double dMajor = 0;
    double dMinor = 0;
    double dDirection = 0;
    const std::string szFirst = Table.szOut.substr(Table.szOut.find("\n0,0,") + 1);
    ASSERT_EQ(3, std::sscanf(szFirst.c_str(), "0,0,%*f,%*f,%*f,%*f,%lf,%lf,%lf", &dMajor, &dMinor, &dDirection));

    const TPicture Drawn = Draw({"p.csv", "--method", "omographic"});
    const std::vector<TRow> vEllipses = Drawn.Rows("lines linewidth 0.8");
    ASSERT_LE(37u, vEllipses.size());
    const auto Diameter = [&](std::size_t i) // half of the distance of two opposite points
    { return std::hypot(vEllipses[i + 18][0] - vEllipses[i][0], vEllipses[i + 18][1] - vEllipses[i][1]) / 2; };
    EXPECT_NEAR(dMajor / dMinor, Diameter(0) / Diameter(9), 0.01);
    const double dDrawn = std::atan2(vEllipses[0][1] - vEllipses[18][1], vEllipses[0][0] - vEllipses[18][0]);
    EXPECT_NEAR(0, std::sin(dDrawn - dDirection * std::atan(1.0) / 45), 0.02); // either end of the axis
}

TEST_F(FitPoints, ManyPointsAreDrawnAsCellsInASmallPicture)
{
    {
        std::mt19937 Generator(3);
        std::uniform_real_distribution<double> Place(0, 5000);
        std::ofstream Stream("p.csv");
        Stream << Header;
        for (int i = 0; i < 100000; ++i)
        {
            const double dX = Place(Generator);
            const double dY = Place(Generator);
            Stream << dX << "," << dY << "," << dX + 1e-7 * dX * dY << "," << dY << "\n";
        }
    }
    const TRun Result = Run({"p.csv", "--plot", "p.svg"}, "/dev/null");
    EXPECT_EQ(0, Result.iCode) << Result.szError;
    EXPECT_LT(fs::file_size("p.svg"), 200000u);
    EXPECT_THAT(Contents("p.svg"), HasSubstr("mean residuals of 100000 points in cells"));
}

} // namespace
} // namespace fitpoints_tests
