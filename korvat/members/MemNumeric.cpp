#include "korvat/members/MemNumeric.h"

#include <algorithm>

namespace zavri::korvat {

double MemNumeric::scaleInteger(double raw) const {
  const double physical = toPhysical(raw, _scaling);
  if (_displayScaling.isIdentity()) return physical;
  return _displayScaling.toShownDecimal(physical, std::max<int>(-_scaling.b, 0));
}

double MemNumeric::unscale(double value, bool quantize) const {
  if (_displayScaling.isIdentity()) return fromPhysical(value, quantize, _scaling);
  // Steps of 1 would be no resolution of a floating number, which has none.
  const bool hasSteps = quantize && !_scaling.isIdentity();
  return fromPhysical(_displayScaling.fromShown(value), hasSteps, _scaling);
}

}  // namespace zavri::korvat
