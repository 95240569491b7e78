"""_judge.py: the call of the judgement module: checked arguments, and its records as structured arrays of numpy.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

from __future__ import annotations

from typing import Any, Literal, NamedTuple, Optional, Tuple

import numpy as np
import numpy.typing as npt

from ._arrays import GREATEST_INT, NUMBERS, plain
from ._interface import REASON_TEXTS, Reason, Role
from ._native import ffi, lib

Array = npt.NDArray[Any]
Kind = Literal["conformal", "affine", "omographic"]
Method = Literal["auto", "richest", "conformal", "affine", "omographic"]

KINDS: Tuple[Kind, ...] = ("conformal", "affine", "omographic")  # the index is the value of enumMethodUsed
METHODS: Tuple[Method, ...] = (*KINDS, "richest", "auto")  # the index is the value of enumMethod


class FitError(ValueError):
    """The points determine no transformation, or not one of the kind that was asked for.

    Attributes
    ----------
    reason : Reason
        The same as a value of the enumeration.
    """

    __module__ = "nuv1math"

    def __init__(self, text: str, reason: Reason = Reason.NONE) -> None:
        super().__init__(text)
        self.reason = reason


class Judged(NamedTuple):
    """The records that Judge has written: TJudgement, and one TPointJudgement for each point."""

    judgement: bytes
    points: bytes


def text_of(reason: Reason, kind: int, count: int) -> str:
    """Why there is no fit of `count` points, in words; nothing for a fit that exists."""
    least, name = lib.nuv_LeastPoints(kind), KINDS[kind]
    few = f"only {count} point{'' if count == 1 else 's'}: the {name} kind needs"
    if reason == Reason.NONE:
        return ""
    if reason == Reason.TOO_FEW_POINTS:
        return f"{few} {least}" if count else "no points: a transformation needs at least 2"
    if reason == Reason.NO_REDUNDANCY:
        return f"{few} {least + 1} to be judged"
    if reason == Reason.RESIDUALS_NOT_FINITE:
        return f"the residuals of the {name} fit are not finite"
    return REASON_TEXTS[reason]


def dtype_of(ctype: Any) -> np.dtype[Any]:
    """The dtype of a record as it lies in memory, or of one of its fields."""
    if ctype.kind == "struct":
        names, fields = zip(*ctype.fields)
        return np.dtype({"names": names, "formats": [dtype_of(field.type) for field in fields],
                         "offsets": [field.offset for field in fields], "itemsize": ffi.sizeof(ctype)})
    if ctype.kind == "array":
        return np.dtype((dtype_of(ctype.item), ctype.length))
    return np.dtype({"int": np.intc, "double": np.float64}[ctype.cname])


JUDGEMENT = dtype_of(ffi.typeof("nuv_TJudgement"))
POINT = dtype_of(ffi.typeof("nuv_TPointJudgement"))


def real_numbers(values: npt.ArrayLike, name: str) -> npt.NDArray[np.float64]:
    """The values as an aligned array of doubles without gaps; a copy only if they are not one already."""
    try:
        array = plain(values, name)
        if array.dtype.kind not in NUMBERS + "O":
            raise TypeError(f"its type is {array.dtype}")
        return np.require(np.ascontiguousarray(array, dtype=np.float64), requirements="A")
    except (TypeError, ValueError, OverflowError) as error:
        raise ValueError(f"{name} is not an array of real numbers: {error}") from None


def control_points(values: npt.ArrayLike, name: str) -> npt.NDArray[np.float64]:
    """An array of the shape (n, 2) with finite values."""
    points = real_numbers(values, name)
    if points.ndim != 2 or points.shape[1] != 2:
        raise ValueError(f"{name} has the shape {np.shape(values)}, not (n, 2)")
    finite = np.isfinite(points)
    if not finite.all():
        bad = int(finite.all(axis=1).argmin())
        raise ValueError(f"{name}[{bad}] is not finite: {points[bad].tolist()}")
    if len(points) > GREATEST_INT:
        raise ValueError(f"{name} has {len(points)} points, more than an int of C can count")
    return points


def roles_of(checks: npt.ArrayLike, count: int) -> npt.NDArray[np.intc]:
    """The role of each point, from the indices of check points, or from a mask."""
    roles = np.zeros(count, dtype=np.intc)
    chosen = plain(checks, "checks")
    if chosen.dtype == bool and chosen.shape != (count,):
        raise ValueError(f"checks is a mask of the shape {chosen.shape}, not ({count},)")
    if chosen.dtype != bool:
        if chosen.ndim != 1 or (chosen.size and chosen.dtype.kind not in "iu"):
            raise ValueError("checks is neither a mask nor a sequence of indices")
        bad = chosen[(chosen < 0) | (chosen >= count)]
        if bad.size:
            raise ValueError(f"checks: {bad[0]} is not the index of one of {count} points")
        chosen = chosen.astype(np.intp)
    roles[chosen] = Role.CHECK
    return roles


def options_of(kind: Method, local_origin: bool, mirrored: bool, robust: bool, level: float) -> Any:
    """A record TOptions."""
    if kind not in METHODS:
        raise ValueError(f"kind is {kind!r}, not one of {', '.join(sorted(METHODS))}")
    if not 0 <= level < 1:
        raise ValueError(f"level is {level}, not between 0 and 1")
    return ffi.new("nuv_TOptions *", {"Method": METHODS.index(kind), "bMirrored": bool(mirrored),
                                      "bRaw": not local_origin, "bRobust": bool(robust), "dLevel": level})


def failure(reason: Reason, kind: Method, count: int) -> FitError:
    """The exception for a reason of Judge."""
    asked = kind in KINDS
    text = text_of(reason, METHODS.index(kind) if asked else 0, count)
    return FitError(f"no {kind} transformation: {text}" if asked else text, reason)


def judge(source: npt.ArrayLike, target: npt.ArrayLike, checks: Optional[npt.ArrayLike], kind: Method,
          **options: Any) -> Judged:
    """Calls Judge. The arguments are those of `fit`, which describes them."""
    given = control_points(source, "source"), control_points(target, "target")
    if len(given[0]) != len(given[1]):
        raise ValueError(f"source has {len(given[0])} points, and target has {len(given[1])}")
    count = len(given[0])
    asked, roles = options_of(kind, **options), roles_of([] if checks is None else checks, count)
    columns = [np.ascontiguousarray(points[:, axis]) for points in given for axis in (0, 1)]
    points = ffi.new("nuv_TControlPoints *", [count, *(ffi.from_buffer("double[]", column) for column in columns)])
    result, told = ffi.new("nuv_TJudgement *"), ffi.new("nuv_TPointJudgement[]", count)
    reason = Reason(lib.nuv_Judge(points, ffi.from_buffer("int[]", roles), asked, result, told))
    if reason == Reason.NO_MEMORY:
        raise MemoryError(REASON_TEXTS[reason])
    if reason != Reason.NONE:
        raise failure(reason, kind, int(np.count_nonzero(roles == Role.FITTED)))
    return Judged(bytes(ffi.buffer(result)), bytes(ffi.buffer(told)))
