#include "tests/stress/Workload.h"

#include <stdexcept>

#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/VarType.h"

namespace zavri::test {

using base::Endianess;
using korvat::ResourceType;
using korvat::TypeId;
using korvat::TypeManager;

Workload::Workload() {
  TypeManager manager = makeManager();
  for (const ResourceType kind : {ResourceType::Nv, ResourceType::Cp}) {
    const korvat::ResourceGroup* group =
        manager.getResourceFileSet(TypeId::StdPrefix).getGroup(kind, true, &manager);
    if (group == nullptr) throw std::runtime_error("no catalogue");
    for (const auto& entry : group->getTypesByName()) {
      for (const unsigned fill : {0x00u, 0x01u, 0x5Au, 0xFFu}) {
        add(manager, entry.second->getTypeId(), fill);
      }
    }
  }
}

void Workload::add(TypeManager& manager, const TypeId& id, unsigned fill) {
  const korvat::VarType* type = manager.getVarType(id);
  unsigned byteCount = 0;
  if (type == nullptr || !type->getMaxSize(&manager, byteCount)) return;

  Sample sample{};
  sample.id = id;
  sample.raw.setSize(byteCount);
  for (unsigned i = 0; i < byteCount; ++i) {
    sample.raw.getData()[i] = static_cast<std::uint8_t>(fill + (fill == 0x5A ? i : 0));
  }
  sample.isConverted = manager.rawToJson(id, sample.raw, sample.value, Endianess::Big, true);
  sample.json = sample.value.stringify();
  sample.isConvertedBack =
      manager.jsonToRaw(id, sample.value, sample.rawAgain, Endianess::Big, true);
  _samples.push_back(std::move(sample));
}

TypeManager Workload::makeManager() {
  TypeManager manager("drv");
  manager.setBaseDir(std::string(KORVAT_SOURCE_DIR) + "/res/korvat");
  return manager;
}

void Workload::load(TypeManager& manager) {
  korvat::ResourceFileSet& fileSet = manager.getResourceFileSet(TypeId::StdPrefix);
  for (const auto kind :
       {ResourceType::Enum, ResourceType::Nv, ResourceType::Cp, ResourceType::Fp}) {
    if (fileSet.getGroup(kind, true, &manager) == nullptr) throw std::runtime_error("no catalogue");
  }
}

std::string Workload::convert(TypeManager& manager, std::size_t index, std::size_t round) const {
  const Sample& sample = _samples[index % _samples.size()];
  if (round % 2 == 0) {
    json::Value value;
    const bool isDone = manager.rawToJson(sample.id, sample.raw, value, Endianess::Big, true);
    const std::string json = value.stringify();
    if (isDone == sample.isConverted && json == sample.json) return "";
    return sample.id.toString() + " gave " + json + " instead of " + sample.json;
  }
  base::Buffer raw;
  const bool isDone = manager.jsonToRaw(sample.id, sample.value, raw, Endianess::Big, true);
  if (isDone == sample.isConvertedBack && raw == sample.rawAgain) return "";
  return sample.id.toString() + " gave another raw value for " + sample.json;
}

}  // namespace zavri::test
