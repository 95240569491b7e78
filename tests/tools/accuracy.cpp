// accuracy.cpp: makes the tables of docs/accuracy.md: errors of the library against arithmetic of 120 digits.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// accuracy FILE...    prints the tables, each after a line "== NAME". The files hold control points (x,y,X,Y).
//
// The tables are the same on every machine: all routines except the trigonometric ones give the same bits everywhere,
// and every figure is rounded up to one digit.

#include "accuracy.h"

#include "nuv1math.h"

#include <boost/multiprecision/eigen.hpp>
#define NUV_REFERENCE_REAL nuv_accuracy::TDigits
#include "support/reference_fits.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>

namespace nuv_accuracy {

std::string UpperDigit(double a_dValue)
{
    if (!std::isfinite(a_dValue))
    {
        return "none";
    }
    char szText[32];
    std::snprintf(szText, sizeof szText, "%.0e", a_dValue);
    if (std::strtod(szText, nullptr) < a_dValue)
    {
        std::snprintf(szText, sizeof szText, "%.0e", std::strtod(szText, nullptr) * (1.0 + 1.0 / (szText[0] - '0')));
    }
    return a_dValue < 1e-40 ? "0" : szText; // such an error is that of the reference
}

std::string Spread(TDoubles a_vdErrors)
{
    std::sort(a_vdErrors.begin(), a_vdErrors.end());
    return UpperDigit(a_vdErrors[a_vdErrors.size() / 2]) + " / " + UpperDigit(a_vdErrors.back());
}

void PrintRow(const std::vector<std::string>& a_vszCells)
{
    for (const std::string& szCell : a_vszCells)
    {
        std::printf("| %s ", szCell.c_str());
    }
    std::puts("|");
}

void StartTable(const char* a_szName, const std::vector<std::string>& a_vszHead)
{
    std::printf("== %s\n", a_szName);
    PrintRow(a_vszHead);
    std::printf("|---");
    for (std::size_t i = 1; i < a_vszHead.size(); ++i)
    {
        std::printf("|--:");
    }
    std::puts("|");
}

namespace {

using nuv_reference::TControlPoint;
using nuv_reference::TMatrix;
using nuv_reference::TVector;
using TPoints = std::vector<TControlPoint>;

// --- Conversions and inverses ----------------------------------------------------------------------------------------

// An affine transformation whose axes enclose an angle with this sine.
nuv::TAffineCoefs AffineOf(TRandom& a_Random, double a_dSine)
{
    const double dHalfTangent = a_Random();
    const double dScale = 1.5 + a_Random();
    const double dA = (1.0 - dHalfTangent * dHalfTangent) / (1.0 + dHalfTangent * dHalfTangent);
    const double dD = 2.0 * dHalfTangent / (1.0 + dHalfTangent * dHalfTangent);
    const double dAlong = std::sqrt(1.0 - a_dSine * a_dSine);
    return {dA, dScale * (dA * dAlong - dD * a_dSine), 100 * a_Random(),
            dD, dScale * (dD * dAlong + dA * a_dSine), 100 * a_Random()};
}

void PrintInverses()
{
    StartTable("inverses", {"sine of the angle between the axes", "inverse, linear part", "inverse, translation",
                            "point mapped backwards"});
    TRandom Random;
    for (double dSine : {1.0, 0.1, 1e-2, 1e-4, 1e-6, 1e-8})
    {
        TDoubles vdLinear, vdShift, vdPoint;
        for (int i = 0; i < 2000; ++i)
        {
            const nuv::TAffineCoefs T = AffineOf(Random, dSine);
            const TDigits Det = TDigits(T.dA) * T.dE - TDigits(T.dB) * T.dD;
            const TDigits vTrue[4] = {T.dE / Det, -T.dB / Det, -T.dD / Det, T.dA / Det};
            nuv::TAffineCoefs I;
            nuv::AffineCoefsToInvCoefs(T, I);
            const double vdFound[4] = {I.dA, I.dB, I.dD, I.dE};
            for (int k = 0; k < 4; ++k)
            {
                vdLinear.push_back(ToDouble(abs(vTrue[k] - vdFound[k]) / abs(vTrue[k])));
            }
            const auto Back = [&](int k, const TDigits& a_X, const TDigits& a_Y)
            { return vTrue[2 * k] * (a_X - T.dC) + vTrue[2 * k + 1] * (a_Y - T.dF); };
            const auto Error = [&](double a_dX, double a_dY, double a_dFoundX, double a_dFoundY)
            {
                const TDigits x = Back(0, a_dX, a_dY), y = Back(1, a_dX, a_dY);
                return ToDouble(hypot(x - a_dFoundX, y - a_dFoundY) / hypot(x, y));
            };
            vdShift.push_back(Error(0.0, 0.0, I.dC, I.dF));
            const double dX = 100 * Random(), dY = 100 * Random();
            double dFoundX, dFoundY;
            nuv::AffineUntransform(T, dX, dY, dFoundX, dFoundY);
            vdPoint.push_back(Error(dX, dY, dFoundX, dFoundY));
        }
        PrintRow({UpperDigit(dSine), Spread(vdLinear), Spread(vdShift), Spread(vdPoint)});
    }
}

// --- Fits ------------------------------------------------------------------------------------------------------------

const char* const Kinds[] = {"conformal", "affine", "omographic"};

// A fit by the library: its result code and the coefficients A to H.
struct TLibraryFit
{
    int iResult;
    TDoubles vdCoefs;
};

TLibraryFit FitByLibrary(const std::string& a_szKind, const TPoints& a_vPoints)
{
    TDoubles vdColumns[4];
    for (const TControlPoint& P : a_vPoints)
    {
        for (std::size_t k = 0; k < 4; ++k)
        {
            vdColumns[k].push_back(P[k]);
        }
    }
    const double *x = vdColumns[0].data(), *y = vdColumns[1].data(), *X = vdColumns[2].data(), *Y = vdColumns[3].data();
    const auto iCount = static_cast<unsigned int>(a_vPoints.size());
    nuv::TOmographicParams Params = {};
    nuv::TAffineCoefs Affine = {};
    nuv::TConformalCoefs Conformal = {};
    int iResult;
    if (a_szKind == "omographic")
    {
        iResult = nuv::CalcOmographicCoefs(static_cast<int>(iCount), x, y, X, Y, Params);
    }
    else if (a_szKind == "affine")
    {
        iResult = nuv::CalcAffineCoefs(iCount, x, y, X, Y, Affine);
        nuv::AffineCoefsToOmographicCoefs(Affine, Params);
    }
    else
    {
        iResult = nuv::CalcConformalCoefs(iCount, x, y, X, Y, false, Conformal);
        nuv::ConformalCoefsToAffineCoefs(Conformal, Affine);
        nuv::AffineCoefsToOmographicCoefs(Affine, Params);
    }
    return {iResult, {Params.dA, Params.dB, Params.dC, Params.dD, Params.dE, Params.dF, Params.dG, Params.dH}};
}

struct TFitErrors
{
    double
        dPosition; // greatest distance between the images of a control point by both fits; NaN if the library has none
    double dCoefs; // greatest error of A, B, D, E relative to the greatest of them
    double dResidual; // excess of the sum of squared residuals, relative to that of the exact fit
};

TFitErrors CompareFit(const std::string& a_szKind, const TPoints& a_vPoints)
{
    const TLibraryFit Fit = FitByLibrary(a_szKind, a_vPoints);
    const nuv_reference::TFit True = nuv_reference::ReferenceFit(a_szKind, false, a_vPoints);
    if (Fit.iResult != 1 ||
        !std::all_of(Fit.vdCoefs.begin(), Fit.vdCoefs.end(), [](double d) { return std::isfinite(d); }))
    {
        return {NAN, NAN, NAN};
    }
    TFitErrors Errors = {0, 0, 0};
    TDigits Sum = 0, TrueSum = 0, Greatest = 0, CoefError = 0;
    const TDoubles& c = Fit.vdCoefs;
    for (std::size_t i = 0; i < a_vPoints.size(); ++i)
    {
        const TDigits x = a_vPoints[i][0], y = a_vPoints[i][1];
        const TDigits W = c[6] * x + c[7] * y + 1;
        TDigits Distance = 0;
        for (std::size_t k = 0; k < 2; ++k)
        {
            const TDigits Residual = (c[3 * k] * x + c[3 * k + 1] * y + c[3 * k + 2]) / W - a_vPoints[i][2 + k];
            const TDigits TrueResidual = True.vResiduals[i][k];
            Sum += Residual * Residual;
            TrueSum += TrueResidual * TrueResidual;
            Distance += (Residual - TrueResidual) * (Residual - TrueResidual);
        }
        Errors.dPosition = std::max(Errors.dPosition, ToDouble(sqrt(Distance)));
    }
    for (int k : {0, 1, 3, 4})
    {
        Greatest = std::max<TDigits>(Greatest, abs(True.Coefs(k)));
        CoefError = std::max<TDigits>(CoefError, abs(True.Coefs(k) - c[static_cast<std::size_t>(k)]));
    }
    Errors.dCoefs = ToDouble(CoefError / Greatest);
    Errors.dResidual = ToDouble(Sum / TrueSum - 1);
    return Errors;
}

// Sixteen points of a shifted square and their images, with noise of a ten-thousandth of the extent.
TPoints MakePoints(const std::string& a_szKind, double a_dOffset, double a_dExtent)
{
    TRandom Random;
    TPoints vPoints;
    const double dSkew = a_szKind == "conformal" ? 0.0 : 0.15;
    const double dTilt = a_szKind == "omographic" ? 0.2 : 0.0;
    for (int i = 0; i < 16; ++i)
    {
        const double u = (i % 4 - 1.5) / 3.0 + 0.05 * Random();
        const double v = (i / 4 - 1.5) / 3.0 + 0.05 * Random();
        const double w = 1.0 - dTilt * u - 0.5 * dTilt * v; // far from 0, also at the origin
        const double U = (0.9 * u + (0.4 + dSkew) * v) / w + 1e-4 * Random();
        const double V = (-0.4 * u + (0.9 + dSkew) * v) / w + 1e-4 * Random();
        vPoints.push_back({a_dOffset + a_dExtent * u, a_dOffset + a_dExtent * v, a_dOffset + a_dExtent * U,
                           a_dOffset + a_dExtent * V});
    }
    return vPoints;
}

const TDoubles Offsets = {0, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7};
const TDoubles Extents = {1, 1e1, 1e2, 1e3, 1e4, 1e5};

// The error in bold if it is greater than the noise of the points.
std::string PositionCell(const TFitErrors& a_Errors, double a_dExtent)
{
    const std::string szText = UpperDigit(a_Errors.dPosition);
    return a_Errors.dPosition < 1e-4 * a_dExtent ? szText : "**" + szText + "**";
}

// The greatest errors of several fits, relative to the extent. They are NaN if one of the fits failed.
struct TWorst
{
    TFitErrors Errors = {0, 0, 0};

    void Add(const TFitErrors& a_Errors, double a_dExtent)
    {
        Errors.dPosition = Greater(Errors.dPosition, a_Errors.dPosition / a_dExtent);
        Errors.dCoefs = Greater(Errors.dCoefs, a_Errors.dCoefs);
        Errors.dResidual = Greater(Errors.dResidual, std::fabs(a_Errors.dResidual));
    }

    static double Greater(double a_dSoFar, double a_dError)
    {
        return std::isnan(a_dError)
                   ? a_dError
                   : std::max(a_dSoFar, a_dError); // std::max returns its first argument if that is NaN
    }
};

// The greatest errors of the three kinds by offset/extent. All ratios up to 1 are one row.
using TSummary = std::map<double, std::array<TWorst, 3> >;

void PrintSummary(const TSummary& a_Summary)
{
    std::vector<std::string> vszHead = {"offset/extent"};
    for (const char* szKind : Kinds)
    {
        vszHead.insert(vszHead.end(), {std::string(szKind) + ": position", "coefficients", "sum of squares"});
    }
    StartTable("ratios", vszHead);
    for (const auto& [dRatio, Worst] : a_Summary)
    {
        std::vector<std::string> vszRow = {dRatio > 1.0 ? UpperDigit(dRatio) : "up to 1"};
        for (const TWorst& W : Worst)
        {
            vszRow.insert(vszRow.end(), {UpperDigit(W.Errors.dPosition), UpperDigit(W.Errors.dCoefs),
                                         UpperDigit(W.Errors.dResidual)});
        }
        PrintRow(vszRow);
    }
}

void PrintFits()
{
    TSummary Summary;
    for (std::size_t k = 0; k < 3; ++k)
    {
        std::vector<std::string> vszHead = {"extent; offset:"};
        std::transform(Offsets.begin(), Offsets.end(), std::back_inserter(vszHead), UpperDigit);
        StartTable(Kinds[k], vszHead);
        for (double dExtent : Extents)
        {
            std::vector<std::string> vszRow = {UpperDigit(dExtent)};
            for (double dOffset : Offsets)
            {
                const TFitErrors Errors = CompareFit(Kinds[k], MakePoints(Kinds[k], dOffset, dExtent));
                vszRow.push_back(PositionCell(Errors, dExtent));
                Summary[std::max(1.0, dOffset / dExtent)][k].Add(Errors, dExtent);
            }
            PrintRow(vszRow);
        }
    }
    PrintSummary(Summary);
}

// The control points of a file.
TPoints ReadPoints(const std::string& a_szFile)
{
    std::ifstream File(a_szFile);
    TPoints vPoints;
    for (std::string szLine; std::getline(File, szLine);)
    {
        // The coordinates are the last four fields. A name can stand before them.
        std::vector<std::string> vszFields;
        std::istringstream Line(szLine);
        for (std::string szField; std::getline(Line, szField, ',');)
        {
            vszFields.push_back(szField);
        }
        if (szLine[0] == '#' || vszFields.size() < 4 ||
            vszFields.back().find_first_of("0123456789") == std::string::npos)
        {
            continue;
        }
        TControlPoint P;
        for (std::size_t k = 0; k < 4; ++k)
        {
            P[k] = std::stod(vszFields[vszFields.size() - 4 + k]);
        }
        vPoints.push_back(P);
    }
    return vPoints;
}

// The points from a local origin: the means of the coordinates, rounded to whole numbers.
TPoints FromLocalOrigin(TPoints a_vPoints)
{
    for (std::size_t k = 0; k < 4; ++k)
    {
        double dSum = 0.0;
        for (const TControlPoint& P : a_vPoints)
        {
            dSum += P[k];
        }
        const double dOrigin = std::round(dSum / static_cast<double>(a_vPoints.size()));
        for (TControlPoint& P : a_vPoints)
        {
            P[k] -= dOrigin;
        }
    }
    return a_vPoints;
}

double TargetExtent(const TPoints& a_vPoints)
{
    double dExtent = 0.0;
    for (std::size_t k : {2u, 3u})
    {
        const auto [Least, Greatest] =
            std::minmax_element(a_vPoints.begin(), a_vPoints.end(),
                                [&](const TControlPoint& P, const TControlPoint& Q) { return P[k] < Q[k]; });
        dExtent = std::max(dExtent, (*Greatest)[k] - (*Least)[k]);
    }
    return dExtent;
}

void PrintFiles(int a_iCount, char** a_vszFiles)
{
    StartTable("files",
               {"file", "points", "conformal", "local origin", "affine", "local origin", "omographic", "local origin"});
    for (int i = 0; i < a_iCount; ++i)
    {
        const std::string szFile = a_vszFiles[i];
        const TPoints vPoints = ReadPoints(szFile);
        const double dExtent = TargetExtent(vPoints);
        std::vector<std::string> vszRow = {szFile.substr(szFile.rfind('/') + 1), std::to_string(vPoints.size())};
        for (const char* szKind : Kinds)
        {
            for (const TPoints& vFrame : {vPoints, FromLocalOrigin(vPoints)})
            {
                vszRow.push_back(UpperDigit(CompareFit(szKind, vFrame).dPosition / dExtent));
            }
        }
        PrintRow(vszRow);
    }
}

// --- Cholesky --------------------------------------------------------------------------------------------------------

// Symmetric, with eigenvalues from 1 down to 2^-bits in like ratios, in directions turned by random reflections.
TDoubles SymmetricMatrix(TRandom& a_Random, int a_iN, int a_iBits)
{
    using TPlain = Eigen::MatrixXd;
    TPlain A = TPlain::Zero(a_iN, a_iN);
    for (int i = 0; i < a_iN; ++i)
    {
        A(i, i) = std::ldexp(1.0, -(i * a_iBits) / (a_iN - 1));
    }
    for (int k = 0; k < 3; ++k)
    {
        Eigen::VectorXd v(a_iN);
        std::generate(v.data(), v.data() + a_iN, [&] { return a_Random(); });
        v.normalize();
        const TPlain Reflection = TPlain::Identity(a_iN, a_iN) - 2.0 * v * v.transpose();
        A = Reflection * A * Reflection;
    }
    TDoubles vdA;
    for (int i = 0; i < a_iN; ++i)
    {
        for (int j = 0; j < a_iN; ++j)
        {
            vdA.push_back(A(std::max(i, j), std::min(i, j)));
        }
    }
    return vdA;
}

struct TCholeskyErrors
{
    double dResidual; // |A - L L'| / (n eps |A|)
    double dSolution; // |x - true x| / |true x|
};

// The row-wise lower triangle of the square is the packed storage, and both forms compute the same.
bool PackedAgrees(int a_iN, const TDoubles& a_vdA, const TDoubles& a_vdFactor, bool a_bDone)
{
    TDoubles vdPacked;
    for (int i = 0; i < a_iN; ++i)
    {
        vdPacked.insert(vdPacked.end(), a_vdA.begin() + i * a_iN, a_vdA.begin() + i * a_iN + i + 1);
    }
    const bool bDone = nuv::CholeskyLowTri(a_iN, vdPacked.data());
    bool bSame = bDone == a_bDone;
    for (int i = 0; bSame && bDone && i < a_iN; ++i)
    {
        bSame = std::equal(vdPacked.begin() + i * (i + 1) / 2, vdPacked.begin() + (i + 1) * (i + 2) / 2,
                           a_vdFactor.begin() + i * a_iN);
    }
    return bSame;
}

TCholeskyErrors CompareCholesky(int a_iN, const TDoubles& a_vdA, const TDoubles& a_vdB)
{
    TDoubles vdFactor = a_vdA;
    TDoubles vdX = a_vdB;
    const bool bDone = nuv::Cholesky(a_iN, vdFactor.data());
    if (!PackedAgrees(a_iN, a_vdA, vdFactor, bDone))
    {
        throw std::runtime_error("the dense and the packed factor differ");
    }
    if (!bDone)
    {
        return {NAN, NAN};
    }
    nuv::SolveChol(a_iN, vdFactor.data(), vdX.data());
    TMatrix A(a_iN, a_iN), L = TMatrix::Zero(a_iN, a_iN);
    TVector b(a_iN), x(a_iN);
    for (int i = 0; i < a_iN; ++i)
    {
        b(i) = a_vdB[static_cast<std::size_t>(i)];
        x(i) = vdX[static_cast<std::size_t>(i)];
        for (int j = 0; j < a_iN; ++j)
        {
            const auto k = static_cast<std::size_t>(i * a_iN + j);
            A(i, j) = a_vdA[k];
            L(i, j) = j <= i ? vdFactor[k] : 0.0;
        }
    }
    const TVector True = A.ldlt().solve(b);
    const TMatrix Rest = A - L * L.transpose();
    return {ToDouble(Rest.norm() / (A.norm() * a_iN * DBL_EPSILON)), ToDouble((x - True).norm() / True.norm())};
}

void PrintCholesky()
{
    StartTable("cholesky", {"condition", "n = 3", "x", "n = 10", "x", "n = 30", "x", "n = 60", "x"});
    TRandom Random;
    for (int iBits : {4, 13, 27, 40, 47, 53})
    {
        std::vector<std::string> vszRow = {"2^" + std::to_string(iBits)};
        for (int iN : {3, 10, 30, 60})
        {
            TCholeskyErrors Worst = {0, 0};
            for (int iTry = 0; iTry < (iN < 30 ? 20 : 3); ++iTry)
            {
                TDoubles vdB(static_cast<std::size_t>(iN));
                std::generate(vdB.begin(), vdB.end(), [&] { return Random(); });
                const TCholeskyErrors Errors = CompareCholesky(iN, SymmetricMatrix(Random, iN, iBits), vdB);
                Worst.dResidual = TWorst::Greater(Worst.dResidual, Errors.dResidual);
                Worst.dSolution = TWorst::Greater(Worst.dSolution, Errors.dSolution);
            }
            vszRow.insert(vszRow.end(), {UpperDigit(Worst.dResidual), UpperDigit(Worst.dSolution)});
        }
        PrintRow(vszRow);
    }
}

} // namespace
} // namespace nuv_accuracy

int main(int a_iCount, char** a_vszArguments)
{
    using namespace nuv_accuracy;
    PrintInverses();
    PrintFits();
    PrintFiles(a_iCount - 1, a_vszArguments + 1);
    PrintCholesky();
    PrintPolynomials();
    PrintLinearAngles();
    PrintQuadraticAngles();
}
