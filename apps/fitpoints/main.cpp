// main.cpp: fitpoints computes the transformation between two planar coordinate systems from a file of control points.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "apply.h"
#include "arguments.h"
#include "ending_signals.h"
#include "exports.h"
#include "fit.h"
#include "output_file.h"
#include "pixels.h"
#include "plot.h"
#include "progress.h"
#include "report.h"
#include "text.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <map>
#include <unistd.h>

namespace fitpoints {

static const int EXIT_FAILED = 2;

// The outputs of the command line: the option and the name of each.
static std::vector<std::pair<std::string, std::string> > NamedOutputs(const TArguments& a_Arguments)
{
    std::vector<std::pair<std::string, std::string> > vszOutputs;
    for (std::size_t i = 0; i < EXPORT_COUNT; ++i)
    {
        if (a_Arguments.vszExports[i])
        {
            vszOutputs.emplace_back(EXPORTS[i].szOption, *a_Arguments.vszExports[i]);
        }
    }
    if (a_Arguments.szPlot)
    {
        vszOutputs.emplace_back("--plot", *a_Arguments.szPlot);
    }
    if (a_Arguments.szApply)
    {
        vszOutputs.emplace_back(a_Arguments.szOutput ? "--output" : "--apply",
                                a_Arguments.szOutput.value_or(STANDARD_STREAM));
    }
    return vszOutputs;
}

// Fails if an output has the same place as an input or another output, which it would overwrite.
static void CheckPlaces(const TArguments& a_Arguments)
{
    std::map<std::string, std::string> Places; // from the place to what stands there
    const auto AddInput = [&](const std::string& a_szName, const std::string& a_szWhat)
    {
        char* const szResolved = realpath(a_szName.c_str(), nullptr);
        if (szResolved != nullptr)
        {
            Places[szResolved] = a_szWhat;
            std::free(szResolved);
        }
    };
    AddInput(a_Arguments.szFile, "the file of the points");
    AddInput(a_Arguments.szRaster.value_or(""), "the image of --raster");
    AddInput(a_Arguments.szApply.value_or(""), "the file of --apply");
    for (const auto& [szOption, szName] : NamedOutputs(a_Arguments))
    {
        const std::string szPlace = szName == STANDARD_STREAM ? szName : OutputPlace(szName);
        if (!Places.emplace(szPlace, "the output of " + szOption).second)
        {
            Fail(szName == STANDARD_STREAM ? "standard output" : szName,
                 szOption + " would write over " + Places[szPlace]);
        }
    }
}

// The option whose output is standard output; empty if that is the report.
static std::string StandardOutputOption(const TArguments& a_Arguments)
{
    for (const auto& [szOption, szName] : NamedOutputs(a_Arguments))
    {
        if (szName == STANDARD_STREAM)
        {
            return szOption;
        }
    }
    return "";
}

static void CheckArguments(const TArguments& a_Arguments)
{
    if (a_Arguments.szPlot)
    {
        PlotKind(*a_Arguments.szPlot);
    }
    if (a_Arguments.szFile.empty())
    {
        Fail("FILE", "the name is empty");
    }
    const std::string szOption = StandardOutputOption(a_Arguments);
    if (a_Arguments.szApply == a_Arguments.szFile && a_Arguments.szFile == STANDARD_STREAM)
    {
        Fail("--apply", "standard input is the file of the control points");
    }
    if (a_Arguments.bJson && !szOption.empty())
    {
        Fail("--json", "standard output is that of " + szOption);
    }
}

// What is written in the end.
struct TResults
{
    std::string szStandardOutput;
    std::vector<std::unique_ptr<TOutput> > vOutputs; // under temporary names
    std::vector<std::string> vszWarnings;            // of --plot and --apply, with their files
};

static void AddOutput(const std::string& a_szName, const std::string& a_szText, TResults& a_Results)
{
    if (a_szName == STANDARD_STREAM)
    {
        a_Results.szStandardOutput = a_szText;
        return;
    }
    a_Results.vOutputs.push_back(OpenOutput(a_szName));
    WriteOutput(*a_Results.vOutputs.back(), a_szText);
}

// The table of --apply goes to standard output row by row.
static void Apply(const TArguments& a_Arguments, const TFit& a_Fit, TResults& a_Results)
{
    const TApplication Application = {*a_Arguments.szApply, a_Arguments.bInverse, a_Arguments.bDeviations};
    TWrite Write = WriteStandardOutput;
    if (a_Arguments.szOutput.value_or(STANDARD_STREAM) != STANDARD_STREAM)
    {
        a_Results.vOutputs.push_back(OpenOutput(*a_Arguments.szOutput));
        Write = [&](const std::string& a_szText) { WriteOutput(*a_Results.vOutputs.back(), a_szText); };
    }
    const std::vector<std::string> vszWarnings = ApplyFit(Application, a_Fit, Write);
    a_Results.vszWarnings.insert(a_Results.vszWarnings.end(), vszWarnings.begin(), vszWarnings.end());
}

static TResults WriteResults(const TArguments& a_Arguments, const TPoints& a_Points, const TFit& a_Fit)
{
    TResults Results;
    for (std::size_t i = 0; i < EXPORT_COUNT; ++i)
    {
        if (a_Arguments.vszExports[i])
        {
            const std::string szRaster = a_Arguments.szRaster.value_or("");
            AddOutput(*a_Arguments.vszExports[i], EXPORTS[i].MakeText(a_Points, a_Fit, szRaster), Results);
        }
    }
    if (a_Arguments.szPlot)
    {
        ShowStage("drawing");
        Results.vOutputs.push_back(OpenOutput(*a_Arguments.szPlot));
        const std::string szWarning = DrawPlot(a_Points, a_Fit, *Results.vOutputs.back());
        if (!szWarning.empty())
        {
            Results.vszWarnings.push_back(*a_Arguments.szPlot + ": warning: " + szWarning);
        }
    }
    if (a_Arguments.szApply)
    {
        ShowStage("transforming");
        Apply(a_Arguments, a_Fit, Results);
    }
    for (const std::unique_ptr<TOutput>& Output : Results.vOutputs)
    {
        CloseOutput(*Output);
    }
    return Results;
}

static void WriteReport(const TArguments& a_Arguments, const TPoints& a_Points, const TFit& a_Fit)
{
    if (StandardOutputOption(a_Arguments).empty())
    {
        ShowStage("reporting");
        (a_Arguments.bJson ? WriteJsonReport : WriteTextReport)(a_Points, a_Fit, a_Arguments.bSummary,
                                                                WriteStandardOutput);
    }
}

// Doubts about the outputs, beside those about the fit.
static void AddOutputWarnings(const TArguments& a_Arguments, const TPoints& a_Points, TFit& a_Fit)
{
    for (std::size_t i = 0; i < EXPORT_COUNT; ++i)
    {
        if (a_Arguments.vszExports[i] && EXPORTS[i].bPixels && SeemsToCountUpwards(a_Points))
        {
            a_Fit.vszWarnings.push_back(std::string(EXPORTS[i].szOption) +
                                        " takes y of a CSV file as the row of a pixel, but all y are negative: if they "
                                        "are minus the row, as in QGIS, name the columns sourceX,sourceY,mapX,mapY");
        }
    }
}

static void PrintWarnings(const TPoints& a_Points, const TFit& a_Fit, const TResults& a_Results)
{
    for (const std::string& szWarning : a_Fit.vszWarnings)
    {
        std::cerr << "fitpoints: " << OneLine(a_Points.szFile) << ": warning: " << szWarning << std::endl;
    }
    for (const std::string& szWarning : a_Results.vszWarnings)
    {
        std::cerr << "fitpoints: " << OneLine(szWarning) << std::endl;
    }
}

// The results are printed and put in place when nothing else can fail any more.
static void Run(const TArguments& a_Arguments)
{
    CheckArguments(a_Arguments);
    ShowStage("reading");
    const TPoints Points = ReadPoints(FileInput(a_Arguments.szFile));
    CheckPlaces(a_Arguments);
    ShowStage("fitting");
    TFit Fit = FitPoints(Points, a_Arguments.Fit);
    AddOutputWarnings(a_Arguments, Points, Fit);
    const TResults Results = WriteResults(a_Arguments, Points, Fit);
    WriteStandardOutput(Results.szStandardOutput);
    WriteReport(a_Arguments, Points, Fit);
    for (const std::unique_ptr<TOutput>& Output : Results.vOutputs)
    {
        PutInPlace(*Output);
    }
    HideProgress();
    PrintWarnings(Points, Fit, Results);
}

// A file that is opened takes the number of a standard descriptor that the caller has closed. So closed descriptors get
// /dev/null. Standard output gets it for reading only, so that writing to a closed one remains an error.
static void FillClosedDescriptors()
{
    for (int i = 0; i < 3; ++i)
    {
        if (fcntl(i, F_GETFD) < 0)
        {
            open("/dev/null", i == STDOUT_FILENO ? O_RDONLY : O_RDWR);
        }
    }
}

} // namespace fitpoints

int main(int a_iCount, char** a_vszArguments)
{
    using namespace fitpoints;
    FillClosedDescriptors();
    // Without these signals a reader that is gone and a limit of the file size are errors of write.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    CleanUpOnSignals();
    StartProgress();
    try
    {
        if (const std::optional<TArguments> Arguments = ParseArguments(a_iCount, a_vszArguments))
        {
            Run(*Arguments);
        }
        HideProgress();
        return 0;
    }
    catch (const std::bad_alloc&)
    {
        HideProgress();
        std::cerr << "fitpoints: not enough memory" << std::endl;
    }
    catch (const std::exception& Error)
    {
        HideProgress();
        std::cerr << "fitpoints: " << OneLine(Error.what()) << std::endl;
    }
    return EXIT_FAILED;
}
