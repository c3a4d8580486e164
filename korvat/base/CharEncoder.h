#pragma once

#include <cstdint>
#include <string>

#include "korvat/base/Export.h"

namespace zavri::base {

// How the characters of a text are stored.
enum class CharEncoding : std::int32_t {
  Iso8859_1 = 0,
  Utf8 = 1,
  Utf16 = 2,
  Utf32 = 4,
};

// Conversions between UTF-8 and other encodings. UTF-16 and UTF-32 in byte strings are big-endian,
// the network's order. Broken input, and characters that the target cannot hold, become U+FFFD, or
// "?" in ISO 8859-1; nothing throws. Each maximal broken sequence is one such character. Nothing is
// cut at a zero character. A number that is no CharEncoding means ISO 8859-1.
class KORVAT_API CharEncoder {
 public:
  static std::string convertToUtf8(const std::string& bytes, CharEncoding encoding);
  static std::string convertToEncoding(const std::string& utf8, CharEncoding encoding);

  static std::string convertUtf16toUtf8(const std::u16string& text);
  static std::u16string convertUtf8toUtf16_16(const std::string& utf8);
};

}  // namespace zavri::base
