#include <benchmark/benchmark.h>

#include <string>

#include "korvat/base/BinaryUtils.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/TypeManager.h"

// Decoding by type identifier, beside a decoder written by hand for the one type, which builds the
// same JSON value.
namespace zavri::korvat::bench {

namespace {

const std::string kPrefix = TypeId::StdPrefix + "/";

base::Buffer fromHex(const char* hex) {
  base::Buffer buffer;
  util::BinaryUtils::stringToBuffer(buffer, hex, 0);
  return buffer;
}

TypeManager makeManager() {
  TypeManager manager("bench");
  manager.setBaseDir(KORVAT_SOURCE_DIR "/res/korvat");
  return manager;
}

std::uint16_t readU16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

std::int16_t readS16(const std::uint8_t* bytes) {
  return static_cast<std::int16_t>(readU16(bytes));
}

// What the hand-written decoders know beforehand: the enumerations of their type.
struct Enums {
  explicit Enums(TypeManager& manager)
      : hvac(find(manager, "hvac_t")),
        alarm(find(manager, "alarm_type_t")),
        priority(find(manager, "priority_level_t")) {}

  static const EnumType& find(TypeManager& manager, const char* name) {
    return dynamic_cast<const EnumType&>(*manager.getType(kPrefix + name));
  }

  const EnumType& hvac;
  const EnumType& alarm;
  const EnumType& priority;
};

void setEnum(json::Value& node, const EnumType& type, std::uint8_t byte) {
  const auto raw = static_cast<std::int8_t>(byte);
  const std::string& name = type.getName(raw);
  node.setValue(name.empty() ? std::to_string(raw) : name);
}

void setBytes(json::Value& node, const std::uint8_t* bytes, unsigned count) {
  node.switchType(json::JsonType::Array);
  for (unsigned i = 0; i < count; ++i) node[i].setValue(bytes[i]);
}

void decodeSwitch(const Enums&, const std::uint8_t* raw, json::Value& value) {
  value.switchType(json::JsonType::Object);
  value["value"].setValue(5.0 * raw[0] / 10.0);
  value["state"].setValue(static_cast<std::int8_t>(raw[1]));
}

void decodeHvacStatus(const Enums& enums, const std::uint8_t* raw, json::Value& value) {
  value.switchType(json::JsonType::Object);
  setEnum(value["mode"], enums.hvac, raw[0]);
  value["heat_output_primary"].setValue(5.0 * readS16(raw + 1) / 1000.0);
  value["heat_output_secondary"].setValue(5.0 * readS16(raw + 3) / 1000.0);
  value["cool_output"].setValue(5.0 * readS16(raw + 5) / 1000.0);
  value["econ_output"].setValue(5.0 * readS16(raw + 7) / 1000.0);
  value["fan_output"].setValue(5.0 * readS16(raw + 9) / 1000.0);
  value["in_alarm"].setValue(raw[11]);
}

void decodeAlarm(const Enums& enums, const std::uint8_t* raw, json::Value& value) {
  value.switchType(json::JsonType::Object);
  setBytes(value["location"], raw, 6);
  value["object_id"].setValue(readU16(raw + 6));
  setEnum(value["alarm_type"], enums.alarm, raw[8]);
  setEnum(value["priority_level"], enums.priority, raw[9]);
  value["index_to_SNVT"].setValue(readU16(raw + 10));
  setBytes(value["value"], raw + 12, 4);
  value["year"].setValue(readU16(raw + 16));
  value["month"].setValue(raw[18]);
  value["day"].setValue(raw[19]);
  value["hour"].setValue(raw[20]);
  value["minute"].setValue(raw[21]);
  value["second"].setValue(raw[22]);
  value["millisecond"].setValue(readU16(raw + 23));
  setBytes(value["alarm_limit"], raw + 25, 4);
}

struct Case {
  const char* type;
  const char* hex;
  void (*decode)(const Enums&, const std::uint8_t*, json::Value&);
};

constexpr Case kCases[] = {
    {"SNVT_switch", "C801", decodeSwitch},
    {"SNVT_hvac_status", "01271000C8FF3800007FFF00", decodeHvacStatus},
    {"SNVT_alarm", "010203040506000A0A010012DEADBEEF07E40C1F173B3B03E7CAFEBABE", decodeAlarm},
};

void decodeByHand(benchmark::State& state, const Case& c) {
  TypeManager manager = makeManager();
  const Enums enums(manager);
  const base::Buffer raw = fromHex(c.hex);
  for (auto _ : state) {
    json::Value value;
    c.decode(enums, raw.getData(), value);
    benchmark::DoNotOptimize(value);
  }
}

void decodeWithKorvat(benchmark::State& state, const Case& c) {
  TypeManager manager = makeManager();
  const Enums enums(manager);
  const base::Buffer raw = fromHex(c.hex);
  const TypeId id = manager.toTypeId(kPrefix + c.type);
  json::Value expected;
  c.decode(enums, raw.getData(), expected);
  json::Value decoded;
  if (!manager.rawToJson(id, raw, decoded) || decoded != expected) {
    state.SkipWithError(("differs from the hand-written decoder: " + decoded.stringify() +
                         " expected " + expected.stringify())
                            .c_str());
    return;
  }
  for (auto _ : state) {
    json::Value value;
    benchmark::DoNotOptimize(manager.rawToJson(id, raw, value));
    benchmark::DoNotOptimize(value);
  }
}

[[maybe_unused]] const bool kRegistered = [] {
  for (const Case& c : kCases) {
    const std::string name = std::string("decode ") + c.type;
    benchmark::RegisterBenchmark((name + "/baseline").c_str(),
                                 [c](benchmark::State& state) { decodeByHand(state, c); });
    benchmark::RegisterBenchmark((name + "/korvat").c_str(),
                                 [c](benchmark::State& state) { decodeWithKorvat(state, c); });
  }
  return true;
}();

}  // namespace

}  // namespace zavri::korvat::bench
