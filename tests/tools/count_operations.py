#!/usr/bin/env python3
# count_operations.py: the double operations that the roots of a polynomial require, counted in the exact reference.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT
"""Counts the double operations of the roots of a polynomial.

The number of iterations depends on the coefficients, so no formula gives the number of operations. The reference
performs the same operations as the library in exact arithmetic, and this script counts them. It counts more comparisons
than the library makes: the reference repeats some, and the library replaces some by tests of bits.

    python3 count_operations.py 1e-6 1 -3 2        tolerance, then the coefficients, the highest power first
"""

import sys
from collections import Counter

import reference
from exactdouble import ExactDouble

KINDS = {"__add__": "add", "__sub__": "sub", "__mul__": "mul", "__truediv__": "div", "__lt__": "compare",
         "__le__": "compare", "__gt__": "compare", "__ge__": "compare", "__eq__": "compare",
         "__ne__": "compare"}
counts = Counter()


def watch(owner, name, changes):
    """At each call of the function, adds changes(arguments) to the counts."""
    original = getattr(owner, name)

    def watched(*arguments):
        counts.update(changes(arguments))
        return original(*arguments)

    setattr(owner, name, watched)


def main():
    tolerance, *coefficients = (ExactDouble.from_float(float(text)) for text in sys.argv[1:])
    for name, kind in KINDS.items():
        watch(ExactDouble, name, lambda arguments, kind=kind: {kind: 1})
    # Here a difference is a sum; in the library a product by 2 is one too.
    watch(ExactDouble, "__sub__", lambda arguments: {"add": -1})
    watch(ExactDouble, "__mul__", lambda arguments: {"mul": -1, "add": 1} if reference.TWO is arguments[1] else {})
    watch(reference, "sqrt", lambda arguments: {"sqrt": 1})
    # The library subtracts the product of the off-diagonal elements, and forms it once.
    watch(reference, "start_element", lambda arguments: {"add": -1, "sub": 1})
    watch(reference, "block_eigenvalues", lambda arguments: {"mul": -1})
    reference.polynomial_roots(len(coefficients) - 1, coefficients, tolerance)
    print(", ".join(f"{kind} {count}" for kind, count in sorted(counts.items())))


if __name__ == "__main__":
    main()
