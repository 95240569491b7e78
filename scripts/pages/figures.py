#!/usr/bin/env python3
"""figures: draws docs/figures. The library computes what they show.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT

    figures.py PROGRAM            PROGRAM is the built tests/tools/figure_geometry.cpp
    figures.py --check PROGRAM    compares the figures with what would be drawn, and writes nothing
"""

import math
import subprocess

from markdown import ROOT, check_arguments, fail, write
from svg import Picture

FOLDER = "docs/figures"
CORNERS = [(0, 0), (1, 0), (1, 1), (0, 1)]
FLAG = [(0.35, 0.2), (0.35, 0.8), (0.7, 0.8), (0.7, 0.68), (0.48, 0.68), (0.48, 0.56), (0.64, 0.56), (0.64, 0.44),
        (0.48, 0.44), (0.48, 0.2)] # the letter F, which no rotation turns into its mirror image


class Geometry:
    """What the library computed."""

    def __init__(self, program):
        self.values, self.transforms, self.points, self.elements = {}, {}, {}, {}
        for line in subprocess.run([program], check=True, capture_output=True, text=True).stdout.splitlines():
            kind, name, *rest = line.split()
            if kind == "value":
                self.values[name] = float(rest[0])
            elif kind == "transform":
                self.transforms[name] = tuple(map(float, rest))
            elif kind == "point":
                self.points.setdefault(name, []).append(tuple(map(float, rest)))
            else:
                self.elements[int(name), int(rest[0])] = int(rest[1])

    def map(self, name, point):
        a, b, c, d, e, f, g, h = self.transforms[name]
        x, y = point
        w = g * x + h * y + 1
        return (a * x + b * y + c) / w, (d * x + e * y + f) / w


class Panel:
    """A coordinate system in a picture: where its origin is, and how many pixels a unit has. Y grows upwards."""

    def __init__(self, picture, origin, unit):
        self.picture, self.origin, self.unit = picture, origin, unit

    def at(self, point):
        return self.origin[0] + self.unit * point[0], self.origin[1] - self.unit * point[1]

    def axes(self, names, right, up):
        for name, end, shift in ((names[0], (right, 0), (4, 15)), (names[1], (0, up), (-13, 8))):
            self.picture.arrow(self.at((0, 0)), self.at(end))
            x, y = self.at(end)
            self.picture.text((x + shift[0], y + shift[1]), f"*{name}*")

    def path(self, points, style="line", closed=False):
        self.picture.path([self.at(point) for point in points], style, closed)

    def arrow(self, start, end, style="line", size=8):
        self.picture.arrow(self.at(start), self.at(end), style, size)

    def arc(self, centre, radius, start, end):
        """From one direction to another, in degrees, with an arrow at its end."""
        steps = [math.radians(start + (end - start) * k / 24) for k in range(25)]
        points = [(centre[0] + radius * math.cos(t), centre[1] + radius * math.sin(t)) for t in steps]
        self.path(points[:-1])
        self.arrow(points[-3], points[-1], size=6)

    def label(self, point, text, dx=0, dy=0, anchor="middle"):
        x, y = self.at(point)
        self.picture.text((x + dx, y + dy), text, anchor)

    def grid(self, place, cells=4, width=1, flag=True):
        """The unit square, mapped by place: its grid, its border and the letter in it."""
        step = [width * k / cells for k in range(cells + 1)]
        if flag:
            self.path([place(point) for point in FLAG], "area", closed=True)
        for k in step[1:-1]:
            self.path([place((k, t)) for t in step], "grid")
            self.path([place((t, k)) for t in step], "grid")
        self.path([place((width * x, width * y)) for x, y in CORNERS], "line", closed=True)


def same(point):
    return point


def direction(degrees, length=1.0):
    return length * math.cos(math.radians(degrees)), length * math.sin(math.radians(degrees))


def parameter_panels(geometry, name):
    """The unit square, and its image with the rotation of the x axis."""
    picture = Picture(640, 300)
    source, target = Panel(picture, (50, 235), 130), Panel(picture, (330, 235), 130)
    source.grid(same)
    source.axes("xy", 1.35, 1.35)
    source.label((0.5, 0), "1", dy=18)
    source.label((0, 0.5), "1", dx=-12, dy=4)
    target.grid(lambda point: geometry.map(name, point))
    target.axes("XY", 2.05, 1.65)
    theta = geometry.values[f"{name}.theta"]
    target.arc((0, 0), 0.75, 0, theta)
    target.label(direction(theta / 2, 0.83), "θ", dx=4, dy=5)
    target.arrow((0, 0), geometry.map(name, (1, 0)), "bold", 11)
    target.arrow((0, 0), geometry.map(name, (0, 1)), "bold", 11)
    return picture, target, theta


def affine_parameters(geometry):
    picture, target, theta = parameter_panels(geometry, "affine")
    sy, phi = geometry.values["affine.sy"], geometry.values["affine.phi"]
    foot, top = direction(theta + 90, sy), geometry.map("affine", (0, 1))
    target.path([(0, 0), foot, top], "dash")
    target.arc((0, 0), 0.55, theta + 90, theta + 90 - phi)
    target.label(direction(theta + 90 - phi / 2, 0.64), "φ", dy=4)
    target.label(direction(theta + 90, sy / 2), "*s*_y", dx=-16, dy=4)
    x, y = geometry.map("affine", (1, 0))
    target.label((x * 0.72, y * 0.72), "*s*_x", dx=8, dy=18)
    picture.text((135, 285), "source: the unit square")
    picture.text((450, 285), "target: its image")
    return picture


def conformal_parameters(geometry):
    picture, target, _ = parameter_panels(geometry, "conformal")
    for corner, dx, dy in (((1, 0), 8, 18), ((0, 1), -14, 0)):
        x, y = geometry.map("conformal", corner)
        target.label((x * 0.8, y * 0.8), "*s*", dx=dx, dy=dy)
    picture.text((135, 285), "source: the unit square")
    picture.text((450, 285), "target: its image")
    return picture


def mirroring(geometry):
    picture = Picture(700, 300)
    source, middle, right = (Panel(picture, origin, 105) for origin in ((45, 150), (255, 150), (510, 150)))
    source.grid(same)
    source.axes("xy", 1.35, 1.35)
    picture.text((100, 265), "source")
    for panel, name in ((middle, "negative_sy"), (right, "reversed")):
        panel.grid(lambda point, name=name: geometry.map(name, point))
        panel.axes("XY", 1.6, 1.1)
    values = geometry.values
    picture.text((335, 265), "a negative *s*_y:")
    picture.text((335, 285), f"*s*_x = {values['negative_sy.sx']:.1f}, *s*_y = −{-values['negative_sy.sy']:.1f}, "
                             f"θ = {values['negative_sy.theta']:.0f}°")
    picture.text((580, 265), "a similarity that reverses")
    picture.text((580, 285), "the orientation")
    return picture


def packed_triangle(geometry):
    unknowns, cell = max(i for i, _ in geometry.elements) + 1, 38
    picture = Picture(620, 250)
    for i in range(unknowns):
        picture.text((38, 55 + cell * i + 24), f"*i* = {i}", "end", 12)
        picture.text((45 + cell * i + cell / 2, 38), f"*j* = {i}", size=12)
        for j in range(unknowns):
            x, y = 45 + cell * j, 50 + cell * i
            corners = [(x, y), (x + cell, y), (x + cell, y + cell), (x, y + cell)]
            if j <= i:
                picture.path(corners, "area" if i == j else "line", closed=True)
                picture.path(corners, "line", closed=True)
                picture.text((x + cell / 2, y + 24), str(geometry.elements[i, j]))
            else:
                picture.path(corners, "grid", closed=True)
    picture.text((45 + cell * unknowns / 2, 50 + cell * unknowns + 24), "the matrix", size=13)
    picture.text((415, 80), "element (*i*, *j*) is at *i*(*i* + 1)/2 + *j*", size=14)
    for (i, j), index in geometry.elements.items():
        x, y = 232 + cell * index, 110
        corners = [(x, y), (x + cell, y), (x + cell, y + cell), (x, y + cell)]
        if i == j:
            picture.path(corners, "area", closed=True)
        picture.path(corners, "line", closed=True)
        picture.text((x + cell / 2, y + 24), f"{i},{j}")
        picture.text((x + cell / 2, y + cell + 16), str(index), size=12)
    picture.text((415, 50 + cell * unknowns + 24), "the array, row by row", size=13)
    return picture


def three_kinds(geometry):
    picture = Picture(760, 220)
    kinds = [("", "source", "a square grid"), ("kind_conformal", "conformal", "angles stay"),
             ("kind_affine", "affine", "parallels stay"), ("kind_omographic", "omographic", "lines stay straight")]
    for k, (name, title, note) in enumerate(kinds):
        panel = Panel(picture, (22 + 190 * k - (15 if k else 0), 150), 115)
        panel.grid(lambda point, name=name: geometry.map(name, point) if name else point)
        for x, y, xa, ya in geometry.points["kinds"]:
            picture.circle(panel.at((xa, ya) if name else (x, y)), 4)
        middle = panel.at((0.65 if name else 0.5, 0))[0]
        picture.text((middle, 188), title)
        picture.text((middle, 208), note, size=12)
    return picture


def residuals(geometry):
    picture = Picture(660, 380)
    panel = Panel(picture, (50, 340), 74)
    panel.axes("XY", 6.2, 4.3)
    for x, y, xa, ya in geometry.points["residuals"]:
        computed = geometry.map("residuals", (x, y))
        panel.arrow((xa, ya), computed, "bold", 9)
        picture.circle(panel.at((xa, ya)), 4.5)
        cx, cy = panel.at(computed)
        picture.path([(cx - 5, cy - 5), (cx + 5, cy + 5)], "line")
        picture.path([(cx - 5, cy + 5), (cx + 5, cy - 5)], "line")
    x, y, xa, ya = geometry.points["residuals"][1]
    computed = geometry.map("residuals", (x, y))
    panel.path([(xa, ya), (computed[0], ya), computed], "dash")
    panel.label(((xa + computed[0]) / 2, ya), "*dX*", dy=-7)
    panel.label((computed[0], (ya + computed[1]) / 2), "*dY*", dx=16, dy=4)
    picture.circle((480, 30), 4.5)
    picture.text((500, 35), "given", "start")
    picture.path([(475, 55), (485, 65)], "line")
    picture.path([(475, 65), (485, 55)], "line")
    picture.text((500, 65), "computed", "start")
    picture.arrow((466, 90), (494, 90), "bold", 9)
    picture.text((500, 95), "residual", "start")
    picture.text((500, 115), "computed less given", "start", 12)
    return picture


FIGURES = {"affine-parameters": affine_parameters, "conformal-parameters": conformal_parameters,
           "mirroring": mirroring, "packed-triangle": packed_triangle, "three-kinds": three_kinds,
           "residuals": residuals}


def main():
    arguments = check_arguments(__doc__.splitlines()[0])
    geometry = Geometry(arguments.program)
    for name, draw in FIGURES.items():
        path, source = f"{FOLDER}/{name}.svg", draw(geometry).source()
        if not arguments.check:
            write(path, source)
        elif not (ROOT / path).exists() or (ROOT / path).read_text() != source:
            fail(f"{path} is not what the library computes; scripts/docs figures draws it")


main()
