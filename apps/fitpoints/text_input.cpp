// text_input.cpp: reads a text in memory.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "input.h"

namespace fitpoints {

TInput TextInput(const std::string& a_szName, std::string a_szText)
{
    const auto Read =
        [szText = std::move(a_szText), iNext = std::size_t(0)](char* a_vcBytes, std::size_t a_iSize) mutable
    {
        const std::size_t iBytes = szText.copy(a_vcBytes, a_iSize, iNext);
        iNext += iBytes;
        return iBytes;
    };
    return {a_szName, Read};
}

} // namespace fitpoints
