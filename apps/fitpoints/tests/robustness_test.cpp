// robustness_test.cpp: wrong use, limits of memory, time and files, and signals.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fixture.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <optional>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fitpoints_tests {
namespace {

TEST_F(FitPoints, WrongUseIsRefusedWithOneLine)
{
    Write("p.csv", Square);
    ExpectFailure({}, "FILE is required (see --help)");
    ExpectFailure({"p.csv", "--nonsense"}, "The following argument was not expected: --nonsense (see --help)");
    for (const char* const szLevel : {"0", "1", "-0.1", "nan"})
    {
        ExpectFailure({"p.csv", "--level", szLevel}, "--level: not between 0 and 1 (see --help)");
    }
    ExpectFailure({"p.csv", "--level", "low"}, "Could not convert: --level = low (see --help)");
    ExpectFailure({"p.csv", "--method", "cubic"},
                  "--method: cubic not in {auto,richest,conformal,affine,omographic} (see --help)");
    ExpectFailure({"p.csv", "--plot", "p.pdf"}, "--plot: 'p.pdf' ends neither in .svg nor in .png");
    ExpectFailure({"no.csv", "--plot", "p.pdf"}, "--plot: 'p.pdf' ends neither in .svg nor in .png");
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool IsMemoryCounted = false; // the sanitizer reserves more address space than any limit allows
#else
constexpr bool IsMemoryCounted = true;
#endif
constexpr rlim_t MiB = 1024 * 1024;

void Limit(int a_iResource, rlim_t a_iValue)
{
    if (a_iResource != RLIMIT_AS || IsMemoryCounted)
    {
        const rlimit Value = {a_iValue, a_iValue};
        setrlimit(static_cast<__rlimit_resource>(a_iResource), &Value);
    }
}

// A named pipe. A process writes a beginning into it, and then the same text again and again until nobody reads it.
class TEndlessFile
{
public:
    TEndlessFile(const std::string& a_szName, const std::string& a_szBegin, std::string a_szText)
    {
        EXPECT_EQ(0, mkfifo(a_szName.c_str(), 0600));
        while (a_szText.size() < 0x10000)
        {
            a_szText += a_szText;
        }
        m_iWriter = fork();
        if (m_iWriter == 0)
        {
            std::signal(SIGPIPE, SIG_DFL);
            const int iPipe = open(a_szName.c_str(), O_WRONLY);
            ssize_t iWritten = write(iPipe, a_szBegin.data(), a_szBegin.size());
            while (iWritten >= 0)
            {
                iWritten = write(iPipe, a_szText.data(), a_szText.size());
            }
            _exit(1);
        }
    }

    ~TEndlessFile()
    {
        kill(m_iWriter, SIGKILL);
        waitpid(m_iWriter, nullptr, 0);
    }

    TEndlessFile(const TEndlessFile&) = delete;
    TEndlessFile& operator=(const TEndlessFile&) = delete;

private:
    pid_t m_iWriter;
};

TEST_F(FitPointsSlow, EndlessInputEndsAtALimitWithLittleMemory)
{
    const std::string szQgis = "mapX,mapY,sourceX,sourceY,enable\n";
    const struct
    {
        std::string szName, szBegin, szText, szLine;
    } Cases[] = {{"points", Header, "1,2,3,4\n", ":1000002: more than 1000000 points"},
                 {"disabled", szQgis, "1,2,3,4,0\n", ":1000002: more than 1000000 points"},
                 {"comments", "", "# comment\n", ":26843546: the file is longer than 256 MiB"},
                 {"blank", Header, "                \n", ":15790322: the file is longer than 256 MiB"},
                 {"zeros", "", std::string(64, '\0'), ":1: the line is longer than 64 KiB"},
                 {"field", Header, "1", ":2: the line is longer than 64 KiB"},
                 {"quoted", Header + "\"", "\"\"", ":2: the line is longer than 64 KiB"},
                 {"headers", Header, Header, ":2: column x: 'x' is not a decimal number"}};
    Prepare = []
    {
        Limit(RLIMIT_AS, 160 * MiB); // a million points take 77 MiB
        Limit(RLIMIT_CPU, 60);
    };
    for (const auto& Case : Cases)
    {
        SCOPED_TRACE(Case.szName);
        const TEndlessFile File(Case.szName, Case.szBegin, Case.szText);
        ExpectFailure({Case.szName, "--world", "p.wld"}, Case.szName + Case.szLine);
    }
}

TEST_F(FitPoints, AGigabyteInOneLineIsRefusedAtOnce)
{
    Prepare = []
    {
        Limit(RLIMIT_AS, 64 * MiB);
        Limit(RLIMIT_CPU, 2);
    };
    Write("p.csv", "");
    Write("q.csv", Header);
    for (const char* const szFile : {"p.csv", "q.csv"})
    {
        fs::resize_file(szFile, 1024 * MiB); // zeros that take no space on the disk
    }
    ExpectFailure({"p.csv"}, "p.csv:1: the line is longer than 64 KiB");
    ExpectFailure({"q.csv"}, "q.csv:2: the line is longer than 64 KiB");
}

// The file has a million points with long names, nearly the greatest size that is read.
TEST_F(FitPointsSlow, TheGreatestFileTakesTheMemoryThatIsPromisedAndWithLessFailsWhole)
{
    if (!IsMemoryCounted)
    {
        GTEST_SKIP() << "memory is not counted under the address sanitizer";
    }
    {
        std::ofstream Stream("p.csv", std::ios::binary);
        Stream << "name,x,y,X,Y\n";
        const std::string szName(190, 'n');
        for (int i = 0; i < 1000000; ++i)
        {
            Stream << szName << "," << i << ".123456789012," << i * 7 % 97 << ".123456789," << i << ".98765432101,"
                   << i * 7 % 97 << ".000000001\n";
        }
    }
    EXPECT_LT(fs::file_size("p.csv"), 256 * MiB);
    EXPECT_GT(fs::file_size("p.csv"), 240 * MiB);
    Prepare = [] { Limit(RLIMIT_AS, 1024 * MiB); };
    const TRun Result = Run({"p.csv", "--json"}, "/dev/null");
    EXPECT_EQ(0, Result.iCode) << Result.szError;
    Prepare = [] { Limit(RLIMIT_AS, 400 * MiB); }; // enough to read the points, but not to judge them
    Write("p.wld", "old world");
    ExpectFailure({"p.csv", "--json", "--method", "affine", "--world", "p.wld"}, "not enough memory");
    EXPECT_EQ("old world", Contents("p.wld"));
}

TEST_F(FitPoints, ALimitOfTheSizeOfFilesIsAnErrorOfWriting)
{
    // The coefficients have many digits, so the world file has more than 60 bytes.
    Write("p.csv", Header + "0,0,0.1,0.7\n1,0,1.3,0.9\n1,1,1.4,2.3\n0,1,0.3,1.7\n");
    Write("p.wld", "old world");
    Write("p.svg", "old picture");
    const std::vector<std::string> vszWorld = {"p.csv", "--method", "affine", "--world", "p.wld"};
    const std::vector<std::string> vszPlot = {"p.csv", "--plot", "p.svg"};
    Prepare = [] { Limit(RLIMIT_FSIZE, 60); };
    ExpectFailure(vszWorld, "p.wld: cannot be written: File too large");
    Prepare = [] { Limit(RLIMIT_FSIZE, 200); };
    ExpectFailure(vszPlot, "temporary file: cannot be written: File too large");
    Prepare = [] { Limit(RLIMIT_FSIZE, 6144); }; // room for the script of gnuplot, but not for its picture
    const TRun Result = Run(vszPlot);
    EXPECT_EQ(2, Result.iCode);
    EXPECT_EQ(0u, Result.szError.find("fitpoints: p.svg: gnuplot failed to draw it")) << Result.szError;
    EXPECT_EQ((std::set<std::string>{"p.csv", "p.svg", "p.wld"}), Files());
    EXPECT_EQ("old world", Contents("p.wld"));
    EXPECT_EQ("old picture", Contents("p.svg"));
}

TEST_F(FitPoints, WhatMayNotBeReadOrWrittenIsRefused)
{
    Prepare = [] // without these capabilities root, too, obeys permissions
    {
        prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
        prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
    };
    Write("p.csv", Square);
    Write("secret.csv", Square);
    Write("locked.wld", "old world");
    fs::create_directory("d");
    Write("d/p.wld", "old world");
    fs::permissions("secret.csv", fs::perms::none);
    fs::permissions("locked.wld", fs::perms::owner_read);
    fs::permissions("d", fs::perms::owner_read | fs::perms::owner_exec);
    ExpectFailure({"secret.csv"}, "secret.csv: cannot be read: Permission denied");
    for (const char* const szWorld : {"locked.wld", "d/p.wld", "d/new.wld"})
    {
        ExpectFailure({"p.csv", "--method", "affine", "--world", szWorld},
                      std::string(szWorld) + ": cannot be written: Permission denied");
    }
    fs::permissions("d", fs::perms::owner_all);
    EXPECT_EQ("old world", Contents("locked.wld"));
    EXPECT_EQ("old world", Contents("d/p.wld"));
    EXPECT_FALSE(fs::exists("d/new.wld"));
}

// The program with a terminal as its standard error, and a fake gnuplot.
class OnTerminal : public FitPoints
{
protected:
    // The fake gnuplot runs these commands before it draws.
    pid_t StartOnTerminal(const std::string& a_szCommands)
    {
        Write("p.csv", Square);
        WriteGnuplot("cat >/dev/null; " + a_szCommands + "; echo '<?xml </svg>'\n");
        EXPECT_EQ(0, openpty(&iTerminal, &iProgramSide, nullptr, nullptr, nullptr));
        fcntl(iTerminal, F_SETFL, O_NONBLOCK);
        char szName[64] = {};
        EXPECT_EQ(0, ttyname_r(iProgramSide, szName, sizeof szName));
        return Start({"p.csv", "--plot", "p.svg", "--method", "affine"}, "/dev/null", szName,
                     (Directory / "bin").string() + ":/usr/bin:/bin");
    }

    // What the program has written since the last call.
    std::string NewText() const
    {
        std::string szText;
        char szPart[256];
        for (ssize_t i = read(iTerminal, szPart, sizeof szPart); i > 0; i = read(iTerminal, szPart, sizeof szPart))
        {
            szText.append(szPart, static_cast<std::size_t>(i));
        }
        return szText;
    }

    // Waits for the end of the program. Returns the rest of what it has written.
    std::string TextUntilEnd(pid_t a_iProgram)
    {
        int iStatus = 0;
        waitpid(a_iProgram, &iStatus, 0);
        EXPECT_TRUE(WIFEXITED(iStatus) && WEXITSTATUS(iStatus) == 0);
        const std::string szText = NewText();
        close(iTerminal);
        close(iProgramSide);
        return szText;
    }

private:
    int iTerminal = -1;
    int iProgramSide = -1;
};

// The fake gnuplot goes on when the progress was seen, or when the test has ended without seeing any.
TEST_F(OnTerminal, ALongRunShowsItsProgressAndClearsTheLine)
{
    const auto Begin = std::chrono::steady_clock::now();
    const pid_t iProgram = StartOnTerminal("while [ -e p.csv ] && [ ! -e seen ]; do sleep 0.1; done");
    std::string szText;
    for (int i = 0; i < 6000 && szText.empty(); ++i)
    {
        usleep(10000);
        szText = NewText();
    }
    EXPECT_LE(std::chrono::seconds(1), std::chrono::steady_clock::now() - Begin);
    Write("seen", "");
    szText += TextUntilEnd(iProgram);
    const std::string szClear = "\r\x1B[K";
    EXPECT_EQ(0u, szText.find(szClear + "fitpoints: drawing, ")) << szText;
    EXPECT_NE(std::string::npos, szText.find(" s" + szClear)) << szText;
    ASSERT_GT(szText.size(), szClear.size());
    EXPECT_EQ(szClear, szText.substr(szText.size() - szClear.size()));
}

// On a busy machine a run of a tenth of a second may take more than a second, and then it may show its progress.
TEST_F(OnTerminal, AShortRunShowsNothing)
{
    for (int i = 0; i < 100; ++i)
    {
        const auto Begin = std::chrono::steady_clock::now();
        const std::string szText = TextUntilEnd(StartOnTerminal("sleep 0.1"));
        if (std::chrono::steady_clock::now() - Begin < std::chrono::seconds(1))
        {
            EXPECT_EQ("", szText);
            return;
        }
    }
    FAIL() << "no run took less than a second";
}

TEST_F(FitPoints, NoProgressIsShownWhereNoTerminalIs)
{
    Write("p.csv", Square);
    WriteGnuplot("cat >/dev/null; sleep 1.5; echo '<?xml </svg>'\n");
    const TRun Result =
        Run({"p.csv", "--plot", "p.svg", "--method", "affine"}, "", (Directory / "bin").string() + ":/usr/bin:/bin");
    EXPECT_EQ(0, Result.iCode);
    EXPECT_EQ("", Result.szError);
}

// A signal stops the program while it waits for a gnuplot that does not end.
class StoppedFitPoints : public FitPoints
{
protected:
    // Starts the program, sends the signal and waits; returns the status of waitpid.
    int StopBy(int a_iSignal)
    {
        Write("p.csv", Square);
        Write("p.wld", "old world");
        Write("p.svg", "old picture");
        WriteGnuplot("echo $$ >../pid.tmp; mv ../pid.tmp ../pid; exec sleep 60\n");
        fs::create_directory("work");
        EXPECT_EQ(0, chdir("work"));
        const pid_t iProgram = Start({"../p.csv", "--method", "affine", "--world", "../p.wld", "--plot", "../p.svg"},
                                     "/dev/null", "/dev/null", (Directory / "bin").string() + ":/usr/bin:/bin");
        EXPECT_EQ(0, chdir(".."));
        for (int i = 0; i < 60000 && !fs::exists("pid"); ++i)
        {
            usleep(1000);
        }
        iGnuplot = std::stoi(Contents("pid"));
        Before = Files();
        kill(iProgram, a_iSignal);
        if (SecondAfter)
        {
            const auto End = std::chrono::steady_clock::now() + *SecondAfter;
            while (std::chrono::steady_clock::now() < End) // a sleep would take longer than this
            {}
            kill(iProgram, a_iSignal);
        }
        int iStatus = 0;
        if (waitpid(iProgram, &iStatus, IsSurvived ? WNOHANG : 0) == 0)
        {
            kill(iGnuplot, SIGKILL);
            waitpid(iProgram, &iStatus, 0);
        }
        return iStatus;
    }

    // Waits up to a minute for the end of gnuplot. A process that nobody has waited for is a zombie.
    bool IsGnuplotGone() const
    {
        for (int i = 0; i < 6000; ++i)
        {
            std::ifstream Status("/proc/" + std::to_string(iGnuplot) + "/stat");
            std::string szStatus; // stays empty also if the process ends between opening and reading
            std::getline(Status, szStatus);
            if (szStatus.empty() || szStatus.find(") Z ") != std::string::npos)
            {
                return true;
            }
            usleep(10000);
        }
        return false;
    }

    // The number of files with temporary names.
    static std::size_t Temporaries(const std::set<std::string>& a_Names)
    {
        return std::count_if(a_Names.begin(), a_Names.end(),
                             [](const std::string& a_szName) { return a_szName.find(".fitpoints-") == 0; });
    }

    void ExpectOldOutputs() const
    {
        EXPECT_EQ("old world", Contents("p.wld"));
        EXPECT_EQ("old picture", Contents("p.svg"));
    }

    std::set<std::string> Before; // the files at the time of the signal
    pid_t iGnuplot = 0;
    bool IsSurvived = false;
    std::optional<std::chrono::microseconds> SecondAfter; // the signal is sent again after this time
};

class EndingSignal : public StoppedFitPoints, public ::testing::WithParamInterface<int>
{
};

TEST_P(EndingSignal, LeavesTheOutputsAsTheyWereAndNothingElse)
{
    Prepare = [] { std::signal(GetParam(), SIG_DFL); }; // a shell lets its background jobs ignore some
    const int iStatus = StopBy(GetParam());
    ASSERT_TRUE(WIFSIGNALED(iStatus));
    EXPECT_EQ(GetParam(), WTERMSIG(iStatus));
    EXPECT_EQ(2u, Temporaries(Before));
    EXPECT_EQ(0u, Temporaries(Files()));
    EXPECT_TRUE(IsGnuplotGone());
    ExpectOldOutputs();
}

INSTANTIATE_TEST_SUITE_P(All, EndingSignal, ::testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGTERM));

// The second signal comes while the first one is handled.
TEST_F(StoppedFitPoints, ByTwoQuickSignalsRemovesItsFiles)
{
    Prepare = [] { std::signal(SIGINT, SIG_DFL); };
    for (int i = 0; i < 60; ++i)
    {
        fs::remove("pid");
        fs::remove_all("bin");
        fs::remove_all("work");
        SecondAfter = std::chrono::microseconds(3 * i);
        EXPECT_TRUE(WIFSIGNALED(StopBy(SIGINT)));
        ASSERT_EQ(0u, Temporaries(Files())) << "second signal after " << 3 * i << " microseconds";
        ASSERT_TRUE(IsGnuplotGone());
    }
}

TEST_F(StoppedFitPoints, BySigkillLeavesTheOutputsAsTheyWere)
{
    EXPECT_TRUE(WIFSIGNALED(StopBy(SIGKILL)));
    kill(iGnuplot, SIGKILL); // which the program could not end
    ExpectOldOutputs();
}

TEST_F(StoppedFitPoints, NotByASignalThatItWasToldToIgnore)
{
    Prepare = [] { std::signal(SIGHUP, SIG_IGN); };
    IsSurvived = true;
    const int iStatus = StopBy(SIGHUP);
    ASSERT_TRUE(WIFEXITED(iStatus));
    EXPECT_EQ(2, WEXITSTATUS(iStatus)); // because the test kills gnuplot afterwards
    EXPECT_EQ(0u, Temporaries(Files()));
    ExpectOldOutputs();
}

} // namespace
} // namespace fitpoints_tests
