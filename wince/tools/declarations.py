#!/usr/bin/env python3
"""declarations.py: makes the export list, linker options and test shim from the declarations of the public header.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

Clang reads the header twice: with the name mangling of GCC and with that of Microsoft's compiler, both for ARM.
  --exports FILE   one line per function: GCC's name and Microsoft's name
  --roots FILE     the linker options that keep these functions
  --shim FILE      C++ source that defines each function as a call of the function that the image exports
"""

import argparse
import json
import pathlib
import subprocess

GCC_TARGET = "arm-linux-gnueabi"
MICROSOFT_TARGET = "thumbv7-windows-msvc"


def functions_of(node):
    if node.get("kind") == "FunctionDecl":
        yield node
    for child in node.get("inner", []):
        yield from functions_of(child)


def read_declarations(clang, header, target):
    text = subprocess.run([clang, f"--target={target}", "-x", "c++", "-std=c++98", "-fsyntax-only", "-Xclang",
                           "-ast-dump=json", header], check=True, stdout=subprocess.PIPE).stdout
    return list(functions_of(json.loads(text)))


def shim_definition(function):
    result = function["type"]["qualType"].split(" (", 1)[0]
    types = [node["type"]["qualType"] for node in function.get("inner", []) if node["kind"] == "ParmVarDecl"]
    parameters = ", ".join(f"{kind} a_{i}" for i, kind in enumerate(types))
    # A reference is passed as an address.
    arguments = "".join(f", {'&' if kind.endswith('&') else ''}a_{i}" for i, kind in enumerate(types))
    return (f"{result} {function['name']}({parameters})\n{{\n"
            f"    static void* const pExport = nuv_tests::FindInImage(\"{function['mangledName']}\");\n"
            f"    return nuv_tests::CallImage<{result}>(pExport{arguments});\n}}\n")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--clang", required=True)
    parser.add_argument("--header", required=True, type=pathlib.Path)
    for output in ("exports", "roots", "shim"):
        parser.add_argument(f"--{output}", required=True, type=pathlib.Path)
    arguments = parser.parse_args()

    functions = read_declarations(arguments.clang, arguments.header, GCC_TARGET)
    microsoft = read_declarations(arguments.clang, arguments.header, MICROSOFT_TARGET)
    if [node["name"] for node in functions] != [node["name"] for node in microsoft]:
        raise SystemExit("the two compilers read different declarations")
    arguments.exports.write_text("".join(
        f"{gcc['mangledName']} {other['mangledName']}\n" for gcc, other in zip(functions, microsoft)))
    arguments.roots.write_text("".join(f"-u {node['mangledName']}\n" for node in functions))
    arguments.shim.write_text(
        "// Made by declarations.py from the public header.\n\n"
        f'#include "forward.h"\n#include "{arguments.header.name}"\n\nnamespace nuv {{\n\n'
        + "\n".join(shim_definition(node) for node in functions) + "\n} // namespace nuv\n")


if __name__ == "__main__":
    main()
