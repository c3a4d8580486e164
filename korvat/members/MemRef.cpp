#include "korvat/members/MemRef.h"

#include <algorithm>
#include <set>

#include "korvat/base/Logger.h"
#include "korvat/members/Limits.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat {

using base::Logger;

std::unique_ptr<Member> MemRef::clone() const {
  return std::make_unique<MemRef>(*this);
}

bool MemRef::setRefType(ResourceType type) {
  if (type != ResourceType::Nv && type != ResourceType::Cp) return false;
  getRefId().setType(type);
  return true;
}

const VarType* MemRef::resolve(TypeManager* typeManager) const {
  std::set<const BaseType*> visited;
  const MemRef* reference = this;
  while (true) {
    const BaseType* type =
        typeManager == nullptr ? nullptr : typeManager->getType(reference->getRefId());
    if (type == nullptr) {
      Logger::warning("[korvat] could not resolve ref %s\n", getRefId().toString().c_str());
      return nullptr;
    }
    if (!visited.insert(type).second || visited.size() > kMaxReferences) {
      Logger::warning("[korvat] cyclic reference %s\n", getRefId().toString().c_str());
      return nullptr;
    }
    const auto* varType = dynamic_cast<const VarType*>(type);
    if (varType == nullptr) return nullptr;

    const Member* root = varType->getMember();
    if (root == nullptr || root->getKind() != Kind::Ref) return varType;
    reference = static_cast<const MemRef*>(root);
  }
}

bool MemRef::traverseMember(Context& context, const MemberCallback& onMember,
                            const StructEndCallback& onStructEnd) const {
  context.closeByte();
  context.currentType = nullptr;
  const VarType* type = resolve(context.owner);
  if (type == nullptr) return false;

  context.currentType = type;
  if (!onMember(context, *this)) return false;
  if (context.skipChildren) {
    context.skipChildren = false;
    return true;
  }
  const Member* root = type->getMember();
  if (root == nullptr || !context.enter()) return false;

  const std::int32_t depth = context.depth;
  if (context.arrayIndex >= 0) context.depth += 1;
  const bool isDone = root->traverse(context, onMember, onStructEnd);
  context.depth = depth;
  context.leave();
  return isDone;
}

const Member* MemRef::findMemberAtPath(TypeManager* typeManager, const std::string& path) const {
  const VarType* type = resolve(typeManager);
  if (type == nullptr || type->getMember() == nullptr) return nullptr;
  return type->getMember()->findMemberAtPath(typeManager, path);
}

std::uint64_t MemRef::countElementBits(BitCount& count) const {
  const VarType* type = resolve(count.typeManager);
  if (type == nullptr || type->getMember() == nullptr) return 0;

  const auto known = count.known.find(type);
  if (known != count.known.end()) return known->second;

  std::vector<const VarType*>& underWay = count.typesUnderWay;
  if (std::find(underWay.begin(), underWay.end(), type) != underWay.end()) {
    Logger::warning("[korvat] cyclic reference %s\n", getRefId().toString().c_str());
    return 0;
  }
  underWay.push_back(type);
  const std::uint64_t bits = type->getMember()->countBits(count);
  underWay.pop_back();
  count.known[type] = bits;
  return bits;
}

}  // namespace zavri::korvat
