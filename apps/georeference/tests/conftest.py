"""conftest: the browser and the page that every test opens, and the native fitpoints that it is compared with.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

Environment: NUV_PAGE is the built page, NUV_FITPOINTS the native program, NUV_DATA a directory of control points; a test
that needs the last one is left out if there is none.
"""

import os
import pathlib
import re
import subprocess
import sys

import pytest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))
from browser import Browser
from page import Page

LOCAL = re.compile(r"(file|data|blob):")


@pytest.fixture(scope="session")
def browser(tmp_path_factory):
    browser = Browser(tmp_path_factory.mktemp("browser"))
    yield browser
    browser.quit()


@pytest.fixture
def page(browser):
    """The page, opened for the first time. Afterwards nothing may have failed, and nothing left the machine."""
    page = Page(browser, os.environ["NUV_PAGE"])
    page.open()
    yield page
    requests, messages = browser.log()
    assert [url for url in requests if not LOCAL.match(url)] == []
    assert messages == []


class Fitpoints:
    """The native program."""

    def __init__(self, folder):
        self.folder = folder

    def run(self, file, *options):
        run = subprocess.run([os.environ["NUV_FITPOINTS"], file, *options], capture_output=True, cwd=self.folder)
        return run.returncode, run.stdout.decode(), run.stderr.decode(errors="replace")

    def report(self, file, *options):
        code, report, errors = self.run(file, *options)
        assert code == 0, errors
        return report

    def output(self, file, option, *options):
        """The bytes of an output that is not the report."""
        code, text, errors = self.run(file, option, "-", *options)
        assert code == 0, errors
        return text.encode()


@pytest.fixture
def fitpoints(tmp_path):
    return Fitpoints(tmp_path)


@pytest.fixture(scope="session")
def data():
    folder = pathlib.Path(os.environ.get("NUV_DATA", ""))
    if not os.environ.get("NUV_DATA") or not folder.is_dir():
        pytest.skip("no directory of control points")
    return folder
