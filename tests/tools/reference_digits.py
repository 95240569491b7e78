# reference_digits.py: the routines of the library that use elementary functions, with 50 digits from these on.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT
"""An independent implementation of each routine.

Operations before the first elementary function are rounded one by one, and so are all decisions.
"""

import re

import mpmath
import reference
from exactdouble import LEAST_NORMAL, NAN, ONE, ZERO, ExactDouble, rounded, sqrt
from make_random_sequences import Generator, value_of
from tables.table import TWO_PI, number, power_of_two

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
