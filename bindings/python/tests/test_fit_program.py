"""test_fit_program.py: `fit` gives the bits that the program fitpoints prints, for real control points.

NUV1MATH_FITPOINTS is the program; NUV1MATH_CONTROL_POINTS a directory of CSV files, which need not exist.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import csv
import functools
import json
import os
import pathlib
import subprocess

import numpy as np
import pytest

import nuv1math

ROOT = pathlib.Path(__file__).resolve().parents[3]
PROGRAM = os.environ.get("NUV1MATH_FITPOINTS", "")
CONTROL_POINTS = pathlib.Path(os.environ.get("NUV1MATH_CONTROL_POINTS") or ROOT.parent / "shared/data")
FILES = [ROOT / "apps/fitpoints/sample.csv", *sorted(CONTROL_POINTS.glob("*.csv"))]
NAMES = "ABCDEFGH"

OPTIONS = {
    "auto": ([], {}),
    "richest": (["--method", "richest"], {"kind": "richest"}),
    "conformal": (["--method", "conformal"], {"kind": "conformal"}),
    "affine": (["--method", "affine"], {"kind": "affine"}),
    "omographic": (["--method", "omographic"], {"kind": "omographic"}),
    "robust": (["--robust"], {"robust": True}),
    "raw": (["--raw"], {"local_origin": False}),
    "mirrored": (["--mirrored", "--method", "conformal"], {"mirrored": True, "kind": "conformal"}),
}

pytestmark = pytest.mark.skipif(not PROGRAM, reason="NUV1MATH_FITPOINTS names no program")


@functools.lru_cache(maxsize=None)
def read(path):
    lines = [line for line in path.read_text(encoding="utf-8").splitlines() if not line.startswith("#")]
    rows = list(csv.DictReader(lines))
    return tuple(np.array([[float(row[name]) for name in names] for row in rows]) for names in ("xy", "XY"))


def run(path, *options):
    return subprocess.run([PROGRAM, path, *options], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          check=False)


def assert_same(given, printed):
    """The same bits; a number that does not exist is null there and NaN here."""
    nothing = [None, None] if np.ndim(given) == 2 else None
    expected = [(value if value is not None else nothing) for value in printed]
    np.testing.assert_array_equal(given, np.array(expected, dtype=np.float64).reshape(np.shape(given)), strict=True)


def compare_frame(frame, coefficients, deviations, covariance):
    assert_same(coefficients, [frame["coefficients"][name] for name in NAMES])
    if frame["covariance"] is None:
        assert deviations is None and covariance is None
    else:
        assert_same(deviations, [frame["standard_deviations"][name] for name in NAMES])
        assert_same(covariance[np.tril_indices(8)], frame["covariance"])


def compare_frames(fit, frames):
    original = frames["original"]
    if frames["local"]:
        compare_frame(frames["local"], np.array(fit.coefficients), fit.standard_deviations, fit.covariance)
        assert_same(np.array([fit.source_origin, fit.target_origin]),
                    [frames["local"]["source_origin"], frames["local"]["target_origin"]])
    if original:
        compare_frame(original, fit.params.ravel()[:8], fit.matrix_standard_deviations, fit.matrix_covariance)
    else:
        with pytest.raises(nuv1math.FitError):
            print(fit.params)


def compare_kinds(fit, rows):
    for row, printed in zip(fit.kinds, rows):
        assert (row.kind, row.unknowns, row.freedom) == (printed["kind"], printed["coefficients"],
                                                         printed["degrees_of_freedom"])
        assert (row.rms, row.leave_one_out) == (printed["rms"], printed["leave_one_out_rms"])
        greatest = printed["greatest_leave_one_out"]
        assert (row.greatest, row.greatest_at) == ((greatest["length"], greatest["point"] - 1) if greatest
                                                   else (None, None))
        assert (row.missing, row.not_judged) == (printed["missing"] or "", printed["not_judged"] or "")


def compare_points(fit, points):
    column = {name: [point[name] for point in points] for name in points[0]}
    assert_same(fit.residual_vectors, list(zip(column["dX"], column["dY"])))
    assert_same(fit.points["dLength"], column["length"])
    assert_same(fit.source_residuals, column["source_residual"])
    assert_same(fit.leave_one_out, column["leave_one_out"])
    assert_same(fit.studentised, column["studentised"])
    assert_same(fit.probability, column["probability"])
    assert fit.points["bSuspect"].astype(bool).tolist() == column["suspect"]


def compare_parameters(fit, printed):
    p = fit.parameters
    if printed is None:
        assert p is None
        return
    assert (p.sx, p.sy, p.rotation, p.skew) == tuple(printed[name] for name in ("sx", "sy", "rotation", "skew"))
    sigmas = printed["standard_deviations"] or dict.fromkeys(("sx", "sy", "rotation", "skew"))
    assert (p.sigma_sx, p.sigma_sy, p.sigma_rotation, p.sigma_skew) == tuple(
        sigmas[name] for name in ("sx", "sy", "rotation", "skew"))


@pytest.mark.parametrize("options", OPTIONS)
@pytest.mark.parametrize("path", FILES, ids=lambda path: path.stem)
def test_the_bits_are_those_of_the_program(path, options):
    arguments, keywords = OPTIONS[options]
    printed = run(path, "--json", *arguments)
    if printed.returncode:
        with pytest.raises(nuv1math.FitError) as error:
            nuv1math.fit(*read(path), **keywords)
        assert printed.stderr.strip().endswith(f"{path.name}: {error.value}")
        return
    report, fit = json.loads(printed.stdout), nuv1math.fit(*read(path), **keywords)
    assert (fit.kind, fit.fitted, fit.freedom) == (report["kind"], report["n"], report["degrees_of_freedom"])
    assert (fit.mirrored, fit.converged) == (report["mirrored"], report["converged"])
    assert (fit.rms, fit.check_rms) == (report["rms"], report["check_rms"])
    assert fit.choice.replace("least", "least_leave_one_out") == report["choice"]
    assert [suspect["point"] - 1 for suspect in report["suspects"]] == fit.suspects.tolist()
    dropped = [suspect for suspect in report["suspects"] if suspect["dropped"]]
    assert [suspect["point"] - 1 for suspect in dropped] == fit.dropped.tolist()
    compare_frames(fit, report["frames"])
    compare_kinds(fit, report["kinds"])
    compare_points(fit, report["points"])
    compare_parameters(fit, report["parameters"])


def test_further_points_have_the_bits_of_the_program(tmp_path):
    path, places = FILES[0], np.array([[100.25, 3000.5], [2500.0, 17.125], [1e5, 2e5]])
    fit = nuv1math.fit(*read(path))
    for way, names, options in ((fit, "xy", []), (fit.inverse, "xy", ["--inverse"])):
        (tmp_path / "places.csv").write_text("x,y\n" + "\n".join(f"{x!r},{y!r}" for x, y in places.tolist()) + "\n")
        if options:
            places = fit(places)
            (tmp_path / "places.csv").write_text("X,Y\n" + "\n".join(f"{x!r},{y!r}" for x, y in places.tolist()) + "\n")
        printed = run(path, "--apply", tmp_path / "places.csv", "--deviations", *options)
        rows = list(csv.DictReader(printed.stdout.splitlines()))
        result = "xy" if options else "XY"
        np.testing.assert_array_equal(way(places), [[float(row[name]) for name in result] for row in rows])
        ellipses = way.ellipses(places)
        for name in ("major", "minor"):
            assert [f"{value:.6g}" for value in getattr(ellipses, name)] == [row[name] for row in rows]
        assert [f"{value:.6g}" for value in np.degrees(ellipses.direction)] == [row["direction"] for row in rows]


@pytest.mark.parametrize("points, kind", [
    ([], "auto"),
    ([[1, 1, 2, 2]], "auto"),
    ([[1, 1, 2, 2], [1, 1, 3, 3], [1, 1, 4, 5]], "auto"),
    ([[1, 1, 2, 2], [2, 1, 2, 2], [1, 2, 2, 2]], "richest"),
    ([[1, 1, 2, 2], [2, 2, 3, 3], [3, 3, 4, 5]], "affine"),
    ([[1, 1, 2, 2], [2, 3, 3, 3], [3, 3, 4, 4]], "affine"),
    ([[1, 1, 2, 2], [2, 2, 3, 3], [3, 3, 4, 5], [0, 1, 0, 1]], "omographic"),
    ([[0, 0, 0, 0], [1, 0, 1, 0], [0, 1, 2, 0], [1, 1, 3, 1]], "omographic"),
    ([[0, 0, 0, 0], [1, 0, 1, 0], [0, 1, 2, 0]], "omographic"),
    ([[0, 0, 0, 0], [1e160, 0, 1, 0], [0, 1, 2, 0]], "auto"),
    ([[0, 0, 0, 0], [1, 0, 1e160, 0], [0, 1, 2, 0]], "auto"),
])
def test_a_failure_has_the_words_of_the_program(points, kind):
    text = "x,y,X,Y\n" + "".join(",".join(map(repr, point)) + "\n" for point in points)
    printed = subprocess.run([PROGRAM, "-", "--method", kind], input=text, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, text=True, check=False)
    columns = np.array(points, dtype=float).reshape(-1, 4)
    with pytest.raises(nuv1math.FitError) as error:
        nuv1math.fit(columns[:, :2], columns[:, 2:], kind)
    assert printed.stderr.strip() == f"fitpoints: standard input: {error.value}"
