#!/usr/bin/env python3
"""build_site: makes the pages of the library as a site of HTML files, from the public header and the documents.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    build_site.py DIRECTORY [PAGE]    replaces DIRECTORY/html; DIRECTORY/input holds what doxygen reads

PAGE is the built page apps/georeference. The site takes it as it is, and the front page links to it.

Needs doxygen, and katex with nodejs for the formulas. Fails, and leaves the old site, if doxygen gives a warning or if
a link of the new site leads nowhere. The same inputs give the same bytes.
"""

import html
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

import site_inputs
import site_links
from markdown import ROOT, fail

FORMULA = re.compile(r"\\\((.*?)\\\)|\\\[(.*?)\\\]", re.DOTALL)
TYPESET = """
const katex = require("katex");
const formulas = JSON.parse(require("fs").readFileSync(0, "utf8"));
const options = display => ({output: "mathml", displayMode: display, strict: "error", trust: true});
process.stdout.write(JSON.stringify(formulas.map(([tex, display]) => katex.renderToString(tex, options(display)))));
"""


def version():
    numbers = re.findall(r"^#define NUV1MATH_VERSION_[A-Z]+ (\d+)$",
                         (ROOT / "nuv/nuv_math/include/nuv1math.h").read_text(), re.MULTILINE)
    return ".".join(numbers) if len(numbers) == 3 else fail("nuv1math.h states no version")


def setting(name, *values):
    """A line of doxygen's settings. Quotation marks keep a path with blanks in one piece."""
    return f"{name} = " + " ".join(f'"{value}"' for value in values)


def run_doxygen(folder, inputs, images):
    """Makes the site in folder/html. Every warning ends the program."""
    settings = (ROOT / "docs/site/Doxyfile").read_text() + "\n".join([
        "",
        setting("PROJECT_NUMBER", version()),
        setting("OUTPUT_DIRECTORY", folder),
        setting("INPUT", *inputs),
        setting("EXAMPLE_PATH", ROOT / "examples", ROOT / "tests/consumers"),
        setting("IMAGE_PATH", *images),
        setting("STRIP_FROM_PATH", folder),
    ])
    run = subprocess.run(["doxygen", "-"], input=settings, capture_output=True, text=True, cwd=ROOT)
    if run.returncode or run.stderr:
        fail(f"doxygen: exit code {run.returncode}\n{run.stderr.strip()}")


def typeset(pages):
    """Replaces the formulas of all pages, which are TeX, by MathML, which browsers draw without a script."""
    texts = {page: page.read_text() for page in pages}
    keys = {match.group(0): (match[1] or match[2], match[1] is None)
            for text in texts.values() for match in FORMULA.finditer(text)}
    plain = [(re.sub(r"\\(cos|sin|tan)(\^2)? *", r"\\,\\\1\2\\,", html.unescape(tex)), display)
             for tex, display in keys.values()] # MathML without its font leaves no space about these
    node = dict(os.environ, NODE_PATH="/usr/share/nodejs") # where Debian's katex is
    run = subprocess.run(["node", "-e", TYPESET], input=json.dumps(plain), capture_output=True, text=True, env=node)
    if run.returncode:
        fail(f"katex: {run.stderr.strip()}")
    drawn = (re.sub(r"<annotation .*?</annotation>", "", formula, flags=re.DOTALL) for formula in json.loads(run.stdout))
    formulas = dict(zip(keys, drawn))
    for page, text in texts.items():
        page.write_text(FORMULA.sub(lambda match: formulas[match.group(0)], text))


# What doxygen writes and these pages do not need, and what stands there instead.
UNNEEDED = [(re.compile(pattern, re.MULTILINE | re.DOTALL), instead) for pattern, instead in (
    (r' <a href="[^"]*">More\.\.\.</a>', ""),
    (r'^<div class="ttc" [^\n]*\n', ""), # tooltips, which need scripts
    (r'<div id="nav-path".*?</div>', ""),
    (r'<a class="anchor" id="md_[^"]*"></a>', ""), # the name of a file, with its directories if they are not ASCII
    (r" (?:Struct|Namespace|File) Reference(?=<| -)", ""),
    (r'(<td class="mdescRight">[^\n]*):\s*(?=<br)', r"\1."), # a formula follows the colon elsewhere
    (r"\\\|(?=[^<\n]*</code>)", "|"), # a document writes bars in tables so
    (r"^<dt>(?:Member|Module|Class) (<a [^\n]*?</a>)[^\n]*</dt>$", r"<dt>\1</dt>"), # arguments of functions
    (r'^(<dt>[^\n]*group__polynomials[^\n]*nuv::Roots</a>)', r"\1 (polynomial)"), # two functions of one name
    (r'^(<dt>[^\n]*group__linear[^\n]*nuv::Roots</a>)', r"\1 (two unknowns)"),
)]


def tidy(pages):
    for page in pages:
        text = page.read_text()
        for pattern, instead in UNNEEDED:
            text = pattern.sub(instead, text)
        page.write_text(text)


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit("usage: build_site.py DIRECTORY [PAGE]")
    folder, *built = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    for program in ("doxygen", "node"):
        if not shutil.which(program):
            fail(f"the program {program} is missing")
    unfinished = folder / "new"
    shutil.rmtree(unfinished, ignore_errors=True)
    unfinished.mkdir(parents=True)
    inputs = site_inputs.write_inputs(unfinished / "input", bool(built))
    run_doxygen(unfinished, inputs, [*site_inputs.IMAGES, unfinished / "input"])
    site = unfinished / "html"
    pages = sorted(site.glob("*.html"))
    typeset(pages)
    tidy(pages)
    for page in built: # it is complete, nothing in it is doxygen's
        shutil.copyfile(page, site / site_inputs.GEOREFERENCE)
    site_links.remove_unused(site)
    broken = site_links.broken_links(site)
    if broken:
        fail("links that lead nowhere:\n" + "\n".join(broken))
    for name in ("input", "html"):
        shutil.rmtree(folder / name, ignore_errors=True)
        (unfinished / name).rename(folder / name)
    shutil.rmtree(unfinished)


if __name__ == "__main__":
    main()
