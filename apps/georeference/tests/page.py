"""page: the page of georeferencing as a person sees it: views with points, tables, messages, buttons.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import base64
import pathlib

from browser import wait_until
from images import first_pixel

COLUMNS = ("number", "name", "x", "y", "X", "Y", "check", "dX", "dY", "length", "left out", "state")
FIELDS = ("name", "x", "y", "X", "Y", "check")


class Page:
    def __init__(self, browser, path):
        self.browser, self.path = browser, pathlib.Path(path).resolve()

    def open(self, fresh=True):
        self.browser.open(self.path, fresh)
        wait_until(lambda: self.browser.js("return document.documentElement.dataset.state") == "ready", "a ready page")
        self.settle()

    def settle(self):
        """Waits until what was done is fitted and drawn, and the report is written."""
        self.frame()
        wait_until(lambda: self.browser.find("#result").get_attribute("aria-busy") == "false", "a quiet page")

    def frame(self):
        """Waits until what was done is drawn."""
        self.browser.driver.execute_async_script(
            "const done = arguments[0]; requestAnimationFrame(() => requestAnimationFrame(() => done()));")

    # ---- what is seen ----

    def points(self):
        """The rows of the table of points that are in sight; of few points, all."""
        return [dict(zip(COLUMNS, row)) for row in self.browser.table("#points")[1:]]

    def coordinates(self):
        """What the points have in the fields of numbers, as it is written."""
        return [tuple(point[column] for column in ("x", "y", "X", "Y")) for point in self.points()]

    def kinds(self):
        return {row[0].strip("✓ "): row[1:] for row in self.browser.table("#kinds")[1:]}

    def report(self):
        if self.browser.find("#report-part").get_attribute("open") is None:
            self.browser.press("#report-part summary")
            wait_until(lambda: self.browser.text("#report"), "the report")
        return self.browser.text("#report")

    def verdict(self):
        return self.browser.text("#verdict")

    def suspects(self):
        return self.browser.text("#suspects")

    def warnings(self):
        return self.browser.text("#warnings")

    def message(self):
        """The message that is shown, or an empty text."""
        return self.browser.js("""const box = document.querySelector("#message");
            return box.hidden ? "" : document.querySelector("#message-text").textContent""")

    def wait_for_points(self, count):
        wait_until(lambda: self.browser.js("return document.querySelector('#points').ariaRowCount") == str(count + 1),
                   f"{count} points; the message is {self.message()!r}")
        self.settle()

    def failure(self):
        """The message, if it tells of a failure."""
        return self.message() if "bad" in self.browser.find("#message").get_attribute("class") else ""

    def wait_for_failure(self, text):
        wait_until(lambda: text in self.failure(), f"the message {text!r}; it is {self.message()!r}")

    def is_enabled(self, button):
        return self.browser.find(f"#{button}").is_enabled()

    # ---- files ----

    def press(self, button):
        self.browser.press(f"#{button}")
        self.settle()

    def choose(self, *paths):
        """Opens files of points or images by the first button."""
        self.browser.choose("#open-files", *paths)

    def open_points(self, path, count):
        self.choose(path)
        self.wait_for_points(count)

    def open_image(self, view, path):
        self.browser.choose(f"#{view}-image", path)
        wait_until(lambda: self.image_size(view), f"the image {path} in the view {view}; {self.message()}")
        self.settle()

    def image_size(self, view):
        """Width and height in pixels, or None if no image is shown."""
        return self.browser.js("""const image = document.querySelector(arguments[0]);
            return image.hidden || !image.complete || !image.naturalWidth ? null
                : [image.naturalWidth, image.naturalHeight]""", f"#{view}-view .base")

    def save(self, export):
        """Saves by a button. Returns what the browser has written."""
        self.browser.press(f"#save-{export}")
        return self.browser.downloaded()[1]

    # ---- views ----

    def colour(self, x, y):
        """Red, green and blue of a place in the window."""
        clip = {"x": round(x), "y": round(y), "width": 1, "height": 1, "scale": 1}
        shot = self.browser.cdp("Page.captureScreenshot", format="png", clip=clip)
        return first_pixel(base64.b64decode(shot["data"]))

    def screen(self, view, column, row):
        """Where the centre of a pixel of the image is in the window."""
        self.browser.rectangle(f"#{view}-view")
        left, top, width, height = self.browser.js("""const box = document.querySelector(arguments[0])
            .getBoundingClientRect(); return [box.left, box.top, box.width, box.height]""", f"#{view}-view .base")
        columns, rows = self.image_size(view)
        return left + (column + 0.5) * width / columns, top + (row + 0.5) * height / rows

    def middle(self, view, part=(0.5, 0.5)):
        """A place in a view, by its part of the width and the height."""
        left, top, width, height = self.browser.rectangle(f"#{view}-view")
        return left + part[0] * width, top + part[1] * height

    def click_in(self, view, column, row):
        self.browser.click(*self.screen(view, column, row))
        self.settle()

    def symbols(self, view):
        """The places of the points in the window, in the order of the points."""
        return self.browser.js("""return [...document.querySelectorAll(arguments[0])].map(point => {
            const {left, top, width, height} = point.querySelector("path").getBoundingClientRect();
            return [left + width / 2, top + height / 2] })""", f"#{view}-view .point")

    def drag_symbol(self, view, number, right, down, steps=10):
        self.browser.rectangle(f"#{view}-view")
        x, y = self.symbols(view)[number]
        self.browser.drag((x, y), (x + right, y + down), steps)
        self.settle()

    # ---- the table of points ----

    def cell(self, number, column):
        """A selector of the field in a row of the table of points. The first row is room for those out of sight."""
        return f"#points tbody tr:nth-child({number + 2}) td:nth-child({COLUMNS.index(column) + 1}) input"

    def edit(self, number, column, text):
        self.browser.fill(self.cell(number, column), text)
        self.settle()

    def check(self, number):
        self.browser.press(self.cell(number, "check"))
        self.settle()

    def delete(self, number):
        self.browser.press(f"#points tbody tr:nth-child({number + 2}) button")
        self.settle()

    # ---- settings ----

    def select(self, field, value):
        """Chooses in a list by the keyboard, as browsers draw lists outside of the page."""
        self.browser.js("document.getElementById(arguments[0]).focus()", field)
        options, index = self.browser.js("""const field = document.getElementById(arguments[0]);
            return [[...field.options].map(option => option.value), field.selectedIndex]""", field)
        steps = options.index(value) - index
        for _ in range(abs(steps)):
            self.browser.key("ArrowDown" if steps > 0 else "ArrowUp")
        self.settle()
        assert self.browser.js("return document.getElementById(arguments[0]).value", field) == value

    def tick(self, field):
        self.browser.press(f"#{field}")
        self.settle()
