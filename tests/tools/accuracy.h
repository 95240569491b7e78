// accuracy.h: what the parts of the program accuracy have in common: numbers of 120 digits, and rows of tables.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_TOOLS_ACCURACY_H
#define NUV_TESTS_TOOLS_ACCURACY_H

#include <boost/multiprecision/mpfr.hpp>
#include <random>
#include <string>
#include <vector>

namespace nuv_accuracy {

using TDigits =
    boost::multiprecision::number<boost::multiprecision::mpfr_float_backend<120>, boost::multiprecision::et_off>;
using TDoubles = std::vector<double>;

// Random numbers from -1 to 1, the same on every machine.
class TRandom
{
public:
    double operator()()
    {
        return std::ldexp(static_cast<double>(m_Engine() >> 11), -52) - 1.0;
    }

private:
    std::mt19937_64 m_Engine{20261121};
};

inline double ToDouble(const TDigits& a_Value)
{
    return a_Value.convert_to<double>();
}

// One digit, rounded up.
std::string UpperDigit(double a_dValue);

// The median and the greatest error.
std::string Spread(TDoubles a_vdErrors);

void PrintRow(const std::vector<std::string>& a_vszCells);
void StartTable(const char* a_szName, const std::vector<std::string>& a_vszHead);

// The tables of accuracy_roots.cpp.
void PrintPolynomials();
void PrintLinearAngles();
void PrintQuadraticAngles();

} // namespace nuv_accuracy

#endif // NUV_TESTS_TOOLS_ACCURACY_H
