// omographic.h: the rows and the normal equations of the omographic fit. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_OMOGRAPHIC_H
#define NUV_OMOGRAPHIC_H

#include "controlpoints.h"
#include "fast/forms.h"

namespace nuv {

enum
{
    OMOGRAPHIC_UNKNOWNS = 8,
    // equivalent: room that is not used changes nothing
    OMOGRAPHIC_PACKED = OMOGRAPHIC_UNKNOWNS * (OMOGRAPHIC_UNKNOWNS + 1) / 2
};

// Positions of the coefficients in a vector of eight.
enum
{
    COEF_A,
    COEF_B,
    COEF_C,
    COEF_D,
    COEF_E,
    COEF_F,
    COEF_G,
    COEF_H
};

// Position of element (i, j), j <= i, in the packed normal matrix.
inline int Packed(int i, int j)
{
    return i * (i + 1) / 2 + j;
}

struct TOmographicSystem
{
    double vdMatrix[OMOGRAPHIC_PACKED];   // the normal matrix, packed; then its factor
    double vdVector[OMOGRAPHIC_UNKNOWNS]; // the right-hand side; then the solution
};

// Positions of the values that the two rows of a point consist of:
//     X row  (P, Q, R, 0, 0, 0, XG, XH) with the observed value X0
//     Y row  (0, 0, 0, P, Q, R, YG, YH) with the observed value Y0
// P, Q and R multiply A, B and C in the X row, and D, E and F in the Y row.
enum
{
    ROW_P,
    ROW_Q,
    ROW_R,
    ROW_XG,
    ROW_XH,
    ROW_X0,
    ROW_YG,
    ROW_YH,
    ROW_Y0,
    ROW_VALUES
};

// Forms the values of the rows of point i: those of the linear equations if a_vdCoefs is null, and otherwise those of
// the refinement at these eight coefficients.
void FormRows(const TControlPoints& a_Points, unsigned int i, const double* a_vdCoefs, double* a_vdRow);

// The same for the points from i on, as many as a vector has elements: element l of a value is that of point i + l.
template <typename TValue>
void FormRowsBy(const TControlPoints& a_Points, unsigned int i, const double* a_vdCoefs, TValue* a_vRow);

} // namespace nuv

#endif // NUV_OMOGRAPHIC_H
