#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "korvat/base/Value.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/NcType.h"

namespace zavri::korvat::tool {

// The raw numbers that a member can hold.
template <typename T>
struct Range {
  T lowest;
  T highest;
};

// Of an integer base type.
inline Range<std::int64_t> rangeOf(const NcTypeRow& row) {
  const unsigned bits = 8 * row.byteCount;
  if (!row.isSigned) return {0, (std::int64_t{1} << bits) - 1};
  return {-(std::int64_t{1} << (bits - 1)), (std::int64_t{1} << (bits - 1)) - 1};
}

inline Range<std::int16_t> rangeOf(const BitSlot& slot) {
  const int span = 1 << slot.width;
  const int lowest = slot.isSigned ? -span / 2 : 0;
  return {static_cast<std::int16_t>(lowest), static_cast<std::int16_t>(lowest + span - 1)};
}

inline Range<double> floatRangeOf(NcType type) {
  // Half a step above the largest float: a decimal text of that number may round to either side.
  constexpr double kAboveFloat = 0x1.ffffffp127;
  const double highest = type == NcType::Float ? kAboveFloat : std::numeric_limits<double>::max();
  return {-highest, highest};
}

// A raw number as JSON shows it.
template <typename T>
std::string textOf(T number) {
  json::Value value;
  value.setValue(number);
  return value.asString();
}

}  // namespace zavri::korvat::tool
