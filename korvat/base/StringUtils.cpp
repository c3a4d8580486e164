#include "korvat/base/StringUtils.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <system_error>

#include "korvat/base/AsciiText.h"

namespace zavri::util {

namespace {

constexpr std::string_view kDecimalDigits = "0123456789";

// What follows the white space at the start and a plus sign, which from_chars() does not take.
std::string_view skipToNumber(std::string_view text) {
  std::size_t start = 0;
  while (start < text.size() && isBlank(text[start])) ++start;
  text.remove_prefix(start);

  const bool isSigned = text.size() > 1 && text[0] == '+' && text[1] != '-';
  return isSigned ? text.substr(1) : text;
}

template <typename T>
T readInteger(std::string_view text, bool& isWhole) {
  const std::string_view digits = skipToNumber(text);
  T number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [rest, error] = std::from_chars(digits.data(), end, number);
  isWhole = error == std::errc() && rest == end;
  if (error != std::errc::result_out_of_range) return number;

  return digits[0] == '-' ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
}

// Tells a number too small for a double from one too large.
bool isBelowOne(std::string_view number) {
  const std::size_t mantissaSize = std::min(number.find_first_of("eE"), number.size());
  const std::string_view mantissa = number.substr(0, mantissaSize);
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  const std::size_t firstDigit = std::min(mantissa.find_first_of("123456789"), mantissa.size());
  const auto places = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(firstDigit);

  bool isWhole = false;
  const std::string_view exponent = number.substr(std::min(mantissaSize + 1, number.size()));
  return readInteger<std::int64_t>(exponent, isWhole) < -places;
}

double readDouble(std::string_view text, bool& isWhole) {
  isWhole = false;
  const std::string_view number = skipToNumber(text);
  const bool isNegative = !number.empty() && number[0] == '-';
  const std::string_view digits = number.substr(isNegative ? 1 : 0);
  // from_chars() would take "inf" and "nan".
  if (digits.empty() || (digits[0] != '.' && kDecimalDigits.find(digits[0]) == digits.npos)) {
    return 0.0;
  }

  double value = 0.0;
  const char* const end = number.data() + number.size();
  const auto [rest, error] = std::from_chars(number.data(), end, value);
  isWhole = error == std::errc() && rest == end;
  if (error != std::errc::result_out_of_range) return value;

  const auto size = static_cast<std::size_t>(rest - digits.data());
  const bool isTiny = isBelowOne(digits.substr(0, size));
  isWhole = isTiny && rest == end;
  return std::copysign(isTiny ? 0.0 : std::numeric_limits<double>::max(), isNegative ? -1.0 : 1.0);
}

// The limits have the precision of T, so that the single nearest to 1e17 counts as that.
template <typename T>
void appendFloating(std::string& text, T number) {
  if (std::isnan(number)) {
    text += "nan";  // without the sign that it may carry
    return;
  }

  const T size = std::abs(number);
  const bool isPlain = size == 0 || std::isinf(size) || (size >= T(1e-5) && size < T(1e17));
  constexpr std::size_t kLongest = 32;  // "-0.000012345678901234567" is shorter
  char digits[kLongest];
  const auto [end, error] =
      std::to_chars(digits, digits + kLongest, number,
                    isPlain ? std::chars_format::fixed : std::chars_format::scientific);
  if (error == std::errc()) text.append(digits, end);
}

template <typename T>
std::string integerToString(T number) {
  char digits[std::numeric_limits<T>::digits10 + 2];
  const auto [end, error] = std::to_chars(digits, digits + sizeof(digits), number);
  return error == std::errc() ? std::string(digits, end) : std::string();
}

}  // namespace

std::int32_t StringUtils::toInt32(const std::string& text) {
  bool isWhole = false;
  return toInt32(text, isWhole);
}

std::int64_t StringUtils::toInt64(const std::string& text) {
  bool isWhole = false;
  return toInt64(text, isWhole);
}

double StringUtils::toDouble(const std::string& text) {
  bool isWhole = false;
  return toDouble(text, isWhole);
}

std::int32_t StringUtils::toInt32(const std::string& text, bool& isWhole) {
  return readInteger<std::int32_t>(text, isWhole);
}

std::int64_t StringUtils::toInt64(const std::string& text, bool& isWhole) {
  return readInteger<std::int64_t>(text, isWhole);
}

double StringUtils::toDouble(const std::string& text, bool& isWhole) {
  return readDouble(text, isWhole);
}

std::string StringUtils::toString(int number) {
  return integerToString(number);
}

std::string StringUtils::toString(unsigned number) {
  return integerToString(number);
}

std::string StringUtils::toString(double number) {
  std::string text;
  append(text, number);
  return text;
}

std::string StringUtils::toString(float number) {
  std::string text;
  append(text, number);
  return text;
}

void StringUtils::append(std::string& text, double number) {
  appendFloating(text, number);
}

void StringUtils::append(std::string& text, float number) {
  appendFloating(text, number);
}

std::string StringUtils::trim(const std::string& text) {
  std::size_t begin = 0;
  std::size_t end = text.size();
  while (begin < end && isBlank(text[begin])) ++begin;
  while (end > begin && isBlank(text[end - 1])) --end;
  return text.substr(begin, end - begin);
}

bool StringUtils::startsWith(const std::string& text, const std::string& prefix, unsigned pos) {
  return pos <= text.size() && text.compare(pos, prefix.size(), prefix) == 0;
}

bool StringUtils::isEscaped(const std::string& text, unsigned begin, unsigned pos, char escape) {
  if (pos > text.size()) return false;

  std::size_t first = pos;
  while (first > begin && text[first - 1] == escape) --first;
  return (pos - first) % 2 != 0;
}

bool StringUtils::equalsIgnoreCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return toLower(x) == toLower(y); });
}

}  // namespace zavri::util
