#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "korvat/base/Endianess.h"
#include "korvat/base/Export.h"
#include "korvat/members/NcType.h"

// The one place where bytes of a raw value become numbers and numbers become bytes.
//
// Numbers stand in the value's byte order, signed ones in two's complement, floating ones as
// IEEE 754. A bit field lies inside one byte:
//
//   offset 2, width 3:   . . x x x . . .      offset counts from the most significant bit
namespace zavri::korvat {

// Outcome of one typed access. Callers print and store the numbers: never renumber.
enum class AccessStatus : std::int32_t {
  Exact = 0,          // the value went through unchanged
  OutOfRange = 1,     // buffer too short, or value outside the bit field's range
  DoesNotFit = 2,     // narrowed, fraction lost, or sizes differ
  SignChange = 3,     // negative to unsigned, or unsigned with its top bit set to signed
  Truncated = 4,      // a whole array and a text or area of another size
  NotAccessible = 5,  // no owner, member, buffer, place, size or convertible base type
};

struct AccessStatusRow {
  AccessStatus status;
  std::string_view name;
};

inline constexpr std::array<AccessStatusRow, 6> kAccessStatuses{{
    {AccessStatus::Exact, "exact"},
    {AccessStatus::OutOfRange, "out of range"},
    {AccessStatus::DoesNotFit, "does not fit"},
    {AccessStatus::SignChange, "sign change"},
    {AccessStatus::Truncated, "truncated"},
    {AccessStatus::NotAccessible, "not accessible"},
}};

// "exact" and so on; "(unknown)" for any other number.
constexpr std::string_view accessStatusName(AccessStatus status) {
  for (const AccessStatusRow& row : kAccessStatuses) {
    if (row.status == status) return row.name;
  }
  return "(unknown)";
}

// Reads the field at `bytes`, which holds ncTypeSize(type) bytes, as a T: a signed or unsigned
// integer of 8, 16 or 32 bits, a signed one of 64 bits, float or double. `value` gets the best
// value there is: the low part of an integer that is too wide, a floating number cut toward zero
// and to the range of T, 0 for NaN.
//   Exact          the number is the same
//   DoesNotFit     bits, a fraction or magnitude were lost
//   SignChange     a negative number into an unsigned T, or an unsigned number with its top bit
//                  set into a signed T of the same low bits
//   NotAccessible  a type without bytes; `value` is left alone
template <typename T>
[[nodiscard]] AccessStatus readField(NcType type, const std::uint8_t* bytes, base::Endianess order,
                                     T& value);

// Writes `value` (one of the types above, or std::uint64_t) to the field at `bytes`,
// converted by the same rules read backwards; the results are the same, and only NotAccessible
// leaves the bytes alone.
template <typename T>
[[nodiscard]] AccessStatus writeField(NcType type, T value, base::Endianess order,
                                      std::uint8_t* bytes);

// Integer field of 1, 2 or 4 bytes, sign-extended when the type is signed; 0 for all other types.
KORVAT_API std::int64_t readInteger(NcType type, const std::uint8_t* bytes, base::Endianess order);

// Field of a number as a double; 0 for a type without bytes.
KORVAT_API double readDouble(NcType type, const std::uint8_t* bytes, base::Endianess order);

// Number of 0 to 8 bytes, without a sign.
KORVAT_API std::uint64_t loadBits(const std::uint8_t* bytes, unsigned byteCount,
                                  base::Endianess order);
KORVAT_API void storeBits(std::uint64_t bits, unsigned byteCount, base::Endianess order,
                          std::uint8_t* bytes);

struct BitSlot {
  std::uint8_t offset = 0;  // bits, 0..7
  std::uint8_t width = 0;   // bits, 0..8; 0 is a slot without a field
  bool isSigned = false;    // two's complement in `width` bits

  // False for a width of 0 and for a field that leaves its byte.
  constexpr bool isUsable() const { return width != 0 && offset + width <= 8; }
};

// The bits of the slot, unsigned whatever its sign; 0 for a slot that is not usable.
KORVAT_API std::uint8_t extractBits(std::uint8_t byte, const BitSlot& slot);

// The number in the slot: extractBits(), sign-extended from the width for a signed slot.
KORVAT_API std::int16_t readBits(std::uint8_t byte, const BitSlot& slot);

// Writes `value` into the slot and keeps the other bits of `byte`.
//   Exact          written
//   OutOfRange     `value` needs more than `width` bits; `byte` is left alone
//   NotAccessible  the slot is not usable; `byte` is left alone
[[nodiscard]] KORVAT_API AccessStatus insertBits(std::int64_t value, const BitSlot& slot,
                                                 std::uint8_t& byte);

}  // namespace zavri::korvat
