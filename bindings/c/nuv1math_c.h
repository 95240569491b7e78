/* nuv1math_c.h: the functions of nuv1math and of its judgement module for C and for every language that can call C.
 * Copyright (c) 2026 the nuv1math authors
 * SPDX-License-Identifier: MIT
 * Made by generate.py from nuv1math.h and judgement.h; change those, and run it again.
 *
 * nuv_<name> forwards to the function <name> of nuv1math.h or judgement.h. These headers tell what it does, its units,
 * ranges and results. Nothing is computed and nothing is checked here. The types change as follows:
 *   - bool is an int: 0 for false, 1 for true. Any other value than 0 counts as true.
 *   - an enumeration is an int; its values have the prefix NUV_.
 *   - a reference is a pointer that must not be null.
 *   - a record is the record of the same fields, in the same order.
 *   - a result that is a record is written to the last argument.
 * Overloads have names of their own: nuv_Roots and nuv_RootsLinear, nuv_Rand and nuv_RandRange, nuv_Randn and
 * nuv_RandnScaled, nuv_UpdateNormMatrixLowTri and nuv_UpdateNormMatrixLowTriSparse. */

#ifndef NUV_NUV1MATH_C_H
#define NUV_NUV1MATH_C_H

#if defined(_WIN32) && defined(NUV1MATH_C_BUILD)
#define NUV1MATH_C_API __declspec(dllexport)
#elif defined(_WIN32) && !defined(NUV1MATH_C_STATIC)
#define NUV1MATH_C_API __declspec(dllimport)
#elif defined(__GNUC__)
#define NUV1MATH_C_API __attribute__((visibility("default")))
#else
#define NUV1MATH_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- nuv ---- */

#define NUV_RET_IMPOSSIBLE (-1)
#define NUV_RET_INDETERMINATE (-2)

typedef int nuv_enumMethodUsed;
#define NUV_METHOD_CONFORMAL 0
#define NUV_METHOD_AFFINE 1
#define NUV_METHOD_OMOGRAPHIC 2

typedef struct nuv_TAffineCoefs
{
    double dA;
    double dB;
    double dC;
    double dD;
    double dE;
    double dF;
} nuv_TAffineCoefs;

typedef struct nuv_TConformalCoefs
{
    double dA;
    double dB;
    double dTx;
    double dTy;
    double dInvA;
    double dInvB;
} nuv_TConformalCoefs;

typedef struct nuv_TOmographicParams
{
    double dA;
    double dB;
    double dC;
    double dD;
    double dE;
    double dF;
    double dG;
    double dH;
} nuv_TOmographicParams;

NUV1MATH_C_API int nuv_CalcCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                                 const double* a_vdYa, int a_bSameOrientation, nuv_enumMethodUsed a_Requested,
                                 nuv_enumMethodUsed* a_Used, nuv_TOmographicParams* a_Params);
NUV1MATH_C_API int nuv_CalcConformalCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY,
                                          const double* a_vdXa, const double* a_vdYa, int a_bRigidInverse,
                                          nuv_TConformalCoefs* a_Coefs);
NUV1MATH_C_API int nuv_CalcAffineCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY,
                                       const double* a_vdXa, const double* a_vdYa, nuv_TAffineCoefs* a_Coefs);
NUV1MATH_C_API int nuv_CalcOmographicCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY,
                                           const double* a_vdXa, const double* a_vdYa, nuv_TOmographicParams* a_Params);
NUV1MATH_C_API void nuv_AffineParamsToCoefs(double a_dSx, double a_dSy, double a_dPhi, double a_dTheta, double a_dTx,
                                            double a_dTy, nuv_TAffineCoefs* a_Coefs);
NUV1MATH_C_API int nuv_AffineCoefsToParam(const nuv_TAffineCoefs* a_Coefs, double* a_dSx, double* a_dSy, double* a_dPhi,
                                          double* a_dTheta, double* a_dTx, double* a_dTy);
NUV1MATH_C_API int nuv_AffineCoefsToInvCoefs(const nuv_TAffineCoefs* a_Coefs, nuv_TAffineCoefs* a_Inverse);
NUV1MATH_C_API void nuv_AffineUntransform(const nuv_TAffineCoefs* a_Coefs, double a_dXa, double a_dYa, double* a_dX,
                                          double* a_dY);
NUV1MATH_C_API void nuv_ConformalParamsToCoefs(double a_dScale, double a_dAngle, double a_dTx, double a_dTy,
                                               nuv_TConformalCoefs* a_Coefs);
NUV1MATH_C_API int nuv_ConformalCoefsToParam(const nuv_TConformalCoefs* a_Coefs, double* a_dScale, double* a_dAngle,
                                             double* a_dTx, double* a_dTy);
NUV1MATH_C_API void nuv_ConformalCoefsToInvCoefs(const nuv_TConformalCoefs* a_Coefs, nuv_TConformalCoefs* a_Inverse);
NUV1MATH_C_API void nuv_ConformalCoefsToAffineCoefs(const nuv_TConformalCoefs* a_Coefs, nuv_TAffineCoefs* a_Affine);
NUV1MATH_C_API void nuv_AffineCoefsToOmographicCoefs(const nuv_TAffineCoefs* a_Affine, nuv_TOmographicParams* a_Params);
NUV1MATH_C_API void nuv_InitCholLowTri(int a_iUnknowns, double** a_pMatrix, double** a_pVector);
NUV1MATH_C_API void nuv_DeleteCholLowTri(double* a_vdMatrix, double* a_vdVector);
NUV1MATH_C_API void nuv_UpdateNormMatrixLowTri(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector,
                                               const double* a_vdRow, double a_dValue);
NUV1MATH_C_API void nuv_UpdateNormMatrixLowTriSparse(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector,
                                                     int a_iCount, const double* a_vdValues, const int* a_viIndices,
                                                     double a_dValue);
NUV1MATH_C_API int nuv_CholeskyLowTri(int a_iUnknowns, double* a_vdMatrix);
NUV1MATH_C_API void nuv_SolveCholLowTri(int a_iUnknowns, const double* a_vdFactor, double* a_vdVector);
NUV1MATH_C_API int nuv_RootsLinear(double a_dA11, double a_dA12, double a_dA21, double a_dA22, double a_dB1,
                                   double a_dB2, double* a_dX, double* a_dY);
NUV1MATH_C_API int nuv_Cholesky(int a_iN, double* a_vdMatrix);
NUV1MATH_C_API void nuv_SolveChol(int a_iN, const double* a_vdFactor, double* a_vdVector);
NUV1MATH_C_API int nuv_Roots(unsigned int iDegree, const double* vdA, double* a_vdRoots, double a_dTolerance);
NUV1MATH_C_API int nuv_SolveLinTrig(double a_dA, double a_dB, double a_dC, double* a_vdAngles);
NUV1MATH_C_API int nuv_SolveQuadTrig(double a_dA, double a_dB, double a_dC, double a_dD, double a_dE, double a_dF,
                                     double* a_vdAngles);
NUV1MATH_C_API void nuv_SetRandomSeed(int a_iSeed);
NUV1MATH_C_API double nuv_Rand(void);
NUV1MATH_C_API double nuv_RandRange(double a_dLow, double a_dHigh);
NUV1MATH_C_API double nuv_Randn(void);
NUV1MATH_C_API double nuv_RandnScaled(double a_dMean, double a_dSigma);

/* ---- judgement ---- */

#define NUV_KINDS 3
#define NUV_COEFS 8
#define NUV_COVARIANCES 36
#define NUV_USUAL_LEVEL 0.01

typedef int nuv_enumReason;
#define NUV_REASON_NONE 0
#define NUV_REASON_NO_MEMORY 1
#define NUV_REASON_TOO_FEW_POINTS 2
#define NUV_REASON_SOURCE_EQUAL 3
#define NUV_REASON_TARGET_EQUAL 4
#define NUV_REASON_SOURCE_TOO_LARGE 5
#define NUV_REASON_TARGET_TOO_LARGE 6
#define NUV_REASON_SOURCE_ON_LINE 7
#define NUV_REASON_TARGET_ON_LINE 8
#define NUV_REASON_SOURCE_NO_FOUR 9
#define NUV_REASON_TARGET_NO_FOUR 10
#define NUV_REASON_SPREAD_IS_ZERO 11
#define NUV_REASON_AFFINE_COLLAPSES 12
#define NUV_REASON_OMOGRAPHIC_UNSOLVABLE 13
#define NUV_REASON_COEFS_NOT_FINITE 14
#define NUV_REASON_RESIDUALS_NOT_FINITE 15
#define NUV_REASON_NO_REDUNDANCY 16
#define NUV_REASON_DEPENDS_ON_POINT 17
#define NUV_REASON_SINGULAR 18
#define NUV_REASON_NOT_INVERTIBLE 19

typedef int nuv_enumMethod;
#define NUV_ASK_CONFORMAL 0
#define NUV_ASK_AFFINE 1
#define NUV_ASK_OMOGRAPHIC 2
#define NUV_ASK_RICHEST 3
#define NUV_ASK_AUTO 4

typedef int nuv_enumChoice;
#define NUV_CHOICE_ASKED 0
#define NUV_CHOICE_RICHEST 1
#define NUV_CHOICE_LEAST_ERROR 2
#define NUV_CHOICE_POORER_AS_GOOD 3
#define NUV_CHOICE_NOT_JUDGED 4

typedef int nuv_enumRole;
#define NUV_ROLE_FITTED 0
#define NUV_ROLE_CHECK 1
#define NUV_ROLE_DROPPED 2

typedef struct nuv_TControlPoints
{
    int iCount;
    const double* vdX;
    const double* vdY;
    const double* vdXa;
    const double* vdYa;
} nuv_TControlPoints;

typedef struct nuv_TOrigins
{
    double dX;
    double dY;
    double dXa;
    double dYa;
} nuv_TOrigins;

typedef struct nuv_TVector
{
    double dX;
    double dY;
} nuv_TVector;

typedef struct nuv_TCovariance2
{
    double dXX;
    double dXY;
    double dYY;
} nuv_TCovariance2;

typedef struct nuv_TEllipse
{
    double dMajor;
    double dMinor;
    double dUx;
    double dUy;
} nuv_TEllipse;

typedef struct nuv_TCoefsCovariance
{
    double vdPacked[NUV_COVARIANCES];
} nuv_TCoefsCovariance;

typedef struct nuv_TKindFit
{
    nuv_enumMethodUsed Kind;
    int bMirrored;
    nuv_TOmographicParams Coefs;
    double dSumOfSquares;
    int iIterations;
    int bConverged;
} nuv_TKindFit;

typedef struct nuv_TSupport
{
    nuv_enumReason vReasons[NUV_KINDS];
} nuv_TSupport;

typedef struct nuv_TKindRow
{
    nuv_enumReason Reason;
    int iUnknowns;
    int iFreedom;
    nuv_TKindFit Fit;
    double dRms;
    nuv_enumReason LeaveReason;
    double dLeaveRms;
    double dLeaveGreatest;
    int iLeaveGreatest;
} nuv_TKindRow;

typedef struct nuv_TShape
{
    int bExists;
    double dSx;
    double dSy;
    double dSkew;
    double dRotation;
    double dSigmaSx;
    double dSigmaSy;
    double dSigmaSkew;
    double dSigmaRotation;
} nuv_TShape;

typedef struct nuv_TPointJudgement
{
    nuv_enumRole Role;
    int iDropped;
    double dX;
    double dY;
    double dLength;
    int bSource;
    double dSourceX;
    double dSourceY;
    int bLeave;
    double dLeaveX;
    double dLeaveY;
    double dLeaveLength;
    int bTested;
    double dStandardised;
    double dStudentised;
    double dProbability;
    int bSuspect;
    nuv_enumMethodUsed SuspectKind;
} nuv_TPointJudgement;

typedef struct nuv_TOptions
{
    nuv_enumMethod Method;
    int bMirrored;
    int bRaw;
    int bRobust;
    double dLevel;
} nuv_TOptions;

typedef struct nuv_TJudgement
{
    nuv_TKindFit Fit;
    nuv_enumChoice Choice;
    nuv_TKindRow vKinds[NUV_KINDS];
    nuv_TSupport Support;
    nuv_TOrigins Origins;
    int bOriginal;
    nuv_TOmographicParams Original;
    double dFrameDifference;
    nuv_TShape Shape;
    int iFitted;
    int iChecks;
    int iDropped;
    int iSuspects;
    int iUnknowns;
    int iFreedom;
    double dRms;
    double dCheckRms;
    int iLargest;
    int bSigma;
    nuv_TCoefsCovariance Covariance;
    nuv_TCoefsCovariance OriginalCovariance;
} nuv_TJudgement;

NUV1MATH_C_API int nuv_LeastPoints(nuv_enumMethodUsed a_Kind);
NUV1MATH_C_API int nuv_Unknowns(nuv_enumMethodUsed a_Kind);
NUV1MATH_C_API double nuv_LocalOrigin(int a_iCount, const double* a_vdValues, double a_dExtent);
NUV1MATH_C_API void nuv_FindOrigins(const nuv_TControlPoints* a_Points, nuv_TOrigins* a_Origins);
NUV1MATH_C_API void nuv_ReducePoints(const nuv_TControlPoints* a_Points, const nuv_TOrigins* a_Origins, double* a_vdX,
                                     double* a_vdY, double* a_vdXa, double* a_vdYa);
NUV1MATH_C_API double nuv_Extent(int a_iCount, const double* a_vdValues);
NUV1MATH_C_API double nuv_RoundingLevel(const nuv_TControlPoints* a_Points);
NUV1MATH_C_API int nuv_ToOriginalFrame(const nuv_TOmographicParams* a_Local, const nuv_TOrigins* a_Origins,
                                       nuv_TOmographicParams* a_Original);
NUV1MATH_C_API void nuv_FindSupport(const nuv_TControlPoints* a_Points, nuv_TSupport* a_Support);
NUV1MATH_C_API nuv_enumReason nuv_FitKind(const nuv_TControlPoints* a_Points, nuv_enumMethodUsed a_Kind,
                                          int a_bMirrored, nuv_TKindFit* a_Fit);
NUV1MATH_C_API double nuv_Residuals(const nuv_TControlPoints* a_Points, const nuv_TOmographicParams* a_Coefs,
                                    double* a_vdDx, double* a_vdDy);
NUV1MATH_C_API nuv_enumReason nuv_LeaveOneOut(const nuv_TControlPoints* a_Points, const nuv_TKindFit* a_Fit,
                                              double* a_vdLeaveX, double* a_vdLeaveY, double* a_vdDrops);
NUV1MATH_C_API nuv_enumReason nuv_JudgeKinds(const nuv_TControlPoints* a_Points, const nuv_TSupport* a_Support,
                                             int a_bMirrored, nuv_TKindRow* a_vRows);
NUV1MATH_C_API int nuv_ChooseKind(const nuv_TKindRow* a_vRows, double a_dRounding, nuv_enumMethodUsed* a_Kind,
                                  nuv_enumChoice* a_Choice);
NUV1MATH_C_API double nuv_TailOfF(int a_iHalfNumerator, int a_iDenominator, double a_dX);
NUV1MATH_C_API double nuv_QuantileOfF(int a_iHalfNumerator, int a_iDenominator, double a_dProbability);
NUV1MATH_C_API nuv_enumReason nuv_FindBlunders(const nuv_TControlPoints* a_Points, const nuv_TKindFit* a_Fit,
                                               double a_dLevel, double a_dRounding, int* a_viOrder, int* a_iFound);
NUV1MATH_C_API nuv_enumReason nuv_CovarianceOfCoefs(const nuv_TControlPoints* a_Points, const nuv_TKindFit* a_Fit,
                                                    nuv_TCoefsCovariance* a_Covariance);
NUV1MATH_C_API void nuv_CovarianceInOriginalFrame(const nuv_TCoefsCovariance* a_Covariance,
                                                  const nuv_TOmographicParams* a_Local, const nuv_TOrigins* a_Origins,
                                                  const nuv_TOmographicParams* a_Original,
                                                  nuv_TCoefsCovariance* a_Result);
NUV1MATH_C_API double nuv_SigmaOfCoef(const nuv_TCoefsCovariance* a_Covariance, int a_iCoef);
NUV1MATH_C_API void nuv_FindShape(const nuv_TKindFit* a_Fit, const nuv_TCoefsCovariance* a_pCovariance,
                                  nuv_TShape* a_Shape);
NUV1MATH_C_API void nuv_CovarianceOfImage(const nuv_TOmographicParams* a_Coefs,
                                          const nuv_TCoefsCovariance* a_Covariance, double a_dX, double a_dY,
                                          nuv_TCovariance2* a_Result);
NUV1MATH_C_API nuv_enumReason nuv_CovarianceOfSource(const nuv_TOmographicParams* a_Coefs,
                                                     const nuv_TCoefsCovariance* a_Covariance, double a_dX, double a_dY,
                                                     nuv_TCovariance2* a_Result);
NUV1MATH_C_API void nuv_ErrorEllipse(const nuv_TCovariance2* a_Covariance, nuv_TEllipse* a_Ellipse);
NUV1MATH_C_API double nuv_Denominator(const nuv_TOmographicParams* a_Coefs, double a_dX, double a_dY);
NUV1MATH_C_API void nuv_ImageOf(const nuv_TOmographicParams* a_Coefs, double a_dX, double a_dY, nuv_TVector* a_Result);
NUV1MATH_C_API nuv_enumReason nuv_TransformPoint(const nuv_TOmographicParams* a_Coefs, const nuv_TOrigins* a_Origins,
                                                 const nuv_TVector* a_Source, nuv_TVector* a_Target);
NUV1MATH_C_API nuv_enumReason nuv_InversePoint(const nuv_TOmographicParams* a_Coefs, const nuv_TOrigins* a_Origins,
                                               const nuv_TVector* a_Target, nuv_TVector* a_Source);
NUV1MATH_C_API nuv_enumReason nuv_Judge(const nuv_TControlPoints* a_Points, const nuv_enumRole* a_pRoles,
                                        const nuv_TOptions* a_Options, nuv_TJudgement* a_Result,
                                        nuv_TPointJudgement* a_vPoints);

#ifdef __cplusplus
}
#endif

#endif /* NUV_NUV1MATH_C_H */
