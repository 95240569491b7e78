#!/usr/bin/env python3
"""accuracy: writes docs/accuracy.md and docs/accuracy.svg, the errors of the library beside arithmetic of 120 digits.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    accuracy.py PROGRAM            PROGRAM is the built tests/tools/accuracy.cpp, which makes the tables
    accuracy.py --check PROGRAM    compares docs/accuracy.md with these tables and writes nothing
"""

import re
import subprocess
import sys

from markdown import ROOT, check_arguments, table, write

DOCUMENT = ROOT / "docs/accuracy.md"
PICTURE = ROOT / "docs/accuracy.svg"
KINDS = ("conformal", "affine", "omographic")
NO_FIT = 10.0  # where the plot has what has no result

# The page; the parts in braces are measured.
PAGE = """<!-- SPDX-License-Identifier: MIT -->
# How accurate the results are

`scripts/docs accuracy` makes this page, and a test compares it with what the library does now. Every result is compared
with one of 120 digits. The figures are the greatest errors seen, rounded up to one digit; "none" means that the call
failed or gave a result that is not finite.

In short:

- **Conformal and affine fits are safe** at any offset. A, B, D and E are good to a few units in the last place. A
  mapped point is off by the rounding of the offset itself, up to 4e-9 at 1e7.
- **The omographic fit is safe** if the offset is at most a hundred times the extent of the points. From a thousand
  times on it loses digits fast. From ten thousand times on it can fail or, worse, succeed with a useless result.
  **Subtract a local origin from source and target before the fit**, as `apps/fitpoints` does.
- **Cholesky is as good as it can be.** The factor is that of a matrix within the rounding of the given one, and the
  solution loses as many digits as the condition number has.
- **Roots are good if they are far apart.** A root of multiplicity k has only a kth of the digits, and is reported as
  fewer roots or not at all: [roots.md](roots.md) counts them.
- **Angles are good to the last places** unless two of them nearly coincide.

## Fits

Each fit has sixteen points of a square. Both systems are shifted by the offset, and the target points have noise of a
ten-thousandth of the extent. A figure is the greatest distance, in target units, between a control point mapped with
the library's coefficients (without further rounding) and the same point mapped with the exact least-squares
transformation. Bold figures are greater than the noise.

![Errors of the fits](accuracy.svg)

Conformal:

{conformal}

Affine:

{affine}

Omographic:

{omographic}

The same by offset/extent. Distances are relative to the extent, errors of the coefficients A, B, D and E to the
greatest of them. The last figure tells by which part of itself the sum of squared residuals is too great.

{ratios}

A transformation that takes the source origin close to infinity has no good coefficients at any extent. A local origin
in the middle of the points helps there too. The sample of [fitpoints](../apps/fitpoints/README.md), as it is and from a
local origin (distances relative to the extent of the target):

{files}

`accuracy FILE...` makes that table for other files of control points.

## Conversions and inverses

Relative errors of the inverse of an affine transformation and of points mapped backwards, median / greatest of 2000.
They depend on how close to parallel the axes are:

{inverses}

Parameters, angles and normal numbers depend on the platform's elementary functions. Tests on every platform hold them
to these numbers of units in the last place. The unit is that of the result or, where the result is a sum that cancels,
that of the greatest term. The tests of each platform write the greatest errors seen to `ulps.txt` in its build
directory.

{limits}

Some platforms reduce angles with a pi of 66 bits (the x87 instructions that mingw-w64 uses). A sine or cosine that
should be 6e-17 is wrong in its fifth digit there, which is no error relative to 1.

## Cholesky

The norm of A - L L' in units of n eps |A|, and the relative error of the solution x: each the greatest of several
random matrices. The elements of L cannot grow, because the squares of a row add up to its diagonal element of A. Both
storage forms give the same factor.

{cholesky}

At a condition number of 2^53 the matrix is singular within rounding, and no digit of the solution need be right.

## Roots of polynomials

`Roots` was called with the tolerance 1e-6. Errors are relative to the true roots of the polynomial whose coefficients
are the rounded ones.

{polynomials}

## Angles

`SolveLinTrig`, 500 random equations in each row. The two angles approach each other as |c| approaches hypot(a, b):

{linear}

`SolveQuadTrig`, with four coefficients or more:

{quadratic}
"""


def make_tables(program):
    text = subprocess.run([program, ROOT / "apps/fitpoints/sample.csv"], check=True, capture_output=True,
                          text=True).stdout
    parts = re.split(r"^== (\w+)\n", text, flags=re.MULTILINE)
    return {name: table.strip() for name, table in zip(parts[1::2], parts[2::2])}


def limits():
    """Of the routines that go through the platform's functions, as their tests hold them."""
    found = re.findall(r'TErrors Errors\("(\w+)", ([0-9.]+)\)', (ROOT / "tests/ulp_test.cpp").read_text())
    return table(["routine", "units at most"], [[f"`{name}`", f"{float(limit):g}"] for name, limit in found])


def document(tables):
    return PAGE.format(limits=limits(), **tables)


def plot(tables):
    blocks = []
    for kind in KINDS:
        rows = [[cell.strip(" *") for cell in line.strip("|").split("|")] for line in tables[kind].splitlines()]
        offsets = [float(cell) for cell in rows[0][1:]]
        for extent, *cells in rows[2:]:
            for offset, cell in zip(offsets, cells):
                error = NO_FIT if cell == "none" else float(cell) / float(extent)
                blocks.append(f"{kind} {max(offset / float(extent), 1e-3):g} {error:g}")
    points = "\n".join(blocks)
    curves = ", ".join(f'$points using (stringcolumn(1) eq "{kind}" ? $2 : 1/0):3 with points pt {mark} lc "black" title "{kind}"'
                       for kind, mark in zip(KINDS, (6, 4, 7)))
    return f"""set terminal svg size 800,480 background "white"
set logscale xy
set format xy "10^{{%T}}"
set key left top
set xlabel "offset / extent (0 at the left edge)"
set ylabel "greatest error / extent ({NO_FIT:g}: no result)"
set yrange [1e-17:100]
$points << END
{points}
END
plot {curves}, 1e-4 with lines dt 2 lc "gray" title "noise of the points"
"""


def main():
    arguments = check_arguments(__doc__.splitlines()[0])
    tables = make_tables(arguments.program)
    if arguments.check:
        if document(tables) != DOCUMENT.read_text():
            sys.exit(f"{DOCUMENT.name} is not what this library gives; scripts/docs accuracy writes it")
        return
    picture = subprocess.run(["gnuplot"], input=plot(tables), text=True, check=True, capture_output=True).stdout
    write(PICTURE, picture)
    write(DOCUMENT, document(tables))


main()
