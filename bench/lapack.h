// lapack.h: the reference LAPACK and OpenBLAS in one process, although their functions have the same names.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_BENCH_LAPACK_H
#define NUV_BENCH_LAPACK_H

#include <string>
#include <vector>

namespace bench {

// One implementation. The arguments are those of LAPACK, matrices are stored by columns, and the result is its info.
class TLapack
{
public:
    // Loads the file of the BLAS and the file of LAPACK. a_szName is for the page.
    TLapack(std::string a_szName, const char* a_szBlas, const char* a_szLapack);

    bool IsLoaded() const
    {
        return m_bLoaded;
    }
    const std::string& Name() const
    {
        return m_szName;
    }

    int Gels(int m, int n, int a_iNrhs, double* a_vdA, double* a_vdB, std::vector<double>& a_vdWork) const;
    int Potrf(char a_cUplo, int n, double* a_vdA) const;
    int Potrs(char a_cUplo, int n, const double* a_vdA, double* a_vdB) const;
    int Pptrf(char a_cUplo, int n, double* a_vdA) const;
    int Pptrs(char a_cUplo, int n, const double* a_vdA, double* a_vdB) const;
    int Pftrf(char a_cTransr, char a_cUplo, int n, double* a_vdA) const;
    int Pftrs(char a_cTransr, char a_cUplo, int n, const double* a_vdA, double* a_vdB) const;
    int Tpttf(char a_cTransr, char a_cUplo, int n, const double* a_vdPacked, double* a_vdRectangular) const;
    int Tfttp(char a_cTransr, char a_cUplo, int n, const double* a_vdRectangular, double* a_vdPacked) const;
    int Hseqr(int n, double* a_vdH, double* a_vdReal, double* a_vdImaginary, std::vector<double>& a_vdWork) const;
    void Spr(char a_cUplo, int n, double a_dAlpha, const double* a_vdX, double* a_vdPacked) const;
    void Axpy(int n, double a_dAlpha, const double* a_vdX, double* a_vdY) const;

private:
    void* Find(const char* a_szSymbol) const;

    std::string m_szName;
    bool m_bLoaded = false;
    void* m_pBlas = nullptr;
    void* m_pLapack = nullptr;
    void *m_pGels = nullptr, *m_pPotrf = nullptr, *m_pPotrs = nullptr, *m_pPptrf = nullptr, *m_pPptrs = nullptr,
         *m_pPftrf = nullptr, *m_pPftrs = nullptr, *m_pTpttf = nullptr, *m_pTfttp = nullptr, *m_pHseqr = nullptr,
         *m_pSpr = nullptr, *m_pAxpy = nullptr;
};

// The installed implementations. The page names the others as missing.
const std::vector<TLapack>& Lapacks();

} // namespace bench

#endif // NUV_BENCH_LAPACK_H
