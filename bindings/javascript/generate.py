#!/usr/bin/env python3
"""generate.py: makes interface.mjs and interface.d.mts from the headers of C++: values of enumerations, places of the
fields of records in the memory of a module, and types.

usage: generate.py           writes the files
       generate.py --check   fails if a file is not what would be written

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import pathlib
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))
sys.dont_write_bytecode = True
from interface import JUDGEMENT, LIBRARY, read_interface, read_reasons, write_or_check

HEAD = """\
// {name}: {what}
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
// Made by generate.py from nuv1math.h, judgement.h and support.cpp of fitpoints; change those, and run it again.
"""
SIZES = {"double": 8, "int": 4, "unsigned int": 4}


class Layouts:
    """Records as the compiler for wasm32 lays them out: a pointer has 4 bytes, a double is aligned to 8."""

    def __init__(self, interfaces):
        self.enumerations = {enumeration.name for interface in interfaces for enumeration in interface.enumerations}
        self.constants = {name: value for interface in interfaces for name, _, value in interface.constants}
        self.records = {}
        for interface in interfaces:
            for record in interface.records:
                self.records[record.name] = self.lay_out(record)

    def kind_of(self, field):
        """The type of a field as the reader and writer of records know it; a record is its name."""
        if field.stars:
            return "pointer"
        return "int" if field.type in self.enumerations else field.type

    def size_of(self, kind):
        """Size and alignment."""
        if kind in self.records:
            return self.records[kind]["size"], self.records[kind]["alignment"]
        size = 4 if kind == "pointer" else SIZES[kind]
        return size, size

    def lay_out(self, record):
        """Places of the fields, and the size."""
        place, alignment, fields = 0, 1, []
        for field in record.fields:
            kind = self.kind_of(field)
            size, needed = self.size_of(kind)
            place = -(-place // needed) * needed
            count = int(self.constants.get(field.count, field.count or 0))
            fields.append((field.name, kind, place, count))
            place += size * max(count, 1)
            alignment = max(alignment, needed)
        return {"size": -(-place // alignment) * alignment, "alignment": alignment, "fields": fields}


def module(interfaces, layouts):
    """interface.mjs."""
    lines = [HEAD.format(name="interface.mjs", what="values of enumerations, and where the fields of records are.")]
    for interface in interfaces:
        for name, _, value in interface.constants:
            lines.append(f"export const {name} = {value};")
        for enumeration in interface.enumerations:
            values = ", ".join(f"{name}: {value}" for name, value in enumeration.values)
            lines.append(f"export const {enumeration.name} = Object.freeze({{ {values} }});")
    lines.append("\n// The sentences of fitpoints.\nexport const REASON_TEXTS = {")
    lines += [f"    [enumReason.{name}]: '{text}'," for name, text in read_reasons().items()] + ["};"]
    lines.append("\n// Record: size, and [name, type, place, number of elements or 0 if it is no array] of each field.")
    lines.append("export const records = {")
    for name, layout in layouts.records.items():
        lines.append(f"    {name}: {{ size: {layout['size']}, fields: [")
        lines += [f"        ['{field}', '{kind}', {place}, {count}]," for field, kind, place, count in layout["fields"]]
        lines.append("    ] },")
    return "\n".join(lines + ["};", ""])


def typescript(kind, layouts):
    """The type of a field."""
    return kind if kind in layouts.records else "number"


def types(interfaces, layouts):
    """interface.d.mts."""
    lines = [HEAD.format(name="interface.d.mts", what="types of the records, and the functions of the C interface.")]
    for interface in interfaces:
        lines += [f"export const {name}: {value};" for name, _, value in interface.constants]
        for enumeration in interface.enumerations:
            values = "; ".join(f"readonly {name}: {value}" for name, value in enumeration.values)
            lines.append(f"export const {enumeration.name}: {{ {values} }};")
    lines += ["/** The sentences of fitpoints for reasons that need no numbers. */",
              "export const REASON_TEXTS: { readonly [reason: number]: string | undefined };"]
    for name, layout in layouts.records.items():
        lines.append(f"\nexport interface {name} {{")
        for field, kind, _, count in layout["fields"]:
            lines.append(f"    {field}: {typescript(kind, layouts)}{'[]' if count else ''};")
        lines.append("}")
    lines.append("\n/** The records by their names. */\nexport interface Records {")
    lines += [f"    {name}: {name};" for name in layouts.records] + ["}"]
    lines.append("\n/** The functions of nuv1math_c.h. A pointer is an address in the memory of the module. */")
    lines.append("export interface Functions {")
    for interface in interfaces:
        for function in interface.functions:
            arguments = [f"{argument.name}: number" for argument in function.arguments]
            result = "void" if function.result == "void" else "number"
            if function.result in layouts.records:
                arguments.append("a_Result: number")
                result = "void"
            lines.append(f"    nuv_{function.name}({', '.join(arguments)}): {result};")
    lines += ["    malloc(size: number): number;", "    free(address: number): void;",
              "    /** Memory that grows gets another buffer. */",
              "    readonly memory: { readonly buffer: ArrayBuffer };", "}", ""]
    return "\n".join(lines)


def files():
    """The generated files: name and text."""
    interfaces = [read_interface(LIBRARY), read_interface(JUDGEMENT)]
    layouts = Layouts(interfaces)
    return {"interface.mjs": module(interfaces, layouts), "interface.d.mts": types(interfaces, layouts)}


if __name__ == "__main__":
    write_or_check(HERE, files(), __doc__)
