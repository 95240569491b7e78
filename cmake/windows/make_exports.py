#!/usr/bin/env python3
"""make_exports.py: the names under which programs of Microsoft's compiler call the DLL.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

usage: make_exports.py          writes exports-x64.def and exports-x86.def beside this file
       make_exports.py --check  fails if they are not what it would write
Clang reads the public header with the name mangling of GCC and with that of Microsoft's compiler. The linker of
mingw-w64 reads the files and exports each function under its second name too.
"""

import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "wince/tools"))
sys.dont_write_bytecode = True
from declarations import read_declarations

HEADER = ROOT / "nuv/nuv_math/include/nuv1math.h"
TARGETS = {"x64": ("x86_64-linux-gnu", "x86_64-pc-windows-msvc"), "x86": ("i686-linux-gnu", "i686-pc-windows-msvc")}


def exports_for(machine):
    gcc, microsoft = ([node["mangledName"] for node in read_declarations("clang++", HEADER, target)]
                      for target in TARGETS[machine])
    lines = [f'    "{second}" = {first}\n' for first, second in zip(gcc, microsoft)]
    return "; SPDX-License-Identifier: MIT\n; Made by make_exports.py from nuv1math.h.\nEXPORTS\n" + "".join(lines)


def main():
    wrong = []
    for machine in TARGETS:
        path = pathlib.Path(__file__).resolve().parent / f"exports-{machine}.def"
        text = exports_for(machine)
        if sys.argv[1:] == ["--check"]:
            wrong += [path.name] if path.read_text() != text else []
        elif sys.argv[1:]:
            raise SystemExit(__doc__)
        else:
            path.write_text(text)
    if wrong:
        raise SystemExit(f"not what the header gives: {' '.join(wrong)}; run cmake/windows/make_exports.py")


if __name__ == "__main__":
    main()
