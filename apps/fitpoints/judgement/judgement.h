// judgement.h: which transformation control points support, how good it is, and which of the points are doubtful.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_JUDGEMENT_H
#define NUV_JUDGEMENT_H

#include <nuv1math.h>

/** @file
 *  The judgement module: it fits control points with the library nuv1math and judges the result. It computes local
 *  origins, a table of the kinds of transformation, leave-one-out errors, suspected blunders, covariances, and images of
 *  points with their standard deviations. It reads and writes no files, and it makes no texts: reasons are values of
 *  enumerations.
 *
 *  @par Which function
 *  | wanted                                                     | function                                   |
 *  |------------------------------------------------------------|--------------------------------------------|
 *  | everything in one call                                     | Judge                                      |
 *  | why points do not determine a kind                         | FindSupport                                |
 *  | the fit of one kind                                        | FitKind                                    |
 *  | the errors of all kinds, and the choice among them         | JudgeKinds, ChooseKind                     |
 *  | leave-one-out errors of one fit                            | LeaveOneOut                                |
 *  | suspected blunders                                         | FindBlunders                               |
 *  | covariances                                                | CovarianceOfCoefs, CovarianceOfImage, ...  |
 *  | images of points, or source points of images               | TransformPoint, InversePoint               |
 *
 *  @par Points and frames
 *  Control points are passed as four arrays of equal length, as to the library (TControlPoints). A frame is a pair of
 *  origins, one for each system (TOrigins), from which coordinates count. Judge takes coordinates as they are given and
 *  reduces them to local origins itself. All functions on fits (FitKind, LeaveOneOut, ...) take coordinates in the frame
 *  of the fit: call FindOrigins and ReducePoints before them. An index is the index in these arrays, from 0.
 *
 *  @par Residuals and units
 *  A residual is computed less given. Residuals, RMS and standard deviations are in target units, unless the name says
 *  Source. A standard deviation is that of one coordinate. All points have weight 1.
 *
 *  @par Results
 *  A function that can fail returns an enumReason: REASON_NONE for success. Unless a function says otherwise, its
 *  outputs are untouched after a failure. Arguments are not checked for null pointers or NaN.
 *
 *  @par Memory and threads
 *  Arrays and records belong to the caller. A function that says so allocates scratch arrays by malloc and releases them
 *  before it returns; if there is no memory, it returns REASON_NO_MEMORY. Nothing is thrown. There is no state: every
 *  function may run on several threads at once if their outputs are different.
 *
 *  @par The same bits everywhere
 *  The module uses additions, subtractions, multiplications, divisions, square roots, comparisons and those functions of
 *  the library that are exact in this sense. Tail probabilities are finite series. So all results have the same bits on
 *  every platform, under the conditions of nuv1math.h. The only exceptions are the angles and the skew of TShape, which
 *  come from the library's AffineCoefsToParam and ConformalCoefsToParam; nothing else depends on them.
 *
 *  @par Sources of the methods
 *  - Leave-one-out errors by the hat matrix, studentised residuals: R. D. Cook, S. Weisberg, Residuals and Influence in
 *    Regression, chapter 2.
 *  - Test of blunders: W. Baarda, A Testing Procedure for Use in Geodetic Networks (1968); A. J. Pope, NOAA Technical
 *    Report NOS 65 NGS 1 (1976), for an unknown standard deviation. Groups of points and masking: B. Rosner,
 *    Technometrics 25 (1983) 165-172; F. Kianifard, W. H. Swallow, JASA 91 (1996) 1030-1041.
 *  - Tail of the F distribution: M. Abramowitz, I. A. Stegun, Handbook of Mathematical Functions, 26.6.4.
 *  - Gauss-Newton iterations, covariances: A. Bjorck, Numerical Methods for Least Squares Problems, chapters 1 and 9.
 *  - Error ellipse: C. D. Ghilani, Adjustment Computations, chapter on error ellipses.
 *  - Sums and products of two doubles without error: T. J. Dekker, Numer. Math. 18 (1971) 224-242. */

/** The judgement module. Its records have no pointers but those of TControlPoints. A flag is an int of 0 or 1. */
namespace judgement {

/** Number of kinds: the values of nuv::enumMethodUsed, from 0. */
const int KINDS = 3;

/** Coefficients of nuv::TOmographicParams, and the length of a packed lower triangle of that order. */
const int COEFS = 8;
const int COVARIANCES = 36;

/** The level that FindBlunders and Judge are usually called with: the probability that a set of normally distributed
 *  residuals without a blunder has a suspected point. */
const double USUAL_LEVEL = 0.01;

/** Why there is no result. */
enum enumReason
{
    REASON_NONE = 0,              /**< there is a result */
    REASON_NO_MEMORY = 1,         /**< a scratch array could not be allocated */
    REASON_TOO_FEW_POINTS = 2,    /**< fewer points than the kind needs (LeastPoints) */
    REASON_SOURCE_EQUAL = 3,      /**< all source points are equal: no transformation */
    REASON_TARGET_EQUAL = 4,      /**< all target points are equal: no transformation */
    REASON_SOURCE_TOO_LARGE = 5,  /**< source points are more than 1e150 apart: their squares are beyond a double */
    REASON_TARGET_TOO_LARGE = 6,  /**< target points are more than 1e150 apart */
    REASON_SOURCE_ON_LINE = 7,    /**< the source points lie on one line: no affine or omographic kind */
    REASON_TARGET_ON_LINE = 8,    /**< the target points lie on one line: no affine or omographic kind */
    REASON_SOURCE_NO_FOUR = 9,    /**< all source points but one lie on a line: no omographic kind */
    REASON_TARGET_NO_FOUR = 10,   /**< all target points but one lie on a line: no omographic kind */
    REASON_SPREAD_IS_ZERO = 11,   /**< the library takes the spread of the source points (below 1e-6) as zero */
    REASON_AFFINE_COLLAPSES = 12, /**< the affine fit collapses the plane: its determinant counts as zero */
    REASON_OMOGRAPHIC_UNSOLVABLE = 13, /**< the equations of the omographic fit cannot be solved */
    REASON_COEFS_NOT_FINITE = 14,      /**< the coefficients of the omographic fit are not finite */
    REASON_RESIDUALS_NOT_FINITE = 15,  /**< a residual, or the sum of their squares, is not finite */
    REASON_NO_REDUNDANCY = 16,         /**< too few points to judge the kind: fewer than LeastPoints + 1 */
    REASON_DEPENDS_ON_POINT = 17,      /**< without one of the points the others do not determine the kind */
    REASON_SINGULAR = 18,              /**< the normal equations of the fit cannot be factorised */
    REASON_NOT_INVERTIBLE = 19         /**< the transformation has no inverse at the point, or it is not finite */
};

/** What Judge is asked for. The first three values are those of nuv::enumMethodUsed. */
enum enumMethod
{
    ASK_CONFORMAL = 0,  /**< this kind, or a failure */
    ASK_AFFINE = 1,     /**< this kind, or a failure */
    ASK_OMOGRAPHIC = 2, /**< this kind, or a failure */
    ASK_RICHEST = 3,    /**< the richest kind that the points support: the choice of the library's CalcCoefs */
    ASK_AUTO = 4        /**< the kind with the least leave-one-out error (ChooseKind) */
};

/** Why a kind was taken. */
enum enumChoice
{
    CHOICE_ASKED = 0,       /**< it was asked for */
    CHOICE_RICHEST = 1,     /**< the richest one was asked for, and this is it */
    CHOICE_LEAST_ERROR = 2, /**< its leave-one-out error is the least */
    CHOICE_POORER_AS_GOOD =
        3,                /**< a richer kind has a smaller leave-one-out error, by 5 % or less, or within rounding */
    CHOICE_NOT_JUDGED = 4 /**< no kind has the points to be judged: the poorest one that exists, without any check */
};

/** What a point is for. */
enum enumRole
{
    ROLE_FITTED = 0, /**< the fit uses it */
    ROLE_CHECK = 1,  /**< a check point: not fitted, but its residual is computed */
    ROLE_DROPPED = 2 /**< a blunder that Judge has dropped; like a check point from then on. Output only */
};

/** Control points, as four arrays of a_iCount values. */
struct TControlPoints
{
    int iCount;         /**< number of points */
    const double* vdX;  /**< x in the source system */
    const double* vdY;  /**< y in the source system */
    const double* vdXa; /**< X in the target system */
    const double* vdYa; /**< Y in the target system */
};

/** The origins of a frame: coordinates count from them. All 0: coordinates as given. */
struct TOrigins
{
    double dX;  /**< source, x */
    double dY;  /**< source, y */
    double dXa; /**< target, X */
    double dYa; /**< target, Y */
};

/** A position or a vector in the plane. */
struct TVector
{
    double dX; /**< x, or X */
    double dY; /**< y, or Y */
};

/** A symmetric matrix of order 2: the covariance of a position, or a part of it. */
struct TCovariance2
{
    double dXX; /**< variance of X */
    double dXY; /**< covariance of X and Y */
    double dYY; /**< variance of Y */
};

/** The standard error ellipse: one standard deviation along each of its axes. It holds the true position with a
 *  probability of 39 %; enlarged by sqrt(F) it holds it with that of F/2 in the F distribution. */
struct TEllipse
{
    double dMajor; /**< greater semi-axis */
    double dMinor; /**< smaller semi-axis */
    double dUx;    /**< unit vector of the greater semi-axis: its X, 0 or more */
    double dUy;    /**< its Y. (1, 0) for a circle */
};

/** The covariance matrix of the eight coefficients dA, dB, ... dH, in this order: packed lower triangle, row by row, as
 *  the library packs it. Element (i, j), i >= j, is at i (i + 1)/2 + j. Coefficients that a kind does not have (G and H)
 *  have zeros. The conformal kind has A = E, B = -D (mirrored: A = -E, B = D), so that its matrix has the rank 4. */
struct TCoefsCovariance
{
    double vdPacked[COVARIANCES]; /**< the packed triangle */
};

/** The fit of one kind. */
struct TKindFit
{
    nuv::enumMethodUsed Kind;     /**< the kind */
    int bMirrored;                /**< 1 if it is conformal and reverses the orientation */
    nuv::TOmographicParams Coefs; /**< the transformation, in the frame of the fit; dG = dH = 0 unless omographic */
    double dSumOfSquares;         /**< of all dX and dY */
    int iIterations;              /**< Gauss-Newton iterations that went on from the library's result; 0 if there was
                                       nothing left to improve, and for the conformal and affine kinds */
    int bConverged;               /**< 0 if these iterations did not converge; 1 for the conformal and affine kinds */
};

/** Why the points determine no transformation of each kind, or REASON_NONE. The index is the kind. */
struct TSupport
{
    enumReason vReasons[KINDS]; /**< one reason for each kind */
};

/** One row of the table of kinds. */
struct TKindRow
{
    enumReason Reason;      /**< why the kind is missing; then nothing below is valid but iUnknowns, iFreedom */
    int iUnknowns;          /**< u: 4, 6 or 8 */
    int iFreedom;           /**< degrees of freedom, 2 n - u; negative if there are too few points */
    TKindFit Fit;           /**< the fit of this kind */
    double dRms;            /**< sqrt(sum of squares / iFreedom); 0 if iFreedom is 0 */
    enumReason LeaveReason; /**< why there are no leave-one-out errors; then nothing below is valid */
    double dLeaveRms;       /**< sqrt(sum of the squared lengths of the leave-one-out residuals / (2 n)): an RMS of one
                                 coordinate, as dRms is */
    double dLeaveGreatest;  /**< the greatest length of a leave-one-out residual */
    int iLeaveGreatest;     /**< its point */
};

/** The geometric parameters of a conformal or affine transformation, as the library defines them, with their standard
 *  deviations. A mirrored conformal one has a negative sy and no skew. */
struct TShape
{
    int bExists;           /**< 0 if there are none: an omographic transformation, or a scale that counts as zero */
    double dSx;            /**< sx: scale along the source x axis */
    double dSy;            /**< sy: scale across the image of the x axis; negative if the orientation is reversed */
    double dSkew;          /**< phi: skew, radians; 0 for the conformal kind */
    double dRotation;      /**< theta: rotation, radians, counter-clockwise */
    double dSigmaSx;       /**< standard deviation of sx; this and the next three are 0 unless TJudgement.bSigma */
    double dSigmaSy;       /**< of sy */
    double dSigmaSkew;     /**< of phi, radians */
    double dSigmaRotation; /**< of theta, radians */
};

/** What is told of one point. */
struct TPointJudgement
{
    enumRole Role;       /**< what the point is for; ROLE_DROPPED only if Judge was asked to drop */
    int iDropped;        /**< 1 for the point that was dropped first, 2 for the second one, ...; 0 if not dropped */
    double dX;           /**< residual in X, computed less given */
    double dY;           /**< residual in Y */
    double dLength;      /**< length of the residual; infinite or NaN residuals occur at check points only */
    int bSource;         /**< 1 if the residual exists in source units */
    double dSourceX;     /**< residual in source units: x of the source point that belongs to the given target point,
                                less the given x. In pixels for points of an image */
    double dSourceY;     /**< the same for y */
    int bLeave;          /**< 1 if the leave-one-out residual exists: a fitted point, without which the other points
                                still determine the kind */
    double dLeaveX;      /**< leave-one-out residual: the image of the point by a fit of the others, less given */
    double dLeaveY;      /**< the same for Y */
    double dLeaveLength; /**< length of the leave-one-out residual */
    int bTested;         /**< 1 if the next three exist: a fitted point, and at least 2 degrees of freedom without it */
    double dStandardised; /**< the residual of both coordinates over its own standard deviation, which is estimated
                                from all points: sqrt(q/2)/s with q = r^T (I - H)^-1 r, r the residual, H the point's
                                block of the hat matrix and s the RMS. About 1; at most sqrt(iFreedom/2) */
    double dStudentised;  /**< the same with s estimated from the other points alone (deleted). Its square has the
                                distribution F(2, iFreedom - 2) if the residuals are normally distributed */
    double dProbability;  /**< of a dStudentised at least as large by chance, at this one point. Multiply it by the
                                number of points before you compare it with a level (Bonferroni) */
    int bSuspect;         /**< 1 for a suspected blunder (FindBlunders) and for a dropped point */
    nuv::enumMethodUsed SuspectKind; /**< the kind under which the point is suspect; that of the fit if it is not */
};

/** What Judge is asked for. */
struct TOptions
{
    enumMethod Method; /**< which kind */
    int bMirrored;     /**< 1: the conformal kind reverses the orientation of the axes */
    int bRaw;          /**< 1: fit the coordinates as they are, without local origins */
    int bRobust;       /**< 1: drop suspected blunders one by one, and fit and choose again after each one */
    double dLevel;     /**< level of the test of blunders, between 0 and 1; usually USUAL_LEVEL. 0: no test */
};

/** The result of Judge. */
struct TJudgement
{
    TKindFit Fit;                    /**< the fit that was taken, in the frame of Origins */
    enumChoice Choice;               /**< why this kind was taken */
    TKindRow vKinds[KINDS];          /**< the table of kinds, of the points that are fitted in the end */
    TSupport Support;                /**< why the points do not support a kind */
    TOrigins Origins;                /**< the frame of the fit: its local origins; all 0 for bRaw */
    int bOriginal;                   /**< 1 if the transformation has coefficients in original coordinates */
    nuv::TOmographicParams Original; /**< these coefficients */
    double dFrameDifference;         /**< greatest distance of the images of a fitted point by Fit and by Original */
    TShape Shape;                    /**< scales, skew and rotation */
    int iFitted;                     /**< points that the fit uses: n */
    int iChecks;                     /**< check points, without the dropped ones */
    int iDropped;                    /**< points that were dropped */
    int iSuspects;                   /**< suspected blunders among the fitted points */
    int iUnknowns;                   /**< u: 4, 6 or 8 */
    int iFreedom;                    /**< degrees of freedom, 2 n - u */
    double dRms;      /**< sqrt(sum of squares / iFreedom), the standard deviation of a coordinate; 0 if iFreedom is
                               0: then there is no RMS */
    double dCheckRms; /**< sqrt(sum of squares / (2 iChecks)) of the check points; 0 if there are none */
    int iLargest;     /**< the fitted point with the largest residual */
    int bSigma;       /**< 1 if the next two are valid: iFreedom is greater than 0 and the equations are regular */
    TCoefsCovariance Covariance;         /**< of Fit.Coefs */
    TCoefsCovariance OriginalCovariance; /**< of Original, if bOriginal */
};

/** @name Kinds
 *  @{ */

/** The least number of points that a kind needs: 2, 3 or 4.
 *
 *  @param a_Kind the kind
 *  @return the number */
int LeastPoints(nuv::enumMethodUsed a_Kind);

/** The number of independent coefficients of a kind: 4, 6 or 8.
 *
 *  @param a_Kind the kind
 *  @return the number */
int Unknowns(nuv::enumMethodUsed a_Kind);

/** @} */

/** @name Frames
 *  @{ */

/** Computes a short number near the middle of the values: their mean, rounded to a multiple of the power of ten at or
 *  below their extent.
 *
 *  @param a_iCount   number of values, 1 or more
 *  @param a_vdValues the values
 *  @param a_dExtent  stands for their extent if all values are equal; if it is 0 too, the result is their mean
 *  @return the number; never -0.0 */
double LocalOrigin(int a_iCount, const double* a_vdValues, double a_dExtent);

/** Computes the local origins of both systems by LocalOrigin. The greater extent of x and y (or X and Y) serves for a
 *  coordinate that is equal at all points.
 *
 *  @param a_Points  the points, 1 or more
 *  @param a_Origins out: the origins */
void FindOrigins(const TControlPoints& a_Points, TOrigins& a_Origins);

/** Subtracts origins.
 *
 *  @param a_Points  the points
 *  @param a_Origins the origins
 *  @param a_vdX     out: x of the reduced points, a_Points.iCount values; each output may be its own input
 *  @param a_vdY     out: y
 *  @param a_vdXa    out: X
 *  @param a_vdYa    out: Y */
void ReducePoints(const TControlPoints& a_Points, const TOrigins& a_Origins, double* a_vdX, double* a_vdY,
                  double* a_vdXa, double* a_vdYa);

/** The greatest value less the least one.
 *
 *  @param a_iCount   number of values, 1 or more
 *  @param a_vdValues the values
 *  @return their extent */
double Extent(int a_iCount, const double* a_vdValues);

/** Residuals up to this level are only rounding: 1e-12 of the greatest absolute target coordinate as given.
 *
 *  @param a_Points the points, 1 or more, in coordinates as given
 *  @return the level, target units */
double RoundingLevel(const TControlPoints& a_Points);

/** Converts coefficients for coordinates that count from origins into those for original coordinates. The constants are
 *  small differences of large products; they are computed with twice the digits of a double.
 *
 *  @param a_Local    the transformation in the frame of the origins
 *  @param a_Origins  the origins
 *  @param a_Original out: the same transformation in original coordinates; it must be another record. After a failure
 *                    it holds values that must not be used
 *  @return true; false if it has no such coefficients: it takes the original source origin to infinity, or a coefficient
 *          is not finite */
bool ToOriginalFrame(const nuv::TOmographicParams& a_Local, const TOrigins& a_Origins,
                     nuv::TOmographicParams& a_Original);

/** @} */

/** @name Support
 *  @{ */

/** Tests which kinds the points determine. The fits of the library do not test this.
 *
 *  Method: a point counts as lying on a line if its distance from it is at most 3e-8 of the extent of the points, or at
 *  most 9e-16 of the largest coordinate. Four points of which no three are on a line exist if there are two different
 *  points off each side of a triangle that spans the points.
 *
 *  @param a_Points  the points, in coordinates as given
 *  @param a_Support out: the reason against each kind; a reason against the conformal kind is one against all kinds */
void FindSupport(const TControlPoints& a_Points, TSupport& a_Support);

/** @} */

/** @name Fits
 *  @{ */

/** Fits one kind: by the library's CalcConformalCoefs, CalcAffineCoefs or CalcOmographicCoefs (CalcCoefs for a mirrored
 *  similarity). The library ends an omographic fit after four Gauss-Newton iterations; this function goes on.
 *
 *  Limit: it does not test what FindSupport tests. Fit only kinds that the points support.
 *
 *  Method of going on: a Gauss-Newton step from the library's normal equations (UpdateNormMatrixLowTri, CholeskyLowTri,
 *  SolveCholLowTri). It is halved until the sum of squares does not grow. The iterations have converged when a step
 *  changes no image of a point by more than 1e-13 of the extent of the target points; such a step is not made, so that
 *  a result of the library that has converged keeps its bits. They have also converged when rounding hides whether a
 *  small step lowers the sum. They fail after 100 steps, and where no part of a greater step lowers the sum.
 *
 *  An affine transformation exists if |ae - db| > 1e-12 (a^2 + b^2 + d^2 + e^2): other than the tolerance of CalcCoefs,
 *  this does not depend on the units.
 *
 *  @param a_Points    the points, in the frame of the fit
 *  @param a_Kind      the kind
 *  @param a_bMirrored the conformal kind reverses the orientation; the others ignore it
 *  @param a_Fit       out: the fit
 *  @return REASON_NONE, or why there is no fit: REASON_TOO_FEW_POINTS, REASON_SPREAD_IS_ZERO, REASON_AFFINE_COLLAPSES,
 *          REASON_OMOGRAPHIC_UNSOLVABLE, REASON_COEFS_NOT_FINITE, REASON_RESIDUALS_NOT_FINITE, REASON_NO_MEMORY */
enumReason FitKind(const TControlPoints& a_Points, nuv::enumMethodUsed a_Kind, bool a_bMirrored, TKindFit& a_Fit);

/** Computes residuals, computed less given.
 *
 *  @param a_Points the points, in the frame of the fit
 *  @param a_Coefs  the transformation
 *  @param a_vdDx   out: residuals in X, a_Points.iCount values
 *  @param a_vdDy   out: residuals in Y
 *  @return the sum of all squares */
double Residuals(const TControlPoints& a_Points, const nuv::TOmographicParams& a_Coefs, double* a_vdDx, double* a_vdDy);

/** Computes leave-one-out residuals: each point is predicted by a fit of the others.
 *
 *  Method: for the conformal and affine kinds (I - H)^-1 r, with the residual r and the block H of order 2 of the hat
 *  matrix that belongs to the point; this is exact. The omographic kind is not linear. Up to 100 points its fit is
 *  repeated without each point. For more points the same formula is used with the derivatives at the fit (one
 *  Gauss-Newton step): a single point then has so little influence that this differs little from the repeated fit. The
 *  time grows with n for n > 100. Allocates memory for the omographic kind.
 *
 *  @param a_Points   the points, in the frame of the fit
 *  @param a_Fit      the fit
 *  @param a_vdLeaveX out: leave-one-out residuals in X, a_Points.iCount values. Infinite where the other points do not
 *                    determine the kind
 *  @param a_vdLeaveY out: the same in Y
 *  @param a_vdDrops  out: by how much the sum of squares drops without the point, residual of the point included:
 *                    r^T (I - H)^-1 r
 *  @return REASON_NONE, REASON_NO_REDUNDANCY, REASON_SINGULAR or REASON_NO_MEMORY */
enumReason LeaveOneOut(const TControlPoints& a_Points, const TKindFit& a_Fit, double* a_vdLeaveX, double* a_vdLeaveY,
                       double* a_vdDrops);

/** Makes the table of kinds. Allocates memory.
 *
 *  @param a_Points    the points, in the frame of the fit
 *  @param a_Support   from FindSupport, of the points as given
 *  @param a_bMirrored the conformal kind reverses the orientation
 *  @param a_vRows     out: KINDS rows; the index is the kind
 *  @return REASON_NONE, also if no kind exists (see the rows), or REASON_NO_MEMORY */
enumReason JudgeKinds(const TControlPoints& a_Points, const TSupport& a_Support, bool a_bMirrored, TKindRow* a_vRows);

/** Chooses the kind with the least leave-one-out error (dLeaveRms): the poorest kind whose error is at most 5 % above
 *  the least one, or at most a_dRounding. A kind that has no such error is not taken, unless none has one: then it is
 *  the poorest kind that exists.
 *
 *  @param a_vRows     the table of kinds
 *  @param a_dRounding errors up to this are only rounding (RoundingLevel)
 *  @param a_Kind      out: the kind; untouched if the result is false
 *  @param a_Choice    out: why: CHOICE_LEAST_ERROR, CHOICE_POORER_AS_GOOD or CHOICE_NOT_JUDGED
 *  @return false if no kind exists */
bool ChooseKind(const TKindRow* a_vRows, double a_dRounding, nuv::enumMethodUsed& a_Kind, enumChoice& a_Choice);

/** @} */

/** @name Blunders
 *  @{ */

/** The probability that a value of the F distribution is greater than a_dX.
 *
 *  Method: the finite series for an even number of degrees of freedom of the numerator.
 *
 *  @param a_iHalfNumerator   half of the degrees of freedom of the numerator, 1 or more
 *  @param a_iDenominator     degrees of freedom of the denominator, 1 or more
 *  @param a_dX               the value, 0 or more; may be infinite
 *  @return the probability, 0 to 1 */
double TailOfF(int a_iHalfNumerator, int a_iDenominator, double a_dX);

/** The value that a value of the F distribution exceeds with a given probability: the inverse of TailOfF, by bisection.
 *
 *  @param a_iHalfNumerator half of the degrees of freedom of the numerator, 1 or more
 *  @param a_iDenominator   degrees of freedom of the denominator, 1 or more
 *  @param a_dProbability   the probability, greater than 0 and at most 1
 *  @return the value; infinite if it is beyond a double */
double QuantileOfF(int a_iHalfNumerator, int a_iDenominator, double a_dProbability);

/** Finds suspected blunders by a test of one fit.
 *
 *  Method: a group of k points is suspect if the sum of squares drops too much without them. With f degrees of freedom,
 *  ((S - S_k)/(2k)) / (S_k/(f - 2k)) has the distribution F(2k, f - 2k) if the residuals are normally distributed. Its
 *  tail probability, multiplied by the number of groups of k points among n (Bonferroni), must be at most
 *  a_dLevel/2^k. So the probability of any suspect in a set without blunders is at most a_dLevel. Groups of 1, 2 and 3
 *  points are tested in this order, because two blunders can hide each other from the test of single points. Each point
 *  of a group must be suspect, too, when it alone is added to the points outside the group. The search is repeated
 *  without the points that were found. It leaves at least LeastPoints + 1 points, and at least half of the points.
 *  Residuals up to a_dRounding are never suspect.
 *
 *  Limits: the level holds for the conformal and affine kinds; for the omographic kind it is approximate. The group is
 *  the best one of all pairs up to 40 points; above, and for three points, the best one that single exchanges find.
 *  Allocates memory.
 *
 *  @param a_Points    the points, in the frame of the fit
 *  @param a_Fit       the fit of these points
 *  @param a_dLevel    level, between 0 and 1
 *  @param a_dRounding residuals up to this are only rounding (RoundingLevel)
 *  @param a_viOrder   out: 0 for a point that is not suspect, else its rank: 1 for the worst, 2, ...; a_Points.iCount
 *                     values
 *  @param a_iFound    out: number of suspects
 *  @return REASON_NONE, REASON_NO_REDUNDANCY (nothing can be tested) or REASON_NO_MEMORY */
enumReason FindBlunders(const TControlPoints& a_Points, const TKindFit& a_Fit, double a_dLevel, double a_dRounding,
                        int* a_viOrder, int& a_iFound);

/** @} */

/** @name Covariances
 *  @{ */

/** Computes the covariance matrix of the coefficients: s^2 N^-1, with the normal matrix N of the fit and its s^2 = sum
 *  of squares / degrees of freedom. Uses the library's packed Cholesky factorisation.
 *
 *  @param a_Points     the points, in the frame of the fit
 *  @param a_Fit        the fit
 *  @param a_Covariance out: the matrix
 *  @return REASON_NONE; REASON_NO_REDUNDANCY without degrees of freedom; REASON_SINGULAR */
enumReason CovarianceOfCoefs(const TControlPoints& a_Points, const TKindFit& a_Fit, TCoefsCovariance& a_Covariance);

/** Converts the covariance matrix of coefficients to original coordinates (see ToOriginalFrame).
 *
 *  @param a_Covariance of a_Local
 *  @param a_Local      the transformation in the frame of the origins
 *  @param a_Origins    the origins
 *  @param a_Original   the same transformation in original coordinates
 *  @param a_Result     out: covariance matrix of a_Original; may be the same record as a_Covariance */
void CovarianceInOriginalFrame(const TCoefsCovariance& a_Covariance, const nuv::TOmographicParams& a_Local,
                               const TOrigins& a_Origins, const nuv::TOmographicParams& a_Original,
                               TCoefsCovariance& a_Result);

/** The standard deviation of one coefficient: the root of a diagonal element.
 *
 *  @param a_Covariance the matrix
 *  @param a_iCoef      0 for dA to 7 for dH
 *  @return the standard deviation */
double SigmaOfCoef(const TCoefsCovariance& a_Covariance, int a_iCoef);

/** Computes scales, skew and rotation (AffineCoefsToParam, ConformalCoefsToParam) and their standard deviations.
 *
 *  @param a_Fit         the fit
 *  @param a_pCovariance its covariance; null: the standard deviations are 0
 *  @param a_Shape       out: the parameters; bExists is 0 and the rest is 0 if there are none */
void FindShape(const TKindFit& a_Fit, const TCoefsCovariance* a_pCovariance, TShape& a_Shape);

/** Computes the covariance of the image of a point. It contains the uncertainty of the transformation alone. Add s^2 to
 *  both variances for the difference from a measured point.
 *
 *  @param a_Coefs      the transformation
 *  @param a_Covariance its covariance, in the same frame
 *  @param a_dX         x of the source point, in the same frame
 *  @param a_dY         y of the source point
 *  @param a_Result     out: covariance of X and Y */
void CovarianceOfImage(const nuv::TOmographicParams& a_Coefs, const TCoefsCovariance& a_Covariance, double a_dX,
                       double a_dY, TCovariance2& a_Result);

/** Computes the covariance of the source point that belongs to an exact target point.
 *
 *  @param a_Coefs      the transformation
 *  @param a_Covariance its covariance, in the same frame
 *  @param a_dX         x of the source point (from InversePoint), in the same frame
 *  @param a_dY         y of the source point
 *  @param a_Result     out: covariance of x and y
 *  @return REASON_NONE or REASON_NOT_INVERTIBLE */
enumReason CovarianceOfSource(const nuv::TOmographicParams& a_Coefs, const TCoefsCovariance& a_Covariance, double a_dX,
                              double a_dY, TCovariance2& a_Result);

/** Computes the standard error ellipse of a covariance. It has no angle, because that would need an arctangent, which
 *  differs between platforms: the angle is atan2(dUy, dUx).
 *
 *  @param a_Covariance the covariance
 *  @param a_Ellipse    out: the ellipse; a negative variance that rounding has made counts as 0 */
void ErrorEllipse(const TCovariance2& a_Covariance, TEllipse& a_Ellipse);

/** @} */

/** @name Images
 *  Coordinates as given on both sides: the functions subtract and add the origins.
 *  @{ */

/** W, the denominator of the transformation at a point in the frame of the coefficients.
 *
 *  @param a_Coefs the transformation
 *  @param a_dX    x
 *  @param a_dY    y
 *  @return G x + H y + 1 */
double Denominator(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY);

/** Maps a point in the frame of the coefficients.
 *
 *  @param a_Coefs the transformation
 *  @param a_dX    x
 *  @param a_dY    y
 *  @return X and Y; infinite or NaN where the denominator is 0 */
TVector ImageOf(const nuv::TOmographicParams& a_Coefs, double a_dX, double a_dY);

/** Maps a source point to the target system.
 *
 *  @param a_Coefs   the transformation, in the frame of the origins
 *  @param a_Origins the origins
 *  @param a_Source  x and y as given
 *  @param a_Target  out: X and Y; written in any case
 *  @return REASON_NONE, or REASON_COEFS_NOT_FINITE if the image is not finite */
enumReason TransformPoint(const nuv::TOmographicParams& a_Coefs, const TOrigins& a_Origins, const TVector& a_Source,
                          TVector& a_Target);

/** Maps a target point back to the source system.
 *
 *  @param a_Coefs   the transformation, in the frame of the origins
 *  @param a_Origins the origins
 *  @param a_Target  X and Y as given
 *  @param a_Source  out: x and y
 *  @return REASON_NONE, or REASON_NOT_INVERTIBLE */
enumReason InversePoint(const nuv::TOmographicParams& a_Coefs, const TOrigins& a_Origins, const TVector& a_Target,
                        TVector& a_Source);

/** @} */

/** @name Everything
 *  @{ */

/** Fits control points and judges the result. Allocates memory: about 200 bytes for each point.
 *
 *  Method: local origins of the fitted points (FindOrigins); FindSupport; JudgeKinds; the kind by a_Options.Method; the
 *  test of FindBlunders under this kind and under the richer ones that exist, each at the level a_Options.dLevel divided
 *  by their number. A richer kind contains the poorer one, so a point that is suspect under it is a blunder for both:
 *  the misfit of the poorer kind hides it there. The worst suspect is left out and everything is repeated, until there is
 *  no suspect, or half of the points or only LeastPoints + 1 are left. With bRobust the last fit is the result. Without
 *  it the points that were left out are only marked as suspect, and the fit of all points is the result.
 *
 *  @param a_Points   all points, in coordinates as given
 *  @param a_pRoles   ROLE_FITTED or ROLE_CHECK for each point, a_Points.iCount values; null: all are fitted
 *  @param a_Options  what is asked for
 *  @param a_Result   out: the result. After a failure Support is written, and vKinds if any fit was tried (a reason is
 *                    in its rows); nothing else is valid
 *  @param a_vPoints  out: what is told of each point, a_Points.iCount records; not valid after a failure
 *  @return REASON_NONE, or why there is no transformation, or none of the kind that was asked for */
enumReason Judge(const TControlPoints& a_Points, const enumRole* a_pRoles, const TOptions& a_Options,
                 TJudgement& a_Result, TPointJudgement* a_vPoints);

/** @} */

} // namespace judgement

#endif // NUV_JUDGEMENT_H
