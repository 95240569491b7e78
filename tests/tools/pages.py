"""pages.py: Markdown for the measured pages of docs.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

from binary import output_of


def table(header, rows, left=(0,)):
    """A table whose columns are right-aligned except those in left."""
    rules = ["---" if column in left else "--:" for column in range(len(header))]
    return "\n".join("| " + " | ".join(map(str, line)) + " |" for line in [header, rules, *rows])


def version_of(program):
    return output_of(program, "--version").splitlines()[0]


def compiler_version(compiler):
    """Without the name of the program, which differs between machines."""
    return version_of(compiler).split(" ", 1)[1]
