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

import re

import mpmath
import reference
from exactdouble import INFINITY, LEAST, LEAST_NORMAL, NAN, ONE, ZERO, ExactDouble, rounded, sqrt
from make_random_sequences import Generator, value_of
from tables.files import write_or_check
from tables.table import ABOVE, BELOW, SPECIALS, TOLERANCE, TWO_PI, Table, number, numbers, power_of_two

mpmath.mp.dps = 50

PI = number(3.141592653589793)
HALF_PI = number(1.5707963267948966)
THREE_HALF_PI = number(4.71238898038469)
TWO = number(2)
FOUR = number(4)
QUARTIC_TOLERANCE = number(1e-6)
DUPLICATE = number(1e-12)


class Near:
    """A number of 50 digits and the greatest magnitude among the terms that it was made of."""

    def __init__(self, digits, greatest=0):
        self.digits = digits
        self.greatest = max(abs(digits), greatest, to_digits(LEAST_NORMAL))

    def nearest(self):
        sign, mantissa, exponent, _ = self.digits._mpf_
        return rounded(sign, int(mantissa), exponent) if mantissa else ZERO

    def is_nan(self):
        return False

    def is_double(self):
        return True

    def unit(self):
        return mpmath.ldexp(1, mpmath.frexp(self.greatest)[1] - 53)

    def hex(self):
        value = self.nearest()
        rest = (self.digits - to_digits(value)) / self.unit()
        parts = number(int(mpmath.nint(rest * 4096)) / 4096), power_of_two(mpmath.frexp(self.unit())[1] - 1)
        return ",".join([value.hex()] + [re.sub(r"\.?0*p", "p", part.hex()) for part in parts])

    def __neg__(self):
        return Near(-self.digits, self.greatest)

    def __add__(self, other):
        if is_special(other):
            return self.nearest() + other
        return near(self.digits + to_digits(other), max(self.greatest, greatest_of(other)))

    __radd__ = __add__

    def __sub__(self, other):
        return self + -other

    def __rsub__(self, other):
        return -self + other

    def __mul__(self, other):
        if is_special(other) or is_zero(other):
            return self.nearest() * other
        greatest = max(self.greatest * abs(to_digits(other)), greatest_of(other) * abs(self.digits))
        return near(self.digits * to_digits(other), greatest)

    __rmul__ = __mul__

    def __truediv__(self, other):
        return near(self.digits / to_digits(other), self.greatest / abs(to_digits(other)))

    def __abs__(self):
        return Near(abs(self.digits), self.greatest)

    def _difference(self, other):
        """Like ExactDouble's comparison: None if one of the two is a NaN."""
        if is_special(other):
            return ZERO._compared(other)
        return self.digits - to_digits(other)

    def __lt__(self, other):
        return self._difference(other) is not None and self._difference(other) < 0

    def __gt__(self, other):
        return self._difference(other) is not None and self._difference(other) > 0

    def __ge__(self, other):
        return self._difference(other) is not None and self._difference(other) >= 0


def is_special(value):
    return isinstance(value, ExactDouble) and not value.is_finite()


def is_zero(value):
    return isinstance(value, ExactDouble) and value == ZERO


def to_digits(value):
    if isinstance(value, Near):
        return value.digits
    return mpmath.ldexp(mpmath.mpf(value.mantissa * (1 - 2 * value.sign)), value.exponent)


def greatest_of(value):
    return value.greatest if isinstance(value, Near) else abs(to_digits(value))


def near(digits, greatest=0):
    """A value beyond the range becomes infinite, without error. A sum that vanishes keeps the last place of its terms."""
    result = Near(digits, greatest)
    limit = mpmath.ldexp(1, 1024)
    assert abs(abs(digits) / limit - 1) > 1e-10, "at the edge of the range"
    return result if abs(digits) < limit else result.nearest()


# --- Elementary functions ------------------------------------------------------------------------------------------


def odd(function):
    """An odd function that returns a zero or NaN unchanged."""

    def value(x):
        return x if x.is_nan() or x == ZERO else Near(function(to_digits(x)))

    return value


asin = odd(mpmath.asin)
finite_atan = odd(mpmath.atan)


def atan(x):
    if x.is_nan() or x.is_finite():
        return finite_atan(x)
    return Near(-mpmath.pi / 2 if x.sign else mpmath.pi / 2)


def sin(x):
    if x == ZERO or not x.is_finite():
        return x if x == ZERO else NAN
    return Near(mpmath.sin(to_digits(x)), reduction_floor(x))


def cos(x):
    if x == ZERO or not x.is_finite():
        return ONE if x == ZERO else NAN
    return Near(mpmath.cos(to_digits(x)), reduction_floor(x))


def tan(x):
    """The slope of the tangent tells how much an error of the argument changes the result."""
    if x == ZERO or not x.is_finite():
        return x if x == ZERO else NAN
    value = mpmath.tan(to_digits(x))
    return Near(value, reduction_floor(x) * (1 + value * value))


def reduction_floor(x):
    """The x87 instructions reduce an angle with a pi of 66 bits, so the angle can be wrong by 2**-67 of its size."""
    return mpmath.ldexp(abs(to_digits(x)), 53 - 67)


def acos(x):
    if x.is_nan():
        return NAN
    return ZERO if x == ONE else Near(mpmath.acos(to_digits(x)))


def atan2(y, x):
    if y.is_nan() or x.is_nan():
        return NAN
    if y == ZERO:
        whole = Near(mpmath.pi) if x.sign else ZERO
        return -whole if y.sign else whole
    if y.is_finite() and x.is_finite():
        return Near(mpmath.atan2(to_digits(y), to_digits(x)))
    quarters = (3 if x.sign else 1) if not y.is_finite() and not x.is_finite() else 2
    if y.is_finite():
        quarters = 4 if x.sign else 0
    angle = Near(mpmath.pi * quarters / 4) if quarters else ZERO
    return -angle if y.sign else angle


def reduced(angle):
    """An angle of [-pi, pi] in one period. Its remainder is itself."""
    if isinstance(angle, ExactDouble):
        return reference.reduce_to_period(angle, TWO_PI)
    return angle if angle > ZERO else TWO_PI - -angle


# --- Conversions ---------------------------------------------------------------------------------------------------


def affine_params_to_coefs(sx, sy, phi, theta, tx, ty):
    co, si, t = cos(theta), sin(theta), tan(phi)
    p, q = co * sy, si * sy
    return [co * sx, p * t - q, tx, si * sx, q * t + p, ty]


def affine_coefs_to_param(a, b, c, d, e, f):
    sx = reference.calc_hypot(a, d)
    if reference.is_negligible(sx):
        return [-1, sx] + [None] * 5
    r = ONE / sx
    u, v = a * r, d * r
    theta = reduced(atan2(v, u))
    sy = e * u - b * v
    if reference.is_negligible(sy):
        return [-1, sx, sy, None, theta, None, None]
    return [1, sx, sy, atan((e * v + b * u) / sy), theta, c, f]


def conformal_params_to_coefs(scale, angle, tx, ty):
    co, si = cos(angle), sin(angle)
    r = ONE / scale
    return [co * scale, -(si * scale), tx, ty, r * co, r * si]


def conformal_coefs_to_param(a, b, tx, ty, inv_a, inv_b):
    scale = reference.calc_hypot(a, b)
    if reference.is_negligible(scale):
        return [-1, scale, ZERO, tx, ty]
    return [1, scale, reduced(atan2((-ONE / scale) * b, a / scale)), tx, ty]


# --- Trigonometric equations ---------------------------------------------------------------------------------------


def solve_quadratic(a, b, c):
    """The roots, or a negative number."""
    if a == ZERO:
        if b == ZERO:
            return -1 if c != ZERO else -2
        return [-(c / b)]
    discriminant = b * b - (a * c) * FOUR
    if discriminant < ZERO:
        return []
    if discriminant == ZERO:
        return [-(b / (a * TWO))]
    root = sqrt(discriminant)
    if b >= ZERO:
        total = root + b
        return [-(total / (a * TWO)), (c * -TWO) / total]
    total = root - b
    return [total / (a * TWO), (c * TWO) / total]


def half_tangent_angle(u):
    angle = TWO * atan(u)
    return angle + TWO_PI if angle < ZERO else angle


def opposites(angle):
    if angle >= ZERO:
        return [angle, angle + PI]
    return [angle + TWO_PI, (angle + TWO_PI) - PI]


def lin_trig(a, b, c):
    """The code or the angles in order."""
    if a == ZERO:
        if b == ZERO:
            return -2 if c == ZERO else -1
        s = -(c / b)
        if s > ONE or s < -ONE:
            return -1
        angle = asin(s)
        return [angle, PI - angle] if s >= ZERO else [PI - angle, angle + TWO_PI]
    if b == ZERO:
        s = -(c / a)
        if s > ONE or s < -ONE:
            return -1
        if s == ONE or s == -ONE:
            return [ZERO if s == ONE else PI]
        return [acos(s), TWO_PI - acos(s)]
    if c == ZERO:
        return opposites(atan2(-a, b))
    found = [PI] if a == c else []
    tangents = solve_quadratic(c - a, TWO * b, a + c)
    if isinstance(tangents, list):
        found = (found + [half_tangent_angle(u) for u in tangents])[:2]
    return [found[1], found[0]] if len(found) == 2 and found[1] - found[0] < ZERO else found


def in_room(result, room):
    """The count or the code, and the room with what was written there."""
    if isinstance(result, int):
        return [result, [None] * room]
    return [len(result), result + [None] * (room - len(result))]


def solve_lin_trig(a, b, c):
    return in_room(lin_trig(a, b, c), 2)


def quad_trig_raw(a, b, c, d, e, f):
    if d == ZERO and e == ZERO:
        p, q = a + f, b + f
        if p == ZERO:
            found = lin_trig(c, q, ZERO)
            return -2 if found == -2 else found + [ZERO, PI]
        if q == ZERO:
            return lin_trig(p, c, ZERO) + [HALF_PI, THREE_HALF_PI]
        return [angle for w in solve_quadratic(q, c, p) for angle in opposites(atan(w))]
    if c == ZERO and a == b:
        return lin_trig(d, e, a + f)
    quartic = [(a + f) - d, (e - c) * TWO, (b * FOUR - a * TWO) + f * TWO, (c + e) * TWO, (a + d) + f]
    count, roots = reference.polynomial_roots(4, quartic, QUARTIC_TOLERANCE)
    found = [PI] if d == a + f else []
    return (found + [half_tangent_angle(u) for u in roots[: max(count, 0)]])[:4]


def in_order(angles):
    angles = list(angles)
    for i in range(len(angles) - 1):
        least = i
        for j in range(i + 1, len(angles)):
            if angles[j] - angles[least] < ZERO:
                least = j
        angles[i], angles[least] = angles[least], angles[i]
    return angles


def representative(group):
    """The first angle of a group. The last places decide their order, so no member is certain to be the first."""
    if all(isinstance(angle, ExactDouble) for angle in group):
        return group[0]
    return Near(to_digits(group[0]), max(greatest_of(angle) for angle in group)) if len(group) > 1 else group[0]


class Undecided(Exception):
    """Raised where the last places of the platform's functions decide."""


def is_duplicate(angle, first):
    distance = abs(angle - first)
    if distance > number(0.9e-12) and distance < number(1.1e-12):
        raise Undecided
    return distance < DUPLICATE


def distinct(angles):
    groups = []
    for angle in angles:
        if groups and is_duplicate(angle, groups[-1][0]):
            groups[-1].append(angle)
        else:
            groups.append([angle])
    return [representative(group) for group in groups]


def solve_quad_trig(a, b, c, d, e, f):
    """The case, or None if the last places decide its result."""
    raw = quad_trig_raw(a, b, c, d, e, f)
    if isinstance(raw, int) or len(raw) < 2:
        return in_room(raw, 4)
    try:
        found = distinct(in_order(raw))
    except Undecided:
        return None
    return [len(found), found + raw[len(found) :] + [None] * (4 - len(raw))]


# --- Normal numbers ------------------------------------------------------------------------------------------------


def uniform_numbers(seed):
    generator = Generator(seed)
    while True:
        value = value_of(*generator.draw())
        yield ExactDouble.from_float(float(value))


def normal_numbers(seed, count):
    """The polar method: the second number of a pair waits for the next call."""
    uniform = uniform_numbers(seed)
    drawn = []
    while len(drawn) < count:
        x = TWO * next(uniform) - ONE
        y = TWO * next(uniform) - ONE
        s = y * y + x * x
        if s < ONE and s != ZERO:
            digits = to_digits(s)
            factor = Near(mpmath.sqrt(mpmath.log(digits) / digits * -2))
            drawn += [factor * y, factor * x]
    return drawn


def randn(seed, count):
    return [normal_numbers(seed, count)]


def randn_with_mean(seed, count, mean, sigma):
    return [[value * sigma + mean for value in normal_numbers(seed, count)]]


# --- Tables --------------------------------------------------------------------------------------------------------


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
