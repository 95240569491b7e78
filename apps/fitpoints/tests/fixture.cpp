// fixture.cpp: the test fixture that runs fitpoints as a process, and the control points that several suites use.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

namespace fitpoints_tests {

void FitPoints::SetUp()
{
    std::string szPattern = (fs::temp_directory_path() / "fitpoints-test-XXXXXX").string();
    ASSERT_NE(nullptr, mkdtemp(szPattern.data()));
    Directory = szPattern;
    ASSERT_EQ(0, chdir(szPattern.c_str()));
}

void FitPoints::TearDown()
{
    ASSERT_EQ(0, chdir("/"));
    fs::remove_all(Directory);
}

void FitPoints::Write(const std::string& a_szName, const std::string& a_szText) const
{
    std::ofstream(Directory / a_szName, std::ios::binary) << a_szText;
}

TRun FitPoints::Run(const std::vector<std::string>& a_vszArguments, const std::string& a_szOut,
                    const std::string& a_szPath) const
{
    // Beside the directory, so that the files are not among those of the test.
    const fs::path Out = a_szOut.empty() ? fs::path(Directory.string() + ".out") : fs::path(a_szOut);
    const fs::path Error = Directory.string() + ".err";
    const pid_t iChild = Start(a_vszArguments, Out, Error, a_szPath);
    int iStatus = 0;
    waitpid(iChild, &iStatus, 0);
    const TRun Result = {WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1, a_szOut.empty() ? Contents(Out) : "",
                         Contents(Error)};
    fs::remove(Error);
    if (a_szOut.empty())
    {
        fs::remove(Out);
    }
    return Result;
}

// Replaces this process by the program.
[[noreturn]] static void Execute(std::vector<std::string>& a_vszArguments, const fs::path& a_Out,
                                 const fs::path& a_Error, const std::string& a_szPath)
{
    dup2(open(a_Out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666), STDOUT_FILENO);
    dup2(open(a_Error.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666), STDERR_FILENO);
    if (!a_szPath.empty())
    {
        setenv("PATH", a_szPath.c_str(), 1);
    }
    std::string szProgram = NUV_FITPOINTS;
    std::vector<char*> vszCommand = {szProgram.data()};
    for (std::string& szArgument : a_vszArguments)
    {
        vszCommand.push_back(szArgument.data());
    }
    vszCommand.push_back(nullptr);
    execv(szProgram.c_str(), vszCommand.data());
    _exit(127);
}

pid_t FitPoints::Start(std::vector<std::string> a_vszArguments, const fs::path& a_Out, const fs::path& a_Error,
                       const std::string& a_szPath) const
{
    const pid_t iChild = fork();
    if (iChild == 0)
    {
        if (Prepare)
        {
            Prepare();
        }
        Execute(a_vszArguments, a_Out, a_Error, a_szPath);
    }
    return iChild;
}

json FitPoints::RunJson(std::vector<std::string> a_vszArguments) const
{
    a_vszArguments.push_back("--json");
    const TRun Result = Run(a_vszArguments);
    EXPECT_EQ(0, Result.iCode) << Result.szError;
    return Result.iCode == 0 ? json::parse(Result.szOut) : json();
}

std::set<std::string> FitPoints::Files() const
{
    std::set<std::string> Names;
    for (const auto& Entry : fs::directory_iterator(Directory))
    {
        Names.insert(Entry.path().filename().string());
    }
    return Names;
}

void FitPoints::ExpectFailure(const std::vector<std::string>& a_vszArguments, const std::string& a_szLine,
                              const std::string& a_szPath) const
{
    const std::set<std::string> Before = Files();
    const TRun Result = Run(a_vszArguments, "", a_szPath);
    EXPECT_EQ(2, Result.iCode);
    EXPECT_EQ("", Result.szOut);
    EXPECT_EQ("fitpoints: " + a_szLine + "\n", Result.szError);
    EXPECT_EQ(Before, Files());
}

void FitPoints::WriteGnuplot(const std::string& a_szScript) const
{
    fs::create_directory("bin");
    Write("bin/gnuplot", "#!/bin/sh\n" + a_szScript);
    fs::permissions("bin/gnuplot", fs::perms::owner_all);
}

std::string Contents(const fs::path& a_Path)
{
    std::ifstream Stream(a_Path, std::ios::binary);
    return {std::istreambuf_iterator<char>(Stream), {}};
}

std::array<double, 2> Transform(const TCoefs& a_Coefs, double a_dX, double a_dY)
{
    const TCoefs& C = a_Coefs;
    const double dW = C[6] * a_dX + C[7] * a_dY + 1;
    return {(C[0] * a_dX + C[1] * a_dY + C[2]) / dW, (C[3] * a_dX + C[4] * a_dY + C[5]) / dW};
}

std::vector<TPoint> Images(const TCoefs& a_Coefs, double a_dX, double a_dY)
{
    std::vector<TPoint> vPoints;
    for (const auto& P : {std::array<double, 2>{0, 0}, {1000, 16}, {984, 1000}, {8, 960}, {512, 256}, {256, 768}})
    {
        const auto Image = Transform(a_Coefs, a_dX + P[0], a_dY + P[1]);
        vPoints.push_back({a_dX + P[0], a_dY + P[1], Image[0], Image[1]});
    }
    return vPoints;
}

std::string Csv(const std::vector<TPoint>& a_vPoints)
{
    std::string szText = Header;
    for (const TPoint& P : a_vPoints)
    {
        szText += Digits(P[0]) + "," + Digits(P[1]) + "," + Digits(P[2]) + "," + Digits(P[3]) + "\n";
    }
    return szText;
}

std::string Digits(double a_dValue)
{
    char szText[64];
    std::snprintf(szText, sizeof szText, "%.17g", a_dValue);
    return szText;
}

} // namespace fitpoints_tests
