#include "tool/ScalingText.h"

#include <cmath>
#include <cstdlib>

#include "korvat/base/StringUtils.h"

namespace zavri::korvat::tool {

using util::StringUtils;

std::string scalingText(const json::Value& scaling) {
  std::string raw = "raw";
  if (const int c = scaling["c"].asInt32(); c != 0) {
    raw = "(raw " + std::string(c < 0 ? "- " : "+ ") + StringUtils::toString(std::abs(c)) + ")";
  }
  return scaling["a"].asString() + " * 10^" + scaling["b"].asString() + " * " + raw;
}

std::string displayText(const json::Value& display) {
  const double offset = display["offset"].asDouble();
  return StringUtils::toString(display["factor"].asDouble()) + " * physical" +
         (std::signbit(offset) ? " - " : " + ") + StringUtils::toString(std::abs(offset));
}

}  // namespace zavri::korvat::tool
