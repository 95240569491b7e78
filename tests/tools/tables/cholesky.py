# cholesky.py: tables of normal equations and of the Cholesky factorisations and solutions.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

import reference
from exactdouble import GREATEST, INFINITY, NAN, ONE, ZERO
from reference import packed
from tables.table import Table, number, numbers


# --- Packed normal equations -------------------------------------------------------------------------------------


def table_update_dense():
    table = Table(
        "UpdateNormMatrixLowTriDense", "n matrix vector row value | matrix vector", reference.update_dense
    )
    for n in (0, -1):
        table.add("friendly", [n, [], [], [], ONE], "no unknowns")
    table.add("friendly", [2, numbers(0, 0, 0), numbers(0, 0), numbers(2, 3), number(5)])
    table.add_made("friendly", 20, lambda source: dense_case(source, lambda count: source.wholes(count)))
    table.add_made("random", 35, lambda source: dense_case(source, lambda count: source.reals(count, 4)))
    table.add_made("random", 15, lambda source: dense_case(source, lambda count: source.wides(count, -500, 500)))
    table.add_made("near-singular", 15, cancelling_dense, "the products cancel the contents")
    table.add_made("special", 30, lambda source: dense_case(source, source.mixed))
    table.add_order(lambda source: dense_case(source, lambda count: source.reals(count, 4)), "fma")
    table.add_order(cancelling_dense, "fma")
    return table


def dense_case(source, values):
    n = source.integer(1, 8)
    return [n, values(packed(n, 0)), values(n), values(n), values(1)[0]]


def cancelling_dense(source):
    n = source.integer(1, 4)
    row, value = source.reals(n, 4), source.real(4)
    matrix = [-(row[i] * row[j]) for i in range(n) for j in range(i + 1)]
    return [n, matrix, [-(element * value) for element in row], row, value]


def table_update_sparse():
    table = Table(
        "UpdateNormMatrixLowTriSparse",
        "n matrix vector count values indices value | matrix vector",
        reference.update_sparse,
    )
    for count in (0, -1):
        table.add("friendly", [2, numbers(1, 2, 3), numbers(4, 5), count, [], [], ONE], "no entries")
    zeros = [numbers(0, 0, 0), numbers(0, 0)]
    table.add("friendly", [2] + zeros + [2, numbers(2, 3), [0, 1], number(5)], "ascending")
    table.add("friendly", [2] + zeros + [2, numbers(3, 2), [1, 0], number(5)], "descending")
    table.add("friendly", [2] + zeros + [2, numbers(3, 2), [1, 1], number(5)], "a repeated index")
    table.add("friendly", [2] + zeros + [2, numbers(3, 2), [-1, -5], number(5)], "only unused entries")
    table.add_made("friendly", 25, lambda source: sparse_case(source, lambda count: source.wholes(count)))
    table.add_made("random", 45, lambda source: sparse_case(source, lambda count: source.reals(count, 4)))
    table.add_made("random", 10, lambda source: sparse_case(source, lambda count: source.wides(count, -500, 500)))
    table.add_made("special", 30, lambda source: sparse_case(source, source.mixed))
    table.add_order(
        lambda source: sparse_case(source, lambda count: source.reals(count, 4)),
        "fma",
        "sparse-descending",
        "sparse-repeated-twice",
    )
    return table


def sparse_case(source, values):
    """Indices in any order, with repeats and unused entries."""
    n, count = source.integer(1, 6), source.integer(1, 6)
    indices = [source.integer(-1, n - 1) for _ in range(count)]
    return [n, values(packed(n, 0)), values(n), count, values(count), indices, values(1)[0]]


def add_factor_orders(table, make_case):
    """Cases that wrong orders of the factorisation change: of regular matrices, and of nearly singular ones."""
    table.add_order(
        lambda source: make_case(source, lambda count: source.reals(count, 4), 0, 4),
        "cholesky-diagonal-ascending",
        "cholesky-diagonal-sum",
        "cholesky-column-division",
        "cholesky-column-descending",
        "fma",
    )
    table.add_order(
        lambda source: make_case(source, lambda count: source.reals(count, 4), -1, 4),
        "cholesky-diagonal-ascending",
        "cholesky-column-division",
    )


def table_cholesky():
    table = Table("CholeskyLowTri", "n matrix | result matrix", reference.cholesky_low_tri)
    for n in (0, -1):
        table.add("friendly", [n, []], "no unknowns")
    for matrix in ([4, 2, 5], [9], [-9], [0], [-0.0], [4, 2, 1], [-1, 2, 3], [1, 2, 3], [0, 0, 1], [0, 1, 1]):
        table.add("friendly", packed_inputs(numbers(*matrix)))
    table.add_made("friendly", 20, lambda source: gram_case(source, lambda count: source.wholes(count, 4)))
    table.add_made("random", 40, lambda source: gram_case(source, lambda count: source.reals(count, 4)))
    table.add_made("random", 15, lambda source: packed_inputs(source.reals(packed(source.integer(1, 5), 0), 4)))
    table.add_made("near-singular", 20, lambda source: gram_case(source, lambda count: source.reals(count, 4), -1))
    table.add_made("near-singular", 10, lambda source: gram_case(source, lambda count: source.wholes(count, 4), -1))
    table.add_made("special", 30, special_gram)
    add_factor_orders(table, gram_case)
    return table


def packed_inputs(matrix):
    n = 0
    while packed(n, 0) < len(matrix):
        n += 1
    return [n, matrix]


def gram_case(source, values, surplus=1, least=1):
    """The normal matrix of n + surplus observations of n unknowns: singular but for rounding if surplus < 0."""
    n = source.integer(max(least, 1 - surplus), 8)
    matrix, vector = [ZERO] * packed(n, 0), [ZERO] * n
    for _ in range(n + surplus):
        matrix, vector = reference.update_dense(n, matrix, vector, values(n), ONE)
    return [n, matrix]


def special_gram(source):
    n, matrix = gram_case(source, lambda count: source.wholes(count, 4))
    matrix[source.integer(0, len(matrix) - 1)] = source.special()
    return [n, matrix]


def table_solve():
    table = Table(
        "SolveCholLowTri", "n factor vector | vector", lambda *inputs: [reference.solve_chol_low_tri(*inputs)]
    )
    for n in (0, -1):
        table.add("friendly", [n, [], []], "no unknowns")
    table.add("friendly", [2, numbers(2, 1, 2), numbers(8, 13)])
    table.add("friendly", [1, numbers(3), numbers(7)])
    table.add_made("friendly", 20, lambda source: solve_case(source, lambda count: source.wholes(count)))
    table.add_made("random", 35, lambda source: solve_case(source, lambda count: source.reals(count, 4)))
    table.add_made("random", 30, factorised_case, "a factor of normal equations")
    table.add_made("near-singular", 15, last_zero, "the last diagonal is 0")
    table.add_made("special", 30, lambda source: solve_case(source, source.mixed))
    table.add_order(
        lambda source: solve_case(source, lambda count: source.reals(count, 4), 3),
        "solve-reciprocal",
        "solve-forward-descending",
        "solve-backward-ascending",
        "solve-sum-first",
        "fma",
    )
    return table


def solve_case(source, values, least=1):
    n = source.integer(least, 8)
    return [n, values(packed(n, 0)), values(n)]


def factorised_case(source):
    n, matrix = gram_case(source, lambda count: source.reals(count, 4))
    result, factor = reference.cholesky_low_tri(n, matrix)
    assert result == 1
    return [n, factor, source.reals(n, 6)]


def last_zero(source):
    n, factor, vector = factorised_case(source)
    factor[packed(n - 1, n - 1)] = source.choice([ZERO, -ZERO])
    return [n, factor, vector]


# --- Dense Cholesky ----------------------------------------------------------------------------------------------


def table_dense_cholesky():
    table = Table("Cholesky", "n matrix, row by row | result matrix", reference.cholesky)
    for n in (0, -1):
        table.add("friendly", [n, []], "no unknowns")
    for matrix in ([4, 9, 2, 5], [9], [-9], [0], [-0.0], [4, 7, 2, 1], [-1, 8, 2, 3], [1, 0, 2, 3], [0, 5, 0, 1]):
        table.add("friendly", [1 if len(matrix) == 1 else 2, numbers(*matrix)])
    for sign in (ONE, -ONE):
        table.add("special", [2, numbers(1) + [NAN, sign] + numbers(1)], "the last radicand is exactly 0")
    table.add_made("friendly", 20, lambda source: dense_gram(source, lambda count: source.wholes(count, 4)))
    table.add_made("random", 40, lambda source: dense_gram(source, lambda count: source.reals(count, 4)))
    table.add_made("random", 15, lambda source: dense_gram(source, lambda count: source.wides(count, -300, 300)))
    table.add_made("near-singular", 20, lambda source: dense_gram(source, lambda count: source.reals(count, 4), -1))
    table.add_made("near-singular", 10, lambda source: dense_gram(source, lambda count: source.wholes(count, 4), -1))
    table.add_made("special", 30, lambda source: in_square(source, *special_gram(source)))
    add_factor_orders(table, dense_gram)
    return table


def dense_gram(source, values, surplus=1, least=1):
    return in_square(source, *gram_case(source, values, surplus, least))


def in_square(source, n, triangle):
    """The square matrix of a packed triangle. What is above the diagonal must neither be read nor changed."""
    at = reference.dense(n)
    square = [source.choice([NAN, NAN, INFINITY, GREATEST, source.whole()]) for _ in range(n * n)]
    for i in range(n):
        for j in range(i + 1):
            square[at(i, j)] = triangle[packed(i, j)]
    return [n, square]


def table_dense_solve():
    table = Table(
        "SolveChol", "n factor, row by row vector | vector", lambda *inputs: [reference.solve_chol(*inputs)]
    )
    for n in (0, -1):
        table.add("friendly", [n, [], []], "no unknowns")
    table.add("friendly", [2, numbers(2, 9, 1, 2), numbers(8, 13)])
    table.add("friendly", [1, numbers(3), numbers(7)])
    table.add_made("friendly", 20, lambda source: dense_solve(source, lambda count: source.wholes(count)))
    table.add_made("random", 35, lambda source: dense_solve(source, lambda count: source.reals(count, 4)))
    table.add_made("random", 15, lambda source: dense_solve(source, lambda count: source.wides(count, -300, 300)))
    table.add_made(
        "random", 30, lambda source: square_factor(source, *factorised_case(source)), "a factor of normal equations"
    )
    table.add_made(
        "near-singular", 15, lambda source: square_factor(source, *last_zero(source)), "the last diagonal is 0"
    )
    table.add_made("special", 30, lambda source: dense_solve(source, source.mixed))
    table.add_order(
        lambda source: dense_solve(source, lambda count: source.reals(count, 4), 3),
        "solve-reciprocal",
        "solve-forward-descending",
        "solve-backward-descending",
        "solve-sum-first",
        "fma",
    )
    return table


def dense_solve(source, values, least=1):
    return square_factor(source, *solve_case(source, values, least))


def square_factor(source, n, factor, vector):
    return in_square(source, n, factor) + [vector]
