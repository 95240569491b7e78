#!/usr/bin/env python3
# planted.py: plants each bug of planted.txt in a copy of its source and lets the fuzz target hunt it.
# SPDX-License-Identifier: MIT
"""usage: planted.py [-s SECONDS] [-b BUILD] [-c] [TEXT ...]

Needs a build of the preset fuzz. Hunts for the bugs whose line contains one of the texts, or for all. Every one must
be found within the seconds (60), beginning with the kept corpus. -c only checks that every text is in its source once.
"""

import argparse
import json
import pathlib
import shlex
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
DIRECTORIES = [ROOT / "nuv/nuv1math/src", ROOT / "nuv/nuv_math/include"]


def bugs(texts):
    for line in (ROOT / "fuzz/planted.txt").read_text().splitlines():
        if line.startswith("#") or not line or (texts and not any(text in line for text in texts)):
            continue
        target, source, old, new, finder = (field.strip().replace("<newline>", "\n")
                                            for field in line.split(" | "))
        yield target, source, old, new, finder


def compile_commands(build, directory):
    """Source and command, without output and compiler cache, of everything that goes into an object directory."""
    for entry in json.loads((build / "compile_commands.json").read_text()):
        words = shlex.split(entry["command"])
        if directory in words[words.index("-o") + 1]:
            first = next(i for i, word in enumerate(words) if word.endswith("clang++"))
            yield pathlib.Path(entry["file"]), words[first:words.index("-o")]


def compile_to(scratch, file, words):
    output = scratch / f"{file.parent.name}-{file.name}.o"
    # The planted header, if it is one, is found before the original.
    subprocess.run([words[0], "-I" + str(scratch), "-w", *words[1:], "-c", str(file), "-o", str(output)], check=True)
    return str(output)


def source_text(source):
    return next(d / source for d in DIRECTORIES if (d / source).exists()).read_text()


def hunt(build, seconds, target, source, old, new, scratch):
    text = source_text(source)
    planted = scratch / source
    planted.write_text(text.replace(old, new))
    objects = []
    own = [str(file) for file in sorted((build / f"fuzz/CMakeFiles/fuzz_{target}.dir").glob("*.o"))]
    is_header = planted.suffix == ".h"
    if is_header:
        own = [compile_to(scratch, file, words) for file, words in compile_commands(build, f"fuzz_{target}.dir")]
    for file, words in compile_commands(build, "nuv1math_fuzz_objects.dir"):
        if file.name == source:
            objects.append(compile_to(scratch, planted, words))
        elif is_header and file.name in ("affine.cpp", "poly.cpp", "omographic.cpp", "TRIG.cpp"):
            objects.append(compile_to(scratch, file, words))
    # The archive's own object is not drawn, because the planted one defines everything that it has.
    program = scratch / "program"
    subprocess.run(["clang++", "-fsanitize=fuzzer,address,undefined", *own, *objects,
                    str(build / "fuzz/libnuv1math_fuzz.a"), "-o", str(program)], check=True)
    (scratch / "found").mkdir()
    run = subprocess.run([str(program), f"-max_total_time={seconds}", "-timeout=5", "-max_len=600",
                          f"-artifact_prefix={scratch}/", str(scratch / "found"), str(build / "fuzz/corpus" / target)],
                         capture_output=True, text=True, errors="replace", check=False)
    if run.returncode == 0:
        return "NOT FOUND"
    for line in run.stderr.splitlines():
        if any(mark in line for mark in ("does not hold", "assertion failure", "runtime error", "ERROR: ")):
            return "found: " + line.split("/")[-1].strip()
    return "found"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("-s", "--seconds", type=int, default=60)
    parser.add_argument("-b", "--build", type=pathlib.Path, default=ROOT / "build/fuzz")
    parser.add_argument("-c", "--check", action="store_true")
    parser.add_argument("texts", nargs="*")
    args = parser.parse_args()
    missed = 0
    tried = 0
    for target, source, old, new, finder in bugs(args.texts):
        count = source_text(source).count(old)
        if count != 1:
            outcome = f"STALE: its text is there {count} times: {old}"
        elif args.check:
            outcome = "found once"
        else:
            with tempfile.TemporaryDirectory() as scratch:
                outcome = hunt(args.build, args.seconds, target, source, old, new, pathlib.Path(scratch))
        tried += 1
        missed += not outcome.startswith("found")
        print(f"{target}: {finder}: {outcome}", flush=True)
    if args.check:
        print(f"{tried} checked, {missed} stale")
        return 1 if missed or not tried else 0
    print(f"{tried} planted, {tried - missed} found, {missed} missed")
    return 1 if missed or not tried else 0


if __name__ == "__main__":
    sys.exit(main())
