// real_files_test.cpp: the judgement of files of real control points.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "points.h"
#include "sets.h"
#include "support/reference_fits.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>

namespace judgement_tests {
namespace {

using namespace judgement;

const char* const KIND_NAMES[] = {"conformal", "affine", "omographic"};

struct TFile
{
    std::string szName;
    TSet Set;
};

// The fitted points of all files.
std::vector<TFile> Files()
{
    std::vector<TFile> vFiles;
    for (const auto& Entry : std::filesystem::directory_iterator(NUV_CONTROL_POINTS))
    {
        if (Entry.path().extension() != ".csv")
        {
            continue;
        }
        TFile File = {Entry.path().filename().string(), {}};
        for (const fitpoints::TPoint& Point :
             fitpoints::ReadPoints(fitpoints::FileInput(Entry.path().string())).vPoints)
        {
            if (!Point.bCheck)
            {
                File.Set.vdX.push_back(Point.dX);
                File.Set.vdY.push_back(Point.dY);
                File.Set.vdXa.push_back(Point.dXa);
                File.Set.vdYa.push_back(Point.dYa);
            }
        }
        vFiles.push_back(File);
    }
    EXPECT_FALSE(vFiles.empty());
    return vFiles;
}

TSet Local(const TSet& a_Set)
{
    TSet Result = a_Set;
    TOrigins Origins;
    FindOrigins(Points(a_Set), Origins);
    ReducePoints(Points(a_Set), Origins, Result.vdX.data(), Result.vdY.data(), Result.vdXa.data(), Result.vdYa.data());
    return Result;
}

double ReferenceSum(const TSet& a_Set, int a_iKind)
{
    std::vector<nuv_reference::TControlPoint> vPoints;
    for (std::size_t i = 0; i < a_Set.vdX.size(); ++i)
    {
        vPoints.push_back({a_Set.vdX[i], a_Set.vdY[i], a_Set.vdXa[i], a_Set.vdYa[i]});
    }
    long double dSum = 0;
    for (const auto& R : nuv_reference::ReferenceResiduals(KIND_NAMES[a_iKind], false, vPoints))
    {
        dSum += R[0] * R[0] + R[1] * R[1];
    }
    return static_cast<double>(dSum);
}

TEST(RealFiles, EveryFitIsTheLeastSquaresFit)
{
    for (const TFile& File : Files())
    {
        const TSet Set = Local(File.Set);
        for (const nuv::enumMethodUsed Kind : Kinds)
        {
            TKindFit Fit;
            if (static_cast<int>(Set.vdX.size()) > LeastPoints(Kind))
            {
                ASSERT_EQ(REASON_NONE, FitKind(Points(Set), Kind, false, Fit)) << File.szName;
                const double dExpected = ReferenceSum(Set, Kind);
                EXPECT_NEAR(dExpected, Fit.dSumOfSquares, 1e-9 * dExpected) << File.szName << ", " << KIND_NAMES[Kind];
                EXPECT_EQ(1, Fit.bConverged) << File.szName;
            }
        }
    }
}

// Above 100 points the omographic leave-one-out residuals come from the derivatives at the fit.
TEST(RealFiles, ManyPointsAreLeftOutByDerivativesAlmostAsByFits)
{
    int iFiles = 0;
    for (const TFile& File : Files())
    {
        const TSet Set = Local(File.Set);
        const std::size_t n = Set.vdX.size();
        if (n <= 100)
        {
            continue;
        }
        TKindFit Fit;
        std::vector<double> vdX(n), vdY(n), vdDrops(n);
        ASSERT_EQ(REASON_NONE, FitKind(Points(Set), nuv::METHOD_OMOGRAPHIC, false, Fit));
        ASSERT_EQ(REASON_NONE, LeaveOneOut(Points(Set), Fit, vdX.data(), vdY.data(), vdDrops.data()));
        double dSum = 0, dReal = 0;
        for (std::size_t i = 0; i < n; ++i)
        {
            TKindFit Others;
            ASSERT_EQ(REASON_NONE, FitKind(Points(Without(Set, i)), nuv::METHOD_OMOGRAPHIC, false, Others));
            const TVector Image = ImageOf(Others.Coefs, Set.vdX[i], Set.vdY[i]);
            dReal += std::pow(Image.dX - Set.vdXa[i], 2) + std::pow(Image.dY - Set.vdYa[i], 2);
            dSum += vdX[i] * vdX[i] + vdY[i] * vdY[i];
        }
        EXPECT_NEAR(1, std::sqrt(dSum / dReal), 1e-3) << File.szName;
        ++iFiles;
    }
    EXPECT_GT(iFiles, 0);
}

// A blunder of 1000 times the RMS in one coordinate of any point is suspect under the kind that is taken without it.
TEST(RealFiles, ALargeBlunderIsNamed)
{
    for (const TFile& File : Files())
    {
        const std::size_t n = File.Set.vdX.size();
        TJudgement Result;
        std::vector<TPointJudgement> vPoints(n);
        ASSERT_EQ(REASON_NONE, Judge(Points(File.Set), nullptr, {ASK_AUTO, 0, 0, 0, 0}, Result, vPoints.data()));
        if (n < 8)
        {
            continue; // the points that are left say too little
        }
        TSet Set = File.Set;
        Set.vdXa[n / 2] += 1000 * Result.dRms;
        const TOptions Options = {static_cast<enumMethod>(Result.Fit.Kind), 0, 0, 0, USUAL_LEVEL};
        ASSERT_EQ(REASON_NONE, Judge(Points(Set), nullptr, Options, Result, vPoints.data()));
        EXPECT_EQ(1, vPoints[n / 2].bSuspect) << File.szName;
    }
}

} // namespace
} // namespace judgement_tests
