#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "korvat/members/Member.h"

// How a JSON number becomes the raw number of a field: through the member's scaling, brought into
// the range of the field's type, then of the member's limits.
namespace zavri::korvat {

template <typename Target>
inline constexpr double kLowest = static_cast<double>(std::numeric_limits<Target>::lowest());
template <typename Target>
inline constexpr double kHighest = static_cast<double>(std::numeric_limits<Target>::max());

// True for a number that has a nearest value in Target. That of a float is finite up to half a step
// above the largest one: its shortest decimal text may lie there.
template <typename Target>
bool fitsInto(double number) {
  constexpr double kAboveFloat = 0x1.ffffffp127;
  if constexpr (std::is_same_v<Target, float>) return std::abs(number) < kAboveFloat;
  return number >= kLowest<Target> && number <= kHighest<Target>;
}

// `number` within the range of Target; NaN stays what it is, or 0 in an integer.
template <typename Target>
Target saturate(double number) {
  if constexpr (std::is_floating_point_v<Target>) {
    if (!std::isfinite(number)) return static_cast<Target>(number);
  } else if (std::isnan(number)) {
    return 0;
  }
  return static_cast<Target>(std::clamp(number, kLowest<Target>, kHighest<Target>));
}

// The low-order bits of the whole part of `number`: 300.0 is 44 in 8 bits.
template <typename Target>
Target wrap(double number) {
  constexpr double kAbove = 9223372036854775808.0;  // 2^63
  if (!(std::abs(number) < kAbove)) return saturate<Target>(number);
  return static_cast<Target>(static_cast<std::int64_t>(number));
}

// True for a number that goes into the field without the member's scaling.
template <typename M>
bool isTakenUnscaled(const M& member, bool isFloating) {
  const bool isDoubleOnScalar = isFloating && member.getKind() == Member::Kind::Scalar;
  return member.isScalingIdentity() && !isDoubleOnScalar;
}

// A number without scaling. A floating one is cut toward zero and keeps only its low-order bits, as
// it always has. Integers up to 64 bits are exact as doubles where the target, 32 bits at most, can
// hold them.
template <typename Target>
Target fitUnscaled(double number, bool isFloating) {
  if constexpr (std::is_floating_point_v<Target>) return saturate<Target>(number);
  return isFloating ? wrap<Target>(number) : saturate<Target>(number);
}

// False for a raw number outside the member's limits. A limit that no float equals is kept by the
// float nearest to it.
template <typename Target, typename M>
bool isWithinLimits(const M& member, Target target) {
  using Limit = decltype(member.getMin());
  if (member.isInRange(static_cast<Limit>(target))) return true;
  if constexpr (std::is_same_v<Target, float>) {
    const bool isBelow = member.hasMin() && target < saturate<float>(member.getMin());
    const bool isAbove = member.hasMax() && target > saturate<float>(member.getMax());
    return !isBelow && !isAbove;
  }
  return false;
}

// The limit nearest to a raw number that is outside the limits.
template <typename Target, typename M>
Target nearestLimit(const M& member, Target target) {
  using Limit = decltype(member.getMin());
  const bool isAbove = member.hasMax() && static_cast<Limit>(target) > member.getMax();
  return saturate<Target>(static_cast<double>(isAbove ? member.getMax() : member.getMin()));
}

// All of that: the raw number nearest to `number`.
template <typename Target, typename M>
Target fitNumber(const M& member, double number, bool isFloating) {
  const Target target =
      isTakenUnscaled(member, isFloating)
          ? fitUnscaled<Target>(number, isFloating)
          : saturate<Target>(static_cast<double>(member.fromPhysical(number, isFloating)));
  return isWithinLimits(member, target) ? target : nearestLimit(member, target);
}

}  // namespace zavri::korvat
