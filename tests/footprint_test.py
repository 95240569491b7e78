#!/usr/bin/env python3
"""footprint_test.py: the library stays within its stack and, on the device, within its room for code.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import os
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent / "tools"))
sys.dont_write_bytecode = True
import footprint
from binary import EXPORTS, exported_symbols

OBJECTS = os.environ["NUV1MATH_OBJECTS"].split(":")
SYMBOLS = exported_symbols(os.environ["NUV1MATH_LIBRARY"])
IS_DEVICE = os.environ["NUV1MATH_PROCESSOR"] == "arm"
# On a host the tiles of the Cholesky factorisation have a scratch of 29 KB.
STACK = footprint.STACK if IS_DEVICE else 32 * 1024


class Stack(unittest.TestCase):
    GRAPH = footprint.CallGraph(OBJECTS)

    def test_call_graph_is_that_of_the_library(self):
        self.assertEqual(len(SYMBOLS), len(EXPORTS))
        self.assertLessEqual(set(SYMBOLS), set(self.GRAPH.frames))

    def test_no_function_reaches_itself(self):
        self.assertIsNone(self.GRAPH.find_cycle())

    def test_no_function_calls_through_a_pointer(self):
        """The stack of such a call could not be counted."""
        self.assertEqual([name for name, calls in self.GRAPH.calls.items() if "__indirect_call" in calls], [])

    def test_every_exported_function_stays_within_the_limit(self):
        stacks = {name: self.GRAPH.stack_of(name) for name in SYMBOLS}
        deepest = max(stacks, key=stacks.get)
        print(f"deepest: {stacks[deepest]} bytes, {deepest}", file=sys.stderr)
        self.assertEqual({name: stack for name, stack in stacks.items() if stack > STACK}, {})


@unittest.skipUnless(IS_DEVICE, "only the device is short of room")
class Code(unittest.TestCase):
    def test_code_and_read_only_data_stay_within_the_room(self):
        taken = footprint.sizes(OBJECTS)
        self.assertGreater(taken["code"], 10000)
        self.assertLessEqual(taken["code"] + taken["read-only data"], footprint.ROOM)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
