#!/usr/bin/env python3
"""exports_test.py LIBRARY: the library exports just the functions of nuv1math_c.def.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import pathlib
import subprocess
import sys

DEFINITIONS = pathlib.Path(__file__).resolve().parents[1] / "nuv1math_c.def"


def main():
    """Compares both lists."""
    wanted = set(DEFINITIONS.read_text(encoding="utf-8").split("EXPORTS")[1].split())
    printed = subprocess.run(["nm", "-D", "--defined-only", "-j", sys.argv[1]], check=True, text=True,
                             stdout=subprocess.PIPE).stdout
    exported = set(printed.split())
    if exported != wanted:
        sys.exit(f"missing: {sorted(wanted - exported)}; unexpected: {sorted(exported - wanted)}")


if __name__ == "__main__":
    main()
