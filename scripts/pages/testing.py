#!/usr/bin/env python3
"""testing: writes the measured tables of docs/testing.md: the presets, the checks, and the errors of angles.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import re

import platforms
from markdown import fail, read_text, table, write_regions

def presets():
    rows = []
    for preset, result in platforms.read().items():
        built, runner = platforms.PRESETS[preset]
        digest = result["digests"].get("all") or result["digests"].get("exported")
        rows.append([f"`{preset}`", built, runner, result["tests"], result["failed"], f"`{digest}`" if digest else "-"])
    return table(["Preset", "What is built", "What ran it", "Tests run", "Failed", "Digest"], rows,
                 left=(0, 1, 2, 5))


def coverage(text):
    reached, lines, taken, branches, marked = found(r"^total +lines +(\d+) of +(\d+) +branches +(\d+) of +(\d+) +(\d+)",
                                                    text)
    return f"{reached} of {lines} lines and {taken} of {branches} branches are reached; {marked} lines have a marker"


def mutants(text):
    count, verdicts = found(r"^(\d+) mutants: (.*)$", text)
    return f"{count} mutants: {verdicts}"


def fuzz(text):
    runs = re.findall(r"^(\w+) +(\d+) executions  no finding$", text, re.MULTILINE)
    return f"no finding in {sum(int(count) for _, count in runs):,} executions of {len(runs)} targets".replace(",", " ")


def memcheck(text):
    tests = dict(re.findall(r"^(\w+): clean, (\d+) tests", text, re.MULTILINE))
    of_fitpoints = int(tests.pop("fitpoints_tests"))
    return f"no error and no leak in {sum(map(int, tests.values()))} tests of the library and {of_fitpoints} of `fitpoints`"


CHECKS = [coverage, mutants, fuzz, memcheck]


def found(pattern, text):
    match = re.search(pattern, text, re.MULTILINE)
    if not match:
        fail(f"no line like {pattern} in the record of a check")
    return match.groups()


def checks():
    """A sentence for each check, from what its last run printed."""
    rows = []
    for check in CHECKS:
        command = f"scripts/check {check.__name__}"
        rows.append([f"`{command}`", check(read_text(f"build/results/{check.__name__}.txt", command))])
    return table(["Check", "What its last run found"], rows, left=(0, 1))


def ulps():
    """The greatest error of each routine on any platform. A platform's result reads "GREATEST of LIMIT"."""
    seen = {}
    for preset, result in platforms.read().items():
        for routine, text in result["ulps"].items():
            greatest, limit = map(float, text.split(" of "))
            seen.setdefault(routine, []).append((greatest, preset, limit))
    rows = []
    for routine, errors in sorted(seen.items()):
        greatest = max(error for error, _, _ in errors)
        where = [preset for error, preset, _ in errors if error == greatest]
        rows.append([f"`{routine}`", f"{greatest:.2f}", f"`{where[0]}`", f"{max(limit for *_, limit in errors):g}"])
    return table(["Routine", "greatest error", "seen first on", "allowed"], rows, left=(0, 2))


write_regions("docs/testing.md", {"presets": presets(), "checks": checks(), "ulps": ulps()})
