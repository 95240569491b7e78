// image_test.cpp: address, entry and assertion report of the image, and the files that the loader refuses.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "coredll.h"
#include "forward.h"
#include "nuv1math.h"
#include "support/child_process.h"
#include "support/expect.h"
#include "support/random_sequences.h"

#include <cstdlib>
#include <stdexcept>

using namespace nuv;
using namespace nuv_tests;

namespace {

constexpr const char* RandName = "_ZN3nuv4RandEv";
constexpr const char* MicrosoftRandName = "?Rand@nuv@@YANXZ";
constexpr std::uint32_t SecondBase = 0x58000000; // addresses that these tests do not use otherwise
constexpr std::uint32_t RefusedBase = 0x5a000000;
constexpr int Draws = 100;

const char* Load(const std::string& a_szFile, std::uint32_t a_iBase, TImage& a_Image)
{
    return LoadImage(reinterpret_cast<const unsigned char*>(a_szFile.data()), a_szFile.size(), a_iBase, &a_Image);
}

// A second copy of the image with a state of its own. It is never unmapped.
const TImage& SecondImage()
{
    static const TImage Second = []
    {
        TImage Image;
        if (const char* const szRefused = Load(ImageFile(), SecondBase, Image))
        {
            throw std::runtime_error(szRefused);
        }
        return Image;
    }();
    return Second;
}

std::vector<double> Draw(const TImage& a_Image, int a_iCount)
{
    void* const pRand = FindExport(&a_Image, RandName);
    std::vector<double> vdDrawn(a_iCount);
    for (double& dValue : vdDrawn)
    {
        dValue = CallImage<double>(pRand);
    }
    return vdDrawn;
}

bool IsInside(const TImage& a_Image, const void* a_pAddress)
{
    const auto pAddress = static_cast<const unsigned char*>(a_pAddress);
    return pAddress >= a_Image.pBase && pAddress < a_Image.pBase + a_Image.iSize;
}

// The file with every occurrence of a text replaced by another text of the same length.
std::string Altered(const std::string& a_szFrom, const std::string& a_szTo)
{
    std::string szFile = ImageFile();
    std::size_t iAt = szFile.find(a_szFrom);
    EXPECT_NE(std::string::npos, iAt) << a_szFrom;
    for (; iAt != std::string::npos; iAt = szFile.find(a_szFrom, iAt + a_szTo.size()))
    {
        szFile.replace(iAt, a_szTo.size(), a_szTo);
    }
    return szFile;
}

// The file with one byte of its headers changed. The offset counts from the signature of the format.
std::string WithHeaderByte(std::size_t a_iOffset, unsigned char a_iByte)
{
    std::string szFile = ImageFile();
    szFile[szFile.find(std::string("PE\0\0", 4)) + a_iOffset] = static_cast<char>(a_iByte);
    return szFile;
}

void ExpectRefused(const char* a_szReason, const std::string& a_szFile)
{
    TImage Image;
    const char* const szRefused = Load(a_szFile, RefusedBase, Image);
    EXPECT_STREQ(a_szReason, szRefused);
}

std::string ReportOf(const std::string& a_szText)
{
    return "MessageBoxW: owner null, caption null, style 5, text:\n" + a_szText +
           "\nTerminateProcess: handle 0x42, code 0\n";
}

} // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Address
// ---------------------------------------------------------------------------------------------------------------------

TEST(Image, PrefersItsBase)
{
    EXPECT_EQ(0x10000000u, LoadedImage().iPreferredBase);
}

TEST(Image, LiesWhereItIsWanted)
{
    const char* const szBase = std::getenv("NUV_IMAGE_BASE");
    const std::uint32_t iExpected = szBase != nullptr ? std::stoul(szBase, nullptr, 16) : LoadedImage().iPreferredBase;
    EXPECT_EQ(iExpected, reinterpret_cast<std::uintptr_t>(LoadedImage().pBase));
}

TEST(Image, HasAddressesThatMoveWithIt)
{
    EXPECT_GT(LoadedImage().iMoved, 0u);
}

// The other tests call functions of the image, not functions that are linked into this program.
TEST(Image, HoldsTheFunctionsThatAreCalled)
{
    EXPECT_TRUE(IsInside(LoadedImage(), FindExport(&LoadedImage(), RandName)));
    EXPECT_EQ(FindExport(&LoadedImage(), RandName), FindExport(&LoadedImage(), MicrosoftRandName));
    EXPECT_EQ(nullptr, FindExport(&LoadedImage(), "_ZN3nuv4RandEx"));
    EXPECT_THROW(FindInImage("_ZN3nuv4RandEx"), std::runtime_error);
    EXPECT_FALSE(IsInside(LoadedImage(), reinterpret_cast<void*>(&LoadedImage)));
}

// ---------------------------------------------------------------------------------------------------------------------
// Entry
// ---------------------------------------------------------------------------------------------------------------------

TEST(Image, SeedsWithMinusOneWhenItIsLoadedAndAtNoOtherReason)
{
    const std::vector<double> vdExpected = ReadRandomSequences().at(-1);
    std::vector<double> vdDrawn = Draw(SecondImage(), Draws);
    for (const int iReason : {ENTRY_THREAD_ATTACH, ENTRY_THREAD_DETACH, ENTRY_PROCESS_DETACH})
    {
        EXPECT_EQ(1, CallEntry(&SecondImage(), iReason)) << iReason;
        const std::vector<double> vdNext = Draw(SecondImage(), Draws);
        vdDrawn.insert(vdDrawn.end(), vdNext.begin(), vdNext.end());
    }
    ASSERT_GE(vdExpected.size(), vdDrawn.size());
    EXPECT_EQ(std::vector<double>(vdExpected.begin(), vdExpected.begin() + vdDrawn.size()), vdDrawn);

    EXPECT_EQ(1, CallEntry(&SecondImage(), ENTRY_PROCESS_ATTACH));
    EXPECT_EQ(std::vector<double>(vdExpected.begin(), vdExpected.begin() + Draws), Draw(SecondImage(), Draws));
}

// ---------------------------------------------------------------------------------------------------------------------
// Report
// ---------------------------------------------------------------------------------------------------------------------

// The transformation is singular: it maps the plane to the line X = Y. The point is not on that line.
TEST(ImageReport, UntransformOfAnImpossiblePointShowsItsSiteAndEndsTheProcess)
{
    const TChildEnd End = RunInChild(
        []
        {
            const TAffineCoefs Coefs = {1.0, 1.0, 0.0, 1.0, 1.0, 0.0};
            double dX = Untouched;
            double dY = Untouched;
            AffineUntransform(Coefs, 1.0, 0.0, dX, dY);
        });
    EXPECT_EQ(ReportOf("nuv\\nuv1math\\src\\affine.cpp:443 assertion failure:\niResult!= RET_IMPOSSIBLE"), End.szText);
    EXPECT_EQ(0, End.iExitCode);
}

TEST(ImageReport, UntransformOfAPointOnTheImageLineComesBackWithTheOrigin)
{
    const TChildEnd End = RunInChild(
        []
        {
            const TAffineCoefs Coefs = {1.0, 1.0, 0.0, 1.0, 1.0, 0.0};
            double dX = Untouched;
            double dY = Untouched;
            AffineUntransform(Coefs, 1.0, 1.0, dX, dY);
            std::_Exit(SameBits(dX, 0.0) && SameBits(dY, 0.0) ? CameBack : 1);
        });
    EXPECT_EQ("", End.szText);
    EXPECT_EQ(CameBack, End.iExitCode);
}

TEST(ImageReport, AnAllocatorThatHandsOutTheCallersArrayIsReported)
{
    static double vdYa[] = {0.0, 1.0};
    const TChildEnd End = RunInChild(
        []
        {
            const double vdX[] = {0.0, 1.0};
            const double vdY[] = {0.0, 0.0};
            const double vdXa[] = {0.0, 1.0};
            enumMethodUsed Used = METHOD_OMOGRAPHIC;
            TOmographicParams Params;
            g_pAllocate = [](std::size_t) -> void* { return vdYa; };
            CalcCoefs(2, vdX, vdY, vdXa, vdYa, false, METHOD_CONFORMAL, Used, Params);
        });
    EXPECT_EQ(ReportOf("nuv\\nuv1math\\src\\omographic.cpp:172 assertion failure:\nvdYa != a_vdYa"), End.szText);
    EXPECT_EQ(0, End.iExitCode);
}

// The pages of the code are protected.
TEST(Image, CannotWriteItsCode)
{
    const TChildEnd End =
        RunInChild([] { *static_cast<volatile unsigned char*>(FindExport(&LoadedImage(), RandName)) = 0; });
    EXPECT_EQ(-1, End.iExitCode);
}

// ---------------------------------------------------------------------------------------------------------------------
// Refusals of the loader
// ---------------------------------------------------------------------------------------------------------------------

TEST(Loader, RefusesWhatIsNoImageForTheDevice)
{
    ExpectRefused("no image file", "");
    ExpectRefused("no image file", std::string(0x2000, '\0'));
    ExpectRefused("another machine", WithHeaderByte(4, 0xC2));
    ExpectRefused("no library", WithHeaderByte(23, 0x01));
    ExpectRefused("another subsystem", WithHeaderByte(92, 2));
}

TEST(Loader, RefusesImportsThatTheDeviceDoesNotHave)
{
    ExpectRefused("an import of an unknown function", Altered(std::string("fmod\0", 5), std::string("fmud\0", 5)));
    ExpectRefused("an import from an unknown library", Altered("COREDLL.dll", "CORELIB.dll"));
}

TEST(Loader, RefusesAddressesThatAreTaken)
{
    TImage Image;
    const auto iTaken = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(LoadedImage().pBase));
    EXPECT_STREQ("its addresses are not free", Load(ImageFile(), iTaken, Image));
}
