"""test_package.py: the package is the installed one, and has all of the C interface.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import os
import pathlib

import nuv1math
from nuv1math import _native

ROOT = pathlib.Path(__file__).resolve().parents[3]


def test_the_tested_package_is_the_one_in_the_environment():
    environment = os.environ.get("NUV1MATH_PYTHON_ENVIRONMENT")
    if environment:  # without it a developer tests the sources
        assert pathlib.Path(environment) in pathlib.Path(nuv1math.__file__).parents


def test_the_extension_has_the_functions_of_the_c_interface():
    definitions = (ROOT / "bindings/c/nuv1math_c.def").read_text(encoding="utf-8")
    assert {name for name in dir(_native.lib) if name.startswith("nuv_")} == set(definitions.split("EXPORTS")[1].split())
