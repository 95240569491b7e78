"""benchmarks: reads what the benchmark programs measured.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

from markdown import read_json

RESULTS = "build/bench/results"
COMMAND = "scripts/docs performance"
FAMILIES = {"affine_fit": "Affine fit", "conformal_fit": "Conformal fit", "omographic_fit": "Omographic fit",
            "conversions": "Conversions and inverses", "cholesky": "Cholesky and normal equations",
            "roots": "Polynomial roots", "trig": "Trigonometric equations", "random": "Random numbers"}
SIZES = {"affine_fit": "points", "conformal_fit": "points", "omographic_fit": "points", "cholesky": "unknowns",
         "roots": "degree"}
FLOORS = ["read", "arithmetic", "order"]


class Contest:
    """One routine: the seconds of each contestant at each size."""

    def __init__(self):
        self.seconds = {}  # (kind, name) -> {size: seconds}

    def add(self, kind, name, size, seconds):
        self.seconds.setdefault((kind, name), {})[size] = seconds

    def of_kind(self, *kinds):
        """(name, {size: seconds}) of the contestants of these kinds."""
        return [(name, seconds) for (kind, name), seconds in self.seconds.items() if kind in kinds]

    @property
    def ours(self):
        return self.of_kind("ours")[0][1]

    def fastest_other(self, size):
        """Its seconds and name."""
        return min((seconds[size], name) for name, seconds in self.of_kind("peer") if size in seconds)

    def advantage(self, size):
        """How many times as long as ours the fastest other takes."""
        return self.fastest_other(size)[0] / self.ours[size]


def read():
    """The contests by family and routine, the contexts by family, and how many runs each median is of."""
    families, contexts = {}, {}
    for family in FAMILIES:
        data = read_json(f"{RESULTS}/{family}.json", COMMAND)
        contexts[family] = data["context"]
        for entry in sorted(data["benchmarks"], key=lambda entry: entry["family_index"]):  # they ran in random order
            if entry["aggregate_name"] == "median":
                routine, size, kind, name = entry["run_name"].split("|", 3)
                contest = families.setdefault(family, {}).setdefault(routine, Contest())
                contest.add(kind, name, int(size), 1.0 / entry["items_per_second"])
    return families, contexts, entry["repetitions"]


def time(seconds):
    for unit, scale in (("ns", 1e9), ("µs", 1e6), ("ms", 1e3)):
        if seconds * scale < 999.5 or unit == "ms":
            return f"{seconds * scale:.3g} {unit}"


def factor(value):
    return f"{value:.2f}" if value < 9.995 else f"{value:.3g}"
