#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "korvat/base/Endianess.h"

// The strict forms of the texts in raw values, written down once more and apart from the library.
namespace zavri::test {

using Bytes = std::vector<std::uint8_t>;

enum class TextForm { None, Latin1, Utf8, Utf16, Utf32 };

inline unsigned unitSizeOf(TextForm form) {
  if (form == TextForm::Utf32) return 4;
  return form == TextForm::Utf16 ? 2 : 1;
}

inline std::uint64_t loadNumber(const std::uint8_t* bytes, unsigned byteCount,
                                base::Endianess order) {
  std::uint64_t number = 0;
  for (unsigned i = 0; i < byteCount; ++i) {
    const unsigned shift = 8 * (order == base::Endianess::Big ? byteCount - 1 - i : i);
    number |= std::uint64_t{bytes[i]} << shift;
  }
  return number;
}

inline void storeNumber(std::uint64_t number, unsigned byteCount, base::Endianess order,
                        std::uint8_t* bytes) {
  for (unsigned i = 0; i < byteCount; ++i) {
    const unsigned shift = 8 * (order == base::Endianess::Big ? byteCount - 1 - i : i);
    bytes[i] = static_cast<std::uint8_t>(number >> shift);
  }
}

inline bool isScalarValue(std::uint64_t code) {
  return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

// The code units of one character, which is one of the form.
inline std::vector<std::uint32_t> unitsOf(std::uint32_t code, TextForm form) {
  if (form == TextForm::Utf16 && code > 0xFFFF) {
    const std::uint32_t rest = code - 0x10000;
    return {0xD800 + rest / 0x400, 0xDC00 + rest % 0x400};
  }
  if (form != TextForm::Utf8 || code < 0x80) return {code};
  if (code < 0x800) return {0xC0 + code / 64, 0x80 + code % 64};
  if (code < 0x10000) return {0xE0 + code / 4096, 0x80 + code / 64 % 64, 0x80 + code % 64};
  return {0xF0 + code / 262144, 0x80 + code / 4096 % 64, 0x80 + code / 64 % 64, 0x80 + code % 64};
}

// The character that begins at unit `pos`, which moves behind it; none when the units from there
// are not the ones of a character.
inline std::optional<std::uint32_t> takeCharacter(const std::vector<std::uint32_t>& units,
                                                  std::size_t& pos, TextForm form) {
  const std::uint32_t first = units[pos];
  std::uint32_t code = first;
  if (form == TextForm::Utf16 && first >= 0xD800 && first <= 0xDBFF && pos + 1 < units.size()) {
    code = 0x10000 + (first - 0xD800) * 0x400 + (units[pos + 1] - 0xDC00);
  } else if (form == TextForm::Utf8 && first >= 0xC0) {
    const unsigned more = first >= 0xF0 ? 3 : (first >= 0xE0 ? 2 : 1);
    if (pos + more >= units.size()) return std::nullopt;
    code = first & (0x3Fu >> more);
    for (unsigned i = 1; i <= more; ++i) code = code * 64 + (units[pos + i] & 0x3F);
  }
  if (form != TextForm::Latin1 && !isScalarValue(code)) return std::nullopt;

  // Written again it must be the same units: that refuses all that is too long or broken.
  for (const std::uint32_t unit : unitsOf(code, form)) {
    if (pos >= units.size() || units[pos] != unit) return std::nullopt;
    ++pos;
  }
  return code;
}

// The text in `bytes` as UTF-8; none when it is broken, or more than zeros stands behind its end.
inline std::optional<std::string> readPlainText(const Bytes& bytes, TextForm form,
                                                base::Endianess order) {
  const unsigned unitSize = unitSizeOf(form);
  std::vector<std::uint32_t> units;
  std::size_t end = 0;
  for (; end + unitSize <= bytes.size(); end += unitSize) {
    const std::uint64_t unit = loadNumber(&bytes[end], unitSize, order);
    if (unit == 0) break;
    units.push_back(static_cast<std::uint32_t>(unit));
  }
  for (; end < bytes.size(); ++end) {
    if (bytes[end] != 0) return std::nullopt;
  }

  std::string utf8;
  for (std::size_t pos = 0; pos < units.size();) {
    const std::optional<std::uint32_t> code = takeCharacter(units, pos, form);
    if (!code) return std::nullopt;
    for (const std::uint32_t byte : unitsOf(*code, TextForm::Utf8)) {
      utf8 += static_cast<char>(byte);
    }
  }
  return utf8;
}

}  // namespace zavri::test
