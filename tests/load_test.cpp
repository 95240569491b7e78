// load_test.cpp: what the library does when it is loaded into a process that is not linked with it.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "support/expect.h"
#include "support/random_sequences.h"
#include "support/shared_library.h"

namespace {

using namespace nuv_tests;
using TValues = std::vector<double>;

constexpr int Draws = 100;

// The loaded library. Each object of this class loads it once more.
class TLibrary
{
public:
    TLibrary() : m_pHandle(LoadSharedLibrary(NUV1MATH_LIBRARY))
    {
        if (m_pHandle == nullptr)
        {
            throw std::runtime_error("cannot load the library");
        }
    }

    TLibrary(const TLibrary&) = delete;
    TLibrary& operator=(const TLibrary&) = delete;

    ~TLibrary()
    {
        UnloadSharedLibrary(m_pHandle);
    }

    // The next number of Rand() of the library.
    TValues Draw(int a_iCount) const
    {
        using TRand = double (*)();
        const auto Rand = reinterpret_cast<TRand>(FindFunction(m_pHandle, "_ZN3nuv4RandEv"));
        if (Rand == nullptr)
        {
            throw std::runtime_error("the library has no nuv::Rand()");
        }
        TValues vdDrawn(a_iCount);
        for (double& dValue : vdDrawn)
        {
            dValue = Rand();
        }
        return vdDrawn;
    }

private:
    void* m_pHandle;
};

bool IsLoaded()
{
    return IsSharedLibraryLoaded(NUV1MATH_LIBRARY);
}

// a_iCount draws from number a_iFirst on of the sequence of seed -1.
TValues Expected(int a_iFirst, int a_iCount)
{
    const TValues vdAll = ReadRandomSequences().at(-1);
    return TValues(vdAll.begin() + a_iFirst, vdAll.begin() + a_iFirst + a_iCount);
}

TEST(Load, ThisProcessIsNotLinkedWithTheLibrary)
{
    EXPECT_FALSE(IsLoaded());
}

TEST(Load, SeedsWithMinusOne)
{
    const TLibrary Library;
    EXPECT_EQ(Expected(0, Draws), Library.Draw(Draws));
}

TEST(Load, ASecondLoadGoesOnWithTheSequence)
{
    const TLibrary Library;
    EXPECT_EQ(Expected(0, Draws), Library.Draw(Draws));
    {
        const TLibrary Again;
        EXPECT_EQ(Expected(Draws, Draws), Again.Draw(Draws));
    }
    EXPECT_TRUE(IsLoaded());
    EXPECT_EQ(Expected(2 * Draws, Draws), Library.Draw(Draws)); // and so does an unload that is not the last
}

TEST(Load, ALoadAfterTheLastUnloadStartsAnew)
{
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_FALSE(IsLoaded());
        const TLibrary Library;
        EXPECT_EQ(Expected(0, Draws), Library.Draw(Draws));
    }
    EXPECT_FALSE(IsLoaded());
}

} // namespace
