#include "tool/Leaves.h"

#include "korvat/members/MemAggregate.h"

namespace zavri::korvat::tool {

namespace {

bool isUnion(const MemberValue& access) {
  const Member* member = access.getMember();
  return member != nullptr && member->getKind() == Member::Kind::Aggregate &&
         static_cast<const MemAggregate*>(member)->isUnion();
}

void addLeaves(const Value& raw, const json::Value& node, const std::string& path, bool isInUnion,
               std::vector<Leaf>& leaves) {
  if (node.isObject()) {
    const bool isAlternative = isInUnion || isUnion(raw[path]);
    for (const auto& [name, member] : node.getPropertyMap()) {
      addLeaves(raw, member, path.empty() ? name : path + "." + name, isAlternative, leaves);
    }
  } else if (node.isArray()) {
    for (unsigned i = 0; i < node.getSize(); ++i) {
      addLeaves(raw, node[i], path + "[" + std::to_string(i) + "]", isInUnion, leaves);
    }
  } else {
    leaves.push_back({path, raw[path], &node, isInUnion});
  }
}

}  // namespace

std::vector<Leaf> findLeaves(const Value& raw, const json::Value& decoded) {
  std::vector<Leaf> leaves;
  addLeaves(raw, decoded, "", false, leaves);
  return leaves;
}

Standing standingOf(const MemFloat& member, double raw) {
  if (member.getNcType() != NcType::Float) return standingOf<MemFloat, double>(member, raw);
  const auto single = static_cast<float>(raw);
  if (member.hasInvalid() && single == static_cast<float>(member.getInvalid())) {
    return Standing::Marker;
  }
  if (member.hasMin() && single < static_cast<float>(member.getMin())) return Standing::Below;
  const bool isAbove = member.hasMax() && single > static_cast<float>(member.getMax());
  return isAbove ? Standing::Above : Standing::Inside;
}

namespace {

unsigned elementSizeOf(TypeManager& manager, const MemberValue& place) {
  return (place.getMember()->getElementBitCount(&manager) + 7) / 8;
}

}  // namespace

unsigned byteCountOf(TypeManager& manager, const MemberValue& place) {
  const bool isWhole = place.getMember()->isArray() && place.getElementIndex() < 0;
  return elementSizeOf(manager, place) * (isWhole ? place.getMember()->getArraySize() : 1);
}

unsigned firstByteOf(TypeManager& manager, const MemberValue& place) {
  const auto begin = static_cast<unsigned>(place.getByteOffset());
  if (place.getElementIndex() < 0) return begin;
  return begin + static_cast<unsigned>(place.getElementIndex()) * elementSizeOf(manager, place);
}

}  // namespace zavri::korvat::tool
