"""test_readme.py: the programs of the page run, and its facts are true.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import inspect
import pathlib
import re

import pytest

import nuv1math

HERE = pathlib.Path(__file__).resolve().parents[1]
README = (HERE / "README.md").read_text(encoding="utf-8")
PROGRAMS = re.findall(r"^```python\n(.*?)^```$(?:\n\n```text\n(.*?)^```$)?", README, re.DOTALL | re.MULTILINE)


@pytest.mark.parametrize("program, output", PROGRAMS)
def test_a_program_of_the_page_prints_what_the_page_shows(program, output, capsys):
    exec(compile(program, "README.md", "exec"), {})
    printed = capsys.readouterr().out
    assert printed == output if output else f"`{printed.strip()}`" in README


def test_every_attribute_that_the_page_names_exists():
    fit = nuv1math.fit([[0, 0], [1, 0], [0, 1]], [[0, 0], [1, 0], [0, 1]])
    names = set(re.findall(r"`fit\.(\w+)", README))
    assert names and all(hasattr(fit, name) for name in names)
    public = {name for name, _ in inspect.getmembers(type(fit)) if not name.startswith("_")} | {"judgement", "points"}
    assert names <= public


def test_the_signature_on_the_page_is_that_of_the_function():
    described = re.search(r"`nuv1math\.fit\((.*?)\)`", README)[1].split(", ")
    parameters = inspect.signature(nuv1math.fit).parameters.values()
    actual = [p.name if p.default is p.empty else f"{p.name}={p.default!r}".replace("'", '"') for p in parameters]
    assert [name for name in described if name != "*"] == actual
    first_after_star = described[described.index("*") + 1].split("=")[0]
    assert first_after_star == next(p.name for p in parameters if p.kind is p.KEYWORD_ONLY)
