// forms.h: the library in its plain form and in its faster forms, in one program.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The build compiles the library once for each form, with another name in place of nuv for the namespace. So the public
// header is read once for each name. NUV_FORM_PAIRS, NUV_FORM_FOURS and NUV_FORM_DEVICE are defined where these forms
// are built.

#ifndef NUV_TESTS_SUPPORT_FORMS_H
#define NUV_TESTS_SUPPORT_FORMS_H

#include "nuv1math.h"

#undef NUV_NUV1MATH_H
#define nuv nuv_plain
#include "nuv1math.h"
#undef nuv
#ifdef NUV_FORM_PAIRS
#undef NUV_NUV1MATH_H
#define nuv nuv_pairs
#include "nuv1math.h"
#undef nuv
#endif
#ifdef NUV_FORM_FOURS
#undef NUV_NUV1MATH_H
#define nuv nuv_fours
#include "nuv1math.h"
#undef nuv
#endif
#ifdef NUV_FORM_DEVICE
#undef NUV_NUV1MATH_H
#define nuv nuv_device
#include "nuv1math.h"
#undef nuv
#endif

#include "control_points.h"
#include "records.h"

#include <string>
#include <vector>

namespace nuv_tests {

// The functions of one form that have a faster form, or a test of bits in place of a comparison. A fit returns its code
// and the fields of its record.
struct TForm
{
    std::string szName;
    bool (*pCholesky)(int, double*);
    void (*pSolveChol)(int, const double*, double*);
    bool (*pCholeskyLowTri)(int, double*);
    void (*pSolveCholLowTri)(int, const double*, double*);
    void (*pUpdate)(int, double*, double*, const double*, double);
    int (*pRoots)(unsigned int, const double*, double*, double);
    int (*pSolveLinTrig)(double, double, double, double*);
    int (*pSolveQuadTrig)(double, double, double, double, double, double, double*);
    void (*pSetRandomSeed)(int);
    double (*pRand)();
    double (*pRandn)();
    int (*pFitConformal)(const TControlPoints&, std::vector<double>&);
    int (*pFitAffine)(const TControlPoints&, std::vector<double>&);
    int (*pFitOmographic)(const TControlPoints&, std::vector<double>&);
};

template <class TRecord> void CopyFields(const TRecord& a_Record, std::vector<double>& a_vdFields)
{
    const auto Values = Fields(a_Record);
    a_vdFields.assign(Values.begin(), Values.end());
}

#define NUV_TESTS_FORM(a_Namespace)                                                                                    \
    TForm                                                                                                              \
    {                                                                                                                  \
#a_Namespace, a_Namespace::Cholesky, a_Namespace::SolveChol, a_Namespace::CholeskyLowTri,                      \
            a_Namespace::SolveCholLowTri, a_Namespace::UpdateNormMatrixLowTri, a_Namespace::Roots,                     \
            a_Namespace::SolveLinTrig, a_Namespace::SolveQuadTrig, a_Namespace::SetRandomSeed, a_Namespace::Rand,      \
            a_Namespace::Randn,                                                                                        \
            [](const TControlPoints& p, std::vector<double>& a_vdFields) {                                             \
                auto Coefs = Filled<a_Namespace::TConformalCoefs>();                                                   \
                const int iResult =                                                                                    \
                    a_Namespace::CalcConformalCoefs(static_cast<unsigned int>(p.Count()), p.vdX.data(), p.vdY.data(),  \
                                                    p.vdXa.data(), p.vdYa.data(), false, Coefs);                       \
                CopyFields(Coefs, a_vdFields);                                                                         \
                return iResult;                                                                                        \
            },                                                                                                         \
            [](const TControlPoints& p, std::vector<double>& a_vdFields) {                                             \
                auto Coefs = Filled<a_Namespace::TAffineCoefs>();                                                      \
                const int iResult =                                                                                    \
                    a_Namespace::CalcAffineCoefs(static_cast<unsigned int>(p.Count()), p.vdX.data(), p.vdY.data(),     \
                                                 p.vdXa.data(), p.vdYa.data(), Coefs);                                 \
                CopyFields(Coefs, a_vdFields);                                                                         \
                return iResult;                                                                                        \
            },                                                                                                         \
            [](const TControlPoints& p, std::vector<double>& a_vdFields) {                                             \
                auto Params = Filled<a_Namespace::TOmographicParams>();                                                \
                const int iResult = a_Namespace::CalcOmographicCoefs(p.Count(), p.vdX.data(), p.vdY.data(),            \
                                                                     p.vdXa.data(), p.vdYa.data(), Params);            \
                CopyFields(Params, a_vdFields);                                                                        \
                return iResult;                                                                                        \
            }       \
    }

inline const TForm PlainForm = NUV_TESTS_FORM(nuv_plain);

// What is compared with the plain form: the library as it is delivered, and the other faster forms.
inline const std::vector<TForm> FasterForms = {
    NUV_TESTS_FORM(nuv),
#ifdef NUV_FORM_PAIRS
    NUV_TESTS_FORM(nuv_pairs),
#endif
#ifdef NUV_FORM_FOURS
    NUV_TESTS_FORM(nuv_fours),
#endif
#ifdef NUV_FORM_DEVICE
    NUV_TESTS_FORM(nuv_device),
#endif
};

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_FORMS_H
