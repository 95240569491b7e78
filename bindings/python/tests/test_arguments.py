"""test_arguments.py: whatever the arguments are, a function returns or raises. It writes nothing beyond its arrays.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import inspect

import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

import nuv1math
from nuv1math._arrays import converted, doubles
from nuv1math._functions import DeleteCholLowTri, InitCholLowTri
from nuv1math._native import ffi

GUARD = 4
CANARY = 8.25e77
FUNCTIONS = [function for name, function in vars(nuv1math).items() if inspect.isfunction(function)
             and function.__module__ == "nuv1math._functions"]
EXPECTED = (ValueError, TypeError, OverflowError, nuv1math.ResultError)

special = [0.0, -0.0, 1.0, -1.0, 1e-12, 1e-300, 1e300, 5e-324, np.inf, -np.inf, np.nan, 2.0**52]
numbers = st.one_of(st.sampled_from(special), st.floats(), st.floats(-100.0, 100.0), st.integers(-3, 3))


# ---- Arrays of every form ----


@st.composite
def columns(draw, count):
    """Values as an array of some dtype, byte order, stride, alignment and permission, or as a list."""
    values = draw(st.lists(numbers, min_size=count, max_size=count))
    form = draw(st.sampled_from(["array", "list", "tuple", "stride", "reversed", "swapped", "unaligned", "read-only",
                                 "longdouble", "float32", "int16", "bool", "transposed"]))
    array = np.array(values, dtype=np.float64)
    if form in ("list", "tuple"):
        return list(values) if form == "list" else tuple(values)
    if form == "stride":
        return np.repeat(array, 3)[::3]
    if form == "reversed":
        return array[::-1]
    if form == "transposed":
        return np.tile(array, (2, 1)).T[:, 1]
    if form == "unaligned":
        return np.frombuffer(b"\0" + array.tobytes(), dtype=np.float64, offset=1)
    if form == "read-only":
        array.flags.writeable = False
    kinds = {"swapped": ">f8", "longdouble": np.longdouble, "float32": np.float32, "int16": np.int16, "bool": bool}
    with np.errstate(all="ignore"):
        return array.astype(kinds.get(form, np.float64))


def as_read(values):
    """What a function should read."""
    with np.errstate(all="ignore"):
        return np.array(values).astype(np.float64)


@given(st.data(), st.integers(0, 7))
def test_every_form_of_array_is_read_as_its_values(data, count):
    points = [data.draw(columns(count)) for _ in range(4)]

    def result(arguments):
        try:
            return np.array(nuv1math.CalcAffineCoefs(*arguments)).tobytes()
        except nuv1math.ResultError as error:
            return error.code

    assert result(points) == result([as_read(column) for column in points])


def guarded(values):
    """An array between canaries, and the whole of it."""
    whole = np.full(len(values) + 2 * GUARD, CANARY)
    whole[GUARD:GUARD + len(values)] = values
    return whole[GUARD:GUARD + len(values)], whole


def is_intact(whole):
    """Whether the canaries live."""
    return (whole[:GUARD] == CANARY).all() and (whole[len(whole) - GUARD:] == CANARY).all()


@given(st.data(), st.integers(0, 9))
def test_nothing_is_written_beyond_the_arrays(data, unknowns):
    values = st.lists(numbers, min_size=unknowns * (unknowns + 1) // 2, max_size=unknowns * (unknowns + 1) // 2)
    matrix, whole_matrix = guarded(data.draw(values))
    vector, whole_vector = guarded(data.draw(st.lists(numbers, min_size=unknowns, max_size=unknowns)))
    entries = data.draw(st.lists(st.tuples(numbers, st.integers(-2, unknowns + 1)), max_size=6))
    coefficients, indices = [value for value, _ in entries], [index for _, index in entries]
    square, whole_square = guarded([1.0] * unknowns**2)
    calls = [
        (nuv1math.UpdateNormMatrixLowTri, matrix, vector, data.draw(columns(unknowns)), data.draw(numbers)),
        (nuv1math.UpdateNormMatrixLowTriSparse, matrix, vector, coefficients, indices, data.draw(numbers)),
        (nuv1math.CholeskyLowTri, matrix), (nuv1math.SolveCholLowTri, matrix, vector),
        (nuv1math.Cholesky, square.reshape(unknowns, unknowns)),
        (nuv1math.SolveChol, square.reshape(unknowns, unknowns), vector),
    ]
    for function, *arguments in calls:
        try:
            function(*arguments)
        except nuv1math.NotPositiveDefiniteError:
            pass
        except ValueError:
            assert function is nuv1math.UpdateNormMatrixLowTriSparse and max(indices) >= unknowns
    assert is_intact(whole_matrix) and is_intact(whole_vector) and is_intact(whole_square)


# ---- Arguments that do not fit ----


anything = st.one_of(
    numbers, st.booleans(), st.none(), st.text(max_size=3), st.integers(-2**70, -2**20), st.integers(2**31, 2**70),
    st.integers(0, 6).flatmap(columns), st.just(np.zeros((3, 3))), st.just(np.zeros((2, 3))), st.just(np.zeros(6)),
    st.just(np.zeros(3)), st.just(np.zeros(3, complex)), st.just(np.zeros(3, object)), st.just(np.array(["a", "b"])),
    st.just(np.array(1.0)), st.just(np.ma.array([1.0, 2.0, 3.0], mask=[0, 1, 0])), st.just([[1.0], [1.0, 2.0]]),
    st.just(np.zeros(3, "M8[s]")), st.just(np.zeros(3, [("x", float)])), st.just({"a": 1.0}), st.just(b"12345678"),
    st.lists(st.integers(-3, 9), max_size=6), st.just(memoryview(b"12345678")), st.just(np.zeros((3, 3), order="F")))


@pytest.mark.filterwarnings("ignore")
@pytest.mark.parametrize("function", FUNCTIONS, ids=lambda function: function.__name__)
@settings(max_examples=60)
@given(data=st.data())
def test_whatever_the_arguments_are_the_function_returns_or_raises(function, data):
    count = len(inspect.signature(function).parameters)
    arguments = data.draw(st.lists(anything, min_size=count, max_size=count))
    try:
        function(*arguments)
    except EXPECTED + ((MemoryError,) if function is InitCholLowTri else ()) as error:
        assert str(error)


def test_all_thirty_functions_are_called():
    assert len(FUNCTIONS) == 30 and DeleteCholLowTri in FUNCTIONS


@pytest.mark.parametrize("function", [nuv1math.CalcCoefs, nuv1math.CalcConformalCoefs, nuv1math.CalcAffineCoefs,
                                      nuv1math.CalcOmographicCoefs])
@pytest.mark.parametrize("place", range(4))
def test_columns_of_different_lengths_are_refused(function, place):
    points = [np.arange(5.0)] * 4
    points[place] = np.arange(4.0)
    with pytest.raises(ValueError, match="different numbers of values"):
        function(*points)
    points[place] = np.ones((5, 1))
    with pytest.raises(ValueError, match="not one dimension"):
        function(*points)


@pytest.mark.parametrize("column", [np.ones(5, complex), ["1"] * 5, np.ones(5, object), np.ones(5, "M8[s]")])
def test_what_is_no_real_number_is_not_converted(column):
    with pytest.raises(TypeError, match="not converted"):
        nuv1math.CalcCoefs(column, np.ones(5), np.ones(5), np.ones(5))


def written_arrays():
    """Calls of the functions that write arrays: the function, its arguments, and which of them is written."""
    triangle, square, vector = np.ones(6), np.eye(3), np.ones(3)
    return [
        (nuv1math.UpdateNormMatrixLowTri, [triangle, vector, np.ones(3), 1.0], 0),
        (nuv1math.UpdateNormMatrixLowTri, [triangle, vector, np.ones(3), 1.0], 1),
        (nuv1math.UpdateNormMatrixLowTriSparse, [triangle, vector, np.ones(2), [0, 1], 1.0], 0),
        (nuv1math.UpdateNormMatrixLowTriSparse, [triangle, vector, np.ones(2), [0, 1], 1.0], 1),
        (nuv1math.CholeskyLowTri, [triangle], 0),
        (nuv1math.SolveCholLowTri, [triangle, vector], 1),
        (nuv1math.Cholesky, [square], 0),
        (nuv1math.SolveChol, [square, vector], 1),
    ]


def unusable_forms(array):
    """What cannot be written in place, or has another shape."""
    read_only = array.copy()
    read_only.flags.writeable = False
    unaligned = np.frombuffer(bytearray(b"\0" + array.tobytes()), dtype=np.float64, offset=1).reshape(array.shape)
    return [read_only, unaligned, array.tolist(), array.astype(np.float32), array.astype(">f8"),
            np.repeat(array, 2, axis=0)[::2], array[:-1].copy(), array.reshape(array.shape + (1,)), None, 1.0]


@pytest.mark.parametrize("call", range(len(written_arrays())))
def test_an_array_that_would_need_a_copy_is_not_written(call):
    function, arguments, place = written_arrays()[call]
    for form in unusable_forms(arguments[place]):
        if function is nuv1math.CholeskyLowTri and getattr(form, "shape", ()) == (5,):
            form = np.ones(5)  # n(n+1)/2 for no n
        with pytest.raises(ValueError, match="written in place|has the shape|no n|has 6 values"):
            function(*arguments[:place], form, *arguments[place + 1:])


@pytest.mark.parametrize("size", [2, 4, 5, 7])
def test_a_packed_matrix_has_the_elements_of_a_triangle(size):
    with pytest.raises(ValueError, match="for no n"):
        nuv1math.CholeskyLowTri(np.ones(size))


@pytest.mark.parametrize("factor", [np.ones(9), np.ones((1, 9)), np.ones((3, 2)), np.ones((3, 3, 1)), 1.0])
def test_a_dense_factor_is_a_square(factor):
    with pytest.raises(ValueError, match=r"not \(3, 3\)"):
        nuv1math.SolveChol(factor, np.ones(3))


@pytest.mark.parametrize("count", [0, 5, 7])
def test_a_packed_factor_belongs_to_its_vector(count):
    with pytest.raises(ValueError, match="not 6"):
        nuv1math.SolveCholLowTri(np.ones(count), np.ones(3))


def test_what_is_read_is_aligned():
    unaligned = np.frombuffer(b"\0" + np.ones(4).tobytes(), dtype=np.float64, offset=1)
    assert not unaligned.flags.aligned and converted(unaligned, "x").flags.aligned


def test_masked_values_are_refused():
    masked = np.ma.array(np.eye(3), mask=np.eye(3))
    for call in (lambda: nuv1math.CalcAffineCoefs(masked[0], *np.eye(3)), lambda: nuv1math.Cholesky(masked),
                 lambda: nuv1math.SolveChol(masked, np.ones(3))):
        with pytest.raises(ValueError, match="masked values"):
            call()
    nuv1math.Cholesky(np.ma.array(np.eye(3)))


class LargerThanItIs(np.ndarray):
    """An array that tells of more elements than it has."""

    shape = (9, 9)
    size = 45


def test_a_derived_class_cannot_tell_a_wrong_shape():
    small = np.eye(2).view(LargerThanItIs)
    for function, arguments in [(nuv1math.Cholesky, (small,)), (nuv1math.CholeskyLowTri, (small,)),
                                (nuv1math.SolveCholLowTri, (np.ones(1035), np.ones(2).view(LargerThanItIs)))]:
        with pytest.raises(ValueError, match="shape"):
            function(*arguments)


class OtherThanItIs(np.ndarray):
    """An array that tells of a type, of gaps and of rights that it has not."""

    dtype = np.dtype(np.float64)
    flags = np.ones(1).flags


@pytest.mark.parametrize("memory", [np.eye(3, dtype=np.float32), np.eye(6)[::2, ::2],
                                    np.frombuffer(np.eye(3).tobytes()).reshape(3, 3)])
def test_a_derived_class_cannot_tell_other_memory_than_it_has(memory):
    with pytest.raises(ValueError, match="must be a writable, contiguous array of float64"):
        nuv1math.Cholesky(memory.view(OtherThanItIs))


def test_what_is_contiguous_is_not_copied():
    column = np.arange(5.0)
    for array in (column, column[1:4], np.ones((3, 5))[1]):
        assert int(ffi.cast("uintptr_t", doubles(array, "x"))) == array.ctypes.data


def test_arrays_that_share_memory_are_refused():
    whole = np.ones(9)
    for function, arguments in [
            (nuv1math.UpdateNormMatrixLowTri, (whole[:6], whole[5:8], np.ones(3), 1.0)),
            (nuv1math.UpdateNormMatrixLowTri, (whole[:6], whole[6:], whole[3:6], 1.0)),
            (nuv1math.UpdateNormMatrixLowTri, (whole[:6], whole[6:], whole[6:], 1.0)),
            (nuv1math.UpdateNormMatrixLowTriSparse, (whole[:6], whole[6:], whole[5:6], [0], 1.0)),
            (nuv1math.SolveCholLowTri, (whole[:6], whole[5:8])),
            (nuv1math.SolveChol, (whole.reshape(3, 3), whole[:3]))]:
        with pytest.raises(ValueError, match="shares memory"):
            function(*arguments)
    assert (whole == 1.0).all()
    nuv1math.UpdateNormMatrixLowTri(whole[:6], whole[6:], np.ones(3), 1.0)
    assert (whole == 2.0).all()
    nuv1math.SolveCholLowTri(whole[:6], whole[6:])
    nuv1math.SolveCholLowTri(whole[3:], whole[:3])
