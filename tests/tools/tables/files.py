# files.py: the files in tests/data, which a generator writes or compares with what it would write.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

import argparse
import pathlib
import sys

DATA = pathlib.Path(__file__).resolve().parents[2] / "data"


def write_or_check(description, files):
    """The command of a generator. `files` gives the name, the text and a summary of each file."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--check", action="store_true", help="compare with the files instead of writing them")
    check = parser.parse_args().check
    different = []
    for name, text, summary in files:
        path = DATA / name
        if not check:
            path.write_text(text, encoding="ascii", newline="\n")
        elif not path.exists() or path.read_bytes() != text.encode("ascii"):
            different.append(name)
        print(f"{name}: {summary}")
    if different:
        sys.exit(f"{pathlib.Path(sys.argv[0]).stem}: not as generated: {', '.join(different)}")
