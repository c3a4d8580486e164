#pragma once

#include <cstdint>

namespace zavri::base {

// Byte order of multi-byte numbers. LonTalk network order is Big, which is therefore the default.
enum class Endianess : std::int32_t {
  Big = 0,
  Little = 1,
};

}  // namespace zavri::base
