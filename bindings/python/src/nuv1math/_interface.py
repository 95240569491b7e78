"""_interface.py: constants, enumerations and records of the headers of C++.

Made by generate.py from nuv1math.h, judgement.h and support.cpp of fitpoints; change those, and run it again.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import enum
from typing import NamedTuple

VERSION = "1.0.0"
RET_IMPOSSIBLE = -1
RET_INDETERMINATE = -2

# The meanings of the results that are not counts.
MEANINGS = {
    RET_IMPOSSIBLE: "no result: too few points, a degenerate input, or no solution",
    RET_INDETERMINATE: "no unique result: singular equations, or every value solves",
}


class MethodUsed(enum.IntEnum):
    """The kinds of transformation among which CalcCoefs chooses, from the poorest to the richest.

    Attributes
    ----------
    CONFORMAL
        Similarity, four coefficients, at least 2 points (CalcConformalCoefs).
    AFFINE
        Affine, six coefficients, at least 3 points (CalcAffineCoefs).
    OMOGRAPHIC
        Projective, eight coefficients, at least 4 points (CalcOmographicCoefs).
    """

    CONFORMAL = 0
    AFFINE = 1
    OMOGRAPHIC = 2


class Reason(enum.IntEnum):
    """Why there is no result.

    Attributes
    ----------
    NONE
        There is a result.
    NO_MEMORY
        A scratch array could not be allocated.
    TOO_FEW_POINTS
        Fewer points than the kind needs (LeastPoints).
    SOURCE_EQUAL
        All source points are equal: no transformation.
    TARGET_EQUAL
        All target points are equal: no transformation.
    SOURCE_TOO_LARGE
        Source points are more than 1e150 apart: their squares are beyond a double.
    TARGET_TOO_LARGE
        Target points are more than 1e150 apart.
    SOURCE_ON_LINE
        The source points lie on one line: no affine or omographic kind.
    TARGET_ON_LINE
        The target points lie on one line: no affine or omographic kind.
    SOURCE_NO_FOUR
        All source points but one lie on a line: no omographic kind.
    TARGET_NO_FOUR
        All target points but one lie on a line: no omographic kind.
    SPREAD_IS_ZERO
        The library takes the spread of the source points (below 1e-6) as zero.
    AFFINE_COLLAPSES
        The affine fit collapses the plane: its determinant counts as zero.
    OMOGRAPHIC_UNSOLVABLE
        The equations of the omographic fit cannot be solved.
    COEFS_NOT_FINITE
        The coefficients of the omographic fit are not finite.
    RESIDUALS_NOT_FINITE
        A residual, or the sum of their squares, is not finite.
    NO_REDUNDANCY
        Too few points to judge the kind: fewer than LeastPoints + 1.
    DEPENDS_ON_POINT
        Without one of the points the others do not determine the kind.
    SINGULAR
        The normal equations of the fit cannot be factorised.
    NOT_INVERTIBLE
        The transformation has no inverse at the point, or it is not finite.
    """

    NONE = 0
    NO_MEMORY = 1
    TOO_FEW_POINTS = 2
    SOURCE_EQUAL = 3
    TARGET_EQUAL = 4
    SOURCE_TOO_LARGE = 5
    TARGET_TOO_LARGE = 6
    SOURCE_ON_LINE = 7
    TARGET_ON_LINE = 8
    SOURCE_NO_FOUR = 9
    TARGET_NO_FOUR = 10
    SPREAD_IS_ZERO = 11
    AFFINE_COLLAPSES = 12
    OMOGRAPHIC_UNSOLVABLE = 13
    COEFS_NOT_FINITE = 14
    RESIDUALS_NOT_FINITE = 15
    NO_REDUNDANCY = 16
    DEPENDS_ON_POINT = 17
    SINGULAR = 18
    NOT_INVERTIBLE = 19


class Method(enum.IntEnum):
    """What Judge is asked for. The first three values are those of MethodUsed.

    Attributes
    ----------
    CONFORMAL
        This kind, or a failure.
    AFFINE
        This kind, or a failure.
    OMOGRAPHIC
        This kind, or a failure.
    RICHEST
        The richest kind that the points support: the choice of the library's CalcCoefs.
    AUTO
        The kind with the least leave-one-out error (ChooseKind).
    """

    CONFORMAL = 0
    AFFINE = 1
    OMOGRAPHIC = 2
    RICHEST = 3
    AUTO = 4


class Choice(enum.IntEnum):
    """Why a kind was taken.

    Attributes
    ----------
    ASKED
        It was asked for.
    RICHEST
        The richest one was asked for, and this is it.
    LEAST_ERROR
        Its leave-one-out error is the least.
    POORER_AS_GOOD
        A richer kind has a smaller leave-one-out error, by 5 % or less, or within rounding.
    NOT_JUDGED
        No kind has the points to be judged: the poorest one that exists, without any check.
    """

    ASKED = 0
    RICHEST = 1
    LEAST_ERROR = 2
    POORER_AS_GOOD = 3
    NOT_JUDGED = 4


class Role(enum.IntEnum):
    """What a point is for.

    Attributes
    ----------
    FITTED
        The fit uses it.
    CHECK
        A check point: not fitted, but its residual is computed.
    DROPPED
        A blunder that Judge has dropped; like a check point from then on. Output only.
    """

    FITTED = 0
    CHECK = 1
    DROPPED = 2


# The sentences of fitpoints.
REASON_TEXTS = {
    Reason.NO_MEMORY:
        "not enough memory",
    Reason.SOURCE_EQUAL:
        "all source points are equal",
    Reason.TARGET_EQUAL:
        "all target points are equal",
    Reason.SOURCE_TOO_LARGE:
        "the source points are more than 1e150 apart: their squares are beyond a double",
    Reason.TARGET_TOO_LARGE:
        "the target points are more than 1e150 apart: their squares are beyond a double",
    Reason.SOURCE_ON_LINE:
        "the source points lie on one line",
    Reason.TARGET_ON_LINE:
        "the target points lie on one line",
    Reason.SOURCE_NO_FOUR:
        "all source points, or all but one, lie on one line: the omographic kind needs four of which no three do",
    Reason.TARGET_NO_FOUR:
        "all target points, or all but one, lie on one line: the omographic kind needs four of which no three do",
    Reason.SPREAD_IS_ZERO:
        "the spread of the source points counts as zero (below about 1e-6)",
    Reason.AFFINE_COLLAPSES:
        "the affine fit collapses the plane (its determinant counts as zero)",
    Reason.OMOGRAPHIC_UNSOLVABLE:
        "the equations of the omographic fit cannot be solved",
    Reason.COEFS_NOT_FINITE:
        "the omographic fit gives coefficients that are not finite",
    Reason.DEPENDS_ON_POINT:
        "without one of the points the others do not determine it",
    Reason.SINGULAR:
        "the equations of the fit are singular",
}


class AffineCoefs(NamedTuple):
    r"""An affine transformation.

    .. math:: X = a x + b y + c, \quad Y = d x + e y + f

    Attributes
    ----------
    a : float
        a: coefficient of x in X.
    b : float
        b: coefficient of y in X.
    c : float
        c: translation of X, target units.
    d : float
        d: coefficient of x in Y.
    e : float
        e: coefficient of y in Y.
    f : float
        f: translation of Y, target units.
    """

    a: float
    b: float
    c: float
    d: float
    e: float
    f: float


class ConformalCoefs(NamedTuple):
    r"""A conformal transformation (a similarity that keeps the orientation).

    .. math:: X = A x + B y + T_x, \quad Y = -B x + A y + T_y, \quad A = s \cos\theta, \quad B = -s \sin\theta

    with the scale s and the rotation theta. The record also holds the linear part of the inverse; after a fit with
    rigid_inverse these two fields are A and -B instead. Every function uses the fields as they are and recomputes none
    from the others.

    Attributes
    ----------
    a : float
        A = s cos(theta): coefficient of x in X and of y in Y.
    b : float
        B = -s sin(theta): coefficient of y in X; -B is the coefficient of x in Y.
    tx : float
        Tx: translation of X, target units.
    ty : float
        Ty: translation of Y, target units.
    inv_a : float
        Cos(theta)/s = A/(A^2 + B^2): the a of the inverse.
    inv_b : float
        Sin(theta)/s = -B/(A^2 + B^2): the b of the inverse.
    """

    a: float
    b: float
    tx: float
    ty: float
    inv_a: float
    inv_b: float


class OmographicParams(NamedTuple):
    r"""An omographic (projective) transformation.

    .. math:: X = \frac{A x + B y + C}{W}, \quad Y = \frac{D x + E y + F}{W}, \quad W = G x + H y + 1

    With G = H = 0 it is affine.

    Limits: the constant of W is fixed at 1. A transformation that takes the source origin to infinity (W = 0 at x = y
    = 0) therefore has no such record, and its coefficients grow without bound as the line W = 0 approaches the source
    origin. Put the source origin in the middle of the control points: a transformation that is finite over their area
    then has moderate coefficients. At a point with W = 0 the formulas give an infinity or NaN.

    Attributes
    ----------
    a : float
        A: coefficient of x in the numerator of X.
    b : float
        B: coefficient of y in the numerator of X.
    c : float
        C: constant of the numerator of X.
    d : float
        D: coefficient of x in the numerator of Y.
    e : float
        E: coefficient of y in the numerator of Y.
    f : float
        F: constant of the numerator of Y.
    g : float
        G: coefficient of x in the denominator.
    h : float
        H: coefficient of y in the denominator.
    """

    a: float
    b: float
    c: float
    d: float
    e: float
    f: float
    g: float
    h: float


class AffineParams(NamedTuple):
    """What AffineCoefsToParam returns.

    Attributes
    ----------
    sx : float
        Sx >= 0.
    sy : float
        Sy.
    phi : float
        Phi in [-pi/2, pi/2].
    theta : float
        Theta in [0, 2 pi], both ends included: a tiny negative rotation gives 2 pi itself; -0.0 occurs.
    tx : float
        Tx = c.
    ty : float
        Ty = f.
    """

    sx: float
    sy: float
    phi: float
    theta: float
    tx: float
    ty: float


class ConformalParams(NamedTuple):
    """What ConformalCoefsToParam returns.

    Attributes
    ----------
    scale : float
        s >= 0.
    angle : float
        Theta in [0, 2 pi], both ends included; -0.0 occurs; 0 if the scale is zero.
    tx : float
        Translation of X.
    ty : float
        Translation of Y.
    """

    scale: float
    angle: float
    tx: float
    ty: float
