# table.py: a table of cases, the sequence of inputs, and how values are written.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

import reference
from exactdouble import GREATEST, INFINITY, LEAST, LEAST_NORMAL, NAN, ONE, ZERO, ExactDouble, Sequence, rounded

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
        """Ordinary numbers, one in four a special one."""
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
        """`count` cases of what maker(source) gives; cases outside the routine's domain are skipped."""
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
