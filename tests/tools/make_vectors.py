#!/usr/bin/env python3
# make_vectors.py: writes the tables of exact test vectors, one per routine, into tests/data.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT
"""Writes the tables of exact test vectors.

    python3 make_vectors.py            writes tests/data/*.txt
    python3 make_vectors.py --check    makes them anew and fails if a file differs from the one that is there

Format. A line that starts with # is a comment on the next case. Every other line is one case:

    input input ... | output output ...

Single blanks separate the tokens, which have the order of the routine's arguments. Arrays are given element by
element, and the counts before them give their length. The result code, if there is one, is the first output. Whole
numbers are decimal, doubles hexadecimal (0x1.8p+1, inf, -inf, nan). An output '-' must not be written. Arrays that are
changed in place are inputs with their contents before the call, and outputs with their contents after it.

Sections. friendly: small numbers and text-book cases; random; near-singular: at the tolerances and close to
degeneracy; special: zeros, infinities, NaN, subnormal and greatest numbers; order: inputs on which a named wrong order
of operations (reference.DEVIATIONS) gives other bits than the right one, at least three for each routine and order.
"""

from tables.cholesky import (
    table_cholesky,
    table_dense_cholesky,
    table_dense_solve,
    table_solve,
    table_update_dense,
    table_update_sparse,
)
from tables.eigenvalues import table_balance, table_eigenvalues, table_reduce
from tables.files import write_or_check
from tables.fits import table_affine_fit, table_conformal_fit, table_omographic_fit, table_selection
from tables.gauss import table_gauss, table_max_abs, table_upper
from tables.polynomials import table_polynomials
from tables.records import (
    table_affine_inverse,
    table_affine_omographic,
    table_conformal_affine,
    table_conformal_inverse,
    table_roots,
    table_untransform,
)
from tables.scalars import table_hypot, table_mean, table_period

TABLES = [
    table_mean,
    table_hypot,
    table_period,
    table_roots,
    table_affine_inverse,
    table_untransform,
    table_conformal_inverse,
    table_conformal_affine,
    table_affine_omographic,
    table_max_abs,
    table_upper,
    table_gauss,
    table_affine_fit,
    table_conformal_fit,
    table_update_dense,
    table_update_sparse,
    table_cholesky,
    table_solve,
    table_dense_cholesky,
    table_dense_solve,
    table_balance,
    table_reduce,
    table_eigenvalues,
    table_polynomials,
    table_omographic_fit,
    table_selection,
]


def files():
    for make in TABLES:
        table = make()
        yield (f"{table.name}.txt", table.text(),
               f"{len(table.lines) // 2} cases, {len(set(table.deviations))} wrong orders told apart")


if __name__ == "__main__":
    write_or_check(__doc__.splitlines()[0], files())
