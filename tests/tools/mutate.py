#!/usr/bin/env python3
"""mutate.py: changes the library's sources one place at a time and lets the tests notice.

usage: mutate.py [-n SAMPLE] [-j JOBS] [-b BUILD] [-s SEED] [-l] [-a] [SOURCE ...]

Every mutant is one changed line. It is compiled as the build compiles it; one whose object is the same as the
original's is equivalent and not run. The others are killed when a test program fails, crashes or takes too long. A
survivor counts as reviewed if tests/mutation_survivors.txt names it. Needs a build of the preset default with its test
programs. -n takes a random sample of each source, -l only lists the mutants. -a takes those survivors whose reason is
that the address sanitizer reports them, and a build of the preset linux-sanitize: there they must be killed.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import random
import re
import shlex
import signal
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SOURCES = ROOT / "nuv/nuv1math/src"
HEADERS = ROOT / "nuv/nuv_math/include"
SURVIVORS = ROOT / "tests/mutation_survivors.txt"
DEFAULT_SOURCES = ["TRIG.cpp", "affine.cpp", "assertion.cpp", "cholesky.cpp", "choleskytile.h", "functionsimp.h",
                   "module.cpp", "omographic.cpp", "platform_posix.cpp", "poly.cpp", "random.cpp", "vectors.h"]

# Test programs and what they run, those first that kill most in least time. "shared" ones load the mutated library,
# "static" ones are linked with it. load_tests are left out: they open the library by the path of the build.
SLOW = ("SolveQuadTrig.SpecialArguments*:SolveQuadTrig.ArgumentsOfEverySize*:*FunctionChangesSign:"
        "CholeskyOrder.EveryFailingDiagonal*:CholeskySize.*:RandnDistribution.*")
STAGES = [("shared", "public_tests", "*Vectors*"), ("shared", "public_tests", "FAMILY"),
          ("static", "internal_tests", "*"), ("shared", "public_tests", "*-*Vectors*:" + SLOW),
          ("static", "calls_tests", "*"), ("static", "pairs_tests", "*-CholeskyOrder.EveryFailing*"),
          ("static", "allocation_tests", "*"), ("static", "report_tests", "*"),
          ("static", "platform_tests", "*"),
          ("shared", "property_tests", "*"), ("shared", "public_tests", SLOW)]
FAMILIES = {"TRIG.cpp": "*Trig*", "affine.cpp": "*Affine*:*Conformal*", "cholesky.cpp": "*Chol*:*LowTri*",
            "choleskytile.h": "*Chol*", "omographic.cpp": "*Omographic*:CalcCoefs*", "poly.cpp": "*Roots*",
            "random.cpp": "*Rand*"}

SWAPS = {" + ": [" - "], " - ": [" + "], " * ": [" / ", " + "], " / ": [" * "], " % ": [" / "],
         " += ": [" -= "], " -= ": [" += "], " *= ": [" /= "], " /= ": [" *= "],
         " < ": [" <= ", " > "], " <= ": [" < ", " >= "], " > ": [" >= ", " < "], " >= ": [" > ", " <= "],
         " == ": [" != "], " != ": [" == "], " && ": [" || "], " || ": [" && "]}
OPERAND = r"[\w.]+(?:\[[^\]]+\])?(?:\([^()]*\))?(?: [*/] [\w.]+(?:\[[^\]]+\])?(?:\([^()]*\))?)*"
PATTERNS = [  # text and what replaces it
    (r"(?<=[=(,?:*/+] )-(?=[\w(])|(?<=[(\[])-(?=[\w(])|(?<=return )-(?=[\w(])", ""),  # a negation dropped
    (r"!(?=[\w(])(?!\()|!(?=\()", ""),
    (r"\+\+(?=\w)", "--"), (r"--(?=\w)", "++"),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"),
    (r"\bRET_IMPOSSIBLE\b", "RET_INDETERMINATE"), (r"\bRET_INDETERMINATE\b", "RET_IMPOSSIBLE"),
    (r"\bfabs(?=\()", ""), (r"(?<=\[)(\w*[ijkpq])(?=\])", r"\1 + 1"),
    (rf"({OPERAND}) \+ ({OPERAND}) \+ ({OPERAND})", r"\1 + (\2 + \3)"),  # orders of accumulation
    (rf"({OPERAND}) - ({OPERAND}) - ({OPERAND})", r"\1 - (\2 + \3)"),
    (rf"({OPERAND}) - ({OPERAND}) \+ ({OPERAND})", r"\1 - (\2 - \3)"),
    (rf"\(({OPERAND}) \+ ({OPERAND})\) \+ ({OPERAND})", r"\1 + (\2 + \3)"),
    (rf"\(({OPERAND}) \+ ({OPERAND})\) - ({OPERAND})", r"\1 + (\2 - \3)"),
    (rf"\(({OPERAND}) - ({OPERAND})\) \+ ({OPERAND})", r"\1 - (\2 - \3)"),
    (r"([\w.]+) \* ([\w.]+) \* ([\w.]+)", r"\1 * (\2 * \3)"),
    (r"\(([\w.]+) \* ([\w.]+)\) \* ([\w.]+)", r"\1 * (\2 * \3)"),
    (r"for \((int|ptrdiff_t) (\w+) = ([^;]+); \2 < ([^;]+); \+\+\2\)", r"for (\1 \2 = (\4) - 1; \2 >= \3; --\2)"),
    (r"for \((int|ptrdiff_t) (\w+) = ([^;]+); \2 <= ([^;]+); \+\+\2\)", r"for (\1 \2 = \4; \2 >= \3; --\2)"),
    (r"for \((int|ptrdiff_t) (\w+) = ([^;]+); \2 >= ([^;]+); --\2\)", r"for (\1 \2 = \4; \2 <= \3; ++\2)"),
]
STATEMENT = re.compile(r"^(?!    return\b)\s+(?=\S)(?!(?:const|double|int|bool|char|unsigned|ptrdiff_t|size_t|ssize_t|"
                       r"static|typedef|using|T[A-Z]\w+ \w|struct|extern|else|case)\b)[^{};]*(?:\{[^{}]*\})?[^{};]*;$")
FUNCTION = re.compile(r"^(?:static |inline |extern \"C\" |__attribute__\S* )*[\w:<>]+[\w:<>*& ]*?[ *&](\w+)\(")

TMutant = collections.namedtuple("TMutant", "source number function before after")


def path_of(name):
    return (SOURCES if (SOURCES / name).exists() else HEADERS) / name


def code_part(line):
    """The line with strings blanked and its comment cut off; positions stay."""
    line = re.sub(r'"(?:[^"\\]|\\.)*"', lambda m: '"' + " " * (len(m.group()) - 2) + '"', line)
    line = re.sub(r"/\*.*?\*/", lambda m: " " * len(m.group()), line)
    return line.split("//")[0].rstrip()


def constants(code):
    """Changed constants: (start, end, text)."""
    for match in re.finditer(r"(?<![\w.])(\d+\.\d*(?:e[+-]?\d+)?|\d+e[+-]?\d+|\d+)(?![\w.])", code):
        text = match.group()
        if re.search(r"[.e]", text):
            value = float(text)
            changed = [repr(value * 2)] if value != 0 else ["1.0"]
            if len(text) > 10:  # every digit counts
                changed.append(repr(value * (1 + 2.0**-52)))
        else:
            changed = [str(int(text) + 1)] + ([str(int(text) - 1)] if int(text) > 0 else [])
        for other in changed:
            yield match.start(), match.end(), other


def changes(code, statement_before):
    """All changed forms of a line of code."""
    for old, replacements in SWAPS.items():
        for match in re.finditer(re.escape(old), code):
            for new in replacements:
                yield code[:match.start()] + new + code[match.end():]
    for pattern, replacement in PATTERNS:
        for match in re.finditer(pattern, code):
            yield code[:match.start()] + match.expand(replacement) + code[match.end():]
    for start, end, text in constants(code):
        yield code[:start] + text + code[end:]
    if statement_before and STATEMENT.match(code):
        yield re.match(r"\s*", code).group() + ";"


def mutants_of(path):
    function = "-"
    before = ""
    for number, line in enumerate(path.read_text().splitlines()):
        code = code_part(line)
        if code.startswith("#") or not code or before.endswith("\\") or "typedef char" in code or "sizeof(" in code[:9]:
            before = code or before
            continue
        found = FUNCTION.match(code)
        if found:
            function = found.group(1)
        seen = {code}
        for changed in changes(code, before.rstrip().endswith((";", "{", "}", ":"))):
            if changed not in seen:
                seen.add(changed)
                # Blanked strings are put back: the changed part never reaches into one.
                yield TMutant(path.name, number, "-" if line[:1].strip() and not found else function, line.strip(),
                              splice(line, code, changed))
        before = code


def splice(line, code, changed):
    """The change from code to changed, made in the line itself."""
    head = 0
    while head < min(len(code), len(changed)) and code[head] == changed[head]:
        head += 1
    tail = 0
    while tail < min(len(code), len(changed)) - head and code[-1 - tail] == changed[-1 - tail]:
        tail += 1
    return (line[:head] + changed[head:len(changed) - tail] + line[len(code) - tail:]).strip()


class Build:
    """The prebuilt objects and programs, and how they are made."""

    def __init__(self, directory):
        self.directory = directory.resolve()
        self.compile = {}
        for entry in json.loads((directory / "compile_commands.json").read_text()):
            words = shlex.split(entry["command"])
            output = words[words.index("-o") + 1]
            first = next(i for i, word in enumerate(words) if re.search(r"(c\+\+|g\+\+)(-\d+)?$", word))
            keep = [word for word in words[first:words.index("-o")] if word != "-g"] + ["-w"]
            self.compile[output] = (pathlib.Path(entry["file"]), keep)
        self.sanitized = any("-fsanitize=address" in word for _, words in self.compile.values() for word in words)
        self.limits = {}
        self.unlinked = set()

    def objects_of(self, target):
        return {output: how for output, how in self.compile.items() if f"/{target}.dir/" in output}

    def run(self, words, **options):
        return subprocess.run(words, cwd=self.directory, capture_output=True, check=False, **options)

    def compile_to(self, output, file, words, scratch):
        return self.run([words[0], f"-I{scratch}", f"-I{SOURCES}", *words[1:], "-c", str(file), "-o", str(output)])

    def link_command(self, program):
        text = subprocess.run(["ninja", "-t", "commands", f"tests/{program}"], cwd=self.directory, capture_output=True,
                              text=True, check=True).stdout.splitlines()[-1]
        return shlex.split(re.sub(r"^: && | && .*$", "", text))


class Mutation:
    """One mutant in a directory of its own."""

    def __init__(self, build, scratch):
        self.build = build
        self.scratch = scratch
        self.objects = {}  # of the library and of the tests, by the name of the original

    def compile(self, name, text, targets):
        """None if it does not compile for the targets; otherwise the objects that it changes, as bytes."""
        planted = self.scratch / name
        planted.write_text(text)
        header = name.endswith(".h")
        contents = []
        for target in targets:
            for output, (file, words) in self.build.objects_of(target).items():
                if not (file.name == name or (header and f'"{name}"' in file.read_text())):
                    continue
                made = self.scratch / (target + "-" + file.name + ".o")
                source = planted if file.name == name else file
                if header and file.parent == SOURCES:  # in whose directory the header would be found unchanged
                    source = self.scratch / file.name
                    source.write_bytes(file.read_bytes())
                if self.build.compile_to(made, source, words, self.scratch).returncode != 0:
                    return None
                self.objects[output] = made
                contents.append(made.read_bytes())
        return contents

    def library(self):
        path = self.scratch / "libnuv1math.so.1"
        if path.exists():
            return path
        objects = [str(self.objects.get(output, output)) for output in self.build.objects_of("nuv1math_objects")]
        linked = self.build.run(["cc", "-shared", "-Wl,-soname,libnuv1math.so.1", "-o", str(path), *objects, "-lm"])
        return path if linked.returncode == 0 else None

    def program(self, name):
        path = self.scratch / name
        words = []
        for word in self.build.link_command(name):
            if word.endswith(".a"):
                objects = {"libnuv1math_static.a": "/nuv1math_objects.dir/",
                           "libnuv1math_calls.a": "/nuv1math_calls_objects.dir/",
                           "libnuv1math_pairs.a": "/nuv1math_pairs_objects.dir/"}.get(word.split("/")[-1])
                words += [str(made) for output, made in self.objects.items() if objects and objects in output]
            words.append(str(self.objects.get(word, word)))
        words[words.index("-o") + 1] = str(path)
        return path if self.build.run(words).returncode == 0 else None

    def fails(self, kind, program, test_filter, limit):
        """Why the programs notice, or None."""
        environment = dict(os.environ, RC_PARAMS="seed=20261121")
        if kind == "shared":
            path = self.build.directory / "tests" / program
            library = self.library()
            if library is None:
                return "link"
            environment["LD_LIBRARY_PATH"] = str(library.parent)
        else:
            path = self.program(program)
            if path is None:
                return "link"
        # A mutant may allocate without end, or write as much. The address sanitizer has a limit of its own.
        room = [] if self.build.sanitized else ["--as=40000000000"]
        with subprocess.Popen(["prlimit", *room, "--fsize=100000000", str(path), "--gtest_filter=" + test_filter,
                               "--gtest_brief=1", "--gtest_fail_fast"], cwd=self.build.directory, env=environment,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              start_new_session=True) as ran:
            try:
                output, errors = ran.communicate(timeout=limit)
            except subprocess.TimeoutExpired:
                os.killpg(ran.pid, signal.SIGKILL)  # its children too
                return "timeout"
        if ran.returncode == 0 and b"assertion failure:" not in errors and b"PASSED" in output:
            return None
        failed = re.search(rb"^\[  FAILED  \] ([\w./]+)", output, re.M)
        return failed.group(1).decode() if failed else f"{program} ends with {ran.returncode}"


# Other forms of the library, and who is linked with them.
FORMS = {"calls_tests": "nuv1math_calls_objects", "pairs_tests": "nuv1math_pairs_objects"}


def targets_of(source, program):
    """What is compiled anew for a test program."""
    if program in FORMS:
        return [FORMS[program]]
    return ["nuv1math_objects"] + (["internal_tests", "allocation_tests"] if source.endswith(".h") else [])


def stages_for(source):
    # No table of exact results goes through TRIG.cpp or random.cpp: their own tests come first.
    stages = STAGES if source not in ("TRIG.cpp", "random.cpp") else [STAGES[1], STAGES[0], *STAGES[2:]]
    for kind, program, test_filter in stages:
        family = FAMILIES.get(source)
        if test_filter == "FAMILY":
            if family:
                yield kind, program, family + "-" + SLOW
        else:
            yield kind, program, test_filter


def measure(build, name):
    """Seconds for each stage: ten times what the original takes, at least five; and which programs can be linked."""
    with tempfile.TemporaryDirectory() as scratch:
        for stage in stages_for(name):
            kind, program, _ = stage
            mutation = Mutation(build, pathlib.Path(scratch))
            mutation.compile(name, path_of(name).read_text(), targets_of(name, program))
            if kind == "static" and mutation.program(program) is None:
                build.unlinked.add((name, stage))  # the program has the source's functions itself
            elif stage not in build.limits:
                start = time.monotonic()
                failed = mutation.fails(*stage, 600)
                if failed:
                    raise SystemExit(f"the original does not pass {stage}: {failed}")
                build.limits[stage] = max(5.0, 10 * (time.monotonic() - start))


def judge(build, original, mutant):
    if "NUV_ASSERT_AT(" in mutant.before:  # every character of these is in a list that a test compares them with
        return "killed", "sources_test.py: assertion sites"
    path = path_of(mutant.source)
    lines = path.read_text().splitlines(keepends=True)
    indent = re.match(r"\s*", lines[mutant.number]).group()
    lines[mutant.number] = indent + mutant.after + "\n"
    with tempfile.TemporaryDirectory() as scratch:
        mutation = Mutation(build, pathlib.Path(scratch))
        text = "".join(lines)
        changed = {}
        for stage in stages_for(mutant.source):
            form = stage[1] if stage[1] in FORMS else None
            if form not in changed:
                contents = mutation.compile(mutant.source, text, targets_of(mutant.source, form))
                if contents is None:
                    return "invalid", ""
                changed[form] = contents != original[form]
            if changed[form] and (mutant.source, stage) not in build.unlinked:
                why = mutation.fails(*stage, build.limits[stage])
                if why == "link":
                    return "invalid", why
                if why:
                    return "killed", why
    return ("survived", "") if any(changed.values()) else ("equivalent", "the same object")


def reviewed():
    entries = {}
    for row in SURVIVORS.read_text().splitlines() if SURVIVORS.exists() else []:
        if row and not row.startswith("#"):
            source, function, before, after, reason = row.split(" ## ")
            entries[source, function, before, after] = reason
    return entries


def key_of(mutant):
    return mutant.source, mutant.function, mutant.before, mutant.after


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].split("\n")[0])
    parser.add_argument("-n", "--sample", type=int)
    parser.add_argument("-j", "--jobs", type=int, default=1)
    parser.add_argument("-b", "--build", type=pathlib.Path, default=ROOT / "build/default")
    parser.add_argument("-s", "--seed", type=int, default=1)
    parser.add_argument("-l", "--list", action="store_true")
    parser.add_argument("-a", "--address", action="store_true")
    parser.add_argument("sources", nargs="*", default=DEFAULT_SOURCES)
    args = parser.parse_args()
    known = reviewed()
    total = collections.Counter()
    unknown = 0
    build = None if args.list else Build(args.build)
    for name in args.sources or DEFAULT_SOURCES:
        path = path_of(name)
        mutants = list(mutants_of(path))
        if args.sample and args.sample < len(mutants):
            mutants = sorted(random.Random(args.seed).sample(mutants, args.sample), key=lambda m: m.number)
        if args.address:
            mutants = [mutant for mutant in mutants if "address sanitizer" in known.get(key_of(mutant), "")]
            if not mutants:
                continue
        if args.list:
            for mutant in mutants:
                print(f"{name}:{mutant.number + 1}: {mutant.function}: {mutant.before} => {mutant.after}")
            continue
        measure(build, name)
        with tempfile.TemporaryDirectory() as scratch:
            mutation = Mutation(build, pathlib.Path(scratch))
            original = {form: mutation.compile(name, path.read_text(), targets_of(name, form))
                        for form in [None, *FORMS]}
        counts = collections.Counter()
        with concurrent.futures.ThreadPoolExecutor(args.jobs) as pool:
            for mutant, (verdict, why) in zip(mutants, pool.map(lambda m: judge(build, original, m), mutants)):
                counts[verdict] += 1
                text = f"{name}:{mutant.number + 1}: {mutant.function}: {mutant.before} => {mutant.after}"
                if verdict == "survived":
                    reason = None if args.address else known.get(key_of(mutant))
                    unknown += reason is None
                    why = "reviewed: " + reason if reason else "NOT REPORTED" if args.address else "NOT REVIEWED"
                print(f"{verdict}: {text}: {why}", flush=True)
        total += counts
        print(summary(name, counts), flush=True)
    if not args.list:
        print(summary("total", total) + f", {unknown} of them not {'reported' if args.address else 'reviewed'}")
    return 1 if unknown else 0


def summary(name, counts):
    tried = counts["killed"] + counts["equivalent"] + counts["survived"]
    return (f"{name}: {tried} tried, {counts['killed']} killed, {counts['equivalent']} equivalent (the same object), "
            f"{counts['survived']} survived")


if __name__ == "__main__":
    sys.exit(main())
