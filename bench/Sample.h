#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "korvat/base/Buffer.h"
#include "korvat/base/Value.h"
#include "korvat/types/TypeManager.h"

// The values that the conversions are measured with, each with a codec written by hand for its one
// type: what an engineer would write who knows the layout and needs no catalogue.
namespace zavri::korvat::bench {

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

// The names of one enumeration, both ways, as a program would keep them: in tables of its own.
class EnumNames {
 public:
  EnumNames(TypeManager& manager, const std::string& name);

  const std::string& nameOf(std::uint8_t byte) const { return _names[byte]; }
  // False for a name that is not known.
  bool valueOf(std::string_view name, std::uint8_t& byte) const;

 private:
  std::array<std::string, 256> _names;  // the decimal number where there is no name
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };
  std::unordered_map<std::string, std::uint8_t, Hash, std::equal_to<>> _values;
};

struct Enums {
  explicit Enums(TypeManager& manager);

  EnumNames hvac;
  EnumNames alarm;
  EnumNames priority;
};

// A type and one of its values, and the codec written by hand: raw bytes to a document and to text,
// a document and text to raw bytes. The last two return false for a value of another shape and may
// then have written a part.
struct Sample {
  const char* type;
  std::string hex;
  void (*decode)(const Enums&, const std::uint8_t* raw, json::Value&);
  void (*print)(const Enums&, const std::uint8_t* raw, JsonWriter&);
  bool (*encode)(const Enums&, const json::Value&, std::uint8_t* raw);
  bool (*parse)(const Enums&, std::string_view text, std::uint8_t* raw);
};

// SNVT_switch, SNVT_hvac_status and SNVT_alarm of the standard set, and SNVT_zones, an array of 32
// structures, all of a catalogue that makeSampleTypes() loads.
const std::vector<Sample>& getSamples();

TypeManager makeSampleTypes();

base::Buffer toBuffer(const std::string& hex);

inline TypeId idOf(const std::string& type) {
  return TypeId(ResourceType::Nv, "", TypeId::stripPrefix(type));
}

}  // namespace zavri::korvat::bench
