#!/usr/bin/env python3
# make_ulp_vectors.py: writes the tables of the routines that go through the platform's sin, cos, tan, asin, acos,
# atan, atan2 and log.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT
"""Writes the tables of results that are right to some units in the last place.

    python3 make_ulp_vectors.py            writes tests/data/*.txt
    python3 make_ulp_vectors.py --check    makes them anew and fails if a file differs from the one that is there

The format is that of make_vectors.py. Operations with + - * / sqrt fmod are rounded one by one as there, and so are
all decisions. From the first elementary function on, 50 digits are carried. The table gives such an output as

    value,rest,unit

`value` is the nearest double, and the exact output is greater by `rest` units. Errors count in `unit`, a power of two:
the last place of the value, or of its greatest term if the value is a sum that cancels, because a term that is wrong in
its last place leaves no better sum. Below the least normal number the unit is that of the least normal number, also for
products with such a number. A sine, cosine or tangent has an absolute error of at least 2**-67 of its angle, because
some platforms reduce angles with a pi of 66 bits; it matters only close to a zero or a pole.
"""

from exactdouble import INFINITY, LEAST, LEAST_NORMAL, NAN, ONE, ZERO, ExactDouble
from reference_digits import (
    HALF_PI,
    PI,
    THREE_HALF_PI,
    TWO,
    affine_coefs_to_param,
    affine_params_to_coefs,
    conformal_coefs_to_param,
    conformal_params_to_coefs,
    randn,
    randn_with_mean,
    solve_lin_trig,
    solve_quad_trig,
)
from tables.files import write_or_check
from tables.table import ABOVE, BELOW, SPECIALS, TOLERANCE, TWO_PI, Table, number, numbers, power_of_two


class UlpTable(Table):
    def text(self):
        head = [
            f"# {self.name}.txt: results to 50 digits. Made by tests/tools/make_ulp_vectors.py; do not edit.",
            "# SPDX-License-Identifier: MIT",
            "#",
            f"# {self.arguments}",
            "#",
        ]
        return "\n".join(head + self.lines) + "\n"


def eighths(count=17, first=-8):
    """Multiples of pi/8, as doubles."""
    return [number(k) * PI / number(8) for k in range(first, first + count)]


def neighbours(value):
    return [value.next_down(), value, value.next_up()]


# Angles at which a sine, a cosine or a tangent is close to 0 or to a pole.
CLOSE = [sign for value in (HALF_PI, PI, THREE_HALF_PI, TWO_PI) for x in neighbours(value) for sign in (x, -x)]
FINITE = [value for value in SPECIALS if value.is_finite()]
SMALL = [value for value in FINITE if abs(value) <= ONE]


def angle(source):
    """Within a turn and a half."""
    return source.real(3) * number(1.1)


def skew(source):
    return source.real(0) * number(1.5)


def shifts(source):
    return [source.surveyed(), source.surveyed()]


def table_affine_params():
    table = UlpTable("AffineParamsToCoefs", "sx sy phi theta tx ty | a b c d e f", affine_params_to_coefs)
    table.add("friendly", numbers(2, 3, 0, 0, 10, 20))
    table.add("friendly", numbers(1, 1, 0, 0, 0, 0))
    for theta in eighths():
        table.add("friendly", numbers(2, 3) + [number(0.1), theta] + numbers(10, 20))
        table.add("friendly", numbers(1, -1) + [theta / TWO, number(0.5)] + numbers(-1, -2))
    table.add_made("random", 100, lambda source: source.reals(2, 4) + [skew(source), angle(source)] + shifts(source))
    table.add_made("random", 40, lambda source: source.wides(2, -40, 40) + [source.wide(-20, 0), source.wide(-20, 2)]
                   + source.wides(2))
    table.add_made("random", 20, lambda source: source.wides(2, -1070, 1000) + [skew(source), angle(source)]
                   + shifts(source), "any range")
    for value in CLOSE:
        table.add("near-singular", numbers(2, 3) + [number(0.25), value] + numbers(0, 0))
        table.add("near-singular", numbers(2, 3) + [value, number(0.25)] + numbers(0, 0))
    table.add_made("near-singular", 20, cancelling_params, "the skew undoes the rotation: b cancels")
    for position in range(6):
        for value in SPECIALS:
            inputs = numbers(2, 3, 0.25, 0.75, 10, 20)
            if position in (2, 3) and not (abs(value) <= ONE):
                value = value if not value.is_finite() else number(100)
            inputs[position] = value
            table.add("special", inputs)
    return table


def cancelling_params(source):
    theta = skew(source)
    return source.reals(2, 4) + [theta, source.choice(neighbours(theta))] + shifts(source)


def table_affine_coefs():
    table = UlpTable("AffineCoefsToParam", "a b c d e f | result sx sy phi theta tx ty", affine_coefs_to_param)
    for record in ([2, 0, 10, 0, 3, 20], [0, 1, 0, -1, 0, 0], [0, 0, 5, 0, 1, 6], [1, 2, 0, 2, 4, 0],
                   [-1, 0, 0, 0, 1, 0], [1, 0, 0, 0, -1, 0], [-3, 1, 0, -0.0, 2, 0], [3, 1, 0, -0.0, 2, 0]):
        table.add("friendly", numbers(*record))
    table.add_made("friendly", 60, lambda source: source.wholes(6))
    table.add_made("random", 100, lambda source: source.reals(6, 4))
    table.add_made("random", 40, lambda source: source.wides(6))
    table.add_made("random", 20, lambda source: source.wides(6, -300, 300), "any range")
    for size in (BELOW, TOLERANCE, ABOVE):
        for turned in (size, -size):
            table.add("near-singular", [turned, ONE, ZERO, ZERO, ONE, ZERO], "the scale along x at the tolerance")
            table.add("near-singular", [ZERO, ONE, ZERO, turned, ONE, ZERO], "the scale along x at the tolerance")
            table.add("near-singular", [ONE, ONE, ZERO, ZERO, turned, ZERO], "the scale along y at the tolerance")
    table.add_made("near-singular", 40, nearly_flat, "the scale along y is small")
    table.add_made("near-singular", 30, hardly_turned, "a very small angle, mostly below 0: 2 pi")
    for position in range(6):
        for value in SPECIALS:
            inputs = numbers(2, 3, 10, -4, 5, 20)
            inputs[position] = value
            table.add("special", inputs)
    table.add_made("special", 60, lambda source: source.mixed(6))
    return table


def nearly_flat(source):
    a, d, factor = source.reals(3, 3)
    return [a, a * factor, source.surveyed(), d, d * factor + source.wide(-40, -10), source.surveyed()]


def hardly_turned(source):
    a, b, e = source.reals(3, 3)
    return [abs(a), b, ZERO, -abs(source.wide(-80, -30)) if source.integer(0, 3) else source.wide(-80, -30), e, ZERO]


def table_conformal_params():
    table = UlpTable("ConformalParamsToCoefs", "scale angle tx ty | a b tx ty inverse-a inverse-b",
                     conformal_params_to_coefs)
    table.add("friendly", numbers(1, 0, 0, 0))
    for theta in eighths(33, -16):
        table.add("friendly", [TWO, theta] + numbers(10, 20))
    table.add_made("random", 120, lambda source: [source.real(4), angle(source)] + shifts(source))
    table.add_made("random", 60, lambda source: [source.wide(), source.wide(-20, 2)] + source.wides(2))
    table.add_made("random", 20, lambda source: [source.wide(-1020, 1000), angle(source)] + shifts(source), "any range")
    for value in CLOSE:
        table.add("near-singular", numbers(3) + [value] + numbers(0, 0))
    for scale in (BELOW, TOLERANCE, LEAST_NORMAL, LEAST):
        table.add("near-singular", [scale] + numbers(0.7, 1, 2))
    for position in range(4):
        for value in SPECIALS:
            inputs = numbers(2, 0.5, 10, 20)
            if position == 1 and value.is_finite() and abs(value) > ONE:
                value = number(100)
            inputs[position] = value
            table.add("special", inputs)
    for value in SPECIALS:
        table.add("special", [value] + numbers(0, 1, 2), "the sine is 0")
    return table


def table_conformal_coefs():
    table = UlpTable("ConformalCoefsToParam", "a b tx ty inverse-a inverse-b | result scale angle tx ty",
                     conformal_coefs_to_param)
    for a, b in ((1, 0), (1, -0.0), (-1, 0), (-1, -0.0), (0, 1), (0, -1), (0, 0), (3, -4), (-3, 4), (1, 1), (-5, -12)):
        table.add("friendly", numbers(a, b, 10, 20, 1, 0))
    table.add_made("friendly", 60, lambda source: source.wholes(6))
    table.add_made("random", 120, lambda source: source.reals(6, 4))
    table.add_made("random", 40, lambda source: source.wides(6))
    table.add_made("random", 20, lambda source: source.wides(6, -1000, 1000), "any range")
    for size in (BELOW, TOLERANCE, ABOVE):
        for turned in (size, -size):
            table.add("near-singular", [turned, ZERO] + numbers(1, 2, 3, 4), "the scale at the tolerance")
            table.add("near-singular", [ZERO, turned] + numbers(1, 2, 3, 4), "the scale at the tolerance")
    table.add_made("near-singular", 40, hardly_turned_similarity, "a very small angle, or nearly a turn")
    for position in range(4):
        for value in SPECIALS:
            inputs = numbers(2, -3, 10, 20, 1, 1)
            inputs[position] = value
            table.add("special", inputs)
    table.add_made("special", 40, lambda source: source.mixed(6))
    return table


def hardly_turned_similarity(source):
    return [abs(source.real(3)), source.wide(-80, -30)] + source.reals(4, 4)


def table_lin_trig():
    table = UlpTable("SolveLinTrig", "a b c | result angle angle", solve_lin_trig)
    for case in ([0, 0, 0], [0, 0, 1], [0, 1, -1], [0, 1, 1], [0, 1, 2], [1, 0, -1], [1, 0, 1], [1, 0, 2], [0, 1, 0],
                 [1, 0, 0], [1, 1, 0], [-1, 1, 0], [1, -1, 0], [-1, -1, 0], [1, 1, 1], [1, 1, 5], [1, 1, -1], [2, 1, 2],
                 [2, -1, 2], [0, 2, -1], [2, 0, -1], [0, -2, 1], [3, 4, 5], [3, 4, -5], [5, 12, 13], [-3, 4, 5]):
        table.add("friendly", numbers(*case))
    table.add_made("friendly", 80, lambda source: source.wholes(3))
    table.add_made("random", 80, lambda source: source.reals(2, 3) + [source.real(2)])
    table.add_made("random", 30, lambda source: [ZERO, source.real(3), source.real(2)], "a sine alone")
    table.add_made("random", 30, lambda source: [source.real(3), ZERO, source.real(2)], "a cosine alone")
    table.add_made("random", 30, lambda source: source.reals(2, 3) + [ZERO], "no constant")
    table.add_made("random", 30, lambda source: source.wides(3), "any range")
    for value in (ONE.next_down(), ONE, ONE.next_up(), number(0.9999), LEAST, LEAST_NORMAL):
        for sign in (value, -value):
            table.add("near-singular", [ZERO, ONE, sign], "close to the greatest sine, or to none")
            table.add("near-singular", [ONE, ZERO, sign], "close to the greatest cosine, or to none")
    table.add_made("near-singular", 40, nearly_tangent, "two angles that nearly are one")
    table.add_made("near-singular", 30, hardly_tilted, "no constant, and an angle close to 0 or pi")
    for first in SPECIALS:
        for position in range(3):
            inputs = numbers(3, 4, 2)
            inputs[position] = first
            table.add("special", inputs)
    table.add_made("special", 80, lambda source: source.mixed(3))
    return table


def nearly_tangent(source):
    triples = ((3, 4, 5), (5, 12, 13), (8, 15, 17), (7, 24, 25), (20, 21, 29))
    a, b, c = (number(side) * source.choice([ONE, -ONE]) for side in source.choice(triples))
    return [a, b, source.choice([c, c.next_down(), c.next_up(), c - c * power_of_two(-source.integer(10, 50))])]


def hardly_tilted(source):
    return [source.wide(-70, -20), source.real(3), ZERO]


def table_quad_trig():
    table = UlpTable("SolveQuadTrig", "a b c d e f | result angle angle angle angle", solve_quad_trig)
    for case in ([1, -1, 0, 0, 0, 0], [1, 0, 0, 1, 0, 0], [0, 0, 0, 1, 0, -0.5], [0, 1, 0, 0, 0, 0], [0] * 6,
                 [1, 1, 0, 0, 0, -1], [1, 1, 0, 0, 0, 0], [1, 0, 0, 0, 0, 0], [0, 0, 1, 0, 0, 0], [1, 2, 1, 0, 0, -1],
                 [2, 1, 1, 0, 0, -1], [1, 2, 3, 0, 0, -3], [0, 0, 0, 0, 1, 1], [3, 0, 0, -2, 0, -1], [0, 0, 2, 1, 1, 0],
                 [1, 1, 0, 1, 1, -1], [0, 0, 0, 0, 0, 1]):
        table.add("friendly", numbers(*case))
    table.add_made("friendly", 80, lambda source: source.wholes(6, 4))
    table.add_made("friendly", 40, lambda source: source.wholes(3) + [ZERO, ZERO] + source.wholes(1), "no linear terms")
    table.add_made("random", 80, lambda source: source.reals(5, 3) + [source.real(1)])
    table.add_made("random", 30, lambda source: source.reals(3, 3) + [ZERO, ZERO, source.real(1)], "no linear terms")
    table.add_made("random", 30, one_quadratic_term, "the quadratic terms are a constant")
    table.add_made("random", 20, lambda source: source.wides(6, -10, 10), "any range")
    table.add_made("near-singular", 30, lost_term, "an angle of pi")
    table.add_made("near-singular", 30, vanishing_factor, "a product of two linear equations")
    table.add_made("near-singular", 30, close_angles, "two angles that nearly are one")
    for size in (1e-14, 1e-12, 1.75e-12, 2.25e-12, 4e-12, 1e-10):
        for sign in (size, -size):
            table.add("near-singular", numbers(-1, 1, sign, 0, 0, 1), "a tiny angle is 0, or another, by its size")
            table.add("near-singular", numbers(1, -1, sign, 0, 0, 1), "close to pi/2, or just that")
    table.add_made("near-singular", 40, complex_pair, "roots of the quartic that are nearly real")
    for value in FINITE + [INFINITY, -INFINITY, NAN]:
        for position in range(6):
            inputs = numbers(1, 2, 3, 1, 2, -1)
            inputs[position] = value
            if abs(value) <= ONE or not value.is_finite():
                table.add("special", inputs)
    table.add_made("special", 40, lambda source: [source.choice(SMALL) if source.integer(0, 2) == 0 else source.whole(3)
                                                  for _ in range(6)])
    return table


def one_quadratic_term(source):
    a = source.real(2)
    return [a, a, ZERO] + source.reals(2, 3) + [source.real(1)]


def lost_term(source):
    a, b, c, e, f = source.wholes(5, 5)
    return [a, b, c, a + f, e, f]


def vanishing_factor(source):
    a, b, c = source.reals(3, 3)
    return source.choice([[a, b, c, ZERO, ZERO, -a], [a, b, c, ZERO, ZERO, -b]])


def close_angles(source):
    """(cos t - k)(cos t - m) with k close to m: the quartic has roots close to one another."""
    k = number(source.integer(-7, 7)) / number(8)
    m = k + power_of_two(-source.integer(3, 20))
    return [ONE, ZERO, ZERO, -(k + m), ZERO, k * m]


def complex_pair(source):
    """(3 cos t + 4 sin t - k)**2 + m**2: the imaginary parts lie about the tolerance of the roots."""
    k = number(source.integer(-9, 9)) / TWO
    m = abs(source.real(-16))
    return numbers(9, 16, 24) + [k * number(-6), k * number(-8), k * k + m * m]


SEEDS = (-1, 0, 1, 5, 77, 12345, 54773, 54774, 100000, 123456, 2**31 - 1, -(2**31))


def table_randn():
    table = UlpTable("Randn", "seed count | numbers", randn)
    for seed in SEEDS:
        table.add("random", [seed, 30])
    table.add("random", [20261121, 400])
    return table


def table_randn_with_mean():
    table = UlpTable("RandnWithMean", "seed count mean sigma | numbers", randn_with_mean)
    for seed, (mean, sigma) in enumerate(((0, 1), (100, 0.02), (-3.5, 7), (1e10, 1e-3), (2, -1), (-0.5, 0.5), (1, 1),
                                          (0, 1e300), (0, 1e-300), (5, 0), (-0.0, 0), (3, LEAST), (INFINITY, 1),
                                          (1, INFINITY), (INFINITY, INFINITY), (NAN, 1), (1, NAN))):
        parameters = [value if isinstance(value, ExactDouble) else number(value) for value in (mean, sigma)]
        table.add("random" if parameters[0].is_finite() else "special", [seed, 20] + parameters)
    return table


TABLES = [
    table_affine_params,
    table_affine_coefs,
    table_conformal_params,
    table_conformal_coefs,
    table_lin_trig,
    table_quad_trig,
    table_randn,
    table_randn_with_mean,
]


def files():
    for make in TABLES:
        table = make()
        yield f"{table.name}.txt", table.text(), f"{len(table.lines) // 2} cases"


if __name__ == "__main__":
    write_or_check(__doc__.splitlines()[0], files())
