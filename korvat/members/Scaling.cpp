#include "korvat/members/Scaling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "korvat/base/StringUtils.h"

namespace zavri::korvat {

namespace {

// 10^exponent for 0 and above; exact up to 10^22, the last power of ten that is a double.
double powerOfTen(int exponent) {
  constexpr std::array<double, 23> kExact{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                          1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                          1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  const auto index = static_cast<std::size_t>(exponent);
  return index < kExact.size() ? kExact[index] : std::pow(10.0, exponent);
}

// value * 10^exponent. Powers beyond those of doubles are taken in parts: zero stays zero.
double shiftDecimal(double value, int exponent) {
  constexpr int kLargest = 308;  // of the powers of ten that are doubles
  for (; exponent < -kLargest; exponent += kLargest) value /= powerOfTen(kLargest);
  for (; exponent > kLargest; exponent -= kLargest) value *= powerOfTen(kLargest);
  return exponent < 0 ? value / powerOfTen(-exponent) : value * powerOfTen(exponent);
}

// Digits behind the point in the shortest decimal text of `number`: 2 for 0.25, 7 for 5e-7.
int countDecimals(double number) {
  const std::string text = util::StringUtils::toString(number);
  const std::size_t exponentPos = std::min(text.find('e'), text.size());
  const std::size_t point = std::min(text.find('.'), exponentPos);
  const auto digits = static_cast<int>(exponentPos - std::min(point + 1, exponentPos));
  const int exponent =
      exponentPos == text.size() ? 0 : util::StringUtils::toInt32(text.substr(exponentPos + 1));
  return std::max(digits - exponent, 0);
}

}  // namespace

DisplayScaling::DisplayScaling(double factor, double offset)
    : _factor(factor),
      _offset(offset),
      _factorDecimals(countDecimals(factor)),
      _offsetDecimals(countDecimals(offset)) {}

double DisplayScaling::toShown(double physical) const {
  return std::fma(_factor, physical, _offset);
}

double DisplayScaling::toShownDecimal(double physical, int decimalCount) const {
  constexpr int kExactPowers = 22;
  constexpr double kExactIntegers = 1125899906842624.0;  // 2^50: leaves room for the errors so far
  const double shown = toShown(physical);
  const int decimals = std::max(_factorDecimals + decimalCount, _offsetDecimals);
  if (decimals > kExactPowers) return shown;
  const double unit = powerOfTen(decimals);
  if (!((std::abs(shown) + std::abs(_offset)) * unit < kExactIntegers)) return shown;
  return std::round(shown * unit) / unit + 0.0;  // no negative zero
}

double DisplayScaling::fromShown(double shown) const {
  return (shown - _offset) / (_factor == 0 ? 1 : _factor);
}

double toPhysical(double raw, const Scaling& scaling) {
  if (scaling.a == 0) return 0;
  return shiftDecimal(scaling.a * (raw + scaling.c), scaling.b) + 0.0;  // no negative zero
}

double fromPhysical(double value, bool quantize, const Scaling& scaling) {
  const double factor = scaling.a == 0 ? 1 : scaling.a;
  if (quantize) {
    const double step = shiftDecimal(factor, scaling.b);
    if (step != 0 && std::isfinite(step)) {
      const double steps = std::floor(shiftDecimal(value, -scaling.b) / factor + 0.5);
      value = shiftDecimal(steps * factor, scaling.b);
    }
  }
  return shiftDecimal(value / factor, -scaling.b) - scaling.c;
}

}  // namespace zavri::korvat
