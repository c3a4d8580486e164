// Byte orders: a packet is rewritten or left alone, and to rewrite it twice more changes nothing.

#include "fuzz/Fuzzing.h"

using namespace zavri::korvat;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const fuzz::ValueCase the(input);
  const zavri::base::Buffer raw = input.takeRest();

  zavri::base::Buffer once = raw;
  if (!the.type.convertPacket(&the.manager, the.order, once)) {
    fuzz::require(once == raw);
    return 0;
  }
  fuzz::require(once.getSize() <= raw.getSize());
  // Element counts are always read in the order given: what they say differs on the way back.
  if (the.manager.getUseDynamicArrays()) return 0;

  zavri::base::Buffer thrice = once;
  fuzz::require(the.type.convertPacket(&the.manager, the.order, thrice));
  fuzz::require(the.type.convertPacket(&the.manager, the.order, thrice));
  fuzz::require(thrice == once);
  return 0;
}
