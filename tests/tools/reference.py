# reference.py: the routines of the library over exact arithmetic, and named wrong orders of operations.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT
"""An independent statement of what each routine computes, operation by operation.

Every routine returns its results as a list: integers, ExactDouble, and None for an output that stays untouched. Inside
`with deviation(name):` the routines take the named wrong order instead. A case on which that changes a bit proves
that the library does not take it.
"""

import contextlib

from exactdouble import INFINITY, NAN, ONE, ZERO, ExactDouble, fma, fmod, sqrt, sqrt_of_parts

RET_SUCCESS = 1
RET_IMPOSSIBLE = -1
RET_INDETERMINATE = -2
METHOD_CONFORMAL, METHOD_AFFINE, METHOD_OMOGRAPHIC = range(3)

TOLERANCE = ExactDouble.from_float(1e-12)
PIVOT_SUBSTITUTE = ExactDouble.from_float(1e-14)
CONVERGED = ExactDouble.from_float(1e-8)
OMOGRAPHIC_UNKNOWNS = 8
OMOGRAPHIC_ITERATIONS = 4

DEVIATIONS = {
    "fma": "a product and the addition to an accumulator are rounded once",
    "fma-first": "of two products that are added or subtracted, the first is contracted with the operation",
    "fma-second": "of two products that are added or subtracted, the second is contracted with the operation",
    "mean-starts-at-zero": "the sum starts at +0.0 for odd counts too",
    "mean-starts-at-first": "the sum starts as the first value for even counts too",
    "mean-reversed": "the sum runs from the last value to the first",
    "mean-two-sums": "values at even and odd positions are summed apart and added at the end",
    "mean-reciprocal": "the sum is multiplied by the reciprocal of the count",
    "hypot-naive": "sqrt(a*a + b*b)",
    "hypot-rounded-once": "the exact sqrt(a^2 + b^2), rounded once, as a correctly rounded library function has it",
    "hypot-reciprocal": "the ratio is formed by the reciprocal of the greater magnitude",
    "hypot-first-divides": "the first argument is the divisor, whichever is greater",
    "period-division": "x - y*trunc(x/y) instead of the exact remainder",
    "period-half-open": "a negative multiple of the period gives 0",
    "linear-division": "both numerators are divided by the determinant",
    "linear-scaled-terms": "the coefficients are multiplied by the reciprocal before the products are formed",
    "affine-inverse-division": "every element is divided by the determinant",
    "affine-inverse-translation": "the translations come from the inverse elements: -(inv.a*c + inv.b*f)",
    "untransform-by-inverse": "the point goes through the inverse transformation",
    "conformal-inverse-recomputed": "the inverse elements come from dA and dB instead of the stored fields",
    "conformal-inverse-negated-sum": "-(dInvA*dTx + dInvB*dTy): the sign of a zero",
    "conformal-inverse-from-zero": "0 - dInvA*dTx - dInvB*dTy: the sign of a zero",
    "conformal-affine-from-zero": "d = 0 - dB: the sign of a zero",
    "fit-points-reversed": "the points are summed from the last to the first",
    "affine-fit-translation": "(tX + mX) - (a*mx + b*my)",
    "affine-fit-translation-mean-last": "(tX - a*mx - b*my) + mX",
    "affine-fit-no-deviation-sums": "the sums of deviations are taken as exactly 0",
    "conformal-fit-division": "a = Sa/S, b = Sb/S",
    "conformal-fit-separate-terms": "the two products of a point are added to the sum one after the other",
    "conformal-fit-swapped-terms": "every product is added in the order (x, y): (S + dx*dx) + dy*dy",
    "conformal-fit-translation": "dTx = mX - (a*mx + b*my)",
    "conformal-fit-translation-y": "dTy = (mY - a*my) + b*mx",
    "conformal-fit-squared-scale": "q2 = a*a + b*b instead of the square of the safe norm",
    "conformal-fit-inverse-b-division": "dInvB = -b/q2",
    "conformal-fit-inverse-a-reciprocal": "dInvA = a*(1/q2)",
    "gauss-division": "the pivot row is divided by the pivot",
    "gauss-no-pivoting": "rows are not swapped",
    "gauss-last-tie": "the last of equal magnitudes becomes the pivot",
    "gauss-zero-factor": "a row whose factor is 0 is updated too: -0.0 + 0.0 and infinities",
    "gauss-tiny-pivot": "a pivot within the degeneracy tolerance is replaced, not only an exact 0",
    "upper-ascending": "the products of the back substitution are summed from the diagonal outwards",
    "upper-reciprocal": "the back substitution multiplies by the reciprocal of the diagonal",
    "upper-one-by-one": "the products are subtracted from the right-hand side one by one",
    "max-last-tie": "the last of equal magnitudes wins",
    "max-signed": "the greatest value instead of the greatest magnitude",
    "max-skips-nan": "a NaN in front is passed over",
    "sparse-descending": "the entries are taken from the last to the first",
    "sparse-repeated-twice": "a repeated index receives the product of its two values twice",
    "cholesky-diagonal-ascending": "the squares are subtracted from the first column on",
    "cholesky-diagonal-sum": "the squares are summed and subtracted at once",
    "cholesky-column-division": "the column is divided by the diagonal",
    "cholesky-column-descending": "the products of the column are subtracted from the last on",
    "solve-reciprocal": "both substitutions multiply by the reciprocal of the diagonal",
    "solve-forward-descending": "the forward substitution subtracts from the diagonal backwards",
    "solve-backward-ascending": "the backward substitution subtracts from the diagonal downwards",
    "solve-sum-first": "the products are summed and subtracted at once",
    "omographic-squared-reciprocal": "iW2 = iW*iW instead of 1/(W*W)",
    "omographic-product-regrouped": "x*(iW2*U) instead of (x*iW2)*U",
    "omographic-residual-division": "X - U/W instead of X - iW*U",
    "omographic-row-division": "x/W instead of x*iW",
    "omographic-sum-regrouped": "x*dA + (y*dB + dC)",
    "omographic-rows-swapped": "the Y row of a point is accumulated before its X row",
    "omographic-fifth-iteration": "one iteration more",
    "omographic-third-iteration": "one iteration less",
    "selection-mirrors-source": "the source's second axis is mirrored instead of the target's: the sign of zeros",
}

_active = None


@contextlib.contextmanager
def deviation(name):
    global _active
    assert name in DEVIATIONS, name
    _active = name
    try:
        yield
    finally:
        _active = None


def deviates(name):
    return _active == name


def multiplied_onto(total, first, second):
    """first*second + total."""
    return fma(first, second, total) if deviates("fma") else first * second + total


def multiplied_off(total, first, second):
    """total - first*second."""
    return fma(-first, second, total) if deviates("fma") else total - first * second


def sum_of_products(first, second, third, fourth):
    """first*second + third*fourth."""
    if deviates("fma-first"):
        return fma(first, second, third * fourth)
    if deviates("fma-second"):
        return fma(third, fourth, first * second)
    return first * second + third * fourth


def difference_of_products(first, second, third, fourth):
    """first*second - third*fourth."""
    return sum_of_products(first, second, -third, fourth)


def is_negligible(value):
    return value >= -TOLERANCE and value <= TOLERANCE


def in_order(items, deviant):
    """The items, reversed under the named deviation."""
    return reversed(items) if deviates(deviant) else items


# --- Scalar helpers ----------------------------------------------------------------------------------------------


def calc_mean(values):
    count = len(values)
    if count == 0:
        return ZERO
    divisor = ExactDouble.from_int(count)
    if deviates("mean-two-sums"):
        return (plain_sum(values[0::2]) + plain_sum(values[1::2])) / divisor
    values = list(in_order(values, "mean-reversed"))
    first = count % 2 == 1 and not deviates("mean-starts-at-zero") or deviates("mean-starts-at-first")
    total = values.pop(0) if first else ZERO
    for value in values:
        total = value + total
    return total * (ONE / divisor) if deviates("mean-reciprocal") else total / divisor


def plain_sum(values):
    total = ZERO
    for value in values:
        total = value + total
    return total


def calc_hypot(first, second):
    p = first if first >= ZERO else -first
    q = second if second >= ZERO else -second
    if deviates("hypot-naive"):
        return sqrt(p * p + q * q)
    if deviates("hypot-rounded-once"):
        return rounded_norm(p, q)
    if p > q or deviates("hypot-first-divides"):
        if p != ZERO:
            return scaled_norm(q, p)
    elif q != ZERO:
        return scaled_norm(p, q)
    return ZERO


def scaled_norm(lesser, greater):
    ratio = lesser * (ONE / greater) if deviates("hypot-reciprocal") else lesser / greater
    return sqrt(multiplied_onto(ONE, ratio, ratio)) * greater


def rounded_norm(p, q):
    if not p.is_finite() or not q.is_finite():
        return p + q
    exponent = min(p.exponent, q.exponent)
    exact = (p.mantissa << (p.exponent - exponent)) ** 2 + (q.mantissa << (q.exponent - exponent)) ** 2
    return sqrt_of_parts(exact, 2 * exponent) if exact else ZERO


def reduce_to_period(value, period):
    assert period > ZERO
    remainder = remainder_by_division if deviates("period-division") else fmod
    if value >= ZERO:
        return remainder(value, period)
    rest = remainder(-value, period)
    return rest if deviates("period-half-open") and rest == ZERO else period - rest


def remainder_by_division(value, period):
    quotient = value / period
    if not quotient.is_finite():
        return NAN
    whole = quotient - fmod(quotient, ONE)
    return value - whole * period


# --- Two-unknown system and affine record ------------------------------------------------------------------------


def roots(a11, a12, a21, a22, b1, b2):
    det = difference_of_products(a11, a22, a12, a21)
    if is_negligible(det):
        numerator = difference_of_products(a22, b1, a12, b2)
        return [RET_INDETERMINATE if is_negligible(numerator) else RET_IMPOSSIBLE, None, None]
    r = ONE / det
    if deviates("linear-scaled-terms"):
        return [RET_SUCCESS, (a22 * r) * b1 - (a12 * r) * b2, (a11 * r) * b2 - (a21 * r) * b1]
    x = difference_of_products(a22, b1, a12, b2)
    y = difference_of_products(a11, b2, a21, b1)
    if deviates("linear-division"):
        return [RET_SUCCESS, x / det, y / det]
    return [RET_SUCCESS, x * r, y * r]


def affine_coefs_to_inv_coefs(a, b, c, d, e, f):
    det = difference_of_products(a, e, d, b)
    if is_negligible(det):
        return [RET_IMPOSSIBLE] + [None] * 6
    r = ONE / det
    x = difference_of_products(f, b, e, c)
    y = difference_of_products(d, c, f, a)
    if deviates("affine-inverse-division"):
        return [RET_SUCCESS, e / det, -(b / det), x / det, -(d / det), a / det, y / det]
    inverse = [r * e, -(b * r), x * r, -(d * r), a * r, y * r]
    if deviates("affine-inverse-translation"):
        inverse[2] = -(inverse[0] * c + inverse[1] * f)
        inverse[5] = -(inverse[3] * c + inverse[4] * f)
    return [RET_SUCCESS] + inverse


def affine_untransform(a, b, c, d, e, f, target_x, target_y):
    """None when the call would end the process."""
    if deviates("untransform-by-inverse"):
        result, *inverse = affine_coefs_to_inv_coefs(a, b, c, d, e, f)
        if result == RET_SUCCESS:
            return [
                inverse[0] * target_x + inverse[1] * target_y + inverse[2],
                inverse[3] * target_x + inverse[4] * target_y + inverse[5],
            ]
    result, x, y = roots(a, b, d, e, target_x - c, target_y - f)
    if result == RET_IMPOSSIBLE:
        return None
    return [ZERO, ZERO] if result == RET_INDETERMINATE else [x, y]


# --- Conformal record --------------------------------------------------------------------------------------------


def conformal_coefs_to_inv_coefs(a, b, tx, ty, inv_a, inv_b):
    if deviates("conformal-inverse-recomputed"):
        square = a * a + b * b
        inv_a, inv_b = a / square, -(b / square)
    if deviates("conformal-inverse-negated-sum"):
        inv_tx = -(inv_a * tx + inv_b * ty)
    elif deviates("conformal-inverse-from-zero"):
        inv_tx = ZERO - inv_a * tx - inv_b * ty
    else:
        inv_tx = difference_of_products(-inv_a, tx, inv_b, ty)
    inv_ty = difference_of_products(inv_b, tx, inv_a, ty)
    return [inv_a, inv_b, inv_tx, inv_ty, a, b]


def conformal_coefs_to_affine_coefs(a, b, tx, ty, inv_a, inv_b):
    return [a, b, tx, ZERO - b if deviates("conformal-affine-from-zero") else -b, a, ty]


def affine_coefs_to_omographic_coefs(a, b, c, d, e, f):
    return [a, b, c, d, e, f, ZERO, ZERO]


# --- Gaussian elimination ----------------------------------------------------------------------------------------


def max_abs_index(count, values, stride):
    if count < 1:
        return 0
    greatest = None
    position = 0
    for i in range(count):
        value = values[i * stride]
        if not deviates("max-signed"):
            value = abs(value)
        if i == 0 or greatest.is_nan() and deviates("max-skips-nan"):
            greatest, position = value, i
        elif value > greatest or value == greatest and (deviates("max-last-tie") or deviates("gauss-last-tie")):
            greatest, position = value, i
    return position


def solve_upper_tri(n, u, ldu, b, incb, incx):
    """The result and all (2n - 1)*incx elements that x must have room for."""
    x = [None] * max(0, (2 * n - 1) * incx)
    for i in range(n - 1, -1, -1):
        value = b[i * incb]
        if i < n - 1:
            value = substituted(value, [(u[j * ldu + i], x[j * incx]) for j in range(n - 1, i, -1)])
        diagonal = u[i * ldu + i]
        if diagonal != ZERO:
            x[i * incx] = value * (ONE / diagonal) if deviates("upper-reciprocal") else value / diagonal
        elif is_negligible(value):
            x[i * incx] = ZERO
        else:
            for k in range(n):
                x[(n - 1 + k) * incx] = INFINITY
            return [0, x]
    return [1, x]


def substituted(value, factors):
    if deviates("upper-one-by-one"):
        for first, second in factors:
            value = value - first * second
        return value
    total = ZERO
    for first, second in in_order(factors, "upper-ascending"):
        total = multiplied_onto(total, first, second)
    return value - total


def solve_gauss(n, nrhs, a, lda, b, ldb, ldx):
    """The result, A, B and all ldx*nrhs elements of X."""
    a, b = list(a), list(b)
    for k in range(n):
        pivot = max_abs_index(n - k, a[k * lda + k :], 1)
        if pivot != 0 and not deviates("gauss-no-pivoting"):
            swap_rows(a, k, k + pivot, [j * lda for j in range(k, n)])
            swap_rows(b, k, k + pivot, [j * ldb for j in range(nrhs)])
        eliminate(n, nrhs, a, lda, b, ldb, k)
    x = [None] * max(0, ldx * nrhs)
    result = 1
    for j in range(nrhs if n > 0 else 0):
        result, column = solve_upper_tri(n, a, lda, b[j * ldb :], 1, 1)
        x[j * ldx : j * ldx + n] = column[:n]
        if result == 0:
            break
    return [result, a, b, x]


def swap_rows(matrix, row1, row2, columns):
    for start in columns:
        matrix[start + row1], matrix[start + row2] = matrix[start + row2], matrix[start + row1]


def eliminate(n, nrhs, a, lda, b, ldb, k):
    diagonal = k * lda + k
    if a[diagonal] == ZERO or deviates("gauss-tiny-pivot") and is_negligible(a[diagonal]):
        a[diagonal] = PIVOT_SUBSTITUTE
    pivot = a[diagonal]
    r = ONE / pivot
    a[diagonal] = ONE
    rows = [(a, j * lda) for j in range(k + 1, n)] + [(b, j * ldb) for j in range(nrhs)]
    if r != ONE:
        for matrix, start in rows:
            if deviates("gauss-division"):
                matrix[start + k] = matrix[start + k] / pivot
            else:
                matrix[start + k] = matrix[start + k] * r
    for i in range(k + 1, n):
        g = -a[k * lda + i]
        a[k * lda + i] = ZERO
        if g != ZERO or deviates("gauss-zero-factor"):
            for matrix, start in rows:
                matrix[start + i] = multiplied_onto(matrix[start + i], matrix[start + k], g)


# --- Affine and conformal fits -----------------------------------------------------------------------------------


def centred(points, means):
    order = in_order(list(zip(*points)), "fit-points-reversed")
    return [[coordinate - mean for coordinate, mean in zip(point, means)] for point in order]


def calc_affine_coefs(n, *points):
    """The points are x, y, X, Y."""
    if n < 3:
        return [RET_IMPOSSIBLE] + [None] * 6
    means = [calc_mean(values) for values in points]
    zeros = [ZERO] * 11
    suu, suv, svv, su, sv, sxu, sxv, sx, syu, syv, sy = zeros
    for u, v, x, y in centred(points, means):
        suu, suv, svv = multiplied_onto(suu, u, u), multiplied_onto(suv, v, u), multiplied_onto(svv, v, v)
        sxu, sxv = multiplied_onto(sxu, x, u), multiplied_onto(sxv, x, v)
        syu, syv = multiplied_onto(syu, y, u), multiplied_onto(syv, y, v)
        su, sv, sx, sy = u + su, v + sv, x + sx, y + sy
    if deviates("affine-fit-no-deviation-sums"):
        su = sv = sx = sy = ZERO
    matrix = [suu, suv, su, suv, svv, sv, su, sv, ExactDouble.from_int(n)]
    result, _, _, solution = solve_gauss(3, 2, matrix, 3, [sxu, sxv, sx, syu, syv, sy], 3, 3)
    if result == 0:
        return [RET_IMPOSSIBLE] + [None] * 6
    a, b, tx, d, e, ty = solution
    c = affine_translation(tx, means[2], a, b, means)
    f = affine_translation(ty, means[3], d, e, means)
    return [RET_SUCCESS, a, b, c, d, e, f]


def affine_translation(translation, mean, a, b, means):
    if deviates("affine-fit-translation"):
        return (translation + mean) - (a * means[0] + b * means[1])
    if deviates("affine-fit-translation-mean-last"):
        return (translation - a * means[0] - b * means[1]) + mean
    return multiplied_off(multiplied_off(translation + mean, a, means[0]), b, means[1])


def calc_conformal_coefs(n, rigid_inverse, *points):
    """The points are x, y, X, Y."""
    if n < 2:
        return [RET_IMPOSSIBLE] + [None] * 6
    means = [calc_mean(values) for values in points]
    mean_x, mean_y, mean_xa, mean_ya = means
    s, sa, sb = ZERO, ZERO, ZERO
    for x, y, xa, ya in centred(points, means):
        s = term_added(s, y, y, x, x)
        sa = term_added(sa, ya, y, xa, x)
        sb = term_added(sb, xa, y, -ya, x)
    if is_negligible(s):
        return [RET_IMPOSSIBLE] + [None] * 6
    r = ONE / s
    a, b = (sa / s, sb / s) if deviates("conformal-fit-division") else (r * sa, r * sb)
    if deviates("conformal-fit-translation"):
        tx = mean_xa - (a * mean_x + b * mean_y)
    else:
        tx = multiplied_off(multiplied_off(mean_xa, a, mean_x), b, mean_y)
    if deviates("conformal-fit-translation-y"):
        ty = (mean_ya - a * mean_y) + b * mean_x
    else:
        ty = multiplied_off(multiplied_onto(mean_ya, b, mean_x), a, mean_y)
    inv_a, inv_b = conformal_inverse(a, b, rigid_inverse)
    return [RET_SUCCESS, a, b, tx, ty, inv_a, inv_b]


def term_added(total, first, second, third, fourth):
    """(first*second + third*fourth) + total."""
    if deviates("conformal-fit-separate-terms"):
        return third * fourth + (first * second + total)
    if deviates("conformal-fit-swapped-terms"):
        return first * second + (third * fourth + total)
    return sum_of_products(first, second, third, fourth) + total


def conformal_inverse(a, b, rigid_inverse):
    q = calc_hypot(a, b)
    q2 = a * a + b * b if deviates("conformal-fit-squared-scale") else q * q
    if rigid_inverse:
        return a, -b
    inv_a = a * (ONE / q2) if deviates("conformal-fit-inverse-a-reciprocal") else a / q2
    inv_b = -b / q2 if deviates("conformal-fit-inverse-b-division") else (-ONE / q2) * b
    return inv_a, inv_b


# --- Packed normal equations -------------------------------------------------------------------------------------


def packed(row, column):
    return row * (row + 1) // 2 + column


def update_dense(n, matrix, vector, row, value):
    matrix, vector = list(matrix), list(vector)
    for i in range(n):
        for j in range(i + 1):
            matrix[packed(i, j)] = multiplied_onto(matrix[packed(i, j)], row[i], row[j])
        vector[i] = multiplied_onto(vector[i], row[i], value)
    return [matrix, vector]


def update_sparse(n, matrix, vector, count, values, indices, value):
    matrix, vector = list(matrix), list(vector)
    for p in in_order(range(count), "sparse-descending"):
        row = indices[p]
        if row < 0:
            continue
        for q in in_order(range(p + 1), "sparse-descending"):
            column = indices[q]
            if column < 0:
                continue
            element = packed(max(row, column), min(row, column))
            matrix[element] = multiplied_onto(matrix[element], values[p], values[q])
            if deviates("sparse-repeated-twice") and p != q and row == column:
                matrix[element] = multiplied_onto(matrix[element], values[p], values[q])
        vector[row] = multiplied_onto(vector[row], values[p], value)
    return [matrix, vector]


def cholesky_low_tri(n, matrix):
    matrix = list(matrix)
    for i in range(n):
        s = cholesky_radicand(matrix, i)
        if not s >= ZERO:
            return [0, matrix]
        diagonal = sqrt(s)
        matrix[packed(i, i)] = diagonal
        if i == n - 1:
            break
        r = ONE / diagonal
        for j in range(i + 1, n):
            t = matrix[packed(j, i)]
            for k in in_order(range(i), "cholesky-column-descending"):
                t = multiplied_off(t, matrix[packed(j, k)], matrix[packed(i, k)])
            matrix[packed(j, i)] = t / diagonal if deviates("cholesky-column-division") else r * t
    return [1, matrix]


def cholesky_radicand(matrix, i):
    elements = [matrix[packed(i, k)] for k in range(i - 1, -1, -1)]
    if deviates("cholesky-diagonal-sum"):
        return matrix[packed(i, i)] - plain_sum([element * element for element in elements])
    s = matrix[packed(i, i)]
    for element in in_order(elements, "cholesky-diagonal-ascending"):
        s = multiplied_off(s, element, element)
    return s


def solve_chol_low_tri(n, factor, vector):
    x = list(vector)
    for i in range(n):
        terms = [(factor[packed(i, k)], x[k]) for k in range(i)]
        x[i] = substituted_packed(x[i], in_order(terms, "solve-forward-descending"), factor[packed(i, i)])
    for i in range(n - 1, -1, -1):
        terms = [(factor[packed(k, i)], x[k]) for k in range(n - 1, i, -1)]
        x[i] = substituted_packed(x[i], in_order(terms, "solve-backward-ascending"), factor[packed(i, i)])
    return x


def substituted_packed(value, terms, diagonal):
    if deviates("solve-sum-first"):
        value = value - plain_sum([first * second for first, second in terms])
    else:
        for first, second in terms:
            value = multiplied_off(value, first, second)
    return value * (ONE / diagonal) if deviates("solve-reciprocal") else value / diagonal


# --- Omographic fit and selection --------------------------------------------------------------------------------


def calc_omographic_coefs(n, *points):
    """The points are x, y, X, Y."""
    if n < 4:
        return [RET_INDETERMINATE] + [None] * OMOGRAPHIC_UNKNOWNS
    points = list(in_order(list(zip(*points)), "fit-points-reversed"))
    matrix, params = normal_equations(linear_rows(point) for point in points)
    positive, factor = cholesky_low_tri(OMOGRAPHIC_UNKNOWNS, matrix)
    if not positive:
        return [RET_INDETERMINATE] + params
    params = solve_chol_low_tri(OMOGRAPHIC_UNKNOWNS, factor, params)
    iterations = OMOGRAPHIC_ITERATIONS + deviates("omographic-fifth-iteration") - deviates("omographic-third-iteration")
    for _ in range(iterations):
        matrix, right_side = normal_equations(refinement_rows(point, params) for point in points)
        positive, factor = cholesky_low_tri(OMOGRAPHIC_UNKNOWNS, matrix)
        if not positive:
            break
        corrections = solve_chol_low_tri(OMOGRAPHIC_UNKNOWNS, factor, right_side)
        greatest = ZERO
        for j, correction in enumerate(corrections):
            params[j] = params[j] + correction
            if abs(correction) > greatest:
                greatest = abs(correction)
        if greatest < CONVERGED:
            break
    return [RET_SUCCESS] + params


def normal_equations(observations):
    matrix = [ZERO] * packed(OMOGRAPHIC_UNKNOWNS, 0)
    vector = [ZERO] * OMOGRAPHIC_UNKNOWNS
    for rows in observations:
        for row, value in in_order(rows, "omographic-rows-swapped"):
            matrix, vector = update_dense(OMOGRAPHIC_UNKNOWNS, matrix, vector, row, value)
    return matrix, vector


def linear_rows(point):
    x, y, xa, ya = point
    row_x = [x, y, ONE, ZERO, ZERO, ZERO, -(xa * x), -(xa * y)]
    row_y = [ZERO, ZERO, ZERO, x, y, ONE, -(ya * x), -(ya * y)]
    return [(row_x, xa), (row_y, ya)]


def refinement_rows(point, params):
    x, y, xa, ya = point
    a, b, c, d, e, f, g, h = params
    u, v, w = (linear_form(x, y, *coefs) for coefs in ((a, b, c), (d, e, f), (g, h, ONE)))
    iw = ONE / w
    iw2 = iw * iw if deviates("omographic-squared-reciprocal") else ONE / (w * w)
    row_x, row_y, row_1 = (x / w, y / w, iw) if deviates("omographic-row-division") else (x * iw, y * iw, iw)
    rows = []
    for numerator, target, offset in ((u, xa, 0), (v, ya, 3)):
        row = [ZERO] * OMOGRAPHIC_UNKNOWNS
        row[offset : offset + 3] = row_x, row_y, row_1
        if deviates("omographic-product-regrouped"):
            row[6], row[7] = -(x * (iw2 * numerator)), -(y * (iw2 * numerator))
        else:
            row[6], row[7] = -((x * iw2) * numerator), -((y * iw2) * numerator)
        if deviates("omographic-residual-division"):
            rows.append((row, target - numerator / w))
        else:
            rows.append((row, multiplied_off(target, iw, numerator)))
    return rows


def linear_form(x, y, a, b, c):
    if deviates("omographic-sum-regrouped"):
        return x * a + (y * b + c)
    return sum_of_products(x, a, y, b) + c


def calc_coefs(n, same_orientation, requested, *points):
    """The result, the kind used and the eight parameters. The points are x, y, X, Y."""
    params = [None] * OMOGRAPHIC_UNKNOWNS
    if n < 2:
        return [0, None] + params
    if n >= 4 and requested == METHOD_OMOGRAPHIC:
        result, *params = calc_omographic_coefs(n, *points)
        if result == RET_SUCCESS and all(param.is_finite() for param in params):
            return [1, METHOD_OMOGRAPHIC] + params
    if n >= 3 and requested in (METHOD_OMOGRAPHIC, METHOD_AFFINE):
        result, *coefs = calc_affine_coefs(n, *points)
        if result == RET_SUCCESS and affine_is_usable(*coefs):
            return [1, METHOD_AFFINE] + affine_coefs_to_omographic_coefs(*coefs)
    return conformal_selection(n, same_orientation, points, params)


def affine_is_usable(a, b, c, d, e, f):
    det = difference_of_products(e, a, d, b)
    return not (det <= TOLERANCE and not det < -TOLERANCE)


def conformal_selection(n, same_orientation, points, params):
    x, y, xa, ya = points
    mirrors_source = not same_orientation and deviates("selection-mirrors-source")
    if mirrors_source:
        y = [-value for value in y]
    elif not same_orientation:
        ya = [-value for value in ya]
    result, a, b, tx, ty, _, _ = calc_conformal_coefs(n, 0, x, y, xa, ya)
    if result != RET_SUCCESS:
        return [0, None] + params
    if mirrors_source:
        return [1, METHOD_CONFORMAL, a, -b, tx, -b, -a, ty, ZERO, ZERO]
    if same_orientation:
        return [1, METHOD_CONFORMAL, a, b, tx, -b, a, ty, ZERO, ZERO]
    return [1, METHOD_CONFORMAL, a, b, tx, b, -a, -ty, ZERO, ZERO]
