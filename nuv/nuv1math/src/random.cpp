// random.cpp: uniform and normal pseudo-random numbers.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "random.h"

#include "fast/forms.h"
#include "fast/randomfast.h"
#include "functionsimp.h"
#include "nuv1math.h"

#include <math.h>

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Random numbers
//
// Model      Three linear congruential generators ix <- (a ix + c) mod m.
// Method     Uniform: the first generator gives the coarse part of a value, and the second gives the part between its
//            steps. The third generator chooses an entry of a table of 97 values, which is drawn and then replaced
//            (Bays-Durham shuffle). Normal: polar method, which makes two numbers at a time. The second one waits for
//            the next call.
// Special    The distance of a seed from the first increment can be negative, or overflow. The unsigned arithmetic that
//            follows brings every state below its modulus.
// Order      All integer arithmetic is unsigned, with 32 bits. Once the states are below their moduli, no product
//            overflows (7141 * 259199 is below 2^31).
// Faster     fast/randomfast.h.
// Source     C. Bays, S. D. Durham, Improving a poor random number generator, ACM Trans. Math. Softw. 2 (1976) 59-64;
//            G. Marsaglia, T. A. Bray, A convenient method for generating normal variables, SIAM Rev. 6 (1964) 260-264.
// ---------------------------------------------------------------------------------------------------------------------

static const unsigned int MULTIPLIER_1 = 7141;
static const unsigned int INCREMENT_1 = 54773;
static const unsigned int MODULUS_1 = 259200;
static const unsigned int MULTIPLIER_2 = 8121;
static const unsigned int INCREMENT_2 = 28411;
static const unsigned int MODULUS_2 = 134456;
static const unsigned int MULTIPLIER_3 = 4561;
static const unsigned int INCREMENT_3 = 51349;
static const unsigned int MODULUS_3 = 243000;
static const double SCALE_1 = 3.858024691358025e-06; // the double nearest to 1/259200
static const double SCALE_2 = 7.437377283274826e-06; // the double nearest to 1/134456

enum
{
    SHUFFLED = 97 // entries 1 to 97 of the table are drawn from; entry 0 is filled and never read
};

namespace {

// The state of the generator. There is one for the process, without a lock. It is the only data that the library itself
// writes between calls. It is zero until the library's entry seeds it at load.
struct TRandomState
{
    unsigned int ix1;
    unsigned int ix2;
    unsigned int ix3;
    double shuffleTable[SHUFFLED + 1];
    bool hasSpareNormal;
    double spareNormal; // the second normal number of a pair; a new seed does not drop it
};

} // namespace

static TRandomState g_State;

// A step of a generator whose state is below its modulus.
static NUV_HOST_INLINE void Advance(unsigned int a_iMultiplier, unsigned int a_iIncrement, unsigned int a_iModulus,
                                    unsigned int& ix)
{
    ix = PRODUCTS_PAY ? AdvanceByProduct(a_iMultiplier, a_iIncrement, a_iModulus, ix)
                      : (a_iMultiplier * ix + a_iIncrement) % a_iModulus;
}

// Advances the first two generators and combines them into a value in [0, 1).
static double NextEntry()
{
    Advance(MULTIPLIER_1, INCREMENT_1, MODULUS_1, g_State.ix1);
    Advance(MULTIPLIER_2, INCREMENT_2, MODULUS_2, g_State.ix2);
    return (static_cast<double>(g_State.ix2) * SCALE_2 + static_cast<double>(g_State.ix1)) * SCALE_1;
}

void SetRandomSeed(int a_iSeed)
{
    // The subtraction is unsigned because the difference can overflow. The remainder is that of the signed difference;
    // every supported compiler truncates it towards zero.
    const int iDistance = static_cast<int>(INCREMENT_1 - static_cast<unsigned int>(a_iSeed));
    g_State.ix1 = static_cast<unsigned int>(iDistance % static_cast<int>(MODULUS_1));
    g_State.ix1 = (MULTIPLIER_1 * g_State.ix1 + INCREMENT_1) % MODULUS_1; // the remainder can be negative
    g_State.ix2 = g_State.ix1 % MODULUS_2;
    Advance(MULTIPLIER_1, INCREMENT_1, MODULUS_1, g_State.ix1);
    g_State.ix3 = g_State.ix1 % MODULUS_3;
    for (int i = 0; i <= SHUFFLED; ++i)
    {
        g_State.shuffleTable[i] = NextEntry();
    }
}

double Rand()
{
    const double dNext = NextEntry();
    Advance(MULTIPLIER_3, INCREMENT_3, MODULUS_3, g_State.ix3);
    double& dEntry = g_State.shuffleTable[1 + SHUFFLED * g_State.ix3 / MODULUS_3];
    const double dDrawn = dEntry;
    dEntry = dNext;
    return dDrawn;
}

double Rand(double a_dLow, double a_dHigh)
{
    const double dUniform = Rand();
    return (a_dHigh - a_dLow) * dUniform + a_dLow;
}

double Randn()
{
    if (g_State.hasSpareNormal)
    {
        g_State.hasSpareNormal = false;
        return g_State.spareNormal;
    }
    double dX;
    double dY;
    double dS;
    do // draws until the point lies in the unit disc and is not its centre
    {
        dX = 2.0 * Rand() - 1.0;
        dY = 2.0 * Rand() - 1.0;
        dS = dY * dY + dX * dX;
    } while (!IsSmaller(dS, 1.0) || IsZero(dS)); // unreachable: no seed is known that draws 1/2 twice in a row
    const double dFactor = SquareRoot(Quotient(log(dS), dS) * -2.0);
    g_State.spareNormal = dFactor * dX;
    g_State.hasSpareNormal = true;
    return dFactor * dY;
}

double Randn(double a_dMean, double a_dSigma)
{
    return Randn() * a_dSigma + a_dMean;
}

// ---------------------------------------------------------------------------------------------------------------------
// Seeding at load
// ---------------------------------------------------------------------------------------------------------------------

static const int SEED_AT_LOAD = -1; // so every process starts with the same sequence

void SeedAtLoad()
{
    SetRandomSeed(SEED_AT_LOAD);
}

// A Windows DLL is seeded by its entry in module.cpp. Elsewhere the loader calls this function. It stands beside the
// state, because a linker takes both or neither from the static library. The priority is the first that programs may
// use, so the objects of a program that is linked with the static library find the generator seeded.
#if defined(__GNUC__) && (!defined(_WIN32) || defined(NUV1MATH_STATIC))
__attribute__((constructor(101))) static void SeedBeforeMain() // equivalent: any priority will do in a shared library
{
    SeedAtLoad();
}
#elif !defined(_WIN32) || defined(NUV1MATH_STATIC)
#error "random.cpp does not know how to run code at load with this compiler"
#endif

} // namespace nuv
