// conversions.cpp: conversions, inverses and the system of two equations, beside other ways to compute them.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "contest.h"

#include "nuv1math.h"

#include <Eigen/Geometry>
#include <Eigen/LU>
#include <Eigen/QR>
#ifdef NUV_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/core/version.hpp>
#include <opencv2/imgproc.hpp>
#endif
#ifdef NUV_BENCH_GDAL
#include <gdal.h>
#endif

#include <array>
#include <cmath>
#include <complex>
#include <random>

namespace bench {

constexpr int CALLS = 64; // of one run, each on another record
constexpr double TOLERANCE = 1e-11;
constexpr double ANGLE_2PI = 6.283185307179586;

template <std::size_t I> using TInput = std::array<double, I>;

namespace {

// A contest of functions of one record. A contestant makes its own form of an input (not timed), computes its own form
// of the output (timed), and tells the values of the output (not timed).
template <std::size_t I> class TRecordContest
{
public:
    TRecordContest(const std::string& a_szRoutine, const std::vector<TInput<I> >& a_vInputs)
        : m_Contest(a_szRoutine, 1, CALLS), m_vInputs(a_vInputs)
    {}

    template <class TMake, class TRun, class TTell>
    void Ours(const std::string& a_szName, TMake a_Make, TRun a_Run, TTell a_Tell)
    {
        auto State = MakeState(a_Make, a_Run);
        m_Contest.Ours(a_szName, State, RunAll(a_Run), TellAll(a_Tell));
    }

    template <class TMake, class TRun, class TTell>
    void Peer(const std::string& a_szName, TMake a_Make, TRun a_Run, TTell a_Tell)
    {
        auto State = MakeState(a_Make, a_Run);
        m_Contest.Peer(a_szName, TOLERANCE, State, RunAll(a_Run), TellAll(a_Tell));
    }

private:
    template <class TMake, class TRun> auto MakeState(TMake a_Make, TRun a_Run) const
    {
        using TIn = decltype(a_Make(m_vInputs[0]));
        using TOut = decltype(a_Run(std::declval<const TIn&>()));
        std::pair<std::vector<TIn>, std::vector<TOut> > State;
        for (const auto& vdInput : m_vInputs)
        {
            State.first.push_back(a_Make(vdInput));
        }
        State.second.resize(m_vInputs.size());
        return State;
    }

    template <class TRun> static auto RunAll(TRun a_Run)
    {
        return [a_Run](auto& a_State)
        {
            for (std::size_t i = 0; i < a_State.first.size(); ++i)
            {
                a_State.second[i] = a_Run(a_State.first[i]);
            }
        };
    }

    template <class TTell> static auto TellAll(TTell a_Tell)
    {
        return [a_Tell](const auto& a_State)
        {
            TValues vdAll;
            for (const auto& Out : a_State.second)
            {
                const auto vdOne = a_Tell(Out);
                vdAll.insert(vdAll.end(), vdOne.begin(), vdOne.end());
            }
            return vdAll;
        };
    }

    TContest m_Contest;
    std::vector<TInput<I> > m_vInputs;
};

} // namespace

// CALLS random inputs, each value within its own bounds.
template <std::size_t I>
static std::vector<TInput<I> > MakeInputs(const std::array<std::array<double, 2>, I>& a_vdBounds)
{
    std::mt19937 Generator(1);
    std::vector<TInput<I> > vInputs(CALLS);
    for (auto& vdInput : vInputs)
    {
        for (std::size_t i = 0; i < I; ++i)
        {
            vdInput[i] = std::uniform_real_distribution<double>(a_vdBounds[i][0], a_vdBounds[i][1])(Generator);
        }
    }
    return vInputs;
}

// For a contestant whose form of the input or the output is the array of its values.
constexpr auto Same = [](const auto& a_Value) { return a_Value; };

static Eigen::Affine2d ToEigen(const TInput<6>& c)
{
    Eigen::Affine2d Transform;
    Transform.matrix() << c[0], c[1], c[2], c[3], c[4], c[5], 0.0, 0.0, 1.0;
    return Transform;
}

static TInput<6> FromEigen(const Eigen::Affine2d& a_Transform)
{
    const auto& m = a_Transform.matrix();
    return {m(0, 0), m(0, 1), m(0, 2), m(1, 0), m(1, 1), m(1, 2)};
}

static nuv::TAffineCoefs ToAffine(const TInput<6>& c)
{
    return {c[0], c[1], c[2], c[3], c[4], c[5]};
}

static TInput<6> FromAffine(const nuv::TAffineCoefs& c)
{
    return {c.dA, c.dB, c.dC, c.dD, c.dE, c.dF};
}

static double PositiveAngle(double a_dAngle)
{
    return a_dAngle < 0.0 ? a_dAngle + ANGLE_2PI : a_dAngle;
}

static const std::vector<TInput<6> >& AffineInputs()
{
    static const auto vInputs =
        MakeInputs<6>({{{0.5, 2.0}, {-0.4, 0.4}, {-100.0, 100.0}, {-0.4, 0.4}, {0.5, 2.0}, {-100.0, 100.0}}});
    return vInputs;
}

#ifdef NUV_BENCH_GDAL
// GDAL's geotransform has the constants first.
static TInput<6> ToGdal(const TInput<6>& c)
{
    return {c[2], c[0], c[1], c[5], c[3], c[4]};
}

static TInput<6> FromGdal(const TInput<6>& g)
{
    return {g[1], g[2], g[0], g[4], g[5], g[3]};
}

static TInput<6> GdalInverse(const TInput<6>& a_vdTransform)
{
    TInput<6> vdInverse = {};
    double vdCopy[6]; // the function takes a pointer to non-const
    std::copy_n(a_vdTransform.begin(), 6, vdCopy);
    (void)!GDALInvGeoTransform(vdCopy, vdInverse.data());
    return vdInverse;
}
#endif

static void AddAffineInverse()
{
    TRecordContest<6> Contest("AffineCoefsToInvCoefs", AffineInputs());
    Contest.Ours(
        "AffineCoefsToInvCoefs", ToAffine,
        [](const nuv::TAffineCoefs& c)
        {
            nuv::TAffineCoefs Inverse;
            nuv::AffineCoefsToInvCoefs(c, Inverse);
            return Inverse;
        },
        FromAffine);
    Contest.Peer(
        "Eigen Affine2d::inverse", ToEigen, [](const Eigen::Affine2d& t) { return t.inverse(); }, FromEigen);
#ifdef NUV_BENCH_OPENCV
    Contest.Peer(
        "OpenCV invertAffineTransform",
        [](const TInput<6>& c) { return cv::Matx23d(c[0], c[1], c[2], c[3], c[4], c[5]); },
        [](const cv::Matx23d& m)
        {
            cv::Matx23d Inverse;
            cv::invertAffineTransform(m, Inverse);
            return Inverse;
        },
        [](const cv::Matx23d& m) { return TInput<6>{m(0, 0), m(0, 1), m(0, 2), m(1, 0), m(1, 1), m(1, 2)}; });
#endif
#ifdef NUV_BENCH_GDAL
    Contest.Peer("GDAL GDALInvGeoTransform", ToGdal, GdalInverse, FromGdal);
#endif
}

static void AddAffineUntransform()
{
    static constexpr double X = 70.0, Y = -30.0; // the target point
    TRecordContest<6> Contest("AffineUntransform", AffineInputs());
    Contest.Ours(
        "AffineUntransform", ToAffine,
        [](const nuv::TAffineCoefs& c)
        {
            TInput<2> vdPoint;
            nuv::AffineUntransform(c, X, Y, vdPoint[0], vdPoint[1]);
            return vdPoint;
        },
        Same);
    const auto Tell = [](const Eigen::Vector2d& p) { return TInput<2>{p(0), p(1)}; };
    Contest.Peer(
        "Eigen Affine2d::inverse of the point", ToEigen,
        [](const Eigen::Affine2d& t) -> Eigen::Vector2d { return t.inverse() * Eigen::Vector2d(X, Y); }, Tell);
    Contest.Peer(
        "Eigen partialPivLu", ToEigen,
        [](const Eigen::Affine2d& t) -> Eigen::Vector2d
        { return Eigen::Matrix2d(t.linear()).partialPivLu().solve(Eigen::Vector2d(X, Y) - t.translation()); },
        Tell);
#ifdef NUV_BENCH_GDAL
    Contest.Peer(
        "GDAL GDALInvGeoTransform, GDALApplyGeoTransform", ToGdal,
        [](const TInput<6>& g)
        {
            TInput<6> vdInverse = GdalInverse(g);
            TInput<2> vdPoint;
            GDALApplyGeoTransform(vdInverse.data(), X, Y, &vdPoint[0], &vdPoint[1]);
            return vdPoint;
        },
        Same);
#endif
}

static void AddAffineParamsToCoefs()
{
    // sx, sy, phi, theta, tx, ty
    const auto vInputs =
        MakeInputs<6>({{{0.5, 2.0}, {0.5, 2.0}, {-0.5, 0.5}, {0.1, 6.2}, {-100.0, 100.0}, {-100.0, 100.0}}});
    TRecordContest<6> ToCoefs("AffineParamsToCoefs", vInputs);
    ToCoefs.Ours(
        "AffineParamsToCoefs", Same,
        [](const TInput<6>& p)
        {
            nuv::TAffineCoefs Coefs;
            nuv::AffineParamsToCoefs(p[0], p[1], p[2], p[3], p[4], p[5], Coefs);
            return Coefs;
        },
        FromAffine);
    ToCoefs.Peer(
        "Eigen Rotation2D and shear", Same,
        [](const TInput<6>& p)
        {
            Eigen::Matrix2d Shear;
            Shear << p[0], p[1] * std::tan(p[2]), 0.0, p[1];
            Eigen::Affine2d Transform;
            Transform.linear() = Eigen::Rotation2Dd(p[3]).toRotationMatrix() * Shear;
            Transform.translation() << p[4], p[5];
            Transform.makeAffine();
            return Transform;
        },
        FromEigen);
}

static void AddAffineCoefsToParam()
{
    TRecordContest<6> ToParam("AffineCoefsToParam", AffineInputs());
    ToParam.Ours(
        "AffineCoefsToParam", ToAffine,
        [](const nuv::TAffineCoefs& c)
        {
            TInput<6> p;
            nuv::AffineCoefsToParam(c, p[0], p[1], p[2], p[3], p[4], p[5]);
            return p;
        },
        Same);
    ToParam.Peer(
        "Eigen HouseholderQR and atan", ToEigen,
        [](const Eigen::Affine2d& t)
        {
            const Eigen::HouseholderQR<Eigen::Matrix2d> Qr(t.linear());
            const Eigen::Matrix2d Q = Qr.householderQ();
            const Eigen::Matrix2d& R = Qr.matrixQR();
            const double dSign =
                R(0, 0) < 0.0 ? -1.0 : 1.0; // turns the first axis round; the determinant of Q turns the second
            const double dDet = Q(0, 0) * Q(1, 1) - Q(0, 1) * Q(1, 0);
            return TInput<6>{dSign * R(0, 0),
                             dSign * dDet * R(1, 1),
                             std::atan(R(0, 1) * dDet / R(1, 1)),
                             PositiveAngle(std::atan2(dSign * Q(1, 0), dSign * Q(0, 0))),
                             t.translation().x(),
                             t.translation().y()};
        },
        Same);
}

// The factor and the translation of X + iY = factor (x + iy) + tx + i ty.
using TComplexPair = std::array<std::complex<double>, 2>;

static TInput<4> FromComplex(const TComplexPair& a_Pair)
{
    return {a_Pair[0].real(), -a_Pair[0].imag(), a_Pair[1].real(), a_Pair[1].imag()};
}

static nuv::TConformalCoefs ToConformal(const TInput<4>& p)
{
    nuv::TConformalCoefs Coefs;
    nuv::ConformalParamsToCoefs(p[0], p[1], p[2], p[3], Coefs);
    return Coefs;
}

static TInput<4> FromConformal(const nuv::TConformalCoefs& c)
{
    return {c.dA, c.dB, c.dTx, c.dTy};
}

static TComplexPair ToComplex(const TInput<4>& p)
{
    return {std::polar(p[0], p[1]), std::complex<double>(p[2], p[3])};
}

// Scales, angles and translations.
static const std::vector<TInput<4> >& ConformalInputs()
{
    static const auto vInputs = MakeInputs<4>({{{0.5, 2.0}, {0.1, 6.2}, {-100.0, 100.0}, {-100.0, 100.0}}});
    return vInputs;
}

static void AddConformalParameters()
{
    TRecordContest<4> ToCoefs("ConformalParamsToCoefs", ConformalInputs());
    ToCoefs.Ours("ConformalParamsToCoefs", Same, ToConformal, FromConformal);
    ToCoefs.Peer("std::polar", Same, ToComplex, FromComplex);

    TRecordContest<4> ToParam("ConformalCoefsToParam", ConformalInputs());
    ToParam.Ours(
        "ConformalCoefsToParam", ToConformal,
        [](const nuv::TConformalCoefs& c)
        {
            TInput<4> p;
            nuv::ConformalCoefsToParam(c, p[0], p[1], p[2], p[3]);
            return p;
        },
        Same);
    ToParam.Peer(
        "std::abs and std::arg", ToComplex,
        [](const TComplexPair& c) {
            return TInput<4>{std::abs(c[0]), PositiveAngle(std::arg(c[0])), c[1].real(), c[1].imag()};
        },
        Same);
}

static void AddConformalInverse()
{
    TRecordContest<4> Inverse("ConformalCoefsToInvCoefs", ConformalInputs());
    Inverse.Ours(
        "ConformalCoefsToInvCoefs", ToConformal,
        [](const nuv::TConformalCoefs& c)
        {
            nuv::TConformalCoefs Inverted;
            nuv::ConformalCoefsToInvCoefs(c, Inverted);
            return Inverted;
        },
        FromConformal);
    Inverse.Peer(
        "std::complex division", ToComplex,
        [](const TComplexPair& c)
        {
            const std::complex<double> Factor = 1.0 / c[0];
            return TComplexPair{Factor, -Factor * c[1]};
        },
        FromComplex);
    Inverse.Peer(
        "Eigen Affine2d::inverse",
        [](const TInput<4>& p)
        {
            const TInput<4> c = FromComplex(ToComplex(p));
            return ToEigen({c[0], c[1], c[2], -c[1], c[0], c[3]});
        },
        [](const Eigen::Affine2d& t) { return t.inverse(); },
        [](const Eigen::Affine2d& t) {
            return TInput<4>{t(0, 0), t(0, 1), t(0, 2), t(1, 2)};
        });
}

static void AddTwoUnknowns()
{
    // a11, a12, a21, a22, b1, b2
    const auto vInputs =
        MakeInputs<6>({{{1.0, 2.0}, {-0.5, 0.5}, {-0.5, 0.5}, {1.0, 2.0}, {-10.0, 10.0}, {-10.0, 10.0}}});
    TRecordContest<6> Contest("Roots, two unknowns", vInputs);
    Contest.Ours(
        "Roots", Same,
        [](const TInput<6>& s)
        {
            TInput<2> x;
            nuv::Roots(s[0], s[1], s[2], s[3], s[4], s[5], x[0], x[1]);
            return x;
        },
        Same);
    const auto Make = [](const TInput<6>& s)
    {
        std::pair<Eigen::Matrix2d, Eigen::Vector2d> System;
        System.first << s[0], s[1], s[2], s[3];
        System.second << s[4], s[5];
        return System;
    };
    const auto Tell = [](const Eigen::Vector2d& p) { return TInput<2>{p(0), p(1)}; };
    Contest.Peer(
        "Eigen Matrix2d::inverse", Make, [](const auto& s) -> Eigen::Vector2d { return s.first.inverse() * s.second; },
        Tell);
    Contest.Peer(
        "Eigen partialPivLu", Make,
        [](const auto& s) -> Eigen::Vector2d { return s.first.partialPivLu().solve(s.second); }, Tell);
#ifdef NUV_BENCH_OPENCV
    Contest.Peer(
        "OpenCV solve",
        [](const TInput<6>& s) { return std::pair(cv::Matx22d(s[0], s[1], s[2], s[3]), cv::Vec2d(s[4], s[5])); },
        [](const std::pair<cv::Matx22d, cv::Vec2d>& s)
        {
            cv::Vec2d x;
            cv::solve(s.first, s.second, x, cv::DECOMP_LU);
            return x;
        },
        [](const cv::Vec2d& x) {
            return TInput<2>{x[0], x[1]};
        });
#endif
}

void RegisterFamily()
{
#ifdef NUV_BENCH_OPENCV
    NameVersion("OpenCV", CV_VERSION);
#endif
#ifdef NUV_BENCH_GDAL
    NameVersion("GDAL", GDALVersionInfo("RELEASE_NAME"));
#endif
    AddAffineParamsToCoefs();
    AddAffineCoefsToParam();
    AddAffineInverse();
    AddAffineUntransform();
    AddConformalParameters();
    AddConformalInverse();
    AddTwoUnknowns();
}

} // namespace bench
