"""The speed of the page: what a frame costs while a point of 100 is dragged, and 2 000 points.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

The tests judge the processor time of a frame, because other programs take from the frames per second. They double it at
times, too, by what they take from the caches, so the bounds are loose. All figures are printed (pytest -s).
"""

import math
import time

from test_files import write

FRAMES = """window.frames = []; window.counting = true; const point = document.querySelector("#source-view .point");
    (function count(time) {
        frames.push([time, point.getAttribute("transform")]); if (counting) requestAnimationFrame(count);
    })(performance.now());"""
DRAGS = 3 # of which the fastest counts
FRAME = 1000 / 60 # milliseconds, of a frame at 60 frames per second


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
    """Drags a point in a circle. Returns milliseconds of processor time per frame in which it has moved, frames per
    second, and the longest time between two frames."""
    x, y = page.symbols("source")[0]
    page.browser.mouse("mouseMoved", x, y)
    page.browser.mouse("mousePressed", x, y, button="left", buttons=1, clickCount=1)
    page.browser.js(FRAMES)
    used, start = page.browser.processor_time(), time.monotonic()
    while time.monotonic() < start + seconds:
        angle = 9 * (time.monotonic() - start)
        page.browser.mouse("mouseMoved", x + 30 * math.sin(angle), y + 30 - 30 * math.cos(angle), button="left", buttons=1)
    frames, used = page.browser.js("counting = false; return frames"), page.browser.processor_time() - used
    page.browser.mouse("mouseMoved", x + 5, y + 5, button="left", buttons=1)
    page.browser.mouse("mouseReleased", x + 5, y + 5, button="left", clickCount=1)
    page.settle()
    moved = sum(a != b for (_, a), (_, b) in zip(frames, frames[1:]))
    gaps = [b - a for (a, _), (b, _) in zip(frames, frames[1:])]
    return 1000 * used / moved, 1000 * len(gaps) / sum(gaps), max(gaps)


def fastest_drag(page, count):
    """The least processor time of a frame, in milliseconds."""
    before = page.points()[0]
    drags = [drag_for(page, 1) for _ in range(DRAGS)]
    used, rate, longest = min(drags)
    print(f"{count} points: a frame takes {used:.1f} ms of processor time; {rate:.1f} frames per second, "
          f"longest time between two {longest:.0f} ms")
    assert page.points()[0] != before
    return used


def test_100_points_are_dragged_smoothly(page, tmp_path):
    page.open_points(write_points(tmp_path, 100), 100)
    assert fastest_drag(page, 100) < 3 * FRAME


def test_2000_points_are_usable(page, tmp_path):
    path = write_points(tmp_path, 2000)
    used, start = page.browser.processor_time(), time.monotonic()
    page.choose(path)
    page.wait_for_points(2000)
    used = page.browser.processor_time() - used
    print(f"2000 points: shown after {time.monotonic() - start:.2f} s, {used:.2f} s of them in the page")
    assert used < 2
    assert fastest_drag(page, 2000) < 12 * FRAME
