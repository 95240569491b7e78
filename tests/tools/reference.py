# reference.py: the routines of the library over exact arithmetic, and named wrong orders of operations.
# Copyright (c) 2026 the nuv1math authors
# SPDX-License-Identifier: MIT
"""An independent implementation of each routine, operation by operation.

Every routine returns its results as a list: integers, ExactDouble, and None for an output that is not written. Inside
`with deviation(name):` the routines use the named wrong order instead. If that changes a bit of a case, the case proves
that the library does not use that order.
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
EPSILON, QUARTER, HALF, THREE_QUARTERS, TWO, FOUR, BALANCE_GAIN, EXCEPTIONAL_PRODUCT = (
    ExactDouble.from_float(value) for value in (2.0**-52, 0.25, 0.5, 0.75, 2.0, 4.0, 0.95, -0.4375)
)
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
    "solve-backward-descending": "the backward substitution subtracts from the last row upwards",
    "balance-division-threshold": "(cs + rs)/s < 0.95 instead of (cs + rs) < 0.95*s",
    "balance-threshold-inclusive": "a factor that reaches 0.95 of the norm exactly is applied too",
    "balance-sums-descending": "the norms are summed from the last element to the first",
    "balance-diagonal-included": "the norms include the diagonal",
    "balance-single-pass": "one pass only",
    "balance-doubles-at-equality": "the factor is doubled when the column equals half the row too",
    "balance-column-first": "the column is scaled before the row: a diagonal at the ends of the range",
    "balance-diagonal-kept": "the diagonal is not scaled: at the ends of the range the two scalings are not exact",
    "hessenberg-last-tie": "the last of equal magnitudes becomes the pivot",
    "hessenberg-signed-pivot": "the greatest value instead of the greatest magnitude becomes the pivot",
    "hessenberg-no-pivoting": "rows and columns are not exchanged",
    "hessenberg-swaps-multipliers": "the rows are exchanged over all columns",
    "hessenberg-reciprocal": "the multiplier is formed by the reciprocal of the pivot",
    "hessenberg-clears-multipliers": "the multipliers are replaced by 0",
    "hessenberg-rows-first": "all rows are eliminated before any column is",
    "hessenberg-zero-multiplier": "a multiplier of 0 is applied too: -0.0 + 0.0 and infinities",
    "eigen-no-norm": "without the matrix norm where both diagonal elements are 0",
    "eigen-norm-by-columns": "the norm is summed column by column",
    "eigen-epsilon": "an element of up to 2^-52 of its neighbours is negligible, not only one that changes no sum",
    "eigen-negligible-cleared": "a negligible element is replaced by 0",
    "eigen-counter-kept": "the iterations are counted through the whole matrix",
    "eigen-limit-29": "the iteration gives up after 29 steps instead of 30",
    "eigen-limit-31": "the iteration gives up after 31 steps instead of 30",
    "eigen-limit-60": "the iteration gives up after 60 steps instead of 30",
    "eigen-block-naive": "the second root of a block is x + (p - sqrt(q)) instead of x - w/z",
    "eigen-block-reciprocal": "the second root of a block is formed by the reciprocal of z",
    "eigen-block-sign-bit": "p = -0.0 counts as negative",
    "eigen-pair-swapped": "the positive imaginary part comes first",
    "eigen-shift-last": "the accumulated shift is added at the end",
    "exceptional-regrouped": "w = (-0.4375*s)*s",
    "exceptional-none": "without exceptional shifts",
    "exceptional-once": "an exceptional shift at the 10th step only",
    "exceptional-active-block": "the exceptional shift is subtracted within the active block only",
    "start-reciprocal": "p = (r*s - w)*(1/A) + A instead of (r*s - w)/A + A",
    "start-sum-first": "q = A - (z + r + s)",
    "start-division": "p, q and r are divided by their norm at the start of the double step",
    "start-norm-reversed": "|p| + (|q| + |r|)",
    "start-at-block": "the double step always starts at the top of the active block",
    "start-no-negation": "the element left of the start is not negated",
    "sweep-division": "p, q and r are divided by their norm within the sweep",
    "sweep-norm-reversed": "sqrt(p*p + (q*q + r*r))",
    "sweep-norm-ungrouped": "sqrt((p*p + r*r) + q*q)",
    "sweep-sign-bit": "p = -0.0 counts as negative",
    "sweep-factors-division": "x, y and z are p/s, q/s and r/s",
    "sweep-vector-division": "q and r are divided by p",
    "sweep-rows-regrouped": "A(k,j) + (q*A(k+1,j) + r*A(k+2,j))",
    "sweep-columns-regrouped": "x*A(i,k) + (y*A(i,k+1) + z*A(i,k+2))",
    "sweep-all-rows": "the columns are transformed down to the last row: what stands below the subdiagonal",
    "polynomial-division": "the coefficients are divided by the leading one",
    "polynomial-unbalanced": "the companion matrix is not balanced",
    "polynomial-tolerance-inclusive": "an imaginary part that equals the tolerance passes",
    "polynomial-zeros-last": "the zero roots come last",
    "polynomial-from-top": "the roots come from the bottom of the matrix upwards",
    "polynomial-unfound-are-zero": "an eigenvalue that was never found counts as a root 0",
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
    return cholesky_factor(n, matrix, packed)


def cholesky_factor(n, matrix, at):
    """For a matrix whose element (i, j), j <= i, has the index at(i, j)."""
    matrix = list(matrix)
    for i in range(n):
        s = cholesky_radicand(matrix, i, at)
        if not s >= ZERO:
            return [0, matrix]
        diagonal = sqrt(s)
        matrix[at(i, i)] = diagonal
        if i == n - 1:
            break
        r = ONE / diagonal
        for j in range(i + 1, n):
            t = matrix[at(j, i)]
            for k in in_order(range(i), "cholesky-column-descending"):
                t = multiplied_off(t, matrix[at(j, k)], matrix[at(i, k)])
            matrix[at(j, i)] = t / diagonal if deviates("cholesky-column-division") else r * t
    return [1, matrix]


def cholesky_radicand(matrix, i, at):
    elements = [matrix[at(i, k)] for k in range(i - 1, -1, -1)]
    if deviates("cholesky-diagonal-sum"):
        return matrix[at(i, i)] - plain_sum([element * element for element in elements])
    s = matrix[at(i, i)]
    for element in in_order(elements, "cholesky-diagonal-ascending"):
        s = multiplied_off(s, element, element)
    return s


def solve_chol_low_tri(n, factor, vector):
    x = list(vector)
    forward_substitution(n, factor, x, packed)
    for i in range(n - 1, -1, -1):
        terms = [(factor[packed(k, i)], x[k]) for k in range(n - 1, i, -1)]
        x[i] = substituted_packed(x[i], in_order(terms, "solve-backward-ascending"), factor[packed(i, i)])
    return x


def forward_substitution(n, factor, x, at):
    for i in range(n):
        terms = [(factor[at(i, k)], x[k]) for k in range(i)]
        x[i] = substituted_packed(x[i], in_order(terms, "solve-forward-descending"), factor[at(i, i)])


def substituted_packed(value, terms, diagonal):
    if deviates("solve-sum-first"):
        value = value - plain_sum([first * second for first, second in terms])
    else:
        for first, second in terms:
            value = multiplied_off(value, first, second)
    return value * (ONE / diagonal) if deviates("solve-reciprocal") else value / diagonal


# --- Dense Cholesky ----------------------------------------------------------------------------------------------


def dense(n):
    return lambda row, column: row * n + column


def cholesky(n, matrix):
    return cholesky_factor(n, matrix, dense(n))


def solve_chol(n, factor, vector):
    x = list(vector)
    at = dense(n)
    forward_substitution(n, factor, x, at)
    for i in range(n - 1, -1, -1):
        terms = [(factor[at(k, i)], x[k]) for k in range(i + 1, n)]
        x[i] = substituted_packed(x[i], in_order(terms, "solve-backward-descending"), factor[at(i, i)])
    return x


# --- Eigenvalues -------------------------------------------------------------------------------------------------


def matrix_rows(n, flat, stride):
    """The rows of a matrix that is stored column by column. Rows and columns are counted from 1."""
    return [None] + [[None] + [flat[j * stride + i] for j in range(n)] for i in range(n)]


def with_rows(n, flat, stride, a):
    """The flat matrix with the elements of the rows. The padding between its columns is kept."""
    flat = list(flat)
    for j in range(n):
        for i in range(n):
            flat[j * stride + i] = a[i + 1][j + 1]
    return flat


def balance_matrix(n, flat, stride):
    a = matrix_rows(n, flat, stride)
    changed = n > 0
    passes = 0
    while changed:
        changes = [balance_row(n, a, i) for i in range(1, n + 1)]
        changed = any(changes) and not deviates("balance-single-pass")
        passes += 1
        assert passes < 1000
    return with_rows(n, flat, stride, a)


def balance_row(n, a, i):
    """True when row and column i were scaled."""
    others = [j for j in range(1, n + 1) if j != i or deviates("balance-diagonal-included")]
    if deviates("balance-sums-descending"):
        others.reverse()
    cs = plain_sum([abs(a[j][i]) for j in others])
    rs = plain_sum([abs(a[i][j]) for j in others])
    if cs == ZERO or rs == ZERO:
        return False
    s = cs + rs
    f, cs = balance_factor(cs, rs)
    h = ONE / f
    if not is_worth_scaling(cs + rs, h, s):
        return False
    for first in in_order([True, False], "balance-column-first"):
        for j in range(1, n + 1):
            if j == i and deviates("balance-diagonal-kept"):
                continue
            if first:
                a[i][j] = a[i][j] * h
            else:
                a[j][i] = a[j][i] * f
    return True


def balance_factor(cs, rs):
    """A power of 2, and the sum of the column times its square."""
    f = ONE
    g = rs * HALF
    while cs < g or cs == g and deviates("balance-doubles-at-equality"):
        f = f * TWO
        cs = cs * FOUR
    g = rs * TWO
    # Halving an infinite column would never end.
    while cs > g and cs != INFINITY:
        f = f * HALF
        cs = cs * QUARTER
    return f, cs


def is_worth_scaling(total, h, s):
    if deviates("balance-division-threshold"):
        return total * h / s < BALANCE_GAIN
    scaled, limit = total * h, BALANCE_GAIN * s
    return scaled < limit or scaled == limit and deviates("balance-threshold-inclusive")


def reduce_to_hessenberg(n, flat, stride):
    a = matrix_rows(n, flat, stride)
    for m in range(2, n):
        x, p = hessenberg_pivot(n, a, m)
        if p != m and not deviates("hessenberg-no-pivoting"):
            exchange(n, a, p, m)
        if deviates("hessenberg-no-pivoting"):
            x = a[m][m - 1]
        if x != ZERO:
            rows = [i for i in range(m + 1, n + 1) if eliminate_row(n, a, m, i, x)]
            if deviates("hessenberg-rows-first"):
                for i in rows:
                    eliminate_column(n, a, m, i, a[i][m - 1])
    return with_rows(n, flat, stride, a)


def hessenberg_pivot(n, a, m):
    """The element of greatest magnitude on and below the subdiagonal of column m - 1, and its row."""
    x, p = ZERO, m
    for j in range(m, n + 1):
        value = a[j][m - 1]
        size, greatest = abs(value), abs(x)
        if deviates("hessenberg-signed-pivot"):
            size, greatest = value, x
        if size > greatest or size == greatest and deviates("hessenberg-last-tie"):
            x, p = value, j
    return x, p


def exchange(n, a, p, m):
    """Rows p and m from column m - 1 on, then columns p and m."""
    for j in range(1 if deviates("hessenberg-swaps-multipliers") else m - 1, n + 1):
        a[p][j], a[m][j] = a[m][j], a[p][j]
    for j in range(1, n + 1):
        a[j][p], a[j][m] = a[j][m], a[j][p]


def eliminate_row(n, a, m, i, x):
    """True when row i has a multiplier."""
    y = a[i][m - 1]
    if y == ZERO and not deviates("hessenberg-zero-multiplier"):
        return False
    y = y * (ONE / x) if deviates("hessenberg-reciprocal") else y / x
    a[i][m - 1] = ZERO if deviates("hessenberg-clears-multipliers") else y
    for j in range(m, n + 1):
        a[i][j] = multiplied_off(a[i][j], a[m][j], y)
    if not deviates("hessenberg-rows-first"):
        eliminate_column(n, a, m, i, y)
    return True


def eliminate_column(n, a, m, i, y):
    for j in range(1, n + 1):
        a[j][m] = multiplied_onto(a[j][m], a[j][i], y)


def hessenberg_eigenvalues(n, flat, stride):
    """The result, the real parts and the imaginary parts."""
    a = matrix_rows(n, flat, stride)
    norm = hessenberg_norm(n, a)
    real, imaginary = [None] * max(0, n), [None] * max(0, n)
    nn, t, steps = n, ZERO, 0
    while nn >= 1:
        l = block_start(a, nn, norm)
        if l >= nn - 1:
            if l == nn:
                real[nn - 1], imaginary[nn - 1] = a[nn][nn] + t, ZERO
            else:
                real[nn - 2 : nn], imaginary[nn - 2 : nn] = block_eigenvalues(a, nn, t)
            nn = l - 1
            steps = steps if deviates("eigen-counter-kept") else 0
            continue
        if steps == iteration_limit():
            return [0, real, imaginary]
        x, y, w = a[nn][nn], a[nn - 1][nn - 1], a[nn][nn - 1] * a[nn - 1][nn]
        if is_exceptional(steps):
            t = t + x
            x, y, w = exceptional_shift(a, l, nn, x)
        steps += 1
        double_step(a, l, nn, *double_step_start(a, l, nn, x, y, w))
    return [1, real, imaginary]


def iteration_limit():
    for limit in (29, 31, 60):
        if deviates(f"eigen-limit-{limit}"):
            return limit
    return 30


def hessenberg_norm(n, a):
    places = [(i, j) for i in range(1, n + 1) for j in range(max(i - 1, 1), n + 1)]
    if deviates("eigen-norm-by-columns"):
        places.sort(key=lambda place: (place[1], place[0]))
    return plain_sum([abs(a[i][j]) for i, j in places])


def block_start(a, nn, norm):
    """The row behind the last negligible subdiagonal element above row nn."""
    for l in range(nn, 1, -1):
        s = abs(a[l - 1][l - 1]) + abs(a[l][l])
        if s == ZERO and not deviates("eigen-no-norm"):
            s = norm
        size = abs(a[l][l - 1])
        if size <= EPSILON * s if deviates("eigen-epsilon") else size + s == s:
            if deviates("eigen-negligible-cleared"):
                a[l][l - 1] = ZERO
            return l
    return 1


def block_eigenvalues(a, nn, t):
    """Real and imaginary parts of the 2 by 2 block that ends in row nn."""
    x, y = a[nn][nn], a[nn - 1][nn - 1]
    w = a[nn][nn - 1] * a[nn - 1][nn]
    p = HALF * (y - x)
    q = sum_of_products(p, p, a[nn][nn - 1], a[nn - 1][nn])
    z = sqrt(abs(q))
    last = t if deviates("eigen-shift-last") else ZERO
    x = x if deviates("eigen-shift-last") else x + t
    if q >= ZERO:
        values = [shifted(value, last) for value in block_real(x, p, w, z)]
        return values, [ZERO, ZERO]
    imaginary = [z, -z] if deviates("eigen-pair-swapped") else [-z, z]
    return [shifted(x + p, last)] * 2, imaginary


def shifted(value, shift):
    return value + shift if deviates("eigen-shift-last") else value


def block_real(x, p, w, root):
    negative = bool(p.sign) if deviates("eigen-block-sign-bit") else not p >= ZERO
    z = p - root if negative else p + root
    first = x + z
    if z == ZERO:
        return first, first
    if deviates("eigen-block-naive"):
        return first, x + (p + root if negative else p - root)
    if deviates("eigen-block-reciprocal"):
        return first, x - w * (ONE / z)
    return first, x - w / z


def is_exceptional(steps):
    if deviates("exceptional-none"):
        return False
    return steps == 10 or steps == 20 and not deviates("exceptional-once")


def exceptional_shift(a, l, nn, x):
    """Subtracts x from the diagonal and returns the x, y and w that replace those of the last block."""
    for i in range(l if deviates("exceptional-active-block") else 1, nn + 1):
        a[i][i] = a[i][i] - x
    s = abs(a[nn][nn - 1]) + abs(a[nn - 1][nn - 2])
    shift = THREE_QUARTERS * s
    if deviates("exceptional-regrouped"):
        return shift, shift, EXCEPTIONAL_PRODUCT * s * s
    return shift, shift, s * s * EXCEPTIONAL_PRODUCT


def double_step_start(a, l, nn, x, y, w):
    """The row where the double step starts, and the first column of its product, scaled."""
    for m in range(nn - 2, l - 1, -1):
        z = a[m][m]
        r, s = x - z, y - z
        p = start_element(multiplied_onto(-w, r, s), a[m + 1][m], a[m][m + 1])
        q = a[m + 1][m + 1] - (z + r + s) if deviates("start-sum-first") else a[m + 1][m + 1] - z - r - s
        r = a[m + 2][m + 1]
        if deviates("start-norm-reversed"):
            norm = abs(p) + (abs(q) + abs(r))
        else:
            norm = abs(p) + abs(q) + abs(r)
        p, q, r = divided((p, q, r), norm, "start-division")
        if m == l:
            break
        if deviates("start-at-block"):
            continue
        u = abs(a[m][m - 1]) * (abs(q) + abs(r))
        v = abs(p) * (abs(a[m - 1][m - 1]) + abs(z) + abs(a[m + 1][m + 1]))
        if u + v == v:
            break
    return m, p, q, r


def start_element(product, subdiagonal, superdiagonal):
    if deviates("start-reciprocal"):
        return product * (ONE / subdiagonal) + superdiagonal
    return product / subdiagonal + superdiagonal


def divided(values, divisor, deviant):
    """One division and multiplications; divisions under the named deviation."""
    if deviates(deviant):
        return [value / divisor for value in values]
    r = ONE / divisor
    return [value * r for value in values]


def double_step(a, l, nn, m, p, q, r):
    for i in range(m + 2, nn + 1):
        a[i][i - 2] = ZERO
        if i != m + 2:
            a[i][i - 3] = ZERO
    x = ZERO
    for k in range(m, nn):
        three = k != nn - 1
        if k != m:
            p, q, r = a[k][k - 1], a[k + 1][k - 1], a[k + 2][k - 1] if three else ZERO
            x = abs(p) + abs(q) + abs(r)
            if x != ZERO:
                p, q, r = divided((p, q, r), x, "sweep-division")
        s = signed_norm(p, q, r)
        if s == ZERO:
            continue
        if k != m:
            a[k][k - 1] = -s * x
        elif l != m and not deviates("start-no-negation"):
            a[k][k - 1] = -a[k][k - 1]
        p = p + s
        factors = divided((p, q, r), s, "sweep-factors-division")
        vector = divided((q, r), p, "sweep-vector-division")
        transform_rows(a, k, nn, three, factors, vector)
        transform_columns(a, k, l, nn, three, factors, vector)


def signed_norm(p, q, r):
    if deviates("sweep-norm-reversed"):
        square = p * p + (q * q + r * r)
    elif deviates("sweep-norm-ungrouped"):
        square = p * p + r * r + q * q
    else:
        square = multiplied_onto(sum_of_products(p, p, q, q), r, r)
    s = sqrt(square)
    negative = not p.is_nan() and bool(p.sign) if deviates("sweep-sign-bit") else p < ZERO
    return -s if negative else s


def transform_rows(a, k, nn, three, factors, vector):
    x, y, z = factors
    q, r = vector
    for j in range(k, nn + 1):
        p = multiplied_onto(a[k][j], q, a[k + 1][j])
        if three:
            if deviates("sweep-rows-regrouped"):
                p = a[k][j] + (q * a[k + 1][j] + r * a[k + 2][j])
            else:
                p = multiplied_onto(p, r, a[k + 2][j])
            a[k + 2][j] = multiplied_off(a[k + 2][j], p, z)
        a[k + 1][j] = multiplied_off(a[k + 1][j], p, y)
        a[k][j] = multiplied_off(a[k][j], p, x)


def transform_columns(a, k, l, nn, three, factors, vector):
    x, y, z = factors
    q, r = vector
    for i in range(l, (nn if deviates("sweep-all-rows") else min(nn, k + 3)) + 1):
        row = a[i]
        p = sum_of_products(x, row[k], y, row[k + 1])
        if three:
            if deviates("sweep-columns-regrouped"):
                p = x * row[k] + (y * row[k + 1] + z * row[k + 2])
            else:
                p = multiplied_onto(p, z, row[k + 2])
            row[k + 2] = multiplied_off(row[k + 2], p, r)
        row[k + 1] = multiplied_off(row[k + 1], p, q)
        row[k] = row[k] - p


# --- Polynomials -------------------------------------------------------------------------------------------------


def polynomial_roots(degree, coefficients, tolerance):
    """The result and the room for `degree` roots. The coefficients come in descending powers."""
    room = [None] * degree
    nonzero = [k for k in range(degree + 1) if coefficients[k] != ZERO]
    if not nonzero:
        return [RET_INDETERMINATE, room]
    first, last = nonzero[0], nonzero[-1]
    if first == degree:
        return [RET_IMPOSSIBLE, room]
    zeros = [ZERO] * (degree - last)
    found = []
    if last > first:
        found = list(in_order(real_eigenvalues(coefficients[first : last + 1], tolerance), "polynomial-from-top"))
    values = found + zeros if deviates("polynomial-zeros-last") else zeros + found
    room[: len(values)] = values
    return [len(values), room]


def real_eigenvalues(coefficients, tolerance):
    m = len(coefficients) - 1
    matrix = companion_matrix(m, coefficients)
    if not deviates("polynomial-unbalanced"):
        matrix = balance_matrix(m, matrix, m)
    _, real, imaginary = hessenberg_eigenvalues(m, reduce_to_hessenberg(m, matrix, m), m)
    if deviates("polynomial-unfound-are-zero"):
        real, imaginary = [[ZERO if value is None else value for value in part] for part in (real, imaginary)]
    return [x for x, y in zip(real, imaginary) if y is not None and is_below(abs(y), tolerance)]


def is_below(size, tolerance):
    return size < tolerance or size == tolerance and deviates("polynomial-tolerance-inclusive")


def companion_matrix(m, coefficients):
    matrix = [ZERO] * (m * m)
    for k in range(m - 1):
        matrix[k * m + k + 1] = ONE
    q = -ONE / coefficients[0]
    for j in range(m):
        value = coefficients[j + 1]
        matrix[j * m] = -value / coefficients[0] if deviates("polynomial-division") else value * q
    return matrix


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
