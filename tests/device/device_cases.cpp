// device_cases.cpp: calls of every exported function on fixed inputs, and the arithmetic that each requires.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The counts are formulas in the size of the input, derived from the algorithms that the library documents. Only
// operations on doubles count. Negation, fabs, and tests whether a value is zero, one, negative or finite look at bits
// and are not counted.
//
// The budgets are what GCC 12 at the build's options and its arithmetic helpers take, and three in a hundred more.

#include "device_cases.h"

#include "nuv1math.h"
#include "support/control_points.h"
#include "support/fresh_generator.h"

#include <cstdint>
#include <memory>

namespace nuv_tests {

namespace {

TCensus Times(enumOperation a_Kind, int a_iTimes)
{
    TCensus Census{};
    Census[a_Kind] = a_iTimes;
    return Census;
}

TCensus Add(int a_iTimes)
{
    return Times(OPERATION_ADD, a_iTimes);
}

TCensus Sub(int a_iTimes)
{
    return Times(OPERATION_SUB, a_iTimes);
}

TCensus Mul(int a_iTimes)
{
    return Times(OPERATION_MUL, a_iTimes);
}

TCensus Div(int a_iTimes)
{
    return Times(OPERATION_DIV, a_iTimes);
}

TCensus Compare(int a_iTimes)
{
    return Times(OPERATION_COMPARE, a_iTimes);
}

TCensus Convert(int a_iTimes)
{
    return Times(OPERATION_CONVERT, a_iTimes);
}

TCensus Once(enumOperation a_Kind)
{
    return Times(a_Kind, 1);
}

// n products, each added to or subtracted from something.
TCensus MulAdd(int a_iTimes)
{
    return Mul(a_iTimes) + Add(a_iTimes);
}

TCensus MulSub(int a_iTimes)
{
    return Mul(a_iTimes) + Sub(a_iTimes);
}

// g sqrt(r r + 1), where g is the greater of two magnitudes and r is the smaller one divided by g.
const TCensus Hypot = Compare(1) + Div(1) + MulAdd(1) + Once(OPERATION_SQRT) + Mul(1);

// A degeneracy test is one comparison of a magnitude. An angle of atan2 is compared once with the period; if it is
// negative the period is added.
const TCensus Degeneracy = Compare(1);
const TCensus ReducePositive = Compare(1);
const TCensus ReduceNegative = Compare(1) + Add(1);

// Cramer's rule: three determinants of two products each, the test of the first one, its reciprocal, and a product of
// that with each of the others.
const TCensus TwoUnknowns = 3 * (Mul(1) + MulSub(1)) + Degeneracy + Div(1) + Mul(2);

// Four sums of n values, each divided by the count, which is converted once. The sum of an odd number of values begins
// with the first value, that of an even number with zero.
TCensus Means(int n)
{
    return 4 * (Add(n % 2 == 0 ? n : n - 1) + Div(1)) + Convert(1);
}

// Elimination of 3 unknowns with two right-hand sides, where no pivot and no factor is 0 or 1:
//   the pivots: 2 + 1 comparisons of magnitudes, three reciprocals, and pivot rows of 2 + 2, 1 + 2 and 0 + 2 elements;
//   the rows below them: two rows of 2 + 2 elements, then one of 1 + 2.
// Then the substitution for each right-hand side: 1 and 2 products are added up, from zero on, and the two sums are
// subtracted. The diagonal is 1, so nothing is divided.
const TCensus Gauss3 = Compare(2 + 1) + Div(3) + Mul(4 + 3 + 2) + MulAdd(2 * 4 + 3) + 2 * (MulAdd(3) + Sub(2));

// For each point four differences and eleven terms, seven of them products, which are added to as many sums; the terms of
// the first point begin the sums. Then the solution of the normal equations and two translations.
TCensus AffineFit(int n)
{
    return Means(n) + n * (Sub(4) + Mul(7)) + (n - 1) * Add(11) + Convert(1) + Gauss3 + 2 * (Add(1) + MulSub(2));
}

// For each point four differences and three sums, each of a sum or difference of two products. Then the test of the
// first sum, whose reciprocal scales the other two to the coefficients; four products for the translations; and the
// squared norm of the coefficients. One coefficient of the inverse is a quotient by it, the other one a product with the
// quotient -1 by it.
TCensus ConformalFit(int n)
{
    return Means(n) + n * (Sub(4) + 2 * (Mul(1) + MulAdd(1) + Add(1)) + Mul(1) + MulSub(1) + Add(1)) + Degeneracy +
           Div(1) + Mul(2) + MulSub(2) + MulAdd(1) + MulSub(1) + Hypot + Mul(1) + Div(2) + Mul(1);
}

// In column i, i squares are subtracted from the diagonal, whose root is taken. In each of the n - 1 - i rows below, i
// products are subtracted, and the rest is multiplied by the reciprocal of the root. The last column needs no reciprocal.
// The counts are sums over i from 0 to n - 1.
TCensus Factorisation(int n)
{
    return MulSub(n * (n - 1) / 2) + Times(OPERATION_SQRT, n) + Div(n - 1) + MulSub(n * (n - 1) * (n - 2) / 6) +
           Mul(n * (n - 1) / 2);
}

// Every element below the diagonal is used once forward and once backward, and the diagonal divides each time.
TCensus Solution(int n)
{
    return 2 * (MulSub(n * (n - 1) / 2) + Div(n));
}

// The products of n coefficients with each other and with the value. Only products of two factors that are not zero
// count.
TCensus Update(int a_iNotZero)
{
    return MulAdd(a_iNotZero * (a_iNotZero + 1) / 2 + a_iNotZero);
}

// Eight unknowns, two rows for each point.
//   Rows of the linear equations: four products.
//   Rows of a refinement: the numerators U and V and the denominator W, each of two products and a constant; W^2; the
//   reciprocals of W and W^2; eight products with these; two residuals of a product each.
//   Normal equations: both rows of a point have the same three coefficients, and each has two more and a value. The
//   products of the three with each other and with these six numbers are 9 + 8 + 7 sums. The products of a row's two
//   coefficients with each other and with its value (3 + 2) are added for both rows to the same five sums.
// After a refinement the eight corrections are added, the greatest is found, and compared with the threshold.
TCensus OmographicFit(int n, int a_iRefinements)
{
    const TCensus Solve = Factorisation(8) + Solution(8);
    const TCensus Refined = 3 * (Mul(1) + MulAdd(1) + Add(1)) + Div(2) + Mul(1) + Mul(4) + Mul(4) + MulSub(2);
    const TCensus Sums = MulAdd(9 + 8 + 7 + 2 * (3 + 2));
    return n * (Mul(4) + Sums) + Solve +
           a_iRefinements * (n * (Refined + Sums) + Solve + Add(8) + Compare(8) + Compare(1));
}

// The discriminant B^2 - 4 A C, its sign and its root. B and the root are added with equal signs. One solution is this
// sum divided by 2A, the other one 2C divided by the sum. If B is not negative, -2 is the factor of C, which is a product.
TCensus Quadratic(bool a_bNegativeB)
{
    return Mul(3) + Sub(1) + Compare(1) + Once(OPERATION_SQRT) + (a_bNegativeB ? Sub(1) + Add(1) : Add(1) + Mul(1)) +
           Add(1) + Div(2);
}

// The operations of the roots of one polynomial, as tests/tools/count_operations.py finds them in exact arithmetic: how
// many iterations there are depends on the coefficients. Its comparisons are a bound.
TCensus PolynomialRoots(int a_iAdd, int a_iSub, int a_iMul, int a_iDiv, int a_iCompare, int a_iSqrt)
{
    return Add(a_iAdd) + Sub(a_iSub) + Mul(a_iMul) + Div(a_iDiv) + Compare(a_iCompare) + Times(OPERATION_SQRT, a_iSqrt);
}

const TCensus Uniform = Convert(2) + MulAdd(1) + Mul(1);

// Both coordinates of a point, 2 Rand() - 1, the square of its radius and whether that is below 1.
const TCensus NormalAttempt = 2 * (Uniform + Add(1) + Sub(1)) + Mul(1) + MulAdd(1) + Compare(1);
const TCensus NormalPair = Once(OPERATION_LOG) + Div(1) + Mul(1) + Once(OPERATION_SQRT) + Mul(2);

// Numbers in [0, 1) whose mantissas are full.
class TNumbers
{
public:
    double Next()
    {
        m_iState = m_iState * 6364136223846793005u + 1442695040888963407u;
        return static_cast<double>(m_iState >> 11) * 0x1p-53;
    }

    std::vector<double> Take(int a_iCount)
    {
        std::vector<double> vdValues;
        for (int i = 0; i < a_iCount; ++i)
        {
            vdValues.push_back(Next());
        }
        return vdValues;
    }

private:
    std::uint64_t m_iState = 20261121;
};

// Control points of a projective transformation, the targets with a noise of this extent.
TControlPoints Points(int a_iCount, double a_dNoise)
{
    TNumbers Numbers;
    TControlPoints Points;
    for (int i = 0; i < a_iCount; ++i)
    {
        const double x = 100.0 + 1000.0 * Numbers.Next();
        const double y = 200.0 + 1000.0 * Numbers.Next();
        const double w = 1e-4 * x + 2e-4 * y + 1.0;
        const double X = (1.2 * x + 0.3 * y + 30.0) / w + a_dNoise * (Numbers.Next() - 0.5);
        const double Y = (-0.2 * x + 1.1 * y + 70.0) / w + a_dNoise * (Numbers.Next() - 0.5);
        Points.Add(x, y, X, Y);
    }
    return Points;
}

// A positive definite matrix, dense: random elements of [0, 1) and a heavy diagonal.
std::vector<double> DenseMatrix(int n)
{
    std::vector<double> vdMatrix = TNumbers().Take(n * n);
    for (int i = 0; i < n; ++i)
    {
        vdMatrix[static_cast<std::size_t>(i * n + i)] += n;
    }
    return vdMatrix;
}

// Its lower triangle, packed.
std::vector<double> PackedMatrix(int n)
{
    const std::vector<double> vdDense = DenseMatrix(n);
    std::vector<double> vdPacked;
    for (int i = 0; i < n; ++i)
    {
        const auto Row = vdDense.begin() + i * n;
        vdPacked.insert(vdPacked.end(), Row, Row + i + 1);
    }
    return vdPacked;
}

std::vector<double> Factor(std::vector<double> a_vdMatrix, bool (*a_pFactorise)(int, double*), int n)
{
    a_pFactorise(n, a_vdMatrix.data());
    return a_vdMatrix;
}

// The inputs and outputs of the calls. A case keeps them as long as it lives.
struct TScratch
{
    TControlPoints Points;
    std::vector<double> vdInput, vdMatrix, vdVector;
    std::vector<int> viIndices;
    nuv::TAffineCoefs Affine{1.25, 0.3, 17.5, -0.4, 0.9, -3.7}, AffineOut;
    nuv::TConformalCoefs Conformal{0.81, -0.37, 12.3, 45.6, 1.021, 0.467}, ConformalOut;
    nuv::TOmographicParams Omographic;
    nuv::enumMethodUsed Used;
    double* pMatrix = nullptr;
    double* pVector = nullptr;
    double vdOut[8];
};

const auto Nothing = [] {};

constexpr double FitNoise = 0.5;

class TCases
{
public:
    template <class TCall>
    void Insert(const char* a_szFunction, const std::string& a_szInput, const TCensus& a_Required, int a_iBudget,
                TCall a_Call, std::function<void()> a_Prepare = Nothing)
    {
        m_Cases.push_back({a_szFunction, a_szInput, a_Prepare, a_Call, a_Required, false, a_iBudget});
    }

    static std::shared_ptr<TScratch> Scratch(const TControlPoints& a_Points = TControlPoints())
    {
        const auto Made = std::make_shared<TScratch>();
        Made->Points = a_Points;
        return Made;
    }

    void Conversions();
    void AffineFitOf(int n, int a_iBudget);
    void ConformalFitOf(int n, int a_iBudget);
    void OmographicFitOf(int n, double a_dNoise, int a_iRefinements, int a_iBudget);
    void Fits();
    void Cholesky();
    void NormalEquations();
    void Equations();
    void Random();

    std::vector<TDeviceCase> m_Cases;
};

void TCases::Conversions()
{
    const auto s = Scratch();
    double* const o = s->vdOut;
    Insert("AffineParamsToCoefs", "", Once(OPERATION_SINCOS) + Once(OPERATION_TAN) + Mul(4) + MulSub(1) + MulAdd(1),
           4630, [s] { nuv::AffineParamsToCoefs(1.3, 0.9, 0.2, 0.7, 11.1, 22.2, s->AffineOut); });
    Insert("AffineCoefsToParam", "",
           Hypot + Degeneracy + Div(1) + Mul(2) + Once(OPERATION_ATAN2) + ReduceNegative + Mul(1) + MulSub(1) +
               Degeneracy + Mul(1) + MulAdd(1) + Div(1) + Once(OPERATION_ATAN),
           6350, [s, o] { nuv::AffineCoefsToParam(s->Affine, o[0], o[1], o[2], o[3], o[4], o[5]); });
    // The determinant; six fields by its reciprocal, two of them of a difference of two products.
    Insert("AffineCoefsToInvCoefs", "", Mul(1) + MulSub(1) + Degeneracy + Div(1) + Mul(6) + 2 * (Mul(1) + MulSub(1)),
           947, [s] { nuv::AffineCoefsToInvCoefs(s->Affine, s->AffineOut); });
    Insert("AffineUntransform", "", Sub(2) + TwoUnknowns, 904,
           [s, o] { nuv::AffineUntransform(s->Affine, 31.7, -8.3, o[0], o[1]); });
    Insert("ConformalParamsToCoefs", "", Once(OPERATION_SINCOS) + Mul(2) + Div(1) + Mul(2), 2930,
           [s] { nuv::ConformalParamsToCoefs(1.3, 0.7, 11.1, 22.2, s->ConformalOut); });
    Insert("ConformalCoefsToParam", "", Hypot + Degeneracy + Div(2) + Mul(1) + Once(OPERATION_ATAN2) + ReducePositive,
           4900, [s, o] { nuv::ConformalCoefsToParam(s->Conformal, o[0], o[1], o[2], o[3]); });
    Insert("ConformalCoefsToInvCoefs", "", 2 * (Mul(1) + MulSub(1)), 376,
           [s] { nuv::ConformalCoefsToInvCoefs(s->Conformal, s->ConformalOut); });
    Insert("ConformalCoefsToAffineCoefs", "", TCensus{}, 22,
           [s] { nuv::ConformalCoefsToAffineCoefs(s->Conformal, s->AffineOut); });
    Insert("AffineCoefsToOmographicCoefs", "", TCensus{}, 25,
           [s] { nuv::AffineCoefsToOmographicCoefs(s->Affine, s->Omographic); });
}

std::string CountText(int n)
{
    return "n = " + std::to_string(n);
}

void TCases::AffineFitOf(int n, int a_iBudget)
{
    const auto s = Scratch(Points(n, FitNoise));
    const TControlPoints& p = s->Points;
    Insert("CalcAffineCoefs", CountText(n), AffineFit(n), a_iBudget,
           [=, &p]
           {
               nuv::CalcAffineCoefs(static_cast<unsigned int>(n), p.vdX.data(), p.vdY.data(), p.vdXa.data(),
                                    p.vdYa.data(), s->AffineOut);
           });
}

void TCases::ConformalFitOf(int n, int a_iBudget)
{
    const auto s = Scratch(Points(n, FitNoise));
    const TControlPoints& p = s->Points;
    Insert("CalcConformalCoefs", CountText(n), ConformalFit(n), a_iBudget,
           [=, &p]
           {
               nuv::CalcConformalCoefs(static_cast<unsigned int>(n), p.vdX.data(), p.vdY.data(), p.vdXa.data(),
                                       p.vdYa.data(), false, s->ConformalOut);
           });
}

// The number of refinements follows from the points. It is 1 if the linear solution is exact but for rounding; for other
// points tests/tools/reference.py gives it in exact arithmetic.
void TCases::OmographicFitOf(int n, double a_dNoise, int a_iRefinements, int a_iBudget)
{
    const auto s = Scratch(Points(n, a_dNoise));
    const TControlPoints& p = s->Points;
    Insert("CalcOmographicCoefs", CountText(n), OmographicFit(n, a_iRefinements), a_iBudget,
           [=, &p]
           { nuv::CalcOmographicCoefs(n, p.vdX.data(), p.vdY.data(), p.vdXa.data(), p.vdYa.data(), s->Omographic); });
}

void TCases::Fits()
{
    AffineFitOf(3, 8510);
    AffineFitOf(10, 19600);
    AffineFitOf(100, 158000);
    ConformalFitOf(2, 3850);
    ConformalFitOf(10, 13600);
    ConformalFitOf(100, 121000);
    OmographicFitOf(4, 0.0, 1, 74400);
    OmographicFitOf(10, 0.02, 3, 280000);
    OmographicFitOf(100, 0.01, 2, 1540000);
    const auto s = Scratch(Points(5, 0.01));
    const TControlPoints& p = s->Points;
    Insert("CalcCoefs", "n = 5, omographic", OmographicFit(5, 2), 131000,
           [=, &p]
           {
               nuv::CalcCoefs(5, p.vdX.data(), p.vdY.data(), p.vdXa.data(), p.vdYa.data(), true, nuv::METHOD_OMOGRAPHIC,
                              s->Used, s->Omographic);
           });
}

constexpr int Unknowns = 8; // of the Cholesky functions and the normal equations

// Gives the scratch this matrix and a vector.
std::function<void()> Restore(const std::shared_ptr<TScratch>& s, const std::vector<double>& a_vdMatrix)
{
    return [s, a_vdMatrix]
    {
        s->vdMatrix = a_vdMatrix;
        s->vdVector = TNumbers().Take(Unknowns);
    };
}

void TCases::Cholesky()
{
    static const int n = Unknowns;
    const auto s = Scratch();
    Insert(
        "Cholesky", "n = 8", Factorisation(n), 13000, [s] { nuv::Cholesky(n, s->vdMatrix.data()); },
        Restore(s, DenseMatrix(n)));
    Insert(
        "SolveChol", "n = 8", Solution(n), 8280, [s] { nuv::SolveChol(n, s->vdMatrix.data(), s->vdVector.data()); },
        Restore(s, Factor(DenseMatrix(n), nuv::Cholesky, n)));
    Insert(
        "CholeskyLowTri", "n = 8", Factorisation(n), 13000, [s] { nuv::CholeskyLowTri(n, s->vdMatrix.data()); },
        Restore(s, PackedMatrix(n)));
    Insert(
        "SolveCholLowTri", "n = 8", Solution(n), 8280,
        [s] { nuv::SolveCholLowTri(n, s->vdMatrix.data(), s->vdVector.data()); },
        Restore(s, Factor(PackedMatrix(n), nuv::CholeskyLowTri, n)));
}

void TCases::NormalEquations()
{
    static const int n = Unknowns;
    const auto s = Scratch();
    const auto Dense = [&](const char* a_szInput, int a_iFirst, int a_iZeros, int a_iBudget)
    {
        std::vector<double> vdRow = TNumbers().Take(n);
        std::fill_n(vdRow.begin() + a_iFirst, a_iZeros, 0.0);
        Insert(
            "UpdateNormMatrixLowTri, dense", a_szInput, Update(n - a_iZeros), a_iBudget,
            [s, vdRow] { nuv::UpdateNormMatrixLowTri(n, s->vdMatrix.data(), s->vdVector.data(), vdRow.data(), 0.7); },
            Restore(s, PackedMatrix(n)));
    };
    Dense("n = 8", 0, 0, 5020);
    Dense("n = 8, three zeros", 3, 3, 2940);
    Dense("n = 8, first zero", 0, 1, 4520);
    Dense("n = 8, all zero", 0, 8, 690);
    const std::vector<int> viIndices = {0, 1, 2, 6, 7};
    const std::vector<double> vdValues = TNumbers().Take(5);
    Insert(
        "UpdateNormMatrixLowTri, sparse", "5 of 8", Update(5), 2530,
        [s, viIndices, vdValues] {
            nuv::UpdateNormMatrixLowTri(n, s->vdMatrix.data(), s->vdVector.data(), 5, vdValues.data(), viIndices.data(),
                                        0.7);
        },
        Restore(s, PackedMatrix(n)));
    const auto Init = [s] { nuv::InitCholLowTri(n, &s->pMatrix, &s->pVector); };
    const auto Delete = [s]
    {
        nuv::DeleteCholLowTri(s->pMatrix, s->pVector);
        s->pMatrix = s->pVector = nullptr;
    };
    Insert("InitCholLowTri", "n = 8", TCensus{}, 900, Init, Delete);
    Insert("DeleteCholLowTri", "n = 8", TCensus{}, 260, Delete, Init);
}

void TCases::Equations()
{
    const auto s = Scratch();
    double* const o = s->vdOut;
    Insert("Roots, two unknowns", "", TwoUnknowns, 748, [o] { nuv::Roots(1.3, 0.4, -0.7, 2.1, 5.3, 1.9, o[0], o[1]); });
    const std::vector<double> vdQuadratic = {1.0, -3.0, 2.0};
    Insert("Roots, polynomial", "degree 2", PolynomialRoots(20, 2, 11, 4, 24, 1), 3620,
           [=] { nuv::Roots(2, vdQuadratic.data(), o, 1e-6); });
    m_Cases.back().bComparisonsAtMost = true;
    // (x - 1.1) (x + 2.3) (x - 3.7) (x + 0.6), times 2
    const std::vector<double> vdQuartic = {2.0, -3.8, -18.08, 10.478, 11.2332};
    Insert("Roots, polynomial", "degree 4", PolynomialRoots(426, 349, 728, 71, 170, 17), 95400,
           [=] { nuv::Roots(4, vdQuartic.data(), o, 1e-6); });
    m_Cases.back().bComparisonsAtMost = true;
    // (c - a) u^2 + 2 b u + (a + c) = 0: two angles of half tangents, one of them negative, sorted.
    Insert("SolveLinTrig", "two angles",
           Compare(1) + Sub(1) + Add(2) + Quadratic(false) + 2 * (Once(OPERATION_ATAN) + Add(1)) + Add(1) + Compare(1),
           5050, [o] { nuv::SolveLinTrig(1.3, 0.7, 0.4, o); });
    // q w^2 + c w + p = 0: two tangents, one of them negative, an angle and its opposite each; four angles sorted by
    // selection, three neighbours that are not the same.
    Insert("SolveQuadTrig", "two tangents",
           Add(2) + Quadratic(false) + 2 * Once(OPERATION_ATAN) + Add(1) + Add(1) + Sub(1) + Compare(3 + 2 + 1) +
               Sub(3) + Compare(3),
           5670, [o] { nuv::SolveQuadTrig(1.3, -0.7, 0.4, 0.0, 0.0, -0.2, o); });
    // Five coefficients; four angles of half tangents, two of them negative, sorted and compared as above.
    Insert("SolveQuadTrig", "quartic",
           Add(9) + Sub(3) + Mul(1) + Compare(1) + PolynomialRoots(427, 350, 726, 71, 168, 17) +
               4 * (Once(OPERATION_ATAN) + Add(1)) + Add(2) + Compare(3 + 2 + 1) + Sub(3) + Compare(3),
           105000, [o] { nuv::SolveQuadTrig(1.3, -0.7, 0.4, 0.3, -0.6, -0.2, o); });
    m_Cases.back().bComparisonsAtMost = true;
}

void TCases::Random()
{
    const auto Restart = []
    {
        DropSpareNormal();
        nuv::SetRandomSeed(-1);
    };
    Insert("SetRandomSeed", "", 98 * Uniform, 24000, [] { nuv::SetRandomSeed(-1); });
    Insert(
        "Rand", "", Uniform, 278, [] { nuv::Rand(); }, Restart);
    Insert(
        "Rand, bounds", "", Uniform + Sub(1) + MulAdd(1), 459, [] { nuv::Rand(-3.7, 11.3); }, Restart);
    Insert(
        "Randn", "new pair", NormalAttempt + NormalPair, 2660, [] { nuv::Randn(); }, Restart);
    Insert(
        "Randn", "second of a pair", TCensus{}, 15, [] { nuv::Randn(); },
        []
        {
            DropSpareNormal();
            nuv::Randn();
        });
    Insert(
        "Randn, mean and deviation", "new pair", NormalAttempt + NormalPair + MulAdd(1), 2780,
        [] { nuv::Randn(-3.7, 11.3); }, Restart);
}

} // namespace

std::vector<TDeviceCase> DeviceCases()
{
    TCases Cases;
    Cases.Conversions();
    Cases.Fits();
    Cases.Cholesky();
    Cases.NormalEquations();
    Cases.Equations();
    Cases.Random();
    return Cases.m_Cases;
}

} // namespace nuv_tests
