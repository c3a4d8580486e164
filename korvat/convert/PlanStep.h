#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "korvat/convert/ConversionPlan.h"
#include "korvat/members/Member.h"
#include "korvat/members/NetworkOrder.h"
#include "korvat/members/RawCodec.h"

// What the three parts of ConversionPlan share: making plans, and following them in each direction.
namespace zavri::korvat {

// Behind a piece of text that is kept; short pieces are copied with what follows them, which is
// quicker than to copy just their bytes.
inline constexpr std::size_t kPadding = 32;

constexpr std::array<std::uint64_t, 16> makePowersOfTen() {
  std::array<std::uint64_t, 16> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
  return powers;
}
inline constexpr std::array<std::uint64_t, 16> kPowersOfTen = makePowersOfTen();

struct ConversionPlan::Step {
  enum class Kind : std::uint8_t {
    Object,
    Array,
    Integer,   // as it is
    Decimal,   // scaled, with few digits behind the point: printed without floating arithmetic
    Scaled,    // an integer with any other scaling
    Floating,  // scaled or not
    Bits,
    ScaledBits,
    Enum,
    Text,
  };

  // In few bytes: a plan is read from end to end for each value.
  Kind kind = Kind::Object;
  std::uint8_t byteCount = 0;  // of a number
  bool isSigned = false;       // of an integer
  bool isSingle = false;       // of a Floating: 32 bits
  BitSlot slot;
  std::uint8_t decimals = 0;   // of a Decimal: shown = factor * (raw + added) / 10^decimals
  std::int16_t factor = 0;     // likewise
  std::int16_t added = 0;      // likewise
  std::uint32_t offset = 0;    // bytes from the start of the value, or of the array's element
  std::uint32_t next = 0;      // index of the step behind this one and all that it holds
  std::uint32_t keyStart = 0;  // in _keys: the name as JSON text, with what stands around it
  std::uint32_t keySize = 0;   // bytes; 0 for an element and for the root
  std::uint32_t count = 0;     // members, elements, or bytes of a text
  std::uint32_t stride = 0;    // bytes from element to element
  const std::string* name = nullptr;  // of a member of an object
  union {
    const Member* member = nullptr;  // that the step came from
    const EnumTable* names;          // in its place, of an Enum
  };
  // Of an Integer or a Decimal: raw numbers that the field and the member's limits take as they
  // are.
  std::int64_t lowest = 0;
  std::int64_t highest = -1;

  std::int64_t load(const std::uint8_t* bytes) const {
    return loadNetworkInteger(bytes, byteCount, isSigned);
  }

  // Of a Decimal, without the division: a whole number that a double holds.
  std::int64_t toDecimal(std::int64_t raw) const { return factor * (raw + added); }
  double power() const { return static_cast<double>(kPowersOfTen[decimals]); }

  template <typename M>
  const M& as() const {
    return static_cast<const M&>(*member);
  }
};

}  // namespace zavri::korvat
