"""_fit.py: a transformation that is fitted to control points, with all that is known of it.

The choice of the kind, leave-one-out errors, blunders and covariances come from the judgement module, as those of the
program fitpoints do; this file only reads its records.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

from __future__ import annotations

import dataclasses
import math
from typing import Any, NamedTuple, Optional, Tuple, cast

import numpy as np
import numpy.typing as npt

from ._interface import Choice, OmographicParams, Reason, Role
from ._judge import (JUDGEMENT, KINDS, POINT, Array, FitError, Kind, Method, control_points, judge, real_numbers,
                     text_of)
from ._native import ffi, lib

Doubles = npt.NDArray[np.float64]
Indices = npt.NDArray[np.intp]

CHOICES = {
    Choice.ASKED: "asked for",
    Choice.RICHEST: "the richest kind",
    Choice.LEAST_ERROR: "the least leave-one-out error",
    Choice.POORER_AS_GOOD: "poorer than the kind with the least leave-one-out error, and as good",
    Choice.NOT_JUDGED: "the poorest kind that exists; nothing checks it",
}


class Parameters(NamedTuple):
    """Scales and angles of a conformal or affine transformation, with their standard deviations.

    Attributes
    ----------
    sx, sy : float
        Scales along and across the source x axis, target units for each source unit. A negative sy tells that the
        orientation of the axes is reversed.
    skew, rotation : float
        Angles in radians. The rotation is counter-clockwise.
    sigma_sx, sigma_sy, sigma_skew, sigma_rotation : float or None
        Standard deviations, in the same units. None without redundancy.
    """

    sx: float
    sy: float
    skew: float
    rotation: float
    sigma_sx: Optional[float]
    sigma_sy: Optional[float]
    sigma_skew: Optional[float]
    sigma_rotation: Optional[float]


class KindRow(NamedTuple):
    """How one kind of transformation fits the points.

    Attributes
    ----------
    kind : str
        ``"conformal"``, ``"affine"`` or ``"omographic"``.
    chosen : bool
        Whether the fit is of this kind.
    unknowns, freedom : int
        Number of coefficients, and degrees of freedom. These are negative if there are too few points.
    rms : float or None
        Root of the sum of squares by degrees of freedom, target units. None without redundancy.
    leave_one_out : float or None
        Root mean square of one coordinate, if each point is predicted by a fit of the others. Target units.
    greatest : float or None
        The greatest length of a leave-one-out residual, target units.
    greatest_at : int or None
        The index of its point.
    missing : str
        Why this kind does not exist; empty if it does.
    not_judged : str
        Why it has no leave-one-out error; empty if it has one.
    """

    kind: Kind
    chosen: bool
    unknowns: int
    freedom: int
    rms: Optional[float]
    leave_one_out: Optional[float]
    greatest: Optional[float]
    greatest_at: Optional[int]
    missing: str
    not_judged: str

    def __str__(self) -> str:
        start = f"{'*' if self.chosen else ' '} {self.kind:<10}{self.unknowns:>10}{self.freedom:>9}"
        if self.missing:
            return f"{start}  {self.missing}"
        rms = "-" if self.rms is None else f"{self.rms:.6g}"
        leave = self.not_judged if self.leave_one_out is None else f"{self.leave_one_out:>13.6g}{self.greatest:>13.6g}"
        return f"{start}{rms:>13}  {leave}" + ("" if self.greatest_at is None else f"{self.greatest_at:>6}")


class KindTable(Tuple[KindRow, ...]):
    """The rows of all kinds, poorest first. It is shown as a table, in which a star marks the chosen kind."""

    __slots__ = ()

    def __repr__(self) -> str:
        head = "  kind        unknowns  freedom          RMS  leave-one-out     greatest    at"
        return "\n".join([head, *map(str, self)])


class Ellipses(NamedTuple):
    """Error ellipses of computed positions.

    Attributes
    ----------
    major, minor : (n,) array of float
        Semi-axes.
    direction : (n,) array of float
        Direction of the greater semi-axis, radians, counter-clockwise from the first axis, -pi/2 to pi/2.
    """

    major: Doubles
    minor: Doubles
    direction: Doubles


def read_only(array: Array) -> Array:
    """The same array; its values cannot be changed by mistake."""
    array.flags.writeable = False
    return array


def where(exists: Array, values: Array) -> Doubles:
    """The values that exist, and NaN for the others."""
    mask = exists.astype(bool)
    return read_only(np.where(mask.reshape(mask.shape + (1,) * (values.ndim - 1)), values, math.nan))


def square(packed: Array) -> Doubles:
    """A symmetric matrix from its lower triangle, which is packed row by row."""
    matrix = np.empty((lib.NUV_COEFS, lib.NUV_COEFS))
    rows, columns = np.tril_indices(lib.NUV_COEFS)
    matrix[rows, columns] = matrix[columns, rows] = packed
    return read_only(matrix)


def matrix_of(coefs: Any) -> Doubles:
    """The 3x3 matrix of a record TOmographicParams."""
    return read_only(np.array([*coefs.tolist(), 1.0]).reshape(3, 3))


def distances(computed: Doubles, given: npt.ArrayLike, name: str) -> Doubles:
    """The distances of points from given ones."""
    points = control_points(given, name)
    if len(points) != len(computed):
        raise ValueError(f"{name} has {len(points)} points, not {len(computed)}")
    difference = computed - points
    return cast(Doubles, np.sqrt(difference[:, 0] * difference[:, 0] + difference[:, 1] * difference[:, 1]))


def covariance_of_image(fit: Fit, source: Any, result: Any) -> int:
    """The covariance of the image of a point."""
    lib.nuv_CovarianceOfImage(fit._coefs, fit._covariance, source.dX, source.dY, result)
    return Reason.NONE


def covariance_of_source(fit: Fit, source: Any, result: Any) -> int:
    """The covariance of the source point that belongs to an exact target point."""
    return int(lib.nuv_CovarianceOfSource(fit._coefs, fit._covariance, source.dX, source.dY, result))


@dataclasses.dataclass(frozen=True, eq=False, repr=False)
class Fit:
    """A transformation of the plane, fitted to control points, with all that is known of it.

    `fit` makes it. It cannot be changed, and its arrays are read-only. All of it may be used by several threads at once.
    An object can be copied, pickled and sent to another process. Where scikit-image takes a transformation, it takes
    this one: it can be called, and it has `inverse`, `residuals` and `params`.

    Coordinates are pairs of x and y in arrays of the shape (n, 2). Residuals are computed less given. Standard
    deviations are those of one coordinate. Target units are the units of the target system.

    Attributes
    ----------
    judgement : structured scalar
        The record ``TJudgement`` of judgement.h, with its names. The other attributes read it.
    points : (n,) structured array
        The record ``TPointJudgement`` of each point.
    """

    judgement: Any
    points: Array
    _record: Any = dataclasses.field(init=False)

    def __post_init__(self) -> None:
        if getattr(self.judgement, "dtype", None) != JUDGEMENT or getattr(self.points, "dtype", None) != POINT:
            raise TypeError("nuv1math.fit makes a Fit from control points; a Fit itself takes the records of judgement.h")
        record = bytes(self.judgement.tobytes())
        object.__setattr__(self, "judgement", np.frombuffer(record, JUDGEMENT)[0])
        object.__setattr__(self, "points", read_only(np.array(self.points)))
        object.__setattr__(self, "_record", ffi.from_buffer("nuv_TJudgement *", record))

    def __reduce__(self) -> Tuple[Any, ...]:
        return _restored, (self.judgement.tobytes(), self.points.tobytes())

    @property
    def _coefs(self) -> Any:
        return ffi.addressof(self._record, "Fit", "Coefs")

    @property
    def _origins(self) -> Any:
        return ffi.addressof(self._record, "Origins")

    @property
    def _covariance(self) -> Any:
        if not self.judgement["bSigma"]:
            raise FitError("without redundancy there are no covariances", Reason.NO_REDUNDANCY)
        return ffi.addressof(self._record, "Covariance")

    # ---- the transformation ----

    @property
    def kind(self) -> Kind:
        """``"conformal"``, ``"affine"`` or ``"omographic"``."""
        return KINDS[int(self.judgement["Fit"]["Kind"])]

    @property
    def choice(self) -> str:
        """Why this kind was taken: ``"asked"``, ``"richest"``, ``"least_error"``, ``"poorer_as_good"`` or
        ``"not_judged"``, as ``enumChoice`` of judgement.h tells."""
        return Choice(self.judgement["Choice"]).name.lower()

    @property
    def mirrored(self) -> bool:
        """Whether the kind is conformal and reverses the orientation of the axes."""
        return bool(self.judgement["Fit"]["bMirrored"])

    @property
    def coefficients(self) -> OmographicParams:
        """A to H, for coordinates that count from `source_origin` and `target_origin`.

        X = (A x + B y + C) / W, Y = (D x + E y + F) / W with W = G x + H y + 1. G and H are 0 unless the kind is
        omographic.
        """
        return OmographicParams(*self.judgement["Fit"]["Coefs"].tolist())

    @property
    def source_origin(self) -> Doubles:
        """(2,) array: the local origin of the source system; zeros without local origins."""
        return read_only(np.array(self.judgement["Origins"].tolist()[:2]))

    @property
    def target_origin(self) -> Doubles:
        """(2,) array: the local origin of the target system; zeros without local origins."""
        return read_only(np.array(self.judgement["Origins"].tolist()[2:]))

    @property
    def local_matrix(self) -> Doubles:
        """(3, 3) array: the matrix of `coefficients`."""
        return matrix_of(self.judgement["Fit"]["Coefs"])

    @property
    def matrix(self) -> Doubles:
        """(3, 3) array: the matrix of the transformation for the coordinates as given; its last element is 1.

        Where coordinates are large beside their extent, calling the object is more exact than this matrix.

        Raises
        ------
        FitError
            If there is none, because the transformation takes the original source origin to infinity.
        """
        if not self.judgement["bOriginal"]:
            raise FitError("the transformation takes the original source origin to infinity: it has no coefficients "
                           "for the coordinates as given", Reason.COEFS_NOT_FINITE)
        return matrix_of(self.judgement["Original"])

    @property
    def params(self) -> Doubles:
        """(3, 3) array: `matrix`, by the name that scikit-image has for it."""
        return self.matrix

    def __call__(self, points: npt.ArrayLike) -> Doubles:
        """Images of source points.

        Parameters
        ----------
        points : (..., 2) array_like
            Points of the source system.

        Returns
        -------
        (..., 2) array of float
            Points of the target system; NaN for a point without an image.

        Examples
        --------
        >>> import nuv1math
        >>> double = nuv1math.fit([[0, 0], [1, 0], [0, 1]], [[5, 5], [7, 5], [5, 7]])
        >>> double([[1, 1], [2, 3]])
        array([[ 7.,  7.],
               [ 9., 11.]])
        """
        return self._map(points, False)

    @property
    def inverse(self) -> Inverse:
        """The way back: an `Inverse`. Both ``fit.inverse(points)`` and ``fit.inverse.params`` work."""
        return Inverse(self)

    def _map(self, points: npt.ArrayLike, inverse: bool) -> Doubles:
        given = real_numbers(points, "points")
        if given.shape[-1] != 2:
            raise ValueError(f"points has the shape {np.shape(points)}, not (..., 2)")
        images = np.empty_like(given)
        lib.map_points(inverse, self._coefs, self._origins, given.size // 2,
                       ffi.from_buffer("nuv_TVector[]", given), ffi.from_buffer("nuv_TVector[]", images))
        return images

    def residuals(self, source: npt.ArrayLike, target: npt.ArrayLike) -> Doubles:
        """Distances of the images of source points from target points, as the method of scikit-image computes them.

        Parameters
        ----------
        source, target : (n, 2) array_like
            Points of both systems; they need not be the control points.

        Returns
        -------
        (n,) array of float
            Distances, target units.
        """
        return distances(self(control_points(source, "source")), target, "target")

    # ---- how well it fits ----

    @property
    def kinds(self) -> KindTable:
        """The table of kinds, poorest first: a tuple of `KindRow`."""
        return KindTable(self._kind(kind) for kind in range(len(KINDS)))

    def _kind(self, kind: int) -> KindRow:
        row = self.judgement["vKinds"][kind]
        exists = row["Reason"] == Reason.NONE
        judged = exists and row["LeaveReason"] == Reason.NONE
        return KindRow(
            kind=KINDS[kind], chosen=KINDS[kind] == self.kind,
            unknowns=int(row["iUnknowns"]), freedom=int(row["iFreedom"]),
            rms=float(row["dRms"]) if exists and row["iFreedom"] > 0 else None,
            leave_one_out=float(row["dLeaveRms"]) if judged else None,
            greatest=float(row["dLeaveGreatest"]) if judged else None,
            greatest_at=int(row["iLeaveGreatest"]) if judged else None,
            missing=text_of(Reason(row["Reason"]), kind, self.fitted),
            not_judged=text_of(Reason(row["LeaveReason"]), kind, self.fitted) if exists else "")

    @property
    def rms(self) -> Optional[float]:
        """Root of the sum of squares by degrees of freedom: the standard deviation of a coordinate, target units.
        None without redundancy."""
        return float(self.judgement["dRms"]) if self.freedom > 0 else None

    @property
    def check_rms(self) -> Optional[float]:
        """Root mean square of the residuals dX and dY of the check points, target units. None without check points."""
        return float(self.judgement["dCheckRms"]) if self.judgement["iChecks"] else None

    @property
    def fitted(self) -> int:
        """The number of points that the fit uses."""
        return int(self.judgement["iFitted"])

    @property
    def freedom(self) -> int:
        """Degrees of freedom: twice the number of fitted points less that of the coefficients."""
        return int(self.judgement["iFreedom"])

    @property
    def converged(self) -> bool:
        """Whether the iterations of an omographic fit have converged."""
        return bool(self.judgement["Fit"]["bConverged"])

    # ---- the points ----

    @property
    def residual_vectors(self) -> Doubles:
        """(n, 2) array: residuals of all points, check points and dropped ones included. Target units."""
        return read_only(np.column_stack([self.points["dX"], self.points["dY"]]))

    @property
    def source_residuals(self) -> Doubles:
        """(n, 2) array: residuals in source units, which are pixels for an image. NaN where there is none."""
        return where(self.points["bSource"], np.column_stack([self.points["dSourceX"], self.points["dSourceY"]]))

    @property
    def leave_one_out(self) -> Doubles:
        """(n, 2) array: the image of each point by a fit of the others, less the given position. Target units. NaN
        for points that are not fitted, and where the others determine no fit."""
        return where(self.points["bLeave"], np.column_stack([self.points["dLeaveX"], self.points["dLeaveY"]]))

    @property
    def studentised(self) -> Doubles:
        """(n,) array: residuals over their standard deviations, which are estimated from the other points. NaN where
        there is none."""
        return where(self.points["bTested"], self.points["dStudentised"])

    @property
    def probability(self) -> Doubles:
        """(n,) array: the probability of so large a studentised residual by chance, at one point. NaN where there is
        none."""
        return where(self.points["bTested"], self.points["dProbability"])

    @property
    def suspects(self) -> Indices:
        """Indices of the suspected blunders: dropped points first, in their order, then by the length of residuals."""
        indices = np.flatnonzero(self.points["bSuspect"])
        dropped, length = self.points["iDropped"][indices], self.points["dLength"][indices]
        return read_only(indices[np.lexsort((np.where(dropped, 0, -length), dropped, dropped == 0))])

    @property
    def dropped(self) -> Indices:
        """Indices of the points that a robust fit has dropped, in this order."""
        indices = np.flatnonzero(self.points["iDropped"])
        return read_only(indices[np.argsort(self.points["iDropped"][indices])])

    @property
    def checks(self) -> Indices:
        """Indices of the check points."""
        return read_only(np.flatnonzero(self.points["Role"] == Role.CHECK))

    # ---- how exact it is ----

    @property
    def parameters(self) -> Optional[Parameters]:
        """Scales and angles. None for an omographic transformation, which has others at each point."""
        shape = self.judgement["Shape"]
        if not shape["bExists"]:
            return None
        values = [float(shape[name]) for name in ("dSx", "dSy", "dSkew", "dRotation")]
        sigmas = [float(shape[name]) if self.judgement["bSigma"] else None
                  for name in ("dSigmaSx", "dSigmaSy", "dSigmaSkew", "dSigmaRotation")]
        return Parameters(*values, *sigmas)

    @property
    def covariance(self) -> Optional[Doubles]:
        """(8, 8) array: covariance matrix of `coefficients`. None without redundancy."""
        return square(self.judgement["Covariance"]["vdPacked"]) if self.judgement["bSigma"] else None

    @property
    def standard_deviations(self) -> Optional[Doubles]:
        """(8,) array: standard deviations of `coefficients`. None without redundancy."""
        return self._deviations("Covariance") if self.judgement["bSigma"] else None

    @property
    def matrix_covariance(self) -> Optional[Doubles]:
        """(8, 8) array: covariance matrix of the elements of `matrix`, row by row. None if there is none."""
        exists = self.judgement["bSigma"] and self.judgement["bOriginal"]
        return square(self.judgement["OriginalCovariance"]["vdPacked"]) if exists else None

    @property
    def matrix_standard_deviations(self) -> Optional[Doubles]:
        """(8,) array: standard deviations of the elements of `matrix`, row by row. None if there are none."""
        exists = self.judgement["bSigma"] and self.judgement["bOriginal"]
        return self._deviations("OriginalCovariance") if exists else None

    def _deviations(self, name: str) -> Doubles:
        covariance = ffi.addressof(self._record, name)
        return read_only(np.array([lib.nuv_SigmaOfCoef(covariance, i) for i in range(lib.NUV_COEFS)]))

    def covariances(self, points: npt.ArrayLike) -> Doubles:
        """Covariances of the images of source points.

        They contain the uncertainty of the transformation alone. Add ``rms**2`` to both variances for the difference
        from a measured point.

        Parameters
        ----------
        points : (n, 2) array_like
            Points of the source system.

        Returns
        -------
        (n, 2, 2) array of float
            Covariance matrices of X and Y, squares of target units.

        Raises
        ------
        FitError
            Without redundancy.
        """
        return self._covariances(covariance_of_image, control_points(points, "points"))

    def _covariances(self, function: Any, source: Doubles) -> Doubles:
        reduced = source - self.source_origin
        result = np.empty((len(source), 2, 2))
        point, covariance = ffi.new("nuv_TVector *"), ffi.new("nuv_TCovariance2 *")
        for index, (point.dX, point.dY) in enumerate(reduced.tolist()):
            found = function(self, point, covariance) == Reason.NONE
            xx, xy, yy = (covariance.dXX, covariance.dXY, covariance.dYY) if found else (math.nan,) * 3
            result[index] = [[xx, xy], [xy, yy]]
        return result

    def ellipses(self, points: npt.ArrayLike, probability: Optional[float] = None) -> Ellipses:
        """Error ellipses of the images of source points.

        Parameters
        ----------
        points : (n, 2) array_like
            Points of the source system.
        probability : float, optional
            With which the ellipse holds the true position, between 0 and 1. Default: the standard error ellipse, with
            one standard deviation along each of its axes. It holds the true position with 0.39, if there are many
            points.

        Returns
        -------
        Ellipses
            Semi-axes in target units, and their direction.

        Raises
        ------
        FitError
            Without redundancy.
        """
        return self._ellipses(self.covariances(points), probability)

    def _ellipses(self, covariances: Doubles, probability: Optional[float]) -> Ellipses:
        if probability is not None and not 0 <= probability < 1:
            raise ValueError(f"probability is {probability}, not between 0 and 1")
        factor = 1.0 if probability is None else math.sqrt(2 * lib.nuv_QuantileOfF(1, self.freedom, 1 - probability))
        axes, ellipse = np.empty((3, len(covariances))), ffi.new("nuv_TEllipse *")
        for index, ((xx, xy), (_, yy)) in enumerate(covariances.tolist()):
            lib.nuv_ErrorEllipse(ffi.new("nuv_TCovariance2 *", [xx, xy, yy]), ellipse)
            axes[:, index] = factor * ellipse.dMajor, factor * ellipse.dMinor, math.atan2(ellipse.dUy, ellipse.dUx)
        return Ellipses(*axes)

    # ---- shown ----

    def __repr__(self) -> str:
        return "\n".join([f"<Fit: {self._headline()}", f"  {CHOICES[self.judgement['Choice']]}",
                          *("  " + line for line in repr(self.kinds).splitlines()),
                          *self._parameter_lines(), f"  suspected blunders: {self._suspected()}>"])

    def _headline(self) -> str:
        mirrored = "mirrored " if self.mirrored else ""
        rms = "no redundancy" if self.rms is None else f"RMS {self.rms:.6g}"
        others = [f", {what} {len(points)}" for what, points in (("check points:", self.checks),
                                                                 ("dropped:", self.dropped)) if len(points)]
        return f"{mirrored}{self.kind} transformation of {self.fitted} points{''.join(others)}, {rms}"

    def _parameter_lines(self) -> list[str]:
        p = self.parameters
        if p is None:
            return []
        degrees, one_scale = 180 / math.pi, self.kind == "conformal"
        shown = [_with_deviation("scale" if one_scale else "sx", p.sx, p.sigma_sx, 1, "")]
        if not one_scale:
            shown.append(_with_deviation("sy", p.sy, p.sigma_sy, 1, ""))
        shown.append(_with_deviation("rotation", p.rotation, p.sigma_rotation, degrees, "°"))
        if not one_scale:
            shown.append(_with_deviation("skew", p.skew, p.sigma_skew, degrees, "°"))
        return ["  " + ", ".join(shown)]

    def _suspected(self) -> str:
        names = [f"{index} (dropped)" if self.points["iDropped"][index] else str(index) for index in self.suspects]
        return ", ".join(names) if names else "none"


def _with_deviation(name: str, value: float, sigma: Optional[float], scale: float, unit: str) -> str:
    deviation = "" if sigma is None else f" ± {scale * sigma:.2g}{unit}"
    return f"{name} {scale * value:.6g}{unit}{deviation}"


def _restored(judgement: bytes, points: bytes) -> Fit:
    return Fit(np.frombuffer(judgement, JUDGEMENT)[0], np.frombuffer(points, POINT))


@dataclasses.dataclass(frozen=True, eq=False, repr=False)
class Inverse:
    """The way back of a transformation: from the target to the source system.

    Attributes
    ----------
    inverse : Fit
        The transformation of which this is the inverse.
    """

    inverse: Fit

    def __repr__(self) -> str:
        return f"<Inverse of the {self.inverse._headline()}>"

    def __call__(self, points: npt.ArrayLike) -> Doubles:
        """Source points that belong to target points.

        Parameters
        ----------
        points : (..., 2) array_like
            Points of the target system.

        Returns
        -------
        (..., 2) array of float
            Points of the source system; NaN where there is none.
        """
        return self.inverse._map(points, True)

    @property
    def params(self) -> Doubles:
        """(3, 3) array: the inverse of `Fit.params`, as numpy computes it; its last element is 1 if that is possible.

        Calling the object is more exact.
        """
        matrix = np.linalg.inv(self.inverse.params)
        return read_only(matrix / matrix[2, 2] if matrix[2, 2] else matrix)

    def residuals(self, target: npt.ArrayLike, source: npt.ArrayLike) -> Doubles:
        """Distances of the source points that belong to target points from given ones.

        Parameters
        ----------
        target, source : (n, 2) array_like
            Points of both systems.

        Returns
        -------
        (n,) array of float
            Distances, source units.
        """
        return distances(self(control_points(target, "target")), source, "source")

    def covariances(self, points: npt.ArrayLike) -> Doubles:
        """Covariances of the source points that belong to exact target points.

        Parameters
        ----------
        points : (n, 2) array_like
            Points of the target system.

        Returns
        -------
        (n, 2, 2) array of float
            Covariance matrices of x and y, squares of source units; NaN where there is no source point.
        """
        return self.inverse._covariances(covariance_of_source, self(control_points(points, "points")))

    def ellipses(self, points: npt.ArrayLike, probability: Optional[float] = None) -> Ellipses:
        """Error ellipses of the source points that belong to exact target points.

        Parameters
        ----------
        points : (n, 2) array_like
            Points of the target system.
        probability : float, optional
            As for `Fit.ellipses`.

        Returns
        -------
        Ellipses
            Semi-axes in source units, and their direction.
        """
        return self.inverse._ellipses(self.covariances(points), probability)


def fit(source: npt.ArrayLike, target: npt.ArrayLike, kind: Method = "auto", local_origin: bool = True, *,
        mirrored: bool = False, robust: bool = False, level: float = lib.NUV_USUAL_LEVEL,
        checks: Optional[npt.ArrayLike] = None) -> Fit:
    """Fits a transformation of the plane to control points by least squares, and judges it.

    The result has the same bits as that of the program ``fitpoints`` for the same points and options. The function may
    run on several threads at once; it lets other threads of Python run while it computes.

    Parameters
    ----------
    source, target : (n, 2) array_like
        The points in both systems. The source system is mapped onto the target system.
    kind : str
        ``"auto"`` takes the kind with the least leave-one-out error, ``"richest"`` the richest kind that the points
        support. ``"conformal"``, ``"affine"`` and ``"omographic"`` take this kind, which needs 2, 3 or 4 points.
    local_origin : bool
        Compute with coordinates that count from local origins. Without them an omographic fit of large coordinates can
        lose all digits.
    mirrored : bool
        The conformal kind reverses the orientation of the axes.
    robust : bool
        Drop suspected blunders one by one, and fit and choose again after each one.
    level : float
        Level of the test of blunders, between 0 and 1: the probability that normally distributed residuals without a
        blunder have a suspect. 0: no test.
    checks : (k,) array_like of int, or (n,) array_like of bool
        Check points, by their indices or as a mask. They are not fitted, but they have residuals.

    Returns
    -------
    Fit
        The transformation, and all that is known of it.

    Raises
    ------
    ValueError
        If an argument has another shape, a value that is not finite, or an unknown name.
    FitError
        If the points determine no such transformation. It is a `ValueError`, too.

    Examples
    --------
    >>> import numpy as np
    >>> import nuv1math
    >>> source = np.array([[0, 0], [100, 0], [100, 80], [0, 80], [40, 30], [70, 60]])
    >>> target = np.array([[12.1, 7.9], [110.7, 11.2], [108.1, 91.3], [9.5, 87.8], [51.0, 39.2], [79.6, 70.1]])
    >>> result = nuv1math.fit(source, target)
    >>> result.kind
    'affine'
    >>> result([[50, 40]]).round(2)
    array([[60.24, 49.53]])
    >>> nuv1math.fit(source[:1], target[:1])
    Traceback (most recent call last):
        ...
    nuv1math.FitError: only 1 point: the conformal kind needs 2
    """
    told = judge(source, target, checks, kind, local_origin=local_origin, mirrored=mirrored, robust=robust, level=level)
    return _restored(*told)
