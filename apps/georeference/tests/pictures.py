#!/usr/bin/env python3
"""pictures: three states of the page as PNG files, for its README and to be looked at.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    pictures.py PAGE DIRECTORY      writes two_images.png, blunder.png and narrow.png
"""

import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
from browser import Browser
from page import Page


def take(page, folder, name):
    page.press("message-close")
    page.browser.js("document.activeElement.blur(); scrollTo(0, 0)")
    page.settle()
    page.browser.screenshot(folder / f"{name}.png")


def take_all(page, folder):
    page.open()
    page.select("theme", "light")
    page.press("sample-two")
    page.wait_for_points(12)
    take(page, folder, "two_images")
    page.press("sample")
    page.wait_for_points(12)
    page.edit(5, "X", "4500390")
    take(page, folder, "blunder")
    page.browser.resize(360, 1200)
    page.press("sample")
    take(page, folder, "narrow")


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: pictures.py PAGE DIRECTORY")
    folder = pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as place:
        browser = Browser(place, width=1200, height=1000)
        try:
            take_all(Page(browser, sys.argv[1]), folder)
        finally:
            browser.quit()


if __name__ == "__main__":
    main()
