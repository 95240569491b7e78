#!/usr/bin/env python3
"""readme: writes the measured tables of README.md: the speed of some calls, and the platforms.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import benchmarks
import platforms
from markdown import table, write_regions

# What is shown of the benchmarks: the call in words, family, routine, size.
CALLS = [("affine fit, 100 points", "affine_fit", "CalcAffineCoefs", 100),
         ("conformal fit, 100 points", "conformal_fit", "CalcConformalCoefs", 100),
         ("omographic fit, 100 points", "omographic_fit", "CalcOmographicCoefs", 100),
         ("omographic fit, 4 points", "omographic_fit", "CalcOmographicCoefs", 4),
         ("inverse of an affine transformation", "conversions", "AffineCoefsToInvCoefs", 1),
         ("one observation added to normal equations, 32 unknowns", "cholesky", "UpdateNormMatrixLowTri", 32),
         ("packed Cholesky factorisation, 100 unknowns", "cholesky", "CholeskyLowTri", 100),
         ("packed solution, 100 unknowns", "cholesky", "SolveCholLowTri", 100),
         ("full solution, 100 unknowns", "cholesky", "SolveChol", 100),
         ("real roots, degree 8", "roots", "Roots, polynomial", 8),
         ("two linear equations", "conversions", "Roots, two unknowns", 1),
         ("a uniform random number", "random", "Rand", 1)]

# Platforms in a user's words, what runs their tests, and their presets.
PLATFORMS = [
    ("Linux x86-64, g++, C++98 and C++20", "the machine itself",
     ["default", "linux-sanitize", "linux-gcc-cxx20", "linux-thread"]),
    ("Linux x86-64, clang, C++98 and C++20", "the machine itself", ["linux-clang", "linux-clang-cxx20"]),
    ("Linux ARM without floating-point hardware", "qemu", ["linux-armel"]),
    ("Linux ARM, 64 bits", "qemu", ["linux-arm64"]),
    ("Windows x86-64, DLL", "wine", ["windows-x64"]),
    ("Windows CE on ARM, DLL", "the tests' own loader under qemu", ["wince-armv4"]),
    ("WebAssembly, with vectors and without", "node", ["wasm"]),
    ("Windows x86, DLL", "not run: exports and instructions checked", ["windows-x86"])]


def speed():
    families, _, _ = benchmarks.read()
    rows = []
    for words, family, routine, size in CALLS:
        contest = families[family][routine]
        rows.append([words, benchmarks.time(contest.ours[size]), contest.fastest_other(size)[1],
                     benchmarks.factor(contest.advantage(size))])
    return table(["One call", "Time", "Fastest other library", "Its time / ours"], rows, left=(0, 2))


def mark(value):
    return {True: "✓", False: "✗", None: ""}[value]


def platform_table():
    results, rows = platforms.read(), []
    for words, runner, presets in PLATFORMS:
        bits = [same for same in (platforms.has_same_bits(results[preset]) for preset in presets) if same is not None]
        rows.append([words, runner, mark(all(platforms.passes(results[preset]) for preset in presets)),
                     mark(all(bits) if bits else None)])
    return table(["Platform", "Tests run on", "Tests pass", "Same bits"], rows, left=(0, 1),
                 centred=(2, 3))


write_regions("README.md", {"speed": speed(), "platforms": platform_table()})
