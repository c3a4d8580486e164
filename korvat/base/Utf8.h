#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "korvat/base/Export.h"

namespace zavri::base {

// Stands for whatever could not be read or written.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

// True for a Unicode scalar value: a code point that is no surrogate.
constexpr bool isCharacter(char32_t code) {
  return code < 0xD800 || (code > 0xDFFF && code <= 0x10FFFF);
}

// Reads the character at byte `pos` of `utf8` and moves `pos` behind it. A broken sequence gives
// U+FFFD; behind it is the first byte that cannot continue it (Unicode 15, section 3.9, "U+FFFD
// substitution of maximal subparts"). Needs pos < utf8.size().
KORVAT_API char32_t takeUtf8(std::string_view utf8, std::size_t& pos);

// Appends `code`, or U+FFFD when it is no character.
KORVAT_API void appendUtf8(std::string& utf8, char32_t code);

}  // namespace zavri::base
