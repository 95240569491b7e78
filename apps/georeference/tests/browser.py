"""browser: a headless Chromium that is used as a person uses it: pointer, touch, keys, clipboard, files, downloads.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

Chromium, chromedriver and selenium are those of Debian. Nothing here waits for a time; everything waits for a condition.
"""

import json
import os
import pathlib
import re
import time

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.utils import is_connectable

PATIENCE = 120.0 # seconds until a condition that does not come true is a failure
OPTIONS = [
    "--headless=new", "--no-first-run", "--disable-gpu", "--disable-dev-shm-usage", "--disable-background-networking",
    "--disable-component-update", "--disable-extensions", "--force-device-scale-factor=1", "--font-render-hinting=none",
    "--lang=en-US", "--hide-scrollbars", "--remote-debugging-pipe", # a pipe needs no name of this machine
]
UNFINISHED = re.compile(r"\.crdownload$|^\.")
KEYS = { # name: key code, and the text that the key types
    "Enter": (13, "\r"), "Tab": (9, ""), "Escape": (27, ""), "Delete": (46, ""), "Backspace": (8, ""), " ": (32, " "),
    "ArrowLeft": (37, ""), "ArrowUp": (38, ""), "ArrowRight": (39, ""), "ArrowDown": (40, ""), "Home": (36, ""),
    "End": (35, ""), "PageUp": (33, ""), "PageDown": (34, ""), "F2": (113, ""),
}
EDITING = {"a": "selectAll", "c": "copy", "v": "paste", "x": "cut"} # with Control, which headless Chromium does not map
MODIFIERS = {"Alt": 1, "Control": 2, "Shift": 8}


def wait_until(condition, what, patience=PATIENCE):
    """Returns the first result of `condition()` that is true."""
    end = time.monotonic() + patience
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(f"did not happen within {patience:.0f} s: {what}")
        time.sleep(0.01)


class Driver(Service):
    """The chromedriver, called by its address: a bare system may not know the name localhost."""

    @property
    def service_url(self):
        return f"http://127.0.0.1:{self.port}"

    def is_connectable(self):
        return is_connectable(self.port, "127.0.0.1")


class Browser:
    """One Chromium. `open` starts afresh: no storage, no downloads, no requests, no messages of the console."""

    def __init__(self, folder, width=1280, height=900):
        self.downloads = pathlib.Path(folder, "downloads")
        self.downloads.mkdir()
        self.size = width, height
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        for argument in OPTIONS + (["--no-sandbox"] if os.geteuid() == 0 else []):
            options.add_argument(argument)
        options.add_argument(f"--user-data-dir={pathlib.Path(folder, 'profile')}")
        options.add_experimental_option("prefs", {"download.default_directory": str(self.downloads)})
        options.set_capability("goog:loggingPrefs", {"performance": "ALL", "browser": "ALL"})
        self.driver = webdriver.Chrome(service=Driver("/usr/bin/chromedriver"), options=options)
        self.cdp("Performance.enable", timeDomain="threadTicks")
        self.requests, self.messages = [], []

    def quit(self):
        self.driver.quit()

    # ---- the page ----

    def cdp(self, command, **parameters):
        return self.driver.execute_cdp_cmd(command, parameters)

    def js(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def resize(self, width, height):
        """Sets the size of the page, not that of the window."""
        self.cdp("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)
        wait_until(lambda: self.js("return [innerWidth, innerHeight]") == [width, height], "the new size")

    def open(self, path, fresh=True):
        if fresh:
            self.driver.get("about:blank")
            self.cdp("Storage.clearDataForOrigin", origin="file://", storageTypes="all")
            self.cdp("Emulation.setTouchEmulationEnabled", enabled=False)
            for file in self.downloads.iterdir():
                file.unlink()
            self.log()
            self.requests, self.messages = [], []
        self.resize(*self.size)
        self.driver.get(pathlib.Path(path).as_uri())

    def log(self):
        """What the page has asked the network for, and what it has written on the console, from `open` on."""
        for entry in self.driver.get_log("performance"):
            event = json.loads(entry["message"])["message"]
            if event["method"] == "Network.requestWillBeSent":
                self.requests.append(event["params"]["request"]["url"])
        self.messages += [entry["message"] for entry in self.driver.get_log("browser")
                          if entry["level"] in ("SEVERE", "WARNING")]
        return self.requests, self.messages

    def processor_time(self):
        """Seconds of processor time that the page has used in its main thread. Other programs do not add to them."""
        metrics = self.cdp("Performance.getMetrics")["metrics"]
        return next(metric["value"] for metric in metrics if metric["name"] == "TaskDuration")

    def find(self, selector):
        found = self.driver.find_elements(By.CSS_SELECTOR, selector)
        assert len(found) == 1, f"{len(found)} elements are {selector}"
        return found[0]

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.js("return document.querySelector(arguments[0]).textContent", selector)

    def rectangle(self, selector):
        """Left, top, width and height in the window, after the element is scrolled into view."""
        return self.js("""const element = document.querySelector(arguments[0]);
            element.scrollIntoView({block: "nearest", inline: "nearest", behavior: "instant"});
            const {left, top, width, height} = element.getBoundingClientRect(); return [left, top, width, height];""",
                       selector)

    def centre(self, selector):
        left, top, width, height = self.rectangle(selector)
        return left + width / 2, top + height / 2

    def table(self, selector):
        """The cells of a table, row by row: the text, or the value of the field in the cell."""
        return self.js("""return [...document.querySelector(arguments[0]).rows].filter(row => row.ariaHidden !== "true").map(row => [...row.cells].map(cell => {
            const field = cell.querySelector("input, select");
            return field === null ? cell.textContent.trim() : field.type === "checkbox" ? field.checked : field.value;
        }))""", selector)

    def screenshot(self, path):
        self.driver.save_screenshot(str(path))

    # ---- pointer ----

    def mouse(self, kind, x, y, **parameters):
        self.cdp("Input.dispatchMouseEvent", type=kind, x=x, y=y, **parameters)

    def click(self, x, y, count=1, modifiers=0):
        self.mouse("mouseMoved", x, y, modifiers=modifiers)
        for number in range(1, count + 1):
            self.mouse("mousePressed", x, y, button="left", clickCount=number, modifiers=modifiers)
            self.mouse("mouseReleased", x, y, button="left", clickCount=number, modifiers=modifiers)

    def press(self, selector):
        """A click in the middle of an element."""
        self.click(*self.centre(selector))

    def drag(self, start, end, steps=10, release=True):
        self.mouse("mouseMoved", *start)
        self.mouse("mousePressed", *start, button="left", buttons=1, clickCount=1)
        for step in range(1, steps + 1):
            x, y = (a + (b - a) * step / steps for a, b in zip(start, end))
            self.mouse("mouseMoved", x, y, button="left", buttons=1)
        if release:
            self.mouse("mouseReleased", *end, button="left", clickCount=1)

    def wheel(self, x, y, delta, modifiers=0):
        self.mouse("mouseWheel", x, y, deltaX=0, deltaY=delta, modifiers=modifiers)

    # ---- touch ----

    def touch_screen(self):
        self.cdp("Emulation.setTouchEmulationEnabled", enabled=True, maxTouchPoints=5)

    def touch(self, kind, *fingers):
        points = [{"x": x, "y": y, "id": number} for number, (x, y) in enumerate(fingers)]
        self.cdp("Input.dispatchTouchEvent", type=kind, touchPoints=points)

    def tap(self, x, y):
        self.touch("touchStart", (x, y))
        self.touch("touchEnd")

    def touch_drag(self, *paths, steps=10):
        """Each finger has a path: where it starts and where it ends."""
        self.touch("touchStart", *(start for start, _ in paths))
        for step in range(1, steps + 1):
            self.touch("touchMove", *(tuple(a + (b - a) * step / steps for a, b in zip(start, end))
                                      for start, end in paths))
        self.touch("touchEnd")

    # ---- keys ----

    def key(self, name, *modifiers):
        code, text = KEYS.get(name, (ord(name.upper()) if re.fullmatch("[A-Za-z0-9]", name) else 0, name))
        mask = sum(MODIFIERS[modifier] for modifier in modifiers)
        physical = {"key": name, "windowsVirtualKeyCode": code, "modifiers": mask,
                    "code": f"Key{name.upper()}" if re.fullmatch("[A-Za-z]", name) else name}
        down = dict(physical, type="keyDown" if text and not mask & ~8 else "rawKeyDown")
        if down["type"] == "keyDown":
            down["text"] = text
        if mask == MODIFIERS["Control"] and name in EDITING:
            down["commands"] = [EDITING[name]]
        self.cdp("Input.dispatchKeyEvent", **down)
        self.cdp("Input.dispatchKeyEvent", **dict(physical, type="keyUp"))

    def type(self, text):
        """Types into what has the focus."""
        for character in text:
            self.key({"\n": "Enter", "\t": "Tab"}.get(character, character))

    def fill(self, selector, text):
        """Replaces what a field has, as a person does: click, select all, type, leave by Tab."""
        self.press(selector)
        self.key("a", "Control")
        self.type(text) if text else self.key("Delete")
        self.key("Tab")

    # ---- clipboard and files ----

    def copy(self, text):
        """Puts a text on the clipboard."""
        self.cdp("Browser.setPermission", permission={"name": "clipboard-write"}, setting="granted")
        failure = self.driver.execute_async_script("""navigator.clipboard.writeText(arguments[0])
            .then(() => arguments[1](null), error => arguments[1](error.message))""", text)
        assert failure is None

    def paste(self, text):
        self.copy(text)
        self.key("v", "Control")

    def choose(self, selector, *paths):
        """Chooses files in the dialog of a file field, which may be invisible behind a button."""
        self.find(selector).send_keys("\n".join(str(path) for path in paths))

    def drop(self, x, y, *paths):
        """Drags files from outside and drops them."""
        data = {"items": [], "files": [str(path) for path in paths], "dragOperationsMask": 1}
        for kind in ("dragEnter", "dragOver", "drop"):
            self.cdp("Input.dispatchDragEvent", type=kind, x=x, y=y, data=data)

    def downloaded(self):
        """Name and bytes of the one download, which is removed. The browser first makes an empty file of this name, and
        then replaces it by the complete one."""
        path, = wait_until(lambda: [path for path in self.downloads.iterdir()
                                    if not UNFINISHED.search(path.name) and path.stat().st_size > 0], "a download")
        data = path.read_bytes()
        path.unlink()
        return path.name, data
