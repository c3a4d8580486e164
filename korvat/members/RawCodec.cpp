#include "korvat/members/RawCodec.h"

#include <bit>
#include <cmath>
#include <limits>
#include <type_traits>

namespace zavri::korvat {

using base::Endianess;

namespace {

// The integer `value` as a To, with the result codes of a field access.
template <typename To, typename From>
AccessStatus convertInteger(From value, To& result) {
  using Bits = std::make_unsigned_t<From>;
  result = static_cast<To>(value);
  if (std::is_unsigned_v<To> && value < 0) return AccessStatus::SignChange;
  // Extended back to the width it came from, by its own sign, the result must have the same bits.
  if (static_cast<Bits>(result) != static_cast<Bits>(value)) return AccessStatus::DoesNotFit;
  if (std::is_unsigned_v<From> && std::is_signed_v<To> && result < 0) {
    return AccessStatus::SignChange;
  }
  return AccessStatus::Exact;
}

// 2^(value bits of To): the first double above the range of the integer type To.
template <typename To>
constexpr double limitAbove() {
  return 2.0 * static_cast<double>(To{1} << (std::numeric_limits<To>::digits - 1));
}

template <typename To, typename From>
AccessStatus truncateFloating(From value, To& result) {
  result = To{0};
  if (std::isnan(value)) return AccessStatus::DoesNotFit;

  const double whole = std::trunc(static_cast<double>(value));
  constexpr double kAbove = limitAbove<To>();
  constexpr double kLowest = std::is_signed_v<To> ? -kAbove : 0.0;
  if (whole >= kAbove) {
    result = std::numeric_limits<To>::max();
    return AccessStatus::DoesNotFit;
  }
  if (whole < kLowest) {
    result = std::numeric_limits<To>::min();
    return AccessStatus::DoesNotFit;
  }
  result = static_cast<To>(whole);
  return whole == static_cast<double>(value) ? AccessStatus::Exact : AccessStatus::DoesNotFit;
}

AccessStatus narrowToSingle(double value, float& result) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  if (std::isfinite(value) && std::abs(value) > kLargest) {
    result =
        std::copysign(std::numeric_limits<float>::max(), static_cast<float>(value < 0 ? -1 : 1));
    return AccessStatus::DoesNotFit;
  }
  result = static_cast<float>(value);
  const bool isSame = std::isnan(value) || static_cast<double>(result) == value;
  return isSame ? AccessStatus::Exact : AccessStatus::DoesNotFit;
}

// An integer as float or double: what comes back must be the integer again.
template <typename To, typename From>
AccessStatus integerToFloating(From value, To& result) {
  result = static_cast<To>(value);
  From back{};
  if (truncateFloating(result, back) != AccessStatus::Exact) return AccessStatus::DoesNotFit;
  return back == value ? AccessStatus::Exact : AccessStatus::DoesNotFit;
}

template <typename To, typename From>
AccessStatus convertNumber(From value, To& result) {
  if constexpr (std::is_same_v<To, From>) {
    result = value;
    return AccessStatus::Exact;
  } else if constexpr (std::is_integral_v<From> && std::is_integral_v<To>) {
    return convertInteger(value, result);
  } else if constexpr (std::is_integral_v<To>) {
    return truncateFloating(value, result);
  } else if constexpr (std::is_integral_v<From>) {
    return integerToFloating(value, result);
  } else if constexpr (std::is_same_v<To, float>) {
    return narrowToSingle(value, result);
  } else {
    result = static_cast<To>(value);
    return AccessStatus::Exact;
  }
}

// The unsigned integer as wide as the field type T.
template <typename T>
using BitsOf = std::conditional_t<
    sizeof(T) == 1, std::uint8_t,
    std::conditional_t<sizeof(T) == 2, std::uint16_t,
                       std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>>>;

template <typename Field>
Field loadField(const std::uint8_t* bytes, Endianess order) {
  return std::bit_cast<Field>(static_cast<BitsOf<Field>>(loadBits(bytes, sizeof(Field), order)));
}

template <typename Field, typename T>
AccessStatus readAs(const std::uint8_t* bytes, Endianess order, T& value) {
  return convertNumber(loadField<Field>(bytes, order), value);
}

template <typename Field, typename T>
AccessStatus writeAs(T value, Endianess order, std::uint8_t* bytes) {
  Field field{};
  const AccessStatus status = convertNumber(value, field);
  storeBits(std::bit_cast<BitsOf<Field>>(field), sizeof(Field), order, bytes);
  return status;
}

}  // namespace

std::uint64_t loadBits(const std::uint8_t* bytes, unsigned byteCount, Endianess order) {
  std::uint64_t bits = 0;
  for (unsigned i = 0; i < byteCount; ++i) {
    const unsigned position = order == Endianess::Big ? i : byteCount - 1 - i;
    bits = (bits << 8) | bytes[position];
  }
  return bits;
}

void storeBits(std::uint64_t bits, unsigned byteCount, Endianess order, std::uint8_t* bytes) {
  for (unsigned i = 0; i < byteCount; ++i) {
    const unsigned position = order == Endianess::Big ? byteCount - 1 - i : i;
    bytes[position] = static_cast<std::uint8_t>(bits);
    bits >>= 8;
  }
}

template <typename T>
AccessStatus readField(NcType type, const std::uint8_t* bytes, Endianess order, T& value) {
  switch (type) {
    case NcType::UnsignedChar:
    case NcType::UnsignedShort:
      return readAs<std::uint8_t>(bytes, order, value);
    case NcType::SignedChar:
    case NcType::SignedShort:
      return readAs<std::int8_t>(bytes, order, value);
    case NcType::UnsignedLong:
      return readAs<std::uint16_t>(bytes, order, value);
    case NcType::SignedLong:
      return readAs<std::int16_t>(bytes, order, value);
    case NcType::UnsignedQuad:
      return readAs<std::uint32_t>(bytes, order, value);
    case NcType::SignedQuad:
      return readAs<std::int32_t>(bytes, order, value);
    case NcType::Float:
      return readAs<float>(bytes, order, value);
    case NcType::Double:
      return readAs<double>(bytes, order, value);
    case NcType::None:
    case NcType::Reserved:
      break;
  }
  return AccessStatus::NotAccessible;
}

template <typename T>
AccessStatus writeField(NcType type, T value, Endianess order, std::uint8_t* bytes) {
  switch (type) {
    case NcType::UnsignedChar:
    case NcType::UnsignedShort:
      return writeAs<std::uint8_t>(value, order, bytes);
    case NcType::SignedChar:
    case NcType::SignedShort:
      return writeAs<std::int8_t>(value, order, bytes);
    case NcType::UnsignedLong:
      return writeAs<std::uint16_t>(value, order, bytes);
    case NcType::SignedLong:
      return writeAs<std::int16_t>(value, order, bytes);
    case NcType::UnsignedQuad:
      return writeAs<std::uint32_t>(value, order, bytes);
    case NcType::SignedQuad:
      return writeAs<std::int32_t>(value, order, bytes);
    case NcType::Float:
      return writeAs<float>(value, order, bytes);
    case NcType::Double:
      return writeAs<double>(value, order, bytes);
    case NcType::None:
    case NcType::Reserved:
      break;
  }
  return AccessStatus::NotAccessible;
}

// clang-format off
template KORVAT_API AccessStatus readField(NcType, const std::uint8_t*, Endianess, std::int8_t&);
template KORVAT_API AccessStatus readField(NcType, const std::uint8_t*, Endianess, std::uint8_t&);
template KORVAT_API AccessStatus readField(NcType, const std::uint8_t*, Endianess, std::int16_t&);
template KORVAT_API AccessStatus readField(NcType, const std::uint8_t*, Endianess, std::uint16_t&);
template KORVAT_API AccessStatus readField(NcType, const std::uint8_t*, Endianess, std::int32_t&);
template KORVAT_API AccessStatus readField(NcType, const std::uint8_t*, Endianess, std::uint32_t&);
template KORVAT_API AccessStatus readField(NcType, const std::uint8_t*, Endianess, std::int64_t&);
template KORVAT_API AccessStatus readField(NcType, const std::uint8_t*, Endianess, float&);
template KORVAT_API AccessStatus readField(NcType, const std::uint8_t*, Endianess, double&);
template KORVAT_API AccessStatus writeField(NcType, std::int8_t, Endianess, std::uint8_t*);
template KORVAT_API AccessStatus writeField(NcType, std::uint8_t, Endianess, std::uint8_t*);
template KORVAT_API AccessStatus writeField(NcType, std::int16_t, Endianess, std::uint8_t*);
template KORVAT_API AccessStatus writeField(NcType, std::uint16_t, Endianess, std::uint8_t*);
template KORVAT_API AccessStatus writeField(NcType, std::int32_t, Endianess, std::uint8_t*);
template KORVAT_API AccessStatus writeField(NcType, std::uint32_t, Endianess, std::uint8_t*);
template KORVAT_API AccessStatus writeField(NcType, std::int64_t, Endianess, std::uint8_t*);
template KORVAT_API AccessStatus writeField(NcType, std::uint64_t, Endianess, std::uint8_t*);
template KORVAT_API AccessStatus writeField(NcType, float, Endianess, std::uint8_t*);
template KORVAT_API AccessStatus writeField(NcType, double, Endianess, std::uint8_t*);
// clang-format on

std::int64_t readInteger(NcType type, const std::uint8_t* bytes, Endianess order) {
  const NcTypeRow& row = ncTypeRow(type);
  if (row.isFloating || row.byteCount == 0) return 0;

  const std::uint64_t bits = loadBits(bytes, row.byteCount, order);
  if (!row.isSigned) return static_cast<std::int64_t>(bits);
  const unsigned unusedBits = 64 - 8 * row.byteCount;
  return static_cast<std::int64_t>(bits << unusedBits) >> unusedBits;
}

double readDouble(NcType type, const std::uint8_t* bytes, Endianess order) {
  double number{};
  static_cast<void>(readField(type, bytes, order, number));
  return number;
}

std::uint8_t extractBits(std::uint8_t byte, const BitSlot& slot) {
  if (!slot.isUsable()) return 0;
  const int mask = (1 << slot.width) - 1;
  return static_cast<std::uint8_t>((byte >> (8 - slot.offset - slot.width)) & mask);
}

std::int16_t readBits(std::uint8_t byte, const BitSlot& slot) {
  const std::uint8_t bits = extractBits(byte, slot);
  if (!slot.isSigned || !slot.isUsable()) return bits;
  const int span = 1 << slot.width;
  return static_cast<std::int16_t>(bits >= span / 2 ? bits - span : bits);
}

AccessStatus insertBits(std::int64_t value, const BitSlot& slot, std::uint8_t& byte) {
  if (!slot.isUsable()) return AccessStatus::NotAccessible;

  const int span = 1 << slot.width;
  const int lowest = slot.isSigned ? -span / 2 : 0;
  if (value < lowest || value >= lowest + span) return AccessStatus::OutOfRange;

  const int shift = 8 - slot.offset - slot.width;
  const int mask = (span - 1) << shift;
  const int bits = static_cast<int>(static_cast<std::uint64_t>(value) & 0xFF) << shift;
  byte = static_cast<std::uint8_t>((byte & ~mask) | (bits & mask));
  return AccessStatus::Exact;
}

}  // namespace zavri::korvat
