#include "korvat/base/Value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <system_error>
#include <type_traits>
#include <utility>

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include "korvat/base/JsonText.h"
#include "korvat/base/StringUtils.h"

namespace zavri::json {

using util::StringUtils;

static_assert(std::is_nothrow_move_constructible_v<Value>, "arrays grow by moving");

namespace {

// Memory of the reader. Its own allocator hands a null pointer on, which the reader writes to.
class ThrowingAllocator {
 public:
  void* Malloc(std::size_t size) { return Realloc(nullptr, 0, size); }

  // Throws std::bad_alloc, and `block` stays as it was, when there is no memory.
  void* Realloc(void* block, std::size_t, std::size_t size) {
    if (size == 0) {
      std::free(block);
      return nullptr;
    }
    void* const moved = std::realloc(block, size);
    if (moved == nullptr) throw std::bad_alloc();
    return moved;
  }

  static void Free(void* block) { std::free(block); }
};

using Reader = rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, ThrowingAllocator>;

// Receives the reader's events and builds the tree. Each returns false to end the reading.
class TreeBuilder {
 public:
  // Why an event has ended the reading; null while none has.
  const char* getRefusal() const { return _refusal; }
  Value takeRoot() { return std::move(_root); }

  bool Null() {
    place().clear();
    return true;
  }

  bool Bool(bool value) {
    place().setBoolean(value);
    return true;
  }

  // Numbers come as text, so that one conversion serves all numbers of the library.
  bool RawNumber(const char* text, rapidjson::SizeType size, bool) {
    return readInteger<std::int64_t>(text, size) || readInteger<std::uint64_t>(text, size) ||
           readDouble(text, size);
  }

  bool String(const char* text, rapidjson::SizeType size, bool) {
    if (hasSurrogate({text, size})) return refuse(kSurrogate);

    place().setValue(std::string(text, size));
    return true;
  }

  bool Key(const char* text, rapidjson::SizeType size, bool) {
    if (hasSurrogate({text, size})) return refuse(kSurrogate);

    _key.assign(text, size);
    return true;
  }

  bool StartObject() { return open(JsonType::Object); }
  bool StartArray() { return open(JsonType::Array); }

  bool EndObject(rapidjson::SizeType) { return close(); }
  bool EndArray(rapidjson::SizeType) { return close(); }

  // Asked for by the reader's interface; with numbers as text they do not come.
  bool Int(int) { return false; }
  bool Uint(unsigned) { return false; }
  bool Int64(std::int64_t) { return false; }
  bool Uint64(std::uint64_t) { return false; }
  bool Double(double) { return false; }

 private:
  static constexpr const char* kSurrogate = "The surrogate pair in string is invalid.";

  bool refuse(const char* why) {
    _refusal = why;
    return false;
  }

  // The reader lets an escaped low surrogate pass that stands alone. Nothing else broken gets
  // here, so that two bytes give it away.
  static bool hasSurrogate(std::string_view text) {
    for (std::size_t i = text.find('\xED'); i != text.npos; i = text.find('\xED', i + 1)) {
      if (static_cast<unsigned char>(text[i + 1]) >= 0xA0) return true;
    }
    return false;
  }

  // The node that the next value goes to. Those on the way to it stay where they are, since only
  // the innermost container grows.
  Value& place() {
    if (_open.empty()) return _root;

    Value& container = *_open.back();
    return container.isArray() ? container[container.getSize()] : container[_key];
  }

  bool open(JsonType type) {
    if (_open.size() == Value::kMaxDepth) return refuse("Nested too deeply.");

    Value& container = place();
    container.switchType(type);
    _open.push_back(&container);
    return true;
  }

  bool close() {
    _open.pop_back();
    return true;
  }

  template <typename T>
  bool readInteger(const char* text, std::size_t size) {
    T number = 0;
    const auto [rest, error] = std::from_chars(text, text + size, number);
    if (error != std::errc() || rest != text + size) return false;

    place().setValue(number);
    return true;
  }

  bool readDouble(const char* text, std::size_t size) {
    bool isInRange = false;
    const double number = StringUtils::toDouble(std::string(text, size), isInRange);
    if (!isInRange) return refuse("Number too big to be stored in double.");

    place().setValue(number);
    return true;
  }

  Value _root;
  std::vector<Value*> _open;  // containers that have not ended, innermost last
  std::string _key;           // of the member to come
  const char* _refusal = nullptr;
};

// The double's whole part, kept within T.
template <typename T>
T saturate(double number) {
  if (std::isnan(number)) return 0;
  // The limits as doubles: the lowest is exact, one past the highest is too.
  constexpr double kLowest = static_cast<double>(std::numeric_limits<T>::min());
  if (number <= kLowest) return std::numeric_limits<T>::min();
  if (number >= -kLowest) return std::numeric_limits<T>::max();
  return static_cast<T>(number);
}

// Starts a new line at `level`, unless the text is compact.
void breakLine(std::string& text, unsigned indent, unsigned level) {
  if (indent == 0) return;

  text += '\n';
  text.append(static_cast<std::size_t>(indent) * level, ' ');
}

bool areMembersEqual(const Value::PropertyMap& a, const Value::PropertyMap& b) {
  if (a.size() != b.size()) return false;

  return std::all_of(a.begin(), a.end(), [&b](const Value::PropertyMap::Entry& member) {
    const Value* const counterpart = b.find(member.first);
    return counterpart != nullptr && *counterpart == member.second;
  });
}

const Value& getNullValue() {
  static const Value kNull;
  return kNull;
}

}  // namespace

Value::Value(std::string text) {
  setValue(std::move(text));
}
Value::Value(const char* text) {
  setValue(text);
}
Value::Value(std::int32_t number) {
  setValue(number);
}
Value::Value(std::uint32_t number) {
  setValue(number);
}

Value& Value::operator=(const Value& other) {
  return *this = Value(other);
}

Value& Value::operator=(Value&& other) noexcept {
  // The old content, which `other` may be part of, must outlive the move.
  Value moved(std::move(other));
  std::swap(_data, moved._data);
  _numberType = moved._numberType;
  return *this;
}

bool Value::parse(std::string_view text, Value& value, std::string& error) {
  constexpr unsigned kFlags = rapidjson::kParseIterativeFlag |
                              rapidjson::kParseValidateEncodingFlag |
                              rapidjson::kParseNumbersAsStringsFlag;
  rapidjson::MemoryStream stream(text.data(), text.size());
  Reader reader;
  TreeBuilder builder;
  const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, builder);
  if (result.IsError()) {
    const char* const reason = builder.getRefusal() != nullptr
                                   ? builder.getRefusal()
                                   : rapidjson::GetParseError_En(result.Code());
    error = std::string(reason) + " (byte " + std::to_string(result.Offset()) + ")";
    return false;
  }
  // The reader takes a zero byte for the end of the text.
  if (stream.Tell() != text.size()) {
    error =
        std::string(rapidjson::GetParseError_En(rapidjson::kParseErrorDocumentRootNotSingular)) +
        " (byte " + std::to_string(stream.Tell()) + ")";
    return false;
  }
  value = builder.takeRoot();
  return true;
}

Value& Value::operator[](const std::string& key) {
  if (!isObject()) switchType(JsonType::Object);
  return std::get<PropertyMap>(_data)[key];
}

Value& Value::operator[](const char* key) {
  if (!isObject()) switchType(JsonType::Object);
  return std::get<PropertyMap>(_data)[key];
}

const Value& Value::operator[](const std::string& key) const {
  const Value* const member = getPropertyMap().find(key);
  return member != nullptr ? *member : getNullValue();
}

Value& Value::operator[](unsigned index) {
  if (!isArray()) switchType(JsonType::Array);

  Array& elements = std::get<Array>(_data);
  if (index >= elements.size()) elements.resize(static_cast<std::size_t>(index) + 1);
  return elements[index];
}

const Value& Value::operator[](unsigned index) const {
  const Array* const elements = std::get_if<Array>(&_data);
  return elements != nullptr && index < elements->size() ? (*elements)[index] : getNullValue();
}

JsonType Value::getType() const {
  // In the order of the variant's alternatives.
  constexpr JsonType kTypes[] = {
      JsonType::Null,   JsonType::Boolean, JsonType::Number, JsonType::Number, JsonType::Number,
      JsonType::Number, JsonType::String,  JsonType::Array,  JsonType::Object,
  };
  static_assert(std::size(kTypes) == std::variant_size_v<decltype(_data)>);
  return kTypes[_data.index()];
}

unsigned Value::getSize() const {
  if (const Array* const elements = std::get_if<Array>(&_data)) {
    return static_cast<unsigned>(elements->size());
  }
  return static_cast<unsigned>(getPropertyMap().size());
}

void Value::reserve(unsigned count) {
  if (Array* const elements = std::get_if<Array>(&_data)) elements->reserve(count);
  if (PropertyMap* const members = std::get_if<PropertyMap>(&_data)) members->reserve(count);
}

Value& Value::append(std::string_view key) {
  if (!isObject()) switchType(JsonType::Object);
  return std::get<PropertyMap>(_data).append(key);
}

const Value::PropertyMap& Value::getPropertyMap() const {
  static const PropertyMap kNone;
  const PropertyMap* const members = std::get_if<PropertyMap>(&_data);
  return members != nullptr ? *members : kNone;
}

double Value::asDouble() const {
  return std::visit(
      [](const auto& content) -> double {
        using Content = std::decay_t<decltype(content)>;
        if constexpr (std::is_arithmetic_v<Content>) return static_cast<double>(content);
        if constexpr (std::is_same_v<Content, std::string>) return StringUtils::toDouble(content);
        return 0.0;
      },
      _data);
}

std::int32_t Value::asInt32() const {
  constexpr std::int64_t kLowest = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t kHighest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(asInt64(), kLowest, kHighest));
}

std::int64_t Value::asInt64() const {
  return std::visit(
      [](const auto& content) -> std::int64_t {
        using Content = std::decay_t<decltype(content)>;
        if constexpr (std::is_floating_point_v<Content>) return saturate<std::int64_t>(content);
        if constexpr (std::is_same_v<Content, bool>) return content ? 1 : 0;
        if constexpr (std::is_same_v<Content, std::int64_t>) return content;
        // Only what is above the signed range is stored unsigned.
        if constexpr (std::is_same_v<Content, std::uint64_t>) {
          return std::numeric_limits<std::int64_t>::max();
        }
        if constexpr (std::is_same_v<Content, std::string>) return StringUtils::toInt64(content);
        return 0;
      },
      _data);
}

std::string Value::asString() const {
  const std::string* const text = std::get_if<std::string>(&_data);
  return text != nullptr ? *text : stringify();
}

std::string_view Value::getText() const {
  const std::string* const text = std::get_if<std::string>(&_data);
  return text != nullptr ? std::string_view(*text) : std::string_view();
}

void Value::setValue(std::string text) {
  _data = std::move(text);
  _numberType = NumberType::None;
}

void Value::setValue(std::int8_t number) {
  setNumber(std::int64_t{number}, NumberType::Int8);
}
void Value::setValue(std::uint8_t number) {
  setNumber(std::int64_t{number}, NumberType::UInt8);
}
void Value::setValue(std::int16_t number) {
  setNumber(std::int64_t{number}, NumberType::Int16);
}
void Value::setValue(std::uint16_t number) {
  setNumber(std::int64_t{number}, NumberType::UInt16);
}
void Value::setValue(std::int32_t number) {
  setNumber(std::int64_t{number}, NumberType::Int32);
}
void Value::setValue(std::uint32_t number) {
  setNumber(std::int64_t{number}, NumberType::UInt32);
}
void Value::setValue(std::int64_t number) {
  setNumber(number, NumberType::Int64);
}
void Value::setValue(float number) {
  setNumber(number, NumberType::Single);
}
void Value::setValue(double number) {
  setNumber(number, NumberType::Double);
}

void Value::setValue(std::uint64_t number) {
  if (number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
    setNumber(static_cast<std::int64_t>(number), NumberType::UInt64);
  } else {
    setNumber(number, NumberType::UInt64);
  }
}

void Value::setBoolean(bool value) {
  _data = value;
  _numberType = NumberType::None;
}

void Value::switchType(JsonType type) {
  clear();
  switch (type) {
    case JsonType::Null:
      return;
    case JsonType::Boolean:
      return setBoolean(false);
    case JsonType::Number:
      return setValue(std::int32_t{0});
    case JsonType::String:
      return setValue(std::string());
    case JsonType::Array:
      _data.emplace<Array>();
      return;
    case JsonType::Object:
      _data.emplace<PropertyMap>();
      return;
  }
}

void Value::clear() {
  _data = std::monostate();
  _numberType = NumberType::None;
}

std::string Value::stringify(unsigned short indent) const {
  std::string text;
  write(text, indent, 0);
  return text;
}

bool Value::operator==(const Value& other) const {
  if (_data.index() != other._data.index()) return false;

  return std::visit(
      [&other](const auto& content) {
        using Content = std::decay_t<decltype(content)>;
        const Content& counterpart = std::get<Content>(other._data);
        if constexpr (std::is_same_v<Content, PropertyMap>) {
          return areMembersEqual(content, counterpart);
        } else {
          return content == counterpart;
        }
      },
      _data);
}

template <typename T>
void Value::setNumber(T number, NumberType type) {
  _data = number;
  _numberType = type;
}

void Value::write(std::string& text, unsigned indent, unsigned level) const {
  std::visit(
      [&](const auto& content) {
        using Content = std::decay_t<decltype(content)>;
        if constexpr (std::is_same_v<Content, std::monostate>) {
          text += "null";
        } else if constexpr (std::is_same_v<Content, bool>) {
          text += content ? "true" : "false";
        } else if constexpr (std::is_arithmetic_v<Content>) {
          appendJsonNumber(text, content);
        } else if constexpr (std::is_same_v<Content, std::string>) {
          appendJsonString(text, content);
        } else if constexpr (std::is_same_v<Content, Array>) {
          writeArray(text, indent, level);
        } else {
          writeObject(text, indent, level);
        }
      },
      _data);
}

void Value::writeArray(std::string& text, unsigned indent, unsigned level) const {
  const Array& elements = std::get<Array>(_data);
  text += '[';
  for (std::size_t i = 0; i < elements.size(); ++i) {
    if (i > 0) text += ',';
    breakLine(text, indent, level + 1);
    elements[i].write(text, indent, level + 1);
  }
  if (!elements.empty()) breakLine(text, indent, level);
  text += ']';
}

void Value::writeObject(std::string& text, unsigned indent, unsigned level) const {
  const PropertyMap& members = std::get<PropertyMap>(_data);
  bool isFirst = true;
  text += '{';
  for (const auto& [name, member] : members) {
    if (!isFirst) text += ',';
    isFirst = false;
    breakLine(text, indent, level + 1);
    appendJsonString(text, name);
    text += indent == 0 ? ":" : ": ";
    member.write(text, indent, level + 1);
  }
  if (!members.empty()) breakLine(text, indent, level);
  text += '}';
}

}  // namespace zavri::json
