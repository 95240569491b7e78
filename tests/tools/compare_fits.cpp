// compare_fits.cpp: a Markdown table of fitpoints --json outputs beside an independent least-squares solution.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "reference_fits.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

struct TComparison
{
    double dLargest;      // greatest distance between the two computed positions of a point
    double dReferenceRms; // of the independent solution; 0 without redundancy
};

TComparison Compare(const json& a_Fit)
{
    std::vector<nuv_reference::TControlPoint> vPoints;
    for (const json& Point : a_Fit.at("points"))
    {
        vPoints.push_back({Point.at("x"), Point.at("y"), Point.at("X"), Point.at("Y")});
    }
    const auto vReference = nuv_reference::ReferenceResiduals(a_Fit.at("kind"), a_Fit.at("mirrored"), vPoints);
    TComparison Result = {0, 0};
    nuv_reference::TReal dSum = 0;
    for (std::size_t i = 0; i < vReference.size(); ++i)
    {
        const json& Point = a_Fit.at("points")[i];
        const double dX = static_cast<double>(Point.at("dX").get<double>() - vReference[i][0]);
        const double dY = static_cast<double>(Point.at("dY").get<double>() - vReference[i][1]);
        Result.dLargest = std::max(Result.dLargest, std::hypot(dX, dY));
        dSum += vReference[i][0] * vReference[i][0] + vReference[i][1] * vReference[i][1];
    }
    const int iFreedom = a_Fit.at("degrees_of_freedom");
    Result.dReferenceRms = iFreedom > 0 ? static_cast<double>(std::sqrt(dSum / iFreedom)) : 0;
    return Result;
}

void PrintRow(const std::string& a_szFile)
{
    std::ifstream Stream(a_szFile);
    const json Fit = json::parse(Stream);
    const TComparison Comparison = Compare(Fit);
    const std::string szInput = Fit.at("file");
    const std::string szKind = Fit.at("kind");
    const bool bRms = !Fit.at("rms").is_null();
    std::printf("| %s | %s | %d | %s%s | ", szInput.substr(szInput.rfind('/') + 1).c_str(),
                Fit.at("raw").get<bool>() ? "raw" : "local", Fit.at("n").get<int>(), szKind.c_str(),
                Fit.at("warnings").empty() ? "" : " (warned)");
    if (bRms)
    {
        std::printf("%.6g | %.6g | ", Fit.at("rms").get<double>(), Comparison.dReferenceRms);
    }
    else
    {
        std::printf("none | none | ");
    }
    std::printf("%.2g |\n", Comparison.dLargest);
}

} // namespace

int main(int a_iCount, char** a_vszArguments)
{
    std::puts("| file | frame | n | kind | RMS | RMS, independent | largest difference of positions |");
    std::puts("|---|---|---|---|---|---|---|");
    int iResult = 0;
    for (int i = 1; i < a_iCount; ++i)
    {
        try
        {
            PrintRow(a_vszArguments[i]);
        }
        catch (const std::exception& Error)
        {
            std::fprintf(stderr, "compare_fits: %s: %s\n", a_vszArguments[i], Error.what());
            iResult = 1;
        }
    }
    return iResult;
}
