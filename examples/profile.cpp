// Looks a functional profile up by its key and lists its datapoints.

#include <korvat/types/DpRef.h>
#include <korvat/types/FpType.h>
#include <korvat/types/TypeManager.h>

#include <cstdio>
#include <string>

using namespace zavri;

void list(const char* title, const korvat::FpType& profile, korvat::DpRef::DpType kind) {
  std::printf("%s\n", title);
  for (const korvat::DpRef* datapoint : profile.getColl(kind)) {
    std::printf("%3d  %-14s  %-16s  %s\n", datapoint->getIndex(), datapoint->getName().c_str(),
                datapoint->getTypeId().toLonFormatId().c_str(),
                datapoint->isMandatory() ? "mandatory" : "optional");
  }
}

int main() {
  korvat::TypeManager manager("example");
  manager.setBaseDir(CATALOG_DIR);

  // The device's own sets would come first; there are none here, so the standard set answers.
  const std::string device = "9FFFFF0501000000-4";
  const korvat::TypeId id = manager.searchFpType(device, 1040);
  const korvat::FpType* profile = manager.getFpType(id);
  if (profile == nullptr) return 1;

  std::printf("%s, key %d\n", id.toLonFormatId().c_str(), profile->getKey());
  list("network variables", *profile, korvat::DpRef::DpType::Nv);
  list("configuration properties", *profile, korvat::DpRef::DpType::Cp);
  return 0;
}
