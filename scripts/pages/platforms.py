"""platforms: what the last scripts/test all did, preset by preset, and what each preset is.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import re

from markdown import ROOT, fail, read_json

RESULTS = "build/platforms.json"
COMMAND = "scripts/test all"

# Preset: what is built, what runs the tests.
PRESETS = {
    "default": ("g++, C++98, -O2", "x86-64"),
    "linux-sanitize": ("g++, address and undefined-behaviour sanitizers", "x86-64"),
    "linux-gcc-cxx20": ("g++, C++20, -O2", "x86-64"),
    "linux-clang": ("clang, C++98, -O2", "x86-64"),
    "linux-clang-cxx20": ("clang, C++20, -O2", "x86-64"),
    "linux-thread": ("g++, thread sanitizer", "x86-64"),
    "linux-armel": ("g++, soft-float ARM v5TE", "`qemu-arm -cpu pxa255`"),
    "linux-arm64": ("g++, 64-bit ARM", "`qemu-aarch64`"),
    "windows-x64": ("mingw-w64 g++, DLL", "wine and a virtual display"),
    "windows-x86": ("mingw-w64 g++, DLL, SSE2", "nothing; exports and instructions are checked"),
    "wince-armv4": ("Windows CE DLL for ARM", "the tests' own loader under `qemu-arm`, at two addresses"),
    "wasm": ("clang, WebAssembly with and without vectors", "node"),
}


def read():
    """The result of each preset, by name."""
    results = {row["preset"]: row for row in read_json(RESULTS, COMMAND)}
    if results.keys() != PRESETS.keys():
        fail(f"{RESULTS} has the presets {sorted(results)} instead of {sorted(PRESETS)}; {COMMAND} makes it")
    return results


def expected_digests():
    """The digests that are kept for all platforms: of all tables and of those of exported functions."""
    text = (ROOT / "tests/data/digest.txt").read_text()
    found = re.findall(r"^digest( of exported functions)?: (\w+) of", text, re.MULTILINE)
    if len(found) != 2:
        fail("tests/data/digest.txt does not have the two digests of several tables")
    return {"exported" if exported else "all": digest for exported, digest in found}


def passes(result):
    return result["result"] == "passed" and result["failed"] == 0


def has_same_bits(result):
    """Whether all digests that a preset printed are the kept ones; None if it printed none."""
    expected = expected_digests()
    return all(expected[name] == digest for name, digest in result["digests"].items()) if result["digests"] else None
