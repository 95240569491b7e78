#!/usr/bin/env python3
"""library_file_test.py: what the built library exports and needs, its data, and the instructions of its objects.

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
from binary import EXPORTS, ROOT, exported_symbols, is_elf, needed_libraries, output_of, readable

LIBRARY = os.environ["NUV1MATH_LIBRARY"]
PROCESSOR = os.environ["NUV1MATH_PROCESSOR"]
CXX = os.environ.get("NUV1MATH_CXX")
OBJECTS = [path for path in os.environ.get("NUV1MATH_OBJECTS", "").split(":") if path]
IS_ELF = is_elf(LIBRARY)
NEEDED = {
    "elf": {"libc.so.6", "libm.so.6"},
    "windows": {"KERNEL32.dll", "USER32.dll", "msvcrt.dll"},
    "wince": {"COREDLL.dll"},
}
MACHINE = {"AMD64": "IMAGE_FILE_MACHINE_AMD64", "x86": "IMAGE_FILE_MACHINE_I386", "wince": "IMAGE_FILE_MACHINE_ARM"}

# By processor: the instructions that no object may contain, and compiler options that produce them. A fused operation
# rounds once, the x87 unit rounds to more digits, and the ARM device has no floating-point unit.
FUSED_X86 = r"\svfn?m(add|sub)"
X87 = r"\sf(add|sub|mul|div|sqrt|iadd|isub|imul|idiv)r?[psl]*\s"
FORBIDDEN = {
    "x86_64": (FUSED_X86, ["-mfma", "-ffp-contract=fast"]),
    "AMD64": (f"{X87}|{FUSED_X86}", ["-mfma", "-ffp-contract=fast"]),
    "x86": (X87, ["-mfpmath=387", "-mno-sse2"]),
    "aarch64": (r"\sfn?m(add|sub)\s|\sfml[as]\s", ["-ffp-contract=fast"]),
    "arm": (r"\sv(add|sub|mul|div|mla|mls|mov|ldr|str|cmp|cvt)\S*\s", ["-march=armv7-a+fp", "-mfloat-abi=softfp"]),
}
# Symbols that the compiler's start-up code and its processor detection bring into every library.
TOOLCHAIN_DATA = re.compile(r"completed\.\d+|__dso_handle|__TMC_END__|_GLOBAL_OFFSET_TABLE_|_DYNAMIC|\$d"
                            r"|__cpu_model|__cpu_features2|__(do_global_dtors_aux_fini|frame_dummy_init)_array_entry"
                            r"|__bss_(start|end)__|_?_(edata|end|bss_start|bss_end)_*")


class Interface(unittest.TestCase):
    def test_exports_exactly_the_listed_functions(self):
        # The Windows CE image also exports each function under Microsoft's name; its own test compares the two.
        symbols = [symbol for symbol in exported_symbols(LIBRARY) if not symbol.startswith("?")]
        self.assertEqual(sorted(readable(symbols)), EXPORTS)

    @unittest.skipUnless(IS_ELF, "not a library of Debian")
    def test_the_debian_package_lists_what_is_exported(self):
        listed = re.findall(r"^ (\S+)@Base ", (ROOT / "packaging/libnuv1math1/symbols").read_text(), re.MULTILINE)
        self.assertEqual(sorted(exported_symbols(LIBRARY)), sorted(listed))

    @unittest.skipIf(IS_ELF or PROCESSOR == "wince", "not a DLL of desktop Windows")
    def test_exports_each_function_under_the_name_of_microsofts_compiler_too(self):
        machine = "x86" if PROCESSOR == "x86" else "x64"
        listed = re.findall(r'"(.+)" =', (ROOT / f"cmake/windows/exports-{machine}.def").read_text())
        self.assertEqual(len(listed), len(EXPORTS))
        self.assertEqual(sorted(symbol for symbol in exported_symbols(LIBRARY) if symbol.startswith("?")), sorted(listed))

    @unittest.skipIf(IS_ELF or PROCESSOR == "wince", "not a DLL of desktop Windows")
    def test_has_a_version_resource(self):
        numbers = dict(re.findall(r"^#define NUV1MATH_VERSION_([A-Z]+) (\d+)$",
                                  (ROOT / "nuv/nuv_math/include/nuv1math.h").read_text(), re.MULTILINE))
        version = ".".join(numbers[part] for part in ("MAJOR", "MINOR", "PATCH"))
        resources = output_of("llvm-readobj", "--coff-resources", LIBRARY)
        self.assertIn("Type: VERSIONINFO", resources)
        self.assertIn(f"ProductVersion\0{version}\0".encode("utf-16-le"), pathlib.Path(LIBRARY).read_bytes())

    def test_needs_only_libraries_of_the_system(self):
        platform = "elf" if IS_ELF else "wince" if PROCESSOR == "wince" else "windows"
        self.assertEqual(needed_libraries(LIBRARY), NEEDED[platform])

    @unittest.skipIf(IS_ELF, "not a Windows image")
    def test_is_a_windows_library_for_its_machine(self):
        headers = output_of("llvm-readobj", "--file-headers", LIBRARY)
        self.assertIn(f"Machine: {MACHINE[PROCESSOR]} ", headers)
        self.assertIn("IMAGE_FILE_DLL ", headers)


@unittest.skipUnless(IS_ELF, "not an ELF file")
class ElfFile(unittest.TestCase):
    def test_has_its_own_binary_interface_number(self):
        self.assertIn("soname: [libnuv1math.so.1]", output_of("readelf", "-d", LIBRARY))

    def test_has_no_writable_data_but_the_state_of_the_random_numbers(self):
        sections = re.findall(r"^ *\[ *(\d+)\] \S+ +\S+ +\S+ +\S+ +\S+ +\S+ +(\S*W\S*) ",
                              output_of("readelf", "-S", "-W", LIBRARY), re.MULTILINE)
        writable = {number for number, _ in sections}
        symbols = [line.split() for line in output_of("readelf", "-s", "-W", "-C", LIBRARY).splitlines()]
        objects = {" ".join(fields[7:]) for fields in symbols
                   if len(fields) > 7 and fields[3] in ("OBJECT", "TLS", "COMMON", "NOTYPE") and fields[6] in writable}
        self.assertEqual({name for name in objects if not TOOLCHAIN_DATA.fullmatch(name)}, {"nuv::g_State"})

    def test_has_no_exception_tables(self):
        self.assertNotIn(".gcc_except_table", output_of("readelf", "-S", "-W", LIBRARY))

    @unittest.skipUnless(PROCESSOR == "arm", "for processors without floating-point hardware")
    def test_is_for_a_processor_without_floating_point_hardware(self):
        attributes = output_of("readelf", "-A", LIBRARY)
        self.assertIn("Tag_CPU_arch: v5TE", attributes)
        self.assertNotIn("Tag_FP_arch", attributes)


@unittest.skipUnless(OBJECTS, "the objects are looked at elsewhere")
class Instructions(unittest.TestCase):
    PATTERN, OPTIONS = FORBIDDEN.get(PROCESSOR, (None, None))

    def test_none_is_forbidden(self):
        self.assertGreater(len(OBJECTS), 5)
        for compiled in OBJECTS:
            self.assertNotRegex(output_of("llvm-objdump", "-d", compiled), self.PATTERN, compiled)

    def test_forbidden_ones_would_be_recognised(self):
        with tempfile.TemporaryDirectory() as folder:
            source, compiled = pathlib.Path(folder, "sum.cpp"), pathlib.Path(folder, "sum.o")
            source.write_text("double Sum(double a, double b, double c) { return a * b + c; }\n")
            output_of(CXX, "-O2", *self.OPTIONS, "-c", source, "-o", compiled)
            self.assertRegex(output_of("llvm-objdump", "-d", compiled), self.PATTERN)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
