#!/usr/bin/env python3
# build_page.py: makes one file of a page: its style sheet, its modules of JavaScript and its module of WebAssembly.
# SPDX-License-Identifier: MIT
"""usage: build_page.py INDEX.HTML MODULE.WASM OUTPUT.HTML

Replaces in INDEX.HTML
  <link rel="stylesheet" href="FILE">                           by the text of the file,
  <template id="ID" data-file="FILE"></template>                by a template with the text of the file,
  <script id="engine-module" type="text/plain"></script>        by the same with MODULE.WASM in base64,
  <script type="module" src="FILE"></script>                    by a script with the modules that FILE imports.
Each module becomes a function that is called once and returns its exports. The last one, FILE itself, stands behind
them.
Fails if the result would still need another file.
"""

import base64
import html
import pathlib
import re
import sys

STYLE = re.compile(r'<link rel="stylesheet" href="([^"]+)">')
SCRIPT = re.compile(r'<script type="module" src="([^"]+)"></script>')
TEMPLATE = re.compile(r'<template id="([^"]+)" data-file="([^"]+)"></template>')
MODULE = '<script id="engine-module" type="text/plain"></script>'
IMPORT = re.compile(r"^import \{([^}]*)\} from '([^']+)';\n", re.MULTILINE)
EXPORT = re.compile(r"^export (?=(?:async function|function|class|const) (\w+))", re.MULTILINE)
# What only a browser with the other files beside the page could load.
EXTERNAL = [re.compile(pattern) for pattern in (
    r"^\s*(?:import|export)\s.*$", r"\bimport\(.*", r"\bimport\.meta.*", r"@import.*",
    r"""(?<!\.)\b(?:src|href)=(?!"data:|"#).*""", r"url\((?!['\"]?(?:data:|#)).*", r"https?://(?!www\.w3\.org/).*")]


class Modules:
    """The text of the modules that a first one imports, in the order in which they run."""

    def __init__(self):
        self.names = {}  # of the constants with the exports, by the paths of the modules
        self.text = ""

    def add(self, path, importing=()):
        if path in importing:
            raise ValueError(f"{path}: imports itself")
        if path not in self.names:
            text = self.translated(path, importing)
            exports = ", ".join(EXPORT.findall(path.read_text()))
            self.names[path] = f"module{len(self.names)}"
            self.text += f"const {self.names[path]} = (() => {{\n{text}return {{ {exports} }};\n}})();\n"
        return self.names[path]

    def translated(self, path, importing=()):
        """The module with constants for its imports, and without the word export."""

        def constants(match):
            name = self.add((path.parent / match[2]).resolve(), (*importing, path))
            return f"const {{{match[1].replace(' as ', ': ')}}} = {name};\n"

        return EXPORT.sub("", IMPORT.sub(constants, path.read_text()))


def inlined(index, module):
    text = index.read_text()

    def style(match):
        return f"<style>\n{(index.parent / match[1]).read_text()}</style>"

    def template(match):
        return f'<template id="{match[1]}">{html.escape((index.parent / match[2]).read_text(), quote=False)}</template>'

    def script(match):
        modules = Modules()
        main = modules.translated((index.parent / match[1]).resolve())
        return f'<script type="module">\n{modules.text}{main}</script>'

    for pattern, replacement in ((STYLE, style), (SCRIPT, script)):
        text, count = pattern.subn(replacement, text)
        if count != 1:
            raise ValueError(f"{index}: {count} places of {pattern.pattern} instead of one")
    text = TEMPLATE.sub(template, text)
    check(index, text)
    if text.count(MODULE) != 1:
        raise ValueError(f"{index}: {text.count(MODULE)} places of {MODULE} instead of one")
    return text.replace(MODULE, MODULE.replace("><", f">{base64.b64encode(module.read_bytes()).decode()}<"))


def check(index, text):
    for number, line in enumerate(text.splitlines(), 1):
        found = next((match[0] for pattern in EXTERNAL if (match := pattern.search(line))), None)
        if found is not None:
            raise ValueError(f"{index}: line {number} of the page needs another file: {found.strip()}")
    scripts = len(re.findall("<script", text, re.IGNORECASE)), len(re.findall("</script", text, re.IGNORECASE))
    if scripts != (2, 2):
        raise ValueError(f"{index}: {scripts[0]} script elements, {scripts[1]} ends of them, instead of two each")


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    index, module, output = map(pathlib.Path, sys.argv[1:])
    try:
        output.write_text(inlined(index, module))
    except (OSError, ValueError) as error:
        sys.exit(f"{sys.argv[0]}: {error}")


if __name__ == "__main__":
    main()
