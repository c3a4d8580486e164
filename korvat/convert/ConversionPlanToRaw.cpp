#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "korvat/base/ShortText.h"
#include "korvat/convert/ConversionPlan.h"
#include "korvat/convert/NumberFit.h"
#include "korvat/convert/PlanStep.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"
#include "korvat/members/RawText.h"

// The half of a plan that writes raw bytes.
namespace zavri::korvat {

using base::Buffer;
using base::Endianess;

// --- Raw bytes from a document and from text ---

namespace {

// The bytes being written: those of the buffer, which is changed only when all went well.
class Scratch {
 public:
  // With `isFilled` unset, for who writes all of them, they begin as anything.
  Scratch(Buffer& buffer, std::uint32_t byteCount, bool isFilled)
      : _buffer(buffer), _byteCount(byteCount) {
    if (byteCount > _few.size()) _many.resize(byteCount);
    _bytes = byteCount > _few.size() ? _many.data() : _few.data();
    if (!isFilled) return;
    const std::uint32_t known = std::min<std::uint32_t>(byteCount, buffer.getSize());
    std::copy_n(buffer.getData(), known, _bytes);
    std::memset(_bytes + known, 0, byteCount - known);
  }

  std::uint8_t* getBytes() { return _bytes; }

  void commit() {
    _buffer.growTo(_byteCount);
    std::copy_n(_bytes, _byteCount, _buffer.getData());
  }

 private:
  Buffer& _buffer;
  std::uint32_t _byteCount;
  std::array<std::uint8_t, 256> _few;
  std::vector<std::uint8_t> _many;
  std::uint8_t* _bytes;
};

// A number of JSON.
struct Number {
  double value = 0;
  std::int64_t whole = 0;  // of an integer that has such a one; else isFloating or isHuge is set
  bool isFloating = false;
  bool isHuge = false;

  static Number of(std::int64_t whole) { return {static_cast<double>(whole), whole, false, false}; }
  static Number of(double value) { return {value, 0, true, false}; }
};

template <typename Target, typename M>
void storeNumber(const M& member, const Number& number, std::uint8_t* bytes) {
  const Target target = fitNumber<Target>(member, number.value, number.isFloating);
  if constexpr (std::is_same_v<Target, float>) {
    storeBits(std::bit_cast<std::uint32_t>(target), sizeof target, Endianess::Big, bytes);
  } else if constexpr (std::is_same_v<Target, double>) {
    storeBits(std::bit_cast<std::uint64_t>(target), sizeof target, Endianess::Big, bytes);
  } else {
    storeBits(static_cast<std::uint64_t>(target), sizeof target, Endianess::Big, bytes);
  }
}

[[gnu::noinline]] void storeScalar(const MemScalar& member, const Number& number,
                                   std::uint8_t* bytes) {
  switch (member.getNcType()) {
    case NcType::UnsignedChar:
    case NcType::UnsignedShort:
      return storeNumber<std::uint8_t>(member, number, bytes);
    case NcType::SignedChar:
    case NcType::SignedShort:
      return storeNumber<std::int8_t>(member, number, bytes);
    case NcType::UnsignedLong:
      return storeNumber<std::uint16_t>(member, number, bytes);
    case NcType::SignedLong:
      return storeNumber<std::int16_t>(member, number, bytes);
    case NcType::UnsignedQuad:
      return storeNumber<std::uint32_t>(member, number, bytes);
    default:  // a signed quad: a plan takes no others for integers
      return storeNumber<std::int32_t>(member, number, bytes);
  }
}

[[gnu::noinline]] void storeFloat(const MemFloat& member, const Number& number,
                                  std::uint8_t* bytes) {
  if (member.getNcType() == NcType::Float) return storeNumber<float>(member, number, bytes);
  storeNumber<double>(member, number, bytes);
}

[[gnu::noinline]] bool storeBitfield(const MemBitfield& member, const Number& number,
                                     std::uint8_t* bytes) {
  const int raw = member.getSlot().isSigned
                      ? int{fitNumber<std::int8_t>(member, number.value, number.isFloating)}
                      : int{fitNumber<std::uint8_t>(member, number.value, number.isFloating)};
  return insertBits(raw, member.getSlot(), *bytes) == AccessStatus::Exact;
}

[[gnu::noinline]] bool storeText(std::string_view text, std::uint32_t byteCount,
                                 std::uint8_t* bytes) {
  const bool isAscii = std::all_of(text.begin(), text.end(),
                                   [](char c) { return static_cast<signed char>(c) >= 0; });
  if (isAscii && text.size() <= byteCount) {
    std::memcpy(bytes, text.data(), text.size());
    std::memset(bytes + text.size(), 0, byteCount - text.size());
    return true;
  }
  bool isCut = false;
  const Buffer stored =
      writeText(std::string(text), byteCount, base::CharEncoding::Iso8859_1, Endianess::Big, isCut);
  if (isCut) return false;
  std::memcpy(bytes, stored.getData(), byteCount);
  return true;
}

}  // namespace

// Each returns false for what only the walk can answer.
class ConversionPlan::DocumentWriter {
 public:
  explicit DocumentWriter(const ConversionPlan& plan) : _steps(plan._steps.data()) {}

  bool write(const Step& step, const json::Value& node, std::uint8_t* base) const {
    std::uint8_t* bytes = base + step.offset;
    switch (step.kind) {
      case Step::Kind::Object:
        return writeObject(step, node, base);
      case Step::Kind::Array:
        return writeArray(step, node, bytes);
      case Step::Kind::Enum:
        return node.isString() && writeName(step, node.getText(), bytes);
      case Step::Kind::Text:
        return node.isString() && storeText(node.getText(), step.count, bytes);
      default:
        return node.isNumber() && writeNumber(step, numberOf(node), bytes);
    }
  }

  // Of a step for a number, whichever.
  [[gnu::always_inline]] static bool writeNumber(const Step& step, const Number& number,
                                                 std::uint8_t* bytes) {
    switch (step.kind) {
      case Step::Kind::Integer:
        if (number.isFloating || number.isHuge || !isTaken(step, number.whole)) {
          storeScalar(step.as<MemScalar>(), number, bytes);
        } else {
          storeNetworkInteger(number.whole, step.byteCount, bytes);
        }
        return true;
      case Step::Kind::Decimal:
        writeDecimal(step, number, bytes);
        return true;
      case Step::Kind::Scaled:
        storeScalar(step.as<MemScalar>(), number, bytes);
        return true;
      case Step::Kind::Floating:
        storeFloat(step.as<MemFloat>(), number, bytes);
        return true;
      default:  // bits, scaled or not
        return storeBitfield(step.as<MemBitfield>(), number, bytes);
    }
  }

  static bool writeName(const Step& step, std::string_view name, std::uint8_t* bytes) {
    const std::int8_t* value = step.names->find(name);
    if (value == nullptr) return false;
    *bytes = static_cast<std::uint8_t>(*value);
    return true;
  }

 private:
  static Number numberOf(const json::Value& node) {
    if (node.isFloating()) return Number::of(node.asDouble());
    Number number = Number::of(node.asInt64());
    number.isHuge = number.whole == std::numeric_limits<std::int64_t>::max();
    if (number.isHuge) number.value = node.asDouble();
    return number;
  }

  static bool isTaken(const Step& step, std::int64_t raw) {
    return step.lowest <= raw && raw <= step.highest;
  }

  // What MemScalar::fromPhysical() gives, with less arithmetic: it snaps a floating number to a
  // whole count of steps and then divides these steps out again, which for counts that a double
  // holds with bits to spare gives back the count.
  static void writeDecimal(const Step& step, const Number& number, std::uint8_t* bytes) {
    constexpr double kExactSteps = 35184372088832.0;  // 2^45
    const double factor = step.factor == 0 ? 1 : step.factor;
    const double steps = number.value * step.power() / factor + 0.5;
    if (number.isFloating && std::abs(steps) < kExactSteps) {
      auto count = static_cast<std::int64_t>(steps);
      if (static_cast<double>(count) > steps) --count;  // the floor
      const std::int64_t raw = count - step.added;
      if (isTaken(step, raw)) return storeNetworkInteger(raw, step.byteCount, bytes);
    }
    storeScalar(step.as<MemScalar>(), number, bytes);
  }

  // All members, and no others: names are unique on both sides.
  bool writeObject(const Step& step, const json::Value& node, std::uint8_t* base) const {
    const json::Value::PropertyMap& properties = node.getPropertyMap();
    if (!node.isObject() || properties.size() != step.count) return false;
    auto property = properties.begin();
    const Step* const end = _steps + step.next;
    for (const Step* member = &step + 1; member != end; member = _steps + member->next) {
      // Mostly they come in the order of the layout.
      const bool isInOrder = base::isSameName(property->first, *member->name);
      const json::Value* value = isInOrder ? &property->second : properties.find(*member->name);
      if (value == nullptr || !write(*member, *value, base)) return false;
      ++property;
    }
    return true;
  }

  bool writeArray(const Step& step, const json::Value& node, std::uint8_t* bytes) const {
    if (!node.isArray() || node.getSize() != step.count) return false;
    for (std::uint32_t i = 0; i < step.count; ++i, bytes += step.stride) {
      if (!write((&step)[1], node[i], bytes)) return false;
    }
    return true;
  }

  const Step* _steps;
};

bool ConversionPlan::jsonToRaw(const json::Value& value, Buffer& buffer) const {
  if (_hasUnions) return false;
  Scratch scratch(buffer, _writeSize, !_isSolid);
  if (!DocumentWriter(*this).write(_steps[0], value, scratch.getBytes())) return false;
  scratch.commit();
  return true;
}

// Follows a text that holds what the steps expect, in the order of the layout, and writes each
// value into its field. Knows just enough of JSON to recognise such a text; false for any other,
// which may be JSON all the same.
class ConversionPlan::TextReader {
 public:
  TextReader(const ConversionPlan& plan, std::string_view text)
      : _steps(plan._steps.data()),
        _keys(plan._keys.data()),
        _at(text.data()),
        _end(text.data() + text.size()) {}

  bool readAll(std::uint8_t* base) {
    if (!read(_steps[0], base)) return false;
    skipBlanks();
    return _at == _end;
  }

 private:
  bool read(const Step& step, std::uint8_t* base) {
    std::uint8_t* bytes = base + step.offset;
    switch (step.kind) {
      case Step::Kind::Object:
        return readObject(step, base);
      case Step::Kind::Array:
        return readArray(step, bytes);
      case Step::Kind::Enum: {
        std::string_view name;
        return readString(name) && DocumentWriter::writeName(step, name, bytes);
      }
      case Step::Kind::Text: {
        std::string_view content;
        return readString(content) && storeText(content, step.count, bytes);
      }
      default: {
        Number number;
        return readNumber(number) && DocumentWriter::writeNumber(step, number, bytes);
      }
    }
  }

  bool readObject(const Step& step, std::uint8_t* base) {
    if (step.count == 0 && !take('{')) return false;
    const Step* const end = _steps + step.next;
    for (const Step* member = &step + 1; member != end; member = _steps + member->next) {
      if (!takeKey(*member) || !read(*member, base)) return false;
    }
    return take('}');
  }

  bool readArray(const Step& step, std::uint8_t* bytes) {
    char separator = '[';
    for (std::uint32_t i = 0; i < step.count; ++i, bytes += step.stride) {
      if (!take(separator) || !read((&step)[1], bytes)) return false;
      separator = ',';
    }
    return take(']');
  }

  void skipBlanks() {
    while (_at != _end && (*_at == ' ' || *_at == '\n' || *_at == '\r' || *_at == '\t')) ++_at;
  }

  bool take(char c) {
    if (_at == _end || *_at != c) skipBlanks();
    if (_at == _end || *_at != c) return false;
    ++_at;
    return true;
  }

  bool take(std::string_view piece) {
    if (static_cast<std::size_t>(_end - _at) < piece.size() ||
        std::memcmp(_at, piece.data(), piece.size()) != 0) {
      return false;
    }
    _at += piece.size();
    return true;
  }

  // The brace or comma, the name and the colon, mostly without blanks in between.
  bool takeKey(const Step& member) {
    const std::string_view key(_keys + member.keyStart, member.keySize);
    if (take(key)) return true;
    if (!take(key.front())) return false;
    skipBlanks();
    return take(key.substr(1, key.size() - 2)) && take(':');
  }

  // Of plain characters: no escapes, nothing beyond ASCII.
  bool readString(std::string_view& content) {
    if (!take('"')) return false;
    const char* const start = _at;
    while (_at != _end && isPlain(*_at)) ++_at;
    content = {start, static_cast<std::size_t>(_at - start)};
    if (_at == _end || *_at != '"') return false;  // no blanks here: they would be in the string
    ++_at;
    return true;
  }

  static bool isPlain(char c) {
    return static_cast<signed char>(c) >= ' ' && c != '"' && c != '\\';
  }

  // The number that json::Value::parse() would make of the text.
  bool readNumber(Number& number) {
    skipBlanks();
    const char* const start = _at;
    const bool isNegative = _at != _end && *_at == '-';
    if (isNegative) ++_at;
    std::int64_t digits = 0;
    const char* const whole = _at;
    if (!readDigits(digits) || (*whole == '0' && _at - whole > 1)) return false;
    const char* const point = _at;
    if (_at != _end && *_at == '.') {
      ++_at;
      if (!readDigits(digits)) return false;
    }
    const bool hasExponent = _at != _end && (*_at == 'e' || *_at == 'E');
    // With so few digits their number and the power of ten are doubles, and the quotient is the
    // double nearest to the decimal.
    if (!hasExponent && _at - whole <= 15) {
      if (point == _at) {
        number = Number::of(isNegative ? -digits : digits);
        return true;
      }
      const auto power = kPowersOfTen[static_cast<std::size_t>(_at - point - 1)];
      const double size = static_cast<double>(digits) / static_cast<double>(power);
      number = Number::of(isNegative ? -size : size);
      return true;
    }
    // How large the exponent of a zero may be is up to the parser.
    if (hasExponent && (digits == 0 || !skipExponent())) return false;
    const bool isWhole = !hasExponent && point == _at;
    return isWhole ? readAs<std::int64_t>(start, number) : readAs<double>(start, number);
  }

  // Appends digits to those of `number`, of which only the first 18 count: who has more, asks for
  // the text. False when there are none.
  bool readDigits(std::int64_t& number) {
    constexpr std::int64_t kFull = 100'000'000'000'000'000;
    const char* const start = _at;
    for (; _at != _end && *_at >= '0' && *_at <= '9'; ++_at) {
      if (number < kFull) number = 10 * number + (*_at - '0');
    }
    return _at != start;
  }

  bool skipExponent() {
    ++_at;
    if (_at != _end && (*_at == '+' || *_at == '-')) ++_at;
    std::int64_t ignored = 0;
    return readDigits(ignored);
  }

  template <typename T>
  bool readAs(const char* start, Number& number) const {
    T value{};
    if (std::from_chars(start, _at, value).ec != std::errc()) return false;
    number = Number::of(value);
    return true;
  }

  const Step* _steps;
  const char* _keys;
  const char* _at;
  const char* _end;
};

bool ConversionPlan::jsonTextToRaw(std::string_view text, Buffer& buffer) const {
  if (_hasUnions) return false;
  Scratch scratch(buffer, _writeSize, !_isSolid);
  if (!TextReader(*this, text).readAll(scratch.getBytes())) return false;
  scratch.commit();
  return true;
}

}  // namespace zavri::korvat
