// main.cpp: fitpoints, the transformation between two planar coordinate systems from a file of control points.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fit.h"
#include "output_file.h"
#include "plot.h"
#include "report.h"
#include "text.h"
#include "world_file.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <map>
#include <sstream>

namespace fitpoints {

static const int EXIT_FAILED = 2;

struct TArguments
{
    std::string szFile;
    TFitOptions Fit;
    bool bJson;
    std::string szPlot, szWorld;
    bool bPlot, bWorld;
};

static const char* const DESCRIPTION =
    "Computes the transformation that maps the source points of a file onto its target points by least squares: "
    "conformal (2 points or more), affine (3) or omographic (projective, 4).";

static const char* const FOOTER =
    "FILE is CSV with the header x,y,X,Y or name,x,y,X,Y (source x, y; target X, Y), or a QGIS georeferencer file\n"
    "(mapX,mapY,sourceX,sourceY,enable[,dX,dY,residual]; pixelX,pixelY in older ones). Lines that start with # are "
    "comments.\n"
    "\n"
    "A world file takes the x, y of a CSV file as column and row of pixel centres. In a QGIS file y is minus the row\n"
    "and (0, 0) the outer corner of the first pixel; the world file is turned to pixel centres.\n"
    "\n"
    "Limits: lines of 64 KiB, files of 256 MiB, 1000000 points; no more than 1.25 GiB of memory.\n"
    "\n"
    "Exit code: 0, or 2 with one line on standard error; warnings go to standard error too.";

static void Declare(CLI::App& a_App, TArguments& a_Arguments, nuv::enumMethodUsed& a_Method)
{
    const std::map<std::string, nuv::enumMethodUsed> Methods = {
        {"conformal", nuv::METHOD_CONFORMAL}, {"affine", nuv::METHOD_AFFINE}, {"omographic", nuv::METHOD_OMOGRAPHIC}};
    a_App.description(DESCRIPTION);
    a_App.footer(FOOTER);
    a_App.set_version_flag("--version", "fitpoints " FITPOINTS_VERSION);
    a_App.add_option("FILE", a_Arguments.szFile, "the control points")->required();
    a_App
        .add_option_function<std::string>(
            "--method", [&a_Method, Methods](const std::string& a_szName) { a_Method = Methods.at(a_szName); },
            "this kind or none (default: the richest that the points support)")
        ->check(CLI::IsMember({"conformal", "affine", "omographic"}))
        ->type_name("KIND");
    a_App.add_flag("--mirrored", a_Arguments.Fit.bMirrored,
                   "let the conformal kind reverse the orientation of the axes");
    a_App.add_flag("--raw", a_Arguments.Fit.bRaw, "fit the coordinates as they are, without a local origin");
    a_App.add_flag("--json", a_Arguments.bJson, "print the result as JSON");
    a_App.add_option("--plot", a_Arguments.szPlot, "draw points and residual vectors (needs gnuplot)")
        ->type_name("FILE.svg|FILE.png");
    a_App.add_option("--world", a_Arguments.szWorld, "write a world file (conformal and affine kinds)")
        ->type_name("FILE");
}

// Outputs must differ from the input and from each other, or one would take the other's place.
static void CheckPlaces(const TArguments& a_Arguments)
{
    char* const szResolved = realpath(a_Arguments.szFile.c_str(), nullptr);
    std::map<std::string, std::string> Places; // where, whose
    if (szResolved != nullptr)
    {
        Places[szResolved] = "the file of the points";
        std::free(szResolved);
    }
    const auto Check = [&](bool a_bGiven, const std::string& a_szName, const char* a_szOption)
    {
        if (a_bGiven && !Places.emplace(OutputPlace(a_szName), "the output of " + std::string(a_szOption)).second)
        {
            Fail(a_szName, std::string(a_szOption) + " would write over " + Places[OutputPlace(a_szName)]);
        }
    };
    Check(a_Arguments.bPlot, a_Arguments.szPlot, "--plot");
    Check(a_Arguments.bWorld, a_Arguments.szWorld, "--world");
}

static void PrintWarnings(const TPoints& a_Points, const TFit& a_Fit)
{
    for (const std::string& szWarning : a_Fit.vszWarnings)
    {
        std::cerr << "fitpoints: " << OneLine(a_Points.szFile) << ": warning: " << szWarning << std::endl;
    }
}

// Everything is computed and written under temporary names before anything is shown or put in place.
static void Run(const TArguments& a_Arguments)
{
    if (a_Arguments.bPlot)
    {
        PlotKind(a_Arguments.szPlot);
    }
    if (a_Arguments.szFile.empty())
    {
        Fail("FILE", "the name is empty");
    }
    const TPoints Points = ReadPoints(a_Arguments.szFile);
    CheckPlaces(a_Arguments);
    const TFit Fit = FitPoints(Points, a_Arguments.Fit);
    std::vector<std::unique_ptr<TOutput> > vOutputs;
    if (a_Arguments.bWorld)
    {
        const std::string szWorld = WorldFile(Points, Fit);
        vOutputs.push_back(OpenOutput(a_Arguments.szWorld));
        WriteOutput(*vOutputs.back(), szWorld);
    }
    if (a_Arguments.bPlot)
    {
        vOutputs.push_back(OpenOutput(a_Arguments.szPlot));
        DrawPlot(Points, Fit, *vOutputs.back());
    }
    for (const std::unique_ptr<TOutput>& Output : vOutputs)
    {
        CloseOutput(*Output);
    }
    WriteStandardOutput(a_Arguments.bJson ? JsonReport(Points, Fit) : TextReport(Points, Fit));
    for (const std::unique_ptr<TOutput>& Output : vOutputs)
    {
        PutInPlace(*Output);
    }
    PrintWarnings(Points, Fit);
}

// Reads the command line. False if --help or --version has been answered.
static bool ParseArguments(int a_iCount, char** a_vszArguments, TArguments& a_Arguments)
{
    CLI::App App;
    nuv::enumMethodUsed Method = nuv::METHOD_OMOGRAPHIC;
    Declare(App, a_Arguments, Method);
    App.name("fitpoints");
    try
    {
        App.parse(a_iCount, a_vszArguments);
    }
    catch (const CLI::ParseError& Error)
    {
        if (Error.get_exit_code() != 0)
        {
            throw TFailure(std::string(Error.what()) + " (see --help)");
        }
        std::ostringstream Answer;
        App.exit(Error, Answer, Answer);
        WriteStandardOutput(Answer.str());
        return false;
    }
    if (App.count("--method") > 0)
    {
        a_Arguments.Fit.Demanded = Method;
    }
    a_Arguments.bPlot = App.count("--plot") > 0;
    a_Arguments.bWorld = App.count("--world") > 0;
    return true;
}

} // namespace fitpoints

// Standard descriptors that the caller has closed: files opened later would take their numbers. Standard output is
// opened for reading only, so that a closed one stays an error of writing.
static void FillClosedDescriptors()
{
    for (int i = 0; i < 3; ++i)
    {
        if (fcntl(i, F_GETFD) < 0)
        {
            open("/dev/null", i == 1 ? O_RDONLY : O_RDWR);
        }
    }
}

int main(int a_iCount, char** a_vszArguments)
{
    FillClosedDescriptors();
    std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is an error of writing like any other,
    std::signal(SIGXFSZ, SIG_IGN); // and so is a limit of the size of files
    fitpoints::RemoveOutputsOnSignals();
    try
    {
        fitpoints::TArguments Arguments = {};
        if (fitpoints::ParseArguments(a_iCount, a_vszArguments, Arguments))
        {
            fitpoints::Run(Arguments);
        }
        return 0;
    }
    catch (const std::bad_alloc&)
    {
        std::cerr << "fitpoints: not enough memory" << std::endl;
    }
    catch (const std::exception& Error)
    {
        std::cerr << "fitpoints: " << fitpoints::OneLine(Error.what()) << std::endl;
    }
    return fitpoints::EXIT_FAILED;
}
