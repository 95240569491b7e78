"""_functions.py: the thirty functions of nuv1math.h over arrays of numpy.

generate.py writes the docstrings from the comments of nuv1math.h, up to their examples.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import threading
from collections.abc import Sequence
from typing import Any, Optional

import numpy as np
from numpy.typing import ArrayLike

from ._arrays import (FLOAT64, Doubles, columns, columns_of_row, doubles, doubles_of_length, keep_apart,
                      order_of_packed, order_of_vector, packed_shape, plain, written)
from ._errors import ImpossibleError, NotPositiveDefiniteError, check_result
from ._interface import (MEANINGS, RET_IMPOSSIBLE, AffineCoefs, AffineParams, ConformalCoefs, ConformalParams,
                         MethodUsed, OmographicParams)
from ._native import ffi, lib

_AFFINE = ffi.typeof("nuv_TAffineCoefs *")
_CONFORMAL = ffi.typeof("nuv_TConformalCoefs *")
_OMOGRAPHIC = ffi.typeof("nuv_TOmographicParams *")
_DOUBLE = ffi.typeof("double *")
_INT = ffi.typeof("int *")
_METHODS = tuple(MethodUsed)

# The generator of random numbers has one state for the process and no lock, and calls run without Python's own lock.
_generator = threading.Lock()


def _read(record: Any, count: int) -> list[float]:
    """The fields of a record."""
    return ffi.unpack(ffi.cast(_DOUBLE, record), count)  # type: ignore[no-any-return]


def _affine(record: Any) -> AffineCoefs:
    return AffineCoefs._make(_read(record, 6))


def _conformal(record: Any) -> ConformalCoefs:
    return ConformalCoefs._make(_read(record, 6))


def _omographic(record: Any) -> OmographicParams:
    return OmographicParams._make(_read(record, 8))


def _record(kind: Any, fields: Sequence[float], count: int = 6) -> Any:
    """A record of C. cffi would take fewer fields too."""
    values = tuple(fields)
    if len(values) != count:
        raise ValueError(f"{len(values)} coefficients, not {count}")
    return ffi.new(kind, values)


# ---- Transformation from control points ----


def CalcCoefs(x: ArrayLike, y: ArrayLike, xa: ArrayLike, ya: ArrayLike, same_orientation: bool = True,
              requested: int = MethodUsed.OMOGRAPHIC) -> tuple[MethodUsed, OmographicParams]:
    """Computes the richest transformation that the control points support.

    The result is one record for all kinds.

    Parameters
    ----------
    x : (n,) array_like
        x of the points in the source system, n values.
    y : (n,) array_like
        y in the source system, n values.
    xa : (n,) array_like
        X in the target system, n values.
    ya : (n,) array_like
        Y in the target system, n values.
    same_orientation : bool, optional
        Used by the conformal kind only. True: the similarity keeps the orientation of the axes. False: it reverses the
        orientation, by a reflection of the target's Y axis: X = A x + B y + C, Y = B x - A y + F (image rows that grow
        downwards, against a Y that grows upwards).
    requested : MethodUsed, optional
        The richest kind that the caller accepts.

    Returns
    -------
    used : MethodUsed
        The kind of the result.
    params : OmographicParams
        The transformation; g = h = 0 for the affine and conformal kinds.

    Raises
    ------
    ImpossibleError
        If the result of C++ is false, see below.
    ValueError
        If an argument has not the shape above.

    Notes
    -----
    Limits: an omographic result is accepted if it is finite (read the limits of CalcOmographicCoefs), an affine one if
    its determinant is not zero (points on one line can pass, see CalcAffineCoefs), a conformal one always: equal
    target points give true with A and B zero or rounding noise.

    Method: try the kinds in this order and take the first usable one.

    1. Omographic, if it is requested and n >= 4. It is usable if CalcOmographicCoefs returns 1 and all eight
       coefficients are finite.
    2. Affine, if omographic or affine is requested and n >= 3. It is usable if CalcAffineCoefs returns 1 and the
       determinant ea - db is not zero; a NaN determinant is usable. The tolerance is absolute, which has two effects.
       A regular transformation is passed over if its scales multiply to 1e-12 or less (pixels of 0.1 m in degrees):
       use smaller target units. A transformation that collapses the plane can pass if its coefficients are large,
       because of rounding.
    3. Conformal, in all other cases, also if requested is not a value of the enumeration.

    Result of C++: true: used and params hold a transformation. False: n < 2, or every allowed kind failed, or the
    array for same_orientation = False could not be allocated. used is then untouched. params is untouched too, unless
    the omographic fit was tried: it then holds values that must not be used.

    Examples
    --------
    >>> x, y = [0, 100, 100, 0, 40], [0, 0, 80, 80, 30]
    >>> used, coefs = CalcCoefs(x, y, [12.1, 110.7, 112.4, 9.8, 51.3], [7.9, 11.2, 92.6, 86.1, 38.5])
    >>> used.name, round(coefs.a, 6)
    ('OMOGRAPHIC', 0.954287)
    """
    count, *points = columns(x, y, xa, ya)
    used = ffi.new(_INT)
    params = ffi.new(_OMOGRAPHIC)
    if not lib.nuv_CalcCoefs(count, *points, 1 if same_orientation else 0, requested, used, params):
        check_result("CalcCoefs", RET_IMPOSSIBLE)
    return _METHODS[used[0]], _omographic(params)


def CalcConformalCoefs(x: ArrayLike, y: ArrayLike, xa: ArrayLike, ya: ArrayLike,
                       rigid_inverse: bool = False) -> ConformalCoefs:
    r"""Fits a conformal transformation (similarity) that keeps the orientation.

    It minimises the sum of squared residuals in X and Y. For a similarity that reverses the orientation call
    CalcCoefs.

    Parameters
    ----------
    x : (n,) array_like
        x of the points in the source system, n values.
    y : (n,) array_like
        y in the source system, n values.
    xa : (n,) array_like
        X in the target system, n values.
    ya : (n,) array_like
        Y in the target system, n values.
    rigid_inverse : bool, optional
        False: the inverse fields describe the inverse. True: the inverse fields are A and -B for any scale, which
        describes the inverse of a rigid motion (A^2 + B^2 = 1) only.

    Returns
    -------
    coefs : ConformalCoefs
        The transformation.

    Raises
    ------
    ImpossibleError
        If the result of C++ is RET_IMPOSSIBLE, see below.
    ValueError
        If an argument has not the shape above.

    Notes
    -----
    Limits:

    - If all target points are equal, the result is 1 with A and B zero or rounding noise. The inverse fields are then
      NaN, infinite or meaningless, unless rigid_inverse is set.

    - The inverse fields are computed from the square of the scale. Below a scale of 7.5e-155 inv_b is infinite or NaN
      and inv_a loses digits; below 1.5e-162 both are infinite or NaN; above 1.3e154 both are 0. This does not apply if
      rigid_inverse is set.

    - If the squares of the source coordinates, counted from their mean, overflow, the result is 1 with A and B zero or
      NaN.

    - The test for equal source points is absolute. It also rejects points whose spread is below about 1e-6 units. It
      can miss equal points if their mean is rounded by more than that (three points at 1e11 + 0.1).

    Method: closed form about the centroids. With the coordinates dx, dy, dX, dY that count from the means,

    .. math:: S = \sum (dx^2 + dy^2), \quad A = \frac{\sum (dX\,dx + dY\,dy)}{S}, \quad B = \frac{\sum (dX\,dy - dY\,dx)}{S}

    A common offset of the coordinates only adds the rounding of the means, which grows with the offset and the number
    of points. Source: the four-parameter (Helmert) transformation, as in C. D. Ghilani, Adjustment Computations,
    chapter on coordinate transformations; and S. Umeyama, IEEE Trans. Pattern Anal. Mach. Intell. 13 (1991) 376-380,
    for the same minimum in any dimension.

    Result of C++: 1; RET_IMPOSSIBLE with coefs untouched if n < 2 or S is zero (all source points equal).

    Examples
    --------
    >>> CalcConformalCoefs([0, 1], [0, 0], [5, 7], [3, 3])
    ConformalCoefs(a=2.0, b=0.0, tx=5.0, ty=3.0, inv_a=0.5, inv_b=-0.0)
    """
    coefs = ffi.new(_CONFORMAL)
    result = lib.nuv_CalcConformalCoefs(*columns(x, y, xa, ya), 1 if rigid_inverse else 0, coefs)
    check_result("CalcConformalCoefs", result)
    return _conformal(coefs)


def CalcAffineCoefs(x: ArrayLike, y: ArrayLike, xa: ArrayLike, ya: ArrayLike) -> AffineCoefs:
    """Fits an affine transformation.

    It minimises the sums of squared residuals in X and in Y independently.

    Parameters
    ----------
    x : (n,) array_like
        x of the points in the source system, n values.
    y : (n,) array_like
        y in the source system, n values.
    xa : (n,) array_like
        X in the target system, n values.
    ya : (n,) array_like
        Y in the target system, n values.

    Returns
    -------
    coefs : AffineCoefs
        The transformation.

    Raises
    ------
    ImpossibleError
        If the result of C++ is RET_IMPOSSIBLE, see below.
    ValueError
        If an argument has not the shape above.

    Notes
    -----
    Limits:

    - **The fit does not detect source points on one line, nor fewer than three different source points.** It then
      returns 1 with very large or meaningless coefficients. The determinant ae - db does not reveal this. A caller
      that cannot exclude such points must test them before the fit.

    - Let r be the spread (root mean square) of the source points across their best line, divided by their spread along
      it. The errors of a, b, d and e, relative to the largest of them, are typically 3e-17/r^2 to 3e-16/r^2, and at
      most 3e-15/r^2, for up to 1000 points. They are typically 1e-15/r^2 for 10 000 points and 4e-15/r^2 for 100 000
      points, up to ten times that. No digit is left below r = 3e-8.

    - Target points on one line show in a determinant that is tiny beside the squares of the coefficients.

    Method: normal equations in coordinates that are centred on their means, so that a common offset costs no more than
    the rounding of the coordinates; 3x3 Gaussian elimination with row pivoting, which replaces a pivot of exactly zero
    by 1e-14. Source: G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed., sections 3.4 (elimination) and 5.3
    (normal equations).

    Result of C++: 1; RET_IMPOSSIBLE with coefs untouched if n < 3.

    Examples
    --------
    >>> CalcAffineCoefs([0, 2, 2, 0], [0, 0, 2, 2], [5, 9, 9, 5], [3, 3, 9, 9])
    AffineCoefs(a=2.0, b=0.0, c=5.0, d=0.0, e=3.0, f=3.0)
    """
    coefs = ffi.new(_AFFINE)
    check_result("CalcAffineCoefs", lib.nuv_CalcAffineCoefs(*columns(x, y, xa, ya), coefs))
    return _affine(coefs)


def CalcOmographicCoefs(x: ArrayLike, y: ArrayLike, xa: ArrayLike, ya: ArrayLike) -> OmographicParams:
    r"""Fits an omographic (projective) transformation.

    It minimises the sum of squared residuals in X and Y.

    Parameters
    ----------
    x : (n,) array_like
        x of the points in the source system, n values.
    y : (n,) array_like
        y in the source system, n values.
    xa : (n,) array_like
        X in the target system, n values.
    ya : (n,) array_like
        Y in the target system, n values.

    Returns
    -------
    params : OmographicParams
        The transformation.

    Raises
    ------
    IndeterminateError
        If the result of C++ is RET_INDETERMINATE, see below.
    ValueError
        If an argument has not the shape above.

    Notes
    -----
    Limits:

    - **The fit uses the coordinates as they are, without centring or scaling: subtract a local origin from both
      systems first.** If the source or target coordinates are offset from their origin by more than some hundred times
      their extent (some tens of times for four badly placed points), the result can be useless and still be 1, or
      RET_INDETERMINATE although the points determine a transformation well.

    - The constant of the denominator is fixed at 1 (see OmographicParams). Points of a transformation that takes the
      source origin to infinity can give RET_INDETERMINATE, 1 with eight NaN, or 1 with finite coefficients that fit
      badly.

    - The points determine the eight coefficients only if there are four of them of which no three lie on a line.
      Otherwise the fit can report this, or return 1 with arbitrary values.

    - So test the coefficients for finiteness and look at the residuals.

    Method: the equations multiplied by the denominator,

    .. math:: X = A x + B y + C - G X x - H X y, \quad Y = D x + E y + F - G Y x - H Y y

    are linear in the eight coefficients. Their normal equations are solved by Cholesky factorisation, with the bits
    that UpdateNormMatrixLowTri (for each point the X equation, then the Y equation), CholeskyLowTri and
    SolveCholLowTri give. At most four Gauss-Newton iterations on the true residuals follow. They end when every
    correction is below 1e-8 in absolute value, or when an iteration cannot be factorised; the coefficients reached
    before it then remain. Neither this nor the end after four iterations is an error. Source: R. Hartley, A.
    Zisserman, Multiple View Geometry, 2nd ed., sections 4.1 and 4.5 (and 4.4 for the normalisation that is *not* done
    here); A. Bjorck, Numerical Methods for Least Squares Problems, section 9.2.

    Result of C++: 1; RET_INDETERMINATE with params untouched if n < 4; RET_INDETERMINATE if the linear equations
    cannot be factorised: params then holds their right-hand side, which must not be used.

    Examples
    --------
    >>> CalcOmographicCoefs([0, 1, 1], [0, 0, 1], [0, 1, 1], [0, 0, 1])  # doctest: +ELLIPSIS
    Traceback (most recent call last):
    ...
    nuv1math.IndeterminateError: CalcOmographicCoefs: no unique result: singular equations, ...
    """
    params = ffi.new(_OMOGRAPHIC)
    check_result("CalcOmographicCoefs", lib.nuv_CalcOmographicCoefs(*columns(x, y, xa, ya), params))
    return _omographic(params)


# ---- Affine transformations ----


def AffineParamsToCoefs(sx: float, sy: float, phi: float, theta: float, tx: float, ty: float) -> AffineCoefs:
    """Computes affine coefficients from geometric parameters.

    A skew of +-pi/2 is not refused: tan(phi), about 1.6e16 there, enters b and e like any other value.

    Parameters
    ----------
    sx : float
        sx: scale along the source x axis; AffineCoefsToParam returns a negative one as -sx with -sy and theta + pi.
    sy : float
        sy: scale across the image of the x axis; negative for a mirror image.
    phi : float
        phi: skew angle, radians.
    theta : float
        theta: rotation angle, radians.
    tx : float
        tx: translation of X, target units.
    ty : float
        ty: translation of Y, target units.

    Returns
    -------
    coefs : AffineCoefs
        The transformation, all six fields.
    """
    coefs = ffi.new(_AFFINE)
    lib.nuv_AffineParamsToCoefs(sx, sy, phi, theta, tx, ty, coefs)
    return _affine(coefs)


def AffineCoefsToParam(coefs: Sequence[float]) -> AffineParams:
    """Computes geometric parameters from affine coefficients.

    Parameters
    ----------
    coefs : AffineCoefs
        The transformation.

    Returns
    -------
    AffineParams
        sx: sx >= 0; sy: sy; phi: phi in [-pi/2, pi/2]; theta: theta in [0, 2 pi], both ends included: a tiny negative
        rotation gives 2 pi itself; -0.0 occurs; tx: tx = c; ty: ty = f.

    Raises
    ------
    ImpossibleError
        If the result of C++ is RET_IMPOSSIBLE, see below.
    ValueError
        If an argument has not the shape above.

    Notes
    -----
    Method: sx is the length of (a, d) and theta is its direction. The column (b, e), turned back by theta, is sy
    (tan(phi), 1). A mirror image appears as a negative sy.

    Result of C++: 1; RET_IMPOSSIBLE if sx is zero (only sx is written) or sy is zero (only sx, theta and sy are
    written).

    Examples
    --------
    >>> AffineCoefsToParam([2, 0, 5, 0, 3, 7])
    AffineParams(sx=2.0, sy=3.0, phi=0.0, theta=0.0, tx=5.0, ty=7.0)
    """
    params = ffi.new("double[6]")
    result = lib.nuv_AffineCoefsToParam(_record(_AFFINE, coefs), *(params + i for i in range(6)))
    check_result("AffineCoefsToParam", result)
    return AffineParams._make(params)


def AffineCoefsToInvCoefs(coefs: Sequence[float]) -> AffineCoefs:
    """Computes the inverse affine transformation (Cramer's rule).

    Parameters
    ----------
    coefs : AffineCoefs
        The transformation.

    Returns
    -------
    inverse : AffineCoefs
        Its inverse.

    Raises
    ------
    ImpossibleError
        If the result of C++ is RET_IMPOSSIBLE, see below.
    ValueError
        If an argument has not the shape above.

    Notes
    -----
    Result of C++: 1; RET_IMPOSSIBLE with inverse untouched if the determinant ae - db is zero. This includes regular
    transformations whose scales multiply to 1e-12 or less.

    Examples
    --------
    >>> AffineCoefsToInvCoefs([2, 0, 6, 0, 4, 8])
    AffineCoefs(a=0.5, b=-0.0, c=-3.0, d=-0.0, e=0.25, f=-2.0)
    """
    inverse = ffi.new(_AFFINE)
    check_result("AffineCoefsToInvCoefs", lib.nuv_AffineCoefsToInvCoefs(_record(_AFFINE, coefs), inverse))
    return _affine(inverse)


def AffineUntransform(coefs: Sequence[float], xa: float, ya: float) -> tuple[float, float]:
    """Maps a target point back to the source: solves a x + b y = X - c, d x + e y = Y - f by the two-unknown Roots.

    Parameters
    ----------
    coefs : AffineCoefs
        The transformation.
    xa : float
        X of the target point.
    ya : float
        Y of the target point.

    Returns
    -------
    x : float
        x of the source point; 0 if the determinant is zero.
    y : float
        y of the source point; 0 if the determinant is zero.

    Raises
    ------
    ImpossibleError
        If the determinant is zero and the equations contradict each other.
    ValueError
        If an argument has not the shape above.

    Notes
    -----
    Here the process does not end: the function raises `ImpossibleError` instead.

    Limit: **The process ends if the determinant ae - db is zero and e (X - c) - b (Y - f) is not** (see Broken
    invariants in the conventions). This includes regular transformations whose scales multiply to 1e-12 or less
    (pixels of 0.1 m in degrees). If both are zero, the result is (0, 0), even if the equations contradict each other,
    as they can when all coefficients are 0. If the determinant can be zero, call AffineCoefsToInvCoefs or Roots
    instead: they report it.

    Examples
    --------
    >>> AffineUntransform([2, 0, 6, 0, 4, 8], 10, 16)
    (2.0, 2.0)
    """
    record = _record(_AFFINE, coefs)
    point = ffi.new("double[2]")
    # The library ends the process where these equations, which it solves too, have no solution.
    if lib.nuv_RootsLinear(record.dA, record.dB, record.dD, record.dE, xa - record.dC, ya - record.dF, point,
                           point + 1) == RET_IMPOSSIBLE:
        raise ImpossibleError(f"AffineUntransform: {MEANINGS[RET_IMPOSSIBLE]}")
    lib.nuv_AffineUntransform(record, xa, ya, point, point + 1)
    return point[0], point[1]


# ---- Conformal transformations ----


def ConformalParamsToCoefs(scale: float, angle: float, tx: float, ty: float) -> ConformalCoefs:
    """Computes conformal coefficients from scale, rotation and translations.

    Parameters
    ----------
    scale : float
        s: scale; ConformalCoefsToParam returns a negative one as -s with theta + pi.
    angle : float
        theta: rotation angle, radians, positive counter-clockwise.
    tx : float
        Translation of X, target units.
    ty : float
        Translation of Y, target units.

    Returns
    -------
    coefs : ConformalCoefs
        The transformation, all six fields.

    Notes
    -----
    Limit: the inverse fields are infinite or NaN if 1/s is infinite: for s = 0 and for magnitudes of s below 5.6e-309.
    """
    coefs = ffi.new(_CONFORMAL)
    lib.nuv_ConformalParamsToCoefs(scale, angle, tx, ty, coefs)
    return _conformal(coefs)


def ConformalCoefsToParam(coefs: Sequence[float]) -> ConformalParams:
    """Computes scale, rotation and translations from conformal coefficients.

    Parameters
    ----------
    coefs : ConformalCoefs
        The transformation; the inverse fields are not used.

    Returns
    -------
    ConformalParams
        scale: s >= 0; angle: theta in [0, 2 pi], both ends included; -0.0 occurs; 0 if the scale is zero; tx:
        translation of X; ty: translation of Y.

    Raises
    ------
    ImpossibleError
        If the result of C++ is RET_IMPOSSIBLE, see below.
    ValueError
        If an argument has not the shape above.

    Notes
    -----
    Result of C++: 1; RET_IMPOSSIBLE if the scale is zero. All four outputs are written in both cases.
    """
    params = ffi.new("double[4]")
    result = lib.nuv_ConformalCoefsToParam(_record(_CONFORMAL, coefs), *(params + i for i in range(4)))
    check_result("ConformalCoefsToParam", result)
    return ConformalParams._make(params)


def ConformalCoefsToInvCoefs(coefs: Sequence[float]) -> ConformalCoefs:
    """Computes the inverse conformal transformation.

    Its linear part is taken from the inverse fields of the record.

    Parameters
    ----------
    coefs : ConformalCoefs
        The transformation.

    Returns
    -------
    inverse : ConformalCoefs
        Its inverse, all six fields.

    Raises
    ------
    ValueError
        If an argument has not the shape above.
    """
    inverse = ffi.new(_CONFORMAL)
    lib.nuv_ConformalCoefsToInvCoefs(_record(_CONFORMAL, coefs), inverse)
    return _conformal(inverse)


def ConformalCoefsToAffineCoefs(coefs: Sequence[float]) -> AffineCoefs:
    """Converts a conformal transformation to an affine one: a = e = A, b = B, d = -B, c = Tx, f = Ty.

    Parameters
    ----------
    coefs : ConformalCoefs
        The transformation; the inverse fields are not used.

    Returns
    -------
    affine : AffineCoefs
        The same transformation, all six fields.

    Raises
    ------
    ValueError
        If an argument has not the shape above.
    """
    affine = ffi.new(_AFFINE)
    lib.nuv_ConformalCoefsToAffineCoefs(_record(_CONFORMAL, coefs), affine)
    return _affine(affine)


# ---- Omographic transformations ----


def AffineCoefsToOmographicCoefs(affine: Sequence[float]) -> OmographicParams:
    """Converts an affine transformation to an omographic one: the six coefficients in order, g = h = 0.

    Parameters
    ----------
    affine : AffineCoefs
        The transformation.

    Returns
    -------
    params : OmographicParams
        The same transformation, all eight fields.

    Raises
    ------
    ValueError
        If an argument has not the shape above.
    """
    params = ffi.new(_OMOGRAPHIC)
    lib.nuv_AffineCoefsToOmographicCoefs(_record(_AFFINE, affine), params)
    return _omographic(params)


# ---- Normal equations and Cholesky, packed ----


def InitCholLowTri(unknowns: int) -> tuple[Doubles, Doubles]:
    """Allocates a packed matrix and a vector for n unknowns and fills them with zeros.

    If either allocation fails, both addresses are null and nothing stays allocated. Release the arrays by
    DeleteCholLowTri only.

    Parameters
    ----------
    unknowns : int
        n; a value below 1 counts as 0, and the addresses are then what the allocator returns for a size of 0, possibly
        null.

    Returns
    -------
    matrix : (n(n+1)/2,) ndarray of float64
        Address of n(n+1)/2 doubles.
    vector : (n,) ndarray of float64
        Address of n doubles.

    Notes
    -----
    Here the arrays release their memory by themselves when nothing refers to them any more.

    Examples
    --------
    The line y = p x + q by least squares:

    >>> matrix, vector = InitCholLowTri(2)
    >>> for x, y in (0, 1), (1, 3), (2, 5):
    ...     UpdateNormMatrixLowTri(matrix, vector, [x, 1], y)
    >>> CholeskyLowTri(matrix)
    >>> SolveCholLowTri(matrix, vector)
    >>> vector.round(12)
    array([2., 1.])
    """
    addresses = ffi.new("double *[2]")
    lib.nuv_InitCholLowTri(unknowns, addresses, addresses + 1)
    # Each array releases its own memory when nothing refers to it any more.
    matrix = ffi.gc(addresses[0], lambda address: lib.nuv_DeleteCholLowTri(address, ffi.NULL))
    vector = ffi.gc(addresses[1], lambda address: lib.nuv_DeleteCholLowTri(ffi.NULL, address))
    if unknowns < 1:
        return np.zeros(0), np.zeros(0)
    if not matrix:
        raise MemoryError(f"no memory for {unknowns} unknowns")
    return tuple(np.frombuffer(ffi.buffer(address, count * FLOAT64.itemsize))  # type: ignore[return-value]
                 for address, count in ((matrix, packed_shape(unknowns)[0]), (vector, unknowns)))


def DeleteCholLowTri(matrix: Optional[Doubles], vector: Optional[Doubles]) -> None:
    """Releases what InitCholLowTri allocated.

    Null pointers are allowed.

    Parameters
    ----------
    matrix : ndarray of float64, or None
        The packed matrix.
    vector : ndarray of float64, or None
        The vector.

    Raises
    ------
    ValueError
        If an argument has not the shape above.

    Notes
    -----
    Here the arrays can still be read; writing to them fails. Their memory is released when nothing refers to them any
    more.
    """
    arrays = [array for array in (matrix, vector) if array is not None]
    if not all(isinstance(array, np.ndarray) and (not array.size or isinstance(array.base, ffi.buffer))
               for array in arrays):
        raise ValueError("an array is not one of InitCholLowTri")
    for array in arrays:
        array.flags.writeable = False


def UpdateNormMatrixLowTri(matrix: Doubles, vector: Doubles, row: ArrayLike, value: float) -> None:
    """Adds one observation with all n coefficients: N += a a^T, u += a l.

    Parameters
    ----------
    matrix : (n(n+1)/2,) ndarray of float64
        In and out: packed N, n(n+1)/2 values.
    vector : (n,) ndarray of float64
        In and out: u, n values.
    row : (n,) array_like
        a: the coefficients, n values.
    value : float
        l: the observed value.

    Raises
    ------
    ValueError
        If an argument has not the shape above, or cannot be written.
    """
    unknowns = order_of_vector(vector)
    sums = written(matrix, packed_shape(unknowns), "matrix")
    right = written(vector, (unknowns,), "vector")
    coefficients = doubles_of_length(unknowns, row, "row")
    keep_apart(matrix=sums, vector=right, row=coefficients)
    keep_apart(vector=right, row=coefficients)
    lib.nuv_UpdateNormMatrixLowTri(unknowns, sums, right, coefficients, value)


def UpdateNormMatrixLowTriSparse(matrix: Doubles, vector: Doubles, values: ArrayLike, indices: ArrayLike,
                                 value: float) -> None:
    """Adds one observation that has coefficients in k columns only.

    The columns may come in any order.

    Parameters
    ----------
    matrix : (n(n+1)/2,) ndarray of float64
        In and out: packed N.
    vector : (n,) ndarray of float64
        In and out: u.
    values : (k,) array_like
        v: the coefficients, k values.
    indices : (k,) array_like of int
        Their columns, counted from 0, k values; an entry with a negative index is skipped.
    value : float
        l: the observed value.

    Raises
    ------
    ValueError
        If an argument has not the shape above, or cannot be written.

    Notes
    -----
    Here an index that is n or more raises `ValueError`.

    Limit: repeated columns are not merged. If entries p > q have the same column, its diagonal element receives v[p]^2
    + v[q]^2 + v[p] v[q]. An observation with the sum v[p] + v[q] in that column would add v[p] v[q] twice.
    """
    unknowns = order_of_vector(vector)
    sums = written(matrix, packed_shape(unknowns), "matrix")
    right = written(vector, (unknowns,), "vector")
    coefficients = doubles(values, "values")
    keep_apart(matrix=sums, vector=right, values=coefficients)
    keep_apart(vector=right, values=coefficients)
    places = columns_of_row(indices, len(coefficients), unknowns)
    lib.nuv_UpdateNormMatrixLowTriSparse(unknowns, sums, right, len(coefficients), coefficients, places, value)


def CholeskyLowTri(matrix: Doubles) -> None:
    """Factorises N = L L^T in place, column by column, without pivoting and without tolerance.

    Parameters
    ----------
    matrix : (n(n+1)/2,) ndarray of float64
        in: packed N; out: packed L, n(n+1)/2 values.

    Raises
    ------
    NotPositiveDefiniteError
        If the result of C++ is false, see below.
    ValueError
        If an argument has not the shape above, or cannot be written.

    Notes
    -----
    Limit: a radicand (the value under the square root of a diagonal element) of exactly 0 is accepted. In the last row
    the result is then true, and SolveCholLowTri divides by zero. In an earlier row the column below becomes infinite
    or NaN, and the factorisation fails at the next diagonal element.

    Result of C++: true; false if a radicand is negative or NaN. The columns before that diagonal element then hold L;
    the rest of the triangle, the diagonal element included, is unchanged.
    """
    unknowns = order_of_packed(matrix)
    if not lib.nuv_CholeskyLowTri(unknowns, written(matrix, packed_shape(unknowns), "matrix")):
        raise NotPositiveDefiniteError("CholeskyLowTri: a radicand is negative or NaN")


def SolveCholLowTri(factor: ArrayLike, vector: Doubles) -> None:
    """Solves L L^T x = u in place.

    One factor serves any number of calls.

    Parameters
    ----------
    factor : (n(n+1)/2,) array_like
        Packed L of CholeskyLowTri, n(n+1)/2 values.
    vector : (n,) ndarray of float64
        in: u; out: x, n values.

    Raises
    ------
    ValueError
        If an argument has not the shape above, or cannot be written.
    """
    unknowns = order_of_vector(vector)
    right = written(vector, (unknowns,), "vector")
    triangle = doubles_of_length(packed_shape(unknowns)[0], factor, "factor")
    keep_apart(vector=right, factor=triangle)
    lib.nuv_SolveCholLowTri(unknowns, triangle, right)


# ---- Linear systems ----


def RootsLinear(a11: float, a12: float, a21: float, a22: float, b1: float, b2: float) -> tuple[float, float]:
    r"""Solves two linear equations by Cramer's rule.

    .. math:: a_{11} x + a_{12} y = b_1, \quad a_{21} x + a_{22} y = b_2

    Parameters
    ----------
    a11 : float
        a11.
    a12 : float
        a12.
    a21 : float
        a21.
    a22 : float
        a22.
    b1 : float
        b1.
    b2 : float
        b2.

    Returns
    -------
    x : float
        x.
    y : float
        y.

    Raises
    ------
    ImpossibleError
        If the result of C++ is RET_IMPOSSIBLE, see below.
    IndeterminateError
        If the result of C++ is RET_INDETERMINATE, see below.

    Notes
    -----
    Limits: the tolerances are absolute, so a well-conditioned system with small coefficients counts as singular: scale
    the equations. In a singular system only the numerator of x, a22 b1 - a12 b2, is tested, and not that of y: if all
    coefficients are 0, the result is RET_INDETERMINATE for any finite b1 and b2.

    Result of C++: 1. If the determinant a11 a22 - a12 a21 is zero, x and y are untouched and the result is
    RET_INDETERMINATE (usually infinitely many solutions) if the numerator of x is zero too, and RET_IMPOSSIBLE if it
    is not.

    Examples
    --------
    >>> RootsLinear(2, 1, 1, 3, 5, 10)
    (1.0, 3.0)
    """
    point = ffi.new("double[2]")
    check_result("RootsLinear", lib.nuv_RootsLinear(a11, a12, a21, a22, b1, b2, point, point + 1))
    return point[0], point[1]


# ---- Cholesky, dense ----


def Cholesky(matrix: Doubles) -> None:
    """Factorises A = L L^T in place, column by column, without pivoting and without tolerance.

    Parameters
    ----------
    matrix : (n, n) ndarray of float64
        in: lower triangle of A; out: L; n^2 values.

    Raises
    ------
    NotPositiveDefiniteError
        If the result of C++ is false, see below.
    ValueError
        If an argument has not the shape above, or cannot be written.

    Notes
    -----
    Limit: a radicand (the value under the square root of a diagonal element) of exactly 0 is accepted. In the last row
    the result is then true, and SolveChol divides by zero. In an earlier row the column below becomes infinite or NaN,
    and the factorisation fails at the next diagonal element.

    Result of C++: true; false if a radicand is negative or NaN. The columns before that diagonal element then hold L;
    the rest of the triangle, the diagonal element included, is unchanged.

    Examples
    --------
    >>> matrix = np.array([[4.0, 0.0], [2.0, 5.0]])
    >>> Cholesky(matrix)
    >>> matrix
    array([[2., 0.],
           [1., 2.]])
    >>> vector = np.array([8.0, 14.0])
    >>> SolveChol(matrix, vector)
    >>> vector
    array([0.75, 2.5 ])
    """
    order = matrix.shape[0] if isinstance(matrix, np.ndarray) and matrix.ndim else 0
    if not lib.nuv_Cholesky(order, written(matrix, (order, order), "matrix")):
        raise NotPositiveDefiniteError("Cholesky: a radicand is negative or NaN")


def SolveChol(factor: ArrayLike, vector: Doubles) -> None:
    """Solves L L^T x = b in place.

    One factor serves any number of calls. The backward substitution subtracts its terms in ascending order;
    SolveCholLowTri subtracts them in descending order, so the two can differ in the last bits.

    Parameters
    ----------
    factor : (n, n) array_like
        L of Cholesky, n^2 values.
    vector : (n,) ndarray of float64
        in: b; out: x, n values.

    Raises
    ------
    ValueError
        If an argument has not the shape above, or cannot be written.
    """
    order = order_of_vector(vector)
    right = written(vector, (order,), "vector")
    square = plain(factor, "factor")
    if square.shape != (order, order):
        raise ValueError(f"factor has the shape {square.shape}, not {(order, order)}")
    lower = doubles(square.reshape(-1), "factor")
    keep_apart(vector=right, factor=lower)
    lib.nuv_SolveChol(order, lower, right)


# ---- Polynomials ----


def Roots(coefficients: ArrayLike, tolerance: float) -> Doubles:
    """Computes the real roots of a polynomial with real coefficients, as eigenvalues of its companion matrix.

    Parameters
    ----------
    coefficients : (degree + 1,) array_like
        Degree + 1 coefficients, that of the highest power first; a coefficient counts as zero only if it is exactly 0.
    tolerance : float
        An eigenvalue counts as real if its imaginary part is below this in absolute value; with 0, a negative value or
        NaN only the roots 0 of trailing zeros are reported.

    Returns
    -------
    roots : (count,) ndarray of float64
        The roots, room for degree values; only as many as the result says are written. One exception: if memory is
        short, zero roots may be written although the result is 0.

    Raises
    ------
    ImpossibleError
        If the result of C++ is RET_IMPOSSIBLE, see below.
    IndeterminateError
        If the result of C++ is RET_INDETERMINATE, see below.
    ValueError
        If an argument has not the shape above.

    Notes
    -----
    Limits:

    - **The count can be smaller than the number of real roots, without notice.** The iteration gives up on some
      ordinary polynomials, and the eigenvalues that it has not found by then are never reported: x^4 - 2x^2 + 1, with
      the double roots 1 and -1, gives 0 roots. To find out, call with an infinite tolerance: if the coefficients are
      finite and the first is not 0, a result below the degree means that eigenvalues are missing.

    - How often it gives up: of all polynomials with integer coefficients from -3 to 3, on none of degree 2 and 3, on 4
      of 14406 of degree 4 and on 12 of 100842 of degree 5, all of them with multiple roots; of the squares of those of
      degree 2, 3 and 4, on 40 of 294, 240 of 2058 and 2536 of 14406; of products of random linear factors, on none of
      1000 for each of ten degrees from 2 to 20.

    - A root of multiplicity k splits into neighbours at a distance of about the k-th root of 1e-16 (1e-8 for a double,
      1e-5 for a triple root), as real values or as complex pairs. A pair within the tolerance counts as two real
      roots, a pair outside it as none. With the tolerance 1e-6 a triple root is usually reported once.

    - Scale x so that the roots are about 1 in size. The roots of x^n - 1 are good to 14 digits up to degree 200. Those
      of x^n - 2^n are wrong in the fourth digit at degree 60, and their number is wrong at 93 of the 128 degrees from
      73 to 200.

    - The roots are as exact as the eigenvalues. They are not polished.
    - The function multiplies the other coefficients by the reciprocal of the leading one. Neither that reciprocal nor
      the products may overflow.

    - The time grows with the cube of the degree, the memory with its square.

    Method: leading zero coefficients lower the degree; trailing ones are roots 0. The companion matrix of the rest is
    balanced, reduced to Hessenberg form and solved by Francis' double-shift QR iteration, with at most 30 iterations
    for an eigenvalue. Source: A. Edelman, H. Murakami, Math. Comp. 64 (1995) 763-776; B. N. Parlett, C. Reinsch,
    Numer. Math. 13 (1969) 293-304; R. S. Martin, G. Peters, J. H. Wilkinson, Numer. Math. 14 (1970) 219-231.

    Result of C++: the number of roots written. A multiple root counts as often as it was found. The roots that are
    exactly 0 because of trailing zeros come first, the others follow in no particular order. RET_IMPOSSIBLE for a
    constant other than 0, and RET_INDETERMINATE if all coefficients are 0; roots is then untouched. If memory is
    short, the result is 0, or only the roots that are exactly 0, or (if only the table of column addresses could not
    be allocated) the roots of the unbalanced matrix.

    Examples
    --------
    >>> Roots([1, -3, 2, 0], 1e-9).round(12)
    array([0., 2., 1.])
    """
    values = doubles(coefficients, "coefficients")
    if not len(values):
        raise ValueError("coefficients is empty: the degree would be negative")
    roots = np.empty(len(values) - 1)
    result = lib.nuv_Roots(len(roots), values, doubles(roots, "roots"), tolerance)
    check_result("Roots", result)
    return roots[:result]


# ---- Trigonometric equations ----


def _angles(function: str, room: int, *coefficients: float) -> Doubles:
    """The angles that solve a trigonometric equation."""
    angles = ffi.new("double[]", room)
    result = getattr(lib, f"nuv_{function}")(*coefficients, angles)
    check_result(function, result)
    return np.array(ffi.unpack(angles, result), dtype=FLOAT64)


def SolveLinTrig(a: float, b: float, c: float) -> Doubles:
    r"""Finds the angles t that solve a linear equation in their cosine and sine.

    .. math:: a \cos t + b \sin t + c = 0

    Parameters
    ----------
    a : float
        a.
    b : float
        b.
    c : float
        c.

    Returns
    -------
    angles : (count,) ndarray of float64
        The angles, room for 2; ascending, except that the greater one comes first if c = 0, a > 0 and b is not 0.

    Raises
    ------
    ImpossibleError
        If the result of C++ is RET_IMPOSSIBLE, see below.
    IndeterminateError
        If the result of C++ is RET_INDETERMINATE, see below.

    Notes
    -----
    Limits: near a tangent solution, where a^2 + b^2 is close to c^2, rounding decides between no, one and two angles.
    A tangent solution is found twice if a = 0, and once if b = 0 or if rounding leaves the discriminant exactly 0.

    Method: by asin, acos or atan2 if a coefficient is 0. Otherwise the quadratic (c - a) u^2 + 2 b u + (a + c) = 0 in
    u = tan(t/2), whose roots are computed from the discriminant without cancellation.

    Result of C++: the number of angles written, 0 to 2. RET_INDETERMINATE if a = b = c = 0 (every angle solves). If
    there is no solution: RET_IMPOSSIBLE if a or b is 0, and the count 0 if neither is. angles is untouched if the
    result is not positive.

    Examples
    --------
    >>> SolveLinTrig(1, 0, 0).round(6)
    array([1.570796, 4.712389])
    """
    return _angles("SolveLinTrig", 2, a, b, c)


def SolveQuadTrig(a: float, b: float, c: float, d: float, e: float, f: float) -> Doubles:
    r"""Finds the angles t that solve a quadratic equation in their cosine and sine.

    .. math:: a \cos^2 t + b \sin^2 t + c \sin t \cos t + d \cos t + e \sin t + f = 0

    Parameters
    ----------
    a : float
        a.
    b : float
        b.
    c : float
        c.
    d : float
        d.
    e : float
        e.
    f : float
        f.

    Returns
    -------
    angles : (count,) ndarray of float64
        The angles, ascending, room for 4; values beyond the count are meaningless.

    Raises
    ------
    ImpossibleError
        If the result of C++ is RET_IMPOSSIBLE, see below.
    IndeterminateError
        If the result of C++ is RET_INDETERMINATE, see below.

    Notes
    -----
    Limits:

    - A quartic is solved unless d = e = 0, or c = 0 and a = b. The limits of the polynomial Roots then hold: **tangent
      solutions, which are double roots, can be missed, or found twice at a distance of about 1e-8; and angles can be
      missed where the iteration gives up.** (cos(t) - 0.5)^2 = 0 gives no angle, (cos(t) - 0.6)^2 = 0 gives each of
      its two angles twice.

    - 0 and 2 pi count as different angles.
    - If memory is short, the angles of a quartic are missing without notice.

    Method: a product of linear factors or a quadratic in tan(t) if d = e = 0; the linear equation if c = 0 and a = b;
    otherwise a quartic in tan(t/2), of which the roots with an imaginary part below 1e-6 are used. The angles are
    sorted, and angles within 1e-12 of the first of their group are dropped.

    Result of C++: the number of different angles written, 0 to 4. RET_INDETERMINATE if every angle solves (a + f, b +
    f, c, d and e are all 0). If there is no solution: RET_IMPOSSIBLE if c = 0, a = b and exactly one of d and e is 0,
    and the count 0 otherwise. angles is untouched if the result is not positive.

    Examples
    --------
    >>> SolveQuadTrig(1, 0, 0, 0, 0, -0.25).round(6)
    array([1.047198, 2.094395, 4.18879 , 5.235988])
    """
    return _angles("SolveQuadTrig", 4, a, b, c, d, e, f)


# ---- Random numbers ----


def SetRandomSeed(seed: int) -> None:
    """Restarts the sequence of uniform numbers.

    It does not drop the second normal number of a pair (see Randn): the next Randn still returns it.

    Parameters
    ----------
    seed : int
        Any value; there are only 259200 sequences, so different seeds can give the same one.

    Examples
    --------
    >>> SetRandomSeed(1)
    >>> first = Rand()
    >>> SetRandomSeed(1)
    >>> Rand() == first
    True
    """
    with _generator:
        lib.nuv_SetRandomSeed(seed)


def Rand() -> float:
    """Draws a uniform random number.

    Returns
    -------
    float
        A value of [0, 1).
    """
    with _generator:
        return lib.nuv_Rand()  # type: ignore[no-any-return]


def RandRange(low: float, high: float) -> float:
    """Draws a uniform random number between two bounds: (high - low) Rand() + low.

    Parameters
    ----------
    low : float
        Low; may be greater than high.
    high : float
        High; high - low must not overflow.

    Returns
    -------
    float
        A value of [low, high), or of (high, low] if low is greater; rounding can give high itself.
    """
    with _generator:
        return lib.nuv_RandRange(low, high)  # type: ignore[no-any-return]


def Randn() -> float:
    """Draws a random number of the standard normal distribution.

    The function computes two numbers at a time, and every second call returns the second one.

    Returns
    -------
    float
        A value of mean 0 and standard deviation 1.
    """
    with _generator:
        return lib.nuv_Randn()  # type: ignore[no-any-return]


def RandnScaled(mean: float, sigma: float) -> float:
    """Draws a random number of a normal distribution: Randn() sigma + mean.

    Parameters
    ----------
    mean : float
        Mean.
    sigma : float
        sigma: standard deviation.

    Returns
    -------
    float
        The value.
    """
    with _generator:
        return lib.nuv_RandnScaled(mean, sigma)  # type: ignore[no-any-return]
