# scalars.py: tables of the mean, the norm and the reduction to a period.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

import reference
from exactdouble import GREATEST, INFINITY, LEAST, NAN, ONE, ZERO, ExactDouble
from tables.table import BANDS, SPECIALS, TWO_PI, Table, number, numbers


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
