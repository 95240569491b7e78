#!/usr/bin/env python3
"""report: writes docs/performance.md from the results of the benchmark programs.

Usage: report.py RESULTS DOCS. RESULTS holds one JSON file of Google Benchmark per family; DOCS receives performance.md,
which takes in DOCS/performance-device.md if that exists.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import json
import pathlib
import re
import sys
import textwrap

TITLES = {"affine_fit": "Affine fit", "conformal_fit": "Conformal fit", "omographic_fit": "Omographic fit",
          "conversions": "Conversions and inverses", "cholesky": "Cholesky and normal equations",
          "roots": "Polynomial roots", "trig": "Trigonometric equations", "random": "Random numbers"}
SIZES = {"affine_fit": "points", "conformal_fit": "points", "omographic_fit": "points", "cholesky": "unknowns",
         "roots": "degree"}
FLOORS = ["read", "arithmetic", "order"]

# What is aimed at: routine, sizes, what is compared, the most that ours may take of it.
FITS = ["CalcAffineCoefs", "CalcConformalCoefs", "CalcOmographicCoefs"]
FACTORS = ["Cholesky", "CholeskyLowTri"]
BOUNDS = [(FITS, [100, 10000], "order", 1.5), (FACTORS, [500, 1000], "arithmetic", 1.5), (["Rand"], [1], "order", 1.3)]
FIRST = [(FITS, None), (["SolveChol", "SolveCholLowTri"] + FACTORS, [3, 8, 32, 100]),
         (["UpdateNormMatrixLowTri"], None), (["Roots, polynomial"], [4, 8, 16, 32, 64])]
FIRST_FAMILIES = ["conversions"]


class Contest:
    """One routine: the seconds of each contestant at each size, and how far the peers' results were off."""

    def __init__(self):
        self.seconds = {}  # (kind, name) -> {size: seconds}
        self.checks = {}   # name -> (greatest difference, tolerance)

    def add(self, entry):
        _, size, kind, name = entry["run_name"].split("|", 3)
        if entry["aggregate_name"] == "median":
            self.seconds.setdefault((kind, name), {})[int(size)] = 1.0 / entry["items_per_second"]
            if "difference" in entry:
                before = self.checks.get(name, (0.0, 0.0))[0]
                self.checks[name] = (max(before, entry["difference"]), entry["tolerance"])

    def of_kind(self, *kinds):
        """(name, {size: seconds}) of the contestants of these kinds."""
        return [(name, seconds) for (kind, name), seconds in self.seconds.items() if kind in kinds]

    @property
    def ours(self):
        return self.of_kind("ours")[0][1]

    def floor(self, kind):
        found = self.of_kind(kind)
        return found[0][1] if found else {}

    def best_peer(self, size):
        """Its seconds and name."""
        return min((seconds[size], name) for name, seconds in self.of_kind("peer") if size in seconds)

    def is_first(self, size):
        return self.ours[size] <= self.best_peer(size)[0]


def read(folder):
    """The contests by family and routine, the contexts by family, and how many runs each median is of."""
    families, contexts = {}, {}
    for family in TITLES:
        data = json.loads((folder / f"{family}.json").read_text())
        contexts[family] = data["context"]
        for entry in sorted(data["benchmarks"], key=lambda entry: entry["family_index"]):  # they ran in random order
            routine = entry["run_name"].split("|", 1)[0]
            families.setdefault(family, {}).setdefault(routine, Contest()).add(entry)
    return families, contexts, entry["repetitions"]


def table(header, rows):
    lines = [header, ["---"] + ["--:"] * (len(header) - 1), *rows]
    return "\n".join("| " + " | ".join(str(cell) for cell in line) + " |" for line in lines)


def time(seconds):
    for unit, scale in (("ns", 1e9), ("µs", 1e6), ("ms", 1e3)):
        if seconds * scale < 999.5 or unit == "ms":
            return f"{seconds * scale:.3g} {unit}"


def factor(value):
    return f"{value:.2f}" if value < 9.995 else f"{value:.3g}"


def cells(sizes, values, show):
    return [show(values[size], size) if size in values else "" for size in sizes]


def ratio_table(header, contest):
    """Peer by ours, the fastest of each column in bold; then ours by each floor."""
    ours, sizes = contest.ours, list(contest.ours)
    fastest = {size: min([ours[size], contest.best_peer(size)[0]]) for size in sizes}

    def ratio(seconds, size):
        text = factor(seconds / ours[size])
        return f"**{text}**" if seconds == fastest[size] else text

    rows = [[name] + cells(sizes, values, ratio) for name, values in contest.of_kind("ours", "peer")]
    rows += [[f"*ours by: {name}*"] + cells(sizes, values, lambda floor, size: f"*{factor(ours[size] / floor)}*")
             for name, values in contest.of_kind(*FLOORS)]
    return table(header, rows)


def time_table(header, contest):
    rows = [[name] + cells(list(contest.ours), values, lambda seconds, size: time(seconds))
            for name, values in contest.of_kind("ours", "peer", *FLOORS)]
    return table(header, rows)


def header_of(family, contest):
    if family not in SIZES:
        return ["", "one call"]
    return [SIZES[family]] + [str(size) for size in contest.ours]


def tables(families, make):
    parts = []
    for family, contests in families.items():
        parts.append(f"### {TITLES[family]}")
        for routine, contest in contests.items():
            parts.append(f"`{routine.split(',')[0]}`{','.join([''] + routine.split(',')[1:])}")
            parts.append(make(header_of(family, contest), contest))
    return "\n\n".join(parts)


def targets(families):
    """Rows of the table of what is aimed at: routine, size, target, seen, met."""
    contests = {routine: contest for family in families.values() for routine, contest in family.items()}
    rows = []
    firsts = FIRST + [([routine], None) for family in FIRST_FAMILIES for routine in families[family]]
    for routines, sizes in firsts:
        for routine in routines:
            contest = contests[routine]
            for size in sizes or contest.ours:
                seconds, name = contest.best_peer(size)
                rows.append([routine, size, "first", f"{name}: {factor(seconds / contest.ours[size])}",
                             "met" if contest.is_first(size) else "**missed**"])
    for routines, sizes, kind, most in BOUNDS:
        for routine in routines:
            for size in sizes:
                by = {floor: contests[routine].ours[size] / contests[routine].floor(floor)[size]
                      for floor in FLOORS if contests[routine].floor(floor)}
                others = ", ".join(f"{name}: {factor(value)}" for name, value in by.items() if name != kind)
                rows.append([routine, size, f"at most {most} times the {kind} floor",
                             factor(by[kind]) + (f" ({others})" if others else ""),
                             "met" if by[kind] <= most else "**missed**"])
    return rows


def reasons():
    """Why a routine's targets are missed and what was tried: reasons.md has a paragraph for each, its name first."""
    known = {}
    for line in (pathlib.Path(__file__).parent / "reasons.md").read_text().splitlines()[1:]:
        start = re.match(r"([A-Z]\w+(?:, \w+(?: \w+)?)?): ", line)
        if start:
            routine = start[1]
            known[routine] = line[start.end():]
        else:
            known[routine] += " " + line
    return known


def reasons_for_missed(aims):
    known = reasons()
    missed = dict.fromkeys(row[0] for row in aims if row[-1] != "met")
    return "\n".join(fill(f"- `{routine}`: {known.get(routine, 'Not looked into yet.')}") for routine in missed)


def fill(text):
    return textwrap.fill(text, 120, break_long_words=False, break_on_hyphens=False)


def versions(contexts):
    found = {}
    for context in contexts.values():
        found.update({key[len("version of "):]: value for key, value in context.items()
                      if key.startswith("version of ")})
    named = sorted(found.items(), key=lambda item: item[0].lower())
    return fill("Versions: " + ", ".join(f"{name} {version}" for name, version in named) + ".")


def missing(contexts):
    names = {name for context in contexts.values() for name in context["missing"].split(", ") if name}
    return fill("Left out: " + (", ".join(sorted(names)) or "nothing") + ".")


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return "unknown"


def checks(families):
    """Greatest relative difference of every peer from ours, over all sizes of a routine, beside its tolerance."""
    return [[routine, name, f"{difference:.1e}", f"{tolerance:.0e}"]
            for contests in families.values() for routine, contest in contests.items()
            for name, (difference, tolerance) in contest.checks.items()]


def device(docs):
    """The page of the device class without its title, headings one level down; or that there is none yet."""
    page = docs / "performance-device.md"
    if not page.exists():
        return "Not measured."
    lines = [line for line in page.read_text().splitlines() if not line.startswith(("<!-- SPDX", "# "))]
    return re.sub(r"^(#+ )", r"#\1", "\n".join(lines), flags=re.MULTILINE).strip()


def main():
    results, docs = (pathlib.Path(name) for name in sys.argv[1:])
    families, contexts, repetitions = read(results)
    places = [contest.is_first(size) for contests in families.values() for contest in contests.values()
              for size in contest.ours]
    aims = targets(families)
    met = sum(row[-1] == "met" for row in aims)
    text = f"""<!-- SPDX-License-Identifier: MIT -->
# Performance

**The library is first in {sum(places)} of {len(places)} contests; {met} of {len(aims)} targets are met.**

{fill(f"Made by `scripts/bench` on {processor()}, on one thread, with -O2 for x86-64 as Debian builds its packages: "
      f"medians of {repetitions} runs in random order. Every figure is that of one call. OpenBLAS and the C library "
      "choose wider instructions than SSE2 at run time.")}

{versions(contexts)}

{missing(contexts)}

## How it is measured

Each contestant gets the same data in its own containers, which is not timed, and is checked against ours before it is
timed; a difference above the tolerance ends the run. What a call needs beside its input, like the matrix of a general
solver, is timed. A factorisation or solution in place includes the copy of its input. Eigen is compiled into the
caller, all others are shared libraries. Floors are measured in the same run: *reading* is a pass over the input 16
bytes at a time; *arithmetic* does the routine's operations in independent chains, two at a time (SSE2, no FMA), without
those of zero coefficients; the *chain* is the longest one of dependent additions that the fixed order of the operations
imposes, for `Rand` the longest of its three generators. The iterations of the roots depend on the data, so there is no
count of their operations and no floor.

## Ratios

Time of the contestant divided by ours: above 1, ours is faster. Bold is first. *In italics* ours divided by a floor.

{tables(families, ratio_table)}

## Targets

{table(["Routine", "size", "target", "best peer by ours, or ours by floor", ""], aims)}

Why targets are missed, and what was tried; times of single routines beside each other, not of the run above:

{reasons_for_missed(aims)}

## Device class

{device(docs)}

{fill(reasons()["Device"])}

## Times

{tables(families, time_table)}

## Agreement

The greatest difference of a peer from ours over all sizes, relative to the greatest magnitude of our results, and the
most that is allowed. Random numbers are compared by mean, mean square and the fraction in the middle.

{table(["Routine", "peer", "difference", "tolerance"], checks(families))}
"""
    (docs / "performance.md").write_text(text)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main()
