"""The page as a whole: kept over a reload, narrow, without colour, with names that could be code, with bad images.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import pytest
from browser import wait_until
from images import write_png
from test_files import CSV, write

TROUBLE = "<img src=x onerror=\"document.title='injected'\"><b>bold</b>"


def shapes(page, view):
    return page.browser.js("""return [...document.querySelectorAll(arguments[0])].map(point =>
        point.querySelector("path").getAttribute("d"))""", f"#{view}-view .point")


def overflow(page):
    """How far the page is wider than the window."""
    return page.browser.js("return document.documentElement.scrollWidth - innerWidth")


def test_the_page_is_one_file_that_names_itself(page):
    text = page.path.read_text()
    assert "<script" in text and " src=\"" not in text.split("</head>")[0]
    assert page.browser.driver.title == "Georeference"
    assert page.points() == []
    assert page.failure() == ""


def test_a_reload_keeps_everything(page, tmp_path):
    page.open_points(write(tmp_path, "plain.csv", CSV), 5)
    page.open_image("source", write_png(tmp_path / "plan.png", 400, 300))
    page.edit(0, "X", "11.5")
    page.check(4)
    page.select("method", "affine")
    before = page.points(), page.kinds(), page.report()
    page.browser.press("#save-csv") # a sign that all is stored: nothing here waits for the storage
    page.browser.downloaded()
    page.open(fresh=False)
    assert (page.points(), page.kinds(), page.report()) == before
    wait_until(lambda: page.image_size("source") == [400, 300], "the kept image")


def test_a_reload_asks_again_for_the_place_that_a_point_lacks(page):
    page.press("add")
    page.open(fresh=False)
    assert page.browser.text("#entry-text").startswith("Point 1:")
    assert page.browser.find("#entry").is_displayed()


def test_a_new_start_can_be_undone(page):
    page.press("sample")
    page.wait_for_points(12)
    before = page.report()
    page.press("clear")
    assert page.points() == []
    page.press("undo")
    assert page.report() == before


def test_a_narrow_screen_shows_all_without_scrolling_sideways(page, tmp_path):
    page.browser.resize(360, 640)
    page.press("sample")
    page.wait_for_points(12)
    assert overflow(page) <= 0
    for part in ("source", "target", "result", "table-part"):
        left, _, width, height = page.browser.rectangle(f"#{part}")
        assert left >= 0 and left + width <= 360 and height > 100, part
    buttons = page.browser.js("""return [...document.querySelectorAll("nav button, nav .button, .pane-bar button")]
        .filter(button => button.offsetParent !== null).map(button => [button.textContent, button.offsetHeight])""")
    assert [name for name, height in buttons if height < 30] == []


@pytest.mark.parametrize("width", [360, 1280])
def test_no_cell_of_the_points_hides_a_digit(page, tmp_path, width):
    page.browser.resize(width, 800)
    page.open_points(write(tmp_path, "wide.csv", "x,y,X,Y\n" + "".join(
        f"{x}.25,{y}.75,{4500000.25 + 0.2 * x + x * y % 7:.2f},{5400000.25 + 0.2 * y:.2f}\n"
        for x, y in ((1111, 2222), (3333, 2444), (3222, -4111), (1444, -4222), (2777, 1777), (2555, -1222)))), 6)
    page.edit(3, "X", "-4500000.26")
    hidden = page.browser.js("""return [...document.querySelectorAll("#points tbody :is(input[type=text], td > div)")]
        .filter(each => each.scrollWidth > each.clientWidth).map(each => each.value ?? each.textContent)""")
    assert hidden == []


def test_a_view_that_shows_all_does_so_after_the_window_changed(page):
    page.browser.resize(1500, 900)
    page.press("sample-two")
    page.wait_for_points(12)
    for width, height in ((360, 640), (1000, 800)):
        page.browser.resize(width, height)
        page.settle()
        hidden = page.browser.js("""return ["source", "target"].filter(side => {
            const view = document.querySelector(`#${side}-view`).getBoundingClientRect();
            const image = document.querySelector(`#${side}-view .base`).getBoundingClientRect();
            return image.left < view.left || image.right > view.right || image.top < view.top || image.bottom > view.bottom
        })""")
        assert hidden == []


def test_a_long_name_does_not_widen_the_page(page, tmp_path):
    page.open_points(write(tmp_path, "long.csv", CSV.replace("\ne,", "\n" + 300 * "long" + ",")), 5)
    page.edit(4, "X", "5000")
    assert "longlong" in page.verdict()
    assert overflow(page) <= 0


def test_a_name_does_not_turn_the_text_around_it(page, tmp_path):
    page.open_points(write(tmp_path, "names.csv", CSV.replace("\ne,", "\n\u202emirror,")), 5)
    page.select("method", "conformal")
    name = page.points()[4]["name"]
    assert name == "\u202emirror"
    page.edit(4, "X", "5000")
    assert f"'\u2068{name}\u2069'" in page.browser.text("#parameters")
    assert f"\u2068{name}\u2069" in page.browser.text("#source-view .points")


def test_states_have_shapes_and_words(page, tmp_path):
    rows = [f"{100 * i},{100 * j},{200 * i + (i * j) % 3},{200 * j + (i + j) % 2},0" for i in range(4) for j in range(4)]
    rows[5] = "100,100,260,200,0"
    rows[9] = "200,100,400,200,1"
    page.open_points(write(tmp_path, "states.csv", "x,y,X,Y,check\n" + "\n".join(rows) + "\n"), 16)
    states = [point["state"] for point in page.points()]
    assert "suspected blunder" in states[5] and "check point" in states[9]
    drawn = shapes(page, "source")
    assert len({drawn[0], drawn[5], drawn[9]}) == 3
    taken = [row[0] for row in page.browser.table("#kinds")[1:] if page.browser.js(
        "return getComputedStyle([...document.querySelectorAll('#kinds tbody th')].find(cell => "
        "cell.textContent.includes(arguments[0])).parentElement.cells[0], '::before').content", row[0]) != "none"]
    assert len(taken) == 1


def test_text_has_contrast(page):
    """Text of all parts against its background: at least 4.5, as the guidelines for accessibility ask."""
    page.press("sample")
    page.wait_for_points(12)
    for theme in ("light", "dark"):
        page.select("theme", theme)
        weak = page.browser.js(CONTRAST)
        assert weak == [], theme


CONTRAST = """
const parse = text => (text.match(/[\\d.]+/g) ?? []).map(Number);
const luminance = ([r, g, b]) => [r, g, b].map(v => v / 255).map(v => v <= 0.04045 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4)
    .reduce((sum, v, i) => sum + v * [0.2126, 0.7152, 0.0722][i], 0);
function background(element) {
    for (let at = element; at !== null; at = at.parentElement) {
        const colour = parse(getComputedStyle(at).backgroundColor);
        if (colour.length === 3 || colour[3] > 0.5) { return colour; }
    }
    return [255, 255, 255];
}
return [...document.querySelectorAll("body *")].filter(element => element.checkVisibility() && !element.closest("svg")
        && !element.disabled && [...element.childNodes].some(node => node.nodeType === 3 && node.data.trim() !== ""))
    .map(element => {
        const [a, b] = [getComputedStyle(element).color, null].slice(0, 1).map(parse).concat([background(element)])
            .map(luminance).sort((x, y) => y - x);
        return [element.tagName + "#" + element.id, element.textContent.trim().slice(0, 30), (a + 0.05) / (b + 0.05)];
    }).filter(([, , ratio]) => ratio < 4.5);
"""


def test_every_control_has_a_name(page):
    page.press("sample")
    page.wait_for_points(12)
    tree = page.browser.cdp("Accessibility.getFullAXTree")["nodes"]
    roles = {"button", "textbox", "checkbox", "combobox", "slider", "table", "group"}
    nameless = [node["role"]["value"] for node in tree if not node["ignored"] and node["role"]["value"] in roles - {"group"}
                and not node.get("name", {}).get("value")]
    assert nameless == []


def test_names_are_text_and_never_markup(page, tmp_path):
    quoted = TROUBLE.replace('"', '""')
    page.open_points(write(tmp_path, "<b>odd & 'name'.csv", CSV.replace("\na,", f'\n"{quoted}",')), 5)
    page.edit(1, "name", TROUBLE)
    assert page.browser.driver.title == "Georeference"
    assert page.browser.all("#source-view b, #points b, #points img, #report b, #suspects b, #kinds b") == []
    assert page.points()[0]["name"] == TROUBLE
    assert "<b>odd & 'name'.csv" in page.report()
    page.choose(write(tmp_path, "bad<b>.csv", "x,y,X,Y\n<b>1</b>,2,3,4\n"))
    page.wait_for_failure("<b>1</b>")
    assert page.browser.all("#message b") == []


@pytest.mark.parametrize("name,content", [("broken.png", b"\x89PNG\r\n\x1a\n broken"), ("text.jpg", b"not an image"),
                                          ("scan.tif", b"II*\0\x08\0\0\0\0\0")])
def test_an_image_that_cannot_be_shown(page, tmp_path, name, content):
    page.open_points(write(tmp_path, "plain.csv", CSV), 5)
    before = page.report()
    (tmp_path / name).write_bytes(content)
    page.browser.choose("#source-image", tmp_path / name)
    page.wait_for_failure(name)
    assert page.image_size("source") is None
    assert page.report() == before


def test_storage_that_is_full_is_told_and_loses_nothing(page, tmp_path):
    page.browser.js("""let text = 'x'.repeat(1 << 22);
        for (let i = 0; text.length > 0; ++i) {
            try { localStorage.setItem(`other${i}`, text); } catch { text = text.slice(text.length / 2 + 0.5); }
        }""")
    page.open_points(write(tmp_path, "plain.csv", CSV), 5)
    page.wait_for_failure("kept")
    assert "5 used" in page.report()


def test_damaged_storage_starts_anew(page):
    for kept in ("", "{", "null", '{"document": {"points": 7}}', '{"document": {"points": [{"x": "a"}]}}'):
        page.browser.driver.get("about:blank")
        page.open(fresh=False)
        page.browser.js("localStorage.setItem('nuv1math.georeference', arguments[0]); "
                        "addEventListener('pagehide', () => localStorage.setItem('nuv1math.georeference', arguments[0]))", kept)
        page.open(fresh=False)
        assert page.points() == [], kept
        page.press("sample")
        page.wait_for_points(12)


def test_the_slider_shows_more_or_less_of_the_source(page, tmp_path):
    page.open_image("source", write_png(tmp_path / "plan.png", 400, 300, colour=(250, 80, 80), step=400))
    page.open_image("target", write_png(tmp_path / "map.png", 400, 300, colour=(80, 80, 250), step=400))
    for column, row in ((20, 30), (380, 25), (370, 270), (35, 260)):
        page.click_in("source", column, row)
        page.click_in("target", column, row)
    colours = {}
    for key in ("Home", "End"):
        page.browser.js("document.querySelector('#blend').focus()")
        page.browser.key(key)
        page.settle()
        colours[key] = page.colour(*page.screen("target", 200, 150))
    assert colours["Home"][2] > 200 > colours["Home"][0]
    assert colours["End"][0] > 200 > colours["End"][2]
