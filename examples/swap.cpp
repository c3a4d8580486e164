// Brings a packet from network byte order into the other one, field by field, and back.

#include <korvat/base/BinaryUtils.h>
#include <korvat/base/Buffer.h>
#include <korvat/base/Endianess.h>
#include <korvat/convert/PacketConverter.h>
#include <korvat/types/TypeManager.h>
#include <korvat/types/VarType.h>

#include <cstdint>
#include <cstdio>

using namespace zavri;
using base::Endianess;

int main() {
  korvat::TypeManager manager("example");
  manager.setBaseDir(CATALOG_DIR);
  const korvat::VarType* type = manager.getVarType("0000000000000000-0/SNVT_time_stamp");
  if (type == nullptr) return 1;

  const std::uint8_t bytes[] = {0x07, 0xEA, 0x0B, 0x15, 0x0E, 0x1E, 0x00};
  base::Buffer packet(bytes, sizeof bytes);

  korvat::PacketConverter toLittle(&manager, *type, Endianess::Big, Endianess::Little);
  if (!toLittle.convert(packet)) return 1;
  std::printf("little: %s\n", util::BinaryUtils::toString(packet).c_str());

  korvat::PacketConverter toBig(&manager, *type, Endianess::Little, Endianess::Big);
  if (!toBig.convert(packet)) return 1;
  std::printf("big:    %s\n", util::BinaryUtils::toString(packet).c_str());
  return 0;
}
