"""binary.py: what a built library exports and needs, read by LLVM's tools from ELF files and Windows images alike.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import pathlib
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
EXPORTS = (ROOT / "tests/exports.txt").read_text().splitlines()


def output_of(*command, text=None):
    """What a command prints; an error with its messages if it fails."""
    result = subprocess.run(command, capture_output=True, text=True, input=text)
    if result.returncode != 0:
        raise AssertionError(f"{command} ended with {result.returncode}:\n{result.stdout}{result.stderr}")
    return result.stdout


def readable(symbols):
    return output_of("c++filt", text="\n".join(symbols) + "\n").splitlines()


def is_elf(library):
    return pathlib.Path(library).read_bytes()[:4] == b"\x7fELF"


def exported_symbols(library):
    if is_elf(library):
        return output_of("llvm-nm", "--dynamic", "--defined-only", "--just-symbol-name", library).splitlines()
    return re.findall(r"^ *Name: (.+)$", output_of("llvm-readobj", "--coff-exports", library), re.MULTILINE)


def needed_libraries(library):
    text = output_of("llvm-readobj", "--needed-libs", library)
    return set(re.search(r"NeededLibraries \[(.*?)\]", text, re.DOTALL)[1].split())
