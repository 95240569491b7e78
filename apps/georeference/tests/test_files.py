"""Files of points: read in every way and form, refused with a reason, and written byte for byte as fitpoints writes them.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import pathlib
import re

import pytest
from browser import wait_until
from images import write_png

SAMPLE = pathlib.Path(__file__).resolve().parents[2] / "fitpoints/sample.csv"
CSV = "name,x,y,X,Y\na,0,0,10,25\nb,100,0,205,62.5\nc,100,100,205,212.5\nd,0,100,10,325\ne,50,50,140,150\n"
FORMS = {
    "plain.csv": CSV,
    "semicolon.csv": CSV.replace(",", ";").replace(".", ","),
    "tab.txt": CSV.replace(",", "\t").replace("\n", "\r\n"),
    "mark.csv": "\ufeff# a comment\n\n" + CSV.replace("\na,", "\nGrüße 😀,"),
    "check.csv": "x,y,X,Y,check\n0,0,10,25,0\n100,0,205,62.5,0\n100,100,205,212.5,0\n0,100,10,325,0\n50,50,140,151,1\n",
    "georeferencer.points": "#CRS: EPSG:25832\nmapX,mapY,sourceX,sourceY,enable,dX,dY,residual\n"
                            "500010,25,0,0,1,0,0,0\n500205,62.5,100,0,1,0,0,0\n500205,212.5,100,-100,1,0,0,0\n"
                            "500010,325,0,-100,1,0,0,0\n500140,150,50,-50,0,0,0,0\n",
    "older.points": "mapX,mapY,pixelX,pixelY,enable\n10,25,0,0,1\n205,62,100,0,1\n205,212,100,-100,1\n10,325,0,-100,1\n",
    "arguments.txt": "gdal_translate -gcp 0 0 10 25 -gcp 100 0 205 62.5 -gcp 100 100 205 212.5 \\\n"
                     " -gcp 0 100 10 325 -gcp 50 50 140 150 5 in.tif out.tif\n",
}
WORLD_FILE = "0.5\n0\n0\n-0.5\n1000.25\n1999.75\n"
BAD = {
    "empty.csv": "",
    "number.csv": CSV.replace("62.5", "62.5.1"),
    "nan.csv": CSV.replace("62.5", "NaN"),
    "huge.csv": CSV.replace("62.5", "1e999"),
    "columns.csv": CSV.replace("x,y,X,Y", "x,y,z,t"),
    "field.csv": CSV.replace("c,100,100,205,212.5", "c,100,100"),
    "quote.csv": CSV.replace("\na,", "\n\"a,"),
    "check.csv": CSV.replace("name,", "check,"),
    "binary.csv": "\x89PNG\x00\x01\x02\n\x00\x00",
    "latin.csv": CSV.replace("\na,", "\n\xe4,"),
    "header.csv": "name,x,y,X,Y\n",
}


# Angles, which come from atan2 of the platform's C library. The libraries differ in the last bits.
OF_LIBRARY = re.compile(r'((?:rotation|skew) *= |"(?:rotation|skew)": |\+theta=)([-+.e\d]+)')


def assert_same(actual, expected):
    """Two texts are the same, but for the last bits of such numbers."""
    assert OF_LIBRARY.sub(r"\1", actual) == OF_LIBRARY.sub(r"\1", expected)
    for (_, ours), (_, theirs) in zip(OF_LIBRARY.findall(actual), OF_LIBRARY.findall(expected)):
        assert float(ours) == pytest.approx(float(theirs), rel=1e-15, abs=0)


def write(folder, name, text):
    path = folder / name
    path.write_bytes(text.encode("latin-1" if name.startswith("latin") else "utf-8"))
    return path


@pytest.mark.parametrize("name", FORMS)
def test_reports_as_fitpoints_does(page, fitpoints, tmp_path, name):
    path = write(tmp_path, name, FORMS[name])
    page.open_points(path, 4 if name == "older.points" else 5)
    assert_same(page.report(), fitpoints.report(name))
    assert page.failure() == ""


def test_the_sample(page, fitpoints):
    page.press("sample")
    page.wait_for_points(12)
    assert_same(page.report(), fitpoints.report(SAMPLE).replace(str(SAMPLE), SAMPLE.name))
    assert "omographic" in page.verdict().lower()


@pytest.mark.parametrize("name", ["tallinn_1889", "frad094_1076", "texas", "gdal_gcps8", "fiducials_027", "utm11"])
@pytest.mark.parametrize("method", ["auto", "richest"])
def test_real_points_have_the_bits_of_fitpoints(page, fitpoints, data, tmp_path, name, method):
    text = (data / f"{name}.csv").read_text()
    page.choose(write(tmp_path, f"{name}.csv", text))
    page.wait_for_points(sum(line[0] not in "#x" for line in text.splitlines() if line))
    page.select("method", method)
    assert_same(page.report(), fitpoints.report(f"{name}.csv", "--method", method))


@pytest.mark.parametrize("name", BAD)
def test_a_bad_file_is_refused_with_its_reason(page, fitpoints, tmp_path, name):
    page.open_points(write(tmp_path, "good.csv", CSV), 5)
    before = page.points(), page.report()
    path = write(tmp_path, name, BAD[name])
    code, _, errors = fitpoints.run(name)
    assert code == 2
    page.choose(path)
    page.wait_for_failure(errors.removeprefix("fitpoints: ").strip())
    assert (page.points(), page.report()) == before


@pytest.fixture
def placed(page, tmp_path):
    """The page with a target image of 400 x 300 pixels of 0.5, from (1000, 2000) on. The world file is chosen first."""
    image = write_png(tmp_path / "map.png", 400, 300)
    page.browser.choose("#target-image", write(tmp_path, "map.pgw", WORLD_FILE), image)
    wait_until(lambda: "placed by its world file" in page.browser.text("#target-note"), page.message())
    page.settle()
    return page


def test_a_world_file_places_the_target_image(placed):
    placed.click_in("target", 100, 200)
    point, = placed.points()
    assert [float(point["X"]), float(point["Y"])] == pytest.approx([1050.25, 1899.75], abs=0.15)


@pytest.mark.parametrize("text,reason", [
    ("", ":1: a world file has six lines"), (WORLD_FILE.replace("1999.75", "north"), ":6: 'north' is not a number"),
    (WORLD_FILE.replace("-0.5", "0"), ": the first four numbers give the pixels no area")])
def test_a_bad_world_file_is_refused_with_its_reason(placed, tmp_path, text, reason):
    placed.browser.choose("#target-image", write(tmp_path, "bad.wld", text))
    placed.wait_for_failure(f"bad.wld{reason}")
    placed.click_in("target", 100, 200)
    assert placed.points()[0]["X"].startswith("1050")


def test_a_file_too_large_is_refused(page, tmp_path):
    path = tmp_path / "large.csv"
    with path.open("wb") as file:
        file.truncate(256 * 1024 * 1024 + 1)
    page.choose(path)
    page.wait_for_failure("256 MiB")
    page.wait_for_failure("large.csv")
    assert page.points() == []


def test_pasted_text_is_a_file(page, fitpoints, tmp_path):
    write(tmp_path, "plain.csv", CSV)
    page.browser.press("h1") # the page has the focus, but none of its fields
    page.browser.paste(CSV)
    page.wait_for_points(5)
    assert page.report().splitlines()[1:] == fitpoints.report("plain.csv").splitlines()[1:]


def test_the_dialog_for_pasting_tells_what_is_wrong(page, fitpoints, tmp_path):
    write(tmp_path, "bad.csv", BAD["number.csv"])
    page.press("paste")
    page.browser.press("#paste-text")
    page.browser.paste(BAD["number.csv"])
    page.press("paste-open")
    reason = fitpoints.run("bad.csv")[2].split(":", 2)[2].strip()
    assert reason in page.browser.text("#paste-error")
    page.browser.press("#paste-text")
    page.browser.key("a", "Control")
    page.browser.paste(CSV)
    page.press("paste-open")
    page.wait_for_points(5)


def test_a_dropped_file_is_opened(page, fitpoints, tmp_path):
    path = write(tmp_path, "odd name, 100%#?&.csv", CSV)
    page.browser.drop(*page.middle("source"), path)
    page.wait_for_points(5)
    assert_same(page.report(), fitpoints.report(path.name))


EXPORTS = {"points": "--points", "gcp": "--gcp", "world": "--world", "proj": "--proj"}


@pytest.mark.parametrize("name", ["plain.csv", "check.csv", "georeferencer.points", "arguments.txt"])
def test_exports_have_the_bytes_of_fitpoints(page, fitpoints, tmp_path, name):
    page.open_points(write(tmp_path, name, FORMS[name]), 5)
    page.select("method", "affine")
    for export, option in EXPORTS.items():
        assert_same(page.save(export).decode(), fitpoints.output(name, option, "--method", "affine").decode())
    assert_same(page.save("report").decode(), fitpoints.report(name, "--method", "affine"))
    assert_same(page.save("json").decode(), fitpoints.report(name, "--method", "affine", "--json"))


@pytest.mark.parametrize("name", ["plain.csv", "check.csv", "mark.csv"])
def test_a_saved_table_is_read_as_it_was(page, fitpoints, tmp_path, name):
    page.open_points(write(tmp_path, name, FORMS[name]), 5)
    before, points = page.report(), page.points()
    saved = page.save("csv")
    write(tmp_path, "saved.csv", saved.decode())
    page.press("clear")
    page.open_points(tmp_path / "saved.csv", 5)
    assert page.points() == points
    assert_same(page.report(), fitpoints.report("saved.csv"))
    assert coefficients(page.report()) == coefficients(before)


def coefficients(report):
    """The lines of both frames, with all digits."""
    return [line for line in report.splitlines() if " = " in line]


def test_an_omographic_transformation_has_no_world_file(page, tmp_path):
    page.open_points(write(tmp_path, "plain.csv", CSV), 5)
    page.select("method", "omographic")
    page.press("save-world")
    page.wait_for_failure("omographic")
    assert list(page.browser.downloads.iterdir()) == []
