"""mutations.py: the changes of a line of the library's source that mutate.py tries.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import json
import pathlib
import re
import subprocess
import typing

SWAPS = {" + ": [" - "], " - ": [" + "], " * ": [" / "], " / ": [" * "], " % ": [" / "],
         " += ": [" -= "], " -= ": [" += "], " *= ": [" /= "], " /= ": [" *= "],
         " < ": [" <= ", " > "], " <= ": [" < "], " > ": [" >= ", " < "], " >= ": [" > "],
         " == ": [" != "], " != ": [" == "], " && ": [" || "], " || ": [" && "]}
FACTOR = r"[\w.]*\bv?d[A-Z\d]\w*(?:\[[^\]]+\])?|[\w.]+\[[^\]]+\]"  # a floating-point operand, by its name
TERM = rf"(?:{FACTOR})(?: [*/] (?:{FACTOR}))*"
PATTERNS = [
    (r"(?<=[=(,?:*/+\[] )-(?=[\w(])|(?<=[(\[])-(?=[\w(])|(?<=return )-(?=[\w(])", ""),  # a negation
    (r"!(?=[\w(])", ""),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"),
    (r"\bRET_IMPOSSIBLE\b", "RET_INDETERMINATE"), (r"\bRET_INDETERMINATE\b", "RET_IMPOSSIBLE"),
    (r"\bfabs(?=\()", ""),
    (rf"({TERM}) \+ ({TERM}) \+ ({TERM})", r"\1 + (\2 + \3)"),  # the order of floating-point operations
    (rf"({TERM}) - ({TERM}) - ({TERM})", r"\1 - (\2 + \3)"),
    (rf"({TERM}) - ({TERM}) \+ ({TERM})", r"\1 - (\2 - \3)"),
    (rf"\(({TERM}) ([-+]) ({TERM})\) \+ ({TERM})", r"\1 \2 (\3 \2 \4)"),
    (rf"({FACTOR}) \* ({FACTOR}) \* ({FACTOR})", r"\1 * (\2 * \3)"),
]
NUMBER = re.compile(r"(?<![\w.])(\d+\.\d*(?:e[+-]?\d+)?|\d+e[+-]?\d+|\d+)(?![\w.])")
# A whole statement that is neither a declaration nor a function's last return.
STATEMENT = re.compile(r"^(?!    return\b)\s+(?=\S)(?!(?:const|double|int|bool|char|unsigned|ptrdiff_t|size_t|ssize_t|static|"
                       r"typedef|using|T[A-Z]\w+ \w|struct|extern|else|case)\b)[^{};]+;$")
# Lines without mutants: sources_test.py compares the reports, and a changed check of a type does not compile.
NO_MUTANTS = re.compile(r"\s*(#|$)|.*(NUV_ASSERT_AT\(|typedef char|#define|static_assert)")


class TMutant(typing.NamedTuple):
    source: pathlib.Path
    number: int  # of the line, from 1
    function: str
    before: str
    after: str

    def __str__(self):
        return f"{self.source.name}:{self.number}: {self.function}: {self.before.strip()} => {self.after.strip()}"


def code_part(line):
    """The line with strings blanked and its comment cut off; positions stay."""
    line = re.sub(r'"(?:[^"\\]|\\.)*"', lambda m: '"' + " " * (len(m.group()) - 2) + '"', line)
    line = re.sub(r"/\*.*?\*/", lambda m: " " * len(m.group()), line)
    return line.split("//")[0].rstrip()


def changed_numbers(code):
    """(start, end, text) of each changed number. An array is only made smaller: nothing reads a greater one's end."""
    for match in NUMBER.finditer(code):
        text = match.group()
        declared = re.match(r"\](\[|;| =)", code[match.end():]) and re.match(r"\s+(const )?[\w:]+ \w+\[", code)
        if re.search(r"[.e]", text):
            others = [repr(float(text) * 2) if float(text) else "1.0"]
            others += [repr(float(text) * (1 + 2.0**-52))] if len(text) > 10 else []
        else:
            others = [] if declared else [str(int(text) + 1)]
            others += [str(int(text) - 1)] if int(text) > 0 else []
        for other in others:
            yield match.start(), match.end(), other


def changes(code, begins_statement):
    """(start, end, text) of each change of a line of code."""
    for old, replacements in SWAPS.items():
        for match in re.finditer(re.escape(old), code):
            for new in replacements:
                yield match.start(), match.end(), new
    for pattern, replacement in PATTERNS:
        for match in re.finditer(pattern, code):
            yield match.start(), match.end(), match.expand(replacement)
    yield from changed_numbers(code)
    if begins_statement and STATEMENT.match(code):
        yield len(code) - len(code.lstrip()), len(code), ";"


def functions_of(source):
    """The name of the function for each line number that is inside one, as ctags reads the source."""
    tags = subprocess.run(["ctags", "--language-force=C++", "--kinds-C++=f", "--fields=+ne", "--output-format=json", "-f",
                           "-", str(source)], capture_output=True, text=True, check=True).stdout
    tags = [json.loads(line) for line in tags.splitlines()]
    return {number: tag["name"] for tag in tags for number in range(tag["line"], tag.get("end", tag["line"]) + 1)}


def mutants_of(source):
    functions = functions_of(source)
    before = ""
    for number, line in enumerate(source.read_text().splitlines(), 1):
        code = code_part(line)
        if not NO_MUTANTS.match(line) and not before.endswith("\\"):
            changed = {line[:start] + text + line[end:]
                       for start, end, text in changes(code, before.endswith((";", "{", "}", ":")))}
            for after in sorted(changed - {line}):
                yield TMutant(source, number, functions.get(number, "-"), line, after)
        before = code or before
