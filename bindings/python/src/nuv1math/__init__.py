"""nuv1math: planar coordinate transformations and the numerical analysis that they need, over arrays of numpy.

The functions have the names of the library's header nuv1math.h, which its conventions describe: angles are in radians
and grow counter-clockwise, coordinates are in any units, and results have the same bits on every platform.

An array that a function reads is used without a copy if it is a contiguous array of float64; anything else that holds
real numbers is converted. An array that a function writes must be a writable, contiguous array of float64. Wrong shapes
raise `ValueError` before anything is computed. A result code without a result raises a `ResultError`.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

from ._errors import ImpossibleError, IndeterminateError, NotPositiveDefiniteError, ResultError
from ._fit import Ellipses, Fit, Inverse, KindRow, KindTable, Parameters, fit
from ._functions import (AffineCoefsToInvCoefs, AffineCoefsToOmographicCoefs, AffineCoefsToParam, AffineParamsToCoefs,
                         AffineUntransform, CalcAffineCoefs, CalcCoefs, CalcConformalCoefs, CalcOmographicCoefs,
                         Cholesky, CholeskyLowTri, ConformalCoefsToAffineCoefs, ConformalCoefsToInvCoefs,
                         ConformalCoefsToParam, ConformalParamsToCoefs, DeleteCholLowTri, InitCholLowTri, Rand, Randn,
                         RandnScaled, RandRange, Roots, RootsLinear, SetRandomSeed, SolveChol, SolveCholLowTri,
                         SolveLinTrig, SolveQuadTrig, UpdateNormMatrixLowTri, UpdateNormMatrixLowTriSparse)
from ._interface import (VERSION, AffineCoefs, AffineParams, ConformalCoefs, ConformalParams, MethodUsed,
                         OmographicParams, Reason)
from ._judge import FitError

__version__ = VERSION
__all__ = [
    "AffineCoefs", "AffineCoefsToInvCoefs", "AffineCoefsToOmographicCoefs", "AffineCoefsToParam", "AffineParams",
    "AffineParamsToCoefs", "AffineUntransform", "CalcAffineCoefs", "CalcCoefs", "CalcConformalCoefs",
    "CalcOmographicCoefs", "Cholesky", "CholeskyLowTri", "ConformalCoefs", "ConformalCoefsToAffineCoefs",
    "ConformalCoefsToInvCoefs", "ConformalCoefsToParam", "ConformalParams", "ConformalParamsToCoefs",
    "DeleteCholLowTri", "Ellipses", "Fit", "FitError", "ImpossibleError", "IndeterminateError", "InitCholLowTri",
    "Inverse", "KindRow", "KindTable", "MethodUsed", "NotPositiveDefiniteError", "OmographicParams", "Parameters",
    "Rand", "RandRange", "Randn", "RandnScaled", "Reason", "ResultError", "Roots", "RootsLinear", "SetRandomSeed",
    "SolveChol", "SolveCholLowTri", "SolveLinTrig", "SolveQuadTrig", "UpdateNormMatrixLowTri",
    "UpdateNormMatrixLowTriSparse", "fit",
]
