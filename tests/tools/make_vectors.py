#!/usr/bin/env python3
# make_vectors.py: writes the tables of exact test vectors, one per routine, into tests/data.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT
"""Writes the tables of exact test vectors.

    python3 make_vectors.py            writes tests/data/*.txt
    python3 make_vectors.py --check    makes them anew and fails if a file differs from the one that is there

Format. A line that starts with # is a comment and says how the next case was made. Every other line is one case:

    input input ... | output output ...

The tokens stand between single blanks in the order of the routine's arguments (arrays element by element, their
length given by the counts before them); the result code, if there is one, is the first output. Whole numbers are
decimal, doubles hexadecimal (0x1.8p+1, inf, -inf, nan). An output '-' must be left untouched. Arrays that are changed
in place stand among the inputs with their contents before the call and among the outputs with those after it.

Sections. friendly: small numbers and text-book cases; random; near-singular: at the tolerances and close to
degeneracy; special: zeros, infinities, NaN, subnormal and greatest numbers; order: inputs on which a named wrong order
of operations (reference.DEVIATIONS) gives other bits than the right one, at least three for each routine and order.
"""

import argparse
import pathlib
import sys

import reference
from exactdouble import (
    GREATEST,
    INFINITY,
    LEAST,
    LEAST_NORMAL,
    NAN,
    ONE,
    ZERO,
    ExactDouble,
    Sequence,
    rounded,
)
from reference import packed

DATA = pathlib.Path(__file__).resolve().parent.parent / "data"
CASES_PER_DEVIATION = 4
TRIES_PER_DEVIATION = 3000

TWO_PI = ExactDouble.from_float(6.283185307179586)
TOLERANCE = reference.TOLERANCE
ABOVE = TOLERANCE.next_up()
BELOW = TOLERANCE.next_down()
BANDS = [sign for value in (BELOW, TOLERANCE, ABOVE) for sign in (value, -value)]
SPECIALS = [
    sign
    for value in (ZERO, ONE, LEAST, LEAST_NORMAL, LEAST_NORMAL.next_down(), GREATEST, INFINITY)
    for sign in (value, -value)
] + [NAN]


def number(value):
    return ExactDouble.from_int(value) if isinstance(value, int) else ExactDouble.from_float(value)


def numbers(*values):
    return [number(value) for value in values]


def power_of_two(exponent):
    return ExactDouble(0, 1, exponent)


class Source(Sequence):
    """Random numbers of the kinds that the cases are made of."""

    def real(self, exponent=0):
        """Of full length, within +-2**exponent."""
        word = self.word()
        return ExactDouble(word & 1, word >> 11, exponent - 53)

    def reals(self, count, exponent=0):
        return [self.real(exponent) for _ in range(count)]

    def wide(self, least=-40, greatest=40):
        """Of full length, of any magnitude between the two powers of 2."""
        word = self.word()
        return rounded(word & 1, (1 << 52) | word >> 12, self.integer(least, greatest) - 52)

    def wides(self, count, least=-40, greatest=40):
        return [self.wide(least, greatest) for _ in range(count)]

    def whole(self, greatest=9):
        return ExactDouble.from_int(self.integer(-greatest, greatest))

    def wholes(self, count, greatest=9):
        return [self.whole(greatest) for _ in range(count)]

    def surveyed(self, greatest=1000, offset=0):
        """A coordinate with three decimals."""
        return ExactDouble.from_int(self.integer(-greatest * 1000, greatest * 1000) + offset * 1000) / number(1000)

    def special(self):
        return self.choice(SPECIALS + BANDS)

    def mixed(self, count):
        """Ordinary numbers with a special one here and there."""
        return [self.special() if self.integer(0, 3) == 0 else self.whole() for _ in range(count)]


class Table:
    """The cases of one routine. `routine` takes the inputs as they are listed and gives the outputs."""

    def __init__(self, name, arguments, routine):
        self.name = name
        self.arguments = arguments
        self.routine = routine
        self.lines = []
        self.deviations = []
        self.source = Source(int.from_bytes(name.encode(), "big") & ((1 << 64) - 1))

    def outputs(self, inputs):
        return tokens(self.routine(*inputs))

    def add(self, section, inputs, text=""):
        outputs = self.outputs(inputs)
        if outputs is None:
            return False
        self.lines.append(f"# {section}{': ' if text else ''}{text}")
        self.lines.append(f"{' '.join(tokens(inputs))} | {' '.join(outputs)}")
        return True

    def add_made(self, section, count, maker, text=""):
        """`count` cases of what maker(source) gives; cases outside the routine's domain are passed over."""
        added = 0
        while added < count:
            added += self.add(section, maker(self.source), text)

    def add_order(self, maker, *names):
        """Cases on which each named deviation gives other bits."""
        for name in names:
            self.deviations.append(name)
            found = 0
            for _ in range(TRIES_PER_DEVIATION):
                inputs = maker(self.source)
                if found < CASES_PER_DEVIATION and self.differs(name, inputs):
                    found += self.add("order", inputs, f"{name} gives other bits")
                if found == CASES_PER_DEVIATION:
                    break
            assert found >= 3, f"{self.name}: {found} cases show {name}"

    def differs(self, name, inputs):
        right = self.outputs(inputs)
        with reference.deviation(name):
            wrong = self.outputs(inputs)
        return right is not None and right != wrong

    def text(self):
        head = [
            f"# {self.name}.txt: exact results of {self.name}. Made by tests/tools/make_vectors.py; do not edit.",
            "# SPDX-License-Identifier: MIT",
            "#",
            f"# {self.arguments}",
            "#",
        ]
        head += [f"# {name}: {reference.DEVIATIONS[name]}." for name in dict.fromkeys(self.deviations)]
        return "\n".join(head + self.lines) + "\n"


def tokens(values):
    """The tokens of nested lists of integers, doubles and None; None for None itself."""
    if values is None:
        return None
    flat = []
    for value in values:
        if isinstance(value, (list, tuple)):
            flat += tokens(value)
        elif value is None:
            flat.append("-")
        elif isinstance(value, int):
            flat.append(str(value))
        else:
            assert value.is_double()
            flat.append(value.hex())
    return flat


# --- Scalar helpers ----------------------------------------------------------------------------------------------


def counted(values):
    return [len(values), values]


def table_mean():
    table = Table("CalcMean", "count values | mean", lambda count, values: [reference.calc_mean(values)])
    for values in ([], [7], [1, 2], [1, 2, 4], [0.1, 0.2, 0.3], [-3, 3], [1e16, 1, -1e16], [0.5] * 10):
        table.add("friendly", counted(numbers(*values)))
    for count in range(1, 9):
        table.add("special", counted([-ZERO] * count), f"{count} times -0.0")
    table.add_made("random", 50, lambda source: counted(source.wides(source.integer(1, 20))))
    table.add_made("random", 25, lambda source: counted([source.surveyed() for _ in range(source.integer(2, 40))]))
    table.add_made("random", 15, lambda source: counted(source.wides(source.integer(2, 9), -1070, 1020)), "any range")
    table.add_made("special", 30, lambda source: counted(source.mixed(source.integer(1, 7))))
    table.add_order(lambda source: counted([-ZERO] * source.choice([1, 3, 5, 7])), "mean-starts-at-zero")
    table.add_order(lambda source: counted([-ZERO] * source.choice([2, 4, 6, 8])), "mean-starts-at-first")
    for parity in (0, 1):
        table.add_order(
            lambda source: counted(source.reals(2 * source.integer(2, 8) + parity, 10)),
            "mean-reversed",
            "mean-two-sums",
            "mean-reciprocal",
        )
    return table


def table_hypot():
    table = Table("CalcHypot", "a b | norm", lambda a, b: [reference.calc_hypot(a, b)])
    for pair in ([3, -4], [-4, 3], [5, 12], [1, 1], [0, 2], [-2, 0], [1e200, 1e200], [1e-200, 1e-200], [1e300, 1e-300]):
        table.add("friendly", numbers(*pair))
    for first in SPECIALS:
        for second in (ZERO, -ZERO, -ONE, LEAST, GREATEST, INFINITY, NAN):
            table.add("special", [first, second])
    table.add_made("random", 60, lambda source: source.reals(2, 10))
    table.add_made("random", 40, lambda source: source.wides(2, -1070, 1020), "any range")
    table.add_order(
        lambda source: source.reals(2, 10),
        "hypot-naive",
        "hypot-rounded-once",
        "hypot-reciprocal",
        "hypot-first-divides",
        "fma",
    )
    return table


def multiple(source, period):
    return -(ExactDouble.from_int(source.integer(1, 8)) * period)


def table_period():
    table = Table("ReduceToPeriod", "x period | x in one period", lambda x, y: [reference.reduce_to_period(x, y)])
    for pair in ([7, 3], [-7, 3], [6, 3], [-6, 3], [0, 3], [-0.0, 3], [0.5, 0.75], [-1e-20, 3], [1e300, 7]):
        table.add("friendly", numbers(*pair))
    for factor in range(-4, 5):
        table.add("friendly", [number(factor) * TWO_PI, TWO_PI], f"{factor} times the period")
    for value in SPECIALS + BANDS:
        for period in (TWO_PI, LEAST, GREATEST, INFINITY):
            table.add("special", [value, period])
    for value in (TWO_PI.next_down(), TWO_PI.next_up()):
        table.add("near-singular", [value, TWO_PI])
        table.add("near-singular", [-value, TWO_PI])
    table.add_made("random", 70, lambda source: [source.wide(-30, 50), TWO_PI])
    table.add_made("random", 50, lambda source: [source.wide(-1060, 1020), abs(source.wide(-1060, 1020))], "any range")
    table.add_order(lambda source: [source.wide(0, 40), TWO_PI], "period-division")
    table.add_order(lambda source: [multiple(source, TWO_PI), TWO_PI], "period-half-open")
    return table


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


# --- Control points ----------------------------------------------------------------------------------------------


def transposed(rows, width):
    return [list(column) for column in zip(*rows)] if rows else [[] for _ in range(width)]


def affine_image(coefs, x, y):
    a, b, c, d, e, f = coefs
    return a * x + b * y + c, d * x + e * y + f


def projective_image(coefs, x, y):
    a, b, c, d, e, f, g, h = coefs
    w = g * x + h * y + ONE
    return (a * x + b * y + c) / w, (d * x + e * y + f) / w


def mapped(sources, image, coefs, noise):
    """x y X Y of the source points and their images, with noise() added."""
    rows = []
    for x, y in sources:
        image_x, image_y = image(coefs, x, y)
        rows.append((x, y, image_x + noise(), image_y + noise()))
    return transposed(rows, 4)


def exact(source):
    return lambda: ZERO


def noisy(source):
    return lambda: source.real(-6)


def affine_points(source, count, offset=0, noise=noisy):
    sources = [(source.surveyed(1000, offset), source.surveyed(1000, offset)) for _ in range(count)]
    return mapped(sources, affine_image, source.reals(6, 2), noise(source))


def similar_points(source, count, offset=0, noise=noisy):
    a, b, tx, ty = source.reals(4, 2)
    sources = [(source.surveyed(1000, offset), source.surveyed(1000, offset)) for _ in range(count)]
    return mapped(sources, affine_image, [a, b, tx, -b, a, ty], noise(source))


def projective_points(source, count, noise=noisy):
    sources = [(source.surveyed(10), source.surveyed(10)) for _ in range(count)]
    coefs = source.reals(6, 2) + source.reals(2, -6)
    return mapped(sources, projective_image, coefs, noise(source))


def small_points(source, count):
    """Small whole coordinates, some of them equal."""
    return [source.wholes(count, 4) for _ in range(4)]


def collinear_points(source, count):
    """All source points on one line."""
    dx, dy = source.wholes(2)
    sources = [(dx * step, dy * step + ONE) for step in source.wholes(count)]
    return mapped(sources, affine_image, source.wholes(6), noisy(source))


def special_points(source, count):
    """Small whole coordinates, one or two of them special."""
    points = small_points(source, count)
    for _ in range(source.integer(1, 2)):
        points[source.integer(0, 3)][source.integer(0, count - 1)] = source.special()
    return points


def collapsed_points(source, count):
    """The target on a line, with coefficients of some thousands: the determinant is 0 but for its rounding."""
    sources = [(source.surveyed(10), source.surveyed(10)) for _ in range(count)]
    a, b = source.reals(2, source.integer(3, 7))
    factor = source.choice([source.real(2), source.whole()])
    rows = [(x, y, a * x + b * y, (a * x + b * y) * factor) for x, y in sources]
    return transposed(rows, 4)


def scaled_points(points, exponent):
    return [[value * power_of_two(exponent) for value in values] for values in points]


def with_points(points, *before):
    """The inputs of a fit: the count, other arguments, x, y, X, Y."""
    return [len(points[0])] + list(before) + points


UNIT_SQUARE = ([0, 1, 1, 0], [0, 0, 1, 1])


def square_onto(*target):
    return [numbers(*values) for values in UNIT_SQUARE + target]


# --- Fits --------------------------------------------------------------------------------------------------------


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


# --- Gaussian elimination ----------------------------------------------------------------------------------------


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
    table.add_order(
        lambda source: gram_case(source, lambda count: source.reals(count, 4), 0, 4),
        "cholesky-diagonal-ascending",
        "cholesky-diagonal-sum",
        "cholesky-column-division",
        "cholesky-column-descending",
        "fma",
    )
    table.add_order(
        lambda source: gram_case(source, lambda count: source.reals(count, 4), -1, 4),
        "cholesky-diagonal-ascending",
        "cholesky-column-division",
    )
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
    table.add_order(
        lambda source: dense_gram(source, lambda count: source.reals(count, 4), 0, 4),
        "cholesky-diagonal-ascending",
        "cholesky-diagonal-sum",
        "cholesky-column-division",
        "cholesky-column-descending",
        "fma",
    )
    table.add_order(
        lambda source: dense_gram(source, lambda count: source.reals(count, 4), -1, 4),
        "cholesky-diagonal-ascending",
        "cholesky-column-division",
    )
    return table


def dense_gram(source, values, surplus=1, least=1):
    return in_square(source, *gram_case(source, values, surplus, least))


def in_square(source, n, triangle):
    """The square matrix of a packed triangle. Above the diagonal stands what must neither be read nor changed."""
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


# --- Eigenvalues -------------------------------------------------------------------------------------------------


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
    """A Hessenberg matrix; what stands below its subdiagonal does not count."""
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
    product = [abs(value) for value in source.reals(2, 3)]
    return [2, 2, [-ZERO, product[0], product[1], ZERO]]


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


# --- Polynomials -------------------------------------------------------------------------------------------------

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
        table.add("friendly", polynomial(product(range(1, degree + 1))), "the roots are 1, 2, ... n")
    for degree in range(2, 13):
        table.add("friendly", polynomial(chebyshev(degree)), "a Chebyshev polynomial")
    for degree in range(2, 11):
        table.add("near-singular", polynomial(product([1] * degree)), "one root n times")
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


def product(roots):
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
    return polynomial(product(roots), tolerance)


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


# --- Files -------------------------------------------------------------------------------------------------------

TABLES = [
    table_mean,
    table_hypot,
    table_period,
    table_roots,
    table_affine_inverse,
    table_untransform,
    table_conformal_inverse,
    table_conformal_affine,
    table_affine_omographic,
    table_max_abs,
    table_upper,
    table_gauss,
    table_affine_fit,
    table_conformal_fit,
    table_update_dense,
    table_update_sparse,
    table_cholesky,
    table_solve,
    table_dense_cholesky,
    table_dense_solve,
    table_balance,
    table_reduce,
    table_eigenvalues,
    table_polynomials,
    table_omographic_fit,
    table_selection,
]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true", help="compare with the files instead of writing them")
    check = parser.parse_args().check
    different = []
    DATA.mkdir(exist_ok=True)
    for make in TABLES:
        table = make()
        path = DATA / f"{table.name}.txt"
        text = table.text()
        if not check:
            path.write_text(text, encoding="ascii", newline="\n")
        elif not path.exists() or path.read_bytes() != text.encode("ascii"):
            different.append(path.name)
        print(f"{table.name}: {len(table.lines) // 2} cases, {len(set(table.deviations))} wrong orders told apart")
    if different:
        sys.exit("make_vectors: not as generated: " + ", ".join(different))


if __name__ == "__main__":
    main()
