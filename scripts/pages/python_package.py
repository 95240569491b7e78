#!/usr/bin/env python3
"""python_package: writes the measured tables of the page of the package for Python.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

It is run by the interpreter of an environment that has the package, scikit-image and OpenCV.
"""

import json
import os
import subprocess
import sys

from benchmarks import time
from markdown import ROOT, paragraph, table, write_regions

TITLES = {"conformal": "Conformal (similarity)", "affine": "Affine", "omographic": "Omographic (projective)"}


def measured():
    """What benchmark.py prints, by one thread."""
    one_thread = {name: "1" for name in ("OPENBLAS_NUM_THREADS", "OMP_NUM_THREADS", "MKL_NUM_THREADS")}
    run = subprocess.run([sys.executable, ROOT / "bindings/python/benchmark.py"], stdout=subprocess.PIPE, check=True,
                         text=True, env={**os.environ, **one_thread})
    return json.loads(run.stdout)


def tables(kinds, unit, show):
    """One table for each kind: a row for each contestant."""
    parts = []
    for kind, contestants in kinds.items():
        columns = [f"{int(column):,}".replace(",", " ") for column in next(iter(contestants.values()))]
        rows = [[name, *("-" if value is None else show(value) for value in values.values())]
                for name, values in contestants.items()]
        parts.append(table([f"{TITLES[kind]}; {unit}", *columns], rows))
    return "\n\n".join(parts)


def main():
    result = measured()
    versions = ", ".join(f"{name} {version}" for name, version in result["versions"].items())
    calls = [kinds["`CalcCoefs`"]["10"] for kinds in result["speed"].values()]
    where = paragraph(f"Measured on {result['processor']}, one thread, with {versions}. A call of `CalcCoefs` with ten "
                      f"points takes {time(min(calls))} to {time(max(calls))}.")
    write_regions("bindings/python/README.md", {
        "speed": f"{where}\n\n{tables(result['speed'], 'points', time)}",
        "accuracy": tables(result["accuracy"], "offset", lambda error: f"{error:.1e}" if error else "0")})


if __name__ == "__main__":
    main()
