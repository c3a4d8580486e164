#pragma once

#include <string>

#include "korvat/base/Value.h"

namespace zavri::korvat::tool {

// {"a": 5, "b": -1, "c": 0} as "5 * 10^-1 * raw".
std::string scalingText(const json::Value& scaling);

// {"factor": 1.8, "offset": 32} as "1.8 * physical + 32".
std::string displayText(const json::Value& display);

}  // namespace zavri::korvat::tool
