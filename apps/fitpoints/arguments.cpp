// arguments.cpp: declares the options of fitpoints and parses the command line.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "arguments.h"
#include "output_file.h"
#include "text.h"

#include <CLI/CLI.hpp>
#include <map>
#include <sstream>

namespace fitpoints {

static const char* const DESCRIPTION =
    "Computes the transformation that maps the source points of a file onto its target points by least squares: "
    "conformal (2 points or more), affine (3) or omographic (projective, 4).";

static const char* const FOOTER =
    "FILE is a CSV file with the header x,y,X,Y or name,x,y,X,Y (source x, y; target X, Y), or a QGIS georeferencer "
    "file\n"
    "(mapX,mapY,sourceX,sourceY,enable[,dX,dY,residual]; pixelX,pixelY in older ones). Lines that start with # are "
    "comments.\n"
    "\n"
    "The world file of a CSV file takes x, y as column and row of pixel centres. In a QGIS file y is minus the row "
    "and\n"
    "(0, 0) is the outer corner of the first pixel; the world file is converted to pixel centres.\n"
    "\n"
    "Limits: 64 KiB for a line, 256 MiB for the file, 1000000 points. The program takes at most 1.5 GiB of memory.\n"
    "\n"
    "Exit code: 0, or 2 with one line on standard error. Warnings go to standard error and leave the exit code 0.";

static const std::map<std::string, nuv::enumMethodUsed> METHODS = {
    {"conformal", nuv::METHOD_CONFORMAL}, {"affine", nuv::METHOD_AFFINE}, {"omographic", nuv::METHOD_OMOGRAPHIC}};

// The texts of options that may be missing.
struct TOptionTexts
{
    std::string szMethod, szPlot, szWorld;
};

static void DeclareOptions(CLI::App& a_App, TArguments& a_Arguments, TOptionTexts& a_Texts)
{
    a_App.name("fitpoints");
    a_App.description(DESCRIPTION);
    a_App.footer(FOOTER);
    a_App.set_version_flag("--version", "fitpoints " FITPOINTS_VERSION);
    a_App.add_option("FILE", a_Arguments.szFile, "the control points")->required();
    a_App
        .add_option("--method", a_Texts.szMethod,
                    "fit this kind, or fail (default: the richest kind that the points support)")
        ->check(CLI::IsMember({"conformal", "affine", "omographic"}))
        ->type_name("KIND");
    a_App.add_flag("--mirrored", a_Arguments.Fit.bMirrored,
                   "let the conformal kind reverse the orientation of the axes");
    a_App.add_flag("--raw", a_Arguments.Fit.bRaw, "fit the coordinates as they are, without a local origin");
    a_App.add_flag("--json", a_Arguments.bJson, "print the result as JSON");
    a_App.add_option("--plot", a_Texts.szPlot, "draw points and residual vectors (needs gnuplot)")
        ->type_name("FILE.svg|FILE.png");
    a_App.add_option("--world", a_Texts.szWorld, "write a world file (conformal and affine kinds)")->type_name("FILE");
}

// Parses the arguments. False if it has answered --help or --version.
static bool Parse(CLI::App& a_App, int a_iCount, char** a_vszArguments)
{
    try
    {
        a_App.parse(a_iCount, a_vszArguments);
        return true;
    }
    catch (const CLI::ParseError& Error)
    {
        if (Error.get_exit_code() != 0)
        {
            throw TFailure(std::string(Error.what()) + " (see --help)");
        }
        std::ostringstream Answer;
        a_App.exit(Error, Answer, Answer);
        WriteStandardOutput(Answer.str());
        return false;
    }
}

std::optional<TArguments> ParseArguments(int a_iCount, char** a_vszArguments)
{
    CLI::App App;
    TArguments Arguments = {};
    TOptionTexts Texts;
    DeclareOptions(App, Arguments, Texts);
    if (!Parse(App, a_iCount, a_vszArguments))
    {
        return std::nullopt;
    }
    if (App.count("--method") > 0)
    {
        Arguments.Fit.Demanded = METHODS.at(Texts.szMethod);
    }
    if (App.count("--plot") > 0)
    {
        Arguments.szPlot = Texts.szPlot;
    }
    if (App.count("--world") > 0)
    {
        Arguments.szWorld = Texts.szWorld;
    }
    return Arguments;
}

} // namespace fitpoints
