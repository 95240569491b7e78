// nuv1math_c.cpp: forwards the functions of the C interface to those of C++.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
// Made by generate.py from nuv1math.h and judgement.h; change those, and run it again.

#include "nuv1math_c.h"

#include <cstddef>
#include <judgement.h>
#include <nuv1math.h>

// A record of C has the fields of the record of C++ at the same places.
#define SAME_SIZE(c, cpp) static_assert(sizeof(c) == sizeof(cpp), "the size of " #c)
#define SAME_PLACE(c, cpp, field)                                                                                      \
    static_assert(offsetof(c, field) == offsetof(cpp, field), "the place of " #c "." #field)
#define SAME_ENUMERATION(cpp) static_assert(sizeof(int) == sizeof(cpp), "the size of " #cpp)

namespace {

// The records are the same memory under two names. Only the functions that are called here read and write it, and they
// are compiled elsewhere.
template <class TTo, class TFrom> TTo* Same(TFrom* a_pFrom)
{
    return reinterpret_cast<TTo*>(a_pFrom);
}

} // namespace

SAME_ENUMERATION(nuv::enumMethodUsed);
SAME_SIZE(nuv_TAffineCoefs, nuv::TAffineCoefs);
SAME_PLACE(nuv_TAffineCoefs, nuv::TAffineCoefs, dA);
SAME_PLACE(nuv_TAffineCoefs, nuv::TAffineCoefs, dB);
SAME_PLACE(nuv_TAffineCoefs, nuv::TAffineCoefs, dC);
SAME_PLACE(nuv_TAffineCoefs, nuv::TAffineCoefs, dD);
SAME_PLACE(nuv_TAffineCoefs, nuv::TAffineCoefs, dE);
SAME_PLACE(nuv_TAffineCoefs, nuv::TAffineCoefs, dF);
SAME_SIZE(nuv_TConformalCoefs, nuv::TConformalCoefs);
SAME_PLACE(nuv_TConformalCoefs, nuv::TConformalCoefs, dA);
SAME_PLACE(nuv_TConformalCoefs, nuv::TConformalCoefs, dB);
SAME_PLACE(nuv_TConformalCoefs, nuv::TConformalCoefs, dTx);
SAME_PLACE(nuv_TConformalCoefs, nuv::TConformalCoefs, dTy);
SAME_PLACE(nuv_TConformalCoefs, nuv::TConformalCoefs, dInvA);
SAME_PLACE(nuv_TConformalCoefs, nuv::TConformalCoefs, dInvB);
SAME_SIZE(nuv_TOmographicParams, nuv::TOmographicParams);
SAME_PLACE(nuv_TOmographicParams, nuv::TOmographicParams, dA);
SAME_PLACE(nuv_TOmographicParams, nuv::TOmographicParams, dB);
SAME_PLACE(nuv_TOmographicParams, nuv::TOmographicParams, dC);
SAME_PLACE(nuv_TOmographicParams, nuv::TOmographicParams, dD);
SAME_PLACE(nuv_TOmographicParams, nuv::TOmographicParams, dE);
SAME_PLACE(nuv_TOmographicParams, nuv::TOmographicParams, dF);
SAME_PLACE(nuv_TOmographicParams, nuv::TOmographicParams, dG);
SAME_PLACE(nuv_TOmographicParams, nuv::TOmographicParams, dH);

SAME_ENUMERATION(judgement::enumReason);
SAME_ENUMERATION(judgement::enumMethod);
SAME_ENUMERATION(judgement::enumChoice);
SAME_ENUMERATION(judgement::enumRole);
SAME_SIZE(nuv_TControlPoints, judgement::TControlPoints);
SAME_PLACE(nuv_TControlPoints, judgement::TControlPoints, iCount);
SAME_PLACE(nuv_TControlPoints, judgement::TControlPoints, vdX);
SAME_PLACE(nuv_TControlPoints, judgement::TControlPoints, vdY);
SAME_PLACE(nuv_TControlPoints, judgement::TControlPoints, vdXa);
SAME_PLACE(nuv_TControlPoints, judgement::TControlPoints, vdYa);
SAME_SIZE(nuv_TOrigins, judgement::TOrigins);
SAME_PLACE(nuv_TOrigins, judgement::TOrigins, dX);
SAME_PLACE(nuv_TOrigins, judgement::TOrigins, dY);
SAME_PLACE(nuv_TOrigins, judgement::TOrigins, dXa);
SAME_PLACE(nuv_TOrigins, judgement::TOrigins, dYa);
SAME_SIZE(nuv_TVector, judgement::TVector);
SAME_PLACE(nuv_TVector, judgement::TVector, dX);
SAME_PLACE(nuv_TVector, judgement::TVector, dY);
SAME_SIZE(nuv_TCovariance2, judgement::TCovariance2);
SAME_PLACE(nuv_TCovariance2, judgement::TCovariance2, dXX);
SAME_PLACE(nuv_TCovariance2, judgement::TCovariance2, dXY);
SAME_PLACE(nuv_TCovariance2, judgement::TCovariance2, dYY);
SAME_SIZE(nuv_TEllipse, judgement::TEllipse);
SAME_PLACE(nuv_TEllipse, judgement::TEllipse, dMajor);
SAME_PLACE(nuv_TEllipse, judgement::TEllipse, dMinor);
SAME_PLACE(nuv_TEllipse, judgement::TEllipse, dUx);
SAME_PLACE(nuv_TEllipse, judgement::TEllipse, dUy);
SAME_SIZE(nuv_TCoefsCovariance, judgement::TCoefsCovariance);
SAME_PLACE(nuv_TCoefsCovariance, judgement::TCoefsCovariance, vdPacked);
SAME_SIZE(nuv_TKindFit, judgement::TKindFit);
SAME_PLACE(nuv_TKindFit, judgement::TKindFit, Kind);
SAME_PLACE(nuv_TKindFit, judgement::TKindFit, bMirrored);
SAME_PLACE(nuv_TKindFit, judgement::TKindFit, Coefs);
SAME_PLACE(nuv_TKindFit, judgement::TKindFit, dSumOfSquares);
SAME_PLACE(nuv_TKindFit, judgement::TKindFit, iIterations);
SAME_PLACE(nuv_TKindFit, judgement::TKindFit, bConverged);
SAME_SIZE(nuv_TSupport, judgement::TSupport);
SAME_PLACE(nuv_TSupport, judgement::TSupport, vReasons);
SAME_SIZE(nuv_TKindRow, judgement::TKindRow);
SAME_PLACE(nuv_TKindRow, judgement::TKindRow, Reason);
SAME_PLACE(nuv_TKindRow, judgement::TKindRow, iUnknowns);
SAME_PLACE(nuv_TKindRow, judgement::TKindRow, iFreedom);
SAME_PLACE(nuv_TKindRow, judgement::TKindRow, Fit);
SAME_PLACE(nuv_TKindRow, judgement::TKindRow, dRms);
SAME_PLACE(nuv_TKindRow, judgement::TKindRow, LeaveReason);
SAME_PLACE(nuv_TKindRow, judgement::TKindRow, dLeaveRms);
SAME_PLACE(nuv_TKindRow, judgement::TKindRow, dLeaveGreatest);
SAME_PLACE(nuv_TKindRow, judgement::TKindRow, iLeaveGreatest);
SAME_SIZE(nuv_TShape, judgement::TShape);
SAME_PLACE(nuv_TShape, judgement::TShape, bExists);
SAME_PLACE(nuv_TShape, judgement::TShape, dSx);
SAME_PLACE(nuv_TShape, judgement::TShape, dSy);
SAME_PLACE(nuv_TShape, judgement::TShape, dSkew);
SAME_PLACE(nuv_TShape, judgement::TShape, dRotation);
SAME_PLACE(nuv_TShape, judgement::TShape, dSigmaSx);
SAME_PLACE(nuv_TShape, judgement::TShape, dSigmaSy);
SAME_PLACE(nuv_TShape, judgement::TShape, dSigmaSkew);
SAME_PLACE(nuv_TShape, judgement::TShape, dSigmaRotation);
SAME_SIZE(nuv_TPointJudgement, judgement::TPointJudgement);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, Role);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, iDropped);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, dX);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, dY);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, dLength);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, bSource);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, dSourceX);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, dSourceY);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, bLeave);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, dLeaveX);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, dLeaveY);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, dLeaveLength);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, bTested);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, dStandardised);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, dStudentised);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, dProbability);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, bSuspect);
SAME_PLACE(nuv_TPointJudgement, judgement::TPointJudgement, SuspectKind);
SAME_SIZE(nuv_TOptions, judgement::TOptions);
SAME_PLACE(nuv_TOptions, judgement::TOptions, Method);
SAME_PLACE(nuv_TOptions, judgement::TOptions, bMirrored);
SAME_PLACE(nuv_TOptions, judgement::TOptions, bRaw);
SAME_PLACE(nuv_TOptions, judgement::TOptions, bRobust);
SAME_PLACE(nuv_TOptions, judgement::TOptions, dLevel);
SAME_SIZE(nuv_TJudgement, judgement::TJudgement);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, Fit);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, Choice);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, vKinds);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, Support);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, Origins);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, bOriginal);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, Original);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, dFrameDifference);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, Shape);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, iFitted);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, iChecks);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, iDropped);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, iSuspects);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, iUnknowns);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, iFreedom);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, dRms);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, dCheckRms);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, iLargest);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, bSigma);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, Covariance);
SAME_PLACE(nuv_TJudgement, judgement::TJudgement, OriginalCovariance);

int nuv_CalcCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa, const double* a_vdYa,
                  int a_bSameOrientation, nuv_enumMethodUsed a_Requested, nuv_enumMethodUsed* a_Used,
                  nuv_TOmographicParams* a_Params)
{
    return nuv::CalcCoefs(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, a_bSameOrientation != 0,
                          static_cast<nuv::enumMethodUsed>(a_Requested), *Same<nuv::enumMethodUsed>(a_Used),
                          *Same<nuv::TOmographicParams>(a_Params));
}

int nuv_CalcConformalCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                           const double* a_vdYa, int a_bRigidInverse, nuv_TConformalCoefs* a_Coefs)
{
    return nuv::CalcConformalCoefs(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, a_bRigidInverse != 0,
                                   *Same<nuv::TConformalCoefs>(a_Coefs));
}

int nuv_CalcAffineCoefs(unsigned int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                        const double* a_vdYa, nuv_TAffineCoefs* a_Coefs)
{
    return nuv::CalcAffineCoefs(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, *Same<nuv::TAffineCoefs>(a_Coefs));
}

int nuv_CalcOmographicCoefs(int a_iPoints, const double* a_vdX, const double* a_vdY, const double* a_vdXa,
                            const double* a_vdYa, nuv_TOmographicParams* a_Params)
{
    return nuv::CalcOmographicCoefs(a_iPoints, a_vdX, a_vdY, a_vdXa, a_vdYa, *Same<nuv::TOmographicParams>(a_Params));
}

void nuv_AffineParamsToCoefs(double a_dSx, double a_dSy, double a_dPhi, double a_dTheta, double a_dTx, double a_dTy,
                             nuv_TAffineCoefs* a_Coefs)
{
    nuv::AffineParamsToCoefs(a_dSx, a_dSy, a_dPhi, a_dTheta, a_dTx, a_dTy, *Same<nuv::TAffineCoefs>(a_Coefs));
}

int nuv_AffineCoefsToParam(const nuv_TAffineCoefs* a_Coefs, double* a_dSx, double* a_dSy, double* a_dPhi,
                           double* a_dTheta, double* a_dTx, double* a_dTy)
{
    return nuv::AffineCoefsToParam(*Same<const nuv::TAffineCoefs>(a_Coefs), *a_dSx, *a_dSy, *a_dPhi, *a_dTheta, *a_dTx,
                                   *a_dTy);
}

int nuv_AffineCoefsToInvCoefs(const nuv_TAffineCoefs* a_Coefs, nuv_TAffineCoefs* a_Inverse)
{
    return nuv::AffineCoefsToInvCoefs(*Same<const nuv::TAffineCoefs>(a_Coefs), *Same<nuv::TAffineCoefs>(a_Inverse));
}

void nuv_AffineUntransform(const nuv_TAffineCoefs* a_Coefs, double a_dXa, double a_dYa, double* a_dX, double* a_dY)
{
    nuv::AffineUntransform(*Same<const nuv::TAffineCoefs>(a_Coefs), a_dXa, a_dYa, *a_dX, *a_dY);
}

void nuv_ConformalParamsToCoefs(double a_dScale, double a_dAngle, double a_dTx, double a_dTy,
                                nuv_TConformalCoefs* a_Coefs)
{
    nuv::ConformalParamsToCoefs(a_dScale, a_dAngle, a_dTx, a_dTy, *Same<nuv::TConformalCoefs>(a_Coefs));
}

int nuv_ConformalCoefsToParam(const nuv_TConformalCoefs* a_Coefs, double* a_dScale, double* a_dAngle, double* a_dTx,
                              double* a_dTy)
{
    return nuv::ConformalCoefsToParam(*Same<const nuv::TConformalCoefs>(a_Coefs), *a_dScale, *a_dAngle, *a_dTx, *a_dTy);
}

void nuv_ConformalCoefsToInvCoefs(const nuv_TConformalCoefs* a_Coefs, nuv_TConformalCoefs* a_Inverse)
{
    nuv::ConformalCoefsToInvCoefs(*Same<const nuv::TConformalCoefs>(a_Coefs), *Same<nuv::TConformalCoefs>(a_Inverse));
}

void nuv_ConformalCoefsToAffineCoefs(const nuv_TConformalCoefs* a_Coefs, nuv_TAffineCoefs* a_Affine)
{
    nuv::ConformalCoefsToAffineCoefs(*Same<const nuv::TConformalCoefs>(a_Coefs), *Same<nuv::TAffineCoefs>(a_Affine));
}

void nuv_AffineCoefsToOmographicCoefs(const nuv_TAffineCoefs* a_Affine, nuv_TOmographicParams* a_Params)
{
    nuv::AffineCoefsToOmographicCoefs(*Same<const nuv::TAffineCoefs>(a_Affine),
                                      *Same<nuv::TOmographicParams>(a_Params));
}

void nuv_InitCholLowTri(int a_iUnknowns, double** a_pMatrix, double** a_pVector)
{
    nuv::InitCholLowTri(a_iUnknowns, a_pMatrix, a_pVector);
}

void nuv_DeleteCholLowTri(double* a_vdMatrix, double* a_vdVector)
{
    nuv::DeleteCholLowTri(a_vdMatrix, a_vdVector);
}

void nuv_UpdateNormMatrixLowTri(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, const double* a_vdRow,
                                double a_dValue)
{
    nuv::UpdateNormMatrixLowTri(a_iUnknowns, a_vdMatrix, a_vdVector, a_vdRow, a_dValue);
}

void nuv_UpdateNormMatrixLowTriSparse(int a_iUnknowns, double* a_vdMatrix, double* a_vdVector, int a_iCount,
                                      const double* a_vdValues, const int* a_viIndices, double a_dValue)
{
    nuv::UpdateNormMatrixLowTri(a_iUnknowns, a_vdMatrix, a_vdVector, a_iCount, a_vdValues, a_viIndices, a_dValue);
}

int nuv_CholeskyLowTri(int a_iUnknowns, double* a_vdMatrix)
{
    return nuv::CholeskyLowTri(a_iUnknowns, a_vdMatrix);
}

void nuv_SolveCholLowTri(int a_iUnknowns, const double* a_vdFactor, double* a_vdVector)
{
    nuv::SolveCholLowTri(a_iUnknowns, a_vdFactor, a_vdVector);
}

int nuv_RootsLinear(double a_dA11, double a_dA12, double a_dA21, double a_dA22, double a_dB1, double a_dB2,
                    double* a_dX, double* a_dY)
{
    return nuv::Roots(a_dA11, a_dA12, a_dA21, a_dA22, a_dB1, a_dB2, *a_dX, *a_dY);
}

int nuv_Cholesky(int a_iN, double* a_vdMatrix)
{
    return nuv::Cholesky(a_iN, a_vdMatrix);
}

void nuv_SolveChol(int a_iN, const double* a_vdFactor, double* a_vdVector)
{
    nuv::SolveChol(a_iN, a_vdFactor, a_vdVector);
}

int nuv_Roots(unsigned int iDegree, const double* vdA, double* a_vdRoots, double a_dTolerance)
{
    return nuv::Roots(iDegree, vdA, a_vdRoots, a_dTolerance);
}

int nuv_SolveLinTrig(double a_dA, double a_dB, double a_dC, double* a_vdAngles)
{
    return nuv::SolveLinTrig(a_dA, a_dB, a_dC, a_vdAngles);
}

int nuv_SolveQuadTrig(double a_dA, double a_dB, double a_dC, double a_dD, double a_dE, double a_dF, double* a_vdAngles)
{
    return nuv::SolveQuadTrig(a_dA, a_dB, a_dC, a_dD, a_dE, a_dF, a_vdAngles);
}

void nuv_SetRandomSeed(int a_iSeed)
{
    nuv::SetRandomSeed(a_iSeed);
}

double nuv_Rand(void)
{
    return nuv::Rand();
}

double nuv_RandRange(double a_dLow, double a_dHigh)
{
    return nuv::Rand(a_dLow, a_dHigh);
}

double nuv_Randn(void)
{
    return nuv::Randn();
}

double nuv_RandnScaled(double a_dMean, double a_dSigma)
{
    return nuv::Randn(a_dMean, a_dSigma);
}

int nuv_LeastPoints(nuv_enumMethodUsed a_Kind)
{
    return judgement::LeastPoints(static_cast<nuv::enumMethodUsed>(a_Kind));
}

int nuv_Unknowns(nuv_enumMethodUsed a_Kind)
{
    return judgement::Unknowns(static_cast<nuv::enumMethodUsed>(a_Kind));
}

double nuv_LocalOrigin(int a_iCount, const double* a_vdValues, double a_dExtent)
{
    return judgement::LocalOrigin(a_iCount, a_vdValues, a_dExtent);
}

void nuv_FindOrigins(const nuv_TControlPoints* a_Points, nuv_TOrigins* a_Origins)
{
    judgement::FindOrigins(*Same<const judgement::TControlPoints>(a_Points), *Same<judgement::TOrigins>(a_Origins));
}

void nuv_ReducePoints(const nuv_TControlPoints* a_Points, const nuv_TOrigins* a_Origins, double* a_vdX, double* a_vdY,
                      double* a_vdXa, double* a_vdYa)
{
    judgement::ReducePoints(*Same<const judgement::TControlPoints>(a_Points),
                            *Same<const judgement::TOrigins>(a_Origins), a_vdX, a_vdY, a_vdXa, a_vdYa);
}

double nuv_Extent(int a_iCount, const double* a_vdValues)
{
    return judgement::Extent(a_iCount, a_vdValues);
}

double nuv_RoundingLevel(const nuv_TControlPoints* a_Points)
{
    return judgement::RoundingLevel(*Same<const judgement::TControlPoints>(a_Points));
}

int nuv_ToOriginalFrame(const nuv_TOmographicParams* a_Local, const nuv_TOrigins* a_Origins,
                        nuv_TOmographicParams* a_Original)
{
    return judgement::ToOriginalFrame(*Same<const nuv::TOmographicParams>(a_Local),
                                      *Same<const judgement::TOrigins>(a_Origins),
                                      *Same<nuv::TOmographicParams>(a_Original));
}

void nuv_FindSupport(const nuv_TControlPoints* a_Points, nuv_TSupport* a_Support)
{
    judgement::FindSupport(*Same<const judgement::TControlPoints>(a_Points), *Same<judgement::TSupport>(a_Support));
}

nuv_enumReason nuv_FitKind(const nuv_TControlPoints* a_Points, nuv_enumMethodUsed a_Kind, int a_bMirrored,
                           nuv_TKindFit* a_Fit)
{
    return judgement::FitKind(*Same<const judgement::TControlPoints>(a_Points),
                              static_cast<nuv::enumMethodUsed>(a_Kind), a_bMirrored != 0,
                              *Same<judgement::TKindFit>(a_Fit));
}

double nuv_Residuals(const nuv_TControlPoints* a_Points, const nuv_TOmographicParams* a_Coefs, double* a_vdDx,
                     double* a_vdDy)
{
    return judgement::Residuals(*Same<const judgement::TControlPoints>(a_Points),
                                *Same<const nuv::TOmographicParams>(a_Coefs), a_vdDx, a_vdDy);
}

nuv_enumReason nuv_LeaveOneOut(const nuv_TControlPoints* a_Points, const nuv_TKindFit* a_Fit, double* a_vdLeaveX,
                               double* a_vdLeaveY, double* a_vdDrops)
{
    return judgement::LeaveOneOut(*Same<const judgement::TControlPoints>(a_Points),
                                  *Same<const judgement::TKindFit>(a_Fit), a_vdLeaveX, a_vdLeaveY, a_vdDrops);
}

nuv_enumReason nuv_JudgeKinds(const nuv_TControlPoints* a_Points, const nuv_TSupport* a_Support, int a_bMirrored,
                              nuv_TKindRow* a_vRows)
{
    return judgement::JudgeKinds(*Same<const judgement::TControlPoints>(a_Points),
                                 *Same<const judgement::TSupport>(a_Support), a_bMirrored != 0,
                                 Same<judgement::TKindRow>(a_vRows));
}

int nuv_ChooseKind(const nuv_TKindRow* a_vRows, double a_dRounding, nuv_enumMethodUsed* a_Kind,
                   nuv_enumChoice* a_Choice)
{
    return judgement::ChooseKind(Same<const judgement::TKindRow>(a_vRows), a_dRounding,
                                 *Same<nuv::enumMethodUsed>(a_Kind), *Same<judgement::enumChoice>(a_Choice));
}

double nuv_TailOfF(int a_iHalfNumerator, int a_iDenominator, double a_dX)
{
    return judgement::TailOfF(a_iHalfNumerator, a_iDenominator, a_dX);
}

double nuv_QuantileOfF(int a_iHalfNumerator, int a_iDenominator, double a_dProbability)
{
    return judgement::QuantileOfF(a_iHalfNumerator, a_iDenominator, a_dProbability);
}

nuv_enumReason nuv_FindBlunders(const nuv_TControlPoints* a_Points, const nuv_TKindFit* a_Fit, double a_dLevel,
                                double a_dRounding, int* a_viOrder, int* a_iFound)
{
    return judgement::FindBlunders(*Same<const judgement::TControlPoints>(a_Points),
                                   *Same<const judgement::TKindFit>(a_Fit), a_dLevel, a_dRounding, a_viOrder,
                                   *a_iFound);
}

nuv_enumReason nuv_CovarianceOfCoefs(const nuv_TControlPoints* a_Points, const nuv_TKindFit* a_Fit,
                                     nuv_TCoefsCovariance* a_Covariance)
{
    return judgement::CovarianceOfCoefs(*Same<const judgement::TControlPoints>(a_Points),
                                        *Same<const judgement::TKindFit>(a_Fit),
                                        *Same<judgement::TCoefsCovariance>(a_Covariance));
}

void nuv_CovarianceInOriginalFrame(const nuv_TCoefsCovariance* a_Covariance, const nuv_TOmographicParams* a_Local,
                                   const nuv_TOrigins* a_Origins, const nuv_TOmographicParams* a_Original,
                                   nuv_TCoefsCovariance* a_Result)
{
    judgement::CovarianceInOriginalFrame(
        *Same<const judgement::TCoefsCovariance>(a_Covariance), *Same<const nuv::TOmographicParams>(a_Local),
        *Same<const judgement::TOrigins>(a_Origins), *Same<const nuv::TOmographicParams>(a_Original),
        *Same<judgement::TCoefsCovariance>(a_Result));
}

double nuv_SigmaOfCoef(const nuv_TCoefsCovariance* a_Covariance, int a_iCoef)
{
    return judgement::SigmaOfCoef(*Same<const judgement::TCoefsCovariance>(a_Covariance), a_iCoef);
}

void nuv_FindShape(const nuv_TKindFit* a_Fit, const nuv_TCoefsCovariance* a_pCovariance, nuv_TShape* a_Shape)
{
    judgement::FindShape(*Same<const judgement::TKindFit>(a_Fit),
                         Same<const judgement::TCoefsCovariance>(a_pCovariance), *Same<judgement::TShape>(a_Shape));
}

void nuv_CovarianceOfImage(const nuv_TOmographicParams* a_Coefs, const nuv_TCoefsCovariance* a_Covariance, double a_dX,
                           double a_dY, nuv_TCovariance2* a_Result)
{
    judgement::CovarianceOfImage(*Same<const nuv::TOmographicParams>(a_Coefs),
                                 *Same<const judgement::TCoefsCovariance>(a_Covariance), a_dX, a_dY,
                                 *Same<judgement::TCovariance2>(a_Result));
}

nuv_enumReason nuv_CovarianceOfSource(const nuv_TOmographicParams* a_Coefs, const nuv_TCoefsCovariance* a_Covariance,
                                      double a_dX, double a_dY, nuv_TCovariance2* a_Result)
{
    return judgement::CovarianceOfSource(*Same<const nuv::TOmographicParams>(a_Coefs),
                                         *Same<const judgement::TCoefsCovariance>(a_Covariance), a_dX, a_dY,
                                         *Same<judgement::TCovariance2>(a_Result));
}

void nuv_ErrorEllipse(const nuv_TCovariance2* a_Covariance, nuv_TEllipse* a_Ellipse)
{
    judgement::ErrorEllipse(*Same<const judgement::TCovariance2>(a_Covariance), *Same<judgement::TEllipse>(a_Ellipse));
}

double nuv_Denominator(const nuv_TOmographicParams* a_Coefs, double a_dX, double a_dY)
{
    return judgement::Denominator(*Same<const nuv::TOmographicParams>(a_Coefs), a_dX, a_dY);
}

void nuv_ImageOf(const nuv_TOmographicParams* a_Coefs, double a_dX, double a_dY, nuv_TVector* a_Result)
{
    *Same<judgement::TVector>(a_Result) = judgement::ImageOf(*Same<const nuv::TOmographicParams>(a_Coefs), a_dX, a_dY);
}

nuv_enumReason nuv_TransformPoint(const nuv_TOmographicParams* a_Coefs, const nuv_TOrigins* a_Origins,
                                  const nuv_TVector* a_Source, nuv_TVector* a_Target)
{
    return judgement::TransformPoint(*Same<const nuv::TOmographicParams>(a_Coefs),
                                     *Same<const judgement::TOrigins>(a_Origins),
                                     *Same<const judgement::TVector>(a_Source), *Same<judgement::TVector>(a_Target));
}

nuv_enumReason nuv_InversePoint(const nuv_TOmographicParams* a_Coefs, const nuv_TOrigins* a_Origins,
                                const nuv_TVector* a_Target, nuv_TVector* a_Source)
{
    return judgement::InversePoint(*Same<const nuv::TOmographicParams>(a_Coefs),
                                   *Same<const judgement::TOrigins>(a_Origins),
                                   *Same<const judgement::TVector>(a_Target), *Same<judgement::TVector>(a_Source));
}

nuv_enumReason nuv_Judge(const nuv_TControlPoints* a_Points, const nuv_enumRole* a_pRoles,
                         const nuv_TOptions* a_Options, nuv_TJudgement* a_Result, nuv_TPointJudgement* a_vPoints)
{
    return judgement::Judge(*Same<const judgement::TControlPoints>(a_Points), Same<const judgement::enumRole>(a_pRoles),
                            *Same<const judgement::TOptions>(a_Options), *Same<judgement::TJudgement>(a_Result),
                            Same<judgement::TPointJudgement>(a_vPoints));
}
