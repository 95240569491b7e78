#!/usr/bin/env python3
"""check_coverage.py: lines and branches of the library that the tests do not reach, beside the markers in its source.

usage: check_coverage.py COVERAGE.json (of gcovr)

A line that no test can reach completely has a marker: "unreachable", "host only" or "by processor" (see markers.py).
The check fails where something is missed without a marker. It also fails where one of the first two markers covers
nothing that is missed; with "by processor" that depends on the machine. It reads only the lines that were compiled for
coverage, so a marker may stand in code of another platform.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import collections
import json
import pathlib
import sys

from markers import markers_of

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

def missed_in(lines):
    """For each line that is not reached, or not in every direction: what is missed."""
    missed = {}
    for line in lines:
        branches = sum(branch["count"] == 0 for branch in line["branches"])
        if line["count"] == 0:
            missed[line["line_number"]] = "not reached"
        elif branches:
            missed[line["line_number"]] = f"{branches} of {len(line['branches'])} branches not taken"
    return missed


def check(name, lines):
    """Prints the counts of one source; returns them with what is wrong."""
    texts = (ROOT / name).read_text().splitlines()
    markers = markers_of(texts, "unreachable", "host only")
    missed = missed_in(lines)
    excused = set().union(*markers.values(), *markers_of(texts, "by processor").values())
    compiled = {line["line_number"] for line in lines}
    wrong = [f"{name}:{number}: {what}: {texts[number - 1].strip()}" for number, what in sorted(missed.items())
             if number not in excused]
    wrong += [f"{name}:{number}: marked, but nothing is missed: {texts[number - 1].strip()}"
              for number, covered in markers.items() if covered & compiled and not covered & set(missed)]
    branches = [branch["count"] > 0 for line in lines for branch in line["branches"]]
    counts = collections.Counter(lines=len(lines), reached=sum(line["count"] > 0 for line in lines),
                                 branches=len(branches), taken=sum(branches), marked=len(excused & set(missed)))
    return counts, wrong


def summary(name, counts):
    return (f"{name:32} lines {counts['reached']:5} of {counts['lines']:5}   branches {counts['taken']:5} of "
            f"{counts['branches']:5}   {counts['marked']:3} lines marked")


def main():
    if len(sys.argv) != 2:
        raise SystemExit(__doc__)
    total = collections.Counter()
    problems = []
    for file in json.loads(pathlib.Path(sys.argv[1]).read_text())["files"]:
        counts, wrong = check(file["file"], [line for line in file["lines"] if not line.get("gcovr/noncode")])
        print(summary(pathlib.PurePath(file["file"]).name, counts))
        total += counts
        problems += wrong
    print(summary("total", total))
    for problem in problems:
        print(problem)
    return 1 if problems or not total["lines"] else 0


if __name__ == "__main__":
    sys.exit(main())
