#!/usr/bin/env python3
"""fitpoints: writes the reports of the sample and of the plan of Tallinn into the page of fitpoints, and their pictures.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    fitpoints.py PROGRAM
"""

import os
import pathlib
import subprocess
import sys
import tempfile

from markdown import ROOT, fail, write, write_regions

FOLDER = ROOT / "apps/fitpoints"
PROGRAM = pathlib.Path(sys.argv[1]).resolve()

DATA = ROOT.parent / "shared/data"


def draw(points, name, *options):
    """Writes the picture of the points into the folder of the program. Returns the report."""
    with tempfile.TemporaryDirectory() as folder:
        picture = os.path.join(folder, name)
        report = subprocess.run([PROGRAM, points.name, "--plot", picture, *options], cwd=points.parent, check=True,
                                stdout=subprocess.PIPE, text=True).stdout
        drawn = pathlib.Path(picture).read_text()
    write(FOLDER / name, drawn)
    return report


if not DATA.is_dir():
    fail(f"{DATA} is needed: it has the points of Tallinn")
sample = draw(FOLDER / "sample.csv", "sample.svg")
tallinn = draw(DATA / "tallinn_1889.csv", "tallinn_1889.svg", "--summary")
write_regions(FOLDER / "README.md", {"sample": f"```text\n{sample}```",
                                     "tallinn": f"```text\n{tallinn[:tallinn.index('Local frame')].strip()}\n```"})
