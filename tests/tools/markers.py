"""markers.py: comments in the library's source that say what its tests cannot show.

A marker stands at the end of its line, or alone on the line above it:

    if (SolveGauss(3, 2, vdMatrix, 3, vdRhs, 3, vdSolution, 3) == 0) // unreachable: no pivot is zero here
    // host only: a processor has these vectors or does not have them
    if (HasWideVectors())

"unreachable"  no input reaches the line, or takes one of its branches.
"host only"    other machines or other builds reach it.
"by processor" some processors reach it and others do not, since their vectors have another width.
"equivalent"   some change of the line, of those that mutations.py makes, changes no result.

The reason after the colon is required. A marker of an if covers its block too, and one above a function the whole
function.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import re

MARKER = re.compile(r"(?P<before>.*?)// (?P<word>unreachable|host only|by processor|equivalent): \S")


def indent_of(text):
    return len(text) - len(text.lstrip())


def lines_covered_by(texts, first):
    """The numbers of the marked line and of the block of an if, or of a function; lines are counted from 0."""
    while not texts[first].split("//")[0].strip():
        first += 1
    last = first
    if texts[first].strip().startswith("if (") and texts[first + 1].strip() == "{":
        last += 1
        while indent_of(texts[last]) != indent_of(texts[first]) or texts[last].strip()[:1] != "}":
            last += 1
    elif indent_of(texts[first]) == 0:  # a function, or a macro that makes some
        while texts[last].strip() and texts[last] != "}":
            last += 1
    return range(first, last + 1)


def markers_of(texts, *words):
    """For each marker with one of these words, by its line, the lines that it covers. Lines are counted from 1."""
    found = ((number, MARKER.match(text)) for number, text in enumerate(texts))
    return {number + 1: {covered + 1 for covered in lines_covered_by(texts, number)}
            for number, match in found if match and match.group("word") in words}
