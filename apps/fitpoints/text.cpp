// text.cpp: the texts of messages and numbers.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "text.h"

#include <charconv>
#include <cstdio>
#include <cstring>

namespace fitpoints {

void FailWithError(const std::string& a_szPlace, const std::string& a_szWhat, int a_iError)
{
    Fail(a_szPlace, a_szWhat + ": " + std::strerror(a_iError));
}

std::string Place(const std::string& a_szFile, long a_iLine)
{
    return a_szFile + ":" + std::to_string(a_iLine);
}

static bool IsControl(char a_iChar)
{
    const auto iByte = static_cast<unsigned char>(a_iChar);
    return iByte < 0x20 || iByte == 0x7F;
}

std::string OneLine(std::string a_szText)
{
    for (char& iChar : a_szText)
    {
        if (IsControl(iChar))
        {
            iChar = '?';
        }
    }
    return a_szText;
}

static bool IsContinuation(char a_iChar)
{
    return (static_cast<unsigned char>(a_iChar) & 0xC0) == 0x80;
}

std::string Quoted(const std::string& a_szText)
{
    const std::size_t iGreatest = 40;
    if (a_szText.size() <= iGreatest)
    {
        return "'" + OneLine(a_szText) + "'";
    }
    std::size_t iEnd = iGreatest;
    while (iEnd > 0 && IsContinuation(a_szText[iEnd])) // do not cut inside a character
    {
        --iEnd;
    }
    return "'" + OneLine(a_szText.substr(0, iEnd)) + "...'";
}

std::size_t SequenceLength(unsigned char a_iByte)
{
    return a_iByte < 0x80                      ? 1
           : a_iByte >= 0xC2 && a_iByte < 0xE0 ? 2
           : a_iByte >= 0xE0 && a_iByte < 0xF0 ? 3
           : a_iByte >= 0xF0 && a_iByte < 0xF5 ? 4
                                               : 0;
}

unsigned int CodePoint(const char* a_szText, std::size_t a_iLength)
{
    unsigned int iCode = static_cast<unsigned char>(a_szText[0]) & (0xFFu >> (a_iLength + 1));
    for (std::size_t i = 1; i < a_iLength; ++i)
    {
        iCode = iCode << 6 | (static_cast<unsigned char>(a_szText[i]) & 0x3F);
    }
    return iCode;
}

// False for an overlong form, a half of a UTF-16 pair, a code beyond Unicode, and the controls U+0080 to U+009F.
static bool IsPlainCode(unsigned int a_iCode, std::size_t a_iLength)
{
    const unsigned int viLeast[] = {0, 0, 0xA0, 0x800, 0x10000};
    return a_iCode >= viLeast[a_iLength] && a_iCode <= 0x10FFFF && (a_iCode < 0xD800 || a_iCode > 0xDFFF);
}

bool IsPlainUtf8(const std::string& a_szText)
{
    for (std::size_t i = 0; i < a_szText.size();)
    {
        const std::size_t iLength = SequenceLength(static_cast<unsigned char>(a_szText[i]));
        if (iLength == 0 || i + iLength > a_szText.size() || IsControl(a_szText[i]))
        {
            return false;
        }
        for (std::size_t k = 1; k < iLength; ++k)
        {
            if (!IsContinuation(a_szText[i + k]))
            {
                return false;
            }
        }
        if (iLength > 1 && !IsPlainCode(CodePoint(&a_szText[i], iLength), iLength))
        {
            return false;
        }
        i += iLength;
    }
    return true;
}

std::string Number(const char* a_szFormat, double a_dValue)
{
    char szText[400]; // %f of the greatest double has 317 characters
    std::snprintf(szText, sizeof szText, a_szFormat, a_dValue);
    return szText;
}

std::string Exact(double a_dValue)
{
    return Number("%.17g", a_dValue);
}

std::string Shortest(double a_dValue)
{
    char szText[64];
    return {szText, std::to_chars(szText, szText + sizeof szText, a_dValue).ptr};
}

std::string SixDigits(double a_dValue)
{
    char szText[64];
    return {szText, std::to_chars(szText, szText + sizeof szText, a_dValue, std::chars_format::general, 6).ptr};
}

std::string Brief(double a_dValue)
{
    return Number("%.4g", a_dValue);
}

std::string Count(std::size_t a_iCount, const std::string& a_szNoun)
{
    return std::to_string(a_iCount) + " " + a_szNoun + (a_iCount == 1 ? "" : "s");
}

} // namespace fitpoints
