#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "korvat/base/Export.h"
#include "korvat/base/OrderMap.h"

namespace zavri::json {

// Kind of a JSON node.
enum class JsonType : std::int32_t {
  Null = 0,
  Boolean = 1,
  Number = 2,
  String = 3,
  Array = 4,
  Object = 5,
};

// What a number node holds. The two floating kinds print and compare apart from the integers.
enum class NumberType : std::uint8_t {
  None,  // no number
  Int8,
  UInt8,
  Int16,
  UInt16,
  Int32,
  UInt32,
  Int64,
  UInt64,
  Single,  // IEEE 754, 32 bits
  Double,  // IEEE 754, 64 bits
};

// A node of a JSON document. Owns its children; copies are deep. Objects keep the order of their
// members, numbers their width, sign and precision.
class KORVAT_API Value {
 public:
  using PropertyMap = base::TOrderMap<Value>;

  // Deepest nesting of arrays and objects that parse() accepts.
  static constexpr std::size_t kMaxDepth = 200;

  Value() = default;  // null
  Value(const Value& other) = default;
  Value(Value&& other) noexcept = default;
  ~Value() = default;
  // What is assigned may be part of this very node: value = value["child"].
  Value& operator=(const Value& other);
  Value& operator=(Value&& other) noexcept;

  Value(std::string text);
  Value(const char* text);
  Value(std::int32_t number);
  Value(std::uint32_t number);

  // Reads a JSON text (RFC 8259, UTF-8) into `value`. Integers become Int64, or UInt64 above its
  // range; all other numbers Double. Of two members with one name the later wins. False for any
  // other text and beyond kMaxDepth; then `value` is left alone and `error` says what and at which
  // byte.
  [[nodiscard]] static bool parse(std::string_view text, Value& value, std::string& error);

  // Member `key`. The mutable form makes the node an object first (dropping what it was) and the
  // member null when missing; the const form gives a null node, valid for ever, when there is none.
  Value& operator[](const std::string& key);
  const Value& operator[](const std::string& key) const;
  Value& operator[](const char* key);
  const Value& operator[](const char* key) const { return (*this)[std::string(key)]; }

  // Element `index`. The mutable form makes the node an array first and fills it with null up to
  // the index; the const form gives a null node, valid for ever, past the end. A negative index
  // is past the end, and counts as 0 in the mutable form.
  Value& operator[](unsigned index);
  const Value& operator[](unsigned index) const;
  Value& operator[](int index) { return (*this)[static_cast<unsigned>(index < 0 ? 0 : index)]; }
  const Value& operator[](int index) const { return (*this)[static_cast<unsigned>(index)]; }

  JsonType getType() const;
  NumberType getNumberType() const { return _numberType; }
  bool isNull() const { return getType() == JsonType::Null; }
  bool isString() const { return getType() == JsonType::String; }
  bool isArray() const { return getType() == JsonType::Array; }
  bool isObject() const { return getType() == JsonType::Object; }
  bool isNumber() const { return _numberType != NumberType::None; }
  bool isInteger() const { return isNumber() && !isFloating(); }
  bool isFloating() const {
    return _numberType == NumberType::Single || _numberType == NumberType::Double;
  }

  // Count of elements or members; 0 for all other nodes.
  unsigned getSize() const;

  // Makes room for that many elements or members, for a caller who knows how many are to come. Does
  // nothing to a node that is no array or object.
  void reserve(unsigned count);
  // Adds member `key`, null, to an object that has no such member yet: the caller knows. Anything
  // else is made an object first.
  Value& append(std::string_view key);

  // Members in their order; an empty map, valid for ever, when the node is no object.
  const PropertyMap& getPropertyMap() const;

  // The node converted: numbers by truncation toward zero and saturation (NaN is 0), text by
  // reading the number at its start, booleans as 0 and 1, anything else 0.
  double asDouble() const;
  std::int32_t asInt32() const;
  std::int64_t asInt64() const;
  // Text as it is, any other node as its JSON text.
  std::string asString() const;
  // The text of a string node, valid until the node changes; empty for any other node.
  std::string_view getText() const;

  // Each replaces the node by that scalar.
  void setValue(std::string text);
  void setValue(const char* text) { setValue(std::string(text)); }
  void setValue(std::int8_t number);
  void setValue(std::uint8_t number);
  void setValue(std::int16_t number);
  void setValue(std::uint16_t number);
  void setValue(std::int32_t number);
  void setValue(std::uint32_t number);
  void setValue(std::int64_t number);
  void setValue(std::uint64_t number);
  void setValue(float number);
  void setValue(double number);
  void setBoolean(bool value);

  // Makes the node an empty container of that kind, or null, false, 0 or the empty text.
  void switchType(JsonType type);
  // Makes the node null.
  void clear();

  // JSON text: compact for indent 0, else one member or element a line and `indent` blanks a
  // level. Numbers are the shortest text that reads back the same at their precision; floating
  // ones always show a point or an exponent. NaN and the infinities print as null. The text is
  // valid UTF-8 whatever the strings hold: broken sequences print as U+FFFD.
  std::string stringify(unsigned short indent = 0) const;

  // Same kind, same content. NaN is never equal, -0.0 equals 0.0. Integers are equal by value
  // whatever their width; singles, doubles and integers differ from each other. The order of
  // members does not count.
  bool operator==(const Value& other) const;
  bool operator!=(const Value& other) const { return !(*this == other); }

 private:
  using Array = std::vector<Value>;

  template <typename T>
  void setNumber(T number, NumberType type);
  void write(std::string& text, unsigned indent, unsigned level) const;
  void writeArray(std::string& text, unsigned indent, unsigned level) const;
  void writeObject(std::string& text, unsigned indent, unsigned level) const;

  // Unsigned numbers lie here as signed ones as far as these reach, so that equal integers are
  // stored alike.
  std::variant<std::monostate, bool, std::int64_t, std::uint64_t, float, double, std::string, Array,
               PropertyMap>
      _data;
  NumberType _numberType = NumberType::None;
};

}  // namespace zavri::json
