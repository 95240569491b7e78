#!/usr/bin/env python3
"""write_costs.py: writes the page of what a call of each exported function costs on soft-float ARM.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    write_costs.py PAGE CTEST BUILD CXX

The tests that compare these figures with their limits print them; this makes the table.
"""

import pathlib
import re
import subprocess
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parents[2] / "scripts/pages"))
sys.dont_write_bytecode = True
from markdown import compiler_version, table, version_of, write

KINDS = ["add", "sub", "mul", "div", "compare", "convert", "sqrt", "fmod", "sincos", "tan", "asin", "acos", "atan",
         "atan2", "log"]
SHOWN = 5  # kinds with a column of their own; the column "others" names the rest


def figures(ctest, build):
    """Instructions by function and input; likewise those of all operations, those of sums and products, and the counts."""
    tests = subprocess.run([ctest, "--test-dir", build, "-V", "-R", r"^(instructions|census)\."],
                           capture_output=True, text=True)
    if tests.returncode != 0:
        sys.exit(f"write_costs.py: the tests failed:\n{tests.stdout[-3000:]}{tests.stderr}")
    rows = {"instructions": {}, "census": {}}
    for what, function, given, numbers in re.findall(r"\[ device \] (\w+)\|([^|\n]*)\|([^|\n]*)\|([\d|]+)",
                                                     tests.stdout):
        rows[what][function, given] = [int(number) for number in numbers.split("|")]
    if not rows["census"] or rows["instructions"].keys() != rows["census"].keys():
        sys.exit("write_costs.py: the tests did not print their figures")
    return rows["instructions"], rows["census"]


def row(function, given, instructions, census):
    operations, sums_and_products, *counted = census
    counts = dict(zip(KINDS, counted, strict=True))
    others = ", ".join(f"{count} {kind}" for kind, count in list(counts.items())[SHOWN:] if count)
    name, comma, form = function.partition(",")
    ratio = f"{instructions / operations:.3f}" if operations else ""
    share = f"{100 * sums_and_products / instructions:.0f} %" if sums_and_products else ""
    return [f"`{name}`{comma}{form}", given, instructions, *list(counts.values())[:SHOWN], others, operations or "",
            share, ratio]


def page(instructions, census, compiler):
    header = ["Function", "input", "instructions", *KINDS[:SHOWN], "others", "in operations", "add and mul", "ratio"]
    rows = [row(*key, value[0], census[key]) for key, value in instructions.items()]
    return f"""<!-- SPDX-License-Identifier: MIT -->
# Cost on a processor without floating-point hardware

The target `device_cost` of the preset `linux-armel` makes this page: soft-float ARM v5TE,
g++ {compiler_version(compiler)} with its arithmetic helpers,
{version_of("qemu-arm")}.

- "Instructions" are those that one call executes, counted by the emulator. They are not cycles.
- The columns from "add" to "others" count the double operations and the calls of the C library's functions.
- "In operations" is the number of instructions that these operations take when they are called alone with the same
  operands.
- Divisions, square roots and comparisons of magnitudes are the library's own (`nuv/nuv1math/src/fast/arithmetic.cpp`):
  about 90, 68 and 16 instructions. A division by a power of 2 takes 43. The operations of the compiler and the C library,
  which give the same bits, take about 510, 2550 and 35. Those of Windows CE were not measured.
- "Add and mul" is the part of the instructions that the additions, subtractions and multiplications take. They are calls
  of the compiler's helpers, 40 to 65 instructions each, and the order of the operations is part of the result. So this
  part is the floor.
- "Ratio" is instructions divided by "in operations". The rest of a call moves 64-bit operands between memory and 32-bit
  registers: adding a product to a sum in memory takes at least 7 instructions beside the multiplication and the
  addition. Ratios near 1.1 are such loops. Ratios above 1.2 are integer arithmetic (random numbers), indices (sparse
  rows, the small system of an affine fit of three points), the allocator (roots of degree 2) and the search for zeros.

The tests in `tests/device` check the counts of operations exactly, by formulas, and the instructions to 3 %.

{table(header, rows, left=(0, 1, header.index("others")))}
"""


def main():
    if len(sys.argv) != 5:
        sys.exit("usage: write_costs.py PAGE CTEST BUILD CXX")
    target, ctest, build, compiler = sys.argv[1:]
    write(target, page(*figures(ctest, build), compiler))


if __name__ == "__main__":
    main()
