#!/usr/bin/env python3
"""sources_test.py: the library's sources compile in every dialect, refuse unfit options, and report what is listed.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent / "tools"))
sys.dont_write_bytecode = True
from binary import EXPORTS, ROOT

SOURCES = ROOT / "nuv/nuv1math/src"
HEADERS = ROOT / "nuv/nuv_math/include"
OTHER_PLATFORMS = {"module.cpp", "platform_windows.cpp", "platform_wasm.cpp"}
PORTABLE = sorted(path for path in SOURCES.rglob("*.cpp") if path.name not in OTHER_PLATFORMS)
DIALECTS = [(compiler, standard) for compiler in ("g++", "clang++") for standard in ("c++98", "c++20")]


def compile_source(compiler, standard, source, *options):
    """The finished compilation; any warning is an error."""
    return subprocess.run(
        [compiler, f"-std={standard}", "-pedantic", "-Wall", "-Wextra", "-Werror", "-O2", "-ffp-contract=off",
         "-fno-exceptions", "-fno-rtti", f"-I{HEADERS}", f"-I{SOURCES}", *options, "-c", source, "-o", os.devnull],
        capture_output=True, text=True)


class Sources(unittest.TestCase):
    def assert_compile_in_every_dialect(self, *sources):
        for compiler, standard in DIALECTS:
            for source in sources:
                with self.subTest(compiler=compiler, standard=standard, source=source.name):
                    result = compile_source(compiler, standard, source)
                    self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_compile_without_a_warning(self):
        self.assert_compile_in_every_dialect(*PORTABLE)

    def test_public_header_stands_alone(self):
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder, "alone.cpp")
            source.write_text('#include "nuv1math.h"\n')
            self.assert_compile_in_every_dialect(source)

    def test_what_programs_rely_on_holds_in_every_dialect(self):
        self.assert_compile_in_every_dialect(ROOT / "tests/contracts.cpp")

    def test_declarations_have_no_default_arguments(self):
        """A default argument is compiled into the callers: changing or adding one changes the contract."""
        header = (HEADERS / "nuv1math.h").read_text()
        declarations = re.findall(r"^NUV1MATH_API .*?;", header, re.DOTALL | re.MULTILINE)
        self.assertEqual(len(declarations), len(EXPORTS))
        self.assertEqual([text for text in declarations if "=" in text], [])

    def test_assertion_sites_are_exactly_the_listed_ones(self):
        found = []
        for path in sorted([*SOURCES.rglob("*.*"), *HEADERS.iterdir()]):
            for line in path.read_text().splitlines():
                site = re.match(r'\s+NUV_ASSERT_AT\("(.*?)", (\d+), (.*)\);', line)
                if site:
                    found.append(f"{site[1]} {site[2]} {site[3]}".replace("\\\\", "\\"))
        self.assertEqual(sorted(found), (ROOT / "tests/assertion_sites.txt").read_text().splitlines())


class Refusals(unittest.TestCase):
    def errors_with(self, *options):
        return compile_source("g++", "c++98", SOURCES / "affine.cpp", *options).stderr

    def test_fast_math(self):
        self.assertIn("must not be compiled with fast-math", self.errors_with("-ffast-math"))
        for part in ("-ffinite-math-only", "-freciprocal-math"):
            self.assertIn("or a part of it", self.errors_with(part))

    def test_excess_precision(self):
        self.assertIn("without excess precision", self.errors_with("-mfpmath=387"))

    def test_a_report_that_does_not_fit_its_buffer(self):
        self.assertEqual(self.errors_with(f'-DNUV_SOURCE_ROOT="{"r" * 400}"'), "")
        self.assertRegex(self.errors_with(f'-DNUV_SOURCE_ROOT="{"r" * 450}"'),
                         "size of array is negative|narrowing|size .* of array")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
