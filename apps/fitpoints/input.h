// input.h: the texts that are read, from files and from memory.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_INPUT_H
#define NUV_FITPOINTS_INPUT_H

#include <functional>
#include <string>

namespace fitpoints {

struct TInput
{
    std::string szName; // for messages
    // Puts up to a_iSize bytes into a_vcBytes and returns how many; 0 at the end. Fails if they cannot be read.
    std::function<std::size_t(char* a_vcBytes, std::size_t a_iSize)> Read;
};

// A file; "-" is standard input. Fails if it cannot be opened.
TInput FileInput(const std::string& a_szFile);

// A text in memory.
TInput TextInput(const std::string& a_szName, std::string a_szText);

} // namespace fitpoints

#endif // NUV_FITPOINTS_INPUT_H
