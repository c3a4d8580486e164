#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "korvat/base/Buffer.h"
#include "korvat/base/OrderMap.h"
#include "korvat/base/Value.h"

namespace zavri::korvat {

class BaseType;
class EnumType;
class TypeId;
class VarType;

// The names of one enumeration, both ways, ready to be written. Not changed once it is made.
class EnumTable {
 public:
  explicit EnumTable(const EnumType& type);

  // The name of a raw byte; empty when it has none.
  const std::string& nameOf(std::uint8_t byte) const { return _names[_index[byte]].plain; }
  // The same as JSON text, with kPadding bytes behind it that may be read.
  std::string_view textOf(std::uint8_t byte) const {
    const Name& name = _names[_index[byte]];
    return {name.json.data(), name.jsonSize};
  }
  // The raw number of a name, or null.
  const std::int8_t* find(std::string_view name) const { return _values.find(name); }

 private:
  struct Name {
    std::string plain;
    std::string json;
    std::size_t jsonSize = 0;  // bytes, without the padding
  };

  std::array<std::uint16_t, 256> _index{};  // of a raw byte's name; 0 is the empty one
  std::vector<Name> _names;
  base::TOrderMap<std::int8_t> _values;
};

// The tables of the enumerations that the plans of one manager use.
class EnumTables {
 public:
  const EnumTable& get(const EnumType& type);

 private:
  std::map<const EnumType*, EnumTable> _tables;
};

// The layout of one type with all that a walk of its members would work out again for each value:
// references and enumerations resolved, places, names and scalings side by side in one list of
// steps. The walk of JsonConverter stays the definition: a plan converts what comes without a
// message, in network byte order, with cutting to the limits and without dynamic arrays, and then
// gives the same; whatever else there is it leaves to the walk, with nothing changed.
//
// Refers to the type and the types that it refers to, which must outlive it. Not changed once it is
// made: any number of threads may use it.
class ConversionPlan {
 public:
  // Finds a type without loading it; null when it is not there.
  using FindType = std::function<const BaseType*(const TypeId&)>;

  // Null for a type that only the walk converts: an encoding of characters chosen by the value, a
  // missing type or member, two members of one name, a member that tells nothing of its size, and
  // what is larger than a plan should be.
  static std::unique_ptr<const ConversionPlan> make(const VarType& type, EnumTables& enums,
                                                    const FindType& findType);
  ~ConversionPlan();

  // True when the type has a union. Unions are objects here; jsonToRaw() and jsonTextToRaw() refuse
  // them.
  bool hasUnions() const { return _hasUnions; }

  // Each returns false, and changes nothing, for what it leaves to the walk: here a buffer that is
  // too short. The flag shows an integer's invalid marker as "invalid".
  [[nodiscard]] bool rawToJson(const base::Buffer& buffer, json::Value& value,
                               bool supportsInvalid) const;
  // `text` is written over.
  [[nodiscard]] bool rawToJsonText(const base::Buffer& buffer, std::string& text,
                                   bool supportsInvalid) const;
  // A value with all its members and elements, with numbers and names that fields take.
  [[nodiscard]] bool jsonToRaw(const json::Value& value, base::Buffer& buffer) const;
  // The same in the order of the layout, without escapes in strings.
  [[nodiscard]] bool jsonTextToRaw(std::string_view text, base::Buffer& buffer) const;

 private:
  struct Step;
  class Maker;
  class DocumentReader;
  class DocumentWriter;
  class TextWriter;
  class TextReader;

  ConversionPlan();

  // In the order of the layout; what an object or an array holds stands behind it.
  std::vector<Step> _steps;
  std::string _keys;             // JSON text of the members' names
  std::uint32_t _readSize = 0;   // bytes that a raw value must have
  std::uint32_t _writeSize = 0;  // bytes that a raw value has that was written
  bool _isSolid = false;         // fields of whole bytes cover all that is written
  bool _hasUnions = false;
};

}  // namespace zavri::korvat
