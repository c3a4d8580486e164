#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "korvat/base/Buffer.h"
#include "korvat/members/Member.h"

namespace zavri::korvat {

// The bytes of the field at the context's position; zeros when it reaches beyond the buffer.
inline std::array<std::uint8_t, 8> fieldAt(const Member::Context& context,
                                           const base::Buffer& buffer, unsigned byteCount) {
  std::array<std::uint8_t, 8> bytes{};
  if (std::uint64_t{context.bytePos} + byteCount <= buffer.getSize()) {
    std::copy_n(buffer.getData() + context.bytePos, byteCount, bytes.data());
  }
  return bytes;
}

}  // namespace zavri::korvat
