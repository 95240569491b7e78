"""summary.py: prints what scripts/test did, preset by preset.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    summary.py [--json FILE] [PRESET RESULT SECONDS]...

It reads what the run of each preset left in build/PRESET: tests.xml (ctest's results), digest.txt and ulps.txt. With
--json it also writes a list with one object for each preset, in the order of the run, for example:

    {"preset": "default", "result": "passed", "seconds": 123, "tests": 759, "failed": 0, "skipped": 1,
     "digests": {"exported": "a8345ad9305b7670", "all": "cebe142afdc4205a"},
     "ulps": {"Randn": "1.5 of 2"}}

"result" is "passed" or "FAILED". "tests" counts the tests that ran: skipped ones are not in it. The three counts are
null when ctest did not run. "digests" and "ulps" hold what the run printed, so they may be empty; a platform that
reaches only the exported functions has no digest "all".
"""

import argparse
import json
import pathlib
import re
import xml.etree.ElementTree as ElementTree

BUILD = pathlib.Path(__file__).resolve().parents[2] / "build"


def read(path):
    return path.read_text() if path.exists() else ""


def counts(path):
    if not path.exists():
        return {"tests": None, "failed": None, "skipped": None}
    suite = ElementTree.parse(path).getroot()
    total, failed, skipped = (int(suite.get(name, 0)) for name in ("tests", "failures", "skipped"))
    return {"tests": total - skipped, "failed": failed, "skipped": skipped}


def describe(preset, result, seconds):
    folder = BUILD / preset
    digests = re.findall(r"^digest( of exported functions)?: (\w+)", read(folder / "digest.txt"), re.MULTILINE)
    ulps = re.findall(r"^ulps: (\S+) +(.+)$", read(folder / "ulps.txt"), re.MULTILINE)
    return {"preset": preset, "result": result, "seconds": int(seconds), **counts(folder / "tests.xml"),
            "digests": {"exported" if exported else "all": digest for exported, digest in digests}, "ulps": dict(ulps)}


def show(row):
    print(f"{row['preset']:18} {row['result']}  {row['seconds']:5} s  {row['tests']} tests run, {row['failed']} failed, "
          f"{row['skipped']} skipped")
    for name in ("digests", "ulps"):
        if row[name]:
            print(f"    {name}: " + ", ".join(f"{key} {value}" for key, value in row[name].items()))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--json", type=pathlib.Path, metavar="FILE")
    parser.add_argument("runs", nargs="*", metavar="PRESET RESULT SECONDS")
    arguments = parser.parse_args()
    runs = arguments.runs
    rows = [describe(*runs[first:first + 3]) for first in range(0, len(runs), 3)]
    print()
    for row in rows:
        show(row)
    if arguments.json:
        arguments.json.write_text(json.dumps(rows, indent=1) + "\n")


main()
