#!/usr/bin/env python3
"""compare: the times of every exported function with two builds of the library, and the ratio of the two.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    cmake --preset bench && cmake --build --preset bench --target bench_library
    bench/compare.py OLD.so NEW.so [--limit 1.03] [--filter REGEX]

bench_library runs with OLD and NEW in turn, on one processor. The times shown are the smallest processor times of many
short runs: a busy machine can only make a run longer. The ratio is that of the two times shown, or the median ratio of
the pairs of runs if that is smaller. A function above the limit is measured again, with both libraries, before it
counts. The exit status is 1 if one stays above the limit, and 2 for an error.
"""

import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys

PROGRAM = pathlib.Path(__file__).resolve().parent.parent / "build/bench/bench/bench_library"
RUN_SECONDS = 0.0003  # of one timed run: short, so that some run is not interrupted
RUNS = 3              # of a function in one process
NANOSECONDS = 1e9


def fail(message):
    print(f"compare: {message}", file=sys.stderr)
    sys.exit(2)


def check_loaded(program, library):
    """A preloaded library takes the place of the linked one only if both have the same SONAME."""
    environment = dict(os.environ, LD_PRELOAD=str(library), LD_TRACE_LOADED_OBJECTS="1")
    shown = subprocess.run([program], env=environment, capture_output=True, text=True).stdout
    loaded = [line.strip() for line in shown.splitlines() if str(library) in line or "libnuv1math" in line]
    if len(loaded) != 1 or str(library) not in loaded[0]:
        fail(f"{program} does not run with {library} alone: {loaded}")


def measure(program, library, names_pattern):
    """The smallest time of one call in nanoseconds, by function."""
    command = [program, f"--benchmark_filter={names_pattern}", f"--benchmark_min_time={RUN_SECONDS}",
               f"--benchmark_repetitions={RUNS}", "--benchmark_enable_random_interleaving=true",
               "--benchmark_format=json"]
    result = subprocess.run(command, env=dict(os.environ, LD_PRELOAD=str(library)), capture_output=True, text=True)
    if result.returncode != 0:
        fail(f"{program} failed with {library}:\n{result.stderr[-2000:]}")
    times = {}
    for entry in json.loads(result.stdout)["benchmarks"]:
        if entry["run_type"] == "iteration":
            time = NANOSECONDS / entry["items_per_second"]
            times[entry["name"]] = min(time, times.get(entry["name"], time))
    return times


class Comparison:
    def __init__(self, program, libraries):
        self.program, self.libraries = program, libraries
        self.times = [{}, {}]  # of each library: every process' time, by function

    def add_rounds(self, rounds, names_pattern):
        """Runs the program with each library so many times; the library that goes first changes."""
        for turn in range(rounds):
            for which in (0, 1) if turn % 2 == 0 else (1, 0):
                for name, time in measure(self.program, self.libraries[which], names_pattern).items():
                    self.times[which].setdefault(name, []).append(time)

    def smallest(self, which, name):
        return min(self.times[which][name])

    def ratio(self, name):
        """The smaller of two estimates: noise can raise each of them, a slower function raises both."""
        pairs = zip(self.times[0][name], self.times[1][name], strict=True)
        return min(self.smallest(1, name) / self.smallest(0, name), statistics.median(new / old for old, new in pairs))

    def slower(self, limit):
        return [name for name in self.times[0] if self.ratio(name) > limit]

    def table(self, limit):
        order = subprocess.run([self.program, "--benchmark_list_tests"], capture_output=True, text=True, check=True)
        rows = [f"{'function':50} {'old, ns':>12} {'new, ns':>12} {'new/old':>8}"]
        for name in filter(self.times[0].__contains__, order.stdout.splitlines()):
            mark = "  slower" if self.ratio(name) > limit else ""
            rows.append(f"{name:50} {self.smallest(0, name):12.5g} {self.smallest(1, name):12.5g} "
                        f"{self.ratio(name):8.3f}{mark}")
        return "\n".join(rows)


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("old", type=pathlib.Path, help="shared library that the ratio is relative to")
    parser.add_argument("new", type=pathlib.Path, help="shared library that must not be slower")
    parser.add_argument("--limit", type=float, default=1.03, help="greatest ratio that passes (1.03)")
    parser.add_argument("--filter", default=".", help="only functions whose name matches")
    parser.add_argument("--rounds", type=int, default=30, help="processes for each library (30)")
    parser.add_argument("--again", type=int, default=5, help="how often functions above the limit are measured again")
    parser.add_argument("--program", type=pathlib.Path, default=PROGRAM, help="bench_library, if built elsewhere")
    given = parser.parse_args()
    for path in (given.program, given.old, given.new):
        if not path.is_file():
            fail(f"{path} is not there")
    return given


def main():
    given = arguments()
    libraries = [given.old.resolve(), given.new.resolve()]
    for library in libraries:
        check_loaded(given.program, library)
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
    comparison = Comparison(given.program, libraries)
    comparison.add_rounds(given.rounds, given.filter)
    if not comparison.times[0]:
        fail(f"no function matches {given.filter}")
    for _ in range(given.again):
        slower = comparison.slower(given.limit)
        if not slower:
            break
        comparison.add_rounds(given.rounds, f"^({'|'.join(slower)})$")
    print(comparison.table(given.limit))
    slower = comparison.slower(given.limit)
    print(f"{len(slower)} of {len(comparison.times[0])} functions above {given.limit:g}")
    sys.exit(1 if slower else 0)


main()
