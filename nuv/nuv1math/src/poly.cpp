// poly.cpp: the two-unknown linear system.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "functionsimp.h"
#include "nuv1math.h"

namespace nuv {

// ---------------------------------------------------------------------------------------------------------------------
// Two-unknown linear system
//
// Model      a11 x + a12 y = b1, a21 x + a22 y = b2.
// Method     Cramer's rule with one division.
// Special    A determinant within the degeneracy tolerance: only the numerator of x decides whether the system counts
//            as indeterminate or impossible. That of y is left out, and is kept so: all coefficients 0 are
//            indeterminate whatever the right-hand side. A NaN determinant is no zero and gives NaN.
// ---------------------------------------------------------------------------------------------------------------------

int Roots(double a_dA11, double a_dA12, double a_dA21, double a_dA22, double a_dB1, double a_dB2, double& a_dX,
          double& a_dY)
{
    const double dDet = a_dA11 * a_dA22 - a_dA12 * a_dA21;
    const double dNumeratorX = a_dA22 * a_dB1 - a_dA12 * a_dB2;
    if (IsNegligible(dDet))
    {
        return IsNegligible(dNumeratorX) ? RET_INDETERMINATE : RET_IMPOSSIBLE;
    }
    const double dReciprocal = 1.0 / dDet;
    a_dX = dNumeratorX * dReciprocal;
    a_dY = (a_dA11 * a_dB2 - a_dA21 * a_dB1) * dReciprocal;
    return RET_SUCCESS;
}

} // namespace nuv
