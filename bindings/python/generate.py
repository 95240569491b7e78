#!/usr/bin/env python3
"""generate.py: makes what the package for Python takes from the headers of C++: the enumerations and records in
_interface.py, and the docstrings in _functions.py. The examples at the end of a docstring stay as they are.

usage: generate.py           writes the files
       generate.py --check   fails if a file is not what would be written

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import ast
import dataclasses
import pathlib
import re
import sys
import textwrap

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))
sys.dont_write_bytecode = True
from interface import JUDGEMENT, LIBRARY, NAMES_OF_OVERLOADS, read_interface, read_reasons, write_or_check

PACKAGE = HERE / "src/nuv1math"
WIDTH = 120
HEAD = '''\
"""_interface.py: constants, enumerations and records of the headers of C++.

Made by generate.py from nuv1math.h, judgement.h and support.cpp of fitpoints; change those, and run it again.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import enum
from typing import NamedTuple
'''

# Names that differ from those of C++ by more than the prefix.
NAMES = {"vdA": "coefficients", "iDegree": "degree", "a_iPoints": "n", "a_iUnknowns": "n", "a_iN": "n", "a_iCount": "k",
         "a_pMatrix": "matrix", "a_pVector": "vector", "a_vdAngles": "angles", "a_vdRoots": "roots"}
# Functions that return several numbers as one named tuple.
PARAMETERS = {"AffineCoefsToParam": "AffineParams", "ConformalCoefsToParam": "ConformalParams"}
# The shapes of arrays, by their names; a function can have others.
SHAPES = {
    "x": "(n,) array_like", "y": "(n,) array_like", "xa": "(n,) array_like", "ya": "(n,) array_like",
    "matrix": "(n(n+1)/2,) ndarray of float64", "factor": "(n(n+1)/2,) array_like", "vector": "(n,) ndarray of float64",
    "row": "(n,) array_like", "values": "(k,) array_like", "indices": "(k,) array_like of int",
    "coefficients": "(degree + 1,) array_like", "roots": "(count,) ndarray of float64",
    "angles": "(count,) ndarray of float64",
    "Cholesky.matrix": "(n, n) ndarray of float64", "SolveChol.factor": "(n, n) array_like",
    "DeleteCholLowTri.matrix": "ndarray of float64, or None", "DeleteCholLowTri.vector": "ndarray of float64, or None",
}
# What is other than in C++.
DIFFERENCES = {
    "AffineUntransform": "Here the process does not end: the function raises `ImpossibleError` instead.",
    "InitCholLowTri": "Here the arrays release their memory by themselves when nothing refers to them any more.",
    "DeleteCholLowTri": "Here the arrays can still be read; writing to them fails. Their memory is released when "
                        "nothing refers to them any more.",
    "UpdateNormMatrixLowTriSparse": "Here an index that is n or more raises `ValueError`.",
}
RAISED = {
    "RET_IMPOSSIBLE": ("ImpossibleError", "If the result of C++ is RET_IMPOSSIBLE, see below."),
    "RET_INDETERMINATE": ("IndeterminateError", "If the result of C++ is RET_INDETERMINATE, see below."),
    "true: ": ("ImpossibleError", "If the result of C++ is false, see below."),
    "true; false": ("NotPositiveDefiniteError", "If the result of C++ is false, see below."),
}


def python_name(name):
    """`a_vdXa` -> `xa`, `dInvA` -> `inv_a`, `TAffineCoefs` -> `AffineCoefs`."""
    if name in NAMES:
        return NAMES[name]
    if re.match(r"T[A-Z]|enum[A-Z]", name):
        return re.sub(r"^(T|enum)", "", name)
    bare = re.sub(r"^(a_)?(vd|vi|i|b|d|p)?(?=[A-Z])", "", name)
    return re.sub(r"(?<=[a-z])([A-Z])", r"_\1", bare).lower()


# ---- The comments of the header ----


@dataclasses.dataclass
class Comment:
    """A comment of doxygen: paragraphs, and its commands."""
    paragraphs: list
    parameters: dict
    result: str


def in_python(text):
    """Text of the header in the terms of Python."""
    text = re.sub(r"a_bSameOrientation = false", "same_orientation = False", text)
    text = re.sub(r"\b(?:nuv::)?(a_\w+|vdA|iDegree|T[A-Z][a-z]\w+|d(?:Inv)?[A-H]|dT[xy]|enum[A-Z]\w+)\b",
                  lambda match: python_name(match.group(1)), text)
    text = re.sub(r"@f\[\s*(.*?)\s*@f\]", lambda match: f"\n\n.. math:: {' '.join(match.group(1).split())}\n\n", text,
                  flags=re.DOTALL)
    return re.sub(r"@image.*?(?=\n\n|\Z)|@ingroup \w+\n?", "", text, flags=re.DOTALL).strip()


def read_comment(text):
    """A comment, from the text between its ends."""
    text = re.sub(r"^ ?\* ?", "", text, flags=re.MULTILINE)
    text, *commands = re.split(r"^ ?@(?=param|return)", text, flags=re.MULTILINE)
    paragraphs = re.split(r"\n\s*\n", in_python(textwrap.dedent(" " + text)))
    comment = Comment([part.strip("\n") for part in paragraphs], {}, "")
    for command in commands:
        word, rest = command.split(None, 1)
        rest = re.split(r"\n\s*\n", rest)[0]
        if word == "return":
            comment.result = in_python(" ".join(rest.split()))
        else:
            name, rest = rest.split(None, 1)
            comment.parameters[name] = in_python(" ".join(rest.split()))
    return comment


COMMENT = r"/\*\*(?P<comment>(?:(?!\*/).)*)\*/\s*"


def comments_of_functions(header):
    """The comment of each function, by its name without overloads."""
    comments = {}
    for match in re.finditer(COMMENT + r"NUV1MATH_API \S+ (?P<name>\w+)\((?P<arguments>[^)]*)\);", header, re.DOTALL):
        count = len([argument for argument in match["arguments"].split(",") if argument.strip()])
        name = NAMES_OF_OVERLOADS.get((match["name"], count), match["name"])
        comments[name] = read_comment(match["comment"])
    return comments


def comments_of_types(header):
    """The comment of each record and enumeration, and those of its fields or values."""
    comments = {}
    for match in re.finditer(COMMENT + r"(?:struct|enum) (?P<name>\w+)\s*\{(?P<body>[^}]*)\};", header, re.DOTALL):
        members = re.findall(r"(\w+)(?:\s*=\s*\d+)?[;,]?\s*/\*\*< (.*?) ?\*/", match["body"], re.DOTALL)
        comments[match["name"]] = (read_comment(match["comment"]),
                                   {name: in_python(" ".join(text.split())) for name, text in members})
    return comments


# ---- Docstrings ----


def wrapped(paragraph, indent):
    """The lines of a paragraph or of a list."""
    if paragraph.startswith(".. math::"):
        return [" " * indent + paragraph]
    lines = []
    for item in re.split(r"\n(?=\s*(?:-|\d\.) )", paragraph):
        marker = re.match(r"\s*(?:-|\d\.) |", item).group()
        if marker and lines and not re.match(r" *(?:-|\d\.|  ) ", lines[-1]):
            lines.append("")
        lines += textwrap.wrap(" ".join(item.split()), WIDTH - 5, initial_indent=" " * indent, break_long_words=False,
                               subsequent_indent=" " * (indent + len(marker.strip()) + bool(marker)),
                               break_on_hyphens=False)
    return lines


def section(title, entries):
    """A section of numpydoc: (head, text) pairs."""
    lines = [title, "-" * len(title)]
    for head, text in entries:
        lines += [head] + wrapped(text, 4)
    return lines + [""] if entries else []


def capital(text):
    """A text that begins with a capital letter and ends with a full stop, unless it begins with a symbol."""
    symbol = re.match(r"(?!a )\w\b|(?!false|true)\w+:|\w\d", text)
    text = text if symbol else text[:1].upper() + text[1:]
    return text if text.endswith(".") else text + "."


def kind_of(argument, function, records):
    """The type of an argument for its reader."""
    name = python_name(argument.name)
    if argument.stars:
        return SHAPES.get(f"{function.name}.{name}") or SHAPES[name]
    if argument.type in records:
        return python_name(argument.type)
    return {"double": "float", "enumMethodUsed": "MethodUsed"}.get(argument.type, argument.type)


def outputs(function, comment, records):
    """The (type, text) pairs of what is returned: outputs that are no argument in Python."""
    found = []
    for argument in function.arguments:
        text = comment.parameters[argument.name]
        if text.startswith("out: "):
            text = text[len("out: "):].split("; must be a different record")[0]  # which it always is here
            found.append((python_name(argument.name), kind_of(argument, function, records), text))
    if function.name in PARAMETERS:
        parts = "; ".join(f"{name}: {text}" for name, _, text in found)
        return [(PARAMETERS[function.name], capital(parts))]
    if not found and function.result == "double":
        return [("float", capital(comment.result))]
    return [(f"{name} : {kind}", capital(text)) for name, kind, text in found]


def inputs(function, comment, definition, records):
    """The (name and type, text) pairs of the parameters."""
    arguments = {python_name(argument.name): argument for argument in function.arguments}
    if function.name == "InitCholLowTri":
        arguments["unknowns"] = arguments["n"]
    optional = len(definition.args.args) - len(definition.args.defaults)
    found = []
    for index, argument in enumerate(definition.args.args):
        kind = kind_of(arguments[argument.arg], function, records)
        kind = kind + ", optional" if index >= optional else kind
        found.append((f"{argument.arg} : {kind}", capital(comment.parameters[arguments[argument.arg].name])))
    return found


def raised(function, comment):
    """The exceptions of a function."""
    found = [entry for word, entry in RAISED.items() if word in comment.result]
    if function.name == "AffineUntransform":
        found.append(("ImpossibleError", "If the determinant is zero and the equations contradict each other."))
    if any(argument.stars or argument.is_reference and argument.is_const for argument in function.arguments) \
            and function.name not in ("InitCholLowTri", "SolveLinTrig", "SolveQuadTrig"):
        in_place = any("out: " in text and not text.startswith("out: ") for text in comment.parameters.values())
        found.append(("ValueError", "If an argument has not the shape above" + ", or cannot be written" * in_place + "."))
    return found


def docstring(function, comment, definition, records, examples):
    """The lines of a docstring of numpydoc."""
    summary, _, rest = " ".join(comment.paragraphs[0].split()).partition(". ")
    notes = [index for index, text in enumerate(comment.paragraphs) if re.match(r"Limit|Method", text)]
    first_note = notes[0] if notes else len(comment.paragraphs)
    lines = [capital(summary.rstrip(":")), ""]
    for paragraph in [rest] * bool(rest) + comment.paragraphs[1:first_note]:
        lines += wrapped(paragraph, 0) + [""]
    lines += section("Parameters", inputs(function, comment, definition, records))
    lines += section("Returns", outputs(function, comment, records))
    lines += section("Raises", raised(function, comment))
    told = [DIFFERENCES[function.name]] if function.name in DIFFERENCES else []
    told += comment.paragraphs[first_note:]
    if comment.result and function.result != "double":
        told.append(f"Result of C++: {comment.result}")
    if told:
        lines += ["Notes", "-----"]
        for paragraph in told:
            lines += wrapped(paragraph, 0) + [""]
    return lines + examples


def replaced_docstrings(text, interface, comments):
    """The module of functions with the docstrings that the header gives."""
    functions = {function.name: function for function in interface.functions}
    records = {record.name for record in interface.records}
    lines = text.split("\n")
    found = [node for node in ast.parse(text).body if isinstance(node, ast.FunctionDef) and node.name in functions]
    if {node.name for node in found} != set(functions):
        sys.exit(f"generate.py: _functions.py lacks {sorted(set(functions) - {node.name for node in found})}")
    for node in reversed(found):
        old = (ast.get_docstring(node) or "").split("\n")
        examples = old[old.index("Examples"):] if "Examples" in old else []
        new = docstring(functions[node.name], comments[node.name], node, records, examples)
        new = "\n".join(new).rstrip().split("\n")
        place = node.body[0]
        if not (isinstance(place, ast.Expr) and isinstance(place.value, ast.Constant)):
            sys.exit(f"generate.py: {node.name} has no place for its docstring")
        raw = "r" if any("\\" in line for line in new) else ""
        block = [f'{raw}"""{new[0]}'] + new[1:] + ['"""']
        lines[place.lineno - 1:place.end_lineno] = [f"    {line}".rstrip() for line in block]
    return "\n".join(lines)


# ---- Constants, enumerations and records ----


def type_docstring(comment, members):
    """The docstring of a record or an enumeration."""
    text = " ".join(comment.paragraphs[0].split())
    lines = [capital(text.rstrip(":")), ""]
    for paragraph in comment.paragraphs[1:]:
        lines += wrapped(paragraph, 0) + [""]
    lines += section("Attributes", [(name, capital(told)) for name, told in members])
    lines = "\n".join(lines).rstrip().split("\n")
    raw = "r" if any("\\" in line for line in lines) else ""
    if len(lines) == 1:
        return f'    {raw}"""{lines[0]}"""'
    return "\n".join(f"    {line}".rstrip() for line in [f'{raw}"""{lines[0]}'] + lines[1:] + ['"""'])


def enumeration_text(enumeration, comment):
    """An enumeration. Its values lose the part of their names that all have."""
    prefix = re.match(r"[A-Z]+_", enumeration.values[0][0]).group()
    told = [(name[len(prefix):], comment[1][name]) for name, _ in enumeration.values]
    lines = [f"class {python_name(enumeration.name)}(enum.IntEnum):", type_docstring(comment[0], told), ""]
    lines += [f"    {name[len(prefix):]} = {value}" for name, value in enumeration.values]
    return "\n".join(lines)


def record_text(record, comment):
    """A record of doubles as a named tuple."""
    told = [(f"{python_name(field.name)} : float", comment[1][field.name]) for field in record.fields]
    lines = [f"class {python_name(record.name)}(NamedTuple):", type_docstring(comment[0], told), ""]
    lines += [f"    {python_name(field.name)}: float" for field in record.fields]
    return "\n".join(lines)


def parameters_text(function, comment):
    """The numbers that a function returns as a named tuple."""
    told = [(python_name(argument.name), comment.parameters[argument.name][len("out: "):])
            for argument in function.arguments if argument.is_reference and not argument.is_const]
    lines = [f"class {PARAMETERS[function.name]}(NamedTuple):",
             type_docstring(Comment([f"What {function.name} returns."], {}, ""),
                            [(f"{name} : float", text) for name, text in told]), ""]
    lines += [f"    {name}: float" for name, _ in told]
    return "\n".join(lines)


def interface_text(header, interface, comments, judgement_header, judgement):
    """_interface.py."""
    version = ".".join(re.findall(r"^#define NUV1MATH_VERSION_[A-Z]+ (\d+)$", header, re.MULTILINE))
    meanings = re.findall(r"\|\s*-?\d+ \| (RET_\w+)\s*\| (.*?)\s*\|", header)
    types = comments_of_types(header)
    parts = [HEAD, f'VERSION = "{version}"\n'
             + "".join(f"{name} = {value}\n" for name, _, value in interface.constants)
             + "\n# The meanings of the results that are not counts.\nMEANINGS = {\n"
             + "".join(f'    {name}: "{text}",\n' for name, text in meanings) + "}\n"]
    parts += ["\n" + enumeration_text(enumeration, types[enumeration.name]) + "\n"
              for enumeration in interface.enumerations]
    types_of_judgement = comments_of_types(judgement_header)
    parts += ["\n" + enumeration_text(enumeration, types_of_judgement[enumeration.name]) + "\n"
              for enumeration in judgement.enumerations]
    parts.append("\n# The sentences of fitpoints.\nREASON_TEXTS = {\n" + "".join(
        f'    Reason.{name[len("REASON_"):]}:\n        "{text}",\n' for name, text in read_reasons().items()) + "}\n")
    parts += ["\n" + record_text(record, types[record.name]) + "\n" for record in interface.records]
    parts += ["\n" + parameters_text(function, comments[function.name]) + "\n"
              for function in interface.functions if function.name in PARAMETERS]
    return "\n".join(parts)


def files():
    """The generated files: name and text."""
    header = LIBRARY.read_text(encoding="utf-8")
    interface, judgement = read_interface(LIBRARY), read_interface(JUDGEMENT)
    comments = comments_of_functions(header)
    functions = (PACKAGE / "_functions.py").read_text(encoding="utf-8")
    return {
        "_interface.py": interface_text(header, interface, comments, JUDGEMENT.read_text(encoding="utf-8"), judgement),
        "_functions.py": replaced_docstrings(functions, interface, comments),
    }


if __name__ == "__main__":
    write_or_check(PACKAGE, files(), __doc__)
