#include "korvat/convert/DynamicArrays.h"

#include <algorithm>

#include "korvat/members/MemAggregate.h"
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
    case Member::Kind::Scalar:
    case Member::Kind::Bitfield:
    case Member::Kind::Enum: {
      const bool isChild = context.arrayIndex < 0 && !context.parentStack.empty() && !key.empty();
      return isChild ? context.parentStack.back()->getNextSibling(key) : nullptr;
    }
    case Member::Kind::Float:
    case Member::Kind::Invalid:
      break;
  }
  return nullptr;
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

const Member* findCountedArray(const Member::Context& context, const MemScalar& scalar) {
  if (scalar.isArray() || !scalar.getScaling().isIdentity()) return nullptr;
  if (context.parentStack.empty() || context.parentStack.back()->isUnion()) return nullptr;

  const auto& siblings = context.parentStack.back()->getChildren();
  auto sibling = std::find_if(siblings.begin(), siblings.end(),
                              [&](const auto& child) { return child.get() == &scalar; });
  if (sibling == siblings.end()) return nullptr;
  while (++sibling != siblings.end() && *sibling) {
    const Member& member = **sibling;
    if (member.isDynamicArray()) return &member;
    const bool keepsCount =
        member.getKind() == Member::Kind::Enum || member.getKind() == Member::Kind::Bitfield;
    if (!keepsCount || member.isArray()) return nullptr;
  }
  return nullptr;
}

}  // namespace zavri::korvat
