# records.py: tables of two equations and of the affine, conformal and omographic records.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

import reference
from exactdouble import LEAST, ONE, ZERO
from tables.table import BANDS, Table, numbers, power_of_two


# --- Two-unknown system, affine and conformal records -------------------------------------------------------------


def table_roots():
    table = Table("Roots", "a11 a12 a21 a22 b1 b2 | result x y", reference.roots)
    friendly = ([2, 0, 0, 4, 2, 8], [1, 1, 1, 1, 1, 0], [0, 0, 0, 0, 0, 5], [0, 0, 0, 0, 5, 0], [1, 2, 3, 4, 5, 6])
    for case in friendly:
        table.add("friendly", numbers(*case))
    table.add_made("friendly", 20, lambda source: source.wholes(6))
    for band in BANDS:
        table.add("near-singular", [band, ZERO, ZERO, ONE] + numbers(3, 5), "the determinant is at the tolerance")
        table.add("near-singular", numbers(1, 2, 2, 4) + [band, ZERO], "the numerator is at four times the tolerance")
        table.add("near-singular", numbers(0, 0, 0, 1) + [band, ONE], "the numerator of x is at the tolerance")
        table.add("near-singular", numbers(0, 1, 0, 0) + [ONE, band], "the numerator of x is at the tolerance")
    table.add_made("near-singular", 25, lambda source: nearly_parallel(source) + source.wholes(2))
    table.add_made("random", 50, lambda source: source.reals(6, 10))
    table.add_made("random", 25, lambda source: source.wides(6, -300, 300), "any range")
    table.add_made("special", 50, lambda source: source.mixed(6))
    table.add_order(
        lambda source: source.reals(6, 10), "linear-division", "linear-scaled-terms", "fma-first", "fma-second"
    )
    table.add_order(contraction_decides, "fma-first", "fma-second")
    return table


def nearly_parallel(source):
    """a11 a12 a21 a22, the second row close to a multiple of the first."""
    first = source.reals(2, 4)
    factor = source.real(2)
    difference = source.choice([ZERO, LEAST, source.real(-40), source.real(-45)])
    return first + [first[0] * factor, first[1] * factor + difference]


def contraction_decides(source):
    """Proportional rows of some hundreds: whether the determinant is 0 depends on the contraction."""
    a11, a12 = source.reals(2, 12)
    factor = source.whole(64)
    return [a11, a12, a11 * factor, a12 * factor] + source.reals(2, 10)


def table_affine_inverse():
    table = Table("AffineCoefsToInvCoefs", "a b c d e f | result a b c d e f", reference.affine_coefs_to_inv_coefs)
    for case in ([1, 0, 0, 0, 1, 0], [2, 0, 10, 0, 3, 20], [0, -1, 4, 1, 0, 7], [1, 2, 3, 4, 5, 6], [1, 2, 5, 2, 4, 6]):
        table.add("friendly", numbers(*case))
    table.add_made("friendly", 20, lambda source: source.wholes(6))
    for band in BANDS:
        table.add("near-singular", [band, ZERO, ONE, ZERO, ONE, ONE], "the determinant is at the tolerance")
        table.add("near-singular", [ZERO, band, ONE, -ONE, ZERO, ONE], "the determinant is at the tolerance")
    table.add_made("near-singular", 25, lambda source: affine_record(nearly_parallel(source), source.wholes(2)))
    table.add_made("random", 50, lambda source: source.reals(6, 10))
    table.add_made("random", 25, lambda source: source.wides(6, -300, 300), "any range")
    table.add_made("special", 50, lambda source: source.mixed(6))
    table.add_order(
        lambda source: source.reals(6, 10),
        "affine-inverse-division",
        "affine-inverse-translation",
        "fma-first",
        "fma-second",
    )
    return table


def affine_record(linear, translation):
    return linear[:2] + translation[:1] + linear[2:] + translation[1:]


def table_untransform():
    table = Table("AffineUntransform", "a b c d e f X Y | x y", reference.affine_untransform)
    for case in ([2, 0, 10, 0, 3, 20, 12, 26], [0] * 6 + [5, 7], [1, 1, 0, 1, 1, 0, 1, 1], [0, -1, 4, 1, 0, 7, 4, 7]):
        table.add("friendly", numbers(*case))
    table.add_made("friendly", 20, lambda source: source.wholes(8))
    for band in BANDS:
        table.add("near-singular", [band, ZERO, ONE, ZERO, ONE, ONE, ONE, ONE], "the determinant is at the tolerance")
    table.add_made(
        "near-singular", 25, lambda source: affine_record(nearly_parallel(source), source.wholes(2)) + source.wholes(2)
    )
    table.add_made("random", 50, lambda source: source.reals(8, 10))
    table.add_made("random", 25, lambda source: source.wides(8, -300, 300), "any range")
    table.add_made("special", 50, lambda source: source.mixed(8))
    table.add_order(
        lambda source: source.reals(8, 10),
        "linear-division",
        "linear-scaled-terms",
        "untransform-by-inverse",
        "fma-first",
        "fma-second",
    )
    return table


def table_conformal_inverse():
    table = Table(
        "ConformalCoefsToInvCoefs",
        "dA dB dTx dTy dInvA dInvB | dA dB dTx dTy dInvA dInvB",
        lambda *record: reference.conformal_coefs_to_inv_coefs(*record),
    )
    for case in ([1, 0, 0, 0, 1, 0], [2, 0, 3, 4, 0.5, 0], [0, -1, 1, 1, 0, 1], [3, 4, 10, 20, 0.12, -0.16]):
        table.add("friendly", numbers(*case))
    table.add_made("friendly", 15, lambda source: source.wholes(6))
    table.add_made("random", 40, lambda source: source.reals(6, 10))
    table.add_made("random", 20, lambda source: source.wides(6, -300, 300), "any range")
    table.add_made("near-singular", 20, lambda source: source.wholes(2) + cancelling(source), "the products cancel")
    table.add_made("special", 40, lambda source: source.mixed(6))
    table.add_order(lambda source: source.reals(6, 10), "conformal-inverse-recomputed", "fma-first", "fma-second")
    table.add_order(lambda source: source.wholes(2) + cancelling(source), "conformal-inverse-negated-sum")
    table.add_order(
        lambda source: source.wholes(2) + [source.choice([ZERO, -ZERO]) for _ in range(4)],
        "conformal-inverse-from-zero",
    )
    return table


def cancelling(source):
    """dTx dTy dInvA dInvB with dInvA*dTx + dInvB*dTy nearly or exactly 0."""
    first, second = source.reals(2, 5)
    if source.integer(0, 2):
        return [first, second, second, -first]
    return [first, second, second, -first * (ONE + power_of_two(-50))]


def table_conformal_affine():
    table = Table(
        "ConformalCoefsToAffineCoefs",
        "dA dB dTx dTy dInvA dInvB | a b c d e f",
        reference.conformal_coefs_to_affine_coefs,
    )
    table.add_made("friendly", 8, lambda source: source.wholes(6))
    table.add_made("random", 12, lambda source: source.wides(6, -1070, 1020))
    table.add_made("special", 20, lambda source: source.mixed(6))
    table.add_order(
        lambda source: [source.whole(), ZERO] + source.wholes(4), "conformal-affine-from-zero"
    )
    return table


def table_affine_omographic():
    table = Table(
        "AffineCoefsToOmographicCoefs",
        "a b c d e f | dA dB dC dD dE dF dG dH",
        reference.affine_coefs_to_omographic_coefs,
    )
    table.add_made("friendly", 8, lambda source: source.wholes(6))
    table.add_made("random", 12, lambda source: source.wides(6, -1070, 1020))
    table.add_made("special", 15, lambda source: source.mixed(6))
    return table
