#include "korvat/base/JsonText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>

#include "korvat/base/StringUtils.h"
#include "korvat/base/Utf8.h"

namespace zavri::json {

using util::StringUtils;

namespace {

// Characters of a string that cannot be copied as they are: quotes, backslashes, control
// characters, and bytes beyond ASCII, which may be broken.
constexpr std::array<bool, 256> makeSpecialBytes() {
  std::array<bool, 256> isSpecial{};
  for (std::size_t byte = 0; byte < isSpecial.size(); ++byte) {
    isSpecial[byte] = byte < 0x20 || byte >= 0x80 || byte == '"' || byte == '\\';
  }
  return isSpecial;
}

constexpr std::array<bool, 256> kIsSpecial = makeSpecialBytes();

void appendEscaped(std::string& text, char c) {
  switch (c) {
    case '"':
    case '\\':
      text += '\\';
      text += c;
      return;
    case '\b':
      text += "\\b";
      return;
    case '\f':
      text += "\\f";
      return;
    case '\n':
      text += "\\n";
      return;
    case '\r':
      text += "\\r";
      return;
    case '\t':
      text += "\\t";
      return;
  }
  constexpr char kDigits[] = "0123456789abcdef";
  text += "\\u00";
  text += kDigits[(c >> 4) & 0x0F];
  text += kDigits[c & 0x0F];
}

}  // namespace

void appendJsonString(std::string& text, std::string_view content) {
  text += '"';
  std::size_t pos = 0;
  while (pos < content.size()) {
    std::size_t end = pos;
    while (end < content.size() && !kIsSpecial[static_cast<unsigned char>(content[end])]) ++end;
    text.append(content, pos, end - pos);
    pos = end;
    if (pos == content.size()) break;

    if (static_cast<unsigned char>(content[pos]) < 0x80) {
      appendEscaped(text, content[pos++]);
    } else {
      base::appendUtf8(text, base::takeUtf8(content, pos));
    }
  }
  text += '"';
}

template <typename T>
void appendJsonNumber(std::string& text, T number) {
  if constexpr (std::is_floating_point_v<T>) {
    if (!std::isfinite(number)) {
      text += "null";
      return;
    }
    const std::size_t start = text.size();
    StringUtils::append(text, number);
    if (text.find_first_of(".e", start) == std::string::npos) text += ".0";
  } else {
    std::array<char, 24> digits{};  // "-9223372036854775808" is shorter
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    text.append(digits.data(), result.ptr);
  }
}

template void appendJsonNumber(std::string&, std::int64_t);
template void appendJsonNumber(std::string&, std::uint64_t);
template void appendJsonNumber(std::string&, float);
template void appendJsonNumber(std::string&, double);

}  // namespace zavri::json
