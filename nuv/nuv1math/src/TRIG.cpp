// TRIG.cpp: angles that solve linear and quadratic equations in the cosine and sine of one angle.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "functionsimp.h"
#include "nuv1math.h"

#include <math.h>

namespace nuv {

static const double ANGLE_PI = 3.141592653589793;       // the doubles nearest to pi,
static const double ANGLE_HALF_PI = 1.5707963267948966; // pi/2
static const double ANGLE_3_HALF_PI = 4.71238898038469; // and 3 pi/2

// ---------------------------------------------------------------------------------------------------------------------
// Linear trigonometric equation
//
// Model      a cos(t) + b sin(t) + c = 0.
// Method     One coefficient missing: asin, acos or atan2. Otherwise u = tan(t/2) turns the equation into
//            (c - a) u^2 + 2 b u + (a + c) = 0.
// Special    a = c: t = pi solves the equation and is the u = infinity that the substitution loses; it is put first.
//            a = b = 0: no angle, or every angle. Tangent solutions s = +-1 count twice where b alone is there, once
//            where a alone is. Comparisons are exact.
// Order      Angles below 0 get 2 pi added; where two angles differ by pi, the second is formed from the first.
// ---------------------------------------------------------------------------------------------------------------------

enum
{
    LINEAR_ANGLES = 2,   // the most that SolveLinTrig writes
    QUADRATIC_ANGLES = 4 // and SolveQuadTrig
};

// Real roots of A u^2 + B u + C = 0, not ordered: 0, 1 or 2; if A = 0 also RET_IMPOSSIBLE (C != 0) or RET_INDETERMINATE
// for a constant. With D = B^2 - 4AC one root is (-B -+ sqrt(D))/(2A), the sign being that which does not cancel, and
// the other is C/A over it: W. Kahan's form of the formula.
static int SolveQuadratic(double a_dA, double a_dB, double a_dC, double* a_pRoot1, double* a_pRoot2)
{
    if (IsZero(a_dA))
    {
        if (IsZero(a_dB)) // unreachable: callers pass a first or a second coefficient that is not 0
        {
            return !IsZero(a_dC) ? RET_IMPOSSIBLE : RET_INDETERMINATE;
        }
        *a_pRoot1 = -(a_dC / a_dB);
        return 1;
    }
    const double dDiscriminant = a_dB * a_dB - a_dA * a_dC * 4.0;
    if (dDiscriminant < 0.0)
    {
        return 0;
    }
    if (IsZero(dDiscriminant))
    {
        *a_pRoot1 = *a_pRoot2 = -(a_dB / (a_dA * 2.0));
        return 1;
    }
    const double dRoot = sqrt(dDiscriminant);
    if (IsBelowZero(a_dB)) // a NaN makes both roots NaN, here and there
    {
        const double dSum = dRoot - a_dB;
        *a_pRoot1 = dSum / (a_dA * 2.0);
        *a_pRoot2 = a_dC * 2.0 / dSum;
    }
    else
    {
        const double dSum = dRoot + a_dB;
        *a_pRoot1 = -(dSum / (a_dA * 2.0));
        *a_pRoot2 = a_dC * -2.0 / dSum;
    }
    return 2;
}

// The angle t in [0, 2 pi] with tan(t/2) = a_dTangent.
static double AngleOfHalfTangent(double a_dTangent)
{
    const double dAngle = 2.0 * atan(a_dTangent);
    return IsBelowZero(dAngle) ? dAngle + ANGLE_2PI : dAngle;
}

// Stores an angle of [-pi, pi] and its opposite, both in [0, 2 pi]. From a negative angle the first is the greater one,
// and the second is formed from it, not from the angle: that is how it rounds.
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

// b sin(t) + c = 0, b not 0. Double angles at sin(t) = +-1 are not merged.
static int SolveSine(double a_dB, double a_dC, double* a_vdAngles)
{
    const double dSine = -(a_dC / a_dB);
    if (fabs(dSine) > 1.0)
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
    const double dCosine = -(a_dC / a_dA);
    if (fabs(dCosine) > 1.0)
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

// All three coefficients not 0: by the half-angle tangent.
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
    // Infinite a = c leave two roots beside pi: no more angles than the caller has room for.
    for (int i = 0; i < iRoots && iCount < LINEAR_ANGLES; ++i)
    {
        a_vdAngles[iCount] = AngleOfHalfTangent(vdTangents[i]);
        ++iCount;
    }
    if (iCount == LINEAR_ANGLES && a_vdAngles[0] > a_vdAngles[1])
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
// Method     1. d = e = 0: with p = a + f, q = b + f it is p cos^2 + c sin cos + q sin^2 = 0, a product when p or q
//               is 0, else a quadratic in tan(t).
//            2. c = 0, a = b: the quadratic terms are a constant, a linear equation is left.
//            3. Otherwise u = tan(t/2) gives a quartic.
//            The angles are then sorted, and those closer than 1e-12 to the first of their group are dropped.
// Special    d = a + f: t = pi solves the equation and is the u = infinity that the quartic loses; it is put first.
//            A quartic of zeros only is reported as the count so far, not as RET_INDETERMINATE.
// ---------------------------------------------------------------------------------------------------------------------

static const double QUARTIC_TOLERANCE = 1e-6;    // on the imaginary parts of the quartic's roots
static const double DUPLICATE_TOLERANCE = 1e-12; // radians

// c sin(t) cos(t) + q sin^2(t) = 0: sin(t) = 0 beside c cos(t) + q sin(t) = 0.
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

// p cos^2(t) + c sin(t) cos(t) = 0, p not 0: cos(t) = 0 beside p cos(t) + c sin(t) = 0.
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
    // The text of the condition is part of the report.
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
    // A guard: with d = a + f the quartic has lost its first term, so there are three roots at most beside pi.
    for (int i = 0; i < iRoots && iCount < QUADRATIC_ANGLES; ++i) // unreachable: beside pi there are at most three
    {
        a_vdAngles[iCount] = AngleOfHalfTangent(vdTangents[i]);
        ++iCount;
    }
    return iCount;
}

// The angles unsorted and with repeats.
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

// Ascending, by selection of the first smallest.
static void SortAngles(int a_iCount, double* a_vdAngles)
{
    for (int i = 0; i < a_iCount - 1; ++i)
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

// Copies the first of each group of sorted angles; returns how many groups there are. The distance counts from the
// first of a group, not from the neighbour.
static int CopyDistinctAngles(int a_iCount, const double* a_vdSorted, double* a_vdAngles)
{
    int iDistinct = 0;
    for (int i = 0; i < a_iCount;)
    {
        const double dFirst = a_vdSorted[i];
        do
        {
            ++i;
        } while (i < a_iCount && fabs(a_vdSorted[i] - dFirst) < DUPLICATE_TOLERANCE);
        a_vdAngles[iDistinct] = dFirst;
        ++iDistinct;
    }
    return iDistinct;
}

int SolveQuadTrig(double a_dA, double a_dB, double a_dC, double a_dD, double a_dE, double a_dF,
                  double* const a_vdAngles)
{
    const int iCount = SolveQuadTrigRaw(a_dA, a_dB, a_dC, a_dD, a_dE, a_dF, a_vdAngles);
    if (iCount < 2)
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
