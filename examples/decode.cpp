// Decodes a raw value to JSON, prints it, and then one of its members.

#include <korvat/base/Buffer.h>
#include <korvat/base/Value.h>
#include <korvat/types/TypeManager.h>

#include <cstdint>
#include <cstdio>

using namespace zavri;

int main() {
  korvat::TypeManager manager("example");
  manager.setBaseDir(CATALOG_DIR);

  const korvat::TypeId type = manager.toTypeId("0000000000000000-0/SNVT_switch");
  const std::uint8_t bytes[] = {0xC8, 0x01};
  json::Value value;
  if (!manager.rawToJson(type, base::Buffer(bytes, sizeof bytes), value)) return 1;

  std::puts(value.stringify().c_str());
  std::printf("level: %.1f percent\n", value["value"].asDouble());
  return 0;
}
