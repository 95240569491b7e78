#!/usr/bin/env python3
# exactdouble.py: IEC 559 (IEEE 754) binary64 arithmetic in integers alone, without the machine's floating-point unit.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT
"""Doubles whose operations are computed exactly and rounded once, to nearest, ties to even.

A value is a sign, an integer mantissa and a power of two. Sums and products are exact integers before they are rounded.
Quotients and square roots have a sticky bit, which tells an exact result from one just above it.

    python3 exactdouble.py --self-check    compares many thousand operations with the machine's, bit for bit
"""

import argparse
import math
import operator
import struct
import sys
from fractions import Fraction

PRECISION = 53
LEAST_EXPONENT = -1074
EXPONENT_LIMIT = 1024

# Values of the mantissa that do not mean a number.
_INFINITE = -1
_NAN = -2


class ExactDouble:
    """(-1)**sign * mantissa * 2**exponent; a zero has mantissa 0 and keeps its sign."""

    __slots__ = ("sign", "mantissa", "exponent")

    def __init__(self, sign, mantissa, exponent):
        self.sign = sign
        self.mantissa = mantissa
        self.exponent = exponent

    @staticmethod
    def from_bits(bits):
        sign = bits >> 63
        biased = (bits >> 52) & 0x7FF
        fraction = bits & ((1 << 52) - 1)
        if biased == 0x7FF:
            return NAN if fraction else ExactDouble(sign, _INFINITE, 0)
        if biased == 0:
            return ExactDouble(sign, fraction, LEAST_EXPONENT)
        return ExactDouble(sign, fraction | (1 << 52), biased - 1075)

    @staticmethod
    def from_float(value):
        """The value with the bits of a Python float."""
        return ExactDouble.from_bits(struct.unpack("<Q", struct.pack("<d", value))[0])

    @staticmethod
    def from_int(value):
        return rounded(int(value < 0), abs(value), 0) if value else ZERO

    def is_nan(self):
        return self.mantissa == _NAN

    def is_finite(self):
        return self.mantissa >= 0

    def bits(self):
        """The 64 bits; every NaN gives the same quiet one."""
        if self.mantissa == _NAN:
            return 0x7FF8 << 48
        top = self.sign << 63
        if self.mantissa == _INFINITE:
            return top | (0x7FF << 52)
        if self.mantissa == 0:
            return top
        shift = max(self.mantissa.bit_length() - PRECISION, LEAST_EXPONENT - self.exponent)
        mantissa = self.mantissa << -shift if shift < 0 else self.mantissa >> shift
        exponent = self.exponent + shift
        if mantissa < 1 << 52:
            return top | mantissa
        return top | ((exponent + 1075) << 52) | (mantissa - (1 << 52))

    def hex(self):
        return struct.unpack("<d", struct.pack("<Q", self.bits()))[0].hex()

    def is_double(self):
        """False for a value made by hand with more digits, or beyond the range, than a double has."""
        return self.is_nan() or ExactDouble.from_bits(self.bits()) == self

    def next_up(self):
        """The next double away from zero."""
        return ExactDouble.from_bits(self.bits() + 1)

    def next_down(self):
        """The next double towards zero."""
        return ExactDouble.from_bits(self.bits() - 1)

    def __repr__(self):
        return self.hex()

    def __neg__(self):
        return ExactDouble(1 - self.sign, self.mantissa, self.exponent)

    def __abs__(self):
        return ExactDouble(0, self.mantissa, self.exponent)

    def __add__(self, other):
        if other.__class__ is not ExactDouble:
            return NotImplemented
        if self.mantissa > 0 and other.mantissa > 0:
            return _exact_sum(
                self.sign, self.mantissa, self.exponent, other.sign, other.mantissa, other.exponent
            )
        if self.mantissa == _NAN or other.mantissa == _NAN:
            return NAN
        if self.mantissa == _INFINITE:
            return NAN if other.mantissa == _INFINITE and self.sign != other.sign else self
        if other.mantissa == _INFINITE or other.mantissa > 0:
            return other
        if self.mantissa > 0:
            return self
        return ExactDouble(self.sign & other.sign, 0, 0)

    def __sub__(self, other):
        return self + -other

    def __mul__(self, other):
        if other.__class__ is not ExactDouble:
            return NotImplemented
        sign = self.sign ^ other.sign
        if self.mantissa > 0 and other.mantissa > 0:
            return rounded(sign, self.mantissa * other.mantissa, self.exponent + other.exponent)
        if self.mantissa == _NAN or other.mantissa == _NAN:
            return NAN
        if self.mantissa == _INFINITE or other.mantissa == _INFINITE:
            return NAN if self.mantissa == 0 or other.mantissa == 0 else ExactDouble(sign, _INFINITE, 0)
        return ExactDouble(sign, 0, 0)

    def __truediv__(self, other):
        sign = self.sign ^ other.sign
        if self.mantissa > 0 and other.mantissa > 0:
            # At least 55 quotient bits, so that the sticky bit lies below half a unit of the last place.
            shift = max(0, 56 + other.mantissa.bit_length() - self.mantissa.bit_length())
            quotient, rest = divmod(self.mantissa << shift, other.mantissa)
            return rounded(sign, quotient << 1 | (rest != 0), self.exponent - other.exponent - shift - 1)
        if self.mantissa == _NAN or other.mantissa == _NAN:
            return NAN
        if self.mantissa == _INFINITE:
            return NAN if other.mantissa == _INFINITE else ExactDouble(sign, _INFINITE, 0)
        if other.mantissa == _INFINITE:
            return ExactDouble(sign, 0, 0)
        if other.mantissa == 0:
            return NAN if self.mantissa == 0 else ExactDouble(sign, _INFINITE, 0)
        return ExactDouble(sign, 0, 0)

    def _compared(self, other):
        """Negative, zero or positive as self is less than, equal to or greater than other; None with a NaN."""
        if self.mantissa == _NAN or other.mantissa == _NAN:
            return None
        if self.mantissa == _INFINITE or other.mantissa == _INFINITE:
            return _direction(self) - _direction(other)
        shift = self.exponent - other.exponent
        first = (self.mantissa << max(shift, 0)) * (1 - 2 * self.sign)
        second = (other.mantissa << max(-shift, 0)) * (1 - 2 * other.sign)
        return first - second

    def __eq__(self, other):
        return self._compared(other) == 0

    def __ne__(self, other):
        return self._compared(other) != 0

    def __lt__(self, other):
        order = self._compared(other)
        return order is not None and order < 0

    def __le__(self, other):
        order = self._compared(other)
        return order is not None and order <= 0

    def __gt__(self, other):
        order = self._compared(other)
        return order is not None and order > 0

    def __ge__(self, other):
        order = self._compared(other)
        return order is not None and order >= 0

    __hash__ = None


def _direction(value):
    return (1 - 2 * value.sign) * (value.mantissa == _INFINITE)


def rounded(sign, mantissa, exponent):
    """The double nearest to mantissa * 2**exponent, mantissa > 0: the only place where anything is rounded."""
    shift = mantissa.bit_length() - PRECISION
    if exponent + shift < LEAST_EXPONENT:
        shift = LEAST_EXPONENT - exponent
    if shift > 0:
        kept = mantissa >> shift
        rest = mantissa - (kept << shift)
        half = 1 << (shift - 1)
        if rest > half or (rest == half and kept & 1):
            kept += 1
        mantissa = kept
        exponent += shift
    if mantissa.bit_length() + exponent > EXPONENT_LIMIT:
        return ExactDouble(sign, _INFINITE, 0)
    return ExactDouble(sign, mantissa, exponent)


def _exact_sum(sign1, mantissa1, exponent1, sign2, mantissa2, exponent2):
    """The sum of two nonzero numbers of any length, rounded once. An exact cancellation gives +0."""
    if sign1:
        mantissa1 = -mantissa1
    if sign2:
        mantissa2 = -mantissa2
    if exponent1 >= exponent2:
        total = (mantissa1 << (exponent1 - exponent2)) + mantissa2
        exponent = exponent2
    else:
        total = mantissa1 + (mantissa2 << (exponent2 - exponent1))
        exponent = exponent1
    if total == 0:
        return ZERO
    if total < 0:
        return rounded(1, -total, exponent)
    return rounded(0, total, exponent)


def fma(first, second, addend):
    """first * second + addend with a single rounding, as a contracting compiler would have it."""
    finite = first.mantissa >= 0 and second.mantissa >= 0
    if not finite or first.mantissa == 0 or second.mantissa == 0:
        return first * second + addend
    if addend.mantissa < 0:
        return addend
    if addend.mantissa == 0:
        return first * second
    return _exact_sum(
        first.sign ^ second.sign,
        first.mantissa * second.mantissa,
        first.exponent + second.exponent,
        addend.sign,
        addend.mantissa,
        addend.exponent,
    )


def sqrt(value):
    if value.mantissa == 0 or value.mantissa == _NAN:
        return value
    if value.sign:
        return NAN
    if value.mantissa == _INFINITE:
        return value
    return sqrt_of_parts(value.mantissa, value.exponent)


def sqrt_of_parts(mantissa, exponent):
    """The square root of mantissa * 2**exponent, mantissa > 0 of any length, rounded once."""
    shift = max(0, 114 - mantissa.bit_length())
    shift += (exponent - shift) & 1
    mantissa <<= shift
    root = math.isqrt(mantissa)
    return rounded(0, root << 1 | (root * root != mantissa), (exponent - shift) // 2 - 1)


def fmod(value, period):
    """The remainder of the truncated quotient, which is exact; it has the sign of the value."""
    if value.mantissa < 0 or period.mantissa in (_NAN, 0):
        return NAN
    if period.mantissa == _INFINITE or value.mantissa == 0:
        return value
    exponent = min(value.exponent, period.exponent)
    rest = (value.mantissa << (value.exponent - exponent)) % (period.mantissa << (period.exponent - exponent))
    return rounded(value.sign, rest, exponent) if rest else ExactDouble(value.sign, 0, 0)


ZERO = ExactDouble(0, 0, 0)
NAN = ExactDouble(0, _NAN, 0)
INFINITY = ExactDouble(0, _INFINITE, 0)
ONE = ExactDouble(0, 1, 0)
LEAST = ExactDouble(0, 1, LEAST_EXPONENT)
LEAST_NORMAL = ExactDouble(0, 1, -1022)
GREATEST = ExactDouble(0, (1 << 53) - 1, 971)


class Sequence:
    """Pseudo-random 64-bit numbers (splitmix64: Steele, Lea, Flood 2014). The same on every Python version."""

    def __init__(self, seed):
        self.state = seed

    def word(self):
        mask = (1 << 64) - 1
        self.state = (self.state + 0x9E3779B97F4A7C15) & mask
        mixed = self.state
        mixed = ((mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9) & mask
        mixed = ((mixed ^ (mixed >> 27)) * 0x94D049BB133111EB) & mask
        return mixed ^ (mixed >> 31)

    def integer(self, least, greatest):
        return least + self.word() % (greatest - least + 1)

    def choice(self, items):
        return items[self.word() % len(items)]


# --- Self-check against the machine ------------------------------------------------------------------------------


def _machine_divide(first, second):
    if second == 0.0:
        if first == 0.0 or math.isnan(first):
            return math.nan
        return math.copysign(math.inf, first) * math.copysign(1.0, second)
    return first / second


def _machine_fmod(first, second):
    try:
        return math.fmod(first, second)
    except ValueError:
        return math.nan


def _machine_sqrt(value):
    return math.nan if value < 0.0 else math.sqrt(value)


def _fraction_fma(first, second, addend):
    """fma through exact fractions; only for finite arguments whose exact result is not 0."""
    exact = Fraction(first) * Fraction(second) + Fraction(addend)
    try:
        rounded = float(exact)
    except OverflowError:
        rounded = math.inf if exact > 0 else -math.inf
    return math.copysign(rounded, -1.0 if exact < 0 else 1.0)


def _operand(sequence, near):
    """Bits of a double of some kind; `near` is an earlier operand, for cancellations and ties."""
    kind = sequence.integer(0, 7)
    word = sequence.word()
    if kind == 0:
        return sequence.choice(_SPECIAL_BITS)
    if kind == 1:
        return word & ((1 << 63) | ((1 << 52) - 1))  # subnormal
    if kind == 2:
        return (word & ((1 << 63) | ((1 << 52) - 1))) | (sequence.integer(1, 60) << 52)  # about to underflow
    if kind == 3:
        return (word & ((1 << 63) | ((1 << 52) - 1))) | (sequence.integer(1980, 2046) << 52)  # about to overflow
    if kind == 4:
        return (near + sequence.integer(-3, 3)) & ((1 << 64) - 1)  # a neighbour
    if kind == 5:
        return near ^ (1 << 63)
    if kind == 6:
        short = word & ~((1 << sequence.integer(26, 52)) - 1) & ((1 << 52) - 1)
        return (word & (1 << 63)) | (sequence.integer(1000, 1046) << 52) | short  # few digits: exact results, ties
    return (word & ((1 << 63) | ((1 << 52) - 1))) | (sequence.integer(960, 1086) << 52)


_SPECIAL_BITS = [
    sign << 63 | magnitude
    for sign in (0, 1)
    for magnitude in (
        0,
        1,
        (1 << 52) - 1,
        1 << 52,
        (1 << 52) + 1,
        0x3FF << 52,
        (0x3FF << 52) + 1,
        (0x3FF << 52) - 1,
        0x400 << 52,
        (0x7FF << 52) - 1,
        0x7FF << 52,
        0x7FF8 << 48,
    )
]


def _to_float(bits):
    return struct.unpack("<d", struct.pack("<Q", bits))[0]


def _float_bits(value):
    return 0x7FF8 << 48 if math.isnan(value) else struct.unpack("<Q", struct.pack("<d", value))[0]


def _expect(name, operands, exact, machine):
    if exact != machine:
        texts = " ".join(_to_float(bits).hex() for bits in operands)
        sys.exit(f"exactdouble: {name}({texts}) gives {exact:#x}, the machine {machine:#x}")


def _check_pair(first, second):
    """Every operation on one pair of operands; the number of comparisons made."""
    exact = [ExactDouble.from_bits(bits) for bits in (first, second)]
    machine = [_to_float(bits) for bits in (first, second)]
    binary = (
        ("+", operator.add, operator.add),
        ("-", operator.sub, operator.sub),
        ("*", operator.mul, operator.mul),
        ("/", operator.truediv, _machine_divide),
        ("fmod", fmod, _machine_fmod),
    )
    unary = (("sqrt", sqrt, _machine_sqrt), ("neg", operator.neg, operator.neg), ("fabs", abs, math.fabs))
    relations = (operator.eq, operator.ne, operator.lt, operator.le, operator.gt, operator.ge)
    for name, own, other in binary:
        _expect(name, (first, second), own(*exact).bits(), _float_bits(other(*machine)))
    for name, own, other in unary:
        _expect(name, (first,), own(exact[0]).bits(), _float_bits(other(machine[0])))
    for relation in relations:
        _expect(relation.__name__, (first, second), int(relation(*exact)), int(relation(*machine)))
    _expect("packing", (first,), exact[0].bits(), _float_bits(machine[0]))
    return len(binary) + len(unary) + len(relations) + 1


def _check_fma(operands):
    machine = [_to_float(bits) for bits in operands]
    if not all(map(math.isfinite, machine)) or Fraction(machine[0]) * Fraction(machine[1]) + Fraction(machine[2]) == 0:
        return 0
    exact = fma(*(ExactDouble.from_bits(bits) for bits in operands))
    _expect("fma", operands, exact.bits(), _float_bits(_fraction_fma(*machine)))
    return 1


def self_check(count):
    sequence = Sequence(20261121)
    comparisons = 0
    for first in _SPECIAL_BITS:
        for second in _SPECIAL_BITS:
            comparisons += _check_pair(first, second)
    third = 0x3FF << 52
    for _ in range(count):
        first = _operand(sequence, third)
        second = _operand(sequence, first)
        third = _operand(sequence, second)
        comparisons += _check_pair(first, second)
        # An addend near to the product, where contraction is seen.
        product = _float_bits(_to_float(first) * _to_float(second))
        comparisons += _check_fma((first, second, third)) + _check_fma((first, second, product ^ (1 << 63)))
    print(f"exactdouble: {comparisons} comparisons with the machine, no difference")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--self-check", action="store_true", required=True)
    parser.add_argument("--count", type=int, default=20000, help="random pairs of operands")
    self_check(parser.parse_args().count)


if __name__ == "__main__":
    main()
