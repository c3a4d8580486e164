#pragma once

#include <string>
#include <vector>

#include "korvat/base/Value.h"
#include "korvat/members/Value.h"

namespace zavri::korvat::tool {

// A node of a decoded value that holds no other ones, with its place in the raw value.
struct Leaf {
  std::string path;  // "values[3].state"; empty for the value itself
  MemberValue access;
  const json::Value* shown;  // owned by the decoded value
  bool isInUnion;            // part of an alternative, which may not be the one that holds
};

// All leaves in the order of the decoded value. `raw` must be decoded with arrays at their full
// size, and outlive the result together with `decoded`.
std::vector<Leaf> findLeaves(const Value& raw, const json::Value& decoded);

// Byte of the raw value where a member, or the element that it names, begins. Needs a valid place.
unsigned firstByteOf(TypeManager& manager, const MemberValue& place);

}  // namespace zavri::korvat::tool
