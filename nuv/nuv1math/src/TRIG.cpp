// TRIG.cpp: angles that solve linear and quadratic equations in the cosine and sine of one angle.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "functionsimp.h"
#include "nuv1math.h"

#include <math.h>

namespace nuv {

static const double ANGLE_PI = 3.141592653589793;       // the doubles nearest to pi
static const double ANGLE_HALF_PI = 1.5707963267948966; // pi/2
static const double ANGLE_3_HALF_PI = 4.71238898038469; // and 3 pi/2

// ---------------------------------------------------------------------------------------------------------------------
// Linear trigonometric equation
//
// Model      a cos(t) + b sin(t) + c = 0.
// Method     If a coefficient is 0: asin, acos or atan2. Otherwise u = tan(t/2) turns the equation into
//            (c - a) u^2 + 2 b u + (a + c) = 0.
// Special    If a = c, t = pi is a solution. It is u = infinity, which the quadratic does not have, so it is put first.
//            If a = b = 0, no angle or every angle is a solution. A tangent solution, with sin(t) = +-1 or cos(t) =
//            +-1, is found twice if only b is not 0, and once if only a is not 0. Comparisons are exact.
// Order      2 pi is added to an angle below 0. If two angles differ by pi, the second is computed from the first.
// ---------------------------------------------------------------------------------------------------------------------

enum
{
    LINEAR_ANGLES = 2,   // the most angles that SolveLinTrig writes
    QUADRATIC_ANGLES = 4 // the most angles that SolveQuadTrig writes
};

// The real roots of A u^2 + B u + C = 0, in no order. Returns their number, 0 to 2. If A = B = 0 it returns
// RET_IMPOSSIBLE (C is not 0) or RET_INDETERMINATE. With D = B^2 - 4AC one root is (-B -+ sqrt(D))/(2A) with the sign
// that does not cancel. The other root is C/A divided by the first, which is W. Kahan's form of the formula.
static int SolveQuadratic(double a_dA, double a_dB, double a_dC, double* a_pRoot1, double* a_pRoot2)
{
    if (IsZero(a_dA))
    {
        if (IsZero(a_dB)) // unreachable: callers pass a first or a second coefficient that is not 0
        {
            return !IsZero(a_dC) ? RET_IMPOSSIBLE : RET_INDETERMINATE;
        }
        *a_pRoot1 = -Quotient(a_dC, a_dB);
        return 1;
    }
    const double dDiscriminant = a_dB * a_dB - a_dA * a_dC * 4.0;
    if (dDiscriminant < 0.0)
    {
        return 0;
    }
    if (IsZero(dDiscriminant))
    {
        *a_pRoot1 = *a_pRoot2 = -Quotient(a_dB, a_dA * 2.0);
        return 1;
    }
    const double dRoot = SquareRoot(dDiscriminant);
    if (IsBelowZero(a_dB)) // a NaN makes both roots NaN in either branch
    {
        const double dSum = dRoot - a_dB;
        *a_pRoot1 = Quotient(dSum, a_dA * 2.0);
        *a_pRoot2 = Quotient(a_dC * 2.0, dSum);
    }
    else
    {
        const double dSum = dRoot + a_dB;
        *a_pRoot1 = -Quotient(dSum, a_dA * 2.0);
        *a_pRoot2 = Quotient(a_dC * -2.0, dSum);
    }
    return 2;
}

// The angle t in [0, 2 pi] for which tan(t/2) = a_dTangent.
static double AngleOfHalfTangent(double a_dTangent)
{
    const double dAngle = 2.0 * atan(a_dTangent);
    return IsBelowZero(dAngle) ? dAngle + ANGLE_2PI : dAngle;
}

// Stores an angle of [-pi, pi] and the one opposite to it, both in [0, 2 pi]. If the angle is negative, the greater one
// comes first, and the second is computed from it and not from the angle, which would round differently.
static void StoreOpposites(double a_dAngle, double* a_vdAngles)
{
    if (IsBelowZero(a_dAngle))
    {
        a_vdAngles[0] = a_dAngle + ANGLE_2PI;
        a_vdAngles[1] = a_vdAngles[0] - ANGLE_PI;
    }
    else
    {
        a_vdAngles[0] = a_dAngle;
        a_vdAngles[1] = a_dAngle + ANGLE_PI;
    }
}

// b sin(t) + c = 0, b not 0. The two equal angles of sin(t) = +-1 are not merged.
static int SolveSine(double a_dB, double a_dC, double* a_vdAngles)
{
    const double dSine = -Quotient(a_dC, a_dB);
    if (IsSmaller(1.0, dSine))
    {
        return RET_IMPOSSIBLE;
    }
    const double dAngle = asin(dSine);
    if (IsBelowZero(dSine))
    {
        a_vdAngles[0] = ANGLE_PI - dAngle;
        a_vdAngles[1] = dAngle + ANGLE_2PI;
    }
    else
    {
        a_vdAngles[0] = dAngle;
        a_vdAngles[1] = ANGLE_PI - dAngle;
    }
    return 2;
}

// a cos(t) + c = 0, a not 0.
static int SolveCosine(double a_dA, double a_dC, double* a_vdAngles)
{
    const double dCosine = -Quotient(a_dC, a_dA);
    if (IsSmaller(1.0, dCosine))
    {
        return RET_IMPOSSIBLE;
    }
    if (IsOne(dCosine))
    {
        a_vdAngles[0] = 0.0;
        return 1;
    }
    if (IsOne(-dCosine))
    {
        a_vdAngles[0] = ANGLE_PI;
        return 1;
    }
    a_vdAngles[0] = acos(dCosine);
    a_vdAngles[1] = ANGLE_2PI - a_vdAngles[0];
    return 2;
}

// None of the coefficients is 0: by the tangent of half the angle.
static int SolveByHalfTangent(double a_dA, double a_dB, double a_dC, double* a_vdAngles)
{
    int iCount = 0;
    if (a_dA == a_dC)
    {
        a_vdAngles[0] = ANGLE_PI;
        iCount = 1;
    }
    double vdTangents[2];
    const int iRoots = SolveQuadratic(a_dC - a_dA, 2.0 * a_dB, a_dA + a_dC, &vdTangents[0], &vdTangents[1]);
    // An infinite a = c gives two roots beside pi. The caller has room for two angles.
    for (int i = 0; i < iRoots && iCount < LINEAR_ANGLES; ++i)
    {
        a_vdAngles[iCount] = AngleOfHalfTangent(vdTangents[i]);
        ++iCount;
    }
    if (iCount == LINEAR_ANGLES && a_vdAngles[0] > a_vdAngles[1]) // equivalent: equal angles may change places
    {
        Swap(a_vdAngles[0], a_vdAngles[1]);
    }
    return iCount;
}

int SolveLinTrig(double a_dA, double a_dB, double a_dC, double* const a_vdAngles)
{
    if (IsZero(a_dA))
    {
        if (IsZero(a_dB))
        {
            return IsZero(a_dC) ? RET_INDETERMINATE : RET_IMPOSSIBLE;
        }
        return SolveSine(a_dB, a_dC, a_vdAngles);
    }
    if (IsZero(a_dB))
    {
        return SolveCosine(a_dA, a_dC, a_vdAngles);
    }
    if (IsZero(a_dC))
    {
        StoreOpposites(atan2(-a_dA, a_dB), a_vdAngles);
        return 2;
    }
    return SolveByHalfTangent(a_dA, a_dB, a_dC, a_vdAngles);
}

// ---------------------------------------------------------------------------------------------------------------------
// Quadratic trigonometric equation
//
// Model      a cos^2(t) + b sin^2(t) + c sin(t) cos(t) + d cos(t) + e sin(t) + f = 0.
// Method     1. d = e = 0: with p = a + f and q = b + f it is p cos^2 + c sin cos + q sin^2 = 0. That is a product if p
//               or q is 0, and otherwise a quadratic in tan(t).
//            2. c = 0 and a = b: the quadratic terms are a constant, and a linear equation is left.
//            3. Otherwise u = tan(t/2) gives a quartic.
//            The angles are then sorted. Those closer than 1e-12 to the first one of their group are dropped.
// Special    If d = a + f, t = pi is a solution. It is u = infinity, which the quartic does not have, so it is put
//            first. If all coefficients of the quartic are 0, the result is the count so far and not RET_INDETERMINATE.
// ---------------------------------------------------------------------------------------------------------------------

static const double QUARTIC_TOLERANCE = 1e-6;    // for the imaginary parts of the roots of the quartic
static const double DUPLICATE_TOLERANCE = 1e-12; // radians

// c sin(t) cos(t) + q sin^2(t) = 0: sin(t) = 0 or c cos(t) + q sin(t) = 0.
static int SolveSineFactor(double a_dC, double a_dQ, double* a_vdAngles)
{
    const int iRet = SolveLinTrig(a_dC, a_dQ, 0.0, a_vdAngles);
    if (iRet == RET_INDETERMINATE)
    {
        return RET_INDETERMINATE;
    }
    NUV_ASSERT_AT("NUV\\NUV1MATH\\Src\\TRIG.cpp", 142, iRet == 2); // unreachable: there are always two angles here
    a_vdAngles[2] = 0.0;
    a_vdAngles[3] = ANGLE_PI;
    return 4;
}

// p cos^2(t) + c sin(t) cos(t) = 0, p not 0: cos(t) = 0 or p cos(t) + c sin(t) = 0.
static int SolveCosineFactor(double a_dP, double a_dC, double* a_vdAngles)
{
    const int iRet = SolveLinTrig(a_dP, a_dC, 0.0, a_vdAngles);
    NUV_ASSERT_AT("NUV\\NUV1MATH\\Src\\TRIG.cpp", 153, iRet == 2); // unreachable: there are always two angles here
    a_vdAngles[2] = ANGLE_HALF_PI;
    a_vdAngles[3] = ANGLE_3_HALF_PI;
    return 4;
}

// p cos^2(t) + c sin(t) cos(t) + q sin^2(t) = 0, p and q not 0: q w^2 + c w + p = 0 in w = tan(t).
static int SolveByTangent(double a_dP, double a_dC, double a_dQ, double* a_vdAngles)
{
    double vdTangents[2];
    const int iRet = SolveQuadratic(a_dQ, a_dC, a_dP, &vdTangents[0], &vdTangents[1]);
    // The report shows the text of the condition, also its spaces.
    // clang-format off
    NUV_ASSERT_AT("NUV\\NUV1MATH\\Src\\TRIG.cpp", 165, iRet>=0); // unreachable: the first coefficient is not 0
    // clang-format on
    for (int i = 0; i < iRet; ++i)
    {
        StoreOpposites(atan(vdTangents[i]), a_vdAngles);
        a_vdAngles += 2;
    }
    return 2 * iRet;
}

static int SolveByQuartic(double a_dA, double a_dB, double a_dC, double a_dD, double a_dE, double a_dF,
                          double* a_vdAngles)
{
    const double vdQuartic[5] = {a_dA + a_dF - a_dD, (a_dE - a_dC) * 2.0, a_dB * 4.0 - a_dA * 2.0 + a_dF * 2.0,
                                 (a_dC + a_dE) * 2.0, a_dA + a_dD + a_dF};
    int iCount = 0;
    if (a_dD == a_dA + a_dF)
    {
        a_vdAngles[0] = ANGLE_PI;
        iCount = 1;
    }
    double vdTangents[4];
    const int iRoots = Roots(4, vdQuartic, vdTangents, QUARTIC_TOLERANCE);
    // The test of the room is a guard: if d = a + f, the first coefficient is 0, and there are at most three roots
    // beside pi.
    for (int i = 0; i < iRoots && iCount < QUADRATIC_ANGLES; ++i) // unreachable: beside pi there are at most three
    {
        a_vdAngles[iCount] = AngleOfHalfTangent(vdTangents[i]);
        ++iCount;
    }
    return iCount;
}

// The angles, not sorted and with repetitions.
static int SolveQuadTrigRaw(double a_dA, double a_dB, double a_dC, double a_dD, double a_dE, double a_dF,
                            double* const a_vdAngles)
{
    if (IsZero(a_dD) && IsZero(a_dE))
    {
        const double dP = a_dA + a_dF;
        const double dQ = a_dB + a_dF;
        if (IsZero(dP))
        {
            return SolveSineFactor(a_dC, dQ, a_vdAngles);
        }
        if (IsZero(dQ))
        {
            return SolveCosineFactor(dP, a_dC, a_vdAngles);
        }
        return SolveByTangent(dP, a_dC, dQ, a_vdAngles);
    }
    if (IsZero(a_dC) && a_dA == a_dB)
    {
        return SolveLinTrig(a_dD, a_dE, a_dA + a_dF, a_vdAngles);
    }
    return SolveByQuartic(a_dA, a_dB, a_dC, a_dD, a_dE, a_dF, a_vdAngles);
}

// Sorts in ascending order: the first of the smallest angles left comes next.
static void SortAngles(int a_iCount, double* a_vdAngles)
{
    for (int i = 0; i < a_iCount - 1; ++i) // equivalent: the last element has none behind it
    {
        int iSmallest = i;
        for (int j = i + 1; j < a_iCount; ++j)
        {
            if (a_vdAngles[j] < a_vdAngles[iSmallest])
            {
                iSmallest = j;
            }
        }
        if (iSmallest != i)
        {
            Swap(a_vdAngles[i], a_vdAngles[iSmallest]);
        }
    }
}

// Copies the first angle of each group of sorted angles. Returns the number of groups. An angle belongs to the group if
// it is close to the first angle of the group; its distance to its neighbour does not count.
static int CopyDistinctAngles(int a_iCount, const double* a_vdSorted, double* a_vdAngles)
{
    int iDistinct = 0;
    for (int i = 0; i < a_iCount;)
    {
        const double dFirst = a_vdSorted[i];
        do
        {
            ++i;
        } while (i < a_iCount && IsSmaller(a_vdSorted[i] - dFirst, DUPLICATE_TOLERANCE));
        a_vdAngles[iDistinct] = dFirst;
        ++iDistinct;
    }
    return iDistinct;
}

int SolveQuadTrig(double a_dA, double a_dB, double a_dC, double a_dD, double a_dE, double a_dF,
                  double* const a_vdAngles)
{
    const int iCount = SolveQuadTrigRaw(a_dA, a_dB, a_dC, a_dD, a_dE, a_dF, a_vdAngles);
    if (iCount < 2) // equivalent: one angle is sorted as it is
    {
        return iCount;
    }
    double vdSorted[QUADRATIC_ANGLES];
    for (int i = 0; i < iCount; ++i)
    {
        vdSorted[i] = a_vdAngles[i];
    }
    SortAngles(iCount, vdSorted);
    return CopyDistinctAngles(iCount, vdSorted, a_vdAngles);
}

} // namespace nuv
