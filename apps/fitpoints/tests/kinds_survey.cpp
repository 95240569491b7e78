// kinds_survey.cpp: makes the tables of judgement/README.md from files of real control points.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Usage: kinds_survey FILE.... Each rule chooses a kind from the other points of a file, and the fit of that kind to the
// other points predicts the point. So no choice is judged by a point that it has seen.

#include "frames.h"
#include "judgement/judgement.h"
#include "points.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <optional>

using namespace fitpoints;

namespace {

using TRows = std::array<judgement::TKindRow, judgement::KINDS>;

// A kind, or KINDS if the rule cannot choose.
using TRule = int (*)(const TRows& a_vRows, int a_iPoints, double a_dRounding);

int Richest(const TRows& a_vRows, int, double)
{
    int k = judgement::KINDS - 1;
    while (k > 0 && a_vRows[static_cast<std::size_t>(k)].Reason != judgement::REASON_NONE)
    {
        --k;
    }
    return k;
}

// The kind with the least measure among those that have redundancy, or else the richest one.
template <class TMeasure> int Least(const TRows& a_vRows, int a_iPoints, TMeasure a_Measure)
{
    int iLeast = judgement::KINDS;
    double dLeast = 0;
    for (int k = 0; k < judgement::KINDS; ++k)
    {
        const judgement::TKindRow& Row = a_vRows[static_cast<std::size_t>(k)];
        if (Row.Reason != judgement::REASON_NONE || Row.iFreedom < 1)
        {
            continue;
        }
        const std::optional<double> dMeasure = a_Measure(Row);
        if (dMeasure && (iLeast == judgement::KINDS || *dMeasure < dLeast))
        {
            iLeast = k;
            dLeast = *dMeasure;
        }
    }
    return iLeast == judgement::KINDS ? Richest(a_vRows, a_iPoints, 0) : iLeast;
}

int LeastRms(const TRows& a_vRows, int a_iPoints, double)
{
    return Least(a_vRows, a_iPoints, [](const auto& a_Row) { return std::optional<double>(a_Row.dRms); });
}

// -2 log likelihood of normally distributed residuals, but for a constant.
double Deviance(const judgement::TKindRow& a_Row, int a_iPoints)
{
    return 2 * a_iPoints * std::log(a_Row.Fit.dSumOfSquares / (2 * a_iPoints));
}

// G. Schwarz, Ann. Statist. 6 (1978) 461-464. The variance is one more unknown.
int LeastBic(const TRows& a_vRows, int a_iPoints, double)
{
    return Least(a_vRows, a_iPoints,
                 [&](const auto& a_Row) {
                     return std::optional<double>(Deviance(a_Row, a_iPoints) +
                                                  (a_Row.iUnknowns + 1) * std::log(2.0 * a_iPoints));
                 });
}

// C. M. Hurvich, C.-L. Tsai, Biometrika 76 (1989) 297-307.
int LeastAicc(const TRows& a_vRows, int a_iPoints, double)
{
    return Least(a_vRows, a_iPoints,
                 [&](const auto& a_Row)
                 {
                     const int k = a_Row.iUnknowns + 1;
                     const int n = 2 * a_iPoints;
                     return n - k - 1 < 1 ? std::optional<double>()
                                          : Deviance(a_Row, a_iPoints) + 2.0 * k + 2.0 * k * (k + 1) / (n - k - 1);
                 });
}

int LeastLeaveOneOut(const TRows& a_vRows, int, double a_dRounding)
{
    nuv::enumMethodUsed Kind = nuv::METHOD_CONFORMAL;
    judgement::enumChoice Choice;
    judgement::ChooseKind(a_vRows.data(), a_dRounding, Kind, Choice);
    return Kind;
}

struct TNamedRule
{
    const char* szName;
    TRule Choose;
};

const TNamedRule RULES[] = {{"richest kind (`--method richest`)", Richest},
                            {"least RMS by degrees of freedom", LeastRms},
                            {"BIC", LeastBic},
                            {"AICc", LeastAicc},
                            {"leave-one-out (`--method auto`)", LeastLeaveOneOut}};
constexpr std::size_t RULE_COUNT = sizeof RULES / sizeof *RULES;

// Sums of squared prediction errors; infinite if a point cannot be predicted.
struct TErrors
{
    std::array<double, judgement::KINDS> vdKinds;
    std::array<double, RULE_COUNT> vdRules;
};

TArrays Without(TArrays a_Points, std::size_t i)
{
    for (std::vector<double>* const pArray : {&a_Points.vdX, &a_Points.vdY, &a_Points.vdXa, &a_Points.vdYa})
    {
        pArray->erase(pArray->begin() + static_cast<std::ptrdiff_t>(i));
    }
    return a_Points;
}

TRows KindsOf(const TArrays& a_Points, TOrigins& a_Origins)
{
    TRows vRows = {};
    judgement::TSupport Support;
    TArrays Local = a_Points;
    judgement::FindSupport(ControlPoints(a_Points), Support);
    judgement::FindOrigins(ControlPoints(a_Points), a_Origins);
    judgement::ReducePoints(ControlPoints(a_Points), a_Origins, Local.vdX.data(), Local.vdY.data(), Local.vdXa.data(),
                            Local.vdYa.data());
    if (judgement::JudgeKinds(ControlPoints(Local), Support, false, vRows.data()) != judgement::REASON_NONE)
    {
        throw std::bad_alloc();
    }
    return vRows;
}

void AddPoint(const TArrays& a_Points, std::size_t i, TErrors& a_Errors)
{
    TOrigins Origins;
    const TArrays Others = Without(a_Points, i);
    const TRows vRows = KindsOf(Others, Origins);
    std::array<double, judgement::KINDS> vdSquares;
    for (std::size_t k = 0; k < vRows.size(); ++k)
    {
        const TPosition Image =
            Transform(vRows[k].Fit.Coefs, a_Points.vdX[i] - Origins.dX, a_Points.vdY[i] - Origins.dY);
        const double dX = Image.dXa - (a_Points.vdXa[i] - Origins.dXa);
        const double dY = Image.dYa - (a_Points.vdYa[i] - Origins.dYa);
        vdSquares[k] = vRows[k].Reason == judgement::REASON_NONE ? dX * dX + dY * dY : HUGE_VAL;
        a_Errors.vdKinds[k] += vdSquares[k];
    }
    for (std::size_t r = 0; r < RULE_COUNT; ++r)
    {
        const int iKind = RULES[r].Choose(vRows, PointCount(Others), RoundingLevel(Others));
        a_Errors.vdRules[r] += vdSquares[static_cast<std::size_t>(iKind)];
    }
}

// The fitted points of a file.
TArrays PointsOf(const char* a_szFile)
{
    TPoints Points = ReadPoints(FileInput(a_szFile));
    auto& vPoints = Points.vPoints;
    vPoints.erase(std::remove_if(vPoints.begin(), vPoints.end(), [](const TPoint& a_Point) { return a_Point.bCheck; }),
                  vPoints.end());
    return Arrays(vPoints);
}

struct TSummary
{
    double dLogSum, dWorst;
    int iWorse; // files where the choice is worse than the best fixed kind by more than 5 %
};

void AddFile(const TArrays& a_Points, std::array<TSummary, RULE_COUNT>& a_vSummaries)
{
    TErrors Errors = {};
    for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
    {
        AddPoint(a_Points, i, Errors);
    }
    const double dBest = *std::min_element(Errors.vdKinds.begin(), Errors.vdKinds.end());
    for (std::size_t r = 0; r < RULE_COUNT; ++r)
    {
        const double dRatio = std::sqrt(Errors.vdRules[r] / dBest);
        a_vSummaries[r].dLogSum += std::log(dRatio);
        a_vSummaries[r].dWorst = std::max(a_vSummaries[r].dWorst, dRatio);
        a_vSummaries[r].iWorse += dRatio > 1.05 ? 1 : 0;
    }
}

// The kind that is taken with all points, and the suspected blunders.
void AddSuspects(const TArrays& a_Points, int& a_iFiles, int& a_iSuspects)
{
    judgement::TJudgement Result;
    std::vector<judgement::TPointJudgement> vPoints(a_Points.vdX.size());
    const judgement::TOptions Options = {judgement::ASK_AUTO, 0, 0, 1, judgement::USUAL_LEVEL};
    if (judgement::Judge(ControlPoints(a_Points), nullptr, Options, Result, vPoints.data()) == judgement::REASON_NONE)
    {
        a_iFiles += Result.iDropped > 0 ? 1 : 0;
        a_iSuspects += Result.iDropped;
    }
}

// Files with fewer points cannot tell how good a choice is: without a point nothing is left to choose by.
constexpr std::size_t LEAST_POINTS = 5;

void Survey(int a_iFiles, char** a_vszFiles)
{
    std::array<TSummary, RULE_COUNT> vSummaries = {};
    int iJudged = 0, iWithSuspects = 0, iSuspects = 0;
    for (int i = 0; i < a_iFiles; ++i)
    {
        const TArrays Points = PointsOf(a_vszFiles[i]);
        if (Points.vdX.size() >= LEAST_POINTS)
        {
            AddFile(Points, vSummaries);
            ++iJudged;
        }
        AddSuspects(Points, iWithSuspects, iSuspects);
    }
    std::printf("| rule, in %d files with %zu points or more | geometric mean | worst | files above 1.05 |\n"
                "|---|--:|--:|--:|\n",
                iJudged, LEAST_POINTS);
    for (std::size_t r = 0; r < RULE_COUNT; ++r)
    {
        std::printf("| %s | %.3f | %.2f | %d |\n", RULES[r].szName, std::exp(vSummaries[r].dLogSum / iJudged),
                    vSummaries[r].dWorst, vSummaries[r].iWorse);
    }
    std::printf("\nSuspected blunders: %d points in %d of all %d files.\n", iSuspects, iWithSuspects, a_iFiles);
}

} // namespace

int main(int a_iCount, char** a_vszArguments)
{
    if (a_iCount < 2)
    {
        std::fprintf(stderr, "usage: kinds_survey FILE...\n");
        return 2;
    }
    try
    {
        Survey(a_iCount - 1, a_vszArguments + 1);
        return 0;
    }
    catch (const std::exception& Error)
    {
        std::fprintf(stderr, "kinds_survey: %s\n", Error.what());
        return 2;
    }
}
