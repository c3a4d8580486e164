#include "korvat/base/CharEncoder.h"

#include <cstddef>
#include <string_view>

#include "korvat/base/Utf8.h"

namespace zavri::base {

namespace {

constexpr bool isHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool isLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Characters from UTF-16 code units. `unitAt` gives the unit at an index below `count`.
template <typename UnitAt>
std::string fromUtf16(std::size_t count, UnitAt unitAt) {
  std::string utf8;
  utf8.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const char32_t unit = unitAt(i);
    if (isHighSurrogate(unit) && i + 1 < count && isLowSurrogate(unitAt(i + 1))) {
      ++i;
      appendUtf8(utf8, 0x10000 + ((unit - 0xD800) << 10) + (unitAt(i) - 0xDC00));
    } else {
      appendUtf8(utf8, unit);  // a lone surrogate becomes U+FFFD
    }
  }
  return utf8;
}

// Big-endian number of `width` bytes at `pos`, which must lie within the text.
char32_t readUnit(std::string_view bytes, std::size_t pos, std::size_t width) {
  char32_t unit = 0;
  for (std::size_t i = 0; i < width; ++i) {
    unit = (unit << 8) | static_cast<unsigned char>(bytes[pos + i]);
  }
  return unit;
}

void appendUnit(std::string& bytes, char32_t unit, unsigned width) {
  for (unsigned i = width; i > 0; --i) {
    bytes += static_cast<char>((unit >> (8 * (i - 1))) & 0xFF);
  }
}

// Calls `use` with each character, U+FFFD for each broken sequence.
template <typename Use>
void forEachCharacter(std::string_view utf8, Use use) {
  std::size_t pos = 0;
  while (pos < utf8.size()) use(takeUtf8(utf8, pos));
}

// Calls `use` with each UTF-16 code unit of a character.
template <typename Use>
void forEachUnit(char32_t code, Use use) {
  if (code < 0x10000) {
    use(static_cast<char16_t>(code));
    return;
  }
  use(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
  use(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
}

std::string repairUtf8(std::string_view bytes) {
  std::string utf8;
  utf8.reserve(bytes.size());
  forEachCharacter(bytes, [&utf8](char32_t code) { appendUtf8(utf8, code); });
  return utf8;
}

std::string fromIso8859(std::string_view bytes) {
  std::string utf8;
  utf8.reserve(bytes.size());
  for (const char byte : bytes) appendUtf8(utf8, static_cast<unsigned char>(byte));
  return utf8;
}

std::string fromUtf16Bytes(std::string_view bytes) {
  std::string utf8 =
      fromUtf16(bytes.size() / 2, [bytes](std::size_t i) { return readUnit(bytes, 2 * i, 2); });
  if (bytes.size() % 2 != 0) appendUtf8(utf8, kReplacementCharacter);
  return utf8;
}

std::string fromUtf32Bytes(std::string_view bytes) {
  std::string utf8;
  utf8.reserve(bytes.size() / 4);
  for (std::size_t i = 0; i < bytes.size() / 4; ++i) appendUtf8(utf8, readUnit(bytes, 4 * i, 4));
  if (bytes.size() % 4 != 0) appendUtf8(utf8, kReplacementCharacter);
  return utf8;
}

std::string toIso8859(std::string_view utf8) {
  std::string bytes;
  bytes.reserve(utf8.size());
  forEachCharacter(
      utf8, [&bytes](char32_t code) { bytes += code <= 0xFF ? static_cast<char>(code) : '?'; });
  return bytes;
}

std::string toUtf16Bytes(std::string_view utf8) {
  std::string bytes;
  bytes.reserve(2 * utf8.size());
  forEachCharacter(utf8, [&bytes](char32_t code) {
    forEachUnit(code, [&bytes](char16_t unit) { appendUnit(bytes, unit, 2); });
  });
  return bytes;
}

std::string toUtf32Bytes(std::string_view utf8) {
  std::string bytes;
  bytes.reserve(4 * utf8.size());
  forEachCharacter(utf8, [&bytes](char32_t code) { appendUnit(bytes, code, 4); });
  return bytes;
}

}  // namespace

std::string CharEncoder::convertToUtf8(const std::string& bytes, CharEncoding encoding) {
  switch (encoding) {
    case CharEncoding::Iso8859_1:
      break;
    case CharEncoding::Utf8:
      return repairUtf8(bytes);
    case CharEncoding::Utf16:
      return fromUtf16Bytes(bytes);
    case CharEncoding::Utf32:
      return fromUtf32Bytes(bytes);
  }
  return fromIso8859(bytes);
}

std::string CharEncoder::convertToEncoding(const std::string& utf8, CharEncoding encoding) {
  switch (encoding) {
    case CharEncoding::Iso8859_1:
      break;
    case CharEncoding::Utf8:
      return repairUtf8(utf8);
    case CharEncoding::Utf16:
      return toUtf16Bytes(utf8);
    case CharEncoding::Utf32:
      return toUtf32Bytes(utf8);
  }
  return toIso8859(utf8);
}

std::string CharEncoder::convertUtf16toUtf8(const std::u16string& text) {
  return fromUtf16(text.size(), [&text](std::size_t i) { return static_cast<char32_t>(text[i]); });
}

std::u16string CharEncoder::convertUtf8toUtf16_16(const std::string& utf8) {
  std::u16string text;
  text.reserve(utf8.size());
  forEachCharacter(utf8, [&text](char32_t code) {
    forEachUnit(code, [&text](char16_t unit) { text += unit; });
  });
  return text;
}

}  // namespace zavri::base
