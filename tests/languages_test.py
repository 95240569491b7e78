#!/usr/bin/env python3
"""languages_test.py: the pages of the bindings show the programs that the tests run, and these are short.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent
BINDINGS = ROOT / "bindings"
DIGITS = (BINDINGS / "c/examples/fit.txt").read_text().strip()
ROW = re.compile(r"^\| ([\w#]+) \| \[(.+?)\]\((.+?)\) \| `(.+?)` \| `(\w+)` \|$", re.MULTILINE)
BLOCK = re.compile(r"^```\w+\n(.*?)^```$", re.MULTILINE | re.DOTALL)
NO_CODE = re.compile(r"\s*(//.*|/\*.*\*/|\{.+\}|#!.*|\"\"\".*\"\"\"|[{}])?\s*")
MOST_LINES = 10


def programs():
    """The rows of the table: language, name, path, command, digits."""
    return ROW.findall((BINDINGS / "README.md").read_text())


def lines_of_code(text):
    """The lines that a reader counts: without blank ones, comments, and braces that stand alone."""
    return [line for line in text.splitlines() if not NO_CODE.fullmatch(line)]


class Programs(unittest.TestCase):
    def test_the_table_has_each_of_them(self):
        self.assertEqual([row[0] for row in programs()], ["C", "C#", "Pascal", "Python", "JavaScript"])
        kept = {path.relative_to(BINDINGS).as_posix() for path in BINDINGS.glob("*/examples/[Ff]it.*")}
        self.assertEqual({row[2] for row in programs()}, kept - {"c/examples/fit.txt"})

    def test_each_is_in_its_page_as_it_is_run(self):
        for language, _, path, _, _ in programs():
            with self.subTest(language):
                page = (BINDINGS / path).parents[1] / "README.md"
                self.assertEqual(BLOCK.findall(page.read_text()).count((BINDINGS / path).read_text()), 1)

    def test_each_is_run_by_a_command_that_names_it(self):
        for language, name, path, command, _ in programs():
            with self.subTest(language):
                self.assertEqual(name, pathlib.Path(path).name)
                self.assertIn(name, command.split())

    def test_each_is_short(self):
        for language, _, path, _, _ in programs():
            with self.subTest(language):
                self.assertLessEqual(len(lines_of_code((BINDINGS / path).read_text())), MOST_LINES)

    def test_the_digits_are_those_of_the_tests(self):
        self.assertEqual({row[4] for row in programs()}, {DIGITS})
        self.assertIn(f"`{DIGITS}`", (BINDINGS / "c/README.md").read_text())


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
