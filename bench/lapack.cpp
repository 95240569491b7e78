// lapack.cpp: the reference LAPACK and OpenBLAS in one process, although their functions have the same names.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "lapack.h"

#include "contest.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <utility>

namespace bench {

// Every implementation is loaded into a link-map namespace of its own. So its LAPACK calls its own BLAS, and not a
// library of the same names that the program has loaded already.
TLapack::TLapack(std::string a_szName, const char* a_szBlas, const char* a_szLapack) : m_szName(std::move(a_szName))
{
    m_pBlas = dlmopen(LM_ID_NEWLM, a_szBlas, RTLD_NOW | RTLD_LOCAL);
    Lmid_t iNamespace = 0;
    if (m_pBlas == nullptr || dlinfo(m_pBlas, RTLD_DI_LMID, &iNamespace) != 0 ||
        (m_pLapack = dlmopen(iNamespace, a_szLapack, RTLD_NOW | RTLD_LOCAL)) == nullptr)
    {
        NameMissing(m_szName);
        return;
    }
    m_bLoaded = true;
    for (const auto& [pFunction, szSymbol] : {std::pair<void**, const char*>{&m_pGels, "dgels_"},
                                              {&m_pPotrf, "dpotrf_"},
                                              {&m_pPotrs, "dpotrs_"},
                                              {&m_pPptrf, "dpptrf_"},
                                              {&m_pPptrs, "dpptrs_"},
                                              {&m_pPftrf, "dpftrf_"},
                                              {&m_pPftrs, "dpftrs_"},
                                              {&m_pTpttf, "dtpttf_"},
                                              {&m_pTfttp, "dtfttp_"},
                                              {&m_pHseqr, "dhseqr_"},
                                              {&m_pSpr, "dspr_"},
                                              {&m_pAxpy, "daxpy_"}})
    {
        *pFunction = Find(szSymbol);
    }

    // This LAPACK must call the BLAS that was asked for.
    Dl_info Info;
    if (dladdr(Find("dgemm_"), &Info) == 0 || std::strcmp(Info.dli_fname, a_szBlas) != 0)
    {
        std::fprintf(stderr, "%s calls the BLAS of another library\n", m_szName.c_str());
        std::exit(EXIT_FAILURE);
    }
    int iMajor = 0, iMinor = 0, iPatch = 0;
    reinterpret_cast<void (*)(int*, int*, int*)>(Find("ilaver_"))(&iMajor, &iMinor, &iPatch);
    std::string szVersion = std::to_string(iMajor) + '.' + std::to_string(iMinor) + '.' + std::to_string(iPatch);
    if (void* const pConfig = dlsym(m_pLapack, "openblas_get_config"))
    {
        szVersion = reinterpret_cast<const char* (*)()>(pConfig)();
        szVersion.erase(0, szVersion.find(' ') + 1); // OpenBLAS repeats its name
    }
    NameVersion(m_szName, szVersion);
}

void* TLapack::Find(const char* a_szSymbol) const
{
    void* const pSymbol = dlsym(m_pLapack, a_szSymbol);
    if (pSymbol == nullptr)
    {
        std::fprintf(stderr, "%s: no %s\n", m_szName.c_str(), a_szSymbol);
        std::exit(EXIT_FAILURE);
    }
    return pSymbol;
}

namespace {

// Calls a Fortran function: all arguments are addresses, and the lengths of texts follow after the other arguments.
template <class... TArguments> void Call(void* a_pFunction, TArguments... a_Arguments)
{
    reinterpret_cast<void (*)(TArguments...)>(a_pFunction)(a_Arguments...);
}

constexpr std::size_t LENGTH = 1; // of every text argument
constexpr int ONE = 1;

// Calls a routine that needs a work array. The first call passes the size -1, and the routine returns the size that it
// needs.
template <class TCall> int CallWithWork(std::vector<double>& a_vdWork, TCall a_Call)
{
    int iInfo = 0;
    if (a_vdWork.empty())
    {
        double dSize = 0.0;
        const int iAsk = -1;
        a_Call(&dSize, &iAsk, &iInfo);
        a_vdWork.resize(static_cast<std::size_t>(dSize));
    }
    const int iSize = static_cast<int>(a_vdWork.size());
    a_Call(a_vdWork.data(), &iSize, &iInfo);
    return iInfo;
}

} // namespace

int TLapack::Gels(int m, int n, int a_iNrhs, double* a_vdA, double* a_vdB, std::vector<double>& a_vdWork) const
{
    return CallWithWork(
        a_vdWork, [&](double* a_vd, const int* a_piSize, int* a_piInfo)
        { Call(m_pGels, "N", &m, &n, &a_iNrhs, a_vdA, &m, a_vdB, &m, a_vd, a_piSize, a_piInfo, LENGTH); });
}

int TLapack::Potrf(char a_cUplo, int n, double* a_vdA) const
{
    int iInfo = 0;
    Call(m_pPotrf, &a_cUplo, &n, a_vdA, &n, &iInfo, LENGTH);
    return iInfo;
}

int TLapack::Potrs(char a_cUplo, int n, const double* a_vdA, double* a_vdB) const
{
    int iInfo = 0;
    Call(m_pPotrs, &a_cUplo, &n, &ONE, a_vdA, &n, a_vdB, &n, &iInfo, LENGTH);
    return iInfo;
}

int TLapack::Pptrf(char a_cUplo, int n, double* a_vdA) const
{
    int iInfo = 0;
    Call(m_pPptrf, &a_cUplo, &n, a_vdA, &iInfo, LENGTH);
    return iInfo;
}

int TLapack::Pptrs(char a_cUplo, int n, const double* a_vdA, double* a_vdB) const
{
    int iInfo = 0;
    Call(m_pPptrs, &a_cUplo, &n, &ONE, a_vdA, a_vdB, &n, &iInfo, LENGTH);
    return iInfo;
}

int TLapack::Pftrf(char a_cTransr, char a_cUplo, int n, double* a_vdA) const
{
    int iInfo = 0;
    Call(m_pPftrf, &a_cTransr, &a_cUplo, &n, a_vdA, &iInfo, LENGTH, LENGTH);
    return iInfo;
}

int TLapack::Pftrs(char a_cTransr, char a_cUplo, int n, const double* a_vdA, double* a_vdB) const
{
    int iInfo = 0;
    Call(m_pPftrs, &a_cTransr, &a_cUplo, &n, &ONE, a_vdA, a_vdB, &n, &iInfo, LENGTH, LENGTH);
    return iInfo;
}

int TLapack::Tpttf(char a_cTransr, char a_cUplo, int n, const double* a_vdPacked, double* a_vdRectangular) const
{
    int iInfo = 0;
    Call(m_pTpttf, &a_cTransr, &a_cUplo, &n, a_vdPacked, a_vdRectangular, &iInfo, LENGTH, LENGTH);
    return iInfo;
}

int TLapack::Tfttp(char a_cTransr, char a_cUplo, int n, const double* a_vdRectangular, double* a_vdPacked) const
{
    int iInfo = 0;
    Call(m_pTfttp, &a_cTransr, &a_cUplo, &n, a_vdRectangular, a_vdPacked, &iInfo, LENGTH, LENGTH);
    return iInfo;
}

int TLapack::Hseqr(int n, double* a_vdH, double* a_vdReal, double* a_vdImaginary, std::vector<double>& a_vdWork) const
{
    double dUnused = 0.0; // the Schur vectors are not computed
    return CallWithWork(a_vdWork,
                        [&](double* a_vd, const int* a_piSize, int* a_piInfo)
                        {
                            Call(m_pHseqr, "E", "N", &n, &ONE, &n, a_vdH, &n, a_vdReal, a_vdImaginary, &dUnused, &ONE,
                                 a_vd, a_piSize, a_piInfo, LENGTH, LENGTH);
                        });
}

void TLapack::Spr(char a_cUplo, int n, double a_dAlpha, const double* a_vdX, double* a_vdPacked) const
{
    Call(m_pSpr, &a_cUplo, &n, &a_dAlpha, a_vdX, &ONE, a_vdPacked, LENGTH);
}

void TLapack::Axpy(int n, double a_dAlpha, const double* a_vdX, double* a_vdY) const
{
    Call(m_pAxpy, &n, &a_dAlpha, a_vdX, &ONE, a_vdY, &ONE);
}

const std::vector<TLapack>& Lapacks()
{
    static const std::vector<TLapack> All = []
    {
        std::vector<TLapack> Loaded;
        for (TLapack Lapack : {TLapack("LAPACK reference", NUV_BENCH_REFERENCE_BLAS, NUV_BENCH_REFERENCE_LAPACK),
                               TLapack("OpenBLAS", NUV_BENCH_OPENBLAS, NUV_BENCH_OPENBLAS)})
        {
            if (Lapack.IsLoaded())
            {
                Loaded.push_back(Lapack);
            }
        }
        return Loaded;
    }();
    return All;
}

} // namespace bench
