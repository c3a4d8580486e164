#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "korvat/base/Export.h"

namespace zavri::korvat {

// Linear scaling between a raw number and the physical value:  a * 10^b * (raw + c).
struct Scaling {
  std::int16_t a = 1;  // multiplier; 0 counts as 1 on the way back
  std::int16_t b = 0;  // decimal exponent
  std::int16_t c = 0;  // added to the raw number

  bool isIdentity() const { return a == 1 && b == 0 && c == 0; }
  bool operator==(const Scaling& other) const {
    return a == other.a && b == other.b && c == other.c;
  }
};

// Shows a physical value in another unit:  factor * physical + offset.
class KORVAT_API DisplayScaling {
 public:
  DisplayScaling() = default;
  DisplayScaling(double factor, double offset);

  double getFactor() const { return _factor; }
  double getOffset() const { return _offset; }
  bool isIdentity() const { return _factor == 1 && _offset == 0; }
  bool operator==(const DisplayScaling& other) const {
    return _factor == other._factor && _offset == other._offset;
  }

  double toShown(double physical) const;
  // The same for a physical value that is a decimal with at most `decimalCount` digits behind the
  // point: the double nearest to the exact decimal result, as far as a double can tell (factors and
  // offsets are decimals too): 23.51 degrees Celsius with {1.8, 32} is 74.318.
  double toShownDecimal(double physical, int decimalCount) const;
  // Physical value of a shown one. A factor of 0 counts as 1.
  double fromShown(double shown) const;

 private:
  double _factor = 1;
  double _offset = 0;
  int _factorDecimals = 0;  // digits behind the point
  int _offsetDecimals = 0;
};

// Physical value, in the member's unit, of a raw number. A negative b divides by a power of ten
// instead of multiplying by its inexact inverse, so the result is the double nearest to the
// decimal: raw 3 with {1, -1, 0} gives 0.3. A multiplier of 0 gives 0 for every raw number.
KORVAT_API double toPhysical(double raw, const Scaling& scaling);

// Raw number, not yet rounded, of a physical value. `quantize` first snaps the value to a whole
// number of steps of the scaling's resolution, halves upwards.
KORVAT_API double fromPhysical(double value, bool quantize, const Scaling& scaling);

// `raw` as a signed integer: halves away from zero, cut to the range of T, 0 for NaN.
template <typename T>
T roundToInteger(double raw) {
  constexpr double kAbove = -static_cast<double>(std::numeric_limits<T>::min());
  if (std::isnan(raw)) return 0;
  const double whole = std::trunc(raw >= 0 ? raw + 0.5 : raw - 0.5);
  if (whole >= kAbove) return std::numeric_limits<T>::max();
  if (whole < -kAbove) return std::numeric_limits<T>::min();
  return static_cast<T>(whole);
}

}  // namespace zavri::korvat
