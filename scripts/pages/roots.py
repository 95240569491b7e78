#!/usr/bin/env python3
"""roots: writes the table of docs/roots.md.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    roots.py PROGRAM            PROGRAM is the built tests/tools/roots_survey.cpp, which makes the table
    roots.py --check PROGRAM    compares docs/roots.md with this table and writes nothing
"""

import subprocess

from markdown import ROOT, check_arguments, fail, with_regions, write

PAGE = "docs/roots.md"

arguments = check_arguments(__doc__.splitlines()[0])
survey = subprocess.run([arguments.program], check=True, stdout=subprocess.PIPE, text=True).stdout
page = with_regions(PAGE, {"roots": survey})
if not arguments.check:
    write(PAGE, page)
elif page != (ROOT / PAGE).read_text():
    fail(f"{PAGE} is not what this library gives; scripts/docs roots writes it")
