#!/usr/bin/env python3
# build_page_test.py: the maker of the page puts everything into one file, or fails.
# SPDX-License-Identifier: MIT

import base64
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

MAKER = pathlib.Path(__file__).with_name("build_page.py")
INDEX = """<!DOCTYPE html>
<link rel="stylesheet" href="style.css">
<template id="text" data-file="a.csv"></template>
<script id="engine-module" type="text/plain"></script>
<script type="module" src="main.mjs"></script>
"""
FILES = {
    "style.css": "p { color: red; }\n",
    "a.csv": "x < y\n",
    "module.wasm": bytes(range(256)),
    "one.mjs": "const name = 'one';\nexport function greet(who) {\n    return `${name} ${who}`;\n}\n",
    "two.mjs": "import { greet as hello } from './one.mjs';\nconst name = 'two';\nexport const text = hello(name);\n",
    "main.mjs": "import { text } from './two.mjs';\nimport { greet } from './one.mjs';\nconst name = 'main';\n"
    "console.log(text, greet(name));\n",
}


class Maker(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)

    def make(self, index=INDEX, **changes):
        for name, contents in {**FILES, **{key.replace("_", "."): value for key, value in changes.items()}}.items():
            path = self.directory / name
            path.write_bytes(contents if isinstance(contents, bytes) else contents.encode())
        (self.directory / "index.html").write_text(index)
        command = [sys.executable, MAKER, "index.html", "module.wasm", "page.html"]
        return subprocess.run(command, cwd=self.directory, capture_output=True, text=True, check=False)

    def test_everything_is_inside(self):
        self.assertEqual(self.make().returncode, 0)
        page = (self.directory / "page.html").read_text()
        self.assertIn("<style>\np { color: red; }\n</style>", page)
        self.assertIn(">x &lt; y\n</template>", page)
        module = re.search(r'<script id="engine-module" type="text/plain">(.*?)</script>', page)[1]
        self.assertEqual(base64.b64decode(module), FILES["module.wasm"])
        script = re.search(r'<script type="module">(.*)</script>', page, re.DOTALL)[1]
        (self.directory / "script.mjs").write_text(script)
        shown = subprocess.run(["node", "script.mjs"], cwd=self.directory, capture_output=True, text=True, check=True)
        self.assertEqual(shown.stdout, "one two one main\n")

    def test_what_stays_outside_is_refused(self):
        add = INDEX.__add__
        refused = {
            "an image": {"index": add('<img src="a.png">')},
            "a link": {"index": add('<a href="https://example.org/">a</a>')},
            "an icon": {"index": add('<link rel="icon" href="icon.png">')},
            "another script": {"index": add("<script>1</script>")},
            "a style sheet in a style sheet": {"style_css": '@import "b.css";\n'},
            "a picture of a style sheet": {"style_css": "p { background: url(a.png); }\n"},
            "an address in a script": {"main_mjs": "fetch('https://example.org');\n"},
            "an import while it runs": {"main_mjs": "await import('./one.mjs');\n"},
            "an import of everything": {"main_mjs": "import * as one from './one.mjs';\n"},
            "a default export": {"one_mjs": "export default 1;\n"},
            "an export that changes": {"one_mjs": "export let greet = 1;\n"},
            "the end of a script in a script": {"main_mjs": "console.log('</script>');\n"},
        }
        for what, change in refused.items():
            with self.subTest(what):
                made = self.make(**change)
                self.assertEqual(made.returncode, 1, what)
                self.assertRegex(made.stderr, r"build_page\.py: index\.html: ")
                self.assertFalse((self.directory / "page.html").exists())

    def test_circles_and_missing_files_are_refused(self):
        self.assertIn("imports itself", self.make(one_mjs="import { text } from './two.mjs';\n").stderr)
        self.assertIn("none.mjs", self.make(main_mjs="import { a } from './none.mjs';\n").stderr)
        self.assertIn("0 places", self.make(index="<p>").stderr)


if __name__ == "__main__":
    unittest.main()
