#include "bench/Sample.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <rapidjson/document.h>

#include "korvat/base/BinaryUtils.h"
#include "korvat/types/EnumType.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

namespace zavri::korvat::bench {

namespace {

// --- Bytes ---

std::uint16_t readU16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

std::int16_t readS16(const std::uint8_t* bytes) {
  return static_cast<std::int16_t>(readU16(bytes));
}

void writeU16(std::uint8_t* bytes, std::int64_t number) {
  bytes[0] = static_cast<std::uint8_t>(number >> 8);
  bytes[1] = static_cast<std::uint8_t>(number);
}

// --- Documents ---

void setEnum(json::Value& node, const EnumNames& names, std::uint8_t byte) {
  node.setValue(names.nameOf(byte));
}

void setBytes(json::Value& node, const std::uint8_t* bytes, unsigned count) {
  node.switchType(json::JsonType::Array);
  node.reserve(count);
  for (unsigned i = 0; i < count; ++i) node[i].setValue(bytes[i]);
}

// The named member of an object, or null.
const json::Value* find(const json::Value& object, std::string_view name) {
  return object.getPropertyMap().find(name);
}

bool getInteger(const json::Value& object, std::string_view name, std::int64_t lowest,
                std::int64_t highest, std::int64_t& number) {
  const json::Value* node = find(object, name);
  if (node == nullptr || !node->isNumber()) return false;
  number = std::clamp(node->asInt64(), lowest, highest);
  return true;
}

bool getU8(const json::Value& object, std::string_view name, std::uint8_t* byte) {
  std::int64_t number = 0;
  if (!getInteger(object, name, 0, 255, number)) return false;
  *byte = static_cast<std::uint8_t>(number);
  return true;
}

bool getU16(const json::Value& object, std::string_view name, std::uint8_t* bytes) {
  std::int64_t number = 0;
  if (!getInteger(object, name, 0, 65535, number)) return false;
  writeU16(bytes, number);
  return true;
}

// The raw number of a physical value that counts in steps of 1 / stepsPerUnit.
bool getSteps(const json::Value& object, std::string_view name, double stepsPerUnit, double lowest,
              double highest, std::int64_t& raw) {
  const json::Value* node = find(object, name);
  if (node == nullptr || !node->isNumber()) return false;
  raw = std::lround(std::clamp(node->asDouble() * stepsPerUnit, lowest, highest));
  return true;
}

bool getPercent(const json::Value& object, std::string_view name, std::uint8_t* bytes) {
  std::int64_t raw = 0;
  if (!getSteps(object, name, 200, -32768, 32767, raw)) return false;
  writeU16(bytes, raw);
  return true;
}

bool getEnum(const json::Value& object, std::string_view name, const EnumNames& names,
             std::uint8_t* byte) {
  const json::Value* node = find(object, name);
  return node != nullptr && node->isString() && names.valueOf(node->getText(), *byte);
}

bool getBytes(const json::Value& object, std::string_view name, unsigned count,
              std::uint8_t* bytes) {
  const json::Value* node = find(object, name);
  if (node == nullptr || !node->isArray() || node->getSize() != count) return false;
  for (unsigned i = 0; i < count; ++i) {
    const json::Value& element = (*node)[i];
    if (!element.isNumber()) return false;
    bytes[i] = static_cast<std::uint8_t>(std::clamp<std::int64_t>(element.asInt64(), 0, 255));
  }
  return true;
}

// --- The same from a document of RapidJSON ---

// Reads one text into a document that lives on the stack.
class Dom {
 public:
  using Allocator = rapidjson::MemoryPoolAllocator<>;
  using Document = rapidjson::GenericDocument<rapidjson::UTF8<>, Allocator, Allocator>;
  using Node = Document::ValueType;

  explicit Dom(std::string_view text) { _document.Parse(text.data(), text.size()); }

  const Document& get() const { return _document; }
  bool isObject() const { return !_document.HasParseError() && _document.IsObject(); }
  bool isArray() const { return !_document.HasParseError() && _document.IsArray(); }

 private:
  char _valueMemory[16384];
  char _parseMemory[16384];
  Allocator _valueAllocator{_valueMemory, sizeof _valueMemory};
  Allocator _parseAllocator{_parseMemory, sizeof _parseMemory};
  Document _document{&_valueAllocator, sizeof _parseMemory / 2, &_parseAllocator};
};

template <std::size_t N>
const Dom::Node* find(const Dom::Node& object, const char (&name)[N]) {
  const auto found = object.FindMember(rapidjson::StringRef(name, N - 1));
  return found == object.MemberEnd() ? nullptr : &found->value;
}

bool toInteger(const Dom::Node* node, std::int64_t lowest, std::int64_t highest,
               std::int64_t& number) {
  if (node == nullptr || !node->IsInt64()) return false;
  number = std::clamp(node->GetInt64(), lowest, highest);
  return true;
}

template <std::size_t N>
bool getU8(const Dom::Node& object, const char (&name)[N], std::uint8_t* byte) {
  std::int64_t number = 0;
  if (!toInteger(find(object, name), 0, 255, number)) return false;
  *byte = static_cast<std::uint8_t>(number);
  return true;
}

template <std::size_t N>
bool getU16(const Dom::Node& object, const char (&name)[N], std::uint8_t* bytes) {
  std::int64_t number = 0;
  if (!toInteger(find(object, name), 0, 65535, number)) return false;
  writeU16(bytes, number);
  return true;
}

template <std::size_t N>
bool getSteps(const Dom::Node& object, const char (&name)[N], double stepsPerUnit, double lowest,
              double highest, std::int64_t& raw) {
  const Dom::Node* node = find(object, name);
  if (node == nullptr || !node->IsNumber()) return false;
  raw = std::lround(std::clamp(node->GetDouble() * stepsPerUnit, lowest, highest));
  return true;
}

template <std::size_t N>
bool getPercent(const Dom::Node& object, const char (&name)[N], std::uint8_t* bytes) {
  std::int64_t raw = 0;
  if (!getSteps(object, name, 200, -32768, 32767, raw)) return false;
  writeU16(bytes, raw);
  return true;
}

template <std::size_t N>
bool getEnum(const Dom::Node& object, const char (&name)[N], const EnumNames& names,
             std::uint8_t* byte) {
  const Dom::Node* node = find(object, name);
  return node != nullptr && node->IsString() &&
         names.valueOf({node->GetString(), node->GetStringLength()}, *byte);
}

template <std::size_t N>
bool getBytes(const Dom::Node& object, const char (&name)[N], unsigned count, std::uint8_t* bytes) {
  const Dom::Node* node = find(object, name);
  if (node == nullptr || !node->IsArray() || node->Size() != count) return false;
  for (unsigned i = 0; i < count; ++i) {
    std::int64_t number = 0;
    if (!toInteger(&(*node)[i], 0, 255, number)) return false;
    bytes[i] = static_cast<std::uint8_t>(number);
  }
  return true;
}

// --- Text ---

template <std::size_t N>
void printKey(JsonWriter& writer, const char (&name)[N]) {
  writer.Key(name, N - 1);
}

void printEnum(JsonWriter& writer, const EnumNames& names, std::uint8_t byte) {
  const std::string& name = names.nameOf(byte);
  writer.String(name.data(), static_cast<rapidjson::SizeType>(name.size()));
}

void printBytes(JsonWriter& writer, const std::uint8_t* bytes, unsigned count) {
  writer.StartArray();
  for (unsigned i = 0; i < count; ++i) writer.Uint(bytes[i]);
  writer.EndArray();
}

// --- SNVT_switch ---

void decodeSwitch(const Enums&, const std::uint8_t* raw, json::Value& value) {
  value.switchType(json::JsonType::Object);
  value.reserve(2);
  value.append("value").setValue(5.0 * raw[0] / 10.0);
  value.append("state").setValue(static_cast<std::int8_t>(raw[1]));
}

void printSwitch(const Enums&, const std::uint8_t* raw, JsonWriter& writer) {
  writer.StartObject();
  printKey(writer, "value");
  writer.Double(5.0 * raw[0] / 10.0);
  printKey(writer, "state");
  writer.Int(static_cast<std::int8_t>(raw[1]));
  writer.EndObject();
}

// From either kind of document.
template <typename Node>
bool encodeSwitchFrom(const Node& value, std::uint8_t* raw) {
  std::int64_t number = 0;
  if (!getSteps(value, "value", 2, 0, 200, number)) return false;
  raw[0] = static_cast<std::uint8_t>(number);
  if (!getSteps(value, "state", 1, -1, 1, number)) return false;
  raw[1] = static_cast<std::uint8_t>(number);
  return true;
}

bool encodeSwitch(const Enums&, const json::Value& value, std::uint8_t* raw) {
  return value.isObject() && encodeSwitchFrom(value, raw);
}

bool parseSwitch(const Enums&, std::string_view text, std::uint8_t* raw) {
  const Dom dom(text);
  return dom.isObject() && encodeSwitchFrom(dom.get(), raw);
}

// --- SNVT_hvac_status ---

void decodeHvacStatus(const Enums& enums, const std::uint8_t* raw, json::Value& value) {
  value.switchType(json::JsonType::Object);
  value.reserve(7);
  setEnum(value.append("mode"), enums.hvac, raw[0]);
  value.append("heat_output_primary").setValue(5.0 * readS16(raw + 1) / 1000.0);
  value.append("heat_output_secondary").setValue(5.0 * readS16(raw + 3) / 1000.0);
  value.append("cool_output").setValue(5.0 * readS16(raw + 5) / 1000.0);
  value.append("econ_output").setValue(5.0 * readS16(raw + 7) / 1000.0);
  value.append("fan_output").setValue(5.0 * readS16(raw + 9) / 1000.0);
  value.append("in_alarm").setValue(raw[11]);
}

void printHvacStatus(const Enums& enums, const std::uint8_t* raw, JsonWriter& writer) {
  writer.StartObject();
  printKey(writer, "mode");
  printEnum(writer, enums.hvac, raw[0]);
  printKey(writer, "heat_output_primary");
  writer.Double(5.0 * readS16(raw + 1) / 1000.0);
  printKey(writer, "heat_output_secondary");
  writer.Double(5.0 * readS16(raw + 3) / 1000.0);
  printKey(writer, "cool_output");
  writer.Double(5.0 * readS16(raw + 5) / 1000.0);
  printKey(writer, "econ_output");
  writer.Double(5.0 * readS16(raw + 7) / 1000.0);
  printKey(writer, "fan_output");
  writer.Double(5.0 * readS16(raw + 9) / 1000.0);
  printKey(writer, "in_alarm");
  writer.Uint(raw[11]);
  writer.EndObject();
}

template <typename Node>
bool encodeHvacStatusFrom(const Enums& enums, const Node& value, std::uint8_t* raw) {
  return getEnum(value, "mode", enums.hvac, raw) &&
         getPercent(value, "heat_output_primary", raw + 1) &&
         getPercent(value, "heat_output_secondary", raw + 3) &&
         getPercent(value, "cool_output", raw + 5) && getPercent(value, "econ_output", raw + 7) &&
         getPercent(value, "fan_output", raw + 9) && getU8(value, "in_alarm", raw + 11);
}

bool encodeHvacStatus(const Enums& enums, const json::Value& value, std::uint8_t* raw) {
  return value.isObject() && encodeHvacStatusFrom(enums, value, raw);
}

bool parseHvacStatus(const Enums& enums, std::string_view text, std::uint8_t* raw) {
  const Dom dom(text);
  return dom.isObject() && encodeHvacStatusFrom(enums, dom.get(), raw);
}

// --- SNVT_alarm ---

void decodeAlarm(const Enums& enums, const std::uint8_t* raw, json::Value& value) {
  value.switchType(json::JsonType::Object);
  value.reserve(14);
  setBytes(value.append("location"), raw, 6);
  value.append("object_id").setValue(readU16(raw + 6));
  setEnum(value.append("alarm_type"), enums.alarm, raw[8]);
  setEnum(value.append("priority_level"), enums.priority, raw[9]);
  value.append("index_to_SNVT").setValue(readU16(raw + 10));
  setBytes(value.append("value"), raw + 12, 4);
  value.append("year").setValue(readU16(raw + 16));
  value.append("month").setValue(raw[18]);
  value.append("day").setValue(raw[19]);
  value.append("hour").setValue(raw[20]);
  value.append("minute").setValue(raw[21]);
  value.append("second").setValue(raw[22]);
  value.append("millisecond").setValue(readU16(raw + 23));
  setBytes(value.append("alarm_limit"), raw + 25, 4);
}

void printAlarm(const Enums& enums, const std::uint8_t* raw, JsonWriter& writer) {
  writer.StartObject();
  printKey(writer, "location");
  printBytes(writer, raw, 6);
  printKey(writer, "object_id");
  writer.Uint(readU16(raw + 6));
  printKey(writer, "alarm_type");
  printEnum(writer, enums.alarm, raw[8]);
  printKey(writer, "priority_level");
  printEnum(writer, enums.priority, raw[9]);
  printKey(writer, "index_to_SNVT");
  writer.Uint(readU16(raw + 10));
  printKey(writer, "value");
  printBytes(writer, raw + 12, 4);
  printKey(writer, "year");
  writer.Uint(readU16(raw + 16));
  printKey(writer, "month");
  writer.Uint(raw[18]);
  printKey(writer, "day");
  writer.Uint(raw[19]);
  printKey(writer, "hour");
  writer.Uint(raw[20]);
  printKey(writer, "minute");
  writer.Uint(raw[21]);
  printKey(writer, "second");
  writer.Uint(raw[22]);
  printKey(writer, "millisecond");
  writer.Uint(readU16(raw + 23));
  printKey(writer, "alarm_limit");
  printBytes(writer, raw + 25, 4);
  writer.EndObject();
}

template <typename Node>
bool encodeAlarmFrom(const Enums& enums, const Node& value, std::uint8_t* raw) {
  return getBytes(value, "location", 6, raw) && getU16(value, "object_id", raw + 6) &&
         getEnum(value, "alarm_type", enums.alarm, raw + 8) &&
         getEnum(value, "priority_level", enums.priority, raw + 9) &&
         getU16(value, "index_to_SNVT", raw + 10) && getBytes(value, "value", 4, raw + 12) &&
         getU16(value, "year", raw + 16) && getU8(value, "month", raw + 18) &&
         getU8(value, "day", raw + 19) && getU8(value, "hour", raw + 20) &&
         getU8(value, "minute", raw + 21) && getU8(value, "second", raw + 22) &&
         getU16(value, "millisecond", raw + 23) && getBytes(value, "alarm_limit", 4, raw + 25);
}

bool encodeAlarm(const Enums& enums, const json::Value& value, std::uint8_t* raw) {
  return value.isObject() && encodeAlarmFrom(enums, value, raw);
}

bool parseAlarm(const Enums& enums, std::string_view text, std::uint8_t* raw) {
  const Dom dom(text);
  return dom.isObject() && encodeAlarmFrom(enums, dom.get(), raw);
}

// --- SNVT_zones ---

constexpr unsigned kZones = 32;
constexpr unsigned kZoneSize = 7;  // bytes

std::string zonesXml() {
  using namespace test;
  return nvt("_zones", structure({{"setpoint", scalar("signed long", scaling(1, -2, 0))},
                                  {"level", scalar("unsigned short", scaling(5, -1, 0))},
                                  {"state", scalar("signed short")},
                                  {"count", scalar("unsigned long")},
                                  {"mode", enumeration("hvac_t")}},
                                 arraySize(static_cast<int>(kZones))));
}

// Zone i: setpoint 2000 + 13 i, level 6 i, state 0 or 1, count 1000 i, mode i mod 8.
std::string zonesHex() {
  base::Buffer raw;
  raw.setSize(kZones * kZoneSize);
  for (unsigned i = 0; i < kZones; ++i) {
    std::uint8_t* zone = raw.getData() + i * kZoneSize;
    writeU16(zone, 2000 + 13 * i);
    zone[2] = static_cast<std::uint8_t>(6 * i);
    zone[3] = i % 2;
    writeU16(zone + 4, 1000 * i);
    zone[6] = i % 8;
  }
  return util::BinaryUtils::toString(raw);
}

void decodeZones(const Enums& enums, const std::uint8_t* raw, json::Value& value) {
  value.switchType(json::JsonType::Array);
  value.reserve(kZones);
  for (unsigned i = 0; i < kZones; ++i, raw += kZoneSize) {
    json::Value& zone = value[i];
    zone.switchType(json::JsonType::Object);
    zone.reserve(5);
    zone.append("setpoint").setValue(readS16(raw) / 100.0);
    zone.append("level").setValue(5.0 * raw[2] / 10.0);
    zone.append("state").setValue(static_cast<std::int8_t>(raw[3]));
    zone.append("count").setValue(readU16(raw + 4));
    setEnum(zone.append("mode"), enums.hvac, raw[6]);
  }
}

void printZones(const Enums& enums, const std::uint8_t* raw, JsonWriter& writer) {
  writer.StartArray();
  for (unsigned i = 0; i < kZones; ++i, raw += kZoneSize) {
    writer.StartObject();
    printKey(writer, "setpoint");
    writer.Double(readS16(raw) / 100.0);
    printKey(writer, "level");
    writer.Double(5.0 * raw[2] / 10.0);
    printKey(writer, "state");
    writer.Int(static_cast<std::int8_t>(raw[3]));
    printKey(writer, "count");
    writer.Uint(readU16(raw + 4));
    printKey(writer, "mode");
    printEnum(writer, enums.hvac, raw[6]);
    writer.EndObject();
  }
  writer.EndArray();
}

template <typename Node>
bool encodeZoneFrom(const Enums& enums, const Node& zone, std::uint8_t* raw) {
  std::int64_t number = 0;
  if (!getSteps(zone, "setpoint", 100, -32768, 32767, number)) return false;
  writeU16(raw, number);
  if (!getSteps(zone, "level", 2, 0, 255, number)) return false;
  raw[2] = static_cast<std::uint8_t>(number);
  if (!getSteps(zone, "state", 1, -128, 127, number)) return false;
  raw[3] = static_cast<std::uint8_t>(number);
  return getU16(zone, "count", raw + 4) && getEnum(zone, "mode", enums.hvac, raw + 6);
}

bool encodeZones(const Enums& enums, const json::Value& value, std::uint8_t* raw) {
  if (!value.isArray() || value.getSize() != kZones) return false;
  for (unsigned i = 0; i < kZones; ++i, raw += kZoneSize) {
    if (!value[i].isObject() || !encodeZoneFrom(enums, value[i], raw)) return false;
  }
  return true;
}

bool parseZones(const Enums& enums, std::string_view text, std::uint8_t* raw) {
  const Dom dom(text);
  if (!dom.isArray() || dom.get().Size() != kZones) return false;
  for (const Dom::Node& zone : dom.get().GetArray()) {
    if (!zone.IsObject() || !encodeZoneFrom(enums, zone, raw)) return false;
    raw += kZoneSize;
  }
  return true;
}

// --- The catalogue ---

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file) throw std::runtime_error("cannot read " + path);
  return text.str();
}

// The embedded catalogue with SNVT_zones in addition.
test::TempCatalogue& getCatalogue() {
  static test::TempCatalogue catalogue;
  static const bool isWritten = [] {
    const std::string folder = KORVAT_SOURCE_DIR "/res/korvat/" + TypeId::StdPrefix + "/";
    std::string nvs = readFile(folder + "nvs.xml");
    nvs.insert(nvs.rfind("</items>"), zonesXml());
    catalogue.writeRaw(TypeId::StdPrefix, "nvs", nvs);
    for (const char* file : {"enums", "cps", "fps"}) {
      catalogue.writeRaw(TypeId::StdPrefix, file, readFile(folder + file + ".xml"));
    }
    return true;
  }();
  static_cast<void>(isWritten);
  return catalogue;
}

}  // namespace

EnumNames::EnumNames(TypeManager& manager, const std::string& name) {
  const auto& type =
      dynamic_cast<const EnumType&>(*manager.getType(TypeId::StdPrefix + "/" + name));
  for (int raw = -128; raw < 128; ++raw) {
    const std::string& known = type.getName(static_cast<std::int8_t>(raw));
    _names[static_cast<std::uint8_t>(raw)] = known.empty() ? std::to_string(raw) : known;
  }
  for (const auto& [known, value] : type.getItemsByName()) {
    _values[known] = static_cast<std::uint8_t>(value);
  }
}

bool EnumNames::valueOf(std::string_view name, std::uint8_t& byte) const {
  const auto found = _values.find(name);
  if (found == _values.end()) return false;
  byte = found->second;
  return true;
}

Enums::Enums(TypeManager& manager)
    : hvac(manager, "hvac_t"),
      alarm(manager, "alarm_type_t"),
      priority(manager, "priority_level_t") {}

const std::vector<Sample>& getSamples() {
  static const std::vector<Sample> samples = {
      {"SNVT_switch", "C801", decodeSwitch, printSwitch, encodeSwitch, parseSwitch},
      {"SNVT_hvac_status", "01271000C8FF3800007FFF00", decodeHvacStatus, printHvacStatus,
       encodeHvacStatus, parseHvacStatus},
      {"SNVT_alarm", "010203040506000A0A010012DEADBEEF07E40C1F173B3B03E7CAFEBABE", decodeAlarm,
       printAlarm, encodeAlarm, parseAlarm},
      {"SNVT_zones", zonesHex(), decodeZones, printZones, encodeZones, parseZones},
  };
  return samples;
}

TypeManager makeSampleTypes() {
  return getCatalogue().makeManager();
}

base::Buffer toBuffer(const std::string& hex) {
  base::Buffer buffer;
  util::BinaryUtils::stringToBuffer(buffer, hex, 0);
  return buffer;
}

}  // namespace zavri::korvat::bench
