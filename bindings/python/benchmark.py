"""benchmark.py: speed and accuracy of the package beside scikit-image, OpenCV and numpy.linalg.lstsq, in one run.

It prints a JSON object with the versions, the time of one call in seconds, and the greatest errors. All points lie
exactly on a transformation, so that every criterion of least squares has the same solution: the coefficients are
dyadic numbers, and so are all coordinates, also after a shift by an offset. The exact images are rational numbers.

Speed: each contestant gets arrays in the form that it takes without conversion. numpy.linalg.lstsq has no function for
the problem: setting up the equations is timed with it. OpenCV's estimateAffine2D and estimateAffinePartial2D are made for
samples with outliers: a threshold that no point exceeds leaves them their least-squares fit.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import fractions
import json
import platform
import timeit

import cv2
import numpy as np
import skimage
from skimage.transform import estimate_transform

import nuv1math
from nuv1math import CalcCoefs, MethodUsed

KINDS = ("conformal", "affine", "omographic")
TRUTH = {
    "conformal": (1.25, -0.5, 3, 0.5, 1.25, -7, 0, 0),
    "affine": (1.25, -0.375, 3, 0.5, 0.75, -7, 0, 0),
    "omographic": (1.25, -0.375, 3, 0.5, 0.75, -7, 2**-7, 2**-8),
}
SIZES = {"conformal": (2, 10, 100, 10_000), "affine": (3, 10, 100, 10_000), "omographic": (4, 10, 100, 10_000)}
OFFSETS = (0, 1_000, 1_000_000)
RANSAC = {"method": cv2.RANSAC, "ransacReprojThreshold": 1e9}


# ---- points ----


def source_points(count):
    """Points whose denominator x/128 + y/256 + 1 of the omographic transformation is 1/2, 1, 2 or 4."""
    x, w = np.random.default_rng(4).integers(-160_000, 160_001, count), np.resize([1, 1, 2, 2, 0.5, 4], count)
    x = x / 1024
    return np.column_stack([x, 256 * (w - 1) - 2 * x])


def exact_images(truth, points):
    """The images as rational numbers."""
    a, b, c, d, e, f, g, h = map(fractions.Fraction, truth)
    rows = [[fractions.Fraction(x), fractions.Fraction(y)] for x, y in points.tolist()]
    return [((a * x + b * y + c) / (g * x + h * y + 1), (d * x + e * y + f) / (g * x + h * y + 1)) for x, y in rows]


def exact_points(kind, count):
    """Control points without errors; every coordinate is a double without rounding."""
    source = source_points(count)
    images = exact_images(TRUTH[kind], source)
    target = np.array(images, dtype=float)
    if any(fractions.Fraction(value) != image for row, images_of in zip(target.tolist(), images)
           for value, image in zip(row, images_of)):
        raise ValueError(f"{kind}: an image is not a double")
    return source, target


# ---- contestants: each makes a function that fits, and one that transforms points with its result ----


def of_call(kind, source, target):
    columns = [np.ascontiguousarray(points[:, axis]) for points in (source, target) for axis in (0, 1)]
    requested = MethodUsed[kind.upper()]
    return (lambda: CalcCoefs(*columns, True, requested)[1]), by_coefficients


def by_coefficients(coefs, points):
    x, y = points.T
    w = coefs.g * x + coefs.h * y + 1
    return np.column_stack([(coefs.a * x + coefs.b * y + coefs.c) / w, (coefs.d * x + coefs.e * y + coefs.f) / w])


def of_fit(kind, source, target):
    return (lambda: nuv1math.fit(source, target, kind)), lambda fit, points: fit(points)


def of_skimage(kind, source, target):
    if kind != "conformal" and len(source) > 1000:
        return None  # its singular value decomposition takes 32 n^2 bytes
    name = {"conformal": "similarity", "affine": "affine", "omographic": "projective"}[kind]
    return (lambda: estimate_transform(name, source, target)), lambda transform, points: transform(points)


def of_opencv(kind, source, target):
    if kind == "conformal":
        return (lambda: cv2.estimateAffinePartial2D(source, target, **RANSAC)[0]), by_matrix
    if len(source) == 3:
        triangles = source.astype(np.float32), target.astype(np.float32)
        return (lambda: cv2.getAffineTransform(*triangles)), by_matrix
    if kind == "affine":
        return (lambda: cv2.estimateAffine2D(source, target, **RANSAC)[0]), by_matrix
    if len(source) == 4:
        quadrangles = source.astype(np.float32), target.astype(np.float32)
        return (lambda: cv2.getPerspectiveTransform(*quadrangles)), by_matrix
    return (lambda: cv2.findHomography(source, target, 0)[0]), by_matrix


def by_matrix(matrix, points):
    x, y, *w = matrix @ np.column_stack([points, np.ones(len(points))]).T
    return np.column_stack([x, y]) / (w[0][:, None] if w else 1)


def of_lstsq(kind, source, target):
    return {"conformal": similarity_by_lstsq, "affine": affine_by_lstsq,
            "omographic": projective_by_lstsq}[kind](source, target), by_matrix


def similarity_by_lstsq(source, target):
    def solve():
        design = np.zeros((2, len(source), 4))
        design[0, :, 0] = design[1, :, 1] = source[:, 0]
        design[1, :, 0] = source[:, 1]
        design[0, :, 1] = -source[:, 1]
        design[0, :, 2] = design[1, :, 3] = 1
        a, b, tx, ty = np.linalg.lstsq(design.reshape(-1, 4), target.T.ravel(), rcond=None)[0]
        return np.array([[a, -b, tx], [b, a, ty]])

    return solve


def affine_by_lstsq(source, target):
    return lambda: np.linalg.lstsq(np.column_stack([source, np.ones(len(source))]), target, rcond=None)[0].T


def projective_by_lstsq(source, target):
    def solve():
        design = np.zeros((2, len(source), 8))
        design[0, :, 0:2] = design[1, :, 3:5] = source
        design[0, :, 2] = design[1, :, 5] = 1
        design[:, :, 6:8] = -source * target.T[:, :, None]
        solution = np.linalg.lstsq(design.reshape(-1, 8), target.T.ravel(), rcond=None)[0]
        return np.append(solution, 1).reshape(3, 3)

    return solve


CONTESTANTS = {
    "`CalcCoefs`": of_call,
    "`fit`, with its judgement": of_fit,
    "scikit-image `estimate_transform`": of_skimage,
    "OpenCV": of_opencv,
    "`numpy.linalg.lstsq`": of_lstsq,
}


# ---- measuring ----


def time_of(function):
    """Seconds of one call: the least of seven runs of 10 ms or more."""
    function()
    timer = timeit.Timer(function)
    number = 1
    while timer.timeit(number) < 0.01:
        number *= 2
    return min(timer.repeat(7, number)) / number


def error_of(make, kind, count, offset):
    """The greatest error of a coordinate of a transformed control point; None if there is no result."""
    source, target = exact_points(kind, count)
    made = make(kind, source + offset, target + offset)
    result = made and made[0]()
    if result is None:
        return None
    computed = made[1](result, source + offset)
    errors = [abs(fractions.Fraction(value) - offset - image) for row, images in
              zip(computed.tolist(), exact_images(TRUTH[kind], source)) for value, image in zip(row, images)
              if np.isfinite(value)]
    return float(max(errors)) if len(errors) == 2 * count else float("inf")


def speed():
    return {kind: {name: {count: made and time_of(made[0]) for count in SIZES[kind]
                          for made in [make(kind, *exact_points(kind, count))]}
                   for name, make in CONTESTANTS.items()} for kind in KINDS}


def accuracy():
    return {kind: {name: {offset: error_of(make, kind, 10, offset) for offset in OFFSETS}
                   for name, make in CONTESTANTS.items()} for kind in KINDS}


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as lines:
        return next((line.split(": ")[1].strip() for line in lines if line.startswith("model name")), "an unnamed one")


def main():
    cv2.setNumThreads(1)
    versions = {"Python": platform.python_version(), "numpy": np.__version__, "scikit-image": skimage.__version__,
                "OpenCV": cv2.__version__}
    print(json.dumps({"processor": processor(), "versions": versions, "accuracy": accuracy(), "speed": speed()}))


if __name__ == "__main__":
    main()
