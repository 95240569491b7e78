// omographicfast.h: the normal equations of the omographic fit from fewer sums. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_OMOGRAPHICFAST_H
#define NUV_OMOGRAPHICFAST_H

#include "fast/vectors.h"
#include "functionsimp.h"
#include "omographic.h"

#include <math.h>
#include <string.h>

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Without vectors: fewer sums
//
// Equals     FormEquations of omographic.cpp, if all rows are finite.
// Method     The products with the constant zeros of the rows are zeros. They do not change a sum that began as +0.0,
//            so they are left out. The sums over A, B and C are those over D, E and F, so they are formed once. That
//            leaves 29 sums of 88.
// Order      Every sum takes its terms in the order of the points, the X row of a point before its Y row.
// Special    An infinite or NaN value in a row makes the right-hand side infinite or NaN, and no later term changes
//            that: each coefficient of a row is multiplied by its observed value there. The plain form is then used.
// Pays       always. 100 points on soft-float ARM: 1.49 million instructions, 2.73 million in the plain form.
// ---------------------------------------------------------------------------------------------------------------------

// The sums stand one after the other: the products of P with P and all values behind it, those of Q with Q and all
// behind it, and those of R. Then follow the sums of both rows together: GG, GH, G0, HH and H0.
enum
{
    SHARED_VALUES = 3, // P, Q and R
    SUM_GG = ROW_VALUES + (ROW_VALUES - 1) + (ROW_VALUES - 2),
    SUM_GH,
    SUM_G0,
    SUM_HH,
    SUM_H0,
    OMOGRAPHIC_SUMS
};

// Position of the sum of the products of values i and j: i is ROW_P, ROW_Q or ROW_R, and j is not before i.
inline int SharedSum(int i, int j)
{
    return i * ROW_VALUES - i * (i - 1) / 2 + (j - i);
}

// Adds the products of the first FACTORS values with themselves and with all values behind them to the sums.
template <int FACTORS, int VALUES> static NUV_INLINE void AddProducts(const double* a_vdValues, double* a_vdSums)
{
    for (int i = 0; i < FACTORS; ++i)
    {
        const double dFactor = a_vdValues[i];
        for (int j = i; j < VALUES; ++j)
        {
            *a_vdSums = dFactor * a_vdValues[j] + *a_vdSums;
            ++a_vdSums;
        }
    }
}

// Adds the products of one point to the sums.
static NUV_INLINE void AddPoint(const double* a_vdRow, double* a_vdSums)
{
    AddProducts<SHARED_VALUES, ROW_VALUES>(a_vdRow, a_vdSums);
    AddProducts<2, 3>(a_vdRow + ROW_XG, a_vdSums + SUM_GG);
    AddProducts<2, 3>(a_vdRow + ROW_YG, a_vdSums + SUM_GG);
}

// Puts the sums where they belong in the equations. Everything else is zero.
inline void PlaceSums(const double* a_vdSums, TOmographicSystem& a_System)
{
    memset(&a_System, 0, sizeof a_System);
    double* const vdMatrix = a_System.vdMatrix;
    for (int i = 0; i < SHARED_VALUES; ++i)
    {
        for (int j = i; j < SHARED_VALUES; ++j)
        {
            const double dSum = a_vdSums[SharedSum(i, j)];
            vdMatrix[Packed(COEF_A + j, COEF_A + i)] = dSum;
            vdMatrix[Packed(COEF_D + j, COEF_D + i)] = dSum;
        }
        vdMatrix[Packed(COEF_G, COEF_A + i)] = a_vdSums[SharedSum(i, ROW_XG)];
        vdMatrix[Packed(COEF_H, COEF_A + i)] = a_vdSums[SharedSum(i, ROW_XH)];
        a_System.vdVector[COEF_A + i] = a_vdSums[SharedSum(i, ROW_X0)];
        vdMatrix[Packed(COEF_G, COEF_D + i)] = a_vdSums[SharedSum(i, ROW_YG)];
        vdMatrix[Packed(COEF_H, COEF_D + i)] = a_vdSums[SharedSum(i, ROW_YH)];
        a_System.vdVector[COEF_D + i] = a_vdSums[SharedSum(i, ROW_Y0)];
    }
    vdMatrix[Packed(COEF_G, COEF_G)] = a_vdSums[SUM_GG];
    vdMatrix[Packed(COEF_H, COEF_G)] = a_vdSums[SUM_GH];
    a_System.vdVector[COEF_G] = a_vdSums[SUM_G0];
    vdMatrix[Packed(COEF_H, COEF_H)] = a_vdSums[SUM_HH];
    a_System.vdVector[COEF_H] = a_vdSums[SUM_H0];
}

// Forms the equations from the sums. False if a row was not finite: then they are not those of the plain form.
inline bool FormEquationsFromSums(const TControlPoints& a_Points, const double* a_vdCoefs, TOmographicSystem& a_System)
{
    double vdSums[OMOGRAPHIC_SUMS];
    memset(vdSums, 0, sizeof vdSums);
    for (unsigned int i = 0; i < a_Points.iCount; ++i)
    {
        double vdRow[ROW_VALUES];
        FormRows(a_Points, i, a_vdCoefs, vdRow);
        AddPoint(vdRow, vdSums);
    }
    PlaceSums(vdSums, a_System);
    for (int k = 0; k < OMOGRAPHIC_UNKNOWNS; ++k)
    {
        if (!IsFinite(a_System.vdVector[k]))
        {
            return false;
        }
    }
    return true;
}

#ifdef NUV_VECTORS

// ---------------------------------------------------------------------------------------------------------------------
// Vectors: rows of several points at once, and equations that are solved as sums
//
// Equals     SolveEquations of omographic.cpp. The result is false where it might not.
// Method     1. A vector has one value of the rows of several points: their divisions take the time of one. Transposed,
//               a vector has several values of one point. It takes its products with P, Q and R.
//            2. As above, products with the constant zeros are left out, and sums are formed once.
//            3. The factor has the same zeros as the matrix, and its columns of D, E and F have the elements of those
//               of A, B and C. So five columns are factorised instead of eight, one after the other: each needs the one
//               before. The two halves of the solution advance together.
// Order      Every sum takes its terms in the order of the points, the X row of a point before its Y row. Every element
//            of the factor and of the solution subtracts its products in the order of the plain form.
// Special    A zero product that is left out changes the difference from which it would be subtracted in one case: when
//            that is -0.0. No sum is -0.0, and no difference of it, but a quotient of the forward substitution can be.
//            A product of zero and an infinite or NaN value must not be left out either. There, as after a radicand
//            that fails, D is not finite: every other value goes into its solution by products and differences.
// Pays       always. 4 points: 0.22 us, 0.60 us in the plain form; 100 points: 1.9 us with vectors of four, 2.9 us with
//            pairs, 15.3 us in the plain form.
// ---------------------------------------------------------------------------------------------------------------------

// Positions of the values of a point in the array that vectors are loaded from. R stands apart.
enum
{
    VALUE_XG,
    VALUE_XH,
    VALUE_YG,
    VALUE_YH,
    VALUE_X0,
    VALUE_Y0,
    VALUE_P,
    VALUE_Q,
    POINT_VALUES
};

// The same values in a row of FormRows.
static const int POINT_ORDER[POINT_VALUES] = {ROW_XG, ROW_XH, ROW_YG, ROW_YH, ROW_X0, ROW_Y0, ROW_P, ROW_Q};

enum
{
    OWN_PAIRS = 3 // equivalent: pairs of sums without P, Q and R; a fourth would not be used
};

static const unsigned int BLOCK_POINTS = 16; // equivalent: points whose rows are formed before they are added

// The sums over the points, as vectors of any width. The layout is that of the doubles one after the other.
template <typename TVector> struct TPointSums
{
    enum
    {
        LANES = sizeof(TVector) / sizeof(double),
        VECTORS = POINT_VALUES / LANES
    };
    TVector vvShared[SHARED_VALUES][VECTORS]; // P, Q and R times the other values
    TPair vOwn[OWN_PAIRS];                    // (GG, GH), (GH, HH) and (G0, H0)
    double dRR;
};

// The values of the points of a block. The last vector of points ends with the last point, so it can begin before the
// block.
template <typename TVector> struct TBlock
{
    enum
    {
        LANES = sizeof(TVector) / sizeof(double)
    };
    double vvdValues[LANES + BLOCK_POINTS][POINT_VALUES];
    double vdR[LANES + BLOCK_POINTS];
};

// Forms the values of a vector of points, from point i on.
template <typename TVector>
static NUV_INLINE void FormPointsBy(const TControlPoints& a_Points, unsigned int i, const double* a_vdCoefs,
                                    double (*a_vvdValues)[POINT_VALUES], double* a_vdR)
{
    enum
    {
        LANES = sizeof(TVector) / sizeof(double),
        SQUARES = POINT_VALUES / LANES
    };
    TVector vRow[ROW_VALUES];
    FormRowsBy(a_Points, i, a_vdCoefs, vRow);
    NUV_UNROLL for (int s = 0; s < SQUARES; ++s)
    {
        TVector vSquare[LANES];
        NUV_UNROLL for (int l = 0; l < LANES; ++l)
        {
            vSquare[l] = vRow[POINT_ORDER[s * LANES + l]];
        }
        Transpose(vSquare);
        NUV_UNROLL for (int l = 0; l < LANES; ++l)
        {
            Store(vSquare[l], a_vvdValues[l] + s * LANES);
        }
    }
    Store(vRow[ROW_R], a_vdR);
}

// Adds the products of one point, those of its X row before those of its Y row.
template <typename TVector>
static NUV_INLINE void AddPointBy(const double* a_vdValues, double a_dR, TPointSums<TVector>& a_Sums)
{
    const double vdFactors[SHARED_VALUES] = {a_vdValues[VALUE_P], a_vdValues[VALUE_Q], a_dR};
    NUV_UNROLL for (int v = 0; v < TPointSums<TVector>::VECTORS; ++v)
    {
        TVector Values;
        Load(a_vdValues + v * TPointSums<TVector>::LANES, Values);
        NUV_UNROLL for (int k = 0; k < SHARED_VALUES; ++k)
        {
            // equivalent: without these sums there is no factor, and the plain form takes over
            a_Sums.vvShared[k][v] = vdFactors[k] * Values + a_Sums.vvShared[k][v];
        }
    }
    a_Sums.dRR = a_dR * a_dR + a_Sums.dRR;
    TPair X;
    TPair Y;
    Load(a_vdValues + VALUE_XG, X);
    Load(a_vdValues + VALUE_YG, Y);
    a_Sums.vOwn[0] = a_vdValues[VALUE_XG] * X + a_Sums.vOwn[0];
    a_Sums.vOwn[1] = a_vdValues[VALUE_XH] * X + a_Sums.vOwn[1];
    a_Sums.vOwn[2] = a_vdValues[VALUE_X0] * X + a_Sums.vOwn[2];
    a_Sums.vOwn[0] = a_vdValues[VALUE_YG] * Y + a_Sums.vOwn[0];
    a_Sums.vOwn[1] = a_vdValues[VALUE_YH] * Y + a_Sums.vOwn[1];
    a_Sums.vOwn[2] = a_vdValues[VALUE_Y0] * Y + a_Sums.vOwn[2];
}

// The sums over all points, of which there are as many as a vector has elements.
template <typename TVector>
static NUV_INLINE void SumPointsBy(const TControlPoints& a_Points, const double* a_vdCoefs, TPointSums<double>& a_Sums)
{
    const unsigned int LANES = sizeof(TVector) / sizeof(double);
    TPointSums<TVector> Sums;
    memset(&Sums, 0, sizeof Sums);
    TBlock<TVector> Block;
    for (unsigned int iBlock = 0; iBlock < a_Points.iCount; iBlock += BLOCK_POINTS) // equivalent: no block
    {
        const unsigned int iLeft = a_Points.iCount - iBlock;
        const unsigned int iCount = iLeft < BLOCK_POINTS ? iLeft : BLOCK_POINTS; // equivalent: the same count
        for (unsigned int i = 0; i < iCount; i += LANES)
        {
            const unsigned int iOverlap = i + LANES > iLeft ? i + LANES - iLeft : 0; // equivalent: none
            const unsigned int iPlace = LANES + i - iOverlap;
            FormPointsBy<TVector>(a_Points, iBlock + i - iOverlap, a_vdCoefs, Block.vvdValues + iPlace,
                                  Block.vdR + iPlace);
        }
        for (unsigned int i = 0; i < iCount; ++i)
        {
            AddPointBy(Block.vvdValues[LANES + i], Block.vdR[LANES + i], Sums);
        }
    }
    memcpy(&a_Sums, &Sums, sizeof a_Sums);
}

// by processor: it has one width of vectors
NUV_BY_WIDTH(SumPoints, (const TControlPoints& a_Points, const double* a_vdCoefs, TPointSums<double>& a_Sums),
             (a_Points, a_vdCoefs, a_Sums))

// The factor of the matrix, with the same three columns for A, B, C and for D, E, F:
//     A, D   dAA
//     B, E   dBA dBB
//     C, F   dCA dCB dCC
//     G      vGH[COEF_A][0] to vGH[COEF_F][0], dGG
//     H      vGH[COEF_A][1] to vGH[COEF_F][1], dHG, dHH
struct TPointFactor
{
    double dAA;
    double dBA;
    double dBB;
    double dCA;
    double dCB;
    double dCC;
    TPair vGH[COEF_G];
    double dGG;
    double dHG;
    double dHH;
};

static NUV_INLINE TPair PairAt(const double* a_vdFrom)
{
    TPair Pair;
    Load(a_vdFrom, Pair);
    return Pair;
}

// The columns of A, B and C in the rows of G and H if a_iHalf is 0, and those of D, E and F if it is 1.
static NUV_INLINE void FactoriseHalf(int a_iHalf, const TPointSums<double>& a_Sums, const double* a_vdReciprocals,
                                     TPointFactor& a_L)
{
    const int iFrom = VALUE_XG + 2 * a_iHalf;
    TPair* const vGH = a_L.vGH + SHARED_VALUES * a_iHalf;
    vGH[0] = a_vdReciprocals[0] * PairAt(a_Sums.vvShared[ROW_P] + iFrom);
    vGH[1] = a_vdReciprocals[1] * (PairAt(a_Sums.vvShared[ROW_Q] + iFrom) - vGH[0] * a_L.dBA);
    vGH[2] = a_vdReciprocals[2] * (PairAt(a_Sums.vvShared[ROW_R] + iFrom) - vGH[0] * a_L.dCA - vGH[1] * a_L.dCB);
}

// Subtracts the squares of the row of G (0) or H (1) from F back to A.
static NUV_INLINE double SubtractSquares(double a_dRadicand, const TPointFactor& a_L, int a_iRow)
{
    NUV_UNROLL for (int k = COEF_F; k >= COEF_A; --k)
    {
        a_dRadicand -= a_L.vGH[k][a_iRow] * a_L.vGH[k][a_iRow];
    }
    return a_dRadicand;
}

static NUV_INLINE void FactoriseSums(const TPointSums<double>& a_Sums, TPointFactor& a_L)
{
    double vdReciprocals[SHARED_VALUES];
    a_L.dAA = sqrt(a_Sums.vvShared[ROW_P][VALUE_P]);
    vdReciprocals[0] = 1.0 / a_L.dAA;
    a_L.dBA = vdReciprocals[0] * a_Sums.vvShared[ROW_P][VALUE_Q];
    a_L.dCA = vdReciprocals[0] * a_Sums.vvShared[ROW_R][VALUE_P];
    a_L.dBB = sqrt(a_Sums.vvShared[ROW_Q][VALUE_Q] - a_L.dBA * a_L.dBA);
    vdReciprocals[1] = 1.0 / a_L.dBB;
    a_L.dCB = vdReciprocals[1] * (a_Sums.vvShared[ROW_R][VALUE_Q] - a_L.dCA * a_L.dBA);
    a_L.dCC = sqrt(a_Sums.dRR - a_L.dCB * a_L.dCB - a_L.dCA * a_L.dCA);
    vdReciprocals[2] = 1.0 / a_L.dCC;
    FactoriseHalf(0, a_Sums, vdReciprocals, a_L);
    FactoriseHalf(1, a_Sums, vdReciprocals, a_L);
    a_L.dGG = sqrt(SubtractSquares(a_Sums.vOwn[0][0], a_L, 0));
    double dRest = a_Sums.vOwn[0][1];
    NUV_UNROLL for (int k = COEF_A; k <= COEF_F; ++k)
    {
        dRest -= a_L.vGH[k][1] * a_L.vGH[k][0];
    }
    a_L.dHG = (1.0 / a_L.dGG) * dRest;
    a_L.dHH = sqrt(SubtractSquares(a_Sums.vOwn[1][1] - a_L.dHG * a_L.dHG, a_L, 1));
}

// L y = u for A to F: a_vSolutions receives the pairs (A, D), (B, E) and (C, F), and a_GH what is left of G and H.
static NUV_INLINE void SubstituteForward(const TPointSums<double>& a_Sums, const TPointFactor& a_L, TPair* a_vSolutions,
                                         TPair& a_GH)
{
    const TPair AD = PairAt(a_Sums.vvShared[ROW_P] + VALUE_X0) / a_L.dAA;
    const TPair BE = (PairAt(a_Sums.vvShared[ROW_Q] + VALUE_X0) - a_L.dBA * AD) / a_L.dBB;
    const TPair CF = (PairAt(a_Sums.vvShared[ROW_R] + VALUE_X0) - a_L.dCA * AD - a_L.dCB * BE) / a_L.dCC;
    a_vSolutions[0] = AD;
    a_vSolutions[1] = BE;
    a_vSolutions[2] = CF;
    a_GH = a_Sums.vOwn[2];
    NUV_UNROLL for (int k = COEF_A; k <= COEF_F; ++k)
    {
        a_GH -= a_L.vGH[k] * a_vSolutions[k % SHARED_VALUES][k / SHARED_VALUES];
    }
}

// L^T x = y for A to F, when G and H are solved. False if a difference is -0.0 where zero products follow.
static NUV_INLINE bool SubstituteBackward(const TPointFactor& a_L, double a_dG, double a_dH, TPair* a_vSolutions)
{
    bool bSame = true; // equivalent: the plain form gives the same bits
    NUV_UNROLL for (int k = 0; k < SHARED_VALUES; ++k)
    {
        const TPair G = {a_L.vGH[k][0], a_L.vGH[SHARED_VALUES + k][0]};
        const TPair H = {a_L.vGH[k][1], a_L.vGH[SHARED_VALUES + k][1]};
        a_vSolutions[k] = a_vSolutions[k] - H * a_dH - G * a_dG;
        bSame = bSame && !IsNegativeZero(a_vSolutions[k][0]); // equivalent: the plain form gives the same bits
    }
    a_vSolutions[2] = a_vSolutions[2] / a_L.dCC;
    a_vSolutions[1] = (a_vSolutions[1] - a_L.dCB * a_vSolutions[2]) / a_L.dBB;
    a_vSolutions[0] = (a_vSolutions[0] - a_L.dCA * a_vSolutions[2] - a_L.dBA * a_vSolutions[1]) / a_L.dAA;
    return bSame;
}

// False if the plain form might have other bits.
static NUV_INLINE bool SolveSums(const TPointSums<double>& a_Sums, double* a_vdSolution)
{
    TPointFactor L;
    TPair vSolutions[SHARED_VALUES];
    TPair GH;
    FactoriseSums(a_Sums, L);
    SubstituteForward(a_Sums, L, vSolutions, GH);
    const double dY = GH[0] / L.dGG; // of G in L y = u
    const double dH = (GH[1] - L.dHG * dY) / L.dHH / L.dHH;
    const double dG = (dY - L.dHG * dH) / L.dGG;
    const bool bSame = SubstituteBackward(L, dG, dH, vSolutions);
    NUV_UNROLL for (int k = COEF_A; k <= COEF_F; ++k)
    {
        a_vdSolution[k] = vSolutions[k % SHARED_VALUES][k / SHARED_VALUES];
    }
    a_vdSolution[COEF_G] = dG;
    a_vdSolution[COEF_H] = dH;
    return bSame && IsFinite(a_vdSolution[COEF_D]);
}

// Forms and solves the equations. If the result is false, a_vdSolution is not the solution.
NUV_NOT_INLINE static bool SolveEquationsByVectors(const TControlPoints& a_Points, const double* a_vdCoefs,
                                                   double* a_vdSolution)
{
    TPointSums<double> Sums;
    SumPoints(a_Points, a_vdCoefs, Sums);
    return SolveSums(Sums, a_vdSolution);
}

#else
bool SolveEquationsByVectors(const TControlPoints& a_Points, const double* a_vdCoefs, double* a_vdSolution);
#endif

} // namespace nuv

#endif // NUV_OMOGRAPHICFAST_H
