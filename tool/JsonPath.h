#pragma once

#include <string>

#include "korvat/base/Value.h"

namespace zavri::korvat::tool {

// The node at a member path ("values[3].state") of a converted value; the whole value for an empty
// path. Throws Failure naming the component that leads nowhere and what there is instead.
const json::Value& select(const json::Value& root, const std::string& path);

// A value that holds `leaf` at a member path that select() has found, and null everywhere else.
json::Value placeAt(const std::string& path, const json::Value& leaf);

}  // namespace zavri::korvat::tool
