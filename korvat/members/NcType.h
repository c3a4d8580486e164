#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zavri::korvat {

// Standard base types of the LonWorks device language, in which "short" is 8 bits wide and "long"
// 16. The numbers stand in the catalogue's definitions of the members.
enum class NcType : std::uint32_t {
  None = 0,
  UnsignedChar = 1,
  SignedChar = 2,
  UnsignedShort = 3,
  SignedShort = 4,
  UnsignedLong = 5,
  SignedLong = 6,
  UnsignedQuad = 7,
  SignedQuad = 8,
  Float = 9,
  Double = 10,
  Reserved = 11,
};

struct NcTypeRow {
  NcType type;
  std::string_view name;
  unsigned byteCount;
  bool isSigned;
  bool isFloating;
};

inline constexpr std::array<NcTypeRow, 12> kNcTypes{{
    {NcType::None, "", 0, false, false},
    {NcType::UnsignedChar, "unsigned char", 1, false, false},
    {NcType::SignedChar, "signed char", 1, true, false},
    {NcType::UnsignedShort, "unsigned short", 1, false, false},
    {NcType::SignedShort, "signed short", 1, true, false},
    {NcType::UnsignedLong, "unsigned long", 2, false, false},
    {NcType::SignedLong, "signed long", 2, true, false},
    {NcType::UnsignedQuad, "unsigned quad", 4, false, false},
    {NcType::SignedQuad, "s32_type", 4, true, false},
    {NcType::Float, "float", 4, true, true},
    {NcType::Double, "double float", 8, true, true},
    {NcType::Reserved, "", 0, false, false},
}};

constexpr bool everyNcTypeIsAtItsOwnIndex() {
  for (std::size_t i = 0; i < kNcTypes.size(); ++i) {
    if (static_cast<std::size_t>(kNcTypes[i].type) != i) return false;
  }
  return true;
}
static_assert(everyNcTypeIsAtItsOwnIndex());

// Total: a number outside the table is a type without a name and without bytes.
constexpr const NcTypeRow& ncTypeRow(NcType type) {
  const auto index = static_cast<std::size_t>(type);
  return index < kNcTypes.size() ? kNcTypes[index] : kNcTypes[0];
}

constexpr unsigned ncTypeSize(NcType type) {
  return ncTypeRow(type).byteCount;
}

// The type called `name` (exact), or None.
constexpr NcType ncTypeOf(std::string_view name) {
  for (const NcTypeRow& row : kNcTypes) {
    if (!name.empty() && row.name == name) return row.type;
  }
  return NcType::None;
}

}  // namespace zavri::korvat
