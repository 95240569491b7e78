#!/usr/bin/env python3
"""fitpoints: writes the report of the sample into the page of fitpoints, and its picture.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    fitpoints.py PROGRAM
"""

import os
import pathlib
import subprocess
import sys
import tempfile

from markdown import ROOT, write, write_regions

FOLDER = ROOT / "apps/fitpoints"
PROGRAM = pathlib.Path(sys.argv[1]).resolve()

with tempfile.TemporaryDirectory() as folder:
    picture = os.path.join(folder, "sample.svg")
    report = subprocess.run([PROGRAM, "sample.csv", "--plot", picture], cwd=FOLDER, check=True, stdout=subprocess.PIPE,
                            text=True).stdout
    drawn = pathlib.Path(picture).read_text()
write(FOLDER / "sample.svg", drawn)
write_regions(FOLDER / "README.md", {"sample": f"```text\n{report}```"})
