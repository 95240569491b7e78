// reading_test.cpp: which files fitpoints reads, and how it refuses the others.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

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

} // namespace
} // namespace fitpoints_tests
