// fonts.cpp: asks fontconfig which characters the fonts of this machine have.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "fonts.h"
#include "child_process.h"
#include "text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>
#include <vector>

namespace fitpoints {

using TRange = std::pair<unsigned long, unsigned long>; // the first and the last code point

// What fc-list prints: for each font a line of code points and ranges, "20-7e a0 a2-17f", in hexadecimal.
static std::string AskFontconfig()
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> Output(std::tmpfile(), std::fclose);
    std::string szText;
    try
    {
        if (Output && RunChild({"fc-list", "--format", "%{charset}\n"}, "", fileno(Output.get())).bSucceeded)
        {
            std::rewind(Output.get());
            for (int iChar = std::getc(Output.get()); iChar != EOF; iChar = std::getc(Output.get()))
            {
                szText.push_back(static_cast<char>(iChar));
            }
        }
    }
    catch (const TFailure&) // there is no fc-list
    {}
    return szText;
}

static std::vector<TRange> KnownRanges()
{
    const std::string szText = AskFontconfig();
    std::set<TRange> Ranges;
    const char* pNext = szText.c_str();
    while (*pNext != '\0')
    {
        char* pEnd;
        const unsigned long iFirst = std::strtoul(pNext, &pEnd, 16);
        if (pEnd == pNext) // only white space is left, or something unknown
        {
            break;
        }
        const unsigned long iLast = *pEnd == '-' ? std::strtoul(pEnd + 1, &pEnd, 16) : iFirst;
        Ranges.emplace(iFirst, iLast);
        pNext = pEnd;
    }
    return {Ranges.begin(), Ranges.end()};
}

static bool IsKnown(unsigned long a_iCode)
{
    if (a_iCode < 0x80)
    {
        return true;
    }
    static const std::vector<TRange> vRanges = KnownRanges();
    return std::any_of(vRanges.begin(), vRanges.end(),
                       [&](const TRange& a_Range) { return a_Range.first <= a_iCode && a_iCode <= a_Range.second; });
}

std::string WithKnownCharacters(const std::string& a_szText)
{
    std::string szKnown;
    for (std::size_t i = 0; i < a_szText.size();)
    {
        const std::size_t iLength = SequenceLength(static_cast<unsigned char>(a_szText[i]));
        const unsigned long iCode =
            iLength == 1 ? static_cast<unsigned char>(a_szText[i]) : CodePoint(&a_szText[i], iLength);
        szKnown += IsKnown(iCode) ? a_szText.substr(i, iLength) : "?";
        i += iLength;
    }
    return szKnown;
}

} // namespace fitpoints
