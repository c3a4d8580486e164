#include <charconv>
#include <cstdlib>
#include <cstring>

#include "korvat/base/JsonText.h"
#include "korvat/convert/ConversionPlan.h"
#include "korvat/convert/PlanStep.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"
#include "korvat/members/RawText.h"

// The half of a plan that reads raw bytes.
namespace zavri::korvat {

using base::Buffer;
using base::Endianess;

// --- Raw bytes to a document ---

// What a leaf needs beyond a few registers stands in functions that are not inlined: the common
// leaves would pay for it too.
class ConversionPlan::DocumentReader {
 public:
  DocumentReader(const ConversionPlan& plan, bool supportsInvalid)
      : _steps(plan._steps.data()), _supportsInvalid(supportsInvalid) {}

  // Reads what `step` describes into `target`. `base` is the start of the value or element.
  void read(const Step& step, const std::uint8_t* base, json::Value& target) const {
    const std::uint8_t* bytes = base + step.offset;
    switch (step.kind) {
      case Step::Kind::Object:
        return readObject(step, base, target);
      case Step::Kind::Array:
        return readArray(step, bytes, target);
      case Step::Kind::Integer:
        return readInteger(step, bytes, target);
      case Step::Kind::Decimal:
        return readDecimal(step, bytes, target);
      case Step::Kind::Scaled:
        return readScaled(step, bytes, target);
      case Step::Kind::Floating:
        return readFloating(step, bytes, target);
      case Step::Kind::Bits:
        return readUnscaledBits(step, *bytes, target);
      case Step::Kind::ScaledBits:
        return readScaledBits(step, *bytes, target);
      case Step::Kind::Enum:
        return readEnum(*step.names, *bytes, target);
      case Step::Kind::Text:
        return readCharacters(step, bytes, target);
    }
  }

 private:
  void readObject(const Step& step, const std::uint8_t* base, json::Value& target) const {
    target.switchType(json::JsonType::Object);
    target.reserve(step.count);
    const Step* const end = _steps + step.next;
    for (const Step* member = &step + 1; member != end; member = _steps + member->next) {
      read(*member, base, target.append(*member->name));
    }
  }

  void readArray(const Step& step, const std::uint8_t* bytes, json::Value& target) const {
    target.switchType(json::JsonType::Array);
    target.reserve(step.count);
    for (std::uint32_t i = 0; i < step.count; ++i, bytes += step.stride) {
      read((&step)[1], bytes, target[i]);
    }
  }

  void readInteger(const Step& step, const std::uint8_t* bytes, json::Value& target) const {
    const std::int64_t raw = step.load(bytes);
    if (isInvalid(step, raw)) return target.setValue("invalid");
    switch (step.byteCount) {
      case 1:
        return step.isSigned ? target.setValue(static_cast<std::int8_t>(raw))
                             : target.setValue(static_cast<std::uint8_t>(raw));
      case 2:
        return step.isSigned ? target.setValue(static_cast<std::int16_t>(raw))
                             : target.setValue(static_cast<std::uint16_t>(raw));
      default:
        return step.isSigned ? target.setValue(static_cast<std::int32_t>(raw))
                             : target.setValue(static_cast<std::uint32_t>(raw));
    }
  }

  // What MemScalar::toPhysical() gives: the product is a whole number that a double holds.
  void readDecimal(const Step& step, const std::uint8_t* bytes, json::Value& target) const {
    const std::int64_t raw = step.load(bytes);
    if (isInvalid(step, raw)) return target.setValue("invalid");
    target.setValue(static_cast<double>(step.toDecimal(raw)) / step.power());
  }

  [[gnu::noinline]] void readScaled(const Step& step, const std::uint8_t* bytes,
                                    json::Value& target) const {
    const std::int64_t raw = step.load(bytes);
    if (isInvalid(step, raw)) return target.setValue("invalid");
    target.setValue(step.as<MemScalar>().toPhysical(raw));
  }

  [[gnu::noinline]] static void readFloating(const Step& step, const std::uint8_t* bytes,
                                             json::Value& target) {
    const auto& member = step.as<MemFloat>();
    const double raw = readDouble(member.getNcType(), bytes, Endianess::Big);
    if (!member.isScalingIdentity()) return target.setValue(member.toPhysical(raw));
    if (!step.isSingle) return target.setValue(raw);
    target.setValue(static_cast<float>(raw));
  }

  [[gnu::noinline]] static void readScaledBits(const Step& step, std::uint8_t byte,
                                               json::Value& target) {
    target.setValue(step.as<MemBitfield>().toPhysical(readBits(byte, step.slot)));
  }

  [[gnu::noinline]] static void readEnum(const EnumTable& names, std::uint8_t byte,
                                         json::Value& target) {
    const std::string& name = names.nameOf(byte);
    target.setValue(name.empty() ? std::to_string(static_cast<std::int8_t>(byte)) : name);
  }

  [[gnu::noinline]] static void readCharacters(const Step& step, const std::uint8_t* bytes,
                                               json::Value& target) {
    target.setValue(readText(bytes, step.count, base::CharEncoding::Iso8859_1, Endianess::Big));
  }

  static void readUnscaledBits(const Step& step, std::uint8_t byte, json::Value& target) {
    const std::int16_t raw = readBits(byte, step.slot);
    if (step.slot.isSigned) return target.setValue(static_cast<std::int8_t>(raw));
    target.setValue(static_cast<std::uint8_t>(raw));
  }

  bool isInvalid(const Step& step, std::int64_t raw) const {
    return _supportsInvalid && step.as<MemScalar>().isInvalid(raw);
  }

  const Step* _steps;
  bool _supportsInvalid;
};

bool ConversionPlan::rawToJson(const Buffer& buffer, json::Value& value,
                               bool supportsInvalid) const {
  if (buffer.getSize() < _readSize) return false;
  DocumentReader(*this, supportsInvalid).read(_steps[0], buffer.getData(), value);
  return true;
}

// --- Raw bytes to text ---

class ConversionPlan::TextWriter {
 public:
  TextWriter(const ConversionPlan& plan, bool supportsInvalid, std::string& text)
      : _steps(plan._steps.data()),
        _keys(plan._keys.data()),
        _supportsInvalid(supportsInvalid),
        _text(text) {
    _text.clear();
  }

  void finish() {
    _text.append(_chunk, _at);
    _at = _chunk;
  }

  void write(const Step& step, const std::uint8_t* base) {
    const std::uint8_t* bytes = base + step.offset;
    switch (step.kind) {
      case Step::Kind::Object:
        return writeObject(step, base);
      case Step::Kind::Array:
        return writeArray(step, bytes);
      case Step::Kind::Integer: {
        const std::int64_t raw = step.load(bytes);
        return isInvalid(step, raw) ? append("\"invalid\"") : writeInteger(raw);
      }
      case Step::Kind::Decimal: {
        const std::int64_t raw = step.load(bytes);
        return isInvalid(step, raw) ? append("\"invalid\"") : writeDecimal(step, raw);
      }
      case Step::Kind::Scaled: {
        const std::int64_t raw = step.load(bytes);
        return isInvalid(step, raw) ? append("\"invalid\"")
                                    : writeFloating(step.as<MemScalar>().toPhysical(raw));
      }
      case Step::Kind::Floating:
        return writeFloat(step, bytes);
      case Step::Kind::Bits:
        return writeInteger(readBits(*bytes, step.slot));
      case Step::Kind::ScaledBits: {
        const auto& member = step.as<MemBitfield>();
        return writeFloating(member.toPhysical(readBits(*bytes, step.slot)));
      }
      case Step::Kind::Enum:
        return writeEnum(*step.names, *bytes);
      case Step::Kind::Text:
        return writeText(step, bytes);
    }
  }

 private:
  static constexpr std::size_t kChunkSize = 2048;
  static constexpr std::size_t kLongestNumber = 40;  // bytes; "-3.4028234663852886e+38" is shorter

  void writeObject(const Step& step, const std::uint8_t* base) {
    if (step.count == 0) return append("{}");
    const Step* const end = _steps + step.next;
    for (const Step* member = &step + 1; member != end; member = _steps + member->next) {
      appendPadded(_keys + member->keyStart, member->keySize);
      write(*member, base);
    }
    append('}');
  }

  void writeArray(const Step& step, const std::uint8_t* bytes) {
    char separator = '[';
    for (std::uint32_t i = 0; i < step.count; ++i, bytes += step.stride) {
      append(separator);
      write((&step)[1], bytes);
      separator = ',';
    }
    append(']');
  }

  void writeInteger(std::int64_t number) {
    makeRoom(kLongestNumber);
    _at = std::to_chars(_at, _at + kLongestNumber, number).ptr;
  }

  // The decimal that the double nearest to it would print as: with at most 15 digits, as here, no
  // two decimals have the same double.
  void writeDecimal(const Step& step, std::int64_t raw) {
    const std::int64_t number = step.toDecimal(raw);
    makeRoom(kLongestNumber);
    if (number < 0) *_at++ = '-';
    const auto size = static_cast<std::uint64_t>(std::abs(number));
    const auto power = kPowersOfTen[step.decimals];
    _at = std::to_chars(_at, _at + kLongestNumber, size / power).ptr;
    *_at++ = '.';
    std::uint64_t rest = size % power;
    if (rest == 0) {
      *_at++ = '0';
      return;
    }
    int digitCount = step.decimals;
    for (; rest % 10 == 0; rest /= 10) --digitCount;
    for (int i = digitCount - 1; i >= 0; --i, rest /= 10) {
      _at[i] = static_cast<char>('0' + rest % 10);
    }
    _at += digitCount;
  }

  void writeFloat(const Step& step, const std::uint8_t* bytes) {
    const auto& member = step.as<MemFloat>();
    const double raw = readDouble(member.getNcType(), bytes, Endianess::Big);
    if (!member.isScalingIdentity()) return writeFloating(member.toPhysical(raw));
    if (!step.isSingle) return writeFloating(raw);
    writeFloating(static_cast<float>(raw));
  }

  template <typename T>
  void writeFloating(T number) {
    std::string digits;
    json::appendJsonNumber(digits, number);
    append(digits);
  }

  void writeEnum(const EnumTable& names, std::uint8_t byte) {
    const std::string_view name = names.textOf(byte);
    if (!name.empty()) return appendPadded(name.data(), name.size());
    append('"');
    writeInteger(static_cast<std::int8_t>(byte));
    append('"');
  }

  void writeText(const Step& step, const std::uint8_t* bytes) {
    std::string quoted;
    json::appendJsonString(
        quoted, readText(bytes, step.count, base::CharEncoding::Iso8859_1, Endianess::Big));
    append(quoted);
  }

  bool isInvalid(const Step& step, std::int64_t raw) const {
    return _supportsInvalid && step.as<MemScalar>().isInvalid(raw);
  }

  void makeRoom(std::size_t byteCount) {
    if (static_cast<std::size_t>(_chunk + kChunkSize - _at) < byteCount) finish();
  }

  void append(char c) {
    makeRoom(1);
    *_at++ = c;
  }

  void append(std::string_view piece) {
    makeRoom(piece.size());
    if (piece.size() > kChunkSize) {
      _text += piece;
      return;
    }
    std::memcpy(_at, piece.data(), piece.size());
    _at += piece.size();
  }

  // Of a piece with kPadding bytes behind it.
  void appendPadded(const char* piece, std::size_t size) {
    if (size > kPadding) return append(std::string_view(piece, size));
    makeRoom(kPadding);
    std::memcpy(_at, piece, kPadding);
    _at += size;
  }

  const Step* _steps;
  const char* _keys;
  bool _supportsInvalid;
  std::string& _text;
  char _chunk[kChunkSize];
  char* _at = _chunk;
};

bool ConversionPlan::rawToJsonText(const Buffer& buffer, std::string& text,
                                   bool supportsInvalid) const {
  if (buffer.getSize() < _readSize) return false;
  TextWriter writer(*this, supportsInvalid, text);
  writer.write(_steps[0], buffer.getData());
  writer.finish();
  return true;
}

}  // namespace zavri::korvat
