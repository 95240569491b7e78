// interface.mjs: values of enumerations, and where the fields of records are.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
// Made by generate.py from nuv1math.h, judgement.h and support.cpp of fitpoints; change those, and run it again.

export const RET_IMPOSSIBLE = -1;
export const RET_INDETERMINATE = -2;
export const enumMethodUsed = Object.freeze({ METHOD_CONFORMAL: 0, METHOD_AFFINE: 1, METHOD_OMOGRAPHIC: 2 });
export const KINDS = 3;
export const COEFS = 8;
export const COVARIANCES = 36;
export const USUAL_LEVEL = 0.01;
export const enumReason = Object.freeze({ REASON_NONE: 0, REASON_NO_MEMORY: 1, REASON_TOO_FEW_POINTS: 2, REASON_SOURCE_EQUAL: 3, REASON_TARGET_EQUAL: 4, REASON_SOURCE_TOO_LARGE: 5, REASON_TARGET_TOO_LARGE: 6, REASON_SOURCE_ON_LINE: 7, REASON_TARGET_ON_LINE: 8, REASON_SOURCE_NO_FOUR: 9, REASON_TARGET_NO_FOUR: 10, REASON_SPREAD_IS_ZERO: 11, REASON_AFFINE_COLLAPSES: 12, REASON_OMOGRAPHIC_UNSOLVABLE: 13, REASON_COEFS_NOT_FINITE: 14, REASON_RESIDUALS_NOT_FINITE: 15, REASON_NO_REDUNDANCY: 16, REASON_DEPENDS_ON_POINT: 17, REASON_SINGULAR: 18, REASON_NOT_INVERTIBLE: 19 });
export const enumMethod = Object.freeze({ ASK_CONFORMAL: 0, ASK_AFFINE: 1, ASK_OMOGRAPHIC: 2, ASK_RICHEST: 3, ASK_AUTO: 4 });
export const enumChoice = Object.freeze({ CHOICE_ASKED: 0, CHOICE_RICHEST: 1, CHOICE_LEAST_ERROR: 2, CHOICE_POORER_AS_GOOD: 3, CHOICE_NOT_JUDGED: 4 });
export const enumRole = Object.freeze({ ROLE_FITTED: 0, ROLE_CHECK: 1, ROLE_DROPPED: 2 });

// The sentences of fitpoints.
export const REASON_TEXTS = {
    [enumReason.REASON_NO_MEMORY]: 'not enough memory',
    [enumReason.REASON_SOURCE_EQUAL]: 'all source points are equal',
    [enumReason.REASON_TARGET_EQUAL]: 'all target points are equal',
    [enumReason.REASON_SOURCE_TOO_LARGE]: 'the source points are more than 1e150 apart: their squares are beyond a double',
    [enumReason.REASON_TARGET_TOO_LARGE]: 'the target points are more than 1e150 apart: their squares are beyond a double',
    [enumReason.REASON_SOURCE_ON_LINE]: 'the source points lie on one line',
    [enumReason.REASON_TARGET_ON_LINE]: 'the target points lie on one line',
    [enumReason.REASON_SOURCE_NO_FOUR]: 'all source points, or all but one, lie on one line: the omographic kind needs four of which no three do',
    [enumReason.REASON_TARGET_NO_FOUR]: 'all target points, or all but one, lie on one line: the omographic kind needs four of which no three do',
    [enumReason.REASON_SPREAD_IS_ZERO]: 'the spread of the source points counts as zero (below about 1e-6)',
    [enumReason.REASON_AFFINE_COLLAPSES]: 'the affine fit collapses the plane (its determinant counts as zero)',
    [enumReason.REASON_OMOGRAPHIC_UNSOLVABLE]: 'the equations of the omographic fit cannot be solved',
    [enumReason.REASON_COEFS_NOT_FINITE]: 'the omographic fit gives coefficients that are not finite',
    [enumReason.REASON_DEPENDS_ON_POINT]: 'without one of the points the others do not determine it',
    [enumReason.REASON_SINGULAR]: 'the equations of the fit are singular',
};

// Record: size, and [name, type, place, number of elements or 0 if it is no array] of each field.
export const records = {
    TAffineCoefs: { size: 48, fields: [
        ['dA', 'double', 0, 0],
        ['dB', 'double', 8, 0],
        ['dC', 'double', 16, 0],
        ['dD', 'double', 24, 0],
        ['dE', 'double', 32, 0],
        ['dF', 'double', 40, 0],
    ] },
    TConformalCoefs: { size: 48, fields: [
        ['dA', 'double', 0, 0],
        ['dB', 'double', 8, 0],
        ['dTx', 'double', 16, 0],
        ['dTy', 'double', 24, 0],
        ['dInvA', 'double', 32, 0],
        ['dInvB', 'double', 40, 0],
    ] },
    TOmographicParams: { size: 64, fields: [
        ['dA', 'double', 0, 0],
        ['dB', 'double', 8, 0],
        ['dC', 'double', 16, 0],
        ['dD', 'double', 24, 0],
        ['dE', 'double', 32, 0],
        ['dF', 'double', 40, 0],
        ['dG', 'double', 48, 0],
        ['dH', 'double', 56, 0],
    ] },
    TControlPoints: { size: 20, fields: [
        ['iCount', 'int', 0, 0],
        ['vdX', 'pointer', 4, 0],
        ['vdY', 'pointer', 8, 0],
        ['vdXa', 'pointer', 12, 0],
        ['vdYa', 'pointer', 16, 0],
    ] },
    TOrigins: { size: 32, fields: [
        ['dX', 'double', 0, 0],
        ['dY', 'double', 8, 0],
        ['dXa', 'double', 16, 0],
        ['dYa', 'double', 24, 0],
    ] },
    TVector: { size: 16, fields: [
        ['dX', 'double', 0, 0],
        ['dY', 'double', 8, 0],
    ] },
    TCovariance2: { size: 24, fields: [
        ['dXX', 'double', 0, 0],
        ['dXY', 'double', 8, 0],
        ['dYY', 'double', 16, 0],
    ] },
    TEllipse: { size: 32, fields: [
        ['dMajor', 'double', 0, 0],
        ['dMinor', 'double', 8, 0],
        ['dUx', 'double', 16, 0],
        ['dUy', 'double', 24, 0],
    ] },
    TCoefsCovariance: { size: 288, fields: [
        ['vdPacked', 'double', 0, 36],
    ] },
    TKindFit: { size: 88, fields: [
        ['Kind', 'int', 0, 0],
        ['bMirrored', 'int', 4, 0],
        ['Coefs', 'TOmographicParams', 8, 0],
        ['dSumOfSquares', 'double', 72, 0],
        ['iIterations', 'int', 80, 0],
        ['bConverged', 'int', 84, 0],
    ] },
    TSupport: { size: 12, fields: [
        ['vReasons', 'int', 0, 3],
    ] },
    TKindRow: { size: 144, fields: [
        ['Reason', 'int', 0, 0],
        ['iUnknowns', 'int', 4, 0],
        ['iFreedom', 'int', 8, 0],
        ['Fit', 'TKindFit', 16, 0],
        ['dRms', 'double', 104, 0],
        ['LeaveReason', 'int', 112, 0],
        ['dLeaveRms', 'double', 120, 0],
        ['dLeaveGreatest', 'double', 128, 0],
        ['iLeaveGreatest', 'int', 136, 0],
    ] },
    TShape: { size: 72, fields: [
        ['bExists', 'int', 0, 0],
        ['dSx', 'double', 8, 0],
        ['dSy', 'double', 16, 0],
        ['dSkew', 'double', 24, 0],
        ['dRotation', 'double', 32, 0],
        ['dSigmaSx', 'double', 40, 0],
        ['dSigmaSy', 'double', 48, 0],
        ['dSigmaSkew', 'double', 56, 0],
        ['dSigmaRotation', 'double', 64, 0],
    ] },
    TPointJudgement: { size: 128, fields: [
        ['Role', 'int', 0, 0],
        ['iDropped', 'int', 4, 0],
        ['dX', 'double', 8, 0],
        ['dY', 'double', 16, 0],
        ['dLength', 'double', 24, 0],
        ['bSource', 'int', 32, 0],
        ['dSourceX', 'double', 40, 0],
        ['dSourceY', 'double', 48, 0],
        ['bLeave', 'int', 56, 0],
        ['dLeaveX', 'double', 64, 0],
        ['dLeaveY', 'double', 72, 0],
        ['dLeaveLength', 'double', 80, 0],
        ['bTested', 'int', 88, 0],
        ['dStandardised', 'double', 96, 0],
        ['dStudentised', 'double', 104, 0],
        ['dProbability', 'double', 112, 0],
        ['bSuspect', 'int', 120, 0],
        ['SuspectKind', 'int', 124, 0],
    ] },
    TOptions: { size: 24, fields: [
        ['Method', 'int', 0, 0],
        ['bMirrored', 'int', 4, 0],
        ['bRaw', 'int', 8, 0],
        ['bRobust', 'int', 12, 0],
        ['dLevel', 'double', 16, 0],
    ] },
    TJudgement: { size: 1352, fields: [
        ['Fit', 'TKindFit', 0, 0],
        ['Choice', 'int', 88, 0],
        ['vKinds', 'TKindRow', 96, 3],
        ['Support', 'TSupport', 528, 0],
        ['Origins', 'TOrigins', 544, 0],
        ['bOriginal', 'int', 576, 0],
        ['Original', 'TOmographicParams', 584, 0],
        ['dFrameDifference', 'double', 648, 0],
        ['Shape', 'TShape', 656, 0],
        ['iFitted', 'int', 728, 0],
        ['iChecks', 'int', 732, 0],
        ['iDropped', 'int', 736, 0],
        ['iSuspects', 'int', 740, 0],
        ['iUnknowns', 'int', 744, 0],
        ['iFreedom', 'int', 748, 0],
        ['dRms', 'double', 752, 0],
        ['dCheckRms', 'double', 760, 0],
        ['iLargest', 'int', 768, 0],
        ['bSigma', 'int', 772, 0],
        ['Covariance', 'TCoefsCovariance', 776, 0],
        ['OriginalCovariance', 'TCoefsCovariance', 1064, 0],
    ] },
};
