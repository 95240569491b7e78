"""_errors.py: the result codes of the library as exceptions.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import numpy as np

from ._interface import MEANINGS, RET_IMPOSSIBLE, RET_INDETERMINATE


class ResultError(ArithmeticError):
    """A function has no result. The attribute `code` is the library's result code."""

    __module__ = "nuv1math"
    code = 0


class ImpossibleError(ResultError):
    """No result: too few points, a degenerate input, or no solution (RET_IMPOSSIBLE, or false)."""

    __module__ = "nuv1math"
    code = RET_IMPOSSIBLE


class IndeterminateError(ResultError):
    """No unique result: singular equations, or every value solves (RET_INDETERMINATE)."""

    __module__ = "nuv1math"
    code = RET_INDETERMINATE


class NotPositiveDefiniteError(ImpossibleError, np.linalg.LinAlgError):
    """A matrix has no Cholesky factor: a radicand is negative or NaN."""

    __module__ = "nuv1math"


def check_result(function: str, result: int) -> None:
    """Raises the exception of a result code; success and counts pass."""
    if result == RET_IMPOSSIBLE:
        raise ImpossibleError(f"{function}: {MEANINGS[RET_IMPOSSIBLE]}")
    if result == RET_INDETERMINATE:
        raise IndeterminateError(f"{function}: {MEANINGS[RET_INDETERMINATE]}")
