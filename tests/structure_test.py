#!/usr/bin/env python3
"""structure_test.py: what the built library exports and needs, and how its sources compile.

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
SOURCES = ROOT / "nuv/nuv1math/src"
HEADERS = ROOT / "nuv/nuv_math/include"
BUILD = os.environ["NUV1MATH_BUILD"]
LIBRARY = os.environ["NUV1MATH_LIBRARY"]
FMA_LIBRARY = os.environ.get("NUV1MATH_FMA_LIBRARY")
FUSED_INSTRUCTION = re.compile(r"\bvfn?m(add|sub)")
PORTABLE = sorted(path for path in SOURCES.glob("*.cpp") if path.name != "platform_windows.cpp")
# What the compiler's start-up code brings into every library, and its record of the processor's abilities.
TOOLCHAIN_DATA = re.compile(r"completed\.\d+|__dso_handle|__TMC_END__|_GLOBAL_OFFSET_TABLE_|_DYNAMIC"
                            r"|__cpu_model|__cpu_features2|__(do_global_dtors_aux_fini|frame_dummy_init)_array_entry")
DIALECTS = [(compiler, standard) for compiler in ("g++", "clang++") for standard in ("c++98", "c++20")]


def output_of(*command):
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        raise AssertionError(f"{command} ended with {result.returncode}:\n{result.stdout}{result.stderr}")
    return result.stdout


def compile_source(compiler, standard, source, *options, output=os.devnull):
    """Compiles, any warning being an error; the finished process."""
    return subprocess.run(
        [compiler, f"-std={standard}", "-pedantic", "-Wall", "-Wextra", "-Werror", "-O2", "-ffp-contract=off",
         "-fno-exceptions", "-fno-rtti", f"-I{HEADERS}", f"-I{SOURCES}", *options, "-c", source, "-o", output],
        capture_output=True, text=True)


class BuiltLibrary(unittest.TestCase):
    def test_exports_exactly_the_listed_functions(self):
        symbols = output_of("nm", "-D", "-C", "--defined-only", LIBRARY).splitlines()
        exported = sorted(line.split(" ", 2)[2] for line in symbols)
        self.assertEqual(exported, (ROOT / "tests/exports.txt").read_text().splitlines())

    def test_needs_only_the_c_and_mathematical_libraries(self):
        needed = re.findall(r"\(NEEDED\).*\[(.*)\]", output_of("readelf", "-d", LIBRARY))
        self.assertEqual(sorted(needed), ["libc.so.6", "libm.so.6"])

    def test_has_its_own_binary_interface_number(self):
        names = re.findall(r"\(SONAME\).*\[(.*)\]", output_of("readelf", "-d", LIBRARY))
        self.assertEqual(names, ["libnuv1math.so.1"])

    def test_has_no_writable_data_but_the_state_of_the_random_numbers(self):
        sections = re.findall(r"^ *\[ *(\d+)\] \S+ +\S+ +\S+ +\S+ +\S+ +\S+ +(\S*W\S*) ",
                              output_of("readelf", "-S", "-W", LIBRARY), re.MULTILINE)
        writable = {number for number, _ in sections}
        symbols = [line.split() for line in output_of("readelf", "-s", "-W", "-C", LIBRARY).splitlines()]
        objects = {" ".join(fields[7:]) for fields in symbols
                   if len(fields) > 7 and fields[3] in ("OBJECT", "TLS", "COMMON", "NOTYPE") and fields[6] in writable}
        self.assertEqual({name for name in objects if not TOOLCHAIN_DATA.fullmatch(name)}, {"nuv::g_State"})

    def test_has_no_exception_tables(self):
        sections = output_of("readelf", "-S", "-W", LIBRARY)
        self.assertNotIn(".gcc_except_table", sections)


    @unittest.skipUnless(FMA_LIBRARY, "no build for a processor with FMA")
    def test_has_no_fused_instruction_where_the_processor_has_them(self):
        self.assertNotRegex(output_of("objdump", "-d", FMA_LIBRARY), FUSED_INSTRUCTION)

    @unittest.skipUnless(FMA_LIBRARY, "no build for a processor with FMA")
    def test_would_have_fused_instructions_without_the_policy(self):
        with tempfile.TemporaryDirectory() as folder:
            compiled = pathlib.Path(folder, "affine.o")
            result = compile_source("g++", "c++98", SOURCES / "affine.cpp", "-mfma", "-ffp-contract=fast",
                                    output=compiled)
            self.assertEqual(result.returncode, 0)
            self.assertRegex(output_of("objdump", "-d", compiled), FUSED_INSTRUCTION)


class Consumer(unittest.TestCase):
    """A project that uses the installed library: the example of the README."""

    PROJECT = """
        cmake_minimum_required(VERSION 3.25)
        project(consumer LANGUAGES CXX)
        find_package(nuv1math 0.1 REQUIRED)
        add_executable(consumer consumer.cpp)
        target_link_libraries(consumer PRIVATE nuv::nuv1math)
    """

    def test_readme_example_prints_what_the_readme_says(self):
        readme = (ROOT / "README.md").read_text()
        example, printed = re.search(r"```cpp\n(.*?)```\s*```text\n(.*?)```", readme, re.DOTALL).groups()
        self.assertLessEqual(len(example.splitlines()), 15)
        with tempfile.TemporaryDirectory() as folder:
            prefix, source, build = (pathlib.Path(folder, name) for name in ("prefix", "source", "build"))
            output_of("cmake", "--install", BUILD, "--prefix", prefix)
            source.mkdir()
            (source / "CMakeLists.txt").write_text(self.PROJECT)
            (source / "consumer.cpp").write_text(example)
            output_of("cmake", "-G", "Ninja", "-S", source, "-B", build, f"-DCMAKE_PREFIX_PATH={prefix}")
            output_of("cmake", "--build", build)
            self.assertEqual(output_of(build / "consumer"), printed)


class Sources(unittest.TestCase):
    def test_compile_without_a_warning(self):
        for compiler, standard in DIALECTS:
            for source in PORTABLE:
                with self.subTest(compiler=compiler, standard=standard, source=source.name):
                    result = compile_source(compiler, standard, source)
                    self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_public_header_stands_alone(self):
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder, "alone.cpp")
            source.write_text('#include "nuv1math.h"\n')
            for compiler, standard in DIALECTS:
                with self.subTest(compiler=compiler, standard=standard):
                    result = compile_source(compiler, standard, source)
                    self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_what_programs_rely_on_holds_in_every_dialect(self):
        for compiler, standard in DIALECTS:
            with self.subTest(compiler=compiler, standard=standard):
                result = compile_source(compiler, standard, ROOT / "tests/contracts.cpp")
                self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_declarations_have_no_default_arguments(self):
        """A default is compiled into the callers: a new one, or a changed one, is another contract."""
        header = (HEADERS / "nuv1math.h").read_text()
        declarations = re.findall(r"^NUV1MATH_API .*?;", header, re.DOTALL | re.MULTILINE)
        self.assertEqual(len(declarations), len((ROOT / "tests/exports.txt").read_text().splitlines()))
        self.assertEqual([text for text in declarations if "=" in text], [])

    def test_refuse_fast_math(self):
        result = compile_source("g++", "c++98", SOURCES / "affine.cpp", "-ffast-math")
        self.assertIn("must not be compiled with fast-math", result.stderr)
        for part in ("-ffinite-math-only", "-freciprocal-math"):
            result = compile_source("g++", "c++98", SOURCES / "affine.cpp", part)
            self.assertIn("or a part of it", result.stderr)

    def test_refuse_excess_precision(self):
        result = compile_source("g++", "c++98", SOURCES / "affine.cpp", "-mfpmath=387")
        self.assertIn("without excess precision", result.stderr)

    def test_refuse_a_report_that_does_not_fit_its_buffer(self):
        fits = compile_source("g++", "c++98", SOURCES / "affine.cpp", f'-DNUV_SOURCE_ROOT="{"r" * 400}"')
        self.assertEqual((fits.returncode, fits.stderr), (0, ""))
        too_long = compile_source("g++", "c++98", SOURCES / "affine.cpp", f'-DNUV_SOURCE_ROOT="{"r" * 450}"')
        self.assertRegex(too_long.stderr, "size of array is negative|narrowing|size .* of array")

    def test_assertion_sites_are_exactly_the_listed_ones(self):
        found = []
        for path in sorted([*SOURCES.iterdir(), *HEADERS.iterdir()]):
            for line in path.read_text().splitlines():
                site = re.match(r'\s+NUV_ASSERT_AT\("(.*?)", (\d+), (.*)\);', line)
                if site:
                    found.append(f"{site[1]} {site[2]} {site[3]}".replace("\\\\", "\\"))
        self.assertEqual(sorted(found), (ROOT / "tests/assertion_sites.txt").read_text().splitlines())


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
