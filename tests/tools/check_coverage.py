#!/usr/bin/env python3
"""check_coverage.py: what the tests reach of the library, beside the list of what they cannot reach.

usage: check_coverage.py COVERAGE.json (of gcovr)

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import collections
import json
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
EXCEPTIONS = ROOT / "tests/coverage_exceptions.txt"


def listed():
    """How many lines there are of each (source, branches missed, text); 'line' stands for one that is not reached."""
    entries = collections.Counter()
    for row in EXCEPTIONS.read_text().splitlines():
        if row and not row.startswith("#"):
            source, missed, text, _reason = (field.strip() for field in row.split(" | "))
            entries[source, missed, text] += 1
    return entries


def main():
    if len(sys.argv) != 2:
        raise SystemExit(__doc__)
    exceptions = listed()
    used = collections.Counter()
    wrong = []
    total = collections.Counter()
    for file in json.loads(pathlib.Path(sys.argv[1]).read_text())["files"]:
        name = file["file"][file["file"].index("nuv/"):]
        source = pathlib.PurePath(name).name
        texts = (ROOT / name).read_text().splitlines()
        here = collections.Counter()
        for line in (line for line in file["lines"] if not line.get("gcovr/noncode")):
            branches = [branch for branch in line["branches"] if not branch.get("throw")]
            missed = sum(1 for branch in branches if branch["count"] == 0)
            here += collections.Counter(lines=1, reached=line["count"] > 0, branches=len(branches),
                                        taken=len(branches) - missed)
            if line["count"] > 0 and not missed:
                continue
            found = "line" if line["count"] == 0 else str(missed)
            text = texts[line["line_number"] - 1].strip()
            if used[source, found, text] < exceptions[source, found, text]:
                used[source, found, text] += 1
            else:
                wrong.append(f"{name}:{line['line_number']}: {found} missed: {text}")
        print(f"{name}: lines {here['reached']} of {here['lines']}, branches {here['taken']} of {here['branches']}")
        total += here
    wrong += [f"{source}: listed, but not missed: {text}" for source, _missed, text in exceptions - used]
    print(f"total: lines {total['reached']} of {total['lines']}, branches {total['taken']} of {total['branches']}, "
          f"{used.total()} exceptions")
    for text in wrong:
        print(text)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
