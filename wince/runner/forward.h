// forward.h: calls functions of the image from a program with another calling convention.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The image follows the older convention of ARM: a double is two words in the next two places, be they registers or
// stack. Here it would begin at an even place. Two unsigned words in place of each double are the same in both.

#ifndef NUV_WINCE_FORWARD_H
#define NUV_WINCE_FORWARD_H

#include "loader.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>

namespace nuv_tests {

// The file of the image.
const std::string& ImageFile();

// The image that the tests of this process run against, loaded by its first use: at its preferred base, or at the one
// that NUV_IMAGE_BASE names. An image that cannot be loaded ends the process with an exception.
const TImage& LoadedImage();

// The exported function of that name; an exception if there is none.
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
