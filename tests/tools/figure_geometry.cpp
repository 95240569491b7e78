// figure_geometry.cpp: what the figures of the documents show, computed by the library.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Prints one fact a line, for scripts/pages/figures.py:
//   value NAME V                  a parameter that a figure states
//   transform NAME A B ... H      a transformation, as the eight coefficients of TOmographicParams
//   point NAME x y X Y            a control point
//   element i j INDEX             where the library keeps an element of a packed matrix

#include "nuv1math.h"

#include <cmath>
#include <cstdio>
#include <vector>

constexpr double DEGREE = 3.141592653589793 / 180.0;

void PrintTransform(const char* a_szName, const nuv::TOmographicParams& a_Params)
{
    const nuv::TOmographicParams& P = a_Params;
    std::printf("transform %s %.17g %.17g %.17g %.17g %.17g %.17g %.17g %.17g\n", a_szName, P.dA, P.dB, P.dC, P.dD,
                P.dE, P.dF, P.dG, P.dH);
}

void PrintTransform(const char* a_szName, const nuv::TAffineCoefs& a_Coefs)
{
    nuv::TOmographicParams Params;
    nuv::AffineCoefsToOmographicCoefs(a_Coefs, Params);
    PrintTransform(a_szName, Params);
}

// An affine transformation and its parameters, in degrees. It is read back from its coefficients.
void PrintAffine(const char* a_szName, double a_dSx, double a_dSy, double a_dPhi, double a_dTheta)
{
    nuv::TAffineCoefs Coefs;
    nuv::AffineParamsToCoefs(a_dSx, a_dSy, a_dPhi * DEGREE, a_dTheta * DEGREE, 0.0, 0.0, Coefs);
    double dSx, dSy, dPhi, dTheta, dTx, dTy;
    if (nuv::AffineCoefsToParam(Coefs, dSx, dSy, dPhi, dTheta, dTx, dTy) == 1)
    {
        std::printf("value %s.sx %.17g\nvalue %s.sy %.17g\n", a_szName, dSx, a_szName, dSy);
        std::printf("value %s.phi %.17g\nvalue %s.theta %.17g\n", a_szName, dPhi / DEGREE, a_szName, dTheta / DEGREE);
    }
    PrintTransform(a_szName, Coefs);
}

void PrintConformal(const char* a_szName, double a_dScale, double a_dAngle)
{
    nuv::TConformalCoefs Coefs;
    nuv::ConformalParamsToCoefs(a_dScale, a_dAngle * DEGREE, 0.0, 0.0, Coefs);
    double dScale, dAngle, dTx, dTy;
    if (nuv::ConformalCoefsToParam(Coefs, dScale, dAngle, dTx, dTy) == 1)
    {
        std::printf("value %s.s %.17g\nvalue %s.theta %.17g\n", a_szName, dScale, a_szName, dAngle / DEGREE);
    }
    nuv::TAffineCoefs Affine;
    nuv::ConformalCoefsToAffineCoefs(Coefs, Affine);
    PrintTransform(a_szName, Affine);
}

struct TPoints
{
    std::vector<double> vdX, vdY, vdXa, vdYa;
};

void PrintPoints(const char* a_szName, const TPoints& a_Points)
{
    for (std::size_t i = 0; i < a_Points.vdX.size(); ++i)
    {
        std::printf("point %s %.17g %.17g %.17g %.17g\n", a_szName, a_Points.vdX[i], a_Points.vdY[i], a_Points.vdXa[i],
                    a_Points.vdYa[i]);
    }
}

void PrintFit(const char* a_szName, const TPoints& a_Points, bool a_bSameOrientation, nuv::enumMethodUsed a_Kind)
{
    nuv::enumMethodUsed Used;
    nuv::TOmographicParams Params;
    if (nuv::CalcCoefs(static_cast<int>(a_Points.vdX.size()), a_Points.vdX.data(), a_Points.vdY.data(),
                       a_Points.vdXa.data(), a_Points.vdYa.data(), a_bSameOrientation, a_Kind, Used, Params) &&
        Used == a_Kind)
    {
        PrintTransform(a_szName, Params);
    }
}

// The observation x_i + 3 x_j = 0 has the product 3 at (i, j), and the squares 1 and 9 on the diagonal.
void PrintElement(int a_iUnknowns, int i, int j)
{
    double *vdMatrix, *vdVector;
    nuv::InitCholLowTri(a_iUnknowns, &vdMatrix, &vdVector);
    const double vdValues[] = {1.0, 3.0};
    const int viColumns[] = {i, j};
    nuv::UpdateNormMatrixLowTri(a_iUnknowns, vdMatrix, vdVector, i == j ? 1 : 2, vdValues, viColumns, 0.0);
    for (int k = 0; k < a_iUnknowns * (a_iUnknowns + 1) / 2; ++k)
    {
        if (vdMatrix[k] == (i == j ? 1.0 : 3.0))
        {
            std::printf("element %d %d %d\n", i, j, k);
        }
    }
    nuv::DeleteCholLowTri(vdMatrix, vdVector);
}

int main()
{
    PrintAffine("affine", 1.5, 1.1, 28.0, 18.0);
    PrintConformal("conformal", 1.2, 24.0);
    PrintAffine("negative_sy", 1.3, -0.8, 0.0, 15.0);

    const TPoints Reversed = {{0.0, 1.0, 1.0, 0.0}, {0.0, 0.0, 1.0, 1.0}, {0.0, 0.8, 1.2, 0.4}, {0.0, 0.4, -0.4, -0.8}};
    PrintFit("reversed", Reversed, false, nuv::METHOD_CONFORMAL);
    PrintFit("not_reversed", Reversed, true, nuv::METHOD_CONFORMAL);

    const TPoints Plane = {{0.0, 1.0, 1.0, 0.0}, {0.0, 0.0, 1.0, 1.0}, {0.0, 1.15, 1.3, 0.35}, {0.0, 0.1, 0.85, 0.95}};
    PrintPoints("kinds", Plane);
    PrintFit("kind_conformal", Plane, true, nuv::METHOD_CONFORMAL);
    PrintFit("kind_affine", Plane, true, nuv::METHOD_AFFINE);
    PrintFit("kind_omographic", Plane, true, nuv::METHOD_OMOGRAPHIC);

    const TPoints Noisy = {{0.0, 2.0, 4.0, 0.4, 3.6, 2.2},
                           {0.0, 0.4, 0.0, 2.8, 3.0, 1.8},
                           {1.6, 2.3, 5.4, 0.3, 3.9, 2.9},
                           {0.2, 1.6, 1.4, 2.6, 3.9, 2.2}};
    PrintPoints("residuals", Noisy);
    PrintFit("residuals", Noisy, true, nuv::METHOD_CONFORMAL);

    for (int i = 0; i < 4; ++i)
    {
        for (int j = 0; j <= i; ++j)
        {
            PrintElement(4, i, j);
        }
    }
    return 0;
}
