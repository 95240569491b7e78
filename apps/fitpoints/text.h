// text.h: the texts of messages and numbers.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_TEXT_H
#define NUV_FITPOINTS_TEXT_H

#include "failure.h"

#include <functional>
#include <string>

namespace fitpoints {

// Takes the next part of a long text.
using TWrite = std::function<void(const std::string&)>;

// A long text is passed on when it has about this size.
static const std::size_t BUFFERED_BYTES = 256 * 1024;

// Fails with "<place>: <what>: <error>", where a_iError is a value of errno.
[[noreturn]] void FailWithError(const std::string& a_szPlace, const std::string& a_szWhat, int a_iError);

// "<file>:<line>".
std::string Place(const std::string& a_szFile, long a_iLine);

// Replaces every control character, so that the text is one line and cannot control a terminal.
std::string OneLine(std::string a_szText);

// A text of the user inside a message: one line in quotes, cut if it is long.
std::string Quoted(const std::string& a_szText);

// The length of the UTF-8 sequence that this byte starts; 0 if it starts none.
std::size_t SequenceLength(unsigned char a_iByte);

// The code point of a sequence of 2 to 4 bytes.
unsigned int CodePoint(const char* a_szText, std::size_t a_iLength);

// True for well-formed UTF-8 without control characters.
bool IsPlainUtf8(const std::string& a_szText);

// The number in a format of printf.
std::string Number(const char* a_szFormat, double a_dValue);

// 17 significant digits, from which the double can be read back.
std::string Exact(double a_dValue);

// The shortest digits from which the double can be read back.
std::string Shortest(double a_dValue);

// Six significant digits, as %.6g of printf has them, in a quarter of its time.
std::string SixDigits(double a_dValue);

// A few digits, for messages.
std::string Brief(double a_dValue);

// "1 point", "2 points".
std::string Count(std::size_t a_iCount, const std::string& a_szNoun);

} // namespace fitpoints

#endif // NUV_FITPOINTS_TEXT_H
