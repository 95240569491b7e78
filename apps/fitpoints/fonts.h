// fonts.h: the characters that the fonts of this machine have.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_FONTS_H
#define NUV_FITPOINTS_FONTS_H

#include <string>

namespace fitpoints {

// The text of well-formed UTF-8 with a question mark for each character that no font of this machine has. gnuplot
// draws such a character as large as the picture. If fontconfig cannot be asked, only ASCII is taken as known.
std::string WithKnownCharacters(const std::string& a_szText);

} // namespace fitpoints

#endif // NUV_FITPOINTS_FONTS_H
