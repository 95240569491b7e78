// forward.h: calls functions of the image from a program with another calling convention.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The image uses the older convention of ARM: a double takes the next two places, registers or stack. The convention of
// this program would begin it at an even place. So each double is passed as two unsigned words, which both conventions
// pass in the same way.

#ifndef NUV_WINCE_FORWARD_H
#define NUV_WINCE_FORWARD_H

#include "loader.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>

namespace nuv_tests {

// The contents of the image file.
const std::string& ImageFile();

// The image that the tests of this process call. The first use loads it, at its preferred base or at the one that the
// variable NUV_IMAGE_BASE names. Throws if it cannot be loaded.
const TImage& LoadedImage();

// Returns the exported function with this name. Throws if there is none.
void* FindInImage(const char* a_szName);

template <class T> std::tuple<T> Words(T a_Value)
{
    static_assert(sizeof(T) <= sizeof(std::uint32_t), "an argument of more than a word");
    return {a_Value};
}

inline std::tuple<std::uint32_t, std::uint32_t> Words(double a_dValue)
{
    std::uint32_t viWords[2];
    std::memcpy(viWords, &a_dValue, sizeof viWords);
    return {viWords[0], viWords[1]};
}

template <class TResult, class... TArguments> TResult CallImage(void* a_pExport, TArguments... a_Arguments)
{
    return std::apply([a_pExport](auto... a_Words)
                      { return reinterpret_cast<TResult (*)(decltype(a_Words)...)>(a_pExport)(a_Words...); },
                      std::tuple_cat(Words(a_Arguments)...));
}

} // namespace nuv_tests

#endif // NUV_WINCE_FORWARD_H
