#!/usr/bin/env python3
"""image_test.py: what a library built for another platform exports and needs, and which instructions it is made of.

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

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIBRARY = os.environ["NUV1MATH_LIBRARY"]
OBJECTS = os.environ["NUV1MATH_OBJECTS"].split(":")
PROCESSOR = os.environ["NUV1MATH_PROCESSOR"]
CXX, OBJDUMP, READELF, NM = (os.environ[f"NUV1MATH_{tool}"] for tool in ("CXX", "OBJDUMP", "READELF", "NM"))
IS_WINDOWS = LIBRARY.endswith(".dll")

# The instructions that no object of the library may contain, and options that make the compiler use them.
FORBIDDEN = {
    "aarch64": (r"\sfn?m(add|sub)\s|\sfml[as]\s", ["-ffp-contract=fast"]),  # rounded once
    "arm": (r"\sv(add|sub|mul|div|mla|mls|mov|ldr|str|cmp|cvt)\S*\s", ["-march=armv7-a+fp", "-mfloat-abi=softfp"]),
    "x86": (r"\sf(add|sub|mul|div|sqrt|iadd|isub|imul|idiv)r?[psl]*\s", ["-mfpmath=387", "-mno-sse2"]),  # wider
    "AMD64": (r"\sf(add|sub|mul|div|sqrt|iadd|isub|imul|idiv)r?[psl]*\s|\svfn?m(add|sub)",
              ["-mfma", "-ffp-contract=fast"]),
}
MACHINE = {"AMD64": "pei-x86-64", "x86": "pei-i386"}


def output_of(*command, text_in=None):
    result = subprocess.run(command, capture_output=True, text=True, input=text_in)
    if result.returncode != 0:
        raise AssertionError(f"{command} ended with {result.returncode}:\n{result.stdout}{result.stderr}")
    return result.stdout


def exported_names():
    if not IS_WINDOWS:
        return [line.split()[2] for line in output_of(NM, "-D", "--defined-only", LIBRARY).splitlines()]
    table = output_of(OBJDUMP, "-p", LIBRARY).split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
    return re.findall(r"^\s+\[ *\d+\] (\S+)$", table, re.MULTILINE)


class Image(unittest.TestCase):
    def test_exports_exactly_the_listed_functions(self):
        readable = output_of("c++filt", text_in="\n".join(exported_names()) + "\n").splitlines()
        self.assertEqual(sorted(readable), (ROOT / "tests/exports.txt").read_text().splitlines())

    @unittest.skipIf(IS_WINDOWS, "not an ELF file")
    def test_needs_only_the_c_and_mathematical_libraries(self):
        needed = set(re.findall(r"\(NEEDED\).*\[(.*)\]", output_of(READELF, "-d", LIBRARY)))
        self.assertEqual(needed, {"libc.so.6", "libm.so.6"})

    @unittest.skipUnless(IS_WINDOWS, "not a Windows library")
    def test_needs_only_libraries_of_the_system(self):
        needed = set(re.findall(r"DLL Name: (\S+)", output_of(OBJDUMP, "-p", LIBRARY)))
        self.assertEqual(needed, {"KERNEL32.dll", "USER32.dll", "msvcrt.dll"})

    @unittest.skipUnless(IS_WINDOWS, "not a Windows library")
    def test_is_a_library_for_its_machine(self):
        head = output_of(OBJDUMP, "-p", LIBRARY)
        self.assertIn(f"file format {MACHINE[PROCESSOR]}", head)
        self.assertRegex(head, r"Characteristics 0x2[0-9a-f]{3}")

    @unittest.skipUnless(PROCESSOR == "arm", "for processors without floating-point hardware")
    def test_is_for_a_processor_without_floating_point_hardware(self):
        attributes = output_of(READELF, "-A", LIBRARY)
        self.assertIn("Tag_CPU_arch: v5TE", attributes)
        self.assertNotIn("Tag_FP_arch", attributes)


class Instructions(unittest.TestCase):
    PATTERN, OPTIONS = FORBIDDEN[PROCESSOR]

    def test_none_is_forbidden(self):
        self.assertGreater(len(OBJECTS), 5)
        for compiled in OBJECTS:
            self.assertNotRegex(output_of(OBJDUMP, "-d", compiled), self.PATTERN, compiled)

    def test_forbidden_ones_would_be_recognised(self):
        with tempfile.TemporaryDirectory() as folder:
            source, compiled = pathlib.Path(folder, "sum.cpp"), pathlib.Path(folder, "sum.o")
            source.write_text("double Sum(double a, double b, double c) { return a * b + c; }\n")
            output_of(CXX, "-O2", *self.OPTIONS, "-c", source, "-o", compiled)
            self.assertRegex(output_of(OBJDUMP, "-d", compiled), self.PATTERN)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
