// reading_test.cpp: which files fitpoints reads, and how it refuses the others.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace fitpoints_tests {
namespace {

// Points of a georeferencer file, in which source y is minus the row.
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
        EXPECT_EQ(1, Fit["check_points"]);
        EXPECT_EQ("check", Fit["points"][3]["role"]);
        const json& P = Fit["points"][4];
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

// The same four points in every form that is read. One of them is a check point where the form can say so.
TEST_F(FitPoints, ReadsSeparatorsDecimalCommasAndColumnsInAnyOrder)
{
    const std::vector<std::string> vszForms = {
        "name,x,y,X,Y\na,0.5,0,100,7\nb,1,0,101,7\nc,1,1,101,8\nd,0,1,100,9.5\n",
        "name;x;y;X;Y\na;0,5;0;100;7\nb;1;0;101;7\nc;1;1;101;8\nd;0;1;100;9,5\n",
        "name\tx\ty\tX\tY\na\t0.5\t0\t100\t7\nb\t1\t0\t101\t7\nc\t1\t1\t101\t8\nd\t0\t1\t100\t9,5\n",
        "Y,X,height,y,x,id\n7,100,3,0,0.5,a\n7,101,,0,1,b\n8,101,5 m,1,1,c\n9.5,100,3,1,0,d\n",
        "x;y;X;Y;name;check\n0.5;0;100;7;a;0\n1;0;101;7;b;1\n1;1;101;8;\"c\";0\n0;1;100;9.5;d;0\n",
        "mapX,mapY,sourceX,sourceY,name\n100,7,0.5,0,a\n101,7,1,0,b\n101,8,1,1,c\n100,9.5,0,1,d\n"};
    for (std::size_t i = 0; i < vszForms.size(); ++i)
    {
        SCOPED_TRACE(vszForms[i]);
        std::string szText = vszForms[i];
        if (i == 2)
        {
            szText.replace(szText.find("0.5"), 3, "0,5");
        }
        Write("p.txt", szText);
        const json Fit = RunJson({"p.txt", "--method", "conformal"});
        EXPECT_EQ(i == 4 ? 3 : 4, Fit.at("n"));
        const json& First = Fit.at("points").front();
        const json& Last = Fit.at("points").back();
        EXPECT_EQ("a", First.at("name"));
        EXPECT_EQ(0.5, First.at("x"));
        EXPECT_EQ(100, First.at("X"));
        EXPECT_EQ("d", Last.at("name"));
        EXPECT_EQ(4, Last.at("point"));
        EXPECT_EQ(9.5, Last.at("Y"));
        EXPECT_EQ(i == 3 ? json({"height"}) : json::array(), Fit.at("columns_not_read"));
        EXPECT_EQ(i == 3, Run({"p.txt"}).szOut.find("columns that are not read: 'height'\n") != std::string::npos);
    }
}

TEST_F(FitPoints, ReadsTheArgumentsOfGdal)
{
    Write("p.txt", "gdal_translate -of GTiff -a_srs EPSG:2056 -gcp 0 0 100 200 -gcp 1 0 101 200 7.5 \\\n"
                   "  -gcp 1 1 101.5 -199 \\\n  -gcp 0 1e0 100 199 in.tif out.tif\n");
    const json Fit = RunJson({"p.txt", "--method", "affine"});
    EXPECT_EQ("gcp", Fit.at("format"));
    ASSERT_EQ(4, Fit.at("n"));
    EXPECT_EQ(101.5, Fit["points"][2].at("X"));
    EXPECT_EQ(-199, Fit["points"][2].at("Y"));
    EXPECT_EQ(2, Fit["points"][2].at("line"));
    EXPECT_EQ(1, Fit["points"][3].at("y"));
}

TEST_F(FitPoints, ReadsStandardInput)
{
    Write("p.csv", Square);
    Prepare = [] { dup2(open("p.csv", O_RDONLY), STDIN_FILENO); };
    EXPECT_EQ(4, RunJson({"-"}).at("n"));
    EXPECT_NE(std::string::npos, Run({"-"}).szOut.find("file:    standard input (CSV)\n"));
    Write("p.csv", Header + "1,2,3\n");
    ExpectFailure({"-"}, "standard input:2: 3 fields where the header has 4");
}

// A pipe gives what was written so far, here byte by byte.
TEST_F(FitPoints, ReadsInputThatComesInPieces)
{
    std::string szText = Header;
    for (int i = 0; i < 9; ++i)
    {
        szText += std::to_string(i % 3) + "," + std::to_string(i / 3) + ",\"" + std::to_string(i % 3) + ".25\"," +
                  std::to_string(i / 3) + "\r\r\n";
    }
    int viPipe[2];
    ASSERT_EQ(0, pipe(viPipe));
    std::thread Writer(
        [&]
        {
            for (const char iChar : szText)
            {
                EXPECT_EQ(1, write(viPipe[1], &iChar, 1));
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            }
            close(viPipe[1]);
        });
    Prepare = [&]
    {
        dup2(viPipe[0], STDIN_FILENO);
        close(viPipe[1]);
    };
    const json Fit = RunJson({"-"});
    Writer.join();
    close(viPipe[0]);
    ASSERT_EQ(9, Fit.at("n"));
    EXPECT_EQ(2.25, Fit["points"][8].at("X"));
    EXPECT_EQ(2, Fit["points"][8].at("Y"));
}

// Rows lie across the ends of the parts in which a long file is read.
TEST_F(FitPoints, ReadsEveryRowOfALongFile)
{
    std::string szText = Header;
    for (int i = 0; i < 20000; ++i)
    {
        szText += std::to_string(i) + "," + std::to_string(i % 7) + "," + std::to_string(i) + ".5," +
                  std::to_string(i % 7) + "\n";
    }
    Write("p.csv", szText);
    const json Fit = RunJson({"p.csv", "--method", "affine"});
    ASSERT_EQ(20000, Fit.at("n"));
    for (int i = 0; i < 20000; ++i)
    {
        const json& P = Fit["points"][i];
        ASSERT_EQ(json({i + 2, i, i % 7, i + 0.5, i % 7}), json({P["line"], P["x"], P["y"], P["X"], P["Y"]}));
    }
}

// The check point (50, 50) is 3 and 4 units off. The transformation of the other points is the identity.
TEST_F(FitPoints, CheckPointsAreComparedButNotFitted)
{
    Write("p.csv", "check,x,y,X,Y\n0,0,0,0,0\n1,50,50,53,46\n0,100,0,100,0\n0,100,100,100,100\n0,0,100,0,100\n"
                   "1,10,10,10,10\n");
    const json Fit = RunJson({"p.csv", "--method", "affine"});
    EXPECT_EQ(4, Fit.at("n"));
    EXPECT_NEAR(0, Fit.at("rms"), 1e-12);
    EXPECT_EQ(2, Fit.at("check_points"));
    const json& Check = Fit["points"][1];
    EXPECT_EQ("check", Check.at("role"));
    EXPECT_EQ("fitted", Fit["points"][2].at("role"));
    EXPECT_EQ(2, Check.at("point"));
    EXPECT_EQ(3, Check.at("line"));
    EXPECT_NEAR(-3, Check.at("dX"), 1e-12);
    EXPECT_NEAR(4, Check.at("dY"), 1e-12);
    EXPECT_NEAR(5, Check.at("length"), 1e-12);
    EXPECT_NEAR(2.5, Fit.at("check_rms"), 1e-12); // sqrt((9 + 16) / 4): two points have four coordinates
    const std::string szText = Run({"p.csv", "--method", "affine"}).szOut;
    EXPECT_NE(std::string::npos, szText.find("points:  4 used, 2 check points\n"));
    EXPECT_NE(std::string::npos,
              szText.find("      2      3             -3              4              5            3           -4\n"));
    EXPECT_NE(std::string::npos, szText.find("RMS of the check points: 2.5\n"));
}

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

const std::string Good = "0,0,0,0\n1,0,1,0\n";
const std::string Columns = ", without x,y,X,Y and without sourceX,sourceY,mapX,mapY";
const std::string Semicolons = "x;y;X;Y\n";

INSTANTIATE_TEST_SUITE_P(
    All, BadInput,
    ::testing::Values(
        TBadInput{"Empty", "", ": the file is empty"},
        TBadInput{"OnlyComments", "# a\n\n", ": the file has no header line"},
        TBadInput{"OnlyHeader", Header, ": no points: a transformation needs at least 2"},
        TBadInput{"WrongColumns", "# c\nx,y,z,t\n0,0,0,0\n", ":2: the columns are 'x,y,z,t': X and Y are missing"},
        TBadInput{"MissingColumn", "Y;x;y;h\n", ":1: the columns are 'Y;x;y;h': X is missing"},
        TBadInput{"MissingMapColumn", "mapX,sourceX,sourceY\n",
                  ":1: the columns are 'mapX,sourceX,sourceY': mapY is missing"},
        TBadInput{"ColumnTwice", "x,x,y,X,Y\n", ":1: the column x stands twice"},
        TBadInput{"SeparatedByBars", "name|x|y|X|Y\na|0|0|0|0\n",
                  ":1: the columns are separated by '|': the separator must be a comma, a semicolon or a tab"},
        TBadInput{"SeparatedByBlanks", "x  y  X  Y\n0 0 0 0\n",
                  ":1: the columns are separated by blanks: the separator must be a comma, a semicolon or a tab"},
        TBadInput{"RowsWithAnotherSeparator", Header + "0;0;0;0\n",
                  ":2: 1 field where the header has 4: the separator is a semicolon, that of the header a comma"},
        TBadInput{"RowsWithDecimalCommas", "x\ty\tX\tY\n1,5,2,5,3,5,4,5\n",
                  ":2: 1 field where the header has 4: the separator is a comma, that of the header a tab"},
        TBadInput{"PointBehindComma", Semicolons + "1,5;2;3;4\n1.5;2;3;4\n",
                  ":3: column x: '1.5' has a decimal point, the numbers before it have decimal commas"},
        TBadInput{"CommaBehindPoint", Semicolons + "1;2;3.5;1,234\n",
                  ":2: column Y: '1,234' has a decimal comma, the numbers before it have decimal points"},
        TBadInput{"TwoCommas", Semicolons + "1,234,5;2;3;4\n", ":2: column x: '1,234,5' is not a decimal number"},
        TBadInput{"CommaAndPoint", Semicolons + "1.234,5;2;3;4\n", ":2: column x: '1.234,5' is not a decimal number"},
        TBadInput{"OneFittedPoint", "x,y,X,Y,check\n0,0,0,0,0\n1,1,1,1,1\n",
                  ": only 1 point: the conformal kind needs 2, and 1 check point is not fitted"},
        TBadInput{"CheckTwo", "x,y,X,Y,check\n0,0,0,0,yes\n", ":2: column check: 'yes' is neither 0 nor 1"},
        TBadInput{"GcpWithoutNumbers", "-gcp 1 2 3\n", ":1: column Y of -gcp is empty"},
        TBadInput{"GcpWithText", "-gcp 1 2 3 4\n-gcp 1 2 3m 4\n", ":2: column X of -gcp: '3m' is not a decimal number"},
        TBadInput{"GcpWithSixNumbers", "-gcp 1 2 3 4 5 6\n", ":1: -gcp has more than pixel, line, X, Y and Z: '6'"},
        TBadInput{"GcpLineWithout", "-gcp 1 2 3 4\nmap.tif\n", ":2: the line has no -gcp"},
        TBadInput{"NoHeader", "1,2,3,4\n5,6,7,8\n", ":1: the columns are '1,2,3,4'" + Columns},
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
                  ": no points: a transformation needs at least 2, and 2 check points are not fitted"},
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

} // namespace
} // namespace fitpoints_tests
