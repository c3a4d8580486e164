#include <korvat/types/TypeManager.h>

#include <cstdint>
#include <cstdio>

// Prints the value of the raw bytes C8 01 of SNVT_switch, from the catalogue in CATALOG_DIR.
int main() {
  zavri::korvat::TypeManager manager("consumer");
  manager.setBaseDir(CATALOG_DIR);
  const std::uint8_t bytes[] = {0xC8, 0x01};
  const zavri::base::Buffer raw(bytes, 2);
  zavri::json::Value value;
  const zavri::korvat::TypeId id = manager.toTypeId("0000000000000000-0/SNVT_switch");
  if (!manager.rawToJson(id, raw, value)) return 1;
  std::puts(value.stringify().c_str());
  return 0;
}
