// arguments.cpp: declares the options of fitpoints and parses the command line.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "arguments.h"
#include "exports.h"
#include "output_file.h"
#include "support.h"
#include "text.h"

#include <CLI/CLI.hpp>
#include <sstream>

namespace fitpoints {

static const char* const DESCRIPTION =
    "Computes the transformation that maps the source points of a file onto its target points by least squares: "
    "conformal (2 points or more), affine (3) or omographic (projective, 4).";

static const char* const FOOTER =
    "FILE is a CSV file with the columns x, y (source) and X, Y (target), a QGIS georeferencer file (sourceX, sourceY, "
    "mapX,\n"
    "mapY), or lines of -gcp pixel line X Y, the arguments of GDAL's programs. - is standard input. The separator is a "
    "comma,\n"
    "a semicolon or a tab. The columns name, check and enable are read, too: check points (check 1 or enable 0) are "
    "not "
    "fitted.\n"
    "\n"
    "Outputs named - go to standard output, and then the report is not printed.\n"
    "\n"
    "--world, --points, --gcp and --vrt take the source coordinates as those of pixels. x and y of a CSV file are the "
    "column\n"
    "and the row of the centre of a pixel. In a QGIS file y is minus the row, and (0, 0) is the outer corner of the "
    "first pixel.\n"
    "\n"
    "Limits: 64 KiB for a line, 256 MiB for the file, 1000000 points. The program takes at most 1 GiB of memory.\n"
    "\n"
    "Exit code: 0, or 2 with one line on standard error. Warnings go to standard error and leave the exit code 0.";

const char* const STANDARD_STREAM = "-";

static void DeclareExports(CLI::App& a_App, TArguments& a_Arguments)
{
    a_Arguments.vszExports.resize(EXPORT_COUNT);
    for (std::size_t i = 0; i < EXPORT_COUNT; ++i)
    {
        a_App.add_option(EXPORTS[i].szOption, a_Arguments.vszExports[i], EXPORTS[i].szHelp)->type_name("FILE");
    }
    CLI::Option* const pRaster =
        a_App.add_option("--raster", a_Arguments.szRaster, "the image of --vrt")->type_name("IMAGE");
    pRaster->needs("--vrt");
    a_App.get_option("--vrt")->needs(pRaster);
}

static void DeclareApplication(CLI::App& a_App, TArguments& a_Arguments)
{
    CLI::Option* const pApply =
        a_App.add_option("--apply", a_Arguments.szApply, "transform the points of this table (- is standard input)")
            ->type_name("FILE");
    a_App.add_flag("--inverse", a_Arguments.bInverse, "let --apply transform from the target to the source system")
        ->needs(pApply);
    a_App
        .add_flag("--deviations", a_Arguments.bDeviations,
                  "let --apply add standard deviations and error ellipses of the transformed points")
        ->needs(pApply);
    a_App.add_option("--output", a_Arguments.szOutput, "let --apply write to this file, not to standard output")
        ->needs(pApply)
        ->type_name("FILE");
}

static void DeclareOptions(CLI::App& a_App, TArguments& a_Arguments, std::string& a_szMethod)
{
    a_App.name("fitpoints");
    a_App.description(DESCRIPTION);
    a_App.footer(FOOTER);
    a_App.get_formatter()->column_width(34); // two blanks behind every option, for the maker of the manual page
    a_App.set_version_flag("--version", "fitpoints " FITPOINTS_VERSION);
    a_App.add_option("FILE", a_Arguments.szFile, "the control points")->required();
    a_App
        .add_option("--method", a_szMethod,
                    "auto (default): the kind with the least leave-one-out error; richest: the richest kind that the "
                    "points support; conformal, affine, omographic: this kind, or fail")
        ->check(CLI::IsMember({"auto", "richest", "conformal", "affine", "omographic"}))
        ->type_name("KIND");
    a_App.add_flag("--mirrored", a_Arguments.Fit.bMirrored,
                   "let the conformal kind reverse the orientation of the axes");
    a_App.add_flag("--robust", a_Arguments.Fit.bRobust, "drop suspected blunders one by one");
    a_App
        .add_option("--level", a_Arguments.Fit.dLevel,
                    "significance level of the test of suspected blunders, between 0 and 1 (default 0.01)")
        ->type_name("LEVEL");
    a_App.add_flag("--raw", a_Arguments.Fit.bRaw, "fit the coordinates as they are, without a local origin");
    a_App.add_flag("--json", a_Arguments.bJson, "print the result as JSON");
    a_App.add_flag("--summary", a_Arguments.bSummary, "leave out the table of residuals");
    a_App.add_option("--plot", a_Arguments.szPlot, "draw points and residual vectors (needs gnuplot)")
        ->type_name("FILE.svg|FILE.png");
    DeclareExports(a_App, a_Arguments);
    DeclareApplication(a_App, a_Arguments);
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
    Arguments.Fit.dLevel = judgement::USUAL_LEVEL;
    std::string szMethod = "auto";
    DeclareOptions(App, Arguments, szMethod);
    if (!Parse(App, a_iCount, a_vszArguments))
    {
        return std::nullopt;
    }
    if (!(Arguments.Fit.dLevel > 0 && Arguments.Fit.dLevel < 1))
    {
        throw TFailure("--level: not between 0 and 1 (see --help)");
    }
    Arguments.Fit.Method = METHODS.at(szMethod);
    return Arguments;
}

} // namespace fitpoints
