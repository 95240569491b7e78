"""plots: pictures of the tables in the measured pages, for the site.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

A plot is drawn from the page itself, so that it shows what the page says.
"""

import math
import re

from markdown import fail
from svg import Picture

LEFT, RIGHT, STEP = 310, 760, 18


def tables_of(text):
    """The tables of a page: lists of rows, which are lists of cells without marks. The first row is the head."""
    found = []
    for block in re.findall(r"(?:^\|.*\n)+", text, re.MULTILINE):
        rows = [[re.sub(r"[*`]|&nbsp;", "", cell).strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
                for line in block.splitlines()]
        found.append([rows[0], *rows[2:]])
    return found


class Axis:
    """A horizontal axis above the rows, logarithmic or from 0."""

    def __init__(self, ticks, logarithmic=True):
        self.ticks, self.scale = ticks, math.log if logarithmic else float
        self.low = self.scale(ticks[0])
        self.high = self.scale(ticks[-1])

    def at(self, value):
        part = (self.scale(max(value, self.ticks[0])) - self.low) / (self.high - self.low)
        return LEFT + (RIGHT - LEFT) * min(part, 1.0)

    def draw(self, picture, title, rows):
        bottom = 50 + STEP * rows
        picture.text((picture.width / 2, 16), title, size=13)
        for tick in self.ticks:
            x = self.at(tick)
            picture.path([(x, 42), (x, bottom)], "grid")
            picture.text((x, 36), f"{tick:,.10g}".replace(",", " "), size=11)


def chart(title, axis, rows, draw):
    """A picture with a row for each (label, values); draw(picture, axis, y, values) draws one."""
    picture = Picture(RIGHT + 40, 62 + STEP * len(rows))
    axis.draw(picture, title, len(rows))
    for k, (label, values) in enumerate(rows):
        y = 60 + STEP * k
        picture.text((LEFT - 8, y + 4), label, "end", 11)
        draw(picture, axis, y, values)
    return picture.source()


def bar(picture, axis, y, value, style="dark", height=10):
    picture.path([(LEFT, y - height / 2), (axis.at(value), y - height / 2), (axis.at(value), y + height / 2),
                  (LEFT, y + height / 2)], style, closed=True)


def powers(low, high):
    """The powers of ten around a range."""
    return [10.0 ** k for k in range(math.floor(math.log10(low)), math.ceil(math.log10(high)) + 1)]


# ---- speed ----


def factors(text):
    """For each routine its time by that of the fastest other library, at each size."""
    found = {}
    for head, *rows in tables_of(text.split("## Ratios", 1)[1]):
        if head[:2] == ["function", "computed by"]:
            routine = ""
            for name, computed, _, ratio in rows:
                routine = name or routine
                if not name and not computed.startswith("floor"):
                    found[routine] = [min([float(ratio), *found.get(routine, [])])]
        elif head[0] in ("points", "unknowns", "degree") and rows[0][1] == "1.00":
            others = [row[1:] for row in rows[1:] if not row[0].startswith("ours by")]
            columns = [[float(cell) for cell in column if cell] for column in zip(*others)]
            found[rows[0][0]] = [min(column) for column in columns if column]
    return found


def performance(text):
    found = factors(text)

    def draw(picture, axis, y, values):
        picture.path([(axis.at(min(values)), y), (axis.at(max(values)), y)], "bold")
        for value in values:
            picture.circle((axis.at(value), y), 3.5, "dot" if value >= 1 else "open")

    return chart("time of the fastest other library / ours, at each measured size; filled: this library is faster",
                 Axis([0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10]), list(found.items()), draw)


# ---- device, footprint, roots ----


def device(text):
    rows = []
    for name, size, count, *_ in next(table[1:] for table in tables_of(text) if table[0][2] == "instructions"):
        rows.append((f"{name}, {size}" if size else name, float(count)))
    rows = sorted(rows, key=lambda row: row[1])
    return chart("instructions of one call without floating-point hardware", Axis(powers(10, max(v for _, v in rows))),
                 rows, bar)


def footprint(text):
    table = next(table[1:] for table in tables_of(text) if table[0][0] == "Function")
    rows = [(name.split("(")[0] + (", polynomial" if name.startswith("Roots(unsigned") else ""), float(stack))
            for name, stack, _ in table]
    rows = sorted(rows, key=lambda row: row[1])
    return chart("bytes of stack of one call", Axis(range(0, int(rows[-1][1]) + 250, 250), logarithmic=False), rows, bar)


def roots(text):
    rows = []
    for name, *counts in next(table[1:] for table in tables_of(text) if table[0][0] == "Polynomials"):
        count, gives_up, fewer = map(int, counts[:3])
        if gives_up + fewer > 0:
            label = re.sub(r"(integers|p with|all roots different|r uniform in) ", "", name)
            rows.append((label, (100 * gives_up / count, 100 * fewer / count)))

    def draw(picture, axis, y, values):
        bar_at = ((values[0], y - 3.5, "dark"), (values[1], y + 3.5, "area"))
        for value, line, style in bar_at:
            if value > 0:
                bar(picture, axis, line, value, style, 6)

    return chart("% of the polynomials; dark: the iteration gives up, light: fewer roots than there are",
                 Axis([0.01, 0.1, 1, 10, 100]), rows, draw)


# The page of each plot, and what the plot shows.
PLOTS = {
    "performance": (performance, "How fast each routine is beside the fastest other library"),
    "performance-device": (device, "Instructions of one call"),
    "footprint": (footprint, "Stack of one call"),
    "roots": (roots, "How often roots are missed"),
}


def draw(name, text):
    try:
        return PLOTS[name][0](text)
    except (StopIteration, ValueError, IndexError) as error:
        fail(f"docs/{name}.md has not the tables that its plot needs: {error!r}")
