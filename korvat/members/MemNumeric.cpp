#include "korvat/members/MemNumeric.h"

#include <algorithm>

namespace zavri::korvat {

double MemNumeric::scaleInteger(double raw) const {
  const double physical = toPhysical(raw, _scaling);
  if (_displayScaling.isIdentity()) return physical;
  return _displayScaling.toShownDecimal(physical, std::max<int>(-_scaling.b, 0));
}

double MemNumeric::unscale(double value, bool quantize) const {
  const bool isShown = !_displayScaling.isIdentity();
  return fromPhysical(isShown ? _displayScaling.fromShown(value) : value, quantize, _scaling);
}

}  // namespace zavri::korvat
