#!/usr/bin/env python3
"""run.py DIRECTORY [TEST...]: builds and runs tiny projects that use the library as its users do. Works in DIRECTORY.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

scripts/check consumers installs what this needs and calls it.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
HEADERS = ROOT / "nuv/nuv_math/include"
CONSUMER = HERE / "consumer.cpp"
WORK = pathlib.Path(sys.argv[1]).resolve()
TOOLCHAINS = ROOT / "cmake/toolchains"
MINGW = {"x64": "x86_64-w64-mingw32", "x86": "i686-w64-mingw32"}
ALONE = [f"-DNUV1MATH_BUILD_{part}=OFF" for part in ("APPS", "EXAMPLES", "TESTS")]
C_PROGRAM = ROOT / "bindings/c/examples/fit.c"
C_PRINTS = (ROOT / "bindings/c/examples/fit.txt").read_text()
STRICT_C = ["-std=c89", "-pedantic", "-Wall", "-Wextra", "-Werror"]
STANDARDS = ["98", "03", "11", "14", "17", "20", "23"]


def run(*command, folder=None, **variables):
    """What a command prints, messages included. Raises an error if the command fails."""
    result = finish(*command, folder=folder, **variables)
    if result.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))} ended with {result.returncode}:\n{result.stdout}")
    return result.stdout


def finish(*command, folder=None, **variables):
    environment = {**os.environ, **{name: str(value) for name, value in variables.items()}}
    return subprocess.run([str(part) for part in command], cwd=folder, env=environment, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)


def configure(source, build, *options, **variables):
    return run("cmake", "-G", "Ninja", "-S", source, "-B", build, "-DCMAKE_BUILD_TYPE=Release", *options, **variables)


def build_project(source, build, *options):
    """Configures and builds a project of CMake and returns where its program is."""
    configure(source, build, *options)
    run("cmake", "--build", build)
    return build / "consumer"


def fresh(name):
    folder = WORK / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def installed(name, *options):
    """The prefix of an installation that was moved after it was made."""
    prefix, build, first = WORK / f"prefix-{name}", WORK / f"library-{name}", fresh("first-place")
    if not prefix.exists():
        configure(ROOT, build, *ALONE, *options)
        run("cmake", "--build", build)
        run("cmake", "--install", build, "--prefix", first)
        first.rename(prefix)
    return prefix


def shared():
    return installed("shared")


def static():
    return installed("static", "-DBUILD_SHARED_LIBS=OFF")


def windows(machine, *options):
    name = "-".join([machine, *("static" for _ in options)])
    return installed(name, "--toolchain", TOOLCHAINS / f"windows-{machine}.cmake", *options)


def wine(program, *arguments):
    return finish(TOOLCHAINS / "wine-session", program, *arguments, NUV_WINE_SESSION=WORK / "wine")


def pkg_config(prefix, *options, package="nuv1math"):
    return run("pkg-config", *options, package, PKG_CONFIG_PATH=prefix / "lib/pkgconfig").split()


class FoundByCMake(unittest.TestCase):
    def use(self, name, prefix):
        return build_project(HERE / "found", fresh(name), f"-DCMAKE_PREFIX_PATH={prefix}")

    def test_shared(self):
        self.assertEqual(run(self.use("found-shared", shared())), "ok\n")

    def test_static(self):
        program = self.use("found-static", static())
        self.assertEqual(run(program), "ok\n")
        self.assertNotIn("nuv1math", run("ldd", program))

    def test_in_the_directory_of_its_build(self):
        """Without an installation."""
        shared() # builds it
        self.assertEqual(run(self.use("found-build", WORK / "library-shared")), "ok\n")

    def test_a_component_that_does_not_exist_is_an_error(self):
        with self.assertRaisesRegex(AssertionError, "bogus"):
            configure(HERE / "found", fresh("found-component"), f"-DCMAKE_PREFIX_PATH={shared()}", "-DCOMPONENT=bogus")

    def test_only_versions_that_keep_the_promise_are_accepted(self):
        for version, accepted in (("1.0", True), ("0.9", False), ("2.0", False), ("1.99", False)):
            with self.subTest(version=version):
                result = finish("cmake", "-S", HERE / "found", "-B", fresh("found-version"),
                                f"-DCMAKE_PREFIX_PATH={shared()}", f"-DVERSION={version}")
                self.assertEqual(result.returncode == 0, accepted, result.stdout)

    def test_examples_of_an_installation_build_alone(self):
        build = fresh("examples")
        build_project(shared() / "share/doc/nuv1math/examples", build, f"-DCMAKE_PREFIX_PATH={shared()}")
        self.assertIn("100% tests passed", run("ctest", "--test-dir", build, "--no-tests=error", "--output-on-failure"))


class FoundByPkgConfig(unittest.TestCase):
    def use(self, prefix, compiler, *options):
        program = fresh("pkg-config") / "consumer"
        run(compiler, "-std=c++98", "-pedantic", "-Wall", "-Wextra", "-Werror", CONSUMER, "-o", program,
            *pkg_config(prefix, "--cflags", "--libs"), *options)
        return run(program)

    def test_shared(self):
        libdir = pkg_config(shared(), "--variable=libdir")[0]
        self.assertEqual(self.use(shared(), "g++", f"-Wl,-rpath,{libdir}"), "ok\n")

    def test_static_brings_what_its_link_needs(self):
        """GCC as a C compiler links neither the C++ run-time library nor the mathematical one by itself."""
        self.assertEqual(self.use(static(), "gcc"), "ok\n")

    def test_an_absolute_directory_of_libraries(self):
        """Such an installation cannot be moved, and its headers are not beside its libraries."""
        folder, build = fresh("absolute"), fresh("library-absolute")
        configure(ROOT, build, *ALONE, f"-DCMAKE_INSTALL_PREFIX={folder / 'prefix'}",
                  f"-DCMAKE_INSTALL_LIBDIR={folder / 'elsewhere/lib'}")
        run("cmake", "--build", build)
        run("cmake", "--install", build)
        self.assertEqual(self.use(folder / "elsewhere", "g++", f"-Wl,-rpath,{folder / 'elsewhere/lib'}"), "ok\n")

    def test_by_meson(self):
        source, build = fresh("meson") / "source", WORK / "meson/build"
        source.mkdir()
        for path in (HERE / "meson/meson.build", CONSUMER):
            shutil.copy(path, source)
        variables = {"PKG_CONFIG_PATH": shared() / "lib/pkgconfig", "LD_LIBRARY_PATH": shared() / "lib", "CXX": "g++"}
        run("meson", "setup", build, source, **variables)
        run("meson", "test", "-C", build, **variables)


class CInterface(unittest.TestCase):
    """The C interface, used by a program in C89."""

    def found_by_cmake(self, name, prefix, *options):
        return build_project(HERE / "found", fresh(name), "-DLANGUAGE=C", f"-DCMAKE_PREFIX_PATH={prefix}", *options)

    def test_found_by_cmake(self):
        self.assertEqual(run(self.found_by_cmake("c-shared", shared())), C_PRINTS)

    def test_static_library_found_by_cmake(self):
        program = self.found_by_cmake("c-static", static())
        self.assertEqual(run(program), C_PRINTS)
        self.assertNotIn("nuv1math", run("ldd", program))

    def test_an_installation_without_it_is_an_error(self):
        without = installed("without-c", "-DNUV1MATH_BUILD_BINDINGS=OFF")
        self.assertEqual(list(without.rglob("*nuv1math_c*")), [])
        with self.assertRaisesRegex(AssertionError, "the C interface is not installed"):
            configure(HERE / "found", fresh("c-without"), "-DLANGUAGE=C", f"-DCMAKE_PREFIX_PATH={without}")

    def test_found_by_pkg_config(self):
        """-rpath tells the program where the C interface is. The C interface knows where the library is."""
        for name, prefix in (("shared", shared()), ("static", static())):
            with self.subTest(name):
                program = fresh(f"c-pkg-config-{name}") / "consumer"
                run("gcc", *STRICT_C, C_PROGRAM, "-o", program, f"-Wl,-rpath,{prefix / 'lib'}",
                    *pkg_config(prefix, "--cflags", "--libs", package="nuv1math_c"))
                self.assertEqual(run(program), C_PRINTS)

    def test_header_gives_no_warning(self):
        for language, standards in (("c", ("c89", "c99", "c17")), ("c++", ("c++98", "c++20"))):
            for compiler in ("gcc", "clang"):
                for standard in standards:
                    with self.subTest(compiler=compiler, standard=standard):
                        result = finish(compiler, f"-std={standard}", *STRICT_C[1:], "-fsyntax-only", "-x", language,
                                        ROOT / "bindings/c/nuv1math_c.h")
                        self.assertEqual((result.returncode, result.stdout), (0, ""))

    def test_on_windows(self):
        for name, prefix in (("shared", windows("x64")), ("static", windows("x64", "-DBUILD_SHARED_LIBS=OFF"))):
            with self.subTest(name):
                program = self.found_by_cmake(f"c-windows-{name}", prefix, "-DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH",
                                              "--toolchain", TOOLCHAINS / "windows-x64.cmake")
                self.assertEqual(wine(f"{program}.exe").stdout.strip(), C_PRINTS.strip())


class Parent(unittest.TestCase):
    @staticmethod
    def sources_of_oldest_policies():
        """A copy of the library's sources whose policies are those of the oldest CMake that the library asks for."""
        copy = fresh("sources")
        for name in ("CMakeLists.txt", "CHANGELOG.md", "LICENSE", "cmake", "examples", "nuv"):
            path = ROOT / name
            (shutil.copytree if path.is_dir() else shutil.copy)(path, copy / name)
        project = copy / "CMakeLists.txt"
        text, changed = re.subn(r"(cmake_minimum_required\(VERSION 3\.\d+)\.\.\.[\d.]+\)", r"\1)", project.read_text())
        assert changed == 1, "the library states no range of versions"
        project.write_text(text)
        return copy

    def test_installs_and_exports_the_library_with_itself(self):
        build, first, prefix = fresh("parent"), fresh("parent-first"), WORK / "parent-moved"
        shutil.rmtree(prefix, ignore_errors=True)
        build_project(HERE / "parent", build, f"-DLIBRARY={self.sources_of_oldest_policies()}", "-DNUV1MATH_INSTALL=ON",
                      "-DCMAKE_INSTALL_LIBDIR=lib")
        run("cmake", "--install", build, "--prefix", first)
        first.rename(prefix)
        shutil.rmtree(build)
        self.assertEqual(run(prefix / "bin/consumer"), "ok\n")
        self.assertTrue((prefix / "lib/cmake/nuv1math/nuv1math-config.cmake").exists())
        self.assertTrue((prefix / "lib/cmake/parent/parent-targets.cmake").exists())

    def test_installs_nothing_of_the_library_unless_it_asks(self):
        build, prefix = fresh("parent-alone"), fresh("parent-alone-prefix")
        program = build_project(HERE / "parent", build, f"-DLIBRARY={ROOT}", "-DBUILD_SHARED_LIBS=OFF")
        self.assertEqual(run(program), "ok\n")
        run("cmake", "--install", build, "--prefix", prefix)
        self.assertEqual([path.name for path in prefix.rglob("*") if path.is_file()], ["consumer"])

    def test_builds_the_c_interface_if_it_asks(self):
        build = fresh("parent-c")
        build_project(HERE / "parent", build, f"-DLIBRARY={ROOT}", "-DNUV1MATH_BUILD_BINDINGS=ON")
        self.assertEqual(run(build / "consumer_c"), C_PRINTS)

    def test_meson_builds_the_library_as_a_subproject(self):
        for kind in ("shared", "static"):
            with self.subTest(kind=kind):
                source, build = fresh(f"meson-{kind}") / "source", WORK / f"meson-{kind}/build"
                (source / "subprojects").mkdir(parents=True)
                (source / "subprojects/nuv1math").symlink_to(ROOT)
                for path in (HERE / "meson-sources/meson.build", CONSUMER):
                    shutil.copy(path, source)
                run("meson", "setup", f"--default-library={kind}", build, source, CC="gcc", CXX="g++")
                run("meson", "test", "-C", build)
                self.assertEqual("libnuv1math" in run("ldd", build / "consumer"), kind == "shared")

    def test_finds_the_dll_beside_its_program(self):
        build_project(HERE / "parent", fresh("parent-windows"), f"-DLIBRARY={ROOT}", "--toolchain",
                      TOOLCHAINS / "windows-x64.cmake")
        self.assertEqual(wine(WORK / "parent-windows/consumer.exe").stdout.strip(), "ok")


class Windows(unittest.TestCase):
    def use(self, name, prefix):
        build = fresh(name)
        build_project(HERE / "found", build, f"-DCMAKE_PREFIX_PATH={prefix}", "-DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH",
                      "--toolchain", TOOLCHAINS / "windows-x64.cmake")
        return wine(build / "consumer.exe").stdout.strip()

    def test_dll(self):
        self.assertEqual(self.use("windows-shared", windows("x64")), "ok")

    def test_static(self):
        self.assertEqual(self.use("windows-static", windows("x64", "-DBUILD_SHARED_LIBS=OFF")), "ok")

    def test_header_after_that_of_windows(self):
        for machine, triple in MINGW.items():
            for standard in ("98", "20"):
                with self.subTest(machine=machine, standard=standard):
                    run(f"{triple}-g++-posix", f"-std=c++{standard}", "-DNUV_WINDOWS_FIRST", "-pedantic", "-Wall",
                        "-Wextra", "-Werror", f"-I{HEADERS}", "-c", CONSUMER, "-o", os.devnull)


class Microsoft(unittest.TestCase):
    """The other binary interface of Windows, as Clang and LLVM's linker know it."""

    MACHINES = {"x64": ("x86_64-pc-windows-msvc", "i386:x86-64", "ExitProcess"),
                "x86": ("i686-pc-windows-msvc", "i386", "ExitProcess@4")}

    # Library: the program in C++ or C that calls it, and its standard.
    PROGRAMS = {"nuv1math": ("consumer.cpp", "c++98"), "nuv1math_c": ("consumer_c.c", "c89")}

    def link(self, machine, library):
        target, name, imported = self.MACHINES[machine]
        source, standard = self.PROGRAMS[library]
        folder = fresh(f"microsoft-{machine}-{library}")
        run("clang", f"--target={target}", f"-std={standard}", "-Wall", "-Wextra", "-Werror", "-O2",
            f"-I{windows(machine) / 'include'}", "-c", HERE / "microsoft" / source, "-o", folder / "consumer.obj")
        (folder / "kernel32.def").write_text(f"LIBRARY KERNEL32.dll\nEXPORTS\n    {imported}\n")
        run("llvm-dlltool", "-k", "-m", name, "-d", folder / "kernel32.def", "-l", folder / "kernel32.lib")
        run("lld-link", "/entry:Start", "/subsystem:console", "/nodefaultlib", "/safeseh:no",
            f"/out:{folder / 'consumer.exe'}", folder / "consumer.obj", folder / "kernel32.lib",
            windows(machine) / f"lib/{library}.lib")
        shutil.copy(windows(machine) / f"bin/{library}.dll", folder)
        return folder / "consumer.exe"

    def test_program_runs(self):
        for library in self.PROGRAMS:
            with self.subTest(library):
                self.assertEqual(wine(self.link("x64", library)).returncode, 77)

    def test_program_of_32_bits_links(self):
        for library, symbol in (("nuv1math", "?CalcCoefs@nuv@@YA_NH"), ("nuv1math_c", "nuv_CalcCoefs")):
            with self.subTest(library):
                imports = run("llvm-readobj", "--coff-imports", self.link("x86", library))
                self.assertIn(f"Symbol: {symbol}", imports)
                exports = run("llvm-readobj", "--coff-exports", windows("x86") / f"bin/{library}.dll")
                self.assertIn(f"Name: {symbol}", exports)

    def test_package_gives_the_import_library_of_microsofts_linker(self):
        for compiler in ("MSVC;ON", "CMAKE_C_SIMULATE_ID;MSVC", "CMAKE_CXX_SIMULATE_ID;MSVC"):
            with self.subTest(compiler):
                printed = configure(HERE / "microsoft", fresh("microsoft-package"), f"-DCOMPILER={compiler}",
                                    f"-DCMAKE_PREFIX_PATH={windows('x64')}")
                for library in self.PROGRAMS:
                    self.assertIn(f"links {windows('x64')}/lib/{library}.lib\n", printed)


class Header(unittest.TestCase):
    # All warnings of the compilers, except those about what every header of a namespace of functions does.
    CLANG = ["-Weverything", "-Wno-unused-macros"]
    GCC_REFUSED = {"-Wnamespaces", "-Wtemplates", "-Wunused-macros", "-Wsystem-headers", "-Wabi"}

    def compile(self, compiler, *options):
        return finish(compiler, *options, f"-I{HEADERS}", "-fsyntax-only", "-x", "c++", HERE / "header.cpp")

    def gcc_warnings(self):
        listed = run("g++", "-Q", "--help=warnings,^joined,c++").splitlines()
        names = {line.split()[0] for line in listed if "[disabled]" in line}
        self.assertGreater(len(names), 50)
        return sorted(names - self.GCC_REFUSED)

    def test_gives_no_warning_in_any_standard(self):
        gcc = [*self.gcc_warnings(), "-Wall", "-Wextra", "-pedantic-errors"]
        for standard in STANDARDS:
            for compiler, warnings in (("g++", gcc), ("clang++", self.CLANG)):
                with self.subTest(compiler=compiler, standard=standard):
                    number = "2b" if compiler == "clang++" and standard == "23" else standard
                    result = self.compile(compiler, f"-std=c++{number}", "-Werror", *warnings)
                    self.assertEqual((result.returncode, result.stdout), (0, ""))

    def test_refuses_enumerations_of_a_byte(self):
        for compiler, options in (("g++", ["-fshort-enums"]), ("clang++", ["-fshort-enums"]), ("arm-none-eabi-g++", [])):
            for standard in ("98", "20"):
                with self.subTest(compiler=compiler, standard=standard):
                    result = self.compile(compiler, f"-std=c++{standard}", *options)
                    self.assertNotEqual(result.returncode, 0)
                    self.assertIn("nuv1math_needs_the_option_fno_short_enums", result.stdout)
        result = self.compile("arm-none-eabi-g++", "-fno-short-enums", "-Wall", "-Wextra", "-Werror")
        self.assertEqual((result.returncode, result.stdout), (0, ""))


class Readme(unittest.TestCase):
    """The commands of README.md, each block as it stands there."""

    @staticmethod
    def block(text):
        """The one block of commands that contains a text."""
        blocks = [block for block in re.findall(r"```sh\n(.*?)```", (ROOT / "README.md").read_text(), re.DOTALL)
                  if text in block]
        assert len(blocks) == 1, f"{len(blocks)} blocks of README.md contain {text!r}"
        return blocks[0]

    def setUp(self):
        self.home = fresh("readme")
        self.source = self.home / "nuv1math"
        ignored = shutil.ignore_patterns("build", ".git")
        shutil.copytree(ROOT, self.source, ignore=ignored)
        shutil.copy(CONSUMER, self.source / "program.cpp")

    def follow(self, commands):
        return run("bash", "-euc", commands, folder=self.source, HOME=self.home, CCACHE_BASEDIR=self.source)

    def test_prefix_of_ones_own_and_uninstall(self):
        commands = self.block("--prefix").rstrip()
        self.assertEqual(self.follow(commands + "\n./program").splitlines()[-1], "ok")
        self.assertTrue(list(self.home.glob("nuv/lib/libnuv1math.so*")))
        self.follow(self.block("install_manifest"))
        self.assertEqual([path for path in self.home.glob("nuv/**/*") if not path.is_dir()], [])

    def test_mingw(self):
        shutil.copytree(windows("x64"), self.source / "nuv1math")
        self.follow(self.block("w64-mingw32-g++"))
        self.assertEqual(wine(self.source / "nuv1math/bin/program.exe").stdout.strip(), "ok")


if __name__ == "__main__":
    WORK.mkdir(parents=True, exist_ok=True)
    for old in WORK.glob("prefix-*"):
        shutil.rmtree(old)
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[2:]])
