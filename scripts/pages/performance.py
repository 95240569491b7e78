#!/usr/bin/env python3
"""performance: writes docs/performance.md from the results of the benchmark programs.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

from benchmarks import FAMILIES, FLOORS, SIZES, factor, read, time
from markdown import bullets, listed, paragraph, table, write

# Why another library is faster than a routine, at some size at least. Shown only where one is.
REASONS = {
    "CalcOmographicCoefs": "With 4 points OpenCV solves eight equations once; this fit factorises normal equations of "
                           "eight unknowns two or three times.",
    "SolveChol": "The order of its backward substitution is fixed, and makes all n(n - 1)/2 subtractions one chain; "
                 "the others begin with the unknown found first, which breaks the chain.",
    "SolveCholLowTri": "The rows of the packed factor do not stand beside each other, so that the forward half has no "
                       "vectors.",
    "Cholesky": "OpenBLAS uses fused multiply-add, which would change the bits.",
    "CholeskyLowTri": "OpenBLAS uses fused multiply-add, which would change the bits.",
    "Cholesky and SolveChol": "OpenBLAS, by which OpenCV computes too, uses fused multiply-add, which would change the "
                              "bits.",
    "Roots, polynomial": "Degree 2 goes through the companion matrix like every other, where GSL has a formula: the "
                         "five requests for memory alone take half of its time; above, the methods need different "
                         "numbers of iterations.",
    "Roots, two unknowns": "Eigen is compiled into the caller; calling a shared library alone takes about 2.4 ns.",
    "AffineParamsToCoefs": "Eigen is compiled into the caller; the sine, cosine and tangent take most of both times.",
    "ConformalParamsToCoefs": "The peer is compiled into the caller; a sine and a cosine are nearly all of both times.",
    "ConformalCoefsToParam": "It divides to normalise the direction before the arc tangent, which the peer does not.",
    "ConformalCoefsToInvCoefs": "The peer is compiled into the caller; calling a shared library alone takes about as "
                                "long as the operations.",
    "SolveLinTrig": "Two arc tangents take most of both times.",
    "Rand": "It computes three remainders for each value; the fastest other only shifts and combines bits.",
    "Randn": "Half of its time are the uniform numbers, 1.27 for each value, and the rest a logarithm, a quotient and "
             "a root for each pair; the faster ones use the ziggurat method, which rarely needs these.",
}
LEVEL = 0.05  # differences that two runs can show


def code(routine):
    name, comma, rest = routine.partition(",")
    return f"`{name}`{comma}{rest}"


def range_of(values):
    low, high = factor(min(values)), factor(max(values))
    return low if low == high else f"{low} to {high}"


def at_sizes(family, contest, sizes):
    """Where, in words; nothing for all sizes or a routine of one size."""
    if len(sizes) == len(contest.ours):
        return ""
    return f" at {SIZES[family]} {listed(sizes)}" if family == "roots" else f" with {listed(sizes)} {SIZES[family]}"


def sentence(family, routine, contest):
    """How a routine compares with the fastest other at each size."""
    ratios = {size: contest.advantage(size) for size in contest.ours}
    groups = [("{} times as fast as the fastest other", [s for s, r in ratios.items() if r > 1 + LEVEL]),
              ("level with {others} within 5 %", [s for s, r in ratios.items() if 1 - LEVEL <= r <= 1 + LEVEL]),
              ("{} times as fast as {others}", [s for s, r in ratios.items() if r < 1 - LEVEL])]
    parts = []
    for words, sizes in groups:
        if sizes:
            others = listed(dict.fromkeys(contest.fastest_other(size)[1] for size in sizes))
            parts.append(words.format(range_of([ratios[size] for size in sizes]), others=others)
                         + at_sizes(family, contest, sizes))
    reason = " " + REASONS.get(routine, "") if min(ratios.values()) < 1 - LEVEL else ""
    return f"{code(routine)}: {'; '.join(parts)}.{reason}".strip()


def summary(families):
    faster, slower = [], []
    for family, contests in families.items():
        for routine, contest in contests.items():
            least = min(contest.advantage(size) for size in contest.ours)
            (faster if least >= 1 - LEVEL else slower).append(sentence(family, routine, contest))
    return (f"Fastest at every size that is measured, or level with the fastest:\n\n{bullets(faster)}\n\n"
            f"Not the fastest at every size:\n\n{bullets(slower)}")


def cells(sizes, values, show):
    return [show(values[size], size) if size in values else "" for size in sizes]


def ratio_table(family, contest):
    """Peer by ours, the fastest of each column in bold; then ours by each floor."""
    ours, sizes = contest.ours, list(contest.ours)
    fastest = {size: min(ours[size], contest.fastest_other(size)[0]) for size in sizes}

    def ratio(seconds, size):
        text = factor(seconds / ours[size])
        return f"**{text}**" if seconds == fastest[size] else text

    rows = [[name, *cells(sizes, values, ratio)] for name, values in contest.of_kind("ours", "peer")]
    rows += [[f"*ours by {name}*", *cells(sizes, values, lambda floor, size: f"*{factor(ours[size] / floor)}*")]
             for name, values in contest.of_kind(*FLOORS)]
    return table([SIZES[family], *sizes], rows)


def call_table(contests):
    """Routines of one size: each with what else computes the same."""
    rows = []
    for routine, contest in contests.items():
        (ours,), (least, _) = contest.ours.values(), contest.fastest_other(1)
        labelled = [("this library", contest.ours), *contest.of_kind("peer"),
                    *((f"*floor: {name}*", seconds) for name, seconds in contest.of_kind(*FLOORS))]
        for label, seconds in labelled:
            ratio = factor(seconds[1] / ours)
            rows.append([code(routine) if seconds is contest.ours else "", label, time(seconds[1]),
                         f"**{ratio}**" if seconds[1] == min(ours, least) else ratio])
    return table(["function", "computed by", "one call", "by ours"], rows, left=(0, 1))


def ratios(families):
    parts = []
    for family, contests in families.items():
        parts.append(f"### {FAMILIES[family]}")
        if family not in SIZES:
            parts.append(call_table(contests))
            continue
        for routine, contest in contests.items():
            if len(contests) > 1:
                parts.append(f"`{routine}`")
            parts.append(ratio_table(family, contest))
    return "\n\n".join(parts)


def times(families):
    """Ours alone: the others follow from the ratios."""
    parts = []
    for family, unit in SIZES.items():
        sizes = sorted({size for contest in families[family].values() for size in contest.ours})
        parts.append(table([unit, *sizes], [[code(routine), *cells(sizes, contest.ours, lambda t, _: time(t))]
                                            for routine, contest in families[family].items()]))
    return "\n\n".join(parts)


def versions(contexts):
    found = {}
    for context in contexts.values():
        found.update({key.removeprefix("version of "): value for key, value in context.items()
                      if key.startswith("version of ")})
    named = sorted(found.items(), key=lambda item: item[0].lower())
    missing = sorted({name for context in contexts.values() for name in context["missing"].split(", ") if name})
    left_out = f" Left out: {listed(missing)}." if missing else ""
    return paragraph("Versions: " + ", ".join(f"{name} {version}" for name, version in named) + "." + left_out)


def processor(contexts):
    """As the programs' run noted it: the page may be made elsewhere."""
    return next(iter(contexts.values())).get("processor", "an unnamed processor")


def page():
    families, contexts, repetitions = read()
    return f"""<!-- SPDX-License-Identifier: MIT -->
# Performance

{paragraph(f"`scripts/docs performance` made this page on {processor(contexts)}: one thread, -O2 for x86-64 as Debian "
           f"builds its packages, medians of {repetitions} runs in random order. Every figure is that of one call. The "
           "cost on a processor without floating-point hardware is in [performance-device.md](performance-device.md).")}

## Summary

Above 1, the library is faster than the fastest of the others.

{summary(families)}

## How it is measured

Each contestant gets the same data in its own containers; converting the data is not timed. What a call needs beside its
input, such as the matrix of a general solver, is timed. A factorisation or solution in place includes the copy of its
input. Eigen is compiled into the caller, all others are shared libraries; OpenBLAS and the C library choose wider
instructions than SSE2 at run time. `ctest --preset bench` checks that all contestants agree, and a measured run ends if
one does not.

Floors are lower bounds, measured in the same run. *Reading* is one pass over the input, 16 bytes at a time.
*Arithmetic* performs as many operations as the routine in independent chains, two at a time (SSE2, without fused
multiply-add); products with zero coefficients do not count. The *chain* is the longest sequence of dependent additions
that the fixed order of the operations imposes, for `Rand` the longest of its three generators: in registers, and in
memory with a call for each value. A routine can be faster than the arithmetic floor where it uses wider vectors. The
iterations of the roots depend on the data, so they have no floor.

{versions(contexts)}

## Ratios

Time of the contestant divided by ours: above 1, ours is faster. Bold is the fastest. *In italics*, ours divided by a
floor.

{ratios(families)}

## Times of the library

{times(families)}
"""


write("docs/performance.md", page())
