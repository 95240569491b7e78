# gauss.py: tables of the Gaussian elimination.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

import reference
from exactdouble import NAN, ONE, ZERO
from tables.table import BANDS, BELOW, TOLERANCE, Table, number, numbers, power_of_two


def table_gauss():
    table = Table("SolveGauss", "n nrhs lda ldb ldx A B | result A B X", gauss_outputs)
    table.add("friendly", gauss_inputs(2, 1, numbers(0, 1, 1, 0), numbers(2, 3)))
    table.add("friendly", gauss_inputs(2, 1, numbers(1, 1, 1, 1), numbers(1, 2)), "singular")
    table.add("friendly", gauss_inputs(2, 1, numbers(1, 1, 1, 1), numbers(1, 1)), "singular")
    for n in (0, -1):
        table.add("friendly", [n, 1, 1, 1, 1, [ONE], [ONE]], "no unknowns")
    for exponent in (-60, 0, 1, 30):
        pivot = [power_of_two(exponent), -power_of_two(exponent)]
        for value in pivot:
            table.add("friendly", gauss_inputs(1, 2, [value], numbers(3, -7)))
    table.add_made("friendly", 25, lambda source: gauss_case(source, lambda count: source.wholes(count)))
    table.add_made("random", 40, lambda source: gauss_case(source, lambda count: source.reals(count, 4)))
    table.add_made("random", 15, lambda source: gauss_case(source, lambda count: source.wides(count, -300, 300)))
    table.add_made("near-singular", 20, singular_gauss)
    table.add_made("near-singular", 15, lambda source: gauss_case(source, lambda count: source.wholes(count, 1)))
    table.add_made("special", 30, lambda source: gauss_case(source, source.mixed))
    table.add_order(
        lambda source: gauss_case(source, lambda count: source.reals(count, 4), 3),
        "gauss-division",
        "gauss-no-pivoting",
        "upper-ascending",
        "upper-one-by-one",
        "fma",
    )
    table.add_order(lambda source: gauss_case(source, lambda count: source.wholes(count, 2), 3), "gauss-last-tie")
    table.add_order(lambda source: gauss_case(source, source.mixed, 3), "gauss-zero-factor")
    table.add_order(tiny_pivot, "gauss-tiny-pivot")
    return table


def gauss_outputs(n, nrhs, lda, ldb, ldx, a, b):
    return reference.solve_gauss(n, nrhs, a, lda, b, ldb, ldx)


def gauss_inputs(n, nrhs, a, b):
    return [n, nrhs, n, n, n, a, b]


def gauss_case(source, values, least=1):
    """A system with room between its columns: the elements there are numbers too and must stay."""
    n, nrhs = source.integer(least, 5), source.integer(1, 3)
    lda, ldb, ldx = [n + source.choice([0, 0, 1, 2]) for _ in range(3)]
    return [n, nrhs, lda, ldb, ldx, values(lda * n), values(ldb * nrhs)]


def singular_gauss(source):
    """The last row is the sum of the others, exactly or nearly."""
    n = source.integer(2, 4)
    a = source.wholes(n * n)
    for column in range(n):
        rows = a[column * n : column * n + n - 1]
        a[column * n + n - 1] = reference.plain_sum(rows) + source.choice([ZERO, ZERO, source.real(-45)])
    return gauss_inputs(n, 1, a, source.wholes(n))


def tiny_pivot(source):
    n = source.integer(1, 3)
    return gauss_inputs(n, 1, source.wides(n * n, -60, -41), source.wholes(n))


def table_upper():
    table = Table("SolveUpperTri", "n ldu incb incx U b | result x", upper_outputs)
    for n in (0, -1):
        table.add("friendly", [n, 1, 1, 1, [], []], "no unknowns")
    table.add("friendly", [2, 2, 1, 1, numbers(2, 0, 1, 4), numbers(3, 4)])
    table.add_made("friendly", 20, lambda source: upper_case(source, lambda count: source.wholes(count)))
    table.add_made("random", 40, lambda source: upper_case(source, lambda count: source.reals(count, 4)))
    table.add_made("random", 15, lambda source: upper_case(source, lambda count: source.wides(count, -300, 300)))
    for band in BANDS:
        table.add("near-singular", [1, 1, 1, 1, [ZERO], [band]], "the right-hand side is at the tolerance")
        case = [2, 2, 1, 1, [ZERO, NAN] + numbers(1, 2), [ONE + ONE + band, number(4)]]
        table.add("near-singular", case, "a zero on the diagonal")
    table.add_made("near-singular", 30, zero_diagonal)
    table.add_made("special", 30, lambda source: upper_case(source, source.mixed))
    table.add_order(
        lambda source: upper_case(source, lambda count: source.reals(count, 4), 3),
        "upper-ascending",
        "upper-reciprocal",
        "upper-one-by-one",
        "fma",
    )
    return table


def upper_outputs(n, ldu, incb, incx, u, b):
    return reference.solve_upper_tri(n, u, ldu, b, incb, incx)


def upper_case(source, values, least=1):
    """A system with NaN below the diagonal and between the elements: nothing there may be read."""
    n = source.integer(least, 6)
    ldu = n + source.choice([0, 0, 1])
    incb, incx = source.choice([1, 1, 2]), source.choice([1, 1, 3])
    u, b = values(ldu * n), values(n * incb)
    for column in range(n):
        for row in range(column + 1, ldu):
            u[column * ldu + row] = NAN
    for i in range(n * incb):
        if i % incb:
            b[i] = NAN
    return [n, ldu, incb, incx, u, b]


def zero_diagonal(source):
    case = upper_case(source, lambda count: source.wholes(count, 2), 2)
    n, ldu, incb = case[:3]
    row = source.integer(0, n - 1)
    case[4][row * ldu + row] = source.choice([ZERO, -ZERO])
    if source.integer(0, 1):
        # Consistent: with zeros to the right of the diagonal and on the right-hand side.
        for column in range(row + 1, n):
            case[4][column * ldu + row] = ZERO
        case[5][row * incb] = source.choice([ZERO, TOLERANCE, -BELOW])
    return case


def table_max_abs():
    table = Table(
        "MaxAbsIndex", "n stride x | position", lambda n, stride, x: [reference.max_abs_index(n, x, stride)]
    )
    for values in ([-5, 5, 3], [1, -7, 7], [0], [0, -0.0], [-0.0, 0], [3, 2, 1], [-1, -2, -3]):
        table.add("friendly", [len(values), 1, numbers(*values)])
    for n in (0, -1):
        table.add("friendly", [n, 1, []], "no values")
    table.add_made("friendly", 25, lambda source: max_case(source, lambda count: source.wholes(count, 3)))
    table.add_made("random", 25, lambda source: max_case(source, lambda count: source.wides(count, -1070, 1020)))
    table.add_made("special", 40, lambda source: max_case(source, source.mixed))
    table.add_made("special", 8, lambda source: [4, 1, [NAN] + source.wholes(3)], "a NaN in front")
    table.add_order(
        lambda source: max_case(source, lambda count: source.wholes(count, 3)), "max-last-tie", "max-signed"
    )
    table.add_order(lambda source: [4, 1, [NAN] + source.wholes(3)], "max-skips-nan")
    return table


def max_case(source, values):
    n, stride = source.integer(1, 8), source.integer(1, 3)
    return [n, stride, values(n * stride)]
