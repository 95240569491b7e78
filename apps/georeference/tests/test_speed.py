"""The speed of the page: frames per second while a point of 100 is dragged, and 2 000 points.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

The bounds are loose, because machines are loaded. The figures are printed (pytest -s).
"""

import math
import time

from test_files import write

FRAMES = """window.frames = []; window.counting = true;
    (function count(time) { frames.push(time); if (counting) requestAnimationFrame(count); })(performance.now());"""


def write_points(folder, count):
    """Points of a grid with small errors, which have no pattern."""
    across = math.isqrt(count - 1) + 1
    rows = []
    for number in range(count):
        x, y = 100 * (number % across), 100 * (number // across)
        rows.append(f"{x},{y},{0.5 * x + 0.1 * y + 4e5 + math.sin(number * 7.1):.3f},"
                    f"{-0.1 * x + 0.5 * y + 5e6 + math.cos(number * 3.7):.3f}")
    return write(folder, f"points{count}.csv", "x,y,X,Y\n" + "\n".join(rows) + "\n")


def drag_for(page, seconds):
    """Drags a point in a circle. Returns the frames per second, and the longest time between two."""
    x, y = page.symbols("source")[0]
    page.browser.mouse("mouseMoved", x, y)
    page.browser.mouse("mousePressed", x, y, button="left", buttons=1, clickCount=1)
    page.browser.js(FRAMES)
    start = time.monotonic()
    while time.monotonic() < start + seconds:
        angle = 9 * (time.monotonic() - start)
        page.browser.mouse("mouseMoved", x + 30 * math.sin(angle), y + 30 - 30 * math.cos(angle), button="left", buttons=1)
    frames = page.browser.js("counting = false; return frames")
    page.browser.mouse("mouseReleased", x, y, button="left", clickCount=1)
    gaps = [b - a for a, b in zip(frames, frames[1:])]
    return 1000 * len(gaps) / sum(gaps), max(gaps)


def test_100_points_are_dragged_smoothly(page, tmp_path):
    page.open_points(write_points(tmp_path, 100), 100)
    before = page.report()
    rate, longest = drag_for(page, 2)
    print(f"100 points: {rate:.1f} frames per second, longest time between two {longest:.0f} ms")
    page.settle()
    assert page.report() != before
    assert rate > 15


def test_2000_points_are_usable(page, tmp_path):
    path = write_points(tmp_path, 2000)
    start = time.monotonic()
    page.choose(path)
    page.wait_for_points(2000)
    loading = time.monotonic() - start
    rate, longest = drag_for(page, 2)
    print(f"2000 points: shown after {loading:.2f} s, {rate:.1f} frames per second, "
          f"longest time between two {longest:.0f} ms")
    assert loading < 20
    assert rate > 1
