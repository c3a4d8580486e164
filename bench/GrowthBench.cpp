#include <benchmark/benchmark.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "bench/Heap.h"
#include "bench/Sample.h"
#include "korvat/types/ResourceFileSet.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// Cost against size: "korvat" is a type or a file ten times as large as "baseline", both through
// the library, so that a ratio of 10 is linear growth.
namespace zavri::korvat::bench {

namespace {

enum class Size { Small, Large };

// A catalogue with one type, SNVT_x.
class OneType {
 public:
  OneType(const std::string& root, unsigned byteCount) : _manager(_files.makeManager()) {
    _files.write(TypeId::StdPrefix, "nvs", test::nvt("_x", root));
    raw.setSize(byteCount);
    for (unsigned i = 0; i < byteCount; ++i) raw.getData()[i] = static_cast<std::uint8_t>(i);
  }

  TypeManager& manager() { return _manager; }

  const TypeId id{ResourceType::Nv, "", "_x"};
  base::Buffer raw;

 private:
  test::TempCatalogue _files;
  TypeManager _manager;
};

std::unique_ptr<OneType> makeMembers(Size size) {
  const unsigned count = size == Size::Small ? 20 : 200;
  std::string members;
  for (unsigned i = 0; i < count; ++i) {
    members += test::tag("member", test::scalar("unsigned short") +
                                       test::tag("p-name", "member_" + std::to_string(i)));
  }
  const std::string root =
      "<aggregate cat='struct'>" + test::tag("members", members) + "</aggregate>";
  return std::make_unique<OneType>(root, count);
}

std::unique_ptr<OneType> makeElements(Size size) {
  const unsigned count = size == Size::Small ? 100 : 1000;
  const std::string fields = test::arraySize(static_cast<int>(count));
  return std::make_unique<OneType>(test::scalar("unsigned long", fields), 2 * count);
}

using MakeType = std::unique_ptr<OneType> (*)(Size);

void decode(benchmark::State& state, MakeType makeType, Size size) {
  const std::unique_ptr<OneType> type = makeType(size);
  for (auto _ : state) {
    json::Value value;
    if (!type->manager().rawToJson(type->id, type->raw, value)) state.SkipWithError("not decoded");
    benchmark::DoNotOptimize(value);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(type->raw.getSize()) *
                          static_cast<std::int64_t>(state.iterations()));
}

void print(benchmark::State& state, MakeType makeType, Size size) {
  const std::unique_ptr<OneType> type = makeType(size);
  std::string text;
  for (auto _ : state) {
    if (!type->manager().rawToJsonText(type->id, type->raw, text)) {
      state.SkipWithError("not decoded");
    }
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) *
                          static_cast<std::int64_t>(state.iterations()));
}

void encode(benchmark::State& state, MakeType makeType, Size size) {
  const std::unique_ptr<OneType> type = makeType(size);
  json::Value value;
  static_cast<void>(type->manager().rawToJson(type->id, type->raw, value));
  base::Buffer raw;
  for (auto _ : state) {
    if (!type->manager().jsonToRaw(type->id, value, raw)) state.SkipWithError("not encoded");
    benchmark::ClobberMemory();
  }
  if (raw != type->raw) state.SkipWithError("does not come back");
  state.SetBytesProcessed(static_cast<std::int64_t>(raw.getSize()) *
                          static_cast<std::int64_t>(state.iterations()));
}

void parse(benchmark::State& state, MakeType makeType, Size size) {
  const std::unique_ptr<OneType> type = makeType(size);
  std::string text;
  static_cast<void>(type->manager().rawToJsonText(type->id, type->raw, text));
  base::Buffer raw;
  for (auto _ : state) {
    if (!type->manager().jsonTextToRaw(type->id, text, raw)) state.SkipWithError("not encoded");
    benchmark::ClobberMemory();
  }
  if (raw != type->raw) state.SkipWithError("does not come back");
  state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) *
                          static_cast<std::int64_t>(state.iterations()));
}

void loadTypes(benchmark::State& state, Size size) {
  const unsigned count = size == Size::Small ? 1000 : 10000;
  std::string types;
  for (unsigned i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    types += "<nvt id='_x" + number + "' idx='" + number + "'>" +
             test::structure({{"a", test::scalar("unsigned long", test::scaling(1, -1, 0))},
                              {"b", test::bits(0, 4)},
                              {"c", test::bits(4, 4)}}) +
             "</nvt>";
  }
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs", types);
  const auto load = [count](TypeManager& manager) {
    const ResourceGroup* group =
        manager.getResourceFileSet(TypeId::StdPrefix).getGroup(ResourceType::Nv, true, &manager);
    return group != nullptr && group->getTypesByName().size() == count;
  };
  for (auto _ : state) {
    TypeManager manager = files.makeManager();
    if (!load(manager)) return state.SkipWithError("not loaded");
  }
  TypeManager manager = files.makeManager();
  const std::size_t before = getHeapSize();
  if (!load(manager)) return state.SkipWithError("not loaded");
  state.counters["heap bytes/type"] = static_cast<double>(getHeapSize() - before) / count;
  const auto byteCount =
      std::filesystem::file_size(files.path() + "/" + TypeId::StdPrefix + "/nvs.xml");
  state.SetBytesProcessed(static_cast<std::int64_t>(byteCount) *
                          static_cast<std::int64_t>(state.iterations()));
}

struct Direction {
  const char* name;
  void (*run)(benchmark::State&, MakeType, Size);
};

constexpr Direction kDirections[] = {
    {"raw to document", decode},
    {"raw to text", print},
    {"document to raw", encode},
    {"text to raw", parse},
};

struct Growth {
  const char* name;
  MakeType makeType;
};

constexpr Growth kGrowths[] = {
    {"10 x members", makeMembers},
    {"10 x elements", makeElements},
};

[[maybe_unused]] const bool kRegistered = [] {
  for (const Growth& growth : kGrowths) {
    for (const Direction& direction : kDirections) {
      const std::string name = std::string(growth.name) + ", " + direction.name;
      benchmark::RegisterBenchmark((name + "/korvat").c_str(), direction.run, growth.makeType,
                                   Size::Large);
      benchmark::RegisterBenchmark((name + "/baseline").c_str(), direction.run, growth.makeType,
                                   Size::Small);
    }
  }
  benchmark::RegisterBenchmark("10 x types, load/korvat", loadTypes, Size::Large);
  benchmark::RegisterBenchmark("10 x types, load/baseline", loadTypes, Size::Small);
  return true;
}();

}  // namespace

}  // namespace zavri::korvat::bench
