// Reads and changes single members of a raw value, which are named by their path.

#include <korvat/base/BinaryUtils.h>
#include <korvat/base/Buffer.h>
#include <korvat/members/RawCodec.h>
#include <korvat/members/Value.h>
#include <korvat/types/TypeManager.h>

#include <cstdint>
#include <cstdio>

using namespace zavri;

int main() {
  korvat::TypeManager manager("example");
  manager.setBaseDir(CATALOG_DIR);

  // 2026-11-21 14:30:00
  const std::uint8_t bytes[] = {0x07, 0xEA, 0x0B, 0x15, 0x0E, 0x1E, 0x00};
  base::Buffer raw(bytes, sizeof bytes);

  const korvat::TypeId type = manager.toTypeId("0000000000000000-0/SNVT_time_stamp");
  const korvat::Value timeStamp = manager.accessValue(base::Endianess::Big, type, raw);
  if (!timeStamp.isValid()) return 1;

  std::printf("year %d, day %d\n", timeStamp["year"].getInt32(), timeStamp["day"].getInt32());

  korvat::AccessStatus status = timeStamp["day"].setInt32(22);
  std::printf("day 22: %s\n", korvat::accessStatusName(status).data());

  status = timeStamp["week"].setInt32(47);  // no such member
  std::printf("week 47: %s\n", korvat::accessStatusName(status).data());

  std::printf("%s\n", util::BinaryUtils::toString(raw).c_str());
  return 0;
}
