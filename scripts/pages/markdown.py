"""markdown: what the pages have in common: tables, measured regions, and files that are replaced as a whole.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

A page that is written by hand has regions for what is measured:

    <!-- measured: NAME -->
    (this is replaced)
    <!-- end -->
"""

import argparse
import json
import os
import pathlib
import re
import subprocess
import sys
import textwrap

ROOT = pathlib.Path(__file__).resolve().parents[2]


def fail(message):
    sys.exit(f"{pathlib.Path(sys.argv[0]).stem} page: {message}")


def table(header, rows, left=(0,), centred=()):
    """A table whose columns are right-aligned, as numbers are, except those in left and in centred."""
    rules = ["---" if column in left else ":-:" if column in centred else "--:" for column in range(len(header))]
    return "\n".join("| " + " | ".join(map(str, line)) + " |" for line in [header, rules, *rows])


def version_of(program):
    return subprocess.run([program, "--version"], check=True, capture_output=True, text=True).stdout.splitlines()[0]


def compiler_version(compiler):
    """Without the name of the program, which differs between machines."""
    return version_of(compiler).split(" ", 1)[1]


def paragraph(text):
    return textwrap.fill(text, 120, break_long_words=False, break_on_hyphens=False)


def bullets(texts):
    return "\n".join(textwrap.fill(f"- {text}", 120, subsequent_indent="  ", break_long_words=False,
                                   break_on_hyphens=False) for text in texts)


def listed(words):
    """The words as an enumeration in a sentence."""
    words = [str(word) for word in words]
    return ", ".join(words[:-1]) + " and " + words[-1] if len(words) > 1 else "".join(words)


def read_text(path, command):
    """A file in the build directory. If it is not there, the message names the command that makes it."""
    if not (ROOT / path).exists():
        fail(f"{path} is missing; {command} makes it")
    return (ROOT / path).read_text()


def read_json(path, command):
    return json.loads(read_text(path, command))


def write(path, text):
    """Replaces a file as a whole."""
    path = ROOT / path
    unfinished = path.with_name(path.name + ".new")
    unfinished.write_text(text)
    os.replace(unfinished, path)


def check_arguments(description):
    """The arguments of a script that writes what a program computes, or with --check compares and writes nothing."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--check", action="store_true", help="compare with what is there instead of writing it")
    parser.add_argument("program", help="the built program that computes it")
    return parser.parse_args()


def with_regions(path, regions):
    """The page with other regions, given by name. Each must be in the page once, and no other one."""
    text = (ROOT / path).read_text()
    there = sorted(re.findall(r"^<!-- measured: (\w+) -->$", text, re.MULTILINE))
    if there != sorted(regions):
        fail(f"{path} has the regions {there}, and {sorted(regions)} are measured")
    for name, content in regions.items():
        start = f"<!-- measured: {name} -->\n"
        pattern = re.escape(start) + r"(?:(?!<!-- measured: ).)*?<!-- end -->$"
        text, count = re.subn(pattern, lambda _: f"{start}{content.strip()}\n<!-- end -->", text, flags=re.S | re.M)
        if count != 1:
            fail(f"{path}: the region {name} has no end")
    return text


def write_regions(path, regions):
    write(path, with_regions(path, regions))
