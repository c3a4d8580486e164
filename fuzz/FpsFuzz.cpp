// Resource files of functional profiles: any bytes load or are refused, and what was loaded can be
// used.

#include "fuzz/ResourceFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zavri::korvat;
  return fuzz::loadResourceFile(ResourceType::Fp, data, size);
}
