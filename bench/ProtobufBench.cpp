#include <benchmark/benchmark.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/util/json_util.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "bench/Sample.h"
#include "korvat/types/EnumType.h"

// Raw bytes to JSON text and back, beside a dynamic message of Protocol Buffers with the same
// members, printed and read by its own JSON functions. Both sides learn the shape at run time.
namespace zavri::korvat::bench {

namespace {

namespace pb = google::protobuf;

// Makes the message types, field by field.
class Schema {
 public:
  explicit Schema(TypeManager& manager) : _manager(manager) {
    _file.set_name("samples.proto");
    _file.set_syntax("proto2");  // enumerations need not begin with 0
  }

  pb::DescriptorProto& addMessage(const std::string& name) {
    pb::DescriptorProto& message = *_file.add_message_type();
    message.set_name(name);
    return message;
  }

  void add(pb::DescriptorProto& message, const std::string& name,
           pb::FieldDescriptorProto::Type type, bool isArray = false) {
    pb::FieldDescriptorProto& field = *message.add_field();
    field.set_name(name);
    field.set_number(message.field_size());
    field.set_type(type);
    field.set_label(isArray ? pb::FieldDescriptorProto::LABEL_REPEATED
                            : pb::FieldDescriptorProto::LABEL_OPTIONAL);
  }

  void add(pb::DescriptorProto& message, const std::string& name,
           pb::FieldDescriptorProto::Type type, const std::string& typeName, bool isArray = false) {
    add(message, name, type, isArray);
    message.mutable_field(message.field_size() - 1)->set_type_name(typeName);
  }

  // Inside a message of its own: the enumerations share names.
  std::string addEnum(const std::string& name) {
    pb::DescriptorProto& scope = addMessage(name + "_scope");
    pb::EnumDescriptorProto& type = *scope.add_enum_type();
    type.set_name(name);
    const auto& source =
        dynamic_cast<const EnumType&>(*_manager.getType(TypeId::StdPrefix + "/" + name));
    for (const auto& [value, item] : source.getItemsByValue()) {
      pb::EnumValueDescriptorProto& entry = *type.add_value();
      entry.set_name(item);
      entry.set_number(value);
    }
    return "." + name + "_scope." + name;
  }

  const pb::FileDescriptorProto& getFile() const { return _file; }

 private:
  TypeManager& _manager;
  pb::FileDescriptorProto _file;
};

using Field = pb::FieldDescriptorProto;

void addSwitch(Schema& schema) {
  pb::DescriptorProto& message = schema.addMessage("SNVT_switch");
  schema.add(message, "value", Field::TYPE_DOUBLE);
  schema.add(message, "state", Field::TYPE_INT32);
}

void addHvacStatus(Schema& schema, const std::string& hvac) {
  pb::DescriptorProto& message = schema.addMessage("SNVT_hvac_status");
  schema.add(message, "mode", Field::TYPE_ENUM, hvac);
  for (const char* name : {"heat_output_primary", "heat_output_secondary", "cool_output",
                           "econ_output", "fan_output"}) {
    schema.add(message, name, Field::TYPE_DOUBLE);
  }
  schema.add(message, "in_alarm", Field::TYPE_UINT32);
}

void addAlarm(Schema& schema) {
  const std::string alarm = schema.addEnum("alarm_type_t");
  const std::string priority = schema.addEnum("priority_level_t");
  pb::DescriptorProto& message = schema.addMessage("SNVT_alarm");
  schema.add(message, "location", Field::TYPE_UINT32, true);
  schema.add(message, "object_id", Field::TYPE_UINT32);
  schema.add(message, "alarm_type", Field::TYPE_ENUM, alarm);
  schema.add(message, "priority_level", Field::TYPE_ENUM, priority);
  schema.add(message, "index_to_SNVT", Field::TYPE_UINT32);
  schema.add(message, "value", Field::TYPE_UINT32, true);
  for (const char* name : {"year", "month", "day", "hour", "minute", "second", "millisecond"}) {
    schema.add(message, name, Field::TYPE_UINT32);
  }
  schema.add(message, "alarm_limit", Field::TYPE_UINT32, true);
}

// A message is an object, so that the array is a field of one.
void addZones(Schema& schema, const std::string& hvac) {
  pb::DescriptorProto& zone = schema.addMessage("zone");
  schema.add(zone, "setpoint", Field::TYPE_DOUBLE);
  schema.add(zone, "level", Field::TYPE_DOUBLE);
  schema.add(zone, "state", Field::TYPE_INT32);
  schema.add(zone, "count", Field::TYPE_UINT32);
  schema.add(zone, "mode", Field::TYPE_ENUM, hvac);
  pb::DescriptorProto& message = schema.addMessage("SNVT_zones");
  schema.add(message, "zones", Field::TYPE_MESSAGE, ".zone", true);
}

// The sample as a message, filled from its JSON text.
class Message {
 public:
  explicit Message(const Sample& sample) : manager(makeSampleTypes()), id(idOf(sample.type)) {
    const Enums enums(manager);
    json::Value document;
    raw = toBuffer(sample.hex);
    sample.decode(enums, raw.getData(), document);
    korvatText = document.stringify();

    Schema schema(manager);
    const std::string hvac = schema.addEnum("hvac_t");
    addSwitch(schema);
    addHvacStatus(schema, hvac);
    addAlarm(schema);
    addZones(schema, hvac);
    const pb::FileDescriptor* file = _pool.BuildFile(schema.getFile());
    if (file == nullptr) throw std::runtime_error("the schema does not build");
    _message.reset(_factory.GetPrototype(file->FindMessageTypeByName(sample.type))->New());

    text = document.isArray() ? "{\"zones\":" + korvatText + "}" : korvatText;
    if (!parse() || !holdsThatText(document)) throw std::runtime_error("the message differs");
  }

  bool parse() {
    _message->Clear();
    return pb::util::JsonStringToMessage(text, _message.get(), _parseOptions).ok();
  }

  bool print(std::string& printed) const {
    return pb::util::MessageToJsonString(*_message, &printed, _printOptions).ok();
  }

  TypeManager manager;
  TypeId id;
  base::Buffer raw;
  std::string korvatText;
  std::string text;  // of the message

 private:
  // Numbers by value: a whole one is printed without a point.
  static bool isSame(const json::Value& a, const json::Value& b) {
    if (a.isNumber() && b.isNumber()) return a.asDouble() == b.asDouble();
    if (a.getType() != b.getType() || a.getSize() != b.getSize()) return false;
    for (unsigned i = 0; a.isArray() && i < a.getSize(); ++i) {
      if (!isSame(a[i], b[i])) return false;
    }
    for (const auto& [name, member] : a.getPropertyMap()) {
      if (!isSame(member, b[name])) return false;
    }
    return a.isArray() || a.isObject() || a == b;
  }

  bool holdsThatText(const json::Value& document) const {
    std::string printed;
    json::Value value;
    std::string error;
    if (!print(printed) || !json::Value::parse(printed, value, error)) return false;
    return isSame(document.isArray() ? value["zones"] : value, document);
  }

  static pb::util::JsonPrintOptions makePrintOptions() {
    pb::util::JsonPrintOptions options;
    options.preserve_proto_field_names = true;
    return options;
  }

  const pb::util::JsonPrintOptions _printOptions = makePrintOptions();
  const pb::util::JsonParseOptions _parseOptions;
  pb::DescriptorPool _pool;
  pb::DynamicMessageFactory _factory{&_pool};
  std::unique_ptr<pb::Message> _message;
};

void finish(benchmark::State& state, std::size_t byteCount) {
  state.SetBytesProcessed(static_cast<std::int64_t>(byteCount) *
                          static_cast<std::int64_t>(state.iterations()));
}

void printMessage(benchmark::State& state, const Sample& sample) {
  const Message message(sample);
  for (auto _ : state) {
    std::string text;
    if (!message.print(text)) state.SkipWithError("not printed");
    benchmark::DoNotOptimize(text);
  }
  finish(state, message.text.size());
}

void print(benchmark::State& state, const Sample& sample) {
  Message message(sample);
  for (auto _ : state) {
    std::string text;
    if (!message.manager.rawToJsonText(message.id, message.raw, text)) {
      state.SkipWithError("not printed");
    }
    benchmark::DoNotOptimize(text);
  }
  finish(state, message.korvatText.size());
}

void parseMessage(benchmark::State& state, const Sample& sample) {
  Message message(sample);
  for (auto _ : state) {
    if (!message.parse()) state.SkipWithError("not read");
  }
  finish(state, message.text.size());
}

void parse(benchmark::State& state, const Sample& sample) {
  Message message(sample);
  base::Buffer raw;
  for (auto _ : state) {
    if (!message.manager.jsonTextToRaw(message.id, message.korvatText, raw)) {
      state.SkipWithError("not read");
    }
  }
  if (raw != message.raw) state.SkipWithError("does not come back");
  finish(state, message.korvatText.size());
}

[[maybe_unused]] const bool kRegistered = [] {
  for (const Sample& sample : getSamples()) {
    const std::string printName = std::string("protobuf, raw to text, ") + sample.type;
    const std::string parseName = std::string("protobuf, text to raw, ") + sample.type;
    benchmark::RegisterBenchmark((printName + "/korvat").c_str(), print, sample);
    benchmark::RegisterBenchmark((printName + "/baseline").c_str(), printMessage, sample);
    benchmark::RegisterBenchmark((parseName + "/korvat").c_str(), parse, sample);
    benchmark::RegisterBenchmark((parseName + "/baseline").c_str(), parseMessage, sample);
  }
  return true;
}();

}  // namespace

}  // namespace zavri::korvat::bench
