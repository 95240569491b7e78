#!/usr/bin/env python3
# make_sample.py: makes sample.csv, invented control points with a known transformation, on standard output.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

import random

SEED = 20261121
NOISE = 0.25  # half the width of the uniform noise, metres

# X = (A x + B y + C) / W, Y = (D x + E y + F) / W, W = G x + H y + 1, in metres from the grid origin below.
A, B, C = 0.1250, 0.0175, -470.0
D, E, F = 0.0150, -0.1225, 215.0
G, H = 2.0e-5, -1.5e-5
GRID = (4500400, 5387600)

POINTS = [
    ("church tower", 611.5, 402.0), ("north gate", 2980.0, 318.5), ("windmill", 5620.5, 455.0),
    ("boundary stone 7", 5433.0, 2102.5), ("bridge, east end", 3890.0, 1812.5), ("bridge, west end", 3310.5, 2244.0),
    ("market cross", 2204.0, 1543.0), ("mill weir", 770.5, 2011.0), ("quarry", 489.0, 3702.5),
    ("crossroads", 2377.5, 3120.0), ("chapel", 3988.0, 3581.5), ("farm \"Dell\"", 5544.5, 3790.0),
]


def transform(x, y):
    w = G * x + H * y + 1
    return GRID[0] + (A * x + B * y + C) / w, GRID[1] + (D * x + E * y + F) / w


def main():
    generator = random.Random(SEED)
    print("# SPDX-License-Identifier: MIT")
    print("# Made up for fitpoints by make_sample.py: places in pixels of a scan and in metres of a local grid.")
    print("# True transformation, mildly projective, with W = 2e-05 x - 1.5e-05 y + 1:")
    print("#   X = 4500400 + (0.125 x + 0.0175 y - 470) / W")
    print("#   Y = 5387600 + (0.015 x - 0.1225 y + 215) / W")
    print(f"# X and Y have uniform noise of up to {NOISE} m (seed {SEED}) and are rounded to 0.01 m.")
    print("name,x,y,X,Y")
    for name, x, y in POINTS:
        easting, northing = (value + NOISE * (2 * generator.random() - 1) for value in transform(x, y))
        quoted = '"' + name.replace('"', '""') + '"' if "," in name or '"' in name else name
        print(f"{quoted},{x},{y},{easting:.2f},{northing:.2f}")


main()
