#!/usr/bin/env python3
"""mutate.py: changes the library's source one place at a time; the tests, or the fuzz targets, must notice.

usage: mutate.py [--all | --marked | --sample N] [--fuzz SECONDS] [--jobs N] [--seed N] [SOURCE ...]

Each mutant is one changed line (mutations.py). It is compiled and linked as the builds do it, in a directory of its
own. A mutant whose objects are the same as the original's is not run. The others are killed when a test fails, crashes
or takes too long: first the quick tests of the preset default, then the tests of the device (preset linux-armel), the
quick tests under the sanitizers (preset linux-sanitize), and the slow tests. A line that may have survivors has a
marker (markers.py).

Fails if a mutant of another line survives. --all and --marked, which takes the lines that have a marker, also fail
for each marker "equivalent" without a survivor.
With --fuzz the fuzz targets hunt a sample of the mutants that the tests kill, each target for so many seconds.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import argparse
import collections
import concurrent.futures
import functools
import json
import os
import pathlib
import random
import re
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import typing

from markers import markers_of
from mutations import mutants_of

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
LIBRARY = ROOT / "nuv"
QUICK_SECONDS = 0.1  # a test that takes longer is a slow one

# ---- The builds and their programs ----

class TStep(typing.NamedTuple):
    """One command that makes one file."""
    words: list
    output: str

    def compiles(self):
        return "-c" in self.words


class Build:
    """What a build directory says of itself: how it makes each file, from what, and how its tests are run."""

    def __init__(self, preset):
        self.preset = preset
        self.directory = ROOT / "build" / preset
        self.steps = {step.output: step for step in self.read_steps()}
        self.sources = self.read_sources()  # of each object, with its headers
        self.originals = {}  # the bytes of objects of the unchanged library

    def ask_ninja(self, tool):
        return subprocess.run(["ninja", "-t", tool], cwd=self.directory, capture_output=True, text=True,
                              check=True).stdout.splitlines()

    def read_steps(self):
        for command in self.ask_ninja("commands"):
            for part in command.split(" && "):
                try:
                    words = shlex.split(part)
                except ValueError:  # a part of a quoted text
                    continue
                words = words[1:] if words[:1] and words[0].endswith("ccache") else words
                if words[1:2] == ["qc"]:
                    yield TStep(words, words[2])
                elif "-o" in words:
                    yield TStep(words, words[words.index("-o") + 1])

    def read_sources(self):
        sources = collections.defaultdict(set)
        for line in self.ask_ninja("deps"):
            if ": #deps" in line:
                output = line.split(": #deps")[0]
            elif line:
                sources[output].add(pathlib.Path(os.path.normpath(self.directory / line.strip())))
        return sources

    def suites(self):
        """The test programs as CTest runs them: program, words before it, environment."""
        tests = json.loads(subprocess.run(["ctest", "--show-only=json-v1"], cwd=self.directory, capture_output=True,
                                          check=True).stdout)["tests"]
        for test in tests:
            words = test.get("command", [])
            place = next((i for i, word in enumerate(words) if word.startswith("--gtest_filter=")), 0) - 1
            program = os.path.relpath(words[max(place, 0)], self.directory) if words else ""
            if place >= 0 and program.startswith("tests/"):  # the programs in apps have suites of their own
                values = {p["name"]: p["value"] for p in test["properties"]}
                yield program, tuple(words[:place]), tuple(values.get("ENVIRONMENT", []))


class Invalid(Exception):
    """The mutant does not compile or link."""


class Workshop:
    """A copy of the library's source in which a mutant is planted, and what is made of it."""

    def __init__(self, directory):
        self.directory = pathlib.Path(directory)
        self.mutant = None
        self.made = {}
        shutil.copytree(LIBRARY, self.directory / "nuv")

    def copy_of(self, source):
        return self.directory / "nuv" / source.relative_to(LIBRARY)

    def plant(self, mutant):
        """Puts a mutant in the place of the one before, or none."""
        if self.mutant:
            shutil.copy(self.mutant.source, self.copy_of(self.mutant.source))
        if mutant:
            lines = mutant.source.read_text().splitlines()
            lines[mutant.number - 1] = mutant.after
            self.copy_of(mutant.source).write_text("\n".join(lines) + "\n")
        self.mutant = mutant
        self.made = {}

    def make(self, build, output):
        """The file that the mutant makes of a build's output; None if it does not change it."""
        key = build, output
        if key not in self.made:
            step = build.steps.get(output)
            self.made[key] = None
            if step:
                self.made[key] = self.compile(build, step) if step.compiles() else self.link(build, step)
        return self.made[key]

    def run(self, build, step, words):
        path = self.directory / build.preset / step.output
        path.parent.mkdir(parents=True, exist_ok=True)
        path.unlink(missing_ok=True)
        words = [str(path) if word == step.output else word for word in words]
        if subprocess.run(words, cwd=build.directory, capture_output=True, check=False).returncode != 0:
            raise Invalid
        return path

    def compile(self, build, step):
        if self.mutant.source not in build.sources[step.output]:
            return None
        words = re.sub(r" -M[TF] \S+| -MD| -g\d?(?= )", "", shlex.join(step.words))  # -g has the columns of the line in it
        if step.output not in build.originals:
            build.originals[step.output] = self.run(build, step, shlex.split(words)).read_bytes()
        words = words.replace(str(LIBRARY), str(self.directory / "nuv")) + " -w"
        path = self.run(build, step, shlex.split(words))
        return path if path.read_bytes() != build.originals[step.output] else None

    def link(self, build, step):
        inputs = {word: self.make(build, word) for word in step.words if word != step.output and word in build.steps}
        inputs = {word: path for word, path in inputs.items() if path}
        if inputs and all(".so" in word for word in inputs):
            return build.directory / step.output  # the program itself stays, and loads the changed library
        if not inputs:
            return None
        path = self.run(build, step, [str(inputs.get(word, word)) for word in step.words])
        for word in step.words:
            if word.startswith("-Wl,-soname,"):
                link = path.parent / word.split(",")[-1]
                link.unlink(missing_ok=True)
                link.symlink_to(path)
        return path

    def library_directories(self, build):
        return ":".join({str(path.parent) for (made_in, output), path in self.made.items()
                         if made_in is build and path and ".so" in output})


# ---- The killers ----

class TStage(typing.NamedTuple):
    """A program, or some of its tests, and how long it may take."""
    build: Build
    program: str
    before: tuple
    options: tuple
    environment: tuple
    limit: float

    def fails(self, path, libraries):
        """Why the program does not pass, or None."""
        environment = dict(os.environ, LD_LIBRARY_PATH=libraries, **dict(item.split("=", 1) for item in self.environment))
        # A mutant may allocate or write without end. The address sanitizer has a limit of its own.
        room = ["--as=40000000000"] if self.build.preset in ("default", "linux-armel") else []
        with subprocess.Popen(["prlimit", *room, "--fsize=100000000", *self.before, str(path), *self.options],
                              cwd=self.build.directory, env=environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True) as ran:
            try:
                output, errors = ran.communicate(timeout=self.limit)
            except subprocess.TimeoutExpired:
                os.killpg(ran.pid, signal.SIGKILL)  # its children too
                return f"{self.program} takes too long"
        if ran.returncode == 0 and b"assertion failure:" not in errors:
            return None
        failed = re.search(rb"^\[  FAILED  \] ([\w./]+)|(?:ERROR: |runtime error: )(.{1,60})", output + errors, re.M)
        what = (failed.group(1) or failed.group(2)).decode(errors="replace") if failed else f"ends with {ran.returncode}"
        return f"{self.build.preset}: {self.program.split('/')[-1]}: {what}"


def gtest_stage(build, suite, tests, limit):
    program, before, environment = suite
    options = ("--gtest_filter=" + tests, "--gtest_brief=1", "--gtest_fail_fast")
    return TStage(build, program, before, options, environment, limit)


def require_pass(stage):
    """Runs a stage on the unchanged library; returns the seconds that it took."""
    start = time.monotonic()
    why = stage.fails(stage.build.directory / stage.program, "")
    if why:
        raise SystemExit(f"mutate.py: the tests must pass before the library is changed: {why}")
    return time.monotonic() - start


def with_limit(stage):
    return stage._replace(limit=5 + 5 * require_pass(stage))


def slow_tests_of(build, suite):
    """Runs a suite once; the names of its slow tests."""
    with tempfile.NamedTemporaryFile() as report:
        stage = gtest_stage(build, suite, "*", 600)
        require_pass(stage._replace(options=(f"--gtest_output=json:{report.name}",)))
        groups = json.load(report)["testsuites"]
    return [f"{group['name']}.{test['name']}" for group in groups for test in group["testsuite"]
            if float(test["time"].rstrip("s")) > QUICK_SECONDS]


def test_stages(jobs):
    """The stages in the order in which they run; each passes without a change."""
    default, device, sanitized = Build("default"), Build("linux-armel"), Build("linux-sanitize")
    suites = sorted(set(default.suites()))
    programs = {program for program, _, _ in suites}
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        slow = dict(zip(suites, pool.map(lambda suite: slow_tests_of(default, suite), suites)))
        quick = {suite: "*-" + ":".join(tests) for suite, tests in slow.items()}
        stages = [[gtest_stage(default, suite, tests, 600) for suite, tests in quick.items()],
                  [gtest_stage(device, suite, "*", 600) for suite in sorted(set(device.suites())) if suite[0] not in programs],
                  [gtest_stage(sanitized, suite, quick.get(suite, "*"), 600) for suite in sorted(set(sanitized.suites()))],
                  [gtest_stage(default, suite, ":".join(tests), 600) for suite, tests in slow.items() if tests]]
        stages = [sorted(pool.map(with_limit, group), key=lambda stage: stage.limit) for group in stages]
    return [stage for group in stages for stage in group]


class Fuzzers:
    """The fuzz targets, and which functions of the library each one reaches with its kept inputs."""

    def __init__(self, seconds):
        self.build = Build("fuzz")
        self.seconds = seconds
        self.reached = {}  # (program, options of the replay): functions and files
        tests = json.loads(subprocess.run(["ctest", "--show-only=json-v1"], cwd=self.build.directory, capture_output=True,
                                          check=True).stdout)["tests"]
        for words in (test["command"] for test in tests if "-runs=0" in test.get("command", [])):
            report = subprocess.run([*words, "-print_coverage=1"], capture_output=True, text=True, errors="replace",
                                    check=False).stderr
            found = re.findall(r"^COVERED_FUNC: .*?(\w+)(?:<[^()]*>)?\(.* (\S+):\d+$", report, re.M)
            program = os.path.relpath(words[0], self.build.directory)
            self.reached[program, tuple(words[1:])] = {f for f, _ in found} | {path.split("/")[-1] for _, path in found}

    def stages(self, mutant, scratch):
        """First the kept inputs of all targets that reach the function, or else the source, then their hunts."""
        for name in (mutant.function, mutant.source.name):
            targets = [target for target, reached in self.reached.items() if name in reached]
            if targets:
                break
        for program, options in targets:
            yield TStage(self.build, program, (), (f"-artifact_prefix={scratch}/", *options), (), 60)
        for program, options in targets:
            hunt = [f"-max_total_time={self.seconds}" if option == "-runs=0" else option for option in options]
            yield TStage(self.build, program, (), (f"-artifact_prefix={scratch}/", *hunt[:-1], str(scratch), hunt[-1]),
                         (), self.seconds + 60)


# ---- The run ----

def judge(workshop, stages):
    """What the stages say of the planted mutant: a verdict and its reason."""
    changed = False
    try:
        for stage in stages:
            path = workshop.make(stage.build, stage.program)
            if path:
                changed = True
                why = stage.fails(path, workshop.library_directories(stage.build))
                if why:
                    return "killed", why
    except Invalid:
        return "invalid", "does not compile"
    return ("survived", "") if changed else ("equivalent", "the same objects")


def judge_by_fuzzing(workshop, stages, fuzzers):
    with tempfile.TemporaryDirectory() as scratch:
        verdict, why = judge(workshop, fuzzers.stages(workshop.mutant, pathlib.Path(scratch)))
    if verdict == "survived":
        verdict, why = judge(workshop, stages)
        return ("missed", "but " + why) if verdict == "killed" else (verdict, why)
    return ("found", why) if verdict == "killed" else (verdict, why)


class Run:
    """Mutants judged by several workers at a time."""

    def __init__(self, jobs, judge_one):
        self.jobs = jobs
        self.judge_one = judge_one
        self.local = threading.local()

    def judge(self, mutant):
        if not hasattr(self.local, "directory"):
            self.local.directory = tempfile.TemporaryDirectory()
            self.local.workshop = Workshop(self.local.directory.name)
        self.local.workshop.plant(mutant)
        return self.judge_one(self.local.workshop)

    def results(self, mutants):
        with concurrent.futures.ThreadPoolExecutor(self.jobs) as pool:
            for mutant, (verdict, why) in zip(mutants, pool.map(self.judge, mutants)):
                print(f"{verdict}: {mutant}: {why}", flush=True)
                yield mutant, verdict


def library_sources(build):
    """What the build compiles of the library, and the library's headers that this includes."""
    objects = [output for output in build.sources if "/nuv1math_objects.dir/" in output]
    found = set().union(*(build.sources[output] for output in objects))
    return sorted(source for source in found if source.is_relative_to(LIBRARY) and source.name != "nuv1math.h")


@functools.cache
def marked_lines(source):
    return set().union(*markers_of(source.read_text().splitlines(), "equivalent").values())


def wrong_survivors(results, complete):
    """Survivors without a marker, and with a complete run the markers without a survivor."""
    survivors = collections.defaultdict(set)
    for mutant, verdict in results:
        if verdict == "survived":
            survivors[mutant.source].add(mutant.number)
    wrong = []
    for source in sorted({mutant.source for mutant, _ in results}):
        texts = source.read_text().splitlines()
        excused = set().union(*markers_of(texts, "equivalent", "unreachable").values())
        wrong += [f"{source.name}:{number}: a survivor without a marker" for number in survivors[source] - excused]
        if complete:
            wrong += [f"{source.name}:{number}: marked equivalent, but no mutant survives"
                      for number, covered in markers_of(texts, "equivalent").items() if not covered & survivors[source]]
    return wrong


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].split("\n")[0])
    parser.add_argument("--all", action="store_true")
    parser.add_argument("--marked", action="store_true")
    parser.add_argument("--sample", type=int, default=60)
    parser.add_argument("--fuzz", type=int, metavar="SECONDS")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("sources", nargs="*", metavar="SOURCE")
    args = parser.parse_args()
    sources = library_sources(Build("default"))
    unknown = set(args.sources) - {source.name for source in sources}
    if unknown:
        parser.error(f"no source of the library: {' '.join(sorted(unknown))}")
    mutants = [mutant for source in sources if not args.sources or source.name in args.sources for mutant in mutants_of(source)]
    if args.marked:
        mutants = [mutant for mutant in mutants if mutant.number in marked_lines(mutant.source)]
    elif not args.all and args.sample < len(mutants):
        mutants = [mutants[i] for i in sorted(random.Random(args.seed).sample(range(len(mutants)), args.sample))]
    stages = test_stages(args.jobs)
    fuzzers = Fuzzers(args.fuzz) if args.fuzz else None
    run = Run(args.jobs, lambda workshop: judge_by_fuzzing(workshop, stages, fuzzers) if fuzzers else judge(workshop, stages))
    results = list(run.results(mutants))
    counts = collections.Counter(verdict for _, verdict in results)
    print(f"{len(results)} mutants: " + ", ".join(f"{count} {verdict}" for verdict, count in counts.most_common()))
    wrong = [] if fuzzers else wrong_survivors(results, args.all or args.marked)
    print("\n".join(wrong), end="\n" if wrong else "")
    return 1 if wrong or not results else 0


if __name__ == "__main__":
    sys.exit(main())
