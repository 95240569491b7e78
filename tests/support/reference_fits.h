// reference_fits.h: least-squares fits of the three kinds by another method: QR of normalised points in long double.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_TOOLS_REFERENCE_FITS_H
#define NUV_TESTS_TOOLS_REFERENCE_FITS_H

#include <Eigen/Dense>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace nuv_reference {

#ifdef NUV_REFERENCE_REAL // what to compute with, where long double is not enough
using TReal = NUV_REFERENCE_REAL;
#else
using TReal = long double;
#endif
using TMatrix = Eigen::Matrix<TReal, Eigen::Dynamic, Eigen::Dynamic>;
using TVector = Eigen::Matrix<TReal, Eigen::Dynamic, 1>;

// A control point: x, y of the source, X, Y of the target.
using TControlPoint = std::array<double, 4>;

// The residual of a point in X and Y: computed minus given.
using TResidual = std::array<TReal, 2>;

// The least-squares transformation: the coefficients A ... H for the coordinates as given, and the residuals.
struct TFit
{
    TVector Coefs;
    std::vector<TResidual> vResiduals;
};

// The mean of the points in a system of coordinates, and the number of units in one normalised unit.
struct TFrame
{
    TVector Mean;
    TReal dScale;
};

// One row per point. In both systems the mean is at the origin and the mean distance from it is 1.
struct TNormalised
{
    TMatrix Source, Target;
    TFrame SourceFrame, TargetFrame;
};

inline TFrame Normalise(TMatrix& a_Points)
{
    const TVector Mean = a_Points.colwise().mean().transpose();
    a_Points.rowwise() -= Mean.transpose();
    const TReal dScale = a_Points.rowwise().norm().mean();
    a_Points /= dScale;
    return {Mean, dScale};
}

inline TNormalised Normalised(const std::vector<TControlPoint>& a_vPoints)
{
    const auto iCount = static_cast<Eigen::Index>(a_vPoints.size());
    TNormalised Result = {TMatrix(iCount, 2), TMatrix(iCount, 2), {}, {}};
    for (Eigen::Index i = 0; i < iCount; ++i)
    {
        const TControlPoint& P = a_vPoints[static_cast<std::size_t>(i)];
        Result.Source.row(i) << P[0], P[1];
        Result.Target.row(i) << P[2], P[3];
    }
    Result.SourceFrame = Normalise(Result.Source);
    Result.TargetFrame = Normalise(Result.Target);
    return Result;
}

// The least-squares solution of a_Rows * unknowns = a_Values.
inline TVector Solve(const TMatrix& a_Rows, const TVector& a_Values)
{
    return a_Rows.colPivHouseholderQr().solve(a_Values);
}

inline std::vector<TResidual> InTargetUnits(const TVector& a_Residuals, TReal a_dScale)
{
    std::vector<TResidual> vResiduals;
    for (Eigen::Index i = 0; i + 1 < a_Residuals.size(); i += 2)
    {
        vResiduals.push_back({a_Residuals(i) * a_dScale, a_Residuals(i + 1) * a_dScale});
    }
    return vResiduals;
}

// Fills an X row and a Y row per point by a_Fill(x, y, rowX, rowY).
template <class TFill> TMatrix Rows(const TNormalised& a_Points, Eigen::Index a_iUnknowns, TFill a_Fill)
{
    TMatrix Result = TMatrix::Zero(2 * a_Points.Source.rows(), a_iUnknowns);
    for (Eigen::Index i = 0; i < a_Points.Source.rows(); ++i)
    {
        a_Fill(i, a_Points.Source(i, 0), a_Points.Source(i, 1), Result);
    }
    return Result;
}

// X and Y of the target in turn.
inline TVector Values(const TNormalised& a_Points)
{
    TVector Result(2 * a_Points.Target.rows());
    for (Eigen::Index i = 0; i < a_Points.Target.rows(); ++i)
    {
        Result.segment(2 * i, 2) = a_Points.Target.row(i).transpose();
    }
    return Result;
}

// The same transformation for the coordinates as given, with the constant of W scaled to 1.
inline TVector InOriginalFrames(const TNormalised& a_Points, const TVector& a_Coefs)
{
    const TFrame& Source = a_Points.SourceFrame;
    const TFrame& Target = a_Points.TargetFrame;
    const auto Shifted = [&](TReal dX, TReal dY, TReal dConstant)
    {
        TVector Row(3);
        Row << dX / Source.dScale, dY / Source.dScale,
            dConstant - (dX * Source.Mean(0) + dY * Source.Mean(1)) / Source.dScale;
        return Row;
    };
    const TVector W = Shifted(a_Coefs(6), a_Coefs(7), 1);
    TVector Result(8);
    for (Eigen::Index i = 0; i < 2; ++i)
    {
        Result.segment(3 * i, 3) =
            Target.dScale * Shifted(a_Coefs(3 * i), a_Coefs(3 * i + 1), a_Coefs(3 * i + 2)) + Target.Mean(i) * W;
    }
    Result.tail(2) = W.head(2);
    return Result / W(2);
}

inline TFit InTargetUnits(const TNormalised& a_Points, const TVector& a_Coefs, const TVector& a_Misfit)
{
    return {InOriginalFrames(a_Points, a_Coefs), InTargetUnits(a_Misfit, a_Points.TargetFrame.dScale)};
}

// a_Place puts the unknowns among the coefficients A ... H.
template <class TPlace> TFit LinearFit(const TNormalised& a_Points, const TMatrix& a_Rows, TPlace a_Place)
{
    const TVector Target = Values(a_Points);
    const TVector Unknowns = Solve(a_Rows, Target);
    TVector Coefs = TVector::Zero(8);
    a_Place(Unknowns, Coefs);
    return InTargetUnits(a_Points, Coefs, a_Rows * Unknowns - Target);
}

// X = a x + b y + c, Y = -b x + a y + d. If a_bMirrored the orientation is reversed: the signs of Y change.
inline TFit ConformalFit(const std::vector<TControlPoint>& a_vPoints, bool a_bMirrored)
{
    const TNormalised Points = Normalised(a_vPoints);
    const TReal dSign = a_bMirrored ? -1 : 1;
    const TMatrix Design = Rows(Points, 4,
                                [&](Eigen::Index i, TReal x, TReal y, TMatrix& a_Rows)
                                {
                                    a_Rows.row(2 * i) << x, y, 1, 0;
                                    a_Rows.row(2 * i + 1) << dSign * y, -dSign * x, 0, 1;
                                });
    return LinearFit(Points, Design,
                     [&](const TVector& a_Unknowns, TVector& a_Coefs)
                     {
                         a_Coefs.head(3) = a_Unknowns.head(3);
                         a_Coefs.segment(3, 3) << -dSign * a_Unknowns(1), dSign * a_Unknowns(0), a_Unknowns(3);
                     });
}

inline TFit AffineFit(const std::vector<TControlPoint>& a_vPoints)
{
    const TNormalised Points = Normalised(a_vPoints);
    const TMatrix Design = Rows(Points, 6,
                                [&](Eigen::Index i, TReal x, TReal y, TMatrix& a_Rows)
                                {
                                    a_Rows.row(2 * i) << x, y, 1, 0, 0, 0;
                                    a_Rows.row(2 * i + 1) << 0, 0, 0, x, y, 1;
                                });
    return LinearFit(Points, Design, [](const TVector& a_Unknowns, TVector& a_Coefs) { a_Coefs.head(6) = a_Unknowns; });
}

// Residuals of the omographic transformation with the coefficients A ... H.
inline TVector OmographicMisfit(const TNormalised& a_Points, const TVector& a_Coefs)
{
    TVector Result(2 * a_Points.Source.rows());
    for (Eigen::Index i = 0; i < a_Points.Source.rows(); ++i)
    {
        const TReal x = a_Points.Source(i, 0);
        const TReal y = a_Points.Source(i, 1);
        const TReal dW = a_Coefs(6) * x + a_Coefs(7) * y + 1;
        Result(2 * i) = (a_Coefs(0) * x + a_Coefs(1) * y + a_Coefs(2)) / dW - a_Points.Target(i, 0);
        Result(2 * i + 1) = (a_Coefs(3) * x + a_Coefs(4) * y + a_Coefs(5)) / dW - a_Points.Target(i, 1);
    }
    return Result;
}

// Gauss-Newton iteration from the solution of the linear equations, until nothing improves. A step is halved until the
// sum of squares falls.
inline TFit OmographicFit(const std::vector<TControlPoint>& a_vPoints)
{
    const TNormalised Points = Normalised(a_vPoints);
    const TMatrix Linear = Rows(Points, 8,
                                [&](Eigen::Index i, TReal x, TReal y, TMatrix& a_Rows)
                                {
                                    const TReal X = Points.Target(i, 0);
                                    const TReal Y = Points.Target(i, 1);
                                    a_Rows.row(2 * i) << x, y, 1, 0, 0, 0, -X * x, -X * y;
                                    a_Rows.row(2 * i + 1) << 0, 0, 0, x, y, 1, -Y * x, -Y * y;
                                });
    TVector Coefs = Solve(Linear, Values(Points));
    TVector Misfit = OmographicMisfit(Points, Coefs);
    for (int iIteration = 0; iIteration < 200; ++iIteration)
    {
        const TMatrix Jacobian = Rows(Points, 8,
                                      [&](Eigen::Index i, TReal x, TReal y, TMatrix& a_Rows)
                                      {
                                          const TReal dW = Coefs(6) * x + Coefs(7) * y + 1;
                                          const TReal X = (Misfit(2 * i) + Points.Target(i, 0)) / dW;
                                          const TReal Y = (Misfit(2 * i + 1) + Points.Target(i, 1)) / dW;
                                          a_Rows.row(2 * i) << x / dW, y / dW, 1 / dW, 0, 0, 0, -X * x, -X * y;
                                          a_Rows.row(2 * i + 1) << 0, 0, 0, x / dW, y / dW, 1 / dW, -Y * x, -Y * y;
                                      });
        TVector Step = -Solve(Jacobian, Misfit);
        TVector Next = OmographicMisfit(Points, Coefs + Step);
        for (int iHalving = 0; iHalving < 40 && !(Next.squaredNorm() <= Misfit.squaredNorm()); ++iHalving)
        {
            Step /= 2;
            Next = OmographicMisfit(Points, Coefs + Step);
        }
        if (!(Next.squaredNorm() < Misfit.squaredNorm()))
        {
            break;
        }
        Coefs += Step;
        Misfit = Next;
    }
    return InTargetUnits(Points, Coefs, Misfit);
}

// The fit of the kind with this name.
inline TFit ReferenceFit(const std::string& a_szKind, bool a_bMirrored, const std::vector<TControlPoint>& a_vPoints)
{
    return a_szKind == "omographic" ? OmographicFit(a_vPoints)
           : a_szKind == "affine"   ? AffineFit(a_vPoints)
                                    : ConformalFit(a_vPoints, a_bMirrored);
}

inline std::vector<TResidual> ReferenceResiduals(const std::string& a_szKind, bool a_bMirrored,
                                                 const std::vector<TControlPoint>& a_vPoints)
{
    return ReferenceFit(a_szKind, a_bMirrored, a_vPoints).vResiduals;
}

} // namespace nuv_reference

#endif // NUV_TESTS_TOOLS_REFERENCE_FITS_H
