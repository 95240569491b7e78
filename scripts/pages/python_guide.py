#!/usr/bin/env python3
"""python_guide: runs the code of docs/guide/python.md, and writes its outputs and its pictures.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    python_guide.py [--check]

It is run by the interpreter of an environment that has the package, matplotlib and scikit-image. All blocks of code
share their variables. A block that prints is followed by a block of text; as in a notebook, the value of its last expression
is printed, too. A block that shows a picture is followed by the link to it. With --check the outputs are compared with
the page, and nothing is written.
"""

import argparse
import ast
import contextlib
import io
import os
import pathlib
import re
import sys
import tempfile

import matplotlib
from matplotlib import pyplot

from markdown import ROOT, fail, write

PAGE = ROOT / "docs/guide/python.md"
FIGURES = ROOT / "docs/figures"
CELL = re.compile(r"^```python\n(?P<code>.*?)^```\n(?:\n```text\n(?P<output>.*?)^```\n)?"
                  r"(?:\n!\[[^\]]*\]\(\.\./figures/(?P<picture>[\w-]+\.svg)\)\n)?", re.DOTALL | re.MULTILINE)

matplotlib.use("svg")
matplotlib.rcParams.update({"svg.hashsalt": "nuv1math", "svg.fonttype": "path", "savefig.bbox": "tight"})


def run(code, variables):
    """Runs a block of code. Returns what it prints."""
    tree = ast.parse(code)
    last = tree.body.pop() if isinstance(tree.body[-1], ast.Expr) else None
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        exec(compile(tree, PAGE.name, "exec"), variables)
        value = last and eval(compile(ast.Expression(last.value), PAGE.name, "eval"), variables)
        if value is not None:
            print(repr(value))
    return printed.getvalue()


def save_picture(path):
    """Saves the picture that a block has drawn, with the same bytes each time."""
    if not pyplot.get_fignums():
        fail(f"no picture is drawn for {path.name}")
    pyplot.savefig(path, metadata={"Date": None})
    path.write_text("".join(line.rstrip() + "\n" for line in path.read_text().splitlines()))
    pyplot.close("all")


def made(text, figures):
    """The page with the outputs of its code. The pictures go to a directory."""
    variables = {}

    def cell(match):
        output = run(match["code"], variables)
        if bool(output) != (match["output"] is not None):
            fail(f"a block prints and has no place for it, or the other way round:\n{match['code']}")
        if match["picture"]:
            save_picture(figures / match["picture"])
        if match["output"] is None:
            return match[0]
        start, end = (match.start("output") - match.start(), match.end("output") - match.start())
        return match[0][:start] + output + match[0][end:]

    return CELL.sub(cell, text)


def main():
    parser = argparse.ArgumentParser(description="runs the code of docs/guide/python.md and writes its outputs")
    parser.add_argument("--check", action="store_true", help="compare the outputs instead of writing them")
    check = parser.parse_args().check
    pyplot.show = lambda: None
    text = PAGE.read_text()
    os.chdir(ROOT / "apps/fitpoints") # where sample.csv is
    with tempfile.TemporaryDirectory() as folder:
        page = made(text, pathlib.Path(folder) if check else FIGURES)
    missing = [name for name in re.findall(r"figures/([\w-]+\.svg)", text) if not (FIGURES / name).exists()]
    if check and (page != text or missing):
        sys.stdout.write(page)
        fail("the page is not what its code gives; scripts/docs python_guide writes it anew")
    if not check:
        write(PAGE, page)


if __name__ == "__main__":
    main()
