#!/usr/bin/env python3
"""make_imports.py: writes the import directory of an image and a stub for each imported function, as assembly.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

usage: make_imports.py OBJECT DEF OUTPUT
OBJECT is the code of the image as one relocatable object. DEF lists what may be imported.
"""

import pathlib
import sys

import elf32

IDATA_RVA = 0x1000  # as in image.ld

STUB = """
    .section .text.{name}, "ax", %progbits
    .align 2
    .globl {name}
    .hidden {name}
    .type {name}, %function
{name}:
    ldr r12, 1f
    ldr r12, [r12]
    bx r12 // the imported function may be Thumb code
1:  .word slot_{name}
"""


def read_definition(path):
    library, names = None, set()
    for line in path.read_text().splitlines():
        words = line.split(";", 1)[0].split()
        if words[:1] == ["LIBRARY"]:
            library = words[1]
        elif words and words != ["EXPORTS"]:
            names.add(words[0])
    return library, names


def used_names(path):
    """Undefined names that a relocation uses. Dropped sections leave undefined symbols that nothing uses."""
    return sorted({relocation.symbol.name for _, relocation in elf32.ElfFile(path).relocations()
                   if relocation.symbol.section == elf32.UNDEFINED and relocation.symbol.name})


def rva(label):
    return f"    .word {label} - idata + {IDATA_RVA:#x}"


def import_directory(library, names):
    lines = ['    .section .idata, "aw", %progbits', "    .align 2", "idata:",
             rva("lookup"), "    .word 0, 0", rva("library"), rva("slots"), "    .word 0, 0, 0, 0, 0"]
    # The loader replaces the contents of the slots, which are equal to the lookup table before.
    for table, prefix in (("lookup", "entry"), ("slots", "slot")):
        lines.append(f"{table}:")
        lines += [f"{prefix}_{name}:\n{rva('hint_' + name)}" for name in names]
        lines.append("    .word 0")
    lines += ["    .globl slots", "    .globl slots_end", "    .hidden slots", "    .hidden slots_end",
              "    .set slots_end, ."]
    for name in names:
        lines += ["    .align 1", f"hint_{name}:", "    .hword 0", f'    .asciz "{name}"']
    lines += ["library:", f'    .asciz "{library}"']
    return "\n".join(lines) + "\n"


def main():
    _, code, definition, output = sys.argv
    library, offered = read_definition(pathlib.Path(definition))
    names = used_names(code)
    missing = [name for name in names if name not in offered]
    if missing:
        raise SystemExit(f"{library} does not offer: {' '.join(missing)}")
    head = "// Made by make_imports.py.\n    .syntax unified\n    .arm\n"
    stubs = "".join(STUB.format(name=name) for name in names)
    pathlib.Path(output).write_text(head + import_directory(library, names) + stubs)


if __name__ == "__main__":
    main()
