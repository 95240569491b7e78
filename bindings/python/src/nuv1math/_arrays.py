"""_arrays.py: arrays of numpy as addresses for the library. Everything that the library does not check is checked here.

An array that the library only reads is passed as it is if it is an aligned, contiguous array of float64; anything else
is converted. An array that the library writes is never converted, because the caller would not see what was written.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

from math import isqrt
from typing import Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from ._native import ffi

Doubles = NDArray[np.float64]

FLOAT64 = np.dtype(np.float64)
DOUBLES = ffi.typeof("double[]")
INTS = ffi.typeof("int[]")
GREATEST_INT = 2**31 - 1
NUMBERS = "fiub"  # the kinds of dtype that are converted: floating point, integers, bool

from_buffer = ffi.from_buffer


def plain(values: ArrayLike, name: str) -> NDArray[Any]:
    """The values as an array of numpy's own class, of any dtype. Masked values would lose their mask: they fail."""
    if type(values) is np.ndarray:
        return values
    if np.ma.is_masked(values):  # type: ignore[no-untyped-call]
        raise ValueError(f"{name} has masked values")
    return np.asarray(values)


def converted(values: ArrayLike, name: str) -> Doubles:
    """An aligned, contiguous array of float64 with one dimension; a copy unless `values` is one."""
    array = plain(values, name)
    if array.ndim != 1:
        raise ValueError(f"{name} has the shape {array.shape}, not one dimension")
    if array.dtype.kind not in NUMBERS:
        raise TypeError(f"{name} has the type {array.dtype}, which is not converted to float64")
    if array.size > GREATEST_INT:
        raise ValueError(f"{name} has {array.size} values; {GREATEST_INT} are possible")
    return np.require(array, FLOAT64, ("C", "A"))


def doubles(values: ArrayLike, name: str) -> Any:
    """The address of values that the library reads. It knows its length, and keeps the array."""
    if (type(values) is np.ndarray and values.dtype is FLOAT64 and values.ndim == 1 and values.flags.carray
            and values.size <= GREATEST_INT):
        return from_buffer(DOUBLES, values)
    return from_buffer(DOUBLES, converted(values, name))


def doubles_of_length(count: int, values: ArrayLike, name: str) -> Any:
    """The address of so many values that the library reads."""
    address = doubles(values, name)
    if len(address) != count:
        raise ValueError(f"{name} has {len(address)} values, not {count}")
    return address


def columns(x: ArrayLike, y: ArrayLike, xa: ArrayLike, ya: ArrayLike) -> tuple[int, Any, Any, Any, Any]:
    """The number of control points and the addresses of their coordinates."""
    source = doubles(x, "x"), doubles(y, "y")
    target = doubles(xa, "xa"), doubles(ya, "ya")
    count = len(source[0])
    if not count == len(source[1]) == len(target[0]) == len(target[1]):
        lengths = ", ".join(str(len(column)) for column in source + target)
        raise ValueError(f"x, y, xa and ya have different numbers of values: {lengths}")
    return count, *source, *target


def written(array: Doubles, shape: tuple[int, ...], name: str) -> Any:
    """The address of an array that the library writes."""
    elements = plain(array, name)  # the attributes of a class that is derived need not be those of its memory
    if not isinstance(array, np.ndarray) or elements.dtype != FLOAT64 or not elements.flags.carray:
        raise ValueError(f"{name} is written in place: it must be a writable, contiguous array of float64")
    if elements.shape != shape:
        raise ValueError(f"{name} has the shape {elements.shape}, not {shape}")
    return from_buffer(DOUBLES, elements, require_writable=True)


def order_of_vector(vector: Doubles) -> int:
    """The number n of unknowns, from the right-hand side."""
    if not isinstance(vector, np.ndarray) or vector.ndim != 1:
        raise ValueError("vector is written in place: it must be an array of one dimension")
    return checked_order(vector.size)


def order_of_packed(matrix: Doubles) -> int:
    """The number n of unknowns, from the n(n+1)/2 elements of a packed matrix."""
    size = matrix.size if isinstance(matrix, np.ndarray) else 0
    order = (isqrt(8 * size + 1) - 1) // 2
    if order * (order + 1) // 2 != size:
        raise ValueError(f"matrix has {size} values, which is n(n+1)/2 for no n")
    return checked_order(order)


def checked_order(order: int) -> int:
    """The number of unknowns, which must be an int of C."""
    if order > GREATEST_INT:
        raise ValueError(f"{order} unknowns; {GREATEST_INT} are possible")
    return order


def packed_shape(order: int) -> tuple[int]:
    """The shape of a packed matrix."""
    return (order * (order + 1) // 2,)


def keep_apart(**arrays: Any) -> None:
    """Fails if the first array, which the library writes, shares memory with another one. All are contiguous."""
    (output, first), *others = arrays.items()
    for name, other in others:
        if len(first) and len(other) and overlap(first, other):
            raise ValueError(f"{output} is written and shares memory with {name}")


def overlap(one: Any, other: Any) -> bool:
    """Whether two addresses with lengths have an element in common."""
    start, start_of_other = (int(ffi.cast("uintptr_t", address)) for address in (one, other))
    end, end_of_other = start + len(one) * FLOAT64.itemsize, start_of_other + len(other) * FLOAT64.itemsize
    return start < end_of_other and start_of_other < end


def columns_of_row(indices: ArrayLike, count: int, order: int) -> Any:
    """The address of a copy of indices of unknowns. The library checks none, but skips negative ones."""
    array = np.array(indices)
    if array.shape != (count,):
        raise ValueError(f"indices has the shape {array.shape}, not {(count,)}")
    if count and array.dtype.kind not in "iu":
        raise TypeError(f"indices has the type {array.dtype}, not integers")
    if count and int(array.max()) >= order:
        raise ValueError(f"indices has {array.max()}, but there are {order} unknowns, counted from 0")
    if array.dtype.kind == "i":
        array = np.maximum(array, -1)
    return from_buffer(INTS, array.astype(np.intc))
