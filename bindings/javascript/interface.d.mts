// interface.d.mts: types of the records, and the functions of the C interface.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
// Made by generate.py from nuv1math.h, judgement.h and support.cpp of fitpoints; change those, and run it again.

export const RET_IMPOSSIBLE: -1;
export const RET_INDETERMINATE: -2;
export const enumMethodUsed: { readonly METHOD_CONFORMAL: 0; readonly METHOD_AFFINE: 1; readonly METHOD_OMOGRAPHIC: 2 };
export const KINDS: 3;
export const COEFS: 8;
export const COVARIANCES: 36;
export const USUAL_LEVEL: 0.01;
export const enumReason: { readonly REASON_NONE: 0; readonly REASON_NO_MEMORY: 1; readonly REASON_TOO_FEW_POINTS: 2; readonly REASON_SOURCE_EQUAL: 3; readonly REASON_TARGET_EQUAL: 4; readonly REASON_SOURCE_TOO_LARGE: 5; readonly REASON_TARGET_TOO_LARGE: 6; readonly REASON_SOURCE_ON_LINE: 7; readonly REASON_TARGET_ON_LINE: 8; readonly REASON_SOURCE_NO_FOUR: 9; readonly REASON_TARGET_NO_FOUR: 10; readonly REASON_SPREAD_IS_ZERO: 11; readonly REASON_AFFINE_COLLAPSES: 12; readonly REASON_OMOGRAPHIC_UNSOLVABLE: 13; readonly REASON_COEFS_NOT_FINITE: 14; readonly REASON_RESIDUALS_NOT_FINITE: 15; readonly REASON_NO_REDUNDANCY: 16; readonly REASON_DEPENDS_ON_POINT: 17; readonly REASON_SINGULAR: 18; readonly REASON_NOT_INVERTIBLE: 19 };
export const enumMethod: { readonly ASK_CONFORMAL: 0; readonly ASK_AFFINE: 1; readonly ASK_OMOGRAPHIC: 2; readonly ASK_RICHEST: 3; readonly ASK_AUTO: 4 };
export const enumChoice: { readonly CHOICE_ASKED: 0; readonly CHOICE_RICHEST: 1; readonly CHOICE_LEAST_ERROR: 2; readonly CHOICE_POORER_AS_GOOD: 3; readonly CHOICE_NOT_JUDGED: 4 };
export const enumRole: { readonly ROLE_FITTED: 0; readonly ROLE_CHECK: 1; readonly ROLE_DROPPED: 2 };
/** The sentences of fitpoints for reasons that need no numbers. */
export const REASON_TEXTS: { readonly [reason: number]: string | undefined };

export interface TAffineCoefs {
    dA: number;
    dB: number;
    dC: number;
    dD: number;
    dE: number;
    dF: number;
}

export interface TConformalCoefs {
    dA: number;
    dB: number;
    dTx: number;
    dTy: number;
    dInvA: number;
    dInvB: number;
}

export interface TOmographicParams {
    dA: number;
    dB: number;
    dC: number;
    dD: number;
    dE: number;
    dF: number;
    dG: number;
    dH: number;
}

export interface TControlPoints {
    iCount: number;
    vdX: number;
    vdY: number;
    vdXa: number;
    vdYa: number;
}

export interface TOrigins {
    dX: number;
    dY: number;
    dXa: number;
    dYa: number;
}

export interface TVector {
    dX: number;
    dY: number;
}

export interface TCovariance2 {
    dXX: number;
    dXY: number;
    dYY: number;
}

export interface TEllipse {
    dMajor: number;
    dMinor: number;
    dUx: number;
    dUy: number;
}

export interface TCoefsCovariance {
    vdPacked: number[];
}

export interface TKindFit {
    Kind: number;
    bMirrored: number;
    Coefs: TOmographicParams;
    dSumOfSquares: number;
    iIterations: number;
    bConverged: number;
}

export interface TSupport {
    vReasons: number[];
}

export interface TKindRow {
    Reason: number;
    iUnknowns: number;
    iFreedom: number;
    Fit: TKindFit;
    dRms: number;
    LeaveReason: number;
    dLeaveRms: number;
    dLeaveGreatest: number;
    iLeaveGreatest: number;
}

export interface TShape {
    bExists: number;
    dSx: number;
    dSy: number;
    dSkew: number;
    dRotation: number;
    dSigmaSx: number;
    dSigmaSy: number;
    dSigmaSkew: number;
    dSigmaRotation: number;
}

export interface TPointJudgement {
    Role: number;
    iDropped: number;
    dX: number;
    dY: number;
    dLength: number;
    bSource: number;
    dSourceX: number;
    dSourceY: number;
    bLeave: number;
    dLeaveX: number;
    dLeaveY: number;
    dLeaveLength: number;
    bTested: number;
    dStandardised: number;
    dStudentised: number;
    dProbability: number;
    bSuspect: number;
    SuspectKind: number;
}

export interface TOptions {
    Method: number;
    bMirrored: number;
    bRaw: number;
    bRobust: number;
    dLevel: number;
}

export interface TJudgement {
    Fit: TKindFit;
    Choice: number;
    vKinds: TKindRow[];
    Support: TSupport;
    Origins: TOrigins;
    bOriginal: number;
    Original: TOmographicParams;
    dFrameDifference: number;
    Shape: TShape;
    iFitted: number;
    iChecks: number;
    iDropped: number;
    iSuspects: number;
    iUnknowns: number;
    iFreedom: number;
    dRms: number;
    dCheckRms: number;
    iLargest: number;
    bSigma: number;
    Covariance: TCoefsCovariance;
    OriginalCovariance: TCoefsCovariance;
}

/** The records by their names. */
export interface Records {
    TAffineCoefs: TAffineCoefs;
    TConformalCoefs: TConformalCoefs;
    TOmographicParams: TOmographicParams;
    TControlPoints: TControlPoints;
    TOrigins: TOrigins;
    TVector: TVector;
    TCovariance2: TCovariance2;
    TEllipse: TEllipse;
    TCoefsCovariance: TCoefsCovariance;
    TKindFit: TKindFit;
    TSupport: TSupport;
    TKindRow: TKindRow;
    TShape: TShape;
    TPointJudgement: TPointJudgement;
    TOptions: TOptions;
    TJudgement: TJudgement;
}

/** The functions of nuv1math_c.h. A pointer is an address in the memory of the module. */
export interface Functions {
    nuv_CalcCoefs(a_iPoints: number, a_vdX: number, a_vdY: number, a_vdXa: number, a_vdYa: number, a_bSameOrientation: number, a_Requested: number, a_Used: number, a_Params: number): number;
    nuv_CalcConformalCoefs(a_iPoints: number, a_vdX: number, a_vdY: number, a_vdXa: number, a_vdYa: number, a_bRigidInverse: number, a_Coefs: number): number;
    nuv_CalcAffineCoefs(a_iPoints: number, a_vdX: number, a_vdY: number, a_vdXa: number, a_vdYa: number, a_Coefs: number): number;
    nuv_CalcOmographicCoefs(a_iPoints: number, a_vdX: number, a_vdY: number, a_vdXa: number, a_vdYa: number, a_Params: number): number;
    nuv_AffineParamsToCoefs(a_dSx: number, a_dSy: number, a_dPhi: number, a_dTheta: number, a_dTx: number, a_dTy: number, a_Coefs: number): void;
    nuv_AffineCoefsToParam(a_Coefs: number, a_dSx: number, a_dSy: number, a_dPhi: number, a_dTheta: number, a_dTx: number, a_dTy: number): number;
    nuv_AffineCoefsToInvCoefs(a_Coefs: number, a_Inverse: number): number;
    nuv_AffineUntransform(a_Coefs: number, a_dXa: number, a_dYa: number, a_dX: number, a_dY: number): void;
    nuv_ConformalParamsToCoefs(a_dScale: number, a_dAngle: number, a_dTx: number, a_dTy: number, a_Coefs: number): void;
    nuv_ConformalCoefsToParam(a_Coefs: number, a_dScale: number, a_dAngle: number, a_dTx: number, a_dTy: number): number;
    nuv_ConformalCoefsToInvCoefs(a_Coefs: number, a_Inverse: number): void;
    nuv_ConformalCoefsToAffineCoefs(a_Coefs: number, a_Affine: number): void;
    nuv_AffineCoefsToOmographicCoefs(a_Affine: number, a_Params: number): void;
    nuv_InitCholLowTri(a_iUnknowns: number, a_pMatrix: number, a_pVector: number): void;
    nuv_DeleteCholLowTri(a_vdMatrix: number, a_vdVector: number): void;
    nuv_UpdateNormMatrixLowTri(a_iUnknowns: number, a_vdMatrix: number, a_vdVector: number, a_vdRow: number, a_dValue: number): void;
    nuv_UpdateNormMatrixLowTriSparse(a_iUnknowns: number, a_vdMatrix: number, a_vdVector: number, a_iCount: number, a_vdValues: number, a_viIndices: number, a_dValue: number): void;
    nuv_CholeskyLowTri(a_iUnknowns: number, a_vdMatrix: number): number;
    nuv_SolveCholLowTri(a_iUnknowns: number, a_vdFactor: number, a_vdVector: number): void;
    nuv_RootsLinear(a_dA11: number, a_dA12: number, a_dA21: number, a_dA22: number, a_dB1: number, a_dB2: number, a_dX: number, a_dY: number): number;
    nuv_Cholesky(a_iN: number, a_vdMatrix: number): number;
    nuv_SolveChol(a_iN: number, a_vdFactor: number, a_vdVector: number): void;
    nuv_Roots(iDegree: number, vdA: number, a_vdRoots: number, a_dTolerance: number): number;
    nuv_SolveLinTrig(a_dA: number, a_dB: number, a_dC: number, a_vdAngles: number): number;
    nuv_SolveQuadTrig(a_dA: number, a_dB: number, a_dC: number, a_dD: number, a_dE: number, a_dF: number, a_vdAngles: number): number;
    nuv_SetRandomSeed(a_iSeed: number): void;
    nuv_Rand(): number;
    nuv_RandRange(a_dLow: number, a_dHigh: number): number;
    nuv_Randn(): number;
    nuv_RandnScaled(a_dMean: number, a_dSigma: number): number;
    nuv_LeastPoints(a_Kind: number): number;
    nuv_Unknowns(a_Kind: number): number;
    nuv_LocalOrigin(a_iCount: number, a_vdValues: number, a_dExtent: number): number;
    nuv_FindOrigins(a_Points: number, a_Origins: number): void;
    nuv_ReducePoints(a_Points: number, a_Origins: number, a_vdX: number, a_vdY: number, a_vdXa: number, a_vdYa: number): void;
    nuv_Extent(a_iCount: number, a_vdValues: number): number;
    nuv_RoundingLevel(a_Points: number): number;
    nuv_ToOriginalFrame(a_Local: number, a_Origins: number, a_Original: number): number;
    nuv_FindSupport(a_Points: number, a_Support: number): void;
    nuv_FitKind(a_Points: number, a_Kind: number, a_bMirrored: number, a_Fit: number): number;
    nuv_Residuals(a_Points: number, a_Coefs: number, a_vdDx: number, a_vdDy: number): number;
    nuv_LeaveOneOut(a_Points: number, a_Fit: number, a_vdLeaveX: number, a_vdLeaveY: number, a_vdDrops: number): number;
    nuv_JudgeKinds(a_Points: number, a_Support: number, a_bMirrored: number, a_vRows: number): number;
    nuv_ChooseKind(a_vRows: number, a_dRounding: number, a_Kind: number, a_Choice: number): number;
    nuv_TailOfF(a_iHalfNumerator: number, a_iDenominator: number, a_dX: number): number;
    nuv_QuantileOfF(a_iHalfNumerator: number, a_iDenominator: number, a_dProbability: number): number;
    nuv_FindBlunders(a_Points: number, a_Fit: number, a_dLevel: number, a_dRounding: number, a_viOrder: number, a_iFound: number): number;
    nuv_CovarianceOfCoefs(a_Points: number, a_Fit: number, a_Covariance: number): number;
    nuv_CovarianceInOriginalFrame(a_Covariance: number, a_Local: number, a_Origins: number, a_Original: number, a_Result: number): void;
    nuv_SigmaOfCoef(a_Covariance: number, a_iCoef: number): number;
    nuv_FindShape(a_Fit: number, a_pCovariance: number, a_Shape: number): void;
    nuv_CovarianceOfImage(a_Coefs: number, a_Covariance: number, a_dX: number, a_dY: number, a_Result: number): void;
    nuv_CovarianceOfSource(a_Coefs: number, a_Covariance: number, a_dX: number, a_dY: number, a_Result: number): number;
    nuv_ErrorEllipse(a_Covariance: number, a_Ellipse: number): void;
    nuv_Denominator(a_Coefs: number, a_dX: number, a_dY: number): number;
    nuv_ImageOf(a_Coefs: number, a_dX: number, a_dY: number, a_Result: number): void;
    nuv_TransformPoint(a_Coefs: number, a_Origins: number, a_Source: number, a_Target: number): number;
    nuv_InversePoint(a_Coefs: number, a_Origins: number, a_Target: number, a_Source: number): number;
    nuv_Judge(a_Points: number, a_pRoles: number, a_Options: number, a_Result: number, a_vPoints: number): number;
    malloc(size: number): number;
    free(address: number): void;
    /** Memory that grows gets another buffer. */
    readonly memory: { readonly buffer: ArrayBuffer };
}
