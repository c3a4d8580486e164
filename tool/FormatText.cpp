#include "tool/FormatText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "korvat/base/AsciiText.h"
#include "korvat/base/StringUtils.h"
#include "korvat/base/Utf8.h"
#include "korvat/format/ArgumentExpression.h"
#include "korvat/format/Concatenation.h"
#include "korvat/format/Condition.h"
#include "korvat/format/FormattedString.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemNumeric.h"
#include "korvat/types/EnumType.h"
#include "tool/Failure.h"
#include "tool/JsonPath.h"

namespace zavri::korvat::tool {

namespace {

using format::FormatBase;
using util::StringUtils;

constexpr unsigned kMaxWidth = 100;
constexpr unsigned kMaxPrecision = 20;

// A conversion of printf: %[flags][width][.precision]letter. A blank is no flag: "100% sure".
struct Conversion {
  std::string text;  // as it was written
  bool isLeft = false;
  bool isZeroFilled = false;
  bool isSignShown = false;
  unsigned width = 0;
  std::optional<unsigned> precision;
  char letter = 0;
};

unsigned takeNumber(const std::string& text, std::size_t& pos, unsigned largest) {
  unsigned number = 0;
  for (; pos < text.size() && util::isDigit(text[pos]); ++pos) {
    number = std::min(10 * number + static_cast<unsigned>(text[pos] - '0'), largest);
  }
  return number;
}

// The conversion at `pos`, where a "%" stands; `pos` moves behind it. No letter when it is none.
Conversion takeConversion(const std::string& text, std::size_t& pos) {
  Conversion conversion;
  const std::size_t begin = pos++;
  for (; pos < text.size() && std::string_view("-+#0").find(text[pos]) < 4; ++pos) {
    if (text[pos] == '-') conversion.isLeft = true;
    if (text[pos] == '0') conversion.isZeroFilled = true;
    if (text[pos] == '+') conversion.isSignShown = true;
  }
  conversion.width = takeNumber(text, pos, kMaxWidth);
  if (pos < text.size() && text[pos] == '.') {
    ++pos;
    conversion.precision = takeNumber(text, pos, kMaxPrecision);
  }
  while (pos < text.size() && (text[pos] == 'l' || text[pos] == 'h')) ++pos;  // of C's types
  const bool isLetter = pos < text.size() && (util::isLetter(text[pos]) || text[pos] == '%');
  if (isLetter) conversion.letter = text[pos++];
  conversion.text = text.substr(begin, pos - begin);
  return conversion;
}

char unescape(char c) {
  switch (c) {
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case 'r':
      return '\r';
    default:
      return c;
  }
}

std::string numberText(const json::Value& node) {
  if (!node.isFloating()) return node.asString();
  return node.getNumberType() == json::NumberType::Single
             ? StringUtils::toString(static_cast<float>(node.asDouble()))
             : StringUtils::toString(node.asDouble());
}

std::string withPrecision(double number, const Conversion& conversion) {
  auto style = std::chars_format::fixed;
  if (util::toLower(conversion.letter) == 'e') style = std::chars_format::scientific;
  if (util::toLower(conversion.letter) == 'g') style = std::chars_format::general;
  char text[400];  // the largest double has 309 digits before the point
  const auto end = std::to_chars(text, text + sizeof(text), number, style,
                                 static_cast<int>(*conversion.precision))
                       .ptr;
  return std::string(text, end);
}

std::string inBase(const json::Value& node, const Conversion& conversion) {
  const std::int64_t number = node.asInt64();
  const auto digits = number < 0 ? static_cast<std::uint64_t>(static_cast<std::uint32_t>(number))
                                 : static_cast<std::uint64_t>(number);
  char text[32];
  const int base = conversion.letter == 'o' ? 8 : 16;
  std::string result(text, std::to_chars(text, text + sizeof(text), digits, base).ptr);
  if (conversion.letter != 'X') return result;
  for (char& c : result) c = util::isLetter(c) ? static_cast<char>(c - 'a' + 'A') : c;
  return result;
}

// True for what shows a measured number.
bool isFloatingConversion(char letter) {
  return std::string_view("fFeEgG").find(letter) != std::string_view::npos;
}

// At most `count` characters of UTF-8 text.
std::string cutText(const std::string& text, unsigned count) {
  std::size_t end = 0;
  for (; count > 0 && end < text.size(); --count) base::takeUtf8(text, end);
  return text.substr(0, end);
}

std::string convert(const json::Value& node, const Conversion& conversion) {
  if (!node.isNumber()) {
    const std::string text = node.asString();
    return conversion.letter == 's' && conversion.precision ? cutText(text, *conversion.precision)
                                                            : text;
  }
  switch (conversion.letter) {
    case 'x':
    case 'X':
    case 'o':
      return inBase(node, conversion);
    case 'c': {
      std::string text;
      if (node.asInt64() != 0) base::appendUtf8(text, static_cast<char32_t>(node.asInt32()));
      return text;
    }
    default:
      break;
  }
  const bool isRounded = isFloatingConversion(conversion.letter) && conversion.precision;
  std::string text = isRounded ? withPrecision(node.asDouble(), conversion) : numberText(node);
  if (conversion.isSignShown && text.front() != '-') text.insert(0, 1, '+');
  return text;
}

std::string fill(std::string text, const Conversion& conversion) {
  std::size_t length = 0;  // characters
  for (std::size_t pos = 0; pos < text.size(); ++length) base::takeUtf8(text, pos);
  if (length >= conversion.width) return text;

  const std::size_t missing = conversion.width - length;
  if (conversion.isLeft) return text.append(missing, ' ');
  const std::size_t digits = text.find_first_not_of("+-");
  const bool isText = std::string_view("csm").find(conversion.letter) != std::string_view::npos;
  const bool isNumber = !isText && digits <= 1 && util::hexValue(text[digits]) >= 0;
  if (!conversion.isZeroFilled || !isNumber) return text.insert(0, missing, ' ');
  return text.insert(digits, missing, '0');
}

class FormatWriter {
 public:
  FormatWriter(TypeManager& manager, const VarType& type, const json::Value& value)
      : _manager(manager), _type(type), _value(value) {}

  std::string write(const FormatBase* node) {
    if (node == nullptr) return "";
    switch (node->getKind()) {
      case FormatBase::Kind::FT_Concatenation: {
        std::string text;
        for (const auto& part : static_cast<const format::Concatenation*>(node)->getParts()) {
          text += write(part.get());
        }
        return text;
      }
      case FormatBase::Kind::FT_FormattedString:
        return writeString(*static_cast<const format::FormattedString*>(node));
      case FormatBase::Kind::FT_Condition: {
        const auto* condition = static_cast<const format::Condition*>(node);
        return write(holds(*condition) ? condition->getThen() : condition->getElse());
      }
      case FormatBase::Kind::FT_Date:
        return writeParts(*static_cast<const format::ArgumentExpression*>(node), "--", {4, 2, 2});
      case FormatBase::Kind::FT_Time:
        return writeParts(*static_cast<const format::ArgumentExpression*>(node), "::.",
                          {2, 2, 2, 3});
      case FormatBase::Kind::FT_Base:
      case FormatBase::Kind::FT_Format:
      case FormatBase::Kind::FT_Field:
        break;
    }
    return "";
  }

 private:
  std::string writeString(const format::FormattedString& string) {
    const std::string& text = string.getFormatText();
    const auto& fields = string.getFields();
    const bool showsValueItself = fields.empty();
    std::size_t next = 0;  // field
    std::string result;
    for (std::size_t pos = 0; pos < text.size();) {
      if (text[pos] == '\\' && pos + 1 < text.size()) {
        result += unescape(text[pos + 1]);
        pos += 2;
        continue;
      }
      if (text[pos] != '%') {
        result += text[pos++];
        continue;
      }
      const Conversion conversion = takeConversion(text, pos);
      if (conversion.letter == '%') {
        result += '%';
      } else if (conversion.letter == 0 || (next > 0 && next >= fields.size())) {
        result += conversion.text;
      } else {
        const std::string path = showsValueItself ? "" : fields[next]->getFieldName();
        result += writeField(path, conversion);
        ++next;
      }
    }
    return result;
  }

  std::string writeField(const std::string& path, const Conversion& conversion) {
    const json::Value node = find(path);
    std::string text = fill(convert(node, conversion), conversion);
    const Member* member = findMember(path);
    const bool isMeasured = path.empty() || isFloatingConversion(conversion.letter);
    const bool hasUnit = member != nullptr && !member->getUnit().empty();
    if (node.isNumber() && conversion.letter != 'c' && isMeasured && hasUnit) {
      text += " " + member->getUnit();
    }
    return text;
  }

  // Numbers with separators between them, filled up with zeros.
  std::string writeParts(const format::ArgumentExpression& function, std::string_view separators,
                         const std::vector<unsigned>& widths) {
    std::string text;
    const std::vector<std::string>& paths = function.getArguments();
    for (std::size_t i = 0; i < paths.size(); ++i) {
      if (i > 0) text += separators[i - 1];
      Conversion conversion;
      conversion.letter = 'd';
      conversion.isZeroFilled = true;
      conversion.width = widths[i];
      text += fill(convert(find(paths[i]), conversion), conversion);
    }
    return text;
  }

  bool holds(const format::Condition& condition) {
    // A number that was shown in another unit comes back with a rounding error.
    constexpr double kClose = 1e-6;
    const double difference = numberOf(condition.getFieldName()) - condition.getValue();
    const bool isEqual = std::abs(difference) < kClose;
    return isEqual == (condition.getOperator() == format::Condition::Operator::Equal);
  }

  // The number in a member, in the member's own unit; of an enumeration the one behind the name.
  double numberOf(const std::string& path) {
    const json::Value node = find(path);
    const Member* member = findMember(path);
    if (node.isString() && member != nullptr && member->getKind() == Member::Kind::Enum) {
      const EnumType* type = static_cast<const MemEnum*>(member)->resolveEnum(&_manager);
      if (type != nullptr && type->hasName(node.asString())) return type->getValue(node.asString());
    }
    const auto* number = dynamic_cast<const MemNumeric*>(member);
    if (number == nullptr) return node.asDouble();
    return number->getDisplayScaling().fromShown(node.asDouble());
  }

  // The node at a member path. An index into a text gives the code of that character, 0 behind its
  // end.
  json::Value find(const std::string& path) const {
    const std::size_t bracket = std::min(path.rfind('['), path.size());
    if (bracket < path.size() && path.back() == ']') {
      const json::Value& text = select(_value, path.substr(0, bracket));
      if (text.isString()) return codeAt(text.asString(), path.substr(bracket + 1));
    }
    return select(_value, path);
  }

  static json::Value codeAt(const std::string& text, const std::string& index) {
    const std::int32_t wanted = StringUtils::toInt32(index);
    std::size_t pos = 0;
    for (std::int32_t i = 0; pos < text.size(); ++i) {
      const char32_t code = base::takeUtf8(text, pos);
      if (i == wanted) return json::Value(static_cast<std::uint32_t>(code));
    }
    return json::Value(std::uint32_t{0});
  }

  const Member* findMember(const std::string& path) const {
    const Member* root = _type.getMember();
    return root == nullptr ? nullptr : root->findMemberAtPath(&_manager, path);
  }

  TypeManager& _manager;
  const VarType& _type;
  const json::Value& _value;
};

}  // namespace

std::string renderText(TypeManager& manager, const VarType& type, const Format& format,
                       const json::Value& value) {
  return FormatWriter(manager, type, value).write(format.getBody());
}

}  // namespace zavri::korvat::tool
