"""Points made, moved, checked, removed and restored by pointer, touch and keys. After each change the page computes what
fitpoints computes for the table that the page saves.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import re

import pytest
from images import write_png
from test_files import CSV, assert_same, write

CORNERS = [(20, 30), (380, 25), (370, 270), (35, 260), (200, 150)]


def without_lines(report):
    """The words of each line but the first one, without the numbers of lines of a file."""
    rows = [re.sub(r", line \d+", "", line).split() for line in report.splitlines()[1:]]
    return "\n".join(" ".join(row[:1] + row[2:] if all(map(str.isdigit, row[:2])) else row) for row in rows)


def assert_as_fitpoints(page, fitpoints, *options):
    """The page's report is that of the saved table. The numbers of lines differ: the page counts those of the file."""
    write(fitpoints.folder, "saved.csv", page.save("csv").decode())
    assert_same(without_lines(page.report()), without_lines(fitpoints.report("saved.csv", *options)))


@pytest.fixture
def points(page, tmp_path):
    """The page with five points."""
    page.open_points(write(tmp_path, "plain.csv", CSV), 5)
    return page


@pytest.fixture
def image(page, tmp_path):
    """The page with an image as the source."""
    page.open_image("source", write_png(tmp_path / "plan.png", 400, 300))
    return page


def source_of(column, row):
    """The coordinates of the centre of a pixel, as QGIS counts them."""
    return [column + 0.5, -row - 0.5]


def numbers(point, *columns):
    return [float(point[column]) for column in columns]


def type_target(page, X, Y):
    """Types the target of the point that was clicked."""
    page.browser.fill("#entry-first", X)
    page.browser.press("#entry-second")
    page.browser.type(f"{Y}\n")
    page.settle()


def test_points_clicked_in_an_image_with_typed_targets(image, fitpoints):
    for number, (column, row) in enumerate(CORNERS):
        image.click_in("source", column, row)
        type_target(image, f"{1000 + column * 0.5 + number % 2}", f"{5000 - row * 0.5}")
    for point, pixel in zip(image.points(), CORNERS):
        assert numbers(point, "x", "y") == pytest.approx(source_of(*pixel), abs=0.25)
    assert numbers(image.points()[1], "X", "Y") == [1191, 4987.5]
    assert_as_fitpoints(image, fitpoints)


def test_two_images_with_clicked_pairs(image, fitpoints, tmp_path):
    image.open_image("target", write_png(tmp_path / "map.png", 800, 600, colour=(180, 200, 230)))
    for column, row in CORNERS:
        image.click_in("source", column, row)
        image.click_in("target", 2 * column + 10, 2 * row)
    assert len(image.points()) == 5
    for point, (column, row) in zip(image.points(), CORNERS):
        assert numbers(point, "X", "Y") == pytest.approx(source_of(2 * column + 10, 2 * row), abs=0.5)
    assert_as_fitpoints(image, fitpoints)
    assert image.browser.find("#blend").is_displayed()


def test_a_dragged_point_changes_residuals_kinds_and_report(points, fitpoints):
    before = points.points(), points.kinds(), points.report()
    points.drag_symbol("source", 2, 40, -25)
    after = points.points(), points.kinds(), points.report()
    assert [a != b for a, b in zip(before, after)] == [True] * 3
    assert before[0][2]["x"] != after[0][2]["x"] and before[0][2]["y"] != after[0][2]["y"]
    assert [point["x"] for point in before[0][:2]] == [point["x"] for point in after[0][:2]]
    assert_as_fitpoints(points, fitpoints)
    points.press("undo")
    assert (points.points(), points.kinds(), points.report()) == before
    points.press("redo")
    assert (points.points(), points.kinds(), points.report()) == after


def test_the_fit_follows_during_the_drag(points):
    before = points.points(), points.kinds()
    points.middle("target")
    x, y = points.symbols("target")[0]
    points.browser.drag((x, y), (x + 30, y + 30), release=False)
    points.frame()
    during = points.points(), points.kinds()
    assert [a != b for a, b in zip(before, during)] == [True] * 2
    points.browser.mouse("mouseReleased", x + 30, y + 30, button="left", clickCount=1)
    points.settle()
    assert (points.points(), points.kinds()) == during


def test_a_check_point_is_not_fitted(points, fitpoints):
    points.check(4)
    assert "4 used" in points.report() and "1 check point" in points.report()
    assert_as_fitpoints(points, fitpoints)
    points.check(4)
    assert "5 used" in points.report()


def test_a_deleted_point_comes_back(points, fitpoints):
    before = points.points()
    points.delete(1)
    assert [point["name"] for point in points.points()] == ["a", "c", "d", "e"]
    assert_as_fitpoints(points, fitpoints)
    points.browser.key("z", "Control")
    points.settle()
    assert points.points() == before
    points.browser.key("z", "Control", "Shift")
    points.settle()
    assert len(points.points()) == 4


def test_points_have_the_numbers_of_the_table(page, tmp_path):
    page.open_points(many_points(tmp_path), 20)
    page.edit(1, "X", "")
    page.edit(7, "X", "900")
    assert "suspected blunder" in page.points()[7]["state"]
    assert page.suspects().startswith("point 8:") and "point 8." in page.verdict()
    assert page.kinds()["conformal"][-1] == "8"
    assert page.browser.text("#count").startswith("20 points; 1 without a place")


def test_points_without_a_transformation_are_not_called_fitted(page, tmp_path):
    page.open_points(write(tmp_path, "equal.csv", "x,y,X,Y\n1,1,2,2\n1,1,3,4\n"), 2)
    assert "all source points are equal" in page.verdict()
    assert [point["state"] for point in page.points()] == ["not fitted"] * 2


def test_a_kind_that_is_chosen_needs_no_reason(points):
    assert "not richer" in points.browser.text("#parameters")
    points.select("method", "conformal")
    assert "asked for" in points.browser.text("#parameters")
    assert "not richer" not in points.browser.text("#parameters")


def test_rounding_errors_are_not_drawn_as_residuals(page, tmp_path):
    def arrows():
        return page.browser.js("return document.querySelector('#source-view .arrows').getAttribute('d')")

    page.open_points(write(tmp_path, "two.csv", "x,y,X,Y\n20.5,-30.5,1000,5000\n380.5,-25.5,1190,4990\n"), 2)
    assert arrows() == ""
    page.open_points(write(tmp_path, "plain.csv", CSV), 5)
    page.select("method", "conformal")
    assert arrows() != ""


def test_too_few_points_give_a_reason(points, fitpoints):
    for left in (4, 3, 2):
        points.delete(0)
        assert_as_fitpoints(points, fitpoints)
    points.delete(0)
    write(fitpoints.folder, "one.csv", "name,x,y,X,Y\ne,50,50,140,150\n")
    reason = fitpoints.run("one.csv")[2].split(": ", 2)[-1].strip()
    assert reason in points.browser.text("#result")


def test_typed_numbers_and_names(points, fitpoints):
    points.edit(0, "X", "12,5")
    points.edit(1, "name", "Grüße 😀, \"Nord\"")
    points.edit(2, "y", "-1e2")
    rows = points.points()
    assert numbers(rows[0], "X") + numbers(rows[2], "y") == [12.5, -100]
    assert rows[1]["name"] == "Grüße 😀, \"Nord\""
    assert_as_fitpoints(points, fitpoints)
    points.browser.press(points.cell(3, "name"))
    points.browser.key("a", "Control")
    points.browser.paste("from a\tspreadsheet\t")
    points.browser.key("Tab")
    points.settle()
    assert points.points()[3]["name"] == "from a spreadsheet"
    assert_as_fitpoints(points, fitpoints)


@pytest.mark.parametrize("text", ["NaN", "1.5.1", "0x10", "1e999", "abc", "--1"])
def test_what_is_no_number_is_marked_and_not_taken(points, text):
    before = points.report()
    cell = points.cell(0, "x")
    points.browser.press(cell)
    points.browser.key("a", "Control")
    points.browser.type(text + "\n")
    points.settle()
    assert points.browser.find(cell).get_attribute("aria-invalid") == "true"
    assert points.report() == before


def many_points(folder):
    rows = [f"{100 * i},{100 * j},{200 * i + 7 * (i * j % 3)},{200 * j + 5 * (i * i + j) % 7}"
            for i in range(5) for j in range(4)]
    return write(folder, "many.csv", "x,y,X,Y\n" + "\n".join(rows) + "\n")


def test_a_blunder_is_named(page, fitpoints, tmp_path):
    page.open_points(many_points(tmp_path), 20)
    assert "none" in page.suspects().lower()
    page.edit(7, "X", "900")
    assert "point 8" in page.suspects()
    assert "suspected blunder" in page.points()[7]["state"]
    assert "Suspected blunders" in page.report()
    assert_as_fitpoints(page, fitpoints)
    page.tick("robust")
    assert "dropped" in page.points()[7]["state"]
    assert_as_fitpoints(page, fitpoints, "--robust")


@pytest.mark.parametrize("field", ["mirrored", "raw"])
def test_options_are_those_of_fitpoints(points, fitpoints, field):
    points.tick(field)
    assert_as_fitpoints(points, fitpoints, f"--{field}")


def test_a_finger_adds_and_drags_points(image, fitpoints):
    image.browser.touch_screen()
    for number, (column, row) in enumerate(CORNERS[:3]):
        image.browser.tap(*image.screen("source", column, row))
        image.settle()
        type_target(image, str(1000 + column), str(row + number))
    before = image.points()
    assert numbers(before[1], "x", "y") == pytest.approx(source_of(*CORNERS[1]), abs=0.25)
    x, y = image.symbols("source")[1]
    image.browser.touch_drag(((x, y), (x - 60, y + 20)))
    image.settle()
    after = image.points()
    assert after[1]["x"] != before[1]["x"]
    assert [after[0], after[2]][0]["x"] == before[0]["x"]
    assert_as_fitpoints(image, fitpoints)


def test_two_fingers_zoom_and_add_nothing(image):
    image.browser.touch_screen()
    width = image.browser.rectangle("#source-view .base")[2]
    x, y = image.middle("source")
    image.browser.touch_drag(((x - 20, y), (x - 80, y)), ((x + 20, y), (x + 80, y)))
    image.settle()
    assert image.browser.rectangle("#source-view .base")[2] == pytest.approx(4 * width, rel=0.2)
    assert image.points() == []


def test_a_second_finger_takes_back_the_drag_of_the_first(points):
    before = points.points()
    points.browser.touch_screen()
    points.middle("source")
    x, y = points.symbols("source")[1]
    points.browser.touch("touchStart", (x, y))
    for right in (20, 40):
        points.browser.touch("touchMove", (x - right, y))
    points.frame()
    assert points.points() != before
    points.browser.touch("touchStart", (x - 40, y), (x, y + 60))
    points.browser.touch("touchEnd")
    points.settle()
    assert points.points() == before
    assert not points.is_enabled("redo")


def test_the_wheel_zooms_where_the_pointer_is(image):
    x, y = image.screen("source", 100, 60)
    other = image.screen("source", 101, 60)[0]
    image.browser.wheel(x, y, -250)
    image.settle()
    assert image.screen("source", 101, 60)[0] - x > 1.5 * (other - x)
    assert image.screen("source", 100, 60) == pytest.approx((x, y), abs=1)


# ---- keys ----


def tab_to(page, selector):
    """Presses Tab until the element has the focus."""
    for _ in range(200):
        if page.browser.js("return document.activeElement?.matches(arguments[0])", selector):
            return
        page.browser.key("Tab")
    raise AssertionError(f"Tab does not reach {selector}")


def in_focus(page):
    """The number of a point in a view, or else the label, or else the class."""
    return page.browser.js("""const element = document.activeElement;
        return element.dataset.number ?? element.ariaLabel ?? element.className.baseVal""")


def test_keys_alone_do_everything(page, fitpoints):
    tab_to(page, "#sample")
    page.browser.key("Enter")
    page.wait_for_points(12)
    before = page.points()
    tab_to(page, "#source-view .drawing")
    page.browser.key("Tab")
    for _ in range(3):
        page.browser.key("ArrowRight", "Shift")
    page.settle()
    moved = page.points()
    assert [index for index in range(12) if moved[index]["x"] != before[index]["x"]] == [0]
    page.browser.key("Delete")
    page.settle()
    assert [point["name"] for point in page.points()] == [point["name"] for point in before[1:]]
    page.browser.key("z", "Control")
    page.settle()
    assert page.points() == moved
    assert_as_fitpoints(page, fitpoints)


def test_tab_stops_at_one_point_of_a_view_and_page_keys_go_on(page):
    page.press("sample")
    page.wait_for_points(12)
    tab_to(page, "#source-view .point")
    seen = [in_focus(page)]
    for key in ("PageUp", "PageDown", "PageDown", "PageUp"):
        page.browser.key(key)
        page.settle()
        seen.append(in_focus(page))
    assert seen == ["1", "1", "2", "3", "2"]
    page.browser.key("Tab")
    assert not page.browser.js("return document.activeElement.closest('#source-view') !== null")
    page.browser.key("Tab", "Shift")
    assert in_focus(page) == "2"


def test_enter_adds_a_point_where_the_cross_is(image):
    tab_to(image, "#source-view .drawing")
    image.browser.key("ArrowRight")
    image.browser.key("Enter")
    image.settle()
    image.browser.type("100\t200\n")
    image.settle()
    point, = image.points()
    assert numbers(point, "X", "Y") == [100, 200]


def test_a_new_point_gets_both_places_by_keys(page):
    tab_to(page, "#add")
    page.browser.key("Enter")
    tab_to(page, "#entry-first")
    for pair in ("111\t222\n", "33\t44\n"):
        page.browser.type(pair)
        page.settle()
    assert page.coordinates() == [("33", "44", "111", "222")]
    assert in_focus(page).startswith("drawing")


def test_the_focus_is_never_lost(points):
    points.browser.press(points.cell(4, "check"))
    points.browser.key("Tab")
    for left in ("delete point 4", "delete point 3"):
        points.browser.key("Enter")
        points.settle()
        assert in_focus(points) == left


def test_keys_undo_and_redo_where_the_focus_is_in_a_field(points):
    before = points.points()
    points.browser.press(points.cell(0, "X"))
    points.browser.key("a", "Control")
    points.browser.type("77\n") # the focus goes to the next row
    points.settle()
    after = points.points()
    assert after[0]["X"] == "77"
    points.browser.key("z", "Control")
    points.settle()
    assert points.points() == before
    points.browser.key("z", "Control", "Shift")
    points.settle()
    assert points.points() == after
    points.select("method", "richest")
    points.browser.key("z", "Control")
    points.settle()
    assert points.browser.find("#method").get_attribute("value") == "auto"


def test_the_focus_is_always_seen(page):
    page.press("sample")
    page.wait_for_points(12)
    page.browser.js("document.activeElement.blur(); scrollTo(0, 0)")
    for _ in range(60):
        page.browser.key("Tab")
        name, width, visible = page.browser.js("""const element = document.activeElement;
            const shown = element.matches('.file') ? document.querySelector(`label[for=${element.id}]`) : element;
            const box = shown.getBoundingClientRect(); const path = shown.querySelector?.('path');
            const style = getComputedStyle(shown);
            return [element.id || element.className.baseVal || element.tagName,
                parseFloat(style.outlineWidth) * (style.outlineStyle !== 'none') || parseFloat(getComputedStyle(path ?? shown).strokeWidth) || 0,
                box.bottom > 0 && box.top < innerHeight]""")
        if name in ("BODY", "HTML"):
            break
        assert width >= 2 and visible, name
