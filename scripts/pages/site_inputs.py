"""site_inputs: what doxygen reads for the site: the public header and the documents, prepared for it.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

The header and the documents are written to be read as they are. For the site

- the header's comments get typeset symbols, links to functions, and their limits a page of their own;
- the documents' headings get anchors, and their links become links of the site, or plain text if they lead to a file
  that is not part of the site.
"""

import re

import plots
from markdown import ROOT, fail

README = ROOT / "README.md"
HEADER = ROOT / "nuv/nuv_math/include/nuv1math.h"
EXPORTS = (ROOT / "tests/exports.txt").read_text().splitlines()
FUNCTIONS = sorted({line.split("(")[0].removeprefix("nuv::") for line in EXPORTS})
GEOREFERENCE = "georeference.html" # the page apps/georeference, if the site has it
IMAGES = [ROOT / "docs/figures", ROOT / "docs", ROOT / "apps/fitpoints"]


MEASURED = [ROOT / f"docs/{name}.md" for name in ("accuracy", "performance", "performance-device", "footprint", "roots")]
PROGRAMS = ["apps/fitpoints", "apps/fitpoints/judgement"]
LANGUAGES = ["bindings", "bindings/c", "bindings/python", "bindings/javascript"]


def label_of(path):
    """The name of a document's page."""
    name = path.relative_to(ROOT).with_suffix("").as_posix().removeprefix("docs/")
    name = name.removeprefix("site/").removeprefix("apps/").removesuffix("/README")
    return re.sub(r"\W", "_", "index" if name == "front" else name)


DOCUMENTS = {path: label_of(path) for path in
             [*sorted((ROOT / "docs/site").glob("*.md")), *sorted((ROOT / "docs/guide").glob("*.md")), *MEASURED,
              *(ROOT / folder / "README.md" for folder in PROGRAMS + LANGUAGES)]}

# ---- the header ----

# Symbols of the comments as a page shows them. The order matters.
SYMBOLS = [
    (r"\btheta\b", "θ"), (r"\bphi\b", "φ"), (r"\b(\d) pi\b", r"\1π"), (r"\bpi\b", "π"),
    (r"\b([sT])([xy])\b", r"<em>\1</em><sub>\2</sub>"), (r"\bt([xy])\b", r"<em>t</em><sub>\1</sub>"),
    (r"\b([ab])([12]{1,2})\b", r"<em>\1</em><sub>\2</sub>"),
    (r"\^(-?\w+)", r"<sup>\1</sup>"), (r"\+-", "±"), (r"<=", "≤"), (r">=", "≥"),
    (r"\bsqrt\(", "√("), (r"\bsum\(", "Σ("),
]
AS_IT_IS = re.compile(r"(@f\[.*?@f\]|@(?:image|defgroup|page|section) .*?(?:\n|\*/))", re.DOTALL)
HEADING = re.compile(r"^( \*  )(Limits?|Method):( ?)(\w?)", re.MULTILINE)
HEADINGS = {"Limit": "@limits", "Limits": "@limits", "Method": "**Method.**"}
ROOTS = {False: "polynomials", True: "linear"} # the two functions of this name, by whether it is that of two unknowns
NAMES = "|".join(name for name in FUNCTIONS if name != "Roots")
LINKED = re.compile(rf"(?<![\w:])(?!Cholesky\b)({NAMES})\b(?!\()") # Cholesky is a person, too
CODE = re.compile(rf"`({NAMES})`")


def show(text):
    """The text of a comment between formulas, figures and titles."""
    text = re.sub(r"(polynomial|two-unknown) Roots", lambda m: f'@ref {ROOTS[m[1] == "two-unknown"]} "{m[0]}"', text)
    text = LINKED.sub(r'@ref nuv::\1 "\1"', text)
    for pattern, symbol in SYMBOLS:
        text = re.sub(pattern, symbol, text)
    return HEADING.sub(lambda m: f"{m[1]}{HEADINGS[m[2]]}{m[3]}{m[4].upper()}", text)


def show_comment(match):
    return "".join(part if AS_IT_IS.match(part) else show(part) for part in AS_IT_IS.split(match[0]))


def show_header():
    """The header with as many lines as it has, so that warnings name the right one."""
    return re.sub(r"/\*\*.*?\*/", show_comment, HEADER.read_text(), flags=re.DOTALL)


COMMENT = re.compile(r"/\*\*((?:(?!\*/).)*)\*/\n(?:NUV1MATH_API [^;(]*?(\w+)\(([^;]*)\);)?", re.DOTALL)


def first_sentence(comment):
    """What a function does, without the formula that a colon announces unless it is displayed."""
    text = re.sub(r"\s*\n \*(?!\n) *", " ", comment).split("\n")[0].strip()
    if "@f[" in text:
        return show_comment(re.match(r".*?@f\]", text)).replace("@f[", "@f$").replace("@f]", "@f$")
    return show(re.split(r"[.:](?:\s|$)", text)[0])


def function_line(comment, name, arguments):
    types = ", ".join(re.sub(r"\s*\b\w+$", "", argument.strip()) for argument in arguments.split(","))
    return f'| <code>@ref nuv::{name}({types}) "{name}"</code> | {first_sentence(comment)} |'


def list_functions():
    """The page of all functions: each with the first sentence of its description, in the header's groups."""
    lines, functions = ["# Functions {#functions}", ""], []
    for comment, name, arguments in COMMENT.findall(HEADER.read_text()):
        group = re.match(r" @defgroup (\w+) (.*)", comment)
        if group:
            lines += ["", f'| @ref {group[1]} "{group[2]}" | |', "|---|---|"]
        elif name:
            functions.append(name)
            lines.append(function_line(comment, name, arguments))
    if sorted(functions) != sorted(line.removeprefix("nuv::").split("(")[0] for line in EXPORTS):
        fail("the header does not declare what is exported, or in another form than expected")
    return "\n".join(lines) + "\n"


# ---- the documents ----


def slug(heading):
    return re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-")


def anchor(label, heading):
    return f"{label}_" + re.sub(r"\W", "_", slug(heading))


def show_link(document, text, target):
    """A link of a document as doxygen writes it."""
    if "://" in target:
        return f"[{text}]({target})"
    name, _, part = target.partition("#")
    path = (document.parent / name).resolve() if name else document
    plain = text.replace("`", "")
    if path in DOCUMENTS:
        label = DOCUMENTS[path]
        if plain.endswith(".md"):
            plain = re.search(r"^# (.*)", path.read_text(), re.MULTILINE)[1]
        return f'@ref {anchor(label, part.replace("-", " ")) if part else label} "{plain}"'
    if path == HEADER:
        return f'@ref nuv1math.h "{plain}"'
    if path == ROOT / "LICENSE" or not path.exists():
        return plain if path.exists() else fail(f"{document.name}: no such file: {target}")
    return text


def show_links(document, text):
    return re.sub(r"(?<!!)\[([^\]]+)\]\(\s*([^)\s]+)\)",
                  lambda match: show_link(document, match[1].replace("\n", " "), match[2]), text)


def from_readme(match):
    """A section of README.md, or a part of it that a pattern describes."""
    section = re.search(rf"^## {match[1]}\n(.*?)(?=^## |\Z)", README.read_text(), re.DOTALL | re.MULTILINE)
    part = re.search(match[2] or r".*", section[1], re.DOTALL) if section else None
    if not part:
        fail(f"README.md has no section {match[0]}")
    return show_links(README, part[0].strip()) + "\n"


def show_prose(text, with_powers):
    """Code with single quotes in a form in which doxygen does not take them for its end; powers as raised numbers."""
    text = re.sub(r"(?<!`)`([^`\n]*'[^`\n]*)`(?!`)", r"``\1``", text)
    return re.sub(r"(?<=[\w)])\^(-?\w+)", r"<sup>\1</sup>", text) if with_powers else text


def show_document(document, label, with_georeference):
    text = re.sub(r"<!-- README: ([\w ]+?)(?:, (.*?))? -->\n", from_readme, document.read_text())
    if with_georeference:
        text = re.sub(r"<!-- with georeference: (.*?) -->", r"\1", text)
    text = re.sub(r"<!--.*?-->\n?", "", text, flags=re.DOTALL)
    title, rest = text.lstrip().split("\n", 1)
    rest = re.sub(r"^(##+) +(.+)$", lambda m: f"{m[1]} {m[2]} {{#{anchor(label, m[2])}}}", rest, flags=re.MULTILINE)
    rest = re.sub(r"!\[(.*?)\]\((?:[^)]*/)?([^)/]+)\)", r'@image html \2 "\1"', rest, flags=re.DOTALL)
    rest = "".join(part if part.startswith("```") else show_prose(part, document in MEASURED)
                   for part in re.split(r"(^```.*?^```$)", rest, flags=re.DOTALL | re.MULTILINE))
    rest = show_links(document, rest)
    rest = re.sub(r"(two-unknown )?`Roots`", lambda m: f'{m[1] or ""}<code>@ref {ROOTS[bool(m[1])]} "Roots"</code>', rest)
    rest = CODE.sub(r'<code>@ref nuv::\1 "\1"</code>', rest)
    if document in MEASURED and document.stem in plots.PLOTS: # below the introduction
        plot = f'@image html {document.stem}.svg "{plots.PLOTS[document.stem][1]}"'
        introduction, rest = rest.lstrip().split("\n\n", 1)
        rest = f"\n{introduction}\n\n{plot}\n\n{rest}"
    if label == "index":
        rest = re.sub(r"^##", "#", rest, flags=re.MULTILINE)
    head = f"@mainpage {title.lstrip('# ')}" if label == "index" else f"{title} {{#{label}}}"
    return f"{head}\n{rest}"


def write_inputs(folder, with_georeference):
    """Writes the inputs, and returns their paths. A site without the page apps/georeference does not link to it."""
    folder.mkdir()
    paths = [folder / HEADER.name]
    paths[0].write_text(show_header())
    paths.append(folder / "functions.md")
    paths[1].write_text(list_functions())
    for document, label in DOCUMENTS.items():
        paths.append(folder / f"{label}.md")
        paths[-1].write_text(show_document(document, label, with_georeference))
    for name in plots.PLOTS:
        (folder / f"{name}.svg").write_text(plots.draw(name, (ROOT / f"docs/{name}.md").read_text()))
    return paths
