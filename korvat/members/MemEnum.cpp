#include "korvat/members/MemEnum.h"

#include "korvat/base/Logger.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/TypeManager.h"

namespace zavri::korvat {

std::unique_ptr<Member> MemEnum::clone() const {
  return std::make_unique<MemEnum>(*this);
}

bool MemEnum::traverseMember(Context& context, const MemberCallback& onMember,
                             const StructEndCallback&) const {
  return visitBytes(context, *this, onMember, 1);
}

std::uint64_t MemEnum::countElementBits(BitCount&) const {
  return 8;
}

bool MemEnum::setRefType(ResourceType type) {
  return type == ResourceType::Enum;
}

const EnumType* MemEnum::resolveEnum(TypeManager* typeManager) const {
  const BaseType* type = typeManager == nullptr ? nullptr : typeManager->getType(getRefId());
  if (type == nullptr) {
    base::Logger::warning("[korvat] could not resolve enum %s\n", getRefId().toString().c_str());
    return nullptr;
  }
  return dynamic_cast<const EnumType*>(type);
}

}  // namespace zavri::korvat
