#!/usr/bin/env python3
"""contact_sheet: draws all files of control points in ../shared/data with fitpoints, and joins the pictures into one.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    contact_sheet.py PROGRAM
"""

import pathlib
import subprocess
import sys
import tempfile

from markdown import ROOT, fail

DATA = ROOT.parent / "shared/data"
SHEET = ROOT / "apps/fitpoints/contact_sheet.png"


def main():
    program = pathlib.Path(sys.argv[1]).resolve()
    files = sorted(DATA.glob("*.csv"))
    if not files:
        fail(f"{DATA} has no files of control points")
    with tempfile.TemporaryDirectory() as folder:
        pictures = [f"{folder}/{file.stem}.png" for file in files]
        for file, picture in zip(files, pictures):
            subprocess.run([program, file, "--plot", picture, "--summary"], check=True, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
        sheet = f"{folder}/sheet.png"
        subprocess.run(["montage", *pictures, "-tile", "6x", "-geometry", "560x440+4+4", "-strip", "-colors", "32",
                        "-depth", "8", f"PNG8:{sheet}"], check=True)
        SHEET.write_bytes(pathlib.Path(sheet).read_bytes())


main()
