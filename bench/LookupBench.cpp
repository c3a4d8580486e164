#include <benchmark/benchmark.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "bench/Sample.h"
#include "korvat/types/BaseType.h"
#include "korvat/types/ResourceFileSet.h"

// Look-up of loaded types by their identifiers, one after the other through the whole catalogue,
// beside one find in a hash table from their names to the types.
namespace zavri::korvat::bench {

namespace {

constexpr ResourceType kGroups[] = {ResourceType::Enum, ResourceType::Nv, ResourceType::Cp,
                                    ResourceType::Fp};

struct Types {
  Types() : manager(makeSampleTypes()) {
    ResourceFileSet& fileSet = manager.getResourceFileSet(TypeId::StdPrefix);
    for (const ResourceType kind : kGroups) {
      for (const auto& [name, type] : fileSet.getGroup(kind, true, &manager)->getTypesByName()) {
        ids.emplace_back(kind, TypeId::StdPrefix, name);
        names.push_back(ids.back().toLonFormatId());
        byName.emplace(names.back(), type.get());
      }
    }
  }

  TypeManager manager;
  std::vector<TypeId> ids;
  std::vector<std::string> names;
  std::unordered_map<std::string, const BaseType*> byName;
};

void findByHash(benchmark::State& state) {
  const Types types;
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(types.byName.find(types.names[next])->second);
    if (++next == types.names.size()) next = 0;
  }
}

void getType(benchmark::State& state) {
  Types types;
  for (std::size_t i = 0; i < types.ids.size(); ++i) {
    if (types.manager.getType(types.ids[i]) != types.byName.at(types.names[i])) {
      return state.SkipWithError("finds another type");
    }
  }
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(types.manager.getType(types.ids[next]));
    if (++next == types.ids.size()) next = 0;
  }
}

BENCHMARK(getType)->Name("look-up by TypeId/korvat");
BENCHMARK(findByHash)->Name("look-up by TypeId/baseline");

}  // namespace

}  // namespace zavri::korvat::bench
