// failure.cpp: failures leave the module of WebAssembly as exceptions of JavaScript.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The compiler has no exceptions for WebAssembly. The imported function throws one of JavaScript through all functions of
// the module, whose variables are not destroyed. So the instance that failed must not be used again: the caller drops it
// with its memory and makes another one.

#include "failure.h"

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

void FailForMemory()
{
    Fail("georeference", "not enough memory");
}

} // namespace fitpoints
