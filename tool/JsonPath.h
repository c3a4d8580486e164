#pragma once

#include <string>

#include "korvat/base/Value.h"

namespace zavri::korvat::tool {

// The node at a member path ("values[3].state") of a converted value; the whole value for an empty
// path. Throws Failure naming the component that leads nowhere and what there is instead.
const json::Value& select(const json::Value& root, const std::string& path);

}  // namespace zavri::korvat::tool
