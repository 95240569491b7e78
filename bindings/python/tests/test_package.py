"""test_package.py: the package is the installed one, and has all of the C interface.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import importlib.metadata
import os
import pathlib
import re
import subprocess

import pytest

import nuv1math
from nuv1math import _native

ROOT = pathlib.Path(__file__).resolve().parents[3]


INSTALLED = pytest.mark.skipif("NUV1MATH_PYTHON_ENVIRONMENT" not in os.environ, reason="the sources are tested")


def printed_by(*command):
    """What a command prints."""
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout


@INSTALLED
def test_the_tested_package_is_the_one_in_the_environment():
    environment = pathlib.Path(os.environ["NUV1MATH_PYTHON_ENVIRONMENT"])
    assert environment in pathlib.Path(nuv1math.__file__).parents


@INSTALLED
def test_the_installed_package_has_version_and_licence():
    assert importlib.metadata.version("nuv1math") == nuv1math.__version__
    licence = importlib.metadata.distribution("nuv1math").read_text("LICENSE")
    assert licence == (ROOT / "LICENSE").read_text(encoding="utf-8")


def test_the_extension_holds_the_library_and_shows_nothing_of_it():
    needed = re.findall(r"NEEDED.*\[(.*?)\]", printed_by("readelf", "-d", _native.__file__))
    assert "libc.so.6" in needed and not [name for name in needed if "nuv" in name or "++" in name]
    shown = printed_by("nm", "-D", "--defined-only", "--format=just-symbols", _native.__file__)
    assert shown.split() == ["PyInit__native"]


def test_the_extension_has_the_functions_of_the_c_interface():
    definitions = (ROOT / "bindings/c/nuv1math_c.def").read_text(encoding="utf-8")
    functions = {name for name in dir(_native.lib) if name.startswith("nuv_")}
    assert functions == set(definitions.split("EXPORTS")[1].split())
