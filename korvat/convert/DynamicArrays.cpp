#include "korvat/convert/DynamicArrays.h"

#include <algorithm>

#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat {

namespace {

// The member that a walk comes to next, as far as the number before it is still its element count;
// null when there is none.
const Member* findNext(const Member::Context& context, const std::string& key,
                       const Member& member) {
  switch (member.getKind()) {
    case Member::Kind::Ref:
      return context.currentType == nullptr ? nullptr : context.currentType->getMember();
    case Member::Kind::Aggregate: {
      const auto& children = static_cast<const MemAggregate&>(member).getChildren();
      return children.empty() ? nullptr : children.front().get();
    }
    default: {
      const bool isChild = !context.parentStack.empty() && !key.empty();
      return isChild ? context.parentStack.back()->getNextSibling(key) : nullptr;
    }
  }
}

// The root of the type that a single reference leads to; any other member itself.
const Member& followReference(const Member::Context& context, const Member& member) {
  if (member.getKind() != Member::Kind::Ref || member.isArray()) return member;
  const VarType* type = static_cast<const MemRef&>(member).resolve(context.owner);
  return type == nullptr || type->getMember() == nullptr ? member : *type->getMember();
}

}  // namespace

void limitArraySize(Member::Context& context, const std::string& key, const Member& member) {
  if (context.arraySize < 0) return;
  const Member* next = findNext(context, key, member);
  if (next == nullptr || !next->isDynamicArray()) return;
  const auto largest = static_cast<std::int32_t>(
      std::min<std::uint32_t>(next->getArraySize(), static_cast<std::uint32_t>(INT32_MAX)));
  context.arraySize = std::min(context.arraySize, largest);
}

CountedArray findCountedArray(const Member::Context& context, const std::string& key,
                              const MemScalar& scalar) {
  if (scalar.isArray() || context.arrayIndex >= 0 || !scalar.getScaling().isIdentity()) return {};
  if (context.parentStack.empty() || context.parentStack.back()->isUnion()) return {};

  const auto& siblings = context.parentStack.back()->getChildren();
  auto sibling = std::find_if(siblings.begin(), siblings.end(), [&](const auto& child) {
    if (child.get() == &scalar) return true;
    return child && child->getKind() == Member::Kind::Ref && child->getProgName() == key;
  });
  if (sibling == siblings.end()) return {};
  CountedArray counted;
  while (++sibling != siblings.end() && *sibling) {
    const Member& member = **sibling;
    const Member& target = followReference(context, member);
    if (target.isDynamicArray()) {
      counted.array = &target;
      counted.key = &member.getProgName();
      return counted;
    }
    const bool keepsCount =
        member.getKind() == Member::Kind::Enum || member.getKind() == Member::Kind::Bitfield;
    if (!keepsCount || member.isArray()) return {};
    counted.between.push_back(&member);
  }
  return {};
}

}  // namespace zavri::korvat
