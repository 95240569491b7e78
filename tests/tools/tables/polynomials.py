# polynomials.py: tables of the roots of polynomials.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

import reference
from exactdouble import INFINITY, LEAST, NAN, ONE, ZERO, ExactDouble
from tables.eigenvalues import paired_polynomial
from tables.table import Table, number, numbers

USUAL = ExactDouble.from_float(1e-6)


def table_polynomials():
    table = Table(
        "PolynomialRoots",
        "degree coefficients tolerance | result roots",
        lambda degree, coefficients, tolerance: reference.polynomial_roots(degree, coefficients, tolerance),
    )
    for case in (
        [[0], [5], [-0.0], [0, 0, 0], [0, -0.0, -3], [2, -4], [1, 0, 0], [0, 0, 1, -1], [1, 0, 1], [1, -2, 1]]
        + [[1, -6, 11, -6, 0], [1, 0, -2, 0, 1], [1, 0, -1], [1, 1e-8, 0], [1, -3, 3, -1], [-0.0, 3, 0, -12, -0.0]]
    ):
        table.add("friendly", polynomial(numbers(*case)))
    for degree in range(1, 25):
        table.add("friendly", polynomial(numbers(1, *[0] * (degree - 1), -1)), "x^n - 1")
        table.add("friendly", polynomial(numbers(1, *[0] * (degree - 1), 2)), "x^n + 2")
    for degree in range(2, 21):
        table.add("friendly", polynomial(from_roots(range(1, degree + 1))), "the roots are 1, 2, ... n")
    for degree in range(2, 13):
        table.add("friendly", polynomial(chebyshev(degree)), "a Chebyshev polynomial")
    for degree in range(2, 11):
        table.add("near-singular", polynomial(from_roots([1] * degree)), "one root n times")
    table.add_made("near-singular", 20, multiple_roots, "roots that coincide")
    for degree in range(1, 25):
        table.add("random", polynomial(table.source.reals(degree + 1, 4)))
    table.add_made("random", 25, lambda source: polynomial(source.reals(source.integer(3, 7), 4)))
    table.add_made("random", 20, lambda source: polynomial(source.wholes(source.integer(2, 8))))
    table.add_made("random", 20, zero_coefficients, "zeros in front, behind and between")
    table.add_made("random", 20, lambda source: polynomial(source.wides(source.integer(2, 9), -100, 100)))
    table.add_made(
        "random", 20, lambda source: polynomial(source.wides(source.integer(2, 9), -1070, 1020)), "any range"
    )
    table.add_made("near-singular", 20, binomial, "a binomial: exceptional shifts")
    table.add_made("near-singular", 12, lambda source: polynomial(paired_polynomial(source)), "the iteration gives up")
    table.add_made("near-singular", 25, other_tolerance, "other tolerances")
    table.add("special", polynomial(numbers(1e-12, 3, 1e300)), "the companion matrix overflows")
    table.add_made("special", 40, lambda source: polynomial(source.mixed(source.integer(1, 8))))
    table.add_order(
        lambda source: polynomial(source.reals(source.integer(4, 6), 4)),
        "polynomial-division",
        "polynomial-from-top",
        "sweep-norm-reversed",
        "sweep-factors-division",
        "start-reciprocal",
        "fma",
    )
    table.add_order(lambda source: polynomial(source.wides(5)), "polynomial-unbalanced", "balance-diagonal-included")
    table.add_order(zero_coefficients, "polynomial-zeros-last")
    table.add_order(other_tolerance, "polynomial-tolerance-inclusive")
    table.add_order(lambda source: polynomial(paired_polynomial(source)), "polynomial-unfound-are-zero")
    table.add_order(cyclic_polynomial, "exceptional-none", "exceptional-regrouped")
    return table


def polynomial(coefficients, tolerance=USUAL):
    return [len(coefficients) - 1, coefficients, tolerance]


def from_roots(roots):
    """The coefficients of the polynomial with these integer roots."""
    values = [1]
    for root in roots:
        values = [first - root * second for first, second in zip(values + [0], [0] + values)]
    return [ExactDouble.from_int(value) for value in values]


def chebyshev(degree):
    before, values = [1], [1, 0]
    for _ in range(degree - 1):
        before, values = values, [2 * first - second for first, second in zip(values + [0], [0, 0] + before)]
    return [ExactDouble.from_int(value) for value in values]


def multiple_roots(source):
    roots = [source.integer(-5, 5) for _ in range(source.integer(1, 3))]
    roots = [root for root in roots for _ in range(source.integer(1, 3))]
    tolerance = source.choice([USUAL, number(1e-3), number(1e-12)])
    return polynomial(from_roots(roots), tolerance)


def zero_coefficients(source):
    front, behind = [[source.choice([ZERO, -ZERO]) for _ in range(source.integer(0, 3))] for _ in range(2)]
    inner = [source.choice([ZERO, source.whole(), source.real(3)]) for _ in range(source.integer(1, 5))]
    return polynomial(front + inner + behind)


def binomial(source):
    degree = source.integer(3, 12)
    return polynomial([source.real(8)] + [ZERO] * (degree - 1) + [source.real(8)])


def cyclic_polynomial(source):
    """A binomial whose coefficients differ too little to be balanced: only exceptional shifts lead on."""
    degree = source.integer(3, 4)
    return polynomial([ONE] + [ZERO] * (degree - 1) + [ONE + source.real(-1)])


def other_tolerance(source):
    tolerance = source.choice([ZERO, -ZERO, -ONE, NAN, LEAST, ONE, number(1e6), INFINITY, -INFINITY])
    return polynomial(source.wholes(source.integer(2, 7)), tolerance)
