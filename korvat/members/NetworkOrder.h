#pragma once

#include <cstdint>

// Whole fields of 1, 2 or 4 bytes in network order, for callers that know beforehand what they
// read. The compiler makes one instruction of each; RawCodec.h has everything else.
namespace zavri::korvat {

// An integer field, sign-extended when it is signed.
inline std::int64_t loadNetworkInteger(const std::uint8_t* bytes, unsigned byteCount,
                                       bool isSigned) {
  switch (byteCount) {
    case 1:
      return isSigned ? std::int64_t{static_cast<std::int8_t>(bytes[0])} : std::int64_t{bytes[0]};
    case 2: {
      const auto bits = static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
      return isSigned ? std::int64_t{static_cast<std::int16_t>(bits)} : std::int64_t{bits};
    }
    default: {
      const std::uint32_t bits = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
                                 std::uint32_t{bytes[2]} << 8 | std::uint32_t{bytes[3]};
      return isSigned ? std::int64_t{static_cast<std::int32_t>(bits)} : std::int64_t{bits};
    }
  }
}

// The low-order bytes of `number`.
inline void storeNetworkInteger(std::int64_t number, unsigned byteCount, std::uint8_t* bytes) {
  switch (byteCount) {
    case 1:
      bytes[0] = static_cast<std::uint8_t>(number);
      return;
    case 2:
      bytes[0] = static_cast<std::uint8_t>(number >> 8);
      bytes[1] = static_cast<std::uint8_t>(number);
      return;
    default:
      bytes[0] = static_cast<std::uint8_t>(number >> 24);
      bytes[1] = static_cast<std::uint8_t>(number >> 16);
      bytes[2] = static_cast<std::uint8_t>(number >> 8);
      bytes[3] = static_cast<std::uint8_t>(number);
  }
}

}  // namespace zavri::korvat
