#!/usr/bin/env python3
"""stack_test.py: no function of the library takes more stack than it may, and none calls itself, directly or not.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

The figures are those of scripts/footprint: GCC's own, frames added up along the calls inside the library.
"""

import importlib.machinery
import importlib.util
import os
import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent
DEVICE_FLAGS = ("-march=armv5te", "-mfloat-abi=soft")
# Bytes on the device, and on a host, where the tiles of the Cholesky factorisation have a scratch of 20 KB.
LIMITS = {"arm": 2048, "x86_64": 24576}
PROCESSOR = os.environ.get("NUV1MATH_PROCESSOR", "x86_64")


def load_footprint():
    sys.dont_write_bytecode = True
    loader = importlib.machinery.SourceFileLoader("footprint", str(ROOT / "scripts/footprint"))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("footprint", loader))
    loader.exec_module(module)
    if PROCESSOR != "arm":
        module.PREFIX = ""
        module.FLAGS = [flag for flag in module.FLAGS if flag not in DEVICE_FLAGS]
    return module


def find_cycle(calls):
    """A chain of functions that leads back to its first, or None."""
    done = set()

    def visit(name, path):
        if name in path:
            return path[path.index(name):] + [name]
        if name in done:
            return None
        done.add(name)
        return next(filter(None, (visit(called, path + [name]) for called in sorted(calls.get(name, ())))), None)

    return next(filter(None, map(visit, sorted(calls), ([] for _ in calls))), None)


class Stack(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        footprint = load_footprint()
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            objects = footprint.compile_all(folder)
            library = folder / "library.so"
            footprint.run(footprint.PREFIX + "gcc", "-shared", "-nostdlib", "-o", library, *objects)
            cls.frames, cls.names, cls.calls = footprint.read_call_graph(folder)
            cls.exported = footprint.exported(library)
        cls.footprint = footprint

    def test_call_graph_is_that_of_the_library(self):
        self.assertEqual(len(self.exported), len((ROOT / "tests/exports.txt").read_text().splitlines()))
        self.assertLessEqual(set(self.exported), set(self.frames))

    def test_no_function_reaches_itself(self):
        self.assertIsNone(find_cycle(self.calls))

    def test_no_function_calls_through_a_pointer(self):
        """Such a call could reach anything, and its stack would not be counted."""
        self.assertEqual([name for name, calls in self.calls.items() if "__indirect_call" in calls], [])

    def test_every_exported_function_stays_within_the_limit(self):
        stacks = {self.names[name]: self.footprint.stack_of(name, self.frames, self.calls, "")
                  for name in self.exported}
        deepest = max(stacks, key=stacks.get)
        print(f"deepest on {PROCESSOR}: {stacks[deepest]} bytes, {deepest}", file=sys.stderr)
        self.assertEqual({name: stack for name, stack in stacks.items() if stack > LIMITS[PROCESSOR]}, {})


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
