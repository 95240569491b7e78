# fits.py: tables of the fits and of the choice of one.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

import reference
from exactdouble import ONE, ZERO
from tables.points import (
    affine_points,
    collapsed_points,
    collinear_points,
    exact,
    projective_points,
    scaled_points,
    similar_points,
    small_points,
    special_points,
    square_onto,
    transposed,
    with_points,
)
from tables.table import BANDS, Table, number, numbers, power_of_two


def table_affine_fit():
    table = Table("CalcAffineCoefs", "n x y X Y | result a b c d e f", reference.calc_affine_coefs)
    for count in (0, 1, 2):
        table.add_made("friendly", 2, lambda source: with_points(small_points(source, count)), "too few points")
    triangle = [numbers(*values) for values in ([0, 1, 0], [0, 0, 1], [10, 12, 10], [20, 20, 23])]
    table.add("friendly", with_points(triangle))
    table.add_made("friendly", 20, lambda source: with_points(small_points(source, source.integer(3, 8))))
    table.add_made("friendly", 10, lambda source: with_points(identity_points(source)), "the target is the source")
    table.add_made("random", 45, lambda source: with_points(affine_points(source, source.integer(3, 12))))
    table.add_made("random", 10, lambda source: with_points(affine_points(source, 5, 1000000)), "large offset")
    table.add_made("random", 10, lambda source: with_points(affine_points(source, 5, 0, exact)), "exact image")
    table.add_made("near-singular", 20, lambda source: with_points(collinear_points(source, source.integer(3, 8))))
    table.add_made("near-singular", 10, lambda source: with_points(collapsed_points(source, source.integer(3, 8))))
    table.add_made("special", 30, lambda source: with_points(special_points(source, source.integer(3, 6))))
    for exponent in (-540, -530, 505, 512):
        table.add_made(
            "special", 3, lambda source: with_points(scaled_points(affine_points(source, 4), exponent)), "extreme units"
        )
    table.add_order(
        lambda source: with_points(affine_points(source, source.integer(4, 9), source.choice([0, 5000]))),
        "fit-points-reversed",
        "affine-fit-translation",
        "affine-fit-translation-mean-last",
        "affine-fit-no-deviation-sums",
        "mean-reversed",
        "mean-reciprocal",
        "gauss-division",
        "fma",
    )
    table.add_order(lambda source: with_points(tall_points(source)), "gauss-no-pivoting")
    return table


def identity_points(source):
    x, y = [[source.surveyed() for _ in range(5)] for _ in range(2)]
    return [x, y, x, y]


def tall_points(source):
    """Points spread more in y than in x and correlated, so that the first column's pivot is not its first element."""
    rows = []
    for _ in range(5):
        x = source.surveyed(10)
        y = x * number(50) + source.surveyed(10)
        rows.append((x, y, source.surveyed(10), source.surveyed(10)))
    return transposed(rows, 4)


def add_conformal_orders(table):
    def ordered(rigid, *names):
        table.add_order(
            lambda source: with_points(similar_points(source, source.integer(4, 9), source.choice([0, 5000])), rigid),
            *names,
        )

    ordered(
        0,
        "conformal-fit-division",
        "conformal-fit-separate-terms",
        "conformal-fit-swapped-terms",
        "conformal-fit-translation",
        "conformal-fit-translation-y",
        "conformal-fit-squared-scale",
        "conformal-fit-inverse-b-division",
        "conformal-fit-inverse-a-reciprocal",
        "hypot-naive",
        "hypot-reciprocal",
        "fit-points-reversed",
        "mean-reversed",
        "mean-reciprocal",
        "fma",
        "fma-first",
        "fma-second",
    )
    ordered(1, "conformal-fit-division", "conformal-fit-translation", "fma")


def table_conformal_fit():
    table = Table(
        "CalcConformalCoefs",
        "n rigid_inverse x y X Y | result dA dB dTx dTy dInvA dInvB",
        reference.calc_conformal_coefs,
    )

    def add(section, count, maker, text=""):
        for rigid in (0, 1):
            table.add_made(section, count, lambda source: with_points(maker(source), rigid), text)

    for count in (0, 1):
        add("friendly", 1, lambda source: small_points(source, count), "too few points")
    quarter = [numbers(*values) for values in ([0, 1], [0, 0], [1, 1], [1, 2])]
    add("friendly", 1, lambda source: quarter, "a quarter turn")
    add("friendly", 12, lambda source: small_points(source, source.integer(2, 8)))
    add("friendly", 4, identity_points, "the target is the source")
    add("friendly", 2, lambda source: [source.wholes(3)] * 2 + [[source.whole()] * 3] * 2, "one target point")
    add("random", 30, lambda source: similar_points(source, source.integer(2, 12)))
    add("random", 8, lambda source: affine_points(source, source.integer(2, 6), 1000), "not similar")
    add("near-singular", 4, lambda source: [[source.whole()] * 3] * 2 + small_points(source, 3)[2:], "one source point")
    for spread in BANDS[::2]:
        pair = [numbers(1, 0), [ZERO, ZERO], [ZERO, ONE], [ZERO, ONE]]
        pair[0] = [ZERO, reference.sqrt(spread + spread)]
        add("near-singular", 1, lambda source: pair, "the spread is close to the tolerance")
    add("special", 20, lambda source: special_points(source, source.integer(2, 6)))
    for exponent in (-540, 505, 512):
        add("special", 2, lambda source: scaled_points(similar_points(source, 4), exponent), "extreme units")
    add_conformal_orders(table)
    return table


def table_omographic_fit():
    table = Table(
        "CalcOmographicCoefs", "n x y X Y | result dA dB dC dD dE dF dG dH", reference.calc_omographic_coefs
    )
    table.add("friendly", [-1] + [[]] * 4, "too few points")
    for count in (0, 3):
        table.add_made("friendly", 2, lambda source: with_points(small_points(source, count)), "too few points")
    for target in (([0, 1, 1, 0], [0, 0, 1, 1]), ([0, 2, 3, 0], [0, 0, 2, 1]), ([5, 9, 8, 4], [1, 2, 7, 6])):
        table.add("friendly", with_points(square_onto(*target)), "the unit square onto a quadrilateral")
    table.add_made("friendly", 10, lambda source: with_points(square_onto(*small_integers(source))), "the unit square")
    table.add_made("friendly", 10, lambda source: with_points(small_points(source, source.integer(4, 7))))
    table.add_made("random", 26, lambda source: with_points(projective_points(source, source.integer(4, 12))))
    table.add_made("random", 8, lambda source: with_points(projective_points(source, 5, exact)), "exact image")
    table.add_made("random", 6, lambda source: with_points(affine_points(source, 6, 0, exact)), "affine image")
    table.add_made("near-singular", 8, lambda source: with_points(collinear_points(source, source.integer(4, 6))))
    table.add_made("near-singular", 6, lambda source: with_points(similar_points(source, 5, 100000)), "large offset")
    table.add_made("near-singular", 5, lambda source: with_points(repeated_points(source)), "a point twice")
    table.add("near-singular", with_points(infinite_origin()), "the origin goes to infinity")
    table.add_made("special", 16, lambda source: with_points(special_points(source, source.integer(4, 6))))
    table.add_order(
        lambda source: with_points(projective_points(source, source.integer(5, 8))),
        "omographic-squared-reciprocal",
        "omographic-product-regrouped",
        "omographic-residual-division",
        "omographic-row-division",
        "omographic-sum-regrouped",
        "omographic-rows-swapped",
        "fit-points-reversed",
        "cholesky-diagonal-ascending",
        "cholesky-column-division",
        "solve-backward-ascending",
        "solve-reciprocal",
        "fma",
        "fma-first",
        "fma-second",
    )
    table.add_order(
        lambda source: with_points(small_points(source, 6)), "omographic-third-iteration", "omographic-fifth-iteration"
    )
    return table


def small_integers(source):
    return [[source.integer(-9, 9) for _ in range(4)] for _ in range(2)]


def repeated_points(source):
    points = projective_points(source, 4)
    return [values + values[:1] for values in points]


def infinite_origin():
    """X = (x + 1)/x', Y = y/x' with x' = x + 4/2**k close to 0 at the first point."""
    x, y = numbers(0, 2, 2, 1), numbers(0, 0, 2, 2)
    divisors = [power_of_two(-40)] + x[1:]
    return [x, y, [(value + ONE) / w for value, w in zip(x, divisors)], [value / w for value, w in zip(y, divisors)]]


def add_selection_orders(table):
    def ordered(requested, maker, *names):
        table.add_order(lambda source: with_points(maker(source), source.integer(0, 1), requested), *names)

    ordered(
        reference.METHOD_CONFORMAL,
        lambda source: similar_points(source, source.integer(3, 6)),
        "conformal-fit-division",
        "conformal-fit-translation",
        "conformal-fit-translation-y",
    )
    ordered(reference.METHOD_CONFORMAL, reflected_points, "selection-mirrors-source")
    ordered(
        reference.METHOD_AFFINE,
        lambda source: affine_points(source, source.integer(3, 6), 100),
        "affine-fit-translation",
        "gauss-division",
    )
    ordered(reference.METHOD_AFFINE, determinant_decides, "fma-first", "fma-second")
    ordered(
        reference.METHOD_OMOGRAPHIC,
        lambda source: projective_points(source, source.integer(5, 6)),
        "omographic-squared-reciprocal",
        "omographic-rows-swapped",
        "solve-backward-ascending",
    )


def table_selection():
    table = Table(
        "CalcCoefs", "n same_orientation requested x y X Y | result used dA dB dC dD dE dF dG dH", reference.calc_coefs
    )

    def add(section, count, maker, text=""):
        for same in (1, 0):
            for requested in (0, 1, 2):
                table.add_made(section, count, lambda source: with_points(maker(source), same, requested), text)

    for same in (1, 0):
        table.add("friendly", [-1, same, 2] + [[]] * 4, "too few points")
        table.add_made("friendly", 3, lambda source: with_points(small_points(source, 5), same, 3), "unknown kind")
    for count in (0, 1):
        add("friendly", 1, lambda source: small_points(source, count), "too few points")
    for count in (2, 3, 4):
        add("friendly", 2, lambda source: small_points(source, count))
    add("random", 5, lambda source: similar_points(source, source.integer(2, 6)))
    add("random", 3, lambda source: projective_points(source, source.integer(3, 7)))
    add("near-singular", 2, lambda source: flat_points(source), "every target Y is 0")
    add("near-singular", 3, lambda source: collapsed_points(source, source.integer(3, 6)), "the target on a line")
    add("near-singular", 1, lambda source: collinear_points(source, source.integer(3, 6)), "the source on a line")
    add("near-singular", 1, lambda source: [[source.whole()] * 5] * 2 + small_points(source, 5)[2:], "one source point")
    add("near-singular", 1, lambda source: square_onto([3, 5, 5, 3], [0, 0, 0, 0]), "the unit square onto a line")
    add("special", 5, lambda source: special_points(source, source.integer(2, 6)))
    add_selection_orders(table)
    return table


def reflected_points(source):
    """The target is the source reflected: without rotation, which shows in the sign of zeros."""
    x, y = source.wholes(4), source.wholes(4)
    return [x, y, x, [-value for value in y]]


def flat_points(source):
    points = small_points(source, 5)
    return points[:3] + [[ZERO] * 5]


def determinant_decides(source):
    """The target on a line: whether the determinant of the affine fit is 0 depends on the contraction."""
    points = collapsed_points(source, source.integer(3, 6))
    return points[:3] + [[value * number(2) for value in points[2]]]
