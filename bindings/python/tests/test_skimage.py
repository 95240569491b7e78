"""test_skimage.py: the object of `fit` where scikit-image takes a transformation.

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import numpy as np
import pytest

import nuv1math

transform = pytest.importorskip("skimage.transform")

SOURCE = np.array([[3, 4], [60, 7], [55, 44], [8, 40], [30, 21], [45, 30]], dtype=float)
OTHER = np.array([[0, 0], [63.5, 2.25], [58, 47], [2, 41], [28.5, 20], [46.25, 30.75]])
NAMES = {"conformal": "similarity", "affine": "affine", "omographic": "projective"}


def image():
    y, x = np.mgrid[:48, :64]
    return 0.5 + 0.3 * np.sin(x / 5) * np.cos(y / 4) + 0.002 * x


@pytest.mark.parametrize("kind", NAMES)
@pytest.mark.parametrize("way", ["there", "back"])
def test_warp_gives_the_image_of_its_own_transformation(kind, way):
    fit = nuv1math.fit(SOURCE, OTHER, kind)
    same = transform.ProjectiveTransform(fit.params)
    ours, theirs = (fit, same) if way == "there" else (fit.inverse, transform.ProjectiveTransform(fit.inverse.params))
    warped, expected = (transform.warp(image(), way_of, order=1, mode="edge") for way_of in (ours, theirs))
    np.testing.assert_allclose(warped, expected, atol=1e-9)
    assert abs(warped - image()).max() > 0.01


@pytest.mark.parametrize("kind", NAMES)
def test_the_methods_give_what_those_of_scikit_image_give(kind):
    fit = nuv1math.fit(SOURCE, OTHER, kind)
    theirs = transform.ProjectiveTransform(fit.params)
    np.testing.assert_allclose(fit(SOURCE), theirs(SOURCE), atol=1e-10)
    np.testing.assert_allclose(fit.inverse(OTHER), np.asarray(inverse_of(theirs)(OTHER)), atol=1e-9)
    np.testing.assert_allclose(fit.residuals(SOURCE, OTHER), theirs.residuals(SOURCE, OTHER), atol=1e-10)


def inverse_of(transformation):
    """A method in some versions of scikit-image, and a transformation in others: both can be called."""
    return transformation.inverse


@pytest.mark.parametrize("kind", NAMES)
def test_a_fit_without_errors_is_theirs(kind):
    exact = nuv1math.fit(SOURCE, OTHER, kind)(SOURCE)
    theirs = transform.estimate_transform(NAMES[kind], SOURCE, exact)
    np.testing.assert_allclose(nuv1math.fit(SOURCE, exact, kind).params, theirs.params, atol=1e-8)


@pytest.mark.parametrize("kind", NAMES)
def test_the_sum_of_squares_is_not_greater_than_theirs(kind):
    theirs = transform.estimate_transform(NAMES[kind], SOURCE, OTHER).residuals(SOURCE, OTHER)
    ours = nuv1math.fit(SOURCE, OTHER, kind).residuals(SOURCE, OTHER)
    assert (ours**2).sum() <= (theirs**2).sum() * (1 + 1e-9)


def test_a_similarity_has_their_scale_and_rotation():
    theirs = transform.estimate_transform("similarity", SOURCE, OTHER)
    ours = nuv1math.fit(SOURCE, OTHER, "conformal").parameters
    assert ours.sx == pytest.approx(theirs.scale)
    assert np.exp(1j * ours.rotation) == pytest.approx(np.exp(1j * theirs.rotation))
