// text.h: texts that the parts of the program share: numbers, one-line messages, failures.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_TEXT_H
#define NUV_FITPOINTS_TEXT_H

#include <stdexcept>
#include <string>

namespace fitpoints {

// The program gives up: one line for standard error, exit code 2.
struct TFailure : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// Throws TFailure with "<place>: <what>".
[[noreturn]] void Fail(const std::string& a_szPlace, const std::string& a_szWhat);

// Throws TFailure with "<place>: <what>: <text of a_iError>", an errno value.
[[noreturn]] void FailWithError(const std::string& a_szPlace, const std::string& a_szWhat, int a_iError);

// "<file>:<line>".
std::string Place(const std::string& a_szFile, long a_iLine);

// The text with every control character replaced, so that it stays one line and cannot steer a terminal.
std::string OneLine(std::string a_szText);

// A user's text inside a message: quoted, one line, and cut when it is long.
std::string Quoted(const std::string& a_szText);

// True for well-formed UTF-8 without control characters.
bool IsPlainUtf8(const std::string& a_szText);

// printf of one double.
std::string Number(const char* a_szFormat, double a_dValue);

// 17 significant digits: the double can be read back from them.
std::string Exact(double a_dValue);

// The shortest digits from which the double can be read back.
std::string Shortest(double a_dValue);

// A few digits, for messages.
std::string Brief(double a_dValue);

// "1 point", "2 points".
std::string Count(std::size_t a_iCount, const std::string& a_szNoun);

} // namespace fitpoints

#endif // NUV_FITPOINTS_TEXT_H
