"""test_documentation.py: the docstrings describe the signatures and have examples, and the types hold.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import doctest
import importlib
import inspect
import os
import pathlib
import subprocess
import sys

import pytest
from numpydoc.validate import validate

import nuv1math

# What numpydoc asks for and the header of C++ has in another way: an example, an extended summary and references for
# every function, verbs in the imperative, descriptions that begin with a capital letter even if with a symbol; and a
# blank line before the text of a docstring.
NOT_ASKED = {"ES01", "EX01", "GL01", "PR08", "RT02", "RT04", "SA01", "SS05", "SS06"}


def test_there_are_examples():
    functions = importlib.import_module("nuv1math._functions")
    assert sum(len(test.examples) for test in doctest.DocTestFinder().find(functions)) >= 20


@pytest.mark.parametrize("name", [name for name in nuv1math.__all__ if inspect.isfunction(getattr(nuv1math, name))])
def test_the_docstring_describes_the_signature(name):
    errors = [error for error in validate(f"nuv1math.{name}")["errors"] if error[0] not in NOT_ASKED]
    assert errors == []


def test_everything_public_is_documented():
    assert [name for name in nuv1math.__all__ if not (getattr(nuv1math, name).__doc__ or "").strip()] == []


def mypy(directory, *arguments):
    """What mypy prints, run on what is installed here, or on the sources of a developer."""
    command = [sys.executable, "-m", "mypy", "--cache-dir", directory / "cache", *arguments]
    sources = os.environ.get("PYTHONPATH")
    environment = {**os.environ, "MYPYPATH": sources} if sources else os.environ
    return subprocess.run(command, cwd=directory, text=True, stdout=subprocess.PIPE, env=environment).stdout


def test_the_types_hold(tmp_path):
    assert "Success: no issues found" in mypy(tmp_path, "--strict", pathlib.Path(nuv1math.__file__).parent)


def test_users_get_the_types(tmp_path):
    program = tmp_path / "program.py"
    program.write_text("from nuv1math import CalcAffineCoefs\n"
                       "c = CalcAffineCoefs([0, 1, 2], [0, 1, 2], [0, 1, 2], [0, 1, 2])\n"
                       "reveal_type(c.a)\nc.g\n", encoding="utf-8")
    printed = mypy(tmp_path, program)
    assert 'Revealed type is "builtins.float"' in printed
    assert '"AffineCoefs" has no attribute "g"' in printed
    assert printed.count("program.py") == 2
