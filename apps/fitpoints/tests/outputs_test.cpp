// outputs_test.cpp: world files and drawings, and outputs that cannot be written.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>

namespace fitpoints_tests {
namespace {

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
    // X = 500000 + x / 2 - y / 4, Y = 4500000 + x / 8 + y / 2, where (0, 0) is the corner of the first pixel.
    Write("p.points", "mapX,mapY,sourceX,sourceY,enable\n500000,4500000,0,0,1\n500008,4500002,16,0,1\n"
                      "500012,4499994,16,-16,1\n500004,4499992,0,-16,1\n");
    ASSERT_EQ(0, Run({"p.points", "--method", "affine", "--world", "p.wld"}).iCode);
    // The pixel in column c and row r has its centre at x = c + 1/2, y = -(r + 1/2), so
    // X = 500000.375 + c / 2 + r / 4, Y = 4499999.8125 + c / 8 - r / 2.
    const std::vector<double> vdExpected = {0.5, 0.125, 0.25, -0.5, 500000.375, 4499999.8125};
    const std::vector<double> vdActual = Numbers(Contents("p.wld"));
    ASSERT_EQ(6u, vdActual.size());
    for (std::size_t i = 0; i < 6; ++i)
    {
        EXPECT_NEAR(vdExpected[i], vdActual[i], 1e-14 * std::max(1.0, vdExpected[i])) << i;
    }
}

TEST_F(FitPoints, AnOmographicWorldFileIsRefused)
{
    Write("p.csv", Square);
    ExpectFailure(
        {"p.csv", "--method", "richest", "--world", "p.wld", "--plot", "p.svg"},
        "p.csv: a world file cannot hold an omographic transformation: add --method affine or --method conformal");
}

TEST_F(FitPoints, DrawsSvgWithLabelledAxesAndNames)
{
    ASSERT_EQ(0, Run({NUV_FITPOINTS_SAMPLE, "--plot", "p.svg"}).iCode);
    const std::string szSvg = Contents("p.svg");
    EXPECT_EQ(0u, szSvg.find("<?xml"));
    for (const char* const szPart : {"X - 4500300 (target units)", "Y - 5387600 (target units)", "bridge, east end",
                                     "the bar is 0.2 target units, the longest is 0.2277", "omographic fit, 12 points",
                                     "error ellipse of the computed position", "</svg>"})
    {
        EXPECT_NE(std::string::npos, szSvg.find(szPart)) << szPart;
    }
}

TEST_F(FitPoints, DrawsPng)
{
    ASSERT_EQ(0, Run({NUV_FITPOINTS_SAMPLE, "--plot", "P.PNG", "--world", "p.wld", "--method", "affine"}).iCode);
    EXPECT_EQ("\x89PNG\r\n\x1A\n", Contents("P.PNG").substr(0, 8));
    EXPECT_EQ((std::set<std::string>{"P.PNG", "p.wld"}), Files());
}

// gnuplot draws a character that no font has as large as the picture.
TEST_F(FitPoints, APngHasQuestionMarksForCharactersWithoutAFontAndAWarning)
{
    const std::string szLast = "\ng,9,0,9,0\nh,9,9,9,9.1\ni,0,9,0,9\n";
    Write("p.csv", "name,x,y,X,Y\n\xE5\x8C\x97\xE4\xBA\xAC \xE0\xB9\x84 \xF0\x9F\xA6\x80,0,0,0,0" + szLast);
    TRun Result = Run({"p.csv", "--plot", "p.png"});
    EXPECT_EQ(0, Result.iCode);
    EXPECT_EQ("", Result.szError); // fonts-unifont is installed
    Write("fonts.conf", "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig>"
                        "<dir>/usr/share/fonts/truetype/dejavu</dir><cachedir>cache</cachedir>"
                        "</fontconfig>");
    Prepare = [] { setenv("FONTCONFIG_FILE", fs::absolute("fonts.conf").c_str(), 1); };
    Result = Run({"p.csv", "--plot", "p.png"});
    EXPECT_EQ(0, Result.iCode);
    EXPECT_EQ("fitpoints: p.png: warning: no font of this machine has some characters of the names, which are drawn as "
              "?: install one, such as the Debian package fonts-unifont\n",
              Result.szError);
    WriteGnuplot("cat >script; printf '\\211PNG IEND'\n");
    EXPECT_EQ(0, Run({"p.csv", "--plot", "p.png"}, "", (Directory / "bin").string() + ":/usr/bin:/bin").iCode);
    EXPECT_NE(std::string::npos, Contents("script").find("label '?? ? ?' at"));
}

TEST_F(FitPoints, PlotsWithStandardInputClosed)
{
    Write("p.csv", "x,y,X,Y\n0,0,0,0\n1,0,1,0\n1,1,1,1\n0,1,0,2\n");
    const std::string szCommand =
        "cd '" + Directory.string() + "' && '" NUV_FITPOINTS "' p.csv --plot p.svg <&- >/dev/null 2>&1";
    EXPECT_EQ(0, std::system(szCommand.c_str()));
    EXPECT_TRUE(fs::exists(Directory / "p.svg"));
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

TEST_F(FitPoints, AnOutputReplacesAFileBehindALink)
{
    Write("p.csv", Square);
    Write("real.wld", "old");
    fs::create_symlink("real.wld", "link.wld");
    ASSERT_EQ(0, Run({"p.csv", "--method", "affine", "--world", "link.wld"}).iCode);
    EXPECT_TRUE(fs::is_symlink("link.wld"));
    EXPECT_EQ(6u, Numbers(Contents("real.wld")).size());
}

TEST_F(FitPoints, OutputsThatCannotBeWrittenAreRefusedAndTheOtherOneIsNotLeft)
{
    Write("p.csv", Square);
    fs::create_directory("d");
    fs::create_directory("d.svg");
    fs::create_symlink("nowhere", "dangling");
    ASSERT_EQ(0, mkfifo("pipe", 0600)); // a faulty program that renames over it does no harm, as it would to a device
    const auto Refused = [&](const std::string& a_szWorld, const std::string& a_szPlot, const std::string& a_szLine) {
        ExpectFailure({"p.csv", "--method", "affine", "--world", a_szWorld, "--plot", a_szPlot}, a_szLine);
    };
    Refused("no/p.wld", "p.svg", "no/p.wld: cannot be written: No such file or directory");
    Refused("p.wld", "no/p.svg", "no/p.svg: cannot be written: No such file or directory");
    Refused("d", "p.svg", "d: cannot be written: not a regular file");
    Refused("p.wld", "d.svg", "d.svg: cannot be written: not a regular file");
    Refused("pipe", "p.svg", "pipe: cannot be written: not a regular file");
    Refused("dangling", "p.svg", "dangling: cannot be written: it is a symbolic link to a file that does not exist");
    Refused("d/", "p.svg", "d/: cannot be written: not a regular file");
    Refused("", "p.svg", "output: cannot be written: no file name");
    Refused("p.svg", "p.svg", "p.svg: --plot would write over the output of --world");
    Refused("./p.csv", "p.svg", "./p.csv: --world would write over the file of the points");
    EXPECT_EQ(Square, Contents("p.csv"));
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

// Otherwise the output would replace the file that has the report.
TEST_F(FitPoints, AnOutputIsNotTheFileOfStandardOutputOrStandardError)
{
    Write("p.csv", Square);
    const auto Refused = [&](const std::string& a_szRedirections, const std::string& a_szOutput, const char* a_szWhich)
    {
        const std::string szCommand =
            "'" NUV_FITPOINTS "' p.csv --method affine --world " + a_szOutput + a_szRedirections + "; test $? = 2";
        EXPECT_EQ(0, std::system(szCommand.c_str())) << szCommand;
        EXPECT_EQ("fitpoints: " + a_szOutput + ": cannot be written: it is the file of standard " + a_szWhich + "\n",
                  Contents("error"));
    };
    Refused(" >out 2>error", "out", "output");
    Refused(" >out 2>error", "/dev/stdout", "output");
    Refused(" >/dev/null 2>error", "error", "error");
    Refused(" >/dev/null 2>error", "/dev/stderr", "error");
    Refused(" >>out 2>error", "./out", "output");
    EXPECT_EQ((std::set<std::string>{"error", "out", "p.csv"}), Files());
}

} // namespace
} // namespace fitpoints_tests
