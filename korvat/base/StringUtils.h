#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "korvat/base/Export.h"

namespace zavri::util {

// Text helpers, all independent of the locale.
class KORVAT_API StringUtils {
 public:
  // Decimal text to number: leading white space, a sign, digits; trailing text is ignored, no
  // number gives 0, a number out of range gives the nearest limit (the largest finite number of a
  // double). Doubles may have a point and an exponent; "inf" and "nan" are no numbers.
  static std::int32_t toInt32(const std::string& text);
  static std::int64_t toInt64(const std::string& text);
  static double toDouble(const std::string& text);

  // The same; `isWhole` tells whether the whole text, white space in front included, was a number
  // within range. A double too small to be told from zero is in range.
  static std::int32_t toInt32(const std::string& text, bool& isWhole);
  static std::int64_t toInt64(const std::string& text, bool& isWhole);
  static double toDouble(const std::string& text, bool& isWhole);

  static std::string toString(int number);
  static std::string toString(unsigned number);
  // Shortest text that reads back as the same number: plain digits from 1e-5 up to 1e17, with an
  // exponent beyond; no point when the value is integral ("5", "0.1", "1e+20"). "nan", "inf".
  static std::string toString(double number);
  static std::string toString(float number);

  // Appends what toString() gives.
  static void append(std::string& text, double number);
  static void append(std::string& text, float number);

  // `text` without white space (blank, tab, line feed, vertical tab, form feed, carriage return)
  // at both ends.
  static std::string trim(const std::string& text);

  // True when `prefix` stands in `text` at byte `pos`.
  static bool startsWith(const std::string& text, const std::string& prefix, unsigned pos);

  // True when the character at byte `pos` is escaped: an odd number of `escape` characters stands
  // right before it, none before byte `begin` counting. False past the end of the text.
  static bool isEscaped(const std::string& text, unsigned begin, unsigned pos, char escape);

  // Equal but for the case of ASCII letters.
  static bool equalsIgnoreCase(std::string_view a, std::string_view b);
};

}  // namespace zavri::util
