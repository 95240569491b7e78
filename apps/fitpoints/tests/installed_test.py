#!/usr/bin/env python3
# installed_test.py CMAKE BUILD: installs fitpoints and looks at what is there: the program, which finds the library, the
# manual page, the sample.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

import os
import pathlib
import re
import subprocess
import sys
import tempfile


def run(*command, **environment):
    return subprocess.run(command, check=True, capture_output=True, text=True,
                          env={**os.environ, "LC_ALL": "C.UTF-8", **environment})


def check(condition, message):
    if not condition:
        sys.exit(f"installed_test.py: {message}")


def the_file(prefix, pattern):
    found = list(prefix.glob(pattern))
    check(len(found) == 1, f"{len(found)} files {pattern} are installed")
    return found[0]


# Every option of the help text has a paragraph of its own in the page.
def check_manual(page, help_text):
    warnings = run("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", str(page)).stderr
    check(not warnings, f"the manual page has warnings:\n{warnings}")
    text = re.sub(r"\\f[BR]|\\(?=-)", "", page.read_text())
    for option in re.findall(r"^  (?:-h,)?(--[a-z]+)", help_text, re.M):
        check(re.search(rf"^\.TP\n(?:-h,)?{option}(?: [^\n]*)?\n[^.\n]", text, re.M),
              f"the manual page does not explain {option}")
    for section in ("NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXAMPLES"):
        check(re.search(rf'^\.SH "?{section}"?$', text, re.M), f"the manual page has no section {section}")


def main():
    cmake, build = sys.argv[1:]
    with tempfile.TemporaryDirectory() as directory:
        prefix = pathlib.Path(directory)
        for component in ("runtime", "tools"):
            run(cmake, "--install", build, "--prefix", directory, "--component", component)
        program = the_file(prefix, "bin/fitpoints")
        sample = the_file(prefix, "share/doc/*/fitpoints/sample.csv")
        report = run(str(program), str(sample)).stdout
        check("points:  12" in report, f"the installed program reports:\n{report}")
        help_text = run(str(program), "--help").stdout
        check_manual(the_file(prefix, "share/man/man1/fitpoints.1"), help_text)


main()
