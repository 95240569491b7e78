#!/usr/bin/env python3
"""kinds: writes the table of the page of fitpoints' judgement module.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    kinds.py PROGRAM DIRECTORY

PROGRAM is the built apps/fitpoints/tests/kinds_survey.cpp, DIRECTORY has CSV files of control points.
"""

import pathlib
import subprocess
import sys

from markdown import fail, write_regions

if len(sys.argv) != 3:
    fail("usage: kinds.py PROGRAM DIRECTORY")
files = sorted(pathlib.Path(sys.argv[2]).glob("*.csv"))
if not files:
    fail(f"{sys.argv[2]} has no CSV files of control points")
survey = subprocess.run([sys.argv[1], *files], check=True, stdout=subprocess.PIPE, text=True).stdout
write_regions("apps/fitpoints/judgement/README.md", {"kinds": survey})
