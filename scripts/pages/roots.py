#!/usr/bin/env python3
"""roots: writes the table of docs/roots.md. Usage: roots.py PROGRAM, the built tests/tools/roots_survey.cpp.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import subprocess
import sys

from markdown import write_regions

survey = subprocess.run([sys.argv[1]], check=True, stdout=subprocess.PIPE, text=True).stdout
write_regions("docs/roots.md", {"roots": survey})
