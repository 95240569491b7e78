#!/usr/bin/env python3
"""testing: writes the measured tables of docs/testing.md: the presets, the checks, and the errors of angles.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import platforms
from markdown import NUMBER, WORD, read_json, table, write_regions

CHECKS = ["coverage", "mutants", "fuzz", "memcheck"]


def presets():
    rows = []
    for preset, result in platforms.read().items():
        built, runner = platforms.PRESETS[preset]
        digest = result["digests"].get("all") or result["digests"].get("exported")
        rows.append([f"`{preset}`", built, runner, result["tests"], result["failed"], f"`{digest}`" if digest else "-"])
    return table(["Preset", "What is built", "What ran it", "Tests run", "Failed", "Digest"], rows,
                 [WORD, WORD, WORD, NUMBER, NUMBER, WORD])


def checks():
    """What each check left in build/results: one sentence."""
    rows = []
    for check in CHECKS:
        command = f"scripts/check {check}"
        rows.append([f"`{command}`", read_json(f"build/results/{check}.json", command)["found"]])
    return table(["Check", "What its last run found"], rows, [WORD, WORD])


def ulps():
    """The greatest error of each routine on any platform. A platform's result reads "GREATEST of LIMIT"."""
    seen = {}
    for preset, result in platforms.read().items():
        for routine, text in result["ulps"].items():
            greatest, limit = map(float, text.split(" of "))
            seen.setdefault(routine, []).append((greatest, preset, limit))
    rows = []
    for routine, errors in sorted(seen.items()):
        greatest = max(error for error, _, _ in errors)
        where = [preset for error, preset, _ in errors if error == greatest]
        rows.append([f"`{routine}`", f"{greatest:.2f}", f"`{where[0]}`", f"{max(limit for *_, limit in errors):g}"])
    return table(["Routine", "greatest error", "seen first on", "allowed"], rows, [WORD, NUMBER, WORD, NUMBER])


write_regions("docs/testing.md", {"presets": presets(), "checks": checks(), "ulps": ulps()})
