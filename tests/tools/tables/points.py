# points.py: control points for the tables of the fits.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT

from exactdouble import ONE, ZERO
from tables.table import numbers, power_of_two


def transposed(rows, width):
    return [list(column) for column in zip(*rows)] if rows else [[] for _ in range(width)]


def affine_image(coefs, x, y):
    a, b, c, d, e, f = coefs
    return a * x + b * y + c, d * x + e * y + f


def projective_image(coefs, x, y):
    a, b, c, d, e, f, g, h = coefs
    w = g * x + h * y + ONE
    return (a * x + b * y + c) / w, (d * x + e * y + f) / w


def mapped(sources, image, coefs, noise):
    """x y X Y of the source points and their images, with noise() added."""
    rows = []
    for x, y in sources:
        image_x, image_y = image(coefs, x, y)
        rows.append((x, y, image_x + noise(), image_y + noise()))
    return transposed(rows, 4)


def exact(source):
    return lambda: ZERO


def noisy(source):
    return lambda: source.real(-6)


def affine_points(source, count, offset=0, noise=noisy):
    sources = [(source.surveyed(1000, offset), source.surveyed(1000, offset)) for _ in range(count)]
    return mapped(sources, affine_image, source.reals(6, 2), noise(source))


def similar_points(source, count, offset=0, noise=noisy):
    a, b, tx, ty = source.reals(4, 2)
    sources = [(source.surveyed(1000, offset), source.surveyed(1000, offset)) for _ in range(count)]
    return mapped(sources, affine_image, [a, b, tx, -b, a, ty], noise(source))


def projective_points(source, count, noise=noisy):
    sources = [(source.surveyed(10), source.surveyed(10)) for _ in range(count)]
    coefs = source.reals(6, 2) + source.reals(2, -6)
    return mapped(sources, projective_image, coefs, noise(source))


def small_points(source, count):
    """Small whole coordinates, some of them equal."""
    return [source.wholes(count, 4) for _ in range(4)]


def collinear_points(source, count):
    """All source points on one line."""
    dx, dy = source.wholes(2)
    sources = [(dx * step, dy * step + ONE) for step in source.wholes(count)]
    return mapped(sources, affine_image, source.wholes(6), noisy(source))


def special_points(source, count):
    """Small whole coordinates, one or two of them special."""
    points = small_points(source, count)
    for _ in range(source.integer(1, 2)):
        points[source.integer(0, 3)][source.integer(0, count - 1)] = source.special()
    return points


def collapsed_points(source, count):
    """The target on a line, with coefficients of some thousands: the determinant is 0 but for its rounding."""
    sources = [(source.surveyed(10), source.surveyed(10)) for _ in range(count)]
    a, b = source.reals(2, source.integer(3, 7))
    factor = source.choice([source.real(2), source.whole()])
    rows = [(x, y, a * x + b * y, (a * x + b * y) * factor) for x, y in sources]
    return transposed(rows, 4)


def scaled_points(points, exponent):
    return [[value * power_of_two(exponent) for value in values] for values in points]


def with_points(points, *before):
    """The inputs of a fit: the count, other arguments, x, y, X, Y."""
    return [len(points[0])] + list(before) + points


UNIT_SQUARE = ([0, 1, 1, 0], [0, 0, 1, 1])


def square_onto(*target):
    return [numbers(*values) for values in UNIT_SQUARE + target]
