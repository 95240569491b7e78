// nuv1math.h: planar coordinate transformations and the numerical analysis that they need.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_NUV1MATH_H
#define NUV_NUV1MATH_H

/** @file
 *  The public interface of nuv1math: everything that the library exports, in namespace nuv. The page of conventions
 *  stands first; the description of a function states only what is its own. */

/** @page conventions Conventions
 *  These rules hold for every function, unless its description says otherwise.
 *
 *  @section which_fit Which fit
 *  | wanted                                                | function            | points    |
 *  |-------------------------------------------------------|---------------------|-----------|
 *  | the richest transformation that the points support    | CalcCoefs           | 2 or more |
 *  | one scale, one rotation, two translations             | CalcConformalCoefs  | 2 or more |
 *  | two scales, skew, one rotation, two translations      | CalcAffineCoefs     | 3 or more |
 *  | a projective transformation, as in a photo of a plane | CalcOmographicCoefs | 4 or more |
 *
 *  CalcCoefs is the usual choice: its result has one form for all three kinds, and it tells which kind it is. Subtract
 *  a local origin (a round number near the middle of the points) from the coordinates of both systems before the fit;
 *  the result maps coordinates that are reduced in this way. Look at the residuals afterwards: no fit reports points
 *  that fit badly.
 *
 *  @image html three-kinds.svg "What each kind can do to a square grid: its fit to the same four points"
 *
 *  @section control_points Control points, residuals and units
 *  Control points are points whose coordinates are known in a source and in a target system. They are passed as four
 *  arrays of equal length: a_vdX and a_vdY hold x and y in the source system; a_vdXa and a_vdYa hold X and Y of the
 *  same points in the target system. Every fit maps the source onto the target. The residual of a point is its computed
 *  position (the mapped source point) less its given target position. The fits minimise the sum of the squared
 *  residuals in X and Y; all points have the same weight.
 *
 *  Coordinates are in any units. Scales are target units per source unit. Angles are in radians and grow
 *  counter-clockwise, from the x axis towards the y axis.
 *
 *  @image html residuals.svg "A residual leads from the given to the computed position"
 *
 *  @section result_codes Result codes
 *  The library throws nothing and logs nothing. A function that can fail reports this by its return value; the two
 *  exceptions are InitCholLowTri (null pointers) and AffineUntransform (see there).
 *  | value     | name              | meaning                                                                          |
 *  |-----------|-------------------|----------------------------------------------------------------------------------|
 *  |         1 |                   | success: all outputs are written                                                 |
 *  | 0 or more |                   | polynomial Roots, SolveLinTrig, SolveQuadTrig: how many solutions are written    |
 *  |        -1 | RET_IMPOSSIBLE    | no result: too few points, a degenerate input, or no solution                    |
 *  |        -2 | RET_INDETERMINATE | no unique result: singular equations, or every value solves                      |
 *
 *  Each function states when it returns -1 or -2. Too few points give -1 in the conformal and affine fits and -2 in the
 *  omographic one. Functions that return bool return true for success. An output that was written before a failure was
 *  found stays written. Each function lists these outputs; it leaves all others untouched.
 *
 *  @section tolerance Degeneracy tolerance
 *  "v is zero" means -1e-12 <= v <= 1e-12 below, both ends included, unless another test is stated. The tolerance is
 *  absolute: it does not depend on the size of the data. Choose units in which the scales are at least 1e-5. A NaN is
 *  never zero.
 *
 *  @section special_values Special values
 *  No function checks its arguments for NaN or infinity. Such values take part in the arithmetic and in the tests, and
 *  the result code can be any. The length of a vector (a scale) is computed from the ratio of its components: the
 *  vector (NaN, 0) has the length 0; (0, NaN) and two infinities have the length NaN.
 *
 *  @section aliasing Aliasing
 *  An output must not overlap an input or another output, unless the function says otherwise. Arrays that are only
 *  read may overlap each other. An argument that is passed by value may come from a variable that is also an output.
 *
 *  @section threads Threads
 *  The functions for random numbers share one state in the process, without a lock. Every other function touches only
 *  its arguments and its own scratch memory: it may run on several threads at once if their outputs are different.
 *
 *  @section memory Memory
 *  Arrays and records belong to the caller. Only these functions allocate: InitCholLowTri (for the caller), CalcCoefs
 *  (one array of a_iPoints doubles, and only for a similarity that reverses the orientation), the polynomial Roots, and
 *  SolveQuadTrig when it solves a quartic. They release all memory before they return, except InitCholLowTri.
 *
 *  @section same_bits The same bits everywhere
 *  The library performs all operations on doubles in a fixed order, without contraction and without excess precision.
 *  Results that are made of additions, subtractions, multiplications, divisions, square roots and conversions of
 *  integers have the same bits on every platform. This requires that the calling thread rounds to nearest and does not
 *  flush subnormal numbers to zero (programs linked with fast-math can do so), and that allocations succeed. A NaN
 *  occurs at the same places on every platform, but its sign and payload can differ. Functions that take or return
 *  angles, and Randn, use the platform's sin, cos, tan, asin, acos, atan, atan2 and log, which differ between platforms
 *  in the last place or two.
 *
 *  @section broken_invariants Broken invariants
 *  Some checks guard conditions that hold for all arguments. One check guards a condition that the caller must ensure
 *  (see AffineUntransform). When a check fails, the library shows a text of two lines, "SOURCE:LINE assertion failure:"
 *  and the condition, and then ends the process with exit code 0. On Windows the text is in a message box. On POSIX
 *  systems it goes to standard error, and the library waits for a line of input if standard input is a terminal.
 */

/** The version of this header. The major number is also that of the library file (libnuv1math.so.1): programs that are
 *  compiled with a header work with every later library of the same major number. */
#define NUV1MATH_VERSION_MAJOR 1
/** Raised when functions are added or results change. */
#define NUV1MATH_VERSION_MINOR 0
/** Raised when nothing but defects and speed change. */
#define NUV1MATH_VERSION_PATCH 0
/** The version as one number for comparisons: 10203 is version 1.2.3. */
#define NUV1MATH_VERSION (NUV1MATH_VERSION_MAJOR * 10000 + NUV1MATH_VERSION_MINOR * 100 + NUV1MATH_VERSION_PATCH)

/** @cond */
/* NUV1MATH_API exports the functions when the library itself is built (NUV1MATH_BUILD), and imports them otherwise. A
 * program that is linked with the static library defines NUV1MATH_STATIC; the CMake target and pkg-config do so. */
#if defined(NUV1MATH_STATIC)
#define NUV1MATH_API
#elif defined(_WIN32)
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
/** @endcond */

/** The library. A record consists of doubles only, in the order given, without padding. */
namespace nuv {

/** No result: see the table of result codes. */
const int RET_IMPOSSIBLE = -1;

/** No unique result: see the table of result codes. */
const int RET_INDETERMINATE = -2;

/** @ingroup affine
 *  An affine transformation:
 *  @f[ X = a x + b y + c, \quad Y = d x + e y + f @f] */
struct TAffineCoefs
{
    double dA; /**< a: coefficient of x in X */
    double dB; /**< b: coefficient of y in X */
    double dC; /**< c: translation of X, target units */
    double dD; /**< d: coefficient of x in Y */
    double dE; /**< e: coefficient of y in Y */
    double dF; /**< f: translation of Y, target units */
};

/** @ingroup conformal
 *  A conformal transformation (a similarity that keeps the orientation):
 *  @f[ X = A x + B y + T_x, \quad Y = -B x + A y + T_y, \quad A = s \cos\theta, \quad B = -s \sin\theta @f]
 *  with the scale s and the rotation theta. The record also holds the linear part of the inverse; after a fit with
 *  a_bRigidInverse these two fields are A and -B instead. Every function uses the fields as they are and recomputes
 *  none from the others.
 *
 *  @image html conformal-parameters.svg "Scale and rotation of a conformal transformation" */
struct TConformalCoefs
{
    double dA;    /**< A = s cos(theta): coefficient of x in X and of y in Y */
    double dB;    /**< B = -s sin(theta): coefficient of y in X; -B is the coefficient of x in Y */
    double dTx;   /**< Tx: translation of X, target units */
    double dTy;   /**< Ty: translation of Y, target units */
    double dInvA; /**< cos(theta)/s = A/(A^2 + B^2): the dA of the inverse */
    double dInvB; /**< sin(theta)/s = -B/(A^2 + B^2): the dB of the inverse */
};

/** @ingroup omographic
 *  An omographic (projective) transformation:
 *  @f[ X = \frac{A x + B y + C}{W}, \quad Y = \frac{D x + E y + F}{W}, \quad W = G x + H y + 1 @f]
 *  With G = H = 0 it is affine.
 *
 *  Limits: the constant of W is fixed at 1. A transformation that takes the source origin to infinity (W = 0 at
 *  x = y = 0) therefore has no such record, and its coefficients grow without bound as the line W = 0 approaches the
 *  source origin. Put the source origin in the middle of the control points: a transformation that is finite over their
 *  area then has moderate coefficients. At a point with W = 0 the formulas give an infinity or NaN. */
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

/** @ingroup fits
 *  The kinds of transformation among which CalcCoefs chooses, from the poorest to the richest. */
enum enumMethodUsed
{
    METHOD_CONFORMAL = 0, /**< similarity, four coefficients, at least 2 points (CalcConformalCoefs) */
    METHOD_AFFINE = 1,    /**< affine, six coefficients, at least 3 points (CalcAffineCoefs) */
    METHOD_OMOGRAPHIC = 2 /**< projective, eight coefficients, at least 4 points (CalcOmographicCoefs) */
};

/** @cond */
/* CalcCoefs writes an enumMethodUsed of the size of int. With -fshort-enums, the default of bare-metal ARM compilers,
 * the caller would reserve one byte for it. */
typedef char nuv1math_needs_the_option_fno_short_enums[sizeof(enumMethodUsed) == sizeof(int) ? 1 : -1]; // NOLINT
/** @endcond */

/** @defgroup fits Transformation from control points
 *  Least-squares fits of the three kinds, and the choice among them. The page of conventions states what control points
 *  and residuals are.
 *  @{ */

/** Computes the richest transformation that the control points support. The result is one record for all kinds.
 *
 *  Limits: an omographic result is accepted if it is finite (read the limits of CalcOmographicCoefs), an affine one if
 *  its determinant is not zero (points on one line can pass, see CalcAffineCoefs), a conformal one always: equal target
 *  points give true with A and B zero or rounding noise.
 *
 *  Method: try the kinds in this order and take the first usable one.
 *  1. Omographic, if it is requested and a_iPoints >= 4. It is usable if CalcOmographicCoefs returns 1 and all eight
 *     coefficients are finite.
 *  2. Affine, if omographic or affine is requested and a_iPoints >= 3. It is usable if CalcAffineCoefs returns 1 and
 *     the determinant ea - db is not zero; a NaN determinant is usable. The tolerance is absolute, which has two
 *     effects. A regular transformation is passed over if its scales multiply to 1e-12 or less (pixels of 0.1 m in
 *     degrees): use smaller target units. A transformation that collapses the plane can pass if its coefficients are
 *     large, because of rounding.
 *  3. Conformal, in all other cases, also if a_Requested is not a value of the enumeration.
 *
 *  @param a_iPoints          number of control points
 *  @param a_vdX              x of the points in the source system, a_iPoints values
 *  @param a_vdY              y in the source system, a_iPoints values
 *  @param a_vdXa             X in the target system, a_iPoints values
 *  @param a_vdYa             Y in the target system, a_iPoints values
 *  @param a_bSameOrientation used by the conformal kind only. True: the similarity keeps the orientation of the axes.
 *                            False: it reverses the orientation, by a reflection of the target's Y axis:
 *                            X = A x + B y + C, Y = B x - A y + F (image rows that grow downwards, against a Y that
 *                            grows upwards)
 *  @param a_Requested        the richest kind that the caller accepts
 *  @param a_Used             out: the kind of the result
 *  @param a_Params           out: the transformation; dG = dH = 0 for the affine and conformal kinds
 *  @return true: a_Used and a_Params hold a transformation. False: a_iPoints < 2, or every allowed kind failed, or the
 *          array for a_bSameOrientation = false could not be allocated. a_Used is then untouched. a_Params is untouched
 *          too, unless the omographic fit was tried: it then holds values that must not be used.
 *
 *  @image html mirroring.svg "A negative sy, and a similarity that reverses the orientation" */
NUV1MATH_API bool CalcCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                            const double* a_vdYa, bool a_bSameOrientation, enumMethodUsed a_Requested,
                            enumMethodUsed& a_Used, TOmographicParams& a_Params);

/** Fits a conformal transformation (similarity) that keeps the orientation. It minimises the sum of squared residuals
 *  in X and Y. For a similarity that reverses the orientation call CalcCoefs.
 *
 *  Limits:
 *  - If all target points are equal, the result is 1 with A and B zero or rounding noise. The inverse fields are then
 *    NaN, infinite or meaningless, unless a_bRigidInverse is set.
 *  - The inverse fields are computed from the square of the scale. Below a scale of 7.5e-155 dInvB is infinite or NaN
 *    and dInvA loses digits; below 1.5e-162 both are infinite or NaN; above 1.3e154 both are 0. This does not apply if
 *    a_bRigidInverse is set.
 *  - If the squares of the source coordinates, counted from their mean, overflow, the result is 1 with A and B zero or
 *    NaN.
 *  - The test for equal source points is absolute. It also rejects points whose spread is below about 1e-6 units. It
 *    can miss equal points if their mean is rounded by more than that (three points at 1e11 + 0.1).
 *
 *  Method: closed form about the centroids. With the coordinates dx, dy, dX, dY that count from the means,
 *  @f[ S = \sum (dx^2 + dy^2), \quad A = \frac{\sum (dX\,dx + dY\,dy)}{S},
 *      \quad B = \frac{\sum (dX\,dy - dY\,dx)}{S} @f]
 *  A common offset of the coordinates only adds the rounding of the means, which grows with the offset and the number
 *  of points. Source: the four-parameter (Helmert) transformation, as in C. D. Ghilani,
 *  Adjustment Computations, chapter on coordinate transformations; and S. Umeyama, IEEE Trans. Pattern Anal. Mach.
 *  Intell. 13 (1991) 376-380, for the same minimum in any dimension.
 *
 *  @param a_iPoints       number of control points, at least 2
 *  @param a_vdX           x of the points in the source system, a_iPoints values
 *  @param a_vdY           y in the source system, a_iPoints values
 *  @param a_vdXa          X in the target system, a_iPoints values
 *  @param a_vdYa          Y in the target system, a_iPoints values
 *  @param a_bRigidInverse false: the inverse fields describe the inverse. True: the inverse fields are A and -B for any
 *                         scale, which describes the inverse of a rigid motion (A^2 + B^2 = 1) only
 *  @param a_Coefs         out: the transformation
 *  @return 1; RET_IMPOSSIBLE with a_Coefs untouched if a_iPoints < 2 or S is zero (all source points equal). */
NUV1MATH_API int CalcConformalCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY,
                                    const double* a_vdXa, const double* a_vdYa, bool a_bRigidInverse,
                                    TConformalCoefs& a_Coefs);

/** Fits an affine transformation. It minimises the sums of squared residuals in X and in Y independently.
 *
 *  Limits:
 *  - **The fit does not detect source points on one line, nor fewer than three different source points.** It then
 *    returns 1 with very large or meaningless coefficients. The determinant ae - db does not reveal this. A caller that
 *    cannot exclude such points must test them before the fit.
 *  - Let r be the spread (root mean square) of the source points across their best line, divided by their spread along
 *    it. The errors of a, b, d and e, relative to the largest of them, are typically 3e-17/r^2 to 3e-16/r^2, and at
 *    most 3e-15/r^2, for up to 1000 points. They are typically 1e-15/r^2 for 10 000 points and 4e-15/r^2 for 100 000
 *    points, up to ten times that. No digit is left below r = 3e-8.
 *  - Target points on one line show in a determinant that is tiny beside the squares of the coefficients.
 *
 *  Method: normal equations in coordinates that are centred on their means, so that a common offset costs no more than
 *  the rounding of the coordinates; 3x3 Gaussian elimination with row pivoting, which replaces a pivot of exactly zero
 *  by 1e-14. Source: G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed., sections 3.4 (elimination) and 5.3
 *  (normal equations).
 *
 *  @param a_iPoints number of control points, at least 3
 *  @param a_vdX     x of the points in the source system, a_iPoints values
 *  @param a_vdY     y in the source system, a_iPoints values
 *  @param a_vdXa    X in the target system, a_iPoints values
 *  @param a_vdYa    Y in the target system, a_iPoints values
 *  @param a_Coefs   out: the transformation
 *  @return 1; RET_IMPOSSIBLE with a_Coefs untouched if a_iPoints < 3. */
NUV1MATH_API int CalcAffineCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                                 const double* a_vdYa, TAffineCoefs& a_Coefs);

/** Fits an omographic (projective) transformation. It minimises the sum of squared residuals in X and Y.
 *
 *  Limits:
 *  - **The fit uses the coordinates as they are, without centring or scaling: subtract a local origin from both
 *    systems first.** If the source or target coordinates are offset from their origin by more than some hundred times
 *    their extent (some tens of times for four badly placed points), the result can be useless and still be 1, or
 *    RET_INDETERMINATE although the points determine a transformation well.
 *  - The constant of the denominator is fixed at 1 (see TOmographicParams). Points of a transformation that takes the
 *    source origin to infinity can give RET_INDETERMINATE, 1 with eight NaN, or 1 with finite coefficients that fit
 *    badly.
 *  - The points determine the eight coefficients only if there are four of them of which no three lie on a line.
 *    Otherwise the fit can report this, or return 1 with arbitrary values.
 *  - So test the coefficients for finiteness and look at the residuals.
 *
 *  Method: the equations multiplied by the denominator,
 *  @f[ X = A x + B y + C - G X x - H X y, \quad Y = D x + E y + F - G Y x - H Y y @f]
 *  are linear in the eight coefficients. Their normal equations are solved by Cholesky factorisation, with the bits
 *  that UpdateNormMatrixLowTri (for each point the X equation, then the Y equation), CholeskyLowTri and SolveCholLowTri
 *  give. At most four Gauss-Newton iterations on the true residuals follow. They end when every correction is below
 *  1e-8 in absolute value, or when an iteration cannot be factorised; the coefficients reached before it then remain.
 *  Neither this nor the end after four iterations is an error. Source: R. Hartley, A. Zisserman, Multiple View
 *  Geometry, 2nd ed., sections 4.1 and 4.5 (and 4.4 for the normalisation that is *not* done here); A. Bjorck,
 *  Numerical Methods for Least Squares Problems, section 9.2.
 *
 *  @param a_iPoints number of control points, at least 4
 *  @param a_vdX     x of the points in the source system, a_iPoints values
 *  @param a_vdY     y in the source system, a_iPoints values
 *  @param a_vdXa    X in the target system, a_iPoints values
 *  @param a_vdYa    Y in the target system, a_iPoints values
 *  @param a_Params  out: the transformation
 *  @return 1; RET_INDETERMINATE with a_Params untouched if a_iPoints < 4; RET_INDETERMINATE if the linear equations
 *          cannot be factorised: a_Params then holds their right-hand side, which must not be used. */
NUV1MATH_API int CalcOmographicCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                                     const double* a_vdYa, TOmographicParams& a_Params);

/** @} */

/** @defgroup affine Affine transformations
 *  An affine transformation has coefficients (TAffineCoefs) and geometric parameters. The parameters are
 *  - sx: the scale along the source x axis;
 *  - theta: the rotation of the image of the x axis;
 *  - sy: the scale of the source y axis, measured perpendicularly to the image of the x axis;
 *  - phi: the skew. For sx, sy > 0 and |phi| < pi/2 the image of the y axis has the length sy/cos(phi) and leans by phi
 *    from the perpendicular towards the image of the x axis;
 *  - tx, ty: the translations.
 *
 *  The coefficients are
 *  @f[ a = s_x \cos\theta, \quad b = s_y (\cos\theta \tan\varphi - \sin\theta), \quad c = t_x @f]
 *  @f[ d = s_x \sin\theta, \quad e = s_y (\sin\theta \tan\varphi + \cos\theta), \quad f = t_y @f]
 *
 *  @image html affine-parameters.svg "The unit square and its image: sx, sy, theta and phi"
 *  @{ */

/** Computes affine coefficients from geometric parameters. A skew of +-pi/2 is not refused: tan(phi), about 1.6e16
 *  there, enters b and e like any other value.
 *
 *  @param a_dSx    sx: scale along the source x axis; AffineCoefsToParam returns a negative one as -sx with -sy and
 *                  theta + pi
 *  @param a_dSy    sy: scale across the image of the x axis; negative for a mirror image
 *  @param a_dPhi   phi: skew angle, radians
 *  @param a_dTheta theta: rotation angle, radians
 *  @param a_dTx    tx: translation of X, target units
 *  @param a_dTy    ty: translation of Y, target units
 *  @param a_Coefs  out: the transformation, all six fields */
NUV1MATH_API void AffineParamsToCoefs(double a_dSx, double a_dSy, double a_dPhi, double a_dTheta, double a_dTx,
                                      double a_dTy, TAffineCoefs& a_Coefs);

/** Computes geometric parameters from affine coefficients.
 *
 *  Method: sx is the length of (a, d) and theta is its direction. The column (b, e), turned back by theta, is
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

/** Computes the inverse affine transformation (Cramer's rule).
 *
 *  @param a_Coefs   the transformation
 *  @param a_Inverse out: its inverse; must be a different record, the same record would get wrong values
 *  @return 1; RET_IMPOSSIBLE with a_Inverse untouched if the determinant ae - db is zero. This includes regular
 *          transformations whose scales multiply to 1e-12 or less. */
NUV1MATH_API int AffineCoefsToInvCoefs(const TAffineCoefs& a_Coefs, TAffineCoefs& a_Inverse);

/** Maps a target point back to the source: solves a x + b y = X - c, d x + e y = Y - f by the two-unknown Roots.
 *
 *  Limit: **The process ends if the determinant ae - db is zero and e (X - c) - b (Y - f) is not** (see Broken
 *  invariants in the conventions). This includes regular transformations whose scales multiply to 1e-12 or less (pixels
 *  of 0.1 m in degrees). If both are zero, the result is (0, 0), even if the equations contradict each other, as they
 *  can when all coefficients are 0. If the determinant can be zero, call AffineCoefsToInvCoefs or Roots instead: they
 *  report it.
 *
 *  @param a_Coefs the transformation
 *  @param a_dXa   X of the target point
 *  @param a_dYa   Y of the target point
 *  @param a_dX    out: x of the source point; 0 if the determinant is zero
 *  @param a_dY    out: y of the source point; 0 if the determinant is zero */
NUV1MATH_API void AffineUntransform(const TAffineCoefs& a_Coefs, double a_dXa, double a_dYa, double& a_dX,
                                    double& a_dY);

/** @} */

/** @defgroup conformal Conformal transformations
 *  Parameters, coefficients and inverse of a similarity that keeps the orientation (TConformalCoefs).
 *  @{ */

/** Computes conformal coefficients from scale, rotation and translations.
 *
 *  Limit: the inverse fields are infinite or NaN if 1/s is infinite: for s = 0 and for magnitudes of s below 5.6e-309.
 *
 *  @param a_dScale s: scale; ConformalCoefsToParam returns a negative one as -s with theta + pi
 *  @param a_dAngle theta: rotation angle, radians, positive counter-clockwise
 *  @param a_dTx    translation of X, target units
 *  @param a_dTy    translation of Y, target units
 *  @param a_Coefs  out: the transformation, all six fields */
NUV1MATH_API void ConformalParamsToCoefs(double a_dScale, double a_dAngle, double a_dTx, double a_dTy,
                                         TConformalCoefs& a_Coefs);

/** Computes scale, rotation and translations from conformal coefficients.
 *
 *  @param a_Coefs  the transformation; the inverse fields are not used
 *  @param a_dScale out: s >= 0
 *  @param a_dAngle out: theta in [0, 2 pi], both ends included; -0.0 occurs; 0 if the scale is zero
 *  @param a_dTx    out: translation of X
 *  @param a_dTy    out: translation of Y
 *  @return 1; RET_IMPOSSIBLE if the scale is zero. All four outputs are written in both cases. */
NUV1MATH_API int ConformalCoefsToParam(const TConformalCoefs& a_Coefs, double& a_dScale, double& a_dAngle,
                                       double& a_dTx, double& a_dTy);

/** Computes the inverse conformal transformation. Its linear part is taken from the inverse fields of the record.
 *
 *  @param a_Coefs   the transformation
 *  @param a_Inverse out: its inverse, all six fields; must be a different record, the same record would get wrong
 *                   values */
NUV1MATH_API void ConformalCoefsToInvCoefs(const TConformalCoefs& a_Coefs, TConformalCoefs& a_Inverse);

/** Converts a conformal transformation to an affine one: a = e = A, b = B, d = -B, c = Tx, f = Ty.
 *
 *  @param a_Coefs  the transformation; the inverse fields are not used
 *  @param a_Affine out: the same transformation, all six fields */
NUV1MATH_API void ConformalCoefsToAffineCoefs(const TConformalCoefs& a_Coefs, TAffineCoefs& a_Affine);

/** @} */

/** @defgroup omographic Omographic transformations
 *  The record TOmographicParams holds every kind of transformation. CalcOmographicCoefs and CalcCoefs compute it.
 *  @{ */

/** Converts an affine transformation to an omographic one: the six coefficients in order, dG = dH = 0.
 *
 *  @param a_Affine the transformation
 *  @param a_Params out: the same transformation, all eight fields */
NUV1MATH_API void AffineCoefsToOmographicCoefs(const TAffineCoefs& a_Affine, TOmographicParams& a_Params);

/** @} */

/** @defgroup packed Normal equations and Cholesky, packed
 *  Linear least squares for n unknowns x. Each observation states a.x = l, with the coefficients a and the observed
 *  value l. The functions accumulate the normal matrix N and the right-hand side u, factorise N, and solve for x:
 *  @f[ N = \sum a a^T, \quad u = \sum a l, \quad N = L L^T, \quad N x = u @f]
 *  Every observation has weight 1; for weight w multiply its coefficients and its value
 *  by sqrt(w).
 *
 *  A packed matrix holds the lower triangle of a symmetric n x n matrix, row by row, in n(n+1)/2 doubles. Element
 *  (i, j) with j <= i, counted from 0, is at i(i+1)/2 + j. The same array first holds N and then L.
 *
 *  @image html packed-triangle.svg "Where the elements of a packed matrix of four unknowns are"
 *
 *  Order of calls: InitCholLowTri (or the caller's own arrays, filled with zeros); UpdateNormMatrixLowTri for each
 *  observation; CholeskyLowTri; SolveCholLowTri if that returned true; DeleteCholLowTri.
 *
 *  The functions check neither pointers nor indices. Source: G. H. Golub, C. F. Van Loan, Matrix Computations, 4th
 *  ed., sections 4.2 (Cholesky) and 5.3 (normal equations).
 *  @{ */

/** Allocates a packed matrix and a vector for n unknowns and fills them with zeros. If either allocation fails, both
 *  addresses are null and nothing stays allocated. Release the arrays by DeleteCholLowTri only.
 *
 *  @param a_iUnknowns n; a value below 1 counts as 0, and the addresses are then what the allocator returns for a size
 *                     of 0, possibly null
 *  @param a_pMatrix   out: address of n(n+1)/2 doubles
 *  @param a_pVector   out: address of n doubles */
NUV1MATH_API void InitCholLowTri(int a_iUnknowns, double** a_pMatrix, double** a_pVector);

/** Releases what InitCholLowTri allocated. Null pointers are allowed.
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

/** Adds one observation that has coefficients in k columns only. The columns may come in any order.
 *
 *  Limit: repeated columns are not merged. If entries p > q have the same column, its diagonal element receives
 *  v[p]^2 + v[q]^2 + v[p] v[q]. An observation with the sum v[p] + v[q] in that column would add v[p] v[q] twice.
 *
 *  @param a_iUnknowns not used: indices are not checked against it
 *  @param a_vdMatrix  in and out: packed N
 *  @param a_vdVector  in and out: u
 *  @param a_iCount    k; nothing happens if it is less than 1
 *  @param a_vdValues  v: the coefficients, k values
 *  @param a_viIndices their columns, counted from 0, k values; an entry with a negative index is skipped
 *  @param a_dValue    l: the observed value */
NUV1MATH_API void UpdateNormMatrixLowTri(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, int a_iCount,
                                         const double* a_vdValues, const int* a_viIndices, double a_dValue);

/** Factorises N = L L^T in place, column by column, without pivoting and without tolerance.
 *
 *  Limit: a radicand (the value under the square root of a diagonal element) of exactly 0 is accepted. In the last row
 *  the result is then true, and SolveCholLowTri divides by zero. In an earlier row the column below becomes infinite or
 *  NaN, and the factorisation fails at the next diagonal element.
 *
 *  @param a_iUnknowns n; if it is less than 1, the result is true and nothing is touched
 *  @param a_vdMatrix  in: packed N; out: packed L, n(n+1)/2 values
 *  @return true; false if a radicand is negative or NaN. The columns before that diagonal element then hold L; the rest
 *          of the triangle, the diagonal element included, is unchanged. */
NUV1MATH_API bool CholeskyLowTri(int a_iUnknowns, double* a_vdMatrix);

/** Solves L L^T x = u in place. One factor serves any number of calls.
 *
 *  @param a_iUnknowns n; nothing happens if it is less than 1
 *  @param a_vdFactor  packed L of CholeskyLowTri, n(n+1)/2 values
 *  @param a_vdVector  in: u; out: x, n values */
NUV1MATH_API void SolveCholLowTri(int a_iUnknowns, const double* a_vdFactor, double* a_vdVector);

/** @} */

/** @defgroup linear Linear systems
 *  Two equations with two unknowns. Cholesky factorisation solves larger systems.
 *  @{ */

/** Solves two linear equations by Cramer's rule:
 *  @f[ a_{11} x + a_{12} y = b_1, \quad a_{21} x + a_{22} y = b_2 @f]
 *
 *  Limits: the tolerances are absolute, so a well-conditioned system with small coefficients counts as singular: scale
 *  the equations. In a singular system only the numerator of x, a22 b1 - a12 b2, is tested, and not that of y: if all
 *  coefficients are 0, the result is RET_INDETERMINATE for any finite b1 and b2.
 *
 *  @param a_dA11 a11
 *  @param a_dA12 a12
 *  @param a_dA21 a21
 *  @param a_dA22 a22
 *  @param a_dB1  b1
 *  @param a_dB2  b2
 *  @param a_dX   out: x
 *  @param a_dY   out: y
 *  @return 1. If the determinant a11 a22 - a12 a21 is zero, x and y are untouched and the result is RET_INDETERMINATE
 *          (usually infinitely many solutions) if the numerator of x is zero too, and RET_IMPOSSIBLE if it is not. */
NUV1MATH_API int Roots(double a_dA11, double a_dA12, double a_dA21, double a_dA22, double a_dB1, double a_dB2,
                       double& a_dX, double& a_dY);

/** @} */

/** @defgroup dense Cholesky, dense
 *  The same factorisation and solution on a full n x n matrix, stored row by row: element (i, j), counted from 0, is at
 *  i n + j. The functions read and write only the lower triangle with the diagonal; the strict upper triangle may hold
 *  anything and keeps it. Order of calls: Cholesky; SolveChol with the same array if that returned true.
 *  @{ */

/** Factorises A = L L^T in place, column by column, without pivoting and without tolerance.
 *
 *  Limit: a radicand (the value under the square root of a diagonal element) of exactly 0 is accepted. In the last row
 *  the result is then true, and SolveChol divides by zero. In an earlier row the column below becomes infinite or NaN,
 *  and the factorisation fails at the next diagonal element.
 *
 *  @param a_iN       n; if it is less than 1, the result is true and nothing is touched
 *  @param a_vdMatrix in: lower triangle of A; out: L; n^2 values
 *  @return true; false if a radicand is negative or NaN. The columns before that diagonal element then hold L; the rest
 *          of the triangle, the diagonal element included, is unchanged. */
NUV1MATH_API bool Cholesky(int a_iN, double* a_vdMatrix);

/** Solves L L^T x = b in place. One factor serves any number of calls. The backward substitution subtracts its terms in
 *  ascending order; SolveCholLowTri subtracts them in descending order, so the two can differ in the last bits.
 *
 *  @param a_iN       n; nothing happens if it is less than 1
 *  @param a_vdFactor L of Cholesky, n^2 values
 *  @param a_vdVector in: b; out: x, n values */
NUV1MATH_API void SolveChol(int a_iN, const double* a_vdFactor, double* a_vdVector);

/** @} */

/** @defgroup polynomials Polynomials
 *  Real roots of polynomials of any degree. Read the limits: roots can be missing without notice.
 *  @{ */

/** Computes the real roots of a polynomial with real coefficients, as eigenvalues of its companion matrix.
 *
 *  Limits:
 *  - **The count can be smaller than the number of real roots, without notice.** The iteration gives up on some
 *    ordinary polynomials, and the eigenvalues that it has not found by then are never reported: x^4 - 2x^2 + 1, with
 *    the double roots 1 and -1, gives 0 roots. To find out, call with an infinite tolerance: if the coefficients are
 *    finite and the first is not 0, a result below the degree means that eigenvalues are missing.
 *  - How often it gives up: of all polynomials with integer coefficients from -3 to 3, on none of degree 2 and 3, on 4
 *    of 14406 of degree 4 and on 12 of 100842 of degree 5, all of them with multiple roots; of the squares of those of
 *    degree 2, 3 and 4, on 40 of 294, 240 of 2058 and 2536 of 14406; of products of random linear factors, on none of
 *    1000 for each of ten degrees from 2 to 20.
 *  - A root of multiplicity k splits into neighbours at a distance of about the k-th root of 1e-16 (1e-8 for a double,
 *    1e-5 for a triple root), as real values or as complex pairs. A pair within the tolerance counts as two real roots,
 *    a pair outside it as none. With the tolerance 1e-6 a triple root is usually reported once.
 *  - Scale x so that the roots are about 1 in size. The roots of x^n - 1 are good to 14 digits up to degree 200. Those
 *    of x^n - 2^n are wrong in the fourth digit at degree 60, and their number is wrong at 93 of the 128 degrees from
 *    73 to 200.
 *  - The roots are as exact as the eigenvalues. They are not polished.
 *  - The function multiplies the other coefficients by the reciprocal of the leading one. Neither that reciprocal nor
 *    the products may overflow.
 *  - The time grows with the cube of the degree, the memory with its square.
 *
 *  Method: leading zero coefficients lower the degree; trailing ones are roots 0. The companion matrix of the rest is
 *  balanced, reduced to Hessenberg form and solved by Francis' double-shift QR iteration, with at most 30 iterations
 *  for an eigenvalue. Source: A. Edelman, H. Murakami, Math. Comp. 64 (1995) 763-776; B. N. Parlett, C. Reinsch, Numer.
 *  Math. 13 (1969) 293-304; R. S. Martin, G. Peters, J. H. Wilkinson, Numer. Math. 14 (1970) 219-231.
 *
 *  @param iDegree     degree, 0 or more
 *  @param vdA         iDegree + 1 coefficients, that of the highest power first; a coefficient counts as zero only if
 *                     it is exactly 0
 *  @param a_vdRoots   out: the roots, room for iDegree values; only as many as the result says are written. One
 *                     exception: if memory is short, zero roots may be written although the result is 0
 *  @param a_dTolerance an eigenvalue counts as real if its imaginary part is below this in absolute value; with 0, a
 *                     negative value or NaN only the roots 0 of trailing zeros are reported
 *  @return the number of roots written. A multiple root counts as often as it was found. The roots that are exactly 0
 *          because of trailing zeros come first, the others follow in no particular order. RET_IMPOSSIBLE for a
 *          constant other than 0, and RET_INDETERMINATE if all coefficients are 0; a_vdRoots is then untouched. If
 *          memory is short, the result is 0, or only the roots that are exactly 0, or (if only the table of column
 *          addresses could not be allocated) the roots of the unbalanced matrix. */
NUV1MATH_API int Roots(unsigned int iDegree, const double* vdA, double* a_vdRoots, double a_dTolerance);

/** @} */

/** @defgroup trigonometric Trigonometric equations
 *  Angles are in [0, 2 pi], both ends included; -0.0 occurs. Coefficients are compared exactly.
 *
 *  Limit: squares and products of the coefficients must neither overflow nor underflow (magnitudes of about 1e-150 to
 *  1e150). Otherwise angles can be wrong, missing or invented, without notice: scale the equation by a power of 2. NaN
 *  coefficients can give NaN angles.
 *  @{ */

/** Finds the angles t that solve a linear equation in their cosine and sine:
 *  @f[ a \cos t + b \sin t + c = 0 @f]
 *
 *  Limits: near a tangent solution, where a^2 + b^2 is close to c^2, rounding decides between no, one and two angles.
 *  A tangent solution is found twice if a = 0, and once if b = 0 or if rounding leaves the discriminant exactly 0.
 *
 *  Method: by asin, acos or atan2 if a coefficient is 0. Otherwise the quadratic (c - a) u^2 + 2 b u + (a + c) = 0 in u
 *  = tan(t/2), whose roots are computed from the discriminant without cancellation.
 *
 *  @param a_dA       a
 *  @param a_dB       b
 *  @param a_dC       c
 *  @param a_vdAngles out: the angles, room for 2; ascending, except that the greater one comes first if c = 0, a > 0
 *                    and b is not 0
 *  @return the number of angles written, 0 to 2. RET_INDETERMINATE if a = b = c = 0 (every angle solves). If there is
 *          no solution: RET_IMPOSSIBLE if a or b is 0, and the count 0 if neither is. a_vdAngles is untouched if the
 *          result is not positive. */
NUV1MATH_API int SolveLinTrig(double a_dA, double a_dB, double a_dC, double* const a_vdAngles);

/** Finds the angles t that solve a quadratic equation in their cosine and sine:
 *  @f[ a \cos^2 t + b \sin^2 t + c \sin t \cos t + d \cos t + e \sin t + f = 0 @f]
 *
 *  Limits:
 *  - A quartic is solved unless d = e = 0, or c = 0 and a = b. The limits of the polynomial Roots then hold: **tangent
 *    solutions, which are double roots, can be missed, or found twice at a distance of about 1e-8; and angles can be
 *    missed where the iteration gives up.** (cos(t) - 0.5)^2 = 0 gives no angle, (cos(t) - 0.6)^2 = 0 gives each of its
 *    two angles twice.
 *  - 0 and 2 pi count as different angles.
 *  - If memory is short, the angles of a quartic are missing without notice.
 *
 *  Method: a product of linear factors or a quadratic in tan(t) if d = e = 0; the linear equation if c = 0 and a = b;
 *  otherwise a quartic in tan(t/2), of which the roots with an imaginary part below 1e-6 are used. The angles are
 *  sorted, and angles within 1e-12 of the first of their group are dropped.
 *
 *  @param a_dA       a
 *  @param a_dB       b
 *  @param a_dC       c
 *  @param a_dD       d
 *  @param a_dE       e
 *  @param a_dF       f
 *  @param a_vdAngles out: the angles, ascending, room for 4; values beyond the count are meaningless
 *  @return the number of different angles written, 0 to 4. RET_INDETERMINATE if every angle solves (a + f, b + f, c, d
 *          and e are all 0). If there is no solution: RET_IMPOSSIBLE if c = 0, a = b and exactly one of d and e is 0,
 *          and the count 0 otherwise. a_vdAngles is untouched if the result is not positive. */
NUV1MATH_API int SolveQuadTrig(double a_dA, double a_dB, double a_dC, double a_dD, double a_dE, double a_dF,
                               double* const a_vdAngles);

/** @} */

/** @defgroup random Random numbers
 *  **The generator has one state for the whole process, which all threads share without a lock:** callers that draw on
 *  several threads must serialise their calls. Loading the library seeds it with -1, so every process starts with the
 *  same sequence.
 *
 *  Limits:
 *  - The values are spread more evenly than chance, and their leading digits repeat after 259200 values.
 *  - A chi-square test at 1 % on 100 equal cells rejects 6 % of all seeds at 500 values, 15 % at 1000 and half at 3000,
 *    always because the counts are too even.
 *  - The variance of the mean of n values, divided by that of independent values, is 0.95 for n = 1000, 0.84 for 3000
 *    and 0.2 for 10 000 (Randn: 1.0, 0.96 and 0.43).
 *  - Pairs of consecutive values pass chi-square tests up to 50 000 pairs and fail them at 200 000.
 *  - So draw at most 1000 values where their scatter itself matters, as in a statistical test, and at most 100 000 to
 *    compute an average. Do not use them for cryptography.
 *
 *  Method: three linear congruential generators (moduli 259200, 134456, 243000). Two of them form a value; the third
 *  draws it from a table of 97. Source: C. Bays, S. D. Durham, ACM Trans. Math. Softw. 2 (1976) 59-64; for the normal
 *  numbers G. Marsaglia, T. A. Bray, SIAM Rev. 6 (1964) 260-264.
 *  @{ */

/** Restarts the sequence of uniform numbers. It does not drop the second normal number of a pair (see Randn): the next
 *  Randn still returns it.
 *
 *  @param a_iSeed any value; there are only 259200 sequences, so different seeds can give the same one */
NUV1MATH_API void SetRandomSeed(int a_iSeed);

/** Draws a uniform random number.
 *
 *  @return a value of [0, 1) */
NUV1MATH_API double Rand();

/** Draws a uniform random number between two bounds: (high - low) Rand() + low.
 *
 *  @param a_dLow  low; may be greater than high
 *  @param a_dHigh high; high - low must not overflow
 *  @return a value of [low, high), or of (high, low] if low is greater; rounding can give high itself */
NUV1MATH_API double Rand(double a_dLow, double a_dHigh);

/** Draws a random number of the standard normal distribution. The function computes two numbers at a time, and every
 *  second call returns the second one.
 *
 *  @return a value of mean 0 and standard deviation 1 */
NUV1MATH_API double Randn();

/** Draws a random number of a normal distribution: Randn() sigma + mean.
 *
 *  @param a_dMean  mean
 *  @param a_dSigma sigma: standard deviation
 *  @return the value */
NUV1MATH_API double Randn(double a_dMean, double a_dSigma);

/** @} */

} // namespace nuv

#endif // NUV_NUV1MATH_H
