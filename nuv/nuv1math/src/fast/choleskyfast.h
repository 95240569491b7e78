// choleskyfast.h: the faster forms of the Cholesky family. Internal, not installed.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_CHOLESKYFAST_H
#define NUV_CHOLESKYFAST_H

#include "fast/forms.h"
#include "functionsimp.h"
#include "trianglerows.h"

#include <stddef.h>

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Vectors: choleskyfast.cpp
// ---------------------------------------------------------------------------------------------------------------------

const ptrdiff_t TILES_PAY_FROM = 28; // equivalent: unknowns; tiles or not, the bits are the same
const ptrdiff_t ROWS_TOGETHER = 8; // equivalent: rows of a substitution whose sums advance together; any number will do

// Factorise of cholesky.cpp.
bool FactoriseByTiles(ptrdiff_t a_iN, const TTriangleRows& a_Rows, double* a_vdMatrix);

// The first solutions of L y = u, in groups of ROWS_TOGETHER. Returns how many are solved.
ptrdiff_t SubstituteForwardTogether(ptrdiff_t a_iN, const TTriangleRows& a_Rows, const double* a_vdFactor,
                                    double* a_vdVector);

// The last solutions of L^T x = y, packed, in groups of ROWS_TOGETHER. Returns how many are left to solve.
ptrdiff_t SubstituteBackwardTogether(ptrdiff_t a_iN, const double* a_vdFactor, double* a_vdVector);

// The dense UpdateNormMatrixLowTri.
void AddObservationByVectors(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, const double* a_vdRow,
                             double a_dValue);

// ---------------------------------------------------------------------------------------------------------------------
// Software floating point: an observation without the products of zero coefficients
//
// Equals     the dense UpdateNormMatrixLowTri, when all values of the observation are finite.
// Method     A product of a zero coefficient and a finite value is a zero. Adding a zero product only matters when the
//            element is -0.0 (it becomes +0.0 if the product is +0.0); otherwise it is skipped.
// Pays       from one zero coefficient on. Eight unknowns, three of them with a zero coefficient: 2 742 instructions on
//            soft-float ARM, 3 429 in the plain form. The search for zeros costs 1 % where there are none.
// ---------------------------------------------------------------------------------------------------------------------

// Whether the observation has a zero coefficient, and only finite values.
inline bool CanSkipZeros(int a_iUnknowns, const double* a_vdRow, double a_dValue)
{
    int i = 0;
    while (i < a_iUnknowns && !IsZero(a_vdRow[i])) // equivalent: without zeros both forms do the same
    {
        ++i;
    }
    if (i >= a_iUnknowns || !IsFinite(a_dValue)) // equivalent: without zeros both forms do the same
    {
        return false;
    }
    for (i = 0; i < a_iUnknowns; ++i)
    {
        if (!IsFinite(a_vdRow[i]))
        {
            return false;
        }
    }
    return true;
}

// Adds a product to an element, unless the product is a zero that does not change it.
inline void AddProduct(double a_dFirst, double a_dSecond, bool a_bIsZero, double& a_dElement)
{
    if (!a_bIsZero || IsNegativeZero(a_dElement))
    {
        a_dElement = a_dFirst * a_dSecond + a_dElement;
    }
}

inline void AddObservationWithoutZeros(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, const double* a_vdRow,
                                       double a_dValue)
{
    for (int i = 0; i < a_iUnknowns; ++i)
    {
        const double dCoefficient = a_vdRow[i];
        const bool bZero = IsZero(dCoefficient);
        for (int j = 0; j <= i; ++j)
        {
            AddProduct(dCoefficient, a_vdRow[j], bZero || IsZero(a_vdRow[j]), *a_vdMatrix);
            ++a_vdMatrix;
        }
        AddProduct(dCoefficient, a_dValue, bZero, a_vdVector[i]);
    }
}

// Adds the observation by the form that pays on this processor. False if that is the plain one; nothing is added then.
inline bool AddObservationFaster(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, const double* a_vdRow,
                                 double a_dValue)
{
    if (HAS_VECTORS)
    {
        AddObservationByVectors(a_iUnknowns, a_vdMatrix, a_vdVector, a_vdRow, a_dValue);
        return true;
    }
    if (FASTER_FORMS && SOFTWARE_FLOATING_POINT && CanSkipZeros(a_iUnknowns, a_vdRow, a_dValue))
    {
        AddObservationWithoutZeros(a_iUnknowns, a_vdMatrix, a_vdVector, a_vdRow, a_dValue);
        return true;
    }
    return false;
}

} // namespace nuv

#endif // NUV_CHOLESKYFAST_H
