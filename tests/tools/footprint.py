#!/usr/bin/env python3
"""footprint.py: code, data and stack of the library, read from the objects that the build makes. Writes the page.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    footprint.py PAGE LIBRARY CXX OBJECT...

GCC writes the call graph of an object beside it when it compiles with -fcallgraph-info=su. The stack of a function is
the deepest sum of frames along the calls inside the library. The C library and the compiler's arithmetic helpers are
not counted, neither their stack nor their code.
"""

import pathlib
import re
import sys

sys.dont_write_bytecode = True
sys.path.append(str(pathlib.Path(__file__).resolve().parents[2] / "scripts/pages"))
from binary import exported_symbols, output_of, readable
from markdown import compiler_version, table, write

SECTIONS = {"code": ".text", "read-only data": ".rodata", "writable data": ".(data|bss)"}
ROOM = 25 * 1024  # of the device, in bytes, for code and read-only data together
STACK = 2 * 1024  # of the device, in bytes, for any exported function, a report included
REPORT = "ReportAssertion"


def function_of(title):
    """The function of a node, without the file of a local one or the suffix of a compiler's alias."""
    return title.split(":")[-1].removesuffix(".localalias")


class CallGraph:
    """Frame sizes in bytes and calls of all functions in the objects."""

    def __init__(self, objects):
        self.frames, self.calls = {}, {}
        for path in objects:
            for line in pathlib.Path(path).with_suffix(".ci").read_text().splitlines():
                self.read(line)

    def read(self, line):
        node = re.match(r'node: \{ title: "([^"]*)" label: "[^"]*\\n(\d+) bytes \(([\w,]+)', line)
        if node:
            title, size, kind = function_of(node[1]), int(node[2]), node[3]
            if kind == "dynamic":
                raise ValueError(f"the stack of {title} is not fixed: {line}")
            self.frames[title] = max(size, self.frames.get(title, 0))
        edge = re.match(r'edge: \{ sourcename: "([^"]*)" targetname: "([^"]*)"', line)
        if edge:
            self.calls.setdefault(function_of(edge[1]), set()).add(function_of(edge[2]))

    def stack_of(self, function, left_out=None):
        """The deepest sum of frames from the function down, without functions whose name contains left_out."""
        if function not in self.frames or (left_out and left_out in function):
            return 0
        below = (self.stack_of(name, left_out) for name in self.calls.get(function, ()))
        return self.frames[function] + max(below, default=0)

    def find_cycle(self):
        """A chain of functions that leads back to its first one, or None."""
        done = set()

        def visit(name, path):
            if name in path:
                return path[path.index(name):] + [name]
            if name in done:
                return None
            done.add(name)
            return next(filter(None, (visit(called, path + [name]) for called in sorted(self.calls.get(name, ())))), None)

        return next(filter(None, (visit(name, []) for name in sorted(self.calls))), None)


def sizes(objects):
    """Bytes of the objects' sections by kind."""
    text = "".join(output_of("size", "-A", path) for path in objects)
    rows = re.findall(r"^(\.\S+)\s+(\d+)", text, re.MULTILINE)
    return {kind: sum(int(size) for name, size in rows if re.match(rf"{section}(\.|$)", name))
            for kind, section in SECTIONS.items()}


def page(library, compiler, objects):
    graph = CallGraph(objects)
    symbols = exported_symbols(library)
    stacks = sorted((f"`{name.replace('nuv::', '')}`", graph.stack_of(symbol, REPORT), graph.stack_of(symbol))
                    for name, symbol in zip(readable(symbols), symbols))
    return f"""<!-- SPDX-License-Identifier: MIT -->
# What the library takes

The target `footprint` of the preset `linux-armel` makes this page from the objects of the build: soft-float ARM v5TE,
g++ {compiler_version(compiler)}, -O2 or, for the sources that the build names, -Os.

{table(["", "bytes"], sizes(objects).items())}

The device has room for {ROOM} bytes of code and read-only data and for {STACK} bytes of stack; the test `footprint`
fails above that. The writable data is the state of the random numbers. These figures do not include the C library's
functions and the compiler's arithmetic helpers.

The first column is the stack of a call that returns. The second one includes the report of a broken invariant, which
keeps its message of 512 characters on the stack and ends the process.

{table(["Function", "stack, bytes", "with a report"], stacks)}
"""


def main():
    if len(sys.argv) < 5:
        sys.exit("usage: footprint.py PAGE LIBRARY CXX OBJECT...")
    target, library, compiler, *objects = sys.argv[1:]
    write(target, page(library, compiler, objects))


if __name__ == "__main__":
    main()
