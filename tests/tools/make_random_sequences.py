#!/usr/bin/env python3
"""make_random_sequences.py: the uniform random sequences of some seeds, worked out in whole numbers and fractions.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    python3 make_random_sequences.py           writes tests/data/random_sequences.txt
    python3 make_random_sequences.py --check   makes it anew and fails if the file is another

No floating-point operation takes part: the three generators are congruences in whole numbers, and the two products
and the sum that make a value are exact fractions, each rounded once to a double (53 bits, ties to even).
"""

from fractions import Fraction

from tables.files import write_or_check

WORD = 2**32
MULTIPLIERS = (7141, 8121, 4561)
INCREMENTS = (54773, 28411, 51349)
MODULI = (259200, 134456, 243000)
ENTRIES = 97

# Seeds and numbers of draws: the seed that loading sets; small seeds; seeds around which the first remainder changes
# its sign; a greater one; both ends of the range, of which the lower one makes the difference overflow; and a seed
# whose draw 22 consists of 0 and 124797, which shows the last bit of the second scale.
SEQUENCES = ((-1, 400), (0, 40), (1, 40), (12345, 300), (54773, 40), (54774, 40), (100000, 300),
             (2**31 - 1, 300), (-(2**31), 300), (-138462, 40))

HEADER = """\
# random_sequences.txt: what Rand() returns after SetRandomSeed, in order; "seed S, N draws" and N doubles.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT
#
# Made by tests/tools/make_random_sequences.py in exact arithmetic: whole numbers and fractions, rounded to doubles
# where the library rounds. The values are printed exactly, in hexadecimal.
# Of the {draws} values, {divided} would differ if they were divided by the moduli instead of multiplied by the scales.
"""


def floor_log2(value):
    """The greatest e with 2**e <= value, for a positive fraction."""
    e = value.numerator.bit_length() - value.denominator.bit_length()
    return e if Fraction(2) ** e <= value else e - 1


def rounded(value):
    """The double nearest to a fraction that is 0 or a normal number, ties to even."""
    if value == 0:
        return value
    unit = Fraction(2) ** (floor_log2(value) - 52)
    return round(value / unit) * unit  # round() of a fraction is exact and takes ties to even


def hexadecimal(value):
    """The double that the fraction is, as C's %a writes it."""
    if value == 0:
        return "0x0p+0"
    exponent = floor_log2(value)
    mantissa = value / Fraction(2) ** exponent * 2**52
    assert mantissa.denominator == 1 and 2**52 <= mantissa < 2**53
    digits = f"{mantissa.numerator - 2**52:013x}".rstrip("0")
    return f"0x1{'.' if digits else ''}{digits}p{exponent:+d}"


SCALES = tuple(rounded(Fraction(1, modulus)) for modulus in MODULI[:2])


def value_of(ix1, ix2):
    return rounded(rounded(rounded(ix2 * SCALES[1]) + ix1) * SCALES[0])


def divided_value_of(ix1, ix2):
    return rounded(rounded(rounded(Fraction(ix2, MODULI[1])) + ix1) / MODULI[0])


def step(generator, state):
    return (MULTIPLIERS[generator] * state + INCREMENTS[generator]) % WORD % MODULI[generator]


def signed_difference(seed):
    """The increment less the seed as a signed number of 32 bits."""
    wrapped = (INCREMENTS[0] - seed) % WORD
    return wrapped - WORD if wrapped >= WORD // 2 else wrapped


def truncated_remainder(dividend, divisor):
    """The remainder with the sign of the dividend."""
    remainder = abs(dividend) % divisor
    return -remainder if dividend < 0 else remainder


class Generator:
    def __init__(self, seed):
        ix1 = step(0, truncated_remainder(signed_difference(seed), MODULI[0]) % WORD)
        self.ix2 = ix1 % MODULI[1]
        self.ix1 = step(0, ix1)
        self.ix3 = self.ix1 % MODULI[2]
        self.table = [self.next_states() for _ in range(ENTRIES + 1)]

    def next_states(self):
        self.ix1 = step(0, self.ix1)
        self.ix2 = step(1, self.ix2)
        return self.ix1, self.ix2

    def draw(self):
        """The states of the first two generators from which the next value is made."""
        fresh = self.next_states()
        self.ix3 = step(2, self.ix3)
        j = 1 + ENTRIES * self.ix3 // MODULI[2]
        drawn, self.table[j] = self.table[j], fresh
        return drawn


def table():
    blocks = []
    drawn = []
    for seed, count in SEQUENCES:
        generator = Generator(seed)
        states = [generator.draw() for _ in range(count)]
        drawn += states
        blocks.append(f"seed {seed}, {count} draws\n")
        blocks += [f"{hexadecimal(value_of(*pair))}\n" for pair in states]
    divided = sum(value_of(*pair) != divided_value_of(*pair) for pair in drawn)
    return HEADER.format(draws=len(drawn), divided=divided) + "".join(blocks)


if __name__ == "__main__":
    write_or_check(__doc__.splitlines()[0], [("random_sequences.txt", table(), f"{len(SEQUENCES)} sequences")])
