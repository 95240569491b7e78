// fixture.h: the test fixture that runs fitpoints as a process, and the control points that several suites use.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_TESTS_FIXTURE_H
#define NUV_FITPOINTS_TESTS_FIXTURE_H

#include <array>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json_fwd.hpp>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

namespace fitpoints_tests {

namespace fs = std::filesystem;
using nlohmann::json;

struct TRun
{
    int iCode; // exit code; -1 if a signal ended the process
    std::string szOut, szError;
};

// Every test works in a new directory, which is also the working directory of the program.
class FitPoints : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    void Write(const std::string& a_szName, const std::string& a_szText) const;

    // Runs the program to its end. Its standard output goes to the file a_szOut; if that is empty, the result has it. A
    // nonempty a_szPath replaces PATH.
    TRun Run(const std::vector<std::string>& a_vszArguments, const std::string& a_szOut = "",
             const std::string& a_szPath = "") const;

    // Starts the program and does not wait for it.
    pid_t Start(std::vector<std::string> a_vszArguments, const fs::path& a_Out, const fs::path& a_Error,
                const std::string& a_szPath) const;

    // The parsed output with --json; the run must succeed.
    json RunJson(std::vector<std::string> a_vszArguments) const;

    // The names in the directory.
    std::set<std::string> Files() const;

    // Expects that the run fails with exit code 2 and exactly this line of error, prints nothing, and leaves the set of
    // files unchanged.
    void ExpectFailure(const std::vector<std::string>& a_vszArguments, const std::string& a_szLine,
                       const std::string& a_szPath = "") const;

    // Writes a shell script bin/gnuplot. A test that puts bin into PATH replaces gnuplot by it.
    void WriteGnuplot(const std::string& a_szScript) const;

    fs::path Directory;
    std::function<void()> Prepare; // called in the new process before it becomes the program
};

using FitPointsSlow = FitPoints; // CTest labels these tests "slow"

std::string Contents(const fs::path& a_Path);

// x, y of the source, X, Y of the target.
using TPoint = std::array<double, 4>;

// A ... H of X = (A x + B y + C)/W, Y = (D x + E y + F)/W, W = G x + H y + 1.
using TCoefs = std::array<double, 8>;

std::array<double, 2> Transform(const TCoefs& a_Coefs, double a_dX, double a_dY);

// Six points in a square of 1000 units whose lower left corner is (a_dX, a_dY), with their images.
std::vector<TPoint> Images(const TCoefs& a_Coefs, double a_dX = 0, double a_dY = 0);

// The points as a CSV file.
std::string Csv(const std::vector<TPoint>& a_vPoints);

// 17 significant digits, from which the double can be read back.
std::string Digits(double a_dValue);

// Coefficients of few binary digits. The points of Images(Affine) are exact.
constexpr TCoefs Affine = {1.25, -0.375, 500000, 0.5, 2, 4500000, 0, 0};
constexpr TCoefs Omographic = {1.25, -0.375, 500, 0.5, 2, 4500, 0x1p-13, -0x1p-14};

inline const std::string Header = "x,y,X,Y\n";

// A square of 100 units. The target of the corner (100, 100) is 4 units off in X. An affine fit leaves 1 unit of this
// at each corner: dX, computed less given, is -1, 1, -1, 1 around the square and -1 at the bad corner. The sum of
// squares is 4, with 8 - 6 = 2 degrees of freedom.
inline const std::string Square = Header + "0,0,0,0\n100,0,100,0\n100,100,104,100\n0,100,0,100\n";

} // namespace fitpoints_tests

#endif // NUV_FITPOINTS_TESTS_FIXTURE_H
