#!/usr/bin/env python3
"""installed_test.py: the README's example, built by a project of its own against the installed library.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import os
import pathlib
import re
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent / "tools"))
sys.dont_write_bytecode = True
from binary import ROOT, output_of

PROJECT = """
    cmake_minimum_required(VERSION 3.25)
    project(consumer LANGUAGES CXX)
    find_package(nuv1math 0.1 REQUIRED)
    add_executable(consumer consumer.cpp)
    target_link_libraries(consumer PRIVATE nuv::nuv1math)
"""


class Example(unittest.TestCase):
    def test_prints_what_the_readme_says(self):
        readme = (ROOT / "README.md").read_text()
        example, printed = re.search(r"```cpp\n(.*?)```\s*```text\n(.*?)```", readme, re.DOTALL).groups()
        self.assertLessEqual(len(example.splitlines()), 15)
        with tempfile.TemporaryDirectory() as folder:
            prefix, source, build = (pathlib.Path(folder, name) for name in ("prefix", "source", "build"))
            output_of("cmake", "--install", os.environ["NUV1MATH_BUILD"], "--prefix", prefix)
            source.mkdir()
            (source / "CMakeLists.txt").write_text(PROJECT)
            (source / "consumer.cpp").write_text(example)
            output_of("cmake", "-G", "Ninja", "-S", source, "-B", build, f"-DCMAKE_PREFIX_PATH={prefix}")
            output_of("cmake", "--build", build)
            self.assertEqual(output_of(build / "consumer"), printed)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
