// nuv1math.h: planar coordinate transformations and the numerical analysis that they need.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_NUV1MATH_H
#define NUV_NUV1MATH_H

/** @file
 *  The public interface of nuv1math: everything that the library exports, in namespace nuv.
 *
 *  @par Result codes
 *  Nothing is thrown and nothing is logged. A function that can fail tells its outcome by its return value, but for
 *  InitCholLowTri (null pointers) and AffineUntransform (see there).
 *  | value     | name              | meaning                                                                          |
 *  |-----------|-------------------|----------------------------------------------------------------------------------|
 *  |         1 |                   | success: all outputs are written                                                 |
 *  | 0 or more |                   | polynomial Roots, SolveLinTrig, SolveQuadTrig: how many solutions are written    |
 *  |        -1 | RET_IMPOSSIBLE    | no result: too few points (conformal, affine), equal source points (conformal),  |
 *  |           |                   | a degenerate record, or an equation or system without solution                   |
 *  |        -2 | RET_INDETERMINATE | no unique result: a singular system that is not found inconsistent, an equation  |
 *  |           |                   | that everything solves, or an omographic fit that has too few points or cannot   |
 *  |           |                   | be solved                                                                        |
 *
 *  Functions that return bool return true for success. Outputs that were written before a failure was found stay
 *  written; each function says which, and everything else is untouched.
 *
 *  @par Degeneracy tolerance
 *  "v is zero" below means, where nothing else is said, -1e-12 <= v <= 1e-12, both ends included. The band is absolute:
 *  it is not scaled by the size of the data, so choose units in which scales are not below 1e-5. A NaN is never zero.
 *
 *  @par Special values
 *  Arguments are not checked for NaN or infinity. Such values run through the arithmetic and the tests as they stand,
 *  so they can come out with any result code. Scales are computed from a ratio: (NaN, 0) has the length 0, (0, NaN) and
 *  two infinities have the length NaN.
 *
 *  @par Aliasing
 *  Unless a function says otherwise, no output may overlap an input or another output. Arrays that are only read may
 *  overlap, and an argument passed by value may come from a variable that is also an output.
 *
 *  @par Threads
 *  Every function but those of the random numbers touches only its arguments and its own scratch: calls on different
 *  threads with different outputs run independently. The random numbers have one state for the process and no lock.
 *
 *  @par Memory
 *  Arrays and records belong to the caller. No function allocates, but InitCholLowTri (for the caller), CalcCoefs
 *  (one scratch array, for the orientation-reversing similarity only), the polynomial Roots, and SolveQuadTrig where it
 *  solves a quartic. All scratch is released before the return.
 *
 *  @par The same bits everywhere
 *  Every operation is a double operation in a fixed order, without contraction or excess precision. So results made of
 *  additions, subtractions, multiplications, divisions, square roots and conversions of integers are the same bits on
 *  every platform, provided that the calling thread rounds to nearest and does not flush subnormal numbers to zero (as
 *  programs linked with fast-math can), and that memory can be had where a function allocates. A NaN is a NaN
 *  everywhere, but its sign and payload differ. Functions that take or return angles, and Randn, depend on the
 *  platform's sin, cos, tan, asin, acos, atan, atan2 and log, which differ in the last place or two.
 *
 *  @par Broken invariants
 *  A few checks guard what must hold whatever the caller passes, and one guards a promise of the caller
 *  (AffineUntransform). A check that fails shows "<source>:<line> assertion failure:\n<condition>" in a message box (on
 *  POSIX systems on standard error, and waits for a line if standard input is a terminal) and then ends the process
 *  with exit code 0.
 *
 *  @par Units
 *  Angles are in radians and grow counter-clockwise from the x axis towards the y axis. Coordinates are in the
 *  caller's units; scales are target units per source unit. Control points come as four parallel arrays of equal
 *  length: a_vdX, a_vdY (x and y in the source system) and a_vdXa, a_vdYa (X and Y of the same points in the target
 *  system). Fits map the source onto the target, every point counting once.
 */

#if defined(_WIN32)
#if defined(NUV1MATH_BUILD)
#define NUV1MATH_API __declspec(dllexport)
#else
#define NUV1MATH_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define NUV1MATH_API __attribute__((visibility("default")))
#else
#define NUV1MATH_API
#endif

/** The library. Its records are plain, without padding, their fields doubles in the order given. */
namespace nuv {

/** No result: see the table of result codes. */
const int RET_IMPOSSIBLE = -1;

/** No unique result: see the table of result codes. */
const int RET_INDETERMINATE = -2;

/** An affine transformation: X = a x + b y + c, Y = d x + e y + f. */
struct TAffineCoefs
{
    double dA; /**< a: coefficient of x in X */
    double dB; /**< b: coefficient of y in X */
    double dC; /**< c: translation of X, target units */
    double dD; /**< d: coefficient of x in Y */
    double dE; /**< e: coefficient of y in Y */
    double dF; /**< f: translation of Y, target units */
};

/** A conformal transformation (similarity) that keeps the orientation: X = A x + B y + Tx, Y = -B x + A y + Ty with
 *  A = s cos(theta) and B = -s sin(theta), and beside it the linear part of its inverse (A and -B instead after a fit
 *  with a_bRigidInverse). The functions take the fields as they are: none recomputes one from the others. */
struct TConformalCoefs
{
    double dA;    /**< A = s cos(theta): coefficient of x in X and of y in Y */
    double dB;    /**< B = -s sin(theta): coefficient of y in X; -B is that of x in Y */
    double dTx;   /**< Tx: translation of X, target units */
    double dTy;   /**< Ty: translation of Y, target units */
    double dInvA; /**< cos(theta)/s = A/(A^2 + B^2): the dA of the inverse */
    double dInvB; /**< sin(theta)/s = -B/(A^2 + B^2): the dB of the inverse */
};

/** An omographic (projective) transformation: X = (A x + B y + C)/W, Y = (D x + E y + F)/W with W = G x + H y + 1.
 *  The affine transformations are those with G = H = 0.
 *
 *  Limit: the constant of W is fixed at 1, so a transformation that takes the source origin to infinity (W = 0 at
 *  x = y = 0) has no such record, and one whose vanishing line W = 0 runs close by the source origin has coefficients
 *  of unbounded size. With the source origin in the middle of the control points a transformation that is finite over
 *  their area has neither trouble. At a point with W = 0 the formulas give an infinity or NaN. */
struct TOmographicParams
{
    double dA; /**< A: coefficient of x in the numerator of X */
    double dB; /**< B: coefficient of y in the numerator of X */
    double dC; /**< C: constant of the numerator of X */
    double dD; /**< D: coefficient of x in the numerator of Y */
    double dE; /**< E: coefficient of y in the numerator of Y */
    double dF; /**< F: constant of the numerator of Y */
    double dG; /**< G: coefficient of x in the denominator */
    double dH; /**< H: coefficient of y in the denominator */
};

/** The kinds of transformation among which CalcCoefs chooses, from the poorest to the richest. */
enum enumMethodUsed
{
    METHOD_CONFORMAL = 0, /**< similarity, four coefficients, at least 2 points (CalcConformalCoefs) */
    METHOD_AFFINE = 1,    /**< affine, six coefficients, at least 3 points (CalcAffineCoefs) */
    METHOD_OMOGRAPHIC = 2 /**< projective, eight coefficients, at least 4 points (CalcOmographicCoefs) */
};

/** @name Transformation from control points @{ */

/** The richest transformation that the control points support, as one record whatever its kind.
 *
 *  Limits: the omographic result is judged by finiteness alone (read the limits of CalcOmographicCoefs), the affine
 *  one by its determinant alone (points on one line can pass, see CalcAffineCoefs), the conformal one not at all: equal
 *  target points give true with A and B zero or rounding noise. Subtract a local origin from large coordinates first,
 *  and look at the residuals.
 *
 *  Method: the kinds are tried from a_Requested downwards and the first usable one is taken.
 *  1. Omographic, if requested and a_iPoints >= 4; used if CalcOmographicCoefs returns 1 and all eight coefficients
 *     are finite.
 *  2. Affine, if omographic or affine is requested and a_iPoints >= 3; used if CalcAffineCoefs returns 1 and the
 *     determinant ea - db is not zero. The band is absolute: beside a transformation that collapses the plane it passes
 *     over every one whose scales multiply to no more than 1e-12 (pixels of 0.1 m in degrees): scale the target units.
 *     Rounding can hide a collapse where the coefficients are large; a NaN determinant is used.
 *  3. Conformal, in every other case, a_Requested outside the enumeration included.
 *
 *  @param a_iPoints          number of control points
 *  @param a_vdX              x of the points in the source system, a_iPoints values
 *  @param a_vdY              y in the source system, a_iPoints values
 *  @param a_vdXa             X in the target system, a_iPoints values
 *  @param a_vdYa             Y in the target system, a_iPoints values
 *  @param a_bSameOrientation for the conformal kind only: true for a similarity that keeps the orientation of the
 *                            axes, false for one that reverses it (a reflection of the target's Y axis, besides
 *                            rotation and scale: X = A x + B y + C, Y = B x - A y + F)
 *  @param a_Requested        the richest kind that the caller accepts
 *  @param a_Used             out: the kind of the result
 *  @param a_Params           out: the transformation; dG = dH = 0 for the affine and conformal kinds
 *  @return true if a_Used and a_Params hold a transformation. False if a_iPoints < 2 (both untouched); if every allowed
 *          kind failed, or the scratch array for a_bSameOrientation = false cannot be allocated: a_Used is then
 *          untouched, and a_Params too unless the omographic fit was tried, whose left-overs it then holds. */
NUV1MATH_API bool CalcCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                            const double* a_vdYa, bool a_bSameOrientation, enumMethodUsed a_Requested,
                            enumMethodUsed& a_Used, TOmographicParams& a_Params);

/** The conformal transformation (similarity) that maps the source points onto the target points with the least sum
 *  of squared residuals in X and Y. It keeps the orientation; CalcCoefs offers the reversing one.
 *
 *  Limits: with all target points equal it returns 1 with A and B zero or rounding noise; unless a_bRigidInverse is
 *  set, the inverse fields are then NaN, infinite or meaningless. The test for equal source points is absolute: it
 *  also rejects a spread below about 1e-6 units, and it can miss equal points of so large coordinates that their mean
 *  is rounded by more than that (three times 1e11 + 0.1).
 *
 *  Method: closed form about the centroids. With centred coordinates, S = sum(dx^2 + dy^2), A = sum(dX dx + dY dy)/S,
 *  B = sum(dX dy - dY dx)/S; a common offset of the coordinates costs only the rounding of the means, which grows with
 *  the offset and the number of points. Source: the four-parameter (Helmert) transformation, as in C. D. Ghilani,
 *  Adjustment Computations, chapter on coordinate transformations; and S. Umeyama, IEEE Trans. Pattern Anal. Mach.
 *  Intell. 13 (1991) 376-380, for the same minimum in any dimension.
 *
 *  @param a_iPoints       number of control points, at least 2
 *  @param a_vdX           x of the points in the source system, a_iPoints values
 *  @param a_vdY           y in the source system, a_iPoints values
 *  @param a_vdXa          X in the target system, a_iPoints values
 *  @param a_vdYa          Y in the target system, a_iPoints values
 *  @param a_bRigidInverse false: the inverse fields are those of the inverse. True: they are A and -B whatever the
 *                         scale, which is the inverse of a rigid motion (A^2 + B^2 = 1) only
 *  @param a_Coefs         out: the transformation
 *  @return 1, or RET_IMPOSSIBLE with a_Coefs untouched if a_iPoints < 2 or S is zero (all source points equal). */
NUV1MATH_API int CalcConformalCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY,
                                    const double* a_vdXa, const double* a_vdYa, bool a_bRigidInverse,
                                    TConformalCoefs& a_Coefs);

/** The affine transformation that maps the source points onto the target points with the least sum of squared
 *  residuals, X and Y independently.
 *
 *  Limits: **source points on one line, or fewer than three different ones, are not detected.** The result is then
 *  1 with very large or meaningless coefficients. A caller that cannot exclude them compares the spread of
 *  the source points across their best line with the spread along it before the fit, as apps/fitpoints does: with
 *  the ratio r of the two the coefficients are off by about 3e-15/r^2 of their size, and below r = 3e-8 no digit is
 *  left. The determinant ae - db of the result does not tell it; compared with the squares of the coefficients it
 *  tells a collapsed *target*.
 *
 *  Method: normal equations in coordinates centred on the means, so that a common offset costs no more than the
 *  rounding of the coordinates; 3x3 Gaussian elimination with row pivoting, in which an exactly zero pivot becomes
 *  1e-14. Source: G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed., sections 3.4 (elimination) and 5.3
 *  (normal equations).
 *
 *  @param a_iPoints number of control points, at least 3
 *  @param a_vdX     x of the points in the source system, a_iPoints values
 *  @param a_vdY     y in the source system, a_iPoints values
 *  @param a_vdXa    X in the target system, a_iPoints values
 *  @param a_vdYa    Y in the target system, a_iPoints values
 *  @param a_Coefs   out: the transformation
 *  @return 1, or RET_IMPOSSIBLE with a_Coefs untouched if a_iPoints < 3. */
NUV1MATH_API int CalcAffineCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                                 const double* a_vdYa, TAffineCoefs& a_Coefs);

/** The omographic (projective) transformation that maps the source points onto the target points with the least sum
 *  of squared residuals in X and Y.
 *
 *  Limits: **coordinates are taken as they are, without centring or scaling.** Where the offset of the source or
 *  target coordinates from their origin exceeds some hundred times their extent (with four points, which may be badly
 *  placed, some tens), the result can be useless and still 1, or RET_INDETERMINATE for points that determine a
 *  transformation well: subtract a local origin from both systems before the fit, as apps/fitpoints does. The
 *  constant of the denominator is fixed at 1 (see TOmographicParams): points of a transformation that takes the source
 *  origin to infinity can give RET_INDETERMINATE, 1 with eight NaN, or 1 with finite coefficients that fit badly.
 *  Points among which there are no four of which no three lie on a line do not determine the eight coefficients; this
 *  may be reported, or give 1 with arbitrary values. Test the result for finiteness and look at the residuals.
 *
 *  Method: the equations multiplied out by the denominator, X = Ax + By + C - GXx - HXy and the like for Y, are linear
 *  in the eight coefficients and solved by normal equations (UpdateNormMatrixLowTri, CholeskyLowTri, SolveCholLowTri);
 *  at most four Gauss-Newton iterations on the true residuals follow, until every correction is below 1e-8 in absolute
 *  value. Ending after the fourth is no error; neither is an iteration that cannot be factorised, which ends the
 *  refinement with the coefficients reached before it. Source: R. Hartley, A. Zisserman, Multiple View Geometry, 2nd
 *  ed., sections 4.1 and 4.5 (and 4.4 for the normalisation that is *not* done here); A. Bjorck, Numerical Methods for
 *  Least Squares Problems, section 9.2.
 *
 *  @param a_iPoints number of control points, at least 4
 *  @param a_vdX     x of the points in the source system, a_iPoints values
 *  @param a_vdY     y in the source system, a_iPoints values
 *  @param a_vdXa    X in the target system, a_iPoints values
 *  @param a_vdYa    Y in the target system, a_iPoints values
 *  @param a_Params  out: the transformation
 *  @return 1; RET_INDETERMINATE with a_Params untouched if a_iPoints < 4; RET_INDETERMINATE if the linear equations
 *          cannot be factorised, a_Params then holding their right-hand side, which must not be used. */
NUV1MATH_API int CalcOmographicCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                                     const double* a_vdYa, TOmographicParams& a_Params);

/** @} */

/** @name Affine transformations
 *  Geometric parameters: sx, the scale along the source x axis; theta, the rotation of its image; sy, the scale along
 *  the source y axis, measured across the image of the x axis; phi, the skew: for sx, sy > 0 and |phi| < pi/2 the image
 *  of the y axis leans by phi from the perpendicular towards the image of the x axis, and has length sy/cos(phi); tx
 *  and ty, the translations. a = sx cos(theta), b = sy (cos(theta) tan(phi) - sin(theta)), c = tx, d = sx sin(theta), e
 *  = sy (sin(theta) tan(phi) + cos(theta)), f = ty. @{ */

/** Affine coefficients from geometric parameters. A skew of +-pi/2 is not refused: tan(phi), about 1.6e16 there, enters
 *  b and e like any other value.
 *
 *  @param a_dSx    sx: scale along the source x axis; a negative one comes back as -sx with -sy and theta + pi
 *  @param a_dSy    sy: scale across the image of the x axis; negative for a mirror image
 *  @param a_dPhi   phi: skew angle, radians
 *  @param a_dTheta theta: rotation angle, radians
 *  @param a_dTx    tx: translation of X, target units
 *  @param a_dTy    ty: translation of Y, target units
 *  @param a_Coefs  out: the transformation, all six fields */
NUV1MATH_API void AffineParamsToCoefs(double a_dSx, double a_dSy, double a_dPhi, double a_dTheta, double a_dTx,
                                      double a_dTy, TAffineCoefs& a_Coefs);

/** Geometric parameters from affine coefficients.
 *
 *  Method: sx is the length of (a, d) and theta its direction; the column (b, e) turned back by theta is
 *  sy (tan(phi), 1). A mirror image appears as a negative sy.
 *
 *  @param a_Coefs  the transformation
 *  @param a_dSx    out: sx >= 0
 *  @param a_dSy    out: sy
 *  @param a_dPhi   out: phi in [-pi/2, pi/2]
 *  @param a_dTheta out: theta in [0, 2 pi], both ends included: a tiny negative rotation gives 2 pi itself; -0.0 occurs
 *  @param a_dTx    out: tx = c
 *  @param a_dTy    out: ty = f
 *  @return 1; RET_IMPOSSIBLE if sx is zero (only sx is written) or sy is zero (only sx, theta and sy are written). */
NUV1MATH_API int AffineCoefsToParam(const TAffineCoefs& a_Coefs, double& a_dSx, double& a_dSy, double& a_dPhi,
                                    double& a_dTheta, double& a_dTx, double& a_dTy);

/** The inverse affine transformation (Cramer's rule).
 *
 *  @param a_Coefs   the transformation
 *  @param a_Inverse out: its inverse; must be a different record: the same one gets wrong values
 *  @return 1, or RET_IMPOSSIBLE with a_Inverse untouched if the determinant ae - db is zero, which a regular
 *          transformation whose scales multiply to no more than 1e-12 has too. */
NUV1MATH_API int AffineCoefsToInvCoefs(const TAffineCoefs& a_Coefs, TAffineCoefs& a_Inverse);

/** Maps a target point back to the source: solves a x + b y = X - c, d x + e y = Y - f by the two-unknown Roots.
 *
 *  Limit: **if the determinant ae - db is zero and e (X - c) - b (Y - f) is not, the process ends** (see Broken
 *  invariants), also for a regular transformation whose scales multiply to no more than 1e-12 (pixels of 0.1 m in
 *  degrees). If both are zero the result is (0, 0), also where the equations contradict each other, as for all
 *  coefficients 0. If the determinant can be zero, use AffineCoefsToInvCoefs or Roots, which report it.
 *
 *  @param a_Coefs the transformation
 *  @param a_dXa   X of the target point
 *  @param a_dYa   Y of the target point
 *  @param a_dX    out: x of the source point; 0 if the determinant is zero
 *  @param a_dY    out: y of the source point; 0 likewise */
NUV1MATH_API void AffineUntransform(const TAffineCoefs& a_Coefs, double a_dXa, double a_dYa, double& a_dX,
                                    double& a_dY);

/** @} */

/** @name Conformal transformations @{ */

/** Conformal coefficients from scale, rotation and translations. A scale of exactly 0 gives infinities or NaN in the
 *  inverse fields.
 *
 *  @param a_dScale s: scale; a negative one comes back as -s with theta + pi
 *  @param a_dAngle theta: rotation angle, radians, positive counter-clockwise
 *  @param a_dTx    translation of X, target units
 *  @param a_dTy    translation of Y, target units
 *  @param a_Coefs  out: the transformation, all six fields */
NUV1MATH_API void ConformalParamsToCoefs(double a_dScale, double a_dAngle, double a_dTx, double a_dTy,
                                         TConformalCoefs& a_Coefs);

/** Scale, rotation and translations from conformal coefficients.
 *
 *  @param a_Coefs  the transformation; the inverse fields are not used
 *  @param a_dScale out: s >= 0
 *  @param a_dAngle out: theta in [0, 2 pi], both ends included; -0.0 occurs; 0 if the scale is zero
 *  @param a_dTx    out: translation of X
 *  @param a_dTy    out: translation of Y
 *  @return 1, or RET_IMPOSSIBLE if the scale is zero; all four outputs are written in either case. */
NUV1MATH_API int ConformalCoefsToParam(const TConformalCoefs& a_Coefs, double& a_dScale, double& a_dAngle,
                                       double& a_dTx, double& a_dTy);

/** The inverse conformal transformation, from the inverse fields of the record as they are.
 *
 *  @param a_Coefs   the transformation
 *  @param a_Inverse out: its inverse, all six fields; must be a different record: the same one gets wrong values */
NUV1MATH_API void ConformalCoefsToInvCoefs(const TConformalCoefs& a_Coefs, TConformalCoefs& a_Inverse);

/** A conformal transformation as an affine one: a = e = A, b = B, d = -B, c = Tx, f = Ty.
 *
 *  @param a_Coefs  the transformation; the inverse fields are not used
 *  @param a_Affine out: the same transformation, all six fields */
NUV1MATH_API void ConformalCoefsToAffineCoefs(const TConformalCoefs& a_Coefs, TAffineCoefs& a_Affine);

/** @} */

/** @name Omographic transformations @{ */

/** An affine transformation as an omographic one: the six coefficients in order, dG = dH = 0.
 *
 *  @param a_Affine the transformation
 *  @param a_Params out: the same transformation, all eight fields */
NUV1MATH_API void AffineCoefsToOmographicCoefs(const TAffineCoefs& a_Affine, TOmographicParams& a_Params);

/** @} */

/** @name Normal equations and Cholesky, packed
 *  Linear least squares with n unknowns, one observation a.x = l at a time: the normal matrix N = sum(a a^T) and the
 *  right-hand side u = sum(a l) are accumulated, N = L L^T is factorised, N x = u is solved. Every observation has
 *  weight 1: for weight w multiply its coefficients and its value by sqrt(w).
 *
 *  A packed matrix holds the lower triangle of a symmetric n x n matrix row by row in n(n+1)/2 doubles: element
 *  (i, j), j <= i, counted from 0, at i(i+1)/2 + j. The same array holds first N and then L.
 *
 *  Order of calls: InitCholLowTri (or arrays of the caller's own, filled with zeros); one UpdateNormMatrixLowTri per
 *  observation; CholeskyLowTri; if that returned true, SolveCholLowTri; DeleteCholLowTri.
 *
 *  Nothing is validated, neither pointers nor indices. Source: G. H. Golub, C. F. Van Loan, Matrix
 *  Computations, 4th ed., sections 4.2 (Cholesky) and 5.3 (normal equations). @{ */

/** Allocates a packed matrix and a vector for n unknowns, filled with zeros.
 *
 *  @param a_iUnknowns n; less than 1 counts as 0: what the allocator gives for no bytes, possibly null
 *  @param a_pMatrix   out: address of n(n+1)/2 doubles
 *  @param a_pVector   out: address of n doubles
 *
 *  If either cannot be allocated, both addresses are null and nothing is left allocated. Release by DeleteCholLowTri
 *  only. */
NUV1MATH_API void InitCholLowTri(int a_iUnknowns, double** a_pMatrix, double** a_pVector);

/** Releases what InitCholLowTri allocated. Null pointers are harmless.
 *
 *  @param a_vdMatrix the packed matrix
 *  @param a_vdVector the vector */
NUV1MATH_API void DeleteCholLowTri(double* a_vdMatrix, double* a_vdVector);

/** Adds one observation with all n coefficients: N += a a^T, u += a l.
 *
 *  @param a_iUnknowns n; nothing happens if it is less than 1
 *  @param a_vdMatrix  in and out: packed N, n(n+1)/2 values
 *  @param a_vdVector  in and out: u, n values
 *  @param a_vdRow     a: the coefficients, n values
 *  @param a_dValue    l: the observed value */
NUV1MATH_API void UpdateNormMatrixLowTri(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, const double* a_vdRow,
                                         double a_dValue);

/** Adds one observation whose coefficients stand in a few columns: k values at k indices, in any order.
 *
 *  Limit: a repeated index is not merged. For two entries p > q of the same index the diagonal element receives the
 *  product v[p] v[q] once (beside both squares), so it differs from the observation with the sum v[p] + v[q] there by
 *  that product.
 *
 *  @param a_iUnknowns not used: indices are not checked against it
 *  @param a_vdMatrix  in and out: packed N
 *  @param a_vdVector  in and out: u
 *  @param a_iCount    k; nothing happens if it is less than 1
 *  @param a_vdValues  the coefficients, k values
 *  @param a_viIndices their columns, counted from 0, k values; an entry with a negative index is skipped
 *  @param a_dValue    l: the observed value */
NUV1MATH_API void UpdateNormMatrixLowTri(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, int a_iCount,
                                         const double* a_vdValues, const int* a_viIndices, double a_dValue);

/** Factorises N = L L^T in place, column by column, without pivoting and without tolerance.
 *
 *  Limit: a radicand of exactly 0 passes. In the last row the result is then true and SolveCholLowTri divides by zero;
 *  in an earlier one the column below becomes infinite or NaN, which fails at the next diagonal.
 *
 *  @param a_iUnknowns n; if it is less than 1 the result is true and nothing is touched
 *  @param a_vdMatrix  in: packed N; out: packed L, n(n+1)/2 values
 *  @return true, or false if a diagonal radicand is negative or NaN: the columns before that diagonal hold L, the rest
 *          of the triangle, the diagonal included, is as it was. */
NUV1MATH_API bool CholeskyLowTri(int a_iUnknowns, double* a_vdMatrix);

/** Solves L L^T x = u in place, any number of times for one factor.
 *
 *  @param a_iUnknowns n; nothing happens if it is less than 1
 *  @param a_vdFactor  packed L of CholeskyLowTri, n(n+1)/2 values
 *  @param a_vdVector  in: u; out: x, n values */
NUV1MATH_API void SolveCholLowTri(int a_iUnknowns, const double* a_vdFactor, double* a_vdVector);

/** @} */

/** @name Linear systems @{ */

/** Solves a11 x + a12 y = b1, a21 x + a22 y = b2 by Cramer's rule.
 *
 *  Limits: the tolerances are absolute, so a well-conditioned system of small coefficients counts as singular: scale
 *  the equations. For a singular system only the numerator of x, a22 b1 - a12 b2, is examined, not that of y: all
 *  coefficients 0 give RET_INDETERMINATE whatever finite b1 and b2.
 *
 *  @param a_dA11 a11
 *  @param a_dA12 a12
 *  @param a_dA21 a21
 *  @param a_dA22 a22
 *  @param a_dB1  b1
 *  @param a_dB2  b2
 *  @param a_dX   out: x
 *  @param a_dY   out: y
 *  @return 1; or with x and y untouched, if the determinant a11 a22 - a12 a21 is zero: RET_INDETERMINATE
 *          (usually a continuum of solutions) if the numerator of x is zero too, else RET_IMPOSSIBLE. */
NUV1MATH_API int Roots(double a_dA11, double a_dA12, double a_dA21, double a_dA22, double a_dB1, double a_dB2,
                       double& a_dX, double& a_dY);

/** @} */

/** @name Cholesky, dense
 *  The same factorisation and solution on a full n x n matrix, row by row: element (i, j), counted from 0, at i n + j.
 *  Only the lower triangle with the diagonal is read and written: the strict upper triangle may hold anything and keeps
 *  it.
 *  Order of calls: Cholesky; if that returned true, SolveChol with the same array. @{ */

/** Factorises A = L L^T in place, column by column, without pivoting and without tolerance.
 *
 *  Limit: a radicand of exactly 0 passes. In the last row the result is then true and SolveChol divides by zero; in an
 *  earlier one the column below becomes infinite or NaN, which fails at the next diagonal.
 *
 *  @param a_iN       n; if it is less than 1 the result is true and nothing is touched
 *  @param a_vdMatrix in: lower triangle of A; out: L; n^2 values
 *  @return true, or false if a diagonal radicand is negative or NaN: the columns before that diagonal hold L, the rest
 *          of the triangle, the diagonal included, is as it was. */
NUV1MATH_API bool Cholesky(int a_iN, double* a_vdMatrix);

/** Solves L L^T x = b in place, any number of times for one factor. The backward substitution subtracts its terms in
 *  ascending order, SolveCholLowTri in descending order: the two can differ in the last bits.
 *
 *  @param a_iN       n; nothing happens if it is less than 1
 *  @param a_vdFactor L of Cholesky, n^2 values
 *  @param a_vdVector in: b; out: x, n values */
NUV1MATH_API void SolveChol(int a_iN, const double* a_vdFactor, double* a_vdVector);

/** @} */

/** @name Polynomials @{ */

/** The real roots of a polynomial with real coefficients, as eigenvalues of its companion matrix.
 *
 *  Limits:
 *  - **A count below the number of real roots is possible without notice.** The iteration gives up on some ordinary
 *    polynomials; the eigenvalues that it has not found by then are never reported. x^4 - 2x^2 + 1, with the double
 *    roots 1 and -1, gives 0 roots. Of all polynomials with integer coefficients from -3 to 3 it gives up on none of
 *    degree 2 and 3, on 4 of 14406 of degree 4 and on 12 of 100842 of degree 5, all with multiple roots; of the squares
 *    of those of degree 2, 3 and 4 on 40 of 294, 240 of 2058 and 2536 of 14406. On products of random linear factors up
 *    to degree 20 it never did (1000 for each of ten degrees). To find out, call with an infinite tolerance: for finite
 *    coefficients, the first not 0, a result below the degree means that eigenvalues are missing.
 *  - A root of multiplicity k splits into neighbours at a distance of about the k-th root of 1e-16 (1e-8 for a double,
 *    1e-5 for a triple root), as real values or as complex pairs. A pair within the tolerance counts as two real
 *    roots, one outside as none: with the tolerance 1e-6 a triple root is normally reported once.
 *  - Scale x so that the roots are around 1 in size: x^n - 2^n is off in the fourth digit at degree 60 and has a wrong
 *    count first at degree 73 and at 93 of the 128 degrees from there to 200; x^n - 1 is good to 14 digits up to
 *  degree 200. More figures: docs/roots.md. - Roots are as exact as the eigenvalues and are not polished.
 *  - The other coefficients are multiplied by the reciprocal of the leading one; that reciprocal and the products must
 *    not overflow.
 *  - Time grows with the cube of the degree and memory with its square.
 *
 *  Method: leading zero coefficients lower the degree, trailing ones are roots 0. The companion matrix of the rest is
 *  balanced, reduced to Hessenberg form and solved by Francis' double-shift QR iteration, at most 30 iterations for an
 *  eigenvalue. Source: A. Edelman, H. Murakami, Math. Comp. 64 (1995) 763-776; B. N. Parlett, C. Reinsch, Numer. Math.
 *  13 (1969) 293-304; R. S. Martin, G. Peters, J. H. Wilkinson, Numer. Math. 14 (1970) 219-231.
 *
 *  @param iDegree     degree, 0 or more
 *  @param vdA         iDegree + 1 coefficients, that of the highest power first; a coefficient counts as zero only if
 *                     it is exactly 0
 *  @param a_vdRoots   out: the roots, room for iDegree values; only as many as the result says are written, except that
 *                     zero roots may stand there beside a result of 0 for want of memory
 *  @param a_dTolerance an eigenvalue counts as real if its imaginary part is below this in absolute value; with 0, a
 *                     negative value or NaN only the roots 0 of trailing zeros are reported
 *  @return the number of roots written, each as often as it was found: first those that are exactly 0 by trailing
 *          zeros, then the others in no particular order; RET_IMPOSSIBLE for a constant other than 0 and
 *          RET_INDETERMINATE for all coefficients 0, a_vdRoots untouched. If scratch memory cannot be had, 0, the
 *          roots that are exactly 0 alone, or (for want of a table of column addresses only) the roots of the
 *          unbalanced matrix. */
NUV1MATH_API int Roots(unsigned int iDegree, const double* vdA, double* a_vdRoots, double a_dTolerance);

/** @} */

/** @name Trigonometric equations
 *  Angles are in [0, 2 pi], both ends included; -0.0 occurs. Coefficients are compared exactly.
 *
 *  Limit: squares and products of the coefficients must neither overflow nor underflow (magnitudes of about 1e-150 to
 *  1e150), or angles are wrong, missing or invented without notice: scale the equation by a power of 2. NaN
 *  coefficients can give NaN angles. @{ */

/** The angles t that solve a cos(t) + b sin(t) + c = 0.
 *
 *  Limits: near a tangent solution, where a^2 + b^2 is close to c^2, rounding decides between no, one and two angles.
 *  A tangent solution is found twice if a = 0, and once if b = 0 or if rounding leaves the discriminant exactly 0.
 *
 *  Method: asin, acos or atan2 where a coefficient is 0; otherwise the quadratic (c - a) u^2 + 2 b u + (a + c) = 0 in u
 *  = tan(t/2), its roots formed without cancellation from the discriminant.
 *
 *  @param a_dA       a
 *  @param a_dB       b
 *  @param a_dC       c
 *  @param a_vdAngles out: the angles, room for 2; ascending, except for c = 0 with a > 0 and b not 0, where the
 *                    greater one comes first
 *  @return the number of angles written, 0 to 2; RET_INDETERMINATE if a = b = c = 0 (every angle solves);
 *          RET_IMPOSSIBLE if there is no solution and a or b is 0. If neither is 0, no solution is told by the count 0.
 *          a_vdAngles is untouched if the result is not positive. */
NUV1MATH_API int SolveLinTrig(double a_dA, double a_dB, double a_dC, double* const a_vdAngles);

/** The angles t that solve a cos^2(t) + b sin^2(t) + c sin(t) cos(t) + d cos(t) + e sin(t) + f = 0.
 *
 *  Limits: where a quartic is solved (d or e not 0, and c not 0 or a not equal to b), the limits of the polynomial
 *  Roots hold: **tangent solutions, which are double roots, can be missed or found twice at a distance of about 1e-8,
 *  and angles can be missed where the iteration gives up.** (cos(t) - 0.5)^2 = 0 gives no angle, (cos(t) - 0.6)^2 = 0
 *  each of its two angles twice. 0 and 2 pi count as different angles. Where scratch memory cannot be had, the angles
 *  of a quartic are missing without notice.
 *
 *  Method: a product of linear factors or a quadratic in tan(t) if d = e = 0; the linear equation if c = 0 and a = b;
 *  otherwise a quartic in tan(t/2), its roots with an imaginary part below 1e-6. The angles are sorted, and those
 *  within 1e-12 of the first of their group are dropped.
 *
 *  @param a_dA       a
 *  @param a_dB       b
 *  @param a_dC       c
 *  @param a_dD       d
 *  @param a_dE       e
 *  @param a_dF       f
 *  @param a_vdAngles out: the angles, ascending, room for 4; what stands beyond the count is of no meaning
 *  @return the number of different angles written, 0 to 4; RET_INDETERMINATE if every angle solves (a + f, b + f, c, d
 *          and e all 0); RET_IMPOSSIBLE if there is no solution, c = 0, a = b and exactly one of d and e is 0;
 *          otherwise no solution is told by the count 0. a_vdAngles is untouched if the result is not positive. */
NUV1MATH_API int SolveQuadTrig(double a_dA, double a_dB, double a_dC, double a_dD, double a_dE, double a_dF,
                               double* const a_vdAngles);

/** @} */

/** @name Random numbers
 *  **One state for the whole process, shared by all threads and not locked:** callers that draw from several threads
 *  serialise their calls. Loading the library seeds it with -1, so every process starts with the same sequence.
 *
 *  Limits: the generator that makes the leading digits repeats after 259200 values. From about a hundred thousand
 *  values on they are spread more evenly than chance, and at 300000 pairs of consecutive values fail a chi-square
 *  test: not for simulations that draw more than about a hundred thousand values, nor for cryptography.
 *
 *  Method: three linear congruential generators (moduli 259200, 134456, 243000), two of which form a value and the
 *  third of which draws from a table of 97. Source: C. Bays, S. D. Durham, ACM Trans. Math. Softw. 2 (1976) 59-64; for
 *  the normal deviates G. Marsaglia, T. A. Bray, SIAM Rev. 6 (1964) 260-264. @{ */

/** Restarts the sequence of uniform numbers. A normal number that waits from an earlier Randn is not dropped: the next
 *  Randn still returns it.
 *
 *  @param a_iSeed any value; there are only 259200 sequences, so different seeds can give the same one */
NUV1MATH_API void SetRandomSeed(int a_iSeed);

/** A uniform random number.
 *
 *  @return a value of [0, 1) */
NUV1MATH_API double Rand();

/** A uniform random number between two bounds: (high - low) Rand() + low.
 *
 *  @param a_dLow  low; may be greater than high
 *  @param a_dHigh high
 *  @return a value of [low, high), or (high, low] if low is greater; high itself can come by rounding. high - low must
 *          not overflow */
NUV1MATH_API double Rand(double a_dLow, double a_dHigh);

/** A random number of the standard normal distribution. Two are made at a time: every second call returns the second.
 *
 *  @return a value of mean 0 and standard deviation 1 */
NUV1MATH_API double Randn();

/** A random number of a normal distribution: Randn() sigma + mean.
 *
 *  @param a_dMean  mean
 *  @param a_dSigma sigma: standard deviation
 *  @return the value */
NUV1MATH_API double Randn(double a_dMean, double a_dSigma);

/** @} */

} // namespace nuv

#endif // NUV_NUV1MATH_H
