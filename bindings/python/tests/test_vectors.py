"""test_vectors.py: the functions give the results of the library's own tables, bit for bit, and so its digests.

tests/data has the tables; tests/tools/make_vectors.py describes their format. The digest of a table is the FNV-1a hash
of all its outputs, as tests/support/vector_tables.h computes it. An exception tells a result code, and that the other
outputs are untouched.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import hashlib
import math
import pathlib
import re
import struct

import numpy as np
import pytest

import nuv1math
from nuv1math._native import ffi, lib

DATA = pathlib.Path(__file__).resolve().parents[3] / "tests/data"
UNTOUCHED = -7.777e77  # an output that the library did not write
UNTOUCHED_KIND = 3  # the same for the kind of a fit


class Case:
    """A line of a table. The inputs are taken in their order; what is left are the outputs."""

    def __init__(self, line):
        self.tokens = line.split()

    def int(self):
        return int(self.tokens.pop(0))

    def double(self):
        return float.fromhex(self.tokens.pop(0))

    def doubles(self, count):
        return np.array([self.double() for _ in range(count)])

    def ints(self, count):
        return np.array([self.int() for _ in range(count)], dtype=np.intc)

    def points(self, count):
        return [self.doubles(count) for _ in range(4)]

    def packed(self, count):
        return self.doubles(max(count, 0) * (max(count, 0) + 1) // 2)


def outcome(outputs, function, *arguments):
    """The result code and the outputs of a function, which are untouched if it raises."""
    try:
        return [1, *function(*arguments)]
    except nuv1math.ResultError as error:
        return [error.code] + [UNTOUCHED] * outputs


def succeeds(function, *arguments):
    """1 or 0 for true or false of a factorisation."""
    try:
        function(*arguments)
        return 1
    except nuv1math.NotPositiveDefiniteError:
        return 0


def after_failure(function, points, *arguments):
    """What the library itself leaves in the record of a fit that failed, which Python does not show."""
    params = ffi.new("nuv_TOmographicParams *", [UNTOUCHED] * 8)
    addresses = [ffi.from_buffer("double[]", column) for column in points]
    getattr(lib, f"nuv_{function}")(len(points[0]), *addresses, *arguments, params)
    return ffi.unpack(ffi.cast("double *", params), 8)


def roots_linear(case):
    return outcome(2, nuv1math.RootsLinear, *case.doubles(6))


def affine_inverse(case):
    return outcome(6, nuv1math.AffineCoefsToInvCoefs, case.doubles(6))


def affine_untransform(case):
    return nuv1math.AffineUntransform(case.doubles(6), case.double(), case.double())


def conformal_inverse(case):
    return nuv1math.ConformalCoefsToInvCoefs(case.doubles(6))


def conformal_to_affine(case):
    return nuv1math.ConformalCoefsToAffineCoefs(case.doubles(6))


def affine_to_omographic(case):
    return nuv1math.AffineCoefsToOmographicCoefs(case.doubles(6))


def affine_fit(case):
    return outcome(6, nuv1math.CalcAffineCoefs, *case.points(case.int()))


def conformal_fit(case):
    count, rigid_inverse = case.int(), case.int()
    return outcome(6, nuv1math.CalcConformalCoefs, *case.points(count), bool(rigid_inverse))


def omographic_fit(case):
    points = case.points(case.int())
    result, *params = outcome(8, nuv1math.CalcOmographicCoefs, *points)
    return [result] + (params if result == 1 else after_failure("CalcOmographicCoefs", points))


def best_fit(case):
    count, same_orientation, requested = case.int(), case.int(), case.int()
    points = case.points(count)
    try:
        used, params = nuv1math.CalcCoefs(*points, bool(same_orientation), requested)
        return [1, int(used), *params]
    except nuv1math.ImpossibleError:
        left = after_failure("CalcCoefs", points, same_orientation, requested, ffi.new("int *"))
        return [0, UNTOUCHED_KIND, *left]


def update_dense(case):
    count = case.int()
    matrix, vector, row = case.packed(count), case.doubles(count), case.doubles(count)
    nuv1math.UpdateNormMatrixLowTri(matrix, vector, row, case.double())
    return [*matrix, *vector]


def update_sparse(case):
    count = case.int()
    matrix, vector = case.packed(count), case.doubles(count)
    entries = case.int()
    values, indices = case.doubles(entries), case.ints(entries)
    nuv1math.UpdateNormMatrixLowTriSparse(matrix, vector, values, indices, case.double())
    return [*matrix, *vector]


def packed_cholesky(case):
    matrix = case.packed(case.int())
    return [succeeds(nuv1math.CholeskyLowTri, matrix), *matrix]


def packed_solution(case):
    count = case.int()
    factor, vector = case.packed(count), case.doubles(count)
    nuv1math.SolveCholLowTri(factor, vector)
    return vector


def dense_cholesky(case):
    order = max(case.int(), 0)
    matrix = case.doubles(order * order).reshape(order, order)
    return [succeeds(nuv1math.Cholesky, matrix), *matrix.reshape(-1)]


def dense_solution(case):
    order = max(case.int(), 0)
    factor, vector = case.doubles(order * order).reshape(order, order), case.doubles(order)
    nuv1math.SolveChol(factor, vector)
    return vector


def polynomial_roots(case):
    degree = case.int()
    coefficients, tolerance = case.doubles(degree + 1), case.double()
    try:
        roots = nuv1math.Roots(coefficients, tolerance)
        return [len(roots), *roots] + [UNTOUCHED] * (degree - len(roots))
    except nuv1math.ResultError as error:
        return [error.code] + [UNTOUCHED] * degree


TABLES = {
    "Roots": roots_linear, "AffineCoefsToInvCoefs": affine_inverse, "AffineUntransform": affine_untransform,
    "ConformalCoefsToInvCoefs": conformal_inverse, "ConformalCoefsToAffineCoefs": conformal_to_affine,
    "AffineCoefsToOmographicCoefs": affine_to_omographic, "CalcAffineCoefs": affine_fit,
    "CalcConformalCoefs": conformal_fit, "CalcOmographicCoefs": omographic_fit, "CalcCoefs": best_fit,
    "UpdateNormMatrixLowTriDense": update_dense, "UpdateNormMatrixLowTriSparse": update_sparse,
    "CholeskyLowTri": packed_cholesky, "SolveCholLowTri": packed_solution, "Cholesky": dense_cholesky,
    "SolveChol": dense_solution, "PolynomialRoots": polynomial_roots,
}


def bits(value):
    """The 64 bits of an output. All NaN count as one value."""
    if isinstance(value, int):
        return value & 0xFFFFFFFFFFFFFFFF
    return 0x7FF8 << 48 if math.isnan(value) else struct.unpack("<Q", struct.pack("<d", value))[0]


def expected_bits(token, actual):
    """The bits of a token of a table: an int, a double, or - for an output that is not written."""
    if token == "-":
        return bits(UNTOUCHED_KIND if isinstance(actual, int) else UNTOUCHED)
    return bits(int(token) if isinstance(actual, int) else float.fromhex(token))


def digest_of(values):
    """FNV-1a of 64-bit values, from the low byte of each."""
    value = 0xCBF29CE484222325
    for byte in struct.pack(f"<{len(values)}Q", *values):
        value = (value ^ byte) * 0x100000001B3 & 0xFFFFFFFFFFFFFFFF
    return f"{value:016x}"


def digest_of_table(name):
    """The digest of the outputs of a table, each of which is compared with the table."""
    found = []
    for number, line in enumerate((DATA / f"{name}.txt").read_text(encoding="utf-8").splitlines(), 1):
        if not line.startswith("#"):
            case = Case(line)
            outputs = [value if isinstance(value, int) else float(value) for value in TABLES[name](case)]
            separator, *expected = case.tokens
            assert separator == "|" and len(expected) == len(outputs), f"{name}.txt:{number}"
            seen = [bits(value) for value in outputs]
            assert seen == [expected_bits(*pair) for pair in zip(expected, outputs)], f"{name}.txt:{number}"
            found += seen
    assert found
    return digest_of(found)


def digest_of_random_numbers():
    """The digest of the sequences of Rand in the order of their seeds. Each number is compared with the table."""
    parts = re.split(r"^seed (-?\d+), \d+ draws\n", (DATA / "random_sequences.txt").read_text(encoding="utf-8"),
                     flags=re.MULTILINE)
    drawn = []
    for seed, numbers in sorted(zip(map(int, parts[1::2]), parts[2::2])):
        nuv1math.SetRandomSeed(seed)
        for number in numbers.split():
            drawn.append(bits(nuv1math.Rand()))
            assert drawn[-1] == bits(float.fromhex(number)), f"seed {seed}"
    return digest_of(drawn)


@pytest.fixture(scope="module")
def expected_digests():
    """The digest of each table of exported functions, and that of all."""
    text = (DATA / "digest.txt").read_text(encoding="utf-8").split("digest of exported functions: ")
    return dict(re.findall(r"^(\w+) ([0-9a-f]{16})$", text[0], re.MULTILINE)), text[1][:16]


def test_all_results_and_digests_are_those_of_the_library(expected_digests):
    digests = {name: digest_of_table(name) for name in TABLES}
    digests["random_sequences"] = digest_of_random_numbers()
    tables, digest_of_all = expected_digests
    assert digests == tables
    lines = "\n".join(f"{name} {digests[name]}" for name in sorted(digests))
    assert hashlib.sha256(lines.encode()).hexdigest()[:16] == digest_of_all
