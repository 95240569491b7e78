#!/usr/bin/env python3
"""generate.py: makes the C interface from the headers of C++: nuv1math_c.h, nuv1math_c.cpp and nuv1math_c.def.

usage: generate.py           writes the files
       generate.py --check   fails if a file is not what would be written

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))
sys.dont_write_bytecode = True
from interface import JUDGEMENT, LIBRARY, read_interface, write_or_check

HEADER_START = """\
/* nuv1math_c.h: the functions of nuv1math and of its judgement module for C and for every language that can call C.
 * Copyright (c) 2026 the nuv1math authors
 * SPDX-License-Identifier: MIT
 * Made by generate.py from nuv1math.h and judgement.h; change those, and run it again.
 *
 * nuv_<name> forwards to the function <name> of nuv1math.h or judgement.h. These headers tell what it does, its units,
 * ranges and results. Nothing is computed and nothing is checked here. The types change as follows:
 *   - bool is an int: 0 for false, 1 for true. Any other value than 0 counts as true.
 *   - an enumeration is an int; its values have the prefix NUV_.
 *   - a reference is a pointer that must not be null.
 *   - a record is the record of the same fields, in the same order.
 *   - a result that is a record is written to the last argument.
 * Overloads have names of their own: nuv_Roots and nuv_RootsLinear, nuv_Rand and nuv_RandRange, nuv_Randn and
 * nuv_RandnScaled, nuv_UpdateNormMatrixLowTri and nuv_UpdateNormMatrixLowTriSparse. */

#ifndef NUV_NUV1MATH_C_H
#define NUV_NUV1MATH_C_H

#if defined(_WIN32) && defined(NUV1MATH_C_BUILD)
#define NUV1MATH_C_API __declspec(dllexport)
#elif defined(_WIN32) && !defined(NUV1MATH_C_STATIC)
#define NUV1MATH_C_API __declspec(dllimport)
#elif defined(__GNUC__)
#define NUV1MATH_C_API __attribute__((visibility("default")))
#else
#define NUV1MATH_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif
"""

HEADER_END = """
#ifdef __cplusplus
}
#endif

#endif /* NUV_NUV1MATH_C_H */
"""

SOURCE_START = """\
// nuv1math_c.cpp: forwards the functions of the C interface to those of C++.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
// Made by generate.py from nuv1math.h and judgement.h; change those, and run it again.

#include "nuv1math_c.h"

#include <cstddef>
#include <judgement.h>
#include <nuv1math.h>

// A record of C has the fields of the record of C++ at the same places.
#define SAME_SIZE(c, cpp) static_assert(sizeof(c) == sizeof(cpp), "the size of " #c)
#define SAME_PLACE(c, cpp, field) static_assert(offsetof(c, field) == offsetof(cpp, field), "the place of " #c "." #field)
#define SAME_ENUMERATION(cpp) static_assert(sizeof(int) == sizeof(cpp), "the size of " #cpp)

namespace {

// The records are the same memory under two names. Only the functions that are called here read and write it, and they
// are compiled elsewhere.
template <class TTo, class TFrom> TTo* Same(TFrom* a_pFrom)
{
    return reinterpret_cast<TTo*>(a_pFrom);
}

} // namespace
"""


class Names:
    """The types of both headers: which names are records and which are enumerations, and their namespaces."""

    def __init__(self, interfaces):
        self.records = {record.name: interface.namespace for interface in interfaces for record in interface.records}
        self.enumerations = {enumeration.name: interface.namespace
                             for interface in interfaces for enumeration in interface.enumerations}

    def in_c(self, kind):
        """The name of a type in C."""
        if kind == "bool":
            return "int"
        return f"nuv_{kind}" if kind in self.records or kind in self.enumerations else kind

    def in_cpp(self, kind):
        """The name of a type in C++, with its namespace."""
        namespace = self.records.get(kind) or self.enumerations.get(kind)
        return f"{namespace}::{kind}" if namespace else kind


def declared(names, argument):
    """A declaration in C."""
    const = "const " if argument.is_const else ""
    stars = "*" * (argument.stars + argument.is_reference)
    array = f"[{'NUV_' + argument.count if not argument.count.isdigit() else argument.count}]" if argument.count else ""
    return f"{const}{names.in_c(argument.type)}{stars} {argument.name}{array}"


def signature(names, function):
    """The signature of a function in C, without its end."""
    arguments = [declared(names, argument) for argument in function.arguments]
    result = names.in_c(function.result)
    if function.result in names.records:
        arguments.append(f"{result}* a_Result")
        result = "void"
    return f"{result} nuv_{function.name}({', '.join(arguments) or 'void'})"


def forwarded(names, argument):
    """An argument of C as the function of C++ takes it."""
    own = argument.type in names.records or argument.type in names.enumerations
    const = "const " if argument.is_const else ""
    if own and (argument.stars or argument.is_reference):
        pointer = f"Same<{const}{names.in_cpp(argument.type)}>({argument.name})"
        return f"*{pointer}" if argument.is_reference else pointer
    if argument.is_reference:
        return f"*{argument.name}"
    if argument.type in names.enumerations:
        return f"static_cast<{names.in_cpp(argument.type)}>({argument.name})"
    return f"{argument.name} != 0" if argument.type == "bool" and not argument.stars else argument.name


def definition(names, namespace, function):
    """The definition of a function of C."""
    arguments = ", ".join(forwarded(names, argument) for argument in function.arguments)
    call = f"{namespace}::{function.cpp_name}({arguments})"
    if function.result in names.records:
        call = f"*Same<{names.in_cpp(function.result)}>(a_Result) = {call}"
    elif function.result != "void":
        call = f"return {call}"
    return f"{signature(names, function)}\n{{\n{call};\n}}\n"


def macro(constant):
    """A constant as a macro."""
    name, _, value = constant
    return f"#define NUV_{name} {'(' + value + ')' if value.startswith('-') else value}"


def header_of(names, interface):
    """Constants, types and functions of one header."""
    parts = [f"/* ---- {interface.namespace} ---- */", "\n".join(map(macro, interface.constants))]
    for enumeration in interface.enumerations:
        values = [f"#define NUV_{name} {value}" for name, value in enumeration.values]
        parts.append("\n".join([f"typedef int nuv_{enumeration.name};"] + values))
    for record in interface.records:
        fields = "\n".join(f"{declared(names, field)};" for field in record.fields)
        parts.append(f"typedef struct nuv_{record.name}\n{{\n{fields}\n}} nuv_{record.name};")
    parts.append("\n".join(f"NUV1MATH_C_API {signature(names, function)};" for function in interface.functions))
    return "\n\n".join(parts) + "\n"


def checks_of(names, interface):
    """The checks that the types of C and C++ are laid out in the same way."""
    lines = [f"SAME_ENUMERATION({names.in_cpp(enumeration.name)});" for enumeration in interface.enumerations]
    for record in interface.records:
        both = f"{names.in_c(record.name)}, {names.in_cpp(record.name)}"
        lines.append(f"SAME_SIZE({both});")
        lines += [f"SAME_PLACE({both}, {field.name});" for field in record.fields]
    return "\n".join(lines) + "\n"


def formatted(name, text):
    """The text in the format of this repository."""
    return subprocess.run(["clang-format-14", f"--assume-filename={HERE / name}"], input=text, text=True, check=True,
                          stdout=subprocess.PIPE).stdout


def files():
    """The generated files: name and text."""
    interfaces = [read_interface(LIBRARY), read_interface(JUDGEMENT)]
    names = Names(interfaces)
    header = "\n".join([HEADER_START] + [header_of(names, interface) for interface in interfaces]) + HEADER_END
    parts = [SOURCE_START] + [checks_of(names, interface) for interface in interfaces]
    parts += [definition(names, interface.namespace, function)
              for interface in interfaces for function in interface.functions]
    exports = sorted(f"  nuv_{function.name}" for interface in interfaces for function in interface.functions)
    return {
        "nuv1math_c.h": formatted("nuv1math_c.h", re.sub(r"\n{3,}", "\n\n", header)),
        "nuv1math_c.cpp": formatted("nuv1math_c.cpp", "\n".join(parts)),
        "nuv1math_c.def": "\n".join(["LIBRARY nuv1math_c", "EXPORTS"] + exports) + "\n",
    }


if __name__ == "__main__":
    write_or_check(HERE, files(), __doc__)
