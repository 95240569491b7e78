"""interface.py: the public headers of C++ as lists of constants, enumerations, records and functions.

The headers are the one description of the interface. The bindings are generated from what this module reads in them, or
compared with it. It understands the style of these headers, not C++: a declaration that it does not understand is an
error.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import dataclasses
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
LIBRARY = ROOT / "nuv/nuv_math/include/nuv1math.h"
JUDGEMENT = ROOT / "apps/fitpoints/judgement/judgement.h"
SUPPORT = ROOT / "apps/fitpoints/support.cpp"

# Names without overloads for languages that have none. The key is a function and its number of arguments.
NAMES_OF_OVERLOADS = {
    ("UpdateNormMatrixLowTri", 5): "UpdateNormMatrixLowTri",
    ("UpdateNormMatrixLowTri", 7): "UpdateNormMatrixLowTriSparse",
    ("Roots", 4): "Roots",
    ("Roots", 8): "RootsLinear",
    ("Rand", 0): "Rand",
    ("Rand", 2): "RandRange",
    ("Randn", 0): "Randn",
    ("Randn", 2): "RandnScaled",
}


class NotUnderstood(Exception):
    """A header has a declaration that this module does not understand."""


@dataclasses.dataclass
class Argument:
    """An argument of a function, or a field of a record."""
    name: str
    type: str  # without const, * and &: bool, int, unsigned int, double, or the name of a record or an enumeration
    is_const: bool = False
    stars: int = 0
    is_reference: bool = False
    count: str = ""  # of a field that is an array


@dataclasses.dataclass
class Function:
    """A function."""
    name: str  # without overloads
    cpp_name: str
    result: str
    arguments: list


@dataclasses.dataclass
class Record:
    """A record."""
    name: str
    fields: list


@dataclasses.dataclass
class Enumeration:
    """An enumeration and its (name, value) pairs."""
    name: str
    values: list


@dataclasses.dataclass
class Interface:
    """What a header declares in its namespace."""
    namespace: str
    constants: list
    enumerations: list
    records: list
    functions: list


def without_comments(text):
    """The text of a header without comments and preprocessor lines."""
    text = re.sub(r"/\*.*?\*/", " ", text, flags=re.DOTALL)
    text = re.sub(r"//[^\n]*", " ", text)
    text = re.sub(r"\\\n", " ", text)
    return re.sub(r"^[ \t]*#[^\n]*", " ", text, flags=re.MULTILINE)


def read_argument(text):
    """`const double* a_vdX`, `TAffineCoefs& a_Coefs`, `double vdPacked[36]`."""
    match = re.fullmatch(r"(const )?((?:\w+::)?(?:unsigned )?\w+)\s*(\**)\s*(?:const )?(&?)\s*(\w+)(?:\[(\w+)\])?",
                         re.sub(r"\s+", " ", text.strip()))
    if not match:
        raise NotUnderstood(f"argument or field: {text.strip()!r}")
    const, kind, stars, reference, name, count = match.groups()
    return Argument(name, kind.split("::")[-1], bool(const), len(stars), bool(reference), count or "")


def read_function(result, name, text):
    """A function, from the text between its parentheses."""
    arguments = [read_argument(argument) for argument in text.split(",") if argument.strip()]
    return Function(NAMES_OF_OVERLOADS.get((name, len(arguments)), name), name, result.split("::")[-1], arguments)


def read_enumeration(name, text):
    """An enumeration whose values are all written out."""
    pairs = [part.split("=") for part in text.split(",") if part.strip()]
    if any(len(pair) != 2 for pair in pairs):
        raise NotUnderstood(f"enumeration {name}: a value is not written out")
    return Enumeration(name, [(key.strip(), int(value)) for key, value in pairs])


STATEMENT = re.compile(
    r"\s*(?:const (?P<ctype>int|double) (?P<constant>\w+) = (?P<value>[^;]+);"
    r"|struct (?P<record>\w+)\s*\{(?P<fields>[^}]*)\};"
    r"|enum (?P<enumeration>\w+)\s*\{(?P<values>[^}]*)\};"
    r"|typedef\b[^;]*;"
    r"|(?:NUV1MATH_API )?(?P<result>(?:\w+::)?\w+) (?P<function>\w+)\((?P<arguments>[^)]*)\);)")


def read_interface(path):
    """Reads a header. Fails if a statement in its namespace is not understood, or if two functions have one name."""
    text = without_comments(path.read_text(encoding="utf-8"))
    namespace = re.search(r"\bnamespace (\w+) \{(.*)\}", text, re.DOTALL)
    body = namespace.group(2)
    interface = Interface(namespace.group(1), [], [], [], [])
    position = 0
    while body[position:].strip():
        match = STATEMENT.match(body, position)
        if not match:
            raise NotUnderstood(f"{path.name}: {body[position:].strip().splitlines()[0]!r}")
        position = match.end()
        if match["constant"]:
            interface.constants.append((match["constant"], match["ctype"], match["value"].strip()))
        elif match["record"]:
            fields = [read_argument(field) for field in match["fields"].split(";") if field.strip()]
            interface.records.append(Record(match["record"], fields))
        elif match["enumeration"]:
            interface.enumerations.append(read_enumeration(match["enumeration"], match["values"]))
        elif match["function"]:
            interface.functions.append(read_function(match["result"], match["function"], match["arguments"]))
    names = [function.name for function in interface.functions]
    if len(set(names)) != len(names):
        raise NotUnderstood(f"{path.name}: an overload has no name of its own in NAMES_OF_OVERLOADS")
    return interface


def read_reasons():
    """The sentences that fitpoints has for reasons of the judgement module: name of the reason, and text."""
    table = re.search(r" TEXTS = \{(.*?)\};", SUPPORT.read_text(encoding="utf-8"), re.DOTALL).group(1)
    rows = re.findall(r'\{judgement::(REASON_\w+),((?:\s*"[^"\\]*")+)\}', table)
    if len(rows) != table.count("REASON_"):
        raise NotUnderstood(f"{SUPPORT.name}: a row of TEXTS")
    return {name: "".join(re.findall('"(.*?)"', text)) for name, text in rows}


def write_or_check(directory, files, usage):
    """The command of a generator: writes the files (name and text), or with --check fails if one is not up to date."""
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit(usage)
    stale = []
    for name, text in files.items():
        path = directory / name
        if not sys.argv[1:]:
            path.write_text(text, encoding="utf-8")
        elif not path.exists() or path.read_text(encoding="utf-8") != text:
            stale.append(name)
    if stale:
        sys.exit(f"{directory.name}/generate.py: not what the headers of C++ give: {', '.join(stale)}; run it without "
                 "an option")
