// main.cpp: fitpoints computes the transformation between two planar coordinate systems from a file of control points.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "arguments.h"
#include "fit.h"
#include "output_file.h"
#include "plot.h"
#include "report.h"
#include "text.h"
#include "world_file.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <map>
#include <unistd.h>

namespace fitpoints {

static const int EXIT_FAILED = 2;

// Fails if an output has the same place as the input or the other output, which it would overwrite.
static void CheckPlaces(const TArguments& a_Arguments)
{
    char* const szResolved = realpath(a_Arguments.szFile.c_str(), nullptr);
    std::map<std::string, std::string> Places; // from the place to what stands there
    if (szResolved != nullptr)
    {
        Places[szResolved] = "the file of the points";
        std::free(szResolved);
    }
    const auto Check = [&](const std::optional<std::string>& a_szName, const std::string& a_szOption)
    {
        if (a_szName && !Places.emplace(OutputPlace(*a_szName), "the output of " + a_szOption).second)
        {
            Fail(*a_szName, a_szOption + " would write over " + Places[OutputPlace(*a_szName)]);
        }
    };
    Check(a_Arguments.szPlot, "--plot");
    Check(a_Arguments.szWorld, "--world");
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
}

using TOutputs = std::vector<std::unique_ptr<TOutput> >;

// Writes the outputs under temporary names.
static TOutputs WriteOutputs(const TArguments& a_Arguments, const TPoints& a_Points, const TFit& a_Fit)
{
    TOutputs vOutputs;
    if (a_Arguments.szWorld)
    {
        const std::string szWorld = WorldFile(a_Points, a_Fit);
        vOutputs.push_back(OpenOutput(*a_Arguments.szWorld));
        WriteOutput(*vOutputs.back(), szWorld);
    }
    if (a_Arguments.szPlot)
    {
        vOutputs.push_back(OpenOutput(*a_Arguments.szPlot));
        DrawPlot(a_Points, a_Fit, *vOutputs.back());
    }
    for (const std::unique_ptr<TOutput>& Output : vOutputs)
    {
        CloseOutput(*Output);
    }
    return vOutputs;
}

static void PrintWarnings(const TPoints& a_Points, const TFit& a_Fit)
{
    for (const std::string& szWarning : a_Fit.vszWarnings)
    {
        std::cerr << "fitpoints: " << OneLine(a_Points.szFile) << ": warning: " << szWarning << std::endl;
    }
}

// The report is printed and the outputs are put in place when nothing else can fail any more.
static void Run(const TArguments& a_Arguments)
{
    CheckArguments(a_Arguments);
    const TPoints Points = ReadPoints(a_Arguments.szFile);
    CheckPlaces(a_Arguments);
    const TFit Fit = FitPoints(Points, a_Arguments.Fit);
    const TOutputs vOutputs = WriteOutputs(a_Arguments, Points, Fit);
    WriteStandardOutput(a_Arguments.bJson ? JsonReport(Points, Fit) : TextReport(Points, Fit));
    for (const std::unique_ptr<TOutput>& Output : vOutputs)
    {
        PutInPlace(*Output);
    }
    PrintWarnings(Points, Fit);
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
    RemoveOutputsOnSignals();
    try
    {
        if (const std::optional<TArguments> Arguments = ParseArguments(a_iCount, a_vszArguments))
        {
            Run(*Arguments);
        }
        return 0;
    }
    catch (const std::bad_alloc&)
    {
        std::cerr << "fitpoints: not enough memory" << std::endl;
    }
    catch (const std::exception& Error)
    {
        std::cerr << "fitpoints: " << OneLine(Error.what()) << std::endl;
    }
    return EXIT_FAILED;
}
