#!/usr/bin/env python3
"""check_image.py: headers, imports, exports, relocations and code of the image, read by LLVM's tools.

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

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests/tools"))
sys.dont_write_bytecode = True
from binary import ROOT, output_of

IMAGE = os.environ["NUV_IMAGE"]
SECOND_IMAGE = os.environ["NUV_SECOND_IMAGE"]
LINKED = os.environ["NUV_LINKED"]
OBJDUMP = os.environ["NUV_OBJDUMP"]
COMPILER = os.environ["NUV_COMPILER"]
TOOLS = ROOT / "wince/tools"
PREFERRED_BASE = 0x10000000


def read(*options):
    return output_of("llvm-readobj", *options, IMAGE)


class Headers(unittest.TestCase):
    TEXT = read("--file-headers")

    def assert_field(self, name, value):
        self.assertEqual(re.findall(rf"^ *{name}: (.*)$", self.TEXT, re.MULTILINE), [value])

    def test_is_a_library_for_the_device(self):
        self.assert_field("Machine", "IMAGE_FILE_MACHINE_ARM (0x1C0)")
        self.assert_field("Subsystem", "IMAGE_SUBSYSTEM_WINDOWS_CE_GUI (0x9)")
        self.assert_field("MajorSubsystemVersion", "4")
        self.assert_field("MinorSubsystemVersion", "20")
        self.assertIn("Characteristics [ (0x2102)", self.TEXT)
        self.assertIn("IMAGE_FILE_DLL (0x2000)", self.TEXT)
        self.assertNotIn("IMAGE_FILE_RELOCS_STRIPPED", self.TEXT)

    def test_has_no_characteristics_that_the_device_does_not_know(self):
        self.assertIn("Characteristics [ (0x0)", self.TEXT)

    def test_prefers_its_base_and_carries_no_date(self):
        self.assert_field("ImageBase", f"{PREFERRED_BASE:#x}")
        self.assert_field("TimeDateStamp", "1970-01-01 00:00:00 (0x0)")

    def test_has_no_unwind_table(self):
        self.assert_field("ExceptionTableSize", "0x0")


class Sections(unittest.TestCase):
    def assert_sections_with(self, flag, names):
        found = [section for section in read("--sections").split("Section {")[1:] if flag in section]
        self.assertEqual([re.search(r"Name: (\S+)", section)[1] for section in found], names)

    def test_only_the_import_slots_and_the_data_can_be_written(self):
        self.assert_sections_with("IMAGE_SCN_MEM_WRITE", [".idata", ".data"])

    def test_only_the_code_can_be_executed(self):
        self.assert_sections_with("IMAGE_SCN_MEM_EXECUTE", [".text"])


class Imports(unittest.TestCase):
    TEXT = read("--coff-imports")

    def test_are_listed_as_functions_of_the_core_library(self):
        offered = re.findall(r"^    (\w+)$", (ROOT / "wince/image/coredll.def").read_text(), re.MULTILINE)
        imported = set(re.findall(r"^ *Symbol: (\S+) ", self.TEXT, re.MULTILINE))
        self.assertLessEqual(imported, set(offered))
        self.assertLessEqual({"MessageBoxW", "TerminateProcess", "wsprintfW", "fmod", "malloc", "free", "__addd",
                              "__ltd"}, imported)


class Exports(unittest.TestCase):
    """Each function has GCC's name and Microsoft's name for the same address."""

    def setUp(self):
        exports = re.findall(r"Ordinal: \d+\s+Name: (\S+)\s+RVA: (\S+)", read("--coff-exports"))
        self.by_name = dict(exports)
        self.assertEqual(len(self.by_name), len(exports))

    def test_have_both_names_at_one_address(self):
        own = sorted(rva for name, rva in self.by_name.items() if name.startswith("_Z"))
        microsoft = sorted(rva for name, rva in self.by_name.items() if name.startswith("?"))
        self.assertEqual(len(set(own)), len(own))
        self.assertEqual(own, microsoft)
        self.assertEqual(len(self.by_name), 2 * len(own))

    def test_pair_the_names_of_the_same_function(self):
        # Written by hand from the published rules of both manglings. In Microsoft's: N double, H int, X void, Z end.
        for own, microsoft in (("_ZN3nuv4RandEv", "?Rand@nuv@@YANXZ"), ("_ZN3nuv4RandEdd", "?Rand@nuv@@YANNN@Z"),
                               ("_ZN3nuv13SetRandomSeedEi", "?SetRandomSeed@nuv@@YAXH@Z"),
                               ("_ZN3nuv8CholeskyEiPd", "?Cholesky@nuv@@YA_NHPAN@Z")):
            self.assertEqual(self.by_name[own], self.by_name[microsoft])


class Relocations(unittest.TestCase):
    def test_are_of_the_one_kind_that_the_device_knows(self):
        entries = re.findall(r"Type: (\S+)\s+Address: (\S+)", read("--coff-basereloc"))
        self.assertIn("HIGHLOW", {kind for kind, _ in entries})
        # The only other entry pads a block: kind 0, offset 0.
        others = [(kind, int(address, 16) % 0x1000) for kind, address in entries if kind != "HIGHLOW"]
        self.assertEqual(set(others) - {("ABSOLUTE", 0)}, set())


class Code(unittest.TestCase):
    TEXT = output_of(OBJDUMP, "-d", LINKED)

    def test_is_for_processors_without_floating_point_thumb_or_later_instructions(self):
        vfp = r"v(add|sub|mul|div|ldr|str|mov|cmp)"
        older_vfp = r"f(add|sub|mul|div|ld|st)[sd]"
        for instructions in (vfp, older_vfp, r"blx|ldrd|strd|clz"):
            self.assertNotRegex(self.TEXT, rf"\t({instructions})")

    def test_uses_bx_only_where_it_goes_to_thumb_code(self):
        # An ARMv4 processor without Thumb has no bx. Each bx follows a test of the address and a plain jump.
        lines = self.TEXT.splitlines()
        found = [i for i, line in enumerate(lines) if re.search(r"\tbx(eq|ne)?\t", line)]
        self.assertGreater(len(found), 0)
        for i in found:
            register = re.search(r"\tbx\t(\w+)", lines[i])[1]
            self.assertRegex(lines[i - 2], rf"\ttst\t{register}, #1")
            self.assertRegex(lines[i - 1], rf"\tmoveq\tpc, {register}")


class Build(unittest.TestCase):
    def test_gives_the_same_bytes_twice(self):
        self.assertNotEqual(os.path.realpath(IMAGE), os.path.realpath(SECOND_IMAGE))
        self.assertEqual(pathlib.Path(IMAGE).read_bytes(), pathlib.Path(SECOND_IMAGE).read_bytes())


class Tools(unittest.TestCase):
    def refusal_of(self, tool, *arguments):
        result = subprocess.run([sys.executable, "-B", TOOLS / tool, *arguments], capture_output=True, text=True)
        self.assertNotEqual(result.returncode, 0)
        return result.stderr

    def test_refuse_an_import_that_the_platform_does_not_offer(self):
        with tempfile.TemporaryDirectory() as folder:
            source, code, made = (pathlib.Path(folder, name) for name in ("code.s", "code.o", "imports.S"))
            source.write_text("bl calloc\nbl fmod\n")
            output_of(COMPILER, "-c", source, "-o", code)
            self.assertIn("COREDLL.dll does not offer: calloc\n",
                          self.refusal_of("make_imports.py", code, ROOT / "wince/image/coredll.def", made))
            self.assertFalse(made.exists())

    def test_refuse_an_export_too_many_or_too_few(self):
        listed = pathlib.Path(os.environ["NUV_EXPORTS"]).read_text().splitlines()
        for lines in (listed[1:], [*listed, "_ZN3nuv4NoneEv ?None@nuv@@YAXXZ"]):
            with tempfile.TemporaryDirectory() as folder:
                exports, made = (pathlib.Path(folder, name) for name in ("exports.txt", "made.dll"))
                exports.write_text("\n".join(lines))
                self.assertIn("listed or visible, not both", self.refusal_of("make_pe.py", LINKED, exports, made))
                self.assertFalse(made.exists())


if __name__ == "__main__":
    unittest.main(argv=["check_image.py", "-v"])
