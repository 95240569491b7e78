#!/usr/bin/env python3
"""exports_test.py LIBRARY: the library exports just the functions of nuv1math_c.def, and the Debian package lists them.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[3]
DEFINITIONS = ROOT / "bindings/c/nuv1math_c.def"
SYMBOLS = ROOT / "packaging/libnuv1math-c1/symbols"


def expect_all(name, found, wanted):
    """Fails unless both sets of functions are the same."""
    if found != wanted:
        sys.exit(f"{name}: missing: {sorted(wanted - found)}; unexpected: {sorted(found - wanted)}")


def main():
    """Compares the lists."""
    wanted = set(DEFINITIONS.read_text(encoding="utf-8").split("EXPORTS")[1].split())
    printed = subprocess.run(["nm", "-D", "--defined-only", "-j", sys.argv[1]], check=True, text=True,
                             stdout=subprocess.PIPE).stdout
    expect_all(sys.argv[1], set(printed.split()), wanted)
    expect_all(SYMBOLS, set(re.findall(r"^ (\S+)@Base ", SYMBOLS.read_text(encoding="utf-8"), re.MULTILINE)), wanted)


if __name__ == "__main__":
    main()
