#!/usr/bin/env python3
# planted.py: plants each bug of planted.txt in a copy of its source and lets the fuzz target hunt it.
# SPDX-License-Identifier: MIT
"""usage: planted.py [-s SECONDS] [-b BUILD] [TEXT ...]

Needs a build of the preset fuzz. Hunts for the bugs whose line contains one of the texts, or for all. Every one must
be found within the seconds (60), beginning with the kept corpus.
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
        target, source, old, new, finder = (field.strip().replace("\\|", "|").replace("\\n", "\n")
                                            for field in line.replace("\\|\\|", "\0").split(" | "))
        yield target, source, old.replace("\0", "||"), new.replace("\0", "||"), finder


def compile_command(build, source):
    """How the build compiles a source of the library, without its output and its compiler cache."""
    for entry in json.loads((build / "compile_commands.json").read_text()):
        if entry["file"].endswith("/src/" + source) and "nuv1math_fuzz_objects" in entry["output"]:
            words = shlex.split(entry["command"])
            words = words[next(i for i, word in enumerate(words) if "clang" in word):]
            return words[:words.index("-o")]
    raise SystemExit(f"{source} is not in {build}/compile_commands.json: build the preset fuzz first")


def hunt(build, seconds, target, source, old, new, scratch):
    path = next(d / source for d in DIRECTORIES if (d / source).exists())
    text = path.read_text()
    if text.count(old) != 1:
        return "STALE: its text is there %d times" % text.count(old)
    planted = scratch / source
    planted.write_text(text.replace(old, new))
    # A header is found before the original one; every source is then compiled anew.
    sources = [source] if source.endswith(".cpp") else ["affine.cpp", "poly.cpp", "omographic.cpp", "TRIG.cpp"]
    objects = []
    for name in sources:
        file = planted if name == source else DIRECTORIES[0] / name
        objects.append(scratch / (name + ".o"))
        words = compile_command(build, name)
        words[1:1] = ["-I" + str(scratch), "-w"]
        subprocess.run(words + ["-c", str(file), "-o", str(objects[-1])], check=True)
    objects_of_target = build / f"fuzz/CMakeFiles/fuzz_{target}.dir"
    program = scratch / "program"
    # The archive's own object is left out, because the planted one defines everything that it has.
    own = sorted(objects_of_target.glob("*.o"))
    if not source.endswith(".cpp"):
        own = []
        for entry in json.loads((build / "compile_commands.json").read_text()):
            if f"fuzz_{target}.dir" in entry["output"]:
                words = shlex.split(entry["command"])
                words = words[next(i for i, word in enumerate(words) if "clang" in word):]
                own.append(scratch / pathlib.Path(entry["output"]).name)
                subprocess.run([words[0], "-I" + str(scratch)] + words[1:words.index("-o")] +
                               ["-c", entry["file"], "-o", str(own[-1])], check=True)
    subprocess.run(["clang++", "-fsanitize=fuzzer,address,undefined", *map(str, own), *map(str, objects),
                    str(build / "fuzz/libnuv1math_fuzz.a"), "-o", str(program)], check=True)
    (scratch / "found").mkdir()
    run = subprocess.run([str(program), f"-max_total_time={seconds}", "-timeout=5", "-max_len=600",
                          f"-artifact_prefix={scratch}/", str(scratch / "found"), str(ROOT / "fuzz/corpus" / target)],
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
    parser.add_argument("texts", nargs="*")
    args = parser.parse_args()
    missed = 0
    tried = 0
    for target, source, old, new, finder in bugs(args.texts):
        with tempfile.TemporaryDirectory() as scratch:
            outcome = hunt(args.build, args.seconds, target, source, old, new, pathlib.Path(scratch))
        tried += 1
        missed += not outcome.startswith("found")
        print(f"{target}: {finder}: {outcome}", flush=True)
    print(f"{tried} planted, {tried - missed} found, {missed} missed")
    return 1 if missed or not tried else 0


if __name__ == "__main__":
    sys.exit(main())
