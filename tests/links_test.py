#!/usr/bin/env python3
"""links_test.py: what the documents name exists: linked files, headings, and paths of this tree in `code`.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = "apps|bench|bindings|cmake|docs|examples|fuzz|nuv|packaging|scripts|tests|wasm|wince"
DOCUMENTS = sorted(path for path in ROOT.rglob("*.md") if "build" not in path.relative_to(ROOT).parts)
LINK = re.compile(r"\]\(\s*([^)\s]+)\s*\)")
PATH = re.compile(rf"`((?:{FOLDERS})/[\w./-]*)(?: [^`]*)?`")


def anchors_of(text):
    """The anchors that a page has for its headings: lower case, without punctuation, spaces as hyphens."""
    headings = re.findall(r"^#+ +(.+)$", text, re.MULTILINE)
    return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-") for heading in headings}


def is_broken(document, link):
    name, _, anchor = link.partition("#")
    target = document.parent / name if name else document
    return not target.exists() or bool(anchor) and anchor not in anchors_of(target.read_text())


class Documents(unittest.TestCase):
    def test_link_only_to_what_exists(self):
        self.assertGreater(len(DOCUMENTS), 5)
        for document in DOCUMENTS:
            links = [link for link in LINK.findall(document.read_text()) if "://" not in link]
            broken = [link for link in links if is_broken(document, link)]
            self.assertEqual(broken, [], document.relative_to(ROOT))

    def test_name_only_paths_that_exist(self):
        for document in DOCUMENTS:
            missing = [path for path in PATH.findall(document.read_text()) if not (ROOT / path).exists()]
            self.assertEqual(missing, [], document.relative_to(ROOT))

    def test_public_header_names_no_file_that_is_not_installed(self):
        header = (ROOT / "nuv/nuv_math/include/nuv1math.h").read_text()
        self.assertEqual(re.findall(rf"\b(?:{FOLDERS})/\S+", header), [])
        figures = {path.name for path in (ROOT / "docs/figures").iterdir()} # the site is installed with them
        self.assertEqual(set(re.findall(r"\b[\w-]+\.(?:cpp|h|md|txt|py|svg|html)\b", header)) - figures, {"nuv1math.h"})


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
