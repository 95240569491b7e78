#!/usr/bin/env python3
"""site_test.py: the site of the pages: complete, with links that lead somewhere, the same bytes each time.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "scripts/pages"), str(ROOT / "tests/tools")]
sys.dont_write_bytecode = True
import build_site
import site_inputs
import site_links
from binary import EXPORTS

GROUPS = ("fits", "affine", "conformal", "omographic", "packed", "linear", "dense", "polynomials", "trigonometric",
          "random")


def make_site(folder, *page):
    subprocess.run([sys.executable, "-B", ROOT / "scripts/pages/build_site.py", folder, *page], check=True)
    return {path.name: path.read_bytes() for path in pathlib.Path(folder, "html").iterdir()}


class Site(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with tempfile.TemporaryDirectory() as folder:
            cls.files = make_site(folder)
        cls.pages = {name: data.decode() for name, data in cls.files.items() if name.endswith(".html")}

    def test_is_the_same_bytes_in_another_directory(self):
        with tempfile.TemporaryDirectory(prefix="Köln (1) ") as folder:
            self.assertEqual(make_site(folder), self.files)

    def test_describes_every_function_once_in_ten_groups(self):
        signature = re.compile(r'<td class="memname">[^<]*nuv::(\w+) </td>')
        described = [name for group in GROUPS for name in signature.findall(self.pages[f"group__{group}.html"])]
        self.assertEqual(sorted(described), sorted(re.match(r"nuv::(\w+)", name)[1] for name in EXPORTS))

    def test_shows_signatures_as_users_write_them(self):
        self.assertEqual([name for name, text in self.pages.items() if "NUV1MATH_API" in text], [])

    def test_lists_the_limits_of_all_functions(self):
        header = (ROOT / "nuv/nuv_math/include/nuv1math.h").read_text()
        stated = re.findall(r"^ \*  Limits?:", header, re.MULTILINE)
        self.assertEqual(self.pages["limits.html"].count('id="_limits'), len(stated))

    def test_heads_the_limits_of_each_function_differently(self):
        headings = [re.sub("<.*?>", "", text) for text in re.findall("<dt>(.*?)</dt>", self.pages["limits.html"])]
        self.assertEqual(sorted(headings), sorted(set(headings)))
        self.assertIn("nuv::Roots (polynomial)", headings)
        self.assertIn("nuv::Roots (two unknowns)", headings)

    def test_needs_no_script_and_no_other_site(self):
        for name, text in self.pages.items():
            self.assertNotIn("<script", text, name)
            self.assertEqual(re.findall(r'(?:src|data|rel="stylesheet" href)="https?:[^"]*', text), [], name)

    def test_leaves_no_formula_and_no_command_as_it_is_typed(self):
        for name, text in self.pages.items():
            prose = re.sub(r'<div class="fragment">.*?</div><!-- fragment -->', "", text, flags=re.DOTALL)
            self.assertEqual(re.findall(r"\\[a-z(\[]\w*|@(?:f|ref|param|image|limits)\b", prose), [], name)
            self.assertEqual(re.findall(r"&lt;/?(?:em|sub|sup|code|b)&gt;", prose), [], name)
            self.assertNotIn("`", re.sub("<pre.*?</pre>", "", prose, flags=re.DOTALL), name)

    def test_begins_no_line_of_a_document_with_a_number_that_makes_it_a_list(self):
        for document in site_inputs.DOCUMENTS:
            self.assertEqual(re.findall(r"^ *\d\d+\. .*", document.read_text(), re.MULTILINE), [], document)

    def test_is_small(self):
        """The pages with their drawings are, and so are the pictures of pixels."""
        for pictures in (False, True):
            sizes = [len(data) for name, data in self.files.items() if name.endswith(".png") == pictures]
            self.assertLess(sum(sizes), 1000000)

    def test_has_the_pages_of_the_programs_and_of_every_language(self):
        for name in ("fitpoints", "fitpoints_judgement", "bindings", "bindings_c", "bindings_python",
                     "bindings_javascript"):
            self.assertIn(f"{name}.html", self.pages)

    def test_shows_bars_in_tables(self):
        self.assertEqual(self.pages["fitpoints.html"].count("<code>--method conformal|affine|omographic</code>"), 1)

    def test_does_not_link_to_the_page_that_it_has_not(self):
        self.assertNotIn("georeference.html", self.pages["index.html"])

    def test_takes_the_page_as_it_is(self):
        page = "<!DOCTYPE html><title>\\(x\\)</title><script>'<a href=\"b.html\">'</script>"
        with tempfile.TemporaryDirectory() as folder:
            built = pathlib.Path(folder, "built.html")
            built.write_text(page)
            files = make_site(folder, built)
        self.assertEqual(files["georeference.html"].decode(), page)
        self.assertIn('href="georeference.html"', files["index.html"].decode())
        self.assertEqual(files.keys() - {"georeference.html"}, self.files.keys())


class Claims(unittest.TestCase):
    """What pages written by hand say about measured tables."""

    def rows(self, document, *cells):
        """The numbers of the one row of a table that begins with these cells."""
        found = [line for line in (ROOT / document).read_text().splitlines()
                 if line.startswith("| " + " | ".join(cells) + " |")]
        self.assertEqual(len(found), 1, cells)
        return [float(cell) for cell in found[0].split("|")[1 + len(cells):-1] if re.fullmatch(r" *[\d.]+ *", cell)]

    def test_costs_on_a_device(self):
        costs = "docs/performance-device.md"
        affine, omographic = (self.rows(costs, f"`Calc{kind}Coefs`", "n = 10")[0] for kind in ("Affine", "Omographic"))
        self.assertGreater(omographic / affine, 10)
        self.assertAlmostEqual(affine / self.rows(costs, "`AffineUntransform`", "")[0], 20, delta=5)

    def test_size_on_a_device(self):
        page = "docs/footprint.md"
        code, constants, data = (self.rows(page, kind)[0] for kind in ("code", "read-only data", "writable data"))
        stacks = re.findall(r"^\| `.* \| (\d+) \|$", (ROOT / page).read_text(), re.MULTILINE)
        self.assertLessEqual(code + constants, 25 * 1024)
        self.assertLessEqual(code + constants + data + max(map(int, stacks)), 28 * 1024)

    def test_speed_of_the_fits(self):
        for kind in ("affine", "conformal", "omographic"):
            row = re.search(rf"^\| {kind} fit, 100 points \| ([\d.]+) (ns|µs) \| .* \| ([\d.]+) \|$",
                            (ROOT / "README.md").read_text(), re.MULTILINE)
            self.assertLess(float(row[1]) * {"ns": 1, "µs": 1000}[row[2]], 3000)
            self.assertGreater(float(row[3]), 2.5)

    def test_number_of_polynomials(self):
        text = (ROOT / "docs/roots.md").read_text()
        counted = sum(int(number) for number in re.findall(r"^\|[^|]*\| (\d+) \|", text, re.MULTILINE))
        stated = re.search(r"counted for ([\d ]+) polynomials", (ROOT / "docs/site/measured.md").read_text())
        self.assertAlmostEqual(int(stated[1].replace(" ", "")), counted, delta=5000)


class Links(unittest.TestCase):
    def site(self, folder, **pages):
        for name, text in pages.items():
            pathlib.Path(folder, f"{name}.html").write_text(text)
        return pathlib.Path(folder)

    def test_that_lead_nowhere_are_found(self):
        with tempfile.TemporaryDirectory() as folder:
            site = self.site(folder, index='<a href="b.html#here">x</a><a href="b.html#gone">x</a><img src="no.svg">',
                             b='<p id="here"><a href="#gone">x</a><a href="index.html">x</a>')
            self.assertEqual(site_links.broken_links(site),
                             ["b.html: #gone: no such anchor", "index.html: b.html#gone: no such anchor",
                              "index.html: no.svg: no such file"])

    def test_nothing_but_what_they_reach_stays(self):
        with tempfile.TemporaryDirectory() as folder:
            site = self.site(folder, index='<a href="a.html#x">x</a>', a="", b='<a href="a.html">x</a>')
            site_links.remove_unused(site)
            self.assertEqual(sorted(path.name for path in site.iterdir()), ["a.html", "index.html"])


class Warnings(unittest.TestCase):
    def run_on(self, text):
        with tempfile.TemporaryDirectory() as folder:
            header = pathlib.Path(folder, "header.h")
            header.write_text(text)
            build_site.run_doxygen(pathlib.Path(folder), [header], [])

    def test_end_the_build(self):
        good = "/** @defgroup g Group\n * @{ */\n/** Works.\n * @param a_i in */\nvoid Work(int a_i);\n/** @} */\n"
        self.run_on(good)
        for bad in (good.replace("a_i in", "a_j in"), good.replace("Works.", "@ref nowhere"),
                    good.replace("Works.", "@image html none.svg")):
            with self.assertRaisesRegex(SystemExit, "doxygen: exit code"):
                self.run_on(bad)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
