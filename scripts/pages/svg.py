"""svg: pictures as small SVG files that are readable in black and white.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import html
import re

STYLES = {
    "line": 'fill="none" stroke="#000" stroke-width="1.2"',
    "bold": 'fill="none" stroke="#000" stroke-width="2.4"',
    "grid": 'fill="none" stroke="#999" stroke-width="0.8"',
    "dash": 'fill="none" stroke="#000" stroke-width="1.2" stroke-dasharray="5 3"',
    "area": 'fill="#ddd" stroke="none"',
    "dark": 'fill="#555" stroke="none"',
    "open": 'fill="#fff" stroke="#000" stroke-width="1.4"',
    "dot": 'fill="#000" stroke="none"',
}


def number(value):
    """With one digit behind the point, which is a tenth of a pixel."""
    return f"{value:.1f}".removesuffix(".0").replace("-0.0", "0") if abs(value) >= 0.05 else "0"


def marked(text):
    """A label: *x* is italic, _x is a subscript. Everything else is as it is written."""
    text = html.escape(text, quote=False)
    text = re.sub(r"_(\w+)", r'<tspan dy="4" font-size="75%">\1</tspan><tspan dy="-4">&#8203;</tspan>', text)
    return re.sub(r"\*([^*]+)\*", r'<tspan font-style="italic">\1</tspan>', text)


class Picture:
    """What is drawn, in pixels from the left upper corner."""

    def __init__(self, width, height):
        self.width, self.height, self.parts = width, height, []

    def path(self, points, style="line", closed=False):
        steps = " ".join(f"{number(x)},{number(y)}" for x, y in points)
        self.parts.append(f'<{"polygon" if closed else "polyline"} points="{steps}" {STYLES[style]}/>')

    def circle(self, point, radius, style="open"):
        x, y = map(number, point)
        self.parts.append(f'<circle cx="{x}" cy="{y}" r="{number(radius)}" {STYLES[style]}/>')

    def arrow(self, start, end, style="line", size=8):
        (x0, y0), (x1, y1) = start, end
        length = ((x1 - x0) ** 2 + (y1 - y0) ** 2) ** 0.5
        ux, uy = (x1 - x0) / length, (y1 - y0) / length
        base = (x1 - size * ux, y1 - size * uy)
        self.path([start, base], style)
        self.path([end, *((base[0] + side * size * 0.4 * uy, base[1] - side * size * 0.4 * ux) for side in (1, -1))],
                  "dot", closed=True)

    def text(self, point, text, anchor="middle", size=14):
        self.parts.append(f'<text x="{number(point[0])}" y="{number(point[1])}" text-anchor="{anchor}" '
                          f'font-size="{size}">{marked(text)}</text>')

    def source(self):
        return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{self.width}" height="{self.height}" '
                f'viewBox="0 0 {self.width} {self.height}" font-family="DejaVu Sans, Verdana, sans-serif">\n'
                '<!-- SPDX-License-Identifier: MIT -->\n<rect width="100%" height="100%" fill="#fff"/>\n'
                + "\n".join(self.parts) + "\n</svg>\n")
