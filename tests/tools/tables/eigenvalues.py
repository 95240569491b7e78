# eigenvalues.py: tables of balancing, reduction to Hessenberg form and QR iteration.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

import reference
from exactdouble import GREATEST, INFINITY, LEAST, LEAST_NORMAL, NAN, ONE, ZERO
from tables.table import Table, number, numbers, power_of_two


def table_balance():
    table = Table(
        "BalanceMatrix",
        "n stride matrix, column by column | matrix",
        lambda n, stride, matrix: [reference.balance_matrix(n, matrix, stride)],
    )
    for n in (0, -1):
        table.add("friendly", [n, 3, []], "no rows")
    for matrix in ([7], [1, 2, 3, 4], [1, 100, 0.01, 1], [1, 0, 5, 1], [0, 1e-300, 1e300, 0], [1, 3, 7, 1]):
        table.add("friendly", square_case(numbers(*matrix)))
    table.add_made("friendly", 20, lambda source: square_of(source, lambda count: source.wholes(count)))
    table.add_made("random", 30, lambda source: square_of(source, lambda count: source.reals(count, 4)))
    table.add_made("random", 40, lambda source: square_of(source, lambda count: source.wides(count)))
    table.add_made("random", 25, lambda source: square_of(source, lambda count: source.wides(count, -1070, 1020)))
    table.add_made("near-singular", 15, equal_threshold, "0.95 of the norm exactly")
    table.add_made("near-singular", 15, close_to_threshold, "close to 0.95 of the norm")
    table.add_made("special", 40, lambda source: square_of(source, source.mixed))
    for column, row in ((INFINITY, ONE), (GREATEST, LEAST), (LEAST, GREATEST), (INFINITY, INFINITY), (NAN, ONE)):
        table.add("special", [2, 2, [ONE, column, row, ONE]])
        table.add("special", [2, 2, [ONE, row, column, ONE]])
    table.add_order(
        lambda source: square_of(source, lambda count: source.wides(count), 3),
        "balance-diagonal-included",
        "balance-single-pass",
    )
    table.add_order(equal_threshold, "balance-threshold-inclusive")
    table.add_order(close_to_threshold, "balance-sums-descending", "balance-division-threshold")
    table.add_order(
        lambda source: square_of(source, lambda count: powers(source, count), 2), "balance-doubles-at-equality"
    )
    table.add_order(extreme_diagonal, "balance-column-first", "balance-diagonal-kept")
    return table


def square_case(values):
    n = 1
    while n * n < len(values):
        n += 1
    return [n, n, values]


def square_of(source, values, least=1, greatest=8):
    """A general matrix, often with room between its columns: the numbers there must stay."""
    n = source.integer(least, greatest)
    stride = n + source.choice([0, 0, 1, 3])
    return [n, stride, values(n * stride)]


def powers(source, count):
    return [power_of_two(source.integer(-6, 6)) for _ in range(count)]


def equal_threshold(source):
    """Column and row 1 have norms as 3 to 7, times a power of 4: halving the row saves 5 percent exactly."""
    factor = power_of_two(source.integer(-20, 20))
    column, row = factor * number(3), factor * number(7) * power_of_two(2 * source.integer(0, 6))
    if source.integer(0, 1):
        column, row = row, column
    return [2, 2, [source.whole(), column, row, source.whole()]]


def close_to_threshold(source):
    """The same with norms that are sums, some units of the last place off."""
    n = source.integer(4, 6)
    row, column = source.reals(n - 1, 4), source.reals(n - 2)
    target = reference.plain_sum([abs(value) for value in row]) * number(3) / number(7)
    column.append(target - reference.plain_sum([abs(value) for value in column]))
    flat = source.reals(n * n, 4)
    flat[1:n] = column
    flat[n::n] = row
    return [n, n, flat]


def extreme_diagonal(source):
    n = source.integer(2, 4)
    flat = source.wides(n * n)
    for i in range(n):
        flat[i * n + i] = source.choice([LEAST, LEAST_NORMAL, GREATEST, source.wide(-1070, -1020), ONE])
    return [n, n, flat]


def table_reduce():
    table = Table(
        "ReduceToHessenberg",
        "n stride matrix, column by column | matrix",
        lambda n, stride, matrix: [reference.reduce_to_hessenberg(n, matrix, stride)],
    )
    for n in (0, -1):
        table.add("friendly", [n, 3, []], "no rows")
    matrices = [7], [1, 2, 3, 4], [1, 2, 3, 4, 5, 6, 7, 8, 9], [1, 0, 0, 2, 3, 4, 5, 6, 7], [1, 0, 2, 3, 4, 5, 6, 7, 8]
    for matrix in matrices:
        table.add("friendly", square_case(numbers(*matrix)))
    table.add_made("friendly", 30, lambda source: square_of(source, lambda count: source.wholes(count)))
    table.add_made("random", 50, lambda source: square_of(source, lambda count: source.reals(count, 4), 3))
    table.add_made("random", 20, lambda source: square_of(source, lambda count: source.wides(count, -300, 300), 3))
    table.add_made("near-singular", 20, lambda source: square_of(source, lambda count: source.wholes(count, 1), 3))
    table.add_made("special", 50, lambda source: square_of(source, source.mixed, 3))
    table.add_order(
        lambda source: square_of(source, lambda count: source.reals(count, 4), 4),
        "hessenberg-signed-pivot",
        "hessenberg-no-pivoting",
        "hessenberg-swaps-multipliers",
        "hessenberg-reciprocal",
        "hessenberg-clears-multipliers",
        "hessenberg-rows-first",
        "fma",
    )
    table.add_order(lambda source: square_of(source, lambda count: source.wholes(count, 2), 3), "hessenberg-last-tie")
    table.add_order(lambda source: square_of(source, source.mixed, 3), "hessenberg-zero-multiplier")
    return table


def table_eigenvalues():
    table = Table(
        "HessenbergEigenvalues",
        "n stride matrix, column by column | result real parts imaginary parts",
        lambda n, stride, matrix: reference.hessenberg_eigenvalues(n, matrix, stride),
    )
    for n in (0, -1):
        table.add("friendly", [n, 3, []], "no rows")
    for matrix in ([7], [1, 0, 3, 4], [0, 1, -1, 0], [6, 1, 0, -11, 0, 1, 6, 0, 0], [0] * 9, [0, 0, 1, 0]):
        table.add("friendly", square_case(numbers(*matrix)))
    table.add_made("friendly", 25, lambda source: hessenberg_case(source, lambda count: source.wholes(count)))
    table.add_made("random", 45, lambda source: hessenberg_case(source, lambda count: source.reals(count, 4)))
    table.add_made("random", 20, lambda source: hessenberg_case(source, lambda count: source.wides(count)))
    table.add_made("random", 10, lambda source: hessenberg_case(source, lambda count: source.wides(count, -500, 500)))
    table.add_made("near-singular", 20, lambda source: hessenberg_case(source, lambda count: source.wholes(count, 1)))
    table.add_made("near-singular", 15, graded_case, "small elements below the diagonal")
    table.add_made("near-singular", 15, small_neighbours, "two neighbours below the diagonal are small")
    table.add_made("near-singular", 20, cyclic_case, "a cyclic permutation, which needs exceptional shifts")
    table.add_made("near-singular", 10, cyclic_below, "exceptional shifts in the lower block")
    table.add_made("near-singular", 10, paired_case, "two double eigenvalues: the iteration gives up")
    table.add_made("near-singular", 10, shrinking_block, "a negligible element that does not stay negligible")
    table.add_made("near-singular", 10, norm_decides, "as small as the norm allows, between zeros")
    table.add_made("special", 40, lambda source: hessenberg_case(source, source.mixed, 1, 6))
    add_eigenvalue_orders(table)
    return table


def add_eigenvalue_orders(table):
    table.add_order(
        lambda source: hessenberg_case(source, lambda count: source.reals(count, 4), 4, 5),
        "start-reciprocal",
        "start-sum-first",
        "start-division",
        "start-norm-reversed",
        "sweep-division",
        "sweep-norm-reversed",
        "sweep-norm-ungrouped",
        "sweep-factors-division",
        "sweep-vector-division",
        "sweep-rows-regrouped",
        "sweep-columns-regrouped",
        "eigen-pair-swapped",
        "fma",
        "fma-first",
        "fma-second",
    )
    table.add_order(
        lambda source: hessenberg_case(source, lambda count: source.reals(count, 4), 7, 8),
        "eigen-counter-kept",
        "sweep-all-rows",
    )
    table.add_order(
        lambda source: hessenberg_case(source, lambda count: source.reals(count, 4), 2, 2),
        "eigen-block-naive",
        "eigen-block-reciprocal",
        "fma-first",
        "fma-second",
    )
    table.add_order(graded_case, "eigen-epsilon")
    table.add_order(small_neighbours, "start-at-block", "start-no-negation")
    table.add_order(cyclic_case, "exceptional-none", "exceptional-regrouped")
    table.add_order(cyclic_below, "exceptional-active-block")
    table.add_order(paired_case, "exceptional-once", "eigen-limit-60", "eigen-shift-last")
    table.add_order(tripled_case, "eigen-limit-29", "eigen-limit-31")
    table.add_order(shrinking_block, "eigen-negligible-cleared")
    table.add_order(norm_decides, "eigen-no-norm", "eigen-norm-by-columns")
    table.add_order(negative_zero_block, "eigen-block-sign-bit")
    table.add_order(negative_zero_start, "sweep-sign-bit")


def hessenberg_case(source, values, least=1, greatest=8):
    """A Hessenberg matrix. The elements below its subdiagonal have no meaning."""
    n, stride, flat = square_of(source, values, least, greatest)
    for column in range(n):
        for row in range(column + 2, n):
            if source.integer(0, 1):
                flat[column * stride + row] = source.choice([NAN, INFINITY, source.whole()])
    return [n, stride, flat]


def graded_case(source):
    """Subdiagonal elements close to half a unit of the last place of their neighbours."""
    n = source.integer(2, 6)
    flat = source.reals(n * n, 3)
    for i in range(n - 1):
        if source.integer(0, 1):
            flat[i * n + i + 1] = source.wide(-54, -50)
    return [n, n, flat]


def small_neighbours(source):
    n = source.integer(4, 7)
    flat = source.reals(n * n, 3)
    for i in range(source.integer(1, n - 3), n - 1):
        flat[i * n + i + 1] = source.real(-27)
    return [n, n, flat]


def shrinking_block(source):
    """Row 1, then a block of large elements and small eigenvalues: its diagonal shrinks as they are found."""
    size = power_of_two(source.integer(4, 20))
    large, other = source.real(0) * size, source.real(0)
    block = [[large, -large, other], [large, -large, source.real(0)], [ZERO, source.real(0), source.real(0)]]
    left = source.wide(-55, -53) * abs(large)
    rows = [source.reals(4)] + [[ZERO] + row for row in block]
    rows[1][0] = left
    return [4, 4, by_columns(rows)]


def by_columns(rows):
    return [row[j] for j in range(len(rows)) for row in rows]


def norm_decides(source):
    """A subdiagonal element of half a unit of the last place of the norm, between two zeros on the diagonal."""
    n = source.integer(3, 5)
    flat = hessenberg_zeros(n, source.reals(n * n, 3))
    l = source.integer(n - 1, n)
    flat[(l - 2) * n + l - 2] = flat[(l - 1) * n + l - 1] = ZERO
    flat[(l - 2) * n + l - 1] = ZERO
    norm = reference.hessenberg_norm(n, reference.matrix_rows(n, flat, n))
    half_unit = norm.mantissa.bit_length() + norm.exponent - 54
    flat[(l - 2) * n + l - 1] = power_of_two(half_unit - source.choice([0, 0, 0, 1]))
    return [n, n, flat]


def hessenberg_zeros(n, flat):
    return [ZERO if k % n > k // n + 1 else value for k, value in enumerate(flat)]


def negative_zero_block(source):
    lower, upper = (abs(value) for value in source.reals(2, 3))
    return [2, 2, [-ZERO, lower, upper, ZERO]]


def negative_zero_start(source):
    """The first element of the double step is -0.0."""
    y, a13, a21, a32 = [abs(value) for value in source.reals(4, 3)]
    rows = [[ZERO, -ZERO, a13], [a21, y, ZERO], [ZERO, a32, -ZERO]]
    return [3, 3, by_columns(rows)]


def cyclic_matrix(source, n, factor):
    """n equidistant eigenvalues on a circle: the double step reproduces the matrix. Zeros have any sign."""
    flat = [source.choice([ZERO, -ZERO]) for _ in range(n * n)]
    for i in range(n):
        flat[i * n + (i + 1) % n] = factor
    return flat


def cyclic_case(source):
    n = source.integer(3, 6)
    return [n, n, cyclic_matrix(source, n, source.real(4))]


def cyclic_below(source):
    """A full matrix above, nothing below it, and a cyclic permutation with a diagonal in the lower right corner."""
    above, below = source.integer(1, 2), source.integer(3, 4)
    n = above + below
    block, diagonal = cyclic_matrix(source, below, source.real(4)), source.whole()
    flat = source.reals(n * n, 3)
    for column in range(n):
        for row in range(above, n):
            inside = column >= above
            flat[column * n + row] = block[(column - above) * below + row - above] if inside else ZERO
    for i in range(above, n):
        flat[i * n + i] = diagonal
    return [n, n, flat]


def paired_case(source):
    """The companion matrix of (x^2 - c)^2."""
    return [4, 4, reference.companion_matrix(4, paired_polynomial(source))]


def paired_polynomial(source):
    square = source.wide(-3, 3)
    return [ONE, ZERO, -(square + square), ZERO, square * square]


def tripled_case(source):
    """The companion matrix of (x^2 - c)^3."""
    square, three = source.wide(-3, 3), number(3)
    coefficients = [ONE, ZERO, -(three * square), ZERO, three * square * square, ZERO, -(square * square * square)]
    return [6, 6, reference.companion_matrix(6, coefficients)]
