// failure.cpp: failures leave the module of WebAssembly as exceptions of JavaScript.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The compiler has no exceptions for WebAssembly. The imported function throws one of JavaScript through all functions
// of the module, whose variables are not destroyed. So the instance that failed must not be used again: the caller
// drops it with its memory and makes another one.

#include "failure.h"

#include <new>

extern "C" {

__attribute__((import_module("georeference"), import_name("fail"), noreturn)) void FailOutside(const char* a_szText,
                                                                                               std::size_t a_iLength);
}

namespace fitpoints {

void Fail(const std::string& a_szPlace, const std::string& a_szWhat)
{
    const std::string szText = a_szPlace + ": " + a_szWhat;
    FailOutside(szText.data(), szText.size());
}

// Makes no string, for which there would be no memory.
void FailForMemory()
{
    static const char szText[] = "georeference: not enough memory";
    FailOutside(szText, sizeof szText - 1);
}

// Without exceptions the operator new would return null.
static const std::new_handler g_Previous = std::set_new_handler(FailForMemory);

} // namespace fitpoints
