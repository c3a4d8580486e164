#pragma once

#include <string>
#include <vector>

#include "korvat/base/Value.h"
#include "korvat/members/MemFloat.h"
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

// How a raw number keeps to what its member's definition says.
enum class Standing { Inside, Marker, Below, Above };

template <typename M, typename T>
Standing standingOf(const M& member, T raw) {
  if (member.isInvalid(raw)) return Standing::Marker;
  if (member.hasMin() && raw < member.getMin()) return Standing::Below;
  return member.hasMax() && raw > member.getMax() ? Standing::Above : Standing::Inside;
}

// A single keeps to a limit when it is the single nearest to it, for that is what encode writes.
Standing standingOf(const MemFloat& member, double raw);

// Bytes of the raw value that a member, or the element that it names, takes.
unsigned byteCountOf(TypeManager& manager, const MemberValue& place);

// Byte of the raw value where a member, or the element that it names, begins. Needs a valid place.
unsigned firstByteOf(TypeManager& manager, const MemberValue& place);

}  // namespace zavri::korvat::tool
