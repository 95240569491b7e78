#!/usr/bin/env python3
"""arithmetic_proof_test.py: proves the bounds by which the integer division and square root round correctly.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

Gappa proves enclosures of expressions with roundings. Every cell of a table gets two scripts with the operations of
arithmetic.cpp: one from the seed to the approximate reciprocal, and one from there to the quotient or the root. Seeds and
bounds are read from the header that is compiled. A word stands for a real number. The upper half of a product of two
words is a product of real numbers, rounded down to a multiple of a power of 2, which Gappa writes 1b-30 for 2^-30.
"""

import concurrent.futures
import math
import os
import pathlib
import re
import subprocess
import typing
import unittest

HEADER = pathlib.Path(__file__).resolve().parent.parent / "nuv/nuv1math/src/fast/arithmeticseeds.h"
TEXT = HEADER.read_text()
GAPPA = os.environ["NUV1MATH_GAPPA"]
GREATEST = 2**32 - 1  # of a word
NEXT_TO_ONE = f"{2**28 + 1}b-28"

# 1/b of 1 <= b < 2. B is the upper word of b, X0 the seed, and X1 and X2 are what the Newton steps make of it.
RECIPROCAL = """
@down31 = fixed<-31, dn>;
X0 = {seed}b-16;
B = down31(b);
t0 = down31(B * X0);  X1 = down31(X0 * (2 - 1b-31 - t0));
t1 = down31(B * X1);  X2 = down31(X1 * (2 - 1b-31 - t1));
{{ b in [{low}, {high}] -> {goal} }}
b * X1 - 1 -> b * (X1 - X0 * (2 - 1b-31 - t0)) + b * X0 * (-1b-31 - (t0 - B * X0) - (B - b) * X0)
  - (b * X0 - 1) * (b * X0 - 1);
b * X2 - 1 -> b * (X2 - X1 * (2 - 1b-31 - t1)) + b * X1 * (-1b-31 - (t1 - B * X1) - (B - b) * X1)
  - (b * X1 - 1) * (b * X1 - 1);
X1 -> (1 + (b * X1 - 1)) / b {{ b <> 0 }};
X2 -> (1 + (b * X2 - 1)) / b {{ b <> 0 }};
"""

# q = a/b of b <= a < 2b. Q1 and Q2 are its parts.
QUOTIENT = """
@down30 = fixed<-30, dn>;  @down58 = fixed<-58, dn>;
a = q * b;
A = down30(a);
Q1 = down30(A * X) - {margin}b-30;
R = down58(b * (q - Q1));
Q2 = down58(R * X);
{{ b in [{low}, {high}] /\\ q in [1, 2] /\\ X in [0, 1] /\\ b * X - 1 in {error} ->
  b * (q - Q1) in [0, {greatest}b-58] /\\ q - Q1 - Q2 in [-{below}b-58, {above}b-58] }}
q - Q1 -> {margin}b-30 - (down30(A * X) - A * X) - (A - a) * X - q * (b * X - 1);
q - Q1 - Q2 -> - (Q2 - R * X) - (R - b * (q - Q1)) * X - (q - Q1) * (b * X - 1);
"""

# 1/r of the root r of 1 <= m < 4. M is the upper word of m, Y0 the seed, and Y1 and Y2 are what the Newton steps make.
RECIPROCAL_ROOT = """
@down31 = fixed<-31, dn>;  @down30 = fixed<-30, dn>;
Y0 = {seed}b-16;
m = r * r;
M = down30(m);
t0 = down30(M * Y0 * Y0);                      Y1 = down31(Y0 * (3 - t0) * 0.5);
s1 = down30(M * Y1);      t1 = down30(s1 * Y1);  Y2 = down31(Y1 * (3 - t1) * 0.5);
{{ r in [{low}, {high}] -> {goal} }}
r * Y1 - 1 -> r * (Y1 - Y0 * (3 - t0) * 0.5) - r * Y0 * 0.5 * ((t0 - M * Y0 * Y0) + (M - m) * Y0 * Y0)
  - (3 + (r * Y0 - 1)) * ((r * Y0 - 1) * (r * Y0 - 1)) * 0.5;
r * Y2 - 1 -> r * (Y2 - Y1 * (3 - t1) * 0.5)
  - r * Y1 * 0.5 * ((t1 - s1 * Y1) + (s1 - M * Y1) * Y1 + (M - m) * Y1 * Y1)
  - (3 + (r * Y1 - 1)) * ((r * Y1 - 1) * (r * Y1 - 1)) * 0.5;
Y1 -> (1 + (r * Y1 - 1)) / r {{ r <> 0 }};
Y2 -> (1 + (r * Y2 - 1)) / r {{ r <> 0 }};
"""

# The root r. R1 and R2 are its parts.
ROOT = """
@down30 = fixed<-30, dn>;  @down57 = fixed<-57, dn>;  @down58 = fixed<-58, dn>;
m = r * r;
M = down30(m);
R1 = down30(M * Y) - {margin}b-30;
D = down57(m - R1 * R1);
R2 = down58(D * Y * 0.5);
{{ r in [{low}, {high}] /\\ Y in [0, 1] /\\ r * Y - 1 in {error} ->
  m - R1 * R1 in [0, {greatest}b-57] /\\ r - R1 - R2 in [-{below}b-58, {above}b-58] }}
r - R1 -> {margin}b-30 - (down30(M * Y) - M * Y) - (M - m) * Y - r * (r * Y - 1);
m - R1 * R1 -> (r - R1) * (2 * r - (r - R1));
r - R1 - R2 -> (r - R1) * (r - R1) * Y * 0.5 - (r - R1) * (r * Y - 1) - (R2 - D * Y * 0.5)
  - (D - (m - R1 * R1)) * Y * 0.5;
"""


def table(name):
    return [int(number) for number in re.search(rf"\b{name}\[\d+\] = {{([^}}]*)}}", TEXT)[1].split(",")]


def constant(name):
    return int(re.search(rf"\b{name} = (\d+)", TEXT)[1])


def gappa(script):
    return subprocess.run([GAPPA, "-Eno-auto-dichotomy"], input=script, capture_output=True, text=True, check=False)


class TCell(typing.NamedTuple):
    """A seed and the arguments for which it stands; the bounds are in Gappa's form."""
    seed: int
    low: str
    high: str

    def halves(self):
        """The cell, that of 1 in two parts: up to NEXT_TO_ONE, and from there."""
        return [self] if self.low != "1" else [self._replace(high=NEXT_TO_ONE), self._replace(low=NEXT_TO_ONE)]


class TMethod(typing.NamedTuple):
    to_reciprocal: str
    error: str  # of the reciprocal
    words: tuple
    to_result: str
    cells: list
    bounds: dict

    def error_in(self, cell):
        """The enclosure of the reciprocal's error; fails if a word could overflow. For the words next to 1 see below."""
        words = () if cell.high == NEXT_TO_ONE else self.words
        goal = "".join(f"{word} in [0, {GREATEST}b-32] /\\ " for word in words) + f"{self.error} in ?"
        answer = gappa(self.to_reciprocal.format(**cell._asdict(), goal=goal))
        bounds = re.search(rf"{re.escape(self.error)} in \[(\S+) {{.*?}}, (\S+) {{", answer.stderr)
        if answer.returncode != 0 or not bounds:
            raise AssertionError(f"{cell}: {answer.stderr}")
        return f"[{bounds[1]}, {bounds[2]}]"

    def holds(self, cell, error, **changed):
        """Whether the rest of the upper part is a word that is not negative, and the result within the bounds."""
        given = {**self.bounds, **changed, "low": cell.low, "high": cell.high, "error": error, "greatest": GREATEST}
        return gappa(self.to_result.format(**given)).returncode == 0


def bounds_of(name):
    return {word: constant(f"{name}_{word.upper()}") for word in ("margin", "below", "above")}


def root_of(cell):
    """The root of cell/64 in units of 2^-40, rounded down."""
    return math.isqrt((cell << 80) // 64)


METHODS = {
    "quotient": TMethod(
        RECIPROCAL, "b * X2 - 1", ("X1", "X2"), QUOTIENT,
        [TCell(seed, "1" if i == 0 else f"{128 + i}b-7", f"{129 + i}b-7")
         for i, seed in enumerate(table("RECIPROCAL_SEEDS"))], bounds_of("QUOTIENT")),
    "root": TMethod(
        RECIPROCAL_ROOT, "r * Y2 - 1", ("Y1", "Y2"), ROOT,
        [TCell(seed, "1" if i == 64 else f"{root_of(i)}b-40", f"{root_of(i + 1) + 1}b-40")
         for i, seed in enumerate(table("ROOT_SEEDS"), 64)], bounds_of("ROOT")),
}


class Seeds(unittest.TestCase):
    def test_are_the_nearest_to_the_reciprocals_of_the_middles(self):
        for i, seed in enumerate(table("RECIPROCAL_SEEDS")):
            self.assertEqual(seed, round(2**16 / ((256 + 2 * i + 1) / 256)), i)
        for i, seed in enumerate(table("ROOT_SEEDS"), 64):
            self.assertEqual(seed, round(2**16 / math.sqrt((2 * i + 1) / 128)), i)


def in_parallel(function, items):
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return list(pool.map(function, items))


class Bounds(unittest.TestCase):
    """The bounds hold in every cell, and a smaller bound does not."""

    @classmethod
    def setUpClass(cls):
        cls.cells = {}  # of each method, with the error of the reciprocal
        for name, method in METHODS.items():
            cells = [part for cell in method.cells for part in cell.halves()]
            cls.cells[name] = list(zip(cells, in_parallel(method.error_in, cells)))

    def test_hold_in_every_cell(self):
        for name, method in METHODS.items():
            proved = in_parallel(lambda cell, method=method: method.holds(*cell), self.cells[name])
            self.assertEqual([cell for cell, good in zip(self.cells[name], proved) if not good], [], name)

    def test_none_can_be_one_unit_smaller(self):
        for name, method in METHODS.items():
            for bound, value in method.bounds.items():
                with self.subTest(method=name, bound=bound):
                    self.assertFalse(all(method.holds(*cell, **{bound: value - 1}) for cell in self.cells[name]))


def high_product(first, second):
    return first * second >> 32


class FirstWords(unittest.TestCase):
    """Next to 1 an interval that is closed does not exclude 1, which does not fit a word: the words themselves."""
    COUNT = 64  # of the words from 1 on; NEXT_TO_ONE and its square are less

    def test_reciprocals_fit(self):
        seed = table("RECIPROCAL_SEEDS")[0] << 16
        for word in range(2**31, 2**31 + self.COUNT):
            first = high_product(seed, GREATEST - high_product(word, seed)) << 1
            second = high_product(first, GREATEST - high_product(word, first)) << 1
            self.assertLessEqual(max(first, second), GREATEST, word)

    def test_reciprocals_of_roots_fit(self):
        seed = table("ROOT_SEEDS")[0]
        for word in range(2**30, 2**30 + self.COUNT):
            first = high_product(seed << 16, (3 << 30) - high_product(word, seed * seed)) << 1
            second = high_product(first, (3 << 30) - high_product(high_product(word, first), first)) << 1
            self.assertLessEqual(max(first, second), GREATEST, word)


if __name__ == "__main__":
    unittest.main(argv=[__file__, "-v"])
